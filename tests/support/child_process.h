// Runs part of a test in a forked child process.
//
// For what a test must not do to the test program itself: create a process-wide object that
// lives until exit, lower a resource limit, or crash. Assertions inside the child print their
// messages as usual; the child's exit status carries the verdict back to the parent.
#ifndef ZENUTL_TESTS_SUPPORT_CHILD_PROCESS_H_
#define ZENUTL_TESTS_SUPPORT_CHILD_PROCESS_H_

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <functional>

// Present when the program is built with the leak sanitizer; _exit would skip its check.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace zenutl_test {

// Runs `body` in a child and fails the calling test unless the child ends normally without an
// assertion failure. Call it while the test program has no other threads.
inline void ExpectPassesInChild(const std::function<void()>& body) {
  std::fflush(stdout);
  std::fflush(stderr);
  const pid_t child = ::fork();
  ASSERT_NE(child, -1) << "fork failed";
  if (child == 0) {
    int code = 0;
    try {
      body();
      code = ::testing::Test::HasFailure() ? 1 : 0;
    } catch (const std::exception& e) {
      std::fprintf(stderr, "child: uncaught exception: %s\n", e.what());
      code = 2;
    } catch (...) {
      std::fprintf(stderr, "child: uncaught exception\n");
      code = 2;
    }
    if (code == 0 && __lsan_do_recoverable_leak_check && __lsan_do_recoverable_leak_check() != 0) {
      code = 3;
    }
    std::fflush(stdout);
    std::fflush(stderr);
    ::_exit(code);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) == -1 && errno == EINTR) {
  }
  EXPECT_TRUE(WIFEXITED(status)) << "child ended by signal " << WTERMSIG(status);
  if (WIFEXITED(status)) {
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the child's checks failed";
  }
}

// Starts `body` in a child process and answers its id; the caller waits for it (WaitForChild)
// or ends it. The child exits with 0, 1 after a failed assertion, or 2 after an exception. Call
// it while the test program has no other threads.
inline pid_t StartChild(const std::function<void()>& body) {
  std::fflush(stdout);
  std::fflush(stderr);
  const pid_t child = ::fork();
  if (child == 0) {
    int code = 2;
    try {
      body();
      code = ::testing::Test::HasFailure() ? 1 : 0;
    } catch (...) {
      std::fprintf(stderr, "child: uncaught exception\n");
    }
    std::fflush(stdout);
    std::fflush(stderr);
    ::_exit(code);
  }
  return child;
}

// Waits until the child ends, or with `stopped` until it stops, and answers its status.
inline int WaitForChild(pid_t child, bool stopped = false) {
  int status = 0;
  while (::waitpid(child, &status, stopped ? WUNTRACED : 0) == -1 && errno == EINTR) {
  }
  return status;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_CHILD_PROCESS_H_
