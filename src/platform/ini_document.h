// The text of one INI file, parsed for lookups and edited line by line.
//
// An `IniDocument` keeps every line of the file as it was read, with its own line ending, and
// knows which lines are section headers ("[name]") and which are keys ("name=value"). Edits touch
// only the lines they concern, so comments, blank lines, unknown lines, the order of everything
// and the line-ending style survive a rewrite. The rules are those of the classic Windows profile
// files:
//
//   - section and key names compare without regard to ASCII case;
//   - blanks (spaces, tabs) around names and values are not part of them;
//   - a line whose first non-blank character is ';' is a comment;
//   - the first of two sections or two keys with the same name is the one that counts;
//   - a key keeps the spelling it was first written with; a replaced value keeps its key's text;
//   - lines before the first section header belong to no section;
//   - values are taken literally: no quotes are removed, no escapes are read.
//
// Bytes are taken as they are; a UTF-8 byte-order mark at the start is kept and not read as part
// of the first line. This class does no I/O: profile.h reads and writes the files.
#ifndef ZENUTL_PLATFORM_INI_DOCUMENT_H_
#define ZENUTL_PLATFORM_INI_DOCUMENT_H_

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace zenutl {
namespace platform {

class IniDocument {
 public:
  IniDocument() = default;
  explicit IniDocument(const std::string& bytes);

  // The file's bytes, including any edits.
  std::string Serialize() const;

  // The value of `key` in `section`, blanks trimmed; null when either is absent.
  const std::string* FindValue(const std::string& section, const std::string& key) const;
  // Each section name once, in file order, as first spelt.
  std::vector<std::string> SectionNames() const;
  // Each key name of `section` once, in file order; empty when the section is absent.
  std::vector<std::string> KeyNames(const std::string& section) const;

  // Edits; each answers whether the text changed. A new key goes after the last key of its
  // section, a new section at the end of the file.
  bool SetValue(const std::string& section, const std::string& key, const std::string& value);
  // Removes every line of `key` in the section that counts.
  bool RemoveKey(const std::string& section, const std::string& key);
  // Removes every section of that name: its header and its lines up to its last key. Comments
  // and blank lines after the last key stay, as they usually introduce what follows.
  bool RemoveSection(const std::string& section);

  // Whether `section`, `key` and `value` can be written so that they read back the same:
  // no line breaks anywhere, no ']' in a section name, no '=' in a key, and a key that doesn't
  // start as a header or a comment would.
  static bool IsWritableSection(const std::string& section);
  static bool IsWritableKey(const std::string& key);
  static bool IsWritableValue(const std::string& value);

  // Trims spaces and tabs at both ends.
  static std::string Trim(const std::string& text);
  // ASCII lower case, the key of every name lookup.
  static std::string Fold(const std::string& name);

 private:
  enum class Kind { kBlank, kComment, kHeader, kKey, kOther };
  struct Line {
    std::string text;  // without the line ending
    std::string eol;   // "\n", "\r\n" or "" for a last line without one
    Kind kind;
    std::string name;         // section or key name, trimmed
    std::string value;        // for keys: the value, trimmed
    std::size_t valueOffset;  // for keys: where the value starts in `text`
  };
  struct Section {
    std::size_t header;   // line of "[name]"
    std::size_t lastKey;  // last key line, or `header` when there is none
    std::unordered_map<std::string, std::size_t> keys;  // folded name -> first key line
    std::vector<std::size_t> keyOrder;                  // first key lines, in file order
  };

  static Line ParseLine(std::string text, std::string eol);
  void Reindex();
  const Section* FindSection(const std::string& section) const;
  void InsertLine(std::size_t position, const std::string& text);

  std::string bom_;
  std::string newline_ = "\n";
  std::vector<Line> lines_;
  std::vector<Section> sections_;                              // every header, in file order
  std::unordered_map<std::string, std::size_t> firstSection_;  // folded name -> sections_ index
};

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_INI_DOCUMENT_H_
