// The INI store's costs that grow with use: writing settings key by key, and listing the names
// of a big file.
//
// Writes: 1,000 WriteKey calls on a file of 100 keys, each changing a value, then one Flush, as
// an application saving its settings does. Every write replaces the file atomically; only the
// Flush waits for the disk. Items per second are writes per second.
//
// Lists: GetSectionNames on a file of 40,000 sections and GetKeyNames on a section of 40,000
// keys. Both ask the platform again and again with a buffer 256 characters larger each time, so
// each of those calls must cost little more than copying the names.
#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#include "scratch_folder.h"
#include "zenutl/ini_file_section.h"

namespace {

using zenutl_bench::ScratchFolder;

const int kKeys = 100;
const int kWrites = 1000;
const int kNames = 40000;

std::string Numbered(const char* stem, int number) {
  return stem + std::to_string(number);
}

void BM_IniFileSection_Write1000KeysTo100KeyFileAndFlush(benchmark::State& state) {
  ScratchFolder folder;
  const std::string file = folder.File("settings.ini");
  {
    std::ofstream out(file);
    out << "[Settings]\n";
    for (int k = 0; k < kKeys; ++k) out << Numbered("Key", k) << "=initial value\n";
  }
  IniFileSection section(file.c_str(), "Settings");
  long long round = 0;
  for (auto _ : state) {
    ++round;
    bool written = true;
    for (int w = 0; w < kWrites; ++w) {
      const std::string value = Numbered("value ", static_cast<int>(round * kWrites + w));
      written = section.WriteKey(Numbered("Key", w % kKeys).c_str(), value.c_str()) && written;
    }
    if (!written || !section.Flush()) {
      state.SkipWithError("a write or the flush failed");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kWrites);
}
// Wall-clock time: waiting for the disk costs no CPU time, yet it is what the user waits for.
BENCHMARK(BM_IniFileSection_Write1000KeysTo100KeyFileAndFlush)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// Times `list` on a file holding `text`; it must answer kNames names.
template <typename List>
void TimeListing(benchmark::State& state, const std::string& text, List list) {
  ScratchFolder folder;
  const std::string file = folder.File("big.ini");
  std::ofstream(file) << text;
  IniFileSection section(file.c_str(), "Only");
  for (auto _ : state) {
    if (list(section).size() != static_cast<std::size_t>(kNames)) {
      state.SkipWithError("names went missing");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kNames);
}

void BM_IniFileSection_GetSectionNamesOf40000(benchmark::State& state) {
  std::string text;
  for (int s = 0; s < kNames; ++s) text += "[" + Numbered("Section", s) + "]\nkey=value\n";
  TimeListing(state, text, [](IniFileSection& section) { return section.GetSectionNames(); });
}
BENCHMARK(BM_IniFileSection_GetSectionNamesOf40000)->Unit(benchmark::kMillisecond);

void BM_IniFileSection_GetKeyNamesOf40000(benchmark::State& state) {
  std::string text = "[Only]\n";
  for (int k = 0; k < kNames; ++k) text += Numbered("Key", k) + "=value\n";
  TimeListing(state, text, [](IniFileSection& section) { return section.GetKeyNames(); });
}
BENCHMARK(BM_IniFileSection_GetKeyNamesOf40000)->Unit(benchmark::kMillisecond);

}  // namespace
