#include "zenutl/xml_section.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>

#include <climits>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "config/external_dtd_leak.h"
#include "config/file_probes.h"
#include "config/guarded_dom_parser.h"
#include "config/local_listener.h"
#include "support/child_process.h"
#include "support/exception_matchers.h"
#include "support/file_handle_shortage.h"
#include "support/full_disk.h"
#include "support/temp_dir.h"
#include "support/unprivileged_user.h"
#include "zenutl/ini_file_section.h"
#include "zenutl/language_string.h"
#include "zenutl/memory_xml_input_stream.h"
#include "zenutl/resource_module.h"
#include "zenutl/write_xml_file.h"
#include "zenutl/xml_input_limit.h"

namespace {

using zenutl_test::ReadWholeFile;
using zenutl_test::TempDirTest;
using zenutl_test::WriteWholeFile;
typedef std::unique_ptr<ConfigurationSection> SectionPtr;

const char kParseError[] = "An error occurred during parsing\nMessage: ";

std::unique_ptr<XMLSection> FromString(const std::string& text) {
  return std::unique_ptr<XMLSection>(XMLSection::CreateXMLSectionFromString(text.c_str()));
}

std::string Text(const ConfigurationSection& section, const char* key) {
  CString value;
  if (!section.ReadKey(key, value)) return "<missing>";
  return value.GetString();
}

// The section's element (or with `wholeDocument` its document) without pretty printing.
std::string Xml(const ConfigurationSection& section, bool wholeDocument = false) {
  const xercesc::DOMNode* node =
      dynamic_cast<const XMLSection&>(section).GetCurrentSection()->mpNode;
  if (wholeDocument) node = node->getOwnerDocument();
  CString text;
  EXPECT_TRUE(WriteXMLFile(text, node, false));
  return text.GetString();
}

std::string Repeat(const std::string& piece, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += piece;
  return result;
}

// --- A new document ------------------------------------------------------------------------

TEST(XMLSection, NewSectionStandsOnAnEmptyDocumentThatHoldsNoKeys) {
  XMLSection section;
  CString value("untouched");
  EXPECT_FALSE(section.ReadKey("any", value));
  EXPECT_STREQ(value, "untouched");
  EXPECT_TRUE(section.IsEmpty());
  EXPECT_FALSE(section.HasKey("any"));
  EXPECT_FALSE(section.ChangeSubSection("any"));
  EXPECT_FALSE(section.HasSection("any", -1));
  EXPECT_EQ(section.NumSubSections("any"), 0);
  EXPECT_FALSE(section.WriteKey("key", "value"));
  EXPECT_FALSE(section.DeleteKey("key"));
  EXPECT_FALSE(section.DeleteSection());
  section.ChangeSection("sibling");  // the document node has no siblings: nothing happens
  EXPECT_TRUE(section.IsEmpty());
  EXPECT_TRUE(section.SupportsSubSections());
  EXPECT_STREQ(XMLSection::ZentricsXMLExtension(), "zxl");
}

// --- Finding children ----------------------------------------------------------------------

const char kRepeated[] =
    "<r><c n=\"1\"/><x n=\"x\"/>text<!--c--><c n=\"2\"/><c n=\"3\"><d n=\"deep\"/></c></r>";

TEST(XMLSection, ChangeSubSectionAndHasSectionFindTheIndexedElementChild) {
  struct Case {
    const char* name;
    int index;
    const char* found;  // the "n" key there, or null for no move
    bool has;           // HasSection's answer
  };
  const Case cases[] = {
      {"c", 1, "1", true},           {"c", 3, "3", true},       {"c", 4, nullptr, false},
      {"c", 0, nullptr, false},      {"c", -1, nullptr, true},  {"x", 1, "x", true},
      {"d", 1, nullptr, false},      {"d", -1, nullptr, false}, {"#text", 1, nullptr, false},
      {"#text", -1, nullptr, false}, {"C", 1, nullptr, false},
  };
  auto document = FromString(kRepeated);
  ASSERT_TRUE(document->ChangeSubSection("r"));
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " #" + std::to_string(c.index));
    std::unique_ptr<ConfigurationSection> cursor(document->Copy());
    EXPECT_EQ(cursor->ChangeSubSection(c.name, c.index), c.found != nullptr);
    EXPECT_EQ(Text(*cursor, "n"), c.found ? c.found : "<missing>");
    EXPECT_EQ(document->HasSection(c.name, c.index), c.has);
  }
  ASSERT_TRUE(document->ChangeSubSection("c"));
  EXPECT_EQ(Text(*document, "n"), "1");
}

TEST(XMLSection, CountingAndListingIncludeChildrenOfAnyKind) {
  auto document = FromString(kRepeated);
  ASSERT_TRUE(document->ChangeSubSection("r"));
  EXPECT_EQ(document->NumSubSections("c"), 3);
  EXPECT_EQ(document->NumSubSections("#text"), 1);
  EXPECT_EQ(document->NumSubSections("#comment"), 1);
  EXPECT_EQ(document->NumSubSections("none"), 0);

  std::unique_ptr<std::vector<boost::shared_ptr<ConfigurationSection> > > all(
      document->GetAllSubSections("c"));
  ASSERT_EQ(all->size(), 3u);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Text(*(*all)[i], "n"), std::to_string(i + 1));
  std::unique_ptr<std::vector<boost::shared_ptr<ConfigurationSection> > > none(
      document->GetAllSubSections("none"));
  ASSERT_NE(none, nullptr);
  EXPECT_TRUE(none->empty());

  // The text node is found by CreateSubSection too, and holds no keys.
  SectionPtr text(document->CreateSubSection("#text"));
  EXPECT_FALSE(text->HasKey("n"));
  EXPECT_FALSE(text->WriteKey("n", "v"));
  EXPECT_EQ(document->NumSubSections("#text"), 1);
}

TEST(XMLSection, CreateSubSectionBeyondTheCountAppendsExactlyOneElement) {
  auto document = FromString("<r><c n=\"1\"/></r>");
  ASSERT_TRUE(document->ChangeSubSection("r"));
  SectionPtr fifth(document->CreateSubSection("c", 5));
  EXPECT_EQ(document->NumSubSections("c"), 2);
  EXPECT_TRUE(fifth->IsEmpty());
  fifth->WriteKey("n", "new");
  SectionPtr second(document->CreateSubSection("c", 2));
  EXPECT_EQ(Text(*second, "n"), "new");
  SectionPtr first(document->CreateSubSection("c", 1));
  EXPECT_EQ(Text(*first, "n"), "1");
  EXPECT_EQ(Xml(*document), "<r><c n=\"1\"/><c n=\"new\"/></r>");
  EXPECT_EQ(Text(*document, "n"), "<missing>") << "the caller moved";
}

TEST(XMLSection, ChangeSectionMovesToASiblingOrAppendsIt) {
  auto document = FromString("<r><a/><b k=\"1\"/><b k=\"2\"/></r>");
  ASSERT_TRUE(document->ChangeSubSection("r"));
  ASSERT_TRUE(document->ChangeSubSection("a"));
  document->ChangeSection("b");
  EXPECT_EQ(Text(*document, "k"), "1");
  document->ChangeSection("z");
  EXPECT_TRUE(document->IsEmpty());
  document->ChangeSection("z");
  EXPECT_EQ(Xml(*document, true),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
            "<r><a/><b k=\"1\"/><b k=\"2\"/><z/></r>");
}

TEST(XMLSection, NonAsciiSectionNamesNeverMatch) {
  auto document = FromString("<r/>");
  ASSERT_TRUE(document->ChangeSubSection("r"));
  SectionPtr child(
      document->CreateSubSection("Gr\xc3\xb6\xc3\x9f"
                                 "e"));
  child->ChangeSection(
      "Gr\xc3\xb6\xc3\x9f"
      "e");
  child->ChangeSection(
      "Gr\xc3\xb6\xc3\x9f"
      "e");
  EXPECT_EQ(document->NumSubSections("Gr\xc3\xb6\xc3\x9f"
                                     "e"),
            0);
  EXPECT_FALSE(
      document->ChangeSubSection("Gr\xc3\xb6\xc3\x9f"
                                 "e"));
  EXPECT_EQ(Xml(*document),
            "<r><Gr\xc3\xb6\xc3\x9f"
            "e/><Gr\xc3\xb6\xc3\x9f"
            "e/><Gr\xc3\xb6\xc3\x9f"
            "e/></r>");
}

TEST(XMLSection, IllegalNamesThrowTheDomErrorFromTheWrite) {
  XMLSection document;
  SectionPtr root(document.CreateSubSection("root"));
  EXPECT_THROW(root->WriteKey("bad key", "v"), xercesc::DOMException);
  EXPECT_THROW(root->WriteKey("1st", L"v"), xercesc::DOMException);
  EXPECT_THROW(SectionPtr(root->CreateSubSection("a<b")), xercesc::DOMException);
  EXPECT_TRUE(root->IsEmpty());
  // A document has one root element: a second one is a DOM error too.
  EXPECT_THROW(SectionPtr(document.CreateSubSection("other")), xercesc::DOMException);
}

// --- Keys ----------------------------------------------------------------------------------

TEST(XMLSection, EveryTextFormReadsWhatEveryTextFormWrote) {
  const std::string narrow =
      "Gr\xc3\xbc\xc3\x9f"
      "e \xe2\x82\xac \xf0\x9f\x98\x80";
  const std::wstring wide = L"Gr\u00fc\u00dfe \u20ac \U0001F600";
  XMLSection document;
  SectionPtr root(document.CreateSubSection("root"));
  ASSERT_TRUE(root->WriteKey("n", narrow.c_str()));
  ASSERT_TRUE(root->WriteKey("w", wide.c_str()));
  ASSERT_TRUE(root->WriteKey("s", narrow));
  ASSERT_TRUE(root->WriteKey("ws", wide));
  const std::string longKey(200, 'k');  // beyond the stack buffer for key names
  ASSERT_TRUE(root->WriteKey(longKey.c_str(), "stale"));
  ASSERT_TRUE(root->WriteKey(longKey.c_str(), narrow));
  for (const char* key : {"n", "w", "s", "ws", longKey.c_str()}) {
    SCOPED_TRACE(key);
    CString asCString;
    std::string asString;
    std::wstring asWide;
    ASSERT_TRUE(root->ReadKey(key, asCString));
    ASSERT_TRUE(root->ReadKey(key, asString));
    ASSERT_TRUE(root->ReadKey(key, asWide));
    EXPECT_EQ(std::string(asCString.GetString()), narrow);
    EXPECT_EQ(asString, narrow);
    EXPECT_EQ(asWide, wide);
    char buffer[64];
    ASSERT_TRUE(root->ReadKey(key, buffer, sizeof buffer - 1));
    EXPECT_EQ(std::string(buffer), narrow);
    wchar_t wideBuffer[64];
    ASSERT_TRUE(root->ReadKey(key, wideBuffer, 63));
    EXPECT_EQ(std::wstring(wideBuffer), wide);
  }
  const std::string file = Xml(document, false);
  EXPECT_NE(file.find("n=\"" + narrow + "\""), std::string::npos) << file;
  for (const char* key : {"n", "w", "s", "ws", longKey.c_str()}) {
    EXPECT_TRUE(root->DeleteKey(key));
    EXPECT_FALSE(root->DeleteKey(key));
    EXPECT_FALSE(root->HasKey(key));
  }
  EXPECT_TRUE(root->IsEmpty());
}

TEST(XMLSection, BufferReadsCutAtTheSizeAndTerminateJustAfter) {
  XMLSection document;
  SectionPtr root(document.CreateSubSection("root"));
  root->WriteKey("k", "abcdef");
  struct Case {
    unsigned size;
    const char* expected;
  };
  for (const Case& c : {Case{0, ""}, Case{3, "abc"}, Case{6, "abcdef"}, Case{9, "abcdef"}}) {
    SCOPED_TRACE(c.size);
    char buffer[12];
    std::memset(buffer, 'X', sizeof buffer);
    ASSERT_TRUE(root->ReadKey("k", buffer, c.size));
    EXPECT_STREQ(buffer, c.expected);
    wchar_t wide[12];
    ASSERT_TRUE(root->ReadKey("k", wide, c.size));
    EXPECT_EQ(std::wstring(wide), std::wstring(c.expected, c.expected + std::strlen(c.expected)));
  }
  char untouched[4] = "old";
  EXPECT_FALSE(root->ReadKey("missing", untouched, 3));
  EXPECT_STREQ(untouched, "old");
}

TEST(XMLSection, ReadIntStoresTheValueEvenWhenTheAnswerIsFalse) {
  struct Case {
    const char* text;
    bool ok;
    int value;
  };
  const Case cases[] = {
      {"42", true, 42},
      {"-17", true, -17},
      {" 8", true, 8},
      {"", true, 0},
      {"12x", false, 12},
      {"abc", false, 0},
      {"1.5", false, 1},
      {"99999999999", true, INT_MAX},
      {"-99999999999", true, INT_MIN},
  };
  XMLSection document;
  SectionPtr root(document.CreateSubSection("root"));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    root->WriteKey("k", c.text);
    int value = 555;
    EXPECT_EQ(root->ReadInt("k", value), c.ok);
    EXPECT_EQ(value, c.value);
  }
  int untouched = 555;
  EXPECT_FALSE(root->ReadInt("missing", untouched));
  EXPECT_EQ(untouched, 555);
}

TEST(XMLSection, IsEmptyLooksAtChildrenOfAnyKindAndAttributes) {
  const std::pair<const char*, bool> cases[] = {
      {"<r/>", true},         {"<r k=\"\"/>", false},
      {"<r> </r>", false},    {"<r><!--c--></r>", false},
      {"<r><c/></r>", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.first);
    auto document = FromString(c.first);
    ASSERT_TRUE(document->ChangeSubSection("r"));
    EXPECT_EQ(document->IsEmpty(), c.second);
  }
}

TEST(XMLSection, DeleteSectionMovesToTheParentAndDropsTheSubtree) {
  auto document = FromString("<r k=\"root\"><a><b/></a><c/></r>");
  ASSERT_TRUE(document->ChangeSubSection("r"));
  SectionPtr a(document->CreateSubSection("a"));
  EXPECT_TRUE(a->DeleteSection());
  EXPECT_EQ(Text(*a, "k"), "root");
  EXPECT_EQ(Xml(*document), "<r k=\"root\"><c/></r>");
  EXPECT_FALSE(document->HasSection("a", -1));
}

TEST(XMLSection, CopiesShareTheDocumentAndKeepItAlive) {
  std::unique_ptr<ConfigurationSection> copy;
  std::unique_ptr<ConfigurationSection> child;
  {
    XMLSection document;
    child.reset(document.CreateSubSection("root"));
    copy.reset(document.CreateSubSection("root"));  // the same element again
    EXPECT_EQ(document.NumSubSections("root"), 1);
    XMLSection byConstructor(*static_cast<XMLSection*>(child.get()));
    byConstructor.WriteKey("k", "shared");
  }
  EXPECT_EQ(Text(*copy, "k"), "shared");
  copy->WriteKey("k", "changed");
  EXPECT_EQ(Text(*child, "k"), "changed");
}

TEST(XMLSection, CurrentSectionCanBeSavedAndRestored) {
  auto document = FromString("<r><a k=\"a\"/><b k=\"b\"/></r>");
  ASSERT_TRUE(document->ChangeSubSection("r"));
  ASSERT_TRUE(document->ChangeSubSection("a"));
  CurrentNode saved = *document->GetCurrentSection();
  document->ChangeSection("b");
  EXPECT_EQ(Text(*document, "k"), "b");
  document->SetCurrentSection(&saved);
  EXPECT_EQ(Text(*document, "k"), "a");
  EXPECT_EQ(document->GetCurrentSection()->mpNode, saved.mpNode);
}

// --- Typed values: the same text as the INI store -------------------------------------------

class XMLSectionTyped : public TempDirTest {};

// The value under "k" as read by every typed reader, in one line.
std::string ReadEveryWay(const ConfigurationSection& s) {
  std::ostringstream out;
  bool b = false;
  int i = 0;
  float f = 0;
  double d = 0;
  std::vector<int> ints;
  std::vector<bool> bools;
  std::vector<float> floats;
  double doubleArray[8] = {};
  float floatArray[8] = {};
  std::vector<CString> strings;
  std::vector<std::string> stdStrings;
  std::wstring wide;
  // The XML store keeps a failed integer's prefix where the INI store doesn't: not compared.
  const bool intRead = s.ReadInt("k", i);
  out << s.ReadBool("k", b) << b << '|' << intRead << (intRead ? i : 0) << '|'
      << s.ReadFloat("k", f) << f << '|' << s.ReadDouble("k", d) << d << '|'
      << s.ReadIntVector("k", ints) << ints.size() << '|' << s.ReadBoolVector("k", bools)
      << bools.size() << '|' << s.ReadFloatVector("k", floats) << floats.size() << '|'
      << s.ReadDoubleVector("k", doubleArray, 5) << doubleArray[1] << doubleArray[2] << '|'
      << s.ReadFloatVector("k", floatArray, 5) << floatArray[1] << floatArray[2] << '|'
      << s.ReadStringVector("k", strings, ';') << '|'
      << ConfigurationSectionUtilities::ReadStringVector(&s, "k", stdStrings, ';') << '|'
      << s.ReadKey("k", wide) << wide.size();
  for (float x : floats) out << ',' << x;
  for (const CString& x : strings) out << '[' << x.GetString() << ']';
  return out.str();
}

TEST_F(XMLSectionTyped, TypedValuesRoundTripWithTheSameTextAsTheIniStore) {
  XMLSection document;
  SectionPtr xml(document.CreateSubSection("S"));
  IniFileSection ini(File("same.ini").c_str(), "S");
  const double doubles[] = {0, 1.5, -2.25, 1e-7};
  const float floats[] = {0, 0.125f, 3.5f};
  const std::vector<std::pair<const char*, std::function<void(ConfigurationSection&)> > > writes = {
      {"bool", [](ConfigurationSection& s) { s.WriteBool("k", false); }},
      {"int", [](ConfigurationSection& s) { s.WriteInt("k", INT_MIN); }},
      {"float", [](ConfigurationSection& s) { s.WriteFloat("k", 1234567.0); }},
      {"double", [](ConfigurationSection& s) { s.WriteFloat("k", -0.000123456789); }},
      {"int vector",
       [](ConfigurationSection& s) {
         s.WriteIntVector("k", {3, -1, 0, 77});
       }},
      {"bool vector",
       [](ConfigurationSection& s) {
         s.WriteBoolVector("k", {true, false});
       }},
      {"float vector",
       [](ConfigurationSection& s) {
         s.WriteFloatVector("k", {1.5f, -0.25f});
       }},
      {"double array", [&](ConfigurationSection& s) { s.WriteDoubleVector("k", doubles, 3); }},
      {"float array", [&](ConfigurationSection& s) { s.WriteFloatVector("k", floats, 2); }},
      {"string list",
       [](ConfigurationSection& s) {
         s.WriteStringVector("k", {CString("a"), CString(""), CString("b c")}, ';');
       }},
      {"std::string list",
       [](ConfigurationSection& s) {
         ConfigurationSectionUtilities::WriteStringVector(&s, "k", {"x", "7"}, ';');
       }},
      {"narrow text",
       [](ConfigurationSection& s) {
         s.WriteKey("k", std::string("Gr\xc3\xbc\xc3\x9f"
                                     "e"));
       }},
      {"wide text",
       [](ConfigurationSection& s) { s.WriteKey("k", std::wstring(L"\u00c5sa \u20ac")); }},
  };
  for (const auto& write : writes) {
    SCOPED_TRACE(write.first);
    write.second(*xml);
    write.second(ini);
    EXPECT_EQ(Text(*xml, "k"), Text(ini, "k"));
    EXPECT_EQ(ReadEveryWay(*xml), ReadEveryWay(ini));
  }
  // Two of the texts, to see that the comparison above compares something.
  xml->WriteFloat("k", 1234567.0);
  EXPECT_EQ(Text(*xml, "k"), "1.23457e+06");
  xml->WriteIntVector("k", {3, -1});
  EXPECT_EQ(ReadEveryWay(*xml), "11|00|03|03|12|12|12|23-1|23-1|2|2|14,3,-1[3][-1]");
}

// --- Copying into other stores --------------------------------------------------------------

const char kTree[] =
    "<Settings Version=\"3\" Name=\"caf\xc3\xa9\">"
    "  <Recent File=\"a\"/>text<!--note-->"
    "  <Window Left=\"1\"><Pane Id=\"p\"/></Window>"
    "  <Recent File=\"b\"><Extra Deep=\"1\"/></Recent>"
    "  <Recent File=\"c\"/>"
    "</Settings>";

TEST(XMLSection, WriteToSectionCopiesTheTreeIntoAnotherDocument) {
  auto source = FromString(kTree);
  ASSERT_TRUE(source->ChangeSubSection("Settings"));
  XMLSection target;
  SectionPtr copy(target.CreateSubSection("Copy"));
  EXPECT_TRUE(source->WriteToSection(copy.get()));
  EXPECT_EQ(Xml(*copy, true),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
            "<Copy Name=\"caf\xc3\xa9\" Version=\"3\">"
            "<Recent File=\"a\"/><Window Left=\"1\"><Pane Id=\"p\"/></Window>"
            "<Recent File=\"b\"><Extra Deep=\"1\"/></Recent><Recent File=\"c\"/></Copy>");
  EXPECT_EQ(copy->NumSubSections("Recent"), 3);
}

TEST(XMLSection, WriteToSectionMergesRepeatedChildrenIntoExistingOnesByIndex) {
  auto source = FromString("<s><r a=\"1\"/><r a=\"2\"/></s>");
  ASSERT_TRUE(source->ChangeSubSection("s"));
  auto target = FromString("<t><r b=\"x\"/></t>");
  ASSERT_TRUE(target->ChangeSubSection("t"));
  ASSERT_TRUE(source->WriteToSection(target.get()));
  EXPECT_EQ(Xml(*target), "<t><r a=\"1\" b=\"x\"/><r a=\"2\"/></t>");
}

// Copying a section into one of its own children copies the children as they were before the
// copy began, instead of meeting the copies it makes again and again.
TEST(XMLSection, WriteToSectionIntoItsOwnChildCopiesTheTreeAsItWas) {
  auto document = FromString("<r k=\"1\"><a x=\"2\"><b/></a></r>");
  ASSERT_TRUE(document->ChangeSubSection("r"));
  SectionPtr backup(document->CreateSubSection("Backup"));
  EXPECT_TRUE(document->WriteToSection(backup.get()));
  EXPECT_EQ(
      Xml(*document),
      "<r k=\"1\"><a x=\"2\"><b/></a><Backup k=\"1\"><a x=\"2\"><b/></a><Backup/></Backup></r>");
}

// A path step that throws (an empty name is no XML name) takes no cursor, and with it the
// document, along.
TEST(XMLSection, CreateSubSectionAlongAPathLeaksNothingWhenAStepThrows) {
  zenutl_test::ExpectPassesInChild([] {
    for (const char* path : {"A//C", ""}) {
      SCOPED_TRACE(path);
      XMLSection* document = new XMLSection;
      SectionPtr root(document->CreateSubSection("root"));
      delete document;
      EXPECT_THROW(ConfigurationSectionUtilities::CreateSubSection(root.get(), path),
                   xercesc::DOMException);
    }
  });
}

class XMLSectionIni : public TempDirTest {};

TEST_F(XMLSectionIni, WriteToSectionGivesAnIniFileTheKeysOfTheSection) {
  auto source = FromString(kTree);
  ASSERT_TRUE(source->ChangeSubSection("Settings"));
  {
    IniFileSection ini(File("copy.ini").c_str(), "Settings");
    EXPECT_TRUE(source->WriteToSection(&ini));
    EXPECT_EQ(Text(ini, "Version"), "3");
    EXPECT_EQ(Text(ini, "Name"), "caf\xc3\xa9");
    EXPECT_EQ(ini.GetKeyNames().size(), 2u);
  }
  IniFileSection reread(File("copy.ini").c_str(), "Settings");
  EXPECT_EQ(Text(reread, "Name"), "caf\xc3\xa9");
  EXPECT_EQ(reread.GetSectionNames().size(), 1u);
}

// --- Files and flushing ---------------------------------------------------------------------

class XMLSectionFile : public TempDirTest {};

TEST_F(XMLSectionFile, MissingFileIsEmptyAndFlushCreatesIt) {
  const std::string path = File("new.zxl");
  {
    XMLSection section(path.c_str(), false);
    EXPECT_TRUE(section.IsEmpty());
    SectionPtr root(section.CreateSubSection("Settings"));
    root->WriteInt("Width", 640);
    SectionPtr window(root->CreateSubSection("Window"));
    window->WriteKey("Title", L"\u00c5sa");
    ASSERT_TRUE(section.Flush());
  }
  EXPECT_EQ(ReadWholeFile(path),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\n"
            "<Settings Width=\"640\">\n"
            "\n"
            "  <Window Title=\"\xc3\x85sa\"/>\n"
            "\n"
            "</Settings>\n");
  XMLSection again(path.c_str(), false);
  ASSERT_TRUE(again.ChangeSubSection("Settings"));
  int width = 0;
  EXPECT_TRUE(again.ReadInt("Width", width));
  EXPECT_EQ(width, 640);
}

// Flush answers false and keeps the old file where it cannot write (no folder, a full disk) or
// where an in-place write would have been refused (a read-only file, root included).
TEST_F(XMLSectionFile, FlushThatCannotOrMayNotWriteAnswersFalseAndKeepsTheOldFile) {
  XMLSection nowhere(File("no/such/folder/x.zxl").c_str(), false);
  EXPECT_FALSE(nowhere.Flush());
  for (const bool readOnly : {false, true}) {
    SCOPED_TRACE(readOnly ? "read-only" : "disk full");
    const std::string path = File(readOnly ? "read-only.zxl" : "full.zxl");
    WriteWholeFile(path, "<old/>");
    ASSERT_EQ(::chmod(path.c_str(), readOnly ? 0444 : 0644), 0);
    XMLSection section(path.c_str(), false);
    ASSERT_TRUE(section.ChangeSubSection("old"));
    EXPECT_TRUE(section.WriteKey("k", "v"));
    zenutl::platform::ScopedFileCalls calls(readOnly ? zenutl::platform::SystemFileCalls()
                                                     : zenutl_test::FullDiskCalls());
    EXPECT_FALSE(section.Flush());
    EXPECT_EQ(ReadWholeFile(path), "<old/>");
  }
}

// Only a missing file is one that Flush creates. A file that is there but cannot be read right
// now (no permission, no file handles left, a folder) starts an empty document that never
// replaces it.
TEST_F(XMLSectionFile, FileThatCannotBeReadNowIsNeverReplacedByFlush) {
  const std::string unreadable = File("write-only.zxl");
  const std::string busy = File("busy.zxl");
  WriteWholeFile(unreadable, "<r user=\"setting\"/>");
  WriteWholeFile(busy, "<r user=\"setting\"/>");
  ASSERT_EQ(::chmod(unreadable.c_str(), 0200), 0);
  zenutl_test::HandOver(Dir().string());
  zenutl_test::ExpectPassesAsUnprivilegedUser([&] {
    XMLSection(File("missing.zxl").c_str(), false);  // meets the types once, with handles left
    std::unique_ptr<XMLSection> section;
    {
      zenutl_test::FileHandleShortage shortage;
      section.reset(new XMLSection(busy.c_str(), false));
    }
    XMLSection other(unreadable.c_str(), false);
    XMLSection folder(Dir().string().c_str(), false);
    for (XMLSection* start : {section.get(), &other, &folder}) {
      EXPECT_TRUE(start->IsEmpty());
      SectionPtr root(start->CreateSubSection("r"));
      EXPECT_TRUE(root->WriteKey("k", "v"));
      EXPECT_FALSE(start->Flush());
    }
  });
  EXPECT_EQ(ReadWholeFile(busy), "<r user=\"setting\"/>");
  EXPECT_EQ(ReadWholeFile(unreadable), "<r user=\"setting\"/>");
}

// The text form is the library's narrow text, UTF-8, even for a document read from UTF-16.
TEST_F(XMLSectionFile, FlushIntoTextGivesUtf8ForAUtf16Document) {
  const std::string path = File("wide.zxl");
  const std::u16string wide =
      u"\uFEFF<?xml version=\"1.0\" encoding=\"UTF-16\"?><r n=\"\u00C5sa\"/>";
  WriteWholeFile(path, std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * 2));
  XMLSection section(path.c_str(), false);
  CString text;
  EXPECT_TRUE(section.Flush(text, false));
  EXPECT_STREQ(text,
               "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
               "<r n=\"\xC3\x85sa\"/>");
}

TEST(XMLSection, FlushIntoTextAndStreamButNotToAFileItDoesNotHave) {
  auto document = FromString("<r a=\"1\"><c b=\"2\"><d/></c></r>");
  EXPECT_THROW_WHY(document->Flush(), Exception, "Not possible to flush this type of XMLSection");
  XMLSection empty;
  EXPECT_THROW_WHY(empty.Flush(), Exception, "Not possible to flush this type of XMLSection");
  ASSERT_TRUE(document->ChangeSubSection("r"));
  ASSERT_TRUE(document->ChangeSubSection("c"));
  CString text("kept:");
  EXPECT_TRUE(document->Flush(text, true));
  EXPECT_STREQ(text, "kept:<c b=\"2\">  <d/></c>");
  EXPECT_EQ(text.Find('\n'), -1);

  std::ostringstream out;
  EXPECT_TRUE(document->Flush(out));
  EXPECT_EQ(out.str(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\n"
            "<r a=\"1\">\n\n  <c b=\"2\">\n    <d/>\n  </c>\n\n</r>\n");
}

// Each value holds a character XML cannot carry; stored as it was, it made every later Flush
// fail and so lost every later change.
TEST_F(XMLSectionFile, CharactersXmlCannotCarryAreStoredAsReplacementsAndFlushStillWorks) {
  const std::string path = File("odd.zxl");
  const std::string r = "\xEF\xBF\xBD";  // U+FFFD in UTF-8
  {
    XMLSection section(path.c_str(), false);
    SectionPtr root(section.CreateSubSection("r"));
    EXPECT_TRUE(root->WriteKey("control",
                               "a\x01"
                               "b"));
    EXPECT_TRUE(root->WriteKey("fffe",
                               "a\xEF\xBF\xBE"
                               "b"));
    EXPECT_TRUE(root->WriteKey("ffff",
                               L"a\xFFFF"
                               L"b"));
    EXPECT_TRUE(root->WriteKey("surrogate",
                               L"a\xD800"
                               L"b"));
    EXPECT_TRUE(root->WriteKey("kept", "tab\tline\ncaf\xE9 \xF0\x9F\x98\x80"));
    ASSERT_TRUE(section.Flush());
    root->WriteKey("later", "change");
    ASSERT_TRUE(section.Flush());
  }
  XMLSection reread(path.c_str(), false);
  ASSERT_TRUE(reread.ChangeSubSection("r"));
  for (const char* key : {"control", "fffe", "ffff", "surrogate"}) {
    EXPECT_EQ(Text(reread, key), "a" + r + "b") << key;
  }
  EXPECT_EQ(Text(reread, "kept"), "tab\tline\ncaf\xC3\xA9 \xF0\x9F\x98\x80");
  EXPECT_EQ(Text(reread, "later"), "change");
}

TEST_F(XMLSectionFile, SavingAgainAndAgainKeepsCommentsTextAndTheFileAsItIs) {
  const std::string path = File("cycle.zxl");
  WriteWholeFile(path, "<!-- user note --><r a=\"1\"><c b=\"2\"><d/>text</c><e/></r>");
  std::string previous;
  for (int cycle = 0; cycle < 3; ++cycle) {
    SCOPED_TRACE(cycle);
    XMLSection section(path.c_str(), false);
    ASSERT_TRUE(section.Flush());
    const std::string saved = ReadWholeFile(path);
    if (cycle > 0) {
      EXPECT_EQ(saved, previous);
    }
    previous = saved;
  }
  EXPECT_EQ(previous,
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\n"
            "<!-- user note -->\n"
            "<r a=\"1\">\n\n  <c b=\"2\">\n    <d/>text\n  </c>\n\n  <e/>\n\n</r>\n");
}

// --- Parsing constructors -------------------------------------------------------------------

class XMLSectionParse : public TempDirTest {
 protected:
  // Builds a section from `text` by the named constructor; the section's root name and key "k".
  std::string Build(const std::string& how, const std::string& text) {
    std::unique_ptr<XMLSection> section;
    if (how == "path") {
      WriteWholeFile(File("in.zxl"), text);
      section.reset(new XMLSection(File("in.zxl").c_str(), false));
    } else if (how == "istream") {
      std::istringstream in(text);
      section.reset(new XMLSection(in, false));
    } else if (how == "library stream") {
      MemoryXMLInputStream stream(text.data(), static_cast<unsigned>(text.size()));
      section.reset(new XMLSection(&stream, false));
    } else {
      section = FromString(text);
    }
    std::unique_ptr<std::vector<boost::shared_ptr<ConfigurationSection> > > roots(
        section->GetAllSubSections("root"));
    return roots->empty() ? "<none>" : Text(*roots->front(), "k");
  }
};

TEST_F(XMLSectionParse, EveryParsingConstructorReadsAndRejectsAlike) {
  const std::string marker = File("marker.txt");
  WriteWholeFile(marker, "MARKER");
  zenutl_test::OpenWatch watch(marker);
  zenutl_test::LocalListener listener;
  std::string laughs = "<!DOCTYPE root [<!ENTITY a0 \"ha\">";
  for (int i = 1; i <= 9; ++i) {
    laughs += "<!ENTITY a" + std::to_string(i) + " \"" +
              Repeat("&a" + std::to_string(i - 1) + ";", 10) + "\">";
  }
  laughs += "]><root k=\"&a9;\">&a9;</root>";
  struct Case {
    const char* what;
    std::string text;
    std::string expected;
  };
  const std::vector<Case> cases = {
      {"well formed", "<?xml version=\"1.0\"?><root k=\"v\"/>", "v"},
      {"Latin-1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><root k=\"\xe9\"/>", "\xc3\xa9"},
      {"truncated", "<root k=\"v\"><child>", std::string(kParseError) + "i"},
      {"binary", std::string("\x00\x01\xfe\xff<root/>\x80", 11), std::string(kParseError) + "i"},
      {"deeply nested", Repeat("<root>", 50000) + Repeat("</root>", 50000),
       std::string(kParseError) + "E"},
      {"billion laughs", laughs, std::string(kParseError) + "p"},
      {"an empty element under each start tag",
       Repeat("<root><e/>", 50000) + Repeat("</root>", 50000), std::string(kParseError) + "E"},
      {"external entity",
       "<!DOCTYPE root [<!ENTITY e SYSTEM \"" + marker + "\">]><root k=\"v\">&e;</root>",
       std::string(kParseError) + "E"},
      {"entity on the network behind a blank",
       "<!DOCTYPE root [<!ENTITY e SYSTEM \" " + listener.Url("e") +
           "\">]><root k=\"v\">&e;</root>",
       std::string(kParseError) + "E"},
  };
  for (const char* how : {"path", "istream", "library stream", "string"}) {
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(how) + ": " + c.what);
      try {
        EXPECT_EQ(Build(how, c.text), c.expected);
      } catch (const Exception& e) {
        EXPECT_EQ(std::string(e.Why().GetString()), c.expected);
      }
    }
  }
  EXPECT_EQ(watch.Opens(), 0);
  EXPECT_EQ(listener.Connections(), 0);
}

TEST(XMLSection, DeepestAcceptedDocumentCopiesWhole) {
  const int above = static_cast<int>(zenutl::config::kElementDepthLimit) - 1;
  const std::unique_ptr<XMLSection> source =
      FromString(Repeat("<root>", above) + "<e/>" + Repeat("</root>", above));
  XMLSection copy;
  ASSERT_TRUE(source->WriteToSection(&copy));
  EXPECT_EQ(Xml(copy), Xml(*source));
}

TEST_F(XMLSectionParse, EveryParsingConstructorKeepsToTheInputLimit) {
  const std::string fits = "<root k=\"" + std::string(88, 'v') + "\"/>";  // 100 bytes
  const std::size_t previous = ZnSetXMLInputLimit(100);
  for (const char* how : {"path", "istream", "library stream", "string"}) {
    SCOPED_TRACE(how);
    EXPECT_EQ(Build(how, fits), std::string(88, 'v'));
    EXPECT_THROW_WHY(Build(how, fits + "\n"), Exception, std::string(kParseError) + "D");
  }
  ZnSetXMLInputLimit(previous);
}

TEST(XMLSection, NullLibraryStreamIsAnEmptyDocumentThatFailsToParse) {
  try {
    XMLSection section(static_cast<XMLInputStream*>(nullptr), false);
    ADD_FAILURE() << "no parse error";
  } catch (const Exception& e) {
    EXPECT_EQ(std::string(e.Why().GetString()).find(kParseError), 0u) << e.Why().GetString();
  }
}

TEST(XMLSection, StringDocumentsNeverReachTheNetwork) {
  zenutl_test::LocalListener listener;
  const std::string refused = std::string(kParseError) + "E";
  EXPECT_THROW_WHY(FromString("<!DOCTYPE r SYSTEM \"" + listener.Url("r.dtd") + "\"><r/>"),
                   Exception, refused);
  EXPECT_THROW_WHY(
      FromString("<!DOCTYPE r [<!ENTITY e SYSTEM \"" + listener.Url("e") + "\">]><r>&e;</r>"),
      Exception, refused);
  EXPECT_EQ(listener.Connections(), 0);
}

TEST_F(XMLSectionParse, LoadsALocalDtdForItsDefaultsWhenAsked) {
  WriteWholeFile(File("config.dtd"), "<!ATTLIST root k CDATA \"from dtd\">");
  WriteWholeFile(File("d.zxl"), "<!DOCTYPE root SYSTEM \"config.dtd\"><root/>");
  XMLSection withDtd(File("d.zxl").c_str(), true);
  ASSERT_TRUE(withDtd.ChangeSubSection("root"));
  EXPECT_EQ(Text(withDtd, "k"), "from dtd");
  XMLSection withoutDtd(File("d.zxl").c_str(), false);
  ASSERT_TRUE(withoutDtd.ChangeSubSection("root"));
  EXPECT_EQ(Text(withoutDtd, "k"), "<missing>");
}

// --- Resources ------------------------------------------------------------------------------

class XMLSectionResource : public TempDirTest {
 protected:
  void SetUp() override {
    WriteWholeFile(File("embedded.zxl"), "<root k=\"from file\"/>");
    WriteWholeFile(File("app.catalogue"),
                   "zenutl-catalogue 1\n"
                   "string 0xF022 No such XML resource.\n"
                   "hex 23 101 3c726f6f74206b3d2268657822 2f3e\n"  // <root k="hex"/>
                   "file 23 102 embedded.zxl\n"
                   "hex 23 103 3c726f6f74\n"  // <root
                   "hex 10 104 3c726f6f74206b3d2277726f6e67222f3e\n");
    CString error;
    module_ = ZnLoadResourceModule(File("app.catalogue").c_str(), &error);
    ASSERT_NE(module_, nullptr) << error.GetString();
    LanguageString::SetResourceInstance(module_);
  }
  void TearDown() override {
    LanguageString::SetResourceInstance(nullptr);
    ZnFreeResourceModule(module_);
  }
  HINSTANCE module_ = nullptr;
};

TEST_F(XMLSectionResource, ReadsTheXmlResourceOfTheSelectedModule) {
  struct Case {
    unsigned id;
    std::string expected;
  };
  const std::string notLoaded = LanguageString::Get(0xF022);
  ASSERT_FALSE(notLoaded.empty());
  const Case cases[] = {
      {101, "hex"},
      {102, "from file"},
      {0x70065, "hex"},  // only the low 16 bits name the resource
      {103, std::string(kParseError) + "u"},
      {104, notLoaded},  // another resource type
      {105, notLoaded},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.id);
    try {
      XMLSection section(c.id, false);
      ASSERT_TRUE(section.ChangeSubSection("root"));
      EXPECT_EQ(Text(section, "k"), c.expected);
      EXPECT_THROW(section.Flush(), Exception);
    } catch (const Exception& e) {
      EXPECT_EQ(std::string(e.Why().GetString()), c.expected);
    }
  }
  LanguageString::SetResourceInstance(nullptr);
  EXPECT_THROW_WHY(XMLSection(101u, false), Exception, notLoaded);
}

// --- Start-up -------------------------------------------------------------------------------

TEST(XMLSectionDeathTest, FirstSectionInitialisesXercesForTheProcess) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  // In a fresh process nothing has initialised Xerces; the first section does, and the process
  // still ends cleanly after terminating it at exit.
  auto useSections = [] {
    XMLSection section;
    SectionPtr root(section.CreateSubSection("r"));
    root->WriteKey("k", "v");
    XMLSection::Initialize();
    XMLSection::Terminate();
    return Text(*root, "k") == "v" ? 0 : 1;
  };
  EXPECT_EXIT(std::exit(useSections()), ::testing::ExitedWithCode(0), "");
}

}  // namespace
