#include "util/date_time.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "util/text.h"

namespace pairwell {

namespace {

constexpr double kMillisecondsPerDay = 86400000.0;
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

DateParts PartsFromTm(const struct tm& local) {
  DateParts parts;
  parts.year = local.tm_year + 1900;
  parts.month = local.tm_mon + 1;
  parts.day = local.tm_mday;
  parts.hour = local.tm_hour;
  parts.minute = local.tm_min;
  parts.second = local.tm_sec;
  return parts;
}

// The civil date-time of a count of seconds since 1970-01-01, no zone.
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

double SystemFileTimeToDate(std::int64_t seconds, long nanoseconds) {
  const time_t whole = static_cast<time_t>(seconds);
  struct tm local;
  if (localtime_r(&whole, &local) == nullptr) return 0;
  DateParts parts = PartsFromTm(local);
  parts.millisecond = static_cast<int>(nanoseconds / 1000000);
  return DateFromParts(parts);
}

// How far the local time localtime_r shows for `seconds` lies from it:
// tm_gmtoff, less the leap seconds in zones that count them. False when the
// shown time is no such shift: a leap second, shown as :60, or a failure.
bool SystemOffset(std::int64_t seconds, std::int32_t* offset) {
  const time_t whole = static_cast<time_t>(seconds);
  struct tm local;
  if (localtime_r(&whole, &local) == nullptr || local.tm_sec > 59) {
    return false;
  }
  const std::int64_t local_seconds =
      DaysFromCivil(local.tm_year + 1900LL,
                    static_cast<unsigned>(local.tm_mon + 1),
                    static_cast<unsigned>(local.tm_mday)) *
          kSecondsPerDay +
      local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
  *offset = static_cast<std::int32_t>(local_seconds - seconds);
  return true;
}

// The UTC offsets of the days (UTC days since 1970) one thread has converted
// times in, kept in blocks of 32 days. A day is kept only when localtime_r
// shows the same offset at its first and its last second: no zone changes
// its offset and back within a day (in the zone database such changes lie
// four days apart or more), so that offset holds all day and seconds +
// offset is what localtime_r shows. A day with a change in it is marked so
// and left to localtime_r.
class DayOffsetCache {
 public:
  // The offset at `seconds`; false when localtime_r must be asked instead.
  bool Find(std::int64_t seconds, std::int32_t* offset) {
    if (seconds < -kReach || seconds > kReach) return false;
    FollowZone();
    const std::int64_t day = FloorDiv(seconds, kSecondsPerDay);
    Block& block = BlockOf(day);
    const std::uint32_t bit = std::uint32_t{1}
                              << (day - std::int64_t{block.index} * kBlockDays);
    for (int k = 0; k < 2; ++k) {
      if ((block.steady[k] & bit) != 0) {
        *offset = block.offsets[k];
        return true;
      }
    }
    return (block.asked & bit) == 0 && Learn(day, bit, &block, offset);
  }

 private:
  static constexpr int kBlockDays = 32;  // the bits of a mask
  static constexpr int kBlocks = 512;    // 45 years of days, 12 KiB
  // Times further from 1970 (two million years) go to localtime_r; this keeps
  // the block numbers within int32 and clear of kNoBlock.
  static constexpr std::int64_t kReach = std::int64_t{1} << 46;
  static constexpr std::int32_t kNoBlock = INT32_MIN;

  // Up to two offsets a block's days keep, those of daylight saving and of
  // standard time, and the days left to localtime_r.
  struct Block {
    std::int32_t index = kNoBlock;
    std::int32_t offsets[2] = {0, 0};
    std::uint32_t steady[2] = {0, 0};  // a bit for each day with offsets[k]
    std::uint32_t asked = 0;
  };

  Block& BlockOf(std::int64_t day) {
    const auto index = static_cast<std::int32_t>(FloorDiv(day, kBlockDays));
    Block& block = blocks_[static_cast<std::uint32_t>(index) % kBlocks];
    if (block.index != index) {
      block = Block();
      block.index = index;
    }
    return block;
  }

  // Asks localtime_r about the first and the last second of the day and
  // keeps what it says. An offset a block has no room for is given but not
  // kept.
  static bool Learn(std::int64_t day, std::uint32_t bit, Block* block,
                    std::int32_t* offset) {
    const std::int64_t first = day * kSecondsPerDay;
    std::int32_t at_last = 0;
    if (!SystemOffset(first, offset) ||
        !SystemOffset(first + kSecondsPerDay - 1, &at_last) ||
        *offset != at_last) {
      block->asked |= bit;
      return false;
    }
    for (int k = 0; k < 2; ++k) {
      if (block->steady[k] == 0 || block->offsets[k] == *offset) {
        block->offsets[k] = *offset;
        block->steady[k] |= bit;
        break;
      }
    }
    return true;
  }

  // The days hold for the zone TZ named when they were learnt, so TZ's text
  // is compared on every call (a getenv and a short compare). A new text
  // drops the days and calls tzset(), which localtime_r does not do by
  // itself, so that localtime_r answers for the zone the text names. A
  // system zone file replaced under an unset TZ is not noticed.
  void FollowZone() {
    const char* zone = std::getenv("TZ");
    if (zone_known_ && (zone != nullptr) == zone_set_ &&
        (zone == nullptr || zone_ == zone)) {
      return;
    }
    tzset();
    zone_known_ = true;
    zone_set_ = zone != nullptr;
    zone_ = zone_set_ ? zone : "";
    std::fill(std::begin(blocks_), std::end(blocks_), Block());
  }

  bool zone_known_ = false;
  bool zone_set_ = false;
  std::string zone_;
  Block blocks_[kBlocks];
};

// Writes `value` as printf's "%0<width>d" does; returns the end. The digits
// go in reverse first, so `out` needs room for the sign, 20 digits and the
// padding.
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

void AppendNumber(std::string* text, long value, int width) {
  char digits[32];
  text->append(digits, PutNumber(digits, value, width));
}

// "YYYY-MM-DD", `between`, "HH:MM:SS"; returns the end. At most 26 chars.
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
  thread_local DayOffsetCache offsets;
  std::int32_t offset = 0;
  if (!offsets.Find(seconds, &offset)) {
    return SystemFileTimeToDate(seconds, nanoseconds);
  }
  DateParts parts = PartsFromLocalSeconds(seconds + offset);
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
  char* end = PutDateTime(text, PartsFromTm(local), 'T');
  *end++ = offset < 0 ? '-' : '+';
  end = PutNumber(end, shown / 60, 2);
  *end++ = ':';
  end = PutNumber(end, shown % 60, 2);
  return std::string(text, end);
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
