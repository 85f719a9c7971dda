// Base64 with line wrapping. Both directions work on whole groups through lookup tables and
// fall back to a character-by-character walk only where the text needs it (white space, pads,
// the last group), which keeps the odd cases of the format in one small, plain piece of code.
#include "zenutl/base64.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

// The 64 digits and, as the 65th character, the pad. Decoding looks characters up in this text
// as strchr would, so its terminator counts as a 66th character, of value 65.
const char* const kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
const unsigned char kPad = 64;
const unsigned char kTerminatorValue = 65;

const char kEncodeError[] = "Base64::Encode - Internal error";
const char kDecodeError[] = "Base64::Decode - Internal error";

constexpr const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two output characters for each 12-bit value, first character in the low byte.
constexpr std::array<std::uint16_t, 4096> MakePairTable() {
  std::array<std::uint16_t, 4096> table{};
  for (unsigned int v = 0; v < 4096; ++v) {
    table[v] = static_cast<std::uint16_t>(static_cast<unsigned char>(kDigits[v >> 6]) |
                                          (static_cast<unsigned char>(kDigits[v & 63]) << 8));
  }
  return table;
}
constexpr std::array<std::uint16_t, 4096> kPairs = MakePairTable();

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
const bool kLittleEndian = true;
#else
const bool kLittleEndian = false;
#endif

// Writes the four characters of the 24-bit group `v`.
inline void PutGroup(char* out, std::uint32_t v) {
  const std::uint16_t high = kPairs[v >> 12];
  const std::uint16_t low = kPairs[v & 0xFFF];
  out[0] = static_cast<char>(high & 0xFF);
  out[1] = static_cast<char>(high >> 8);
  out[2] = static_cast<char>(low & 0xFF);
  out[3] = static_cast<char>(low >> 8);
}

// Encodes `groups` whole groups of three bytes at `in` into 4 * groups characters at `out`.
// Bytes up to `end` may be read ahead: two groups at a time are taken with one 8-byte load and
// written with one 8-byte store.
void EncodeGroups(const unsigned char* in, std::size_t groups, const unsigned char* end,
                  char* out) {
  if (kLittleEndian) {
    for (; groups >= 2 && in + 8 <= end; groups -= 2, in += 6, out += 8) {
      std::uint64_t word;
      std::memcpy(&word, in, 8);
      word = __builtin_bswap64(word);  // the six bytes, first one highest
      const std::uint64_t chars = static_cast<std::uint64_t>(kPairs[(word >> 52) & 0xFFF]) |
                                  static_cast<std::uint64_t>(kPairs[(word >> 40) & 0xFFF]) << 16 |
                                  static_cast<std::uint64_t>(kPairs[(word >> 28) & 0xFFF]) << 32 |
                                  static_cast<std::uint64_t>(kPairs[(word >> 16) & 0xFFF]) << 48;
      std::memcpy(out, &chars, 8);
    }
  }
  for (; groups != 0; --groups, in += 3, out += 4) {
    PutGroup(out, (static_cast<std::uint32_t>(in[0]) << 16) | (in[1] << 8) | in[2]);
  }
}

// The four characters of the last one or two bytes, with their pads.
void EncodeTail(const unsigned char* in, std::size_t length, char* out) {
  switch (length) {
    case 1:
      PutGroup(out, static_cast<std::uint32_t>(in[0]) << 16);
      out[2] = out[3] = kAlphabet[kPad];
      break;
    case 2:
      PutGroup(out, (static_cast<std::uint32_t>(in[0]) << 16) | (in[1] << 8));
      out[3] = kAlphabet[kPad];
      break;
    default:
      throw std::runtime_error(kEncodeError);
  }
}

// Writes characters into lines of `perLine`, each followed by the break.
class LineWriter {
 public:
  LineWriter(char* out, std::size_t perLine, const std::string& lineBreak)
      : mOut(out), mPerLine(perLine), mBreak(lineBreak) {}

  // Whole groups that fit in the rest of the current line.
  std::size_t GroupsThatFit() const { return (mPerLine - mColumn) / 4; }
  char* Cursor() const { return mOut; }
  // `count` characters were written at the cursor, within the current line.
  void Advance(std::size_t count) {
    mOut += count;
    mColumn += count;
    if (mColumn == mPerLine) Break();
  }
  // Copies characters across as many lines as they need.
  void Write(const char* chars, std::size_t count) {
    while (count != 0) {
      const std::size_t run = std::min(count, mPerLine - mColumn);
      std::memcpy(mOut, chars, run);
      chars += run;
      count -= run;
      Advance(run);
    }
  }

 private:
  void Break() {
    if (mBreak.size() == 1) {
      *mOut++ = mBreak[0];
    } else {
      std::memcpy(mOut, mBreak.data(), mBreak.size());
      mOut += mBreak.size();
    }
    mColumn = 0;
  }

  char* mOut;
  std::size_t mColumn = 0;
  const std::size_t mPerLine;
  const std::string& mBreak;
};

std::size_t EncodedLength(std::size_t length) {
  const std::size_t groups = length / 3 + (length % 3 != 0);
  if (groups > std::numeric_limits<std::size_t>::max() / 4) throw std::length_error(kEncodeError);
  return groups * 4;
}

// --- decoding

// For each byte: its value for a digit or the pad, kTerminatorValue for zero, and kOther for
// anything that is white space or refused (which isspace decides, in the current locale).
const unsigned char kOther = 0xFF;
constexpr std::array<unsigned char, 256> MakeValueTable() {
  std::array<unsigned char, 256> table{};
  for (auto& entry : table) entry = kOther;
  for (unsigned char v = 0; v < 64; ++v) table[static_cast<unsigned char>(kDigits[v])] = v;
  table['='] = kPad;
  table[0] = kTerminatorValue;
  return table;
}
constexpr std::array<unsigned char, 256> kValues = MakeValueTable();

// The value of a digit shifted to its place in a group of four; anything else sets bit 24,
// so that one OR of four lookups tells whether a group is four plain digits.
constexpr std::array<std::uint32_t, 256> MakeShiftedTable(int shift) {
  std::array<std::uint32_t, 256> table{};
  for (unsigned int c = 0; c < 256; ++c) {
    table[c] = kValues[c] < 64 ? static_cast<std::uint32_t>(kValues[c]) << shift : 1u << 24;
  }
  return table;
}
constexpr std::array<std::uint32_t, 256> kPlace0 = MakeShiftedTable(18);
constexpr std::array<std::uint32_t, 256> kPlace1 = MakeShiftedTable(12);
constexpr std::array<std::uint32_t, 256> kPlace2 = MakeShiftedTable(6);
constexpr std::array<std::uint32_t, 256> kPlace3 = MakeShiftedTable(0);

// The walk of the text one character at a time: a group of four places, the pads seen.
class GroupDecoder {
 public:
  explicit GroupDecoder(char* out) : mOut(out) {}

  bool AtGroupStart() const { return mPlace == 0 && mPads == 0; }
  char* Out() const { return mOut; }
  void SetOut(char* out) { mOut = out; }

  void Take(unsigned char c) {
    const unsigned char value = kValues[c];
    if (value == kOther) {
      if (std::isspace(c)) return;
      throw std::runtime_error(kDecodeError);
    }
    if (value == kPad) {
      if (++mPads > 2) throw std::runtime_error(kDecodeError);
      mGroup[mPlace] = 0;
      return;
    }
    if (mPads != 0) throw std::runtime_error(kDecodeError);
    mGroup[mPlace++] = value;
    if (mPlace == 4) {
      Emit(3);
      mPlace = 0;
    }
  }

  // The end of the text: a partial group must be completed by its pads.
  void Finish() {
    if (mPlace == 0) return;
    if (mPlace + mPads != 4) throw std::runtime_error(kDecodeError);
    Emit(mPads == 1 ? 2 : 1);
  }

 private:
  // The bytes of the group, each place masked to its six bits of the byte, so that the value
  // 65 of a zero byte spills only as far as these masks and the byte width let it.
  void Emit(int count) {
    const unsigned char bytes[3] = {
        static_cast<unsigned char>((mGroup[0] << 2) + ((mGroup[1] & 0x30) >> 4)),
        static_cast<unsigned char>(((mGroup[1] & 0xF) << 4) + ((mGroup[2] & 0x3C) >> 2)),
        static_cast<unsigned char>(((mGroup[2] & 0x3) << 6) + mGroup[3])};
    std::memcpy(mOut, bytes, count);
    mOut += count;
  }

  char* mOut;
  unsigned char mGroup[4] = {0, 0, 0, 0};
  int mPlace = 0;
  int mPads = 0;
};

}  // namespace

namespace Base64 {

std::string Encode(std::string const& data, unsigned int lineLength, std::string const& lineBreak) {
  const unsigned char* in = reinterpret_cast<const unsigned char*>(data.data());
  const unsigned char* const end = in + data.size();
  const std::size_t encoded = EncodedLength(data.size());
  const std::size_t perLine = lineLength == 0 ? 1 : lineLength;
  const std::size_t breaks = encoded / perLine;
  if (breaks != 0 &&
      lineBreak.size() > (std::numeric_limits<std::size_t>::max() - encoded) / breaks) {
    throw std::length_error(kEncodeError);
  }
  std::string text(encoded + breaks * lineBreak.size(), '\0');
  std::size_t groups = data.size() / 3;
  const std::size_t tail = data.size() % 3;
  char last[4];
  if (tail != 0) EncodeTail(in + 3 * groups, tail, last);
  if (breaks == 0 || lineBreak.empty()) {
    EncodeGroups(in, groups, end, &text[0]);
    if (tail != 0) std::memcpy(&text[4 * groups], last, 4);
    return text;
  }

  // Groups go straight into their line while they fit; one that a break splits goes through a
  // four-character buffer.
  LineWriter writer(&text[0], perLine, lineBreak);
  while (groups != 0) {
    const std::size_t fit = std::min(writer.GroupsThatFit(), groups);
    if (fit != 0) {
      EncodeGroups(in, fit, end, writer.Cursor());
      writer.Advance(4 * fit);
    } else {
      char split[4];
      EncodeGroups(in, 1, end, split);
      writer.Write(split, 4);
    }
    const std::size_t done = fit != 0 ? fit : 1;
    in += 3 * done;
    groups -= done;
  }
  if (tail != 0) writer.Write(last, 4);
  return text;
}

std::string Decode(std::string const& text) {
  std::string data(text.size() / 4 * 3 + 3, '\0');
  const unsigned char* in = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t length = text.size();
  GroupDecoder decoder(&data[0]);
  std::size_t i = 0;
  while (i < length) {
    // Whole groups of four digits take the quick way; anything else goes through the walk.
    if (decoder.AtGroupStart()) {
      char* out = decoder.Out();
      // Two groups at a time, with one 8-byte store of which the last two bytes are scratch:
      // the output has room for them, and the next store or the end overwrites them.
      for (; kLittleEndian && i + 8 <= length; i += 8, out += 6) {
        const std::uint32_t first =
            kPlace0[in[i]] | kPlace1[in[i + 1]] | kPlace2[in[i + 2]] | kPlace3[in[i + 3]];
        const std::uint32_t second =
            kPlace0[in[i + 4]] | kPlace1[in[i + 5]] | kPlace2[in[i + 6]] | kPlace3[in[i + 7]];
        if ((first | second) >> 24) break;
        const std::uint64_t bytes = __builtin_bswap64(static_cast<std::uint64_t>(first) << 40 |
                                                      static_cast<std::uint64_t>(second) << 16);
        std::memcpy(out, &bytes, 8);
      }
      for (; i + 4 <= length; i += 4, out += 3) {
        const std::uint32_t v =
            kPlace0[in[i]] | kPlace1[in[i + 1]] | kPlace2[in[i + 2]] | kPlace3[in[i + 3]];
        if (v >> 24) break;
        out[0] = static_cast<char>(v >> 16);
        out[1] = static_cast<char>(v >> 8);
        out[2] = static_cast<char>(v);
      }
      decoder.SetOut(out);
      if (i == length) break;
    }
    decoder.Take(in[i++]);
  }
  decoder.Finish();
  data.resize(decoder.Out() - data.data());
  return data;
}

}  // namespace Base64
