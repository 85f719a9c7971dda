// The compact and indented writers of json_value.
#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "json/c_locale_numbers.h"
#include "zenutl/json_value.h"
#include "zenutl/locales.h"

namespace {

using zenutl_test::PrintedInCLocale;

json_value Sample() {  // {"a":1,"b":[true,null]}
  json_value sample;
  sample.put_child("a") = 1.0;
  sample.put_child("b").append_child() = json_bool{true};
  sample.put_child("b").append_child();
  return sample;
}

TEST(JsonValueText, WritesEachKindOfScalar) {
  const struct {
    json_value value;
    const char* text;
  } rows[] = {
      {json_value(), "null"},
      {json_value(json_bool{true}), "true"},
      {json_value(json_bool{false}), "false"},
      {json_value(1.0), "1"},
      {json_value(-42.0), "-42"},
      {json_value(0.1), "0.1"},
      {json_value(1e300), "1e+300"},
      {json_value(1e-5), "1e-05"},
      {json_value(1.0 / 3), "0.3333333333333333"},
      {json_value(1e16), "1e+16"},
      {json_value(9007199254740993.0), "9007199254740992"},
      {json_value(1e34), "9.999999999999999e+33"},  // the double nearest 1e34 needs 17 digits
      {json_value(DBL_MIN), "2.225073858507201e-308"},
      {json_value(-DBL_MAX), "-1.797693134862316e+308"},
      {json_value(HUGE_VAL), "\"+inf\""},
      {json_value(-HUGE_VAL), "\"-inf\""},
      {json_value(std::nan("")), "null"},
      {json_value(5e-324), "0"},
      {json_value(-DBL_MIN / 2), "0"},
      {json_value(-0.0), "0"},
      {json_value(std::string("")), "\"\""},
      {json_value(std::string("q\"b\\/\b\f\n\r\t\x01\x1f\x7f\x80\xff")),
       "\"q\\\"b\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\\u007f\x80\xff\""},
      {json_value(std::string("nul\0!", 5)), "\"nul\\u0000!\""},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.value.to_string(), row.text);
    EXPECT_EQ(row.value.to_pretty_string(4), row.text);
  }
}

TEST(JsonValueText, PrintsNumbersExactlyAsTheCLibraryInTheCLocale) {
  std::mt19937_64 random(20240613);
  std::vector<double> numbers;
  for (int i = 0; i < 50000; ++i) {
    std::uint64_t bits = random();
    double number;
    std::memcpy(&number, &bits, sizeof number);
    numbers.push_back(number);                                     // any exponent
    numbers.push_back(static_cast<double>(random() >> (i % 64)));  // integers of every size
    numbers.push_back(std::ldexp(static_cast<double>(random() >> 11), -(i % 64)));  // ties
    numbers.push_back(static_cast<double>(random() % 100000) / 1000.0);  // short decimals
    numbers.push_back(std::ldexp(static_cast<double>(random() >> 11), i % 300 - 200));
  }
  int mismatches = 0;
  for (double number : numbers) {
    if (std::fpclassify(number) != FP_NORMAL) continue;
    const std::string expected = PrintedInCLocale(number);
    if (json_value(number).to_string() != expected && ++mismatches <= 10) {
      ADD_FAILURE() << expected << " printed as " << json_value(number).to_string();
    }
  }
  EXPECT_EQ(mismatches, 0);
}

// Puts back the runtime's locale and the global C++ locale.
struct ProcessLocaleGuard {
  ~ProcessLocaleGuard() {
    std::locale::global(global);
    std::setlocale(LC_ALL, runtime.c_str());
  }
  const std::string runtime = std::setlocale(LC_ALL, nullptr);
  const std::locale global;
};

TEST(JsonValueText, NumbersKeepTheFullStopUnderADecimalCommaLocale) {
  ProcessLocaleGuard guard;
  ASSERT_NE(std::setlocale(LC_ALL, "sv_SE.UTF-8"), nullptr);
  std::locale::global(std::locale("de_DE.UTF-8"));
  {
    Locales::SetDecimalSeparatorClass comma(Locales::eDecimalComma);
    ASSERT_EQ(Locales::GetDecimalSeparator(), Locales::eDecimalComma);
    char runtime_text[32];
    std::snprintf(runtime_text, sizeof runtime_text, "%g", 0.5);
    ASSERT_STREQ(runtime_text, "0,5");  // the process would print a comma

    json_value numbers;
    numbers.append_child() = 0.5;
    numbers.append_child() = 1234.5;
    numbers.append_child() = 1.0 / 3;
    const std::string expected = "[0.5,1234.5,0.3333333333333333]";
    std::ostringstream stream;
    stream.imbue(std::locale());
    stream << numbers;
    EXPECT_EQ(stream.str(), expected);
    EXPECT_EQ(numbers.to_string(), expected);
    EXPECT_EQ(numbers.to_pretty_string(0), "[\n0.5,\n1234.5,\n0.3333333333333333\n]");
  }
}

TEST(JsonValueText, WritesCompactAndIndentedForms) {
  json_value nested;
  nested.put_child("e").set_length(0);
  nested.put_child("o") = json_object{};
  nested.put_child("x").append_child().append_child() = 1.0;
  nested.put_child("x").append_child() = json_array{};
  const struct {
    json_value value;
    unsigned int indent;
    const char* compact;
    const char* indented;
  } rows[] = {
      {Sample(), 2, "{\"a\":1,\"b\":[true,null]}",
       "{\n  \"a\": 1,\n  \"b\": [\n    true,\n    null\n  ]\n}"},
      {Sample(), 0, "{\"a\":1,\"b\":[true,null]}", "{\n\"a\": 1,\n\"b\": [\ntrue,\nnull\n]\n}"},
      {json_value(json_array{}), 2, "[]", "[]"},
      {json_value(json_object{}), 2, "{}", "{}"},
      {nested, 1, "{\"e\":[],\"o\":{},\"x\":[[1],[]]}",
       "{\n \"e\": [],\n \"o\": {},\n \"x\": [\n  [\n   1\n  ],\n  []\n ]\n}"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.compact);
    EXPECT_EQ(row.value.to_string(), row.compact);
    EXPECT_EQ(row.value.to_pretty_string(row.indent), row.indented);
    std::ostringstream compact, indented;
    compact << row.value;
    row.value.pretty_print(indented, row.indent);
    EXPECT_EQ(compact.str(), row.compact);
    EXPECT_EQ(indented.str(), row.indented);
  }
  // Deeper than the writer's ready-made line starts.
  json_value deep;
  json_value* level = &deep;
  for (int i = 0; i < 40; ++i) level = &level->append_child();
  std::string expected = "[";
  for (int depth = 1; depth < 40; ++depth) expected += "\n" + std::string(200 * depth, ' ') + "[";
  expected += "\n" + std::string(200 * 40, ' ') + "null";
  for (int depth = 39; depth >= 0; --depth) expected += "\n" + std::string(200 * depth, ' ') + "]";
  EXPECT_EQ(deep.to_pretty_string(200), expected);
}

// Records every piece of text the stream hands over.
class RecordingBuffer : public std::streambuf {
 public:
  std::vector<std::string> pieces;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    pieces.emplace_back(text, size);
    return size;
  }
  int_type overflow(int_type c) override {
    if (c != traits_type::eof()) pieces.emplace_back(1, traits_type::to_char_type(c));
    return c;
  }
};

TEST(JsonValueText, HandsRunsOfPlainBytesToTheStreamUnsplit) {
  json_value strings;
  for (int i = 0; i < 300; ++i) strings.append_child() = std::string(997, 'p');
  strings.append_child() = std::string(100000, 'p');
  RecordingBuffer buffer;
  std::ostream stream(&buffer);
  stream << strings;
  std::string joined;
  for (std::size_t i = 0; i < buffer.pieces.size(); ++i) {
    if (i > 0) {
      EXPECT_FALSE(buffer.pieces[i - 1].back() == 'p' && buffer.pieces[i].front() == 'p')
          << "a run split after piece " << i - 1;
    }
    joined += buffer.pieces[i];
  }
  EXPECT_EQ(joined, strings.to_string());
}

TEST(JsonValueText, AStreamInAFailedStateTakesNothing) {
  RecordingBuffer buffer;
  std::ostream stream(&buffer);
  stream.setstate(std::ios_base::failbit);
  stream << Sample();
  Sample().pretty_print(stream, 2);
  EXPECT_TRUE(buffer.pieces.empty());
}

}  // namespace
