// Reads keys of an INI file through IniFileSection in a process of its own, so that tests see
// what another program reads of a file:  ini_section_probe <file> <section> <type>:<key>...
// prints one line per key: its value in a canonical text, or "<missing>". Types: text, wide
// (printed as UTF-8), bool, int, double, ints and floats (joined with ','), doubles (the 1-based
// array read with n = 8: count, ':', values) and strings (split on ';', joined with '|').
#include <cstdio>
#include <string>
#include <vector>

#include "zenutl/ini_file_section.h"

namespace {

template <typename T>
std::string Join(const T* values, std::size_t count, const char* separator) {
  std::string text;
  char item[32];
  for (std::size_t i = 0; i < count; ++i) {
    std::snprintf(item, sizeof(item), "%.17g", static_cast<double>(values[i]));
    text += (i ? separator : "") + std::string(item);
  }
  return text;
}

std::string Probe(const IniFileSection& section, const std::string& type, const char* key) {
  CString text;
  std::wstring wide;
  bool b = false;
  int i = 0;
  double d = 0;
  std::vector<int> ints;
  std::vector<float> floats;
  std::vector<CString> strings;
  double array[10];
  if (type == "text" && section.ReadKey(key, text)) return text.str();
  if (type == "wide" && section.ReadKey(key, wide)) return CString(CStringW(wide)).str();
  if (type == "bool" && section.ReadBool(key, b)) return b ? "1" : "0";
  if (type == "int" && section.ReadInt(key, i)) return std::to_string(i);
  if (type == "double" && section.ReadDouble(key, d)) return Join(&d, 1, "");
  if (type == "ints" && section.ReadIntVector(key, ints))
    return Join(ints.data(), ints.size(), ",");
  if (type == "floats" && section.ReadFloatVector(key, floats)) {
    return Join(floats.data(), floats.size(), ",");
  }
  if (type == "doubles") {
    const int count = section.ReadDoubleVector(key, array, 8);
    return std::to_string(count) + ":" + Join(array + 1, count, ",");
  }
  if (type == "strings") {
    std::string joined = std::to_string(section.ReadStringVector(key, strings, ';')) + ":";
    for (std::size_t n = 0; n < strings.size(); ++n) joined += (n ? "|" : "") + strings[n].str();
    return joined;
  }
  return "<missing>";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const IniFileSection section(argv[1], argv[2]);
  for (int i = 3; i < argc; ++i) {
    const std::string request = argv[i];
    const std::string::size_type colon = request.find(':');
    if (colon == std::string::npos) return 2;
    const std::string key = request.substr(colon + 1);
    std::printf("%s\n", Probe(section, request.substr(0, colon), key.c_str()).c_str());
  }
  return 0;
}
