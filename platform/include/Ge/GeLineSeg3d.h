// Straight segment of space; parameter 0 at the start point, 1 at the end point.
#pragma once

#include "Ge/GeLinearEnt3d.h"

class OdGeLineSeg3d : public OdGeLinearEnt3d {
 public:
  OdGeLineSeg3d() = default;  // from the origin to (1, 0, 0)
  OdGeLineSeg3d(const OdGePoint3d& start, const OdGePoint3d& end) : OdGeLinearEnt3d(start, end - start) {}

  OdGe::EntityId type() const override { return OdGe::kLineSeg3d; }
  OdGeLineSeg3d* copy() const override { return new OdGeLineSeg3d(*this); }

  OdGeLineSeg3d& set(const OdGePoint3d& start, const OdGePoint3d& end);

  OdGePoint3d startPoint() const { return m_point; }
  OdGePoint3d endPoint() const { return m_point + m_vector; }
  OdGePoint3d midPoint() const { return m_point + m_vector * 0.5; }

  void getInterval(OdGeInterval& interval) const override { interval.set(0.0, 1.0); }
  OdGeLineSeg3d& reverseParam() override;
};
