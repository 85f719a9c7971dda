// The date and time layouts of a language, as GetLocaleInfoW gives its date and time pictures.
//
// Windows answers from its own locale tables by language identifier. Here the answer comes from
// the C library's locale data, as strftime-style layouts: the identifiers of French (0x000C),
// English (0x0009), German (0x0007) and Swedish (0x001D) stand for fr_FR, en_US, de_DE and
// sv_SE in UTF-8, and every other identifier for the user's locale, which LC_ALL, LC_TIME or
// LANG name as setlocale(LC_TIME, "") reads them ("C" when none is set or it is missing).
#ifndef ZENUTL_PLATFORM_LOCALE_TIME_LAYOUTS_H_
#define ZENUTL_PLATFORM_LOCALE_TIME_LAYOUTS_H_

#include <string>

namespace zenutl {
namespace platform {

struct LocaleTimeLayouts {
  std::string date;            // the short date, D_FMT
  std::string dateAndTime;     // the layout of date(1), _DATE_FMT: the long date with the time
  std::string time;            // T_FMT
  std::string twelveHourTime;  // T_FMT_AMPM, which %r stands for
};

// False if the locale of a named language is not generated on this machine.
bool LocaleTimeLayoutsOf(unsigned long languageId, LocaleTimeLayouts* layouts);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_LOCALE_TIME_LAYOUTS_H_
