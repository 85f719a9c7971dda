#include "zenutl/zn_auto_lock.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "diagnostics/log_records.h"
#include "support/child_process.h"
#include "support/temp_dir.h"
#include "zenutl/exception.h"
#include "zenutl/log.h"

namespace {

const std::vector<std::string> kNames = {"Settings", "Data",  "Plot",  "Report",
                                         "Audit",    "Cache", "Export"};

// The table lives as long as the process, so every test shares one, made once.
void InitializeOnce() {
  static const bool done = (ZnAutoLock::Initialize(kNames), true);
  (void)done;
}

// Locks in the given order and releases in reverse when it goes.
class Held {
 public:
  explicit Held(const std::vector<unsigned int>& indices) {
    for (unsigned int index : indices) mLocks.emplace_back(new ZnAutoLock(index));
  }
  ~Held() {
    while (!mLocks.empty()) mLocks.pop_back();
  }

 private:
  std::vector<std::unique_ptr<ZnAutoLock>> mLocks;
};

// Whether another thread can take these resources now; it would block on one held here.
bool FreeForOtherThreads(const std::vector<unsigned int>& indices) {
  bool taken = false;
  std::thread([&] {
    Held held(indices);
    taken = true;
  }).join();
  return taken;
}

std::string ExpectedText(const std::string& wanted, const std::vector<unsigned int>& held) {
  std::string text = "Deadlock detected for thread " + std::to_string(::syscall(SYS_gettid)) +
                     " while trying to lock " + wanted + ". The following resources were locked:";
  for (unsigned int index : held) text += "\n" + kNames[index];
  return text;
}

TEST(ZnAutoLock, RefusesOnlyARequestBelowSomethingHeldThatIsNotHeldItself) {
  InitializeOnce();
  const struct {
    std::vector<unsigned int> held;
    unsigned int request;
    bool allowed;
  } rows[] = {
      {{}, 3, true},        {{1}, 2, true},        {{2}, 1, false},   {{2, 3}, 2, true},
      {{2, 3, 2}, 3, true}, {{2, 3, 2}, 1, false}, {{2, 5}, 6, true}, {{2, 5}, 3, false},
      {{0, 0, 0}, 0, true}, {{4}, 4, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.held) + " then " + std::to_string(row.request));
    {
      Held held(row.held);
      try {
        ZnAutoLock lock(row.request);
        EXPECT_TRUE(row.allowed);
      } catch (const DeadlockException& e) {
        EXPECT_FALSE(row.allowed);
        EXPECT_EQ(std::string(e.Why().GetString()), ExpectedText(kNames[row.request], row.held));
        EXPECT_TRUE(FreeForOtherThreads({row.request}));
      }
    }
    EXPECT_TRUE(FreeForOtherThreads({0, 1, 2, 3, 4, 5, 6}));
  }
}

TEST(ZnAutoLock, ARefusalIsAnExceptionWhoseCloneIsADeadlockException) {
  InitializeOnce();
  Held held({5});
  try {
    ZnAutoLock lock(0);
    FAIL() << "no exception";
  } catch (const Exception& e) {
    std::unique_ptr<Exception> clone(e.Clone());
    EXPECT_NE(dynamic_cast<DeadlockException*>(clone.get()), nullptr);
    EXPECT_EQ(clone->Why(), e.Why());
  }
}

TEST(ZnAutoLock, AnIndexNeverInitialisedIsAnExceptionNotACrash) {
  InitializeOnce();
  EXPECT_THROW(ZnAutoLock lock(static_cast<unsigned int>(kNames.size())), Exception);
  EXPECT_THROW(ZnAutoLock lock(~0u), Exception);
}

// The refusal is logged, with the resources still held, before the exception leaves.
TEST(ZnAutoLock, WritesTheRefusalToTheLogAtCritical) {
  zenutl_test::TempDir dir;
  const std::string logFile = dir.File("app.log");
  zenutl_test::ExpectPassesInChild([&] {
    InitializeOnce();
    ASSERT_TRUE(Log::CreateInstance(logFile.c_str()));
    {
      Held held({3, 6});
      EXPECT_THROW(ZnAutoLock lock(4), DeadlockException);
    }
    const auto records = zenutl_test::ParseLogFile(zenutl_test::ReadWholeFile(logFile));
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.back().level, "Critical");
    EXPECT_EQ(records.back().location, "[Resource::Lock()]");
    EXPECT_EQ(records.back().text, ExpectedText("Audit", {3, 6}));
  });
}

// Threads that keep to the order only ever wait for each other; the counters, guarded by the
// resources alone, show that no two threads were inside at once.
TEST(ZnAutoLock, ThreadsThatKeepToTheOrderExcludeEachOtherAndNeverThrow) {
  InitializeOnce();
  const int kThreads = 4, kRounds = 2000;
  long counters[3] = {0, 0, 0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&counters, t] {
      for (int round = 0; round < kRounds; ++round) {
        const unsigned int first = (round + t) % 2;  // 0 or 1, then 2, sometimes 1 again
        ZnAutoLock a(first);
        ZnAutoLock b(2);
        ZnAutoLock again(first);
        ++counters[first];
        ++counters[2];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counters[0] + counters[1], kThreads * kRounds);
  EXPECT_EQ(counters[2], kThreads * kRounds);
}

}  // namespace
