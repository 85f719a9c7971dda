#include "platform/time_zone.h"

#include <time.h>

#include <cstdlib>
#include <string>

#include "platform/system_time.h"

namespace zenutl {
namespace platform {
namespace {

constexpr long long kSecondsPerDay = 86400;
constexpr long long kSecondsPerWeek = 7 * kSecondsPerDay;
constexpr int kWeeksPerYear = 53;

bool LocalAt(long long seconds, tm* local) {
  const time_t t = static_cast<time_t>(seconds);
  return localtime_r(&t, local) != nullptr;
}

// Weekly probes over the coming year find any daylight period of the current rules; no zone
// has had one shorter than a week.
bool HasDaylightTimeWithinYear(long long now) {
  for (int week = 0; week <= kWeeksPerYear; ++week) {
    tm local{};
    if (LocalAt(now + week * kSecondsPerWeek, &local) && local.tm_isdst > 0) return true;
  }
  return false;
}

// The probes cost some fifty breakdowns, so each thread keeps its answer for a day per TZ value.
bool ZoneUsesDaylightSaving(long long now) {
  struct Cache {
    bool valid = false;
    bool tzSet = false;
    std::string tz;
    long long computedAt = 0;
    bool usesDaylightSaving = false;
  };
  thread_local Cache cache;
  const char* tz = std::getenv("TZ");
  const bool fresh = cache.valid && cache.tzSet == (tz != nullptr) &&
                     (tz == nullptr || cache.tz == tz) && now >= cache.computedAt &&
                     now - cache.computedAt < kSecondsPerDay;
  if (!fresh) {
    cache.valid = true;
    cache.tzSet = tz != nullptr;
    cache.tz = tz ? tz : "";
    cache.computedAt = now;
    cache.usesDaylightSaving = HasDaylightTimeWithinYear(now);
  }
  return cache.usesDaylightSaving;
}

// The standard offset in force around `instant`: its own if it is standard time, else that of
// the nearest standard time within a year, else the zone's present standard offset.
long StandardOffsetAround(long long instant) {
  tm local{};
  if (LocalAt(instant, &local) && local.tm_isdst <= 0) return local.tm_gmtoff;
  for (int week = 1; week <= kWeeksPerYear; ++week) {
    for (const long long probe :
         {instant - week * kSecondsPerWeek, instant + week * kSecondsPerWeek}) {
      if (LocalAt(probe, &local) && local.tm_isdst <= 0) return local.tm_gmtoff;
    }
  }
  return -timezone;
}

// The instant whose wall-clock time is `wallSeconds` (seconds since 1970 of the wall time read
// as UTC). Offsets from two days either side cover any transition near it; of two readings the
// daylight one wins, else the earlier. A wall time in a skipped hour takes the offset before it.
long long InstantOfWallTime(long long wallSeconds) {
  bool found = false;
  long long best = 0;
  bool bestIsDaylight = false;
  for (const long long probe :
       {wallSeconds - 2 * kSecondsPerDay, wallSeconds + 2 * kSecondsPerDay}) {
    tm local{};
    if (!LocalAt(probe, &local)) continue;
    const long long candidate = wallSeconds - local.tm_gmtoff;
    tm check{};
    if (!LocalAt(candidate, &check) || check.tm_gmtoff != local.tm_gmtoff) continue;
    const bool isDaylight = check.tm_isdst > 0;
    if (!found || (isDaylight && !bestIsDaylight) ||
        (isDaylight == bestIsDaylight && candidate < best)) {
      best = candidate;
      bestIsDaylight = isDaylight;
      found = true;
    }
  }
  if (found) return best;
  tm before{};
  return LocalAt(wallSeconds - 2 * kSecondsPerDay, &before) ? wallSeconds - before.tm_gmtoff
                                                            : wallSeconds + timezone;
}

}  // namespace

DWORD CurrentTimeZoneId() {
  tzset();
  const long long now = static_cast<long long>(time(nullptr));
  tm local{};
  if (!LocalAt(now, &local)) return kTimeZoneIdInvalid;
  if (!ZoneUsesDaylightSaving(now)) return kTimeZoneIdUnknown;
  return local.tm_isdst > 0 ? kTimeZoneIdDaylight : kTimeZoneIdStandard;
}

bool GetLocalTime(SYSTEMTIME* local) {
  tzset();
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  tm wall{};
  if (local == nullptr || !LocalAt(now.tv_sec, &wall)) return false;
  return SystemTimeFromSeconds(now.tv_sec + wall.tm_gmtoff,
                               static_cast<WORD>(now.tv_nsec / 1000000), local);
}

bool ZoneLocalBreakdown(long long seconds, tm* local) {
  tzset();
  return local != nullptr && LocalAt(seconds, local);
}

bool ZoneOffsetAt(long long seconds, long* offset) {
  tm wall{};
  if (offset == nullptr || !ZoneLocalBreakdown(seconds, &wall)) return false;
  *offset = wall.tm_gmtoff;
  return true;
}

bool UtcToZoneLocalTime(const SYSTEMTIME& utc, SYSTEMTIME* local) {
  long offset = 0;
  if (local == nullptr || !ZoneOffsetAt(SecondsFromSystemTime(utc), &offset)) return false;
  return SystemTimeFromSeconds(SecondsFromSystemTime(utc) + offset, utc.wMilliseconds, local);
}

bool ZoneLocalTimeToUtc(const SYSTEMTIME& local, bool withDaylightRules, SYSTEMTIME* utc) {
  tzset();
  if (utc == nullptr) return false;
  const long long wallSeconds = SecondsFromSystemTime(local);
  const long long instant = InstantOfWallTime(wallSeconds);
  const long long seconds =
      withDaylightRules ? instant : wallSeconds - StandardOffsetAround(instant);
  return SystemTimeFromSeconds(seconds, local.wMilliseconds, utc);
}

bool LocalTimeInZoneInForce(long long seconds, tm* local) {
  tzset();
  return LocalAt(seconds, local);
}

const char* ZoneSettingName() {
  return std::getenv("TZ");
}

}  // namespace platform
}  // namespace zenutl
