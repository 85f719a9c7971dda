// The resource module that the library's own resource lookups read from.
#ifndef ZENUTL_PLATFORM_RESOURCE_HANDLE_H_
#define ZENUTL_PLATFORM_RESOURCE_HANDLE_H_

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// Stands for the framework's AfxGetResourceHandle (the resource handle of the current module
// state): here the module the application selected with LanguageString::SetResourceInstance,
// null (the built-in catalogue) until it selects one.
HINSTANCE CurrentResourceModule();

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_RESOURCE_HANDLE_H_
