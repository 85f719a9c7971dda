#include "platform/file_calls.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace zenutl {
namespace platform {
namespace {

ssize_t SystemWrite(int fd, const void* data, std::size_t size) {
  return ::write(fd, data, size);
}

int SystemRename(const char* from, const char* to) {
  return ::rename(from, to);
}

// The Windows rename (MoveFile) refuses an existing target; renameat2 does the same atomically.
// File systems without RENAME_NOREPLACE get a hard link and an unlink, which also fails when
// the target exists.
int SystemRenameNoReplace(const char* from, const char* to) {
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
  struct stat info;
  if (::lstat(from, &info) != 0) return -1;
  if (S_ISDIR(info.st_mode)) {
    if (::lstat(to, &info) == 0) {
      errno = EEXIST;
      return -1;
    }
    return ::rename(from, to);
  }
  if (::link(from, to) != 0) return -1;
  return ::unlink(from);
}

int SystemUnlink(const char* path) {
  return ::unlink(path);
}

FileCalls& Installed() {
  static FileCalls calls = SystemFileCalls();
  return calls;
}

}  // namespace

FileCalls SystemFileCalls() {
  FileCalls calls;
  calls.write = &SystemWrite;
  calls.rename = &SystemRename;
  calls.renameNoReplace = &SystemRenameNoReplace;
  calls.unlink = &SystemUnlink;
  return calls;
}

ScopedFileCalls::ScopedFileCalls(const FileCalls& replacement) : mSaved(Installed()) {
  Installed() = replacement;
}

ScopedFileCalls::~ScopedFileCalls() {
  Installed() = mSaved;
}

bool WriteAll(int fd, const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = Installed().write(fd, next, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (written == 0) {
      errno = EIO;
      return false;
    }
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

int Rename(const char* from, const char* to) {
  return Installed().rename(from, to);
}

int RenameNoReplace(const char* from, const char* to) {
  return Installed().renameNoReplace(from, to);
}

int Unlink(const char* path) {
  return Installed().unlink(path);
}

}  // namespace platform
}  // namespace zenutl
