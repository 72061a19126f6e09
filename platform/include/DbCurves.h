// Curves: lines, circles, arcs, ellipses, rays, construction lines and splines.
#pragma once

#include "DbEntity.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeEllipArc3d.h"
#include "Ge/GePoint3dArray.h"

class OdDbLine : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbLine);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbLine() = default;
  OdDbLine(const OdGePoint3d& start, const OdGePoint3d& end) : m_start(start), m_end(end) {}

  OdGePoint3d startPoint() const { return m_start; }
  void setStartPoint(const OdGePoint3d& point) { assertWriteEnabled(); m_start = point; }
  OdGePoint3d endPoint() const { return m_end; }
  void setEndPoint(const OdGePoint3d& point) { assertWriteEnabled(); m_end = point; }
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) { assertWriteEnabled(); m_thickness = thickness; }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal) { assertWriteEnabled(); m_normal = normal; }

  OdResult getStartParam(double& param) const override { param = 0; return eOk; }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override { point = m_start; return eOk; }
  OdResult getEndPoint(OdGePoint3d& point) const override { point = m_end; return eOk; }
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override { dist = param; return eOk; }
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool extend = false) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  OdGePoint3d m_start;
  OdGePoint3d m_end;
  double m_thickness = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
};
using OdDbLinePtr = OdSmartPtr<OdDbLine>;

// Full circle in the plane of its normal. The centre is kept in the plane's
// object coordinate system, as files store it; accessors take and give world
// coordinates. The parameter is the angle from the plane's x axis.
class OdDbCircle : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbCircle);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbCircle() = default;
  OdDbCircle(const OdGePoint3d& center, double radius, const OdGeVector3d& normal = OdGeVector3d::kZAxis);

  OdGePoint3d center() const;
  void setCenter(const OdGePoint3d& center);
  double radius() const { return m_radius; }
  void setRadius(double radius) {
    assertWriteEnabled();
    m_radius = radius;
  }
  double diameter() const { return 2.0 * m_radius; }
  double circumference() const;
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) {
    assertWriteEnabled();
    m_thickness = thickness;
  }
  OdGeVector3d normal() const { return m_normal; }
  // Changes the plane; the world centre stays where it is.
  void setNormal(const OdGeVector3d& normal);
  // The same circle as a geometry object.
  OdGeCircArc3d geCircle() const;

  bool isClosed() const override { return true; }
  bool isPeriodic() const override { return true; }
  OdResult getStartParam(double& param) const override {
    param = 0;
    return eOk;
  }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override;
  OdResult getEndPoint(OdGePoint3d& point) const override { return getStartPoint(point); }
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  OdResult getArea(double& area) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Keeps the circle round: a transform that scales its plane unevenly fails
  // with eCannotScaleNonUniformly.
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  double m_thickness = 0;
  OdGePoint3d m_center;  // in the plane of the normal
  double m_radius = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
};
using OdDbCirclePtr = OdSmartPtr<OdDbCircle>;

// Circular arc, counter-clockwise about its normal from the start angle to
// the end angle (angles in the plane's object coordinate system, radians).
// The parameter is the angle; it runs from the start angle to the end angle
// raised by whole turns above it.
class OdDbArc : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbArc);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbArc() = default;
  OdDbArc(const OdGePoint3d& center, double radius, double startAngle, double endAngle,
          const OdGeVector3d& normal = OdGeVector3d::kZAxis);

  OdGePoint3d center() const;
  void setCenter(const OdGePoint3d& center);
  double radius() const { return m_radius; }
  void setRadius(double radius) {
    assertWriteEnabled();
    m_radius = radius;
  }
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) {
    assertWriteEnabled();
    m_thickness = thickness;
  }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal);
  double startAngle() const { return m_startAngle; }
  void setStartAngle(double angle) {
    assertWriteEnabled();
    m_startAngle = angle;
  }
  double endAngle() const { return m_endAngle; }
  void setEndAngle(double angle) {
    assertWriteEnabled();
    m_endAngle = angle;
  }
  // Angle swept from start to end, in (0, 2π].
  double totalAngle() const;
  double length() const { return m_radius * totalAngle(); }
  // The same arc as a geometry object (reference vector: the plane's x axis).
  OdGeCircArc3d geArc() const;

  OdResult getStartParam(double& param) const override {
    param = m_startAngle;
    return eOk;
  }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override;
  OdResult getEndPoint(OdGePoint3d& point) const override;
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  // With extend, the nearest point of the whole circle.
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  // The area between the arc and its chord.
  OdResult getArea(double& area) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Mirroring keeps the arc's points: start and end trade places so that the
  // arc still runs counter-clockwise about its (possibly new) normal.
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  double m_thickness = 0;
  OdGePoint3d m_center;  // in the plane of the normal
  double m_radius = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  double m_startAngle = 0;
  double m_endAngle = 0;
};
using OdDbArcPtr = OdSmartPtr<OdDbArc>;

// Ellipse or elliptical arc, in world coordinates. The major axis is a vector
// from the centre (its length is the major radius); the minor axis is
// normal x majorAxis scaled by the radius ratio. Start and end are eccentric
// parameters (as files store them): point(t) = center + major cos t + minor sin t.
class OdDbEllipse : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbEllipse);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbEllipse() = default;
  OdDbEllipse(const OdGePoint3d& center, const OdGeVector3d& normal, const OdGeVector3d& majorAxis,
              double radiusRatio, double startAngle = 0.0, double endAngle = Oda2PI);

  OdGePoint3d center() const { return m_center; }
  void setCenter(const OdGePoint3d& center) {
    assertWriteEnabled();
    m_center = center;
  }
  OdGeVector3d normal() const { return m_normal; }
  OdGeVector3d majorAxis() const { return m_majorAxis; }
  OdGeVector3d minorAxis() const;
  double radiusRatio() const { return m_radiusRatio; }
  OdResult setRadiusRatio(double ratio);
  double majorRadius() const { return m_majorAxis.length(); }
  double minorRadius() const { return majorRadius() * m_radiusRatio; }
  // Start and end as polar angles from the major axis (counter-clockwise about the normal).
  double startAngle() const;
  double endAngle() const;
  void setStartAngle(double angle);
  void setEndAngle(double angle);
  double startParam() const { return m_startParam; }
  double endParam() const { return m_endParam; }
  void setStartParam(double param) {
    assertWriteEnabled();
    m_startParam = param;
  }
  void setEndParam(double param) {
    assertWriteEnabled();
    m_endParam = param;
  }
  // The whole definition at once; angles are polar angles. eInvalidInput for a
  // major axis not perpendicular to the normal or a ratio outside (0, 1].
  OdResult set(const OdGePoint3d& center, const OdGeVector3d& normal, const OdGeVector3d& majorAxis,
               double radiusRatio, double startAngle = 0.0, double endAngle = Oda2PI);
  bool isNull() const { return m_majorAxis.isZeroLength(); }
  OdGeEllipArc3d geEllipse() const;

  bool isClosed() const override;
  bool isPeriodic() const override { return isClosed(); }
  OdResult getStartParam(double& param) const override {
    param = m_startParam;
    return eOk;
  }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override;
  OdResult getEndPoint(OdGePoint3d& point) const override;
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  // Whole ellipse: π a b; an arc: the area between the arc and its chord.
  OdResult getArea(double& area) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Any non-degenerate affine transform (an ellipse stays an ellipse).
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  // Takes over a geometry ellipse, keeping the normal on the side of `preferredNormal`.
  void setFromGe(const OdGeEllipArc3d& ellipse, const OdGeVector3d& preferredNormal);

  OdGePoint3d m_center;
  OdGeVector3d m_majorAxis = OdGeVector3d(1, 0, 0);
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  double m_radiusRatio = 1.0;
  double m_startParam = 0;
  double m_endParam = Oda2PI;
};
using OdDbEllipsePtr = OdSmartPtr<OdDbEllipse>;

// Half-infinite construction line from a base point along a unit direction.
// The parameter is the distance from the base point.
class OdDbRay : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbRay);
  ODDB_DECLARE_SCHEMA();

 public:
  OdGePoint3d basePoint() const { return m_basePoint; }
  void setBasePoint(const OdGePoint3d& point) {
    assertWriteEnabled();
    m_basePoint = point;
  }
  OdGeVector3d unitDir() const { return m_unitDir; }
  void setUnitDir(const OdGeVector3d& direction);
  OdGePoint3d secondPoint() const { return m_basePoint + m_unitDir; }
  void setSecondPoint(const OdGePoint3d& point) { setUnitDir(point - m_basePoint); }

  OdResult getStartParam(double& param) const override {
    param = 0;
    return eOk;
  }
  OdResult getStartPoint(OdGePoint3d& point) const override {
    point = m_basePoint;
    return eOk;
  }
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  // Unbounded: no extents.
  OdResult getGeomExtents(OdGeExtents3d& extents) const override { return eInvalidExtents; }
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  OdGePoint3d m_basePoint;
  OdGeVector3d m_unitDir = OdGeVector3d(1, 0, 0);
};
using OdDbRayPtr = OdSmartPtr<OdDbRay>;

// Infinite construction line through a base point along a unit direction.
// The parameter is the signed distance from the base point.
class OdDbXline : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbXline);
  ODDB_DECLARE_SCHEMA();

 public:
  OdGePoint3d basePoint() const { return m_basePoint; }
  void setBasePoint(const OdGePoint3d& point) {
    assertWriteEnabled();
    m_basePoint = point;
  }
  OdGeVector3d unitDir() const { return m_unitDir; }
  void setUnitDir(const OdGeVector3d& direction);
  OdGePoint3d secondPoint() const { return m_basePoint + m_unitDir; }
  void setSecondPoint(const OdGePoint3d& point) { setUnitDir(point - m_basePoint); }

  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override { return eInvalidExtents; }
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  OdGePoint3d m_basePoint;
  OdGeVector3d m_unitDir = OdGeVector3d(1, 0, 0);
};
using OdDbXlinePtr = OdSmartPtr<OdDbXline>;

// Non-uniform rational B-spline in world coordinates, with the fit data it
// was made from when it has any. A spline with fit points but no control
// points (as some files carry) is evaluated through its interpolating curve.
// The parameter runs over the knot range knots[degree] .. knots[numControlPoints].
class OdDbSpline : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbSpline);
  ODDB_DECLARE_SCHEMA();

 public:
  // Bits of the spline flags (group 70).
  enum Flags : OdInt16 { kClosed = 1, kPeriodic = 2, kRational = 4, kPlanar = 8, kLinear = 16 };

  int degree() const { return m_degree; }
  bool isRational() const { return (m_flags & kRational) != 0; }
  bool isClosed() const override { return (m_flags & kClosed) != 0; }
  bool isPeriodic() const override { return (m_flags & kPeriodic) != 0; }
  bool isPlanar() const { return (m_flags & kPlanar) != 0; }
  bool isLinear() const { return (m_flags & kLinear) != 0; }
  OdInt16 flags() const { return m_flags; }
  // The plane's normal of a planar spline; zero for a spline that is not planar.
  OdGeVector3d normal() const { return m_normal; }

  int numControlPoints() const { return static_cast<int>(m_controlPoints.size()); }
  OdResult getControlPointAt(int index, OdGePoint3d& point) const;
  OdResult setControlPointAt(int index, const OdGePoint3d& point);
  double weightAt(int index) const;
  OdResult setWeightAt(int index, double weight);
  int numKnots() const { return static_cast<int>(m_knots.size()); }
  const OdGeDoubleArray& knots() const { return m_knots; }
  int numFitPoints() const { return static_cast<int>(m_fitPoints.size()); }
  OdResult getFitPointAt(int index, OdGePoint3d& point) const;
  bool hasFitData() const { return !m_fitPoints.empty(); }
  double fitTolerance() const { return m_fitTolerance; }
  double knotTolerance() const { return m_knotTolerance; }
  double controlPointTolerance() const { return m_controlPointTolerance; }
  OdGeVector3d startFitTangent() const { return m_startTangent; }
  OdGeVector3d endFitTangent() const { return m_endTangent; }

  void getNurbsData(int& degree, bool& rational, bool& closed, bool& periodic,
                    OdGePoint3dArray& controlPoints, OdGeDoubleArray& knots, OdGeDoubleArray& weights,
                    double& controlPtTol, double& knotTol) const;
  // eInvalidInput unless knots = control points + degree + 1 (non-decreasing) and,
  // for a rational spline, one positive weight per control point. Fit data is dropped.
  OdResult setNurbsData(int degree, bool rational, bool closed, bool periodic,
                        const OdGePoint3dArray& controlPoints, const OdGeDoubleArray& knots,
                        const OdGeDoubleArray& weights, double controlPtTol = 1e-10, double knotTol = 1e-10);
  OdResult getFitData(OdGePoint3dArray& fitPoints, int& degree, double& fitTolerance, bool& tangentsExist,
                      OdGeVector3d& startTangent, OdGeVector3d& endTangent) const;
  // Interpolates the fit points (chord-length parameters; with non-zero tangents
  // the ends leave and arrive along them) and keeps the fit data with the result.
  OdResult setFitData(const OdGePoint3dArray& fitPoints, int degree, double fitTolerance,
                      const OdGeVector3d& startTangent = OdGeVector3d(),
                      const OdGeVector3d& endTangent = OdGeVector3d());

  OdResult getStartParam(double& param) const override;
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override;
  OdResult getEndPoint(OdGePoint3d& point) const override;
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  OdResult getParamAtDist(double dist, double& param) const;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  // The area a closed spline encloses, in its plane.
  OdResult getArea(double& area) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Any affine transform: control points, fit points and tangents move with it.
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  // Sets the planar and linear flags from the control points (and the normal).
  void updatePlanarity();

  OdGeVector3d m_normal = OdGeVector3d(0, 0, 0);
  OdInt16 m_flags = 0;
  OdInt16 m_degree = 3;
  double m_knotTolerance = 1e-10;
  double m_controlPointTolerance = 1e-10;
  double m_fitTolerance = 1e-10;
  OdGeVector3d m_startTangent;
  OdGeVector3d m_endTangent;
  OdGeDoubleArray m_knots;
  OdGeDoubleArray m_weights;  // empty unless rational
  OdGePoint3dArray m_controlPoints;
  OdGePoint3dArray m_fitPoints;

};
using OdDbSplinePtr = OdSmartPtr<OdDbSpline>;
