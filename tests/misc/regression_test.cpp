// GetRegressionEquation over 1-based arrays, and its fixed answer for data with no spread.
#include "zenutl/regression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

TEST(GetRegressionEquation, FitsTheLeastSquaresLineFromIndexOne) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    std::vector<double> x, y;  // element 0 is never read
    double slope, intercept;
  } rows[] = {
      {{nan, 1, 2, 3}, {nan, 3, 5, 7}, 2, 1},
      {{1e9, -4, 0.5, 10, 2}, {1e9, -7, 2, 21, 5}, 2, 1},
      {{nan, 0, 1, 2, 3}, {nan, 1, 0, 1, 0}, -0.2, 0.8},
      {{nan, 2, 2}, {nan, 1, 5}, HUGE_VAL, -99.0},  // no spread in x
      {{nan}, {nan}, HUGE_VAL, -99.0},              // no points
  };
  for (const auto& row : rows) {
    double slope = 0, intercept = 0;
    GetRegressionEquation(row.x.data(), row.y.data(), static_cast<int>(row.x.size()) - 1, slope,
                          intercept);
    EXPECT_THAT(slope, testing::NanSensitiveDoubleEq(row.slope)) << row.x.size();
    EXPECT_THAT(intercept, testing::NanSensitiveDoubleEq(row.intercept)) << row.x.size();
  }
}

}  // namespace
