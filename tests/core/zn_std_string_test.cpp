#include "zenutl/zn_std_string.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <vector>

namespace {

typedef std::vector<std::string> Pieces;

TEST(ZnStdString, SplitGivesAllPiecesAndJoinPutsThemBack) {
  struct Row {
    std::string text;
    std::string separator;
    Pieces pieces;
  } rows[] = {
      {"a--b", "--", {"a", "b"}},   {"a,,b", ",", {"a", "", "b"}}, {"", ",", {""}},
      {",", ",", {"", ""}},         {"abc", ",", {"abc"}},         {"a, b, ", ", ", {"a", "b", ""}},
      {"x---y", "--", {"x", "-y"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(ZnStdString::Split(row.text, row.separator), row.pieces);
    EXPECT_EQ(ZnStdString::Join(row.pieces, row.separator), row.text);
  }
  EXPECT_EQ(ZnStdString::Join({}, ","), "");
  EXPECT_EQ(ZnStdString::Split("a,b", ""), Pieces({"a,b"}));
}

TEST(ZnStdString, SplitStringCutsOffTheHead) {
  struct Row {
    std::string text;
    const char* separators;  // one character for the char form, a set otherwise
    std::string head;
    std::string rest;
  } rows[] = {
      {"a;b;c", ";", "a", "b;c"},  {"abc", ";", "abc", ""},  {";x", ";", "", "x"},
      {"x;", ";", "x", ""},        {"", ";", "", ""},        {"a b,c", " ,", "a", "b,c"},
      {"a,b c", " ,", "a", "b c"}, {"abc", " ,", "abc", ""}, {"a,b", "", "a,b", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text + " / " + row.separators);
    std::string text = row.text;
    if (std::string(row.separators).size() == 1) {
      EXPECT_EQ(ZnStdString::SplitString(text, row.separators[0]), row.head);
    } else {
      EXPECT_EQ(ZnStdString::SplitString(text, row.separators), row.head);
    }
    EXPECT_EQ(text, row.rest);
  }
  std::string text = "a b";
  EXPECT_EQ(ZnStdString::SplitString(text, static_cast<const char*>(nullptr)), "a b");
  EXPECT_EQ(text, "");
}

int Sign(int value) {
  return (value > 0) - (value < 0);
}

TEST(ZnStdString, CollatesByTheGivenLocale) {
  const std::string aUmlaut = "\xc3\xa4";  // a with diaeresis, in UTF-8
  struct Row {
    const char* locale;
    std::string a;
    std::string b;
    int collate;
    int icollate;
  } rows[] = {
      {"de_DE.UTF-8", aUmlaut, "b", -1, -1},  // German puts it beside "a"
      {"sv_SE.UTF-8", aUmlaut, "z", 1, 1},    // Swedish after "z"
      {"C", aUmlaut, "b", 1, 1},              // bytes: 0xC3 after "b"
      {"C", "abc", "ABD", 1, -1},
      {"C", "Hello", "hELLO", -1, 0},
      {"de_DE.UTF-8", "abc", "abc", 0, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.locale) + ": " + row.a + " vs " + row.b);
    const std::locale locale(row.locale);
    EXPECT_EQ(Sign(ZnStdString::zncollate(row.a, row.b, locale)), row.collate);
    EXPECT_EQ(Sign(ZnStdString::znicollate(row.a, row.b, locale)), row.icollate);
  }
}

TEST(ZnStdString, EmptyIsOneSharedEmptyString) {
  EXPECT_TRUE(ZnStdString::Empty().empty());
  EXPECT_EQ(&ZnStdString::Empty(), &ZnStdString::Empty());
}

}  // namespace
