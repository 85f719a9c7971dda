#include "config/guarded_dom_parser.h"

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "config/external_dtd_leak.h"
#include "config/file_probes.h"
#include "config/local_listener.h"
#include "config/xerces_environment.h"
#include "support/temp_dir.h"
#include "zenutl/exception.h"
#include "zenutl/write_xml_file.h"
#include "zenutl/xml_input_limit.h"

namespace {

using zenutl::config::GuardedDOMParser;
using zenutl::config::kElementDepthLimit;
using zenutl::config::LocalPathOfSystemId;
using zenutl_test::FifoProbe;
using zenutl_test::LocalListener;
using zenutl_test::Narrow;
using zenutl_test::OpenWatch;

const char kParseError[] = "An error occurred during parsing\nMessage: ";

std::string ParseFailure(char first) {
  return std::string(kParseError) + first;
}

void ParseText(GuardedDOMParser& parser, const std::string& text) {
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                    "memory");
  parser.Parse(source);
}

// The first failure text of parsing `text`, or "ok".
std::string Outcome(const std::string& text, bool loadExternalDtd) {
  GuardedDOMParser parser(loadExternalDtd);
  try {
    ParseText(parser, text);
    return "ok";
  } catch (const Exception& e) {
    return e.Why().GetString();
  }
}

std::string Repeat(const std::string& piece, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += piece;
  return result;
}

std::string Nested(int depth) {
  return Repeat("<a>", depth) + Repeat("</a>", depth);
}

// `innermost` at the depth limit plus `beyond`.
std::string Deepest(const std::string& innermost, int beyond) {
  const int above = static_cast<int>(kElementDepthLimit) - 1 + beyond;
  return Repeat("<a>", above) + innermost + Repeat("</a>", above);
}

TEST(LocalPathOfSystemId, AcceptsOnlyFilesOnThisMachine) {
  struct Case {
    const char16_t* id;
    const char16_t* base;
    const char* path;  // null: refused
  };
  const Case cases[] = {
      {u"config.dtd", nullptr, "config.dtd"},
      {u"config.dtd", u"memory", "config.dtd"},
      {u"sub\\config.dtd", u"/etc/app/settings.zxl", "/etc/app/sub/config.dtd"},
      {u"config.dtd", u"file:///etc/app/settings.zxl", "/etc/app/config.dtd"},
      {u"/usr/share/app/config.dtd", u"http://example.com/base.xml", "/usr/share/app/config.dtd"},
      {u"file:///usr/share/a%20b.dtd", nullptr, "/usr/share/a b.dtd"},
      {u"FILE://LocalHost/usr/share/config.dtd", nullptr, "/usr/share/config.dtd"},
      {u"file:config.dtd", u"/etc/app/x.zxl", "/etc/app/config.dtd"},
      {u" \t\n/etc/app/config.dtd\r\n", nullptr, "/etc/app/config.dtd"},
      {u"C:\\app\\config.dtd", nullptr, "C:/app/config.dtd"},
      {u"http://example.com/config.dtd", nullptr, nullptr},
      {u" http://127.0.0.1:8765/x", nullptr, nullptr},
      {u"\thttp://127.0.0.1:8765/x", nullptr, nullptr},
      {u"\nHTTPS://example.com/config.dtd", nullptr, nullptr},
      {u"jar:file:///x.jar!/config.dtd", nullptr, nullptr},
      {u"file://fileserver/share/config.dtd", nullptr, nullptr},
      {u"//fileserver/share/config.dtd", nullptr, nullptr},
      {u"\\\\fileserver\\share\\config.dtd", nullptr, nullptr},
      {u"config.dtd", u"http://example.com/base.xml", nullptr},
      {u"../config.dtd", u" https://example.com/a/b.xml", nullptr},
      {u"file:///etc/%00passwd", nullptr, nullptr},
      {u"file:///etc/%zz", nullptr, nullptr},
      {u"", nullptr, nullptr},
      {u" ", u"/etc/app/x.zxl", nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Narrow(c.id) + " under " + Narrow(c.base));
    std::string path = "untouched";
    EXPECT_EQ(LocalPathOfSystemId(c.id, c.base, path), c.path != nullptr);
    EXPECT_EQ(path, c.path ? c.path : "untouched");
  }
}

TEST(GuardedDOMParser, TestListenerSeesAnUnguardedParserConnect) {
  // Proves that the listener below would notice: the plain Xerces parser does go out.
  LocalListener listener;
  const std::string text =
      "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + listener.Url("e.xml") + "\">]><r>&e;</r>";
  xercesc::XercesDOMParser plain;
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                    "memory");
  plain.parse(source);
  EXPECT_GE(listener.Connections(), 1);
}

TEST(GuardedDOMParser, NeverReachesTheNetwork) {
  LocalListener listener;
  const std::string http = listener.Url("x");
  struct Case {
    const char* what;
    std::string text;
    bool externalDtdOnly;  // then it parses when the DTD is not loaded
  };
  std::vector<Case> cases = {
      {"external DTD", "<!DOCTYPE r SYSTEM \"" + http + "\"><r/>", true},
      {"external DTD with public id", "<!DOCTYPE r PUBLIC \"-//X//DTD//EN\" \"" + http + "\"><r/>",
       true},
      {"general entity", "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + http + "\">]><r>&e;</r>", false},
      {"parameter entity", "<!DOCTYPE r [<!ENTITY % p SYSTEM \"" + http + "\"> %p;]><r/>", false},
      {"https",
       "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + listener.Url("e", "https") + "\">]><r>&e;</r>", false},
      {"ftp", "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + listener.Url("e", "ftp") + "\">]><r>&e;</r>",
       false},
      {"file URL with a host",
       "<!DOCTYPE r [<!ENTITY e SYSTEM \"file://127.0.0.1/etc/hostname\">]><r>&e;</r>", false},
      {"network path", "<!DOCTYPE r [<!ENTITY e SYSTEM \"//127.0.0.1/share/e.xml\">]><r>&e;</r>",
       false},
  };
  // The scanner drops blanks around a system id, so they must not hide the scheme.
  for (const char* blank : {" ", "\t", "\n", " \r\n "}) {
    cases.push_back(
        {"blank before a DTD", "<!DOCTYPE r SYSTEM \"" + (blank + http) + "\"><r/>", true});
    cases.push_back({"blank before an entity",
                     "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + (blank + http) + "\">]><r>&e;</r>",
                     false});
  }
  const std::string refused = ParseFailure('E');
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Outcome(c.text, false), c.externalDtdOnly ? "ok" : refused);
    EXPECT_EQ(Outcome(c.text, true), refused);
  }
  EXPECT_EQ(listener.Connections(), 0);
}

class GuardedDOMParserFiles : public zenutl_test::TempDirTest {};

TEST_F(GuardedDOMParserFiles, NeverReadsAnExternalEntity) {
  const std::string marker = File("marker.txt");
  zenutl_test::WriteWholeFile(marker, "MARKER");
  FifoProbe fifo(File("fifo"), "FIFO");
  const std::vector<std::pair<const char*, std::string>> ids = {
      {"path", marker},
      {"relative path", "marker.txt"},
      {"file URL", "file://" + marker},
      {"file URL on localhost", "file://localhost" + marker},
      {"blank before the path", " \t" + marker},
      {"FIFO", File("fifo")},
  };
  OpenWatch watch(marker);
  for (const auto& id : ids) {
    const std::string general = "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + id.second + "\">]><r>&e;</r>";
    const std::string parameter =
        "<!DOCTYPE r [<!ENTITY % p SYSTEM \"" + id.second + "\"> %p;]><r/>";
    const std::string dtd = "<!DOCTYPE r SYSTEM \"" + id.second + "\"><r/>";
    zenutl_test::WriteWholeFile(File("general.xml"), general);
    zenutl_test::WriteWholeFile(File("parameter.xml"), parameter);
    for (bool load : {false, true}) {
      SCOPED_TRACE(std::string(id.first) + (load ? ", loading the DTD" : ""));
      EXPECT_EQ(Outcome(general, load), ParseFailure('E'));
      EXPECT_EQ(Outcome(parameter, load), ParseFailure('E'));
      for (const char* file : {"general.xml", "parameter.xml"}) {
        GuardedDOMParser parser(load);
        EXPECT_THROW(parser.ParseFile(File(file)), Exception);
      }
    }
    EXPECT_EQ(Outcome(dtd, false), "ok");
  }
  EXPECT_EQ(watch.Opens(), 0);
  EXPECT_EQ(fifo.Opens(), 0);
}

TEST_F(GuardedDOMParserFiles, LoadsALocalExternalDtdOnlyWhenAsked) {
  zenutl_test::WriteWholeFile(File("config.dtd"),
                              "<!ATTLIST r from CDATA \"dtd\"><!ENTITY who \"local\">");
  const std::string absolute = File("config.dtd");
  const std::vector<std::pair<const char*, std::string>> doctypes = {
      {"relative", "config.dtd"},
      {"absolute", absolute},
      {"file URL", "file://" + absolute},
      {"blanks around", "\n " + absolute + " "},
  };
  for (const auto& doctype : doctypes) {
    SCOPED_TRACE(doctype.first);
    zenutl_test::WriteWholeFile(
        File("settings.xml"),
        "<!DOCTYPE r SYSTEM \"" + doctype.second + "\" [<!ENTITY own \"!\">]><r>&who;&own;</r>");
    for (bool load : {false, true}) {
      SCOPED_TRACE(load ? "loading the DTD" : "without the DTD");
      GuardedDOMParser parser(load);
      parser.ParseFile(File("settings.xml"));
      const xercesc::DOMElement* r = parser.getDocument()->getDocumentElement();
      EXPECT_EQ(Narrow(r->getAttribute(u"from")), load ? "dtd" : "");
      EXPECT_EQ(Narrow(r->getTextContent()), load ? "local!" : "!");
    }
  }
}

TEST_F(GuardedDOMParserFiles, RefusesADtdThatIsNoRegularFileOrTooLarge) {
  FifoProbe fifo(File("fifo.dtd"));
  boost::filesystem::create_directories(File("folder.dtd"));
  zenutl_test::WriteWholeFile(File("big.dtd"), "<!-- " + std::string(2000, 'x') + " -->");
  const std::size_t previous = ZnSetXMLInputLimit(1000);
  for (const char* dtd : {"fifo.dtd", "folder.dtd", "missing.dtd", "big.dtd", "/dev/zero"}) {
    SCOPED_TRACE(dtd);
    zenutl_test::WriteWholeFile(File("settings.xml"),
                                "<!DOCTYPE r SYSTEM \"" + std::string(dtd) + "\"><r/>");
    GuardedDOMParser parser(true);
    EXPECT_THROW(parser.ParseFile(File("settings.xml")), Exception);
  }
  ZnSetXMLInputLimit(previous);
  EXPECT_EQ(fifo.Opens(), 0);
}

TEST_F(GuardedDOMParserFiles, ReadsAPathThatLooksLikeAUrlAsAFile) {
  LocalListener listener;
  const std::string weird = File("http:");
  boost::filesystem::create_directories(weird + "/127.0.0.1:1");
  zenutl_test::WriteWholeFile(weird + "/127.0.0.1:1/x.xml", "<local/>");
  GuardedDOMParser parser(true);
  parser.ParseFile(weird + "/127.0.0.1:1/x.xml");
  EXPECT_EQ(Narrow(parser.getDocument()->getDocumentElement()->getTagName()), "local");
  EXPECT_EQ(listener.Connections(), 0);
}

TEST(GuardedDOMParser, StopsEntityExpansionBombsCleanly) {
  std::string laughs = "<!DOCTYPE lolz [<!ENTITY lol0 \"lol\">";
  for (int i = 1; i <= 9; ++i) {
    laughs += "<!ENTITY lol" + std::to_string(i) + " \"" +
              Repeat("&lol" + std::to_string(i - 1) + ";", 10) + "\">";
  }
  laughs += "]>";
  const std::string big(1025, 'x');
  const std::string blowup =
      "<!DOCTYPE r [<!ENTITY big \"" + big + "\">]><r>" + Repeat("&big;", 1000) + "</r>";
  struct Case {
    const char* what;
    std::string text;
    std::string expected;
  };
  const Case cases[] = {
      // "parser has encountered more than ... entity expansions"
      {"billion laughs in content", laughs + "<lolz>&lol9;</lolz>", ParseFailure('p')},
      {"billion laughs in an attribute", laughs + "<lolz a=\"&lol9;\"/>", ParseFailure('p')},
      {"quadratic blow-up", blowup, ParseFailure('E')},
      {"parameter entity bomb", "<!DOCTYPE r [<!ENTITY % big \"" + big + "\">]><r/>",
       ParseFailure('E')},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Outcome(c.text, true), c.expected);
  }
}

TEST(GuardedDOMParser, AllowsOrdinaryEntityUse) {
  const std::string many = "<r a=\"" + Repeat("&amp;&#65;&lt;", 30000) + "\">" +
                           Repeat("&amp;&#x42;&gt;", 100000) + "</r>";
  EXPECT_EQ(Outcome(many, true), "ok");
  const std::string value(1024, 'v');
  const std::string declared =
      "<!DOCTYPE r [<!ENTITY v \"" + value + "\">]><r>" + Repeat("&v;", 5000) + "</r>";
  GuardedDOMParser parser(true);
  ParseText(parser, declared);
  EXPECT_EQ(Narrow(parser.getDocument()->getDocumentElement()->getTextContent()).size(),
            5000u * 1024u);
}

TEST(GuardedDOMParser, TurnsMalformedInputIntoTheParseException) {
  std::mt19937 generator(20240521);
  std::string binary;
  for (int i = 0; i < 4096; ++i) binary.push_back(static_cast<char>(generator()));
  struct Case {
    const char* what;
    std::string text;
    char first;  // first character of the parser's message
  };
  const Case cases[] = {
      {"truncated after a start tag", "<a><b x='1'>", 'i'},
      {"truncated inside a tag", "<a x='1", 'u'},
      {"empty", "", 'i'},
      {"mismatched end tag", "<a></b>", 'e'},
      {"binary", binary, 'i'},
      {"binary after a document", "<a/>" + binary, 'i'},
      {"zero byte", std::string("<a>\0</a>", 8), 'i'},
      {"invalid UTF-8", "<a x='\xff\xfe'/>", 'u'},
      {"undefined entity", "<r>&e;</r>", 'e'},
      {"deeply nested and truncated", Repeat("<a>", 100000), 'E'},
      {"deeply nested", Nested(100000), 'E'},
      {"one level too deep", Nested(static_cast<int>(kElementDepthLimit) + 1), 'E'},
      // An empty element counts like any other, in and out.
      {"an empty element under each start tag", Repeat("<a><e/>", 100000) + Repeat("</a>", 100000),
       'E'},
      {"closed and empty elements under each start tag",
       Repeat("<a><e/><f></f>", 100000) + Repeat("</a>", 100000), 'E'},
      {"an empty element one level too deep", Deepest("<e/>", 1), 'E'},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    for (bool load : {false, true}) EXPECT_EQ(Outcome(c.text, load), ParseFailure(c.first));
  }
}

TEST(GuardedDOMParser, RefusesInputBeyondTheSizeLimit) {
  EXPECT_EQ(ZnGetXMLInputLimit(), kZnDefaultXMLInputLimit);
  const std::string fits = "<r>" + std::string(993, 'x') + "</r>";  // 1000 bytes
  const std::size_t previous = ZnSetXMLInputLimit(1000);
  EXPECT_EQ(previous, kZnDefaultXMLInputLimit);
  EXPECT_EQ(Outcome(fits, false), "ok");
  EXPECT_EQ(Outcome(fits + " ", false), ParseFailure('D'));
  EXPECT_EQ(Outcome(fits + std::string(100000, ' '), true), ParseFailure('D'));
  EXPECT_EQ(Outcome("<r>" + std::string(100000, 'x'), true), ParseFailure('D'));
  EXPECT_EQ(ZnSetXMLInputLimit(0), 1000u);
  EXPECT_EQ(ZnGetXMLInputLimit(), kZnDefaultXMLInputLimit);
  EXPECT_EQ(Outcome(fits + std::string(100000, ' '), true), "ok");
}

TEST(GuardedDOMParser, WritesADoctypeBackSoThatItReadsTheSame) {
  // Xerces' own rebuilt subset wrote these unescaped or unquoted (one found by fuzzing).
  const std::string text =
      "<!DOCTYPE r [\n"
      "<!ENTITY e \"x&#37;y&#38;#38;z&#34;q&#13;\">\n"
      "<!ENTITY % p '<!ENTITY f \"pe\">'> %p;\n"
      "<!NOTATION gif PUBLIC \"-//X//gif\">\n"
      "<!NOTATION png SYSTEM 'viewer\"s.exe'>\n"
      "<!ENTITY pic PUBLIC \"-//X//pic\" \"pic.gif\" NDATA gif>\n"
      "<!ATTLIST r a CDATA 'say \"&lt;&amp;\" &#9;tab' b (x|y) 'y' kind NOTATION (gif|png) "
      "#IMPLIED\n"
      "  c CDATA #FIXED \"c&#10;d\" id ID #IMPLIED>\n"
      "<!-- note --><?pi data?>\n"
      "]><r>&e;&f;</r>";
  GuardedDOMParser first(false);
  ParseText(first, text);
  std::ostringstream once;
  ASSERT_TRUE(WriteXMLFile(once, first.getDocument(), false));
  GuardedDOMParser second(false);
  ParseText(second, once.str());
  std::ostringstream twice;
  ASSERT_TRUE(WriteXMLFile(twice, second.getDocument(), false));
  EXPECT_EQ(twice.str(), once.str());
  for (GuardedDOMParser* parser : {&first, &second}) {
    const xercesc::DOMElement* r = parser->getDocument()->getDocumentElement();
    EXPECT_EQ(Narrow(r->getTextContent()), "x%y&z\"q\rpe");
    EXPECT_EQ(Narrow(r->getAttribute(u"a")), "say \"<&\" \ttab");
    EXPECT_EQ(Narrow(r->getAttribute(u"b")), "y");
    EXPECT_EQ(Narrow(r->getAttribute(u"c")), "c\nd");
  }
}

TEST(GuardedDOMParser, ParsesTheDeepestAllowedDocumentAndWritesItBack) {
  GuardedDOMParser deepestEmpty(false);
  ParseText(deepestEmpty, Deepest("<e/>", 0));
  GuardedDOMParser parser(false);
  ParseText(parser, Nested(static_cast<int>(kElementDepthLimit)));
  std::ostringstream out;
  ASSERT_TRUE(WriteXMLFile(out, parser.getDocument(), true));
  // Written back, it reads again as the same depth.
  GuardedDOMParser again(false);
  ParseText(again, out.str());
  int depth = 0;
  for (const xercesc::DOMElement* element = again.getDocument()->getDocumentElement(); element;
       element = element->getFirstElementChild()) {
    ++depth;
  }
  EXPECT_EQ(depth, static_cast<int>(kElementDepthLimit));
}

}  // namespace
