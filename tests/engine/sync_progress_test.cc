// The progress record of a set's actions: its totals are what the actions
// then do, and its counts move on while they run, within a copy too.
#include "engine/sync_progress.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/recording_user_interface.h"
#include "support/run_files.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

constexpr std::int64_t kOldTime = 1600000000;
constexpr std::int64_t kNewTime = 1700000000;

// What the event pump saw of the record while the actions ran.
struct Sighting {
  long files_done;
  std::int64_t bytes_done;
  std::string current_file;
};

class SyncProgressTest : public ::testing::Test {
 protected:
  SyncProgressTest() {
    a_ = tmp_.Join("a");
    b_ = tmp_.Join("b");
    c_ = tmp_.Join("c");
    MakeFolder(a_);
    MakeFolder(b_);
    MakeFolder(c_);
    log_.SetPath(tmp_.Join("run.log"));
    log_.LogFlags = kLogNoHeader;
    log_.OpenLog();
    set_.SetLog(&log_);
    set_.SetRunState(&run_state_);
    ui_.on_events = [this] {
      const SyncProgress& progress = set_.Progress();
      if (!progress.performing) return;
      if (sightings_.empty()) first_ = progress;
      sightings_.push_back(Sighting{progress.files_done, progress.bytes_done,
                                    progress.current_file});
    };
  }

  ~SyncProgressTest() override { log_.CloseLog(); }

  // Folder a (source), then b and, with three, c (mirrors of a).
  void UseFolders(int count) {
    set_.PathAdd(a_);
    set_.PathAdd(b_);
    if (count == 3) set_.PathAdd(c_);
    for (int i = 2; i <= count; ++i) {
      set_.SetPathFlags(i, kFolderEnabled | kFolderMirrorTo);
    }
  }

  void Act(const std::string& name, std::int32_t action, std::uint16_t flags) {
    SyncFile& file = FileNamed(set_, name);
    file.Action = action;
    file.SourceIndex = 1;
    file.ActionFlags = flags;
  }

  // The copies the log says were made, and the sizes of their sources.
  void CopiesLogged(long* copies, std::int64_t* bytes) const {
    *copies = 0;
    *bytes = 0;
    std::istringstream lines(Read(tmp_.Join("run.log")));
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("Copy ", 0) != 0) continue;
      const std::string source = line.substr(line.find(" from ") + 6);
      const std::int64_t size = SizeOf(source);
      ASSERT_GE(size, 0) << source;
      ++*copies;
      *bytes += size;
    }
  }

  RecordingUserInterface ui_;
  TempDir tmp_;
  std::string a_;
  std::string b_;
  std::string c_;
  LogFile log_;
  RunState run_state_;
  Synchronizer set_;
  SyncProgress first_;
  std::vector<Sighting> sightings_;
};

TEST_F(SyncProgressTest, TotalsAreTheCopiesTheActionsThenMake) {
  // Copied to b and c.
  Put(a_ + "/new.txt", std::string(1000, 'n'), kNewTime);
  // The same everywhere: nothing to copy.
  for (const std::string& folder : {a_, b_, c_}) {
    Put(folder + "/same.txt", "same", kOldTime);
  }
  // Copied to c only: b's read-only copy is kept.
  Put(a_ + "/kept.txt", std::string(333, 'k'), kNewTime);
  Put(b_ + "/kept.txt", "old", kOldTime, 0, 0444);
  // Deleted, not copied.
  Put(a_ + "/gone.txt", "gone", kOldTime);
  Put(b_ + "/gone.txt", "gone", kOldTime);
  UseFolders(3);
  BuildSilently(set_, ui_);
  Act("new.txt", kUseNewest, kFlagCreate);
  Act("same.txt", kUseNewest, kFlagCreate);
  Act("kept.txt", kUseNewest, kFlagCreate);
  Act("gone.txt", kDeleteAll, 0);

  set_.PerformActions();

  ASSERT_FALSE(sightings_.empty());
  EXPECT_EQ(first_.files_total, 3);
  EXPECT_EQ(first_.bytes_total, 2 * 1000 + 333);
  // The totals were there before anything was done.
  EXPECT_EQ(first_.files_done, 0);
  EXPECT_EQ(first_.bytes_done, 0);
  long copies = 0;
  std::int64_t bytes = 0;
  CopiesLogged(&copies, &bytes);
  EXPECT_EQ(copies, first_.files_total);
  EXPECT_EQ(bytes, first_.bytes_total);
  const SyncProgress& last = set_.Progress();
  EXPECT_EQ(last.files_total, first_.files_total);
  EXPECT_EQ(last.bytes_total, first_.bytes_total);
  EXPECT_EQ(last.files_done, last.files_total);
  EXPECT_EQ(last.bytes_done, last.bytes_total);
  EXPECT_FALSE(last.performing);
  EXPECT_EQ(last.current_file, "");
}

TEST_F(SyncProgressTest, BytesMoveOnWithinALargeCopy) {
  constexpr std::int64_t kSize = std::int64_t{24} << 20;
  Put(a_ + "/big.bin", std::string(kSize, 'b'), kNewTime);
  Put(a_ + "/small.txt", "small", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  Act("big.bin", kUseNewest, kFlagCreate);
  Act("small.txt", kUseNewest, kFlagCreate);

  ASSERT_EQ(set_.WFile(1).RelativeName(), "big.bin");

  set_.PerformActions();

  EXPECT_EQ(first_.bytes_total, kSize + 5);
  std::vector<std::int64_t> within;
  std::int64_t previous = 0;
  for (const Sighting& seen : sightings_) {
    EXPECT_GE(seen.bytes_done, previous);
    previous = seen.bytes_done;
    if (seen.current_file != "big.bin") continue;
    EXPECT_EQ(seen.files_done, 0);
    if (seen.bytes_done > 0 && seen.bytes_done < kSize) {
      within.push_back(seen.bytes_done);
    }
  }
  EXPECT_FALSE(within.empty()) << "no count between the chunks of the copy";
  EXPECT_EQ(set_.Progress().bytes_done, kSize + 5);
  EXPECT_EQ(set_.Progress().files_done, 2);
}

TEST_F(SyncProgressTest, FailedCopyCountsAsDealtWith) {
  Put(a_ + "/vanishing.txt", std::string(700, 'v'), kNewTime);
  Put(a_ + "/staying.txt", std::string(50, 's'), kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  Act("vanishing.txt", kUseNewest, kFlagCreate);
  Act("staying.txt", kUseNewest, kFlagCreate);
  ASSERT_TRUE(RemoveFile(a_ + "/vanishing.txt"));
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(set_.IgnoredErrors(), 1);
  EXPECT_EQ(set_.Progress().files_done, 2);
  EXPECT_EQ(set_.Progress().bytes_done, 750);
  EXPECT_EQ(set_.Progress().bytes_total, 750);
}

TEST_F(SyncProgressTest, StopLeavesTheCountsShort) {
  Put(a_ + "/one.txt", "1", kNewTime);
  Put(a_ + "/two.txt", "22", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  Act("one.txt", kUseNewest, kFlagCreate);
  Act("two.txt", kUseNewest, kFlagCreate);
  ui_.on_events = [this] { set_.StopFlag = true; };

  set_.PerformActions();

  EXPECT_EQ(set_.Progress().files_total, 2);
  EXPECT_EQ(set_.Progress().files_done, 0);
  EXPECT_EQ(set_.Progress().bytes_done, 0);
  EXPECT_FALSE(set_.Progress().performing);
}

TEST_F(SyncProgressTest, AFileOverTwoGiBCountsWithItsWholeSize) {
  constexpr std::int64_t kHuge = std::int64_t{3} << 30;
  Put(a_ + "/huge.bin", "", kNewTime);
  // Sparse: no disk space, and only logged in simulation mode.
  ASSERT_TRUE(SetSize(a_ + "/huge.bin", kHuge));
  run_state_.simulation_mode = true;
  UseFolders(2);
  BuildSilently(set_, ui_);
  ASSERT_EQ(FileNamed(set_, "huge.bin").Copy(1).size, kSizeCap);
  Act("huge.bin", kUseNewest, kFlagCreate);

  set_.PerformActions();

  EXPECT_EQ(first_.bytes_total, kHuge);
  EXPECT_EQ(set_.Progress().bytes_done, kHuge);
  EXPECT_FALSE(Exists(b_ + "/huge.bin"));
}

}  // namespace
}  // namespace pairwell
