#include "platform/profile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/atomic_file.h"
#include "platform/ini_document.h"
#include "platform/native_path.h"
#include "zenutl/cstring.h"

namespace zenutl {
namespace platform {
namespace {

thread_local std::string tLastError;

// How long after its last change a file's timestamp can't yet vouch for its content: two
// in-place edits within one tick of the file system's coarse clock may leave size and time alike.
const long long kSettleNanoseconds = 50LL * 1000 * 1000;
// How many files the cache holds at most; the least recently read one is dropped.
const std::size_t kMaxCachedFiles = 32;

long long Nanoseconds(const struct timespec& time) {
  return static_cast<long long>(time.tv_sec) * 1000000000LL + time.tv_nsec;
}

long long Now() {
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  return Nanoseconds(now);
}

// What tells one version of a file from another without reading it.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  long long modified = 0;  // nanoseconds
  long long changed = 0;   // nanoseconds

  explicit FileIdentity(const struct stat& info)
      : device(info.st_dev),
        inode(info.st_ino),
        size(info.st_size),
        modified(Nanoseconds(info.st_mtim)),
        changed(Nanoseconds(info.st_ctim)) {}
  bool operator==(const FileIdentity& other) const {
    return device == other.device && inode == other.inode && size == other.size &&
           modified == other.modified && changed == other.changed;
  }
};

struct CacheEntry {
  FileIdentity identity;
  long long readAt;  // when the content was taken from the file
  bool ownWrite;     // the content is what this process wrote, under the lock
  std::string bytes;
  std::shared_ptr<const IniDocument> document;
};

class DocumentCache {
 public:
  // The cached document if it still stands for the file described by `info`.
  std::shared_ptr<const IniDocument> Find(const std::string& path, const struct stat& info) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = entries_.find(path);
    if (found == entries_.end()) return nullptr;
    const CacheEntry& entry = found->second;
    if (!(entry.identity == FileIdentity(info))) return nullptr;
    if (!entry.ownWrite && entry.readAt - entry.identity.modified <= kSettleNanoseconds) {
      return nullptr;  // too fresh to trust the timestamp: the caller re-reads
    }
    return entry.document;
  }

  // The document for `bytes`, parsed again only if they differ from the cached ones.
  std::shared_ptr<const IniDocument> Store(const std::string& path, const struct stat& info,
                                           long long readAt, std::string bytes, bool ownWrite,
                                           std::shared_ptr<const IniDocument> document) {
    if (!document) {
      {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto found = entries_.find(path);
        if (found != entries_.end() && found->second.bytes == bytes) {
          document = found->second.document;
        }
      }
      if (!document) document = std::make_shared<const IniDocument>(bytes);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (entries_.size() >= kMaxCachedFiles && entries_.find(path) == entries_.end()) {
      DropOldest();
    }
    CacheEntry entry{FileIdentity(info), readAt, ownWrite, std::move(bytes), document};
    auto found = entries_.find(path);
    if (found == entries_.end()) {
      entries_.emplace(path, std::move(entry));
    } else {
      found->second = std::move(entry);
    }
    return document;
  }

  void Forget(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.erase(path);
  }

 private:
  void DropOldest() {
    auto oldest = entries_.begin();
    for (auto it = entries_.begin(); it != entries_.end(); ++it) {
      if (it->second.readAt < oldest->second.readAt) oldest = it;
    }
    if (oldest != entries_.end()) entries_.erase(oldest);
  }

  std::mutex mutex_;
  std::map<std::string, CacheEntry> entries_;
};

DocumentCache& Cache() {
  static DocumentCache* cache = new DocumentCache();  // lives to the end of the process
  return *cache;
}

std::shared_ptr<const IniDocument> EmptyDocument() {
  static const std::shared_ptr<const IniDocument> empty = std::make_shared<const IniDocument>();
  return empty;
}

bool ReadDescriptor(int fd, std::string& bytes) {
  bytes.clear();
  char chunk[65536];
  for (;;) {
    const ssize_t got = ::read(fd, chunk, sizeof(chunk));
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (got == 0) return true;
    bytes.append(chunk, static_cast<std::size_t>(got));
  }
}

// The current document of an open file, from the cache when it still stands for it.
std::shared_ptr<const IniDocument> DocumentOfDescriptor(const std::string& path, int fd) {
  const long long readAt = Now();
  struct stat info;
  if (::fstat(fd, &info) != 0) return nullptr;
  if (auto cached = Cache().Find(path, info)) return cached;
  std::string bytes;
  if (!ReadDescriptor(fd, bytes)) return nullptr;
  return Cache().Store(path, info, readAt, std::move(bytes), false, nullptr);
}

// The document at `path` for a read; a missing or unreadable file is empty.
std::shared_ptr<const IniDocument> LoadDocument(const std::string& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
    Cache().Forget(path);
    return EmptyDocument();
  }
  if (auto cached = Cache().Find(path, info)) return cached;
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return EmptyDocument();
  std::shared_ptr<const IniDocument> document = DocumentOfDescriptor(path, fd);
  ::close(fd);
  return document ? document : EmptyDocument();
}

BOOL Fail(int error, const std::string& text) {
  tLastError = text.empty() ? std::strerror(error) : text;
  errno = error;
  return 0;
}

// An exclusive advisory lock on the file at a path, held while the path still names that file.
// Writers replace the file by renaming, so a lock taken on a file that was replaced meanwhile
// guards nothing: it is dropped and taken again on the new file.
class FileWriteLock {
 public:
  ~FileWriteLock() {
    if (fd_ >= 0) ::close(fd_);  // closing releases the lock
  }

  // Opens (creating it if `create`) and locks. False with errno set on failure.
  bool Acquire(const std::string& path, bool create) {
    for (int attempt = 0; attempt < 1000; ++attempt) {
      created_ = false;
      bool existed = !create;
      fd_ = create ? ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666) : -1;
      if (fd_ >= 0) {
        created_ = true;
      } else if (!create || errno == EEXIST) {
        existed = true;
        fd_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
      }
      if (fd_ < 0) {
        if (create && existed && errno == ENOENT) continue;  // removed between the two opens
        return false;
      }
      while (::flock(fd_, LOCK_EX) != 0) {
        if (errno != EINTR) return Release(false);
      }
      struct stat locked;
      struct stat current;
      if (::fstat(fd_, &locked) == 0 && ::stat(path.c_str(), &current) == 0 &&
          locked.st_dev == current.st_dev && locked.st_ino == current.st_ino) {
        return true;
      }
      Release(false);
      if (!create && ::access(path.c_str(), F_OK) != 0) {
        errno = ENOENT;
        return false;
      }
    }
    errno = EAGAIN;
    return false;
  }

  int fd() const { return fd_; }
  bool created() const { return created_; }

 private:
  bool Release(bool result) {
    const int saved = errno;
    ::close(fd_);
    fd_ = -1;
    errno = saved;
    return result;
  }

  int fd_ = -1;
  bool created_ = false;
};

// Read-modify-write of the file at `path` under the writers' lock. `edit` answers whether it
// changed the document; an unchanged document isn't written.
BOOL ModifyFile(const std::string& path, bool create,
                const std::function<bool(IniDocument&)>& edit) {
  FileWriteLock lock;
  if (!lock.Acquire(path, create)) {
    const int error = errno;
    if (!create && error == ENOENT) return 1;  // nothing there to remove
    return Fail(error, "cannot open '" + path + "' for writing: " + std::strerror(error));
  }
  std::shared_ptr<const IniDocument> current = DocumentOfDescriptor(path, lock.fd());
  if (!current) {
    const int error = errno;
    return Fail(error, "cannot read '" + path + "': " + std::strerror(error));
  }
  IniDocument edited = *current;
  if (!edit(edited)) {
    if (lock.created()) ::unlink(path.c_str());
    return 1;
  }
  std::string bytes = edited.Serialize();
  std::string error;
  struct stat replacement;
  if (!WriteFileAtomically(path, bytes, &error, &replacement)) {
    const int code = errno;
    if (lock.created()) ::unlink(path.c_str());
    return Fail(code, error);
  }
  // Only the lock's old file is still locked: a writer that came after the rename may already
  // have replaced the new one, so the cache learns our bytes only if the path still names them.
  struct stat written;
  if (::stat(path.c_str(), &written) == 0 && written.st_dev == replacement.st_dev &&
      written.st_ino == replacement.st_ino) {
    Cache().Store(path, written, Now(), std::move(bytes), true,
                  std::make_shared<const IniDocument>(std::move(edited)));
  } else {
    Cache().Forget(path);
  }
  return 1;
}

template <typename CharT>
DWORD CopyText(const std::basic_string<CharT>& text, CharT* buffer, DWORD size) {
  if (buffer == nullptr || size == 0) return 0;
  const std::size_t count = std::min<std::size_t>(text.size(), size - 1);
  std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(count), buffer);
  buffer[count] = CharT();
  return static_cast<DWORD>(count);
}

// Names each followed by a zero, then one more zero. A list that doesn't fit is cut, ends in
// two zeros, and answers size - 2, which is how callers learn to offer a larger buffer.
template <typename CharT>
DWORD CopyList(const std::vector<std::basic_string<CharT> >& names, CharT* buffer, DWORD size) {
  if (buffer == nullptr || size == 0) return 0;
  if (size == 1) {
    buffer[0] = CharT();
    return 0;
  }
  std::size_t position = 0;
  for (const std::basic_string<CharT>& name : names) {
    if (position + name.size() + 1 > size - 1) {
      const std::size_t room = size - 2 > position ? size - 2 - position : 0;
      std::copy(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(room), buffer + position);
      buffer[size - 2] = CharT();
      buffer[size - 1] = CharT();
      return size - 2;
    }
    std::copy(name.begin(), name.end(), buffer + position);
    position += name.size();
    buffer[position++] = CharT();
  }
  buffer[position] = CharT();
  if (position == 0) buffer[1] = CharT();
  return static_cast<DWORD>(position);
}

// What a read asks for, in UTF-8, and the answer before it is fitted into the caller's buffer.
struct ReadAnswer {
  bool isList = false;
  std::vector<std::string> names;
  std::string text;
};

ReadAnswer ReadProfile(const char* section, const char* key, const char* defaultValue,
                       const char* file) {
  ReadAnswer answer;
  const std::shared_ptr<const IniDocument> document =
      file != nullptr ? LoadDocument(ToNativePath(file)) : EmptyDocument();
  if (section == nullptr) {
    answer.isList = true;
    answer.names = document->SectionNames();
  } else if (key == nullptr) {
    answer.isList = true;
    answer.names = document->KeyNames(section);
  } else if (const std::string* value = document->FindValue(section, key)) {
    answer.text = *value;
  } else {
    // Trailing blanks of the default are dropped, as the Windows call does.
    answer.text = defaultValue != nullptr ? defaultValue : "";
    answer.text.erase(answer.text.find_last_not_of(" \t") + 1);
  }
  return answer;
}

BOOL WriteProfile(const char* section, const char* key, const char* value, const char* file) {
  if (file == nullptr || *file == '\0') return Fail(EINVAL, "no file name given");
  const std::string path = ToNativePath(file);
  if (section == nullptr) {
    if (key != nullptr || value != nullptr) {
      return Fail(EINVAL, "a key or value was given without a section");
    }
    // The flush: every write is on the disk when it returns, and the cache is checked against
    // the file on every read, so there is nothing to write out and nothing to drop.
    return 1;
  }
  const std::string sectionName = section;
  if (!IniDocument::IsWritableSection(sectionName)) {
    return Fail(EINVAL, "section name '" + sectionName + "' can't be stored in an INI file");
  }
  if (key == nullptr) {
    return ModifyFile(path, false,
                      [&](IniDocument& document) { return document.RemoveSection(sectionName); });
  }
  const std::string keyName = key;
  if (!IniDocument::IsWritableKey(keyName)) {
    return Fail(EINVAL, "key name '" + keyName + "' can't be stored in an INI file");
  }
  if (value == nullptr) {
    return ModifyFile(path, false, [&](IniDocument& document) {
      return document.RemoveKey(sectionName, keyName);
    });
  }
  const std::string text = value;
  if (!IniDocument::IsWritableValue(text)) {
    return Fail(EINVAL, "the value of '" + keyName +
                            "' has a line break, which an INI file "
                            "can't hold");
  }
  return ModifyFile(path, true, [&](IniDocument& document) {
    return document.SetValue(sectionName, keyName, text);
  });
}

// Wide arguments as UTF-8, keeping null as null.
class Utf8Argument {
 public:
  explicit Utf8Argument(const wchar_t* text)
      : present_(text != nullptr), text_(text ? detail::WideToUtf8(text) : std::string()) {}
  const char* get() const { return present_ ? text_.c_str() : nullptr; }

 private:
  bool present_;
  std::string text_;
};

}  // namespace

DWORD GetPrivateProfileStringA(const char* section, const char* key, const char* defaultValue,
                               char* buffer, DWORD size, const char* file) {
  const ReadAnswer answer = ReadProfile(section, key, defaultValue, file);
  return answer.isList ? CopyList(answer.names, buffer, size) : CopyText(answer.text, buffer, size);
}

DWORD GetPrivateProfileStringW(const wchar_t* section, const wchar_t* key,
                               const wchar_t* defaultValue, wchar_t* buffer, DWORD size,
                               const wchar_t* file) {
  const Utf8Argument narrowSection(section);
  const Utf8Argument narrowKey(key);
  const Utf8Argument narrowDefault(defaultValue);
  const Utf8Argument narrowFile(file);
  const ReadAnswer answer =
      ReadProfile(narrowSection.get(), narrowKey.get(), narrowDefault.get(), narrowFile.get());
  if (!answer.isList) return CopyText(detail::Utf8ToWide(answer.text), buffer, size);
  std::vector<std::wstring> names;
  for (const std::string& name : answer.names) names.push_back(detail::Utf8ToWide(name));
  return CopyList(names, buffer, size);
}

DWORD GetPrivateProfileSectionNamesA(char* buffer, DWORD size, const char* file) {
  return GetPrivateProfileStringA(nullptr, nullptr, nullptr, buffer, size, file);
}

BOOL WritePrivateProfileStringA(const char* section, const char* key, const char* value,
                                const char* file) {
  return WriteProfile(section, key, value, file);
}

BOOL WritePrivateProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* value,
                                const wchar_t* file) {
  const Utf8Argument narrowSection(section);
  const Utf8Argument narrowKey(key);
  const Utf8Argument narrowValue(value);
  const Utf8Argument narrowFile(file);
  return WriteProfile(narrowSection.get(), narrowKey.get(), narrowValue.get(), narrowFile.get());
}

std::string LastProfileError() {
  return tLastError;
}

}  // namespace platform
}  // namespace zenutl
