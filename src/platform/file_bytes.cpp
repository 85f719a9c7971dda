#include "platform/file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zenutl {
namespace platform {

namespace {

// Why a file of this mode is not read, or null for a regular file.
const char* RefusalOf(mode_t mode) {
  if (S_ISREG(mode)) return nullptr;
  return S_ISDIR(mode) ? std::strerror(EISDIR) : "not a regular file";
}

}  // namespace

// Stands for opening a module file and mapping its resources: a plain read of the whole file.
bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& reason,
                   std::size_t maxBytes) {
  bytes.clear();
  // A FIFO or device is refused before it is opened, and opened without waiting should it take
  // the file's place in between; the second check then refuses it.
  struct stat status;
  if (::stat(path.c_str(), &status) == 0 && RefusalOf(status.st_mode)) {
    reason = RefusalOf(status.st_mode);
    return false;
  }
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    reason = std::strerror(errno);
    return false;
  }
  std::string content;
  const char* failure = nullptr;
  if (::fstat(fd, &status) != 0) {
    failure = std::strerror(errno);
  } else {
    failure = RefusalOf(status.st_mode);
  }
  char chunk[65536];
  while (!failure) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got == 0) break;
    if (got < 0) {
      if (errno != EINTR) failure = std::strerror(errno);
    } else if (static_cast<std::size_t>(got) > maxBytes - content.size()) {
      failure = std::strerror(EFBIG);
    } else {
      content.append(chunk, static_cast<std::size_t>(got));
    }
  }
  ::close(fd);
  if (failure) {
    reason = failure;
    return false;
  }
  bytes.swap(content);
  return true;
}

}  // namespace platform
}  // namespace zenutl
