// Half-line of the plane from an origin (parameter 0) in one direction.
#pragma once

#include "Ge/GeLinearEnt2d.h"

class OdGeRay2d : public OdGeLinearEnt2d {
 public:
  OdGeRay2d() = default;  // the positive x axis
  OdGeRay2d(const OdGePoint2d& origin, const OdGeVector2d& vector) : OdGeLinearEnt2d(origin, vector) {}
  OdGeRay2d(const OdGePoint2d& origin, const OdGePoint2d& throughPoint)
      : OdGeLinearEnt2d(origin, throughPoint - origin) {}

  OdGe::EntityId type() const override { return OdGe::kRay2d; }
  OdGeRay2d* copy() const override { return new OdGeRay2d(*this); }

  OdGeRay2d& set(const OdGePoint2d& origin, const OdGeVector2d& vector);
  OdGeRay2d& set(const OdGePoint2d& origin, const OdGePoint2d& throughPoint) {
    return set(origin, throughPoint - origin);
  }

  void getInterval(OdGeInterval& interval) const override { interval.set(true, 0.0); }
  // A ray cannot run towards its origin: throws OdError(eNotApplicable).
  OdGeRay2d& reverseParam() override;
};
