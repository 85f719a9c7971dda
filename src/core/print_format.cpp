#include "core/print_format.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "zenutl/cstring.h"

namespace zenutl {
namespace detail {
namespace {

// The size prefix of a conversion, with the Windows ones mapped: I64 is kLongLong, I32 is
// kDefault, a bare I is kSize; w (wide text) is kWide.
enum class Size { kDefault, kChar, kShort, kLong, kLongLong, kIntMax, kSize, kLongDouble, kWide };

constexpr char kFlagLetters[] = "-+ #0'";
constexpr unsigned kLeftAlign = 1u;  // the bit of '-'

struct Conversion {
  unsigned flags = 0;  // bit i for kFlagLetters[i]
  int width = -1;
  int precision = -1;
  Size size = Size::kDefault;
  char type = 0;
  bool fits = true;  // false when a width or precision is beyond int: nothing is printed
};

template <typename CharT>
bool IsDigit(CharT ch) {
  return ch >= '0' && ch <= '9';
}

template <typename CharT>
int ReadCount(const CharT*& p, bool& fits) {
  long long value = 0;
  for (; IsDigit(*p); ++p) {
    value = value * 10 + (*p - '0');
    if (value > INT_MAX) {
      fits = false;
      value = INT_MAX;
    }
  }
  return static_cast<int>(value);
}

// Reads the conversion that follows a '%'. A '*' takes its number from the arguments. Returns
// the position after the type letter, or null when the format ends first.
template <typename CharT>
const CharT* ReadConversion(const CharT* p, va_list* args, Conversion& c) {
  for (; *p > 0 && *p < 128; ++p) {
    const char* flag = std::strchr(kFlagLetters, static_cast<char>(*p));
    if (flag == nullptr || *flag == '\0') break;
    c.flags |= 1u << (flag - kFlagLetters);
  }
  if (*p == '*') {
    const long long width = va_arg(*args, int);
    if (width < 0) c.flags |= kLeftAlign;
    c.width = static_cast<int>(width < 0 ? (-width > INT_MAX ? INT_MAX : -width) : width);
    ++p;
  } else if (IsDigit(*p)) {
    c.width = ReadCount(p, c.fits);
  }
  if (*p == '.') {
    ++p;
    if (*p == '*') {
      const int precision = va_arg(*args, int);
      c.precision = precision < 0 ? -1 : precision;
      ++p;
    } else {
      c.precision = ReadCount(p, c.fits);
    }
  }
  switch (*p) {
    case 'h':
      c.size = p[1] == 'h' ? Size::kChar : Size::kShort;
      p += p[1] == 'h' ? 2 : 1;
      break;
    case 'l':
      c.size = p[1] == 'l' ? Size::kLongLong : Size::kLong;
      p += p[1] == 'l' ? 2 : 1;
      break;
    case 'q':
      c.size = Size::kLongLong;
      ++p;
      break;
    case 'L':
      c.size = Size::kLongDouble;
      ++p;
      break;
    case 'j':
      c.size = Size::kIntMax;
      ++p;
      break;
    case 'z':
    case 't':
      c.size = Size::kSize;
      ++p;
      break;
    case 'w':
      c.size = Size::kWide;
      ++p;
      break;
    case 'I':
      if (p[1] == '6' && p[2] == '4') {
        c.size = Size::kLongLong;
        p += 3;
      } else if (p[1] == '3' && p[2] == '2') {
        p += 3;
      } else {
        c.size = Size::kSize;
        ++p;
      }
      break;
    default:
      break;
  }
  if (*p == 0) return nullptr;
  c.type = *p > 0 && *p < 128 ? static_cast<char>(*p) : '\x7f';
  return p + 1;
}

long long SignedArgument(Size size, va_list* args) {
  switch (size) {
    case Size::kChar:
      return static_cast<signed char>(va_arg(*args, int));
    case Size::kShort:
      return static_cast<short>(va_arg(*args, int));
    case Size::kLong:
      return va_arg(*args, long);
    case Size::kLongLong:
      return va_arg(*args, long long);
    case Size::kIntMax:
      return va_arg(*args, std::intmax_t);
    case Size::kSize:
      return va_arg(*args, std::ptrdiff_t);
    default:
      return va_arg(*args, int);
  }
}

unsigned long long UnsignedArgument(Size size, va_list* args) {
  switch (size) {
    case Size::kChar:
      return static_cast<unsigned char>(va_arg(*args, unsigned int));
    case Size::kShort:
      return static_cast<unsigned short>(va_arg(*args, unsigned int));
    case Size::kLong:
      return va_arg(*args, unsigned long);
    case Size::kLongLong:
      return va_arg(*args, unsigned long long);
    case Size::kIntMax:
      return va_arg(*args, std::uintmax_t);
    case Size::kSize:
      return va_arg(*args, std::size_t);
    default:
      return va_arg(*args, unsigned int);
  }
}

// The C library's form of one conversion, with `size` as its size prefix.
struct RuntimeConversion {
  char text[48];
  RuntimeConversion(const Conversion& c, const char* size) {
    char* p = text;
    *p++ = '%';
    for (int i = 0; kFlagLetters[i] != '\0'; ++i) {
      if (c.flags & (1u << i)) *p++ = kFlagLetters[i];
    }
    if (c.width >= 0) p += std::sprintf(p, "%d", c.width);
    if (c.precision >= 0) p += std::sprintf(p, ".%d", c.precision);
    while (*size != '\0') *p++ = *size++;
    *p++ = c.type;
    *p = '\0';
  }
};

template <typename T>
void AppendRuntime(std::string& out, const Conversion& c, const char* size, T value) {
  if (!c.fits) return;
  const RuntimeConversion conversion(c, size);
  char small[128];
  const int needed = std::snprintf(small, sizeof(small), conversion.text, value);
  if (needed < 0) return;
  if (static_cast<std::size_t>(needed) < sizeof(small)) {
    out.append(small, static_cast<std::size_t>(needed));
    return;
  }
  const std::size_t at = out.size();
  out.resize(at + static_cast<std::size_t>(needed) + 1);
  std::snprintf(&out[at], static_cast<std::size_t>(needed) + 1, conversion.text, value);
  out.resize(at + static_cast<std::size_t>(needed));
}

// Numbers come out of the C library in bytes; in a wide text they are widened as the wide
// printf would, through the locale, which for the usual ASCII is a plain copy.
template <typename T>
void AppendRuntime(std::wstring& out, const Conversion& c, const char* size, T value) {
  std::string bytes;
  AppendRuntime(bytes, c, size, value);
  std::size_t i = 0;
  while (i < bytes.size() && static_cast<unsigned char>(bytes[i]) < 0x80) out += bytes[i++];
  std::mbstate_t state{};
  while (i < bytes.size()) {
    wchar_t ch;
    const std::size_t used = std::mbrtowc(&ch, bytes.data() + i, bytes.size() - i, &state);
    if (used == 0 || used > bytes.size() - i) {
      out += L'\xFFFD';
      ++i;
      state = std::mbstate_t{};
      continue;
    }
    out += ch;
    i += used;
  }
}

std::size_t Length(const char* text, std::size_t limit) {
  return strnlen(text, limit);
}
std::size_t Length(const wchar_t* text, std::size_t limit) {
  return wcsnlen(text, limit);
}

template <typename CharT>
std::basic_string<CharT> Null(int precision) {
  static const char kNull[] = "(null)";
  if (precision >= 0 && precision < 6) return {};
  return std::basic_string<CharT>(kNull, kNull + 6);
}

std::string InWidth(std::wstring text, char) {
  return WideToUtf8(text);
}
std::string InWidth(std::string text, char) {
  return text;
}
std::wstring InWidth(std::string text, wchar_t) {
  return Utf8ToWide(text);
}
std::wstring InWidth(std::wstring text, wchar_t) {
  return text;
}

// Cuts a text to `precision` units; UTF-8 is cut before a character that would not fit whole.
void Cut(std::string& text, int precision) {
  if (precision < 0 || text.size() <= static_cast<std::size_t>(precision)) return;
  std::size_t end = static_cast<std::size_t>(precision);
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  text.resize(end);
}
void Cut(std::wstring& text, int precision) {
  if (precision >= 0 && text.size() > static_cast<std::size_t>(precision)) {
    text.resize(static_cast<std::size_t>(precision));
  }
}

template <typename CharT>
void AppendPadded(std::basic_string<CharT>& out, const Conversion& c,
                  const std::basic_string<CharT>& text) {
  if (!c.fits) return;
  const std::size_t width = c.width > 0 ? static_cast<std::size_t>(c.width) : 0;
  const std::size_t padding = width > text.size() ? width - text.size() : 0;
  if (!(c.flags & kLeftAlign)) out.append(padding, CharT(' '));
  out += text;
  if (c.flags & kLeftAlign) out.append(padding, CharT(' '));
}

// Whether a text or character conversion takes a wide argument. The type letter's case says
// "the other width" (`%S` in a byte format is wide, in a wide format bytes), and h, l or w
// override it.
template <typename CharT>
bool TakesWide(const Conversion& c) {
  if (c.size == Size::kShort) return false;
  if (c.size == Size::kLong || c.size == Size::kWide) return true;
  const bool upper = c.type == 'S' || c.type == 'C';
  return sizeof(CharT) == 1 ? upper : !upper;
}

template <typename CharT>
void AppendCharacter(std::basic_string<CharT>& out, const Conversion& c, va_list* args) {
  if (TakesWide<CharT>(c)) {
    const wchar_t ch = static_cast<wchar_t>(va_arg(*args, wint_t));
    AppendPadded(out, c, InWidth(std::wstring(1, ch), CharT()));
  } else {
    const char ch = static_cast<char>(va_arg(*args, int));
    AppendPadded(out, c, InWidth(std::string(1, ch), CharT()));
  }
}

// A text of either width; with a precision only as much of it is read as can be printed, so
// that an unterminated array is fine, as in printf.
template <typename CharT, typename ArgT>
std::basic_string<CharT> TextArgument(const ArgT* text, int precision) {
  if (text == nullptr) return Null<CharT>(precision);
  // One UTF-8 character of up to four bytes gives one wide character.
  const std::size_t unitsPerOutput = sizeof(ArgT) == 1 && sizeof(CharT) > 1 ? 4 : 1;
  const std::size_t limit = precision < 0 ? static_cast<std::size_t>(-1)
                                          : static_cast<std::size_t>(precision) * unitsPerOutput;
  std::basic_string<CharT> converted =
      InWidth(std::basic_string<ArgT>(text, Length(text, limit)), CharT());
  Cut(converted, precision);
  return converted;
}

template <typename CharT>
void AppendText(std::basic_string<CharT>& out, const Conversion& c, va_list* args) {
  if (TakesWide<CharT>(c)) {
    AppendPadded(out, c, TextArgument<CharT>(va_arg(*args, const wchar_t*), c.precision));
  } else {
    AppendPadded(out, c, TextArgument<CharT>(va_arg(*args, const char*), c.precision));
  }
}

// Prints one conversion; false for a type letter the runtime does not know.
template <typename CharT>
bool AppendConversion(std::basic_string<CharT>& out, const Conversion& c, va_list* args) {
  switch (c.type) {
    case 'd':
    case 'i':
      AppendRuntime(out, c, "ll", SignedArgument(c.size, args));
      return true;
    case 'o':
    case 'u':
    case 'x':
    case 'X':
      AppendRuntime(out, c, "ll", UnsignedArgument(c.size, args));
      return true;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      if (c.size == Size::kLongDouble) {
        AppendRuntime(out, c, "L", va_arg(*args, long double));
      } else {
        AppendRuntime(out, c, "", va_arg(*args, double));
      }
      return true;
    case 'p':
      AppendRuntime(out, c, "", va_arg(*args, void*));
      return true;
    case 'n':
      va_arg(*args, void*);
      return true;
    case 'c':
    case 'C':
      AppendCharacter(out, c, args);
      return true;
    case 's':
    case 'S':
      AppendText(out, c, args);
      return true;
    default:
      return false;
  }
}

template <typename CharT>
void Format(std::basic_string<CharT>& out, const CharT* format, va_list* args) {
  if (format == nullptr) return;
  const CharT* p = format;
  while (*p != 0) {
    const CharT* percent = p;
    while (*percent != 0 && *percent != '%') ++percent;
    out.append(p, static_cast<std::size_t>(percent - p));
    if (*percent == 0) break;
    if (percent[1] == '%') {
      out += CharT('%');
      p = percent + 2;
      continue;
    }
    Conversion conversion;
    const CharT* next = ReadConversion(percent + 1, args, conversion);
    if (next == nullptr) {  // an unfinished conversion at the end stays as text
      out.append(percent);
      break;
    }
    if (!AppendConversion(out, conversion, args)) {
      out.append(percent, static_cast<std::size_t>(next - percent));
    }
    p = next;
  }
}

}  // namespace

void AppendFormatted(std::string& out, const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  Format(out, format, &copy);
  va_end(copy);
}

void AppendFormatted(std::wstring& out, const wchar_t* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  Format(out, format, &copy);
  va_end(copy);
}

}  // namespace detail
}  // namespace zenutl
