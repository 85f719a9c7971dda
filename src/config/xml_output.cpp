// Serialisation of DOM nodes into streams and strings, and the optional print filter.
#include <xercesc/dom/DOMConfiguration.hpp>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/dom/DOMImplementationLS.hpp>
#include <xercesc/dom/DOMImplementationRegistry.hpp>
#include <xercesc/dom/DOMLSOutput.hpp>
#include <xercesc/dom/DOMLSSerializer.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <strings.h>

#include <cstring>
#include <memory>
#include <string>

#include "config/xml_text.h"
#include "zenutl/cstring_format_target.h"
#include "zenutl/dom_print_filter.h"
#include "zenutl/dom_serializer_format_target.h"
#include "zenutl/write_xml_file.h"

using xercesc::DOMNode;
using xercesc::DOMNodeFilter;

namespace {

// Serialiser settings shared by every WriteXMLFile call. Line ends and encoding stay null so the
// serialiser's own defaults apply; the filter switch is off, so nothing is ever left out.
const XMLCh* const kNewLine = nullptr;
const XMLCh* const kEncoding = nullptr;
const bool kSplitCdataSections = true;
const bool kDiscardDefaultContent = true;
const bool kUseFilter = false;
const DOMNodeFilter::ShowType kFilterMask = DOMNodeFilter::SHOW_ELEMENT |
                                            DOMNodeFilter::SHOW_ATTRIBUTE |
                                            DOMNodeFilter::SHOW_DOCUMENT_TYPE;  // 0x203

void SetFeatureIfAllowed(xercesc::DOMConfiguration* config, const XMLCh* name, bool value) {
  if (config->canSetParameter(name, value)) config->setParameter(name, value);
}

// The text form: the library's narrow texts are UTF-8, whatever the document's own encoding.
const XMLCh kTextEncoding[] = {u'U', u'T', u'F', u'-', u'8', 0};

// `encoding` null leaves the choice to the serialiser.
bool Serialise(xercesc::XMLFormatTarget* target, const DOMNode* node, bool prettyPrint,
               const XMLCh* encoding = kEncoding) {
  XMLCh features[100];
  xercesc::XMLString::transcode("LS", features, 99);
  xercesc::DOMImplementation* implementation =
      xercesc::DOMImplementationRegistry::getDOMImplementation(features);
  if (!implementation) return false;
  xercesc::DOMImplementationLS* factory = implementation;

  xercesc::DOMLSSerializer* serializer =
      factory->createLSSerializer(xercesc::XMLPlatformUtils::fgMemoryManager);
  xercesc::DOMLSOutput* output =
      factory->createLSOutput(xercesc::XMLPlatformUtils::fgMemoryManager);
  serializer->setNewLine(kNewLine);
  output->setEncoding(encoding);

  std::unique_ptr<DOMPrintFilter> filter;
  if (kUseFilter) {
    filter.reset(new DOMPrintFilter(kFilterMask));
    serializer->setFilter(filter.get());
  }

  xercesc::DOMConfiguration* config = serializer->getDomConfig();
  SetFeatureIfAllowed(config, xercesc::XMLUni::fgDOMWRTSplitCdataSections, kSplitCdataSections);
  SetFeatureIfAllowed(config, xercesc::XMLUni::fgDOMWRTDiscardDefaultContent,
                      kDiscardDefaultContent);
  SetFeatureIfAllowed(config, xercesc::XMLUni::fgDOMWRTFormatPrettyPrint, prettyPrint);

  output->setByteStream(target);
  bool written = false;
  try {
    written = serializer->write(node, output);
  } catch (const xercesc::DOMException&) {
    // The serialiser gives up on content it cannot write, such as a control character in a
    // text; that is a failed write, not an exception for the caller.
    written = false;
  } catch (...) {
    output->release();
    serializer->release();
    throw;
  }
  output->release();
  serializer->release();
  return written;
}

// Whether text written in `encoding` reads back through the parser. Xerces reads the encodings
// it implements itself exactly as it writes them; through the system's converters some (UTF-7
// among them) are read one way and written another, so a document read in one of those and
// saved in it again could never be read back.
bool ReadsBackAsWritten(const XMLCh* encoding) {
  static const char* const kOwnEncodings[] = {
      "UTF-8",    "UTF8",     "UTF-16",          "UTF-16LE",        "UTF-16BE",    "UTF-32",
      "UTF-32LE", "UTF-32BE", "US-ASCII",        "ASCII",           "ISO-8859-1",  "ISO8859-1",
      "LATIN1",   "LATIN-1",  "ISO-10646-UCS-2", "ISO-10646-UCS-4", "WINDOWS-1252"};
  const std::string name = zenutl::config::Utf8FromXml(encoding);
  for (const char* own : kOwnEncodings) {
    if (strcasecmp(name.c_str(), own) == 0) return true;
  }
  return false;
}

// The encoding to write `node` in: the document's own where it reads back as written, else
// UTF-8. Null leaves the choice to the serialiser (the document's own, else UTF-8).
const XMLCh* OutputEncoding(const DOMNode* node) {
  const xercesc::DOMDocument* document = node->getNodeType() == DOMNode::DOCUMENT_NODE
                                             ? static_cast<const xercesc::DOMDocument*>(node)
                                             : node->getOwnerDocument();
  if (document == nullptr) return kEncoding;
  for (const XMLCh* declared : {document->getInputEncoding(), document->getXmlEncoding()}) {
    if (declared != nullptr && *declared != 0 && !ReadsBackAsWritten(declared)) {
      return kTextEncoding;
    }
  }
  return kEncoding;
}

}  // namespace

bool WriteXMLFile(std::ostream& stream, DOMNode const* node, bool prettyPrint) {
  if (node == nullptr) return false;
  std::unique_ptr<DOMSerializerFormatTarget> target(new DOMSerializerFormatTarget(stream));
  return Serialise(target.get(), node, prettyPrint, OutputEncoding(node));
}

bool WriteXMLFile(CString& text, DOMNode const* node, bool prettyPrint) {
  if (node == nullptr) return false;
  std::unique_ptr<CStringFormatTarget> target(new CStringFormatTarget(text));
  return Serialise(target.get(), node, prettyPrint, kTextEncoding);
}

DOMSerializerFormatTarget::DOMSerializerFormatTarget(std::ostream& stream) : mStream(&stream) {}

DOMSerializerFormatTarget::~DOMSerializerFormatTarget() = default;

void DOMSerializerFormatTarget::writeChars(const XMLByte* const toWrite, const XMLSize_t count,
                                           xercesc::XMLFormatter* const) {
  mStream->write(reinterpret_cast<const char*>(toWrite), static_cast<std::streamsize>(count));
}

CStringFormatTarget::CStringFormatTarget(CString& text) : mText(&text) {}

CStringFormatTarget::~CStringFormatTarget() = default;

void CStringFormatTarget::writeChars(const XMLByte* const toWrite, const XMLSize_t count,
                                     xercesc::XMLFormatter* const) {
  // The chunk is taken as a zero-terminated text, as the serialiser's buffers are; the count
  // only bounds the scan so that a chunk without a terminator is never read past its end.
  const char* chunk = reinterpret_cast<const char*>(toWrite);
  const std::size_t length = strnlen(chunk, count);
  *mText += CString(chunk, static_cast<int>(length));
}

DOMPrintFilter::DOMPrintFilter(ShowType whatToShow) : mWhatToShow(whatToShow) {}

DOMPrintFilter::~DOMPrintFilter() = default;

DOMPrintFilter::FilterAction DOMPrintFilter::acceptNode(const DOMNode* node) const {
  const unsigned long typeBit = 1UL << (node->getNodeType() - 1);
  if ((mWhatToShow & typeBit) == 0) return FILTER_ACCEPT;

  switch (node->getNodeType()) {
    case DOMNode::ELEMENT_NODE: {
      static const XMLCh kPerson[] = {u'p', u'e', u'r', u's', u'o', u'n', 0};
      static const XMLCh kLink[] = {u'l', u'i', u'n', u'k', 0};
      if (xercesc::XMLString::equals(node->getNodeName(), kPerson)) return FILTER_SKIP;
      if (xercesc::XMLString::equals(node->getNodeName(), kLink)) return FILTER_REJECT;
      return FILTER_ACCEPT;
    }
    case DOMNode::TEXT_NODE:
    case DOMNode::COMMENT_NODE:
    case DOMNode::DOCUMENT_NODE:
    case DOMNode::DOCUMENT_TYPE_NODE:
      return FILTER_REJECT;
    default:
      return FILTER_ACCEPT;
  }
}

DOMPrintFilter::ShowType DOMPrintFilter::getWhatToShow() const {
  return mWhatToShow;
}

void DOMPrintFilter::setWhatToShow(ShowType toShow) {
  mWhatToShow = toShow;
}
