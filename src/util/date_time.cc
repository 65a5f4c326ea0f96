#include "util/date_time.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "util/calendar.h"
#include "util/text.h"

namespace pairwell {

namespace {

constexpr double kMillisecondsPerDay = 86400000.0;

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

void AppendNumber(std::string* text, long value, int width) {
  char digits[32];
  text->append(digits, PutNumber(digits, value, width));
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

double Now() {
  const Moment now = NowMoment();
  return FileTimeToDate(now.seconds, now.nanoseconds);
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
  while (i < pattern.size()) {
    if (token("yyyy")) {
      AppendNumber(&text, p.year, 1);
    } else if (token("mmm")) {
      text += kMonths[p.month - 1];
    } else if (token("AMPM")) {
      text += p.hour < 12 ? "AM" : "PM";
    } else if (token("hh")) {
      AppendNumber(&text, hour, 2);
    } else if (token("h")) {
      AppendNumber(&text, hour, 1);
    } else if (token("nn")) {
      AppendNumber(&text, p.minute, 2);
    } else if (token("d")) {
      AppendNumber(&text, p.day, 1);
    } else {
      text.push_back(pattern[i++]);
    }
  }
  return text;
}

std::string FormatGeneralDate(double date) {
  char text[32];
  return std::string(text, PutDateTime(text, PartsFromDate(date), ' '));
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
