#include "cli/progress_text.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/line_text.h"
#include "engine/sync_progress.h"
#include "engine/transfer_rate.h"

namespace pairwell {
namespace {

SyncProgress Copying(long files_done, std::int64_t bytes_done,
                     const std::string& file) {
  SyncProgress progress;
  progress.files_total = 5;
  progress.files_done = files_done;
  progress.bytes_total = 40 << 20;
  progress.bytes_done = bytes_done;
  progress.current_file = file;
  progress.performing = true;
  return progress;
}

TEST(ProgressTextTest, ByteCountsInBinaryUnitsWithOneDecimal) {
  EXPECT_EQ(ByteCountText(0), "0 B");
  EXPECT_EQ(ByteCountText(1023), "1023 B");
  EXPECT_EQ(ByteCountText(1536), "1.5 KiB");
  EXPECT_EQ(ByteCountText(24 << 20), "24.0 MiB");
  EXPECT_EQ(ByteCountText(3LL << 30), "3.0 GiB");
  EXPECT_EQ(ByteCountText(5LL << 50), "5120.0 TiB");
}

TEST(ProgressTextTest, CountsPercentAndTheFileAtHand) {
  EXPECT_EQ(ProgressText(Copying(2, 12 << 20, "sub/name.txt"), -1, -1, 79),
            "2/5 files, 12.0 MiB/40.0 MiB (30%)  sub/name.txt");
}

TEST(ProgressTextTest, SpeedAndTimeLeftFollowTheCountsWhenKnown) {
  const SyncProgress progress = Copying(2, 12 << 20, "sub/name.txt");
  EXPECT_EQ(ProgressText(progress, 4.5 * (1 << 20), 7, 79),
            "2/5 files, 12.0 MiB/40.0 MiB (30%), 4.5 MiB/s, 0:07 left  "
            "sub/name.txt");
  // The last line of a set: the speed, nothing left.
  EXPECT_EQ(ProgressText(progress, 2048, -1, 79),
            "2/5 files, 12.0 MiB/40.0 MiB (30%), 2.0 KiB/s  sub/name.txt");
}

TEST(ProgressTextTest, PercentReachesAHundredOnlyWhenAllIsDone) {
  SyncProgress progress = Copying(4, (40 << 20) - 1, "");
  EXPECT_EQ(ProgressText(progress, -1, -1, 79), "4/5 files, 40.0 MiB/40.0 MiB (99%)");
  // Every byte written ahead, the last copy still waiting for its turn.
  progress.bytes_done = 40 << 20;
  EXPECT_EQ(ProgressText(progress, -1, -1, 79), "4/5 files, 40.0 MiB/40.0 MiB (99%)");
  // Every copy placed, what was written still on its way to the disk.
  progress.files_done = 5;
  EXPECT_EQ(ProgressText(progress, -1, -1, 79), "5/5 files, 40.0 MiB/40.0 MiB (99%)");
  progress.performing = false;
  EXPECT_EQ(ProgressText(progress, -1, -1, 79), "5/5 files, 40.0 MiB/40.0 MiB (100%)");
}

TEST(ProgressTextTest, WithoutBytesThePercentIsOfTheFiles) {
  SyncProgress progress;
  progress.files_total = 4;
  progress.files_done = 1;
  EXPECT_EQ(ProgressText(progress, -1, -1, 79), "1/4 files, 0 B/0 B (25%)");
}

TEST(ProgressTextTest, OneFileIsOneFile) {
  SyncProgress progress;
  progress.files_total = 1;
  progress.bytes_total = 5;
  EXPECT_EQ(ProgressText(progress, -1, -1, 79), "0/1 file, 0 B/5 B (0%)");
}

TEST(ProgressTextTest, LongNameIsShortenedInTheMiddleToTheColumns) {
  const std::string name = "photos/" + std::string(100, 'p') + "/holiday.jpg";
  const std::string text = ProgressText(Copying(0, 0, name), -1, -1, 60);
  EXPECT_EQ(CharCount(text), 60u) << text;
  EXPECT_EQ(text.rfind("0/5 files, 0 B/40.0 MiB (0%)  photos/", 0), 0u) << text;
  EXPECT_NE(text.find("..."), std::string::npos) << text;
  EXPECT_EQ(text.substr(text.size() - 11), "holiday.jpg") << text;
}

TEST(ProgressTextTest, NameIsLeftOutWhenTooLittleRoomIsLeft) {
  EXPECT_EQ(ProgressText(Copying(0, 0, "a-name.txt"), -1, -1, 30),
            "0/5 files, 0 B/40.0 MiB (0%)");
}

}  // namespace
}  // namespace pairwell
