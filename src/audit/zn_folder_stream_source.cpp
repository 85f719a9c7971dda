#include "zenutl/zn_folder_stream_source.h"

#include <boost/filesystem.hpp>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "platform/atomic_file.h"
#include "platform/file_times_and_sync.h"
#include "platform/native_path.h"

namespace fs = boost::filesystem;
using zenutl::platform::ToNativePath;

namespace {

// A stream name must be a relative path of non-empty components that never leaves the folder.
// A drive prefix makes a Windows path absolute, so "C:x" is refused as well.
bool IsNameInsideFolder(const std::string& nativeName) {
  if (nativeName.empty() || nativeName[0] == '/') return false;
  if (nativeName.size() >= 2 && std::isalpha(static_cast<unsigned char>(nativeName[0])) &&
      nativeName[1] == ':') {
    return false;
  }
  std::string::size_type start = 0;
  for (;;) {
    const std::string::size_type end = nativeName.find('/', start);
    const std::string part = nativeName.substr(start, end == std::string::npos ? end : end - start);
    if (part.empty() || part == "." || part == "..") return false;
    if (end == std::string::npos) return true;
    start = end + 1;
  }
}

bool IsRegularFile(const std::string& path) {
  boost::system::error_code ignored;
  return !path.empty() && fs::is_regular_file(path, ignored);
}

bool Exists(const std::string& path) {
  boost::system::error_code ignored;
  return fs::exists(fs::symlink_status(path, ignored));
}

bool IsSameFile(const std::string& a, const std::string& b) {
  boost::system::error_code ec;
  const bool same = fs::equivalent(a, b, ec);
  return !ec && same;
}

bool CreateParentFolders(const std::string& path) {
  const fs::path parent = fs::path(path).parent_path();
  if (parent.empty()) return true;
  boost::system::error_code ec;
  fs::create_directories(parent, ec);
  return !ec;
}

// Checks that a write may replace `target`: only a stream (file) may stand there, never a folder.
bool MayReplace(const std::string& target) {
  return !Exists(target) || IsRegularFile(target);
}

}  // namespace

ZnFolderStreamSource::ZnFolderStreamSource(const char* folder, bool readOnly)
    : mFolder(folder), mReadOnly(readOnly) {}

ZnFolderStreamSource::~ZnFolderStreamSource() {}

std::string ZnFolderStreamSource::NativePathOf(const char* name) const {
  if (!name) return std::string();
  const std::string relative = ToNativePath(name);
  if (!IsNameInsideFolder(relative)) return std::string();
  std::string folder = ToNativePath(mFolder.GetString());
  if (folder.empty()) return relative;
  if (folder.back() != '/') folder += '/';
  return folder + relative;
}

bool ZnFolderStreamSource::DeleteStream(const char* name) {
  if (mReadOnly) return false;
  const std::string path = NativePathOf(name);
  if (!IsRegularFile(path)) return false;
  boost::system::error_code ec;
  return fs::remove(path, ec) && !ec;
}

bool ZnFolderStreamSource::StreamExists(const char* name) const {
  return IsRegularFile(NativePathOf(name));
}

std::istream* ZnFolderStreamSource::OpenInputStream(const char* name) {
  const std::string path = NativePathOf(name);
  if (!IsRegularFile(path)) return nullptr;
  std::unique_ptr<std::ifstream> stream(new std::ifstream(path, std::ios::in | std::ios::binary));
  return stream->is_open() ? stream.release() : nullptr;
}

__int64 ZnFolderStreamSource::GetStreamSize(const char* name) const {
  const std::string path = NativePathOf(name);
  if (!IsRegularFile(path)) return -1;
  boost::system::error_code ec;
  const boost::uintmax_t size = fs::file_size(path, ec);
  return ec ? -1 : static_cast<__int64>(size);
}

bool ZnFolderStreamSource::GetStreamTime(const char* name, FILETIME& lastWritten) const {
  const std::string path = NativePathOf(name);
  return IsRegularFile(path) && zenutl::platform::GetLastWriteFileTime(path, lastWritten);
}

bool ZnFolderStreamSource::RenameStream(const char* oldName, const char* newName) {
  if (mReadOnly) return false;
  const std::string from = NativePathOf(oldName);
  const std::string to = NativePathOf(newName);
  if (!IsRegularFile(from) || to.empty() || !MayReplace(to)) return false;
  if (IsSameFile(from, to)) return true;
  if (!CreateParentFolders(to)) return false;
  boost::system::error_code ec;
  fs::rename(from, to, ec);
  return !ec;
}

// The copy replaces the target as OpenOutputStream's streams do: whole, or not at all.
bool ZnFolderStreamSource::CopyStream(const char* sourceName, const char* targetName) {
  if (mReadOnly) return false;
  const std::string from = NativePathOf(sourceName);
  const std::string to = NativePathOf(targetName);
  if (!IsRegularFile(from) || to.empty() || !MayReplace(to)) return false;
  if (IsSameFile(from, to)) return true;
  if (!CreateParentFolders(to)) return false;
  std::ifstream in(from, std::ios::in | std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  if (!in || !content) return false;
  return zenutl::platform::WriteFileAtomically(to, content.str(), nullptr);
}

bool ZnFolderStreamSource::ListStreams(std::vector<CString>& names) const {
  std::string root = ToNativePath(mFolder.GetString());
  if (root.empty()) root = ".";
  boost::system::error_code ec;
  const fs::file_status rootStatus = fs::status(root, ec);
  if (!fs::exists(rootStatus)) {
    // No folder yet is an empty store; a folder that can't be examined is a failure.
    if (ec && ec != boost::system::errc::no_such_file_or_directory) return false;
    names.clear();
    return true;
  }
  if (!fs::is_directory(rootStatus)) return false;

  std::vector<CString> found;
  fs::recursive_directory_iterator entry(root, ec);
  for (; !ec && entry != fs::recursive_directory_iterator(); entry.increment(ec)) {
    boost::system::error_code statusError;
    if (!fs::is_regular_file(entry->status(statusError))) continue;
    // A writer's temporary is no stream, whether it is still being written or was abandoned.
    if (zenutl::platform::IsTemporaryName(entry->path().filename().string())) continue;
    std::string relative = entry->path().string().substr(root.size());
    if (!relative.empty() && relative[0] == '/') relative.erase(0, 1);
    found.push_back(CString(zenutl::platform::FromNativePath(relative)));
  }
  if (ec) return false;
  std::sort(found.begin(), found.end());
  names.swap(found);
  return true;
}

std::ostream* ZnFolderStreamSource::OpenOutputStream(const char* name) {
  return OpenWriting(name, false);
}

std::ostream* ZnFolderStreamSource::OpenAppendStream(const char* name) {
  return OpenWriting(name, true);
}

std::ostream* ZnFolderStreamSource::OpenWriting(const char* name, bool append) {
  if (mReadOnly) return nullptr;
  const std::string path = NativePathOf(name);
  if (path.empty() || !MayReplace(path) || !CreateParentFolders(path)) return nullptr;
  // A new stream's text replaces the file as a whole when the stream is flushed or deleted, so
  // a write that fails part-way never leaves a truncated stream behind.
  if (!append) return new zenutl::platform::ReplacingFileStream(path);
  std::unique_ptr<std::ofstream> stream(
      new std::ofstream(path, std::ios::out | std::ios::binary | std::ios::app));
  return stream->is_open() ? stream.release() : nullptr;
}

bool ZnFolderStreamSource::Flush() {
  std::string root = ToNativePath(mFolder.GetString());
  if (root.empty()) root = ".";
  if (!Exists(root)) return true;
  return zenutl::platform::SyncFileSystemHolding(root);
}
