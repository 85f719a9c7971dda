// The size bound on XML that the library reads from outside.
//
// Configuration files, configuration strings, embedded resources and audit trails come from
// users and from other programs, and a DOM takes ten to twenty times the size of its text in
// memory. So every document the library parses (the parsing constructors of XMLSection,
// `XMLSection::CreateXMLSectionFromString`, `AuditTrail::Load`, `Read` and `CopyContent`) is
// refused once more than this many bytes of it have been read; so is a local external DTD that
// an XMLSection loads on request, counted on its own. The default, 128 MiB, is far beyond any
// configuration file and holds an audit trail of several hundred thousand events; an
// application with larger trails raises it at start-up.
//
// A refused document takes the failure path of the operation that read it: XMLSection throws the
// parse `Exception` ("An error occurred during parsing\nMessage: D"), `AuditTrail::Read` throws
// "AuditTrail::Read failed\n...", and `AuditTrail::Load` reports the trail as unreadable.
//
// Error contract: neither function fails or throws. The bound is process-wide and may be changed
// from any thread; a parse uses the value in force when it starts.
#ifndef ZENUTL_XML_INPUT_LIMIT_H_
#define ZENUTL_XML_INPUT_LIMIT_H_

#include <cstddef>

// The default bound, in bytes.
constexpr std::size_t kZnDefaultXMLInputLimit = std::size_t{128} << 20;

// The bound in force, in bytes.
std::size_t ZnGetXMLInputLimit();
// Sets the bound to `bytes` (0 means the default) and returns the one it replaces.
std::size_t ZnSetXMLInputLimit(std::size_t bytes);

#endif  // ZENUTL_XML_INPUT_LIMIT_H_
