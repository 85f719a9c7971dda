#include "zenutl/audit_trail_settings.h"

#include "zenutl/exception.h"

AuditTrailSettings::AuditTrailSettings(ConfigurationSection* section) : mSection(section) {
  Load();
}

AuditTrailSettings::AuditTrailSettings(const AuditTrailSettings& other)
    : mLogLevel(other.mLogLevel),
      mPromptForExtendedUserInfo(other.mPromptForExtendedUserInfo),
      mLockedUI(other.mLockedUI),
      mExtendedUserInfo(other.mExtendedUserInfo),
      mSection(other.mSection ? other.mSection->Copy() : nullptr) {}

AuditTrailSettings& AuditTrailSettings::operator=(const AuditTrailSettings& other) {
  // The copy is taken before the old section goes, so assigning to itself is safe.
  ConfigurationSection* section = other.mSection ? other.mSection->Copy() : nullptr;
  mLogLevel = other.mLogLevel;
  mPromptForExtendedUserInfo = other.mPromptForExtendedUserInfo;
  mLockedUI = other.mLockedUI;
  mExtendedUserInfo = other.mExtendedUserInfo;
  delete mSection;
  mSection = section;
  return *this;
}

AuditTrailSettings::~AuditTrailSettings() {
  delete mSection;
}

void AuditTrailSettings::SetConfigurationSection(ConfigurationSection* section) {
  if (section != mSection) delete mSection;
  mSection = section;
  Load();
}

// Each read goes straight into its option, so a store that leaves its argument alone for a
// missing key leaves the option alone too.
void AuditTrailSettings::Load() {
  if (!mSection) return;
  try {
    mSection->ReadInt("LogEvents", mLogLevel);
    mSection->ReadBool("PromptForExtendedUserInfo", mPromptForExtendedUserInfo);
    int locked = 0;
    mSection->ReadInt("LockedUI", locked);
    mLockedUI = locked != 0;
    mSection->ReadKey("ExtendedUserInfo", mExtendedUserInfo);
  } catch (const Exception&) {
    // Options that could not be read keep the values they had.
  }
}

void AuditTrailSettings::Save() {
  if (!mSection) return;
  mSection->WriteInt("LogEvents", mLogLevel);
  mSection->WriteBool("PromptForExtendedUserInfo", mPromptForExtendedUserInfo);
  mSection->WriteBool("LockedUI", mLockedUI);
}
