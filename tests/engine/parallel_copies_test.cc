// Copies written ahead on worker threads: the log, the questions, a stop and
// the temporary files are what a run one copy at a time would give, on
// real folders.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_file.h"
#include "engine/sync_progress.h"
#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/immutable_guard.h"
#include "support/recording_user_interface.h"
#include "support/run_files.h"
#include "support/temp_dir.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

constexpr std::int64_t kOldTime = 1600000000;
constexpr std::int64_t kNewTime = 1700000000;

// Files of the run, in list order: "d0/f000" .. in folders of 20, every
// seventh replacing an older copy, the rest created. The folder "locked"
// sorts after the first half.
constexpr int kFiles = 120;
constexpr int kPerFolder = 20;

std::string FileName(int k) {
  std::ostringstream name;
  name << "d" << k / kPerFolder << "/f" << (k < 100 ? "0" : "")
       << (k < 10 ? "0" : "") << k << ".txt";
  return name.str();
}

std::string Content(int k) { return "new content of file " + FileName(k); }

// The log without its empty lines and the dated lines that differ per run.
std::string Undated(const std::string& log) {
  static const std::regex dated(
      "(Synchronize started|Sync actions (completed|stopped)).*\n|^\n");
  return std::regex_replace(log, dated, "");
}

class ParallelCopiesTest : public ::testing::TestWithParam<int> {
 protected:
  ParallelCopiesTest() {
    a_ = tmp_.Join("a");
    b_ = tmp_.Join("b");
    MakeFolder(a_);
    MakeFolder(b_);
    log_.SetPath(tmp_.Join("run.log"));
    log_.LogFlags = kLogNoHeader;
    log_.OpenLog();
    set_.Name = "Docs";
    set_.SetLog(&log_);
    set_.SetRunState(&run_state_);
    // The operations themselves, with deletions and replacements final:
    // keeping the old copies has tests of its own.
    set_.VersionDays = 0;
    set_.SetCopyThreads(GetParam());
  }
  ~ParallelCopiesTest() override { log_.CloseLog(); }

  // kFiles files in a, each copied over b (created or replacing), and one
  // copy in b that a no longer has, deleted in its turn.
  void MakeRun() {
    for (int folder = 0; folder * kPerFolder < kFiles; ++folder) {
      MakeFolder(a_ + "/d" + std::to_string(folder));
      if (!Exists(b_ + "/d" + std::to_string(folder))) {
        MakeFolder(b_ + "/d" + std::to_string(folder));
      }
    }
    for (int k = 0; k < kFiles; ++k) {
      Put(a_ + "/" + FileName(k), Content(k), kNewTime);
      if (k % 7 == 0) Put(b_ + "/" + FileName(k), "old", kOldTime);
    }
    Put(b_ + "/d1/gone.txt", "deleted from a", kOldTime);
    set_.PathAdd(a_);
    set_.PathAdd(b_);
    set_.SetPathFlags(2, kFolderEnabled | kFolderMirrorTo);
    BuildSilently(set_, ui_);
    ASSERT_EQ(set_.WFileCount(), kFiles + 1);
    for (long i = 1; i <= set_.WFileCount(); ++i) {
      SyncFile& file = set_.WFile(i);
      if (file.RelativeName() == "d1/gone.txt") {
        file.Action = kDeleteAll;
        file.ActionFlags = 0;
      } else {
        file.Action = kUseNewest;
        file.SourceIndex = 1;
        file.ActionFlags = kFlagCreate;
      }
    }
  }

  // Whether b holds file k as a, whole.
  bool Copied(int k) const {
    return Exists(b_ + "/" + FileName(k)) &&
           Read(b_ + "/" + FileName(k)) == Content(k);
  }

  std::vector<std::string> PartialFilesOfB() const {
    std::vector<std::string> found;
    for (int folder = 0; folder * kPerFolder < kFiles; ++folder) {
      for (const std::string& name :
           PartialFiles(b_ + "/d" + std::to_string(folder))) {
        found.push_back(name);
      }
    }
    return found;
  }

  std::string LogText() const { return Read(tmp_.Join("run.log")); }

  RecordingUserInterface ui_;
  TempDir tmp_;
  std::string a_;
  std::string b_;
  LogFile log_;
  RunState run_state_;
  Synchronizer set_;
};

TEST_P(ParallelCopiesTest, EveryCopyIsMadeAndLoggedInListOrder) {
  MakeRun();

  set_.PerformActions();

  for (int k = 0; k < kFiles; ++k) EXPECT_TRUE(Copied(k)) << FileName(k);
  EXPECT_FALSE(Exists(b_ + "/d1/gone.txt"));
  EXPECT_TRUE(PartialFilesOfB().empty());
  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  // One line per operation in the list's order, as one copy at a time.
  std::string expected;
  for (long i = 1; i <= set_.WFileCount(); ++i) {
    const std::string rel = set_.WFile(i).RelativeName();
    if (rel == "d1/gone.txt") {
      expected += "Deleting " + b_ + "/" + rel + "\n";
    } else {
      expected += "Copy " + b_ + "/" + rel + " from " + a_ + "/" + rel + "\n";
    }
  }
  EXPECT_EQ(Undated(LogText()), expected);
  EXPECT_NE(LogText().find("Sync actions completed - "), std::string::npos);
}

// While the first file's turn is on, the workers are already writing the
// next files beside their destinations; none of them is in place before its
// turn.
TEST_P(ParallelCopiesTest, LaterCopiesAreWrittenAheadButPlacedInTurn) {
  MakeRun();
  std::size_t most_ahead = 0;
  bool placed_early = false;
  ui_.on_events = [&] {
    most_ahead = std::max(most_ahead, PartialFilesOfB().size());
    const long at = set_.CurrentAction();
    for (long i = at + 1; i <= set_.WFileCount(); ++i) {
      const std::string rel = set_.WFile(i).RelativeName();
      if (Exists(b_ + "/" + rel) && Read(b_ + "/" + rel) != "old" &&
          rel != "d1/gone.txt") {
        placed_early = true;
      }
    }
  };

  set_.PerformActions();

  EXPECT_GT(most_ahead, 1u);
  EXPECT_FALSE(placed_early);
  EXPECT_TRUE(PartialFilesOfB().empty());
}

TEST_P(ParallelCopiesTest, StopKeepsTheCopiesWhoseTurnCameAndNoOther) {
  MakeRun();
  constexpr long kStopAt = 60;
  ui_.on_events = [&] {
    if (set_.CurrentAction() == kStopAt) set_.StopFlag = true;
  };

  set_.PerformActions();

  for (long i = 1; i <= set_.WFileCount(); ++i) {
    const std::string rel = set_.WFile(i).RelativeName();
    if (rel == "d1/gone.txt") continue;
    const std::string copy = b_ + "/" + rel;
    if (i < kStopAt) {
      EXPECT_EQ(Read(copy), Read(a_ + "/" + rel)) << rel;
    } else {
      EXPECT_TRUE(!Exists(copy) || Read(copy) == "old") << rel;
    }
  }
  EXPECT_TRUE(PartialFilesOfB().empty());
  EXPECT_NE(LogText().find("Sync actions stopped - "), std::string::npos);
  EXPECT_EQ(LogText().find("Sync actions completed"), std::string::npos);
}

// A folder that refuses the copy in the middle of the run: d3 is made
// immutable, so its files fail when their turn comes, and only then.
class FailingFolderTest : public ParallelCopiesTest {
 protected:
  void LockFolder() { guard_.emplace(b_ + "/d3"); }
  int FirstLockedFile() const { return 3 * kPerFolder; }
  std::string LockedPrompt(int k) const {
    return "Unable to perform the copy operation:\n\n" + a_ + "/" +
           FileName(k) + " -> " + b_ + "/" + FileName(k);
  }
  std::optional<ImmutableGuard> guard_;
};

TEST_P(FailingFolderTest, IgnoreSkipsEachFailedCopyInItsTurnAndGoesOn) {
  MakeRun();
  LockFolder();
  if (!guard_->active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers.assign(kPerFolder, kIdIgnore);

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), std::size_t{kPerFolder});
  for (int n = 0; n < kPerFolder; ++n) {
    EXPECT_EQ(ui_.messages[n].text.rfind(LockedPrompt(FirstLockedFile() + n), 0),
              0u)
        << ui_.messages[n].text;
  }
  for (int k = 0; k < kFiles; ++k) {
    if (k / kPerFolder != 3) {
      EXPECT_TRUE(Copied(k)) << FileName(k);
    }
  }
  EXPECT_EQ(set_.IgnoredErrors(), kPerFolder);
  EXPECT_FALSE(set_.StopFlag);
  guard_.reset();
  EXPECT_TRUE(PartialFilesOfB().empty());
}

TEST_P(FailingFolderTest, AbortKeepsWhatCameBeforeAndStartsNothingAfter) {
  MakeRun();
  LockFolder();
  if (!guard_->active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdAbort};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text.rfind(LockedPrompt(FirstLockedFile()), 0), 0u);
  for (int k = 0; k < kFiles; ++k) {
    if (k < FirstLockedFile()) {
      EXPECT_TRUE(Copied(k)) << FileName(k);
    } else {
      EXPECT_FALSE(Copied(k)) << FileName(k);
    }
  }
  // The deletion, last in the list, never had its turn.
  EXPECT_TRUE(Exists(b_ + "/d1/gone.txt"));
  EXPECT_TRUE(set_.Aborted());
  guard_.reset();
  EXPECT_TRUE(PartialFilesOfB().empty());
  EXPECT_NE(LogText().find("Sync actions stopped - "), std::string::npos);
}

TEST_P(FailingFolderTest, RetryAfterTheCauseIsGoneFinishesEveryCopy) {
  MakeRun();
  LockFolder();
  if (!guard_->active()) GTEST_SKIP() << "no immutable folder here";
  ui_.on_message = [this](const std::string&) { guard_.reset(); };
  ui_.answers = {kIdRetry};

  set_.PerformActions();

  EXPECT_EQ(ui_.messages.size(), 1u);
  for (int k = 0; k < kFiles; ++k) EXPECT_TRUE(Copied(k)) << FileName(k);
  EXPECT_EQ(set_.IgnoredErrors(), 0);
  EXPECT_TRUE(PartialFilesOfB().empty());
}

// The deletion, last in the list, fails and is answered abort: every copy
// before it stays, though the last of them were still waiting to be put in
// place when the question came.
TEST_P(FailingFolderTest, AbortOnADeletionKeepsEveryCopyBeforeIt) {
  MakeRun();
  guard_.emplace(b_ + "/d1");
  if (!guard_->active()) GTEST_SKIP() << "no immutable folder here";
  // d1's own copies fail too; they are ignored, the deletion aborts.
  ui_.answers.assign(kPerFolder, kIdIgnore);
  ui_.answers.push_back(kIdAbort);

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), std::size_t{kPerFolder + 1});
  EXPECT_EQ(ui_.messages.back().text.rfind(
                "Unable to delete the following file:\n\n" + b_ +
                    "/d1/gone.txt",
                0),
            0u);
  EXPECT_TRUE(set_.Aborted());
  for (int k = 0; k < kFiles; ++k) {
    if (k / kPerFolder != 1) {
      EXPECT_TRUE(Copied(k)) << FileName(k);
    }
  }
  guard_.reset();
  EXPECT_TRUE(Exists(b_ + "/d1/gone.txt"));
  EXPECT_TRUE(PartialFilesOfB().empty());
}

TEST_P(FailingFolderTest, QuietModeLogsTheFirstFailureAndAborts) {
  MakeRun();
  LockFolder();
  if (!guard_->active()) GTEST_SKIP() << "no immutable folder here";
  set_.QuietMode = true;

  set_.PerformActions();

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_NE(LogText().find(LockedPrompt(FirstLockedFile())), std::string::npos);
  EXPECT_TRUE(set_.Aborted());
  for (int k = FirstLockedFile(); k < kFiles; ++k) {
    EXPECT_FALSE(Copied(k)) << FileName(k);
  }
  guard_.reset();
  EXPECT_TRUE(PartialFilesOfB().empty());
}

// The byte counts move on as the workers write, never back, never past the
// totals, and reach them at the end.
TEST_P(ParallelCopiesTest, ProgressCountsBytesUpToTheTotals) {
  MakeRun();
  std::int64_t last = 0;
  bool went_back = false;
  bool past_total = false;
  ui_.on_events = [&] {
    const SyncProgress& progress = set_.Progress();
    if (progress.bytes_done < last) went_back = true;
    if (progress.bytes_done > progress.bytes_total) past_total = true;
    if (progress.current_bytes_done > progress.current_bytes_total) {
      past_total = true;
    }
    last = progress.bytes_done;
  };

  set_.PerformActions();

  const SyncProgress& progress = set_.Progress();
  std::int64_t bytes = 0;
  for (int k = 0; k < kFiles; ++k) bytes += Content(k).size();
  EXPECT_EQ(progress.files_total, kFiles);
  EXPECT_EQ(progress.files_done, kFiles);
  EXPECT_EQ(progress.bytes_total, bytes);
  EXPECT_EQ(progress.bytes_done, bytes);
  EXPECT_FALSE(went_back);
  EXPECT_FALSE(past_total);
}

INSTANTIATE_TEST_SUITE_P(Threads, ParallelCopiesTest, ::testing::Values(1, 2, 8),
                         [](const auto& info) {
                           return std::to_string(info.param) + "Threads";
                         });
INSTANTIATE_TEST_SUITE_P(Threads, FailingFolderTest, ::testing::Values(1, 4),
                         [](const auto& info) {
                           return std::to_string(info.param) + "Threads";
                         });

}  // namespace
}  // namespace pairwell
