// What the parametric curves of the plane and of space have in common, written once over the
// dimension (Ge/GeSpace.h). Use OdGeCurve2d and OdGeCurve3d.
#pragma once

#include "Ge/GeEntity.h"
#include "Ge/GeInterval.h"
#include "OdArray.h"

template <class Space>
class OdGeCurveT : public Space::Entity {
 public:
  using Point = typename Space::Point;
  using Extents = typename Space::Extents;
  using Curve = typename Space::Curve;

  bool isKindOf(OdGe::EntityId entityType) const override;

  virtual void getInterval(OdGeInterval& interval) const = 0;
  virtual Point evalPoint(double param) const = 0;
  // Parameter of the point of the curve closest to `point`.
  virtual double paramOf(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  virtual Point closestPointTo(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  double distanceTo(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const;

  // Within tol.equalPoint() of the curve; the second form also gives the parameter there.
  bool isOn(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  bool isOn(const Point& point, double& param, const OdGeTol& tol = OdGeContext::gTol) const;

  // False (and `point` untouched) when the interval is unbounded at that end.
  bool hasStartPoint(Point& point) const;
  bool hasEndPoint(Point& point) const;
  // Bounded, and the end point equals the start point.
  virtual bool isClosed(const OdGeTol& tol = OdGeContext::gTol) const;

  // Arc length between two parameters (always positive).
  virtual double length(double fromParam, double toParam) const = 0;
  // Length of the whole curve; infinity for unbounded curves.
  double length() const;

  // Runs the curve the other way round: the start becomes the end.
  virtual Curve& reverseParam() = 0;

  // numSample points evenly spaced in parameter from start to end (at least two); nothing for
  // an unbounded curve.
  void getSamplePoints(int numSample, OdArray<Point>& points) const;
  // The tight box of the curve; invalid for unbounded curves.
  virtual Extents geomExtents() const = 0;
};
