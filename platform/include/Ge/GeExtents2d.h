// Axis-aligned box in the plane (see Ge/GeExtents.h).
#pragma once

#include "Ge/GeExtents.h"
#include "Ge/GePoint2d.h"

extern template class OdGeExtentsT<OdGeSpace2d>;

class OdGeExtents2d : public OdGeExtentsT<OdGeSpace2d> {
 public:
  constexpr OdGeExtents2d() : OdGeExtentsT({kEmptyLimit, kEmptyLimit}, {-kEmptyLimit, -kEmptyLimit}) {}
  // The box spanned by two opposite corners, in any order.
  OdGeExtents2d(const OdGePoint2d& corner1, const OdGePoint2d& corner2) : OdGeExtents2d() {
    comparingSet(corner1, corner2);
  }

  static const OdGeExtents2d kInvalid;
};

inline constexpr OdGeExtents2d OdGeExtents2d::kInvalid{};
