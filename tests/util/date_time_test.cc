#include "util/date_time.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

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
  LocalTimeTest() {
    const char* old = getenv("TZ");
    had_tz_ = old != nullptr;
    if (had_tz_) old_tz_ = old;
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
  }
  ~LocalTimeTest() override {
    if (had_tz_) {
      setenv("TZ", old_tz_.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

  bool had_tz_ = false;
  std::string old_tz_;
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

}  // namespace
}  // namespace pairwell
