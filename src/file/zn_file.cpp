#include "zenutl/zn_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/filesystem/path.hpp>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include "file/file_io.h"
#include "platform/file_move.h"
#include "platform/file_system.h"
#include "platform/native_path.h"
#include "zenutl/path_functions.h"

namespace platform = zenutl::platform;

namespace ZnFile {
namespace {

const std::size_t kTextBlockSize = 30768;
const std::size_t kErrorTextLimit = 4095;

void SetError(CString* error, int errorNumber) {
  if (error) *error = CString(platform::SystemErrorText(errorNumber).substr(0, kErrorTextLimit));
}

// The folder of a path as boost::filesystem takes it on Windows, written with `/`: the
// drive root keeps its slash ("C:\a.txt" => "C:/").
std::string GenericParentPath(const std::string& path) {
  const boost::filesystem::path native(platform::ToNativePath(path));
  std::string parent = native.parent_path().string();
  if (parent.size() == 2 && parent[1] == ':' && native.string().size() > 2 &&
      native.string()[2] == '/') {
    parent += '/';
  }
  return parent;
}

std::string LastComponent(const std::string& path) {
  return boost::filesystem::path(platform::ToNativePath(path)).filename().string();
}

}  // namespace

bool FileExists(const CString& path) {
  return platform::AccessPath(path, F_OK) == 0;
}

bool Remove(const CString& path, CString* error) {
  if (!FileExists(path)) return true;
  if (platform::UnlinkPath(path) == 0) return true;
  SetError(error, errno);
  return false;
}

bool Rename(const CString& from, const CString& to, CString* error) {
  if (platform::MovePathNoReplace(from, to) == 0) return true;
  SetError(error, errno);
  return false;
}

bool IsValidFileName(const CString& name) {
  return name.FindOneOf("*\\/?<>:\"|") < 0;
}

CString GetTempFileNameA(const CString& path) {
  CString directory = ZnGetDirectory(path);
  const CString title = ZnGetFileTitle(path, nullptr);
  const CString extension = ZnGetFileExtension(path);
  CString candidate = path;
  if (directory.IsEmpty()) {
    directory = CString(platform::GetTempPath());
    candidate = ZnPathAppend(directory, path);
  }
  for (int counter = 1; FileExists(candidate) && counter < INT_MAX;) {
    ++counter;
    CString name;
    name.Format("%s%d.%s", title.GetString(), counter, extension.GetString());
    candidate = ZnPathAppend(directory, name);
  }
  return candidate;
}

CString SetFileExtension(const char* path, const char* ext) {
  CString result(path);
  const int dot = result.ReverseFind('.');
  if (dot >= 0) result = result.Left(dot);
  result.AppendFormat(".%s", ext ? ext : "");
  return result;
}

namespace {

// The two lists share their short forms: two terminators for no name, the name itself for one.
char* ShortFileNameList(const std::vector<CString>& names) {
  if (names.empty()) return new char[2]();
  char* block = new char[names[0].GetLength() + 1];
  std::memcpy(block, names[0].GetString(), names[0].GetLength() + 1);
  return block;
}

}  // namespace

char* GetFileNames(const std::vector<CString>& names) {
  if (names.size() < 2) return ShortFileNameList(names);
  std::string list = GenericParentPath(names[0].str());
  list += '\0';
  for (const CString& name : names) {
    list += LastComponent(name.str());
    list += '\0';
  }
  list += '\0';
  // The dialogs' buffers hold MAX_PATH characters for each name; longer texts get the room
  // they need.
  const std::size_t size = std::max(list.size(), names.size() * MAX_PATH);
  char* block = new char[size]();
  std::memcpy(block, list.data(), list.size());
  return block;
}

char* GetFileNames(const std::vector<CString>& names, char separator) {
  if (names.size() < 2) return ShortFileNameList(names);
  std::string list = GenericParentPath(names[0].str());
  for (const CString& name : names) {
    list += separator;
    list += LastComponent(name.str());
  }
  const std::size_t size = std::max(list.size() + 1, names.size() * MAX_PATH);
  char* block = new char[size]();
  std::memcpy(block, list.data(), list.size());
  return block;
}

void GetFileNames(const char* list, std::vector<CString>& out) {
  if (!list) return;
  struct stat info;
  if (!platform::StatPath(list, &info) || !S_ISDIR(info.st_mode)) {
    out.push_back(CString(list));
    return;
  }
  for (const char* name = list + std::strlen(list) + 1; *name; name += std::strlen(name) + 1) {
    CString path;
    path.Format("%s\\%s", list, name);
    out.push_back(path);
  }
}

void GetFileNames(const char* list, std::vector<CString>& out, char separator) {
  if (!list) return;
  const std::string text = list;
  std::size_t end = text.find(separator);
  if (end == std::string::npos) {
    out.push_back(CString(text));
    return;
  }
  const boost::filesystem::path folder(platform::ToNativePath(text.substr(0, end)));
  for (;;) {
    const std::size_t start = end + 1;
    end = text.find(separator, start);
    const std::string piece = text.substr(start, end == std::string::npos ? end : end - start);
    // Joined by the path operator and left in its native form, the form of this system.
    const boost::filesystem::path full = folder / platform::ToNativePath(piece);
    out.push_back(CString(full.string()));
    if (end == std::string::npos) break;
  }
}

bool IsTextFile(const CString& path, bool wholeFile) {
  if (!FileExists(path)) return false;
  const zenutl::file::FileDescriptor file(zenutl::file::OpenFileForReading(path));
  if (!file.valid()) return false;
  std::unique_ptr<unsigned char[]> buffer(new unsigned char[kTextBlockSize]);
  for (;;) {
    const ssize_t got = zenutl::file::ReadBlock(file.get(), buffer.get(), kTextBlockSize);
    if (got < 0 || std::memchr(buffer.get(), 0, static_cast<std::size_t>(got))) return false;
    if (!wholeFile || static_cast<std::size_t>(got) < kTextBlockSize) return true;
  }
}

ETextFileEncoding GetEncoding(const CString& path, bool checkText) {
  unsigned char mark[4] = {1, 1, 1, 1};
  if (!FileExists(path)) return eNoText;
  ssize_t got;
  {
    const zenutl::file::FileDescriptor file(zenutl::file::OpenFileForReading(path));
    if (!file.valid()) return eNoText;
    got = zenutl::file::ReadBlock(file.get(), mark, sizeof(mark));
  }
  if (got < 2) return eNoText;
  // Bytes beyond the end of a short file keep the value 1, so "FF FE" alone is UTF-16.
  if (got >= 3 && mark[0] == 0xEF) {
    if (mark[1] == 0xBB && mark[2] == 0xBF) return eUtf8;
  } else if (mark[0] == 0xFF) {
    if (mark[1] == 0xFE && mark[2] != 0) return eUtf16LE;
  } else if (mark[0] == 0xFE) {
    if (mark[1] == 0xFF) return eUtf16BE;
  }
  if (got == 4) {
    if (mark[0] == 0xFF && mark[1] == 0xFE && mark[2] == 0 && mark[3] == 0) return eUtf32LE;
    if (mark[0] == 0 && mark[1] == 0 && mark[2] == 0xFE && mark[3] == 0xFF) return eUtf32BE;
  }
  if (!checkText) return eNoText;
  return IsTextFile(path, false) ? eAnsi : eNoText;
}

}  // namespace ZnFile
