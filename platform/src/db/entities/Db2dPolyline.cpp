// 2-d polylines: planar POLYLINE entities that own 2-d VERTEX entities.
#include <cmath>

#include "DbCurveSupport.h"
#include "DbPolyline.h"
#include "DbVertexList.h"
#include "Ge/GeOcs.h"

const OdDbClassSchema& OdDb2dPolyline::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {{L"AcDb2dPolyline",
        {
            odCustomField(OdDbVertexListOps::verticesFollowCodec(), L"verticesFollow"),
            odField<&OdDb2dPolyline::m_basePoint>(10).named(L"basePoint"),
            odField<&OdDb2dPolyline::m_thickness>(39).optional().named(L"thickness"),
            odField<&OdDb2dPolyline::m_flags>(70).named(L"flags"),
            odField<&OdDb2dPolyline::m_defaultStartWidth>(40).optional().named(L"defaultStartWidth"),
            odField<&OdDb2dPolyline::m_defaultEndWidth>(41).optional().named(L"defaultEndWidth"),
            odField<&OdDb2dPolyline::m_curveType>(75).optional().named(L"curveType"),
            odField<&OdDb2dPolyline::m_normal>(210).optional().named(L"normal"),
        }}}};
  return schema;
}

OdDb::Poly2dType OdDb2dPolyline::polyType() const {
  if (m_flags & kSplineFitFlag) return m_curveType == 5 ? OdDb::k2dQuadSplinePoly : OdDb::k2dCubicSplinePoly;
  if (m_flags & kCurveFitFlag) return OdDb::k2dFitCurvePoly;
  return OdDb::k2dSimplePoly;
}

void OdDb2dPolyline::setClosed(bool closed) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(closed ? (m_flags | kClosedFlag) : (m_flags & ~kClosedFlag));
}

void OdDb2dPolyline::setLinetypeGenerationOn(bool on) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(on ? (m_flags | kPlinegenFlag) : (m_flags & ~kPlinegenFlag));
}

void OdDb2dPolyline::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  assertWriteEnabled();
  m_normal = normal.normal();
}

void OdDb2dPolyline::setConstantWidth(double width) {
  assertWriteEnabled();
  m_defaultStartWidth = m_defaultEndWidth = width;
  for (const OdDbVertexPtr& vertex : OdDbVertexListOps::open(m_vertexList, OdDb::kForWrite)) {
    auto* v = static_cast<OdDb2dVertex*>(vertex.get());
    v->setStartWidth(width);
    v->setEndWidth(width);
  }
}

// ---------------------------------------------------------------- vertices

OdDbObjectId OdDb2dPolyline::appendVertex(OdDb2dVertex* vertex) {
  return OdDbVertexListOps::append(this, m_vertexList, vertex);
}

OdDbObjectId OdDb2dPolyline::insertVertexAt(unsigned int index, OdDb2dVertex* vertex) {
  return OdDbVertexListOps::insert(this, m_vertexList, index, vertex);
}

OdDbObjectIteratorPtr OdDb2dPolyline::vertexIterator() const {
  return OdDbVertexListOps::iterator(this, const_cast<OdDbPolylineVertexList&>(m_vertexList));
}

unsigned int OdDb2dPolyline::numVerts() const { return OdDbVertexListOps::count(m_vertexList); }

OdGePoint3d OdDb2dPolyline::vertexPosition(const OdDb2dVertex& vertex) const {
  const OdGePoint3d ocs = vertex.position();
  return odgeOcsToWcs(OdGePoint2d(ocs.x, ocs.y), elevation(), m_normal);
}

OdDbObjectIdArray* OdDb2dPolyline::subentityIdsInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.ids;
}

OdDbObjectId* OdDb2dPolyline::sequenceEndIdInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.sequenceEnd;
}

OdResult OdDb2dPolyline::subErase(bool erasing) {
  OdDbVertexListOps::flush(this, m_vertexList);
  OdDbVertexListOps::erase(m_vertexList, erasing);
  return eOk;
}

void OdDb2dPolyline::dwgOutFields(OdDbDwgFiler* filer) const {
  OdDbCurve::dwgOutFields(filer);
  OdDbVertexListOps::fileOut(m_vertexList, filer);
}

OdResult OdDb2dPolyline::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbCurve::dwgInFields(filer);
  OdDbVertexListOps::fileIn(m_vertexList, filer);
  return result;
}

void OdDb2dPolyline::copyFrom(const OdRxObject* source) {
  OdDbCurve::copyFrom(source);
  OdDbVertexListOps::copy(static_cast<const OdDb2dPolyline*>(source)->m_vertexList, m_vertexList);
}

void OdDb2dPolyline::subSetDatabaseDefaults(OdDbDatabase*) { OdDbVertexListOps::flush(this, m_vertexList); }

// ---------------------------------------------------------------- geometry

void OdDb2dPolyline::buildPath(OdDbBulgePath& path) const {
  path = OdDbBulgePath();
  for (const OdDbVertexPtr& vertex : OdDbVertexListOps::open(m_vertexList)) {
    if (vertex->vertexFlags() & OdDbVertex::kSplineControlVertex) continue;
    const auto* v = static_cast<const OdDb2dVertex*>(vertex.get());
    path.points.emplace_back(v->position().x, v->position().y);
    // Spline-fit polylines run straight between their fit vertices.
    path.bulges.push_back((m_flags & kSplineFitFlag) ? 0.0 : v->bulge());
  }
  path.closed = isClosed();
  path.elevation = elevation();
  path.normal = m_normal;
}

OdResult OdDb2dPolyline::getEndParam(double& param) const {
  OdDbBulgePath path;
  buildPath(path);
  if (path.points.empty()) return eDegenerateGeometry;
  param = path.endParam();
  return eOk;
}

OdResult OdDb2dPolyline::getStartPoint(OdGePoint3d& point) const {
  OdDbBulgePath path;
  buildPath(path);
  if (path.points.empty()) return eDegenerateGeometry;
  point = path.vertexWorld(0);
  return eOk;
}

OdResult OdDb2dPolyline::getEndPoint(OdGePoint3d& point) const {
  OdDbBulgePath path;
  buildPath(path);
  if (path.points.empty()) return eDegenerateGeometry;
  point = path.vertexWorld(path.closed ? 0 : static_cast<int>(path.points.size()) - 1);
  return eOk;
}

OdResult OdDb2dPolyline::getPointAtParam(double param, OdGePoint3d& point) const {
  OdDbBulgePath path;
  buildPath(path);
  return path.pointAtParam(param, point);
}

OdResult OdDb2dPolyline::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  OdDbBulgePath path;
  buildPath(path);
  return path.paramAtPoint(point, param);
}

OdResult OdDb2dPolyline::getDistAtParam(double param, double& dist) const {
  OdDbBulgePath path;
  buildPath(path);
  return path.distAtParam(param, dist);
}

double OdDb2dPolyline::length() const {
  OdDbBulgePath path;
  buildPath(path);
  return path.length();
}

OdResult OdDb2dPolyline::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool) const {
  OdDbBulgePath path;
  buildPath(path);
  if (path.points.empty()) return eDegenerateGeometry;
  closest = path.closestPoint(point);
  return eOk;
}

OdResult OdDb2dPolyline::getArea(double& area) const {
  OdDbBulgePath path;
  buildPath(path);
  area = std::fabs(path.signedArea());
  return eOk;
}

OdResult OdDb2dPolyline::getGeomExtents(OdGeExtents3d& extents) const {
  OdDbBulgePath path;
  buildPath(path);
  extents = OdGeExtents3d();
  if (path.points.empty()) return eInvalidExtents;
  path.addExtents(extents);
  odDbAddThickness(extents, m_normal, m_thickness);
  return eOk;
}

OdResult OdDb2dPolyline::transformBy(const OdGeMatrix3d& xform) {
  OdDbPlaneMap map;
  OdResult status = odDbMapPlane(m_normal, xform, map);
  if (status != eOk) return status;
  std::vector<OdDbVertexPtr> vertices = OdDbVertexListOps::open(m_vertexList, OdDb::kForWrite);
  bool needsSimilarity = m_defaultStartWidth != 0.0 || m_defaultEndWidth != 0.0;
  for (const OdDbVertexPtr& vertex : vertices) {
    const auto* v = static_cast<const OdDb2dVertex*>(vertex.get());
    needsSimilarity = needsSimilarity || v->bulge() != 0.0 || v->startWidth() != 0.0 || v->endWidth() != 0.0;
  }
  if (!map.uniform && needsSimilarity) return eCannotScaleNonUniformly;
  assertWriteEnabled();
  const double oldElevation = elevation();
  double newElevation = 0.0;
  map.mapPoint(OdGePoint2d(), oldElevation, newElevation);
  for (const OdDbVertexPtr& vertex : vertices) {
    auto* v = static_cast<OdDb2dVertex*>(vertex.get());
    v->assertWriteEnabled();
    const OdGePoint3d old = v->position();
    double unused;
    const OdGePoint2d mapped = map.mapPoint(OdGePoint2d(old.x, old.y), oldElevation, unused);
    // The vertex's own z moves as a coordinate of the plane's system does.
    const OdGePoint3d ownZ = map.ocsToOcs * old;
    v->m_position.set(mapped.x, mapped.y, ownZ.z);
    if (map.mirrored) v->m_bulge = -v->m_bulge;
    v->m_startWidth *= map.scale;
    v->m_endWidth *= map.scale;
    if (v->isTangentUsed()) v->m_tangent = map.mapAngle(v->m_tangent);
  }
  m_basePoint = OdGePoint3d(0.0, 0.0, newElevation);
  m_normal = map.normal;
  m_thickness *= map.thicknessScale;
  m_defaultStartWidth *= map.scale;
  m_defaultEndWidth *= map.scale;
  return eOk;
}

OdResult OdDb2dPolyline::explode(OdRxObjectPtrArray& entities) const {
  OdDbBulgePath path;
  buildPath(path);
  path.explode(this, m_thickness, entities);
  return eOk;
}
