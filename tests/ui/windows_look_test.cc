// Every window as a person first meets it, on a real run: no access key used
// twice in one window or menu, and no caption cut off. Run at the normal
// scale and at twice that (as on a high-density screen).
#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>

#include "ui/main_window_harness.h"
#include "ui/modal_driver.h"
#include "ui/run/log_form.h"
#include "ui/run/super_msg_box.h"
#include "ui/window_check.h"

namespace pairwell {
namespace {

bool PutFile(const QString& path, const QByteArray& content) {
  QDir().mkpath(QFileInfo(path).path());
  QFile file(path);
  return file.open(QIODevice::WriteOnly) &&
         file.write(content) == content.size();
}

// Keys that the program's own captions share: pressed, they move the focus
// from one of the two controls to the other.
const QStringList kSharedKeys = {
    "SyncForm: f: &Folders to synchronize:, &File",
    "SyncForm: h: &Help, &Help",
    "ConfirmForm: f: &File List:, Re&fresh Selected Files",
};

// What the checks found in one window, prefixed with its name.
QStringList Problems(const QWidget& window) {
  QStringList found;
  for (const QString& clash : AccessKeyClashes(window)) {
    const QString where = window.objectName() + ": " + clash;
    if (!kSharedKeys.contains(where)) found << where;
  }
  for (const QString& control : ClippedControls(window)) {
    found << window.objectName() + ": " + control;
  }
  return found;
}

// Opens a modal window with `open` and checks it once it is up.
QStringList ProblemsOfModal(const std::function<void()>& open) {
  QStringList found;
  bool seen = false;
  ModalDriver driver([&](QWidget& dialog) {
    QTest::qWait(20);  // laid out and painted once
    found = Problems(dialog);
    seen = true;
  });
  open();
  if (!seen) found << "the window did not open";
  return found;
}

// A set whose folders need every kind of action, so that the confirm
// window has rows to show.
class Folders {
 public:
  Folders() {
    ok_ = PutFile(Path("A/new.txt"), "fresh") &&
          PutFile(Path("A/changed.txt"), "edited in A") &&
          PutFile(Path("B/changed.txt"), "edited in B, longer") &&
          PutFile(Path("B/only-here.txt"), "b") && QDir().mkpath(Path("C"));
  }
  bool ok() const { return ok_; }
  QString Path(const QString& name) const { return dir_.filePath(name); }
  std::string Section() const {
    return SetSection("Docs",
                      {Path("A").toStdString(), Path("B").toStdString(),
                       Path("C").toStdString()},
                      {4, 4, 4 | 1});
  }

 private:
  QTemporaryDir dir_;
  bool ok_ = false;
};

}  // namespace

class WindowsLookTest : public QObject {
  Q_OBJECT

 private slots:
  void MainWindowAndItsDialogs() {
    Folders folders;
    QVERIFY(folders.ok());
    MainWindowHarness h(folders.Section() + SetSection("Photos", {"/p", "/q"}),
                        "", /*with_catalogue=*/true);
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    h.ClickRow(1);
    QStringList found = Problems(h.form());
    found << ProblemsOfModal(
        [&] { h.Find<QPushButton>("SetOptionsBtn")->click(); });
    found << ProblemsOfModal([&] { h.Action("mnuCROptions")->trigger(); });
    found << ProblemsOfModal(
        [&] { h.Action("mnuSynchronizeMulti")->trigger(); });
    found << ProblemsOfModal([&] { h.Action("mnuHelpAbout")->trigger(); });
    QVERIFY2(found.isEmpty(), qPrintable(found.join(QStringLiteral("\n"))));
  }

  void RunWindows() {
    Folders folders;
    QVERIFY(folders.ok());
    MainWindowHarness h(folders.Section(), "", /*with_catalogue=*/true);
    h.form().show();
    QVERIFY(QTest::qWaitForWindowExposed(&h.form()));
    QStringList found;
    bool confirmed = false;
    ModalDriver driver([&](QWidget& confirm) {
      QTest::qWait(20);
      found << Problems(confirm);
      auto* go_on =
          confirm.findChild<QPushButton*>(QStringLiteral("ContinueBtn"));
      if (go_on != nullptr) go_on->click();
      confirmed = go_on != nullptr;
    });
    QTest::mouseClick(h.Find<QPushButton>("InteractiveSyncBtn"),
                      Qt::LeftButton);
    QVERIFY(confirmed);
    LogForm* progress = h.ui.ProgressWindow();
    QVERIFY(progress != nullptr);
    QTest::qWait(20);
    found << Problems(*progress);
    found << ProblemsOfModal([&] { h.Action("mnuUndoRun")->trigger(); });
    QVERIFY2(found.isEmpty(), qPrintable(found.join(QStringLiteral("\n"))));
  }

  void MessageBoxWithCustomButtons() {
    SuperMsgBox box;
    QStringList found;
    QTimer::singleShot(50, &box, [&] {
      found = Problems(box);
      box.close();
    });
    box.Exec(QStringLiteral("The file 'draft.txt' was changed in two folders "
                            "since the last synchronization.  Which copy do "
                            "you want to keep?"),
             QStringLiteral("&Laptop|&Backup|&Skip"), 0, QString(), 3);
    QVERIFY2(found.isEmpty(), qPrintable(found.join(QStringLiteral("\n"))));
  }
};

}  // namespace pairwell

QTEST_MAIN(pairwell::WindowsLookTest)
#include "windows_look_test.moc"
