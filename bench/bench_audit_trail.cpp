// The audit trail at the size a long-lived installation reaches: 100,000 events.
//
// BM_AuditTrailAddEvent records events into the open session of a trail that already holds
// 1,000, 10,000 or 100,000 events; items_per_second should stay flat across the three.
// BM_AuditTrailSave, BM_AuditTrailLoad and BM_AuditTrailVerifySignature work on a trail file of
// 100,000 events in three shapes: 100 sessions of 1,000 events, one big session, and 10,000
// short sessions of 10 events (many brief runs of the application, where any per-session cost
// that grows with the number of sessions shows). Each reports the file's size as "file_bytes"
// and its bytes per second. Verifying walks the document already in memory, so it should cost
// less than loading (parsing) it.
//
// The keyed seal beside the checksum alone, on 100 sessions of 1,000 events:
// BM_AuditTrailEndSession closes the sessions (sealed:0 computes the checksum, sealed:1 the
// checksum and the session's HMAC-SHA256), and BM_AuditTrailVerifySealed checks a sealed trail with
// its key and anchor, to set beside BM_AuditTrailVerifySignature/sessions:100/events:1000.
#include <benchmark/benchmark.h>

#include <boost/filesystem.hpp>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <tuple>

#include "scratch_folder.h"
#include "zenutl/audit_trail.h"
#include "zenutl/cstring.h"

namespace {

const char kProject[] = "Sales forecast 2011";
const char kDetails[] = "Variables: Region, Quarter, Revenue; filter: Revenue > 1000; 1234 rows.";

using zenutl_bench::ScratchFolder;

// The folder for the files of this run, removed at exit.
ScratchFolder& Folder() {
  static ScratchFolder folder;
  return folder;
}

// Event messages differ from one another as real ones do.
CString EventMessage(long number) {
  CString text;
  text.Format("Opened the data set 'forecast_%ld.dat' and ran the regression (step %ld).",
              number % 97, number);
  return text;
}

// The key of the sealed trails, written on first use.
const std::string& KeyFile() {
  static const std::string file = [] {
    const std::string path = Folder().File("bench.key");
    std::ofstream(path, std::ios::binary) << "a key of the benchmark's own, 32 bytes";
    return path;
  }();
  return file;
}

// A trail on `file`; a sealed one keeps its anchor beside it.
std::unique_ptr<AuditTrail> MakeFileTrail(const std::string& file, bool sealed = false) {
  std::unique_ptr<AuditTrail> trail(new AuditTrail(file.c_str(), kProject, nullptr));
  trail->GetAuditTrailSettings().SetLogEvents(1);
  if (sealed) trail->SetSeal(KeyFile().c_str(), (file + ".anchor").c_str());
  return trail;
}

void AddEvents(AuditTrail& trail, long count, long firstNumber) {
  for (long i = 0; i < count; ++i) {
    trail.AddEvent(EventMessage(firstNumber + i), kDetails, nullptr);
  }
}

// The path of a saved trail of `sessions` closed sessions of `eventsPerSession` events each,
// written on first use.
const std::string& TrailFile(long sessions, long eventsPerSession, bool sealed = false) {
  static std::map<std::tuple<long, long, bool>, std::string> files;
  const auto key = std::make_tuple(sessions, eventsPerSession, sealed);
  auto found = files.find(key);
  if (found != files.end()) return found->second;
  const std::string file =
      Folder().File("trail_" + std::to_string(sessions) + "x" + std::to_string(eventsPerSession) +
                    (sealed ? "_sealed" : "") + ".xml");
  std::unique_ptr<AuditTrail> trail = MakeFileTrail(file, sealed);
  for (long session = 0; session < sessions; ++session) {
    trail->BeginSession();
    AddEvents(*trail, eventsPerSession, session * eventsPerSession);
    trail->EndSession();
  }
  trail->Save();
  return files.emplace(key, file).first->second;
}

void ReportFile(benchmark::State& state, const std::string& file) {
  const auto bytes = static_cast<int64_t>(boost::filesystem::file_size(file));
  state.counters["file_bytes"] = static_cast<double>(bytes);
  state.counters["events"] = static_cast<double>(state.range(0) * state.range(1));
  state.SetBytesProcessed(state.iterations() * bytes);
}

void BM_AuditTrailAddEvent(benchmark::State& state) {
  const std::string file = Folder().File("add_" + std::to_string(state.range(0)) + ".xml");
  std::unique_ptr<AuditTrail> trail = MakeFileTrail(file);
  trail->BeginSession();
  AddEvents(*trail, state.range(0), 0);
  long number = state.range(0);
  for (auto _ : state) {
    trail->AddEvent(EventMessage(number++), kDetails, nullptr);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AuditTrailAddEvent)
    ->ArgName("present")
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Iterations(5000)
    ->Unit(benchmark::kMicrosecond);

// Arguments of the whole-trail benchmarks: sessions, events per session.
void TrailShapes(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"sessions", "events"})
      ->Args({100, 1000})
      ->Args({1, 100000})
      ->Args({10000, 10})
      ->Iterations(5)
      ->Unit(benchmark::kMillisecond);
}

void BM_AuditTrailSave(benchmark::State& state) {
  const std::string& source = TrailFile(state.range(0), state.range(1));
  // Saves to a file of its own so the shared source stays as written.
  const std::string file = Folder().File("save.xml");
  boost::filesystem::copy_file(source, file, boost::filesystem::copy_option::overwrite_if_exists);
  std::unique_ptr<AuditTrail> trail = MakeFileTrail(file);
  trail->Load();
  for (auto _ : state) {
    trail->Save();
  }
  if (trail->IsModified()) state.SkipWithError("the trail was not saved");
  ReportFile(state, file);
}
BENCHMARK(BM_AuditTrailSave)->Apply(TrailShapes);

void BM_AuditTrailLoad(benchmark::State& state) {
  const std::string& file = TrailFile(state.range(0), state.range(1));
  for (auto _ : state) {
    state.PauseTiming();
    std::unique_ptr<AuditTrail> trail = MakeFileTrail(file);
    state.ResumeTiming();
    trail->Load();
    state.PauseTiming();
    if (trail->IsEmpty()) state.SkipWithError("the trail did not load");
    trail.reset();
    state.ResumeTiming();
  }
  ReportFile(state, file);
}
BENCHMARK(BM_AuditTrailLoad)->Apply(TrailShapes);

void BM_AuditTrailVerifySignature(benchmark::State& state) {
  const std::string& file = TrailFile(state.range(0), state.range(1));
  std::unique_ptr<AuditTrail> trail = MakeFileTrail(file);
  trail->Load();
  bool verified = true;
  for (auto _ : state) {
    verified = trail->VerifySignature(nullptr) && verified;
  }
  if (!verified) state.SkipWithError("a session did not verify");
  ReportFile(state, file);
}
BENCHMARK(BM_AuditTrailVerifySignature)->Apply(TrailShapes);

void BM_AuditTrailEndSession(benchmark::State& state) {
  const bool sealed = state.range(0) != 0;
  const long sessions = 100;
  const long eventsPerSession = 1000;
  for (auto _ : state) {
    state.PauseTiming();
    std::unique_ptr<AuditTrail> trail = MakeFileTrail(Folder().File("end.xml"), sealed);
    for (long session = 0; session < sessions; ++session) {
      trail->BeginSession();
      AddEvents(*trail, eventsPerSession, session * eventsPerSession);
      state.ResumeTiming();
      trail->EndSession();
      state.PauseTiming();
    }
    trail.reset();
    state.ResumeTiming();
  }
  state.counters["sessions"] = static_cast<double>(sessions);
  state.SetItemsProcessed(state.iterations() * sessions * eventsPerSession);
}
BENCHMARK(BM_AuditTrailEndSession)
    ->ArgName("sealed")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

void BM_AuditTrailVerifySealed(benchmark::State& state) {
  const std::string& file = TrailFile(state.range(0), state.range(1), true);
  std::unique_ptr<AuditTrail> trail = MakeFileTrail(file, true);
  trail->Load();
  bool verified = true;
  for (auto _ : state) {
    verified = trail->VerifySignature(nullptr) && verified;
  }
  if (!verified) state.SkipWithError("a session or its seal did not verify");
  ReportFile(state, file);
}
BENCHMARK(BM_AuditTrailVerifySealed)
    ->ArgNames({"sessions", "events"})
    ->Args({100, 1000})
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

}  // namespace
