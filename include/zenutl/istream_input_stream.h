// IStreamInputStream: the Xerces-C binary stream that `IStreamInputSource` hands to the parser.
//
// `readBytes` is one `std::istream::read` and answers the count that call reports; `curPos` is
// the stream's `tellg`, or the bytes delivered so far where the stream cannot tell.
//
// Nothing here throws or reports; the stream's own state tells what went wrong.
#ifndef ZENUTL_ISTREAM_INPUT_STREAM_H_
#define ZENUTL_ISTREAM_INPUT_STREAM_H_

#include <xercesc/util/BinInputStream.hpp>

#include <istream>

class IStreamInputStream : public xercesc::BinInputStream {
 public:
  explicit IStreamInputStream(std::istream* stream);
  ~IStreamInputStream() override;

  XMLFilePos curPos() const override;
  XMLSize_t readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) override;
  // No content type is known: null.
  const XMLCh* getContentType() const override;

 private:
  std::istream* mStream;
  XMLFilePos mDelivered;
};

#endif  // ZENUTL_ISTREAM_INPUT_STREAM_H_
