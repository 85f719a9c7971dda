// The file system services behind the path and file functions, for Linux.
//
// Each function stands for one Windows or runtime call and takes and gives paths in the
// library's Windows form; the conversion to the kernel's form happens here, through
// ToNativePath, and nowhere in the portable code. Writes, renames and removals go through the
// replaceable table of file_calls.h.
#ifndef ZENUTL_PLATFORM_FILE_SYSTEM_H_
#define ZENUTL_PLATFORM_FILE_SYSTEM_H_

#include <sys/stat.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace zenutl {
namespace platform {

// strerror_r: the system's text for an error number, as the framework's file exception gives.
std::string SystemErrorText(int error);

// stat (_stat, _findfirst, GetFileAttributesA): false if nothing is there. Links are followed.
bool StatPath(const char* path, struct stat* info);
// lstat: as StatPath, but a link is described itself.
bool LinkStatPath(const char* path, struct stat* info);
// access (_access): 0 on success, -1 with errno.
int AccessPath(const char* path, int mode);
// open (fopen, CFile::Open): a descriptor, or -1 with errno. Always close-on-exec.
int OpenPath(const char* path, int flags, mode_t mode = 0);
// mkdir (_mkdir) with the permissions that umask leaves of 0777.
int MakeDirectory(const char* path);
// rmdir (RemoveDirectoryA).
int RemoveDirectoryPath(const char* path);
// unlink (DeleteFileA, CFile::Remove), through the replaceable table.
int UnlinkPath(const char* path);
// Rename refusing an existing target (MoveFileA, CFile::Rename, the runtime's rename).
int RenamePathNoReplace(const char* from, const char* to);
struct DirectoryEntry {
  std::string name;
  bool isDirectory;  // a real folder, not a link to one
};
// readdir (CFileFind on "*.*"): the entries of a folder without "." and "..". False, with errno
// set, if the folder cannot be read.
bool ListDirectory(const char* path, std::vector<DirectoryEntry>& entries);

// realpath (PathSearchAndQualifyA, SHGetPathFromIDListA): the absolute path with every link
// resolved, in Windows form. False, with errno set, if it cannot be resolved.
bool ResolvePath(const char* path, std::string& resolved);
// Whether `path` is itself a symbolic link (the Linux form of a shell shortcut).
bool IsSymbolicLink(const char* path);

// GetTempPathA: $TMPDIR if set to a usable text, else /tmp; in Windows form with a trailing `\`.
std::string GetTempPath();

// GetTempFileNameA with the number 0: creates a new empty file
// "<folder>\<prefix's first 3 characters><hex>.<extension>" and gives its name in Windows form.
// The platform always uses the extension "TMP"; creating the file under its final extension at
// once spares a rename that could clash with an existing name. False if none could be made
// (errno set).
bool CreateUniqueTempFile(const char* folder, const char* prefix, const char* extension,
                          std::string& name);

// The drive types of GetDriveTypeA.
enum EDriveType {
  eDriveUnknown = 0,
  eDriveNoRootDir = 1,
  eDriveRemovable = 2,
  eDriveFixed = 3,
  eDriveRemote = 4,
  eDriveCdRom = 5,
  eDriveRamDisk = 6,
};
// GetDriveTypeA. Linux has no drive letters, so the type is that of the file system holding
// `path`: optical (iso9660, udf), remote (nfs, cifs, smb, fuse-sshfs...), ram (tmpfs, ramfs),
// removable when the block device says so, else fixed; eDriveNoRootDir if the path is missing.
EDriveType GetDriveType(const char* path);
// The file system's magic number and block device of `path` feed GetDriveType; split out so
// that the classification can be checked on its own.
EDriveType ClassifyDriveType(unsigned long fileSystemMagic, bool removableDevice);

// GetDiskFreeSpaceA through statvfs: bytes free to an unprivileged user. False if the file
// system cannot be asked.
bool GetDiskFreeSpace(const char* path, unsigned long long* freeBytes);

// The read-only attribute of a file (FILE_ATTRIBUTE_READONLY), mapped as Samba and Wine map it:
// no write permission bit at all. Windows refuses such a file to every writer, administrators
// included, while Linux lets root write it; writers that must refuse ask this first.
bool IsReadOnlyFile(const struct stat& info);

// SHGetFileInfoA's read-only attribute (0x40000): the item cannot be written by this process,
// e.g. it lies on a read-only mount.
bool IsReadOnlyItem(const char* path);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_FILE_SYSTEM_H_
