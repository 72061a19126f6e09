// 4x4 transformation matrices of space.
#include "Ge/GeMatrix3d.h"

#include <algorithm>
#include <cmath>

#include "Ge/GeConst.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeOcs.h"
#include "Ge/GePlane.h"
#include "OdResult.h"

namespace {

bool isAffine(const OdGeMatrix3d& m) {
  return m.entry[3][0] == 0.0 && m.entry[3][1] == 0.0 && m.entry[3][2] == 0.0 && m.entry[3][3] == 1.0;
}

double det3(const OdGeMatrix3d& m) {
  const auto& e = m.entry;
  return e[0][0] * (e[1][1] * e[2][2] - e[1][2] * e[2][1]) - e[0][1] * (e[1][0] * e[2][2] - e[1][2] * e[2][0]) +
         e[0][2] * (e[1][0] * e[2][1] - e[1][1] * e[2][0]);
}

// |det| / (product of the lengths of the axes or rows): 1 for orthogonal directions, 0 when they
// are dependent, whatever their lengths (Hadamard's inequality bounds it by 1).
double independence(const OdGeMatrix3d& m) {
  double product = 1.0;
  if (isAffine(m)) {
    product = m.getCsXAxis().length() * m.getCsYAxis().length() * m.getCsZAxis().length();
    return product > 0.0 ? std::fabs(det3(m)) / product : 0.0;
  }
  for (int row = 0; row < 4; ++row) {
    double sum = 0.0;
    for (int column = 0; column < 4; ++column) sum += m.entry[row][column] * m.entry[row][column];
    product *= std::sqrt(sum);
  }
  return product > 0.0 ? std::fabs(m.det()) / product : 0.0;
}

OdGeMatrix3d inverseAffine(const OdGeMatrix3d& m) {
  const auto& e = m.entry;
  const double invDet = 1.0 / det3(m);
  OdGeMatrix3d result;
  auto& r = result.entry;
  r[0][0] = (e[1][1] * e[2][2] - e[1][2] * e[2][1]) * invDet;
  r[0][1] = (e[0][2] * e[2][1] - e[0][1] * e[2][2]) * invDet;
  r[0][2] = (e[0][1] * e[1][2] - e[0][2] * e[1][1]) * invDet;
  r[1][0] = (e[1][2] * e[2][0] - e[1][0] * e[2][2]) * invDet;
  r[1][1] = (e[0][0] * e[2][2] - e[0][2] * e[2][0]) * invDet;
  r[1][2] = (e[0][2] * e[1][0] - e[0][0] * e[1][2]) * invDet;
  r[2][0] = (e[1][0] * e[2][1] - e[1][1] * e[2][0]) * invDet;
  r[2][1] = (e[0][1] * e[2][0] - e[0][0] * e[2][1]) * invDet;
  r[2][2] = (e[0][0] * e[1][1] - e[0][1] * e[1][0]) * invDet;
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

OdGeMatrix3d OdGeMatrix3d::operator*(const OdGeMatrix3d& m) const {
  OdGeMatrix3d result;
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += entry[row][k] * m.entry[k][column];
      result.entry[row][column] = sum;
    }
  }
  return result;
}

OdGeMatrix3d& OdGeMatrix3d::preMultBy(const OdGeMatrix3d& left) { return *this = left * *this; }

OdGeMatrix3d& OdGeMatrix3d::postMultBy(const OdGeMatrix3d& right) { return *this = *this * right; }

bool OdGeMatrix3d::isEqualTo(const OdGeMatrix3d& m, const OdGeTol& tol) const {
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      const bool translation = column == 3 && row < 3;
      const double limit = translation ? tol.equalPoint() : tol.equalVector();
      if (std::fabs(entry[row][column] - m.entry[row][column]) > limit) return false;
    }
  }
  return true;
}

double OdGeMatrix3d::det() const {
  if (isAffine(*this)) return det3(*this);
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

bool OdGeMatrix3d::isSingular(const OdGeTol& tol) const { return independence(*this) <= tol.equalVector(); }

bool OdGeMatrix3d::inverse(OdGeMatrix3d& result, const OdGeTol& tol) const {
  if (isSingular(tol)) return false;
  result = isAffine(*this) ? inverseAffine(*this) : inverseGeneral(*this);
  return true;
}

OdGeMatrix3d OdGeMatrix3d::inverse() const {
  OdGeMatrix3d result;
  if (!inverse(result)) throw OdError(eDegenerateGeometry, OdString("singular matrix"));
  return result;
}

OdGeMatrix3d& OdGeMatrix3d::invert() { return *this = inverse(); }

OdGeMatrix3d& OdGeMatrix3d::transposeIt() {
  for (int row = 0; row < 4; ++row) {
    for (int column = row + 1; column < 4; ++column) std::swap(entry[row][column], entry[column][row]);
  }
  return *this;
}

OdGeMatrix3d OdGeMatrix3d::transpose() const {
  OdGeMatrix3d result(*this);
  return result.transposeIt();
}

bool OdGeMatrix3d::isScaledOrtho(const OdGeTol& tol) const {
  const OdGeVector3d axes[3] = {getCsXAxis(), getCsYAxis(), getCsZAxis()};
  for (const OdGeVector3d& axis : axes) {
    if (axis.lengthSqrd() == 0.0) return false;
  }
  return axes[0].isPerpendicularTo(axes[1], tol) && axes[1].isPerpendicularTo(axes[2], tol) &&
         axes[2].isPerpendicularTo(axes[0], tol);
}

bool OdGeMatrix3d::isUniScaledOrtho(const OdGeTol& tol) const {
  if (!isScaledOrtho(tol)) return false;
  const double lengths[3] = {getCsXAxis().length(), getCsYAxis().length(), getCsZAxis().length()};
  const double largest = std::max({lengths[0], lengths[1], lengths[2]});
  const double smallest = std::min({lengths[0], lengths[1], lengths[2]});
  return largest - smallest <= tol.equalVector() * largest;
}

bool OdGeMatrix3d::isPerspective(const OdGeTol& tol) const {
  return std::fabs(entry[3][0]) > tol.equalVector() || std::fabs(entry[3][1]) > tol.equalVector() ||
         std::fabs(entry[3][2]) > tol.equalVector() || std::fabs(entry[3][3] - 1.0) > tol.equalVector();
}

double OdGeMatrix3d::scale() const {
  return std::max({getCsXAxis().length(), getCsYAxis().length(), getCsZAxis().length()});
}

OdGeMatrix3d& OdGeMatrix3d::setTranslation(const OdGeVector3d& v) {
  entry[0][3] = v.x;
  entry[1][3] = v.y;
  entry[2][3] = v.z;
  return *this;
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

OdGeMatrix3d& OdGeMatrix3d::setToTranslation(const OdGeVector3d& v) { return setToIdentity().setTranslation(v); }

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

OdGeMatrix3d OdGeMatrix3d::translation(const OdGeVector3d& v) { return OdGeMatrix3d().setToTranslation(v); }

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

OdGePoint3d operator*(const OdGeMatrix3d& matrix, const OdGePoint3d& point) {
  const auto& e = matrix.entry;
  OdGePoint3d result(e[0][0] * point.x + e[0][1] * point.y + e[0][2] * point.z + e[0][3],
                     e[1][0] * point.x + e[1][1] * point.y + e[1][2] * point.z + e[1][3],
                     e[2][0] * point.x + e[2][1] * point.y + e[2][2] * point.z + e[2][3]);
  const double w = e[3][0] * point.x + e[3][1] * point.y + e[3][2] * point.z + e[3][3];
  if (w != 1.0 && w != 0.0) result = result / w;
  return result;
}

OdGeVector3d operator*(const OdGeMatrix3d& matrix, const OdGeVector3d& vector) {
  const auto& e = matrix.entry;
  return {e[0][0] * vector.x + e[0][1] * vector.y + e[0][2] * vector.z,
          e[1][0] * vector.x + e[1][1] * vector.y + e[1][2] * vector.z,
          e[2][0] * vector.x + e[2][1] * vector.y + e[2][2] * vector.z};
}

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
