// Lines, rays and segments of space.
#include <algorithm>
#include <cmath>
#include <limits>

#include "Ge/GeLine3d.h"
#include "Ge/GeLineSeg3d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePlane.h"
#include "Ge/GeRay3d.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Parameter range of the entity, with infinities for missing bounds.
void paramRange(const OdGeLinearEnt3d& entity, double& lo, double& hi) {
  OdGeInterval interval;
  entity.getInterval(interval);
  lo = interval.isBoundedBelow() ? interval.lowerBound() : -kInfinity;
  hi = interval.isBoundedAbove() ? interval.upperBound() : kInfinity;
}

}  // namespace

bool OdGeLinearEnt3d::isKindOf(OdGe::EntityId entityType) const {
  return entityType == OdGe::kLinearEnt3d || OdGeCurve3d::isKindOf(entityType);
}

OdGeLinearEnt3d& OdGeLinearEnt3d::transformBy(const OdGeMatrix3d& matrix) {
  const OdGePoint3d start = matrix * m_point;
  m_vector = (matrix * (m_point + m_vector)) - start;
  m_point = start;
  return *this;
}

OdGeVector3d OdGeLinearEnt3d::direction() const {
  const double len = m_vector.length();
  return len > 0.0 ? m_vector / len : OdGeVector3d::kIdentity;
}

void OdGeLinearEnt3d::sharedParamRange(const OdGeLinearEnt3d& other, double& lo, double& hi) const {
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

OdGeLine3d OdGeLinearEnt3d::getLine() const { return OdGeLine3d(m_point, m_vector); }

bool OdGeLinearEnt3d::isParallelTo(const OdGeLinearEnt3d& other, const OdGeTol& tol) const {
  return m_vector.isParallelTo(other.m_vector, tol);
}

bool OdGeLinearEnt3d::isPerpendicularTo(const OdGeLinearEnt3d& other, const OdGeTol& tol) const {
  return m_vector.isPerpendicularTo(other.m_vector, tol);
}

bool OdGeLinearEnt3d::isColinearTo(const OdGeLinearEnt3d& other, const OdGeTol& tol) const {
  if (!isParallelTo(other, tol)) return false;
  const OdGePoint3d foot = evalPoint(unboundedParamOf(other.m_point));
  return foot.distanceTo(other.m_point) <= OdGeInternal::pointTolAt(tol, foot, other.m_point);
}

double OdGeLinearEnt3d::unboundedParamOf(const OdGePoint3d& point) const {
  const double lengthSqrd = m_vector.lengthSqrd();
  return lengthSqrd > 0.0 ? (point - m_point).dotProduct(m_vector) / lengthSqrd : 0.0;
}

double OdGeLinearEnt3d::paramOf(const OdGePoint3d& point, const OdGeTol&) const {
  OdGeInterval interval;
  getInterval(interval);
  return interval.clamp(unboundedParamOf(point));
}

OdGePoint3d OdGeLinearEnt3d::closestPointTo(const OdGePoint3d& point, const OdGeTol& tol) const {
  return evalPoint(paramOf(point, tol));
}

double OdGeLinearEnt3d::length(double fromParam, double toParam) const {
  return std::fabs(toParam - fromParam) * m_vector.length();
}

OdGeExtents3d OdGeLinearEnt3d::geomExtents() const {
  OdGeExtents3d extents;
  OdGeInterval interval;
  getInterval(interval);
  if (interval.isBounded()) extents.comparingSet(evalPoint(interval.lowerBound()), evalPoint(interval.upperBound()));
  return extents;
}

bool OdGeLinearEnt3d::intersectWith(const OdGeLinearEnt3d& other, OdGePoint3d& point, const OdGeTol& tol) const {
  const double thisLength = m_vector.length();
  const double otherLength = other.m_vector.length();
  // A degenerate entity is a single point.
  if (thisLength == 0.0 || otherLength == 0.0) {
    const OdGePoint3d candidate = thisLength == 0.0 ? m_point : other.m_point;
    if (!isOn(candidate, tol) || !other.isOn(candidate, tol)) return false;
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

  // Closest points of the two unbounded lines; they must meet within tolerance.
  const OdGeVector3d normal = m_vector.crossProduct(other.m_vector);
  const OdGeVector3d offset = other.m_point - m_point;
  const double normalLength = normal.length();
  if (std::fabs(offset.dotProduct(normal)) / normalLength > pointTol) return false;
  const double thisParam = offset.crossProduct(other.m_vector).dotProduct(normal) / (normalLength * normalLength);
  const double otherParam = offset.crossProduct(m_vector).dotProduct(normal) / (normalLength * normalLength);

  OdGeInterval thisInterval, otherInterval;
  getInterval(thisInterval);
  other.getInterval(otherInterval);
  const OdGePoint3d thisNearest = evalPoint(thisInterval.clamp(thisParam));
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
  const OdGePoint3d otherNearest = other.evalPoint(otherInterval.clamp(otherParam));
  if (isOn(otherNearest, tol)) {
    point = otherNearest;
    return true;
  }
  return false;
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

bool OdGeLinearEnt3d::overlap(const OdGeLinearEnt3d& other, OdGeLineSeg3d& result, const OdGeTol& tol) const {
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

// ---- concrete kinds

OdGeLine3d& OdGeLine3d::set(const OdGePoint3d& point, const OdGeVector3d& vector) {
  m_point = point;
  m_vector = vector;
  return *this;
}

OdGeLine3d& OdGeLine3d::reverseParam() {
  m_vector = -m_vector;
  return *this;
}

OdGeLineSeg3d& OdGeLineSeg3d::set(const OdGePoint3d& start, const OdGePoint3d& end) {
  m_point = start;
  m_vector = end - start;
  return *this;
}

OdGeLineSeg3d& OdGeLineSeg3d::reverseParam() { return set(endPoint(), startPoint()); }

OdGeRay3d& OdGeRay3d::set(const OdGePoint3d& origin, const OdGeVector3d& vector) {
  m_point = origin;
  m_vector = vector;
  return *this;
}

OdGeRay3d& OdGeRay3d::reverseParam() { throw OdError(eNotApplicable, OdString("a ray cannot be reversed")); }
