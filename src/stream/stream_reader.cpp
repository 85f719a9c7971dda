#include "zenutl/stream_reader.h"

#include <algorithm>
#include <climits>

#include "stream/little_endian.h"
#include "stream/stream_access.h"

static_assert(sizeof(bool) == 1, "a bool is one byte in the stream and in memory");

using zenutl::stream::Guarded;

namespace {

// The first step of reading a long text. Later steps double it, so memory grows only as fast
// as bytes actually arrive.
const std::size_t kFirstTextStep = std::size_t(1) << 16;

}  // namespace

StreamReader::StreamReader(std::istream& stream) : mStream(&stream), mIsArchive(false) {}

StreamReader::StreamReader(CArchive& archive) : mArchive(&archive), mIsArchive(true) {
  if (!archive.IsLoading()) throw StreamException("Wrong CArchive mode");
}

long long StreamReader::Tell() const {
  if (mIsArchive) return zenutl::stream::TellArchive(*mArchive);
  const long long position = mStream->tellg();
  if (position < 0) throw StreamException("Tell failed.");
  return position;
}

void StreamReader::Seek(long long position) {
  if (position < 0) throw StreamException("Seek failed.");
  if (mIsArchive) return zenutl::stream::SeekArchive(*mArchive, position);
  if (mStream->seekg(position).fail()) throw StreamException("Seek failed.");
}

// Inline, so that each typed operation reaches the stream in one call of its own.
inline void StreamReader::ReadRaw(void* data, std::size_t size, const char* failure) {
  if (size == 0) return;
  Guarded(failure, [&] {
    if (mIsArchive) {
      if (zenutl::stream::ReadFromArchive(*mArchive, data, size) != size) {
        throw StreamException(failure);
      }
    } else if (mStream->read(static_cast<char*>(data), static_cast<std::streamsize>(size)).fail()) {
      throw StreamException(failure);
    }
  });
}

void StreamReader::ReadText(std::string& text, std::size_t longest, const char* failure) {
  Guarded(failure, [&] {
    const std::size_t length = ReadUInt32();
    if (length > longest) throw StreamException(failure);
    text.clear();
    while (text.size() < length) {
      const std::size_t done = text.size();
      const std::size_t step = std::min(length - done, std::max(kFirstTextStep, done));
      text.resize(done + step);
      ReadRaw(&text[done], step, failure);
    }
  });
}

#define ZENUTL_READ_SCALAR(Name, Type)                     \
  Type StreamReader::Read##Name() {                        \
    Type value;                                            \
    ReadRaw(&value, sizeof value, "Read" #Name " failed"); \
    return value;                                          \
  }
#define ZENUTL_READ_VECTOR(Name, Type)                                      \
  void StreamReader::Read##Name##Vector(Type* values, unsigned int count) { \
    ReadRaw(values, sizeof(Type) * count, "Read" #Name "Vector failed");    \
  }
#define ZENUTL_READ_BOTH(Name, Type) \
  ZENUTL_READ_SCALAR(Name, Type)     \
  ZENUTL_READ_VECTOR(Name, Type)

ZENUTL_READ_BOTH(Char, char)
ZENUTL_READ_BOTH(Int8, char)
ZENUTL_READ_BOTH(UInt8, unsigned char)
ZENUTL_READ_BOTH(Int16, short)
ZENUTL_READ_BOTH(UInt16, unsigned short)
ZENUTL_READ_BOTH(Int32, int)
ZENUTL_READ_BOTH(UInt32, std::uint32_t)
ZENUTL_READ_BOTH(Int64, long long)
ZENUTL_READ_BOTH(UInt64, unsigned long long)
ZENUTL_READ_BOTH(Float, float)
ZENUTL_READ_BOTH(Double, double)

#undef ZENUTL_READ_BOTH
#undef ZENUTL_READ_VECTOR
#undef ZENUTL_READ_SCALAR

// A bool holding anything but 0 or 1 is undefined behaviour, so the byte is judged, not kept.
bool StreamReader::ReadBool() {
  unsigned char byte;
  ReadRaw(&byte, 1, "ReadBool failed");
  return byte != 0;
}

void StreamReader::ReadBoolVector(bool* values, unsigned int count) {
  ReadRaw(values, count, "ReadBoolVector failed");
  unsigned char* bytes = reinterpret_cast<unsigned char*>(values);
  for (unsigned int i = 0; i < count; ++i) bytes[i] = bytes[i] != 0;
}

CString StreamReader::ReadString() {
  std::string text;
  ReadText(text, INT_MAX, "ReadString failed");
  return CString(text);
}

std::string StreamReader::ReadStdString() {
  std::string text;
  ReadText(text, UINT32_MAX, "ReadStdString failed");
  return text;
}

void StreamReader::ReadStringVector(CString* values, unsigned int count) {
  Guarded("ReadStringVector failed", [&] {
    for (unsigned int i = 0; i < count; ++i) values[i] = ReadString();
  });
}

void StreamReader::ReadStdStringVector(std::string* values, unsigned int count) {
  Guarded("ReadStdStringVector failed", [&] {
    for (unsigned int i = 0; i < count; ++i) values[i] = ReadStdString();
  });
}
