#include "platform/heap_statistics.h"

#include <malloc.h>

// Present when AddressSanitizer's allocator serves malloc; glibc's statistics then see only
// what the sanitizer's runtime allocates for itself.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace zenutl {
namespace platform {

std::size_t HeapBytesInUse() {
  if (__sanitizer_get_current_allocated_bytes != nullptr) {
    return __sanitizer_get_current_allocated_bytes();
  }
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

}  // namespace platform
}  // namespace zenutl
