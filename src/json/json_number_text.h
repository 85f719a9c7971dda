// The text of a finite JSON number: what printf's "%.16g" writes in the "C" locale.
//
// The writers must print numbers the same under every process locale and inside the library's
// decimal-separator scopes, without touching process-wide state to get there. std::to_chars with
// a precision is defined as printf in the "C" locale and reads no locale at all, so it is that
// "C" locale of the writers' own; integers below 1e16, the commonest numbers in documents, take a
// shorter road to the same digits.
#ifndef ZENUTL_JSON_JSON_NUMBER_TEXT_H_
#define ZENUTL_JSON_JSON_NUMBER_TEXT_H_

#include <cstddef>

namespace zenutl {
namespace json_detail {

// The room FormatNumber needs at `out`. The longest text, e.g. "-2.225073858507201e-308", is
// 23 bytes, but some copies are of fixed size and may write further.
constexpr std::size_t kNumberTextLimit = 40;

// Writes a finite `value` to `out` as "%.16g" does (1 => "1", 0.1 => "0.1", 1e300 => "1e+300",
// 1.0/3 => "0.3333333333333333") and returns the end of the text, unterminated.
char* FormatNumber(double value, char* out);

}  // namespace json_detail
}  // namespace zenutl

#endif  // ZENUTL_JSON_JSON_NUMBER_TEXT_H_
