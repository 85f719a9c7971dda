#include "zenutl/json_value.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "json/json_access.h"

using zenutl::json_detail::Access;
using zenutl::json_detail::Array;
using zenutl::json_detail::Object;

json_value const json_value::null;
std::string const json_value::empty_string;

namespace {

// Trees may be as deep as their author likes (the parser allows 10,000 levels), so nothing here
// recurses along the depth: copying, destroying and comparing keep their own stack of pending
// containers on the heap.

// Moves every child of `container` that has children of its own to `pending`, so that destroying
// the container afterwards goes only one level down. They go last child first, so that `pending`
// hands them back in the order of the tree, the order in which a parsed tree lies in memory.
void MoveOutDeepChildren(json_value& container, std::vector<json_value>& pending) {
  auto detach = [&pending](json_value& child) {
    Access::PrefetchBeyond(Access::HeapPayload(child));
    if (Access::HasChildren(child)) pending.push_back(std::move(child));
  };
  if (Access::KindOf(container) == Access::kArray) {
    Array& elements = Access::ArrayOf(container);
    for (auto child = elements.rbegin(); child != elements.rend(); ++child) detach(*child);
  } else {
    Object& members = Access::ObjectOf(container);
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
      detach(member->second);
    }
  }
}

// A copy of `source` in which the children of a container are null placeholders, with the keys
// of an object already in place.
json_value CopyWithoutGrandchildren(json_value const& source) {
  switch (Access::KindOf(source)) {
    case Access::kArray:
      return Access::Adopt(new Array(Access::ArrayOf(source).size()));
    case Access::kObject: {
      json_value copy(json_object{});
      Object& members = Access::ObjectOf(copy);
      for (auto const& member : Access::ObjectOf(source)) {
        members.emplace_hint(members.end(), member.first, json_value());
      }
      return copy;
    }
    default:
      return source;
  }
}

json_value CopyTree(json_value const& source) {
  json_value root = CopyWithoutGrandchildren(source);
  std::vector<std::pair<json_value const*, json_value*>> pending;
  pending.emplace_back(&source, &root);
  while (!pending.empty()) {
    const auto [from, to] = pending.back();
    pending.pop_back();
    // The children are copied in order, and those with children of their own are queued so that
    // the first comes back first: the copy lies in memory in the order of a walk, as a parsed
    // tree does.
    const std::size_t first_queued = pending.size();
    auto copy_child = [&pending](json_value const& child_from, json_value& child_to) {
      child_to = CopyWithoutGrandchildren(child_from);
      if (Access::HasChildren(child_from)) pending.emplace_back(&child_from, &child_to);
    };
    if (Access::KindOf(*from) == Access::kArray) {
      Array const& from_elements = Access::ArrayOf(*from);
      Array& to_elements = Access::ArrayOf(*to);
      for (std::size_t i = 0; i < from_elements.size(); ++i) {
        copy_child(from_elements[i], to_elements[i]);
      }
    } else {
      auto to_member = Access::ObjectOf(*to).begin();
      for (auto const& from_member : Access::ObjectOf(*from)) {
        copy_child(from_member.second, (to_member++)->second);
      }
    }
    std::reverse(pending.begin() + first_queued, pending.end());
  }
  return root;
}

int Sign(int value) {
  return (value > 0) - (value < 0);
}

int CompareNumbers(double left, double right) {
  // NaN is the smallest number and equal to itself, so that sorting and lookups stay consistent.
  if (std::isnan(left)) return std::isnan(right) ? 0 : -1;
  if (std::isnan(right)) return 1;
  return (left > right) - (left < right);
}

// -1, 0 or 1 for two values of one kind that is no container.
int CompareScalars(json_value const& left, json_value const& right) {
  switch (Access::KindOf(left)) {
    case Access::kString:
      return Sign(Access::StringOf(left).compare(Access::StringOf(right)));
    case Access::kNumber:
      return CompareNumbers(Access::NumberOf(left), Access::NumberOf(right));
    case Access::kBool:
      return Access::FlagOf(left) - Access::FlagOf(right);
    default:
      return 0;
  }
}

std::size_t ChildCount(json_value const& container) {
  return Access::KindOf(container) == Access::kArray ? Access::ArrayOf(container).size()
                                                     : Access::ObjectOf(container).size();
}

// Lexicographic comparison of two trees: -1, 0 or 1. With `equality_only` the answer is only
// zero or not, which lets containers of different sizes differ at once.
int CompareTrees(json_value const& left, json_value const& right, bool equality_only) {
  struct Pair {
    json_value const* left;
    json_value const* right;
    std::size_t index;  // the next pair of children to compare
    Object::const_iterator left_member, right_member;
  };
  std::vector<Pair> pending;
  // Compares two values as far as it can without looking at children, and queues two
  // containers; 0 means "equal so far".
  auto start = [&](json_value const& a, json_value const& b) {
    if (Access::KindOf(a) != Access::KindOf(b))
      return Access::KindOf(a) < Access::KindOf(b) ? -1 : 1;
    const Access::Kind kind = Access::KindOf(a);
    if (kind != Access::kArray && kind != Access::kObject) return CompareScalars(a, b);
    if (equality_only && ChildCount(a) != ChildCount(b)) return 1;
    Pair pair{&a, &b, 0, {}, {}};
    if (kind == Access::kObject) {
      pair.left_member = Access::ObjectOf(a).begin();
      pair.right_member = Access::ObjectOf(b).begin();
    }
    pending.push_back(pair);
    return 0;
  };

  int result = start(left, right);
  while (result == 0 && !pending.empty()) {
    Pair& top = pending.back();
    const std::size_t left_count = ChildCount(*top.left), right_count = ChildCount(*top.right);
    if (top.index == left_count || top.index == right_count) {
      result = (left_count > right_count) - (left_count < right_count);
      pending.pop_back();
      continue;
    }
    ++top.index;
    if (Access::KindOf(*top.left) == Access::kArray) {
      json_value const& a = Access::ArrayOf(*top.left)[top.index - 1];
      json_value const& b = Access::ArrayOf(*top.right)[top.index - 1];
      result = start(a, b);
    } else {
      auto const& a = *top.left_member++;
      auto const& b = *top.right_member++;
      result = Sign(a.first.compare(b.first));
      if (result == 0) result = start(a.second, b.second);
    }
  }
  return result;
}

}  // namespace

json_value::json_value(json_string const& text) : json_value(text.value) {}

json_value::json_value(std::string const& text) : m_kind(string_kind) {
  m_payload.string = new std::string(text);
}

json_value::json_value(json_array const&) : m_kind(array_kind) {
  m_payload.array = new std::vector<json_value>();
}

json_value::json_value(json_object const&) : m_kind(object_kind) {
  m_payload.object = new std::map<std::string, json_value>();
}

json_value::json_value(json_value const& other) : m_kind(other.m_kind), m_payload(other.m_payload) {
  if (m_kind == string_kind) {
    m_payload.string = new std::string(*other.m_payload.string);
  } else if (m_kind == array_kind || m_kind == object_kind) {
    m_kind = null_kind;  // until the copy is whole, so a failed copy frees only what it made
    json_value copy = CopyTree(other);
    swap(copy);
  }
}

json_value::~json_value() {
  switch (m_kind) {
    case string_kind:
      delete m_payload.string;
      break;
    case array_kind:
    case object_kind: {
      // The children with children go to `pending` first, so each delete below finds only
      // leaves and empty containers under it.
      std::vector<json_value> pending;
      MoveOutDeepChildren(*this, pending);
      while (!pending.empty()) {
        json_value container = std::move(pending.back());
        pending.pop_back();
        MoveOutDeepChildren(container, pending);
      }
      if (m_kind == array_kind) {
        delete m_payload.array;
      } else {
        delete m_payload.object;
      }
      break;
    }
    default:
      break;
  }
}

void json_value::swap(json_value& other) noexcept {
  std::swap(m_kind, other.m_kind);
  std::swap(m_payload, other.m_payload);
}

std::string const& json_value::get_string() const {
  return m_kind == string_kind ? *m_payload.string : empty_string;
}

unsigned int json_value::get_length() const {
  return m_kind == array_kind ? static_cast<unsigned int>(m_payload.array->size()) : 0;
}

json_value const& json_value::get_child(unsigned int index) const {
  if (m_kind != array_kind || index >= m_payload.array->size()) return null;
  return (*m_payload.array)[index];
}

json_value const& json_value::get_child(std::string const& key) const {
  if (m_kind != object_kind) return null;
  auto found = m_payload.object->find(key);
  return found == m_payload.object->end() ? null : found->second;
}

bool json_value::has_child(std::string const& key) const {
  return m_kind == object_kind && m_payload.object->count(key) != 0;
}

json_value& json_value::put_child(std::string const& key) {
  if (m_kind == object_kind) return (*m_payload.object)[key];
  // The key may live in the content about to be dropped, so it is used before the drop.
  json_value replacement(json_object{});
  json_value& child = (*replacement.m_payload.object)[key];
  swap(replacement);
  return child;
}

std::vector<json_value>& json_value::make_array() {
  if (m_kind != array_kind) *this = json_value(json_array{});
  return *m_payload.array;
}

json_value& json_value::put_child(unsigned int index) {
  std::vector<json_value>& elements = make_array();
  if (index >= elements.size()) elements.resize(static_cast<std::size_t>(index) + 1);
  return elements[index];
}

json_value& json_value::append_child() {
  std::vector<json_value>& elements = make_array();
  elements.emplace_back();
  return elements.back();
}

void json_value::set_length(unsigned int length) {
  make_array().resize(length);
}

bool json_value::erase_child(std::string const& key) {
  return m_kind == object_kind && m_payload.object->erase(key) != 0;
}

bool operator==(json_value const& left, json_value const& right) {
  return CompareTrees(left, right, true) == 0;
}

bool operator<(json_value const& left, json_value const& right) {
  return CompareTrees(left, right, false) < 0;
}
