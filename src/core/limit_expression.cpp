// EvaluateLimitExpression: the small language in which users type the limits of a value, such
// as "> 5 ; <= 10" or "= 3".
#include <algorithm>
#include <cctype>
#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "zenutl/zn_string.h"
#include "zenutl/zn_string_algorithms.h"

namespace ZnString {
namespace {

const char kSeparator = ';';

struct LimitToken {
  int position;
  char kind;  // kSeparator for ':' and ';', otherwise the operator '<', '>' or '='
};

bool IsBlank(const std::string& text) {
  for (char ch : text) {
    if (!std::isspace(static_cast<unsigned char>(ch))) return false;
  }
  return true;
}

// Lists the separators and operators, framed by a separator at -1 and one at length + 1. False
// when a group holds two of '<' and '>' or two '='.
bool ScanLimitTokens(const std::string& text, std::vector<LimitToken>& tokens) {
  tokens.push_back({-1, kSeparator});
  int relations = 0;
  int equals = 0;
  for (int i = 0; i < static_cast<int>(text.size()); ++i) {
    const char ch = text[static_cast<std::size_t>(i)];
    if (ch == ':' || ch == ';') {
      tokens.push_back({i, kSeparator});
      relations = 0;
      equals = 0;
    } else if (ch == '<' || ch == '>') {
      tokens.push_back({i, ch});
      if (++relations > 1) return false;
    } else if (ch == '=') {
      tokens.push_back({i, ch});
      if (++equals > 1) return false;
    }
  }
  tokens.push_back({static_cast<int>(text.size()) + 1, kSeparator});
  return true;
}

// The text strictly between two token positions. The closing frame stands one place beyond the
// end, so the stretch before it counts one character more than the text holds: an operator at
// the very end thus has a (blank) text on its right.
int StretchLength(const LimitToken& from, const LimitToken& to) {
  return to.position - from.position - 1;
}
std::string Stretch(const std::string& text, const LimitToken& from, const LimitToken& to) {
  const int start = from.position + 1;
  const int end = std::min(to.position, static_cast<int>(text.size()));
  return start < end
             ? text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start))
             : std::string();
}

float ToFloatBound(double value) {
  if (value > FLT_MAX) return HUGE_VALF;
  if (value < -FLT_MAX) return -HUGE_VALF;
  return static_cast<float>(value);
}

}  // namespace

bool EvaluateLimitExpression(const char* expression, float& lower, float& upper,
                             bool& lowerInclusive, bool& upperInclusive) {
  lower = -FLT_MAX;
  upper = FLT_MAX;
  lowerInclusive = false;
  upperInclusive = false;
  const std::string text = expression ? expression : "";
  std::vector<LimitToken> tokens;
  if (!ScanLimitTokens(text, tokens)) return false;

  bool anyBoundSet = false;
  double value = 0.0;  // an operator with no number takes the last value held
  for (std::size_t k = 1; k + 1 < tokens.size(); ++k) {
    if (tokens[k].kind == kSeparator) continue;  // text before it without operator is dropped
    bool valueOnLeft = false;
    EParseResult result = eParseOk;
    if (StretchLength(tokens[k - 1], tokens[k]) > 0) {
      const std::string left = Stretch(text, tokens[k - 1], tokens[k]);
      value = ToDouble(left.c_str(), result);
      if (result == eParseOk) {
        valueOnLeft = true;
      } else if (!IsBlank(left)) {
        return false;
      }
    }
    std::size_t last = k;
    if (tokens[k + 1].kind != kSeparator) {
      last = k + 1;
      if (!IsBlank(Stretch(text, tokens[k], tokens[last]))) return false;
    }
    if (StretchLength(tokens[last], tokens[last + 1]) > 0) {
      const std::string right = Stretch(text, tokens[last], tokens[last + 1]);
      const double read = ToDouble(right.c_str(), result);
      if (result == eParseOk) {
        if (valueOnLeft) return false;
        value = read;
      } else if (!IsBlank(right) || !valueOnLeft) {
        return false;
      }
    }

    char relation = 0;  // '<' or '>' of the group, if any
    for (std::size_t i = k; i <= last; ++i) {
      if (tokens[i].kind != '=') relation = tokens[i].kind;
    }
    // "5 < x" and "x > 5" give a lower bound, "5 > x" and "x < 5" an upper one; a value that
    // is not on the left counts as on the right.
    const bool setsLower = relation == 0 || (relation == '<') == valueOnLeft;
    const bool setsUpper = relation == 0 || !setsLower;
    const bool inclusive = last != k || tokens[k].kind == '=';
    const float bound = ToFloatBound(value);
    if (setsLower && bound > lower) {
      lower = bound;
      lowerInclusive = inclusive;
      anyBoundSet = true;
    }
    if (setsUpper && bound < upper) {
      upper = bound;
      upperInclusive = inclusive;
      anyBoundSet = true;
    }
    k = last;
  }
  return anyBoundSet;
}

}  // namespace ZnString
