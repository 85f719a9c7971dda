// GetNearUniqueID: consecutive, unique across threads, wrapping where it must, and seeded from
// the local time since New Year.
#include "zenutl/near_unique_id.h"

#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <cstdlib>
#include <thread>
#include <vector>

#include "misc/near_unique_id_internal.h"
#include "support/child_process.h"

namespace {

TEST(GetNearUniqueID, CountsOnByOneAndWrapsAfterItsLastValue) {
  const unsigned long first = GetNearUniqueID();
  EXPECT_EQ(first + 1, GetNearUniqueID());

  zenutl::detail::SetNearUniqueIDCounter(0xC271D4FE);
  const unsigned long expected[] = {0xC271D4FE, 0xC271D4FF, 0xC271D500, 0, 1, 2};
  for (unsigned long value : expected) EXPECT_EQ(value, GetNearUniqueID());
}

TEST(GetNearUniqueID, GivesEveryThreadDifferentNumbers) {
  zenutl::detail::SetNearUniqueIDCounter(1000);
  const int kThreads = 8, kCalls = 5000;
  std::vector<std::vector<unsigned long>> seen(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&seen, t] {
      for (int i = 0; i < kCalls; ++i) seen[t].push_back(GetNearUniqueID());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<unsigned long> all;
  for (const auto& values : seen) all.insert(all.end(), values.begin(), values.end());
  std::sort(all.begin(), all.end());
  ASSERT_EQ(static_cast<std::size_t>(kThreads * kCalls), all.size());
  EXPECT_EQ(all.end(), std::adjacent_find(all.begin(), all.end()));
  EXPECT_EQ(1000u, all.front());
  EXPECT_EQ(1000u + kThreads * kCalls - 1, all.back());
}

TEST(GetNearUniqueID, StartsAtTheHundredthsOfASecondSinceTheLocalNewYear) {
  zenutl_test::ExpectPassesInChild([] {
    for (const char* zone : {"Asia/Kolkata", "America/New_York", "UTC"}) {
      ::setenv("TZ", zone, 1);
      ::tzset();
      zenutl::detail::ForgetNearUniqueIDSeed();
      const time_t now = ::time(nullptr);
      const unsigned long first = GetNearUniqueID();
      tm local{};
      ::localtime_r(&now, &local);
      // Seconds since New Year on the wall clock: days before today plus the time of day.
      const long long seconds =
          local.tm_yday * 86400LL + local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
      EXPECT_GE(static_cast<long long>(first), seconds * 100 - 100) << zone;
      EXPECT_LE(static_cast<long long>(first), seconds * 100 + 300) << zone;
    }
  });
}

}  // namespace
