#include "zenutl/configuration_section.h"

#include <boost/format.hpp>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <memory>
#include <sstream>

#include "zenutl/locales.h"
#include "zenutl/zn_string.h"
#include "zenutl/zn_string_algorithms.h"

namespace {

// Base-10 integer of a whole text, as the stores have always read it: strtol semantics with the
// end pointer on the terminator, and the result clamped to the range of int.
bool ParseWholeInt(const char* text, int& value) {
  char* end = nullptr;
  errno = 0;
  const long parsed = std::strtol(text, &end, 10);
  if (end == nullptr || *end != '\0') return false;
  if (parsed > INT_MAX) {
    value = INT_MAX;
  } else if (parsed < INT_MIN) {
    value = INT_MIN;
  } else {
    value = static_cast<int>(parsed);
  }
  return true;
}

// Walks a semicolon-separated text and hands each token to `take`, which answers false to stop.
template <typename TakeToken>
void ForEachSemicolonToken(const CString& text, TakeToken take) {
  int position = 0;
  for (;;) {
    const int semicolon = text.Find(';', position);
    const CString token =
        semicolon < 0 ? text.Mid(position) : text.Mid(position, semicolon - position);
    if (!take(token)) return;
    if (semicolon < 0) return;
    position = semicolon + 1;
  }
}

// The shared shape of the vector reads: missing key false, empty text true with the vector
// untouched, otherwise cleared and filled up to the first token that doesn't convert.
template <typename T, typename Convert>
bool ReadSemicolonVector(const ConfigurationSection& section, const char* key,
                         std::vector<T>& values, Convert convert) {
  CString text;
  if (!section.ReadKey(key, text)) return false;
  if (text.IsEmpty()) return true;
  values.clear();
  ForEachSemicolonToken(text, [&](const CString& token) {
    T value;
    if (!convert(token, value)) return false;
    values.push_back(value);
    return true;
  });
  return true;
}

// The 1-based array reads: out[1] upward, leaving only once the count exceeds n.
template <typename T>
int ReadOneBasedArray(const ConfigurationSection& section, const char* key, T* out, int n) {
  CString text;
  if (!section.ReadKey(key, text)) return 0;
  int count = 0;
  ForEachSemicolonToken(text, [&](const CString& token) {
    if (count > n) return false;
    char* end = nullptr;
    const double value = ZnString::znstrtod(token, &end);
    if (end == nullptr || *end != '\0') return false;
    out[++count] = static_cast<T>(value);
    return true;
  });
  return count;
}

// The 1-based array writes: "%g" of values[1] to values[n], always with a decimal point.
template <typename T>
std::string FormatOneBasedArray(const T* values, unsigned int n) {
  const std::locale pointLocale = Locales::GetLocale(Locales::eDecimalPoint);
  std::string text = (boost::format("%g", pointLocale) % values[1]).str();
  for (unsigned int i = 2; i <= n; ++i) {
    text += (boost::format(";%g", pointLocale) % values[i]).str();
  }
  return text;
}

template <typename T>
CString JoinInts(const std::vector<T>& values) {
  CString text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    text.AppendFormat(i == 0 ? "%d" : ";%d", static_cast<int>(values[i]));
  }
  return text;
}

}  // namespace

ConfigurationSection::~ConfigurationSection() = default;

ConfigurationSection* ConfigurationSection::CopyAndChangeSection(const char* name) const {
  ConfigurationSection* copy = Copy();
  if (copy != nullptr) copy->ChangeSection(name);
  return copy;
}

ConfigurationSection* ConfigurationSection::CopyAndChangeSubSection(const char* name, int index) {
  std::unique_ptr<ConfigurationSection> copy(Copy());
  if (!copy || !copy->ChangeSubSection(name, index)) return nullptr;
  return copy.release();
}

ConfigurationSection* ConfigurationSection::CopyAndChangeSubSection(const char* name) const {
  std::unique_ptr<ConfigurationSection> copy(Copy());
  if (!copy || !copy->ChangeSubSection(name)) return nullptr;
  return copy.release();
}

std::vector<boost::shared_ptr<ConfigurationSection> >* ConfigurationSection::GetAllSubSections(
    const char*) const {
  return nullptr;
}

int ConfigurationSection::NumSubSections(const char*) const {
  return -1;
}

bool ConfigurationSection::ReadBool(const char* key, bool& value) const {
  CString text;
  if (!ReadKey(key, text)) return false;
  value = text.Compare("0") != 0;
  return true;
}

bool ConfigurationSection::ReadBoolVector(const char* key, std::vector<bool>& values) const {
  return ReadSemicolonVector(*this, key, values, [](const CString& token, bool& value) {
    value = token.Compare("0") != 0;
    return true;
  });
}

bool ConfigurationSection::ReadFloat(const char* key, float& value) const {
  CString text;
  if (!ReadKey(key, text)) return false;
  char* end = nullptr;
  value = static_cast<float>(ZnString::znstrtod(text, &end));
  return end != nullptr && *end == '\0';
}

bool ConfigurationSection::ReadFloatVector(const char* key, std::vector<float>& values) const {
  return ReadSemicolonVector(*this, key, values, [](const CString& token, float& value) {
    return ZnString::ToFloat(token, value);
  });
}

int ConfigurationSection::ReadFloatVector(const char* key, float* out, int n) const {
  return ReadOneBasedArray(*this, key, out, n);
}

bool ConfigurationSection::ReadDouble(const char* key, double& value) const {
  CString text;
  if (!ReadKey(key, text)) return false;
  char* end = nullptr;
  value = ZnString::znstrtod(text, &end);
  return end != nullptr && *end == '\0';
}

int ConfigurationSection::ReadDoubleVector(const char* key, double* out, int n) const {
  return ReadOneBasedArray(*this, key, out, n);
}

bool ConfigurationSection::ReadInt(const char* key, int& value) const {
  CString text;
  if (!ReadKey(key, text)) return false;
  return ParseWholeInt(text, value);
}

bool ConfigurationSection::ReadIntVector(const char* key, std::vector<int>& values) const {
  return ReadSemicolonVector(*this, key, values, [](const CString& token, int& value) {
    return ParseWholeInt(token, value);
  });
}

bool ConfigurationSection::ReadKey(const char* key, char* buffer, unsigned int size) const {
  CString text;
  if (!ReadKey(key, text)) return false;
  const unsigned int length = static_cast<unsigned int>(text.GetLength());
  const unsigned int count = size < length ? size : length;
  std::memcpy(buffer, text.GetString(), count);
  buffer[count] = '\0';
  return true;
}

bool ConfigurationSection::ReadKey(const char* key, std::string& value) const {
  CString text;
  if (!ReadKey(key, text)) return false;
  value = text.str();
  return true;
}

int ConfigurationSection::ReadStringVector(const char* key, std::vector<CString>& values,
                                           char separator) const {
  CString text;
  if (!ReadKey(key, text)) return 0;
  values.clear();
  if (text.IsEmpty()) return 0;
  int position = 0;
  for (;;) {
    const int found = text.Find(separator, position);
    if (found < 0) {
      values.push_back(text.Mid(position));
      break;
    }
    values.push_back(text.Mid(position, found - position));
    position = found + 1;
  }
  return static_cast<int>(values.size());
}

bool ConfigurationSection::WriteBool(const char* key, bool value) {
  return WriteKey(key, value ? "1" : "0");
}

void ConfigurationSection::WriteBoolVector(const char* key, const std::vector<bool>& values) {
  WriteKey(key, JoinInts(values).GetString());
}

bool ConfigurationSection::WriteFloat(const char* key, double value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << value;
  return WriteKey(key, stream.str().c_str());
}

void ConfigurationSection::WriteDoubleVector(const char* key, const double* values,
                                             unsigned int n) {
  WriteKey(key, FormatOneBasedArray(values, n).c_str());
}

void ConfigurationSection::WriteFloatVector(const char* key, const std::vector<float>& values) {
  // Printed by the C runtime on purpose: this one form follows the runtime's LC_NUMERIC.
  CString text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    text.AppendFormat(i == 0 ? "%g" : ";%g", static_cast<double>(values[i]));
  }
  WriteKey(key, text.GetString());
}

void ConfigurationSection::WriteFloatVector(const char* key, const float* values, unsigned int n) {
  WriteKey(key, FormatOneBasedArray(values, n).c_str());
}

bool ConfigurationSection::WriteInt(const char* key, int value) {
  CString text;
  text.Format("%d", value);
  return WriteKey(key, text.GetString());
}

void ConfigurationSection::WriteIntVector(const char* key, const std::vector<int>& values) {
  WriteKey(key, JoinInts(values).GetString());
}

bool ConfigurationSection::WriteStringVector(const char* key, const std::vector<CString>& values,
                                             char separator) {
  CString text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text += separator;
    text += values[i];
  }
  return WriteKey(key, text.GetString());
}

bool ConfigurationSection::WriteKey(const char* key, const std::wstring& value) {
  return WriteKey(key, value.c_str());
}

bool ConfigurationSection::WriteKey(const char* key, const std::string& value) {
  return WriteKey(key, value.c_str());
}

namespace ConfigurationSectionUtilities {

ConfigurationSection* CreateSubSection(const ConfigurationSection* section, const char* path) {
  CString rest(path);
  const ConfigurationSection* current = section;
  // The cursor reached so far when it is not the caller's; a step that throws (an illegal name
  // in an XML store) must not take it, and the document it holds, with it.
  std::unique_ptr<ConfigurationSection> intermediate;
  ConfigurationSection* reached = nullptr;
  do {
    const CString component = ZnString::SplitString(rest, '/');
    reached = current->CreateSubSection(component);
    if (reached != intermediate.get()) intermediate.reset(reached != section ? reached : nullptr);
    current = reached;
  } while (reached != nullptr && !rest.IsEmpty());
  intermediate.release();
  return reached;
}

bool HasSubSection(const ConfigurationSection* section, const char* path, int index) {
  std::unique_ptr<ConfigurationSection> cursor(section->Copy());
  if (!cursor) return false;
  CString rest(path);
  while (!rest.IsEmpty()) {
    const CString component = ZnString::SplitString(rest, '/');
    if (!cursor->ChangeSubSection(component, index)) return false;
  }
  return true;
}

bool WriteStringVector(ConfigurationSection* section, const char* key,
                       const std::vector<std::string>& values, char separator) {
  std::ostringstream text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text << separator;
    text << values[i];
  }
  return section->WriteKey(key, text.str());
}

int ReadStringVector(const ConfigurationSection* section, const char* key,
                     std::vector<std::string>& values, char separator) {
  std::string text;
  if (!section->ReadKey(key, text)) return 0;
  values.clear();
  if (text.empty()) return 0;
  std::size_t position = 0;
  for (;;) {
    const std::size_t found = text.find(separator, position);
    if (found == std::string::npos) {
      values.push_back(text.substr(position));
      break;
    }
    values.push_back(text.substr(position, found - position));
    position = found + 1;
  }
  return static_cast<int>(values.size());
}

}  // namespace ConfigurationSectionUtilities
