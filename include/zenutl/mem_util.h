// MemUtil: a glance at the process's heap for diagnostics, such as a log line after a large
// operation.
//
// On Linux these tell what the C library's allocator can tell. There is no walk over the heap's
// blocks as on Windows:
// - the size in use is the allocator's own figure for the bytes it has handed out and not yet
//   taken back: glibc's (mallinfo2: the in-use bytes of its arenas plus the blocks it maps
//   directly), or AddressSanitizer's when that serves malloc instead. Allocator overhead and
//   free blocks are not counted, so the figure may differ from a Windows walk by the size of
//   the block headers.
// - no allocator counts its blocks in use, so the block count stays 0.
// - glibc stops the process itself when it meets a damaged heap, so a check that returns at
//   all finds the heap in order.
//
// Error contract: nothing throws or reports.
#ifndef ZENUTL_MEM_UTIL_H_
#define ZENUTL_MEM_UTIL_H_

#include "zenutl/cstring.h"

class MemUtil {
 public:
  // The bytes in use on the heap, at most INT_MAX. `blockCount` is set to the number of blocks
  // in use as far as the allocator knows it, which on Linux is 0.
  static int GetUsedHeap(int& blockCount);

  // The state of the heap: "OK - end of heap" when it is in order, "OK - empty heap" while
  // nothing is allocated. The texts of a damaged heap on Windows ("ERROR - bad start of heap",
  // "ERROR - bad node in heap", "ERROR - bad pointer to heap", "Unknown status") never come
  // back on Linux, since glibc ends the process first.
  static CString CheckHeap();
};

#endif  // ZENUTL_MEM_UTIL_H_
