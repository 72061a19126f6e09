// Points between the current user coordinate system, in which the host's
// prompts answer, and world coordinates, in which the drawing stores them.
#pragma once

#include "Ge/GePoint3d.h"
#include "ryed.h"

namespace kestrix {

namespace detail {
// ryedTrans of a point from one system to the other (RTWCS, RTUCS); the
// point unchanged when the host cannot map it.
inline void transPoint(const ads_point point, int fromSystem, int toSystem, ads_point result) {
  resbuf from{}, to{};
  from.restype = to.restype = RTSHORT;
  from.resval.rint = static_cast<short>(fromSystem);
  to.resval.rint = static_cast<short>(toSystem);
  if (ryedTrans(point, &from, &to, 0, result) != RTNORM) {
    result[0] = point[0], result[1] = point[1], result[2] = point[2];
  }
}
}  // namespace detail

inline OdGePoint3d ucsToWorld(const ads_point ucs) {
  ads_point world;
  detail::transPoint(ucs, RTUCS, RTWCS, world);
  return OdGePoint3d(world[0], world[1], world[2]);
}

inline void worldToUcs(const OdGePoint3d& point, ads_point ucs) {
  const ads_point world = {point.x, point.y, point.z};
  detail::transPoint(world, RTWCS, RTUCS, ucs);
}

}  // namespace kestrix
