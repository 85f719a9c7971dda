// The keyed MAC of one audit-trail session: HMAC-SHA256 from OpenSSL's libcrypto over the
// session's canonical bytes, chained to the session sealed before it.
//
// MAC_i = HMAC-SHA256(K, Text(previous) || Uint64(i) || Canonical(session)), where `previous` is
// the stored MAC of the previous sealed session (64 lower-case hexadecimal digits) or, for the
// first sealed session of a trail, the trail's identifier, and i is the session's sequence
// number. The canonical bytes are a prefix-free encoding of the session's tree, so that no move
// of text from one node to another and no change of structure keeps them:
//   Uint64(n)   n as 8 bytes, most significant first
//   Text(s)     Uint64(number of UTF-16 units of s), then each unit, least significant byte first
//   element     'E', Text(name), Uint64(number of attributes), each attribute as Text(name)
//               Text(value) in ascending order of name (by UTF-16 unit), its children, then ')'
//   text        'T', Text(value) of a run of adjacent text nodes taken together; an empty run
//               is left out (a parser keeps no empty text, so a reloaded session has none)
// The attribute "SealMac" of the session's last child (its "CheckSum", where the MAC is kept)
// is left out; every other name, value and text of the session is in. A CDATA section, comment,
// processing instruction or entity reference inside a session is refused: the checksum walk
// reads none of them the way a reader of the trail sees them, and the library never writes
// one, so there they are tampering.
//
// Error contract: nothing throws. A refused session answers false with the reason; a failure of
// libcrypto itself also answers false.
#ifndef ZENUTL_AUDIT_SESSION_MAC_H_
#define ZENUTL_AUDIT_SESSION_MAC_H_

#include <xercesc/dom/DOMNode.hpp>

#include <cstdint>
#include <string>

struct evp_mac_ctx_st;

namespace zenutl {
namespace audit {

// A secret key with the MAC state it primes. Holds the only copy of the key and wipes it when
// it goes; not copyable.
class SealKey {
 public:
  // False from `IsUsable` when libcrypto refuses the key (it never refuses a non-empty one).
  explicit SealKey(const std::string& key);
  ~SealKey();
  SealKey(const SealKey&) = delete;
  SealKey& operator=(const SealKey&) = delete;

  bool IsUsable() const { return mTemplate != nullptr; }
  // Names the key without revealing it: the first 8 bytes of HMAC-SHA256(K, "zenutl audit trail
  // key id") as 16 lower-case hexadecimal digits.
  const std::string& Id() const { return mId; }

  // MAC_i as above, in 64 lower-case hexadecimal digits, into `mac`. False, with `refusal`
  // pointing at a static English reason, for a session holding a node the seal refuses.
  bool SessionMac(const XMLCh* previous, std::uint64_t sequence, const xercesc::DOMNode* session,
                  std::string& mac, const char*& refusal) const;

 private:
  evp_mac_ctx_st* mTemplate = nullptr;  // initialised with the key; each MAC runs on a copy
  std::string mId;
};

}  // namespace audit
}  // namespace zenutl

#endif  // ZENUTL_AUDIT_SESSION_MAC_H_
