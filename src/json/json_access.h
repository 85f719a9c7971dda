// Inside view of json_value for the library's own JSON code: the kind and payload words, and
// values built around heap containers that are already filled (the parser builds each array and
// object whole before it wraps it).
#ifndef ZENUTL_JSON_JSON_ACCESS_H_
#define ZENUTL_JSON_JSON_ACCESS_H_

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "zenutl/json_value.h"

namespace zenutl {
namespace json_detail {

using Array = std::vector<json_value>;
using Object = std::map<std::string, json_value>;

struct Access {
  using Kind = json_value::kind_type;
  static constexpr Kind kNull = json_value::null_kind;
  static constexpr Kind kString = json_value::string_kind;
  static constexpr Kind kNumber = json_value::number_kind;
  static constexpr Kind kBool = json_value::bool_kind;
  static constexpr Kind kArray = json_value::array_kind;
  static constexpr Kind kObject = json_value::object_kind;

  static Kind KindOf(json_value const& value) { return value.m_kind; }
  static std::string const& StringOf(json_value const& value) { return *value.m_payload.string; }
  static double NumberOf(json_value const& value) { return value.m_payload.number; }
  static bool FlagOf(json_value const& value) { return value.m_payload.flag; }
  static Array const& ArrayOf(json_value const& value) { return *value.m_payload.array; }
  static Array& ArrayOf(json_value& value) { return *value.m_payload.array; }
  static Object const& ObjectOf(json_value const& value) { return *value.m_payload.object; }
  static Object& ObjectOf(json_value& value) { return *value.m_payload.object; }

  // True for an array or object with at least one child: the values whose copy, comparison or
  // destruction has to go deeper.
  static bool HasChildren(json_value const& value) {
    return (value.m_kind == kArray && !value.m_payload.array->empty()) ||
           (value.m_kind == kObject && !value.m_payload.object->empty());
  }

  // The heap block of a string or container, or else the value itself.
  static void const* HeapPayload(json_value const& value) {
    if (value.m_kind == kString || value.m_kind >= kArray) return value.m_payload.string;
    return &value;
  }

  // Asks for the memory a little beyond `block`. A parsed tree lies in memory in the order in
  // which its children are walked (see the parser), so what a walk over a large tree reads next
  // lies just beyond what it reads now, and asking early keeps the memory busy ahead of it. For a
  // tree laid out otherwise this merely fetches lines that may not be needed; it never faults.
  static void PrefetchBeyond(void const* block) {
    constexpr std::uintptr_t kDistance = 2048;
    __builtin_prefetch(
        reinterpret_cast<void const*>(reinterpret_cast<std::uintptr_t>(block) + kDistance));
  }

  // Values that take ownership of a heap payload.
  static json_value Adopt(std::string* text) noexcept { return Wrap(kString, text); }
  static json_value Adopt(Array* array) noexcept { return Wrap(kArray, array); }
  static json_value Adopt(Object* object) noexcept { return Wrap(kObject, object); }

 private:
  template <class Payload>
  static json_value Wrap(Kind kind, Payload* payload) noexcept {
    json_value value;
    value.m_kind = kind;
    Set(value.m_payload, payload);
    return value;
  }
  static void Set(json_value::payload_type& payload, std::string* text) { payload.string = text; }
  static void Set(json_value::payload_type& payload, Array* array) { payload.array = array; }
  static void Set(json_value::payload_type& payload, Object* object) { payload.object = object; }
};

}  // namespace json_detail
}  // namespace zenutl

#endif  // ZENUTL_JSON_JSON_ACCESS_H_
