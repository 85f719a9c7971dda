// The commands of the zenutl tool, group by group. Each group lives in a source of its own
// (audit_command.cpp, ini_command.cpp, ...) and hands the program its commands here.
#ifndef ZENUTL_TOOLS_ZENUTL_COMMANDS_H_
#define ZENUTL_TOOLS_ZENUTL_COMMANDS_H_

#include <string>
#include <vector>

#include "command_line.h"

namespace zenutl_tool {

struct Command {
  CommandSyntax syntax;
  // Runs the command on parsed arguments and answers its exit status. May throw UsageError and
  // FileError; the program reports them.
  int (*run)(const Arguments& arguments);
};

struct CommandGroup {
  std::string name;  // "audit"
  std::string summary;
  std::vector<Command> commands;  // one with syntax.words == name for a group without sub-commands
};

CommandGroup AuditCommands();
CommandGroup IniCommands();
CommandGroup XmlCommands();
CommandGroup JsonCommands();
CommandGroup Md5Commands();
CommandGroup Base64Commands();
CommandGroup StreamsCommands();

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_COMMANDS_H_
