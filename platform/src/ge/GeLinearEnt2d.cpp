// Lines, rays and segments of the plane.
#include <algorithm>
#include <cmath>
#include <limits>

#include "Ge/GeLine2d.h"
#include "Ge/GeLineSeg2d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeRay2d.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Parameter range of the entity, with infinities for missing bounds.
void paramRange(const OdGeLinearEnt2d& entity, double& lo, double& hi) {
  OdGeInterval interval;
  entity.getInterval(interval);
  lo = interval.isBoundedBelow() ? interval.lowerBound() : -kInfinity;
  hi = interval.isBoundedAbove() ? interval.upperBound() : kInfinity;
}

}  // namespace

bool OdGeLinearEnt2d::isKindOf(OdGe::EntityId entityType) const {
  return entityType == OdGe::kLinearEnt2d || OdGeCurve2d::isKindOf(entityType);
}

OdGeLinearEnt2d& OdGeLinearEnt2d::transformBy(const OdGeMatrix2d& matrix) {
  const OdGePoint2d start = matrix * m_point;
  m_vector = (matrix * (m_point + m_vector)) - start;
  m_point = start;
  return *this;
}

OdGeVector2d OdGeLinearEnt2d::direction() const {
  const double len = m_vector.length();
  return len > 0.0 ? m_vector / len : OdGeVector2d::kIdentity;
}

void OdGeLinearEnt2d::sharedParamRange(const OdGeLinearEnt2d& other, double& lo, double& hi) const {
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

OdGeLine2d OdGeLinearEnt2d::getLine() const { return OdGeLine2d(m_point, m_vector); }

bool OdGeLinearEnt2d::isParallelTo(const OdGeLinearEnt2d& other, const OdGeTol& tol) const {
  return m_vector.isParallelTo(other.m_vector, tol);
}

bool OdGeLinearEnt2d::isPerpendicularTo(const OdGeLinearEnt2d& other, const OdGeTol& tol) const {
  return m_vector.isPerpendicularTo(other.m_vector, tol);
}

bool OdGeLinearEnt2d::isColinearTo(const OdGeLinearEnt2d& other, const OdGeTol& tol) const {
  if (!isParallelTo(other, tol)) return false;
  const OdGePoint2d foot = evalPoint(unboundedParamOf(other.m_point));
  return foot.distanceTo(other.m_point) <= OdGeInternal::pointTolAt(tol, foot, other.m_point);
}

double OdGeLinearEnt2d::unboundedParamOf(const OdGePoint2d& point) const {
  const double lengthSqrd = m_vector.lengthSqrd();
  return lengthSqrd > 0.0 ? (point - m_point).dotProduct(m_vector) / lengthSqrd : 0.0;
}

double OdGeLinearEnt2d::paramOf(const OdGePoint2d& point, const OdGeTol&) const {
  OdGeInterval interval;
  getInterval(interval);
  return interval.clamp(unboundedParamOf(point));
}

OdGePoint2d OdGeLinearEnt2d::closestPointTo(const OdGePoint2d& point, const OdGeTol& tol) const {
  return evalPoint(paramOf(point, tol));
}

double OdGeLinearEnt2d::length(double fromParam, double toParam) const {
  return std::fabs(toParam - fromParam) * m_vector.length();
}

OdGeExtents2d OdGeLinearEnt2d::geomExtents() const {
  OdGeExtents2d extents;
  OdGeInterval interval;
  getInterval(interval);
  if (interval.isBounded()) extents.comparingSet(evalPoint(interval.lowerBound()), evalPoint(interval.upperBound()));
  return extents;
}

bool OdGeLinearEnt2d::intersectWith(const OdGeLinearEnt2d& other, OdGePoint2d& point, const OdGeTol& tol) const {
  const double thisLength = m_vector.length();
  const double otherLength = other.m_vector.length();
  // A degenerate entity is a single point.
  if (thisLength == 0.0 || otherLength == 0.0) {
    const OdGePoint2d candidate = thisLength == 0.0 ? m_point : other.m_point;
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

  // Crossing of the two unbounded lines.
  const OdGeVector2d offset = other.m_point - m_point;
  const double denominator = m_vector.crossProduct(other.m_vector);
  const double thisParam = offset.crossProduct(other.m_vector) / denominator;
  const double otherParam = offset.crossProduct(m_vector) / denominator;

  OdGeInterval thisInterval, otherInterval;
  getInterval(thisInterval);
  other.getInterval(otherInterval);
  const OdGePoint2d thisNearest = evalPoint(thisInterval.clamp(thisParam));
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
  const OdGePoint2d otherNearest = other.evalPoint(otherInterval.clamp(otherParam));
  if (isOn(otherNearest, tol)) {
    point = otherNearest;
    return true;
  }
  return false;
}

bool OdGeLinearEnt2d::overlap(const OdGeLinearEnt2d& other, OdGeLineSeg2d& result, const OdGeTol& tol) const {
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

OdGeLine2d& OdGeLine2d::set(const OdGePoint2d& point, const OdGeVector2d& vector) {
  m_point = point;
  m_vector = vector;
  return *this;
}

OdGeLine2d& OdGeLine2d::reverseParam() {
  m_vector = -m_vector;
  return *this;
}

OdGeLineSeg2d& OdGeLineSeg2d::set(const OdGePoint2d& start, const OdGePoint2d& end) {
  m_point = start;
  m_vector = end - start;
  return *this;
}

OdGeLineSeg2d& OdGeLineSeg2d::reverseParam() { return set(endPoint(), startPoint()); }

OdGeRay2d& OdGeRay2d::set(const OdGePoint2d& origin, const OdGeVector2d& vector) {
  m_point = origin;
  m_vector = vector;
  return *this;
}

OdGeRay2d& OdGeRay2d::reverseParam() { throw OdError(eNotApplicable, OdString("a ray cannot be reversed")); }
