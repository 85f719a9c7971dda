// The audit trail's signatures and persistence: verifying closed sessions, loading, reading,
// saving and copying the document.
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/util/XMLException.hpp>

#include <unistd.h>
#include <fstream>
#include <memory>
#include <sstream>

#include "audit/audit_trail_document.h"
#include "audit/audit_xml.h"
#include "platform/atomic_file.h"
#include "platform/native_path.h"
#include "zenutl/audit_trail.h"
#include "zenutl/exception.h"
#include "zenutl/fn_class.h"
#include "zenutl/istream_input_source.h"
#include "zenutl/path_functions.h"
#include "zenutl/user_comm.h"
#include "zenutl/write_xml_file.h"
#include "zenutl/zn_file.h"
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

// A parser hardened against documents that reach for the network or expand without bound.
std::unique_ptr<zenutl::config::GuardedDOMParser> MakeParser() {
  return std::unique_ptr<zenutl::config::GuardedDOMParser>(
      new zenutl::config::GuardedDOMParser(true));
}

// The whole text of `node`, or false when the serialiser could not write all of it (a text
// holding a character that XML cannot carry): a partial document must never replace a trail.
bool WriteDocumentText(const DOMNode* node, std::string& text) {
  std::ostringstream out;
  if (!WriteXMLFile(out, node, false) || !out) return false;
  text = out.str();
  return true;
}

}  // namespace

bool AuditTrail::VerifySignature(CString* message) {
  if (mSettings.GetLogLevel() < 1) return true;
  const std::size_t mismatches = FindUnverifiedSessions().size();
  if (mismatches == 0) return true;
  CString text;
  text.Format(kMismatchFormat, static_cast<int>(mismatches));
  if (message) *message = text;
  AddEvent(text, nullptr, nullptr);
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
  Clear();
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
  if (!WriteDocumentText(mDocument->GetDocument(), text)) return;
  if (mStreamSource) {
    std::unique_ptr<std::ostream> stream(mStreamSource->OpenOutputStream(mFileName));
    if (!stream || !*stream) return;
    stream->write(text.data(), static_cast<std::streamsize>(text.size()));
    stream->flush();
    if (*stream) mModified = false;
    return;
  }
  const std::string nativePath = zenutl::platform::ToNativePath(mFileName.GetString());
  if (zenutl::platform::WriteFileAtomically(nativePath, text, nullptr)) mModified = false;
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
  const CString tempName = ZnFile::GetTempFileNameA("AuditTemp.xml");
  const std::string nativeTemp = zenutl::platform::ToNativePath(tempName.GetString());
  std::fstream stream(nativeTemp,
                      std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary);
  if (!stream) {
    std::remove(nativeTemp.c_str());
    throw Exception(kCopyContentFailed);
  }
  try {
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
    std::remove(nativeTemp.c_str());
    throw;
  }
  stream.close();
  unlink(nativeTemp.c_str());
}
