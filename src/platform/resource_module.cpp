#include "zenutl/resource_module.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "language/resource_catalogue.h"
#include "platform/file_bytes.h"
#include "platform/native_path.h"

namespace {

const ZnModule& ModuleOrBuiltIn(HINSTANCE module) {
  return module != nullptr ? *module : zenutl::language::BuiltInCatalogue();
}

std::string FolderOf(const std::string& nativePath) {
  const std::string::size_type slash = nativePath.rfind('/');
  if (slash == std::string::npos) return std::string();
  return slash == 0 ? std::string("/") : nativePath.substr(0, slash);
}

}  // namespace

// Stands for LoadLibraryEx of a resource-only module: the module is a catalogue file.
HINSTANCE ZnLoadResourceModule(const char* path, CString* error) {
  std::string reason;
  std::unique_ptr<ZnModule> module;
  if (path == nullptr || *path == 0) {
    reason = "no catalogue file named";
  } else {
    const std::string native = zenutl::platform::ToNativePath(path);
    std::string content;
    std::string why;
    if (!zenutl::platform::ReadFileBytes(native, content, why)) {
      reason = "can not read catalogue '" + std::string(path) + "': " + why;
    } else {
      module.reset(new ZnModule);
      if (!zenutl::language::ParseCatalogue(content, FolderOf(native), path, *module, reason)) {
        module.reset();
      }
    }
  }
  if (error != nullptr) *error = reason.c_str();
  return module.release();
}

// Stands for FreeLibrary.
void ZnFreeResourceModule(HINSTANCE module) {
  delete module;
}

// Stands for LoadStringA: a cut copy into the caller's buffer, "" for an unknown number.
int ZnLoadString(HINSTANCE module, unsigned int id, char* buffer, int bufferSize) {
  if (buffer == nullptr || bufferSize < 1) return 0;
  const ZnModule& catalogue = ModuleOrBuiltIn(module);
  const auto found = catalogue.strings.find(id);
  if (found == catalogue.strings.end()) {
    buffer[0] = 0;
    return 0;
  }
  const std::size_t length =
      std::min(found->second.size(), static_cast<std::size_t>(bufferSize - 1));
  std::memcpy(buffer, found->second.data(), length);
  buffer[length] = 0;
  return static_cast<int>(length);
}

// Stands for FindResource, SizeofResource, LoadResource and LockResource in one.
bool ZnGetResource(HINSTANCE module, unsigned int id, unsigned int type, std::string& bytes) {
  const ZnModule& catalogue = ModuleOrBuiltIn(module);
  const auto found = catalogue.resources.find(std::make_pair(type, id));
  if (found == catalogue.resources.end()) {
    bytes.clear();
    return false;
  }
  bytes = found->second;
  return true;
}
