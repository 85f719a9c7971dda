#include "zenutl/zn_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/exception_matchers.h"

namespace {

using ZnString::EParseResult;

// Switches the C library's numeric locale for one scope and puts the old one back.
class ScopedNumericLocale {
 public:
  explicit ScopedNumericLocale(const char* name) : previous_(std::setlocale(LC_NUMERIC, nullptr)) {
    active_ = std::setlocale(LC_NUMERIC, name) != nullptr;
  }
  ~ScopedNumericLocale() { std::setlocale(LC_NUMERIC, previous_.c_str()); }
  bool active() const { return active_; }

 private:
  std::string previous_;
  bool active_ = false;
};

// A point locale and the comma locales the machine is set up with.
const char* const kLocales[] = {"C", "sv_SE.UTF-8", "fr_FR.UTF-8", "de_DE.UTF-8"};

struct ParseRow {
  const char* text;
  double value;
  EParseResult result;
};

const ParseRow kParseRows[] = {
    {"1.5", 1.5, ZnString::eParseOk},
    {"1,5", 1.5, ZnString::eParseOk},
    {"  2.5  ", 2.5, ZnString::eParseOk},
    {"\t-0,25\n", -0.25, ZnString::eParseOk},
    {"+3", 3.0, ZnString::eParseOk},
    {"1e5", 100000.0, ZnString::eParseOk},
    {"1,5e2", 150.0, ZnString::eParseOk},
    {"-99", -99.0, ZnString::eParseOk},
    {"", -99.0, ZnString::eParseInvalid},
    {"   ", -99.0, ZnString::eParseInvalid},
    {"x", -99.0, ZnString::eParseInvalid},
    {"12abc", -99.0, ZnString::eParseInvalid},
    {"1D5", -99.0, ZnString::eParseInvalid},
    {"1 5", -99.0, ZnString::eParseInvalid},
    {"1,234,567", -99.0, ZnString::eParseInvalid},
    {"1.5,2", -99.0, ZnString::eParseInvalid},
    {"1e999", -99.0, ZnString::eParseOverflow},
    {"-1e999", -99.0, ZnString::eParseOverflow},
    {"1e-999", -99.0, ZnString::eParseUnderflow},
};

std::wstring Widen(const char* text) {
  return std::wstring(text, text + std::strlen(text));
}

TEST(ZnString, ParsesEitherSeparatorUnderEveryLocale) {
  for (const char* locale : kLocales) {
    ScopedNumericLocale scope(locale);
    ASSERT_TRUE(scope.active()) << locale << " is not generated; run scripts/setup.sh";
    for (const ParseRow& row : kParseRows) {
      SCOPED_TRACE(std::string(locale) + " \"" + row.text + "\"");
      EParseResult result = ZnString::eParseInvalid;
      EXPECT_DOUBLE_EQ(ZnString::ToDouble(row.text, result), row.value);
      EXPECT_EQ(result, row.result);

      double value = 0.0;
      EXPECT_EQ(ZnString::ToDouble(row.text, value), row.result == ZnString::eParseOk);
      EXPECT_DOUBLE_EQ(value, row.value);

      const std::wstring wide = Widen(row.text);
      result = ZnString::eParseInvalid;
      EXPECT_DOUBLE_EQ(ZnString::ToDouble(wide.c_str(), result), row.value);
      EXPECT_EQ(result, row.result);
    }
  }
}

TEST(ZnString, ConvertsOnlyTheFirstForeignSeparatorAndStopsAtCapitalD) {
  struct Row {
    const char* text;
    double value;
    long endOffset;
  } rows[] = {
      {"1,234,567", 1.234, 5},
      {"1.5,2", 1.5, 3},
      {"1D5", 1.0, 1},
      // A hexadecimal number shows the capital D rule at work; a small d is a digit there.
      {"0x1D", 1.0, 3},
      {"0x1d", 29.0, 4},
      {"2.5D", 2.5, 3},
      {"x", 0.0, 0},
      {"  7", 7.0, 3},
  };
  for (const char* locale : {"C", "sv_SE.UTF-8"}) {
    ScopedNumericLocale scope(locale);
    ASSERT_TRUE(scope.active()) << locale;
    for (const Row& row : rows) {
      SCOPED_TRACE(std::string(locale) + " \"" + row.text + "\"");
      char* end = nullptr;
      EXPECT_DOUBLE_EQ(ZnString::znstrtod(row.text, &end), row.value);
      EXPECT_EQ(end - row.text, row.endOffset);
      EXPECT_DOUBLE_EQ(ZnString::znstrtod(row.text, nullptr), row.value);

      const std::wstring wide = Widen(row.text);
      wchar_t* wideEnd = nullptr;
      EXPECT_DOUBLE_EQ(ZnString::znstrtod(wide.c_str(), &wideEnd), row.value);
      EXPECT_EQ(wideEnd - wide.c_str(), row.endOffset);
    }
  }
}

TEST(ZnString, SeesOnlyTheFirstSixtyThreeCharacters) {
  const std::string digits63 = "1" + std::string(62, '0');
  EParseResult result;
  EXPECT_DOUBLE_EQ(ZnString::ToDouble(digits63.c_str(), result), 1e62);
  EXPECT_EQ(result, ZnString::eParseOk);
  // What lies beyond the 63rd character is judged in the caller's text.
  EXPECT_DOUBLE_EQ(ZnString::ToDouble((digits63 + "   ").c_str(), result), 1e62);
  EXPECT_EQ(result, ZnString::eParseOk);
  EXPECT_DOUBLE_EQ(ZnString::ToDouble((digits63 + "0").c_str(), result), -99.0);
  EXPECT_EQ(result, ZnString::eParseInvalid);
  // Leading blanks count against the limit.
  EXPECT_DOUBLE_EQ(ZnString::ToDouble((" " + digits63).c_str(), result), -99.0);
  EXPECT_EQ(result, ZnString::eParseInvalid);

  char* end = nullptr;
  const std::string long70 = digits63 + "0000000";
  EXPECT_DOUBLE_EQ(ZnString::znstrtod(long70.c_str(), &end), 1e62);
  EXPECT_EQ(end - long70.c_str(), 63);
}

TEST(ZnString, ThrowingToDoubleNamesTheFailure) {
  EXPECT_DOUBLE_EQ(ZnString::ToDouble(" 4,5 "), 4.5);
  EXPECT_THROW_WHY(ZnString::ToDouble("x"), InvalidArgument, "ZnStringToDouble invalid argument");
  EXPECT_THROW_WHY(ZnString::ToDouble(""), InvalidArgument, "ZnStringToDouble invalid argument");
  EXPECT_THROW_WHY(ZnString::ToDouble("1e999"), OverflowError, "ZnStringToDouble overflow");
  EXPECT_THROW_WHY(ZnString::ToDouble(L"1e-999"), UnderflowError, "ZnStringToDouble underflow");
  EXPECT_THROW_WHY(ZnString::ToDouble(L"1.2.3"), InvalidArgument,
                   "ZnStringToDouble invalid argument");
}

TEST(ZnString, NullTextIsInvalidAndNeverCrashes) {
  EParseResult result = ZnString::eParseOk;
  EXPECT_DOUBLE_EQ(ZnString::ToDouble(static_cast<const char*>(nullptr), result), -99.0);
  EXPECT_EQ(result, ZnString::eParseInvalid);
  int i = 5;
  __int64 big = 5;
  EXPECT_FALSE(ZnString::ToInt(static_cast<const char*>(nullptr), i));
  EXPECT_FALSE(ZnString::ToInt64(static_cast<const wchar_t*>(nullptr), big));
  EXPECT_EQ(i, 5);
  EXPECT_EQ(big, 5);
  char* end = reinterpret_cast<char*>(&i);
  EXPECT_EQ(ZnString::znstrtod(static_cast<const char*>(nullptr), &end), 0.0);
  EXPECT_EQ(end, nullptr);
}

TEST(ZnString, ToFloatNarrowsWithoutARangeTestOfItsOwn) {
  float value = 0.0f;
  EXPECT_TRUE(ZnString::ToFloat("1e39", value));
  EXPECT_TRUE(std::isinf(value));
  EXPECT_TRUE(ZnString::ToFloat(L"-1e39", value));
  EXPECT_TRUE(std::isinf(value) && value < 0);
  EXPECT_TRUE(ZnString::ToFloat("1e-50", value));
  EXPECT_EQ(value, 0.0f);
  EXPECT_TRUE(ZnString::ToFloat("0,125", value));
  EXPECT_EQ(value, 0.125f);
  EXPECT_FALSE(ZnString::ToFloat("abc", value));
  EXPECT_EQ(value, -99.0f);
}

TEST(ZnString, ToIntStoresOnlyOnSuccessWhileToInt64StoresWhatItRead) {
  const int kUntouched = 7;
  struct Row {
    const char* text;
    bool intOk;
    int intValue;
    bool int64Ok;
    __int64 int64Value;
  } rows[] = {
      {"42", true, 42, true, 42},
      {" -42 ", true, -42, true, -42},
      {"12.5", false, kUntouched, false, 12},
      {"12x", false, kUntouched, false, 12},
      {"abc", false, kUntouched, false, 0},
      {"", false, kUntouched, false, kUntouched},
      {"  \t", false, kUntouched, false, kUntouched},
      {"2147483647", true, INT_MAX, true, INT_MAX},
      {"-2147483648", true, INT_MIN, true, INT_MIN},
      {"2147483648", false, kUntouched, true, 2147483648LL},
      {"9223372036854775807", false, kUntouched, true, LLONG_MAX},
      {"99999999999999999999", false, kUntouched, false, LLONG_MAX},
      {"-99999999999999999999", false, kUntouched, false, LLONG_MIN},
      {"0x10", false, kUntouched, false, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    int i = kUntouched;
    __int64 big = kUntouched;
    EXPECT_EQ(ZnString::ToInt(row.text, i), row.intOk);
    EXPECT_EQ(i, row.intValue);
    EXPECT_EQ(ZnString::ToInt64(row.text, big), row.int64Ok);
    EXPECT_EQ(big, row.int64Value);

    const std::wstring wide = Widen(row.text);
    i = kUntouched;
    big = kUntouched;
    EXPECT_EQ(ZnString::ToInt(wide.c_str(), i), row.intOk);
    EXPECT_EQ(i, row.intValue);
    EXPECT_EQ(ZnString::ToInt64(wide.c_str(), big), row.int64Ok);
    EXPECT_EQ(big, row.int64Value);
  }
}

TEST(ZnString, PrintsMissingTextForMinusNinetyNineOfEveryType) {
  EXPECT_STREQ(ZnString::ToString(-99.0, NULL, "n/a"), "n/a");
  EXPECT_STREQ(ZnString::ToString(-99, NULL, "n/a"), "n/a");
  EXPECT_STREQ(ZnString::ToString(static_cast<__int64>(-99), "%I64d!", "n/a"), "n/a");
  EXPECT_STREQ(ZnString::ToString(-99.0), "");
  EXPECT_STREQ(ZnString::ToStringW(-99, L"%d", L"missing"), L"missing");
  EXPECT_STREQ(ZnString::ToStringW(-99.0), L"");
  // An unsigned value is never negative, so it is never missing.
  EXPECT_STREQ(ZnString::ToString(static_cast<unsigned int>(-99), NULL, "n/a"), "4294967197");
  // Close to, but not, the missing value.
  EXPECT_STREQ(ZnString::ToString(-99.5, NULL, "n/a"), "-99.5");
  EXPECT_STREQ(ZnString::ToString(-98, NULL, "n/a"), "-98");
}

TEST(ZnString, FormatsWithTheTypeDefaultOrTheCallersFormat) {
  EXPECT_STREQ(ZnString::ToString(1.5), "1.5");
  EXPECT_STREQ(ZnString::ToString(1e20), "1e+20");
  EXPECT_STREQ(ZnString::ToString(42), "42");
  EXPECT_STREQ(ZnString::ToString(static_cast<__int64>(1234567890123LL)), "1234567890123");
  EXPECT_STREQ(ZnString::ToString(4294967295u), "4294967295");
  EXPECT_STREQ(ZnString::ToStringA(3.14159, "%.2f"), "3.14");
  EXPECT_STREQ(ZnString::ToStringA(255, "%04X"), "00FF");
  EXPECT_STREQ(ZnString::ToStringW(static_cast<__int64>(-5000000000LL)), L"-5000000000");
  EXPECT_STREQ(ZnString::ToStringW(7u, L"<%u>"), L"<7>");
  EXPECT_STREQ(ZnString::ToStringW(0.5), L"0.5");
}

TEST(ZnString, FormatPrintsIntoANewString) {
  EXPECT_STREQ(ZnString::Format("%s=%d", "a", 5), "a=5");
  EXPECT_STREQ(ZnString::Format("%I64d", 1LL << 40), "1099511627776");
  EXPECT_STREQ(ZnString::Format(L"%s-%d", L"w", 3), L"w-3");
  const std::string longText(5000, 'q');
  EXPECT_EQ(ZnString::Format("[%s]", longText.c_str()).GetLength(), 5002);
}

TEST(ZnString, FormatByNumberUsesTheLanguageString) {
  // The built-in English texts answer while no module is selected.
  EXPECT_STREQ(ZnString::Format(17065ul, "A dataset name", 8u),
               "A dataset name cannot be longer than 8 characters.");
  EXPECT_STREQ(ZnString::Format(17057ul, "A file name"), "A file name cannot be empty.");
  EXPECT_STREQ(ZnString::Format(999999ul, "ignored"), "");
}

TEST(ZnString, FormatIndexAlwaysEndsInTh) {
  struct Row {
    unsigned long n;
    const char* text;
  } rows[] = {{0, "0th"},       {1, "1th"},
              {2, "2th"},       {3, "3th"},
              {4, "4th"},       {11, "11th"},
              {12, "12th"},     {13, "13th"},
              {21, "21th"},     {22, "22th"},
              {103, "103th"},   {111, "111th"},
              {1001, "1001th"}, {4294967295ul, "4294967295th"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.n);
    EXPECT_STREQ(ZnString::FormatIndex(row.n), row.text);
  }
}

TEST(ZnString, ItoaWritesCapitalDigitsInAnyRadix) {
  struct Row {
    int value;
    int radix;
    const char* text;
  } rows[] = {
      {-255, 16, "-FF"},
      {255, 1, "255"},
      {255, 37, "255"},
      {-7, 0, "-7"},
      {5, 2, "101"},
      {35, 36, "Z"},
      {0, 10, "0"},
      {-1, 2, "-1"},
      {INT_MAX, 16, "7FFFFFFF"},
      {INT_MIN, 10, "-2147483648"},
      {INT_MIN, 2, "-10000000000000000000000000000000"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.value) + " in " + std::to_string(row.radix));
    char buffer[40];
    std::memset(buffer, 'X', sizeof buffer);
    EXPECT_EQ(ZnString::znitoa(row.value, buffer, row.radix), buffer);
    EXPECT_STREQ(buffer, row.text);
  }
  // Against the C library over a spread of values.
  for (long long v = INT_MIN; v <= INT_MAX; v += 65537LL * 331) {
    char ours[40];
    char theirs[40];
    ZnString::znitoa(static_cast<int>(v), ours, 10);
    std::snprintf(theirs, sizeof theirs, "%d", static_cast<int>(v));
    ASSERT_STREQ(ours, theirs);
    if (v >= 0) {
      ZnString::znitoa(static_cast<int>(v), ours, 16);
      std::snprintf(theirs, sizeof theirs, "%X", static_cast<unsigned>(v));
      ASSERT_STREQ(ours, theirs);
    }
  }
}

TEST(ZnString, SnprintfCutsTerminatesAndAnswersMinusOne) {
  struct Row {
    unsigned int size;
    const char* text;
    int result;
  } rows[] = {{4, "abc", -1}, {6, "abcde", -1}, {7, "abcdef", 6}, {8, "abcdef", 6}, {1, "", -1}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.size);
    char buffer[16];
    std::memset(buffer, 'Z', sizeof buffer);
    EXPECT_EQ(ZnString::znsnprintf(buffer, row.size, "%s", "abcdef"), row.result);
    EXPECT_STREQ(buffer, row.text);
    EXPECT_EQ(buffer[row.size], 'Z') << "wrote past the size";
  }
  char untouched[4] = {'Z', 'Z', 'Z', 'Z'};
  EXPECT_EQ(ZnString::znsnprintf(untouched, 0, "%s", "abc"), -1);
  EXPECT_EQ(untouched[0], 'Z');

  char buffer[32];
  EXPECT_EQ(ZnString::znsnprintf(buffer, sizeof buffer, "%I64d", -(1LL << 40)), 14);
  EXPECT_STREQ(buffer, "-1099511627776");
}

TEST(ZnString, StristrFindsTheFirstCaseInsensitiveMatch) {
  const char* hello = "Hello World";
  struct Row {
    const char* text;
    const char* sought;
    int offset;  // -1: null expected
  } rows[] = {
      {hello, "world", 6},   {hello, "O", 4},    {hello, "", 0}, {hello, nullptr, 0},
      {hello, "worlds", -1}, {hello, "xyz", -1}, {"", "a", -1},  {"aaab", "AAB", 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " / " + (row.sought ? row.sought : "(null)"));
    const char* found = ZnString::znstristr(row.text, row.sought);
    if (row.offset < 0) {
      EXPECT_EQ(found, nullptr);
    } else {
      EXPECT_EQ(found, row.text + row.offset);
    }
  }
  EXPECT_EQ(ZnString::znstristr(static_cast<const char*>(nullptr), "a"), nullptr);
  const wchar_t* wide = L"ÅSA åsa";
  EXPECT_EQ(ZnString::znstristr(wide, L"SA"), wide + 1);
  EXPECT_EQ(ZnString::znstristr(wide, L""), wide);
  EXPECT_EQ(ZnString::znstristr(wide, L"q"), nullptr);
}

TEST(ZnString, HeapStringHelpersReplaceAndAppendSafely) {
  char* text = nullptr;
  EXPECT_EQ(ZnString::SetStr(text, nullptr), nullptr);
  ZnString::SetStr(text, "alpha");
  EXPECT_STREQ(text, "alpha");
  ZnString::SetStr(text, text);  // from itself
  EXPECT_STREQ(text, "alpha");
  char* before = text;
  EXPECT_EQ(ZnString::SetStr(text, nullptr), before);
  EXPECT_EQ(ZnString::ConcatStr(text, nullptr), before);
  ZnString::ConcatStr(text, "-beta");
  EXPECT_STREQ(text, "alpha-beta");
  ZnString::ConcatStr(text, "");
  EXPECT_STREQ(text, "alpha-beta");
  delete[] text;

  char* fresh = nullptr;
  ZnString::ConcatStr(fresh, "new");
  EXPECT_STREQ(fresh, "new");
  delete[] fresh;

  wchar_t* wide = ZnString::znstrdup(L"x");
  ZnString::ConcatStr(wide, L"yz");
  EXPECT_STREQ(wide, L"xyz");
  ZnString::SetStr(wide, L"w");
  EXPECT_STREQ(wide, L"w");
  delete[] wide;

  EXPECT_EQ(ZnString::znstrdup(static_cast<const char*>(nullptr)), nullptr);
  EXPECT_EQ(ZnString::znstrdup(static_cast<const wchar_t*>(nullptr)), nullptr);
  char* copy = ZnString::znstrdup("copy");
  EXPECT_STREQ(copy, "copy");
  delete[] copy;
}

TEST(ZnString, TrimWhiteSpaceTrimsInPlace) {
  struct Row {
    const char* text;
    const char* trimmed;
  } rows[] = {{"  a b  ", "a b"}, {"\t\nx\r\n", "x"}, {"   ", ""},        {"", ""},
              {"abc", "abc"},     {" lead", "lead"},  {"trail ", "trail"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string("\"") + row.text + "\"");
    char buffer[32];
    std::strcpy(buffer, row.text);
    EXPECT_EQ(ZnString::TrimWhiteSpace(buffer), buffer);
    EXPECT_STREQ(buffer, row.trimmed);
  }
  EXPECT_EQ(ZnString::TrimWhiteSpace(nullptr), nullptr);
}

TEST(ZnString, EmptyIsOneSharedEmptyString) {
  EXPECT_TRUE(ZnString::Empty().IsEmpty());
  EXPECT_EQ(&ZnString::Empty(), &ZnString::Empty());
}

}  // namespace
