// GetNearUniqueID: one process-wide counter under its own mutex, seeded on first use.
#include "zenutl/near_unique_id.h"

#include <boost/thread/mutex.hpp>
#include <cstdint>

#include "misc/near_unique_id_internal.h"
#include "platform/system_time.h"
#include "platform/time_zone.h"

namespace {

const std::uint32_t kLastBeforeWrap = 0xC271D4FF;
const std::uint32_t kAnswerAtWrap = 0xC271D500;
// FILETIME ticks (100 ns) in a hundredth of a second.
const unsigned long long kTicksPerHundredth = 100000;

struct Counter {
  boost::mutex mutex;
  bool seeded = false;
  std::uint32_t next = 0;
};

Counter& TheCounter() {
  // Never destroyed: identifiers may be asked for while static objects go away.
  static Counter* const counter = new Counter;
  return *counter;
}

unsigned long long Ticks(const FILETIME& time) {
  return (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

// Hundredths of a second since the local New Year; 0 if the clock can't be read.
std::uint32_t HundredthsSinceNewYear() {
  SYSTEMTIME now;
  if (!zenutl::platform::GetLocalTime(&now)) return 0;
  SYSTEMTIME newYear = now;
  newYear.wMonth = 1;
  newYear.wDay = 1;
  newYear.wHour = newYear.wMinute = newYear.wSecond = newYear.wMilliseconds = 0;
  FILETIME nowTicks, newYearTicks;
  if (!zenutl::platform::SystemTimeToFileTime(now, &nowTicks) ||
      !zenutl::platform::SystemTimeToFileTime(newYear, &newYearTicks)) {
    return 0;
  }
  return static_cast<std::uint32_t>((Ticks(nowTicks) - Ticks(newYearTicks)) / kTicksPerHundredth);
}

}  // namespace

unsigned long GetNearUniqueID() {
  Counter& counter = TheCounter();
  boost::mutex::scoped_lock lock(counter.mutex);
  if (!counter.seeded) {
    counter.next = HundredthsSinceNewYear();
    counter.seeded = true;
  }
  if (counter.next > kLastBeforeWrap) {
    counter.next = 0;
    return kAnswerAtWrap;
  }
  return counter.next++;
}

namespace zenutl {
namespace detail {

void SetNearUniqueIDCounter(std::uint32_t value) {
  Counter& counter = TheCounter();
  boost::mutex::scoped_lock lock(counter.mutex);
  counter.next = value;
  counter.seeded = true;
}

void ForgetNearUniqueIDSeed() {
  Counter& counter = TheCounter();
  boost::mutex::scoped_lock lock(counter.mutex);
  counter.seeded = false;
}

}  // namespace detail
}  // namespace zenutl
