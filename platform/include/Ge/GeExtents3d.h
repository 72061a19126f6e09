// Axis-aligned box in space. A default-constructed box is invalid (empty): its minimum point is
// (1e20, 1e20, 1e20) and its maximum point (-1e20, -1e20, -1e20), the values a drawing stores
// for the extents of nothing.
#pragma once

#include "Ge/GePoint3d.h"

class OdGeMatrix3d;

class OdGeExtents3d {
 public:
  static constexpr double kEmptyLimit = 1e20;

  constexpr OdGeExtents3d()
      : m_min(kEmptyLimit, kEmptyLimit, kEmptyLimit), m_max(-kEmptyLimit, -kEmptyLimit, -kEmptyLimit) {}
  // The box spanned by two opposite corners, in any order.
  OdGeExtents3d(const OdGePoint3d& corner1, const OdGePoint3d& corner2) { comparingSet(corner1, corner2); }

  static const OdGeExtents3d kInvalid;

  const OdGePoint3d& minPoint() const { return m_min; }
  const OdGePoint3d& maxPoint() const { return m_max; }
  OdGePoint3d center() const;
  OdGeVector3d diagonal() const { return m_max - m_min; }

  // Stores the corners as given; the box is invalid unless min <= max on every axis.
  OdGeExtents3d& set(const OdGePoint3d& minPoint, const OdGePoint3d& maxPoint);
  OdGeExtents3d& comparingSet(const OdGePoint3d& corner1, const OdGePoint3d& corner2);
  OdGeExtents3d& reset() { return *this = OdGeExtents3d(); }

  OdGeExtents3d& addPoint(const OdGePoint3d& point);
  template <class PointRange>
  OdGeExtents3d& addPoints(const PointRange& points) {
    for (const OdGePoint3d& point : points) addPoint(point);
    return *this;
  }
  // Adding an invalid box changes nothing.
  OdGeExtents3d& addExt(const OdGeExtents3d& other);
  // Grows the box to cover itself moved by `v`.
  OdGeExtents3d& expandBy(const OdGeVector3d& v);
  // The box of the transformed corners (a box that holds the transformed box).
  OdGeExtents3d& transformBy(const OdGeMatrix3d& matrix);
  OdGeExtents3d& translate(const OdGeVector3d& v);

  bool isValidExtents() const;
  // Within tol.equalPoint() of the box counts as inside. An invalid box contains nothing.
  bool contains(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const;
  bool contains(const OdGeExtents3d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  // Boxes that touch within tol are not disjoint; an invalid box is disjoint from everything.
  bool isDisjoint(const OdGeExtents3d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isEqualTo(const OdGeExtents3d& other, const OdGeTol& tol = OdGeContext::gTol) const;

 private:
  OdGePoint3d m_min;
  OdGePoint3d m_max;
};

inline constexpr OdGeExtents3d OdGeExtents3d::kInvalid{};
