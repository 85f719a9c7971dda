// Conversions between the library's narrow (UTF-8) and wide (UTF-32 wchar_t) texts and the
// UTF-16 strings of the DOM.
//
// Narrow input that is not valid UTF-8 is not thrown away: each byte of a broken sequence is
// taken as the Latin-1 character of the same value, so text in an older 8-bit encoding keeps its
// letters. Unpaired surrogates in DOM text become U+FFFD.
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
