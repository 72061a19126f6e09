// Base of the straight curves of space: evalPoint(t) = pointOnLine() + t * (the defining vector).
// Lines are unbounded, rays bounded at t = 0, segments run over [0, 1] from start to end.
#pragma once

#include "Ge/GeCurve3d.h"

class OdGeLine3d;
class OdGeLineSeg3d;

class OdGeLinearEnt3d : public OdGeCurve3d {
 public:
  bool isKindOf(OdGe::EntityId entityType) const override;
  OdGeLinearEnt3d* copy() const override = 0;
  OdGeLinearEnt3d& transformBy(const OdGeMatrix3d& matrix) override;

  OdGePoint3d pointOnLine() const { return m_point; }
  // Unit direction of increasing parameter (zero for a degenerate entity).
  OdGeVector3d direction() const;
  // The unbounded line through this entity, with the same parameterisation.
  OdGeLine3d getLine() const;

  bool isParallelTo(const OdGeLinearEnt3d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isPerpendicularTo(const OdGeLinearEnt3d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  // Parallel and lying on the same unbounded line (bounds play no part).
  bool isColinearTo(const OdGeLinearEnt3d& other, const OdGeTol& tol = OdGeContext::gTol) const;

  // The single point the two entities share, bounds included: false when they miss each other
  // by more than tol.equalPoint(), and for colinear entities that share more than a point
  // (see overlap()). Colinear entities that only touch end to end do intersect.
  bool intersectWith(const OdGeLinearEnt3d& other, OdGePoint3d& point,
                     const OdGeTol& tol = OdGeContext::gTol) const;
  // The point where this entity crosses the plane; false when parallel or out of bounds.
  bool intersectWith(const OdGePlane& plane, OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const;
  // The stretch shared by two colinear entities, when it is bounded and longer than
  // tol.equalPoint(); it runs in the direction of this entity.
  bool overlap(const OdGeLinearEnt3d& other, OdGeLineSeg3d& result, const OdGeTol& tol = OdGeContext::gTol) const;

  using OdGeCurve3d::length;
  OdGePoint3d evalPoint(double param) const override { return m_point + m_vector * param; }
  double paramOf(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  OdGePoint3d closestPointTo(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  double length(double fromParam, double toParam) const override;
  OdGeExtents3d geomExtents() const override;

 protected:
  OdGeLinearEnt3d() = default;
  OdGeLinearEnt3d(const OdGePoint3d& point, const OdGeVector3d& vector) : m_point(point), m_vector(vector) {}

  // Parameter of the foot of the perpendicular on the unbounded line (0 when degenerate).
  double unboundedParamOf(const OdGePoint3d& point) const;
  // Range of this entity's parameters shared with a colinear entity (lo > hi when they do not
  // meet; infinite ends where both are unbounded).
  void sharedParamRange(const OdGeLinearEnt3d& other, double& lo, double& hi) const;

  OdGePoint3d m_point;
  OdGeVector3d m_vector{1.0, 0.0, 0.0};
};
