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

// "line 3, column 7: expected end of tag 'Session'" for the first error in the file at `path`,
// "the file is empty", or "" when the scan finds none (the library refused the file for a reason of its own, such as
// nesting deeper than it allows or a reference to another machine).
std::string DescribeXmlProblem(const std::string& path);

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_XML_DIAGNOSIS_H_
