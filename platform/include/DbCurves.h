// Curves: lines, circles, arcs, ellipses, rays, construction lines and splines.
#pragma once

#include "DbEntity.h"

class OdDbLine : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbLine);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbLine() = default;
  OdDbLine(const OdGePoint3d& start, const OdGePoint3d& end) : m_start(start), m_end(end) {}

  OdGePoint3d startPoint() const { return m_start; }
  void setStartPoint(const OdGePoint3d& point) { assertWriteEnabled(); m_start = point; }
  OdGePoint3d endPoint() const { return m_end; }
  void setEndPoint(const OdGePoint3d& point) { assertWriteEnabled(); m_end = point; }
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) { assertWriteEnabled(); m_thickness = thickness; }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal) { assertWriteEnabled(); m_normal = normal; }

  OdResult getStartParam(double& param) const override { param = 0; return eOk; }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override { point = m_start; return eOk; }
  OdResult getEndPoint(OdGePoint3d& point) const override { point = m_end; return eOk; }
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override { dist = param; return eOk; }
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool extend = false) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  OdGePoint3d m_start;
  OdGePoint3d m_end;
  double m_thickness = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
};
using OdDbLinePtr = OdSmartPtr<OdDbLine>;
