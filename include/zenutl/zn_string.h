// ZnString: numbers from text and text from numbers, and small zero-terminated string helpers.
//
// Two rules set these apart from the C library. Parsing accepts a point or a comma as the
// decimal separator, whatever the locale in force, so that a number written on one machine reads
// on another. And the double -99.0 is the library's missing value: a failed parse yields it, and
// the ToString family prints a chosen text for it instead of a number. The locale's separator is
// read on every call, so a separator scope of the locale machinery applies here at once.
//
// Error contract: `ToDouble(text)` with no other argument throws `UnderflowError`,
// `OverflowError` or `InvalidArgument` (exception.h). Every other parser answers by `bool` or by
// an `EParseResult`. The heap-string helpers use array `new`; what they hand out is released by
// the caller with array `delete`, and they fail only as `new` does. Nothing else reports.
//
// Each text function comes in the byte width (`const char*`, and `CString` through its
// conversion) and, where the listing shows it, the wide width with the same behaviour. Which
// separator the locale uses is set up by the library's start-up functions, not here; longer
// string algorithms have a header of their own.
#ifndef ZENUTL_ZN_STRING_H_
#define ZENUTL_ZN_STRING_H_

#include "zenutl/cstring.h"
#include "zenutl/platform_types.h"

namespace ZnString {

// The value every failed parse yields and the ToString family prints as `missing`.
constexpr double kMissingValue = -99.0;

// The outcome of a parse, as an output parameter.
enum EParseResult {
  eParseOk = 0,         // the text was a number
  eParseUnderflow = 1,  // out of range, and the value read was 0
  eParseOverflow = 2,   // out of range, and the value read was not 0
  eParseInvalid = 3,    // blank, or text left over that is not white space
};

// strtod that takes either separator. At most the first 63 characters are seen. The first
// separator of the kind the locale does not use is turned into the locale's one, so with a point
// locale "1,5" => 1.5, "1,234,567" => 1.234 (end at the second comma), "1.5,2" => 1.5 (end at the
// comma). The first capital 'D' stops the parse ("1D5" => 1, end at 'D'), while a small 'd' is
// left to strtod. No number => 0.0 with the end at the start. `end` may be null; when given it
// points into the caller's text. A null text gives 0.0 and a null end.
double znstrtod(const char* text, char** end);
double znstrtod(const wchar_t* text, wchar_t** end);

// The value, or -99.0 whenever `result` is not eParseOk. White space around the number is
// allowed; "" and "   " are invalid; "1e999" overflows and "1e-999" underflows (both -99.0). A
// number longer than 63 characters is invalid unless only white space follows the 63rd. Note
// that "-99" parses to -99.0 with eParseOk: tell the two apart by `result`. Null is invalid.
double ToDouble(const char* text, EParseResult& result);
double ToDouble(const wchar_t* text, EParseResult& result);
// True when the parse succeeded; `value` gets the value or -99.0 in either case.
bool ToDouble(const char* text, double& value);
bool ToDouble(const wchar_t* text, double& value);
// The value; throws UnderflowError "ZnStringToDouble underflow", OverflowError
// "ZnStringToDouble overflow" or InvalidArgument "ZnStringToDouble invalid argument".
double ToDouble(const char* text);
double ToDouble(const wchar_t* text);

// As the bool form of ToDouble, narrowed to float with no range test of its own: "1e39" is true
// with infinity as the value. On failure `value` is -99.0f.
bool ToFloat(const char* text, float& value);
bool ToFloat(const wchar_t* text, float& value);

// Base-10 integers with optional white space around them. ToInt writes `value` only on success
// ("12.5" => false, value untouched). ToInt64 writes the converted prefix or the clamped value
// even when it fails ("12x" => false, value 12). Blank text leaves `value` alone in both. ToInt
// fails for values outside the 32-bit range.
bool ToInt(const char* text, int& value);
bool ToInt(const wchar_t* text, int& value);
bool ToInt64(const char* text, __int64& value);
bool ToInt64(const wchar_t* text, __int64& value);

// The text of `value`, or `missing` (null => "") when the value, converted to double, equals
// -99.0. That holds for the integer types too: ToString(-99, NULL, "n/a") => "n/a". A null
// `format` takes the type's default: "%g", "%d", "%I64d", "%u". Formats follow CString::Format.
CString ToStringA(double value, const char* format = nullptr, const char* missing = nullptr);
CString ToStringA(int value, const char* format = nullptr, const char* missing = nullptr);
CString ToStringA(__int64 value, const char* format = nullptr, const char* missing = nullptr);
CString ToStringA(unsigned int value, const char* format = nullptr, const char* missing = nullptr);
CStringW ToStringW(double value, const wchar_t* format = nullptr, const wchar_t* missing = nullptr);
CStringW ToStringW(int value, const wchar_t* format = nullptr, const wchar_t* missing = nullptr);
CStringW ToStringW(__int64 value, const wchar_t* format = nullptr,
                   const wchar_t* missing = nullptr);
CStringW ToStringW(unsigned int value, const wchar_t* format = nullptr,
                   const wchar_t* missing = nullptr);
// Forward to ToStringA.
CString ToString(double value, const char* format = nullptr, const char* missing = nullptr);
CString ToString(int value, const char* format = nullptr, const char* missing = nullptr);
CString ToString(__int64 value, const char* format = nullptr, const char* missing = nullptr);
CString ToString(unsigned int value, const char* format = nullptr, const char* missing = nullptr);

// printf formatting into a new string (with CString's "%I64d").
CString Format(const char* format, ...);
CStringW Format(const wchar_t* format, ...);
// The same with the language string `id` (LanguageString::Get) as the format.
CString Format(unsigned long id, ...);

// An "ordinal" that always ends in "th": 1 => "1th", 2 => "2th", 3 => "3th", 12 => "12th",
// 21 => "21th", 103 => "103th". Callers depend on exactly this text; do not "correct" it.
CString FormatIndex(unsigned long n);

// Writes `value` in `radix` (2 to 36, anything else means 10) with capital letters and a leading
// '-' for negative values in every radix; returns `buffer`. No bound: 34 characters suffice.
// -255 in 16 => "-FF"; INT_MIN in 10 => "-2147483648".
char* znitoa(int value, char* buffer, int radix);

// Bounded printf: at most size-1 characters, and buffer[size-1] is always a terminator. Returns
// the length written, or -1 when the text had to be cut (4, "%s", "abcdef" => "abc", -1) or
// `size` is 0 (the buffer is then not touched).
int znsnprintf(char* buffer, unsigned int size, const char* format, ...);

// A heap copy (array new); null for null.
char* znstrdup(const char* text);
wchar_t* znstrdup(const wchar_t* text);

// The first case-insensitive occurrence of `sought` in `text`, or null. A null `text` gives null;
// a null or empty `sought` gives `text`.
const char* znstristr(const char* text, const char* sought);
const wchar_t* znstristr(const wchar_t* text, const wchar_t* sought);

// Replaces the heap string `target` with a copy of `source`; a null `source` changes nothing.
// Safe when `source` is `target` itself. Returns `target`.
char* SetStr(char*& target, const char* source);
wchar_t* SetStr(wchar_t*& target, const wchar_t* source);
// Appends `source` to the heap string `target` (null target = empty); null `source` changes
// nothing. Returns `target`, which may have moved.
char* ConcatStr(char*& target, const char* source);
wchar_t* ConcatStr(wchar_t*& target, const wchar_t* source);

// Trims white space at both ends in place; "  a b  " => "a b", "   " => "". Returns `text`;
// null is returned as it is.
char* TrimWhiteSpace(char* text);

// One shared empty string, made on first use.
const CString& Empty();

}  // namespace ZnString

#endif  // ZENUTL_ZN_STRING_H_
