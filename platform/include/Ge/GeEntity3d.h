// Base of the geometric entities of space. Entities are plain values: copy them freely; copy()
// gives a heap copy of the concrete type when only a base reference is at hand.
#pragma once

#include "Ge/Ge.h"
#include "Ge/GePoint3d.h"

class OdGeMatrix3d;
class OdGePlane;

class OdGeEntity3d {
 public:
  virtual ~OdGeEntity3d() = default;

  // The concrete kind of this entity.
  virtual OdGe::EntityId type() const = 0;
  // True for the concrete kind and for every abstract kind it belongs to (kCurve3d, kEntity3d...).
  virtual bool isKindOf(OdGe::EntityId entityType) const;

  // Within tol.equalPoint() of the entity.
  virtual bool isOn(const OdGePoint3d& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  virtual OdGeEntity3d& transformBy(const OdGeMatrix3d& matrix) = 0;
  // Heap copy of the concrete type; the caller owns (deletes) it.
  virtual OdGeEntity3d* copy() const = 0;

  OdGeEntity3d& translateBy(const OdGeVector3d& v);
  OdGeEntity3d& rotateBy(double angle, const OdGeVector3d& axis,
                         const OdGePoint3d& center = OdGePoint3d::kOrigin);
  OdGeEntity3d& mirror(const OdGePlane& plane);
  OdGeEntity3d& scaleBy(double factor, const OdGePoint3d& center = OdGePoint3d::kOrigin);

 protected:
  OdGeEntity3d() = default;
  OdGeEntity3d(const OdGeEntity3d&) = default;
  OdGeEntity3d& operator=(const OdGeEntity3d&) = default;
};
