// Resource modules: numbered texts and numbered binary resources, loaded from a catalogue file.
//
// The applications keep their translated texts and embedded files (XML configurations and the
// like) in a resource module of their own and hand its handle to this library. On Linux such a
// module is a catalogue file in the simple text format below, loaded with
// `ZnLoadResourceModule`; the handle (`HINSTANCE`) is then used as the applications always did,
// above all with `LanguageString::SetResourceInstance` (language_string.h). A null handle means
// the library's built-in English catalogue, which holds the texts the library itself uses and no
// binary resources.
//
// Catalogue format (bytes; UTF-8 recommended, nothing is transcoded):
//
//   zenutl-catalogue 1
//   # A comment. Blank lines are ignored, and so is one '\r' at the end of any line.
//   string 17057 %s cannot be empty.
//   string 0x42BF Yes
//   string 17100  two leading spaces\tand a tab\nand a second line
//   hex 23 101 3c 61 2f 3e
//   file 23 102 xml\settings.zxl
//
// - The first line is exactly "zenutl-catalogue 1".
// - Numbers are decimal or "0x" hexadecimal, from 0 to 4294967295.
// - "string <id> <text>": the text starts after the single space that follows the id and runs to
//   the end of the line, spaces included. Escapes: \\ \n \r \t and \xHH (two hex digits, not
//   00). Any other backslash sequence is an error. "string <id>" alone is an empty text.
// - "hex <type> <id> <bytes>": a binary resource of `type` written as hex digit pairs, with
//   optional spaces between pairs; none is an empty resource.
// - "file <type> <id> <path>": a binary resource holding the whole file at `path`, relative to
//   the catalogue's folder unless absolute; `\` and `/` both separate. The file is read at load.
// - A number used twice (a string id, or a type and id pair) is an error, as is any other line.
//
// Error contract: `ZnLoadResourceModule` never throws for a bad file; it returns null and, when
// asked, a reason naming the file and line. A module is loaded whole or not at all. The lookups
// answer 0/"" or false for what is absent, and never throw.
#ifndef ZENUTL_RESOURCE_MODULE_H_
#define ZENUTL_RESOURCE_MODULE_H_

#include <string>

#include "zenutl/cstring.h"
#include "zenutl/platform_types.h"

// Loads the catalogue at `path` (a Windows or Linux path). Null when the file is missing,
// unreadable or malformed; `error`, when given, then receives the reason, and is emptied on
// success. Free the module with ZnFreeResourceModule.
HINSTANCE ZnLoadResourceModule(const char* path, CString* error = nullptr);
// Frees a module from ZnLoadResourceModule; null is ignored. Deselect it first if it is the
// module of LanguageString (texts already fetched from it stay valid).
void ZnFreeResourceModule(HINSTANCE module);

// Copies text `id` into `buffer`: at most bufferSize-1 characters, always terminated (when
// bufferSize > 0). Returns the number copied; 0 and "" when the module lacks `id`. A null module
// is the built-in catalogue. A null buffer or a size below 1 copies nothing and returns 0.
int ZnLoadString(HINSTANCE module, unsigned int id, char* buffer, int bufferSize);

// The bytes of the binary resource `id` of `type`; false (bytes emptied) when absent. A null
// module is the built-in catalogue, which has none.
bool ZnGetResource(HINSTANCE module, unsigned int id, unsigned int type, std::string& bytes);

#endif  // ZENUTL_RESOURCE_MODULE_H_
