#include "zenutl/stream_byte_helpers.h"

#include <algorithm>
#include <cstring>

#include "stream/little_endian.h"

namespace {

// The byte count of `count` items of `size` bytes, or -1 (with failbit set) for a negative one.
std::streamsize ByteCount(int size, int count, std::ios& stream) {
  if (size < 0 || count < 0) {
    stream.setstate(std::ios::failbit);
    return -1;
  }
  return static_cast<std::streamsize>(size) * count;
}

// The length field of a binary string; false if its two bytes could not be read.
bool ReadLength(std::istream& stream, int& length) {
  unsigned short value = 0;
  if (!ReadTwoBytes(&value, 1, stream)) return false;
  length = value;
  return true;
}

// Reads `length` bytes into `buffer` and terminates it there. Bytes that never came are zeros,
// so a short read leaves no stale text behind.
bool ReadTerminated(char* buffer, int length, std::istream& stream) {
  std::streamsize got = 0;
  if (length > 0) {
    stream.read(buffer, length);
    got = stream.gcount();
  }
  std::fill(buffer + got, buffer + length + 1, '\0');
  return stream.good();
}

}  // namespace

bool WriteArray(const void* data, int size, int count, std::ostream& stream) {
  const std::streamsize bytes = ByteCount(size, count, stream);
  if (bytes > 0) stream.write(static_cast<const char*>(data), bytes);
  return stream.good();
}

bool WriteBytes(const void* data, int count, std::ostream& stream) {
  return WriteArray(data, 1, count, stream);
}

bool WriteTwoBytes(const void* data, int count, std::ostream& stream) {
  return WriteArray(data, 2, count, stream);
}

bool WriteFourBytes(const void* data, int count, std::ostream& stream) {
  return WriteArray(data, 4, count, stream);
}

bool WriteEightBytes(const void* data, int count, std::ostream& stream) {
  return WriteArray(data, 8, count, stream);
}

bool ReadArray(void* data, int size, int count, std::istream& stream) {
  const std::streamsize bytes = ByteCount(size, count, stream);
  if (bytes > 0) stream.read(static_cast<char*>(data), bytes);
  return stream.good();
}

bool ReadBytes(void* data, int count, std::istream& stream) {
  return ReadArray(data, 1, count, stream);
}

bool ReadTwoBytes(void* data, int count, std::istream& stream) {
  return ReadArray(data, 2, count, stream);
}

bool ReadFourBytes(void* data, int count, std::istream& stream) {
  return ReadArray(data, 4, count, stream);
}

bool ReadEightBytes(void* data, int count, std::istream& stream) {
  return ReadArray(data, 8, count, stream);
}

bool WriteBinaryString(const char* text, std::ostream& stream) {
  if (text == nullptr) text = "";
  // The length field has 16 bits; a longer text loses its length's upper bits and is cut to
  // what the field says, as files of this format always were.
  const unsigned short length = static_cast<unsigned short>(std::strlen(text) & 0xFFFF);
  if (!WriteTwoBytes(&length, 1, stream)) return false;
  return length == 0 || WriteBytes(text, length, stream);
}

bool ReadBinaryString(char** text, std::istream& stream) {
  delete[] * text;
  *text = nullptr;
  int length = 0;
  if (!ReadLength(stream, length)) return false;
  *text = new char[length + 1];
  return ReadTerminated(*text, length, stream);
}

bool ReadBinaryString(char** text, int* capacity, std::istream& stream) {
  int length = 0;
  if (!ReadLength(stream, length)) return false;
  if (*text == nullptr || static_cast<long long>(*capacity) - 1 < length) {
    delete[] * text;
    *text = new char[length + 1];
    *capacity = length + 1;
  }
  return ReadTerminated(*text, length, stream);
}

bool ReadBinaryString(CString& text, std::istream& stream) {
  int length = 0;
  if (!ReadLength(stream, length)) return false;
  const bool read = ReadTerminated(text.GetBuffer(length + 1), length, stream);
  text.ReleaseBuffer();  // the text ends at its first zero byte
  return read;
}

bool ReadBinaryString(std::string& text, std::istream& stream) {
  text.clear();
  int length = 0;
  if (!ReadLength(stream, length)) return false;
  text.resize(static_cast<std::size_t>(length));
  std::streamsize got = 0;
  if (length > 0) {
    stream.read(&text[0], length);
    got = stream.gcount();
  }
  // The format's reader always gave the announced length, repeating the last byte it had for
  // every byte the stream no longer held.
  const char last = got > 0 ? text[static_cast<std::size_t>(got - 1)] : '\0';
  std::fill(text.begin() + got, text.end(), last);
  return stream.good();
}
