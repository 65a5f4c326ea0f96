// Civil-calendar arithmetic (proleptic Gregorian, no time zone) and the
// fixed-width number text of dates, shared by the portable date routines and
// each system's local-time conversions.
#ifndef PAIRWELL_UTIL_CALENDAR_H_
#define PAIRWELL_UTIL_CALENDAR_H_

#include <cstdint>

#include "util/date_time.h"

namespace pairwell {

constexpr std::int64_t kSecondsPerDay = 86400;

// Division rounding down, so that times before 1970 fall in the day before.
constexpr std::int64_t FloorDiv(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// Days from 1970-01-01 to the civil date (proleptic Gregorian).
constexpr long long DaysFromCivil(long long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long long>(doe) - 719468;
}

// The civil date of a count of days since 1970-01-01 (year, month, day).
void CivilFromDays(long long z, DateParts* parts);

// The civil date-time of a count of seconds since 1970-01-01, no zone.
DateParts PartsFromLocalSeconds(std::int64_t local_seconds);

// Writes `value` as printf's "%0<width>d" does; returns the end. The digits
// go in reverse first, so `out` needs room for the sign, 20 digits and the
// padding.
char* PutNumber(char* out, long value, int width);

// "YYYY-MM-DD", `between`, "HH:MM:SS"; returns the end. At most 26 chars.
char* PutDateTime(char* out, const DateParts& p, char between);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_CALENDAR_H_
