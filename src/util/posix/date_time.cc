#include "util/date_time.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

#include "util/calendar.h"

namespace pairwell {

namespace {

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

}  // namespace

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

}  // namespace pairwell
