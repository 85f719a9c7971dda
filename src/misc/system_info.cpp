#include "zenutl/system_info.h"

#include <atomic>
#include <mutex>
#include <string>

#include "misc/system_info_internal.h"
#include "platform/file_version.h"
#include "platform/native_path.h"
#include "platform/system_names.h"

namespace zenutl {
namespace detail {
namespace {

constexpr SystemNameCalls kPlatformCalls = {
    &platform::GetUserDisplayName, &platform::GetUserLoginName,
    &platform::GetFullyQualifiedHostName, &platform::GetPlainHostName,
    &platform::GetExecutablePath};
// Constant-initialised, so that static initialisers elsewhere may already ask for names.
SystemNameCalls gCalls = kPlatformCalls;

// The version as first read; the first part is -1 until then and is written last, so a reader
// that sees it set sees the other three.
std::atomic<int> gVersion[4] = {{-1}, {0}, {0}, {0}};

std::mutex gApplicationNameMutex;
std::string& ApplicationName() {
  static std::string name;
  return name;
}

}  // namespace

SystemNameCalls PlatformSystemNameCalls() {
  return kPlatformCalls;
}

SystemNameCalls SetSystemNameCalls(const SystemNameCalls& calls) {
  const SystemNameCalls previous = gCalls;
  gCalls = calls;
  return previous;
}

void ForgetApplicationVersion() {
  gVersion[0].store(-1, std::memory_order_release);
}

namespace {

const char kUnknownName[] = "<unknown>";
constexpr DWORD kNameBufferSize = 1024;

// The better call first, the plain one only if it fails; each gets a zeroed buffer of 1024
// characters and is told it has 1023.
CString NameFromEitherCall(bool (*better)(char*, DWORD*), bool (*plain)(char*, DWORD*)) {
  for (const auto call : {better, plain}) {
    char buffer[kNameBufferSize] = {};
    DWORD size = kNameBufferSize - 1;
    if (call != nullptr && call(buffer, &size)) return CString(buffer);
  }
  return CString(kUnknownName);
}

std::string ExecutablePath() {
  char path[MAX_PATH] = {};
  return gCalls.executablePath != nullptr && gCalls.executablePath(path, MAX_PATH) > 0
             ? std::string(path)
             : std::string();
}

int HighWord(DWORD value) {
  return static_cast<int>(value >> 16);
}
int LowWord(DWORD value) {
  return static_cast<int>(value & 0xFFFF);
}

DWORD MakeLong(int high, int low) {
  return (static_cast<DWORD>(high) & 0xFFFF) << 16 | (static_cast<DWORD>(low) & 0xFFFF);
}

}  // namespace
}  // namespace detail
}  // namespace zenutl

namespace ZnSystemInfo {

using zenutl::detail::gCalls;

CString GetUserNameA() {
  return zenutl::detail::NameFromEitherCall(gCalls.userDisplayName, gCalls.userLoginName);
}

CString GetComputerNameA() {
  return zenutl::detail::NameFromEitherCall(gCalls.fullyQualifiedHostName, gCalls.plainHostName);
}

CString GetDomainName(char const* server) {
  if (server == nullptr) return CString();
  std::string resource;
  std::string parent;
  if (!zenutl::platform::GetNetworkResourceInformation(server, &resource) ||
      !zenutl::platform::GetNetworkResourceParent(resource, &parent)) {
    return CString();
  }
  return CString(parent.c_str());
}

CString GetApplicationName() {
  {
    std::lock_guard<std::mutex> lock(zenutl::detail::gApplicationNameMutex);
    if (!zenutl::detail::ApplicationName().empty()) {
      return CString(zenutl::detail::ApplicationName().c_str());
    }
  }
  const std::string path = zenutl::detail::ExecutablePath();
  return CString(path.substr(path.rfind('/') + 1).c_str());
}

void SetApplicationName(char const* name) {
  std::lock_guard<std::mutex> lock(zenutl::detail::gApplicationNameMutex);
  zenutl::detail::ApplicationName() = name ? name : "";
}

void GetApplicationVersion(int& major, int& minor, int& third, int& fourth, char const* file) {
  std::atomic<int>* version = zenutl::detail::gVersion;
  if (version[0].load(std::memory_order_acquire) == -1) {
    const std::string path = file != nullptr && *file != '\0' ? zenutl::platform::ToNativePath(file)
                                                              : zenutl::detail::ExecutablePath();
    DWORD versionMS = 0;
    DWORD versionLS = 0;
    if (path.empty() || !zenutl::platform::GetFileVersion(path, &versionMS, &versionLS)) {
      versionMS = versionLS = 0;
    }
    version[1].store(zenutl::detail::LowWord(versionMS), std::memory_order_relaxed);
    version[2].store(zenutl::detail::HighWord(versionLS), std::memory_order_relaxed);
    version[3].store(zenutl::detail::LowWord(versionLS), std::memory_order_relaxed);
    version[0].store(zenutl::detail::HighWord(versionMS), std::memory_order_release);
  }
  major = version[0].load(std::memory_order_acquire);
  minor = version[1].load(std::memory_order_relaxed);
  third = version[2].load(std::memory_order_relaxed);
  fourth = version[3].load(std::memory_order_relaxed);
}

CString GetApplicationVersion(EVersionFormat format) {
  int parts[4] = {0, 0, 0, 0};
  GetApplicationVersion(parts[0], parts[1], parts[2], parts[3], "");
  int count = static_cast<int>(format);
  if (count == eVersionAuto) {
    count = parts[3] != 0 ? 4 : parts[2] != 0 ? 3 : parts[1] != 0 ? 2 : 1;
  } else if (count < eVersionOnePart || count > eVersionFourParts) {
    count = 4;
  }
  CString text;
  text.Format("%d", parts[0]);
  for (int part = 1; part < count; ++part) text.AppendFormat(".%d", parts[part]);
  return text;
}

void SetApplicationVersion(int major, int minor, int third, int fourth, char const* file) {
  const std::string path = file != nullptr && *file != '\0' ? zenutl::platform::ToNativePath(file)
                                                            : zenutl::detail::ExecutablePath();
  if (path.empty()) return;
  zenutl::platform::SetFileVersion(path, zenutl::detail::MakeLong(major, minor),
                                   zenutl::detail::MakeLong(third, fourth));
}

}  // namespace ZnSystemInfo
