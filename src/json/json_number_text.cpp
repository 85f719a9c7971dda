#include "json/json_number_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace zenutl {
namespace json_detail {
namespace {

// "00" "01" ... "99": two digits at a time halve the divisions.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes the decimal digits of `value`, without leading zeros, and returns the end.
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

constexpr std::uint64_t kLowest16Digits = 1000000000000000ULL;  // 10^15

// The fast road below needs the 80-bit long double of x86: a 64-bit mantissa, stored first.
constexpr bool kExtendedLongDouble = std::numeric_limits<long double>::digits == 64 &&
                                     std::numeric_limits<long double>::max_exponent == 16384;

// 10^0 to 10^27 are exact in a 64-bit mantissa (5^27 < 2^64); their inverses are rounded.
constexpr int kTablePowers = 27;
constexpr long double kPowersOfTen[kTablePowers + 1] = {
    1e0L,  1e1L,  1e2L,  1e3L,  1e4L,  1e5L,  1e6L,  1e7L,  1e8L,  1e9L,
    1e10L, 1e11L, 1e12L, 1e13L, 1e14L, 1e15L, 1e16L, 1e17L, 1e18L, 1e19L,
    1e20L, 1e21L, 1e22L, 1e23L, 1e24L, 1e25L, 1e26L, 1e27L};
constexpr long double kInversePowersOfTen[kTablePowers + 1] = {
    1e-0L,  1e-1L,  1e-2L,  1e-3L,  1e-4L,  1e-5L,  1e-6L,  1e-7L,  1e-8L,  1e-9L,
    1e-10L, 1e-11L, 1e-12L, 1e-13L, 1e-14L, 1e-15L, 1e-16L, 1e-17L, 1e-18L, 1e-19L,
    1e-20L, 1e-21L, 1e-22L, 1e-23L, 1e-24L, 1e-25L, 1e-26L, 1e-27L};

// magnitude * 10^power in at most two multiplications by table entries, each with a relative
// error below 2 * 2^-64; false when the power is out of reach.
bool ScaleByPowerOfTen(double magnitude, int power, long double& scaled) {
  const long double* const table = power < 0 ? kInversePowersOfTen : kPowersOfTen;
  int steps = power < 0 ? -power : power;
  if (steps > 2 * kTablePowers) return false;
  scaled = magnitude;
  if (steps > kTablePowers) {
    scaled *= table[kTablePowers];
    steps -= kTablePowers;
  }
  scaled *= table[steps];
  return true;
}

// The 16 significant digits that "%.16g" prints for a positive normal `magnitude`, as an integer
// in [10^15, 10^16), and the decimal exponent of the first one.
//
// The scaled value magnitude * 10^(15 - exponent) is computed in long double with a relative
// error below 4 * 2^-64, which is less than 0.0022 in the last digit. So the rounding to an
// integer is certain unless the fraction lies within that distance of one half; then (ties
// included), and for exponents beyond the table, the answer is false and the caller takes the
// exact road.
bool SixteenDigits(double magnitude, std::uint64_t& digits, int& exponent) {
  if (!kExtendedLongDouble) return false;
  std::uint64_t bits;
  std::memcpy(&bits, &magnitude, sizeof bits);
  const int binary_exponent = static_cast<int>(bits >> 52) - 1023;  // magnitude in [2^b, 2^(b+1))
  exponent = (binary_exponent * 78913) >> 18;  // floor(b * log10(2)): the exponent or one less
  long double scaled;
  if (!ScaleByPowerOfTen(magnitude, 15 - exponent, scaled)) return false;
  if (scaled >= 1e16L) {
    ++exponent;
    if (!ScaleByPowerOfTen(magnitude, 15 - exponent, scaled)) return false;
  }
  if (scaled < 1e15L || scaled >= 1e16L) return false;
  // Adding 3 * 2^62 leaves no bits below the units, so the sum is the nearest integer and its
  // mantissa holds that integer plus 3 * 2^62.
  constexpr long double kRounder = 3.0L * (1ULL << 62);
  const long double shifted = scaled + kRounder;
  const long double distance = scaled - (shifted - kRounder);  // exact, at most one half
  if (0.5L - (distance < 0 ? -distance : distance) < 0.005L) return false;
  std::uint64_t mantissa;
  std::memcpy(&mantissa, &shifted, sizeof mantissa);
  digits = mantissa - (3ULL << 62);
  if (digits == 10 * kLowest16Digits) {  // 9.999...95 rounded up to the next power of ten
    digits = kLowest16Digits;
    ++exponent;
  }
  return true;
}

// The eight digits of `value` < 10^8, leading zeros included.
void WriteEightDigits(std::uint32_t value, char* out) {
  const std::uint32_t high = value / 10000, low = value % 10000;
  std::memcpy(out, kDigitPairs + 2 * (high / 100), 2);
  std::memcpy(out + 2, kDigitPairs + 2 * (high % 100), 2);
  std::memcpy(out + 4, kDigitPairs + 2 * (low / 100), 2);
  std::memcpy(out + 6, kDigitPairs + 2 * (low % 100), 2);
}

// How many decimal zeros end `value`, which is not 0 and below 10^8.
int TrailingZeros(std::uint32_t value) {
  int zeros = 0;
  if (value % 10000 == 0) {
    value /= 10000;
    zeros += 4;
  }
  if (value % 100 == 0) {
    value /= 100;
    zeros += 2;
  }
  return zeros + (value % 10 == 0);
}

// "%g" with 16 digits: the fixed form for exponents from -4 to 15, the scientific one beyond,
// trailing zeros of the fraction dropped, and the point with them when nothing is left. Copies
// are of fixed size, so they may write up to 34 bytes; only the text's own bytes count.
char* FormatGeneral(std::uint64_t digits, int exponent, char* out) {
  const std::uint32_t high = static_cast<std::uint32_t>(digits / 100000000);
  const std::uint32_t low = static_cast<std::uint32_t>(digits % 100000000);
  char text[32];  // the 16 digits, then zeros that the fixed-size copies may read
  WriteEightDigits(high, text);
  WriteEightDigits(low, text + 8);
  std::memset(text + 16, '0', 16);
  // Significant digits; `high` is at least 10^7, so never all zeros.
  const int count = low != 0 ? 16 - TrailingZeros(low) : 8 - TrailingZeros(high);

  if (exponent < -4 || exponent >= 16) {
    out[0] = text[0];
    out[1] = '.';
    std::memcpy(out + 2, text + 1, 16);
    out += count > 1 ? count + 1 : 1;
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const int size = exponent < 0 ? -exponent : exponent;
    if (size >= 100) *out++ = static_cast<char>('0' + size / 100);
    std::memcpy(out, kDigitPairs + 2 * (size % 100), 2);
    return out + 2;
  }
  if (exponent < 0) {  // 0.0001234
    std::memcpy(out, "0.000", 5);
    out += 1 - exponent;
    std::memcpy(out, text, 16);
    return out + count;
  }
  const int whole = exponent + 1;  // digits before the point, zeros of `text` included
  std::memcpy(out, text, 16);
  if (count <= whole) return out + whole;
  out[whole] = '.';
  std::memcpy(out + whole + 1, text + whole, 16);
  return out + count + 1;
}

}  // namespace

char* FormatNumber(double value, char* out) {
  const double magnitude = std::fabs(value);
  // An integer below 1e16 has at most 16 digits, so "%.16g" prints all of them, without point or
  // exponent.
  if (magnitude < 1e16) {
    const std::uint64_t whole = static_cast<std::uint64_t>(magnitude);
    if (static_cast<double>(whole) == magnitude) {
      if (value < 0) *out++ = '-';
      return FormatUnsigned(whole, out);
    }
  }
  std::uint64_t digits;
  int exponent;
  if (SixteenDigits(magnitude, digits, exponent)) {
    if (value < 0) *out++ = '-';
    return FormatGeneral(digits, exponent, out);
  }
  return std::to_chars(out, out + kNumberTextLimit, value, std::chars_format::general, 16).ptr;
}

}  // namespace json_detail
}  // namespace zenutl
