// The stream directory reader on arbitrary bytes: any size code, count, offsets and end.
//
// Invariants beyond "no crash": only StreamException escapes; a stream that is found starts
// inside the container (at or behind the base, at or before the end), and so does the extent
// the directory tells for it, which also ends within the container; the reader's destructor
// never throws.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <sstream>
#include <string>

#include "zenutl/stream_directory_reader.h"
#include "zenutl/stream_reader_proxy.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  StreamReader reader(stream);
  try {
    StreamDirectoryReader directory(reader);
    const long long base = reader.Tell();
    for (unsigned int index = 0; index < directory.GetStreamCount(); ++index) {
      try {
        StreamDirectoryReader::Extent extent{};
        if (!directory.GetStreamExtent(index, extent)) continue;
        const unsigned long long end = static_cast<unsigned long long>(directory.GetEndPosition());
        if (extent.position < base ||
            static_cast<unsigned long long>(extent.position) + extent.size > end) {
          std::abort();
        }
      } catch (const StreamException&) {
      }
    }
    for (unsigned int index = 0; index < 256; ++index) {
      try {
        StreamReaderProxy proxy(directory, index);
        if (proxy.GetStream() == nullptr) continue;
        if (reader.Tell() < base) std::abort();
        proxy.ReadUInt16(0);
      } catch (const StreamException&) {
        stream.clear();  // the next stream may still be there
      }
    }
  } catch (const StreamException&) {
  }
  return 0;
}
