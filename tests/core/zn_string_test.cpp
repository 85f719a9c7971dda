#include "zenutl/zn_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/exception_matchers.h"
#include "support/reference_strtod.h"
#include "support/temp_dir.h"
#include "zenutl/language_string.h"
#include "zenutl/resource_module.h"

namespace {

using zenutl_test::WriteWholeFile;
using ZnString::EParseResult;
const EParseResult kOk = ZnString::eParseOk, kUnder = ZnString::eParseUnderflow,
                   kOver = ZnString::eParseOverflow, kBad = ZnString::eParseInvalid;

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

std::wstring Widen(const char* text) {
  return std::wstring(text, text + std::strlen(text));
}

TEST(ZnString, ParsesEitherSeparatorUnderPointAndCommaLocales) {
  const struct {
    const char* text;
    double value;
    EParseResult result;
  } rows[] = {
      {"1.5", 1.5, kOk},         {"1,5", 1.5, kOk},     {"  2.5  ", 2.5, kOk},
      {"\t-0,25\n", -0.25, kOk}, {"1,5e2", 150, kOk},   {"-99", -99, kOk},
      {"", -99, kBad},           {"   ", -99, kBad},    {"12abc", -99, kBad},
      {"1D5", -99, kBad},        {"1 5", -99, kBad},    {"1,234,567", -99, kBad},
      {"1.5,2", -99, kBad},      {"1e999", -99, kOver}, {"-1e999", -99, kOver},
      {"1e-999", -99, kUnder},
  };
  for (const char* locale : {"C", "sv_SE.UTF-8", "fr_FR.UTF-8", "de_DE.UTF-8"}) {
    ScopedNumericLocale scope(locale);
    ASSERT_TRUE(scope.active()) << locale << " is not generated; run scripts/setup.sh";
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(locale) + " \"" + row.text + "\"");
      EParseResult result = kBad;
      EXPECT_DOUBLE_EQ(ZnString::ToDouble(row.text, result), row.value);
      EXPECT_EQ(result, row.result);
      double value = 0.0;
      EXPECT_EQ(ZnString::ToDouble(row.text, value), row.result == kOk);
      EXPECT_DOUBLE_EQ(value, row.value);
      result = kBad;
      EXPECT_DOUBLE_EQ(ZnString::ToDouble(Widen(row.text).c_str(), result), row.value);
      EXPECT_EQ(result, row.result);
    }
  }
}

TEST(ZnString, StrtodConvertsOnlyTheFirstForeignSeparatorAndStopsAtCapitalD) {
  const struct {
    const char* text;
    double value;
    long end;
  } rows[] = {{"1,234,567", 1.234, 5},
              {"1.5,2", 1.5, 3},
              {"1D5", 1, 1},
              {"x", 0, 0},
              // Hexadecimal shows the capital D rule at work; a small d is a digit there.
              {"0x1D", 1, 3},
              {"0x1d", 29, 4}};
  for (const char* locale : {"C", "sv_SE.UTF-8"}) {
    ScopedNumericLocale scope(locale);
    ASSERT_TRUE(scope.active()) << locale;
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(locale) + " \"" + row.text + "\"");
      char* end = nullptr;
      EXPECT_DOUBLE_EQ(ZnString::znstrtod(row.text, &end), row.value);
      EXPECT_EQ(end - row.text, row.end);
      EXPECT_DOUBLE_EQ(ZnString::znstrtod(row.text, nullptr), row.value);
      const std::wstring wide = Widen(row.text);
      wchar_t* wideEnd = nullptr;
      EXPECT_DOUBLE_EQ(ZnString::znstrtod(wide.c_str(), &wideEnd), row.value);
      EXPECT_EQ(wideEnd - wide.c_str(), row.end);
    }
  }
}

// Numbers in every printed form, near the ends of the range too, with either separator, blanks
// and signs, and random runs of the characters a number is made of.
std::vector<std::string> NumberLikeTexts() {
  std::mt19937_64 random(42);
  std::vector<std::string> texts;
  const char* const formats[] = {"%.17g", "%.3f", "%e", "%a", "%.0f", "%g", "%.30e"};
  const double specials[] = {DBL_MIN, DBL_MAX, DBL_TRUE_MIN, 2 * DBL_MIN, DBL_MAX / 2, 0.0, -0.0};
  const std::string letters = "0123456789.,eE+- xXDdinfaINFAL\t";
  char printed[512];
  for (int i = 0; i < 40000; ++i) {
    double value;
    std::uint64_t bits = random();
    std::memcpy(&value, &bits, sizeof value);
    if (i % 3 == 0)
      value = std::ldexp(static_cast<double>(random() % 100000), int(random() % 40) - 20);
    if (i % 50 == 0) value = specials[(i / 50) % 7] * (i % 100 ? 1 : 3);
    std::snprintf(printed, sizeof printed, formats[i % 7], value);
    std::string text = printed;
    if (i % 4 == 1) std::replace(text.begin(), text.end(), '.', ',');
    if (i % 5 == 2) text = "  " + text + (i % 2 ? " " : "x");
    if (i % 7 == 3) text = "+" + text;
    texts.push_back(text);
    std::string noise(random() % 70, ' ');
    for (char& ch : noise) ch = letters[random() % letters.size()];
    texts.push_back(noise);
  }
  return texts;
}

TEST(ZnString, StrtodAgreesWithThePlainReadingOnManyTexts) {
  const std::vector<std::string> texts = NumberLikeTexts();
  for (const char* locale : {"C", "de_DE.UTF-8"}) {
    ScopedNumericLocale scope(locale);
    ASSERT_TRUE(scope.active()) << locale;
    for (const std::string& text : texts) {
      const std::wstring wide(text.begin(), text.end());
      char *end = nullptr, *expectedEnd = nullptr;
      wchar_t *wideEnd = nullptr, *expectedWideEnd = nullptr;
      errno = 0;
      const double value = ZnString::znstrtod(text.c_str(), &end);
      const double wideValue = ZnString::znstrtod(wide.c_str(), &wideEnd);
      const int error = errno;
      errno = 0;
      const double expected = zenutl_test::ReferenceStrtod(text.c_str(), &expectedEnd);
      zenutl_test::ReferenceStrtod(wide.c_str(), &expectedWideEnd);
      ASSERT_EQ(error, errno) << locale << " \"" << text << "\"";
      ASSERT_TRUE(std::memcmp(&value, &expected, sizeof value) == 0 ||
                  (value != value && expected != expected))
          << locale << " \"" << text << "\": " << value << " vs " << expected;
      ASSERT_TRUE(std::memcmp(&wideValue, &expected, sizeof value) == 0 ||
                  (value != value && expected != expected));
      ASSERT_EQ(end - text.c_str(), expectedEnd - text.c_str()) << locale << " \"" << text << "\"";
      ASSERT_EQ(wideEnd - wide.c_str(), expectedWideEnd - wide.c_str()) << text;
    }
  }
}

TEST(ZnString, SeesOnlyTheFirstSixtyThreeCharacters) {
  const std::string digits = "1" + std::string(62, '0');
  const struct {
    std::string text;
    EParseResult result;
  } rows[] = {{digits, kOk},
              {digits + "   ", kOk},  // beyond the 63rd: judged in the caller's text
              {digits + "0", kBad},
              {" " + digits, kBad}};  // leading blanks count against the limit
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EParseResult result;
    EXPECT_DOUBLE_EQ(ZnString::ToDouble(row.text.c_str(), result), row.result == kOk ? 1e62 : -99);
    EXPECT_EQ(result, row.result);
  }
}

TEST(ZnString, ThrowingToDoubleNamesTheFailure) {
  EXPECT_DOUBLE_EQ(ZnString::ToDouble(" 4,5 "), 4.5);
  EXPECT_THROW_WHY(ZnString::ToDouble("x"), InvalidArgument, "ZnStringToDouble invalid argument");
  EXPECT_THROW_WHY(ZnString::ToDouble(""), InvalidArgument, "ZnStringToDouble invalid argument");
  EXPECT_THROW_WHY(ZnString::ToDouble("1e999"), OverflowError, "ZnStringToDouble overflow");
  EXPECT_THROW_WHY(ZnString::ToDouble(L"1e-999"), UnderflowError, "ZnStringToDouble underflow");
}

TEST(ZnString, NullTextIsInvalidAndLeavesOutputsAlone) {
  EParseResult result = kOk;
  EXPECT_DOUBLE_EQ(ZnString::ToDouble(static_cast<const char*>(nullptr), result), -99.0);
  EXPECT_EQ(result, kBad);
  int i = 5;
  __int64 big = 5;
  EXPECT_FALSE(ZnString::ToInt(static_cast<const char*>(nullptr), i));
  EXPECT_FALSE(ZnString::ToInt64(static_cast<const wchar_t*>(nullptr), big));
  EXPECT_EQ(i + big, 10);
  char* end = reinterpret_cast<char*>(&i);
  EXPECT_EQ(ZnString::znstrtod(static_cast<const char*>(nullptr), &end), 0.0);
  EXPECT_EQ(end, nullptr);
}

TEST(ZnString, ToFloatNarrowsWithoutARangeTestOfItsOwn) {
  float value = 0.0f;
  EXPECT_TRUE(ZnString::ToFloat("1e39", value));
  EXPECT_TRUE(std::isinf(value) && value > 0);
  EXPECT_TRUE(ZnString::ToFloat(L"-1e39", value));
  EXPECT_TRUE(std::isinf(value) && value < 0);
  EXPECT_TRUE(ZnString::ToFloat("1e-50", value));
  EXPECT_EQ(value, 0.0f);
  EXPECT_FALSE(ZnString::ToFloat("abc", value));
  EXPECT_EQ(value, -99.0f);
}

TEST(ZnString, ToIntStoresOnlyOnSuccessWhileToInt64StoresWhatItRead) {
  const int kKept = 7;
  const struct {
    const char* text;
    bool intOk;
    int intValue;
    bool int64Ok;
    __int64 int64Value;
  } rows[] = {
      {" -42 ", true, -42, true, -42},
      {"12.5", false, kKept, false, 12},
      {"12x", false, kKept, false, 12},
      {"abc", false, kKept, false, 0},
      {"  \t", false, kKept, false, kKept},
      {"-2147483648", true, INT_MIN, true, INT_MIN},
      {"2147483648", false, kKept, true, 2147483648LL},
      {"99999999999999999999", false, kKept, false, LLONG_MAX},
      {"0x10", false, kKept, false, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    for (const bool wide : {false, true}) {
      int i = kKept;
      __int64 big = kKept;
      const std::wstring text = Widen(row.text);
      EXPECT_EQ(wide ? ZnString::ToInt(text.c_str(), i) : ZnString::ToInt(row.text, i), row.intOk);
      EXPECT_EQ(wide ? ZnString::ToInt64(text.c_str(), big) : ZnString::ToInt64(row.text, big),
                row.int64Ok);
      EXPECT_EQ(i, row.intValue);
      EXPECT_EQ(big, row.int64Value);
    }
  }
}

TEST(ZnString, PrintsMissingTextForMinusNinetyNineOfEveryType) {
  const struct {
    CString text;
    const char* expected;
  } rows[] = {
      {ZnString::ToString(-99.0, NULL, "n/a"), "n/a"},
      {ZnString::ToString(-99, NULL, "n/a"), "n/a"},
      {ZnString::ToString(static_cast<__int64>(-99), "%I64d!", "n/a"), "n/a"},
      {ZnString::ToString(-99.0), ""},
      {ZnString::ToString(static_cast<unsigned int>(-99), NULL, "n/a"), "4294967197"},
      {ZnString::ToString(-99.5, NULL, "n/a"), "-99.5"},
      {ZnString::ToString(1e20), "1e+20"},
      {ZnString::ToString(static_cast<__int64>(-5000000000LL)), "-5000000000"},
      {ZnString::ToString(4294967295u), "4294967295"},
      {ZnString::ToStringA(255, "%04X"), "00FF"},
  };
  for (const auto& row : rows) EXPECT_STREQ(row.text, row.expected);
  EXPECT_STREQ(ZnString::ToStringW(-99, L"%d", L"missing"), L"missing");
  EXPECT_STREQ(ZnString::ToStringW(-99.0), L"");
  EXPECT_STREQ(ZnString::ToStringW(static_cast<__int64>(1LL << 40)), L"1099511627776");
  EXPECT_STREQ(ZnString::ToStringW(7u, L"<%u>"), L"<7>");
  EXPECT_STREQ(ZnString::Format(L"%s-%d", L"w", 3), L"w-3");
}

// A catalogue text can only read what the caller passes: the arguments of the built-in English
// text of its number. Texts are kept per number for the whole process, so these numbers are
// fetched here and nowhere else in this program.
TEST(ZnString, TranslatedFormatReadsOnlyWhatTheCallPasses) {
  zenutl_test::TempDir dir;
  WriteWholeFile(dir.File("sv.txt"),
                 "zenutl-catalogue 1\n"
                 "string 17057 %s%n\n"
                 "string 17058 %s saknas\n"
                 "string 17063 '%s' %s %s\n"
                 "string 17064 %S\n"
                 "string 17065 %1$s kan inte vara l\xc3\xa4ngre \xc3\xa4n %2$u tecken.\n"
                 "string 17074 %4000s\n"
                 "string 17075 %s \xc3\xa4r skrivskyddad.\n"
                 "string 17076 %d\n"
                 "string 17077 %s%\n"
                 "string 919001 %n\n"
                 "string 919002 %s und %d\n");
  HINSTANCE module = ZnLoadResourceModule(dir.File("sv.txt").c_str());
  ASSERT_NE(module, nullptr);
  LanguageString::SetResourceInstance(module);
  const struct {
    CString text;
    const char* expected;
  } rows[] = {
      {ZnString::Format(17057ul, "N"), "N cannot be empty."},  // %n writes through a pointer
      {ZnString::Format(17058ul, "N", "SET"), "N saknas"},     // leaving one out is fine
      {ZnString::Format(17063ul, "x"), "'x' is not a valid number."},
      {ZnString::Format(17064ul, "N"), "N cannot consist of spaces only."},
      {ZnString::Format(17065ul, "N", 8u), "N cannot be longer than 8 characters."},
      {ZnString::Format(17074ul, "D:"), "D: is on a CD drive, which cannot be written to."},
      {ZnString::Format(17075ul, "D:"), "D: \xc3\xa4r skrivskyddad."},
      {ZnString::Format(17076ul, "D:"), "D: is not a folder in the file system."},
      {ZnString::Format(17077ul, "D:"), "The drive of D: is not ready."},
      // The application's own numbers: no English text to check against.
      {ZnString::Format(919001ul, "x"), "%n"},
      {ZnString::Format(919002ul, "x", 3), "x und 3"},
  };
  LanguageString::SetResourceInstance(nullptr);
  ZnFreeResourceModule(module);
  for (const auto& row : rows) EXPECT_STREQ(row.text, row.expected);
}

TEST(ZnString, FormatIndexAlwaysEndsInTh) {
  const struct {
    unsigned long n;
    const char* text;
  } rows[] = {{0, "0th"},     {1, "1th"},     {2, "2th"},
              {3, "3th"},     {12, "12th"},   {21, "21th"},
              {103, "103th"}, {111, "111th"}, {4294967295ul, "4294967295th"}};
  for (const auto& row : rows) EXPECT_STREQ(ZnString::FormatIndex(row.n), row.text);
}

TEST(ZnString, ItoaWritesCapitalDigitsInAnyRadix) {
  const std::string minInBinary = "-1" + std::string(31, '0');
  const struct {
    int value;
    int radix;
    const char* text;
  } rows[] = {{-255, 16, "-FF"},
              {255, 1, "255"},
              {255, 37, "255"},
              {-1, 2, "-1"},
              {35, 36, "Z"},
              {0, 10, "0"},
              {INT_MAX, 16, "7FFFFFFF"},
              {INT_MIN, 2, minInBinary.c_str()}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.value) + " in " + std::to_string(row.radix));
    char buffer[40];
    EXPECT_EQ(ZnString::znitoa(row.value, buffer, row.radix), buffer);
    EXPECT_STREQ(buffer, row.text);
  }
  // Against the C library over a spread of values, INT_MIN included.
  for (long long v = INT_MIN; v <= INT_MAX; v += 65537LL * 331) {
    char ours[40], theirs[40];
    ZnString::znitoa(static_cast<int>(v), ours, 10);
    std::snprintf(theirs, sizeof theirs, "%d", static_cast<int>(v));
    ASSERT_STREQ(ours, theirs);
  }
}

TEST(ZnString, SnprintfCutsTerminatesAndAnswersMinusOne) {
  const struct {
    unsigned int size;
    const char* text;
    int result;
  } rows[] = {{4, "abc", -1}, {6, "abcde", -1}, {7, "abcdef", 6}, {8, "abcdef", 6}, {1, "", -1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.size);
    char buffer[16];
    std::memset(buffer, 'Z', sizeof buffer);
    EXPECT_EQ(ZnString::znsnprintf(buffer, row.size, "%s", "abcdef"), row.result);
    EXPECT_STREQ(buffer, row.text);
    EXPECT_EQ(buffer[row.size], 'Z') << "wrote past the size";
  }
  char buffer[32] = "untouched";
  EXPECT_EQ(ZnString::znsnprintf(buffer, 0, "%s", "abc"), -1);
  EXPECT_STREQ(buffer, "untouched");
  EXPECT_EQ(ZnString::znsnprintf(buffer, sizeof buffer, "%I64d", -(1LL << 40)), 14);
  EXPECT_STREQ(buffer, "-1099511627776");
  EXPECT_EQ(ZnString::znsnprintf(buffer, sizeof buffer, "%S!", L"\u00e9"), 3);  // "C" locale
  EXPECT_STREQ(buffer, "\xC3\xA9!");
}

TEST(ZnString, StristrFindsTheFirstCaseInsensitiveMatch) {
  const char* hello = "Hello World";
  const struct {
    const char* text;
    const char* sought;
    const char* found;
  } rows[] = {{hello, "world", hello + 6}, {hello, "O", hello + 4},    {hello, "", hello},
              {hello, nullptr, hello},     {hello, "worlds", nullptr}, {"", "a", nullptr},
              {nullptr, "a", nullptr}};
  for (const auto& row : rows) EXPECT_EQ(ZnString::znstristr(row.text, row.sought), row.found);
  const char* overlap = "aaab";
  EXPECT_EQ(ZnString::znstristr(overlap, "AAB"), overlap + 1);
  const wchar_t* wide = L"xSA sa";
  EXPECT_EQ(ZnString::znstristr(wide, L"sa"), wide + 1);
  EXPECT_EQ(ZnString::znstristr(wide, L"q"), nullptr);
}

TEST(ZnString, HeapStringHelpersReplaceAndAppendSafely) {
  char* text = nullptr;
  EXPECT_EQ(ZnString::SetStr(text, nullptr), nullptr);
  ZnString::SetStr(text, "alpha");
  ZnString::SetStr(text, text);  // from itself
  EXPECT_STREQ(text, "alpha");
  char* before = text;
  EXPECT_EQ(ZnString::SetStr(text, nullptr), before);
  EXPECT_EQ(ZnString::ConcatStr(text, nullptr), before);
  ZnString::ConcatStr(text, "-beta");
  EXPECT_STREQ(text, "alpha-beta");
  delete[] text;

  wchar_t* wide = nullptr;
  ZnString::ConcatStr(wide, L"x");  // a null target starts empty
  ZnString::ConcatStr(wide, L"yz");
  EXPECT_STREQ(wide, L"xyz");
  delete[] wide;
  EXPECT_EQ(ZnString::znstrdup(static_cast<const char*>(nullptr)), nullptr);
}

TEST(ZnString, TrimWhiteSpaceTrimsInPlace) {
  const struct {
    const char* text;
    const char* trimmed;
  } rows[] = {{"  a b  ", "a b"}, {"\t\nx\r\n", "x"}, {"   ", ""}, {"", ""}, {"abc", "abc"}};
  for (const auto& row : rows) {
    char buffer[32];
    std::strcpy(buffer, row.text);
    EXPECT_EQ(ZnString::TrimWhiteSpace(buffer), buffer);
    EXPECT_STREQ(buffer, row.trimmed);
  }
  EXPECT_EQ(ZnString::TrimWhiteSpace(nullptr), nullptr);
}

}  // namespace
