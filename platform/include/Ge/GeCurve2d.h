// Base of the parametric curves of the plane: a point for each parameter of an interval.
#pragma once

#include "Ge/GeCurve.h"
#include "Ge/GeEntity2d.h"
#include "Ge/GeExtents2d.h"
#include "Ge/GePoint2dArray.h"

extern template class OdGeCurveT<OdGeSpace2d>;

class OdGeCurve2d : public OdGeCurveT<OdGeSpace2d> {
 public:
  OdGeCurve2d* copy() const override = 0;
  OdGeCurve2d& transformBy(const OdGeMatrix2d& matrix) override = 0;
};
