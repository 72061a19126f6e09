#include "DbMline.h"

#include <limits>

#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbMline, OdDbEntity, L"MLINE")

using namespace OdDbEntityGeometry;

const OdDbClassSchema& OdDbMline::classSchema() {
  // Per vertex: 11 position, 12 direction, 13 miter, and per element 74 with
  // the 41 distances that place it and 75 with the 42 distances of its fill.
  static const OdDbField parameterList = odValueArrayField<&Element::parameters>(41, L"parameters");
  static const OdDbField fillList = odValueArrayField<&Element::fillParameters>(42, L"fillParameters");
  static const OdDbArraySpec elementRecords = odRecords<std::vector<Element>>({
      odCountField<&Element::parameters>(74, parameterList),
      parameterList,
      odCountField<&Element::fillParameters>(75, fillList),
      fillList,
  });
  static const OdDbArraySpec vertexRecords = odRecords<std::vector<Vertex>>({
      odField<&Vertex::position>(11).named(L"position"),
      odField<&Vertex::direction>(12).named(L"direction"),
      odField<&Vertex::miter>(13).named(L"miter"),
      odArrayField<&Vertex::elements>(elementRecords, L"elements"),
  });
  // The vertex count (72) stands apart from the vertices, which come after group 210.
  static const OdDbField vertexList = odArrayField<&OdDbMline::m_vertices>(vertexRecords, L"vertices");
  static const OdDbRecordCodec countCodec({odCountField<&OdDbMline::m_vertices>(72, vertexList)});
  static const OdDbRecordCodec verticesCodec({vertexList});
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbMline",
        {
            odField<&OdDbMline::m_styleName>(2).named(L"styleName"),
            odField<&OdDbMline::m_styleId>(340, OdDbFieldKind::kHardPointer).named(L"style"),
            odField<&OdDbMline::m_scale>(40).defaults(1.0).named(L"scale"),
            odField<&OdDbMline::m_justification>(70).named(L"justification"),
            odField<&OdDbMline::m_flags>(71).named(L"flags"),
            odCustomField(countCodec, L"vertexCount"),
            odField<&OdDbMline::m_numElements>(73).named(L"numElements"),
            odField<&OdDbMline::m_startPoint>(10).named(L"startPoint"),
            odField<&OdDbMline::m_normal>(210).named(L"normal"),
            odCustomField(verticesCodec, L"vertices"),
        }}}};
  return schema;
}

OdGePoint3d OdDbMline::vertexAt(int index) const { return vertexDataAt(index).position; }

const OdDbMline::Vertex& OdDbMline::vertexDataAt(int index) const {
  if (index < 0 || index >= numVertices()) throw OdError(eInvalidIndex);
  return m_vertices[static_cast<size_t>(index)];
}

void OdDbMline::appendSeg(const OdGePoint3d& point) {
  assertWriteEnabled();
  Vertex vertex;
  vertex.position = point;
  if (m_vertices.empty()) {
    m_startPoint = point;
    vertex.elements.resize(static_cast<size_t>(std::max<OdInt16>(m_numElements, 0)));
    vertex.miter = odgeOcsToWcs(OdGeVector3d(0, 1, 0), m_normal);
    vertex.direction = odgeOcsToWcs(OdGeVector3d(1, 0, 0), m_normal);
    m_vertices.push_back(std::move(vertex));
    m_flags |= kHasVertices;
    return;
  }
  Vertex& previous = m_vertices.back();
  OdGeVector3d segment = point - previous.position;
  if (segment.isZeroLength()) return;
  segment.normalize();
  // The previous vertex's miter halves the turn between its two segments.
  const OdGeVector3d incoming = m_vertices.size() > 1 ? m_vertices[m_vertices.size() - 2].direction : segment;
  OdGeVector3d bisector = m_normal.crossProduct(incoming + segment);
  previous.direction = segment;
  previous.miter = bisector.isZeroLength() ? m_normal.crossProduct(segment).normal() : bisector.normal();
  vertex.direction = segment;
  vertex.miter = m_normal.crossProduct(segment).normal();
  vertex.elements = previous.elements;
  m_vertices.push_back(std::move(vertex));
}

void OdDbMline::setStyle(const OdDbObjectId& styleId, const OdString& name) {
  assertWriteEnabled();
  m_styleId = styleId;
  m_styleName = name;
}

void OdDbMline::setClosedMline(bool closed) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(closed ? (m_flags | kClosed) : (m_flags & ~kClosed));
}

void OdDbMline::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  assertWriteEnabled();
  m_normal = normal.normal();
}

OdResult OdDbMline::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  for (const Vertex& v : m_vertices) {
    extents.addPoint(v.position);
    // Each element starts its distance away along the miter.
    const OdGeVector3d miter = v.miter.isZeroLength() ? OdGeVector3d() : v.miter.normal();
    for (const auto& element : v.elements) {
      if (!element.parameters.isEmpty()) extents.addPoint(v.position + miter * element.parameters.first());
    }
  }
  return extents.isValidExtents() ? eOk : eInvalidExtents;
}

OdResult OdDbMline::transformBy(const OdGeMatrix3d& xform) {
  OdGeVector3d normal = transformedNormal(xform, m_normal);
  if (normal.isZeroLength()) return eCannotScaleNonUniformly;
  assertWriteEnabled();
  // The scale within the plane (for distances whose miter is unknown, and the style scale).
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(m_normal, xAxis, yAxis, zAxis);
  const double uniform = std::sqrt((xform * xAxis).crossProduct(xform * yAxis).length());
  for (Vertex& v : m_vertices) {
    v.position.transformBy(xform);
    OdGeVector3d direction = xform * v.direction;
    OdGeVector3d miter = xform * v.miter;
    // Distances run along the miter: they stretch as the miter does.
    const double stretch = v.miter.isZeroLength() ? uniform : miter.length() / v.miter.length();
    for (auto& element : v.elements) {
      for (double& p : element.parameters) p *= stretch;
      for (double& p : element.fillParameters) p *= stretch;
    }
    if (!direction.isZeroLength()) v.direction = direction.normal();
    if (!miter.isZeroLength()) v.miter = miter.normal();
  }
  m_startPoint.transformBy(xform);
  m_scale *= uniform;
  m_normal = normal;
  return eOk;
}

double OdDbMline::distanceTo(const OdGePoint3d& point) const {
  if (m_vertices.empty()) return std::numeric_limits<double>::infinity();
  double best = point.distanceTo(m_vertices.front().position);
  const size_t n = m_vertices.size();
  const size_t segments = closedMline() ? n : n - 1;
  for (size_t i = 0; i < segments; ++i) {
    best = std::min(best, distanceToSegment(point, m_vertices[i].position, m_vertices[(i + 1) % n].position));
  }
  return best;
}
