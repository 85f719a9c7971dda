// Windows names used at the library's boundary, as plain Linux types.
//
// The applications that link this library were written against the Windows API, and the
// library's interfaces still speak its vocabulary: 64-bit integers named `__int64`, module
// handles, `FILETIME` and `SYSTEMTIME` records, 260-character path buffers, and the database,
// automation and framework time records that the date-time values convert from. This header
// gives each name the same size and layout here, and nothing more (the framework's two time
// classes keep their accessors); behaviour lives in the components that use them. Strings are
// in cstring.h. `long` is 32 bits wide on Windows, so `LONG` and `DWORD` are fixed at 32.
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
struct _FILETIME {  // NOLINT: the platform's name
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};
typedef _FILETIME FILETIME;

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

typedef short SHORT;
typedef unsigned short USHORT;

// A database timestamp in local time, as the ODBC driver hands it over; `fraction` counts
// nanoseconds (billionths of a second).
struct tagTIMESTAMP_STRUCT {
  SHORT year;
  USHORT month;
  USHORT day;
  USHORT hour;
  USHORT minute;
  USHORT second;
  DWORD fraction;
};
typedef tagTIMESTAMP_STRUCT TIMESTAMP_STRUCT;

// The same record as the OLE DB providers spell it.
struct tagDBTIMESTAMP {
  SHORT year;
  USHORT month;
  USHORT day;
  USHORT hour;
  USHORT minute;
  USHORT second;
  DWORD fraction;
};
typedef tagDBTIMESTAMP DBTIMESTAMP;

// An automation date: days since 1899-12-30 00:00 local time, the fraction being the time of
// day. A negative value counts the days backwards but the time of day forwards: -1.25 is
// 1899-12-29 06:00.
typedef double DATE;
typedef unsigned short VARTYPE;

// The variant types the library reads; `VT_BYREF` marks a variant that points to its value.
enum VARENUM {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_DATE = 7,
  VT_BYREF = 0x4000,
};

// A tagged automation value: `vt` says which member of the union holds it.
struct tagVARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    LONG lVal;
    BYTE bVal;
    SHORT iVal;
    float fltVal;
    double dblVal;
    DATE date;    // VT_DATE
    DATE* pdate;  // VT_DATE | VT_BYREF
    void* byref;
  };
};
typedef tagVARIANT VARIANT;

namespace ATL {

// A point in time as seconds since 1970-01-01 00:00 UTC.
class CTime {
 public:
  CTime() = default;
  explicit CTime(__int64 time) : m_time(time) {}
  __int64 GetTime() const { return m_time; }
  bool operator==(const CTime& other) const { return m_time == other.m_time; }
  bool operator!=(const CTime& other) const { return m_time != other.m_time; }

 private:
  __int64 m_time = 0;
};

// A span of whole seconds. The parts are those of the framework: GetDays() whole days,
// GetHours() 0 to 23, GetMinutes() and GetSeconds() 0 to 59, all negative for a negative span.
class CTimeSpan {
 public:
  CTimeSpan() = default;
  explicit CTimeSpan(__int64 seconds) : m_timeSpan(seconds) {}
  CTimeSpan(LONG days, int hours, int minutes, int seconds)
      : m_timeSpan(seconds + 60 * (minutes + 60 * (hours + 24 * static_cast<__int64>(days)))) {}
  __int64 GetTimeSpan() const { return m_timeSpan; }
  __int64 GetDays() const { return m_timeSpan / (24 * 3600); }
  __int64 GetTotalHours() const { return m_timeSpan / 3600; }
  __int64 GetTotalMinutes() const { return m_timeSpan / 60; }
  __int64 GetTotalSeconds() const { return m_timeSpan; }
  LONG GetHours() const { return static_cast<LONG>(GetTotalHours() - GetDays() * 24); }
  LONG GetMinutes() const { return static_cast<LONG>(GetTotalMinutes() - GetTotalHours() * 60); }
  LONG GetSeconds() const { return static_cast<LONG>(GetTotalSeconds() - GetTotalMinutes() * 60); }
  bool operator==(const CTimeSpan& other) const { return m_timeSpan == other.m_timeSpan; }
  bool operator!=(const CTimeSpan& other) const { return m_timeSpan != other.m_timeSpan; }

 private:
  __int64 m_timeSpan = 0;
};

}  // namespace ATL

// A 128-bit identifier in the Windows field layout.
struct _GUID {  // NOLINT: the platform's name
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
typedef _GUID GUID;

#endif  // ZENUTL_PLATFORM_TYPES_H_
