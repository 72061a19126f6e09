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

// The subclass a circle and an arc share: thickness, OCS centre, radius and normal.
template <auto thickness, auto center, auto radius, auto normal>
OdDbSubclass circleSubclass() {
  return {L"AcDbCircle",
          {
              odField<thickness>(39).optional().named(L"thickness"),
              odField<center>(10).required().named(L"center"),
              odField<radius>(40).required().named(L"radius"),
              odField<normal>(210).optional().named(L"normal"),
          }};
}

// The world point at an OCS angle on a circle of an OCS centre.
OdGePoint3d pointAtAngle(const OdGePoint3d& centerOcs, double radius, const OdGeVector3d& normal, double angle) {
  return odgeOcsToWcs(
      OdGePoint3d(centerOcs.x + radius * std::cos(angle), centerOcs.y + radius * std::sin(angle), centerOcs.z),
      normal);
}

// A circle or an arc as a geometric arc; its angles count from the OCS x axis.
OdGeCircArc3d circArcOf(const OdGePoint3d& center, const OdGeVector3d& normal, double radius, double start,
                        double end) {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(normal, xAxis, yAxis, zAxis);
  return OdGeCircArc3d(center, zAxis, xAxis, radius, start, end);
}

// Puts a circle or an arc in the plane of a new normal, its centre staying
// where it is in the world; a normal of no length is ignored.
void setPlane(OdDbCurve& curve, OdGeVector3d& normal, OdGePoint3d& centerOcs, const OdGeVector3d& newNormal) {
  if (newNormal.isZeroLength()) return;
  const OdGePoint3d world = odgeOcsToWcs(centerOcs, normal);
  curve.assertWriteEnabled();
  normal = newNormal.normal();
  centerOcs = odgeWcsToOcs(world, normal);
}

// The OCS angle of a point seen from the (world) centre of a circle or an
// arc; false when the point is not on the curve.
bool angleOnCurve(const OdDbCurve& curve, const OdGePoint3d& point, const OdGePoint3d& center, double radius,
                  const OdGeVector3d& normal, double& angle) {
  OdGePoint3d closest;
  curve.getClosestPointTo(point, closest);
  if (closest.distanceTo(point) > odDbOnCurveTolerance(radius + center.asVector().length())) return false;
  angle = odgeOcsAngle(point - center, normal);
  return true;
}

// Moves a circle's or an arc's plane, OCS centre, radius and thickness, and
// gives the map of its plane; eCannotScaleNonUniformly, with the curve left
// as it was, when the transformation is not a similarity in that plane.
OdResult transformCircle(OdDbCurve& curve, const OdGeMatrix3d& xform, OdDbPlaneMap& map, OdGeVector3d& normal,
                         OdGePoint3d& centerOcs, double& radius, double& thickness) {
  const OdResult status = odDbMapPlane(normal, xform, map);
  if (status != eOk) return status;
  if (!map.uniform) return eCannotScaleNonUniformly;
  curve.assertWriteEnabled();
  normal = map.normal;
  centerOcs = map.ocsToOcs * centerOcs;
  radius *= map.scale;
  thickness *= map.thicknessScale;
  return eOk;
}

}  // namespace

// ---------------------------------------------------------------- circle

const OdDbClassSchema& OdDbCircle::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {circleSubclass<&OdDbCircle::m_thickness, &OdDbCircle::m_center, &OdDbCircle::m_radius,
                      &OdDbCircle::m_normal>()},
      {}};
  return schema;
}

OdDbCircle::OdDbCircle(const OdGePoint3d& center, double radius, const OdGeVector3d& normal)
    : m_center(odgeWcsToOcs(center, unitNormal(normal))), m_radius(radius), m_normal(unitNormal(normal)) {}

OdGePoint3d OdDbCircle::center() const { return odgeOcsToWcs(m_center, m_normal); }

void OdDbCircle::setCenter(const OdGePoint3d& center) {
  assertWriteEnabled();
  m_center = odgeWcsToOcs(center, m_normal);
}

void OdDbCircle::setNormal(const OdGeVector3d& normal) { setPlane(*this, m_normal, m_center, normal); }

double OdDbCircle::circumference() const { return Oda2PI * m_radius; }

OdGeCircArc3d OdDbCircle::geCircle() const { return circArcOf(center(), m_normal, m_radius, 0.0, Oda2PI); }

OdResult OdDbCircle::getEndParam(double& param) const {
  param = Oda2PI;
  return eOk;
}

OdResult OdDbCircle::getStartPoint(OdGePoint3d& point) const { return getPointAtParam(0.0, point); }

OdResult OdDbCircle::getPointAtParam(double param, OdGePoint3d& point) const {
  point = pointAtAngle(m_center, m_radius, m_normal, param);
  return eOk;
}

OdResult OdDbCircle::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  return angleOnCurve(*this, point, center(), m_radius, m_normal, param) ? eOk : ePointNotOnEntity;
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
  return transformCircle(*this, xform, map, m_normal, m_center, m_radius, m_thickness);
}

// ---------------------------------------------------------------- arc

const OdDbClassSchema& OdDbArc::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {circleSubclass<&OdDbArc::m_thickness, &OdDbArc::m_center, &OdDbArc::m_radius, &OdDbArc::m_normal>(),
       {L"AcDbArc",
        {
            odField<&OdDbArc::m_startAngle>(50).required().degrees().named(L"startAngle"),
            odField<&OdDbArc::m_endAngle>(51).required().degrees().named(L"endAngle"),
        }}},
      {}};
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

void OdDbArc::setNormal(const OdGeVector3d& normal) { setPlane(*this, m_normal, m_center, normal); }

double OdDbArc::totalAngle() const {
  const double sweep = odgeNormalizeAngle(m_endAngle - m_startAngle);
  return sweep > 0.0 ? sweep : Oda2PI;
}

OdGeCircArc3d OdDbArc::geArc() const {
  return circArcOf(center(), m_normal, m_radius, m_startAngle, m_startAngle + totalAngle());
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
  point = pointAtAngle(m_center, m_radius, m_normal, param);
  return eOk;
}

OdResult OdDbArc::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  double angle = 0;
  if (!angleOnCurve(*this, point, center(), m_radius, m_normal, angle)) return ePointNotOnEntity;
  // The angle in the arc's parameter range (start .. start + total).
  param = m_startAngle + odgeNormalizeAngle(angle - m_startAngle);
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
  const OdGeCircArc3d arc = extend ? circArcOf(center(), m_normal, m_radius, 0.0, Oda2PI) : geArc();
  closest = arc.closestPointTo(point);
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
  const OdResult status = transformCircle(*this, xform, map, m_normal, m_center, m_radius, m_thickness);
  if (status != eOk) return status;
  m_startAngle = map.mapAngle(m_startAngle);
  m_endAngle = map.mapAngle(m_endAngle);
  // A mirrored arc runs clockwise in the new plane: from its old end to its old start.
  if (map.mirrored) std::swap(m_startAngle, m_endAngle);
  return eOk;
}
