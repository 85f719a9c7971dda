#include "platform/native_path.h"

#include <algorithm>

namespace zenutl {
namespace platform {

std::string ToNativePath(const char* windowsPath) {
  std::string path = windowsPath ? windowsPath : "";
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

std::string FromNativePath(const std::string& nativePath) {
  std::string path = nativePath;
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

}  // namespace platform
}  // namespace zenutl
