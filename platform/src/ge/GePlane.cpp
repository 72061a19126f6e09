// Planes.
#include "Ge/GePlane.h"

#include <cmath>

#include "Ge/GeLine3d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GeOcs.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

OdGePlane::OdGePlane(double a, double b, double c, double d) {
  const OdGeVector3d normal(a, b, c);
  const double lengthSqrd = normal.lengthSqrd();
  if (lengthSqrd == 0.0) throw OdError(eDegenerateGeometry, OdString("a plane needs a normal"));
  set(OdGePoint3d::asPoint(normal * (-d / lengthSqrd)), normal);
}

OdGePlane& OdGePlane::set(const OdGePoint3d& origin, const OdGeVector3d& normal) {
  m_origin = origin;
  const double length = normal.length();
  m_normal = length > 0.0 ? normal / length : OdGeVector3d::kZAxis;
  return *this;
}

OdGePlane& OdGePlane::set(const OdGePoint3d& p1, const OdGePoint3d& p2, const OdGePoint3d& p3) {
  const OdGeVector3d a = p2 - p1;
  const OdGeVector3d b = p3 - p1;
  if (!a.isParallelTo(b) && !a.isZeroLength() && !b.isZeroLength()) return set(p1, a.crossProduct(b));
  throw OdError(eDegenerateGeometry, OdString("the points lie on one line"));
}

OdGePlane& OdGePlane::transformBy(const OdGeMatrix3d& matrix) {
  OdGePoint3d origin;
  OdGeVector3d xAxis, yAxis;
  getCoordSystem(origin, xAxis, yAxis);
  const OdGePoint3d newOrigin = matrix * origin;
  const OdGeVector3d normal = ((matrix * (origin + xAxis)) - newOrigin).crossProduct((matrix * (origin + yAxis)) - newOrigin);
  if (normal.lengthSqrd() == 0.0) throw OdError(eDegenerateGeometry, OdString("the transformation flattens the plane"));
  return set(newOrigin, normal);
}

bool OdGePlane::isOn(const OdGePoint3d& point, const OdGeTol& tol) const {
  return distanceTo(point) <= OdGeInternal::pointTolAt(tol, point, m_origin);
}

void OdGePlane::getCoefficients(double& a, double& b, double& c, double& d) const {
  a = m_normal.x;
  b = m_normal.y;
  c = m_normal.z;
  d = -m_normal.dotProduct(m_origin.asVector());
}

void OdGePlane::getCoordSystem(OdGePoint3d& origin, OdGeVector3d& xAxis, OdGeVector3d& yAxis) const {
  OdGeVector3d zAxis;
  odgeOcsAxes(m_normal, xAxis, yAxis, zAxis);
  origin = m_origin;
}

double OdGePlane::signedDistanceTo(const OdGePoint3d& point) const { return (point - m_origin).dotProduct(m_normal); }

double OdGePlane::distanceTo(const OdGePoint3d& point) const { return std::fabs(signedDistanceTo(point)); }

OdGePoint3d OdGePlane::closestPointTo(const OdGePoint3d& point) const {
  return point - m_normal * signedDistanceTo(point);
}

OdGePoint3d OdGePlane::evalPoint(const OdGePoint2d& param) const {
  OdGePoint3d origin;
  OdGeVector3d xAxis, yAxis;
  getCoordSystem(origin, xAxis, yAxis);
  return origin + xAxis * param.x + yAxis * param.y;
}

OdGePoint2d OdGePlane::paramOf(const OdGePoint3d& point) const {
  OdGePoint3d origin;
  OdGeVector3d xAxis, yAxis;
  getCoordSystem(origin, xAxis, yAxis);
  const OdGeVector3d offset = point - origin;
  return {offset.dotProduct(xAxis), offset.dotProduct(yAxis)};
}

bool OdGePlane::isParallelTo(const OdGePlane& other, const OdGeTol& tol) const {
  return m_normal.isParallelTo(other.m_normal, tol);
}

bool OdGePlane::isCoplanarTo(const OdGePlane& other, const OdGeTol& tol) const {
  return isParallelTo(other, tol) && isOn(other.m_origin, tol);
}

bool OdGePlane::intersectWith(const OdGeLinearEnt3d& line, OdGePoint3d& point, const OdGeTol& tol) const {
  return line.intersectWith(*this, point, tol);
}

bool OdGePlane::intersectWith(const OdGePlane& other, OdGeLine3d& line, const OdGeTol& tol) const {
  if (isParallelTo(other, tol)) return false;
  // The common point nearest to this plane's origin: origin + alpha n1 + beta n2 with
  // n1 . p = h1, n2 . p = h2 measured from the origin.
  const OdGeVector3d& n1 = m_normal;
  const OdGeVector3d& n2 = other.m_normal;
  const double h1 = 0.0;
  const double h2 = (other.m_origin - m_origin).dotProduct(n2);
  const double k = n1.dotProduct(n2);
  const double det = 1.0 - k * k;
  const double alpha = (h1 - h2 * k) / det;
  const double beta = (h2 - h1 * k) / det;
  line.set(m_origin + n1 * alpha + n2 * beta, n1.crossProduct(n2).normal());
  return true;
}
