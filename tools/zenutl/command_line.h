// The command line of the zenutl tool: what a command accepts, the parse of its arguments, the
// help texts, and the failures every command reports the same way.
//
// A command is a group word and, for most groups, a command word ("audit verify"); it declares
// its operands and options in a CommandSyntax, and receives them parsed as Arguments. A usage
// mistake throws UsageError, a file that can't be read or written throws FileError; the program
// turns both into a message on standard error and exit status 2. Nothing else of this file throws.
#ifndef ZENUTL_TOOLS_ZENUTL_COMMAND_LINE_H_
#define ZENUTL_TOOLS_ZENUTL_COMMAND_LINE_H_

#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace zenutl_tool {

// Exit status: success, a finding (a trail that fails its check, a key that isn't there, text
// that isn't JSON), or bad usage and unreadable input.
enum ExitStatus { kSuccess = 0, kFinding = 1, kFailure = 2 };

// A mistake in the command line; the message says which, and the program adds where to get help.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

// A file that can't be read, used or written: the message names the file and what is wrong.
class FileError : public std::runtime_error {
 public:
  explicit FileError(const std::string& message) : std::runtime_error(message) {}
};

struct OptionSyntax {
  std::string name;   // long form, without the dashes: "json"
  char shortName;     // 'o', or 0 for none
  std::string value;  // the value's name for the help ("OUT"), empty for a flag
  std::string help;
};

struct CommandSyntax {
  std::string words;     // "audit verify"; "md5" for a group of one command
  std::string operands;  // as the help shows them: "FILE..."
  std::size_t minOperands;
  std::size_t maxOperands;  // kMany for no limit
  std::string summary;      // one line
  std::string details;      // paragraphs after the usage line; may be empty
  std::vector<OptionSyntax> options;

  static const std::size_t kMany = static_cast<std::size_t>(-1);
};

class Arguments {
 public:
  bool Has(const std::string& option) const { return mGiven.count(option) != 0; }
  // The value of an option that takes one; `fallback` when it wasn't given.
  std::string Value(const std::string& option, const std::string& fallback = "") const;
  const std::vector<std::string>& Operands() const { return mOperands; }
  const std::string& Operand(std::size_t i) const { return mOperands.at(i); }
  std::size_t OperandCount() const { return mOperands.size(); }

 private:
  friend Arguments ParseArguments(const CommandSyntax&, const std::vector<std::string>&);
  std::set<std::string> mGiven;
  std::map<std::string, std::string> mValues;
  std::vector<std::string> mOperands;
};

// Options may stand anywhere among the operands: "--json", "-o OUT", "-oOUT", "--output OUT",
// "--output=OUT". "--" ends the options; "-" alone is an operand (standard input). Throws
// UsageError for an unknown option, a missing value, or too few or too many operands. The
// caller has already handled "--help".
Arguments ParseArguments(const CommandSyntax& syntax, const std::vector<std::string>& args);

// Whether the arguments ask for help ("--help" or "-h" before any "--").
bool AsksForHelp(const std::vector<std::string>& args);

// The whole help of a command: usage line, summary, details and options.
std::string HelpText(const CommandSyntax& syntax);

// The usage line alone: "usage: zenutl audit verify [--json] FILE...".
std::string UsageLine(const CommandSyntax& syntax);

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_COMMAND_LINE_H_
