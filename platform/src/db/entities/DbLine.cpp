#include "DbCurves.h"
#include "Ge/GeLineSeg3d.h"

ODDB_DEFINE_MEMBERS(OdDbLine, OdDbCurve, L"LINE")

const OdDbClassSchema& OdDbLine::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {{L"AcDbLine",
        {
            odField<&OdDbLine::m_thickness>(39).optional().named(L"thickness"),
            odField<&OdDbLine::m_start>(10).required().named(L"start"),
            odField<&OdDbLine::m_end>(11).required().named(L"end"),
            odField<&OdDbLine::m_normal>(210).optional().named(L"normal"),
        }}}};
  return schema;
}

OdResult OdDbLine::getEndParam(double& param) const {
  param = m_start.distanceTo(m_end);
  return eOk;
}

OdResult OdDbLine::getPointAtParam(double param, OdGePoint3d& point) const {
  double length = m_start.distanceTo(m_end);
  if (length == 0) {
    point = m_start;
    return param == 0 ? eOk : eInvalidInput;
  }
  point = m_start + (m_end - m_start) * (param / length);
  return eOk;
}

OdResult OdDbLine::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  OdGeLineSeg3d segment(m_start, m_end);
  if (!segment.isOn(point)) return ePointNotOnEntity;
  param = m_start.distanceTo(point);
  return eOk;
}

OdResult OdDbLine::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool extend) const {
  if (m_start.isEqualTo(m_end)) {
    closest = m_start;
    return eOk;
  }
  OdGeVector3d dir = m_end - m_start;
  double t = (point - m_start).dotProduct(dir) / dir.dotProduct(dir);
  if (!extend) t = t < 0 ? 0 : (t > 1 ? 1 : t);
  closest = m_start + dir * t;
  return eOk;
}

OdResult OdDbLine::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  extents.addPoint(m_start);
  extents.addPoint(m_end);
  if (m_thickness != 0) {
    OdGeVector3d up = m_normal.normal() * m_thickness;
    extents.addPoint(m_start + up);
    extents.addPoint(m_end + up);
  }
  return eOk;
}

OdResult OdDbLine::transformBy(const OdGeMatrix3d& xform) {
  assertWriteEnabled();
  m_start.transformBy(xform);
  m_end.transformBy(xform);
  OdGeVector3d normal = m_normal;
  normal.transformBy(xform);
  double length = normal.length();
  if (length > 0) {
    m_thickness *= length;
    m_normal = normal / length;
  }
  return eOk;
}
