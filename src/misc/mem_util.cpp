// MemUtil on the allocator's statistics; see mem_util.h for how they stand for a heap walk.
#include "zenutl/mem_util.h"

#include <climits>

#include "platform/heap_statistics.h"

int MemUtil::GetUsedHeap(int& blockCount) {
  blockCount = 0;
  const std::size_t used = zenutl::platform::HeapBytesInUse();
  return used > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(used);
}

CString MemUtil::CheckHeap() {
  // A damaged heap stops the process inside glibc before it could be reported here, so of the
  // walk's outcomes only its two good ones remain.
  return CString(zenutl::platform::HeapBytesInUse() == 0 ? "OK - empty heap" : "OK - end of heap");
}
