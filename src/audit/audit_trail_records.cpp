// Read-only views of the audit trail's document: the check of every closed session, and the
// sessions and events as plain records.
#include <algorithm>

#include "audit/audit_seal.h"
#include "audit/audit_trail_document.h"
#include "audit/audit_xml.h"
#include "zenutl/audit_trail.h"
#include "zenutl/rolling_checksum.h"

XERCES_CPP_NAMESPACE_USE
using namespace zenutl::audit;  // NOLINT: the implementation file of this component

namespace {

CString AttributeOf(const DOMNode* node, const char* name) {
  if (!node || node->getNodeType() != DOMNode::ELEMENT_NODE) return CString();
  return ToCString(static_cast<const DOMElement*>(node)->getAttribute(XmlText(name)));
}

// The text nodes directly under `node`, joined: the message of an "Event", the details of
// "Details", the extended information of "User".
CString DirectTextOf(const DOMNode* node) {
  CString text;
  for (const DOMNode* child = node ? node->getFirstChild() : nullptr; child;
       child = child->getNextSibling()) {
    if (child->getNodeType() == DOMNode::TEXT_NODE) text += ToCString(child->getNodeValue());
  }
  return text;
}

std::vector<AuditTrailEventRecord> EventRecordsOf(const DOMNode* events) {
  std::vector<AuditTrailEventRecord> records;
  for (const DOMNode* event = events ? events->getFirstChild() : nullptr; event;
       event = event->getNextSibling()) {
    if (!IsElementNamed(event, "Event")) continue;
    AuditTrailEventRecord record;
    record.date = AttributeOf(event, "Date");
    record.utc = AttributeOf(event, "UTC");
    record.message = DirectTextOf(event);
    record.details = DirectTextOf(FindChildElement(event, "Details"));
    record.subEvents = EventRecordsOf(FindChildElement(event, "Events"));
    records.push_back(record);
  }
  return records;
}

AuditTrailSessionRecord SessionRecordOf(const DOMNode* session, int index) {
  AuditTrailSessionRecord record;
  record.index = index;
  record.isSession = IsElementNamed(session, "Session");
  if (!record.isSession) return record;
  record.application = AttributeOf(session, "Application");
  record.project = AttributeOf(session, "Project");
  record.date = AttributeOf(session, "Date");
  record.utc = AttributeOf(session, "UTC");
  const DOMElement* user = FindChildElement(session, "User");
  record.user = AttributeOf(user, "User");
  record.domain = AttributeOf(user, "Domain");
  record.computer = AttributeOf(user, "Computer");
  record.extendedUserInfo = DirectTextOf(user);
  record.events = EventRecordsOf(FindChildElement(session, "Events"));
  const DOMNode* last = session->getLastChild();
  record.hasCheckSum = IsElementNamed(last, "CheckSum");
  if (record.hasCheckSum && last->hasChildNodes()) {
    record.checkSum = NarrowToLowBytes(last->getFirstChild()->getNodeValue());
  }
  return record;
}

AuditTrailFinding FindingFor(const DOMNode* session, int index, AuditTrailFinding::EKind kind) {
  AuditTrailFinding finding;
  finding.kind = kind;
  finding.index = index;
  finding.date = AttributeOf(session, "Date");
  const DOMElement* user = FindChildElement(session, "User");
  finding.user = AttributeOf(user, "User");
  finding.computer = AttributeOf(user, "Computer");
  return finding;
}

}  // namespace

std::vector<AuditTrailFinding> AuditTrail::FindUnverifiedSessions() const {
  // Newest closed session first, stepping back through the siblings: a DOM child list finds its
  // n-th item by walking from the first child, so indexing it would make the check quadratic in
  // the number of sessions. The open session, when there is one, is the root's last child.
  std::vector<AuditTrailFinding> findings;
  const DOMElement* root = mDocument->GetRoot();
  const DOMNode* newestClosed = root ? root->getLastChild() : nullptr;
  if (newestClosed && mDocument->session) newestClosed = newestClosed->getPreviousSibling();
  int index = LastClosedSessionIndex(*mDocument);
  CString stored;
  for (const DOMNode* session = newestClosed; session;
       session = session->getPreviousSibling(), --index) {
    const CString computed = RollingChecksum::ComputeSignature(session);
    const DOMNode* last = session->getLastChild();
    if (!IsElementNamed(last, "CheckSum")) {
      AuditTrailFinding finding =
          FindingFor(session, index,
                     IsElementNamed(session, "Session") ? AuditTrailFinding::eCheckSumMissing
                                                        : AuditTrailFinding::eNotASession);
      finding.computedCheckSum = computed;
      findings.push_back(finding);
      continue;
    }
    if (last->hasChildNodes()) stored = NarrowToLowBytes(last->getFirstChild()->getNodeValue());
    if (stored != computed) {
      AuditTrailFinding finding = FindingFor(session, index, AuditTrailFinding::eCheckSumMismatch);
      finding.storedCheckSum = stored;
      finding.computedCheckSum = computed;
      findings.push_back(finding);
    }
  }
  std::reverse(findings.begin(), findings.end());
  if (mSeal) {
    for (const SealFinding& seal : CheckSeals(*mSeal, root, mDocument->session)) {
      AuditTrailFinding finding = FindingFor(seal.session, seal.index, seal.kind);
      finding.detail = seal.detail;
      findings.push_back(finding);
    }
  }
  return findings;
}

std::vector<AuditTrailSessionRecord> AuditTrail::GetSessionRecords() const {
  std::vector<AuditTrailSessionRecord> records;
  const DOMElement* root = mDocument->GetRoot();
  int index = 0;
  for (const DOMNode* child = root ? root->getFirstChild() : nullptr; child;
       child = child->getNextSibling()) {
    records.push_back(SessionRecordOf(child, index++));
  }
  return records;
}

int AuditTrail::CountSessions() const {
  return RootChildCount(*mDocument);
}

bool AuditTrail::HasAuditTrailRoot() const {
  return IsElementNamed(mDocument->GetRoot(), "AuditTrail");
}
