// json_value::parse and operator>>: the grammar, the fault positions, the limits, and reading
// back what the writers write.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>

#include "json/c_locale_numbers.h"
#include "zenutl/json_value.h"

namespace {

// The message of the exception `text` raises, or "" when it parses.
std::string ParseFault(std::string const& text) {
  try {
    json_value::parse(text);
  } catch (json_parse_exception const& fault) {
    return fault.what();
  }
  return "";
}

TEST(JsonValueParse, NamesTheFirstByteThatCannotContinueADocument) {
  const struct {
    std::string text;
    const char* position;
  } rows[] = {
      {"", "line 1, column 1"},
      {" \r\n\t", "line 2, column 2"},
      {"[1,\r\n 2,]", "line 2, column 4"},
      {"[1 2]", "line 1, column 4"},
      {"{\"a\" 1}", "line 1, column 6"},
      {"{\"a\":1,}", "line 1, column 8"},
      {"{1:1}", "line 1, column 2"},
      {"[1]x", "line 1, column 4"},
      {"[1]\n\n  ]", "line 3, column 3"},
      {"tru", "line 1, column 4"},
      {"nuLl", "line 1, column 3"},
      {"01", "line 1, column 2"},
      {"-a", "line 1, column 2"},
      {"1.", "line 1, column 3"},
      {"1.5e+", "line 1, column 6"},
      {"\"abc", "line 1, column 5"},
      {"\"a\x01\"", "line 1, column 3"},
      {"\"\\x\"", "line 1, column 3"},
      {"\"\\u12G4\"", "line 1, column 6"},
      {"\"\\uDC00\"", "line 1, column 5"},           // a lone low surrogate
      {"\"\\uD800\"", "line 1, column 8"},           // a high one without its partner
      {"\"\\uD800\\u0041\"", "line 1, column 10"},   // ... or with a partner that is none
      {"\"\xC3\x28\"", "line 1, column 3"},          // a lead byte without its continuation
      {"\"\xE0\x80\x80\"", "line 1, column 3"},      // overlong
      {"\"\xED\xA0\x80\"", "line 1, column 3"},      // an encoded surrogate
      {"\"\xF4\x90\x80\x80\"", "line 1, column 3"},  // beyond U+10FFFF
      {"\"\xC0\xAF\"", "line 1, column 2"},
      {"\"\x80\"", "line 1, column 2"},
      {"\"\xE2\x82", "line 1, column 4"},
      {"\xEF\xBB\xBF{}", "line 1, column 1"},  // a byte order mark is no white space
      {std::string("[\0]", 3), "line 1, column 2"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.text);
    const std::string fault = ParseFault(row.text);
    const std::string suffix = std::string(" at ") + row.position;
    EXPECT_TRUE(fault.size() > suffix.size() &&
                fault.compare(fault.size() - suffix.size(), suffix.size(), suffix) == 0)
        << fault;
  }
  EXPECT_EQ(ParseFault("[1 2]"), "expected ',' or ']', found '2' at line 1, column 4");
  EXPECT_EQ(ParseFault("\"\\uDC00\""), "lone low surrogate in a \\u escape at line 1, column 5");
  EXPECT_EQ(ParseFault("\"\t\""), "control character in a string at line 1, column 2");
}

TEST(JsonValueParse, DecodesEscapesAndKeepsUtf8) {
  const struct {
    const char* json;
    std::string text;
  } rows[] = {
      {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
      {R"("\u0041\u00e9\u20AC")", "A\xC3\xA9\xE2\x82\xAC"},
      {R"("\uD83D\uDE00\udbff\udfff")", "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"},
      {R"("\u0000")", std::string("\0", 1)},
      {"\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\x7F\"",
       "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\x7F"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.json);
    EXPECT_EQ(json_value::parse(row.json).get_string(), row.text);
  }
}

TEST(JsonValueParse, NumbersBecomeTheNearestDouble) {
  const struct {
    const char* json;
    double value;
  } rows[] = {
      {"0", 0.0},
      {"-1.5E-3", -1.5e-3},
      {"1e2", 100.0},
      {"123456789012345", 123456789012345.0},
      {"9007199254740993", 9007199254740992.0},
      {"12345678901234567890123", 1.2345678901234568e22},
      {"0.1", 0.1},
      {"4.9e-324", 4.9e-324},
      {"1e400", HUGE_VAL},
      {"-1e400", -HUGE_VAL},
      {"1e-400", 0.0},
      {"100000000000000000000000000000e-330", 1e-301},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.json);
    EXPECT_EQ(json_value::parse(row.json).get_number(), row.value);
  }
  EXPECT_TRUE(std::signbit(json_value::parse("-0").get_number()));
}

TEST(JsonValueParse, TheLastOfDuplicateKeysWins) {
  const json_value object = json_value::parse(R"( {"b": 1, "a": [], "b": {"c": 2}} )");
  EXPECT_EQ(object.to_string(), R"({"a":[],"b":{"c":2}})");
}

// Runs `body` on a thread with a small stack, so that recursion along a deep tree would crash.
void RunOnSmallStack(std::function<void()> body) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 512 * 1024);
  pthread_t thread;
  auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(JsonValueParse, AcceptsExactlyTenThousandLevelsWithoutDeepRecursion) {
  RunOnSmallStack([] {
    const std::string arrays = std::string(10000, '[') + std::string(10000, ']');
    std::string objects;
    for (int i = 0; i < 10000; ++i) objects += "{\"k\":";
    objects += "1" + std::string(10000, '}');
    for (std::string const& text : {arrays, objects}) {
      json_value deepest = json_value::parse(text);
      json_value copy = deepest;
      EXPECT_TRUE(copy == deepest);
      EXPECT_FALSE(copy < deepest);
      EXPECT_EQ(deepest.to_string(), text);
      EXPECT_EQ(json_value::parse(deepest.to_pretty_string(0)), deepest);
      copy = json_value();
    }
    EXPECT_EQ(ParseFault("[" + arrays + "]"),
              "nesting deeper than 10000 levels at line 1, column 10001");
    EXPECT_EQ(ParseFault("[" + objects + "]"),
              "nesting deeper than 10000 levels at line 1, column 49997");
  });
}

TEST(JsonValueParse, FollowsTheParsingCasesOfJsonTestSuite) {
  const std::filesystem::path folder = ZENUTL_JSON_TEST_SUITE;
  ASSERT_TRUE(std::filesystem::is_directory(folder)) << folder;
  int counts[3] = {};
  for (auto const& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    std::ifstream file(entry.path(), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    SCOPED_TRACE(name);
    const std::string fault = ParseFault(content.str());
    if (name[0] == 'y') {
      EXPECT_EQ(fault, "");
      ++counts[0];
    } else if (name[0] == 'n') {
      EXPECT_NE(fault, "");
      ++counts[1];
    } else if (fault.empty()) {  // either way, but what is accepted must read back
      const json_value value = json_value::parse(content.str());
      EXPECT_EQ(json_value::parse(value.to_string()).to_string(), value.to_string());
      ++counts[2];
    }
  }
  EXPECT_GE(counts[0], 95);
  EXPECT_GE(counts[1], 188);
}

// Random trees for the round trip: `written` goes through a writer and the parser, `expected` is
// what must come back: numbers as the C library prints ("%.16g") and reads them, zero for -0.0
// and the denormals, the strings "+inf" and "-inf", null for NaN.
class RandomTrees {
 public:
  explicit RandomTrees(unsigned seed) : m_random(seed) {}

  void Make(json_value& written, json_value& expected, int depth = 0) {
    switch (m_random() % (depth < 4 ? 6 : 4)) {
      case 0:
        written = expected = json_value();
        break;
      case 1:
        written = expected = Text();
        break;
      case 2:
        MakeNumber(written, expected);
        break;
      case 3:
        written = expected = json_value(json_bool{m_random() % 2 == 0});
        break;
      case 4:
        written = expected = json_array{};
        for (unsigned i = m_random() % 5; i > 0; --i) {
          Make(written.append_child(), expected.append_child(), depth + 1);
        }
        break;
      default:
        written = expected = json_object{};
        for (unsigned i = m_random() % 5; i > 0; --i) {
          const std::string key = Text();
          Make(written.put_child(key), expected.put_child(key), depth + 1);
        }
    }
  }

 private:
  // Valid UTF-8 of every length, with the bytes the writer escapes among it.
  std::string Text() {
    static const unsigned kCodes[] = {0x0, 0x1F, '"', '\\', '/', 0x7F, 0xE9, 0x20AC, 0x1F600};
    std::string text;
    for (unsigned i = m_random() % 6; i > 0; --i) {
      const unsigned code = m_random() % 3 ? 'a' + m_random() % 26 : kCodes[m_random() % 9];
      if (code < 0x80) {
        text += static_cast<char>(code);
      } else if (code < 0x800) {
        text += {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
      } else if (code < 0x10000) {
        text +=
            {static_cast<char>(0xE0 | code >> 12), static_cast<char>(0x80 | ((code >> 6) & 0x3F)),
             static_cast<char>(0x80 | (code & 0x3F))};
      } else {
        text +=
            {static_cast<char>(0xF0 | code >> 18), static_cast<char>(0x80 | ((code >> 12) & 0x3F)),
             static_cast<char>(0x80 | ((code >> 6) & 0x3F)),
             static_cast<char>(0x80 | (code & 0x3F))};
      }
    }
    return text;
  }

  void MakeNumber(json_value& written, json_value& expected) {
    static const double kSpecial[] = {HUGE_VAL, -HUGE_VAL, NAN, -0.0, 5e-324, 1e-310};
    std::uint64_t bits = m_random();
    double number;
    std::memcpy(&number, &bits, sizeof number);
    if (m_random() % 4 == 0) number = kSpecial[m_random() % 6];
    if (m_random() % 4 == 0) number = static_cast<double>(static_cast<std::int32_t>(bits));
    written = number;
    if (std::isinf(number)) {
      expected = std::string(number > 0 ? "+inf" : "-inf");
    } else if (std::isnan(number)) {
      expected = json_value();
    } else if (std::fpclassify(number) != FP_NORMAL) {
      expected = 0.0;
    } else {
      expected = zenutl_test::ReadInCLocale(zenutl_test::PrintedInCLocale(number));
    }
  }

  std::mt19937_64 m_random;
};

TEST(JsonValueParse, ReadsBackWhatBothWritersWrite) {
  RandomTrees trees(8259);
  for (int i = 0; i < 500; ++i) {
    json_value written, expected;
    trees.Make(written, expected);
    SCOPED_TRACE(written.to_string());
    EXPECT_EQ(json_value::parse(written.to_string()), expected);
    EXPECT_EQ(json_value::parse(written.to_pretty_string(i % 4)), expected);
  }
}

TEST(JsonValueParse, StreamExtractionReadsTheRestOfTheStream) {
  json_value value;
  std::istringstream good(" {\"a\": [1, 2]}\n");
  good >> value;
  EXPECT_EQ(value.to_string(), "{\"a\":[1,2]}");
  EXPECT_TRUE(good.eof());

  std::istringstream bad("[1, 2");
  EXPECT_THROW(bad >> value, json_parse_exception);
  EXPECT_EQ(value.to_string(), "{\"a\":[1,2]}");  // unchanged

  std::istringstream failed("[3]");
  failed.setstate(std::ios_base::failbit);
  failed >> value;
  EXPECT_EQ(value.to_string(), "{\"a\":[1,2]}");
}

}  // namespace
