// The text of one INI file, parsed for lookups and edited line by line.
//
// An `IniDocument` keeps every line of the file as it was read, with its own line ending, and
// knows which lines are section headers ("[name]") and which are keys ("name=value"). Edits touch
// only the lines they concern, so comments, blank lines, unknown lines, the order of everything,
// the line endings and the file's encoding survive a rewrite. The rules are those of the classic
// Windows profile files:
//
//   - section and key names compare without regard to ASCII case;
//   - blanks (spaces, tabs) around names and values are not part of them;
//   - a value enclosed in one matching pair of double or single quotes is read without them:
//     `k = "  x  "` reads as `  x  `, `k=""x""` as `"x"`, `k="x'` as `"x'`;
//   - a line whose first non-blank character is ';' is a comment;
//   - LF, CRLF and a bare CR each end a line; new lines take the file's first line ending (LF in
//     a file that has none);
//   - the first of two sections or two keys with the same name is the one that counts;
//   - a key keeps the spelling it was first written with; a replaced value keeps its key's text;
//   - lines before the first section header belong to no section.
//
// Writing a value that the reading rules would change (blanks at either end, or matching quotes
// around it) encloses it in double quotes, so that every value reads back as it was written.
//
// Encodings: bytes are taken as they are, and a UTF-8 byte-order mark at the start is kept and
// not read as part of the first line. A file that starts with the UTF-16LE byte-order mark is
// decoded: names and values are UTF-8 here, and the rewrite is UTF-16LE again (a surrogate
// without its partner survives as the three-byte form of its number). This class does no I/O:
// profile.h reads and writes the files.
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

  // The file's bytes, including any edits, in the file's encoding.
  std::string Serialize() const;
  // Whether those bytes read back as this document. False only for an 8-bit file that an edit
  // left beginning with the bytes FF FE (a stray line moved to the top), which every reader
  // takes for the byte-order mark of a UTF-16LE file.
  bool ReadsBackAsItself() const;

  // The value of `key` in `section` as read (see above); null when either is absent.
  const std::string* FindValue(const std::string& section, const std::string& key) const;
  // Each section name once, in file order, as first spelt, each followed by a zero. Kept ready
  // with the parse: programs ask for the list again and again with a growing buffer.
  const std::string& SectionNameList() const { return sectionNameList_; }
  // Each key name of `section` once, in file order, each followed by a zero; empty when the
  // section is absent.
  const std::string& KeyNameList(const std::string& section) const;

  // Edits; each answers whether the text changed. A new key goes after the last key of its
  // section, a new section at the end of the file. Setting the value a key already reads as
  // changes nothing.
  bool SetValue(const std::string& section, const std::string& key, const std::string& value);
  // Removes every line of `key` in the section that counts.
  bool RemoveKey(const std::string& section, const std::string& key);
  // Removes every section of that name: its header and its lines up to its last key. Comments
  // and blank lines after the last key stay, as they usually introduce what follows.
  bool RemoveSection(const std::string& section);

  // Whether the file's encoding can carry `text`: any bytes in an 8-bit file, UTF-8 in a UTF-16
  // one.
  bool CanHold(const std::string& text) const;

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
    std::string eol;   // "\n", "\r\n", "\r" or "" for a last line without one
    Kind kind;
    std::string name;         // section or key name, trimmed
    std::string value;        // for keys: the value as read
    std::size_t valueOffset;  // for keys: where the value's text starts in `text`
  };
  struct Section {
    std::size_t header;   // line of "[name]"
    std::size_t lastKey;  // last key line, or `header` when there is none
    std::unordered_map<std::string, std::size_t> keys;  // folded name -> first key line
    std::string keyNameList;                            // as KeyNameList answers
  };

  static Line ParseLine(std::string text, std::string eol);
  void SplitLines(const std::string& text, std::size_t position);
  void Reindex();
  const Section* FindSection(const std::string& section) const;
  void InsertLine(std::size_t position, const std::string& text);

  bool utf16_ = false;   // the file is UTF-16LE with its byte-order mark
  std::string bom_;      // a UTF-8 byte-order mark, kept
  std::string oddByte_;  // a UTF-16 file's last byte when their number is odd, kept
  std::string newline_ = "\n";
  std::vector<Line> lines_;
  std::vector<Section> sections_;                              // every header, in file order
  std::unordered_map<std::string, std::size_t> firstSection_;  // folded name -> sections_ index
  std::string sectionNameList_;                                // as SectionNameList answers
};

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_INI_DOCUMENT_H_
