// Reads keys of an INI file through IniFileSection in a process of its own, so that tests can
// check what another program sees of a file.
//
//   ini_section_probe <file> <section> <type>:<key>...
//
// prints one line per request: the value in a canonical text, or "<missing>". Types: text, wide
// (printed as UTF-8), bool, int, float, double, ints, bools, floats (vectors joined with ','),
// doubles (the 1-based array read with n = 8, printed as count then values) and strings (split on
// ';', joined with '|').
#include <cstdio>
#include <string>
#include <vector>

#include "zenutl/cstring.h"
#include "zenutl/ini_file_section.h"

namespace {

template <typename T>
std::string Join(const std::vector<T>& values, const char* format) {
  std::string text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    char item[64];
    std::snprintf(item, sizeof(item), format, static_cast<double>(values[i]));
    text += (i ? "," : "") + std::string(item);
  }
  return text;
}

std::string Probe(const IniFileSection& section, const std::string& type, const char* key) {
  bool ok = false;
  char item[64];
  if (type == "text") {
    CString value;
    ok = section.ReadKey(key, value);
    return ok ? value.str() : "<missing>";
  }
  if (type == "wide") {
    std::wstring value;
    ok = section.ReadKey(key, value);
    return ok ? CString(CStringW(value)).str() : "<missing>";
  }
  if (type == "bool" || type == "int") {
    bool b = false;
    int i = 0;
    ok = type == "bool" ? section.ReadBool(key, b) : section.ReadInt(key, i);
    std::snprintf(item, sizeof(item), "%d", type == "bool" ? static_cast<int>(b) : i);
  } else if (type == "float") {
    float f = 0;
    ok = section.ReadFloat(key, f);
    std::snprintf(item, sizeof(item), "%.9g", static_cast<double>(f));
  } else if (type == "double") {
    double d = 0;
    ok = section.ReadDouble(key, d);
    std::snprintf(item, sizeof(item), "%.17g", d);
  } else if (type == "ints") {
    std::vector<int> values;
    ok = section.ReadIntVector(key, values);
    std::vector<double> asDouble(values.begin(), values.end());
    return ok ? Join(asDouble, "%.0f") : "<missing>";
  } else if (type == "bools") {
    std::vector<bool> values;
    ok = section.ReadBoolVector(key, values);
    std::vector<double> asDouble(values.begin(), values.end());
    return ok ? Join(asDouble, "%.0f") : "<missing>";
  } else if (type == "floats") {
    std::vector<float> values;
    ok = section.ReadFloatVector(key, values);
    return ok ? Join(values, "%.9g") : "<missing>";
  } else if (type == "doubles") {
    double values[10] = {0};
    const int count = section.ReadDoubleVector(key, values, 8);
    std::vector<double> read(values + 1, values + 1 + count);
    return std::to_string(count) + ":" + Join(read, "%.17g");
  } else if (type == "strings") {
    std::vector<CString> values;
    const int count = section.ReadStringVector(key, values, ';');
    std::string text = std::to_string(count) + ":";
    for (std::size_t i = 0; i < values.size(); ++i) text += (i ? "|" : "") + values[i].str();
    return text;
  } else {
    return "<unknown type " + type + ">";
  }
  return ok ? item : "<missing>";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s <file> <section> <type>:<key>...\n", argv[0]);
    return 2;
  }
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
