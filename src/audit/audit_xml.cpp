#include "audit/audit_xml.h"

#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>

#include <cstring>

namespace zenutl {
namespace audit {

XmlText::XmlText(const char* text) {
  const char* bytes = text ? text : "";
  xercesc::TranscodeFromStr transcoded(reinterpret_cast<const XMLByte*>(bytes),
                                       std::strlen(bytes), "UTF-8");
  mText = transcoded.adopt();
}

XmlText::~XmlText() { xercesc::XMLString::release(&mText); }

CString ToCString(const XMLCh* text) {
  if (!text || !*text) return CString();
  xercesc::TranscodeToStr transcoded(text, "UTF-8");
  return CString(reinterpret_cast<const char*>(transcoded.str()));
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
  for (xercesc::DOMNode* child = parent->getFirstChild(); child;
       child = child->getNextSibling()) {
    if (IsElementNamed(child, name)) return static_cast<xercesc::DOMElement*>(child);
  }
  return nullptr;
}

}  // namespace audit
}  // namespace zenutl
