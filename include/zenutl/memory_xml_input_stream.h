// MemoryXMLInputStream: an `XMLInputStream` over a block of memory that the caller keeps.
//
// The stream does not copy or own the bytes: the buffer must outlive the stream and every parse
// that reads from it. Copies share the buffer and carry the position along. For a source that
// keeps its own copy of a text, see `StringXMLInputStream`.
//
// Nothing here throws or reports; reading past the end answers 0.
#ifndef ZENUTL_MEMORY_XML_INPUT_STREAM_H_
#define ZENUTL_MEMORY_XML_INPUT_STREAM_H_

#include "zenutl/xml_input_stream.h"

class MemoryXMLInputStream : public XMLInputStream {
 public:
  // `data` may be null only when `size` is 0.
  MemoryXMLInputStream(void const* data, unsigned int size);
  MemoryXMLInputStream(const MemoryXMLInputStream& other);
  MemoryXMLInputStream& operator=(const MemoryXMLInputStream& other);
  ~MemoryXMLInputStream() override;

  unsigned int curPos() const override;
  // The smaller of `maxToRead` and what remains is copied; the position advances by as much.
  unsigned int readBytes(unsigned char* const toFill, unsigned int maxToRead) override;

 private:
  const unsigned char* mData;
  unsigned int mSize;
  unsigned int mPosition;
};

#endif  // ZENUTL_MEMORY_XML_INPUT_STREAM_H_
