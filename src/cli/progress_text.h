// The console's line for a set's actions: how much of the copying is done,
// and the file at hand.
#ifndef PAIRWELL_CLI_PROGRESS_TEXT_H_
#define PAIRWELL_CLI_PROGRESS_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace pairwell {

struct SyncProgress;

// A byte count for people: "512 B", then one decimal in KiB, MiB, GiB or
// TiB ("1.5 KiB", "24.0 MiB").
std::string ByteCountText(std::int64_t bytes);

// "2/5 files, 12.0 MiB/40.0 MiB (30%)  sub/name.txt" in at most `columns`
// characters, the file's name shortened in the middle (left out where too
// little room is left). The percentage is of the bytes (of the files when
// there are none), never 100 before all are done.
std::string ProgressText(const SyncProgress& progress, std::size_t columns);

}  // namespace pairwell

#endif  // PAIRWELL_CLI_PROGRESS_TEXT_H_
