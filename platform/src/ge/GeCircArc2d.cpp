// Circular arcs of the plane.
#include "Ge/GeCircArc2d.h"

#include <cmath>

#include "Ge/GeBulge.h"
#include "Ge/GeLinearEnt2d.h"
#include "Ge/GeMatrix2d.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

using OdGeInternal::angleIntoRange;

namespace {

void addIntersection(const OdGePoint2d& point, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2, const OdGeTol& tol) {
  if (numInt >= 1 && p1.isEqualTo(point, tol)) return;
  if (numInt >= 2) return;
  (numInt == 0 ? p1 : p2) = point;
  ++numInt;
}

double circularOverlap(double start1, double end1, double start2, double sweep2) {
  const double shifted = start1 + odgeNormalizeAngle(start2 - start1);
  double total = 0.0;
  for (double from : {shifted, shifted - Oda2PI}) {
    total += std::max(0.0, std::min(end1, from + sweep2) - std::max(start1, from));
  }
  return total;
}

}  // namespace

OdGeCircArc2d::OdGeCircArc2d(const OdGePoint2d& center, double radius, double startAng, double endAng,
                             const OdGeVector2d& refVec, bool isClockWise) {
  set(center, radius, startAng, endAng, refVec, isClockWise);
}

OdGeCircArc2d::OdGeCircArc2d(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc,
                             const OdGePoint2d& endPoint) {
  set(startPoint, pointOnArc, endPoint);
}

OdGeCircArc2d::OdGeCircArc2d(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge) {
  set(startPoint, endPoint, bulge);
}

OdGeCircArc2d& OdGeCircArc2d::set(const OdGePoint2d& center, double radius, double startAng, double endAng,
                                  const OdGeVector2d& refVec, bool isClockWise) {
  m_center = center;
  m_radius = radius;
  m_clockWise = isClockWise;
  setRefVec(refVec);
  return setAngles(startAng, endAng);
}

OdGeCircArc2d& OdGeCircArc2d::setRefVec(const OdGeVector2d& refVec) {
  const double length = refVec.length();
  m_refVec = length > 0.0 ? refVec / length : OdGeVector2d::kXAxis;
  return *this;
}

OdGeCircArc2d& OdGeCircArc2d::setAngles(double startAng, double endAng) {
  m_startAng = startAng;
  m_endAng = endAng;
  OdGeInternal::normalizeSweep(m_startAng, m_endAng);
  return *this;
}

OdGeCircArc2d& OdGeCircArc2d::set(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc,
                                  const OdGePoint2d& endPoint) {
  OdGe::ErrorCondition status;
  set(startPoint, pointOnArc, endPoint, status);
  if (status != OdGe::kOk) throw OdError(eDegenerateGeometry, OdString("no circle through the three points"));
  return *this;
}

OdGeCircArc2d& OdGeCircArc2d::set(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc,
                                  const OdGePoint2d& endPoint, OdGe::ErrorCondition& status) {
  const OdGeTol& tol = OdGeContext::gTol;
  status = OdGe::kOk;
  if (startPoint.isEqualTo(pointOnArc, tol)) status = OdGe::kEqualArg1Arg2;
  else if (startPoint.isEqualTo(endPoint, tol)) status = OdGe::kEqualArg1Arg3;
  else if (pointOnArc.isEqualTo(endPoint, tol)) status = OdGe::kEqualArg2Arg3;
  const OdGeVector2d a = pointOnArc - startPoint;
  const OdGeVector2d b = endPoint - startPoint;
  if (status == OdGe::kOk && a.isParallelTo(b, tol)) status = OdGe::kLinearlyDependentArg1Arg2Arg3;
  if (status != OdGe::kOk) return *this;

  // Circumcentre relative to the start point.
  const double twiceArea = 2.0 * a.crossProduct(b);
  const OdGeVector2d toCenter((b.y * a.lengthSqrd() - a.y * b.lengthSqrd()) / twiceArea,
                              (a.x * b.lengthSqrd() - b.x * a.lengthSqrd()) / twiceArea);
  const OdGePoint2d center = startPoint + toCenter;
  // Counter-clockwise when the middle point lies to the left of the way from start to end.
  const bool clockWise = twiceArea < 0.0;
  const OdGeVector2d startDir = -toCenter;
  const OdGeVector2d endDir = endPoint - center;
  double sweep = odgeNormalizeAngle(std::atan2(startDir.crossProduct(endDir), startDir.dotProduct(endDir)));
  if (clockWise) sweep = odgeNormalizeAngle(-sweep);
  return set(center, toCenter.length(), 0.0, sweep, startDir, clockWise);
}

OdGeCircArc2d& OdGeCircArc2d::set(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge) {
  OdGePoint2d center;
  double radius, ccwStart, ccwEnd;
  if (!odgeArcFromBulge(startPoint, endPoint, bulge, center, radius, ccwStart, ccwEnd)) {
    throw OdError(eDegenerateGeometry, OdString("a straight segment is not an arc"));
  }
  // Measure angles in the direction of travel, from the world x axis.
  const double included = std::fabs(odgeBulgeToIncludedAngle(bulge));
  const OdGeVector2d startDir = startPoint - center;
  if (bulge > 0.0) {
    const double start = std::atan2(startDir.y, startDir.x);
    return set(center, radius, start, start + included, OdGeVector2d::kXAxis, false);
  }
  const double start = -std::atan2(startDir.y, startDir.x);
  return set(center, radius, start, start + included, OdGeVector2d::kXAxis, true);
}

OdGeCircArc2d& OdGeCircArc2d::transformBy(const OdGeMatrix2d& matrix) {
  const OdGeVector2d xImage = matrix * m_refVec;
  const OdGeVector2d yImage = matrix * yAxis();
  const double xLength = xImage.length();
  const double yLength = yImage.length();
  const double largest = std::max(xLength, yLength);
  const OdGeTol& tol = OdGeContext::gTol;
  if (largest == 0.0 || std::fabs(xLength - yLength) > tol.equalVector() * largest ||
      !xImage.isPerpendicularTo(yImage, tol)) {
    throw OdError(eCannotScaleNonUniformly, OdString("the transformation does not keep the arc circular"));
  }
  m_center = matrix * m_center;
  m_radius *= xLength;
  m_refVec = xImage / xLength;
  m_clockWise = xImage.crossProduct(yImage) < 0.0;
  return *this;
}

bool OdGeCircArc2d::isClosed(const OdGeTol& tol) const {
  return sweepAngle() > OdaPI && startPoint().isEqualTo(endPoint(), tol);
}

OdGePoint2d OdGeCircArc2d::evalPoint(double param) const {
  return m_center + (m_refVec * std::cos(param) + yAxis() * std::sin(param)) * m_radius;
}

OdGePoint2d OdGeCircArc2d::toLocal(const OdGePoint2d& point) const {
  const OdGeVector2d offset = point - m_center;
  return {offset.dotProduct(m_refVec), offset.dotProduct(yAxis())};
}

OdGePoint2d OdGeCircArc2d::fromLocal(const OdGePoint2d& point) const {
  return m_center + m_refVec * point.x + yAxis() * point.y;
}

double OdGeCircArc2d::paramOf(const OdGePoint2d& point, const OdGeTol&) const {
  const OdGePoint2d local = toLocal(point);
  if (local.x == 0.0 && local.y == 0.0) return m_startAng;  // the centre: every point is as close
  const double angle = angleIntoRange(std::atan2(local.y, local.x), m_startAng, m_endAng);
  return std::min(std::max(angle, m_startAng), m_endAng);
}

OdGePoint2d OdGeCircArc2d::closestPointTo(const OdGePoint2d& point, const OdGeTol& tol) const {
  return evalPoint(paramOf(point, tol));
}

double OdGeCircArc2d::length(double fromParam, double toParam) const {
  return std::fabs(toParam - fromParam) * m_radius;
}

OdGeCircArc2d& OdGeCircArc2d::reverseParam() {
  m_clockWise = !m_clockWise;
  const double start = m_startAng;
  m_startAng = -m_endAng;
  m_endAng = -start;
  return *this;
}

OdGeExtents2d OdGeCircArc2d::geomExtents() const {
  const OdGeVector2d x = m_refVec * m_radius;
  const OdGeVector2d y = yAxis() * m_radius;
  OdGePoint2d low, high;
  for (unsigned int axis = 0; axis < 2; ++axis) {
    OdGeInternal::trigComponentRange(m_center[axis], x[axis], y[axis], m_startAng, m_endAng, low[axis], high[axis]);
  }
  OdGeExtents2d extents;
  return extents.set(low, high);
}

bool OdGeCircArc2d::intersectWith(const OdGeLinearEnt2d& line, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                                  const OdGeTol& tol) const {
  numInt = 0;
  const double pointTol = OdGeInternal::pointTolAt(tol, OdGeInternal::magnitude(m_center) + m_radius);
  const OdGeVector2d direction = line.direction();
  if (direction.isZeroLength()) return false;
  const OdGePoint2d origin = toLocal(line.pointOnLine());
  const OdGeVector2d along(direction.dotProduct(m_refVec), direction.dotProduct(yAxis()));
  double t1, t2;
  const int count = OdGeInternal::circleLineParams(m_radius, origin, along, pointTol, t1, t2);
  for (int i = 0; i < count; ++i) {
    const OdGePoint2d candidate = fromLocal(origin + along * (i == 0 ? t1 : t2));
    if (isOn(candidate, tol) && line.isOn(candidate, tol)) addIntersection(candidate, numInt, p1, p2, tol);
  }
  return numInt > 0;
}

bool OdGeCircArc2d::intersectWith(const OdGeCircArc2d& arc, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                                  const OdGeTol& tol) const {
  numInt = 0;
  const double pointTol = OdGeInternal::pointTolAt(tol, OdGeInternal::magnitude(m_center) + m_radius);
  OdGePoint2d q1, q2;
  const int count = OdGeInternal::circleCircle(m_radius, toLocal(arc.m_center), arc.m_radius, pointTol, q1, q2);
  if (count < 0) {
    // The same circle: the arcs may only touch at their ends.
    const OdGePoint2d otherStart = toLocal(arc.startPoint());
    const OdGePoint2d otherEnd = toLocal(arc.endPoint());
    const bool sameSense = m_clockWise == arc.m_clockWise;
    const OdGePoint2d& from = sameSense ? otherStart : otherEnd;
    const double shared = circularOverlap(m_startAng, m_endAng, std::atan2(from.y, from.x), arc.sweepAngle());
    if (shared * m_radius > pointTol) return false;
    for (const OdGePoint2d& end : {startPoint(), endPoint(), arc.startPoint(), arc.endPoint()}) {
      if (isOn(end, tol) && arc.isOn(end, tol)) addIntersection(end, numInt, p1, p2, tol);
    }
    return numInt > 0;
  }
  for (int i = 0; i < count; ++i) {
    const OdGePoint2d candidate = fromLocal(i == 0 ? q1 : q2);
    if (isOn(candidate, tol) && arc.isOn(candidate, tol)) addIntersection(candidate, numInt, p1, p2, tol);
  }
  return numInt > 0;
}
