// zenutl xml get|list: reading an XML configuration file through the library's XMLSection, the
// store the applications keep their settings in. Sections are elements and keys are their
// attributes; a PATH names sections from the root down, "Settings/Recent[2]/File".
#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/TransService.hpp>

#include <iostream>
#include <map>
#include <memory>

#include "commands.h"
#include "files.h"
#include "xml_diagnosis.h"
#include "zenutl/exception.h"
#include "zenutl/xml_section.h"

XERCES_CPP_NAMESPACE_USE

namespace zenutl_tool {
namespace {

// DOM text as UTF-8, the form of every narrow text of the library.
std::string Narrow(const XMLCh* text) {
  if (!text) return std::string();
  TranscodeToStr utf8(text, "UTF-8");
  return reinterpret_cast<const char*>(utf8.str());
}

struct PathStep {
  std::string name;
  int index;  // from 1
};

// "Settings/Recent[2]" => {Settings, 1}, {Recent, 2}. Throws UsageError for an empty step or a
// bad index.
std::vector<PathStep> ParsePath(const std::string& path) {
  std::vector<PathStep> steps;
  std::size_t start = 0;
  while (start <= path.size() && !path.empty()) {
    std::size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    std::string step = path.substr(start, end - start);
    int index = 1;
    const std::size_t bracket = step.find('[');
    if (bracket != std::string::npos) {
      const std::string number = step.substr(bracket + 1, step.size() - bracket - 2);
      if (step.back() != ']' || number.empty() ||
          number.find_first_not_of("0123456789") != std::string::npos || number.size() > 9 ||
          std::stoi(number) < 1) {
        throw UsageError("bad index in '" + step + "': write Name[N] with N from 1");
      }
      index = std::stoi(number);
      step.erase(bracket);
    }
    if (step.empty()) throw UsageError("empty name in the path '" + path + "'");
    steps.push_back({step, index});
    start = end + 1;
  }
  return steps;
}

std::string StepText(const PathStep& step) {
  return step.index == 1 ? step.name : step.name + "[" + std::to_string(step.index) + "]";
}

std::unique_ptr<XMLSection> OpenDocument(const std::string& path) {
  std::ifstream stream;
  OpenInputFile(path, stream);
  RequireWithinXmlBound(path);
  try {
    return std::unique_ptr<XMLSection>(new XMLSection(stream, false));
  } catch (const Exception&) {
    throw FileError(path + ": " + ExplainRefusedXml(path));
  }
}

// Moves `section` down along `steps`; false, with the step that is missing, if one is absent.
bool Walk(XMLSection& section, const std::vector<PathStep>& steps, std::string& reached) {
  for (const PathStep& step : steps) {
    if (!section.ChangeSubSection(step.name.c_str(), step.index)) {
      reached += (reached.empty() ? "" : "/") + StepText(step);
      return false;
    }
    reached += (reached.empty() ? "" : "/") + StepText(step);
  }
  return true;
}

int RunGet(const Arguments& arguments) {
  const std::string& file = arguments.Operand(0);
  std::vector<PathStep> steps = ParsePath(arguments.Operand(1));
  if (steps.size() < 2) throw UsageError("the path needs a section and a key: SECTION/.../KEY");
  const PathStep key = steps.back();
  steps.pop_back();
  if (key.index != 1) throw UsageError("a key has no index: '" + StepText(key) + "'");
  std::unique_ptr<XMLSection> section = OpenDocument(file);
  std::string reached;
  if (!Walk(*section, steps, reached)) {
    std::cerr << "zenutl: " << file << ": no section " << reached << "\n";
    return kFinding;
  }
  std::string value;
  if (!section->ReadKey(key.name.c_str(), value)) {
    std::cerr << "zenutl: " << file << ": no key '" << key.name << "' in " << reached << "\n";
    return kFinding;
  }
  std::cout << value << "\n";
  return kSuccess;
}

// Keys as KEY=VALUE, then the sub-sections as NAME/ (NAME[N]/ where the name repeats).
void ListNode(const DOMNode* node) {
  if (const DOMNamedNodeMap* attributes = node->getAttributes()) {
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      const DOMNode* attribute = attributes->item(i);
      std::cout << Narrow(attribute->getNodeName()) << "=" << Narrow(attribute->getNodeValue())
                << "\n";
    }
  }
  std::map<std::string, int> counts;
  for (const DOMNode* child = node->getFirstChild(); child; child = child->getNextSibling()) {
    if (child->getNodeType() == DOMNode::ELEMENT_NODE) ++counts[Narrow(child->getNodeName())];
  }
  std::map<std::string, int> seen;
  for (const DOMNode* child = node->getFirstChild(); child; child = child->getNextSibling()) {
    if (child->getNodeType() != DOMNode::ELEMENT_NODE) continue;
    const std::string name = Narrow(child->getNodeName());
    const int number = ++seen[name];
    std::cout << name << (counts[name] > 1 ? "[" + std::to_string(number) + "]" : "") << "/\n";
  }
}

int RunList(const Arguments& arguments) {
  const std::string& file = arguments.Operand(0);
  const std::vector<PathStep> steps =
      ParsePath(arguments.OperandCount() > 1 ? arguments.Operand(1) : "");
  std::unique_ptr<XMLSection> section = OpenDocument(file);
  std::string reached;
  if (!Walk(*section, steps, reached)) {
    std::cerr << "zenutl: " << file << ": no section " << reached << "\n";
    return kFinding;
  }
  ListNode(section->GetCurrentSection()->mpNode);
  return kSuccess;
}

}  // namespace

CommandGroup XmlCommands() {
  const char* kPaths =
      "PATH names sections (elements) from the root element down, separated by '/'; where\n"
      "several share a name, NAME[N] picks the N-th, from 1. Keys are the attributes of a\n"
      "section. A missing section or key is a finding: exit status 1. The store reaches\n"
      "only sections whose names are plain ASCII; others are listed but can't be entered.";
  CommandGroup group{"xml", "read XML configuration files", {}};
  group.commands.push_back({{"xml get",
                             "FILE PATH",
                             2,
                             2,
                             "Print the key at the end of PATH (SECTION/.../KEY).",
                             kPaths,
                             {}},
                            &RunGet});
  group.commands.push_back(
      {{"xml list",
        "FILE [PATH]",
        1,
        2,
        "List the keys (KEY=VALUE) and sub-sections (NAME/) of the section at PATH.",
        std::string(kPaths) + "\nWithout PATH, lists the root element.",
        {}},
       &RunList});
  return group;
}

}  // namespace zenutl_tool
