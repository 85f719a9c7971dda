// DOMSerializerFormatTarget: the Xerces-C output target that writes into a `std::ostream`.
//
// `WriteXMLFile` (write_xml_file.h) uses it for its stream form; it is public so that callers
// can serialise with their own Xerces settings into a stream. Every chunk the serialiser hands
// over goes to `std::ostream::write` unchanged, byte count and all. For a `CString`, see
// `CStringFormatTarget`.
//
// Nothing here throws or reports: a failing stream is not noticed here, its state tells.
#ifndef ZENUTL_DOM_SERIALIZER_FORMAT_TARGET_H_
#define ZENUTL_DOM_SERIALIZER_FORMAT_TARGET_H_

#include <xercesc/framework/XMLFormatter.hpp>

#include <ostream>

class DOMSerializerFormatTarget : public xercesc::XMLFormatTarget {
 public:
  // The stream is not owned and must outlive the target.
  explicit DOMSerializerFormatTarget(std::ostream& stream);
  ~DOMSerializerFormatTarget() override;

  void writeChars(const XMLByte* const toWrite, const XMLSize_t count,
                  xercesc::XMLFormatter* const formatter) override;

 private:
  std::ostream* mStream;
};

#endif  // ZENUTL_DOM_SERIALIZER_FORMAT_TARGET_H_
