#include "platform/runtime_locale.h"

#include <atomic>
#include <clocale>

namespace zenutl {
namespace platform {
namespace {

char* RuntimeSetLocale(int category, const char* name) {
  return std::setlocale(category, name);
}

std::atomic<SetLocaleFunction> gSetLocale{&RuntimeSetLocale};

}  // namespace

char* SetRuntimeLocale(int category, const char* name) {
  return gSetLocale.load()(category, name);
}

SetLocaleFunction ReplaceSetLocale(SetLocaleFunction replacement) {
  return gSetLocale.exchange(replacement ? replacement : &RuntimeSetLocale);
}

}  // namespace platform
}  // namespace zenutl
