// AuditTrail: a tamper-evident record of what the users of an application did.
//
// One XML document, kept live in memory: a `Session` element per run of the application and,
// inside it, an `Event` per recorded action (a message and optional details). Closing a session
// seals it with a checksum over its content; on the next start `VerifySignature` recomputes the
// checksum of every closed session and records a finding when one was edited outside the
// program. It shows tampering up; it is not a cryptographic signature.
//
// A trail lives in a file, in a stream of a `ZnStreamSource`, or in memory only (sub-trails).
// Applications usually reach it through `AuditTrailWrapper`; settings come from a
// `ConfigurationSection` through `AuditTrailSettings`.
//
// A trail may also carry a keyed seal (`SetSeal`): each closed session then chains an
// HMAC-SHA256 over its content and the session before it, so that edits the checksum cannot
// show (a session deleted, reordered or forged, text moved between nodes, a copy put back) are
// found as well. See SetSeal for what it protects against and what it does not.
//
// Texts are UTF-8. Every character that XML 1.0 cannot carry is recorded as U+FFFD, in messages,
// details, the project and the extended user information alike: the C0 controls other than tab
// and line feed (carriage returns are removed), U+FFFE and U+FFFF. No recorded text can make a
// later save fail.
//
// Errors: recording never reports (an event that cannot be recorded is dropped). `Load` tells
// the user through `UserComm` and clears the trail when the stored trail cannot be read; the
// unreadable file or stream is not deleted but moved aside to "<name>.damaged-<UTC time>"
// ("trail.xml.damaged-20261123T120000Z"), and the process log says where. Should it stay where it
// is (it cannot be moved), `Save` leaves it alone. `Read`
// and `CopyContent` throw `Exception` and leave the document as it was. `Save` to a file writes
// a temporary file beside the target and renames it over, so a failed save leaves the previous
// file whole and `IsModified` true. `EndSession` lets XML errors reach the caller. A stored trail
// is read with the guards of the library's XML parser: no DTD or external entity is ever read,
// the nesting of elements is bounded, and the input stays within the XML input limit
// (xml_input_limit.h); a trail that breaks them is unreadable. No operation is thread-safe: one
// thread drives a trail.
#ifndef ZENUTL_AUDIT_TRAIL_H_
#define ZENUTL_AUDIT_TRAIL_H_

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/signals2/last_value.hpp>
#include <boost/signals2/signal.hpp>
#include <functional>
#include <iosfwd>
#include <vector>

#include "zenutl/audit_trail_records.h"
#include "zenutl/audit_trail_settings.h"
#include "zenutl/cstring.h"

class ConfigurationSection;
class ZnStreamSource;
struct AuditTrailDocument;
struct AuditTrailSeal;

enum AuditTrailCallbackType {
  // BeginSession needs the extended user information, and the settings ask for a prompt.
  AuditTrailCallbackExtendedUserInfo = 0
};

class AuditTrail {
 public:
  typedef boost::signals2::signal<void(AuditTrail*), boost::signals2::last_value<void>, int,
                                  std::less<int>, boost::function<void(AuditTrail*)>>
      Signal;
  typedef boost::function<void(AuditTrail*, AuditTrailCallbackType)> CallbackFunction;

  // Memory-only trail; records events whatever the section says (log level forced to 1).
  explicit AuditTrail(ConfigurationSection* section = nullptr);
  // Trail kept in the file `fileName`.
  AuditTrail(const char* fileName, const char* project, ConfigurationSection* section);
  // Trail kept in stream `fileName` of `source`; `folder` only serves GetFileName.
  AuditTrail(ZnStreamSource* source, const char* folder, const char* fileName, const char* project,
             ConfigurationSection* section);
  // Fires msAuditTrailDeleting first. Does not reset the current instance.
  virtual ~AuditTrail();

  // Shallow on purpose: both trails then share one document record, and what one records the
  // other sees. The record lives while either trail does. Use CopyContent for a real copy.
  AuditTrail& operator=(const AuditTrail& other);
  AuditTrail(const AuditTrail&) = delete;

  // Sets all four (note: folder last here). A null section keeps the settings' section.
  void Init(ZnStreamSource* source, const char* fileName, const char* project, const char* folder,
            ConfigurationSection* section);
  // As Init, but every null argument leaves its member alone.
  void UpdateConfiguration(ZnStreamSource* source, const char* fileName, const char* project,
                           const char* folder, ConfigurationSection* section);

  static AuditTrail* GetInstance();
  // A non-null trail fires msAuditTrailActiveAuditTrailChanged before it becomes current.
  static void SetInstance(AuditTrail* trail);
  void BroadCastChange();
  static void SetCallback(CallbackFunction callback);

  // Opens a session unless one is open. Ignores the log level.
  virtual void BeginSession();
  // Seals the open session with its "CheckSum". Leaves the modified flag alone.
  virtual void EndSession();
  // Records one event in the open session when the log level is at least 1. `subTrail`'s open
  // session's events are nested into the new event.
  virtual void AddEvent(const char* message, const char* details, AuditTrail* subTrail);
  void SetProject(const char* name);
  // Deletes the stored trail (never a folder standing in its place) and the seal's anchor file,
  // if any, and starts over with a new session and "Audit Trail cleared.".
  void Clear();

  // Seals every session this trail closes from now on with the secret key read from `keyFile`
  // (its bytes exactly as they are, at most 4096), and keeps the end of the chain of seals in
  // `anchorFile` (null or "": no anchor). False, and no seal, for a null, missing, unreadable,
  // empty or larger key file; the process log says why. The seal stays this trail's own: it is
  // shared by operator= but not taken over by CopyContent.
  //
  // What it protects against: people who can edit, replace or delete the trail file but can
  // read neither the key file nor write the anchor file (keep both where only the application's
  // account reaches, beside its settings). The key makes every change inside a sealed session,
  // and every deletion, reordering or insertion of sessions, show; the anchor, rewritten after
  // every save, makes a trail cut short, or an older copy of it put back, show. Without an
  // anchor, removing the newest sessions, or the seals of all of them, goes unnoticed. What it
  // cannot protect against: anyone who can read the key (they can seal what they like), or roll
  // back the anchor together with the trail; and sessions recorded before the trail had a key,
  // which stay unsealed (the first sealed session binds the trail's identifier, not them).
  // There is one key per trail: after a change of key, every session sealed with the old one
  // is a finding.
  //
  // In the file: the root gains "TrailId", made when the first session is sealed; each sealed
  // session's "CheckSum" gains "SealSequence" (1, 2, ...), "SealAlgorithm" ("HMAC-SHA256"),
  // "SealKeyId" (names the key, does not reveal it) and "SealMac". The checksum leaves
  // "CheckSum" elements out, so it is the same with or without a seal, and readers that know
  // nothing of seals read the trail as before. A sealed session may hold elements and text only:
  // a CDATA section, comment, processing instruction or entity reference in it fails its seal.
  bool SetSeal(const char* keyFile, const char* anchorFile);

  // True when every closed session still matches its "CheckSum"; otherwise records the finding
  // as an event, stores it in `message` (may be null) and returns false. True at once, without
  // looking, when the log level is below 1.
  //
  // The check runs from the newest closed session back to the oldest. Every child of the root
  // but the open session counts as a session: one that does not end in "CheckSum" fails, and
  // so does one whose stored text differs from the computed one. A "CheckSum" without text is
  // compared as if it held the text read for the session checked just before (the next newer
  // one), or "" if it is the first; this is how trails have always been checked.
  //
  // With a seal, it also checks the chain of seals and, with an anchor file, that the trail
  // reaches the seal the anchor records. Each finding is one of: a bad MAC (the session changed,
  // or was sealed with another key), a gap in the sequence (sessions deleted, reordered or
  // inserted), truncated against the anchor (cut short, an older copy, another trail, or the
  // anchor missing), or an unsealed session after sealed ones. They are recorded as one more
  // event, "The seal of the Audit Trail could not be verified (N findings).", with one line
  // per finding in its details ("Session 4: gap in the sequence (expected seal 3, found 5).");
  // `message` then holds the checksum's text, if any, and this one, one per line. Sessions
  // from before the trail had a key are not findings, and a trail without seals verifies as
  // it always did.
  bool VerifySignature(CString* message);
  // The same check, without recording anything and whatever the log level: the sessions that
  // VerifySignature counts, oldest first. Empty when all of them verify. For programs that
  // check a trail on behalf of an auditor and must leave it exactly as it was. With a seal, the
  // seal's findings follow, oldest first, the one about the whole trail (index -1) last; a
  // session may then have one finding of each. Only the anchor file is read, never written.
  std::vector<AuditTrailFinding> FindUnverifiedSessions() const;
  // Every child of the root, oldest first, with its events: the trail as a person reads it.
  std::vector<AuditTrailSessionRecord> GetSessionRecords() const;
  // The number of children of the root, the open session included.
  int CountSessions() const;
  // Whether the document's root is "AuditTrail" (in any ASCII case): false for well-formed XML
  // that is some other kind of document.
  bool HasAuditTrailRoot() const;
  void BeginSessionAndVerifySignature();
  void EndSessionAndSave();

  void Load();
  void LoadAndUpdateLogEventsFromData();
  // Replaces the document by the one in `stream`; throws Exception and keeps the old one when
  // the stream does not hold a readable document.
  void Read(std::istream& stream);
  void Save();
  void Save(std::ostream& stream);
  // Writes a copy (only for a trail that was read) and copies "audit_trail.xsl" beside it.
  void SaveAs(const char* fileName);
  // Makes this trail a deep copy of `other`'s document, open session and settings.
  virtual void CopyContent(AuditTrail* other);

  bool IsEmpty() const;
  bool IsModified() const { return mModified; }
  bool IsFileMissing() const { return mFileMissing; }
  AuditTrailSettings& GetAuditTrailSettings() { return mSettings; }
  CString GetFileName() const;

  static Signal msAuditTrailBeginSession;
  static Signal msAuditTrailEventAdded;
  static Signal msAuditTrailEndSession;
  static Signal msAuditTrailProjectNameChanged;
  static Signal msAuditTrailActiveAuditTrailChanged;
  static Signal msAuditTrailDeleting;

 protected:
  // The signature of the open session (`current`), of the last closed one (index < 0), or of
  // the root's child at `index`; "" when there is no such session.
  CString ComputeSessionSignature(bool current, int index) const;
  // Removes a trailing "CheckSum" from the open session.
  void DeleteCheckSum();

  static CallbackFunction smCallbackFun;

 private:
  void ResetDocument();
  // The seal's part of VerifySignature: records the seal's findings among `findings` as one
  // event and adds its summary to `message`; true when there are none.
  bool RecordSealFindings(const std::vector<AuditTrailFinding>& findings, CString& message);
  // After a save: the end of the chain of seals to the anchor file, if there is one.
  void SaveSealAnchor();
  // A new document with a new session and the event "Audit Trail cleared.".
  void StartOver();
  bool HasStore() const;

  boost::shared_ptr<AuditTrailDocument> mDocument;
  CString mFileName;
  CString mProject;
  bool mModified = false;
  AuditTrailSettings mSettings;
  ZnStreamSource* mStreamSource = nullptr;
  CString mFolder;
  bool mFileMissing = false;
  boost::shared_ptr<const AuditTrailSeal> mSeal;  // null: sessions are not sealed

  static AuditTrail* spInstance;
};

#endif  // ZENUTL_AUDIT_TRAIL_H_
