#include "audit/audit_xml.h"

#include "config/xml_text.h"

namespace zenutl {
namespace audit {

XmlText::XmlText(const char* text) : mText(config::XmlFromUtf8(text)) {
  for (XMLCh& unit : mText) {
    if (unit < 0x20 && unit != 0x09 && unit != 0x0A && unit != 0x0D) unit = 0xFFFD;
  }
}

CString ToCString(const XMLCh* text) {
  return CString(config::Utf8FromXml(text));
}

CString NarrowToLowBytes(const XMLCh* text) {
  CString narrow;
  for (; text && *text; ++text) narrow += static_cast<char>(*text & 0xFF);
  return narrow;
}

bool NameEqualsNoCase(const XMLCh* name, const char* ascii) {
  if (!name || !ascii) return false;
  for (; *name && *ascii; ++name, ++ascii) {
    XMLCh a = *name;
    char b = *ascii;
    if (a >= 'a' && a <= 'z') a = static_cast<XMLCh>(a - 'a' + 'A');
    if (b >= 'a' && b <= 'z') b = static_cast<char>(b - 'a' + 'A');
    if (a != static_cast<XMLCh>(static_cast<unsigned char>(b))) return false;
  }
  return *name == 0 && *ascii == 0;
}

bool IsElementNamed(const xercesc::DOMNode* node, const char* name) {
  return node && node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE &&
         NameEqualsNoCase(node->getNodeName(), name);
}

xercesc::DOMElement* FindChildElement(const xercesc::DOMNode* parent, const char* name) {
  if (!parent) return nullptr;
  for (xercesc::DOMNode* child = parent->getFirstChild(); child; child = child->getNextSibling()) {
    if (IsElementNamed(child, name)) return static_cast<xercesc::DOMElement*>(child);
  }
  return nullptr;
}

}  // namespace audit
}  // namespace zenutl
