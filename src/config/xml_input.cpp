// The byte sources that feed the XML parser: memory, strings, the library's own abstract
// streams and std::istream.
#include <xercesc/util/PlatformUtils.hpp>

#include <algorithm>
#include <cstring>
#include <limits>

#include "zenutl/istream_input_source.h"
#include "zenutl/istream_input_stream.h"
#include "zenutl/memory_xml_input_stream.h"
#include "zenutl/string_xml_input_stream.h"
#include "zenutl/xml_input_source.h"
#include "zenutl/xml_input_source_stream.h"
#include "zenutl/xml_input_stream.h"

namespace {

// Copies what is left of [data, data + size) from `position`, at most `maxToRead` bytes.
unsigned int CopyFromPosition(const unsigned char* data, unsigned int size, unsigned int& position,
                              unsigned char* toFill, unsigned int maxToRead) {
  const unsigned int count = std::min(maxToRead, size - position);
  if (count > 0) std::memcpy(toFill, data + position, count);
  position += count;
  return count;
}

}  // namespace

XMLInputStream::~XMLInputStream() = default;

MemoryXMLInputStream::MemoryXMLInputStream(void const* data, unsigned int size)
    : mData(static_cast<const unsigned char*>(data)), mSize(data ? size : 0), mPosition(0) {}

MemoryXMLInputStream::MemoryXMLInputStream(const MemoryXMLInputStream& other) = default;

MemoryXMLInputStream& MemoryXMLInputStream::operator=(const MemoryXMLInputStream& other) = default;

MemoryXMLInputStream::~MemoryXMLInputStream() = default;

unsigned int MemoryXMLInputStream::curPos() const {
  return mPosition;
}

unsigned int MemoryXMLInputStream::readBytes(unsigned char* const toFill, unsigned int maxToRead) {
  return CopyFromPosition(mData, mSize, mPosition, toFill, maxToRead);
}

StringXMLInputStream::StringXMLInputStream(const CString& text) : mText(text), mPosition(0) {}

StringXMLInputStream::~StringXMLInputStream() = default;

unsigned int StringXMLInputStream::curPos() const {
  return mPosition;
}

unsigned int StringXMLInputStream::readBytes(unsigned char* const toFill, unsigned int maxToRead) {
  return CopyFromPosition(reinterpret_cast<const unsigned char*>(mText.GetString()),
                          static_cast<unsigned int>(mText.GetLength()), mPosition, toFill,
                          maxToRead);
}

XMLInputSourceStream::XMLInputSourceStream(XMLInputStream* stream) : mStream(stream) {}

XMLInputSourceStream::~XMLInputSourceStream() = default;

// A source made on no stream at all reads as an empty one, which the parser then refuses.
XMLFilePos XMLInputSourceStream::curPos() const {
  return mStream ? mStream->curPos() : 0;
}

XMLSize_t XMLInputSourceStream::readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) {
  if (!mStream) return 0;
  const XMLSize_t request =
      std::min<XMLSize_t>(maxToRead, std::numeric_limits<unsigned int>::max());
  return mStream->readBytes(toFill, static_cast<unsigned int>(request));
}

const XMLCh* XMLInputSourceStream::getContentType() const {
  return nullptr;
}

XMLInputSource::XMLInputSource(XMLInputStream* stream)
    : xercesc::InputSource(xercesc::XMLPlatformUtils::fgMemoryManager), mStream(stream) {}

XMLInputSource::~XMLInputSource() = default;

xercesc::BinInputStream* XMLInputSource::makeStream() const {
  return new (getMemoryManager()) XMLInputSourceStream(mStream);
}

IStreamInputStream::IStreamInputStream(std::istream* stream) : mStream(stream), mDelivered(0) {}

IStreamInputStream::~IStreamInputStream() = default;

XMLFilePos IStreamInputStream::curPos() const {
  const std::streampos position = mStream->tellg();
  if (position == std::streampos(-1)) return mDelivered;
  return static_cast<XMLFilePos>(static_cast<std::streamoff>(position));
}

XMLSize_t IStreamInputStream::readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) {
  const XMLSize_t request =
      std::min<XMLSize_t>(maxToRead, std::numeric_limits<std::streamsize>::max());
  mStream->read(reinterpret_cast<char*>(toFill), static_cast<std::streamsize>(request));
  const std::streamsize got = mStream->gcount();
  mDelivered += static_cast<XMLFilePos>(got);
  return static_cast<XMLSize_t>(got);
}

const XMLCh* IStreamInputStream::getContentType() const {
  return nullptr;
}

IStreamInputSource::IStreamInputSource(std::istream& stream)
    : xercesc::InputSource(xercesc::XMLPlatformUtils::fgMemoryManager), mStream(stream) {}

IStreamInputSource::~IStreamInputSource() = default;

xercesc::BinInputStream* IStreamInputSource::makeStream() const {
  return new (getMemoryManager()) IStreamInputStream(&mStream);
}
