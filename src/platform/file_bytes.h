// Whole-file reads for data the library loads at once (resource catalogues and their files).
#ifndef ZENUTL_PLATFORM_FILE_BYTES_H_
#define ZENUTL_PLATFORM_FILE_BYTES_H_

#include <cstddef>
#include <string>

namespace zenutl {
namespace platform {

// Reads the regular file at the native `path` into `bytes`. On failure answers false with the
// system's reason ("No such file or directory", "Is a directory", ...) and leaves `bytes` empty.
// A file of more than `limit` bytes is refused with "File too large", without reading it whole.
bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& reason,
                   std::size_t limit = static_cast<std::size_t>(-1));

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_FILE_BYTES_H_
