// zenutl streams list: what a stream directory container holds, read with the library's own
// StreamDirectoryReader: the declared streams, where each one lies and how large it is.
#include <cstdio>
#include <fstream>
#include <iostream>

#include "commands.h"
#include "files.h"
#include "zenutl/exception.h"
#include "zenutl/stream_directory_reader.h"
#include "zenutl/stream_reader.h"

namespace zenutl_tool {
namespace {

std::string Row(const std::string& stream, const std::string& position, const std::string& size) {
  char line[80];
  std::snprintf(line, sizeof line, "%-8s %14s %14s\n", stream.c_str(), position.c_str(),
                size.c_str());
  return line;
}

int RunList(const Arguments& arguments) {
  const std::string& path = arguments.Operand(0);
  std::ifstream file;
  OpenInputFile(path, file);
  const unsigned long long fileSize = FileSize(path);
  std::string listing = Row("stream", "position", "bytes");
  unsigned int present = 0;
  try {
    StreamReader reader(file);
    StreamDirectoryReader directory(reader);
    const long long end = directory.GetEndPosition();
    if (static_cast<unsigned long long>(end) > fileSize) {
      throw FileError(path + ": damaged stream directory: it ends at byte " + std::to_string(end) +
                      " but the file has " + std::to_string(fileSize) + " bytes");
    }
    for (unsigned int index = 0; index < directory.GetStreamCount(); ++index) {
      StreamDirectoryReader::Extent extent{};
      if (!directory.GetStreamExtent(index, extent)) {
        listing += Row(std::to_string(index), "absent", "");
        continue;
      }
      ++present;
      listing +=
          Row(std::to_string(index), std::to_string(extent.position), std::to_string(extent.size));
    }
    listing += std::to_string(directory.GetStreamCount()) + " streams declared, " +
               std::to_string(present) + " present; the container ends at byte " +
               std::to_string(end) + " of " + std::to_string(fileSize) + "\n";
  } catch (const StreamException& e) {
    throw FileError(path + ": not a stream directory container: " + e.Why().GetString());
  }
  std::cout << listing;
  return kSuccess;
}

}  // namespace

CommandGroup StreamsCommands() {
  CommandGroup group{"streams", "look into stream directory containers", {}};
  group.commands.push_back(
      {{"streams list",
        "FILE",
        1,
        1,
        "List the sub-streams of the stream directory container at the start of FILE.",
        "For each declared stream number: its position in the file and its size in bytes, or\n"
        "'absent' for a number that was never written. The container records only where each\n"
        "stream begins: a stream reaches to the next one's start or to the container's end.",
        {}},
       &RunList});
  return group;
}

}  // namespace zenutl_tool
