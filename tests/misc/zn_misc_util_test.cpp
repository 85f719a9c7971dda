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
  } rows[] = {{0.5f, 0},        {1.5f, 2},        {2.5f, 2},     {-0.5f, 0},
              {-1.5f, -2},      {-2.5f, -2},      {2.6f, 3},     {-2.6f, -3},
              {0.49999997f, 0}, {1e10f, INT_MIN}, {NAN, INT_MIN}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.rounded, ZnMiscUtl::RoundFloat(row.value)) << row.value;
  }
}

}  // namespace
