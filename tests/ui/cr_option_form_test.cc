// The conflict-resolution options dialog, driven through its real controls
// while it runs modally.
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QtTest>
#include <fstream>
#include <cstdio>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/program.h"
#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/conflict_descriptor.h"
#include "engine/synchronizer.h"
#include "support/temp_dir.h"
#include "ui/editor/cr_option_form.h"
#include "ui/modal_driver.h"
#include "ui/scripted_front_end.h"

using pairwell::ConflictDescriptor;
using pairwell::CROptionForm;
using pairwell::ModalDriver;
using pairwell::INIFileSection;
using pairwell::Program;
using pairwell::ScriptedFrontEnd;
using pairwell::Synchronizer;
using pairwell::TempDir;

namespace {

std::string ShippedIni() {
  std::ifstream in(PAIRWELL_SOURCE_DIR "/data/Pairwell.ini", std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// A catalogue with one type of each kind the dialog treats differently.
std::string SmallIni() {
  return "[Conflict Types]\r\n"
         "*Hidden=000 USENEWEST* \"Never offered\"\r\n"
         "Only nothing=001 DONOTHING* \"Allows doing nothing only.\\nSecond "
         "line.\"\r\n"
         "+Plus all=003 USENEWEST* DONOTHING DELETEALL \"Everything goes\"\r\n"
         "Delete or copy=004 DELETEALL* USENEWEST \"Delete or copy it\"\r\n";
}

// 25 configurable types with three starred ones among them.
std::string LargeIni() {
  std::string text = "[Conflict Types]\r\n";
  for (int i = 1; i <= 25; ++i) {
    if (i % 10 == 1) text += "*Hidden " + std::to_string(i) + "=000 DONOTHING*\r\n";
    char name[16];
    std::snprintf(name, sizeof name, "Type %02d", i);
    text += std::string(name) + "=??? DONOTHING USENEWEST* \"Type number " +
            std::to_string(i) + " of many\"\r\n";
  }
  return text;
}

// A program with one set "Docs" read from the given catalogue.
struct Fixture {
  explicit Fixture(const std::string& ini_text) {
    dir.WriteFile("Pairwell.ini", ini_text);
    qputenv("PAIRWELL_INI", QByteArray::fromStdString(dir.Join("Pairwell.ini")));
    program = std::make_unique<Program>(ui);
    ui.SetProgram(program.get());
    program->Main("");
    set = &program->NewSyncSet("Docs");
  }
  ~Fixture() {
    program.reset();
    qunsetenv("PAIRWELL_INI");
  }
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;

  // The i-th configurable type of the set, 1-based.
  ConflictDescriptor& Configurable(int k) {
    for (int i = 1; i <= set->ConflictTypeCount(); ++i) {
      if (set->ConflictTypes(i).Configurable && --k == 0) {
        return set->ConflictTypes(i);
      }
    }
    throw std::out_of_range("no such configurable type");
  }
  ConflictDescriptor& Named(const std::string& name) {
    for (int i = 1; i <= set->ConflictTypeCount(); ++i) {
      if (set->ConflictTypes(i).Name == name) return set->ConflictTypes(i);
    }
    throw std::out_of_range(name);
  }

  TempDir dir;
  ScriptedFrontEnd ui;
  std::unique_ptr<Program> program;
  Synchronizer* set = nullptr;
};

// Everything of a descriptor the dialog may touch.
std::string Snapshot(const Synchronizer& set) {
  std::string out;
  for (int i = 1; i <= set.ConflictTypeCount(); ++i) {
    const ConflictDescriptor& t = set.ConflictTypes(i);
    out += t.Name + "|" + std::to_string(t.Action) + "|" +
           std::to_string(t.CreateDest) + std::to_string(t.DefCreateDest) +
           std::to_string(t.ListChecked) + std::to_string(t.DefAction) + "|" +
           std::to_string(t.AllowedActions) + "\n";
  }
  return out;
}

QString BoxText(const std::string& text) {
  QString result = QString::fromStdString(text);
  result.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  return result;
}

template <typename T>
T* Get(CROptionForm& form, const char* name) {
  return form.findChild<T*>(QString::fromLatin1(name));
}

QTreeWidget* List(CROptionForm& form) { return Get<QTreeWidget>(form, "ConList"); }

// Chooses row r (0-based) with the mouse, as the person would.
void ClickRow(CROptionForm& form, int r) {
  QTreeWidget* list = List(form);
  QTreeWidgetItem* item = list->topLevelItem(r);
  list->scrollToItem(item);
  QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                    list->visualItemRect(item).center());
}

// Runs the dialog for the set; `step` runs once the dialog is the active
// modal window. Whatever the step leaves open is cancelled, so a failed
// check inside it cannot hang the test.
bool RunDialog(CROptionForm& form, Synchronizer& set,
               const std::function<void(CROptionForm&)>& step) {
  ModalDriver driver([&form, &step](QWidget&) { step(form); }, &form);
  form.DoOptionsDialog(set);
  return driver.acted();
}

void ClickOK(CROptionForm& form) { Get<QPushButton>(form, "OKBtn")->click(); }

}  // namespace

class CROptionFormTest : public QObject {
  Q_OBJECT

 private slots:
  void ControlsHaveTheirNamesAndTexts();
  void StarredTypeHasNoRow();
  void PlusTypeShowsTickedRowAndUntickingClearsIt();
  void NoRowChosenDisablesEditing();
  void ChoosingRowShowsTheType();
  void OnlyDoNothingTypeNeedsAbnormalForOthers();
  void AllResolutionsAllowedHidesAllowAbnormal();
  void ResetRestoresResolutionButNotCreateDest();
  void ResetAllResetsEveryRowButNotChecks();
  void CancelAfterEditsLeavesSetAsItWas();
  void OKWritesBackOnlyConfigurableTypes();
  void UnknownActionLeavesButtonsAsTheyAre();
  void MoreThanTwentyTypesAreAllShown();
  void RoundTripThroughSetSection();
  void ReopeningStartsFresh();
  void HelpOpensItsPage();
};

void CROptionFormTest::ControlsHaveTheirNamesAndTexts() {
  Fixture fx(ShippedIni());
  CROptionForm form;
  QCOMPARE(form.windowTitle(), QStringLiteral("Conflict Resolution Options"));
  const bool ran = RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QCOMPARE(f.windowTitle(), QStringLiteral("Options for Docs"));
    QCOMPARE(Get<QLabel>(f, "Label2")->text(),
             QStringLiteral("For each type of situation, you can tell Pairwell "
                            "to handle it automatically by checking the "
                            "checking the box to its left.  Then, set the "
                            "action to take below."));
    QTreeWidget* list = List(f);
    QVERIFY(list != nullptr);
    QCOMPARE(list->columnCount(), 1);
    QCOMPARE(list->headerItem()->text(0), QStringLiteral("Test"));
    QVERIFY(list->isHeaderHidden());
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             QStringLiteral("Select a conflict type (left) to see its \n"
                            "description here.\n"));
    QCOMPARE(Get<QGroupBox>(f, "Frame1")->title(),
             QStringLiteral("Default action when conflict arises"));
    QCOMPARE(Get<QRadioButton>(f, "Undecided")->text(),
             QStringLiteral("Undecided: force user to select an action manually"));
    QCOMPARE(Get<QRadioButton>(f, "DoNothing")->text(),
             QStringLiteral("Do &nothing"));
    QCOMPARE(Get<QRadioButton>(f, "UseNewest")->text(),
             QStringLiteral("Use the file with the &most recent date"));
    QCOMPARE(Get<QRadioButton>(f, "DeleteAll")->text(),
             QStringLiteral("&Delete all copies of the file"));
    QCOMPARE(Get<QLabel>(f, "Label1")->text(),
             QStringLiteral("(This option is only available when not using "
                            "automatic handling)"));
    QCOMPARE(Get<QCheckBox>(f, "CreateDest")->text(),
             QStringLiteral(
                 "If destination file does not exist, allow it to be &created"));
    QCOMPARE(Get<QCheckBox>(f, "AllowAbnormal")->text(),
             QStringLiteral("Allow abnormal actions"));
    QVERIFY(!Get<QCheckBox>(f, "AllowAbnormal")->isChecked());
    QCOMPARE(Get<QPushButton>(f, "ResetBtn")->text(),
             QStringLiteral("Reset to Default"));
    QCOMPARE(Get<QPushButton>(f, "ResetAllBtn")->text(),
             QStringLiteral("Reset Everything to Defaults"));
    QCOMPARE(Get<QPushButton>(f, "OKBtn")->text(), QStringLiteral("OK"));
    QCOMPARE(Get<QPushButton>(f, "CancelBtn")->text(), QStringLiteral("Cancel"));
    QCOMPARE(Get<QPushButton>(f, "HelpBtn")->text(), QStringLiteral("Help"));
  });
  QVERIFY(ran);
}

void CROptionFormTest::StarredTypeHasNoRow() {
  Fixture fx(ShippedIni());
  QStringList expected;
  int starred = 0;
  for (int i = 1; i <= fx.set->ConflictTypeCount(); ++i) {
    const ConflictDescriptor& t = fx.set->ConflictTypes(i);
    if (t.Configurable) {
      expected << QString::fromStdString(t.Name);
    } else {
      ++starred;
    }
  }
  QVERIFY(starred > 0);
  QVERIFY(!fx.Named("Changed in one folder").Configurable);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QStringList rows;
    for (int r = 0; r < List(f)->topLevelItemCount(); ++r) {
      rows << List(f)->topLevelItem(r)->text(0);
    }
    QCOMPARE(rows, expected);
    QVERIFY(!rows.contains(QStringLiteral("Changed in one folder")));
    QVERIFY(!rows.contains(QStringLiteral("Source unchanged, copies differ")));
  }));
}

void CROptionFormTest::PlusTypeShowsTickedRowAndUntickingClearsIt() {
  Fixture fx(ShippedIni());
  QVERIFY(!fx.Named("New in one folder").ListChecked);
  QVERIFY(fx.Named("Changed in several folders").ListChecked);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QTreeWidget* list = List(f);
    QCOMPARE(list->topLevelItem(0)->text(0), QStringLiteral("New in one folder"));
    QCOMPARE(list->topLevelItem(0)->checkState(0), Qt::Checked);
    QCOMPARE(list->topLevelItem(3)->text(0),
             QStringLiteral("Changed in several folders"));
    QCOMPARE(list->topLevelItem(3)->checkState(0), Qt::Unchecked);
    list->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    list->topLevelItem(3)->setCheckState(0, Qt::Checked);
    // The mark is read only when storing back.
    QVERIFY(!fx.Named("New in one folder").ListChecked);
    ClickOK(f);
  }));
  QVERIFY(fx.Named("New in one folder").ListChecked);
  QVERIFY(!fx.Named("Changed in several folders").ListChecked);
  QVERIFY(!fx.Named("Deleted from a folder").ListChecked);
}

void CROptionFormTest::NoRowChosenDisablesEditing() {
  Fixture fx(ShippedIni());
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QVERIFY(List(f)->selectedItems().isEmpty());
    for (const char* name : {"Undecided", "DoNothing", "UseNewest", "DeleteAll"}) {
      QVERIFY2(!Get<QRadioButton>(f, name)->isEnabled(), name);
      QVERIFY2(!Get<QRadioButton>(f, name)->isChecked(), name);
    }
    QVERIFY(!Get<QCheckBox>(f, "CreateDest")->isEnabled());
    QVERIFY(!Get<QPushButton>(f, "ResetBtn")->isEnabled());
    QVERIFY(Get<QPushButton>(f, "ResetAllBtn")->isEnabled());
    QVERIFY(Get<QPushButton>(f, "OKBtn")->isEnabled());
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             QStringLiteral("Select a conflict type (left) to see its \n"
                            "description here.\n"));
    // Ticking "Allow abnormal actions" does not bring them back without a row.
    Get<QCheckBox>(f, "AllowAbnormal")->click();
    QVERIFY(!Get<QRadioButton>(f, "DeleteAll")->isEnabled());
    QVERIFY(!Get<QPushButton>(f, "ResetBtn")->isEnabled());
  }));
}

void CROptionFormTest::ChoosingRowShowsTheType() {
  Fixture fx(ShippedIni());
  const ConflictDescriptor& type = fx.Named("Deleted from a folder");
  QCOMPARE(type.Action, 2);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 1);
    QCOMPARE(List(f)->topLevelItem(1)->text(0),
             QStringLiteral("Deleted from a folder"));
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             BoxText(type.Description));
    QVERIFY(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText().contains(
        QStringLiteral("has not changed anywhere else")));
    QVERIFY(Get<QRadioButton>(f, "DeleteAll")->isChecked());
    QVERIFY(Get<QCheckBox>(f, "CreateDest")->isChecked());
    QVERIFY(Get<QCheckBox>(f, "CreateDest")->isEnabled());
    QVERIFY(Get<QPushButton>(f, "ResetBtn")->isEnabled());
    // "Deleted and changed" defaults to undecided.
    ClickRow(f, 5);
    QVERIFY(Get<QRadioButton>(f, "Undecided")->isChecked());
    QVERIFY(!Get<QRadioButton>(f, "DeleteAll")->isChecked());
  }));
}

void CROptionFormTest::OnlyDoNothingTypeNeedsAbnormalForOthers() {
  Fixture fx(SmallIni());
  QCOMPARE(int(fx.Named("Only nothing").AllowedActions), 3);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QCOMPARE(List(f)->topLevelItemCount(), 3);
    ClickRow(f, 0);
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             QStringLiteral("Allows doing nothing only.\nSecond line."));
    auto* abnormal = Get<QCheckBox>(f, "AllowAbnormal");
    QVERIFY(abnormal->isVisible());
    QVERIFY(Get<QRadioButton>(f, "Undecided")->isEnabled());
    QVERIFY(Get<QRadioButton>(f, "DoNothing")->isEnabled());
    QVERIFY(!Get<QRadioButton>(f, "UseNewest")->isEnabled());
    QVERIFY(!Get<QRadioButton>(f, "DeleteAll")->isEnabled());
    QTest::mouseClick(abnormal, Qt::LeftButton);
    QVERIFY(abnormal->isChecked());
    for (const char* name : {"Undecided", "DoNothing", "UseNewest", "DeleteAll"}) {
      QVERIFY2(Get<QRadioButton>(f, name)->isEnabled(), name);
    }
    Get<QRadioButton>(f, "DeleteAll")->click();
    QVERIFY(Get<QRadioButton>(f, "DeleteAll")->isChecked());
    abnormal->click();
    QVERIFY(!Get<QRadioButton>(f, "UseNewest")->isEnabled());
    QVERIFY(!Get<QRadioButton>(f, "DeleteAll")->isEnabled());
    // "Delete or copy" allows 0, 2 and 3.
    ClickRow(f, 2);
    QVERIFY(!Get<QRadioButton>(f, "DoNothing")->isEnabled());
    QVERIFY(Get<QRadioButton>(f, "DeleteAll")->isEnabled());
    QVERIFY(Get<QRadioButton>(f, "UseNewest")->isEnabled());
    ClickOK(f);
  }));
  QCOMPARE(fx.Named("Only nothing").Action, 2);
  QCOMPARE(fx.Named("Delete or copy").Action, 2);
}

void CROptionFormTest::AllResolutionsAllowedHidesAllowAbnormal() {
  Fixture fx(SmallIni());
  QCOMPARE(int(fx.Named("Plus all").AllowedActions), 15);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    auto* abnormal = Get<QCheckBox>(f, "AllowAbnormal");
    QVERIFY(abnormal->isVisible());
    ClickRow(f, 1);
    QCOMPARE(List(f)->topLevelItem(1)->text(0), QStringLiteral("Plus all"));
    QVERIFY(!abnormal->isVisible());
    for (const char* name : {"Undecided", "DoNothing", "UseNewest", "DeleteAll"}) {
      QVERIFY2(Get<QRadioButton>(f, name)->isEnabled(), name);
    }
    ClickRow(f, 2);
    QVERIFY(abnormal->isVisible());
    ClickRow(f, 1);
    QVERIFY(!abnormal->isVisible());
  }));
}

void CROptionFormTest::ResetRestoresResolutionButNotCreateDest() {
  Fixture fx(ShippedIni());
  ConflictDescriptor& type = fx.Named("Changed in several folders");
  QCOMPARE(int(type.DefAction), 3);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 3);
    Get<QRadioButton>(f, "DeleteAll")->click();
    Get<QCheckBox>(f, "CreateDest")->click();
    QVERIFY(!Get<QCheckBox>(f, "CreateDest")->isChecked());
    Get<QPushButton>(f, "ResetBtn")->click();
    QVERIFY(Get<QRadioButton>(f, "UseNewest")->isChecked());
    QVERIFY(!Get<QRadioButton>(f, "DeleteAll")->isChecked());
    QVERIFY(!Get<QCheckBox>(f, "CreateDest")->isChecked());
    ClickOK(f);
  }));
  QCOMPARE(type.Action, 3);
  QVERIFY(!type.CreateDest);
  QVERIFY(!type.DefCreateDest);
}

void CROptionFormTest::ResetAllResetsEveryRowButNotChecks() {
  Fixture fx(ShippedIni());
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 0);  // New in one folder, default 3
    Get<QRadioButton>(f, "DoNothing")->click();
    Get<QCheckBox>(f, "CreateDest")->click();
    ClickRow(f, 5);  // Deleted and changed, default 0
    Get<QRadioButton>(f, "DeleteAll")->click();
    ClickRow(f, 1);  // Deleted from a folder, default 2
    Get<QRadioButton>(f, "UseNewest")->click();
    List(f)->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    List(f)->topLevelItem(4)->setCheckState(0, Qt::Checked);
    Get<QPushButton>(f, "ResetAllBtn")->click();
    QVERIFY(Get<QRadioButton>(f, "DeleteAll")->isChecked());
    QCOMPARE(List(f)->topLevelItem(0)->checkState(0), Qt::Unchecked);
    QCOMPARE(List(f)->topLevelItem(4)->checkState(0), Qt::Checked);
    ClickOK(f);
  }));
  for (int k = 1; k <= 6; ++k) {
    const ConflictDescriptor& t = fx.Configurable(k);
    QCOMPARE(t.Action, int(t.DefAction));
    QCOMPARE(t.DefCreateDest, t.CreateDest);
  }
  QVERIFY(!fx.Named("New in one folder").CreateDest);
  QVERIFY(!fx.Named("New in one folder").DefCreateDest);
  QVERIFY(fx.Named("Deleted and changed").CreateDest);
  QVERIFY(fx.Named("New in one folder").ListChecked);
  QVERIFY(!fx.Named("Unchanged but different").ListChecked);
  QVERIFY(!fx.Named("Deleted from a folder").ListChecked);
}

void CROptionFormTest::CancelAfterEditsLeavesSetAsItWas() {
  Fixture fx(ShippedIni());
  const std::string before = Snapshot(*fx.set);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 2);
    Get<QCheckBox>(f, "AllowAbnormal")->click();
    Get<QRadioButton>(f, "UseNewest")->click();
    Get<QCheckBox>(f, "CreateDest")->click();
    Get<QPushButton>(f, "ResetBtn")->click();
    ClickRow(f, 4);
    Get<QRadioButton>(f, "Undecided")->click();
    Get<QPushButton>(f, "ResetAllBtn")->click();
    List(f)->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    List(f)->topLevelItem(3)->setCheckState(0, Qt::Checked);
    Get<QPushButton>(f, "CancelBtn")->click();
    QVERIFY(!f.isVisible());
  }));
  QCOMPARE(form.result(), int(QDialog::Rejected));
  QCOMPARE(Snapshot(*fx.set), before);
}

void CROptionFormTest::OKWritesBackOnlyConfigurableTypes() {
  Fixture fx(ShippedIni());
  // A starred type's values must not be taken by the row after it.
  ConflictDescriptor& starred = fx.Named("Source unchanged, copies differ");
  const int starred_action = starred.Action;
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 0);
    Get<QRadioButton>(f, "DeleteAll")->click();
    Get<QCheckBox>(f, "CreateDest")->click();
    ClickRow(f, 5);
    Get<QRadioButton>(f, "DoNothing")->click();
    // Nothing reaches the set before OK.
    QCOMPARE(fx.Named("New in one folder").Action, 3);
    ClickOK(f);
    QVERIFY(!f.isVisible());
  }));
  QCOMPARE(form.result(), int(QDialog::Accepted));
  QCOMPARE(fx.Named("New in one folder").Action, 2);
  QVERIFY(!fx.Named("New in one folder").CreateDest);
  QVERIFY(fx.Named("New in one folder").DefCreateDest);
  QCOMPARE(fx.Named("Deleted and changed").Action, 1);
  QVERIFY(fx.Named("Deleted and changed").CreateDest);
  QCOMPARE(fx.Named("Deleted from a folder").Action, 2);
  QCOMPARE(starred.Action, starred_action);
  QVERIFY(!starred.Configurable);
  QCOMPARE(fx.Named("Changed in one folder").Action, 3);
}

void CROptionFormTest::UnknownActionLeavesButtonsAsTheyAre() {
  Fixture fx(SmallIni());
  fx.Named("Delete or copy").Action = 7;
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 0);
    QVERIFY(Get<QRadioButton>(f, "DoNothing")->isChecked());
    ClickRow(f, 2);
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             QStringLiteral("Delete or copy it"));
    QVERIFY(Get<QRadioButton>(f, "DoNothing")->isChecked());
    ClickOK(f);
  }));
  QCOMPARE(fx.Named("Delete or copy").Action, 7);
  QCOMPARE(fx.Named("Only nothing").Action, 1);
}

void CROptionFormTest::MoreThanTwentyTypesAreAllShown() {
  Fixture fx(LargeIni());
  QCOMPARE(fx.set->ConflictTypeCount(), 28);
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QTreeWidget* list = List(f);
    QCOMPARE(list->topLevelItemCount(), 25);
    for (int r = 0; r < 25; ++r) {
      char name[16];
      std::snprintf(name, sizeof name, "Type %02d", r + 1);
      QCOMPARE(list->topLevelItem(r)->text(0), QString::fromLatin1(name));
    }
    ClickRow(f, 24);
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             QStringLiteral("Type number 25 of many"));
    Get<QRadioButton>(f, "DoNothing")->click();
    Get<QCheckBox>(f, "CreateDest")->click();
    ClickRow(f, 20);
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             QStringLiteral("Type number 21 of many"));
    Get<QRadioButton>(f, "Undecided")->click();
    list->topLevelItem(22)->setCheckState(0, Qt::Checked);
    ClickOK(f);
  }));
  QCOMPARE(fx.Named("Type 25").Action, 1);
  QVERIFY(!fx.Named("Type 25").CreateDest);
  QCOMPARE(fx.Named("Type 21").Action, 0);
  QVERIFY(!fx.Named("Type 23").ListChecked);
  QCOMPARE(fx.Named("Type 24").Action, 3);
  QVERIFY(fx.Named("Type 24").ListChecked);
  QCOMPARE(fx.Named("Hidden 21").Action, 1);
}

void CROptionFormTest::RoundTripThroughSetSection() {
  Fixture fx(ShippedIni());
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 0);  // New in one folder: do nothing, no create, unticked
    Get<QRadioButton>(f, "DoNothing")->click();
    Get<QCheckBox>(f, "CreateDest")->click();
    List(f)->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    ClickRow(f, 3);  // Changed in several folders: delete all, ticked
    Get<QRadioButton>(f, "DeleteAll")->click();
    List(f)->topLevelItem(3)->setCheckState(0, Qt::Checked);
    ClickRow(f, 2);  // Only in mirror folders: abnormal use newest
    Get<QCheckBox>(f, "AllowAbnormal")->click();
    Get<QRadioButton>(f, "UseNewest")->click();
    ClickOK(f);
  }));
  INIFileSection written("Sec: Docs");
  fx.set->WriteToINI(written);
  auto value = [&](const std::string& key) {
    const long i = written.FindVarIndex(key);
    return i < 0 ? std::string("<missing>") : written.VarValue(i);
  };
  QCOMPARE(value("CR:New in one folder"), std::string("1"));
  QCOMPARE(value("CR:Changed in several folders"), std::string("2C+"));
  QCOMPARE(value("CR:Only in mirror folders"), std::string("3C+"));
  QCOMPARE(value("CR:Deleted from a folder"), std::string("2C+"));
  QCOMPARE(value("CR:Deleted and changed"), std::string("0C"));

  auto catalogue = fx.program->TheINIFile().Section("Conflict Types");
  QVERIFY(catalogue != nullptr);
  Synchronizer fresh;
  fresh.ReadConflictInfo(*catalogue);
  fresh.ReadFromINI(written);
  QCOMPARE(fresh.ConflictTypeCount(), fx.set->ConflictTypeCount());
  for (int i = 1; i <= fresh.ConflictTypeCount(); ++i) {
    const ConflictDescriptor& got = fresh.ConflictTypes(i);
    QCOMPARE(got.Name, fx.set->ConflictTypes(i).Name);
    // What the set writes is read back as the reader of those texts sees it.
    ConflictDescriptor expected;
    expected.CopyFrom(got);
    expected.StringToCustomConfig(value("CR:" + got.Name));
    QCOMPARE(got.Action, expected.Action);
    QCOMPARE(got.CreateDest, expected.CreateDest);
    QCOMPARE(got.ListChecked, expected.ListChecked);
    QCOMPARE(got.CustomConfigToString(), expected.CustomConfigToString());
    // Only the number survives: the letters come after it when written.
    QCOMPARE(got.Action, fx.set->ConflictTypes(i).Action);
    QVERIFY(!got.CreateDest);
    QVERIFY(got.ListChecked);
  }
  QCOMPARE(fresh.ConflictTypes(3).Name, std::string("New in one folder"));
  QCOMPARE(fresh.ConflictTypes(3).Action, 1);
  QCOMPARE(fresh.ConflictTypes(6).Action, 2);
  QCOMPARE(fresh.ConflictTypes(5).Action, 3);
  QCOMPARE(fresh.ConflictTypes(3).CustomConfigToString(), std::string("1"));
  QCOMPARE(fresh.ConflictTypes(6).CustomConfigToString(), std::string("2"));
}

void CROptionFormTest::ReopeningStartsFresh() {
  Fixture fx(SmallIni());
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    ClickRow(f, 1);  // hides "Allow abnormal actions"
    ClickRow(f, 0);
    Get<QCheckBox>(f, "AllowAbnormal")->click();
    ClickRow(f, 1);
    Get<QPushButton>(f, "CancelBtn")->click();
  }));
  fx.set->Name = "Second";
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QCOMPARE(f.windowTitle(), QStringLiteral("Options for Second"));
    QCOMPARE(List(f)->topLevelItemCount(), 3);
    QVERIFY(List(f)->selectedItems().isEmpty());
    QVERIFY(Get<QCheckBox>(f, "AllowAbnormal")->isVisible());
    QVERIFY(!Get<QCheckBox>(f, "AllowAbnormal")->isChecked());
    QVERIFY(!Get<QRadioButton>(f, "UseNewest")->isChecked());
    QVERIFY(!Get<QRadioButton>(f, "UseNewest")->isEnabled());
    QVERIFY(!Get<QCheckBox>(f, "CreateDest")->isChecked());
    QCOMPARE(Get<QPlainTextEdit>(f, "ConDescription")->toPlainText(),
             QStringLiteral("Select a conflict type (left) to see its \n"
                            "description here.\n"));
    // The Reset button of no row must not touch any row.
    Get<QPushButton>(f, "ResetBtn")->click();
    ClickOK(f);
  }));
  QCOMPARE(fx.Named("Plus all").Action, 3);
}

void CROptionFormTest::HelpOpensItsPage() {
  const QString page =
      QDir(QCoreApplication::applicationDirPath()).filePath("croptionsdlg.html");
  if (QFileInfo(page).exists()) {
    QSKIP("a help page lies beside the test; opening it would start a browser");
  }
  Fixture fx(SmallIni());
  CROptionForm form;
  QVERIFY(RunDialog(form, *fx.set, [&](CROptionForm& f) {
    QVERIFY(fx.ui.messages.empty());
    Get<QPushButton>(f, "HelpBtn")->click();
    QCOMPARE(fx.ui.messages.size(), size_t(1));
    QVERIFY(f.isVisible());
  }));
  QCOMPARE(fx.ui.messages.size(), size_t(1));
  QVERIFY(QString::fromStdString(fx.ui.messages[0].text)
              .contains(QStringLiteral("croptionsdlg.html")));
}

QTEST_MAIN(CROptionFormTest)
#include "cr_option_form_test.moc"
