#include "util/win32/file_time.h"

#include "util/calendar.h"
#include "util/date_time.h"

namespace pairwell {

std::int64_t TicksOf(const FILETIME& time) {
  return static_cast<std::int64_t>(
      (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) |
      time.dwLowDateTime);
}

FILETIME FileTimeOfTicks(std::int64_t ticks) {
  const auto bits = static_cast<std::uint64_t>(ticks);
  FILETIME time;
  time.dwLowDateTime = static_cast<DWORD>(bits & 0xFFFFFFFFu);
  time.dwHighDateTime = static_cast<DWORD>(bits >> 32);
  return time;
}

void PosixFromFileTime(const FILETIME& time, std::int64_t* seconds,
                       long* nanoseconds) {
  const std::int64_t ticks = TicksOf(time);
  *seconds = FloorDiv(ticks, kTicksPerSecond) - kFileTimeEpochSeconds;
  *nanoseconds = static_cast<long>(
      (ticks - FloorDiv(ticks, kTicksPerSecond) * kTicksPerSecond) * 100);
}

bool FileTimeFromPosix(std::int64_t seconds, long nanoseconds, FILETIME* time) {
  const std::int64_t since_1601 = seconds + kFileTimeEpochSeconds;
  // Past about the year 30000 the ticks would overflow.
  if (since_1601 < 0 || since_1601 > INT64_MAX / kTicksPerSecond - 1) {
    return false;
  }
  *time = FileTimeOfTicks(since_1601 * kTicksPerSecond + nanoseconds / 100);
  return true;
}

double DateOfFileTime(const FILETIME& time) {
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  PosixFromFileTime(time, &seconds, &nanoseconds);
  return FileTimeToDate(seconds, nanoseconds);
}

}  // namespace pairwell
