// StreamReader: typed reading of raw values from a std::istream or a loading CArchive, so that
// one piece of deserialising code serves both. StreamWriter (stream_writer.h) writes what this
// reads; stream_byte_helpers.h is the older bool-returning layer.
//
// Every value is its memory image, little-endian, IEEE 754 for floats, with no tag, no
// alignment and no count: the caller knows what comes next. Widths are those of the platform
// the format was made on, where `long` had 32 bits, so the interface uses fixed-width types
// where that matters:
//   Bool, Char, Int8, UInt8: 1 byte      Int16, UInt16: 2      Int32, UInt32, Float: 4
//   Int64, UInt64, Double: 8             String, StdString: UInt32 byte count, then the bytes
// A vector form reads `count` values back to back in one transfer, and no count of its own.
// A nonzero byte reads as `true`.
//
// Error contract: every failure throws StreamException whose text names the operation:
// "ReadDouble failed", "ReadUInt32Vector failed", ..., "Tell failed.", "Seek failed.",
// "Wrong CArchive mode". A read fails when the stream cannot give all its bytes (its failbit or
// badbit is set afterwards; the eof bit alone is no failure). A CFileException or
// CArchiveException of the archive passes through the read operations untouched, but becomes
// "Tell failed." or "Seek failed." there. The position after a failure is undefined; the reader
// keeps no error state of its own, though a failed std::istream stays failed until cleared.
//
// The reader does not own its stream, which must outlive it.
#ifndef ZENUTL_STREAM_READER_H_
#define ZENUTL_STREAM_READER_H_

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>

#include "zenutl/carchive.h"
#include "zenutl/cstring.h"
#include "zenutl/exception.h"

class StreamReader {
 public:
  // Never fails.
  explicit StreamReader(std::istream& stream);
  // Throws "Wrong CArchive mode" unless the archive loads.
  explicit StreamReader(CArchive& archive);

  // The position from the start of the stream. On an archive, flushes it first.
  long long Tell() const;
  // Moves to `position` from the start; a negative one throws before the stream is touched.
  void Seek(long long position);

  bool ReadBool();
  char ReadChar();
  char ReadInt8();
  unsigned char ReadUInt8();
  short ReadInt16();
  unsigned short ReadUInt16();
  int ReadInt32();
  std::uint32_t ReadUInt32();
  long long ReadInt64();
  unsigned long long ReadUInt64();
  float ReadFloat();
  double ReadDouble();
  // The length fails as "ReadUInt32 failed", the text as "ReadString failed". The text is read
  // in bounded steps, so a damaged length fails at the end of the data instead of asking for
  // gigabytes first. A CString holds at most 2^31 - 1 bytes; a longer one fails.
  CString ReadString();
  std::string ReadStdString();

  void ReadBoolVector(bool* values, unsigned int count);
  void ReadCharVector(char* values, unsigned int count);
  void ReadInt8Vector(char* values, unsigned int count);
  void ReadUInt8Vector(unsigned char* values, unsigned int count);
  void ReadInt16Vector(short* values, unsigned int count);
  void ReadUInt16Vector(unsigned short* values, unsigned int count);
  void ReadInt32Vector(int* values, unsigned int count);
  void ReadUInt32Vector(std::uint32_t* values, unsigned int count);
  void ReadInt64Vector(long long* values, unsigned int count);
  void ReadUInt64Vector(unsigned long long* values, unsigned int count);
  void ReadFloatVector(float* values, unsigned int count);
  void ReadDoubleVector(double* values, unsigned int count);
  // Each element as ReadString, in order; a failing element reports as ReadString does.
  void ReadStringVector(CString* values, unsigned int count);
  void ReadStdStringVector(std::string* values, unsigned int count);

 private:
  // Reads exactly `size` bytes or throws StreamException(`failure`).
  void ReadRaw(void* data, std::size_t size, const char* failure);
  // Reads the length and text of a string into `text`; a length above `longest` fails.
  void ReadText(std::string& text, std::size_t longest, const char* failure);

  union {
    std::istream* mStream;
    CArchive* mArchive;
  };
  bool mIsArchive;
};

#endif  // ZENUTL_STREAM_READER_H_
