#include "xml_diagnosis.h"

#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <cstdio>
#include <fstream>
#include <memory>

#include "command_line.h"
#include "files.h"
#include "zenutl/istream_input_source.h"
#include "zenutl/xml_input_limit.h"

XERCES_CPP_NAMESPACE_USE

namespace zenutl_tool {
namespace {

// The parser's message in ASCII: it may quote the offending bytes of a binary file, which
// would otherwise reach the terminal as they are.
std::string Printable(const XMLCh* text) {
  std::string result;
  for (; text && *text; ++text) {
    if (*text >= 0x20 && *text < 0x7F) {
      result += static_cast<char>(*text);
    } else {
      char escaped[12];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned int>(*text));
      result += escaped;
    }
  }
  return result;
}

// Stops the scan at the first error, keeping its position and text.
class FirstProblem : public ErrorHandler {
 public:
  struct Found {};
  std::string text;

  void warning(const SAXParseException&) override {}
  void error(const SAXParseException& e) override { Record(e); }
  void fatalError(const SAXParseException& e) override { Record(e); }
  void resetErrors() override { text.clear(); }

 private:
  void Record(const SAXParseException& e) {
    text = "line " + std::to_string(e.getLineNumber()) + ", column " +
           std::to_string(e.getColumnNumber()) + ": " + Printable(e.getMessage());
    throw Found();
  }
};

// Holds the XML library for the life of the scan.
struct XmlPlatform {
  XmlPlatform() { XMLPlatformUtils::Initialize(); }
  ~XmlPlatform() { XMLPlatformUtils::Terminate(); }
};

}  // namespace

// "line 3, column 7: ..." for the first error of the file, "the file is empty", or "" when the
// scan finds none.
static std::string DescribeXmlProblem(const std::string& path) {
  std::ifstream stream(path, std::ios::in | std::ios::binary);
  if (!stream) return std::string();
  if (stream.peek() == std::char_traits<char>::eof()) return "the file is empty";
  XmlPlatform platform;
  SecurityManager limits;
  limits.setEntityExpansionLimit(10000);
  FirstProblem problem;
  {
    std::unique_ptr<SAX2XMLReader> reader(XMLReaderFactory::createXMLReader());
    reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
    reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
    reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    reader->setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    reader->setProperty(XMLUni::fgXercesSecurityManager, &limits);
    reader->setErrorHandler(&problem);
    try {
      IStreamInputSource source(stream);
      reader->parse(source);
    } catch (const FirstProblem::Found&) {
      // The first problem is all a person needs.
    } catch (const XMLException& e) {
      problem.text = Printable(e.getMessage());
    } catch (const SAXException& e) {
      problem.text = Printable(e.getMessage());
    }
  }
  return problem.text;
}

void RequireWithinXmlBound(const std::string& path) {
  const unsigned long long size = FileSize(path);
  const unsigned long long bound = ZnGetXMLInputLimit();
  if (size > bound) {
    throw FileError(path + ": too large: " + std::to_string(size) +
                    " bytes, beyond the library's bound of " + std::to_string(bound) +
                    " bytes on one XML document");
  }
}

std::string ExplainRefusedXml(const std::string& path) {
  const std::string where = DescribeXmlProblem(path);
  if (where.empty()) {
    return "the library's parser refused it (nesting too deep, too many entities, or a "
           "reference outside the file)";
  }
  return where == "the file is empty" ? where : "the XML is broken at " + where;
}

}  // namespace zenutl_tool
