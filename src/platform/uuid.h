// The RPC identifier calls behind ZnGuid, on libuuid.
//
// The identifiers keep the Windows field layout (_GUID): Data1, Data2 and Data3 are numbers in
// the machine's order. libuuid's uuid_t holds the same identifier as 16 bytes in big-endian
// order; these functions convert between the two, so the text of an identifier and its order
// are the same on both sides.
//
// Error contract: nothing here throws; UuidFromString answers false for a malformed text.
#ifndef ZENUTL_PLATFORM_UUID_H_
#define ZENUTL_PLATFORM_UUID_H_

#include <string>

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// UuidCreate: a random (version 4) identifier.
_GUID UuidCreate();

// UuidCreateNil: all sixteen bytes zero.
_GUID UuidCreateNil();

// UuidFromStringA: 36 characters, hexadecimal digits of either case in the groups 8-4-4-4-12
// joined by "-", nothing before or after. False, with `guid` untouched, for anything else.
bool UuidFromString(const char* text, _GUID& guid);

// UuidToStringA: the text form above in lower case.
std::string UuidToString(const _GUID& guid);

// UuidIsNil.
bool UuidIsNil(const _GUID& guid);

// UuidCompare: -1, 0 or 1 ordering by Data1, Data2 and Data3 as numbers, then Data4 byte by
// byte.
int UuidCompare(const _GUID& a, const _GUID& b);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_UUID_H_
