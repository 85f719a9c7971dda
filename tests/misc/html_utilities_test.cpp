// HtmlUtilities: the exact texts of escaping, URL encoding and decoding, tag stripping and
// colours.
#include "zenutl/html_utilities.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using namespace HtmlUtilities;

TEST(HtmlUtilities, EscapeToHtmlEscapesMarkupAndHighBytes) {
  const struct {
    const char* text;
    const char* escaped;
  } rows[] = {
      {"a<b&c", "a&lt;b&amp;c"},
      {"\xA0\xA1\xFF", "\xA0&#161;&#255;"},
      {"\"q\" &amp; 'x' >", "\"q\" &amp;amp; 'x' &gt;"},
      {"caf\xC3\xA9", "caf&#195;&#169;"},
  };
  for (const auto& row : rows) {
    CString text(row.text);
    EscapeToHtml(text);
    EXPECT_EQ(CString(row.escaped), text) << row.text;
  }
}

TEST(HtmlUtilities, UrlEncodeWritesTwoLowerCaseDigitsOrABlankAndOne) {
  EXPECT_EQ(CString("a%20b"), UrlEncode("a b"));
  EXPECT_EQ(CString("% 9% a%2f%e9Z0"), UrlEncode("\t\n/\xE9Z0"));
}

TEST(HtmlUtilities, UrlDecodeReplacesEachTokenEverywhereAtOnce) {
  const struct {
    const char* text;
    const char* decoded;
  } rows[] = {
      {"file:///C%3A%5Cx", "C:\\x"},
      {"100%25", "100%"},
      {"%25%2541", "%%41"},  // an escaped percent starts no escape
      {"a% ab", "a\nb"},
      {"%41%%41", "A\n"},   // "%41" is replaced inside "%%41" too, leaving "%A"
      {"x%zz%4", "x\x04"},  // no hex digits give 0, which removes the token
      {"end%", "end"},
      {"\xB6", "%"},
      {"%-1", "\xFF"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(CString(row.decoded), UrlDecode(row.text)) << row.text;
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

TEST(HtmlUtilities, StripHeaderAndBodyTagsKeepsOnlyThePlainBody) {
  const struct {
    const char* page;
    const char* body;
  } rows[] = {
      {"<html><body>text</body></html>", "text"},
      {"<HTML><BODY>text</BODY></HTML>", "text"},
      {"<body bgcolor=red>text</body>", "<body bgcolor=red>text"},
      {"<Body>text</Body>", "<Body>text</Body>"},
  };
  for (const auto& row : rows) {
    CString page(row.page);
    StripHeaderAndBodyTags(page);
    EXPECT_EQ(CString(row.body), page) << row.page;
  }
}

TEST(HtmlUtilities, ToHtmlColorSwapsRedAndBlueAndDropsTheFourthByte) {
  EXPECT_EQ(CString("#ff0000"), ToHTMLColor(0x000000FF, false));
  EXPECT_EQ(CString("\"#ff0000\""), ToHTMLColor(0x000000FF, true));
  EXPECT_EQ(CString("#0080ff"), ToHTMLColor(0xAAFF8000, false));
  EXPECT_EQ(CString("#000000"), ToHTMLColor(0, false));
}

}  // namespace
