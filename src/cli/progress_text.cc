#include "cli/progress_text.h"

#include "cli/line_text.h"
#include "engine/sync_progress.h"
#include "engine/transfer_rate.h"
#include "util/text.h"

namespace pairwell {

namespace {

// Room a name needs to be worth showing.
constexpr std::size_t kShortestName = 8;
constexpr char kNameGap[] = "  ";

}  // namespace

std::string ProgressText(const SyncProgress& progress, double speed,
                         double seconds_left, std::size_t columns) {
  std::string text = std::to_string(progress.files_done) + "/" +
                     CountText(progress.files_total, "file", "files") + ", " +
                     ByteCountText(progress.bytes_done) + "/" +
                     ByteCountText(progress.bytes_total) + " (" +
                     std::to_string(progress.PartsDone(100)) + "%)";
  if (speed >= 0) text += ", " + SpeedText(speed);
  if (seconds_left >= 0) text += ", " + TimeLeftText(seconds_left);
  const std::size_t used = CharCount(text) + sizeof kNameGap - 1;
  if (progress.current_file.empty() || used + kShortestName > columns) {
    return text;
  }
  return text + kNameGap + ShortenMiddle(progress.current_file, columns - used);
}

}  // namespace pairwell
