// A displacement or direction in space.
#pragma once

#include "Ge/GeVector2d.h"

class OdGeMatrix3d;
class OdGePlane;

class OdGeVector3d {
 public:
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  constexpr OdGeVector3d() = default;
  constexpr OdGeVector3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}

  static const OdGeVector3d kIdentity;  // the zero vector
  static const OdGeVector3d kXAxis;
  static const OdGeVector3d kYAxis;
  static const OdGeVector3d kZAxis;

  OdGeVector3d& set(double xx, double yy, double zz) { x = xx; y = yy; z = zz; return *this; }
  double operator[](unsigned int i) const { return i == 0 ? x : (i == 1 ? y : z); }
  double& operator[](unsigned int i) { return i == 0 ? x : (i == 1 ? y : z); }

  OdGeVector3d operator+(const OdGeVector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
  OdGeVector3d operator-(const OdGeVector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
  OdGeVector3d operator-() const { return {-x, -y, -z}; }
  OdGeVector3d operator*(double s) const { return {x * s, y * s, z * s}; }
  OdGeVector3d operator/(double s) const { return {x / s, y / s, z / s}; }
  OdGeVector3d& operator+=(const OdGeVector3d& v) { x += v.x; y += v.y; z += v.z; return *this; }
  OdGeVector3d& operator-=(const OdGeVector3d& v) { x -= v.x; y -= v.y; z -= v.z; return *this; }
  OdGeVector3d& operator*=(double s) { x *= s; y *= s; z *= s; return *this; }
  OdGeVector3d& operator/=(double s) { x /= s; y /= s; z /= s; return *this; }
  // Equality within OdGeContext::gTol.
  bool operator==(const OdGeVector3d& v) const { return isEqualTo(v); }
  bool operator!=(const OdGeVector3d& v) const { return !isEqualTo(v); }

  OdGeVector3d& setToProduct(const OdGeVector3d& v, double s) { return *this = v * s; }
  OdGeVector3d& setToProduct(const OdGeMatrix3d& matrix, const OdGeVector3d& v);
  OdGeVector3d& setToSum(const OdGeVector3d& a, const OdGeVector3d& b) { return *this = a + b; }

  double length() const;
  double lengthSqrd() const { return x * x + y * y + z * z; }
  double dotProduct(const OdGeVector3d& v) const { return x * v.x + y * v.y + z * v.z; }
  OdGeVector3d crossProduct(const OdGeVector3d& v) const {
    return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
  }

  // Unit vector in this direction; a vector within tol of zero is returned unchanged.
  OdGeVector3d normal(const OdGeTol& tol = OdGeContext::gTol) const;
  OdGeVector3d& normalize(const OdGeTol& tol = OdGeContext::gTol);

  // Unsigned angle between the two directions, in [0, π].
  double angleTo(const OdGeVector3d& v) const;
  // Angle from this to v turning counter-clockwise about refVec (right-hand rule), in [0, 2π).
  double angleTo(const OdGeVector3d& v, const OdGeVector3d& refVec) const;

  // Unit vector perpendicular to this one: the x axis of the object coordinate system whose
  // z axis is this vector (the arbitrary axis rule). Zero for a zero vector.
  OdGeVector3d perpVector() const;

  bool isZeroLength(const OdGeTol& tol = OdGeContext::gTol) const;
  bool isUnitLength(const OdGeTol& tol = OdGeContext::gTol) const;
  bool isEqualTo(const OdGeVector3d& v, const OdGeTol& tol = OdGeContext::gTol) const;
  // Direction tests; a zero-length vector is neither parallel nor perpendicular to anything.
  bool isParallelTo(const OdGeVector3d& v, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isCodirectionalTo(const OdGeVector3d& v, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isPerpendicularTo(const OdGeVector3d& v, const OdGeTol& tol = OdGeContext::gTol) const;

  // Index (0, 1, 2) of the component with the largest magnitude.
  unsigned int largestElement() const;

  // Rotation counter-clockwise about `axis` (right-hand rule); a zero axis leaves it unchanged.
  OdGeVector3d& rotateBy(double angle, const OdGeVector3d& axis);
  // Reflection in the plane through the origin with the given normal.
  OdGeVector3d& mirror(const OdGeVector3d& normalToPlane);
  // The component of this vector that lies in the plane with the given normal.
  OdGeVector3d orthoProject(const OdGeVector3d& planeNormal) const;
  // Transformation by the linear part of the matrix (translation does not move vectors).
  OdGeVector3d& transformBy(const OdGeMatrix3d& matrix);

  OdGeVector2d convert2d() const { return {x, y}; }  // drops z
};

inline constexpr OdGeVector3d OdGeVector3d::kIdentity{0.0, 0.0, 0.0};
inline constexpr OdGeVector3d OdGeVector3d::kXAxis{1.0, 0.0, 0.0};
inline constexpr OdGeVector3d OdGeVector3d::kYAxis{0.0, 1.0, 0.0};
inline constexpr OdGeVector3d OdGeVector3d::kZAxis{0.0, 0.0, 1.0};

inline OdGeVector3d operator*(double s, const OdGeVector3d& v) { return v * s; }
