// Circular arcs of space.
#include "Ge/GeCircArc3d.h"

#include <cmath>

#include "Ge/GeLine3d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePlane.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

using OdGeInternal::angleIntoRange;

namespace {

// Appends `point` unless it is already there.
void addIntersection(const OdGePoint3d& point, int& numInt, OdGePoint3d& p1, OdGePoint3d& p2, const OdGeTol& tol) {
  if (numInt >= 1 && p1.isEqualTo(point, tol)) return;
  if (numInt >= 2) return;
  (numInt == 0 ? p1 : p2) = point;
  ++numInt;
}

// Length of angle overlap between [start1, end1] and the arc [start2, start2 + sweep2] on the same circle.
double circularOverlap(double start1, double end1, double start2, double sweep2) {
  const double shifted = start1 + odgeNormalizeAngle(start2 - start1);
  double total = 0.0;
  for (double from : {shifted, shifted - Oda2PI}) {
    total += std::max(0.0, std::min(end1, from + sweep2) - std::max(start1, from));
  }
  return total;
}

}  // namespace

OdGeCircArc3d::OdGeCircArc3d(const OdGePoint3d& center, const OdGeVector3d& normal, double radius) {
  set(center, normal, radius);
}

OdGeCircArc3d::OdGeCircArc3d(const OdGePoint3d& center, const OdGeVector3d& normal, const OdGeVector3d& refVec,
                             double radius, double startAng, double endAng) {
  set(center, normal, refVec, radius, startAng, endAng);
}

OdGeCircArc3d::OdGeCircArc3d(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc,
                             const OdGePoint3d& endPoint) {
  set(startPoint, pointOnArc, endPoint);
}

OdGeCircArc3d& OdGeCircArc3d::set(const OdGePoint3d& center, const OdGeVector3d& normal, double radius) {
  return set(center, normal, normal.perpVector(), radius, 0.0, Oda2PI);
}

OdGeCircArc3d& OdGeCircArc3d::set(const OdGePoint3d& center, const OdGeVector3d& normal, const OdGeVector3d& refVec,
                                  double radius, double startAng, double endAng) {
  m_center = center;
  m_radius = radius;
  setAxes(normal, refVec);
  return setAngles(startAng, endAng);
}

OdGeCircArc3d& OdGeCircArc3d::setAxes(const OdGeVector3d& normal, const OdGeVector3d& refVec) {
  const double normalLength = normal.length();
  m_normal = normalLength > 0.0 ? normal / normalLength : OdGeVector3d::kZAxis;
  const OdGeVector3d inPlane = refVec.orthoProject(m_normal);
  const double inPlaneLength = inPlane.length();
  // A reference vector (nearly) along the normal says nothing about the plane's directions.
  if (inPlaneLength <= 1e-12 * refVec.length() || inPlaneLength == 0.0) {
    m_refVec = m_normal.perpVector();
  } else {
    m_refVec = inPlane / inPlaneLength;
  }
  return *this;
}

OdGeCircArc3d& OdGeCircArc3d::setAngles(double startAng, double endAng) {
  m_startAng = startAng;
  m_endAng = endAng;
  OdGeInternal::normalizeSweep(m_startAng, m_endAng);
  return *this;
}

OdGeCircArc3d& OdGeCircArc3d::set(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc,
                                  const OdGePoint3d& endPoint) {
  OdGe::ErrorCondition status;
  set(startPoint, pointOnArc, endPoint, status);
  if (status != OdGe::kOk) throw OdError(eDegenerateGeometry, OdString("no circle through the three points"));
  return *this;
}

OdGeCircArc3d& OdGeCircArc3d::set(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc,
                                  const OdGePoint3d& endPoint, OdGe::ErrorCondition& status) {
  const OdGeTol& tol = OdGeContext::gTol;
  status = OdGe::kOk;
  if (startPoint.isEqualTo(pointOnArc, tol)) status = OdGe::kEqualArg1Arg2;
  else if (startPoint.isEqualTo(endPoint, tol)) status = OdGe::kEqualArg1Arg3;
  else if (pointOnArc.isEqualTo(endPoint, tol)) status = OdGe::kEqualArg2Arg3;
  const OdGeVector3d a = pointOnArc - startPoint;
  const OdGeVector3d b = endPoint - startPoint;
  const OdGeVector3d normal = a.crossProduct(b);
  if (status == OdGe::kOk && a.isParallelTo(b, tol)) status = OdGe::kLinearlyDependentArg1Arg2Arg3;
  if (status != OdGe::kOk) return *this;

  // Circumcentre relative to the start point.
  const OdGeVector3d toCenter =
      (b * a.lengthSqrd() - a * b.lengthSqrd()).crossProduct(normal) / (2.0 * normal.lengthSqrd());
  const OdGePoint3d center = startPoint + toCenter;
  const OdGeVector3d unitNormal = normal / normal.length();
  const OdGeVector3d startDir = -toCenter;
  const double sweep = startDir.angleTo(endPoint - center, unitNormal);
  return set(center, unitNormal, startDir, toCenter.length(), 0.0, sweep);
}

OdGeCircArc3d& OdGeCircArc3d::transformBy(const OdGeMatrix3d& matrix) {
  const OdGeVector3d xImage = matrix * m_refVec;
  const OdGeVector3d yImage = matrix * yAxis();
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
  const OdGeVector3d normal = xImage.crossProduct(yImage);
  m_normal = normal / normal.length();
  return *this;
}

bool OdGeCircArc3d::isClosed(const OdGeTol& tol) const {
  return sweepAngle() > OdaPI && startPoint().isEqualTo(endPoint(), tol);
}

OdGePoint3d OdGeCircArc3d::evalPoint(double param) const {
  return m_center + (m_refVec * std::cos(param) + yAxis() * std::sin(param)) * m_radius;
}

OdGePoint2d OdGeCircArc3d::toPlane(const OdGePoint3d& point) const {
  const OdGeVector3d offset = point - m_center;
  return {offset.dotProduct(m_refVec), offset.dotProduct(yAxis())};
}

OdGePoint3d OdGeCircArc3d::fromPlane(const OdGePoint2d& point) const {
  return m_center + m_refVec * point.x + yAxis() * point.y;
}

double OdGeCircArc3d::paramOf(const OdGePoint3d& point, const OdGeTol&) const {
  const OdGePoint2d local = toPlane(point);
  // Every point of the circle is equally close to a point on the axis.
  if (local.x == 0.0 && local.y == 0.0) return m_startAng;
  const double angle = angleIntoRange(std::atan2(local.y, local.x), m_startAng, m_endAng);
  return std::min(std::max(angle, m_startAng), m_endAng);
}

OdGePoint3d OdGeCircArc3d::closestPointTo(const OdGePoint3d& point, const OdGeTol& tol) const {
  return evalPoint(paramOf(point, tol));
}

double OdGeCircArc3d::length(double fromParam, double toParam) const {
  return std::fabs(toParam - fromParam) * m_radius;
}

OdGeCircArc3d& OdGeCircArc3d::reverseParam() {
  m_normal = -m_normal;
  const double start = m_startAng;
  m_startAng = -m_endAng;
  m_endAng = -start;
  return *this;
}

OdGeExtents3d OdGeCircArc3d::geomExtents() const {
  const OdGeVector3d x = m_refVec * m_radius;
  const OdGeVector3d y = yAxis() * m_radius;
  OdGePoint3d low, high;
  for (unsigned int axis = 0; axis < 3; ++axis) {
    OdGeInternal::trigComponentRange(m_center[axis], x[axis], y[axis], m_startAng, m_endAng, low[axis], high[axis]);
  }
  OdGeExtents3d extents;
  return extents.set(low, high);
}

bool OdGeCircArc3d::intersectWith(const OdGeLinearEnt3d& line, int& numInt, OdGePoint3d& p1, OdGePoint3d& p2,
                                  const OdGeTol& tol) const {
  numInt = 0;
  const double pointTol = OdGeInternal::pointTolAt(tol, OdGeInternal::magnitude(m_center) + m_radius);
  const OdGeVector3d direction = line.direction();
  if (direction.isZeroLength()) return false;

  if (std::fabs(direction.dotProduct(m_normal)) > tol.equalVector()) {
    // The line crosses the arc's plane at one point.
    OdGePoint3d crossing;
    if (OdGePlane(m_center, m_normal).intersectWith(line.getLine(), crossing, tol) && isOn(crossing, tol) &&
        line.isOn(crossing, tol)) {
      addIntersection(crossing, numInt, p1, p2, tol);
    }
    return numInt > 0;
  }

  // The line runs parallel to the plane; it must lie in it.
  if (std::fabs((line.pointOnLine() - m_center).dotProduct(m_normal)) > pointTol) return false;
  const OdGePoint2d origin = toPlane(line.pointOnLine());
  const OdGeVector2d along = OdGeVector2d(direction.dotProduct(m_refVec), direction.dotProduct(yAxis())).normal();
  double t1, t2;
  const int count = OdGeInternal::circleLineParams(m_radius, origin, along, pointTol, t1, t2);
  for (int i = 0; i < count; ++i) {
    const OdGePoint3d candidate = fromPlane(origin + along * (i == 0 ? t1 : t2));
    if (isOn(candidate, tol) && line.isOn(candidate, tol)) addIntersection(candidate, numInt, p1, p2, tol);
  }
  return numInt > 0;
}

bool OdGeCircArc3d::intersectWith(const OdGeCircArc3d& arc, int& numInt, OdGePoint3d& p1, OdGePoint3d& p2,
                                  const OdGeTol& tol) const {
  numInt = 0;
  const double pointTol = OdGeInternal::pointTolAt(tol, OdGeInternal::magnitude(m_center) + m_radius);
  if (!m_normal.isParallelTo(arc.m_normal, tol)) {
    // Crossing planes: the candidates lie on the planes' common line.
    OdGeLine3d common;
    if (!OdGePlane(m_center, m_normal).intersectWith(OdGePlane(arc.m_center, arc.m_normal), common, tol)) return false;
    int count = 0;
    OdGePoint3d q1, q2;
    if (!intersectWith(common, count, q1, q2, tol)) return false;
    for (int i = 0; i < count; ++i) {
      const OdGePoint3d& candidate = i == 0 ? q1 : q2;
      if (arc.isOn(candidate, tol)) addIntersection(candidate, numInt, p1, p2, tol);
    }
    return numInt > 0;
  }

  if (std::fabs((arc.m_center - m_center).dotProduct(m_normal)) > pointTol) return false;  // parallel planes
  OdGePoint2d q1, q2;
  const int count = OdGeInternal::circleCircle(m_radius, toPlane(arc.m_center), arc.m_radius, pointTol, q1, q2);
  if (count < 0) {
    // The same circle: the arcs may only touch at their ends.
    const double otherStart = std::atan2(toPlane(arc.startPoint()).y, toPlane(arc.startPoint()).x);
    const double otherEnd = std::atan2(toPlane(arc.endPoint()).y, toPlane(arc.endPoint()).x);
    const bool sameSense = m_normal.dotProduct(arc.m_normal) > 0.0;
    const double shared = circularOverlap(m_startAng, m_endAng, sameSense ? otherStart : otherEnd, arc.sweepAngle());
    if (shared * m_radius > pointTol) return false;
    for (const OdGePoint3d& end : {startPoint(), endPoint(), arc.startPoint(), arc.endPoint()}) {
      if (isOn(end, tol) && arc.isOn(end, tol)) addIntersection(end, numInt, p1, p2, tol);
    }
    return numInt > 0;
  }
  for (int i = 0; i < count; ++i) {
    const OdGePoint3d candidate = fromPlane(i == 0 ? q1 : q2);
    if (isOn(candidate, tol) && arc.isOn(candidate, tol)) addIntersection(candidate, numInt, p1, p2, tol);
  }
  return numInt > 0;
}
