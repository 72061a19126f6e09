// What the matrices of both dimensions share.
#include <algorithm>
#include <cmath>
#include <limits>

#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

template <class Space>
bool OdGeMatrixT<Space>::isAffine() const {
  for (unsigned int column = 0; column + 1 < kSize; ++column) {
    if (entry[kSize - 1][column] != 0.0) return false;
  }
  return entry[kSize - 1][kSize - 1] == 1.0;
}

template <class Space>
typename Space::Matrix OdGeMatrixT<Space>::operator*(const OdGeMatrixT& m) const {
  Matrix result;
  for (unsigned int row = 0; row < kSize; ++row) {
    for (unsigned int column = 0; column < kSize; ++column) {
      double sum = 0.0;
      for (unsigned int k = 0; k < kSize; ++k) sum += entry[row][k] * m.entry[k][column];
      result.entry[row][column] = sum;
    }
  }
  return result;
}

template <class Space>
typename Space::Matrix& OdGeMatrixT<Space>::preMultBy(const OdGeMatrixT& left) {
  return self() = left * *this;
}

template <class Space>
typename Space::Matrix& OdGeMatrixT<Space>::postMultBy(const OdGeMatrixT& right) {
  return self() = *this * right;
}

template <class Space>
bool OdGeMatrixT<Space>::isEqualTo(const OdGeMatrixT& m, const OdGeTol& tol) const {
  for (unsigned int row = 0; row < kSize; ++row) {
    for (unsigned int column = 0; column < kSize; ++column) {
      const bool translation = column == Space::kDimension && row < Space::kDimension;
      const double limit = translation ? tol.equalPoint() : tol.equalVector();
      if (std::fabs(entry[row][column] - m.entry[row][column]) > limit) return false;
    }
  }
  return true;
}

template <class Space>
bool OdGeMatrixT<Space>::isSingular(const OdGeTol& tol) const {
  // |det| / (product of the lengths of the axes or rows): 1 for orthogonal directions, 0 when
  // they are dependent, whatever their lengths (Hadamard's inequality bounds it by 1).
  double product = 1.0;
  if (isAffine()) {
    for (unsigned int axis = 0; axis < Space::kDimension; ++axis) product *= columnVector(axis).length();
    return (product > 0.0 ? std::fabs(OdGeInternal::linearDet(self())) / product : 0.0) <= tol.equalVector();
  }
  for (unsigned int row = 0; row < kSize; ++row) {
    double sum = 0.0;
    for (unsigned int column = 0; column < kSize; ++column) sum += entry[row][column] * entry[row][column];
    product *= std::sqrt(sum);
  }
  return (product > 0.0 ? std::fabs(det()) / product : 0.0) <= tol.equalVector();
}

template <class Space>
typename Space::Matrix OdGeMatrixT<Space>::inverse() const {
  Matrix result;
  if (!inverse(result)) throw OdError(eDegenerateGeometry, OdString("singular matrix"));
  return result;
}

template <class Space>
typename Space::Matrix& OdGeMatrixT<Space>::invert() {
  return self() = inverse();
}

template <class Space>
typename Space::Matrix& OdGeMatrixT<Space>::transposeIt() {
  for (unsigned int row = 0; row < kSize; ++row) {
    for (unsigned int column = row + 1; column < kSize; ++column) std::swap(entry[row][column], entry[column][row]);
  }
  return self();
}

template <class Space>
typename Space::Matrix OdGeMatrixT<Space>::transpose() const {
  Matrix result(self());
  return result.transposeIt();
}

template <class Space>
bool OdGeMatrixT<Space>::isScaledOrtho(const OdGeTol& tol) const {
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    if (columnVector(axis).lengthSqrd() == 0.0) return false;
    for (unsigned int other = axis + 1; other < Space::kDimension; ++other) {
      if (!columnVector(axis).isPerpendicularTo(columnVector(other), tol)) return false;
    }
  }
  return true;
}

template <class Space>
bool OdGeMatrixT<Space>::isUniScaledOrtho(const OdGeTol& tol) const {
  if (!isScaledOrtho(tol)) return false;
  double largest = 0.0;
  double smallest = std::numeric_limits<double>::infinity();
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    largest = std::max(largest, columnVector(axis).length());
    smallest = std::min(smallest, columnVector(axis).length());
  }
  return largest - smallest <= tol.equalVector() * largest;
}

template <class Space>
double OdGeMatrixT<Space>::scale() const {
  double largest = 0.0;
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) largest = std::max(largest, columnVector(axis).length());
  return largest;
}

template <class Space>
typename Space::Matrix& OdGeMatrixT<Space>::setTranslation(const Vector& v) {
  for (unsigned int row = 0; row < Space::kDimension; ++row) entry[row][Space::kDimension] = v[row];
  return self();
}

template class OdGeMatrixT<OdGeSpace2d>;
template class OdGeMatrixT<OdGeSpace3d>;

namespace OdGeInternal {

template <class Space>
typename Space::Point transformPoint(const OdGeMatrixT<Space>& matrix, const typename Space::Point& point) {
  constexpr unsigned int n = Space::kDimension;
  const auto& e = matrix.entry;
  typename Space::Point result;
  for (unsigned int row = 0; row <= n; ++row) {
    double sum = e[row][0] * point[0];
    for (unsigned int k = 1; k < n; ++k) sum += e[row][k] * point[k];
    sum += e[row][n];
    if (row < n) {
      result[row] = sum;
    } else if (sum != 1.0 && sum != 0.0) {
      result = result / sum;  // perspective
    }
  }
  return result;
}

template <class Space>
typename Space::Vector transformVector(const OdGeMatrixT<Space>& matrix, const typename Space::Vector& vector) {
  constexpr unsigned int n = Space::kDimension;
  const auto& e = matrix.entry;
  typename Space::Vector result;
  for (unsigned int row = 0; row < n; ++row) {
    double sum = e[row][0] * vector[0];
    for (unsigned int k = 1; k < n; ++k) sum += e[row][k] * vector[k];
    result[row] = sum;
  }
  return result;
}

}  // namespace OdGeInternal

OdGePoint2d operator*(const OdGeMatrix2d& matrix, const OdGePoint2d& point) {
  return OdGeInternal::transformPoint<OdGeSpace2d>(matrix, point);
}

OdGeVector2d operator*(const OdGeMatrix2d& matrix, const OdGeVector2d& vector) {
  return OdGeInternal::transformVector<OdGeSpace2d>(matrix, vector);
}

OdGePoint3d operator*(const OdGeMatrix3d& matrix, const OdGePoint3d& point) {
  return OdGeInternal::transformPoint<OdGeSpace3d>(matrix, point);
}

OdGeVector3d operator*(const OdGeMatrix3d& matrix, const OdGeVector3d& vector) {
  return OdGeInternal::transformVector<OdGeSpace3d>(matrix, vector);
}
