// Tests on eight bytes at once, for scanning text a word at a time.
//
// Each test is nonzero exactly when some byte of the word qualifies; which bit is set says
// nothing reliable about which byte, so a caller that needs the position looks byte by byte.
#ifndef ZENUTL_JSON_BYTE_WORDS_H_
#define ZENUTL_JSON_BYTE_WORDS_H_

#include <cstdint>
#include <cstring>

namespace zenutl {
namespace json_detail {

constexpr std::uint64_t kEachByte = 0x0101010101010101ULL;
constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;

inline std::uint64_t HasByteBelow(std::uint64_t word, unsigned char limit) {  // limit <= 0x80
  return (word - limit * kEachByte) & ~word & kHighBits;
}
inline std::uint64_t HasByte(std::uint64_t word, unsigned char byte) {
  return HasByteBelow(word ^ (byte * kEachByte), 1);
}
inline std::uint64_t HasHighByte(std::uint64_t word) {
  return word & kHighBits;
}

// The start of the first word of eight bytes from `at` in which `special` finds something, or
// of the last few bytes that make no whole word before `end`.
template <class Test>
char const* SkipPlainWords(char const* at, char const* end, Test special) {
  for (; end - at >= 8; at += 8) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    if (special(word)) break;
  }
  return at;
}

}  // namespace json_detail
}  // namespace zenutl

#endif  // ZENUTL_JSON_BYTE_WORDS_H_
