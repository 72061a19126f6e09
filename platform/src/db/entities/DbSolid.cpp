#include "DbSolid.h"

#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbSolid, OdDbEntity, L"SOLID")
ODDB_DEFINE_MEMBERS(OdDbTrace, OdDbEntity, L"TRACE")
ODDB_DEFINE_MEMBERS(OdDbFace, OdDbEntity, L"3DFACE")

using namespace OdDbEntityGeometry;

// ---------------------------------------------------------------- solid and trace

std::vector<OdDbField> OdDbPlanarQuad::quadFields() {
  return {
      odField<&OdDbPlanarQuad::m_point0>(10).required().named(L"point0"),
      odField<&OdDbPlanarQuad::m_point1>(11).required().named(L"point1"),
      odField<&OdDbPlanarQuad::m_point2>(12).required().named(L"point2"),
      odField<&OdDbPlanarQuad::m_point3>(13).named(L"point3"),
      odField<&OdDbPlanarQuad::m_thickness>(39).optional().named(L"thickness"),
      odField<&OdDbPlanarQuad::m_normal>(210).optional().named(L"normal"),
  };
}

const OdDbClassSchema& OdDbSolid::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {{L"AcDbTrace", quadFields()}}};
  return schema;
}

const OdDbClassSchema& OdDbTrace::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {{L"AcDbTrace", quadFields()}}};
  return schema;
}

OdDbSolid::OdDbSolid(const OdGePoint3d& p0, const OdGePoint3d& p1, const OdGePoint3d& p2,
                     const OdGePoint3d& p3) {
  m_point0 = p0;
  m_point1 = p1;
  m_point2 = p2;
  m_point3 = p3;
}

OdDbTrace::OdDbTrace(const OdGePoint3d& p0, const OdGePoint3d& p1, const OdGePoint3d& p2,
                     const OdGePoint3d& p3) {
  m_point0 = p0;
  m_point1 = p1;
  m_point2 = p2;
  m_point3 = p3;
}

OdGePoint3d& OdDbPlanarQuad::corner(OdUInt16 index) {
  switch (index) {
    case 0: return m_point0;
    case 1: return m_point1;
    case 2: return m_point2;
    default: return m_point3;
  }
}

void OdDbPlanarQuad::worldCorners(OdGePoint3d corners[4]) const {
  for (OdUInt16 i = 0; i < 4; ++i) corners[i] = odgeOcsToWcs(corner(i), m_normal);
}

OdResult OdDbPlanarQuad::getPointAt(OdUInt16 index, OdGePoint3d& point) const {
  if (index > 3) return eInvalidIndex;
  point = odgeOcsToWcs(corner(index), m_normal);
  return eOk;
}

OdResult OdDbPlanarQuad::setPointAt(OdUInt16 index, const OdGePoint3d& point) {
  if (index > 3) return eInvalidIndex;
  assertWriteEnabled();
  corner(index) = odgeWcsToOcs(point, m_normal);
  return eOk;
}

void OdDbPlanarQuad::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  assertWriteEnabled();
  OdGePoint3d corners[4];
  worldCorners(corners);
  m_normal = normal.normal();
  for (OdUInt16 i = 0; i < 4; ++i) corner(i) = odgeWcsToOcs(corners[i], m_normal);
}

OdResult OdDbPlanarQuad::getGeomExtents(OdGeExtents3d& extents) const {
  OdGePoint3d corners[4];
  worldCorners(corners);
  extents = OdGeExtents3d();
  const OdGeVector3d up = m_normal.normal() * m_thickness;
  for (const OdGePoint3d& p : corners) {
    extents.addPoint(p);
    if (m_thickness != 0) extents.addPoint(p + up);
  }
  return eOk;
}

OdResult OdDbPlanarQuad::transformBy(const OdGeMatrix3d& xform) {
  OdGeVector3d normal = transformedNormal(xform, m_normal);
  if (normal.isZeroLength()) return eCannotScaleNonUniformly;
  assertWriteEnabled();
  OdGePoint3d corners[4];
  worldCorners(corners);
  m_thickness *= normalScale(xform, m_normal, normal);
  m_normal = normal;
  for (OdUInt16 i = 0; i < 4; ++i) corner(i) = odgeWcsToOcs(corners[i].transformBy(xform), m_normal);
  return eOk;
}

double OdDbPlanarQuad::distanceTo(const OdGePoint3d& point) const {
  OdGePoint3d c[4];
  worldCorners(c);
  return std::min(distanceToTriangle(point, c[0], c[1], c[2]), distanceToTriangle(point, c[1], c[3], c[2]));
}

// ---------------------------------------------------------------- face

const OdDbClassSchema& OdDbFace::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbFace",
        {
            odField<&OdDbFace::m_point0>(10).required().named(L"point0"),
            odField<&OdDbFace::m_point1>(11).required().named(L"point1"),
            odField<&OdDbFace::m_point2>(12).required().named(L"point2"),
            odField<&OdDbFace::m_point3>(13).named(L"point3"),
            odField<&OdDbFace::m_invisibleEdges>(70).optional().named(L"invisibleEdges"),
        }}}};
  return schema;
}

OdDbFace::OdDbFace(const OdGePoint3d& p0, const OdGePoint3d& p1, const OdGePoint3d& p2, const OdGePoint3d& p3,
                   bool e0Visible, bool e1Visible, bool e2Visible, bool e3Visible)
    : m_point0(p0), m_point1(p1), m_point2(p2), m_point3(p3) {
  m_invisibleEdges = static_cast<OdInt16>((e0Visible ? 0 : 1) | (e1Visible ? 0 : 2) | (e2Visible ? 0 : 4) |
                                          (e3Visible ? 0 : 8));
}

OdGePoint3d& OdDbFace::vertex(OdUInt16 index) {
  switch (index) {
    case 0: return m_point0;
    case 1: return m_point1;
    case 2: return m_point2;
    default: return m_point3;
  }
}

OdResult OdDbFace::getVertexAt(OdUInt16 index, OdGePoint3d& point) const {
  if (index > 3) return eInvalidIndex;
  point = vertex(index);
  return eOk;
}

OdResult OdDbFace::setVertexAt(OdUInt16 index, const OdGePoint3d& point) {
  if (index > 3) return eInvalidIndex;
  assertWriteEnabled();
  vertex(index) = point;
  return eOk;
}

OdResult OdDbFace::isEdgeVisibleAt(OdUInt16 index, bool& visible) const {
  if (index > 3) return eInvalidIndex;
  visible = !(m_invisibleEdges & (1 << index));
  return eOk;
}

OdResult OdDbFace::makeEdgeVisibleAt(OdUInt16 index) {
  if (index > 3) return eInvalidIndex;
  assertWriteEnabled();
  m_invisibleEdges = static_cast<OdInt16>(m_invisibleEdges & ~(1 << index));
  return eOk;
}

OdResult OdDbFace::makeEdgeInvisibleAt(OdUInt16 index) {
  if (index > 3) return eInvalidIndex;
  assertWriteEnabled();
  m_invisibleEdges = static_cast<OdInt16>(m_invisibleEdges | (1 << index));
  return eOk;
}

OdResult OdDbFace::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  for (OdUInt16 i = 0; i < 4; ++i) extents.addPoint(vertex(i));
  return eOk;
}

OdResult OdDbFace::transformBy(const OdGeMatrix3d& xform) {
  assertWriteEnabled();
  for (OdUInt16 i = 0; i < 4; ++i) vertex(i).transformBy(xform);
  return eOk;
}

double OdDbFace::distanceTo(const OdGePoint3d& point) const {
  return std::min(distanceToTriangle(point, m_point0, m_point1, m_point2),
                  distanceToTriangle(point, m_point0, m_point2, m_point3));
}
