// Axis-aligned box in space (see Ge/GeExtents.h).
#pragma once

#include "Ge/GeExtents.h"
#include "Ge/GePoint3d.h"

extern template class OdGeExtentsT<OdGeSpace3d>;

class OdGeExtents3d : public OdGeExtentsT<OdGeSpace3d> {
 public:
  constexpr OdGeExtents3d()
      : OdGeExtentsT({kEmptyLimit, kEmptyLimit, kEmptyLimit}, {-kEmptyLimit, -kEmptyLimit, -kEmptyLimit}) {}
  // The box spanned by two opposite corners, in any order.
  OdGeExtents3d(const OdGePoint3d& corner1, const OdGePoint3d& corner2) : OdGeExtents3d() {
    comparingSet(corner1, corner2);
  }

  static const OdGeExtents3d kInvalid;
};

inline constexpr OdGeExtents3d OdGeExtents3d::kInvalid{};
