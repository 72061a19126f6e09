// Leaders: a line or spline with an arrowhead from a feature to an
// annotation (multiline text, a tolerance or a block reference).
#pragma once

#include "DbEntity.h"
#include "Ge/GePoint3dArray.h"

class OdDbLeader : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbLeader);
  ODDB_DECLARE_SCHEMA();

 public:
  enum AnnotationType { kMText = 0, kFcf = 1, kBlockRef = 2, kNoAnnotation = 3 };

  // Vertices in world coordinates, from the arrowhead to the annotation.
  int numVertices() const { return static_cast<int>(m_vertices.size()); }
  OdGePoint3d vertexAt(int index) const;
  bool setVertexAt(int index, const OdGePoint3d& point);
  void appendVertex(const OdGePoint3d& point);
  void removeLastVertex();
  OdGePoint3d firstVertex() const { return vertexAt(0); }
  OdGePoint3d lastVertex() const { return vertexAt(numVertices() - 1); }

  OdDbObjectId dimensionStyle() const { return m_styleId; }
  void setDimensionStyle(const OdDbObjectId& styleId) { assertWriteEnabled(); m_styleId = styleId; }
  bool hasArrowHead() const { return m_hasArrowHead != 0; }
  void enableArrowHead() { assertWriteEnabled(); m_hasArrowHead = 1; }
  void disableArrowHead() { assertWriteEnabled(); m_hasArrowHead = 0; }
  bool isSplined() const { return m_pathType != 0; }
  void setToSplineLeader() { assertWriteEnabled(); m_pathType = 1; }
  void setToStraightLeader() { assertWriteEnabled(); m_pathType = 0; }
  bool hasHookLine() const { return m_hasHookLine != 0; }
  // True when the hook line points the way of the horizontal direction.
  bool isHookLineOnXDir() const { return m_hookLineDirection != 0; }

  AnnotationType annotationType() const { return static_cast<AnnotationType>(m_annotationType); }
  OdDbObjectId annotationObjId() const { return m_annotationId; }
  void attachAnnotation(const OdDbObjectId& annotationId, AnnotationType type);
  void detachAnnotation();
  double annoHeight() const { return m_textHeight; }
  double annoWidth() const { return m_textWidth; }
  void setAnnotationSize(double height, double width);
  // Offset of the last vertex from the annotation's placement point.
  OdGeVector3d annotationOffset() const { return m_annotationOffset; }
  void setAnnotationOffset(const OdGeVector3d& offset) { assertWriteEnabled(); m_annotationOffset = offset; }
  OdGeVector3d blockOffset() const { return m_blockOffset; }
  OdGeVector3d horizontalDirection() const { return m_horizontalDirection; }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal);

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;
  // The database's current dimension style.
  void subSetDatabaseDefaults(OdDbDatabase* database) override;

 protected:

  OdDbObjectId m_styleId;
  OdInt16 m_hasArrowHead = 1;
  OdInt16 m_pathType = 0;
  OdInt16 m_annotationType = kNoAnnotation;
  OdInt16 m_hookLineDirection = 0;
  OdInt16 m_hasHookLine = 0;
  double m_textHeight = 0;
  double m_textWidth = 0;
  OdGePoint3dArray m_vertices;
  OdInt16 m_blockColor = 0;
  OdDbObjectId m_annotationId;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  OdGeVector3d m_horizontalDirection = OdGeVector3d(1, 0, 0);
  OdGeVector3d m_blockOffset;
  OdGeVector3d m_annotationOffset;
};
using OdDbLeaderPtr = OdSmartPtr<OdDbLeader>;
