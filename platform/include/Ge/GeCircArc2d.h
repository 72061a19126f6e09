// Circular arc (or full circle) of the plane. The parameter is the angle from the reference
// vector, measured counter-clockwise, or clockwise for a clockwise arc; the arc runs from
// startAng() to endAng() in that sense, with startAng() <= endAng() <= startAng() + 2π.
#pragma once

#include "Ge/GeConst.h"
#include "Ge/GeCurve2d.h"

class OdGeLinearEnt2d;

class OdGeCircArc2d : public OdGeCurve2d {
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
  OdGeCircArc2d& setCenter(const OdGePoint2d& center) { m_center = center; return *this; }
  OdGeCircArc2d& setRadius(double radius) { m_radius = radius; return *this; }
  OdGeCircArc2d& setAngles(double startAng, double endAng);
  OdGeCircArc2d& setRefVec(const OdGeVector2d& refVec);

  const OdGePoint2d& center() const { return m_center; }
  double radius() const { return m_radius; }
  const OdGeVector2d& refVec() const { return m_refVec; }
  double startAng() const { return m_startAng; }
  double endAng() const { return m_endAng; }
  double sweepAngle() const { return m_endAng - m_startAng; }
  bool isClockWise() const { return m_clockWise; }
  OdGePoint2d startPoint() const { return evalPoint(m_startAng); }
  OdGePoint2d endPoint() const { return evalPoint(m_endAng); }

  // Full turn (start and end coincide and the sweep is more than half a turn).
  bool isClosed(const OdGeTol& tol = OdGeContext::gTol) const override;

  using OdGeCurve2d::length;
  void getInterval(OdGeInterval& interval) const override { interval.set(m_startAng, m_endAng); }
  OdGePoint2d evalPoint(double param) const override;
  double paramOf(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  OdGePoint2d closestPointTo(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  double length(double fromParam, double toParam) const override;
  // Keeps the point set: the sense turns and the angles are mirrored.
  OdGeCircArc2d& reverseParam() override;
  OdGeExtents2d geomExtents() const override;

  // Points on both entities (0, 1 for a tangent, or 2). False when there are none, and for
  // arcs of the same circle that overlap.
  bool intersectWith(const OdGeLinearEnt2d& line, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;
  bool intersectWith(const OdGeCircArc2d& arc, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                     const OdGeTol& tol = OdGeContext::gTol) const;

 private:
  // Unit vector of parameter π/2: a quarter turn from refVec in the arc's sense.
  OdGeVector2d yAxis() const { return m_clockWise ? -m_refVec.perpVector() : m_refVec.perpVector(); }
  OdGePoint2d toLocal(const OdGePoint2d& point) const;
  OdGePoint2d fromLocal(const OdGePoint2d& point) const;

  OdGePoint2d m_center;
  OdGeVector2d m_refVec{1.0, 0.0};
  double m_radius = 1.0;
  double m_startAng = 0.0;
  double m_endAng = Oda2PI;
  bool m_clockWise = false;
};
