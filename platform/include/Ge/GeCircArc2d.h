// Circular arc (or full circle) of the plane (see Ge/GeCircArc.h). The parameter is the angle
// from the reference vector, measured counter-clockwise, or clockwise for a clockwise arc.
#pragma once

#include "Ge/GeCircArc.h"
#include "Ge/GeCurve2d.h"

template <>
OdGeVector2d OdGeCircArcT<OdGeSpace2d>::yAxis() const;
extern template class OdGeCircArcT<OdGeSpace2d>;

class OdGeCircArc2d : public OdGeCircArcT<OdGeSpace2d> {
 public:
  OdGeCircArc2d() = default;  // unit circle about the origin
  OdGeCircArc2d(const OdGePoint2d& center, double radius, double startAng = 0.0, double endAng = Oda2PI,
                const OdGeVector2d& refVec = OdGeVector2d::kXAxis, bool isClockWise = false);
  // From the first point through the second to the third; throws OdError(eDegenerateGeometry)
  // when they lie on one line or two coincide.
  OdGeCircArc2d(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc, const OdGePoint2d& endPoint);
  // The arc of a bulged polyline segment from startPoint to endPoint (see Ge/GeBulge.h); it is
  // clockwise for a negative bulge. Throws OdError(eDegenerateGeometry) for a zero bulge or
  // coincident points.
  OdGeCircArc2d(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge);

  OdGe::EntityId type() const override { return OdGe::kCircArc2d; }
  OdGeCircArc2d* copy() const override { return new OdGeCircArc2d(*this); }
  // A mirroring matrix turns the arc's sense. Throws OdError(eCannotScaleNonUniformly) when the
  // matrix does not keep the arc circular.
  OdGeCircArc2d& transformBy(const OdGeMatrix2d& matrix) override;

  // An end angle below the start angle is raised by whole turns.
  OdGeCircArc2d& set(const OdGePoint2d& center, double radius, double startAng = 0.0, double endAng = Oda2PI,
                     const OdGeVector2d& refVec = OdGeVector2d::kXAxis, bool isClockWise = false);
  OdGeCircArc2d& set(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc, const OdGePoint2d& endPoint);
  // As above without throwing: status tells why no arc was made (the arc is then unchanged).
  OdGeCircArc2d& set(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc, const OdGePoint2d& endPoint,
                     OdGe::ErrorCondition& status);
  OdGeCircArc2d& set(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge);
  OdGeCircArc2d& setRefVec(const OdGeVector2d& refVec);

  bool isClockWise() const { return m_clockWise; }

  // Keeps the point set: the sense turns and the angles are mirrored.
  OdGeCircArc2d& reverseParam() override;

  // Points on both entities (0, 1 for a tangent, or 2). False when there are none, and for
  // arcs of the same circle that overlap.
  bool intersectWith(const OdGeLinearEnt2d& line, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;
  bool intersectWith(const OdGeCircArc2d& arc, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;

 private:
  bool m_clockWise = false;
};
