// The process's time zone, as the Windows time-zone calls present it.
//
// Windows describes a zone by one record of current rules and says whether daylight saving is
// in use; the C library answers per instant from the tz database. These functions give the
// Windows answers from the tz database: TZ if set, else /etc/localtime, re-read (tzset) on each
// call, as Windows reads the current setting on each call.
#ifndef ZENUTL_PLATFORM_TIME_ZONE_H_
#define ZENUTL_PLATFORM_TIME_ZONE_H_

#include <time.h>

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// The answers of GetTimeZoneInformation.
constexpr DWORD kTimeZoneIdUnknown = 0;  // the zone does not use daylight saving
constexpr DWORD kTimeZoneIdStandard = 1;
constexpr DWORD kTimeZoneIdDaylight = 2;
constexpr DWORD kTimeZoneIdInvalid = 0xFFFFFFFF;

// GetTimeZoneInformation: whether the zone uses daylight saving (some moment of the year from
// now is daylight time) and, if so, whether now is standard or daylight time. Invalid only if
// the clock's time can't be broken down.
DWORD CurrentTimeZoneId();

// GetLocalTime: the wall-clock time of now in the current zone, with milliseconds. False only
// if the clock's time can't be broken down.
bool GetLocalTime(SYSTEMTIME* local);

// _localtime64_s: the local breakdown of seconds since 1970 by the zone's rules for that instant;
// false where the C library can't break it down.
bool ZoneLocalBreakdown(long long seconds, tm* local);

// The offset east of UTC, in seconds, that the zone's rules give the instant `seconds` (since
// 1970): the local wall-clock time read as UTC, minus the instant. False as above.
bool ZoneOffsetAt(long long seconds, long* offset);

// SystemTimeToTzSpecificLocalTime for the current zone: the wall-clock time of a UTC time,
// milliseconds kept. Unlike Windows, the offset is the one the tz database has for that
// instant, so historical dates get their historical offsets.
bool UtcToZoneLocalTime(const SYSTEMTIME& utc, SYSTEMTIME* local);

// TzSpecificLocalTimeToSystemTime for the current zone. With `withDaylightRules` the wall-clock
// time is read under the zone's rules, a repeated hour as daylight time; without, under the
// zone's standard offset of that date alone, as Windows does for a zone record whose transition
// dates are cleared.
bool ZoneLocalTimeToUtc(const SYSTEMTIME& local, bool withDaylightRules, SYSTEMTIME* utc);

// The local time of `seconds` in the zone in force (localtime_r; tm_gmtoff is the offset from
// UTC), the zone setting read afresh first (tzset: TZ, else /etc/localtime). False if the time
// cannot be broken down.
bool LocalTimeInZoneInForce(long long seconds, tm* local);

// What names the zone setting for the C library: the TZ variable, null when it is unset (the
// zone is then that of /etc/localtime). While it stays the same, only a new /etc/localtime can
// change the zone in force.
const char* ZoneSettingName();

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_TIME_ZONE_H_
