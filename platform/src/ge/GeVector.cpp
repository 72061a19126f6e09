// 2-d and 3-d vectors.
#include <cmath>

#include "Ge/GeConst.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"

// ---- OdGeVector2d

OdGeVector2d& OdGeVector2d::setToProduct(const OdGeMatrix2d& matrix, const OdGeVector2d& v) {
  return *this = matrix * v;
}

double OdGeVector2d::length() const { return std::hypot(x, y); }

OdGeVector2d OdGeVector2d::normal(const OdGeTol& tol) const {
  OdGeVector2d result(*this);
  return result.normalize(tol);
}

OdGeVector2d& OdGeVector2d::normalize(const OdGeTol& tol) {
  const double len = length();
  if (len > tol.equalVector()) *this /= len;
  return *this;
}

double OdGeVector2d::angle() const { return odgeNormalizeAngle(std::atan2(y, x)); }

double OdGeVector2d::angleTo(const OdGeVector2d& v) const {
  return std::fabs(std::atan2(crossProduct(v), dotProduct(v)));
}

bool OdGeVector2d::isZeroLength(const OdGeTol& tol) const { return length() <= tol.equalVector(); }

bool OdGeVector2d::isUnitLength(const OdGeTol& tol) const { return std::fabs(length() - 1.0) <= tol.equalVector(); }

bool OdGeVector2d::isEqualTo(const OdGeVector2d& v, const OdGeTol& tol) const {
  return (*this - v).length() <= tol.equalVector();
}

bool OdGeVector2d::isParallelTo(const OdGeVector2d& v, const OdGeTol& tol) const {
  const double lengths = length() * v.length();
  return lengths > 0.0 && std::fabs(crossProduct(v)) / lengths <= tol.equalVector();
}

bool OdGeVector2d::isCodirectionalTo(const OdGeVector2d& v, const OdGeTol& tol) const {
  return isParallelTo(v, tol) && dotProduct(v) > 0.0;
}

bool OdGeVector2d::isPerpendicularTo(const OdGeVector2d& v, const OdGeTol& tol) const {
  const double lengths = length() * v.length();
  return lengths > 0.0 && std::fabs(dotProduct(v)) / lengths <= tol.equalVector();
}

OdGeVector2d& OdGeVector2d::rotateBy(double angle) {
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return set(c * x - s * y, s * x + c * y);
}

OdGeVector2d& OdGeVector2d::mirror(const OdGeVector2d& line) {
  const double lineLengthSqrd = line.lengthSqrd();
  if (lineLengthSqrd == 0.0) return *this;
  const OdGeVector2d along = line * (dotProduct(line) / lineLengthSqrd);
  return *this = along * 2.0 - *this;
}

OdGeVector2d& OdGeVector2d::transformBy(const OdGeMatrix2d& matrix) { return *this = matrix * *this; }

OdGeVector3d OdGeVector2d::convert3d(double z) const { return {x, y, z}; }

// ---- OdGeVector3d

OdGeVector3d& OdGeVector3d::setToProduct(const OdGeMatrix3d& matrix, const OdGeVector3d& v) {
  return *this = matrix * v;
}

double OdGeVector3d::length() const { return std::sqrt(lengthSqrd()); }

OdGeVector3d OdGeVector3d::normal(const OdGeTol& tol) const {
  OdGeVector3d result(*this);
  return result.normalize(tol);
}

OdGeVector3d& OdGeVector3d::normalize(const OdGeTol& tol) {
  const double len = length();
  if (len > tol.equalVector()) *this /= len;
  return *this;
}

double OdGeVector3d::angleTo(const OdGeVector3d& v) const {
  return std::atan2(crossProduct(v).length(), dotProduct(v));
}

double OdGeVector3d::angleTo(const OdGeVector3d& v, const OdGeVector3d& refVec) const {
  const OdGeVector3d cross = crossProduct(v);
  const double angle = std::atan2(cross.length(), dotProduct(v));
  if (cross.dotProduct(refVec) >= 0.0) return angle;
  return odgeNormalizeAngle(Oda2PI - angle);
}

OdGeVector3d OdGeVector3d::perpVector() const {
  const double len = length();
  if (len == 0.0) return kIdentity;
  const OdGeVector3d unit = *this / len;
  const bool nearWorldZ = std::fabs(unit.x) < OdGe::kArbitraryAxisLimit && std::fabs(unit.y) < OdGe::kArbitraryAxisLimit;
  const OdGeVector3d seed = nearWorldZ ? kYAxis : kZAxis;
  const OdGeVector3d axis = seed.crossProduct(unit);
  return axis / axis.length();
}

bool OdGeVector3d::isZeroLength(const OdGeTol& tol) const { return length() <= tol.equalVector(); }

bool OdGeVector3d::isUnitLength(const OdGeTol& tol) const { return std::fabs(length() - 1.0) <= tol.equalVector(); }

bool OdGeVector3d::isEqualTo(const OdGeVector3d& v, const OdGeTol& tol) const {
  return (*this - v).length() <= tol.equalVector();
}

bool OdGeVector3d::isParallelTo(const OdGeVector3d& v, const OdGeTol& tol) const {
  const double lengths = length() * v.length();
  return lengths > 0.0 && crossProduct(v).length() / lengths <= tol.equalVector();
}

bool OdGeVector3d::isCodirectionalTo(const OdGeVector3d& v, const OdGeTol& tol) const {
  return isParallelTo(v, tol) && dotProduct(v) > 0.0;
}

bool OdGeVector3d::isPerpendicularTo(const OdGeVector3d& v, const OdGeTol& tol) const {
  const double lengths = length() * v.length();
  return lengths > 0.0 && std::fabs(dotProduct(v)) / lengths <= tol.equalVector();
}

unsigned int OdGeVector3d::largestElement() const {
  const double ax = std::fabs(x), ay = std::fabs(y), az = std::fabs(z);
  if (ax >= ay && ax >= az) return 0;
  return ay >= az ? 1 : 2;
}

OdGeVector3d& OdGeVector3d::rotateBy(double angle, const OdGeVector3d& axis) {
  const double axisLength = axis.length();
  if (axisLength == 0.0) return *this;
  // Rodrigues' rotation formula.
  const OdGeVector3d k = axis / axisLength;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return *this = *this * c + k.crossProduct(*this) * s + k * (k.dotProduct(*this) * (1.0 - c));
}

OdGeVector3d& OdGeVector3d::mirror(const OdGeVector3d& normalToPlane) {
  const double normalLengthSqrd = normalToPlane.lengthSqrd();
  if (normalLengthSqrd == 0.0) return *this;
  return *this -= normalToPlane * (2.0 * dotProduct(normalToPlane) / normalLengthSqrd);
}

OdGeVector3d OdGeVector3d::orthoProject(const OdGeVector3d& planeNormal) const {
  const double normalLengthSqrd = planeNormal.lengthSqrd();
  if (normalLengthSqrd == 0.0) return *this;
  return *this - planeNormal * (dotProduct(planeNormal) / normalLengthSqrd);
}

OdGeVector3d& OdGeVector3d::transformBy(const OdGeMatrix3d& matrix) { return *this = matrix * *this; }
