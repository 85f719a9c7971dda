// The text functions of path_functions.h: pure string logic on Windows paths.
#include <gtest/gtest.h>

#include <string>

#include "zenutl/path_functions.h"

namespace {

struct SplitRow {
  const char* path;
  const char* drive;
  const char* dir;
  const char* name;
  const char* ext;
};

TEST(ZnSplitPath, SplitsIntoDriveFolderNameAndExtension) {
  const SplitRow rows[] = {
      {"C:\\a\\b.txt", "C:", "\\a\\", "b", ".txt"},
      {"a/b.c.d", "", "a\\", "b.c", ".d"},
      {".profile", "", "", "", ".profile"},
      {"x\\", "", "x\\", "", ""},
      {"C:x", "C:", "", "x", ""},
      {"C:", "C:", "", "", ""},
      {"a.b\\c", "", "a.b\\", "c", ""},
      {"\\\\server\\share\\f.", "", "\\\\server\\share\\", "f", "."},
      {"/tmp/x.tar.gz", "", "\\tmp\\", "x.tar", ".gz"},
      {"", "", "", "", ""},
  };
  for (const SplitRow& row : rows) {
    SCOPED_TRACE(row.path);
    char drive[ZN_MAX_DRIVE], dir[ZN_MAX_DIR], name[ZN_MAX_FNAME], ext[ZN_MAX_EXT];
    ZnSplitPath(row.path, drive, dir, name, ext);
    EXPECT_STREQ(row.drive, drive);
    EXPECT_STREQ(row.dir, dir);
    EXPECT_STREQ(row.name, name);
    EXPECT_STREQ(row.ext, ext);
  }
}

TEST(ZnSplitPath, SkipsNullOutputsAndCutsLongPartsToTheirBuffers) {
  const std::string longName(400, 'n');
  char name[ZN_MAX_FNAME];
  ZnSplitPath(("C:\\d\\" + longName + ".e").c_str(), nullptr, nullptr, name, nullptr);
  EXPECT_EQ(std::string(ZN_MAX_FNAME - 1, 'n'), name);
}

struct MakeRow {
  const char* drive;
  const char* dir;
  const char* name;
  const char* ext;
  const char* path;
};

TEST(ZnMakePath, JoinsPartsAddingColonSeparatorAndDot) {
  const MakeRow rows[] = {
      {"C", "a", "b", "txt", "C:a\\b.txt"},
      {"C:", "\\x\\", "y", ".z", "C:\\x\\y.z"},
      {"", "x/", "y", "", "x\\y"},
      {nullptr, nullptr, "n", nullptr, "n"},
      {"", "dir", "", "", "dir\\"},
      {"", "", "", "", ""},
  };
  for (const MakeRow& row : rows) {
    SCOPED_TRACE(row.path);
    char path[MAX_PATH];
    ZnMakePath(path, row.drive, row.dir, row.name, row.ext);
    EXPECT_STREQ(row.path, path);
  }
}

TEST(ZnMakePath, RebuildsWhatZnSplitPathTookApart) {
  for (const char* original : {"C:\\a\\b.txt", "\\\\srv\\s\\f.x.y", "rel\\dir\\name", "C:n.e"}) {
    SCOPED_TRACE(original);
    char drive[ZN_MAX_DRIVE], dir[ZN_MAX_DIR], name[ZN_MAX_FNAME], ext[ZN_MAX_EXT];
    char path[MAX_PATH];
    ZnSplitPath(original, drive, dir, name, ext);
    ZnMakePath(path, drive, dir, name, ext);
    EXPECT_STREQ(original, path);
  }
}

TEST(ZnMakePath, CutsTheResultToMaxPath) {
  const std::string dir(300, 'd');
  char path[MAX_PATH + 8];
  ZnMakePath(path, "", dir.c_str(), "n", "e");
  EXPECT_EQ(std::string(MAX_PATH - 1, 'd'), path);
}

struct TextRow {
  const char* input;
  const char* expected;
};

TEST(ZnPathAppend, JoinsWithOneBackslashWithoutMergingExistingOnes) {
  const struct {
    const char* path;
    const char* more;
    const char* expected;
  } rows[] = {
      {"a", "b", "a\\b"},         {"", "b", "b"},          {"a/", "b/c", "a\\b\\c"},
      {"a\\", "\\b", "a\\\\b"},   {"a", "\\b", "a\\b"},    {"a", "", "a\\"},
      {"a\\", "", "a\\"},         {"", "", ""},            {"C:", "x", "C:\\x"},
      {"/tmp", "f.txt", "\\tmp\\f.txt"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.path) + " + " + row.more);
    EXPECT_EQ(CString(row.expected), ZnPathAppend(row.path, row.more));
    EXPECT_EQ(std::string(row.expected), ZnPathAppend(std::string(row.path), std::string(row.more)));
  }
  EXPECT_EQ(CString("b"), ZnPathAppend(nullptr, "b"));
}

TEST(ZnGetDirectory, KeepsTheRootOfADriveAndNothingBeforeIndexTwo) {
  const TextRow rows[] = {
      {"C:/x.txt", "C:\\"},      {"C:\\a\\x.txt", "C:\\a"}, {"x.txt", ""},
      {"\\x", ""},               {"a\\x", ""},              {"ab\\x", "ab\\"},
      {"abc\\x", "abc"},         {"/tmp/a/b", "\\tmp\\a"},  {"C:\\a\\", "C:\\a"},
      {"", ""},
  };
  for (const TextRow& row : rows) {
    SCOPED_TRACE(row.input);
    EXPECT_EQ(CString(row.expected), ZnGetDirectory(row.input));
  }
}

TEST(ZnGetFileName, TakesTheTextAfterTheLastSeparator) {
  const TextRow rows[] = {
      {"a\\b.txt", "b.txt"}, {"a/b/c", "c"}, {"plain", "plain"}, {"dir\\", ""}, {"", ""},
  };
  for (const TextRow& row : rows) {
    SCOPED_TRACE(row.input);
    EXPECT_EQ(CString(row.expected), ZnGetFileName(row.input));
  }
}

TEST(ZnGetFileTitle, CutsTheExtensionOnlyWhenItMatchesIgnoringCase) {
  const struct {
    const char* path;
    const char* ext;
    const char* expected;
  } rows[] = {
      {"a\\b.txt", "TXT", "b"},    {"b.txt", "dat", "b.txt"}, {"b.txt", nullptr, "b"},
      {"d.x/b.tar.gz", nullptr, "b.tar"}, {"d.x\\b", nullptr, "b"}, {"b.", nullptr, "b"},
      {"b.", "", "b"},             {"b.txt", ".txt", "b.txt"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.path) + " / " + (row.ext ? row.ext : "null"));
    EXPECT_EQ(CString(row.expected), ZnGetFileTitle(row.path, row.ext));
  }
}

TEST(ZnGetFileExtension, SearchesTheWholePathForTheLastDot) {
  const TextRow rows[] = {
      {"a\\b.txt", "txt"}, {"a.b\\c", "b\\c"}, {"a.b/c", "b\\c"}, {"none", ""},
      {"x.", ""},          {".rc", "rc"},      {"", ""},
  };
  for (const TextRow& row : rows) {
    SCOPED_TRACE(row.input);
    EXPECT_EQ(CString(row.expected), ZnGetFileExtension(row.input));
  }
}

}  // namespace
