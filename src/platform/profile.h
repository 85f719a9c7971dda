// The Windows profile functions (GetPrivateProfileString and its kin) on Linux.
//
// INI files are read and written through these five calls, with the observable behaviour of
// their Windows namesakes that callers rely on: names compare without regard to case, blanks
// around names and values don't count, one pair of quotes around a value is removed, ';' starts
// a comment line, the first of duplicate keys wins, a missing file reads as empty and is created
// by the first write, UTF-16LE files (with their byte-order mark) are read and stay UTF-16LE, and
// the rest of a file (comments, unknown lines, order, line endings) survives a rewrite untouched.
// Buffers are filled with the Windows truncation rules, including the `size - 2` answer for a cut
// list of names. The file syntax is described in ini_document.h.
//
// Beyond Windows, so that settings are never lost:
//   - every write replaces the file atomically (atomic_file.h): should the process die, the file
//     is the old one or the new one, whole, and every write that answered 1 is in it. Writes
//     don't wait for the disk; the flush call (and so IniFileSection's Flush and destructor)
//     syncs the file and its folder, which makes them survive a power loss too;
//   - writers are serialised across threads and processes by an advisory lock (flock) on the
//     file, held around the whole read-modify-write, and under the lock the file itself is read,
//     so concurrent writers of different keys all keep their keys;
//   - parses are kept in a per-process cache. A read takes one on the strength of the file's
//     status (device, inode, size, times) only when the file had settled before its content was
//     read, since a recent status can't tell two versions apart (a reused inode number, equal
//     sizes, a coarse clock); otherwise the file is read and its parse reused if the bytes are
//     the same. The lists of names are kept ready with each parse.
//
// Narrow calls take and give bytes as they stand in an 8-bit file, and UTF-8 for a UTF-16 one;
// the wide calls convert to and from UTF-8. File names are Windows paths and go through
// ToNativePath.
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
// removes the key; a null `key` removes the section; all three null is the flush call, which
// syncs the file and its folder if this process changed the file since its last flush.
// Returns 1 on success, also when there was nothing to remove, and 0 on failure: a file or
// folder that can't be written or synced, or names and values that the file couldn't hold (a
// line break anywhere, ']' in a section name, '=' in a key, an empty key, text that isn't UTF-8
// for a UTF-16 file).
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
