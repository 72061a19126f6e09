// Base of the parametric curves of the plane: a point for each parameter of an interval.
#pragma once

#include "Ge/GeEntity2d.h"
#include "Ge/GeExtents2d.h"
#include "Ge/GeInterval.h"
#include "Ge/GePoint2dArray.h"

class OdGeCurve2d : public OdGeEntity2d {
 public:
  bool isKindOf(OdGe::EntityId entityType) const override;
  OdGeCurve2d* copy() const override = 0;
  OdGeCurve2d& transformBy(const OdGeMatrix2d& matrix) override = 0;

  virtual void getInterval(OdGeInterval& interval) const = 0;
  virtual OdGePoint2d evalPoint(double param) const = 0;
  // Parameter of the point of the curve closest to `point`.
  virtual double paramOf(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  virtual OdGePoint2d closestPointTo(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  double distanceTo(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const;

  // Within tol.equalPoint() of the curve; the second form also gives the parameter there.
  bool isOn(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  bool isOn(const OdGePoint2d& point, double& param, const OdGeTol& tol = OdGeContext::gTol) const;

  // False (and `point` untouched) when the interval is unbounded at that end.
  bool hasStartPoint(OdGePoint2d& point) const;
  bool hasEndPoint(OdGePoint2d& point) const;
  // Bounded, and the end point equals the start point.
  virtual bool isClosed(const OdGeTol& tol = OdGeContext::gTol) const;

  // Arc length between two parameters (always positive).
  virtual double length(double fromParam, double toParam) const = 0;
  // Length of the whole curve; infinity for unbounded curves.
  double length() const;

  // Runs the curve the other way round: the start becomes the end.
  virtual OdGeCurve2d& reverseParam() = 0;

  // numSample points evenly spaced in parameter from start to end (at least two); nothing for
  // an unbounded curve.
  void getSamplePoints(int numSample, OdGePoint2dArray& points) const;
  // The tight box of the curve; invalid for unbounded curves.
  virtual OdGeExtents2d geomExtents() const = 0;
};
