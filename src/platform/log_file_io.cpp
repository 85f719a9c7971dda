#include "platform/log_file_io.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <string>

#include "platform/file_calls.h"
#include "platform/native_path.h"

namespace zenutl {
namespace platform {

std::FILE* OpenFile(const char* windowsPath, const char* mode) {
  std::string nativeMode;
  for (const char* c = mode; *c; ++c) {
    if (*c != 't') nativeMode += *c;
  }
  return std::fopen(ToNativePath(windowsPath).c_str(), nativeMode.c_str());
}

std::FILE* OpenLogFile(const char* windowsPath) {
  const std::string path = ToNativePath(windowsPath);
  std::FILE* file = std::fopen(path.c_str(), "a+");
  if (file == nullptr && errno == EACCES) file = std::fopen(path.c_str(), "a");
  return file;
}

bool AppendRecord(std::FILE* file, const char* data, std::size_t size) {
  const int descriptor = fileno(file);
  WriteProgress progress;
  if (WriteAll(descriptor, data, size, &progress)) return true;
  // Take back the part of the record that made it, so the next record starts clean. The file
  // is opened for appending, so that part is the end of the file.
  const long long done = static_cast<long long>(progress.written);
  const long long sizeNow =
      done > 0 ? static_cast<long long>(::lseek(descriptor, 0, SEEK_END)) : -1;
  if (sizeNow >= done) {
    while (::ftruncate(descriptor, static_cast<off_t>(sizeNow - done)) != 0 && errno == EINTR) {
    }
  }
  return false;
}

long long OpenFileSize(std::FILE* file) {
  struct stat status;
  if (::fstat(fileno(file), &status) != 0) return -1;
  return static_cast<long long>(status.st_size);
}

bool TryLockAlone(std::FILE* file) {
  int result;
  while ((result = ::flock(fileno(file), LOCK_EX | LOCK_NB)) != 0 && errno == EINTR) {
  }
  return result == 0;
}

void LockShared(std::FILE* file) {
  // Another log has the file alone only while it mends it, a matter of milliseconds. A program
  // that keeps it locked for good must not hang the log, which then goes on without the lock.
  for (int attempt = 0; attempt < 2000; ++attempt) {
    if (::flock(fileno(file), LOCK_SH | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR)) {
      return;
    }
    ::usleep(1000);
  }
}

long long ReadAt(std::FILE* file, long long offset, char* buffer, std::size_t size) {
  ssize_t got;
  while ((got = ::pread(fileno(file), buffer, size, static_cast<off_t>(offset))) < 0 &&
         errno == EINTR) {
  }
  return static_cast<long long>(got);
}

bool TruncateOpenFile(std::FILE* file, long long size) {
  int result;
  while ((result = ::ftruncate(fileno(file), static_cast<off_t>(size))) != 0 && errno == EINTR) {
  }
  return result == 0;
}

long long FileModificationTime(const char* windowsPath) {
  struct stat status = {};
  if (::stat(ToNativePath(windowsPath).c_str(), &status) != 0) return 0;
  return static_cast<long long>(status.st_mtime);
}

bool MoveLogAside(const char* logWindowsPath, const char* backupWindowsPath) {
  const std::string log = ToNativePath(logWindowsPath);
  const std::string backup = ToNativePath(backupWindowsPath);
  struct stat existing;
  if (::lstat(backup.c_str(), &existing) == 0 && S_ISREG(existing.st_mode) &&
      ::renameat2(AT_FDCWD, log.c_str(), AT_FDCWD, backup.c_str(), RENAME_EXCHANGE) == 0) {
    Unlink(log.c_str());
    return true;
  }
  return Rename(log.c_str(), backup.c_str()) == 0;
}

void CurrentTime(long long* seconds, int* milliseconds) {
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  *seconds = static_cast<long long>(now.tv_sec);
  *milliseconds = static_cast<int>(now.tv_nsec / 1000000);
}

}  // namespace platform
}  // namespace zenutl
