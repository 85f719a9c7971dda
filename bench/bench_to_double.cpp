// ZnString::ToDouble against the C library's strtod and C++17's std::from_chars on the same few
// thousand numeric texts.
//
// ToDouble does more than either: it accepts either decimal separator, checks for blank text and
// checks what follows the number. std::from_chars is the fastest correctly rounding reader in
// the standard library; it is given the text after its leading blanks, which it does not skip.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "zenutl/zn_string.h"

namespace {

// Integers, plain decimals, exponents, signs, surrounding blanks and long mantissas.
std::vector<std::string> MakeInputs() {
  std::mt19937 random(12345);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::uniform_int_distribution<int> exponent(-30, 30);
  std::vector<std::string> inputs;
  char buffer[64];
  for (int i = 0; i < 4000; ++i) {
    const double magnitude = unit(random) * 1000.0;
    switch (i % 6) {
      case 0:
        std::snprintf(buffer, sizeof buffer, "%d", static_cast<int>(magnitude * 1000) - 500000);
        break;
      case 1:
        std::snprintf(buffer, sizeof buffer, "%.3f", magnitude);
        break;
      case 2:
        std::snprintf(buffer, sizeof buffer, "%.6e", magnitude * (i % 4 == 0 ? -1 : 1));
        break;
      case 3:
        std::snprintf(buffer, sizeof buffer, "  %.2f  ", -magnitude);
        break;
      case 4:
        std::snprintf(buffer, sizeof buffer, "%.17g", magnitude * 1e-3);
        break;
      default:
        std::snprintf(buffer, sizeof buffer, "%ge%d", magnitude, exponent(random));
        break;
    }
    inputs.emplace_back(buffer);
  }
  return inputs;
}

const std::vector<std::string>& Inputs() {
  static const std::vector<std::string> inputs = MakeInputs();
  return inputs;
}

void BM_strtod(benchmark::State& state) {
  const std::vector<std::string>& inputs = Inputs();
  for (auto _ : state) {
    double sum = 0.0;
    for (const std::string& text : inputs) {
      char* end = nullptr;
      sum += std::strtod(text.c_str(), &end);
      benchmark::DoNotOptimize(end);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(inputs.size()));
}
BENCHMARK(BM_strtod);

void BM_FromChars(benchmark::State& state) {
  const std::vector<std::string>& inputs = Inputs();
  for (auto _ : state) {
    double sum = 0.0;
    for (const std::string& text : inputs) {
      const char* first = text.data();
      const char* last = first + text.size();
      while (first < last && *first == ' ') ++first;
      double value = 0.0;
      const std::from_chars_result read = std::from_chars(first, last, value);
      sum += value;
      benchmark::DoNotOptimize(read.ptr);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(inputs.size()));
}
BENCHMARK(BM_FromChars);

void BM_ZnStringToDouble(benchmark::State& state) {
  const std::vector<std::string>& inputs = Inputs();
  for (auto _ : state) {
    double sum = 0.0;
    for (const std::string& text : inputs) {
      ZnString::EParseResult result;
      sum += ZnString::ToDouble(text.c_str(), result);
      benchmark::DoNotOptimize(result);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(inputs.size()));
}
BENCHMARK(BM_ZnStringToDouble);

}  // namespace
