// FNClass: the parts of one path in fixed buffers.
#include "zenutl/fn_class.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(FNClass, SplitsThePathAsGivenAndMergesItBack) {
  const struct {
    const char *path, *drive, *dir, *name, *ext;
  } rows[] = {{"C:\\a\\b.txt", "C:", "\\a\\", "b", ".txt"},
              {"/tmp/x/trail.xml", "", "/tmp/x/", "trail", ".xml"},  // slashes stay as they are
              {"d\\.hidden", "", "d\\", "", ".hidden"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    FNClass parts(row.path);
    EXPECT_STREQ("", parts.Name());  // the constructor does not split
    parts.Split();
    EXPECT_STREQ(row.drive, parts.Drive());
    EXPECT_STREQ(row.dir, parts.Directory());
    EXPECT_STREQ(row.name, parts.Name());
    EXPECT_STREQ(row.ext, parts.Extension());
    parts.Merge("D", "x", "y", "z");
    EXPECT_STREQ("D:x\\y.z", parts.Path());
    parts.Merge();
    EXPECT_STREQ(row.path, parts.Path());
  }
}

TEST(FNClass, SetNameAndExtReplacesTheExtensionOnlyWhenGivenOne) {
  FNClass parts;
  parts.Split("/data/trails/audit.xml");
  parts.SetNameAndExt("audit_trail.xsl");
  parts.Merge();
  EXPECT_STREQ("/data/trails/audit_trail.xsl", parts.Path());
  parts.SetNameAndExt("README");
  EXPECT_STREQ("README.xsl", parts.GetNameAndExt());
  EXPECT_STREQ("b.txt", parts.GetNameAndExt("C:\\a\\b.txt"));
  EXPECT_STREQ("C:\\a\\b.txt", parts.Path());
}

TEST(FNClass, CopiesShareTheirBuffers) {
  FNClass original("C:\\a.txt");
  FNClass assigned;
  assigned = original;
  FNClass copied(original);
  original.Split("D:\\changed.doc");
  EXPECT_STREQ("D:\\changed.doc", assigned.Path());
  EXPECT_STREQ("changed", copied.Name());
}

TEST(FNClass, CutsOverlongTextsToTheirBuffers) {
  const std::string longName(400, 'n');
  FNClass parts(("C:\\" + longName + ".ext").c_str());
  EXPECT_EQ(FNClass::kPathSize - 1u, std::strlen(parts.Path()));
  parts.Split();
  EXPECT_EQ(FNClass::kNameSize - 1u, std::strlen(parts.Name()));
  parts.SetNameAndExt((longName + "." + longName).c_str());
  EXPECT_EQ(FNClass::kExtensionSize - 1u, std::strlen(parts.Extension()));
}

TEST(FNClass, ChangesNameOrExtensionInPlace) {
  const struct {
    const char *path, *ext, *withExt, *name, *withName;
  } rows[] = {
      {"a.doc", "txt", "a.txt", "b", "b.doc"},
      {"a.doc", ".html", "a.html", "", ".doc"},
      {"a.doc", "html", "a.tml", "x.y", "x.y.doc"},  // a long extension loses its first letter
      {"C:\\d\\a", "c", "C:\\d\\a.c", "b", "C:\\d\\b"},
      {"x.y\\a.doc", "", "x.y\\a.", "b", "x.y\\b.doc"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    char path[FNClass::kPathSize];
    std::strcpy(path, row.path);
    FNClass::ChangeExtInPath(path, row.ext);
    EXPECT_STREQ(row.withExt, path);
    std::strcpy(path, row.path);
    FNClass::ChangeFileInPath(path, row.name);
    EXPECT_STREQ(row.withName, path);
  }
}

}  // namespace
