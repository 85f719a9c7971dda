#include "zenutl/stream_directory_reader.h"

#include <cstdint>

namespace {

unsigned long long Read8BitOffset(StreamReader& reader) {
  return reader.ReadUInt8();
}

unsigned long long Read16BitOffset(StreamReader& reader) {
  return reader.ReadUInt16();
}

unsigned long long Read32BitOffset(StreamReader& reader) {
  return reader.ReadUInt32();
}

unsigned long long Read64BitOffset(StreamReader& reader) {
  return reader.ReadUInt64();
}

}  // namespace

StreamDirectoryReader::StreamDirectoryReader(StreamReader& reader)
    : mReader(reader),
      mHeaderPosition(reader.Tell()),
      mOffsetReader(nullptr),
      mEndOffset(0),
      mBasePosition(0) {
  static const OffsetReader kReaders[] = {&Read8BitOffset, &Read16BitOffset, &Read32BitOffset,
                                          &Read64BitOffset};
  const unsigned char code = mReader.ReadUInt8();
  if (code > e64Bit) throw StreamException("Invalid offset size.");
  mOffsetReader = kReaders[code];
  mStreamOffsets.resize(mReader.ReadUInt8());
  for (unsigned long long& offset : mStreamOffsets) offset = mOffsetReader(mReader);
  // A 64-bit entry is taken as it stands, so its top bit makes it negative.
  mEndOffset = static_cast<long long>(mOffsetReader(mReader));
  if (mEndOffset <= 0) throw StreamException("Invalid end offset.");
  mBasePosition = mReader.Tell();
}

StreamDirectoryReader::~StreamDirectoryReader() {
  try {
    MoveTo(static_cast<unsigned long long>(mEndOffset));
  } catch (...) {
    // A damaged container leaves the stream where it stands; a destructor cannot report.
  }
}

StreamReader& StreamDirectoryReader::GetStream(unsigned int index) {
  StreamReader* reader = GetStream(index, std::nothrow);
  if (reader == nullptr) throw StreamException("Invalid stream.");
  return *reader;
}

StreamReader* StreamDirectoryReader::GetStream(unsigned int index, const std::nothrow_t&) {
  if (index >= mStreamOffsets.size() || mStreamOffsets[index] == 0) return nullptr;
  const unsigned long long offset = mStreamOffsets[index];
  // No stream starts behind the container's end; such an entry is damage, not absence.
  if (offset > static_cast<unsigned long long>(mEndOffset)) {
    throw StreamException("Invalid stream.");
  }
  MoveTo(offset);
  return &mReader;
}

unsigned int StreamDirectoryReader::GetStreamCount() const {
  return static_cast<unsigned int>(mStreamOffsets.size());
}

bool StreamDirectoryReader::GetStreamExtent(unsigned int index, Extent& extent) const {
  if (index >= mStreamOffsets.size() || mStreamOffsets[index] == 0) return false;
  const unsigned long long start = mStreamOffsets[index];
  const unsigned long long end = static_cast<unsigned long long>(mEndOffset);
  if (start > end) throw StreamException("Invalid stream.");
  unsigned long long next = end;
  for (unsigned long long offset : mStreamOffsets) {
    if (offset > start && offset < next) next = offset;
  }
  extent.position = PositionOf(start);
  extent.size = next - start;
  return true;
}

long long StreamDirectoryReader::GetEndPosition() const {
  return PositionOf(static_cast<unsigned long long>(mEndOffset));
}

void StreamDirectoryReader::MoveTo(unsigned long long offset) const {
  const long long position = PositionOf(offset);
  if (mReader.Tell() != position) mReader.Seek(position);
}

long long StreamDirectoryReader::PositionOf(unsigned long long offset) const {
  const unsigned long long base = static_cast<unsigned long long>(mBasePosition);
  if (offset - 1 > static_cast<unsigned long long>(INT64_MAX) - base) {
    throw StreamException("Seek failed.");
  }
  return static_cast<long long>(base + (offset - 1));
}
