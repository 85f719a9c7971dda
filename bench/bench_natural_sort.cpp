// Natural order as a sort's comparison: znstrnumbercmp against glibc's strverscmp, the C
// library's own natural order (the peer to match), and against plain strcmp, on the same 100,000
// file names ("file123_part7.txt" with random numbers).
#include <benchmark/benchmark.h>
#include <string.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zenutl/zn_string_algorithms.h"

namespace {

const std::vector<std::string>& Names() {
  static const std::vector<std::string> names = [] {
    std::mt19937 random(20240601);
    std::uniform_int_distribution<int> file(0, 99999);
    std::uniform_int_distribution<int> part(0, 99);
    std::vector<std::string> made;
    made.reserve(100000);
    for (int i = 0; i < 100000; ++i) {
      made.push_back("file" + std::to_string(file(random)) + "_part" +
                     std::to_string(part(random)) + ".txt");
    }
    return made;
  }();
  return names;
}

template <typename Less>
void SortNames(benchmark::State& state, Less less) {
  std::vector<const char*> pointers;
  for (const std::string& name : Names()) pointers.push_back(name.c_str());
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<const char*> work = pointers;
    state.ResumeTiming();
    std::sort(work.begin(), work.end(), less);
    benchmark::DoNotOptimize(work.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(pointers.size()));
}

void BM_SortNatural(benchmark::State& state) {
  SortNames(state, [](const char* a, const char* b) { return ZnString::znstrnumbercmp(a, b) < 0; });
}
BENCHMARK(BM_SortNatural)->Unit(benchmark::kMillisecond);

void BM_SortStrverscmp(benchmark::State& state) {
  SortNames(state, [](const char* a, const char* b) { return ::strverscmp(a, b) < 0; });
}
BENCHMARK(BM_SortStrverscmp)->Unit(benchmark::kMillisecond);

void BM_SortStrcmp(benchmark::State& state) {
  SortNames(state, [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
}
BENCHMARK(BM_SortStrcmp)->Unit(benchmark::kMillisecond);

}  // namespace
