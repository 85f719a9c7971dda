#include "zenutl/locales.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
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

// Puts back everything a locale test may change: the runtime's locale, the global C++ locale
// and the locale variables of the environment.
class ProcessLocaleGuard {
 public:
  ProcessLocaleGuard() : mRuntime(std::setlocale(LC_ALL, nullptr)) {
    for (const char* name : {"LC_ALL", "LANG", "LC_NUMERIC"}) {
      const char* value = std::getenv(name);
      mEnvironment[name] =
          value ? std::make_pair(true, std::string(value)) : std::make_pair(false, std::string());
    }
  }
  ~ProcessLocaleGuard() {
    for (const auto& entry : mEnvironment) {
      if (entry.second.first) {
        setenv(entry.first.c_str(), entry.second.second.c_str(), 1);
      } else {
        unsetenv(entry.first.c_str());
      }
    }
    std::locale::global(mGlobal);
    std::setlocale(LC_ALL, mRuntime.c_str());
  }

 private:
  std::string mRuntime;
  std::locale mGlobal;
  std::map<std::string, std::pair<bool, std::string>> mEnvironment;
};

struct SetLocaleCall {
  int category;
  std::string name;
  bool accepted;
};

std::vector<SetLocaleCall> gCalls;
bool gRefuseCommaLocales = false;

char* RecordingSetLocale(int category, const char* name) {
  const bool refused = gRefuseCommaLocales && category == LC_NUMERIC && name != nullptr &&
                       std::strcmp(name, "C") != 0;
  char* result = refused ? nullptr : std::setlocale(category, name);
  gCalls.push_back({category, name ? name : "<query>", result != nullptr});
  return result;
}

// Watches every call the library makes to the runtime's setlocale while it lives.
class SetLocaleRecorder {
 public:
  explicit SetLocaleRecorder(bool refuseCommaLocales = false) {
    gCalls.clear();
    gRefuseCommaLocales = refuseCommaLocales;
    mPrevious = zenutl::platform::ReplaceSetLocale(&RecordingSetLocale);
  }
  ~SetLocaleRecorder() {
    zenutl::platform::ReplaceSetLocale(mPrevious);
    gRefuseCommaLocales = false;
  }
  const std::vector<SetLocaleCall>& Calls() const { return gCalls; }

 private:
  zenutl::platform::SetLocaleFunction mPrevious;
};

std::string RuntimePrinted(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

std::string StreamPrinted(const std::locale& locale, double value) {
  std::ostringstream stream;
  stream.imbue(locale);
  stream << value;
  return stream.str();
}

// Runs the probe program with `environment` prepended to its command line and returns its
// "key=value" report.
std::map<std::string, std::string> RunProbe(const std::string& environment,
                                            const std::string& mode) {
  const std::string command = environment + " " + ZENUTL_LOCALE_PROBE + " " + mode;
  std::map<std::string, std::string> report;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return report;
  char line[256];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    std::string text(line);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    const std::size_t equals = text.find('=');
    if (equals != std::string::npos) report[text.substr(0, equals)] = text.substr(equals + 1);
  }
  EXPECT_EQ(pclose(pipe), 0) << command;
  return report;
}

TEST(CustomDecSep, OverridesOnlyTheDecimalPointOfTheCLocale) {
  for (char separator : {',', '.', ';'}) {
    SCOPED_TRACE(separator);
    const Locales::Detail::CustomDecSep facet(separator, 1);
    EXPECT_EQ(facet.decimal_point(), separator);
    EXPECT_EQ(facet.thousands_sep(), ',');
    EXPECT_EQ(facet.grouping(), "");
    EXPECT_EQ(facet.truename(), "true");
    EXPECT_EQ(facet.falsename(), "false");
  }
}

TEST(CustomDecSep, RemovesTheGroupingOfAGermanLocale) {
  const std::locale german("de_DE.UTF-8");
  ASSERT_EQ(StreamPrinted(german, 12345.5), "12.345,5");
  const std::locale withFacet(german, new Locales::Detail::CustomDecSep(','));
  EXPECT_EQ(StreamPrinted(withFacet, 12345.5), "12345,5");
}

TEST(Locales, ReplaceDecimalSeparatorInFormulaLeavesBracketedTextAlone) {
  struct Row {
    const char* formula;
    DecSeparator target;
    const char* expected;
  } rows[] = {
      {"a.b[c.d].e", eDecimalComma, "a,b[c.d],e"},
      {"1,5[x,y]", eDecimalPoint, "1.5[x,y]"},
      {"[[a.b]c.d]", eDecimalComma, "[[a.b]c,d]"},
      {"max(1,5;2,5)", eDecimalPoint, "max(1.5;2.5)"},
      {"f(1.5, 2.5)", eDecimalComma, "f(1,5, 2,5)"},
      {"a.b]c.d", eDecimalComma, "a,b]c,d"},
      {"[unclosed.name", eDecimalComma, "[unclosed.name"},
      {"1.5,2", DecSeparator(7), "1.5.2"},
      {"x + y", eDecimalComma, "x + y"},
      {"", eDecimalComma, ""},
      {"", eDecimalPoint, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.formula);
    CString formula(row.formula);
    Locales::ReplaceDecimalSeparatorInFormula(formula, row.target);
    EXPECT_STREQ(formula, row.expected);
  }
}

TEST(Locales, GetLocaleGivesFixedPointAndCommaLocalesWithoutGrouping) {
  EXPECT_EQ(StreamPrinted(Locales::GetLocale(eDecimalPoint), 1234.5), "1234.5");
  EXPECT_EQ(StreamPrinted(Locales::GetLocale(eDecimalComma), 1234.5), "1234,5");
  EXPECT_TRUE(Locales::GetLocale(DecSeparator(7)) == Locales::GetLocale(eDecimalPoint));
  EXPECT_TRUE(Locales::GetLocale(DecSeparator(-1)) == Locales::GetLocale(eDecimalPoint));
  EXPECT_FALSE(Locales::GetLocale(eDecimalComma) == Locales::GetLocale(eDecimalPoint));

  std::istringstream input("2,75");
  input.imbue(Locales::GetLocale(eDecimalComma));
  double read = 0;
  input >> read;
  EXPECT_EQ(read, 2.75);
}

TEST(Locales, GetLocaleIsNotRebuiltWhenTheGlobalLocaleChanges) {
  ProcessLocaleGuard guard;
  const std::locale before = Locales::GetLocale(eDecimalComma);
  std::locale::global(std::locale("de_DE.UTF-8"));
  EXPECT_TRUE(Locales::GetLocale(eDecimalComma) == before);
  EXPECT_EQ(StreamPrinted(Locales::GetLocale(eDecimalComma), 12345.5), "12345,5");
}

TEST(Locales, GetDecimalSeparatorAsksTheRuntime) {
  ProcessLocaleGuard guard;
  for (const char* name : {"de_DE.UTF-8", "C", "fr_FR.UTF-8", "en_US.UTF-8", "sv_SE.UTF-8"}) {
    SCOPED_TRACE(name);
    ASSERT_NE(std::setlocale(LC_NUMERIC, name), nullptr) << "run scripts/setup.sh";
    const DecSeparator expected =
        *std::localeconv()->decimal_point == ',' ? eDecimalComma : eDecimalPoint;
    EXPECT_EQ(Locales::GetDecimalSeparator(), expected);
  }
  std::setlocale(LC_NUMERIC, "fr_FR.UTF-8");
  EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalComma);
}

TEST(SetDecimalSeparatorClass, SwitchesOnlyTheNumericLocaleToACommaAndBack) {
  ProcessLocaleGuard guard;
  SetDecimalSeparatorClass point(eDecimalPoint);
  const std::string collate = std::setlocale(LC_COLLATE, nullptr);
  const std::string ctype = std::setlocale(LC_CTYPE, nullptr);
  const std::string time = std::setlocale(LC_TIME, nullptr);
  ASSERT_EQ(RuntimePrinted(1.5), "1.5");
  {
    SetDecimalSeparatorClass comma(eDecimalComma);
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalComma);
    EXPECT_EQ(RuntimePrinted(1.5), "1,5");
    EXPECT_EQ(std::strtod("2,25", nullptr), 2.25);
    EXPECT_EQ(std::setlocale(LC_COLLATE, nullptr), collate);
    EXPECT_EQ(std::setlocale(LC_CTYPE, nullptr), ctype);
    EXPECT_EQ(std::setlocale(LC_TIME, nullptr), time);
  }
  EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalPoint);
  EXPECT_EQ(RuntimePrinted(1.5), "1.5");
}

TEST(SetDecimalSeparatorClass, AsksForTheTraditionalCommaNamesFirst) {
  ProcessLocaleGuard guard;
  SetDecimalSeparatorClass point(eDecimalPoint);
  SetLocaleRecorder recorder;
  {
    SetDecimalSeparatorClass comma(eDecimalComma);
    const std::vector<SetLocaleCall>& calls = recorder.Calls();
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[0].name, "fra");
    EXPECT_EQ(calls[1].name, "sv_SE");
    // Linux knows neither short name; the first installed comma locale ends the search.
    EXPECT_TRUE(calls.back().accepted);
    for (std::size_t i = 0; i + 1 < calls.size(); ++i) {
      EXPECT_EQ(calls[i].category, LC_NUMERIC);
      EXPECT_FALSE(calls[i].accepted) << calls[i].name;
    }
    EXPECT_EQ(calls.back().category, LC_NUMERIC);
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalComma);
  }
  ASSERT_FALSE(recorder.Calls().empty());
  EXPECT_EQ(recorder.Calls().back().category, LC_NUMERIC);
  EXPECT_EQ(recorder.Calls().back().name, "C");
}

TEST(SetDecimalSeparatorClass, MakesNoRuntimeCallForTheSeparatorAlreadyCurrent) {
  ProcessLocaleGuard guard;
  for (DecSeparator separator : {eDecimalPoint, eDecimalComma}) {
    SCOPED_TRACE(separator);
    SetDecimalSeparatorClass outer(separator);
    const std::string printed = RuntimePrinted(1.5);
    {
      SetLocaleRecorder recorder;
      {
        SetDecimalSeparatorClass same(separator);
        EXPECT_TRUE(recorder.Calls().empty());
        EXPECT_EQ(RuntimePrinted(1.5), printed);
      }
      EXPECT_TRUE(recorder.Calls().empty());
    }
    EXPECT_EQ(RuntimePrinted(1.5), printed);
  }
}

TEST(SetDecimalSeparatorClass, NestedScopesRestoreInStackOrder) {
  ProcessLocaleGuard guard;
  { SetDecimalSeparatorClass settle(eDecimalPoint); }  // the first switch reads the environment
  const DecSeparator before = Locales::GetDecimalSeparator();
  {
    SetDecimalSeparatorClass point(eDecimalPoint);
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalPoint);
    {
      SetDecimalSeparatorClass comma(eDecimalComma);
      EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalComma);
      {
        SetDecimalSeparatorClass innerPoint(eDecimalPoint);
        EXPECT_EQ(RuntimePrinted(0.5), "0.5");
      }
      EXPECT_EQ(RuntimePrinted(0.5), "0,5");
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
    EXPECT_EQ(recorder.Calls().size(), 5u);  // every comma name was asked for, in vain
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalPoint);
    EXPECT_EQ(RuntimePrinted(1.5), "1.5");
    // The library believes in the comma, so a second comma scope asks nothing.
    gCalls.clear();
    { SetDecimalSeparatorClass again(eDecimalComma); }
    EXPECT_TRUE(recorder.Calls().empty());
  }
  ASSERT_EQ(recorder.Calls().size(), 1u);
  EXPECT_EQ(recorder.Calls()[0].name, "C");
}

TEST(SetDecimalSeparatorClass, AssignmentCopiesTheSeparatorToRestore) {
  ProcessLocaleGuard guard;
  SetDecimalSeparatorClass point(eDecimalPoint);
  {
    SetDecimalSeparatorClass comma(eDecimalComma);
    {
      SetDecimalSeparatorClass assigned(eDecimalComma);  // would restore the comma
      assigned = comma;                                  // now restores the point
    }
    EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalPoint);
  }
  EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalPoint);
}

TEST(SetDecimalSeparatorClass, FirstSwitchTakesTheUsersCommaFromTheEnvironment) {
  // A German user: the first switch resets the runtime to de_DE, which already has the comma.
  std::map<std::string, std::string> comma = RunProbe("LC_ALL=de_DE.UTF-8", "comma-scope");
  EXPECT_EQ(comma["before"], "0");  // a process starts in the "C" locale
  EXPECT_EQ(comma["inside"], "1,5");
  EXPECT_EQ(comma["inside_calls"], "0");
  EXPECT_EQ(comma["after"], "1,5");
  EXPECT_EQ(comma["total_calls"], "0");

  std::map<std::string, std::string> point = RunProbe("LC_ALL=de_DE.UTF-8", "point-scope");
  EXPECT_EQ(point["inside"], "1.5");
  EXPECT_EQ(point["inside_calls"], "1");
  EXPECT_EQ(point["after"], "1,5");  // switched back to a comma locale

  std::map<std::string, std::string> english = RunProbe("LC_ALL=en_US.UTF-8", "point-scope");
  EXPECT_EQ(english["inside"], "1.5");
  EXPECT_EQ(english["total_calls"], "0");
}

TEST(Locales, InitLibrariesKeepsTheUsersCommaButDropsDigitGrouping) {
  ProcessLocaleGuard guard;
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  Locales::InitLibraries();
  std::ostringstream stream;
  stream << 1234.5 << ' ' << 1234567 << ' ' << std::boolalpha << true << ' ' << false;
  EXPECT_EQ(stream.str(), "1234,5 1234567 true false");
  // The runtime keeps the user's locale whole.
  EXPECT_EQ(RuntimePrinted(1234.5), "1234,5");
  EXPECT_EQ(Locales::GetDecimalSeparator(), eDecimalComma);
  EXPECT_STREQ(std::setlocale(LC_COLLATE, nullptr), "de_DE.UTF-8");
  // Everything but the numbers follows the user's locale: German collation puts "\u00e4"
  // before "b", where the bytes of the "C" locale put it after "z".
  const std::string aUmlaut = "\xc3\xa4", b = "b";
  EXPECT_LT(
      std::use_facet<std::collate<char>>(std::locale())
          .compare(aUmlaut.data(), aUmlaut.data() + aUmlaut.size(), b.data(), b.data() + b.size()),
      0);
}

TEST(Locales, InitLibrariesInAFreshProcess) {
  const struct {
    const char* environment;
    const char* stream;
    const char* printf;
    const char* separator;
  } rows[] = {
      {"LC_ALL=de_DE.UTF-8", "1234,5 true", "1234,5", "1"},
      {"LC_ALL=sv_SE.UTF-8", "1234,5 true", "1234,5", "1"},
      {"LC_ALL=en_US.UTF-8", "1234.5 true", "1234.5", "0"},
      {"LC_ALL=C", "1234.5 true", "1234.5", "0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.environment);
    std::map<std::string, std::string> report = RunProbe(row.environment, "init");
    EXPECT_EQ(report["stream"], row.stream);
    EXPECT_EQ(report["printf"], row.printf);
    EXPECT_EQ(report["separator"], row.separator);
  }
}

TEST(Locales, InitLibrariesRefusesAnUnknownLocaleName) {
  ProcessLocaleGuard guard;
  setenv("LC_ALL", "xx_NOWHERE.UTF-8", 1);
  try {
    Locales::InitLibraries();
    ADD_FAILURE() << "expected std::runtime_error";
  } catch (const std::runtime_error& e) {
    EXPECT_STREQ(e.what(), "bad locale name");
  }
}

}  // namespace
