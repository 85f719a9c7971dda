#include "platform/uuid.h"

#include <uuid/uuid.h>

#include <cstring>

namespace zenutl {
namespace platform {
namespace {

void StoreBigEndian(unsigned long long value, int bytes, unsigned char* out) {
  for (int i = bytes - 1; i >= 0; --i, value >>= 8) out[i] = static_cast<unsigned char>(value);
}

unsigned long long LoadBigEndian(const unsigned char* in, int bytes) {
  unsigned long long value = 0;
  for (int i = 0; i < bytes; ++i) value = value << 8 | in[i];
  return value;
}

void ToUuid(const _GUID& guid, uuid_t uuid) {
  StoreBigEndian(guid.Data1, 4, uuid);
  StoreBigEndian(guid.Data2, 2, uuid + 4);
  StoreBigEndian(guid.Data3, 2, uuid + 6);
  std::memcpy(uuid + 8, guid.Data4, 8);
}

_GUID FromUuid(const uuid_t uuid) {
  _GUID guid;
  guid.Data1 = static_cast<std::uint32_t>(LoadBigEndian(uuid, 4));
  guid.Data2 = static_cast<std::uint16_t>(LoadBigEndian(uuid + 4, 2));
  guid.Data3 = static_cast<std::uint16_t>(LoadBigEndian(uuid + 6, 2));
  std::memcpy(guid.Data4, uuid + 8, 8);
  return guid;
}

}  // namespace

_GUID UuidCreate() {
  uuid_t uuid;
  uuid_generate_random(uuid);
  return FromUuid(uuid);
}

_GUID UuidCreateNil() {
  uuid_t uuid;
  uuid_clear(uuid);
  return FromUuid(uuid);
}

bool UuidFromString(const char* text, _GUID& guid) {
  uuid_t uuid;
  if (text == nullptr || uuid_parse(text, uuid) != 0) return false;
  guid = FromUuid(uuid);
  return true;
}

std::string UuidToString(const _GUID& guid) {
  uuid_t uuid;
  ToUuid(guid, uuid);
  char text[37];
  uuid_unparse_lower(uuid, text);
  return text;
}

bool UuidIsNil(const _GUID& guid) {
  uuid_t uuid;
  ToUuid(guid, uuid);
  return uuid_is_null(uuid) != 0;
}

int UuidCompare(const _GUID& a, const _GUID& b) {
  uuid_t left, right;
  ToUuid(a, left);
  ToUuid(b, right);
  // Big-endian fields compare as numbers when compared byte by byte; libuuid answers any sign.
  const int order = uuid_compare(left, right);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

}  // namespace platform
}  // namespace zenutl
