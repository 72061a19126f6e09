// What the circular arcs of the plane and of space have in common, written once over the
// dimension (Ge/GeSpace.h). The parameter is the angle from the reference vector towards the
// arc's second axis (a quarter turn on, in the arc's sense); the arc runs from startAng() to
// endAng(), with startAng() <= endAng() <= startAng() + 2π. Use OdGeCircArc2d and OdGeCircArc3d.
#pragma once

#include "Ge/GeConst.h"
#include "Ge/GeCurve.h"

template <class Space>
class OdGeCircArcT : public Space::Curve {
 public:
  using Point = typename Space::Point;
  using Vector = typename Space::Vector;
  using Extents = typename Space::Extents;
  using CircArc = typename Space::CircArc;

  CircArc& setCenter(const Point& center) {
    m_center = center;
    return static_cast<CircArc&>(*this);
  }
  CircArc& setRadius(double radius) {
    m_radius = radius;
    return static_cast<CircArc&>(*this);
  }
  // An end angle below the start angle is raised by whole turns.
  CircArc& setAngles(double startAng, double endAng);

  const Point& center() const { return m_center; }
  double radius() const { return m_radius; }
  const Vector& refVec() const { return m_refVec; }
  double startAng() const { return m_startAng; }
  double endAng() const { return m_endAng; }
  double sweepAngle() const { return m_endAng - m_startAng; }
  Point startPoint() const { return evalPoint(m_startAng); }
  Point endPoint() const { return evalPoint(m_endAng); }

  // Full turn (start and end coincide and the sweep is more than half a turn).
  bool isClosed(const OdGeTol& tol = OdGeContext::gTol) const override;

  using Space::Curve::length;
  void getInterval(OdGeInterval& interval) const override { interval.set(m_startAng, m_endAng); }
  Point evalPoint(double param) const override;
  double paramOf(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  Point closestPointTo(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  double length(double fromParam, double toParam) const override;
  Extents geomExtents() const override;

 protected:
  OdGeCircArcT() = default;

  // Why no circle runs through the three points (two coincide, or all lie on one line), or kOk.
  static OdGe::ErrorCondition threePointStatus(const Point& startPoint, const Point& pointOnArc,
                                               const Point& endPoint);
  // The angles of the same points with the sense turned: [-end, -start].
  void mirrorAngles() {
    const double start = m_startAng;
    m_startAng = -m_endAng;
    m_endAng = -start;
  }
  // Unit vector of parameter π/2: a quarter turn from refVec in the arc's sense.
  Vector yAxis() const;
  // Coordinates of a point in the arc's own plane system (origin at the centre, x along refVec).
  OdGePoint2d toLocal(const Point& point) const;
  Point fromLocal(const OdGePoint2d& point) const;
  // Adds each local candidate that lies on this arc and on `other` to the meeting points.
  void addCommonPoints(const OdGePoint2d* candidates, int count, const typename Space::Curve& other,
                       int& numInt, Point& p1, Point& p2, const OdGeTol& tol) const;
  // Meeting points of two arcs of the same circle: only ends, and none where they overlap.
  // sameSense: the other arc runs in this arc's sense.
  bool intersectSameCircle(const OdGeCircArcT& other, bool sameSense, double pointTol, int& numInt, Point& p1,
                           Point& p2, const OdGeTol& tol) const;

  Point m_center;
  Vector m_refVec = Vector::kXAxis;
  double m_radius = 1.0;
  double m_startAng = 0.0;
  double m_endAng = Oda2PI;
};
