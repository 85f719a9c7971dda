#include "zenutl/zn_string.h"

#include <langinfo.h>

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <charconv>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <string>

#include "core/print_format.h"
#include "language/catalogue_format.h"
#include "zenutl/exception.h"

namespace ZnString {
namespace {

// The number text the parser looks at is at most this long; the rest is never seen.
constexpr std::size_t kNumberBufferLength = 64;

bool IsSpace(char ch) {
  return std::isspace(static_cast<unsigned char>(ch)) != 0;
}
bool IsSpace(wchar_t ch) {
  return std::iswspace(static_cast<wint_t>(ch)) != 0;
}

template <typename CharT>
const CharT* SkipSpace(const CharT* text) {
  while (*text != 0 && IsSpace(*text)) ++text;
  return text;
}

double RuntimeStrtod(const char* text, char** end) {
  return std::strtod(text, end);
}
double RuntimeStrtod(const wchar_t* text, wchar_t** end) {
  return std::wcstod(text, end);
}

template <typename CharT>
std::size_t Length(const CharT* text) {
  return std::char_traits<CharT>::length(text);
}

// The locale's decimal separator: the first character of localeconv()->decimal_point, read
// through nl_langinfo, which gives the same text without filling the whole lconv record.
char LocaleDecimalPoint() {
  return *nl_langinfo(RADIXCHAR);
}

template <typename CharT>
bool IsAsciiSpace(CharT ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

template <typename CharT>
bool IsDigit(CharT ch) {
  return ch >= '0' && ch <= '9';
}

template <typename CharT>
bool IsDecimalSeparator(CharT ch) {
  return ch == '.' || ch == ',';
}

// The common case without the runtime's strtod: [blanks][sign]digits[separator[digits]]
// [e[sign]digits] and the like, either separator taken as the decimal one (in front of it there
// is no other, so a foreign one is the first, which the full path would swap). The digits go to
// std::from_chars, which rounds exactly as strtod does. Anything else (hexadecimal, infinity,
// NaN, locale blanks, text reaching the 63rd character) and any value near the ends of the
// range, where strtod may report ERANGE, is left to the full path: false then.
template <typename CharT>
bool ReadPlainDecimal(const CharT* text, char own, double& value, const CharT*& end) {
  if (own != '.' && own != ',') return false;
  const CharT* const limit = text + (kNumberBufferLength - 1);
  char digits[kNumberBufferLength];
  std::size_t length = 0;
  const auto copyDigits = [&](const CharT* p, bool& any) {
    for (; p < limit && IsDigit(*p); ++p) {
      any = true;
      digits[length++] = static_cast<char>(*p);
    }
    return p;
  };

  const CharT* p = text;
  while (IsAsciiSpace(*p)) ++p;
  if (*p == '-') digits[length++] = '-';
  if (*p == '-' || *p == '+') ++p;
  bool mantissa = false;
  const CharT* const integer = p;
  p = copyDigits(p, mantissa);
  if (p - integer == 1 && *integer == '0' && (*p == 'x' || *p == 'X')) return false;
  if (IsDecimalSeparator(*p) && (mantissa || IsDigit(p[1]))) {
    digits[length++] = '.';
    p = copyDigits(p + 1, mantissa);
  }
  if (!mantissa) return false;
  if ((*p == 'e' || *p == 'E') && p + 1 < limit) {
    const CharT* exponent = p + 1 + (p[1] == '+' || p[1] == '-');
    if (exponent < limit && IsDigit(*exponent)) {
      digits[length++] = 'e';
      if (p[1] == '-') digits[length++] = '-';
      bool any = false;
      p = copyDigits(exponent, any);
    }
  }
  if (p >= limit) return false;
  const std::from_chars_result read = std::from_chars(digits, digits + length, value);
  if (read.ec != std::errc() || read.ptr != digits + length) return false;
  // Zero only from zeros; nothing within a factor of two of the smallest normal or the largest
  // value, where rounding decides whether strtod calls it out of range.
  const double magnitude = std::fabs(value);
  if (magnitude > DBL_MAX / 2 || (magnitude < 2 * DBL_MIN && magnitude != 0.0)) return false;
  if (magnitude == 0.0 && std::find_if(digits, digits + length, [](char ch) {
                            return ch >= '1' && ch <= '9';
                          }) != digits + length) {
    return false;
  }
  end = p;
  return true;
}

// The algorithm as it stands: the text copied (63 characters at most), the first foreign
// separator swapped for the locale's, the first capital D made an L, and strtod on the copy.
template <typename CharT>
double FullStrtod(const CharT* text, CharT** end) {
  CharT buffer[kNumberBufferLength];
  std::size_t length = 0;
  while (length < kNumberBufferLength - 1 && text[length] != 0) {
    buffer[length] = text[length];
    ++length;
  }
  buffer[length] = 0;

  const CharT own = static_cast<CharT>(static_cast<unsigned char>(LocaleDecimalPoint()));
  const CharT foreign = own == CharT('.') ? CharT(',') : CharT('.');
  // Only the first foreign separator is taken as a decimal one; a second stops the parse.
  for (std::size_t i = 0; i < length; ++i) {
    if (buffer[i] == foreign) {
      buffer[i] = own;
      break;
    }
  }
  // strtod would read a capital D as an exponent letter on some runtimes; this library does not
  // accept that form, and an 'L' ends the number there instead.
  for (std::size_t i = 0; i < length; ++i) {
    if (buffer[i] == CharT('D')) {
      buffer[i] = CharT('L');
      break;
    }
  }
  CharT* bufferEnd = nullptr;
  const double value = RuntimeStrtod(buffer, &bufferEnd);
  if (end != nullptr && bufferEnd != nullptr) {
    *end = const_cast<CharT*>(text) + (bufferEnd - buffer);
  }
  return value;
}

template <typename CharT>
double SeparatorTolerantStrtod(const CharT* text, CharT** end) {
  if (text == nullptr) {
    if (end != nullptr) *end = nullptr;
    return 0.0;
  }
  double value = 0.0;
  const CharT* plainEnd = nullptr;
  if (ReadPlainDecimal(text, LocaleDecimalPoint(), value, plainEnd)) {
    if (end != nullptr) *end = const_cast<CharT*>(plainEnd);
    return value;
  }
  return FullStrtod(text, end);
}

template <typename CharT>
double ParseDouble(const CharT* text, EParseResult& result) {
  errno = 0;
  result = eParseOk;
  if (text == nullptr || *SkipSpace(text) == 0) {
    result = eParseInvalid;
    return kMissingValue;
  }
  // The parse starts at the very beginning, so leading blanks count against the 63 characters.
  CharT* end = nullptr;
  const double value = SeparatorTolerantStrtod(text, &end);
  if (errno == ERANGE) {
    result = value == 0.0 ? eParseUnderflow : eParseOverflow;
    return kMissingValue;
  }
  if (*SkipSpace<CharT>(end) == 0 && errno == 0) return value;
  result = eParseInvalid;
  return kMissingValue;
}

template <typename CharT>
double ParseDoubleOrThrow(const CharT* text) {
  EParseResult result;
  const double value = ParseDouble(text, result);
  switch (result) {
    case eParseOk:
      return value;
    case eParseUnderflow:
      throw UnderflowError("ZnStringToDouble underflow");
    case eParseOverflow:
      throw OverflowError("ZnStringToDouble overflow");
    default:
      throw InvalidArgument("ZnStringToDouble invalid argument");
  }
}

float NarrowToFloat(double value) {
  // An ordinary IEEE conversion: beyond float's range it gives infinity or zero, which is the
  // value a caller then gets with a true result.
  return static_cast<float>(value);
}

long long RuntimeStrtoll(const char* text, char** end) {
  return std::strtoll(text, end, 10);
}
long long RuntimeStrtoll(const wchar_t* text, wchar_t** end) {
  return std::wcstoll(text, end, 10);
}

// Integer conversion shared by ToInt and ToInt64: the value read, whether the text was blank,
// and whether all of it was a number in range.
template <typename CharT>
struct IntegerParse {
  bool blank = true;
  bool ok = false;
  long long value = 0;
};

template <typename CharT>
IntegerParse<CharT> ParseInteger(const CharT* text) {
  IntegerParse<CharT> parse;
  errno = 0;
  if (text == nullptr || *SkipSpace(text) == 0) return parse;
  parse.blank = false;
  CharT* end = nullptr;
  parse.value = RuntimeStrtoll(text, &end);
  parse.ok = *SkipSpace<CharT>(end) == 0 && errno == 0;
  return parse;
}

template <typename CharT>
bool ParseInt(const CharT* text, int& value) {
  IntegerParse<CharT> parse = ParseInteger(text);
  // A 32-bit long would have overflowed on these values.
  if (!parse.ok || parse.value > INT_MAX || parse.value < INT_MIN) return false;
  value = static_cast<int>(parse.value);
  return true;
}

template <typename CharT>
bool ParseInt64(const CharT* text, __int64& value) {
  IntegerParse<CharT> parse = ParseInteger(text);
  if (parse.blank) return false;
  value = parse.value;
  return parse.ok;
}

template <typename CharT, typename ValueT>
CStringT<CharT> ValueToString(ValueT value, const CharT* format, const CharT* missing,
                              const CharT* defaultFormat) {
  // Integers are compared as doubles too, so that the integer -99 is missing as well.
  if (static_cast<double>(value) == kMissingValue) return CStringT<CharT>(missing);
  CStringT<CharT> text;
  text.Format(format != nullptr ? format : defaultFormat, value);
  return text;
}

template <typename CharT>
CharT* Duplicate(const CharT* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = Length(text);
  CharT* copy = new CharT[length + 1];
  std::char_traits<CharT>::copy(copy, text, length + 1);
  return copy;
}

char FoldCase(char ch) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
}
wchar_t FoldCase(wchar_t ch) {
  return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(ch)));
}

template <typename CharT>
const CharT* FindNoCase(const CharT* text, const CharT* sought) {
  if (text == nullptr) return nullptr;
  if (sought == nullptr || *sought == 0) return text;
  for (const CharT* start = text; *start != 0; ++start) {
    const CharT* a = start;
    const CharT* b = sought;
    while (*a != 0 && *b != 0 && FoldCase(*a) == FoldCase(*b)) {
      ++a;
      ++b;
    }
    if (*b == 0) return start;
  }
  return nullptr;
}

template <typename CharT>
CharT* ReplaceHeapString(CharT*& target, const CharT* source) {
  if (source == nullptr) return target;
  // Copy first, so that setting a string from itself reads it before it goes.
  CharT* copy = Duplicate(source);
  if (copy != nullptr) {
    delete[] target;
    target = copy;
  }
  return target;
}

template <typename CharT>
CharT* AppendHeapString(CharT*& target, const CharT* source) {
  if (source == nullptr) return target;
  const std::size_t sourceLength = Length(source);
  if (target == nullptr) {
    target = new CharT[sourceLength + 1];
    target[0] = 0;
  } else {
    const std::size_t targetLength = Length(target);
    CharT* joined = new CharT[targetLength + sourceLength + 1];
    std::char_traits<CharT>::copy(joined, target, targetLength + 1);
    delete[] target;
    target = joined;
  }
  const std::size_t targetLength = Length(target);
  std::char_traits<CharT>::copy(target + targetLength, source, sourceLength + 1);
  return target;
}

void AppendDigits(unsigned int magnitude, unsigned int radix, char*& out) {
  static const char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  if (magnitude >= radix) AppendDigits(magnitude / radix, radix, out);
  *out++ = kDigits[magnitude % radix];
}

}  // namespace

double znstrtod(const char* text, char** end) {
  return SeparatorTolerantStrtod(text, end);
}
double znstrtod(const wchar_t* text, wchar_t** end) {
  return SeparatorTolerantStrtod(text, end);
}

double ToDouble(const char* text, EParseResult& result) {
  return ParseDouble(text, result);
}
double ToDouble(const wchar_t* text, EParseResult& result) {
  return ParseDouble(text, result);
}

bool ToDouble(const char* text, double& value) {
  EParseResult result;
  value = ParseDouble(text, result);
  return result == eParseOk;
}
bool ToDouble(const wchar_t* text, double& value) {
  EParseResult result;
  value = ParseDouble(text, result);
  return result == eParseOk;
}

double ToDouble(const char* text) {
  return ParseDoubleOrThrow(text);
}
double ToDouble(const wchar_t* text) {
  return ParseDoubleOrThrow(text);
}

bool ToFloat(const char* text, float& value) {
  double wide = 0.0;
  const bool ok = ToDouble(text, wide);
  value = NarrowToFloat(wide);
  return ok;
}
bool ToFloat(const wchar_t* text, float& value) {
  double wide = 0.0;
  const bool ok = ToDouble(text, wide);
  value = NarrowToFloat(wide);
  return ok;
}

bool ToInt(const char* text, int& value) {
  return ParseInt(text, value);
}
bool ToInt(const wchar_t* text, int& value) {
  return ParseInt(text, value);
}
bool ToInt64(const char* text, __int64& value) {
  return ParseInt64(text, value);
}
bool ToInt64(const wchar_t* text, __int64& value) {
  return ParseInt64(text, value);
}

CString ToStringA(double value, const char* format, const char* missing) {
  return ValueToString(value, format, missing, "%g");
}
CString ToStringA(int value, const char* format, const char* missing) {
  return ValueToString(value, format, missing, "%d");
}
CString ToStringA(__int64 value, const char* format, const char* missing) {
  return ValueToString(value, format, missing, "%I64d");
}
CString ToStringA(unsigned int value, const char* format, const char* missing) {
  return ValueToString(value, format, missing, "%u");
}
CStringW ToStringW(double value, const wchar_t* format, const wchar_t* missing) {
  return ValueToString(value, format, missing, L"%g");
}
CStringW ToStringW(int value, const wchar_t* format, const wchar_t* missing) {
  return ValueToString(value, format, missing, L"%d");
}
CStringW ToStringW(__int64 value, const wchar_t* format, const wchar_t* missing) {
  return ValueToString(value, format, missing, L"%I64d");
}
CStringW ToStringW(unsigned int value, const wchar_t* format, const wchar_t* missing) {
  return ValueToString(value, format, missing, L"%u");
}
CString ToString(double value, const char* format, const char* missing) {
  return ToStringA(value, format, missing);
}
CString ToString(int value, const char* format, const char* missing) {
  return ToStringA(value, format, missing);
}
CString ToString(__int64 value, const char* format, const char* missing) {
  return ToStringA(value, format, missing);
}
CString ToString(unsigned int value, const char* format, const char* missing) {
  return ToStringA(value, format, missing);
}

CString Format(const char* format, ...) {
  CString text;
  va_list args;
  va_start(args, format);
  text.FormatV(format, args);
  va_end(args);
  return text;
}

CStringW Format(const wchar_t* format, ...) {
  CStringW text;
  va_list args;
  va_start(args, format);
  text.FormatV(format, args);
  va_end(args);
  return text;
}

CString Format(unsigned long id, ...) {
  va_list args;
  va_start(args, id);
  CString text = zenutl::language::FormatLanguageString(static_cast<unsigned int>(id), args);
  va_end(args);
  return text;
}

CString FormatIndex(unsigned long n) {
  // Every ordinal ends in "th", "1th" and "2th" included: the first, second and third forms are
  // each overwritten by the last one, and callers depend on the text as it comes out.
  CString text;
  text.Format("%luth", n);
  return text;
}

char* znitoa(int value, char* buffer, int radix) {
  if (radix < 2 || radix > 36) radix = 10;
  char* out = buffer;
  // The magnitude is taken as unsigned so that INT_MIN prints correctly.
  unsigned int magnitude = static_cast<unsigned int>(value);
  if (value < 0) {
    *out++ = '-';
    magnitude = 0u - magnitude;
  }
  AppendDigits(magnitude, static_cast<unsigned int>(radix), out);
  *out = 0;
  return buffer;
}

int znsnprintf(char* buffer, unsigned int size, const char* format, ...) {
  if (size == 0) return -1;
  std::string text;
  va_list args;
  va_start(args, format);
  zenutl::detail::AppendFormatted(text, format, args);
  va_end(args);
  const std::size_t copied = std::min<std::size_t>(text.size(), size - 1);
  std::memcpy(buffer, text.data(), copied);
  buffer[copied] = 0;
  // The Windows runtime's bounded print answers -1 whenever the text did not fit in size-1.
  if (text.size() > size - 1) return -1;
  return static_cast<int>(text.size());
}

char* znstrdup(const char* text) {
  return Duplicate(text);
}
wchar_t* znstrdup(const wchar_t* text) {
  return Duplicate(text);
}

const char* znstristr(const char* text, const char* sought) {
  return FindNoCase(text, sought);
}
const wchar_t* znstristr(const wchar_t* text, const wchar_t* sought) {
  return FindNoCase(text, sought);
}

char* SetStr(char*& target, const char* source) {
  return ReplaceHeapString(target, source);
}
wchar_t* SetStr(wchar_t*& target, const wchar_t* source) {
  return ReplaceHeapString(target, source);
}

char* ConcatStr(char*& target, const char* source) {
  return AppendHeapString(target, source);
}
wchar_t* ConcatStr(wchar_t*& target, const wchar_t* source) {
  return AppendHeapString(target, source);
}

char* TrimWhiteSpace(char* text) {
  if (text == nullptr || *text == 0) return text;
  const char* first = SkipSpace(text);
  if (first != text) std::memmove(text, first, std::strlen(first) + 1);
  for (std::size_t length = std::strlen(text); length > 0 && IsSpace(text[length - 1]); --length) {
    text[length - 1] = 0;
  }
  return text;
}

const CString& Empty() {
  static const CString* const sEmpty = new CString();
  return *sEmpty;
}

}  // namespace ZnString
