// Base of the straight curves of space (see Ge/GeLinearEnt.h).
#pragma once

#include "Ge/GeCurve3d.h"
#include "Ge/GeLinearEnt.h"

extern template class OdGeLinearEntT<OdGeSpace3d>;

class OdGeLinearEnt3d : public OdGeLinearEntT<OdGeSpace3d> {
 public:
  OdGeLinearEnt3d* copy() const override = 0;
  OdGeLinearEnt3d& transformBy(const OdGeMatrix3d& matrix) override;

  using OdGeLinearEntT::intersectWith;
  // The point where this entity crosses the plane; false when parallel or out of bounds.
  bool intersectWith(const OdGePlane& plane, OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const;

 protected:
  OdGeLinearEnt3d() = default;
  using OdGeLinearEntT::OdGeLinearEntT;
};
