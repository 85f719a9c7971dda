#include "time/ticks.h"

#include <cstdint>
#include <ctime>
#include <stdexcept>

#include "platform/system_time.h"
#include "platform/time_zone.h"

namespace zenutl {
namespace time_detail {
namespace {

// Gives access to the count inside a ptime, which Boost keeps protected.
struct PtimeCount : boost::posix_time::ptime {
  static Ticks Of(const boost::posix_time::ptime& time) {
    return (time.*&PtimeCount::time_).time_count();
  }
};

}  // namespace

Ticks RawTicks(const boost::posix_time::ptime& time) {
  return PtimeCount::Of(time);
}

std::int32_t TruncateToInt32(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(value);
}

boost::gregorian::date ValidatedDate(unsigned short year, unsigned short month,
                                     unsigned short day) {
  const boost::gregorian::greg_day checkedDay(day);
  const boost::gregorian::greg_month checkedMonth(month);
  const boost::gregorian::greg_year checkedYear(year);
  return boost::gregorian::date(checkedYear, checkedMonth, checkedDay);
}

CivilTime CivilTimeOfTicks(Ticks ticks) {
  const Ticks dayNumber = FloorDiv(ticks, kTicksPerDay);
  const Ticks ofDay = ticks - dayNumber * kTicksPerDay;
  const Ticks daysSince1970 = dayNumber - kDayNumberOf1970;
  CivilTime civil{};
  zenutl::platform::CivilFromDays(daysSince1970, &civil.year, &civil.month, &civil.day);
  civil.weekday = static_cast<unsigned>(((daysSince1970 + 4) % 7 + 7) % 7);  // a Thursday
  civil.hour = static_cast<unsigned>(ofDay / kTicksPerHour);
  civil.minute = static_cast<unsigned>(ofDay / kTicksPerMinute % 60);
  civil.second = static_cast<unsigned>(ofDay / kTicksPerSecond % 60);
  civil.millisecond = static_cast<unsigned>(ofDay / kTicksPerMillisecond % 1000);
  return civil;
}

// Whole seconds, as the runtime's clock gives them; the calendar check is that of every date.
boost::posix_time::ptime WholeSecondNow(bool local) {
  const long long now = static_cast<long long>(std::time(nullptr));
  long offset = 0;
  if (local && !zenutl::platform::ZoneOffsetAt(now, &offset)) {
    throw std::runtime_error("could not convert calendar time to local time");
  }
  const CivilTime civil = CivilTimeOfTicks(kTicksOf1970 + (now + offset) * kTicksPerSecond);
  const Ticks dayNumber = ValidatedDate(static_cast<unsigned short>(civil.year),
                                        static_cast<unsigned short>(civil.month),
                                        static_cast<unsigned short>(civil.day))
                              .day_number();
  return PtimeFromTicks(dayNumber * kTicksPerDay +
                        (civil.hour * 3600LL + civil.minute * 60LL + civil.second) *
                            kTicksPerSecond);
}

}  // namespace time_detail
}  // namespace zenutl
