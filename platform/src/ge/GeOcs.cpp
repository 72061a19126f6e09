// Object coordinate systems by the arbitrary axis rule.
#include "Ge/GeOcs.h"

#include <cmath>

#include "Ge/GeConst.h"

void odgeOcsAxes(const OdGeVector3d& normal, OdGeVector3d& xAxis, OdGeVector3d& yAxis, OdGeVector3d& zAxis) {
  const double length = normal.length();
  zAxis = length > 0.0 ? normal / length : OdGeVector3d::kZAxis;
  xAxis = zAxis.perpVector();
  yAxis = zAxis.crossProduct(xAxis);
  yAxis /= yAxis.length();
}

OdGeVector3d odgeOcsToWcs(const OdGeVector3d& ocsVector, const OdGeVector3d& normal) {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(normal, xAxis, yAxis, zAxis);
  return xAxis * ocsVector.x + yAxis * ocsVector.y + zAxis * ocsVector.z;
}

OdGePoint3d odgeOcsToWcs(const OdGePoint3d& ocsPoint, const OdGeVector3d& normal) {
  return OdGePoint3d::asPoint(odgeOcsToWcs(ocsPoint.asVector(), normal));
}

OdGePoint3d odgeOcsToWcs(const OdGePoint2d& ocsPoint, double elevation, const OdGeVector3d& normal) {
  return odgeOcsToWcs(OdGePoint3d(ocsPoint, elevation), normal);
}

OdGeVector3d odgeWcsToOcs(const OdGeVector3d& wcsVector, const OdGeVector3d& normal) {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(normal, xAxis, yAxis, zAxis);
  return {wcsVector.dotProduct(xAxis), wcsVector.dotProduct(yAxis), wcsVector.dotProduct(zAxis)};
}

OdGePoint3d odgeWcsToOcs(const OdGePoint3d& wcsPoint, const OdGeVector3d& normal) {
  return OdGePoint3d::asPoint(odgeWcsToOcs(wcsPoint.asVector(), normal));
}

double odgeOcsAngle(const OdGeVector3d& wcsDirection, const OdGeVector3d& normal) {
  const OdGeVector3d ocs = odgeWcsToOcs(wcsDirection, normal);
  return odgeNormalizeAngle(std::atan2(ocs.y, ocs.x));
}
