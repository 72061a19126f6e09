// Base of the geometric entities of space. Entities are plain values: copy them freely; copy()
// gives a heap copy of the concrete type when only a base reference is at hand.
#pragma once

#include "Ge/GeEntity.h"

class OdGePlane;

class OdGeEntity3d : public OdGeEntityT<OdGeSpace3d> {
 public:
  OdGeEntity3d& rotateBy(double angle, const OdGeVector3d& axis, const OdGePoint3d& center = OdGePoint3d::kOrigin);
  OdGeEntity3d& mirror(const OdGePlane& plane);

 protected:
  OdGeEntity3d() = default;
  OdGeEntity3d(const OdGeEntity3d&) = default;
  OdGeEntity3d& operator=(const OdGeEntity3d&) = default;
};
