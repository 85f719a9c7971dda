#include "config/number_text.h"

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cstring>

namespace zenutl {
namespace config {

double ParseDouble(const char* text, char** end) {
  char buffer[64];
  std::strncpy(buffer, text, sizeof(buffer) - 1);
  buffer[sizeof(buffer) - 1] = '\0';
  const char localSeparator = std::localeconv()->decimal_point[0];
  const char foreign = localSeparator == '.' ? ',' : '.';
  if (char* hit = std::strchr(buffer, foreign)) *hit = localSeparator;
  char* bufferEnd = nullptr;
  const double value = std::strtod(buffer, &bufferEnd);
  if (end != nullptr) *end = const_cast<char*>(text) + (bufferEnd - buffer);
  return value;
}

bool ParseFloat(const char* text, float& value) {
  const char* p = text;
  while (std::isspace(static_cast<unsigned char>(*p))) ++p;
  if (*p == '\0') {
    value = -99.0f;
    return false;
  }
  char* end = nullptr;
  const double parsed = ParseDouble(text, &end);
  while (std::isspace(static_cast<unsigned char>(*end))) ++end;
  const bool ok = *end == '\0';
  value = ok ? static_cast<float>(parsed) : -99.0f;
  return ok;
}

std::locale PointLocale() {
  return std::locale::classic();
}

CString SplitHead(CString& text, char separator) {
  const int found = text.Find(separator);
  if (found < 0) {
    CString head = text;
    text.Empty();
    return head;
  }
  CString head = text.Left(found);
  text = text.Mid(found + 1);
  return head;
}

}  // namespace config
}  // namespace zenutl
