// The audit trail's signatures and persistence: verifying closed sessions, loading, reading,
// saving and copying the document.
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/util/XMLException.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>

#include "audit/audit_trail_document.h"
#include "audit/audit_xml.h"
#include "file/file_io.h"
#include "platform/atomic_file.h"
#include "platform/file_calls.h"
#include "platform/file_system.h"
#include "platform/native_path.h"
#include "zenutl/audit_trail.h"
#include "zenutl/exception.h"
#include "zenutl/fn_class.h"
#include "zenutl/istream_input_source.h"
#include "zenutl/log.h"
#include "zenutl/path_functions.h"
#include "zenutl/user_comm.h"
#include "zenutl/write_xml_file.h"
#include "zenutl/zn_stream_source.h"

XERCES_CPP_NAMESPACE_USE
using namespace zenutl::audit;  // NOLINT: the implementation file of this component

namespace {

const char kMismatchFormat[] =
    "The digital signature for %d of the previous sessions in the Audit Trail could not be "
    "verified.";
const char kLoadFailureFormat[] =
    "An error occurred while loading the Audit Trail. To prevent further problems, the Audit "
    "Trail will be cleared.\n\nDetails: %s";
const char kCopyContentFailed[] = "AuditTrail::CopyContent failed.";

// A DOM exception's message was always passed on as wide text to a narrow format, so only its
// first character ever showed; the trail's error texts keep that form.
CString FirstCharacterOf(const XMLCh* message) {
  CString text;
  if (message && *message) text += static_cast<char>(*message & 0xFF);
  return text;
}

// The first child of a closed session's last event (its message text), found by walking back
// from the session's last child ("CheckSum") to "Events" and its last "Event". False when the
// walk breaks off before the event; `message` is then untouched, and it is null when the event
// has no text at all.
bool FindLastEventMessage(const DOMNode* session, const DOMNode*& message) {
  const DOMNode* checkSum = session->getLastChild();
  const DOMNode* events = checkSum ? checkSum->getPreviousSibling() : nullptr;
  const DOMNode* lastEvent = events ? events->getLastChild() : nullptr;
  if (!lastEvent) return false;
  message = lastEvent->getFirstChild();
  return true;
}

// A parser hardened against documents that reach beyond themselves or grow without bound. A
// trail names no DTD, so none is ever loaded for one.
std::unique_ptr<zenutl::config::GuardedDOMParser> MakeParser() {
  return std::unique_ptr<zenutl::config::GuardedDOMParser>(
      new zenutl::config::GuardedDOMParser(false));
}

// The whole text of `node`, or false when the serialiser could not write all of it (a text
// holding a character that XML cannot carry): a partial document must never replace a trail.
bool WriteDocumentText(const DOMNode* node, std::string& text) {
  std::ostringstream out;
  if (!WriteXMLFile(out, node, false) || !out) return false;
  text = out.str();
  return true;
}

// "trail.xml" => "trail.xml.damaged-20261123T120000Z": where a trail that could not be read is
// kept, stamped in UTC so that such names sort by time. Another one in the same second takes
// "-2", "-3" and so on.
CString DamagedName(const CString& name, std::time_t when, int attempt) {
  std::tm utc{};
  gmtime_r(&when, &utc);
  char stamp[32];
  std::strftime(stamp, sizeof stamp, "%Y%m%dT%H%M%SZ", &utc);
  CString damaged;
  damaged.Format("%s.damaged-%s", name.GetString(), stamp);
  if (attempt > 1) damaged.AppendFormat("-%d", attempt);
  return damaged;
}

void LogSetAside(const CString& text) {
  Log::WriteMessage("AuditTrail", "Load", text, Log::Error, true);
}

// The damaged name the stream now has, or "" when it could not be renamed.
CString MoveStreamAside(ZnStreamSource& source, const CString& name, std::time_t now) {
  for (int attempt = 1; attempt < 100; ++attempt) {
    const CString candidate = DamagedName(name, now, attempt);
    if (source.StreamExists(candidate)) continue;
    return source.RenameStream(name, candidate) ? candidate : CString();
  }
  return CString();
}

// The damaged name the file now has, or "" with errno set when it could not be renamed.
CString MoveFileAside(const std::string& nativePath, const CString& name, std::time_t now) {
  for (int attempt = 1; attempt < 100; ++attempt) {
    const CString candidate = DamagedName(name, now, attempt);
    const std::string nativeCandidate = zenutl::platform::ToNativePath(candidate.GetString());
    if (zenutl::platform::RenameNoReplace(nativePath.c_str(), nativeCandidate.c_str()) == 0) {
      return candidate;
    }
    if (errno != EEXIST) return CString();
  }
  return CString();
}

// Moves a stored trail that could not be read to its damaged name and logs where it went.
// Answers false when the bytes are still in the trail's place, where a save would overwrite
// them; a folder standing in that place is never touched, and nothing can be saved over it.
bool SetAsideUnreadableTrail(ZnStreamSource* source, const CString& name) {
  const std::time_t now = std::time(nullptr);
  const std::string nativePath = zenutl::platform::ToNativePath(name.GetString());
  struct stat info;
  if (source ? !source->StreamExists(name) : lstat(nativePath.c_str(), &info) != 0) return true;
  if (!source && S_ISDIR(info.st_mode)) {
    LogSetAside("The Audit Trail '" + name + "' is a folder; it was left as it is.");
    return true;
  }
  const CString moved =
      source ? MoveStreamAside(*source, name, now) : MoveFileAside(nativePath, name, now);
  const int reason = source ? 0 : errno;  // a stream source tells no reason
  if (!moved.IsEmpty()) {
    LogSetAside("The Audit Trail '" + name + "' could not be read; it was moved to '" + moved +
                "'.");
    return true;
  }
  CString text("The Audit Trail '" + name + "' could not be read, nor moved aside");
  if (reason != 0) text += CString(" (") + std::strerror(reason) + ")";
  LogSetAside(text + "; it will not be saved over.");
  return false;
}

}  // namespace

bool AuditTrail::VerifySignature(CString* message) {
  if (mSettings.GetLogLevel() < 1) return true;
  const std::vector<AuditTrailFinding> findings = FindUnverifiedSessions();
  int mismatches = 0;
  for (const AuditTrailFinding& finding : findings) {
    if (!finding.IsSealFinding()) ++mismatches;
  }
  CString text;
  if (mismatches > 0) {
    text.Format(kMismatchFormat, mismatches);
    AddEvent(text, nullptr, nullptr);
  }
  if (RecordSealFindings(findings, text) && mismatches == 0) return true;
  if (message) *message = text;
  return false;
}

void AuditTrail::BeginSessionAndVerifySignature() {
  BeginSession();
  CString message;
  if (!VerifySignature(&message)) {
    message += " See the Audit Trail for details.";
    UserComm::GetUserComm()->InformUser(message, "AuditTrail", 0);
  }
}

void AuditTrail::EndSessionAndSave() {
  EndSession();
  Save();
}

void AuditTrail::Load() {
  CString error;
  try {
    std::unique_ptr<std::istream> stream;
    const std::string nativePath = zenutl::platform::ToNativePath(mFileName.GetString());
    if (mStreamSource) {
      stream.reset(mStreamSource->OpenInputStream(mFileName));
      if (!stream) return;
    } else if (access(nativePath.c_str(), F_OK) != 0) {
      mFileMissing = true;
      return;
    } else if (!zenutl::file::FileDescriptor(zenutl::file::OpenFileForReading(mFileName)).valid()) {
      // There but not readable now (a folder in its place, no file handles left): unreadable,
      // with the system's reason, and without handing the parser what it cannot open.
      throw Exception(zenutl::platform::SystemErrorText(errno).c_str());
    }
    if (!mDocument->parser) {
      mDocument->parser = MakeParser().release();
      if (mDocument->document) mDocument->document->release();
      mDocument->document = nullptr;
    }
    if (stream) {
      IStreamInputSource source(*stream);
      mDocument->parser->Parse(source);
    } else {
      mDocument->parser->ParseFile(nativePath);
    }
    mDocument->session = nullptr;
    mDocument->keepStoredTrail = false;
  } catch (const XMLException& e) {
    error = ToCString(e.getMessage());
  } catch (const DOMException& e) {
    error.Format("Message: %s", FirstCharacterOf(e.getMessage()).GetString());
  } catch (const Exception& e) {
    error.Format("Message: %s", e.Why().GetString());
  } catch (...) {
    error = "Unspecified error. ";
  }
  if (error.IsEmpty()) return;
  CString text;
  text.Format(kLoadFailureFormat, error.GetString());
  UserComm::GetUserComm()->FatalError(text, "Audit Trail");
  // Cleared, but not deleted: a flipped byte, or a load that met a passing shortage of file
  // handles, must not cost the history. What cannot be moved aside is not saved over.
  const bool setAside = SetAsideUnreadableTrail(mStreamSource, mFileName);
  StartOver();
  mDocument->keepStoredTrail = !setAside;
}

void AuditTrail::LoadAndUpdateLogEventsFromData() {
  Load();
  const DOMNode* session = RootChildAt(*mDocument, LastClosedSessionIndex(*mDocument));
  if (!session || !session->hasChildNodes()) return;
  const DOMNode* message = nullptr;
  if (!FindLastEventMessage(session, message)) return;
  const CString text = message ? ToCString(message->getNodeValue()) : CString();
  if (text != "The Audit Trail is currently OFF." && text != "Audit Trail turned off.") {
    mSettings.SetLogEvents(1);
  }
}

void AuditTrail::Read(std::istream& stream) {
  std::unique_ptr<zenutl::config::GuardedDOMParser> parser = MakeParser();
  try {
    IStreamInputSource source(stream);
    parser->Parse(source);
  } catch (const XMLException& e) {
    throw Exception(CString("AuditTrail::Read failed\n") + ToCString(e.getMessage()));
  } catch (const DOMException& e) {
    throw Exception(CString("AuditTrail::Read failed\n") + FirstCharacterOf(e.getMessage()));
  } catch (const SAXException& e) {
    throw Exception(CString("AuditTrail::Read failed\n") + ToCString(e.getMessage()));
  } catch (const Exception& e) {
    throw Exception(CString("AuditTrail::Read failed\n") + e.Why());
  }
  if (mDocument->parser) {
    delete mDocument->parser;
  } else if (mDocument->document) {
    mDocument->document->release();
  }
  mDocument->document = nullptr;
  mDocument->parser = parser.release();
  mDocument->session = nullptr;
}

void AuditTrail::Save() {
  // The whole text first, then one replacement of the stored trail: a failure part-way leaves
  // the previous trail as it was, and the modified flag tells the caller that nothing was saved.
  std::string text;
  if (mDocument->keepStoredTrail) return;
  if (!WriteDocumentText(mDocument->GetDocument(), text)) return;
  if (mStreamSource) {
    std::unique_ptr<std::ostream> stream(mStreamSource->OpenOutputStream(mFileName));
    if (!stream || !*stream) return;
    stream->write(text.data(), static_cast<std::streamsize>(text.size()));
    stream->flush();
    if (!*stream) return;
    stream.reset();  // the trail is in the store before the anchor moves on
    mModified = false;
    SaveSealAnchor();
    return;
  }
  const std::string nativePath = zenutl::platform::ToNativePath(mFileName.GetString());
  if (!zenutl::platform::WriteFileAtomically(nativePath, text, nullptr)) return;
  mModified = false;
  SaveSealAnchor();
}

void AuditTrail::Save(std::ostream& stream) {
  WriteXMLFile(stream, mDocument->GetDocument(), false);
}

void AuditTrail::SaveAs(const char* fileName) {
  std::string text;
  const DOMNode* document = mDocument->parser ? mDocument->parser->getDocument() : nullptr;
  if (document) WriteDocumentText(document, text);
  zenutl::platform::WriteFileAtomically(zenutl::platform::ToNativePath(fileName), text, nullptr);

  FNClass source;
  source.Split(mStreamSource ? mFolder.GetString() : mFileName.GetString());
  source.SetNameAndExt("audit_trail.xsl");
  source.Merge();
  FNClass target;
  target.Split(fileName);
  target.SetNameAndExt("audit_trail.xsl");
  target.Merge();
  ZnCopyFile(source.Path(), target.Path(), false);
}

void AuditTrail::CopyContent(AuditTrail* other) {
  // A temporary of this copy's own, made exclusively and held locked: two copies at once, in
  // one process or two, must never read each other's documents.
  std::string nativeTemp;
  const int held = zenutl::platform::CreateTemporaryBeside(
      zenutl::platform::ToNativePath(zenutl::platform::GetTempPath() + "AuditTemp.xml"),
      nativeTemp);
  if (held < 0) throw Exception(kCopyContentFailed);
  std::fstream stream(nativeTemp, std::ios::in | std::ios::out | std::ios::binary);
  try {
    if (!stream) throw Exception(kCopyContentFailed);
    other->Save(stream);
    if (!stream.good()) throw Exception(kCopyContentFailed);
    stream.seekg(0);
    Read(stream);
    if (!other->mDocument->session) {
      mDocument->session = nullptr;
    } else {
      other->mDocument->session->normalize();
      DOMNodeList* found =
          mDocument->GetDocument()->getElementsByTagName(other->mDocument->session->getTagName());
      if (found->getLength() > 0) {
        mDocument->session = static_cast<DOMElement*>(found->item(found->getLength() - 1));
      }
    }
    mSettings = other->mSettings;
  } catch (...) {
    stream.close();
    unlink(nativeTemp.c_str());
    close(held);
    throw;
  }
  stream.close();
  unlink(nativeTemp.c_str());
  close(held);
}
