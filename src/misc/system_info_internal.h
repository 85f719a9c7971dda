// The system calls behind ZnSystemInfo, replaceable so that the paths for a system that can't
// name its user, host or program can be reached; and a way to forget the stored version so that
// the first-read rule can be exercised more than once in one process.
#ifndef ZENUTL_MISC_SYSTEM_INFO_INTERNAL_H_
#define ZENUTL_MISC_SYSTEM_INFO_INTERNAL_H_

#include "zenutl/platform_types.h"

namespace zenutl {
namespace detail {

struct SystemNameCalls {
  bool (*userDisplayName)(char* buffer, DWORD* size);
  bool (*userLoginName)(char* buffer, DWORD* size);
  bool (*fullyQualifiedHostName)(char* buffer, DWORD* size);
  bool (*plainHostName)(char* buffer, DWORD* size);
  DWORD (*executablePath)(char* buffer, DWORD size);
};

// The platform's own calls.
SystemNameCalls PlatformSystemNameCalls();

// Installs `calls` and returns those it replaces. Not synchronised: for set-up before use.
SystemNameCalls SetSystemNameCalls(const SystemNameCalls& calls);

// Returns the stored version to "not read yet".
void ForgetApplicationVersion();

}  // namespace detail
}  // namespace zenutl

#endif  // ZENUTL_MISC_SYSTEM_INFO_INTERNAL_H_
