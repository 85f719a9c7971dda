#include "core/format_arguments.h"

#include <cstring>

namespace zenutl {
namespace detail {
namespace {

bool IsDigit(char ch) {
  return ch >= '0' && ch <= '9';
}

// Reads a width or a precision at `p`: digits, or '*' which takes an int argument. False for one
// above the limit and for a numbered argument ("%1$d", "%*1$d").
bool ReadField(const char*& p, std::vector<FormatArgument>& arguments) {
  if (*p == '*') {
    ++p;
    if (IsDigit(*p)) return false;
    arguments.push_back(FormatArgument::kInt);
    return true;
  }
  int value = 0;
  for (; IsDigit(*p); ++p) {
    value = value * 10 + (*p - '0');
    if (value > kFormatFieldLimit) return false;
  }
  return *p != '$';
}

enum class Size { kNone, kShort, kLong, kLong64, kLongDouble, kWide };

Size ReadSize(const char*& p) {
  if (std::strncmp(p, "I64", 3) == 0) {
    p += 3;
    return Size::kLong64;
  }
  if (std::strncmp(p, "I32", 3) == 0) {
    p += 3;
    return Size::kNone;
  }
  switch (*p) {
    case 'I':
    case 'j':
    case 'z':
    case 't':
    case 'q':
      ++p;
      return Size::kLong64;
    case 'h':
      p += p[1] == 'h' ? 2 : 1;
      return Size::kShort;
    case 'l':
      if (p[1] == 'l') {
        p += 2;
        return Size::kLong64;
      }
      ++p;
      return Size::kLong;
    case 'L':
      ++p;
      return Size::kLongDouble;
    case 'w':
      ++p;
      return Size::kWide;
    default:
      return Size::kNone;
  }
}

// The argument of conversion `type` with `size`; false for a type that is not allowed.
bool ArgumentOf(char type, Size size, FormatArgument& argument) {
  switch (type) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
      argument = (size == Size::kLong || size == Size::kLong64 || size == Size::kLongDouble)
                     ? FormatArgument::kInt64
                     : FormatArgument::kInt;
      return true;
    case 'c':
    case 'C':
      argument = FormatArgument::kInt;  // a char or wchar_t, passed as an int
      return true;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      argument = size == Size::kLongDouble ? FormatArgument::kLongDouble : FormatArgument::kDouble;
      return true;
    case 's':
      argument = (size == Size::kLong || size == Size::kWide) ? FormatArgument::kWideText
                                                              : FormatArgument::kText;
      return true;
    case 'S':
      argument = size == Size::kShort ? FormatArgument::kText : FormatArgument::kWideText;
      return true;
    case 'p':
      argument = FormatArgument::kPointer;
      return true;
    default:  // 'n' above all, and anything unknown or cut off
      return false;
  }
}

}  // namespace

bool FormatArguments(const char* format, std::vector<FormatArgument>& arguments) {
  arguments.clear();
  if (format == nullptr) return true;
  for (const char* p = format; *p; ++p) {
    if (*p != '%') continue;
    ++p;
    if (*p == '%') continue;
    while (*p != '\0' && std::strchr("-+ #0", *p) != nullptr) ++p;
    if (!ReadField(p, arguments)) return false;
    if (*p == '.') {
      ++p;
      if (!ReadField(p, arguments)) return false;
    }
    const Size size = ReadSize(p);
    FormatArgument argument;
    if (!ArgumentOf(*p, size, argument)) return false;
    arguments.push_back(argument);
  }
  return true;
}

}  // namespace detail
}  // namespace zenutl
