// Circular arcs of the plane and of space.
#include <cmath>

#include "Ge/GeBulge.h"
#include "Ge/GeCircArc2d.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeLinearEnt2d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePlane.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

using OdGeInternal::angleIntoRange;

namespace {

// Appends `point` unless it is already there.
template <class Point>
void addIntersection(const Point& point, int& numInt, Point& p1, Point& p2, const OdGeTol& tol) {
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

// The shared work of transformBy(): the images of the arc's two axes, which must stay
// perpendicular and of one length for the arc to stay circular.
template <class Vector, class Matrix>
double circularImage(const Matrix& matrix, const Vector& xAxis, const Vector& yAxis, Vector& xImage,
                     Vector& yImage) {
  xImage = matrix * xAxis;
  yImage = matrix * yAxis;
  const double xLength = xImage.length();
  const double yLength = yImage.length();
  const double largest = std::max(xLength, yLength);
  const OdGeTol& tol = OdGeContext::gTol;
  if (largest == 0.0 || std::fabs(xLength - yLength) > tol.equalVector() * largest ||
      !xImage.isPerpendicularTo(yImage, tol)) {
    throw OdError(eCannotScaleNonUniformly, OdString("the transformation does not keep the arc circular"));
  }
  return xLength;
}

}  // namespace

// ---- OdGeCircArcT

template <>
OdGeVector2d OdGeCircArcT<OdGeSpace2d>::yAxis() const {
  return static_cast<const OdGeCircArc2d&>(*this).isClockWise() ? -m_refVec.perpVector() : m_refVec.perpVector();
}

template <>
OdGeVector3d OdGeCircArcT<OdGeSpace3d>::yAxis() const {
  return static_cast<const OdGeCircArc3d&>(*this).normal().crossProduct(m_refVec);
}

template <class Space>
typename Space::CircArc& OdGeCircArcT<Space>::setAngles(double startAng, double endAng) {
  m_startAng = startAng;
  m_endAng = endAng;
  OdGeInternal::normalizeSweep(m_startAng, m_endAng);
  return static_cast<CircArc&>(*this);
}

template <class Space>
OdGe::ErrorCondition OdGeCircArcT<Space>::threePointStatus(const Point& startPoint, const Point& pointOnArc,
                                                          const Point& endPoint) {
  const OdGeTol& tol = OdGeContext::gTol;
  if (startPoint.isEqualTo(pointOnArc, tol)) return OdGe::kEqualArg1Arg2;
  if (startPoint.isEqualTo(endPoint, tol)) return OdGe::kEqualArg1Arg3;
  if (pointOnArc.isEqualTo(endPoint, tol)) return OdGe::kEqualArg2Arg3;
  if ((pointOnArc - startPoint).isParallelTo(endPoint - startPoint, tol)) return OdGe::kLinearlyDependentArg1Arg2Arg3;
  return OdGe::kOk;
}

template <class Space>
bool OdGeCircArcT<Space>::isClosed(const OdGeTol& tol) const {
  return sweepAngle() > OdaPI && startPoint().isEqualTo(endPoint(), tol);
}

template <class Space>
typename Space::Point OdGeCircArcT<Space>::evalPoint(double param) const {
  return m_center + (m_refVec * std::cos(param) + yAxis() * std::sin(param)) * m_radius;
}

template <class Space>
OdGePoint2d OdGeCircArcT<Space>::toLocal(const Point& point) const {
  const Vector offset = point - m_center;
  return {offset.dotProduct(m_refVec), offset.dotProduct(yAxis())};
}

template <class Space>
typename Space::Point OdGeCircArcT<Space>::fromLocal(const OdGePoint2d& point) const {
  return m_center + m_refVec * point.x + yAxis() * point.y;
}

template <class Space>
double OdGeCircArcT<Space>::paramOf(const Point& point, const OdGeTol&) const {
  const OdGePoint2d local = toLocal(point);
  // The centre (in space, any point on the axis) is equally close to every point of the circle.
  if (local.x == 0.0 && local.y == 0.0) return m_startAng;
  const double angle = angleIntoRange(std::atan2(local.y, local.x), m_startAng, m_endAng);
  return std::min(std::max(angle, m_startAng), m_endAng);
}

template <class Space>
typename Space::Point OdGeCircArcT<Space>::closestPointTo(const Point& point, const OdGeTol& tol) const {
  return evalPoint(paramOf(point, tol));
}

template <class Space>
double OdGeCircArcT<Space>::length(double fromParam, double toParam) const {
  return std::fabs(toParam - fromParam) * m_radius;
}

template <class Space>
typename Space::Extents OdGeCircArcT<Space>::geomExtents() const {
  const Vector x = m_refVec * m_radius;
  const Vector y = yAxis() * m_radius;
  Point low, high;
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    OdGeInternal::trigComponentRange(m_center[axis], x[axis], y[axis], m_startAng, m_endAng, low[axis], high[axis]);
  }
  Extents extents;
  return extents.set(low, high);
}

template <class Space>
void OdGeCircArcT<Space>::addCommonPoints(const OdGePoint2d* candidates, int count,
                                          const typename Space::Curve& other, int& numInt, Point& p1, Point& p2,
                                          const OdGeTol& tol) const {
  for (int i = 0; i < count; ++i) {
    const Point candidate = fromLocal(candidates[i]);
    if (this->isOn(candidate, tol) && other.isOn(candidate, tol)) addIntersection(candidate, numInt, p1, p2, tol);
  }
}

template <class Space>
bool OdGeCircArcT<Space>::intersectSameCircle(const OdGeCircArcT& other, bool sameSense, double pointTol,
                                              int& numInt, Point& p1, Point& p2, const OdGeTol& tol) const {
  const OdGePoint2d from = toLocal(sameSense ? other.startPoint() : other.endPoint());
  const double shared = circularOverlap(m_startAng, m_endAng, std::atan2(from.y, from.x), other.sweepAngle());
  if (shared * m_radius > pointTol) return false;
  for (const Point& end : {startPoint(), endPoint(), other.startPoint(), other.endPoint()}) {
    if (this->isOn(end, tol) && other.isOn(end, tol)) addIntersection(end, numInt, p1, p2, tol);
  }
  return numInt > 0;
}

template class OdGeCircArcT<OdGeSpace2d>;
template class OdGeCircArcT<OdGeSpace3d>;

// ---- OdGeCircArc2d

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

OdGeCircArc2d& OdGeCircArc2d::set(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc,
                                  const OdGePoint2d& endPoint) {
  OdGe::ErrorCondition status;
  set(startPoint, pointOnArc, endPoint, status);
  if (status != OdGe::kOk) throw OdError(eDegenerateGeometry, OdString("no circle through the three points"));
  return *this;
}

OdGeCircArc2d& OdGeCircArc2d::set(const OdGePoint2d& startPoint, const OdGePoint2d& pointOnArc,
                                  const OdGePoint2d& endPoint, OdGe::ErrorCondition& status) {
  status = threePointStatus(startPoint, pointOnArc, endPoint);
  if (status != OdGe::kOk) return *this;

  // Circumcentre relative to the start point.
  const OdGeVector2d a = pointOnArc - startPoint;
  const OdGeVector2d b = endPoint - startPoint;
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
  OdGeVector2d xImage, yImage;
  const double xLength = circularImage(matrix, m_refVec, yAxis(), xImage, yImage);
  m_center = matrix * m_center;
  m_radius *= xLength;
  m_refVec = xImage / xLength;
  m_clockWise = xImage.crossProduct(yImage) < 0.0;
  return *this;
}

OdGeCircArc2d& OdGeCircArc2d::reverseParam() {
  m_clockWise = !m_clockWise;
  mirrorAngles();
  return *this;
}

bool OdGeCircArc2d::intersectWith(const OdGeLinearEnt2d& line, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                                  const OdGeTol& tol) const {
  numInt = 0;
  const double pointTol = OdGeInternal::pointTolAt(tol, OdGeInternal::magnitude(m_center) + m_radius);
  const OdGeVector2d direction = line.direction();
  if (direction.isZeroLength()) return false;
  const OdGePoint2d origin = toLocal(line.pointOnLine());
  const OdGeVector2d along(direction.dotProduct(m_refVec), direction.dotProduct(yAxis()));
  double t[2] = {0.0, 0.0};
  const int count = OdGeInternal::circleLineParams(m_radius, origin, along, pointTol, t[0], t[1]);
  const OdGePoint2d candidates[2] = {origin + along * t[0], origin + along * t[1]};
  addCommonPoints(candidates, count, line, numInt, p1, p2, tol);
  return numInt > 0;
}

bool OdGeCircArc2d::intersectWith(const OdGeCircArc2d& arc, int& numInt, OdGePoint2d& p1, OdGePoint2d& p2,
                                  const OdGeTol& tol) const {
  numInt = 0;
  const double pointTol = OdGeInternal::pointTolAt(tol, OdGeInternal::magnitude(m_center) + m_radius);
  OdGePoint2d candidates[2];
  const int count =
      OdGeInternal::circleCircle(m_radius, toLocal(arc.m_center), arc.m_radius, pointTol, candidates[0], candidates[1]);
  if (count < 0) return intersectSameCircle(arc, m_clockWise == arc.m_clockWise, pointTol, numInt, p1, p2, tol);
  addCommonPoints(candidates, count, arc, numInt, p1, p2, tol);
  return numInt > 0;
}

// ---- OdGeCircArc3d

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

OdGeCircArc3d& OdGeCircArc3d::set(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc,
                                  const OdGePoint3d& endPoint) {
  OdGe::ErrorCondition status;
  set(startPoint, pointOnArc, endPoint, status);
  if (status != OdGe::kOk) throw OdError(eDegenerateGeometry, OdString("no circle through the three points"));
  return *this;
}

OdGeCircArc3d& OdGeCircArc3d::set(const OdGePoint3d& startPoint, const OdGePoint3d& pointOnArc,
                                  const OdGePoint3d& endPoint, OdGe::ErrorCondition& status) {
  status = threePointStatus(startPoint, pointOnArc, endPoint);
  if (status != OdGe::kOk) return *this;

  // Circumcentre relative to the start point.
  const OdGeVector3d a = pointOnArc - startPoint;
  const OdGeVector3d b = endPoint - startPoint;
  const OdGeVector3d normal = a.crossProduct(b);
  const OdGeVector3d toCenter =
      (b * a.lengthSqrd() - a * b.lengthSqrd()).crossProduct(normal) / (2.0 * normal.lengthSqrd());
  const OdGePoint3d center = startPoint + toCenter;
  const OdGeVector3d unitNormal = normal / normal.length();
  const OdGeVector3d startDir = -toCenter;
  const double sweep = startDir.angleTo(endPoint - center, unitNormal);
  return set(center, unitNormal, startDir, toCenter.length(), 0.0, sweep);
}

OdGeCircArc3d& OdGeCircArc3d::transformBy(const OdGeMatrix3d& matrix) {
  OdGeVector3d xImage, yImage;
  const double xLength = circularImage(matrix, m_refVec, yAxis(), xImage, yImage);
  m_center = matrix * m_center;
  m_radius *= xLength;
  m_refVec = xImage / xLength;
  const OdGeVector3d normal = xImage.crossProduct(yImage);
  m_normal = normal / normal.length();
  return *this;
}

OdGeCircArc3d& OdGeCircArc3d::reverseParam() {
  m_normal = -m_normal;
  mirrorAngles();
  return *this;
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
  const OdGePoint2d origin = toLocal(line.pointOnLine());
  const OdGeVector2d along = OdGeVector2d(direction.dotProduct(m_refVec), direction.dotProduct(yAxis())).normal();
  double t[2] = {0.0, 0.0};
  const int count = OdGeInternal::circleLineParams(m_radius, origin, along, pointTol, t[0], t[1]);
  const OdGePoint2d candidates[2] = {origin + along * t[0], origin + along * t[1]};
  addCommonPoints(candidates, count, line, numInt, p1, p2, tol);
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
  OdGePoint2d candidates[2];
  const int count =
      OdGeInternal::circleCircle(m_radius, toLocal(arc.m_center), arc.m_radius, pointTol, candidates[0], candidates[1]);
  if (count < 0) {
    return intersectSameCircle(arc, m_normal.dotProduct(arc.m_normal) > 0.0, pointTol, numInt, p1, p2, tol);
  }
  addCommonPoints(candidates, count, arc, numInt, p1, p2, tol);
  return numInt > 0;
}
