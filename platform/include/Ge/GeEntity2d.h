// Base of the geometric entities of the plane. Entities are plain values: copy them freely;
// copy() gives a heap copy of the concrete type when only a base reference is at hand.
#pragma once

#include "Ge/GeEntity.h"

class OdGeEntity2d : public OdGeEntityT<OdGeSpace2d> {
 public:
  OdGeEntity2d& rotateBy(double angle, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  OdGeEntity2d& mirror(const OdGeLinearEnt2d& line);

 protected:
  OdGeEntity2d() = default;
  OdGeEntity2d(const OdGeEntity2d&) = default;
  OdGeEntity2d& operator=(const OdGeEntity2d&) = default;
};
