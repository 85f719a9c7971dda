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
#include <set>
#include <vector>

#include "platform/atomic_file.h"
#include "platform/file_times_and_sync.h"
#include "platform/ini_document.h"
#include "platform/native_path.h"
#include "zenutl/cstring.h"

namespace zenutl {
namespace platform {
namespace {

thread_local std::string tLastError;

// How many files the cache holds at most; the least recently used one is dropped.
const std::size_t kMaxCachedFiles = 32;

long long Nanoseconds(const struct timespec& time) {
  return static_cast<long long>(time.tv_sec) * 1000000000LL + time.tv_nsec;
}

long long Now() {
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  return Nanoseconds(now);
}

// How long after a file's last change its status can't yet vouch for its content. The kernel
// stamps a change with a clock that may lag a scheduler tick behind, and the file system may cut
// the stamp to its own granularity, so a second change within that span can leave the status as
// it was. A change time with sub-millisecond digits comes from a file system that keeps them;
// one without may have been rounded to a second or two.
long long SettleNanoseconds(const struct timespec& changed) {
  return changed.tv_nsec % 1000000 != 0 ? 50LL * 1000 * 1000 : 3LL * 1000 * 1000 * 1000;
}

// What tells one version of a file from another without reading it, once it has settled.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  long long modified = 0;  // nanoseconds
  long long changed = 0;   // nanoseconds

  FileIdentity() = default;
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

// A file's content as this process last saw it, and its parse.
struct CacheEntry {
  FileIdentity identity;  // the file's status when the content was last read from it
  bool vouched = false;   // whether that status alone proves the content
  std::string bytes;
  std::shared_ptr<const IniDocument> document;
  unsigned long long lastUsed = 0;
};

// Parses of recently used files. A status (inode, size, times) is not proof of content: a freed
// inode number comes back for a newer version of the same size, and a coarse clock gives two
// versions the same times. So content is taken from the cache on its status alone only when the
// file had settled before the content was read: its change time lay further back than the span
// in which a later change could carry the same stamp (SettleNanoseconds). Any later change, in
// place or by a new file under a reused number, is stamped later than that. Otherwise the file is
// read, and only its parse is reused when the bytes are the same.
class DocumentCache {
 public:
  // The cached document of the file whose status is `info`, if the status vouches for it.
  std::shared_ptr<const IniDocument> Find(const std::string& path, const struct stat& info) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = entries_.find(path);
    if (found == entries_.end()) return nullptr;
    CacheEntry& entry = found->second;
    if (!entry.vouched || !(entry.identity == FileIdentity(info))) return nullptr;
    entry.lastUsed = ++clock_;
    return entry.document;
  }

  // The document of `bytes`, just read from the file whose status `info` was taken after
  // `readAt`: the cached parse when the bytes are the same, a new one otherwise.
  std::shared_ptr<const IniDocument> Confirm(const std::string& path, const struct stat& info,
                                             long long readAt, std::string bytes) {
    std::shared_ptr<const IniDocument> document = SameParse(path, bytes);
    if (!document) document = std::make_shared<const IniDocument>(bytes);
    CacheEntry entry;
    entry.identity = FileIdentity(info);
    entry.vouched = readAt - entry.identity.changed > SettleNanoseconds(info.st_ctim);
    entry.bytes = std::move(bytes);
    entry.document = document;
    Put(path, std::move(entry));
    return document;
  }

  // What this process has just written to the file; the next read confirms it against the file.
  void Remember(const std::string& path, std::string bytes,
                std::shared_ptr<const IniDocument> document) {
    CacheEntry entry;
    entry.bytes = std::move(bytes);
    entry.document = std::move(document);
    Put(path, std::move(entry));
  }

  void Forget(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.erase(path);
  }

 private:
  std::shared_ptr<const IniDocument> SameParse(const std::string& path, const std::string& bytes) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = entries_.find(path);
    if (found == entries_.end() || found->second.bytes != bytes) return nullptr;
    return found->second.document;
  }

  void Put(const std::string& path, CacheEntry entry) {
    std::lock_guard<std::mutex> lock(mutex_);
    entry.lastUsed = ++clock_;
    auto found = entries_.find(path);
    if (found != entries_.end()) {
      found->second = std::move(entry);
      return;
    }
    if (entries_.size() >= kMaxCachedFiles) {
      entries_.erase(std::min_element(entries_.begin(), entries_.end(),
                                      [](const std::pair<const std::string, CacheEntry>& a,
                                         const std::pair<const std::string, CacheEntry>& b) {
                                        return a.second.lastUsed < b.second.lastUsed;
                                      }));
    }
    entries_.emplace(path, std::move(entry));
  }

  std::mutex mutex_;
  unsigned long long clock_ = 0;
  std::map<std::string, CacheEntry> entries_;
};

DocumentCache& Cache() {
  static DocumentCache* cache = new DocumentCache();  // lives to the end of the process
  return *cache;
}

// The files this process has replaced since it last made them durable.
class UnsyncedFiles {
 public:
  void Add(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    paths_.insert(path);
  }
  // Whether `path` was in the set; it isn't any more.
  bool Take(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    return paths_.erase(path) != 0;
  }

 private:
  std::mutex mutex_;
  std::set<std::string> paths_;
};

UnsyncedFiles& Unsynced() {
  static UnsyncedFiles* files = new UnsyncedFiles();  // lives to the end of the process
  return *files;
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

// The document of an open file, read from it; only the parse may come from the cache.
std::shared_ptr<const IniDocument> ReadDocument(const std::string& path, int fd) {
  const long long readAt = Now();
  struct stat info;
  if (::fstat(fd, &info) != 0) return nullptr;
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(info.st_size));
  if (!ReadDescriptor(fd, bytes)) return nullptr;
  return Cache().Confirm(path, info, readAt, std::move(bytes));
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
  std::shared_ptr<const IniDocument> document = ReadDocument(path, fd);
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
      fd_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
      if (fd_ < 0 && create && errno == ENOENT) {
        fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd_ < 0 && errno == EEXIST) continue;  // created by another writer meanwhile
        created_ = fd_ >= 0;
      }
      if (fd_ < 0) return false;
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

// Read-modify-write of the file at `path` under the writers' lock. `added` is the text that the
// edit brings into the file, which its encoding must be able to carry. `edit` answers whether it
// changed the document; an unchanged document isn't written. The replacement survives the
// process but is made durable only by the flush call (FlushFile).
BOOL ModifyFile(const std::string& path, bool create, const std::string& added,
                const std::function<bool(IniDocument&)>& edit) {
  FileWriteLock lock;
  if (!lock.Acquire(path, create)) {
    const int error = errno;
    if (!create && error == ENOENT) return 1;  // nothing there to remove
    return Fail(error, "cannot open '" + path + "' for writing: " + std::strerror(error));
  }
  // Under the lock the file itself is read, whatever the cache holds: a status that matches an
  // older version would make this write drop what others wrote since.
  const std::shared_ptr<const IniDocument> current = ReadDocument(path, lock.fd());
  if (!current) {
    const int error = errno;
    return Fail(error, "cannot read '" + path + "': " + std::strerror(error));
  }
  if (!current->CanHold(added)) {
    return Fail(EILSEQ, "'" + path + "' is a UTF-16 file, which can only hold UTF-8 text");
  }
  auto edited = std::make_shared<IniDocument>(*current);
  if (!edit(*edited)) {
    if (lock.created()) ::unlink(path.c_str());
    return 1;
  }
  if (!edited->ReadsBackAsItself()) {
    return Fail(EILSEQ, "the edit would make '" + path + "' begin as a UTF-16 file does");
  }
  std::string bytes = edited->Serialize();
  std::string error;
  if (!WriteFileAtomically(path, bytes, &error, nullptr, Durability::kProcessCrash)) {
    const int code = errno;
    if (lock.created()) ::unlink(path.c_str());
    return Fail(code, error);
  }
  Unsynced().Add(path);
  Cache().Remember(path, std::move(bytes), std::move(edited));
  return 1;
}

// The flush call: makes what this process wrote to the file durable against a power loss.
BOOL FlushFile(const std::string& path) {
  if (!Unsynced().Take(path)) return 1;
  std::string error;
  if (!SyncFileAndFolder(path, &error)) {
    const int code = errno;
    Unsynced().Add(path);
    return Fail(code, error);
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

// `list` holds names each followed by a zero; the buffer gets them and one more zero. A list that
// doesn't fit is cut, ends in two zeros, and answers size - 2, which is how callers learn to
// offer a larger buffer.
template <typename CharT>
DWORD CopyList(const std::basic_string<CharT>& list, CharT* buffer, DWORD size) {
  if (buffer == nullptr || size == 0) return 0;
  if (size == 1) {
    buffer[0] = CharT();
    return 0;
  }
  if (list.size() < size) {
    std::copy(list.begin(), list.end(), buffer);
    buffer[list.size()] = CharT();
    if (list.empty()) buffer[1] = CharT();
    return static_cast<DWORD>(list.size());
  }
  std::copy(list.begin(), list.begin() + (size - 2), buffer);
  buffer[size - 2] = CharT();
  buffer[size - 1] = CharT();
  return size - 2;
}

// What a read asks for, in UTF-8, and the answer before it is fitted into the caller's buffer:
// a value, or a list of names each followed by a zero.
struct ReadAnswer {
  const std::string& Text() const { return found != nullptr ? *found : fallback; }

  bool isList = false;
  std::shared_ptr<const IniDocument> document;  // holds what `found` points to
  const std::string* found = nullptr;           // the value or list, when there is one
  std::string fallback;                         // the default, when the key is absent
};

ReadAnswer ReadProfile(const char* section, const char* key, const char* defaultValue,
                       const char* file) {
  ReadAnswer answer;
  answer.document = file != nullptr ? LoadDocument(ToNativePath(file)) : EmptyDocument();
  answer.isList = section == nullptr || key == nullptr;
  if (section == nullptr) {
    answer.found = &answer.document->SectionNameList();
  } else if (key == nullptr) {
    answer.found = &answer.document->KeyNameList(section);
  } else {
    answer.found = answer.document->FindValue(section, key);
  }
  if (answer.found == nullptr) {
    // Trailing blanks of the default are dropped, as the Windows call does.
    answer.fallback = defaultValue != nullptr ? defaultValue : "";
    answer.fallback.erase(answer.fallback.find_last_not_of(" \t") + 1);
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
    return FlushFile(path);
  }
  const std::string sectionName = section;
  if (!IniDocument::IsWritableSection(sectionName)) {
    return Fail(EINVAL, "section name '" + sectionName + "' can't be stored in an INI file");
  }
  if (key == nullptr) {
    return ModifyFile(path, false, "",
                      [&](IniDocument& document) { return document.RemoveSection(sectionName); });
  }
  const std::string keyName = key;
  if (!IniDocument::IsWritableKey(keyName)) {
    return Fail(EINVAL, "key name '" + keyName + "' can't be stored in an INI file");
  }
  if (value == nullptr) {
    return ModifyFile(path, false, "", [&](IniDocument& document) {
      return document.RemoveKey(sectionName, keyName);
    });
  }
  const std::string text = value;
  if (!IniDocument::IsWritableValue(text)) {
    return Fail(EINVAL, "the value of '" + keyName +
                            "' has a line break, which an INI file "
                            "can't hold");
  }
  return ModifyFile(path, true, sectionName + keyName + text, [&](IniDocument& document) {
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
  return answer.isList ? CopyList(answer.Text(), buffer, size)
                       : CopyText(answer.Text(), buffer, size);
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
  const std::wstring wide = detail::Utf8ToWide(answer.Text());
  return answer.isList ? CopyList(wide, buffer, size) : CopyText(wide, buffer, size);
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
