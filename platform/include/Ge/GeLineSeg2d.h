// Straight segment of the plane; parameter 0 at the start point, 1 at the end point.
#pragma once

#include "Ge/GeLinearEnt2d.h"

class OdGeLineSeg2d : public OdGeLinearEnt2d {
 public:
  OdGeLineSeg2d() = default;  // from the origin to (1, 0)
  OdGeLineSeg2d(const OdGePoint2d& start, const OdGePoint2d& end) : OdGeLinearEnt2d(start, end - start) {}

  OdGe::EntityId type() const override { return OdGe::kLineSeg2d; }
  OdGeLineSeg2d* copy() const override { return new OdGeLineSeg2d(*this); }

  OdGeLineSeg2d& set(const OdGePoint2d& start, const OdGePoint2d& end);

  OdGePoint2d startPoint() const { return m_point; }
  OdGePoint2d endPoint() const { return m_point + m_vector; }
  OdGePoint2d midPoint() const { return m_point + m_vector * 0.5; }

  void getInterval(OdGeInterval& interval) const override { interval.set(0.0, 1.0); }
  OdGeLineSeg2d& reverseParam() override;
};
