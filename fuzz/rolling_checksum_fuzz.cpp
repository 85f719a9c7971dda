// The session checksum on arbitrary 16-bit text.
//
// Invariants beyond "no crash" (and no undefined arithmetic, which the sanitizer stops on): the
// sum and state equal a step-by-step reckoning in plain unsigned arithmetic, and the high byte
// of a code unit never changes either.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "zenutl/rolling_checksum.h"

namespace {

struct Reckoning {
  std::uint32_t state = RollingChecksum::kStartState;
  std::uint32_t sum = 0;
  void Step(std::uint32_t unit) {
    const std::uint32_t c = ((state >> 8) ^ unit) & 0xFF;
    sum += c;
    state = ((c + state) * RollingChecksum::kMultiplier + RollingChecksum::kIncrement) & 0xFFFF;
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Byte pairs are the code units, little-endian, up to the first zero unit.
  std::vector<XMLCh> text;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    const XMLCh unit = static_cast<XMLCh>(data[i] | (data[i + 1] << 8));
    if (unit == 0) break;
    text.push_back(unit);
  }
  std::vector<XMLCh> lowBytesOnly;
  for (XMLCh unit : text) lowBytesOnly.push_back(static_cast<XMLCh>((unit & 0xFF) | 0x100));
  text.push_back(0);
  lowBytesOnly.push_back(0);

  RollingChecksum checksum;
  checksum.FeedText(text.data());
  Reckoning expected;
  for (std::size_t i = 0; text[i] != 0; ++i) expected.Step(text[i]);
  if (checksum.GetSum() != expected.sum || checksum.GetState() != expected.state) std::abort();

  RollingChecksum sameLowBytes;
  sameLowBytes.FeedText(lowBytesOnly.data());
  if (sameLowBytes.GetSum() != checksum.GetSum()) std::abort();
  return 0;
}
