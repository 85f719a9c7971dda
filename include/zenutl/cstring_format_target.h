// CStringFormatTarget: the Xerces-C output target that appends to a `CString`.
//
// `WriteXMLFile` (write_xml_file.h) uses it for its string form. Each chunk is appended as a
// zero-terminated text: a zero byte inside a chunk ends that chunk, so output in an encoding
// with zero bytes (UTF-16) does not survive; the default UTF-8 output does. For a stream, see
// `DOMSerializerFormatTarget`.
//
// Nothing here throws except `std::bad_alloc`.
#ifndef ZENUTL_CSTRING_FORMAT_TARGET_H_
#define ZENUTL_CSTRING_FORMAT_TARGET_H_

#include <xercesc/framework/XMLFormatter.hpp>

#include "zenutl/cstring.h"

class CStringFormatTarget : public xercesc::XMLFormatTarget {
 public:
  // The string is not owned and must outlive the target; output is appended to what it holds.
  explicit CStringFormatTarget(CString& text);
  ~CStringFormatTarget() override;

  void writeChars(const XMLByte* const toWrite, const XMLSize_t count,
                  xercesc::XMLFormatter* const formatter) override;

 private:
  CString* mText;
};

#endif  // ZENUTL_CSTRING_FORMAT_TARGET_H_
