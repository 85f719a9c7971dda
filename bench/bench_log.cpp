// Messages per second through the process log, flushed after every message as it must be, beside
// spdlog's rotating file logger set to flush after every message too. Both files are limited to
// 256 KiB with three backups, so each run rotates many times; both records carry a millisecond
// stamp, the level and a location, about the same number of bytes.
#include <benchmark/benchmark.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <memory>
#include <string>

#include "scratch_folder.h"
#include "zenutl/log.h"

namespace {

const long kMaxSize = 256 * 1024;
const unsigned int kBackups = 3;
const char kText[] = "Opened the data set with 1234 observations and 56 variables in 78 ms.";

using zenutl_bench::ScratchFolder;

// The folder for the files of this run, removed at exit.
ScratchFolder& Folder() {
  static ScratchFolder folder;
  return folder;
}

void BM_LogWriteMessage(benchmark::State& state) {
  static const bool created = Log::CreateInstance(Folder().File("zenutl.log").c_str(),
                                                  Log::Information, kMaxSize, kBackups);
  if (!created) {
    state.SkipWithError("the log could not be created");
    return;
  }
  for (auto _ : state) {
    Log::WriteMessage("Dataset", "Open", kText, Log::Information, false);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogWriteMessage)->Threads(1)->Threads(4)->UseRealTime();

void BM_SpdlogRotatingFlushEveryMessage(benchmark::State& state) {
  static const std::shared_ptr<spdlog::logger> logger = [] {
    auto created = spdlog::rotating_logger_mt("bench", Folder().File("spdlog.log"),
                                              static_cast<std::size_t>(kMaxSize), kBackups);
    created->set_pattern(
        "[%Y-%m-%d %H:%M:%S.%e%z] [%l] [Dataset::Open()]\n%v\n------------------------------");
    created->set_level(spdlog::level::info);
    created->flush_on(spdlog::level::trace);
    return created;
  }();
  for (auto _ : state) {
    logger->info(kText);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SpdlogRotatingFlushEveryMessage)->Threads(1)->Threads(4)->UseRealTime();

}  // namespace
