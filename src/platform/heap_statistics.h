// The allocator's own statistics, standing for the Windows runtime's heap walk (_heapwalk).
//
// Windows walks the heap block by block; Linux allocators only keep totals. The bytes in use
// come from whichever allocator serves malloc: AddressSanitizer's when the process runs under
// it, else glibc's mallinfo2.
#ifndef ZENUTL_PLATFORM_HEAP_STATISTICS_H_
#define ZENUTL_PLATFORM_HEAP_STATISTICS_H_

#include <cstddef>

namespace zenutl {
namespace platform {

// Bytes handed out by malloc and not yet freed.
std::size_t HeapBytesInUse();

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_HEAP_STATISTICS_H_
