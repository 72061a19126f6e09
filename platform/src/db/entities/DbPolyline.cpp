// Lightweight polylines: planar vertices kept inline, with widths and bulges.
#include "DbPolyline.h"

#include <algorithm>
#include <cmath>

#include "DbCurveSupport.h"
#include "DbVertexList.h"
#include "Ge/GeOcs.h"

ODDB_DEFINE_MEMBERS(OdDbPolyline, OdDbCurve, L"LWPOLYLINE")

bool OdDbPolyline::Vertex::operator==(const Vertex& other) const {
  return point.x == other.point.x && point.y == other.point.y && startWidth == other.startWidth &&
         endWidth == other.endWidth && bulge == other.bulge && identifier == other.identifier;
}

// Group 43: the constant width, written when every vertex has the same start
// and end width (the vertices then carry no 40/41). When read, it is the width
// of the vertices that follow without widths of their own.
struct OdDbPolylineWidthCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {43}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    double width;
    if (static_cast<const OdDbPolyline*>(object)->getConstantWidth(width) == eOk)
      out.push_back(OdDxfTag::real(43, width));
  }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext&) const override {
    if (tag.type != OdDxf::ValueType::kDouble) return false;
    static_cast<OdDbPolyline*>(object)->m_widthRead = tag.x;
    return true;
  }
  void beginRead(OdDbObject* object) const override { static_cast<OdDbPolyline*>(object)->m_widthRead = 0; }
  void fileOut(const OdDbObject*, OdDbDwgFiler*) const override {}
  void fileIn(OdDbObject*, OdDbDwgFiler*) const override {}
  bool isEqual(const OdDbObject*, const OdDbObject*) const override { return true; }
};

const OdDbClassSchema& OdDbPolyline::classSchema() {
  // Per vertex: groups 10 (2-d point), 40/41 (widths, when not constant), 42
  // (bulge, when not zero) and 91 (vertex identifier, R2010 on, when set).
  // A vertex read takes the constant width (43) read before it.
  static bool (*const writesWidths)(const void*, const OdDbObject*, const OdDbTagContext&) =
      [](const void*, const OdDbObject* object, const OdDbTagContext&) {
        return static_cast<const OdDbPolyline*>(object)->m_writeWidths;
      };
  static const OdDbArraySpec vertexRecords = [] {
    OdDbArraySpec spec = odRecords<std::vector<Vertex>>({
        odField<&Vertex::point>(10).required().named(L"vertex"),
        odField<&Vertex::startWidth>(40).writtenWhen(writesWidths).named(L"startWidth"),
        odField<&Vertex::endWidth>(41).writtenWhen(writesWidths).named(L"endWidth"),
        odField<&Vertex::bulge>(42).optional().named(L"bulge"),
        odField<&Vertex::identifier>(91).optional().since(OdDb::vAC24).named(L"identifier"),
    });
    spec.beginRecord = [](void* record, const OdDbObject* object) {
      auto* vertex = static_cast<Vertex*>(record);
      vertex->startWidth = vertex->endWidth = static_cast<const OdDbPolyline*>(object)->m_widthRead;
    };
    return spec;
  }();
  static const OdDbField vertexList = odArrayField<&OdDbPolyline::m_vertices>(vertexRecords, L"vertices");
  static const OdDbRecordCodec count({odCountField<&OdDbPolyline::m_vertices>(90, vertexList)});
  static const OdDbPolylineWidthCodec width;
  static const OdDbRecordCodec vertices({vertexList});
  static const OdDbClassSchema schema = [] {
    OdDbClassSchema s{
        &OdDbCurve::classSchema(),
        {{L"AcDbPolyline",
          {
              odCustomField(count, L"count"),
              odField<&OdDbPolyline::m_flags>(70).named(L"flags"),
              odCustomField(width, L"constantWidth"),
              odField<&OdDbPolyline::m_elevation>(38).optional().named(L"elevation"),
              odField<&OdDbPolyline::m_thickness>(39).optional().named(L"thickness"),
              odCustomField(vertices, L"vertices"),
              odField<&OdDbPolyline::m_normal>(210).optional().named(L"normal"),
          }}}};
    s.hooks.beforeWrite = [](const OdDbObject* object) {
      auto* polyline = static_cast<const OdDbPolyline*>(object);
      double width;
      polyline->m_writeWidths = polyline->getConstantWidth(width) != eOk;
    };
    return s;
  }();
  return schema;
}

namespace {

OdDbBulgePath pathOf(const std::vector<OdDbPolyline::Vertex>& vertices, bool closed, double elevation,
                     const OdGeVector3d& normal) {
  OdDbBulgePath path;
  for (const auto& v : vertices) {
    path.points.push_back(v.point);
    path.bulges.push_back(v.bulge);
  }
  path.closed = closed;
  path.elevation = elevation;
  path.normal = normal;
  return path;
}

}  // namespace

// ---------------------------------------------------------------- vertices

OdResult OdDbPolyline::getPointAt(unsigned int index, OdGePoint3d& point) const {
  if (index >= numVerts()) return eInvalidIndex;
  point = odgeOcsToWcs(m_vertices[index].point, m_elevation, m_normal);
  return eOk;
}

OdResult OdDbPolyline::getPointAt(unsigned int index, OdGePoint2d& point) const {
  if (index >= numVerts()) return eInvalidIndex;
  point = m_vertices[index].point;
  return eOk;
}

OdGePoint2d OdDbPolyline::getPoint2dAt(unsigned int index) const {
  if (index >= numVerts()) throw OdError_InvalidIndex();
  return m_vertices[index].point;
}

OdResult OdDbPolyline::setPointAt(unsigned int index, const OdGePoint2d& point) {
  if (index >= numVerts()) return eInvalidIndex;
  assertWriteEnabled();
  m_vertices[index].point = point;
  return eOk;
}

OdResult OdDbPolyline::addVertexAt(unsigned int index, const OdGePoint2d& point, double bulge,
                                   double startWidth, double endWidth, OdInt32 vertexIdentifier) {
  if (index > numVerts()) return eInvalidIndex;
  double constant = 0.0;
  if (getConstantWidth(constant) != eOk) constant = 0.0;
  assertWriteEnabled();
  Vertex v;
  v.point = point;
  v.bulge = bulge;
  v.startWidth = startWidth < 0.0 ? constant : startWidth;
  v.endWidth = endWidth < 0.0 ? constant : endWidth;
  v.identifier = vertexIdentifier;
  m_vertices.insert(m_vertices.begin() + index, v);
  return eOk;
}

OdResult OdDbPolyline::removeVertexAt(unsigned int index) {
  if (index >= numVerts()) return eInvalidIndex;
  assertWriteEnabled();
  m_vertices.erase(m_vertices.begin() + index);
  return eOk;
}

void OdDbPolyline::reset() {
  assertWriteEnabled();
  m_vertices.clear();
}

OdResult OdDbPolyline::getBulgeAt(unsigned int index, double& bulge) const {
  if (index >= numVerts()) return eInvalidIndex;
  bulge = m_vertices[index].bulge;
  return eOk;
}

double OdDbPolyline::getBulgeAt(unsigned int index) const {
  return index < numVerts() ? m_vertices[index].bulge : 0.0;
}

OdResult OdDbPolyline::setBulgeAt(unsigned int index, double bulge) {
  if (index >= numVerts()) return eInvalidIndex;
  assertWriteEnabled();
  m_vertices[index].bulge = bulge;
  return eOk;
}

OdResult OdDbPolyline::getWidthsAt(unsigned int index, double& startWidth, double& endWidth) const {
  if (index >= numVerts()) return eInvalidIndex;
  startWidth = m_vertices[index].startWidth;
  endWidth = m_vertices[index].endWidth;
  return eOk;
}

OdResult OdDbPolyline::setWidthsAt(unsigned int index, double startWidth, double endWidth) {
  if (index >= numVerts()) return eInvalidIndex;
  if (startWidth < 0.0 || endWidth < 0.0) return eNegativeValueNotAllowed;
  assertWriteEnabled();
  m_vertices[index].startWidth = startWidth;
  m_vertices[index].endWidth = endWidth;
  return eOk;
}

OdInt32 OdDbPolyline::getVertexIdentifierAt(unsigned int index) const {
  return index < numVerts() ? m_vertices[index].identifier : 0;
}

OdResult OdDbPolyline::setVertexIdentifierAt(unsigned int index, OdInt32 identifier) {
  if (index >= numVerts()) return eInvalidIndex;
  assertWriteEnabled();
  m_vertices[index].identifier = identifier;
  return eOk;
}

OdResult OdDbPolyline::getConstantWidth(double& width) const {
  width = m_vertices.empty() ? 0.0 : m_vertices.front().startWidth;
  for (const auto& v : m_vertices) {
    if (v.startWidth != width || v.endWidth != width) return eNotApplicable;
  }
  return eOk;
}

void OdDbPolyline::setConstantWidth(double width) {
  assertWriteEnabled();
  for (auto& v : m_vertices) v.startWidth = v.endWidth = width;
}

bool OdDbPolyline::isOnlyLines() const {
  return std::all_of(m_vertices.begin(), m_vertices.end(), [](const Vertex& v) { return v.bulge == 0.0; });
}

void OdDbPolyline::setClosed(bool closed) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(closed ? (m_flags | kClosed) : (m_flags & ~kClosed));
}

void OdDbPolyline::setPlinegen(bool on) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(on ? (m_flags | kPlinegen) : (m_flags & ~kPlinegen));
}

void OdDbPolyline::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  assertWriteEnabled();
  m_normal = normal.normal();
}

// ---------------------------------------------------------------- segments

OdDbPolyline::SegType OdDbPolyline::segType(unsigned int index) const {
  const OdDbBulgePath path = pathOf(m_vertices, isClosed(), m_elevation, m_normal);
  if (numVerts() == 1 && index == 0) return kPoint;
  if (static_cast<int>(index) >= path.numSegments()) return kEmpty;
  if (path.isDegenerate(static_cast<int>(index))) return kCoincident;
  return path.isArc(static_cast<int>(index)) ? kArc : kLine;
}

OdResult OdDbPolyline::getLineSegAt(unsigned int index, OdGeLineSeg2d& segment) const {
  const SegType type = segType(index);
  if (type != kLine && type != kCoincident) return type == kArc ? eNotApplicable : eInvalidIndex;
  const unsigned int next = index + 1 < numVerts() ? index + 1 : 0;
  segment.set(m_vertices[index].point, m_vertices[next].point);
  return eOk;
}

OdResult OdDbPolyline::getLineSegAt(unsigned int index, OdGeLineSeg3d& segment) const {
  OdGeLineSeg2d flat;
  OdResult status = getLineSegAt(index, flat);
  if (status != eOk) return status;
  segment.set(odgeOcsToWcs(flat.startPoint(), m_elevation, m_normal),
              odgeOcsToWcs(flat.endPoint(), m_elevation, m_normal));
  return eOk;
}

OdResult OdDbPolyline::getArcSegAt(unsigned int index, OdGeCircArc2d& arc) const {
  const SegType type = segType(index);
  if (type != kArc) return type == kEmpty || type == kPoint ? eInvalidIndex : eNotApplicable;
  const unsigned int next = index + 1 < numVerts() ? index + 1 : 0;
  arc.set(m_vertices[index].point, m_vertices[next].point, m_vertices[index].bulge);
  return eOk;
}

OdResult OdDbPolyline::getArcSegAt(unsigned int index, OdGeCircArc3d& arc) const {
  const SegType type = segType(index);
  if (type != kArc) return type == kEmpty || type == kPoint ? eInvalidIndex : eNotApplicable;
  pathOf(m_vertices, isClosed(), m_elevation, m_normal).arcAt(static_cast<int>(index), arc);
  return eOk;
}

// ---------------------------------------------------------------- conversion

OdResult OdDbPolyline::convertFrom(const OdDb2dPolyline* source) {
  if (!source) return eNullEntityPointer;
  if (source->polyType() != OdDb::k2dSimplePoly) return eNotApplicable;
  std::vector<Vertex> converted;
  for (const OdDbVertexPtr& vertex : OdDbVertexListOps::open(source->m_vertexList)) {
    const auto* v = static_cast<const OdDb2dVertex*>(vertex.get());
    if (v->vertexFlags() & (OdDbVertex::kSplineControlVertex | OdDbVertex::kSplineFitVertex |
                            OdDbVertex::kExtraCurveFitVertex)) {
      return eNotApplicable;
    }
    Vertex out;
    out.point.set(v->position().x, v->position().y);
    out.startWidth = v->startWidth();
    out.endWidth = v->endWidth();
    out.bulge = v->bulge();
    out.identifier = v->vertexIdentifier();
    converted.push_back(out);
  }
  assertWriteEnabled();
  setPropertiesFrom(source);
  m_vertices = std::move(converted);
  m_flags = static_cast<OdInt16>((source->isClosed() ? kClosed : 0) |
                                 (source->isLinetypeGenerationOn() ? kPlinegen : 0));
  m_elevation = source->elevation();
  m_thickness = source->thickness();
  m_normal = source->normal();
  return eOk;
}

OdResult OdDbPolyline::convertTo(OdDb2dPolyline* target) const {
  if (!target) return eNullEntityPointer;
  if (target->numVerts() != 0) return eInvalidInput;
  target->setPropertiesFrom(this);
  target->setNormal(m_normal);
  target->setElevation(m_elevation);
  target->setThickness(m_thickness);
  target->setClosed(isClosed());
  target->setLinetypeGenerationOn(hasPlinegen());
  double width;
  if (getConstantWidth(width) == eOk) {
    target->setDefaultStartWidth(width);
    target->setDefaultEndWidth(width);
  }
  for (const Vertex& v : m_vertices) {
    OdDb2dVertexPtr vertex = OdDb2dVertex::createObject();
    vertex->setPosition(OdGePoint3d(v.point.x, v.point.y, m_elevation));
    vertex->setStartWidth(v.startWidth);
    vertex->setEndWidth(v.endWidth);
    vertex->setBulge(v.bulge);
    vertex->setVertexIdentifier(v.identifier);
    vertex->setPropertiesFrom(this);
    target->appendVertex(vertex.get());
  }
  return eOk;
}

// ---------------------------------------------------------------- curve

OdResult OdDbPolyline::getEndParam(double& param) const {
  if (m_vertices.empty()) return eDegenerateGeometry;
  param = pathOf(m_vertices, isClosed(), m_elevation, m_normal).endParam();
  return eOk;
}

OdResult OdDbPolyline::getStartPoint(OdGePoint3d& point) const {
  if (m_vertices.empty()) return eDegenerateGeometry;
  return getPointAt(0, point);
}

OdResult OdDbPolyline::getEndPoint(OdGePoint3d& point) const {
  if (m_vertices.empty()) return eDegenerateGeometry;
  return getPointAt(isClosed() ? 0 : numVerts() - 1, point);
}

OdResult OdDbPolyline::getPointAtParam(double param, OdGePoint3d& point) const {
  return pathOf(m_vertices, isClosed(), m_elevation, m_normal).pointAtParam(param, point);
}

OdResult OdDbPolyline::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  return pathOf(m_vertices, isClosed(), m_elevation, m_normal).paramAtPoint(point, param);
}

OdResult OdDbPolyline::getDistAtParam(double param, double& dist) const {
  return pathOf(m_vertices, isClosed(), m_elevation, m_normal).distAtParam(param, dist);
}

OdResult OdDbPolyline::getParamAtDist(double dist, double& param) const {
  return pathOf(m_vertices, isClosed(), m_elevation, m_normal).paramAtDist(dist, param);
}

double OdDbPolyline::length() const { return pathOf(m_vertices, isClosed(), m_elevation, m_normal).length(); }

OdResult OdDbPolyline::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool) const {
  if (m_vertices.empty()) return eDegenerateGeometry;
  closest = pathOf(m_vertices, isClosed(), m_elevation, m_normal).closestPoint(point);
  return eOk;
}

OdResult OdDbPolyline::getArea(double& area) const {
  area = std::fabs(pathOf(m_vertices, isClosed(), m_elevation, m_normal).signedArea());
  return eOk;
}

OdResult OdDbPolyline::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  if (m_vertices.empty()) return eInvalidExtents;
  pathOf(m_vertices, isClosed(), m_elevation, m_normal).addExtents(extents);
  odDbAddThickness(extents, m_normal, m_thickness);
  return eOk;
}

OdResult OdDbPolyline::transformBy(const OdGeMatrix3d& xform) {
  OdDbPlaneMap map;
  OdResult status = odDbMapPlane(m_normal, xform, map);
  if (status != eOk) return status;
  double width;
  const bool hasWidth = getConstantWidth(width) != eOk || width != 0.0;
  if (!map.uniform && (!isOnlyLines() || hasWidth)) return eCannotScaleNonUniformly;
  assertWriteEnabled();
  double newElevation = 0.0;
  map.mapPoint(OdGePoint2d(), m_elevation, newElevation);
  for (size_t i = 0; i < m_vertices.size(); ++i) {
    Vertex& v = m_vertices[i];
    double elevation;
    v.point = map.mapPoint(v.point, m_elevation, elevation);
    if (i == 0) newElevation = elevation;
    if (map.mirrored) v.bulge = -v.bulge;
    v.startWidth *= map.scale;
    v.endWidth *= map.scale;
  }
  m_elevation = newElevation;
  m_normal = map.normal;
  m_thickness *= map.thicknessScale;
  return eOk;
}

OdResult OdDbPolyline::explode(OdRxObjectPtrArray& entities) const {
  pathOf(m_vertices, isClosed(), m_elevation, m_normal).explode(this, m_thickness, entities);
  return eOk;
}
