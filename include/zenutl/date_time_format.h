// The library's date-time format language: checking a format, what it shows, translating it to
// and from strftime formats, and the formats of the users' locales.
//
// A format is a string in which a run of one repeated letter is a field and everything else is
// literal. The applications show these formats to their users, who type their own. The valid
// fields are:
//
//   yyyy year            yy year in the century    MMM month name   MM, M month
//   ddd weekday name     dd, d day of the month    HH, H hour 0-23  hh, h hour 1-12
//   mm minute            ss second                 fff milliseconds tt "AM" or "PM"
//
// The formatter and the parser also know `m` and `s` (plain numbers), and the formatter alone
// `eee`, an optional fraction: "." and the milliseconds, nothing when they are zero. The
// default format of `LumoDateTime::ToUTCString` is "yyyy-MM-dd HH:mm:sseee", which this
// header's `ValidateFormatString` refuses because `eee` is no valid field. How a
// `LumoDateTime` is written and read in this language is told in lumo_date_time.h.
//
// The locale formats come from the C library's locale data (the locales sv_SE, fr_FR, de_DE
// and en_US, UTF-8, must be generated; the user's locale is the one LC_ALL, LC_TIME or LANG
// names, and the "C" locale if none is set or it is missing) and are translated into this
// language. On Debian 12 they are:
//
//   LocaleType      short date    long date          time
//   eLocaleFrench   dd/MM/yyyy    ddd dd MMM yyyy    HH:mm:ss
//   eLocaleEnglish  MM/dd/yyyy    ddd MMM d yyyy     hh:mm:ss tt
//   eLocaleGerman   dd.MM.yyyy    ddd d. MMM yyyy    HH:mm:ss
//   eLocaleSwedish  yyyy-MM-dd    ddd d MMM yyyy     HH:mm:ss
//   eLocaleUser     "C": MM/dd/yy ddd MMM d yyyy     HH:mm:ss
//
// The long date is the locale's date(1) layout without its time and zone. The language has
// only three-letter names, so full weekday and month names become `ddd` and `MMM`, and it
// can't quote: letters in a locale's literal text are left out.
//
// Error contract: nothing here throws but `IEEEDate_2_string`, which lets Boost's calendar
// exceptions through (see there). `ValidateFormatString` tells the user through message boxes
// of the host (host_dialogs.h); the other functions answer with empty text on failure.
#ifndef ZENUTL_DATE_TIME_FORMAT_H_
#define ZENUTL_DATE_TIME_FORMAT_H_

#include <string>
#include <vector>

#include "zenutl/cstring.h"

namespace ZnTimeUtl {

// The finest unit a format shows.
enum eTimeAccuracy {
  eTimeAccuracyYear = 0,
  eTimeAccuracyMonth = 1,
  eTimeAccuracyDay = 2,
  eTimeAccuracyHour = 3,
  eTimeAccuracyMinute = 4,
  eTimeAccuracySecond = 5,
  eTimeAccuracyNone = 6,
};

// Whose date and time formats to look up. Values other than 1 to 4 mean the user's.
enum LocaleType {
  eLocaleUser = 0,
  eLocaleFrench = 1,
  eLocaleEnglish = 2,
  eLocaleGerman = 3,
  eLocaleSwedish = 4,
};

// True if `format` is fit for use; otherwise tells the user why in one message box per fault
// found (text only, OK button, the host's caption) and returns false. All four checks run:
//   - letters at all: "---" is refused as a format without fields ("The format given:...");
//   - each of year, month, day, hour (h and H together), minute, second and millisecond at
//     most once: "yyyy yy" names "year". For the day, exactly two fields starting with d of
//     which neither is ddd are refused: "d dd" names "day", while "ddd dd" and three day
//     fields pass;
//   - only the sixteen valid fields: "yyy" and "eee" are unknown formats;
//   - h or hh only with tt.
// The empty format passes.
bool ValidateFormatString(const std::string& format);

// The fields, in their order, whose first character is `letter`.
std::vector<CString> GetDoublesInFormatString(char letter, std::vector<CString> fields);

// The first of fff, ss, mm, hh, h, HH, H, ddd, dd, d, MMM, MM, M, yyyy, yy found anywhere in
// the format decides: "yyyy-MM-dd" => eTimeAccuracyDay, "HH:mm" => eTimeAccuracyMinute,
// "yyyy-MM-dd HH:mm:sseee" => eTimeAccuracySecond, "" => eTimeAccuracyNone.
eTimeAccuracy GetSmallestDateTimeUnit(const CString& format);

// The Windows language identifier of the locale: French 0x000C, English 0x0009, German
// 0x0007, Swedish 0x001D, the user's default 0x0400.
unsigned long GetLocaleIdentifier(LocaleType locale);

// The locale's short or long date format and its time format in this language (see the table
// above); empty if the locale's data is missing.
CString GetUserLocaleDate(bool shortDate, LocaleType locale);
CString GetUserLocaleTime(LocaleType locale);

// strftime-style to this language, repeated until nothing changes: %Y => yyyy, %y => yy,
// %d => dd, %#d => d, %H => HH, %#m => M, %s and %S => ss, %f => fff, %M => mm, and the first
// %m becomes mm (a minute) if one of the four characters before it is H or h, else MM; a %m
// within the first five characters stays as it is. '%m/%d/%Y' => '%m/dd/yyyy'. A format
// without '%' is returned as it is.
CString DateTimeFormatToUserStyle(const std::string& format);
// This language to strftime-style, repeated until nothing changes: yyyy => %Y, yy => %y,
// ddd => %a, dd => %d or else a lone d => %#d, HH => %H or else H => %#H, hh => %I,
// MMM => %b, MM => %m or else M => %#m, mm => %M, ss => %S, tt => %p; fff is dropped with a
// colon before it. 'yyyy-MM-dd HH:mm:ss:fff' => "%Y-%m-%d %H:%M:%S".
CString UserStyleToDateTimeFormat(const std::string& format);

// strftime of `secondsSince1970` broken down as local time or UTC, at most 127 characters.
// Empty for a negative time, a time past 3000-12-31 23:59:59 (as the 64-bit runtime
// breakdown), a null format, or a result that is empty or too long.
std::string FormatLocal(long long secondsSince1970, const char* format);
std::string FormatUtc(long long secondsSince1970, const char* format);

}  // namespace ZnTimeUtl

// A spreadsheet serial date as text: day 1 is 1900-01-01, and 1900 counts as a leap year, so
// day 60 is the impossible 1900-02-29 and throws boost::gregorian::bad_day_of_month "Day of
// month is not valid for year", while 61 is 1900-03-01. The fraction is the time of day, to
// the hundredth of a second, rounded. Below 1.0 (also not a number) only the time of day is
// printed, by Boost's time_facet with "%X"; otherwise date and time with "%x %X", both in the
// global C++ locale: 0.5 => "12:00:00", 61.25 => "03/01/00 06:00:00" in the "C" locale. A day
// count past the years Boost's calendar takes throws its exceptions: bad_year up to 2^31 days,
// beyond that (where the day count no longer fits 32 bits) bad_day_of_month.
CString IEEEDate_2_string(double serialDate);

#endif  // ZENUTL_DATE_TIME_FORMAT_H_
