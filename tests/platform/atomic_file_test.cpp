#include "platform/atomic_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "platform/file_calls.h"
#include "support/temp_dir.h"
#include "support/unprivileged_user.h"

namespace {

using namespace zenutl::platform;  // NOLINT: the writer and the file calls it goes through
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class AtomicFile : public zenutl_test::TempDirTest {
 protected:
  int FilesInFolder() const {
    return static_cast<int>(std::distance(boost::filesystem::directory_iterator(Dir()),
                                          boost::filesystem::directory_iterator()));
  }
};

// A user's private file saved by root, say, stays the user's.
TEST_F(AtomicFile, ReplacesTheWholeFileKeepingModeOwnerAndLinkAndALaterTime) {
  const std::string target = File("real.ini");
  const std::string link = File("link.ini");
  WriteWholeFile(target, "old");
  ASSERT_EQ(::chmod(target.c_str(), 0640) + ::symlink(target.c_str(), link.c_str()), 0);
  zenutl_test::HandOver(target);
  const struct timespec future[2] = {{0, UTIME_OMIT}, {4102444800, 999999999}};  // year 2100
  ASSERT_EQ(::utimensat(AT_FDCWD, target.c_str(), future, 0), 0);
  const std::string big(1 << 20, 'x');
  std::string error;
  ASSERT_TRUE(WriteFileAtomically(link, big, &error)) << error;
  struct stat info;
  ASSERT_EQ(::lstat(link.c_str(), &info), 0);
  EXPECT_TRUE(S_ISLNK(info.st_mode));
  ASSERT_EQ(::stat(target.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0640u);
  EXPECT_EQ(info.st_uid, zenutl_test::UnprivilegedUid());
  EXPECT_EQ(info.st_gid, zenutl_test::UnprivilegedGid());
  EXPECT_EQ(info.st_mtim.tv_sec, 4102444801);  // one nanosecond after the old time
  EXPECT_EQ(info.st_mtim.tv_nsec, 0);
  EXPECT_EQ(ReadWholeFile(target), big);
  EXPECT_EQ(FilesInFolder(), 2);
}

// Another user's file that this user may write (a shared, group-writable settings file, say)
// cannot be replaced by a file of this user's own: it is written in place and stays its owner's.
TEST_F(AtomicFile, AFileWhoseOwnerAReplacementCannotKeepIsWrittenInPlace) {
  const std::string path = File("shared.ini");
  WriteWholeFile(path, "old content");
  ASSERT_EQ(::chmod(path.c_str(), 0666) + ::chmod(Dir().c_str(), 0777), 0);
  struct stat before;
  ASSERT_EQ(::stat(path.c_str(), &before), 0);
  zenutl_test::ExpectPassesAsUnprivilegedUser([&path] {
    std::string error;
    EXPECT_TRUE(WriteFileAtomically(path, "new", &error)) << error;
  });
  struct stat after;
  ASSERT_EQ(::stat(path.c_str(), &after), 0);
  EXPECT_EQ(after.st_uid, before.st_uid);
  EXPECT_EQ(after.st_mode, before.st_mode);
  if (zenutl_test::RunningAsRoot()) {
    EXPECT_EQ(after.st_ino, before.st_ino);
  }
  EXPECT_EQ(ReadWholeFile(path), "new");
  EXPECT_EQ(FilesInFolder(), 1);
}

// Faults for the file calls. The table holds plain functions, so what one must remember lives
// here.
int gWriteCalls = 0;

ssize_t FullAfterTenBytes(int fd, const void* data, size_t size) {
  if (::lseek(fd, 0, SEEK_CUR) >= 10) return errno = ENOSPC, -1;
  return ::write(fd, data, std::min<size_t>(size, 10));
}
ssize_t WritesNothing(int, const void*, size_t) {
  return 0;
}
ssize_t DribblesAndIsInterrupted(int fd, const void* data, size_t size) {
  if (++gWriteCalls % 3 == 0) return errno = EINTR, -1;
  return ::write(fd, data, std::min<size_t>(size, 7));
}
int FsyncFails(int) {
  return errno = EIO, -1;
}
int RenameFails(const char*, const char*) {
  return errno = EXDEV, -1;
}

TEST_F(AtomicFile, InjectedFaultsLeaveTheOldFileWholeAndNoTemporaryBehind) {
  FileCalls diskFull = SystemFileCalls(), stalled = diskFull, dribble = diskFull,
            syncFails = diskFull, renameFails = diskFull;
  diskFull.write = &FullAfterTenBytes;
  stalled.write = &WritesNothing;
  dribble.write = &DribblesAndIsInterrupted;
  syncFails.fsync = &FsyncFails;
  renameFails.rename = &RenameFails;
  const struct {
    const char* name;
    const FileCalls& calls;
    const char* error;  // empty when the write must succeed
  } rows[] = {{"disk full", diskFull, "No space left on device"},
              {"no progress", stalled, "short write"},
              {"short writes and interruptions", dribble, ""},
              {"fsync", syncFails, "Input/output error"},
              {"rename", renameFails, "Invalid cross-device link"}};
  const std::string path = File("keep.ini");
  const std::string content(4096, 'n');
  gWriteCalls = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    WriteWholeFile(path, "original");
    std::string error;
    ScopedFileCalls scope(row.calls);
    const bool written = WriteFileAtomically(path, content, &error);
    EXPECT_EQ(written, *row.error == '\0');
    EXPECT_THAT(error, ::testing::HasSubstr(row.error));
    EXPECT_EQ(ReadWholeFile(path), written ? content : "original");
    EXPECT_EQ(FilesInFolder(), 1);
  }
  EXPECT_GT(gWriteCalls, 500);
}

}  // namespace
