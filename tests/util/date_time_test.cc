#include "util/date_time.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

#include "support/scoped_time_zone.h"

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
  localtime_r(&seconds, &local);
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
  // 2026-07-01 10:00 UTC is noon in summer time; 2026-01-01 10:00 UTC is
  // eleven in winter.
  EXPECT_EQ(FormatMoment(1782900000), "2026-07-01T12:00:00+02:00");
  EXPECT_EQ(FormatMoment(1767261600), "2026-01-01T11:00:00+01:00");
  ScopedTimeZone::Set("PST8PDT,M3.2.0,M11.1.0");
  EXPECT_EQ(FormatMoment(1767261600), "2026-01-01T02:00:00-08:00");
}

TEST_F(LocalTimeTest, MomentIsReadWhateverZoneWroteIt) {
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

}  // namespace
}  // namespace pairwell
