// Running sync sets one after another on real folders: the progress window
// and the main window, the confirm window, the question about files dated in
// the future, the log of each set, the run flags and the last-sync date a
// completed set keeps.
#include "app/sync_driver.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "app/program.h"
#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/immutable_guard.h"
#include "support/recording_user_interface.h"
#include "support/run_files.h"
#include "support/temp_dir.h"
#include "support/text_echo.h"
#include "util/date_time.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

// A fixed modification time in the past (2023-11-14), in seconds since the
// epoch.
constexpr std::int64_t kPastTime = 1700000000;

std::int64_t FutureTime() {
  return static_cast<std::int64_t>(std::time(nullptr)) + 30 * 86400;
}

// The run flags as one moment saw them.
struct FlagsSeen {
  bool seen = false;
  bool first_phase = false;
  bool busy = false;
  bool interactive = false;
  Synchronizer* current_set = nullptr;
};

FlagsSeen SeeFlags(const RunState& state) {
  return FlagsSeen{true, state.first_phase, state.busy, state.interactive,
                   state.current_set};
}

class SyncDriverTest : public ::testing::Test {
 protected:
  SyncDriverTest() {
    EXPECT_TRUE(catalogue_file_.LoadFile(std::string(PAIRWELL_SOURCE_DIR) +
                                         "/data/Pairwell.ini"));
    catalogue_ = catalogue_file_.Section("Conflict Types");
    EXPECT_TRUE(catalogue_);
    program_.TheLogFile().SetBaseFolder(tmp_.path());
  }

  // A set of that name over two source folders <name>/a and <name>/b, with
  // the shipped conflict types and the program's log.
  Synchronizer& NewSet(const std::string& name) {
    sets_.push_back(std::make_unique<Synchronizer>());
    Synchronizer& set = *sets_.back();
    set.Name = name;
    MakeFolder(tmp_.Join(name));
    MakeFolder(A(set));
    MakeFolder(B(set));
    set.PathAdd(A(set));
    set.PathAdd(B(set));
    if (catalogue_) set.ReadConflictInfo(*catalogue_);
    set.SetLog(&program_.TheLogFile());
    set.SetRunState(&program_.Run());
    // The operations themselves, with deletions and replacements final:
    // keeping the old copies has tests of its own.
    set.VersionDays = 0;
    return set;
  }

  std::string A(const Synchronizer& set) const {
    return tmp_.Join(set.Name) + "/a";
  }
  std::string B(const Synchronizer& set) const {
    return tmp_.Join(set.Name) + "/b";
  }

  // A file new in folder a: copied to b without asking anyone.
  void AddNewFile(const Synchronizer& set,
                  const std::string& name = "new.txt") {
    Put(A(set) + "/" + name, "content of " + name, kPastTime);
  }

  // A file that differs between the folders at the first synchronization: a
  // conflict the person must confirm.
  void AddConflict(const Synchronizer& set) {
    Put(A(set) + "/both.txt", "newer", kPastTime);
    Put(B(set) + "/both.txt", "older", kPastTime - 86400);
  }

  void AddErrorHandling(const std::string& key, const std::string& value) {
    program_.TheINIFile().AddSection("ErrorHandling")->AddVar(key, value);
  }

  RecordingUserInterface ui_;
  Program program_{ui_};
  TempDir tmp_;
  INIFile catalogue_file_;
  std::shared_ptr<INIFileSection> catalogue_;
  std::vector<std::unique_ptr<Synchronizer>> sets_;
};

// --- Captions, windows and the outcome --------------------------------------

TEST_F(SyncDriverTest, OneSetCaptionHasNoCounter) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_EQ(ui_.progress_captions,
            std::vector<std::string>{"Sync Status - Docs"});
}

TEST_F(SyncDriverTest, SeveralSetsRunInOrderWithCountedCaptions) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  Synchronizer& third = NewSet("Three");
  AddNewFile(first);
  AddNewFile(second);
  AddNewFile(third);

  EXPECT_TRUE(RunSets(program_, {&first, &second, &third}, false));

  EXPECT_EQ(ui_.progress_captions,
            (std::vector<std::string>{"Sync Status - One (1 of 3)",
                                      "Sync Status - Two (2 of 3)",
                                      "Sync Status - Three (3 of 3)"}));
  EXPECT_EQ(Read(B(first) + "/new.txt"), "content of new.txt");
  EXPECT_EQ(Read(B(second) + "/new.txt"), "content of new.txt");
  EXPECT_EQ(Read(B(third) + "/new.txt"), "content of new.txt");
  EXPECT_LT(first.ScanStarted(), second.ScanStarted() + 1e-9);
  EXPECT_LT(second.ScanStarted(), third.ScanStarted() + 1e-9);
}

TEST_F(SyncDriverTest, CompletedSetTakesTheMomentItsScanBeganAsLastSyncDate) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  const double before = Now();
  double before_actions = 0;
  // Time passes between the scan and the actions.
  ui_.on_confirm = [&before_actions](Synchronizer&) {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    before_actions = Now();
  };

  EXPECT_TRUE(RunSets(program_, {&set}, true));

  EXPECT_EQ(set.LastSyncDate, set.ScanStarted());
  EXPECT_GE(set.ScanStarted(), before);
  EXPECT_LT(set.LastSyncDate, before_actions);
  EXPECT_EQ(Read(B(set) + "/new.txt"), "content of new.txt");
}

TEST_F(SyncDriverTest, CompletedRunKeepsTheProgressShownAndFreesTheData) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_TRUE(ui_.progress_shown);
  EXPECT_EQ(ui_.main_window_states, (std::vector<bool>{false, true}));
  EXPECT_EQ(set.WFileCount(), 0);
  EXPECT_EQ(set.WPathCount(), 0);
  EXPECT_FALSE(set.StopFlag);
}

TEST_F(SyncDriverTest, MainWindowIsDisabledWhileTheRunGoesOn) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  std::vector<bool> states_in_confirm;
  ui_.on_confirm = [&](Synchronizer&) {
    states_in_confirm = ui_.main_window_states;
  };

  RunSets(program_, {&set}, true);

  EXPECT_EQ(states_in_confirm, std::vector<bool>{false});
  EXPECT_EQ(ui_.main_window_states, (std::vector<bool>{false, true}));
}

// --- The confirm window -----------------------------------------------------

TEST_F(SyncDriverTest, NonInteractiveRunWithoutConfirmableConflictAsksNothing) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_EQ(ui_.confirm_calls, 0);
  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(Read(B(set) + "/new.txt"), "content of new.txt");
}

TEST_F(SyncDriverTest, NonInteractiveRunAsksWhereAConflictNeedsConfirmation) {
  Synchronizer& set = NewSet("Docs");
  AddConflict(set);

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_EQ(ui_.confirm_calls, 1);
  EXPECT_EQ(Read(B(set) + "/both.txt"), "newer");
}

TEST_F(SyncDriverTest, InteractiveRunAsksForEverySet) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  AddNewFile(first);
  AddNewFile(second);
  std::vector<std::string> confirmed;
  ui_.on_confirm = [&confirmed](Synchronizer& set) {
    confirmed.push_back(set.Name);
    // The window sees the set's files and their actions.
    EXPECT_EQ(set.WFileCount(), 1);
  };

  EXPECT_TRUE(RunSets(program_, {&first, &second}, true));

  EXPECT_EQ(ui_.confirm_calls, 2);
  EXPECT_EQ(confirmed, (std::vector<std::string>{"One", "Two"}));
}

TEST_F(SyncDriverTest, CancelInTheConfirmWindowPerformsNothingAndEndsTheRun) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  AddConflict(first);
  AddNewFile(first);
  AddNewFile(second);
  ui_.confirm_answer = Confirmation::kCancel;

  EXPECT_FALSE(RunSets(program_, {&first, &second}, false));

  EXPECT_EQ(ui_.confirm_calls, 1);
  EXPECT_EQ(Read(B(first) + "/both.txt"), "older");
  EXPECT_FALSE(Exists(B(first) + "/new.txt"));
  EXPECT_FALSE(Exists(B(second) + "/new.txt"));
  EXPECT_EQ(first.LastSyncDate, 0);
  EXPECT_EQ(second.LastSyncDate, 0);
  // The second set was never scanned, and the window closes at once.
  EXPECT_EQ(second.ScanStarted(), 0);
  EXPECT_EQ(ui_.progress_captions.size(), 1u);
  EXPECT_FALSE(ui_.progress_shown);
  EXPECT_EQ(ui_.main_window_states, (std::vector<bool>{false, true}));
}

TEST_F(SyncDriverTest, StopFlagSetInTheConfirmWindowCancelsTheRun) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  ui_.on_confirm = [](Synchronizer& s) { s.StopFlag = true; };

  EXPECT_FALSE(RunSets(program_, {&set}, true));

  EXPECT_FALSE(Exists(B(set) + "/new.txt"));
  EXPECT_EQ(set.LastSyncDate, 0);
  EXPECT_FALSE(ui_.progress_shown);
}

TEST_F(SyncDriverTest, CancelInALaterSetKeepsEarlierSetsDone) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  AddNewFile(first);
  AddNewFile(second);
  ui_.on_confirm = [&](Synchronizer& set) {
    ui_.confirm_answer =
        &set == &first ? Confirmation::kContinue : Confirmation::kCancel;
  };

  EXPECT_FALSE(RunSets(program_, {&first, &second}, true));

  EXPECT_EQ(Read(B(first) + "/new.txt"), "content of new.txt");
  EXPECT_EQ(first.LastSyncDate, first.ScanStarted());
  EXPECT_FALSE(Exists(B(second) + "/new.txt"));
  EXPECT_EQ(second.LastSyncDate, 0);
  // The first set's outcome stays on show.
  EXPECT_TRUE(ui_.progress_shown);
}

// --- Refused, aborted and simulated sets ------------------------------------

TEST_F(SyncDriverTest, RefusedSetEndsTheRunAndHidesTheProgress) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  first.PathRemove(2);
  AddNewFile(second);

  EXPECT_FALSE(RunSets(program_, {&first, &second}, false));

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "You need to select at least two directories to synchronize.  Add "
            "more directories and try again.");
  EXPECT_EQ(first.LastSyncDate, 0);
  EXPECT_EQ(second.ScanStarted(), 0);
  EXPECT_FALSE(Exists(B(second) + "/new.txt"));
  EXPECT_EQ(ui_.progress_captions.size(), 1u);
  EXPECT_FALSE(ui_.progress_shown);
  EXPECT_EQ(ui_.main_window_states, (std::vector<bool>{false, true}));
}

TEST_F(SyncDriverTest, AbortedSetKeepsItsLastSyncDateAndEndsTheRun) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  AddNewFile(first);
  AddNewFile(second);
  first.LastSyncDate = 44000;
  ImmutableGuard guard(B(first));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  AddErrorHandling("Code" + std::to_string(guard.error_code()), "A");

  EXPECT_FALSE(RunSets(program_, {&first, &second}, false));

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(first.LastSyncDate, 44000);
  EXPECT_EQ(second.ScanStarted(), 0);
  EXPECT_FALSE(Exists(B(second) + "/new.txt"));
  // The first set reached its actions: the window shows how it ended.
  EXPECT_TRUE(ui_.progress_shown);
  EXPECT_EQ(ui_.main_window_states, (std::vector<bool>{false, true}));
}

TEST_F(SyncDriverTest, SimulatedRunChangesNeitherFilesNorLastSyncDate) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  AddConflict(set);
  program_.Run().simulation_mode = true;

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_FALSE(Exists(B(set) + "/new.txt"));
  EXPECT_EQ(Read(B(set) + "/both.txt"), "older");
  EXPECT_EQ(set.LastSyncDate, 0);
  EXPECT_TRUE(ui_.progress_shown);
}

// --- The error-handling table -----------------------------------------------

TEST_F(SyncDriverTest, ErrorHandlingTableComesFromTheConfiguration) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  ImmutableGuard guard(B(set));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  const std::string code = "Code" + std::to_string(guard.error_code());
  AddErrorHandling(code, "I ; expected");
  // Whatever an earlier run left is replaced.
  auto stale = std::make_shared<INIFileSection>("ErrorHandling");
  stale->AddVar(code, "A");
  program_.Run().error_handling = stale;
  set.UseLogFile = true;
  set.LogFileName = "sync.log";

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_TRUE(Contains(Read(tmp_.Join("sync.log")),
                       "* The following error was ignored automatically: "
                       "Unable to perform the copy operation:"))
      << Read(tmp_.Join("sync.log"));
}

TEST_F(SyncDriverTest, WithoutErrorHandlingSectionTheErrorIsAsked) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  ImmutableGuard guard(B(set));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  auto stale = std::make_shared<INIFileSection>("ErrorHandling");
  stale->AddVar("Code" + std::to_string(guard.error_code()), "I");
  program_.Run().error_handling = stale;
  ui_.answers = {kIdIgnore};

  RunSets(program_, {&set}, false);

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(Contains(ui_.messages[0].text,
                       "Unable to perform the copy operation:\n\n" + A(set) +
                           "/new.txt -> " + B(set) + "/new.txt"))
      << ui_.messages[0].text;
}

// --- Run flags --------------------------------------------------------------

TEST_F(SyncDriverTest, RunFlagsFollowThePhasesOfASet) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  FlagsSeen in_confirm;
  FlagsSeen in_actions;
  ui_.on_confirm = [&in_confirm, this](Synchronizer&) { in_confirm = SeeFlags(program_.Run()); };
  ui_.on_events = [&] {
    if (!in_actions.seen && set.SyncMsg.rfind("Performing actions", 0) == 0) {
      in_actions = SeeFlags(program_.Run());
    }
  };

  RunSets(program_, {&set}, true);

  ASSERT_TRUE(in_confirm.seen);
  EXPECT_TRUE(in_confirm.first_phase);
  EXPECT_FALSE(in_confirm.busy);
  EXPECT_TRUE(in_confirm.interactive);
  EXPECT_EQ(in_confirm.current_set, &set);
  ASSERT_TRUE(in_actions.seen);
  EXPECT_FALSE(in_actions.first_phase);
  EXPECT_TRUE(in_actions.busy);
  EXPECT_EQ(in_actions.current_set, &set);
  const FlagsSeen after = SeeFlags(program_.Run());
  EXPECT_TRUE(after.first_phase);
  EXPECT_FALSE(after.busy);
  EXPECT_EQ(after.current_set, nullptr);
}

TEST_F(SyncDriverTest, LaterSetsRunWithTheFirstPhaseFlagClear) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  AddNewFile(first);
  AddNewFile(second);
  std::vector<FlagsSeen> in_confirm;
  ui_.on_confirm = [&in_confirm, this](Synchronizer&) {
    in_confirm.push_back(SeeFlags(program_.Run()));
  };

  RunSets(program_, {&first, &second}, true);

  ASSERT_EQ(in_confirm.size(), 2u);
  EXPECT_TRUE(in_confirm[0].first_phase);
  EXPECT_EQ(in_confirm[0].current_set, &first);
  EXPECT_FALSE(in_confirm[1].first_phase);
  EXPECT_FALSE(in_confirm[1].busy);
  EXPECT_EQ(in_confirm[1].current_set, &second);
}

TEST_F(SyncDriverTest, InteractiveFlagIsStoredForTheConfirmWindow) {
  Synchronizer& set = NewSet("Docs");
  AddConflict(set);
  FlagsSeen in_confirm;
  ui_.on_confirm = [&in_confirm, this](Synchronizer&) { in_confirm = SeeFlags(program_.Run()); };
  program_.Run().interactive = true;

  RunSets(program_, {&set}, false);

  ASSERT_TRUE(in_confirm.seen);
  EXPECT_FALSE(in_confirm.interactive);
}

// --- The log ----------------------------------------------------------------

TEST_F(SyncDriverTest, LogFileIsWrittenUnderTheTrimmedNameWhenAsked) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  set.UseLogFile = true;
  set.LogFileName = "  sync.log  ";

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  const std::string log = Read(tmp_.Join("sync.log"));
  EXPECT_TRUE(Contains(log, "Pairwell Log Opened: ")) << log;
  EXPECT_TRUE(Contains(log, "Synchronize started: Docs - ")) << log;
  EXPECT_TRUE(Contains(
      log, "Copy " + B(set) + "/new.txt from " + A(set) + "/new.txt\n"))
      << log;
  EXPECT_TRUE(Contains(log, "Sync actions completed - ")) << log;
  EXPECT_FALSE(program_.TheLogFile().IsOpen());
}

TEST_F(SyncDriverTest, WithoutUseLogFileTheLogOnlyEchoes) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  set.UseLogFile = false;
  set.LogFileName = "sync.log";
  TextEcho echo;
  ui_.log_echo = &echo;

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_FALSE(Exists(tmp_.Join("sync.log")));
  EXPECT_TRUE(Contains(echo.text, "Synchronize started: Docs - ")) << echo.text;
  EXPECT_TRUE(Contains(echo.text, "Sync actions completed - ")) << echo.text;
  EXPECT_FALSE(program_.TheLogFile().IsOpen());
}

TEST_F(SyncDriverTest, EachSetWritesToItsOwnLogFile) {
  Synchronizer& first = NewSet("One");
  Synchronizer& second = NewSet("Two");
  AddNewFile(first);
  AddNewFile(second);
  first.UseLogFile = second.UseLogFile = true;
  first.LogFileName = "one.log";
  second.LogFileName = "two.log";

  EXPECT_TRUE(RunSets(program_, {&first, &second}, false));

  const std::string one = Read(tmp_.Join("one.log"));
  const std::string two = Read(tmp_.Join("two.log"));
  EXPECT_TRUE(Contains(one, "Synchronize started: One - ")) << one;
  EXPECT_FALSE(Contains(one, "Synchronize started: Two")) << one;
  EXPECT_TRUE(Contains(two, "Synchronize started: Two - ")) << two;
  EXPECT_FALSE(Contains(two, "Synchronize started: One")) << two;
}

TEST_F(SyncDriverTest, AnOpenLogIsClosedBeforeTheSetsLogIsOpened) {
  Synchronizer& set = NewSet("Docs");
  AddNewFile(set);
  program_.TheLogFile().SetPath("earlier.log");
  program_.TheLogFile().OpenLog();
  ASSERT_TRUE(program_.TheLogFile().IsOpen());
  set.UseLogFile = true;
  set.LogFileName = "sync.log";

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_TRUE(Contains(Read(tmp_.Join("sync.log")), "Synchronize started"));
  EXPECT_FALSE(Contains(Read(tmp_.Join("earlier.log")), "Synchronize started"));
  EXPECT_FALSE(program_.TheLogFile().IsOpen());
}

// --- Files dated in the future ----------------------------------------------

class FutureDateTest : public SyncDriverTest {
 protected:
  // count future-dated files f01.txt, f02.txt, ... and one older file, all
  // in folder a.
  Synchronizer& SetWithFutureFiles(int count) {
    Synchronizer& set = NewSet("Docs");
    for (int i = 1; i <= count; ++i) {
      const std::string name = (i < 10 ? "f0" : "f") + std::to_string(i);
      Put(A(set) + "/" + name + ".txt", name, FutureTime());
    }
    Put(A(set) + "/past.txt", "past", kPastTime);
    return set;
  }

  std::string Listed(const Synchronizer& set, int from, int to) const {
    std::string lines;
    for (int i = from; i <= to; ++i) {
      lines += "\n" + A(set) + "/" + (i < 10 ? "f0" : "f") + std::to_string(i) +
               ".txt";
    }
    return lines;
  }
};

TEST_F(FutureDateTest, QuestionListsNineNamesThenMoreFiles) {
  Synchronizer& set = SetWithFutureFiles(12);
  ASSERT_TRUE(set.BuildActionList());
  ASSERT_EQ(set.FutureDateCount, 12);

  EXPECT_EQ(
      FutureDateQuestion(set, Now()),
      "12 files were found with dates in the future.  These files are:\n" +
          Listed(set, 1, 9) + "\n<more files...>\nContinue anyway?");
}

TEST_F(FutureDateTest, TenFilesAlsoEndInMoreFiles) {
  Synchronizer& set = SetWithFutureFiles(10);
  ASSERT_TRUE(set.BuildActionList());

  EXPECT_EQ(
      FutureDateQuestion(set, Now()),
      "10 files were found with dates in the future.  These files are:\n" +
          Listed(set, 1, 9) + "\n<more files...>\nContinue anyway?");
}

TEST_F(FutureDateTest, NineFilesAreAllListed) {
  Synchronizer& set = SetWithFutureFiles(9);
  ASSERT_TRUE(set.BuildActionList());

  EXPECT_EQ(FutureDateQuestion(set, Now()),
            "9 files were found with dates in the future.  These files are:\n" +
                Listed(set, 1, 9) + "\nContinue anyway?");
}

TEST_F(FutureDateTest, QuestionNamesTheCopyThatIsDatedInTheFuture) {
  Synchronizer& set = NewSet("Docs");
  Put(A(set) + "/late.txt", "past", kPastTime);
  Put(B(set) + "/late.txt", "future", FutureTime());
  ASSERT_TRUE(set.BuildActionList());

  EXPECT_EQ(FutureDateQuestion(set, Now()),
            "1 files were found with dates in the future.  These files are:\n"
            "\n" +
                B(set) + "/late.txt\nContinue anyway?");
}

TEST_F(FutureDateTest, QuestionComparesWithTheMomentGiven) {
  Synchronizer& set = SetWithFutureFiles(1);
  ASSERT_TRUE(set.BuildActionList());

  // Seen from further in the future than every file, none is listed.
  EXPECT_EQ(FutureDateQuestion(set, Now() + 365),
            "1 files were found with dates in the future.  These files are:\n"
            "\nContinue anyway?");
}

TEST_F(FutureDateTest, AnswerNoEndsTheRunWithNoChange) {
  Synchronizer& set = SetWithFutureFiles(10);
  Synchronizer& later = NewSet("Later");
  AddNewFile(later);
  ui_.answers = {kIdNo};

  EXPECT_FALSE(RunSets(program_, {&set, &later}, true));

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(
      ui_.messages[0].text,
      "10 files were found with dates in the future.  These files are:\n" +
          Listed(set, 1, 9) + "\n<more files...>\nContinue anyway?");
  EXPECT_EQ(ui_.messages[0].style, kMbYesNo | kMbQuestion);
  EXPECT_EQ(ui_.messages[0].style, 36);
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  EXPECT_EQ(ui_.confirm_calls, 0);
  EXPECT_FALSE(Exists(B(set) + "/f01.txt"));
  EXPECT_FALSE(Exists(B(set) + "/past.txt"));
  EXPECT_EQ(set.LastSyncDate, 0);
  EXPECT_EQ(later.ScanStarted(), 0);
  EXPECT_FALSE(ui_.progress_shown);
}

TEST_F(FutureDateTest, AnswerYesGoesOn) {
  Synchronizer& set = SetWithFutureFiles(2);
  ui_.answers = {kIdYes};

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(Read(B(set) + "/f01.txt"), "f01");
  EXPECT_EQ(Read(B(set) + "/past.txt"), "past");
  EXPECT_EQ(set.LastSyncDate, set.ScanStarted());
}

TEST_F(FutureDateTest, NoQuestionWhenTheSetDoesNotWarn) {
  Synchronizer& set = SetWithFutureFiles(3);
  set.WarnFutureDate = false;

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(Read(B(set) + "/f03.txt"), "f03");
}

TEST_F(FutureDateTest, NoQuestionWithoutFutureFiles) {
  Synchronizer& set = SetWithFutureFiles(0);

  EXPECT_TRUE(RunSets(program_, {&set}, false));

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(Read(B(set) + "/past.txt"), "past");
}

}  // namespace
}  // namespace pairwell
