#include "zenutl/tick_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>

#include "concurrency/scoped_event.h"
#include "support/exception_matchers.h"

namespace {

using zenutl_test::ScopedEvent;

using std::chrono::milliseconds;

// Polls `condition` for up to a minute: long enough for any loaded machine.
bool Eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(milliseconds(1));
  }
  return true;
}

// Counts its ticks; throws from the tick numbered `throwAt`, if any.
class Counter : public TickThread {
 public:
  Counter(HANDLE event, unsigned long timeOut, int throwAt = 0)
      : TickThread(event, timeOut, false), mThrowAt(throwAt) {}
  ~Counter() override { Stop(); }

  int Ticks() const { return mTicks; }
  using TickThread::GetQuitEvent;
  using TickThread::SetTimeOut;
  // Runs the thread's loop on the calling thread, for its exit code.
  unsigned int RunHere() { return GetThreadProc()(this); }

 protected:
  void Tick() override {
    if (++mTicks == mThrowAt) throw std::runtime_error("tick failed");
  }

 private:
  const int mThrowAt;
  std::atomic<int> mTicks{0};
};

TEST(TickThread, RefusesToBeBuiltWhenTickCouldNeverBeCalled) {
  const char kNever[] = "TickThread::Init(...) - Tick will never be called.";
  EXPECT_THROW_WHY(TickThread(INFINITE, true), Exception, kNever);
  EXPECT_THROW_WHY(TickThread(static_cast<void*>(nullptr), false), Exception, kNever);
  EXPECT_THROW_WHY(TickThread(nullptr, INFINITE, true), Exception, kNever);
  EXPECT_THROW_WHY(TickThread(nullptr, 0x100000000ul, true), Exception, kNever);
}

TEST(TickThread, TicksOnTimeUntilStoppedAndStartsAgain) {
  Counter counter(nullptr, 1);
  EXPECT_FALSE(counter.IsRunning());
  EXPECT_FALSE(counter.Stop());
  ASSERT_TRUE(counter.Start());
  EXPECT_FALSE(counter.Start());
  EXPECT_TRUE(counter.IsRunning());
  EXPECT_TRUE(Eventually([&] { return counter.Ticks() >= 3; }));
  EXPECT_TRUE(counter.Stop());
  EXPECT_FALSE(counter.IsRunning());
  const int ticks = counter.Ticks();
  std::this_thread::sleep_for(milliseconds(20));
  EXPECT_EQ(counter.Ticks(), ticks);
  EXPECT_FALSE(counter.Stop());
  ASSERT_TRUE(counter.Start());  // the quit event was reset
  EXPECT_TRUE(Eventually([&] { return counter.Ticks() > ticks; }));
}

TEST(TickThread, TicksOnceForEachSetOfTheEvent) {
  ScopedEvent event;
  Counter counter(event, INFINITE);
  ASSERT_TRUE(counter.Start());
  EXPECT_EQ(counter.GetTickEvent(), static_cast<HANDLE>(event));
  for (int tick = 1; tick <= 3; ++tick) {
    ZnSetEvent(event);
    EXPECT_TRUE(Eventually([&] { return counter.Ticks() == tick; }));
  }
  std::this_thread::sleep_for(milliseconds(20));
  EXPECT_EQ(counter.Ticks(), 3);
}

// The new time-out waits for the wait in progress to end; with INFINITE only the event ends it.
TEST(TickThread, ANewTimeOutTakesEffectAtTheNextWait) {
  ScopedEvent event;
  Counter counter(event, INFINITE);
  ASSERT_TRUE(counter.Start());
  std::this_thread::sleep_for(milliseconds(20));  // let it enter its endless wait
  counter.SetTimeOut(1);
  EXPECT_EQ(counter.GetTimeOut(), 1ul);
  std::this_thread::sleep_for(milliseconds(50));
  EXPECT_EQ(counter.Ticks(), 0);
  ZnSetEvent(event);
  EXPECT_TRUE(Eventually([&] { return counter.Ticks() >= 5; }));
}

TEST(TickThread, AnExceptionFromTickEndsTheThreadQuietly) {
  Counter counter(nullptr, 0, 2);
  ASSERT_TRUE(counter.Start());
  EXPECT_TRUE(Eventually([&] { return !counter.IsRunning(); }));
  EXPECT_EQ(counter.Ticks(), 2);
  ASSERT_TRUE(counter.Start());
  EXPECT_TRUE(Eventually([&] { return counter.Ticks() > 2; }));
}

// The exit code is the result of the last wait; the quit event wins over a set tick event.
TEST(TickThread, TheThreadsExitCodeIsItsLastWait) {
  ScopedEvent event;
  const struct {
    bool quitSet, tickSet;
    unsigned long timeOut;
    int throwAt;
    unsigned int exitCode;
    int ticks;
  } rows[] = {
      {true, true, 0, 0, WAIT_OBJECT_0, 0},
      {false, false, 0, 3, WAIT_TIMEOUT, 3},
      {false, true, INFINITE, 1, WAIT_OBJECT_0 + 1, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.exitCode);
    Counter counter(event, row.timeOut, row.throwAt);
    ZnResetEvent(event);
    if (row.quitSet) ZnSetEvent(counter.GetQuitEvent());
    if (row.tickSet) ZnSetEvent(event);
    EXPECT_EQ(counter.RunHere(), row.exitCode);
    EXPECT_EQ(counter.Ticks(), row.ticks);
  }
}

TEST(TickThread, AStartedBaseThreadRunsUntilDestroyed) {
  std::unique_ptr<TickThread> thread(new TickThread(1ul, true));
  EXPECT_TRUE(thread->IsRunning());
  EXPECT_EQ(thread->GetTimeOut(), 1ul);
  thread.reset();
}

// Copies share the thread and the quit event; the first destroyed ends both, and the other then
// answers as a stopped thread would, without harm.
TEST(TickThread, CopiesAreShallowAndTheSurvivorFindsTheThreadGone) {
  Counter original(nullptr, 1);
  ASSERT_TRUE(original.Start());
  {
    TickThread copy(original);
    EXPECT_TRUE(copy.IsRunning());
  }
  EXPECT_FALSE(original.IsRunning());
  const int ticks = original.Ticks();
  std::this_thread::sleep_for(milliseconds(20));
  EXPECT_EQ(original.Ticks(), ticks);
  EXPECT_TRUE(original.Stop());
  EXPECT_FALSE(original.Stop());
}

}  // namespace
