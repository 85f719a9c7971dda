// ZnSystemInfo: the names of the user, the computer and the running application, and the
// application's version, as text.
//
// The audit trail stamps each session with these. Names come from the system's own records:
// the user's full name from the passwd entry (its GECOS field), else the login name; the host's
// fully qualified name as the local hosts database gives it, else the plain host name. Nothing
// here waits for the network.
//
// Linux executables carry no version resource, so the host application states its version with
// `SetApplicationVersion` (and may name itself with `SetApplicationName`); without that the
// name is the executable's file name and the version reads 0.0.0.0. The version is read once:
// the first `GetApplicationVersion` decides for the life of the process.
//
// Error contract: nothing throws. A name that can't be found is "<unknown>"; a domain that
// can't be found is ""; a file without a version reads as 0.0.0.0.
#ifndef ZENUTL_SYSTEM_INFO_H_
#define ZENUTL_SYSTEM_INFO_H_

#include "zenutl/cstring.h"

namespace ZnSystemInfo {

// How many parts of the version number the text form prints.
enum EVersionFormat {
  eVersionAuto = 0,        // up to the last part that is not zero, at least one: 5.1.0.0 => "5.1"
  eVersionOnePart = 1,     // "%d"
  eVersionTwoParts = 2,    // "%d.%d"
  eVersionThreeParts = 3,  // "%d.%d.%d"
  eVersionFourParts = 4    // "%d.%d.%d.%d"; also for any value outside this list
};

// The user's display name (the full name of the passwd entry), else the login name of the
// effective user, else "<unknown>". A name of 1023 characters or more counts as not found.
CString GetUserNameA();

// The host's fully qualified name ("vm.example.org") when the local hosts database knows the
// host, else the plain host name ("vm"), else "<unknown>".
CString GetComputerNameA();

// The domain or workgroup of a network server ("\\\\server"). Linux has no browse service to
// ask, so this is always "", the answer for a server that can't be found.
CString GetDomainName(char const* server);

// The name set with `SetApplicationName`, else the file name of the running executable
// ("/opt/lumo/bin/analyser" => "analyser"), else "".
CString GetApplicationName();
// Names the application from now on; null or "" returns to the executable's name.
void SetApplicationName(char const* name);

// The application's version. The first call reads it and stores it; every later call returns
// the stored numbers whatever `file` says. `file` names the file whose version to read; null or
// "" means the running executable. A file without a version reads as 0.0.0.0.
void GetApplicationVersion(int& major, int& minor, int& third, int& fourth, char const* file);
// The running executable's version (read as above) printed in `format`:
// 5.1.0.0 => "5.1" (auto), 5.0.0.0 => "5" (auto), 5.0.0.3 => "5.0.0.3" (auto),
// 5.1.0.0 => "5.1.0" (three parts).
CString GetApplicationVersion(EVersionFormat format);

// Records the version of `file` (null or "": the running executable), as a version resource
// would on Windows. Call it at start-up, before the first `GetApplicationVersion`: the first
// read decides. Negative parts and parts above 65535 keep their low 16 bits, as in a resource.
void SetApplicationVersion(int major, int minor, int third, int fourth, char const* file = nullptr);

}  // namespace ZnSystemInfo

#endif  // ZENUTL_SYSTEM_INFO_H_
