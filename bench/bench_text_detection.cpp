// Text detection on a large data file: one block decides unless the whole file is asked for.
//
// The checks are meant for data files of any size, so a quick check (ZnFile::IsTextFile with
// wholeFile false, GetEncoding) must cost one read of 30768 bytes however large the file is,
// while the whole-file check grows with the file. The file here is 32 MiB of text.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "zenutl/path_functions.h"
#include "zenutl/zn_file.h"

namespace {

const std::string& DataFile() {
  static const std::string path = [] {
    const std::string name = "/tmp/zenutl-bench-text-" + std::to_string(::getpid()) + ".txt";
    std::ofstream out(name, std::ios::binary);
    const std::string line = "12.5;13.75;this is a line of measured values;-99\r\n";
    for (std::size_t written = 0; written < (32u << 20); written += line.size()) out << line;
    return name;
  }();
  return path;
}

struct RemoveDataFile {
  ~RemoveDataFile() { std::remove(DataFile().c_str()); }
} gRemoveDataFile;

void BM_IsTextFileFirstBlock(benchmark::State& state) {
  const CString path(DataFile());
  for (auto _ : state) benchmark::DoNotOptimize(ZnFile::IsTextFile(path, false));
}
BENCHMARK(BM_IsTextFileFirstBlock);

void BM_GetEncodingChecked(benchmark::State& state) {
  const CString path(DataFile());
  for (auto _ : state) benchmark::DoNotOptimize(ZnFile::GetEncoding(path, true));
}
BENCHMARK(BM_GetEncodingChecked);

void BM_IsTextFileWholeFile(benchmark::State& state) {
  const CString path(DataFile());
  for (auto _ : state) benchmark::DoNotOptimize(ZnFile::IsTextFile(path, true));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (32 << 20));
}
BENCHMARK(BM_IsTextFileWholeFile)->Unit(benchmark::kMillisecond);

void BM_TextModeIsTextFileWholeFile(benchmark::State& state) {
  const std::string path = DataFile();
  for (auto _ : state) benchmark::DoNotOptimize(IsTextFile(path.c_str(), 0xFFFFFFFFu));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (32 << 20));
}
BENCHMARK(BM_TextModeIsTextFileWholeFile)->Unit(benchmark::kMillisecond);

}  // namespace
