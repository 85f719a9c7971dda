// WriteXMLFile: serialises a DOM node, or a whole document, into a stream or a string.
//
// This is the one serialisation path of the library: the XML configuration store and the audit
// trail write through it. The Xerces-C `DOMLSSerializer` does the work with its own defaults for
// line ends and encoding (the document's own encoding, else UTF-8), with CDATA sections split
// where needed and attributes that only repeat their declared default left out. A document node
// gives the XML declaration first. With `prettyPrint` the output is indented, one element to a
// line; without it no line break is added. No filter is installed, so every element is written.
//
// Xerces must be initialised (`XMLSection::Initialize` or `XMLPlatformUtils::Initialize`).
// Error contract: the result is false when the serialiser fails; nothing throws except
// allocation failures. A failing stream is not noticed here; the stream's state tells.
#ifndef ZENUTL_WRITE_XML_FILE_H_
#define ZENUTL_WRITE_XML_FILE_H_

#include <xercesc/dom/DOMNode.hpp>

#include <ostream>

#include "zenutl/cstring.h"

// Writes `node` and its subtree to `stream`. A document read in an encoding that the parser
// would not read back as the serialiser writes it (UTF-7, and others only the system's
// converters know) is written in UTF-8 instead, its declaration saying so: what the library
// writes, it can read. A null node answers false.
bool WriteXMLFile(std::ostream& stream, xercesc::DOMNode const* node, bool prettyPrint);
// Appends `node` and its subtree to `text`, always in UTF-8 like every narrow text of the
// library: a document read from UTF-16 is given as UTF-8 text, its declaration saying so.
bool WriteXMLFile(CString& text, xercesc::DOMNode const* node, bool prettyPrint);

#endif  // ZENUTL_WRITE_XML_FILE_H_
