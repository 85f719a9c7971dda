// Windows names used at the library's boundary, as plain Linux types.
//
// The applications that link this library were written against the Windows API, and the
// library's interfaces still speak its vocabulary: 64-bit integers named `__int64`, module
// handles, `FILETIME` and `SYSTEMTIME` records, 260-character path buffers. This header gives
// each name the same size and layout here, and nothing more; behaviour lives in the components
// that use them. Strings are in cstring.h.
#ifndef ZENUTL_PLATFORM_TYPES_H_
#define ZENUTL_PLATFORM_TYPES_H_

#include <cstdint>

typedef long long __int64;            // NOLINT: the platform's name for a signed 64-bit integer
typedef unsigned long long __uint64;  // NOLINT

typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef std::uint32_t DWORD;
typedef std::int32_t LONG;
typedef unsigned int UINT;
typedef std::int64_t LONGLONG;
typedef std::uint64_t ULONGLONG;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#ifndef MAX_PATH
#define MAX_PATH 260
#endif

// Module and object handles are opaque pointers; a null handle means "none".
typedef void* HANDLE;
struct ZnModule;  // a loaded catalogue of language strings and resources
typedef ZnModule* HINSTANCE;
typedef HINSTANCE HMODULE;

// 100-nanosecond intervals since 1 January 1601 UTC, split into two 32-bit halves.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

// A broken-down calendar time with milliseconds.
struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;  // 0 is Sunday
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

// A 128-bit identifier in the Windows field layout.
struct _GUID {  // NOLINT: the platform's name
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
typedef _GUID GUID;

#endif  // ZENUTL_PLATFORM_TYPES_H_
