// What the transformation matrices of the plane (3x3) and of space (4x4) have in common,
// written once over the dimension (Ge/GeSpace.h). Points are columns: p' = M * p, so the
// translation sits in the last column and M1 * M2 applies M2 first. Use OdGeMatrix2d and
// OdGeMatrix3d.
#pragma once

#include "Ge/GeContext.h"
#include "Ge/GeSpace.h"

template <class Space>
class OdGeMatrixT {
 public:
  static constexpr unsigned int kSize = Space::kDimension + 1;
  using Point = typename Space::Point;
  using Vector = typename Space::Vector;
  using Matrix = typename Space::Matrix;

  double entry[kSize][kSize];

  constexpr OdGeMatrixT() : entry{} {
    for (unsigned int i = 0; i < kSize; ++i) entry[i][i] = 1.0;
  }

  const double* operator[](unsigned int row) const { return entry[row]; }
  double* operator[](unsigned int row) { return entry[row]; }
  double operator()(unsigned int row, unsigned int column) const { return entry[row][column]; }
  double& operator()(unsigned int row, unsigned int column) { return entry[row][column]; }

  Matrix& setToIdentity() { return self() = Matrix(); }
  bool isIdentity(const OdGeTol& tol = OdGeContext::gTol) const { return isEqualTo(Matrix::kIdentity, tol); }

  Matrix operator*(const OdGeMatrixT& m) const;
  Matrix& operator*=(const OdGeMatrixT& m) { return postMultBy(m); }
  Matrix& preMultBy(const OdGeMatrixT& left);    // this = left * this
  Matrix& postMultBy(const OdGeMatrixT& right);  // this = this * right
  Matrix& setToProduct(const OdGeMatrixT& a, const OdGeMatrixT& b) { return self() = a * b; }

  // Entries of the linear part compared within tol.equalVector(), translation within tol.equalPoint().
  bool isEqualTo(const OdGeMatrixT& m, const OdGeTol& tol = OdGeContext::gTol) const;
  bool operator==(const OdGeMatrixT& m) const { return isEqualTo(m); }
  bool operator!=(const OdGeMatrixT& m) const { return !isEqualTo(m); }

  double det() const;
  // A matrix is singular when its axes (or, with perspective, its rows) are linearly dependent
  // within tol.equalVector(), measured independently of their lengths.
  bool isSingular(const OdGeTol& tol = OdGeContext::gTol) const;
  // Throws OdError(eDegenerateGeometry) for a singular matrix.
  Matrix inverse() const;
  bool inverse(Matrix& result, const OdGeTol& tol = OdGeContext::gTol) const;
  Matrix& invert();
  Matrix& transposeIt();
  Matrix transpose() const;

  // Axes mutually perpendicular (within tol.equalVector()) and of equal non-zero length;
  // mirroring is allowed.
  bool isUniScaledOrtho(const OdGeTol& tol = OdGeContext::gTol) const;
  // Axes mutually perpendicular and non-zero, lengths may differ.
  bool isScaledOrtho(const OdGeTol& tol = OdGeContext::gTol) const;
  // The largest of the lengths of the images of the unit axes.
  double scale() const;

  Vector getTranslation() const { return columnVector(Space::kDimension); }
  Matrix& setTranslation(const Vector& v);
  Point getCsOrigin() const { return Point::asPoint(columnVector(Space::kDimension)); }
  Vector getCsXAxis() const { return columnVector(0); }
  Vector getCsYAxis() const { return columnVector(1); }

  Matrix& setToTranslation(const Vector& v) { return setToIdentity().setTranslation(v); }
  static Matrix translation(const Vector& v) { return Matrix().setToTranslation(v); }

  // Column `column` of the first Space::kDimension rows: an axis, or the translation.
  Vector columnVector(unsigned int column) const {
    Vector v;
    for (unsigned int row = 0; row < Space::kDimension; ++row) v[row] = entry[row][column];
    return v;
  }
  // No perspective: the last row is that of the identity.
  bool isAffine() const;

 protected:
  Matrix& self() { return static_cast<Matrix&>(*this); }
  const Matrix& self() const { return static_cast<const Matrix&>(*this); }
};
