// 3x3 transformation matrix of the plane (see Ge/GeMatrix.h): the translation sits in
// entry[0..1][2].
#pragma once

#include "Ge/GeMatrix.h"
#include "Ge/GePoint2d.h"

template <>
double OdGeMatrixT<OdGeSpace2d>::det() const;
template <>
bool OdGeMatrixT<OdGeSpace2d>::inverse(OdGeMatrix2d& result, const OdGeTol& tol) const;
extern template class OdGeMatrixT<OdGeSpace2d>;

class OdGeMatrix2d : public OdGeMatrixT<OdGeSpace2d> {
 public:
  constexpr OdGeMatrix2d() = default;

  static const OdGeMatrix2d kIdentity;

  OdGeMatrix2d& setCoordSystem(const OdGePoint2d& origin, const OdGeVector2d& xAxis, const OdGeVector2d& yAxis);
  void getCoordSystem(OdGePoint2d& origin, OdGeVector2d& xAxis, OdGeVector2d& yAxis) const;

  OdGeMatrix2d& setToRotation(double angle, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  OdGeMatrix2d& setToScaling(double factor, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  OdGeMatrix2d& setToMirroring(const OdGePoint2d& point);
  OdGeMatrix2d& setToMirroring(const OdGeLinearEnt2d& line);
  OdGeMatrix2d& setToAlignCoordSys(const OdGePoint2d& fromOrigin, const OdGeVector2d& fromXAxis,
                                   const OdGeVector2d& fromYAxis, const OdGePoint2d& toOrigin,
                                   const OdGeVector2d& toXAxis, const OdGeVector2d& toYAxis);

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
