// The C runtime's locale switch, behind one replaceable function.
//
// The decimal-separator machinery changes the process's numeric locale with `setlocale`. It calls
// it only through `SetRuntimeLocale`, so that tests can watch or refuse the calls: install a
// replacement with `ReplaceSetLocale` and put the previous one back when done.
#ifndef ZENUTL_PLATFORM_RUNTIME_LOCALE_H_
#define ZENUTL_PLATFORM_RUNTIME_LOCALE_H_

namespace zenutl {
namespace platform {

typedef char* (*SetLocaleFunction)(int category, const char* name);

// Stands for the runtime's setlocale; on Linux it is glibc's setlocale, which knows only the
// locales generated on the machine (no "fra"-style short names).
char* SetRuntimeLocale(int category, const char* name);

// Routes SetRuntimeLocale to `replacement` (null restores the runtime's own) and returns the
// function in use before.
SetLocaleFunction ReplaceSetLocale(SetLocaleFunction replacement);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_RUNTIME_LOCALE_H_
