// Entity and curve bases of both dimensions.
#include <limits>

#include "Ge/GeCurve2d.h"
#include "Ge/GeCurve3d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePlane.h"
#include "ge/GeInternal.h"

// ---- OdGeEntityT

template <class Space>
bool OdGeEntityT<Space>::isKindOf(OdGe::EntityId entityType) const {
  return entityType == Space::kEntityKind || entityType == type();
}

template <class Space>
typename Space::Entity& OdGeEntityT<Space>::translateBy(const Vector& v) {
  return transformBy(Matrix::translation(v));
}

template <class Space>
typename Space::Entity& OdGeEntityT<Space>::scaleBy(double factor, const Point& center) {
  return transformBy(Matrix::scaling(factor, center));
}

template class OdGeEntityT<OdGeSpace2d>;
template class OdGeEntityT<OdGeSpace3d>;

OdGeEntity2d& OdGeEntity2d::rotateBy(double angle, const OdGePoint2d& center) {
  return transformBy(OdGeMatrix2d::rotation(angle, center));
}

OdGeEntity2d& OdGeEntity2d::mirror(const OdGeLinearEnt2d& line) { return transformBy(OdGeMatrix2d::mirroring(line)); }

OdGeEntity3d& OdGeEntity3d::rotateBy(double angle, const OdGeVector3d& axis, const OdGePoint3d& center) {
  return transformBy(OdGeMatrix3d::rotation(angle, axis, center));
}

OdGeEntity3d& OdGeEntity3d::mirror(const OdGePlane& plane) { return transformBy(OdGeMatrix3d::mirroring(plane)); }

// ---- OdGeCurveT

template <class Space>
bool OdGeCurveT<Space>::isKindOf(OdGe::EntityId entityType) const {
  return entityType == Space::kCurveKind || Space::Entity::isKindOf(entityType);
}

template <class Space>
double OdGeCurveT<Space>::distanceTo(const Point& point, const OdGeTol& tol) const {
  return closestPointTo(point, tol).distanceTo(point);
}

template <class Space>
bool OdGeCurveT<Space>::isOn(const Point& point, const OdGeTol& tol) const {
  const Point closest = closestPointTo(point, tol);
  return closest.distanceTo(point) <= OdGeInternal::pointTolAt(tol, point, closest);
}

template <class Space>
bool OdGeCurveT<Space>::isOn(const Point& point, double& param, const OdGeTol& tol) const {
  if (!isOn(point, tol)) return false;
  param = paramOf(point, tol);
  return true;
}

template <class Space>
bool OdGeCurveT<Space>::hasStartPoint(Point& point) const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBoundedBelow()) return false;
  point = evalPoint(interval.lowerBound());
  return true;
}

template <class Space>
bool OdGeCurveT<Space>::hasEndPoint(Point& point) const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBoundedAbove()) return false;
  point = evalPoint(interval.upperBound());
  return true;
}

template <class Space>
bool OdGeCurveT<Space>::isClosed(const OdGeTol& tol) const {
  Point start, end;
  return hasStartPoint(start) && hasEndPoint(end) && start.isEqualTo(end, tol);
}

template <class Space>
double OdGeCurveT<Space>::length() const {
  OdGeInterval interval;
  getInterval(interval);
  if (!interval.isBounded()) return std::numeric_limits<double>::infinity();
  return length(interval.lowerBound(), interval.upperBound());
}

template <class Space>
void OdGeCurveT<Space>::getSamplePoints(int numSample, OdArray<Point>& points) const {
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

template class OdGeCurveT<OdGeSpace2d>;
template class OdGeCurveT<OdGeSpace3d>;
