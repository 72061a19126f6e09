// Filled planar shapes with up to four corners (SOLID, TRACE) and the
// three-dimensional face (3DFACE).
#pragma once

#include "DbEntity.h"

// The state SOLID and TRACE share: four corners in the object coordinate
// system of the normal (as the file stores them), a thickness and the
// normal. The area is the quadrilateral of corners 0, 1, 3, 2 (the third
// and fourth corner are crossed); equal third and fourth corners make a
// triangle. Not a class of its own in files: both are written with the
// AcDbTrace marker.
class OdDbPlanarQuad : public OdDbEntity {
 public:
  // Corners in world coordinates; index 0..3.
  OdResult getPointAt(OdUInt16 index, OdGePoint3d& point) const;
  OdResult setPointAt(OdUInt16 index, const OdGePoint3d& point);
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) { assertWriteEnabled(); m_thickness = thickness; }
  OdGeVector3d normal() const { return m_normal; }
  // Keeps the corners where they are in the world.
  void setNormal(const OdGeVector3d& normal);

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

 protected:
  static std::vector<OdDbField> quadFields();
  OdGePoint3d& corner(OdUInt16 index);
  const OdGePoint3d& corner(OdUInt16 index) const { return const_cast<OdDbPlanarQuad*>(this)->corner(index); }
  void worldCorners(OdGePoint3d corners[4]) const;

  OdGePoint3d m_point0, m_point1, m_point2, m_point3;  // object coordinates
  double m_thickness = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
};

class OdDbSolid : public OdDbPlanarQuad {
  ODRX_DECLARE_MEMBERS(OdDbSolid);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbSolid() = default;
  // Corners in world coordinates, in the plane of the world x-y axes.
  OdDbSolid(const OdGePoint3d& p0, const OdGePoint3d& p1, const OdGePoint3d& p2, const OdGePoint3d& p3);
};
using OdDbSolidPtr = OdSmartPtr<OdDbSolid>;

class OdDbTrace : public OdDbPlanarQuad {
  ODRX_DECLARE_MEMBERS(OdDbTrace);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbTrace() = default;
  OdDbTrace(const OdGePoint3d& p0, const OdGePoint3d& p1, const OdGePoint3d& p2, const OdGePoint3d& p3);
};
using OdDbTracePtr = OdSmartPtr<OdDbTrace>;

// A face in space with three or four corners (the fourth equal to the third
// for a triangle) in world coordinates, each edge visible or not.
class OdDbFace : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbFace);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbFace() = default;
  OdDbFace(const OdGePoint3d& p0, const OdGePoint3d& p1, const OdGePoint3d& p2, const OdGePoint3d& p3,
           bool e0Visible = true, bool e1Visible = true, bool e2Visible = true, bool e3Visible = true);

  // Index 0..3.
  OdResult getVertexAt(OdUInt16 index, OdGePoint3d& point) const;
  OdResult setVertexAt(OdUInt16 index, const OdGePoint3d& point);
  // Edge i runs from vertex i to vertex i + 1 (the last one back to vertex 0).
  OdResult isEdgeVisibleAt(OdUInt16 index, bool& visible) const;
  OdResult makeEdgeVisibleAt(OdUInt16 index);
  OdResult makeEdgeInvisibleAt(OdUInt16 index);
  // The invisible-edge flags as the file stores them (bit i = edge i hidden).
  OdInt16 invisibleEdgeFlags() const { return m_invisibleEdges; }

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

 protected:
  OdGePoint3d& vertex(OdUInt16 index);
  const OdGePoint3d& vertex(OdUInt16 index) const { return const_cast<OdDbFace*>(this)->vertex(index); }

  OdGePoint3d m_point0, m_point1, m_point2, m_point3;
  OdInt16 m_invisibleEdges = 0;
};
using OdDbFacePtr = OdSmartPtr<OdDbFace>;
