// The file system functions of path_functions.h, on real files in a temporary folder.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <string>

#include "platform/file_calls.h"
#include "platform/native_path.h"
#include "support/temp_dir.h"
#include "zenutl/path_functions.h"

namespace {

namespace fs = boost::filesystem;
namespace platform = zenutl::platform;
using platform::FromNativePath;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class PathSystemTest : public zenutl_test::TempDirTest {
 protected:
  std::set<std::string> Entries() const {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(Dir())) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
};

TEST_F(PathSystemTest, FileExistAndComparePathsFollowLinks) {
  fs::create_directory(File("d"));
  WriteWholeFile(File("d/f"), "1");
  WriteWholeFile(File("other"), "1");
  fs::create_symlink(File("d"), File("dirlink"));
  fs::create_symlink(File("d/f"), File("link"));
  fs::create_hard_link(File("d/f"), File("hard"));
  fs::create_symlink(File("missing"), File("dangling"));
  const struct {
    std::string path;
    int kind;
    bool sameAsF;
  } rows[] = {{File("d"), 1, false},         {FromNativePath(File("d")) + "\\", 1, false},
              {File("dirlink"), 1, false},   {FromNativePath(File("d/f")), 2, true},
              {File("d/../d/./f"), 2, true}, {File("link"), 2, true},
              {File("hard"), 2, true},       {File("other"), 2, false},
              {File("dangling"), 0, false},  {File("D/f"), 0, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(row.kind, FileExist(row.path.c_str()));
    EXPECT_EQ(row.sameAsF, ZnComparePaths(File("d/f").c_str(), row.path.c_str()));
  }
}

TEST_F(PathSystemTest, CreateFolderMakesEveryMissingLevelOrTellsItCannot) {
  WriteWholeFile(File("taken"), "keep");
  std::string overlong = File("long");
  while (overlong.size() < MAX_PATH) overlong += "/component";
  EXPECT_TRUE(CreateFolder((FromNativePath(File("a")) + "\\b\\c\\").c_str()));
  EXPECT_TRUE(CreateFolder((File("x") + "/y/").c_str()));
  EXPECT_TRUE(CreateFolder(File("taken").c_str()));  // a file of that name counts
  EXPECT_FALSE(CreateFolder((File("taken") + "/sub").c_str()));
  EXPECT_FALSE(CreateFolder(overlong.c_str()));
  EXPECT_TRUE(CreateFolder("Q:\\"));  // short and missing: taken for a drive root, not made
  EXPECT_TRUE(CreateFolder((zenutl::detail::Utf8ToWide(File("w")) + L"\\S\u00e5g\u00e5").c_str()));
  EXPECT_TRUE(fs::is_directory(File("a/b/c")));
  EXPECT_TRUE(fs::is_directory(File("x/y")));
  EXPECT_TRUE(fs::is_directory(File("w/S\xc3\xa5g\xc3\xa5")));
  EXPECT_EQ("keep", ReadWholeFile(File("taken")));
  EXPECT_FALSE(fs::exists(File("long")));
  EXPECT_FALSE(fs::exists("Q:"));
}

TEST_F(PathSystemTest, GetTempFileNameCreatesANewEmptyFileEachTime) {
  std::set<std::string> names;
  for (int i = 0; i < 100; ++i) {
    const CString name = ZnGetTempFileName(Dir().string().c_str(), i % 2 ? "logfile" : "", "txt");
    EXPECT_EQ(CString(FromNativePath(Dir().string())), ZnGetDirectory(name));
    EXPECT_EQ(CString(i % 2 ? "log" : "tmp"), ZnGetFileName(name).Left(3));
    EXPECT_EQ(CString("txt"), ZnGetFileExtension(name));
    names.insert(ZnGetFileName(name).str());
  }
  EXPECT_EQ(names, Entries());
  EXPECT_EQ(100u, names.size());
  EXPECT_TRUE(ZnGetTempFileName(File("no/such").c_str(), "p", nullptr).IsEmpty());

  const char* saved = std::getenv("TMPDIR");
  const std::string savedValue = saved ? saved : "";
  ::setenv("TMPDIR", File("sub").c_str(), 1);
  fs::create_directory(File("sub"));
  const CString name = ZnGetTempFileName(nullptr, "abc", nullptr);
  saved ? ::setenv("TMPDIR", savedValue.c_str(), 1) : ::unsetenv("TMPDIR");
  EXPECT_EQ(CString(FromNativePath(File("sub"))), ZnGetDirectory(name));
  EXPECT_EQ(CString("TMP"), ZnGetFileExtension(name));
  EXPECT_EQ(0u, fs::file_size(platform::ToNativePath(name.str())));
}

TEST_F(PathSystemTest, ShortcutsCanonicalAndLongNamesResolveLinks) {
  fs::create_directories(File("real/sub"));
  WriteWholeFile(File("real/sub/f"), "");
  fs::create_symlink(File("real"), File("alias"));
  fs::create_symlink(File("real/sub/f"), File("first"));
  fs::create_symlink("first", File("second"));
  fs::create_symlink(File("gone"), File("dangling"));
  const std::string canonical = FromNativePath(fs::canonical(File("real/sub/f")).string());
  const std::string spelled = FromNativePath(File("alias")) + "\\sub\\..\\sub\\.\\f";
  EXPECT_EQ(canonical, ZnGetCanonicalPath(spelled.c_str()).str());
  EXPECT_EQ(canonical, ZnGetLongPathName(spelled.c_str()).str());
  EXPECT_TRUE(ZnGetCanonicalPath(File("gone").c_str()).IsEmpty());
  errno = 0;
  EXPECT_TRUE(ZnGetLongPathName(File("gone").c_str()).IsEmpty());
  EXPECT_EQ(ENOENT, errno);
  for (const char* name : {"first", "second", "dangling", "real/sub/f", "gone"}) {
    SCOPED_TRACE(name);
    const bool link = std::string(name) == "first" || std::string(name) == "second";
    char target[MAX_PATH] = "stale";
    EXPECT_EQ(link, ZnResolveShortcut(File(name).c_str(), target));
    EXPECT_EQ(link ? canonical : "", target);
  }
}

int RefusingUnlinkOfLocked(const char* path) {
  if (std::string(path).find("locked") == std::string::npos) return ::unlink(path);
  errno = EACCES;
  return -1;
}

TEST_F(PathSystemTest, RemoveDirectoryRemovesLinksNotWhatTheyPointToAndGoesOnAfterFailures) {
  fs::create_directories(File("tree/a/b"));
  WriteWholeFile(File("tree/.hidden"), "");
  WriteWholeFile(File("tree/a/b/locked"), "");
  WriteWholeFile(File("tree/a/b/free"), "");
  fs::create_directory(File("outside"));
  WriteWholeFile(File("outside/precious"), "keep");
  fs::create_directory_symlink(File("outside"), File("tree/a/linked"));
  platform::FileCalls calls = platform::SystemFileCalls();
  calls.unlink = &RefusingUnlinkOfLocked;
  {
    platform::ScopedFileCalls failing(calls);
    EXPECT_FALSE(ZnRemoveDirectory(FromNativePath(File("tree")).c_str()));
  }
  EXPECT_TRUE(fs::exists(File("tree/a/b/locked")));
  EXPECT_FALSE(fs::exists(File("tree/a/b/free")));
  EXPECT_FALSE(fs::exists(File("tree/a/linked")));
  EXPECT_TRUE(ZnRemoveDirectory(File("tree").c_str()));
  EXPECT_FALSE(fs::exists(File("tree")));
  EXPECT_EQ("keep", ReadWholeFile(File("outside/precious")));
  EXPECT_FALSE(ZnRemoveDirectory(File("tree").c_str()));
}

TEST_F(PathSystemTest, CanCreateFileTellsKindAndReasonAndChangesNothing) {
  WriteWholeFile(File("existing"), "content");
  fs::create_directory(File("folder"));
  const struct {
    std::string path;
    bool can;
    int kind;
    const char* error;
  } rows[] = {{File("existing"), true, 2, "untouched"},
              {File("new"), true, 0, "untouched"},
              {File("folder"), false, 1, "untouched"},
              {File("existing/below"), false, 0, "Not a directory"},
              {File("nodir/below"), false, 0, "No such file or directory"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    CString error("untouched");
    int kind = -1;
    EXPECT_EQ(row.can, ZnCanCreateFile(row.path.c_str(), &error, &kind));
    EXPECT_EQ(row.kind, kind);
    EXPECT_EQ(CString(row.error), error);
  }
  EXPECT_EQ("content", ReadWholeFile(File("existing")));
  EXPECT_EQ((std::set<std::string>{"existing", "folder"}), Entries());
}

std::string Pattern(std::size_t size) {
  std::string data(size, '\0');
  for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<char>((i * 131 + i / 7) & 0xFF);
  return data;
}

TEST_F(PathSystemTest, CopyFileCopiesEveryByteAndKeepsTargetPermissionsAndLinks) {
  WriteWholeFile(File("real"), "old");
  ::chmod(File("real").c_str(), 0640);
  fs::create_symlink(File("real"), File("link"));
  for (std::size_t size : {0u, 1u, 32767u, 32768u, 32769u, 100001u}) {
    SCOPED_TRACE(size);
    WriteWholeFile(File("from"), Pattern(size));
    EXPECT_TRUE(ZnCopyFile(File("from").c_str(), FromNativePath(File("link")).c_str(), false));
    EXPECT_EQ(Pattern(size), ReadWholeFile(File("real")));
  }
  EXPECT_TRUE(fs::is_symlink(File("link")));
  struct stat info;
  ASSERT_EQ(0, ::stat(File("real").c_str(), &info));
  EXPECT_EQ(0640u, info.st_mode & 07777);
  EXPECT_EQ((std::set<std::string>{"from", "real", "link"}), Entries());
}

TEST_F(PathSystemTest, CopyFileRefusesWhatItCannotOrMustNotDo) {
  WriteWholeFile(File("from"), "new");
  WriteWholeFile(File("to"), "old");
  fs::create_directory(File("folder"));
  EXPECT_FALSE(ZnCopyFile(File("from").c_str(), File("to").c_str(), true));
  EXPECT_FALSE(ZnCopyFile(File("missing").c_str(), File("fresh").c_str(), false));
  EXPECT_FALSE(ZnCopyFile(File("folder").c_str(), File("fresh").c_str(), false));
  EXPECT_FALSE(ZnCopyFile(File("from").c_str(), File("folder").c_str(), false));
  EXPECT_FALSE(ZnCopyFile(File("from").c_str(), File("nodir/x").c_str(), false));
  EXPECT_FALSE(ZnCopyFile(File("to").c_str(), File("to").c_str(), true));
  EXPECT_TRUE(ZnCopyFile(File("to").c_str(), File("to").c_str(), false));
  EXPECT_TRUE(ZnCopyFile(File("to").c_str(), FromNativePath(File("to")).c_str(), false));
  EXPECT_EQ("old", ReadWholeFile(File("to")));
  EXPECT_EQ((std::set<std::string>{"from", "to", "folder"}), Entries());
  EXPECT_TRUE(fs::is_empty(File("folder")));
}

TEST_F(PathSystemTest, CopyFileWritesIntoTheTargetItselfUnlessItIsReadOnly) {
  WriteWholeFile(File("from"), "new content");
  WriteWholeFile(File("to"), "old");
  fs::create_hard_link(File("to"), File("to, other link"));
  fs::create_hard_link(File("from"), File("from, other link"));
  struct stat before, after;
  ASSERT_EQ(0, ::stat(File("to").c_str(), &before));
  EXPECT_TRUE(ZnCopyFile(File("from").c_str(), File("to").c_str(), false));
  ASSERT_EQ(0, ::stat(File("to").c_str(), &after));
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ("new content", ReadWholeFile(File("to, other link")));
  // Another name of the source is the source: nothing to copy, and nothing lost.
  EXPECT_TRUE(ZnCopyFile(File("from").c_str(), File("from, other link").c_str(), false));
  EXPECT_EQ("new content", ReadWholeFile(File("from")));
  // Read-only is refused to every writer, this test's root included.
  WriteWholeFile(File("read-only"), "kept");
  ASSERT_EQ(0, ::chmod(File("read-only").c_str(), 0444));
  EXPECT_FALSE(ZnCopyFile(File("from").c_str(), File("read-only").c_str(), false));
  EXPECT_EQ("kept", ReadWholeFile(File("read-only")));
}

int gWritesAllowed = 0;
ssize_t WriteUntilDiskFull(int fd, const void* data, std::size_t size) {
  if (gWritesAllowed-- > 0) return ::write(fd, data, size < 1000 ? size : 1000);
  errno = ENOSPC;
  return -1;
}

TEST_F(PathSystemTest, CopyFileCarriesOnAfterShortWritesAndStopsAtAFullDisk) {
  WriteWholeFile(File("from"), Pattern(70000));
  platform::FileCalls calls = platform::SystemFileCalls();
  calls.write = &WriteUntilDiskFull;
  platform::ScopedFileCalls shortWrites(calls);
  gWritesAllowed = 1000;  // short writes of 1000 bytes are carried on
  EXPECT_TRUE(ZnCopyFile(File("from").c_str(), File("copy").c_str(), true));
  EXPECT_EQ(Pattern(70000), ReadWholeFile(File("copy")));
  gWritesAllowed = 3;
  EXPECT_FALSE(ZnCopyFile(File("from").c_str(), File("copy").c_str(), false));
  EXPECT_EQ(Pattern(3000), ReadWholeFile(File("copy")));
}

TEST_F(PathSystemTest, IsTextFileReadsTextModeBlocksUpToTheLimit) {
  const std::size_t kBlock = 30768;
  std::string lateZero(100000, 'a');
  lateZero[kBlock + 10] = '\0';
  std::string crlfZero;  // 40000 bytes of CR LF are 20000 characters: the zero is in block one
  for (int i = 0; i < 20000; ++i) crlfZero += "\r\n";
  crlfZero += '\0';
  const struct {
    std::string content;
    unsigned int maxBytes;
    bool expected;
  } rows[] = {
      {std::string(100000, 'a'), 0xFFFFFFFFu, true},
      {"", 100, true},
      {lateZero, 1, true},
      {lateZero, kBlock, true},
      {lateZero, kBlock + 1, false},  // the second block is read whole
      {crlfZero, 1, false},
      {std::string("ab\x1A\0cd", 6), 1000, true},  // Ctrl-Z ends
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.content.size());
    WriteWholeFile(File("t"), row.content);
    EXPECT_EQ(row.expected, IsTextFile(File("t").c_str(), row.maxBytes));
  }
  EXPECT_FALSE(IsTextFile(File("missing").c_str(), 10));
  EXPECT_FALSE(IsTextFile(Dir().string().c_str(), 10));
}

}  // namespace
