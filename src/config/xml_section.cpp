#include "zenutl/xml_section.h"

#include <xercesc/dom/DOMAttr.hpp>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/dom/DOMImplementationRegistry.hpp>
#include <xercesc/dom/DOMNamedNodeMap.hpp>
#include <xercesc/dom/DOMNode.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <map>
#include <memory>
#include <sstream>

#include "config/guarded_dom_parser.h"
#include "config/xml_document_state.h"
#include "config/xml_text.h"
#include "file/file_io.h"
#include "platform/atomic_file.h"
#include "platform/native_path.h"
#include "platform/resource_handle.h"
#include "zenutl/exception.h"
#include "zenutl/istream_input_source.h"
#include "zenutl/language_string.h"
#include "zenutl/resource_module.h"
#include "zenutl/string_xml_input_stream.h"
#include "zenutl/write_xml_file.h"
#include "zenutl/xml_input_source.h"

using xercesc::DOMDocument;
using xercesc::DOMNamedNodeMap;
using xercesc::DOMNode;
using zenutl::config::AppendUtf8;
using zenutl::config::GuardedDOMParser;
using zenutl::config::Utf8FromXml;
using zenutl::config::WideFromXml;
using zenutl::config::XmlContentFromUtf8;
using zenutl::config::XmlContentFromWide;
using zenutl::config::XmlFromUtf8;
using zenutl::config::XmlName;
using zenutl::config::XmlString;

namespace {

const unsigned int kXmlResourceType = 23;
const unsigned int kResourceNotLoaded = 0xF022;
const char kNotFlushable[] = "Not possible to flush this type of XMLSection";

void TerminateXercesAtExit() {
  xercesc::XMLPlatformUtils::Terminate();
}

// Xerces is initialised by the first section built in the process and terminated at its end.
void InitializeXercesOnce() {
  static const bool initialized = [] {
    xercesc::XMLPlatformUtils::Initialize();
    std::atexit(TerminateXercesAtExit);
    return true;
  }();
  (void)initialized;
}

DOMDocument* NewEmptyDocument() {
  static const XMLCh kCore[] = {u'C', u'o', u'r', u'e', 0};
  return xercesc::DOMImplementationRegistry::getDOMImplementation(kCore)->createDocument(
      xercesc::XMLPlatformUtils::fgMemoryManager);
}

// A section name against a DOM name, code unit against char taken as signed: only plain ASCII
// names can ever match.
bool NameMatches(const XMLCh* domName, const char* name) {
  if (!domName || !name) return false;
  for (;; ++domName, ++name) {
    const int narrow = static_cast<signed char>(*name);
    if (static_cast<int>(*domName) != narrow) return false;
    if (*name == 0) return true;
  }
}

enum class Children { kElementsOnly, kAnyKind };

// The `index`-th child (from 1) of `parent` named `name`; index 0 or below never matches.
DOMNode* FindChild(const DOMNode* parent, const char* name, int index, Children kinds) {
  if (!parent || index < 1) return nullptr;
  int seen = 0;
  for (DOMNode* child = parent->getFirstChild(); child; child = child->getNextSibling()) {
    // The name first: most children differ by name, which spares asking for their type.
    if (!NameMatches(child->getNodeName(), name)) continue;
    if (kinds == Children::kElementsOnly && child->getNodeType() != DOMNode::ELEMENT_NODE) {
      continue;
    }
    if (++seen == index) return child;
  }
  return nullptr;
}

DOMNode* AppendElement(DOMDocument* document, DOMNode* parent, const char* name) {
  return parent->appendChild(document->createElement(XmlFromUtf8(name).c_str()));
}

const DOMNode* FindAttribute(const DOMNode* node, const char* key) {
  if (!node || !key) return nullptr;
  const DOMNamedNodeMap* attributes = node->getAttributes();
  if (!attributes) return nullptr;
  return attributes->getNamedItem(XmlName(key).c_str());
}

std::size_t Length(const XMLCh* text) {
  std::size_t length = 0;
  while (text[length]) ++length;
  return length;
}

std::string Utf8Value(const DOMNode* attribute) {
  return Utf8FromXml(attribute->getNodeValue());
}

}  // namespace

// --- Statics ---------------------------------------------------------------------------------

void XMLSection::Initialize() {
  xercesc::XMLPlatformUtils::Initialize();
}

void XMLSection::Terminate() {
  xercesc::XMLPlatformUtils::Terminate();
}

CString XMLSection::ZentricsXMLExtension() {
  return CString("zxl");
}

XMLSection* XMLSection::CreateXMLSectionFromString(const char* text) {
  StringXMLInputStream stream{CString(text)};
  return new XMLSection(&stream, true);
}

// --- Construction ----------------------------------------------------------------------------

XMLSection::XMLSection() : mpState(nullptr), mCurrentNode{nullptr}, mpCurrentNode(&mCurrentNode) {
  InitializeXercesOnce();
  std::unique_ptr<XMLDocumentState> state(new XMLDocumentState);
  state->mpDocument = NewEmptyDocument();
  AdoptDocumentState(state.release());
}

XMLSection::XMLSection(const char* path, bool loadExternalDtd)
    : mpState(nullptr), mCurrentNode{nullptr}, mpCurrentNode(&mCurrentNode) {
  InitializeXercesOnce();
  std::unique_ptr<XMLDocumentState> state(new XMLDocumentState);
  state->mFileName = path;
  const std::string nativePath = zenutl::platform::ToNativePath(path ? path : "");
  // Only a readable file is parsed. Anything else starts as an empty document; but only a
  // missing file is one that Flush may create: a file that is there and cannot be read now (no
  // permission, no file handles left, a folder in its place) is the user's, and is kept.
  if (zenutl::file::FileDescriptor(zenutl::file::OpenFileForReading(path ? path : "")).valid()) {
    boost::shared_ptr<GuardedDOMParser> parser(new GuardedDOMParser(loadExternalDtd));
    parser->ParseFile(nativePath);
    state->mpParser = parser;
  } else {
    state->mFileUnreadable = errno != ENOENT;
    state->mpDocument = NewEmptyDocument();
  }
  AdoptDocumentState(state.release());
}

XMLSection::XMLSection(std::istream& stream, bool loadExternalDtd)
    : mpState(nullptr), mCurrentNode{nullptr}, mpCurrentNode(&mCurrentNode) {
  InitializeXercesOnce();
  boost::shared_ptr<GuardedDOMParser> parser(new GuardedDOMParser(loadExternalDtd));
  parser->Parse(IStreamInputSource(stream));
  std::unique_ptr<XMLDocumentState> state(new XMLDocumentState);
  state->mpParser = parser;
  AdoptDocumentState(state.release());
}

XMLSection::XMLSection(XMLInputStream* stream, bool loadExternalDtd)
    : mpState(nullptr), mCurrentNode{nullptr}, mpCurrentNode(&mCurrentNode) {
  InitializeXercesOnce();
  boost::shared_ptr<GuardedDOMParser> parser(new GuardedDOMParser(loadExternalDtd));
  parser->Parse(XMLInputSource(stream));
  std::unique_ptr<XMLDocumentState> state(new XMLDocumentState);
  state->mpParser = parser;
  AdoptDocumentState(state.release());
}

XMLSection::XMLSection(unsigned int id, bool loadExternalDtd)
    : mpState(nullptr), mCurrentNode{nullptr}, mpCurrentNode(&mCurrentNode) {
  InitializeXercesOnce();
  std::string bytes;
  // Finding, loading and locking a resource are one lookup here; any failure is "not loaded".
  if (!ZnGetResource(zenutl::platform::CurrentResourceModule(), id & 0xFFFF, kXmlResourceType,
                     bytes)) {
    throw Exception(LanguageString::Get(kResourceNotLoaded));
  }
  boost::shared_ptr<GuardedDOMParser> parser(new GuardedDOMParser(loadExternalDtd));
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                                    "IBMXMLParser");
  parser->Parse(source);
  std::unique_ptr<XMLDocumentState> state(new XMLDocumentState);
  state->mpParser = parser;
  AdoptDocumentState(state.release());
}

XMLSection::XMLSection(const XMLSection& other)
    : ConfigurationSection(other),
      mpState(other.mpState),
      mCurrentNode(*other.mpCurrentNode),
      mpCurrentNode(&mCurrentNode) {
  ++mpState->mUseCount;
}

XMLSection::~XMLSection() {
  ReleaseDocumentState();
}

XMLSection& XMLSection::operator=(const XMLSection& other) {
  ++other.mpState->mUseCount;  // first, so that assigning a section to itself keeps its document
  mpCurrentNode->mpNode = other.mpCurrentNode->mpNode;
  ReleaseDocumentState();
  mpState = other.mpState;
  return *this;
}

void XMLSection::AdoptDocumentState(XMLDocumentState* state) {
  mpState = state;
  mpCurrentNode->mpNode = state->Document();
}

void XMLSection::ReleaseDocumentState() {
  if (mpState && --mpState->mUseCount == 0) delete mpState;
  mpState = nullptr;
}

XMLSection* XMLSection::SectionOn(DOMNode* node) const {
  XMLSection* section = new XMLSection(*this);
  section->mpCurrentNode->mpNode = node;
  return section;
}

ConfigurationSection* XMLSection::Copy() const {
  return new XMLSection(*this);
}

// --- Moving and creating ---------------------------------------------------------------------

void XMLSection::ChangeSection(const char* name) {
  DOMNode* current = mpCurrentNode->mpNode;
  DOMNode* parent = current ? current->getParentNode() : nullptr;
  if (!parent) return;
  DOMNode* sibling = FindChild(parent, name, 1, Children::kElementsOnly);
  if (!sibling) sibling = AppendElement(mpState->Document(), parent, name);
  mpCurrentNode->mpNode = sibling;
}

bool XMLSection::ChangeSubSection(const char* name, int index) {
  DOMNode* child = FindChild(mpCurrentNode->mpNode, name, index, Children::kElementsOnly);
  if (!child) return false;
  mpCurrentNode->mpNode = child;
  return true;
}

bool XMLSection::ChangeSubSection(const char* name) {
  return ChangeSubSection(name, 1);
}

ConfigurationSection* XMLSection::CreateSubSection(const char* name, int index) const {
  DOMNode* current = mpCurrentNode->mpNode;
  if (!current) return nullptr;
  DOMNode* child = FindChild(current, name, index, Children::kAnyKind);
  if (!child) child = AppendElement(mpState->Document(), current, name);
  return SectionOn(child);
}

ConfigurationSection* XMLSection::CreateSubSection(const char* name) const {
  return CreateSubSection(name, 1);
}

std::vector<boost::shared_ptr<ConfigurationSection> >* XMLSection::GetAllSubSections(
    const char* name) const {
  std::unique_ptr<std::vector<boost::shared_ptr<ConfigurationSection> > > sections(
      new std::vector<boost::shared_ptr<ConfigurationSection> >);
  const DOMNode* current = mpCurrentNode->mpNode;
  for (DOMNode* child = current ? current->getFirstChild() : nullptr; child;
       child = child->getNextSibling()) {
    if (NameMatches(child->getNodeName(), name)) {
      sections->push_back(boost::shared_ptr<ConfigurationSection>(SectionOn(child)));
    }
  }
  return sections.release();
}

int XMLSection::NumSubSections(const char* name) const {
  const DOMNode* current = mpCurrentNode->mpNode;
  int count = 0;
  for (DOMNode* child = current ? current->getFirstChild() : nullptr; child;
       child = child->getNextSibling()) {
    if (NameMatches(child->getNodeName(), name)) ++count;
  }
  return count;
}

bool XMLSection::SupportsSubSections() const {
  return true;
}

// --- Store maintenance -----------------------------------------------------------------------

bool XMLSection::DeleteKey(const char* key) {
  DOMNode* current = mpCurrentNode->mpNode;
  DOMNamedNodeMap* attributes = current && key ? current->getAttributes() : nullptr;
  if (!attributes) return false;
  const XmlName name(key);
  if (!attributes->getNamedItem(name.c_str())) return false;
  attributes->removeNamedItem(name.c_str());
  return true;
}

bool XMLSection::DeleteSection() {
  DOMNode* current = mpCurrentNode->mpNode;
  DOMNode* parent = current ? current->getParentNode() : nullptr;
  if (!parent) return false;
  parent->removeChild(current);  // stays in memory, owned by the document
  mpCurrentNode->mpNode = parent;
  return true;
}

bool XMLSection::Flush() const {
  if (mpState->mFileName.IsEmpty()) throw Exception(kNotFlushable);
  const DOMDocument* document = mpState->Document();
  if (!document || mpState->mFileUnreadable) return false;
  std::ostringstream text;
  if (!WriteXMLFile(text, document, true)) return false;
  // The file is replaced in one step: a full disk or a crash leaves the old file whole.
  std::string error;
  return zenutl::platform::WriteFileAtomically(
      zenutl::platform::ToNativePath(mpState->mFileName.GetString()), text.str(), &error);
}

bool XMLSection::Flush(std::ostream& stream) const {
  const DOMDocument* document = mpState->Document();
  return document && WriteXMLFile(stream, document, true);
}

bool XMLSection::Flush(CString& text, bool currentNodeOnly) const {
  const DOMNode* node = currentNodeOnly ? mpCurrentNode->mpNode : mpState->Document();
  const bool written = node && WriteXMLFile(text, node, true);
  text.Remove('\n');
  return written;
}

bool XMLSection::IsEmpty() const {
  const DOMNode* current = mpCurrentNode->mpNode;
  if (!current) return true;
  if (current->getFirstChild()) return false;
  const DOMNamedNodeMap* attributes = current->getAttributes();
  return !attributes || attributes->getLength() == 0;
}

bool XMLSection::HasSection(const char* name, int index) const {
  return FindChild(mpCurrentNode->mpNode, name, index == -1 ? 1 : index, Children::kElementsOnly) !=
         nullptr;
}

bool XMLSection::HasKey(const char* key) const {
  return FindAttribute(mpCurrentNode->mpNode, key) != nullptr;
}

// --- Reads -----------------------------------------------------------------------------------

bool XMLSection::ReadKey(const char* key, wchar_t* buffer, unsigned int size) const {
  const DOMNode* attribute = FindAttribute(mpCurrentNode->mpNode, key);
  if (!attribute) return false;
  const std::wstring value = WideFromXml(attribute->getNodeValue());
  const std::size_t count = std::min<std::size_t>(size, value.size());
  std::wcsncpy(buffer, value.c_str(), count);
  buffer[count] = L'\0';
  return true;
}

bool XMLSection::ReadKey(const char* key, char* buffer, unsigned int size) const {
  const DOMNode* attribute = FindAttribute(mpCurrentNode->mpNode, key);
  if (!attribute) return false;
  const std::string value = Utf8Value(attribute);
  const std::size_t count = std::min<std::size_t>(size, value.size());
  std::memcpy(buffer, value.data(), count);
  buffer[count] = '\0';
  return true;
}

bool XMLSection::ReadKey(const char* key, std::wstring& value) const {
  const DOMNode* attribute = FindAttribute(mpCurrentNode->mpNode, key);
  if (!attribute) return false;
  value = WideFromXml(attribute->getNodeValue());
  return true;
}

bool XMLSection::ReadKey(const char* key, std::string& value) const {
  const DOMNode* attribute = FindAttribute(mpCurrentNode->mpNode, key);
  if (!attribute) return false;
  value = Utf8Value(attribute);
  return true;
}

bool XMLSection::ReadKey(const char* key, CString& value) const {
  const DOMNode* attribute = FindAttribute(mpCurrentNode->mpNode, key);
  if (!attribute) return false;
  const XMLCh* text = attribute->getNodeValue();
  const std::size_t length = Length(text);
  // Most values are ASCII: one character per code unit, straight into the string's buffer.
  char* buffer = value.GetBuffer(static_cast<int>(length));
  std::size_t i = 0;
  for (; i < length && text[i] < 0x80; ++i) buffer[i] = static_cast<char>(text[i]);
  value.ReleaseBuffer(static_cast<int>(i));
  if (i < length) {
    std::string utf8(value.GetString(), i);
    AppendUtf8(text + i, length - i, utf8);
    value = utf8.c_str();
  }
  return true;
}

bool XMLSection::ReadInt(const char* key, int& value) const {
  char buffer[64];
  if (!ReadKey(key, buffer, 63)) return false;
  char* end = nullptr;
  const long parsed = std::strtol(buffer, &end, 10);
  value = parsed > INT_MAX ? INT_MAX : parsed < INT_MIN ? INT_MIN : static_cast<int>(parsed);
  return *end == '\0';
}

// --- Writes ----------------------------------------------------------------------------------

namespace {

bool SetAttribute(DOMNode* node, const char* key, const XmlString& value) {
  DOMNamedNodeMap* attributes = node && key ? node->getAttributes() : nullptr;
  if (!attributes) return false;
  const XmlName name(key);
  if (DOMNode* existing = attributes->getNamedItem(name.c_str())) {
    existing->setNodeValue(value.c_str());
  } else {
    xercesc::DOMAttr* attribute = node->getOwnerDocument()->createAttribute(name.c_str());
    attribute->setValue(value.c_str());
    attributes->setNamedItem(attribute);
  }
  return true;
}

}  // namespace

bool XMLSection::WriteKey(const char* key, const wchar_t* value) {
  return SetAttribute(mpCurrentNode->mpNode, key, XmlContentFromWide(value));
}

bool XMLSection::WriteKey(const char* key, const char* value) {
  return SetAttribute(mpCurrentNode->mpNode, key, XmlContentFromUtf8(value));
}

bool XMLSection::WriteInt(const char* key, int value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%d", value);
  return WriteKey(key, static_cast<const char*>(buffer));
}

// --- Copying ---------------------------------------------------------------------------------

bool XMLSection::WriteToSection(ConfigurationSection* target) const {
  const XMLSection* sameStore = dynamic_cast<const XMLSection*>(target);
  DOMNode* source = mpCurrentNode->mpNode;
  if (!sameStore || sameStore->mpState != mpState || !source) {
    return WriteToSection(mpCurrentNode, target);
  }
  // A target in this document may lie below the source, where the copy would meet the children
  // it creates and copy them again, without end: copy the source as it was before the copy.
  std::unique_ptr<DOMNode, void (*)(DOMNode*)> snapshot(source->cloneNode(true),
                                                        [](DOMNode* node) { node->release(); });
  const CurrentNode before = {snapshot.get()};
  return WriteToSection(&before, target);
}

bool XMLSection::WriteToSection(const CurrentNode* node, ConfigurationSection* target) const {
  const DOMNode* source = node->mpNode;
  if (!source || !target) return false;
  if (const DOMNamedNodeMap* attributes = source->getAttributes()) {
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      const DOMNode* attribute = attributes->item(i);
      target->WriteKey(Utf8FromXml(attribute->getNodeName()).c_str(), Utf8Value(attribute).c_str());
    }
  }
  std::map<CString, int> seen;
  for (DOMNode* child = source->getFirstChild(); child; child = child->getNextSibling()) {
    if (child->getNodeType() != DOMNode::ELEMENT_NODE) continue;
    const CString name(Utf8FromXml(child->getNodeName()));
    std::map<CString, int>::iterator found = seen.find(name);
    boost::shared_ptr<ConfigurationSection> sub;
    if (found == seen.end()) {
      seen[name] = 1;
      sub.reset(target->CreateSubSection(name));
    } else {
      sub.reset(target->CreateSubSection(name, ++found->second));
    }
    if (!sub) continue;  // the target holds no sub-sections
    const CurrentNode childNode = {child};
    WriteToSection(&childNode, sub.get());
  }
  return true;
}

// --- Position --------------------------------------------------------------------------------

CurrentNode* XMLSection::GetCurrentSection() const {
  return mpCurrentNode;
}

void XMLSection::SetCurrentSection(CurrentNode* node) {
  if (node) mpCurrentNode->mpNode = node->mpNode;
}
