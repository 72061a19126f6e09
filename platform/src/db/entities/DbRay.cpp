// Construction lines: rays (bounded at their base point) and xlines (unbounded).
#include <cmath>

#include "DbCurveSupport.h"
#include "DbCurves.h"

ODDB_DEFINE_MEMBERS(OdDbRay, OdDbCurve, L"RAY")
ODDB_DEFINE_MEMBERS(OdDbXline, OdDbCurve, L"XLINE")

namespace {

// Parameter of the foot of the perpendicular from a point on the line; lowest
// is the smallest parameter the entity has (0 for rays, -infinity for xlines).
double footParam(const OdGePoint3d& base, const OdGeVector3d& direction, const OdGePoint3d& point) {
  return (point - base).dotProduct(direction);
}

OdResult paramOnLine(const OdGePoint3d& base, const OdGeVector3d& direction, const OdGePoint3d& point,
                     bool ray, double& param) {
  double t = footParam(base, direction, point);
  if (ray && t < 0.0) t = 0.0;
  const OdGePoint3d foot = base + direction * t;
  if (foot.distanceTo(point) > odDbOnCurveTolerance(base.asVector().length() + std::fabs(t)))
    return ePointNotOnEntity;
  param = t;
  return eOk;
}

OdResult transformLine(const OdGeMatrix3d& xform, OdGePoint3d& base, OdGeVector3d& direction) {
  OdGeVector3d mapped = xform * direction;
  if (mapped.isZeroLength()) return eDegenerateGeometry;
  base = xform * base;
  direction = mapped.normal();
  return eOk;
}

}  // namespace

// ---------------------------------------------------------------- ray

const OdDbClassSchema& OdDbRay::classSchema() {
  static const OdDbClassSchema schema{&OdDbCurve::classSchema(),
                                      {{L"AcDbRay",
                                        {
                                            odField<&OdDbRay::m_basePoint>(10).required().named(L"basePoint"),
                                            odField<&OdDbRay::m_unitDir>(11).required().defaults(1, 0, 0).named(L"unitDir"),
                                        }}}};
  return schema;
}

void OdDbRay::setUnitDir(const OdGeVector3d& direction) {
  if (direction.isZeroLength()) return;
  assertWriteEnabled();
  m_unitDir = direction.normal();
}

OdResult OdDbRay::getPointAtParam(double param, OdGePoint3d& point) const {
  if (param < 0.0) return eInvalidInput;
  point = m_basePoint + m_unitDir * param;
  return eOk;
}

OdResult OdDbRay::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  return paramOnLine(m_basePoint, m_unitDir, point, true, param);
}

OdResult OdDbRay::getDistAtParam(double param, double& dist) const {
  if (param < 0.0) return eInvalidInput;
  dist = param;
  return eOk;
}

OdResult OdDbRay::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool extend) const {
  double t = footParam(m_basePoint, m_unitDir, point);
  if (!extend && t < 0.0) t = 0.0;
  closest = m_basePoint + m_unitDir * t;
  return eOk;
}

OdResult OdDbRay::transformBy(const OdGeMatrix3d& xform) {
  OdGePoint3d base = m_basePoint;
  OdGeVector3d direction = m_unitDir;
  OdResult status = transformLine(xform, base, direction);
  if (status != eOk) return status;
  assertWriteEnabled();
  m_basePoint = base;
  m_unitDir = direction;
  return eOk;
}

// ---------------------------------------------------------------- xline

const OdDbClassSchema& OdDbXline::classSchema() {
  static const OdDbClassSchema schema{&OdDbCurve::classSchema(),
                                      {{L"AcDbXline",
                                        {
                                            odField<&OdDbXline::m_basePoint>(10).required().named(L"basePoint"),
                                            odField<&OdDbXline::m_unitDir>(11).required().defaults(1, 0, 0).named(L"unitDir"),
                                        }}}};
  return schema;
}

void OdDbXline::setUnitDir(const OdGeVector3d& direction) {
  if (direction.isZeroLength()) return;
  assertWriteEnabled();
  m_unitDir = direction.normal();
}

OdResult OdDbXline::getPointAtParam(double param, OdGePoint3d& point) const {
  point = m_basePoint + m_unitDir * param;
  return eOk;
}

OdResult OdDbXline::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  return paramOnLine(m_basePoint, m_unitDir, point, false, param);
}

OdResult OdDbXline::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool) const {
  closest = m_basePoint + m_unitDir * footParam(m_basePoint, m_unitDir, point);
  return eOk;
}

OdResult OdDbXline::transformBy(const OdGeMatrix3d& xform) {
  OdGePoint3d base = m_basePoint;
  OdGeVector3d direction = m_unitDir;
  OdResult status = transformLine(xform, base, direction);
  if (status != eOk) return status;
  assertWriteEnabled();
  m_basePoint = base;
  m_unitDir = direction;
  return eOk;
}
