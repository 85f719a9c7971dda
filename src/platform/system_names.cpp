#include "platform/system_names.h"

#include <netdb.h>
#include <pwd.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

namespace zenutl {
namespace platform {
namespace {

bool CopyName(const std::string& name, char* buffer, DWORD* size) {
  if (buffer == nullptr || size == nullptr || name.size() + 1 > *size) return false;
  std::memcpy(buffer, name.c_str(), name.size() + 1);
  *size = static_cast<DWORD>(name.size());
  return true;
}

// The passwd entry of the effective user, copied out of the reentrant call's scratch buffer.
bool EffectiveUserEntry(std::string* loginName, std::string* gecos) {
  std::vector<char> scratch(16384);
  for (;;) {
    passwd entry{};
    passwd* found = nullptr;
    const int error = getpwuid_r(geteuid(), &entry, scratch.data(), scratch.size(), &found);
    if (error == ERANGE && scratch.size() < (1u << 20)) {
      scratch.resize(scratch.size() * 2);
      continue;
    }
    if (error != 0 || found == nullptr) return false;
    *loginName = entry.pw_name ? entry.pw_name : "";
    *gecos = entry.pw_gecos ? entry.pw_gecos : "";
    return true;
  }
}

// The full name is the first comma-separated part: "Ada Lovelace,Room 4,,," => "Ada Lovelace".
std::string FullNameOfGecos(const std::string& gecos) {
  return gecos.substr(0, gecos.find(','));
}

std::string HostName() {
  char name[1025] = {};
  if (gethostname(name, sizeof name - 1) != 0) return std::string();
  return name;
}

}  // namespace

bool GetUserDisplayName(char* buffer, DWORD* size) {
  std::string loginName;
  std::string gecos;
  if (!EffectiveUserEntry(&loginName, &gecos)) return false;
  const std::string fullName = FullNameOfGecos(gecos);
  return !fullName.empty() && CopyName(fullName, buffer, size);
}

bool GetUserLoginName(char* buffer, DWORD* size) {
  std::string loginName;
  std::string gecos;
  return EffectiveUserEntry(&loginName, &gecos) && !loginName.empty() &&
         CopyName(loginName, buffer, size);
}

bool HostsFileListsName(const char* hostsPath, const char* name) {
  if (hostsPath == nullptr || name == nullptr || *name == '\0') return false;
  std::ifstream hosts(hostsPath);
  std::string line;
  while (std::getline(hosts, line)) {
    std::istringstream fields(line.substr(0, line.find('#')));
    std::string address;
    std::string alias;
    fields >> address;
    while (fields >> alias) {
      if (strcasecmp(alias.c_str(), name) == 0) return true;
    }
  }
  return false;
}

bool GetFullyQualifiedHostName(char* buffer, DWORD* size) {
  const std::string host = HostName();
  if (!HostsFileListsName("/etc/hosts", host.c_str())) return false;
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_CANONNAME;
  addrinfo* result = nullptr;
  if (getaddrinfo(host.c_str(), nullptr, &hints, &result) != 0 || result == nullptr) return false;
  const std::string canonical = result->ai_canonname ? result->ai_canonname : std::string();
  freeaddrinfo(result);
  return !canonical.empty() && CopyName(canonical, buffer, size);
}

bool GetPlainHostName(char* buffer, DWORD* size) {
  const std::string host = HostName();
  return !host.empty() && CopyName(host, buffer, size);
}

DWORD GetExecutablePath(char* buffer, DWORD size) {
  if (buffer == nullptr || size == 0) return 0;
  char path[4097];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return 0;
  const DWORD copied = static_cast<DWORD>(length) < size ? static_cast<DWORD>(length) : size - 1;
  std::memcpy(buffer, path, copied);
  buffer[copied] = '\0';
  return static_cast<DWORD>(length) < size ? copied : size;
}

bool GetNetworkResourceInformation(const std::string&, std::string*) {
  return false;
}

bool GetNetworkResourceParent(const std::string&, std::string*) {
  return false;
}

}  // namespace platform
}  // namespace zenutl
