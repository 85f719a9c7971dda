// zenutl audit verify|show|html: the auditor's commands. Every one reads the trail into a
// memory-only AuditTrail from a read-only stream, so the file is never written, whatever it holds.
#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "audit_views.h"
#include "commands.h"
#include "files.h"
#include "json_text.h"
#include "progress.h"
#include "xml_diagnosis.h"
#include "zenutl/audit_trail.h"
#include "zenutl/exception.h"

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
    const std::string where = DescribeXmlProblem(path);
    throw FileError(path + ": not a readable audit trail: " +
                    (where.empty() ? std::string("the XML parser refused it (nesting too deep, "
                                                 "too many entities, or a reference to "
                                                 "another machine)")
                     : where == "the file is empty" ? where
                                                    : "broken XML at " + where));
  }
  if (!trail->HasAuditTrailRoot()) {
    throw FileError(path + ": not an audit trail: its root element is not <AuditTrail>");
  }
  return trail;
}

std::string SessionsText(int count) {
  return std::to_string(count) + (count == 1 ? " session" : " sessions");
}

std::string FindingAsJson(const AuditTrailFinding& finding) {
  std::ostringstream json;
  json << "{\"kind\":" << JsonQuoted(FindingKindName(finding.kind))
       << ",\"session\":" << finding.index + 1 << ",\"index\":" << finding.index
       << ",\"date\":" << JsonQuoted(finding.date.GetString())
       << ",\"user\":" << JsonQuoted(finding.user.GetString())
       << ",\"computer\":" << JsonQuoted(finding.computer.GetString())
       << ",\"stored\":" << JsonQuoted(finding.storedCheckSum.GetString())
       << ",\"computed\":" << JsonQuoted(finding.computedCheckSum.GetString()) << "}";
  return json.str();
}

// Checks one file; prints its verdict as text, or adds it to `json`. Answers the exit status.
int VerifyOne(const std::string& path, const std::string& label, bool asJson,
              ProgressLine& progress, std::vector<std::string>& json) {
  std::unique_ptr<AuditTrail> trail;
  try {
    trail = ReadTrail(path, progress, label);
  } catch (const FileError& error) {
    progress.Clear();
    std::cerr << "zenutl: " << error.what() << "\n";
    if (asJson) {
      json.push_back("{\"file\":" + JsonQuoted(path) +
                     ",\"status\":\"unreadable\",\"error\":" + JsonQuoted(error.what()) + "}");
    }
    return kFailure;
  }
  progress.Update(label + ": checking the sessions");
  const int sessions = trail->CountSessions();
  const std::vector<AuditTrailFinding> findings = trail->FindUnverifiedSessions();
  progress.Clear();
  if (asJson) {
    std::string entry = "{\"file\":" + JsonQuoted(path) +
                        ",\"status\":" + (findings.empty() ? "\"verified\"" : "\"failed\"") +
                        ",\"sessions\":" + std::to_string(sessions) + ",\"findings\":[";
    for (std::size_t i = 0; i < findings.size(); ++i) {
      entry += (i ? "," : "") + FindingAsJson(findings[i]);
    }
    json.push_back(entry + "]}");
  } else if (findings.empty()) {
    std::cout << path << ": verified: "
              << (sessions == 0
                      ? "no sessions to check"
                      : "every session matches its checksum (" + SessionsText(sessions) + ")")
              << "\n";
  } else {
    std::cout << path << ": FAILED: " << findings.size() << " of " << SessionsText(sessions)
              << " could not be verified\n";
    for (const AuditTrailFinding& finding : findings) {
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
  ProgressLine progress;
  std::vector<std::string> json;
  int status = kSuccess;
  const std::size_t count = arguments.OperandCount();
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& path = arguments.Operand(i);
    std::string label = "verifying ";
    if (count > 1) label += std::to_string(i + 1) + "/" + std::to_string(count) + " ";
    status = std::max(status, VerifyOne(path, label + path, asJson, progress, json));
  }
  if (asJson) {
    std::cout << "{\"status\":" << status << ",\"files\":[";
    for (std::size_t i = 0; i < json.size(); ++i) std::cout << (i ? "," : "") << json[i];
    std::cout << "]}\n";
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
        CommandSpec::kMany,
        "Check every closed session of each trail against its stored checksum.",
        "Lists the sessions that fail: their number (1 for the oldest), date, user, computer,\n"
        "and the stored and computed checksums. A session that was never closed has no\n"
        "checksum and fails too. The files are only read, never changed. Exit status 1 when\n"
        "any session fails. On a terminal, a progress line shows on standard error.",
        {{"json", 0, "", "write the result as one JSON document"}}},
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
