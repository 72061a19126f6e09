// What the axis-aligned boxes of the plane and of space have in common, written once over the
// dimension (Ge/GeSpace.h). A default-constructed box is invalid (empty): its minimum point has
// every coordinate 1e20 and its maximum point -1e20, the values a drawing stores for the extents
// of nothing. Use OdGeExtents2d and OdGeExtents3d.
#pragma once

#include "Ge/GeContext.h"
#include "Ge/GeSpace.h"

template <class Space>
class OdGeExtentsT {
 public:
  using Point = typename Space::Point;
  using Vector = typename Space::Vector;
  using Extents = typename Space::Extents;

  static constexpr double kEmptyLimit = 1e20;

  const Point& minPoint() const { return m_min; }
  const Point& maxPoint() const { return m_max; }
  Point center() const { return m_min + (m_max - m_min) * 0.5; }
  Vector diagonal() const { return m_max - m_min; }

  // Stores the corners as given; the box is invalid unless min <= max on every axis.
  Extents& set(const Point& minPoint, const Point& maxPoint) {
    m_min = minPoint;
    m_max = maxPoint;
    return self();
  }
  Extents& comparingSet(const Point& corner1, const Point& corner2);
  Extents& reset() { return self() = Extents(); }

  Extents& addPoint(const Point& point);
  template <class PointRange>
  Extents& addPoints(const PointRange& points) {
    for (const Point& point : points) addPoint(point);
    return self();
  }
  // Adding an invalid box changes nothing.
  Extents& addExt(const OdGeExtentsT& other);
  // Grows the box to cover itself moved by `v`.
  Extents& expandBy(const Vector& v);
  // The box of the transformed corners (a box that holds the transformed box).
  Extents& transformBy(const typename Space::Matrix& matrix);
  Extents& translate(const Vector& v);

  bool isValidExtents() const;
  // Within tol.equalPoint() of the box counts as inside. An invalid box contains nothing.
  bool contains(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const;
  bool contains(const OdGeExtentsT& other, const OdGeTol& tol = OdGeContext::gTol) const;
  // Boxes that touch within tol are not disjoint; an invalid box is disjoint from everything.
  bool isDisjoint(const OdGeExtentsT& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isEqualTo(const OdGeExtentsT& other, const OdGeTol& tol = OdGeContext::gTol) const;

 protected:
  constexpr OdGeExtentsT(const Point& minPoint, const Point& maxPoint) : m_min(minPoint), m_max(maxPoint) {}
  Extents& self() { return static_cast<Extents&>(*this); }

 private:
  Point m_min;
  Point m_max;
};
