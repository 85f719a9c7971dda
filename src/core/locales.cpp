#include "zenutl/locales.h"

#include <atomic>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>

#include <boost/thread/mutex.hpp>

#include "platform/runtime_locale.h"

namespace Locales {
namespace {

using zenutl::platform::SetRuntimeLocale;

// Names of decimal-comma locales, in the order they are asked for. The first two are the names
// the applications have always used; Linux usually knows neither, so the generated UTF-8 comma
// locales follow.
const char* const kCommaLocaleNames[] = {"fra", "sv_SE", "sv_SE.UTF-8", "fr_FR.UTF-8",
                                         "de_DE.UTF-8"};

void SwitchRuntimeNumericLocale(DecSeparator separator) {
  if (separator == eDecimalPoint) {
    SetRuntimeLocale(LC_NUMERIC, "C");
    return;
  }
  for (const char* name : kCommaLocaleNames) {
    if (SetRuntimeLocale(LC_NUMERIC, name) != nullptr) return;
  }
}

// What the library believes the runtime's separator is. It is made on the first switch, which
// is when the runtime first gets the user's locale from the environment, and lives until exit.
class NumericLocaleState {
 public:
  NumericLocaleState() {
    SetRuntimeLocale(LC_ALL, "");
    const DecSeparator found =
        std::strcmp(std::localeconv()->decimal_point, ".") == 0 ? eDecimalPoint : eDecimalComma;
    mCurrent = found;
  }

  DecSeparator Current() const { return mCurrent.load(); }

  // Makes `separator` current, calling the runtime only when it differs from the current one.
  // A comma that no locale provides is still recorded.
  void Switch(DecSeparator separator) {
    if (separator == mCurrent.load()) return;
    SwitchRuntimeNumericLocale(separator);
    mCurrent = separator;
  }

  static NumericLocaleState& Instance() {
    NumericLocaleState* state = spInstance.load(std::memory_order_acquire);
    if (state == nullptr) {
      boost::mutex::scoped_lock lock(smCreation);
      state = spInstance.load(std::memory_order_relaxed);
      if (state == nullptr) {
        state = new NumericLocaleState();
        spInstance.store(state, std::memory_order_release);
      }
    }
    return *state;
  }

 private:
  std::atomic<DecSeparator> mCurrent{eDecimalPoint};

  static std::atomic<NumericLocaleState*> spInstance;
  static boost::mutex smCreation;
};

std::atomic<NumericLocaleState*> NumericLocaleState::spInstance{nullptr};
boost::mutex NumericLocaleState::smCreation;

}  // namespace

void InitLibraries() {
  SetRuntimeLocale(LC_ALL, "");
  std::locale user;
  try {
    user = std::locale("");
  } catch (const std::runtime_error&) {
    throw std::runtime_error("bad locale name");
  }
  // The second character of 1.1 is the separator the stream library prints for this user.
  std::stringstream probe;
  probe.imbue(user);
  probe << 1.1;
  const std::string text = probe.str();
  if (text.size() < 2) throw std::out_of_range("invalid string position");
  std::locale::global(std::locale(user, new Detail::CustomDecSep(text[1])));
}

DecSeparator GetDecimalSeparator() {
  char printed[32];
  std::snprintf(printed, sizeof printed, "%g", 1.1);
  return printed[1] == ',' ? eDecimalComma : eDecimalPoint;
}

std::locale GetLocale(DecSeparator separator) {
  struct FixedLocales {
    FixedLocales()
        : comma(std::locale(), new Detail::CustomDecSep(',')),
          point(std::locale(), new Detail::CustomDecSep('.')) {}
    std::locale comma;
    std::locale point;
  };
  static const FixedLocales fixed;
  return separator == eDecimalComma ? fixed.comma : fixed.point;
}

void ReplaceDecimalSeparatorInFormula(CString& formula, DecSeparator target) {
  const char from = target == eDecimalComma ? '.' : ',';
  const char to = target == eDecimalComma ? ',' : '.';
  bool inBrackets = false;
  for (int i = 0; i < formula.GetLength(); ++i) {
    const char ch = formula.GetAt(i);
    if (!inBrackets && ch == from) formula.SetAt(i, to);
    if (ch == '[') {
      inBrackets = true;
    } else if (ch == ']') {
      inBrackets = false;
    }
  }
}

// Neither end of a scope may throw; the only possible failures are running out of memory or
// locks while the state is first made, and then the runtime is simply left alone.
SetDecimalSeparatorClass::SetDecimalSeparatorClass(DecSeparator separator)
    : mPrevious(eDecimalPoint) {
  try {
    NumericLocaleState& state = NumericLocaleState::Instance();
    mPrevious = state.Current();
    state.Switch(separator);
  } catch (...) {
  }
}

SetDecimalSeparatorClass::~SetDecimalSeparatorClass() {
  try {
    NumericLocaleState::Instance().Switch(mPrevious);
  } catch (...) {
  }
}

}  // namespace Locales
