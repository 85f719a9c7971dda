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

namespace {

// Reads `stream` with the given request sizes; what each call delivered. Fails the test if a
// call writes past the count it answered.
std::vector<std::string> ReadChunks(XMLInputStream& stream, const std::vector<unsigned>& sizes) {
  std::vector<std::string> chunks;
  for (unsigned size : sizes) {
    std::vector<unsigned char> buffer(size + 1, 0xEE);
    const unsigned got = stream.readBytes(buffer.data(), size);
    for (unsigned i = got; i <= size; ++i) EXPECT_EQ(buffer[i], 0xEE) << "wrote at " << i;
    chunks.emplace_back(buffer.begin(), buffer.begin() + got);
  }
  return chunks;
}

struct ChunkCase {
  const char* name;
  std::string data;
  std::vector<unsigned> requests;
  std::vector<std::string> expected;
};

const ChunkCase kChunkCases[] = {
    {"beyond the end gives the rest, then 0", "abcdef", {4, 10, 5}, {"abcd", "ef", ""}},
    {"exact request, then 0", "abc", {3, 1}, {"abc", ""}},
    {"empty source gives 0 at once", "", {8, 8}, {"", ""}},
    {"zero-byte request moves nothing", "xy", {0, 1, 0, 1}, {"", "x", "", "y"}},
};

TEST(MemoryAndStringXMLInputStream, DeliverTheirBytesInRequestedChunks) {
  for (const ChunkCase& c : kChunkCases) {
    SCOPED_TRACE(c.name);
    MemoryXMLInputStream memory(c.data.data(), static_cast<unsigned>(c.data.size()));
    EXPECT_EQ(ReadChunks(memory, c.requests), c.expected);
    EXPECT_EQ(memory.curPos(), c.data.size());
    std::unique_ptr<CString> text(new CString(c.data.c_str()));
    StringXMLInputStream string(*text);
    text.reset();  // the stream keeps its own copy
    EXPECT_EQ(ReadChunks(string, c.requests), c.expected);
    EXPECT_EQ(string.curPos(), c.data.size());
  }
  const std::string binary("\0\xff<", 3);
  MemoryXMLInputStream memory(binary.data(), 3);
  EXPECT_EQ(ReadChunks(memory, {8}), std::vector<std::string>{binary});
}

TEST(MemoryXMLInputStream, CopiesShareTheBufferAndCarryThePosition) {
  const char data[] = "0123456789";
  MemoryXMLInputStream original(data, 10);
  unsigned char buffer[4];
  original.readBytes(buffer, 3);
  MemoryXMLInputStream copy(original);
  EXPECT_EQ(ReadChunks(copy, {2}), std::vector<std::string>{"34"});
  EXPECT_EQ(original.curPos(), 3u) << "the copy moved the original";
  MemoryXMLInputStream assigned(nullptr, 0);
  assigned = copy;
  EXPECT_EQ(ReadChunks(assigned, {9}), std::vector<std::string>{"56789"});
}

TEST(IStreamInputStream, ReadsFromTheStreamsPositionAndTellsWhereItIs) {
  std::istringstream in("skip<a/>tail");
  in.seekg(4);
  IStreamInputStream stream(&in);
  XMLByte buffer[8];
  EXPECT_EQ(stream.curPos(), 4u);
  ASSERT_EQ(stream.readBytes(buffer, 4), 4u);
  EXPECT_EQ(std::string(buffer, buffer + 4), "<a/>");
  EXPECT_EQ(stream.readBytes(buffer, 8), 4u);
  EXPECT_EQ(stream.readBytes(buffer, 8), 0u);
  // Past the end the stream can't tell; the bytes delivered stand in.
  EXPECT_EQ(stream.curPos(), 8u);
}

// Parses with a plain Xerces parser: the root element's name and attribute "k".
std::string ParseRoot(const xercesc::InputSource& source) {
  xercesc::XercesDOMParser parser;
  parser.parse(source);
  if (parser.getErrorCount() != 0) return "<error>";
  const xercesc::DOMElement* root = parser.getDocument()->getDocumentElement();
  return zenutl_test::Narrow(root->getTagName()) + "/" +
         zenutl_test::Narrow(root->getAttribute(u"k"));
}

TEST(XMLInputSources, AreParsedByXerces) {
  std::string big = "<big k=\"end\">";
  while (big.size() < 200000) big += "<item name=\"some value\"/>";  // many parser buffers
  big += "</big>";
  MemoryXMLInputStream memory(big.data(), static_cast<unsigned>(big.size()));
  XMLInputSource fromMemory(&memory);
  EXPECT_EQ(ParseRoot(fromMemory), "big/end");
  EXPECT_EQ(fromMemory.getSystemId(), nullptr);
  EXPECT_EQ(memory.curPos(), big.size());

  StringXMLInputStream string(CString("<other k=\"w\"/>"));
  EXPECT_EQ(ParseRoot(XMLInputSource(&string)), "other/w");

  std::istringstream in("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r k=\"caf\xe9\"/>");
  IStreamInputSource fromStream(in);
  EXPECT_EQ(ParseRoot(fromStream), "r/caf\xe9");
  EXPECT_EQ(fromStream.getSystemId(), nullptr);

  XMLInputSource fromNothing(nullptr);
  EXPECT_EQ(ParseRoot(fromNothing), "<error>");
}

}  // namespace
