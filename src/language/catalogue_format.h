// Printing with a language string as the format.
//
// A translated text comes from a catalogue file that anyone can edit, yet the code that prints it
// passes the arguments of the built-in English text of the same number. So a translated text is
// used as a format only when its conversions read nothing but what the English text reads, in
// the same order (it may leave trailing ones out); otherwise the English text is used instead.
// A number the library has no English text for is the application's own: its text is used as a
// format when it holds nothing that must never come from outside (see FormatArguments), and is
// shown as it stands otherwise.
#ifndef ZENUTL_LANGUAGE_CATALOGUE_FORMAT_H_
#define ZENUTL_LANGUAGE_CATALOGUE_FORMAT_H_

#include <cstdarg>

#include "zenutl/cstring.h"

namespace zenutl {
namespace language {

// LanguageString::Get(id) printed with `arguments` under the rule above.
CString FormatLanguageString(unsigned int id, va_list arguments);

}  // namespace language
}  // namespace zenutl

#endif  // ZENUTL_LANGUAGE_CATALOGUE_FORMAT_H_
