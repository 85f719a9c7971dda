#include "platform/locale_time_layouts.h"

#include <langinfo.h>
#include <locale.h>

#include <memory>
#include <type_traits>

namespace zenutl {
namespace platform {
namespace {

const char* LocaleNameOf(unsigned long languageId) {
  switch (languageId) {
    case 0x000C:
      return "fr_FR.UTF-8";
    case 0x0009:
      return "en_US.UTF-8";
    case 0x0007:
      return "de_DE.UTF-8";
    case 0x001D:
      return "sv_SE.UTF-8";
    default:
      return nullptr;
  }
}

// The named locale, or the user's, falling back to "C" as the C library does at start-up.
locale_t OpenTimeLocale(unsigned long languageId) {
  const char* name = LocaleNameOf(languageId);
  if (name != nullptr) return newlocale(LC_TIME_MASK, name, nullptr);
  const locale_t user = newlocale(LC_TIME_MASK, "", nullptr);
  return user != nullptr ? user : newlocale(LC_TIME_MASK, "C", nullptr);
}

struct LocaleDeleter {
  void operator()(locale_t locale) const { freelocale(locale); }
};

}  // namespace

bool LocaleTimeLayoutsOf(unsigned long languageId, LocaleTimeLayouts* layouts) {
  const std::unique_ptr<std::remove_pointer<locale_t>::type, LocaleDeleter> locale(
      OpenTimeLocale(languageId));
  if (locale == nullptr) return false;
  layouts->date = nl_langinfo_l(D_FMT, locale.get());
  layouts->dateAndTime = nl_langinfo_l(_DATE_FMT, locale.get());
  layouts->time = nl_langinfo_l(T_FMT, locale.get());
  layouts->twelveHourTime = nl_langinfo_l(T_FMT_AMPM, locale.get());
  return true;
}

}  // namespace platform
}  // namespace zenutl
