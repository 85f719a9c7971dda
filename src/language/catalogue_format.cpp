#include "language/catalogue_format.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "core/format_arguments.h"
#include "language/resource_catalogue.h"
#include "zenutl/language_string.h"

namespace zenutl {
namespace language {
namespace {

using zenutl::detail::FormatArgument;
using zenutl::detail::FormatArguments;

// The built-in English text of `id`, or null when the library has none.
const char* BuiltInText(unsigned int id) {
  const std::map<unsigned int, std::string>& strings = BuiltInCatalogue().strings;
  const auto found = strings.find(id);
  return found == strings.end() ? nullptr : found->second.c_str();
}

// Whether every argument `text` reads is the one `supplied` holds at that place.
bool ReadsOnly(const char* text, const std::vector<FormatArgument>& supplied) {
  std::vector<FormatArgument> read;
  return FormatArguments(text, read) && read.size() <= supplied.size() &&
         std::equal(read.begin(), read.end(), supplied.begin());
}

}  // namespace

CString FormatLanguageString(unsigned int id, va_list arguments) {
  const char* text = LanguageString::Get(id);
  const char* english = BuiltInText(id);
  std::vector<FormatArgument> supplied;
  if (english != nullptr) {
    FormatArguments(english, supplied);  // the library's own texts always read
    if (!ReadsOnly(text, supplied)) text = english;
  } else if (!FormatArguments(text, supplied)) {
    return CString(text);
  }
  CString result;
  result.FormatV(text, arguments);
  return result;
}

}  // namespace language
}  // namespace zenutl
