// The main window driven as a person would: sets, menus, folders, filters,
// resizing and the ways out, on a configuration file in a temporary folder.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "app/program.h"
#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/synchronizer.h"
#include "ui/editor/sync_form.h"
#include "ui/main_window_harness.h"

namespace pairwell {
namespace {

std::string FourSets() {
  return SetSection("A", {"/a1", "/a2"}) + SetSection("B", {"/b1", "/b2"}) +
         SetSection("C", {"/c1", "/c2"}) + SetSection("D", {"/d1", "/d2"});
}

}  // namespace

class SyncFormTest : public QObject {
  Q_OBJECT

 private slots:
  // --- Start-up --------------------------------------------------------------

  void StoredSetPositionIsClamped_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("shown");
    QTest::newRow("zero") << "0" << 1;
    QTest::newRow("negative") << "-3" << 1;
    QTest::newRow("text") << "abc" << 1;
    QTest::newRow("beyond") << "99" << 4;
    QTest::newRow("third") << "3" << 3;
    QTest::newRow("half to even down") << "2.5" << 2;
    QTest::newRow("half to even up") << "3.5" << 4;
    QTest::newRow("leading number") << "2 sets" << 2;
  }
  void StoredSetPositionIsClamped() {
    QFETCH(QString, stored);
    QFETCH(int, shown);
    MainWindowHarness h("CurSyncSet=" + stored.toStdString() + "\r\n" + FourSets());
    QCOMPARE(h.form().CurrentIndex(), shown);
    QCOMPARE(h.Find<QLabel>("SetNumTxt")->text(),
             QString::number(shown) + QStringLiteral(" of 4"));
    QCOMPARE(h.CheckedSetMenuEntry(), shown);
  }

  void CaptionAndSimulationMode() {
    MainWindowHarness plain(FourSets());
    QCOMPARE(plain.form().windowTitle(), QStringLiteral("Pairwell v3.0 ALPHA"));
    MainWindowHarness simulated("SimulationMode=True\r\n" + FourSets());
    QCOMPARE(simulated.form().windowTitle(),
             QStringLiteral("Pairwell v3.0 ALPHA (SIMULATION MODE)"));
  }

  void NoSetsGiveOneUntitledSet() {
    MainWindowHarness h("");
    QCOMPARE(h.Find<QLineEdit>("SetName")->text(), QStringLiteral("Untitled"));
    QCOMPARE(h.Find<QLabel>("SetNumTxt")->text(), QStringLiteral("1 of 1"));
  }

  void SwitchesOfTheCommandLine() {
    MainWindowHarness h(FourSets(), "-q /x \"a b\"");
    QCOMPARE(h.ui.Texts(), (std::vector<std::string>{
                               "Unknown command-line switch ignored: /x"}));
    for (int i = 1; i <= 4; ++i) {
      QVERIFY(h.program().SyncSets().Item(i).QuietMode);
    }
    MainWindowHarness question(FourSets(), "/?");
    QCOMPARE(question.ui.Texts(),
             std::vector<std::string>{"COMMAND LINE SUPPORT NOT IMPLEMENTED"});
    QCOMPARE(question.ui.messages[0].caption, std::string("Pairwell"));
  }

  void ControlsCarryTheirCaptions() {
    MainWindowHarness h(FourSets());
    QCOMPARE(h.Find<QLabel>("SyncSetTxt")->text(), QStringLiteral("Sync S&et:"));
    QCOMPARE(h.Find<QPushButton>("SetOptionsBtn")->text(),
             QStringLiteral("&Options..."));
    QCOMPARE(h.Find<QPushButton>("SyncBtn")->text(), QStringLiteral("S&ynchronize"));
    QCOMPARE(h.Find<QPushButton>("InteractiveSyncBtn")->text(),
             QStringLiteral("&Interactive Sync..."));
    QCOMPARE(h.Find<QPushButton>("HelpBtn")->text(), QStringLiteral("&Help"));
    QCOMPARE(h.Find<QToolButton>("PrevSetBtn")->toolTip(),
             QStringLiteral("Go to previous set"));
    QCOMPARE(h.Find<QToolButton>("SetDownBtn")->toolTip(),
             QStringLiteral("Move set downward in list"));
    QCOMPARE(h.Action("mnuExit")->text(), QStringLiteral("Save and E&xit"));
    QCOMPARE(h.Action("mnuExitWOSave")->text(),
             QStringLiteral("Exit &Without Saving"));
    QCOMPARE(h.Action("mnuCROptions")->text(),
             QStringLiteral("&Conflict-Resolution Options..."));
    QCOMPARE(h.Find<QLabel>("FolderExcludeSpecTxt")->text(),
             QStringLiteral("Folder ex&clude Filters:"));
    QCOMPARE(h.Find<QCheckBox>("FolderEnable")->text(),
             QStringLiteral("E&nable sync"));
    QCOMPARE(h.Find<QComboBox>("FolderType")->itemText(2),
             QStringLiteral("Merge to"));
  }

  // --- Sets --------------------------------------------------------------------

  void OneSetDisablesNavigationAndCannotBeRemoved() {
    MainWindowHarness h(SetSection("Only", {"/x", "/y"}));
    for (const char* name : {"PrevSetBtn", "NextSetBtn", "SetUpBtn", "SetDownBtn"}) {
      QVERIFY2(!h.Find<QToolButton>(name)->isEnabled(), name);
    }
    h.Action("mnuRemoveSyncSet")->trigger();
    QCOMPARE(h.ui.Texts(),
             std::vector<std::string>{"Sorry, you can't remove the last sync set."});
    QCOMPARE(h.ui.messages[0].style, kMbInformation);
    QCOMPARE(h.program().SyncSets().Count(), 1);
  }

  void NextAndPreviousKeepTheEdits() {
    MainWindowHarness h(FourSets());
    h.Find<QLineEdit>("FileSpec")->setText(QStringLiteral("*.txt"));
    QTest::mouseClick(h.Find<QToolButton>("NextSetBtn"), Qt::LeftButton);
    QCOMPARE(h.form().CurrentIndex(), 2);
    QCOMPARE(h.Find<QLineEdit>("SetName")->text(), QStringLiteral("B"));
    QCOMPARE(h.program().SyncSets().Item(1).FileSpec, std::string("*.txt"));
    QTest::mouseClick(h.Find<QToolButton>("PrevSetBtn"), Qt::LeftButton);
    QCOMPARE(h.Find<QLineEdit>("FileSpec")->text(), QStringLiteral("*.txt"));
    QVERIFY(!h.Find<QToolButton>("PrevSetBtn")->isEnabled());
  }

  void RenamingUpdatesTheMenuAtOnce() {
    MainWindowHarness h("CurSyncSet=3\r\n" + FourSets());
    QLineEdit* name = h.Find<QLineEdit>("SetName");
    name->selectAll();
    QTest::keyClicks(name, QStringLiteral("Music"));
    QCOMPARE(h.program().SyncSets().Item(3).Name, std::string("Music"));
    QCOMPARE(h.SetMenuTexts(), (QStringList{"A", "B", "Music", "D"}));
    QCOMPARE(h.Find<QLabel>("SetNumTxt")->text(), QStringLiteral("3 of 4"));
  }

  void MovingASetKeepsItCurrentAndLeavesTheMenuCaptions() {
    MainWindowHarness h("CurSyncSet=2\r\n" + FourSets());
    QTest::mouseClick(h.Find<QToolButton>("SetUpBtn"), Qt::LeftButton);
    QCOMPARE(h.form().CurrentIndex(), 1);
    QCOMPARE(h.program().SyncSets().Item(1).Name, std::string("B"));
    QCOMPARE(h.program().SyncSets().Item(2).Name, std::string("A"));
    QCOMPARE(h.Find<QLineEdit>("SetName")->text(), QStringLiteral("B"));
    QCOMPARE(h.Find<QLabel>("SetNumTxt")->text(), QStringLiteral("1 of 4"));
    // The captions stay until the list is filled again; the check moves.
    QCOMPARE(h.SetMenuTexts(), (QStringList{"A", "B", "C", "D"}));
    QCOMPARE(h.CheckedSetMenuEntry(), 1);
    // At the top the button is off, and a click changes nothing.
    QVERIFY(!h.Find<QToolButton>("SetUpBtn")->isEnabled());
    QTest::mouseClick(h.Find<QToolButton>("SetUpBtn"), Qt::LeftButton);
    QCOMPARE(h.form().CurrentIndex(), 1);
    QTest::mouseClick(h.Find<QToolButton>("SetDownBtn"), Qt::LeftButton);
    QCOMPARE(h.program().SyncSets().Item(2).Name, std::string("B"));
  }

  void SetListMenuSelectsASet() {
    MainWindowHarness h(FourSets());
    const QList<QAction*> entries =
        h.form().findChildren<QAction*>(QStringLiteral("mnuSetList"));
    QCOMPARE(entries.size(), 5);  // the separator and four sets
    for (QAction* a : entries) {
      if (a->data().toInt() == 4) a->trigger();
    }
    QCOMPARE(h.form().CurrentIndex(), 4);
    QCOMPARE(h.CheckedSetMenuEntry(), 4);
  }

  void AddingASetAsksForItsName() {
    MainWindowHarness h(FourSets());
    h.Find<QLineEdit>("ExcludeSpec")->setText(QStringLiteral("*.tmp"));
    QString prompt;
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
      QVERIFY(dialog != nullptr);
      prompt = dialog->labelText();
      QCOMPARE(dialog->windowTitle(), QStringLiteral("Add Sync List"));
      QCOMPARE(dialog->textValue(), QStringLiteral("Untitled"));
      dialog->setTextValue(QStringLiteral("Photos"));
      dialog->accept();
    });
    h.Action("mnuAddSyncSet")->trigger();
    QCOMPARE(prompt, QStringLiteral("Enter a name for a new synchronization set."));
    QCOMPARE(h.program().SyncSets().Count(), 5);
    QCOMPARE(h.form().CurrentIndex(), 5);
    QCOMPARE(h.Find<QLineEdit>("SetName")->text(), QStringLiteral("Photos"));
    QCOMPARE(h.program().SyncSets().Item(1).ExcludeSpec, std::string("*.tmp"));
    QCOMPARE(h.SetMenuTexts().last(), QStringLiteral("Photos"));

    QTimer::singleShot(0, [] {
      auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
      QVERIFY(dialog != nullptr);
      dialog->reject();
    });
    h.Action("mnuAddSyncSet")->trigger();
    QCOMPARE(h.program().SyncSets().Count(), 5);
  }

  void RemovingASetWithFoldersAsksFirst() {
    MainWindowHarness h("CurSyncSet=2\r\n" + FourSets());
    h.ui.answers = {kIdNo};
    h.Action("mnuRemoveSyncSet")->trigger();
    QCOMPARE(h.ui.Texts(), std::vector<std::string>{
                               "Are you sure you want to delete the current Sync Set?"});
    QCOMPARE(h.ui.messages[0].style, kMbYesNo | kMbQuestion);
    QCOMPARE(h.program().SyncSets().Count(), 4);

    h.ui.answers = {kIdYes};
    h.Action("mnuRemoveSyncSet")->trigger();
    QCOMPARE(h.program().SyncSets().Count(), 3);
    // The set that now holds the place is shown.
    QCOMPARE(h.form().CurrentIndex(), 2);
    QCOMPARE(h.Find<QLineEdit>("SetName")->text(), QStringLiteral("C"));
    QCOMPARE(h.SetMenuTexts(), (QStringList{"A", "C", "D"}));
    QCOMPARE(h.Find<QLabel>("SetNumTxt")->text(), QStringLiteral("2 of 3"));
  }

  void RemovingTheLastSetShowsTheNewLastAndAsksNothingWithoutFolders() {
    MainWindowHarness h("CurSyncSet=3\r\n" + SetSection("A", {"/a"}) + SetSection("B", {}) +
              SetSection("Empty", {}));
    h.Find<QLineEdit>("FileSpec")->setText(QStringLiteral("dropped"));
    h.Action("mnuRemoveSyncSet")->trigger();
    QVERIFY(h.ui.messages.empty());
    QCOMPARE(h.form().CurrentIndex(), 2);
    QCOMPARE(h.Find<QLineEdit>("SetName")->text(), QStringLiteral("B"));
    QCOMPARE(h.Find<QLineEdit>("FileSpec")->text(),
             QString::fromStdString(h.program().SyncSets().Item(2).FileSpec));
    QCOMPARE(h.program().SyncSets().Item(2).FileSpec, std::string("*.*"));
  }

  // --- Folder list -------------------------------------------------------------

  void FoldersLoadAndSaveInListOrder() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4, 5, 6}) +
              SetSection("T", {"/x", "/y"}));
    QCOMPARE(h.Folders()->topLevelItemCount(), 3);
    QCOMPARE(h.Row(1)->text(0), QStringLiteral("/A"));
    QCOMPARE(h.Row(2)->text(0), QStringLiteral("/B"));
    QCOMPARE(h.Row(3)->text(0), QStringLiteral("/C"));
    QCOMPARE(h.Row(2)->text(1), QStringLiteral("Mirror to"));
    QCOMPARE(h.Row(3)->text(1), QStringLiteral("Merge to"));
    QCOMPARE(h.Row(1)->checkState(0), Qt::Checked);
    h.SelectRow(1);
    QTest::mouseClick(h.Find<QToolButton>("FolderDownBtn"), Qt::LeftButton);
    QTest::mouseClick(h.Find<QToolButton>("NextSetBtn"), Qt::LeftButton);
    const Synchronizer& set = h.program().SyncSets().Item(1);
    QCOMPARE(set.PathCount(), 3);
    QCOMPARE(set.Path(1), std::string("/B"));
    QCOMPARE(set.PathFlags(1), 5);
    QCOMPARE(set.Path(2), std::string("/A"));
    QCOMPARE(set.PathFlags(2), 4);
    QCOMPARE(set.Path(3), std::string("/C"));
  }

  void SkipOnErrorNeedsThreeFolders() {
    MainWindowHarness two(SetSection("S", {"/A", "/B"}, {4 | 16, 4}) +
                SetSection("T", {"/x", "/y"}));
    QVERIFY(!two.Find<QCheckBox>("FolderSkipOnError")->isVisibleTo(&two.form()));
    QTest::mouseClick(two.Find<QToolButton>("NextSetBtn"), Qt::LeftButton);
    QCOMPARE(two.program().SyncSets().Item(1).PathFlags(1), 4);

    MainWindowHarness three(SetSection("S", {"/A", "/B", "/C"}, {4 | 16, 4, 4}) +
                  SetSection("T", {"/x", "/y"}));
    QVERIFY(three.Find<QCheckBox>("FolderSkipOnError")->isVisibleTo(&three.form()));
    QTest::mouseClick(three.Find<QToolButton>("NextSetBtn"), Qt::LeftButton);
    QCOMPARE(three.program().SyncSets().Item(1).PathFlags(1), 4 | 16);
  }

  void ClearingEnableOfTheSelectedRow() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4 | 8, 4, 4}));
    h.SelectRow(1);
    QCheckBox* enable = h.Find<QCheckBox>("FolderEnable");
    QVERIFY(enable->isChecked());
    QVERIFY(h.Find<QCheckBox>("FolderCreateBase")->isChecked());
    QVERIFY(h.Find<QComboBox>("FolderType")->isEnabled());
    QTest::mouseClick(enable, Qt::LeftButton);
    QVERIFY(!enable->isChecked());
    QVERIFY(!h.Find<QComboBox>("FolderType")->isEnabled());
    QVERIFY(!h.Find<QCheckBox>("FolderCreateBase")->isEnabled());
    QVERIFY(!h.Find<QCheckBox>("FolderSkipOnError")->isEnabled());
    QCOMPARE(h.Row(1)->checkState(0), Qt::Unchecked);
    QCOMPARE(h.Tag(1), 8);
  }

  void UntickingAnotherRowChangesOnlyItsTag() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4, 5, 4}));
    h.SelectRow(1);
    h.Row(2)->setCheckState(0, Qt::Unchecked);
    QCOMPARE(h.Tag(2), 1);
    QCOMPARE(h.Tag(1), 4);
    QVERIFY(h.Find<QCheckBox>("FolderEnable")->isChecked());
    h.Row(2)->setCheckState(0, Qt::Checked);
    QCOMPARE(h.Tag(2), 5);
    // The selected row's box goes through the Enable check box.
    h.Row(1)->setCheckState(0, Qt::Unchecked);
    QVERIFY(!h.Find<QCheckBox>("FolderEnable")->isChecked());
    QCOMPARE(h.Tag(1), 0);
  }

  // --- The folder list under the mouse and the keyboard
  // -------------------------

  void ClickingAnotherRowsBoxChangesOnlyThatRow() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4 | 8, 4 | 1, 4}) +
                        SetSection("T", {"/x", "/y"}));
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    h.ClickRow(1);
    QVERIFY(h.Row(1)->isSelected());
    QCheckBox* enable = h.Find<QCheckBox>("FolderEnable");
    QVERIFY(enable->isChecked());

    h.ClickCheckBox(2);
    QCOMPARE(h.Row(2)->checkState(0), Qt::Unchecked);
    QCOMPARE(h.Tag(2), 1);
    // The selected row and the controls that show it are untouched.
    QCOMPARE(h.Tag(1), 4 | 8);
    QCOMPARE(h.Row(1)->checkState(0), Qt::Checked);
    QVERIFY(h.Row(1)->isSelected());
    QVERIFY(!h.Row(2)->isSelected());
    QVERIFY(enable->isChecked());
    QVERIFY(h.Find<QCheckBox>("FolderCreateBase")->isChecked());
    QCOMPARE(h.Find<QComboBox>("FolderType")->currentIndex(), 0);

    h.ClickCheckBox(3);
    QCOMPARE(h.Tag(3), 0);
    h.ClickCheckBox(2);
    QCOMPARE(h.Row(2)->checkState(0), Qt::Checked);
    QCOMPARE(h.Tag(2), 4 | 1);
    QCOMPARE(h.Tag(1), 4 | 8);

    QTest::mouseClick(h.Find<QToolButton>("NextSetBtn"), Qt::LeftButton);
    const Synchronizer& set = h.program().SyncSets().Item(1);
    QCOMPARE(set.PathFlags(1), 4 | 8);
    QCOMPARE(set.PathFlags(2), 4 | 1);
    QCOMPARE(set.PathFlags(3), 0);
  }

  void ClickingTheSelectedRowsBoxKeepsEnableInStep() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4 | 8, 4, 4}));
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    h.ClickRow(2);
    h.ClickRow(1);
    QCheckBox* enable = h.Find<QCheckBox>("FolderEnable");
    h.ClickCheckBox(1);
    QCOMPARE(h.Row(1)->checkState(0), Qt::Unchecked);
    QVERIFY(!enable->isChecked());
    QVERIFY(!h.Find<QComboBox>("FolderType")->isEnabled());
    QVERIFY(!h.Find<QCheckBox>("FolderCreateBase")->isEnabled());
    QCOMPARE(h.Tag(1), 8);
    QCOMPARE(h.Tag(2), 4);
    h.ClickCheckBox(1);
    QCOMPARE(h.Row(1)->checkState(0), Qt::Checked);
    QVERIFY(enable->isChecked());
    QVERIFY(h.Find<QCheckBox>("FolderCreateBase")->isEnabled());
    QCOMPARE(h.Tag(1), 4 | 8);
    // And the Enable box ticks the row's box back and forth.
    QTest::mouseClick(enable, Qt::LeftButton);
    QCOMPARE(h.Row(1)->checkState(0), Qt::Unchecked);
    QTest::mouseClick(enable, Qt::LeftButton);
    QCOMPARE(h.Row(1)->checkState(0), Qt::Checked);
    QCOMPARE(h.Tag(1), 4 | 8);
  }

  void ClickingARowShowsItsFlags() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4, 2, 4 | 1 | 8}));
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    h.ClickRow(3);
    QCOMPARE(h.Find<QComboBox>("FolderType")->currentIndex(), 1);
    QVERIFY(h.Find<QCheckBox>("FolderCreateBase")->isChecked());
    h.ClickRow(2);
    QVERIFY(!h.Find<QCheckBox>("FolderEnable")->isChecked());
    QCOMPARE(h.Find<QComboBox>("FolderType")->currentIndex(), 2);
    // Showing a row's flags stores nothing into any other row.
    QCOMPARE(h.Tag(1), 4);
    QCOMPARE(h.Tag(2), 2);
    QCOMPARE(h.Tag(3), 4 | 1 | 8);
  }

  void SpaceTicksTheSelectedRowsBox() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4 | 8, 4 | 2, 4}));
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    h.ClickRow(1);
    QTreeWidget* list = h.Folders();
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);
    QVERIFY(h.Row(2)->isSelected());
    QCOMPARE(h.Find<QComboBox>("FolderType")->currentIndex(), 2);
    QCheckBox* enable = h.Find<QCheckBox>("FolderEnable");
    QTest::keyClick(list, Qt::Key_Space);
    QCOMPARE(h.Row(2)->checkState(0), Qt::Unchecked);
    QVERIFY(!enable->isChecked());
    QCOMPARE(h.Tag(2), 2);
    QCOMPARE(h.Tag(1), 4 | 8);
    QCOMPARE(h.Row(1)->checkState(0), Qt::Checked);
    QTest::keyClick(list, Qt::Key_Space);
    QCOMPARE(h.Row(2)->checkState(0), Qt::Checked);
    QVERIFY(enable->isChecked());
    QCOMPARE(h.Tag(2), 4 | 2);
    QCOMPARE(h.Tag(1), 4 | 8);
  }

  void BothTypeBitsShowAsMirror() {
    MainWindowHarness h(SetSection("S", {"/A", "/B"}, {4, 4 | 1 | 2}));
    QCOMPARE(h.Row(2)->text(1), QStringLiteral("Mirror to"));
    h.SelectRow(2);
    QCOMPARE(h.Find<QComboBox>("FolderType")->currentIndex(), 1);
    QCOMPARE(SyncForm::PFToTypeIndex(3), 1);
    QCOMPARE(SyncForm::PFToTypeIndex(2), 2);
    QCOMPARE(SyncForm::PFToTypeIndex(4), 0);
    QCOMPARE(SyncForm::TypeIndexToPF(2), 2);
    QCOMPARE(SyncForm::TypeIndexToPF(3), 0);
    QCOMPARE(SyncForm::TypeIndexToPF(-1), 0);
  }

  void ChangingTheTypeStoresTheFlags() {
    MainWindowHarness h(SetSection("S", {"/A", "/B"}));
    h.SelectRow(2);
    h.Find<QComboBox>("FolderType")->setCurrentIndex(2);
    QCOMPARE(h.Tag(2), 4 | 2);
    QCOMPARE(h.Row(2)->text(1), QStringLiteral("Merge to"));
    QTest::mouseClick(h.Find<QCheckBox>("FolderCreateBase"), Qt::LeftButton);
    QCOMPARE(h.Tag(2), 4 | 2 | 8);
  }

  void EighthFolderIsAddedAndTheNinthRefused() {
    MainWindowHarness h(SetSection("S", {"/1", "/2", "/3", "/4", "/5", "/6", "/7"}));
    h.ui.folders = {"/8", "/9"};
    QTest::mouseClick(h.Find<QPushButton>("AddFolderBtn"), Qt::LeftButton);
    QCOMPARE(h.Folders()->topLevelItemCount(), 8);
    QCOMPARE(h.Row(8)->text(0), QStringLiteral("/8"));
    QCOMPARE(h.Tag(8), 4);
    QCOMPARE(h.Row(8)->text(1), QStringLiteral("Source folder"));
    QTest::mouseClick(h.Find<QPushButton>("AddFolderBtn"), Qt::LeftButton);
    QCOMPARE(h.Folders()->topLevelItemCount(), 8);
    QCOMPARE(h.ui.Texts(),
             std::vector<std::string>{
                 "The maximum number of folders to synchronize (8) has been "
                 "reached.  You cannot add any more."});
    QCOMPARE(h.ui.messages[0].style, kMbCritical);
    QCOMPARE(h.ui.browse_prompts.size(), std::size_t{1});
  }

  void AddFolderPromptsAndACancelledPickerChangesNothing() {
    MainWindowHarness h(SetSection("S", {}));
    h.ui.folders = {"/first", ""};
    QTest::mouseClick(h.Find<QPushButton>("AddFolderBtn"), Qt::LeftButton);
    QTest::mouseClick(h.Find<QPushButton>("AddFolderBtn"), Qt::LeftButton);
    QCOMPARE(h.ui.browse_prompts,
             (std::vector<std::string>{
                 "Select the first folder to be synchronized.  After adding "
                 "this folder, you must as a second folder with which to "
                 "synchronize.",
                 "Select a folder with which to synchronize."}));
    QCOMPARE(h.Folders()->topLevelItemCount(), 1);
  }

  void RemovingSeveralSelectedRows() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C", "/D"}));
    h.Row(1)->setSelected(true);
    h.Row(3)->setSelected(true);
    h.Folders()->setCurrentItem(h.Row(3), 0, QItemSelectionModel::Select);
    QTest::mouseClick(h.Find<QPushButton>("RemoveFolderBtn"), Qt::LeftButton);
    QCOMPARE(h.Folders()->topLevelItemCount(), 2);
    QCOMPARE(h.Row(1)->text(0), QStringLiteral("/B"));
    QCOMPARE(h.Row(2)->text(0), QStringLiteral("/D"));
    QVERIFY(h.ui.messages.empty());
  }

  void MovingAFolderSwapsEverythingButTheCheckBoxes() {
    MainWindowHarness h(SetSection("S", {"/A", "/B", "/C"}, {4, 1, 4}));
    h.SelectRow(1);
    QVERIFY(!h.Find<QToolButton>("FolderUpBtn")->isEnabled());
    QTest::mouseClick(h.Find<QToolButton>("FolderDownBtn"), Qt::LeftButton);
    QCOMPARE(h.Row(1)->text(0), QStringLiteral("/B"));
    QCOMPARE(h.Row(2)->text(0), QStringLiteral("/A"));
    QCOMPARE(h.Tag(1), 1);
    QCOMPARE(h.Tag(2), 4);
    QCOMPARE(h.Row(1)->text(1), QStringLiteral("Mirror to"));
    QVERIFY(h.Row(2)->isSelected());
    QVERIFY(!h.Row(1)->isSelected());
    // The boxes stay where they were.
    QCOMPARE(h.Row(1)->checkState(0), Qt::Checked);
    QCOMPARE(h.Row(2)->checkState(0), Qt::Unchecked);
    QVERIFY(h.Find<QToolButton>("FolderUpBtn")->isEnabled());
  }

  void FolderFiltersFollowRecursion() {
    MainWindowHarness h(SetSection("S", {"/A", "/B"}) + "Recursive=False\r\n");
    QVERIFY(!h.Find<QLineEdit>("FolderSpec")->isEnabled());
    QVERIFY(!h.Find<QLineEdit>("FolderExcludeSpec")->isEnabled());
    QVERIFY(h.Find<QLineEdit>("FileSpec")->isEnabled());
    MainWindowHarness r(SetSection("S", {"/A", "/B"}));
    QVERIFY(r.Find<QLineEdit>("FolderSpec")->isEnabled());
  }

  void NoSelectionDisablesTheFolderControls() {
    MainWindowHarness h(SetSection("S", {"/A", "/B"}));
    QVERIFY(!h.Find<QCheckBox>("FolderEnable")->isEnabled());
    QVERIFY(!h.Find<QPushButton>("RemoveFolderBtn")->isEnabled());
    QVERIFY(!h.Find<QToolButton>("FolderUpBtn")->isEnabled());
    h.SelectRow(2);
    QVERIFY(h.Find<QCheckBox>("FolderEnable")->isEnabled());
    QVERIFY(h.Find<QToolButton>("FolderUpBtn")->isEnabled());
    QVERIFY(!h.Find<QToolButton>("FolderDownBtn")->isEnabled());
  }

  // --- Resizing and enabling -------------------------------------------------------

  void ShrinkingSnapsBackToTheLoadedSize() {
    MainWindowHarness h(FourSets());
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    const QSize loaded = h.form().size();
    h.form().resize(loaded.width() - 200, loaded.height());
    QTRY_COMPARE(h.form().size(), loaded);
    h.form().resize(loaded.width(), loaded.height() - 100);
    QTRY_COMPARE(h.form().size(), loaded);
  }

  void GrowingMovesAndStretchesTheControls() {
    MainWindowHarness h(FourSets());
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    auto* name = h.Find<QLineEdit>("SetName");
    auto* sync = h.Find<QPushButton>("SyncBtn");
    auto* label = h.Find<QLabel>("SyncSetTxt");
    auto* folders = h.Folders();
    const QRect name_before = name->geometry();
    const QRect sync_before = sync->geometry();
    const QRect label_before = label->geometry();
    const QRect folders_before = folders->geometry();
    h.form().resize(h.form().width() + 100, h.form().height() + 50);
    QTRY_COMPARE(name->width(), name_before.width() + 100);
    QCOMPARE(name->x(), name_before.x());
    QCOMPARE(sync->pos(), sync_before.topLeft() + QPoint(100, 50));
    QCOMPARE(label->geometry(), label_before);
    QCOMPARE(folders->size(), folders_before.size() + QSize(100, 50));
    QCOMPARE(h.Find<QPushButton>("AddFolderBtn")->y(),
             h.Find<QPushButton>("AddFolderBtn")->parentWidget()->height() -
                 (262 - 194));
  }

  void StretchedControlsNeverGetNarrowerThanFifteen() {
    MainWindowHarness h(FourSets());
    h.form().centralWidget()->resize(40, 40);
    h.form().HandleResize();
    QCOMPARE(h.Find<QLineEdit>("FileSpec")->width(), 15);
    QCOMPARE(h.Folders()->height(), 15);
    QCOMPARE(h.Find<QLineEdit>("SetName")->width(), 15);
  }

  void EnableAllLocksTheWindow() {
    MainWindowHarness h("CurSyncSet=2\r\n" + FourSets());
    h.form().EnableAll(false);
    QVERIFY(!h.Find<QPushButton>("SyncBtn")->isEnabled());
    QVERIFY(!h.Find<QLineEdit>("SetName")->isEnabled());
    QVERIFY(!h.Find<QToolButton>("PrevSetBtn")->isEnabled());
    QVERIFY(!h.Find<QMenu>("mnuFile")->isEnabled());
    QVERIFY(!h.Find<QMenu>("mnuSyncSets")->isEnabled());
    QVERIFY(h.Find<QMenu>("mnuHelp")->isEnabled());
    h.form().EnableAll(true);
    QVERIFY(h.Find<QPushButton>("SyncBtn")->isEnabled());
    QVERIFY(h.Find<QToolButton>("PrevSetBtn")->isEnabled());
    QVERIFY(h.Find<QMenu>("mnuFile")->isEnabled());
    // AutoEnable ran again: nothing is selected in the folder list.
    QVERIFY(!h.Find<QCheckBox>("FolderEnable")->isEnabled());
  }

  // --- Leaving -------------------------------------------------------------------

  void CloseBoxSavesEverythingWithThePosition() {
    MainWindowHarness h("CurSyncSet=1\r\n" + FourSets());
    QTest::mouseClick(h.Find<QToolButton>("NextSetBtn"), Qt::LeftButton);
    h.Find<QLineEdit>("FileSpec")->setText(QStringLiteral("*.doc"));
    h.form().show();
    QVERIFY(h.form().close());
    INIFile saved;
    QVERIFY(saved.LoadFile(h.ini_path().toStdString()));
    QCOMPARE(saved.SectionI(0)->FindVar("CurSyncSet"), std::string("2"));
    QCOMPARE(saved.Section("Sec: B")->FindVar("FileSpec"), std::string("*.doc"));
  }

  void ExitWithoutSavingLeavesTheFile() {
    MainWindowHarness h(FourSets());
    h.form().show();
    const QString before = ReadAll(h.ini_path());
    h.Find<QLineEdit>("SetName")->setText(QStringLiteral("Renamed"));
    h.Action("mnuExitWOSave")->trigger();
    QCOMPARE(ReadAll(h.ini_path()), before);
    QVERIFY(!h.form().isVisible());
  }

  void SaveAndExitKeepsWhatIsOnScreen() {
    MainWindowHarness h("CurSyncSet=4\r\n" + FourSets());
    h.Find<QLineEdit>("ExcludeSpec")->setText(QStringLiteral("*.bak"));
    h.Action("mnuExit")->trigger();
    INIFile saved;
    QVERIFY(saved.LoadFile(h.ini_path().toStdString()));
    QCOMPARE(saved.Section("Sec: D")->FindVar("ExcludeSpec"), std::string("*.bak"));
    QCOMPARE(saved.SectionI(0)->FindVar("CurSyncSet"), std::string("4"));
  }

  void ClosingDuringTheActionsIsRefused() {
    MainWindowHarness h(FourSets());
    h.form().show();
    Synchronizer& running = h.program().SyncSets().Item(1);
    h.program().Run().current_set = &running;
    h.program().Run().first_phase = false;
    h.program().Run().busy = true;
    const QString before = ReadAll(h.ini_path());
    QVERIFY(!h.form().close());
    QCOMPARE(h.ui.Texts(),
             std::vector<std::string>{
                 "Pairwell cannot exit while a synchronization is in progress.  "
                 "If you stop the synch or wait for it to finish, you may then "
                 "close the program."});
    QCOMPARE(h.ui.messages[0].style, kMbExclamation);
    QVERIFY(h.form().isVisible());
    QCOMPARE(ReadAll(h.ini_path()), before);
    // The position is written into the settings all the same.
    QCOMPARE(h.program().TheINIFile().SectionI(0)->FindVar("CurSyncSet"),
             std::string("1"));
    h.program().Run() = RunState();
  }

  void ASaveThatFailsKeepsTheProgramOpen() {
    MainWindowHarness h(FourSets());
    h.form().show();
    QFile::remove(h.ini_path());
    // A folder where the file should be: the save cannot replace it.
    QVERIFY(QDir().mkpath(h.ini_path() + QStringLiteral("/inside")));
    QVERIFY(!h.form().close());
    QCOMPARE(h.ui.messages.size(), std::size_t{1});
    QVERIFY(QString::fromStdString(h.ui.messages[0].text)
                .startsWith(QStringLiteral("The settings could not be saved: ")));
    QVERIFY(h.form().isVisible());
  }
};

}  // namespace pairwell

QTEST_MAIN(pairwell::SyncFormTest)
#include "sync_form_test.moc"
