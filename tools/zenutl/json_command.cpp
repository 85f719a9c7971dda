// zenutl json check|pretty: JSON text read with the library's parser, and written back with its
// indented writer.
#include <iostream>

#include "commands.h"
#include "files.h"
#include "zenutl/json_value.h"

namespace zenutl_tool {
namespace {

std::string InputOf(const Arguments& arguments) {
  return arguments.OperandCount() ? arguments.Operand(0) : "-";
}

int RunCheck(const Arguments& arguments) {
  const std::string path = InputOf(arguments);
  const std::string text = ReadWholeInput(path);
  try {
    json_value::parse(text);
  } catch (const json_parse_exception& error) {
    std::cout << DisplayName(path) << ": not valid JSON: " << error.what() << "\n";
    return kFinding;
  }
  std::cout << DisplayName(path) << ": valid JSON\n";
  return kSuccess;
}

unsigned int IndentOf(const Arguments& arguments) {
  const std::string text = arguments.Value("indent", "2");
  if (text.empty() || text.size() > 2 ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    throw UsageError("--indent takes a number of blanks from 0 to 99, not '" + text + "'");
  }
  return static_cast<unsigned int>(std::stoi(text));
}

int RunPretty(const Arguments& arguments) {
  const unsigned int indent = IndentOf(arguments);
  const std::string path = InputOf(arguments);
  const std::string text = ReadWholeInput(path);
  json_value value;
  try {
    value = json_value::parse(text);
  } catch (const json_parse_exception& error) {
    throw FileError(DisplayName(path) + ": not valid JSON: " + error.what());
  }
  std::cout << value.to_pretty_string(indent) << "\n";
  return kSuccess;
}

}  // namespace

CommandGroup JsonCommands() {
  CommandGroup group{"json", "check and indent JSON text", {}};
  group.commands.push_back(
      {{"json check",
        "[FILE]",
        0,
        1,
        "Tell whether FILE (or standard input) holds one JSON document.",
        "Text that isn't JSON is a finding: exit status 1, with what is wrong and where.\n"
        "Beyond the grammar, the parser refuses invalid UTF-8 and nesting deeper than 10,000.",
        {}},
       &RunCheck});
  group.commands.push_back(
      {{"json pretty",
        "[FILE]",
        0,
        1,
        "Write the JSON document in FILE (or standard input) indented, one value a line.",
        "Members come out sorted by key, and numbers as the library writes them (%.16g).\n"
        "Text that isn't JSON is refused with exit status 2.",
        {{"indent", 0, "N", "blanks per level (default 2)"}}},
       &RunPretty});
  return group;
}

}  // namespace zenutl_tool
