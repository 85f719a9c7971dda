#include "zenutl/lumo_duration.h"

#include <boost/date_time/posix_time/time_formatters.hpp>
#include <cmath>
#include <cstdint>
#include <stdexcept>

#include "time/ticks.h"
#include "zenutl/stream_byte_helpers.h"

namespace ZnTimeUtl {

using zenutl::time_detail::DurationFromTicks;
using zenutl::time_detail::kTicksPerHour;
using zenutl::time_detail::kTicksPerMillisecond;
using zenutl::time_detail::kTicksPerMinute;
using zenutl::time_detail::kTicksPerSecond;
using zenutl::time_detail::RawTicks;
using zenutl::time_detail::Ticks;
using zenutl::time_detail::WrappingAdd;
using zenutl::time_detail::WrappingMul;

namespace {

constexpr unsigned char kStreamVersion = 1;

// The largest millisecond count whose ticks still fit in 64 bits.
constexpr std::int64_t kMaxMilliseconds = INT64_MAX / kTicksPerMillisecond;

boost::posix_time::time_duration DurationOfSeconds(long double seconds) {
  if (std::isnan(seconds))
    return boost::posix_time::time_duration(boost::posix_time::not_a_date_time);
  const long double milliseconds = std::trunc(seconds * 1000.0L);
  if (milliseconds > static_cast<long double>(kMaxMilliseconds)) {
    return boost::posix_time::time_duration(boost::posix_time::pos_infin);
  }
  if (milliseconds < -static_cast<long double>(kMaxMilliseconds)) {
    return boost::posix_time::time_duration(boost::posix_time::neg_infin);
  }
  return DurationFromTicks(static_cast<std::int64_t>(milliseconds) * kTicksPerMillisecond);
}

}  // namespace

LumoDuration::LumoDuration() : mDuration(boost::posix_time::not_a_date_time) {}

LumoDuration::LumoDuration(const boost::posix_time::time_duration& duration)
    : mDuration(duration) {}

LumoDuration::LumoDuration(const boost::posix_time::milliseconds& duration) : mDuration(duration) {}

LumoDuration::LumoDuration(const ATL::CTimeSpan& span)
    : mDuration(boost::posix_time::seconds(static_cast<std::int32_t>(span.GetTimeSpan()))) {}

LumoDuration::LumoDuration(long double seconds) : mDuration(DurationOfSeconds(seconds)) {}

// The parts are added as raw counts: none of them is special, and a sum beyond 64 bits wraps.
LumoDuration::LumoDuration(int days, int hours, int minutes, int seconds, long long milliseconds) {
  const std::int32_t allHours = static_cast<std::int32_t>(static_cast<std::uint32_t>(days) * 24u +
                                                          static_cast<std::uint32_t>(hours));
  Ticks ticks = allHours * kTicksPerHour;
  ticks = WrappingAdd(ticks, minutes * kTicksPerMinute);
  ticks = WrappingAdd(ticks, seconds * kTicksPerSecond);
  ticks = WrappingAdd(ticks, WrappingMul(milliseconds, kTicksPerMillisecond));
  mDuration = DurationFromTicks(ticks);
}

ATL::CTimeSpan LumoDuration::ToTimeSpan() const {
  const Ticks ticks = RawTicks(mDuration);
  return ATL::CTimeSpan(static_cast<LONG>(ticks / kTicksPerHour / 24),
                        static_cast<int>(ticks / kTicksPerHour % 24),
                        static_cast<int>(ticks / kTicksPerMinute % 60),
                        static_cast<int>(ticks / kTicksPerSecond % 60));
}

LONG LumoDuration::operator/(const LumoDuration& divisor) const {
  const Ticks divisorMilliseconds = RawTicks(divisor.mDuration) / kTicksPerMillisecond;
  if (divisorMilliseconds == 0) {
    throw std::domain_error("LumoDuration division by a span shorter than one millisecond");
  }
  return static_cast<LONG>(RawTicks(mDuration) / kTicksPerMillisecond / divisorMilliseconds);
}

LumoDuration LumoDuration::operator*(int factor) const {
  if (mDuration.is_special()) return LumoDuration(mDuration * factor);
  return LumoDuration(DurationFromTicks(WrappingMul(RawTicks(mDuration), factor)));
}

std::string LumoDuration::ToString() const {
  return boost::posix_time::to_simple_string(mDuration);
}

long double LumoDuration::GetSecondsAsDouble() const {
  const LONG wholeSeconds = static_cast<LONG>(RawTicks(mDuration) / kTicksPerSecond);
  return wholeSeconds + FractionalToMillisec(mDuration) / 1000.0L;
}

bool LumoDuration::WriteToStream(std::ostream& stream) const {
  const unsigned char version = kStreamVersion;
  const std::int64_t milliseconds = RawTicks(mDuration) / kTicksPerMillisecond;
  WriteBytes(&version, 1, stream);
  WriteEightBytes(&milliseconds, 1, stream);
  return stream.good();
}

// The buffers are preset, so that what the stream does not hold reads as version 1 and zero.
bool LumoDuration::ReadFromStream(std::istream& stream) {
  unsigned char version = kStreamVersion;
  std::int64_t milliseconds = 0;
  ReadBytes(&version, 1, stream);
  if (version != kStreamVersion) return false;
  ReadEightBytes(&milliseconds, 1, stream);
  mDuration = DurationFromTicks(WrappingMul(milliseconds, kTicksPerMillisecond));
  return stream.good();
}

int FractionalToMillisec(const boost::posix_time::time_duration& duration) {
  const Ticks milliseconds = RawTicks(duration) / kTicksPerMillisecond;
  return static_cast<int>(milliseconds - (milliseconds / 1000) * 1000);
}

}  // namespace ZnTimeUtl
