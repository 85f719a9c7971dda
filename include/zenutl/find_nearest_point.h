// FindNearestPoint: the point of a fixed two-dimensional set nearest to a query, within a
// limit, for a plot that picks the point under the mouse. The points are kept ordered by x, so a
// query looks only at the band of width twice the limit around its x. For a regression line
// see regression.h.
//
// Error contract: the constructor throws `Exception` (exception.h) for a limit that is not
// positive or a null y array with points to read; Find never throws and answers -1 when no point is
// near enough.
#ifndef ZENUTL_FIND_NEAREST_POINT_H_
#define ZENUTL_FIND_NEAREST_POINT_H_

#include <map>

class FindNearestPoint {
 public:
  // The points (x[i], y[i]) for i from 0 to count - 1, point i having the index i. With a null
  // `x` they lie on a grid instead: the first at xStart, each next one xStep further (summed in
  // float). A count of 0 or less gives no points. Throws Exception "fMaxDistance must be
  // positive in FindNearestPoint::FindNearestPoint." for a limit of 0 or less.
  FindNearestPoint(float const* x, float const* y, int count, float fMaxDistance, float xStart,
                   float xStep);
  ~FindNearestPoint();
  // Member-wise, as it has always been: afterwards both objects share one set of points, the
  // target's own set is not freed, and only one of the two may be destroyed.
  FindNearestPoint& operator=(FindNearestPoint const&) = default;
  FindNearestPoint(FindNearestPoint const&) = delete;

  // The index of the nearest point whose distance is below the limit, or -1. Among points at
  // the same distance the first one met wins: walking down from x, the one with the greatest
  // x below it (of equal x, the later point), then walking up, the one with the least x at or
  // above it (of equal x, the earlier point).
  //   points x 0, 1, 2 (y 0), limit 1:  Find(0.5f, 0) => 0,  Find(3.0f, 0) => -1
  int Find(float x, float y);

 private:
  struct Point {
    float y;
    int index;
  };
  typedef std::multimap<float, Point> PointMap;

  PointMap* mPoints;
  double mMaxDistance;
};

#endif  // ZENUTL_FIND_NEAREST_POINT_H_
