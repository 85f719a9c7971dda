#include "platform/resource_handle.h"

#include "zenutl/language_string.h"

namespace zenutl {
namespace platform {

HINSTANCE CurrentResourceModule() {
  return LanguageString::GetResourceInstance();
}

}  // namespace platform
}  // namespace zenutl
