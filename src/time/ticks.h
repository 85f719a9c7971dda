// Raw microsecond tick counts of the Boost time types, and the arithmetic on them.
//
// A `ptime` is one signed 64-bit count (Gregorian day number times the microseconds of a day,
// plus those of the time of day) and a `time_duration` another; three counts near the ends of
// the range are the special values. The date-time classes do their arithmetic here when both
// operands are ordinary values, so that a result beyond the range wraps as the 64-bit integers
// of the original build did, instead of overflowing; with a special operand they leave it to
// Boost, whose rules for special values hold.
#ifndef ZENUTL_TIME_TICKS_H_
#define ZENUTL_TIME_TICKS_H_

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cstdint>

namespace zenutl {
namespace time_detail {

using Ticks = std::int64_t;

constexpr Ticks kTicksPerMillisecond = 1000;
constexpr Ticks kTicksPerSecond = 1000000;
constexpr Ticks kTicksPerMinute = 60 * kTicksPerSecond;
constexpr Ticks kTicksPerHour = 60 * kTicksPerMinute;
constexpr Ticks kTicksPerDay = 24 * kTicksPerHour;

// Gregorian day numbers of the reference points.
constexpr Ticks kDayNumberOf1400 = 2232400;  // 1400-01-01, the first day Boost's calendar takes
constexpr Ticks kDayNumberOf1601 = 2305814;  // FILETIME
constexpr Ticks kDayNumberOf1899Dec30 = 2415019;  // VT_DATE
constexpr Ticks kDayNumberOf1900 = 2415021;       // the stream form
constexpr Ticks kDayNumberOf1970 = 2440588;       // time_t

constexpr Ticks kTicksOf1601 = kDayNumberOf1601 * kTicksPerDay;
constexpr Ticks kTicksOf1900 = kDayNumberOf1900 * kTicksPerDay;
constexpr Ticks kTicksOf1970 = kDayNumberOf1970 * kTicksPerDay;

inline Ticks WrappingAdd(Ticks a, Ticks b) {
  return static_cast<Ticks>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
inline Ticks WrappingSub(Ticks a, Ticks b) {
  return static_cast<Ticks>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}
inline Ticks WrappingMul(Ticks a, Ticks b) {
  return static_cast<Ticks>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

// The whole count, special values included.
inline Ticks RawTicks(const boost::posix_time::time_duration& duration) {
  return duration.ticks();
}
Ticks RawTicks(const boost::posix_time::ptime& time);

// A count that equals a special value's is that special value, as in Boost.
inline boost::posix_time::time_duration DurationFromTicks(Ticks ticks) {
  return boost::posix_time::microseconds(ticks);
}
inline boost::posix_time::ptime PtimeFromTicks(Ticks ticks) {
  return boost::posix_time::ptime(boost::posix_time::ptime::time_rep_type(ticks));
}

// Floor division and its remainder, for counts before the epochs.
inline Ticks FloorDiv(Ticks a, Ticks b) {
  return a / b - (a % b != 0 && (a < 0) != (b < 0));
}

// A double truncated toward zero into 32 bits as the x86 conversion instruction does it: not a
// number and values out of range give INT32_MIN.
std::int32_t TruncateToInt32(double value);

// A Boost date from calendar fields, checked in the order day, month, year and then the day
// against the month, each by Boost's own exception.
boost::gregorian::date ValidatedDate(unsigned short year, unsigned short month, unsigned short day);

// The proleptic Gregorian fields of any ordinary tick count, also outside Boost's years.
struct CivilTime {
  long long year;
  unsigned month;    // 1 to 12
  unsigned day;      // 1 to 31
  unsigned weekday;  // 0 is Sunday
  unsigned hour;
  unsigned minute;
  unsigned second;
  unsigned millisecond;
};
CivilTime CivilTimeOfTicks(Ticks ticks);

// Now, to the whole second, as UTC or on the local wall clock; std::runtime_error "could not
// convert calendar time to local time" if the zone can't break the clock's time down.
boost::posix_time::ptime WholeSecondNow(bool local);

}  // namespace time_detail
}  // namespace zenutl

#endif  // ZENUTL_TIME_TICKS_H_
