// A displacement or direction in the plane.
#pragma once

#include "Ge/GeContext.h"

class OdGeMatrix2d;
class OdGeVector3d;

class OdGeVector2d {
 public:
  double x = 0.0;
  double y = 0.0;

  constexpr OdGeVector2d() = default;
  constexpr OdGeVector2d(double xx, double yy) : x(xx), y(yy) {}

  static const OdGeVector2d kIdentity;  // the zero vector
  static const OdGeVector2d kXAxis;
  static const OdGeVector2d kYAxis;

  OdGeVector2d& set(double xx, double yy) { x = xx; y = yy; return *this; }
  double operator[](unsigned int i) const { return i == 0 ? x : y; }
  double& operator[](unsigned int i) { return i == 0 ? x : y; }

  OdGeVector2d operator+(const OdGeVector2d& v) const { return {x + v.x, y + v.y}; }
  OdGeVector2d operator-(const OdGeVector2d& v) const { return {x - v.x, y - v.y}; }
  OdGeVector2d operator-() const { return {-x, -y}; }
  OdGeVector2d operator*(double s) const { return {x * s, y * s}; }
  OdGeVector2d operator/(double s) const { return {x / s, y / s}; }
  OdGeVector2d& operator+=(const OdGeVector2d& v) { x += v.x; y += v.y; return *this; }
  OdGeVector2d& operator-=(const OdGeVector2d& v) { x -= v.x; y -= v.y; return *this; }
  OdGeVector2d& operator*=(double s) { x *= s; y *= s; return *this; }
  OdGeVector2d& operator/=(double s) { x /= s; y /= s; return *this; }
  // Equality within OdGeContext::gTol.
  bool operator==(const OdGeVector2d& v) const { return isEqualTo(v); }
  bool operator!=(const OdGeVector2d& v) const { return !isEqualTo(v); }

  OdGeVector2d& setToProduct(const OdGeVector2d& v, double s) { return *this = v * s; }
  OdGeVector2d& setToProduct(const OdGeMatrix2d& matrix, const OdGeVector2d& v);
  OdGeVector2d& setToSum(const OdGeVector2d& a, const OdGeVector2d& b) { return *this = a + b; }

  double length() const;
  double lengthSqrd() const { return x * x + y * y; }
  double dotProduct(const OdGeVector2d& v) const { return x * v.x + y * v.y; }
  // z component of the 3-d cross product: positive when v lies counter-clockwise from this.
  double crossProduct(const OdGeVector2d& v) const { return x * v.y - y * v.x; }

  // Unit vector in this direction; a vector within tol of zero is returned unchanged.
  OdGeVector2d normal(const OdGeTol& tol = OdGeContext::gTol) const;
  OdGeVector2d& normalize(const OdGeTol& tol = OdGeContext::gTol);

  // Angle from the x axis, counter-clockwise, in [0, 2π).
  double angle() const;
  // Unsigned angle between the two directions, in [0, π].
  double angleTo(const OdGeVector2d& v) const;
  // This vector turned a quarter turn counter-clockwise.
  OdGeVector2d perpVector() const { return {-y, x}; }

  bool isZeroLength(const OdGeTol& tol = OdGeContext::gTol) const;
  bool isUnitLength(const OdGeTol& tol = OdGeContext::gTol) const;
  bool isEqualTo(const OdGeVector2d& v, const OdGeTol& tol = OdGeContext::gTol) const;
  // Direction tests; a zero-length vector is neither parallel nor perpendicular to anything.
  bool isParallelTo(const OdGeVector2d& v, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isCodirectionalTo(const OdGeVector2d& v, const OdGeTol& tol = OdGeContext::gTol) const;
  bool isPerpendicularTo(const OdGeVector2d& v, const OdGeTol& tol = OdGeContext::gTol) const;

  OdGeVector2d& rotateBy(double angle);
  // Reflection in the line through the origin along `line`.
  OdGeVector2d& mirror(const OdGeVector2d& line);
  OdGeVector2d& transformBy(const OdGeMatrix2d& matrix);

  OdGeVector3d convert3d(double z = 0.0) const;  // needs Ge/GeVector3d.h at the call
};

inline constexpr OdGeVector2d OdGeVector2d::kIdentity{0.0, 0.0};
inline constexpr OdGeVector2d OdGeVector2d::kXAxis{1.0, 0.0};
inline constexpr OdGeVector2d OdGeVector2d::kYAxis{0.0, 1.0};

inline OdGeVector2d operator*(double s, const OdGeVector2d& v) { return v * s; }
