// ZnTimeUtl::LumoDateTime: a point in time, a thin value wrapper over
// `boost::posix_time::ptime`, with the library's text forms.
//
// A LumoDateTime always means UTC. It converts from the Windows, database and framework time
// records of platform_types.h, from seconds since 1970 and from calendar fields; fields given
// as local time are converted to UTC on the way in. Its text goes through the library's own
// format language (date_time_format.h lists the fields): `ToUTCString` and `ToLocalString`
// write it, `ParseExact` and its relatives read it. Spans between two points are
// `LumoDuration`s (lumo_duration.h). For plain seconds-since-1970 time functions see
// time_functions.h.
//
// Special values are Boost's: a default-constructed LumoDateTime is not a date-time, and the
// two infinities exist. Arithmetic with a special operand follows Boost's rules; ordinary
// values whose result leaves the 64-bit tick range wrap around.
//
// Local time is the process's time zone (TZ, else /etc/localtime), read at each conversion.
// Local to UTC takes the offset that holds at the local wall-clock time read as if it were UTC,
// not at the true instant; for the few hours around a daylight-saving change this differs from
// the zone's answer, and it is kept that way because stored values depend on it. The local
// conversions count seconds since 1970 in 32 bits, as the original build did: a time before
// 1970-01-01 00:00:00, or from 2038-01-19 03:14:08 up to 2106-02-07 06:28:15 (where the 32-bit
// count is negative), has no local time, and every conversion through local time then gives
// not a date-time. Past 2106 the count wraps and the local fields come from 1970 onwards again.
//
// Error contract: constructors from calendar fields let Boost's calendar exceptions through
// (all std::out_of_range): `bad_day_of_month` "Day of month value is out of range 1..31" or
// "Day of month is not valid for year", `bad_month` "Month number is out of range 1..12",
// `bad_year` "Year is out of valid range: 1400..9999". The parsers answer bad text with not a
// date-time and let the same calendar exceptions through; the current-time functions throw
// std::runtime_error when the clock can't be broken down. The formatters never throw. The
// stream forms answer by `bool`. Nothing else reports.
#ifndef ZENUTL_LUMO_DATE_TIME_H_
#define ZENUTL_LUMO_DATE_TIME_H_

#include <boost/date_time/gregorian/greg_duration.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <iosfwd>
#include <string>

#include "zenutl/lumo_duration.h"
#include "zenutl/platform_types.h"

namespace ZnTimeUtl {

class LumoDateTime {
 public:
  // Not a date-time.
  LumoDateTime();
  // Taken as UTC.
  LumoDateTime(const boost::posix_time::ptime& time);  // NOLINT: implicit by design
  // 1970-01-01 UTC plus `secondsSince1970`, of which only the low 32 bits count, read as a
  // signed 32-bit number: 4294967296 is the epoch itself and 2147483648 is 1901-12-13 20:45:52.
  LumoDateTime(long long secondsSince1970);  // NOLINT
  // As from its seconds, with the same 32-bit narrowing.
  LumoDateTime(const ATL::CTime& time);  // NOLINT
  // Calendar fields. The time of day is hours, minutes and seconds (if any of the three is
  // negative, the three taken by absolute value and negated as a whole) plus the milliseconds,
  // so 25 hours run into the next day. Day, month and year are read as unsigned 16-bit numbers
  // and checked in that order by Boost's calendar (see the error contract). With `isUTC` false
  // the fields are local time and the result is converted to UTC.
  LumoDateTime(short year, short month, short day, short hour, short minute, short second,
               LONG milliseconds, bool isUTC);
  // Local time; `fraction` is nanoseconds, of which whole microseconds are kept.
  LumoDateTime(const tagTIMESTAMP_STRUCT& timestamp);  // NOLINT
  LumoDateTime(const tagDBTIMESTAMP& timestamp);       // NOLINT
  // UTC, to the microsecond (the last 100-nanosecond digit is dropped).
  LumoDateTime(const _FILETIME& fileTime);  // NOLINT
  // A VT_DATE or VT_DATE | VT_BYREF variant holding -350000.0 to 2900000.0, as local time
  // converted to UTC; the fraction gives whole milliseconds. Any other variant, any other
  // value (also a null VT_BYREF pointer) gives not a date-time, without an error.
  LumoDateTime(const tagVARIANT& variant);  // NOLINT

  LumoDateTime operator+(const LumoDuration& span) const;
  LumoDateTime operator-(const LumoDuration& span) const;
  LumoDuration operator-(const LumoDateTime& other) const;
  // Moves the date by whole days, keeping the time of day. Not a date-time, or a special day
  // count, leaves the value as it is.
  LumoDateTime operator+(const boost::gregorian::date_duration& days) const;

  // Seconds since 1970-01-01 UTC, truncated toward zero: 1970-01-01 00:00:00.999 => 0.
  long long ToTime() const;
  // 100-nanosecond units since 1601-01-01 UTC. A special value has no case of its own: its raw
  // tick count is multiplied by 10 like any other.
  _FILETIME ToFileTime() const;

  // Now, to the whole second; all stamps of one second are equal.
  static LumoDateTime GetCurrentUTCTime();

  // The value in the library's format language (date_time_format.h), showing UTC or local
  // time. An empty format means "yyyy-MM-dd HH:mm:sseee". Not a date-time gives "", the
  // infinities "+infinity" and "-infinity", and a value with no local time (see above) gives ""
  // from ToLocalString. Years outside 1400 to 9999 print as plain numbers. Per field:
  //   yyyy => 2010      yy => 10, 5 for 2005     MMM => "Mar"     MM => 03      M => 3
  //   ddd => "Thu"      dd => 04     d => 4      HH => 05     H => 5     mm => 06     m => 6
  //   ss => 07     s => 7
  //   hh, h => the hour if below 13, else the hour less 12: 0 prints as 0 (00), 13 as 1
  //   tt => "PM" for hours above 12, else "AM": noon prints as 12 AM
  //   fff => milliseconds with no padding: 5 ms => "5", 0 => "0"
  //   eee => "." and the milliseconds with no padding, nothing for 0: 89 ms => ".89"
  // A run of a field letter of any other length (y, yyy, MMMM, dddd, f, t...) writes nothing;
  // every other character, other letters too, is copied. So "" of 2010-03-04 05:06:07.089 UTC
  // => "2010-03-04 05:06:07.89".
  std::string ToUTCString(const std::string& format) const;
  std::string ToLocalString(const std::string& format) const;

  // Reads local time from `text` by `format` and converts it to UTC. Unset fields default to
  // January 1 of the current local year, 00:00:00.000. The two are walked together; white space
  // is skipped on both sides before each step, and a format character that is no field skips
  // one character of the text, whatever it is: "2010x03" reads by "yyyy-MM" as "2010-03".
  // Text that runs out leaves the later fields at their defaults; text left over is ignored.
  // Fields (the value must lie in the range, else the result is not a date-time):
  //   yyyy, yy: 4 or 2 characters, y two digits; a value below 100 gets 2000 added, or 1900
  //       if that would pass the current year plus 5; then 1400 to 2099. A year field that
  //       can't be read (also y before a single digit, or yyy) counts as -1 and so as 1999,
  //       since -1 too is below 100: "ab" by "yy" is January 1, 1999.
  //   MM, M: 2 characters or 1 to 2 digits, 1 to 12. MMM: a month name (see
  //       ParseLiteralDateInternal).
  //   dd, d: 0 to 31 (a day of 0 then fails in the calendar check). ddd: skips a weekday name
  //       of any length up to the next format character.
  //   HH, H: 0 to 23. hh, h: 1 to 12. mm, m, ss, s: 0 to 59.
  //   fff: digits up to the next format character, scaled to thousandths: "5" => 500,
  //       "12345" => 123; where that character is missing from the text, times 1000.
  //   tt: "AM" or "PM", any case, adding 0 or 12 hours to the hour as it stands: "12:30 PM"
  //       is 00:30 on the next day and "12:30 AM" is 12:30. t: a number of half days.
  // Any other run length of a field letter fails. Calendar exceptions from impossible dates
  // ("31-04-2010" by "dd-MM-yyyy") pass through.
  static LumoDateTime ParseExact(const std::string& text, const std::string& format);
  // ParseExact with `format` if it is not empty. Otherwise the formats of the five locales
  // (date_time_format.h), each the short date, a blank and the time, are tried in the order
  // user, French, English, German, Swedish; the first that reads stores itself in `format`.
  // If none does, the result is not a date-time and `format` stays empty.
  static LumoDateTime ParseUsingLocale(const std::string& text, std::string& format);
  // ParseExact with "ddd MMM dd HH:mm:ss yyyy", the layout of znasctime_r. Only the Swedish
  // "MAJ" names the fifth month, so a text of May gives not a date-time.
  static LumoDateTime ParseUsingAscTime(const std::string& text);

  // The 10-byte stream form: a version byte of 1, then the LumoDuration form (9 bytes) of this
  // minus 1900-01-01 00:00:00. Not a date-time writes the version byte alone and answers false;
  // callers must test the answer, since reading that back takes the following bytes as the
  // duration. Otherwise true when the stream's state is clear afterwards.
  bool WriteToStream(std::ostream& stream) const;
  // Reads the version byte (taken as 1 if the stream has none) and returns false, leaving this
  // unchanged, if it is anything else. Otherwise this becomes 1900-01-01 plus the duration read
  // (zero where the stream has none, not a date-time if its own version byte is wrong), and the
  // answer is whether the stream's state is clear.
  bool ReadFromStream(std::istream& stream);

  const boost::posix_time::ptime& GetPtime() const { return mTime; }

  bool operator==(const LumoDateTime& other) const { return mTime == other.mTime; }
  bool operator!=(const LumoDateTime& other) const { return mTime != other.mTime; }
  bool operator<(const LumoDateTime& other) const { return mTime < other.mTime; }
  bool operator<=(const LumoDateTime& other) const { return mTime <= other.mTime; }
  bool operator>(const LumoDateTime& other) const { return mTime > other.mTime; }
  bool operator>=(const LumoDateTime& other) const { return mTime >= other.mTime; }

 protected:
  // Now on the local wall clock, to the whole second. The result holds local fields.
  static LumoDateTime GetCurrentLocalTime();
  // The local wall-clock fields of a UTC time, microseconds kept; not a date-time when the time
  // has no local time (see above) or is special.
  static LumoDateTime ToLocalTime(const LumoDateTime& utc);
  // The UTC time of local fields: t minus (ToLocalTime(t) - t), the offset at t read as UTC.
  static LumoDateTime ToUTCTime(const LumoDateTime& local);

  // One field of ParseExact: reads the field whose first letter `format` points at, leaves
  // `format` on the field's last letter and `text` on the last character read, and returns the
  // value or -1. `text` never moves past its terminator; it may end one character before where
  // it started (an empty fraction or weekday before its delimiter), for the caller to step on.
  static int ParseInternal(const char*& text, const char*& format);
  // The month of a name by its first three letters in any case: JAN 1, FEB 2, MAR 3, APR 4,
  // MAJ 5, JUN 6, JUL 7, AUG 8, SEP 9, OCT 10, NOV 11, DEC 12, anything else -1. After an N not
  // followed by OV the DEC test looks one character further on, at the 3rd and 4th.
  static int ParseLiteralDateInternal(const char* text);
  // The length of the run of equal characters at `cursor`, which is left on its last one.
  static int GetNoOfChars(const char*& cursor);

 private:
  boost::posix_time::ptime mTime;
};

}  // namespace ZnTimeUtl

#endif  // ZENUTL_LUMO_DATE_TIME_H_
