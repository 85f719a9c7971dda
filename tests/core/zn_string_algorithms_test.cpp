#include "zenutl/zn_string_algorithms.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cctype>
#include <cfloat>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/child_process.h"

namespace {

typedef std::vector<CString> Texts;

TEST(WildCardCompare, MatchesTheWholeTextByTokens) {
  struct Row {
    const char* pattern;
    const char* text;
    bool caseSensitive;
    bool matches;
  };
  // The last five rows: directly after the anchor of a star an escape is lost, as callers
  // expect, and only there.
  const Row rows[] = {{"*", "", true, true},
                      {"?", "", true, false},
                      {"a*", "A", false, true},
                      {"a*", "A", true, false},
                      {"*.txt", "a.txt.bak", true, false},
                      {"*a", "bab", true, false},
                      {"*ab", "aab", true, true},
                      {"a*b*c", "aXbYbZc", true, true},
                      {"*??x", "ax", true, false},
                      {"a\\*b", "a*b", true, true},
                      {"a\\*b", "axb", true, false},
                      {"x*\\?", "xab?", true, true},
                      {"x*\\?", "xabc", true, false},
                      {"a\\b", "a\\b", true, true},
                      {"a*b\\?c", "axbyc", true, true},
                      {"a*b\\?c", "axbc", true, false},
                      {"*b\\*", "abz", true, true},
                      {"a\\?b*c", "axbc", true, false},
                      {"a*bc\\?", "axbcz", true, false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.pattern) + " ~ " + row.text);
    EXPECT_EQ(ZnString::WildCardCompare(row.pattern, row.text, row.caseSensitive), row.matches);
  }
}

// ---- The plain walk, backtracking through every occurrence of the literal after each star:
// the reference the compare must agree with.

struct PatternToken {
  enum Kind { kEnd, kLiteral, kAnyOne, kAnyRun };
  Kind kind;
  char literal;
  const char* next;  // the pattern after this token
};

bool IsEscapable(char ch) {
  return ch == '?' || ch == '*';
}

PatternToken ReadToken(const char* pattern) {
  switch (*pattern) {
    case '\0':
      return {PatternToken::kEnd, '\0', pattern};
    case '*':
      return {PatternToken::kAnyRun, '\0', pattern + 1};
    case '?':
      return {PatternToken::kAnyOne, '\0', pattern + 1};
    case '\\':
      if (IsEscapable(pattern[1])) return {PatternToken::kLiteral, pattern[1], pattern + 2};
      return {PatternToken::kLiteral, '\\', pattern + 1};
    default:
      return {PatternToken::kLiteral, *pattern, pattern + 1};
  }
}

bool SameCharacter(char a, char b, bool caseSensitive) {
  if (caseSensitive) return a == b;
  return std::toupper(static_cast<unsigned char>(a)) == std::toupper(static_cast<unsigned char>(b));
}

bool ReferenceWildCard(const char* pattern, const char* text, bool caseSensitive) {
  for (;;) {
    PatternToken token = ReadToken(pattern);
    switch (token.kind) {
      case PatternToken::kEnd:
        return *text == '\0';
      case PatternToken::kAnyOne:
        if (*text == '\0') return false;
        ++text;
        pattern = token.next;
        continue;
      case PatternToken::kLiteral:
        if (*text == '\0' || !SameCharacter(token.literal, *text, caseSensitive)) return false;
        ++text;
        pattern = token.next;
        continue;
      case PatternToken::kAnyRun:
        break;
    }
    // After a `*`: swallow further stars, let each `?` take one character now, and anchor on
    // the first literal.
    for (;;) {
      token = ReadToken(token.next);
      if (token.kind == PatternToken::kAnyRun) continue;
      if (token.kind == PatternToken::kEnd) return true;
      if (token.kind == PatternToken::kLiteral) break;
      if (*text == '\0') return false;
      ++text;
    }
    // The rest of the pattern is handed on without an escaping backslash that directly
    // follows the anchor, so that one `\?` or `\*` acts as a wildcard. Callers rely on it.
    const char* rest = token.next;
    if (rest[0] == '\\' && IsEscapable(rest[1])) ++rest;
    for (; *text != '\0'; ++text) {
      if (SameCharacter(token.literal, *text, caseSensitive) &&
          ReferenceWildCard(rest, text + 1, caseSensitive)) {
        return true;
      }
    }
    return false;
  }
}

TEST(WildCardCompare, AgreesWithTheBacktrackingWalkOnRandomPatternsAndTexts) {
  std::mt19937 random(20261125);
  const std::string patternLetters = "ab*?\\A", textLetters = "ab*?\\A";
  const auto make = [&random](const std::string& letters, int maxLength) {
    std::string made(std::uniform_int_distribution<int>(0, maxLength)(random), ' ');
    for (char& ch : made) ch = letters[random() % letters.size()];
    return made;
  };
  int matches = 0;
  for (int round = 0; round < 200000; ++round) {
    const std::string pattern = make(patternLetters, 9), text = make(textLetters, 10);
    const bool caseSensitive = round % 2 == 0;
    const bool expected = ReferenceWildCard(pattern.c_str(), text.c_str(), caseSensitive);
    matches += expected;
    ASSERT_EQ(ZnString::WildCardCompare(pattern.c_str(), text.c_str(), caseSensitive), expected)
        << pattern << " ~ " << text << (caseSensitive ? "" : " (any case)");
  }
  EXPECT_GT(matches, 5000);  // the texts are not all misses
}

// The backtracking walk needs of the order of 2.6^n steps for n times "*a": this one alone would
// take longer than the universe has existed. A child process with an alarm keeps a regression
// from hanging the suite.
TEST(WildCardCompare, ManyStarsTakeTimeInProportionToPatternTimesText) {
  zenutl_test::ExpectPassesInChild([] {
    ::alarm(30);
    std::string pattern;
    for (int i = 0; i < 60; ++i) pattern += "*a";
    const std::string text(2000, 'a');
    EXPECT_FALSE(ZnString::WildCardCompare((pattern + "b").c_str(), text.c_str(), true));
    EXPECT_TRUE(ZnString::WildCardCompare(pattern.c_str(), text.c_str(), false));
  });
}

TEST(ZnStrNumberCmp, OrdersNumbersByValueAndThenByLeadingZeros) {
  struct Row {
    const char* a;
    const char* b;
    int expected;
  } rows[] = {{"file2", "file10", -1},
              {"a01", "a1", 1},
              {"0", "00", -1},
              {"a", "a1", -1},
              {"", "a", -1},
              {"", "", 0},
              {"a10b02", "a10b02", 0},
              {"x007y", "x7z", 1},
              {"a129", "a13", 1},
              {"a123", "a124", -1},
              {"0a", "a", -1},
              {"abc", "ABC", 1},
              // The first difference lies inside a number, which is still weighed whole.
              {"a1000", "a105", 1},
              {"file10_2", "file10_10", -1},
              {"99999999999999999999", "100000000000000000001", -1}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.a) + " vs " + row.b);
    EXPECT_EQ(ZnString::znstrnumbercmp(row.a, row.b), row.expected);
    EXPECT_EQ(ZnString::znstrnumbercmp(row.b, row.a), -row.expected);
    const CStringW wideA{CString(row.a)}, wideB{CString(row.b)};
    EXPECT_EQ(ZnString::znstrnumbercmp(wideA, wideB), row.expected);
  }
  EXPECT_EQ(ZnString::znstrnumbercmp("\xc3\xa9", "e"), -1);  // bytes above 127 are negative
  // ARABIC-INDIC digits are no digits in the wide form: compared by code point.
  EXPECT_EQ(ZnString::znstrnumbercmp(L"n\u0662", L"n\u0661\u0660"), 1);
  EXPECT_EQ(ZnString::znstrnumbericmp("ABC1", "abc2"), -1);
  EXPECT_EQ(ZnString::znstrnumbericmp("File10", "file9"), 1);
  EXPECT_EQ(ZnString::znstrnumbericmp("[", "a"), -1);  // '[' lies between 'Z' and 'a'
  EXPECT_EQ(ZnString::znstrnumbercmp("[", "A"), 1);
}

TEST(SeparateList, FillsBuffersAndCountsTheNonEmptyOnes) {
  struct Row {
    const char* text;
    int maxLength;
    int count;
    std::vector<std::string> buffers;  // three buffers; "-" is one left untouched
    int filled;
  } rows[] = {{"a,,b", 10, 2, {"a", "b", "-"}, 2},   {",a", 10, 2, {"", "a", "-"}, 1},
              {"abcde", 2, 3, {"ab", "cd", "e"}, 3}, {"abc,d", 2, 3, {"ab", "c", "d"}, 3},
              {"a", 10, 3, {"a", "", ""}, 1},        {"a,b", 10, 0, {"-", "-", "-"}, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    char x[16] = "-", y[16] = "-", z[16] = "-";
    EXPECT_EQ(ZnString::SeparateList(row.text, ',', row.maxLength, row.count, x, y, z), row.filled);
    EXPECT_EQ(std::vector<std::string>({x, y, z}), row.buffers);
  }
}

TEST(EvaluateLimitExpression, ReadsBoundsThatTightenAndKeepsTheLoneOperatorQuirk) {
  const float kLow = -FLT_MAX, kHigh = FLT_MAX;
  struct Row {
    const char* expression;
    bool ok;
    float lower, upper;
    bool lowerInclusive, upperInclusive;
  };
  // A failure keeps what was set before it ("> 5 ; y <"). An operator with no number takes the
  // last value: 0 at first, -99 after a blank text ("=;", " =;"); at the very end it fails.
  const Row rows[] = {{"> 5 ; <= 10", true, 5, 10, false, true},
                      {"= 3", true, 3, 3, true, true},
                      {"5 <", true, 5, kHigh, false, false},
                      {"5 < : 10 >", true, 5, 10, false, false},
                      {"> 5 ; > 3", true, 5, kHigh, false, false},
                      {"> 3 ; >= 5", true, 5, kHigh, true, false},
                      {"7 =>", true, kLow, 7, false, true},
                      {"< = 4", true, kLow, 4, false, true},
                      {"< 2,5", true, kLow, 2.5f, false, false},
                      {"junk ; > 5", true, 5, kHigh, false, false},
                      {"", false, kLow, kHigh, false, false},
                      {"x > 5", false, kLow, kHigh, false, false},
                      {"5 < 6", false, kLow, kHigh, false, false},
                      {"<>", false, kLow, kHigh, false, false},
                      {"1 < x < 2", false, kLow, kHigh, false, false},
                      {"> 5 ; y <", false, 5, kHigh, false, false},
                      {"=;", true, 0, 0, true, true},
                      {" =;", true, -99, -99, true, true},
                      {"> 5 ;=;", true, 5, 5, false, true},
                      {"=", false, kLow, kHigh, false, false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expression);
    float lower = 1, upper = 2;
    bool lowerInclusive = true, upperInclusive = true;
    EXPECT_EQ(ZnString::EvaluateLimitExpression(row.expression, lower, upper, lowerInclusive,
                                                upperInclusive),
              row.ok);
    EXPECT_EQ(lower, row.lower);
    EXPECT_EQ(upper, row.upper);
    EXPECT_EQ(lowerInclusive, row.lowerInclusive);
    EXPECT_EQ(upperInclusive, row.upperInclusive);
  }
}

// A caller's own variadic front, as the applications write them for their messages.
int Message(char* out, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = ZnString::vlsprintf(out, format, arguments);
  va_end(arguments);
  return length;
}

TEST(Lsprintf, PrintsArgumentsByTheirPositions) {
  char out[128];
  EXPECT_EQ(ZnString::lsprintf(out, "%d1%%%", 5), 2);
  EXPECT_STREQ(out, "5%");
  EXPECT_EQ(ZnString::lsprintf(out, "%s2% is %d1%", 42, "x"), 7);
  EXPECT_STREQ(out, "x is 42");
  ZnString::lsprintf(out, "%-5s1%|%05.1f2%|%x3%|%c4%|%+i5%|%.3E6%", "ab", 3.14159, 255, 'z', 7,
                     2.5);
  EXPECT_STREQ(out, "ab   |003.1|ff|z|+7|2.500E+00");
  ZnString::lsprintf(out, "%I64d2% %d1% %ld3% %hd4%", 7, -(1LL << 40), 1234567890123L, 65537);
  EXPECT_STREQ(out, "-1099511627776 7 1234567890123 1");
  ZnString::lsprintf(out, "%S1% %s2% %C3%", L"wide", "narrow", L'w');
  EXPECT_STREQ(out, "wide narrow w");
  ZnString::lsprintf(out, "%d1% and %d3%, %d5% %d4% %d5%", 1, 2, 3, 4, 5);  // gaps unseen
  EXPECT_STREQ(out, "1 and 2, 4 3 5");
  EXPECT_EQ(Message(out, "%s3%: %d1% of %.1f2%", 3, 7.5, "done"), 14);
  EXPECT_STREQ(out, "done: 3 of 7.5");
}

TEST(Lsprintf, RefusesMalformedConversionsWithAnEmptyOutput) {
  for (const char* format : {"%d", "x %d1 y", "%y1%", "%I32d1%", "%n1%", "abc%", "%lld1%",
                             // Fields that would only make the output huge (one found by fuzzing).
                             "%77777777e%7", "%.77777777f1%", "%1025d1%", "%.1025s1%",
                             "%99999999999999999999d1%", "%d99999999999999999999%"}) {
    SCOPED_TRACE(format);
    char out[64] = "previous";
    EXPECT_EQ(ZnString::lsprintf(out, format, 5, 6), 0);
    EXPECT_STREQ(out, "");
  }
}

TEST(Lsprintf, SizedFormNeverWritesPastItsBuffer) {
  char out[8];
  std::memset(out, 'z', sizeof out);
  EXPECT_EQ(ZnString::lsnprintf(out, 8, "%s1%!", "abc"), 4);
  EXPECT_STREQ(out, "abc!");
  EXPECT_EQ(ZnString::lsnprintf(out, 8, "%1024d1%", 5), -1);
  EXPECT_STREQ(out, "       ");
  EXPECT_EQ(ZnString::lsnprintf(out, 4, "%s2%%s1%", "de", "abc"), -1);
  EXPECT_STREQ(out, "abc");
  EXPECT_EQ(out[4], ' ');  // untouched beyond `size`
  EXPECT_EQ(ZnString::lsnprintf(out, 8, "%q1%", 5), 0);
  EXPECT_STREQ(out, "");
  out[0] = 'k';
  EXPECT_EQ(ZnString::lsnprintf(out, 0, "%d1%", 5), -1);
  EXPECT_EQ(out[0], 'k');
  // The widest allowed field still prints whole where there is room.
  char wide[1100];
  EXPECT_EQ(ZnString::lsprintf(wide, "%-1024d1%|", 5), 1025);
  EXPECT_EQ(ZnString::lsnprintf(wide, sizeof wide, "%.1024f1%", 0.5), 1026);
}

TEST(FormatStringVector, JoinsForASentence) {
  const Texts five = {"a", "b", "c", "d", "e"};
  struct Row {
    int items, maxItems;
    const char* moreFormat;
    const char* expected;
  } rows[] = {{0, -1, nullptr, ""},
              {1, -1, nullptr, "a"},
              {2, -1, nullptr, "a and b"},
              {3, 3, nullptr, "a, b and c"},
              {5, 3, nullptr, "a, b, c, ..."},
              {5, 3, " (+%d)", "a, b, c (+2)"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expected);
    const Texts items(five.begin(), five.begin() + row.items);
    EXPECT_STREQ(
        ZnString::FormatStringVector(items, nullptr, nullptr, row.maxItems, row.moreFormat),
        row.expected);
  }
  EXPECT_STREQ(ZnString::FormatStringVector(five, "; ", " or ", -1, nullptr), "a; b; c; d or e");
}

TEST(FormatStringToVector, CutsAtSeparatorsAndRepeatsTheTailWhenTheLastSeparatorDiffers) {
  struct Row {
    const char* text;
    const char* separator;
    const char* lastSeparator;
    Texts expected;
  } rows[] = {{"a, b and c", nullptr, nullptr, {"a", "b and c", "b and c"}},
              {"", nullptr, nullptr, {""}},
              {"", ", ", ", ", {}},
              {"a, b, ", nullptr, nullptr, {"a", "b", ""}},
              {"a, b, ", ", ", ", ", {"a", "b"}},
              {"x AND y", " and ", " AND ", {"x AND y"}}};  // equal but for case
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(ZnString::FormatStringToVector(row.text, row.separator, row.lastSeparator),
              row.expected);
  }
}

TEST(RearrangeColumns, PutsATableIntoTheOrderOfAWantedHeader) {
  std::vector<Texts> table = {{"id", "name", "id", "size"}, {"7", "x.txt", "8", "12"}};
  const Texts wanted = {"size", "missing", "id", "name", "size"};
  const std::vector<int> order = ZnString::GetIndexVectorToSort(&wanted, &table[0]);
  EXPECT_EQ(order, std::vector<int>({4, 3, 2, 4}));  // the last "id" wins, "missing" adds none
  ZnString::RearrangeColumns(table, &order);
  EXPECT_EQ(table,
            std::vector<Texts>({{"size", "id", "name", "size"}, {"12", "8", "x.txt", "12"}}));
  const std::vector<int> outside = {2, 9};
  ZnString::RearrangeColumns(table, &outside);
  EXPECT_EQ(table, std::vector<Texts>({{"id", ""}, {"8", ""}}));
}

TEST(ZnStringText, ReplaceAndSplitString) {
  const CString original("a.b.c");
  EXPECT_STREQ(ZnString::Replace(original, ".", "::"), "a::b::c");
  EXPECT_STREQ(original, "a.b.c");
  CString text("a b,c;d");
  EXPECT_STREQ(ZnString::SplitString(text, " ,"), "a");  // any character of the set
  EXPECT_STREQ(ZnString::SplitString(text, ';'), "b,c");
  EXPECT_STREQ(text, "d");
  EXPECT_STREQ(ZnString::SplitString(text, ';'), "d");
  EXPECT_STREQ(text, "");
}

}  // namespace
