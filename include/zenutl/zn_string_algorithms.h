// ZnString text algorithms: wildcard matching, natural order of names with numbers in them,
// limit expressions, a positional printf and list handling for tables of names.
//
// Every function here is free and stateless. The number conversions of the same namespace
// (ToDouble, ToString, ...) are in zn_string.h; the std::string helpers are in zn_std_string.h.
//
// Errors: nothing here throws of its own accord; bad input is answered by the result, as each
// function says (false, 0, an empty output). Only the standard containers may throw
// (std::bad_alloc, std::length_error). A null text argument is taken as an empty text.
#ifndef ZENUTL_ZN_STRING_ALGORITHMS_H_
#define ZENUTL_ZN_STRING_ALGORITHMS_H_

#include <cstdarg>
#include <cstddef>
#include <vector>

#include "zenutl/cstring.h"

namespace ZnString {

// Whether the whole `text` matches `pattern`: `*` is any run of characters (also none), `?`
// exactly one, `\*` and `\?` the literal characters, and `\` before anything else a literal
// backslash. Without `caseSensitive` both sides compare through toupper.
//   "*", ""            => true         "?", ""       => false
//   "a*", "A" (nocase) => true         "a\*b", "a*b" => true, "axb" => false
// One escape is lost on purpose, as callers rely on: directly after the first literal that
// follows a `*`, `\?` and `\*` act as wildcards, so "a*b\?c" matches "axbyc". Elsewhere the
// escape holds. The time is at most proportional to the pattern's length times the text's,
// whatever the stars.
bool WildCardCompare(const char* pattern, const char* text, bool caseSensitive);

// Natural order: -1, 0 or 1, with runs of digits compared as numbers of any length (they are
// never converted). Equal numbers with more leading zeros sort after, and that decides at once,
// before any text that follows. Other characters compare as signed values, so bytes above 127
// sort before ASCII. Allocates nothing; made for use as a sort's comparison.
//   "file2" < "file10"   "a1" < "a01"   "0" < "00"   "a" < "a1"   "" < "a"
//   "x007y" > "x7z" (the zeros decide before the "y" and "z")
int znstrnumbercmp(const char* a, const char* b);
// The same on wide text; only '0' to '9' count as digits.
int znstrnumbercmp(const wchar_t* a, const wchar_t* b);
// The same as the narrow form, but letters compare through tolower: "ABC1" < "abc2".
int znstrnumbericmp(const char* a, const char* b);

// Splits `text` into `count` buffers of `char*` that follow as variable arguments, each with
// room for `maxLength` + 1 characters, and returns how many of them are not empty. A run of
// separators counts as one; a text that begins with a separator gives an empty first buffer. A
// field longer than `maxLength` is not skipped: its rest starts the next buffer. Buffers beyond
// the text come out empty; a null buffer is passed over. A `count` of 0 or less returns 0.
//   "a,,b", ',', 10, 2 => "a", "b"; returns 2
//   ",a", ',', 10, 2   => "", "a";  returns 1
//   "abcde", ',', 2, 3 => "ab", "cd", "e"; returns 3
int SeparateList(const char* text, char separator, int maxLength, int count, ...);

// Reads limits such as "> 5 ; <= 10" into `lower` and `upper`. Limits are separated by ':' or
// ';'; each has a number and one of "<", ">", "=", "<=", "=<", ">=", "=>", the number on either
// side ("5 <" and "> 5" both set the lower bound 5). "=" sets both bounds. A bound changes only
// if it tightens, and then its flag says whether it is inclusive ("=" is part of the
// operator). Numbers are read as by ToDouble, so a decimal comma serves as well.
//   "> 5 ; <= 10" => 5 exclusive, 10 inclusive     "= 3"        => 3 and 3, both inclusive
//   "> 5 ; > 3"   => lower 5                       "x > 5", "" => false
// Returns true when a bound was set. The bounds start at -FLT_MAX and FLT_MAX and the flags
// at false; on false the outputs keep what was set before the fault. Two quirks are kept: an
// operator with no number on either side, directly before a separator, takes the last value
// read (0 at first, -99.0 after a blank text), and the same operator at the very end of the
// text returns false.
bool EvaluateLimitExpression(const char* expression, float& lower, float& upper,
                             bool& lowerInclusive, bool& upperInclusive);

// printf with numbered arguments: a conversion is `%`, flags "-+0 #", width, `.precision`, a
// size (`l`, `h` or `I64`), the type letter, the argument's position in decimal and a closing
// `%`; "%%" prints one percent sign.
//   "%s2% is %d1%", 42, "x"  => "x is 42"        "%d1%%%", 5 => "5%"
// Arguments are taken in the order of their positions, by type: `c` `C` an int, `s` `S` `p` a
// pointer (`S` a wide text), `e` `E` `f` `g` `G` a double, `d` `i` `o` `u` `x` `X` an int, a
// long with `l` and a 64-bit integer with `I64`. A gap in the positions is not seen. Returns
// the length of `output`, which the caller makes large enough; a malformed conversion, an
// unknown type letter, or a width or precision above 1024 empties `output` and returns 0 ("%d"
// has no position, so it fails).
int vlsprintf(char* output, const char* format, va_list arguments);
int lsprintf(char* output, const char* format, ...);
// The same into a buffer of `size` characters, for formats whose output the caller cannot
// foresee, such as translated ones: at most size-1 characters and a terminator. Returns the
// length, or -1 when the text had to be cut or `size` is 0 (the buffer is then not touched);
// a bad format empties the buffer and returns 0.
//   (8, "%s1%!", "abc") => "abc!", 4        (4, "%s1%!", "abc") => "abc", -1
int vlsnprintf(char* output, std::size_t size, const char* format, va_list arguments);
int lsnprintf(char* output, std::size_t size, const char* format, ...);

// Joins a list for a sentence: ("a", "b", "c") => "a, b and c". A null `separator` means
// ", ", a null `lastSeparator` " and ", and `maxItems` -1 (any negative) no limit. With more items
// than `maxItems` the first `maxItems` are joined by `separator` and followed by `separator` and
// "..." or by `moreFormat` printed with the number of items left out (an int):
//   ("a".."e"), 3, null => "a, b, c, ..."      ("a".."e"), 3, " (+%d)" => "a, b, c (+2)"
// A `maxItems` of 0 shows no item, only what stands for the rest.
CString FormatStringVector(const std::vector<CString>& items, const char* separator = nullptr,
                           const char* lastSeparator = nullptr, int maxItems = -1,
                           const char* moreFormat = nullptr);

// Cuts `text` at every `separator` (same defaults). Not the inverse of FormatStringVector, and
// kept so because callers expect it: `lastSeparator` is never searched for; when it differs
// from `separator` (ignoring case) the text after the last separator is pushed a second time.
// The piece after the last separator is otherwise pushed only if it is not empty.
//   "a, b and c" (defaults)  => "a", "b and c", "b and c"
//   "" (defaults)            => ""          "" with equal separators => nothing
//   "a, b, " (defaults)      => "a", "b", ""
// An empty separator cuts nothing.
std::vector<CString> FormatStringToVector(const CString& text, const char* separator = nullptr,
                                          const char* lastSeparator = nullptr);

// For each string of `wanted`, in order, the 1-based index of the same string (case-sensitive)
// in `present`, the last one where it occurs twice. Strings not present add nothing, so the
// result can be shorter than `wanted`. A null vector counts as empty.
std::vector<int> GetIndexVectorToSort(const std::vector<CString>* wanted,
                                      const std::vector<CString>* present);

// Rebuilds every row so that its column i is the old column order[i] (1-based). Columns not
// named are dropped and a column may be named twice; an index the row does not have gives an
// empty text. A null `order` leaves the rows alone.
void RearrangeColumns(std::vector<std::vector<CString>>& rows, const std::vector<int>* order);

// A copy of `text` with every `from` replaced by `to` (null `to` removes; null or empty `from`
// changes nothing).
CString Replace(CString text, const char* from, const char* to);

// Cuts off the head of `text` up to the first `separator`, or the first character of the set
// `separators`, and returns it; `text` keeps what follows that character. Without one, the
// whole text is returned and `text` becomes empty.
//   "a;b;c", ';' => "a", text "b;c"      "a b,c", " ," => "a", text "b,c"
CString SplitString(CString& text, char separator);
CString SplitString(CString& text, const char* separators);

}  // namespace ZnString

#endif  // ZENUTL_ZN_STRING_ALGORITHMS_H_
