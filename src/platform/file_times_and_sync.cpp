#include "platform/file_times_and_sync.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>

namespace zenutl {
namespace platform {

namespace {
// Seconds from 1601-01-01 to 1970-01-01, both UTC.
const std::int64_t kSecondsFrom1601To1970 = 11644473600LL;
}  // namespace

bool GetLastWriteFileTime(const std::string& nativePath, FILETIME& lastWritten) {
  struct stat status;
  if (::stat(nativePath.c_str(), &status) != 0) return false;
  const std::uint64_t ticks =
      static_cast<std::uint64_t>(status.st_mtim.tv_sec + kSecondsFrom1601To1970) * 10000000ULL +
      static_cast<std::uint64_t>(status.st_mtim.tv_nsec) / 100;
  lastWritten.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFFULL);
  lastWritten.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  return true;
}

bool SyncFileSystemHolding(const std::string& nativePath) {
  const int fd = ::open(nativePath.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool synced = ::syncfs(fd) == 0;
  ::close(fd);
  return synced;
}

}  // namespace platform
}  // namespace zenutl
