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
#include <mutex>
#include <utility>

namespace zenutl {
namespace platform {
namespace {

std::mutex& HooksMutex() {
  static std::mutex mutex;
  return mutex;
}

AtomicFileHooks& InstalledHooks() {
  static AtomicFileHooks hooks = SystemAtomicFileHooks();
  return hooks;
}

AtomicFileHooks CurrentHooks() {
  std::lock_guard<std::mutex> lock(HooksMutex());
  AtomicFileHooks hooks = InstalledHooks();
  const AtomicFileHooks system = SystemAtomicFileHooks();
  if (!hooks.write) hooks.write = system.write;
  if (!hooks.fsync) hooks.fsync = system.fsync;
  if (!hooks.rename) hooks.rename = system.rename;
  return hooks;
}

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

// Creates an exclusive, hidden temporary beside `target`; the umask applies to 0666 as for any
// new file. Answers the descriptor or -1 with errno set.
int CreateTemporaryBeside(const std::string& target, std::string& temporary) {
  static std::atomic<unsigned> counter(0);
  const std::string::size_type slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
  const std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
  for (int attempt = 0; attempt < 100; ++attempt) {
    temporary = folder + "." + name + ".tmp." + std::to_string(::getpid()) + "." +
                std::to_string(counter.fetch_add(1)) + "." + std::to_string(attempt);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  errno = EEXIST;
  return -1;
}

bool WriteAll(const AtomicFileHooks& hooks, int fd, const std::string& bytes,
              const std::string& temporary, std::string* error) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t written = hooks.write(fd, bytes.data() + done, bytes.size() - done);
    if (written < 0) {
      if (errno == EINTR) continue;
      SetError(error, SystemError("write of '" + temporary + "' failed", errno));
      return false;
    }
    if (written == 0) {
      errno = EIO;
      SetError(error, "write of '" + temporary + "' failed: no bytes written (short write)");
      return false;
    }
    done += static_cast<std::size_t>(written);
  }
  return true;
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
  ::fsync(fd);  // Some file systems refuse this for folders; the rename has happened anyway.
  ::close(fd);
}

}  // namespace

AtomicFileHooks SystemAtomicFileHooks() {
  AtomicFileHooks hooks;
  hooks.write = [](int fd, const void* data, size_t size) { return ::write(fd, data, size); };
  hooks.fsync = [](int fd) { return ::fsync(fd); };
  hooks.rename = [](const char* from, const char* to) { return ::rename(from, to); };
  return hooks;
}

AtomicFileHooks SetAtomicFileHooks(AtomicFileHooks hooks) {
  std::lock_guard<std::mutex> lock(HooksMutex());
  std::swap(InstalledHooks(), hooks);
  return hooks;
}

bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes,
                         std::string* error, struct stat* written) {
  if (nativePath.empty()) {
    SetError(error, SystemError("cannot write a file with an empty name", ENOENT));
    return false;
  }
  const AtomicFileHooks hooks = CurrentHooks();
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
  if (failure == 0 && !WriteAll(hooks, fd, bytes, temporary, error)) {
    failure = errno != 0 ? errno : EIO;
  }
  if (failure == 0) {
    StampLaterThan(fd, hadFile ? &replaced : nullptr);
    if (hooks.fsync(fd) != 0) {
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
  if (failure == 0 && hooks.rename(temporary.c_str(), target.c_str()) != 0) {
    failure = errno;
    SetError(error,
             SystemError("rename of '" + temporary + "' to '" + target + "' failed", failure));
  }
  if (failure != 0) {
    ::unlink(temporary.c_str());
    errno = failure;
    return false;
  }
  SyncFolder(FolderOf(target));
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
