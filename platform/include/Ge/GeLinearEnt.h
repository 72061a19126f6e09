// What the straight curves of the plane and of space have in common, written once over the
// dimension (Ge/GeSpace.h): evalPoint(t) = pointOnLine() + t * (the defining vector). Lines are
// unbounded, rays bounded at t = 0, segments run over [0, 1] from start to end. Use
// OdGeLinearEnt2d and OdGeLinearEnt3d.
#pragma once

#include "Ge/GeCurve.h"

template <class Space>
class OdGeLinearEntT : public Space::Curve {
 public:
  using Point = typename Space::Point;
  using Vector = typename Space::Vector;
  using Matrix = typename Space::Matrix;
  using Extents = typename Space::Extents;

  bool isKindOf(OdGe::EntityId entityType) const override;

  Point pointOnLine() const { return m_point; }
  // Unit direction of increasing parameter (zero for a degenerate entity).
  Vector direction() const;
  // The unbounded line through this entity, with the same parameterisation.
  typename Space::Line getLine() const;

  bool isParallelTo(const OdGeLinearEntT& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isPerpendicularTo(const OdGeLinearEntT& other, const OdGeTol& tol = OdGeContext::gTol) const;
  // Parallel and lying on the same unbounded line (bounds play no part).
  bool isColinearTo(const OdGeLinearEntT& other, const OdGeTol& tol = OdGeContext::gTol) const;

  // The single point the two entities share, bounds included: false when they miss each other
  // by more than tol.equalPoint(), and for colinear entities that share more than a point
  // (see overlap()). Colinear entities that only touch end to end do intersect.
  bool intersectWith(const OdGeLinearEntT& other, Point& point, const OdGeTol& tol = OdGeContext::gTol) const;
  // The stretch shared by two colinear entities, when it is bounded and longer than
  // tol.equalPoint(); it runs in the direction of this entity.
  bool overlap(const OdGeLinearEntT& other, typename Space::LineSeg& result,
               const OdGeTol& tol = OdGeContext::gTol) const;

  using Space::Curve::length;
  Point evalPoint(double param) const override { return m_point + m_vector * param; }
  double paramOf(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  Point closestPointTo(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  double length(double fromParam, double toParam) const override;
  Extents geomExtents() const override;

 protected:
  OdGeLinearEntT() = default;
  OdGeLinearEntT(const Point& point, const Vector& vector) : m_point(point), m_vector(vector) {}

  void setPointVector(const Point& point, const Vector& vector) {
    m_point = point;
    m_vector = vector;
  }
  // Moves both ends of the defining vector (the work of transformBy()).
  void transformEnds(const Matrix& matrix);
  // Parameter of the foot of the perpendicular on the unbounded line (0 when degenerate).
  double unboundedParamOf(const Point& point) const;
  // Range of this entity's parameters shared with a colinear entity (lo > hi when they do not
  // meet; infinite ends where both are unbounded).
  void sharedParamRange(const OdGeLinearEntT& other, double& lo, double& hi) const;

  Point m_point;
  Vector m_vector = Vector::kXAxis;
};
