// What a printf format takes from its argument list, for formats the library did not write.
//
// A translated text used as a format (ZnString::Format with a language string) comes from a
// catalogue file that anyone can edit. Before such a text may consume the caller's arguments,
// the library reads its conversions here, in the conventions of CString::Format ("%I64d", "%S"
// for a wide text in a narrow format), and compares them with what the call supplies.
#ifndef ZENUTL_CORE_FORMAT_ARGUMENTS_H_
#define ZENUTL_CORE_FORMAT_ARGUMENTS_H_

#include <vector>

namespace zenutl {
namespace detail {

// The largest width or precision a format from outside may ask for; a longer field only serves
// to make the output huge.
const int kFormatFieldLimit = 1024;

// The kinds of argument a conversion reads, grouped by how the argument is passed.
enum class FormatArgument {
  kInt,         // d i o u x X c C, with h or hh; a '*' width or precision
  kInt64,       // the same with l, ll, I64, I, z, j, t or q
  kDouble,      // e E f F g G a A
  kLongDouble,  // the same with L
  kText,        // s, hs
  kWideText,    // S, ls, ws
  kPointer,     // p
};

// The arguments `format` reads, in order. False when the format holds something that must never
// come from outside: a conversion that writes through its argument (%n), arguments chosen by
// number (%1$s), a width or precision above kFormatFieldLimit, or a conversion this reading does
// not know or that is cut off by the end of the text.
bool FormatArguments(const char* format, std::vector<FormatArgument>& arguments);

}  // namespace detail
}  // namespace zenutl

#endif  // ZENUTL_CORE_FORMAT_ARGUMENTS_H_
