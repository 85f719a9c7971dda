// ZnFile: removal and renaming with reasons, names, lists of files, and text encodings.
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/file_calls.h"
#include "platform/native_path.h"
#include "support/temp_dir.h"
#include "zenutl/zn_file.h"

namespace {

namespace fs = boost::filesystem;
using zenutl::platform::FromNativePath;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class ZnFileTest : public zenutl_test::TempDirTest {
 protected:
  CString Path(const std::string& name) const { return CString(File(name)); }
};

TEST_F(ZnFileTest, FileExistsForFilesAndFoldersInEitherSlashForm) {
  WriteWholeFile(File("f.txt"), "");
  fs::create_directory(File("d"));
  EXPECT_TRUE(ZnFile::FileExists(Path("f.txt")));
  EXPECT_TRUE(ZnFile::FileExists(CString(FromNativePath(File("f.txt")))));
  EXPECT_TRUE(ZnFile::FileExists(Path("d")));
  EXPECT_FALSE(ZnFile::FileExists(Path("missing")));
}

TEST_F(ZnFileTest, RemoveTakesAMissingFileAsDone) {
  CString error("untouched");
  EXPECT_TRUE(ZnFile::Remove(Path("missing"), &error));
  EXPECT_EQ(CString("untouched"), error);
  WriteWholeFile(File("f.txt"), "x");
  EXPECT_TRUE(ZnFile::Remove(CString(FromNativePath(File("f.txt"))), nullptr));
  EXPECT_FALSE(fs::exists(File("f.txt")));
}

int RefusingUnlink(const char*) {
  errno = EACCES;
  return -1;
}

TEST_F(ZnFileTest, RemoveGivesTheSystemsReasonForAFailure) {
  fs::create_directory(File("d"));
  CString error;
  EXPECT_FALSE(ZnFile::Remove(Path("d"), &error));
  EXPECT_EQ(CString("Is a directory"), error);
  EXPECT_TRUE(fs::is_directory(File("d")));

  WriteWholeFile(File("locked.txt"), "x");
  zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
  calls.unlink = &RefusingUnlink;
  zenutl::platform::ScopedFileCalls failing(calls);
  EXPECT_FALSE(ZnFile::Remove(Path("locked.txt"), &error));
  EXPECT_EQ(CString("Permission denied"), error);
  EXPECT_FALSE(ZnFile::Remove(Path("locked.txt"), nullptr));
  EXPECT_TRUE(fs::exists(File("locked.txt")));
}

TEST_F(ZnFileTest, RenameMovesButNeverReplaces) {
  WriteWholeFile(File("a.txt"), "a");
  WriteWholeFile(File("b.txt"), "b");
  fs::create_directory(File("d"));
  CString error;
  EXPECT_TRUE(ZnFile::Rename(Path("a.txt"), Path("c.txt"), &error));
  EXPECT_EQ("a", ReadWholeFile(File("c.txt")));
  EXPECT_TRUE(ZnFile::Rename(Path("d"), Path("e"), &error));
  EXPECT_TRUE(fs::is_directory(File("e")));

  const struct {
    std::string from;
    std::string to;
    const char* error;
  } failures[] = {
      {"c.txt", "b.txt", "File exists"},
      {"c.txt", "e", "File exists"},
      {"missing", "x.txt", "No such file or directory"},
      {"c.txt", "nodir/x.txt", "No such file or directory"},
  };
  for (const auto& row : failures) {
    SCOPED_TRACE(row.from + " -> " + row.to);
    EXPECT_FALSE(ZnFile::Rename(Path(row.from), Path(row.to), &error));
    EXPECT_EQ(CString(row.error), error);
  }
  EXPECT_EQ("a", ReadWholeFile(File("c.txt")));
  EXPECT_EQ("b", ReadWholeFile(File("b.txt")));
}

TEST(ZnFileNames, IsValidFileNameRefusesExactlyTheNineReservedCharacters) {
  const std::string reserved = "*\\/?<>:\"|";
  for (int code = 1; code < 256; ++code) {
    const char ch = static_cast<char>(code);
    SCOPED_TRACE(code);
    EXPECT_EQ(reserved.find(ch) == std::string::npos,
              ZnFile::IsValidFileName(CString("name") + ch + "x"));
  }
  EXPECT_TRUE(ZnFile::IsValidFileName(CString("")));
  EXPECT_TRUE(ZnFile::IsValidFileName(CString("a.txt")));
  EXPECT_FALSE(ZnFile::IsValidFileName(CString("C:\\a.txt")));
}

TEST_F(ZnFileTest, GetTempFileNameProposesTheFirstFreeNumberedName) {
  const std::string dir = FromNativePath(Dir().string());
  EXPECT_EQ(CString(dir + "\\x.txt"), ZnFile::GetTempFileNameA(CString(dir + "\\x.txt")));
  WriteWholeFile(File("x.txt"), "");
  WriteWholeFile(File("x2.txt"), "");
  EXPECT_EQ(CString(dir + "\\x3.txt"), ZnFile::GetTempFileNameA(CString(dir + "\\x.txt")));
  WriteWholeFile(File("data"), "");
  EXPECT_EQ(CString(dir + "\\data2."), ZnFile::GetTempFileNameA(CString(dir + "\\data")));
  WriteWholeFile(File("a.b.c"), "");
  EXPECT_EQ(CString(dir + "\\a.b2.c"), ZnFile::GetTempFileNameA(CString(dir + "\\a.b.c")));
  // Nothing is made.
  EXPECT_FALSE(fs::exists(File("x3.txt")));
}

TEST_F(ZnFileTest, GetTempFileNamePutsABareNameInTheTemporaryFolder) {
  const char* saved = std::getenv("TMPDIR");
  const std::string savedValue = saved ? saved : "";
  ::setenv("TMPDIR", Dir().string().c_str(), 1);
  WriteWholeFile(File("AuditTemp.xml"), "");
  const CString name = ZnFile::GetTempFileNameA(CString("AuditTemp.xml"));
  if (saved) {
    ::setenv("TMPDIR", savedValue.c_str(), 1);
  } else {
    ::unsetenv("TMPDIR");
  }
  EXPECT_EQ(CString(FromNativePath(Dir().string()) + "\\AuditTemp2.xml"), name);
}

TEST(ZnFileNames, SetFileExtensionCutsAtTheLastDotAnywhere) {
  const struct {
    const char* path;
    const char* ext;
    const char* expected;
  } rows[] = {
      {"a.doc", "txt", "a.txt"}, {"a", "txt", "a.txt"},     {"a.b\\c", "txt", "a.txt"},
      {"a.tar.gz", "zip", "a.tar.zip"}, {"a.doc", "", "a."}, {"d\\a.doc", nullptr, "d\\a."},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(CString(row.expected), ZnFile::SetFileExtension(row.path, row.ext));
  }
}

// The block up to and including its final terminator(s).
std::string ZeroList(const char* block) {
  std::string text;
  const char* p = block;
  while (*p) {
    text.append(p);
    text += '\0';
    p += std::strlen(p) + 1;
  }
  return text + '\0';
}

TEST(ZnFileLists, WritesTheFolderOnceWithForwardSlashesThenTheNames) {
  const std::vector<CString> names = {CString("C:\\d\\a.txt"), CString("C:\\d\\b.txt")};
  std::unique_ptr<char[]> zero(ZnFile::GetFileNames(names));
  EXPECT_EQ(std::string("C:/d\0a.txt\0b.txt\0\0", 18), ZeroList(zero.get()));
  std::unique_ptr<char[]> piped(ZnFile::GetFileNames(names, '|'));
  EXPECT_STREQ("C:/d|a.txt|b.txt", piped.get());
}

TEST(ZnFileLists, DropsTheFoldersOfAllButTheFirstName) {
  const std::vector<CString> names = {CString("C:\\a.txt"), CString("D:\\x\\b.txt"),
                                      CString("c.txt")};
  std::unique_ptr<char[]> zero(ZnFile::GetFileNames(names));
  EXPECT_EQ(std::string("C:/\0a.txt\0b.txt\0c.txt\0\0", 23), ZeroList(zero.get()));
}

TEST(ZnFileLists, WritesOneNameAloneAndNoNamesAsEmptyText) {
  for (const char separator : {'\0', ';'}) {
    SCOPED_TRACE(static_cast<int>(separator));
    const std::vector<CString> none;
    const std::vector<CString> one = {CString("C:\\d\\only.txt")};
    std::unique_ptr<char[]> empty(separator ? ZnFile::GetFileNames(none, separator)
                                            : ZnFile::GetFileNames(none));
    EXPECT_EQ('\0', empty[0]);
    std::unique_ptr<char[]> single(separator ? ZnFile::GetFileNames(one, separator)
                                             : ZnFile::GetFileNames(one));
    EXPECT_STREQ("C:\\d\\only.txt", single.get());
  }
}

TEST(ZnFileLists, HoldsNamesLongerThanTheirShareOfTheBlock) {
  const std::string longName(600, 'n');
  const std::vector<CString> names = {CString("C:\\d\\" + longName), CString("C:\\d\\b")};
  std::unique_ptr<char[]> zero(ZnFile::GetFileNames(names));
  EXPECT_EQ("C:/d" + std::string(1, '\0') + longName + '\0' + "b" + '\0' + '\0',
            ZeroList(zero.get()));
}

TEST_F(ZnFileTest, ReadsAZeroSeparatedListBackWhenItsFolderExists) {
  const std::string folder = Dir().string();
  const std::string list = folder + '\0' + "a.txt" + '\0' + "b.txt" + '\0' + '\0';
  std::vector<CString> out = {CString("kept")};
  ZnFile::GetFileNames(list.c_str(), out);
  const std::vector<CString> expected = {CString("kept"), CString(folder + "\\a.txt"),
                                         CString(folder + "\\b.txt")};
  EXPECT_EQ(expected, out);
}

TEST_F(ZnFileTest, ReadsAZeroSeparatedListWhoseFolderIsMissingAsOnePath) {
  const std::string missing = File("missing");
  const std::string list = missing + '\0' + "a.txt" + '\0' + '\0';
  WriteWholeFile(File("file.txt"), "");
  std::vector<CString> out;
  ZnFile::GetFileNames(list.c_str(), out);
  ZnFile::GetFileNames(File("file.txt").c_str(), out);
  const std::vector<CString> expected = {CString(missing), CString(File("file.txt"))};
  EXPECT_EQ(expected, out);
}

TEST(ZnFileLists, ReadsASeparatedListBackInWindowsForm) {
  const struct {
    const char* list;
    std::vector<CString> expected;
  } rows[] = {
      {"C:/d|a.txt|b.txt", {CString("C:\\d\\a.txt"), CString("C:\\d\\b.txt")}},
      {"C:\\d|sub/a.txt", {CString("C:\\d\\sub\\a.txt")}},
      {"/tmp/x|y", {CString("\\tmp\\x\\y")}},
      {"C:\\d\\only.txt", {CString("C:\\d\\only.txt")}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.list);
    std::vector<CString> out;
    ZnFile::GetFileNames(row.list, out, '|');
    EXPECT_EQ(row.expected, out);
  }
}

TEST_F(ZnFileTest, ListsSurviveARoundTripThroughBothForms) {
  const std::string dir = FromNativePath(Dir().string());
  const std::vector<CString> names = {CString(dir + "\\one.txt"), CString(dir + "\\two.txt"),
                                      CString(dir + "\\three")};
  std::unique_ptr<char[]> piped(ZnFile::GetFileNames(names, '|'));
  std::vector<CString> back;
  ZnFile::GetFileNames(piped.get(), back, '|');
  EXPECT_EQ(names, back);

  std::unique_ptr<char[]> zero(ZnFile::GetFileNames(names));
  back.clear();
  ZnFile::GetFileNames(zero.get(), back);
  ASSERT_EQ(3u, back.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(zenutl::platform::ToNativePath(names[i].str()),
              zenutl::platform::ToNativePath(back[i].str()));
  }
}

TEST_F(ZnFileTest, IsTextFileLooksAtOneBlockUnlessAskedForTheWholeFile) {
  const std::size_t kBlock = 30768;
  std::string lateZero(kBlock * 2, 'a');
  lateZero[kBlock] = '\0';
  std::string earlyZero(kBlock * 2, 'a');
  earlyZero[kBlock - 1] = '\0';
  const struct {
    std::string content;
    bool wholeFile;
    bool expected;
  } rows[] = {
      {lateZero, false, true},  {lateZero, true, false},  {earlyZero, false, false},
      {"plain text", true, true}, {"", false, true},
      {std::string("\xFF\xFE" "a\0", 4), false, false},  // UTF-16 has zero bytes
      {std::string("x\x1A\0", 3), false, false},  // binary mode: no end at Ctrl-Z
  };
  int index = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(index++);
    WriteWholeFile(File("t"), row.content);
    EXPECT_EQ(row.expected, ZnFile::IsTextFile(Path("t"), row.wholeFile));
  }
  EXPECT_FALSE(ZnFile::IsTextFile(Path("missing"), true));
  EXPECT_FALSE(ZnFile::IsTextFile(CString(Dir().string()), true));
}

TEST_F(ZnFileTest, GetEncodingReadsTheByteOrderMark) {
  using ZnFile::ETextFileEncoding;
  const struct {
    std::string bytes;
    ETextFileEncoding checked;    // checkText true
    ETextFileEncoding unchecked;  // checkText false
  } rows[] = {
      {"", ZnFile::eNoText, ZnFile::eNoText},
      {"A", ZnFile::eNoText, ZnFile::eNoText},
      {"abc", ZnFile::eAnsi, ZnFile::eNoText},
      {"\xEF\xBB\xBFtext", ZnFile::eUtf8, ZnFile::eUtf8},
      {"\xEF\xBB\xBF", ZnFile::eUtf8, ZnFile::eUtf8},
      {"\xEF\xBB", ZnFile::eAnsi, ZnFile::eNoText},
      {"\xFE\xFF", ZnFile::eUtf16BE, ZnFile::eUtf16BE},
      {std::string("\xFE\xFF\0a", 4), ZnFile::eUtf16BE, ZnFile::eUtf16BE},
      {"\xFF\xFE", ZnFile::eUtf16LE, ZnFile::eUtf16LE},
      {std::string("\xFF\xFE" "a\0", 4), ZnFile::eUtf16LE, ZnFile::eUtf16LE},
      {std::string("\xFF\xFE\0\0", 4), ZnFile::eUtf32LE, ZnFile::eUtf32LE},
      {std::string("\0\0\xFE\xFF", 4), ZnFile::eUtf32BE, ZnFile::eUtf32BE},
      {std::string("\xFF\xFE\0", 3), ZnFile::eNoText, ZnFile::eNoText},
      {std::string("\xFF\xFE\0\x41", 4), ZnFile::eNoText, ZnFile::eNoText},
      {std::string("\xFF\xFE\0\0m\0", 6), ZnFile::eUtf32LE, ZnFile::eUtf32LE},
      {"\xFF\xFF text", ZnFile::eAnsi, ZnFile::eNoText},
  };
  int index = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(index++);
    WriteWholeFile(File("e"), row.bytes);
    EXPECT_EQ(row.checked, ZnFile::GetEncoding(Path("e"), true));
    EXPECT_EQ(row.unchecked, ZnFile::GetEncoding(Path("e"), false));
  }
  EXPECT_EQ(ZnFile::eNoText, ZnFile::GetEncoding(Path("missing"), true));
}

}  // namespace
