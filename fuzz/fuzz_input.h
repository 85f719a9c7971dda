// Ways of reading a fuzz input shared by several targets.
#ifndef ZENUTL_FUZZ_FUZZ_INPUT_H_
#define ZENUTL_FUZZ_FUZZ_INPUT_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "zenutl/locales.h"

namespace zenutl_fuzz {

// The first byte picks the decimal separator (bit 0 set: a comma), the rest is the text up to
// its first zero byte. False for an empty input.
inline bool ReadSeparatorAndText(const std::uint8_t* data, std::size_t size,
                                 Locales::DecSeparator& separator, std::string& text) {
  if (size == 0) return false;
  separator = (data[0] & 1) ? Locales::eDecimalComma : Locales::eDecimalPoint;
  text.assign(reinterpret_cast<const char*>(data + 1), size - 1);
  text = text.c_str();
  return true;
}

}  // namespace zenutl_fuzz

#endif  // ZENUTL_FUZZ_FUZZ_INPUT_H_
