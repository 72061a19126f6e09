// Ellipses and elliptical arcs, kept in world coordinates as files store them.
#include <cmath>

#include "DbCurveSupport.h"
#include "DbCurves.h"

ODDB_DEFINE_MEMBERS(OdDbEllipse, OdDbCurve, L"ELLIPSE")

const OdDbClassSchema& OdDbEllipse::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {{L"AcDbEllipse",
        {
            odField<&OdDbEllipse::m_center>(10).required().named(L"center"),
            odField<&OdDbEllipse::m_majorAxis>(11).required().defaults(1, 0, 0).named(L"majorAxis"),
            odField<&OdDbEllipse::m_normal>(210).named(L"normal"),
            odField<&OdDbEllipse::m_radiusRatio>(40).required().defaults(1.0).named(L"radiusRatio"),
            odField<&OdDbEllipse::m_startParam>(41).named(L"startParam"),
            odField<&OdDbEllipse::m_endParam>(42).defaults(Oda2PI).named(L"endParam"),
        }}}};
  return schema;
}

OdDbEllipse::OdDbEllipse(const OdGePoint3d& center, const OdGeVector3d& normal, const OdGeVector3d& majorAxis,
                         double radiusRatio, double startAngle, double endAngle) {
  set(center, normal, majorAxis, radiusRatio, startAngle, endAngle);
}

OdGeVector3d OdDbEllipse::minorAxis() const {
  return m_normal.normal().crossProduct(m_majorAxis) * m_radiusRatio;
}

OdResult OdDbEllipse::setRadiusRatio(double ratio) {
  if (!(ratio > 0.0 && ratio <= 1.0)) return eInvalidInput;
  assertWriteEnabled();
  m_radiusRatio = ratio;
  return eOk;
}

OdGeEllipArc3d OdDbEllipse::geEllipse() const {
  OdGeEllipArc3d ellipse;
  OdGeVector3d normal = m_normal.isZeroLength() ? OdGeVector3d::kZAxis : m_normal;
  ellipse.setFromMajorAxis(m_center, normal, m_majorAxis, m_radiusRatio, m_startParam, m_endParam);
  return ellipse;
}

double OdDbEllipse::startAngle() const { return geEllipse().angleFromParam(m_startParam); }
double OdDbEllipse::endAngle() const { return geEllipse().angleFromParam(m_endParam); }

void OdDbEllipse::setStartAngle(double angle) {
  const double param = geEllipse().paramFromAngle(angle);
  assertWriteEnabled();
  m_startParam = param;
}

void OdDbEllipse::setEndAngle(double angle) {
  const double param = geEllipse().paramFromAngle(angle);
  assertWriteEnabled();
  m_endParam = param;
}

OdResult OdDbEllipse::set(const OdGePoint3d& center, const OdGeVector3d& normal,
                          const OdGeVector3d& majorAxis, double radiusRatio, double startAngle,
                          double endAngle) {
  if (normal.isZeroLength() || majorAxis.isZeroLength() || !(radiusRatio > 0.0 && radiusRatio <= 1.0)) {
    return eInvalidInput;
  }
  if (!normal.isPerpendicularTo(majorAxis, OdGeTol(1e-10, 1e-9))) return eInvalidInput;
  assertWriteEnabled();
  m_center = center;
  m_normal = normal.normal();
  m_majorAxis = majorAxis;
  m_radiusRatio = radiusRatio;
  OdGeEllipArc3d ellipse = geEllipse();
  m_startParam = ellipse.paramFromAngle(startAngle);
  m_endParam = ellipse.paramFromAngle(endAngle);
  // A whole turn stays a whole turn (the conversion keeps equal angles equal).
  if (std::fabs(endAngle - startAngle - Oda2PI) < 1e-12) m_endParam = m_startParam + Oda2PI;
  return eOk;
}

bool OdDbEllipse::isClosed() const {
  const double sweep = m_endParam - m_startParam;
  return std::fabs(sweep - Oda2PI) < 1e-10 || std::fabs(sweep) < 1e-10;
}

OdResult OdDbEllipse::getEndParam(double& param) const {
  // The parameter interval always runs forward from the start.
  param = m_endParam > m_startParam
              ? m_endParam
              : m_endParam + Oda2PI * std::ceil((m_startParam - m_endParam) / Oda2PI + 1e-15);
  if (param == m_startParam) param += Oda2PI;
  return eOk;
}

OdResult OdDbEllipse::getStartPoint(OdGePoint3d& point) const { return getPointAtParam(m_startParam, point); }

OdResult OdDbEllipse::getEndPoint(OdGePoint3d& point) const { return getPointAtParam(m_endParam, point); }

OdResult OdDbEllipse::getPointAtParam(double param, OdGePoint3d& point) const {
  point = m_center + m_majorAxis * std::cos(param) + minorAxis() * std::sin(param);
  return eOk;
}

namespace {
// The ellipse over its forward parameter interval.
OdGeEllipArc3d forwardEllipse(const OdDbEllipse& entity) {
  double start, end;
  entity.getStartParam(start);
  entity.getEndParam(end);
  OdGeEllipArc3d ellipse = entity.geEllipse();
  ellipse.setAngles(start, end);
  return ellipse;
}
}  // namespace

OdResult OdDbEllipse::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  const OdGeEllipArc3d ellipse = forwardEllipse(*this);
  const OdGePoint3d closest = ellipse.closestPointTo(point);
  if (closest.distanceTo(point) > odDbOnCurveTolerance(majorRadius() + m_center.asVector().length())) {
    return ePointNotOnEntity;
  }
  param = ellipse.paramOf(closest);
  return eOk;
}

OdResult OdDbEllipse::getDistAtParam(double param, double& dist) const {
  double end;
  getEndParam(end);
  if (param < m_startParam - 1e-12 || param > end + 1e-12) return eInvalidInput;
  dist = geEllipse().length(m_startParam, param);
  return eOk;
}

OdResult OdDbEllipse::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool extend) const {
  OdGeEllipArc3d ellipse = forwardEllipse(*this);
  if (extend) ellipse.setAngles(0.0, Oda2PI);
  closest = ellipse.closestPointTo(point);
  return eOk;
}

OdResult OdDbEllipse::getArea(double& area) const {
  double end;
  getEndParam(end);
  const double sweep = end - m_startParam;
  const double ab = majorRadius() * minorRadius();
  // An affine image of a circular segment: (a b / 2)(Δt - sin Δt); a whole turn gives π a b.
  area = 0.5 * ab * (sweep - std::sin(sweep));
  return eOk;
}

OdResult OdDbEllipse::getGeomExtents(OdGeExtents3d& extents) const {
  extents = forwardEllipse(*this).geomExtents();
  return eOk;
}

void OdDbEllipse::setFromGe(const OdGeEllipArc3d& ellipse, const OdGeVector3d& preferredNormal) {
  OdGeVector3d normal = ellipse.normal();
  double start = ellipse.startAng(), end = ellipse.endAng();
  if (normal.dotProduct(preferredNormal) < 0.0) {
    // Seen from the other side the ellipse runs the other way: t becomes -t.
    normal = -normal;
    const double oldStart = start;
    start = -end;
    end = -oldStart;
  }
  m_center = ellipse.center();
  m_majorAxis = ellipse.majorAxis() * ellipse.majorRadius();
  m_normal = normal.normal();
  m_radiusRatio = ellipse.radiusRatio();
  const double sweep = end - start;
  m_startParam = odgeNormalizeAngle(start);
  m_endParam = std::fabs(sweep - Oda2PI) < 1e-12 ? m_startParam + Oda2PI : odgeNormalizeAngle(end);
}

OdResult OdDbEllipse::transformBy(const OdGeMatrix3d& xform) {
  OdGeEllipArc3d ellipse = forwardEllipse(*this);
  try {
    ellipse.transformBy(xform);
  } catch (const OdError& error) {
    return error.code();
  }
  const OdGeVector3d preferred = odDbTransformNormal(m_normal, xform);
  assertWriteEnabled();
  setFromGe(ellipse, preferred.isZeroLength() ? ellipse.normal() : preferred);
  return eOk;
}
