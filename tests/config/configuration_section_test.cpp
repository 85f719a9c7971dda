#include "zenutl/configuration_section.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <locale>
#include <memory>
#include <string>
#include <vector>

#include "config/memory_section.h"
#include "zenutl/locales.h"

namespace {

using zenutl_test::MemorySection;

// Switches both the C runtime's and the C++ global locale to a decimal-comma locale.
class CommaLocaleScope {
 public:
  CommaLocaleScope()
      : runtime_(Locales::eDecimalComma),
        previousGlobal_(std::locale::global(std::locale("de_DE.UTF-8"))) {}
  ~CommaLocaleScope() { std::locale::global(previousGlobal_); }

 private:
  Locales::SetDecimalSeparatorClass runtime_;
  std::locale previousGlobal_;
};

TEST(ConfigurationSection, ReadsOnlyExactlyZeroAsFalse) {
  const struct {
    const char* text;
    bool expected;
  } rows[] = {{"0", false},    {"1", true},  {"", true},   {"0.0", true},
              {"false", true}, {"00", true}, {" 0", true}, {"yes", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    MemorySection section;
    section.Put("k", row.text);
    bool value = !row.expected;
    EXPECT_TRUE(section.ReadBool("k", value));
    EXPECT_EQ(value, row.expected);
  }
  MemorySection section;
  bool untouched = true;
  EXPECT_FALSE(section.ReadBool("absent", untouched));
  EXPECT_TRUE(untouched);
}

TEST(ConfigurationSection, ReadsIntOnlyWhenTheWholeTextConverts) {
  const struct {
    const char* text;
    bool ok;
    int expected;  // the value after the read; 555 means untouched
  } rows[] = {{"42", true, 42},
              {"-7", true, -7},
              {" 5", true, 5},
              {"5 ", false, 555},
              {"12.5", false, 555},
              {"0x10", false, 555},
              {"abc", false, 555},
              {"", true, 0},
              {"2147483647", true, INT_MAX},
              {"99999999999", true, INT_MAX},
              {"-99999999999", true, INT_MIN}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    MemorySection section;
    section.Put("k", row.text);
    int value = 555;
    EXPECT_EQ(section.ReadInt("k", value), row.ok);
    EXPECT_EQ(value, row.expected);
  }
}

TEST(ConfigurationSection, ReadsFloatingPointWithEitherSeparatorKeepingThePrefix) {
  const struct {
    const char* text;
    bool ok;
    double expected;
  } rows[] = {{"2.5", true, 2.5},  {"2,5", true, 2.5},   {"-0.125", true, -0.125},
              {"1e5", true, 1e5},  {"2.5x", false, 2.5}, {"abc", false, 0.0},
              {"1D5", false, 1.0}, {"", true, 0.0},      {"1.23457e+06", true, 1234570.0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    MemorySection section;
    section.Put("k", row.text);
    double d = 555;
    float f = 555;
    EXPECT_EQ(section.ReadDouble("k", d), row.ok);
    EXPECT_EQ(section.ReadFloat("k", f), row.ok);
    EXPECT_DOUBLE_EQ(d, row.expected);
    EXPECT_FLOAT_EQ(f, static_cast<float>(row.expected));
  }
}

TEST(ConfigurationSection, WritesFloatWithSixDigitsAndAPointInAnyLocale) {
  const struct {
    double value;
    const char* text;
  } rows[] = {{0.5, "0.5"}, {1234567.0, "1.23457e+06"}, {0.1, "0.1"},           {1e-7, "1e-07"},
              {-3.0, "-3"}, {123456.0, "123456"},       {1.0 / 3.0, "0.333333"}};
  for (int comma = 0; comma < 2; ++comma) {
    std::unique_ptr<CommaLocaleScope> scope(comma ? new CommaLocaleScope : nullptr);
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(row.text) + (comma ? " under a comma locale" : ""));
      MemorySection section;
      EXPECT_TRUE(section.WriteFloat("k", row.value));
      EXPECT_EQ(section.Get("k"), row.text);
    }
  }
}

TEST(ConfigurationSection, VectorOfFloatFollowsTheRuntimeLocaleWhileArraysKeepThePoint) {
  const std::vector<float> vector{1.5f, 2.0f, -0.25f};
  const double doubles[] = {99.0, 1.5, 2.0, -0.25};  // [0] is never written
  const float floats[] = {99.0f, 1.5f, 2.0f, -0.25f};
  {
    MemorySection section;
    section.WriteFloatVector("vector", vector);
    section.WriteDoubleVector("doubles", doubles, 3);
    section.WriteFloatVector("floats", floats, 3);
    EXPECT_EQ(section.Get("vector"), "1.5;2;-0.25");
    EXPECT_EQ(section.Get("doubles"), "1.5;2;-0.25");
    EXPECT_EQ(section.Get("floats"), "1.5;2;-0.25");
  }
  CommaLocaleScope comma;
  MemorySection section;
  section.WriteFloatVector("vector", vector);
  section.WriteDoubleVector("doubles", doubles, 3);
  section.WriteFloatVector("floats", floats, 3);
  EXPECT_EQ(section.Get("vector"), "1,5;2;-0,25");
  EXPECT_EQ(section.Get("doubles"), "1.5;2;-0.25");
  EXPECT_EQ(section.Get("floats"), "1.5;2;-0.25");
  // Both forms read back in either locale.
  std::vector<float> back;
  EXPECT_TRUE(section.ReadFloatVector("vector", back));
  EXPECT_EQ(back, vector);
}

TEST(ConfigurationSection, ArrayWritesStartAtIndexOne) {
  const double values[] = {7.0, 8.0, 9.0};
  MemorySection section;
  section.WriteDoubleVector("one", values, 1);
  section.WriteDoubleVector("two", values, 2);
  section.WriteDoubleVector("none", values, 0);  // still writes values[1]
  EXPECT_EQ(section.Get("one"), "8");
  EXPECT_EQ(section.Get("two"), "8;9");
  EXPECT_EQ(section.Get("none"), "8");
}

TEST(ConfigurationSection, ArrayReadsFillFromIndexOneUpToNPlusOneValues) {
  const struct {
    const char* text;
    int n;
    int count;
    std::vector<double> stored;  // out[1]..out[count]
  } rows[] = {{"1;2;3;4", 2, 3, {1, 2, 3}},
              {"1;2;3;4", 10, 4, {1, 2, 3, 4}},
              {"1;2;3;4", 0, 1, {1}},
              {"1;x;3", 5, 1, {1}},
              {"x", 5, 0, {}},
              {"", 5, 1, {0}},
              {"1,5;2.5", 5, 2, {1.5, 2.5}},
              {"1;;3", 5, 3, {1, 0, 3}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " n=" + std::to_string(row.n));
    MemorySection section;
    section.Put("k", row.text);
    std::vector<double> doubles(16, -1.0);
    std::vector<float> floats(16, -1.0f);
    EXPECT_EQ(section.ReadDoubleVector("k", doubles.data(), row.n), row.count);
    EXPECT_EQ(section.ReadFloatVector("k", floats.data(), row.n), row.count);
    EXPECT_EQ(doubles[0], -1.0);
    for (int i = 0; i < row.count; ++i) {
      EXPECT_EQ(doubles[i + 1], row.stored[i]);
      EXPECT_EQ(floats[i + 1], static_cast<float>(row.stored[i]));
    }
    EXPECT_EQ(doubles[row.count + 1], -1.0) << "wrote past the values read";
  }
  MemorySection section;
  double out[3] = {-1, -1, -1};
  EXPECT_EQ(section.ReadDoubleVector("absent", out, 1), 0);
  EXPECT_EQ(out[1], -1);
}

TEST(ConfigurationSection, VectorReadsStopAtTheFirstBadTokenAndKeepOldContentsForEmptyText) {
  const struct {
    const char* text;
    std::vector<int> ints;
  } rows[] = {{"1;2;x;4", {1, 2}}, {"7", {7}},          {"-1;0;12", {-1, 0, 12}},
              {"x;1", {}},         {"1;;2", {1, 0, 2}}, {"1; 2;3 ", {1, 2}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    MemorySection section;
    section.Put("k", row.text);
    std::vector<int> values{9, 9, 9};
    EXPECT_TRUE(section.ReadIntVector("k", values));
    EXPECT_EQ(values, row.ints);
  }
  MemorySection section;
  section.Put("empty", "");
  std::vector<int> ints{9, 9, 9};
  std::vector<bool> bools{true};
  std::vector<float> floats{9.0f};
  EXPECT_TRUE(section.ReadIntVector("empty", ints));
  EXPECT_TRUE(section.ReadBoolVector("empty", bools));
  EXPECT_TRUE(section.ReadFloatVector("empty", floats));
  EXPECT_EQ(ints, (std::vector<int>{9, 9, 9}));
  EXPECT_EQ(bools, (std::vector<bool>{true}));
  EXPECT_EQ(floats, (std::vector<float>{9.0f}));
  EXPECT_FALSE(section.ReadIntVector("absent", ints));
  EXPECT_FALSE(section.ReadBoolVector("absent", bools));
  EXPECT_FALSE(section.ReadFloatVector("absent", floats));
  EXPECT_EQ(ints.size(), 3u);

  section.Put("bools", "1;0;yes;;0");
  EXPECT_TRUE(section.ReadBoolVector("bools", bools));
  EXPECT_EQ(bools, (std::vector<bool>{true, false, true, true, false}));
  section.Put("floats", "1.5;;2");
  EXPECT_TRUE(section.ReadFloatVector("floats", floats));
  EXPECT_EQ(floats, (std::vector<float>{1.5f}));
}

TEST(ConfigurationSection, TypedValuesRoundTripThroughTheirText) {
  MemorySection section;
  EXPECT_TRUE(section.WriteBool("bool", true));
  EXPECT_TRUE(section.WriteInt("int", -123456));
  section.WriteIntVector("ints", {3, -1, 0});
  section.WriteBoolVector("bools", {true, false, true});
  section.WriteIntVector("noInts", {});
  EXPECT_EQ(section.Get("bool"), "1");
  EXPECT_EQ(section.Get("int"), "-123456");
  EXPECT_EQ(section.Get("ints"), "3;-1;0");
  EXPECT_EQ(section.Get("bools"), "1;0;1");
  EXPECT_EQ(section.Get("noInts"), "");
  bool b = false;
  int i = 0;
  std::vector<int> ints;
  std::vector<bool> bools;
  EXPECT_TRUE(section.ReadBool("bool", b));
  EXPECT_TRUE(section.ReadInt("int", i));
  EXPECT_TRUE(section.ReadIntVector("ints", ints));
  EXPECT_TRUE(section.ReadBoolVector("bools", bools));
  EXPECT_TRUE(b);
  EXPECT_EQ(i, -123456);
  EXPECT_EQ(ints, (std::vector<int>{3, -1, 0}));
  EXPECT_EQ(bools, (std::vector<bool>{true, false, true}));
  EXPECT_EQ(section.store().narrowWrites, 5);
  EXPECT_EQ(section.store().wideWrites, 0);
}

TEST(ConfigurationSection, StringListsSplitOnEverySeparatorWithoutEscaping) {
  const struct {
    const char* text;
    char separator;
    std::vector<std::string> items;
  } rows[] = {{"a;;", ';', {"a", "", ""}},
              {"a|b;c", '|', {"a", "b;c"}},
              {";", ';', {"", ""}},
              {"one", ',', {"one"}},
              {"", ';', {}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    MemorySection section;
    section.Put("k", row.text);
    std::vector<CString> list{"stale"};
    std::vector<std::string> stdList{"stale"};
    EXPECT_EQ(section.ReadStringVector("k", list, row.separator),
              static_cast<int>(row.items.size()));
    EXPECT_EQ(
        ConfigurationSectionUtilities::ReadStringVector(&section, "k", stdList, row.separator),
        static_cast<int>(row.items.size()));
    ASSERT_EQ(list.size(), row.items.size());
    for (std::size_t i = 0; i < list.size(); ++i) EXPECT_EQ(list[i].str(), row.items[i]);
    EXPECT_EQ(stdList, row.items);
    // Writing the pieces back gives the same text.
    MemorySection copy;
    EXPECT_TRUE(copy.WriteStringVector("k", list, row.separator));
    EXPECT_EQ(copy.Get("k"), row.text);
    EXPECT_TRUE(
        ConfigurationSectionUtilities::WriteStringVector(&copy, "std", stdList, row.separator));
    EXPECT_EQ(copy.Get("std"), row.text);
  }
  MemorySection section;
  std::vector<CString> untouched{"x"};
  EXPECT_EQ(section.ReadStringVector("absent", untouched, ';'), 0);
  EXPECT_EQ(untouched.size(), 1u);
}

TEST(ConfigurationSection, ReadsIntoACharBufferWithTheTerminatorAfterSizeCharacters) {
  MemorySection section;
  section.Put("k", "hello");
  const struct {
    unsigned int size;
    const char* expected;
  } rows[] = {{3, "hel"}, {5, "hello"}, {10, "hello"}, {0, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.size);
    char buffer[16];
    std::fill(buffer, buffer + sizeof(buffer), 'z');
    EXPECT_TRUE(section.ReadKey("k", buffer, row.size));
    EXPECT_STREQ(buffer, row.expected);
  }
  char buffer[4] = "abc";
  EXPECT_FALSE(section.ReadKey("absent", buffer, 3));
  EXPECT_STREQ(buffer, "abc");
  std::string text = "kept";
  EXPECT_FALSE(section.ReadKey("absent", text));
  EXPECT_EQ(text, "kept");
  EXPECT_TRUE(section.ReadKey("k", text));
  EXPECT_EQ(text, "hello");
}

TEST(ConfigurationSection, StdStringWritesGoNarrowAndWideStringWritesGoWide) {
  MemorySection section;
  EXPECT_TRUE(section.WriteKey("n", std::string("text")));
  EXPECT_TRUE(section.WriteKey("w", std::wstring(L"gr\u00fc\u00dfe")));
  EXPECT_EQ(section.store().narrowWrites, 1);
  EXPECT_EQ(section.store().wideWrites, 1);
  EXPECT_EQ(section.Get("w"),
            "gr\xc3\xbc\xc3\x9f"
            "e");
}

TEST(ConfigurationSection, CopyAndChangeLeavesTheOriginalWhereItWas) {
  MemorySection section;
  std::unique_ptr<ConfigurationSection> child(section.CreateSubSection("child"));
  std::unique_ptr<ConfigurationSection> moved(section.CopyAndChangeSection("/other"));
  ASSERT_TRUE(moved);
  EXPECT_EQ(static_cast<MemorySection*>(moved.get())->path(), "/other");
  EXPECT_EQ(section.path(), "");

  EXPECT_EQ(section.CopyAndChangeSubSection("missing"), nullptr);
  EXPECT_EQ(section.CopyAndChangeSubSection("missing", 2), nullptr);
  EXPECT_EQ(section.path(), "");
  std::unique_ptr<ConfigurationSection> found(section.CopyAndChangeSubSection("child"));
  ASSERT_TRUE(found);
  EXPECT_EQ(static_cast<MemorySection*>(found.get())->path(), "/child");
  EXPECT_EQ(section.path(), "");
}

TEST(ConfigurationSection, BaseRefusesToCountOrListChildren) {
  MemorySection section;
  EXPECT_EQ(section.NumSubSections("x"), -1);
  EXPECT_EQ(section.GetAllSubSections("x"), nullptr);
}

TEST(ConfigurationSectionUtilities, CreatesNestedSectionsAlongAPath) {
  MemorySection root;
  std::unique_ptr<ConfigurationSection> leaf(
      ConfigurationSectionUtilities::CreateSubSection(&root, "a/b/c"));
  ASSERT_TRUE(leaf);
  EXPECT_EQ(static_cast<MemorySection*>(leaf.get())->path(), "/a/b/c");
  EXPECT_EQ(root.path(), "");
  EXPECT_EQ(root.store().sections.count("/a"), 1u);
  EXPECT_EQ(root.store().sections.count("/a/b"), 1u);

  std::unique_ptr<ConfigurationSection> unnamed(
      ConfigurationSectionUtilities::CreateSubSection(&root, ""));
  ASSERT_TRUE(unnamed);
  EXPECT_EQ(static_cast<MemorySection*>(unnamed.get())->path(), "/");
}

TEST(ConfigurationSectionUtilities, HasSubSectionWalksEveryComponentWithTheSameIndex) {
  MemorySection root;
  delete ConfigurationSectionUtilities::CreateSubSection(&root, "a/b");
  delete root.CreateSubSection("x", 1);
  std::unique_ptr<ConfigurationSection> x(root.CopyAndChangeSubSection("x", 1));
  ASSERT_TRUE(x);
  delete x->CreateSubSection("y", 1);
  const struct {
    const char* path;
    int index;
    bool expected;
  } rows[] = {{"a", 0, true}, {"a/b", 0, true}, {"a/b/c", 0, false}, {"b", 0, false},
              {"", 0, true},  {"x/y", 1, true}, {"x/y", 0, false},   {"a/b", 1, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(ConfigurationSectionUtilities::HasSubSection(&root, row.path, row.index),
              row.expected);
    EXPECT_EQ(root.path(), "");
  }
}

}  // namespace
