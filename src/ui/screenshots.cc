// pairwell_screenshots OUT_DIR: renders every window of the desktop program,
// on a demo configuration in a temporary folder, into PNG files in OUT_DIR
// (scripts/screenshots.sh runs it under a virtual X server). Message boxes
// are answered for the person; the interactive run goes on through the
// confirm window, and the undo window then lists that run.
#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <string>

#include "app/program.h"
#include "engine/synchronizer.h"
#include "ui/editor/sync_form.h"
#include "ui/qt_front_end.h"
#include "ui/run/about_form.h"
#include "ui/run/confirm_form.h"
#include "ui/run/log_form.h"
#include "ui/run/super_msg_box.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

QString out_dir;

// Lets the window settle, then writes it as <name>.png.
void Shot(QWidget& window, const char* name) {
  for (int i = 0; i < 10; ++i) {
    QApplication::processEvents();
    QThread::msleep(20);
  }
  const QString path = out_dir + "/" + QString::fromLatin1(name) + ".png";
  if (!window.grab().save(path)) {
    std::fprintf(stderr, "pairwell_screenshots: cannot write %s\n",
                 qPrintable(path));
  }
}

// Runs `open`, which shows a modal dialog, and takes the dialog's picture
// once it is up, then closes it (as the close box would).
template <typename Open>
void ShotModal(const char* name, Open open) {
  QTimer watch;
  watch.setInterval(50);
  QObject::connect(&watch, &QTimer::timeout, [&watch, name] {
    QWidget* dialog = QApplication::activeModalWidget();
    if (dialog == nullptr) return;
    watch.stop();
    Shot(*dialog, name);
    dialog->close();
  });
  watch.start();
  open();
}

// Writes a demo file with a modification time `days_ago` days back.
void Put(const QString& path, const QByteArray& content, double days_ago) {
  QDir().mkpath(QFileInfo(path).path());
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return;
  file.write(content);
  // Written out first, so that closing the file does not date it anew.
  file.flush();
  const qint64 when = static_cast<qint64>(
      QDateTime::currentSecsSinceEpoch() - days_ago * 86400);
  file.setFileTime(QDateTime::fromSecsSinceEpoch(when),
                   QFileDevice::FileModificationTime);
}

// The demo folders: every kind of row the confirm window can show.
QString MakeDemo(const QTemporaryDir& dir) {
  const QString laptop = dir.filePath(QStringLiteral("Laptop"));
  const QString backup = dir.filePath(QStringLiteral("Backup"));
  const QString usb = dir.filePath(QStringLiteral("USB stick"));
  // Last sync 10 days ago.
  Put(laptop + "/report.odt", "unchanged everywhere", 30);
  Put(backup + "/report.odt", "unchanged everywhere", 30);
  Put(usb + "/report.odt", "unchanged everywhere", 30);
  Put(laptop + "/notes/ideas.txt", QByteArray(1500, 'i'), 2);  // new
  Put(laptop + "/budget.ods", QByteArray(24000, 'b'), 1);      // changed here
  Put(backup + "/budget.ods", QByteArray(20000, 'b'), 30);
  Put(usb + "/budget.ods", QByteArray(20000, 'b'), 30);
  Put(laptop + "/draft.txt", "laptop edit", 3);  // changed in both
  Put(backup + "/draft.txt", "backup edit, longer", 2);
  Put(usb + "/draft.txt", "old draft", 30);
  Put(backup + "/old-list.txt", "deleted on the laptop", 30);  // deleted
  Put(usb + "/old-list.txt", "deleted on the laptop", 30);
  Put(usb + "/stray.tmp", "only on the stick", 5);  // only in the mirror
  Put(laptop + "/same.txt", "saved twice", 1);  // changed alike: no effect
  Put(backup + "/same.txt", "saved twice", 1);
  Put(usb + "/same.txt", "saved twice", 1);
  Put(backup + "/photos/2026/beach.jpg", QByteArray(3 << 20, 'p'), 4);

  QFile shipped(QCoreApplication::applicationDirPath() + "/Pairwell.ini");
  QByteArray ini;
  if (shipped.open(QIODevice::ReadOnly)) ini = shipped.readAll();
  const QString last_sync =
      QDateTime::currentDateTime().addDays(-10).toString(
          QStringLiteral("yyyy-MM-dd HH:mm:ss"));
  ini += "CurSyncSet=1\r\n";
  ini += QStringLiteral("[Sec: Documents]\r\nDir1=%1\r\nDir1Flags=4\r\n"
                        "Dir2=%2\r\nDir2Flags=4\r\nDir3=%3\r\nDir3Flags=13\r\n"
                        "LastSyncDate=%4\r\nExcludeSpec=*.bak;~*\r\n"
                        // Deletions the date alone justifies stay undecided.
                        "AllowSmartDeletes=False\r\n")
             .arg(laptop, backup, usb, last_sync)
             .toUtf8();
  ini += "[Sec: Photos]\r\nDir1=/home/ann/Pictures\r\nDir1Flags=4\r\n"
         "Dir2=/media/ann/Backup/Pictures\r\nDir2Flags=5\r\n";
  ini += "[Sec: Music]\r\nDir1=/home/ann/Music\r\nDir1Flags=4\r\n";
  const QString path = dir.filePath(QStringLiteral("Pairwell.ini"));
  QFile file(path);
  if (file.open(QIODevice::WriteOnly)) file.write(ini);
  return path;
}

// Answers questions Yes and other message boxes with their default button,
// and takes the pictures of the run's windows as they come.
class ShotFrontEnd final : public QtFrontEnd {
 public:
  int MessageBox(const std::string&, int style, const std::string&) override {
    const int buttons = style & kMbButtonsMask;
    if (buttons == kMbYesNo || buttons == kMbYesNoCancel) return kIdYes;
    return DefaultAnswer(style);
  }

  void ShowStatus(const std::string& text) override {
    QtFrontEnd::ShowStatus(text);
    if (running_shot_taken_ || text.rfind("Performing actions", 0) != 0) return;
    running_shot_taken_ = true;
    if (ProgressWindow() != nullptr) Shot(*ProgressWindow(), "LogForm-running");
  }

  Confirmation ConfirmActions(Synchronizer& set) override {
    ConfirmForm form(*program_, set, DialogParent());
    QTimer::singleShot(300, &form, [&form] {
      Shot(form, "ConfirmForm");
      if (auto* go_on = form.findChild<QPushButton*>(QStringLiteral("ContinueBtn"))) {
        go_on->click();
      }
    });
    return form.Run();
  }

  void Attach(Program* program) {
    program_ = program;
    SetProgram(program);
  }

 private:
  Program* program_ = nullptr;
  bool running_shot_taken_ = false;
};

int Run() {
  QTemporaryDir dir;
  qputenv("PAIRWELL_INI", MakeDemo(dir).toUtf8());
  ShotFrontEnd front_end;
  Program program(front_end);
  front_end.Attach(&program);
  program.Main("");
  SyncForm form(program, front_end);
  front_end.SetMainWindow(&form);
  form.show();
  Shot(form, "SyncForm");

  AboutForm about(&form);
  about.show();
  Shot(about, "AboutForm");
  about.close();

  SuperMsgBox box(&form);
  QTimer::singleShot(300, &box, [&box] {
    Shot(box, "SuperMsgBox");
    box.close();
  });
  box.Exec(QStringLiteral("The file 'draft.txt' was changed in two folders "
                          "since the last synchronization.  Which copy do you "
                          "want to keep?"),
           QStringLiteral("&Laptop|&Backup|&Skip"), 0, QString(), 3);

  ShotModal("OptionForm", [&form] {
    form.findChild<QPushButton*>(QStringLiteral("SetOptionsBtn"))->click();
  });
  ShotModal("CROptionForm", [&form] {
    form.findChild<QAction*>(QStringLiteral("mnuCROptions"))->trigger();
  });
  ShotModal("SyncMultiForm", [&form] {
    form.findChild<QAction*>(QStringLiteral("mnuSynchronizeMulti"))->trigger();
  });

  form.findChild<QPushButton*>(QStringLiteral("InteractiveSyncBtn"))->click();
  if (front_end.ProgressWindow() != nullptr) {
    Shot(*front_end.ProgressWindow(), "LogForm-done");
  }

  // The run just made can be undone; a copy it made is edited afterwards,
  // so that the steps show one the undo leaves.
  Put(QDir(dir.path()).filePath(QStringLiteral("Backup/notes/ideas.txt")),
      "edited after the run", 0);
  ShotModal("UndoForm", [&form] {
    form.findChild<QAction*>(QStringLiteral("mnuUndoRun"))->trigger();
  });
  return 0;
}

}  // namespace
}  // namespace pairwell

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: pairwell_screenshots OUT_DIR\n");
    return 2;
  }
  pairwell::out_dir = QString::fromLocal8Bit(argv[1]);
  QDir().mkpath(pairwell::out_dir);
  return pairwell::Run();
}
