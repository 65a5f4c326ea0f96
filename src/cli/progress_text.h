// The console's line for a set's actions: how much of the copying is done,
// how fast, and the file at hand.
#ifndef PAIRWELL_CLI_PROGRESS_TEXT_H_
#define PAIRWELL_CLI_PROGRESS_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace pairwell {

struct SyncProgress;

// "2/5 files, 12.0 MiB/40.0 MiB (30%), 4.1 MiB/s, 0:07 left  sub/name.txt"
// in at most `columns` characters, the file's name shortened in the middle
// (left out where too little room is left). The percentage is of the bytes
// (of the files when there are none), never 100 before all are done. The
// speed (bytes per second) and the seconds left are left out while they
// are negative (unknown).
std::string ProgressText(const SyncProgress& progress, double speed,
                         double seconds_left, std::size_t columns);

}  // namespace pairwell

#endif  // PAIRWELL_CLI_PROGRESS_TEXT_H_
