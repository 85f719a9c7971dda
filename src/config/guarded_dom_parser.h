// A Xerces-C DOM parser set up for documents that come from users.
//
// Configuration files, configuration strings and audit trails are typed, copied and mailed
// around by people, so the parser that reads them must not trust them. Besides the settings
// every parse in the library uses (no validation, no grammar pool, the caller's choice about the
// external DTD), this parser
//   - refuses every external reference that is not a local file: an "http:" DTD or entity is
//     never fetched, whatever `loadExternalDtd` says, while a local external DTD still loads
//     when it is true;
//   - bounds entity expansion: at most kEntityExpansionLimit entity references are expanded in
//     one document and no internal entity may hold more than kEntityValueLimit characters, so
//     the expanded text stays below their product (no "billion laughs", no quadratic blow-up);
//   - refuses elements nested deeper than kElementDepthLimit, so that code walking the tree
//     recursively later (serialisation, copying) cannot run out of stack;
//   - turns every error, fatal or not, into the library's parse `Exception`.
//
// `Parse` throws `Exception` with the text of `ParseErrorText` on any failure and leaves the
// document with the parser otherwise, as `XercesDOMParser` does.
#ifndef ZENUTL_CONFIG_GUARDED_DOM_PARSER_H_
#define ZENUTL_CONFIG_GUARDED_DOM_PARSER_H_

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>

#include <string>

#include "zenutl/cstring.h"

namespace zenutl {
namespace config {

const unsigned int kEntityExpansionLimit = 10000;
const XMLSize_t kEntityValueLimit = 1024;
// The deepest element a document may have, the root being at depth 1. Whatever the library
// writes stays within it (the audit trail drops a sub-trail event that would nest deeper), so
// the library can always read back what it wrote: 1,000 levels of nested sub-trails fit.
const unsigned int kElementDepthLimit = 2048;

// "An error occurred during parsing\nMessage: %s" with the parser's 16-bit message handed to the
// narrow %s unchanged, exactly as the applications have always shown it: on a little-endian
// machine only the first character of an ASCII message gets through.
CString ParseErrorText(const XMLCh* message);

// True if `systemId`, taken relative to `baseUri` where it is relative, names a file on this
// machine: a path, or a "file:" URL without a host other than "localhost". Anything with another
// scheme, a network path ("//host/..."), or a relative id under a non-local base is not local.
bool IsLocalSystemId(const XMLCh* systemId, const XMLCh* baseUri);

namespace detail {

// Refuses non-local external references; local ones go on to Xerces' own file resolution.
class LocalOnlyEntityResolver : public xercesc::XMLEntityResolver {
 public:
  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override;
};

// Keeps the first error the scanner reports.
class FirstErrorRecorder : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException& exception) override;
  void error(const xercesc::SAXParseException& exception) override;
  void fatalError(const xercesc::SAXParseException& exception) override;
  void resetErrors() override;

  bool HasError() const { return mHasError; }
  const XMLCh* FirstMessage() const { return mFirstMessage.c_str(); }

 private:
  void Record(const xercesc::SAXParseException& exception);
  bool mHasError = false;
  std::basic_string<XMLCh> mFirstMessage;
};

// The helpers the parser points to; a base class so that they outlive the parser proper.
struct ParserGuards {
  xercesc::SecurityManager mSecurityManager;
  LocalOnlyEntityResolver mResolver;
  FirstErrorRecorder mErrors;
};

}  // namespace detail

class GuardedDOMParser : private detail::ParserGuards, public xercesc::XercesDOMParser {
 public:
  explicit GuardedDOMParser(bool loadExternalDtd);
  ~GuardedDOMParser() override;

  // Parses the source; throws Exception(ParseErrorText(...)) on any error or refusal.
  void Parse(const xercesc::InputSource& source);
  // Parses the local file at `nativePath`, never taken as a URL.
  void ParseFile(const std::string& nativePath);

  // Hooks of the document builder that enforce the limits above.
  void startElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId,
                    const XMLCh* const elemPrefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList,
                    const XMLSize_t attrCount, const bool isEmpty, const bool isRoot) override;
  void endElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId,
                  const bool isRoot, const XMLCh* const elemPrefix) override;
  void entityDecl(const xercesc::DTDEntityDecl& entityDecl, const bool isPEDecl,
                  const bool isIgnored) override;

 private:
  unsigned int mDepth = 0;
};

}  // namespace config
}  // namespace zenutl

#endif  // ZENUTL_CONFIG_GUARDED_DOM_PARSER_H_
