#include "platform/file_version.h"

#include <stdlib.h>

#include <map>
#include <mutex>
#include <utility>

namespace zenutl {
namespace platform {
namespace {

std::mutex gVersionsMutex;
std::map<std::string, std::pair<DWORD, DWORD>>& Versions() {
  static std::map<std::string, std::pair<DWORD, DWORD>> versions;
  return versions;
}

// One spelling per file, so that "./app" and "/opt/app" find the same record.
std::string CanonicalPath(const std::string& path) {
  char* resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return path;
  std::string canonical = resolved;
  free(resolved);
  return canonical;
}

}  // namespace

void SetFileVersion(const std::string& path, DWORD versionMS, DWORD versionLS) {
  const std::string key = CanonicalPath(path);
  std::lock_guard<std::mutex> lock(gVersionsMutex);
  Versions()[key] = std::make_pair(versionMS, versionLS);
}

bool GetFileVersion(const std::string& path, DWORD* versionMS, DWORD* versionLS) {
  const std::string key = CanonicalPath(path);
  std::lock_guard<std::mutex> lock(gVersionsMutex);
  const auto found = Versions().find(key);
  if (found == Versions().end()) return false;
  *versionMS = found->second.first;
  *versionLS = found->second.second;
  return true;
}

}  // namespace platform
}  // namespace zenutl
