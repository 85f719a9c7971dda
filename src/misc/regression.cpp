// Ordinary least squares of y on x over 1-based arrays.
#include "zenutl/regression.h"

#include <cmath>

void GetRegressionEquation(double const* x, double const* y, int n, double& slope,
                           double& intercept) {
  double sumX = 0.0, sumY = 0.0;
  for (int i = 1; i <= n; ++i) {
    sumX += x[i];
    sumY += y[i];
  }
  const double meanX = sumX / n;
  const double meanY = sumY / n;
  double sxy = 0.0, sxx = 0.0;
  for (int i = 1; i <= n; ++i) {
    sxy += (x[i] - meanX) * (y[i] - meanY);
    sxx += (x[i] - meanX) * (x[i] - meanX);
  }
  // Written so that a NaN spread takes the first branch and yields NaN results.
  if (!(std::fabs(sxx) < 1e-16)) {
    slope = sxy / sxx;
    intercept = meanY - slope * meanX;
  } else {
    slope = HUGE_VAL;
    intercept = -99.0;
  }
}
