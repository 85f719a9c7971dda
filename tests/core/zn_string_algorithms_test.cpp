#include "zenutl/zn_string_algorithms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <string>
#include <vector>

#include "zenutl/locales.h"

namespace {

std::vector<CString> Strings(std::initializer_list<const char*> texts) {
  return std::vector<CString>(texts.begin(), texts.end());
}

TEST(WildCardCompare, MatchesTheWholeTextByTokens) {
  struct Row {
    const char* pattern;
    const char* text;
    bool caseSensitive;
    bool matches;
  } rows[] = {
      {"*", "", true, true},
      {"?", "", true, false},
      {"", "", true, true},
      {"", "a", true, false},
      {"a*", "A", false, true},
      {"a*", "A", true, false},
      {"*.txt", "report.txt", true, true},
      {"*.txt", "report.txt.bak", true, false},
      {"*.txt", "REPORT.TXT", false, true},
      {"*.txt", "REPORT.TXT", true, false},
      {"a?c", "abc", true, true},
      {"a?c", "ac", true, false},
      {"*a", "bba", true, true},
      {"*a", "bab", true, false},
      {"*ab", "aab", true, true},
      {"a*b*c", "aXbYbZc", true, true},
      {"a*b*c", "abca", true, false},
      {"a**b", "ab", true, true},
      {"*?", "", true, false},
      {"*?", "x", true, true},
      {"*??x", "ax", true, false},
      {"a\\*b", "a*b", true, true},
      {"a\\*b", "axb", true, false},
      {"a\\?b", "a?b", true, true},
      {"a\\?b", "axb", true, false},
      {"x*\\?", "xab?", true, true},  // the escaped character is the anchor itself
      {"x*\\?", "xabc", true, false},
      {"a\\b", "a\\b", true, true},  // a backslash before anything else is itself
      {"a\\", "a\\", true, true},
      {"a\\\\", "a\\\\", true, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.pattern) + " ~ " + row.text);
    EXPECT_EQ(ZnString::WildCardCompare(row.pattern, row.text, row.caseSensitive), row.matches);
  }
}

TEST(WildCardCompare, LosesTheEscapeDirectlyAfterTheAnchorOfAStar) {
  struct Row {
    const char* pattern;
    const char* text;
    bool matches;
  } rows[] = {
      {"a*b\\?c", "axbyc", true},  // `\?` acts as `?` here
      {"a*b\\?c", "axb?c", true},
      {"a*b\\?c", "axbc", false},
      {"*b\\*", "abz", true},  // `\*` acts as `*` here
      {"*b\\*", "ab", true},
      {"a\\?b*c", "axbc", false},  // not after a star's anchor: the escape holds
      {"a*bc\\?", "axbcz", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.pattern) + " ~ " + row.text);
    EXPECT_EQ(ZnString::WildCardCompare(row.pattern, row.text, true), row.matches);
  }
}

TEST(WildCardCompare, TakesNullAsEmpty) {
  EXPECT_TRUE(ZnString::WildCardCompare(nullptr, nullptr, true));
  EXPECT_TRUE(ZnString::WildCardCompare("*", nullptr, true));
  EXPECT_FALSE(ZnString::WildCardCompare(nullptr, "a", true));
}

struct OrderRow {
  const char* a;
  const char* b;
  int expected;
};

const OrderRow kNaturalOrder[] = {
    {"file2", "file10", -1},
    {"file10", "file9", 1},
    {"a01", "a1", 1},
    {"0", "00", -1},
    {"01", "1", 1},
    {"a", "a1", -1},
    {"", "a", -1},
    {"", "", 0},
    {"abc", "abc", 0},
    {"a10b02", "a10b02", 0},
    {"x007y", "x7z", 1},  // the leading zeros decide before the text after the number
    {"x7y", "x7z", -1},
    {"a10b2", "a10b10", -1},
    {"a129", "a13", 1},
    {"a123", "a124", -1},
    {"12345678901234567890", "12345678901234567891", -1},
    {"99999999999999999999", "100000000000000000000", -1},
    {"00000000000000000000000001", "2", -1},
    {"a1b", "a1", 1},
    {"10", "9x", 1},
    {"0a", "a", -1},
    {"abc", "ABC", 1},
    {"\xc3\xa9", "e", -1},  // bytes above 127 are negative characters
};

TEST(ZnStrNumberCmp, OrdersNumbersByValueAndThenByLeadingZeros) {
  for (const OrderRow& row : kNaturalOrder) {
    SCOPED_TRACE(std::string(row.a) + " vs " + row.b);
    EXPECT_EQ(ZnString::znstrnumbercmp(row.a, row.b), row.expected);
    EXPECT_EQ(ZnString::znstrnumbercmp(row.b, row.a), -row.expected);
  }
}

TEST(ZnStrNumberCmp, WideFormAgreesWithTheNarrowOneAndKnowsOnlyAsciiDigits) {
  for (const OrderRow& row : kNaturalOrder) {
    if (static_cast<unsigned char>(row.a[0]) > 127) continue;
    SCOPED_TRACE(std::string(row.a) + " vs " + row.b);
    const CStringW a{CString(row.a)};
    const CStringW b{CString(row.b)};
    EXPECT_EQ(ZnString::znstrnumbercmp(a, b), row.expected);
  }
  // ARABIC-INDIC DIGIT TWO and ONE are letters here, compared by code point.
  EXPECT_EQ(ZnString::znstrnumbercmp(L"n\u0662", L"n\u0661\u0660"), 1);
  EXPECT_EQ(ZnString::znstrnumbercmp(L"n2", L"n10"), -1);
}

TEST(ZnStrNumberCmp, SortsFileNamesNaturally) {
  std::vector<std::string> names = {"file10.txt", "file2.txt", "file.txt",  "file02.txt",
                                    "file1.txt",  "File3.txt", "file2a.txt"};
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return ZnString::znstrnumbercmp(a.c_str(), b.c_str()) < 0;
  });
  const std::vector<std::string> expected = {"File3.txt",  "file.txt",   "file1.txt", "file2.txt",
                                             "file2a.txt", "file02.txt", "file10.txt"};
  EXPECT_EQ(names, expected);
}

TEST(ZnStrNumberICmp, IgnoresCaseOfLetters) {
  const OrderRow rows[] = {
      {"ABC1", "abc2", -1}, {"File10", "file9", 1}, {"ABC", "abc", 0},
      {"a", "B", -1},       {"a01", "A1", 1},       {"[", "a", -1},  // '[' is below 'a'
  };
  for (const OrderRow& row : rows) {
    SCOPED_TRACE(std::string(row.a) + " vs " + row.b);
    EXPECT_EQ(ZnString::znstrnumbericmp(row.a, row.b), row.expected);
  }
  EXPECT_EQ(ZnString::znstrnumbercmp("a", "B"), 1);
  EXPECT_EQ(ZnString::znstrnumbercmp("[", "A"), 1);
}

TEST(SeparateList, FillsBuffersAndCountsTheNonEmptyOnes) {
  struct Row {
    const char* text;
    int maxLength;
    int count;
    std::vector<std::string> buffers;  // three buffers; "-" marks one left untouched
    int filled;
  } rows[] = {
      {"a,,b", 10, 2, {"a", "b", "-"}, 2},   {",a", 10, 2, {"", "a", "-"}, 1},
      {"abcde", 2, 3, {"ab", "cd", "e"}, 3}, {"abc,d", 2, 3, {"ab", "c", "d"}, 3},
      {"a", 10, 3, {"a", "", ""}, 1},        {"a,b,c", 10, 2, {"a", "b", "-"}, 2},
      {"a,b,c", 10, 3, {"a", "b", "c"}, 3},  {"", 10, 2, {"", "", "-"}, 0},
      {"a,b", 10, 0, {"-", "-", "-"}, 0},    {"a,b", 10, -1, {"-", "-", "-"}, 0},
      {"ab,c", 0, 2, {"", "", "-"}, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    char x[16] = "-", y[16] = "-", z[16] = "-";
    EXPECT_EQ(ZnString::SeparateList(row.text, ',', row.maxLength, row.count, x, y, z), row.filled);
    EXPECT_EQ(std::vector<std::string>({x, y, z}), row.buffers);
  }
}

TEST(SeparateList, PassesOverANullBuffer) {
  char y[8] = "-";
  EXPECT_EQ(ZnString::SeparateList("one;two", ';', 7, 2, static_cast<char*>(nullptr), y), 2);
  EXPECT_STREQ(y, "two");
  EXPECT_EQ(ZnString::SeparateList(nullptr, ';', 7, 1, y), 0);
  EXPECT_STREQ(y, "");
}

TEST(Lsprintf, PrintsArgumentsByTheirPositions) {
  char out[256];
  EXPECT_EQ(ZnString::lsprintf(out, "%d1%%%", 5), 2);
  EXPECT_STREQ(out, "5%");
  EXPECT_EQ(ZnString::lsprintf(out, "%s2% is %d1%", 42, "x"), 7);
  EXPECT_STREQ(out, "x is 42");
  ZnString::lsprintf(out, "%-5s1%|%05.1f2%|%x3%|%X4%|%c5%|%+i6%", "ab", 3.14159, 255, 255, 'z', 7);
  EXPECT_STREQ(out, "ab   |003.1|ff|FF|z|+7");
  ZnString::lsprintf(out, "%I64d2% %d1% %I64u3%", 7, -(1LL << 40), 1ULL << 63);
  EXPECT_STREQ(out, "-1099511627776 7 9223372036854775808");
  ZnString::lsprintf(out, "%ld1%/%hd2%", 1234567890123L, 65537);
  EXPECT_STREQ(out, "1234567890123/1");
  ZnString::lsprintf(out, "%S1% %s2% %C3% %hs4%", L"wide", "narrow", L'w', "short");
  EXPECT_STREQ(out, "wide narrow w short");
  ZnString::lsprintf(out, "%g1% %e2% %.3E3%", 0.5, 1e10, 2.5);
  EXPECT_STREQ(out, "0.5 1.000000e+10 2.500E+00");
  EXPECT_EQ(ZnString::lsprintf(out, "100%% sure: %s1%", "yes"), 14);
  EXPECT_STREQ(out, "100% sure: yes");
  EXPECT_EQ(ZnString::lsprintf(out, "plain text"), 10);
  EXPECT_STREQ(out, "plain text");
}

struct Limits {
  bool ok;
  float lower;
  float upper;
  bool lowerInclusive;
  bool upperInclusive;
};

Limits Evaluate(const char* expression) {
  // Start from values the function must overwrite.
  Limits limits = {false, 1.0f, 2.0f, true, true};
  limits.ok = ZnString::EvaluateLimitExpression(expression, limits.lower, limits.upper,
                                                limits.lowerInclusive, limits.upperInclusive);
  return limits;
}

TEST(EvaluateLimitExpression, ReadsBoundsThatTighten) {
  const float kLow = -FLT_MAX;
  const float kHigh = FLT_MAX;
  struct Row {
    const char* expression;
    Limits expected;
  } rows[] = {
      {"> 5 ; <= 10", {true, 5, 10, false, true}},
      {"= 3", {true, 3, 3, true, true}},
      {"5 <", {true, 5, kHigh, false, false}},
      {"5 < ; 10 >", {true, 5, 10, false, false}},
      {"> 5 : < 9", {true, 5, 9, false, false}},
      {"> 5 ; > 3", {true, 5, kHigh, false, false}},
      {"> 3 ; >= 5", {true, 5, kHigh, true, false}},
      {"> 5 ; >= 5", {true, 5, kHigh, false, false}},  // no tightening, flag kept
      {"<=7", {true, kLow, 7, false, true}},
      {"=< 7", {true, kLow, 7, false, true}},
      {"7 =>", {true, kLow, 7, false, true}},
      {"< = 4", {true, kLow, 4, false, true}},
      {">= -2.5", {true, -2.5f, kHigh, true, false}},
      {"< 2,5", {true, kLow, 2.5f, false, false}},     // either decimal separator
      {"junk ; > 5", {true, 5, kHigh, false, false}},  // text with no operator is dropped
      {"= 3 ; = 5", {true, 5, 3, true, true}},
      {"", {false, kLow, kHigh, false, false}},
      {"5", {false, kLow, kHigh, false, false}},
      {"x > 5", {false, kLow, kHigh, false, false}},
      {"> x", {false, kLow, kHigh, false, false}},
      {"5 < 6", {false, kLow, kHigh, false, false}},
      {"<>", {false, kLow, kHigh, false, false}},
      {"==", {false, kLow, kHigh, false, false}},
      {"1 < x < 2", {false, kLow, kHigh, false, false}},
      {"< 5 =", {false, kLow, kHigh, false, false}},
      {"> 5 ; y <", {false, 5, kHigh, false, false}},  // keeps what was set before the fault
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expression);
    const Limits limits = Evaluate(row.expression);
    EXPECT_EQ(limits.ok, row.expected.ok);
    EXPECT_EQ(limits.lower, row.expected.lower);
    EXPECT_EQ(limits.upper, row.expected.upper);
    EXPECT_EQ(limits.lowerInclusive, row.expected.lowerInclusive);
    EXPECT_EQ(limits.upperInclusive, row.expected.upperInclusive);
  }
}

TEST(EvaluateLimitExpression, ALoneOperatorTakesTheLastValueUnlessItEndsTheText) {
  const float kHigh = FLT_MAX;
  struct Row {
    const char* expression;
    Limits expected;
  } rows[] = {
      {"=;", {true, 0, 0, true, true}},               // nothing read yet
      {" =;", {true, -99, -99, true, true}},          // a blank text reads as the missing value
      {"> 5 ;=;", {true, 5, 5, false, true}},         // the 5 read before
      {"=", {false, -FLT_MAX, kHigh, false, false}},  // the end counts one more character
      {"= ", {false, -FLT_MAX, kHigh, false, false}},
      {"<;", {true, -FLT_MAX, 0, false, false}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expression);
    const Limits limits = Evaluate(row.expression);
    EXPECT_EQ(limits.ok, row.expected.ok);
    EXPECT_EQ(limits.lower, row.expected.lower);
    EXPECT_EQ(limits.upper, row.expected.upper);
    EXPECT_EQ(limits.lowerInclusive, row.expected.lowerInclusive);
    EXPECT_EQ(limits.upperInclusive, row.expected.upperInclusive);
  }
}

TEST(EvaluateLimitExpression, ReadsBothSeparatorsUnderACommaLocale) {
  Locales::SetDecimalSeparatorClass comma(Locales::eDecimalComma);
  ASSERT_EQ(Locales::GetDecimalSeparator(), Locales::eDecimalComma);
  const Limits limits = Evaluate("> 1.5 ; < 2,5");
  EXPECT_TRUE(limits.ok);
  EXPECT_EQ(limits.lower, 1.5f);
  EXPECT_EQ(limits.upper, 2.5f);
}

// A caller's own variadic front, as the applications write them for their messages.
int Message(char* out, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = ZnString::vlsprintf(out, format, arguments);
  va_end(arguments);
  return length;
}

TEST(Vlsprintf, ServesACallersOwnVariadicFunction) {
  char out[64];
  EXPECT_EQ(Message(out, "%s3%: %d1% of %.1f2%", 3, 7.5, "done"), 14);
  EXPECT_STREQ(out, "done: 3 of 7.5");
}

TEST(Lsprintf, TakesArgumentsInPositionOrderWithoutSeeingGaps) {
  char out[64];
  ZnString::lsprintf(out, "%d1% and %d3%", 1, 2);
  EXPECT_STREQ(out, "1 and 2");
  // Equal positions keep the order of the format.
  ZnString::lsprintf(out, "%d2% %d1% %d2%", 1, 2, 3);
  EXPECT_STREQ(out, "2 1 3");
}

TEST(Lsprintf, RefusesMalformedConversionsWithAnEmptyOutput) {
  const char* formats[] = {"%d",   "%d1",  "x %d1 y", "%y1%", "%I32d1%",
                           "%n1%", "abc%", "%-",      "%a1%", "%lld1%"};
  for (const char* format : formats) {
    SCOPED_TRACE(format);
    char out[64] = "previous";
    EXPECT_EQ(ZnString::lsprintf(out, format, 5, 6), 0);
    EXPECT_STREQ(out, "");
  }
}

std::vector<CString> Letters(int n) {
  std::vector<CString> items;
  for (int i = 0; i < n; ++i) items.push_back(CString(static_cast<char>('a' + i), 1));
  return items;
}

TEST(FormatStringVector, JoinsForASentence) {
  struct Row {
    int items;
    const char* separator;
    const char* lastSeparator;
    int maxItems;
    const char* moreFormat;
    const char* expected;
  } rows[] = {
      {0, nullptr, nullptr, -1, nullptr, ""},
      {1, nullptr, nullptr, -1, nullptr, "a"},
      {2, nullptr, nullptr, -1, nullptr, "a and b"},
      {3, nullptr, nullptr, -1, nullptr, "a, b and c"},
      {5, nullptr, nullptr, 3, nullptr, "a, b, c, ..."},
      {5, nullptr, nullptr, 3, " (+%d)", "a, b, c (+2)"},
      {3, nullptr, nullptr, 3, nullptr, "a, b and c"},
      {3, nullptr, nullptr, 2, nullptr, "a, b, ..."},
      {3, nullptr, nullptr, 1, nullptr, "a, ..."},
      {3, "; ", " or ", -1, nullptr, "a; b or c"},
      {3, "; ", " or ", 2, nullptr, "a; b; ..."},
      {2, nullptr, nullptr, 0, " and %d more", " and 2 more"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expected);
    EXPECT_STREQ(ZnString::FormatStringVector(Letters(row.items), row.separator, row.lastSeparator,
                                              row.maxItems, row.moreFormat),
                 row.expected);
  }
}

TEST(FormatStringToVector, CutsAtSeparatorsAndRepeatsTheTailWhenTheLastSeparatorDiffers) {
  struct Row {
    const char* text;
    const char* separator;
    const char* lastSeparator;
    std::vector<CString> expected;
  } rows[] = {
      {"a, b and c", nullptr, nullptr, Strings({"a", "b and c", "b and c"})},
      {"", nullptr, nullptr, Strings({""})},
      {"", ", ", ", ", Strings({})},
      {"a, b, ", nullptr, nullptr, Strings({"a", "b", ""})},
      {"a, b, ", ", ", ", ", Strings({"a", "b"})},
      {"a, b, c", ", ", ", ", Strings({"a", "b", "c"})},
      {"x AND y", " and ", " AND ", Strings({"x AND y"})},  // equal but for case
      {"a, b", ", ", " or ", Strings({"a", "b", "b"})},
      {"a,b", "", "", Strings({"a,b"})},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(ZnString::FormatStringToVector(row.text, row.separator, row.lastSeparator),
              row.expected);
  }
}

TEST(GetIndexVectorToSort, GivesOneBasedIndicesOfTheWantedColumns) {
  const std::vector<CString> present = Strings({"id", "name", "Name", "id"});
  const std::vector<CString> wanted = Strings({"name", "id", "missing", "Name"});
  EXPECT_EQ(ZnString::GetIndexVectorToSort(&wanted, &present), std::vector<int>({2, 4, 3}));
  EXPECT_TRUE(ZnString::GetIndexVectorToSort(nullptr, &present).empty());
  EXPECT_TRUE(ZnString::GetIndexVectorToSort(&wanted, nullptr).empty());
}

TEST(RearrangeColumns, ReordersDropsAndRepeatsColumns) {
  typedef std::vector<std::vector<CString>> Table;
  struct Row {
    std::vector<int> order;
    Table expected;
  } rows[] = {
      {{3, 1, 1}, {Strings({"c", "a", "a"}), Strings({"f", "d", "d"})}},
      {{2}, {Strings({"b"}), Strings({"e"})}},
      {{}, {Strings({}), Strings({})}},
      {{2, 5, 0}, {Strings({"b", "", ""}), Strings({"e", "", ""})}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.order.size());
    Table table = {Strings({"a", "b", "c"}), Strings({"d", "e", "f"})};
    ZnString::RearrangeColumns(table, &row.order);
    EXPECT_EQ(table, row.expected);
  }
  Table untouched = {Strings({"a", "b"})};
  ZnString::RearrangeColumns(untouched, nullptr);
  EXPECT_EQ(untouched, Table({Strings({"a", "b"})}));
}

TEST(RearrangeColumns, PutsATableIntoTheOrderOfAWantedHeader) {
  std::vector<std::vector<CString>> table = {Strings({"id", "name", "size"}),
                                             Strings({"7", "x.txt", "12"})};
  const std::vector<CString> wanted = Strings({"name", "size", "id"});
  const std::vector<int> order = ZnString::GetIndexVectorToSort(&wanted, &table[0]);
  ZnString::RearrangeColumns(table, &order);
  EXPECT_EQ(table[0], wanted);
  EXPECT_EQ(table[1], Strings({"x.txt", "12", "7"}));
}

TEST(ZnStringReplace, ReturnsACopyWithEveryOccurrenceReplaced) {
  struct Row {
    const char* text;
    const char* from;
    const char* to;
    const char* expected;
  } rows[] = {
      {"a.b.c", ".", "::", "a::b::c"}, {"abc", "x", "y", "abc"},     {"aaa", "a", nullptr, ""},
      {"abc", "", "x", "abc"},         {"abc", nullptr, "x", "abc"}, {"aaaa", "aa", "a", "aa"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const CString original(row.text);
    EXPECT_STREQ(ZnString::Replace(original, row.from, row.to), row.expected);
    EXPECT_STREQ(original, row.text);
  }
}

TEST(ZnStringSplitString, CutsOffTheHead) {
  struct Row {
    const char* text;
    const char* separators;  // one character for the char form, a set otherwise
    const char* head;
    const char* rest;
  } rows[] = {
      {"a;b;c", ";", "a", "b;c"},  {"abc", ";", "abc", ""},  {";x", ";", "", "x"},
      {"x;", ";", "x", ""},        {"", ";", "", ""},        {"a b,c", " ,", "a", "b,c"},
      {"a,b c", " ,", "a", "b c"}, {"abc", " ,", "abc", ""}, {"a,b", "", "a,b", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " / " + row.separators);
    CString text(row.text);
    if (std::string(row.separators).size() == 1) {
      EXPECT_STREQ(ZnString::SplitString(text, row.separators[0]), row.head);
    } else {
      EXPECT_STREQ(ZnString::SplitString(text, row.separators), row.head);
    }
    EXPECT_STREQ(text, row.rest);
  }
  CString text("a b");
  EXPECT_STREQ(ZnString::SplitString(text, static_cast<const char*>(nullptr)), "a b");
  EXPECT_STREQ(text, "");
}

}  // namespace
