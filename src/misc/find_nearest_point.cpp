// FindNearestPoint: points in a multimap keyed by x, searched outwards from the query's x in
// both directions until the x distance alone reaches the limit.
#include "zenutl/find_nearest_point.h"

#include <cfloat>
#include <memory>

#include "zenutl/exception.h"

FindNearestPoint::FindNearestPoint(float const* x, float const* y, int count, float fMaxDistance,
                                   float xStart, float xStep)
    : mPoints(nullptr), mMaxDistance(fMaxDistance) {
  if (fMaxDistance <= 0) {
    throw Exception("fMaxDistance must be positive in FindNearestPoint::FindNearestPoint.");
  }
  if (y == nullptr && count > 0) {
    throw Exception("y must not be null in FindNearestPoint::FindNearestPoint.");
  }
  std::unique_ptr<PointMap> points(new PointMap);
  float gridX = xStart;
  for (int i = 0; i < count; ++i) {
    const float px = x != nullptr ? x[i] : gridX;
    gridX += xStep;
    // Equal keys keep their order of insertion, so the earlier point stays first.
    points->emplace_hint(points->end(), px, Point{y[i], i});
  }
  mPoints = points.release();
}

FindNearestPoint::~FindNearestPoint() {
  delete mPoints;
}

int FindNearestPoint::Find(float x, float y) {
  const double limit = mMaxDistance * mMaxDistance;
  const float band = static_cast<float>(mMaxDistance);
  double best = FLT_MAX;
  int bestIndex = -1;
  // Squares per axis in float, their sum in double; strictly below both the limit and the best.
  auto consider = [&](const PointMap::value_type& point) {
    const float dx = point.first - x;
    const float dy = point.second.y - y;
    const double distance = static_cast<double>(dx * dx) + static_cast<double>(dy * dy);
    if (distance < limit && distance < best) {
      best = distance;
      bestIndex = point.second.index;
    }
  };

  const PointMap::const_iterator lowerBound = mPoints->lower_bound(x);
  if (lowerBound != mPoints->begin()) {
    for (PointMap::const_iterator down = std::prev(lowerBound); x - down->first < band; --down) {
      consider(*down);
      if (down == mPoints->begin()) break;
    }
  }
  for (PointMap::const_iterator up = lowerBound; up != mPoints->end() && up->first - x < band;
       ++up) {
    consider(*up);
  }
  return bestIndex;
}
