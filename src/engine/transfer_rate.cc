#include "engine/transfer_rate.h"

#include <cmath>
#include <cstdio>

namespace pairwell {

namespace {

// Samples closer than this replace the last one: a pump every few
// milliseconds must not fill the window.
constexpr std::uint64_t kSampleMs = 200;

}  // namespace

void TransferRate::Add(std::int64_t bytes, std::uint64_t tick_ms) {
  if (!samples_.empty() && (bytes < samples_.back().bytes ||
                            tick_ms < samples_.back().tick_ms)) {
    samples_.clear();
  }
  if (samples_.size() >= 2 &&
      tick_ms - samples_[samples_.size() - 2].tick_ms < kSampleMs) {
    samples_.back() = Sample{bytes, tick_ms};
  } else {
    samples_.push_back(Sample{bytes, tick_ms});
  }
  // The oldest sample kept is the last one at or before the window's start.
  while (samples_.size() > 2 && tick_ms - samples_[1].tick_ms >= kWindowMs) {
    samples_.pop_front();
  }
}

double TransferRate::BytesPerSecond() const {
  if (samples_.size() < 2) return -1;
  const Sample& first = samples_.front();
  const Sample& last = samples_.back();
  const std::uint64_t span = last.tick_ms - first.tick_ms;
  if (span < kShortestMs) return -1;
  return static_cast<double>(last.bytes - first.bytes) * 1000.0 /
         static_cast<double>(span);
}

double TransferRate::SecondsLeft(std::int64_t bytes_left) const {
  const double speed = BytesPerSecond();
  if (speed <= 0) return -1;
  if (bytes_left <= 0) return 0;
  return static_cast<double>(bytes_left) / speed;
}

std::string ByteCountText(std::int64_t bytes) {
  if (bytes < 1024) return std::to_string(bytes) + " B";
  static const char* const kUnits[] = {"KiB", "MiB", "GiB", "TiB"};
  double value = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  for (; value >= 1024 && unit + 1 < sizeof kUnits / sizeof kUnits[0]; ++unit) {
    value /= 1024;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %s", value, kUnits[unit]);
  return text;
}

std::string SpeedText(double bytes_per_second) {
  if (bytes_per_second < 0) return "";
  return ByteCountText(std::llround(bytes_per_second)) + "/s";
}

std::string TimeLeftText(double seconds) {
  if (seconds < 0) return "";
  const long long whole = std::llround(std::ceil(seconds));
  const long long hours = whole / 3600;
  const long long minutes = whole / 60 % 60;
  const long long rest = whole % 60;
  char text[48];
  if (hours > 0) {
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld left", hours, minutes,
                  rest);
  } else {
    std::snprintf(text, sizeof text, "%lld:%02lld left", minutes, rest);
  }
  return text;
}

}  // namespace pairwell
