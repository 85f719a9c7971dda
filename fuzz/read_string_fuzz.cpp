// StreamReader's texts on arbitrary bytes: a length field of any value, data of any size.
//
// Invariants beyond "no crash": only StreamException escapes, and a text that is read has
// exactly the announced length and the bytes behind the length field. A text sized by its
// length field alone would show as one allocation above libFuzzer's memory limit.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "zenutl/stream_reader.h"

namespace {

void CheckText(const std::string& data, const std::string& text, std::size_t start) {
  std::uint32_t length;
  std::memcpy(&length, data.data() + start, 4);
  if (text.size() != length || data.compare(start + 4, length, text) != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  {
    std::istringstream stream(bytes);
    StreamReader reader(stream);
    std::size_t start = 0;
    try {
      for (;;) {  // texts back to back until the data runs out
        const std::string text = reader.ReadStdString();
        CheckText(bytes, text, start);
        start += 4 + text.size();
      }
    } catch (const StreamException&) {
    }
  }
  std::istringstream stream(bytes);
  StreamReader reader(stream);
  CString texts[2];
  try {
    reader.ReadStringVector(texts, 2);
  } catch (const StreamException&) {
  }
  return 0;
}
