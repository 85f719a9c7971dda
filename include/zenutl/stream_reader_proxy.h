// StreamReaderProxy: reading with defaults from a stream that may be absent, typically stream i
// of a StreamDirectoryReader (stream_directory_reader.h) that an older writer never wrote.
//
// With a reader, each Read forwards to it and the default is ignored. Without one (an absent
// stream), each Read answers its default and nothing else happens. There are no vector forms.
//
// Error contract: the reader's StreamException passes through; an absent stream never fails.
// Making a proxy for a damaged directory entry throws as StreamDirectoryReader::GetStream does.
// The proxy does not own the reader.
#ifndef ZENUTL_STREAM_READER_PROXY_H_
#define ZENUTL_STREAM_READER_PROXY_H_

#include <cstdint>
#include <string>

#include "zenutl/cstring.h"
#include "zenutl/stream_directory_reader.h"
#include "zenutl/stream_reader.h"

class StreamReaderProxy {
 public:
  // No stream: every Read answers its default.
  StreamReaderProxy() : mReader(nullptr) {}
  // The reader as it is; null means no stream.
  StreamReaderProxy(StreamReader* reader) : mReader(reader) {}  // NOLINT: implicit by design
  // Stream `index` of the directory, moved to as GetStream(index, std::nothrow) does; none for
  // an absent stream or a number out of range.
  StreamReaderProxy(StreamDirectoryReader& directory, unsigned int index)
      : mReader(directory.GetStream(index, std::nothrow)) {}
  StreamReaderProxy(const StreamReaderProxy&) = default;
  StreamReaderProxy& operator=(const StreamReaderProxy&) = default;

  StreamReader* GetStream() const { return mReader; }

  bool ReadBool(bool defaultValue) const;
  char ReadChar(char defaultValue) const;
  char ReadInt8(char defaultValue) const;
  unsigned char ReadUInt8(unsigned char defaultValue) const;
  short ReadInt16(short defaultValue) const;
  unsigned short ReadUInt16(unsigned short defaultValue) const;
  int ReadInt32(int defaultValue) const;
  std::uint32_t ReadUInt32(std::uint32_t defaultValue) const;
  long long ReadInt64(long long defaultValue) const;
  unsigned long long ReadUInt64(unsigned long long defaultValue) const;
  float ReadFloat(float defaultValue) const;
  double ReadDouble(double defaultValue) const;
  CString ReadString(const CString& defaultValue);
  std::string ReadStdString(const std::string& defaultValue);

 private:
  StreamReader* mReader;
};

#endif  // ZENUTL_STREAM_READER_PROXY_H_
