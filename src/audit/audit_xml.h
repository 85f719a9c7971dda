// Small helpers for the audit trail's use of the Xerces DOM: text conversion and name tests.
#ifndef ZENUTL_AUDIT_AUDIT_XML_H_
#define ZENUTL_AUDIT_AUDIT_XML_H_

#include <xercesc/dom/DOM.hpp>

#include "config/xml_text.h"
#include "zenutl/cstring.h"

namespace zenutl {
namespace audit {

// A library text as DOM text, for the duration of one DOM call. The trail's texts are UTF-8,
// the local code page here. Every character that XML 1.0 cannot carry becomes U+FFFD (see
// config::XmlContentFromUtf8): stored as it is, it would make every later save of the trail
// fail, and with it the rest of the session and every later one.
class XmlText {
 public:
  explicit XmlText(const char* text);
  operator const XMLCh*() const { return mText.c_str(); }  // NOLINT: used as a DOM argument

 private:
  config::XmlString mText;
};

// DOM text as a library text (UTF-8); null gives "".
CString ToCString(const XMLCh* text);

// The stored form of a checksum text: each 16-bit unit narrowed to its low byte.
CString NarrowToLowBytes(const XMLCh* text);

// Whether a DOM name equals an ASCII name, ignoring ASCII case.
bool NameEqualsNoCase(const XMLCh* name, const char* ascii);

// The first child element named `name` (ignoring case), or null.
xercesc::DOMElement* FindChildElement(const xercesc::DOMNode* parent, const char* name);

// Whether `node` is an element named `name` (ignoring case).
bool IsElementNamed(const xercesc::DOMNode* node, const char* name);

// The depth of `node` among elements: 1 for the document element, 0 for the document node.
int ElementDepth(const xercesc::DOMNode* node);

// How many levels of elements `element` and its descendants span: 1 for an element without
// element children. Walks without recursion.
int SubtreeElementDepth(const xercesc::DOMNode* element);

}  // namespace audit
}  // namespace zenutl

#endif  // ZENUTL_AUDIT_AUDIT_XML_H_
