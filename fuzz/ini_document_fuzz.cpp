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

// Every key that counts, by folded section and key name, with its value.
Contents Read(const IniDocument& document) {
  Contents contents;
  for (const std::string& section : document.SectionNames()) {
    for (const std::string& key : document.KeyNames(section)) {
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data + 3), size - 3);
  IniDocument document(bytes);
  if (document.Serialize() != bytes) std::abort();
  Contents expected = Read(document);

  const std::string section = Pick(document.SectionNames(), data[1], " New Section ");
  const std::string key = Pick(document.KeyNames(section), data[2], "NewKey");
  const std::pair<std::string, std::string> edited{IniDocument::Fold(IniDocument::Trim(section)),
                                                   IniDocument::Fold(IniDocument::Trim(key))};
  switch (data[0] % 4) {
    case 1: {
      const std::string value = data[0] & 4 ? " spaced value\t" : "x=y;z";
      if (!IniDocument::IsWritableSection(section) || !IniDocument::IsWritableKey(key)) return 0;
      document.SetValue(section, key, value);
      const std::string* read = document.FindValue(section, key);
      if (read == nullptr || *read != IniDocument::Trim(value)) std::abort();
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
      if (!document.KeyNames(section).empty()) std::abort();
      for (auto it = expected.begin(); it != expected.end();) {
        it = it->first.first == edited.first ? expected.erase(it) : std::next(it);
      }
      break;
    default:
      break;
  }
  if (Read(document) != expected) std::abort();
  if (Read(IniDocument(document.Serialize())) != Read(document)) std::abort();
  return 0;
}
