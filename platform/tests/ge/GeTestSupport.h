// Comparison helpers and reproducible random geometry for the geometry tests.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "Ge/GeMatrix3d.h"

inline ::testing::AssertionResult pointsNear(const OdGePoint3d& a, const OdGePoint3d& b, double eps) {
  if (a.distanceTo(b) <= eps) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "(" << a.x << ", " << a.y << ", " << a.z << ") vs (" << b.x << ", " << b.y
                                       << ", " << b.z << "), distance " << a.distanceTo(b);
}

inline ::testing::AssertionResult pointsNear(const OdGePoint2d& a, const OdGePoint2d& b, double eps) {
  if (a.distanceTo(b) <= eps) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "(" << a.x << ", " << a.y << ") vs (" << b.x << ", " << b.y
                                       << "), distance " << a.distanceTo(b);
}

inline ::testing::AssertionResult vectorsNear(const OdGeVector3d& a, const OdGeVector3d& b, double eps) {
  return pointsNear(OdGePoint3d::asPoint(a), OdGePoint3d::asPoint(b), eps);
}

inline ::testing::AssertionResult matricesNear(const OdGeMatrix3d& a, const OdGeMatrix3d& b, double eps) {
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      if (!(std::fabs(a.entry[row][column] - b.entry[row][column]) <= eps)) {  // NaN fails too
        return ::testing::AssertionFailure() << "entry[" << row << "][" << column << "]: " << a.entry[row][column]
                                             << " vs " << b.entry[row][column];
      }
    }
  }
  return ::testing::AssertionSuccess();
}

// Fixed-seed source of random test geometry.
class GeRandom {
 public:
  explicit GeRandom(unsigned int seed = 20240611u) : m_engine(seed) {}
  double uniform(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(m_engine); }
  OdGePoint3d point(double range = 100.0) {
    return {uniform(-range, range), uniform(-range, range), uniform(-range, range)};
  }
  OdGeVector3d unitVector() {
    for (;;) {
      OdGeVector3d v(uniform(-1, 1), uniform(-1, 1), uniform(-1, 1));
      if (v.length() > 0.1 && v.length() <= 1.0) return v / v.length();
    }
  }

 private:
  std::mt19937 m_engine;
};
