// The text forms of LumoDateTime: the formatter and the parser of the format language.
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "time/ticks.h"
#include "zenutl/date_time_format.h"
#include "zenutl/lumo_date_time.h"
#include "zenutl/zn_string.h"

namespace ZnTimeUtl {

using namespace zenutl::time_detail;  // NOLINT: the tick vocabulary

namespace {

const char kDefaultFormat[] = "yyyy-MM-dd HH:mm:sseee";
const char kAscTimeFormat[] = "ddd MMM dd HH:mm:ss yyyy";
const char* const kMonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const kWeekdayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr int kFailed = -1;
constexpr int kCenturyWindow = 5;

// ---- Formatting ---------------------------------------------------------------------------

void AppendNumber(std::string& out, long long value) {
  char digits[24];
  char* end = digits + sizeof digits;
  char* cursor = end;
  std::uint64_t magnitude =
      value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  do {
    *--cursor = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (value < 0) *--cursor = '-';
  out.append(cursor, end);
}

// "%0.2d" of a value from 0 to 99.
void AppendTwoDigits(std::string& out, unsigned value) {
  out += static_cast<char>('0' + value / 10);
  out += static_cast<char>('0' + value % 10);
}

bool IsFieldLetter(char ch) {
  switch (ch) {
    case 'y':
    case 'M':
    case 'd':
    case 'H':
    case 'h':
    case 'm':
    case 's':
    case 'f':
    case 'e':
    case 't':
      return true;
    default:
      return false;
  }
}

// A number field of one or two letters; any other run length writes nothing.
void AppendNumberField(std::string& out, std::size_t run, unsigned value) {
  if (run == 2) {
    AppendTwoDigits(out, value);
  } else if (run == 1) {
    AppendNumber(out, value);
  }
}

void AppendField(std::string& out, char letter, std::size_t run, const CivilTime& civil) {
  const unsigned twelveHour = civil.hour < 13 ? civil.hour : civil.hour - 12;
  switch (letter) {
    case 'y':
      if (run == 4) AppendNumber(out, civil.year);
      if (run == 2) AppendNumber(out, civil.year % 100);
      break;
    case 'M':
      if (run == 3) out += kMonthNames[civil.month - 1];
      AppendNumberField(out, run, civil.month);
      break;
    case 'd':
      if (run == 3) out += kWeekdayNames[civil.weekday];
      AppendNumberField(out, run, civil.day);
      break;
    case 'H':
      AppendNumberField(out, run, civil.hour);
      break;
    case 'h':
      AppendNumberField(out, run, twelveHour);
      break;
    case 'm':
      AppendNumberField(out, run, civil.minute);
      break;
    case 's':
      AppendNumberField(out, run, civil.second);
      break;
    case 'f':
      if (run == 3) AppendNumber(out, civil.millisecond);
      break;
    case 'e':
      if (run == 3 && civil.millisecond != 0) {
        out += '.';
        AppendNumber(out, civil.millisecond);
      }
      break;
    case 't':
      if (run == 2) out += civil.hour > 12 ? "PM" : "AM";
      break;
  }
}

std::string FormatTime(const boost::posix_time::ptime& time, const std::string& format) {
  if (time.is_not_a_date_time()) return std::string();
  if (time.is_pos_infinity()) return "+infinity";
  if (time.is_neg_infinity()) return "-infinity";
  const CivilTime civil = CivilTimeOfTicks(RawTicks(time));
  const char* walk = format.empty() ? kDefaultFormat : format.c_str();
  std::string out;
  out.reserve(32);
  while (*walk != '\0') {
    const char ch = *walk;
    if (!IsFieldLetter(ch)) {
      out += ch;
      ++walk;
      continue;
    }
    std::size_t run = 1;
    while (walk[run] == ch) ++run;
    AppendField(out, ch, run, civil);
    walk += run;
  }
  return out;
}

// ---- Parsing ------------------------------------------------------------------------------

// isspace in the "C" locale, and in every UTF-8 locale.
bool IsSpace(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

// A position in a zero-terminated text. The text cursor of the parser may stand one character
// before the text's start for a moment; it never stands past its end.
struct Cursor {
  const char* begin;
  std::ptrdiff_t size;
  std::ptrdiff_t pos;

  bool AtEnd() const { return pos >= size; }
  char Current() const { return pos >= 0 && pos < size ? begin[pos] : '\0'; }
  void SkipSpace() {
    while (pos >= 0 && pos < size && IsSpace(begin[pos])) ++pos;
  }
};

Cursor AtStartOf(const char* text) {
  return Cursor{text, static_cast<std::ptrdiff_t>(std::strlen(text)), 0};
}

bool IsDigit(char ch) {
  return ch >= '0' && ch <= '9';
}

// ZnString::ToInt of the first `length` characters, without a copy for plain digits.
int ReadInt(const char* text, std::ptrdiff_t length) {
  if (length > 0 && length <= 9) {
    int value = 0;
    std::ptrdiff_t i = 0;
    while (i < length && IsDigit(text[i])) value = value * 10 + (text[i++] - '0');
    if (i == length) return value;
  }
  int value = 0;
  return ZnString::ToInt(std::string(text, static_cast<std::size_t>(length)).c_str(), value)
             ? value
             : kFailed;
}

// "AM" 0, "PM" 1, in any case.
int ReadHalfDay(const char* text) {
  const char first = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  const char second = static_cast<char>(std::toupper(static_cast<unsigned char>(text[1])));
  if (second != 'M') return kFailed;
  return first == 'A' ? 0 : first == 'P' ? 1 : kFailed;
}

// Digits scaled to thousandths: the value times 10^(3 - digitCount), truncated.
int ReadFraction(const char* text, std::ptrdiff_t length, std::ptrdiff_t digitCount) {
  const int value = ReadInt(text, length);
  if (value == kFailed) return kFailed;
  return TruncateToInt32(value * std::pow(10.0, 3.0 - static_cast<double>(digitCount)));
}

// Within the first `length` characters, compared in upper case; see the header for the
// look one character further on after an N.
int MonthOfName(const char* text, std::size_t length) {
  const auto upper = [&](std::size_t i) {
    return i < length ? static_cast<char>(std::toupper(static_cast<unsigned char>(text[i]))) : '\0';
  };
  const auto is = [&](const char* name) { return upper(1) == name[1] && upper(2) == name[2]; };
  switch (upper(0)) {
    case 'J':
      return is("JAN") ? 1 : is("JUN") ? 6 : is("JUL") ? 7 : kFailed;
    case 'F':
      return is("FEB") ? 2 : kFailed;
    case 'M':
      return is("MAR") ? 3 : is("MAJ") ? 5 : kFailed;
    case 'A':
      return is("APR") ? 4 : is("AUG") ? 8 : kFailed;
    case 'S':
      return is("SEP") ? 9 : kFailed;
    case 'O':
      return is("OCT") ? 10 : kFailed;
    case 'N':
      if (is("NOV")) return 11;
      return upper(2) == 'E' && upper(3) == 'C' ? 12 : kFailed;
    case 'D':
      return is("DEC") ? 12 : kFailed;
    default:
      return kFailed;
  }
}

// Leaves the cursor on the last character of the run it stands on and returns the run's length.
std::ptrdiff_t RunLength(Cursor& cursor) {
  const char ch = cursor.Current();
  std::ptrdiff_t length = 1;
  while (cursor.pos + 1 < cursor.size && cursor.begin[cursor.pos + 1] == ch) {
    ++cursor.pos;
    ++length;
  }
  return length;
}

// The weekday (ddd) and fraction (fff) fields run up to the format's next character.
int ReadDelimitedField(char letter, Cursor& text, const Cursor& format, std::ptrdiff_t* advance) {
  const char* rest = text.begin + text.pos;
  const std::ptrdiff_t restLength = text.size - text.pos;
  const char delimiter = format.pos + 1 < format.size ? format.begin[format.pos + 1] : '\0';
  std::ptrdiff_t length = restLength;
  std::ptrdiff_t digitCount = 0;
  if (delimiter == '\0') {
    digitCount = restLength;
  } else if (const void* found =
                 std::memchr(rest, delimiter, static_cast<std::size_t>(restLength))) {
    const std::ptrdiff_t position = static_cast<const char*>(found) - rest;
    *advance += position - 3;
    length = position;
    digitCount = position;
  }
  if (letter == 'd') return 0;
  return ReadFraction(rest, length, digitCount);
}

// The field at the format cursor; see LumoDateTime::ParseInternal.
int ParseField(Cursor& text, Cursor& format) {
  const char letter = format.Current();
  const std::ptrdiff_t run = RunLength(format);
  const std::ptrdiff_t start = text.pos;
  const char* rest = text.begin + start;
  const std::ptrdiff_t restLength = text.size - start;
  std::ptrdiff_t advance = run - 1;
  int value = kFailed;
  if (run == 3 && (letter == 'd' || letter == 'f')) {
    value = ReadDelimitedField(letter, text, format, &advance);
  } else {
    std::ptrdiff_t width = run;
    if (run == 1) {
      width = restLength > 1 && IsDigit(rest[1]) ? 2 : 1;
      advance += width - 1;
    }
    if (restLength >= width && restLength > 0) {
      switch (letter) {
        case 'M':
          value = width == 3 ? MonthOfName(rest, 3) : width <= 2 ? ReadInt(rest, width) : kFailed;
          break;
        case 'd':
        case 'H':
        case 'h':
        case 'm':
        case 's':
          value = width <= 2 ? ReadInt(rest, width) : kFailed;
          break;
        case 'y':
          value = width == 2 || width == 4 ? ReadInt(rest, width) : kFailed;
          break;
        case 't':
          value = width == 2 ? ReadHalfDay(rest) : width == 1 ? ReadInt(rest, 1) : kFailed;
          break;
      }
    }
  }
  text.pos = start + advance < text.size ? start + advance : text.size;
  return value;
}

bool InRange(int value, int low, int high) {
  return value >= low && value <= high;
}

// The current year is asked for only where a field needs it, so that the usual formats with a
// four-digit year never read the clock; it can't change the result, as the clock's breakdown
// does not fail here.
class CurrentYear {
 public:
  int Get() {
    if (mYear == kUnknown) mYear = WholeSecondNow(true).date().year();
    return mYear;
  }

 private:
  static constexpr int kUnknown = -1;
  int mYear = kUnknown;
};

struct ParsedFields {
  bool hasYear = false;
  int year = 0;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
  int halfDay = 0;
};

// Reads the field at the format cursor into `fields`; false if its value is refused.
bool ReadField(Cursor& text, Cursor& format, CurrentYear& currentYear, ParsedFields& fields) {
  switch (format.Current()) {
    case 'H':
      return InRange(fields.hour = ParseField(text, format), 0, 23);
    case 'h':
      return InRange(fields.hour = ParseField(text, format), 1, 12);
    case 'M':
      return InRange(fields.month = ParseField(text, format), 1, 12);
    case 'd':
      return InRange(fields.day = ParseField(text, format), 0, 31);
    case 'm':
      return InRange(fields.minute = ParseField(text, format), 0, 59);
    case 's':
      return InRange(fields.second = ParseField(text, format), 0, 59);
    case 'f':
      return (fields.millisecond = ParseField(text, format)) >= 0;
    case 't':
      return (fields.halfDay = ParseField(text, format)) >= 0;
    case 'y': {
      int year = ParseField(text, format);
      if (year < 100) {
        year += 2000;
        if (year > currentYear.Get() + kCenturyWindow) year -= 100;
      }
      fields.year = year;
      fields.hasYear = true;
      return InRange(year, 1400, 2099);
    }
    default:
      return true;
  }
}

}  // namespace

std::string LumoDateTime::ToUTCString(const std::string& format) const {
  return FormatTime(mTime, format);
}

std::string LumoDateTime::ToLocalString(const std::string& format) const {
  return FormatTime(ToLocalTime(*this).mTime, format);
}

LumoDateTime LumoDateTime::ParseExact(const std::string& text, const std::string& format) {
  CurrentYear currentYear;
  ParsedFields fields;
  Cursor textCursor{text.c_str(), static_cast<std::ptrdiff_t>(std::strlen(text.c_str())), 0};
  Cursor formatCursor{format.c_str(), static_cast<std::ptrdiff_t>(std::strlen(format.c_str())), 0};
  while (!textCursor.AtEnd() && !formatCursor.AtEnd()) {
    textCursor.SkipSpace();
    formatCursor.SkipSpace();
    if (!ReadField(textCursor, formatCursor, currentYear, fields)) return LumoDateTime();
    if (textCursor.AtEnd() || formatCursor.AtEnd()) break;
    ++textCursor.pos;
    ++formatCursor.pos;
  }
  // The half days are added to the hour as it stands, in the 16 bits of the field.
  const std::uint32_t hour =
      static_cast<std::uint32_t>(fields.hour) + static_cast<std::uint32_t>(fields.halfDay) * 12u;
  if (!fields.hasYear) fields.year = currentYear.Get();
  return LumoDateTime(static_cast<short>(fields.year), static_cast<short>(fields.month),
                      static_cast<short>(fields.day), static_cast<short>(hour),
                      static_cast<short>(fields.minute), static_cast<short>(fields.second),
                      fields.millisecond, false);
}

LumoDateTime LumoDateTime::ParseUsingLocale(const std::string& text, std::string& format) {
  if (!format.empty()) return ParseExact(text, format);
  for (const LocaleType locale :
       {eLocaleUser, eLocaleFrench, eLocaleEnglish, eLocaleGerman, eLocaleSwedish}) {
    const std::string candidate =
        GetUserLocaleDate(true, locale).str() + " " + GetUserLocaleTime(locale).str();
    const LumoDateTime parsed = ParseExact(text, candidate);
    if (!parsed.mTime.is_not_a_date_time()) {
      format = candidate;
      return parsed;
    }
  }
  return LumoDateTime();
}

LumoDateTime LumoDateTime::ParseUsingAscTime(const std::string& text) {
  return ParseExact(text, kAscTimeFormat);
}

int LumoDateTime::ParseInternal(const char*& text, const char*& format) {
  if (text == nullptr || format == nullptr || *format == '\0') return kFailed;
  Cursor textCursor = AtStartOf(text);
  Cursor formatCursor = AtStartOf(format);
  const int value = ParseField(textCursor, formatCursor);
  text += textCursor.pos;
  format += formatCursor.pos;
  return value;
}

int LumoDateTime::ParseLiteralDateInternal(const char* text) {
  return text == nullptr ? kFailed : MonthOfName(text, std::strlen(text));
}

int LumoDateTime::GetNoOfChars(const char*& cursor) {
  if (cursor == nullptr || *cursor == '\0') return 0;
  Cursor run = AtStartOf(cursor);
  const std::ptrdiff_t length = RunLength(run);
  cursor += run.pos;
  return static_cast<int>(length);
}

}  // namespace ZnTimeUtl
