// zenutl audit verify|show|html: the auditor's commands. Every one reads the trail into a
// memory-only AuditTrail from a read-only stream, so the file is never written, whatever it holds.
#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>

#include "audit_views.h"
#include "commands.h"
#include "files.h"
#include "progress.h"
#include "xml_diagnosis.h"
#include "zenutl/audit_trail.h"
#include "zenutl/exception.h"
#include "zenutl/json_value.h"

namespace zenutl_tool {
namespace {

std::string Percent(unsigned long long done, unsigned long long total) {
  if (total == 0) return std::to_string(done / 1024) + " KiB";
  return std::to_string(done >= total ? 100 : done * 100 / total) + "%";
}

// The trail in `path`, read without touching the file. Throws FileError when the file can't be
// read, is no XML, or is XML of another kind.
std::unique_ptr<AuditTrail> ReadTrail(const std::string& path, ProgressLine& progress,
                                      const std::string& label) {
  std::ifstream file;
  OpenInputFile(path, file);
  RequireWithinXmlBound(path);
  const unsigned long long size = FileSize(path);
  CountingStreamBuf counting(*file.rdbuf(), [&](unsigned long long done) {
    progress.Update(label + ": reading " + Percent(done, size));
  });
  std::istream stream(&counting);
  std::unique_ptr<AuditTrail> trail(new AuditTrail);
  try {
    trail->Read(stream);
  } catch (const Exception&) {
    if (file.bad()) throw FileError(SystemErrorText(path, EIO));
    throw FileError(path + ": not a readable audit trail: " + ExplainRefusedXml(path));
  }
  if (!trail->HasAuditTrailRoot()) {
    throw FileError(path + ": not an audit trail: its root element is not <AuditTrail>");
  }
  return trail;
}

std::string SessionsText(int count) {
  return std::to_string(count) + (count == 1 ? " session" : " sessions");
}

// The key and anchor files of `audit verify --key KEYFILE [--anchor FILE]`; no key: no seal.
struct SealFiles {
  std::string key;
  std::string anchor;
};

// Refuses, before any trail is read, an anchor without a key or for several trails, and a key
// file that can't be used.
SealFiles SealFilesOf(const Arguments& arguments) {
  SealFiles files{arguments.Value("key"), arguments.Value("anchor")};
  if (!arguments.Has("key")) {
    if (arguments.Has("anchor")) throw UsageError("--anchor needs --key");
    return files;
  }
  if (arguments.Has("anchor") && arguments.OperandCount() > 1) {
    throw UsageError("--anchor holds the end of one trail: give one FILE with it");
  }
  std::ifstream key;
  OpenInputFile(files.key, key);  // names a missing or unreadable file with the system's reason
  AuditTrail probe;
  if (!probe.SetSeal(files.key.c_str(), nullptr)) {
    throw FileError(files.key + ": not a key file: it is empty or longer than 4096 bytes");
  }
  return files;
}

json_value FindingAsJson(const AuditTrailFinding& finding) {
  json_value json(json_object{});
  json.put_child("kind") = json_value(std::string(FindingKindName(finding.kind)));
  // A finding about the whole trail (against the anchor) has no session.
  json.put_child("session") = finding.index < 0 ? json_value() : json_value(finding.index + 1.0);
  json.put_child("index") = json_value(static_cast<double>(finding.index));
  if (finding.IsSealFinding()) {
    json.put_child("detail") = json_value(std::string(finding.detail.GetString()));
  }
  json.put_child("date") = json_value(std::string(finding.date.GetString()));
  json.put_child("user") = json_value(std::string(finding.user.GetString()));
  json.put_child("computer") = json_value(std::string(finding.computer.GetString()));
  json.put_child("stored") = json_value(std::string(finding.storedCheckSum.GetString()));
  json.put_child("computed") = json_value(std::string(finding.computedCheckSum.GetString()));
  return json;
}

// Checks one file; prints its verdict as text, or adds it to `json`. Answers the exit status.
int VerifyOne(const std::string& path, const std::string& label, const SealFiles& seal, bool asJson,
              ProgressLine& progress, json_value& json) {
  std::unique_ptr<AuditTrail> trail;
  try {
    trail = ReadTrail(path, progress, label);
  } catch (const FileError& error) {
    progress.Clear();
    std::cerr << "zenutl: " << error.what() << "\n";
    if (asJson) {
      json.put_child("file") = json_value(path);
      json.put_child("status") = json_value(std::string("unreadable"));
      json.put_child("error") = json_value(std::string(error.what()));
    }
    return kFailure;
  }
  progress.Update(label + ": checking the sessions");
  if (!seal.key.empty()) trail->SetSeal(seal.key.c_str(), seal.anchor.c_str());
  const int sessions = trail->CountSessions();
  const std::vector<AuditTrailFinding> findings = trail->FindUnverifiedSessions();
  progress.Clear();
  if (asJson) {
    json.put_child("file") = json_value(path);
    json.put_child("status") = json_value(std::string(findings.empty() ? "verified" : "failed"));
    json.put_child("sessions") = json_value(static_cast<double>(sessions));
    json_value& list = json.put_child("findings");
    list.set_length(0);
    for (const AuditTrailFinding& finding : findings) list.append_child() = FindingAsJson(finding);
  } else if (findings.empty()) {
    const char* verdict = seal.key.empty()
                              ? "every session matches its checksum"
                              : "every session matches its checksum, and the seals hold";
    std::cout << path << ": verified: "
              << (sessions == 0 ? std::string("no sessions to check")
                                : verdict + (" (" + SessionsText(sessions) + ")"))
              << "\n";
  } else {
    std::set<int> failed;  // a session may fail its checksum and its seal
    for (const AuditTrailFinding& finding : findings) {
      if (finding.index >= 0) failed.insert(finding.index);
    }
    std::cout << path << ": FAILED: ";
    if (failed.empty()) {
      std::cout << "the trail could not be verified\n";
    } else {
      std::cout << failed.size() << " of " << SessionsText(sessions) << " could not be verified\n";
    }
    for (const AuditTrailFinding& finding : findings) {
      if (finding.index < 0) {
        std::cout << "  trail: " << DescribeFinding(finding) << "\n";
        continue;
      }
      std::cout << "  session " << finding.index + 1;
      if (finding.kind != AuditTrailFinding::eNotASession) {
        std::cout << ", " << finding.date.GetString() << ", user " << finding.user.GetString()
                  << " on " << finding.computer.GetString();
      }
      std::cout << ": " << DescribeFinding(finding) << "\n";
    }
  }
  std::cout.flush();
  return findings.empty() ? kSuccess : kFinding;
}

int RunVerify(const Arguments& arguments) {
  const bool asJson = arguments.Has("json");
  const SealFiles seal = SealFilesOf(arguments);
  ProgressLine progress;
  json_value report(json_object{});
  json_value files(json_array{});
  int status = kSuccess;
  const std::size_t count = arguments.OperandCount();
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& path = arguments.Operand(i);
    std::string label = "verifying ";
    if (count > 1) label += std::to_string(i + 1) + "/" + std::to_string(count) + " ";
    json_value entry(json_object{});
    status = std::max(status, VerifyOne(path, label + path, seal, asJson, progress, entry));
    files.append_child() = std::move(entry);
  }
  if (asJson) {
    report.put_child("status") = json_value(static_cast<double>(status));
    report.put_child("files") = std::move(files);
    std::cout << report.to_string() << "\n";
  }
  return status;
}

TrailView ViewOf(const std::string& path) {
  ProgressLine progress;
  std::unique_ptr<AuditTrail> trail = ReadTrail(path, progress, path);
  progress.Clear();
  return TrailView{path, trail->GetSessionRecords(), trail->FindUnverifiedSessions()};
}

int RunShow(const Arguments& arguments) {
  std::cout << TrailAsText(ViewOf(arguments.Operand(0)));
  return kSuccess;
}

int RunHtml(const Arguments& arguments) {
  WriteWholeOutput(arguments.Value("output"), TrailAsHtml(ViewOf(arguments.Operand(0))));
  return kSuccess;
}

}  // namespace

CommandGroup AuditCommands() {
  CommandGroup group{"audit", "check and read audit trails", {}};
  group.commands.push_back(
      {{"audit verify",
        "FILE...",
        1,
        CommandSyntax::kMany,
        "Check every closed session of each trail against its stored checksum.",
        "Lists the sessions that fail: their number (1 for the oldest), date, user, computer,\n"
        "and the stored and computed checksums. A session that was never closed has no\n"
        "checksum and fails too. The files are only read, never changed. Exit status 1 when\n"
        "any session fails. On a terminal, a progress line shows on standard error.\n"
        "\n"
        "With --key, also checks the keyed seals of a trail that the application seals:\n"
        "each failure is a bad MAC (the session was changed, or sealed with another key),\n"
        "a gap in the sequence (sessions deleted, reordered or inserted), or an unsealed\n"
        "session after sealed ones. With --anchor, the application's anchor file of the\n"
        "trail, a trail cut short, or an older copy put back, fails as truncated against\n"
        "the anchor. Sessions recorded before the trail had a key are not checked by seal.",
        {{"json", 0, "", "write the result as one JSON document"},
         {"key", 0, "KEYFILE", "check the seals with the secret key in KEYFILE"},
         {"anchor", 0, "FILE", "check the trail against its anchor FILE (needs --key)"}}},
       &RunVerify});
  group.commands.push_back(
      {{"audit show",
        "FILE",
        1,
        1,
        "Print the trail as readable text.",
        "Sessions with their user, computer, application, project and checksum verdict;\n"
        "events with time, message and details; the events of an operation's sub-trail\n"
        "indented under it.",
        {}},
       &RunShow});
  group.commands.push_back(
      {{"audit html",
        "FILE",
        1,
        1,
        "Write the trail as a standalone HTML page.",
        "The page holds its own style and needs neither the trail's stylesheet nor a network.",
        {{"output", 'o', "OUT", "write the page to OUT instead of standard output"}}},
       &RunHtml});
  return group;
}

}  // namespace zenutl_tool
