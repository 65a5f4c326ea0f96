// The progress and log window, driven through its real widgets with the
// run flags set by hand to stand for the phases of a run.
#include "ui/run/log_form.h"

#include <QDir>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextDocument>
#include <QTimer>
#include <QWindow>
#include <QtTest>
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "app/program.h"
#include "engine/log_file.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/temp_dir.h"
#include "ui/scripted_front_end.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

constexpr char kBusyQuestion[] =
    "The program is busy synchronizing.  If you stop now, the synch will be "
    "incomplete.  Stop anyway?";

// One program with one set and its window. The window goes before the
// program it reads.
struct Fixture {
  ScriptedFrontEnd ui;
  Program program{ui};
  Synchronizer* set = nullptr;
  QPointer<LogForm> form;

  Fixture() {
    ui.SetProgram(&program);
    set = &program.NewSyncSet("x");
    form = new LogForm(program);
  }
  ~Fixture() { delete form; }

  RunState& Run() { return program.Run(); }
  // The flags of each phase, as the sync driver sets them.
  void FirstPhase() {
    Run().current_set = set;
    Run().first_phase = true;
    Run().busy = false;
  }
  void Busy() {
    Run().current_set = set;
    Run().first_phase = false;
    Run().busy = true;
  }
  // Between the sets of a multi-set run: actions were performed, none now.
  void BetweenActions() {
    Run().current_set = set;
    Run().first_phase = false;
    Run().busy = false;
  }
  // After the run, when the window stays open with the outcome.
  void RunEnded() {
    Run().current_set = nullptr;
    Run().first_phase = true;
    Run().busy = false;
  }

  QPushButton* Button() const {
    return form->findChild<QPushButton*>("CloseBtn");
  }
  QString ButtonText() const { return Button()->text(); }
  QString Status() const {
    return form->findChild<QLabel*>("StatusTxt")->text();
  }
  QPlainTextEdit* LogText() const {
    return form->findChild<QPlainTextEdit*>("LogText");
  }
  QProgressBar* Bar() const {
    return form->findChild<QProgressBar*>("ProgressBar");
  }
  QProgressBar* FileBar() const {
    return form->findChild<QProgressBar*>("FileProgressBar");
  }
  QString RateText() const {
    return form->findChild<QLabel*>("RateTxt")->text();
  }
  QTimer* Timer() const { return form->findChild<QTimer*>("Timer"); }

  // One timer tick, now.
  void Tick() const { QVERIFY(QMetaObject::invokeMethod(Timer(), "timeout")); }
  void Click() const { QTest::mouseClick(Button(), Qt::LeftButton); }
  // Lets the deferred deletion of a closed window happen.
  void Settle() const {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  bool Closed() const { return form.isNull() || !form->isVisible(); }
};

// The window appears as the front end shows it.
void ShowWindow(Fixture& f) {
  f.form->show();
  QVERIFY(QTest::qWaitForWindowExposed(f.form));
}

// A set that mirrors folder "a" (holding the files) to an empty "b", with
// its action list built, in simulation mode so that nothing is copied.
void MakeRun(const TempDir& dir, Fixture& f,
             const std::vector<std::string>& names) {
  QVERIFY(QDir().mkpath(QString::fromStdString(dir.Join("a"))));
  QVERIFY(QDir().mkpath(QString::fromStdString(dir.Join("b"))));
  for (const std::string& name : names) dir.WriteFile("a/" + name, name);
  f.set->PathAdd(dir.Join("a"));
  f.set->PathAdd(dir.Join("b"));
  f.set->SetPathFlags(2, 4 | 1);
  f.program.SetSimulationMode(true);
  f.FirstPhase();
  QVERIFY(f.set->BuildActionList());
}

// Every file of the run copied from a over b.
void CopyEveryFile(Fixture& f) {
  for (long i = 1; i <= f.set->WFileCount(); ++i) {
    pairwell::SyncFile& file = f.set->WFile(i);
    file.Action = pairwell::kUseNewest;
    file.SourceIndex = 1;
    file.ActionFlags = pairwell::kFlagCreate;
  }
}

// The values with repeats in a row taken out.
std::vector<int> Distinct(const std::vector<int>& values) {
  std::vector<int> out;
  for (int v : values) {
    if (out.empty() || out.back() != v) out.push_back(v);
  }
  return out;
}

}  // namespace
}  // namespace pairwell

using pairwell::Distinct;
using pairwell::MakeRun;

using pairwell::Fixture;
using pairwell::kBusyQuestion;

class LogFormTest : public QObject {
  Q_OBJECT

 private slots:
  void LoadsWithItsInitialTexts();
  void TimerRunsEvery50Ms();
  void StatusShowsOnlyAtTheNextTick();
  void ShownAndHiddenByTheFrontEnd();
  void ButtonCaptionFollowsTheFlags();
  void FinishedAfterStopReadsAborted();
  void FinishedWithoutStopReadsComplete();
  void FirstPhaseClickCancelsAndClosesAtOnce();
  void StopClickTurnsIntoCloseThenCloses();
  void AbortAnsweredNoChangesNothing();
  void AbortAnsweredYesStopsThenCloses();
  void AbortedStaysAfterTheRunEnds();
  void ClickAfterTheRunClosesAtOnce();
  void NewRunInTheSameWindowStartsOver();
  void CloseBoxWhileBusyAnsweredNoStaysOpen();
  void CloseBoxWhileBusyAnsweredYesStops();
  void CloseBoxBeforeActionsStopsWithoutQuestion();
  void UnloadClosesWithoutQuestionOrStop();
  void ClosingDetachesTheLogEcho();
  void AppendsAtTheEndWithoutResettingTheText();
  void AppendsScrollToTheEnd();
  void ClearTextEmptiesTheBox();
  void TextReachingTheCapIsDroppedSilently();
  void LogBeyondTheCapIsNeverShown();
  void StatusShowsMarkupAsPlainText();
  void ResizeStretchesTheLogBox();
  void ShrinkingBelowTheBoxCornerKeepsItsSize();
  void ProgressBarIsHiddenOutsideActions();
  void TheBarsRowStaysWhenItIsHidden();
  void FinishedRunShowsAFullBarWithoutATick();
  void StoppedRunKeepsTheBarWhereItStopped();
  void ProgressBarCountsFilesDone();
  void ProgressBarFollowsARealRun();
  void ProgressBarCountsTheBytesToCopy();
  void LargeFileShowsItsOwnProgress();
};

void LogFormTest::LoadsWithItsInitialTexts() {
  Fixture f;
  QCOMPARE(f.form->windowTitle(), QString("[Log/progress form]"));
  QCOMPARE(f.ButtonText(), QString("[Close]"));
  QCOMPARE(f.Status(), QString("Starting..."));
  QVERIFY(f.LogText()->toPlainText().isEmpty());
  QVERIFY(f.LogText()->isReadOnly());
  QVERIFY(f.form->Echo() != nullptr);
  QCOMPARE(f.form->Echo()->TextLength(), std::size_t{0});
  // The run has not reported yet: the first tick keeps "Starting...".
  f.FirstPhase();
  f.Tick();
  QCOMPARE(f.Status(), QString("Starting..."));
  QCOMPARE(f.ButtonText(), QString("Cancel"));
}

void LogFormTest::TimerRunsEvery50Ms() {
  Fixture f;
  QCOMPARE(f.Timer()->interval(), 50);
  QVERIFY(f.Timer()->isActive());
  f.Busy();
  f.form->SetStatus("Reading folder");
  QTRY_COMPARE_WITH_TIMEOUT(f.ButtonText(), QString("Abort"), 1000);
  QCOMPARE(f.Status(), QString("Reading folder"));
}

void LogFormTest::StatusShowsOnlyAtTheNextTick() {
  Fixture f;
  f.FirstPhase();
  f.Tick();
  f.form->SetStatus("Computing default actions");
  QCOMPARE(f.Status(), QString("Starting..."));
  f.Tick();
  QCOMPARE(f.Status(), QString("Computing default actions"));
}

void LogFormTest::ShownAndHiddenByTheFrontEnd() {
  Fixture f;
  f.FirstPhase();
  f.ui.ShowProgress("Sync Status - x");
  QPointer<pairwell::LogForm> shown = f.ui.ProgressWindow();
  QVERIFY(shown);
  QCOMPARE(shown->windowTitle(), QString("Sync Status - x"));
  QCOMPARE(f.ui.LogEcho(), shown->Echo());
  // ManageUI hands the set's status on; the timer shows it.
  f.set->SyncMsg = "Performing actions 1/2\nFor file: a.txt";
  f.set->ManageUI();
  QTRY_COMPARE(shown->findChild<QLabel*>("StatusTxt")->text(),
               QString("Performing actions 1/2\nFor file: a.txt"));
  f.Busy();
  f.ui.HideProgress();
  QVERIFY(f.ui.messages.empty());
  QVERIFY(!f.set->StopFlag);
  f.Settle();
  QVERIFY(shown.isNull());
  QVERIFY(f.ui.ProgressWindow() == nullptr);
}

void LogFormTest::ButtonCaptionFollowsTheFlags() {
  Fixture f;
  f.FirstPhase();
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Cancel"));
  f.Busy();
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Abort"));
  // Busy wins over the first phase.
  f.Run().first_phase = true;
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Abort"));
  f.BetweenActions();
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Stop"));
  f.RunEnded();
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Cancel"));
}

void LogFormTest::FinishedAfterStopReadsAborted() {
  Fixture f;
  f.BetweenActions();
  f.form->SetStatus("Performing actions");
  f.Tick();
  f.Click();
  QVERIFY(f.set->StopFlag);
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Close"));
  QCOMPARE(f.Status(), QString("Syncronization aborted."));
  // The run's later status does not replace the final message.
  f.form->SetStatus("Sync actions stopped");
  f.Tick();
  QCOMPARE(f.Status(), QString("Syncronization aborted."));
}

void LogFormTest::FinishedWithoutStopReadsComplete() {
  Fixture f;
  f.BetweenActions();
  f.Tick();
  f.Click();
  QVERIFY(f.set->StopFlag);
  // The cancel request is gone (the engine starts a set with it clear).
  f.set->StopFlag = false;
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Close"));
  QCOMPARE(f.Status(), QString("Syncronization complete."));
}

void LogFormTest::FirstPhaseClickCancelsAndClosesAtOnce() {
  Fixture f;
  ShowWindow(f);
  f.FirstPhase();
  f.Tick();
  f.Click();
  QVERIFY(f.set->StopFlag);
  QVERIFY(f.ui.messages.empty());
  QVERIFY(f.Closed());
  f.Settle();
  QVERIFY(f.form.isNull());
}

void LogFormTest::StopClickTurnsIntoCloseThenCloses() {
  Fixture f;
  ShowWindow(f);
  f.BetweenActions();
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Stop"));
  f.Click();
  QVERIFY(f.set->StopFlag);
  QVERIFY(f.form->isVisible());
  // The caption changes at the next tick, not at the click.
  QCOMPARE(f.ButtonText(), QString("Stop"));
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Close"));
  f.Click();
  QVERIFY(f.Closed());
  QVERIFY(f.ui.messages.empty());
}

void LogFormTest::AbortAnsweredNoChangesNothing() {
  Fixture f;
  ShowWindow(f);
  f.Busy();
  f.form->SetStatus("Performing actions 3/9");
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Abort"));
  f.ui.answers = {pairwell::kIdNo};
  f.Click();
  QCOMPARE(f.ui.messages.size(), std::size_t{1});
  QCOMPARE(f.ui.messages[0].text, std::string(kBusyQuestion));
  QCOMPARE(f.ui.messages[0].style,
           pairwell::kMbYesNo | pairwell::kMbInformation);
  QCOMPARE(f.ui.messages[0].caption, std::string("Pairwell"));
  QVERIFY(!f.set->StopFlag);
  QVERIFY(f.form->isVisible());
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Abort"));
  QCOMPARE(f.Status(), QString("Performing actions 3/9"));
}

void LogFormTest::AbortAnsweredYesStopsThenCloses() {
  Fixture f;
  ShowWindow(f);
  f.Busy();
  f.Tick();
  f.ui.answers = {pairwell::kIdYes};
  f.Click();
  QVERIFY(f.set->StopFlag);
  QVERIFY(f.form->isVisible());
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Close"));
  QCOMPARE(f.Status(), QString("Syncronization aborted."));
  // Still busy (the current file is being finished): the question again.
  f.ui.answers = {pairwell::kIdNo};
  f.Click();
  QCOMPARE(f.ui.messages.size(), std::size_t{2});
  QVERIFY(f.form->isVisible());
  f.ui.answers = {pairwell::kIdYes};
  f.Click();
  QCOMPARE(f.ui.messages.size(), std::size_t{3});
  QVERIFY(f.Closed());
}

void LogFormTest::AbortedStaysAfterTheRunEnds() {
  Fixture f;
  ShowWindow(f);
  f.Busy();
  f.Tick();
  f.ui.answers = {pairwell::kIdYes};
  f.Click();
  // The engine stops and the driver clears the current set.
  f.RunEnded();
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Close"));
  QCOMPARE(f.Status(), QString("Syncronization aborted."));
  f.Click();
  QCOMPARE(f.ui.messages.size(), std::size_t{1});
  QVERIFY(f.Closed());
}

void LogFormTest::ClickAfterTheRunClosesAtOnce() {
  Fixture f;
  ShowWindow(f);
  f.Busy();
  f.form->SetStatus("Sync actions completed");
  f.Tick();
  // The run ends by itself: the window stays, offering "Cancel".
  f.RunEnded();
  f.Tick();
  QVERIFY(f.form->isVisible());
  QCOMPARE(f.ButtonText(), QString("Cancel"));
  QCOMPARE(f.Status(), QString("Sync actions completed"));
  f.Click();
  QVERIFY(f.Closed());
  QVERIFY(f.ui.messages.empty());
  QVERIFY(!f.set->StopFlag);
}

void LogFormTest::NewRunInTheSameWindowStartsOver() {
  Fixture f;
  ShowWindow(f);
  f.BetweenActions();
  f.Tick();
  f.Click();
  f.RunEnded();
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Close"));
  // The window was left open and another run starts in it.
  f.set->StopFlag = false;
  f.FirstPhase();
  f.form->SetStatus("Attempting to access folders to be synchronized");
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Cancel"));
  QCOMPARE(f.Status(),
           QString("Attempting to access folders to be synchronized"));
  QVERIFY(f.form->isVisible());
}

void LogFormTest::CloseBoxWhileBusyAnsweredNoStaysOpen() {
  Fixture f;
  ShowWindow(f);
  f.Busy();
  f.Tick();
  f.ui.answers = {pairwell::kIdNo};
  f.form->windowHandle()->close();
  QCOMPARE(f.ui.messages.size(), std::size_t{1});
  QCOMPARE(f.ui.messages[0].text, std::string(kBusyQuestion));
  QCOMPARE(f.ui.messages[0].style,
           pairwell::kMbYesNo | pairwell::kMbInformation);
  QVERIFY(!f.set->StopFlag);
  f.Settle();
  QVERIFY(!f.form.isNull());
  QVERIFY(f.form->isVisible());
  f.Tick();
  QCOMPARE(f.ButtonText(), QString("Abort"));
}

void LogFormTest::CloseBoxWhileBusyAnsweredYesStops() {
  Fixture f;
  ShowWindow(f);
  f.Busy();
  f.Tick();
  f.ui.answers = {pairwell::kIdYes};
  f.form->windowHandle()->close();
  QCOMPARE(f.ui.messages.size(), std::size_t{1});
  QVERIFY(f.set->StopFlag);
  QVERIFY(f.Closed());
  f.Settle();
  QVERIFY(f.form.isNull());
}

void LogFormTest::CloseBoxBeforeActionsStopsWithoutQuestion() {
  Fixture f;
  ShowWindow(f);
  f.FirstPhase();
  f.Tick();
  f.form->close();
  QVERIFY(f.ui.messages.empty());
  QVERIFY(f.set->StopFlag);
  QVERIFY(f.Closed());
}

void LogFormTest::UnloadClosesWithoutQuestionOrStop() {
  Fixture f;
  ShowWindow(f);
  f.Busy();
  f.Tick();
  f.form->Unload();
  QVERIFY(f.ui.messages.empty());
  QVERIFY(!f.set->StopFlag);
  QVERIFY(f.Closed());
  f.Settle();
  QVERIFY(f.form.isNull());
}

void LogFormTest::ClosingDetachesTheLogEcho() {
  Fixture f;
  ShowWindow(f);
  pairwell::LogFile& log = f.program.TheLogFile();
  log.EchoTextBox = f.form->Echo();
  log.PrintL("Synchronize started: x");
  QCOMPARE(f.LogText()->toPlainText(), QString("Synchronize started: x\n"));
  f.FirstPhase();
  f.form->Unload();
  QVERIFY(log.EchoTextBox == nullptr);
  f.Settle();
  QVERIFY(f.form.isNull());
  // The run goes on printing; nothing reaches the deleted box.
  log.PrintL("Sync actions stopped");
}

void LogFormTest::AppendsAtTheEndWithoutResettingTheText() {
  Fixture f;
  pairwell::LogEchoTarget* echo = f.form->Echo();
  echo->AppendText("first line\n");
  struct Change {
    int from, removed, added;
  };
  std::vector<Change> changes;
  QObject::connect(f.LogText()->document(), &QTextDocument::contentsChange,
                   [&changes](int from, int removed, int added) {
                     changes.push_back(Change{from, removed, added});
                   });
  echo->AppendText("second");
  echo->AppendText(" line\n");
  QCOMPARE(f.LogText()->toPlainText(), QString("first line\nsecond line\n"));
  QCOMPARE(echo->TextLength(), std::size_t{23});
  QVERIFY(!changes.empty());
  for (const Change& c : changes) {
    QVERIFY(c.from >= 11);
    QCOMPARE(c.removed, 0);
  }
  // The caret is at the end, where the next piece goes.
  QCOMPARE(f.LogText()->textCursor().position(), 23);
  QVERIFY(!f.LogText()->document()->isUndoAvailable());
}

void LogFormTest::AppendsScrollToTheEnd() {
  Fixture f;
  ShowWindow(f);
  QScrollBar* bar = f.LogText()->verticalScrollBar();
  // Reading older lines does not stop the box following the log.
  for (int i = 1; i <= 100; ++i) {
    f.form->Echo()->AppendText("line " + std::to_string(i) + "\n");
  }
  QVERIFY(bar->maximum() > 0);
  QCOMPARE(bar->value(), bar->maximum());
  bar->setValue(0);
  for (int i = 101; i <= 200; ++i) {
    f.form->Echo()->AppendText("line " + std::to_string(i) + "\n");
  }
  QCOMPARE(bar->value(), bar->maximum());
}

void LogFormTest::ClearTextEmptiesTheBox() {
  Fixture f;
  f.form->Echo()->AppendText("old run\n");
  f.form->Echo()->ClearText();
  QVERIFY(f.LogText()->toPlainText().isEmpty());
  QCOMPARE(f.form->Echo()->TextLength(), std::size_t{0});
}

void LogFormTest::TextReachingTheCapIsDroppedSilently() {
  Fixture f;
  pairwell::LogEchoTarget* echo = f.form->Echo();
  echo->AppendText(std::string(65530, 'a'));
  QCOMPARE(echo->TextLength(), std::size_t{65530});
  // 65530 + 10 reaches the cap: dropped whole, not cut.
  echo->AppendText("0123456789");
  QCOMPARE(echo->TextLength(), std::size_t{65530});
  QVERIFY(!f.LogText()->toPlainText().contains('0'));
  // 65534 in total stays under it.
  echo->AppendText("bcde");
  QCOMPARE(echo->TextLength(), std::size_t{65534});
  QVERIFY(f.LogText()->toPlainText().endsWith("abcde"));
  echo->AppendText("f");
  QCOMPARE(echo->TextLength(), std::size_t{65534});
  QVERIFY(f.ui.messages.empty());
}

void LogFormTest::LogBeyondTheCapIsNeverShown() {
  Fixture f;
  pairwell::LogFile& log = f.program.TheLogFile();
  log.EchoTextBox = f.form->Echo();
  const std::string line(99, 'x');
  for (int i = 0; i < 800; ++i) log.PrintL(line);
  const QString shown = f.LogText()->toPlainText();
  QVERIFY(shown.size() <= 65534);
  QVERIFY(shown.size() > 65534 - 100);
  // Only whole pieces: the box holds lines as printed.
  const QStringList lines = shown.split('\n', Qt::SkipEmptyParts);
  for (const QString& l : lines) QCOMPARE(l.size(), 99);
  // The run goes on and nothing is said.
  log.PrintL("Sync actions completed");
  QCOMPARE(f.LogText()->toPlainText(), shown);
  QVERIFY(f.ui.messages.empty());
}

void LogFormTest::StatusShowsMarkupAsPlainText() {
  Fixture f;
  f.FirstPhase();
  f.form->SetStatus("For file: <b>x</b>.txt");
  f.Tick();
  QLabel* label = f.form->findChild<QLabel*>("StatusTxt");
  QCOMPARE(label->textFormat(), Qt::PlainText);
  QCOMPARE(label->text(), QString("For file: <b>x</b>.txt"));
}

void LogFormTest::ResizeStretchesTheLogBox() {
  Fixture f;
  ShowWindow(f);
  f.form->resize(600, 400);
  QTRY_COMPARE(f.form->size(), QSize(600, 400));
  QPlainTextEdit* box = f.LogText();
  const QRect r = box->geometry();
  QVERIFY(r.top() > f.Button()->geometry().bottom());
  QVERIFY(r.top() > f.Bar()->geometry().bottom());
  // The same distance from the right and bottom edges as from the left.
  QCOMPARE(600 - r.right() - 1, r.left());
  QCOMPARE(400 - r.bottom() - 1, r.left());
  f.form->resize(800, 500);
  QTRY_COMPARE(f.form->size(), QSize(800, 500));
  QCOMPARE(box->geometry(),
           QRect(r.topLeft(), QSize(r.width() + 200, r.height() + 100)));
}

void LogFormTest::ShrinkingBelowTheBoxCornerKeepsItsSize() {
  Fixture f;
  ShowWindow(f);
  f.form->resize(600, 400);
  QTRY_COMPARE(f.form->size(), QSize(600, 400));
  QPlainTextEdit* box = f.LogText();
  const QRect before = box->geometry();
  // Narrower than the box's left plus the margin, shorter than its top.
  const QSize tiny(before.left(), before.top());
  f.form->resize(tiny);
  QTRY_COMPARE(f.form->size(), tiny);
  QCOMPARE(box->geometry(), before);
  // Only the dimension that has room follows the window.
  f.form->resize(300, before.top());
  QTRY_COMPARE(f.form->size(), QSize(300, before.top()));
  QCOMPARE(
      box->geometry(),
      QRect(before.topLeft(), QSize(300 - 2 * before.left(), before.height())));
  f.form->resize(before.left(), 300);
  QTRY_COMPARE(f.form->size(), QSize(before.left(), 300));
  QCOMPARE(box->geometry(),
           QRect(before.topLeft(), QSize(300 - 2 * before.left(),
                                         300 - before.left() - before.top())));
  // Big enough again: stretched to the edges.
  f.form->resize(600, 400);
  QTRY_COMPARE(f.form->size(), QSize(600, 400));
  QCOMPARE(box->geometry(), before);
}

void LogFormTest::ProgressBarIsHiddenOutsideActions() {
  Fixture f;
  QProgressBar* bar = f.Bar();
  QVERIFY(!bar->isVisibleTo(f.form));
  f.FirstPhase();
  f.Tick();
  QVERIFY(!bar->isVisibleTo(f.form));
  // Busy with no files (an undo): hidden too, not an empty box.
  f.Busy();
  f.Tick();
  QVERIFY(!bar->isVisibleTo(f.form));
}

void LogFormTest::TheBarsRowStaysWhenItIsHidden() {
  pairwell::TempDir dir;
  Fixture f;
  ShowWindow(f);
  const QRect box = f.LogText()->geometry();
  MakeRun(dir, f, {"1.txt"});
  f.ui.on_events = [&] { f.Tick(); };
  f.Busy();
  f.set->PerformActions();
  f.ui.on_events = nullptr;
  QVERIFY(f.Bar()->isVisibleTo(f.form));
  QCOMPARE(f.Bar()->text(), QString("1 of 1 file"));
  QTest::qWait(10);
  QCOMPARE(f.LogText()->geometry(), box);
  f.set->FreeSyncData();
}

void LogFormTest::FinishedRunShowsAFullBarWithoutATick() {
  // The actions end and the run with them before the timer comes round:
  // the bar still shows them done, not an empty box.
  pairwell::TempDir dir;
  Fixture f;
  MakeRun(dir, f, {"1.txt", "2.txt", "3.txt"});
  CopyEveryFile(f);
  // The front end's own window, which the run's status reaches.
  f.ui.ShowProgress("Sync Status - x");
  QPointer<pairwell::LogForm> shown = f.ui.ProgressWindow();
  QVERIFY(shown);
  shown->findChild<QTimer*>("Timer")->stop();
  f.Busy();
  f.set->PerformActions();
  f.set->FreeSyncData();
  f.RunEnded();
  QProgressBar* bar = shown->findChild<QProgressBar*>("ProgressBar");
  QVERIFY(bar->isVisibleTo(shown));
  QCOMPARE(bar->value(), bar->maximum());
  QCOMPARE(bar->text(), QString("100% - 15 B of 15 B"));
  QVERIFY(shown->findChild<QLabel*>("RateTxt")->text().isEmpty());
  shown->Unload();
  f.Settle();
}

void LogFormTest::StoppedRunKeepsTheBarWhereItStopped() {
  pairwell::TempDir dir;
  Fixture f;
  MakeRun(dir, f, {"1.txt", "2.txt", "3.txt", "4.txt"});
  int events = 0;
  f.ui.on_events = [&] {
    f.Tick();
    // Stopped while the third file is at hand.
    if (f.set->CurrentAction() == 3 && ++events == 1) f.set->StopFlag = true;
  };
  f.Busy();
  f.set->PerformActions();
  f.ui.on_events = nullptr;
  f.set->FreeSyncData();
  f.RunEnded();
  f.Tick();
  QVERIFY(f.Bar()->isVisibleTo(f.form));
  QCOMPARE(f.Bar()->text(), QString("2 of 4 files"));
  // A new run in the same window hides it until its own actions.
  f.set->StopFlag = false;
  f.FirstPhase();
  f.Tick();
  QVERIFY(!f.Bar()->isVisibleTo(f.form));
}

void LogFormTest::ProgressBarCountsFilesDone() {
  pairwell::TempDir dir;
  Fixture f;
  QProgressBar* bar = f.Bar();
  // A real action list of four files, simulated, looked at while the
  // actions run.
  MakeRun(dir, f, {"1.txt", "2.txt", "3.txt", "4.txt"});
  QCOMPARE(f.set->WFileCount(), 4L);
  f.Tick();
  QVERIFY(!bar->isVisibleTo(f.form));

  std::vector<int> values;
  std::vector<int> maxima;
  f.ui.on_events = [&] {
    f.Tick();
    values.push_back(bar->value());
    maxima.push_back(bar->maximum());
  };
  f.Busy();
  f.set->PerformActions();
  f.ui.on_events = nullptr;
  QVERIFY(!maxima.empty());
  for (int m : maxima) QCOMPARE(m, 4);
  // The file being worked on is not done yet; all four are once the
  // actions are over.
  QCOMPARE(Distinct(values), (std::vector<int>{0, 1, 2, 3, 4}));
  QCOMPARE(bar->text(), QString("4 of 4 files"));
  f.set->FreeSyncData();
  f.RunEnded();
  f.Tick();
  QVERIFY(bar->isVisibleTo(f.form));
  QCOMPARE(bar->text(), QString("4 of 4 files"));
}

void LogFormTest::ProgressBarFollowsARealRun() {
  // The timer itself, not a forced tick, moves the bar while the engine
  // lets events through.
  pairwell::TempDir dir;
  Fixture f;
  MakeRun(dir, f, {"1.txt", "2.txt", "3.txt"});
  QCOMPARE(f.set->WFileCount(), 3L);
  std::vector<int> values;
  std::vector<QString> buttons;
  f.ui.on_events = [&] {
    QTest::qWait(80);
    values.push_back(f.Bar()->value());
    buttons.push_back(f.ButtonText());
  };
  f.Busy();
  f.set->PerformActions();
  f.ui.on_events = nullptr;
  QCOMPARE(Distinct(values), (std::vector<int>{0, 1, 2, 3}));
  for (const QString& b : buttons) QCOMPARE(b, QString("Abort"));
  f.set->FreeSyncData();
}

void LogFormTest::ProgressBarCountsTheBytesToCopy() {
  pairwell::TempDir dir;
  Fixture f;
  // Four copies of 5 bytes each ("1.txt" holds its name).
  MakeRun(dir, f, {"1.txt", "2.txt", "3.txt", "4.txt"});
  CopyEveryFile(f);
  std::vector<QString> texts;
  std::vector<QString> rates;
  f.ui.on_events = [&] {
    f.Tick();
    texts.push_back(f.Bar()->text());
    rates.push_back(f.RateText());
    QVERIFY(f.FileBar()->isHidden());
  };
  f.Busy();
  f.set->PerformActions();
  f.ui.on_events = nullptr;
  QVERIFY(!texts.empty());
  QCOMPARE(texts.front(), QString("0% - 0 B of 20 B"));
  // Copies are written ahead of their turn, so the bytes may run ahead of
  // the copies counted below; while the actions run the bar never goes back
  // and is never full.
  const QRegularExpression format("^(\\d+)% - (\\d+) B of 20 B$");
  int last_percent = 0;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (rates[i].isEmpty()) continue;  // the actions are over
    const QRegularExpressionMatch match = format.match(texts[i]);
    QVERIFY2(match.hasMatch(), qPrintable(texts[i]));
    const int percent = match.captured(1).toInt();
    QVERIFY2(percent >= last_percent, qPrintable(texts[i]));
    QVERIFY2(percent < 100, qPrintable(texts[i] + " / " + rates[i]));
    last_percent = percent;
  }
  QCOMPARE(rates.front(), QString("0 of 4 copies"));
  QVERIFY(std::find(rates.begin(), rates.end(), QString("2 of 4 copies")) !=
          rates.end());
  // The run ended: the bar full, the rate gone.
  QCOMPARE(texts.back(), QString("100% - 20 B of 20 B"));
  f.set->FreeSyncData();
  f.RunEnded();
  f.Tick();
  QCOMPARE(f.Bar()->text(), QString("100% - 20 B of 20 B"));
  QVERIFY(f.RateText().isEmpty());
}

void LogFormTest::LargeFileShowsItsOwnProgress() {
  pairwell::TempDir dir;
  Fixture f;
  QVERIFY(QDir().mkpath(QString::fromStdString(dir.Join("a"))));
  QVERIFY(QDir().mkpath(QString::fromStdString(dir.Join("b"))));
  dir.WriteFile("a/big.bin", std::string(std::size_t{48} << 20, 'n'));
  f.set->PathAdd(dir.Join("a"));
  f.set->PathAdd(dir.Join("b"));
  f.set->SetPathFlags(2, 4 | 1);
  f.FirstPhase();
  QVERIFY(f.set->BuildActionList());
  CopyEveryFile(f);
  std::vector<QString> file_texts;
  f.ui.on_events = [&] {
    f.Tick();
    if (!f.FileBar()->isHidden()) file_texts.push_back(f.FileBar()->text());
  };
  f.Busy();
  f.set->PerformActions();
  f.ui.on_events = nullptr;
  // Chunk by chunk while the copy goes on.
  QVERIFY(!file_texts.empty());
  for (const QString& text : file_texts) {
    QVERIFY2(text.startsWith("big.bin: ") && text.endsWith(" of 48.0 MiB"),
             qPrintable(text));
  }
  f.RunEnded();
  f.Tick();
  QVERIFY(f.FileBar()->isHidden());
  f.set->FreeSyncData();
}

QTEST_MAIN(LogFormTest)
#include "log_form_test.moc"
