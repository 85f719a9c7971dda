// Conversions between `FILETIME` counts and `SYSTEMTIME` calendar records.
//
// Both are plain proleptic-Gregorian arithmetic here, with the same ranges and refusals as the
// Windows calls they stand for, so that code written against those calls keeps its results.
#ifndef ZENUTL_PLATFORM_SYSTEM_TIME_H_
#define ZENUTL_PLATFORM_SYSTEM_TIME_H_

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// 100-nanosecond intervals from 1601-01-01 to 1970-01-01.
constexpr long long kFileTimeOf1970 = 116444736000000000LL;

// FileTimeToSystemTime: false for counts of 2^63 and above (years past 30828), as on Windows.
bool FileTimeToSystemTime(const FILETIME& fileTime, SYSTEMTIME* systemTime);

// SystemTimeToFileTime: false unless the fields form a real date and time in the years 1601 to
// 30827; wDayOfWeek is ignored.
bool SystemTimeToFileTime(const SYSTEMTIME& systemTime, FILETIME* fileTime);

// Calendar helpers shared by the conversions above and the time-zone functions.
long long DaysFromCivil(long long year, unsigned month, unsigned day);  // days since 1970-01-01
void CivilFromDays(long long days, long long* year, unsigned* month, unsigned* day);
// Seconds since 1970 of a record taken as UTC; no validation.
long long SecondsFromSystemTime(const SYSTEMTIME& systemTime);
// The record of seconds since 1970 (UTC), with `milliseconds`; false if the year is outside
// the range of a WORD.
bool SystemTimeFromSeconds(long long seconds, WORD milliseconds, SYSTEMTIME* systemTime);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_SYSTEM_TIME_H_
