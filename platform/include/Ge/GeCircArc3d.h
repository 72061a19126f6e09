// Circular arc (or full circle) of space. The parameter is the angle, counter-clockwise about
// the normal, from the reference vector; the arc runs from startAng() to endAng(), with
// startAng() <= endAng() <= startAng() + 2π.
#pragma once

#include "Ge/GeConst.h"
#include "Ge/GeCurve3d.h"

class OdGeLinearEnt3d;

class OdGeCircArc3d : public OdGeCurve3d {
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
  OdGeCircArc3d& setCenter(const OdGePoint3d& center) { m_center = center; return *this; }
  OdGeCircArc3d& setRadius(double radius) { m_radius = radius; return *this; }
  OdGeCircArc3d& setAngles(double startAng, double endAng);
  OdGeCircArc3d& setAxes(const OdGeVector3d& normal, const OdGeVector3d& refVec);

  const OdGePoint3d& center() const { return m_center; }
  double radius() const { return m_radius; }
  const OdGeVector3d& normal() const { return m_normal; }
  const OdGeVector3d& refVec() const { return m_refVec; }
  double startAng() const { return m_startAng; }
  double endAng() const { return m_endAng; }
  double sweepAngle() const { return m_endAng - m_startAng; }
  OdGePoint3d startPoint() const { return evalPoint(m_startAng); }
  OdGePoint3d endPoint() const { return evalPoint(m_endAng); }

  // Full turn (start and end coincide and the sweep is more than half a turn).
  bool isClosed(const OdGeTol& tol = OdGeContext::gTol) const override;

  using OdGeCurve3d::length;
  void getInterval(OdGeInterval& interval) const override { interval.set(m_startAng, m_endAng); }
  OdGePoint3d evalPoint(double param) const override;
  double paramOf(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  OdGePoint3d closestPointTo(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  double length(double fromParam, double toParam) const override;
  // Keeps the point set: the normal flips and the angles are mirrored.
  OdGeCircArc3d& reverseParam() override;
  OdGeExtents3d geomExtents() const override;

  // Points on both entities (0, 1 for a tangent or a crossing of the plane, or 2). False when
  // there are none, and for coplanar arcs of the same circle that overlap.
  bool intersectWith(const OdGeLinearEnt3d& line, int& numInt, OdGePoint3d& p1, OdGePoint3d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;
  bool intersectWith(const OdGeCircArc3d& arc, int& numInt, OdGePoint3d& p1, OdGePoint3d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;

 private:
  OdGeVector3d yAxis() const { return m_normal.crossProduct(m_refVec); }
  // Coordinates of a point in the arc's plane system (origin at the centre, x along refVec).
  OdGePoint2d toPlane(const OdGePoint3d& point) const;
  OdGePoint3d fromPlane(const OdGePoint2d& point) const;

  OdGePoint3d m_center;
  OdGeVector3d m_normal{0.0, 0.0, 1.0};
  OdGeVector3d m_refVec{1.0, 0.0, 0.0};
  double m_radius = 1.0;
  double m_startAng = 0.0;
  double m_endAng = Oda2PI;
};
