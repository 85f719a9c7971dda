#include "zenutl/cstring.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>

namespace {

TEST(CString, NullPointerConstructsEmpty) {
  const char* none = nullptr;
  CString a(none);
  CStringW w(static_cast<const wchar_t*>(nullptr));
  EXPECT_TRUE(a.IsEmpty());
  EXPECT_TRUE(w.IsEmpty());
  EXPECT_STREQ(a, "");
  a = none;
  EXPECT_EQ(a.GetLength(), 0);
}

TEST(CString, FindAnswersMinusOneWhenAbsentOrOutOfRange) {
  CString s("abcabc");
  EXPECT_EQ(s.Find('c'), 2);
  EXPECT_EQ(s.Find('c', 3), 5);
  EXPECT_EQ(s.Find('z'), -1);
  EXPECT_EQ(s.Find("bc", 2), 4);
  EXPECT_EQ(s.Find("bd"), -1);
  EXPECT_EQ(s.Find('a', 99), -1);
  EXPECT_EQ(s.Find('a', -1), -1);
  EXPECT_EQ(s.FindOneOf("xyc"), 2);
  EXPECT_EQ(s.FindOneOf("xyz"), -1);
  EXPECT_EQ(s.ReverseFind('a'), 3);
  EXPECT_EQ(s.ReverseFind('q'), -1);
}

TEST(CString, SubstringsClamp) {
  struct Row {
    int first, count;
    const char* mid;
  } rows[] = {{0, 3, "hel"}, {3, 99, "lo"}, {-2, 2, "he"}, {5, 1, ""}, {99, 1, ""}, {1, -1, ""}};
  CString s("hello");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.first);
    EXPECT_STREQ(s.Mid(row.first, row.count), row.mid);
  }
  EXPECT_STREQ(s.Mid(2), "llo");
  EXPECT_STREQ(s.Left(-1), "");
  EXPECT_STREQ(s.Left(99), "hello");
  EXPECT_STREQ(s.Right(2), "lo");
}

TEST(CString, ReplaceAndRemoveReturnCounts) {
  CString s("a.b.c");
  EXPECT_EQ(s.Replace('.', ','), 2);
  EXPECT_STREQ(s, "a,b,c");
  EXPECT_EQ(s.Replace(',', ','), 0);  // no change, so nothing is counted
  EXPECT_STREQ(s, "a,b,c");
  EXPECT_EQ(s.Replace(",", "--"), 2);
  EXPECT_STREQ(s, "a--b--c");
  EXPECT_EQ(s.Replace("--", nullptr), 2);
  EXPECT_STREQ(s, "abc");
  EXPECT_EQ(s.Replace("", "x"), 0);
  CString aaa("aaaa");
  EXPECT_EQ(aaa.Replace("aa", "a"), 2);  // non-overlapping, left to right
  EXPECT_STREQ(aaa, "aa");
  CString r("banana");
  EXPECT_EQ(r.Remove('a'), 3);
  EXPECT_STREQ(r, "bnn");
}

TEST(CString, CompareOrdersBytesUnsignedAndNoCaseFolds) {
  EXPECT_EQ(CString("abc").Compare("abc"), 0);
  EXPECT_LT(CString("abc").Compare("abd"), 0);
  EXPECT_GT(CString("abc").Compare("ab"), 0);
  EXPECT_GT(CString("\xE9").Compare("a"), 0);
  EXPECT_EQ(CString("HeLLo").CompareNoCase("hello"), 0);
  EXPECT_LT(CString("apple").CompareNoCase("Banana"), 0);
  EXPECT_GT(CString("x").Compare(nullptr), 0);
  EXPECT_TRUE(CString("a") == "a");
  EXPECT_TRUE(CString("a") != CString("b"));
}

TEST(CString, FormatUsesWindowsSizePrefixes) {
  CString s;
  s.Format("%I64d|%d|%s|%5.2f", static_cast<long long>(1) << 40, 7, "x", 3.14159);
  EXPECT_STREQ(s, "1099511627776|7|x| 3.14");
  s.AppendFormat("-%I64u", 18446744073709551615ULL);
  EXPECT_STREQ(s, "1099511627776|7|x| 3.14-18446744073709551615");
  s.Format("%%");
  EXPECT_STREQ(s, "%");
}

TEST(CString, FormatHandlesLongOutput) {
  std::string big(5000, 'q');
  CString s;
  s.Format("<%s>", big.c_str());
  EXPECT_EQ(s.GetLength(), 5002);
  CStringW w;
  w.Format(L"<%S>", big.c_str());
  EXPECT_EQ(w.GetLength(), 5002);
}

TEST(CStringW, WideFormatTakesWideStringsForLowerCaseS) {
  CStringW w;
  w.Format(L"%s-%S-%c-%C-%I64d", L"wide", "narrow", L'W', 'n', -5LL);
  EXPECT_STREQ(w, L"wide-narrow-W-n--5");
}

// The other width goes through UTF-8 under any locale; only what cannot be converted is
// replaced, and the rest of the text stays.
TEST(CString, FormatConvertsTheOtherWidthWhateverTheLocale) {
  for (const char* locale : {"C", "en_US.UTF-8"}) {
    SCOPED_TRACE(locale);
    ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr);
    CString narrow;
    narrow.Format("x=%S;", L"caf\u00e9");
    EXPECT_STREQ(narrow, "x=caf\xC3\xA9;");
    narrow.Format("%C|%lc|%hs|%ws|%5S|%-4.2S|%.1S]", L'\u00e9', L'z', "b", L"w", L"ab", L"\u00e9xy",
                  L"\u00e9");
    EXPECT_STREQ(narrow, "\xC3\xA9|z|b|w|   ab|\xC3\xA9  |]");
    CStringW wide;
    wide.Format(L"x=%S;", "caf\xC3\xA9");
    EXPECT_STREQ(wide, L"x=caf\u00e9;");
    wide.Format(L"x=%S;%C%C%hc|%4.2S|%ls", "a\xFFz", 'a', '\xE9', 'b', "\xC3\xA9xy", L"w");
    EXPECT_STREQ(wide, L"x=a\uFFFDz;a\uFFFDb|  \u00e9x|w");
    wide.Format(L"%s|%5.1f|%-3d|%S|%%|%y", L"\u00e9", 2.25, 7, static_cast<const char*>(nullptr));
    EXPECT_STREQ(wide, L"\u00e9|  2.2|7  |(null)|%|%y");
  }
  std::setlocale(LC_ALL, "C");
}

TEST(CString, GetBufferThenReleaseRecountsToFirstZero) {
  CString s("abc");
  char* buffer = s.GetBuffer(10);
  std::strcpy(buffer, "hello");
  s.ReleaseBuffer();
  EXPECT_EQ(s.GetLength(), 5);
  EXPECT_STREQ(s, "hello");
  buffer = s.GetBuffer(0);
  buffer[2] = '\0';
  s.ReleaseBuffer(-1);
  EXPECT_STREQ(s, "he");
  s.GetBuffer(4);
  s.ReleaseBuffer(1);
  EXPECT_STREQ(s, "h");
}

TEST(CString, AppendAndConcatenate) {
  CString s("a");
  s += "b";
  s += CString("c");
  s += 'd';
  s += static_cast<const char*>(nullptr);
  EXPECT_STREQ(s, "abcd");
  EXPECT_STREQ("x" + s + "y", "xabcdy");
}

TEST(CString, TrimAndCase) {
  CString s("  Mixed Case \t");
  s.Trim();
  EXPECT_STREQ(s, "Mixed Case");
  s.MakeUpper();
  EXPECT_STREQ(s, "MIXED CASE");
  s.MakeLower();
  EXPECT_STREQ(s, "mixed case");
  CString dots("..a..");
  dots.TrimLeft('.');
  EXPECT_STREQ(dots, "a..");
}

TEST(CString, WidthsConvertThroughUtf8) {
  CStringW w(L"gr\u00FC\u00DF \u20AC \U0001F600");
  CString n(w);
  EXPECT_STREQ(n, "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80");
  EXPECT_STREQ(CStringW(n), w);
  EXPECT_STREQ(CStringW(CString("bad\xFF\xC3")), L"bad\uFFFD\uFFFD");
}

TEST(CString, SetAtAndGetAt) {
  CString s("abc");
  s.SetAt(1, 'X');
  EXPECT_EQ(s.GetAt(1), 'X');
  EXPECT_EQ(s[2], 'c');
}

}  // namespace
