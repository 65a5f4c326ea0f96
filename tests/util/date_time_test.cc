#include "util/date_time.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/scoped_time_zone.h"
#include "support/test_files.h"

namespace pairwell {
namespace {

DateParts Parts(int y, int mo, int d, int h = 0, int mi = 0, int s = 0,
                int ms = 0) {
  DateParts p;
  p.year = y;
  p.month = mo;
  p.day = d;
  p.hour = h;
  p.minute = mi;
  p.second = s;
  p.millisecond = ms;
  return p;
}

// Made while the program starts, before any test runs.
const double kMadeAtStart = DateFromParts(Parts(2024, 5, 14, 11));

TEST(DateTimeTest, DatesMadeAtProgramStartAreRight) {
  EXPECT_DOUBLE_EQ(kMadeAtStart, 45426 + 11.0 / 24);
}

TEST(DateTimeTest, DayCountsStartAt18991230) {
  EXPECT_DOUBLE_EQ(DateFromParts(Parts(1899, 12, 30)), 0);
  EXPECT_DOUBLE_EQ(DateFromParts(Parts(1899, 12, 31)), 1);
  EXPECT_DOUBLE_EQ(DateFromParts(Parts(1900, 3, 1)), 61);
  EXPECT_DOUBLE_EQ(DateFromParts(Parts(2000, 1, 1, 12)), 36526.5);
  EXPECT_DOUBLE_EQ(DateFromParts(Parts(1899, 12, 29, 6)), -1.25);
}

TEST(DateTimeTest, PartsRoundTripToTheMillisecond) {
  const DateParts kDates[] = {Parts(2026, 11, 2, 15, 4, 5, 678),
                              Parts(2024, 2, 29, 23, 59, 59, 999),
                              Parts(1970, 1, 1), Parts(1899, 12, 29, 6),
                              Parts(9999, 12, 31, 23, 59, 59)};
  for (const DateParts& d : kDates) {
    const DateParts back = PartsFromDate(DateFromParts(d));
    EXPECT_EQ(back.year, d.year);
    EXPECT_EQ(back.month, d.month);
    EXPECT_EQ(back.day, d.day);
    EXPECT_EQ(back.hour, d.hour);
    EXPECT_EQ(back.minute, d.minute);
    EXPECT_EQ(back.second, d.second);
    EXPECT_EQ(back.millisecond, d.millisecond)
        << d.year << "-" << d.month << "-" << d.day;
  }
}

TEST(DateTimeTest, GeneralDateIsWrittenIsoLike) {
  EXPECT_EQ(FormatGeneralDate(DateFromParts(Parts(2026, 11, 2, 15, 4, 5))),
            "2026-11-02 15:04:05");
  EXPECT_EQ(FormatGeneralDate(DateFromParts(Parts(2026, 1, 9))),
            "2026-01-09 00:00:00");
}

TEST(DateTimeTest, OlderDateLayoutsAreRead) {
  const double expected = DateFromParts(Parts(2026, 11, 2, 15, 4, 5));
  const struct {
    const char* text;
    double date;
  } kCases[] = {
      {"2026-11-02 15:04:05", expected},
      {" 2026-11-02 15:04:05 ", expected},
      {"11/2/2026 3:04:05 PM", expected},
      {"11/2/2026 3:04:05 pm", expected},
      {"11/2/2026 12:00:00 AM", DateFromParts(Parts(2026, 11, 2))},
      {"11/2/2026 12:30:00 PM", DateFromParts(Parts(2026, 11, 2, 12, 30))},
      {"11/2/2026", DateFromParts(Parts(2026, 11, 2))},
      {"2026-11-02", DateFromParts(Parts(2026, 11, 2))},
  };
  for (const auto& c : kCases) {
    double date = -1;
    EXPECT_TRUE(ParseDateText(c.text, &date)) << c.text;
    EXPECT_DOUBLE_EQ(date, c.date) << c.text;
  }
}

TEST(DateTimeTest, UnreadableDatesAreRefusedAndLeaveTheValue) {
  const char* kBad[] = {"",
                        "yesterday",
                        "2026-13-01 00:00:00",
                        "2026-02-30",
                        "2/30/2026",
                        "11/2/2026 13:00:00 PM",
                        "11/2/2026 3:04:05",
                        "2026-11-02 24:00:00",
                        "2026-11-02T15:04:05",
                        "45000"};
  for (const char* text : kBad) {
    double date = 7;
    EXPECT_FALSE(ParseDateText(text, &date)) << text;
    EXPECT_EQ(date, 7) << text;
  }
  double date = 7;
  EXPECT_FALSE(ParseDateText(std::string("2026-11-22\0junk", 15), &date));
  EXPECT_EQ(date, 7);
}

TEST(DateTimeTest, NowIsTodayInLocalTime) {
  const double now = Now();
  time_t seconds = time(nullptr);
  struct tm local;
  ASSERT_TRUE(LocalTimeOf(seconds, &local));
  const double today = DateFromParts(
      Parts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday));
  EXPECT_GE(now, today);
  EXPECT_LT(now, today + 1.0001);
}

// Runs a test in a fixed time zone with daylight saving: Central European
// time, written as a rule so that no zone database is needed.
class LocalTimeTest : public ::testing::Test {
 protected:
  ScopedTimeZone zone_{"CET-1CEST,M3.5.0,M10.5.0/3"};
};

TEST_F(LocalTimeTest, PosixTimeBecomesLocalDateWithDaylightSaving) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  // 2026-01-15 12:00:00 UTC is 13:00 in winter.
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(1768478400, 0)),
            "2026-01-15 13:00:00");
  // 2026-07-15 12:00:00 UTC is 14:00 in summer.
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(1784116800, 0)),
            "2026-07-15 14:00:00");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(0, 0)), "1970-01-01 01:00:00");
}

TEST_F(LocalTimeTest, DatesRoundTripThroughPosixTimeToTheMillisecond) {
  const struct {
    std::int64_t seconds;
    long nanos;
  } kTimes[] = {{1768478400, 0},         {1784116800, 999999999},
                {1700000000, 123456789}, {0, 1000000},
                {1774746000, 500000000},   // 2026-03-29 01:00 UTC, spring
                {1792893600, 250000000}};  // 2026-10-25 02:00 UTC, autumn
  for (const auto& t : kTimes) {
    std::int64_t seconds = 0;
    long nanos = 0;
    DateToFileTime(FileTimeToDate(t.seconds, t.nanos), &seconds, &nanos);
    EXPECT_EQ(seconds, t.seconds) << "seconds " << t.seconds;
    EXPECT_EQ(nanos, t.nanos / 1000000 * 1000000) << "seconds " << t.seconds;
  }
}

TEST_F(LocalTimeTest, NowFollowsTheClock) {
  const double before = FileTimeToDate(time(nullptr), 0);
  const double now = Now();
  EXPECT_GE(now, before);
  EXPECT_LT(now - before, 5.0 / 86400);
}

TEST(FormatDateTest, PatternsOfTheFileLists) {
  const double afternoon = DateFromParts(Parts(2026, 11, 2, 15, 4, 5));
  const double morning = DateFromParts(Parts(2026, 1, 9, 9, 7));
  const double midnight = DateFromParts(Parts(2026, 12, 31, 0, 0));
  const double noon = DateFromParts(Parts(2026, 5, 20, 12, 59));
  const struct {
    double date;
    const char* pattern;
    const char* text;
  } kCases[] = {
      {afternoon, "mmm d, yyyy hh:nnAMPM", "Nov 2, 2026 03:04PM"},
      {afternoon, "mmm d, yyyy h:nnAMPM", "Nov 2, 2026 3:04PM"},
      {morning, "mmm d, yyyy hh:nnAMPM", "Jan 9, 2026 09:07AM"},
      {morning, "mmm d, yyyy h:nnAMPM", "Jan 9, 2026 9:07AM"},
      {midnight, "mmm d, yyyy hh:nnAMPM", "Dec 31, 2026 12:00AM"},
      {noon, "mmm d, yyyy h:nnAMPM", "May 20, 2026 12:59PM"},
      {afternoon, "yyyy hh:nn", "2026 15:04"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(FormatDate(c.date, c.pattern), c.text) << c.pattern;
  }
}

TEST(DateRangeTest, DatesOutsideTheRangeNeverOverflow) {
  EXPECT_TRUE(DateInRange(0));
  EXPECT_TRUE(DateInRange(kFirstDate));
  // Noon of the first day: its time counts away from zero.
  EXPECT_TRUE(DateInRange(kFirstDate - 0.5));
  EXPECT_EQ(FormatGeneralDate(kFirstDate - 0.5), "0100-01-01 12:00:00");
  EXPECT_FALSE(DateInRange(kFirstDate - 1));
  EXPECT_FALSE(DateInRange(kEndDate));
  EXPECT_FALSE(DateInRange(1e308));
  EXPECT_FALSE(DateInRange(-1e308));
  EXPECT_FALSE(DateInRange(std::nan("")));
  EXPECT_FALSE(DateInRange(HUGE_VAL));
  // Shown as the nearest end of the range.
  EXPECT_EQ(FormatGeneralDate(1e308), "9999-12-31 23:59:59");
  EXPECT_EQ(FormatGeneralDate(99999999999999999999.0), "9999-12-31 23:59:59");
  EXPECT_EQ(FormatGeneralDate(-1e300), "0100-01-01 00:00:00");
  EXPECT_EQ(FormatGeneralDate(std::nan("")), "1899-12-30 00:00:00");
  EXPECT_EQ(FormatDate(HUGE_VAL, "mmm d, yyyy"), "Dec 31, 9999");
}

TEST_F(LocalTimeTest, MomentIsWrittenWithTheOffsetInForce) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  // 2026-07-01 10:00 UTC is noon in summer time; 2026-01-01 10:00 UTC is
  // eleven in winter.
  EXPECT_EQ(FormatMoment(1782900000), "2026-07-01T12:00:00+02:00");
  EXPECT_EQ(FormatMoment(1767261600), "2026-01-01T11:00:00+01:00");
  ScopedTimeZone::Set("PST8PDT,M3.2.0,M11.1.0");
  EXPECT_EQ(FormatMoment(1767261600), "2026-01-01T02:00:00-08:00");
}

TEST_F(LocalTimeTest, MomentIsReadWhateverZoneWroteIt) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  std::int64_t seconds = 0;
  double written = 0;
  ASSERT_TRUE(ParseMoment("2026-07-01T12:00:00+02:00", &seconds, &written));
  EXPECT_EQ(seconds, 1782900000);
  EXPECT_EQ(FormatGeneralDate(written), "2026-07-01 12:00:00");
  ASSERT_TRUE(ParseMoment("2026-07-01T01:30:00-08:30", &seconds, &written));
  EXPECT_EQ(seconds, 1782900000);
  ASSERT_TRUE(ParseMoment("2026-07-01T10:00:00Z", &seconds, &written));
  EXPECT_EQ(seconds, 1782900000);
  // The same moment, read back in another zone, is that zone's local time.
  ScopedTimeZone::Set("JST-9");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(seconds, 0)),
            "2026-07-01 19:00:00");
}

TEST(MomentTest, TextsThatAreNoMomentAreRefused) {
  std::int64_t seconds = 7;
  double written = 7;
  for (const char* text :
       {"", "2026-07-01 12:00:00", "2026-07-01T12:00:00",
        "2026-07-01T12:00:00+2", "2026-07-01T12:00:00+02:00x",
        "2026-13-01T12:00:00Z", "2026-02-30T12:00:00Z", "2026-07-01T24:00:00Z",
        "0099-07-01T12:00:00Z", "2026-07-01T12:00:00+24:00",
        "2026-07-01T12:00:00*02:00"}) {
    EXPECT_FALSE(ParseMoment(text, &seconds, &written)) << text;
  }
  EXPECT_FALSE(ParseMoment(std::string("2026-07-01T10:00:00Z\0", 21), &seconds,
                           &written));
  EXPECT_EQ(seconds, 7);
  EXPECT_EQ(written, 7);
}

// A local day count made the plain way: the C library's local time for every
// time.
double SystemDate(std::int64_t seconds, long nanoseconds) {
  const time_t whole = static_cast<time_t>(seconds);
  struct tm local;
  if (!LocalTimeOf(whole, &local)) return 0;
  return DateFromParts(Parts(
      local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
      local.tm_min, local.tm_sec, static_cast<int>(nanoseconds / 1000000)));
}

std::uint64_t Bits(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// Some milliseconds for each time, so that the fraction is checked too.
long NanosecondsFor(std::int64_t seconds) {
  return static_cast<long>((seconds % 1000 + 1000) % 1000 * 999983);
}

// The times whose day count differs, to the bit, from the plain way's in
// the zone now set: how many, and the first. Empty when none does.
std::string Mismatches(const std::vector<std::int64_t>& times) {
  int count = 0;
  std::ostringstream first;
  for (const std::int64_t t : times) {
    const long nanoseconds = NanosecondsFor(t);
    const double got = FileTimeToDate(t, nanoseconds);
    const double want = SystemDate(t, nanoseconds);
    if (Bits(got) == Bits(want)) continue;
    if (count++ == 0) {
      first.precision(17);
      first << " first at " << t << ": " << got << " for " << want;
    }
  }
  if (count == 0) return std::string();
  return std::to_string(count) + " of " + std::to_string(times.size()) +
         first.str();
}

std::vector<std::int64_t> Sweep(std::int64_t first, std::int64_t last,
                                std::int64_t step) {
  std::vector<std::int64_t> times;
  for (std::int64_t t = first; t <= last; t += step) times.push_back(t);
  return times;
}

bool ZoneInDatabase(const std::string& zone) {
  return std::ifstream("/usr/share/zoneinfo/" + zone).good();
}

constexpr std::int64_t k1900 = -2208988800;
constexpr std::int64_t k2100 = 4102444800;

// Zones with daylight saving north and south, half an hour of it (Lord
// Howe), a negative one (Dublin), half- and quarter-hour offsets, +13 and
// +14, a skipped day (Apia), offsets with odd seconds (Amsterdam +0:19:32
// until 1937, Monrovia -0:44:30 until 1972), a month on another offset
// each year (Casablanca) and leap seconds.
const char* const kDatabaseZones[] = {
    "Europe/Berlin",     "America/New_York",    "Europe/London",
    "Europe/Dublin",     "Australia/Lord_Howe", "Asia/Kolkata",
    "Asia/Kathmandu",    "America/St_Johns",    "Pacific/Kiritimati",
    "Pacific/Tongatapu", "Pacific/Apia",        "Europe/Amsterdam",
    "Africa/Monrovia",   "Africa/Casablanca",   "right/Europe/London"};

// Zones written as rules, which need no database.
const char* const kRuleZones[] = {
    "UTC0", "CET-1CEST,M3.5.0,M10.5.0/3",
    "<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45",
    "NST3:30NDT,M3.2.0,M11.1.0"};

// The zones of both lists that this system has.
std::vector<std::string> TestZones() {
  std::vector<std::string> zones(std::begin(kRuleZones), std::end(kRuleZones));
  for (const char* zone : kDatabaseZones) {
    if (ZoneInDatabase(zone)) zones.push_back(zone);
  }
  return zones;
}

std::int64_t GmtOffset(std::int64_t seconds) { return UtcOffsetAt(seconds); }

// The seconds at which the zone now set changes its offset, from 1900 to
// 2100. Looked for two days apart: no zone changes and changes back within
// two days.
std::vector<std::int64_t> OffsetChanges() {
  std::vector<std::int64_t> changes;
  constexpr std::int64_t kStep = 2 * 86400;
  for (std::int64_t t = k1900; t < k2100; t += kStep) {
    if (GmtOffset(t) == GmtOffset(t + kStep)) continue;
    std::int64_t before = t;  // the offset here is the old one
    std::int64_t after = t + kStep;
    while (after - before > 1) {
      const std::int64_t middle = before + (after - before) / 2;
      (GmtOffset(middle) == GmtOffset(t) ? before : after) = middle;
    }
    changes.push_back(after);
  }
  return changes;
}

TEST(FileTimeToDateTest, LocalTimesOfKnownZones) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  const struct {
    const char* zone;
    std::int64_t seconds;
    const char* text;
  } kCases[] = {
      {"America/New_York", 1710053999, "2024-03-10 01:59:59"},
      {"America/New_York", 1710054000, "2024-03-10 03:00:00"},
      {"America/New_York", 1730613599, "2024-11-03 01:59:59"},
      {"America/New_York", 1730613600, "2024-11-03 01:00:00"},
      {"Europe/London", 1711846799, "2024-03-31 00:59:59"},
      {"Europe/London", 1711846800, "2024-03-31 02:00:00"},
      {"Australia/Lord_Howe", 1712415599, "2024-04-07 01:59:59"},
      {"Australia/Lord_Howe", 1712415600, "2024-04-07 01:30:00"},
      {"Asia/Kolkata", 1704067200, "2024-01-01 05:30:00"},
      {"Pacific/Kiritimati", 1704067200, "2024-01-01 14:00:00"},
      {"Pacific/Tongatapu", 1704067200, "2024-01-01 13:00:00"},
      {"Pacific/Apia", 1325239199, "2011-12-29 23:59:59"},
      {"Pacific/Apia", 1325239200, "2011-12-31 00:00:00"},
      {"Europe/Amsterdam", k1900, "1900-01-01 00:19:32"},
      {"Africa/Monrovia", 0, "1969-12-31 23:15:30"},
  };
  for (const auto& c : kCases) {
    if (!ZoneInDatabase(c.zone)) GTEST_SKIP() << "no zone database";
    ScopedTimeZone zone(c.zone);
    EXPECT_EQ(FormatGeneralDate(FileTimeToDate(c.seconds, 0)), c.text)
        << c.zone << " " << c.seconds;
  }
}

TEST(FileTimeToDateTest, SameAsTheSystemFrom1900To2100) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  // An odd step, so that the times of day vary too.
  const std::vector<std::int64_t> times = Sweep(k1900, k2100, 100003);
  for (const std::string& name : TestZones()) {
    ScopedTimeZone zone(name.c_str());
    EXPECT_EQ(Mismatches(times), "") << name;
  }
}

TEST(FileTimeToDateTest, SameAsTheSystemAroundEveryOffsetChange) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  for (const std::string& name : TestZones()) {
    ScopedTimeZone zone(name.c_str());
    std::vector<std::int64_t> times;
    for (const std::int64_t change : OffsetChanges()) {
      // Every hour of the two days around it, and the seconds next to it.
      for (std::int64_t t = change - 48 * 3600; t <= change + 48 * 3600;
           t += 3600) {
        times.push_back(t);
      }
      for (const std::int64_t t : {change - 1, change + 1, change - 1801,
                                   change + 1799, change + 86399}) {
        times.push_back(t);
      }
    }
    EXPECT_EQ(Mismatches(times), "") << name;
  }
}

TEST(FileTimeToDateTest, SameAsTheSystemAroundLeapSeconds) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  if (!ZoneInDatabase("right/UTC")) GTEST_SKIP() << "no zone database";
  ScopedTimeZone zone("right/UTC");
  // 2016-12-31 23:59:60 UTC, counted with the 26 leap seconds before it; a
  // half second into it is shown as midnight.
  constexpr std::int64_t kLeapSecond = 1483228800 + 26;
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(kLeapSecond - 1, 0)),
            "2016-12-31 23:59:59");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(kLeapSecond, 500000000)),
            "2017-01-01 00:00:00");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(kLeapSecond + 1, 0)),
            "2017-01-01 00:00:00");
  // The first leap second, 1972-06-30 23:59:60, had none before it.
  std::vector<std::int64_t> times = Sweep(78796800 - 3, 78796800 + 3, 1);
  for (const std::int64_t t : Sweep(kLeapSecond - 3, kLeapSecond + 3, 1)) {
    times.push_back(t);
  }
  for (const std::int64_t t : Sweep(0, 1600000000, 86399)) {
    times.push_back(t);
  }
  EXPECT_EQ(Mismatches(times), "");
}

TEST(FileTimeToDateTest, SameAsTheSystemBeforeTheEpochAndFarAhead) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  constexpr std::int64_t kDay = 86400;
  constexpr std::int64_t kFar = std::int64_t{1} << 46;
  const std::vector<std::int64_t> times = {
      0,
      -1,
      1,
      -kDay,
      -kDay - 1,
      -kDay + 1,
      -2 * kDay - 1,
      k1900 - 1,
      -59011459200,  // 0100-01-01 00:00 UTC
      -59011459201,  // the second before
      -62198755200,  // the year -1
      -100000000000000,
      253402300799,  // 9999-12-31 23:59:59 UTC
      253402300800,
      1000000000000,
      100000000000000,
      kFar - 1,
      kFar,
      kFar + 1,
      -kFar - 1,
      -kFar,
      -kFar + 1,
      std::int64_t{1} << 55,
      -(std::int64_t{1} << 55),
      INT64_MAX,
      INT64_MIN};
  for (const char* name :
       {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "Europe/Amsterdam",
        "Asia/Kolkata", "America/New_York"}) {
    ScopedTimeZone zone(name);
    EXPECT_EQ(Mismatches(times), "") << name;
  }
}

TEST(FileTimeToDateTest, FollowsTheZoneWhenItChangesInOneThread) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  const std::vector<std::int64_t> times = Sweep(1700000000, 1800000000, 99991);
  const char* const kZones[] = {"CET-1CEST,M3.5.0,M10.5.0/3",
                                "EST5EDT,M3.2.0,M11.1.0", "JST-9", "",
                                "CET-1CEST,M3.5.0,M10.5.0/3"};
  for (const char* name : kZones) {
    ScopedTimeZone zone(name);
    EXPECT_EQ(Mismatches(times), "") << "'" << name << "'";
  }
  ScopedTimeZone zone("JST-9");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(1700000000, 0)),
            "2023-11-15 07:13:20");
  UnsetEnvironmentValue("TZ");
  tzset();
  EXPECT_EQ(Mismatches(times), "") << "no TZ";
  ScopedTimeZone::Set("EST5");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(1700000000, 0)),
            "2023-11-14 17:13:20");
}

TEST(FileTimeToDateTest, FollowsTheZoneFromTheMomentTzChanges) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(1700000000, 0)),
            "2023-11-14 23:13:20");
  // Before tzset() is called, and after.
  SetEnvironmentValue("TZ", "JST-9");
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(1700000000, 0)),
            "2023-11-15 07:13:20");
  tzset();
  EXPECT_EQ(FormatGeneralDate(FileTimeToDate(1700000000, 0)),
            "2023-11-15 07:13:20");
}

TEST(FileTimeToDateTest, ThreadsConvertingTogetherAgreeWithOne) {
  ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const std::vector<std::int64_t> times = Sweep(k1900, k2100, 30011);
  std::vector<double> alone;
  for (const std::int64_t t : times) {
    alone.push_back(FileTimeToDate(t, NanosecondsFor(t)));
  }
  std::atomic<int> ready{0};
  std::vector<double> together[2];
  auto convert = [&](std::vector<double>* dates) {
    ++ready;
    while (ready < 2) std::this_thread::yield();
    for (const std::int64_t t : times) {
      dates->push_back(FileTimeToDate(t, NanosecondsFor(t)));
    }
  };
  std::thread first(convert, &together[0]);
  std::thread second(convert, &together[1]);
  first.join();
  second.join();
  EXPECT_EQ(together[0], alone);
  EXPECT_EQ(together[1], alone);
}

TEST(FormatGeneralDateTest, YearsKeepFourDigitsAndFieldsTwo) {
  EXPECT_EQ(FormatGeneralDate(kFirstDate), "0100-01-01 00:00:00");
  EXPECT_EQ(FormatGeneralDate(DateFromParts(Parts(999, 2, 3, 4, 5, 6))),
            "0999-02-03 04:05:06");
  EXPECT_EQ(FormatGeneralDate(DateFromParts(Parts(9999, 12, 31, 23, 59, 59))),
            "9999-12-31 23:59:59");
  EXPECT_EQ(FormatGeneralDate(DateFromParts(Parts(2026, 3, 4))),
            "2026-03-04 00:00:00");
  EXPECT_EQ(
      FormatGeneralDate(DateFromParts(Parts(2026, 12, 31, 23, 59, 59, 999))),
      "2026-12-31 23:59:59");
  EXPECT_EQ(FormatGeneralDate(DateFromParts(Parts(1899, 12, 29, 23, 59, 59))),
            "1899-12-29 23:59:59");
}

TEST(FormatDateTest, NumbersAreNotPaddedUnlessTwoDigits) {
  EXPECT_EQ(FormatDate(kFirstDate, "yyyy-d hh:nn h"), "100-1 00:00 0");
  EXPECT_EQ(
      FormatDate(DateFromParts(Parts(2026, 11, 22, 23, 9)), "d yyyy hh:nn h"),
      "22 2026 23:09 23");
}

TEST(FormatMomentTest, YearsKeepFourDigitsAndOffsetsTheirSign) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  ScopedTimeZone zone("UTC0");
  EXPECT_EQ(FormatMoment(0), "1970-01-01T00:00:00+00:00");
  EXPECT_EQ(FormatMoment(-1), "1969-12-31T23:59:59+00:00");
  EXPECT_EQ(FormatMoment(-59011459200), "0100-01-01T00:00:00+00:00");
  EXPECT_EQ(FormatMoment(-59011459201), "0099-12-31T23:59:59+00:00");
  EXPECT_EQ(FormatMoment(-62198755200), "-001-01-01T00:00:00+00:00");
  EXPECT_EQ(FormatMoment(253402300799), "9999-12-31T23:59:59+00:00");
  EXPECT_EQ(FormatMoment(253402300800), "10000-01-01T00:00:00+00:00");
  ScopedTimeZone::Set("IST-5:30");
  EXPECT_EQ(FormatMoment(1704067200), "2024-01-01T05:30:00+05:30");
  ScopedTimeZone::Set("NST3:30");
  EXPECT_EQ(FormatMoment(1704067200), "2023-12-31T20:30:00-03:30");
  ScopedTimeZone::Set("<-0930>9:30");
  EXPECT_EQ(FormatMoment(1704067200), "2023-12-31T14:30:00-09:30");
}

}  // namespace
}  // namespace pairwell
