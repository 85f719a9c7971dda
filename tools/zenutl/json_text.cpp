#include "json_text.h"

#include <cstdio>

namespace zenutl_tool {

std::string JsonQuoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char ch : text) {
    const unsigned char byte = static_cast<unsigned char>(ch);
    switch (ch) {
      case '"':
        quoted += "\\\"";
        break;
      case '\\':
        quoted += "\\\\";
        break;
      case '\n':
        quoted += "\\n";
        break;
      case '\t':
        quoted += "\\t";
        break;
      case '\r':
        quoted += "\\r";
        break;
      default:
        if (byte < 0x20 || byte == 0x7F) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
          quoted += escaped;
        } else {
          quoted += ch;
        }
    }
  }
  return quoted + "\"";
}

}  // namespace zenutl_tool
