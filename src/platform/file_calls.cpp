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

int SystemFsync(int fd) {
  return ::fsync(fd);
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
  calls.fsync = &SystemFsync;
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

bool WriteAll(int fd, const void* data, std::size_t size, WriteProgress* progress) {
  WriteProgress local;
  WriteProgress& made = progress != nullptr ? *progress : local;
  made = WriteProgress();
  const char* next = static_cast<const char*>(data);
  while (made.written < size) {
    const ssize_t written = Installed().write(fd, next + made.written, size - made.written);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (written == 0) {
      made.stalled = true;
      errno = EIO;
      return false;
    }
    made.written += static_cast<std::size_t>(written);
  }
  return true;
}

int Fsync(int fd) {
  return Installed().fsync(fd);
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
