#include "json/json_number_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace zenutl {
namespace json_detail {
namespace {

// "00" "01" ... "99": two digits at a time halve the divisions.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

char* FormatUnsigned(std::uint64_t value, char* out) {
  char digits[20];
  char* start = digits + sizeof digits;
  while (value >= 100) {
    start -= 2;
    std::memcpy(start, kDigitPairs + 2 * (value % 100), 2);
    value /= 100;
  }
  if (value >= 10) {
    start -= 2;
    std::memcpy(start, kDigitPairs + 2 * value, 2);
  } else {
    *--start = static_cast<char>('0' + value);
  }
  const std::size_t length = digits + sizeof digits - start;
  std::memcpy(out, start, length);
  return out + length;
}

}  // namespace

char* FormatNumber(double value, char* out) {
  // An integer below 1e16 has at most 16 digits, so "%.16g" prints all of them, without point or
  // exponent.
  const double magnitude = std::fabs(value);
  if (magnitude < 1e16 && magnitude == std::trunc(magnitude)) {
    if (value < 0) *out++ = '-';
    return FormatUnsigned(static_cast<std::uint64_t>(magnitude), out);
  }
  return std::to_chars(out, out + kNumberTextLimit, value, std::chars_format::general, 16).ptr;
}

}  // namespace json_detail
}  // namespace zenutl
