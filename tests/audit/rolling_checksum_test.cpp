#include "zenutl/rolling_checksum.h"

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

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
    std::vector<std::u16string> pieces;  // fed in turn: one stream across texts
    std::uint32_t sum;
    const char* stored;
    std::uint16_t state;  // 0: not published
  };
  const Row rows[] = {
      {{}, 0, "0", 0xD971},
      {{u""}, 0, "0", 0xD971},
      {{u"A"}, 0x98, "98", 0x6C94},
      {{u"AB"}, 0xC6, "c6", 0xC359},
      {{u"A", u"", u"B"}, 0xC6, "c6", 0xC359},
      {{u"Audit Trail cleared."}, 0x919, "919", 0},
      {{u"Audit ", u"Trail cleared."}, 0x919, "919", 0},
      // Only the low byte of a code unit counts.
      {{u"\u0141\uFF42"}, 0xC6, "c6", 0xC359},
      {{u"\u0141\u0175dit Trail cle\u0161red."}, 0x919, "919", 0},
  };
  for (std::size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    SCOPED_TRACE(i);
    RollingChecksum checksum;
    checksum.FeedText(nullptr);
    for (const std::u16string& piece : rows[i].pieces) checksum.FeedText(piece.c_str());
    EXPECT_EQ(checksum.GetSum(), rows[i].sum);
    EXPECT_STREQ(checksum.FormatSum().GetString(), rows[i].stored);
    if (rows[i].state != 0) {
      EXPECT_EQ(checksum.GetState(), rows[i].state);
    }
  }
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

TEST_F(RollingChecksumWalk, ContinuesOneStateAcrossNodes) {
  DocumentPtr document = Parse("<R><A v='Audit '/><B>Trail cleared.</B></R>");
  RollingChecksum checksum;
  checksum.FeedNode(FirstElementNamed(document.get(), u"A"));
  checksum.FeedNode(nullptr);
  checksum.FeedNode(FirstElementNamed(document.get(), u"B"));
  EXPECT_EQ(checksum.GetSum(), 0x919u);
  EXPECT_STREQ(RollingChecksum::ComputeSignature(nullptr).GetString(), "0");
}

TEST_F(RollingChecksumWalk, CountsValuesButNeitherNamesNorCheckSumElements) {
  const char plain[] = "<S a='1' b='2'><E c='3'>t<D>u</D></E></S>";
  struct Row {
    const char* xml;
    bool sameAsPlain;
  };
  const Row rows[] = {
      {"<S a='1' b='2'><E c='3'>t<D>u</D></E><CheckSum x='9'>f00</CheckSum></S>", true},
      {"<S a='1' b='2'><E c='3'>t<D>u<checksum>1</checksum></D></E></S>", true},
      {"<S a='1' b='2'><CHECKSUM><E c='7'>z</E></CHECKSUM><E c='3'>t<D>u</D></E></S>", true},
      {"<S a='1' b='2'><E c='3'>t<cHeCkSuM/><D>u</D></E></S>", true},
      {"<S b='2' a='1'><E c='3'>t<D>u</D></E></S>", true},        // map order, not source order
      {"<Q a='1' b='2'><F z='3'>t<G>u</G></F></Q>", true},        // other names, same values
      {"<S a='1' b='2'><E c='3'>t<D>&#x175;</D></E></S>", true},  // same low byte as 'u'
      {"<S a='2' b='1'><E c='3'>t<D>u</D></E></S>", false},
      {"<S a='1' b='2'><E c='3'>T<D>u</D></E></S>", false},
      {"<S a='1' b='2'><E c='3'>t<D>u</D></E><CheckSums>f</CheckSums></S>", false},
      {"<S a='1' b='2'><E c='3'>t<D>u</D></E><Check>f</Check></S>", false},
      {"<S a='1' b='2'><E c='3'>t<D>u</D></E><\xc5\x83heckSum>f</\xc5\x83heckSum></S>", false},
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
