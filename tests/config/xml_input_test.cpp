#include <gtest/gtest.h>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "config/xerces_environment.h"
#include "zenutl/istream_input_source.h"
#include "zenutl/istream_input_stream.h"
#include "zenutl/memory_xml_input_stream.h"
#include "zenutl/string_xml_input_stream.h"
#include "zenutl/xml_input_source.h"
#include "zenutl/xml_input_source_stream.h"

namespace {

using zenutl_test::Narrow;

// Reads `stream` with the given request sizes and returns what each call delivered.
std::vector<std::string> ReadChunks(XMLInputStream& stream, const std::vector<unsigned>& sizes) {
  std::vector<std::string> chunks;
  for (unsigned size : sizes) {
    std::vector<unsigned char> buffer(size + 1, 0xEE);
    const unsigned got = stream.readBytes(buffer.data(), size);
    EXPECT_LE(got, size);
    for (unsigned i = got; i <= size; ++i) {
      EXPECT_EQ(buffer[i], 0xEE) << "wrote past the count it answered, at " << i;
    }
    chunks.emplace_back(buffer.begin(), buffer.begin() + got);
  }
  return chunks;
}

struct ChunkCase {
  const char* name;
  std::string data;
  std::vector<unsigned> requests;
  std::vector<std::string> expected;
  unsigned finalPosition;
};

const std::vector<ChunkCase>& ChunkCases() {
  static const std::vector<ChunkCase> cases = {
      {"request beyond the end gives the rest, then 0",
       "abcdef",
       {4, 10, 5},
       {"abcd", "ef", ""},
       6},
      {"exact request then end", "abc", {3, 1}, {"abc", ""}, 3},
      {"empty source gives 0 at once", "", {8, 8}, {"", ""}, 0},
      {"zero-byte request moves nothing", "xy", {0, 1, 0, 1}, {"", "x", "", "y"}, 2},
      {"binary bytes pass unchanged",
       std::string("\0\xff<\x80", 4),
       {2, 2},
       {std::string("\0\xff", 2), "<\x80"},
       4},
  };
  return cases;
}

TEST(MemoryXMLInputStream, DeliversTheBufferInRequestedChunks) {
  for (const ChunkCase& c : ChunkCases()) {
    SCOPED_TRACE(c.name);
    MemoryXMLInputStream stream(c.data.data(), static_cast<unsigned>(c.data.size()));
    EXPECT_EQ(stream.curPos(), 0u);
    EXPECT_EQ(ReadChunks(stream, c.requests), c.expected);
    EXPECT_EQ(stream.curPos(), c.finalPosition);
  }
}

TEST(StringXMLInputStream, DeliversItsTextInRequestedChunks) {
  for (const ChunkCase& c : ChunkCases()) {
    if (c.data.find('\0') != std::string::npos) continue;  // a CString ends at its first zero
    SCOPED_TRACE(c.name);
    StringXMLInputStream stream(CString(c.data.c_str()));
    EXPECT_EQ(ReadChunks(stream, c.requests), c.expected);
    EXPECT_EQ(stream.curPos(), c.finalPosition);
  }
}

TEST(StringXMLInputStream, KeepsItsOwnCopyOfTheText) {
  std::unique_ptr<CString> text(new CString("<a/>"));
  StringXMLInputStream stream(*text);
  text->SetAt(1, 'X');
  text.reset();
  unsigned char buffer[8];
  ASSERT_EQ(stream.readBytes(buffer, sizeof buffer), 4u);
  EXPECT_EQ(std::string(buffer, buffer + 4), "<a/>");
}

TEST(MemoryXMLInputStream, CopiesShareTheBufferAndCarryThePosition) {
  const char data[] = "0123456789";
  MemoryXMLInputStream original(data, 10);
  unsigned char buffer[4];
  original.readBytes(buffer, 3);

  MemoryXMLInputStream copy(original);
  EXPECT_EQ(copy.curPos(), 3u);
  ASSERT_EQ(copy.readBytes(buffer, 2), 2u);
  EXPECT_EQ(std::string(buffer, buffer + 2), "34");
  EXPECT_EQ(original.curPos(), 3u) << "the copy moved the original";

  MemoryXMLInputStream assigned(nullptr, 0);
  assigned = copy;
  ASSERT_EQ(assigned.readBytes(buffer, 4), 4u);
  EXPECT_EQ(std::string(buffer, buffer + 4), "5678");
}

TEST(XMLInputSourceStream, ForwardsToTheLibraryStream) {
  const char data[] = "<root/>";
  MemoryXMLInputStream stream(data, 7);
  XMLInputSourceStream adapter(&stream);
  XMLByte buffer[16];
  EXPECT_EQ(adapter.readBytes(buffer, 5), 5u);
  EXPECT_EQ(adapter.curPos(), 5u);
  EXPECT_EQ(stream.curPos(), 5u);
  EXPECT_EQ(adapter.readBytes(buffer, 16), 2u);
  EXPECT_EQ(adapter.readBytes(buffer, 16), 0u);
  EXPECT_EQ(adapter.getContentType(), nullptr);
}

TEST(IStreamInputStream, ReadsWhatTheStreamReportsAndTellsItsPosition) {
  std::istringstream in("abcdefg");
  IStreamInputStream stream(&in);
  XMLByte buffer[8];
  EXPECT_EQ(stream.readBytes(buffer, 3), 3u);
  EXPECT_EQ(stream.curPos(), 3u);
  EXPECT_EQ(stream.readBytes(buffer, 8), 4u);
  EXPECT_EQ(std::string(buffer, buffer + 4), "defg");
  EXPECT_EQ(stream.readBytes(buffer, 8), 0u);
  // After the end the stream cannot tell; the count delivered stands in.
  EXPECT_EQ(stream.curPos(), 7u);
}

TEST(IStreamInputStream, StartsAtTheStreamsCurrentPosition) {
  std::istringstream in("skip<a/>");
  in.seekg(4);
  IStreamInputStream stream(&in);
  EXPECT_EQ(stream.curPos(), 4u);
  XMLByte buffer[8];
  ASSERT_EQ(stream.readBytes(buffer, 8), 4u);
  EXPECT_EQ(std::string(buffer, buffer + 4), "<a/>");
}

// Parses with a plain Xerces parser and returns the root element's name and attribute "k".
std::string ParseRoot(const xercesc::InputSource& source) {
  xercesc::XercesDOMParser parser;
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
  parser.parse(source);
  if (parser.getErrorCount() != 0 || !parser.getDocument()) return "<error>";
  const xercesc::DOMElement* root = parser.getDocument()->getDocumentElement();
  return Narrow(root->getTagName()) + "/" + Narrow(root->getAttribute(u"k"));
}

TEST(XMLInputSource, IsParsedByXerces) {
  const std::string text = "<?xml version=\"1.0\"?><settings k=\"v\"><a/></settings>";
  MemoryXMLInputStream memory(text.data(), static_cast<unsigned>(text.size()));
  XMLInputSource fromMemory(&memory);
  EXPECT_EQ(ParseRoot(fromMemory), "settings/v");
  EXPECT_EQ(fromMemory.getSystemId(), nullptr);
  EXPECT_EQ(fromMemory.getPublicId(), nullptr);

  StringXMLInputStream string(CString("<other k=\"w\"/>"));
  EXPECT_EQ(ParseRoot(XMLInputSource(&string)), "other/w");
}

TEST(XMLInputSource, ReadsDocumentsLargerThanOneParserBuffer) {
  std::string text = "<big k=\"end\">";
  while (text.size() < 200000) text += "<item name=\"some value\"/>";
  text += "</big>";
  MemoryXMLInputStream memory(text.data(), static_cast<unsigned>(text.size()));
  EXPECT_EQ(ParseRoot(XMLInputSource(&memory)), "big/end");
  EXPECT_EQ(memory.curPos(), text.size());
}

TEST(IStreamInputSource, IsParsedByXerces) {
  std::istringstream in("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r k=\"caf\xe9\"/>");
  IStreamInputSource source(in);
  EXPECT_EQ(ParseRoot(source), "r/caf\xe9");
  EXPECT_EQ(source.getSystemId(), nullptr);
}

TEST(IStreamInputSource, FailedStreamReadsAsAnEmptyDocument) {
  std::istringstream in("<r/>");
  in.setstate(std::ios::failbit);
  EXPECT_EQ(ParseRoot(IStreamInputSource(in)), "<error>");
}

}  // namespace
