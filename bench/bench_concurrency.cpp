// Lock and unlock pairs per second: ZnAutoLock beside the bare boost::recursive_mutex that each
// of its resources wraps (the price of the order check and the per-thread list of what is held),
// and ZnSemaphore's zero-wait Lock and UnLock, two fcntl calls on the semaphore's lock file.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <boost/thread/recursive_mutex.hpp>
#include <string>
#include <vector>

#include "zenutl/zn_auto_lock.h"
#include "zenutl/zn_semaphore.h"

namespace {

void InitializeResourcesOnce() {
  static const bool done = (ZnAutoLock::Initialize({"Settings", "Data", "Plot"}), true);
  (void)done;
}

void BM_ZnAutoLock(benchmark::State& state) {
  InitializeResourcesOnce();
  for (auto _ : state) {
    ZnAutoLock lock(1);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ZnAutoLock);

void BM_BoostRecursiveMutex(benchmark::State& state) {
  static boost::recursive_mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BoostRecursiveMutex);

// Three resources nested in order, as a caller holding several would take them.
void BM_ZnAutoLockNestedThree(benchmark::State& state) {
  InitializeResourcesOnce();
  for (auto _ : state) {
    ZnAutoLock settings(0);
    ZnAutoLock data(1);
    ZnAutoLock plot(2);
  }
  state.SetItemsProcessed(state.iterations() * 3);
}
BENCHMARK(BM_ZnAutoLockNestedThree);

void BM_BoostRecursiveMutexNestedThree(benchmark::State& state) {
  static boost::recursive_mutex mutexes[3];
  for (auto _ : state) {
    boost::unique_lock<boost::recursive_mutex> settings(mutexes[0]);
    boost::unique_lock<boost::recursive_mutex> data(mutexes[1]);
    boost::unique_lock<boost::recursive_mutex> plot(mutexes[2]);
  }
  state.SetItemsProcessed(state.iterations() * 3);
}
BENCHMARK(BM_BoostRecursiveMutexNestedThree);

void BM_ZnSemaphoreLockUnLock(benchmark::State& state) {
  ZnSemaphore semaphore;
  semaphore.Init(4, ("zenutl bench " + std::to_string(::getpid())).c_str());
  for (auto _ : state) {
    if (!semaphore.Lock()) state.SkipWithError("no place");
    semaphore.UnLock();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ZnSemaphoreLockUnLock);

}  // namespace
