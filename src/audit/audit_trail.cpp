// The audit trail's document and sessions: building the document, opening and sealing
// sessions, recording events.
#include "zenutl/audit_trail.h"

#include <xercesc/util/PlatformUtils.hpp>

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "audit/audit_seal.h"
#include "audit/audit_trail_document.h"
#include "audit/audit_xml.h"
#include "config/guarded_dom_parser.h"
#include "platform/file_calls.h"
#include "platform/native_path.h"
#include "zenutl/path_functions.h"
#include "zenutl/rolling_checksum.h"
#include "zenutl/system_info.h"
#include "zenutl/time_functions.h"
#include "zenutl/zn_stream_source.h"

using zenutl::audit::FindChildElement;
using zenutl::audit::IsElementNamed;
using zenutl::audit::XmlText;
XERCES_CPP_NAMESPACE_USE

AuditTrail* AuditTrail::spInstance = nullptr;
AuditTrail::CallbackFunction AuditTrail::smCallbackFun;
AuditTrail::Signal AuditTrail::msAuditTrailBeginSession;
AuditTrail::Signal AuditTrail::msAuditTrailEventAdded;
AuditTrail::Signal AuditTrail::msAuditTrailEndSession;
AuditTrail::Signal AuditTrail::msAuditTrailProjectNameChanged;
AuditTrail::Signal AuditTrail::msAuditTrailActiveAuditTrailChanged;
AuditTrail::Signal AuditTrail::msAuditTrailDeleting;

namespace zenutl {
namespace audit {
namespace {

const char kStylesheetTarget[] = "xml-stylesheet";
const char kStylesheetData[] = "type='text/xsl' href='audit_trail.xsl'";
const char kNotInitialized[] = "Not Initialized";

// Local time of now and its offset from UTC in hours: "2011-05-31 14:02:07 (UTC+2)".
CString LocalDateText() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char buffer[256];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &local);
  CString text(buffer);
  text.AppendFormat(" (UTC%+g)", ZnTimeUtl::GetUtcOffset() / 3600.0);
  return text;
}

// Seconds since 1970, deliberately only the low 32 bits as a signed number.
CString UtcSecondsText() {
  const long long now = static_cast<long long>(std::time(nullptr));
  CString text;
  text.Format("%d", static_cast<int>(static_cast<unsigned int>(now & 0xFFFFFFFFLL)));
  return text;
}

void SetAttribute(DOMElement* element, const char* name, const char* value) {
  element->setAttribute(XmlText(name), XmlText(value));
}

void StampDateAndUtc(DOMElement* element) {
  SetAttribute(element, "Date", LocalDateText());
  SetAttribute(element, "UTC", UtcSecondsText());
}

}  // namespace

namespace {

// Whether an event appended to `events`, with its "Details" and the sub-trail's `nested`
// "Events" (may be null), stays within the depth the library's parser reads back. An event that
// would not is dropped, as every event is that cannot be recorded: a trail saved with it could
// never be loaded again.
bool FitsTheDepthBound(const DOMElement* events, const DOMElement* nested) {
  const int eventDepth = ElementDepth(events) + 1;
  const int below = std::max(1, SubtreeElementDepth(nested));  // "Details" or the nested events
  return eventDepth + below <= static_cast<int>(config::kElementDepthLimit);
}

void DestroyAuditTrailDocument(AuditTrailDocument* record) {
  if (record->parser) {
    delete record->parser;
  } else if (record->document) {
    record->document->release();
  }
  delete record;
  XMLPlatformUtils::Terminate();
}

}  // namespace

boost::shared_ptr<AuditTrailDocument> CreateAuditTrailDocument() {
  XMLPlatformUtils::Initialize();
  boost::shared_ptr<AuditTrailDocument> record(new AuditTrailDocument, DestroyAuditTrailDocument);
  try {
    DOMImplementation* implementation =
        DOMImplementationRegistry::getDOMImplementation(XmlText("Core"));
    record->document = implementation->createDocument();
    record->document->appendChild(record->document->createProcessingInstruction(
        XmlText(kStylesheetTarget), XmlText(kStylesheetData)));
    DOMElement* root = record->document->createElement(XmlText("AuditTrail"));
    record->document->appendChild(root);
    SetAttribute(root, "Version", "1.0");
  } catch (const DOMException&) {
    // The document stands as far as it was built.
  }
  return record;
}

int RootChildCount(const AuditTrailDocument& record) {
  DOMElement* root = record.GetRoot();
  return root ? static_cast<int>(root->getChildNodes()->getLength()) : 0;
}

DOMNode* RootChildAt(const AuditTrailDocument& record, int index) {
  DOMElement* root = record.GetRoot();
  if (!root || index < 0) return nullptr;
  return root->getChildNodes()->item(static_cast<XMLSize_t>(index));
}

int LastClosedSessionIndex(const AuditTrailDocument& record) {
  return RootChildCount(record) - (record.session ? 2 : 1);
}

}  // namespace audit
}  // namespace zenutl

using namespace zenutl::audit;  // NOLINT: the implementation file of this component

AuditTrail::AuditTrail(ConfigurationSection* section)
    : mDocument(CreateAuditTrailDocument()), mSettings(section) {
  mSettings.SetLogEvents(1);
}

AuditTrail::AuditTrail(const char* fileName, const char* project, ConfigurationSection* section)
    : mDocument(CreateAuditTrailDocument()),
      mFileName(fileName),
      mProject(project),
      mSettings(section) {}

AuditTrail::AuditTrail(ZnStreamSource* source, const char* folder, const char* fileName,
                       const char* project, ConfigurationSection* section)
    : mDocument(CreateAuditTrailDocument()),
      mFileName(fileName),
      mProject(project),
      mSettings(section),
      mStreamSource(source),
      mFolder(folder) {}

AuditTrail::~AuditTrail() {
  msAuditTrailDeleting(this);
}

AuditTrail& AuditTrail::operator=(const AuditTrail& other) {
  if (this == &other) return *this;
  mDocument = other.mDocument;  // shared on purpose: see the header
  mFileName = other.mFileName;
  mProject = other.mProject;
  mModified = other.mModified;
  mSettings = other.mSettings;
  mStreamSource = other.mStreamSource;
  mFolder = other.mFolder;
  mFileMissing = other.mFileMissing;
  mSeal = other.mSeal;
  return *this;
}

void AuditTrail::Init(ZnStreamSource* source, const char* fileName, const char* project,
                      const char* folder, ConfigurationSection* section) {
  mStreamSource = source;
  mFileName = fileName;
  mProject = project;
  mFolder = folder;
  if (section) mSettings.SetConfigurationSection(section);
}

void AuditTrail::UpdateConfiguration(ZnStreamSource* source, const char* fileName,
                                     const char* project, const char* folder,
                                     ConfigurationSection* section) {
  if (source) mStreamSource = source;
  if (fileName) mFileName = fileName;
  if (project) mProject = project;
  if (folder) mFolder = folder;
  if (section) mSettings.SetConfigurationSection(section);
}

AuditTrail* AuditTrail::GetInstance() {
  return spInstance;
}

void AuditTrail::SetInstance(AuditTrail* trail) {
  if (trail) msAuditTrailActiveAuditTrailChanged(trail);
  spInstance = trail;
}

void AuditTrail::BroadCastChange() {
  msAuditTrailActiveAuditTrailChanged(this);
}

void AuditTrail::SetCallback(CallbackFunction callback) {
  smCallbackFun = callback;
}

void AuditTrail::BeginSession() {
  DOMDocument* document = mDocument->GetDocument();
  DOMElement* root = mDocument->GetRoot();
  if (mDocument->session || !root) return;
  try {
    DOMElement* session = document->createElement(XmlText("Session"));
    SetAttribute(session, "Version", "1.0");
    CString application;
    application.Format("%s %s", ZnSystemInfo::GetApplicationName().GetString(),
                       ZnSystemInfo::GetApplicationVersion(ZnSystemInfo::eVersionAuto).GetString());
    SetAttribute(session, "Application", application);
    SetAttribute(session, "Project", mProject.IsEmpty() ? kNotInitialized : mProject.GetString());
    StampDateAndUtc(session);
    mDocument->session = static_cast<DOMElement*>(root->appendChild(session));

    const CString user = ZnSystemInfo::GetUserNameA();
    const CString computer = ZnSystemInfo::GetComputerNameA();
    const CString domain = ZnSystemInfo::GetDomainName("\\\\" + computer);
    DOMElement* userElement = document->createElement(XmlText("User"));
    SetAttribute(userElement, "User", user);
    if (!domain.IsEmpty()) SetAttribute(userElement, "Domain", domain);
    SetAttribute(userElement, "Computer", computer);
    mDocument->session->appendChild(userElement);

    CString information = mSettings.GetExtendedUserInfo();
    if (information.IsEmpty() && mSettings.GetPromptForExtendedUserInfo() && smCallbackFun) {
      smCallbackFun(this, AuditTrailCallbackExtendedUserInfo);
      information = mSettings.GetExtendedUserInfo();
    }
    userElement->appendChild(document->createTextNode(XmlText(information)));
    mDocument->session->appendChild(document->createElement(XmlText("Events")));
  } catch (const DOMException&) {
    // The session stays as far as it was built.
  }
  msAuditTrailBeginSession(this);
}

void AuditTrail::AddEvent(const char* message, const char* details, AuditTrail* subTrail) {
  if (mSettings.GetLogLevel() < 1 || !mDocument->session) return;
  CString messageText(message);
  CString detailsText(details);
  messageText.Remove('\r');
  detailsText.Remove('\r');
  try {
    DOMDocument* document = mDocument->GetDocument();
    DOMElement* events = FindChildElement(mDocument->session, "Events");
    if (!events) return;  // a session damaged by hand: nothing to record into
    DOMElement* nested =
        subTrail ? FindChildElement(subTrail->mDocument->session, "Events") : nullptr;
    if (!FitsTheDepthBound(events, nested)) return;
    DOMElement* event = document->createElement(XmlText("Event"));
    StampDateAndUtc(event);
    events->appendChild(event);
    event->appendChild(document->createTextNode(XmlText(messageText)));
    DOMElement* detailsElement = document->createElement(XmlText("Details"));
    event->appendChild(detailsElement);
    if (!detailsText.IsEmpty()) {
      detailsElement->appendChild(document->createTextNode(XmlText(detailsText)));
    }
    if (nested) event->appendChild(document->importNode(nested, true));
    DeleteCheckSum();
    mModified = true;
    if (HasStore()) msAuditTrailEventAdded(this);
  } catch (const DOMException&) {
    // Recording never reports: the event is dropped.
  }
}

void AuditTrail::SetProject(const char* name) {
  if (!name) return;
  mProject = name;
  if (mSettings.GetLogLevel() < 1 || !mDocument->session) return;
  mDocument->session->setAttribute(XmlText("Project"), XmlText(name));
  mModified = true;
  msAuditTrailProjectNameChanged(this);
}

void AuditTrail::EndSession() {
  DOMElement* session = mDocument->session;
  if (!session) return;
  DOMDocument* document = mDocument->GetDocument();
  DOMElement* checkSum = document->createElement(XmlText("CheckSum"));
  StampDateAndUtc(checkSum);
  SetAttribute(checkSum, "Version", "1.0");
  DOMText* signature = document->createTextNode(XmlText(ComputeSessionSignature(true, -1)));
  DOMNode* last = session->getLastChild();
  if (IsElementNamed(last, "CheckSum")) {
    session->replaceChild(checkSum, last)->release();
  } else {
    session->appendChild(checkSum);
  }
  checkSum->appendChild(signature);
  if (mSeal) SealSession(*mSeal, mDocument->GetRoot(), session);
  mDocument->session = nullptr;
  msAuditTrailEndSession(this);
}

CString AuditTrail::ComputeSessionSignature(bool current, int index) const {
  const DOMNode* session = nullptr;
  if (current) {
    session = mDocument->session;
  } else {
    const int lastClosed = LastClosedSessionIndex(*mDocument);
    if (index < 0) index = lastClosed;
    if (index <= lastClosed) session = RootChildAt(*mDocument, index);
  }
  if (!session) return CString();
  return RollingChecksum::ComputeSignature(session);
}

void AuditTrail::DeleteCheckSum() {
  DOMElement* session = mDocument->session;
  if (!session) return;
  DOMNode* last = session->getLastChild();
  if (IsElementNamed(last, "CheckSum")) session->removeChild(last)->release();
}

void AuditTrail::Clear() {
  if (mStreamSource) {
    mStreamSource->DeleteStream(mFileName);
  } else {
    // unlink, not remove: a folder that stands where the trail should is never deleted.
    zenutl::platform::Unlink(zenutl::platform::ToNativePath(mFileName.GetString()).c_str());
  }
  // The sealed history is gone on purpose: an anchor left behind would report the new trail
  // as cut short of it.
  if (mSeal && !mSeal->anchorFile.IsEmpty()) {
    zenutl::platform::Unlink(zenutl::platform::ToNativePath(mSeal->anchorFile.GetString()).c_str());
  }
  StartOver();
}

void AuditTrail::StartOver() {
  ResetDocument();
  BeginSession();
  AddEvent("Audit Trail cleared.", nullptr, nullptr);
}

bool AuditTrail::IsEmpty() const {
  if (!mDocument->parser && !mDocument->document) return true;
  DOMElement* root = mDocument->GetRoot();
  return !root || !root->hasChildNodes();
}

CString AuditTrail::GetFileName() const {
  if (!mStreamSource) return mFileName;
  return ZnPathAppend(mFolder, mFileName);
}

void AuditTrail::ResetDocument() {
  // The new record is made before the old one goes, so the XML platform is never shut down and
  // started again in between.
  mDocument = CreateAuditTrailDocument();
}

bool AuditTrail::HasStore() const {
  return mStreamSource || !mFileName.IsEmpty();
}
