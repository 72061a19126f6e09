// A range of curve parameters, possibly unbounded at either end.
#pragma once

#include "Ge/GeTol.h"

class OdGeInterval {
 public:
  static constexpr double kDefaultTolerance = 1e-12;

  // Unbounded at both ends.
  constexpr OdGeInterval() = default;
  constexpr OdGeInterval(double lower, double upper)
      : m_lower(lower), m_upper(upper), m_boundedBelow(true), m_boundedAbove(true) {}
  // Bounded on one side only: below at `bound` when boundedBelow, else above.
  constexpr OdGeInterval(bool boundedBelow, double bound)
      : m_lower(bound), m_upper(bound), m_boundedBelow(boundedBelow), m_boundedAbove(!boundedBelow) {}

  OdGeInterval& set(double lower, double upper) { return *this = OdGeInterval(lower, upper); }
  OdGeInterval& set(bool boundedBelow, double bound) { return *this = OdGeInterval(boundedBelow, bound); }
  OdGeInterval& set() { return *this = OdGeInterval(); }
  void setLower(double lower) { m_lower = lower; m_boundedBelow = true; }
  void setUpper(double upper) { m_upper = upper; m_boundedAbove = true; }

  double lowerBound() const { return m_lower; }
  double upperBound() const { return m_upper; }
  bool isBoundedBelow() const { return m_boundedBelow; }
  bool isBoundedAbove() const { return m_boundedAbove; }
  bool isBounded() const { return m_boundedBelow && m_boundedAbove; }
  bool isUnBounded() const { return !m_boundedBelow && !m_boundedAbove; }
  // upper - lower, or -1 for an interval unbounded on some side.
  double length() const { return isBounded() ? m_upper - m_lower : -1.0; }

  // Within `tolerance` of the bounds counts as inside.
  bool contains(double value, double tolerance = kDefaultTolerance) const {
    return (!m_boundedBelow || value >= m_lower - tolerance) && (!m_boundedAbove || value <= m_upper + tolerance);
  }
  // The nearest value inside the interval.
  double clamp(double value) const {
    if (m_boundedBelow && value < m_lower) return m_lower;
    if (m_boundedAbove && value > m_upper) return m_upper;
    return value;
  }

 private:
  double m_lower = 0.0;
  double m_upper = 0.0;
  bool m_boundedBelow = false;
  bool m_boundedAbove = false;
};
