// Re-entrant time functions on a 64-bit count of seconds since 1970, and the current offset of
// local time from UTC.
//
// These replace the C runtime's gmtime, localtime, asctime, ctime and mkgmtime for callers that
// need a 64-bit count and thread safety: every function writes only to the caller's buffers, so
// any thread may call them. The log and the audit trail stamp their records with them. They
// know nothing of `ZnTimeUtl::LumoDateTime`; the date-time values have their own header.
//
// Local time follows the process's time zone as the C library sees it (the TZ variable, else
// /etc/localtime), re-read on every call, so a change of TZ followed by tzset is seen at once.
// A zone "uses daylight saving" when its rules put some moment of the coming year in daylight
// time; this decides the odd cases below.
//
// Error contract: nothing throws. The conversions return null when the count lies outside the
// years 1601 to 30828 or a pointer argument is null; `znasctime_r` returns null when the text
// would not fit in 26 bytes; `znmkgmtime` returns -1 when the date can't be represented.
#ifndef ZENUTL_TIME_FUNCTIONS_H_
#define ZENUTL_TIME_FUNCTIONS_H_

#include <time.h>

namespace ZnTimeUtl {

// Seconds east of UTC at this moment: the local time of now read back as if it were UTC,
// minus now. Stockholm gives 3600 in winter and 7200 in summer, Kolkata 19800, New York -18000
// or -14400, UTC 0.
int GetUtcOffset();

}  // namespace ZnTimeUtl

// Prints "Www Mmm DD hh:mm:ss YYYY\n" into `buffer` and returns it: the weekday from tm_wday,
// the month from tm_mon, then tm_mday, tm_hour, tm_min, tm_sec with two digits and
// tm_year + 1900 with at least four. Unlike the C library, the day of the month has a leading
// zero: 2010-03-04 05:06:07 => "Thu Mar 04 05:06:07 2010\n". The buffer needs 26 bytes;
// null when tm_wday is outside 0-6, tm_mon outside 0-11, another field outside 0-99 or the year
// outside 0-9999 (or when an argument is null), and then the buffer is left alone.
char* znasctime_r(tm const* time, char* buffer);

// The local time of `*time` printed as by `znasctime_r`, into a buffer of 26 bytes. Only a zone
// that uses daylight saving is converted: in a zone without it (UTC, Kolkata, Phoenix) the text
// shows the UTC time, unlike `znlocaltime_r`. Older callers depend on that difference.
char* znctime_r(long long const* time, char* buffer);

// UTC breakdown of `*time` into `*result`, which it returns; tm_isdst is 0. tm_yday counts
// every fourth year as a leap year, century years included, so for March 1st of 1900 or 2100
// it is one more than the calendar's (60 rather than 59). All other fields are the calendar's.
tm* zngmtime_r(long long const* time, tm* result);

// Local breakdown of `*time` into `*result`, which it returns, in every zone (also those
// without daylight saving); tm_yday as in `zngmtime_r`. tm_isdst is 1 in daylight time and 0
// in standard time of a zone that uses daylight saving, and -1 in a zone that doesn't. In the
// hour that a return to standard time repeats, both passes read as daylight time (tm_isdst 1):
// the flag comes from converting the wall-clock time back, which can't tell them apart.
tm* znlocaltime_r(long long const* time, tm* result);

// Seconds since 1970 of the UTC time in `*time`, whose fields may lie outside their ranges
// (61 minutes, month 13...); `*time` is normalised in place as by timegm, tm_isdst set to 0.
// -1 when the result can't be represented (also the true answer for 1969-12-31 23:59:59).
long long znmkgmtime(tm* time);

#endif  // ZENUTL_TIME_FUNCTIONS_H_
