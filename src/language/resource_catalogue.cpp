#include "language/resource_catalogue.h"

#include <cstddef>
#include <string>

#include "platform/file_bytes.h"
#include "platform/native_path.h"

namespace zenutl {
namespace language {
namespace {

const char kMagicLine[] = "zenutl-catalogue 1";

bool IsBlank(char ch) {
  return ch == ' ' || ch == '\t';
}

int HexValue(char ch) {
  if (ch >= '0' && ch <= '9') return ch - '0';
  if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
  if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
  return -1;
}

// Reads the fields of one catalogue line from left to right and remembers the first problem.
class LineReader {
 public:
  explicit LineReader(const std::string& line) : line_(line) {}

  bool AtEnd() const { return pos_ >= line_.size(); }
  void SkipBlanks() {
    while (!AtEnd() && IsBlank(line_[pos_])) ++pos_;
  }
  std::string Word() {
    SkipBlanks();
    const std::size_t start = pos_;
    while (!AtEnd() && !IsBlank(line_[pos_])) ++pos_;
    return line_.substr(start, pos_ - start);
  }
  // A decimal or 0x-hexadecimal number of 32 bits.
  bool Number(const char* what, unsigned int& value, std::string& error) {
    const std::string word = Word();
    if (word.empty()) {
      error = std::string("missing ") + what;
      return false;
    }
    const bool hex = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
    const unsigned long long base = hex ? 16 : 10;
    unsigned long long total = 0;
    for (std::size_t i = hex ? 2 : 0; i < word.size(); ++i) {
      const int digit = HexValue(word[i]);
      if (digit < 0 || static_cast<unsigned long long>(digit) >= base) {
        error = std::string("bad ") + what + " '" + word + "'";
        return false;
      }
      total = total * base + static_cast<unsigned long long>(digit);
      if (total > 0xFFFFFFFFull) {
        error = std::string(what) + " '" + word + "' is larger than 4294967295";
        return false;
      }
    }
    value = static_cast<unsigned int>(total);
    return true;
  }
  // Everything after the one blank that ends the previous field.
  std::string RestAfterSeparator() {
    if (AtEnd()) return std::string();
    return line_.substr(pos_ + 1);
  }
  std::string RestTrimmed() {
    SkipBlanks();
    std::size_t end = line_.size();
    while (end > pos_ && IsBlank(line_[end - 1])) --end;
    return line_.substr(pos_, end - pos_);
  }

 private:
  const std::string& line_;
  std::size_t pos_ = 0;
};

bool DecodeText(const std::string& raw, std::string& text, std::string& error) {
  text.clear();
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] != '\\') {
      text += raw[i];
      continue;
    }
    if (++i >= raw.size()) {
      error = "a text ends in a lone backslash";
      return false;
    }
    switch (raw[i]) {
      case '\\':
        text += '\\';
        break;
      case 'n':
        text += '\n';
        break;
      case 'r':
        text += '\r';
        break;
      case 't':
        text += '\t';
        break;
      case 'x': {
        const int high = i + 1 < raw.size() ? HexValue(raw[i + 1]) : -1;
        const int low = i + 2 < raw.size() ? HexValue(raw[i + 2]) : -1;
        if (high < 0 || low < 0) {
          error = "\\x needs two hex digits";
          return false;
        }
        if (high == 0 && low == 0) {
          error = "\\x00 can not be part of a text";
          return false;
        }
        text += static_cast<char>(high * 16 + low);
        i += 2;
        break;
      }
      default:
        error = std::string("unknown escape '\\") + raw[i] + "'";
        return false;
    }
  }
  return true;
}

bool DecodeHex(const std::string& raw, std::string& bytes, std::string& error) {
  bytes.clear();
  for (std::size_t i = 0; i < raw.size();) {
    if (IsBlank(raw[i])) {
      ++i;
      continue;
    }
    const int high = HexValue(raw[i]);
    const int low = i + 1 < raw.size() ? HexValue(raw[i + 1]) : -1;
    if (high < 0 || low < 0) {
      error = "hex bytes must be pairs of hex digits";
      return false;
    }
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return true;
}

std::string ResolvePath(const std::string& folder, const std::string& written) {
  const std::string native = zenutl::platform::ToNativePath(written);
  if (!native.empty() && native[0] == '/') return native;
  return folder.empty() ? native : folder + "/" + native;
}

bool ReadStringEntry(LineReader& reader, ZnModule& module, std::string& error) {
  unsigned int id = 0;
  if (!reader.Number("string id", id, error)) return false;
  std::string text;
  if (!DecodeText(reader.RestAfterSeparator(), text, error)) return false;
  if (!module.strings.emplace(id, text).second) {
    error = "string " + std::to_string(id) + " is defined twice";
    return false;
  }
  return true;
}

bool ReadResourceEntry(const std::string& keyword, LineReader& reader, const std::string& folder,
                       ZnModule& module, std::string& error) {
  unsigned int type = 0;
  unsigned int id = 0;
  if (!reader.Number("resource type", type, error) || !reader.Number("resource id", id, error)) {
    return false;
  }
  std::string bytes;
  if (keyword == "hex") {
    if (!DecodeHex(reader.RestTrimmed(), bytes, error)) return false;
  } else {
    const std::string written = reader.RestTrimmed();
    if (written.empty()) {
      error = "missing file path";
      return false;
    }
    std::string reason;
    if (!zenutl::platform::ReadFileBytes(ResolvePath(folder, written), bytes, reason)) {
      error = "can not read '" + written + "': " + reason;
      return false;
    }
  }
  if (!module.resources.emplace(std::make_pair(type, id), bytes).second) {
    error =
        "resource " + std::to_string(id) + " of type " + std::to_string(type) + " is defined twice";
    return false;
  }
  return true;
}

bool ReadEntry(const std::string& line, const std::string& folder, ZnModule& module,
               std::string& error) {
  LineReader reader(line);
  reader.SkipBlanks();
  if (reader.AtEnd() || line[line.find_first_not_of(" \t")] == '#') return true;
  const std::string keyword = reader.Word();
  if (keyword == "string") return ReadStringEntry(reader, module, error);
  if (keyword == "hex" || keyword == "file") {
    return ReadResourceEntry(keyword, reader, folder, module, error);
  }
  error = "unknown entry '" + keyword + "'";
  return false;
}

}  // namespace

bool ParseCatalogue(const std::string& content, const std::string& folder, const std::string& name,
                    ZnModule& module, std::string& error) {
  std::size_t start = 0;
  // A UTF-8 byte order mark from an editor is not part of the first line.
  if (content.compare(0, 3, "\xEF\xBB\xBF") == 0) start = 3;
  for (int lineNumber = 1; start <= content.size(); ++lineNumber) {
    std::size_t end = content.find('\n', start);
    const bool last = end == std::string::npos;
    if (last) end = content.size();
    std::string line = content.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    start = end + 1;

    std::string problem;
    if (lineNumber == 1) {
      if (line != kMagicLine) problem = std::string("the first line must be '") + kMagicLine + "'";
    } else {
      ReadEntry(line, folder, module, problem);  // leaves `problem` empty when the line is good
    }
    if (!problem.empty()) {
      error = name + ":" + std::to_string(lineNumber) + ": " + problem;
      return false;
    }
    if (last) break;
  }
  return true;
}

}  // namespace language
}  // namespace zenutl
