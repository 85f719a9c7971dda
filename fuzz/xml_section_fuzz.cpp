// XMLSection from a string: the parser and its guards on arbitrary documents.
//
// Invariants beyond "no crash": text is either refused with the parse Exception or becomes a
// section; a parsed document copies into a new section with WriteToSection and pretty-prints; its
// plain serialised form parses again and serialises to the same text. The last holds for the
// encodings Xerces implements itself: others go through the system's transcoder, whose UTF-7,
// for one, does not read back what it writes.
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/util/XMLString.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include "zenutl/exception.h"
#include "zenutl/write_xml_file.h"
#include "zenutl/xml_input_limit.h"
#include "zenutl/xml_section.h"

namespace {

bool HasOwnEncoding(const XMLSection& section) {
  const auto* document =
      dynamic_cast<const xercesc::DOMDocument*>(section.GetCurrentSection()->mpNode);
  const XMLCh* encoding = document ? document->getInputEncoding() : nullptr;
  if (encoding == nullptr) return false;
  for (const XMLCh* own : {u"UTF-8", u"UTF-16", u"UTF-16LE", u"UTF-16BE", u"US-ASCII",
                           u"ISO-8859-1", u"ISO-10646-UCS-4"}) {
    if (xercesc::XMLString::compareIString(encoding, own) == 0) return true;
  }
  return false;
}

std::unique_ptr<XMLSection> Parse(const std::string& text) {
  try {
    return std::unique_ptr<XMLSection>(XMLSection::CreateXMLSectionFromString(text.c_str()));
  } catch (const Exception&) {
    return nullptr;
  }
}

std::unique_ptr<XMLSection> ParseBytes(const std::string& bytes) {
  std::istringstream in(bytes);
  try {
    return std::unique_ptr<XMLSection>(new XMLSection(in, true));
  } catch (const Exception&) {
    return nullptr;
  }
}

// The whole document without pretty printing, which would add white space at every round, and
// into a stream, which keeps the zero bytes of a UTF-16 document.
std::string Serialised(const XMLSection& section) {
  std::ostringstream text;
  if (!WriteXMLFile(text, section.GetCurrentSection()->mpNode, false)) std::abort();
  return text.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The bound keeps every input quick; it is part of what is tested.
  static const std::size_t previous = ZnSetXMLInputLimit(1 << 20);
  (void)previous;
  std::string text(reinterpret_cast<const char*>(data), size);
  text = text.c_str();
  const std::unique_ptr<XMLSection> section = Parse(text);
  if (!section) return 0;

  XMLSection copy;
  if (!section->WriteToSection(&copy)) std::abort();
  CString pretty;
  if (!section->Flush(pretty, false)) std::abort();
  if (!HasOwnEncoding(*section)) return 0;
  const std::string once = Serialised(*section);
  const std::unique_ptr<XMLSection> again = ParseBytes(once);
  if (!again || Serialised(*again) != once) std::abort();
  return 0;
}
