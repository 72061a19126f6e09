// Unbounded straight line of the plane.
#pragma once

#include "Ge/GeLinearEnt2d.h"

class OdGeLine2d : public OdGeLinearEnt2d {
 public:
  OdGeLine2d() = default;  // the x axis
  OdGeLine2d(const OdGePoint2d& point, const OdGeVector2d& vector) : OdGeLinearEnt2d(point, vector) {}
  OdGeLine2d(const OdGePoint2d& point1, const OdGePoint2d& point2) : OdGeLinearEnt2d(point1, point2 - point1) {}

  OdGe::EntityId type() const override { return OdGe::kLine2d; }
  OdGeLine2d* copy() const override { return new OdGeLine2d(*this); }

  OdGeLine2d& set(const OdGePoint2d& point, const OdGeVector2d& vector);
  OdGeLine2d& set(const OdGePoint2d& point1, const OdGePoint2d& point2) { return set(point1, point2 - point1); }

  void getInterval(OdGeInterval& interval) const override { interval.set(); }
  OdGeLine2d& reverseParam() override;
};
