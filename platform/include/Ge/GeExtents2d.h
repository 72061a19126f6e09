// Axis-aligned box in the plane. A default-constructed box is invalid (empty): its minimum
// point is (1e20, 1e20) and its maximum point (-1e20, -1e20).
#pragma once

#include "Ge/GePoint2d.h"

class OdGeMatrix2d;

class OdGeExtents2d {
 public:
  static constexpr double kEmptyLimit = 1e20;

  constexpr OdGeExtents2d() : m_min(kEmptyLimit, kEmptyLimit), m_max(-kEmptyLimit, -kEmptyLimit) {}
  // The box spanned by two opposite corners, in any order.
  OdGeExtents2d(const OdGePoint2d& corner1, const OdGePoint2d& corner2) { comparingSet(corner1, corner2); }

  static const OdGeExtents2d kInvalid;

  const OdGePoint2d& minPoint() const { return m_min; }
  const OdGePoint2d& maxPoint() const { return m_max; }
  OdGePoint2d center() const;
  OdGeVector2d diagonal() const { return m_max - m_min; }

  // Stores the corners as given; the box is invalid unless min <= max on both axes.
  OdGeExtents2d& set(const OdGePoint2d& minPoint, const OdGePoint2d& maxPoint);
  OdGeExtents2d& comparingSet(const OdGePoint2d& corner1, const OdGePoint2d& corner2);
  OdGeExtents2d& reset() { return *this = OdGeExtents2d(); }

  OdGeExtents2d& addPoint(const OdGePoint2d& point);
  template <class PointRange>
  OdGeExtents2d& addPoints(const PointRange& points) {
    for (const OdGePoint2d& point : points) addPoint(point);
    return *this;
  }
  // Adding an invalid box changes nothing.
  OdGeExtents2d& addExt(const OdGeExtents2d& other);
  // Grows the box to cover itself moved by `v`.
  OdGeExtents2d& expandBy(const OdGeVector2d& v);
  // The box of the transformed corners.
  OdGeExtents2d& transformBy(const OdGeMatrix2d& matrix);
  OdGeExtents2d& translate(const OdGeVector2d& v);

  bool isValidExtents() const;
  // Within tol.equalPoint() of the box counts as inside. An invalid box contains nothing.
  bool contains(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const;
  bool contains(const OdGeExtents2d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  // Boxes that touch within tol are not disjoint; an invalid box is disjoint from everything.
  bool isDisjoint(const OdGeExtents2d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isEqualTo(const OdGeExtents2d& other, const OdGeTol& tol = OdGeContext::gTol) const;

 private:
  OdGePoint2d m_min;
  OdGePoint2d m_max;
};

inline constexpr OdGeExtents2d OdGeExtents2d::kInvalid{};
