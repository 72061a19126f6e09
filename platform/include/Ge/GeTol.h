// Tolerances for geometric comparisons.
#pragma once

// equalPoint: two points closer than this are the same point; also the distance within which
// a point counts as lying on a curve or plane.
// equalVector: two unit directions closer than this are the same direction; for parallel and
// perpendicular tests it bounds the sine and cosine of the angle between directions.
// Tests on computed geometry (isOn, intersectWith) never use a point tolerance finer than the
// rounding noise of doubles at the coordinates involved (8 units in the last place, about 5e-9 at
// 3e6), so that points computed on a curve far from the origin stay on it. Plain comparisons
// (isEqualTo, extents) use equalPoint as given.
class OdGeTol {
 public:
  static constexpr double kDefaultTolerance = 1e-10;

  // Explicit, so that a stray double is never taken for a tolerance.
  constexpr explicit OdGeTol(double equalPoint = kDefaultTolerance, double equalVector = kDefaultTolerance)
      : m_equalPoint(equalPoint), m_equalVector(equalVector) {}

  double equalPoint() const { return m_equalPoint; }
  double equalVector() const { return m_equalVector; }
  void setEqualPoint(double value) { m_equalPoint = value; }
  void setEqualVector(double value) { m_equalVector = value; }

 private:
  double m_equalPoint;
  double m_equalVector;
};
