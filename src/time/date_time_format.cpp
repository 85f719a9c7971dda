#include "zenutl/date_time_format.h"

#include <boost/date_time/posix_time/posix_time.hpp>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <locale>
#include <set>
#include <sstream>
#include <utility>

#include "platform/locale_time_layouts.h"
#include "platform/time_zone.h"
#include "time/ticks.h"
#include "zenutl/host_dialogs.h"

namespace ZnTimeUtl {

namespace {

using zenutl::time_detail::TruncateToInt32;

const char* const kValidFields[] = {"yyyy", "yy", "MMM", "MM", "M",  "ddd", "dd",  "d",
                                    "HH",   "H",  "hh",  "h",  "mm", "ss",  "fff", "tt"};

// The latest second the runtime's 64-bit breakdown takes: 3000-12-31 23:59:59.
constexpr long long kLastBrokenDownSecond = 32535215999LL;
constexpr std::size_t kFormatBufferLimit = 127;

bool IsAsciiLetter(char ch) {
  return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z');
}

// A run of one letter is a field; digits and punctuation only separate.
std::vector<CString> SplitFields(const std::string& format) {
  std::vector<CString> fields;
  std::string field;
  char previous = ' ';
  std::size_t i = 0;
  while (i < format.size()) {
    const char ch = format[i];
    if (i == 0 || ch == previous || field.empty()) {
      if (IsAsciiLetter(ch)) field += ch;
      previous = ch;
      ++i;
    } else {
      fields.emplace_back(field);
      field.clear();
      previous = ch;
    }
  }
  if (!field.empty()) fields.emplace_back(field);
  return fields;
}

bool Contains(const std::vector<CString>& fields, const char* wanted) {
  for (const CString& field : fields) {
    if (field == wanted) return true;
  }
  return false;
}

std::size_t CountStartingWith(char letter, const std::vector<CString>& fields) {
  return GetDoublesInFormatString(letter, fields).size();
}

std::string RepeatedUnits(const std::vector<CString>& fields) {
  const std::size_t days = CountStartingWith('d', fields);
  const struct {
    bool repeated;
    const char* name;
  } units[] = {
      {CountStartingWith('y', fields) > 1, "year"},
      {CountStartingWith('M', fields) > 1, "month"},
      {days > 1 && days == 2 && !Contains(fields, "ddd"), "day"},
      {CountStartingWith('h', fields) + CountStartingWith('H', fields) > 1, "hour"},
      {CountStartingWith('m', fields) > 1, "minute"},
      {CountStartingWith('s', fields) > 1, "second"},
      {CountStartingWith('f', fields) > 1, "millisecond"},
  };
  std::string names;
  for (const auto& unit : units) {
    if (!unit.repeated) continue;
    if (!names.empty()) names += ", ";
    names += unit.name;
  }
  return names;
}

std::set<std::string> UnknownFields(const std::vector<CString>& fields) {
  std::set<std::string> unknown;
  for (const CString& field : fields) {
    bool known = false;
    for (const char* valid : kValidFields) known = known || field == valid;
    if (!known) unknown.insert(field.str());
  }
  return unknown;
}

// ---- Locale layouts to the format language ------------------------------------------------

// One conversion of a strftime layout: its letter and whether padding was turned off (%-d).
struct Conversion {
  char letter;
  bool unpadded;
};

// Splits a layout into literal text and conversions; flags, widths and the E and O modifiers
// are read past.
template <typename OnLiteral, typename OnConversion>
void WalkLayout(const std::string& layout, OnLiteral onLiteral, OnConversion onConversion) {
  std::size_t i = 0;
  while (i < layout.size()) {
    if (layout[i] != '%') {
      onLiteral(layout[i++]);
      continue;
    }
    ++i;
    Conversion conversion{'\0', false};
    while (i < layout.size() && std::strchr("-_0^#", layout[i]) != nullptr) {
      conversion.unpadded = conversion.unpadded || layout[i] == '-';
      ++i;
    }
    while (i < layout.size() && (std::isdigit(static_cast<unsigned char>(layout[i])) ||
                                 layout[i] == 'E' || layout[i] == 'O')) {
      ++i;
    }
    if (i == layout.size()) break;
    conversion.letter = layout[i++];
    onConversion(conversion);
  }
}

bool IsTimeOrZoneConversion(char letter) {
  return std::strchr("HIklMSpPrRTXcZzs", letter) != nullptr;
}

// The date alone of a date-and-time layout: each time or zone conversion goes, together with
// the literal text just before it; blanks left at either end are trimmed.
std::string WithoutTime(const std::string& layout) {
  std::string kept;
  std::string pending;
  WalkLayout(
      layout, [&](char ch) { pending += ch; },
      [&](const Conversion& conversion) {
        if (!IsTimeOrZoneConversion(conversion.letter)) {
          kept += pending;
          kept += '%';
          if (conversion.unpadded) kept += '-';
          kept += conversion.letter;
        }
        pending.clear();
      });
  kept += pending;
  const std::size_t first = kept.find_first_not_of(' ');
  if (first == std::string::npos) return std::string();
  return kept.substr(first, kept.find_last_not_of(' ') - first + 1);
}

const char* FieldOf(const Conversion& conversion) {
  const bool plain = conversion.unpadded;
  switch (conversion.letter) {
    case 'Y':
    case 'G':
      return "yyyy";
    case 'y':
    case 'g':
      return "yy";
    case 'm':
      return plain ? "M" : "MM";
    case 'd':
      return plain ? "d" : "dd";
    case 'e':
      return "d";
    case 'a':
    case 'A':
      return "ddd";
    case 'b':
    case 'B':
    case 'h':
      return "MMM";
    case 'H':
      return plain ? "H" : "HH";
    case 'k':
      return "H";
    case 'I':
      return plain ? "h" : "hh";
    case 'l':
      return "h";
    case 'M':
      return plain ? "m" : "mm";
    case 'S':
      return plain ? "s" : "ss";
    case 'p':
    case 'P':
      return "tt";
    case 'T':
      return "HH:mm:ss";
    case 'R':
      return "HH:mm";
    case 'D':
      return "MM/dd/yy";
    case 'F':
      return "yyyy-MM-dd";
    case 'n':
    case 't':
      return " ";
    case '%':
      return "%";
    default:
      return "";
  }
}

// A strftime layout in the format language. %r, %x and %X stand for other layouts of the
// locale, which may refer on in turn; the depth bounds a locale that refers in a circle.
std::string ToFormatLanguage(const std::string& layout,
                             const zenutl::platform::LocaleTimeLayouts& locale, int depth = 0) {
  std::string format;
  WalkLayout(
      layout,
      [&](char ch) {
        if (!IsAsciiLetter(ch)) format += ch;
      },
      [&](const Conversion& conversion) {
        const std::string* inner = conversion.letter == 'r'   ? &locale.twelveHourTime
                                   : conversion.letter == 'x' ? &locale.date
                                   : conversion.letter == 'X' ? &locale.time
                                                              : nullptr;
        if (inner == nullptr) {
          format += FieldOf(conversion);
        } else if (depth < 3) {
          format += ToFormatLanguage(*inner, locale, depth + 1);
        }
      });
  return format;
}

enum class LayoutKind { kShortDate, kLongDate, kTime };

CString LocaleFormat(LocaleType locale, LayoutKind kind) {
  zenutl::platform::LocaleTimeLayouts layouts;
  if (!zenutl::platform::LocaleTimeLayoutsOf(GetLocaleIdentifier(locale), &layouts)) {
    return CString();
  }
  switch (kind) {
    case LayoutKind::kShortDate:
      return CString(ToFormatLanguage(layouts.date, layouts));
    case LayoutKind::kLongDate:
      return CString(ToFormatLanguage(WithoutTime(layouts.dateAndTime), layouts));
    case LayoutKind::kTime:
      return CString(ToFormatLanguage(layouts.time, layouts));
  }
  return CString();
}

// ---- Translations between the languages ---------------------------------------------------

bool ReplaceAll(std::string& text, const char* from, const char* to) {
  CString replaced(text);
  if (replaced.Replace(from, to) == 0) return false;
  text = replaced.str();
  return true;
}

// The first `letter` not preceded by '%' or '#' becomes `replacement`.
bool ReplaceFirstLone(std::string& text, char letter, const char* replacement) {
  const std::size_t at = text.find(letter);
  if (at == std::string::npos || (at > 0 && (text[at - 1] == '%' || text[at - 1] == '#'))) {
    return false;
  }
  text.replace(at, 1, replacement);
  return true;
}

// The pair, or else a lone letter.
bool ReplacePairOrLone(std::string& text, const char* pair, const char* pairReplacement,
                       char letter, const char* loneReplacement) {
  return ReplaceAll(text, pair, pairReplacement) || ReplaceFirstLone(text, letter, loneReplacement);
}

// Each round shortens the text or turns a letter into a conversion that no rule takes up
// again, so the rounds end; the bound only guards that reasoning.
std::size_t RoundLimit(const std::string& format) {
  return 4 * format.size() + 8;
}

// ---- Runtime formatting -------------------------------------------------------------------

std::string FormatBrokenDown(long long seconds, const char* format, bool local) {
  if (seconds < 0 || seconds > kLastBrokenDownSecond || format == nullptr) return std::string();
  tm brokenDown{};
  const time_t asTimeT = static_cast<time_t>(seconds);
  const bool ok = local ? zenutl::platform::ZoneLocalBreakdown(seconds, &brokenDown)
                        : gmtime_r(&asTimeT, &brokenDown) != nullptr;
  if (!ok) return std::string();
  char buffer[kFormatBufferLimit + 1];
  const std::size_t length = std::strftime(buffer, kFormatBufferLimit, format, &brokenDown);
  return std::string(buffer, length);
}

}  // namespace

bool ValidateFormatString(const std::string& format) {
  const std::vector<CString> fields = SplitFields(format);
  bool valid = true;
  const auto tell = [&valid](const std::string& text) {
    ZnHostDialogs::ShowMessageBox(nullptr, text.c_str(), nullptr, ZnHostDialogs::eOk);
    valid = false;
  };
  if (!format.empty() && fields.empty()) {
    tell("The format given:\n" + format +
         "\nis not valid. The format can only contain the alternatives found using the button "
         "'Show Details'.");
  }
  const std::string repeated = RepeatedUnits(fields);
  if (!repeated.empty()) {
    tell("Each format can only appear once in the format string. These appear more than once:\n" +
         repeated);
  }
  const std::set<std::string> unknown = UnknownFields(fields);
  if (!unknown.empty()) {
    std::string text = "There are unknown formats in the format string. These are:\n";
    for (const std::string& field : unknown) text += " " + field;
    tell(text);
  }
  if ((Contains(fields, "h") || Contains(fields, "hh")) && !Contains(fields, "tt")) {
    tell("To use format 'h' or 'hh' the date must contain a AM/PM item ('tt').");
  }
  return valid;
}

std::vector<CString> GetDoublesInFormatString(char letter, std::vector<CString> fields) {
  std::vector<CString> matching;
  for (CString& field : fields) {
    if (!field.IsEmpty() && field[0] == letter) matching.push_back(std::move(field));
  }
  return matching;
}

eTimeAccuracy GetSmallestDateTimeUnit(const CString& format) {
  static const struct {
    const char* field;
    eTimeAccuracy accuracy;
  } kOrder[] = {
      {"fff", eTimeAccuracySecond}, {"ss", eTimeAccuracySecond}, {"mm", eTimeAccuracyMinute},
      {"hh", eTimeAccuracyHour},    {"h", eTimeAccuracyHour},    {"HH", eTimeAccuracyHour},
      {"H", eTimeAccuracyHour},     {"ddd", eTimeAccuracyDay},   {"dd", eTimeAccuracyDay},
      {"d", eTimeAccuracyDay},      {"MMM", eTimeAccuracyMonth}, {"MM", eTimeAccuracyMonth},
      {"M", eTimeAccuracyMonth},    {"yyyy", eTimeAccuracyYear}, {"yy", eTimeAccuracyYear},
  };
  for (const auto& entry : kOrder) {
    if (format.Find(entry.field) >= 0) return entry.accuracy;
  }
  return eTimeAccuracyNone;
}

unsigned long GetLocaleIdentifier(LocaleType locale) {
  switch (locale) {
    case eLocaleFrench:
      return 0x000C;
    case eLocaleEnglish:
      return 0x0009;
    case eLocaleGerman:
      return 0x0007;
    case eLocaleSwedish:
      return 0x001D;
    default:
      return 0x0400;
  }
}

CString GetUserLocaleDate(bool shortDate, LocaleType locale) {
  return LocaleFormat(locale, shortDate ? LayoutKind::kShortDate : LayoutKind::kLongDate);
}

CString GetUserLocaleTime(LocaleType locale) {
  return LocaleFormat(locale, LayoutKind::kTime);
}

CString DateTimeFormatToUserStyle(const std::string& format) {
  if (format.find('%') == std::string::npos) return CString(format);
  std::string text = format;
  for (std::size_t round = 0, limit = RoundLimit(format); round < limit; ++round) {
    bool changed = false;
    for (const auto& rule :
         {std::make_pair("%Y", "yyyy"), std::make_pair("%y", "yy"), std::make_pair("%d", "dd"),
          std::make_pair("%#d", "d"), std::make_pair("%H", "HH")}) {
      changed = ReplaceAll(text, rule.first, rule.second) || changed;
    }
    // %m is a minute after an hour, else a month; at the very start it is left alone.
    const std::size_t month = text.find("%m");
    if (month != std::string::npos && month > 4) {
      const std::string before = text.substr(month - 4, 4);
      const bool afterHour = before.find_first_of("Hh") != std::string::npos;
      text.replace(month, 2, afterHour ? "mm" : "MM");
      changed = true;
    }
    for (const auto& rule :
         {std::make_pair("%#m", "M"), std::make_pair("%s", "ss"), std::make_pair("%f", "fff"),
          std::make_pair("%M", "mm"), std::make_pair("%S", "ss")}) {
      changed = ReplaceAll(text, rule.first, rule.second) || changed;
    }
    if (!changed) break;
  }
  return CString(text);
}

CString UserStyleToDateTimeFormat(const std::string& format) {
  std::string text = format;
  for (std::size_t round = 0, limit = RoundLimit(format); round < limit; ++round) {
    bool changed = false;
    changed = ReplaceAll(text, "yyyy", "%Y") || changed;
    changed = ReplaceAll(text, "yy", "%y") || changed;
    changed = ReplaceAll(text, "ddd", "%a") || changed;
    changed = ReplacePairOrLone(text, "dd", "%d", 'd', "%#d") || changed;
    changed = ReplacePairOrLone(text, "HH", "%H", 'H', "%#H") || changed;
    changed = ReplaceAll(text, "hh", "%I") || changed;
    changed = ReplaceAll(text, "MMM", "%b") || changed;
    changed = ReplacePairOrLone(text, "MM", "%m", 'M', "%#m") || changed;
    changed = ReplaceAll(text, "mm", "%M") || changed;
    changed = ReplaceAll(text, "ss", "%S") || changed;
    changed = ReplaceAll(text, "tt", "%p") || changed;
    const std::size_t fraction = text.find("fff");
    if (fraction != std::string::npos) {
      const bool colon = fraction > 0 && text[fraction - 1] == ':';
      text.erase(fraction - (colon ? 1 : 0), 3 + (colon ? 1 : 0));
      continue;
    }
    if (!changed) break;
  }
  return CString(text);
}

std::string FormatLocal(long long secondsSince1970, const char* format) {
  return FormatBrokenDown(secondsSince1970, format, true);
}

std::string FormatUtc(long long secondsSince1970, const char* format) {
  return FormatBrokenDown(secondsSince1970, format, false);
}

}  // namespace ZnTimeUtl

namespace {

using zenutl::time_detail::CivilTime;

const int kMonthLengths[2][12] = {{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
                                  {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31}};

// Year, month and day of a serial day count from 1 upwards, in which 1900 is a leap year.
void SerialDayToCivil(long long days, long long* year, int* month, int* day) {
  long long years = (days / 1461) * 4;
  long long rest = days - (years / 4) * 1461;
  bool leap = true;
  if (rest >= 367) {
    rest -= 366;
    ++years;
    leap = false;
    if (rest > 365) {
      years += rest / 365;
      rest %= 365;
    }
  }
  int monthIndex = 0;
  while (monthIndex < 11 && rest > kMonthLengths[leap][monthIndex]) {
    rest -= kMonthLengths[leap][monthIndex++];
  }
  *year = years + 1900;
  *month = monthIndex + 1;
  *day = static_cast<int>(rest);
  if (rest == 0) {
    *year = years + 1899;
    *month = 12;
    *day = 31;
  }
}

// A year outside the 16 bits that the calendar check reads stays outside its range.
unsigned short CalendarYear(long long year) {
  return static_cast<unsigned short>(year < 0 ? 0 : year > 0xFFFF ? 0xFFFF : year);
}

template <typename Value>
CString PrintWithTimeFacet(const Value& value, const char* timeFormat, const char* durationFormat) {
  auto* facet = new boost::posix_time::time_facet(timeFormat);
  facet->time_duration_format(durationFormat);
  std::ostringstream out;
  out.imbue(std::locale(std::locale(), facet));
  out << value;
  return CString(out.str());
}

}  // namespace

CString IEEEDate_2_string(double serialDate) {
  const std::int32_t centiseconds =
      zenutl::time_detail::TruncateToInt32((serialDate - std::trunc(serialDate)) * 8640000.0 + 0.5);
  const boost::posix_time::time_duration timeOfDay(
      centiseconds / 360000, centiseconds % 360000 / 6000, centiseconds % 360000 % 6000 / 100);
  if (!(serialDate >= 1.0)) return PrintWithTimeFacet(timeOfDay, "%x %X", "%X");
  long long year = 0;
  int month = 0;
  int day = 0;
  SerialDayToCivil(zenutl::time_detail::TruncateToInt32(serialDate), &year, &month, &day);
  const boost::gregorian::date date = zenutl::time_detail::ValidatedDate(
      CalendarYear(year), static_cast<unsigned short>(month), static_cast<unsigned short>(day));
  return PrintWithTimeFacet(boost::posix_time::ptime(date, timeOfDay), "%x %X", "%X");
}
