#include "config/guarded_dom_parser.h"

#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include <new>

#include "zenutl/exception.h"

namespace zenutl {
namespace config {
namespace {

// Thrown from inside a parse by the library's own checks; it passes through the scanner, which
// only catches its own exception types, and becomes the parse Exception in Parse.
class ParseRefused {
 public:
  explicit ParseRefused(const char* reason) {
    for (const char* p = reason; *p; ++p) mReason.push_back(static_cast<XMLCh>(*p));
  }
  const XMLCh* Reason() const { return mReason.c_str(); }

 private:
  std::basic_string<XMLCh> mReason;
};

bool IsAsciiLetter(XMLCh c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool IsSchemeChar(XMLCh c) {
  return IsAsciiLetter(c) || (c >= u'0' && c <= u'9') || c == u'+' || c == u'-' || c == u'.';
}

bool IsSlash(XMLCh c) {
  return c == u'/' || c == u'\\';
}

XMLCh AsciiLower(XMLCh c) {
  return (c >= u'A' && c <= u'Z') ? static_cast<XMLCh>(c - u'A' + u'a') : c;
}

bool EqualsAsciiNoCase(const XMLCh* begin, const XMLCh* end, const char* ascii) {
  for (; begin != end; ++begin, ++ascii) {
    if (*ascii == 0 || AsciiLower(*begin) != static_cast<XMLCh>(*ascii)) return false;
  }
  return *ascii == 0;
}

// Length of a URL scheme at the start of `id` (without the colon), or 0 if there is none. A
// single letter before the colon is a drive ("C:\\x.dtd"), not a scheme.
std::size_t SchemeLength(const XMLCh* id) {
  if (!IsAsciiLetter(id[0])) return 0;
  std::size_t length = 1;
  while (IsSchemeChar(id[length])) ++length;
  return (id[length] == u':' && length > 1) ? length : 0;
}

enum class Locality { kLocal, kRemote, kRelative };

Locality Classify(const XMLCh* id) {
  if (!id || !*id) return Locality::kRelative;
  const std::size_t scheme = SchemeLength(id);
  if (scheme == 0) {
    if (IsSlash(id[0]) && IsSlash(id[1])) return Locality::kRemote;  // "//host/share/..."
    return IsSlash(id[0]) ? Locality::kLocal : Locality::kRelative;
  }
  if (!EqualsAsciiNoCase(id, id + scheme, "file")) return Locality::kRemote;
  const XMLCh* rest = id + scheme + 1;
  if (!(rest[0] == u'/' && rest[1] == u'/')) return Locality::kLocal;  // "file:/x", "file:x"
  const XMLCh* host = rest + 2;
  const XMLCh* hostEnd = host;
  while (*hostEnd && *hostEnd != u'/') ++hostEnd;
  if (host == hostEnd || EqualsAsciiNoCase(host, hostEnd, "localhost")) return Locality::kLocal;
  return Locality::kRemote;
}

}  // namespace

CString ParseErrorText(const XMLCh* message) {
  static const XMLCh kNone[] = {0};
  CString text;
  // The 16-bit message goes to the narrow %s as it stands (see the header).
  text.Format("An error occurred during parsing\nMessage: %s",
              reinterpret_cast<const char*>(message ? message : kNone));
  return text;
}

bool IsLocalSystemId(const XMLCh* systemId, const XMLCh* baseUri) {
  switch (Classify(systemId)) {
    case Locality::kLocal:
      return true;
    case Locality::kRemote:
      return false;
    case Locality::kRelative:
      return Classify(baseUri) != Locality::kRemote;
  }
  return false;
}

namespace detail {

xercesc::InputSource* LocalOnlyEntityResolver::resolveEntity(
    xercesc::XMLResourceIdentifier* resource) {
  if (!IsLocalSystemId(resource->getSystemId(), resource->getBaseURI())) {
    throw ParseRefused("External reference to a non-local resource refused");
  }
  return nullptr;  // a local file: Xerces opens it itself
}

void FirstErrorRecorder::warning(const xercesc::SAXParseException&) {}

void FirstErrorRecorder::error(const xercesc::SAXParseException& exception) {
  Record(exception);
}

void FirstErrorRecorder::fatalError(const xercesc::SAXParseException& exception) {
  Record(exception);
}

void FirstErrorRecorder::resetErrors() {
  mHasError = false;
  mFirstMessage.clear();
}

void FirstErrorRecorder::Record(const xercesc::SAXParseException& exception) {
  if (mHasError) return;
  mHasError = true;
  const XMLCh* message = exception.getMessage();
  mFirstMessage = message ? message : u"";
}

}  // namespace detail

GuardedDOMParser::GuardedDOMParser(bool loadExternalDtd)
    : xercesc::XercesDOMParser(nullptr, xercesc::XMLPlatformUtils::fgMemoryManager, nullptr) {
  setValidationScheme(Val_Never);
  setLoadExternalDTD(loadExternalDtd);
  mSecurityManager.setEntityExpansionLimit(kEntityExpansionLimit);
  setSecurityManager(&mSecurityManager);
  setXMLEntityResolver(&mResolver);
  setErrorHandler(&mErrors);
}

GuardedDOMParser::~GuardedDOMParser() = default;

void GuardedDOMParser::Parse(const xercesc::InputSource& source) {
  mErrors.resetErrors();
  mDepth = 0;
  try {
    parse(source);
  } catch (const ParseRefused& refused) {
    throw Exception(ParseErrorText(refused.Reason()));
  } catch (const xercesc::XMLException& exception) {
    throw Exception(ParseErrorText(exception.getMessage()));
  } catch (const xercesc::DOMException& exception) {
    throw Exception(ParseErrorText(exception.getMessage()));
  } catch (const xercesc::SAXException& exception) {
    throw Exception(ParseErrorText(exception.getMessage()));
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  }
  if (mErrors.HasError()) throw Exception(ParseErrorText(mErrors.FirstMessage()));
}

void GuardedDOMParser::ParseFile(const std::string& nativePath) {
  XMLCh* path = xercesc::XMLString::transcode(nativePath.c_str());
  try {
    // A LocalFileInputSource is always a file: a path that happens to read like a URL is
    // never handed to the network code.
    xercesc::LocalFileInputSource source(path);
    xercesc::XMLString::release(&path);
    Parse(source);
  } catch (...) {
    if (path) xercesc::XMLString::release(&path);
    throw;
  }
}

void GuardedDOMParser::startElement(const xercesc::XMLElementDecl& elemDecl,
                                    const unsigned int urlId, const XMLCh* const elemPrefix,
                                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList,
                                    const XMLSize_t attrCount, const bool isEmpty,
                                    const bool isRoot) {
  if (mDepth >= kElementDepthLimit) throw ParseRefused("Elements nested too deeply");
  xercesc::XercesDOMParser::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty,
                                         isRoot);
  if (!isEmpty) ++mDepth;
}

void GuardedDOMParser::endElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId,
                                  const bool isRoot, const XMLCh* const elemPrefix) {
  xercesc::XercesDOMParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
  if (mDepth > 0) --mDepth;
}

void GuardedDOMParser::entityDecl(const xercesc::DTDEntityDecl& entityDecl, const bool isPEDecl,
                                  const bool isIgnored) {
  if (entityDecl.getValueLen() > kEntityValueLimit) {
    throw ParseRefused("Entity value too long");
  }
  xercesc::XercesDOMParser::entityDecl(entityDecl, isPEDecl, isIgnored);
}

}  // namespace config
}  // namespace zenutl
