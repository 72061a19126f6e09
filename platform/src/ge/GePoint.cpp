// 2-d and 3-d points.
#include <cmath>

#include "Ge/GeLinearEnt2d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePlane.h"

// ---- OdGePoint2d

OdGePoint2d& OdGePoint2d::setToProduct(const OdGeMatrix2d& matrix, const OdGePoint2d& p) {
  return *this = matrix * p;
}

double OdGePoint2d::distanceTo(const OdGePoint2d& p) const { return (*this - p).length(); }

bool OdGePoint2d::isEqualTo(const OdGePoint2d& p, const OdGeTol& tol) const {
  return distanceTo(p) <= tol.equalPoint();
}

OdGePoint2d& OdGePoint2d::transformBy(const OdGeMatrix2d& matrix) { return *this = matrix * *this; }

OdGePoint2d& OdGePoint2d::rotateBy(double angle, const OdGePoint2d& center) {
  return *this = center + (*this - center).rotateBy(angle);
}

OdGePoint2d& OdGePoint2d::scaleBy(double factor, const OdGePoint2d& center) {
  return *this = center + (*this - center) * factor;
}

OdGePoint2d& OdGePoint2d::mirror(const OdGeLinearEnt2d& line) {
  return transformBy(OdGeMatrix2d::mirroring(line));
}

OdGePoint3d OdGePoint2d::convert3d(double z) const { return OdGePoint3d(*this, z); }

// ---- OdGePoint3d

OdGePoint3d& OdGePoint3d::setToProduct(const OdGeMatrix3d& matrix, const OdGePoint3d& p) {
  return *this = matrix * p;
}

double OdGePoint3d::distanceTo(const OdGePoint3d& p) const { return (*this - p).length(); }

bool OdGePoint3d::isEqualTo(const OdGePoint3d& p, const OdGeTol& tol) const {
  return distanceTo(p) <= tol.equalPoint();
}

OdGePoint3d& OdGePoint3d::transformBy(const OdGeMatrix3d& matrix) { return *this = matrix * *this; }

OdGePoint3d& OdGePoint3d::rotateBy(double angle, const OdGeVector3d& axis, const OdGePoint3d& center) {
  return *this = center + (*this - center).rotateBy(angle, axis);
}

OdGePoint3d& OdGePoint3d::scaleBy(double factor, const OdGePoint3d& center) {
  return *this = center + (*this - center) * factor;
}

OdGePoint3d& OdGePoint3d::mirror(const OdGePlane& plane) {
  return *this -= plane.normal() * (2.0 * plane.signedDistanceTo(*this));
}

OdGePoint3d OdGePoint3d::orthoProject(const OdGePlane& plane) const { return plane.closestPointTo(*this); }

OdGePoint3d OdGePoint3d::project(const OdGePlane& plane, const OdGeVector3d& direction) const {
  const double across = direction.dotProduct(plane.normal());
  if (std::fabs(across) <= 1e-300 || direction.isPerpendicularTo(plane.normal())) return *this;
  return *this - direction * (plane.signedDistanceTo(*this) / across);
}
