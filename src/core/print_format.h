// printf with the Windows conventions the library's callers write their formats in, for both
// string widths: the formatting behind CString::Format, CStringW::Format and znsnprintf.
//
// The C library's printf differs from the Windows one in two ways that matter here. It knows no
// `I64`, `I32` and `I` size prefixes. And it converts a text of the other width through the
// locale's character set, so that under the "C" locale one non-ASCII character in a `%ls`
// argument fails the whole call and the caller gets an empty text. Here every conversion is
// printed on its own: numbers and pointers by the C library, texts and characters by this
// library, with the other width converted through UTF-8 (`Utf8ToWide`, `WideToUtf8`) so that
// only what cannot be converted becomes U+FFFD.
//
// Conventions: in a byte format `%s`/`%c` take byte arguments and `%S`/`%C` wide ones; in a
// wide format it is the other way round. `h` before `s`, `S`, `c` or `C` means bytes, and `l`
// or `w` means wide, in either. `%n` is accepted and writes nothing, as the Windows runtime has
// it by default. A conversion the runtime does not know is printed as it stands and takes no
// argument. A null text prints "(null)". Nothing here fails except by std::bad_alloc.
#ifndef ZENUTL_CORE_PRINT_FORMAT_H_
#define ZENUTL_CORE_PRINT_FORMAT_H_

#include <cstdarg>
#include <string>

namespace zenutl {
namespace detail {

// Appends the formatted text to `out`. A null format appends nothing.
void AppendFormatted(std::string& out, const char* format, va_list args);
void AppendFormatted(std::wstring& out, const wchar_t* format, va_list args);

}  // namespace detail
}  // namespace zenutl

#endif  // ZENUTL_CORE_PRINT_FORMAT_H_
