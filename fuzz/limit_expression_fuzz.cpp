// The limit-expression evaluator on arbitrary text, under both decimal separators.
//
// Input: a flags byte (bit 0: decimal comma), then the expression up to its first zero byte.
// Invariants beyond "no crash": a bound that was set tightened its start value (so it is no NaN;
// a number beyond the float range gives an infinite bound); an inclusive flag is only ever set
// with its bound; true means at least one bound was set; the same text gives the same answer
// twice.
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_input.h"
#include "zenutl/locales.h"
#include "zenutl/zn_string_algorithms.h"

namespace {

struct Limits {
  float lower = 0;
  float upper = 0;
  bool lowerInclusive = false;
  bool upperInclusive = false;
  bool result = false;
};

Limits Evaluate(const std::string& text) {
  Limits limits;
  limits.result = ZnString::EvaluateLimitExpression(text.c_str(), limits.lower, limits.upper,
                                                    limits.lowerInclusive, limits.upperInclusive);
  return limits;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Locales::DecSeparator separator;
  std::string text;
  if (!zenutl_fuzz::ReadSeparatorAndText(data, size, separator, text)) return 0;
  Locales::SetDecimalSeparatorClass scope(separator);

  const Limits first = Evaluate(text);
  const bool lowerSet = first.lower != -FLT_MAX;
  const bool upperSet = first.upper != FLT_MAX;
  if (lowerSet && !(first.lower > -FLT_MAX)) std::abort();
  if (upperSet && !(first.upper < FLT_MAX)) std::abort();
  if ((first.lowerInclusive && !lowerSet) || (first.upperInclusive && !upperSet)) std::abort();
  if (first.result && !lowerSet && !upperSet) std::abort();

  const Limits second = Evaluate(text);
  if (second.result != first.result || second.lower != first.lower || second.upper != first.upper ||
      second.lowerInclusive != first.lowerInclusive ||
      second.upperInclusive != first.upperInclusive) {
    std::abort();
  }
  return 0;
}
