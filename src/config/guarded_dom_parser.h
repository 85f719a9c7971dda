// A Xerces-C DOM parser set up for documents that come from users.
//
// Configuration files, configuration strings and audit trails are typed, copied and mailed
// around by people, so the parser that reads them must not trust them. Besides the settings
// every parse in the library uses (no validation, no grammar pool, the caller's choice about the
// external DTD), this parser
//   - never lets a document reach beyond itself: no external general or parameter entity is ever
//     resolved, and the parser never opens a file or a URL by itself. The one thing read from
//     outside is the external DTD subset when `loadExternalDtd` is true, and only when its system
//     id names a regular file on this machine (see LocalPathOfSystemId); the library reads that
//     file itself, within the XML input limit, and hands the parser its bytes;
//   - bounds the input: a document is refused once more than ZnGetXMLInputLimit() bytes of it
//     have been read (xml_input_limit.h);
//   - bounds entity expansion: at most kEntityExpansionLimit entity references are expanded in
//     one document and no internal entity may hold more than kEntityValueLimit characters, so
//     the expanded text stays below their product (no "billion laughs", no quadratic blow-up);
//   - refuses elements nested deeper than kElementDepthLimit, counting every element, empty or
//     not, so that code walking the tree recursively later (serialisation, copying) cannot run
//     out of stack;
//   - keeps a DOCTYPE's internal subset in a form that reads again: the subset that Xerces
//     rebuilds for the DOM writes entity values, default attribute values and external ids
//     unescaped and unquoted, drops the '%' of a parameter entity and the names of a NOTATION
//     attribute type, so a document written back could not be parsed (and pads comments with
//     one more blank each time); this parser writes those declarations itself;
//   - turns every error, fatal or not, into the library's parse `Exception`.
//
// `Parse` throws `Exception` with the text of `ParseErrorText` on any failure and leaves the
// document with the parser otherwise, as `XercesDOMParser` does.
#ifndef ZENUTL_CONFIG_GUARDED_DOM_PARSER_H_
#define ZENUTL_CONFIG_GUARDED_DOM_PARSER_H_

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include <cstddef>
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

// The native path of the file that `systemId` names, taken relative to the folder of `baseUri`
// (or to the current folder when the base has none) where it is relative; false when it names
// no file on this machine. Blanks around the id are dropped first, as the XML parser does.
//   "config.dtd" under "/etc/app/settings.zxl"        => "/etc/app/config.dtd"
//   "sub\\config.dtd" under "memory"                  => "sub/config.dtd"
//   "file:///usr/share/a%20b.dtd", "file://localhost/usr/share/a%20b.dtd"
//                                                     => "/usr/share/a b.dtd"
//   " http://host/x.dtd", "file://host/x.dtd", "//host/share/x.dtd", "jar:file:///x!/y",
//   "x.dtd" under "http://host/base.xml", ""          => false
bool LocalPathOfSystemId(const XMLCh* systemId, const XMLCh* baseUri, std::string& nativePath);

namespace detail {

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
  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override;
  void doctypeDecl(const xercesc::DTDElementDecl& elemDecl, const XMLCh* const publicId,
                   const XMLCh* const systemId, const bool hasIntSubset,
                   const bool hasExtSubset) override;
  void endIntSubset() override;
  void startElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId,
                    const XMLCh* const elemPrefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList,
                    const XMLSize_t attrCount, const bool isEmpty, const bool isRoot) override;
  void endElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId,
                  const bool isRoot, const XMLCh* const elemPrefix) override;
  void entityDecl(const xercesc::DTDEntityDecl& entityDecl, const bool isPEDecl,
                  const bool isIgnored) override;
  void notationDecl(const xercesc::XMLNotationDecl& notDecl, const bool isIgnored) override;
  void attDef(const xercesc::DTDElementDecl& elemDecl, const xercesc::DTDAttDef& attDef,
              const bool ignoring) override;
  void doctypeComment(const XMLCh* const comment) override;

 private:
  // Moves what the base class appended to its subset since the last call into mSubset.
  void TakeBaseSubset();
  // After a base hook: when it added to the subset, `text` stands in mSubset instead.
  void ReplaceBaseSubset(XMLSize_t lengthBefore, const std::basic_string<XMLCh>& text);

  const bool mLoadExternalDtd;
  // The scanner asks for the external DTD subset right after the DOCTYPE declaration, or right
  // after its internal subset; a request at any other moment is for an external entity.
  bool mHasExternalSubset = false;
  bool mExternalSubsetNext = false;
  unsigned int mDepth = 0;
  std::size_t mInputLimit = 0;
  bool mInputTooLarge = false;
  // The internal subset as it will stand in the DOM, and how much of the base class's own
  // version of it has been taken over.
  std::basic_string<XMLCh> mSubset;
  XMLSize_t mBaseSubsetTaken = 0;
};

}  // namespace config
}  // namespace zenutl

#endif  // ZENUTL_CONFIG_GUARDED_DOM_PARSER_H_
