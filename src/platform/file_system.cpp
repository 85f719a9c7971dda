#include "platform/file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>

#include "platform/file_calls.h"
#include "platform/native_path.h"

namespace zenutl {
namespace platform {
namespace {

// Network file systems whose magic numbers linux/magic.h does not carry.
const unsigned long kCifsMagic = 0xFF534D42UL;
const unsigned long kSmb2Magic = 0xFE534D42UL;

// Reads "1" or "0" from a sysfs attribute of the block device `device`; the attribute of a
// partition lives on its disk, one level up.
bool IsRemovableBlockDevice(dev_t device) {
  char base[64];
  std::snprintf(base, sizeof(base), "/sys/dev/block/%u:%u", major(device), minor(device));
  for (const char* relative : {"/removable", "/../removable"}) {
    std::ifstream in(std::string(base) + relative);
    char flag = 0;
    if (in >> flag) return flag == '1';
  }
  return false;
}

}  // namespace

std::string SystemErrorText(int error) {
  char buffer[256];
  // The GNU form returns the text, which may or may not be in the buffer.
  const char* text = ::strerror_r(error, buffer, sizeof(buffer));
  return text ? text : "";
}

bool StatPath(const char* path, struct stat* info) {
  return ::stat(ToNativePath(path).c_str(), info) == 0;
}

bool LinkStatPath(const char* path, struct stat* info) {
  return ::lstat(ToNativePath(path).c_str(), info) == 0;
}

int AccessPath(const char* path, int mode) {
  return ::access(ToNativePath(path).c_str(), mode);
}

int OpenPath(const char* path, int flags, mode_t mode) {
  int fd;
  do {
    fd = ::open(ToNativePath(path).c_str(), flags | O_CLOEXEC, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

int MakeDirectory(const char* path) {
  return ::mkdir(ToNativePath(path).c_str(), 0777);
}

int RemoveDirectoryPath(const char* path) {
  return ::rmdir(ToNativePath(path).c_str());
}

int UnlinkPath(const char* path) {
  return Unlink(ToNativePath(path).c_str());
}

int RenamePathNoReplace(const char* from, const char* to) {
  return RenameNoReplace(ToNativePath(from).c_str(), ToNativePath(to).c_str());
}

bool ListDirectory(const char* path, std::vector<DirectoryEntry>& entries) {
  const std::string native = ToNativePath(path);
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(native.c_str()), &::closedir);
  if (!dir) return false;
  errno = 0;
  while (const struct dirent* entry = ::readdir(dir.get())) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    bool isDirectory = entry->d_type == DT_DIR;
    if (entry->d_type == DT_UNKNOWN) {
      struct stat info;
      isDirectory = ::lstat((native + "/" + name).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    }
    entries.push_back(DirectoryEntry{name, isDirectory});
    errno = 0;
  }
  return errno == 0;
}

bool ResolvePath(const char* path, std::string& resolved) {
  const std::string native = ToNativePath(path);
  if (native.empty()) {
    errno = ENOENT;
    return false;
  }
  std::unique_ptr<char, void (*)(void*)> full(::realpath(native.c_str(), nullptr), &std::free);
  if (!full) return false;
  resolved = FromNativePath(full.get());
  return true;
}

bool IsSymbolicLink(const char* path) {
  struct stat info;
  return LinkStatPath(path, &info) && S_ISLNK(info.st_mode);
}

std::string GetTempPath() {
  std::string folder = "/tmp";
  const char* fromEnvironment = std::getenv("TMPDIR");
  // Longer texts do not fit the 256 characters the callers give this.
  if (fromEnvironment && *fromEnvironment && std::strlen(fromEnvironment) < 250) {
    folder = fromEnvironment;
  }
  folder = FromNativePath(folder);
  if (folder.back() != '\\') folder += '\\';
  return folder;
}

bool CreateUniqueTempFile(const char* folder, const char* prefix, const char* extension,
                          std::string& name) {
  std::string base = FromNativePath(folder ? folder : "");
  if (!base.empty() && base.back() != '\\') base += '\\';
  base += std::string(prefix ? prefix : "").substr(0, 3);
  // Start somewhere hard to guess, as the platform does with the clock, and walk the 65535
  // four-digit numbers from there.
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  unsigned int number = static_cast<unsigned int>(now.tv_nsec ^ (::getpid() << 8)) & 0xFFFFu;
  for (unsigned int attempt = 0; attempt < 0xFFFFu; ++attempt) {
    number = (number % 0xFFFFu) + 1;  // 1..FFFF: zero has a meaning of its own
    char digits[8];
    std::snprintf(digits, sizeof(digits), "%X", number);
    const std::string candidate = base + digits + "." + (extension ? extension : "");
    const int fd = OpenPath(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    if (fd >= 0) {
      ::close(fd);
      name = candidate;
      return true;
    }
    if (errno != EEXIST) return false;
  }
  errno = EEXIST;
  return false;
}

EDriveType ClassifyDriveType(unsigned long fileSystemMagic, bool removableDevice) {
  switch (fileSystemMagic) {
    case ISOFS_SUPER_MAGIC:
    case UDF_SUPER_MAGIC:
      return eDriveCdRom;
    case NFS_SUPER_MAGIC:
    case SMB_SUPER_MAGIC:
    case kCifsMagic:
    case kSmb2Magic:
    case AFS_SUPER_MAGIC:
    case CEPH_SUPER_MAGIC:
    case CODA_SUPER_MAGIC:
    case V9FS_MAGIC:
      return eDriveRemote;
    case TMPFS_MAGIC:
    case RAMFS_MAGIC:
      return eDriveRamDisk;
    default:
      return removableDevice ? eDriveRemovable : eDriveFixed;
  }
}

EDriveType GetDriveType(const char* path) {
  const std::string native = ToNativePath(path);
  struct statfs fileSystem;
  struct stat info;
  if (::statfs(native.c_str(), &fileSystem) != 0 || ::stat(native.c_str(), &info) != 0) {
    return eDriveNoRootDir;
  }
  return ClassifyDriveType(static_cast<unsigned long>(fileSystem.f_type),
                           IsRemovableBlockDevice(info.st_dev));
}

bool GetDiskFreeSpace(const char* path, unsigned long long* freeBytes) {
  struct statvfs fileSystem;
  if (::statvfs(ToNativePath(path).c_str(), &fileSystem) != 0) return false;
  if (freeBytes) {
    *freeBytes = static_cast<unsigned long long>(fileSystem.f_bavail) * fileSystem.f_frsize;
  }
  return true;
}

bool IsReadOnlyFile(const struct stat& info) {
  return S_ISREG(info.st_mode) && (info.st_mode & 0222) == 0;
}

bool IsReadOnlyItem(const char* path) {
  return AccessPath(path, W_OK) != 0 && errno != ENOENT;
}

}  // namespace platform
}  // namespace zenutl
