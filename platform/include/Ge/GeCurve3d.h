// Base of the parametric curves of space: a point for each parameter of an interval.
#pragma once

#include "Ge/GeEntity3d.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GeInterval.h"
#include "Ge/GePoint3dArray.h"

class OdGeCurve3d : public OdGeEntity3d {
 public:
  bool isKindOf(OdGe::EntityId entityType) const override;
  OdGeCurve3d* copy() const override = 0;
  OdGeCurve3d& transformBy(const OdGeMatrix3d& matrix) override = 0;

  virtual void getInterval(OdGeInterval& interval) const = 0;
  virtual OdGePoint3d evalPoint(double param) const = 0;
  // Parameter of the point of the curve closest to `point`.
  virtual double paramOf(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  virtual OdGePoint3d closestPointTo(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  double distanceTo(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const;

  // Within tol.equalPoint() of the curve; the second form also gives the parameter there.
  bool isOn(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;
  bool isOn(const OdGePoint3d& point, double& param, const OdGeTol& tol = OdGeContext::gTol) const;

  // False (and `point` untouched) when the interval is unbounded at that end.
  bool hasStartPoint(OdGePoint3d& point) const;
  bool hasEndPoint(OdGePoint3d& point) const;
  // Bounded, and the end point equals the start point.
  virtual bool isClosed(const OdGeTol& tol = OdGeContext::gTol) const;

  // Arc length between two parameters (always positive).
  virtual double length(double fromParam, double toParam) const = 0;
  // Length of the whole curve; infinity for unbounded curves.
  double length() const;

  // Runs the curve the other way round: the start becomes the end.
  virtual OdGeCurve3d& reverseParam() = 0;

  // numSample points evenly spaced in parameter from start to end (at least two); nothing for
  // an unbounded curve.
  void getSamplePoints(int numSample, OdGePoint3dArray& points) const;
  // The tight box of the curve; invalid for unbounded curves.
  virtual OdGeExtents3d geomExtents() const = 0;
};
