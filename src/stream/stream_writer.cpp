#include "zenutl/stream_writer.h"

#include <cstdint>

#include "stream/little_endian.h"
#include "stream/stream_access.h"

using zenutl::stream::Guarded;

StreamWriter::StreamWriter(std::ostream& stream) : mStream(&stream), mIsArchive(false) {}

StreamWriter::StreamWriter(CArchive& archive) : mArchive(&archive), mIsArchive(true) {
  if (!archive.IsStoring()) throw StreamException("Wrong CArchive mode");
}

long long StreamWriter::Tell() const {
  if (mIsArchive) return zenutl::stream::TellArchive(*mArchive);
  const long long position = mStream->tellp();
  if (position < 0) throw StreamException("Tell failed.");
  return position;
}

void StreamWriter::Seek(long long position) {
  if (position < 0) throw StreamException("Seek failed.");
  if (mIsArchive) return zenutl::stream::SeekArchive(*mArchive, position);
  if (mStream->seekp(position).fail()) throw StreamException("Seek failed.");
}

// Inline, so that each typed operation reaches the stream in one call of its own.
inline void StreamWriter::WriteRaw(const void* data, std::size_t size, const char* failure) {
  if (size == 0) return;
  Guarded(failure, [&] {
    if (mIsArchive) {
      zenutl::stream::WriteToArchive(*mArchive, data, size);
    } else if (mStream->write(static_cast<const char*>(data), static_cast<std::streamsize>(size))
                   .fail()) {
      throw StreamException(failure);
    }
  });
}

void StreamWriter::WriteText(const char* text, std::size_t length, const char* failure) {
  Guarded(failure, [&] {
    // A longer text would go out with a wrapped length and could never be read back.
    if (length > UINT32_MAX) throw StreamException(failure);
    WriteUInt32(static_cast<std::uint32_t>(length));
    WriteRaw(text, length, failure);
  });
}

#define ZENUTL_WRITE_SCALAR(Name, Type)                      \
  void StreamWriter::Write##Name(Type value) {               \
    WriteRaw(&value, sizeof value, "Write" #Name " failed"); \
  }
#define ZENUTL_WRITE_VECTOR(Name, Type)                                            \
  void StreamWriter::Write##Name##Vector(const Type* values, unsigned int count) { \
    WriteRaw(values, sizeof(Type) * count, "Write" #Name "Vector failed");         \
  }
#define ZENUTL_WRITE_BOTH(Name, Type) \
  ZENUTL_WRITE_SCALAR(Name, Type)     \
  ZENUTL_WRITE_VECTOR(Name, Type)

ZENUTL_WRITE_BOTH(Bool, bool)
ZENUTL_WRITE_BOTH(Char, char)
ZENUTL_WRITE_BOTH(Int8, char)
ZENUTL_WRITE_BOTH(UInt8, unsigned char)
ZENUTL_WRITE_BOTH(Int16, short)
ZENUTL_WRITE_BOTH(UInt16, unsigned short)
ZENUTL_WRITE_BOTH(Int32, int)
ZENUTL_WRITE_BOTH(UInt32, std::uint32_t)
ZENUTL_WRITE_BOTH(Int64, long long)
ZENUTL_WRITE_BOTH(UInt64, unsigned long long)
ZENUTL_WRITE_BOTH(Float, float)
ZENUTL_WRITE_BOTH(Double, double)

#undef ZENUTL_WRITE_BOTH
#undef ZENUTL_WRITE_VECTOR
#undef ZENUTL_WRITE_SCALAR

void StreamWriter::WriteString(const CString& value) {
  WriteText(value.GetString(), value.str().size(), "WriteString failed");
}

void StreamWriter::WriteStdString(const std::string& value) {
  WriteText(value.data(), value.size(), "WriteStdString failed");
}

void StreamWriter::WriteStringVector(const CString* values, unsigned int count) {
  Guarded("WriteStringVector failed", [&] {
    for (unsigned int i = 0; i < count; ++i) WriteString(values[i]);
  });
}

void StreamWriter::WriteStdStringVector(const std::string* values, unsigned int count) {
  Guarded("WriteStdStringVector failed", [&] {
    for (unsigned int i = 0; i < count; ++i) WriteStdString(values[i]);
  });
}
