// IStreamInputSource: makes a `std::istream` parseable by Xerces-C.
//
// Give it to a Xerces parser's `parse`; the stream is read from its current position to its end
// and must outlive the parse. Each `makeStream` hands Xerces a new `IStreamInputStream`, which
// Xerces owns and deletes. The source has no system or public identifier. For the library's own
// abstract sources, see `XMLInputSource`.
//
// Nothing here throws beyond what Xerces itself may throw when it allocates; a failed stream
// reads as an empty document, which the parser reports.
#ifndef ZENUTL_ISTREAM_INPUT_SOURCE_H_
#define ZENUTL_ISTREAM_INPUT_SOURCE_H_

#include <xercesc/sax/InputSource.hpp>

#include <istream>

class IStreamInputSource : public xercesc::InputSource {
 public:
  explicit IStreamInputSource(std::istream& stream);
  ~IStreamInputSource() override;

  xercesc::BinInputStream* makeStream() const override;

 private:
  std::istream& mStream;
};

#endif  // ZENUTL_ISTREAM_INPUT_SOURCE_H_
