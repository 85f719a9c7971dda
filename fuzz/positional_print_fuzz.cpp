// lsprintf and lsnprintf on arbitrary formats.
//
// A format reads its arguments by type, so the target passes arguments that every type can read
// safely: sixteen pointers to a text that is valid both as a narrow and as a wide text (integer
// conversions read their bits, '%c' their low byte) and eight doubles. Formats that could read
// more than that (more than twelve conversions) are skipped.
//
// Invariants beyond "no crash": lsprintf stays within the room its documented bounds give (the
// format's length plus, for each conversion, a field of at most 1024 characters and the longest
// number or argument text), and lsnprintf gives the same text, cut to its buffer, with -1 exactly
// when it had to cut.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "zenutl/zn_string_algorithms.h"

namespace {

const wchar_t kArgumentText[] = L"w\u00e9";  // "w" when read as a narrow text
const std::size_t kMaxConversions = 12;
// The longest field one conversion can print: a width or precision of 1024 and the digits of the
// largest double before the point.
const std::size_t kMaxField = 1024 + 320;

int Print(char* output, std::size_t size, const char* format, bool sized) {
  const void* t = kArgumentText;
  if (sized) {
    return ZnString::lsnprintf(output, size, format, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t,
                               1.5, -2.25, 1e300, -0.0, 3e-310, 7.0, 123456789.125, 0.1);
  }
  return ZnString::lsprintf(output, format, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, 1.5,
                            -2.25, 1e300, -0.0, 3e-310, 7.0, 123456789.125, 0.1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t room = data[0];  // the buffer of the sized form
  std::string format(reinterpret_cast<const char*>(data + 1), size - 1);
  format = format.c_str();
  // Every conversion opens and closes with '%', and so does "%%".
  if (static_cast<std::size_t>(std::count(format.begin(), format.end(), '%')) >
      2 * kMaxConversions) {
    return 0;
  }

  const std::size_t bound = format.size() + kMaxConversions * kMaxField + 1;
  std::vector<char> whole(bound);
  const int length = Print(whole.data(), whole.size(), format.c_str(), false);
  if (length < 0 || static_cast<std::size_t>(length) != std::strlen(whole.data())) std::abort();

  std::vector<char> cut(room + 1, 'z');
  const int cutLength = Print(cut.data(), room, format.c_str(), true);
  if (cut[room] != 'z') std::abort();  // nothing past the buffer
  if (room == 0) {
    if (cutLength != -1) std::abort();
    return 0;
  }
  const std::size_t kept = std::min<std::size_t>(static_cast<std::size_t>(length), room - 1);
  if (std::memcmp(cut.data(), whole.data(), kept) != 0 || cut[kept] != '\0') std::abort();
  if (cutLength != (static_cast<std::size_t>(length) <= room - 1 ? length : -1)) std::abort();
  return 0;
}
