// File status and durability services that the Windows API offers per handle, answered here
// from path-based Linux calls.
#ifndef ZENUTL_PLATFORM_FILE_TIMES_AND_SYNC_H_
#define ZENUTL_PLATFORM_FILE_TIMES_AND_SYNC_H_

#include <string>

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// Stands for GetFileTime's last-write time: stat's st_mtim, converted to 100 ns intervals since
// 1601 (UTC). False, with `lastWritten` untouched, when the file can't be examined.
bool GetLastWriteFileTime(const std::string& nativePath, FILETIME& lastWritten);

// Stands for FlushFileBuffers: Linux has no per-path flush for closed files, so syncfs flushes
// the whole file system that holds `nativePath`. False when the path can't be opened or the
// sync fails.
bool SyncFileSystemHolding(const std::string& nativePath);

// Stands for FlushFileBuffers on a file that is replaced by renaming: syncs the file's content
// (a symbolic link is followed) and then its folder, which holds the name's link to the newest
// version. A missing file has only its folder synced. False, with errno set and the system's
// description of the failure in `error`, when a sync fails or the folder can't be opened.
bool SyncFileAndFolder(const std::string& nativePath, std::string* error);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_FILE_TIMES_AND_SYNC_H_
