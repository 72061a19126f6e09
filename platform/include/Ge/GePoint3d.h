// A location in space.
#pragma once

#include "Ge/GePoint2d.h"
#include "Ge/GeVector3d.h"

class OdGeMatrix3d;
class OdGePlane;

class OdGePoint3d {
 public:
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  constexpr OdGePoint3d() = default;
  constexpr OdGePoint3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}
  // The 2-d point lifted to height z.
  constexpr explicit OdGePoint3d(const OdGePoint2d& p, double zz = 0.0) : x(p.x), y(p.y), z(zz) {}

  static const OdGePoint3d kOrigin;

  OdGePoint3d& set(double xx, double yy, double zz) { x = xx; y = yy; z = zz; return *this; }
  double operator[](unsigned int i) const { return i == 0 ? x : (i == 1 ? y : z); }
  double& operator[](unsigned int i) { return i == 0 ? x : (i == 1 ? y : z); }

  OdGePoint3d operator+(const OdGeVector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
  OdGePoint3d operator-(const OdGeVector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
  OdGeVector3d operator-(const OdGePoint3d& p) const { return {x - p.x, y - p.y, z - p.z}; }
  OdGePoint3d& operator+=(const OdGeVector3d& v) { x += v.x; y += v.y; z += v.z; return *this; }
  OdGePoint3d& operator-=(const OdGeVector3d& v) { x -= v.x; y -= v.y; z -= v.z; return *this; }
  // Scaling about the origin.
  OdGePoint3d operator*(double s) const { return {x * s, y * s, z * s}; }
  OdGePoint3d operator/(double s) const { return {x / s, y / s, z / s}; }
  // Equality within OdGeContext::gTol.
  bool operator==(const OdGePoint3d& p) const { return isEqualTo(p); }
  bool operator!=(const OdGePoint3d& p) const { return !isEqualTo(p); }

  OdGeVector3d asVector() const { return {x, y, z}; }
  static OdGePoint3d asPoint(const OdGeVector3d& v) { return {v.x, v.y, v.z}; }

  OdGePoint3d& setToProduct(const OdGeMatrix3d& matrix, const OdGePoint3d& p);
  OdGePoint3d& setToSum(const OdGePoint3d& p, const OdGeVector3d& v) { return *this = p + v; }

  double distanceTo(const OdGePoint3d& p) const;
  bool isEqualTo(const OdGePoint3d& p, const OdGeTol& tol = OdGeContext::gTol) const;

  OdGePoint3d& transformBy(const OdGeMatrix3d& matrix);
  OdGePoint3d& rotateBy(double angle, const OdGeVector3d& axis, const OdGePoint3d& center = kOrigin);
  OdGePoint3d& scaleBy(double factor, const OdGePoint3d& center = kOrigin);
  OdGePoint3d& mirror(const OdGePlane& plane);

  // Foot of the perpendicular on the plane.
  OdGePoint3d orthoProject(const OdGePlane& plane) const;
  // Projection onto the plane along `direction`; this point itself when the direction is
  // parallel to the plane.
  OdGePoint3d project(const OdGePlane& plane, const OdGeVector3d& direction) const;

  OdGePoint2d convert2d() const { return {x, y}; }  // drops z
};

inline constexpr OdGePoint3d OdGePoint3d::kOrigin{0.0, 0.0, 0.0};

inline OdGePoint3d operator*(double s, const OdGePoint3d& p) { return p * s; }
