#include "zenutl/ini_file_section.h"

#include <cstring>
#include <cwchar>

#include "platform/profile.h"

namespace {

// Stands in for "no value" in the profile reads: what comes back equal to it was absent.
const char kMissing[] = "!42!";
const wchar_t kMissingWide[] = L"!42!";

// The growth step, and the first size, of the buffer for lists of names.
const DWORD kNameListStep = 256;

CStringW Widen(const CString& text) {
  return CStringW(text);
}

// Lists all names through `fetch(buffer, capacity)`, which fills `buffer` with zero-terminated
// names and answers capacity - 2 when the list didn't fit.
template <typename Fetch>
std::vector<CString> FetchNameList(Fetch fetch) {
  std::vector<CString> names;
  DWORD capacity = kNameListStep;
  std::vector<char> buffer;
  DWORD returned = 0;
  for (;;) {
    buffer.resize(capacity);  // what the platform writes is all that is read back
    returned = fetch(buffer.data(), capacity);
    if (returned == 0) return names;
    if (returned != capacity - 2) break;
    capacity += kNameListStep;
  }
  // The names end at returned - 1, where the last one's terminator stands.
  const std::size_t length = returned - 1;
  std::size_t position = 0;
  while (position <= length) {
    const char* start = buffer.data() + position;
    const std::size_t nameLength = std::strlen(start);
    names.push_back(CString(start, static_cast<int>(nameLength)));
    position += nameLength + 1;
  }
  return names;
}

}  // namespace

IniFileSection::IniFileSection(const char* file, const char* section)
    : mIniFile(file), mSection(section) {}

IniFileSection::~IniFileSection() {
  zenutl::platform::WritePrivateProfileStringA(nullptr, nullptr, nullptr, mIniFile);
}

ConfigurationSection* IniFileSection::Copy() const {
  return new IniFileSection(*this);
}

void IniFileSection::ChangeSection(const char* name) {
  mSection = name;
}

void IniFileSection::ChangeIniFile(const char* file) {
  mIniFile = file;
}

bool IniFileSection::ChangeSubSection(const char*, int) {
  return false;
}

bool IniFileSection::ChangeSubSection(const char*) {
  return false;
}

ConfigurationSection* IniFileSection::CreateSubSection(const char*, int) const {
  return nullptr;
}

ConfigurationSection* IniFileSection::CreateSubSection(const char*) const {
  return nullptr;
}

bool IniFileSection::SupportsSubSections() const {
  return false;
}

bool IniFileSection::WriteToSection(ConfigurationSection*) const {
  return false;
}

bool IniFileSection::DeleteKey(const char* key) {
  return zenutl::platform::WritePrivateProfileStringA(mSection, key, nullptr, mIniFile) == 1;
}

bool IniFileSection::DeleteSection() {
  return zenutl::platform::WritePrivateProfileStringA(mSection, nullptr, nullptr, mIniFile) == 1;
}

bool IniFileSection::Flush() const {
  return zenutl::platform::WritePrivateProfileStringA(nullptr, nullptr, nullptr, mIniFile) == 1;
}

bool IniFileSection::IsEmpty() const {
  // The marker goes in the key's place here: only a key "!42!" holding "!42!" answers false.
  char buffer[64];
  zenutl::platform::GetPrivateProfileStringA(mSection, kMissing, "", buffer, sizeof(buffer),
                                             mIniFile);
  return std::strcmp(buffer, kMissing) != 0;
}

bool IniFileSection::HasSection(const char* name, int) const {
  char buffer[64];
  const DWORD returned = zenutl::platform::GetPrivateProfileStringA(
      name != nullptr ? name : mSection.GetString(), nullptr, "", buffer, sizeof(buffer), mIniFile);
  return returned > 0;
}

bool IniFileSection::HasKey(const char* key) const {
  // Room for the marker and its terminator plus one: a longer value can't compare equal.
  char buffer[6];
  zenutl::platform::GetPrivateProfileStringA(mSection, key, kMissing, buffer, sizeof(buffer),
                                             mIniFile);
  return std::strncmp(buffer, kMissing, sizeof(kMissing)) != 0;
}

bool IniFileSection::ReadKey(const char* key, CString& value) const {
  char buffer[1024];
  zenutl::platform::GetPrivateProfileStringA(mSection, key, kMissing, buffer, sizeof(buffer),
                                             mIniFile);
  if (std::strcmp(buffer, kMissing) == 0) return false;
  value = buffer;
  return true;
}

bool IniFileSection::ReadKey(const char* key, std::wstring& value) const {
  wchar_t buffer[1024];
  zenutl::platform::GetPrivateProfileStringW(Widen(mSection), Widen(CString(key)), kMissingWide,
                                             buffer, sizeof(buffer) / sizeof(buffer[0]),
                                             Widen(mIniFile));
  if (std::wcscmp(buffer, kMissingWide) == 0) return false;
  value = buffer;
  return true;
}

bool IniFileSection::ReadKey(const char* key, wchar_t* buffer, unsigned int size) const {
  if (buffer == nullptr || size == 0) return false;  // nothing to fill, nothing to compare
  zenutl::platform::GetPrivateProfileStringW(Widen(mSection), Widen(CString(key)), kMissingWide,
                                             buffer, size, Widen(mIniFile));
  return std::wcscmp(buffer, kMissingWide) != 0;
}

bool IniFileSection::WriteKey(const char* key, const char* value) {
  return zenutl::platform::WritePrivateProfileStringA(mSection, key, value, mIniFile) == 1;
}

bool IniFileSection::WriteKey(const char* key, const wchar_t* value) {
  return zenutl::platform::WritePrivateProfileStringW(Widen(mSection), Widen(CString(key)), value,
                                                      Widen(mIniFile)) == 1;
}

std::vector<CString> IniFileSection::GetSectionNames() {
  const CString file = mIniFile;
  return FetchNameList([&file](char* buffer, DWORD capacity) {
    return zenutl::platform::GetPrivateProfileSectionNamesA(buffer, capacity, file);
  });
}

std::vector<CString> IniFileSection::GetKeyNames() {
  const CString file = mIniFile;
  const CString section = mSection;
  return FetchNameList([&](char* buffer, DWORD capacity) {
    return zenutl::platform::GetPrivateProfileStringA(section, nullptr, "", buffer, capacity, file);
  });
}
