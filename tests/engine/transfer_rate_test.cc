#include "engine/transfer_rate.h"

#include <gtest/gtest.h>

namespace pairwell {
namespace {

constexpr std::int64_t kMiB = 1 << 20;

TEST(TransferRateTest, UnknownUntilASecondHasBeenSeen) {
  TransferRate rate;
  EXPECT_LT(rate.BytesPerSecond(), 0);
  rate.Add(0, 1000);
  rate.Add(5 * kMiB, 1500);
  EXPECT_LT(rate.BytesPerSecond(), 0);
  EXPECT_LT(rate.SecondsLeft(kMiB), 0);
  rate.Add(10 * kMiB, 2000);
  EXPECT_DOUBLE_EQ(rate.BytesPerSecond(), 10.0 * kMiB);
}

TEST(TransferRateTest, SteadyCopyGivesItsSpeedAndTheTimeLeft) {
  TransferRate rate;
  for (int t = 0; t <= 20; ++t) rate.Add(t * 4 * kMiB, 5000 + t * 250);
  EXPECT_DOUBLE_EQ(rate.BytesPerSecond(), 16.0 * kMiB);
  EXPECT_DOUBLE_EQ(rate.SecondsLeft(32 * kMiB), 2.0);
  EXPECT_DOUBLE_EQ(rate.SecondsLeft(0), 0.0);
}

TEST(TransferRateTest, OnlyTheLastSecondsCount) {
  TransferRate rate;
  // 1 MiB/s for a minute, then 8 MiB/s for ten seconds.
  std::int64_t bytes = 0;
  std::uint64_t tick = 0;
  for (int s = 0; s < 60; ++s) rate.Add(bytes += kMiB, tick += 1000);
  for (int s = 0; s < 10; ++s) rate.Add(bytes += 8 * kMiB, tick += 1000);
  EXPECT_DOUBLE_EQ(rate.BytesPerSecond(), 8.0 * kMiB);
}

TEST(TransferRateTest, APauseSlowsItWithoutStoppingIt) {
  TransferRate rate;
  rate.Add(0, 0);
  rate.Add(8 * kMiB, 2000);
  rate.Add(8 * kMiB, 4000);  // the disk catches up: nothing moved
  EXPECT_DOUBLE_EQ(rate.BytesPerSecond(), 2.0 * kMiB);
  EXPECT_DOUBLE_EQ(rate.SecondsLeft(4 * kMiB), 2.0);
}

TEST(TransferRateTest, FewerBytesThanBeforeStartOver) {
  TransferRate rate;
  rate.Add(0, 0);
  rate.Add(10 * kMiB, 2000);
  rate.Add(0, 3000);  // the next set's actions
  EXPECT_LT(rate.BytesPerSecond(), 0);
}

TEST(TransferRateTest, ManyQuickSamplesKeepTheMemoryBounded) {
  TransferRate rate;
  for (std::uint64_t t = 0; t < 600000; t += 5) rate.Add(t * 100, t);
  EXPECT_DOUBLE_EQ(rate.BytesPerSecond(), 100000.0);
}

TEST(TransferRateTest, TextsForPeople) {
  EXPECT_EQ(SpeedText(-1), "");
  EXPECT_EQ(SpeedText(45.2 * kMiB), "45.2 MiB/s");
  EXPECT_EQ(TimeLeftText(-1), "");
  EXPECT_EQ(TimeLeftText(4.2), "0:05 left");
  EXPECT_EQ(TimeLeftText(760), "12:40 left");
  EXPECT_EQ(TimeLeftText(3723), "1:02:03 left");
  EXPECT_EQ(ByteCountText(1536), "1.5 KiB");
}

}  // namespace
}  // namespace pairwell
