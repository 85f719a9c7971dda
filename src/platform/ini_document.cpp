#include "platform/ini_document.h"

#include <algorithm>

#include "zenutl/cstring.h"

namespace zenutl {
namespace platform {
namespace {

const char kBom[] = "\xEF\xBB\xBF";
const char kUtf16LeBom[] = "\xFF\xFE";

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

bool HasLineBreak(const std::string& text) {
  return text.find_first_of("\r\n") != std::string::npos;
}

bool IsQuote(char c) {
  return c == '"' || c == '\'';
}

// What a key's text reads as: blanks trimmed, then one pair of matching quotes removed.
std::string ValueOfText(const std::string& text) {
  std::string value = IniDocument::Trim(text);
  if (value.size() >= 2 && IsQuote(value.front()) && value.back() == value.front()) {
    return value.substr(1, value.size() - 2);
  }
  return value;
}

// The text that reads back as `value`: itself, or itself in double quotes when the reading rules
// would change it.
std::string TextOfValue(const std::string& value) {
  return ValueOfText(value) == value ? value : '"' + value + '"';
}

// The UTF-16LE units from `position` on, as UTF-8; `oddByte` gets a last byte without a partner.
std::string Utf16LeToUtf8(const std::string& bytes, std::size_t position, std::string& oddByte) {
  const auto unitAt = [&bytes](std::size_t at) {
    return static_cast<wchar_t>(static_cast<unsigned char>(bytes[at]) |
                                static_cast<unsigned char>(bytes[at + 1]) << 8);
  };
  std::wstring characters;
  characters.reserve((bytes.size() - position) / 2);
  for (; position + 1 < bytes.size(); position += 2) {
    wchar_t code = unitAt(position);
    if (code >= 0xD800 && code < 0xDC00 && position + 3 < bytes.size()) {
      const wchar_t low = unitAt(position + 2);
      if (low >= 0xDC00 && low < 0xE000) {
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        position += 2;
      }
    }
    characters += code;
  }
  oddByte = bytes.substr(position);
  return detail::WideToUtf8(characters);
}

void AppendUtf16Le(unsigned long unit, std::string& out) {
  out += static_cast<char>(unit & 0xFF);
  out += static_cast<char>(unit >> 8);
}

std::string Utf8ToUtf16Le(const std::string& text) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  for (const wchar_t character : detail::Utf8ToWide(text)) {
    const auto code = static_cast<unsigned long>(character);
    if (code < 0x10000) {
      AppendUtf16Le(code, bytes);
    } else {
      AppendUtf16Le(0xD800 + ((code - 0x10000) >> 10), bytes);
      AppendUtf16Le(0xDC00 + ((code - 0x10000) & 0x3FF), bytes);
    }
  }
  return bytes;
}

// Whether `text` is UTF-8 that the conversions above carry through unchanged (a surrogate's
// number in three bytes included, as a lone one read from a UTF-16 file is written here).
bool IsUtf8(const std::string& text) {
  return detail::WideToUtf8(detail::Utf8ToWide(text)) == text;
}

}  // namespace

std::string IniDocument::Trim(const std::string& text) {
  std::size_t first = 0;
  std::size_t last = text.size();
  while (first < last && IsBlank(text[first])) ++first;
  while (last > first && IsBlank(text[last - 1])) --last;
  return text.substr(first, last - first);
}

std::string IniDocument::Fold(const std::string& name) {
  std::string folded = name;
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return folded;
}

bool IniDocument::IsWritableSection(const std::string& section) {
  return !HasLineBreak(section) && section.find(']') == std::string::npos;
}

bool IniDocument::IsWritableKey(const std::string& key) {
  const std::string name = Trim(key);
  return !name.empty() && !HasLineBreak(name) && name.find('=') == std::string::npos &&
         name[0] != '[' && name[0] != ';';
}

bool IniDocument::IsWritableValue(const std::string& value) {
  return !HasLineBreak(value);
}

bool IniDocument::CanHold(const std::string& text) const {
  return !utf16_ || IsUtf8(text);
}

IniDocument::IniDocument(const std::string& bytes) {
  if (bytes.compare(0, 2, kUtf16LeBom) == 0) {
    utf16_ = true;
    SplitLines(Utf16LeToUtf8(bytes, 2, oddByte_), 0);
  } else if (bytes.compare(0, 3, kBom) == 0) {
    bom_ = kBom;
    SplitLines(bytes, 3);
  } else {
    SplitLines(bytes, 0);
  }
  Reindex();
}

void IniDocument::SplitLines(const std::string& text, std::size_t position) {
  bool styleKnown = false;
  while (position < text.size()) {
    std::size_t end = text.find_first_of("\r\n", position);
    std::string eol;
    if (end == std::string::npos) {
      end = text.size();
    } else {
      const bool crlf = text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n';
      eol = crlf ? "\r\n" : text.substr(end, 1);
      if (!styleKnown) {
        newline_ = eol;
        styleKnown = true;
      }
    }
    lines_.push_back(ParseLine(text.substr(position, end - position), eol));
    position = end + eol.size();
  }
}

IniDocument::Line IniDocument::ParseLine(std::string text, std::string eol) {
  Line line{std::move(text), std::move(eol), Kind::kOther, std::string(), std::string(), 0};
  std::size_t first = 0;
  while (first < line.text.size() && IsBlank(line.text[first])) ++first;
  if (first == line.text.size()) {
    line.kind = Kind::kBlank;
  } else if (line.text[first] == ';') {
    line.kind = Kind::kComment;
  } else if (line.text[first] == '[') {
    line.kind = Kind::kHeader;
    const std::size_t close = line.text.find(']', first + 1);
    const std::size_t end = close == std::string::npos ? line.text.size() : close;
    line.name = Trim(line.text.substr(first + 1, end - first - 1));
  } else {
    const std::size_t equals = line.text.find('=', first);
    if (equals != std::string::npos) {
      line.name = Trim(line.text.substr(first, equals - first));
      if (!line.name.empty()) {
        line.kind = Kind::kKey;
        std::size_t valueStart = equals + 1;
        while (valueStart < line.text.size() && IsBlank(line.text[valueStart])) ++valueStart;
        line.valueOffset = valueStart;
        line.value = ValueOfText(line.text.substr(valueStart));
      }
    }
  }
  return line;
}

void IniDocument::Reindex() {
  sections_.clear();
  firstSection_.clear();
  sectionNameList_.clear();
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const Line& line = lines_[i];
    if (line.kind == Kind::kHeader) {
      sections_.push_back(Section{i, i, {}, {}});
      if (firstSection_.emplace(Fold(line.name), sections_.size() - 1).second) {
        sectionNameList_ += line.name;
        sectionNameList_ += '\0';
      }
    } else if (line.kind == Kind::kKey && !sections_.empty()) {
      Section& section = sections_.back();
      section.lastKey = i;
      if (section.keys.emplace(Fold(line.name), i).second) {
        section.keyNameList += line.name;
        section.keyNameList += '\0';
      }
    }
  }
}

const IniDocument::Section* IniDocument::FindSection(const std::string& section) const {
  const auto found = firstSection_.find(Fold(Trim(section)));
  return found == firstSection_.end() ? nullptr : &sections_[found->second];
}

std::string IniDocument::Serialize() const {
  std::size_t size = bom_.size();
  for (const Line& line : lines_) size += line.text.size() + line.eol.size();
  std::string text;
  text.reserve(size);
  text += bom_;
  for (const Line& line : lines_) {
    text += line.text;
    text += line.eol;
  }
  if (!utf16_) return text;
  return kUtf16LeBom + Utf8ToUtf16Le(text) + oddByte_;
}

bool IniDocument::ReadsBackAsItself() const {
  if (utf16_ || !bom_.empty()) return true;
  std::string start;
  for (std::size_t i = 0; i < lines_.size() && start.size() < 2; ++i) {
    start += lines_[i].text + lines_[i].eol;
  }
  return start.compare(0, 2, kUtf16LeBom) != 0;
}

const std::string* IniDocument::FindValue(const std::string& section,
                                          const std::string& key) const {
  const Section* found = FindSection(section);
  if (found == nullptr) return nullptr;
  const auto keyLine = found->keys.find(Fold(Trim(key)));
  return keyLine == found->keys.end() ? nullptr : &lines_[keyLine->second].value;
}

const std::string& IniDocument::KeyNameList(const std::string& section) const {
  static const std::string* const kNone = new std::string();
  const Section* found = FindSection(section);
  return found == nullptr ? *kNone : found->keyNameList;
}

void IniDocument::InsertLine(std::size_t position, const std::string& text) {
  // The line before must end, or the new one would join it.
  if (position > 0 && lines_[position - 1].eol.empty()) lines_[position - 1].eol = newline_;
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(position), ParseLine(text, newline_));
}

bool IniDocument::SetValue(const std::string& section, const std::string& key,
                           const std::string& value) {
  const std::string sectionName = Trim(section);
  const std::string keyName = Trim(key);
  const Section* found = FindSection(sectionName);
  if (found == nullptr) {
    InsertLine(lines_.size(), "[" + sectionName + "]");
    InsertLine(lines_.size(), keyName + "=" + TextOfValue(value));
    Reindex();
    return true;
  }
  const auto keyLine = found->keys.find(Fold(keyName));
  if (keyLine == found->keys.end()) {
    InsertLine(found->lastKey + 1, keyName + "=" + TextOfValue(value));
    Reindex();
    return true;
  }
  Line& line = lines_[keyLine->second];
  if (line.value == value) return false;
  line = ParseLine(line.text.substr(0, line.valueOffset) + TextOfValue(value), line.eol);
  return true;
}

bool IniDocument::RemoveKey(const std::string& section, const std::string& key) {
  const Section* found = FindSection(section);
  if (found == nullptr) return false;
  const std::string folded = Fold(Trim(key));
  const std::size_t first = found->header + 1;
  const std::size_t last = found->lastKey;
  bool removed = false;
  for (std::size_t i = last; i >= first && i <= last; --i) {
    if (lines_[i].kind == Kind::kKey && Fold(lines_[i].name) == folded) {
      lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(i));
      removed = true;
    }
  }
  if (removed) Reindex();
  return removed;
}

bool IniDocument::RemoveSection(const std::string& section) {
  const std::string folded = Fold(Trim(section));
  bool removed = false;
  for (std::size_t i = sections_.size(); i-- > 0;) {
    const Section& victim = sections_[i];
    if (Fold(lines_[victim.header].name) != folded) continue;
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(victim.header),
                 lines_.begin() + static_cast<std::ptrdiff_t>(victim.lastKey + 1));
    removed = true;
  }
  if (removed) Reindex();
  return removed;
}

}  // namespace platform
}  // namespace zenutl
