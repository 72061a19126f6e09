// Scale factors along the three axes.
#pragma once

#include "Ge/GeContext.h"

class OdGeMatrix3d;

class OdGeScale3d {
 public:
  double sx = 1.0;
  double sy = 1.0;
  double sz = 1.0;

  constexpr OdGeScale3d() = default;
  constexpr explicit OdGeScale3d(double factor) : sx(factor), sy(factor), sz(factor) {}
  constexpr OdGeScale3d(double xFactor, double yFactor, double zFactor) : sx(xFactor), sy(yFactor), sz(zFactor) {}

  static const OdGeScale3d kIdentity;

  OdGeScale3d& set(double xFactor, double yFactor, double zFactor) {
    sx = xFactor; sy = yFactor; sz = zFactor;
    return *this;
  }
  double operator[](unsigned int i) const { return i == 0 ? sx : (i == 1 ? sy : sz); }
  double& operator[](unsigned int i) { return i == 0 ? sx : (i == 1 ? sy : sz); }

  OdGeScale3d operator*(const OdGeScale3d& s) const { return {sx * s.sx, sy * s.sy, sz * s.sz}; }
  OdGeScale3d operator*(double s) const { return {sx * s, sy * s, sz * s}; }
  OdGeScale3d& operator*=(const OdGeScale3d& s) { return *this = *this * s; }
  OdGeScale3d& operator*=(double s) { return *this = *this * s; }
  bool operator==(const OdGeScale3d& s) const { return isEqualTo(s); }
  bool operator!=(const OdGeScale3d& s) const { return !isEqualTo(s); }

  OdGeScale3d& setToProduct(const OdGeScale3d& a, const OdGeScale3d& b) { return *this = a * b; }
  OdGeScale3d& setToProduct(const OdGeScale3d& a, double s) { return *this = a * s; }

  // Factors compared one by one within tol.equalVector().
  bool isEqualTo(const OdGeScale3d& s, const OdGeTol& tol = OdGeContext::gTol) const;
  // True when all three factors are equal within tol.equalVector().
  bool isProportional(const OdGeTol& tol = OdGeContext::gTol) const;

  // The diagonal scaling matrix about the origin.
  OdGeMatrix3d getMatrix() const;
  void getMatrix(OdGeMatrix3d& matrix) const;
  // The lengths of the images of the three axes under the matrix (always positive).
  OdGeScale3d& extractScale(const OdGeMatrix3d& matrix);
};

inline constexpr OdGeScale3d OdGeScale3d::kIdentity{1.0, 1.0, 1.0};

inline OdGeScale3d operator*(double s, const OdGeScale3d& scale) { return scale * s; }
