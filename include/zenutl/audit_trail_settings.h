// AuditTrailSettings: the persisted options of one audit trail.
//
// Each trail carries one of these by value. It reads its options from the configuration section
// the application gives it and writes them back there; the section is owned by the settings and
// deleted when it is replaced or the settings go away. The keys are:
//   "LogEvents"                  the log level: 0 off, 1 on, 2 strict
//   "PromptForExtendedUserInfo"  whether a new session may ask the user who they are
//   "LockedUI"                   kept for the applications; the library doesn't act on it
//   "ExtendedUserInfo"           the text of a session's "User" element; read, never written
// Strict mode records events exactly as level 1 does; only `GetStrictLogEvents` tells them apart.
// "LockedUI" is written as a bool and read as an int, which works because a true bool is stored
// as "1" in every store.
//
// Error contract: `Load` never reports. A missing key leaves its option as it was, except
// "LockedUI", which then reads as false; an `Exception` from the store ends loading at the key
// that raised it, leaving that option and the ones after it as they were. `Save` lets an
// exception of the store through. Without a section both do nothing.
#ifndef ZENUTL_AUDIT_TRAIL_SETTINGS_H_
#define ZENUTL_AUDIT_TRAIL_SETTINGS_H_

#include "zenutl/configuration_section.h"
#include "zenutl/cstring.h"

class AuditTrailSettings {
 public:
  // Starts from the defaults (level 0, both flags false, no extended information), takes
  // ownership of `section` (null is allowed) and loads from it.
  explicit AuditTrailSettings(ConfigurationSection* section);
  // Copies the four options and takes a Copy() of the other's section; nothing is loaded.
  AuditTrailSettings(const AuditTrailSettings& other);
  // Copies the four options. The section becomes the other's Copy(), or null when the other
  // has none; the old section is deleted. Nothing is loaded.
  AuditTrailSettings& operator=(const AuditTrailSettings& other);
  virtual ~AuditTrailSettings();

  // Takes ownership of `section`, deleting the old one unless it is the same object, and loads.
  void SetConfigurationSection(ConfigurationSection* section);
  // The section in use, still owned by the settings; null when there is none.
  const ConfigurationSection* GetConfigurationSection() const { return mSection; }

  // Reads "LogEvents", "PromptForExtendedUserInfo", "LockedUI", "ExtendedUserInfo" in turn.
  void Load();
  // Writes "LogEvents", "PromptForExtendedUserInfo" and "LockedUI".
  void Save();

  // Level above 0.
  bool GetLogEvents() const { return mLogLevel > 0; }
  int GetLogLevel() const { return mLogLevel; }
  // Level exactly 2.
  bool GetStrictLogEvents() const { return mLogLevel == 2; }
  // Sets the level itself: SetLogEvents(2) turns strict mode on, it is no flag.
  void SetLogEvents(int level) { mLogLevel = level; }

  bool GetPromptForExtendedUserInfo() const { return mPromptForExtendedUserInfo; }
  void SetPromptForExtendedUserInfo(bool prompt) { mPromptForExtendedUserInfo = prompt; }

  bool GetLockedUI() const { return mLockedUI; }
  void SetLockedUI(bool locked) { mLockedUI = locked; }

  CString GetExtendedUserInfo() const { return mExtendedUserInfo; }
  void SetExtendedUserInfo(CString info) { mExtendedUserInfo = info; }

 private:
  int mLogLevel = 0;
  bool mPromptForExtendedUserInfo = false;
  bool mLockedUI = false;
  CString mExtendedUserInfo;
  ConfigurationSection* mSection = nullptr;
};

#endif  // ZENUTL_AUDIT_TRAIL_SETTINGS_H_
