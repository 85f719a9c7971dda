#include "platform/ini_document.h"

#include <algorithm>

namespace zenutl {
namespace platform {
namespace {

const char kBom[] = "\xEF\xBB\xBF";

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

bool HasLineBreak(const std::string& text) {
  return text.find_first_of("\r\n") != std::string::npos;
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

IniDocument::IniDocument(const std::string& bytes) {
  std::size_t position = 0;
  if (bytes.compare(0, 3, kBom) == 0) {
    bom_ = kBom;
    position = 3;
  }
  bool styleKnown = false;
  while (position < bytes.size()) {
    const std::size_t newline = bytes.find('\n', position);
    std::size_t end = newline == std::string::npos ? bytes.size() : newline;
    std::string eol;
    if (newline != std::string::npos) {
      eol = "\n";
      if (end > position && bytes[end - 1] == '\r') {
        --end;
        eol = "\r\n";
      }
      if (!styleKnown) {
        newline_ = eol;
        styleKnown = true;
      }
    }
    lines_.push_back(ParseLine(bytes.substr(position, end - position), eol));
    position = newline == std::string::npos ? bytes.size() : newline + 1;
  }
  Reindex();
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
        line.value = Trim(line.text.substr(valueStart));
      }
    }
  }
  return line;
}

void IniDocument::Reindex() {
  sections_.clear();
  firstSection_.clear();
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const Line& line = lines_[i];
    if (line.kind == Kind::kHeader) {
      sections_.push_back(Section{i, i, {}, {}});
      firstSection_.emplace(Fold(line.name), sections_.size() - 1);
    } else if (line.kind == Kind::kKey && !sections_.empty()) {
      Section& section = sections_.back();
      section.lastKey = i;
      if (section.keys.emplace(Fold(line.name), i).second) section.keyOrder.push_back(i);
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
  std::string bytes;
  bytes.reserve(size);
  bytes += bom_;
  for (const Line& line : lines_) {
    bytes += line.text;
    bytes += line.eol;
  }
  return bytes;
}

const std::string* IniDocument::FindValue(const std::string& section,
                                          const std::string& key) const {
  const Section* found = FindSection(section);
  if (found == nullptr) return nullptr;
  const auto keyLine = found->keys.find(Fold(Trim(key)));
  return keyLine == found->keys.end() ? nullptr : &lines_[keyLine->second].value;
}

std::vector<std::string> IniDocument::SectionNames() const {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < sections_.size(); ++i) {
    const std::string& name = lines_[sections_[i].header].name;
    const auto first = firstSection_.find(Fold(name));
    if (first != firstSection_.end() && first->second == i) names.push_back(name);
  }
  return names;
}

std::vector<std::string> IniDocument::KeyNames(const std::string& section) const {
  std::vector<std::string> names;
  if (const Section* found = FindSection(section)) {
    for (std::size_t line : found->keyOrder) names.push_back(lines_[line].name);
  }
  return names;
}

void IniDocument::InsertLine(std::size_t position, const std::string& text) {
  // The line before must end, or the new one would join it. A last line that ends in a lone
  // '\r' keeps it as text: a plain "\n" after it would turn it into a "\r\n" ending.
  if (position > 0 && lines_[position - 1].eol.empty()) {
    const std::string& before = lines_[position - 1].text;
    lines_[position - 1].eol = !before.empty() && before.back() == '\r' ? "\r\n" : newline_;
  }
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(position), ParseLine(text, newline_));
}

bool IniDocument::SetValue(const std::string& section, const std::string& key,
                           const std::string& value) {
  const std::string sectionName = Trim(section);
  const std::string keyName = Trim(key);
  const Section* found = FindSection(sectionName);
  if (found == nullptr) {
    InsertLine(lines_.size(), "[" + sectionName + "]");
    InsertLine(lines_.size(), keyName + "=" + value);
    Reindex();
    return true;
  }
  const auto keyLine = found->keys.find(Fold(keyName));
  if (keyLine == found->keys.end()) {
    InsertLine(found->lastKey + 1, keyName + "=" + value);
    Reindex();
    return true;
  }
  Line& line = lines_[keyLine->second];
  const std::string text = line.text.substr(0, line.valueOffset) + value;
  if (text == line.text) return false;
  line = ParseLine(text, line.eol);
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
