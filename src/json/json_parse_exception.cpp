#include "zenutl/json_parse_exception.h"

json_parse_exception::json_parse_exception(char const* message) : std::runtime_error(message) {}

json_parse_exception::~json_parse_exception() = default;
