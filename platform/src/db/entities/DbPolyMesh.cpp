// Meshes kept as POLYLINE entities: polyface meshes (vertices and face
// records) and polygon meshes (an M x N grid of vertices).
#include <algorithm>
#include <cmath>
#include <limits>

#include "DbPolyline.h"
#include "DbVertexList.h"

namespace {

double distanceToSegment(const OdGePoint3d& point, const OdGePoint3d& from, const OdGePoint3d& to) {
  const OdGeVector3d d = to - from;
  const double lengthSqrd = d.lengthSqrd();
  const double t = lengthSqrd > 0 ? std::clamp((point - from).dotProduct(d) / lengthSqrd, 0.0, 1.0) : 0.0;
  return point.distanceTo(from + d * t);
}

OdResult extentsOf(const std::vector<OdDbVertexPtr>& vertices, OdGeExtents3d& extents) {
  extents = OdGeExtents3d();
  for (const OdDbVertexPtr& vertex : vertices) {
    if (!vertex->isKindOf(OdDbFaceRecord::desc())) extents.addPoint(vertex->position());
  }
  return extents.isValidExtents() ? eOk : eInvalidExtents;
}

}  // namespace

// ---------------------------------------------------------------- polyface mesh

const OdDbClassSchema& OdDbPolyFaceMesh::classSchema() {
  static const OdDbClassSchema schema = [] {
    OdDbClassSchema s{&OdDbEntity::classSchema(),
                      {{L"AcDbPolyFaceMesh",
                        {
                            odCustomField(OdDbVertexListOps::verticesFollowCodec(), L"verticesFollow"),
                            odField<&OdDbPolyFaceMesh::m_basePoint>(10).named(L"basePoint"),
                            odField<&OdDbPolyFaceMesh::m_flags>(70).defaultsInt(OdDb2dPolyline::kPolyFaceFlag).named(L"flags"),
                            odField<&OdDbPolyFaceMesh::m_numVertices>(71).named(L"numVertices"),
                            odField<&OdDbPolyFaceMesh::m_numFaces>(72).named(L"numFaces"),
                        }}}};
    // The counts follow the vertex list whenever the mesh is written.
    s.hooks.beforeWrite = [](const OdDbObject* object) {
      const_cast<OdDbPolyFaceMesh*>(static_cast<const OdDbPolyFaceMesh*>(object))->updateCounts();
    };
    return s;
  }();
  return schema;
}

void OdDbPolyFaceMesh::updateCounts() {
  if (m_vertexList.ids.empty() && m_vertexList.pending.empty()) return;
  OdInt16 vertices = 0, faces = 0;
  for (const OdDbVertexPtr& vertex : OdDbVertexListOps::open(m_vertexList)) {
    ++(vertex->isKindOf(OdDbFaceRecord::desc()) ? faces : vertices);
  }
  m_numVertices = vertices;
  m_numFaces = faces;
}

OdResult OdDbPolyFaceMesh::appendVertex(OdDbPolyFaceMeshVertex* vertex, OdDbObjectId* id) {
  if (m_numFaces > 0) return eVertexAfterFace;
  OdDbObjectId added = OdDbVertexListOps::append(this, m_vertexList, vertex);
  ++m_numVertices;
  if (id) *id = added;
  return eOk;
}

OdResult OdDbPolyFaceMesh::appendFaceRecord(OdDbFaceRecord* face, OdDbObjectId* id) {
  for (int corner = 0; corner < 4; ++corner) {
    OdInt16 index = 0;
    face->getVertexAt(corner, index);
    if (std::abs(index) > m_numVertices) return eInvalidFaceVertexIndex;
  }
  OdDbObjectId added = OdDbVertexListOps::append(this, m_vertexList, face);
  ++m_numFaces;
  if (id) *id = added;
  return eOk;
}

OdDbObjectIteratorPtr OdDbPolyFaceMesh::vertexIterator() const {
  return OdDbVertexListOps::iterator(this, const_cast<OdDbPolylineVertexList&>(m_vertexList));
}

OdDbObjectIdArray* OdDbPolyFaceMesh::subentityIdsInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.ids;
}

OdDbObjectId* OdDbPolyFaceMesh::sequenceEndIdInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.sequenceEnd;
}

OdResult OdDbPolyFaceMesh::subErase(bool erasing) {
  OdDbVertexListOps::flush(this, m_vertexList);
  OdDbVertexListOps::erase(m_vertexList, erasing);
  return eOk;
}

void OdDbPolyFaceMesh::dwgOutFields(OdDbDwgFiler* filer) const {
  OdDbEntity::dwgOutFields(filer);
  OdDbVertexListOps::fileOut(m_vertexList, filer);
}

OdResult OdDbPolyFaceMesh::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbEntity::dwgInFields(filer);
  OdDbVertexListOps::fileIn(m_vertexList, filer);
  return result;
}

void OdDbPolyFaceMesh::copyFrom(const OdRxObject* source) {
  OdDbEntity::copyFrom(source);
  OdDbVertexListOps::copy(static_cast<const OdDbPolyFaceMesh*>(source)->m_vertexList, m_vertexList);
}

void OdDbPolyFaceMesh::subSetDatabaseDefaults(OdDbDatabase*) { OdDbVertexListOps::flush(this, m_vertexList); }

OdResult OdDbPolyFaceMesh::getGeomExtents(OdGeExtents3d& extents) const {
  return extentsOf(OdDbVertexListOps::open(m_vertexList), extents);
}

OdResult OdDbPolyFaceMesh::transformBy(const OdGeMatrix3d& xform) {
  std::vector<OdDbVertexPtr> vertices = OdDbVertexListOps::open(m_vertexList, OdDb::kForWrite);
  assertWriteEnabled();
  for (const OdDbVertexPtr& vertex : vertices) vertex->transformBy(xform);
  return eOk;
}

double OdDbPolyFaceMesh::distanceTo(const OdGePoint3d& point) const {
  // The nearest edge of any face (hidden edges included: they still bound the face).
  std::vector<OdGePoint3d> positions;
  std::vector<OdDbFaceRecordPtr> faces;
  for (const OdDbVertexPtr& vertex : OdDbVertexListOps::open(m_vertexList)) {
    if (vertex->isKindOf(OdDbFaceRecord::desc()))
      faces.push_back(OdDbFaceRecord::cast(vertex.get()));
    else
      positions.push_back(vertex->position());
  }
  double best = std::numeric_limits<double>::infinity();
  for (const auto& face : faces) {
    std::vector<OdGePoint3d> corners;
    for (int corner = 0; corner < 4; ++corner) {
      OdInt16 index = 0;
      face->getVertexAt(corner, index);
      const int at = std::abs(index) - 1;
      if (at >= 0 && at < static_cast<int>(positions.size()))
        corners.push_back(positions[static_cast<size_t>(at)]);
    }
    for (size_t i = 0; i < corners.size(); ++i) {
      best = std::min(best, distanceToSegment(point, corners[i], corners[(i + 1) % corners.size()]));
    }
  }
  if (faces.empty()) {
    for (const auto& p : positions) best = std::min(best, point.distanceTo(p));
  }
  return best;
}

// ---------------------------------------------------------------- polygon mesh

const OdDbClassSchema& OdDbPolygonMesh::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbPolygonMesh",
        {
            odCustomField(OdDbVertexListOps::verticesFollowCodec(), L"verticesFollow"),
            odField<&OdDbPolygonMesh::m_basePoint>(10).named(L"basePoint"),
            odField<&OdDbPolygonMesh::m_flags>(70).defaultsInt(OdDb2dPolyline::kMeshFlag).named(L"flags"),
            odField<&OdDbPolygonMesh::m_mSize>(71).named(L"mSize"),
            odField<&OdDbPolygonMesh::m_nSize>(72).named(L"nSize"),
            odField<&OdDbPolygonMesh::m_mDensity>(73).optional().named(L"mDensity"),
            odField<&OdDbPolygonMesh::m_nDensity>(74).optional().named(L"nDensity"),
            odField<&OdDbPolygonMesh::m_surfaceType>(75).optional().named(L"surfaceType"),
        }}}};
  return schema;
}

OdResult OdDbPolygonMesh::setMSize(OdInt16 size) {
  if (size < 2) return eInvalidInput;
  assertWriteEnabled();
  m_mSize = size;
  return eOk;
}

OdResult OdDbPolygonMesh::setNSize(OdInt16 size) {
  if (size < 2) return eInvalidInput;
  assertWriteEnabled();
  m_nSize = size;
  return eOk;
}

void OdDbPolygonMesh::setFlag(OdInt16 bit, bool on) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(on ? (m_flags | bit) : (m_flags & ~bit));
}

OdDbObjectId OdDbPolygonMesh::appendVertex(OdDbPolygonMeshVertex* vertex) {
  return OdDbVertexListOps::append(this, m_vertexList, vertex);
}

OdDbObjectIteratorPtr OdDbPolygonMesh::vertexIterator() const {
  return OdDbVertexListOps::iterator(this, const_cast<OdDbPolylineVertexList&>(m_vertexList));
}

OdDbObjectIdArray* OdDbPolygonMesh::subentityIdsInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.ids;
}

OdDbObjectId* OdDbPolygonMesh::sequenceEndIdInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.sequenceEnd;
}

OdResult OdDbPolygonMesh::subErase(bool erasing) {
  OdDbVertexListOps::flush(this, m_vertexList);
  OdDbVertexListOps::erase(m_vertexList, erasing);
  return eOk;
}

void OdDbPolygonMesh::dwgOutFields(OdDbDwgFiler* filer) const {
  OdDbEntity::dwgOutFields(filer);
  OdDbVertexListOps::fileOut(m_vertexList, filer);
}

OdResult OdDbPolygonMesh::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbEntity::dwgInFields(filer);
  OdDbVertexListOps::fileIn(m_vertexList, filer);
  return result;
}

void OdDbPolygonMesh::copyFrom(const OdRxObject* source) {
  OdDbEntity::copyFrom(source);
  OdDbVertexListOps::copy(static_cast<const OdDbPolygonMesh*>(source)->m_vertexList, m_vertexList);
}

void OdDbPolygonMesh::subSetDatabaseDefaults(OdDbDatabase*) { OdDbVertexListOps::flush(this, m_vertexList); }

OdResult OdDbPolygonMesh::getGeomExtents(OdGeExtents3d& extents) const {
  return extentsOf(OdDbVertexListOps::open(m_vertexList), extents);
}

OdResult OdDbPolygonMesh::transformBy(const OdGeMatrix3d& xform) {
  std::vector<OdDbVertexPtr> vertices = OdDbVertexListOps::open(m_vertexList, OdDb::kForWrite);
  assertWriteEnabled();
  for (const OdDbVertexPtr& vertex : vertices) vertex->transformBy(xform);
  return eOk;
}

double OdDbPolygonMesh::distanceTo(const OdGePoint3d& point) const {
  std::vector<OdGePoint3d> grid;
  for (const OdDbVertexPtr& vertex : OdDbVertexListOps::open(m_vertexList))
    grid.push_back(vertex->position());
  double best = std::numeric_limits<double>::infinity();
  for (const auto& p : grid) best = std::min(best, point.distanceTo(p));
  const int m = m_mSize, n = m_nSize;
  if (m < 1 || n < 1 || static_cast<size_t>(m) * static_cast<size_t>(n) != grid.size()) return best;
  auto at = [&](int row, int column) { return grid[static_cast<size_t>(row * n + column)]; };
  // Edges along both grid directions, with the closing edges of closed directions.
  for (int row = 0; row < m; ++row) {
    for (int column = 0; column < n; ++column) {
      if (column + 1 < n || isNClosed())
        best = std::min(best, distanceToSegment(point, at(row, column), at(row, (column + 1) % n)));
      if (row + 1 < m || isMClosed())
        best = std::min(best, distanceToSegment(point, at(row, column), at((row + 1) % m, column)));
    }
  }
  return best;
}
