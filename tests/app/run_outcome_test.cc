// A program started from a configuration file on disk, its sets looked up,
// planned and run: how each set of a run ends, and which last-sync dates
// reach the file.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/program.h"
#include "app/sync_driver.h"
#include "app/sync_plan.h"
#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/immutable_guard.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/date_time.h"
#include "util/user_interface.h"

namespace pairwell {

// Outcomes print as their words in failure messages.
void PrintTo(SetOutcome outcome, std::ostream* out) {
  *out << SetOutcomeName(outcome);
}

namespace {

// A fixed modification time in the past (2023-11-14).
constexpr std::int64_t kPastTime = 1700000000;

class RunOutcomeTest : public ::testing::Test {
 protected:
  RunOutcomeTest() { SetEnvironmentValue(kIniPathVariable, IniPath()); }
  ~RunOutcomeTest() override { UnsetEnvironmentValue(kIniPathVariable); }

  std::string IniPath() const { return dir_.Join("Pairwell.ini"); }
  std::string A(const std::string& set) const {
    return dir_.Join(set) + "/a";
  }
  std::string B(const std::string& set) const {
    return dir_.Join(set) + "/b";
  }

  // Writes the configuration file (the shipped catalogue and one set per
  // name over <name>/a and <name>/b, b with the given flags), makes the
  // folders a (and b unless told not to) and starts the program.
  void Start(const std::vector<std::string>& names, int b_flags = 4,
             bool make_b = true) {
    std::string ini =
        Read(std::string(PAIRWELL_SOURCE_DIR) + "/data/Pairwell.ini");
    ASSERT_FALSE(ini.empty());
    for (const std::string& name : names) {
      MakeFolder(dir_.Join(name));
      MakeFolder(A(name));
      if (make_b) MakeFolder(B(name));
      ini += "[Sec: " + name + "]\r\nDir1=" + A(name) +
             "\r\nDir1Flags=4\r\nDir2=" + B(name) +
             "\r\nDir2Flags=" + std::to_string(b_flags) + "\r\n";
    }
    dir_.WriteFile("Pairwell.ini", ini);
    ASSERT_TRUE(program_.Main(""));
    ASSERT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  }

  Synchronizer& Set(const std::string& name) {
    Synchronizer* set = program_.FindSyncSet(name);
    if (set == nullptr) throw std::runtime_error("no set " + name);
    return *set;
  }

  void AddNewFile(const std::string& set, const std::string& name = "new.txt") {
    Put(A(set) + "/" + name, "content of " + name, kPastTime);
  }

  // A file that differs between the folders at the first synchronization: a
  // conflict that needs confirmation.
  void AddConflict(const std::string& set) {
    Put(A(set) + "/both.txt", "newer", kPastTime);
    Put(B(set) + "/both.txt", "older", kPastTime - 86400);
  }

  RunResult Run(const std::vector<std::string>& names,
                bool interactive = false) {
    std::vector<Synchronizer*> sets;
    for (const std::string& name : names) sets.push_back(&Set(name));
    RunOptions options;
    options.interactive = interactive;
    return RunSyncSets(program_, sets, options);
  }

  // The set's LastSyncDate as the file on disk holds it; "" when absent.
  std::string SavedLastSync(const std::string& name) const {
    INIFile on_disk;
    EXPECT_TRUE(on_disk.LoadFile(IniPath()));
    const std::shared_ptr<INIFileSection> section =
        on_disk.Section("Sec: " + name);
    return section ? section->FindVar("LastSyncDate") : "";
  }

  RecordingUserInterface ui_;
  Program program_{ui_};
  TempDir dir_;
};

// --- Looking a set up -------------------------------------------------------

TEST_F(RunOutcomeTest, SetsAreFoundByNameIgnoringCaseOrByNumber) {
  Start({"Docs", "Photos"});

  EXPECT_EQ(program_.FindSyncSet("docs"), &program_.SyncSets().Item(1));
  EXPECT_EQ(program_.FindSyncSet("PHOTOS"), &program_.SyncSets().Item(2));
  EXPECT_EQ(program_.FindSyncSet("2"), &program_.SyncSets().Item(2));
  EXPECT_EQ(program_.FindSyncSet("1"), &program_.SyncSets().Item(1));
  EXPECT_EQ(program_.FindSyncSet("0"), nullptr);
  EXPECT_EQ(program_.FindSyncSet("3"), nullptr);
  EXPECT_EQ(program_.FindSyncSet("1.5"), nullptr);
  EXPECT_EQ(program_.FindSyncSet("Music"), nullptr);
  EXPECT_EQ(program_.FindSyncSet(""), nullptr);
}

TEST_F(RunOutcomeTest, NameWinsOverNumber) {
  Start({"Docs", "1"});

  EXPECT_EQ(program_.FindSyncSet("1"), &program_.SyncSets().Item(2));
  EXPECT_EQ(program_.FindSyncSet("2"), &program_.SyncSets().Item(2));
}

// --- A plan, then a sync: the window's order --------------------------------

TEST_F(RunOutcomeTest, PlanChangesNothingAndASyncAfterItIsReal) {
  // b is missing and may be created: the plan reads it as empty.
  Start({"Docs"}, 4 | 8, /*make_b=*/false);
  AddNewFile("Docs");
  Synchronizer& set = Set("Docs");
  {
    const SyncPlan plan(set);
    ASSERT_TRUE(plan.ok());
    ASSERT_EQ(set.WFileCount(), 1);
    EXPECT_EQ(set.WFile(1).RelativeName(), "new.txt");
    EXPECT_EQ(set.WFile(1).Action, kUseNewest);
    EXPECT_FALSE(Exists(B("Docs")));
  }
  EXPECT_FALSE(set.DryRun);
  EXPECT_EQ(set.WFileCount(), 0);
  EXPECT_EQ(set.WPathCount(), 0);
  EXPECT_FALSE(Exists(B("Docs")));

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCompleted});
  EXPECT_EQ(Read(B("Docs") + "/new.txt"), "content of new.txt");
  EXPECT_EQ(set.LastSyncDate, set.ScanStarted());
  EXPECT_EQ(SavedLastSync("Docs"), FormatGeneralDate(set.LastSyncDate));
}

TEST_F(RunOutcomeTest, PlanLeavesADryRunSetADryRunSet) {
  Start({"Docs"});
  AddNewFile("Docs");
  Synchronizer& set = Set("Docs");
  set.DryRun = true;

  { const SyncPlan plan(set); }

  EXPECT_TRUE(set.DryRun);
}

TEST_F(RunOutcomeTest, RefusedPlanIsNotOk) {
  Start({"Docs"}, 4, /*make_b=*/false);

  const SyncPlan plan(Set("Docs"));

  EXPECT_FALSE(plan.ok());
  EXPECT_EQ(ui_.messages.size(), 1u);
}

// --- How a set ends ---------------------------------------------------------

TEST_F(RunOutcomeTest, CompletedSetsSaveTheirDatesOnDisk) {
  Start({"One", "Two"});
  AddNewFile("One");
  AddNewFile("Two");

  const RunResult result = Run({"One", "Two"});

  EXPECT_EQ(result.outcomes, (std::vector<SetOutcome>{SetOutcome::kCompleted,
                                                      SetOutcome::kCompleted}));
  EXPECT_TRUE(result.AllCompleted());
  EXPECT_TRUE(result.dates_saved);
  EXPECT_EQ(SavedLastSync("One"), FormatGeneralDate(Set("One").LastSyncDate));
  EXPECT_EQ(SavedLastSync("Two"), FormatGeneralDate(Set("Two").LastSyncDate));
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(RunOutcomeTest, RefusedScanFailsAndLaterSetsDoNotRun) {
  Start({"One", "Two"});
  Set("One").PathRemove(2);
  AddNewFile("Two");

  const RunResult result = Run({"One", "Two"});

  EXPECT_EQ(result.outcomes, (std::vector<SetOutcome>{SetOutcome::kFailed,
                                                      SetOutcome::kNotRun}));
  EXPECT_FALSE(result.AllCompleted());
  EXPECT_FALSE(Exists(B("Two") + "/new.txt"));
  EXPECT_EQ(SavedLastSync("One"), "");
  EXPECT_EQ(SavedLastSync("Two"), "");
}

TEST_F(RunOutcomeTest, StopDuringTheScanCancels) {
  Start({"Docs"});
  AddNewFile("Docs");
  ui_.on_events = [this] {
    if (program_.Run().current_set) program_.Run().current_set->StopFlag = true;
  };

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCancelled});
  EXPECT_FALSE(Exists(B("Docs") + "/new.txt"));
  EXPECT_EQ(SavedLastSync("Docs"), "");
}

TEST_F(RunOutcomeTest, NoToTheFutureDateQuestionCancels) {
  Start({"Docs"});
  Put(A("Docs") + "/later.txt", "from the future",
      static_cast<std::int64_t>(std::time(nullptr)) + 30 * 86400);
  ui_.answers = {kIdNo};

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCancelled});
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_FALSE(Exists(B("Docs") + "/later.txt"));
}

TEST_F(RunOutcomeTest, CancelInTheConfirmWindowCancels) {
  Start({"One", "Two"});
  AddNewFile("One");
  AddNewFile("Two");
  ui_.confirm_answer = Confirmation::kCancel;

  const RunResult result = Run({"One", "Two"}, /*interactive=*/true);

  EXPECT_EQ(result.outcomes, (std::vector<SetOutcome>{SetOutcome::kCancelled,
                                                      SetOutcome::kNotRun}));
  EXPECT_FALSE(Exists(B("One") + "/new.txt"));
}

TEST_F(RunOutcomeTest, ConfirmationNobodyGaveIsRefusedAndChangesNothing) {
  Start({"One", "Two"});
  AddConflict("One");
  AddNewFile("One");
  AddNewFile("Two");
  ui_.confirm_answer = Confirmation::kRefused;

  const RunResult result = Run({"One", "Two"});

  EXPECT_EQ(result.outcomes,
            (std::vector<SetOutcome>{SetOutcome::kConfirmationRefused,
                                     SetOutcome::kNotRun}));
  EXPECT_TRUE(result.Any(SetOutcome::kConfirmationRefused));
  EXPECT_EQ(Read(B("One") + "/both.txt"), "older");
  EXPECT_FALSE(Exists(B("One") + "/new.txt"));
  EXPECT_FALSE(Exists(B("Two") + "/new.txt"));
  EXPECT_EQ(SavedLastSync("One"), "");
}

TEST_F(RunOutcomeTest, AbortAnswerToAnErrorAborts) {
  Start({"One", "Two"});
  AddNewFile("One");
  AddNewFile("Two");
  ImmutableGuard guard(B("One"));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdAbort};

  const RunResult result = Run({"One", "Two"});

  EXPECT_EQ(result.outcomes, (std::vector<SetOutcome>{SetOutcome::kAborted,
                                                      SetOutcome::kNotRun}));
  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_FALSE(Exists(B("Two") + "/new.txt"));
  EXPECT_EQ(SavedLastSync("One"), "");
}

TEST_F(RunOutcomeTest, StopWhileActionsRunCancels) {
  Start({"Docs"});
  AddNewFile("Docs", "1.txt");
  AddNewFile("Docs", "2.txt");
  Synchronizer& set = Set("Docs");
  ui_.on_events = [&set] {
    if (set.SyncMsg.rfind("Performing actions 2/", 0) == 0) set.StopFlag = true;
  };

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCancelled});
  EXPECT_TRUE(Exists(B("Docs") + "/1.txt"));
  EXPECT_FALSE(Exists(B("Docs") + "/2.txt"));
  EXPECT_EQ(SavedLastSync("Docs"), "");
}

// A long copy pumps events between its chunks; a stop then ends it at once.
TEST_F(RunOutcomeTest, StopDuringALargeCopyKeepsTheDestinationAndCancels) {
  Start({"Docs"});
  const std::string big(48 << 20, 'n');
  Put(A("Docs") + "/big.bin", big, kPastTime);
  Put(B("Docs") + "/big.bin", "the old version", kPastTime - 86400);
  Set("Docs").LastSyncDate = FileTimeToDate(kPastTime - 3600, 0);
  const FileState before = StateOf(B("Docs") + "/big.bin");
  int pumps_during_copy = 0;
  ui_.on_events = [&] {
    if (PartialFiles(B("Docs")).empty()) return;
    ++pumps_during_copy;
    program_.Run().current_set->StopFlag = true;
  };

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(pumps_during_copy, 1);
  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCancelled});
  EXPECT_EQ(StateOf(B("Docs") + "/big.bin"), before);
  EXPECT_TRUE(PartialFiles(B("Docs")).empty());
  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_EQ(SavedLastSync("Docs"), "");
}

TEST_F(RunOutcomeTest, LargeCopyKeepsTheWindowAnswering) {
  Start({"Docs"});
  Put(A("Docs") + "/big.bin", std::string(48 << 20, 'n'), kPastTime);
  using Clock = std::chrono::steady_clock;
  int pumps_during_copy = 0;
  Clock::time_point last_pump = Clock::now();
  Clock::duration longest_gap{};
  ui_.on_events = [&] {
    const Clock::time_point now = Clock::now();
    longest_gap = std::max(longest_gap, now - last_pump);
    last_pump = now;
    if (!PartialFiles(B("Docs")).empty()) ++pumps_during_copy;
  };

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCompleted});
  // The copy runs beside the window, which is pumped every 50 ms: how many
  // pumps that makes depends on the disk, but never a second without one.
  EXPECT_GE(pumps_during_copy, 1);
  EXPECT_LT(longest_gap, std::chrono::seconds(1));
  EXPECT_EQ(Read(B("Docs") + "/big.bin").size(), std::size_t{48} << 20);
}

TEST_F(RunOutcomeTest, IgnoredErrorCompletesButTheDateStays) {
  Start({"Docs"});
  // Where old copies are kept, such a folder stops the run at its start.
  Set("Docs").VersionDays = 0;
  AddNewFile("Docs");
  ImmutableGuard guard(B("Docs"));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdIgnore};

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCompleted});
  EXPECT_EQ(Set("Docs").LastSyncDate, 0);
  EXPECT_EQ(SavedLastSync("Docs"), "");
}

TEST_F(RunOutcomeTest, SimulatedRunCompletesAndWritesNothing) {
  Start({"Docs"});
  AddNewFile("Docs");
  program_.SetSimulationMode(true);
  const std::string before = Read(IniPath());

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCompleted});
  EXPECT_FALSE(Exists(B("Docs") + "/new.txt"));
  EXPECT_EQ(Read(IniPath()), before);
}

TEST_F(RunOutcomeTest, DateOfASetGoneFromTheFileIsNotSaved) {
  Start({"Docs"});
  AddNewFile("Docs");
  // Another program rewrote the file meanwhile, without the set.
  dir_.WriteFile("Pairwell.ini", "[Conflict Types]\r\n");

  const RunResult result = Run({"Docs"});

  EXPECT_EQ(result.outcomes, std::vector<SetOutcome>{SetOutcome::kCompleted});
  EXPECT_FALSE(result.dates_saved);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "The set 'Docs' is no longer in " + IniPath() +
                "; its last synchronization date was not saved.");
  EXPECT_EQ(Read(IniPath()), "[Conflict Types]\r\n");
}

TEST_F(RunOutcomeTest, OutcomesHaveWords) {
  EXPECT_STREQ(SetOutcomeName(SetOutcome::kCompleted), "completed");
  EXPECT_STREQ(SetOutcomeName(SetOutcome::kFailed), "failed");
  EXPECT_STREQ(SetOutcomeName(SetOutcome::kAborted), "aborted");
  EXPECT_STREQ(SetOutcomeName(SetOutcome::kCancelled), "cancelled");
  EXPECT_STREQ(SetOutcomeName(SetOutcome::kConfirmationRefused),
               "confirmation refused");
  EXPECT_STREQ(SetOutcomeName(SetOutcome::kNotRun), "not run");
}

}  // namespace
}  // namespace pairwell
