// A disk with no room left, for tests of what writers do when the system refuses their bytes.
#ifndef ZENUTL_TESTS_SUPPORT_FULL_DISK_H_
#define ZENUTL_TESTS_SUPPORT_FULL_DISK_H_

#include <sys/types.h>

#include <cerrno>
#include <cstddef>

#include "platform/file_calls.h"

namespace zenutl_test {

// A write(2) that fails as on a full disk.
inline ssize_t WriteToFullDisk(int, const void*, std::size_t) {
  errno = ENOSPC;
  return -1;
}

// The system's calls, except that every write fails with ENOSPC. Install with
// zenutl::platform::ScopedFileCalls.
inline zenutl::platform::FileCalls FullDiskCalls() {
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.write = &WriteToFullDisk;
  return calls;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_FULL_DISK_H_
