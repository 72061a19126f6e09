// 4x4 transformation matrix of space. Points are columns: p' = M * p, so the translation sits
// in entry[0..2][3] and M1 * M2 applies M2 first.
#pragma once

#include "Ge/GePoint3d.h"
#include "Ge/GeScale3d.h"

class OdGePlane;
class OdGeLine3d;

class OdGeMatrix3d {
 public:
  double entry[4][4];

  constexpr OdGeMatrix3d()
      : entry{{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}} {}

  static const OdGeMatrix3d kIdentity;

  const double* operator[](unsigned int row) const { return entry[row]; }
  double* operator[](unsigned int row) { return entry[row]; }
  double operator()(unsigned int row, unsigned int column) const { return entry[row][column]; }
  double& operator()(unsigned int row, unsigned int column) { return entry[row][column]; }

  OdGeMatrix3d& setToIdentity() { return *this = OdGeMatrix3d(); }
  bool isIdentity(const OdGeTol& tol = OdGeContext::gTol) const { return isEqualTo(kIdentity, tol); }

  OdGeMatrix3d operator*(const OdGeMatrix3d& m) const;
  OdGeMatrix3d& operator*=(const OdGeMatrix3d& m) { return postMultBy(m); }
  OdGeMatrix3d& preMultBy(const OdGeMatrix3d& left);    // this = left * this
  OdGeMatrix3d& postMultBy(const OdGeMatrix3d& right);  // this = this * right
  OdGeMatrix3d& setToProduct(const OdGeMatrix3d& a, const OdGeMatrix3d& b) { return *this = a * b; }

  // Entries of the linear part compared within tol.equalVector(), translation within tol.equalPoint().
  bool isEqualTo(const OdGeMatrix3d& m, const OdGeTol& tol = OdGeContext::gTol) const;
  bool operator==(const OdGeMatrix3d& m) const { return isEqualTo(m); }
  bool operator!=(const OdGeMatrix3d& m) const { return !isEqualTo(m); }

  double det() const;
  // A matrix is singular when its axes (or, with perspective, its rows) are linearly dependent
  // within tol.equalVector(), measured independently of their lengths.
  bool isSingular(const OdGeTol& tol = OdGeContext::gTol) const;
  // Throws OdError(eDegenerateGeometry) for a singular matrix.
  OdGeMatrix3d inverse() const;
  bool inverse(OdGeMatrix3d& result, const OdGeTol& tol = OdGeContext::gTol) const;
  OdGeMatrix3d& invert();
  OdGeMatrix3d& transposeIt();
  OdGeMatrix3d transpose() const;

  // Axes mutually perpendicular (within tol.equalVector()) and of equal non-zero length;
  // mirroring is allowed.
  bool isUniScaledOrtho(const OdGeTol& tol = OdGeContext::gTol) const;
  // Axes mutually perpendicular and non-zero, lengths may differ.
  bool isScaledOrtho(const OdGeTol& tol = OdGeContext::gTol) const;
  bool isPerspective(const OdGeTol& tol = OdGeContext::gTol) const;
  // The largest of the lengths of the images of the three unit axes.
  double scale() const;

  OdGeVector3d getTranslation() const { return {entry[0][3], entry[1][3], entry[2][3]}; }
  OdGeMatrix3d& setTranslation(const OdGeVector3d& v);

  // The matrix whose columns are the axes and the origin: it maps coordinates in that
  // system to world coordinates.
  OdGeMatrix3d& setCoordSystem(const OdGePoint3d& origin, const OdGeVector3d& xAxis,
                               const OdGeVector3d& yAxis, const OdGeVector3d& zAxis);
  void getCoordSystem(OdGePoint3d& origin, OdGeVector3d& xAxis, OdGeVector3d& yAxis,
                      OdGeVector3d& zAxis) const;
  OdGePoint3d getCsOrigin() const { return {entry[0][3], entry[1][3], entry[2][3]}; }
  OdGeVector3d getCsXAxis() const { return {entry[0][0], entry[1][0], entry[2][0]}; }
  OdGeVector3d getCsYAxis() const { return {entry[0][1], entry[1][1], entry[2][1]}; }
  OdGeVector3d getCsZAxis() const { return {entry[0][2], entry[1][2], entry[2][2]}; }

  OdGeMatrix3d& setToTranslation(const OdGeVector3d& v);
  // Counter-clockwise about `axis` (right-hand rule) through `center`.
  OdGeMatrix3d& setToRotation(double angle, const OdGeVector3d& axis,
                              const OdGePoint3d& center = OdGePoint3d::kOrigin);
  OdGeMatrix3d& setToScaling(double factor, const OdGePoint3d& center = OdGePoint3d::kOrigin);
  OdGeMatrix3d& setToScaling(const OdGeScale3d& factors, const OdGePoint3d& center = OdGePoint3d::kOrigin);
  OdGeMatrix3d& setToMirroring(const OdGePlane& plane);
  OdGeMatrix3d& setToMirroring(const OdGePoint3d& point);  // point reflection
  OdGeMatrix3d& setToMirroring(const OdGeLine3d& line);    // half turn about the line
  // Maps the "from" coordinate system onto the "to" one: a point with coordinates (a, b, c) in
  // the first system goes to the point with the same coordinates in the second.
  OdGeMatrix3d& setToAlignCoordSys(const OdGePoint3d& fromOrigin, const OdGeVector3d& fromXAxis,
                                   const OdGeVector3d& fromYAxis, const OdGeVector3d& fromZAxis,
                                   const OdGePoint3d& toOrigin, const OdGeVector3d& toXAxis,
                                   const OdGeVector3d& toYAxis, const OdGeVector3d& toZAxis);
  // Object coordinate system of an entity with the given extrusion direction to world
  // (arbitrary axis rule) and back. The plane forms also move the origin to the plane's origin.
  OdGeMatrix3d& setToPlaneToWorld(const OdGeVector3d& normal);
  OdGeMatrix3d& setToPlaneToWorld(const OdGePlane& plane);
  OdGeMatrix3d& setToWorldToPlane(const OdGeVector3d& normal);
  OdGeMatrix3d& setToWorldToPlane(const OdGePlane& plane);

  static OdGeMatrix3d translation(const OdGeVector3d& v);
  static OdGeMatrix3d rotation(double angle, const OdGeVector3d& axis,
                               const OdGePoint3d& center = OdGePoint3d::kOrigin);
  static OdGeMatrix3d scaling(double factor, const OdGePoint3d& center = OdGePoint3d::kOrigin);
  static OdGeMatrix3d scaling(const OdGeScale3d& factors, const OdGePoint3d& center = OdGePoint3d::kOrigin);
  static OdGeMatrix3d mirroring(const OdGePlane& plane);
  static OdGeMatrix3d mirroring(const OdGePoint3d& point);
  static OdGeMatrix3d mirroring(const OdGeLine3d& line);
  static OdGeMatrix3d alignCoordSys(const OdGePoint3d& fromOrigin, const OdGeVector3d& fromXAxis,
                                    const OdGeVector3d& fromYAxis, const OdGeVector3d& fromZAxis,
                                    const OdGePoint3d& toOrigin, const OdGeVector3d& toXAxis,
                                    const OdGeVector3d& toYAxis, const OdGeVector3d& toZAxis);
  static OdGeMatrix3d planeToWorld(const OdGeVector3d& normal);
  static OdGeMatrix3d planeToWorld(const OdGePlane& plane);
  static OdGeMatrix3d worldToPlane(const OdGeVector3d& normal);
  static OdGeMatrix3d worldToPlane(const OdGePlane& plane);
};

inline constexpr OdGeMatrix3d OdGeMatrix3d::kIdentity{};

OdGePoint3d operator*(const OdGeMatrix3d& matrix, const OdGePoint3d& point);
OdGeVector3d operator*(const OdGeMatrix3d& matrix, const OdGeVector3d& vector);
