// HtmlUtilities: text going into HTML pages and URLs, and back.
//
// These are the exact transformations the applications' report pages were built with, odd
// corners included; they are not general HTML or URL codecs. `UrlDecode` undoes `UrlEncode` for
// any text without a zero byte or the byte 0xB6.
//
// Error contract: nothing throws (apart from allocation failure) and nothing reports.
#ifndef ZENUTL_HTML_UTILITIES_H_
#define ZENUTL_HTML_UTILITIES_H_

#include "zenutl/cstring.h"

namespace HtmlUtilities {

// In place: "&" => "&amp;", "<" => "&lt;", ">" => "&gt;", and every byte from 0xA1 to 0xFF
// => "&#N;" with its value. Quotes and 0xA0 stay as they are; the bytes of UTF-8 text are
// escaped one by one.
//   "a<b&c" => "a&lt;b&amp;c",  "\xE9" => "&#233;"
void EscapeToHtml(CString& text);

// Every byte but 0-9, A-Z and a-z as "%" and two lower-case hex digits, with a blank in place
// of a leading zero digit (printed with "%2x"); a blank is not written as "+".
//   "a b" => "a%20b",  "\t" => "% 9",  "\n" => "% a",  "\xE9" => "%e9"
CString UrlEncode(CString text);

// Removes every "file:///", then replaces escapes: the text at the first "%" and the two
// characters after it (fewer at the end) is a token; the two characters are read as hex by
// strtol (leading blanks and a sign allowed, reading stops at the first other character) and
// every occurrence of the token is replaced by that byte, then the next "%" is sought. A byte
// of value 0 removes the token. An escaped "%" is held as the byte 0xB6 until the end and then
// written as "%", so a 0xB6 in the input also comes out as "%".
//   "file:///C%3A%5Cx" => "C:\x",  "100%25" => "100%",  "% a" => "\n"
// The work grows with the length times the number of different escapes.
CString UrlDecode(CString text);

// In place: cuts the text at the first "</body>" (or, if there is none, "</BODY>"), then
// removes everything up to and including the first "<body>" (or "<BODY>"). Tags in mixed case
// or with attributes are not recognised.
void StripHeaderAndBodyTags(CString& text);

// A Windows COLORREF (0x00BBGGRR) as an HTML colour "#rrggbb"; with `quoted`, in double quotes.
//   0x000000FF => "#ff0000",  (0x00FF8000, true) => "\"#0080ff\""
CString ToHTMLColor(unsigned long color, bool quoted);

}  // namespace HtmlUtilities

#endif  // ZENUTL_HTML_UTILITIES_H_
