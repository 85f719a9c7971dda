// StreamWriter and StreamReader against raw std::ostream::write and std::istream::read of the
// same bytes: ten million doubles, one call per value and as one vector.
//
// Both sides work on the same in-memory stream buffer of a fixed size, so what is measured is
// the cost of the calls, not of a growing string or of a disk. The targets: the vector forms
// within 1.1 times the raw transfer, the scalar forms within twice the raw calls.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <istream>
#include <ostream>
#include <streambuf>
#include <vector>

#include "zenutl/stream_reader.h"
#include "zenutl/stream_writer.h"

namespace {

const std::size_t kCount = 10000000;

// A stream buffer over a fixed block of memory, for reading and writing.
class BlockBuffer : public std::streambuf {
 public:
  explicit BlockBuffer(std::size_t bytes) : mBlock(bytes) { Rewind(); }
  void Rewind() {
    setp(mBlock.data(), mBlock.data() + mBlock.size());
    setg(mBlock.data(), mBlock.data(), mBlock.data() + mBlock.size());
  }

 private:
  std::vector<char> mBlock;
};

const std::vector<double>& Values() {
  static const std::vector<double> values = [] {
    std::vector<double> made(kCount);
    for (std::size_t i = 0; i < kCount; ++i) made[i] = static_cast<double>(i) * 0.25 - 1e6;
    return made;
  }();
  return values;
}

BlockBuffer& Buffer() {
  static BlockBuffer buffer(kCount * sizeof(double));
  return buffer;
}

void Finish(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kCount * sizeof(double)));
}

void BM_WriteScalar_Raw(benchmark::State& state) {
  const std::vector<double>& values = Values();
  std::ostream out(&Buffer());
  for (auto _ : state) {
    Buffer().Rewind();
    for (double value : values) out.write(reinterpret_cast<const char*>(&value), sizeof value);
    benchmark::ClobberMemory();
  }
  Finish(state);
}
BENCHMARK(BM_WriteScalar_Raw)->Unit(benchmark::kMillisecond);

void BM_WriteScalar_StreamWriter(benchmark::State& state) {
  const std::vector<double>& values = Values();
  std::ostream out(&Buffer());
  StreamWriter writer(out);
  for (auto _ : state) {
    Buffer().Rewind();
    for (double value : values) writer.WriteDouble(value);
    benchmark::ClobberMemory();
  }
  Finish(state);
}
BENCHMARK(BM_WriteScalar_StreamWriter)->Unit(benchmark::kMillisecond);

void BM_WriteVector_Raw(benchmark::State& state) {
  const std::vector<double>& values = Values();
  std::ostream out(&Buffer());
  for (auto _ : state) {
    Buffer().Rewind();
    out.write(reinterpret_cast<const char*>(values.data()), kCount * sizeof(double));
    benchmark::ClobberMemory();
  }
  Finish(state);
}
BENCHMARK(BM_WriteVector_Raw)->Unit(benchmark::kMillisecond);

void BM_WriteVector_StreamWriter(benchmark::State& state) {
  const std::vector<double>& values = Values();
  std::ostream out(&Buffer());
  StreamWriter writer(out);
  for (auto _ : state) {
    Buffer().Rewind();
    writer.WriteDoubleVector(values.data(), kCount);
    benchmark::ClobberMemory();
  }
  Finish(state);
}
BENCHMARK(BM_WriteVector_StreamWriter)->Unit(benchmark::kMillisecond);

void BM_ReadScalar_Raw(benchmark::State& state) {
  std::istream in(&Buffer());
  for (auto _ : state) {
    Buffer().Rewind();
    double sum = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
      double value;
      in.read(reinterpret_cast<char*>(&value), sizeof value);
      sum += value;
    }
    benchmark::DoNotOptimize(sum);
  }
  Finish(state);
}
BENCHMARK(BM_ReadScalar_Raw)->Unit(benchmark::kMillisecond);

void BM_ReadScalar_StreamReader(benchmark::State& state) {
  std::istream in(&Buffer());
  StreamReader reader(in);
  for (auto _ : state) {
    Buffer().Rewind();
    double sum = 0;
    for (std::size_t i = 0; i < kCount; ++i) sum += reader.ReadDouble();
    benchmark::DoNotOptimize(sum);
  }
  Finish(state);
}
BENCHMARK(BM_ReadScalar_StreamReader)->Unit(benchmark::kMillisecond);

void BM_ReadVector_Raw(benchmark::State& state) {
  std::vector<double> values(kCount);
  std::istream in(&Buffer());
  for (auto _ : state) {
    Buffer().Rewind();
    in.read(reinterpret_cast<char*>(values.data()), kCount * sizeof(double));
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  Finish(state);
}
BENCHMARK(BM_ReadVector_Raw)->Unit(benchmark::kMillisecond);

void BM_ReadVector_StreamReader(benchmark::State& state) {
  std::vector<double> values(kCount);
  std::istream in(&Buffer());
  StreamReader reader(in);
  for (auto _ : state) {
    Buffer().Rewind();
    reader.ReadDoubleVector(values.data(), kCount);
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  Finish(state);
}
BENCHMARK(BM_ReadVector_StreamReader)->Unit(benchmark::kMillisecond);

}  // namespace
