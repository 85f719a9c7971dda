// A fresh process for the locale tests: reports, as "key=value" lines, what the library does
// with the locale named by the environment the test gave it. The first decimal-separator switch
// of a process and InitLibraries can only be watched properly in a process of their own.
#include <clocale>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "platform/runtime_locale.h"
#include "zenutl/locales.h"

namespace {

int gNumericCalls = 0;

char* CountingSetLocale(int category, const char* name) {
  if (category == LC_NUMERIC) ++gNumericCalls;
  return std::setlocale(category, name);
}

std::string Printed(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  zenutl::platform::ReplaceSetLocale(&CountingSetLocale);
  std::cout << "before=" << Locales::GetDecimalSeparator() << "\n";
  if (mode == "comma-scope" || mode == "point-scope") {
    {
      Locales::SetDecimalSeparatorClass scope(mode == "comma-scope" ? Locales::eDecimalComma
                                                                    : Locales::eDecimalPoint);
      std::cout << "inside=" << Printed(1.5) << "\n";
      std::cout << "inside_calls=" << gNumericCalls << "\n";
    }
    std::cout << "after=" << Printed(1.5) << "\n";
    std::cout << "total_calls=" << gNumericCalls << "\n";
    return 0;
  }
  if (mode == "init") {
    Locales::InitLibraries();
    std::ostringstream stream;
    stream << 1234.5 << ' ' << std::boolalpha << true;
    std::cout << "stream=" << stream.str() << "\n";
    std::cout << "printf=" << Printed(1234.5) << "\n";
    std::cout << "separator=" << Locales::GetDecimalSeparator() << "\n";
    return 0;
  }
  std::cerr << "usage: locale_probe comma-scope|point-scope|init\n";
  return 2;
}
