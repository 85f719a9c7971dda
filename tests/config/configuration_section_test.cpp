#include "zenutl/configuration_section.h"

#include <gtest/gtest.h>

#include <climits>
#include <locale>
#include <memory>
#include <string>
#include <vector>

#include "support/temp_dir.h"
#include "zenutl/ini_file_section.h"
#include "zenutl/locales.h"

namespace {

// The base class's typed operations, exercised on a real store: an INI file in a temp folder.
class ConfigurationSectionTest : public zenutl_test::TempDirTest {
 protected:
  ConfigurationSectionTest() : section_(File("c.ini").c_str(), "s") {}
  void Put(const char* key, const char* text) { ASSERT_TRUE(section_.WriteKey(key, text)); }
  std::string Get(const char* key) const {
    CString text("<missing>");
    section_.ReadKey(key, text);
    return text.str();
  }
  IniFileSection section_;
};

// Both the C runtime's and the C++ global locale on a decimal comma for the scope.
class CommaLocale {
 public:
  CommaLocale() : previous_(std::locale::global(std::locale("de_DE.UTF-8"))) {}
  ~CommaLocale() { std::locale::global(previous_); }

 private:
  std::locale previous_;
  Locales::SetDecimalSeparatorClass runtime_{Locales::eDecimalComma};
};

TEST_F(ConfigurationSectionTest, ReadsScalarsFromTheirText) {
  const int kUntouched = 555;
  const struct {
    const char* text;
    bool boolean;  // only "0" is false
    bool intOk;
    int intValue;
    bool realOk;  // the converted prefix is stored either way
    double real;
  } rows[] = {{"0", false, true, 0, true, 0},
              {"1", true, true, 1, true, 1},
              {"", true, true, 0, true, 0},
              {"0.0", true, false, kUntouched, true, 0},
              {"false", true, false, kUntouched, false, 0},
              {"-7", true, true, -7, true, -7},
              {"2,5", true, false, kUntouched, true, 2.5},
              {"2.5x", true, false, kUntouched, false, 2.5},
              {"1D5", true, false, kUntouched, false, 1},
              {"1e5", true, false, kUntouched, true, 1e5},
              {"abc", true, false, kUntouched, false, 0},
              {"99999999999", true, true, INT_MAX, true, 99999999999.0},
              {"-99999999999", true, true, INT_MIN, true, -99999999999.0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Put("k", row.text);
    bool b = !row.boolean;
    int i = kUntouched;
    double d = kUntouched;
    float f = kUntouched;
    EXPECT_TRUE(section_.ReadBool("k", b));
    EXPECT_EQ(b, row.boolean);
    EXPECT_EQ(section_.ReadInt("k", i), row.intOk);
    EXPECT_EQ(i, row.intValue);
    EXPECT_EQ(section_.ReadDouble("k", d), row.realOk);
    EXPECT_EQ(section_.ReadFloat("k", f), row.realOk);
    EXPECT_DOUBLE_EQ(d, row.real);
    EXPECT_FLOAT_EQ(f, static_cast<float>(row.real));
  }
  bool b = true;
  int i = 3;
  EXPECT_FALSE(section_.ReadBool("absent", b) || section_.ReadInt("absent", i));
  EXPECT_TRUE(b);
  EXPECT_EQ(i, 3);
}

TEST_F(ConfigurationSectionTest, WritesNumbersInTheirFixedTextForms) {
  const double doubles[] = {99, 1.5, 2, -0.25};  // [0] is never written
  const float floats[] = {99, 1.5f, 2, -0.25f};
  for (bool comma : {false, true}) {
    SCOPED_TRACE(comma ? "comma locale" : "point locale");
    std::unique_ptr<CommaLocale> scope(comma ? new CommaLocale : nullptr);
    // Scalars: six significant digits with a point, whatever the locale.
    const struct {
      double value;
      const char* text;
    } scalars[] = {
        {0.5, "0.5"}, {1234567.0, "1.23457e+06"}, {1e-7, "1e-07"}, {1.0 / 3, "0.333333"}};
    for (const auto& row : scalars) {
      ASSERT_TRUE(section_.WriteFloat("k", row.value));
      EXPECT_EQ(Get("k"), row.text);
    }
    // The std::vector<float> form follows the C runtime; the 1-based arrays keep the point.
    section_.WriteFloatVector("vector", std::vector<float>{1.5f, 2, -0.25f});
    section_.WriteDoubleVector("doubles", doubles, 3);
    section_.WriteFloatVector("floats", floats, 2);
    section_.WriteDoubleVector("zero", doubles, 0);
    EXPECT_EQ(Get("vector"), comma ? "1,5;2;-0,25" : "1.5;2;-0.25");
    EXPECT_EQ(Get("doubles"), "1.5;2;-0.25");
    EXPECT_EQ(Get("floats"), "1.5;2");
    EXPECT_EQ(Get("zero"), "1.5");
    std::vector<float> back;
    EXPECT_TRUE(section_.ReadFloatVector("vector", back));
    EXPECT_EQ(back, (std::vector<float>{1.5f, 2, -0.25f}));
  }
  section_.WriteIntVector("ints", {3, -1, 0});
  section_.WriteBoolVector("bools", {true, false});
  section_.WriteIntVector("none", {});
  ASSERT_TRUE(section_.WriteBool("t", true) && section_.WriteInt("i", -12));
  EXPECT_EQ(Get("ints") + "|" + Get("bools") + "|" + Get("none") + "|" + Get("t") + Get("i"),
            "3;-1;0|1;0||1-12");
}

TEST_F(ConfigurationSectionTest, ArrayReadsFillFromIndexOneUpToNPlusOneValues) {
  const struct {
    const char* text;
    int n;
    std::vector<double> stored;  // out[1]... ; the count is its size
  } rows[] = {{"1;2;3;4", 2, {1, 2, 3}},
              {"1;2;3;4", 9, {1, 2, 3, 4}},
              {"1;2", 0, {1}},
              {"1;x;3", 5, {1}},
              {"x", 5, {}},
              {"", 5, {0}},
              {"1,5;2.5", 5, {1.5, 2.5}},
              {"1;;3", 5, {1, 0, 3}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " n=" + std::to_string(row.n));
    Put("k", row.text);
    std::vector<double> doubles(12, -1);
    std::vector<float> floats(12, -1);
    const int count = static_cast<int>(row.stored.size());
    EXPECT_EQ(section_.ReadDoubleVector("k", doubles.data(), row.n), count);
    EXPECT_EQ(section_.ReadFloatVector("k", floats.data(), row.n), count);
    std::vector<double> expected(12, -1);
    std::copy(row.stored.begin(), row.stored.end(), expected.begin() + 1);
    EXPECT_EQ(doubles, expected);
    EXPECT_EQ(std::vector<double>(floats.begin(), floats.end()), expected);
  }
  double out[2] = {-1, -1};
  EXPECT_EQ(section_.ReadDoubleVector("absent", out, 1), 0);
  EXPECT_EQ(out[1], -1);
}

TEST_F(ConfigurationSectionTest, VectorReadsStopAtABadTokenAndKeepOldContentsForEmptyText) {
  const struct {
    const char* text;
    std::vector<int> ints;
    std::vector<bool> bools;
    std::vector<float> floats;
  } rows[] = {{"1;2;x;4", {1, 2}, {true, true, true, true}, {1, 2}},
              {"7", {7}, {true}, {7}},
              {"1;;0", {1, 0, 0}, {true, true, false}, {1}},
              {"x;1", {}, {true, true}, {}},
              {"1,5;0", {}, {true, false}, {1.5f, 0}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Put("k", row.text);
    std::vector<int> ints{9};
    std::vector<bool> bools{false};
    std::vector<float> floats{9};
    EXPECT_TRUE(section_.ReadIntVector("k", ints) && section_.ReadBoolVector("k", bools) &&
                section_.ReadFloatVector("k", floats));
    EXPECT_EQ(ints, row.ints);
    EXPECT_EQ(bools, row.bools);
    EXPECT_EQ(floats, row.floats);
  }
  Put("empty", "");
  std::vector<int> ints{9, 9};
  EXPECT_TRUE(section_.ReadIntVector("empty", ints));
  EXPECT_FALSE(section_.ReadIntVector("absent", ints));
  EXPECT_EQ(ints, (std::vector<int>{9, 9}));
}

TEST_F(ConfigurationSectionTest, StringListsSplitOnEverySeparatorWithoutEscaping) {
  const struct {
    const char* text;
    char separator;
    std::vector<std::string> items;
  } rows[] = {{"a;;", ';', {"a", "", ""}}, {"a|b;c", '|', {"a", "b;c"}}, {"", ';', {}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Put("k", row.text);
    std::vector<CString> list{"stale"};
    std::vector<std::string> stdList{"stale"};
    const int count = static_cast<int>(row.items.size());
    EXPECT_EQ(section_.ReadStringVector("k", list, row.separator), count);
    EXPECT_EQ(
        ConfigurationSectionUtilities::ReadStringVector(&section_, "k", stdList, row.separator),
        count);
    EXPECT_EQ(stdList, row.items);
    ASSERT_EQ(list.size(), row.items.size());
    EXPECT_TRUE(section_.WriteStringVector("a", list, row.separator));
    EXPECT_TRUE(
        ConfigurationSectionUtilities::WriteStringVector(&section_, "b", stdList, row.separator));
    EXPECT_EQ(Get("a") + "|" + Get("b"), std::string(row.text) + "|" + row.text);
  }
  std::vector<CString> untouched{"x"};
  EXPECT_EQ(section_.ReadStringVector("absent", untouched, ';'), 0);
  EXPECT_EQ(untouched.size(), 1u);
}

TEST_F(ConfigurationSectionTest, ReadsIntoACharBufferWithTheTerminatorAfterSizeCharacters) {
  Put("k", "hello");
  for (unsigned int size : {0u, 3u, 5u, 9u}) {
    char buffer[12] = "zzzzzzzzzzz";
    EXPECT_TRUE(section_.ReadKey("k", buffer, size));
    EXPECT_EQ(std::string(buffer), std::string("hello").substr(0, size));
  }
  char buffer[4] = "abc";
  std::string text = "kept";
  EXPECT_FALSE(section_.ReadKey("absent", buffer, 3) || section_.ReadKey("absent", text));
  EXPECT_EQ(std::string(buffer) + text, "abckept");
}

// A store with sub-sections on top of the INI store: "a/b" is the section named so.
class PathSection : public IniFileSection {
 public:
  using IniFileSection::IniFileSection;
  ConfigurationSection* Copy() const override { return new PathSection(*this); }
  bool ChangeSubSection(const char* name, int index) override {
    if (!HasSection(Child(name, index).c_str(), 0)) return false;
    ChangeSection(Child(name, index).c_str());
    return true;
  }
  bool ChangeSubSection(const char* name) override { return ChangeSubSection(name, 0); }
  ConfigurationSection* CreateSubSection(const char* name, int index) const override {
    std::unique_ptr<PathSection> child(new PathSection(*this));
    child->ChangeSection(Child(name, index).c_str());
    return child->WriteKey("created", "1") ? child.release() : nullptr;
  }
  ConfigurationSection* CreateSubSection(const char* name) const override {
    return CreateSubSection(name, 0);
  }
  bool SupportsSubSections() const override { return true; }

 private:
  std::string Child(const char* name, int index) const {
    return std::string(CurrentSection()) + "/" + name + (index ? "#" + std::to_string(index) : "");
  }
};

TEST_F(ConfigurationSectionTest, PathHelpersAndCopiesLeaveTheOriginalCursorAlone) {
  PathSection root(File("tree.ini").c_str(), "root");
  std::unique_ptr<ConfigurationSection> leaf(
      ConfigurationSectionUtilities::CreateSubSection(&root, "a/b/c"));
  ASSERT_TRUE(leaf);
  EXPECT_STREQ(static_cast<PathSection*>(leaf.get())->CurrentSection(), "root/a/b/c");
  std::unique_ptr<ConfigurationSection> unnamed(
      ConfigurationSectionUtilities::CreateSubSection(&root, ""));
  EXPECT_STREQ(static_cast<PathSection*>(unnamed.get())->CurrentSection(), "root/");
  delete root.CreateSubSection("x", 1);
  const struct {
    const char* path;
    int index;
    bool expected;
  } rows[] = {{"a/b", 0, true}, {"a/b/c/d", 0, false}, {"b", 0, false},
              {"", 0, true},    {"x", 1, true},        {"a", 1, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(ConfigurationSectionUtilities::HasSubSection(&root, row.path, row.index),
              row.expected);
  }
  EXPECT_EQ(root.CopyAndChangeSubSection("missing"), nullptr);
  std::unique_ptr<ConfigurationSection> found(root.CopyAndChangeSubSection("x", 1));
  std::unique_ptr<ConfigurationSection> other(root.CopyAndChangeSection("elsewhere"));
  ASSERT_TRUE(found && other);
  EXPECT_STREQ(static_cast<PathSection*>(found.get())->CurrentSection(), "root/x#1");
  EXPECT_STREQ(static_cast<PathSection*>(other.get())->CurrentSection(), "elsewhere");
  EXPECT_STREQ(root.CurrentSection(), "root");
  EXPECT_EQ(root.NumSubSections("a"), -1);
  EXPECT_EQ(root.GetAllSubSections("a"), nullptr);
}

}  // namespace
