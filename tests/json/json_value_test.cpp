#include "zenutl/json_value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

namespace {

static_assert(!std::is_constructible<json_value, bool>::value, "a bool must not become a number");
static_assert(std::is_nothrow_move_constructible<json_value>::value, "vectors of values move");

json_value Text(char const* text) {
  return json_value(std::string(text));
}

json_value Object(std::vector<std::pair<std::string, json_value>> const& members) {
  json_value object(json_object{});
  for (auto const& member : members) object.put_child(member.first) = member.second;
  return object;
}

json_value Array(std::vector<json_value> const& elements) {
  json_value array(json_array{});
  for (json_value const& element : elements) array.append_child() = element;
  return array;
}

TEST(JsonValue, ReadersAnswerNeutrallyForTheWrongKindOrAMissingChild) {
  const std::vector<json_value> values = {json_value(),      Text("text"),
                                          json_value(2.5),   json_value(json_bool{true}),
                                          Array({1.0, 2.0}), Object({{"a", 1.0}})};
  for (std::size_t i = 0; i < values.size(); ++i) {
    SCOPED_TRACE(values[i].to_string());
    json_value const& value = values[i];
    EXPECT_EQ(value.get_string(), value.is_string() ? "text" : "");
    EXPECT_EQ(&value.get_string() == &json_value::empty_string, !value.is_string());
    EXPECT_EQ(value.get_number(), value.is_number() ? 2.5 : 0.0);
    EXPECT_EQ(value.get_bool(), value.is_bool());
    EXPECT_EQ(value.get_length(), value.is_array() ? 2u : 0u);
    EXPECT_EQ(value.get_child(1u).get_number(), value.is_array() ? 2.0 : 0.0);
    EXPECT_EQ(&value.get_child(0u) == &json_value::null, !value.is_array());
    EXPECT_EQ(&value.get_child("a") == &json_value::null, !value.is_object());
    EXPECT_EQ(value.has_child("a"), value.is_object());
    EXPECT_EQ(&value.get_child(7u), &json_value::null);
    EXPECT_EQ(&value.get_child("missing"), &json_value::null);
    EXPECT_EQ(value.is_null(), !value);
    EXPECT_EQ(static_cast<bool>(value), !value.is_null());
    EXPECT_EQ(value.is_null() + value.is_string() + value.is_number() + value.is_bool() +
                  value.is_array() + value.is_object(),
              1);
  }
}

TEST(JsonValue, WritersTurnTheValueIntoTheContainerTheyNeed) {
  json_value value(1.5);
  value.put_child("a") = Text("kept");
  EXPECT_EQ(value, Object({{"a", Text("kept")}}));

  value.put_child(2u) = 3.0;  // the object is dropped for an array of three
  EXPECT_EQ(value, Array({json_value(), json_value(), 3.0}));

  json_value text = Text("abc");
  text.append_child() = json_bool{false};
  EXPECT_EQ(text, Array({json_value(json_bool{false})}));

  json_value object = Object({{"x", 1.0}});
  EXPECT_FALSE(text.erase_child("x"));
  EXPECT_TRUE(object.erase_child("x"));
  EXPECT_FALSE(object.erase_child("x"));
  EXPECT_EQ(object, json_value(json_object{}));
  object.put_child("") = 2.0;  // the empty key is a key like any other
  EXPECT_EQ(object.get_child("").get_number(), 2.0);
  object.set_length(0);
  EXPECT_EQ(object, json_value(json_array{}));
  object.set_length(2);
  EXPECT_EQ(object, Array({json_value(), json_value()}));

  // A key that lives in the content being replaced is still read correctly.
  json_value key_owner = Text("name");
  key_owner.put_child(key_owner.get_string()) = 1.0;
  EXPECT_EQ(key_owner, Object({{"name", 1.0}}));
}

TEST(JsonValue, CopiesAreDeepAndAssignmentSwapsSafely) {
  json_value original = Object({{"list", Array({1.0, Text("two"), Object({{"k", 3.0}})})}});
  json_value copy = original;
  copy.put_child("list").put_child(2u).put_child("k") = 4.0;
  EXPECT_EQ(original.get_child("list").get_child(2u).get_child("k").get_number(), 3.0);

  copy = copy;
  EXPECT_EQ(copy.get_child("list").get_length(), 3u);
  copy = copy.get_child("list");  // assigning a child of itself
  EXPECT_EQ(copy.get_child(1u).get_string(), "two");

  json_value left = Text("left"), right(7.0);
  left.swap(right);
  EXPECT_EQ(left.get_number(), 7.0);
  EXPECT_EQ(right.get_string(), "left");
}

TEST(JsonValue, EqualityAndOrderingFollowKindThenContent) {
  const double nan = std::nan("");
  // Each row is strictly ascending.
  const std::vector<std::vector<json_value>> ascending = {
      {json_value(), Text(""), json_value(-1e300), json_value(json_bool{false}),
       json_value(json_array{}), json_value(json_object{})},
      {Text(""), Text("A"), Text("a"), Text("ab"), Text("\x7f"), Text("\x80"), Text("\xff")},
      {nan, -INFINITY, -1.0, 0.0, 2.0, INFINITY},
      {json_value(json_bool{false}), json_value(json_bool{true})},
      {Array({}), Array({nan}), Array({1.0}), Array({1.0, Text("")}), Array({2.0})},
      {Object({}), Object({{"a", 2.0}}), Object({{"a", 2.0}, {"b", 0.0}}), Object({{"a", 3.0}}),
       Object({{"b", 1.0}})},
  };
  for (auto const& row : ascending) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      for (std::size_t j = 0; j < row.size(); ++j) {
        SCOPED_TRACE(row[i].to_string() + " vs " + row[j].to_string());
        EXPECT_EQ(row[i] == row[j], i == j);
        EXPECT_EQ(row[i] != row[j], i != j);
        EXPECT_EQ(row[i] < row[j], i < j);
        EXPECT_EQ(row[i] > row[j], i > j);
        EXPECT_EQ(row[i] <= row[j], i <= j);
        EXPECT_EQ(row[i] >= row[j], i >= j);
      }
    }
  }
  EXPECT_TRUE(json_value(nan) == json_value(nan));
  EXPECT_TRUE(json_value(-0.0) == json_value(0.0));
  EXPECT_TRUE(Array({nan, Object({{"x", nan}})}) == Array({nan, Object({{"x", nan}})}));
}

}  // namespace
