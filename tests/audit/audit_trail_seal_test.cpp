#include <gtest/gtest.h>

#include <openssl/hmac.h>

#include <functional>
#include <regex>
#include <string>

#include "audit/audit_test_support.h"
#include "support/temp_dir.h"
#include "zenutl/audit_trail.h"
#include "zenutl/rolling_checksum.h"

namespace {

using zenutl_test::CountOf;
using zenutl_test::ReadWholeFile;
using zenutl_test::SavedText;
using zenutl_test::UserCommRecorder;
using zenutl_test::WriteWholeFile;

const char kKey[] = "correct horse battery staple";
const char kSummary[] = "The seal of the Audit Trail could not be verified";

// What a person with write access but no key does after an edit: makes every stored checksum
// match its session again.
void RecomputeChecksums(const std::string& path) {
  zenutl_test::InspectableTrail trail(path.c_str(), "", nullptr);
  trail.Load();
  const std::string text = ReadWholeFile(path);
  const std::regex stored("(<CheckSum[^>]*>)[0-9a-f]*</CheckSum>");
  std::string edited;
  std::size_t copied = 0;
  int index = 0;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), stored);
       it != std::sregex_iterator(); ++it) {
    edited += text.substr(copied, static_cast<std::size_t>(it->position(0)) - copied);
    edited +=
        (*it)[1].str() + trail.ComputeSessionSignature(false, index++).GetString() + "</CheckSum>";
    copied = static_cast<std::size_t>(it->position(0) + it->length(0));
  }
  WriteWholeFile(path, edited + text.substr(copied));
}

class AuditTrailSealTest : public zenutl_test::TempDirTest {
 protected:
  void SetUp() override { WriteWholeFile(KeyFile(), kKey); }

  std::string KeyFile() const { return File("trail.key"); }
  std::string Anchor() const { return File("trail.anchor"); }
  std::string Trail() const { return File("trail.xml"); }

  // One run of the application on the trail: load, verify, record, close and save; sealed
  // unless `sealed` is false.
  void RunApplication(const std::string& path, const std::string& anchor, int number,
                      bool sealed = true) {
    AuditTrail trail(path.c_str(), "Project X", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    if (sealed) {
      ASSERT_TRUE(trail.SetSeal(KeyFile().c_str(), anchor.c_str()));
    }
    trail.Load();
    trail.BeginSessionAndVerifySignature();
    AuditTrail fit;
    fit.BeginSession();
    fit.AddEvent("fitted", "r=0.98", nullptr);
    trail.AddEvent(("opened sample " + std::to_string(number)).c_str(), "weight=12.5 g", &fit);
    trail.AddEvent("Measured", "", nullptr);
    trail.EndSessionAndSave();
  }

  // The details of the seal's finding when a sealed run starts on the trail at `path`, one
  // line per finding; "" when the seals hold. Checks what the user was told on the way.
  std::string SealFindings(const std::string& path, const std::string& anchor) {
    UserCommRecorder recorder;
    AuditTrail trail(path.c_str(), "", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    EXPECT_TRUE(trail.SetSeal(KeyFile().c_str(), anchor.c_str()));
    trail.Load();
    trail.BeginSessionAndVerifySignature();
    std::smatch found;
    const std::string text = SavedText(trail);
    const std::regex event("(" + std::string(kSummary) +
                           " \\((\\d+) findings?\\)\\.)<Details>([^<]*)<");
    if (!std::regex_search(text, found, event)) return "";
    EXPECT_EQ(std::stoi(found[2]), CountOf(found[3].str(), "\n") + 1);
    EXPECT_EQ(recorder.messages.back().text, found[1].str() + " See the Audit Trail for details.");
    return found[3];
  }

  // Whether the trail at `path` passes the checksum alone, checked on a copy.
  bool PassesChecksum(const std::string& path) {
    const std::string copy = File("copy.xml");
    WriteWholeFile(copy, ReadWholeFile(path));
    AuditTrail trail(copy.c_str(), "", nullptr);
    trail.GetAuditTrailSettings().SetLogEvents(1);
    trail.Load();
    return trail.VerifySignature(nullptr);
  }
};

std::string Sessions(const std::string& text, std::vector<std::string>& sessions) {
  const std::regex session("<Session .*?</Session>");
  sessions.clear();
  for (auto it = std::sregex_iterator(text.begin(), text.end(), session);
       it != std::sregex_iterator(); ++it) {
    sessions.push_back(it->str());
  }
  const std::size_t first = text.find("<Session ");
  return text.substr(0, first);  // what comes before them
}

std::string WithSessions(const std::string& text, const std::vector<std::string>& sessions) {
  std::vector<std::string> ignored;
  std::string out = Sessions(text, ignored);
  for (const std::string& session : sessions) out += session;
  return out + "</AuditTrail>";
}

std::string ReplaceFirst(const std::string& text, const char* pattern, const char* by) {
  return std::regex_replace(text, std::regex(pattern), by, std::regex_constants::format_first_only);
}

TEST_F(AuditTrailSealTest, TrailGainingAKeyIsSealedFromItsNextSessionAndKeepsItsChecksums) {
  RunApplication(Trail(), Anchor(), 0, false);
  RunApplication(Trail(), Anchor(), 1, false);
  const std::string unsealed = ReadWholeFile(Trail());
  RunApplication(Trail(), Anchor(), 2);
  RunApplication(Trail(), Anchor(), 3);
  const std::string text = ReadWholeFile(Trail());
  EXPECT_EQ(SealFindings(Trail(), Anchor()), "");
  EXPECT_TRUE(PassesChecksum(Trail()));
  EXPECT_EQ(CountOf(text, kSummary), 0);  // nor when the first sealed run found no anchor yet

  std::vector<std::string> before, after;
  Sessions(unsealed, before);
  Sessions(text, after);
  ASSERT_EQ(after.size(), 4u);
  // Byte for byte, but for the form of the empty "User" that a reload gives every session.
  EXPECT_EQ(after[0], before[0]);
  EXPECT_EQ(after[1], ReplaceFirst(before[1], "></User>", "/>"));
  EXPECT_EQ(CountOf(after[2], "SealSequence=\"1\""), 1);
  EXPECT_EQ(CountOf(after[3], "SealSequence=\"2\""), 1);
  EXPECT_EQ(CountOf(text, "SealAlgorithm=\"HMAC-SHA256\""), 2);
  EXPECT_EQ(CountOf(text, "TrailId="), 1);

  // Without its seal the trail has the very same checksums.
  const std::string stripped =
      std::regex_replace(text, std::regex(" (TrailId|Seal\\w+)=\"[^\"]*\""), "");
  ASSERT_EQ(CountOf(stripped, "Seal"), 0);
  WriteWholeFile(Trail(), stripped);
  EXPECT_TRUE(PassesChecksum(Trail()));
}

// Each row tampers with a trail of three sealed sessions as someone without the key would, and
// is found by the seal although the trail passes the checksum.
TEST_F(AuditTrailSealTest, TamperingThatPassesTheChecksumIsFoundByTheSeal) {
  const std::string other = File("other.xml");
  RunApplication(other, File("other.anchor"), 0);
  RunApplication(Trail(), Anchor(), 0);
  RunApplication(Trail(), Anchor(), 1);
  const std::string older = ReadWholeFile(Trail());
  RunApplication(Trail(), Anchor(), 2);
  const std::string text = ReadWholeFile(Trail());
  std::vector<std::string> sessions;
  Sessions(text, sessions);
  ASSERT_EQ(sessions.size(), 3u);
  const std::string forged = ReplaceFirst(sessions[2], "opened sample 2", "opened sample 7");

  const char* kBadFirstSession = "Session 1: bad MAC (the seal does not match the session).";
  const char* kCutShort =
      "Truncated against the anchor (the trail ends at seal 2, the anchor records seal 3).";
  struct Row {
    const char* what;
    std::function<std::string()> tamper;
    bool recompute;  // the checksums must be recomputed to pass
    const char* found;
  } rows[] = {
      {"a session deleted",
       [&] {
         return WithSessions(text, {sessions[0], sessions[2]});
       },
       true, "Session 2: gap in the sequence (expected seal 2, found 3)."},
      {"sessions reordered",
       [&] {
         return WithSessions(text, {sessions[0], sessions[2], sessions[1]});
       },
       true,
       "Session 2: gap in the sequence (expected seal 2, found 3).\n"
       "Session 3: gap in the sequence (expected seal 4, found 2)."},
      {"cut short after a session",
       [&] {
         return WithSessions(text, {sessions[0], sessions[1]});
       },
       true, kCutShort},
      {"an older copy put back", [&] { return older; }, false, kCutShort},
      {"another sealed trail put in its place", [&] { return ReadWholeFile(other); }, false,
       "Truncated against the anchor (the trail's identifier is not the one the anchor "
       "records)."},
      {"made unreadable, so that it is cleared", [&] { return text.substr(0, text.size() / 2); },
       false,
       "Truncated against the anchor (the trail holds no sealed session, the anchor records "
       "seal 3)."},
      {"a forged session appended",
       [&] {
         const std::string unsealed =
             std::regex_replace(forged, std::regex(" Seal\\w+=\"[^\"]*\""), "");
         return WithSessions(text, {sessions[0], sessions[1], sessions[2], unsealed});
       },
       true, "Session 4: unsealed session after sealed ones."},
      {"a forged session appended with a seal copied and numbered on",
       [&] {
         return WithSessions(text,
                             {sessions[0], sessions[1], sessions[2],
                              ReplaceFirst(forged, "SealSequence=\"3\"", "SealSequence=\"4\"")});
       },
       true, "Session 4: bad MAC (the seal does not match the session)."},
      {"a message replaced through a CDATA section",
       [&] { return ReplaceFirst(text, ">Measured<", "><![CDATA[Deleted]]><"); }, true,
       "Session 1: bad MAC (it holds a CDATA section)."},
      {"a comment added to a message",
       [&] { return ReplaceFirst(text, ">Measured<", ">Measured<!-- twice --><"); }, false,
       "Session 1: bad MAC (it holds a comment)."},
      {"a message given by an entity reference",
       [&] {
         return ReplaceFirst(ReplaceFirst(text, ">Measured<", ">&m;<"), "<AuditTrail ",
                             "<!DOCTYPE AuditTrail [<!ENTITY m \"Measured\">]><AuditTrail ");
       },
       false, "Session 1: bad MAC (it holds an entity reference)."},
      {"the boundary between message and details moved",
       [&] { return ReplaceFirst(text, "sample 0<Details>weight=", "sample 0weight=<Details>"); },
       false, kBadFirstSession},
      {"an event moved under another",
       [&] {
         return ReplaceFirst(
             text, "(</Event>)(</Events></Event>)(<Event [^>]*>Measured<Details/></Event>)",
             "$1$3$2");
       },
       false, kBadFirstSession},
  };
  const std::string anchor = ReadWholeFile(Anchor());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string tampered = row.tamper();
    ASSERT_NE(tampered, text);
    WriteWholeFile(Trail(), tampered);
    if (row.recompute) RecomputeChecksums(Trail());
    EXPECT_TRUE(PassesChecksum(Trail()));
    EXPECT_EQ(SealFindings(Trail(), Anchor()), row.found);
    ASSERT_EQ(ReadWholeFile(Anchor()), anchor);  // a check never moves the anchor
  }
}

TEST_F(AuditTrailSealTest, AnotherKeyOrALostAnchorIsAFinding) {
  RunApplication(Trail(), Anchor(), 0);
  WriteWholeFile(KeyFile(), "another key");
  EXPECT_EQ(SealFindings(Trail(), Anchor()), "Session 1: bad MAC (sealed with another key).");
  WriteWholeFile(KeyFile(), kKey);
  boost::filesystem::remove(Anchor());
  EXPECT_EQ(SealFindings(Trail(), Anchor()),
            "Truncated against the anchor (the anchor file cannot be read: No such file or "
            "directory).");
  EXPECT_EQ(SealFindings(Trail(), ""), "");  // nothing to compare with
}

TEST_F(AuditTrailSealTest, ClearingTheTrailDropsItsAnchor) {
  RunApplication(Trail(), Anchor(), 0);
  {
    AuditTrail trail(Trail().c_str(), "", nullptr);
    ASSERT_TRUE(trail.SetSeal(KeyFile().c_str(), Anchor().c_str()));
    trail.Load();
    trail.Clear();
  }
  EXPECT_FALSE(boost::filesystem::exists(Anchor()));
  EXPECT_EQ(SealFindings(Trail(), Anchor()), "");
}

TEST_F(AuditTrailSealTest, UnusableKeyFileLeavesSessionsUnsealed) {
  boost::filesystem::create_directory(File("folder.key"));
  WriteWholeFile(File("empty.key"), "");
  WriteWholeFile(File("large.key"), std::string(4097, 'k'));
  WriteWholeFile(File("limit.key"), std::string(4096, 'k'));
  struct Row {
    const char* keyFile;
    bool sealed;
  } rows[] = {{nullptr, false},     {"missing.key", false}, {"folder.key", false},
              {"empty.key", false}, {"large.key", false},   {"limit.key", true}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.keyFile ? row.keyFile : "null");
    const std::string keyFile = row.keyFile ? File(row.keyFile) : "";
    AuditTrail trail;
    EXPECT_EQ(trail.SetSeal(row.keyFile ? keyFile.c_str() : nullptr, nullptr), row.sealed);
    trail.BeginSession();
    trail.EndSession();
    EXPECT_EQ(CountOf(SavedText(trail), "SealMac="), row.sealed ? 1 : 0);
  }
}

// The seal's bytes are a stored format: a session sealed by hand as the format says must verify.
TEST_F(AuditTrailSealTest, SealFollowsTheDocumentedFormat) {
  auto u64 = [](std::uint64_t n) {
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) bytes += static_cast<char>(n >> shift);
    return bytes;
  };
  auto text = [&](const std::string& ascii) {
    std::string bytes = u64(ascii.size());
    for (char c : ascii) bytes += std::string(1, c) + '\0';
    return bytes;
  };
  auto hmac = [](const std::string& data) {
    unsigned char out[32];
    unsigned int length = 0;
    HMAC(EVP_sha256(), kKey, sizeof kKey - 1, reinterpret_cast<const unsigned char*>(data.data()),
         data.size(), out, &length);
    std::string hex;
    for (unsigned int i = 0; i < length; ++i)
      hex += "0123456789abcdef"[out[i] >> 4], hex += "0123456789abcdef"[out[i] & 15];
    return hex;
  };
  const std::string keyId = hmac("zenutl audit trail key id").substr(0, 16);
  RollingChecksum checksum;
  checksum.FeedText(u"1.0");
  checksum.FeedText(u"ann");
  checksum.FeedText(u"x");
  const std::string sum = checksum.FormatSum().GetString();
  const std::string canonical = "E" + text("Session") + u64(1) + text("Version") + text("1.0") +  //
                                "E" + text("User") + u64(1) + text("User") + text("ann") + ")" +  //
                                "T" + text("x") +                                                 //
                                "E" + text("CheckSum") + u64(3) + text("SealAlgorithm") +
                                text("HMAC-SHA256") + text("SealKeyId") + text(keyId) +
                                text("SealSequence") + text("1") + "T" + text(sum) + "))";
  const std::string mac = hmac(text("t-1") + u64(1) + canonical);
  WriteWholeFile(Trail(),
                 "<AuditTrail Version=\"1.0\" TrailId=\"t-1\"><Session Version=\"1.0\">"
                 "<User User=\"ann\"/>x<CheckSum SealSequence=\"1\" "
                 "SealAlgorithm=\"HMAC-SHA256\" SealKeyId=\"" +
                     keyId + "\" SealMac=\"" + mac + "\">" + sum +
                     "</CheckSum></Session></AuditTrail>");
  EXPECT_TRUE(PassesChecksum(Trail()));
  EXPECT_EQ(SealFindings(Trail(), ""), "");
}

}  // namespace
