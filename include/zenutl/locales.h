// Locales: which decimal separator is in force, and how to switch it.
//
// The applications run on machines whose decimal separator is a point or a comma, yet read files
// and formulas that must mean the same everywhere. This header settles the separator: the
// start-up call `InitLibraries`, a scoped switch of the C runtime's LC_NUMERIC
// (`SetDecimalSeparatorClass`), two fixed stream locales with a known separator (`GetLocale`) and
// a rewrite of a formula's separators. Parsing numbers that accepts both separators lives in
// zn_string.h.
//
// Errors: `InitLibraries` throws `std::runtime_error` ("bad locale name") when the environment
// names a locale the C++ library does not know, and `std::out_of_range` ("invalid string
// position") if the user's locale prints 1.1 as fewer than two characters. Nothing else here
// reports: a locale the runtime refuses leaves the runtime as it was.
//
// Threads: LC_NUMERIC belongs to the whole process, so a switch on one thread is seen by all.
// Keep overlapping switches on one thread. The first call of `GetLocale` must not race another.
#ifndef ZENUTL_LOCALES_H_
#define ZENUTL_LOCALES_H_

#include <locale>

#include "zenutl/cstring.h"

namespace Locales {

// The order is fixed: 0 is the decimal point, 1 the decimal comma. Any other value is taken as
// the point where a separator is chosen.
enum DecSeparator : int { eDecimalPoint = 0, eDecimalComma = 1 };

// Start-up of the process's locale settings; the host application calls it once, early. The C
// runtime takes the user's locale from the environment whole (printf and strtod use the user's
// separator). The global C++ locale becomes the user's locale except for numbers: they keep the
// user's decimal separator but lose digit grouping, and bool names are "true"/"false". So with
// LANG=de_DE.UTF-8 a stream prints 1234.5 as "1234,5", not "1.234,5".
void InitLibraries();

// The separator the C runtime would print now (sprintf of 1.1 with "%g"): 1 for a comma,
// 0 for anything else. Reflects any SetDecimalSeparatorClass in force.
DecSeparator GetDecimalSeparator();

// One of two fixed locales: a copy of the global locale at the first call, with a decimal point
// (argument 0, and any value other than 1) or a decimal comma (1), and no digit grouping. Both
// are built on the first call and never rebuilt: a later change of the global locale does not
// reach them.
std::locale GetLocale(DecSeparator separator);

// Rewrites the separators of a formula in place. Target 1: every '.' outside square brackets
// becomes ','; any other target: every ',' outside brackets becomes '.'. Brackets do not nest:
// the first ']' ends the protected stretch. Nothing else of a formula's syntax is known, so an
// argument separator ',' is rewritten like a decimal one.
//   "a.b[c.d].e", 1   => "a,b[c.d],e"
//   "1,5[x,y]",   0   => "1.5[x,y]"
//   "[[a.b]c.d]", 1   => "[[a.b]c,d]"
void ReplaceDecimalSeparatorInFormula(CString& formula, DecSeparator target);

// Switches the C runtime's LC_NUMERIC to `separator` for the lifetime of the object and back
// afterwards; collation, character classes and time stay as they are. The first switch in a
// process also resets the whole runtime to the user's locale from the environment. Switching to
// the separator already current calls nothing, on construction or destruction. Scopes nest by
// stack order. For the comma the runtime is asked for "fra", then "sv_SE", then the installed
// comma locales "sv_SE.UTF-8", "fr_FR.UTF-8" and "de_DE.UTF-8"; if none exists the runtime
// stays as it was while the library still records the comma (GetDecimalSeparator stays
// truthful). Never throws.
class SetDecimalSeparatorClass {
 public:
  explicit SetDecimalSeparatorClass(DecSeparator separator = eDecimalPoint);
  SetDecimalSeparatorClass(const SetDecimalSeparatorClass&) = default;
  SetDecimalSeparatorClass& operator=(const SetDecimalSeparatorClass&) = default;
  ~SetDecimalSeparatorClass();

 private:
  DecSeparator mPrevious;
};

namespace Detail {

// A numpunct facet whose decimal point is `separator`. Its base is always the "C" locale's, so
// thousands_sep is ',' but grouping is empty (digits are never grouped) and the bool names are
// "true" and "false", whatever the user's locale.
class CustomDecSep : public std::numpunct<char> {
 public:
  explicit CustomDecSep(char separator, std::size_t refs = 0)
      : std::numpunct<char>(refs), mSeparator(separator) {}

 protected:
  char do_decimal_point() const override { return mSeparator; }

 private:
  char mSeparator;
};

}  // namespace Detail
}  // namespace Locales

#endif  // ZENUTL_LOCALES_H_
