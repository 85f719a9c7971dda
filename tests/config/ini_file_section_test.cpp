#include "zenutl/ini_file_section.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <boost/filesystem.hpp>
#include <climits>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace {

using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

// What the probe program, started with fork and exec, prints for `requests`, one per line.
std::vector<std::string> ProbeInAnotherProcess(const std::string& file, const std::string& section,
                                               const std::vector<std::string>& requests) {
  std::string command = std::string(ZENUTL_INI_SECTION_PROBE) + " '" + file + "' '" + section + "'";
  for (const std::string& request : requests) command += " '" + request + "'";
  FILE* pipe = ::popen(command.c_str(), "r");
  std::vector<std::string> lines;
  char line[4096];
  while (pipe != nullptr && std::fgets(line, sizeof(line), pipe) != nullptr) {
    lines.emplace_back(line, std::strlen(line) - 1);
  }
  if (pipe == nullptr || ::pclose(pipe) != 0) lines.assign(1, "<probe failed>");
  return lines;
}

class IniFileSectionTest : public zenutl_test::TempDirTest {
 protected:
  IniFileSectionTest() : path_(File("settings.ini")) {}
  const char* path() const { return path_.c_str(); }

 private:
  std::string path_;
};

TEST_F(IniFileSectionTest, TypedValuesRoundTripWithTheSameTextInEveryReader) {
  struct Row {
    const char* key;
    std::function<void(IniFileSection&)> write;
    const char* text;   // the value's text in the file
    const char* probe;  // what another process reads, as "type:key" => printed
    const char* read;
  };
  const double doubles[] = {0, 1.5, -2, 1e-9};
  const std::string utf8 = "\xc3\xa5\xc3\xa4\xc3\xb6 \xce\xa9";
  const std::vector<Row> rows = {
      {"On", [](IniFileSection& s) { s.WriteBool("On", true); }, "1", "bool:ON", "1"},
      {"Int", [](IniFileSection& s) { s.WriteInt("Int", INT_MIN); }, "-2147483648", "int:int",
       "-2147483648"},
      {"Real", [](IniFileSection& s) { s.WriteFloat("Real", 1234567.0); }, "1.23457e+06",
       "double:Real", "1234570"},
      {"Ints",
       [](IniFileSection& s) {
         s.WriteIntVector("Ints", {1, -2});
       },
       "1;-2", "ints:Ints", "1,-2"},
      {"Floats",
       [](IniFileSection& s) {
         s.WriteFloatVector("Floats", {0.5f, -4.0f});
       },
       "0.5;-4", "floats:Floats", "0.5,-4"},
      {"Doubles", [&](IniFileSection& s) { s.WriteDoubleVector("Doubles", doubles, 3); },
       "1.5;-2;1e-09", "doubles:Doubles", "3:1.5,-2,1.0000000000000001e-09"},
      {"List",
       [](IniFileSection& s) {
         s.WriteStringVector("List", {"a", "", "c d"}, ';');
       },
       "a;;c d", "strings:List", "3:a||c d"},
      {"Wide",
       [](IniFileSection& s) { s.WriteKey("Wide", std::wstring(L"\u00e5\u00e4\u00f6 \u03a9")); },
       utf8.c_str(), "wide:Wide", utf8.c_str()},
  };
  std::string expectedFile = "[Typed]\n";
  std::vector<std::string> requests;
  {
    IniFileSection writer(path(), "Typed");
    for (const Row& row : rows) {
      row.write(writer);
      expectedFile += std::string(row.key) + "=" + row.text + "\n";
      requests.push_back(row.probe);
    }
  }
  EXPECT_EQ(ReadWholeFile(path()), expectedFile);
  const IniFileSection reader(path(), "typed");
  const std::vector<std::string> seen = ProbeInAnotherProcess(path(), "TYPED", requests);
  ASSERT_EQ(seen.size(), rows.size()) << seen[0];
  for (std::size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE(rows[i].key);
    CString text;
    EXPECT_TRUE(reader.ReadKey(rows[i].key, text));
    EXPECT_EQ(text.str(), rows[i].text);
    EXPECT_EQ(seen[i], rows[i].read);
  }
  std::wstring wide;
  EXPECT_TRUE(reader.ReadKey("wide", wide));
  EXPECT_EQ(wide, L"\u00e5\u00e4\u00f6 \u03a9");
}

TEST_F(IniFileSectionTest, ReadsValueOfExactlySentinelAsMissingAndCutsLongValues) {
  const std::string long2000 = std::string(1000, 'a') + std::string(1000, 'b');
  WriteWholeFile(path(), "[s]\nmarker=!42!\nlonger=!42!x\nlong=" + long2000 + "\n");
  const IniFileSection section(path(), "s");
  const struct {
    const char* key;
    bool present;
    std::string value;
  } rows[] = {{"marker", false, "untouched"},
              {"absent", false, "untouched"},
              {"longer", true, "!42!x"},
              {"long", true, long2000.substr(0, 1023)}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    CString text("untouched");
    std::wstring wide(L"untouched");
    EXPECT_EQ(section.ReadKey(row.key, text), row.present);
    EXPECT_EQ(section.ReadKey(row.key, wide), row.present);
    EXPECT_EQ(section.HasKey(row.key), row.present);
    EXPECT_EQ(text.str(), row.value);
    EXPECT_EQ(wide, std::wstring(row.value.begin(), row.value.end()));
    // A buffer of five holds four characters: "!42!x" cut there is the marker, so absent.
    wchar_t buffer[5];
    const bool cutPresent = row.present && row.value.compare(0, 4, "!42!") != 0;
    EXPECT_EQ(section.ReadKey(row.key, buffer, 5), cutPresent);
    EXPECT_EQ(std::wstring(buffer), cutPresent ? wide.substr(0, 4) : L"!42!");
  }
}

TEST_F(IniFileSectionTest, HasSectionNeedsAKeyAndIsEmptyOnlyAnswersFalseForTheMarkerKey) {
  const struct {
    const char* file;
    bool hasSection;
    bool isEmpty;
  } rows[] = {{"", false, true},
              {"[s]\n; header only\n", false, true},
              {"[s]\na=1\nb=2\n", true, true},
              {"[s]\n!42!=other\n", true, true},
              {"[s]\na=1\n!42! = !42!\n", true, false},
              {"[t]\n!42!=!42!\n", false, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.file);
    WriteWholeFile(path(), row.file);
    const IniFileSection section(path(), "S");
    EXPECT_EQ(section.HasSection(nullptr, 0), row.hasSection);
    EXPECT_EQ(section.HasSection("s", 7), row.hasSection);  // the index means nothing
    EXPECT_EQ(section.IsEmpty(), row.isEmpty);
  }
  IniFileSection section(path(), "t");
  ASSERT_TRUE(section.DeleteKey("!42!") && section.DeleteKey("!42!"));
  EXPECT_FALSE(section.HasSection(nullptr, 0));
}

TEST_F(IniFileSectionTest, ListsNamesWholeAndInFileOrderThroughTheGrowingBuffer) {
  std::string text;
  std::vector<std::string> names;
  for (int i = 999; i >= 0; --i) {
    names.push_back("Section" + std::string(i % 13, 'x') + std::to_string(i));
    text += "[" + names.back() + "]\nkey" + std::to_string(i) + "=1\n";
  }
  WriteWholeFile(path(), text);
  IniFileSection section(path(), names[500].c_str());
  std::vector<std::string> listed;
  for (const CString& name : section.GetSectionNames()) listed.push_back(name.str());
  EXPECT_EQ(listed, names);
  ASSERT_EQ(section.GetKeyNames().size(), 1u);
  EXPECT_STREQ(section.GetKeyNames()[0], "key499");
  // A single name around the first 256 places: 253 characters answer the "cut" signal.
  for (std::size_t length : {1u, 253u, 254u, 255u, 600u}) {
    SCOPED_TRACE(length);
    const std::string name(length, 'n');
    WriteWholeFile(path(), "[" + name + "]\n" + name + "=1\n");
    section.ChangeSection(name.c_str());
    EXPECT_EQ(section.GetSectionNames(), std::vector<CString>{name.c_str()});
    EXPECT_EQ(section.GetKeyNames(), std::vector<CString>{name.c_str()});
  }
}

TEST_F(IniFileSectionTest, RefusesEverythingAboutSubSections) {
  IniFileSection section(path(), "s");
  IniFileSection target(File("other.ini").c_str(), "t");
  ASSERT_TRUE(section.WriteKey("k", "v"));
  for (const char* name : {"s", "k", "", "a/b"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(section.ChangeSubSection(name) || section.ChangeSubSection(name, 0));
    EXPECT_EQ(section.CreateSubSection(name), nullptr);
    EXPECT_EQ(section.CreateSubSection(name, 1), nullptr);
    EXPECT_EQ(ConfigurationSectionUtilities::CreateSubSection(&section, name), nullptr);
    EXPECT_EQ(section.NumSubSections(name), -1);
  }
  EXPECT_FALSE(section.SupportsSubSections() || section.WriteToSection(&target));
  EXPECT_FALSE(boost::filesystem::exists(File("other.ini")));
}

TEST_F(IniFileSectionTest, MovesBetweenSectionsAndFilesAndReportsWritesThatCantLand) {
  boost::filesystem::create_directory(File("sub"));
  const std::string windowsPath = Dir().string() + "\\sub\\win.ini";
  IniFileSection section(windowsPath.c_str(), "a");
  EXPECT_FALSE(boost::filesystem::exists(File("sub/win.ini"))) << "construction wrote";
  ASSERT_TRUE(section.WriteInt("n", 1));
  std::unique_ptr<ConfigurationSection> copy(section.CopyAndChangeSection("b"));
  ASSERT_TRUE(copy && copy->WriteInt("n", 2));
  EXPECT_FALSE(section.WriteKey("k", "two\nlines") || section.WriteKey("k", L"line\nbreak"));
  EXPECT_EQ(ReadWholeFile(File("sub/win.ini")), "[a]\nn=1\n[b]\nn=2\n");

  section.ChangeSection("B");
  ASSERT_TRUE(section.DeleteSection() && section.Flush());
  EXPECT_STREQ(section.CurrentSection(), "B");
  section.ChangeIniFile(path());
  EXPECT_STREQ(section.IniFile(), path());
  ASSERT_TRUE(section.WriteInt("n", 3));
  EXPECT_EQ(ReadWholeFile(File("sub/win.ini")), "[a]\nn=1\n");
  EXPECT_EQ(ReadWholeFile(path()), "[B]\nn=3\n");
  section.ChangeIniFile(File("missing/x.ini").c_str());  // no such folder
  EXPECT_FALSE(section.WriteBool("k", true));
}

}  // namespace
