// Entity and curve bases of both dimensions.
#include <limits>

#include "Ge/GeCurve2d.h"
#include "Ge/GeCurve3d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePlane.h"
#include "ge/GeInternal.h"

// ---- OdGeEntity3d / OdGeCurve3d

bool OdGeEntity3d::isKindOf(OdGe::EntityId entityType) const {
  return entityType == OdGe::kEntity3d || entityType == type();
}

OdGeEntity3d& OdGeEntity3d::translateBy(const OdGeVector3d& v) { return transformBy(OdGeMatrix3d::translation(v)); }

OdGeEntity3d& OdGeEntity3d::rotateBy(double angle, const OdGeVector3d& axis, const OdGePoint3d& center) {
  return transformBy(OdGeMatrix3d::rotation(angle, axis, center));
}

OdGeEntity3d& OdGeEntity3d::mirror(const OdGePlane& plane) { return transformBy(OdGeMatrix3d::mirroring(plane)); }

OdGeEntity3d& OdGeEntity3d::scaleBy(double factor, const OdGePoint3d& center) {
  return transformBy(OdGeMatrix3d::scaling(factor, center));
}

bool OdGeCurve3d::isKindOf(OdGe::EntityId entityType) const {
  return entityType == OdGe::kCurve3d || OdGeEntity3d::isKindOf(entityType);
}

double OdGeCurve3d::distanceTo(const OdGePoint3d& point, const OdGeTol& tol) const {
  return closestPointTo(point, tol).distanceTo(point);
}

bool OdGeCurve3d::isOn(const OdGePoint3d& point, const OdGeTol& tol) const {
  const OdGePoint3d closest = closestPointTo(point, tol);
  return closest.distanceTo(point) <= OdGeInternal::pointTolAt(tol, point, closest);
}

bool OdGeCurve3d::isOn(const OdGePoint3d& point, double& param, const OdGeTol& tol) const {
  if (!isOn(point, tol)) return false;
  param = paramOf(point, tol);
  return true;
}

bool OdGeCurve3d::hasStartPoint(OdGePoint3d& point) const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBoundedBelow()) return false;
  point = evalPoint(interval.lowerBound());
  return true;
}

bool OdGeCurve3d::hasEndPoint(OdGePoint3d& point) const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBoundedAbove()) return false;
  point = evalPoint(interval.upperBound());
  return true;
}

bool OdGeCurve3d::isClosed(const OdGeTol& tol) const {
  OdGePoint3d start, end;
  return hasStartPoint(start) && hasEndPoint(end) && start.isEqualTo(end, tol);
}

double OdGeCurve3d::length() const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBounded()) return std::numeric_limits<double>::infinity();
  return length(interval.lowerBound(), interval.upperBound());
}

void OdGeCurve3d::getSamplePoints(int numSample, OdGePoint3dArray& points) const {
  points.clear();
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBounded()) return;
  const int count = numSample < 2 ? 2 : numSample;
  const double step = interval.length() / (count - 1);
  for (int i = 0; i < count; ++i) {
    const double param = i == count - 1 ? interval.upperBound() : interval.lowerBound() + step * i;
    points.append(evalPoint(param));
  }
}

// ---- OdGeEntity2d / OdGeCurve2d

bool OdGeEntity2d::isKindOf(OdGe::EntityId entityType) const {
  return entityType == OdGe::kEntity2d || entityType == type();
}

OdGeEntity2d& OdGeEntity2d::translateBy(const OdGeVector2d& v) { return transformBy(OdGeMatrix2d::translation(v)); }

OdGeEntity2d& OdGeEntity2d::rotateBy(double angle, const OdGePoint2d& center) {
  return transformBy(OdGeMatrix2d::rotation(angle, center));
}

OdGeEntity2d& OdGeEntity2d::mirror(const OdGeLinearEnt2d& line) { return transformBy(OdGeMatrix2d::mirroring(line)); }

OdGeEntity2d& OdGeEntity2d::scaleBy(double factor, const OdGePoint2d& center) {
  return transformBy(OdGeMatrix2d::scaling(factor, center));
}

bool OdGeCurve2d::isKindOf(OdGe::EntityId entityType) const {
  return entityType == OdGe::kCurve2d || OdGeEntity2d::isKindOf(entityType);
}

double OdGeCurve2d::distanceTo(const OdGePoint2d& point, const OdGeTol& tol) const {
  return closestPointTo(point, tol).distanceTo(point);
}

bool OdGeCurve2d::isOn(const OdGePoint2d& point, const OdGeTol& tol) const {
  const OdGePoint2d closest = closestPointTo(point, tol);
  return closest.distanceTo(point) <= OdGeInternal::pointTolAt(tol, point, closest);
}

bool OdGeCurve2d::isOn(const OdGePoint2d& point, double& param, const OdGeTol& tol) const {
  if (!isOn(point, tol)) return false;
  param = paramOf(point, tol);
  return true;
}

bool OdGeCurve2d::hasStartPoint(OdGePoint2d& point) const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBoundedBelow()) return false;
  point = evalPoint(interval.lowerBound());
  return true;
}

bool OdGeCurve2d::hasEndPoint(OdGePoint2d& point) const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBoundedAbove()) return false;
  point = evalPoint(interval.upperBound());
  return true;
}

bool OdGeCurve2d::isClosed(const OdGeTol& tol) const {
  OdGePoint2d start, end;
  return hasStartPoint(start) && hasEndPoint(end) && start.isEqualTo(end, tol);
}

double OdGeCurve2d::length() const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBounded()) return std::numeric_limits<double>::infinity();
  return length(interval.lowerBound(), interval.upperBound());
}

void OdGeCurve2d::getSamplePoints(int numSample, OdGePoint2dArray& points) const {
  points.clear();
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBounded()) return;
  const int count = numSample < 2 ? 2 : numSample;
  const double step = interval.length() / (count - 1);
  for (int i = 0; i < count; ++i) {
    const double param = i == count - 1 ? interval.upperBound() : interval.lowerBound() + step * i;
    points.append(evalPoint(param));
  }
}
