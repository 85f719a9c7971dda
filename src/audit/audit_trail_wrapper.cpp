#include "zenutl/audit_trail_wrapper.h"

void AuditTrailWrapper::CreateNewTrail(ConfigurationSection* section) {
  mTrail.reset(new AuditTrail(section));
  mTrail->BeginSession();
}

bool AuditTrailWrapper::IsTrailing() const {
  return mTrail && mTrail->GetAuditTrailSettings().GetLogLevel() != 0;
}

void AuditTrailWrapper::PushSubTrail() {
  boost::shared_ptr<AuditTrail> subTrail(new AuditTrail(nullptr));
  subTrail->BeginSession();
  mSubTrails.push_back(subTrail);
}

void AuditTrailWrapper::PopSubTrail(const char* message, const char* details) {
  if (mSubTrails.empty()) {
    if (mTrail) mTrail->AddEvent(message, details, nullptr);
    return;
  }
  boost::shared_ptr<AuditTrail> popped = mSubTrails.back();
  mSubTrails.pop_back();
  if (!mTrail) return;
  AuditTrail* target = mSubTrails.empty() ? mTrail.get() : mSubTrails.back().get();
  target->AddEvent(message, details, popped.get());
}

void AuditTrailWrapper::AddEvent(const char* message, const char* details, AuditTrail* subTrail) {
  if (!mTrail) return;
  AuditTrail* target = mSubTrails.empty() ? mTrail.get() : mSubTrails.back().get();
  target->AddEvent(message, details, subTrail);
}
