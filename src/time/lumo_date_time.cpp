#include "zenutl/lumo_date_time.h"

#include <cstdint>

#include "platform/time_zone.h"
#include "time/ticks.h"
#include "zenutl/stream_byte_helpers.h"

namespace ZnTimeUtl {

using boost::posix_time::ptime;
using boost::posix_time::time_duration;
using namespace zenutl::time_detail;  // NOLINT: the tick vocabulary

namespace {

constexpr unsigned char kStreamVersion = 1;
constexpr double kEarliestVariantDate = -350000.0;
constexpr double kLatestVariantDate = 2900000.0;
constexpr Ticks kMillisecondsPerDay = 86400000;
constexpr Ticks kFileTimeUnitsPerTick = 10;

ptime PtimeOfFields(unsigned short year, unsigned short month, unsigned short day,
                    Ticks timeOfDay) {
  const Ticks dayNumber = ValidatedDate(year, month, day).day_number();
  return PtimeFromTicks(dayNumber * kTicksPerDay + timeOfDay);
}

// Database timestamps: every field unsigned, the fraction in nanoseconds.
template <typename Timestamp>
ptime PtimeOfTimestamp(const Timestamp& timestamp) {
  const Ticks timeOfDay =
      (timestamp.hour * 3600LL + timestamp.minute * 60LL + timestamp.second) * kTicksPerSecond +
      timestamp.fraction / 1000;
  return PtimeOfFields(static_cast<unsigned short>(timestamp.year), timestamp.month, timestamp.day,
                       timeOfDay);
}

ptime PtimeOfFileTime(const _FILETIME& fileTime) {
  const std::uint64_t units =
      (static_cast<std::uint64_t>(fileTime.dwHighDateTime) << 32) | fileTime.dwLowDateTime;
  return PtimeFromTicks(kTicksOf1601 + static_cast<Ticks>(units / kFileTimeUnitsPerTick));
}

// Days count from 1899-12-30 and the fraction gives the time of day forwards, whatever the sign.
ptime LocalPtimeOfVariant(const tagVARIANT& variant) {
  const ptime none(boost::posix_time::not_a_date_time);
  double value = 0.0;
  if (variant.vt == VT_DATE) {
    value = variant.date;
  } else if (variant.vt == (VT_DATE | VT_BYREF) && variant.pdate != nullptr) {
    value = *variant.pdate;
  } else {
    return none;
  }
  if (!(value >= kEarliestVariantDate && value <= kLatestVariantDate)) return none;
  const Ticks days = static_cast<Ticks>(value);
  double fraction = value - static_cast<double>(days);
  if (fraction < 0) fraction = -fraction;
  const Ticks milliseconds =
      static_cast<Ticks>(fraction * static_cast<double>(kMillisecondsPerDay));
  return PtimeFromTicks((kDayNumberOf1899Dec30 + days) * kTicksPerDay +
                        milliseconds * kTicksPerMillisecond);
}

// Seconds since 1970 as the local conversion counts them: in 32 bits, sign-extended. False
// where there is no local time: before 1970, or where the 32-bit count is negative.
bool LocalConversionSeconds(Ticks utcTicks, Ticks* seconds) {
  if (utcTicks < kTicksOf1970) return false;
  const Ticks wide = (utcTicks - kTicksOf1970) / kTicksPerSecond;
  *seconds = static_cast<std::int32_t>(static_cast<std::uint32_t>(wide));
  return *seconds >= 0;
}

}  // namespace

LumoDateTime::LumoDateTime() : mTime(boost::posix_time::not_a_date_time) {}

LumoDateTime::LumoDateTime(const ptime& time) : mTime(time) {}

LumoDateTime::LumoDateTime(long long secondsSince1970)
    : mTime(PtimeFromTicks(kTicksOf1970 +
                           static_cast<std::int32_t>(secondsSince1970) * kTicksPerSecond)) {}

LumoDateTime::LumoDateTime(const ATL::CTime& time) : LumoDateTime(time.GetTime()) {}

LumoDateTime::LumoDateTime(short year, short month, short day, short hour, short minute,
                           short second, LONG milliseconds, bool isUTC)
    : mTime(PtimeOfFields(static_cast<unsigned short>(year), static_cast<unsigned short>(month),
                          static_cast<unsigned short>(day),
                          RawTicks(time_duration(hour, minute, second)) +
                              static_cast<Ticks>(milliseconds) * 1000000 / 1000)) {
  if (!isUTC) *this = ToUTCTime(*this);
}

LumoDateTime::LumoDateTime(const tagTIMESTAMP_STRUCT& timestamp)
    : LumoDateTime(ToUTCTime(LumoDateTime(PtimeOfTimestamp(timestamp)))) {}

LumoDateTime::LumoDateTime(const tagDBTIMESTAMP& timestamp)
    : LumoDateTime(ToUTCTime(LumoDateTime(PtimeOfTimestamp(timestamp)))) {}

LumoDateTime::LumoDateTime(const _FILETIME& fileTime) : mTime(PtimeOfFileTime(fileTime)) {}

LumoDateTime::LumoDateTime(const tagVARIANT& variant)
    : LumoDateTime(ToUTCTime(LumoDateTime(LocalPtimeOfVariant(variant)))) {}

LumoDateTime LumoDateTime::operator+(const LumoDuration& span) const {
  const time_duration& duration = span.GetDuration();
  if (mTime.is_special() || duration.is_special()) return LumoDateTime(mTime + duration);
  return LumoDateTime(PtimeFromTicks(WrappingAdd(RawTicks(mTime), RawTicks(duration))));
}

LumoDateTime LumoDateTime::operator-(const LumoDuration& span) const {
  const time_duration& duration = span.GetDuration();
  if (mTime.is_special() || duration.is_special()) return LumoDateTime(mTime - duration);
  return LumoDateTime(PtimeFromTicks(WrappingSub(RawTicks(mTime), RawTicks(duration))));
}

LumoDuration LumoDateTime::operator-(const LumoDateTime& other) const {
  if (mTime.is_special() || other.mTime.is_special()) return LumoDuration(mTime - other.mTime);
  return LumoDuration(DurationFromTicks(WrappingSub(RawTicks(mTime), RawTicks(other.mTime))));
}

LumoDateTime LumoDateTime::operator+(const boost::gregorian::date_duration& days) const {
  if (mTime.is_not_a_date_time() || days.is_special()) return *this;
  if (mTime.is_special()) return LumoDateTime(mTime + days);
  return LumoDateTime(
      PtimeFromTicks(WrappingAdd(RawTicks(mTime), WrappingMul(days.days(), kTicksPerDay))));
}

long long LumoDateTime::ToTime() const {
  const LumoDuration sinceEpoch = *this - LumoDateTime(PtimeFromTicks(kTicksOf1970));
  return RawTicks(sinceEpoch.GetDuration()) / kTicksPerSecond;
}

_FILETIME LumoDateTime::ToFileTime() const {
  const LumoDuration sinceEpoch = *this - LumoDateTime(PtimeFromTicks(kTicksOf1601));
  const std::uint64_t units = static_cast<std::uint64_t>(
      WrappingMul(RawTicks(sinceEpoch.GetDuration()), kFileTimeUnitsPerTick));
  return _FILETIME{static_cast<DWORD>(units & 0xFFFFFFFF), static_cast<DWORD>(units >> 32)};
}

LumoDateTime LumoDateTime::GetCurrentUTCTime() {
  return LumoDateTime(WholeSecondNow(false));
}

LumoDateTime LumoDateTime::GetCurrentLocalTime() {
  return LumoDateTime(WholeSecondNow(true));
}

// The fields of the C library's local breakdown are the UTC fields moved by the zone's offset,
// so the offset is all that is asked for; the fraction of a second stays as it is.
LumoDateTime LumoDateTime::ToLocalTime(const LumoDateTime& utc) {
  const LumoDateTime none;
  if (utc.mTime.is_special()) return none;
  const Ticks utcTicks = RawTicks(utc.mTime);
  Ticks seconds = 0;
  long offset = 0;
  if (!LocalConversionSeconds(utcTicks, &seconds) ||
      !zenutl::platform::ZoneOffsetAt(seconds, &offset)) {
    return none;
  }
  const Ticks fraction = (utcTicks - kTicksOf1970) % kTicksPerSecond;
  return LumoDateTime(
      PtimeFromTicks(kTicksOf1970 + (seconds + offset) * kTicksPerSecond + fraction));
}

LumoDateTime LumoDateTime::ToUTCTime(const LumoDateTime& local) {
  const LumoDateTime asIfLocal = ToLocalTime(local);
  if (asIfLocal.mTime.is_special()) return LumoDateTime();
  const Ticks offset = WrappingSub(RawTicks(asIfLocal.mTime), RawTicks(local.mTime));
  return LumoDateTime(PtimeFromTicks(WrappingSub(RawTicks(local.mTime), offset)));
}

bool LumoDateTime::WriteToStream(std::ostream& stream) const {
  const unsigned char version = kStreamVersion;
  WriteBytes(&version, 1, stream);
  if (mTime.is_not_a_date_time()) return false;
  (*this - LumoDateTime(PtimeFromTicks(kTicksOf1900))).WriteToStream(stream);
  return stream.good();
}

// What the inner read answers is not looked at: the stream's state tells the same.
bool LumoDateTime::ReadFromStream(std::istream& stream) {
  unsigned char version = kStreamVersion;
  ReadBytes(&version, 1, stream);
  if (version != kStreamVersion) return false;
  LumoDuration sinceEpoch;
  sinceEpoch.ReadFromStream(stream);
  *this = LumoDateTime(PtimeFromTicks(kTicksOf1900)) + sinceEpoch;
  return stream.good();
}

}  // namespace ZnTimeUtl
