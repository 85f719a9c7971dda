// The audit trail's Read on arbitrary bytes.
//
// Invariants beyond "no crash": bytes are either refused with Exception or become the trail; a
// trail that was read saves, reads back and saves to the same text and the same verdict of
// VerifySignature; a session recorded on top of it verifies after a save and a read, leaving the
// verdict on the older sessions as it was. The read-only check agrees with VerifySignature, and
// each of its findings names, in order, a child of the root that the session records list.
// With a seal: the seal's findings follow those of the checksum, in order of the sessions, one
// about the whole trail last; and a session sealed on top of the trail never has a bad MAC after
// a save and a read, whatever the trail held before it.
#include <unistd.h>
#include <xercesc/util/PlatformUtils.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
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

// The seal's findings of a trail with a seal: after the checksum's, each on a later child than
// the one before, the whole trail's (-1) last.
void CheckSealFindings(const AuditTrail& trail) {
  bool seal = false;
  int previous = -1;
  bool wholeTrail = false;
  for (const AuditTrailFinding& finding : trail.FindUnverifiedSessions()) {
    if (!finding.IsSealFinding()) {
      if (seal) std::abort();
      continue;
    }
    if (!seal) previous = -1;
    seal = true;
    if (wholeTrail || finding.index >= trail.CountSessions()) std::abort();
    if (finding.index < 0) {
      wholeTrail = true;
    } else if (finding.index <= previous) {
      std::abort();
    }
    previous = finding.index;
  }
}

// A key file of the run's own, removed when the run ends.
const char* KeyFile() {
  static std::string path;
  if (path.empty()) {
    path = "/tmp/zenutl-fuzz-seal-" + std::to_string(getpid()) + ".key";
    std::ofstream(path) << "fuzzing key";
    std::atexit([] { std::remove(path.c_str()); });
  }
  return path.c_str();
}

void CheckSeal(const std::string& saved) {
  AuditTrail sealed;
  if (!Read(sealed, saved) || !sealed.SetSeal(KeyFile(), nullptr)) std::abort();
  CheckSealFindings(sealed);
  sealed.BeginSession();
  sealed.AddEvent("sealed", "details", nullptr);
  sealed.EndSession();
  AuditTrail reread;
  if (!Read(reread, Saved(sealed)) || !reread.SetSeal(KeyFile(), nullptr)) std::abort();
  const int last = reread.CountSessions() - 1;
  for (const AuditTrailFinding& finding : reread.FindUnverifiedSessions()) {
    if (finding.index == last && finding.kind == AuditTrailFinding::eSealBadMac) std::abort();
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
  CheckSeal(saved);
  return 0;
}
