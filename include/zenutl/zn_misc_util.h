// ZnMiscUtl: small numeric helpers with no better home.
//
// Error contract: nothing throws or reports.
#ifndef ZENUTL_ZN_MISC_UTIL_H_
#define ZENUTL_ZN_MISC_UTIL_H_

class ZnMiscUtl {
 public:
  // The nearest integer, ties to even: 0.5 => 0, 1.5 => 2, 2.5 => 2, -0.5 => 0, -1.5 => -2,
  // -2.5 => -2, 2.4 => 2, -2.6 => -3. A value with no int near it (NaN, beyond the int range)
  // gives INT_MIN, the answer of the processor's own conversion.
  static int RoundFloat(float value);
};

#endif  // ZENUTL_ZN_MISC_UTIL_H_
