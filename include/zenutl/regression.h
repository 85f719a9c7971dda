// GetRegressionEquation: the least-squares line through a set of points, y = slope * x +
// intercept. For picking the point nearest a position see find_nearest_point.h.
//
// Error contract: nothing throws or reports; a set with no spread in x gives a fixed pair of
// answers instead.
#ifndef ZENUTL_REGRESSION_H_
#define ZENUTL_REGRESSION_H_

// The arrays are read from index 1 to n inclusive, as the callers' 1-based data is laid out:
// element 0 is ignored, so each array holds n + 1 values. When the x values have no spread (all
// equal, or n of 0 or less) the slope is HUGE_VAL and the intercept -99.0, the library's
// missing value. NaN in the data gives NaN results.
//   x {_, 1, 2, 3}, y {_, 3, 5, 7}, n 3  => slope 2, intercept 1
void GetRegressionEquation(double const* x, double const* y, int n, double& slope,
                           double& intercept);

#endif  // ZENUTL_REGRESSION_H_
