// Base64 on arbitrary bytes: Decode of any text, and Encode of any data read back.
//
// Decode is checked against a plain character-by-character reading of the format written
// here (alphabet looked up with strchr, so a zero byte counts as value 65), which the table-
// driven decoder must match byte for byte, error for error. Encode, with a line length taken
// from the input, must decode back to the data.
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "zenutl/base64.h"

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";

bool ReferenceDecode(const std::string& text, std::string& data) {
  unsigned char group[4] = {0, 0, 0, 0};
  int place = 0, pads = 0;
  auto emit = [&](int count) {
    const unsigned char bytes[3] = {
        static_cast<unsigned char>((group[0] << 2) + ((group[1] & 0x30) >> 4)),
        static_cast<unsigned char>(((group[1] & 0xF) << 4) + ((group[2] & 0x3C) >> 2)),
        static_cast<unsigned char>(((group[2] & 0x3) << 6) + group[3])};
    data.append(reinterpret_cast<const char*>(bytes), count);
  };
  for (char c : text) {
    if (std::isspace(static_cast<unsigned char>(c))) continue;
    const char* found = std::strchr(kAlphabet, c);
    if (found == nullptr) return false;
    const int value = static_cast<int>(found - kAlphabet);
    if (value == 64) {
      if (++pads > 2) return false;
      group[place] = 0;
      continue;
    }
    if (pads != 0) return false;
    group[place++] = static_cast<unsigned char>(value);
    if (place == 4) {
      emit(3);
      place = 0;
    }
  }
  if (place == 0) return true;
  if (place + pads != 4) return false;
  emit(pads == 1 ? 2 : 1);
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(bytes), size);

  std::string expected;
  const bool valid = ReferenceDecode(input, expected);
  bool refused = false;
  std::string decoded;
  try {
    decoded = Base64::Decode(input);
  } catch (const std::runtime_error& e) {
    if (std::strcmp(e.what(), "Base64::Decode - Internal error") != 0) std::abort();
    refused = true;
  }
  if (refused == valid || (valid && decoded != expected)) std::abort();

  const unsigned int lineLength = size == 0 ? 0 : bytes[0] % 80;
  const std::string lineBreak = size > 1 && (bytes[1] & 1) ? "\r\n" : " ";
  if (Base64::Decode(Base64::Encode(input, lineLength, lineBreak)) != input) std::abort();
  return 0;
}
