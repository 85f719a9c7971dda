#include "zenutl/stream_directory_writer.h"

#include <cstdint>
#include <exception>

namespace {

void Write8BitOffset(StreamWriter& writer, unsigned long long offset) {
  if (offset >= 0x100) throw StreamException("Write8BitOffset failed.");
  writer.WriteUInt8(static_cast<unsigned char>(offset));
}

void Write16BitOffset(StreamWriter& writer, unsigned long long offset) {
  if (offset >= 0x10000) throw StreamException("Write16BitOffset failed.");
  writer.WriteUInt16(static_cast<unsigned short>(offset));
}

void Write32BitOffset(StreamWriter& writer, unsigned long long offset) {
  if (offset >> 32 != 0) throw StreamException("Write32BitOffset failed.");
  writer.WriteUInt32(static_cast<std::uint32_t>(offset));
}

void Write64BitOffset(StreamWriter& writer, unsigned long long offset) {
  if (offset > static_cast<unsigned long long>(INT64_MAX)) {
    throw StreamException("Write64BitOffset failed.");
  }
  writer.WriteUInt64(offset);
}

// The count byte could hold 255, but the format has always stopped one short.
const unsigned int kMostStreams = 254;

}  // namespace

StreamDirectoryWriter::StreamDirectoryWriter(StreamWriter& writer, unsigned int count,
                                             OffsetSize offsetSize)
    : mWriter(writer),
      mHeaderPosition(writer.Tell()),
      mOffsetSize(offsetSize),
      mOffsetWriter(nullptr),
      mEndOffset(0),
      mBasePosition(0),
      mUncaughtAtStart(std::uncaught_exceptions()) {
  static const OffsetWriter kWriters[] = {&Write8BitOffset, &Write16BitOffset, &Write32BitOffset,
                                          &Write64BitOffset};
  if (static_cast<unsigned int>(offsetSize) > e64Bit) {
    throw StreamException("Invalid offset size.");
  }
  mOffsetWriter = kWriters[offsetSize];
  if (count > kMostStreams) throw StreamException("Invalid stream count.");
  mStreamOffsets.assign(count, 0);
  WriteHeader();
  mBasePosition = mWriter.Tell();
}

StreamDirectoryWriter::~StreamDirectoryWriter() noexcept(false) {
  try {
    const long long end = mWriter.Tell();
    mEndOffset = static_cast<unsigned long long>(end - mBasePosition) + 1;
    mWriter.Seek(mHeaderPosition);
    WriteHeader();  // the same bytes as before: every width is fixed
    mWriter.Seek(end);
  } catch (...) {
    if (std::uncaught_exceptions() == mUncaughtAtStart) throw;
  }
}

StreamWriter& StreamDirectoryWriter::GetStream(unsigned int index) {
  if (index >= mStreamOffsets.size() || mStreamOffsets[index] != 0) {
    throw StreamException("Invalid stream.");
  }
  mStreamOffsets[index] = static_cast<unsigned long long>(mWriter.Tell() - mBasePosition) + 1;
  return mWriter;
}

void StreamDirectoryWriter::WriteHeader() const {
  mWriter.WriteUInt8(static_cast<unsigned char>(mOffsetSize));
  mWriter.WriteUInt8(static_cast<unsigned char>(mStreamOffsets.size()));
  for (unsigned long long offset : mStreamOffsets) mOffsetWriter(mWriter, offset);
  mOffsetWriter(mWriter, mEndOffset);
}
