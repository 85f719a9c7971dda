#include "zenutl/zn_event.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "concurrency/scoped_event.h"

namespace {

using zenutl_test::ScopedEvent;

TEST(ZnEvent, AnAutoResetEventLetsOneWaitThroughPerSetAManualOneUntilReset) {
  for (bool manual : {false, true}) {
    SCOPED_TRACE(manual ? "manual" : "auto");
    ScopedEvent event(manual, true);
    ASSERT_NE(static_cast<HANDLE>(event), nullptr);
    EXPECT_EQ(ZnWaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(ZnWaitForSingleObject(event, 0), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
    EXPECT_TRUE(ZnResetEvent(event));
    EXPECT_EQ(ZnWaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(ZnSetEvent(event));
    EXPECT_TRUE(ZnSetEvent(event));  // sets don't add up
    EXPECT_EQ(ZnWaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(ZnWaitForSingleObject(event, 0), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
  }
}

TEST(ZnEvent, AWaitForSeveralTakesTheFirstSetOneOnly) {
  ScopedEvent first(false, false), second(false, true), third(false, true);
  const HANDLE events[] = {first, second, third};
  EXPECT_EQ(ZnWaitForMultipleObjects(3, events, 0), WAIT_OBJECT_0 + 1);
  EXPECT_EQ(ZnWaitForMultipleObjects(3, events, 0), WAIT_OBJECT_0 + 2);
  EXPECT_EQ(ZnWaitForMultipleObjects(3, events, 0), WAIT_TIMEOUT);
  ZnSetEvent(first);
  ZnSetEvent(third);
  EXPECT_EQ(ZnWaitForMultipleObjects(3, events, 0), WAIT_OBJECT_0);
  EXPECT_EQ(ZnWaitForSingleObject(third, 0), WAIT_OBJECT_0);
}

TEST(ZnEvent, AWaitEndsWhenAnotherThreadSetsTheEventOrWhenTimeIsUp) {
  ScopedEvent idle(false, false), wake(false, false);
  const HANDLE events[] = {idle, wake};
  DWORD result = 0;
  std::thread waiter([&] { result = ZnWaitForMultipleObjects(2, events, INFINITE); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  ZnSetEvent(wake);
  waiter.join();
  EXPECT_EQ(result, WAIT_OBJECT_0 + 1);

  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ZnWaitForMultipleObjects(2, events, 50), WAIT_TIMEOUT);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(ZnEvent, HandlesThatAreNotOpenEventsFailWithoutHarm) {
  const HANDLE closed = ZnCreateEvent(false, true);
  EXPECT_TRUE(ZnCloseHandle(closed));
  ScopedEvent open(false, true);
  for (HANDLE bad : {closed, static_cast<HANDLE>(nullptr), reinterpret_cast<HANDLE>(~0ul)}) {
    EXPECT_FALSE(ZnSetEvent(bad));
    EXPECT_FALSE(ZnResetEvent(bad));
    EXPECT_FALSE(ZnCloseHandle(bad));
    EXPECT_EQ(ZnWaitForSingleObject(bad, 0), WAIT_FAILED);
    const HANDLE pair[] = {open, bad};
    EXPECT_EQ(ZnWaitForMultipleObjects(2, pair, 0), WAIT_FAILED);
  }
  const std::vector<HANDLE> many(MAXIMUM_WAIT_OBJECTS + 1, open);
  EXPECT_EQ(ZnWaitForMultipleObjects(0, many.data(), 0), WAIT_FAILED);
  EXPECT_EQ(ZnWaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS + 1, many.data(), 0), WAIT_FAILED);
  EXPECT_EQ(ZnWaitForMultipleObjects(1, nullptr, 0), WAIT_FAILED);
  EXPECT_EQ(ZnWaitForSingleObject(open, 0), WAIT_OBJECT_0);  // untouched by the failures
}

}  // namespace
