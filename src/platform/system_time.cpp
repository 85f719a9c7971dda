#include "platform/system_time.h"

#include <cstdint>

namespace zenutl {
namespace platform {
namespace {

constexpr long long kTicksPerSecond = 10000000LL;
constexpr long long kSecondsPerDay = 86400LL;

bool IsLeapYear(long long year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

unsigned DaysInMonth(long long year, unsigned month) {
  static const unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

long long FloorDiv(long long a, long long b) {
  return a / b - (a % b != 0 && (a < 0) != (b < 0));
}

}  // namespace

// Counts whole 400-year eras from 0000-03-01, so that the leap day falls at the end of a year.
long long DaysFromCivil(long long year, unsigned month, unsigned day) {
  year -= month <= 2;
  const long long era = FloorDiv(year, 400);
  const long long yearOfEra = year - era * 400;
  const long long dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const long long dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

void CivilFromDays(long long days, long long* year, unsigned* month, unsigned* day) {
  days += 719468;
  const long long era = FloorDiv(days, 146097);
  const long long dayOfEra = days - era * 146097;
  const long long yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const long long shiftedMonth = (5 * dayOfYear + 2) / 153;
  *day = static_cast<unsigned>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  *month = static_cast<unsigned>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  *year = yearOfEra + era * 400 + (*month <= 2);
}

long long SecondsFromSystemTime(const SYSTEMTIME& systemTime) {
  return DaysFromCivil(systemTime.wYear, systemTime.wMonth, systemTime.wDay) * kSecondsPerDay +
         systemTime.wHour * 3600LL + systemTime.wMinute * 60LL + systemTime.wSecond;
}

bool SystemTimeFromSeconds(long long seconds, WORD milliseconds, SYSTEMTIME* systemTime) {
  const long long days = FloorDiv(seconds, kSecondsPerDay);
  const long long secondOfDay = seconds - days * kSecondsPerDay;
  long long year = 0;
  unsigned month = 0;
  unsigned day = 0;
  CivilFromDays(days, &year, &month, &day);
  if (year < 0 || year > 0xFFFF) return false;
  systemTime->wYear = static_cast<WORD>(year);
  systemTime->wMonth = static_cast<WORD>(month);
  systemTime->wDay = static_cast<WORD>(day);
  // 1970-01-01 was a Thursday.
  systemTime->wDayOfWeek = static_cast<WORD>(((days + 4) % 7 + 7) % 7);
  systemTime->wHour = static_cast<WORD>(secondOfDay / 3600);
  systemTime->wMinute = static_cast<WORD>(secondOfDay / 60 % 60);
  systemTime->wSecond = static_cast<WORD>(secondOfDay % 60);
  systemTime->wMilliseconds = milliseconds;
  return true;
}

// Windows refuses counts with the top bit set; everything below it is a date up to 30828.
bool FileTimeToSystemTime(const FILETIME& fileTime, SYSTEMTIME* systemTime) {
  const std::uint64_t ticks =
      (static_cast<std::uint64_t>(fileTime.dwHighDateTime) << 32) | fileTime.dwLowDateTime;
  if (systemTime == nullptr || ticks > static_cast<std::uint64_t>(INT64_MAX)) return false;
  const long long sinceEpoch = static_cast<long long>(ticks) - kFileTimeOf1970;
  const long long seconds = FloorDiv(sinceEpoch, kTicksPerSecond);
  const long long remainder = sinceEpoch - seconds * kTicksPerSecond;
  return SystemTimeFromSeconds(seconds, static_cast<WORD>(remainder / 10000), systemTime);
}

bool SystemTimeToFileTime(const SYSTEMTIME& systemTime, FILETIME* fileTime) {
  const SYSTEMTIME& st = systemTime;
  if (fileTime == nullptr || st.wYear < 1601 || st.wYear > 30827 || st.wMonth < 1 ||
      st.wMonth > 12 || st.wDay < 1 || st.wDay > DaysInMonth(st.wYear, st.wMonth) ||
      st.wHour > 23 || st.wMinute > 59 || st.wSecond > 59 || st.wMilliseconds > 999) {
    return false;
  }
  const long long ticks =
      SecondsFromSystemTime(st) * kTicksPerSecond + st.wMilliseconds * 10000LL + kFileTimeOf1970;
  fileTime->dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFF);
  fileTime->dwHighDateTime = static_cast<DWORD>(static_cast<std::uint64_t>(ticks) >> 32);
  return true;
}

}  // namespace platform
}  // namespace zenutl
