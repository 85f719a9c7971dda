#include "zenutl/rolling_checksum.h"

#include <xercesc/dom/DOMNamedNodeMap.hpp>
#include <xercesc/dom/DOMNode.hpp>

XERCES_CPP_NAMESPACE_USE

namespace {

XMLCh AsciiUpper(XMLCh unit) {
  return (unit >= u'a' && unit <= u'z') ? static_cast<XMLCh>(unit - (u'a' - u'A')) : unit;
}

// Feeds what one node contributes by itself and says whether its children follow.
bool FeedOwnText(RollingChecksum& checksum, const DOMNode* node) {
  switch (node->getNodeType()) {
    case DOMNode::ELEMENT_NODE:
      if (RollingChecksum::IsCheckSumName(node->getNodeName())) return false;
      break;
    case DOMNode::TEXT_NODE:
      checksum.FeedText(node->getNodeValue());
      return false;
    default:
      break;
  }
  if (const DOMNamedNodeMap* attributes = node->getAttributes()) {
    const XMLSize_t count = attributes->getLength();
    for (XMLSize_t i = 0; i < count; ++i) {
      checksum.FeedText(attributes->item(i)->getNodeValue());
    }
  }
  return true;
}

}  // namespace

void RollingChecksum::FeedUnit(XMLCh unit) {
  const std::uint16_t c = static_cast<std::uint16_t>((mState >> 8) ^ (unit & 0xFF));
  mSum += c;
  // In unsigned 32 bits: the 16-bit values would otherwise be promoted to int, whose product
  // overflows (it does at the very first step, 0xDA09 * 0xCE6D).
  const std::uint32_t product = (std::uint32_t{c} + mState) * mMultiplier + mIncrement;
  mState = static_cast<std::uint16_t>(product);
}

void RollingChecksum::FeedText(const XMLCh* text) {
  if (!text) return;
  for (; *text; ++text) FeedUnit(*text);
}

// Pre-order walk without recursion: sessions nest events to any depth, and a deep document
// must not be able to exhaust the stack.
void RollingChecksum::FeedNode(const DOMNode* node) {
  const DOMNode* current = node;
  while (current) {
    const DOMNode* next = FeedOwnText(*this, current) ? current->getFirstChild() : nullptr;
    while (!next && current && current != node) {
      next = current->getNextSibling();
      if (!next) current = current->getParentNode();
    }
    current = next;
  }
}

CString RollingChecksum::FormatSum() const {
  CString text;
  text.Format("%x", static_cast<unsigned int>(mSum));
  return text;
}

CString RollingChecksum::ComputeSignature(const DOMNode* node) {
  RollingChecksum checksum;
  checksum.FeedNode(node);
  return checksum.FormatSum();
}

bool RollingChecksum::IsCheckSumName(const XMLCh* name) {
  static const XMLCh kCheckSum[] = u"CHECKSUM";
  if (!name) return false;
  const XMLCh* expected = kCheckSum;
  for (; *name && *expected; ++name, ++expected) {
    if (AsciiUpper(*name) != *expected) return false;
  }
  return *name == 0 && *expected == 0;
}
