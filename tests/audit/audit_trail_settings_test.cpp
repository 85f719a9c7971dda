#include "zenutl/audit_trail_settings.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "zenutl/exception.h"

namespace {

// Stand-in store until the INI store is available: keys in a map shared by all copies.
class MapSection : public ConfigurationSection {
 public:
  typedef std::map<std::string, std::string> Keys;
  explicit MapSection(std::shared_ptr<Keys> keys) : keys_(keys) {}
  ConfigurationSection* Copy() const override { return new MapSection(keys_); }
  void ChangeSection(const char*) override {}
  bool ChangeSubSection(const char*, int) override { return false; }
  bool ChangeSubSection(const char*) override { return false; }
  ConfigurationSection* CreateSubSection(const char*, int) const override { return nullptr; }
  ConfigurationSection* CreateSubSection(const char*) const override { return nullptr; }
  bool SupportsSubSections() const override { return false; }
  bool DeleteKey(const char* key) override { return keys_->erase(key) == 1; }
  bool DeleteSection() override {
    keys_->clear();
    return true;
  }
  bool Flush() const override { return true; }
  bool IsEmpty() const override { return keys_->empty(); }
  bool HasSection(const char*, int) const override { return !keys_->empty(); }
  bool HasKey(const char* key) const override { return keys_->count(key) == 1; }
  bool ReadKey(const char*, wchar_t*, unsigned int) const override { return false; }
  bool ReadKey(const char*, std::wstring&) const override { return false; }
  bool ReadKey(const char* key, CString& value) const override {
    Keys::const_iterator found = keys_->find(key);
    if (found == keys_->end()) return false;
    value = found->second.c_str();
    return true;
  }
  using ConfigurationSection::ReadKey;
  bool WriteKey(const char*, const wchar_t*) override { return false; }
  bool WriteKey(const char* key, const char* value) override {
    (*keys_)[key] = value;
    return true;
  }
  using ConfigurationSection::WriteKey;
  bool WriteToSection(ConfigurationSection*) const override { return false; }

 private:
  std::shared_ptr<Keys> keys_;
};

// A store that fails with an Exception when one chosen key is read.
class FailingSection : public MapSection {
 public:
  FailingSection(std::shared_ptr<Keys> keys, std::string failingKey)
      : MapSection(keys), failingKey_(failingKey) {}
  bool ReadKey(const char* key, CString& value) const override {
    if (failingKey_ == key) throw Exception(CString("cannot read ") + key);
    return MapSection::ReadKey(key, value);
  }
  using MapSection::ReadKey;

 private:
  std::string failingKey_;
};

// Counts the destruction of sections, to observe what the settings delete.
class CountedSection : public MapSection {
 public:
  CountedSection(std::shared_ptr<Keys> keys, int* destroyed)
      : MapSection(keys), destroyed_(destroyed) {}
  ~CountedSection() override { ++*destroyed_; }

 private:
  int* destroyed_;
};

class AuditTrailSettingsTest : public ::testing::Test {
 protected:
  ConfigurationSection* NewSection() { return new MapSection(keys_); }
  void Store(const char* key, const char* text) { (*keys_)[key] = text; }
  bool IsStored(const char* key) { return keys_->count(key) == 1; }
  std::string Stored(const char* key) { return IsStored(key) ? (*keys_)[key] : "<missing>"; }

  std::shared_ptr<MapSection::Keys> keys_ = std::make_shared<MapSection::Keys>();
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
  Store("LogEvents", "2");
  Store("PromptForExtendedUserInfo", "1");
  Store("LockedUI", "1");
  Store("ExtendedUserInfo", "Anna Berg, QA");
  AuditTrailSettings settings(NewSection());
  ExpectOptions(settings, 2, true, true, "Anna Berg, QA");
  EXPECT_TRUE(settings.GetStrictLogEvents());
}

TEST_F(AuditTrailSettingsTest, ReadsEachKeyByItsOwnTextRules) {
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
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.key) + "=" + row.text);
    keys_->clear();
    Store(row.key, row.text);
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

TEST_F(AuditTrailSettingsTest, MissingKeysKeepTheirOptionsExceptLockedUI) {
  AuditTrailSettings settings(nullptr);
  SetOptions(settings, 2, true, true, "kept");
  settings.SetConfigurationSection(NewSection());
  ExpectOptions(settings, 2, true, false, "kept");
}

TEST_F(AuditTrailSettingsTest, StopsLoadingAtAKeyThatThrows) {
  Store("LogEvents", "2");
  Store("PromptForExtendedUserInfo", "0");
  Store("LockedUI", "0");
  Store("ExtendedUserInfo", "loaded");
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
    settings.SetConfigurationSection(new FailingSection(keys_, row.failingKey));
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
    keys_->clear();
    Store("ExtendedUserInfo", "from the administrator");
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
    CountedSection* first = new CountedSection(keys_, &destroyed);
    AuditTrailSettings settings(first);
    EXPECT_EQ(settings.GetConfigurationSection(), first);
    settings.SetConfigurationSection(first);  // the same object: kept
    EXPECT_EQ(destroyed, 0);
    Store("LogEvents", "2");
    settings.Load();
    EXPECT_EQ(settings.GetLogLevel(), 2);

    settings.SetConfigurationSection(new CountedSection(keys_, &destroyed));
    EXPECT_EQ(destroyed, 1);
    settings.SetConfigurationSection(nullptr);
    EXPECT_EQ(destroyed, 2);
    settings.SetConfigurationSection(new CountedSection(keys_, &destroyed));
  }
  EXPECT_EQ(destroyed, 3);
}

TEST_F(AuditTrailSettingsTest, AssignmentCopiesOptionsAndTakesACopyOfTheSection) {
  int destroyed = 0;
  AuditTrailSettings source(NewSection());
  SetOptions(source, 2, true, true, "source info");

  AuditTrailSettings target(new CountedSection(keys_, &destroyed));
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
