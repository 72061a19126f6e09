#include "DbMline.h"

#include <limits>

#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbMline, OdDbEntity, L"MLINE")

using namespace OdDbEntityGeometry;

namespace {

bool samePoint(const OdGePoint3d& p, const OdGePoint3d& q) { return p.x == q.x && p.y == q.y && p.z == q.z; }
bool sameVector(const OdGeVector3d& p, const OdGeVector3d& q) {
  return p.x == q.x && p.y == q.y && p.z == q.z;
}
bool sameDoubles(const OdGeDoubleArray& a, const OdGeDoubleArray& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](double x, double y) { return x == y || (x != x && y != y); });
}

OdGePoint3d tagPoint(const OdDxfTag& tag) {
  const bool point = tag.type == OdDxf::ValueType::kPoint;
  return {tag.x, point ? tag.y : 0.0, point && tag.dims == 3 ? tag.z : 0.0};
}

}  // namespace

// Group 72: the vertex count, which follows from the vertices.
struct OdDbMlineCountCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {72}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    out.push_back(OdDxfTag::integer(
        72, static_cast<OdInt64>(static_cast<const OdDbMline*>(object)->m_vertices.size())));
  }
  bool fromTag(OdDbObject*, const OdDxfTag&, OdDbTagContext&) const override { return true; }
  void fileOut(const OdDbObject*, OdDbDwgFiler*) const override {}
  void fileIn(OdDbObject*, OdDbDwgFiler*) const override {}
  bool isEqual(const OdDbObject*, const OdDbObject*) const override { return true; }
};

// The vertices after group 210: per vertex 11 position, 12 direction, 13
// miter, and per element 74 + 41 distances and 75 + 42 fill distances.
struct OdDbMlineVerticesCodec : OdDbFieldCodec {
  using Vertex = OdDbMline::Vertex;
  std::vector<int> codes() const override { return {11, 12, 13, 74, 41, 75, 42}; }
  static std::vector<Vertex>& vertices(OdDbObject* o) { return static_cast<OdDbMline*>(o)->m_vertices; }
  static const std::vector<Vertex>& vertices(const OdDbObject* o) {
    return static_cast<const OdDbMline*>(o)->m_vertices;
  }

  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    for (const Vertex& v : vertices(object)) {
      out.push_back(OdDxfTag::point(11, v.position.x, v.position.y, v.position.z));
      out.push_back(OdDxfTag::point(12, v.direction.x, v.direction.y, v.direction.z));
      out.push_back(OdDxfTag::point(13, v.miter.x, v.miter.y, v.miter.z));
      for (const auto& element : v.elements) {
        out.push_back(OdDxfTag::integer(74, static_cast<OdInt64>(element.parameters.size())));
        for (double p : element.parameters) out.push_back(OdDxfTag::real(41, p));
        out.push_back(OdDxfTag::integer(75, static_cast<OdInt64>(element.fillParameters.size())));
        for (double p : element.fillParameters) out.push_back(OdDxfTag::real(42, p));
      }
    }
  }
  void beginRead(OdDbObject* object) const override { vertices(object).clear(); }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext&) const override {
    std::vector<Vertex>& list = vertices(object);
    if (tag.code == 11) {
      list.emplace_back();
      list.back().position = tagPoint(tag);
      return true;
    }
    if (list.empty()) return false;
    Vertex& v = list.back();
    switch (tag.code) {
      case 12: v.direction = tagPoint(tag).asVector(); return true;
      case 13: v.miter = tagPoint(tag).asVector(); return true;
      case 74: v.elements.emplace_back(); return true;
      case 75: return !v.elements.empty();
      case 41:
        if (v.elements.empty()) return false;
        v.elements.back().parameters.append(tag.x);
        return true;
      case 42:
        if (v.elements.empty()) return false;
        v.elements.back().fillParameters.append(tag.x);
        return true;
      default: return false;
    }
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* f) const override {
    f->wrInt32(static_cast<OdInt32>(vertices(object).size()));
    for (const Vertex& v : vertices(object)) {
      f->wrPoint3d(v.position);
      f->wrVector3d(v.direction);
      f->wrVector3d(v.miter);
      f->wrInt32(static_cast<OdInt32>(v.elements.size()));
      for (const auto& element : v.elements) {
        for (const OdGeDoubleArray* list : {&element.parameters, &element.fillParameters}) {
          f->wrInt32(static_cast<OdInt32>(list->size()));
          for (double p : *list) f->wrDouble(p);
        }
      }
    }
  }
  void fileIn(OdDbObject* object, OdDbDwgFiler* f) const override {
    std::vector<Vertex>& list = vertices(object);
    list.resize(static_cast<size_t>(f->rdInt32()));
    for (Vertex& v : list) {
      v.position = f->rdPoint3d();
      v.direction = f->rdVector3d();
      v.miter = f->rdVector3d();
      v.elements.resize(static_cast<size_t>(f->rdInt32()));
      for (auto& element : v.elements) {
        for (OdGeDoubleArray* values : {&element.parameters, &element.fillParameters}) {
          values->resize(static_cast<size_t>(f->rdInt32()));
          for (double& p : *values) p = f->rdDouble();
        }
      }
    }
  }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    const auto &p = vertices(a), &q = vertices(b);
    return std::equal(p.begin(), p.end(), q.begin(), q.end(), [](const Vertex& u, const Vertex& v) {
      return samePoint(u.position, v.position) && sameVector(u.direction, v.direction) &&
             sameVector(u.miter, v.miter) &&
             std::equal(u.elements.begin(), u.elements.end(), v.elements.begin(), v.elements.end(),
                        [](const auto& e, const auto& f) {
                          return sameDoubles(e.parameters, f.parameters) &&
                                 sameDoubles(e.fillParameters, f.fillParameters);
                        });
    });
  }
};

const OdDbClassSchema& OdDbMline::classSchema() {
  static const OdDbMlineCountCodec countCodec;
  static const OdDbMlineVerticesCodec verticesCodec;
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
