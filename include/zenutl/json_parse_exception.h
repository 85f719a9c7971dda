// json_parse_exception: what the JSON parser raises for text that is not a JSON document.
//
// It is a `std::runtime_error`, not a member of the library's `Exception` family, so a handler for
// `Exception` does not catch it. It carries nothing but its message: the parser's messages say
// what is wrong and where, e.g. "expected ',' or ']' at line 3, column 7". The value tree and the
// parser live in json_value.h.
#ifndef ZENUTL_JSON_PARSE_EXCEPTION_H_
#define ZENUTL_JSON_PARSE_EXCEPTION_H_

#include <stdexcept>

class json_parse_exception : public std::runtime_error {
 public:
  explicit json_parse_exception(char const* message);
  json_parse_exception(json_parse_exception const& other) = default;
  json_parse_exception& operator=(json_parse_exception const& other) = default;
  ~json_parse_exception() override;
};

#endif  // ZENUTL_JSON_PARSE_EXCEPTION_H_
