// 3-d polylines: POLYLINE entities through 3-d VERTEX entities (world coordinates).
#include <algorithm>
#include <cmath>
#include <limits>

#include "DbCurveSupport.h"
#include "DbPolyline.h"
#include "DbVertexList.h"

const OdDbClassSchema& OdDb3dPolyline::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {{L"AcDb3dPolyline",
        {
            odCustomField(OdDbVertexListOps::verticesFollowCodec(), L"verticesFollow"),
            odField<&OdDb3dPolyline::m_basePoint>(10).named(L"basePoint"),
            odField<&OdDb3dPolyline::m_flags>(70).defaultsInt(OdDb2dPolyline::k3dFlag).named(L"flags"),
            odField<&OdDb3dPolyline::m_curveType>(75).optional().named(L"curveType"),
        }}}};
  return schema;
}

namespace {

// Straight segments through points; parameter i at point i.
struct PointPath {
  std::vector<OdGePoint3d> points;
  bool closed = false;

  int numSegments() const {
    const int n = static_cast<int>(points.size());
    return n < 2 ? 0 : (closed ? n : n - 1);
  }
  const OdGePoint3d& from(int segment) const { return points[static_cast<size_t>(segment)]; }
  const OdGePoint3d& to(int segment) const {
    return points[(static_cast<size_t>(segment) + 1) % points.size()];
  }

  bool locate(double param, int& segment, double& fraction) const {
    const int count = numSegments();
    if (count == 0 || param < -1e-10 || param > count + 1e-10) return false;
    param = std::clamp(param, 0.0, static_cast<double>(count));
    segment = std::min(static_cast<int>(std::floor(param)), count - 1);
    fraction = param - segment;
    return true;
  }
  double length() const {
    double total = 0.0;
    for (int i = 0; i < numSegments(); ++i) total += from(i).distanceTo(to(i));
    return total;
  }
  OdGePoint3d closest(const OdGePoint3d& point, double* param) const {
    OdGePoint3d best = points.front();
    double bestDistance = point.distanceTo(best), bestParam = 0.0;
    for (int i = 0; i < numSegments(); ++i) {
      const OdGeVector3d d = to(i) - from(i);
      const double lengthSqrd = d.lengthSqrd();
      const double t =
          lengthSqrd > 0 ? std::clamp((point - from(i)).dotProduct(d) / lengthSqrd, 0.0, 1.0) : 0.0;
      const OdGePoint3d candidate = from(i) + d * t;
      if (point.distanceTo(candidate) < bestDistance) {
        bestDistance = point.distanceTo(candidate);
        best = candidate;
        bestParam = i + t;
      }
    }
    if (param) *param = bestParam;
    return best;
  }
};

PointPath pathOf(const std::vector<OdGePoint3d>& points, bool closed) {
  PointPath path;
  path.points = points;
  path.closed = closed;
  return path;
}

}  // namespace

OdDb::Poly3dType OdDb3dPolyline::polyType() const {
  if (!(m_flags & OdDb2dPolyline::kSplineFitFlag)) return OdDb::k3dSimplePoly;
  return m_curveType == 5 ? OdDb::k3dQuadSplinePoly : OdDb::k3dCubicSplinePoly;
}

void OdDb3dPolyline::setClosed(bool closed) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(closed ? (m_flags | 1) : (m_flags & ~1));
}

OdDbObjectId OdDb3dPolyline::appendVertex(OdDb3dPolylineVertex* vertex) {
  return OdDbVertexListOps::append(this, m_vertexList, vertex);
}

OdDbObjectId OdDb3dPolyline::insertVertexAt(unsigned int index, OdDb3dPolylineVertex* vertex) {
  return OdDbVertexListOps::insert(this, m_vertexList, index, vertex);
}

OdDbObjectIteratorPtr OdDb3dPolyline::vertexIterator() const {
  return OdDbVertexListOps::iterator(this, const_cast<OdDbPolylineVertexList&>(m_vertexList));
}

unsigned int OdDb3dPolyline::numVerts() const { return OdDbVertexListOps::count(m_vertexList); }

OdDbObjectIdArray* OdDb3dPolyline::subentityIdsInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.ids;
}

OdDbObjectId* OdDb3dPolyline::sequenceEndIdInternal() {
  OdDbVertexListOps::flush(this, m_vertexList);
  return &m_vertexList.sequenceEnd;
}

OdResult OdDb3dPolyline::subErase(bool erasing) {
  OdDbVertexListOps::flush(this, m_vertexList);
  OdDbVertexListOps::erase(m_vertexList, erasing);
  return eOk;
}

void OdDb3dPolyline::dwgOutFields(OdDbDwgFiler* filer) const {
  OdDbCurve::dwgOutFields(filer);
  OdDbVertexListOps::fileOut(m_vertexList, filer);
}

OdResult OdDb3dPolyline::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbCurve::dwgInFields(filer);
  OdDbVertexListOps::fileIn(m_vertexList, filer);
  return result;
}

void OdDb3dPolyline::copyFrom(const OdRxObject* source) {
  OdDbCurve::copyFrom(source);
  OdDbVertexListOps::copy(static_cast<const OdDb3dPolyline*>(source)->m_vertexList, m_vertexList);
}

void OdDb3dPolyline::subSetDatabaseDefaults(OdDbDatabase*) { OdDbVertexListOps::flush(this, m_vertexList); }

std::vector<OdGePoint3d> OdDb3dPolyline::curvePoints() const {
  std::vector<OdGePoint3d> points;
  for (const OdDbVertexPtr& vertex : OdDbVertexListOps::open(m_vertexList)) {
    // The spline frame is not part of the curve.
    if (!(vertex->vertexFlags() & OdDbVertex::kSplineControlVertex)) points.push_back(vertex->position());
  }
  return points;
}

OdResult OdDb3dPolyline::getEndParam(double& param) const {
  const PointPath path = pathOf(curvePoints(), isClosed());
  if (path.points.empty()) return eDegenerateGeometry;
  param = path.numSegments();
  return eOk;
}

OdResult OdDb3dPolyline::getStartPoint(OdGePoint3d& point) const {
  const std::vector<OdGePoint3d> points = curvePoints();
  if (points.empty()) return eDegenerateGeometry;
  point = points.front();
  return eOk;
}

OdResult OdDb3dPolyline::getEndPoint(OdGePoint3d& point) const {
  const std::vector<OdGePoint3d> points = curvePoints();
  if (points.empty()) return eDegenerateGeometry;
  point = isClosed() ? points.front() : points.back();
  return eOk;
}

OdResult OdDb3dPolyline::getPointAtParam(double param, OdGePoint3d& point) const {
  const PointPath path = pathOf(curvePoints(), isClosed());
  int segment;
  double fraction;
  if (!path.locate(param, segment, fraction)) {
    if (path.points.size() == 1 && std::fabs(param) <= 1e-10) {
      point = path.points.front();
      return eOk;
    }
    return eInvalidInput;
  }
  point = path.from(segment) + (path.to(segment) - path.from(segment)) * fraction;
  return eOk;
}

OdResult OdDb3dPolyline::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  const PointPath path = pathOf(curvePoints(), isClosed());
  if (path.points.empty()) return eDegenerateGeometry;
  OdGeExtents3d box;
  box.addPoints(path.points);
  const OdGePoint3d closest = path.closest(point, &param);
  if (closest.distanceTo(point) > odDbOnCurveTolerance(box.diagonal().length() + point.asVector().length())) {
    return ePointNotOnEntity;
  }
  return eOk;
}

OdResult OdDb3dPolyline::getDistAtParam(double param, double& dist) const {
  const PointPath path = pathOf(curvePoints(), isClosed());
  int segment;
  double fraction;
  if (!path.locate(param, segment, fraction)) return eInvalidInput;
  dist = 0.0;
  for (int i = 0; i < segment; ++i) dist += path.from(i).distanceTo(path.to(i));
  dist += fraction * path.from(segment).distanceTo(path.to(segment));
  return eOk;
}

double OdDb3dPolyline::length() const { return pathOf(curvePoints(), isClosed()).length(); }

OdResult OdDb3dPolyline::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool) const {
  const PointPath path = pathOf(curvePoints(), isClosed());
  if (path.points.empty()) return eDegenerateGeometry;
  closest = path.closest(point, nullptr);
  return eOk;
}

OdResult OdDb3dPolyline::getArea(double& area) const {
  const std::vector<OdGePoint3d> points = curvePoints();
  // Newell's vector: twice the area of the polygon projected on its best plane.
  OdGeVector3d twice;
  for (size_t i = 0; i < points.size(); ++i) {
    twice += points[i].asVector().crossProduct(points[(i + 1) % points.size()].asVector());
  }
  area = 0.5 * twice.length();
  return eOk;
}

OdResult OdDb3dPolyline::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  extents.addPoints(curvePoints());
  return extents.isValidExtents() ? eOk : eInvalidExtents;
}

OdResult OdDb3dPolyline::transformBy(const OdGeMatrix3d& xform) {
  std::vector<OdDbVertexPtr> vertices = OdDbVertexListOps::open(m_vertexList, OdDb::kForWrite);
  assertWriteEnabled();
  for (const OdDbVertexPtr& vertex : vertices) vertex->transformBy(xform);
  return eOk;
}

OdResult OdDb3dPolyline::explode(OdRxObjectPtrArray& entities) const {
  const PointPath path = pathOf(curvePoints(), isClosed());
  for (int i = 0; i < path.numSegments(); ++i) {
    if (path.from(i).isEqualTo(path.to(i))) continue;
    OdDbLinePtr line = OdDbLine::createObject();
    line->setStartPoint(path.from(i));
    line->setEndPoint(path.to(i));
    line->setPropertiesFrom(this);
    entities.append(OdRxObjectPtr(line.get()));
  }
  return eOk;
}
