#include "platform/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include "platform/file_calls.h"

namespace zenutl {
namespace platform {
namespace {

std::string SystemError(const std::string& what, int error) {
  return what + ": " + std::strerror(error);
}

void SetError(std::string* error, const std::string& text) {
  if (error != nullptr) *error = text;
}

// The path that a rename must replace: a symbolic link's target rather than the link.
std::string ReplacementTarget(const std::string& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return path;
  char resolved[PATH_MAX];
  if (::realpath(path.c_str(), resolved) != nullptr) return resolved;
  return path;
}

std::string FolderOf(const std::string& path) {
  const std::string::size_type slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

bool WriteBytes(int fd, const std::string& bytes, const std::string& temporary,
                std::string* error) {
  WriteProgress progress;
  if (WriteAll(fd, bytes.data(), bytes.size(), &progress)) return true;
  const int failure = errno;
  if (progress.stalled) {
    SetError(error, "write of '" + temporary + "' failed: no bytes written (short write)");
  } else {
    SetError(error, SystemError("write of '" + temporary + "' failed", failure));
  }
  errno = failure;
  return false;
}

// Gives the new file a modification time later than the file it replaces, to the nanosecond.
void StampLaterThan(int fd, const struct stat* replaced) {
  struct timespec times[2];
  times[0].tv_sec = 0;
  times[0].tv_nsec = UTIME_OMIT;
  ::clock_gettime(CLOCK_REALTIME, &times[1]);
  if (replaced != nullptr) {
    const struct timespec& old = replaced->st_mtim;
    if (times[1].tv_sec < old.tv_sec ||
        (times[1].tv_sec == old.tv_sec && times[1].tv_nsec <= old.tv_nsec)) {
      times[1] = old;
      if (++times[1].tv_nsec == 1000000000L) {
        times[1].tv_nsec = 0;
        ++times[1].tv_sec;
      }
    }
  }
  ::futimens(fd, times);
}

void SyncFolder(const std::string& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  Fsync(fd);  // Some file systems refuse this for folders; the rename has happened anyway.
  ::close(fd);
}

}  // namespace

int CreateTemporaryBeside(const std::string& nativeTarget, std::string& temporary) {
  static std::atomic<unsigned> counter(0);
  const std::string::size_type slash = nativeTarget.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : nativeTarget.substr(0, slash + 1);
  const std::string name =
      slash == std::string::npos ? nativeTarget : nativeTarget.substr(slash + 1);
  for (int attempt = 0; attempt < 100; ++attempt) {
    temporary = folder + "." + name + ".tmp." + std::to_string(::getpid()) + "." +
                std::to_string(counter.fetch_add(1)) + "." + std::to_string(attempt);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  errno = EEXIST;
  return -1;
}

bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes,
                         std::string* error, struct stat* written, Durability durability) {
  if (nativePath.empty()) {
    SetError(error, SystemError("cannot write a file with an empty name", ENOENT));
    return false;
  }
  const std::string target = ReplacementTarget(nativePath);
  struct stat replaced;
  const bool hadFile = ::stat(target.c_str(), &replaced) == 0;

  std::string temporary;
  const int fd = CreateTemporaryBeside(target, temporary);
  if (fd < 0) {
    SetError(error, SystemError("cannot create a temporary file beside '" + target + "'", errno));
    return false;
  }
  int failure = 0;  // errno of the first step that failed
  if (hadFile && ::fchmod(fd, replaced.st_mode & 07777) != 0) {
    failure = errno;
    SetError(error, SystemError("cannot set the permissions of '" + temporary + "'", failure));
  }
  if (failure == 0 && !WriteBytes(fd, bytes, temporary, error)) {
    failure = errno;
  }
  if (failure == 0) {
    StampLaterThan(fd, hadFile ? &replaced : nullptr);
    if (durability == Durability::kPowerLoss && Fsync(fd) != 0) {
      failure = errno;
      SetError(error, SystemError("fsync of '" + temporary + "' failed", failure));
    }
  }
  if (failure == 0 && written != nullptr && ::fstat(fd, written) != 0) {
    failure = errno;
    SetError(error, SystemError("fstat of '" + temporary + "' failed", failure));
  }
  if (::close(fd) != 0 && failure == 0) {
    failure = errno;
    SetError(error, SystemError("close of '" + temporary + "' failed", failure));
  }
  if (failure == 0 && Rename(temporary.c_str(), target.c_str()) != 0) {
    failure = errno;
    SetError(error,
             SystemError("rename of '" + temporary + "' to '" + target + "' failed", failure));
  }
  if (failure != 0) {
    Unlink(temporary.c_str());
    errno = failure;
    return false;
  }
  if (durability == Durability::kPowerLoss) SyncFolder(FolderOf(target));
  return true;
}

ReplacingFileStream::ReplacingFileStream(std::string nativePath)
    : std::ostream(nullptr), mBuffer(std::move(nativePath)) {
  rdbuf(&mBuffer);
}

ReplacingFileStream::~ReplacingFileStream() {
  // A stream whose replacement already failed leaves the file alone from then on: its writer
  // has been told, and a later success would contradict what it was told.
  if (good() && mBuffer.Dirty()) mBuffer.pubsync();
}

int ReplacingFileStream::Buffer::sync() {
  if (!WriteFileAtomically(mPath, str(), nullptr)) return -1;
  mDirty = false;
  return 0;
}

std::streamsize ReplacingFileStream::Buffer::xsputn(const char* data, std::streamsize count) {
  mDirty = true;
  return std::stringbuf::xsputn(data, count);
}

ReplacingFileStream::Buffer::int_type ReplacingFileStream::Buffer::overflow(int_type ch) {
  mDirty = true;
  return std::stringbuf::overflow(ch);
}

}  // namespace platform
}  // namespace zenutl
