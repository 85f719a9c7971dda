#include "platform/file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zenutl {
namespace platform {

// Stands for opening a module file and mapping its resources: a plain read of the whole file.
bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& reason,
                   std::size_t limit) {
  bytes.clear();
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    reason = std::strerror(errno);
    return false;
  }
  struct stat status;
  if (::fstat(fd, &status) != 0) {
    reason = std::strerror(errno);
    ::close(fd);
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    reason = S_ISDIR(status.st_mode) ? std::strerror(EISDIR) : "not a regular file";
    ::close(fd);
    return false;
  }
  std::string content;
  char chunk[65536];
  for (;;) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      reason = std::strerror(errno);
      ::close(fd);
      return false;
    }
    if (static_cast<std::size_t>(got) > limit - content.size()) {
      // Checked while reading, not from the size: a file may grow, and /proc files tell none.
      reason = std::strerror(EFBIG);
      ::close(fd);
      return false;
    }
    content.append(chunk, static_cast<std::size_t>(got));
  }
  ::close(fd);
  bytes.swap(content);
  return true;
}

}  // namespace platform
}  // namespace zenutl
