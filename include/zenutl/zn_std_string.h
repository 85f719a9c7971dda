// ZnStdString: the few text helpers of the library that work on std::string rather than
// CString: cutting and joining lists, and comparing by a locale's collation.
//
// The CString forms of SplitString are in zn_string_algorithms.h. Nothing here throws of its
// own accord; only the standard containers may (std::bad_alloc, std::length_error).
#ifndef ZENUTL_ZN_STD_STRING_H_
#define ZENUTL_ZN_STD_STRING_H_

#include <locale>
#include <string>
#include <vector>

namespace ZnStdString {

// Cuts off the head of `text` up to the first `separator`, or the first character of the set
// `separators`, and returns it; `text` keeps what follows that character. Without one, the
// whole text is returned and `text` becomes empty. A null set finds nothing.
//   "a;b;c", ';' => "a", text "b;c"      "a b,c", " ," => "a", text "b,c"
std::string SplitString(std::string& text, char separator);
std::string SplitString(std::string& text, const char* separators);

// All pieces of `text` between occurrences of `separator`; there is always at least one.
//   "a--b", "--" => "a", "b"     "a,,b", "," => "a", "", "b"     "" => ""
// An empty separator does not cut: the result is the whole text.
std::vector<std::string> Split(const std::string& text, const std::string& separator);

// The pieces with `separator` between them; an empty list gives an empty text.
std::string Join(const std::vector<std::string>& pieces, const std::string& separator);

// Order of `a` and `b` by the collation of `locale`: negative, 0 or positive.
int zncollate(const std::string& a, const std::string& b, const std::locale& locale);
// The same after upper-casing both texts with the character classes of `locale`.
int znicollate(const std::string& a, const std::string& b, const std::locale& locale);

// One shared empty string, made on first use.
const std::string& Empty();

}  // namespace ZnStdString

#endif  // ZENUTL_ZN_STD_STRING_H_
