#include "audit_views.h"

#include <map>
#include <sstream>

namespace zenutl_tool {
namespace {

std::string Text(const CString& text) {
  return text.GetString();
}

// Each line of `text` after the first starts with `indent`.
std::string IndentFollowingLines(const std::string& text, const std::string& indent) {
  std::string result;
  for (const char ch : text) {
    result += ch;
    if (ch == '\n') result += indent;
  }
  return result;
}

std::string UserText(const AuditTrailSessionRecord& session) {
  std::string text = Text(session.user) + " on " + Text(session.computer);
  if (!session.domain.IsEmpty()) text += " (domain " + Text(session.domain) + ")";
  return text;
}

// The verdict on a session's seal; `finding` is null when the session verified.
std::string SealText(const AuditTrailSessionRecord& session, const AuditTrailFinding* finding) {
  if (!finding) return Text(session.checkSum) + " (verified)";
  if (finding->kind == AuditTrailFinding::eCheckSumMissing) {
    return "none: " + DescribeFinding(*finding);
  }
  return "FAILED: " + DescribeFinding(*finding);
}

std::map<int, const AuditTrailFinding*> FindingsByIndex(const TrailView& view) {
  std::map<int, const AuditTrailFinding*> byIndex;
  for (const AuditTrailFinding& finding : view.findings) byIndex[finding.index] = &finding;
  return byIndex;
}

std::string Summary(const TrailView& view) {
  std::ostringstream text;
  const std::size_t count = view.sessions.size();
  text << count << (count == 1 ? " session" : " sessions");
  if (view.findings.empty()) {
    text << ", all verified";
  } else {
    text << ", " << view.findings.size() << " could not be verified";
  }
  return text.str();
}

void AppendEventsAsText(std::ostringstream& out, const std::vector<AuditTrailEventRecord>& events,
                        const std::string& indent) {
  for (const AuditTrailEventRecord& event : events) {
    const std::string date = Text(event.date);
    const std::string hanging = indent + std::string(date.size() + 2, ' ');
    out << indent << date << "  " << IndentFollowingLines(Text(event.message), hanging) << "\n";
    if (!event.details.IsEmpty()) {
      out << hanging << IndentFollowingLines(Text(event.details), hanging) << "\n";
    }
    AppendEventsAsText(out, event.subEvents, indent + "    ");
  }
}

std::string Html(const std::string& text) {
  std::string escaped;
  for (const char ch : text) {
    switch (ch) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += ch;
    }
  }
  return escaped;
}

std::string Html(const CString& text) {
  return Html(Text(text));
}

void AppendEventsAsHtml(std::ostringstream& out, const std::vector<AuditTrailEventRecord>& events) {
  if (events.empty()) return;
  out << "<ul class=\"events\">\n";
  for (const AuditTrailEventRecord& event : events) {
    out << "<li><span class=\"time\">" << Html(event.date) << "</span> <span class=\"message\">"
        << Html(event.message) << "</span>";
    if (!event.details.IsEmpty())
      out << "<div class=\"details\">" << Html(event.details) << "</div>";
    AppendEventsAsHtml(out, event.subEvents);
    out << "</li>\n";
  }
  out << "</ul>\n";
}

const char kPageStyle[] =
    "body{font-family:sans-serif;margin:2em;color:#222;background:#fff}"
    "h1{font-size:1.4em}h2{font-size:1.1em;margin:0 0 .5em}"
    ".session{border:1px solid #ccc;border-radius:6px;padding:1em;margin:1em 0}"
    ".session.failed{border-color:#c00;background:#fff5f5}"
    "table.facts td{padding:.1em 1em .1em 0;vertical-align:top}"
    "table.facts td:first-child{color:#666}"
    ".verdict.ok{color:#070}.verdict.bad{color:#c00;font-weight:bold}"
    "ul.events{list-style:none;padding-left:0;margin:.5em 0}"
    "ul.events ul.events{padding-left:2em;border-left:2px solid #ddd}"
    "ul.events li{margin:.3em 0}.time{color:#666;font-size:.9em;margin-right:.5em}"
    ".message{white-space:pre-wrap}"
    ".details{white-space:pre-wrap;color:#444;margin-left:2em;font-size:.95em}";

}  // namespace

const char* FindingKindName(AuditTrailFinding::EKind kind) {
  switch (kind) {
    case AuditTrailFinding::eNotASession:
      return "not-a-session";
    case AuditTrailFinding::eCheckSumMissing:
      return "checksum-missing";
    case AuditTrailFinding::eCheckSumMismatch:
      return "checksum-mismatch";
    case AuditTrailFinding::eSealBadMac:
      return "bad-mac";
    case AuditTrailFinding::eSealGap:
      return "sequence-gap";
    case AuditTrailFinding::eSealTruncated:
      return "truncated";
    case AuditTrailFinding::eSealUnsealed:
      return "unsealed-after-sealed";
  }
  return "unknown";
}

namespace {

// A seal's finding: its kind, and what was found when there is more to say.
std::string SealFinding(const char* kind, const AuditTrailFinding& finding) {
  return finding.detail.IsEmpty() ? kind : kind + (": " + Text(finding.detail));
}

}  // namespace

std::string DescribeFinding(const AuditTrailFinding& finding) {
  switch (finding.kind) {
    case AuditTrailFinding::eNotASession:
      return "not a session: the root holds something else here (text, a comment, an element)";
    case AuditTrailFinding::eCheckSumMissing:
      return "no checksum: the session was never closed, or its checksum was removed "
             "(computed " +
             Text(finding.computedCheckSum) + ")";
    case AuditTrailFinding::eCheckSumMismatch:
      return "checksum mismatch: stored " +
             (finding.storedCheckSum.IsEmpty() ? std::string("(empty)")
                                               : Text(finding.storedCheckSum)) +
             ", computed " + Text(finding.computedCheckSum);
    case AuditTrailFinding::eSealBadMac:
      return SealFinding("bad MAC", finding);
    case AuditTrailFinding::eSealGap:
      return SealFinding("gap in the sequence", finding);
    case AuditTrailFinding::eSealTruncated:
      return SealFinding("truncated against the anchor", finding);
    case AuditTrailFinding::eSealUnsealed:
      return SealFinding("unsealed session after sealed ones", finding);
  }
  return "unknown finding";
}

std::string TrailAsText(const TrailView& view) {
  std::ostringstream out;
  const std::map<int, const AuditTrailFinding*> findings = FindingsByIndex(view);
  out << view.name << ": " << Summary(view) << "\n";
  for (const AuditTrailSessionRecord& session : view.sessions) {
    const auto found = findings.find(session.index);
    const AuditTrailFinding* finding = found == findings.end() ? nullptr : found->second;
    out << "\nSession " << session.index + 1;
    if (!session.isSession) {
      out << ": " << (finding ? DescribeFinding(*finding) : "not a session") << "\n";
      continue;
    }
    out << "  " << Text(session.date) << "\n";
    out << "  user         " << UserText(session) << "\n";
    if (!session.extendedUserInfo.IsEmpty()) {
      out << "  user info    "
          << IndentFollowingLines(Text(session.extendedUserInfo), std::string(15, ' ')) << "\n";
    }
    out << "  application  " << Text(session.application) << "\n";
    out << "  project      " << Text(session.project) << "\n";
    out << "  checksum     " << SealText(session, finding) << "\n";
    out << "  events       " << session.events.size() << "\n";
    AppendEventsAsText(out, session.events, "    ");
  }
  return out.str();
}

std::string TrailAsHtml(const TrailView& view) {
  std::ostringstream out;
  const std::map<int, const AuditTrailFinding*> findings = FindingsByIndex(view);
  out << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n<title>Audit trail "
      << Html(view.name) << "</title>\n<style>" << kPageStyle << "</style></head>\n<body>\n"
      << "<h1>Audit trail " << Html(view.name) << "</h1>\n<p class=\"summary\">"
      << Html(Summary(view)) << "</p>\n";
  for (const AuditTrailSessionRecord& session : view.sessions) {
    const auto found = findings.find(session.index);
    const AuditTrailFinding* finding = found == findings.end() ? nullptr : found->second;
    out << "<div class=\"session" << (finding ? " failed" : "") << "\">\n<h2>Session "
        << session.index + 1;
    if (!session.isSession) {
      out << "</h2>\n<p class=\"verdict bad\">"
          << Html(finding ? DescribeFinding(*finding) : std::string("not a session"))
          << "</p>\n</div>\n";
      continue;
    }
    out << " &middot; " << Html(session.date) << "</h2>\n<table class=\"facts\">\n"
        << "<tr><td>User</td><td>" << Html(UserText(session)) << "</td></tr>\n";
    if (!session.extendedUserInfo.IsEmpty()) {
      out << "<tr><td>User info</td><td>" << Html(session.extendedUserInfo) << "</td></tr>\n";
    }
    out << "<tr><td>Application</td><td>" << Html(session.application) << "</td></tr>\n"
        << "<tr><td>Project</td><td>" << Html(session.project) << "</td></tr>\n"
        << "<tr><td>Checksum</td><td class=\"verdict " << (finding ? "bad" : "ok") << "\">"
        << Html(SealText(session, finding)) << "</td></tr>\n</table>\n";
    AppendEventsAsHtml(out, session.events);
    out << "</div>\n";
  }
  out << "</body></html>\n";
  return out.str();
}

}  // namespace zenutl_tool
