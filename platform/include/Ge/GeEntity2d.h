// Base of the geometric entities of the plane. Entities are plain values: copy them freely;
// copy() gives a heap copy of the concrete type when only a base reference is at hand.
#pragma once

#include "Ge/Ge.h"
#include "Ge/GePoint2d.h"

class OdGeMatrix2d;
class OdGeLinearEnt2d;

class OdGeEntity2d {
 public:
  virtual ~OdGeEntity2d() = default;

  // The concrete kind of this entity.
  virtual OdGe::EntityId type() const = 0;
  // True for the concrete kind and for every abstract kind it belongs to (kCurve2d, kEntity2d...).
  virtual bool isKindOf(OdGe::EntityId entityType) const;

  // Within tol.equalPoint() of the entity.
  virtual bool isOn(const OdGePoint2d& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  virtual OdGeEntity2d& transformBy(const OdGeMatrix2d& matrix) = 0;
  // Heap copy of the concrete type; the caller owns (deletes) it.
  virtual OdGeEntity2d* copy() const = 0;

  OdGeEntity2d& translateBy(const OdGeVector2d& v);
  OdGeEntity2d& rotateBy(double angle, const OdGePoint2d& center = OdGePoint2d::kOrigin);
  OdGeEntity2d& mirror(const OdGeLinearEnt2d& line);
  OdGeEntity2d& scaleBy(double factor, const OdGePoint2d& center = OdGePoint2d::kOrigin);

 protected:
  OdGeEntity2d() = default;
  OdGeEntity2d(const OdGeEntity2d&) = default;
  OdGeEntity2d& operator=(const OdGeEntity2d&) = default;
};
