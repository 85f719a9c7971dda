// ZnTimeUtl::LumoDuration: a signed span of time, a thin value wrapper over
// `boost::posix_time::time_duration` (a 64-bit count of microsecond ticks).
//
// The applications use it beside `LumoDateTime` (lumo_date_time.h), the point in time it is
// added to and the difference of two of them. It adds what Boost lacks: conversion from and to
// the framework's `CTimeSpan`, seconds as a floating-point number, and a 9-byte stream form.
//
// Special values are Boost's: a default-constructed duration is not a date-time (not zero; ask
// for zero with `LumoDuration(0, 0, 0, 0, 0)`), and the two infinities exist. Arithmetic with a
// special operand follows Boost's rules and never throws. Ordinary values that leave the 64-bit
// range wrap around, as the original 64-bit arithmetic did.
//
// Several results keep the width of the original build, where `long` had 32 bits: those are
// declared with the fixed-width `LONG` of platform_types.h and documented where they narrow.
//
// Error contract: `operator/` throws `std::domain_error` for a divisor shorter than one
// millisecond (the original divided by zero there); nothing else here throws. The stream
// operations answer by `bool` and leave the stream's state for the caller to see.
#ifndef ZENUTL_LUMO_DURATION_H_
#define ZENUTL_LUMO_DURATION_H_

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <iosfwd>
#include <string>

#include "zenutl/platform_types.h"

namespace ZnTimeUtl {

class LumoDuration {
 public:
  // Not a date-time.
  LumoDuration();
  LumoDuration(const boost::posix_time::time_duration& duration);  // NOLINT: implicit by design
  LumoDuration(const boost::posix_time::milliseconds& duration);   // NOLINT
  // The low 32 bits of the span's seconds, read as a signed 32-bit number: a span of 2^31
  // seconds becomes -2^31 seconds.
  LumoDuration(const ATL::CTimeSpan& span);  // NOLINT
  // Whole milliseconds of `seconds` (seconds * 1000, truncated toward zero): 1.0009 => 1.000 s.
  // Not a number gives not a date-time; beyond about +-9.2e12 seconds, where the tick count
  // would overflow, the infinity of that sign.
  LumoDuration(long double seconds);  // NOLINT
  // hours(days * 24 + hours) + minutes + seconds + milliseconds, each part built on its own so
  // that parts of mixed sign add up: (0, 1, -30, 0, 0) is 30 minutes. days * 24 + hours is
  // 32-bit arithmetic and wraps as such.
  LumoDuration(int days, int hours, int minutes, int seconds, long long milliseconds);

  // Days, hours (0 to 23), minutes and seconds (0 to 59) by truncating division of the ticks,
  // each negative for a negative span; the microseconds are dropped.
  ATL::CTimeSpan ToTimeSpan() const;

  // How many times `divisor` fits: both are cut to whole milliseconds first, then divided with
  // truncation, and the quotient is narrowed to 32 bits. 5 s / 2 s => 2. A divisor below one
  // millisecond throws std::domain_error.
  LONG operator/(const LumoDuration& divisor) const;
  // The ticks times `factor`; special values by Boost's rules (infinity * 0 is not a date-time).
  LumoDuration operator*(int factor) const;

  // boost::posix_time::to_simple_string: "-01:02:03.000004", "not-a-date-time", "+infinity".
  std::string ToString() const;
  // The whole seconds, narrowed to 32 bits, plus the milliseconds of the fraction / 1000: only
  // milliseconds are kept, so 1.0009 s => 1.0.
  long double GetSecondsAsDouble() const;

  // The 9-byte stream form, raw little-endian bytes: a version byte of 1, then the signed
  // 64-bit milliseconds (ticks / 1000, truncated): 1999 microseconds => 01 01 00 00 00 00 00 00
  // 00. Writing answers true when the stream's state is clear afterwards.
  bool WriteToStream(std::ostream& stream) const;
  // Reads the version byte (taken as 1 if the stream has none) and returns false, leaving this
  // unchanged, if it is anything else. Otherwise reads the milliseconds (taken as 0 where the
  // stream has none) into this and answers whether the stream's state is clear: at the end of
  // a stream this becomes zero and the answer is false.
  bool ReadFromStream(std::istream& stream);

  const boost::posix_time::time_duration& GetDuration() const { return mDuration; }

  bool operator==(const LumoDuration& other) const { return mDuration == other.mDuration; }
  bool operator!=(const LumoDuration& other) const { return mDuration != other.mDuration; }
  bool operator<(const LumoDuration& other) const { return mDuration < other.mDuration; }
  bool operator<=(const LumoDuration& other) const { return mDuration <= other.mDuration; }
  bool operator>(const LumoDuration& other) const { return mDuration > other.mDuration; }
  bool operator>=(const LumoDuration& other) const { return mDuration >= other.mDuration; }

 private:
  boost::posix_time::time_duration mDuration;
};

// The milliseconds of the part below one second: m = ticks / 1000, then m - (m / 1000) * 1000,
// truncating, so a negative duration gives a result from -999 to 0.
int FractionalToMillisec(const boost::posix_time::time_duration& duration);

}  // namespace ZnTimeUtl

#endif  // ZENUTL_LUMO_DURATION_H_
