// Compact writing and parsing of a generated ~20 MB JSON document, beside nlohmann::json and
// RapidJSON.
//
// The document is an array of records such as a data-analysis application exchanges: integers,
// short decimals, full-precision doubles and exponents, strings with escapes and UTF-8, nested
// objects and arrays. Each library writes its own tree of the same document (parsed from the
// same text) to a string in memory, and parses the text into its own tree, which is then freed.
// RapidJSON runs with its default flags: its number parsing is then not always the nearest
// double, while the two others are.
#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "zenutl/json_value.h"

namespace {

constexpr std::size_t kDocumentSize = 20 * 1024 * 1024;

class DocumentMaker {
 public:
  std::string Make() {
    m_text = "[";
    while (m_text.size() < kDocumentSize) {
      if (m_text.size() > 1) m_text += ',';
      AppendRecord();
    }
    m_text += "]";
    return m_text;
  }

 private:
  void Append(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    m_text += text;
  }
  void AppendInteger() { Append("%.0f", static_cast<double>(m_random() % 2000000) - 1000000); }
  void AppendDecimal() { Append("%.3f", static_cast<double>(m_random() % 10000000) / 1000.0); }
  void AppendDouble() { Append("%.17g", Unit() * 1000.0); }
  void AppendExponent() { Append("%.6e", Unit() * std::pow(10.0, m_random() % 40 - 20.0)); }
  double Unit() { return static_cast<double>(m_random() >> 11) / 9007199254740992.0; }

  void AppendText() {
    static const char* const kPieces[] = {
        "measurement",  "sample ",         "run",           "\\\"quoted\\\"",
        "line\\nbreak", "tab\\there",      "back\\\\slash", "caf\xC3\xA9",
        "\xE2\x82\xAC", "\\u00e9t\\u00e9", "plot/axis",     " ",
        "0.5 mg/l",     "\\r\\n",
    };
    m_text += '"';
    for (unsigned i = 1 + m_random() % 6; i > 0; --i) m_text += kPieces[m_random() % 14];
    m_text += '"';
  }

  void AppendRecord() {
    m_text += "{\"id\":";
    AppendInteger();
    m_text += ",\"name\":";
    AppendText();
    m_text += ",\"active\":";
    m_text += m_random() % 2 ? "true" : "false";
    m_text += ",\"parent\":null,\"location\":{\"x\":";
    AppendDecimal();
    m_text += ",\"y\":";
    AppendDecimal();
    m_text += ",\"scale\":";
    AppendExponent();
    m_text += "},\"values\":[";
    for (unsigned i = m_random() % 12; i > 0; --i) {
      switch (m_random() % 4) {
        case 0:
          AppendInteger();
          break;
        case 1:
          AppendDecimal();
          break;
        case 2:
          AppendDouble();
          break;
        default:
          AppendExponent();
      }
      m_text += ',';
    }
    AppendDouble();
    m_text += "],\"notes\":[";
    for (unsigned i = m_random() % 3; i > 0; --i) {
      AppendText();
      m_text += ',';
    }
    AppendText();
    m_text += "],\"children\":[{\"id\":";
    AppendInteger();
    m_text += ",\"weight\":";
    AppendDouble();
    m_text += ",\"tags\":[\"a\",\"b\"]}]}";
  }

  std::mt19937_64 m_random{20240613};
  std::string m_text;
};

const std::string& Document() {
  static const std::string document = DocumentMaker().Make();
  return document;
}

void CountBytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void BM_WriteCompact_Zenutl(benchmark::State& state) {
  const json_value tree = json_value::parse(Document());
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string text = tree.to_string();
    bytes = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  CountBytes(state, bytes);
}
BENCHMARK(BM_WriteCompact_Zenutl)->Unit(benchmark::kMillisecond);

void BM_WriteCompact_Nlohmann(benchmark::State& state) {
  const nlohmann::json tree = nlohmann::json::parse(Document());
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string text = tree.dump();
    bytes = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  CountBytes(state, bytes);
}
BENCHMARK(BM_WriteCompact_Nlohmann)->Unit(benchmark::kMillisecond);

void BM_WriteCompact_RapidJson(benchmark::State& state) {
  rapidjson::Document tree;
  tree.Parse(Document().c_str());
  std::size_t bytes = 0;
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    tree.Accept(writer);
    bytes = buffer.GetSize();
    benchmark::DoNotOptimize(buffer.GetString());
  }
  CountBytes(state, bytes);
}
BENCHMARK(BM_WriteCompact_RapidJson)->Unit(benchmark::kMillisecond);

void BM_Parse_Zenutl(benchmark::State& state) {
  for (auto _ : state) {
    const json_value tree = json_value::parse(Document());
    benchmark::DoNotOptimize(&tree);
  }
  CountBytes(state, Document().size());
}
BENCHMARK(BM_Parse_Zenutl)->Unit(benchmark::kMillisecond);

void BM_Parse_Nlohmann(benchmark::State& state) {
  for (auto _ : state) {
    const nlohmann::json tree = nlohmann::json::parse(Document());
    benchmark::DoNotOptimize(&tree);
  }
  CountBytes(state, Document().size());
}
BENCHMARK(BM_Parse_Nlohmann)->Unit(benchmark::kMillisecond);

void BM_Parse_RapidJson(benchmark::State& state) {
  for (auto _ : state) {
    rapidjson::Document tree;
    tree.Parse(Document().c_str());
    if (tree.HasParseError()) state.SkipWithError("RapidJSON refused the document");
    benchmark::DoNotOptimize(&tree);
  }
  CountBytes(state, Document().size());
}
BENCHMARK(BM_Parse_RapidJson)->Unit(benchmark::kMillisecond);

}  // namespace
