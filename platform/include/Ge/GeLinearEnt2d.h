// Base of the straight curves of the plane (see Ge/GeLinearEnt.h).
#pragma once

#include "Ge/GeCurve2d.h"
#include "Ge/GeLinearEnt.h"

extern template class OdGeLinearEntT<OdGeSpace2d>;

class OdGeLinearEnt2d : public OdGeLinearEntT<OdGeSpace2d> {
 public:
  OdGeLinearEnt2d* copy() const override = 0;
  OdGeLinearEnt2d& transformBy(const OdGeMatrix2d& matrix) override;

 protected:
  OdGeLinearEnt2d() = default;
  using OdGeLinearEntT::OdGeLinearEntT;
};
