// ZnGuid: a 128-bit identifier with its text and stream forms.
//
// The fields are those of a Windows _GUID (platform_types.h), with their meaning: in the text
// the first group is Data1 as a number, the second Data2, the third Data3, then the eight bytes
// of Data4 in order.
//   text    "00112233-4455-6677-8899-aabbccddeeff": 36 characters, groups 8-4-4-4-12,
//           lower case when written, either case when read, no braces
//   stream  Data1 as UInt32, Data2 and Data3 as UInt16, Data4 as eight UInt8: 16 bytes,
//           little-endian as StreamWriter writes them ("33 22 11 00 55 44 77 66 88 99 ...")
// Identifiers order by Data1, Data2 and Data3 as numbers, then Data4 byte by byte; the nil
// identifier (all zero) comes before every other.
//
// Error contract: a malformed text gives the nil identifier, silently. The stream forms throw
// StreamException as StreamReader and StreamWriter do, also on a std::istream or std::ostream;
// a failed read leaves the identifier as it was. Nothing else throws except std::bad_alloc.
#ifndef ZENUTL_ZN_GUID_H_
#define ZENUTL_ZN_GUID_H_

#include <istream>
#include <ostream>
#include <string>

#include "zenutl/cstring.h"
#include "zenutl/platform_types.h"
#include "zenutl/stream_reader.h"
#include "zenutl/stream_writer.h"

class ZnGuid : public _GUID {
 public:
  // The nil identifier.
  ZnGuid();
  ZnGuid(const _GUID& guid);  // NOLINT: implicit by design
  // A null pointer gives the nil identifier.
  explicit ZnGuid(const _GUID* guid);
  // The identifier of the text form above, or nil for anything else (null included).
  explicit ZnGuid(const char* text);
  explicit ZnGuid(StreamReader& reader);
  explicit ZnGuid(std::istream& stream);
  ZnGuid(const ZnGuid&) = default;
  ZnGuid& operator=(const ZnGuid&) = default;

  // A new random identifier.
  static ZnGuid NewID();

  void Read(StreamReader& reader);
  void Read(std::istream& stream);
  void Write(StreamWriter& writer) const;
  void Write(std::ostream& stream) const;

  CString ToString() const;
  std::string ToStdString() const;

  // Makes this the nil identifier.
  void Empty();
  bool IsEmpty() const;

  bool operator==(const ZnGuid& other) const { return Compare(*this, other) == 0; }
  bool operator!=(const ZnGuid& other) const { return Compare(*this, other) != 0; }
  bool operator<(const ZnGuid& other) const { return Compare(*this, other) < 0; }
  bool operator<=(const ZnGuid& other) const { return Compare(*this, other) <= 0; }
  bool operator>(const ZnGuid& other) const { return Compare(*this, other) > 0; }
  bool operator>=(const ZnGuid& other) const { return Compare(*this, other) >= 0; }

 private:
  static int Compare(const ZnGuid& a, const ZnGuid& b);
};

#endif  // ZENUTL_ZN_GUID_H_
