#include "platform/atomic_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/file_calls.h"

namespace zenutl {
namespace platform {
namespace {

const char kTemporaryMark[] = ".tmp.";
// A temporary unlocked and unchanged for this long has no writer, whatever its process id says.
const long kAbandonedAfterSeconds = 60;

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

// Stamps a later modification time and, where the write must survive a power loss, flushes to
// the disk; 0, or the errno of the failure.
int StampAndSync(int fd, const struct stat* replaced, const std::string& path, std::string* error,
                 Durability durability = Durability::kPowerLoss) {
  StampLaterThan(fd, replaced);
  if (durability == Durability::kProcessCrash || Fsync(fd) == 0) return 0;
  const int failure = errno;
  SetError(error, SystemError("fsync of '" + path + "' failed", failure));
  return failure;
}

// A file may be replaced only where it could have been written in place: a regular file this
// process may write, with at least one write permission bit. Root passes every permission
// check, so the bits stand in for the read-only attribute that binds every user.
bool MayBeWritten(const std::string& target, const struct stat& info, std::string* error) {
  int refusal = 0;
  if (!S_ISREG(info.st_mode)) {
    refusal = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
  } else if ((info.st_mode & 0222) == 0) {
    refusal = EACCES;
  } else if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
    refusal = errno;
  }
  if (refusal == 0) return true;
  SetError(error, SystemError("cannot write '" + target + "'", refusal));
  errno = refusal;
  return false;
}

// Writes the replacement into the temporary `fd` at `path` with the permissions of `replaced`
// (null for a new file) and flushes it to the disk; 0, or the errno of the step that failed.
int FillTemporary(int fd, const std::string& path, const std::string& bytes,
                  const struct stat* replaced, std::string* error, struct stat* written,
                  Durability durability) {
  if (replaced != nullptr && ::fchmod(fd, replaced->st_mode & 07777) != 0) {
    const int failure = errno;
    SetError(error, SystemError("cannot set the permissions of '" + path + "'", failure));
    return failure;
  }
  if (!WriteBytes(fd, bytes, path, error)) return errno;  // WriteBytes keeps errno for this
  const int failure = StampAndSync(fd, replaced, path, error, durability);
  if (failure != 0 || written == nullptr || ::fstat(fd, written) == 0) return failure;
  const int fstatFailure = errno;
  SetError(error, SystemError("fstat of '" + path + "' failed", fstatFailure));
  return fstatFailure;
}

// Gives the temporary the replaced file's owner and group. False if that is not allowed.
bool TakeOwner(int fd, const struct stat& replaced) {
  struct stat own;
  if (::fstat(fd, &own) != 0) return false;
  if (own.st_uid == replaced.st_uid && own.st_gid == replaced.st_gid) return true;
  return ::fchown(fd, replaced.st_uid, replaced.st_gid) == 0;
}

// Writes `bytes` into the file itself: for a file whose folder refuses new files, or whose owner
// a replacement could not keep. The room is claimed first, so that a full disk refuses the write
// before any byte of the old content is gone; a failure later on leaves the file partly written.
bool WriteInPlace(const std::string& target, const std::string& bytes, const struct stat& replaced,
                  std::string* error, struct stat* written) {
  const int fd = ::open(target.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) {
    const int failure = errno;
    SetError(error, SystemError("cannot open '" + target + "' for writing", failure));
    errno = failure;
    return false;
  }
  int failure = 0;
  const off_t size = static_cast<off_t>(bytes.size());
  if (size > replaced.st_size && ::fallocate(fd, 0, 0, size) != 0 && errno != EOPNOTSUPP &&
      errno != ENOSYS) {
    failure = errno;
    SetError(error, SystemError("cannot make room in '" + target + "'", failure));
  }
  if (failure == 0 && !WriteBytes(fd, bytes, target, error)) failure = errno;
  if (failure == 0 && ::ftruncate(fd, size) != 0) {
    failure = errno;
    SetError(error, SystemError("cannot truncate '" + target + "'", failure));
  }
  if (failure == 0) failure = StampAndSync(fd, &replaced, target, error);
  if (failure == 0 && written != nullptr && ::fstat(fd, written) != 0) {
    failure = errno;
    SetError(error, SystemError("fstat of '" + target + "' failed", failure));
  }
  ::close(fd);
  errno = failure;
  return failure == 0;
}

// The process id at the start of "<pid>.<n>.<attempt>", the end of a temporary's name; 0 when
// `numbers` has another form.
pid_t WriterPid(const char* numbers) {
  long long pid = 0;
  for (int field = 0; field < 3; ++field) {
    if (!std::isdigit(static_cast<unsigned char>(*numbers))) return 0;
    long long value = 0;
    for (; std::isdigit(static_cast<unsigned char>(*numbers)); ++numbers) {
      if (value < INT_MAX) value = value * 10 + (*numbers - '0');
    }
    if (field == 0) pid = value;
    if (*numbers != (field < 2 ? '.' : '\0')) return 0;
    ++numbers;
  }
  return pid > 0 && pid < INT_MAX ? static_cast<pid_t>(pid) : 0;
}

bool ProcessRuns(pid_t pid) {
  return ::kill(pid, 0) == 0 || errno == EPERM;
}

// Removes the temporary at `path` if no writer holds it: unlocked, and either its writer's
// process is gone or the file has not changed for a minute (the id then belongs to another
// process, or to a writer on another machine sharing the folder).
// Answers whether it removed it.
bool RemoveIfAbandoned(const std::string& path, pid_t writer) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat opened;
  struct stat named;
  bool removed = false;
  if (::flock(fd, LOCK_EX | LOCK_NB) == 0 && ::fstat(fd, &opened) == 0 &&
      ::lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
      opened.st_ino == named.st_ino && S_ISREG(opened.st_mode)) {
    const bool quiet = std::time(nullptr) - opened.st_ctim.tv_sec > kAbandonedAfterSeconds;
    removed = (quiet || !ProcessRuns(writer)) && Unlink(path.c_str()) == 0;
  }
  ::close(fd);
  return removed;
}

// Looking through a large folder costs more than the write itself, so a target whose folder
// held no temporary of it at the last look is looked at again only after a second: a writer
// killed meanwhile leaves its temporary for a moment longer, and the next process to write
// there always looks at once.
class RecentlyTidied {
 public:
  bool Contains(const std::string& target) {
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mTidied.find(target);
    return found != mTidied.end() &&
           std::chrono::steady_clock::now() - found->second < std::chrono::seconds(1);
  }
  void Record(const std::string& target, bool tidy) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (!tidy) {
      mTidied.erase(target);
      return;
    }
    if (mTidied.size() >= 1000) mTidied.clear();  // bounded: a hint, not a register
    mTidied[target] = std::chrono::steady_clock::now();
  }

 private:
  std::mutex mMutex;
  std::unordered_map<std::string, std::chrono::steady_clock::time_point> mTidied;
};

void TidyBeside(const std::string& nativeTarget) {
  static RecentlyTidied* const tidied = new RecentlyTidied;  // never destroyed: used at exit
  if (tidied->Contains(nativeTarget)) return;
  tidied->Record(nativeTarget, RemoveStaleTemporaries(nativeTarget) == 0);
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
  TidyBeside(nativeTarget);
  const std::string::size_type slash = nativeTarget.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : nativeTarget.substr(0, slash + 1);
  const std::string name =
      slash == std::string::npos ? nativeTarget : nativeTarget.substr(slash + 1);
  for (int attempt = 0; attempt < 100; ++attempt) {
    temporary = folder + "." + name + kTemporaryMark + std::to_string(::getpid()) + "." +
                std::to_string(counter.fetch_add(1)) + "." + std::to_string(attempt);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0) {
      // Held until the descriptor closes; a cleaner that cannot take it leaves the file alone.
      while (::flock(fd, LOCK_EX) != 0 && errno == EINTR) {
      }
      return fd;
    }
    if (errno != EEXIST) return -1;
  }
  errno = EEXIST;
  return -1;
}

bool IsTemporaryName(const std::string& fileName) {
  const std::string::size_type mark = fileName.rfind(kTemporaryMark);
  return fileName[0] == '.' && mark != std::string::npos && mark > 1 &&
         WriterPid(fileName.c_str() + mark + std::strlen(kTemporaryMark)) > 0;
}

int RemoveStaleTemporaries(const std::string& nativeTarget) {
  const std::string::size_type slash = nativeTarget.rfind('/');
  const std::string prefix =
      "." + (slash == std::string::npos ? nativeTarget : nativeTarget.substr(slash + 1)) +
      kTemporaryMark;
  const std::string folder = FolderOf(nativeTarget);
  DIR* directory = ::opendir(folder.c_str());
  if (directory == nullptr) return 0;
  std::vector<std::pair<std::string, pid_t> > found;
  while (const struct dirent* entry = ::readdir(directory)) {
    if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) != 0) continue;
    const pid_t writer = WriterPid(entry->d_name + prefix.size());
    if (writer > 0) found.emplace_back(folder + "/" + entry->d_name, writer);
  }
  ::closedir(directory);
  int remaining = 0;
  for (const auto& temporary : found) {
    if (!RemoveIfAbandoned(temporary.first, temporary.second)) ++remaining;
  }
  return remaining;
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
  if (hadFile && !MayBeWritten(target, replaced, error)) return false;

  std::string temporary;
  const int fd = CreateTemporaryBeside(target, temporary);
  if (fd < 0) {
    const int failure = errno;
    // A folder that refuses new files may still hold a file its user may write.
    if (hadFile && (failure == EACCES || failure == EPERM)) {
      return WriteInPlace(target, bytes, replaced, error, written);
    }
    SetError(error, SystemError("cannot create a temporary file beside '" + target + "'", failure));
    errno = failure;
    return false;
  }
  if (hadFile && !TakeOwner(fd, replaced)) {
    // Only the file itself carries its owner on: a replacement would belong to this process.
    ::close(fd);
    Unlink(temporary.c_str());
    return WriteInPlace(target, bytes, replaced, error, written);
  }
  int failure = FillTemporary(fd, temporary, bytes, hadFile ? &replaced : nullptr, error, written,
                              durability);
  // Renamed while still open and locked, so that no other writer takes it for abandoned.
  if (failure == 0 && Rename(temporary.c_str(), target.c_str()) != 0) {
    failure = errno;
    SetError(error,
             SystemError("rename of '" + temporary + "' to '" + target + "' failed", failure));
  }
  if (failure != 0) {
    Unlink(temporary.c_str());
    ::close(fd);
    errno = failure;
    return false;
  }
  ::close(fd);  // the bytes are in the file already; on the disk too unless kProcessCrash
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
