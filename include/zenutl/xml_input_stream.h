// XMLInputStream: the library's own abstract byte source for the XML parser.
//
// Callers that hold a document somewhere other than a file or a `std::istream` (a block of
// memory, a text, a sub-stream of a container) implement this small interface and hand it to
// `XMLInputSource` (xml_input_source.h), which makes it readable by Xerces-C. Two ready-made
// sources exist: `MemoryXMLInputStream` over a caller's buffer and `StringXMLInputStream` over a
// copy of a text. For `std::istream` use `IStreamInputSource` instead.
//
// Error contract: the interface itself reports nothing; a source that cannot deliver more
// simply returns 0 from `readBytes`, which the parser takes as the end of the document.
#ifndef ZENUTL_XML_INPUT_STREAM_H_
#define ZENUTL_XML_INPUT_STREAM_H_

class XMLInputStream {
 public:
  virtual ~XMLInputStream();

  // Number of bytes delivered so far.
  virtual unsigned int curPos() const = 0;
  // Copies up to `maxToRead` bytes into `toFill` and answers how many it copied; 0 at the end.
  virtual unsigned int readBytes(unsigned char* const toFill, unsigned int maxToRead) = 0;
};

#endif  // ZENUTL_XML_INPUT_STREAM_H_
