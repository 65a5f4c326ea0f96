#include "util/calendar.h"

namespace pairwell {

void CivilFromDays(long long z, DateParts* parts) {
  z += 719468;
  const long long era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  parts->day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  parts->month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  parts->year = static_cast<int>(yoe + era * 400 + (parts->month <= 2));
}

DateParts PartsFromLocalSeconds(std::int64_t local_seconds) {
  const std::int64_t days = FloorDiv(local_seconds, kSecondsPerDay);
  const int of_day = static_cast<int>(local_seconds - days * kSecondsPerDay);
  DateParts parts;
  CivilFromDays(days, &parts);
  parts.hour = of_day / 3600;
  parts.minute = of_day / 60 % 60;
  parts.second = of_day % 60;
  return parts;
}

char* PutNumber(char* out, long value, int width) {
  unsigned long magnitude = value < 0 ? 0UL - static_cast<unsigned long>(value)
                                      : static_cast<unsigned long>(value);
  char digits[20];
  int count = 0;
  do {
    digits[count++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (value < 0) {
    *out++ = '-';
    --width;
  }
  for (int i = count; i < width; ++i) *out++ = '0';
  while (count > 0) *out++ = digits[--count];
  return out;
}

char* PutDateTime(char* out, const DateParts& p, char between) {
  out = PutNumber(out, p.year, 4);
  *out++ = '-';
  out = PutNumber(out, p.month, 2);
  *out++ = '-';
  out = PutNumber(out, p.day, 2);
  *out++ = between;
  out = PutNumber(out, p.hour, 2);
  *out++ = ':';
  out = PutNumber(out, p.minute, 2);
  *out++ = ':';
  return PutNumber(out, p.second, 2);
}

}  // namespace pairwell
