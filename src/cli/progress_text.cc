#include "cli/progress_text.h"

#include "cli/line_text.h"
#include "engine/sync_progress.h"
#include "engine/transfer_rate.h"

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

std::string ProgressText(const SyncProgress& progress, double speed,
                         double seconds_left, std::size_t columns) {
  std::string text = std::to_string(progress.files_done) + "/" +
                     std::to_string(progress.files_total) + " files, " +
                     ByteCountText(progress.bytes_done) + "/" +
                     ByteCountText(progress.bytes_total) + " (" +
                     std::to_string(ProgressPercent(progress)) + "%)";
  if (speed >= 0) text += ", " + SpeedText(speed);
  if (seconds_left >= 0) text += ", " + TimeLeftText(seconds_left);
  const std::size_t used = CharCount(text) + sizeof kNameGap - 1;
  if (progress.current_file.empty() || used + kShortestName > columns) {
    return text;
  }
  return text + kNameGap + ShortenMiddle(progress.current_file, columns - used);
}

}  // namespace pairwell
