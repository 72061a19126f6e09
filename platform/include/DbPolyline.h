// Polylines: the lightweight polyline (LWPOLYLINE) that keeps its vertices
// inline, and the old-style polylines (POLYLINE) that own one VERTEX entity
// per vertex closed by a SEQEND: 2-d polylines, 3-d polylines, polyface
// meshes and polygon meshes.
#pragma once

#include <vector>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "Ge/GeCircArc2d.h"
#include "Ge/GeLineSeg2d.h"
#include "Ge/GeLineSeg3d.h"
#include "Ge/GePoint2dArray.h"

class OdDb2dPolyline;
class OdDbBulgePath;

// ---------------------------------------------------------------- lightweight polyline

// A planar polyline with its vertices inline: 2-d points in the object
// coordinate system of its normal at a common elevation, each with start and
// end width and the bulge of the segment that starts there (see Ge/GeBulge.h).
// The parameter is the vertex index: segment i runs from parameter i to i + 1.
class OdDbPolyline : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDbPolyline);
  ODDB_DECLARE_SCHEMA();

 public:
  enum SegType { kLine, kArc, kCoincident, kPoint, kEmpty };

  unsigned int numVerts() const { return static_cast<unsigned int>(m_vertices.size()); }
  // World position of a vertex.
  OdResult getPointAt(unsigned int index, OdGePoint3d& point) const;
  // Position of a vertex in the polyline's plane (object coordinates).
  OdResult getPointAt(unsigned int index, OdGePoint2d& point) const;
  OdGePoint2d getPoint2dAt(unsigned int index) const;
  OdResult setPointAt(unsigned int index, const OdGePoint2d& point);
  // Inserts a vertex before `index` (numVerts() appends). Negative widths take the
  // constant width of the polyline when it has one, else 0.
  OdResult addVertexAt(unsigned int index, const OdGePoint2d& point, double bulge = 0.0,
                       double startWidth = -1.0, double endWidth = -1.0, OdInt32 vertexIdentifier = 0);
  OdResult removeVertexAt(unsigned int index);
  // Removes every vertex.
  void reset();

  OdResult getBulgeAt(unsigned int index, double& bulge) const;
  double getBulgeAt(unsigned int index) const;
  OdResult setBulgeAt(unsigned int index, double bulge);
  OdResult getWidthsAt(unsigned int index, double& startWidth, double& endWidth) const;
  OdResult setWidthsAt(unsigned int index, double startWidth, double endWidth);
  OdInt32 getVertexIdentifierAt(unsigned int index) const;
  OdResult setVertexIdentifierAt(unsigned int index, OdInt32 identifier);
  // The common width of every segment; eNotApplicable when the widths differ.
  OdResult getConstantWidth(double& width) const;
  void setConstantWidth(double width);
  bool isOnlyLines() const;

  void setClosed(bool closed);
  bool hasPlinegen() const { return (m_flags & kPlinegen) != 0; }
  void setPlinegen(bool on);
  double elevation() const { return m_elevation; }
  void setElevation(double elevation) {
    assertWriteEnabled();
    m_elevation = elevation;
  }
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) {
    assertWriteEnabled();
    m_thickness = thickness;
  }
  OdGeVector3d normal() const { return m_normal; }
  // Changes the plane; the vertices keep their object coordinates.
  void setNormal(const OdGeVector3d& normal);

  // The kind of the segment that starts at a vertex.
  SegType segType(unsigned int index) const;
  OdResult getLineSegAt(unsigned int index, OdGeLineSeg2d& segment) const;
  OdResult getLineSegAt(unsigned int index, OdGeLineSeg3d& segment) const;
  // The arc runs from the segment's start to its end (clockwise for a negative bulge).
  OdResult getArcSegAt(unsigned int index, OdGeCircArc2d& arc) const;
  // Counter-clockwise about the normal (from the segment's end for a negative bulge).
  OdResult getArcSegAt(unsigned int index, OdGeCircArc3d& arc) const;

  // Fills this polyline from a 2-d polyline (vertices, widths, bulges, plane,
  // properties). Curve-fit and spline-fit polylines cannot be converted: eNotApplicable.
  OdResult convertFrom(const OdDb2dPolyline* source);
  // Gives a 2-d polyline this polyline's geometry as new vertices. The target
  // must have no vertices yet; see OdDb2dPolyline::appendVertex.
  OdResult convertTo(OdDb2dPolyline* target) const;

  bool isClosed() const override { return (m_flags & kClosed) != 0; }
  OdResult getStartParam(double& param) const override {
    param = 0;
    return eOk;
  }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override;
  OdResult getEndPoint(OdGePoint3d& point) const override;
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  OdResult getParamAtDist(double dist, double& param) const;
  double length() const;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  // The area enclosed, bulges included (an open polyline counts as closed by a straight line).
  OdResult getArea(double& area) const override;
  // The centre line's extents with the true extents of arcs, swept by the thickness.
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Arcs need a similarity in the plane (else eCannotScaleNonUniformly); mirroring
  // negates the bulges so that every segment keeps its points.
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  // Lines and arcs in the polyline's plane with its properties and thickness.
  OdResult explode(OdRxObjectPtrArray& entities) const override;

  struct Vertex {
    OdGePoint2d point;
    double startWidth = 0.0;
    double endWidth = 0.0;
    double bulge = 0.0;
    OdInt32 identifier = 0;
    bool operator==(const Vertex& other) const;
  };

 protected:
  enum : OdInt16 { kClosed = 1, kPlinegen = 128 };

  OdInt16 m_flags = 0;
  double m_elevation = 0;
  double m_thickness = 0;
  std::vector<Vertex> m_vertices;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  double m_widthRead = 0;  // the constant width while a file is read
  // Whether the vertices' widths are written (no constant width): worked
  // out once before the groups are written.
  mutable bool m_writeWidths = true;

  friend struct OdDbPolylineWidthCodec;
};
using OdDbPolylinePtr = OdSmartPtr<OdDbPolyline>;

// ---------------------------------------------------------------- vertices

// One vertex of an old-style polyline. Its position is in world coordinates,
// except for 2-d vertices (object coordinates of the polyline's plane).
class OdDbVertex : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbVertex);
  ODDB_DECLARE_SCHEMA();

 public:
  // Bits of the vertex flags (group 70).
  enum Flags : OdInt16 {
    kExtraCurveFitVertex = 1,
    kTangentDefined = 2,
    kSplineFitVertex = 8,
    kSplineControlVertex = 16,
    k3dPolylineVertex = 32,
    kMeshVertex = 64,
    kPolyFaceVertex = 128,
  };

  OdGePoint3d position() const { return m_position; }
  void setPosition(const OdGePoint3d& point) {
    assertWriteEnabled();
    m_position = point;
  }
  OdInt16 vertexFlags() const { return m_flags; }

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  OdGePoint3d m_position;
  OdInt16 m_flags = 0;
};
using OdDbVertexPtr = OdSmartPtr<OdDbVertex>;

namespace OdDb {
enum Vertex2dType { k2dVertex = 0, k2dSplineCtlVertex = 1, k2dSplineFitVertex = 2, k2dCurveFitVertex = 3 };
enum Vertex3dType { k3dSimpleVertex = 0, k3dControlVertex = 1, k3dFitVertex = 2 };
enum Poly2dType { k2dSimplePoly = 0, k2dFitCurvePoly = 1, k2dQuadSplinePoly = 2, k2dCubicSplinePoly = 3 };
enum Poly3dType { k3dSimplePoly = 0, k3dQuadSplinePoly = 1, k3dCubicSplinePoly = 2 };
enum PolyMeshType { kSimpleMesh = 0, kQuadSurfaceMesh = 5, kCubicSurfaceMesh = 6, kBezierSurfaceMesh = 8 };
}  // namespace OdDb

class OdDb2dVertex : public OdDbVertex {
  ODRX_DECLARE_MEMBERS(OdDb2dVertex);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDb2dVertex() = default;
  explicit OdDb2dVertex(const OdGePoint3d& ocsPosition, double bulge = 0.0, double startWidth = 0.0,
                        double endWidth = 0.0);

  OdDb::Vertex2dType vertexType() const;
  double startWidth() const { return m_startWidth; }
  void setStartWidth(double width) {
    assertWriteEnabled();
    m_startWidth = width;
  }
  double endWidth() const { return m_endWidth; }
  void setEndWidth(double width) {
    assertWriteEnabled();
    m_endWidth = width;
  }
  double bulge() const { return m_bulge; }
  void setBulge(double bulge) {
    assertWriteEnabled();
    m_bulge = bulge;
  }
  bool isTangentUsed() const { return (m_flags & kTangentDefined) != 0; }
  void useTangent();
  void ignoreTangent();
  double tangent() const { return m_tangent; }
  void setTangent(double angle);
  OdInt32 vertexIdentifier() const { return m_identifier; }
  void setVertexIdentifier(OdInt32 identifier) {
    assertWriteEnabled();
    m_identifier = identifier;
  }
  // A 2-d vertex has no plane of its own: its polyline moves it.
  OdResult getGeomExtents(OdGeExtents3d& extents) const override { return eInvalidExtents; }
  OdResult transformBy(const OdGeMatrix3d& xform) override { return eNotApplicable; }

 protected:
  double m_startWidth = 0;
  double m_endWidth = 0;
  double m_bulge = 0;
  double m_tangent = 0;
  OdInt32 m_identifier = 0;

  friend class OdDb2dPolyline;
};
using OdDb2dVertexPtr = OdSmartPtr<OdDb2dVertex>;

class OdDb3dPolylineVertex : public OdDbVertex {
  ODRX_DECLARE_MEMBERS(OdDb3dPolylineVertex);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDb3dPolylineVertex() { m_flags = k3dPolylineVertex; }
  explicit OdDb3dPolylineVertex(const OdGePoint3d& position) : OdDb3dPolylineVertex() {
    m_position = position;
  }
  OdDb::Vertex3dType vertexType() const;
};
using OdDb3dPolylineVertexPtr = OdSmartPtr<OdDb3dPolylineVertex>;

class OdDbPolygonMeshVertex : public OdDbVertex {
  ODRX_DECLARE_MEMBERS(OdDbPolygonMeshVertex);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbPolygonMeshVertex() { m_flags = kMeshVertex; }
  explicit OdDbPolygonMeshVertex(const OdGePoint3d& position) : OdDbPolygonMeshVertex() {
    m_position = position;
  }
  OdDb::Vertex3dType vertexType() const;
};
using OdDbPolygonMeshVertexPtr = OdSmartPtr<OdDbPolygonMeshVertex>;

class OdDbPolyFaceMeshVertex : public OdDbVertex {
  ODRX_DECLARE_MEMBERS(OdDbPolyFaceMeshVertex);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbPolyFaceMeshVertex() { m_flags = kMeshVertex | kPolyFaceVertex; }
  explicit OdDbPolyFaceMeshVertex(const OdGePoint3d& position) : OdDbPolyFaceMeshVertex() {
    m_position = position;
  }
};
using OdDbPolyFaceMeshVertexPtr = OdSmartPtr<OdDbPolyFaceMeshVertex>;

// One face of a polyface mesh: up to four 1-based indices into the mesh's
// vertices; a negative index hides the edge that starts at that corner, 0
// leaves the corner unused.
class OdDbFaceRecord : public OdDbVertex {
  ODRX_DECLARE_MEMBERS(OdDbFaceRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbFaceRecord() { m_flags = kPolyFaceVertex; }
  // The vertex index at a corner (0..3), with its sign.
  OdResult getVertexAt(int corner, OdInt16& index) const;
  OdResult setVertexAt(int corner, OdInt16 index);
  bool isEdgeVisibleAt(int corner) const;
  OdResult makeEdgeVisibleAt(int corner);
  OdResult makeEdgeInvisibleAt(int corner);
  OdResult getGeomExtents(OdGeExtents3d& extents) const override { return eInvalidExtents; }
  OdResult transformBy(const OdGeMatrix3d& xform) override { return eOk; }

 protected:
  OdInt16& corner(int index);

  OdInt16 m_index0 = 0;
  OdInt16 m_index1 = 0;
  OdInt16 m_index2 = 0;
  OdInt16 m_index3 = 0;
};
using OdDbFaceRecordPtr = OdSmartPtr<OdDbFaceRecord>;

// ---------------------------------------------------------------- vertex lists

// The vertices an old-style polyline owns, in order, and its end marker. A
// polyline that is not in a database (a new one, or a copy) keeps its
// vertices in memory. They join the database with the polyline: when it gets
// the database's defaults on being appended, else on the first change or walk
// of its vertices (subentityIds(), vertexIterator(), appendVertex(), erase).
struct OdDbPolylineVertexList {
  OdDbObjectIdArray ids;
  OdDbObjectId sequenceEnd;
  std::vector<OdDbVertexPtr> pending;
};

// ---------------------------------------------------------------- old-style polylines

// A planar polyline of VERTEX entities. Vertices are in the object coordinate
// system of the normal; the polyline's "10" point carries the elevation in z.
// Curve-fit and spline-fit polylines draw through their fit vertices; the
// spline frame (control vertices) is not part of the curve.
class OdDb2dPolyline : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDb2dPolyline);
  ODDB_DECLARE_SCHEMA();

 public:
  // Bits of the polyline flags (group 70).
  enum Flags : OdInt16 {
    kClosedFlag = 1,
    kCurveFitFlag = 2,
    kSplineFitFlag = 4,
    k3dFlag = 8,
    kMeshFlag = 16,
    kMeshClosedNFlag = 32,
    kPolyFaceFlag = 64,
    kPlinegenFlag = 128,
  };

  OdDb::Poly2dType polyType() const;
  OdInt16 polylineFlags() const { return m_flags; }
  void setClosed(bool closed);
  void makeClosed() { setClosed(true); }
  void makeOpen() { setClosed(false); }
  bool isLinetypeGenerationOn() const { return (m_flags & kPlinegenFlag) != 0; }
  void setLinetypeGenerationOn(bool on);
  double elevation() const { return m_basePoint.z; }
  void setElevation(double elevation) {
    assertWriteEnabled();
    m_basePoint.z = elevation;
  }
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) {
    assertWriteEnabled();
    m_thickness = thickness;
  }
  OdGeVector3d normal() const { return m_normal; }
  // Changes the plane; the vertices keep their object coordinates.
  void setNormal(const OdGeVector3d& normal);
  double defaultStartWidth() const { return m_defaultStartWidth; }
  void setDefaultStartWidth(double width) {
    assertWriteEnabled();
    m_defaultStartWidth = width;
  }
  double defaultEndWidth() const { return m_defaultEndWidth; }
  void setDefaultEndWidth(double width) {
    assertWriteEnabled();
    m_defaultEndWidth = width;
  }
  // Sets the default widths and the widths of every vertex.
  void setConstantWidth(double width);

  // Vertices. appendVertex adds one to the database when the polyline is in
  // one (making the end marker when needed) and keeps it in memory otherwise.
  OdDbObjectId appendVertex(OdDb2dVertex* vertex);
  // Inserts before the vertex at `index` (the count appends).
  OdDbObjectId insertVertexAt(unsigned int index, OdDb2dVertex* vertex);
  OdDbObjectIteratorPtr vertexIterator() const;
  unsigned int numVerts() const;
  // The world position of one of this polyline's vertices.
  OdGePoint3d vertexPosition(const OdDb2dVertex& vertex) const;

  OdDbObjectIdArray* subentityIdsInternal() override;
  OdDbObjectId* sequenceEndIdInternal() override;
  bool acceptsSubentity(const OdDbEntity* sub) const override { return sub->isKindOf(OdDb2dVertex::desc()); }

  bool isClosed() const override { return (m_flags & kClosedFlag) != 0; }
  OdResult getStartParam(double& param) const override {
    param = 0;
    return eOk;
  }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override;
  OdResult getEndPoint(OdGePoint3d& point) const override;
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  double length() const;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  OdResult getArea(double& area) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Moves the vertices with the plane (bulges negate when mirrored); arcs or
  // widths need a similarity in the plane, else eCannotScaleNonUniformly.
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  OdResult explode(OdRxObjectPtrArray& entities) const override;

  void dwgOutFields(OdDbDwgFiler* filer) const override;
  OdResult dwgInFields(OdDbDwgFiler* filer) override;
  // A copy holds copies of the vertices in memory, never the source's ids.
  void copyFrom(const OdRxObject* source) override;
  // Vertices kept in memory join the database with the polyline.
  void subSetDatabaseDefaults(OdDbDatabase* database) override;

 protected:
  OdResult subErase(bool erasing) override;
  // The drawn centre line: every vertex but the spline frame's control vertices.
  void buildPath(OdDbBulgePath& path) const;

  OdGePoint3d m_basePoint;  // (0, 0, elevation) as files carry it
  double m_thickness = 0;
  OdInt16 m_flags = 0;
  double m_defaultStartWidth = 0;
  double m_defaultEndWidth = 0;
  OdInt16 m_curveType = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  OdDbPolylineVertexList m_vertexList;

  friend class OdDbPolyline;
};
using OdDb2dPolylinePtr = OdSmartPtr<OdDb2dPolyline>;

// A polyline through 3-d points (world coordinates). Spline-fit polylines draw
// through their fit vertices.
class OdDb3dPolyline : public OdDbCurve {
  ODRX_DECLARE_MEMBERS(OdDb3dPolyline);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDb::Poly3dType polyType() const;
  OdInt16 polylineFlags() const { return m_flags; }
  void setClosed(bool closed);
  void makeClosed() { setClosed(true); }
  void makeOpen() { setClosed(false); }

  OdDbObjectId appendVertex(OdDb3dPolylineVertex* vertex);
  OdDbObjectId insertVertexAt(unsigned int index, OdDb3dPolylineVertex* vertex);
  OdDbObjectIteratorPtr vertexIterator() const;
  unsigned int numVerts() const;

  OdDbObjectIdArray* subentityIdsInternal() override;
  OdDbObjectId* sequenceEndIdInternal() override;
  bool acceptsSubentity(const OdDbEntity* sub) const override {
    return sub->isKindOf(OdDb3dPolylineVertex::desc());
  }

  bool isClosed() const override { return (m_flags & 1) != 0; }
  OdResult getStartParam(double& param) const override {
    param = 0;
    return eOk;
  }
  OdResult getEndParam(double& param) const override;
  OdResult getStartPoint(OdGePoint3d& point) const override;
  OdResult getEndPoint(OdGePoint3d& point) const override;
  OdResult getPointAtParam(double param, OdGePoint3d& point) const override;
  OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const override;
  OdResult getDistAtParam(double param, double& dist) const override;
  double length() const;
  OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest,
                             bool extend = false) const override;
  // The area of the polygon (closed by a straight line) in its best-fitting plane.
  OdResult getArea(double& area) const override;
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  // Lines with the polyline's properties.
  OdResult explode(OdRxObjectPtrArray& entities) const override;

  void dwgOutFields(OdDbDwgFiler* filer) const override;
  OdResult dwgInFields(OdDbDwgFiler* filer) override;
  void copyFrom(const OdRxObject* source) override;
  void subSetDatabaseDefaults(OdDbDatabase* database) override;

 protected:
  OdResult subErase(bool erasing) override;
  // The points the curve runs through, in order.
  std::vector<OdGePoint3d> curvePoints() const;

  OdGePoint3d m_basePoint;
  OdInt16 m_flags = 8;
  OdInt16 m_curveType = 0;
  OdDbPolylineVertexList m_vertexList;
};
using OdDb3dPolylinePtr = OdSmartPtr<OdDb3dPolyline>;

// A mesh of polygonal faces: first its vertices, then face records that
// index them. The vertex and face counts (groups 71, 72) follow the list.
class OdDbPolyFaceMesh : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbPolyFaceMesh);
  ODDB_DECLARE_SCHEMA();

 public:
  OdInt16 numVertices() const { return m_numVertices; }
  OdInt16 numFaces() const { return m_numFaces; }
  // Vertices come before faces: appending a vertex after a face fails (eVertexAfterFace).
  OdResult appendVertex(OdDbPolyFaceMeshVertex* vertex, OdDbObjectId* id = nullptr);
  OdResult appendFaceRecord(OdDbFaceRecord* face, OdDbObjectId* id = nullptr);
  OdDbObjectIteratorPtr vertexIterator() const;

  OdDbObjectIdArray* subentityIdsInternal() override;
  OdDbObjectId* sequenceEndIdInternal() override;
  bool acceptsSubentity(const OdDbEntity* sub) const override {
    return sub->isKindOf(OdDbPolyFaceMeshVertex::desc()) || sub->isKindOf(OdDbFaceRecord::desc());
  }

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

  void dwgOutFields(OdDbDwgFiler* filer) const override;
  OdResult dwgInFields(OdDbDwgFiler* filer) override;
  void copyFrom(const OdRxObject* source) override;
  void subSetDatabaseDefaults(OdDbDatabase* database) override;
  // Counts the vertices and faces again (done before the groups are written).
  void updateCounts();

 protected:
  OdResult subErase(bool erasing) override;

  OdGePoint3d m_basePoint;
  OdInt16 m_flags = 64;
  OdInt16 m_numVertices = 0;
  OdInt16 m_numFaces = 0;
  OdDbPolylineVertexList m_vertexList;
};
using OdDbPolyFaceMeshPtr = OdSmartPtr<OdDbPolyFaceMesh>;

// A grid of M x N vertices, row by row (M rows of N vertices), optionally
// closed in either direction.
class OdDbPolygonMesh : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbPolygonMesh);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDb::PolyMeshType polyMeshType() const { return static_cast<OdDb::PolyMeshType>(m_surfaceType); }
  OdInt16 mSize() const { return m_mSize; }
  OdResult setMSize(OdInt16 size);
  OdInt16 nSize() const { return m_nSize; }
  OdResult setNSize(OdInt16 size);
  bool isMClosed() const { return (m_flags & 1) != 0; }
  bool isNClosed() const { return (m_flags & 32) != 0; }
  void makeMClosed() { setFlag(1, true); }
  void makeMOpen() { setFlag(1, false); }
  void makeNClosed() { setFlag(32, true); }
  void makeNOpen() { setFlag(32, false); }
  OdInt16 mSurfaceDensity() const { return m_mDensity; }
  OdInt16 nSurfaceDensity() const { return m_nDensity; }

  OdDbObjectId appendVertex(OdDbPolygonMeshVertex* vertex);
  OdDbObjectIteratorPtr vertexIterator() const;

  OdDbObjectIdArray* subentityIdsInternal() override;
  OdDbObjectId* sequenceEndIdInternal() override;
  bool acceptsSubentity(const OdDbEntity* sub) const override {
    return sub->isKindOf(OdDbPolygonMeshVertex::desc());
  }

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

  void dwgOutFields(OdDbDwgFiler* filer) const override;
  OdResult dwgInFields(OdDbDwgFiler* filer) override;
  void copyFrom(const OdRxObject* source) override;
  void subSetDatabaseDefaults(OdDbDatabase* database) override;

 protected:
  OdResult subErase(bool erasing) override;
  void setFlag(OdInt16 bit, bool on);

  OdGePoint3d m_basePoint;
  OdInt16 m_flags = 16;
  OdInt16 m_mSize = 0;
  OdInt16 m_nSize = 0;
  OdInt16 m_mDensity = 0;
  OdInt16 m_nDensity = 0;
  OdInt16 m_surfaceType = 0;
  OdDbPolylineVertexList m_vertexList;
};
using OdDbPolygonMeshPtr = OdSmartPtr<OdDbPolygonMesh>;

// ---------------------------------------------------------------- reading

// All four old-style polyline classes are named "POLYLINE" in files and all
// vertex classes "VERTEX"; the flags (group 70) tell them apart.
// Polyline flags: 64 polyface mesh, 16 polygon mesh, 8 3-d polyline, else 2-d.
OdRxClass* odDbPolylineClassForFlags(int flags);
// Vertex flags: 128 with 64 polyface mesh vertex, 128 alone face record, 64
// polygon mesh vertex, 32 3-d polyline vertex, else 2-d vertex.
OdRxClass* odDbVertexClassForFlags(int vertexFlags);
// The vertex class that a polyline (already read) accepts for a vertex with
// these flags: files that leave out or garble vertex flags still give each
// vertex its polyline's kind. Falls back to odDbVertexClassForFlags.
OdRxClass* odDbVertexClassForPolyline(const OdDbEntity* polyline, int vertexFlags);
