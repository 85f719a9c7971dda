#include "config/guarded_dom_parser.h"

#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/XMLNotationDecl.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include <atomic>
#include <cctype>
#include <cstring>
#include <new>
#include <utility>

#include "config/xml_text.h"
#include "platform/file_bytes.h"
#include "platform/native_path.h"
#include "zenutl/exception.h"
#include "zenutl/xml_input_limit.h"

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

const XMLCh kInputTooLarge[] = u"Document larger than the XML input limit";

std::atomic<std::size_t> sInputLimit{kZnDefaultXMLInputLimit};

// Hands on the bytes of another stream until more than `limit` have come, and from then on
// reports the end of the input, which stops the scanner; `exceeded` tells the parser why.
class BoundedInputStream : public xercesc::BinInputStream {
 public:
  BoundedInputStream(xercesc::BinInputStream* adopted, std::size_t limit, bool& exceeded)
      : mInner(adopted), mLimit(limit), mExceeded(exceeded) {}
  ~BoundedInputStream() override { delete mInner; }

  XMLFilePos curPos() const override { return mInner->curPos(); }
  XMLSize_t readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) override {
    if (mExceeded) return 0;
    const XMLSize_t got = mInner->readBytes(toFill, maxToRead);
    if (got > mLimit - mRead) {
      mExceeded = true;
      return 0;
    }
    mRead += got;
    return got;
  }
  const XMLCh* getContentType() const override { return mInner->getContentType(); }
  const XMLCh* getEncoding() const override { return mInner->getEncoding(); }

 private:
  xercesc::BinInputStream* const mInner;
  const std::size_t mLimit;
  std::size_t mRead = 0;
  bool& mExceeded;
};

// Another source seen through a BoundedInputStream.
class BoundedInputSource : public xercesc::InputSource {
 public:
  BoundedInputSource(const xercesc::InputSource& inner, std::size_t limit, bool& exceeded)
      : mInner(inner), mLimit(limit), mExceeded(exceeded) {}

  xercesc::BinInputStream* makeStream() const override {
    xercesc::BinInputStream* stream = mInner.makeStream();
    return stream ? new BoundedInputStream(stream, mLimit, mExceeded) : nullptr;
  }
  const XMLCh* getEncoding() const override { return mInner.getEncoding(); }
  const XMLCh* getPublicId() const override { return mInner.getPublicId(); }
  const XMLCh* getSystemId() const override { return mInner.getSystemId(); }
  bool getIssueFatalErrorIfNotFound() const override {
    return mInner.getIssueFatalErrorIfNotFound();
  }

 private:
  const xercesc::InputSource& mInner;
  const std::size_t mLimit;
  bool& mExceeded;
};

// Bytes the library has read itself (a local external DTD), handed to the scanner as a source.
class OwnedBytesInputSource : public xercesc::InputSource {
 public:
  OwnedBytesInputSource(std::string bytes, const XMLCh* systemId) : mBytes(std::move(bytes)) {
    setSystemId(systemId);
  }
  xercesc::BinInputStream* makeStream() const override {
    return new xercesc::BinMemInputStream(reinterpret_cast<const XMLByte*>(mBytes.data()),
                                          mBytes.size(), xercesc::BinMemInputStream::BufOpt_Copy);
  }

 private:
  const std::string mBytes;
};

bool IsAsciiLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsSchemeChar(char c) {
  return IsAsciiLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

bool IsSlash(char c) {
  return c == '/' || c == '\\';
}

// The white space that XML allows around a system literal and that the scanner drops.
bool IsXmlBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string Trimmed(const std::string& text) {
  std::size_t begin = 0;
  std::size_t end = text.size();
  while (begin < end && IsXmlBlank(text[begin])) ++begin;
  while (end > begin && IsXmlBlank(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

bool EqualsAsciiNoCase(const std::string& text, const char* ascii) {
  if (text.size() != std::strlen(ascii)) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(text[i])) != ascii[i]) return false;
  }
  return true;
}

// Length of a URL scheme at the start of `id` (without the colon), or 0 if there is none. A
// single letter before the colon is a drive ("C:\\x.dtd"), not a scheme.
std::size_t SchemeLength(const std::string& id) {
  if (id.empty() || !IsAsciiLetter(id[0])) return 0;
  std::size_t length = 1;
  while (length < id.size() && IsSchemeChar(id[length])) ++length;
  return (length < id.size() && id[length] == ':' && length > 1) ? length : 0;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// "%xx" escapes of a URL path decoded; false for a broken escape or an escaped zero byte.
bool PercentDecoded(const std::string& text, std::string& decoded) {
  decoded.clear();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const int high = i + 2 < text.size() ? HexValue(text[i + 1]) : -1;
    const int low = high >= 0 ? HexValue(text[i + 2]) : -1;
    if (low < 0 || (high == 0 && low == 0)) return false;
    decoded += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return true;
}

// The native path that a trimmed id names by itself, relative or absolute; false when it is no
// file on this machine.
bool LocalPathOf(const std::string& id, std::string& path) {
  const std::size_t scheme = SchemeLength(id);
  if (scheme == 0) {
    if (id.size() >= 2 && IsSlash(id[0]) && IsSlash(id[1])) return false;  // "//host/share/..."
    path = platform::ToNativePath(id);
    return true;
  }
  if (!EqualsAsciiNoCase(id.substr(0, scheme), "file")) return false;
  std::string rest = id.substr(scheme + 1);
  if (rest.compare(0, 2, "//") == 0) {
    const std::size_t hostEnd = rest.find('/', 2);
    const std::string host = rest.substr(2, hostEnd == std::string::npos ? hostEnd : hostEnd - 2);
    if (!host.empty() && !EqualsAsciiNoCase(host, "localhost")) return false;
    rest = hostEnd == std::string::npos ? std::string() : rest.substr(hostEnd);
  }
  return PercentDecoded(rest, path) && !path.empty();
}

typedef std::basic_string<XMLCh> XmlText;

XmlText Text(const XMLCh* text) {
  return text ? XmlText(text) : XmlText();
}

// `value` between double quotes, with every character in `escaped` written as a character
// reference, so that the literal reads back as exactly `value`.
XmlText Quoted(const XMLCh* value, const char* escaped) {
  XmlText literal(1, u'"');
  for (const XMLCh* c = value; c && *c; ++c) {
    if (*c < 0x80 && std::strchr(escaped, static_cast<char>(*c)) != nullptr) {
      for (char digit : "&#" + std::to_string(*c) + ";") literal += static_cast<XMLCh>(digit);
    } else {
      literal += *c;
    }
  }
  return literal + u'"';
}

// A system literal takes the quote it does not contain; a public id never holds '"'.
XmlText SystemLiteral(const XMLCh* id) {
  const XmlText text = Text(id);
  const XMLCh quote = text.find(u'"') == XmlText::npos ? u'"' : u'\'';
  return quote + text + quote;
}

XmlText ExternalId(const XMLCh* publicId, const XMLCh* systemId) {
  if (publicId) {
    XmlText id = u" PUBLIC \"" + Text(publicId) + u"\"";
    return systemId ? id + u" " + SystemLiteral(systemId) : id;
  }
  return systemId ? u" SYSTEM " + SystemLiteral(systemId) : XmlText();
}

// A default value as the scanner keeps it, normalised: tabs and line ends must come back as
// references, or reading them again would turn them into spaces.
const char kAttributeEscapes[] = "&<\"\t\n\r";
// An entity's replacement text: references expanded, so '&' and '%' must not start new ones.
const char kEntityEscapes[] = "&%\"\r";

XmlText EntityDeclaration(const xercesc::DTDEntityDecl& entity, bool isParameter) {
  XmlText text = u"<!ENTITY " + XmlText(isParameter ? u"% " : u"") + Text(entity.getName());
  if (entity.isExternal()) {
    text += ExternalId(entity.getPublicId(), entity.getSystemId());
    if (entity.getNotationName()) text += u" NDATA " + Text(entity.getNotationName());
  } else {
    text += u" " + Quoted(entity.getValue(), kEntityEscapes);
  }
  return text + u">";
}

XmlText AttributeType(const xercesc::DTDAttDef& attribute) {
  XmlText list = Text(attribute.getEnumeration());
  for (XMLCh& c : list) {
    if (c == u' ') c = u'|';
  }
  switch (attribute.getType()) {
    case xercesc::XMLAttDef::ID:
      return u"ID";
    case xercesc::XMLAttDef::IDRef:
      return u"IDREF";
    case xercesc::XMLAttDef::IDRefs:
      return u"IDREFS";
    case xercesc::XMLAttDef::Entity:
      return u"ENTITY";
    case xercesc::XMLAttDef::Entities:
      return u"ENTITIES";
    case xercesc::XMLAttDef::NmToken:
      return u"NMTOKEN";
    case xercesc::XMLAttDef::NmTokens:
      return u"NMTOKENS";
    case xercesc::XMLAttDef::Notation:
      return u"NOTATION (" + list + u")";
    case xercesc::XMLAttDef::Enumeration:
      return u"(" + list + u")";
    default:
      return u"CDATA";
  }
}

XmlText AttributeDefinition(const xercesc::DTDAttDef& attribute) {
  XmlText text = Text(attribute.getFullName()) + u" " + AttributeType(attribute);
  switch (attribute.getDefaultType()) {
    case xercesc::XMLAttDef::Required:
      return text + u" #REQUIRED";
    case xercesc::XMLAttDef::Implied:
      return text + u" #IMPLIED";
    case xercesc::XMLAttDef::Fixed:
      return text + u" #FIXED " + Quoted(attribute.getValue(), kAttributeEscapes);
    default:
      return text + u" " + Quoted(attribute.getValue(), kAttributeEscapes);
  }
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

bool LocalPathOfSystemId(const XMLCh* systemId, const XMLCh* baseUri, std::string& nativePath) {
  const std::string id = Trimmed(Utf8FromXml(systemId ? systemId : u""));
  std::string path;
  if (id.empty() || !LocalPathOf(id, path)) return false;
  if (path[0] != '/') {
    const std::string base = Trimmed(Utf8FromXml(baseUri ? baseUri : u""));
    std::string basePath;
    if (!base.empty()) {
      if (!LocalPathOf(base, basePath)) return false;
      const std::size_t slash = basePath.rfind('/');
      if (slash != std::string::npos) path = basePath.substr(0, slash + 1) + path;
    }
  }
  nativePath = path;
  return true;
}

namespace detail {

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
    : xercesc::XercesDOMParser(nullptr, xercesc::XMLPlatformUtils::fgMemoryManager, nullptr),
      mLoadExternalDtd(loadExternalDtd) {
  setValidationScheme(Val_Never);
  setLoadExternalDTD(loadExternalDtd);
  mSecurityManager.setEntityExpansionLimit(kEntityExpansionLimit);
  setSecurityManager(&mSecurityManager);
  setErrorHandler(&mErrors);
  // The scanner asks its entity handler about every external id, and without one it opens the
  // id itself; this parser is that handler (see resolveEntity), and no resolver is installed
  // that could take the role back.
  getScanner()->setEntityHandler(this);
}

GuardedDOMParser::~GuardedDOMParser() = default;

void GuardedDOMParser::Parse(const xercesc::InputSource& source) {
  mErrors.resetErrors();
  mDepth = 0;
  mHasExternalSubset = false;
  mExternalSubsetNext = false;
  mInputLimit = ZnGetXMLInputLimit();
  mInputTooLarge = false;
  mSubset.clear();
  mBaseSubsetTaken = 0;
  // The message of the first failure; the size limit, when it was hit, explains all others.
  bool failed = false;
  std::basic_string<XMLCh> failure;
  try {
    parse(BoundedInputSource(source, mInputLimit, mInputTooLarge));
  } catch (const ParseRefused& refused) {
    failed = true;
    failure = refused.Reason();
  } catch (const xercesc::XMLException& exception) {
    failed = true;
    failure = exception.getMessage();
  } catch (const xercesc::DOMException& exception) {
    failed = true;
    failure = exception.getMessage();
  } catch (const xercesc::SAXException& exception) {
    failed = true;
    failure = exception.getMessage();
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  }
  if (mInputTooLarge) throw Exception(ParseErrorText(kInputTooLarge));
  if (failed) throw Exception(ParseErrorText(failure.c_str()));
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

xercesc::InputSource* GuardedDOMParser::resolveEntity(xercesc::XMLResourceIdentifier* resource) {
  // Never null: that would let the scanner open the id itself, by file or by network.
  const bool externalSubset = mExternalSubsetNext;
  mExternalSubsetNext = false;
  if (!externalSubset) throw ParseRefused("External entity refused");
  std::string path;
  if (!LocalPathOfSystemId(resource->getSystemId(), resource->getBaseURI(), path)) {
    throw ParseRefused("External DTD not on this machine refused");
  }
  std::string bytes;
  std::string reason;
  if (!platform::ReadFileBytes(path, bytes, reason, mInputLimit)) {
    throw ParseRefused(("External DTD not read: " + reason).c_str());
  }
  return new OwnedBytesInputSource(std::move(bytes), XmlFromUtf8(path.c_str()).c_str());
}

void GuardedDOMParser::doctypeDecl(const xercesc::DTDElementDecl& elemDecl,
                                   const XMLCh* const publicId, const XMLCh* const systemId,
                                   const bool hasIntSubset, const bool hasExtSubset) {
  xercesc::XercesDOMParser::doctypeDecl(elemDecl, publicId, systemId, hasIntSubset, hasExtSubset);
  mHasExternalSubset = hasExtSubset && mLoadExternalDtd;
  mExternalSubsetNext = mHasExternalSubset && !hasIntSubset;
}

void GuardedDOMParser::endIntSubset() {
  TakeBaseSubset();
  fInternalSubset.set(mSubset.data(), mSubset.size());
  mBaseSubsetTaken = fInternalSubset.getLen();
  xercesc::XercesDOMParser::endIntSubset();
  mExternalSubsetNext = mHasExternalSubset;
}

void GuardedDOMParser::TakeBaseSubset() {
  const XMLSize_t length = fInternalSubset.getLen();
  if (length > mBaseSubsetTaken) {
    mSubset.append(fInternalSubset.getRawBuffer() + mBaseSubsetTaken, length - mBaseSubsetTaken);
  }
  mBaseSubsetTaken = length;
}

void GuardedDOMParser::ReplaceBaseSubset(XMLSize_t lengthBefore,
                                         const std::basic_string<XMLCh>& text) {
  if (fInternalSubset.getLen() == lengthBefore) return;  // not in the internal subset
  mSubset += text;
  mBaseSubsetTaken = fInternalSubset.getLen();
}

void GuardedDOMParser::startElement(const xercesc::XMLElementDecl& elemDecl,
                                    const unsigned int urlId, const XMLCh* const elemPrefix,
                                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList,
                                    const XMLSize_t attrCount, const bool isEmpty,
                                    const bool isRoot) {
  mExternalSubsetNext = false;
  // The scanner reports the end of an empty element too, so every element counts one level in
  // and one out, whatever its form.
  if (mDepth >= kElementDepthLimit) throw ParseRefused("Elements nested too deeply");
  ++mDepth;
  xercesc::XercesDOMParser::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty,
                                         isRoot);
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
  TakeBaseSubset();
  const XMLSize_t before = fInternalSubset.getLen();
  xercesc::XercesDOMParser::entityDecl(entityDecl, isPEDecl, isIgnored);
  ReplaceBaseSubset(before, EntityDeclaration(entityDecl, isPEDecl));
}

void GuardedDOMParser::notationDecl(const xercesc::XMLNotationDecl& notDecl, const bool isIgnored) {
  TakeBaseSubset();
  const XMLSize_t before = fInternalSubset.getLen();
  xercesc::XercesDOMParser::notationDecl(notDecl, isIgnored);
  ReplaceBaseSubset(before, u"<!NOTATION " + Text(notDecl.getName()) +
                                ExternalId(notDecl.getPublicId(), notDecl.getSystemId()) + u">");
}

void GuardedDOMParser::doctypeComment(const XMLCh* const comment) {
  TakeBaseSubset();
  const XMLSize_t before = fInternalSubset.getLen();
  xercesc::XercesDOMParser::doctypeComment(comment);
  ReplaceBaseSubset(before, u"<!--" + Text(comment) + u"-->");
}

void GuardedDOMParser::attDef(const xercesc::DTDElementDecl& elemDecl,
                              const xercesc::DTDAttDef& attDef, const bool ignoring) {
  TakeBaseSubset();
  const XMLSize_t before = fInternalSubset.getLen();
  xercesc::XercesDOMParser::attDef(elemDecl, attDef, ignoring);
  ReplaceBaseSubset(before, AttributeDefinition(attDef));
}

}  // namespace config
}  // namespace zenutl

std::size_t ZnGetXMLInputLimit() {
  return zenutl::config::sInputLimit.load();
}

std::size_t ZnSetXMLInputLimit(std::size_t bytes) {
  return zenutl::config::sInputLimit.exchange(bytes == 0 ? kZnDefaultXMLInputLimit : bytes);
}
