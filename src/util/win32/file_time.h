// Windows file times (100 ns since 1601-01-01 UTC) and POSIX times.
#ifndef PAIRWELL_UTIL_WIN32_FILE_TIME_H_
#define PAIRWELL_UTIL_WIN32_FILE_TIME_H_

#include <cstdint>

#include "util/win32/win32_api.h"

namespace pairwell {

// Seconds from 1601-01-01 to 1970-01-01.
constexpr std::int64_t kFileTimeEpochSeconds = 11644473600;
constexpr std::int64_t kTicksPerSecond = 10000000;

std::int64_t TicksOf(const FILETIME& time);
FILETIME FileTimeOfTicks(std::int64_t ticks);

// The POSIX time of a file time.
void PosixFromFileTime(const FILETIME& time, std::int64_t* seconds,
                       long* nanoseconds);

// The file time of a POSIX time; false before 1601, which it cannot hold.
bool FileTimeFromPosix(std::int64_t seconds, long nanoseconds, FILETIME* time);

// The local day count of a file time (FileTimeToDate).
double DateOfFileTime(const FILETIME& time);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_WIN32_FILE_TIME_H_
