// XMLInputSourceStream: the Xerces-C binary stream that `XMLInputSource` hands to the parser.
//
// It forwards `curPos` and `readBytes` to the library's `XMLInputStream`, which it does not own;
// made on a null stream it reads as an empty one.
// Callers rarely build one themselves; `XMLInputSource::makeStream` does.
//
// Nothing here throws or reports.
#ifndef ZENUTL_XML_INPUT_SOURCE_STREAM_H_
#define ZENUTL_XML_INPUT_SOURCE_STREAM_H_

#include <xercesc/util/BinInputStream.hpp>

class XMLInputStream;

class XMLInputSourceStream : public xercesc::BinInputStream {
 public:
  explicit XMLInputSourceStream(XMLInputStream* stream);
  ~XMLInputSourceStream() override;

  XMLFilePos curPos() const override;
  // Requests beyond 4 GiB are cut to what an `XMLInputStream` can answer in one call.
  XMLSize_t readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) override;
  // No content type is known: null.
  const XMLCh* getContentType() const override;

 private:
  XMLInputStream* mStream;
};

#endif  // ZENUTL_XML_INPUT_SOURCE_STREAM_H_
