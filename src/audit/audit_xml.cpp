#include "audit/audit_xml.h"

#include "config/xml_text.h"

namespace zenutl {
namespace audit {

XmlText::XmlText(const char* text) : mText(config::XmlContentFromUtf8(text)) {}

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

int ElementDepth(const xercesc::DOMNode* node) {
  int depth = 0;
  for (; node; node = node->getParentNode()) {
    if (node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) ++depth;
  }
  return depth;
}

int SubtreeElementDepth(const xercesc::DOMNode* element) {
  if (!element) return 0;
  int depth = 1;
  int deepest = 1;
  const xercesc::DOMNode* current = element;
  for (;;) {
    const xercesc::DOMNode* child = current->getFirstChild();
    while (child && child->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
      child = child->getNextSibling();
    }
    if (child) {
      current = child;
      if (++depth > deepest) deepest = depth;
      continue;
    }
    // Up until an element sibling turns up, or the walk is back at the start.
    for (;;) {
      if (current == element) return deepest;
      const xercesc::DOMNode* sibling = current->getNextSibling();
      while (sibling && sibling->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
        sibling = sibling->getNextSibling();
      }
      if (sibling) {
        current = sibling;
        break;
      }
      current = current->getParentNode();
      --depth;
    }
  }
}

}  // namespace audit
}  // namespace zenutl
