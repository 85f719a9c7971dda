// zenutl json check|pretty: placeholder until the library's JSON parser is available.
#include "commands.h"

namespace zenutl_tool {

CommandGroup JsonCommands() {
  return CommandGroup{"json", "check and indent JSON text", {}};
}

}  // namespace zenutl_tool
