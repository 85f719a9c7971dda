// The older 16-bit-length binary strings on arbitrary bytes, through all four readers.
//
// Invariants beyond "no crash": nothing throws; a reader that got its length answers a text of
// that length (the std::string form always, the buffer forms with a terminator in place); a
// reused buffer is never written past its capacity (ASan watches the buffer's end).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "zenutl/stream_byte_helpers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const bool hasLength = size >= 2;
  const std::size_t length = hasLength ? (data[0] | data[1] << 8) : 0;

  std::istringstream forStandard(bytes);
  std::string standard("old");
  ReadBinaryString(standard, forStandard);
  if (standard.size() != length) std::abort();

  std::istringstream forBuffer(bytes);
  char* buffer = nullptr;
  ReadBinaryString(&buffer, forBuffer);
  if (hasLength != (buffer != nullptr) || (buffer != nullptr && buffer[length] != '\0')) {
    std::abort();
  }
  delete[] buffer;

  // A reused buffer of a capacity taken from the data, read twice.
  int capacity = size > 2 ? data[2] % 64 + 1 : 1;
  char* reused = new char[capacity];
  std::istringstream forReused(bytes);
  ReadBinaryString(&reused, &capacity, forReused);
  ReadBinaryString(&reused, &capacity, forReused);
  delete[] reused;

  std::istringstream forCString(bytes);
  CString text("old");
  if (ReadBinaryString(text, forCString) && static_cast<std::size_t>(text.GetLength()) > length) {
    std::abort();
  }
  return 0;
}
