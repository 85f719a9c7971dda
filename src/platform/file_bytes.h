// Whole-file reads for data the library loads at once (resource catalogues and their files).
#ifndef ZENUTL_PLATFORM_FILE_BYTES_H_
#define ZENUTL_PLATFORM_FILE_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace zenutl {
namespace platform {

// Reads the regular file at the native `path` into `bytes`. On failure answers false with the
// system's reason ("No such file or directory", "Is a directory", ...) and leaves `bytes` empty.
// Anything but a regular file is refused without waiting on it (a FIFO with no writer, a
// device), and so is a file longer than `maxBytes` ("File too large").
bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& reason,
                   std::size_t maxBytes = SIZE_MAX);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_FILE_BYTES_H_
