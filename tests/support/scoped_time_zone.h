// Sets the time zone (TZ) for a test's lifetime and puts the old one back.
// POSIX zone texts ("JST-9", "CET-1CEST,M3.5.0,M10.5.0/3") need no zone
// database.
#ifndef PAIRWELL_TESTS_SUPPORT_SCOPED_TIME_ZONE_H_
#define PAIRWELL_TESTS_SUPPORT_SCOPED_TIME_ZONE_H_

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "support/test_files.h"

// Windows programs take the zone from the system's settings, never from TZ
// rules: a test that moves the zone through TZ runs on POSIX only.
#ifdef _WIN32
#define SKIP_WHERE_TZ_SETS_NO_ZONE() \
  GTEST_SKIP() << "POSIX only: the zone is set through TZ rules"
#else
#define SKIP_WHERE_TZ_SETS_NO_ZONE() static_cast<void>(0)
#endif

namespace pairwell {

class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    const char* before = std::getenv("TZ");
    had_zone_ = before != nullptr;
    if (had_zone_) before_ = before;
    Set(zone);
  }
  ~ScopedTimeZone() {
    if (had_zone_) {
      SetEnvironmentValue("TZ", before_);
    } else {
      UnsetEnvironmentValue("TZ");
    }
    tzset();
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

  static void Set(const char* zone) {
    SetEnvironmentValue("TZ", zone);
    tzset();
  }

 private:
  bool had_zone_ = false;
  std::string before_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_SCOPED_TIME_ZONE_H_
