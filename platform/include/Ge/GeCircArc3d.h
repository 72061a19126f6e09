// Circular arc (or full circle) of space (see Ge/GeCircArc.h). The parameter is the angle,
// counter-clockwise about the normal, from the reference vector.
#pragma once

#include "Ge/GeCircArc.h"
#include "Ge/GeCurve3d.h"

template <>
OdGeVector3d OdGeCircArcT<OdGeSpace3d>::yAxis() const;
extern template class OdGeCircArcT<OdGeSpace3d>;

class OdGeCircArc3d : public OdGeCircArcT<OdGeSpace3d> {
 public:
  OdGeCircArc3d() = default;  // unit circle about the origin in the x-y plane
  // Full circle; the reference vector is the x axis of the normal's object coordinate system.
  OdGeCircArc3d(const OdGePoint3d& center, const OdGeVector3d& normal, double radius);
  OdGeCircArc3d(const OdGePoint3d& center, const OdGeVector3d& normal, const OdGeVector3d& refVec,
                double radius, double startAng = 0.0, double endAng = Oda2PI);
  // From the first point through the second to the third; throws OdError(eDegenerateGeometry)
  // when they lie on one line or two coincide.
  OdGeCircArc3d(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc, const OdGePoint3d& endPoint);

  OdGe::EntityId type() const override { return OdGe::kCircArc3d; }
  OdGeCircArc3d* copy() const override { return new OdGeCircArc3d(*this); }
  // Throws OdError(eCannotScaleNonUniformly) when the matrix does not keep the arc circular.
  OdGeCircArc3d& transformBy(const OdGeMatrix3d& matrix) override;

  OdGeCircArc3d& set(const OdGePoint3d& center, const OdGeVector3d& normal, double radius);
  // The normal is normalised; refVec is made perpendicular to it (the normal's OCS x axis when it
  // is parallel to the normal). An end angle below the start angle is raised by whole turns.
  OdGeCircArc3d& set(const OdGePoint3d& center, const OdGeVector3d& normal, const OdGeVector3d& refVec,
                     double radius, double startAng, double endAng);
  OdGeCircArc3d& set(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc, const OdGePoint3d& endPoint);
  // As above without throwing: status tells why no arc was made (the arc is then unchanged).
  OdGeCircArc3d& set(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc, const OdGePoint3d& endPoint,
                     OdGe::ErrorCondition& status);
  OdGeCircArc3d& setAxes(const OdGeVector3d& normal, const OdGeVector3d& refVec);

  const OdGeVector3d& normal() const { return m_normal; }

  // Keeps the point set: the normal flips and the angles are mirrored.
  OdGeCircArc3d& reverseParam() override;

  // Points on both entities (0, 1 for a tangent or a crossing of the plane, or 2). False when
  // there are none, and for coplanar arcs of the same circle that overlap.
  bool intersectWith(const OdGeLinearEnt3d& line, int& numInt, OdGePoint3d& p1, OdGePoint3d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;
  bool intersectWith(const OdGeCircArc3d& arc, int& numInt, OdGePoint3d& p1, OdGePoint3d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;

 private:
  OdGeVector3d m_normal{0.0, 0.0, 1.0};
};
