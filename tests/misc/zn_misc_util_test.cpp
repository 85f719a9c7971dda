// ZnMiscUtl::RoundFloat: nearest integer with ties to even, and its answer for what has no int.
#include "zenutl/zn_misc_util.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

namespace {

TEST(ZnMiscUtl, RoundFloatRoundsTiesToEven) {
  const struct {
    float value;
    int rounded;
  } rows[] = {
      {0.5f, 0},
      {1.5f, 2},
      {2.5f, 2},
      {3.5f, 4},
      {-0.5f, 0},
      {-1.5f, -2},
      {-2.5f, -2},
      {-3.5f, -4},
      {2.4f, 2},
      {2.6f, 3},
      {-2.4f, -2},
      {-2.6f, -3},
      {0.49999997f, 0},
      {0.0f, 0},
      {-0.0f, 0},
      {7.0f, 7},
      {-7.0f, -7},
      {16777215.0f, 16777215},
      {2147483520.0f, 2147483520},
      {1e10f, INT_MIN},
      {-1e10f, INT_MIN},
      {NAN, INT_MIN},
      {INFINITY, INT_MIN},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.rounded, ZnMiscUtl::RoundFloat(row.value)) << row.value;
  }
}

}  // namespace
