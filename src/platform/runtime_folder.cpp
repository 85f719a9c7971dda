#include "platform/runtime_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace zenutl {
namespace platform {
namespace {

// A folder, not a link, that belongs to this user and to nobody else.
bool IsPrivateFolder(const std::string& path) {
  struct stat status;
  return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == ::geteuid() && (status.st_mode & 077) == 0;
}

bool MakePrivateFolder(const std::string& path, std::string* error) {
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    *error = "can not create the folder " + path + ": " + std::strerror(errno);
    return false;
  }
  if (!IsPrivateFolder(path)) {
    *error = path + " is not a folder of this user closed to others";
    return false;
  }
  return true;
}

}  // namespace

bool LibraryRuntimeFolder(std::string* folder, std::string* error) {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && runtime[0] == '/' && IsPrivateFolder(runtime)) {
    *folder = std::string(runtime) + "/zenutl";
  } else {
    *folder = "/tmp/zenutl-" + std::to_string(::geteuid());
  }
  return MakePrivateFolder(*folder, error);
}

}  // namespace platform
}  // namespace zenutl
