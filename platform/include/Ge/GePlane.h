// Unbounded plane through an origin with a unit normal. In-plane coordinates (evalPoint,
// paramOf) use the object coordinate system axes of the normal (Ge/GeOcs.h).
#pragma once

#include "Ge/GeEntity3d.h"

class OdGeLinearEnt3d;
class OdGeLine3d;

class OdGePlane : public OdGeEntity3d {
 public:
  OdGePlane() = default;  // the x-y plane
  // The normal is normalised; a zero normal is taken as the z axis.
  OdGePlane(const OdGePoint3d& origin, const OdGeVector3d& normal) { set(origin, normal); }
  // Through three points, normal (p2 - p1) x (p3 - p1); throws OdError(eDegenerateGeometry)
  // when they lie on one line.
  OdGePlane(const OdGePoint3d& p1, const OdGePoint3d& p2, const OdGePoint3d& p3) { set(p1, p2, p3); }
  // a*x + b*y + c*z + d = 0; throws OdError(eDegenerateGeometry) when (a, b, c) is zero.
  OdGePlane(double a, double b, double c, double d);

  OdGe::EntityId type() const override { return OdGe::kPlane; }
  OdGePlane* copy() const override { return new OdGePlane(*this); }
  // Throws OdError(eDegenerateGeometry) when the matrix flattens the plane.
  OdGePlane& transformBy(const OdGeMatrix3d& matrix) override;
  bool isOn(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const override;

  OdGePlane& set(const OdGePoint3d& origin, const OdGeVector3d& normal);
  OdGePlane& set(const OdGePoint3d& p1, const OdGePoint3d& p2, const OdGePoint3d& p3);

  const OdGePoint3d& pointOnPlane() const { return m_origin; }
  const OdGePoint3d& origin() const { return m_origin; }
  const OdGeVector3d& normal() const { return m_normal; }
  void getCoefficients(double& a, double& b, double& c, double& d) const;
  // The in-plane axes (OCS x and y of the normal).
  void getCoordSystem(OdGePoint3d& origin, OdGeVector3d& xAxis, OdGeVector3d& yAxis) const;
  OdGePlane& reverseNormal() { m_normal = -m_normal; return *this; }

  // Positive on the side the normal points to.
  double signedDistanceTo(const OdGePoint3d& point) const;
  double distanceTo(const OdGePoint3d& point) const;
  // Foot of the perpendicular.
  OdGePoint3d closestPointTo(const OdGePoint3d& point) const;
  OdGePoint3d evalPoint(const OdGePoint2d& param) const;
  OdGePoint2d paramOf(const OdGePoint3d& point) const;

  bool isParallelTo(const OdGePlane& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isCoplanarTo(const OdGePlane& other, const OdGeTol& tol = OdGeContext::gTol) const;
  bool intersectWith(const OdGeLinearEnt3d& line, OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const;
  // The line shared by two planes that are not parallel.
  bool intersectWith(const OdGePlane& other, OdGeLine3d& line, const OdGeTol& tol = OdGeContext::gTol) const;

 private:
  OdGePoint3d m_origin;
  OdGeVector3d m_normal{0.0, 0.0, 1.0};
};
