// MemUtil on the allocator's statistics: the bytes in use follow what the program allocates.
#include "zenutl/mem_util.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(MemUtil, UsedHeapFollowsALargeAllocationAndCountsNoBlocks) {
  int blocks = -1;
  const int before = MemUtil::GetUsedHeap(blocks);
  EXPECT_EQ(0, blocks);
  EXPECT_GT(before, 0);
  const int kSize = 8 << 20;
  std::unique_ptr<char[]> block(new char[kSize]);
  block[0] = 1;
  const int during = MemUtil::GetUsedHeap(blocks);
  block.reset();
  const int after = MemUtil::GetUsedHeap(blocks);
  // Loose bounds: the test framework allocates a little of its own meanwhile.
  EXPECT_GE(during - before, kSize);
  EXPECT_LT(during - before, kSize + (1 << 20));
  EXPECT_LT(after, during - kSize / 2);
}

TEST(MemUtil, CheckHeapFindsTheHeapInOrder) {
  EXPECT_EQ(CString("OK - end of heap"), MemUtil::CheckHeap());
}

}  // namespace
