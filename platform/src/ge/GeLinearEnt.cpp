// Lines, rays and segments of the plane and of space.
#include <algorithm>
#include <cmath>
#include <limits>

#include "Ge/GeLine2d.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeLineSeg2d.h"
#include "Ge/GeLineSeg3d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePlane.h"
#include "Ge/GeRay2d.h"
#include "Ge/GeRay3d.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Parameter range of the entity, with infinities for missing bounds.
template <class Space>
void paramRange(const OdGeLinearEntT<Space>& entity, double& lo, double& hi) {
  OdGeInterval interval;
  entity.getInterval(interval);
  lo = interval.isBoundedBelow() ? interval.lowerBound() : -kInfinity;
  hi = interval.isBoundedAbove() ? interval.upperBound() : kInfinity;
}

// Parameters of the crossing of two unbounded, non-parallel lines p + s * u and q + t * v, where
// offset = q - p. In the plane they always cross.
bool crossingParams(const OdGeVector2d& offset, const OdGeVector2d& u, const OdGeVector2d& v, double,
                    double& s, double& t) {
  const double denominator = u.crossProduct(v);
  s = offset.crossProduct(v) / denominator;
  t = offset.crossProduct(u) / denominator;
  return true;
}

// In space: the parameters of the closest points, when the lines come within pointTol there.
bool crossingParams(const OdGeVector3d& offset, const OdGeVector3d& u, const OdGeVector3d& v, double pointTol,
                    double& s, double& t) {
  const OdGeVector3d normal = u.crossProduct(v);
  const double normalLength = normal.length();
  if (std::fabs(offset.dotProduct(normal)) / normalLength > pointTol) return false;
  s = offset.crossProduct(v).dotProduct(normal) / (normalLength * normalLength);
  t = offset.crossProduct(u).dotProduct(normal) / (normalLength * normalLength);
  return true;
}

}  // namespace

template <class Space>
bool OdGeLinearEntT<Space>::isKindOf(OdGe::EntityId entityType) const {
  return entityType == Space::kLinearEntKind || Space::Curve::isKindOf(entityType);
}

template <class Space>
void OdGeLinearEntT<Space>::transformEnds(const Matrix& matrix) {
  const Point start = matrix * m_point;
  m_vector = (matrix * (m_point + m_vector)) - start;
  m_point = start;
}

template <class Space>
typename Space::Vector OdGeLinearEntT<Space>::direction() const {
  const double len = m_vector.length();
  return len > 0.0 ? m_vector / len : Vector::kIdentity;
}

template <class Space>
void OdGeLinearEntT<Space>::sharedParamRange(const OdGeLinearEntT& other, double& lo, double& hi) const {
  paramRange(*this, lo, hi);
  double otherLo, otherHi;
  paramRange(other, otherLo, otherHi);
  // other.evalPoint(t) projects to this parameter base + rate * t.
  const double base = unboundedParamOf(other.m_point);
  const double rate = other.m_vector.dotProduct(m_vector) / m_vector.lengthSqrd();
  double mappedLo = base + rate * otherLo;
  double mappedHi = base + rate * otherHi;
  if (rate < 0.0) std::swap(mappedLo, mappedHi);
  lo = std::max(lo, mappedLo);
  hi = std::min(hi, mappedHi);
}

template <class Space>
typename Space::Line OdGeLinearEntT<Space>::getLine() const {
  return typename Space::Line(m_point, m_vector);
}

template <class Space>
bool OdGeLinearEntT<Space>::isParallelTo(const OdGeLinearEntT& other, const OdGeTol& tol) const {
  return m_vector.isParallelTo(other.m_vector, tol);
}

template <class Space>
bool OdGeLinearEntT<Space>::isPerpendicularTo(const OdGeLinearEntT& other, const OdGeTol& tol) const {
  return m_vector.isPerpendicularTo(other.m_vector, tol);
}

template <class Space>
bool OdGeLinearEntT<Space>::isColinearTo(const OdGeLinearEntT& other, const OdGeTol& tol) const {
  if (!isParallelTo(other, tol)) return false;
  const Point foot = evalPoint(unboundedParamOf(other.m_point));
  return foot.distanceTo(other.m_point) <= OdGeInternal::pointTolAt(tol, foot, other.m_point);
}

template <class Space>
double OdGeLinearEntT<Space>::unboundedParamOf(const Point& point) const {
  const double lengthSqrd = m_vector.lengthSqrd();
  return lengthSqrd > 0.0 ? (point - m_point).dotProduct(m_vector) / lengthSqrd : 0.0;
}

template <class Space>
double OdGeLinearEntT<Space>::paramOf(const Point& point, const OdGeTol&) const {
  OdGeInterval interval;
  this->getInterval(interval);
  return interval.clamp(unboundedParamOf(point));
}

template <class Space>
typename Space::Point OdGeLinearEntT<Space>::closestPointTo(const Point& point, const OdGeTol& tol) const {
  return evalPoint(paramOf(point, tol));
}

template <class Space>
double OdGeLinearEntT<Space>::length(double fromParam, double toParam) const {
  return std::fabs(toParam - fromParam) * m_vector.length();
}

template <class Space>
typename Space::Extents OdGeLinearEntT<Space>::geomExtents() const {
  Extents extents;
  OdGeInterval interval;
  this->getInterval(interval);
  if (interval.isBounded()) extents.comparingSet(evalPoint(interval.lowerBound()), evalPoint(interval.upperBound()));
  return extents;
}

template <class Space>
bool OdGeLinearEntT<Space>::intersectWith(const OdGeLinearEntT& other, Point& point, const OdGeTol& tol) const {
  const double thisLength = m_vector.length();
  const double otherLength = other.m_vector.length();
  // A degenerate entity is a single point.
  if (thisLength == 0.0 || otherLength == 0.0) {
    const Point candidate = thisLength == 0.0 ? m_point : other.m_point;
    if (!this->isOn(candidate, tol) || !other.isOn(candidate, tol)) return false;
    point = candidate;
    return true;
  }

  const double pointTol = OdGeInternal::pointTolAt(tol, m_point, m_point + m_vector, other.m_point,
                                                    other.m_point + other.m_vector);
  if (isParallelTo(other, tol)) {
    if (!isColinearTo(other, tol)) return false;
    // Colinear: they intersect only when the shared stretch is a single point.
    double sharedLo, sharedHi;
    sharedParamRange(other, sharedLo, sharedHi);
    if (std::fabs(sharedHi - sharedLo) > pointTol / thisLength) return false;
    point = evalPoint(0.5 * (sharedLo + sharedHi));
    return true;
  }

  double thisParam, otherParam;
  if (!crossingParams(other.m_point - m_point, m_vector, other.m_vector, pointTol, thisParam, otherParam)) {
    return false;
  }
  OdGeInterval thisInterval, otherInterval;
  this->getInterval(thisInterval);
  other.getInterval(otherInterval);
  const Point thisNearest = evalPoint(thisInterval.clamp(thisParam));
  if (thisInterval.contains(thisParam, pointTol / thisLength) &&
      otherInterval.contains(otherParam, pointTol / otherLength)) {
    point = thisNearest;
    return true;
  }
  // The lines cross beyond an end. At a shallow angle that end can still lie within tolerance of
  // the other entity although the crossing lies much further on: then they touch there.
  if (other.isOn(thisNearest, tol)) {
    point = thisNearest;
    return true;
  }
  const Point otherNearest = other.evalPoint(otherInterval.clamp(otherParam));
  if (this->isOn(otherNearest, tol)) {
    point = otherNearest;
    return true;
  }
  return false;
}

template <class Space>
bool OdGeLinearEntT<Space>::overlap(const OdGeLinearEntT& other, typename Space::LineSeg& result,
                                    const OdGeTol& tol) const {
  if (m_vector.lengthSqrd() == 0.0 || !isColinearTo(other, tol)) return false;
  double sharedLo, sharedHi;
  sharedParamRange(other, sharedLo, sharedHi);
  if (std::isinf(sharedLo) || std::isinf(sharedHi)) return false;
  if ((sharedHi - sharedLo) * m_vector.length() <= OdGeInternal::pointTolAt(tol, m_point, m_point + m_vector)) {
    return false;
  }
  result.set(evalPoint(sharedLo), evalPoint(sharedHi));
  return true;
}

template class OdGeLinearEntT<OdGeSpace2d>;
template class OdGeLinearEntT<OdGeSpace3d>;

OdGeLinearEnt2d& OdGeLinearEnt2d::transformBy(const OdGeMatrix2d& matrix) {
  transformEnds(matrix);
  return *this;
}

OdGeLinearEnt3d& OdGeLinearEnt3d::transformBy(const OdGeMatrix3d& matrix) {
  transformEnds(matrix);
  return *this;
}

bool OdGeLinearEnt3d::intersectWith(const OdGePlane& plane, OdGePoint3d& point, const OdGeTol& tol) const {
  const double thisLength = m_vector.length();
  if (thisLength == 0.0) return false;
  const double across = m_vector.dotProduct(plane.normal());
  if (std::fabs(across) / thisLength <= tol.equalVector()) return false;
  const double param = -plane.signedDistanceTo(m_point) / across;
  OdGeInterval interval;
  getInterval(interval);
  const double pointTol = OdGeInternal::pointTolAt(tol, m_point, plane.pointOnPlane());
  if (!interval.contains(param, pointTol / thisLength)) return false;
  point = evalPoint(interval.clamp(param));
  return true;
}

// ---- concrete kinds

OdGeLine2d& OdGeLine2d::set(const OdGePoint2d& point, const OdGeVector2d& vector) {
  setPointVector(point, vector);
  return *this;
}

OdGeLine3d& OdGeLine3d::set(const OdGePoint3d& point, const OdGeVector3d& vector) {
  setPointVector(point, vector);
  return *this;
}

OdGeLine2d& OdGeLine2d::reverseParam() { return set(m_point, -m_vector); }
OdGeLine3d& OdGeLine3d::reverseParam() { return set(m_point, -m_vector); }

OdGeLineSeg2d& OdGeLineSeg2d::set(const OdGePoint2d& start, const OdGePoint2d& end) {
  setPointVector(start, end - start);
  return *this;
}

OdGeLineSeg3d& OdGeLineSeg3d::set(const OdGePoint3d& start, const OdGePoint3d& end) {
  setPointVector(start, end - start);
  return *this;
}

OdGeLineSeg2d& OdGeLineSeg2d::reverseParam() { return set(endPoint(), startPoint()); }
OdGeLineSeg3d& OdGeLineSeg3d::reverseParam() { return set(endPoint(), startPoint()); }

OdGeRay2d& OdGeRay2d::set(const OdGePoint2d& origin, const OdGeVector2d& vector) {
  setPointVector(origin, vector);
  return *this;
}

OdGeRay3d& OdGeRay3d::set(const OdGePoint3d& origin, const OdGeVector3d& vector) {
  setPointVector(origin, vector);
  return *this;
}

// A ray cannot run towards its origin.
OdGeRay2d& OdGeRay2d::reverseParam() { throw OdError(eNotApplicable, OdString("a ray cannot be reversed")); }
OdGeRay3d& OdGeRay3d::reverseParam() { throw OdError(eNotApplicable, OdString("a ray cannot be reversed")); }
