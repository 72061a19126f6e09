// A location in the plane.
#pragma once

#include "Ge/GeVector2d.h"

class OdGeMatrix2d;
class OdGeLinearEnt2d;
class OdGePoint3d;

class OdGePoint2d {
 public:
  double x = 0.0;
  double y = 0.0;

  constexpr OdGePoint2d() = default;
  constexpr OdGePoint2d(double xx, double yy) : x(xx), y(yy) {}

  static const OdGePoint2d kOrigin;

  OdGePoint2d& set(double xx, double yy) { x = xx; y = yy; return *this; }
  double operator[](unsigned int i) const { return i == 0 ? x : y; }
  double& operator[](unsigned int i) { return i == 0 ? x : y; }

  OdGePoint2d operator+(const OdGeVector2d& v) const { return {x + v.x, y + v.y}; }
  OdGePoint2d operator-(const OdGeVector2d& v) const { return {x - v.x, y - v.y}; }
  OdGeVector2d operator-(const OdGePoint2d& p) const { return {x - p.x, y - p.y}; }
  OdGePoint2d& operator+=(const OdGeVector2d& v) { x += v.x; y += v.y; return *this; }
  OdGePoint2d& operator-=(const OdGeVector2d& v) { x -= v.x; y -= v.y; return *this; }
  // Scaling about the origin.
  OdGePoint2d operator*(double s) const { return {x * s, y * s}; }
  OdGePoint2d operator/(double s) const { return {x / s, y / s}; }
  // Equality within OdGeContext::gTol.
  bool operator==(const OdGePoint2d& p) const { return isEqualTo(p); }
  bool operator!=(const OdGePoint2d& p) const { return !isEqualTo(p); }

  OdGeVector2d asVector() const { return {x, y}; }
  static OdGePoint2d asPoint(const OdGeVector2d& v) { return {v.x, v.y}; }

  OdGePoint2d& setToProduct(const OdGeMatrix2d& matrix, const OdGePoint2d& p);
  OdGePoint2d& setToSum(const OdGePoint2d& p, const OdGeVector2d& v) { return *this = p + v; }

  double distanceTo(const OdGePoint2d& p) const;
  bool isEqualTo(const OdGePoint2d& p, const OdGeTol& tol = OdGeContext::gTol) const;

  OdGePoint2d& transformBy(const OdGeMatrix2d& matrix);
  OdGePoint2d& rotateBy(double angle, const OdGePoint2d& center = kOrigin);
  OdGePoint2d& scaleBy(double factor, const OdGePoint2d& center = kOrigin);
  OdGePoint2d& mirror(const OdGeLinearEnt2d& line);

  OdGePoint3d convert3d(double z = 0.0) const;  // needs Ge/GePoint3d.h at the call
};

inline constexpr OdGePoint2d OdGePoint2d::kOrigin{0.0, 0.0};

inline OdGePoint2d operator*(double s, const OdGePoint2d& p) { return p * s; }
