#include "cli/progress_text.h"

#include <cstdio>

#include "cli/line_text.h"
#include "engine/sync_progress.h"

namespace pairwell {

namespace {

// Room a name needs to be worth showing.
constexpr std::size_t kShortestName = 8;
constexpr char kNameGap[] = "  ";

int Percent(std::int64_t done, std::int64_t total) {
  if (total <= 0) return 100;
  if (done >= total) return 100;
  return static_cast<int>(done * 100 / total);
}

int ProgressPercent(const SyncProgress& progress) {
  if (progress.bytes_total > 0) {
    return Percent(progress.bytes_done, progress.bytes_total);
  }
  return Percent(progress.files_done, progress.files_total);
}

}  // namespace

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

std::string ProgressText(const SyncProgress& progress, std::size_t columns) {
  std::string text = std::to_string(progress.files_done) + "/" +
                     std::to_string(progress.files_total) + " files, " +
                     ByteCountText(progress.bytes_done) + "/" +
                     ByteCountText(progress.bytes_total) + " (" +
                     std::to_string(ProgressPercent(progress)) + "%)";
  const std::size_t used = CharCount(text) + sizeof kNameGap - 1;
  if (progress.current_file.empty() || used + kShortestName > columns) {
    return text;
  }
  return text + kNameGap + ShortenMiddle(progress.current_file, columns - used);
}

}  // namespace pairwell
