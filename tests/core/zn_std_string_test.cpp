#include "zenutl/zn_std_string.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <vector>

namespace {

typedef std::vector<std::string> Pieces;

TEST(ZnStdString, SplitGivesAllPiecesAndJoinPutsThemBack) {
  struct Row {
    std::string text, separator;
    Pieces pieces;
  } rows[] = {{"a--b", "--", {"a", "b"}},
              {"a,,b", ",", {"a", "", "b"}},
              {"", ",", {""}},
              {",", ",", {"", ""}},
              {"x---y", "--", {"x", "-y"}}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(ZnStdString::Split(row.text, row.separator), row.pieces);
    EXPECT_EQ(ZnStdString::Join(row.pieces, row.separator), row.text);
  }
  EXPECT_EQ(ZnStdString::Split("a,b", ""), Pieces({"a,b"}));
  std::string text = "a b,c";
  EXPECT_EQ(ZnStdString::SplitString(text, " ,"), "a");
  EXPECT_EQ(ZnStdString::SplitString(text, ','), "b");
  EXPECT_EQ(text, "c");
  EXPECT_EQ(ZnStdString::SplitString(text, ';'), "c");
  EXPECT_EQ(text, "");
}

TEST(ZnStdString, CollatesByTheGivenLocale) {
  const std::string aUmlaut = "\xc3\xa4";  // a with diaeresis, in UTF-8
  struct Row {
    const char* locale;
    std::string a, b;
    int collate, icollate;
  } rows[] = {{"de_DE.UTF-8", aUmlaut, "b", -1, -1},  // German puts it beside "a"
              {"sv_SE.UTF-8", aUmlaut, "z", 1, 1},    // Swedish after "z"
              {"C", aUmlaut, "b", 1, 1},              // the bytes: 0xC3 after "b"
              {"C", "abc", "ABD", 1, -1},
              {"C", "Hello", "hELLO", -1, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.locale) + ": " + row.a + " vs " + row.b);
    const std::locale locale(row.locale);
    const int collate = ZnStdString::zncollate(row.a, row.b, locale);
    const int icollate = ZnStdString::znicollate(row.a, row.b, locale);
    EXPECT_EQ((collate > 0) - (collate < 0), row.collate);
    EXPECT_EQ((icollate > 0) - (icollate < 0), row.icollate);
  }
  EXPECT_TRUE(ZnStdString::Empty().empty());
  EXPECT_EQ(&ZnStdString::Empty(), &ZnStdString::Empty());
}

}  // namespace
