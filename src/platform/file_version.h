// Version numbers of files, where Windows keeps them in each file's version resource.
//
// Linux files carry no version resource, so the versions live in a process-wide table that the
// host application fills at start-up; a file it has not described has no version, as a file
// without the resource has none on Windows.
#ifndef ZENUTL_PLATFORM_FILE_VERSION_H_
#define ZENUTL_PLATFORM_FILE_VERSION_H_

#include <string>

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// Records the version of `path` as the two halves of a fixed file-version record: the first and
// second parts in the high and low words of `versionMS`, the third and fourth in `versionLS`.
// Paths are compared after resolving links and relative parts, when the file exists.
void SetFileVersion(const std::string& path, DWORD versionMS, DWORD versionLS);

// GetFileVersionInfoA with VerQueryValueA("\\"): the halves recorded for `path`; false when
// none were.
bool GetFileVersion(const std::string& path, DWORD* versionMS, DWORD* versionLS);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_FILE_VERSION_H_
