// The in-memory form of a resource module, and the reader of its catalogue file.
//
// A module is two tables: numbered texts, and binary resources numbered by type and id. The
// public face (load, free, look up) is in zenutl/resource_module.h; the file format is described
// there too. This header is internal to the library.
#ifndef ZENUTL_LANGUAGE_RESOURCE_CATALOGUE_H_
#define ZENUTL_LANGUAGE_RESOURCE_CATALOGUE_H_

#include <map>
#include <string>
#include <utility>

struct ZnModule {
  std::map<unsigned int, std::string> strings;
  // Keyed by (type, id).
  std::map<std::pair<unsigned int, unsigned int>, std::string> resources;
};

namespace zenutl {
namespace language {

// Reads a whole catalogue text into `module`. `folder` is the native folder that relative file
// paths start from; `name` names the catalogue in messages. On failure returns false with a
// reason in `error` ("<name>:<line>: <what>"); `module` may then be partly filled and must be
// thrown away.
bool ParseCatalogue(const std::string& content, const std::string& folder, const std::string& name,
                    ZnModule& module, std::string& error);

// The English texts the library itself uses, answering for a null module.
const ZnModule& BuiltInCatalogue();

}  // namespace language
}  // namespace zenutl

#endif  // ZENUTL_LANGUAGE_RESOURCE_CATALOGUE_H_
