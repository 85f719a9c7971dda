// The keyed seal over an audit trail's sessions: sealing a session as it closes, checking the
// chain of seals, and the anchor file that holds the end of the chain outside the trail.
//
// In the document, the root carries "TrailId", made when the first session is sealed, and each
// sealed session's "CheckSum" carries "SealSequence" (1, 2, 3, ... over the trail),
// "SealAlgorithm" ("HMAC-SHA256"), "SealKeyId" (SealKey::Id) and "SealMac" (session_mac.h).
// The rolling checksum skips "CheckSum" elements whole, and the root is no session, so none of
// this changes a checksum.
//
// The anchor file holds four lines, written after every save of a sealed trail:
//   zenutl audit trail anchor 1
//   trail <TrailId>
//   sequence <SealSequence of the last sealed session>
//   seal <its SealMac>
//
// Error contract: nothing throws but the DOM calls of SealSession, whose exceptions reach the
// caller as EndSession's do.
#ifndef ZENUTL_AUDIT_AUDIT_SEAL_H_
#define ZENUTL_AUDIT_AUDIT_SEAL_H_

#include <xercesc/dom/DOM.hpp>

#include <string>
#include <vector>

#include "audit/session_mac.h"
#include "zenutl/audit_trail_records.h"
#include "zenutl/cstring.h"

// What AuditTrail::SetSeal gave a trail: the key, and the anchor file ("" for none).
struct AuditTrailSeal {
  AuditTrailSeal(const std::string& keyBytes, const char* anchor)
      : key(keyBytes), anchorFile(anchor) {}

  zenutl::audit::SealKey key;
  CString anchorFile;
};

namespace zenutl {
namespace audit {

// What CheckSeals found; AuditTrail::FindUnverifiedSessions makes an AuditTrailFinding of it.
struct SealFinding {
  AuditTrailFinding::EKind kind;    // one of the seal's kinds
  int index;                        // the session's position under the root; -1: the whole trail
  const xercesc::DOMNode* session;  // null for the whole trail
  CString detail;                   // "expected seal 3, found 5"
};

// Seals `session`, a closed session whose "CheckSum" is in place, as the next in the chain of
// the document of `root`; makes the trail's identifier if the root has none. Leaves the
// session unsealed, and logs why, when it holds a node the seal refuses (the library never
// records one).
void SealSession(const AuditTrailSeal& seal, xercesc::DOMElement* root,
                 xercesc::DOMElement* session);

// Every finding about the seals of the closed sessions under `root`, oldest first, the
// anchor's last; `openSession` (may be null) is not checked. Sessions before the first sealed
// one are the trail's history from before it had a key, and are not findings.
std::vector<SealFinding> CheckSeals(const AuditTrailSeal& seal, const xercesc::DOMElement* root,
                                    const xercesc::DOMNode* openSession);

// Writes the anchor of the last sealed session under `root` (none: nothing to write). False
// with the reason when the anchor could not be written; the anchor file is then as it was.
bool WriteSealAnchor(const AuditTrailSeal& seal, const xercesc::DOMElement* root,
                     std::string& error);

// The name of a seal's kind as reports give it: "bad MAC", "gap in the sequence", "truncated
// against the anchor", "unsealed session after sealed ones".
const char* SealFindingKindName(AuditTrailFinding::EKind kind);

// One line about a seal's finding: "Session 4: gap in the sequence (expected seal 3, found 5)."
// with the session counted from 1, or for the whole trail "Truncated against the anchor (...).".
CString SealFindingText(const AuditTrailFinding& finding);

}  // namespace audit
}  // namespace zenutl

#endif  // ZENUTL_AUDIT_AUDIT_SEAL_H_
