#include "zenutl/ini_file_section.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace {

using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

// Runs the probe program on `file` and returns its lines.
std::vector<std::string> ProbeInAnotherProcess(const std::string& file, const std::string& section,
                                               const std::vector<std::string>& requests) {
  int pipeEnds[2];
  if (::pipe(pipeEnds) != 0) return {"<pipe failed>"};
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(pipeEnds[1], STDOUT_FILENO);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    std::vector<char*> argv;
    std::vector<std::string> args{ZENUTL_INI_SECTION_PROBE, file, section};
    args.insert(args.end(), requests.begin(), requests.end());
    for (std::string& arg : args) argv.push_back(&arg[0]);
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ::close(pipeEnds[1]);
  std::string output;
  char chunk[4096];
  ssize_t got;
  while ((got = ::read(pipeEnds[0], chunk, sizeof(chunk))) > 0) output.append(chunk, got);
  ::close(pipeEnds[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return {"<probe failed>"};
  std::vector<std::string> lines;
  std::string::size_type start = 0;
  for (std::string::size_type end; (end = output.find('\n', start)) != std::string::npos;
       start = end + 1) {
    lines.push_back(output.substr(start, end - start));
  }
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
    const char* text;   // the line's value in the file
    const char* probe;  // "type:key" for the second process
    const char* read;   // what it must print
  };
  const double doubles[] = {0, 1.5, -2, 1e-9};
  const float floats[] = {0, 0.25f, 3};
  const std::vector<Row> rows = {
      {"On", [](IniFileSection& s) { s.WriteBool("On", true); }, "1", "bool:On", "1"},
      {"Off", [](IniFileSection& s) { s.WriteBool("Off", false); }, "0", "bool:Off", "0"},
      {"Int", [](IniFileSection& s) { s.WriteInt("Int", -2147483647); }, "-2147483647", "int:Int",
       "-2147483647"},
      {"Float", [](IniFileSection& s) { s.WriteFloat("Float", 0.1); }, "0.1", "float:Float",
       "0.100000001"},
      {"Double", [](IniFileSection& s) { s.WriteFloat("Double", 1234567.0); }, "1.23457e+06",
       "double:Double", "1234570"},
      {"Ints",
       [](IniFileSection& s) {
         s.WriteIntVector("Ints", {1, -2, 30});
       },
       "1;-2;30", "ints:Ints", "1,-2,30"},
      {"Bools",
       [](IniFileSection& s) {
         s.WriteBoolVector("Bools", {true, false});
       },
       "1;0", "bools:Bools", "1,0"},
      {"Floats",
       [](IniFileSection& s) {
         s.WriteFloatVector("Floats", {0.5f, -4.0f});
       },
       "0.5;-4", "floats:Floats", "0.5,-4"},
      {"Doubles", [&](IniFileSection& s) { s.WriteDoubleVector("Doubles", doubles, 3); },
       "1.5;-2;1e-09", "doubles:Doubles", "3:1.5,-2,1.0000000000000001e-09"},
      {"FloatArray", [&](IniFileSection& s) { s.WriteFloatVector("FloatArray", floats, 2); },
       "0.25;3", "doubles:FloatArray", "2:0.25,3"},
      {"List",
       [](IniFileSection& s) {
         s.WriteStringVector("List", std::vector<CString>{"a", "", "c d"}, ';');
       },
       "a;;c d", "strings:List", "3:a||c d"},
      {"Text", [](IniFileSection& s) { s.WriteKey("Text", std::string("plain text")); },
       "plain text", "text:Text", "plain text"},
      {"Wide",
       [](IniFileSection& s) { s.WriteKey("Wide", std::wstring(L"\u00e5\u00e4\u00f6 \u03a9")); },
       "\xc3\xa5\xc3\xa4\xc3\xb6 \xce\xa9", "wide:Wide", "\xc3\xa5\xc3\xa4\xc3\xb6 \xce\xa9"},
  };
  {
    IniFileSection writer(path(), "Typed");
    for (const Row& row : rows) row.write(writer);
  }
  std::string expectedFile = "[Typed]\n";
  for (const Row& row : rows) expectedFile += std::string(row.key) + "=" + row.text + "\n";
  EXPECT_EQ(ReadWholeFile(path()), expectedFile);

  IniFileSection reader(path(), "typed");
  std::vector<std::string> requests;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.key);
    CString text;
    EXPECT_TRUE(reader.ReadKey(row.key, text));
    EXPECT_EQ(text.str(), row.text);
    requests.push_back(row.probe);
  }
  const std::vector<std::string> seen = ProbeInAnotherProcess(path(), "TYPED", requests);
  ASSERT_EQ(seen.size(), rows.size()) << (seen.empty() ? "" : seen[0]);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(seen[i], rows[i].read) << rows[i].key;
  }

  // The same values read in this process through the typed interface.
  bool on = false;
  int i = 0;
  std::vector<float> fv;
  std::wstring wide;
  EXPECT_TRUE(reader.ReadBool("on", on));
  EXPECT_TRUE(reader.ReadInt("INT", i));
  EXPECT_TRUE(reader.ReadFloatVector("floats", fv));
  EXPECT_TRUE(reader.ReadKey("Wide", wide));
  EXPECT_TRUE(on);
  EXPECT_EQ(i, -2147483647);
  EXPECT_EQ(fv, (std::vector<float>{0.5f, -4.0f}));
  EXPECT_EQ(wide, L"\u00e5\u00e4\u00f6 \u03a9");
}

TEST_F(IniFileSectionTest, ReadsValueOfExactlySentinelAsMissing) {
  WriteWholeFile(path(), "[s]\nmarker=!42!\nlonger=!42!x\nshort=!42\n");
  IniFileSection section(path(), "s");
  const struct {
    const char* key;
    bool present;
  } rows[] = {{"marker", false}, {"longer", true}, {"short", true}, {"absent", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    CString text("untouched");
    std::wstring wide(L"untouched");
    EXPECT_EQ(section.ReadKey(row.key, text), row.present);
    EXPECT_EQ(section.ReadKey(row.key, wide), row.present);
    EXPECT_EQ(section.HasKey(row.key), row.present);
    if (!row.present) {
      EXPECT_STREQ(text, "untouched");
      EXPECT_EQ(wide, L"untouched");
      wchar_t buffer[16];
      EXPECT_FALSE(section.ReadKey(row.key, buffer, 16));
      EXPECT_EQ(std::wstring(buffer), L"!42!");
    }
  }
}

TEST_F(IniFileSectionTest, CutsLongValuesTo1023Characters) {
  IniFileSection section(path(), "s");
  std::string value(2000, 'v');
  for (std::size_t i = 0; i < value.size(); i += 10) value[i] = static_cast<char>('0' + i % 7);
  ASSERT_TRUE(section.WriteKey("long", value.c_str()));
  EXPECT_NE(ReadWholeFile(path()).find(value), std::string::npos) << "the file holds it whole";
  CString text;
  std::wstring wide;
  std::string std;
  ASSERT_TRUE(section.ReadKey("long", text));
  ASSERT_TRUE(section.ReadKey("long", wide));
  ASSERT_TRUE(section.ReadKey("long", std));
  EXPECT_EQ(text.str(), value.substr(0, 1023));
  EXPECT_EQ(std, value.substr(0, 1023));
  EXPECT_EQ(wide, std::wstring(value.begin(), value.begin() + 1023));
  EXPECT_TRUE(section.HasKey("long"));
  wchar_t small[5];
  EXPECT_TRUE(section.ReadKey("long", small, 5));
  EXPECT_EQ(std::wstring(small), std::wstring(value.begin(), value.begin() + 4));
}

TEST_F(IniFileSectionTest, HasSectionNeedsAKeyNotJustAHeader) {
  WriteWholeFile(path(), "[one]\nk=1\n[header only]\n; a comment\n[other]\na=\n");
  IniFileSection section(path(), "one");
  EXPECT_TRUE(section.HasSection(nullptr, 0));
  EXPECT_TRUE(section.HasSection(nullptr, 7));  // the index means nothing here
  EXPECT_TRUE(section.HasSection("OTHER", 0));
  EXPECT_FALSE(section.HasSection("header only", 0));
  EXPECT_FALSE(section.HasSection("absent", 0));
  ASSERT_TRUE(section.DeleteKey("k"));
  EXPECT_FALSE(section.HasSection(nullptr, 0));
  EXPECT_TRUE(section.DeleteKey("k")) << "removing an absent key succeeds";
}

TEST_F(IniFileSectionTest, IsEmptyAnswersTrueExceptForTheMarkerKeyHoldingTheMarker) {
  const struct {
    const char* file;
    bool expected;
  } rows[] = {{"", true},
              {"[s]\n", true},
              {"[s]\na=1\nb=2\nc=3\n", true},
              {"[s]\n!42!=other\n", true},
              {"[s]\n!42!=!42!\n", false},
              {"[s]\na=1\n!42! = !42!\n", false},
              {"[t]\n!42!=!42!\n", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.file);
    WriteWholeFile(path(), row.file);
    EXPECT_EQ(IniFileSection(path(), "s").IsEmpty(), row.expected);
  }
}

TEST_F(IniFileSectionTest, ListsNamesWholeAndInFileOrderThroughTheGrowingBuffer) {
  // 1000 sections of varied name lengths: the list needs many 256-character steps.
  std::string text;
  std::vector<std::string> names;
  for (int i = 999; i >= 0; --i) {
    names.push_back("Section" + std::string(static_cast<std::size_t>(i % 13), 'x') +
                    std::to_string(i));
    text += "[" + names.back() + "]\nkey" + std::to_string(i) + "=" + std::to_string(i) + "\n";
  }
  WriteWholeFile(path(), text);
  IniFileSection section(path(), names[500].c_str());
  const std::vector<CString> listed = section.GetSectionNames();
  ASSERT_EQ(listed.size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(listed[i].str(), names[i]);
  const std::vector<CString> keys = section.GetKeyNames();
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_STREQ(keys[0], "key499");

  // Single names around the buffer's first step: 253 characters and its terminator give the
  // "cut" answer of 254 and a second round; 255 characters need the second round for real.
  for (std::size_t length : {1u, 253u, 254u, 255u, 256u, 600u}) {
    SCOPED_TRACE(length);
    const std::string name(length, 'n');
    WriteWholeFile(path(), "[" + name + "]\n" + name + "=1\n");
    IniFileSection one(path(), name.c_str());
    const std::vector<CString> sections = one.GetSectionNames();
    const std::vector<CString> keys = one.GetKeyNames();
    ASSERT_EQ(sections.size(), 1u);
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(sections[0].str(), name);
    EXPECT_EQ(keys[0].str(), name);
  }
  WriteWholeFile(path(), "");
  EXPECT_TRUE(section.GetSectionNames().empty());
  EXPECT_TRUE(section.GetKeyNames().empty());
}

TEST_F(IniFileSectionTest, RefusesEverythingAboutSubSections) {
  IniFileSection section(path(), "s");
  IniFileSection target(File("other.ini").c_str(), "t");
  ASSERT_TRUE(section.WriteKey("k", "v"));
  for (const char* name : {"s", "k", "", "a/b"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(section.ChangeSubSection(name));
    EXPECT_FALSE(section.ChangeSubSection(name, 0));
    EXPECT_EQ(section.CreateSubSection(name), nullptr);
    EXPECT_EQ(section.CreateSubSection(name, 1), nullptr);
    EXPECT_EQ(section.CopyAndChangeSubSection(name), nullptr);
    EXPECT_EQ(section.NumSubSections(name), -1);
    EXPECT_EQ(section.GetAllSubSections(name), nullptr);
    EXPECT_EQ(ConfigurationSectionUtilities::CreateSubSection(&section, name), nullptr);
    // Only the empty path, which asks for no step at all, is there.
    EXPECT_EQ(ConfigurationSectionUtilities::HasSubSection(&section, name, 0), *name == '\0');
  }
  EXPECT_FALSE(section.SupportsSubSections());
  EXPECT_FALSE(section.WriteToSection(&target));
  EXPECT_STREQ(section.CurrentSection(), "s");
  EXPECT_FALSE(boost::filesystem::exists(File("other.ini")));
}

TEST_F(IniFileSectionTest, MovesBetweenSectionsAndFilesWithoutTouchingThem) {
  const std::string second = File("second.ini");
  IniFileSection section(path(), "a");
  EXPECT_STREQ(section.IniFile(), path());
  EXPECT_STREQ(section.GetIniFile(), path());
  EXPECT_FALSE(boost::filesystem::exists(path())) << "construction created the file";
  ASSERT_TRUE(section.WriteInt("n", 1));

  std::unique_ptr<ConfigurationSection> copy(section.CopyAndChangeSection("b"));
  ASSERT_TRUE(copy);
  ASSERT_TRUE(copy->WriteInt("n", 2));
  EXPECT_STREQ(section.CurrentSection(), "a");
  section.ChangeSection("never written");
  EXPECT_STREQ(section.CurrentSection(), "never written");
  EXPECT_FALSE(section.HasKey("n"));
  section.ChangeSection("B");
  int n = 0;
  EXPECT_TRUE(section.ReadInt("n", n));
  EXPECT_EQ(n, 2);

  section.ChangeIniFile(second.c_str());
  EXPECT_STREQ(section.IniFile(), second.c_str());
  EXPECT_FALSE(section.ReadInt("n", n));
  ASSERT_TRUE(section.WriteInt("n", 3));
  EXPECT_EQ(ReadWholeFile(second), "[B]\nn=3\n");
  EXPECT_EQ(ReadWholeFile(path()), "[a]\nn=1\n[b]\nn=2\n");
}

TEST_F(IniFileSectionTest, DeleteSectionKeepsTheObjectOnTheName) {
  WriteWholeFile(path(), "[keep]\nx=1\n[gone]\na=1\nb=2\n");
  IniFileSection section(path(), "Gone");
  ASSERT_TRUE(section.DeleteSection());
  EXPECT_STREQ(section.CurrentSection(), "Gone");
  EXPECT_EQ(ReadWholeFile(path()), "[keep]\nx=1\n");
  ASSERT_TRUE(section.WriteKey("c", "3"));
  EXPECT_EQ(ReadWholeFile(path()), "[keep]\nx=1\n[Gone]\nc=3\n");
  EXPECT_TRUE(section.Flush());
}

TEST_F(IniFileSectionTest, AcceptsWindowsPathsAndAnswersFalseForWritesThatCantLand) {
  boost::filesystem::create_directory(File("sub"));
  const std::string windowsPath = Dir().string() + "\\sub\\win.ini";
  IniFileSection section(windowsPath.c_str(), "s");
  ASSERT_TRUE(section.WriteKey("k", "v"));
  EXPECT_EQ(ReadWholeFile(File("sub/win.ini")), "[s]\nk=v\n");

  EXPECT_FALSE(section.WriteKey("k", "two\nlines"));
  EXPECT_FALSE(section.WriteKey("a=b", "v"));
  EXPECT_FALSE(section.WriteKey("k", L"line\nbreak"));
  EXPECT_EQ(ReadWholeFile(File("sub/win.ini")), "[s]\nk=v\n");
  IniFileSection nowhere(File("missing/x.ini").c_str(), "s");
  EXPECT_FALSE(nowhere.WriteKey("k", "v"));
  EXPECT_FALSE(nowhere.WriteBool("k", true));
}

}  // namespace
