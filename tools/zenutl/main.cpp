// zenutl: the library's command-line tool. Each group of commands lives in a source of its own;
// this file finds the command, hands it its parsed arguments, and turns every failure into a
// message on standard error and an exit status, so that no file and no mistake ends in a crash.
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "command_line.h"
#include "commands.h"
#include "zenutl/exception.h"

using namespace zenutl_tool;  // NOLINT: the program's own namespace

namespace {

std::vector<CommandGroup> AllGroups() {
  return {AuditCommands(), IniCommands(),    XmlCommands(),    JsonCommands(),
          Md5Commands(),   Base64Commands(), StreamsCommands()};
}

std::string ProgramHelp(const std::vector<CommandGroup>& groups) {
  std::string text =
      "usage: zenutl COMMAND [ARGUMENTS...]\n\n"
      "The zenutl library's tool: check and read audit trails, read and change settings,\n"
      "and look into the library's file formats.\n\nCommands:\n";
  for (const CommandGroup& group : groups) {
    for (const Command& command : group.commands) {
      std::string line = "  " + command.syntax.words + " " + command.syntax.operands;
      line += std::string(line.size() < 42 ? 42 - line.size() : 1, ' ');
      text += line + command.syntax.summary + "\n";
    }
  }
  text +=
      "\n'zenutl COMMAND --help' tells more about each command.\n"
      "Exit status: 0 success, 1 a finding (a trail that fails its check, a key that isn't\n"
      "there, text that isn't JSON), 2 bad usage or unreadable input.\n";
  return text;
}

std::string GroupHelp(const CommandGroup& group) {
  std::string text =
      "usage: zenutl " + group.name + " COMMAND ...\n\n" + group.summary + ".\n\nCommands:\n";
  for (const Command& command : group.commands) {
    text += "  " + UsageLine(command.syntax).substr(7) + "\n      " + command.syntax.summary + "\n";
  }
  return text + "\n'zenutl " + group.name + " COMMAND --help' tells more.\n";
}

// Where a usage mistake sends the user for help.
std::string gHelpHint = "zenutl --help";

int Run(const std::vector<std::string>& args) {
  const std::vector<CommandGroup> groups = AllGroups();
  if (args.empty()) {
    std::cerr << ProgramHelp(groups);
    return kFailure;
  }
  if (args[0] == "--help" || args[0] == "-h") {
    std::cout << ProgramHelp(groups);
    return kSuccess;
  }
  if (args[0] == "--version") {
    std::cout << "zenutl " << ZENUTL_VERSION << "\n";
    return kSuccess;
  }
  const CommandGroup* group = nullptr;
  for (const CommandGroup& candidate : groups) {
    if (candidate.name == args[0]) group = &candidate;
  }
  if (!group) throw UsageError("unknown command '" + args[0] + "'");

  const Command* command = nullptr;
  std::vector<std::string> rest;
  if (group->commands.size() == 1 && group->commands[0].syntax.words == group->name) {
    command = &group->commands[0];
    rest.assign(args.begin() + 1, args.end());
  } else {
    gHelpHint = "zenutl " + group->name + " --help";
    if (args.size() == 1 || args[1].compare(0, 1, "-") == 0) {
      if (AsksForHelp(std::vector<std::string>(args.begin() + 1, args.end()))) {
        std::cout << GroupHelp(*group);
        return kSuccess;
      }
      throw UsageError("'zenutl " + group->name + "' needs a command");
    }
    const std::string words = group->name + " " + args[1];
    for (const Command& candidate : group->commands) {
      if (candidate.syntax.words == words) command = &candidate;
    }
    if (!command) throw UsageError("unknown command '" + words + "'");
    rest.assign(args.begin() + 2, args.end());
  }
  gHelpHint = "zenutl " + command->syntax.words + " --help";
  if (AsksForHelp(rest)) {
    std::cout << HelpText(command->syntax);
    return kSuccess;
  }
  return command->run(ParseArguments(command->syntax, rest));
}

int Fail(const std::string& message) {
  std::cout.flush();
  std::cerr << "zenutl: " << message << "\n";
  return kFailure;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  int status = kFailure;
  try {
    status = Run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const UsageError& error) {
    return Fail(std::string(error.what()) + "\nTry '" + gHelpHint + "'.");
  } catch (const FileError& error) {
    return Fail(error.what());
  } catch (const Exception& error) {
    return Fail(error.RecursiveWhy().GetString());
  } catch (const std::bad_alloc&) {
    return Fail("out of memory");
  } catch (const std::exception& error) {
    return Fail(error.what());
  } catch (...) {
    return Fail("unexpected failure");
  }
  std::cout.flush();
  if (!std::cout) return Fail("could not write the standard output");
  return status;
}
