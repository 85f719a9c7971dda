#include "zenutl/locales.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/runtime_locale.h"

namespace {

using Locales::DecSeparator;
using Locales::eDecimalComma;
using Locales::eDecimalPoint;
using Locales::SetDecimalSeparatorClass;

// Puts back what a locale test may change: the runtime's locale, the global C++ locale, LC_ALL.
struct ProcessLocaleGuard {
  ~ProcessLocaleGuard() {
    lcAll ? setenv("LC_ALL", savedLcAll.c_str(), 1) : unsetenv("LC_ALL");
    std::locale::global(global);
    std::setlocale(LC_ALL, runtime.c_str());
  }
  const std::string runtime = std::setlocale(LC_ALL, nullptr);
  const std::locale global;
  const char* const lcAll = std::getenv("LC_ALL");
  const std::string savedLcAll = lcAll ? lcAll : "";
};

// Records the LC_NUMERIC names the library asks the runtime for, and whether they were granted;
// optionally refuses every comma locale.
std::vector<std::pair<std::string, bool>> gNumericCalls;
bool gRefuseCommaLocales = false;

char* RecordingSetLocale(int category, const char* name) {
  if (category != LC_NUMERIC) return std::setlocale(category, name);
  const bool refused = gRefuseCommaLocales && std::strcmp(name, "C") != 0;
  char* result = refused ? nullptr : std::setlocale(category, name);
  gNumericCalls.emplace_back(name, result != nullptr);
  return result;
}

struct SetLocaleRecorder {
  explicit SetLocaleRecorder(bool refuseCommaLocales = false) {
    gNumericCalls.clear();
    gRefuseCommaLocales = refuseCommaLocales;
  }
  ~SetLocaleRecorder() { zenutl::platform::ReplaceSetLocale(previous); }
  const zenutl::platform::SetLocaleFunction previous =
      zenutl::platform::ReplaceSetLocale(&RecordingSetLocale);
};

std::string RuntimePrinted(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

std::string StreamPrinted(const std::locale& locale, double value) {
  std::ostringstream stream;
  stream.imbue(locale);
  stream << value << ' ' << std::boolalpha << true;
  return stream.str();
}

TEST(CustomDecSep, OverridesOnlyTheDecimalPointOfTheCLocale) {
  const std::locale german("de_DE.UTF-8");
  ASSERT_EQ(StreamPrinted(german, 12345.5), "12.345,5 true");
  const std::locale withFacet(german, new Locales::Detail::CustomDecSep(';'));
  EXPECT_EQ(StreamPrinted(withFacet, 12345.5), "12345;5 true");
  EXPECT_EQ(std::use_facet<std::numpunct<char>>(withFacet).thousands_sep(), ',');
}

TEST(Locales, ReplaceDecimalSeparatorInFormulaLeavesBracketedTextAlone) {
  struct Row {
    const char* formula;
    DecSeparator target;
    const char* expected;
  } rows[] = {
      {"a.b[c.d].e", eDecimalComma, "a,b[c.d],e"}, {"1,5[x,y]", eDecimalPoint, "1.5[x,y]"},
      {"[[a.b]c.d]", eDecimalComma, "[[a.b]c,d]"}, {"f(1.5, 2)", eDecimalComma, "f(1,5, 2)"},
      {"a.b]c.d", eDecimalComma, "a,b]c,d"},       {"1.5,2", DecSeparator(7), "1.5.2"},
      {"x + y", eDecimalComma, "x + y"},           {"", eDecimalComma, ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.formula);
    CString formula(row.formula);
    Locales::ReplaceDecimalSeparatorInFormula(formula, row.target);
    EXPECT_STREQ(formula, row.expected);
  }
}

TEST(Locales, GetLocaleGivesTwoFixedLocalesBuiltOnce) {
  ProcessLocaleGuard guard;
  const std::locale comma = Locales::GetLocale(eDecimalComma);
  EXPECT_EQ(StreamPrinted(Locales::GetLocale(eDecimalPoint), 1234.5), "1234.5 true");
  EXPECT_EQ(StreamPrinted(comma, 1234.5), "1234,5 true");
  EXPECT_TRUE(Locales::GetLocale(DecSeparator(7)) == Locales::GetLocale(eDecimalPoint));
  std::locale::global(std::locale("de_DE.UTF-8"));
  EXPECT_TRUE(Locales::GetLocale(eDecimalComma) == comma);
}

TEST(SetDecimalSeparatorClass, SwitchesOnlyTheNumericLocaleToACommaAndBack) {
  ProcessLocaleGuard guard;
  SetDecimalSeparatorClass point(eDecimalPoint);
  const std::string collate = std::setlocale(LC_COLLATE, nullptr);
  SetLocaleRecorder recorder;
  {
    SetDecimalSeparatorClass comma(eDecimalComma);
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalComma);
    EXPECT_EQ(RuntimePrinted(1.5), "1,5");
    EXPECT_EQ(std::strtod("2,25", nullptr), 2.25);
    EXPECT_EQ(std::setlocale(LC_COLLATE, nullptr), collate);
    // The traditional names first; Linux knows neither, so an installed comma locale serves.
    ASSERT_GE(gNumericCalls.size(), 3u);
    EXPECT_EQ(gNumericCalls[0].first, "fra");
    EXPECT_EQ(gNumericCalls[1].first, "sv_SE");
    EXPECT_TRUE(gNumericCalls.back().second);
  }
  EXPECT_EQ(RuntimePrinted(1.5), "1.5");
  EXPECT_EQ(gNumericCalls.back().first, "C");
}

TEST(SetDecimalSeparatorClass, MakesNoRuntimeCallForTheSeparatorAlreadyCurrent) {
  ProcessLocaleGuard guard;
  for (DecSeparator separator : {eDecimalPoint, eDecimalComma}) {
    SCOPED_TRACE(separator);
    SetDecimalSeparatorClass outer(separator);
    const std::string printed = RuntimePrinted(1.5);
    SetLocaleRecorder recorder;
    { SetDecimalSeparatorClass same(separator); }
    EXPECT_TRUE(gNumericCalls.empty());
    EXPECT_EQ(RuntimePrinted(1.5), printed);
  }
}

TEST(SetDecimalSeparatorClass, NestedScopesRestoreInStackOrder) {
  ProcessLocaleGuard guard;
  { SetDecimalSeparatorClass settle(eDecimalPoint); }  // the first switch reads the environment
  const DecSeparator before = Locales::GetDecimalSeparator();
  {
    SetDecimalSeparatorClass point(eDecimalPoint);
    {
      SetDecimalSeparatorClass comma(eDecimalComma);
      { SetDecimalSeparatorClass innerPoint(eDecimalPoint); }
      EXPECT_EQ(RuntimePrinted(0.5), "0,5");
      {
        SetDecimalSeparatorClass assigned(eDecimalComma);  // would restore the comma...
        assigned = point;                                  // ...now restores the point
      }
      EXPECT_EQ(RuntimePrinted(0.5), "0.5");
    }
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalPoint);
  }
  EXPECT_EQ(Locales::GetDecimalSeparator(), before);
}

TEST(SetDecimalSeparatorClass, RecordsTheCommaEvenWhenNoCommaLocaleExists) {
  ProcessLocaleGuard guard;
  SetDecimalSeparatorClass point(eDecimalPoint);
  SetLocaleRecorder recorder(/*refuseCommaLocales=*/true);
  {
    SetDecimalSeparatorClass comma(eDecimalComma);
    EXPECT_EQ(gNumericCalls.size(), 5u);  // every comma name was asked for, in vain
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalPoint);
    gNumericCalls.clear();
    { SetDecimalSeparatorClass again(eDecimalComma); }  // the library believes in the comma
    EXPECT_TRUE(gNumericCalls.empty());
  }
  ASSERT_EQ(gNumericCalls.size(), 1u);
  EXPECT_EQ(gNumericCalls[0].first, "C");
}

TEST(SetDecimalSeparatorClass, FirstSwitchOfAProcessTakesTheUsersLocale) {
  // Runs in a fresh process, so that this is the first switch.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        setenv("LC_ALL", "de_DE.UTF-8", 1);
        const std::string atStart = RuntimePrinted(1.5);
        SetLocaleRecorder recorder;
        SetDecimalSeparatorClass comma(eDecimalComma);  // de_DE has the comma already
        std::fprintf(stderr, "start=%s inside=%s calls=%zu\n", atStart.c_str(),
                     RuntimePrinted(1.5).c_str(), gNumericCalls.size());
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "start=1.5 inside=1,5 calls=0");
}

TEST(Locales, InitLibrariesKeepsTheUsersCommaButDropsDigitGrouping) {
  ProcessLocaleGuard guard;
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  Locales::InitLibraries();
  std::ostringstream stream;
  stream << 1234.5 << ' ' << 1234567 << ' ' << std::boolalpha << true;
  EXPECT_EQ(stream.str(), "1234,5 1234567 true");
  EXPECT_EQ(RuntimePrinted(1234.5), "1234,5");  // the runtime has the user's locale whole
  EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalComma);
  // Collation follows the user: German puts a-umlaut before "b", the "C" bytes after "z".
  const std::string aUmlaut = "\xc3\xa4", b = "b";
  EXPECT_LT(std::use_facet<std::collate<char>>(std::locale())
                .compare(aUmlaut.data(), aUmlaut.data() + 2, b.data(), b.data() + 1),
            0);
}

TEST(Locales, InitLibrariesRefusesAnUnknownLocaleName) {
  ProcessLocaleGuard guard;
  setenv("LC_ALL", "xx_NOWHERE.UTF-8", 1);
  try {
    Locales::InitLibraries();
    ADD_FAILURE() << "no exception";
  } catch (const std::runtime_error& e) {
    EXPECT_STREQ(e.what(), "bad locale name");
  }
}

}  // namespace
