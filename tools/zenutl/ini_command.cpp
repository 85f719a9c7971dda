// zenutl ini get|set|delete|list: an administrator's view of an INI file, through the library's
// own IniFileSection, so the tool reads and writes exactly as the applications do.
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iostream>

#include "commands.h"
#include "files.h"
#include "zenutl/ini_file_section.h"

namespace zenutl_tool {
namespace {

// Refuses a file that isn't there or can't be read: the store itself would read it as empty.
void RequireReadable(const std::string& path) {
  std::ifstream stream;
  OpenInputFile(path, stream);
}

// Why a write was refused: the system's reason when the file or its folder can't be written,
// otherwise the texts an INI file can't hold.
FileError WriteFailure(const std::string& path, const std::string& what) {
  const std::size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const bool exists = ::access(path.c_str(), F_OK) == 0;
  if (::access(exists ? path.c_str() : folder.c_str(), W_OK) != 0) {
    return FileError(SystemErrorText(path, errno));
  }
  return FileError(path + ": could not " + what +
                   ": an INI file can't hold a line break, ']' in a section name or '=' in a "
                   "key name");
}

void Flush(const IniFileSection& section, const std::string& path) {
  if (!section.Flush()) throw FileError(path + ": the change could not be synced to the disk");
}

std::string Quoted(const std::string& section, const std::string& key) {
  return "key '" + key + "' in section [" + section + "]";
}

int RunGet(const Arguments& arguments) {
  const std::string& path = arguments.Operand(0);
  RequireReadable(path);
  IniFileSection section(path.c_str(), arguments.Operand(1).c_str());
  CString value;
  if (!section.ReadKey(arguments.Operand(2).c_str(), value)) {
    std::cerr << "zenutl: " << path << ": no " << Quoted(arguments.Operand(1), arguments.Operand(2))
              << "\n";
    return kFinding;
  }
  std::cout << value.GetString() << "\n";
  return kSuccess;
}

int RunSet(const Arguments& arguments) {
  const std::string& path = arguments.Operand(0);
  if (::access(path.c_str(), F_OK) == 0) RequireReadable(path);  // a folder, say
  IniFileSection section(path.c_str(), arguments.Operand(1).c_str());
  if (!section.WriteKey(arguments.Operand(2).c_str(), arguments.Operand(3).c_str())) {
    throw WriteFailure(path, "store " + Quoted(arguments.Operand(1), arguments.Operand(2)));
  }
  Flush(section, path);
  return kSuccess;
}

int RunDelete(const Arguments& arguments) {
  const std::string& path = arguments.Operand(0);
  const std::string& name = arguments.Operand(1);
  RequireReadable(path);
  IniFileSection section(path.c_str(), name.c_str());
  if (arguments.OperandCount() == 3) {
    const std::string& key = arguments.Operand(2);
    if (!section.HasKey(key.c_str())) {
      std::cerr << "zenutl: " << path << ": no " << Quoted(name, key) << "\n";
      return kFinding;
    }
    if (!section.DeleteKey(key.c_str())) throw WriteFailure(path, "delete " + Quoted(name, key));
  } else {
    if (!section.HasSection(name.c_str(), 0)) {
      std::cerr << "zenutl: " << path << ": no section [" << name << "]\n";
      return kFinding;
    }
    if (!section.DeleteSection()) throw WriteFailure(path, "delete section [" + name + "]");
  }
  Flush(section, path);
  return kSuccess;
}

int RunList(const Arguments& arguments) {
  const std::string& path = arguments.Operand(0);
  RequireReadable(path);
  if (arguments.OperandCount() == 1) {
    IniFileSection file(path.c_str(), "");
    for (const CString& name : file.GetSectionNames())
      std::cout << "[" << name.GetString() << "]\n";
    return kSuccess;
  }
  const std::string& name = arguments.Operand(1);
  IniFileSection section(path.c_str(), name.c_str());
  const std::vector<CString> keys = section.GetKeyNames();
  if (keys.empty()) {
    std::cerr << "zenutl: " << path << ": no section [" << name << "]\n";
    return kFinding;
  }
  for (const CString& key : keys) {
    CString value;
    section.ReadKey(key, value);
    std::cout << key.GetString() << "=" << value.GetString() << "\n";
  }
  return kSuccess;
}

}  // namespace

CommandGroup IniCommands() {
  const char* kNames =
      "Section and key names compare without regard to case. A missing key or section is a\n"
      "finding: exit status 1.";
  CommandGroup group{"ini", "read and change INI files", {}};
  group.commands.push_back(
      {{"ini get", "FILE SECTION KEY", 3, 3, "Print the value of KEY in SECTION.", kNames, {}},
       &RunGet});
  group.commands.push_back({{"ini set",
                             "FILE SECTION KEY VALUE",
                             4,
                             4,
                             "Set KEY in SECTION to VALUE, creating the file if needed.",
                             "The file is replaced in one step, as the applications write it.",
                             {}},
                            &RunSet});
  group.commands.push_back({{"ini delete",
                             "FILE SECTION [KEY]",
                             2,
                             3,
                             "Delete KEY from SECTION, or the whole SECTION.",
                             kNames,
                             {}},
                            &RunDelete});
  group.commands.push_back({{"ini list",
                             "FILE [SECTION]",
                             1,
                             2,
                             "List the sections of FILE, or the keys of SECTION as KEY=VALUE.",
                             kNames,
                             {}},
                            &RunList});
  return group;
}

}  // namespace zenutl_tool
