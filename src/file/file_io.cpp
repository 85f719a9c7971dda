#include "file/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file_system.h"

namespace zenutl {
namespace file {

FileDescriptor::~FileDescriptor() {
  if (mFd >= 0) ::close(mFd);
}

bool FileDescriptor::Close() {
  const int fd = mFd;
  mFd = -1;
  return fd >= 0 && ::close(fd) == 0;
}

int OpenFileForReading(const char* path) {
  const int fd = platform::OpenPath(path, O_RDONLY);
  if (fd < 0) return -1;
  struct stat info;
  if (::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
    ::close(fd);
    errno = EISDIR;
    return -1;
  }
  return fd;
}

ssize_t ReadBlock(int fd, void* buffer, std::size_t size) {
  char* next = static_cast<char*>(buffer);
  std::size_t total = 0;
  while (total < size) {
    const ssize_t got = ::read(fd, next + total, size - total);
    if (got < 0) {
      if (errno == EINTR) continue;
      return -1;
    }
    if (got == 0) break;
    total += static_cast<std::size_t>(got);
  }
  return static_cast<ssize_t>(total);
}

}  // namespace file
}  // namespace zenutl
