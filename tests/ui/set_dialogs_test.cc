// The set dialogs opened from the main window, and a round trip: options
// edited in the dialogs, "Save and Exit", and a fresh start that reads the
// same values back from the configuration file.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QtTest>
#include <functional>
#include <memory>
#include <string>

#include "app/program.h"
#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/synchronizer.h"
#include "support/test_dates.h"
#include "ui/main_window_harness.h"
#include "ui/modal_driver.h"

namespace pairwell {
namespace {

template <typename T>
T* In(QWidget& dialog, const char* name) {
  T* widget = dialog.findChild<T*>(QString::fromLatin1(name));
  if (widget == nullptr) qFatal("no control %s", name);
  return widget;
}

}  // namespace

class SetDialogsTest : public QObject {
  Q_OBJECT

 private slots:
  void OptionsButtonOpensTheOptionsOfTheCurrentSet() {
    MainWindowHarness h(SetSection("Docs", {"/a", "/b"}), "", true);
    QString caption;
    ModalDriver driver([&](QWidget& dialog) {
      caption = dialog.windowTitle();
      In<QCheckBox>(dialog, "Recursive")->setChecked(false);
      In<QPushButton>(dialog, "OKBtn")->click();
    });
    QVERIFY(h.Find<QLineEdit>("FolderSpec")->isEnabled());
    QTest::mouseClick(h.Find<QPushButton>("SetOptionsBtn"), Qt::LeftButton);
    QCOMPARE(driver.dialog_name(), QStringLiteral("OptionForm"));
    QCOMPARE(caption, QStringLiteral("Options for Docs"));
    QVERIFY(!h.program().SyncSets().Item(1).Recursive);
    // The folder filters follow the recursion option at once.
    QVERIFY(!h.Find<QLineEdit>("FolderSpec")->isEnabled());
  }

  void ConflictOptionsMenuOpensItsDialog() {
    MainWindowHarness h(SetSection("Docs", {"/a", "/b"}), "", true);
    ModalDriver driver([](QWidget& dialog) {
      In<QPushButton>(dialog, "CancelBtn")->click();
    });
    h.Action("mnuCROptions")->trigger();
    QCOMPARE(driver.dialog_name(), QStringLiteral("CROptionForm"));
  }

  void MultipleSetsRunsTheChosenOnes() {
    QTemporaryDir folders;
    auto folder = [&](const char* name) {
      const QString path = folders.filePath(QString::fromLatin1(name));
      QDir().mkpath(path);
      return path.toStdString();
    };
    const std::string a1 = folder("a1"), b1 = folder("b1");
    const std::string a2 = folder("a2"), b2 = folder("b2");
    QFile file(QString::fromStdString(a2) + "/new.txt");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("two");
    file.close();
    QFile other(QString::fromStdString(a1) + "/new.txt");
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.write("one");
    other.close();
    MainWindowHarness h(SetSection("One", {a1, b1}) + SetSection("Two", {a2, b2}),
                        "", true);
    ModalDriver driver([](QWidget& dialog) {
      auto* list = In<QListWidget>(dialog, "SetList");
      list->item(1)->setSelected(true);
      In<QPushButton>(dialog, "OKBtn")->click();
    });
    h.Action("mnuSynchronizeMulti")->trigger();
    QCOMPARE(driver.dialog_name(), QStringLiteral("SyncMultiForm"));
    QVERIFY(QFile::exists(QString::fromStdString(b2) + "/new.txt"));
    QVERIFY(!QFile::exists(QString::fromStdString(b1) + "/new.txt"));
  }

  void EditedOptionsSurviveSaveAndAFreshStart() {
    MainWindowHarness h(SetSection("Docs", {"/a", "/b"}), "", true);
    ModalDriver options([](QWidget& dialog) {
      In<QCheckBox>(dialog, "Recursive")->setChecked(false);
      In<QCheckBox>(dialog, "SyncFolders")->setChecked(true);
      In<QCheckBox>(dialog, "WarnFutureDate")->setChecked(false);
      In<QCheckBox>(dialog, "OWReadOnly")->setChecked(true);
      In<QCheckBox>(dialog, "UseLogFile")->setChecked(true);
      In<QLineEdit>(dialog, "LogFileName")->setText(QStringLiteral("sync.log"));
      In<QLineEdit>(dialog, "LastSyncDate")
          ->setText(QStringLiteral("2026-11-22 14:05"));
      In<QPushButton>(dialog, "OKBtn")->click();
    });
    QTest::mouseClick(h.Find<QPushButton>("SetOptionsBtn"), Qt::LeftButton);
    const Synchronizer& edited = h.program().SyncSets().Item(1);
    QCOMPARE(edited.LastSyncDate, MakeDate(2026, 11, 22, 14, 5));

    // The first configurable type gets "Do nothing".
    QString type_name;
    ModalDriver conflicts([&](QWidget& dialog) {
      auto* list = In<QTreeWidget>(dialog, "ConList");
      list->setCurrentItem(list->topLevelItem(0));
      type_name = list->topLevelItem(0)->text(0);
      In<QRadioButton>(dialog, "DoNothing")->click();
      In<QPushButton>(dialog, "OKBtn")->click();
    });
    h.Action("mnuCROptions")->trigger();
    QVERIFY(!type_name.isEmpty());
    int type = 0;
    for (int c = 1; c <= edited.ConflictTypeCount(); ++c) {
      if (QString::fromStdString(edited.ConflictTypes(c).Name) == type_name ||
          QString::fromStdString(edited.ConflictTypes(c).Description) ==
              type_name) {
        type = c;
      }
    }
    QVERIFY(type > 0);
    QCOMPARE(edited.ConflictTypes(type).Action, 1);
    INIFileSection written("Sec: Docs");
    edited.WriteToINI(written);

    h.Action("mnuExit")->trigger();

    // A fresh start reads the file that the exit wrote.
    ScriptedFrontEnd ui;
    Program fresh(ui);
    ui.SetProgram(&fresh);
    QVERIFY(fresh.Main(""));
    const Synchronizer& loaded = fresh.SyncSets().Item(1);
    QCOMPARE(loaded.Recursive, false);
    QCOMPARE(loaded.SyncFolders, true);
    QCOMPARE(loaded.WarnFutureDate, false);
    QCOMPARE(loaded.DefActionFlags & 2, 2);
    QCOMPARE(loaded.UseLogFile, true);
    QCOMPARE(loaded.LogFileName, std::string("sync.log"));
    QCOMPARE(loaded.LastSyncDate, MakeDate(2026, 11, 22, 14, 5));
    QCOMPARE(loaded.ConflictTypes(type).Action, 1);
    // The file holds the section exactly as the set wrote it, custom
    // conflict settings included.
    INIFile on_disk;
    QVERIFY(on_disk.LoadFile(h.ini_path().toStdString()));
    const std::shared_ptr<INIFileSection> saved = on_disk.Section("Sec: Docs");
    QVERIFY(saved != nullptr);
    QCOMPARE(saved->VarCount(), written.VarCount());
    for (long i = 1; i <= written.VarCount(); ++i) {
      QCOMPARE(saved->VarName(i), written.VarName(i));
      QCOMPARE(saved->VarValue(i), written.VarValue(i));
    }
  }
};

}  // namespace pairwell

QTEST_MAIN(pairwell::SetDialogsTest)
#include "set_dialogs_test.moc"
