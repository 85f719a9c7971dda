// Where and why a file is not well-formed XML, for messages that help a person fix it.
//
// The library's parsers report a failed parse in the terse form the applications have always
// shown; after one of them refused a file, the tool reads it once more with a plain SAX scan to
// say where the first error lies. The scan loads no DTD and resolves no external entity, so it
// never reaches beyond the file itself.
#ifndef ZENUTL_TOOLS_ZENUTL_XML_DIAGNOSIS_H_
#define ZENUTL_TOOLS_ZENUTL_XML_DIAGNOSIS_H_

#include <string>

namespace zenutl_tool {

// Throws FileError when the file at `path` is larger than the library reads of one XML document
// (xml_input_limit.h): the parse would be refused, and the message should say why.
void RequireWithinXmlBound(const std::string& path);

// Why the library refused the file at `path`, after a parse failed: "the XML is broken at
// line 3, column 7: expected end of tag 'Session'", "the file is empty", or, when the scan finds
// the XML sound, the library's own reasons (nesting deeper than it allows, a reference outside
// the file).
std::string ExplainRefusedXml(const std::string& path);

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_XML_DIAGNOSIS_H_
