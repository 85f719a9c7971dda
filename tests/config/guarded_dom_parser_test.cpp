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
#include "config/local_listener.h"
#include "config/xerces_environment.h"
#include "support/temp_dir.h"
#include "zenutl/exception.h"
#include "zenutl/write_xml_file.h"

namespace {

using zenutl::config::GuardedDOMParser;
using zenutl::config::IsLocalSystemId;
using zenutl::config::kElementDepthLimit;
using zenutl_test::LocalListener;
using zenutl_test::Narrow;

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

TEST(IsLocalSystemId, AcceptsOnlyFilesOnThisMachine) {
  struct Case {
    const char16_t* id;
    const char16_t* base;
    bool local;
  };
  const Case cases[] = {
      {u"config.dtd", nullptr, true},
      {u"sub/config.dtd", u"/etc/app/settings.zxl", true},
      {u"config.dtd", u"file:///etc/app/settings.zxl", true},
      {u"/usr/share/app/config.dtd", u"http://example.com/base.xml", true},
      {u"file:///usr/share/config.dtd", nullptr, true},
      {u"file://localhost/usr/share/config.dtd", nullptr, true},
      {u"file:config.dtd", nullptr, true},
      {u"C:\\app\\config.dtd", nullptr, true},
      {u"http://example.com/config.dtd", nullptr, false},
      {u"HTTPS://example.com/config.dtd", nullptr, false},
      {u"jar:file:///x.jar!/config.dtd", nullptr, false},
      {u"file://fileserver/share/config.dtd", nullptr, false},
      {u"//fileserver/share/config.dtd", nullptr, false},
      {u"config.dtd", u"http://example.com/base.xml", false},
      {u"../config.dtd", u"https://example.com/a/b.xml", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Narrow(c.id) + " under " + Narrow(c.base));
    EXPECT_EQ(IsLocalSystemId(c.id, c.base), c.local);
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
  const std::string http = listener.Url("x.dtd");
  struct Case {
    const char* what;
    std::string text;
    const char* withoutExternalDtd;  // outcome with loadExternalDtd false; true always refuses
  };
  const std::vector<Case> cases = {
      {"external DTD", "<!DOCTYPE r SYSTEM \"" + http + "\"><r/>", "ok"},
      {"external DTD with public id", "<!DOCTYPE r PUBLIC \"-//X//DTD//EN\" \"" + http + "\"><r/>",
       "ok"},
      {"external general entity", "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + http + "\">]><r>&e;</r>",
       "refused"},
      {"external parameter entity", "<!DOCTYPE r [<!ENTITY % p SYSTEM \"" + http + "\"> %p;]><r/>",
       "refused"},
      {"https",
       "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + listener.Url("e", "https") + "\">]><r>&e;</r>",
       "refused"},
      {"ftp", "<!DOCTYPE r [<!ENTITY e SYSTEM \"" + listener.Url("e", "ftp") + "\">]><r>&e;</r>",
       "refused"},
      {"file URL with a host",
       "<!DOCTYPE r [<!ENTITY e SYSTEM \"file://127.0.0.1/etc/hostname\">]><r>&e;</r>", "refused"},
      {"network path", "<!DOCTYPE r [<!ENTITY e SYSTEM \"//127.0.0.1/share/e.xml\">]><r>&e;</r>",
       "refused"},
  };
  const std::string refused = ParseFailure('E');
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string expectedWithout = std::string(c.withoutExternalDtd) == "ok" ? "ok" : refused;
    EXPECT_EQ(Outcome(c.text, false), expectedWithout);
    EXPECT_EQ(Outcome(c.text, true), refused);
  }
  EXPECT_EQ(listener.Connections(), 0);
}

class GuardedDOMParserFiles : public zenutl_test::TempDirTest {};

TEST_F(GuardedDOMParserFiles, LoadsALocalExternalDtdOnlyWhenAsked) {
  zenutl_test::WriteWholeFile(File("config.dtd"),
                              "<!ATTLIST r from CDATA \"dtd\"><!ENTITY who \"local\">");
  zenutl_test::WriteWholeFile(File("part.xml"), "<part>included</part>");
  const std::string absolute = File("config.dtd");
  const std::vector<std::pair<const char*, std::string>> doctypes = {
      {"relative", "config.dtd"},
      {"absolute", absolute},
      {"file URL", "file://" + absolute},
  };
  for (const auto& doctype : doctypes) {
    SCOPED_TRACE(doctype.first);
    zenutl_test::WriteWholeFile(
        File("settings.xml"),
        "<!DOCTYPE r SYSTEM \"" + doctype.second +
            "\" [<!ENTITY part SYSTEM \"part.xml\">]><r><w>&who;</w>&part;</r>");
    for (bool load : {false, true}) {
      SCOPED_TRACE(load ? "loading the DTD" : "without the DTD");
      GuardedDOMParser parser(load);
      parser.ParseFile(File("settings.xml"));
      const xercesc::DOMElement* r = parser.getDocument()->getDocumentElement();
      EXPECT_EQ(Narrow(r->getAttribute(u"from")), load ? "dtd" : "");
      EXPECT_EQ(Narrow(r->getTextContent()), load ? "localincluded" : "included");
    }
  }
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
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    for (bool load : {false, true}) EXPECT_EQ(Outcome(c.text, load), ParseFailure(c.first));
  }
}

TEST(GuardedDOMParser, ParsesTheDeepestAllowedDocumentAndWritesItBack) {
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
