#include "zenutl/audit_trail_settings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/native_path.h"
#include "support/temp_dir.h"
#include "zenutl/exception.h"
#include "zenutl/ini_file_section.h"

namespace {

// An INI store that fails with an Exception when one chosen key is read.
class FailingSection : public IniFileSection {
 public:
  FailingSection(const char* file, std::string failingKey)
      : IniFileSection(file, "AuditTrail"), failingKey_(failingKey) {}
  using IniFileSection::ReadKey;
  bool ReadKey(const char* key, CString& value) const override {
    if (failingKey_ == key) throw Exception(CString("cannot read ") + key);
    return IniFileSection::ReadKey(key, value);
  }

 private:
  std::string failingKey_;
};

// An INI store that counts its destruction, to observe what the settings delete.
class CountedSection : public IniFileSection {
 public:
  CountedSection(const char* file, int* destroyed)
      : IniFileSection(file, "AuditTrail"), destroyed_(destroyed) {}
  ~CountedSection() override { ++*destroyed_; }

 private:
  int* destroyed_;
};

class AuditTrailSettingsTest : public zenutl_test::TempDirTest {
 protected:
  ConfigurationSection* NewSection() { return new IniFileSection(ini_.c_str(), "AuditTrail"); }
  // Writes the file itself, so that loading is tested against text as a person would type it.
  void StoreFile(const std::string& lines) {
    zenutl_test::WriteWholeFile(File("app.ini"), "[Other]\nLogEvents=1\n[AuditTrail]\n" + lines);
  }
  std::string Stored(const char* key) {
    CString value("<missing>");
    IniFileSection(ini_.c_str(), "AuditTrail").ReadKey(key, value);
    return value.GetString();
  }

  const std::string ini_ = zenutl::platform::FromNativePath(File("app.ini"));
};

void ExpectOptions(const AuditTrailSettings& settings, int level, bool prompt, bool locked,
                   const char* info) {
  EXPECT_EQ(settings.GetLogLevel(), level);
  EXPECT_EQ(settings.GetPromptForExtendedUserInfo(), prompt);
  EXPECT_EQ(settings.GetLockedUI(), locked);
  EXPECT_STREQ(settings.GetExtendedUserInfo().GetString(), info);
}

void SetOptions(AuditTrailSettings& settings, int level, bool prompt, bool locked,
                const char* info) {
  settings.SetLogEvents(level);
  settings.SetPromptForExtendedUserInfo(prompt);
  settings.SetLockedUI(locked);
  settings.SetExtendedUserInfo(info);
}

TEST(AuditTrailSettings, StartsFromDefaultsAndIgnoresLoadAndSaveWithoutSection) {
  AuditTrailSettings settings(nullptr);
  ExpectOptions(settings, 0, false, false, "");
  EXPECT_EQ(settings.GetConfigurationSection(), nullptr);
  SetOptions(settings, 2, true, true, "x");
  settings.Load();
  settings.Save();
  ExpectOptions(settings, 2, true, true, "x");
}

TEST(AuditTrailSettings, DerivesOnAndStrictFromTheLevel) {
  struct Row {
    int level;
    bool on;
    bool strict;
  };
  const Row rows[] = {
      {-1, false, false}, {0, false, false}, {1, true, false}, {2, true, true}, {3, true, false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.level);
    AuditTrailSettings settings(nullptr);
    settings.SetLogEvents(row.level);
    EXPECT_EQ(settings.GetLogLevel(), row.level);
    EXPECT_EQ(settings.GetLogEvents(), row.on);
    EXPECT_EQ(settings.GetStrictLogEvents(), row.strict);
  }
}

TEST_F(AuditTrailSettingsTest, LoadsTheFourKeysOnConstruction) {
  StoreFile(
      "LogEvents=2\nPromptForExtendedUserInfo=1\nLockedUI=1\nExtendedUserInfo=Anna Berg, QA\n");
  AuditTrailSettings settings(NewSection());
  ExpectOptions(settings, 2, true, true, "Anna Berg, QA");
  EXPECT_TRUE(settings.GetStrictLogEvents());
}

TEST_F(AuditTrailSettingsTest, ReadsEachKeyByItsOwnTextRulesAndKeepsMissingOnes) {
  struct Row {
    const char* key;
    const char* text;
    int level;
    bool prompt;
    bool locked;
  };
  // Before each load the options are level 1, prompt true, locked true.
  const Row rows[] = {
      {"LogEvents", "0", 0, true, false},
      {"LogEvents", "2", 2, true, false},
      {"LogEvents", "2x", 1, true, false},  // not a whole number: the level stays
      {"PromptForExtendedUserInfo", "0", 1, false, false},
      {"PromptForExtendedUserInfo", "", 1, true, false},  // only "0" is false
      {"PromptForExtendedUserInfo", "no", 1, true, false},
      {"LockedUI", "1", 1, true, true},
      {"LockedUI", "7", 1, true, true},
      {"LockedUI", "0", 1, true, false},
      {"LockedUI", "true", 1, true, false},  // not a number: reads as 0
      {"ExtendedUserInfo", "", 1, true, false},
      // Missing keys keep their options, except "LockedUI", which then reads as false.
      {"Unrelated", "x", 1, true, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.key) + "=" + row.text);
    StoreFile(std::string(row.key) + "=" + row.text + "\n");
    AuditTrailSettings settings(nullptr);
    SetOptions(settings, 1, true, true, "before");
    settings.SetConfigurationSection(NewSection());
    EXPECT_EQ(settings.GetLogLevel(), row.level);
    EXPECT_EQ(settings.GetPromptForExtendedUserInfo(), row.prompt);
    EXPECT_EQ(settings.GetLockedUI(), row.locked);
    EXPECT_STREQ(settings.GetExtendedUserInfo().GetString(),
                 std::string(row.key) == "ExtendedUserInfo" ? row.text : "before");
  }
}

TEST_F(AuditTrailSettingsTest, StopsLoadingAtAKeyThatThrows) {
  StoreFile("LogEvents=2\nPromptForExtendedUserInfo=0\nLockedUI=0\nExtendedUserInfo=loaded\n");
  struct Row {
    const char* failingKey;
    int level;
    bool prompt;
    bool locked;
    const char* info;
  };
  // Options start at level 1, prompt true, locked true, "before".
  const Row rows[] = {
      {"LogEvents", 1, true, true, "before"},
      {"PromptForExtendedUserInfo", 2, true, true, "before"},
      {"LockedUI", 2, false, true, "before"},
      {"ExtendedUserInfo", 2, false, false, "before"},
      {"NoSuchKey", 2, false, false, "loaded"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.failingKey);
    AuditTrailSettings settings(nullptr);
    SetOptions(settings, 1, true, true, "before");
    settings.SetConfigurationSection(new FailingSection(ini_.c_str(), row.failingKey));
    ExpectOptions(settings, row.level, row.prompt, row.locked, row.info);
  }
}

TEST_F(AuditTrailSettingsTest, SavesThreeKeysAndNeverTheExtendedUserInfo) {
  struct Row {
    int level;
    bool prompt;
    bool locked;
    const char* logEvents;
    const char* promptText;
    const char* lockedText;
  };
  const Row rows[] = {
      {0, false, false, "0", "0", "0"},
      {2, true, true, "2", "1", "1"},
      {-5, false, true, "-5", "0", "1"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.level);
    StoreFile("ExtendedUserInfo=from the administrator\n");
    {
      AuditTrailSettings settings(NewSection());
      SetOptions(settings, row.level, row.prompt, row.locked, "typed by the user");
      settings.Save();
    }
    EXPECT_EQ(Stored("LogEvents"), row.logEvents);
    EXPECT_EQ(Stored("PromptForExtendedUserInfo"), row.promptText);
    EXPECT_EQ(Stored("LockedUI"), row.lockedText);
    EXPECT_EQ(Stored("ExtendedUserInfo"), "from the administrator");

    // What was saved loads back, "LockedUI" included although it is read as a number.
    AuditTrailSettings reloaded(NewSection());
    ExpectOptions(reloaded, row.level, row.prompt, row.locked, "from the administrator");
  }
}

TEST_F(AuditTrailSettingsTest, OwnsItsSectionAndDeletesItOnlyWhenReplaced) {
  int destroyed = 0;
  {
    CountedSection* first = new CountedSection(ini_.c_str(), &destroyed);
    AuditTrailSettings settings(first);
    EXPECT_EQ(settings.GetConfigurationSection(), first);
    settings.SetConfigurationSection(first);  // the same object: kept
    EXPECT_EQ(destroyed, 0);
    StoreFile("LogEvents=2\n");
    settings.Load();
    EXPECT_EQ(settings.GetLogLevel(), 2);

    settings.SetConfigurationSection(new CountedSection(ini_.c_str(), &destroyed));
    EXPECT_EQ(destroyed, 1);
    settings.SetConfigurationSection(nullptr);
    EXPECT_EQ(destroyed, 2);
    settings.SetConfigurationSection(new CountedSection(ini_.c_str(), &destroyed));
  }
  EXPECT_EQ(destroyed, 3);
}

TEST_F(AuditTrailSettingsTest, AssignmentCopiesOptionsAndTakesACopyOfTheSection) {
  int destroyed = 0;
  AuditTrailSettings source(NewSection());
  SetOptions(source, 2, true, true, "source info");

  AuditTrailSettings target(new CountedSection(ini_.c_str(), &destroyed));
  target = source;
  ExpectOptions(target, 2, true, true, "source info");
  EXPECT_EQ(destroyed, 1);
  ASSERT_NE(target.GetConfigurationSection(), nullptr);
  EXPECT_NE(target.GetConfigurationSection(), source.GetConfigurationSection());
  // The copy works on the same store and does not load on assignment.
  target.Save();
  EXPECT_EQ(Stored("LogEvents"), "2");

  AuditTrailSettings withoutSection(nullptr);
  target = withoutSection;
  EXPECT_EQ(target.GetConfigurationSection(), nullptr);
  ExpectOptions(target, 0, false, false, "");

  AuditTrailSettings& self = source;
  source = self;
  ExpectOptions(source, 2, true, true, "source info");
  ASSERT_NE(source.GetConfigurationSection(), nullptr);
  source.Save();  // the section that replaced itself is alive
  EXPECT_EQ(Stored("LockedUI"), "1");

  AuditTrailSettings copied(source);
  ExpectOptions(copied, 2, true, true, "source info");
  EXPECT_NE(copied.GetConfigurationSection(), source.GetConfigurationSection());
  EXPECT_NE(copied.GetConfigurationSection(), nullptr);
}

}  // namespace
