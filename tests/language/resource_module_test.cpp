#include "zenutl/resource_module.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cstring>
#include <string>

#include "platform/native_path.h"
#include "support/temp_dir.h"

namespace {

using zenutl_test::WriteWholeFile;

const std::string kMagic = "zenutl-catalogue 1\n";

class ResourceModule : public zenutl_test::TempDirTest {
 protected:
  // Writes a catalogue and loads it; the test owns the module.
  HINSTANCE Load(const std::string& content, CString* error = nullptr) {
    WriteWholeFile(File("cat.txt"), content);
    return ZnLoadResourceModule(File("cat.txt").c_str(), error);
  }
  static std::string Text(HINSTANCE module, unsigned int id, int bufferSize = 1024) {
    std::string buffer(static_cast<std::size_t>(bufferSize) + 8, '#');
    const int length = ZnLoadString(module, id, &buffer[0], bufferSize);
    EXPECT_EQ(static_cast<std::size_t>(length), std::strlen(buffer.c_str()));
    return buffer.c_str();
  }
};

TEST_F(ResourceModule, ReadsTextsWithTheirSpacesAndEscapes) {
  HINSTANCE module = Load(kMagic +
                          "# a comment\n"
                          "\n"
                          "   \t\n"
                          "string 1 plain text\n"
                          "string 0x2A  two leading spaces, one trailing \n"
                          "string 3 tab\\there\\nnew line \\\\ back\\x41\\xc3\\xa5\n"
                          "string 4\n"
                          "string 5 \n"
                          "string\t6\t100% sure: %s\r\n"
                          "  # an indented comment\n"
                          "string 4294967295 largest\n"
                          "string 0 zero");  // no newline at the end
  ASSERT_NE(module, nullptr);
  struct Row {
    unsigned int id;
    const char* text;
  } rows[] = {{1, "plain text"},
              {42, " two leading spaces, one trailing "},
              {3, "tab\there\nnew line \\ backA\xc3\xa5"},
              {4, ""},
              {5, ""},
              {6, "100% sure: %s"},
              {4294967295u, "largest"},
              {0, "zero"},
              {7, ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.id);
    EXPECT_EQ(Text(module, row.id), row.text);
  }
  ZnFreeResourceModule(module);
}

TEST_F(ResourceModule, LoadStringCutsToTheBufferLikeLoadStringA) {
  const std::string longText(3000, 'L');
  HINSTANCE module = Load(kMagic + "string 1 abcdef\nstring 2 " + longText + "\n");
  ASSERT_NE(module, nullptr);
  struct Row {
    int size;
    const char* text;
  } rows[] = {{1, ""}, {2, "a"}, {6, "abcde"}, {7, "abcdef"}, {100, "abcdef"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.size);
    EXPECT_EQ(Text(module, 1, row.size), row.text);
  }
  EXPECT_EQ(Text(module, 2, 1024), std::string(1023, 'L'));
  EXPECT_EQ(Text(module, 2, 4000), longText);

  char buffer[4] = {'#', '#', '#', '#'};
  EXPECT_EQ(ZnLoadString(module, 1, buffer, 0), 0);
  EXPECT_EQ(buffer[0], '#');
  EXPECT_EQ(ZnLoadString(module, 1, nullptr, 10), 0);
  EXPECT_EQ(ZnLoadString(module, 99, buffer, 4), 0);
  EXPECT_STREQ(buffer, "");
  ZnFreeResourceModule(module);
}

TEST_F(ResourceModule, ReadsBinaryResourcesFromHexAndFiles) {
  boost::filesystem::create_directories(Dir() / "xml");
  const std::string binary("\x00\x01\xff<a/>\r\n", 8);
  WriteWholeFile(File("xml/settings.zxl"), binary);
  WriteWholeFile(File("elsewhere.bin"), "absolute");
  HINSTANCE module =
      Load(kMagic + "hex 23 101 3c 61 2F3e\n" + "hex 23 102\n" + "hex 10 101 00ff\n" +
           "file 23 103 xml\\settings.zxl\n" + "file 23 104 xml/settings.zxl  \n" + "file 24 1 " +
           File("elsewhere.bin") + "\n");
  ASSERT_NE(module, nullptr);
  struct Row {
    unsigned int type;
    unsigned int id;
    bool found;
    std::string bytes;
  } rows[] = {
      {23, 101, true, "<a/>"}, {23, 102, true, ""},     {10, 101, true, std::string("\x00\xff", 2)},
      {23, 103, true, binary}, {23, 104, true, binary}, {24, 1, true, "absolute"},
      {23, 1, false, ""},      {99, 101, false, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.type) + "/" + std::to_string(row.id));
    std::string bytes = "stale";
    EXPECT_EQ(ZnGetResource(module, row.id, row.type, bytes), row.found);
    EXPECT_EQ(bytes, row.bytes);
  }
  // Texts and resources are separate tables.
  EXPECT_EQ(Text(module, 101), "");
  ZnFreeResourceModule(module);
}

TEST_F(ResourceModule, RefusesMalformedCataloguesWithTheLineAndReason) {
  boost::filesystem::create_directories(Dir() / "folder");
  struct Row {
    std::string content;
    std::string error;  // after "<path>:"
  } rows[] = {
      {"", "1: the first line must be 'zenutl-catalogue 1'"},
      {"zenutl-catalogue 2\n", "1: the first line must be 'zenutl-catalogue 1'"},
      {kMagic + "text 1 a\n", "2: unknown entry 'text'"},
      {kMagic + "string x1 a\n", "2: bad string id 'x1'"},
      {kMagic + "string 0x a\n", "2: bad string id '0x'"},
      {kMagic + "string 4294967296 a\n", "2: string id '4294967296' is larger than 4294967295"},
      {kMagic + "string 1 a\n\nstring 1 b\n", "4: string 1 is defined twice"},
      {kMagic + "string 1 a\\qb\n", "2: unknown escape '\\q'"},
      {kMagic + "string 1 ends\\\n", "2: a text ends in a lone backslash"},
      {kMagic + "string 1 a\\x00b\n", "2: \\x00 can not be part of a text"},
      {kMagic + "hex 23\n", "2: missing resource id"},
      {kMagic + "hex 23 1 abc\n", "2: hex bytes must be pairs of hex digits"},
      {kMagic + "hex 23 1 00\nhex 23 1 01\n", "3: resource 1 of type 23 is defined twice"},
      {kMagic + "file 23 1\n", "2: missing file path"},
      {kMagic + "file 23 1 nothere.xml\n",
       "2: can not read 'nothere.xml': No such file or directory"},
      {kMagic + "file 23 1 folder\n", "2: can not read 'folder': Is a directory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.content);
    CString error("previous");
    EXPECT_EQ(Load(row.content, &error), nullptr);
    EXPECT_EQ(std::string(error.GetString()), File("cat.txt") + ":" + row.error);
    EXPECT_EQ(Load(row.content), nullptr);  // without asking for the reason
  }
}

TEST_F(ResourceModule, ReportsAMissingOrUnreadableCatalogue) {
  CString error;
  EXPECT_EQ(ZnLoadResourceModule(File("absent.txt").c_str(), &error), nullptr);
  EXPECT_EQ(std::string(error.GetString()),
            "can not read catalogue '" + File("absent.txt") + "': No such file or directory");
  EXPECT_EQ(ZnLoadResourceModule(Dir().string().c_str(), &error), nullptr);
  EXPECT_NE(std::string(error.GetString()).find("Is a directory"), std::string::npos);
  EXPECT_EQ(ZnLoadResourceModule(nullptr, &error), nullptr);
  EXPECT_STREQ(error, "no catalogue file named");
}

TEST_F(ResourceModule, AcceptsWindowsPathsCrlfAndAByteOrderMark) {
  WriteWholeFile(File("data.bin"), "payload");
  WriteWholeFile(File("cat.txt"),
                 "\xEF\xBB\xBFzenutl-catalogue 1\r\nstring 1 one\r\nfile 5 5 data.bin\r\n");
  const std::string windowsPath = zenutl::platform::FromNativePath(File("cat.txt"));
  ASSERT_NE(windowsPath.find('\\'), std::string::npos);
  CString error("previous");
  HINSTANCE module = ZnLoadResourceModule(windowsPath.c_str(), &error);
  ASSERT_NE(module, nullptr) << error.GetString();
  EXPECT_TRUE(error.IsEmpty());
  EXPECT_EQ(Text(module, 1), "one");
  std::string bytes;
  EXPECT_TRUE(ZnGetResource(module, 5, 5, bytes));
  EXPECT_EQ(bytes, "payload");
  ZnFreeResourceModule(module);
}

TEST_F(ResourceModule, NullModuleIsTheBuiltInEnglishCatalogue) {
  EXPECT_EQ(Text(nullptr, 17057), "%s cannot be empty.");
  EXPECT_EQ(Text(nullptr, 0x42BF), "Yes");
  EXPECT_EQ(Text(nullptr, 123456), "");
  std::string bytes = "stale";
  EXPECT_FALSE(ZnGetResource(nullptr, 1, 23, bytes));
  EXPECT_TRUE(bytes.empty());
  ZnFreeResourceModule(nullptr);
}

}  // namespace
