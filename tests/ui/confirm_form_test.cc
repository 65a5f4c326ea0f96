// The confirm/refine window on real scanned folders: its lists, texts and
// statistics, the editing of actions through its controls, and how it ends.
#include "ui/run/confirm_form.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidget>
#include <QUrl>
#include <QtTest>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app/program.h"
#include "config/ini_file_section.h"
#include "engine/action_edits.h"
#include "engine/action_summary.h"
#include "engine/action_texts.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/scanned_folders.h"
#include "support/temp_dir.h"
#include "support/test_dates.h"
#include "ui/run/file_list_model.h"
#include "ui/run/image_list.h"
#include "ui/scripted_front_end.h"
#include "util/file_system.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

double Date(int year, int month, int day, int hour = 0, int minute = 0) {
  return MakeDate(year, month, day, hour, minute);
}

// For sets never synchronized, over source folders:
//   1 "Changed" (checked): the copies' dates all differ;
//   2 "Missing" (handled automatically): a source folder lacks the file;
//   3 "Sizes" (no conflict): equal dates, sizes differ.
// Two equal dates and one different match no type (conflict index -1).
const Entries kCatalogue = {
    {"Changed", "N01 USENEWEST* DONOTHING \"Every copy changed.\""},
    {"+Missing", "N1? DELETEALL* USENEWEST \"A source lacks the file.\""},
    {"*Sizes", "N03 DONOTHING* \"Only the sizes differ.\""},
};

using Copies = std::vector<CopyRecord>;
Copies Same() { return {Present(Fresh()), Present(Fresh()), Present(Fresh())}; }
// Copy 3 is the newest.
Copies Changed() {
  return {Present(Old()), Present(Fresh()), Present(Fresher())};
}
Copies MissingTwo() { return {Present(Fresh()), kMissing, Present(Fresh())}; }
Copies Sizes() {
  return {Present(Fresh(), 1), Present(Fresh(), 2), Present(Fresh(), 1)};
}
Copies Unmatched() {
  return {Present(Fresh()), Present(Fresh()), Present(Fresher())};
}

const std::vector<std::int32_t> kThreeSources = {kFolderSource, kFolderSource,
                                                 kFolderSource};

// A program with one set "Docs" over real folders A, B, ... (one per folder
// type), each holding the named files, scanned into the set's working list.
// Shape then gives a file the copy records of a situation, with its default
// action.
class Scene {
 public:
  explicit Scene(const std::vector<std::string>& names,
                 const std::vector<std::int32_t>& types = kThreeSources,
                 const Entries& catalogue = kCatalogue, bool interactive = true)
      : set(program.NewSyncSet("Docs")) {
    ui.SetProgram(&program);
    program.Run().interactive = interactive;
    ScanFolders(set, dir, types, names, catalogue);
  }

  long IndexOf(const std::string& name) const {
    for (long i = 1; i <= set.WFileCount(); ++i) {
      if (set.WFile(i).RelativeName() == name) return i;
    }
    throw std::runtime_error("no file " + name);
  }
  SyncFile& File(const std::string& name) const {
    return set.WFile(IndexOf(name));
  }

  // The copies in the records only (the disk keeps what was written), and
  // the default action they call for.
  void Shape(const std::string& name, const Copies& copies) {
    SyncFile& file = File(name);
    for (std::size_t k = 0; k < copies.size(); ++k) {
      file.SetCopy(static_cast<int>(k + 1), copies[k]);
    }
    file.ComputeDefAction();
  }

  // The window, shown and laid out.
  std::unique_ptr<ConfirmForm> Open() {
    auto form = std::make_unique<ConfirmForm>(program, set);
    form->show();
    if (!QTest::qWaitForWindowExposed(form.get())) {
      throw std::runtime_error("the window was not shown");
    }
    return form;
  }

  ScriptedFrontEnd ui;
  Program program{ui};
  TempDir dir;
  Synchronizer& set;
};

// --- Reading and driving the window ------------------------------------------

template <typename T>
T* Control(QWidget& form, const char* name) {
  T* control = form.findChild<T*>(QString::fromLatin1(name));
  if (control == nullptr) {
    throw std::runtime_error(std::string("no control ") + name);
  }
  return control;
}

QString Text(QWidget& form, const char* name) {
  return Control<QLabel>(form, name)->text();
}

QTreeView* FileList(QWidget& form) {
  return Control<QTreeView>(form, "FileList");
}
QTreeWidget* FolderList(QWidget& form) {
  return Control<QTreeWidget>(form, "FolderList");
}

int RowCount(QWidget& form) { return FileList(form)->model()->rowCount(); }

QString Cell(QWidget& form, int row, int column) {
  const QAbstractItemModel* model = FileList(form)->model();
  return model->index(row, column).data().toString();
}

// The texts of one column, top to bottom.
QStringList Column(QWidget& form, int column) {
  QStringList texts;
  for (int row = 0; row < RowCount(form); ++row) {
    texts << Cell(form, row, column);
  }
  return texts;
}

QStringList Names(QWidget& form) { return Column(form, FileListModel::kFile); }

int RowOf(QWidget& form, const QString& name) {
  return static_cast<int>(Names(form).indexOf(name));
}

QString StatusOf(QWidget& form, const QString& name) {
  return Cell(form, RowOf(form, name), FileListModel::kStatus);
}
QString ActionOf(QWidget& form, const QString& name) {
  return Cell(form, RowOf(form, name), FileListModel::kAction);
}

// Clicks a file's row, with Ctrl to add it to the selection.
void ClickFile(QWidget& form, const QString& name,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QTreeView* view = FileList(form);
  const int row = RowOf(form, name);
  if (row < 0) throw std::runtime_error("not listed: " + name.toStdString());
  const QModelIndex index = view->model()->index(row, 0);
  view->scrollTo(index);
  QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers,
                    view->visualRect(index).center());
}

void SelectFiles(QWidget& form, const QStringList& names) {
  for (int k = 0; k < names.size(); ++k) {
    ClickFile(form, names[k], k == 0 ? Qt::NoModifier : Qt::ControlModifier);
  }
}

// Radio buttons and check boxes are clicked on their indicator.
void ClickButton(QWidget& form, const char* name) {
  QAbstractButton* button = Control<QAbstractButton>(form, name);
  QPoint where = button->rect().center();
  if (qobject_cast<QPushButton*>(button) == nullptr) {
    where = QPoint(6, button->height() / 2);
  }
  QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, where);
}

void ClickFolderRow(QWidget& form, int j) {
  QTreeWidget* list = FolderList(form);
  QTreeWidgetItem* item = list->topLevelItem(j - 1);
  QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                    QPoint(20, list->visualItemRect(item).center().y()));
}

void ClickHeader(QWidget& form, int column) {
  QHeaderView* header = FileList(form)->header();
  const QPoint where(
      header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
      header->height() / 2);
  QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, where);
}

// Picks a show mode with the keyboard, as a person would.
void ChooseShowMode(QWidget& form, int mode) {
  QComboBox* combo = Control<QComboBox>(form, "ShowMode");
  combo->setFocus();
  QTest::keyClick(combo, Qt::Key_Home);
  for (int k = 0; k < mode; ++k) QTest::keyClick(combo, Qt::Key_Down);
}

bool IsOn(QWidget& form, const char* name) {
  return Control<QAbstractButton>(form, name)->isChecked();
}

Qt::CheckState CheckOf(QWidget& form, const char* name) {
  return Control<QCheckBox>(form, name)->checkState();
}

bool Shown(QWidget& form, const char* name) {
  return !Control<QWidget>(form, name)->isHidden();
}

const char* const kOptions[] = {"Undecided", "DoNothing", "UseNewest",
                                "UseSpecific", "DeleteAll"};
const char* const kChecks[] = {"AllowCreateNew", "OWReadOnly", "ForceCopy",
                               "ProtectMerged", "DReadOnly"};

// Which of the five option buttons are on, as "01000".
QString OptionsOn(QWidget& form) {
  QString on;
  for (const char* name : kOptions) on += IsOn(form, name) ? '1' : '0';
  return on;
}

// Which of the five check boxes are visible, as "11100".
QString ChecksShown(QWidget& form) {
  QString shown;
  for (const char* name : kChecks) shown += Shown(form, name) ? '1' : '0';
  return shown;
}

QString FolderCell(QWidget& form, int j, int column) {
  return FolderList(form)->topLevelItem(j - 1)->text(column);
}

// The image (1-based) of each folder row, as "122".
QString FolderImages(QWidget& form) {
  const ImageList* images = form.findChild<ImageList*>("ImageList");
  if (images == nullptr) throw std::runtime_error("no ImageList");
  QString text;
  QTreeWidget* list = FolderList(form);
  for (int j = 0; j < list->topLevelItemCount(); ++j) {
    const qint64 key = list->topLevelItem(j)->icon(0).cacheKey();
    char digit = '?';
    for (int i = 1; i <= ImageList::kCount; ++i) {
      if (images->Image(i).cacheKey() == key)
        digit = static_cast<char>('0' + i);
    }
    text += digit;
  }
  return text;
}

// The selected folder rows, as "010".
QString FolderSelection(QWidget& form) {
  QString text;
  QTreeWidget* list = FolderList(form);
  for (int j = 0; j < list->topLevelItemCount(); ++j) {
    text += list->topLevelItem(j)->isSelected() ? '1' : '0';
  }
  return text;
}

QString Q(const std::string& text) { return QString::fromStdString(text); }

// Runs the window modally; `act` runs inside it, and a watchdog closes a
// window that is still open after it, so that a failing check cannot hang
// the test.
Confirmation RunWith(ConfirmForm& form, const std::function<void()>& act) {
  QTimer::singleShot(0, &form, act);
  QTimer::singleShot(20000, &form, [&form] { form.done(QDialog::Rejected); });
  return form.Run();
}

}  // namespace

// Catches the help page the window asks the desktop to open.
class UrlCatcher : public QObject {
  Q_OBJECT

 public:
  QList<QUrl> opened;

 public slots:
  void Open(const QUrl& url) { opened << url; }
};

class ConfirmFormTest : public QObject {
  Q_OBJECT

 private slots:
  // --- Layout and loading ----------------------------------------------------

  void LoadSetsCaptionTextsAndLists() {
    Scene scene({"a.txt", "b.txt"});
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", Same());
    auto form = scene.Open();
    QCOMPARE(form->windowTitle(),
             QString("Confirm/Refine Sync Actions - [Docs]"));
    QCOMPARE(Text(*form, "InstructionTxt"),
             QString("Please refine the actions to perform, then click "
                     "Continue with Sync."));
    QCOMPARE(Text(*form, "FileListTxt"), QString("&File List:"));
    QCOMPARE(Text(*form, "ActionTxt"), QString("Action:"));
    const struct {
      const char* name;
      const char* text;
    } kButtons[] = {
        {"Undecided", "&Undecided"},
        {"DoNothing", "Do &nothing"},
        {"UseNewest", "Use the file with the &most recent date"},
        {"UseSpecific", "Use a &specific copy of the file:"},
        {"DeleteAll", "&Delete all copies of the file"},
        {"AllowCreateNew", "If destination file does not exist, &create it"},
        {"OWReadOnly", "Allow &overwrite of read-only/system files"},
        {"ForceCopy", "Re-copy (overwrite apparently identical files)"},
        {"ProtectMerged", "Protect files in \"merge into\" folder(s)"},
        {"DReadOnly", "Allow delete of read-only/system files"},
        {"RefreshBtn", "Re&fresh Selected Files"},
        {"ResetToDefaultBtn", "&Reset to Default"},
        {"HelpBtn", "&Help"},
        {"CancelBtn", "Cancel"},
        {"ContinueBtn", "Continue with Sync"},
    };
    for (const auto& b : kButtons) {
      QCOMPARE(Control<QAbstractButton>(*form, b.name)->text(),
               QString(b.text));
    }
    QComboBox* show_mode = Control<QComboBox>(*form, "ShowMode");
    QCOMPARE(show_mode->count(), 5);
    const QStringList kModes = {
        "Show conflicts that need confirmation", "Show all conflicts",
        "Show all files marked for action",
        "Show all files marked \"undecided\"", "All files"};
    for (int i = 0; i < 5; ++i) QCOMPARE(show_mode->itemText(i), kModes[i]);

    QAbstractItemModel* files = FileList(*form)->model();
    QCOMPARE(files->headerData(0, Qt::Horizontal).toString(), QString("File"));
    QCOMPARE(files->headerData(1, Qt::Horizontal).toString(),
             QString("Status"));
    QCOMPARE(files->headerData(2, Qt::Horizontal).toString(),
             QString("Action"));
    QCOMPARE(FileList(*form)->selectionMode(),
             QAbstractItemView::ExtendedSelection);

    QTreeWidget* folders = FolderList(*form);
    const QStringList kFolderColumns = {"Location", "Modify Date",
                                        "Create Date", "File Size", "Attrib"};
    QCOMPARE(folders->columnCount(), 5);
    for (int c = 0; c < 5; ++c) {
      QCOMPARE(folders->headerItem()->text(c), kFolderColumns[c]);
    }
    QCOMPARE(folders->topLevelItemCount(), 3);
    for (int j = 1; j <= 3; ++j) {
      QCOMPARE(FolderCell(*form, j, 0), Q(scene.set.WPath(j)));
    }
    QVERIFY(form->findChild<ImageList*>("ImageList") != nullptr);

    // Nothing is selected at first.
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("Nothing selected."));
    QCOMPARE(Text(*form, "ConflictDescrTxt"), QString());
    for (const char* name : kOptions) {
      QVERIFY2(!Control<QWidget>(*form, name)->isEnabled(), name);
    }
    for (const char* name : kChecks) {
      QVERIFY2(!Control<QWidget>(*form, name)->isEnabled(), name);
    }
    QVERIFY(!Control<QWidget>(*form, "ResetToDefaultBtn")->isEnabled());
    QVERIFY(Control<QWidget>(*form, "RefreshBtn")->isEnabled());
    QCOMPARE(FolderCell(*form, 1, 1), QString());
  }

  void LoadMarksFilesWithoutEffect() {
    Scene scene({"same.txt", "changed.txt"});
    scene.Shape("same.txt", Same());
    scene.Shape("changed.txt", Changed());
    // Copying a copy over identical ones changes nothing.
    scene.File("same.txt").Action = kUseNewest;
    scene.File("same.txt").SourceIndex = 1;
    scene.File("same.txt").ActionFlags = kFlagCreate;
    QCOMPARE(scene.File("same.txt").GetNewestFileIndex(true), 1);
    auto form = scene.Open();
    QVERIFY((scene.File("same.txt").ActionFlags & kFlagNoEffect) != 0);
    QVERIFY((scene.File("changed.txt").ActionFlags & kFlagNoEffect) == 0);
    // " (no effect)" wins over " (newest)".
    QCOMPARE(ActionOf(*form, "same.txt"), QString("Copy #1 (no effect)"));
    QCOMPARE(ActionOf(*form, "changed.txt"), QString("Copy #3 (newest)"));
  }

  void InitialShowModeFollowsTheInteractiveFlag() {
    for (const bool interactive : {true, false}) {
      Scene scene({"same.txt", "changed.txt", "missing.txt"}, kThreeSources,
                  kCatalogue, interactive);
      scene.Shape("same.txt", Same());
      scene.Shape("changed.txt", Changed());
      scene.Shape("missing.txt", MissingTwo());
      auto form = scene.Open();
      const int mode = Control<QComboBox>(*form, "ShowMode")->currentIndex();
      if (interactive) {
        QCOMPARE(mode, 4);
        // In the set's file order: the scan's, by name.
        QCOMPARE(Names(*form),
                 QStringList({"changed.txt", "missing.txt", "same.txt"}));
      } else {
        QCOMPARE(mode, 0);
        QCOMPARE(Names(*form), QStringList({"changed.txt"}));
      }
    }
  }

  // --- Texts of the lists --------------------------------------------------

  void StatusOfAFileNewOldAndAbsent() {
    Scene scene({"f.txt"}, kThreeSources, {{"Gone", "?1? USENEWEST*"}});
    scene.set.LastSyncDate = SyncDate();
    scene.Shape("f.txt", {Present(Fresh()), Present(Old()), kMissing});
    auto form = scene.Open();
    QCOMPARE(StatusOf(*form, "f.txt"), QString("NO_!!"));
  }

  void StatusMarksFollowTheConflictType() {
    Scene scene(
        {"same.txt", "changed.txt", "missing.txt", "sizes.txt", "odd.txt"});
    scene.Shape("same.txt", Same());
    scene.Shape("changed.txt", Changed());
    scene.Shape("missing.txt", MissingTwo());
    scene.Shape("sizes.txt", Sizes());
    scene.Shape("odd.txt", Unmatched());
    auto form = scene.Open();
    // Without a last-sync date every present copy is new.
    QCOMPARE(StatusOf(*form, "same.txt"), QString("NNN"));
    QCOMPARE(StatusOf(*form, "changed.txt"), QString("NNN!!"));
    QCOMPARE(StatusOf(*form, "missing.txt"), QString("N_N!"));
    QCOMPARE(StatusOf(*form, "sizes.txt"), QString("NNN"));
    QCOMPARE(StatusOf(*form, "odd.txt"), QString("NNN!!"));
    QCOMPARE(ActionOf(*form, "same.txt"), QString("Do Nothing"));
    QCOMPARE(ActionOf(*form, "changed.txt"), QString("Copy #3 (newest)"));
    QCOMPARE(ActionOf(*form, "missing.txt"), QString("Delete all"));
    QCOMPARE(ActionOf(*form, "sizes.txt"), QString("Do Nothing"));
    QCOMPARE(ActionOf(*form, "odd.txt"), QString("<Undecided>"));
  }

  void MissingCopyShowsNotFound() {
    Scene scene({"f.txt"});
    scene.Shape("f.txt", {Present(Date(2025, 1, 5, 9, 7), 1536,
                                  kAttrReadOnly | kAttrArchive | kAttrHidden,
                                  Date(2024, 12, 1, 21, 30)),
                          CopyRecord{0, Date(2024, 12, 2, 8, 5), 99, 0},
                          Present(Date(2025, 1, 6, 15, 4), 20)});
    auto form = scene.Open();
    QCOMPARE(StatusOf(*form, "f.txt").left(3), QString("N_N"));
    ClickFile(*form, "f.txt");
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("f.txt"));
    // Modify dates have a two-digit hour, create dates a one-digit one.
    QCOMPARE(FolderCell(*form, 1, 1), QString("Jan 5, 2025 09:07AM"));
    QCOMPARE(FolderCell(*form, 1, 2), QString("Dec 1, 2024 9:30PM"));
    QCOMPARE(FolderCell(*form, 1, 3), QString("1.50 KB"));
    QCOMPARE(FolderCell(*form, 1, 4), QString("HRA"));
    QCOMPARE(FolderCell(*form, 2, 1), QString("Not found"));
    QCOMPARE(FolderCell(*form, 2, 2), QString("Dec 2, 2024 8:05AM"));
    QCOMPARE(FolderCell(*form, 2, 3), QString());
    QCOMPARE(FolderCell(*form, 2, 4), QString());
    QCOMPARE(FolderCell(*form, 3, 1), QString("Jan 6, 2025 03:04PM"));
    QCOMPARE(FolderCell(*form, 3, 2), QString());
    QCOMPARE(FolderCell(*form, 3, 3), QString("20 bytes"));
    QCOMPARE(FolderCell(*form, 3, 4), QString());
  }

  void FileSizeBoundaries() {
    Scene scene({"f.txt"},
                {kFolderSource, kFolderSource, kFolderSource, kFolderSource},
                {});
    scene.Shape("f.txt",
                {Present(Fresh(), 1023), Present(Fresh(), 1024),
                 Present(Fresh(), 1048575), Present(Fresh(), 1048576)});
    auto form = scene.Open();
    ClickFile(*form, "f.txt");
    QCOMPARE(FolderCell(*form, 1, 3), QString("1023 bytes"));
    QCOMPARE(FolderCell(*form, 2, 3), QString("1.00 KB"));
    QCOMPARE(FolderCell(*form, 3, 3), QString("1024.00 KB"));
    QCOMPARE(FolderCell(*form, 4, 3), QString("1.00 MB"));
  }

  // --- Statistics ----------------------------------------------------------

  void QuietSetShowsOnlyTheFileCount() {
    Scene scene({"a.txt", "b.txt", "c.txt"});
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
      scene.Shape(name, Same());
    }
    auto form = scene.Open();
    QCOMPARE(Text(*form, "StatsTxt"), QString("3 files total"));
  }

  void StatisticsPhrasings() {
    struct Case {
      std::vector<std::pair<std::string, Copies>> files;
      double last_sync;
      QString expected;
    };
    const Case kCases[] = {
        {{{"c.txt", Changed()}, {"m.txt", MissingTwo()}},
         0,
         "2 conflicts, 2 actions queued, 2 files total"},
        {{{"c.txt", Changed()}, {"s.txt", Same()}},
         0,
         "1 conflicts (requiring confirmation), 1 actions queued, 2 files "
         "total"},
        {{{"m.txt", MissingTwo()}, {"s.txt", Same()}},
         0,
         "1 conflicts (automatically handled), 1 actions queued, 2 files "
         "total"},
        {{{"o.txt", Unmatched()}, {"z.txt", Sizes()}},
         0,
         "1 conflicts (requiring confirmation), 1 undecided, 2 files total"},
        {{{"s.txt", Same()}},
         Date(2026, 11, 2, 15, 4),
         "1 files total (Last sync: Nov 2, 2026 03:04PM)"},
    };
    for (const Case& c : kCases) {
      std::vector<std::string> names;
      for (const auto& f : c.files) names.push_back(f.first);
      Scene scene(names);
      for (const auto& f : c.files) scene.Shape(f.first, f.second);
      // Set after shaping: the catalogue is written for a set never synced.
      scene.set.LastSyncDate = c.last_sync;
      auto form = scene.Open();
      QCOMPARE(Text(*form, "StatsTxt"), c.expected);
    }
  }

  void StatisticsFollowTheEdits() {
    Scene scene({"c.txt", "o.txt", "s.txt"});
    scene.Shape("c.txt", Changed());
    scene.Shape("o.txt", Unmatched());
    scene.Shape("s.txt", Same());
    auto form = scene.Open();
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("2 conflicts (requiring confirmation), 1 actions queued, "
                     "1 undecided, 3 files total"));
    // Do nothing is neither queued nor undecided.
    ClickFile(*form, "o.txt");
    ClickButton(*form, "DoNothing");
    QCOMPARE(scene.File("o.txt").Action, kDoNothing);
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("2 conflicts (requiring confirmation), 1 actions queued, "
                     "3 files total"));
    ClickFile(*form, "s.txt");
    ClickButton(*form, "DeleteAll");
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("2 conflicts (requiring confirmation), 2 actions queued, "
                     "3 files total"));
  }

  // --- Show modes ------------------------------------------------------------

  void ShowModesFilterTheList() {
    Scene scene(
        {"same.txt", "changed.txt", "missing.txt", "sizes.txt", "odd.txt"});
    scene.Shape("same.txt", Same());
    scene.Shape("changed.txt", Changed());
    scene.Shape("missing.txt", MissingTwo());
    scene.Shape("sizes.txt", Sizes());
    scene.Shape("odd.txt", Unmatched());
    auto form = scene.Open();
    const QStringList kExpected[] = {
        {"changed.txt", "odd.txt"},
        {"changed.txt", "missing.txt", "odd.txt"},
        {"changed.txt", "missing.txt"},
        {"odd.txt"},
        {"changed.txt", "missing.txt", "odd.txt", "same.txt", "sizes.txt"},
    };
    for (int mode = 0; mode < 5; ++mode) {
      ChooseShowMode(*form, mode);
      QCOMPARE(Control<QComboBox>(*form, "ShowMode")->currentIndex(), mode);
      QCOMPARE(Names(*form), kExpected[mode]);
    }
  }

  void NegativeConflictIndexIsListedUnderBothConflictFilters() {
    Scene scene({"odd.txt", "same.txt"}, kThreeSources, {});
    scene.Shape("odd.txt", Changed());
    scene.Shape("same.txt", Same());
    QCOMPARE(scene.File("odd.txt").ComputeConflictIndex(), -1);
    auto form = scene.Open();
    for (const int mode : {0, 1}) {
      ChooseShowMode(*form, mode);
      QCOMPARE(Names(*form), QStringList({"odd.txt"}));
      QCOMPARE(StatusOf(*form, "odd.txt"), QString("NNN!!"));
    }
    ClickFile(*form, "odd.txt");
    QCOMPARE(Text(*form, "ConflictDescrTxt"),
             QString("Unrecognized situation (INI file is missing or "
                     "incomplete)"));
  }

  void DoNothingIsNotMarkedForAction() {
    Scene scene({"a.txt", "b.txt"});
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", Changed());
    scene.File("b.txt").Action = kDoNothing;
    auto form = scene.Open();
    ChooseShowMode(*form, 2);
    QCOMPARE(Names(*form), QStringList({"a.txt"}));
  }

  void AChangedFileStaysListedUntilTheModeIsChosenAgain() {
    Scene scene({"a.txt", "b.txt"});
    scene.Shape("a.txt", Unmatched());
    scene.Shape("b.txt", Unmatched());
    auto form = scene.Open();
    ChooseShowMode(*form, 3);
    QCOMPARE(Names(*form), QStringList({"a.txt", "b.txt"}));
    ClickFile(*form, "a.txt");
    ClickButton(*form, "DoNothing");
    QCOMPARE(Names(*form), QStringList({"a.txt", "b.txt"}));
    QCOMPARE(ActionOf(*form, "a.txt"), QString("Do Nothing"));
    ChooseShowMode(*form, 2);
    ChooseShowMode(*form, 3);
    QCOMPARE(Names(*form), QStringList({"b.txt"}));
    // The list was filled again: nothing is selected.
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("Nothing selected."));
  }

  // --- The selection
  // ----------------------------------------------------------

  void OneSelectedFileShowsItsConflict() {
    Scene scene(
        {"same.txt", "changed.txt", "missing.txt", "sizes.txt", "odd.txt"});
    scene.Shape("same.txt", Same());
    scene.Shape("changed.txt", Changed());
    scene.Shape("missing.txt", MissingTwo());
    scene.Shape("sizes.txt", Sizes());
    scene.Shape("odd.txt", Unmatched());
    auto form = scene.Open();
    const struct {
      const char* name;
      const char* description;
      const char* options;
    } kCases[] = {
        {"same.txt", "No conflict; all files match", "01000"},
        {"changed.txt", "Conflict: Every copy changed.", "00100"},
        {"missing.txt",
         "Conflict (automatically handled): A source lacks the file.", "00001"},
        {"sizes.txt", "No conflict", "01000"},
        {"odd.txt",
         "Unrecognized situation (INI file is missing or incomplete)", "10000"},
    };
    for (const auto& c : kCases) {
      ClickFile(*form, c.name);
      QCOMPARE(Text(*form, "SelectedFNTxt"), QString(c.name));
      QCOMPARE(Text(*form, "ConflictDescrTxt"), QString(c.description));
      QCOMPARE(OptionsOn(*form), QString(c.options));
      for (const char* name : kOptions) {
        QVERIFY2(Control<QWidget>(*form, name)->isEnabled(), name);
      }
      QVERIFY(Control<QWidget>(*form, "ResetToDefaultBtn")->isEnabled());
    }
    // A file whose source is not its newest copy: a specific copy.
    scene.File("changed.txt").SourceIndex = 2;
    ClickFile(*form, "same.txt");
    ClickFile(*form, "changed.txt");
    QCOMPARE(OptionsOn(*form), QString("00010"));
    QCOMPARE(FolderSelection(*form), QString("010"));
    QCOMPARE(FolderImages(*form), QString("121"));
  }

  void MixedSelectionLeavesOptionsOffAndFlagsGrey() {
    Scene scene({"a.txt", "b.txt", "c.txt"});
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", Unmatched());
    scene.Shape("c.txt", Changed());
    scene.File("a.txt").ActionFlags = kFlagCreate | kFlagForceCopy;
    scene.File("b.txt").ActionFlags = kFlagCreate;
    scene.File("c.txt").ActionFlags = kFlagCreate | kFlagOverwriteReadOnly;
    auto form = scene.Open();
    SelectFiles(*form, {"a.txt", "b.txt"});
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("2 files selected."));
    QCOMPARE(Text(*form, "ConflictDescrTxt"), QString());
    QCOMPARE(OptionsOn(*form), QString("00000"));
    QCOMPARE(CheckOf(*form, "AllowCreateNew"), Qt::Checked);
    QCOMPARE(CheckOf(*form, "ForceCopy"), Qt::PartiallyChecked);
    QCOMPARE(CheckOf(*form, "OWReadOnly"), Qt::Unchecked);
    QCOMPARE(CheckOf(*form, "DReadOnly"), Qt::Unchecked);
    // With several files the details of any one of them would mislead.
    QCOMPARE(FolderCell(*form, 1, 1), QString());
    // Different source copies: no folder row is selected.
    QCOMPARE(FolderSelection(*form), QString("000"));

    // Same action and copy, mixed flags.
    SelectFiles(*form, {"a.txt", "c.txt"});
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("2 files selected."));
    QCOMPARE(OptionsOn(*form), QString("00100"));
    QCOMPARE(CheckOf(*form, "ForceCopy"), Qt::PartiallyChecked);
    QCOMPARE(CheckOf(*form, "OWReadOnly"), Qt::PartiallyChecked);
    QCOMPARE(FolderSelection(*form), QString("001"));
    QCOMPARE(ChecksShown(*form), QString("11100"));

    // Selecting changes no file.
    QCOMPARE(scene.File("a.txt").Action, kUseNewest);
    QCOMPARE(scene.File("b.txt").Action, kUndecided);
    QCOMPARE(scene.File("a.txt").ActionFlags & ~kFlagNoEffect,
             kFlagCreate | kFlagForceCopy);
    QCOMPARE(scene.File("c.txt").ActionFlags & ~kFlagNoEffect,
             kFlagCreate | kFlagOverwriteReadOnly);
  }

  void SelectAllWithTheKeyboard() {
    Scene scene({"a.txt", "b.txt", "c.txt"});
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
      scene.Shape(name, Same());
    }
    auto form = scene.Open();
    FileList(*form)->setFocus();
    QTest::keyClick(FileList(*form), Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("3 files selected."));
    QCOMPARE(OptionsOn(*form), QString("01000"));
  }

  // --- Editing
  // ----------------------------------------------------------------

  void GreyCheckBoxClickSetsTheFlagInEveryFile() {
    Scene scene({"a.txt", "b.txt"});
    scene.Shape("a.txt", Same());
    scene.Shape("b.txt", Same());
    for (const char* name : {"a.txt", "b.txt"}) {
      scene.File(name).Action = kUseNewest;
      scene.File(name).SourceIndex = 1;
    }
    scene.File("a.txt").ActionFlags = kFlagCreate | kFlagForceCopy;
    scene.File("b.txt").ActionFlags = kFlagCreate;
    auto form = scene.Open();
    QCOMPARE(ActionOf(*form, "a.txt"), QString("Copy #1 (newest)"));
    QCOMPARE(ActionOf(*form, "b.txt"), QString("Copy #1 (no effect)"));
    SelectFiles(*form, {"a.txt", "b.txt"});
    QCOMPARE(CheckOf(*form, "ForceCopy"), Qt::PartiallyChecked);

    ClickButton(*form, "ForceCopy");
    QCOMPARE(CheckOf(*form, "ForceCopy"), Qt::Checked);
    for (const char* name : {"a.txt", "b.txt"}) {
      QCOMPARE(scene.File(name).ActionFlags, kFlagCreate | kFlagForceCopy);
    }
    // The no-effect marks were computed again and the rows redrawn.
    QCOMPARE(ActionOf(*form, "b.txt"), QString("Copy #1 (newest)"));

    ClickButton(*form, "ForceCopy");
    QCOMPARE(CheckOf(*form, "ForceCopy"), Qt::Unchecked);
    for (const char* name : {"a.txt", "b.txt"}) {
      QCOMPARE(scene.File(name).ActionFlags, kFlagCreate | kFlagNoEffect);
      QCOMPARE(ActionOf(*form, name), QString("Copy #1 (no effect)"));
    }
    // Clicks never make a box grey.
    ClickButton(*form, "ForceCopy");
    ClickButton(*form, "ForceCopy");
    QCOMPARE(CheckOf(*form, "ForceCopy"), Qt::Unchecked);
  }

  void EachCheckBoxSetsItsOwnBit() {
    Scene scene({"a.txt"}, {kFolderSource, kFolderSource, kFolderMergeTo});
    scene.Shape("a.txt", Changed());
    scene.File("a.txt").ActionFlags = 0;
    auto form = scene.Open();
    ClickFile(*form, "a.txt");
    const struct {
      const char* box;
      const char* option;
      std::uint16_t bit;
    } kCases[] = {
        {"AllowCreateNew", "UseNewest", kFlagCreate},
        {"OWReadOnly", "UseNewest", kFlagOverwriteReadOnly},
        {"ForceCopy", "UseNewest", kFlagForceCopy},
        {"ProtectMerged", "UseNewest", kFlagProtectMerged},
        {"DReadOnly", "DeleteAll", kFlagDeleteReadOnly},
    };
    for (const auto& c : kCases) {
      ClickButton(*form, c.option);
      QVERIFY2(Shown(*form, c.box), c.box);
      ClickButton(*form, c.box);
      QCOMPARE(scene.File("a.txt").ActionFlags & ~kFlagNoEffect, c.bit);
      ClickButton(*form, c.box);
      QCOMPARE(scene.File("a.txt").ActionFlags & ~kFlagNoEffect, 0);
    }
  }

  void OptionButtonsSetTheActionOfEverySelectedFile() {
    Scene scene({"a.txt", "b.txt", "c.txt"});
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", Changed());
    scene.Shape("c.txt", Same());
    scene.File("a.txt").SourceIndex = 2;
    scene.File("b.txt").SourceIndex = 2;
    auto form = scene.Open();
    SelectFiles(*form, {"a.txt", "b.txt"});
    QCOMPARE(OptionsOn(*form), QString("00010"));

    ClickButton(*form, "Undecided");
    for (const char* name : {"a.txt", "b.txt"}) {
      QCOMPARE(scene.File(name).Action, kUndecided);
      QCOMPARE(ActionOf(*form, name), QString("<Undecided>"));
    }
    QCOMPARE(scene.File("c.txt").Action, kDoNothing);
    QCOMPARE(ChecksShown(*form), QString("00000"));

    ClickButton(*form, "DeleteAll");
    for (const char* name : {"a.txt", "b.txt"}) {
      QCOMPARE(scene.File(name).Action, kDeleteAll);
      QCOMPARE(ActionOf(*form, name), QString("Delete all"));
    }
    QCOMPARE(FolderImages(*form), QString("333"));
    QCOMPARE(ChecksShown(*form), QString("00001"));

    // A specific copy keeps each file's source.
    ClickButton(*form, "UseSpecific");
    for (const char* name : {"a.txt", "b.txt"}) {
      QCOMPARE(scene.File(name).Action, kUseNewest);
      QCOMPARE(scene.File(name).SourceIndex, 2);
      QCOMPARE(ActionOf(*form, name), QString("Copy #2"));
    }
    QCOMPARE(FolderImages(*form), QString("121"));
    QCOMPARE(ChecksShown(*form), QString("11100"));

    ClickButton(*form, "DoNothing");
    for (const char* name : {"a.txt", "b.txt"}) {
      QCOMPARE(scene.File(name).Action, kDoNothing);
      QCOMPARE(ActionOf(*form, name), QString("Do Nothing"));
    }
    QCOMPARE(OptionsOn(*form), QString("01000"));
  }

  void UseNewestTakesEachFilesNewestCopy() {
    Scene scene({"a.txt", "b.txt", "same.txt"});
    scene.Shape("a.txt", Changed());  // newest: 3
    scene.Shape("b.txt",
                {Present(Fresher()), Present(Fresh()), Present(Old())});
    scene.Shape("same.txt", Same());
    for (const char* name : {"a.txt", "b.txt", "same.txt"}) {
      scene.File(name).Action = kUndecided;
      scene.File(name).SourceIndex = 2;
    }
    auto form = scene.Open();
    SelectFiles(*form, {"a.txt", "b.txt", "same.txt"});
    ClickButton(*form, "UseNewest");
    QCOMPARE(scene.File("a.txt").SourceIndex, 3);
    QCOMPARE(scene.File("b.txt").SourceIndex, 1);
    QCOMPARE(scene.File("same.txt").SourceIndex, 1);
    QCOMPARE(ActionOf(*form, "a.txt"), QString("Copy #3 (newest)"));
    QCOMPARE(ActionOf(*form, "b.txt"), QString("Copy #1 (newest)"));
    QCOMPARE(ActionOf(*form, "same.txt"), QString("Copy #1 (no effect)"));
    QCOMPARE(OptionsOn(*form), QString("00100"));
    // The sources differ: no folder row stands for all of them.
    QCOMPARE(FolderSelection(*form), QString("000"));
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("2 conflicts (requiring confirmation), 3 actions "
                     "queued, 3 files total"));

    ClickFile(*form, "a.txt");
    QCOMPARE(FolderSelection(*form), QString("001"));
    QCOMPARE(FolderImages(*form), QString("112"));
  }

  void ProtectMergedIsHiddenWithoutAMergeToFolder() {
    Scene scene({"a.txt"}, {kFolderSource, kFolderSource, kFolderMirrorTo});
    scene.Shape("a.txt", Changed());
    auto form = scene.Open();
    ClickFile(*form, "a.txt");
    const struct {
      const char* option;
      const char* shown;
    } kCases[] = {
        {"Undecided", "00000"}, {"DoNothing", "00000"},
        {"UseNewest", "11100"}, {"UseSpecific", "11100"},
        {"DeleteAll", "00001"},
    };
    for (const auto& c : kCases) {
      ClickButton(*form, c.option);
      QVERIFY2(IsOn(*form, c.option), c.option);
      QCOMPARE(ChecksShown(*form), QString(c.shown));
      QVERIFY(!Shown(*form, "ProtectMerged"));
    }
    ClickFolderRow(*form, 2);
    QVERIFY(!Shown(*form, "ProtectMerged"));
  }

  void ProtectMergedIsShownForCopiesAndDeletesWithAMergeToFolder() {
    Scene scene({"a.txt"}, {kFolderSource, kFolderSource, kFolderMergeTo});
    scene.Shape("a.txt", Changed());
    auto form = scene.Open();
    ClickFile(*form, "a.txt");
    const struct {
      const char* option;
      const char* shown;
    } kCases[] = {
        {"Undecided", "00000"}, {"DoNothing", "00000"},
        {"UseNewest", "11110"}, {"UseSpecific", "11110"},
        {"DeleteAll", "00011"},
    };
    for (const auto& c : kCases) {
      ClickButton(*form, c.option);
      QCOMPARE(ChecksShown(*form), QString(c.shown));
    }
  }

  void FolderRowClickPicksASpecificCopy() {
    Scene scene({"a.txt", "b.txt"});
    scene.Shape("a.txt", Changed());  // newest: 3
    scene.Shape("b.txt", Changed());
    for (const char* name : {"a.txt", "b.txt"}) {
      scene.File(name).Action = kDoNothing;
    }
    auto form = scene.Open();
    // Doing nothing has no effect: the mark is set at load.
    QVERIFY((scene.File("a.txt").ActionFlags & kFlagNoEffect) != 0);
    SelectFiles(*form, {"a.txt", "b.txt"});
    QCOMPARE(OptionsOn(*form), QString("01000"));

    ClickFolderRow(*form, 2);
    for (const char* name : {"a.txt", "b.txt"}) {
      QCOMPARE(scene.File(name).Action, kUseNewest);
      QCOMPARE(scene.File(name).SourceIndex, 2);
      // This path leaves the no-effect mark as it was.
      QVERIFY((scene.File(name).ActionFlags & kFlagNoEffect) != 0);
      QCOMPARE(ActionOf(*form, name), QString("Copy #2 (no effect)"));
    }
    QCOMPARE(OptionsOn(*form), QString("00010"));
    QCOMPARE(ChecksShown(*form), QString("11100"));
    QCOMPARE(FolderImages(*form), QString("121"));
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("2 conflicts (requiring confirmation), 2 actions "
                     "queued, 2 files total"));

    // The newest copy turns "use newest" on.
    ClickFolderRow(*form, 3);
    QCOMPARE(scene.File("a.txt").SourceIndex, 3);
    QCOMPARE(OptionsOn(*form), QString("00100"));
    QCOMPARE(FolderImages(*form), QString("112"));

    // A later action recomputes the mark.
    ClickButton(*form, "UseSpecific");
    QCOMPARE(ActionOf(*form, "a.txt"), QString("Copy #3 (newest)"));
  }

  void FolderRowClickWithoutSelectionChangesNothing() {
    Scene scene({"a.txt"});
    scene.Shape("a.txt", Changed());
    scene.File("a.txt").Action = kDoNothing;
    auto form = scene.Open();
    ClickFolderRow(*form, 2);
    QCOMPARE(scene.File("a.txt").Action, kDoNothing);
    QCOMPARE(OptionsOn(*form).contains('1'), false);
  }

  void RefreshReadsTheFilesAgain() {
    Scene scene({"a.txt", "b.txt"});
    // The records say the copies differ; on the disk they are the same.
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", Changed());
    auto form = scene.Open();
    QCOMPARE(ActionOf(*form, "a.txt"), QString("Copy #3 (newest)"));
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("2 conflicts (requiring confirmation), 2 actions "
                     "queued, 2 files total"));
    ClickFile(*form, "a.txt");
    QCOMPARE(FolderCell(*form, 1, 3), QString("100 bytes"));

    ClickButton(*form, "RefreshBtn");
    QCOMPARE(scene.File("a.txt").Copy(1).size, 7);
    QCOMPARE(FolderCell(*form, 1, 3), QString("7 bytes"));
    QCOMPARE(ActionOf(*form, "a.txt"), QString("Do Nothing"));
    QCOMPARE(StatusOf(*form, "a.txt"), QString("NNN"));
    QCOMPARE(Text(*form, "ConflictDescrTxt"),
             QString("No conflict; all files match"));
    QCOMPARE(OptionsOn(*form), QString("01000"));
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("1 conflicts (requiring confirmation), 1 actions "
                     "queued, 2 files total"));
    // Only the selected file was read again.
    QCOMPARE(scene.File("b.txt").Copy(1).size, 100);
  }

  void ResetToDefaultRestoresTheDefaultAction() {
    Scene scene({"a.txt", "b.txt", "c.txt"});
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", MissingTwo());
    scene.Shape("c.txt", Changed());
    auto form = scene.Open();
    SelectFiles(*form, {"a.txt", "b.txt", "c.txt"});
    ClickButton(*form, "Undecided");
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("3 conflicts, 3 undecided, 3 files total"));
    // Undecided has no effect, and the folder row keeps that mark.
    ClickFolderRow(*form, 1);
    QCOMPARE(ActionOf(*form, "c.txt"), QString("Copy #1 (no effect)"));
    SelectFiles(*form, {"a.txt", "b.txt"});

    ClickButton(*form, "ResetToDefaultBtn");
    QCOMPARE(scene.File("a.txt").Action, kUseNewest);
    QCOMPARE(scene.File("a.txt").SourceIndex, 3);
    QCOMPARE(scene.File("b.txt").Action, kDeleteAll);
    QCOMPARE(ActionOf(*form, "a.txt"), QString("Copy #3 (newest)"));
    QCOMPARE(ActionOf(*form, "b.txt"), QString("Delete all"));
    QCOMPARE(ActionOf(*form, "c.txt"), QString("Copy #1 (no effect)"));
    QCOMPARE(OptionsOn(*form), QString("00000"));
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("2 files selected."));
    QCOMPARE(Text(*form, "StatsTxt"),
             QString("3 conflicts, 3 actions queued, 3 files total"));
  }

  // --- Sorting --------------------------------------------------------------

  void ColumnClicksSortAndFlip() {
    Scene scene({"b.txt", "C.txt", "a.txt", "d.txt"});
    scene.Shape("b.txt", Changed());
    scene.Shape("C.txt", Same());
    scene.Shape("a.txt", Unmatched());
    scene.Shape("d.txt", MissingTwo());
    auto form = scene.Open();
    const QStringList scanned = Names(*form);
    QCOMPARE(scanned.size(), 4);
    QHeaderView* header = FileList(*form)->header();

    ClickHeader(*form, FileListModel::kFile);
    QCOMPARE(Names(*form), QStringList({"a.txt", "b.txt", "C.txt", "d.txt"}));
    QCOMPARE(header->sortIndicatorSection(), 0);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);

    ClickHeader(*form, FileListModel::kFile);
    QCOMPARE(Names(*form), QStringList({"d.txt", "C.txt", "b.txt", "a.txt"}));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);

    // Another column keeps the direction.
    ClickHeader(*form, FileListModel::kAction);
    QCOMPARE(Column(*form, FileListModel::kAction),
             QStringList({"Do Nothing", "Delete all", "Copy #3 (newest)",
                          "<Undecided>"}));
    QCOMPARE(header->sortIndicatorSection(), 2);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);

    ClickHeader(*form, FileListModel::kAction);
    QCOMPARE(Names(*form), QStringList({"a.txt", "b.txt", "d.txt", "C.txt"}));

    ClickHeader(*form, FileListModel::kStatus);
    QCOMPARE(Column(*form, FileListModel::kStatus),
             QStringList({"N_N!", "NNN", "NNN!!", "NNN!!"}));

    // Rows still lead to their own files.
    ClickFile(*form, "d.txt");
    QCOMPARE(Text(*form, "SelectedFNTxt"), QString("d.txt"));
    QCOMPARE(FolderCell(*form, 2, 1), QString("Not found"));
    ClickButton(*form, "DoNothing");
    QCOMPARE(scene.File("d.txt").Action, kDoNothing);
    QCOMPARE(scene.File("b.txt").Action, kUseNewest);
    // An edited row keeps its place until the next sort.
    QCOMPARE(Names(*form), QStringList({"d.txt", "C.txt", "a.txt", "b.txt"}));
  }

  void SortingSurvivesAShowModeChange() {
    Scene scene({"b.txt", "a.txt", "c.txt"});
    scene.Shape("b.txt", Changed());
    scene.Shape("a.txt", Same());
    scene.Shape("c.txt", Changed());
    auto form = scene.Open();
    ClickHeader(*form, FileListModel::kFile);
    ClickHeader(*form, FileListModel::kFile);
    QCOMPARE(Names(*form), QStringList({"c.txt", "b.txt", "a.txt"}));
    ChooseShowMode(*form, 0);
    QCOMPARE(Names(*form), QStringList({"c.txt", "b.txt"}));
    ChooseShowMode(*form, 4);
    QCOMPARE(Names(*form), QStringList({"c.txt", "b.txt", "a.txt"}));
  }

  // --- Ending the window
  // -------------------------------------------------------

  void ContinueWithNothingUndecidedClosesAtOnce() {
    Scene scene({"a.txt"});
    scene.Shape("a.txt", Changed());
    ConfirmForm form(scene.program, scene.set);
    const Confirmation outcome =
        RunWith(form, [&form] { ClickButton(form, "ContinueBtn"); });
    QCOMPARE(outcome, Confirmation::kContinue);
    QVERIFY(scene.ui.messages.empty());
    QVERIFY(!scene.set.StopFlag);
    QVERIFY(!form.isVisible());
  }

  void ContinueWithUndecidedFilesAsksAndNoKeepsTheWindow() {
    Scene scene({"a.txt", "b.txt"});
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", Unmatched());
    scene.ui.answers = {kIdNo, kIdYes};
    ConfirmForm form(scene.program, scene.set);
    bool open_after_no = false;
    const Confirmation outcome = RunWith(form, [&] {
      ClickButton(form, "ContinueBtn");
      open_after_no = form.isVisible();
      ClickButton(form, "ContinueBtn");
    });
    QVERIFY(open_after_no);
    QCOMPARE(outcome, Confirmation::kContinue);
    QVERIFY(!scene.set.StopFlag);
    QCOMPARE(scene.ui.messages.size(), std::size_t{2});
    const ShownMessage& question = scene.ui.messages.front();
    QCOMPARE(Q(question.text),
             QString("One or more files are marked 'Undecided'.  If you "
                     "continue, no action will be performed for these files. "
                     " Do you wish to continue anyway?"));
    QCOMPARE(question.style, kMbYesNo | kMbExclamation | kMbDefaultButton2);
    QCOMPARE(Q(question.caption), QString("Pairwell"));
  }

  void UndecidedFilesOutsideTheListAreAskedAboutToo() {
    Scene scene({"a.txt", "b.txt"}, kThreeSources, kCatalogue, false);
    scene.Shape("a.txt", Changed());
    scene.Shape("b.txt", Sizes());
    scene.File("b.txt").Action = kUndecided;
    ConfirmForm form(scene.program, scene.set);
    QCOMPARE(Names(form), QStringList({"a.txt"}));
    scene.ui.answers = {kIdNo};
    bool open_after_no = false;
    RunWith(form, [&] {
      ClickButton(form, "ContinueBtn");
      open_after_no = form.isVisible();
      ClickButton(form, "CancelBtn");
    });
    QVERIFY(open_after_no);
    QCOMPARE(scene.ui.messages.size(), std::size_t{1});
  }

  void CancelNeverAsks() {
    Scene scene({"a.txt"});
    scene.Shape("a.txt", Unmatched());
    ConfirmForm form(scene.program, scene.set);
    const Confirmation outcome =
        RunWith(form, [&form] { ClickButton(form, "CancelBtn"); });
    QCOMPARE(outcome, Confirmation::kCancel);
    QVERIFY(scene.set.StopFlag);
    QVERIFY(scene.ui.messages.empty());
  }

  void CloseBoxAsksFirst() {
    Scene scene({"a.txt"});
    scene.Shape("a.txt", Changed());
    scene.ui.answers = {kIdNo, kIdYes};
    ConfirmForm form(scene.program, scene.set);
    bool open_after_no = false;
    bool stop_after_no = true;
    const Confirmation outcome = RunWith(form, [&] {
      form.close();
      open_after_no = form.isVisible();
      stop_after_no = scene.set.StopFlag;
      form.close();
    });
    QVERIFY(open_after_no);
    QVERIFY(!stop_after_no);
    QCOMPARE(outcome, Confirmation::kCancel);
    QVERIFY(scene.set.StopFlag);
    QCOMPARE(scene.ui.messages.size(), std::size_t{2});
    for (const ShownMessage& m : scene.ui.messages) {
      QCOMPARE(Q(m.text),
               QString("Are you sure you want to cancel the synchronization?"));
      QCOMPARE(m.style, kMbYesNo);
      QCOMPARE(Q(m.caption), QString("Pairwell"));
    }
  }

  void EscapeAsksLikeTheCloseBox() {
    Scene scene({"a.txt"});
    scene.Shape("a.txt", Changed());
    scene.ui.answers = {kIdYes};
    ConfirmForm form(scene.program, scene.set);
    const Confirmation outcome = RunWith(
        form, [&form] { QTest::keyClick(FileList(form), Qt::Key_Escape); });
    QCOMPARE(outcome, Confirmation::kCancel);
    QVERIFY(scene.set.StopFlag);
    QCOMPARE(scene.ui.messages.size(), std::size_t{1});
  }

  void TheFrontEndShowsTheWindowModally() {
    Scene scene({"a.txt"});
    scene.Shape("a.txt", Changed());
    QString caption;
    QTimer::singleShot(0, [&caption] {
      QWidget* modal = QApplication::activeModalWidget();
      if (modal == nullptr) return;
      caption = modal->windowTitle();
      if (modal->objectName() == "ConfirmForm") {
        ClickButton(*modal, "CancelBtn");
      }
    });
    // A window that stays open fails the test rather than hanging it.
    QObject watchdog;
    QTimer::singleShot(20000, &watchdog, [] {
      if (auto* modal =
              qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        modal->done(QDialog::Accepted);
      }
    });
    QCOMPARE(scene.ui.ConfirmActions(scene.set), Confirmation::kCancel);
    QCOMPARE(caption, QString("Confirm/Refine Sync Actions - [Docs]"));
    QVERIFY(scene.set.StopFlag);
  }

  void HelpOpensThePageOfThisWindow() {
    Scene scene({"a.txt"});
    scene.Shape("a.txt", Changed());
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler("file", &catcher, "Open");
    auto form = scene.Open();
    ClickButton(*form, "HelpBtn");
    QDesktopServices::unsetUrlHandler("file");
    // Opened, or reported missing: either way it is this window's page.
    QStringList named;
    for (const QUrl& url : catcher.opened) named << url.toString();
    for (const ShownMessage& m : scene.ui.messages) named << Q(m.text);
    QCOMPARE(named.size(), 1);
    QVERIFY2(named.front().contains("isdlg.html"), qPrintable(named.front()));
    QVERIFY(form->isVisible());
  }
};

}  // namespace pairwell

QTEST_MAIN(pairwell::ConfirmFormTest)
#include "confirm_form_test.moc"
