// The INI engine on arbitrary file bytes, with one edit.
//
// Input: three control bytes (the edit, and which section and key it names), then the file.
// Invariants beyond "no crash": an unedited file serialises to exactly its bytes; after the edit
// the edited key reads as written (or is gone), every other key keeps its value, and the
// serialised text reads back as the same sections, keys and values.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/ini_document.h"

using zenutl::platform::IniDocument;

namespace {

typedef std::map<std::pair<std::string, std::string>, std::string> Contents;

// The names of a list that holds each followed by a zero.
std::vector<std::string> Names(const std::string& list) {
  std::vector<std::string> names;
  for (std::size_t start = 0; start < list.size();) {
    const std::size_t end = list.find('\0', start);
    names.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return names;
}

// Every key that counts, by folded section and key name, with its value.
Contents Read(const IniDocument& document) {
  Contents contents;
  for (const std::string& section : Names(document.SectionNameList())) {
    for (const std::string& key : Names(document.KeyNameList(section))) {
      const std::string* value = document.FindValue(section, key);
      if (value == nullptr) std::abort();
      contents[{IniDocument::Fold(section), IniDocument::Fold(key)}] = *value;
    }
  }
  return contents;
}

// The `index`-th of `names`, or a name the file does not have.
std::string Pick(const std::vector<std::string>& names, std::uint8_t index, const char* fresh) {
  return index < names.size() ? names[index] : std::string(fresh);
}

// Whether the file holds the character zero, which the zero-separated name lists can't carry:
// a zero byte in an 8-bit file, a zero unit in a UTF-16LE one.
bool HoldsZeroCharacter(const std::string& bytes) {
  if (bytes.compare(0, 2, "\xFF\xFE") != 0) return bytes.find('\0') != std::string::npos;
  for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
    if (bytes[i] == '\0' && bytes[i + 1] == '\0') return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data + 3), size - 3);
  if (HoldsZeroCharacter(bytes)) return 0;
  IniDocument document(bytes);
  if (document.Serialize() != bytes) std::abort();
  Contents expected = Read(document);

  const std::string section = Pick(Names(document.SectionNameList()), data[1], " New Section ");
  const std::string key = Pick(Names(document.KeyNameList(section)), data[2], "NewKey");
  const std::pair<std::string, std::string> edited{IniDocument::Fold(IniDocument::Trim(section)),
                                                   IniDocument::Fold(IniDocument::Trim(key))};
  switch (data[0] % 4) {
    case 1: {
      const std::string value = data[0] & 4 ? " spaced value\t" : "x=y;z";
      if (!IniDocument::IsWritableSection(section) || !IniDocument::IsWritableKey(key) ||
          !document.CanHold(section) || !document.CanHold(key)) {
        return 0;
      }
      document.SetValue(section, key, value);
      // Values read back as written, blanks and all.
      const std::string* read = document.FindValue(section, key);
      if (read == nullptr || *read != value) std::abort();
      expected[edited] = *read;
      break;
    }
    case 2:
      document.RemoveKey(section, key);
      if (document.FindValue(section, key) != nullptr) std::abort();
      expected.erase(edited);
      break;
    case 3:
      document.RemoveSection(section);
      if (!document.KeyNameList(section).empty()) std::abort();
      for (auto it = expected.begin(); it != expected.end();) {
        it = it->first.first == edited.first ? expected.erase(it) : std::next(it);
      }
      break;
    default:
      break;
  }
  if (Read(document) != expected) std::abort();
  if (document.ReadsBackAsItself() && Read(IniDocument(document.Serialize())) != Read(document)) {
    std::abort();
  }
  return 0;
}
