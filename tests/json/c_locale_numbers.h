// The C library's own text of a number in the "C" locale: the reference the JSON writer and
// parser are held to, independent of the process locale.
#ifndef ZENUTL_TESTS_JSON_C_LOCALE_NUMBERS_H_
#define ZENUTL_TESTS_JSON_C_LOCALE_NUMBERS_H_

#include <locale.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zenutl_test {

inline locale_t CLocale() {
  static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return c_locale;
}

// snprintf with "%.16g".
inline std::string PrintedInCLocale(double value) {
  const locale_t previous = uselocale(CLocale());
  char text[100];
  std::snprintf(text, sizeof text, "%.16g", value);
  uselocale(previous);
  return text;
}

inline double ReadInCLocale(std::string const& text) {
  return strtod_l(text.c_str(), nullptr, CLocale());
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_JSON_C_LOCALE_NUMBERS_H_
