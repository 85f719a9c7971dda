// An audit trail read from arbitrary bytes, then looked at the way a checking program does: its
// session records and the read-only check of its sessions.
//
// Invariants beyond "no crash": only Exception escapes Read; every finding names a child of the
// root that the records list too, in the same order; the read-only check and VerifySignature
// agree on whether the trail verifies.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "zenutl/audit_trail.h"
#include "zenutl/exception.h"
#include "zenutl/xml_section.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Keeps the XML library up between inputs, instead of one start and stop per trail.
  static const bool initialised = (XMLSection::Initialize(), true);
  (void)initialised;
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  AuditTrail trail;
  try {
    trail.Read(in);
  } catch (const Exception&) {
    return 0;
  }
  const std::vector<AuditTrailSessionRecord> records = trail.GetSessionRecords();
  const std::vector<AuditTrailFinding> findings = trail.FindUnverifiedSessions();
  if (static_cast<int>(records.size()) != trail.CountSessions()) std::abort();
  int previous = -1;
  for (const AuditTrailFinding& finding : findings) {
    if (finding.index <= previous || finding.index >= static_cast<int>(records.size())) {
      std::abort();
    }
    if (finding.kind == AuditTrailFinding::eNotASession && records[finding.index].isSession) {
      std::abort();
    }
    previous = finding.index;
  }
  if (trail.VerifySignature(nullptr) != findings.empty()) std::abort();
  return 0;
}
