#include "zenutl/time_functions.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/system_time.h"
#include "platform/time_zone.h"
#include "time/time_functions_internal.h"

namespace zenutl {
namespace detail {
namespace {

std::atomic<TimeZoneIdQuery> gTimeZoneIdQuery{&platform::CurrentTimeZoneId};

}  // namespace

TimeZoneIdQuery SetTimeZoneIdQuery(TimeZoneIdQuery query) {
  return gTimeZoneIdQuery.exchange(query ? query : &platform::CurrentTimeZoneId);
}

DWORD QueryTimeZoneId() {
  return gTimeZoneIdQuery.load()();
}

}  // namespace detail
}  // namespace zenutl

namespace {

using zenutl::platform::kTimeZoneIdDaylight;
using zenutl::platform::kTimeZoneIdInvalid;
using zenutl::platform::kTimeZoneIdStandard;

constexpr long long kTicksPerSecond = 10000000LL;
const char* const kWeekdayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const kMonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// 1970-01-01 00:00:00 as a FILETIME, made once; a function-local constant so that static
// initialisers elsewhere may already use the time functions.
long long FileTimeOf1970() {
  static const long long ticks = [] {
    const SYSTEMTIME epoch = {1970, 1, 4, 1, 0, 0, 0, 0};
    FILETIME fileTime = {0, 0};
    zenutl::platform::SystemTimeToFileTime(epoch, &fileTime);
    return static_cast<long long>((static_cast<std::uint64_t>(fileTime.dwHighDateTime) << 32) |
                                  fileTime.dwLowDateTime);
  }();
  return ticks;
}

// Seconds since 1970 to a SYSTEMTIME through the FILETIME count; false where the count has no
// FILETIME (before 1601) or FileTimeToSystemTime refuses it (after 30828).
bool SystemTimeOfSeconds(const long long* seconds, SYSTEMTIME* systemTime) {
  const long long epoch = FileTimeOf1970();
  if (seconds == nullptr || *seconds < -(epoch / kTicksPerSecond) ||
      *seconds > (INT64_MAX - epoch) / kTicksPerSecond) {
    return false;
  }
  const std::uint64_t ticks = static_cast<std::uint64_t>(*seconds * kTicksPerSecond + epoch);
  const FILETIME fileTime = {static_cast<DWORD>(ticks & 0xFFFFFFFF),
                             static_cast<DWORD>(ticks >> 32)};
  return zenutl::platform::FileTimeToSystemTime(fileTime, systemTime);
}

// Any year divisible by 4 counts as a leap year here, 1900 and 2100 included: the day of the
// year has always been computed so, and stored records depend on it.
int DayOfYearWithoutCenturyRule(const SYSTEMTIME& systemTime) {
  static const int kDaysBeforeMonth[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  const bool leap = systemTime.wYear % 400 == 0 || systemTime.wYear % 4 == 0;
  return kDaysBeforeMonth[systemTime.wMonth - 1] + (leap && systemTime.wMonth > 2) +
         systemTime.wDay - 1;
}

void BreakDown(const SYSTEMTIME& systemTime, int isDaylight, long offset, tm* result) {
  *result = tm{};
  result->tm_sec = systemTime.wSecond;
  result->tm_min = systemTime.wMinute;
  result->tm_hour = systemTime.wHour;
  result->tm_mday = systemTime.wDay;
  result->tm_mon = systemTime.wMonth - 1;
  result->tm_year = systemTime.wYear - 1900;
  result->tm_wday = systemTime.wDayOfWeek;
  result->tm_yday = DayOfYearWithoutCenturyRule(systemTime);
  result->tm_isdst = isDaylight;
  result->tm_gmtoff = offset;
}

// Converts the wall-clock time back twice, under the zone's rules and under its standard
// offset alone; daylight time is where the two hours differ.
int DaylightFlagOfLocalTime(const SYSTEMTIME& local) {
  SYSTEMTIME underRules{};
  SYSTEMTIME standardOnly{};
  if (!zenutl::platform::ZoneLocalTimeToUtc(local, true, &underRules) ||
      !zenutl::platform::ZoneLocalTimeToUtc(local, false, &standardOnly)) {
    return -1;
  }
  return underRules.wHour != standardOnly.wHour ? 1 : 0;
}

long OffsetBetween(const SYSTEMTIME& local, const SYSTEMTIME& utc) {
  return static_cast<long>(zenutl::platform::SecondsFromSystemTime(local) -
                           zenutl::platform::SecondsFromSystemTime(utc));
}

bool FitsTwoDigits(int value) {
  return value >= 0 && value <= 99;
}

char* PrintAscTime(int weekday, int month, int day, int hour, int minute, int second, int year,
                   char* buffer) {
  if (buffer == nullptr || weekday < 0 || weekday > 6 || month < 0 || month > 11 ||
      !FitsTwoDigits(day) || !FitsTwoDigits(hour) || !FitsTwoDigits(minute) ||
      !FitsTwoDigits(second) || year < 0 || year > 9999) {
    return nullptr;
  }
  std::snprintf(buffer, 26, "%s %s %02u %02u:%02u:%02u %4u\n", kWeekdayNames[weekday],
                kMonthNames[month], static_cast<unsigned>(day), static_cast<unsigned>(hour),
                static_cast<unsigned>(minute), static_cast<unsigned>(second),
                static_cast<unsigned>(year));
  return buffer;
}

}  // namespace

char* znasctime_r(tm const* time, char* buffer) {
  if (time == nullptr) return nullptr;
  return PrintAscTime(time->tm_wday, time->tm_mon, time->tm_mday, time->tm_hour, time->tm_min,
                      time->tm_sec, time->tm_year + 1900, buffer);
}

// Only a zone with daylight saving is converted; a zone without it prints UTC (see the header).
char* znctime_r(long long const* time, char* buffer) {
  SYSTEMTIME utc{};
  if (buffer == nullptr || !SystemTimeOfSeconds(time, &utc)) return nullptr;
  SYSTEMTIME shown = utc;
  const DWORD zoneId = zenutl::detail::QueryTimeZoneId();
  if ((zoneId == kTimeZoneIdStandard || zoneId == kTimeZoneIdDaylight) &&
      !zenutl::platform::UtcToZoneLocalTime(utc, &shown)) {
    return nullptr;
  }
  return PrintAscTime(shown.wDayOfWeek, shown.wMonth - 1, shown.wDay, shown.wHour, shown.wMinute,
                      shown.wSecond, shown.wYear, buffer);
}

tm* zngmtime_r(long long const* time, tm* result) {
  SYSTEMTIME utc{};
  if (result == nullptr || !SystemTimeOfSeconds(time, &utc)) return nullptr;
  BreakDown(utc, 0, 0, result);
  return result;
}

tm* znlocaltime_r(long long const* time, tm* result) {
  SYSTEMTIME utc{};
  if (result == nullptr || !SystemTimeOfSeconds(time, &utc)) return nullptr;
  const DWORD zoneId = zenutl::detail::QueryTimeZoneId();
  if (zoneId == kTimeZoneIdInvalid) {
    BreakDown(utc, -1, 0, result);
    return result;
  }
  SYSTEMTIME local{};
  if (!zenutl::platform::UtcToZoneLocalTime(utc, &local)) return nullptr;
  const bool hasDaylightRules = zoneId == kTimeZoneIdStandard || zoneId == kTimeZoneIdDaylight;
  BreakDown(local, hasDaylightRules ? DaylightFlagOfLocalTime(local) : -1,
            OffsetBetween(local, utc), result);
  return result;
}

long long znmkgmtime(tm* time) {
  if (time == nullptr) return -1;
  return static_cast<long long>(timegm(time));
}

namespace ZnTimeUtl {

int GetUtcOffset() {
  const long long now = static_cast<long long>(::time(nullptr));
  tm local{};
  if (znlocaltime_r(&now, &local) == nullptr) return 0;
  return static_cast<int>(znmkgmtime(&local) - now);
}

}  // namespace ZnTimeUtl
