// Unbounded straight line of space.
#pragma once

#include "Ge/GeLinearEnt3d.h"

class OdGeLine3d : public OdGeLinearEnt3d {
 public:
  OdGeLine3d() = default;  // the x axis
  OdGeLine3d(const OdGePoint3d& point, const OdGeVector3d& vector) : OdGeLinearEnt3d(point, vector) {}
  OdGeLine3d(const OdGePoint3d& point1, const OdGePoint3d& point2) : OdGeLinearEnt3d(point1, point2 - point1) {}

  OdGe::EntityId type() const override { return OdGe::kLine3d; }
  OdGeLine3d* copy() const override { return new OdGeLine3d(*this); }

  OdGeLine3d& set(const OdGePoint3d& point, const OdGeVector3d& vector);
  OdGeLine3d& set(const OdGePoint3d& point1, const OdGePoint3d& point2) { return set(point1, point2 - point1); }

  void getInterval(OdGeInterval& interval) const override { interval.set(); }
  OdGeLine3d& reverseParam() override;
};
