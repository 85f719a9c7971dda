// The audit trail's Read on arbitrary bytes.
//
// Invariants beyond "no crash": bytes are either refused with Exception or become the trail; a
// trail that was read saves, reads back and saves to the same text and the same verdict of
// VerifySignature; a session recorded on top of it verifies after a save and a read, leaving the
// verdict on the older sessions as it was. The read-only check agrees with VerifySignature, and
// each of its findings names, in order, a child of the root that the session records list.
#include <xercesc/util/PlatformUtils.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "zenutl/audit_trail.h"
#include "zenutl/exception.h"
#include "zenutl/xml_input_limit.h"

namespace {

bool Read(AuditTrail& trail, const std::string& text) {
  std::istringstream in(text);
  try {
    trail.Read(in);
    return true;
  } catch (const Exception&) {
    return false;
  }
}

std::string Saved(AuditTrail& trail) {
  std::ostringstream out;
  trail.Save(out);
  return out.str();
}

// The finding of VerifySignature, "" when every closed session verifies.
std::string Verdict(AuditTrail& trail) {
  CString message;
  return trail.VerifySignature(&message) ? std::string() : std::string(message.GetString());
}

// The read-only check against the records: findings oldest first, each on a listed child, and
// "not a session" only where the records see no session.
void CheckFindings(const AuditTrail& trail) {
  const std::vector<AuditTrailSessionRecord> records = trail.GetSessionRecords();
  if (static_cast<int>(records.size()) != trail.CountSessions()) std::abort();
  int previous = -1;
  for (const AuditTrailFinding& finding : trail.FindUnverifiedSessions()) {
    if (finding.index <= previous || finding.index >= static_cast<int>(records.size())) {
      std::abort();
    }
    if (finding.kind == AuditTrailFinding::eNotASession && records[finding.index].isSession) {
      std::abort();
    }
    previous = finding.index;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::size_t previous = ZnSetXMLInputLimit(1 << 20);
  (void)previous;
  // Held for the whole run: each trail's own Initialize and Terminate then cost nothing.
  static const bool xerces = (xercesc::XMLPlatformUtils::Initialize(), true);
  (void)xerces;
  AuditTrail trail;
  if (!Read(trail, std::string(reinterpret_cast<const char*>(data), size))) return 0;
  const std::string saved = Saved(trail);
  CheckFindings(trail);
  const bool clean = trail.FindUnverifiedSessions().empty();
  const std::string verdict = Verdict(trail);
  if (verdict.empty() != clean) std::abort();

  AuditTrail reread;
  if (!Read(reread, saved) || Saved(reread) != saved || Verdict(reread) != verdict) std::abort();

  reread.BeginSession();
  reread.AddEvent("fuzzed", "details", nullptr);
  reread.EndSession();
  AuditTrail extended;
  if (!Read(extended, Saved(reread)) || Verdict(extended) != verdict) std::abort();
  return 0;
}
