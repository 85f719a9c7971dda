// StringXMLInputStream: an `XMLInputStream` over its own copy of a text.
//
// Used where a document arrives as a string, e.g. by `XMLSection::CreateXMLSectionFromString`:
// the caller's text may go away as soon as the stream is built. The bytes are handed to the
// parser as they are; the document's own declaration (or UTF-8 by default) says how to read
// them. For a buffer the caller keeps, see `MemoryXMLInputStream`.
//
// Nothing here throws or reports; reading past the end answers 0.
#ifndef ZENUTL_STRING_XML_INPUT_STREAM_H_
#define ZENUTL_STRING_XML_INPUT_STREAM_H_

#include "zenutl/cstring.h"
#include "zenutl/xml_input_stream.h"

class StringXMLInputStream : public XMLInputStream {
 public:
  explicit StringXMLInputStream(const CString& text);
  ~StringXMLInputStream() override;

  unsigned int curPos() const override;
  // The smaller of `maxToRead` and what remains is copied; the position advances by as much.
  unsigned int readBytes(unsigned char* const toFill, unsigned int maxToRead) override;

 private:
  CString mText;
  unsigned int mPosition;
};

#endif  // ZENUTL_STRING_XML_INPUT_STREAM_H_
