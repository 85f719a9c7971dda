#include "file/split_path.h"

#include <algorithm>
#include <cstring>

namespace zenutl {
namespace file {

PathParts SplitPath(const std::string& path) {
  PathParts parts;
  std::size_t start = 0;
  if (path.size() >= 2 && path[1] == ':') {
    parts.drive = path.substr(0, 2);
    start = 2;
  }
  const std::size_t lastSlash = path.find_last_of("\\/");
  std::size_t nameStart = start;
  if (lastSlash != std::string::npos && lastSlash >= start) {
    parts.directory = path.substr(start, lastSlash + 1 - start);
    nameStart = lastSlash + 1;
  }
  const std::size_t lastDot = path.rfind('.');
  if (lastDot != std::string::npos && lastDot >= nameStart) {
    parts.name = path.substr(nameStart, lastDot - nameStart);
    parts.extension = path.substr(lastDot);
  } else {
    parts.name = path.substr(nameStart);
  }
  return parts;
}

std::string MakePath(const char* drive, const char* dir, const char* name, const char* ext) {
  std::string path;
  if (drive && *drive) {
    path += drive[0];
    path += ':';
  }
  if (dir && *dir) {
    path += dir;
    if (path.back() != '\\' && path.back() != '/') path += '\\';
  }
  if (name) path += name;
  if (ext && *ext) {
    if (*ext != '.') path += '.';
    path += ext;
  }
  return path;
}

void CopyBounded(char* buffer, std::size_t size, const std::string& text) {
  if (!buffer || size == 0) return;
  const std::size_t length = std::min(text.size(), size - 1);
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
}

std::string Normalized(const char* path) {
  std::string text = path ? path : "";
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

}  // namespace file
}  // namespace zenutl
