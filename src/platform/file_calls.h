// The system calls through which the library writes, flushes, renames and removes files,
// gathered in one replaceable table so that tests can make them fail (a full disk, a short or
// interrupted write, an fsync or a rename refused) on real files, without a broken device.
// Every writer goes through it: the file helpers, WriteFileAtomically (and so the INI engine,
// the XML settings and the audit trail) and the log.
//
// Production code calls the wrappers below; they go through the installed table, which holds
// the real calls unless a test has put a ScopedFileCalls in place. Swap the table only while no
// other thread is doing file I/O through it.
//
// The entries are plain function pointers, so that reading the table costs nothing on the
// log's path. A replacement that has to remember something (a byte budget, a count of calls)
// keeps it in a static variable of the test.
//
// Error contract: nothing throws; each call answers as its POSIX namesake, with errno set.
#ifndef ZENUTL_PLATFORM_FILE_CALLS_H_
#define ZENUTL_PLATFORM_FILE_CALLS_H_

#include <sys/types.h>

#include <cstddef>

namespace zenutl {
namespace platform {

struct FileCalls {
  // Each behaves as the POSIX call: a result of -1 with errno set means failure; `write` may
  // also write fewer bytes than asked.
  ssize_t (*write)(int fd, const void* data, std::size_t size);
  int (*fsync)(int fd);
  int (*rename)(const char* from, const char* to);
  int (*renameNoReplace)(const char* from, const char* to);  // fails with EEXIST
  int (*unlink)(const char* path);
};

// The real system calls. A test starts from these and replaces the ones it means to fail.
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

// How far a WriteAll got.
struct WriteProgress {
  std::size_t written = 0;  // bytes that reached the file
  bool stalled = false;     // a write wrote nothing yet reported no error
};

// Writes all of `data`, retrying after interruptions and partial writes. False, with errno
// set, if a write fails or writes nothing (errno is EIO then). `progress`, if not null, tells
// how many bytes made it and whether it stopped because a write wrote nothing.
bool WriteAll(int fd, const void* data, std::size_t size, WriteProgress* progress = nullptr);
// fsync(2) through the table.
int Fsync(int fd);
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
