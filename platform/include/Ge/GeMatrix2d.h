// 3x3 transformation matrix of the plane. Points are columns: p' = M * p, so the translation
// sits in entry[0..1][2] and M1 * M2 applies M2 first.
#pragma once

#include "Ge/GePoint2d.h"

class OdGeLinearEnt2d;

class OdGeMatrix2d {
 public:
  double entry[3][3];

  constexpr OdGeMatrix2d() : entry{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}} {}

  static const OdGeMatrix2d kIdentity;

  const double* operator[](unsigned int row) const { return entry[row]; }
  double* operator[](unsigned int row) { return entry[row]; }
  double operator()(unsigned int row, unsigned int column) const { return entry[row][column]; }
  double& operator()(unsigned int row, unsigned int column) { return entry[row][column]; }

  OdGeMatrix2d& setToIdentity() { return *this = OdGeMatrix2d(); }
  bool isIdentity(const OdGeTol& tol = OdGeContext::gTol) const { return isEqualTo(kIdentity, tol); }

  OdGeMatrix2d operator*(const OdGeMatrix2d& m) const;
  OdGeMatrix2d& operator*=(const OdGeMatrix2d& m) { return postMultBy(m); }
  OdGeMatrix2d& preMultBy(const OdGeMatrix2d& left);    // this = left * this
  OdGeMatrix2d& postMultBy(const OdGeMatrix2d& right);  // this = this * right
  OdGeMatrix2d& setToProduct(const OdGeMatrix2d& a, const OdGeMatrix2d& b) { return *this = a * b; }

  // Entries of the linear part compared within tol.equalVector(), translation within tol.equalPoint().
  bool isEqualTo(const OdGeMatrix2d& m, const OdGeTol& tol = OdGeContext::gTol) const;
  bool operator==(const OdGeMatrix2d& m) const { return isEqualTo(m); }
  bool operator!=(const OdGeMatrix2d& m) const { return !isEqualTo(m); }

  double det() const;
  // Axes (or, with perspective, rows) linearly dependent within tol.equalVector(), independently
  // of their lengths.
  bool isSingular(const OdGeTol& tol = OdGeContext::gTol) const;
  // Throws OdError(eDegenerateGeometry) for a singular matrix.
  OdGeMatrix2d inverse() const;
  bool inverse(OdGeMatrix2d& result, const OdGeTol& tol = OdGeContext::gTol) const;
  OdGeMatrix2d& invert();
  OdGeMatrix2d& transposeIt();
  OdGeMatrix2d transpose() const;

  bool isUniScaledOrtho(const OdGeTol& tol = OdGeContext::gTol) const;
  bool isScaledOrtho(const OdGeTol& tol = OdGeContext::gTol) const;
  // The larger of the lengths of the images of the two unit axes.
  double scale() const;

  OdGeVector2d getTranslation() const { return {entry[0][2], entry[1][2]}; }
  OdGeMatrix2d& setTranslation(const OdGeVector2d& v);

  OdGeMatrix2d& setCoordSystem(const OdGePoint2d& origin, const OdGeVector2d& xAxis, const OdGeVector2d& yAxis);
  void getCoordSystem(OdGePoint2d& origin, OdGeVector2d& xAxis, OdGeVector2d& yAxis) const;
  OdGePoint2d getCsOrigin() const { return {entry[0][2], entry[1][2]}; }
  OdGeVector2d getCsXAxis() const { return {entry[0][0], entry[1][0]}; }
  OdGeVector2d getCsYAxis() const { return {entry[0][1], entry[1][1]}; }

  OdGeMatrix2d& setToTranslation(const OdGeVector2d& v);
  OdGeMatrix2d& setToRotation(double angle, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  OdGeMatrix2d& setToScaling(double factor, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  OdGeMatrix2d& setToMirroring(const OdGePoint2d& point);
  OdGeMatrix2d& setToMirroring(const OdGeLinearEnt2d& line);
  OdGeMatrix2d& setToAlignCoordSys(const OdGePoint2d& fromOrigin, const OdGeVector2d& fromXAxis,
                                   const OdGeVector2d& fromYAxis, const OdGePoint2d& toOrigin,
                                   const OdGeVector2d& toXAxis, const OdGeVector2d& toYAxis);

  static OdGeMatrix2d translation(const OdGeVector2d& v);
  static OdGeMatrix2d rotation(double angle, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  static OdGeMatrix2d scaling(double factor, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  static OdGeMatrix2d mirroring(const OdGePoint2d& point);
  static OdGeMatrix2d mirroring(const OdGeLinearEnt2d& line);
  static OdGeMatrix2d alignCoordSys(const OdGePoint2d& fromOrigin, const OdGeVector2d& fromXAxis,
                                    const OdGeVector2d& fromYAxis, const OdGePoint2d& toOrigin,
                                    const OdGeVector2d& toXAxis, const OdGeVector2d& toYAxis);
};

inline constexpr OdGeMatrix2d OdGeMatrix2d::kIdentity{};

OdGePoint2d operator*(const OdGeMatrix2d& matrix, const OdGePoint2d& point);
OdGeVector2d operator*(const OdGeMatrix2d& matrix, const OdGeVector2d& vector);
