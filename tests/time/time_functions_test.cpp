#include "zenutl/time_functions.h"

#include <gtest/gtest.h>
#include <time.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/time_zone.h"
#include "support/scoped_environment.h"
#include "time/time_functions_internal.h"

namespace {

using zenutl_test::ScopedTimeZone;

std::string Fields(const tm& t) {
  char text[96];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d wday %d yday %d isdst %d",
                t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, t.tm_wday,
                t.tm_yday, t.tm_isdst);
  return text;
}

// Every year divisible by 4 is a leap year for tm_yday.
int YdayWithoutCenturyRule(const tm& t) {
  static const int kBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  return kBefore[t.tm_mon] + (t.tm_year % 4 == 0 && t.tm_mon > 1) + t.tm_mday - 1;
}

// Whether the local wall-clock hour of `t` also occurs an hour earlier or later.
bool RepeatsWallClockHour(time_t t) {
  tm at{}, before{}, after{};
  const time_t earlier = t - 3600, later = t + 3600;
  localtime_r(&t, &at);
  localtime_r(&earlier, &before);
  localtime_r(&later, &after);
  return before.tm_hour == at.tm_hour || after.tm_hour == at.tm_hour;
}

tm MakeTm(int year, int month, int day, int hour, int minute, int second, int wday) {
  tm t{};
  t.tm_year = year - 1900, t.tm_mon = month - 1, t.tm_mday = day;
  t.tm_hour = hour, t.tm_min = minute, t.tm_sec = second, t.tm_wday = wday;
  return t;
}

TEST(ZnAscTime, PrintsTwoDigitFieldsOrRefusesWhatWouldNotFit) {
  const struct {
    tm time;
    const char* expected;  // null: refused
  } cases[] = {
      {MakeTm(2010, 3, 4, 5, 6, 7, 4), "Thu Mar 04 05:06:07 2010\n"},
      {MakeTm(9999, 12, 31, 23, 59, 60, 5), "Fri Dec 31 23:59:60 9999\n"},
      {MakeTm(999, 7, 15, 12, 0, 0, 0), "Sun Jul 15 12:00:00  999\n"},
      {MakeTm(2010, 3, 4, 5, 6, 7, 7), nullptr},
      {MakeTm(2010, 13, 4, 5, 6, 7, 4), nullptr},
      {MakeTm(2010, 3, 4, -1, 6, 7, 4), nullptr},
      {MakeTm(10000, 3, 4, 5, 6, 7, 4), nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Fields(c.time));
    char buffer[26] = "untouched";
    EXPECT_EQ(znasctime_r(&c.time, buffer), c.expected ? buffer : nullptr);
    EXPECT_STREQ(buffer, c.expected ? c.expected : "untouched");
  }
  EXPECT_EQ(znasctime_r(&cases[0].time, nullptr), nullptr);
}

TEST(ZnGmTime, BreaksDownWithTmYdayIgnoringTheCenturyRule) {
  const struct {
    long long seconds;
    const char* expected;  // null: outside the years 1601 to 30828
  } cases[] = {
      {0, "1970-01-01 00:00:00 wday 4 yday 0 isdst 0"},
      {4107542400, "2100-03-01 00:00:00 wday 1 yday 60 isdst 0"},  // the calendar says 59
      {-2203891200, "1900-03-01 00:00:00 wday 4 yday 60 isdst 0"},
      {4133980799, "2100-12-31 23:59:59 wday 5 yday 365 isdst 0"},
      {-11644473600, "1601-01-01 00:00:00 wday 1 yday 0 isdst 0"},
      {910692730085, "30828-09-14 02:48:05 wday 4 yday 257 isdst 0"},
      {-11644473601, nullptr},
      {910692730086, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seconds);
    tm result{};
    char text[26];
    ASSERT_EQ(zngmtime_r(&c.seconds, &result), c.expected ? &result : nullptr);
    if (c.expected) {
      EXPECT_EQ(Fields(result), c.expected);
    } else {
      EXPECT_EQ(znlocaltime_r(&c.seconds, &result), nullptr);
      EXPECT_EQ(znctime_r(&c.seconds, text), nullptr);
    }
  }
  EXPECT_EQ(zngmtime_r(nullptr, nullptr), nullptr);
}

// The C library as the oracle, 1601 to 3000, in steps that walk through weekdays and hours.
TEST(ZnGmTime, AgreesWithTheCLibraryApartFromTmYday) {
  for (long long seconds = -11644473600LL; seconds < 32503680000LL; seconds += 7 * 86400 + 3607) {
    tm ours{}, oracle{};
    const time_t t = static_cast<time_t>(seconds);
    ASSERT_NE(zngmtime_r(&seconds, &ours), nullptr) << seconds;
    gmtime_r(&t, &oracle);
    oracle.tm_yday = YdayWithoutCenturyRule(oracle);
    ASSERT_EQ(Fields(ours), Fields(oracle)) << seconds;
  }
}

struct LocalCase {
  const char* zone;
  long long seconds;
  const char* expectedLocal;
  const char* expectedCtime;
};

const LocalCase kLocalCases[] = {
    {"UTC", 1267679167, "2010-03-04 05:06:07 wday 4 yday 62 isdst -1",
     "Thu Mar 04 05:06:07 2010\n"},
    // Stockholm, 2021-03-28 01:00Z: 02:00 CET becomes 03:00 CEST.
    {"Europe/Stockholm", 1616893199, "2021-03-28 01:59:59 wday 0 yday 86 isdst 0",
     "Sun Mar 28 01:59:59 2021\n"},
    {"Europe/Stockholm", 1616893200, "2021-03-28 03:00:00 wday 0 yday 86 isdst 1",
     "Sun Mar 28 03:00:00 2021\n"},
    // 2021-10-31 01:00Z: back from 03:00 CEST to 02:00 CET; the repeated hour reads as daylight
    // time both times.
    {"Europe/Stockholm", 1635640200, "2021-10-31 02:30:00 wday 0 yday 303 isdst 1",
     "Sun Oct 31 02:30:00 2021\n"},
    {"Europe/Stockholm", 1635643800, "2021-10-31 02:30:00 wday 0 yday 303 isdst 1",
     "Sun Oct 31 02:30:00 2021\n"},
    {"Europe/Stockholm", 1635645600, "2021-10-31 03:00:00 wday 0 yday 303 isdst 0",
     "Sun Oct 31 03:00:00 2021\n"},
    // New York, 2021-03-14 07:00Z: 02:00 EST becomes 03:00 EDT.
    {"America/New_York", 1615705200, "2021-03-14 03:00:00 wday 0 yday 72 isdst 1",
     "Sun Mar 14 03:00:00 2021\n"},
    {"America/New_York", 4133998799, "2100-12-31 23:59:59 wday 5 yday 365 isdst 0",
     "Fri Dec 31 23:59:59 2100\n"},
    // Zones without daylight saving: converted with tm_isdst -1, but znctime_r prints UTC.
    {"Asia/Kolkata", 1622575800, "2021-06-02 01:00:00 wday 3 yday 152 isdst -1",
     "Tue Jun 01 19:30:00 2021\n"},
    {"America/Phoenix", 1267679167, "2010-03-03 22:06:07 wday 3 yday 61 isdst -1",
     "Thu Mar 04 05:06:07 2010\n"},
};

TEST(ZnLocalTime, FollowsTheZoneAcrossDaylightSavingChangesAndZnCTimeOnlyWhereItHasThem) {
  for (const LocalCase& c : kLocalCases) {
    SCOPED_TRACE(std::string(c.zone) + " " + std::to_string(c.seconds));
    ScopedTimeZone zone(c.zone);
    tm local{};
    char text[26];
    ASSERT_EQ(znlocaltime_r(&c.seconds, &local), &local);
    EXPECT_EQ(Fields(local), c.expectedLocal);
    ASSERT_EQ(znctime_r(&c.seconds, text), text);
    EXPECT_STREQ(text, c.expectedCtime);
  }
}

TEST(ZnLocalTime, AgreesWithTheCLibraryOverTwoCenturiesOutsideRepeatedHours) {
  for (const char* zoneName : {"Europe/Stockholm", "America/New_York", "Asia/Kolkata"}) {
    SCOPED_TRACE(zoneName);
    ScopedTimeZone zone(zoneName);
    const bool hasDaylightSaving = std::strcmp(zoneName, "Asia/Kolkata") != 0;
    for (long long seconds = -2208988800LL; seconds < 4102444800LL; seconds += 9 * 86400 + 4801) {
      tm ours{}, oracle{};
      const time_t t = static_cast<time_t>(seconds);
      ASSERT_NE(znlocaltime_r(&seconds, &ours), nullptr) << seconds;
      localtime_r(&t, &oracle);
      oracle.tm_yday = YdayWithoutCenturyRule(oracle);
      if (!hasDaylightSaving) oracle.tm_isdst = -1;
      if (RepeatsWallClockHour(t)) oracle.tm_isdst = ours.tm_isdst;
      ASSERT_EQ(Fields(ours), Fields(oracle)) << seconds;
    }
  }
}

DWORD FailingZoneQuery() {
  return zenutl::platform::kTimeZoneIdInvalid;
}

// Linux always answers the zone query; where it can't be answered, everything stays UTC.
TEST(ZnLocalTime, KeepsUtcFieldsWhenTheZoneQueryFails) {
  ScopedTimeZone zone("Europe/Stockholm");
  const auto previous = zenutl::detail::SetTimeZoneIdQuery(&FailingZoneQuery);
  const long long summer = 1625140800;  // 2021-07-01 12:00:00Z
  tm local{};
  char text[26] = "";
  const bool converted = znlocaltime_r(&summer, &local) && znctime_r(&summer, text);
  const int offset = ZnTimeUtl::GetUtcOffset();
  zenutl::detail::SetTimeZoneIdQuery(previous);
  ASSERT_TRUE(converted);
  EXPECT_EQ(Fields(local), "2021-07-01 12:00:00 wday 4 yday 181 isdst -1");
  EXPECT_STREQ(text, "Thu Jul 01 12:00:00 2021\n");
  EXPECT_EQ(offset, 0);
}

TEST(GetUtcOffset, IsTheZonesOffsetAtThisMoment) {
  for (const char* zoneName : {"UTC", "Europe/Stockholm", "America/New_York", "Asia/Kolkata",
                               "America/Phoenix", "Australia/Lord_Howe"}) {
    SCOPED_TRACE(zoneName);
    ScopedTimeZone zone(zoneName);
    const time_t now = time(nullptr);
    tm oracle{};
    localtime_r(&now, &oracle);
    EXPECT_EQ(ZnTimeUtl::GetUtcOffset(), oracle.tm_gmtoff);
  }
  ScopedTimeZone zone("UTC");
  setenv("TZ", "Asia/Kolkata", 1);  // seen without the caller calling tzset
  EXPECT_EQ(ZnTimeUtl::GetUtcOffset(), 19800);
}

TEST(ZnMkGmTime, InvertsZnGmTimeAndNormalisesFields) {
  for (const long long seconds : {0LL, -1LL, 4107542400LL, -11644473600LL}) {
    tm broken{};
    ASSERT_NE(zngmtime_r(&seconds, &broken), nullptr);
    EXPECT_EQ(znmkgmtime(&broken), seconds);
  }
  tm overflowing = MakeTm(2020, 13, 32, 25, 61, 0, 0);  // 2021-02-01 plus 26 hours 1 minute
  overflowing.tm_isdst = 1;
  EXPECT_EQ(znmkgmtime(&overflowing), 1612231260);
  EXPECT_EQ(Fields(overflowing), "2021-02-02 02:01:00 wday 2 yday 32 isdst 0");
}

}  // namespace
