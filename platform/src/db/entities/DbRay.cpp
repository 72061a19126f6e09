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

// Moves a ray's or xline's base point and direction; eDegenerateGeometry,
// with the line left as it was, when the transformation flattens the direction.
OdResult transformLine(OdDbCurve& line, const OdGeMatrix3d& xform, OdGePoint3d& base, OdGeVector3d& direction) {
  const OdGeVector3d mapped = xform * direction;
  if (mapped.isZeroLength()) return eDegenerateGeometry;
  line.assertWriteEnabled();
  base = xform * base;
  direction = mapped.normal();
  return eOk;
}

// The subclass of a ray or an xline: its base point and unit direction.
template <auto basePoint, auto unitDir>
OdDbClassSchema lineSchema(const wchar_t* marker) {
  return {&OdDbCurve::classSchema(),
          {{marker,
            {
                odField<basePoint>(10).required().named(L"basePoint"),
                odField<unitDir>(11).required().defaults(1, 0, 0).named(L"unitDir"),
            }}},
          {}};
}

// A direction of no length is ignored; another is kept as a unit vector.
void setDirection(OdDbCurve& line, OdGeVector3d& unitDir, const OdGeVector3d& direction) {
  if (direction.isZeroLength()) return;
  line.assertWriteEnabled();
  unitDir = direction.normal();
}

}  // namespace

// ---------------------------------------------------------------- ray

const OdDbClassSchema& OdDbRay::classSchema() {
  static const OdDbClassSchema schema = lineSchema<&OdDbRay::m_basePoint, &OdDbRay::m_unitDir>(L"AcDbRay");
  return schema;
}

void OdDbRay::setUnitDir(const OdGeVector3d& direction) { setDirection(*this, m_unitDir, direction); }

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
  return transformLine(*this, xform, m_basePoint, m_unitDir);
}

// ---------------------------------------------------------------- xline

const OdDbClassSchema& OdDbXline::classSchema() {
  static const OdDbClassSchema schema = lineSchema<&OdDbXline::m_basePoint, &OdDbXline::m_unitDir>(L"AcDbXline");
  return schema;
}

void OdDbXline::setUnitDir(const OdGeVector3d& direction) { setDirection(*this, m_unitDir, direction); }

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
  return transformLine(*this, xform, m_basePoint, m_unitDir);
}
