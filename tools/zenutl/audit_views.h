// What `zenutl audit show` and `zenutl audit html` make of a trail: readable text and a
// standalone HTML page, from the library's plain records of the trail and of its check.
#ifndef ZENUTL_TOOLS_ZENUTL_AUDIT_VIEWS_H_
#define ZENUTL_TOOLS_ZENUTL_AUDIT_VIEWS_H_

#include <string>
#include <vector>

#include "zenutl/audit_trail_records.h"

namespace zenutl_tool {

struct TrailView {
  std::string name;  // the file, as the user named it
  std::vector<AuditTrailSessionRecord> sessions;
  std::vector<AuditTrailFinding> findings;
};

// Sessions with their user, computer, application, project and seal; events with time,
// message and details, a sub-trail's events indented under their operation.
std::string TrailAsText(const TrailView& view);

// The same as one HTML page with its style inside: it needs no stylesheet and no network.
std::string TrailAsHtml(const TrailView& view);

// How a finding is told in one line: "checksum mismatch: stored 4f1a, computed 4f2b", "gap in
// the sequence: expected seal 3, found 5".
std::string DescribeFinding(const AuditTrailFinding& finding);

// The short name of a finding's kind, for JSON: "checksum-mismatch", "bad-mac",
// "sequence-gap", "truncated", "unsealed-after-sealed".
const char* FindingKindName(AuditTrailFinding::EKind kind);

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_AUDIT_VIEWS_H_
