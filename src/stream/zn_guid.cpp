#include "zenutl/zn_guid.h"

#include "platform/uuid.h"

ZnGuid::ZnGuid() : _GUID(zenutl::platform::UuidCreateNil()) {}

ZnGuid::ZnGuid(const _GUID& guid) : _GUID(guid) {}

ZnGuid::ZnGuid(const _GUID* guid)
    : _GUID(guid != nullptr ? *guid : zenutl::platform::UuidCreateNil()) {}

ZnGuid::ZnGuid(const char* text) : ZnGuid() {
  zenutl::platform::UuidFromString(text, *this);
}

ZnGuid::ZnGuid(StreamReader& reader) : ZnGuid() {
  Read(reader);
}

ZnGuid::ZnGuid(std::istream& stream) : ZnGuid() {
  Read(stream);
}

ZnGuid ZnGuid::NewID() {
  return ZnGuid(zenutl::platform::UuidCreate());
}

void ZnGuid::Read(StreamReader& reader) {
  _GUID guid;
  guid.Data1 = reader.ReadUInt32();
  guid.Data2 = reader.ReadUInt16();
  guid.Data3 = reader.ReadUInt16();
  for (std::uint8_t& byte : guid.Data4) byte = reader.ReadUInt8();
  static_cast<_GUID&>(*this) = guid;
}

void ZnGuid::Read(std::istream& stream) {
  StreamReader reader(stream);
  Read(reader);
}

void ZnGuid::Write(StreamWriter& writer) const {
  writer.WriteUInt32(Data1);
  writer.WriteUInt16(Data2);
  writer.WriteUInt16(Data3);
  for (std::uint8_t byte : Data4) writer.WriteUInt8(byte);
}

void ZnGuid::Write(std::ostream& stream) const {
  StreamWriter writer(stream);
  Write(writer);
}

CString ZnGuid::ToString() const {
  return CString(ToStdString());
}

std::string ZnGuid::ToStdString() const {
  return zenutl::platform::UuidToString(*this);
}

void ZnGuid::Empty() {
  static_cast<_GUID&>(*this) = zenutl::platform::UuidCreateNil();
}

bool ZnGuid::IsEmpty() const {
  return zenutl::platform::UuidIsNil(*this);
}

int ZnGuid::Compare(const ZnGuid& a, const ZnGuid& b) {
  return zenutl::platform::UuidCompare(a, b);
}
