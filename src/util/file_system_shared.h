// What the portable part of the file-system routines shares with each
// system's own part (posix/file_system.cc, win32/file_system.cc). The layers
// above util use file_system.h alone.
#ifndef PAIRWELL_UTIL_FILE_SYSTEM_SHARED_H_
#define PAIRWELL_UTIL_FILE_SYSTEM_SHARED_H_

#include <chrono>
#include <cstdint>
#include <string>

namespace pairwell {

// Creates one folder whose parent exists. True when the folder exists
// afterwards (made now, or already there); else false with errno set to the
// reason. A file in its place is ENOTDIR.
bool CreateFolderLevel(const std::string& folder);

// A copy hands control back to its caller between chunks. A chunk is sized
// to take at most about kSlowChunk, so that a window driven from the same
// thread stays responsive on a slow disk, and large enough that the calls
// between chunks cost nothing measurable on a fast one.
constexpr std::int64_t kMaxChunk = std::int64_t{8} << 20;
constexpr std::int64_t kMinChunk = std::int64_t{256} << 10;
// Every copy starts small and doubles while chunks are quick: on a slow disk
// even the first chunk hands control back soon, and on a fast one the size
// reaches kMaxChunk after three chunks.
constexpr std::int64_t kFirstChunk = std::int64_t{1} << 20;
// Chunk sizes stay whole multiples of this, so that a file system that
// shares blocks between copies (a reflink) can still share every one.
constexpr std::int64_t kChunkGrain = std::int64_t{64} << 10;
constexpr std::chrono::steady_clock::duration kSlowChunk =
    std::chrono::milliseconds(50);

// Sets *size for the next chunk after one of `bytes` took `took`: a slow
// chunk scales it down to what this pace moves in half of kSlowChunk; a
// full chunk in under half of it doubles it.
void AdjustChunkSize(std::int64_t bytes,
                     std::chrono::steady_clock::duration took,
                     std::int64_t* size);

// Opens the file with the desktop's opener (xdg-open, the shell): a number
// above 32 on success, else the shell's error code (1..32).
int OpenWithDesktop(const std::string& file_name);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_FILE_SYSTEM_SHARED_H_
