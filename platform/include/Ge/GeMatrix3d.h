// 4x4 transformation matrix of space (see Ge/GeMatrix.h): the translation sits in
// entry[0..2][3].
#pragma once

#include "Ge/GeMatrix.h"
#include "Ge/GePoint3d.h"
#include "Ge/GeScale3d.h"

class OdGePlane;
class OdGeLine3d;

template <>
double OdGeMatrixT<OdGeSpace3d>::det() const;
template <>
bool OdGeMatrixT<OdGeSpace3d>::inverse(OdGeMatrix3d& result, const OdGeTol& tol) const;
extern template class OdGeMatrixT<OdGeSpace3d>;

class OdGeMatrix3d : public OdGeMatrixT<OdGeSpace3d> {
 public:
  constexpr OdGeMatrix3d() = default;

  static const OdGeMatrix3d kIdentity;

  bool isPerspective(const OdGeTol& tol = OdGeContext::gTol) const;

  // The matrix whose columns are the axes and the origin: it maps coordinates in that
  // system to world coordinates.
  OdGeMatrix3d& setCoordSystem(const OdGePoint3d& origin, const OdGeVector3d& xAxis,
                               const OdGeVector3d& yAxis, const OdGeVector3d& zAxis);
  void getCoordSystem(OdGePoint3d& origin, OdGeVector3d& xAxis, OdGeVector3d& yAxis,
                      OdGeVector3d& zAxis) const;
  OdGeVector3d getCsZAxis() const { return columnVector(2); }

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
