// Dates for tests: local day counts from civil parts.
#ifndef PAIRWELL_TESTS_SUPPORT_TEST_DATES_H_
#define PAIRWELL_TESTS_SUPPORT_TEST_DATES_H_

#include "util/date_time.h"

namespace pairwell {

inline double MakeDate(int year, int month, int day, int hour = 0,
                       int minute = 0, int second = 0, int millisecond = 0) {
  DateParts parts;
  parts.year = year;
  parts.month = month;
  parts.day = day;
  parts.hour = hour;
  parts.minute = minute;
  parts.second = second;
  parts.millisecond = millisecond;
  return DateFromParts(parts);
}

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_TEST_DATES_H_
