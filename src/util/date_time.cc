#include "util/date_time.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "util/text.h"

namespace pairwell {

namespace {

constexpr double kMillisecondsPerDay = 86400000.0;

// Days from 1970-01-01 to the civil date (proleptic Gregorian).
constexpr long long DaysFromCivil(long long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long long>(doe) - 719468;
}

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

// A compile-time constant, so that dates made during static initialisation
// elsewhere are right too.
constexpr long long kDay0 = DaysFromCivil(1899, 12, 30);

int DaysInMonth(int year, int month) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[month - 1];
}

bool ValidParts(const DateParts& p) {
  return p.year >= 100 && p.year <= 9999 && p.month >= 1 && p.month <= 12 &&
         p.day >= 1 && p.day <= DaysInMonth(p.year, p.month) && p.hour >= 0 &&
         p.hour <= 23 && p.minute >= 0 && p.minute <= 59 && p.second >= 0 &&
         p.second <= 59;
}

// Whole-text matches of the accepted layouts; %n tells that the text was
// used up to its end.
bool ScanIso(const std::string& text, DateParts* p) {
  int used = 0;
  const char* s = text.c_str();
  if (std::sscanf(s, "%4d-%2d-%2d %2d:%2d:%2d%n", &p->year, &p->month, &p->day,
                  &p->hour, &p->minute, &p->second, &used) == 6 &&
      s[used] == '\0') {
    return true;
  }
  used = 0;
  p->hour = p->minute = p->second = 0;
  return std::sscanf(s, "%4d-%2d-%2d%n", &p->year, &p->month, &p->day, &used) ==
             3 &&
         s[used] == '\0';
}

bool ScanUs(const std::string& text, DateParts* p) {
  int used = 0;
  char ampm[3] = {0, 0, 0};
  const char* s = text.c_str();
  if (std::sscanf(s, "%2d/%2d/%4d %2d:%2d:%2d %2[AaPpMm]%n", &p->month, &p->day,
                  &p->year, &p->hour, &p->minute, &p->second, ampm,
                  &used) == 7 &&
      s[used] == '\0') {
    const std::string marker = UpperCase(ampm);
    if ((marker != "AM" && marker != "PM") || p->hour < 1 || p->hour > 12) {
      return false;
    }
    p->hour = p->hour % 12 + (marker == "PM" ? 12 : 0);
    return true;
  }
  used = 0;
  p->hour = p->minute = p->second = 0;
  return std::sscanf(s, "%2d/%2d/%4d%n", &p->month, &p->day, &p->year, &used) ==
             3 &&
         s[used] == '\0';
}

}  // namespace

double DateFromParts(const DateParts& parts) {
  const long long days =
      DaysFromCivil(parts.year, static_cast<unsigned>(parts.month),
                    static_cast<unsigned>(parts.day)) -
      kDay0;
  const double fraction =
      ((parts.hour * 60.0 + parts.minute) * 60.0 + parts.second) / 86400.0 +
      parts.millisecond / kMillisecondsPerDay;
  // A negative day count keeps its time of day as a positive fraction
  // counted away from zero.
  return days < 0 ? static_cast<double>(days) - fraction
                  : static_cast<double>(days) + fraction;
}

bool DateInRange(double date) {
  return date > kFirstDate - 1 && date < kEndDate;  // false for not a number
}

DateParts PartsFromDate(double date) {
  if (!DateInRange(date)) {
    date = std::isnan(date)    ? 0
           : date < kFirstDate ? kFirstDate
                               : kEndDate - 1.0 / 86400;  // the last second
  }
  double whole = std::trunc(date);
  long long ms = std::llround(std::fabs(date - whole) * kMillisecondsPerDay);
  if (ms >= static_cast<long long>(kMillisecondsPerDay)) {
    ms -= static_cast<long long>(kMillisecondsPerDay);
    whole += date < 0 ? -1 : 1;
  }
  DateParts parts;
  CivilFromDays(static_cast<long long>(whole) + kDay0, &parts);
  parts.millisecond = static_cast<int>(ms % 1000);
  parts.second = static_cast<int>(ms / 1000 % 60);
  parts.minute = static_cast<int>(ms / 60000 % 60);
  parts.hour = static_cast<int>(ms / 3600000);
  return parts;
}

double FileTimeToDate(std::int64_t seconds, long nanoseconds) {
  const time_t whole = static_cast<time_t>(seconds);
  struct tm local;
  if (localtime_r(&whole, &local) == nullptr) return 0;
  DateParts parts;
  parts.year = local.tm_year + 1900;
  parts.month = local.tm_mon + 1;
  parts.day = local.tm_mday;
  parts.hour = local.tm_hour;
  parts.minute = local.tm_min;
  parts.second = local.tm_sec;
  parts.millisecond = static_cast<int>(nanoseconds / 1000000);
  return DateFromParts(parts);
}

void DateToFileTime(double date, std::int64_t* seconds, long* nanoseconds) {
  const DateParts parts = PartsFromDate(date);
  struct tm local = {};
  local.tm_year = parts.year - 1900;
  local.tm_mon = parts.month - 1;
  local.tm_mday = parts.day;
  local.tm_hour = parts.hour;
  local.tm_min = parts.minute;
  local.tm_sec = parts.second;
  local.tm_isdst = -1;  // let the system tell whether daylight saving is on
  *seconds = static_cast<std::int64_t>(mktime(&local));
  *nanoseconds = parts.millisecond * 1000000L;
}

Moment NowMoment() {
  struct timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return Moment{static_cast<std::int64_t>(now.tv_sec), now.tv_nsec};
}

double Now() {
  const Moment now = NowMoment();
  return FileTimeToDate(now.seconds, now.nanoseconds);
}

std::string FormatMoment(std::int64_t seconds) {
  const time_t whole = static_cast<time_t>(seconds);
  struct tm local;
  if (localtime_r(&whole, &local) == nullptr) return std::string();
  const long offset = local.tm_gmtoff / 60;
  const long shown = offset < 0 ? -offset : offset;
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%c%02ld:%02ld",
                local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                local.tm_hour, local.tm_min, local.tm_sec,
                offset < 0 ? '-' : '+', shown / 60, shown % 60);
  return text;
}

bool ParseMoment(const std::string& text, std::int64_t* seconds,
                 double* written_date) {
  DateParts p;
  int used = 0;
  const char* s = text.c_str();
  if (text.find('\0') != std::string::npos ||
      std::sscanf(s, "%4d-%2d-%2dT%2d:%2d:%2d%n", &p.year, &p.month, &p.day,
                  &p.hour, &p.minute, &p.second, &used) != 6 ||
      !ValidParts(p)) {
    return false;
  }
  int offset_hours = 0;
  int offset_minutes = 0;
  char sign = 0;
  int rest = 0;
  if (std::strcmp(s + used, "Z") != 0) {
    if (std::sscanf(s + used, "%c%2d:%2d%n", &sign, &offset_hours,
                    &offset_minutes, &rest) != 3 ||
        s[used + rest] != '\0' || (sign != '+' && sign != '-') ||
        offset_hours > 23 || offset_hours < 0 || offset_minutes > 59 ||
        offset_minutes < 0) {
      return false;
    }
  }
  const long long offset =
      (sign == '-' ? -1 : 1) * (offset_hours * 3600LL + offset_minutes * 60LL);
  const long long local_seconds =
      (DaysFromCivil(p.year, static_cast<unsigned>(p.month),
                     static_cast<unsigned>(p.day)) *
           86400LL +
       (p.hour * 3600LL + p.minute * 60LL + p.second));
  *seconds = local_seconds - offset;
  *written_date = DateFromParts(p);
  return true;
}

std::string FormatDate(double date, const std::string& pattern) {
  static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr",
                                        "May", "Jun", "Jul", "Aug",
                                        "Sep", "Oct", "Nov", "Dec"};
  const DateParts p = PartsFromDate(date);
  const bool twelve_hour = pattern.find("AMPM") != std::string::npos;
  const int hour = twelve_hour ? (p.hour % 12 == 0 ? 12 : p.hour % 12) : p.hour;
  std::string text;
  std::string::size_type i = 0;
  auto token = [&](const char* t) {
    const std::string::size_type n = std::char_traits<char>::length(t);
    if (pattern.compare(i, n, t) != 0) return false;
    i += n;
    return true;
  };
  auto two_digits = [](int value) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%02d", value);
    return std::string(digits);
  };
  while (i < pattern.size()) {
    if (token("yyyy")) {
      text += std::to_string(p.year);
    } else if (token("mmm")) {
      text += kMonths[p.month - 1];
    } else if (token("AMPM")) {
      text += p.hour < 12 ? "AM" : "PM";
    } else if (token("hh")) {
      text += two_digits(hour);
    } else if (token("h")) {
      text += std::to_string(hour);
    } else if (token("nn")) {
      text += two_digits(p.minute);
    } else if (token("d")) {
      text += std::to_string(p.day);
    } else {
      text.push_back(pattern[i++]);
    }
  }
  return text;
}

std::string FormatGeneralDate(double date) {
  const DateParts p = PartsFromDate(date);
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", p.year,
                p.month, p.day, p.hour, p.minute, p.second);
  return text;
}

bool ParseDateText(const std::string& text, double* date) {
  // The scanner would stop at a NUL byte and take what follows for the end.
  if (text.find('\0') != std::string::npos) return false;
  const std::string trimmed = Trim(text);
  DateParts parts;
  if (!ScanIso(trimmed, &parts) && !ScanUs(trimmed, &parts)) return false;
  if (!ValidParts(parts)) return false;
  *date = DateFromParts(parts);
  return true;
}

}  // namespace pairwell
