#include "language/resource_catalogue.h"

namespace zenutl {
namespace language {
namespace {

struct BuiltInText {
  unsigned int id;
  const char* text;
};

// English texts for every number the library asks for itself. An application's own module
// replaces them all once it is selected. The arguments of the formats are fixed by the callers:
// one string for 17057, 17063, 17064 and the folder messages, two for 17058, a string and an
// unsigned number for 17065. Texts shown without formatting hold no '%'.
const BuiltInText kTexts[] = {
    // Name and value validators.
    {17054, "The text has not been checked yet."},
    {17055, "Invalid Input"},
    {17056, "The text is valid."},
    {17057, "%s cannot be empty."},
    {17058, "%s cannot contain any of these characters: %s"},
    {17059, "An investigation name"},
    {17060, "A variable name"},
    {17061, "A number"},
    {17062, "Please enter a number."},
    {17063, "'%s' is not a valid number."},
    {17064, "%s cannot consist of spaces only."},
    {17065, "%s cannot be longer than %u characters."},
    {17066, "An observation name"},
    {17067, "A variable name"},
    {17070, "A dataset name"},
    {17071, "A model name"},
    {17093, "A file name"},
    // Folder selection: status lines of the browser, then the questions and errors of
    // validating a folder, each followed by its caption.
    {17074, "%s is on a CD drive, which cannot be written to."},
    {17075, "%s is read-only."},
    {17076, "%s is not a folder in the file system."},
    {17077, "The drive of %s is not ready."},
    {17078, "Select a folder"},
    {17079, "%s exists, but it is not a folder."},
    {17080, "Invalid Folder"},
    {17081, "The folder %s does not exist. Do you want to create it?"},
    {17082, "Create Folder"},
    {17083, "A folder name cannot begin or end with a space."},
    {17084, "Invalid Folder Name"},
    {17085, "The folder could not be created."},
    {17086, "Folder Not Created"},
    // The answers a user channel reports having given: yes, yes to all, no, no to all, cancel,
    // and anything else.
    {0x42BF, "Yes"},
    {0x42C0, "Yes to all"},
    {0x42C1, "No"},
    {0x42C2, "No to all"},
    {0x42C3, "Cancel"},
    {0x42C4, "Unknown answer"},
    // An embedded resource (an XML configuration) that can not be found or read.
    {0xF022, "The resource could not be loaded."},
};

ZnModule* MakeBuiltInCatalogue() {
  ZnModule* module = new ZnModule;
  for (const BuiltInText& entry : kTexts) module->strings.emplace(entry.id, entry.text);
  return module;
}

}  // namespace

const ZnModule& BuiltInCatalogue() {
  // Never destroyed: texts may be asked for while other static objects go away.
  static const ZnModule* const sCatalogue = MakeBuiltInCatalogue();
  return *sCatalogue;
}

}  // namespace language
}  // namespace zenutl
