// 3x3 transformation matrices of the plane.
#include "Ge/GeMatrix2d.h"

#include <algorithm>
#include <cmath>

#include "Ge/GeLinearEnt2d.h"
#include "OdResult.h"

namespace {

bool isAffine(const OdGeMatrix2d& m) {
  return m.entry[2][0] == 0.0 && m.entry[2][1] == 0.0 && m.entry[2][2] == 1.0;
}

double det2(const OdGeMatrix2d& m) { return m.entry[0][0] * m.entry[1][1] - m.entry[0][1] * m.entry[1][0]; }

// |det| / (product of the lengths of the axes or rows), see OdGeMatrix3d.
double independence(const OdGeMatrix2d& m) {
  double product = 1.0;
  if (isAffine(m)) {
    product = m.getCsXAxis().length() * m.getCsYAxis().length();
    return product > 0.0 ? std::fabs(det2(m)) / product : 0.0;
  }
  for (int row = 0; row < 3; ++row) {
    product *= std::sqrt(m.entry[row][0] * m.entry[row][0] + m.entry[row][1] * m.entry[row][1] +
                         m.entry[row][2] * m.entry[row][2]);
  }
  return product > 0.0 ? std::fabs(m.det()) / product : 0.0;
}

}  // namespace

OdGeMatrix2d OdGeMatrix2d::operator*(const OdGeMatrix2d& m) const {
  OdGeMatrix2d result;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      double sum = 0.0;
      for (int k = 0; k < 3; ++k) sum += entry[row][k] * m.entry[k][column];
      result.entry[row][column] = sum;
    }
  }
  return result;
}

OdGeMatrix2d& OdGeMatrix2d::preMultBy(const OdGeMatrix2d& left) { return *this = left * *this; }

OdGeMatrix2d& OdGeMatrix2d::postMultBy(const OdGeMatrix2d& right) { return *this = *this * right; }

bool OdGeMatrix2d::isEqualTo(const OdGeMatrix2d& m, const OdGeTol& tol) const {
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const bool translation = column == 2 && row < 2;
      const double limit = translation ? tol.equalPoint() : tol.equalVector();
      if (std::fabs(entry[row][column] - m.entry[row][column]) > limit) return false;
    }
  }
  return true;
}

double OdGeMatrix2d::det() const {
  const auto& e = entry;
  return e[0][0] * (e[1][1] * e[2][2] - e[1][2] * e[2][1]) - e[0][1] * (e[1][0] * e[2][2] - e[1][2] * e[2][0]) +
         e[0][2] * (e[1][0] * e[2][1] - e[1][1] * e[2][0]);
}

bool OdGeMatrix2d::isSingular(const OdGeTol& tol) const { return independence(*this) <= tol.equalVector(); }

bool OdGeMatrix2d::inverse(OdGeMatrix2d& result, const OdGeTol& tol) const {
  if (isSingular(tol)) return false;
  // Adjugate over determinant.
  const auto& e = entry;
  const double invDet = 1.0 / det();
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
  return true;
}

OdGeMatrix2d OdGeMatrix2d::inverse() const {
  OdGeMatrix2d result;
  if (!inverse(result)) throw OdError(eDegenerateGeometry, OdString("singular matrix"));
  return result;
}

OdGeMatrix2d& OdGeMatrix2d::invert() { return *this = inverse(); }

OdGeMatrix2d& OdGeMatrix2d::transposeIt() {
  for (int row = 0; row < 3; ++row) {
    for (int column = row + 1; column < 3; ++column) std::swap(entry[row][column], entry[column][row]);
  }
  return *this;
}

OdGeMatrix2d OdGeMatrix2d::transpose() const {
  OdGeMatrix2d result(*this);
  return result.transposeIt();
}

bool OdGeMatrix2d::isScaledOrtho(const OdGeTol& tol) const {
  return getCsXAxis().isPerpendicularTo(getCsYAxis(), tol);
}

bool OdGeMatrix2d::isUniScaledOrtho(const OdGeTol& tol) const {
  if (!isScaledOrtho(tol)) return false;
  const double xLength = getCsXAxis().length();
  const double yLength = getCsYAxis().length();
  return std::fabs(xLength - yLength) <= tol.equalVector() * std::max(xLength, yLength);
}

double OdGeMatrix2d::scale() const { return std::max(getCsXAxis().length(), getCsYAxis().length()); }

OdGeMatrix2d& OdGeMatrix2d::setTranslation(const OdGeVector2d& v) {
  entry[0][2] = v.x;
  entry[1][2] = v.y;
  return *this;
}

OdGeMatrix2d& OdGeMatrix2d::setCoordSystem(const OdGePoint2d& origin, const OdGeVector2d& xAxis,
                                           const OdGeVector2d& yAxis) {
  setToIdentity();
  entry[0][0] = xAxis.x;
  entry[1][0] = xAxis.y;
  entry[0][1] = yAxis.x;
  entry[1][1] = yAxis.y;
  return setTranslation(origin.asVector());
}

void OdGeMatrix2d::getCoordSystem(OdGePoint2d& origin, OdGeVector2d& xAxis, OdGeVector2d& yAxis) const {
  origin = getCsOrigin();
  xAxis = getCsXAxis();
  yAxis = getCsYAxis();
}

OdGeMatrix2d& OdGeMatrix2d::setToTranslation(const OdGeVector2d& v) { return setToIdentity().setTranslation(v); }

OdGeMatrix2d& OdGeMatrix2d::setToRotation(double angle, const OdGePoint2d& center) {
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  setCoordSystem(OdGePoint2d::kOrigin, {c, s}, {-s, c});
  return setTranslation(center - (*this * center));
}

OdGeMatrix2d& OdGeMatrix2d::setToScaling(double factor, const OdGePoint2d& center) {
  setCoordSystem(OdGePoint2d::kOrigin, {factor, 0.0}, {0.0, factor});
  return setTranslation(center.asVector() * (1.0 - factor));
}

OdGeMatrix2d& OdGeMatrix2d::setToMirroring(const OdGePoint2d& point) {
  setToScaling(-1.0);
  return setTranslation(point.asVector() * 2.0);
}

OdGeMatrix2d& OdGeMatrix2d::setToMirroring(const OdGeLinearEnt2d& line) {
  // Reflection: L = 2 d d^T - I about a point of the line.
  const OdGeVector2d d = line.direction();
  setCoordSystem(OdGePoint2d::kOrigin, {2.0 * d.x * d.x - 1.0, 2.0 * d.x * d.y},
                 {2.0 * d.x * d.y, 2.0 * d.y * d.y - 1.0});
  const OdGePoint2d fixed = line.pointOnLine();
  return setTranslation(fixed - (*this * fixed));
}

OdGeMatrix2d& OdGeMatrix2d::setToAlignCoordSys(const OdGePoint2d& fromOrigin, const OdGeVector2d& fromXAxis,
                                               const OdGeVector2d& fromYAxis, const OdGePoint2d& toOrigin,
                                               const OdGeVector2d& toXAxis, const OdGeVector2d& toYAxis) {
  OdGeMatrix2d from;
  from.setCoordSystem(fromOrigin, fromXAxis, fromYAxis);
  OdGeMatrix2d to;
  to.setCoordSystem(toOrigin, toXAxis, toYAxis);
  return *this = to * from.inverse();
}

OdGeMatrix2d OdGeMatrix2d::translation(const OdGeVector2d& v) { return OdGeMatrix2d().setToTranslation(v); }
OdGeMatrix2d OdGeMatrix2d::rotation(double angle, const OdGePoint2d& center) {
  return OdGeMatrix2d().setToRotation(angle, center);
}
OdGeMatrix2d OdGeMatrix2d::scaling(double factor, const OdGePoint2d& center) {
  return OdGeMatrix2d().setToScaling(factor, center);
}
OdGeMatrix2d OdGeMatrix2d::mirroring(const OdGePoint2d& point) { return OdGeMatrix2d().setToMirroring(point); }
OdGeMatrix2d OdGeMatrix2d::mirroring(const OdGeLinearEnt2d& line) { return OdGeMatrix2d().setToMirroring(line); }
OdGeMatrix2d OdGeMatrix2d::alignCoordSys(const OdGePoint2d& fromOrigin, const OdGeVector2d& fromXAxis,
                                         const OdGeVector2d& fromYAxis, const OdGePoint2d& toOrigin,
                                         const OdGeVector2d& toXAxis, const OdGeVector2d& toYAxis) {
  return OdGeMatrix2d().setToAlignCoordSys(fromOrigin, fromXAxis, fromYAxis, toOrigin, toXAxis, toYAxis);
}

OdGePoint2d operator*(const OdGeMatrix2d& matrix, const OdGePoint2d& point) {
  const auto& e = matrix.entry;
  OdGePoint2d result(e[0][0] * point.x + e[0][1] * point.y + e[0][2], e[1][0] * point.x + e[1][1] * point.y + e[1][2]);
  const double w = e[2][0] * point.x + e[2][1] * point.y + e[2][2];
  if (w != 1.0 && w != 0.0) result = result / w;
  return result;
}

OdGeVector2d operator*(const OdGeMatrix2d& matrix, const OdGeVector2d& vector) {
  const auto& e = matrix.entry;
  return {e[0][0] * vector.x + e[0][1] * vector.y, e[1][0] * vector.x + e[1][1] * vector.y};
}
