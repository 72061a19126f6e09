#include "DbPoint.h"

#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbPoint, OdDbEntity, L"POINT")

const OdDbClassSchema& OdDbPoint::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbPoint",
        {
            odField<&OdDbPoint::m_position>(10).required().named(L"position"),
            odField<&OdDbPoint::m_thickness>(39).optional().named(L"thickness"),
            odField<&OdDbPoint::m_normal>(210).optional().named(L"normal"),
            odField<&OdDbPoint::m_ecsRotation>(50).optional().degrees().named(L"ecsRotation"),
        }}}};
  return schema;
}

void OdDbPoint::setNormal(const OdGeVector3d& normal) {
  assertWriteEnabled();
  if (!normal.isZeroLength()) m_normal = normal.normal();
}

OdResult OdDbPoint::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  extents.addPoint(m_position);
  if (m_thickness != 0) extents.addPoint(m_position + m_normal.normal() * m_thickness);
  return eOk;
}

OdResult OdDbPoint::transformBy(const OdGeMatrix3d& xform) {
  // The extrusion direction is a vector of its own (as for lines): a mirror
  // through the plane turns it over.
  OdGeVector3d normal = xform * m_normal;
  const double length = normal.length();
  if (length == 0) return eCannotScaleNonUniformly;
  normal /= length;
  assertWriteEnabled();
  // The figure's x direction, followed into the new plane.
  OdGeVector3d xDir =
      odgeOcsToWcs(OdGeVector3d(std::cos(m_ecsRotation), std::sin(m_ecsRotation), 0), m_normal);
  m_thickness *= length;
  m_position.transformBy(xform);
  m_ecsRotation = OdDbEntityGeometry::snappedAngle(odgeOcsAngle(xform * xDir, normal));
  m_normal = normal;
  return eOk;
}

double OdDbPoint::distanceTo(const OdGePoint3d& point) const {
  if (m_thickness == 0) return point.distanceTo(m_position);
  return OdDbEntityGeometry::distanceToSegment(point, m_position,
                                               m_position + m_normal.normal() * m_thickness);
}
