// vlsprintf: printf whose conversions name the argument they print, so that a translated format
// may put the arguments in another order than the code passes them.
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include "core/format_arguments.h"
#include "zenutl/zn_string_algorithms.h"

namespace ZnString {
namespace {

bool IsDigit(char ch) {
  return ch >= '0' && ch <= '9';
}

// Reads the decimal digits at `at`, moving past them; false when their value exceeds `limit`.
bool ReadNumber(const std::string& format, std::size_t& at, int limit, int& value) {
  value = 0;
  bool fits = true;
  for (; IsDigit(format[at]); ++at) {
    if (fits) value = value * 10 + (format[at] - '0');
    fits = fits && value <= limit;
  }
  return fits;
}

struct Conversion {
  std::size_t begin;       // the '%'
  std::size_t end;         // after the closing '%'
  std::string flagsWidth;  // "%-08.3", everything before the size
  char size;               // 'l', 'h', 'I' (for I64) or 0
  char type;               // the type letter
  int position;            // which argument, from 1
  std::string printed;
};

// Reads the conversion whose '%' is at `begin`; false if it is malformed.
bool ParseConversion(const std::string& format, std::size_t begin, Conversion& conversion) {
  std::size_t at = begin + 1;
  while (format[at] != '\0' && std::strchr("-+0 #", format[at]) != nullptr) ++at;
  // A field wider than the limit could only make the output huge: a bad format.
  int field = 0;
  if (!ReadNumber(format, at, zenutl::detail::kFormatFieldLimit, field)) return false;
  if (format[at] == '.') {
    ++at;
    if (!ReadNumber(format, at, zenutl::detail::kFormatFieldLimit, field)) return false;
  }
  conversion.flagsWidth = format.substr(begin, at - begin);
  conversion.size = 0;
  if (format[at] == 'l' || format[at] == 'h') {
    conversion.size = format[at++];
  } else if (format[at] == 'I') {
    if (format.compare(at + 1, 2, "64") != 0) return false;
    conversion.size = 'I';
    at += 3;
  }
  conversion.type = format[at];
  if (conversion.type == '\0' || std::strchr("cCsSpeEfgGdiouxX", conversion.type) == nullptr) {
    return false;
  }
  ++at;
  if (!ReadNumber(format, at, INT_MAX / 10, conversion.position)) return false;
  if (format[at] != '%') return false;
  conversion.begin = begin;
  conversion.end = at + 1;
  return true;
}

template <typename T>
std::string PrintOne(const std::string& piece, T value) {
  const int needed = std::snprintf(nullptr, 0, piece.c_str(), value);
  if (needed <= 0) return std::string();
  std::string text(static_cast<std::size_t>(needed) + 1, '\0');
  std::snprintf(&text[0], text.size(), piece.c_str(), value);
  text.resize(static_cast<std::size_t>(needed));
  return text;
}

// Takes the conversion's argument from the list and prints it alone. The sizes follow this
// platform's calling convention: pointers for texts, int for characters and plain integers,
// long for `l` and long long for `I64`. `S` and `C` are wide, as in the narrow printf of the
// platform the format language comes from.
std::string PrintArgument(const Conversion& conversion, va_list& arguments) {
  const std::string& head = conversion.flagsWidth;
  switch (conversion.type) {
    case 'c':
    case 'C': {
      const int ch = va_arg(arguments, int);
      const bool wide =
          conversion.size == 'l' || (conversion.type == 'C' && conversion.size != 'h');
      if (wide) return PrintOne(head + "lc", static_cast<wint_t>(ch));
      return PrintOne(head + "c", ch);
    }
    case 's':
    case 'S': {
      const void* text = va_arg(arguments, const void*);
      const bool wide =
          conversion.size == 'l' || (conversion.type == 'S' && conversion.size != 'h');
      if (wide) return PrintOne(head + "ls", static_cast<const wchar_t*>(text));
      return PrintOne(head + "s", static_cast<const char*>(text));
    }
    case 'p':
      return PrintOne(head + "p", va_arg(arguments, void*));
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G':
      return PrintOne(head + conversion.type, va_arg(arguments, double));
    default:
      break;
  }
  switch (conversion.size) {
    case 'I':
      return PrintOne(head + "ll" + conversion.type, va_arg(arguments, long long));
    case 'l':
      return PrintOne(head + "l" + conversion.type, va_arg(arguments, long));
    case 'h':
      return PrintOne(head + "h" + conversion.type, va_arg(arguments, int));
    default:
      return PrintOne(head + conversion.type, va_arg(arguments, int));
  }
}

// Appends format text that holds no conversion, "%%" giving one '%'.
void AppendLiteral(std::string& out, const std::string& format, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to; ++i) {
    out += format[i];
    if (format[i] == '%' && i + 1 < to && format[i + 1] == '%') ++i;
  }
}

// The text of `format` with its arguments; false for a bad format.
bool PrintPositional(const char* format, va_list arguments, std::string& out) {
  if (format == nullptr) return false;
  const std::string text(format);

  std::vector<Conversion> conversions;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') continue;
    if (text[at + 1] == '%') {
      ++at;
      continue;
    }
    Conversion conversion;
    if (!ParseConversion(text, at, conversion)) return false;
    conversions.push_back(conversion);
    at = conversion.end - 1;
  }

  // Arguments are taken from the list in the order of their positions.
  std::vector<Conversion*> byPosition;
  for (Conversion& conversion : conversions) byPosition.push_back(&conversion);
  std::stable_sort(
      byPosition.begin(), byPosition.end(),
      [](const Conversion* a, const Conversion* b) { return a->position < b->position; });
  va_list list;
  va_copy(list, arguments);
  for (Conversion* conversion : byPosition) conversion->printed = PrintArgument(*conversion, list);
  va_end(list);

  std::size_t cursor = 0;
  for (const Conversion& conversion : conversions) {
    AppendLiteral(out, text, cursor, conversion.begin);
    out += conversion.printed;
    cursor = conversion.end;
  }
  AppendLiteral(out, text, cursor, text.size());
  // A printed zero character ("%c" of 0) ends the text, as it did in the caller's buffer.
  out.resize(std::strlen(out.c_str()));
  return true;
}

}  // namespace

int vlsprintf(char* output, const char* format, va_list arguments) {
  if (output == nullptr) return 0;
  output[0] = '\0';
  std::string out;
  if (!PrintPositional(format, arguments, out)) return 0;
  std::memcpy(output, out.c_str(), out.size() + 1);
  return static_cast<int>(out.size());
}

int vlsnprintf(char* output, std::size_t size, const char* format, va_list arguments) {
  if (output == nullptr || size == 0) return -1;
  output[0] = '\0';
  std::string out;
  if (!PrintPositional(format, arguments, out)) return 0;
  const std::size_t kept = std::min(out.size(), size - 1);
  std::memcpy(output, out.data(), kept);
  output[kept] = '\0';
  return kept == out.size() ? static_cast<int>(kept) : -1;
}

int lsprintf(char* output, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vlsprintf(output, format, arguments);
  va_end(arguments);
  return length;
}

int lsnprintf(char* output, std::size_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vlsnprintf(output, size, format, arguments);
  va_end(arguments);
  return length;
}

}  // namespace ZnString
