// The zenutl tool run as a user runs it: a separate process on real files, judged by its exit
// status and what it prints.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "support/run_program.h"
#include "support/temp_dir.h"
#include "zenutl/audit_trail.h"
#include "zenutl/audit_trail_wrapper.h"
#include "zenutl/json_value.h"
#include "zenutl/stream_directory_writer.h"
#include "zenutl/system_info.h"

namespace {

using zenutl_test::ProgramOptions;
using zenutl_test::ProgramResult;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

ProgramResult Zenutl(std::vector<std::string> args, const ProgramOptions& options = {}) {
  args.insert(args.begin(), ZENUTL_TOOL);
  return zenutl_test::RunProgram(args, options);
}

class ZenutlTool : public zenutl_test::TempDirTest {
 protected:
  // A trail file of `sessions` closed sessions; the second event of each carries a sub-trail.
  // Sealed with the key in `key`, and anchored in `anchor`, when they are given.
  std::string RecordTrail(int sessions, const std::string& key = "",
                          const std::string& anchor = "") {
    const std::string path = File("trail.xml");
    for (int i = 1; i <= sessions; ++i) {
      boost::shared_ptr<AuditTrail> trail(new AuditTrail(path.c_str(), "Assay", nullptr));
      trail->GetAuditTrailSettings().SetLogEvents(1);
      if (!key.empty()) {
        EXPECT_TRUE(trail->SetSeal(key.c_str(), anchor.c_str()));
      }
      trail->Load();
      trail->BeginSession();
      AuditTrailWrapper wrapper(trail);
      wrapper.AddEvent("Sample loaded", ("sample " + std::to_string(i)).c_str(), nullptr);
      wrapper.PushSubTrail();
      wrapper.AddEvent("Step <one>", "", nullptr);
      wrapper.PopSubTrail("Batch run", "result = 12.5 mg/l");
      trail->EndSessionAndSave();
    }
    return path;
  }
};

TEST_F(ZenutlTool, AuditVerifyTellsCleanFromTamperedAndNeverWritesTheFile) {
  const std::string path = RecordTrail(3);
  ProgramResult clean = Zenutl({"audit", "verify", path});
  EXPECT_EQ(clean.status, 0) << clean.err;
  EXPECT_EQ(clean.out, path + ": verified: every session matches its checksum (3 sessions)\n");

  std::string text = ReadWholeFile(path);
  text = std::regex_replace(text, std::regex("sample 2"), "sample 7");
  WriteWholeFile(path, text);
  struct stat before {};
  ::stat(path.c_str(), &before);
  for (const bool json : {false, true}) {
    SCOPED_TRACE(json);
    ProgramResult tampered =
        json ? Zenutl({"audit", "verify", "--json", path}) : Zenutl({"audit", "verify", path});
    EXPECT_EQ(tampered.status, 1) << tampered.err;
    EXPECT_EQ(tampered.err, "");
    const std::string user = ZnSystemInfo::GetUserNameA().GetString();
    const std::string computer = ZnSystemInfo::GetComputerNameA().GetString();
    if (json) {
      const json_value report = json_value::parse(tampered.out);
      EXPECT_EQ(report.get_child("status").get_number(), 1.0);
      const json_value& file = report.get_child("files").get_child(0u);
      EXPECT_EQ(file.get_child("status").get_string(), "failed");
      EXPECT_EQ(file.get_child("sessions").get_number(), 3.0);
      ASSERT_EQ(file.get_child("findings").get_length(), 1u);
      const json_value& finding = file.get_child("findings").get_child(0u);
      EXPECT_EQ(finding.get_child("kind").get_string(), "checksum-mismatch");
      EXPECT_EQ(finding.get_child("session").get_number(), 2.0);
      EXPECT_EQ(finding.get_child("user").get_string(), user);
      EXPECT_NE(finding.get_child("stored"), finding.get_child("computed"));
    } else {
      EXPECT_TRUE(std::regex_search(
          tampered.out, std::regex("FAILED: 1 of 3 sessions could not be verified\n  session 2, "
                                   "[-0-9]+ [:0-9]+ \\(UTC[-+.0-9]+\\), user " +
                                   user + " on " + computer +
                                   ": checksum mismatch: stored [0-9a-f]+, computed [0-9a-f]+\n")))
          << tampered.out;
    }
  }
  struct stat after {};
  ::stat(path.c_str(), &after);
  EXPECT_EQ(ReadWholeFile(path), text);
  EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
  EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
}

// Each kind of seal failure is named with its session, or for the whole trail; a session that
// fails both its checksum and its seal counts once.
TEST_F(ZenutlTool, AuditVerifyWithKeyAndAnchorNamesEachSealFailure) {
  const std::string key = File("trail.key");
  const std::string anchor = File("trail.anchor");
  WriteWholeFile(key, "the application's secret");
  const std::string path = RecordTrail(3, key, anchor);
  const std::string text = ReadWholeFile(path);
  std::vector<std::string> sessions;
  const std::regex session("<Session .*?</Session>");
  for (auto it = std::sregex_iterator(text.begin(), text.end(), session);
       it != std::sregex_iterator(); ++it) {
    sessions.push_back(it->str());
  }
  ASSERT_EQ(sessions.size(), 3u);
  const std::string head = text.substr(0, text.find("<Session "));
  const std::string unsealed =
      std::regex_replace(sessions[2], std::regex(" Seal\\w+=\"[^\"]*\""), "");
  struct Row {
    const char* what;
    std::string trail;
    std::string out;  // after "<path>: "; "@" stands for a session's date, user and computer
  } rows[] = {
      {"untouched", text,
       "verified: every session matches its checksum, and the seals hold (3 sessions)\n"},
      {"a session deleted", head + sessions[0] + sessions[2] + "</AuditTrail>",
       "FAILED: 1 of 2 sessions could not be verified\n"
       "  session 2@: gap in the sequence: expected seal 2, found 3\n"},
      {"cut short", head + sessions[0] + sessions[1] + "</AuditTrail>",
       "FAILED: the trail could not be verified\n"
       "  trail: truncated against the anchor: the trail ends at seal 2, the anchor records "
       "seal 3\n"},
      {"an unsealed session appended",
       head + sessions[0] + sessions[1] + sessions[2] + unsealed + "</AuditTrail>",
       "FAILED: 1 of 4 sessions could not be verified\n"
       "  session 4@: unsealed session after sealed ones\n"},
      {"a detail edited", std::regex_replace(text, std::regex("sample 2"), "sample 7"),
       "FAILED: 1 of 3 sessions could not be verified\n"
       "  session 2@: checksum mismatch: stored [0-9a-f]+, computed [0-9a-f]+\n"
       "  session 2@: bad MAC: the seal does not match the session\n"},
  };
  const std::string who = ", [-0-9]+ [:0-9]+ \\(UTC[-+.0-9]+\\), user [^ ]+ on [^:]+";
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    WriteWholeFile(path, row.trail);
    const ProgramResult result =
        Zenutl({"audit", "verify", "--key", key, "--anchor", anchor, path});
    EXPECT_EQ(result.status, row.out.rfind("verified", 0) == 0 ? 0 : 1) << result.err;
    const std::string expected = std::regex_replace(row.out, std::regex("[()]"), "\\$&");
    EXPECT_TRUE(std::regex_match(
        result.out, std::regex(std::regex_replace(path + ": " + expected, std::regex("@"), who))))
        << result.out;
  }
  // In JSON a finding about the whole trail has no session.
  WriteWholeFile(path, rows[2].trail);
  const ProgramResult json =
      Zenutl({"audit", "verify", "--json", "--key", key, "--anchor", anchor, path});
  const json_value report = json_value::parse(json.out);
  const json_value& finding =
      report.get_child("files").get_child(0u).get_child("findings").get_child(0u);
  EXPECT_EQ(finding.get_child("kind").get_string(), "truncated");
  EXPECT_TRUE(finding.get_child("session").is_null());
  EXPECT_EQ(finding.get_child("detail").get_string(),
            "the trail ends at seal 2, the anchor records seal 3");
}

// Whatever the file holds, the answer is a message naming it and status 2, never a crash.
TEST_F(ZenutlTool, UnreadableTrailsAreStatusTwoWithAClearMessage) {
  const std::string trail = ReadWholeFile(RecordTrail(1));
  struct Row {
    const char* what;
    std::string content;  // no file at all when "-"
    std::string message;
  } rows[] = {
      {"truncated", trail.substr(0, trail.size() / 2),
       "not a readable audit trail: the XML is broken at line 1, column [0-9]+: input ended before "
       "all "
       "started tags were ended; last tag started is 'Event'"},
      {"binary", std::string("\x89PNG\r\n\x1a\n\0\0\0", 11),
       "not a readable audit trail: the XML is broken at line 1, column 1: invalid byte "
       "'[^']*' .*"},
      {"empty", "", "not a readable audit trail: the file is empty"},
      {"other XML", "<Settings LogEvents=\"1\"/>",
       "not an audit trail: its root element is not <AuditTrail>"},
      {"missing", "-", "No such file or directory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string path = File(std::string(row.what) + ".xml");
    if (row.content != "-") WriteWholeFile(path, row.content);
    for (const char* command : {"verify", "show", "html"}) {
      SCOPED_TRACE(command);
      const ProgramResult result = Zenutl({"audit", command, path});
      EXPECT_EQ(result.status, 2);
      EXPECT_EQ(result.out, "");
      EXPECT_TRUE(
          std::regex_match(result.err, std::regex("zenutl: " + path + ": " + row.message + "\n")))
          << result.err;
    }
  }
  const ProgramResult folder = Zenutl({"audit", "verify", Dir().string()});
  EXPECT_EQ(folder.err, "zenutl: " + Dir().string() + ": Is a directory\n");
  // Several files: each is told, and the worst outcome decides the status.
  const ProgramResult mixed = Zenutl({"audit", "verify", File("missing.xml"), File("trail.xml")});
  EXPECT_EQ(mixed.status, 2);
  EXPECT_NE(mixed.out.find("verified"), std::string::npos);
}

TEST_F(ZenutlTool, ProgressShowsOnlyOnATerminal) {
  const std::string path = RecordTrail(2);
  ProgramOptions terminal;
  terminal.errorOnTerminal = true;
  const ProgramResult shown = Zenutl({"audit", "verify", path, path}, terminal);
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.err.find("\rverifying 1/2 " + path + ": reading"), std::string::npos)
      << shown.err;
  EXPECT_EQ(shown.err.substr(shown.err.size() - 4), "\r\033[K");  // erased at the end
  EXPECT_EQ(Zenutl({"audit", "verify", path, path}).err, "");
}

TEST_F(ZenutlTool, AuditShowAndHtmlReadTheTrailWithSubTrailsIndented) {
  const std::string path = RecordTrail(1);
  const ProgramResult shown = Zenutl({"audit", "show", path});
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.out.find("1 session, all verified"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("  project      Assay\n"), std::string::npos);
  EXPECT_TRUE(std::regex_search(
      shown.out, std::regex("\n    ([^\n]+)  Batch run\n     +result = 12.5 mg/l\n        [^ ]"
                            "[^\n]+  Step <one>\n")))
      << shown.out;

  const std::string page = File("trail.html");
  const ProgramResult html = Zenutl({"audit", "html", "-o", page, path});
  EXPECT_EQ(html.status, 0) << html.err;
  EXPECT_EQ(html.out, "");
  const std::string text = ReadWholeFile(page);
  EXPECT_EQ(text.rfind("<!DOCTYPE html>", 0), 0u);
  EXPECT_NE(text.find("<span class=\"message\">Step &lt;one&gt;</span>"), std::string::npos);
  EXPECT_EQ(text.find(".xsl"), std::string::npos);
  EXPECT_EQ(Zenutl({"audit", "html", path}).out, text);
}

TEST_F(ZenutlTool, IniRoundTrip) {
  const std::string ini = File("settings.ini");
  EXPECT_EQ(Zenutl({"ini", "set", ini, "Display", "Scale", " 1.5 "}).status, 0);
  EXPECT_EQ(Zenutl({"ini", "set", ini, "Display", "Theme", "dark"}).status, 0);
  EXPECT_EQ(Zenutl({"ini", "get", ini, "display", "SCALE"}).out, " 1.5 \n");
  EXPECT_EQ(Zenutl({"ini", "list", ini}).out, "[Display]\n");
  EXPECT_EQ(Zenutl({"ini", "list", ini, "Display"}).out, "Scale= 1.5 \nTheme=dark\n");
  EXPECT_EQ(Zenutl({"ini", "delete", ini, "Display", "Scale"}).status, 0);

  struct Row {
    std::vector<std::string> args;
    int status;
    std::string err;
  } rows[] = {
      {{"get", ini, "Display", "Scale"}, 1, ini + ": no key 'Scale' in section [Display]"},
      {{"delete", ini, "Display", "Scale"}, 1, ini + ": no key 'Scale' in section [Display]"},
      {{"list", ini, "Nowhere"}, 1, ini + ": no section [Nowhere]"},
      {{"set", ini, "a]b", "k", "v"}, 2, ini + ": could not store key 'k' in section [a]b]"},
      {{"get", File("none.ini"), "a", "b"}, 2, File("none.ini") + ": No such file or directory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.args[0] + " " + row.args[2]);
    std::vector<std::string> args = row.args;
    args.insert(args.begin(), "ini");
    const ProgramResult result = Zenutl(args);
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.err.rfind("zenutl: " + row.err, 0), 0u) << result.err;
  }
  EXPECT_EQ(Zenutl({"ini", "delete", ini, "Display"}).status, 0);
  EXPECT_EQ(Zenutl({"ini", "list", ini}).out, "");
}

TEST_F(ZenutlTool, XmlGetAndListWalkSectionsByNameAndIndex) {
  const std::string xml = File("settings.zxl");
  WriteWholeFile(xml,
                 "<?xml version=\"1.0\"?><Settings LogEvents=\"1\"><Window Left=\"10\"/>"
                 "<Recent File=\"a.dat\"/><Recent File=\"b.dat\"/></Settings>");
  EXPECT_EQ(Zenutl({"xml", "list", xml}).out, "Settings/\n");
  EXPECT_EQ(Zenutl({"xml", "list", xml, "Settings"}).out,
            "LogEvents=1\nWindow/\nRecent[1]/\nRecent[2]/\n");
  EXPECT_EQ(Zenutl({"xml", "get", xml, "Settings/Recent[2]/File"}).out, "b.dat\n");
  const ProgramResult missing = Zenutl({"xml", "get", xml, "Settings/Recent[3]/File"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "zenutl: " + xml + ": no section Settings/Recent[3]\n");
  WriteWholeFile(xml, "<Settings><Window></Settings>");
  const ProgramResult broken = Zenutl({"xml", "list", xml});
  EXPECT_EQ(broken.status, 2);
  EXPECT_EQ(broken.err.rfind("zenutl: " + xml + ": the XML is broken at line 1, column ", 0), 0u)
      << broken.err;
}

TEST_F(ZenutlTool, JsonCheckAndPrettyOnTestSuiteFiles) {
  const std::string good = std::string(ZENUTL_TOOL_DATA) + "/y_array_heterogeneous.json";
  const std::string bad = std::string(ZENUTL_TOOL_DATA) + "/n_object_trailing_comma.json";
  const ProgramResult valid = Zenutl({"json", "check", good});
  EXPECT_EQ(valid.status, 0);
  EXPECT_EQ(valid.out, good + ": valid JSON\n");
  const ProgramResult invalid = Zenutl({"json", "check", bad});
  EXPECT_EQ(invalid.status, 1);
  EXPECT_TRUE(
      std::regex_match(invalid.out, std::regex(bad + ": not valid JSON: .+ at line 1, column 9\n")))
      << invalid.out;

  EXPECT_EQ(Zenutl({"json", "pretty", good}).out, "[\n  null,\n  1,\n  \"1\",\n  {}\n]\n");
  ProgramOptions input;
  input.input = "{\"b\": [true], \"a\": 0.5}";
  EXPECT_EQ(Zenutl({"json", "pretty", "--indent", "4"}, input).out,
            "{\n    \"a\": 0.5,\n    \"b\": [\n        true\n    ]\n}\n");
  const ProgramResult refused = Zenutl({"json", "pretty", bad});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.out, "");
  EXPECT_EQ(refused.err.rfind("zenutl: " + bad + ": not valid JSON: ", 0), 0u);
}

TEST_F(ZenutlTool, DigestsMatchMd5sumAndBase64RoundTrips) {
  const std::string file = File("abc.txt");
  WriteWholeFile(file, "abc");
  EXPECT_EQ(Zenutl({"md5", file}).out, "900150983cd24fb0d6963f7d28e17f72  " + file + "\n");
  ProgramOptions input;
  input.input = "abc";
  EXPECT_EQ(Zenutl({"md5"}, input).out, "900150983cd24fb0d6963f7d28e17f72  -\n");
  const ProgramResult some = Zenutl({"md5", File("none"), file});
  EXPECT_EQ(some.status, 2);
  EXPECT_EQ(some.out, "900150983cd24fb0d6963f7d28e17f72  " + file + "\n");

  std::string bytes;
  for (int i = 0; i < 300; ++i) bytes += static_cast<char>(i * 7);
  input.input = bytes;
  const ProgramResult encoded = Zenutl({"base64", "encode"}, input);
  EXPECT_EQ(encoded.out.find('\n'), 76u);
  input.input = encoded.out;
  EXPECT_EQ(Zenutl({"base64", "decode"}, input).out, bytes);
  for (const std::string& bad : {std::string("!!!!"), std::string("QUJD\0", 5)}) {
    input.input = bad;
    const ProgramResult refused = Zenutl({"base64", "decode"}, input);
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err.rfind("zenutl: standard input: not Base64", 0), 0u);
  }
}

TEST_F(ZenutlTool, StreamsListShowsEachStreamOrTheDamage) {
  const std::string file = File("container.bin");
  {
    std::ofstream out(file, std::ios::binary);
    StreamWriter writer(out);
    StreamDirectoryWriter directory(writer, 3, StreamHelperDirectory::e16Bit);
    directory.GetStream(2).WriteString("second");
    directory.GetStream(0).WriteInt32(7);
  }
  const ProgramResult listed = Zenutl({"streams", "list", file});
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_TRUE(std::regex_search(listed.out, std::regex("\n0 +20 +4\n1 +absent +\n2 +10 +10\n3 "
                                                       "streams declared, 2 present; the "
                                                       "container ends at byte 24 of 24\n")))
      << listed.out;
  WriteWholeFile(file, ReadWholeFile(file).substr(0, 12));
  const ProgramResult cut = Zenutl({"streams", "list", file});
  EXPECT_EQ(cut.status, 2);
  EXPECT_EQ(cut.err, "zenutl: " + file +
                         ": damaged stream directory: it ends at byte 24 but the file has 12 "
                         "bytes\n");
  WriteWholeFile(file, "\x07");
  EXPECT_EQ(Zenutl({"streams", "list", file}).err,
            "zenutl: " + file + ": not a stream directory container: Invalid offset size.\n");
}

TEST_F(ZenutlTool, HelpForEveryCommandAndUsageMistakesAreStatusTwo) {
  const ProgramResult program = Zenutl({"--help"});
  EXPECT_EQ(program.status, 0);
  std::smatch line;
  std::string listing = program.out;
  int commands = 0;
  while (std::regex_search(listing, line, std::regex("\n  ([a-z0-9]+(?: [a-z]+)?) [A-Z\\[]"))) {
    std::vector<std::string> args;
    std::istringstream words(line[1].str());
    for (std::string word; words >> word;) args.push_back(word);
    args.push_back("--help");
    SCOPED_TRACE(line[1].str());
    const ProgramResult help = Zenutl(args);
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("usage: zenutl " + line[1].str(), 0), 0u) << help.out;
    ++commands;
    listing = line.suffix();
  }
  EXPECT_EQ(commands, 15);

  struct Row {
    std::vector<std::string> args;
    std::string err;
  } rows[] = {
      {{}, "usage: zenutl COMMAND"},
      {{"frobnicate"}, "zenutl: unknown command 'frobnicate'\nTry 'zenutl --help'."},
      {{"audit"}, "zenutl: 'zenutl audit' needs a command\nTry 'zenutl audit --help'."},
      {{"audit", "verify"}, "zenutl: missing FILE...\nTry 'zenutl audit verify --help'."},
      {{"audit", "verify", "--jsn", "x"}, "zenutl: unknown option '--jsn'\n"},
      {{"audit", "verify", "--anchor", "a", "x"}, "zenutl: --anchor needs --key\n"},
      {{"audit", "verify", "--key", "/nonexistent.key", "x"},
       "zenutl: /nonexistent.key: No such file or directory\n"},
      {{"audit", "verify", "--key", "/dev/null", "x"},
       "zenutl: /dev/null: not a key file: it is empty or longer than 4096 bytes\n"},
      {{"audit", "html", "x", "-o"}, "zenutl: option '-o' needs a value\n"},
      {{"ini", "get", "a", "b", "c", "d"}, "zenutl: unexpected operand 'd'\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.err);
    std::vector<std::string> args = row.args;
    const ProgramResult result = Zenutl(args);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err.rfind(row.err, 0), 0u) << result.err;
  }
}

}  // namespace
