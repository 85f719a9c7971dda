// The text functions of path_functions.h: pure string logic on Windows paths.
#include <gtest/gtest.h>

#include <string>

#include "zenutl/path_functions.h"

namespace {

TEST(ZnSplitPath, SplitsIntoDriveFolderNameAndExtensionAndBack) {
  const struct {
    const char *path, *drive, *dir, *name, *ext, *remade;
  } rows[] = {{"C:\\a\\b.txt", "C:", "\\a\\", "b", ".txt", "C:\\a\\b.txt"},
              {"a/b.c.d", "", "a\\", "b.c", ".d", "a\\b.c.d"},
              {".profile", "", "", "", ".profile", ".profile"},
              {"C:x", "C:", "", "x", "", "C:x"},
              {"a.b\\c", "", "a.b\\", "c", "", "a.b\\c"},
              {"\\\\srv\\s\\f.", "", "\\\\srv\\s\\", "f", ".", "\\\\srv\\s\\f."}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    char drive[ZN_MAX_DRIVE], dir[ZN_MAX_DIR], name[ZN_MAX_FNAME], ext[ZN_MAX_EXT];
    char path[MAX_PATH];
    ZnSplitPath(row.path, drive, dir, name, ext);
    EXPECT_STREQ(row.drive, drive);
    EXPECT_STREQ(row.dir, dir);
    EXPECT_STREQ(row.name, name);
    EXPECT_STREQ(row.ext, ext);
    ZnMakePath(path, drive, dir, name, ext);
    EXPECT_STREQ(row.remade, path);
  }
}

TEST(ZnMakePath, AddsColonSeparatorAndDotAndCutsToFit) {
  char path[MAX_PATH + 8];
  ZnMakePath(path, "C", "a", "b", "txt");
  EXPECT_STREQ("C:a\\b.txt", path);
  ZnMakePath(path, nullptr, "x/", "y", nullptr);
  EXPECT_STREQ("x\\y", path);
  ZnMakePath(path, "", std::string(300, 'd').c_str(), "n", "e");
  EXPECT_EQ(std::string(MAX_PATH - 1, 'd'), path);
  char name[ZN_MAX_FNAME];
  ZnSplitPath(("C:\\" + std::string(400, 'n') + ".e").c_str(), nullptr, nullptr, name, nullptr);
  EXPECT_EQ(std::string(ZN_MAX_FNAME - 1, 'n'), name);
}

TEST(ZnPathAppend, JoinsWithOneBackslashWithoutMergingExistingOnes) {
  const struct {
    const char *path, *more, *expected;
  } rows[] = {{"a", "b", "a\\b"},       {"", "b", "b"},       {"a/", "b/c", "a\\b\\c"},
              {"a\\", "\\b", "a\\\\b"}, {"a", "\\b", "a\\b"}, {"a", "", "a\\"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.path) + " + " + row.more);
    EXPECT_EQ(CString(row.expected), ZnPathAppend(row.path, row.more));
    EXPECT_EQ(std::string(row.expected),
              ZnPathAppend(std::string(row.path), std::string(row.more)));
  }
}

TEST(ZnPathText, TakesFolderNameTitleAndExtensionApart) {
  const struct {
    const char *path, *directory, *name, *title, *extension;
  } rows[] = {{"C:/x.txt", "C:\\", "x.txt", "x", "txt"},
              {"C:\\a\\x.txt", "C:\\a", "x.txt", "x", "txt"},
              {"x.txt", "", "x.txt", "x", "txt"},
              {"a\\x", "", "x", "x", ""},
              {"ab\\x", "ab\\", "x", "x", ""},  // a `\` at index 2 is taken for a drive root
              {"/tmp/a/b.tar.gz", "\\tmp\\a", "b.tar.gz", "b.tar", "gz"},
              {"a.b\\c", "a.b", "c", "c", "b\\c"}};  // the extension search ignores folders
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(CString(row.directory), ZnGetDirectory(row.path));
    EXPECT_EQ(CString(row.name), ZnGetFileName(row.path));
    EXPECT_EQ(CString(row.title), ZnGetFileTitle(row.path, nullptr));
    EXPECT_EQ(CString(row.extension), ZnGetFileExtension(row.path));
  }
  EXPECT_EQ(CString("b"), ZnGetFileTitle("a\\b.txt", "TXT"));
  EXPECT_EQ(CString("b.txt"), ZnGetFileTitle("b.txt", "dat"));
  EXPECT_EQ(CString("b.txt"), ZnGetFileTitle("b.txt", ".txt"));
}

}  // namespace
