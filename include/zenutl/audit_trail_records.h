// Plain records of what an audit trail holds, for programs that show or check a trail without
// changing it: AuditTrail::GetSessionRecords and AuditTrail::FindUnverifiedSessions
// (audit_trail.h) fill them from the trail's document.
//
// Texts are copies in UTF-8, taken as they stand in the document; an attribute or element that
// is missing gives the empty text. Nothing here refers back into the trail, so the records stay
// valid after it is gone.
//
// Error contract: plain data, nothing throws.
#ifndef ZENUTL_AUDIT_TRAIL_RECORDS_H_
#define ZENUTL_AUDIT_TRAIL_RECORDS_H_

#include <vector>

#include "zenutl/cstring.h"

// One "Event": its stamps, its message and details, and the events of a sub-trail that was
// merged into it, in their own order and to any depth.
struct AuditTrailEventRecord {
  CString date;  // "2011-05-31 14:02:07 (UTC+2)"
  CString utc;   // seconds since 1970, as stored
  CString message;
  CString details;
  std::vector<AuditTrailEventRecord> subEvents;
};

// One child of the trail's root: normally a "Session".
struct AuditTrailSessionRecord {
  int index = 0;           // position under the root, 0 for the oldest
  bool isSession = false;  // an element named "Session"; the rest below is empty otherwise
  CString application;
  CString project;
  CString date;
  CString utc;
  CString user;
  CString domain;
  CString computer;
  CString extendedUserInfo;  // the text of "User"
  std::vector<AuditTrailEventRecord> events;
  bool hasCheckSum = false;  // ends in "CheckSum": the session was closed
  CString checkSum;          // the stored text, each unit narrowed to its low byte
};

// A session that failed the check of its "CheckSum", or of its seal (AuditTrail::SetSeal),
// described so that a person can find it. `kind` says why.
struct AuditTrailFinding {
  enum EKind {
    eNotASession,       // a child of the root that is no "Session" (text, a comment, ...)
    eCheckSumMissing,   // a session that was never closed, or whose "CheckSum" was removed
    eCheckSumMismatch,  // the stored checksum differs from the one computed now
    // The seal's kinds; `detail` says what was found.
    eSealBadMac,     // the session's MAC doesn't match it, or it was sealed with another key
    eSealGap,        // its sequence number is not the one after the previous sealed session's
    eSealTruncated,  // about the whole trail: it doesn't reach the seal its anchor records
    eSealUnsealed,   // a session without a seal after sealed ones
  };

  bool IsSealFinding() const { return kind >= eSealBadMac; }

  EKind kind = eCheckSumMismatch;
  int index = 0;  // position under the root, 0 for the oldest; -1 for the whole trail
  CString date;   // of the session, as stored
  CString user;
  CString computer;
  CString storedCheckSum;  // the text compared; see AuditTrail::VerifySignature for empty ones
  CString computedCheckSum;
  CString detail;  // the seal's kinds: "expected seal 3, found 5"
};

#endif  // ZENUTL_AUDIT_TRAIL_RECORDS_H_
