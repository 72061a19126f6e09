// 4x4 transformation matrices of space.
#include "Ge/GeMatrix3d.h"

#include <algorithm>
#include <cmath>

#include "Ge/GeConst.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeOcs.h"
#include "Ge/GePlane.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

double OdGeInternal::linearDet(const OdGeMatrix3d& m) {
  const auto& e = m.entry;
  return e[0][0] * (e[1][1] * e[2][2] - e[1][2] * e[2][1]) - e[0][1] * (e[1][0] * e[2][2] - e[1][2] * e[2][0]) +
         e[0][2] * (e[1][0] * e[2][1] - e[1][1] * e[2][0]);
}

namespace {

OdGeMatrix3d inverseAffine(const OdGeMatrix3d& m) {
  const auto& e = m.entry;
  const double invDet = 1.0 / OdGeInternal::linearDet(m);
  OdGeMatrix3d result;
  auto& r = result.entry;
  OdGeInternal::scaledAdjugate3(e, invDet, r);
  for (int row = 0; row < 3; ++row) {
    r[row][3] = -(r[row][0] * e[0][3] + r[row][1] * e[1][3] + r[row][2] * e[2][3]);
  }
  return result;
}

// Gauss-Jordan elimination with partial pivoting, for matrices with a perspective row.
OdGeMatrix3d inverseGeneral(const OdGeMatrix3d& m) {
  double a[4][8];
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      a[row][column] = m.entry[row][column];
      a[row][column + 4] = row == column ? 1.0 : 0.0;
    }
  }
  for (int column = 0; column < 4; ++column) {
    int pivot = column;
    for (int row = column + 1; row < 4; ++row) {
      if (std::fabs(a[row][column]) > std::fabs(a[pivot][column])) pivot = row;
    }
    std::swap(a[column], a[pivot]);
    const double scale = 1.0 / a[column][column];
    for (double& value : a[column]) value *= scale;
    for (int row = 0; row < 4; ++row) {
      if (row == column) continue;
      const double factor = a[row][column];
      for (int k = 0; k < 8; ++k) a[row][k] -= factor * a[column][k];
    }
  }
  OdGeMatrix3d result;
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) result.entry[row][column] = a[row][column + 4];
  }
  return result;
}

// Linear part u * v^T.
void setOuter(OdGeMatrix3d& m, const OdGeVector3d& u, const OdGeVector3d& v, double factor) {
  for (unsigned int row = 0; row < 3; ++row) {
    for (unsigned int column = 0; column < 3; ++column) m.entry[row][column] = factor * u[row] * v[column];
  }
}

}  // namespace

template <>
double OdGeMatrixT<OdGeSpace3d>::det() const {
  if (isAffine()) return OdGeInternal::linearDet(self());
  const auto& e = entry;
  // Laplace expansion by 2x2 minors of the top and bottom row pairs.
  const double s0 = e[0][0] * e[1][1] - e[1][0] * e[0][1];
  const double s1 = e[0][0] * e[1][2] - e[1][0] * e[0][2];
  const double s2 = e[0][0] * e[1][3] - e[1][0] * e[0][3];
  const double s3 = e[0][1] * e[1][2] - e[1][1] * e[0][2];
  const double s4 = e[0][1] * e[1][3] - e[1][1] * e[0][3];
  const double s5 = e[0][2] * e[1][3] - e[1][2] * e[0][3];
  const double c5 = e[2][2] * e[3][3] - e[3][2] * e[2][3];
  const double c4 = e[2][1] * e[3][3] - e[3][1] * e[2][3];
  const double c3 = e[2][1] * e[3][2] - e[3][1] * e[2][2];
  const double c2 = e[2][0] * e[3][3] - e[3][0] * e[2][3];
  const double c1 = e[2][0] * e[3][2] - e[3][0] * e[2][2];
  const double c0 = e[2][0] * e[3][1] - e[3][0] * e[2][1];
  return s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
}

template <>
bool OdGeMatrixT<OdGeSpace3d>::inverse(OdGeMatrix3d& result, const OdGeTol& tol) const {
  if (isSingular(tol)) return false;
  result = isAffine() ? inverseAffine(self()) : inverseGeneral(self());
  return true;
}

bool OdGeMatrix3d::isPerspective(const OdGeTol& tol) const {
  return std::fabs(entry[3][0]) > tol.equalVector() || std::fabs(entry[3][1]) > tol.equalVector() ||
         std::fabs(entry[3][2]) > tol.equalVector() || std::fabs(entry[3][3] - 1.0) > tol.equalVector();
}

OdGeMatrix3d& OdGeMatrix3d::setCoordSystem(const OdGePoint3d& origin, const OdGeVector3d& xAxis,
                                           const OdGeVector3d& yAxis, const OdGeVector3d& zAxis) {
  setToIdentity();
  for (unsigned int row = 0; row < 3; ++row) {
    entry[row][0] = xAxis[row];
    entry[row][1] = yAxis[row];
    entry[row][2] = zAxis[row];
    entry[row][3] = origin[row];
  }
  return *this;
}

void OdGeMatrix3d::getCoordSystem(OdGePoint3d& origin, OdGeVector3d& xAxis, OdGeVector3d& yAxis,
                                  OdGeVector3d& zAxis) const {
  origin = getCsOrigin();
  xAxis = getCsXAxis();
  yAxis = getCsYAxis();
  zAxis = getCsZAxis();
}

OdGeMatrix3d& OdGeMatrix3d::setToRotation(double angle, const OdGeVector3d& axis, const OdGePoint3d& center) {
  setToIdentity();
  const double axisLength = axis.length();
  if (axisLength == 0.0) return *this;
  const OdGeVector3d k = axis / axisLength;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  // R = c*I + s*[k]x + (1 - c)*k*k^T
  setOuter(*this, k, k, 1.0 - c);
  entry[0][0] += c;
  entry[1][1] += c;
  entry[2][2] += c;
  entry[0][1] -= s * k.z;
  entry[0][2] += s * k.y;
  entry[1][0] += s * k.z;
  entry[1][2] -= s * k.x;
  entry[2][0] -= s * k.y;
  entry[2][1] += s * k.x;
  // Keep the centre fixed: t = center - R * center.
  return setTranslation(center - (*this * center));
}

OdGeMatrix3d& OdGeMatrix3d::setToScaling(double factor, const OdGePoint3d& center) {
  return setToScaling(OdGeScale3d(factor), center);
}

OdGeMatrix3d& OdGeMatrix3d::setToScaling(const OdGeScale3d& factors, const OdGePoint3d& center) {
  setToIdentity();
  for (unsigned int axis = 0; axis < 3; ++axis) {
    entry[axis][axis] = factors[axis];
    entry[axis][3] = center[axis] * (1.0 - factors[axis]);
  }
  return *this;
}

OdGeMatrix3d& OdGeMatrix3d::setToMirroring(const OdGePlane& plane) {
  // p' = p - 2 ((p - o) . n) n
  const OdGeVector3d n = plane.normal();
  setToIdentity();
  setOuter(*this, n, n, -2.0);
  for (int axis = 0; axis < 3; ++axis) entry[axis][axis] += 1.0;
  return setTranslation(n * (2.0 * plane.pointOnPlane().asVector().dotProduct(n)));
}

OdGeMatrix3d& OdGeMatrix3d::setToMirroring(const OdGePoint3d& point) {
  setToScaling(-1.0);
  return setTranslation(point.asVector() * 2.0);
}

OdGeMatrix3d& OdGeMatrix3d::setToMirroring(const OdGeLine3d& line) {
  return setToRotation(OdaPI, line.direction(), line.pointOnLine());
}

OdGeMatrix3d& OdGeMatrix3d::setToAlignCoordSys(const OdGePoint3d& fromOrigin, const OdGeVector3d& fromXAxis,
                                               const OdGeVector3d& fromYAxis, const OdGeVector3d& fromZAxis,
                                               const OdGePoint3d& toOrigin, const OdGeVector3d& toXAxis,
                                               const OdGeVector3d& toYAxis, const OdGeVector3d& toZAxis) {
  OdGeMatrix3d from;
  from.setCoordSystem(fromOrigin, fromXAxis, fromYAxis, fromZAxis);
  OdGeMatrix3d to;
  to.setCoordSystem(toOrigin, toXAxis, toYAxis, toZAxis);
  return *this = to * from.inverse();
}

OdGeMatrix3d& OdGeMatrix3d::setToPlaneToWorld(const OdGeVector3d& normal) {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(normal, xAxis, yAxis, zAxis);
  return setCoordSystem(OdGePoint3d::kOrigin, xAxis, yAxis, zAxis);
}

OdGeMatrix3d& OdGeMatrix3d::setToPlaneToWorld(const OdGePlane& plane) {
  setToPlaneToWorld(plane.normal());
  return setTranslation(plane.pointOnPlane().asVector());
}

OdGeMatrix3d& OdGeMatrix3d::setToWorldToPlane(const OdGeVector3d& normal) {
  // The axes are orthonormal, so the inverse is the transpose.
  return setToPlaneToWorld(normal).transposeIt();
}

OdGeMatrix3d& OdGeMatrix3d::setToWorldToPlane(const OdGePlane& plane) {
  setToWorldToPlane(plane.normal());
  return setTranslation(-(*this * plane.pointOnPlane().asVector()));
}

OdGeMatrix3d OdGeMatrix3d::rotation(double angle, const OdGeVector3d& axis, const OdGePoint3d& center) {
  return OdGeMatrix3d().setToRotation(angle, axis, center);
}

OdGeMatrix3d OdGeMatrix3d::scaling(double factor, const OdGePoint3d& center) {
  return OdGeMatrix3d().setToScaling(factor, center);
}

OdGeMatrix3d OdGeMatrix3d::scaling(const OdGeScale3d& factors, const OdGePoint3d& center) {
  return OdGeMatrix3d().setToScaling(factors, center);
}

OdGeMatrix3d OdGeMatrix3d::mirroring(const OdGePlane& plane) { return OdGeMatrix3d().setToMirroring(plane); }
OdGeMatrix3d OdGeMatrix3d::mirroring(const OdGePoint3d& point) { return OdGeMatrix3d().setToMirroring(point); }
OdGeMatrix3d OdGeMatrix3d::mirroring(const OdGeLine3d& line) { return OdGeMatrix3d().setToMirroring(line); }

OdGeMatrix3d OdGeMatrix3d::alignCoordSys(const OdGePoint3d& fromOrigin, const OdGeVector3d& fromXAxis,
                                         const OdGeVector3d& fromYAxis, const OdGeVector3d& fromZAxis,
                                         const OdGePoint3d& toOrigin, const OdGeVector3d& toXAxis,
                                         const OdGeVector3d& toYAxis, const OdGeVector3d& toZAxis) {
  return OdGeMatrix3d().setToAlignCoordSys(fromOrigin, fromXAxis, fromYAxis, fromZAxis, toOrigin, toXAxis,
                                           toYAxis, toZAxis);
}

OdGeMatrix3d OdGeMatrix3d::planeToWorld(const OdGeVector3d& normal) { return OdGeMatrix3d().setToPlaneToWorld(normal); }
OdGeMatrix3d OdGeMatrix3d::planeToWorld(const OdGePlane& plane) { return OdGeMatrix3d().setToPlaneToWorld(plane); }
OdGeMatrix3d OdGeMatrix3d::worldToPlane(const OdGeVector3d& normal) { return OdGeMatrix3d().setToWorldToPlane(normal); }
OdGeMatrix3d OdGeMatrix3d::worldToPlane(const OdGePlane& plane) { return OdGeMatrix3d().setToWorldToPlane(plane); }

// ---- OdGeScale3d

bool OdGeScale3d::isEqualTo(const OdGeScale3d& s, const OdGeTol& tol) const {
  return std::fabs(sx - s.sx) <= tol.equalVector() && std::fabs(sy - s.sy) <= tol.equalVector() &&
         std::fabs(sz - s.sz) <= tol.equalVector();
}

bool OdGeScale3d::isProportional(const OdGeTol& tol) const {
  return std::fabs(sx - sy) <= tol.equalVector() && std::fabs(sx - sz) <= tol.equalVector();
}

OdGeMatrix3d OdGeScale3d::getMatrix() const { return OdGeMatrix3d::scaling(*this); }

void OdGeScale3d::getMatrix(OdGeMatrix3d& matrix) const { matrix = getMatrix(); }

OdGeScale3d& OdGeScale3d::extractScale(const OdGeMatrix3d& matrix) {
  return set(matrix.getCsXAxis().length(), matrix.getCsYAxis().length(), matrix.getCsZAxis().length());
}
