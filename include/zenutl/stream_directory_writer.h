// StreamDirectoryWriter: several numbered sub-streams in one stream, found again by number with
// StreamDirectoryReader (stream_directory_reader.h).
//
// The container, where the writer stands when the directory is made (the header position):
//   offset size code   1 byte   StreamHelperDirectory::OffsetSize, 0..3
//   stream count       1 byte   at most 254
//   stream offsets     count entries of the offset width: 0 for a stream never begun, else its
//                      start relative to the base, plus 1
//   end offset         one entry: the end of the container relative to the base, plus 1
//   payload            the sub-streams, back to back in the order they were begun
// The base is the first payload byte, directly behind the end offset; widths are 1, 2, 4 or 8
// little-endian bytes. Nothing marks a container: the reader has to know one stands there.
//
// The directory is a scoped companion of its writer: make it where the container begins, call
// GetStream(i) before writing stream i, and let it go when the last sub-stream is finished.
// Its destructor then goes back, fills in the offsets and returns to the end. The stream must
// allow seeking and must not be rewound in between.
//
// Error contract: StreamException throughout. "Invalid offset size." for a size code above 3,
// "Invalid stream count." for 255 streams or more, "Invalid stream." for a number out of range
// or a stream begun twice; the writer's own failures pass through. Whether the offsets fit
// their width is known only at the end, so the destructor throws "Write8BitOffset failed.",
// "Write16BitOffset failed.", "Write32BitOffset failed." or "Write64BitOffset failed." when one
// does not, leaving the stream at a partly filled header; choose the width for the payload you
// write. While another exception is already unwinding the stack, the destructor swallows its
// failure instead, since a second exception would end the program.
#ifndef ZENUTL_STREAM_DIRECTORY_WRITER_H_
#define ZENUTL_STREAM_DIRECTORY_WRITER_H_

#include <vector>

#include "zenutl/stream_helper_directory.h"
#include "zenutl/stream_writer.h"

class StreamDirectoryWriter : public StreamHelperDirectory {
 public:
  // Writes the header with every offset 0, at the writer's position.
  StreamDirectoryWriter(StreamWriter& writer, unsigned int count, OffsetSize offsetSize);
  // Fills in the header; see above for when it throws.
  ~StreamDirectoryWriter() noexcept(false);
  StreamDirectoryWriter(const StreamDirectoryWriter&) = delete;
  StreamDirectoryWriter& operator=(const StreamDirectoryWriter&) = delete;

  // Begins stream `index` at the current position and answers the writer to write it with.
  StreamWriter& GetStream(unsigned int index);

 private:
  typedef void (*OffsetWriter)(StreamWriter& writer, unsigned long long offset);

  void WriteHeader() const;

  StreamWriter& mWriter;
  long long mHeaderPosition;
  OffsetSize mOffsetSize;
  OffsetWriter mOffsetWriter;
  std::vector<unsigned long long> mStreamOffsets;
  unsigned long long mEndOffset;
  long long mBasePosition;
  int mUncaughtAtStart;  // exceptions already in flight when the directory was made
};

#endif  // ZENUTL_STREAM_DIRECTORY_WRITER_H_
