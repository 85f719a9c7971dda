#include "zenutl/time_functions.h"

#include <gtest/gtest.h>
#include <time.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/time_zone.h"
#include "time/time_functions_internal.h"

namespace {

// Sets TZ for one test and puts the previous value back afterwards.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    const char* previous = std::getenv("TZ");
    hadPrevious_ = previous != nullptr;
    if (hadPrevious_) previous_ = previous;
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ScopedTimeZone() {
    if (hadPrevious_) {
      setenv("TZ", previous_.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  bool hadPrevious_ = false;
  std::string previous_;
};

// Replaces the zone query for one test.
class ScopedTimeZoneIdQuery {
 public:
  explicit ScopedTimeZoneIdQuery(zenutl::detail::TimeZoneIdQuery query)
      : previous_(zenutl::detail::SetTimeZoneIdQuery(query)) {}
  ~ScopedTimeZoneIdQuery() { zenutl::detail::SetTimeZoneIdQuery(previous_); }

 private:
  zenutl::detail::TimeZoneIdQuery previous_;
};

DWORD FailingZoneQuery() {
  return zenutl::platform::kTimeZoneIdInvalid;
}
DWORD ZoneWithoutDaylightSavingQuery() {
  return zenutl::platform::kTimeZoneIdUnknown;
}

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
  const int year = t.tm_year + 1900;
  return kBefore[t.tm_mon] + (year % 4 == 0 && t.tm_mon > 1) + t.tm_mday - 1;
}

// Whether the wall-clock hour of `seconds` also occurs an hour earlier or later.
bool RepeatsWallClockHour(long long seconds) {
  tm at{};
  const time_t t = static_cast<time_t>(seconds);
  localtime_r(&t, &at);
  for (const time_t other : {t - 3600, t + 3600}) {
    tm near{};
    localtime_r(&other, &near);
    if (near.tm_hour == at.tm_hour && near.tm_mday == at.tm_mday) return true;
  }
  return false;
}

tm MakeTm(int year, int month, int day, int hour, int minute, int second, int wday) {
  tm t{};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  t.tm_wday = wday;
  return t;
}

TEST(ZnAscTime, PrintsFixedWidthFieldsWithLeadingZeros) {
  const struct {
    tm time;
    const char* expected;
  } cases[] = {
      {MakeTm(2010, 3, 4, 5, 6, 7, 4), "Thu Mar 04 05:06:07 2010\n"},
      {MakeTm(1970, 1, 1, 0, 0, 0, 4), "Thu Jan 01 00:00:00 1970\n"},
      {MakeTm(9999, 12, 31, 23, 59, 60, 5), "Fri Dec 31 23:59:60 9999\n"},
      {MakeTm(999, 7, 15, 12, 0, 0, 0), "Sun Jul 15 12:00:00  999\n"},
      {MakeTm(1900, 2, 29, 1, 2, 3, 6), "Sat Feb 29 01:02:03 1900\n"},  // printed, not checked
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    char buffer[26];
    EXPECT_EQ(znasctime_r(&c.time, buffer), buffer);
    EXPECT_STREQ(buffer, c.expected);
  }
}

TEST(ZnAscTime, RefusesFieldsThatWouldOverrunTheBufferAndLeavesItAlone) {
  const struct {
    tm time;
    const char* label;
  } cases[] = {
      {MakeTm(2010, 3, 4, 5, 6, 7, 7), "weekday 7"},
      {MakeTm(2010, 3, 4, 5, 6, 7, -1), "weekday -1"},
      {MakeTm(2010, 13, 4, 5, 6, 7, 4), "month 12"},
      {MakeTm(2010, 0, 4, 5, 6, 7, 4), "month -1"},
      {MakeTm(2010, 3, 100, 5, 6, 7, 4), "day 100"},
      {MakeTm(2010, 3, 4, -1, 6, 7, 4), "hour -1"},
      {MakeTm(2010, 3, 4, 5, 6, 100, 4), "second 100"},
      {MakeTm(10000, 3, 4, 5, 6, 7, 4), "year 10000"},
      {MakeTm(-1, 3, 4, 5, 6, 7, 4), "year -1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.label);
    char buffer[26] = "untouched";
    EXPECT_EQ(znasctime_r(&c.time, buffer), nullptr);
    EXPECT_STREQ(buffer, "untouched");
  }
  const tm valid = MakeTm(2010, 3, 4, 5, 6, 7, 4);
  EXPECT_EQ(znasctime_r(&valid, nullptr), nullptr);
  char buffer[26];
  EXPECT_EQ(znasctime_r(nullptr, buffer), nullptr);
}

TEST(ZnGmTime, BreaksDownKnownInstants) {
  const struct {
    long long seconds;
    const char* expected;
  } cases[] = {
      {0, "1970-01-01 00:00:00 wday 4 yday 0 isdst 0"},
      {-1, "1969-12-31 23:59:59 wday 3 yday 364 isdst 0"},
      {1267679167, "2010-03-04 05:06:07 wday 4 yday 62 isdst 0"},
      {951782400, "2000-02-29 00:00:00 wday 2 yday 59 isdst 0"},
      // Century years count as leap years for tm_yday alone: the calendar says 59 and 365.
      {4107542400, "2100-03-01 00:00:00 wday 1 yday 60 isdst 0"},
      {-2203891200, "1900-03-01 00:00:00 wday 4 yday 60 isdst 0"},
      {4133980799, "2100-12-31 23:59:59 wday 5 yday 365 isdst 0"},
      {-11644473600, "1601-01-01 00:00:00 wday 1 yday 0 isdst 0"},
      {910692730085, "30828-09-14 02:48:05 wday 4 yday 257 isdst 0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seconds);
    tm result{};
    ASSERT_EQ(zngmtime_r(&c.seconds, &result), &result);
    EXPECT_EQ(Fields(result), c.expected);
  }
}

TEST(ZnGmTime, ReturnsNullOutsideTheFileTimeRange) {
  for (const long long seconds : {-11644473601LL, 910692730086LL, LLONG_MIN, LLONG_MAX}) {
    SCOPED_TRACE(seconds);
    tm result{};
    EXPECT_EQ(zngmtime_r(&seconds, &result), nullptr);
    char buffer[26];
    EXPECT_EQ(znctime_r(&seconds, buffer), nullptr);
    EXPECT_EQ(znlocaltime_r(&seconds, &result), nullptr);
  }
  tm result{};
  const long long zero = 0;
  EXPECT_EQ(zngmtime_r(nullptr, &result), nullptr);
  EXPECT_EQ(zngmtime_r(&zero, nullptr), nullptr);
  EXPECT_EQ(znlocaltime_r(&zero, nullptr), nullptr);
  EXPECT_EQ(znctime_r(&zero, nullptr), nullptr);
}

// The C library's gmtime_r as the oracle, from 1601 to 3000 in steps that walk through every
// weekday, hour and month; tm_yday is checked against the rule without centuries.
TEST(ZnGmTime, AgreesWithTheCLibraryExceptForTheCenturyRuleOfTmYday) {
  int dayOfYearDifferences = 0;
  for (long long seconds = -11644473600LL; seconds < 32503680000LL; seconds += 7 * 86400 + 3607) {
    tm ours{};
    tm oracle{};
    const time_t t = static_cast<time_t>(seconds);
    ASSERT_NE(zngmtime_r(&seconds, &ours), nullptr) << seconds;
    ASSERT_NE(gmtime_r(&t, &oracle), nullptr);
    const int expectedYday = YdayWithoutCenturyRule(oracle);
    ASSERT_EQ(Fields(ours),
              Fields(oracle).replace(Fields(oracle).find("yday"), std::string::npos,
                                     "yday " + std::to_string(expectedYday) + " isdst 0"))
        << seconds;
    dayOfYearDifferences += ours.tm_yday != oracle.tm_yday;
  }
  EXPECT_GT(dayOfYearDifferences, 0);  // the walk does cross March of a century year
}

struct LocalCase {
  const char* zone;
  long long seconds;
  const char* expectedLocal;  // with tm_isdst
  const char* expectedCtime;
};

// Local breakdowns on both sides of daylight-saving changes, and in zones without them.
const LocalCase kLocalCases[] = {
    {"UTC", 1267679167, "2010-03-04 05:06:07 wday 4 yday 62 isdst -1",
     "Thu Mar 04 05:06:07 2010\n"},
    // Stockholm: 2021-03-28 01:00Z clocks go from 02:00 CET to 03:00 CEST.
    {"Europe/Stockholm", 1616893199, "2021-03-28 01:59:59 wday 0 yday 86 isdst 0",
     "Sun Mar 28 01:59:59 2021\n"},
    {"Europe/Stockholm", 1616893200, "2021-03-28 03:00:00 wday 0 yday 86 isdst 1",
     "Sun Mar 28 03:00:00 2021\n"},
    // 2021-10-31 01:00Z clocks go back from 03:00 CEST to 02:00 CET; the repeated hour reads as
    // daylight time both times.
    {"Europe/Stockholm", 1635640200, "2021-10-31 02:30:00 wday 0 yday 303 isdst 1",
     "Sun Oct 31 02:30:00 2021\n"},
    {"Europe/Stockholm", 1635643800, "2021-10-31 02:30:00 wday 0 yday 303 isdst 1",
     "Sun Oct 31 02:30:00 2021\n"},
    {"Europe/Stockholm", 1635645600, "2021-10-31 03:00:00 wday 0 yday 303 isdst 0",
     "Sun Oct 31 03:00:00 2021\n"},
    {"Europe/Stockholm", 0, "1970-01-01 01:00:00 wday 4 yday 0 isdst 0",
     "Thu Jan 01 01:00:00 1970\n"},
    // New York: 2021-03-14 07:00Z from 02:00 EST to 03:00 EDT; 2021-11-07 06:00Z back to 01:00.
    {"America/New_York", 1615705199, "2021-03-14 01:59:59 wday 0 yday 72 isdst 0",
     "Sun Mar 14 01:59:59 2021\n"},
    {"America/New_York", 1615705200, "2021-03-14 03:00:00 wday 0 yday 72 isdst 1",
     "Sun Mar 14 03:00:00 2021\n"},
    {"America/New_York", 1636263000, "2021-11-07 01:30:00 wday 0 yday 310 isdst 1",
     "Sun Nov 07 01:30:00 2021\n"},
    {"America/New_York", 1636270200, "2021-11-07 02:30:00 wday 0 yday 310 isdst 0",
     "Sun Nov 07 02:30:00 2021\n"},
    // New Year's Eve of a century year crosses into the day of the year 365 locally.
    {"America/New_York", 4133998799, "2100-12-31 23:59:59 wday 5 yday 365 isdst 0",
     "Fri Dec 31 23:59:59 2100\n"},
    // Zones without daylight saving convert, but tm_isdst is -1 and znctime_r prints UTC.
    {"Asia/Kolkata", 1267679167, "2010-03-04 10:36:07 wday 4 yday 62 isdst -1",
     "Thu Mar 04 05:06:07 2010\n"},
    {"Asia/Kolkata", 1622575800, "2021-06-02 01:00:00 wday 3 yday 152 isdst -1",
     "Tue Jun 01 19:30:00 2021\n"},
    {"America/Phoenix", 1267679167, "2010-03-03 22:06:07 wday 3 yday 61 isdst -1",
     "Thu Mar 04 05:06:07 2010\n"},
};

TEST(ZnLocalTime, FollowsTheZoneAcrossDaylightSavingChanges) {
  for (const LocalCase& c : kLocalCases) {
    SCOPED_TRACE(std::string(c.zone) + " " + std::to_string(c.seconds));
    ScopedTimeZone zone(c.zone);
    tm local{};
    ASSERT_EQ(znlocaltime_r(&c.seconds, &local), &local);
    EXPECT_EQ(Fields(local), c.expectedLocal);
  }
}

TEST(ZnCTime, ConvertsOnlyInZonesWithDaylightSaving) {
  for (const LocalCase& c : kLocalCases) {
    SCOPED_TRACE(std::string(c.zone) + " " + std::to_string(c.seconds));
    ScopedTimeZone zone(c.zone);
    char buffer[26];
    ASSERT_EQ(znctime_r(&c.seconds, buffer), buffer);
    EXPECT_STREQ(buffer, c.expectedCtime);
  }
}

TEST(ZnLocalTime, AgreesWithTheCLibraryOnWallClockFieldsOverTwoCenturies) {
  for (const char* zoneName : {"Europe/Stockholm", "America/New_York", "Asia/Kolkata"}) {
    SCOPED_TRACE(zoneName);
    ScopedTimeZone zone(zoneName);
    for (long long seconds = -2208988800LL; seconds < 4102444800LL; seconds += 9 * 86400 + 4801) {
      tm ours{};
      tm oracle{};
      const time_t t = static_cast<time_t>(seconds);
      ASSERT_NE(znlocaltime_r(&seconds, &ours), nullptr) << seconds;
      ASSERT_NE(localtime_r(&t, &oracle), nullptr);
      ASSERT_EQ(Fields(ours).substr(0, 27), Fields(oracle).substr(0, 27)) << seconds;
      ASSERT_EQ(ours.tm_yday, YdayWithoutCenturyRule(oracle)) << seconds;
      if (!RepeatsWallClockHour(seconds)) {
        ASSERT_EQ(ours.tm_isdst, std::string(zoneName) == "Asia/Kolkata" ? -1 : oracle.tm_isdst)
            << seconds;
      }
    }
  }
}

TEST(ZnLocalTime, SeesAChangeOfTzWithoutTheCallerCallingTzset) {
  ScopedTimeZone zone("UTC");
  setenv("TZ", "Asia/Kolkata", 1);
  const long long seconds = 1267679167;
  tm local{};
  ASSERT_NE(znlocaltime_r(&seconds, &local), nullptr);
  EXPECT_EQ(Fields(local), "2010-03-04 10:36:07 wday 4 yday 62 isdst -1");
}

TEST(ZnLocalTime, UsesUtcFieldsWhenTheZoneCannotBeQueried) {
  ScopedTimeZone zone("Europe/Stockholm");
  ScopedTimeZoneIdQuery failing(&FailingZoneQuery);
  const long long summer = 1625140800;  // 2021-07-01 12:00:00Z
  tm local{};
  ASSERT_NE(znlocaltime_r(&summer, &local), nullptr);
  EXPECT_EQ(Fields(local), "2021-07-01 12:00:00 wday 4 yday 181 isdst -1");
  char buffer[26];
  ASSERT_NE(znctime_r(&summer, buffer), nullptr);
  EXPECT_STREQ(buffer, "Thu Jul 01 12:00:00 2021\n");
  EXPECT_EQ(ZnTimeUtl::GetUtcOffset(), 0);
}

// A zone reported as having no daylight saving: znlocaltime_r still converts, znctime_r not.
TEST(ZnLocalTime, ConvertsWithoutDaylightFlagWhenTheZoneReportsNoDaylightSaving) {
  ScopedTimeZone zone("Europe/Stockholm");
  ScopedTimeZoneIdQuery noDaylightSaving(&ZoneWithoutDaylightSavingQuery);
  const long long summer = 1625140800;
  tm local{};
  ASSERT_NE(znlocaltime_r(&summer, &local), nullptr);
  EXPECT_EQ(Fields(local), "2021-07-01 14:00:00 wday 4 yday 181 isdst -1");
  char buffer[26];
  ASSERT_NE(znctime_r(&summer, buffer), nullptr);
  EXPECT_STREQ(buffer, "Thu Jul 01 12:00:00 2021\n");
}

TEST(ZnLocalTime, GivesEachThreadItsOwnResult) {
  ScopedTimeZone zone("Europe/Stockholm");
  const long long winter = 1610712000;  // 2021-01-15 12:00:00Z
  const long long summer = 1626350400;  // 2021-07-15 12:00:00Z
  std::vector<std::thread> threads;
  std::vector<int> mismatches(4, 0);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([i, winter, summer, &mismatches] {
      const long long seconds = i % 2 ? summer : winter;
      const std::string expectedFields = i % 2 ? "2021-07-15 14:00:00 wday 4 yday 195 isdst 1"
                                               : "2021-01-15 13:00:00 wday 5 yday 14 isdst 0";
      const char* expectedText =
          i % 2 ? "Thu Jul 15 14:00:00 2021\n" : "Fri Jan 15 13:00:00 2021\n";
      for (int round = 0; round < 500; ++round) {
        tm local{};
        char text[26];
        if (znlocaltime_r(&seconds, &local) == nullptr || Fields(local) != expectedFields ||
            znctime_r(&seconds, text) == nullptr || std::strcmp(text, expectedText) != 0) {
          ++mismatches[i];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

TEST(GetUtcOffset, GivesTheZonesOffsetAtThisMoment) {
  const struct {
    const char* zone;
  } cases[] = {{"UTC"},          {"Europe/Stockholm"}, {"America/New_York"},
               {"Asia/Kolkata"}, {"America/Phoenix"},  {"Australia/Lord_Howe"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.zone);
    ScopedTimeZone zone(c.zone);
    const time_t before = time(nullptr);
    const int offset = ZnTimeUtl::GetUtcOffset();
    tm oracle{};
    localtime_r(&before, &oracle);
    EXPECT_EQ(offset, oracle.tm_gmtoff);
  }
  {
    ScopedTimeZone zone("Asia/Kolkata");
    EXPECT_EQ(ZnTimeUtl::GetUtcOffset(), 19800);
  }
  {
    ScopedTimeZone zone("America/Phoenix");
    EXPECT_EQ(ZnTimeUtl::GetUtcOffset(), -25200);
  }
}

TEST(ZnMkGmTime, InvertsZnGmTimeAndNormalisesFieldsOutOfRange) {
  for (const long long seconds : {0LL, -1LL, 951782400LL, 4107542400LL, -11644473600LL}) {
    SCOPED_TRACE(seconds);
    tm broken{};
    ASSERT_NE(zngmtime_r(&seconds, &broken), nullptr);
    EXPECT_EQ(znmkgmtime(&broken), seconds);
  }
  tm overflowing = MakeTm(2020, 13, 32, 25, 61, 0, 0);  // 2021-02-01 plus 26 hours 1 minute
  overflowing.tm_isdst = 1;
  EXPECT_EQ(znmkgmtime(&overflowing), 1612231260);
  EXPECT_EQ(Fields(overflowing), "2021-02-02 02:01:00 wday 2 yday 32 isdst 0");
  tm unrepresentable = MakeTm(2020, 1, 1, 0, 0, 0, 0);
  unrepresentable.tm_year = INT_MAX;
  unrepresentable.tm_mon = INT_MAX;
  EXPECT_EQ(znmkgmtime(&unrepresentable), -1);
  EXPECT_EQ(znmkgmtime(nullptr), -1);
}

}  // namespace
