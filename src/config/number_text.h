// The number and text helpers the configuration base class builds on.
//
// Provisional: these stand in for the library's shared conversions (separator-tolerant parsing,
// the fixed point locale, head splitting) until those are available on this branch, and will be
// replaced by direct calls to them.
#ifndef ZENUTL_CONFIG_NUMBER_TEXT_H_
#define ZENUTL_CONFIG_NUMBER_TEXT_H_

#include <locale>

#include "zenutl/cstring.h"

namespace zenutl {
namespace config {

// strtod that takes a point or a comma as the decimal separator whatever LC_NUMERIC says.
double ParseDouble(const char* text, char** end);
// True when the whole text (blanks around allowed) is a number; the value is stored either way.
bool ParseFloat(const char* text, float& value);
// A stream locale whose decimal separator is the point.
std::locale PointLocale();
// Cuts `text` at the first `separator`: returns the head, leaves the tail (or "" if none).
CString SplitHead(CString& text, char separator);

}  // namespace config
}  // namespace zenutl

#endif  // ZENUTL_CONFIG_NUMBER_TEXT_H_
