// Half-line of space from an origin (parameter 0) in one direction.
#pragma once

#include "Ge/GeLinearEnt3d.h"

class OdGeRay3d : public OdGeLinearEnt3d {
 public:
  OdGeRay3d() = default;  // the positive x axis
  OdGeRay3d(const OdGePoint3d& origin, const OdGeVector3d& vector) : OdGeLinearEnt3d(origin, vector) {}
  OdGeRay3d(const OdGePoint3d& origin, const OdGePoint3d& throughPoint)
      : OdGeLinearEnt3d(origin, throughPoint - origin) {}

  OdGe::EntityId type() const override { return OdGe::kRay3d; }
  OdGeRay3d* copy() const override { return new OdGeRay3d(*this); }

  OdGeRay3d& set(const OdGePoint3d& origin, const OdGeVector3d& vector);
  OdGeRay3d& set(const OdGePoint3d& origin, const OdGePoint3d& throughPoint) {
    return set(origin, throughPoint - origin);
  }

  void getInterval(OdGeInterval& interval) const override { interval.set(true, 0.0); }
  // A ray cannot run towards its origin: throws OdError(eNotApplicable).
  OdGeRay3d& reverseParam() override;
};
