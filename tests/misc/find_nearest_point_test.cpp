// FindNearestPoint: strict limits, the order in which ties are settled, grids, and agreement
// with a search of every point.
#include "zenutl/find_nearest_point.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/exception_matchers.h"

namespace {

TEST(FindNearestPoint, FindsTheNearestPointStrictlyWithinTheLimit) {
  const float x[] = {0, 1, 2, 1};
  const float y[] = {0, 0, 0, 3};
  FindNearestPoint points(x, y, 4, 1.0f, 0, 0);
  const struct {
    float x, y;
    int index;
  } rows[] = {
      {0.5f, 0, 0},      // a tie: walking down meets the point at 0 first
      {1.5f, 0, 1},      // walking down meets 1 before walking up meets 2
      {3.0f, 0, -1},     // exactly at the limit is out
      {1.0f, 1.0f, -1},  // inside the band of x, too far by y
      {1.0f, 2.5f, 3},   // the second point at x 1
      {100.0f, 0, -1},   // above every point
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.index, points.Find(row.x, row.y)) << row.x << ", " << row.y;
  }
}

TEST(FindNearestPoint, KeepsPointsOfEqualXInTheirOrder) {
  const float x[] = {1, 1, 1};
  const float y[] = {0.5f, -0.5f, 0.5f};
  FindNearestPoint points(x, y, 3, 2.0f, 0, 0);
  EXPECT_EQ(0, points.Find(1, 0));        // walking up meets the earlier point first
  EXPECT_EQ(2, points.Find(1.5f, 0.5f));  // walking down meets the later one first
  EXPECT_EQ(1, points.Find(0.5f, -0.4f));
}

TEST(FindNearestPoint, PlacesPointsOnAGridWhenXIsNull) {
  const float y[] = {0, 0, 0, 0};
  FindNearestPoint points(nullptr, y, 4, 0.1f, 10.0f, 0.5f);
  EXPECT_EQ(2, points.Find(11.0f, 0));
  EXPECT_EQ(3, points.Find(11.55f, 0));
  EXPECT_EQ(-1, points.Find(10.25f, 0));
}

TEST(FindNearestPoint, WithoutPointsFindsNothingAndALimitMustBePositive) {
  EXPECT_EQ(-1, FindNearestPoint(nullptr, nullptr, 0, 1, 0, 1).Find(0, 0));
  EXPECT_EQ(-1, FindNearestPoint(nullptr, nullptr, -3, 1, 0, 1).Find(0, 0));
  const float y[] = {0};
  for (float limit : {0.0f, -1.0f}) {
    EXPECT_THROW_WHY(FindNearestPoint(nullptr, y, 1, limit, 0, 1), Exception,
                     "fMaxDistance must be positive in FindNearestPoint::FindNearestPoint.");
  }
  EXPECT_THROW_WHY(FindNearestPoint(nullptr, nullptr, 1, 1, 0, 1), Exception,
                   "y must not be null in FindNearestPoint::FindNearestPoint.");
}

TEST(FindNearestPoint, AgreesWithASearchOfEveryPoint) {
  std::mt19937 random(13);
  std::uniform_real_distribution<float> coordinate(-10, 10);
  std::vector<float> x(300), y(300);
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = coordinate(random);
    y[i] = coordinate(random);
  }
  const float limit = 1.5f;
  FindNearestPoint points(x.data(), y.data(), 300, limit, 0, 0);
  auto distance = [&](int i, float qx, float qy) {
    const float dx = x[i] - qx, dy = y[i] - qy;
    return static_cast<double>(dx * dx) + static_cast<double>(dy * dy);
  };
  for (int query = 0; query < 2000; ++query) {
    const float qx = coordinate(random), qy = coordinate(random);
    double best = static_cast<double>(limit) * limit;
    for (int i = 0; i < 300; ++i) best = std::min(best, distance(i, qx, qy));
    const int found = points.Find(qx, qy);
    if (best >= static_cast<double>(limit) * limit) {
      ASSERT_EQ(-1, found) << qx << ", " << qy;
    } else {
      ASSERT_NE(-1, found) << qx << ", " << qy;
      ASSERT_EQ(best, distance(found, qx, qy)) << qx << ", " << qy;
    }
  }
}

}  // namespace
