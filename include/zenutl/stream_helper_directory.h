// StreamHelper and StreamHelperDirectory: the plain bases of the stream directory classes
// (stream_directory_writer.h, stream_directory_reader.h). StreamHelperDirectory names the widths
// a directory can give its offsets.
//
// Error contract: nothing here throws.
#ifndef ZENUTL_STREAM_HELPER_DIRECTORY_H_
#define ZENUTL_STREAM_HELPER_DIRECTORY_H_

class StreamHelper {
 public:
  StreamHelper& operator=(const StreamHelper&) = default;
};

class StreamHelperDirectory : public StreamHelper {
 public:
  // The code in a directory's first byte, and the width of every offset after it. The writer
  // chooses; an offset that outgrows its width fails when the directory is completed. Any int
  // converts to this type, so that a wrong code can be refused rather than be undefined.
  enum OffsetSize : int {
    e8Bit = 0,   // offsets below 0x100
    e16Bit = 1,  // offsets below 0x10000
    e32Bit = 2,  // offsets below 2^32
    e64Bit = 3,  // offsets below 2^63
  };

  StreamHelperDirectory& operator=(const StreamHelperDirectory&) = default;
};

#endif  // ZENUTL_STREAM_HELPER_DIRECTORY_H_
