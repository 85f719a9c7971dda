// StreamDirectoryReader: finds the numbered sub-streams of a container made by
// StreamDirectoryWriter (stream_directory_writer.h, which describes the format).
//
// Make the reader where the container begins; it reads the header at once. GetStream(i) moves
// the reader to stream i, seeking only when it is not already there, so reading the streams in
// the order they were written costs no seek at all. A stream that was never written, or a
// number beyond those the writer declared, is absent. When the directory goes away the stream
// is left behind the whole container, however much of it was read.
//
// Error contract: StreamException. "Invalid offset size." for a size code above 3, "Invalid end
// offset." for an end offset of 0 or one negative as a 64-bit number. GetStream throws "Invalid
// stream." for an absent stream; the nothrow form answers null instead. A stream whose offset
// lies beyond the container's end is damaged, not absent: both forms throw "Invalid stream.".
// The reader's own failures ("ReadUInt8 failed", "Seek failed.", ...) pass through. The
// destructor never throws: if it cannot reach the container's end it leaves the stream where
// it is.
#ifndef ZENUTL_STREAM_DIRECTORY_READER_H_
#define ZENUTL_STREAM_DIRECTORY_READER_H_

#include <new>
#include <vector>

#include "zenutl/stream_helper_directory.h"
#include "zenutl/stream_reader.h"

class StreamDirectoryReader : public StreamHelperDirectory {
 public:
  explicit StreamDirectoryReader(StreamReader& reader);
  ~StreamDirectoryReader();
  StreamDirectoryReader(const StreamDirectoryReader&) = delete;
  StreamDirectoryReader& operator=(const StreamDirectoryReader&) = delete;

  // Moves to stream `index` and answers the reader to read it with.
  StreamReader& GetStream(unsigned int index);
  // The same, but null for an absent stream.
  StreamReader* GetStream(unsigned int index, const std::nothrow_t&);

  // Where a stream lies in the reader's stream: the position of its first byte and the number of
  // bytes up to the start of the next stream in the payload, or up to the container's end.
  struct Extent {
    long long position;
    unsigned long long size;
  };
  // The number of stream numbers the writer declared, absent ones included.
  unsigned int GetStreamCount() const;
  // Fills `extent` for stream `index` and answers true, or answers false for an absent stream;
  // the reader doesn't move. The container records only where each stream begins, so two
  // streams that begin at the same place (one of them is empty) both reach to the next start.
  // Throws "Invalid stream." for damage, as GetStream does, and "Seek failed." for a position
  // beyond 2^63.
  bool GetStreamExtent(unsigned int index, Extent& extent) const;
  // The position just behind the container, where the reader stands once the directory is gone.
  // Throws "Seek failed." for a position beyond 2^63.
  long long GetEndPosition() const;

 private:
  typedef unsigned long long (*OffsetReader)(StreamReader& reader);

  // Moves the reader to the entry `offset` (relative to the base, plus 1) unless it stands
  // there already. An entry too large for any position fails as the seek would.
  void MoveTo(unsigned long long offset) const;
  // The position of the entry `offset` in the reader's stream; throws "Seek failed." when it
  // lies beyond 2^63.
  long long PositionOf(unsigned long long offset) const;

  StreamReader& mReader;
  long long mHeaderPosition;
  OffsetReader mOffsetReader;
  std::vector<unsigned long long> mStreamOffsets;
  long long mEndOffset;
  long long mBasePosition;
};

#endif  // ZENUTL_STREAM_DIRECTORY_READER_H_
