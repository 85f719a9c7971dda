// StreamWriter: typed writing of raw values to a std::ostream or a storing CArchive, the
// counterpart of StreamReader (stream_reader.h), where the byte forms are listed. Writing adds
// nothing of its own: no tag, no count, no padding.
//
// Error contract: every failure throws StreamException whose text names the operation:
// "WriteDouble failed", "WriteInt16Vector failed", ..., "Tell failed.", "Seek failed.",
// "Wrong CArchive mode". On a std::ostream a write fails when the stream's failbit or badbit is
// set afterwards. On an archive the bytes are buffered there; a CFileException or
// CArchiveException of the archive passes through the write operations untouched, but becomes
// "Tell failed." or "Seek failed." there. The writer keeps no error state of its own.
//
// The writer does not own its stream, which must outlive it.
#ifndef ZENUTL_STREAM_WRITER_H_
#define ZENUTL_STREAM_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

#include "zenutl/carchive.h"
#include "zenutl/cstring.h"
#include "zenutl/exception.h"

class StreamWriter {
 public:
  // Never fails.
  explicit StreamWriter(std::ostream& stream);
  // Throws "Wrong CArchive mode" unless the archive stores.
  explicit StreamWriter(CArchive& archive);

  // The position from the start of the stream. On an archive, flushes it first.
  long long Tell() const;
  // Moves to `position` from the start; a negative one throws before the stream is touched.
  // On an archive, flushes it first.
  void Seek(long long position);

  void WriteBool(bool value);
  void WriteChar(char value);
  void WriteInt8(char value);
  void WriteUInt8(unsigned char value);
  void WriteInt16(short value);
  void WriteUInt16(unsigned short value);
  void WriteInt32(int value);
  void WriteUInt32(std::uint32_t value);
  void WriteInt64(long long value);
  void WriteUInt64(unsigned long long value);
  void WriteFloat(float value);
  void WriteDouble(double value);
  // The length fails as "WriteUInt32 failed", the text as "WriteString failed". A text whose
  // length does not fit the 32-bit field fails before anything is written.
  void WriteString(const CString& value);
  void WriteStdString(const std::string& value);

  void WriteBoolVector(const bool* values, unsigned int count);
  void WriteCharVector(const char* values, unsigned int count);
  void WriteInt8Vector(const char* values, unsigned int count);
  void WriteUInt8Vector(const unsigned char* values, unsigned int count);
  void WriteInt16Vector(const short* values, unsigned int count);
  void WriteUInt16Vector(const unsigned short* values, unsigned int count);
  void WriteInt32Vector(const int* values, unsigned int count);
  void WriteUInt32Vector(const std::uint32_t* values, unsigned int count);
  void WriteInt64Vector(const long long* values, unsigned int count);
  void WriteUInt64Vector(const unsigned long long* values, unsigned int count);
  void WriteFloatVector(const float* values, unsigned int count);
  void WriteDoubleVector(const double* values, unsigned int count);
  // Each element as WriteString, in order; a failing element reports as WriteString does.
  void WriteStringVector(const CString* values, unsigned int count);
  void WriteStdStringVector(const std::string* values, unsigned int count);

 private:
  // Writes the `size` bytes or throws StreamException(`failure`).
  void WriteRaw(const void* data, std::size_t size, const char* failure);
  void WriteText(const char* text, std::size_t length, const char* failure);

  union {
    std::ostream* mStream;
    CArchive* mArchive;
  };
  bool mIsArchive;
};

#endif  // ZENUTL_STREAM_WRITER_H_
