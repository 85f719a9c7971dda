// A process that has run out of file handles, for tests of what happens when a file that is
// there cannot be opened right now (EMFILE).
#ifndef ZENUTL_TESTS_SUPPORT_FILE_HANDLE_SHORTAGE_H_
#define ZENUTL_TESTS_SUPPORT_FILE_HANDLE_SHORTAGE_H_

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace zenutl_test {

// Lowers the limit on open files to at most 256 and opens handles until none are left; gives
// them back at its end (the lowered limit stays). Use it in a child process. The sanitizers
// need handles to check a type they meet for the first time, so run the code under test once
// before the shortage.
class FileHandleShortage {
 public:
  FileHandleShortage() {
    struct rlimit limit;
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, 256);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    for (int fd; (fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) held_.push_back(fd);
  }
  ~FileHandleShortage() {
    for (const int fd : held_) ::close(fd);
  }
  FileHandleShortage(const FileHandleShortage&) = delete;
  FileHandleShortage& operator=(const FileHandleShortage&) = delete;

 private:
  std::vector<int> held_;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_FILE_HANDLE_SHORTAGE_H_
