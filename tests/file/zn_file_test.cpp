// ZnFile: removal and renaming with reasons, names, lists of files, and text encodings.
#include "zenutl/zn_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/filesystem.hpp>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/file_calls.h"
#include "platform/native_path.h"
#include "support/temp_dir.h"

namespace {

namespace fs = boost::filesystem;
using zenutl::platform::FromNativePath;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class ZnFileTest : public zenutl_test::TempDirTest {
 protected:
  CString Path(const std::string& name) const { return CString(FromNativePath(File(name))); }
};

int RefusingUnlink(const char*) {
  errno = EACCES;
  return -1;
}

TEST_F(ZnFileTest, RemoveAndRenameGiveTheSystemsReason) {
  WriteWholeFile(File("a"), "a");
  WriteWholeFile(File("b"), "b");
  fs::create_directory(File("d"));
  CString error("untouched");
  EXPECT_TRUE(ZnFile::Remove(Path("missing"), &error));  // already gone
  EXPECT_TRUE(ZnFile::Rename(Path("a"), Path("c"), &error));
  EXPECT_TRUE(ZnFile::Rename(Path("d"), Path("e"), &error));
  EXPECT_EQ(CString("untouched"), error);
  const struct {
    bool remove;
    std::string from, to;
    const char* error;
  } failures[] = {{true, "e", "", "Is a directory"},
                  {false, "c", "b", "File exists"},
                  {false, "missing", "x", "No such file or directory"},
                  {false, "c", "nodir/x", "No such file or directory"}};
  for (const auto& row : failures) {
    SCOPED_TRACE(row.from + " -> " + row.to);
    EXPECT_FALSE(row.remove ? ZnFile::Remove(Path(row.from), &error)
                            : ZnFile::Rename(Path(row.from), Path(row.to), &error));
    EXPECT_EQ(CString(row.error), error);
  }
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.unlink = &RefusingUnlink;
  {
    zenutl::platform::ScopedFileCalls failing(calls);
    EXPECT_FALSE(ZnFile::Remove(Path("b"), &error));
    EXPECT_EQ(CString("Permission denied"), error);
  }
  EXPECT_EQ("a", ReadWholeFile(File("c")));
  EXPECT_EQ("b", ReadWholeFile(File("b")));
  EXPECT_TRUE(ZnFile::Remove(Path("b"), nullptr));
  EXPECT_FALSE(ZnFile::FileExists(Path("b")));
  EXPECT_TRUE(ZnFile::FileExists(Path("e")));
}

ssize_t FullDiskWrite(int, const void*, std::size_t) {
  errno = ENOSPC;
  return -1;
}

// /dev/shm is a tmpfs, a file system apart from the one of the test's folder: rename(2) alone
// stops there with EXDEV.
TEST_F(ZnFileTest, RenameMovesAPlainFileToAnotherFileSystemAndStillRefusesToReplace) {
  zenutl_test::TempDir memory("/dev/shm");
  struct stat here, there;
  ASSERT_EQ(::stat(Dir().c_str(), &here), 0);
  ASSERT_EQ(::stat(memory.path().c_str(), &there), 0);
  ASSERT_NE(here.st_dev, there.st_dev);
  const CString made(memory.File("report.txt"));
  WriteWholeFile(memory.File("report.txt"), "content");
  ASSERT_EQ(::chmod(made, 0640), 0);
  const struct timespec written[2] = {{1000000000, 0}, {1234567890, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, made, written, 0), 0);

  CString error;
  ASSERT_TRUE(ZnFile::Rename(made, Path("report.txt"), &error)) << error.GetString();
  EXPECT_FALSE(fs::exists(memory.File("report.txt")));
  EXPECT_EQ("content", ReadWholeFile(File("report.txt")));
  struct stat moved;
  ASSERT_EQ(::stat(File("report.txt").c_str(), &moved), 0);
  EXPECT_EQ(moved.st_mode & 07777, 0640u);
  EXPECT_EQ(moved.st_mtime, 1234567890);

  const struct {
    std::string from, to;
    const char* error;
  } refused[] = {
      {File("report.txt"), memory.File("taken"), "File exists"},
      {File("folder"), memory.File("folder"), "Invalid cross-device link"},
  };
  WriteWholeFile(memory.File("taken"), "other");
  fs::create_directory(File("folder"));
  for (const auto& row : refused) {
    SCOPED_TRACE(row.from);
    EXPECT_FALSE(ZnFile::Rename(CString(row.from), CString(row.to), &error));
    EXPECT_EQ(CString(row.error), error);
  }
  // A copy the disk cannot take leaves nothing behind and the original in place.
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.write = &FullDiskWrite;
  {
    zenutl::platform::ScopedFileCalls full(calls);
    EXPECT_FALSE(ZnFile::Rename(Path("report.txt"), CString(memory.File("new")), &error));
  }
  EXPECT_EQ(CString("No space left on device"), error);
  EXPECT_FALSE(fs::exists(memory.File("new")));
  EXPECT_EQ("content", ReadWholeFile(File("report.txt")));
  EXPECT_EQ("other", ReadWholeFile(memory.File("taken")));
}

TEST(ZnFileNames, IsValidFileNameRefusesExactlyTheNineReservedCharacters) {
  const std::string reserved = "*\\/?<>:\"|";
  for (int code = 1; code < 256; ++code) {
    const char ch = static_cast<char>(code);
    EXPECT_EQ(reserved.find(ch) == std::string::npos,
              ZnFile::IsValidFileName(CString("name") + ch + "x"))
        << code;
  }
  EXPECT_TRUE(ZnFile::IsValidFileName(CString("")));
}

TEST(ZnFileNames, SetFileExtensionCutsAtTheLastDotAnywhere) {
  EXPECT_EQ(CString("a.txt"), ZnFile::SetFileExtension("a.doc", "txt"));
  EXPECT_EQ(CString("a.txt"), ZnFile::SetFileExtension("a", "txt"));
  EXPECT_EQ(CString("a.txt"), ZnFile::SetFileExtension("a.b\\c", "txt"));
  EXPECT_EQ(CString("a.tar.zip"), ZnFile::SetFileExtension("a.tar.gz", "zip"));
}

TEST_F(ZnFileTest, GetTempFileNameProposesTheFirstFreeNumberedName) {
  for (const char* taken : {"x.txt", "x2.txt", "data", "AuditTemp.xml"})
    WriteWholeFile(File(taken), "");
  const CString dir(FromNativePath(Dir().string()));
  EXPECT_EQ(dir + "\\y.txt", ZnFile::GetTempFileNameA(dir + "\\y.txt"));
  EXPECT_EQ(dir + "\\x3.txt", ZnFile::GetTempFileNameA(dir + "\\x.txt"));
  EXPECT_EQ(dir + "\\data2.", ZnFile::GetTempFileNameA(dir + "\\data"));
  EXPECT_FALSE(fs::exists(File("x3.txt")));  // only proposed
  const char* saved = std::getenv("TMPDIR");
  const std::string savedValue = saved ? saved : "";
  ::setenv("TMPDIR", Dir().string().c_str(), 1);
  const CString bare = ZnFile::GetTempFileNameA(CString("AuditTemp.xml"));
  saved ? ::setenv("TMPDIR", savedValue.c_str(), 1) : ::unsetenv("TMPDIR");
  EXPECT_EQ(dir + "\\AuditTemp2.xml", bare);
}

std::string Block(const char* block, std::size_t size) {
  return std::string(block, size);
}

TEST(ZnFileLists, WritesTheFolderOnceWithForwardSlashesThenTheNames) {
  const std::vector<CString> names = {CString("C:\\d\\a.txt"), CString("D:\\x\\b.txt")};
  std::unique_ptr<char[]> zero(ZnFile::GetFileNames(names));
  EXPECT_EQ(std::string("C:/d\0a.txt\0b.txt\0\0", 18), Block(zero.get(), 18));
  std::unique_ptr<char[]> piped(ZnFile::GetFileNames(names, '|'));
  EXPECT_STREQ("C:/d|a.txt|b.txt", piped.get());
  std::unique_ptr<char[]> root(ZnFile::GetFileNames({CString("C:\\a"), CString("C:\\b")}));
  EXPECT_EQ(std::string("C:/\0a\0b\0\0", 9), Block(root.get(), 9));
  std::unique_ptr<char[]> single(ZnFile::GetFileNames({CString("C:\\d\\only")}, ';'));
  EXPECT_STREQ("C:\\d\\only", single.get());
  std::unique_ptr<char[]> none(ZnFile::GetFileNames(std::vector<CString>()));
  EXPECT_EQ('\0', none[0]);
  const std::string longName(600, 'n');
  std::unique_ptr<char[]> big(ZnFile::GetFileNames({CString("C:\\" + longName), CString("b")}));
  EXPECT_EQ(longName, big.get() + 4);
}

TEST_F(ZnFileTest, ReadsListsBackIntoFullPaths) {
  const std::string folder = Dir().string();
  std::vector<CString> out;
  ZnFile::GetFileNames((folder + '\0' + "a.txt" + '\0' + "b.txt" + '\0' + '\0').c_str(), out);
  ZnFile::GetFileNames((File("gone") + '\0' + "a.txt" + '\0' + '\0').c_str(), out);
  ZnFile::GetFileNames("C:/d|a.txt|sub/b.txt", out, '|');
  ZnFile::GetFileNames("C:\\d|c.txt", out, '|');
  ZnFile::GetFileNames("C:\\d\\only.txt", out, '|');
  const std::vector<CString> expected = {
      CString(folder + "\\a.txt"), CString(folder + "\\b.txt"),  // both slashes kept
      CString(File("gone")),                                     // no folder there: one path
      // Joined by the path operator: the native form, with this system's separator.
      CString("C:/d/a.txt"), CString("C:/d/sub/b.txt"), CString("C:/d/c.txt"),
      CString("C:\\d\\only.txt")};
  EXPECT_EQ(expected, out);
}

TEST_F(ZnFileTest, IsTextFileLooksAtOneBlockUnlessAskedForTheWholeFile) {
  std::string lateZero(2 * 30768, 'a');
  lateZero[30768] = '\0';
  WriteWholeFile(File("late"), lateZero);
  WriteWholeFile(File("ctrlz"), std::string("x\x1A\0", 3));  // binary mode: no end at Ctrl-Z
  EXPECT_TRUE(ZnFile::IsTextFile(Path("late"), false));
  EXPECT_FALSE(ZnFile::IsTextFile(Path("late"), true));
  EXPECT_FALSE(ZnFile::IsTextFile(Path("ctrlz"), false));
  EXPECT_FALSE(ZnFile::IsTextFile(Path("missing"), false));
  EXPECT_FALSE(ZnFile::IsTextFile(Path(""), false));  // the folder itself
}

TEST_F(ZnFileTest, GetEncodingReadsTheByteOrderMark) {
  using namespace ZnFile;
  const struct {
    std::string bytes;
    ETextFileEncoding checked, unchecked;
  } rows[] = {{"", eNoText, eNoText},
              {"A", eNoText, eNoText},
              {"abc", eAnsi, eNoText},
              {"\xEF\xBB\xBF", eUtf8, eUtf8},
              {"\xEF\xBB", eAnsi, eNoText},
              {std::string("\xFE\xFF\0a", 4), eUtf16BE, eUtf16BE},
              {"\xFF\xFE", eUtf16LE, eUtf16LE},  // the unread third byte counts as not zero
              {std::string("\xFF\xFE"
                           "a\0",
                           4),
               eUtf16LE, eUtf16LE},
              {std::string("\xFF\xFE\0\0m\0", 6), eUtf32LE, eUtf32LE},
              {std::string("\0\0\xFE\xFF", 4), eUtf32BE, eUtf32BE},
              {std::string("\xFF\xFE\0", 3), eNoText, eNoText},
              {std::string("\xFF\xFE\0\x41", 4), eNoText, eNoText}};
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.bytes));
    WriteWholeFile(File("e"), row.bytes);
    EXPECT_EQ(row.checked, GetEncoding(Path("e"), true));
    EXPECT_EQ(row.unchecked, GetEncoding(Path("e"), false));
  }
  EXPECT_EQ(eNoText, GetEncoding(Path("missing"), true));
}

}  // namespace
