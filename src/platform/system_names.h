// Names of the user, the host and the running program, as the Windows name calls give them.
//
// Each function fills a caller's buffer in the Windows manner: `*size` holds the buffer's size
// on entry, and a name that does not fit with its terminator is a failure, never a cut name.
// On success `*size` becomes the name's length. None of them touches the network.
#ifndef ZENUTL_PLATFORM_SYSTEM_NAMES_H_
#define ZENUTL_PLATFORM_SYSTEM_NAMES_H_

#include <string>

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// GetUserNameExA(NameDisplay): the full name of the effective user, the GECOS field of the
// passwd entry up to its first comma. Fails when that is empty, as on an account without one.
bool GetUserDisplayName(char* buffer, DWORD* size);

// GetUserNameA: the login name of the effective user.
bool GetUserLoginName(char* buffer, DWORD* size);

// GetComputerNameExA(ComputerNameDnsFullyQualified): the canonical name that getaddrinfo gives
// for the host name. Asked only when the hosts file lists the host name, so that the answer is
// local and never waits for a name server; fails otherwise.
bool GetFullyQualifiedHostName(char* buffer, DWORD* size);
// The check above on its own, for any hosts file: true if a line of `hostsPath` names `name`
// (case-insensitive), comments ignored.
bool HostsFileListsName(const char* hostsPath, const char* name);

// GetComputerNameA: the host name as gethostname gives it.
bool GetPlainHostName(char* buffer, DWORD* size);

// GetModuleFileNameA for the program: the path of /proc/self/exe, cut to `size` - 1 characters
// if longer (then the return is `size`, as on Windows). 0 on failure.
DWORD GetExecutablePath(char* buffer, DWORD size);

// WNetGetResourceInformationA and WNetGetResourceParentA: Linux has no browse service that
// knows the parent (domain or workgroup) of a network resource, so both always fail.
bool GetNetworkResourceInformation(const std::string& remoteName, std::string* resourceName);
bool GetNetworkResourceParent(const std::string& resourceName, std::string* parentName);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_SYSTEM_NAMES_H_
