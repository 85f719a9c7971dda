// The system calls through which the library writes, renames and removes files, gathered in
// one replaceable table so that tests can make them fail (a full disk, a short write, a rename
// refused) without needing a real broken device.
//
// Production code calls the wrappers below; they go through the installed table, which holds
// the real calls unless a test has put a ScopedFileCalls in place. Swap the table only while no
// other thread is doing file I/O through it.
#ifndef ZENUTL_PLATFORM_FILE_CALLS_H_
#define ZENUTL_PLATFORM_FILE_CALLS_H_

#include <sys/types.h>

#include <cstddef>

namespace zenutl {
namespace platform {

struct FileCalls {
  // Each behaves as the POSIX call: a result of -1 with errno set means failure.
  ssize_t (*write)(int fd, const void* data, std::size_t size);
  int (*rename)(const char* from, const char* to);
  int (*renameNoReplace)(const char* from, const char* to);  // fails with EEXIST
  int (*unlink)(const char* path);
};

// The real system calls.
FileCalls SystemFileCalls();

// Installs `replacement` for the life of the object; the previous table comes back afterwards.
class ScopedFileCalls {
 public:
  explicit ScopedFileCalls(const FileCalls& replacement);
  ~ScopedFileCalls();
  ScopedFileCalls(const ScopedFileCalls&) = delete;
  ScopedFileCalls& operator=(const ScopedFileCalls&) = delete;

 private:
  FileCalls mSaved;
};

// Writes all of `data`, retrying after interruptions and partial writes. False, with errno
// set, if a write fails or writes nothing.
bool WriteAll(int fd, const void* data, std::size_t size);
// rename(2) through the table: replaces `to` if it exists.
int Rename(const char* from, const char* to);
// Renames but fails with EEXIST instead of replacing `to`, as a Windows rename does; through
// the table.
int RenameNoReplace(const char* from, const char* to);
// unlink(2) through the table.
int Unlink(const char* path);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_FILE_CALLS_H_
