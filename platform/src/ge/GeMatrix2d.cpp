// 3x3 transformation matrices of the plane.
#include "Ge/GeMatrix2d.h"

#include <algorithm>
#include <cmath>

#include "Ge/GeLinearEnt2d.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

double OdGeInternal::linearDet(const OdGeMatrix2d& m) {
  return m.entry[0][0] * m.entry[1][1] - m.entry[0][1] * m.entry[1][0];
}

template <>
double OdGeMatrixT<OdGeSpace2d>::det() const {
  const auto& e = entry;
  return e[0][0] * (e[1][1] * e[2][2] - e[1][2] * e[2][1]) - e[0][1] * (e[1][0] * e[2][2] - e[1][2] * e[2][0]) +
         e[0][2] * (e[1][0] * e[2][1] - e[1][1] * e[2][0]);
}

template <>
bool OdGeMatrixT<OdGeSpace2d>::inverse(OdGeMatrix2d& result, const OdGeTol& tol) const {
  if (isSingular(tol)) return false;
  // Adjugate over determinant.
  const auto& e = entry;
  const double invDet = 1.0 / det();
  auto& r = result.entry;
  OdGeInternal::scaledAdjugate3(e, invDet, r);
  return true;
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
