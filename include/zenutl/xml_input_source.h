// XMLInputSource: makes an `XMLInputStream` (xml_input_stream.h) parseable by Xerces-C.
//
// Give it to a Xerces parser's `parse`. The source does not own the stream; the stream must
// outlive the parse. Each `makeStream` call hands Xerces a new `XMLInputSourceStream` on the same
// stream, which Xerces owns and deletes. The source has no system or public identifier, so
// relative references inside the document are taken relative to the current directory. For a
// `std::istream`, see `IStreamInputSource`.
//
// Nothing here throws beyond what Xerces itself may throw when it allocates.
#ifndef ZENUTL_XML_INPUT_SOURCE_H_
#define ZENUTL_XML_INPUT_SOURCE_H_

#include <xercesc/sax/InputSource.hpp>

class XMLInputStream;

class XMLInputSource : public xercesc::InputSource {
 public:
  explicit XMLInputSource(XMLInputStream* stream);
  ~XMLInputSource() override;

  xercesc::BinInputStream* makeStream() const override;

 private:
  XMLInputStream* mStream;
};

#endif  // ZENUTL_XML_INPUT_SOURCE_H_
