// Conversions between the library's narrow (UTF-8) and wide (UTF-32 wchar_t) texts and the
// UTF-16 strings of the DOM.
//
// Narrow input that is not valid UTF-8 is not thrown away: each byte of a broken sequence is
// taken as the Latin-1 character of the same value, so text in an older 8-bit encoding keeps its
// letters. Unpaired surrogates in DOM text become U+FFFD.
//
// Text that goes into a document as content (attribute values, text nodes) takes the
// `XmlContentFrom...` forms: they also replace every character that XML 1.0 cannot carry by
// U+FFFD. Such a character, once in the DOM, makes every later serialisation of the document
// fail, so one odd text would silence every later save of a settings file or an audit trail.
#ifndef ZENUTL_CONFIG_XML_TEXT_H_
#define ZENUTL_CONFIG_XML_TEXT_H_

#include <xercesc/util/XercesDefs.hpp>

#include <cstddef>
#include <string>

#include "zenutl/cstring.h"

namespace zenutl {
namespace config {

typedef std::basic_string<XMLCh> XmlString;

XmlString XmlFromUtf8(const char* text);
XmlString XmlFromWide(const wchar_t* text);

// As above, then every code unit that XML 1.0 cannot carry becomes U+FFFD: the C0 controls other
// than tab, line feed and carriage return, U+FFFE, U+FFFF, and surrogates without their pair.
//   "a\x01b"             => u"a\uFFFDb"
//   "\xEF\xBF\xBE"        => u"\uFFFD"       (U+FFFE)
//   L"\xD800x"           => u"\uFFFDx"      (a lone surrogate)
//   "caf\xE9"            => u"caf\u00E9"    (not UTF-8: the Latin-1 letter, which XML carries)
XmlString XmlContentFromUtf8(const char* text);
XmlString XmlContentFromWide(const wchar_t* text);
// Replaces in place what XmlContentFrom... replaces.
void ReplaceCharactersXmlCannotCarry(XmlString& text);
// Appends the UTF-8 form of `length` code units at `text` to `out`.
void AppendUtf8(const XMLCh* text, std::size_t length, std::string& out);
std::string Utf8FromXml(const XMLCh* text);
std::wstring WideFromXml(const XMLCh* text);

// A narrow name as a DOM string, kept on the stack when it is shorter than 64 characters, as
// key names nearly always are.
class XmlName {
 public:
  explicit XmlName(const char* name);
  XmlName(const XmlName&) = delete;
  XmlName& operator=(const XmlName&) = delete;

  const XMLCh* c_str() const { return mHeap.empty() ? mStack : mHeap.c_str(); }

 private:
  XMLCh mStack[64];
  XmlString mHeap;
};

}  // namespace config
}  // namespace zenutl

#endif  // ZENUTL_CONFIG_XML_TEXT_H_
