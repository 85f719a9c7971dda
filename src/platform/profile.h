// The Windows profile functions (GetPrivateProfileString and its kin) on Linux.
//
// INI files are read and written through these five calls, with the observable behaviour of
// their Windows namesakes that callers rely on: names compare without regard to case, blanks
// around names and values don't count, ';' starts a comment line, the first of duplicate keys
// wins, a missing file reads as empty and is created by the first write, and the rest of a file
// (comments, unknown lines, order, line endings) survives a rewrite untouched. Buffers are filled
// with the Windows truncation rules, including the `size - 2` answer for a cut list of names.
// The file syntax is described in ini_document.h.
//
// Beyond Windows, so that settings are never lost:
//   - every write replaces the file atomically (atomic_file.h): a full disk or a crash leaves the
//     old file whole;
//   - writers are serialised across threads and processes by an advisory lock (flock) on the
//     file, held around the whole read-modify-write, so concurrent writers of different keys all
//     keep their keys;
//   - a file is parsed once and then served from a per-process cache for as long as its device,
//     inode, size and modification time (to the nanosecond) stay the same. A file changed within
//     the last moments before it was read is re-read until it has settled, since a timestamp of
//     the file system's coarse clock can't tell two quick in-place edits apart.
//
// Narrow calls take and give bytes as they stand in the file; the wide calls convert to and from
// UTF-8. File names are Windows paths and go through ToNativePath.
//
// Error contract: nothing throws. The writes answer 0 on failure, with errno set and the
// system's description of the failure in LastProfileError() (per thread). Reads of an unreadable
// file behave as reads of an empty one.
#ifndef ZENUTL_PLATFORM_PROFILE_H_
#define ZENUTL_PLATFORM_PROFILE_H_

#include <string>

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// Stands for GetPrivateProfileStringA. With a key: copies the key's value, or `defaultValue`
// (null meaning ""), into `buffer`, cut to `size - 1` characters and terminated, and returns the
// number of characters copied. With a null key: the section's key names, each followed by a zero,
// and one more zero at the end; the return excludes that last zero. A list that doesn't fit is
// cut, ends in two zeros, and the return is `size - 2`. With a null section: the section names,
// in the same way. A `size` of 0 returns 0 and touches nothing.
DWORD GetPrivateProfileStringA(const char* section, const char* key, const char* defaultValue,
                               char* buffer, DWORD size, const char* file);

// Stands for GetPrivateProfileStringW: as the narrow form, in wide characters; `size` counts
// wide characters and the file's UTF-8 is decoded.
DWORD GetPrivateProfileStringW(const wchar_t* section, const wchar_t* key,
                               const wchar_t* defaultValue, wchar_t* buffer, DWORD size,
                               const wchar_t* file);

// Stands for GetPrivateProfileSectionNamesA: the section names as a list, as above.
DWORD GetPrivateProfileSectionNamesA(char* buffer, DWORD size, const char* file);

// Stands for WritePrivateProfileStringA. Creates or replaces `key` in `section`; a null `value`
// removes the key; a null `key` removes the section; all three null is the flush call, which has
// nothing to do here since every write is on the disk when it returns.
// Returns 1 on success, also when there was nothing to remove, and 0 on failure: a file or
// folder that can't be written, or names and values that the file couldn't hold (a line break
// anywhere, ']' in a section name, '=' in a key, an empty key).
BOOL WritePrivateProfileStringA(const char* section, const char* key, const char* value,
                                const char* file);

// Stands for WritePrivateProfileStringW: as the narrow form, everything converted to UTF-8.
BOOL WritePrivateProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* value,
                                const wchar_t* file);

// The description of this thread's last failed profile write, or "".
std::string LastProfileError();

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_PROFILE_H_
