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
using zenutl::platform::FromNativePath;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class PathSystemTest : public zenutl_test::TempDirTest {
 protected:
  // The Windows form the library hands back for a Linux path.
  static std::string Win(const std::string& path) { return FromNativePath(path); }
  std::set<std::string> Entries() const {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(Dir())) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
};

TEST_F(PathSystemTest, FileExistTellsFoldersFromFilesFollowingLinks) {
  fs::create_directory(File("dir"));
  WriteWholeFile(File("file"), "x");
  fs::create_symlink(File("dir"), File("dirlink"));
  fs::create_symlink(File("missing"), File("dangling"));
  const struct {
    std::string path;
    int expected;
  } rows[] = {
      {File("dir"), 1},          {Win(File("dir")) + "\\", 1}, {File("file"), 2},
      {Win(File("file")), 2},    {File("dirlink"), 1},         {File("dangling"), 0},
      {File("missing"), 0},      {"/dev/null", 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(row.expected, FileExist(row.path.c_str()));
  }
}

TEST_F(PathSystemTest, CreateFolderMakesEveryMissingLevel) {
  const std::string path = Win(File("a")) + "\\b\\c\\";
  EXPECT_TRUE(CreateFolder(path.c_str()));
  EXPECT_TRUE(fs::is_directory(File("a/b/c")));
  EXPECT_TRUE(CreateFolder(path.c_str()));  // already there
  EXPECT_TRUE(CreateFolder((File("x") + "/y/").c_str()));
  EXPECT_TRUE(fs::is_directory(File("x/y")));
}

TEST_F(PathSystemTest, CreateFolderTakesAnExistingFileAsSuccess) {
  WriteWholeFile(File("taken"), "keep");
  EXPECT_TRUE(CreateFolder(File("taken").c_str()));
  EXPECT_EQ("keep", ReadWholeFile(File("taken")));
}

TEST_F(PathSystemTest, CreateFolderFailsBelowAFileAndForOverlongPaths) {
  WriteWholeFile(File("plain"), "");
  EXPECT_FALSE(CreateFolder((File("plain") + "/sub").c_str()));
  std::string overlong = File("long");
  while (overlong.size() < MAX_PATH) overlong += "/component";
  EXPECT_FALSE(CreateFolder(overlong.c_str()));
  EXPECT_FALSE(fs::exists(File("long")));
  EXPECT_FALSE(CreateFolder(static_cast<const char*>(nullptr)));
}

TEST_F(PathSystemTest, CreateFolderTakesShortMissingPathsForDriveRoots) {
  // "Q:\" style roots are never found by a search, so three characters pass unmade.
  ASSERT_FALSE(fs::exists("Q:"));
  EXPECT_TRUE(CreateFolder("Q:\\"));
  EXPECT_FALSE(fs::exists("Q:"));
}

TEST_F(PathSystemTest, WideCreateFolderMakesUtf8Names) {
  const std::wstring path =
      zenutl::detail::Utf8ToWide(File("wide")) + L"\\S\u00e5g\u00e5\\\u00f6l";
  EXPECT_TRUE(CreateFolder(path.c_str()));
  EXPECT_TRUE(fs::is_directory(File("wide/S\xc3\xa5g\xc3\xa5/\xc3\xb6l")));
  EXPECT_FALSE(CreateFolder(std::wstring(MAX_PATH, L'w').c_str()));
}

TEST_F(PathSystemTest, ComparePathsSeesOneItemBehindDifferentNames) {
  fs::create_directory(File("d"));
  WriteWholeFile(File("d/f.txt"), "1");
  WriteWholeFile(File("other.txt"), "1");
  fs::create_symlink(File("d/f.txt"), File("link"));
  fs::create_hard_link(File("d/f.txt"), File("hard"));
  const std::string original = File("d/f.txt");
  const struct {
    std::string other;
    bool same;
  } rows[] = {
      {Win(original), true},          {File("d/../d/./f.txt"), true}, {File("link"), true},
      {File("hard"), true},           {File("other.txt"), false},     {File("d"), false},
      {File("D/f.txt"), false},       {File("nothing"), false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.other);
    EXPECT_EQ(row.same, ZnComparePaths(original.c_str(), row.other.c_str()));
  }
  EXPECT_FALSE(ZnComparePaths(File("nothing").c_str(), File("nothing").c_str()));
}

TEST_F(PathSystemTest, GetTempFileNameCreatesAnEmptyFileOfItsOwn) {
  const CString name = ZnGetTempFileName(File("").c_str(), "logfile", nullptr);
  ASSERT_FALSE(name.IsEmpty());
  const std::string native = zenutl::platform::ToNativePath(name.GetString());
  EXPECT_EQ(Win(Dir().string()), ZnGetDirectory(name).str());
  const std::string fileName = ZnGetFileName(name).str();
  EXPECT_EQ("log", fileName.substr(0, 3));
  EXPECT_EQ(".TMP", fileName.substr(fileName.size() - 4));
  EXPECT_LE(fileName.size(), 3u + 4u + 4u);
  EXPECT_TRUE(fs::is_regular_file(native));
  EXPECT_EQ(0u, fs::file_size(native));
}

TEST_F(PathSystemTest, GetTempFileNameGivesTheRequestedExtensionAndDefaultPrefix) {
  const CString name = ZnGetTempFileName(Dir().string().c_str(), "", "txt");
  ASSERT_FALSE(name.IsEmpty());
  EXPECT_EQ("tmp", ZnGetFileName(name).Left(3).str());
  EXPECT_EQ(CString("txt"), ZnGetFileExtension(name));
  EXPECT_EQ(std::set<std::string>{ZnGetFileName(name).str()}, Entries());
}

TEST_F(PathSystemTest, GetTempFileNameNeverHandsOutOneNameTwice) {
  std::set<std::string> names;
  for (int i = 0; i < 200; ++i) names.insert(ZnGetTempFileName(File("").c_str(), "n", "x").str());
  EXPECT_EQ(200u, names.size());
  EXPECT_EQ(200u, Entries().size());
}

TEST_F(PathSystemTest, GetTempFileNameUsesTheTemporaryFolderWithoutOne) {
  const char* saved = std::getenv("TMPDIR");
  const std::string savedValue = saved ? saved : "";
  ::setenv("TMPDIR", Dir().string().c_str(), 1);
  const CString name = ZnGetTempFileName(nullptr, "abc", nullptr);
  if (saved) {
    ::setenv("TMPDIR", savedValue.c_str(), 1);
  } else {
    ::unsetenv("TMPDIR");
  }
  EXPECT_EQ(Win(Dir().string()), ZnGetDirectory(name).str());
  EXPECT_EQ(1u, Entries().size());
}

TEST_F(PathSystemTest, GetTempFileNameGivesNothingForAMissingFolder) {
  EXPECT_TRUE(ZnGetTempFileName(File("no/such").c_str(), "p", nullptr).IsEmpty());
}

TEST_F(PathSystemTest, ResolveShortcutFollowsLinksToTheEnd) {
  WriteWholeFile(File("target.txt"), "t");
  fs::create_symlink(File("target.txt"), File("first"));
  fs::create_symlink("first", File("second"));  // relative, and a chain
  fs::create_symlink(File("gone"), File("dangling"));
  const std::string canonical = Win(fs::canonical(File("target.txt")).string());
  const struct {
    std::string shortcut;
    bool resolved;
  } rows[] = {
      {File("first"), true},  {File("second"), true},     {Win(File("second")), true},
      {File("dangling"), false}, {File("target.txt"), false}, {File("missing"), false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.shortcut);
    char target[MAX_PATH] = "stale";
    EXPECT_EQ(row.resolved, ZnResolveShortcut(row.shortcut.c_str(), target));
    EXPECT_EQ(row.resolved ? canonical : "", target);
  }
  EXPECT_FALSE(ZnResolveShortcut(File("first").c_str(), nullptr));
}

TEST_F(PathSystemTest, CanonicalAndLongNamesResolveLinksAndDots) {
  fs::create_directories(File("real/sub"));
  WriteWholeFile(File("real/sub/f.txt"), "");
  fs::create_symlink(File("real"), File("alias"));
  const std::string expected = Win(fs::canonical(File("real/sub/f.txt")).string());
  const std::string spelled = Win(File("alias")) + "\\sub\\..\\sub\\.\\f.txt";
  EXPECT_EQ(expected, ZnGetCanonicalPath(spelled.c_str()).str());
  EXPECT_EQ(expected, ZnGetLongPathName(spelled.c_str()).str());
}

TEST_F(PathSystemTest, CanonicalAndLongNamesOfMissingPathsAreEmpty) {
  EXPECT_TRUE(ZnGetCanonicalPath(File("missing").c_str()).IsEmpty());
  errno = 0;
  EXPECT_TRUE(ZnGetLongPathName(File("missing").c_str()).IsEmpty());
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(PathSystemTest, RemoveDirectoryRemovesTheTreeButNotWhatLinksPointTo) {
  fs::create_directories(File("tree/a/b"));
  WriteWholeFile(File("tree/.hidden"), "h");
  WriteWholeFile(File("tree/noext"), "n");
  WriteWholeFile(File("tree/a/b/deep.txt"), "d");
  fs::create_directory(File("outside"));
  WriteWholeFile(File("outside/precious.txt"), "keep");
  fs::create_directory_symlink(File("outside"), File("tree/a/linked"));
  fs::create_symlink(File("outside/precious.txt"), File("tree/filelink"));

  EXPECT_TRUE(ZnRemoveDirectory(Win(File("tree")).c_str()));
  EXPECT_FALSE(fs::exists(File("tree")));
  EXPECT_EQ("keep", ReadWholeFile(File("outside/precious.txt")));
}

int gUnlinkFailures = 0;
int RefusingUnlinkOfLocked(const char* path) {
  if (std::string(path).find("locked") != std::string::npos) {
    ++gUnlinkFailures;
    errno = EACCES;
    return -1;
  }
  return ::unlink(path);
}

TEST_F(PathSystemTest, RemoveDirectoryGoesOnAfterAFailureAndReportsIt) {
  fs::create_directories(File("tree/a"));
  WriteWholeFile(File("tree/a/locked.txt"), "");
  WriteWholeFile(File("tree/a/free.txt"), "");
  WriteWholeFile(File("tree/z.txt"), "");
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.unlink = &RefusingUnlinkOfLocked;
  gUnlinkFailures = 0;
  {
    zenutl::platform::ScopedFileCalls failing(calls);
    EXPECT_FALSE(ZnRemoveDirectory(File("tree").c_str()));
  }
  EXPECT_EQ(1, gUnlinkFailures);
  EXPECT_TRUE(fs::exists(File("tree/a/locked.txt")));
  EXPECT_FALSE(fs::exists(File("tree/a/free.txt")));
  EXPECT_FALSE(fs::exists(File("tree/z.txt")));
  EXPECT_FALSE(ZnRemoveDirectory(File("missing").c_str()));
}

TEST_F(PathSystemTest, CanCreateFileTellsKindAndLeavesEverythingAsItWas) {
  WriteWholeFile(File("existing.txt"), "content");
  fs::create_directory(File("folder"));
  WriteWholeFile(File("plain"), "");
  const struct {
    std::string path;
    bool can;
    int kind;
    const char* error;
  } rows[] = {
      {File("existing.txt"), true, 2, "untouched"},
      {File("new.txt"), true, 0, "untouched"},
      {File("folder"), false, 1, "untouched"},
      {File("plain") + "/below.txt", false, 0, "Not a directory"},
      {File("nodir") + "/below.txt", false, 0, "No such file or directory"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    CString error("untouched");
    int kind = -1;
    EXPECT_EQ(row.can, ZnCanCreateFile(row.path.c_str(), &error, &kind));
    EXPECT_EQ(row.kind, kind);
    EXPECT_EQ(CString(row.error), error);
  }
  EXPECT_EQ("content", ReadWholeFile(File("existing.txt")));
  EXPECT_FALSE(fs::exists(File("new.txt")));
  EXPECT_TRUE(ZnCanCreateFile(File("new.txt").c_str(), nullptr, nullptr));
}

std::string Pattern(std::size_t size) {
  std::string data(size, '\0');
  for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<char>((i * 131 + i / 7) & 0xFF);
  return data;
}

TEST_F(PathSystemTest, CopyFileCopiesEveryByteAcrossBlockBoundaries) {
  for (std::size_t size : {0u, 1u, 32767u, 32768u, 32769u, 65536u, 100001u}) {
    SCOPED_TRACE(size);
    const std::string data = Pattern(size);
    WriteWholeFile(File("from.bin"), data);
    WriteWholeFile(File("to.bin"), "older and longer content than some of the copies");
    EXPECT_TRUE(ZnCopyFile(File("from.bin").c_str(), Win(File("to.bin")).c_str(), false));
    EXPECT_EQ(data, ReadWholeFile(File("to.bin")));
  }
  EXPECT_EQ((std::set<std::string>{"from.bin", "to.bin"}), Entries());
}

TEST_F(PathSystemTest, CopyFileRefusesWhatItCannotOrMustNotDo) {
  WriteWholeFile(File("from.txt"), "new");
  WriteWholeFile(File("to.txt"), "old");
  fs::create_directory(File("folder"));
  EXPECT_FALSE(ZnCopyFile(File("from.txt").c_str(), File("to.txt").c_str(), true));
  EXPECT_FALSE(ZnCopyFile(File("missing").c_str(), File("fresh.txt").c_str(), false));
  EXPECT_FALSE(ZnCopyFile(File("folder").c_str(), File("fresh.txt").c_str(), false));
  EXPECT_FALSE(ZnCopyFile(File("from.txt").c_str(), File("folder").c_str(), false));
  EXPECT_FALSE(ZnCopyFile(File("from.txt").c_str(), File("nodir/x.txt").c_str(), false));
  EXPECT_EQ("old", ReadWholeFile(File("to.txt")));
  EXPECT_EQ((std::set<std::string>{"from.txt", "to.txt", "folder"}), Entries());
  EXPECT_TRUE(fs::is_empty(File("folder")));
}

TEST_F(PathSystemTest, CopyFileOntoItselfCopiesNothing) {
  WriteWholeFile(File("self.txt"), "same");
  const std::string self = File("self.txt");
  EXPECT_TRUE(ZnCopyFile(self.c_str(), self.c_str(), false));
  EXPECT_FALSE(ZnCopyFile(self.c_str(), self.c_str(), true));
  // Another spelling of the same file is copied, and nothing is lost on the way.
  EXPECT_TRUE(ZnCopyFile(self.c_str(), Win(self).c_str(), false));
  EXPECT_EQ("same", ReadWholeFile(self));
  EXPECT_EQ(std::set<std::string>{"self.txt"}, Entries());
}

TEST_F(PathSystemTest, CopyFileKeepsTheTargetsPermissionsAndLinks) {
  WriteWholeFile(File("from.txt"), "new");
  WriteWholeFile(File("real.txt"), "old");
  ::chmod(File("real.txt").c_str(), 0640);
  fs::create_symlink(File("real.txt"), File("link.txt"));
  EXPECT_TRUE(ZnCopyFile(File("from.txt").c_str(), File("link.txt").c_str(), false));
  EXPECT_TRUE(fs::is_symlink(File("link.txt")));
  EXPECT_EQ("new", ReadWholeFile(File("real.txt")));
  struct stat info;
  ASSERT_EQ(0, ::stat(File("real.txt").c_str(), &info));
  EXPECT_EQ(0640u, info.st_mode & 07777);
}

// Accepts the first write and then reports a full disk.
int gWritesAllowed = 0;
ssize_t WriteUntilDiskFull(int fd, const void* data, std::size_t size) {
  if (gWritesAllowed-- > 0) return ::write(fd, data, size);
  errno = ENOSPC;
  return -1;
}
// Writes at most 1000 bytes at a time, as a slow device may.
ssize_t ShortWrite(int fd, const void* data, std::size_t size) {
  return ::write(fd, data, size < 1000 ? size : 1000);
}
int RefusingRename(const char*, const char*) {
  errno = EXDEV;
  return -1;
}

TEST_F(PathSystemTest, CopyFileThatCannotWriteLeavesTheTargetAsItWas) {
  const std::string data = Pattern(100000);
  WriteWholeFile(File("from.bin"), data);
  WriteWholeFile(File("to.bin"), "previous");
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.write = &WriteUntilDiskFull;
  gWritesAllowed = 1;
  {
    zenutl::platform::ScopedFileCalls failing(calls);
    EXPECT_FALSE(ZnCopyFile(File("from.bin").c_str(), File("to.bin").c_str(), false));
    EXPECT_FALSE(ZnCopyFile(File("from.bin").c_str(), File("new.bin").c_str(), false));
  }
  EXPECT_EQ("previous", ReadWholeFile(File("to.bin")));
  EXPECT_EQ((std::set<std::string>{"from.bin", "to.bin"}), Entries());
}

TEST_F(PathSystemTest, CopyFileThatCannotRenameLeavesNoTrace) {
  WriteWholeFile(File("from.bin"), "data");
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.rename = &RefusingRename;
  calls.renameNoReplace = &RefusingRename;
  {
    zenutl::platform::ScopedFileCalls failing(calls);
    EXPECT_FALSE(ZnCopyFile(File("from.bin").c_str(), File("to.bin").c_str(), false));
    EXPECT_FALSE(ZnCopyFile(File("from.bin").c_str(), File("to.bin").c_str(), true));
  }
  EXPECT_EQ(std::set<std::string>{"from.bin"}, Entries());
}

TEST_F(PathSystemTest, CopyFileCompletesThroughShortWrites) {
  const std::string data = Pattern(70000);
  WriteWholeFile(File("from.bin"), data);
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.write = &ShortWrite;
  zenutl::platform::ScopedFileCalls shortWrites(calls);
  EXPECT_TRUE(ZnCopyFile(File("from.bin").c_str(), File("to.bin").c_str(), true));
  EXPECT_EQ(data, ReadWholeFile(File("to.bin")));
}

TEST_F(PathSystemTest, IsTextFileReadsBlockWiseUpToTheLimit) {
  const std::size_t kBlock = 30768;
  const std::string text(100000, 'a');
  std::string lateZero = text;
  lateZero[kBlock + 10] = '\0';
  std::string firstBlockZero = text;
  firstBlockZero[kBlock - 1] = '\0';
  const struct {
    std::string content;
    unsigned int maxBytes;
    bool expected;
  } rows[] = {
      {text, 0xFFFFFFFFu, true},
      {"", 100, true},
      {firstBlockZero, 1, false},
      {lateZero, 1, true},            // one block decides
      {lateZero, kBlock, true},       // exactly one block read
      {lateZero, kBlock + 1, false},  // the second block is read whole
      {std::string("ab\x1A\0cd", 6), 1000, true},  // Ctrl-Z ends a text-mode file
      {std::string("\0", 1), 0, false},
  };
  int index = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(index++);
    WriteWholeFile(File("t.txt"), row.content);
    EXPECT_EQ(row.expected, IsTextFile(File("t.txt").c_str(), row.maxBytes));
  }
}

TEST_F(PathSystemTest, IsTextFileCountsLineEndsAsOneCharacter) {
  // 40000 bytes of CR LF are 20000 characters, so the zero falls in the first block.
  std::string content;
  for (int i = 0; i < 20000; ++i) content += "\r\n";
  content += '\0';
  WriteWholeFile(File("crlf.txt"), content);
  EXPECT_FALSE(IsTextFile(File("crlf.txt").c_str(), 1));
}

TEST_F(PathSystemTest, IsTextFileIsFalseForWhatCannotBeOpened) {
  EXPECT_FALSE(IsTextFile(File("missing").c_str(), 10));
  EXPECT_FALSE(IsTextFile(Dir().string().c_str(), 10));
}

}  // namespace
