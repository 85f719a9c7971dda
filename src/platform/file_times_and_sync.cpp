#include "platform/file_times_and_sync.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/file_calls.h"

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

namespace {

// Opens `path` with `flags` and fsyncs it. False with errno set on failure.
bool OpenAndSync(const std::string& path, int flags, std::string* error) {
  const int fd = ::open(path.c_str(), flags | O_CLOEXEC);
  bool synced = fd >= 0 && Fsync(fd) == 0;
  const int failure = errno;
  if (fd >= 0) ::close(fd);
  if (!synced) {
    if (error != nullptr) *error = "cannot sync '" + path + "': " + std::strerror(failure);
    errno = failure;
  }
  return synced;
}

}  // namespace

bool SyncFileAndFolder(const std::string& nativePath, std::string* error) {
  char resolved[PATH_MAX];
  const bool exists = ::realpath(nativePath.c_str(), resolved) != nullptr;
  const std::string file = exists ? resolved : nativePath;
  if (exists && !OpenAndSync(file, O_RDONLY, error)) return false;
  const std::string::size_type slash = file.rfind('/');
  const std::string folder = slash == std::string::npos ? "."
                             : slash == 0               ? "/"
                                                        : file.substr(0, slash);
  return OpenAndSync(folder, O_RDONLY | O_DIRECTORY, error);
}

}  // namespace platform
}  // namespace zenutl
