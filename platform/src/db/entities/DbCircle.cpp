// Circles and arcs: planar entities whose centre is kept in the object
// coordinate system of their normal.
#include <algorithm>
#include <cmath>

#include "DbCurveSupport.h"
#include "DbCurves.h"
#include "Ge/GeOcs.h"

ODDB_DEFINE_MEMBERS(OdDbCircle, OdDbCurve, L"CIRCLE")
ODDB_DEFINE_MEMBERS(OdDbArc, OdDbCurve, L"ARC")

namespace {

OdGeVector3d unitNormal(const OdGeVector3d& normal) {
  return normal.isZeroLength() ? OdGeVector3d::kZAxis : normal.normal();
}

// The OCS angle of a world point seen from a world centre.
double ocsAngleOf(const OdGePoint3d& point, const OdGePoint3d& center, const OdGeVector3d& normal) {
  return odgeOcsAngle(point - center, normal);
}

// A transformed circle's centre and radius in the new plane; eCannotScaleNonUniformly
// when the plane is not mapped by a similarity.
OdResult mapCircle(const OdGeVector3d& normal, const OdGePoint3d& centerOcs, double radius, double thickness,
                   const OdGeMatrix3d& xform, OdDbPlaneMap& map, OdGePoint3d& newCenter, double& newRadius,
                   double& newThickness) {
  OdResult status = odDbMapPlane(normal, xform, map);
  if (status != eOk) return status;
  if (!map.uniform) return eCannotScaleNonUniformly;
  newCenter = map.ocsToOcs * centerOcs;
  newRadius = radius * map.scale;
  newThickness = thickness * map.thicknessScale;
  return eOk;
}

}  // namespace

// ---------------------------------------------------------------- circle

const OdDbClassSchema& OdDbCircle::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {{L"AcDbCircle",
        {
            odField<&OdDbCircle::m_thickness>(39).optional().named(L"thickness"),
            odField<&OdDbCircle::m_center>(10).required().named(L"center"),
            odField<&OdDbCircle::m_radius>(40).required().named(L"radius"),
            odField<&OdDbCircle::m_normal>(210).optional().named(L"normal"),
        }}}};
  return schema;
}

OdDbCircle::OdDbCircle(const OdGePoint3d& center, double radius, const OdGeVector3d& normal)
    : m_center(odgeWcsToOcs(center, unitNormal(normal))), m_radius(radius), m_normal(unitNormal(normal)) {}

OdGePoint3d OdDbCircle::center() const { return odgeOcsToWcs(m_center, m_normal); }

void OdDbCircle::setCenter(const OdGePoint3d& center) {
  assertWriteEnabled();
  m_center = odgeWcsToOcs(center, m_normal);
}

void OdDbCircle::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  const OdGePoint3d world = center();
  assertWriteEnabled();
  m_normal = normal.normal();
  m_center = odgeWcsToOcs(world, m_normal);
}

double OdDbCircle::circumference() const { return Oda2PI * m_radius; }

OdGeCircArc3d OdDbCircle::geCircle() const {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(m_normal, xAxis, yAxis, zAxis);
  return OdGeCircArc3d(center(), zAxis, xAxis, m_radius, 0.0, Oda2PI);
}

OdResult OdDbCircle::getEndParam(double& param) const {
  param = Oda2PI;
  return eOk;
}

OdResult OdDbCircle::getStartPoint(OdGePoint3d& point) const { return getPointAtParam(0.0, point); }

OdResult OdDbCircle::getPointAtParam(double param, OdGePoint3d& point) const {
  point = odgeOcsToWcs(OdGePoint3d(m_center.x + m_radius * std::cos(param),
                                   m_center.y + m_radius * std::sin(param), m_center.z),
                       m_normal);
  return eOk;
}

OdResult OdDbCircle::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  const OdGePoint3d c = center();
  OdGePoint3d closest;
  getClosestPointTo(point, closest);
  if (closest.distanceTo(point) > odDbOnCurveTolerance(m_radius + c.asVector().length()))
    return ePointNotOnEntity;
  param = ocsAngleOf(point, c, m_normal);
  return eOk;
}

OdResult OdDbCircle::getDistAtParam(double param, double& dist) const {
  if (param < -1e-12 || param > Oda2PI + 1e-12) return eInvalidInput;
  dist = m_radius * param;
  return eOk;
}

OdResult OdDbCircle::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool) const {
  closest = geCircle().closestPointTo(point);
  return eOk;
}

OdResult OdDbCircle::getArea(double& area) const {
  area = OdaPI * m_radius * m_radius;
  return eOk;
}

OdResult OdDbCircle::getGeomExtents(OdGeExtents3d& extents) const {
  extents = geCircle().geomExtents();
  odDbAddThickness(extents, m_normal, m_thickness);
  return eOk;
}

OdResult OdDbCircle::transformBy(const OdGeMatrix3d& xform) {
  OdDbPlaneMap map;
  OdGePoint3d newCenter;
  double newRadius, newThickness;
  OdResult status =
      mapCircle(m_normal, m_center, m_radius, m_thickness, xform, map, newCenter, newRadius, newThickness);
  if (status != eOk) return status;
  assertWriteEnabled();
  m_normal = map.normal;
  m_center = newCenter;
  m_radius = newRadius;
  m_thickness = newThickness;
  return eOk;
}

// ---------------------------------------------------------------- arc

const OdDbClassSchema& OdDbArc::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {{L"AcDbCircle",
        {
            odField<&OdDbArc::m_thickness>(39).optional().named(L"thickness"),
            odField<&OdDbArc::m_center>(10).required().named(L"center"),
            odField<&OdDbArc::m_radius>(40).required().named(L"radius"),
            odField<&OdDbArc::m_normal>(210).optional().named(L"normal"),
        }},
       {L"AcDbArc",
        {
            odField<&OdDbArc::m_startAngle>(50).required().degrees().named(L"startAngle"),
            odField<&OdDbArc::m_endAngle>(51).required().degrees().named(L"endAngle"),
        }}}};
  return schema;
}

OdDbArc::OdDbArc(const OdGePoint3d& center, double radius, double startAngle, double endAngle,
                 const OdGeVector3d& normal)
    : m_center(odgeWcsToOcs(center, unitNormal(normal))),
      m_radius(radius),
      m_normal(unitNormal(normal)),
      m_startAngle(startAngle),
      m_endAngle(endAngle) {}

OdGePoint3d OdDbArc::center() const { return odgeOcsToWcs(m_center, m_normal); }

void OdDbArc::setCenter(const OdGePoint3d& center) {
  assertWriteEnabled();
  m_center = odgeWcsToOcs(center, m_normal);
}

void OdDbArc::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  const OdGePoint3d world = center();
  assertWriteEnabled();
  m_normal = normal.normal();
  m_center = odgeWcsToOcs(world, m_normal);
}

double OdDbArc::totalAngle() const {
  const double sweep = odgeNormalizeAngle(m_endAngle - m_startAngle);
  return sweep > 0.0 ? sweep : Oda2PI;
}

OdGeCircArc3d OdDbArc::geArc() const {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(m_normal, xAxis, yAxis, zAxis);
  return OdGeCircArc3d(center(), zAxis, xAxis, m_radius, m_startAngle, m_startAngle + totalAngle());
}

OdResult OdDbArc::getEndParam(double& param) const {
  param = m_startAngle + totalAngle();
  return eOk;
}

OdResult OdDbArc::getStartPoint(OdGePoint3d& point) const { return getPointAtParam(m_startAngle, point); }

OdResult OdDbArc::getEndPoint(OdGePoint3d& point) const {
  return getPointAtParam(m_startAngle + totalAngle(), point);
}

OdResult OdDbArc::getPointAtParam(double param, OdGePoint3d& point) const {
  point = odgeOcsToWcs(OdGePoint3d(m_center.x + m_radius * std::cos(param),
                                   m_center.y + m_radius * std::sin(param), m_center.z),
                       m_normal);
  return eOk;
}

OdResult OdDbArc::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  const OdGePoint3d c = center();
  OdGePoint3d closest;
  getClosestPointTo(point, closest);
  if (closest.distanceTo(point) > odDbOnCurveTolerance(m_radius + c.asVector().length()))
    return ePointNotOnEntity;
  // The angle in the arc's parameter range (start .. start + total).
  param = m_startAngle + odgeNormalizeAngle(ocsAngleOf(point, c, m_normal) - m_startAngle);
  const double end = m_startAngle + totalAngle();
  if (param > end)
    param = std::fabs(param - Oda2PI - m_startAngle) < std::fabs(param - end) ? m_startAngle : end;
  return eOk;
}

OdResult OdDbArc::getDistAtParam(double param, double& dist) const {
  const double end = m_startAngle + totalAngle();
  if (param < m_startAngle - 1e-12 || param > end + 1e-12) return eInvalidInput;
  dist = m_radius * (param - m_startAngle);
  return eOk;
}

OdResult OdDbArc::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool extend) const {
  if (extend) {
    OdGeVector3d xAxis, yAxis, zAxis;
    odgeOcsAxes(m_normal, xAxis, yAxis, zAxis);
    closest = OdGeCircArc3d(center(), zAxis, xAxis, m_radius, 0.0, Oda2PI).closestPointTo(point);
  } else {
    closest = geArc().closestPointTo(point);
  }
  return eOk;
}

OdResult OdDbArc::getArea(double& area) const {
  const double sweep = totalAngle();
  area = 0.5 * m_radius * m_radius * (sweep - std::sin(sweep));
  return eOk;
}

OdResult OdDbArc::getGeomExtents(OdGeExtents3d& extents) const {
  extents = geArc().geomExtents();
  odDbAddThickness(extents, m_normal, m_thickness);
  return eOk;
}

OdResult OdDbArc::transformBy(const OdGeMatrix3d& xform) {
  OdDbPlaneMap map;
  OdGePoint3d newCenter;
  double newRadius, newThickness;
  OdResult status =
      mapCircle(m_normal, m_center, m_radius, m_thickness, xform, map, newCenter, newRadius, newThickness);
  if (status != eOk) return status;
  double newStart = map.mapAngle(m_startAngle);
  double newEnd = map.mapAngle(m_endAngle);
  // A mirrored arc runs clockwise in the new plane: from its old end to its old start.
  if (map.mirrored) std::swap(newStart, newEnd);
  assertWriteEnabled();
  m_normal = map.normal;
  m_center = newCenter;
  m_radius = newRadius;
  m_thickness = newThickness;
  m_startAngle = newStart;
  m_endAngle = newEnd;
  return eOk;
}
