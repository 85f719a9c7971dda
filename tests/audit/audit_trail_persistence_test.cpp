#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "audit/audit_test_support.h"
#include "config/file_probes.h"
#include "config/guarded_dom_parser.h"
#include "config/local_listener.h"
#include "support/child_process.h"
#include "support/exception_matchers.h"
#include "support/file_handle_shortage.h"
#include "support/temp_dir.h"
#include "support/unprivileged_user.h"
#include "zenutl/audit_trail.h"
#include "zenutl/audit_trail_wrapper.h"
#include "zenutl/exception.h"
#include "zenutl/log.h"
#include "zenutl/system_info.h"
#include "zenutl/xml_input_limit.h"
#include "zenutl/zn_folder_stream_source.h"

namespace {

using zenutl_test::CountOf;
using zenutl_test::ReadWholeFile;
using zenutl_test::SavedText;
using zenutl_test::UserCommRecorder;
using zenutl_test::WriteWholeFile;

// Loads `path` into a new trail and verifies it; the finding's text goes to `message`.
bool VerifyFileIn(const std::string& path, CString* message = nullptr) {
  AuditTrail trail(path.c_str(), "", nullptr);
  trail.GetAuditTrailSettings().SetLogEvents(1);
  trail.Load();
  return trail.VerifySignature(message);
}

class AuditTrailPersistence : public zenutl_test::TempDirTest {
 protected:
  // A trail file with `sessions` closed sessions of two events each.
  std::string RecordTrail(int sessions) {
    const std::string path = File("trail.xml");
    for (int i = 0; i < sessions; ++i) {
      AuditTrail trail(path.c_str(), "Project X", nullptr);
      trail.GetAuditTrailSettings().SetLogEvents(1);
      trail.Load();
      trail.BeginSession();
      trail.AddEvent(("opened sample " + std::to_string(i)).c_str(), "weight=12.5 g", nullptr);
      trail.AddEvent("Measured", "", nullptr);
      trail.EndSessionAndSave();
      EXPECT_FALSE(trail.IsModified());
    }
    return path;
  }

  bool VerifyFile(const std::string& path, CString* message = nullptr) {
    return VerifyFileIn(path, message);
  }
};

TEST_F(AuditTrailPersistence, SavedTrailReloadsAndVerifies) {
  const std::string path = RecordTrail(3);
  const std::string text = ReadWholeFile(path);
  EXPECT_EQ(CountOf(text, "<Session "), 3);
  EXPECT_EQ(CountOf(text, "<CheckSum "), 3);
  CString message("untouched");
  EXPECT_TRUE(VerifyFile(path, &message));
  EXPECT_STREQ(message, "untouched");
}

// The text a trail has once it went through a file: an empty "User" text is not kept by the
// parser, so a fresh trail and a read one differ in that one element's form, not in content.
std::string TextAfterLoading(const std::string& path) {
  AuditTrail trail(path.c_str(), "", nullptr);
  trail.Load();
  return SavedText(trail);
}

TEST_F(AuditTrailPersistence, SavingAReadTrailChangesNothing) {
  const std::string path = RecordTrail(2);
  const std::string once = TextAfterLoading(path);
  WriteWholeFile(path, once);
  EXPECT_EQ(TextAfterLoading(path), once);
  EXPECT_TRUE(VerifyFile(path));
}

TEST_F(AuditTrailPersistence, AnotherProcessVerifiesTheTrail) {
  const std::string path = RecordTrail(2);
  zenutl_test::ExpectPassesInChild([&path] { EXPECT_TRUE(VerifyFileIn(path)); });
}

// Each row edits the saved text of a two-session trail the way a tamperer might.
TEST_F(AuditTrailPersistence, TamperingIsFoundWhereTheSignatureCoversIt) {
  struct Row {
    const char* what;
    const char* pattern;
    const char* replacement;
    int mismatches;  // 0: not found
  } rows[] = {
      {"attribute value", "Project=\"Project X\"", "Project=\"Project Y\"", 2},
      {"event message", ">Measured<", ">Measurd<", 2},
      {"event detail", "weight=12.5 g", "weight=13.5 g", 2},
      {"first session's detail only", "opened sample 0", "opened sample 9", 1},
      {"deleted checksum", "<CheckSum [^>]*>[0-9a-f]+</CheckSum></Session>", "</Session>", 2},
      {"element renamed", "<Details", "<Detail", 0},
      {"attribute renamed", " Computer=", " Machine=", 0},
      {"same low byte", ">Measured<", ">Me\xC5\xA1sured<", 0},
      {"checksum attributes", "<CheckSum Date=\"[^\"]*\"", "<CheckSum Date=\"yesterday\"", 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    // The sum has 16 bits and covers the time of recording, so now and then an edit happens to
    // keep a session's sum: such a recording is made again, at most twice.
    CString message;
    bool verified = true;
    for (int attempt = 0; attempt < 3; ++attempt) {
      const std::string path = RecordTrail(2);
      std::string text = ReadWholeFile(path);
      const std::string edited = std::regex_replace(text, std::regex(row.pattern), row.replacement);
      ASSERT_NE(edited, text);
      WriteWholeFile(path, edited);
      message.Empty();
      verified = VerifyFile(path, &message);
      boost::filesystem::remove(path);
      if (row.mismatches == 0 || message.Find(std::to_string(row.mismatches).c_str()) != -1) break;
    }
    EXPECT_EQ(verified, row.mismatches == 0);
    if (row.mismatches) {
      CString expected;
      expected.Format(
          "The digital signature for %d of the previous sessions in the Audit Trail could "
          "not be verified.",
          row.mismatches);
      EXPECT_STREQ(message, expected);
    }
  }
}

TEST_F(AuditTrailPersistence, UpperCaseSignatureIsAMismatch) {
  const std::string path = RecordTrail(2);
  std::string text = ReadWholeFile(path);
  const std::regex stored(">([0-9a-f]+)</CheckSum>");
  int withLetters = 0;
  std::string edited;
  std::size_t copied = 0;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), stored);
       it != std::sregex_iterator(); ++it) {
    std::string value = (*it)[1];
    if (value.find_first_of("abcdef") != std::string::npos) ++withLetters;
    for (char& ch : value) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    edited += text.substr(copied, static_cast<std::size_t>(it->position(1)) - copied) + value;
    copied = static_cast<std::size_t>(it->position(1) + it->length(1));
  }
  edited += text.substr(copied);
  WriteWholeFile(path, edited);
  CString message;
  EXPECT_EQ(VerifyFile(path, &message), withLetters == 0);
  if (withLetters) {
    EXPECT_NE(message.Find(("for " + std::to_string(withLetters) + " of").c_str()), -1);
  }
}

TEST_F(AuditTrailPersistence, DeletingOrReorderingWholeSessionsIsNotFound) {
  const std::string path = RecordTrail(3);
  const std::string text = ReadWholeFile(path);
  std::smatch first;
  ASSERT_TRUE(std::regex_search(text, first, std::regex("<Session .*?</Session>")));
  std::string withoutFirst = text;
  withoutFirst.erase(static_cast<std::size_t>(first.position(0)),
                     static_cast<std::size_t>(first.length(0)));
  WriteWholeFile(path, withoutFirst);
  EXPECT_TRUE(VerifyFile(path));

  std::string reordered = withoutFirst;
  const std::size_t rootEnd = reordered.find("</AuditTrail>");
  reordered.insert(rootEnd, first.str());
  WriteWholeFile(path, reordered);
  EXPECT_TRUE(VerifyFile(path));
}

TEST_F(AuditTrailPersistence, FindingIsRecordedInTheOpenSessionAndToldToTheUser) {
  const std::string path = RecordTrail(2);
  WriteWholeFile(path, std::regex_replace(ReadWholeFile(path), std::regex(">Measured<"), ">Gone<"));
  UserCommRecorder recorder;
  AuditTrail trail(path.c_str(), "", nullptr);
  trail.GetAuditTrailSettings().SetLogEvents(1);
  trail.Load();
  trail.BeginSessionAndVerifySignature();
  const char* finding =
      "The digital signature for 2 of the previous sessions in the Audit Trail could not be "
      "verified.";
  ASSERT_EQ(recorder.messages.size(), 1u);
  EXPECT_EQ(recorder.messages[0].kind, "InformUser");
  EXPECT_EQ(recorder.messages[0].title, "AuditTrail");
  EXPECT_EQ(recorder.messages[0].text, std::string(finding) + " See the Audit Trail for details.");
  const std::string text = SavedText(trail);
  EXPECT_EQ(CountOf(text, std::string(">") + finding + "<Details/>"), 1);
  // The open session is not checked, so a second verification finds the same two.
  CString again;
  EXPECT_FALSE(trail.VerifySignature(&again));
  EXPECT_STREQ(again, finding);
}

// An emptied "CheckSum" is compared with the value read last, and the check runs from the newest
// session back: with two identical sessions, emptying the older one's value goes unnoticed,
// emptying the newer one's does not.
TEST_F(AuditTrailPersistence, EmptiedCheckSumReusesTheValueOfTheNewerSession) {
  const std::string path = RecordTrail(1);
  const std::string text = ReadWholeFile(path);
  std::smatch session;
  ASSERT_TRUE(std::regex_search(text, session, std::regex("<Session .*?</Session>")));
  const std::string emptied =
      std::regex_replace(session.str(), std::regex(">[0-9a-f]+</CheckSum>"), "></CheckSum>");
  ASSERT_NE(emptied, session.str());
  const std::size_t at = static_cast<std::size_t>(session.position(0));
  const std::size_t length = static_cast<std::size_t>(session.length(0));
  struct Row {
    const char* what;
    std::string sessions;
    bool verified;
  } rows[] = {{"older emptied", emptied + session.str(), true},
              {"newer emptied", session.str() + emptied, false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    WriteWholeFile(path, std::string(text).replace(at, length, row.sessions));
    CString message;
    EXPECT_EQ(VerifyFile(path, &message), row.verified);
    if (!row.verified) {
      EXPECT_NE(message.Find("for 1 of"), -1);
    }
  }
}

TEST_F(AuditTrailPersistence, SessionWithoutCheckSumIsAMismatch) {
  const std::string path = File("open.xml");
  {
    AuditTrail trail(path.c_str(), "", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    trail.BeginSession();
    trail.AddEvent("crash follows", "", nullptr);
    trail.Save();
  }
  CString message;
  EXPECT_FALSE(VerifyFile(path, &message));
  EXPECT_NE(message.Find("for 1 of"), -1);
}

// The read-only check names each failing session, oldest first, with the reason; it leaves the
// document as it was and does not look at the log level.
TEST_F(AuditTrailPersistence, UnverifiedSessionsAreListedWithoutChangingTheTrail) {
  const std::string path = RecordTrail(3);
  std::string text = ReadWholeFile(path);
  std::smatch sealed;
  ASSERT_TRUE(std::regex_search(text, sealed, std::regex(">([0-9a-f]+)</CheckSum>")));
  text = std::regex_replace(text, std::regex("opened sample 1"), "opened sample 7");
  text = std::regex_replace(text, std::regex("<CheckSum [^>]*>[0-9a-f]+</CheckSum></Session></"),
                            "</Session></");
  text.insert(text.find("</AuditTrail>"), "\n");
  WriteWholeFile(path, text);

  AuditTrail trail(path.c_str(), "", nullptr);  // log level 0
  trail.Load();
  const std::string before = SavedText(trail);
  const std::vector<AuditTrailFinding> findings = trail.FindUnverifiedSessions();
  EXPECT_EQ(SavedText(trail), before);
  ASSERT_EQ(findings.size(), 3u);
  const AuditTrailFinding::EKind kinds[] = {AuditTrailFinding::eCheckSumMismatch,
                                            AuditTrailFinding::eCheckSumMissing,
                                            AuditTrailFinding::eNotASession};
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(findings[i].kind, kinds[i]);
    EXPECT_EQ(findings[i].index, i + 1);
  }
  EXPECT_NE(findings[0].storedCheckSum, findings[0].computedCheckSum);
  EXPECT_FALSE(findings[0].storedCheckSum.IsEmpty());
  EXPECT_EQ(std::string(findings[0].user), std::string(ZnSystemInfo::GetUserNameA()));
  EXPECT_NE(findings[0].date.Find("(UTC"), -1);
  EXPECT_TRUE(findings[1].storedCheckSum.IsEmpty());
  trail.GetAuditTrailSettings().SetLogEvents(1);
  CString message;
  EXPECT_FALSE(trail.VerifySignature(&message));
  EXPECT_NE(message.Find("for 3 of"), -1);
}

TEST_F(AuditTrailPersistence, SessionRecordsHoldWhatAPersonReads) {
  AuditTrailWrapper wrapper(boost::shared_ptr<AuditTrail>(new AuditTrail));
  wrapper.GetTrail()->SetProject("Assay 4");
  wrapper.GetTrail()->BeginSession();
  wrapper.AddEvent("Sample loaded", "rack 3", nullptr);
  wrapper.PushSubTrail();
  wrapper.AddEvent("Step one", "", nullptr);
  wrapper.PopSubTrail("Batch run", "3 steps");
  wrapper.GetTrail()->EndSession();
  wrapper.GetTrail()->BeginSession();

  const std::vector<AuditTrailSessionRecord> records = wrapper.GetTrail()->GetSessionRecords();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(wrapper.GetTrail()->CountSessions(), 2);
  const AuditTrailSessionRecord& first = records[0];
  EXPECT_TRUE(first.isSession);
  EXPECT_EQ(std::string(first.project), "Assay 4");
  EXPECT_EQ(std::string(first.user), std::string(ZnSystemInfo::GetUserNameA()));
  EXPECT_EQ(std::string(first.computer), std::string(ZnSystemInfo::GetComputerNameA()));
  ASSERT_EQ(first.events.size(), 2u);
  EXPECT_EQ(std::string(first.events[0].message), "Sample loaded");
  EXPECT_EQ(std::string(first.events[0].details), "rack 3");
  EXPECT_EQ(std::string(first.events[1].message), "Batch run");
  ASSERT_EQ(first.events[1].subEvents.size(), 1u);
  EXPECT_EQ(std::string(first.events[1].subEvents[0].message), "Step one");
  EXPECT_TRUE(first.hasCheckSum);
  EXPECT_FALSE(first.checkSum.IsEmpty());
  EXPECT_EQ(records[1].index, 1);
  EXPECT_FALSE(records[1].hasCheckSum);
  EXPECT_TRUE(wrapper.GetTrail()->HasAuditTrailRoot());

  std::istringstream other("<Settings><Session/></Settings>");
  AuditTrail settings;
  settings.Read(other);
  EXPECT_FALSE(settings.HasAuditTrailRoot());
}

TEST_F(AuditTrailPersistence, TurnedOffTrailVerifiesAnything) {
  const std::string path = RecordTrail(1);
  WriteWholeFile(path, std::regex_replace(ReadWholeFile(path), std::regex(">Measured<"), ">X<"));
  AuditTrail trail(path.c_str(), "", nullptr);
  trail.Load();
  trail.BeginSession();
  EXPECT_TRUE(trail.VerifySignature(nullptr));
  EXPECT_EQ(CountOf(SavedText(trail), "could not be verified"), 0);
}

TEST_F(AuditTrailPersistence, MissingFileOnlySetsTheFlag) {
  AuditTrail trail(File("absent.xml").c_str(), "", nullptr);
  EXPECT_FALSE(trail.IsFileMissing());
  trail.Load();
  EXPECT_TRUE(trail.IsFileMissing());
  EXPECT_TRUE(trail.IsEmpty());
}

// The names in `folder` of trails that were moved aside as damaged, "<name>.damaged-<UTC>".
std::vector<std::string> DamagedIn(const boost::filesystem::path& folder, const std::string& name) {
  const std::regex damaged(std::regex_replace(name, std::regex("\\."), "\\.") +
                           "\\.damaged-[0-9]{8}T[0-9]{6}Z");
  std::vector<std::string> found;
  for (auto& entry : boost::filesystem::directory_iterator(folder)) {
    const std::string file = entry.path().filename().string();
    if (std::regex_match(file, damaged)) found.push_back(file);
  }
  return found;
}

// A trail that cannot be read is cleared and the user told, but its bytes are not destroyed:
// they are moved aside to a name that says the trail was damaged and when.
TEST_F(AuditTrailPersistence, UnreadableFileIsReportedClearedAndMovedAside) {
  std::string flipped = ReadWholeFile(RecordTrail(1));
  flipped[flipped.find("<Events>") + 1] ^= 0x20;  // "<events>" no longer matches "</Events>"
  struct Row {
    const char* what;
    std::string content;
  } rows[] = {
      {"truncated", "<?xml version=\"1.0\"?><AuditTrail Version=\"1.0\"><Session Vers"},
      {"binary", std::string("\x00\x01\xFF\xFE garbage \x89PNG", 18)},
      {"empty", ""},
      {"mismatched tags", "<AuditTrail><Session></AuditTrail>"},
      {"one flipped byte", flipped},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string path = File("broken.xml");
    WriteWholeFile(path, row.content);
    UserCommRecorder recorder;
    AuditTrail trail(path.c_str(), "", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    trail.Load();
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(recorder.messages[0].kind, "FatalError");
    EXPECT_EQ(recorder.messages[0].title, "Audit Trail");
    EXPECT_EQ(recorder.messages[0].text.rfind(
                  "An error occurred while loading the Audit Trail. To prevent further problems, "
                  "the Audit Trail will be cleared.\n\nDetails: ",
                  0),
              0u);
    const std::string text = SavedText(trail);
    EXPECT_EQ(CountOf(text, "<Session "), 1);
    EXPECT_NE(text.find(">Audit Trail cleared.<"), std::string::npos);
    EXPECT_FALSE(boost::filesystem::exists(path));
    const std::vector<std::string> damaged = DamagedIn(Dir(), "broken.xml");
    ASSERT_EQ(damaged.size(), 1u);
    EXPECT_EQ(ReadWholeFile(File(damaged[0])), row.content);
    boost::filesystem::remove(File(damaged[0]));
  }
}

// A load that met a passing shortage of file handles must not erase years of history: the
// trail goes aside whole, and the process log says where.
TEST_F(AuditTrailPersistence, LoadWithoutFileHandlesKeepsTheTrailAndLogsWhereItWent) {
  const std::string path = RecordTrail(2);
  const std::string history = ReadWholeFile(path);
  const std::string log = File("process.log");
  zenutl_test::ExpectPassesInChild([this, &path, &log] {
    ASSERT_TRUE(Log::CreateInstance(log.c_str()));
    UserCommRecorder recorder;
    AuditTrail(Dir().c_str(), "", nullptr).Load();  // meets the failure's types with handles left
    AuditTrail trail(path.c_str(), "", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    {
      zenutl_test::FileHandleShortage shortage;
      trail.Load();
    }
    EXPECT_EQ(recorder.messages.size(), 2u);
    trail.EndSessionAndSave();
    EXPECT_FALSE(trail.IsModified());
  });
  const std::vector<std::string> damaged = DamagedIn(Dir(), "trail.xml");
  ASSERT_EQ(damaged.size(), 1u);
  EXPECT_EQ(ReadWholeFile(File(damaged[0])), history);
  EXPECT_NE(ReadWholeFile(log).find(damaged[0]), std::string::npos);
  EXPECT_NE(ReadWholeFile(path).find(">Audit Trail cleared.<"), std::string::npos);
}

// In a stream source the damaged stream is renamed likewise. A folder standing where the trail
// should be is never deleted, neither by a failed load nor by Clear.
TEST_F(AuditTrailPersistence, UnreadableStreamIsMovedAsideAndAFolderInPlaceOfATrailStays) {
  WriteWholeFile(File("trail.xml"), "<AuditTrail><Sess");
  ZnFolderStreamSource source(Dir().string().c_str());
  UserCommRecorder recorder;
  AuditTrail streamTrail(&source, "", "trail.xml", "", nullptr);
  streamTrail.Load();
  EXPECT_FALSE(source.StreamExists("trail.xml"));
  const std::vector<std::string> damaged = DamagedIn(Dir(), "trail.xml");
  ASSERT_EQ(damaged.size(), 1u);
  EXPECT_EQ(ReadWholeFile(File(damaged[0])), "<AuditTrail><Sess");

  const std::string folder = File("folder.xml");
  boost::filesystem::create_directory(folder);
  AuditTrail folderTrail(folder.c_str(), "", nullptr);
  folderTrail.Load();
  EXPECT_TRUE(boost::filesystem::is_directory(folder));
  folderTrail.Clear();
  EXPECT_TRUE(boost::filesystem::is_directory(folder));
  EXPECT_EQ(recorder.messages.size(), 2u);
}

TEST_F(AuditTrailPersistence, ReadOfBadDataThrowsAndKeepsTheDocument) {
  AuditTrail trail;
  trail.BeginSession();
  trail.AddEvent("keep me", "", nullptr);
  const std::string before = SavedText(trail);
  std::istringstream bad("<AuditTrail><Session>");
  try {
    trail.Read(bad);
    FAIL() << "no exception";
  } catch (const Exception& e) {
    EXPECT_EQ(std::string(e.Why().Left(24)), "AuditTrail::Read failed\n");
  }
  EXPECT_EQ(SavedText(trail), before);
  trail.AddEvent("still open", "", nullptr);
  EXPECT_EQ(CountOf(SavedText(trail), "<Event "), 2);
}

TEST_F(AuditTrailPersistence, ReadingReachesNothingOutsideTheTrail) {
  const std::string marker = File("marker.txt");
  WriteWholeFile(marker, "MARKER");
  zenutl_test::OpenWatch watch(marker);
  zenutl_test::LocalListener listener;
  std::string deep;
  // One level too deep, and well within the size limit below.
  const int levels = static_cast<int>(zenutl::config::kElementDepthLimit);
  for (int i = 0; i < levels; ++i) deep += "<Session><e/>";
  for (int i = 0; i < levels; ++i) deep += "</Session>";
  const std::size_t previous = ZnSetXMLInputLimit(100000);
  struct Case {
    const char* what;
    std::string text;
    bool readable;
  };
  const std::vector<Case> cases = {
      // A trail names no DTD: one named is left unread.
      {"external DTD", "<!DOCTYPE AuditTrail SYSTEM \"" + marker + "\"><AuditTrail/>", true},
      {"external entity",
       "<!DOCTYPE AuditTrail [<!ENTITY e SYSTEM \"" + marker + "\">]><AuditTrail>&e;</AuditTrail>",
       false},
      {"entity on the network behind a blank",
       "<!DOCTYPE AuditTrail [<!ENTITY e SYSTEM \"\t" + listener.Url("e") +
           "\">]><AuditTrail>&e;</AuditTrail>",
       false},
      {"an empty element under each start tag", "<AuditTrail>" + deep + "</AuditTrail>", false},
      {"beyond the size limit", "<AuditTrail>" + std::string(100000, ' ') + "</AuditTrail>", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AuditTrail trail;
    std::istringstream in(c.text);
    if (c.readable) {
      EXPECT_NO_THROW(trail.Read(in));
    } else {
      EXPECT_THROW(trail.Read(in), Exception);
    }
    const std::string path = File("trail.xml");
    WriteWholeFile(path, c.text);
    UserCommRecorder recorder;
    AuditTrail stored(path.c_str(), "", nullptr);
    stored.Load();
    EXPECT_EQ(recorder.messages.size(), c.readable ? 0u : 1u);
  }
  ZnSetXMLInputLimit(previous);
  EXPECT_EQ(watch.Opens(), 0);
  EXPECT_EQ(listener.Connections(), 0);
}

TEST_F(AuditTrailPersistence, ReadReplacesTheDocumentAndClosesTheSession) {
  const std::string path = RecordTrail(1);
  std::ifstream in(path, std::ios::binary);
  AuditTrail trail;
  trail.BeginSession();
  trail.Read(in);
  trail.AddEvent("no session to take it", "", nullptr);
  EXPECT_EQ(SavedText(trail), TextAfterLoading(path));
}

TEST_F(AuditTrailPersistence, FailedSaveKeepsThePreviousFileAndTheModifiedFlag) {
  const std::string path = RecordTrail(1);
  const std::string before = ReadWholeFile(path);
  zenutl_test::ExpectPassesInChild([&path, &before] {
    AuditTrail trail(path.c_str(), "", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    trail.Load();
    trail.BeginSession();
    for (int i = 0; i < 200; ++i) trail.AddEvent("a long event to make the file grow", "", nullptr);
    trail.EndSession();
    // The file may now grow to only part of the new text: the write fails midway.
    std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit = {static_cast<rlim_t>(before.size() + 100),
                           static_cast<rlim_t>(before.size() + 100)};
    setrlimit(RLIMIT_FSIZE, &limit);
    trail.Save();
    EXPECT_TRUE(trail.IsModified()) << "modified flag was cleared by a failed save";
  });
  EXPECT_EQ(ReadWholeFile(path), before);
  EXPECT_TRUE(VerifyFile(path));
  for (auto& entry : boost::filesystem::directory_iterator(Dir())) {
    EXPECT_EQ(entry.path().filename().string(), "trail.xml") << "stray temporary file";
  }
}

// A folder where the user may write the trail but not create files (so that trails cannot be
// deleted) still gets every save: the trail is written in place. A damaged trail there cannot be
// moved aside, and so is not saved over either.
TEST_F(AuditTrailPersistence, TrailInAFolderThatRefusesNewFilesIsWrittenInPlaceUnlessDamaged) {
  const std::string folder = File("locked");
  const std::string path = folder + "/trail.xml";
  const std::string damaged = folder + "/damaged.xml";
  boost::filesystem::create_directory(folder);
  boost::filesystem::rename(RecordTrail(1), path);
  WriteWholeFile(damaged, "<AuditTrail><Sess");
  zenutl_test::HandOver(folder);
  ASSERT_EQ(::chmod(folder.c_str(), 0555), 0);
  zenutl_test::ExpectPassesAsUnprivilegedUser([&path, &damaged] {
    UserCommRecorder recorder;
    for (const std::string& file : {path, damaged}) {
      AuditTrail trail(file.c_str(), "", nullptr);
      trail.GetAuditTrailSettings().SetLogEvents(1);
      trail.Load();
      trail.BeginSession();
      trail.AddEvent("kept", "", nullptr);
      trail.EndSessionAndSave();
      EXPECT_EQ(trail.IsModified(), file == damaged) << file;
    }
  });
  ::chmod(folder.c_str(), 0755);
  EXPECT_EQ(CountOf(ReadWholeFile(path), ">kept<"), 1);
  EXPECT_TRUE(VerifyFile(path));
  EXPECT_EQ(ReadWholeFile(damaged), "<AuditTrail><Sess");
}

TEST_F(AuditTrailPersistence, SaveIntoAMissingFolderKeepsTheModifiedFlag) {
  AuditTrail trail(File("no/such/folder/trail.xml").c_str(), "", nullptr);
  trail.GetAuditTrailSettings().SetLogEvents(1);
  trail.BeginSession();
  trail.AddEvent("unsaved", "", nullptr);
  trail.Save();
  EXPECT_TRUE(trail.IsModified());
}

// Each of these texts, stored as it came, made every later save fail.
TEST_F(AuditTrailPersistence, CharactersXmlCannotCarryAreReplacedSoEverySaveSucceeds) {
  const std::string path = RecordTrail(1);
  ZnFolderStreamSource source(Dir().string().c_str());
  AuditTrail fileTrail(path.c_str(), "", nullptr);
  AuditTrail streamTrail(&source, "", "trail.xml", "", nullptr);
  for (AuditTrail* trail : {&fileTrail, &streamTrail}) {
    SCOPED_TRACE(trail == &fileTrail ? "file" : "stream source");
    trail->GetAuditTrailSettings().SetLogEvents(1);
    trail->GetAuditTrailSettings().SetExtendedUserInfo("lab \xEF\xBF\xBF 3");
    trail->Load();
    trail->BeginSession();
    trail->SetProject("tab\there, bell \a there");
    trail->AddEvent("bell \a in the message", "nul-free \x01 detail", nullptr);
    trail->AddEvent("U+FFFE \xEF\xBF\xBE here", "U+FFFF \xEF\xBF\xBF here", nullptr);
    const std::string whole = SavedText(*trail);
    EXPECT_EQ(whole.substr(whole.size() - 13), "</AuditTrail>");
    trail->EndSessionAndSave();
    EXPECT_FALSE(trail->IsModified());
    EXPECT_TRUE(VerifyFile(path));
  }
  const std::string text = ReadWholeFile(path);
  const std::string r = "\xEF\xBF\xBD";
  for (const std::string& stored :
       {">bell " + r + " in the message<", "nul-free " + r + " detail", "bell " + r + " there",
        ">U+FFFE " + r + " here<", "U+FFFF " + r + " here", ">lab " + r + " 3<"}) {
    EXPECT_EQ(CountOf(text, stored), 2) << stored;
  }
}

// A trail reads back whatever nesting it recorded. Each level of sub-trails nests an "Event"
// and an "Events" deeper; the deepest chain that fits (over 1,000 levels) is saved and loads
// again, and an event that would nest one level deeper is dropped instead of recorded.
TEST_F(AuditTrailPersistence, NestedSubTrailsReadBackAndTooDeepOnesAreDropped) {
  // AuditTrail/Session/Events/Event/Details is 5 deep; every level adds two.
  const int levels = (static_cast<int>(zenutl::config::kElementDepthLimit) - 5) / 2;
  ASSERT_GE(levels, 1000);
  std::unique_ptr<AuditTrail> deepest(new AuditTrail);
  deepest->BeginSession();
  deepest->AddEvent("innermost", "with details", nullptr);
  for (int level = 0; level < levels; ++level) {
    std::unique_ptr<AuditTrail> outer(new AuditTrail);
    outer->BeginSession();
    outer->AddEvent("level", "with details", deepest.get());
    deepest = std::move(outer);
  }
  AuditTrail tooDeep;
  tooDeep.BeginSession();
  tooDeep.AddEvent("one level too deep", "with details", deepest.get());
  EXPECT_FALSE(tooDeep.IsModified());
  EXPECT_EQ(CountOf(SavedText(tooDeep), "<Event "), 0);

  deepest->EndSession();
  const std::string path = File("deep.xml");
  WriteWholeFile(path, SavedText(*deepest));
  UserCommRecorder recorder;
  EXPECT_TRUE(VerifyFile(path));
  EXPECT_TRUE(recorder.messages.empty());
  AuditTrail reloaded(path.c_str(), "", nullptr);
  reloaded.Load();
  const std::string text = SavedText(reloaded);
  EXPECT_EQ(CountOf(text, ">innermost<"), 1);
  EXPECT_EQ(CountOf(text, ">level<"), levels);
}

TEST_F(AuditTrailPersistence, SaveAsWritesACopyWithTheStylesheet) {
  const std::string path = RecordTrail(1);
  WriteWholeFile(File("audit_trail.xsl"), "<xsl/>");
  boost::filesystem::create_directories(Dir() / "copy");
  const std::string copy = File("copy/exported.xml");
  AuditTrail trail(path.c_str(), "", nullptr);
  trail.Load();
  trail.SaveAs(copy.c_str());
  EXPECT_EQ(ReadWholeFile(copy), TextAfterLoading(path));
  EXPECT_EQ(ReadWholeFile(File("copy/audit_trail.xsl")), "<xsl/>");
  EXPECT_STREQ(trail.GetFileName(), path.c_str());
}

TEST_F(AuditTrailPersistence, CopyContentTakesDocumentOpenSessionAndSettings) {
  AuditTrail source;
  source.GetAuditTrailSettings().SetExtendedUserInfo("QA lab");
  source.BeginSession();
  source.AddEvent("first", "", nullptr);
  AuditTrail copy(File("target.xml").c_str(), "Mine", nullptr);
  copy.CopyContent(&source);
  EXPECT_EQ(SavedText(copy), SavedText(source));
  EXPECT_STREQ(copy.GetAuditTrailSettings().GetExtendedUserInfo(), "QA lab");
  copy.AddEvent("second", "", nullptr);
  EXPECT_EQ(CountOf(SavedText(copy), "<Event "), 2);
  EXPECT_EQ(CountOf(SavedText(source), "<Event "), 1);
  EXPECT_STREQ(copy.GetFileName(), File("target.xml").c_str());
}

// Copies go through a temporary file; two processes copying at once must never share one.
TEST_F(AuditTrailPersistence, CopyContentInTwoProcessesAtOnceNeverMixesTheirTrails) {
  pid_t copiers[2];
  for (const char* name : {"first", "second"}) {
    const pid_t child = zenutl_test::StartChild([this, name] {
      setenv("TMPDIR", Dir().c_str(), 1);
      AuditTrail source;
      source.BeginSession();
      for (int i = 0; i < 20; ++i) source.AddEvent(name, "an event of this process", nullptr);
      std::istringstream saved(SavedText(source));
      AuditTrail reference;
      reference.Read(saved);
      const std::string expected = SavedText(reference);
      for (int copy = 0; copy < 1000; ++copy) {
        AuditTrail target;
        target.CopyContent(&source);
        ASSERT_TRUE(SavedText(target) == expected) << "copy " << copy << " holds another trail";
      }
    });
    ASSERT_GT(child, 0);
    copiers[name[0] == 's'] = child;
  }
  for (const pid_t child : copiers) {
    const int status = zenutl_test::WaitForChild(child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  EXPECT_TRUE(boost::filesystem::is_empty(Dir())) << "a temporary file was left behind";
}

TEST_F(AuditTrailPersistence, CopyContentWithoutATemporaryFileThrowsAndKeepsTheDocument) {
  const char* old = std::getenv("TMPDIR");
  const std::string saved = old ? old : "";
  setenv("TMPDIR", File("no-such-folder").c_str(), 1);
  AuditTrail source;
  source.BeginSession();
  AuditTrail copy;
  copy.BeginSession();
  copy.AddEvent("mine", "", nullptr);
  const std::string before = SavedText(copy);
  EXPECT_THROW_WHY(copy.CopyContent(&source), Exception, "AuditTrail::CopyContent failed.");
  if (old) {
    setenv("TMPDIR", saved.c_str(), 1);
  } else {
    unsetenv("TMPDIR");
  }
  EXPECT_EQ(SavedText(copy), before);
}

TEST_F(AuditTrailPersistence, StreamSourceWithoutTheStreamLeavesTheTrailAlone) {
  ZnFolderStreamSource source(Dir().string().c_str());
  AuditTrail trail(&source, "", "absent.xml", "", nullptr);
  trail.GetAuditTrailSettings().SetLogEvents(1);
  trail.BeginSession();
  trail.AddEvent("in memory", "", nullptr);
  const std::string before = SavedText(trail);
  UserCommRecorder recorder;
  trail.Load();
  EXPECT_EQ(SavedText(trail), before);
  EXPECT_FALSE(trail.IsFileMissing());
  EXPECT_TRUE(recorder.messages.empty());
}

TEST_F(AuditTrailPersistence, LoggingIsInferredFromTheLastEvent) {
  struct Row {
    const char* lastMessage;
    int expectedLevel;
  } rows[] = {
      {"Measured", 1}, {"Audit Trail turned off.", 0}, {"The Audit Trail is currently OFF.", 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.lastMessage);
    const std::string path = File("inferred.xml");
    {
      AuditTrail writer(path.c_str(), "", nullptr);
      writer.GetAuditTrailSettings().SetLogEvents(1);
      writer.BeginSession();
      writer.AddEvent(row.lastMessage, "", nullptr);
      writer.EndSessionAndSave();
    }
    AuditTrail reader(path.c_str(), "", nullptr);
    reader.LoadAndUpdateLogEventsFromData();
    EXPECT_EQ(reader.GetAuditTrailSettings().GetLogLevel(), row.expectedLevel);
    boost::filesystem::remove(path);
  }
}

TEST_F(AuditTrailPersistence, LifeOfATrailInAFolderStreamSource) {
  ZnFolderStreamSource source(Dir().string().c_str());
  for (int run = 0; run < 2; ++run) {
    AuditTrail trail(&source, "C:\\Projects", "audit\\trail.xml", "P7", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    trail.LoadAndUpdateLogEventsFromData();
    UserCommRecorder recorder;
    trail.BeginSessionAndVerifySignature();
    EXPECT_TRUE(recorder.messages.empty());
    trail.AddEvent("run", std::to_string(run).c_str(), nullptr);
    trail.EndSessionAndSave();
    EXPECT_FALSE(trail.IsModified());
    EXPECT_STREQ(trail.GetFileName(), "C:\\Projects\\audit\\trail.xml");
  }
  const std::string text = ReadWholeFile(File("audit/trail.xml"));
  EXPECT_EQ(CountOf(text, "<Session "), 2);
  AuditTrail cleared(&source, "", "audit\\trail.xml", "", nullptr);
  cleared.Clear();
  EXPECT_FALSE(source.StreamExists("audit\\trail.xml"));
}

}  // namespace
