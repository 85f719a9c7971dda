// The number reading of znstrtod done the plain way, on the runtime's strtod: the reference that
// the library's faster reading must agree with, in the tests and the fuzz target.
#ifndef ZENUTL_TESTS_SUPPORT_REFERENCE_STRTOD_H_
#define ZENUTL_TESTS_SUPPORT_REFERENCE_STRTOD_H_

#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <cwchar>

namespace zenutl_test {

// At most 63 characters copied, the first foreign separator made the locale's, the first capital
// D an L, and the runtime's strtod on the copy; the end rebased into `text`.
template <typename CharT>
inline double ReferenceStrtod(const CharT* text, CharT** end) {
  CharT buffer[64];
  std::size_t length = 0;
  for (; length < 63 && text[length] != 0; ++length) buffer[length] = text[length];
  buffer[length] = 0;
  const CharT own = static_cast<CharT>(*std::localeconv()->decimal_point);
  const CharT foreign = own == '.' ? ',' : '.';
  for (CharT* p = buffer; *p; ++p) {
    if (*p == foreign) {
      *p = own;
      break;
    }
  }
  for (CharT* p = buffer; *p; ++p) {
    if (*p == 'D') {
      *p = 'L';
      break;
    }
  }
  CharT* bufferEnd = nullptr;
  const double value = sizeof(CharT) == 1 ? std::strtod(reinterpret_cast<char*>(buffer),
                                                        reinterpret_cast<char**>(&bufferEnd))
                                          : std::wcstod(reinterpret_cast<wchar_t*>(buffer),
                                                        reinterpret_cast<wchar_t**>(&bufferEnd));
  *end = const_cast<CharT*>(text) + (bufferEnd - buffer);
  return value;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_REFERENCE_STRTOD_H_
