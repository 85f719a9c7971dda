// json_value: a JSON document as a tree of values that own their children, its two text forms,
// and the parser that reads either form back.
//
// Two rules make trees easy to walk and to build without checks. Readers never fail: asking a
// value for the wrong kind or for a missing child gives a neutral answer (0.0, false, an empty
// string, a null value), handed out as references to the process-wide `json_value::null` and
// `json_value::empty_string`. Writers never refuse: `put_child` and its siblings first turn the
// value into the container they need, dropping what it held.
//
// A value is a kind and one payload word. The kinds, in their sort order across kinds:
//   null (0), string (1), number (2), bool (3), array (4), object (5)
// Strings, arrays and objects live on the heap; numbers and bools inline. Objects keep their
// members sorted by key as bytes (`std::string` order), each key once.
//
// Text: `operator<<` and `to_string` write the compact form, `pretty_print` and
// `to_pretty_string` the indented one:
//   {"a":1,"b":[true,null]}          compact
//   {\n  "a": 1,\n  "b": [\n    true,\n    null\n  ]\n}    indented by 2
// Numbers print as "%.16g" in the "C" locale, whatever the process locale or the library's
// decimal-separator scopes say: 0.1 => 0.1, 1e300 => 1e+300, 1.0 => 1. The infinities print as the
// JSON strings "+inf" and "-inf" (with their quotes), NaN as null, and zero of either sign and the
// denormals as 0. Strings escape '"', '\\', the bytes below 0x20 and 0x7F; other bytes, those from
// 0x80 up included, pass through as they are.
//
// Error contract: only `parse` and `operator>>` throw of their own, `json_parse_exception`
// (json_parse_exception.h) with a message ending in "line L, column C". Everything else fails only
// as memory allocation does. Writing to a stream in a failed state writes nothing.
//
// Threads: a tree belongs to one thread at a time; distinct trees may be used concurrently.
#ifndef ZENUTL_JSON_VALUE_H_
#define ZENUTL_JSON_VALUE_H_

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "zenutl/json_parse_exception.h"

// Tags that pick the kind of a new value: json_value(json_bool{true}), json_value(json_array()).
struct json_null {};
struct json_number {
  double value;
};
struct json_bool {
  bool value;
};
struct json_string {
  std::string value;
};
struct json_array {};
struct json_object {};

namespace zenutl {
namespace json_detail {
struct Access;
}  // namespace json_detail
}  // namespace zenutl

class json_value {
 public:
  // The value every absent child reads as, and the text every non-string reads as.
  static json_value const null;
  static std::string const empty_string;

  // The default value is null. A bool has no constructor of its own (it would otherwise become
  // a number quietly): write json_value(json_bool{flag}). An int literal is ambiguous between
  // double and the deleted bool: write 1.0.
  constexpr json_value() noexcept : m_kind(null_kind), m_payload() {}
  json_value(json_null const&) noexcept : json_value() {}
  json_value(json_number const& number) noexcept : json_value(number.value) {}
  json_value(double number) noexcept : m_kind(number_kind) { m_payload.number = number; }
  json_value(json_bool const& flag) noexcept : m_kind(bool_kind) { m_payload.flag = flag.value; }
  json_value(json_string const& text);
  json_value(std::string const& text);
  json_value(json_array const&);   // an empty array
  json_value(json_object const&);  // an empty object
  json_value(bool) = delete;
  // Copies are deep. Copying and destroying need no stack in proportion to the depth of the
  // tree, so the deepest tree the parser accepts is as safe as a flat one.
  json_value(json_value const& other);
  // Takes the other value's content and leaves it null.
  json_value(json_value&& other) noexcept : m_kind(other.m_kind), m_payload(other.m_payload) {
    other.m_kind = null_kind;
  }
  ~json_value();

  // Takes `other` by value, so assigning a value to itself or to one of its own children is safe.
  json_value& operator=(json_value other) noexcept {
    swap(other);
    return *this;
  }
  // Exchanges the contents of two values; nothing is copied.
  void swap(json_value& other) noexcept;

  bool is_null() const { return m_kind == null_kind; }
  bool is_string() const { return m_kind == string_kind; }
  bool is_number() const { return m_kind == number_kind; }
  bool is_bool() const { return m_kind == bool_kind; }
  bool is_array() const { return m_kind == array_kind; }
  bool is_object() const { return m_kind == object_kind; }

  // The string; `empty_string` for any other kind.
  std::string const& get_string() const;
  // The number; 0.0 for any other kind.
  double get_number() const { return m_kind == number_kind ? m_payload.number : 0.0; }
  // The flag; false for any other kind.
  bool get_bool() const { return m_kind == bool_kind && m_payload.flag; }
  // The element count of an array; 0 for any other kind, objects included.
  unsigned int get_length() const;
  // That element of an array; `null` for any other kind or an index past the end.
  json_value const& get_child(unsigned int index) const;
  // That member of an object; `null` for any other kind or a missing key.
  json_value const& get_child(std::string const& key) const;
  // True only for an object with that key.
  bool has_child(std::string const& key) const;

  // `if (value)` is true unless the value is null; there is no conversion to bool as such.
  typedef void (json_value::*boolean_test)() const;
  operator boolean_test() const { return is_null() ? nullptr : &json_value::boolean_test_target; }
  bool operator!() const { return is_null(); }

  // The member `key`, inserted as null when missing. A value that is no object becomes an empty
  // object first, losing its content.
  json_value& put_child(std::string const& key);
  // The element `index`. A value that is no array becomes an empty array first; an array that is
  // too short grows to index + 1 elements, the new ones null. References to elements are valid
  // until the array next grows or shrinks.
  json_value& put_child(unsigned int index);
  // A new null element at the end of the array; a value that is no array becomes one first.
  json_value& append_child();
  // A value that is no array becomes an empty one; then the array gets `length` elements, new
  // ones null.
  void set_length(unsigned int length);
  // Removes the member `key` of an object and says whether there was one; false on other kinds.
  bool erase_child(std::string const& key);

  // The compact form.
  std::string to_string() const;
  // The indented form, `indent` blanks per level. An indent of 0 still breaks lines.
  std::ostream& pretty_print(std::ostream& stream, unsigned int indent) const;
  std::string to_pretty_string(unsigned int indent) const;

  // Reads one JSON document (RFC 8259; white space around it allowed, nothing else) into a tree.
  //
  // Throws `json_parse_exception` naming the fault and the position of the first byte that
  // cannot continue a document, "line L, column C": lines count line feeds, columns count bytes,
  // both from 1. Refused besides what the grammar refuses: nesting deeper than 10,000 arrays and
  // objects, invalid UTF-8, \u escapes of lone surrogates, a byte order mark. Numbers become the
  // nearest double (beyond the largest double, an infinity); of members with the same key the
  // last one counts. What the writers wrote reads back equal, except for the losses of writing:
  // denormals and -0.0 come back as 0, values that need 17 digits are rounded to 16, and the
  // infinities stay the strings "+inf" and "-inf".
  static json_value parse(std::string const& text);

 private:
  friend struct zenutl::json_detail::Access;

  // The numbers are the sort order across kinds.
  enum kind_type : int {
    null_kind = 0,
    string_kind = 1,
    number_kind = 2,
    bool_kind = 3,
    array_kind = 4,
    object_kind = 5,
  };
  union payload_type {
    std::string* string;
    double number;
    bool flag;
    std::vector<json_value>* array;
    std::map<std::string, json_value>* object;
  };

  void boolean_test_target() const {}
  std::vector<json_value>& make_array();

  kind_type m_kind;
  payload_type m_payload;
};

// Equality: same kind and same content; numbers as doubles, except that NaN equals NaN.
bool operator==(json_value const& left, json_value const& right);
// Ordering: by kind first (null < string < number < bool < array < object), then by content:
// strings as bytes, false before true, numbers as doubles with NaN before every other number,
// arrays element by element and objects (key, value) pair by pair, a proper prefix first.
bool operator<(json_value const& left, json_value const& right);
inline bool operator!=(json_value const& left, json_value const& right) {
  return !(left == right);
}
inline bool operator>(json_value const& left, json_value const& right) {
  return right < left;
}
inline bool operator<=(json_value const& left, json_value const& right) {
  return !(right < left);
}
inline bool operator>=(json_value const& left, json_value const& right) {
  return !(left < right);
}

// Writes the compact form.
std::ostream& operator<<(std::ostream& stream, json_value const& value);
// Reads the rest of the stream as one document and replaces `value` with it; on a parse error
// throws `json_parse_exception` and leaves `value` as it was. A stream that is not good sets
// failbit and reads nothing.
std::istream& operator>>(std::istream& stream, json_value& value);

#endif  // ZENUTL_JSON_VALUE_H_
