// The audit trail's Read on arbitrary bytes.
//
// Invariants beyond "no crash": bytes are either refused with Exception or become the trail; a
// trail that was read saves, reads back and saves to the same text and the same verdict of
// VerifySignature; a session recorded on top of it verifies after a save and a read, leaving the
// verdict on the older sessions as it was.
#include <xercesc/util/PlatformUtils.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

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
  const std::string verdict = Verdict(trail);

  AuditTrail reread;
  if (!Read(reread, saved) || Saved(reread) != saved || Verdict(reread) != verdict) std::abort();

  reread.BeginSession();
  reread.AddEvent("fuzzed", "details", nullptr);
  reread.EndSession();
  AuditTrail extended;
  if (!Read(extended, Saved(reread)) || Verdict(extended) != verdict) std::abort();
  return 0;
}
