// Wildcard matching on arbitrary patterns and texts.
//
// Input: a flags byte (bit 0: case-sensitive), then the pattern, a zero byte and the text.
// Invariants beyond "no crash": "*" matches everything; as many "?" as the text has characters
// match it; the text with every '?' and '*' escaped matches it; whatever matches with case
// counts matches without it; a pattern never matches when it needs more characters than the text
// has.
//
// The compare's time grows with the product of the two lengths, whatever the number of stars, so
// inputs of any length and any number of stars are taken: a slow input is a finding too.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "zenutl/zn_string_algorithms.h"

namespace {

std::string Escaped(const std::string& text) {
  std::string pattern;
  for (char c : text) {
    if (c == '?' || c == '*') pattern += '\\';
    pattern += c;
  }
  return pattern;
}

// Characters the pattern consumes for sure: every '?' and every literal, '*' none. An escaped
// '*' counts as none too: right after a literal that follows a '*' its escape is lost and it
// acts as a '*' (a kept quirk).
std::size_t FixedLength(const std::string& pattern) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '*') continue;
    if (pattern[i] == '\\' && i + 1 < pattern.size() && pattern[i + 1] == '*') {
      ++i;
      continue;
    }
    if (pattern[i] == '\\' && i + 1 < pattern.size() && pattern[i + 1] == '?') ++i;
    ++length;
  }
  return length;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const bool caseSensitive = data[0] & 1;
  const std::string rest(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::size_t split = rest.find('\0');
  const std::string pattern = rest.substr(0, split);
  std::string text = split == std::string::npos ? std::string() : rest.substr(split + 1);
  text = text.c_str();

  const bool matched = ZnString::WildCardCompare(pattern.c_str(), text.c_str(), caseSensitive);
  if (matched && caseSensitive &&
      !ZnString::WildCardCompare(pattern.c_str(), text.c_str(), false)) {
    std::abort();
  }
  if (matched && FixedLength(pattern) > text.size()) std::abort();
  if (!ZnString::WildCardCompare("*", text.c_str(), caseSensitive)) std::abort();
  const std::string anyOne(text.size(), '?');
  if (!ZnString::WildCardCompare(anyOne.c_str(), text.c_str(), caseSensitive)) std::abort();
  if (!ZnString::WildCardCompare(Escaped(text).c_str(), text.c_str(), caseSensitive)) std::abort();
  return 0;
}
