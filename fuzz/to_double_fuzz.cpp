// Number parsing on arbitrary text: both widths, both decimal separators.
//
// Invariants beyond "no crash": znstrtod gives the value, end and errno of the plain reading
// (copy, swap, strtod), its end pointer stays inside the text, ToDouble answers the missing
// value whenever it reports a failure, and the byte and wide forms agree on ASCII input. Text
// that is not ASCII also goes to the wide form as the UTF-8 it decodes to, so wide characters
// beyond Latin-1 (other digits, other minus signs) are seen too.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "../tests/support/reference_strtod.h"
#include "fuzz_input.h"
#include "zenutl/cstring.h"
#include "zenutl/locales.h"
#include "zenutl/zn_string.h"

namespace {

void CheckWide(const std::wstring& text) {
  wchar_t* end = nullptr;
  ZnString::znstrtod(text.c_str(), &end);
  if (end < text.c_str() || end > text.c_str() + text.size()) std::abort();
  ZnString::EParseResult result;
  const double value = ZnString::ToDouble(text.c_str(), result);
  if (result != ZnString::eParseOk && value != ZnString::kMissingValue) std::abort();
}

void CheckBothWidths(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const double narrow = ZnString::znstrtod(text.c_str(), &end);
  const int error = errno;
  if (end < text.c_str() || end > text.c_str() + text.size()) std::abort();
  char* referenceEnd = nullptr;
  errno = 0;
  const double reference = zenutl_test::ReferenceStrtod(text.c_str(), &referenceEnd);
  const bool sameValue = std::memcmp(&narrow, &reference, sizeof narrow) == 0 ||
                         (narrow != narrow && reference != reference);
  if (!sameValue || end != referenceEnd || error != errno) std::abort();

  ZnString::EParseResult result;
  const double value = ZnString::ToDouble(text.c_str(), result);
  if (result != ZnString::eParseOk && value != ZnString::kMissingValue) std::abort();

  bool ascii = true;
  for (unsigned char c : text) ascii = ascii && c < 0x80;
  if (!ascii) {
    CheckWide(zenutl::detail::Utf8ToWide(text));
    return;
  }
  const std::wstring wide(text.begin(), text.end());
  wchar_t* wide_end = nullptr;
  const double wide_value = ZnString::znstrtod(wide.c_str(), &wide_end);
  const bool both_nan = narrow != narrow && wide_value != wide_value;
  if (!both_nan && narrow != wide_value) std::abort();
  if (wide_end - wide.c_str() != end - text.c_str()) std::abort();
  ZnString::EParseResult wide_result;
  ZnString::ToDouble(wide.c_str(), wide_result);
  if (wide_result != result) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Locales::DecSeparator separator;
  std::string text;
  if (!zenutl_fuzz::ReadSeparatorAndText(data, size, separator, text)) return 0;
  Locales::SetDecimalSeparatorClass scope(separator);
  CheckBothWidths(text);
  return 0;
}
