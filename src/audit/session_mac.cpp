#include "audit/session_mac.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNamedNodeMap.hpp>
#include <xercesc/util/XMLString.hpp>

#include <algorithm>
#include <utility>
#include <vector>

#include "audit/audit_xml.h"

XERCES_CPP_NAMESPACE_USE

namespace zenutl {
namespace audit {
namespace {

const char kKeyIdLabel[] = "zenutl audit trail key id";
const XMLCh kMacAttribute[] = u"SealMac";

std::string Hex(const unsigned char* bytes, std::size_t count) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(count * 2);
  for (std::size_t i = 0; i < count; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

// One MAC computation on a copy of the primed state. The bytes are gathered in a buffer and
// handed to libcrypto in large pieces: a session is many short texts.
class MacRun {
 public:
  explicit MacRun(const EVP_MAC_CTX* primed)
      : mContext(EVP_MAC_CTX_dup(primed)), mBuffer(kBufferSize) {}
  ~MacRun() { EVP_MAC_CTX_free(mContext); }
  MacRun(const MacRun&) = delete;
  MacRun& operator=(const MacRun&) = delete;

  void Byte(unsigned char byte) {
    MakeRoom(1);
    mBuffer[mUsed++] = byte;
  }
  void Uint64(std::uint64_t value) {
    MakeRoom(8);
    for (int shift = 56; shift >= 0; shift -= 8) {
      mBuffer[mUsed++] = static_cast<unsigned char>(value >> shift);
    }
  }
  // `count` units of `text`, least significant byte first.
  void Units(const XMLCh* text, std::size_t count) {
    while (count > 0) {
      MakeRoom(2);
      const std::size_t fit = std::min(count, (kBufferSize - mUsed) / 2);
      unsigned char* out = &mBuffer[mUsed];
      for (std::size_t i = 0; i < fit; ++i) {
        out[2 * i] = static_cast<unsigned char>(text[i] & 0xFF);
        out[2 * i + 1] = static_cast<unsigned char>(text[i] >> 8);
      }
      mUsed += 2 * fit;
      text += fit;
      count -= fit;
    }
  }
  void Text(const XMLCh* text) {
    const std::size_t length = text ? XMLString::stringLen(text) : 0;
    Uint64(length);
    Units(text, length);
  }
  void Raw(const char* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) Byte(static_cast<unsigned char>(bytes[i]));
  }

  // The MAC in hexadecimal, cut to `bytes`; false when libcrypto failed at any step.
  bool Finish(std::string& mac, std::size_t bytes = 32) {
    Flush();
    unsigned char out[EVP_MAX_MD_SIZE];
    std::size_t length = 0;
    if (!mContext || !mHealthy || !EVP_MAC_final(mContext, out, &length, sizeof out)) return false;
    mac = Hex(out, std::min(bytes, length));
    return true;
  }

 private:
  static constexpr std::size_t kBufferSize = 1 << 16;

  void MakeRoom(std::size_t bytes) {
    if (kBufferSize - mUsed < bytes) Flush();
  }
  void Flush() {
    if (mUsed == 0) return;
    if (!mContext || !EVP_MAC_update(mContext, mBuffer.data(), mUsed)) mHealthy = false;
    mUsed = 0;
  }

  EVP_MAC_CTX* mContext;
  std::vector<unsigned char> mBuffer;
  std::size_t mUsed = 0;
  bool mHealthy = true;
};

const char* RefusalFor(short nodeType) {
  switch (nodeType) {
    case DOMNode::CDATA_SECTION_NODE:
      return "it holds a CDATA section";
    case DOMNode::COMMENT_NODE:
      return "it holds a comment";
    case DOMNode::PROCESSING_INSTRUCTION_NODE:
      return "it holds a processing instruction";
    case DOMNode::ENTITY_REFERENCE_NODE:
      return "it holds an entity reference";
    default:
      return "it holds a node that is neither an element nor text";
  }
}

typedef std::vector<std::pair<const XMLCh*, const XMLCh*>> AttributeList;

// `attributes` is scratch space, kept from one element to the next.
void FeedElementStart(MacRun& run, const DOMNode* element, bool omitMac,
                      AttributeList& attributes) {
  attributes.clear();
  if (const DOMNamedNodeMap* map = element->getAttributes()) {
    for (XMLSize_t i = 0; i < map->getLength(); ++i) {
      const DOMNode* attribute = map->item(i);
      if (omitMac && XMLString::equals(attribute->getNodeName(), kMacAttribute)) continue;
      attributes.emplace_back(attribute->getNodeName(), attribute->getNodeValue());
    }
  }
  std::sort(attributes.begin(), attributes.end(), [](const auto& a, const auto& b) {
    return XMLString::compareString(a.first, b.first) < 0;
  });
  run.Byte('E');
  run.Text(element->getNodeName());
  run.Uint64(attributes.size());
  for (const auto& attribute : attributes) {
    run.Text(attribute.first);
    run.Text(attribute.second);
  }
}

// Feeds the run of adjacent text nodes that starts at `text` as one text, and answers its last
// node.
const DOMNode* FeedTextRun(MacRun& run, const DOMNode* text) {
  std::uint64_t length = 0;
  const DOMNode* last = text;
  for (const DOMNode* node = text; node && node->getNodeType() == DOMNode::TEXT_NODE;
       node = node->getNextSibling()) {
    length += XMLString::stringLen(node->getNodeValue());
    last = node;
  }
  if (length == 0) return last;
  run.Byte('T');
  run.Uint64(length);
  for (const DOMNode* node = text;; node = node->getNextSibling()) {
    const XMLCh* value = node->getNodeValue();
    run.Units(value, XMLString::stringLen(value));
    if (node == last) break;
  }
  return last;
}

// The canonical bytes of the element `session`, walked without recursion (events nest to any
// depth). False with the reason at the first node the seal refuses.
bool FeedSession(MacRun& run, const DOMNode* session, const char*& refusal) {
  if (session->getNodeType() != DOMNode::ELEMENT_NODE) {
    refusal = "it is not an element";
    return false;
  }
  const DOMNode* last = session->getLastChild();
  const DOMNode* macHolder = IsElementNamed(last, "CheckSum") ? last : nullptr;
  AttributeList attributes;
  const DOMNode* node = session;
  for (;;) {
    const short type = node->getNodeType();
    if (type == DOMNode::ELEMENT_NODE) {
      FeedElementStart(run, node, node == macHolder, attributes);
      if (const DOMNode* child = node->getFirstChild()) {
        node = child;
        continue;
      }
      run.Byte(')');
    } else if (type == DOMNode::TEXT_NODE) {
      node = FeedTextRun(run, node);
    } else {
      refusal = RefusalFor(type);
      return false;
    }
    // `node` is done: on to its next sibling, closing each element left on the way up.
    for (;;) {
      if (node == session) return true;
      if (const DOMNode* next = node->getNextSibling()) {
        node = next;
        break;
      }
      node = node->getParentNode();
      run.Byte(')');
    }
  }
}

}  // namespace

SealKey::SealKey(const std::string& key) {
  EVP_MAC* hmac = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
  if (!hmac) return;
  mTemplate = EVP_MAC_CTX_new(hmac);
  EVP_MAC_free(hmac);  // the context holds its own reference
  char digest[] = "SHA256";
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0), OSSL_PARAM_END};
  if (!mTemplate || key.empty() ||
      !EVP_MAC_init(mTemplate, reinterpret_cast<const unsigned char*>(key.data()), key.size(),
                    parameters)) {
    EVP_MAC_CTX_free(mTemplate);
    mTemplate = nullptr;
    return;
  }
  MacRun run(mTemplate);
  run.Raw(kKeyIdLabel, sizeof kKeyIdLabel - 1);
  if (!run.Finish(mId, 8)) {
    EVP_MAC_CTX_free(mTemplate);
    mTemplate = nullptr;
  }
}

SealKey::~SealKey() {
  EVP_MAC_CTX_free(mTemplate);  // libcrypto wipes the key it holds
}

bool SealKey::SessionMac(const XMLCh* previous, std::uint64_t sequence, const DOMNode* session,
                         std::string& mac, const char*& refusal) const {
  refusal = "the seal could not be computed";
  if (!mTemplate || !session) return false;
  MacRun run(mTemplate);
  run.Text(previous);
  run.Uint64(sequence);
  if (!FeedSession(run, session, refusal)) return false;
  return run.Finish(mac);
}

}  // namespace audit
}  // namespace zenutl
