#include "platform/file_move.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/file_calls.h"
#include "platform/native_path.h"

namespace zenutl {
namespace platform {
namespace {

bool CopyContent(int source, int target) {
  char buffer[65536];
  for (;;) {
    const ssize_t got = ::read(source, buffer, sizeof(buffer));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) return true;
    if (!WriteAll(target, buffer, static_cast<std::size_t>(got))) return false;
  }
}

// Clean-up after a failure keeps the errno of the failure.
void CloseKeepingError(int fd) {
  const int error = errno;
  ::close(fd);
  errno = error;
}
void RemoveKeepingError(const std::string& path) {
  const int error = errno;
  Unlink(path.c_str());
  errno = error;
}

// Writes a copy of the regular file `from` to the new file `to` and syncs it; false, with errno
// set and no `to` left behind, on any failure.
bool CopyToNewFile(const std::string& from, const struct stat& original, const std::string& to) {
  const int source = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (source < 0) return false;
  const int target = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (target < 0) {
    CloseKeepingError(source);
    return false;
  }
  // The owner first: changing it may clear the set-id bits that fchmod then puts back. Only a
  // privileged process may give a file away, so a refusal there is no failure.
  if (::fchown(target, original.st_uid, original.st_gid) != 0) errno = 0;
  const struct timespec times[2] = {original.st_atim, original.st_mtim};
  const bool copied = CopyContent(source, target) &&
                      ::fchmod(target, original.st_mode & 07777) == 0 &&
                      ::futimens(target, times) == 0 && Fsync(target) == 0;
  CloseKeepingError(source);
  if (!copied) CloseKeepingError(target);
  if (!copied || ::close(target) != 0) {
    RemoveKeepingError(to);
    return false;
  }
  return true;
}

int MoveFileAcrossFileSystems(const std::string& from, const std::string& to) {
  struct stat original;
  if (::lstat(from.c_str(), &original) != 0) return -1;
  if (!S_ISREG(original.st_mode)) {
    errno = EXDEV;
    return -1;
  }
  if (!CopyToNewFile(from, original, to)) return -1;
  if (Unlink(from.c_str()) != 0) {
    // An original that stays makes this a copy, not a move: take the copy back.
    RemoveKeepingError(to);
    return -1;
  }
  return 0;
}

}  // namespace

int MovePathNoReplace(const char* from, const char* to) {
  const std::string nativeFrom = ToNativePath(from);
  const std::string nativeTo = ToNativePath(to);
  if (RenameNoReplace(nativeFrom.c_str(), nativeTo.c_str()) == 0) return 0;
  if (errno != EXDEV) return -1;
  return MoveFileAcrossFileSystems(nativeFrom, nativeTo);
}

}  // namespace platform
}  // namespace zenutl
