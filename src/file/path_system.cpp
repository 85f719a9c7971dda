// The file system functions of path_functions.h. Every call to the system goes through
// platform/file_system.h, which converts the Windows-form paths.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <cwchar>
#include <memory>

#include "file/file_io.h"
#include "file/split_path.h"
#include "platform/file_calls.h"
#include "platform/file_system.h"
#include "zenutl/path_functions.h"

namespace platform = zenutl::platform;
using zenutl::file::FileDescriptor;
using zenutl::file::OpenFileForReading;
using zenutl::file::ReadBlock;

namespace {

bool CreateFolderText(std::string path) {
  if (path.size() > 3 && path.back() == '\\') path.pop_back();
  struct stat info;
  if (platform::StatPath(path.c_str(), &info)) return true;
  // Not found and this short: a drive root, which a search never finds.
  if (path.size() <= 3) return true;
  const zenutl::file::PathParts parts = zenutl::file::SplitPath(path);
  const std::string parent =
      zenutl::file::MakePath(parts.drive.c_str(), parts.directory.c_str(), nullptr, nullptr);
  if (parent == path) return false;
  if (!CreateFolderText(parent)) return false;
  if (platform::MakeDirectory(path.c_str()) == 0) return true;
  // Someone else may have made it meanwhile.
  return errno == EEXIST && platform::StatPath(path.c_str(), &info) && S_ISDIR(info.st_mode);
}

// Text-mode reading as on Windows: CR LF comes out as LF, and Ctrl-Z ends the file.
class TextModeReader {
 public:
  explicit TextModeReader(int fd) : mFd(fd) {}

  // Fills up to `count` characters; fewer only at the end. -1 on a read error.
  ssize_t Read(char* out, std::size_t count) {
    std::size_t filled = 0;
    while (filled < count) {
      int ch = Next();
      if (ch == kError) return -1;
      if (ch == kEnd) break;
      if (ch == '\r') {
        const int following = Peek();
        if (following == kError) return -1;
        if (following == '\n') ch = Next();
      }
      out[filled++] = static_cast<char>(ch);
    }
    return static_cast<ssize_t>(filled);
  }

 private:
  static const int kEnd = -1;
  static const int kError = -2;
  static const int kCtrlZ = 0x1A;

  int Peek() {
    if (mPosition == mLength && !Fill()) return mFailed ? kError : kEnd;
    const int ch = static_cast<unsigned char>(mRaw[mPosition]);
    return ch == kCtrlZ ? kEnd : ch;
  }
  int Next() {
    const int ch = Peek();
    if (ch >= 0) ++mPosition;
    return ch;
  }
  bool Fill() {
    const ssize_t got = ReadBlock(mFd, mRaw, sizeof(mRaw));
    mFailed = got < 0;
    mPosition = 0;
    mLength = got > 0 ? static_cast<std::size_t>(got) : 0;
    return mLength > 0;
  }

  int mFd;
  char mRaw[4096];
  std::size_t mPosition = 0;
  std::size_t mLength = 0;
  bool mFailed = false;
};

}  // namespace

bool CreateFolder(const char* path) {
  if (!path || std::strlen(path) >= MAX_PATH) return false;
  return CreateFolderText(zenutl::file::Normalized(path));
}

bool CreateFolder(const wchar_t* path) {
  if (!path || std::wcslen(path) >= MAX_PATH) return false;
  const std::string text = zenutl::detail::WideToUtf8(path);
  return CreateFolderText(zenutl::file::Normalized(text.c_str()));
}

int FileExist(const char* path) {
  struct stat info;
  if (!platform::StatPath(path, &info)) return 0;
  return S_ISDIR(info.st_mode) ? 1 : 2;
}

_ITEMIDLIST* ZnGetIDListFromPath(const char* path) {
  struct stat info;
  if (!platform::StatPath(path, &info)) return nullptr;
  _ITEMIDLIST* item = new _ITEMIDLIST;
  item->device = static_cast<unsigned long long>(info.st_dev);
  item->inode = static_cast<unsigned long long>(info.st_ino);
  return item;
}

void ZnFreeIDList(_ITEMIDLIST* item) {
  delete item;
}

bool ZnComparePaths(const char* first, const char* second) {
  std::unique_ptr<_ITEMIDLIST, void (*)(_ITEMIDLIST*)> a(ZnGetIDListFromPath(first), &ZnFreeIDList);
  std::unique_ptr<_ITEMIDLIST, void (*)(_ITEMIDLIST*)> b(ZnGetIDListFromPath(second),
                                                         &ZnFreeIDList);
  return a && b && a->device == b->device && a->inode == b->inode;
}

CString ZnGetTempFileName(const char* folder, const char* prefix, const char* ext) {
  const std::string directory = folder ? std::string(folder) : platform::GetTempPath();
  const char* namePrefix = (prefix && *prefix) ? prefix : "tmp";
  const char* extension = (ext && *ext) ? ext : "TMP";
  std::string name;
  if (!platform::CreateUniqueTempFile(directory.c_str(), namePrefix, extension, name)) {
    return CString();
  }
  return CString(name);
}

bool ZnResolveShortcut(const char* shortcut, char* target) {
  if (!target) return false;
  target[0] = '\0';
  if (!platform::IsSymbolicLink(shortcut)) return false;
  std::string resolved;
  if (!platform::ResolvePath(shortcut, resolved) || resolved.size() >= MAX_PATH) return false;
  zenutl::file::CopyBounded(target, MAX_PATH, resolved);
  return !resolved.empty();
}

CString ZnGetCanonicalPath(const char* path) {
  if (platform::AccessPath(path, F_OK) != 0) return CString();
  // Resolving every link covers the shortcut step; Linux has no mapped drive letters.
  std::string resolved;
  if (!platform::ResolvePath(path, resolved)) return CString();
  return CString(resolved);
}

CString ZnGetLongPathName(const char* path) {
  std::string resolved;
  if (!platform::ResolvePath(path, resolved)) {
    errno = ENOENT;
    return CString();
  }
  return CString(resolved);
}

bool ZnRemoveDirectory(const char* path) {
  bool succeeded = true;
  std::vector<platform::DirectoryEntry> entries;
  if (!platform::ListDirectory(path, entries)) succeeded = false;
  for (const platform::DirectoryEntry& entry : entries) {
    const CString child = ZnPathAppend(path, entry.name.c_str());
    if (entry.isDirectory) {
      if (!ZnRemoveDirectory(child)) succeeded = false;
    } else if (platform::UnlinkPath(child) != 0) {
      succeeded = false;
    }
  }
  if (platform::RemoveDirectoryPath(path) != 0) succeeded = false;
  return succeeded;
}

bool ZnCanCreateFile(const char* path, CString* error, int* kind) {
  const int existing = FileExist(path);
  if (kind) *kind = existing;
  if (existing == 1) return false;
  const bool create = existing == 0;
  // A new file is made exclusively, so that a file appearing meanwhile is never truncated.
  const int fd = create ? platform::OpenPath(path, O_WRONLY | O_CREAT | O_EXCL, 0666)
                        : platform::OpenPath(path, O_RDWR);
  if (fd < 0) {
    if (error) *error = CString(platform::SystemErrorText(errno).substr(0, 1023));
    return false;
  }
  ::close(fd);
  if (create) platform::UnlinkPath(path);
  return true;
}

bool ZnCopyFile(const char* from, const char* to, bool failIfExists) {
  static const std::size_t kBlockSize = 32768;
  std::unique_ptr<char[]> buffer(new char[kBlockSize]);
  FileDescriptor source(OpenFileForReading(from));
  if (!source.valid()) return false;
  if (failIfExists && platform::AccessPath(to, F_OK) == 0) return false;
  if (std::strcmp(from ? from : "", to ? to : "") == 0) return !failIfExists;

  // The copy goes into the target itself ("wb"): its other links see it, its owner and
  // attributes stay, and a copy over a file of the same size needs no room for two.
  struct stat target, original;
  if (platform::StatPath(to, &target) && ::fstat(source.get(), &original) == 0) {
    // Another name of the source: opening it for writing would empty the source first.
    if (target.st_dev == original.st_dev && target.st_ino == original.st_ino) return true;
    if (platform::IsReadOnlyFile(target)) return false;
  }
  FileDescriptor copy(platform::OpenPath(to, O_WRONLY | O_CREAT | O_TRUNC, 0666));
  if (!copy.valid()) return false;
  ssize_t got;
  do {
    got = ReadBlock(source.get(), buffer.get(), kBlockSize);
    // A failure ends the copy and leaves what was written, as a short fwrite would.
    if (got < 0 || !platform::WriteAll(copy.get(), buffer.get(), static_cast<std::size_t>(got))) {
      return false;
    }
  } while (static_cast<std::size_t>(got) == kBlockSize);
  return copy.Close();
}

bool IsTextFile(const char* path, unsigned int maxBytes) {
  static const std::size_t kBlockSize = 30768;
  FileDescriptor file(OpenFileForReading(path));
  if (!file.valid()) return false;
  std::unique_ptr<char[]> buffer(new char[kBlockSize]);
  TextModeReader reader(file.get());
  unsigned long long total = 0;
  for (;;) {
    const ssize_t got = reader.Read(buffer.get(), kBlockSize);
    if (got < 0) return false;
    if (std::memchr(buffer.get(), 0, static_cast<std::size_t>(got))) return false;
    total += static_cast<unsigned long long>(got);
    if (static_cast<std::size_t>(got) < kBlockSize || total >= maxBytes) return true;
  }
}
