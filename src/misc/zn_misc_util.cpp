// RoundFloat in the exact steps its callers' results were made with: the nearer of floor and
// ceiling (a tie first going away from zero), then a tie moved back to the even neighbour.
#include "zenutl/zn_misc_util.h"

#include <climits>
#include <cmath>

namespace {

// The truncation to int, with the processor's "indefinite" answer for what has no int.
int TruncateToInt(double value) {
  if (!(value > static_cast<double>(INT_MIN) - 1.0 && value < static_cast<double>(INT_MAX) + 1.0)) {
    return INT_MIN;
  }
  return static_cast<int>(value);
}

}  // namespace

int ZnMiscUtl::RoundFloat(float value) {
  const float ceiling = std::ceil(value);
  const float floor = std::floor(value);
  float nearest;
  if (value > 0) {
    nearest = std::fabs(value - ceiling) <= std::fabs(value - floor) ? ceiling : floor;
  } else {
    nearest = std::fabs(value - floor) <= std::fabs(value - ceiling) ? floor : ceiling;
  }
  const float offset = nearest - value;
  if (offset == 0.5f && std::fmod(nearest, 2.0) > 0) return TruncateToInt(nearest - 1.0);
  if (offset == -0.5f && std::fmod(nearest, 2.0) < 0) return TruncateToInt(nearest + 1.0);
  return TruncateToInt(nearest);
}
