#include "DbLeader.h"

#include <limits>

#include "DbDatabase.h"

#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbLeader, OdDbEntity, L"LEADER")

using namespace OdDbEntityGeometry;

const OdDbClassSchema& OdDbLeader::classSchema() {
  // Group 76 (vertex count) and the 10 groups of the vertices.
  static const OdDbField vertexList = odValueArrayField<&OdDbLeader::m_vertices>(10, L"vertices");
  static const OdDbRecordCodec verticesCodec({odCountField<&OdDbLeader::m_vertices>(76, vertexList), vertexList});
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbLeader",
        {
            odNameField<&OdDbLeader::m_styleId>(3, OdDbNameTable::kDimStyle, L"Standard").named(L"style"),
            odField<&OdDbLeader::m_hasArrowHead>(71).defaultsInt(1).named(L"hasArrowHead"),
            odField<&OdDbLeader::m_pathType>(72).named(L"pathType"),
            odField<&OdDbLeader::m_annotationType>(73).defaultsInt(OdDbLeader::kNoAnnotation).named(L"annotationType"),
            odField<&OdDbLeader::m_hookLineDirection>(74).named(L"hookLineDirection"),
            odField<&OdDbLeader::m_hasHookLine>(75).named(L"hasHookLine"),
            odField<&OdDbLeader::m_textHeight>(40).named(L"textHeight"),
            odField<&OdDbLeader::m_textWidth>(41).named(L"textWidth"),
            odCustomField(verticesCodec, L"vertices"),
            odField<&OdDbLeader::m_blockColor>(77).optional().named(L"blockColor"),
            odField<&OdDbLeader::m_annotationId>(340, OdDbFieldKind::kHardPointer)
                .optional()
                .named(L"annotation"),
            odField<&OdDbLeader::m_normal>(210).named(L"normal"),
            odField<&OdDbLeader::m_horizontalDirection>(211).defaults(1, 0, 0).named(L"horizontalDirection"),
            odField<&OdDbLeader::m_blockOffset>(212).defaults(0, 0, 0).named(L"blockOffset"),
            odField<&OdDbLeader::m_annotationOffset>(213).defaults(0, 0, 0).named(L"annotationOffset"),
        }}}};
  return schema;
}

void OdDbLeader::subSetDatabaseDefaults(OdDbDatabase* database) {
  if (m_styleId.isNull()) m_styleId = database->getDIMSTYLE();
}

OdGePoint3d OdDbLeader::vertexAt(int index) const {
  if (index < 0 || index >= numVertices()) throw OdError(eInvalidIndex);
  return m_vertices[static_cast<size_t>(index)];
}

bool OdDbLeader::setVertexAt(int index, const OdGePoint3d& point) {
  if (index < 0 || index >= numVertices()) return false;
  assertWriteEnabled();
  m_vertices[static_cast<size_t>(index)] = point;
  return true;
}

void OdDbLeader::appendVertex(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_vertices.append(point);
}

void OdDbLeader::removeLastVertex() {
  if (m_vertices.isEmpty()) return;
  assertWriteEnabled();
  m_vertices.removeLast();
}

void OdDbLeader::attachAnnotation(const OdDbObjectId& annotationId, AnnotationType type) {
  assertWriteEnabled();
  m_annotationId = annotationId;
  m_annotationType = static_cast<OdInt16>(annotationId.isNull() ? kNoAnnotation : type);
}

void OdDbLeader::detachAnnotation() {
  assertWriteEnabled();
  m_annotationId = OdDbObjectId();
  m_annotationType = kNoAnnotation;
}

void OdDbLeader::setAnnotationSize(double height, double width) {
  assertWriteEnabled();
  m_textHeight = height;
  m_textWidth = width;
}

void OdDbLeader::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  assertWriteEnabled();
  m_normal = normal.normal();
}

OdResult OdDbLeader::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  extents.addPoints(m_vertices);
  return extents.isValidExtents() ? eOk : eInvalidExtents;
}

OdResult OdDbLeader::transformBy(const OdGeMatrix3d& xform) {
  OdGeVector3d normal = transformedNormal(xform, m_normal);
  if (normal.isZeroLength()) return eCannotScaleNonUniformly;
  assertWriteEnabled();
  for (auto& p : m_vertices) p.transformBy(xform);
  m_normal = normal;
  OdGeVector3d horizontal = xform * m_horizontalDirection;
  if (!horizontal.isZeroLength()) m_horizontalDirection = horizontal.normal();
  m_blockOffset = xform * m_blockOffset;
  m_annotationOffset = xform * m_annotationOffset;
  return eOk;
}

double OdDbLeader::distanceTo(const OdGePoint3d& point) const {
  if (m_vertices.isEmpty()) return std::numeric_limits<double>::infinity();
  double best = point.distanceTo(m_vertices.first());
  for (size_t i = 1; i < m_vertices.size(); ++i) {
    best = std::min(best, distanceToSegment(point, m_vertices[i - 1], m_vertices[i]));
  }
  return best;
}
