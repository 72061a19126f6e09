// The old-style polyline family's run-time classes, the VERTEX classes, and
// how a reader picks a class for "POLYLINE" and "VERTEX".
#include <cmath>

#include "DbPolyline.h"

// Registered in this order so that the plain 2-d kinds are the ones found by
// the shared DXF names "POLYLINE" and "VERTEX".
ODDB_DEFINE_MEMBERS(OdDb2dPolyline, OdDbCurve, L"POLYLINE")
ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbVertex, OdDbEntity)
ODDB_DEFINE_MEMBERS(OdDb2dVertex, OdDbVertex, L"VERTEX")
ODDB_DEFINE_MEMBERS(OdDb3dPolyline, OdDbCurve, L"POLYLINE")
ODDB_DEFINE_MEMBERS(OdDbPolyFaceMesh, OdDbEntity, L"POLYLINE")
ODDB_DEFINE_MEMBERS(OdDbPolygonMesh, OdDbEntity, L"POLYLINE")
ODDB_DEFINE_MEMBERS(OdDb3dPolylineVertex, OdDbVertex, L"VERTEX")
ODDB_DEFINE_MEMBERS(OdDbPolygonMeshVertex, OdDbVertex, L"VERTEX")
ODDB_DEFINE_MEMBERS(OdDbPolyFaceMeshVertex, OdDbVertex, L"VERTEX")
ODDB_DEFINE_MEMBERS(OdDbFaceRecord, OdDbVertex, L"VERTEX")

OdRxClass* odDbPolylineClassForFlags(int flags) {
  if (flags & OdDb2dPolyline::kPolyFaceFlag) return OdDbPolyFaceMesh::desc();
  if (flags & OdDb2dPolyline::kMeshFlag) return OdDbPolygonMesh::desc();
  if (flags & OdDb2dPolyline::k3dFlag) return OdDb3dPolyline::desc();
  return OdDb2dPolyline::desc();
}

OdRxClass* odDbVertexClassForFlags(int vertexFlags) {
  if (vertexFlags & OdDbVertex::kPolyFaceVertex) {
    return (vertexFlags & OdDbVertex::kMeshVertex) ? OdDbPolyFaceMeshVertex::desc() : OdDbFaceRecord::desc();
  }
  if (vertexFlags & OdDbVertex::kMeshVertex) return OdDbPolygonMeshVertex::desc();
  if (vertexFlags & OdDbVertex::k3dPolylineVertex) return OdDb3dPolylineVertex::desc();
  return OdDb2dVertex::desc();
}

OdRxClass* odDbVertexClassForPolyline(const OdDbEntity* polyline, int vertexFlags) {
  if (polyline) {
    if (polyline->isKindOf(OdDb2dPolyline::desc())) return OdDb2dVertex::desc();
    if (polyline->isKindOf(OdDb3dPolyline::desc())) return OdDb3dPolylineVertex::desc();
    if (polyline->isKindOf(OdDbPolygonMesh::desc())) return OdDbPolygonMeshVertex::desc();
    if (polyline->isKindOf(OdDbPolyFaceMesh::desc())) {
      // Face records carry 128 without 64; anything else is a vertex.
      const bool face =
          (vertexFlags & OdDbVertex::kPolyFaceVertex) && !(vertexFlags & OdDbVertex::kMeshVertex);
      return face ? OdDbFaceRecord::desc() : OdDbPolyFaceMeshVertex::desc();
    }
  }
  return odDbVertexClassForFlags(vertexFlags);
}

// ---------------------------------------------------------------- vertex

const OdDbClassSchema& OdDbVertex::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {{L"AcDbVertex", {}}}};
  return schema;
}

OdResult OdDbVertex::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  extents.addPoint(m_position);
  return eOk;
}

OdResult OdDbVertex::transformBy(const OdGeMatrix3d& xform) {
  assertWriteEnabled();
  m_position = xform * m_position;
  return eOk;
}

// ---------------------------------------------------------------- 2-d vertex

const OdDbClassSchema& OdDb2dVertex::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbVertex::classSchema(),
      {{L"AcDb2dVertex",
        {
            odField<&OdDb2dVertex::m_position>(10).required().named(L"position"),
            odField<&OdDb2dVertex::m_startWidth>(40).optional().named(L"startWidth"),
            odField<&OdDb2dVertex::m_endWidth>(41).optional().named(L"endWidth"),
            odField<&OdDb2dVertex::m_bulge>(42).optional().named(L"bulge"),
            odField<&OdDb2dVertex::m_flags>(70).named(L"flags"),
            odField<&OdDb2dVertex::m_tangent>(50).optional().degrees().named(L"tangent"),
            odField<&OdDb2dVertex::m_identifier>(91).optional().since(OdDb::vAC24).named(L"identifier"),
        }}}};
  return schema;
}

OdDb2dVertex::OdDb2dVertex(const OdGePoint3d& ocsPosition, double bulge, double startWidth, double endWidth)
    : m_startWidth(startWidth), m_endWidth(endWidth), m_bulge(bulge) {
  m_position = ocsPosition;
}

OdDb::Vertex2dType OdDb2dVertex::vertexType() const {
  if (m_flags & kSplineControlVertex) return OdDb::k2dSplineCtlVertex;
  if (m_flags & kSplineFitVertex) return OdDb::k2dSplineFitVertex;
  if (m_flags & kExtraCurveFitVertex) return OdDb::k2dCurveFitVertex;
  return OdDb::k2dVertex;
}

void OdDb2dVertex::useTangent() {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(m_flags | kTangentDefined);
}

void OdDb2dVertex::ignoreTangent() {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(m_flags & ~kTangentDefined);
}

void OdDb2dVertex::setTangent(double angle) {
  assertWriteEnabled();
  m_tangent = angle;
  m_flags = static_cast<OdInt16>(m_flags | kTangentDefined);
}

// ---------------------------------------------------------------- 3-d and mesh vertices

namespace {
OdDb::Vertex3dType vertex3dType(OdInt16 flags) {
  if (flags & OdDbVertex::kSplineControlVertex) return OdDb::k3dControlVertex;
  if (flags & OdDbVertex::kSplineFitVertex) return OdDb::k3dFitVertex;
  return OdDb::k3dSimpleVertex;
}
}  // namespace

const OdDbClassSchema& OdDb3dPolylineVertex::classSchema() {
  static const OdDbClassSchema schema{&OdDbVertex::classSchema(),
                                      {{L"AcDb3dPolylineVertex",
                                        {
                                            odField<&OdDb3dPolylineVertex::m_position>(10).required().named(L"position"),
                                            odField<&OdDb3dPolylineVertex::m_flags>(70).defaultsInt(OdDbVertex::k3dPolylineVertex).named(L"flags"),
                                        }}}};
  return schema;
}

OdDb::Vertex3dType OdDb3dPolylineVertex::vertexType() const { return vertex3dType(m_flags); }

const OdDbClassSchema& OdDbPolygonMeshVertex::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbVertex::classSchema(),
      {{L"AcDbPolygonMeshVertex",
        {
            odField<&OdDbPolygonMeshVertex::m_position>(10).required().named(L"position"),
            odField<&OdDbPolygonMeshVertex::m_flags>(70).defaultsInt(OdDbVertex::kMeshVertex).named(L"flags"),
        }}}};
  return schema;
}

OdDb::Vertex3dType OdDbPolygonMeshVertex::vertexType() const { return vertex3dType(m_flags); }

const OdDbClassSchema& OdDbPolyFaceMeshVertex::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbVertex::classSchema(),
      {{L"AcDbPolyFaceMeshVertex",
        {
            odField<&OdDbPolyFaceMeshVertex::m_position>(10).required().named(L"position"),
            odField<&OdDbPolyFaceMeshVertex::m_flags>(70).defaultsInt(OdDbVertex::kMeshVertex | OdDbVertex::kPolyFaceVertex).named(L"flags"),
        }}}};
  return schema;
}

// ---------------------------------------------------------------- face record

const OdDbClassSchema& OdDbFaceRecord::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbVertex::classSchema(),
      {{L"AcDbFaceRecord",
        {
            odField<&OdDbFaceRecord::m_position>(10).required().named(L"position"),
            odField<&OdDbFaceRecord::m_flags>(70).defaultsInt(OdDbVertex::kPolyFaceVertex).named(L"flags"),
            odField<&OdDbFaceRecord::m_index0>(71).named(L"vertex1"),
            odField<&OdDbFaceRecord::m_index1>(72).named(L"vertex2"),
            odField<&OdDbFaceRecord::m_index2>(73).optional().named(L"vertex3"),
            odField<&OdDbFaceRecord::m_index3>(74).optional().named(L"vertex4"),
        }}}};
  return schema;
}

OdInt16& OdDbFaceRecord::corner(int index) {
  switch (index) {
    case 0:
      return m_index0;
    case 1:
      return m_index1;
    case 2:
      return m_index2;
    default:
      return m_index3;
  }
}

OdResult OdDbFaceRecord::getVertexAt(int corner, OdInt16& index) const {
  if (corner < 0 || corner > 3) return eInvalidIndex;
  index = const_cast<OdDbFaceRecord*>(this)->corner(corner);
  return eOk;
}

OdResult OdDbFaceRecord::setVertexAt(int corner, OdInt16 index) {
  if (corner < 0 || corner > 3) return eInvalidIndex;
  assertWriteEnabled();
  this->corner(corner) = index;
  return eOk;
}

bool OdDbFaceRecord::isEdgeVisibleAt(int corner) const {
  OdInt16 index = 0;
  return getVertexAt(corner, index) == eOk && index > 0;
}

OdResult OdDbFaceRecord::makeEdgeVisibleAt(int corner) {
  if (corner < 0 || corner > 3) return eInvalidIndex;
  assertWriteEnabled();
  this->corner(corner) = static_cast<OdInt16>(std::abs(this->corner(corner)));
  return eOk;
}

OdResult OdDbFaceRecord::makeEdgeInvisibleAt(int corner) {
  if (corner < 0 || corner > 3) return eInvalidIndex;
  assertWriteEnabled();
  this->corner(corner) = static_cast<OdInt16>(-std::abs(this->corner(corner)));
  return eOk;
}
