// HtmlUtilities: the exact texts of escaping, URL encoding and decoding, tag stripping and
// colours.
#include "zenutl/html_utilities.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using namespace HtmlUtilities;

CString Escaped(CString text) {
  EscapeToHtml(text);
  return text;
}
CString Stripped(CString text) {
  StripHeaderAndBodyTags(text);
  return text;
}

TEST(HtmlUtilities, EachTransformGivesItsExactText) {
  const struct {
    CString (*transform)(CString);
    const char* text;
    const char* expected;
  } rows[] = {
      // Escaping: markup, and every byte above 160 as a number.
      {Escaped, "a<b&c", "a&lt;b&amp;c"},
      {Escaped, "\xA0\xA1\xFF", "\xA0&#161;&#255;"},
      {Escaped, "\"q\" &amp; 'x' >", "\"q\" &amp;amp; 'x' &gt;"},
      {Escaped, "caf\xC3\xA9", "caf&#195;&#169;"},
      // Encoding: two lower-case digits, or a blank and one.
      {UrlEncode, "a b", "a%20b"},
      {UrlEncode, "\t\n/\xE9Z0", "% 9% a%2f%e9Z0"},
      // Decoding replaces each token everywhere at once.
      {UrlDecode, "file:///C%3A%5Cx", "C:\\x"},
      {UrlDecode, "100%25", "100%"},
      {UrlDecode, "%25%2541", "%%41"},  // an escaped percent starts no escape
      {UrlDecode, "a% ab", "a\nb"},
      {UrlDecode, "%41%%41", "A\n"},   // "%41" is replaced inside "%%41" too, leaving "%A"
      {UrlDecode, "x%zz%4", "x\x04"},  // no hex digits give 0, which removes the token
      {UrlDecode, "end%", "end"},
      {UrlDecode, "\xB6", "%"},
      {UrlDecode, "%-1", "\xFF"},
      // Only the plain lower- or upper-case body tags go, with the header.
      {Stripped, "<html><body>text</body></html>", "text"},
      {Stripped, "<HTML><BODY>text</BODY></HTML>", "text"},
      {Stripped, "<body bgcolor=red>text</body>", "<body bgcolor=red>text"},
      {Stripped, "<Body>text</Body>", "<Body>text</Body>"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(CString(row.expected), row.transform(CString(row.text))) << row.text;
  }
}

TEST(HtmlUtilities, UrlDecodeUndoesUrlEncode) {
  std::mt19937 random(3986);
  for (int round = 0; round < 200; ++round) {
    std::string text(random() % 40, ' ');
    for (char& c : text) {
      do c = static_cast<char>(random());
      while (c == 0 || c == '\xB6');
    }
    ASSERT_EQ(CString(text), UrlDecode(UrlEncode(text))) << text;
  }
}

TEST(HtmlUtilities, ToHtmlColorSwapsRedAndBlueAndDropsTheFourthByte) {
  EXPECT_EQ(CString("#ff0000"), ToHTMLColor(0x000000FF, false));
  EXPECT_EQ(CString("\"#ff0000\""), ToHTMLColor(0x000000FF, true));
  EXPECT_EQ(CString("#0080ff"), ToHTMLColor(0xAAFF8000, false));
  EXPECT_EQ(CString("#000000"), ToHTMLColor(0, false));
}

}  // namespace
