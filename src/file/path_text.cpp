// The text functions of path_functions.h: string logic only, no file system.
#include <strings.h>

#include "file/split_path.h"
#include "zenutl/path_functions.h"

using zenutl::file::CopyBounded;
using zenutl::file::Normalized;

void ZnSplitPath(const char* path, char* drive, char* dir, char* name, char* ext) {
  const zenutl::file::PathParts parts = zenutl::file::SplitPath(Normalized(path));
  CopyBounded(drive, ZN_MAX_DRIVE, parts.drive);
  CopyBounded(dir, ZN_MAX_DIR, parts.directory);
  CopyBounded(name, ZN_MAX_FNAME, parts.name);
  CopyBounded(ext, ZN_MAX_EXT, parts.extension);
}

void ZnMakePath(char* path, const char* drive, const char* dir, const char* name, const char* ext) {
  const std::string made = zenutl::file::MakePath(drive, dir, name, ext);
  CopyBounded(path, MAX_PATH, Normalized(made.c_str()));
}

std::string ZnPathAppend(std::string path, std::string more) {
  path = Normalized(path.c_str());
  more = Normalized(more.c_str());
  if (!path.empty() && path.back() != '\\' && (more.empty() || more[0] != '\\')) path += '\\';
  return path + more;
}

CString ZnPathAppend(const char* path, const char* more) {
  return CString(ZnPathAppend(std::string(path ? path : ""), std::string(more ? more : "")));
}

CString ZnGetDirectory(const char* path) {
  const std::string text = Normalized(path);
  const std::size_t slash = text.rfind('\\');
  if (slash == std::string::npos || slash < 2) return CString();
  if (slash == 2) return CString(text.substr(0, 3));
  return CString(text.substr(0, slash));
}

CString ZnGetFileName(const char* path) {
  const std::string text = Normalized(path);
  const std::size_t slash = text.rfind('\\');
  return CString(slash == std::string::npos ? text : text.substr(slash + 1));
}

CString ZnGetFileTitle(const char* path, const char* ext) {
  const std::string name = ZnGetFileName(path).str();
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos) return CString(name);
  if (ext && ::strcasecmp(name.c_str() + dot + 1, ext) != 0) return CString(name);
  return CString(name.substr(0, dot));
}

CString ZnGetFileExtension(const char* path) {
  const std::string text = Normalized(path);
  const std::size_t dot = text.rfind('.');
  return CString(dot == std::string::npos ? std::string() : text.substr(dot + 1));
}
