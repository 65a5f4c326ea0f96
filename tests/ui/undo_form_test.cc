// Undoing a run from the main window, on real folders synchronized by a real
// run: the File menu's entry, the dialog's list of runs and its steps, the
// files put back, and the line about kept copies in the confirm window.
#include "ui/run/undo_form.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QAbstractButton>
#include <QAbstractListModel>
#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>
#include <functional>
#include <memory>
#include <string>

#include "app/program.h"
#include "engine/action_texts.h"
#include "engine/run_undo.h"
#include "engine/synchronizer.h"
#include "ui/main_window_harness.h"
#include "ui/modal_driver.h"
#include "ui/run/log_form.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

// Writes the file with that content, last modified `seconds` after the epoch.
bool PutFile(const QString& path, const QByteArray& content, qint64 seconds) {
  QDir().mkpath(QFileInfo(path).path());
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) ||
      file.write(content) != content.size()) {
    return false;
  }
  file.close();
  const struct timespec times[2] = {{static_cast<time_t>(seconds), 0},
                                    {static_cast<time_t>(seconds), 0}};
  return utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) ==
         0;
}

// Writes the file with that content, dated now.
bool WriteNow(const QString& path, const QByteArray& content) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly) &&
         file.write(content) == content.size();
}

QByteArray Content(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qint64 ModifiedAt(const QString& path) {
  return QFileInfo(path).lastModified().toSecsSinceEpoch();
}

// 2023-11-14, a last sync on 2024-01-01, and edits made after it.
constexpr qint64 kOld = 1700000000;
constexpr qint64 kEdited = 1710000000;
constexpr char kLastSync[] = "LastSyncDate=2024-01-01 00:00:00\r\n";

// Two folders A and B of the set "Docs", last synchronized on 2024-01-01.
// Since then new.txt was made in A, changed.txt edited in A and gone.txt
// deleted from A: a sync creates one file in B, replaces one and deletes
// one.
class Scene {
 public:
  explicit Scene(const std::string& set_keys = "")
      : a_(folders_.filePath(QStringLiteral("A"))),
        b_(folders_.filePath(QStringLiteral("B"))) {
    ok_ = PutFile(a_ + "/same.txt", "alike", kOld) &&
          PutFile(b_ + "/same.txt", "alike", kOld) &&
          PutFile(a_ + "/new.txt", "fresh", kEdited) &&
          PutFile(a_ + "/changed.txt", "edited in A", kEdited) &&
          PutFile(b_ + "/changed.txt", "the old text", kOld) &&
          PutFile(b_ + "/gone.txt", "deleted from A", kOld);
    h_ = std::make_unique<MainWindowHarness>(
        SetSection("Docs", {a_.toStdString(), b_.toStdString()}) + kLastSync +
            set_keys,
        "", /*with_catalogue=*/true);
  }

  bool ok() const { return ok_; }
  MainWindowHarness& h() { return *h_; }
  Synchronizer& set() { return h_->program().SyncSets().Item(1); }
  QString A(const QString& name) const { return a_ + "/" + name; }
  QString B(const QString& name) const { return b_ + "/" + name; }

  // Synchronizes the set from the main window; whether the run went
  // without a word and B holds A's copy of changed.txt.
  bool Sync() {
    const std::size_t before = h_->ui.messages.size();
    QTest::mouseClick(h_->Find<QPushButton>("SyncBtn"), Qt::LeftButton);
    return h_->ui.messages.size() == before &&
           Content(B(QStringLiteral("changed.txt"))) ==
               Content(A(QStringLiteral("changed.txt")));
  }

 private:
  QTemporaryDir folders_;
  QString a_;
  QString b_;
  bool ok_ = false;
  std::unique_ptr<MainWindowHarness> h_;
};

// What the undo dialog showed.
struct UndoView {
  QString title;
  QList<QStringList> runs;  // each row's cells
  int current_row = -1;
  bool current_selected = false;
  QStringList steps;
  QString summary;
  bool undo_enabled = false;
  bool force_enabled = false;
  bool force_checked = false;
  bool list_on_a_model = false;
};

template <typename T>
T* Control(QWidget& dialog, const char* name) {
  T* control = dialog.findChild<T*>(QString::fromLatin1(name));
  if (control == nullptr) qFatal("no control %s", name);
  return control;
}

UndoView Read(QWidget& dialog) {
  UndoView view;
  view.title = dialog.windowTitle();
  auto* runs = Control<QTreeWidget>(dialog, "RunList");
  for (int r = 0; r < runs->topLevelItemCount(); ++r) {
    QStringList cells;
    for (int c = 0; c < runs->columnCount(); ++c) {
      cells << runs->topLevelItem(r)->text(c);
    }
    view.runs << cells;
  }
  if (QTreeWidgetItem* current = runs->currentItem()) {
    view.current_row = runs->indexOfTopLevelItem(current);
    view.current_selected = current->isSelected();
  }
  auto* steps = Control<QListView>(dialog, "PreviewList");
  const QAbstractItemModel* model = steps->model();
  for (int r = 0; r < model->rowCount(); ++r) {
    view.steps << model->index(r, 0).data().toString();
  }
  // A run can have 50,000 steps: they come from a model, not from items.
  view.list_on_a_model =
      qobject_cast<QListWidget*>(steps) == nullptr &&
      qobject_cast<const QAbstractListModel*>(model) != nullptr;
  view.summary = Control<QLabel>(dialog, "PreviewTxt")->text();
  view.undo_enabled = Control<QPushButton>(dialog, "UndoBtn")->isEnabled();
  auto* force = Control<QCheckBox>(dialog, "ForceChk");
  view.force_enabled = force->isEnabled();
  view.force_checked = force->isChecked();
  return view;
}

// Opens the undo dialog from the File menu and runs `act` inside it (a
// dialog left open is closed after it). Whether it was the undo dialog.
bool OpenUndo(MainWindowHarness& h, const std::function<void(QWidget&)>& act) {
  ModalDriver driver(act);
  h.Action("mnuUndoRun")->trigger();
  return driver.acted() && driver.dialog_name() == QStringLiteral("UndoForm");
}

UndoView ReadUndo(MainWindowHarness& h, bool* opened) {
  UndoView view;
  *opened = OpenUndo(h, [&](QWidget& dialog) { view = Read(dialog); });
  return view;
}

void ClickCheckBox(QWidget& dialog, const char* name) {
  auto* box = Control<QCheckBox>(dialog, name);
  QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier,
                    QPoint(6, box->height() / 2));
}

void ClickButton(QWidget& dialog, const char* name) {
  QTest::mouseClick(Control<QPushButton>(dialog, name), Qt::LeftButton);
}

QString Joined(const QStringList& lines) {
  return lines.join(QLatin1Char('\n'));
}

}  // namespace

class UndoFormTest : public QObject {
  Q_OBJECT

 private slots:
  void MenuEntryEndsTheFileMenu() {
    MainWindowHarness h(SetSection("Docs", {"/a", "/b"}));
    QStringList names;
    for (QAction* action : h.Find<QMenu>("mnuFile")->actions()) {
      names << action->objectName();
    }
    QCOMPARE(names, QStringList({"mnuSynchronize", "mnuInteractiveSynchronize",
                                 "mnuFileS1", "mnuSynchronizeMulti",
                                 "mnuSynchronizeAll", "mnuFileS2", "mnuExit",
                                 "mnuExitWOSave", "mnuFileS3", "mnuUndoRun"}));
    QVERIFY(h.Action("mnuFileS3")->isSeparator());
    QCOMPARE(h.Action("mnuUndoRun")->text(), QStringLiteral("&Undo a Run..."));
    QCOMPARE(h.Action("mnuExitWOSave")->text(),
             QStringLiteral("Exit &Without Saving"));
  }

  void DialogListsTheRunsNewestFirst() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    // A second run: changed.txt edited in A once more, now, after the
    // first run.
    QVERIFY(WriteNow(scene.A(QStringLiteral("changed.txt")), "edited again"));
    QVERIFY(scene.Sync());
    QCOMPARE(Content(scene.B(QStringLiteral("changed.txt"))),
             QByteArray("edited again"));

    bool opened = false;
    const UndoView view = ReadUndo(scene.h(), &opened);

    QVERIFY(opened);
    QCOMPARE(view.title, QStringLiteral("Undo a Run - Docs"));
    QCOMPARE(view.runs.size(), 2);
    // Run, Started, Kind, Created, Replaced, Deleted.
    const QStringList newest = view.runs[0];
    const QStringList first = view.runs[1];
    QCOMPARE(newest.mid(2), QStringList({"Sync", "0", "1", "0"}));
    QCOMPARE(first.mid(2), QStringList({"Sync", "1", "1", "1"}));
    QVERIFY2(newest[0] > first[0], qPrintable(newest[0] + " " + first[0]));
    QVERIFY(!newest[1].isEmpty());
    QCOMPARE(view.current_row, 0);
    QVERIFY(view.current_selected);
    QVERIFY(view.undo_enabled);
  }

  void PreviewShowsTheStepsAndTheChangedCount() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    // The copy the run made is edited afterwards.
    QVERIFY(PutFile(scene.B(QStringLiteral("new.txt")), "edited in B",
                    kEdited + 120));

    bool opened = false;
    const UndoView view = ReadUndo(scene.h(), &opened);

    QVERIFY(opened);
    QVERIFY(view.list_on_a_model);
    const QString steps = Joined(view.steps);
    QCOMPARE(view.steps.size(), 3);
    QVERIFY2(view.steps.contains("Leave " + scene.B("new.txt") +
                                 ": it changed since the run"),
             qPrintable(steps));
    const QRegularExpression put_back_changed(
        "^Put back " + QRegularExpression::escape(scene.B("changed.txt")) +
        " from .*/\\.pairwell/versions/.*changed\\.txt$");
    const QRegularExpression put_back_gone(
        "^Put back " + QRegularExpression::escape(scene.B("gone.txt")) +
        " from .*/\\.pairwell/versions/.*gone\\.txt$");
    QVERIFY2(view.steps.indexOf(put_back_changed) >= 0, qPrintable(steps));
    QVERIFY2(view.steps.indexOf(put_back_gone) >= 0, qPrintable(steps));
    QCOMPARE(view.summary,
             QStringLiteral("Undoing this run puts back 2 files; 1 changed "
                            "since the run and is left unless you tick the "
                            "box below."));
    QVERIFY(view.force_enabled);
    QVERIFY(!view.force_checked);
  }

  void FoldersTheRunMadeAreCountedApart() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(
        PutFile(scene.A(QStringLiteral("sub/deep.txt")), "deeper", kEdited));
    QVERIFY(scene.Sync());
    QVERIFY(QFile::exists(scene.B(QStringLiteral("sub/deep.txt"))));

    bool opened = false;
    const UndoView view = ReadUndo(scene.h(), &opened);

    QVERIFY(opened);
    QVERIFY2(view.steps.contains("Remove the folder " + scene.B("sub") +
                                 " when empty"),
             qPrintable(Joined(view.steps)));
    QCOMPARE(view.steps.size(), 5);
    QCOMPARE(view.summary, QStringLiteral("Undoing this run puts back 4 files "
                                          "and 1 folder."));
  }

  void StepsAlreadyUndoneAreNotListed() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    QVERIFY(QFile::remove(scene.B(QStringLiteral("new.txt"))));

    bool opened = false;
    const UndoView view = ReadUndo(scene.h(), &opened);

    QVERIFY(opened);
    QCOMPARE(view.steps.size(), 2);
    QVERIFY2(!Joined(view.steps).contains(QStringLiteral("new.txt")),
             qPrintable(Joined(view.steps)));
    QCOMPARE(view.summary,
             QStringLiteral("Undoing this run puts back 2 files."));
  }

  void ForceChkIncludesTheChangedFile() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    QVERIFY(PutFile(scene.B(QStringLiteral("new.txt")), "edited in B",
                    kEdited + 120));
    UndoView before;
    UndoView ticked;
    UndoView cleared;

    QVERIFY(OpenUndo(scene.h(), [&](QWidget& dialog) {
      before = Read(dialog);
      ClickCheckBox(dialog, "ForceChk");
      ticked = Read(dialog);
      ClickCheckBox(dialog, "ForceChk");
      cleared = Read(dialog);
    }));

    const QString left =
        "Leave " + scene.B("new.txt") + ": it changed since the run";
    const QString removed = "Remove " + scene.B("new.txt") +
                            ", which the run created (its present content "
                            "kept)";
    QVERIFY2(before.steps.contains(left), qPrintable(Joined(before.steps)));
    QVERIFY(ticked.force_checked);
    QVERIFY2(ticked.steps.contains(removed), qPrintable(Joined(ticked.steps)));
    QVERIFY(!ticked.steps.contains(left));
    QCOMPARE(ticked.summary,
             QStringLiteral("Undoing this run puts back 3 files; 1 of them "
                            "changed since the run: their present content is "
                            "kept."));
    QCOMPARE(cleared.steps, before.steps);
    QCOMPARE(cleared.summary, before.summary);
  }

  void UndoButtonPutsTheFolderBack() {
    Scene scene;
    QVERIFY(scene.ok());
    const double last_sync_before = scene.set().LastSyncDate;
    QVERIFY(scene.Sync());
    QVERIFY(QFile::exists(scene.B(QStringLiteral("new.txt"))));
    QVERIFY(!QFile::exists(scene.B(QStringLiteral("gone.txt"))));
    QString undone_id;
    scene.h().ui.answers = {kIdYes};

    QVERIFY(OpenUndo(scene.h(), [&](QWidget& dialog) {
      undone_id = Read(dialog).runs.value(0).value(0);
      ClickButton(dialog, "UndoBtn");
    }));

    // Only the question was asked: nothing was left.
    QCOMPARE(scene.h().ui.messages.size(), std::size_t{1});
    QVERIFY(
        QString::fromStdString(scene.h().ui.messages[0].text)
            .startsWith("Undo the run " + undone_id + " of the set 'Docs'?"));
    QCOMPARE(scene.h().ui.messages[0].style & kMbButtonsMask, kMbYesNo);
    QCOMPARE(Content(scene.B(QStringLiteral("changed.txt"))),
             QByteArray("the old text"));
    QCOMPARE(ModifiedAt(scene.B(QStringLiteral("changed.txt"))), kOld);
    QVERIFY(!QFile::exists(scene.B(QStringLiteral("new.txt"))));
    QCOMPARE(Content(scene.B(QStringLiteral("gone.txt"))),
             QByteArray("deleted from A"));
    QCOMPARE(ModifiedAt(scene.B(QStringLiteral("gone.txt"))), kOld);
    QCOMPARE(Content(scene.A(QStringLiteral("new.txt"))), QByteArray("fresh"));
    QCOMPARE(scene.set().LastSyncDate, last_sync_before);
    QVERIFY(scene.h().ui.ProgressWindow() != nullptr);
    QCOMPARE(scene.h().ui.ProgressWindow()->windowTitle(),
             QStringLiteral("Undo - Docs"));
    QVERIFY(scene.h().Find<QPushButton>("SyncBtn")->isEnabled());

    bool opened = false;
    const UndoView after = ReadUndo(scene.h(), &opened);
    QVERIFY(opened);
    QCOMPARE(after.runs.size(), 2);
    QCOMPARE(after.runs[0][2], "Undo of " + undone_id);
    QCOMPARE(after.runs[1][0], undone_id);
  }

  void AnsweringNoKeepsTheDialogAndTheFiles() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    scene.h().ui.answers = {kIdNo};
    bool still_open = false;

    QVERIFY(OpenUndo(scene.h(), [&](QWidget& dialog) {
      ClickButton(dialog, "UndoBtn");
      still_open = dialog.isVisible();
    }));

    QVERIFY(still_open);
    QCOMPARE(scene.h().ui.messages.size(), std::size_t{1});
    QVERIFY(QFile::exists(scene.B(QStringLiteral("new.txt"))));
    QVERIFY(!QFile::exists(scene.B(QStringLiteral("gone.txt"))));
  }

  void FileChangedSinceTheRunIsLeftAndTheLogNamed() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    QVERIFY(PutFile(scene.B(QStringLiteral("new.txt")), "edited in B",
                    kEdited + 120));
    scene.h().ui.answers = {kIdYes};

    QVERIFY(OpenUndo(scene.h(),
                     [&](QWidget& dialog) { ClickButton(dialog, "UndoBtn"); }));

    QCOMPARE(scene.h().ui.messages.size(), std::size_t{2});
    QCOMPARE(
        QString::fromStdString(scene.h().ui.messages[1].text),
        QStringLiteral("1 file was left as it was: the log lists it and why."));
    QCOMPARE(Content(scene.B(QStringLiteral("new.txt"))),
             QByteArray("edited in B"));
    QCOMPARE(Content(scene.B(QStringLiteral("changed.txt"))),
             QByteArray("the old text"));
  }

  void RunThatCannotBeUndoneSaysWhy() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    // The copy the run kept of the deleted file goes missing.
    QDirIterator kept(scene.B(QStringLiteral(".pairwell")),
                      {QStringLiteral("gone.txt")}, QDir::Files | QDir::Hidden,
                      QDirIterator::Subdirectories);
    QVERIFY(kept.hasNext());
    QVERIFY(QFile::remove(kept.next()));

    bool opened = false;
    const UndoView view = ReadUndo(scene.h(), &opened);

    QVERIFY(opened);
    QCOMPARE(view.runs.size(), 1);
    QVERIFY2(view.summary.startsWith("The run " + view.runs[0][0] +
                                     " of the set 'Docs' cannot be undone"),
             qPrintable(view.summary));
    QVERIFY2(view.summary.contains(scene.B(QStringLiteral("gone.txt"))),
             qPrintable(view.summary));
    QVERIFY(view.steps.isEmpty());
    QVERIFY(!view.undo_enabled);
  }

  void SetWithoutRunsCannotUndo() {
    Scene scene;
    QVERIFY(scene.ok());

    bool opened = false;
    const UndoView view = ReadUndo(scene.h(), &opened);

    QVERIFY(opened);
    QVERIFY(view.runs.isEmpty());
    QVERIFY(view.steps.isEmpty());
    QCOMPARE(view.summary,
             QStringLiteral("This set has no run that can be undone."));
    QVERIFY(!view.undo_enabled);
    QVERIFY(!view.force_enabled);
  }

  void EscapeClosesWithoutUndoing() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    bool closed = false;

    QVERIFY(OpenUndo(scene.h(), [&](QWidget& dialog) {
      QTest::keyClick(&dialog, Qt::Key_Escape);
      closed = !dialog.isVisible();
    }));

    QVERIFY(closed);
    QVERIFY(scene.h().ui.messages.empty());
    QVERIFY(QFile::exists(scene.B(QStringLiteral("new.txt"))));
  }

  // Also run with QT_SCALE_FACTOR=2 (see tests/CMakeLists.txt).
  void ControlsAreNotClipped() {
    Scene scene;
    QVERIFY(scene.ok());
    QVERIFY(scene.Sync());
    UndoForm form(scene.h().program(), scene.set());
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));

    QSet<QChar> keys;
    for (QWidget* control : form.findChildren<QWidget*>()) {
      if (!control->isVisible()) continue;
      const QString name = control->objectName();
      QString text;
      if (auto* label = qobject_cast<QLabel*>(control)) text = label->text();
      if (auto* button = qobject_cast<QAbstractButton*>(control)) {
        text = button->text();
      }
      if (!name.isEmpty() &&
          (qobject_cast<QLabel*>(control) != nullptr ||
           qobject_cast<QAbstractButton*>(control) != nullptr)) {
        const QRect place(control->mapTo(&form, QPoint(0, 0)), control->size());
        QVERIFY2(form.rect().contains(place), qPrintable(name));
        const QSize hint = control->sizeHint();
        auto* label = qobject_cast<QLabel*>(control);
        if (label != nullptr && label->wordWrap()) {
          QVERIFY2(control->height() >= label->heightForWidth(control->width()),
                   qPrintable(name));
        } else {
          QVERIFY2(control->width() >= hint.width() &&
                       control->height() >= hint.height(),
                   qPrintable(name));
        }
      }
      const qsizetype amp = text.indexOf(QLatin1Char('&'));
      if (amp >= 0 && amp + 1 < text.size()) {
        const QChar key = text.at(amp + 1).toLower();
        QVERIFY2(!keys.contains(key), qPrintable(text));
        keys.insert(key);
      }
    }
    QCOMPARE(keys.size(), 4);  // the two lists, the box and Undo Run
    auto* runs = Control<QTreeWidget>(form, "RunList");
    const QAbstractItemView* view = runs;  // where the hint is public
    for (int c = 0; c < runs->columnCount(); ++c) {
      const int needed = std::max(runs->header()->sectionSizeHint(c),
                                  view->sizeHintForColumn(c));
      QVERIFY2(runs->header()->sectionSize(c) >= needed,
               qPrintable(runs->headerItem()->text(c)));
    }
  }

  void ConfirmWindowTellsWhereReplacedCopiesGo() {
    Scene scene("VersionDays=7\r\n");
    QVERIFY(scene.ok());
    QString kept;
    QRect stats;
    QRect kept_place;
    ModalDriver driver([&](QWidget& confirm) {
      auto* kept_txt = confirm.findChild<QLabel*>(QStringLiteral("KeptTxt"));
      auto* stats_txt = confirm.findChild<QLabel*>(QStringLiteral("StatsTxt"));
      if (kept_txt == nullptr || stats_txt == nullptr) return;
      kept = kept_txt->text();
      stats =
          QRect(stats_txt->mapTo(&confirm, QPoint(0, 0)), stats_txt->size());
      kept_place =
          QRect(kept_txt->mapTo(&confirm, QPoint(0, 0)), kept_txt->size());
      confirm.findChild<QPushButton*>(QStringLiteral("CancelBtn"))->click();
    });

    QTest::mouseClick(scene.h().Find<QPushButton>("InteractiveSyncBtn"),
                      Qt::LeftButton);

    QCOMPARE(driver.dialog_name(), QStringLiteral("ConfirmForm"));
    QCOMPARE(kept, QString::fromStdString(KeptCopiesText(scene.set())));
    QVERIFY2(kept.contains(QStringLiteral("kept for 7 days in "
                                          ".pairwell/versions")),
             qPrintable(kept));
    // Directly below the statistics, from the same left edge.
    QCOMPARE(kept_place.left(), stats.left());
    QVERIFY(kept_place.top() >= stats.bottom());
    QVERIFY(kept_place.top() - stats.bottom() < 20);
    QVERIFY(!QFile::exists(scene.B(QStringLiteral("new.txt"))));
  }
};

}  // namespace pairwell

QTEST_MAIN(pairwell::UndoFormTest)
#include "undo_form_test.moc"
