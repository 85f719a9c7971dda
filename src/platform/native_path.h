// Conversion of the library's Windows-form paths to the form the Linux kernel takes.
//
// Text functions across the library keep paths as the applications wrote them, with `\` as the
// separator. Every call that reaches the operating system passes the path through here first,
// so that this is the one place that knows the difference.
#ifndef ZENUTL_PLATFORM_NATIVE_PATH_H_
#define ZENUTL_PLATFORM_NATIVE_PATH_H_

#include <string>

namespace zenutl {
namespace platform {

// "a\\b\\c.txt" => "a/b/c.txt"; "/tmp/x" => "/tmp/x"; "" => "". A drive prefix ("C:") has no
// meaning here and is kept as an ordinary name component.
std::string ToNativePath(const char* windowsPath);
inline std::string ToNativePath(const std::string& windowsPath) {
  return ToNativePath(windowsPath.c_str());
}

// The reverse, for paths the OS hands back: "/tmp/x" => "\\tmp\\x".
std::string FromNativePath(const std::string& nativePath);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_NATIVE_PATH_H_
