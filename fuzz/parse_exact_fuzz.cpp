// The date-time format language on arbitrary formats and texts: ParseExact, ParseUsingLocale
// (for an empty format), the formatter and the format check.
//
// The input is the format, a zero byte, then the text. Invariants beyond "no crash and no read
// outside the two texts": a parse gives not a date-time or an ordinary value, never an
// infinity, and the only exceptions are Boost's calendar errors for impossible dates.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "zenutl/date_time_format.h"
#include "zenutl/lumo_date_time.h"

namespace {

void CheckParse(const std::string& text, std::string format) {
  ZnTimeUtl::LumoDateTime parsed;
  try {
    parsed = format.empty() ? ZnTimeUtl::LumoDateTime::ParseUsingLocale(text, format)
                            : ZnTimeUtl::LumoDateTime::ParseExact(text, format);
  } catch (const std::out_of_range&) {
    return;  // a calendar error of Boost: day, month or year out of range
  }
  const boost::posix_time::ptime& time = parsed.GetPtime();
  if (time.is_infinity()) std::abort();
  if (!time.is_not_a_date_time() && parsed.ToUTCString("").empty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setenv("TZ", "Europe/Stockholm", 1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* bytes = reinterpret_cast<const char*>(data);
  const void* divider = std::memchr(bytes, '\0', size);
  const std::size_t formatLength =
      divider ? static_cast<std::size_t>(static_cast<const char*>(divider) - bytes) : size;
  const std::string format(bytes, formatLength);
  const std::string text = formatLength < size
                               ? std::string(bytes + formatLength + 1, size - formatLength - 1)
                               : std::string();
  CheckParse(text, format);
  const ZnTimeUtl::LumoDateTime sample(2010, 3, 4, 13, 6, 7, 89, true);
  sample.ToUTCString(format);
  ZnTimeUtl::ValidateFormatString(format);
  ZnTimeUtl::UserStyleToDateTimeFormat(format);
  ZnTimeUtl::DateTimeFormatToUserStyle(format);
  return 0;
}
