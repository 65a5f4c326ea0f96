// How far a set's actions have come, for a front end to read from the event
// pump while they run. PerformActions sets the totals from what the actions
// need before the first of them, then moves the counts on as it goes: a
// copy's bytes chunk by chunk. A copy that fails, is skipped or is only
// logged (simulation) counts as done with all its bytes, so that the counts
// reach the totals once every action has been dealt with; a stop leaves
// them short.
#ifndef PAIRWELL_ENGINE_SYNC_PROGRESS_H_
#define PAIRWELL_ENGINE_SYNC_PROGRESS_H_

#include <algorithm>
#include <cstdint>
#include <string>

namespace pairwell {

struct SyncProgress {
  // Copy operations: one per destination folder a file is copied to.
  long files_total = 0;
  long files_done = 0;
  // The sizes of those copies' sources.
  std::int64_t bytes_total = 0;
  std::int64_t bytes_done = 0;
  // The relative name of the file whose action runs now; "" outside them.
  std::string current_file;
  // That file's own copy: bytes written of its source's size (0 of 0 when
  // it copies nothing). With copies made ahead on other threads, the bytes
  // above run ahead of the file at hand; these are the file's own.
  std::int64_t current_bytes_done = 0;
  std::int64_t current_bytes_total = 0;
  // From the totals until the last action has been dealt with.
  bool performing = false;

  // How much is done, in `parts` parts: by bytes where there are any to
  // copy, else by copies. Bytes written ahead reach their total while copies
  // still wait for their turn, and the last copy placed still has to reach
  // the disk: the count is whole only once the actions are over.
  std::int64_t PartsDone(std::int64_t parts) const {
    std::int64_t done = parts;
    if (bytes_total > 0) {
      done = std::clamp<std::int64_t>(bytes_done, 0, bytes_total) * parts /
             bytes_total;
    } else if (files_total > 0) {
      done = std::clamp<std::int64_t>(files_done, 0, files_total) * parts /
             files_total;
    }
    if (performing) done = std::min(done, parts - 1);
    return done;
  }
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_SYNC_PROGRESS_H_
