#include "platform/atomic_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace {

using zenutl::platform::AtomicFileHooks;
using zenutl::platform::ScopedAtomicFileHooks;
using zenutl::platform::SystemAtomicFileHooks;
using zenutl::platform::WriteFileAtomically;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class AtomicFile : public zenutl_test::TempDirTest {
 protected:
  std::vector<std::string> FolderEntries() const {
    std::vector<std::string> names;
    for (const auto& entry : boost::filesystem::directory_iterator(Dir())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(AtomicFile, CreatesAndReplacesWholeFiles) {
  const std::string path = File("settings.ini");
  std::string error;
  ASSERT_TRUE(WriteFileAtomically(path, "first\n", &error)) << error;
  EXPECT_EQ(ReadWholeFile(path), "first\n");
  const std::string big(1 << 20, 'x');
  ASSERT_TRUE(WriteFileAtomically(path, big, &error)) << error;
  EXPECT_EQ(ReadWholeFile(path), big);
  ASSERT_TRUE(WriteFileAtomically(path, "", &error)) << error;
  EXPECT_EQ(ReadWholeFile(path), "");
  EXPECT_EQ(FolderEntries(), std::vector<std::string>{"settings.ini"});
}

TEST_F(AtomicFile, KeepsThePermissionBitsOfTheReplacedFile) {
  const std::string path = File("private.ini");
  WriteWholeFile(path, "old");
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  ASSERT_TRUE(WriteFileAtomically(path, "new", nullptr));
  struct stat info;
  ASSERT_EQ(::stat(path.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0640u);

  const std::string fresh = File("fresh.ini");
  const mode_t mask = ::umask(022);
  ASSERT_TRUE(WriteFileAtomically(fresh, "x", nullptr));
  ::umask(mask);
  ASSERT_EQ(::stat(fresh.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0644u);
}

TEST_F(AtomicFile, ReplacesTheTargetOfASymbolicLinkAndKeepsTheLink) {
  const std::string target = File("real.ini");
  const std::string link = File("link.ini");
  WriteWholeFile(target, "old");
  ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
  ASSERT_TRUE(WriteFileAtomically(link, "new", nullptr));
  struct stat info;
  ASSERT_EQ(::lstat(link.c_str(), &info), 0);
  EXPECT_TRUE(S_ISLNK(info.st_mode));
  EXPECT_EQ(ReadWholeFile(target), "new");
}

TEST_F(AtomicFile, NewFileIsAlwaysStampedLaterThanTheOldOne) {
  const std::string path = File("future.ini");
  WriteWholeFile(path, "old");
  struct timespec times[2];
  times[0].tv_sec = 0;
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = 4102444800;  // 2100-01-01, far beyond the clock
  times[1].tv_nsec = 999999999;
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  ASSERT_TRUE(WriteFileAtomically(path, "new", nullptr));
  struct stat info;
  ASSERT_EQ(::stat(path.c_str(), &info), 0);
  EXPECT_EQ(info.st_mtim.tv_sec, 4102444801);
  EXPECT_EQ(info.st_mtim.tv_nsec, 0);
}

TEST_F(AtomicFile, FailuresLeaveTheOldFileWholeAndNoTemporaryBehind) {
  const AtomicFileHooks system = SystemAtomicFileHooks();
  struct Fault {
    const char* name;
    AtomicFileHooks hooks;
    const char* message;  // part of the error text
  };
  AtomicFileHooks diskFull;  // a few bytes get through, then the disk is full
  diskFull.write = [system](int fd, const void* data, size_t size) -> ssize_t {
    struct stat info;
    ::fstat(fd, &info);
    if (info.st_size >= 10) {
      errno = ENOSPC;
      return -1;
    }
    return system.write(fd, data, std::min<size_t>(size, 10 - info.st_size));
  };
  AtomicFileHooks stalled;
  stalled.write = [](int, const void*, size_t) -> ssize_t { return 0; };
  AtomicFileHooks syncFails;
  syncFails.fsync = [](int) {
    errno = EIO;
    return -1;
  };
  AtomicFileHooks renameFails;
  renameFails.rename = [](const char*, const char*) {
    errno = EXDEV;
    return -1;
  };
  const Fault faults[] = {
      {"disk full", diskFull, "No space left on device"},
      {"no progress", stalled, "short write"},
      {"fsync", syncFails, "Input/output error"},
      {"rename", renameFails, "Invalid cross-device link"},
  };
  const std::string path = File("keep.ini");
  const std::string original = "[s]\nk=original\n";
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.name);
    WriteWholeFile(path, original);
    std::string error;
    {
      ScopedAtomicFileHooks scope(fault.hooks);
      errno = 0;
      EXPECT_FALSE(WriteFileAtomically(path, std::string(4096, 'n'), &error));
      EXPECT_NE(errno, 0);
    }
    EXPECT_THAT(error, ::testing::HasSubstr(fault.message));
    EXPECT_EQ(ReadWholeFile(path), original);
    EXPECT_EQ(FolderEntries(), std::vector<std::string>{"keep.ini"});
  }
  // With the hooks gone, writing works again.
  ASSERT_TRUE(WriteFileAtomically(path, "after", nullptr));
  EXPECT_EQ(ReadWholeFile(path), "after");
}

TEST_F(AtomicFile, ShortWritesAndInterruptionsAreCompleted) {
  const AtomicFileHooks system = SystemAtomicFileHooks();
  int calls = 0;
  AtomicFileHooks dribble;
  dribble.write = [&calls, system](int fd, const void* data, size_t size) -> ssize_t {
    if (++calls % 3 == 0) {
      errno = EINTR;
      return -1;
    }
    return system.write(fd, data, std::min<size_t>(size, 7));
  };
  ScopedAtomicFileHooks scope(dribble);
  const std::string path = File("dribble.ini");
  const std::string content = "[section]\nkey=a value long enough to need many writes\n";
  std::string error;
  ASSERT_TRUE(WriteFileAtomically(path, content, &error)) << error;
  EXPECT_EQ(ReadWholeFile(path), content);
  EXPECT_GT(calls, 10);
}

TEST_F(AtomicFile, ReportsAMissingFolderWithTheSystemsText) {
  std::string error;
  EXPECT_FALSE(WriteFileAtomically(File("no/such/folder/x.ini"), "x", &error));
  EXPECT_THAT(error, ::testing::HasSubstr("No such file or directory"));
  EXPECT_FALSE(WriteFileAtomically("", "x", &error));
}

}  // namespace
