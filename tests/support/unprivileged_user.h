// Runs part of a test as a user whom file permissions bind.
//
// Root passes every permission check on mode bits, so what a read-only file or a folder that
// refuses new files does can only be seen as someone else. Run as root, the body runs in a child
// process that has become the user "nobody" (uid and gid 65534); run as anyone else, in a child
// as that same user. Files the body must own are handed over first with `HandOver`.
#ifndef ZENUTL_TESTS_SUPPORT_UNPRIVILEGED_USER_H_
#define ZENUTL_TESTS_SUPPORT_UNPRIVILEGED_USER_H_

#include <grp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <functional>
#include <string>

#include "support/child_process.h"

namespace zenutl_test {

inline bool RunningAsRoot() {
  return ::geteuid() == 0;
}

inline uid_t UnprivilegedUid() {
  return RunningAsRoot() ? 65534 : ::geteuid();
}

inline gid_t UnprivilegedGid() {
  return RunningAsRoot() ? 65534 : ::getegid();
}

// Gives `path`, and everything in it if it is a folder, to the unprivileged user.
inline void HandOver(const std::string& path) {
  if (!RunningAsRoot()) return;
  ASSERT_EQ(::lchown(path.c_str(), UnprivilegedUid(), UnprivilegedGid()), 0) << path;
  if (!boost::filesystem::is_directory(path)) return;
  for (boost::filesystem::recursive_directory_iterator entry(path), end; entry != end; ++entry) {
    ASSERT_EQ(::lchown(entry->path().c_str(), UnprivilegedUid(), UnprivilegedGid()), 0);
  }
}

// Runs `body` in a child process as the unprivileged user; see ExpectPassesInChild.
inline void ExpectPassesAsUnprivilegedUser(const std::function<void()>& body) {
  ExpectPassesInChild([&body] {
    if (RunningAsRoot()) {
      const gid_t gid = UnprivilegedGid();
      const uid_t uid = UnprivilegedUid();
      ASSERT_EQ(::setgroups(0, nullptr), 0);
      ASSERT_EQ(::setgid(gid), 0);
      ASSERT_EQ(::setuid(uid), 0);
      // A changed user makes the process undumpable, which would keep the leak checker from
      // inspecting it.
      ::prctl(PR_SET_DUMPABLE, 1);
    }
    body();
  });
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_UNPRIVILEGED_USER_H_
