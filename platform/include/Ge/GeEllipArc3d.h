// Elliptical arc (or full ellipse) of space:
//   evalPoint(t) = center + majorRadius * cos(t) * majorAxis + minorRadius * sin(t) * minorAxis
// for t from startAng() to endAng() (startAng() <= endAng() <= startAng() + 2π). The parameter is
// the eccentric angle, not the polar angle of the point; see paramFromAngle(). The normal is
// majorAxis x minorAxis.
#pragma once

#include "Ge/GeConst.h"
#include "Ge/GeCurve3d.h"

class OdGeCircArc3d;

class OdGeEllipArc3d : public OdGeCurve3d {
 public:
  OdGeEllipArc3d() = default;  // unit circle about the origin in the x-y plane
  explicit OdGeEllipArc3d(const OdGeCircArc3d& arc);
  OdGeEllipArc3d(const OdGePoint3d& center, const OdGeVector3d& majorAxis, const OdGeVector3d& minorAxis,
                 double majorRadius, double minorRadius, double startAng = 0.0, double endAng = Oda2PI);

  OdGe::EntityId type() const override { return OdGe::kEllipArc3d; }
  OdGeEllipArc3d* copy() const override { return new OdGeEllipArc3d(*this); }
  // Any affine map keeps an ellipse an ellipse; the axes and parameters are recomputed so that
  // the major axis stays the longer one. Throws OdError(eDegenerateGeometry) when the matrix
  // flattens the ellipse onto a line.
  OdGeEllipArc3d& transformBy(const OdGeMatrix3d& matrix) override;

  // majorAxis is normalised; minorAxis is made a unit vector perpendicular to it.
  OdGeEllipArc3d& set(const OdGePoint3d& center, const OdGeVector3d& majorAxis, const OdGeVector3d& minorAxis,
                      double majorRadius, double minorRadius, double startAng = 0.0, double endAng = Oda2PI);
  OdGeEllipArc3d& set(const OdGeCircArc3d& arc);
  // The form an ellipse entity stores: the major axis as a vector from the centre (its length is
  // the major radius), the minor/major radius ratio, and the normal that fixes the minor axis
  // as normal x majorAxis.
  OdGeEllipArc3d& setFromMajorAxis(const OdGePoint3d& center, const OdGeVector3d& normal,
                                   const OdGeVector3d& majorAxisVector, double radiusRatio,
                                   double startAng = 0.0, double endAng = Oda2PI);
  OdGeEllipArc3d& setCenter(const OdGePoint3d& center) { m_center = center; return *this; }
  OdGeEllipArc3d& setAngles(double startAng, double endAng);

  const OdGePoint3d& center() const { return m_center; }
  const OdGeVector3d& majorAxis() const { return m_majorAxis; }
  const OdGeVector3d& minorAxis() const { return m_minorAxis; }
  double majorRadius() const { return m_majorRadius; }
  double minorRadius() const { return m_minorRadius; }
  double radiusRatio() const { return m_minorRadius / m_majorRadius; }
  OdGeVector3d normal() const { return m_majorAxis.crossProduct(m_minorAxis); }
  double startAng() const { return m_startAng; }
  double endAng() const { return m_endAng; }
  OdGePoint3d startPoint() const { return evalPoint(m_startAng); }
  OdGePoint3d endPoint() const { return evalPoint(m_endAng); }
  bool isCircular(const OdGeTol& tol = OdGeContext::gTol) const;

  // Conversions between the eccentric parameter and the polar angle (from the major axis,
  // counter-clockwise about the normal) of the same point; both keep the number of whole turns.
  double paramFromAngle(double angle) const;
  double angleFromParam(double param) const;

  // Full turn (start and end coincide and the sweep is more than half a turn).
  bool isClosed(const OdGeTol& tol = OdGeContext::gTol) const override;

  using OdGeCurve3d::length;
  void getInterval(OdGeInterval& interval) const override { interval.set(m_startAng, m_endAng); }
  OdGePoint3d evalPoint(double param) const override;
  double paramOf(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  OdGePoint3d closestPointTo(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  // Numerical integration, relative error below 1e-12.
  double length(double fromParam, double toParam) const override;
  OdGeEllipArc3d& reverseParam() override;
  OdGeExtents3d geomExtents() const override;

 private:
  OdGePoint3d m_center;
  OdGeVector3d m_majorAxis{1.0, 0.0, 0.0};
  OdGeVector3d m_minorAxis{0.0, 1.0, 0.0};
  double m_majorRadius = 1.0;
  double m_minorRadius = 1.0;
  double m_startAng = 0.0;
  double m_endAng = Oda2PI;
};
