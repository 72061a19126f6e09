// What the geometric entities of the plane and of space have in common, written once over the
// dimension (Ge/GeSpace.h). Use OdGeEntity2d and OdGeEntity3d.
#pragma once

#include "Ge/GeContext.h"
#include "Ge/GePoint3d.h"
#include "Ge/GeSpace.h"

template <class Space>
class OdGeEntityT {
 public:
  using Point = typename Space::Point;
  using Vector = typename Space::Vector;
  using Matrix = typename Space::Matrix;
  using Entity = typename Space::Entity;

  virtual ~OdGeEntityT() = default;

  // The concrete kind of this entity.
  virtual OdGe::EntityId type() const = 0;
  // True for the concrete kind and for every abstract kind it belongs to (kCurve3d, kEntity3d...).
  virtual bool isKindOf(OdGe::EntityId entityType) const;

  // Within tol.equalPoint() of the entity.
  virtual bool isOn(const Point& point, const OdGeTol& tol = OdGeContext::gTol) const = 0;
  virtual Entity& transformBy(const Matrix& matrix) = 0;
  // Heap copy of the concrete type; the caller owns (deletes) it.
  virtual Entity* copy() const = 0;

  Entity& translateBy(const Vector& v);
  Entity& scaleBy(double factor, const Point& center = Point::kOrigin);

 protected:
  OdGeEntityT() = default;
  OdGeEntityT(const OdGeEntityT&) = default;
  OdGeEntityT& operator=(const OdGeEntityT&) = default;
};

extern template class OdGeEntityT<OdGeSpace2d>;
extern template class OdGeEntityT<OdGeSpace3d>;
