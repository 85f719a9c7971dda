#include "audit/audit_seal.h"

#include <cctype>
#include <cerrno>
#include <cstdint>

#include "audit/audit_xml.h"
#include "platform/atomic_file.h"
#include "platform/file_bytes.h"
#include "platform/native_path.h"
#include "platform/uuid.h"
#include "zenutl/log.h"

XERCES_CPP_NAMESPACE_USE

namespace zenutl {
namespace audit {
namespace {

const XMLCh kTrailId[] = u"TrailId";
const XMLCh kSequence[] = u"SealSequence";
const XMLCh kAlgorithm[] = u"SealAlgorithm";
const XMLCh kKeyId[] = u"SealKeyId";
const XMLCh kMac[] = u"SealMac";
const char kAlgorithmName[] = "HMAC-SHA256";
const char kAnchorHeader[] = "zenutl audit trail anchor 1";
const std::size_t kAnchorLimit = 4096;

// The end of the chain as the anchor file records it.
struct Anchor {
  std::string trail;
  std::uint64_t sequence = 0;
  std::string mac;
};

std::string Narrow(const XMLCh* text) {
  return ToCString(text).GetString();
}

// The "CheckSum" closing `node` when it carries a seal (any of its attributes), else null.
const DOMElement* SealOf(const DOMNode* node) {
  if (!IsElementNamed(node, "Session")) return nullptr;
  const DOMNode* last = node->getLastChild();
  if (!IsElementNamed(last, "CheckSum")) return nullptr;
  const DOMElement* checkSum = static_cast<const DOMElement*>(last);
  for (const XMLCh* name : {kSequence, kAlgorithm, kKeyId, kMac}) {
    if (checkSum->hasAttribute(name)) return checkSum;
  }
  return nullptr;
}

// Decimal digits without a leading zero, at least 1, below 10^19.
bool ParseSequence(const std::string& text, std::uint64_t& value) {
  if (text.empty() || text.size() > 19 || text[0] == '0') return false;
  std::uint64_t parsed = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
    parsed = parsed * 10 + static_cast<std::uint64_t>(c - '0');
  }
  value = parsed;
  return true;
}

bool IsMacText(const std::string& text) {
  if (text.size() != 64) return false;
  for (const char c : text) {
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
  }
  return true;
}

// What the library makes ("0f1e...-..."), and what an anchor line can hold unchanged.
bool IsTrailIdText(const std::string& text) {
  if (text.empty() || text.size() > 64) return false;
  for (const char c : text) {
    const bool ok =
        (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-';
    if (!ok) return false;
  }
  return true;
}

std::string AnchorText(const Anchor& anchor) {
  return std::string(kAnchorHeader) + "\ntrail " + anchor.trail + "\nsequence " +
         std::to_string(anchor.sequence) + "\nseal " + anchor.mac + "\n";
}

// Takes "<prefix><value>\n" off the front of `rest`.
bool TakeLine(std::string& rest, const std::string& prefix, std::string& value) {
  const std::size_t end = rest.find('\n');
  if (end == std::string::npos || rest.compare(0, prefix.size(), prefix) != 0) return false;
  value = rest.substr(prefix.size(), end - prefix.size());
  rest.erase(0, end + 1);
  return true;
}

bool ParseAnchor(std::string text, Anchor& anchor) {
  std::string header, sequence;
  return TakeLine(text, "", header) && header == kAnchorHeader &&
         TakeLine(text, "trail ", anchor.trail) && IsTrailIdText(anchor.trail) &&
         TakeLine(text, "sequence ", sequence) && ParseSequence(sequence, anchor.sequence) &&
         TakeLine(text, "seal ", anchor.mac) && IsMacText(anchor.mac) && text.empty();
}

// False with the reason for an anchor that is missing (`missing` set), unreadable or malformed.
bool ReadAnchor(const CString& file, Anchor& anchor, std::string& reason, bool& missing) {
  std::string bytes;
  missing = false;
  if (!platform::ReadFileBytes(platform::ToNativePath(file.GetString()), bytes, reason,
                               kAnchorLimit)) {
    missing = errno == ENOENT;
    return false;
  }
  if (ParseAnchor(bytes, anchor)) return true;
  reason = "it is not an anchor file";
  return false;
}

template <typename... Numbers>
CString Format(const char* format, Numbers... numbers) {
  CString text;
  text.Format(format, static_cast<unsigned long long>(numbers)...);
  return text;
}

// Walks the chain of seals in document order and collects what is wrong with it.
class ChainCheck {
 public:
  ChainCheck(const AuditTrailSeal& seal, const DOMElement* root, const Anchor* anchor)
      : mSeal(seal), mRoot(root), mAnchor(anchor) {}

  void Session(const DOMNode* session, int index) {
    const DOMElement* checkSum = SealOf(session);
    if (!checkSum) {
      if (mSealedSeen) Add(AuditTrailFinding::eSealUnsealed, session, index, "");
      return;
    }
    const std::string mac = Narrow(checkSum->getAttribute(kMac));
    std::uint64_t sequence = 0;
    if (!ParseSequence(Narrow(checkSum->getAttribute(kSequence)), sequence) || !IsMacText(mac)) {
      Add(AuditTrailFinding::eSealBadMac, session, index, "the seal is malformed");
      sequence = mLastSequence + 1;
    } else if (Narrow(checkSum->getAttribute(kAlgorithm)) != kAlgorithmName) {
      Add(AuditTrailFinding::eSealBadMac, session, index,
          "not sealed with " + CString(kAlgorithmName));
    } else if (Narrow(checkSum->getAttribute(kKeyId)) != mSeal.key.Id()) {
      Add(AuditTrailFinding::eSealBadMac, session, index, "sealed with another key");
    } else if (sequence != mLastSequence + 1) {
      Add(AuditTrailFinding::eSealGap, session, index,
          Format("expected seal %llu, found %llu", mLastSequence + 1, sequence));
    } else {
      CheckMac(session, sequence, mac, index);
    }
    if (mAnchor && sequence == mAnchor->sequence) mAnchoredMac = mac;
    mPreviousMac = checkSum->getAttribute(kMac);
    mLastSequence = sequence;
    mSealedSeen = true;
  }

  // The anchor's finding about how far the trail reaches, or "" when it reaches the anchor.
  CString AnchorMismatch() const {
    if (!mSealedSeen) {
      return Format("the trail holds no sealed session, the anchor records seal %llu",
                    mAnchor->sequence);
    }
    if (Narrow(mRoot->getAttribute(kTrailId)) != mAnchor->trail) {
      return "the trail's identifier is not the one the anchor records";
    }
    if (!mAnchoredMac.empty()) {
      if (mAnchoredMac == mAnchor->mac) return CString();
      return Format("seal %llu is not the one the anchor records", mAnchor->sequence);
    }
    if (mAnchor->sequence > mLastSequence) {
      return Format("the trail ends at seal %llu, the anchor records seal %llu", mLastSequence,
                    mAnchor->sequence);
    }
    return Format("seal %llu, which the anchor records, is missing", mAnchor->sequence);
  }

  bool SealedSeen() const { return mSealedSeen; }
  void Add(AuditTrailFinding::EKind kind, const DOMNode* session, int index,
           const CString& detail) {
    mFindings.push_back({kind, index, session, detail});
  }
  std::vector<SealFinding>& Findings() { return mFindings; }

 private:
  void CheckMac(const DOMNode* session, std::uint64_t sequence, const std::string& stored,
                int index) {
    const XMLCh* previous = mPreviousMac ? mPreviousMac : mRoot->getAttribute(kTrailId);
    std::string computed;
    const char* refusal = nullptr;
    if (!mSeal.key.SessionMac(previous, sequence, session, computed, refusal)) {
      Add(AuditTrailFinding::eSealBadMac, session, index, refusal);
    } else if (computed != stored) {
      Add(AuditTrailFinding::eSealBadMac, session, index, "the seal does not match the session");
    }
  }

  const AuditTrailSeal& mSeal;
  const DOMElement* mRoot;
  const Anchor* mAnchor;
  std::vector<SealFinding> mFindings;
  const XMLCh* mPreviousMac = nullptr;  // null: the next sealed session is the first
  std::uint64_t mLastSequence = 0;
  bool mSealedSeen = false;
  std::string mAnchoredMac;  // the stored MAC of the session with the anchor's sequence number
};

}  // namespace

void SealSession(const AuditTrailSeal& seal, DOMElement* root, DOMElement* session) {
  DOMNode* last = session->getLastChild();
  if (!IsElementNamed(last, "CheckSum")) return;
  DOMElement* checkSum = static_cast<DOMElement*>(last);
  const DOMElement* previous = nullptr;
  for (const DOMNode* node = session->getPreviousSibling(); node && !previous;
       node = node->getPreviousSibling()) {
    previous = SealOf(node);
  }
  std::uint64_t sequence = 1;
  const XMLCh* chained = nullptr;
  if (previous) {
    // A damaged sequence number restarts the count; the check reports the gap.
    std::uint64_t before = 0;
    ParseSequence(Narrow(previous->getAttribute(kSequence)), before);
    sequence = before + 1;
    chained = previous->getAttribute(kMac);
  } else {
    if (!root->hasAttribute(kTrailId)) {
      root->setAttribute(kTrailId, XmlText(platform::UuidToString(platform::UuidCreate()).c_str()));
    }
    chained = root->getAttribute(kTrailId);
  }
  checkSum->setAttribute(kSequence, XmlText(std::to_string(sequence).c_str()));
  checkSum->setAttribute(kAlgorithm, XmlText(kAlgorithmName));
  checkSum->setAttribute(kKeyId, XmlText(seal.key.Id().c_str()));
  std::string mac;
  const char* refusal = nullptr;
  if (!seal.key.SessionMac(chained, sequence, session, mac, refusal)) {
    for (const XMLCh* name : {kSequence, kAlgorithm, kKeyId}) checkSum->removeAttribute(name);
    Log::WriteMessage("AuditTrail", "EndSession",
                      CString("The session was not sealed: ") + refusal + ".", Log::Error, true);
    return;
  }
  checkSum->setAttribute(kMac, XmlText(mac.c_str()));
}

std::vector<SealFinding> CheckSeals(const AuditTrailSeal& seal, const DOMElement* root,
                                    const DOMNode* openSession) {
  if (!root) return {};
  Anchor anchor;
  std::string anchorError;
  bool anchorMissing = false;
  const bool hasAnchorFile = !seal.anchorFile.IsEmpty();
  const bool anchorRead =
      hasAnchorFile && ReadAnchor(seal.anchorFile, anchor, anchorError, anchorMissing);
  ChainCheck check(seal, root, anchorRead ? &anchor : nullptr);
  int index = 0;
  for (const DOMNode* node = root->getFirstChild(); node && node != openSession;
       node = node->getNextSibling(), ++index) {
    check.Session(node, index);
  }
  // Only sealing makes the identifier, so a trail that has one had sealed sessions.
  const bool wasSealed = check.SealedSeen() || root->hasAttribute(kTrailId);
  if (anchorRead) {
    const CString mismatch = check.AnchorMismatch();
    if (!mismatch.IsEmpty()) check.Add(AuditTrailFinding::eSealTruncated, nullptr, -1, mismatch);
  } else if (hasAnchorFile && (wasSealed || !anchorMissing)) {
    check.Add(AuditTrailFinding::eSealTruncated, nullptr, -1,
              CString("the anchor file cannot be read: ") + anchorError.c_str());
  } else if (!check.SealedSeen() && wasSealed) {
    check.Add(AuditTrailFinding::eSealTruncated, nullptr, -1,
              "the trail was sealed, yet holds no sealed session");
  }
  return std::move(check.Findings());
}

bool WriteSealAnchor(const AuditTrailSeal& seal, const DOMElement* root, std::string& error) {
  if (seal.anchorFile.IsEmpty() || !root) return true;
  const DOMElement* last = nullptr;
  for (const DOMNode* node = root->getLastChild(); node && !last;
       node = node->getPreviousSibling()) {
    last = SealOf(node);
  }
  if (!last) return true;
  Anchor anchor;
  anchor.trail = Narrow(root->getAttribute(kTrailId));
  anchor.mac = Narrow(last->getAttribute(kMac));
  if (!IsTrailIdText(anchor.trail) ||
      !ParseSequence(Narrow(last->getAttribute(kSequence)), anchor.sequence) ||
      !IsMacText(anchor.mac)) {
    error = "the last seal of the trail is malformed";
    return false;
  }
  return platform::WriteFileAtomically(platform::ToNativePath(seal.anchorFile.GetString()),
                                       AnchorText(anchor), &error);
}

const char* SealFindingKindName(AuditTrailFinding::EKind kind) {
  switch (kind) {
    case AuditTrailFinding::eSealBadMac:
      return "bad MAC";
    case AuditTrailFinding::eSealGap:
      return "gap in the sequence";
    case AuditTrailFinding::eSealTruncated:
      return "truncated against the anchor";
    case AuditTrailFinding::eSealUnsealed:
      return "unsealed session after sealed ones";
    default:
      return "";
  }
}

CString SealFindingText(const AuditTrailFinding& finding) {
  CString text;
  const char* kind = SealFindingKindName(finding.kind);
  if (finding.index >= 0) {
    text.Format("Session %d: %s", finding.index + 1, kind);
  } else {
    text.Format("%c%s", std::toupper(static_cast<unsigned char>(kind[0])), kind + 1);
  }
  if (!finding.detail.IsEmpty()) text += " (" + finding.detail + ")";
  return text + ".";
}

}  // namespace audit
}  // namespace zenutl
