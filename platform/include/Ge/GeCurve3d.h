// Base of the parametric curves of space: a point for each parameter of an interval.
#pragma once

#include "Ge/GeCurve.h"
#include "Ge/GeEntity3d.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GePoint3dArray.h"

extern template class OdGeCurveT<OdGeSpace3d>;

class OdGeCurve3d : public OdGeCurveT<OdGeSpace3d> {
 public:
  OdGeCurve3d* copy() const override = 0;
  OdGeCurve3d& transformBy(const OdGeMatrix3d& matrix) override = 0;
};
