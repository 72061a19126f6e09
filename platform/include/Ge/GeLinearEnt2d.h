// Base of the straight curves of the plane: evalPoint(t) = pointOnLine() + t * (the defining vector).
// Lines are unbounded, rays bounded at t = 0, segments run over [0, 1] from start to end.
#pragma once

#include "Ge/GeCurve2d.h"

class OdGeLine2d;
class OdGeLineSeg2d;

class OdGeLinearEnt2d : public OdGeCurve2d {
 public:
  bool isKindOf(OdGe::EntityId entityType) const override;
  OdGeLinearEnt2d* copy() const override = 0;
  OdGeLinearEnt2d& transformBy(const OdGeMatrix2d& matrix) override;

  OdGePoint2d pointOnLine() const { return m_point; }
  // Unit direction of increasing parameter (zero for a degenerate entity).
  OdGeVector2d direction() const;
  // The unbounded line through this entity, with the same parameterisation.
  OdGeLine2d getLine() const;

  bool isParallelTo(const OdGeLinearEnt2d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isPerpendicularTo(const OdGeLinearEnt2d& other, const OdGeTol& tol = OdGeContext::gTol) const;
  // Parallel and lying on the same unbounded line (bounds play no part).
  bool isColinearTo(const OdGeLinearEnt2d& other, const OdGeTol& tol = OdGeContext::gTol) const;

  // The single point the two entities share, bounds included: false when they miss each other
  // by more than tol.equalPoint(), and for colinear entities that share more than a point
  // (see overlap()). Colinear entities that only touch end to end do intersect.
  bool intersectWith(const OdGeLinearEnt2d& other, OdGePoint2d& point,
                     const OdGeTol& tol = OdGeContext::gTol) const;
  // The stretch shared by two colinear entities, when it is bounded and longer than
  // tol.equalPoint(); it runs in the direction of this entity.
  bool overlap(const OdGeLinearEnt2d& other, OdGeLineSeg2d& result, const OdGeTol& tol = OdGeContext::gTol) const;

  using OdGeCurve2d::length;
  OdGePoint2d evalPoint(double param) const override { return m_point + m_vector * param; }
  double paramOf(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  OdGePoint2d closestPointTo(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  double length(double fromParam, double toParam) const override;
  OdGeExtents2d geomExtents() const override;

 protected:
  OdGeLinearEnt2d() = default;
  OdGeLinearEnt2d(const OdGePoint2d& point, const OdGeVector2d& vector) : m_point(point), m_vector(vector) {}

  // Parameter of the foot of the perpendicular on the unbounded line (0 when degenerate).
  double unboundedParamOf(const OdGePoint2d& point) const;
  // Range of this entity's parameters shared with a colinear entity (lo > hi when they do not
  // meet; infinite ends where both are unbounded).
  void sharedParamRange(const OdGeLinearEnt2d& other, double& lo, double& hi) const;

  OdGePoint2d m_point;
  OdGeVector2d m_vector{1.0, 0.0};
};
