// Moving a file to a new name, as the Windows rename (MoveFileA, CFile::Rename) does it.
//
// A Windows rename refuses an existing target and moves a file to another volume by copying it.
// rename(2) does neither by itself: it replaces, and it stops at the edge of a file system
// (EXDEV), which is the common case of a file made in a tmpfs temporary folder and kept in a
// document folder. Paths are in the library's Windows form.
#ifndef ZENUTL_PLATFORM_FILE_MOVE_H_
#define ZENUTL_PLATFORM_FILE_MOVE_H_

namespace zenutl {
namespace platform {

// Renames `from` to `to`, failing with EEXIST when `to` exists. Across file systems a plain
// file is copied (content, permission bits, times and, where allowed, owner), the copy is
// synced to disk, and only then is `from` removed; a folder or a link there fails with EXDEV.
// 0 on success, else -1 with errno set, and nothing changed: a half-made copy is removed, and
// a copy whose original cannot be removed is taken back.
int MovePathNoReplace(const char* from, const char* to);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_FILE_MOVE_H_
