#include "zenutl/rolling_checksum.h"

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

XERCES_CPP_NAMESPACE_USE

namespace {

// Keeps the XML platform initialised for one test; Initialize and Terminate are counted.
class RollingChecksumWalk : public ::testing::Test {
 protected:
  RollingChecksumWalk() { XMLPlatformUtils::Initialize(); }
  ~RollingChecksumWalk() override { XMLPlatformUtils::Terminate(); }
};

struct ReleaseDocument {
  void operator()(DOMDocument* document) const { document->release(); }
};
typedef std::unique_ptr<DOMDocument, ReleaseDocument> DocumentPtr;

DocumentPtr NewDocument() {
  DOMImplementation* implementation = DOMImplementationRegistry::getDOMImplementation(u"Core");
  return DocumentPtr(implementation->createDocument());
}

// Parses `xml` into a document the caller owns.
DocumentPtr Parse(const std::string& xml) {
  XercesDOMParser parser;
  MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "test");
  parser.parse(source);
  EXPECT_EQ(parser.getErrorCount(), 0u) << xml;
  return DocumentPtr(parser.adoptDocument());
}

RollingChecksum ChecksumOfTexts(const std::vector<std::u16string>& texts) {
  RollingChecksum checksum;
  for (const std::u16string& text : texts) checksum.FeedText(text.c_str());
  return checksum;
}

std::u16string NameOf(const DOMNode* node) {
  return std::u16string(node->getNodeName());
}

DOMElement* FirstElementNamed(DOMDocument* document, const char16_t* name) {
  return static_cast<DOMElement*>(document->getElementsByTagName(name)->item(0));
}

// A closed session as the audit trail writes it, with a nested sub-trail event. The comment
// shows the values in the order the walk must meet them.
const char kSession[] =
    "<Session Version='1.0' Application='Lab 2.1' Project='P7' Date='2011-05-31 14:02:07 "
    "(UTC+2)' UTC='1306843327'>"
    "<User User='anna' Domain='LAB' Computer='WS12'>Anna, QA</User>"
    "<Events>"
    "<Event Date='d1' UTC='u1'>Opened<Details>file.dat</Details></Event>"
    "<Event Date='d2' UTC='u2'>Merged<Details/>"
    "<Events><Event Date='d3' UTC='u3'>Inner<Details>x</Details></Event></Events>"
    "</Event>"
    "</Events>"
    "<CheckSum Date='d4' UTC='u4' Version='1.0'>abc</CheckSum>"
    "</Session>";
const std::vector<std::u16string> kSessionTexts = {
    u"Lab 2.1", u"2011-05-31 14:02:07 (UTC+2)",
    u"P7",      u"1306843327",
    u"1.0",  // Session
    u"WS12",    u"LAB",
    u"anna",    u"Anna, QA",  // User
    u"d1",      u"u1",
    u"Opened",  u"file.dat",  // first Event
    u"d2",      u"u2",
    u"Merged",  // second Event
    u"d3",      u"u3",
    u"Inner",   u"x",  // nested Event
};

TEST(RollingChecksum, MatchesPublishedFiguresForTexts) {
  struct Row {
    const char16_t* text;
    std::uint32_t sum;
    bool checkState;
    std::uint16_t state;
  };
  const Row rows[] = {
      {u"", 0, true, 0xD971},
      {u"A", 0x98, true, 0x6C94},
      {u"AB", 0xC6, true, 0xC359},
      {u"Audit Trail cleared.", 0x919, false, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.text, row.text + std::char_traits<char16_t>::length(row.text)));
    RollingChecksum checksum;
    checksum.FeedText(row.text);
    EXPECT_EQ(checksum.GetSum(), row.sum);
    if (row.checkState) {
      EXPECT_EQ(checksum.GetState(), row.state);
    }
  }
}

TEST(RollingChecksum, FormatsSumAsBareLowerCaseHex) {
  struct Row {
    const char16_t* text;
    const char* stored;
  };
  const Row rows[] = {
      {u"", "0"},
      {u"A", "98"},
      {u"AB", "c6"},
      {u"Audit Trail cleared.", "919"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.stored);
    RollingChecksum checksum;
    checksum.FeedText(row.text);
    EXPECT_STREQ(checksum.FormatSum().GetString(), row.stored);
  }
}

TEST(RollingChecksum, IgnoresNullTextAndContinuesOneStreamAcrossTexts) {
  RollingChecksum pieces;
  pieces.FeedText(nullptr);
  pieces.FeedText(u"Audit ");
  pieces.FeedText(u"");
  pieces.FeedText(u"Trail cleared.");
  EXPECT_EQ(pieces.GetSum(), 0x919u);

  RollingChecksum whole;
  whole.FeedText(u"Audit Trail cleared.");
  EXPECT_EQ(pieces.GetState(), whole.GetState());
}

TEST(RollingChecksum, CountsOnlyTheLowByteOfEachCodeUnit) {
  const std::u16string plain = u"Audit Trail cleared.";
  const XMLCh highBytes[] = {0x0100, 0x4100, 0xFF00, 0x0300};
  for (XMLCh high : highBytes) {
    SCOPED_TRACE(high);
    std::u16string shifted = plain;
    for (char16_t& unit : shifted) unit = static_cast<char16_t>(unit | high);
    RollingChecksum a = ChecksumOfTexts({plain});
    RollingChecksum b = ChecksumOfTexts({shifted});
    EXPECT_EQ(a.GetSum(), b.GetSum());
    EXPECT_EQ(a.GetState(), b.GetState());
  }
}

TEST(RollingChecksum, RecognisesCheckSumNameInAnyAsciiCaseOnly) {
  struct Row {
    const char16_t* name;
    bool isCheckSum;
  };
  const Row rows[] = {
      {u"CheckSum", true},
      {u"CHECKSUM", true},
      {u"checksum", true},
      {u"cHeCkSuM", true},
      {u"CheckSums", false},
      {u"CheckSu", false},
      {u"Check Sum", false},
      {u"", false},
      // U+0143 has the low byte of 'C' but is no ASCII letter, so it doesn't fold to it.
      {u"\u0143heckSum", false},
  };
  for (std::size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(RollingChecksum::IsCheckSumName(rows[i].name), rows[i].isCheckSum);
  }
  EXPECT_FALSE(RollingChecksum::IsCheckSumName(nullptr));
}

TEST_F(RollingChecksumWalk, AttributeMapIsSortedByNameWhateverTheOrderOfCreation) {
  // The session signature depends on this order; a change in the XML library must fail here.
  struct Row {
    std::vector<std::u16string> created;
    std::vector<std::u16string> mapOrder;
  };
  const Row rows[] = {
      {{u"Version", u"Application", u"Project", u"Date", u"UTC"},
       {u"Application", u"Date", u"Project", u"UTC", u"Version"}},
      {{u"User", u"Domain", u"Computer"}, {u"Computer", u"Domain", u"User"}},
      {{u"Date", u"UTC", u"Version"}, {u"Date", u"UTC", u"Version"}},
      {{u"UTC", u"Date"}, {u"Date", u"UTC"}},
      // Ascending 16-bit code units: upper case before lower case, longer after its prefix.
      {{u"b", u"ab", u"a", u"B", u"\u00e9", u"Z"}, {u"B", u"Z", u"a", u"ab", u"b", u"\u00e9"}},
  };
  DocumentPtr document = NewDocument();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.created.size());
    DOMElement* element = document->createElement(u"Element");
    for (const std::u16string& name : row.created) element->setAttribute(name.c_str(), u"v");
    const DOMNamedNodeMap* map = element->getAttributes();
    ASSERT_EQ(map->getLength(), row.mapOrder.size());
    for (XMLSize_t i = 0; i < map->getLength(); ++i) {
      EXPECT_EQ(NameOf(map->item(i)), row.mapOrder[i]) << "position " << i;
    }
  }
}

TEST_F(RollingChecksumWalk, WalksSessionValuesInDocumentOrderWithAttributesSortedByName) {
  DocumentPtr document = Parse(kSession);
  DOMElement* session = document->getDocumentElement();
  RollingChecksum walked;
  walked.FeedNode(session);
  RollingChecksum expected = ChecksumOfTexts(kSessionTexts);
  EXPECT_EQ(walked.GetSum(), expected.GetSum());
  EXPECT_EQ(walked.GetState(), expected.GetState());
  EXPECT_EQ(RollingChecksum::ComputeSignature(session), expected.FormatSum());
}

TEST_F(RollingChecksumWalk, WalksFromDocumentThroughRootIntoSessions) {
  // The processing instruction adds nothing; the root adds its "Version".
  DocumentPtr document =
      Parse(std::string("<?xml-stylesheet type='text/xsl' href='audit_trail.xsl'?><AuditTrail "
                        "Version='1.0'>") +
            kSession + "</AuditTrail>");
  std::vector<std::u16string> texts = {u"1.0"};
  texts.insert(texts.end(), kSessionTexts.begin(), kSessionTexts.end());
  EXPECT_EQ(RollingChecksum::ComputeSignature(document.get()), ChecksumOfTexts(texts).FormatSum());
}

TEST_F(RollingChecksumWalk, ContinuesOneStateAcrossNodes) {
  DocumentPtr document = Parse("<R><A v='Audit '/><B>Trail cleared.</B></R>");
  RollingChecksum checksum;
  checksum.FeedNode(FirstElementNamed(document.get(), u"A"));
  checksum.FeedNode(FirstElementNamed(document.get(), u"B"));
  EXPECT_EQ(checksum.GetSum(), 0x919u);
}

TEST_F(RollingChecksumWalk, NullNodeAddsNothing) {
  RollingChecksum checksum;
  checksum.FeedNode(nullptr);
  EXPECT_EQ(checksum.GetSum(), 0u);
  EXPECT_EQ(checksum.GetState(), RollingChecksum::kStartState);
  EXPECT_STREQ(RollingChecksum::ComputeSignature(nullptr).GetString(), "0");
}

TEST_F(RollingChecksumWalk, SkipsCheckSumElementsInAnyCaseAtAnyDepth) {
  const std::string plain = "<S a='1'><E b='2'>t<D>u</D></E></S>";
  struct Row {
    const char* xml;
    bool sameAsPlain;
  };
  const Row rows[] = {
      {"<S a='1'><E b='2'>t<D>u</D></E><CheckSum x='9'>f00</CheckSum></S>", true},
      {"<S a='1'><E b='2'>t<D>u<checksum>1</checksum></D></E></S>", true},
      {"<S a='1'><CHECKSUM><E b='7'>zz</E></CHECKSUM><E b='2'>t<D>u</D></E></S>", true},
      {"<S a='1'><E b='2'>t<cHeCkSuM/><D>u</D></E></S>", true},
      {"<S a='1'><E b='2'>t<D>u</D></E><CheckSums>f00</CheckSums></S>", false},
      {"<S a='1'><E b='2'>t<D>u</D></E><Check>f00</Check></S>", false},
  };
  DocumentPtr reference = Parse(plain);
  const CString expected = RollingChecksum::ComputeSignature(reference->getDocumentElement());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.xml);
    DocumentPtr document = Parse(row.xml);
    const CString signature = RollingChecksum::ComputeSignature(document->getDocumentElement());
    EXPECT_EQ(signature == expected, row.sameAsPlain) << signature.GetString();
  }
  // A CheckSum element given as the starting node is left out as a whole, too.
  DocumentPtr document = Parse("<CheckSum a='1'>abc</CheckSum>");
  EXPECT_STREQ(RollingChecksum::ComputeSignature(document->getDocumentElement()).GetString(), "0");
}

TEST_F(RollingChecksumWalk, NamesDoNotCountButValuesDo) {
  struct Row {
    const char* name;
    std::function<void(DOMDocument*)> change;
    bool changesSum;
  };
  const Row rows[] = {
      {"rename element",
       [](DOMDocument* d) { d->renameNode(FirstElementNamed(d, u"Event"), nullptr, u"Evt"); },
       false},
      {"rename attribute keeping its place in the map",
       [](DOMDocument* d) {
         DOMElement* user = FirstElementNamed(d, u"User");
         d->renameNode(user->getAttributeNode(u"Domain"), nullptr, u"Domains");
       },
       false},
      {"change attribute value",
       [](DOMDocument* d) { FirstElementNamed(d, u"Session")->setAttribute(u"Project", u"P8"); },
       true},
      {"change text",
       [](DOMDocument* d) {
         FirstElementNamed(d, u"Details")->getFirstChild()->setNodeValue(u"file.dax");
       },
       true},
      {"replace a character by one with the same low byte",
       [](DOMDocument* d) {
         FirstElementNamed(d, u"Details")->getFirstChild()->setNodeValue(u"file.d\u0161t");
       },
       false},
      {"change the stored signature",
       [](DOMDocument* d) {
         FirstElementNamed(d, u"CheckSum")->getFirstChild()->setNodeValue(u"123");
       },
       false},
  };
  DocumentPtr original = Parse(kSession);
  const CString before = RollingChecksum::ComputeSignature(original->getDocumentElement());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    DocumentPtr document = Parse(kSession);
    row.change(document.get());
    const CString after = RollingChecksum::ComputeSignature(document->getDocumentElement());
    EXPECT_EQ(after != before, row.changesSum) << before.GetString() << " " << after.GetString();
  }
}

TEST_F(RollingChecksumWalk, WalksVeryDeepNestingWithoutExhaustingTheStack) {
  DocumentPtr document = NewDocument();
  DOMElement* parent = document->createElement(u"Events");
  document->appendChild(parent);
  const int depth = 200000;
  for (int i = 0; i < depth; ++i) {
    DOMElement* child = document->createElement(u"Event");
    child->setAttribute(u"Date", u"A");
    parent->appendChild(child);
    parent = child;
  }
  parent->appendChild(document->createTextNode(u"B"));
  RollingChecksum checksum;
  checksum.FeedNode(document->getDocumentElement());
  RollingChecksum expected;
  for (int i = 0; i < depth; ++i) expected.FeedText(u"A");
  expected.FeedText(u"B");
  EXPECT_EQ(checksum.GetSum(), expected.GetSum());
  EXPECT_EQ(checksum.GetState(), expected.GetState());
}

}  // namespace
