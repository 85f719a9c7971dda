#include "zenutl/audit_trail.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>

#include "audit/audit_test_support.h"
#include "support/temp_dir.h"
#include "zenutl/ini_file_section.h"

namespace {

using zenutl_test::CountOf;
using zenutl_test::InspectableTrail;
using zenutl_test::SavedText;

// Counts the firings of one of the trail's signals while it lives.
class SignalCounter {
 public:
  explicit SignalCounter(AuditTrail::Signal& signal)
      : connection_(signal.connect([this](AuditTrail* trail) {
          ++count;
          last = trail;
        })) {}
  ~SignalCounter() { connection_.disconnect(); }
  int count = 0;
  AuditTrail* last = nullptr;

 private:
  boost::signals2::connection connection_;
};

TEST(AuditTrail, NewTrailHoldsTheStylesheetInstructionAndAnEmptyRoot) {
  AuditTrail trail;
  const std::string text = SavedText(trail);
  EXPECT_NE(text.find("<?xml-stylesheet type='text/xsl' href='audit_trail.xsl'?>"),
            std::string::npos);
  EXPECT_NE(text.find("<AuditTrail Version=\"1.0\"/>"), std::string::npos);
  EXPECT_TRUE(trail.IsEmpty());
  EXPECT_FALSE(trail.IsModified());
}

TEST(AuditTrail, SessionCarriesUserApplicationProjectAndStamps) {
  AuditTrail trail;
  trail.BeginSession();
  EXPECT_FALSE(trail.IsEmpty());
  const std::string text = SavedText(trail);
  EXPECT_TRUE(std::regex_search(text, std::regex("<Session [^>]*Project=\"Not Initialized\"")));
  EXPECT_TRUE(std::regex_search(text, std::regex("<Session [^>]*Version=\"1.0\"")));
  EXPECT_TRUE(std::regex_search(text, std::regex("<Session [^>]*Application=\"[^\"]+ [^\"]+\"")));
  EXPECT_TRUE(std::regex_search(
      text, std::regex("<Session [^>]*Date=\"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d "
                       "\\(UTC[+-][0-9.]+\\)\"")));
  EXPECT_TRUE(std::regex_search(text, std::regex("<Session [^>]*UTC=\"-?\\d+\"")));
  EXPECT_TRUE(std::regex_search(text, std::regex("<User [^>]*Computer=\"[^\"]+\"")));
  EXPECT_TRUE(std::regex_search(text, std::regex("<User [^>]*User=\"[^\"]+\"")));
  EXPECT_NE(text.find("<Events/></Session>"), std::string::npos);
}

TEST(AuditTrail, DateShowsTheZoneOffsetInHours) {
  const char* old = std::getenv("TZ");
  const std::string saved = old ? old : "";
  struct Row {
    const char* zone;
    const char* suffix;
  } rows[] = {{"UTC", "(UTC+0)"}, {"Asia/Kolkata", "(UTC+5.5)"}, {"Asia/Tokyo", "(UTC+9)"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.zone);
    setenv("TZ", row.zone, 1);
    tzset();
    AuditTrail trail;
    trail.BeginSession();
    EXPECT_NE(SavedText(trail).find(row.suffix), std::string::npos);
  }
  if (old) {
    setenv("TZ", saved.c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  tzset();
}

TEST(AuditTrail, UtcStampIsTheCurrentSecondCount) {
  AuditTrail trail;
  const long long before = static_cast<long long>(std::time(nullptr));
  trail.BeginSession();
  std::smatch match;
  const std::string text = SavedText(trail);
  ASSERT_TRUE(std::regex_search(text, match, std::regex("UTC=\"(-?\\d+)\"")));
  const long long stamp = std::stoll(match[1]);
  EXPECT_GE(stamp, static_cast<int>(before));
  EXPECT_LE(stamp, static_cast<int>(before) + 5);
}

TEST(AuditTrail, ProjectSetBeforeTheSessionIsRecorded) {
  AuditTrail trail("", "Spectra", nullptr);
  trail.GetAuditTrailSettings().SetLogEvents(1);
  trail.BeginSession();
  EXPECT_NE(SavedText(trail).find("Project=\"Spectra\""), std::string::npos);
}

TEST(AuditTrail, EventStoresMessageDetailsAndStripsCarriageReturns) {
  AuditTrail trail;
  trail.BeginSession();
  trail.AddEvent("line one\r\nline two", "detail\r\n", nullptr);
  trail.AddEvent("no details", nullptr, nullptr);
  const std::string text = SavedText(trail);
  EXPECT_EQ(text.find('\r'), std::string::npos);
  EXPECT_NE(text.find(">line one\nline two<Details>detail\n</Details></Event>"), std::string::npos);
  EXPECT_NE(text.find(">no details<Details/></Event>"), std::string::npos);
  EXPECT_TRUE(trail.IsModified());
}

TEST(AuditTrail, TurnedOffTrailOpensSessionsButRecordsNoEvents) {
  AuditTrail trail("", "First", nullptr);  // a file trail reads its level from the settings: 0
  trail.BeginSession();
  trail.AddEvent("ignored", "", nullptr);
  trail.SetProject("Second");
  const std::string text = SavedText(trail);
  EXPECT_EQ(CountOf(text, "<Session "), 1);
  EXPECT_EQ(CountOf(text, "<User "), 1);
  EXPECT_EQ(CountOf(text, "<Event "), 0);
  EXPECT_NE(text.find("Project=\"First\""), std::string::npos);
  EXPECT_FALSE(trail.IsModified());
}

TEST(AuditTrail, SetProjectRenamesTheOpenSession) {
  AuditTrail trail;
  SignalCounter changed(AuditTrail::msAuditTrailProjectNameChanged);
  trail.SetProject(nullptr);
  trail.BeginSession();
  trail.SetProject("Renamed");
  EXPECT_NE(SavedText(trail).find("Project=\"Renamed\""), std::string::npos);
  EXPECT_EQ(changed.count, 1);
  EXPECT_TRUE(trail.IsModified());
}

TEST(AuditTrail, BeginAndEndSessionAreIdempotent) {
  AuditTrail trail;
  SignalCounter begun(AuditTrail::msAuditTrailBeginSession);
  SignalCounter ended(AuditTrail::msAuditTrailEndSession);
  trail.BeginSession();
  trail.BeginSession();
  trail.EndSession();
  trail.EndSession();
  const std::string text = SavedText(trail);
  EXPECT_EQ(CountOf(text, "<Session "), 1);
  EXPECT_EQ(CountOf(text, "<CheckSum "), 1);
  EXPECT_EQ(begun.count, 1);
  EXPECT_EQ(ended.count, 1);
}

TEST(AuditTrail, CheckSumHoldsTheSignatureOfTheSessionAndLiesOutsideIt) {
  InspectableTrail trail;
  trail.BeginSession();
  trail.AddEvent("measured", "42", nullptr);
  const CString open = trail.ComputeSessionSignature(true, -1);
  EXPECT_FALSE(open.IsEmpty());
  EXPECT_STREQ(trail.ComputeSessionSignature(false, -1), "");
  trail.EndSession();
  EXPECT_STREQ(trail.ComputeSessionSignature(true, -1), "");
  EXPECT_STREQ(trail.ComputeSessionSignature(false, -1), open);
  EXPECT_STREQ(trail.ComputeSessionSignature(false, 0), open);
  EXPECT_STREQ(trail.ComputeSessionSignature(false, 1), "");
  std::smatch match;
  const std::string text = SavedText(trail);
  ASSERT_TRUE(std::regex_search(text, match, std::regex("<CheckSum [^>]*>([0-9a-f]+)</CheckSum>")));
  EXPECT_EQ(match[1].str(), open.GetString());
}

TEST(AuditTrail, AddingAnEventReopensASealedLookingSession) {
  InspectableTrail trail;
  trail.BeginSession();
  trail.AddEvent("one", "", nullptr);
  trail.EndSession();
  trail.BeginSession();
  trail.AddEvent("two", "", nullptr);
  EXPECT_EQ(CountOf(SavedText(trail), "<CheckSum "), 1);
}

TEST(AuditTrail, SetInstanceSignalsBeforeTheSwitch) {
  AuditTrail first;
  AuditTrail second;
  AuditTrail::SetInstance(&first);
  AuditTrail* seenInside = nullptr;
  AuditTrail* announced = nullptr;
  int calls = 0;
  boost::signals2::scoped_connection connection =
      AuditTrail::msAuditTrailActiveAuditTrailChanged.connect([&](AuditTrail* trail) {
        ++calls;
        announced = trail;
        seenInside = AuditTrail::GetInstance();
      });
  AuditTrail::SetInstance(&second);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(announced, &second);
  EXPECT_EQ(seenInside, &first);
  EXPECT_EQ(AuditTrail::GetInstance(), &second);
  AuditTrail::SetInstance(nullptr);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(AuditTrail::GetInstance(), nullptr);
  second.BroadCastChange();
  EXPECT_EQ(calls, 2);
}

TEST(AuditTrail, DestructorAnnouncesItself) {
  int calls = 0;
  boost::signals2::scoped_connection connection =
      AuditTrail::msAuditTrailDeleting.connect([&](AuditTrail*) { ++calls; });
  { AuditTrail trail; }
  EXPECT_EQ(calls, 1);
}

TEST(AuditTrail, EventSignalOnlyForTrailsWithAStore) {
  SignalCounter added(AuditTrail::msAuditTrailEventAdded);
  AuditTrail memoryOnly;
  memoryOnly.BeginSession();
  memoryOnly.AddEvent("quiet", "", nullptr);
  EXPECT_EQ(added.count, 0);
  AuditTrail withFile("unused.xml", "", nullptr);
  withFile.GetAuditTrailSettings().SetLogEvents(1);
  withFile.BeginSession();
  withFile.AddEvent("loud", "", nullptr);
  EXPECT_EQ(added.count, 1);
  EXPECT_EQ(added.last, &withFile);
}

TEST(AuditTrail, ExtendedUserInfoCallbackRunsOnlyWhenNeeded) {
  struct Row {
    bool prompt;
    const char* stored;
    int expectedCalls;
  } rows[] = {{true, "", 1}, {false, "", 0}, {true, "already known", 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expectedCalls);
    int calls = 0;
    AuditTrail::SetCallback([&calls](AuditTrail* trail, AuditTrailCallbackType type) {
      ++calls;
      EXPECT_EQ(type, AuditTrailCallbackExtendedUserInfo);
      trail->GetAuditTrailSettings().SetExtendedUserInfo("Dr. Jones, QA");
    });
    AuditTrail trail;
    trail.GetAuditTrailSettings().SetPromptForExtendedUserInfo(row.prompt);
    trail.GetAuditTrailSettings().SetExtendedUserInfo(row.stored);
    trail.BeginSession();
    EXPECT_EQ(calls, row.expectedCalls);
    if (row.expectedCalls) {
      EXPECT_NE(SavedText(trail).find(">Dr. Jones, QA</User>"), std::string::npos);
    }
  }
  AuditTrail::SetCallback(AuditTrail::CallbackFunction());
}

TEST(AuditTrail, SubTrailEventsAreNestedIntoTheEvent) {
  AuditTrail trail;
  trail.BeginSession();
  AuditTrail sub;
  sub.BeginSession();
  sub.AddEvent("step 1", "", nullptr);
  sub.AddEvent("step 2", "", nullptr);
  trail.AddEvent("whole operation", "summary", &sub);
  const std::string text = SavedText(trail);
  EXPECT_TRUE(std::regex_search(
      text,
      std::regex(">whole operation<Details>summary</Details><Events><Event [^>]*>step "
                 "1<Details/></Event><Event [^>]*>step 2<Details/></Event></Events></Event>")));
}

class AuditTrailFiles : public zenutl_test::TempDirTest {};

TEST_F(AuditTrailFiles, MemoryOnlyTrailRecordsWhateverItsSectionSays) {
  zenutl_test::WriteWholeFile(File("settings.ini"), "[Audit]\nLogEvents=0\n");
  auto* section = new IniFileSection(File("settings.ini").c_str(), "Audit");
  AuditTrail trail(section);
  EXPECT_EQ(trail.GetAuditTrailSettings().GetLogLevel(), 1);
  trail.BeginSession();
  trail.AddEvent("recorded", "", nullptr);
  EXPECT_EQ(CountOf(SavedText(trail), "<Event "), 1);
}

TEST_F(AuditTrailFiles, ClearRemovesTheStoredTrailAndStartsOver) {
  const std::string path = File("trail.xml");
  AuditTrail trail(path.c_str(), "P", nullptr);
  trail.GetAuditTrailSettings().SetLogEvents(1);
  trail.BeginSession();
  trail.AddEvent("old", "", nullptr);
  trail.EndSessionAndSave();
  ASSERT_TRUE(boost::filesystem::exists(path));
  trail.Clear();
  EXPECT_FALSE(boost::filesystem::exists(path));
  const std::string text = SavedText(trail);
  EXPECT_EQ(text.find(">old<"), std::string::npos);
  EXPECT_EQ(CountOf(text, "<Session "), 1);
  EXPECT_NE(text.find(">Audit Trail cleared.<Details/>"), std::string::npos);
}

TEST(AuditTrail, GetFileNameJoinsFolderOnlyForStreamSources) {
  AuditTrail plain("C:\\data\\trail.xml", "", nullptr);
  EXPECT_STREQ(plain.GetFileName(), "C:\\data\\trail.xml");
  AuditTrail updated;
  updated.UpdateConfiguration(nullptr, "a.xml", nullptr, nullptr, nullptr);
  EXPECT_STREQ(updated.GetFileName(), "a.xml");
  updated.UpdateConfiguration(nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_STREQ(updated.GetFileName(), "a.xml");
  updated.Init(nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_STREQ(updated.GetFileName(), "");
}

}  // namespace

namespace {

TEST(AuditTrail, AssignmentSharesTheDocument) {
  AuditTrail first;
  first.BeginSession();
  {
    AuditTrail second;
    second = first;
    second.AddEvent("seen by both", "", nullptr);
    EXPECT_EQ(SavedText(first), SavedText(second));
  }
  first.AddEvent("after the other went", "", nullptr);
  EXPECT_EQ(CountOf(SavedText(first), "<Event "), 2);
}

}  // namespace
