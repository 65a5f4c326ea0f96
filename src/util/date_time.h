// Dates are local date-times held as day counts in doubles: day 0 is
// 1899-12-30 at midnight, the fraction is the time of day.
#ifndef PAIRWELL_UTIL_DATE_TIME_H_
#define PAIRWELL_UTIL_DATE_TIME_H_

#include <cstdint>
#include <string>

namespace pairwell {

// A civil date and time, without a time zone.
struct DateParts {
  int year = 1899;
  int month = 12;  // 1..12
  int day = 30;    // 1..31
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
};

// The day counts of 0100-01-01 00:00 and of the end of 9999-12-31: the
// dates the program can hold. Outside them the arithmetic would overflow.
// Before day 0 the time of day counts away from zero, so the times of
// 0100-01-01 lie in (kFirstDate - 1, kFirstDate].
constexpr double kFirstDate = -657434.0;
constexpr double kEndDate = 2958466.0;

// Whether the day count is a number that names a date-time from 0100-01-01
// 00:00 to the end of 9999-12-31.
bool DateInRange(double date);

// The day count of a civil date-time (no range check beyond what the
// arithmetic needs).
double DateFromParts(const DateParts& parts);

// The civil date-time of a day count, rounded to the millisecond. A negative
// count has its time of day counted forward from the start of its day, so
// -1.25 is 1899-12-29 06:00. A count out of range (or not a number) gives
// the nearest end of the range (0 for not a number).
DateParts PartsFromDate(double date);

// A moment as POSIX time: seconds and nanoseconds since the epoch, UTC.
struct Moment {
  std::int64_t seconds = 0;
  long nanoseconds = 0;
};

// The present moment, and the same as a local day count.
Moment NowMoment();
double Now();

// A POSIX time (seconds and nanoseconds since the epoch, UTC) as a local
// day count, daylight saving included; kept to the millisecond.
double FileTimeToDate(std::int64_t seconds, long nanoseconds);

// The POSIX time of a local day count, to the millisecond. Of a local time
// that occurs twice (the hour repeated when daylight saving ends) the system
// picks one; a time skipped by the change moves forward.
void DateToFileTime(double date, std::int64_t* seconds, long* nanoseconds);

// A moment as ISO 8601 local time with the zone's offset then in force,
// "2026-11-23T13:05:09+09:00": the text names the moment whatever zone reads
// it, and its local part is the local date-time where it was written.
std::string FormatMoment(std::int64_t seconds);

// Reads FormatMoment's text ("Z" for a zero offset is understood too): the
// moment, and the local date-time its text shows as a day count. False when
// the text is not such a moment or lies outside the dates the program holds.
bool ParseMoment(const std::string& text, std::int64_t* seconds,
                 double* written_date);

// Formats a date by a pattern of the tokens "yyyy", "mmm" (month
// abbreviation), "d", "hh", "h", "nn" (minutes) and "AMPM"; other characters
// are copied. With "AMPM" the hour counts 1..12. "mmm d, yyyy hh:nnAMPM"
// gives "Nov 2, 2026 03:04PM"; "mmm d, yyyy h:nnAMPM" gives
// "Nov 2, 2026 3:04PM".
std::string FormatDate(double date, const std::string& pattern);

// "YYYY-MM-DD HH:MM:SS", the form in which dates are written.
std::string FormatGeneralDate(double date);

// Reads a date written as "YYYY-MM-DD HH:MM:SS", "YYYY-MM-DD",
// "M/D/YYYY h:mm:ss AM" (or PM) and "M/D/YYYY" (older files). Returns false
// and leaves *date alone when the text is none of these or names no real
// date.
bool ParseDateText(const std::string& text, double* date);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_DATE_TIME_H_
