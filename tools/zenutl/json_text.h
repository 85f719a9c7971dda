// JSON text for the tool's machine-readable output: quoted strings, escaped as the JSON grammar
// requires. The bytes of UTF-8 text pass through as they are.
#ifndef ZENUTL_TOOLS_ZENUTL_JSON_TEXT_H_
#define ZENUTL_TOOLS_ZENUTL_JSON_TEXT_H_

#include <string>

namespace zenutl_tool {

// "a\"b" => "\"a\\\"b\"", a line feed => "\\n", other control bytes => "\\u00XX".
std::string JsonQuoted(const std::string& text);

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_JSON_TEXT_H_
