// The audit trail's keyed seal: taking the key, checking the chain of seals, keeping the anchor.
// Sealing itself happens in EndSession; the chain and the anchor format are in audit_seal.h.
#include <openssl/crypto.h>

#include <string>

#include "audit/audit_seal.h"
#include "audit/audit_trail_document.h"
#include "platform/file_bytes.h"
#include "platform/native_path.h"
#include "zenutl/audit_trail.h"
#include "zenutl/log.h"

using namespace zenutl::audit;  // NOLINT: the implementation file of this component

namespace {

// Longer keys are hashed down by HMAC anyway; the bound only keeps a wrong path (a log file, a
// device) from being read whole.
const std::size_t kKeyFileLimit = 4096;

// The key's bytes, wiped when they go.
class KeyBytes {
 public:
  ~KeyBytes() { OPENSSL_cleanse(&bytes[0], bytes.size()); }
  std::string bytes;
};

void LogSealProblem(const char* function, const CString& text) {
  Log::WriteMessage("AuditTrail", function, text, Log::Error, true);
}

}  // namespace

bool AuditTrail::SetSeal(const char* keyFile, const char* anchorFile) {
  mSeal.reset();
  if (!keyFile || !*keyFile) return false;
  KeyBytes key;
  std::string reason;
  if (!zenutl::platform::ReadFileBytes(zenutl::platform::ToNativePath(keyFile), key.bytes, reason,
                                       kKeyFileLimit)) {
    LogSealProblem("SetSeal", CString("The key file '") + keyFile + "' cannot be read: " +
                                  reason.c_str() + "; sessions are not sealed.");
    return false;
  }
  if (key.bytes.empty()) {
    LogSealProblem("SetSeal",
                   CString("The key file '") + keyFile + "' is empty; sessions are not sealed.");
    return false;
  }
  boost::shared_ptr<AuditTrailSeal> seal(new AuditTrailSeal(key.bytes, anchorFile));
  if (!seal->key.IsUsable()) {
    LogSealProblem("SetSeal",
                   "The cryptographic library refused the key; sessions are not sealed.");
    return false;
  }
  mSeal = seal;
  return true;
}

bool AuditTrail::RecordSealFindings(const std::vector<AuditTrailFinding>& findings,
                                    CString& message) {
  int count = 0;
  CString details;
  for (const AuditTrailFinding& finding : findings) {
    if (!finding.IsSealFinding()) continue;
    ++count;
    if (!details.IsEmpty()) details += "\n";
    details += SealFindingText(finding);
  }
  if (count == 0) return true;
  CString summary;
  summary.Format("The seal of the Audit Trail could not be verified (%d finding%s).", count,
                 count == 1 ? "" : "s");
  AddEvent(summary, details, nullptr);
  if (!message.IsEmpty()) message += "\n";
  message += summary;
  return false;
}

void AuditTrail::SaveSealAnchor() {
  if (!mSeal) return;
  std::string error;
  if (!WriteSealAnchor(*mSeal, mDocument->GetRoot(), error)) {
    LogSealProblem("Save", "The anchor file '" + mSeal->anchorFile +
                               "' was not written: " + error.c_str() + ".");
  }
}
