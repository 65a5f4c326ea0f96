#include "util/date_time.h"

#include <cstdint>
#include <string>

#include "util/calendar.h"
#include "util/win32/file_time.h"

// Local dates convert as Windows' own calls do: FileTimeToLocalFileTime and
// LocalFileTimeToFileTime apply the offset in force now (daylight saving
// included) to every time, whatever its season. That is kept, rather than
// the offset in force at each time, because it is what Windows programs
// show and because it converts back and forth exactly: no local time is
// skipped or repeated, and a file's date and the last sync date (kept as its
// moment) move together when daylight saving starts or ends, so comparing
// them between two runs still holds.

namespace pairwell {

namespace {

// Local time less UTC, in seconds, as FileTimeToLocalFileTime applies it.
std::int64_t LocalBiasSeconds() {
  FILETIME utc;
  GetSystemTimeAsFileTime(&utc);
  FILETIME local;
  if (!FileTimeToLocalFileTime(&utc, &local)) return 0;
  // The bias is whole minutes; both times are far from 0, so no rounding
  // crosses a second.
  return (TicksOf(local) - TicksOf(utc)) / kTicksPerSecond;
}

// The UTC seconds of local seconds since 1970, through
// LocalFileTimeToFileTime where a file time holds them.
std::int64_t UtcOfLocalSeconds(std::int64_t local_seconds) {
  FILETIME local;
  FILETIME utc;
  if (FileTimeFromPosix(local_seconds, 0, &local) &&
      LocalFileTimeToFileTime(&local, &utc)) {
    std::int64_t seconds = 0;
    long nanoseconds = 0;
    PosixFromFileTime(utc, &seconds, &nanoseconds);
    return seconds;
  }
  return local_seconds - LocalBiasSeconds();
}

// The local seconds since 1970 of UTC seconds, through
// FileTimeToLocalFileTime where a file time holds them.
std::int64_t LocalOfUtcSeconds(std::int64_t seconds) {
  FILETIME utc;
  FILETIME local;
  if (FileTimeFromPosix(seconds, 0, &utc) &&
      FileTimeToLocalFileTime(&utc, &local)) {
    std::int64_t local_seconds = 0;
    long nanoseconds = 0;
    PosixFromFileTime(local, &local_seconds, &nanoseconds);
    return local_seconds;
  }
  return seconds + LocalBiasSeconds();
}

}  // namespace

double FileTimeToDate(std::int64_t seconds, long nanoseconds) {
  DateParts parts = PartsFromLocalSeconds(LocalOfUtcSeconds(seconds));
  parts.millisecond = static_cast<int>(nanoseconds / 1000000);
  return DateFromParts(parts);
}

void DateToFileTime(double date, std::int64_t* seconds, long* nanoseconds) {
  const DateParts parts = PartsFromDate(date);
  const std::int64_t local_seconds =
      DaysFromCivil(parts.year, static_cast<unsigned>(parts.month),
                    static_cast<unsigned>(parts.day)) *
          kSecondsPerDay +
      parts.hour * 3600 + parts.minute * 60 + parts.second;
  *seconds = UtcOfLocalSeconds(local_seconds);
  *nanoseconds = parts.millisecond * 1000000L;
}

Moment NowMoment() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  Moment moment;
  PosixFromFileTime(now, &moment.seconds, &moment.nanoseconds);
  return moment;
}

std::string FormatMoment(std::int64_t seconds) {
  const std::int64_t local_seconds = LocalOfUtcSeconds(seconds);
  const long offset = static_cast<long>((local_seconds - seconds) / 60);
  const long shown = offset < 0 ? -offset : offset;
  char text[64];
  char* end = PutDateTime(text, PartsFromLocalSeconds(local_seconds), 'T');
  *end++ = offset < 0 ? '-' : '+';
  end = PutNumber(end, shown / 60, 2);
  *end++ = ':';
  end = PutNumber(end, shown % 60, 2);
  return std::string(text, end);
}

}  // namespace pairwell
