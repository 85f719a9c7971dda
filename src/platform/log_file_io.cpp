#include "platform/log_file_io.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <string>

#include "platform/native_path.h"

namespace zenutl {
namespace platform {
namespace {

std::atomic<WriteFunction> gWrite(&::write);

}  // namespace

std::FILE* OpenFile(const char* windowsPath, const char* mode) {
  std::string nativeMode;
  for (const char* c = mode; *c; ++c) {
    if (*c != 't') nativeMode += *c;
  }
  return std::fopen(ToNativePath(windowsPath).c_str(), nativeMode.c_str());
}

bool AppendRecord(std::FILE* file, const char* data, std::size_t size) {
  const int descriptor = fileno(file);
  const WriteFunction write = gWrite.load();
  std::size_t done = 0;
  while (done < size) {
    const ssize_t written = write(descriptor, data + done, size - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      // Take back the part of the record that made it, so the next record starts clean. The
      // file is opened for appending, so that part is the end of the file.
      const long long sizeNow = done > 0 ? WrittenFileSize(file) : -1;
      if (sizeNow >= static_cast<long long>(done)) {
        while (::ftruncate(descriptor,
                           static_cast<off_t>(sizeNow - static_cast<long long>(done))) != 0 &&
               errno == EINTR) {
        }
      }
      return false;
    }
    done += static_cast<std::size_t>(written);
  }
  return true;
}

long long OpenFileSize(std::FILE* file) {
  struct stat status;
  if (::fstat(fileno(file), &status) != 0) return -1;
  return static_cast<long long>(status.st_size);
}

long long WrittenFileSize(std::FILE* file) {
  return static_cast<long long>(::lseek(fileno(file), 0, SEEK_END));
}

long long FileModificationTime(const char* windowsPath) {
  struct stat status = {};
  if (::stat(ToNativePath(windowsPath).c_str(), &status) != 0) return 0;
  return static_cast<long long>(status.st_mtime);
}

bool RemoveFile(const char* windowsPath) {
  return std::remove(ToNativePath(windowsPath).c_str()) == 0;
}

bool RenameFile(const char* fromWindowsPath, const char* toWindowsPath) {
  return std::rename(ToNativePath(fromWindowsPath).c_str(), ToNativePath(toWindowsPath).c_str()) ==
         0;
}

void CurrentTime(long long* seconds, int* milliseconds) {
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  *seconds = static_cast<long long>(now.tv_sec);
  *milliseconds = static_cast<int>(now.tv_nsec / 1000000);
}

WriteFunction SetLogWriteFunction(WriteFunction write) {
  return gWrite.exchange(write ? write : &::write);
}

}  // namespace platform
}  // namespace zenutl
