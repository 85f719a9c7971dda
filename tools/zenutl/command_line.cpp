#include "command_line.h"

#include <sstream>

namespace zenutl_tool {
namespace {

const OptionSyntax* FindLong(const CommandSyntax& syntax, const std::string& name) {
  for (const OptionSyntax& option : syntax.options) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

const OptionSyntax* FindShort(const CommandSyntax& syntax, char name) {
  for (const OptionSyntax& option : syntax.options) {
    if (option.shortName != 0 && option.shortName == name) return &option;
  }
  return nullptr;
}

std::string OptionUsage(const OptionSyntax& option) {
  std::string text = option.shortName ? std::string("-") + option.shortName : "--" + option.name;
  if (!option.value.empty()) text += " " + option.value;
  return text;
}

}  // namespace

std::string Arguments::Value(const std::string& option, const std::string& fallback) const {
  auto found = mValues.find(option);
  return found == mValues.end() ? fallback : found->second;
}

bool AsksForHelp(const std::vector<std::string>& args) {
  for (const std::string& arg : args) {
    if (arg == "--") return false;
    if (arg == "--help" || arg == "-h") return true;
  }
  return false;
}

Arguments ParseArguments(const CommandSyntax& syntax, const std::vector<std::string>& args) {
  Arguments parsed;
  bool optionsEnded = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (optionsEnded || arg == "-" || arg.empty() || arg[0] != '-') {
      parsed.mOperands.push_back(arg);
      continue;
    }
    if (arg == "--") {
      optionsEnded = true;
      continue;
    }
    const OptionSyntax* option = nullptr;
    std::string value;
    bool hasValue = false;
    if (arg.compare(0, 2, "--") == 0) {
      const std::size_t equals = arg.find('=');
      option = FindLong(syntax, arg.substr(2, equals == std::string::npos ? equals : equals - 2));
      if (equals != std::string::npos) {
        value = arg.substr(equals + 1);
        hasValue = true;
      }
    } else {
      option = FindShort(syntax, arg[1]);
      if (arg.size() > 2) {
        value = arg.substr(2);
        hasValue = true;
      }
    }
    if (!option) throw UsageError("unknown option '" + arg + "'");
    if (option->value.empty()) {
      if (hasValue) throw UsageError("option '--" + option->name + "' takes no value");
    } else if (!hasValue) {
      if (i + 1 == args.size()) throw UsageError("option '" + arg + "' needs a value");
      value = args[++i];
    }
    parsed.mGiven.insert(option->name);
    parsed.mValues[option->name] = value;
  }
  const std::size_t count = parsed.mOperands.size();
  if (count < syntax.minOperands) {
    throw UsageError(syntax.minOperands - count == 1 &&
                             syntax.operands.find(' ') == std::string::npos
                         ? "missing " + syntax.operands
                         : "missing operands: expected " + syntax.operands);
  }
  if (count > syntax.maxOperands) {
    throw UsageError("unexpected operand '" + parsed.mOperands[syntax.maxOperands] + "'");
  }
  return parsed;
}

std::string UsageLine(const CommandSyntax& syntax) {
  std::string line = "usage: zenutl " + syntax.words;
  for (const OptionSyntax& option : syntax.options) line += " [" + OptionUsage(option) + "]";
  if (!syntax.operands.empty()) line += " " + syntax.operands;
  return line;
}

std::string HelpText(const CommandSyntax& syntax) {
  std::ostringstream text;
  text << UsageLine(syntax) << "\n\n" << syntax.summary << "\n";
  if (!syntax.details.empty()) text << "\n" << syntax.details << "\n";
  text << "\nOptions:\n";
  for (const OptionSyntax& option : syntax.options) {
    std::string forms = option.shortName ? std::string("-") + option.shortName + ", " : "    ";
    forms += "--" + option.name + (option.value.empty() ? "" : " " + option.value);
    text << "  " << forms << std::string(forms.size() < 22 ? 22 - forms.size() : 1, ' ')
         << option.help << "\n";
  }
  text << "  -h, --help            show this help\n";
  text << "\nExit status: 0 success, 1 a finding, 2 bad usage or unreadable input.\n";
  return text.str();
}

}  // namespace zenutl_tool
