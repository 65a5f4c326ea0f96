// Whole runs started from the main window on real folders: the files
// copied, the log pane, the window locked meanwhile, and a stop from the
// progress window in the middle of a long copy.
#include <fcntl.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QTreeView>
#include <QtTest>
#include <string>
#include <vector>

#include "app/program.h"
#include "engine/synchronizer.h"
#include "ui/main_window_harness.h"
#include "ui/modal_driver.h"
#include "ui/run/log_form.h"

namespace pairwell {
namespace {

// Writes the file with that content, last modified `seconds` after the epoch.
bool PutFile(const QString& path, const QByteArray& content, qint64 seconds) {
  QDir().mkpath(QFileInfo(path).path());
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
    return false;
  }
  file.close();
  const struct timespec times[2] = {{static_cast<time_t>(seconds), 0},
                                    {static_cast<time_t>(seconds), 0}};
  return utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) == 0;
}

QByteArray Content(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The names an unfinished copy leaves in the folder.
QStringList Partials(const QString& folder) {
  return QDir(folder).entryList({QStringLiteral(".pairwell-partial-*")},
                                QDir::Files | QDir::Hidden);
}

// 2023-11-14, and a last sync on 2024-01-01 after it.
constexpr qint64 kOld = 1700000000;
constexpr char kLastSync[] = "LastSyncDate=2024-01-01 00:00:00\r\n";

}  // namespace

class WindowRunTest : public QObject {
  Q_OBJECT

 private slots:
  void SyncButtonCopiesTheFilesAndWritesTheLogPane() {
    QTemporaryDir folders;
    const QString a = folders.filePath(QStringLiteral("A"));
    const QString b = folders.filePath(QStringLiteral("B"));
    QVERIFY(QDir().mkpath(b));
    QVERIFY(PutFile(a + "/new.txt", "fresh", kOld));
    QVERIFY(PutFile(a + "/sub/deep.txt", "deeper", kOld));
    MainWindowHarness h(SetSection("Docs", {a.toStdString(), b.toStdString()}),
                        "", /*with_catalogue=*/true);
    const QString ini_before = ReadAll(h.ini_path());
    bool locked = false;
    h.ui.on_events = [&] {
      locked = locked || !h.Find<QPushButton>("SyncBtn")->isEnabled();
    };

    QTest::mouseClick(h.Find<QPushButton>("SyncBtn"), Qt::LeftButton);

    QVERIFY(h.ui.messages.empty());
    QCOMPARE(Content(b + "/new.txt"), QByteArray("fresh"));
    QCOMPARE(Content(b + "/sub/deep.txt"), QByteArray("deeper"));
    QVERIFY(locked);
    QVERIFY(h.Find<QPushButton>("SyncBtn")->isEnabled());
    LogForm* progress = h.ui.ProgressWindow();
    QVERIFY(progress != nullptr);
    QVERIFY(progress->isVisible());
    QCOMPARE(progress->windowTitle(), QStringLiteral("Sync Status - Docs"));
    const QString log =
        progress->findChild<QPlainTextEdit*>(QStringLiteral("LogText"))
            ->toPlainText();
    QVERIFY2(log.contains("Copy " + b + "/new.txt from " + a + "/new.txt"),
             qPrintable(log));
    QVERIFY2(log.contains(QStringLiteral("Sync actions completed - ")),
             qPrintable(log));
    // The run is shown done, not as an empty bar.
    auto* bar =
        progress->findChild<QProgressBar*>(QStringLiteral("ProgressBar"));
    QVERIFY(bar->isVisible());
    QCOMPARE(bar->value(), bar->maximum());
    QCOMPARE(bar->text(), QStringLiteral("100% - 11 B of 11 B"));
    // The window keeps its sets in memory until the program exits.
    QVERIFY(h.program().SyncSets().Item(1).LastSyncDate > 0);
    QCOMPARE(ReadAll(h.ini_path()), ini_before);
  }

  void InteractiveSyncAsksForConfirmation() {
    QTemporaryDir folders;
    const QString a = folders.filePath(QStringLiteral("A"));
    const QString b = folders.filePath(QStringLiteral("B"));
    QVERIFY(QDir().mkpath(b));
    QVERIFY(PutFile(a + "/new.txt", "fresh", kOld));
    MainWindowHarness h(SetSection("Docs", {a.toStdString(), b.toStdString()}),
                        "", /*with_catalogue=*/true);
    // The confirm window opens during the run; its close box ends it.
    ModalDriver driver([](QWidget& confirm) { confirm.close(); });

    QTest::mouseClick(h.Find<QPushButton>("InteractiveSyncBtn"), Qt::LeftButton);

    QCOMPARE(driver.dialog_name(), QStringLiteral("ConfirmForm"));
    // Closing the confirm window cancels the run: nothing was copied.
    QVERIFY(!QFile::exists(b + "/new.txt"));
  }

  void ActionChangedInTheConfirmWindowIsWhatTheRunDoes() {
    QTemporaryDir folders;
    const QString a = folders.filePath(QStringLiteral("A"));
    const QString b = folders.filePath(QStringLiteral("B"));
    QVERIFY(QDir().mkpath(b));
    QVERIFY(PutFile(a + "/keep.txt", "copied", kOld));
    QVERIFY(PutFile(a + "/skip.txt", "left alone", kOld));
    MainWindowHarness h(SetSection("Docs", {a.toStdString(), b.toStdString()}),
                        "", /*with_catalogue=*/true);
    // In the confirm window: skip.txt gets "Do nothing", then Continue.
    bool changed = false;
    ModalDriver driver([&](QWidget& modal) {
      auto* list = modal.findChild<QTreeView*>(QStringLiteral("FileList"));
      QAbstractItemModel* rows = list->model();
      for (int r = 0; r < rows->rowCount(); ++r) {
        const QModelIndex index = rows->index(r, 0);
        if (rows->data(index).toString() != QStringLiteral("skip.txt")) continue;
        list->selectionModel()->setCurrentIndex(
            index, QItemSelectionModel::ClearAndSelect |
                       QItemSelectionModel::Rows);
        modal.findChild<QRadioButton*>(QStringLiteral("DoNothing"))->click();
        changed = rows->data(rows->index(r, 2)).toString() ==
                  QStringLiteral("Do Nothing");
      }
      modal.findChild<QPushButton*>(QStringLiteral("ContinueBtn"))->click();
    });

    QTest::mouseClick(h.Find<QPushButton>("InteractiveSyncBtn"), Qt::LeftButton);

    QVERIFY(changed);
    QCOMPARE(Content(b + "/keep.txt"), QByteArray("copied"));
    QVERIFY(!QFile::exists(b + "/skip.txt"));
    QVERIFY(h.ui.messages.empty());
  }

  void StopDuringALongCopyKeepsTheDestination() {
    QTemporaryDir folders;
    const QString a = folders.filePath(QStringLiteral("A"));
    const QString b = folders.filePath(QStringLiteral("B"));
    QVERIFY(PutFile(a + "/big.bin", QByteArray(48 << 20, 'n'),
                    QDateTime::currentSecsSinceEpoch() - 60));
    QVERIFY(PutFile(b + "/big.bin", "the old version", kOld));
    MainWindowHarness h(
        SetSection("Docs", {a.toStdString(), b.toStdString()}) + kLastSync, "",
        /*with_catalogue=*/true);
    const double last_sync_before = h.program().SyncSets().Item(1).LastSyncDate;
    QVERIFY(last_sync_before > 0);
    int clicks = 0;
    h.ui.on_events = [&] {
      if (clicks > 0 || Partials(b).isEmpty()) return;
      ++clicks;
      h.ui.answers = {kIdYes};  // "Stop anyway?"
      QTest::mouseClick(h.ui.ProgressWindow()->findChild<QPushButton*>(
                            QStringLiteral("CloseBtn")),
                        Qt::LeftButton);
    };

    QTest::mouseClick(h.Find<QPushButton>("SyncBtn"), Qt::LeftButton);

    QCOMPARE(clicks, 1);
    QCOMPARE(h.ui.messages.size(), std::size_t{1});
    QVERIFY(QString::fromStdString(h.ui.messages[0].text)
                .startsWith(QStringLiteral("The program is busy synchronizing.")));
    QCOMPARE(Content(b + "/big.bin"), QByteArray("the old version"));
    QVERIFY(Partials(b).isEmpty());
    auto* status = h.ui.ProgressWindow()->findChild<QLabel*>(
        QStringLiteral("StatusTxt"));
    QTRY_COMPARE(status->text(), QStringLiteral("Syncronization aborted."));
    const Synchronizer& set = h.program().SyncSets().Item(1);
    QVERIFY(set.StopFlag);
    QCOMPARE(set.LastSyncDate, last_sync_before);
  }
};

}  // namespace pairwell

QTEST_MAIN(pairwell::WindowRunTest)
#include "window_run_test.moc"
