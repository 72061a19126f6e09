// Multilines: parallel lines (elements) along a path, drawn by a multiline style.
#pragma once

#include "DbEntity.h"
#include "Ge/GePoint3dArray.h"

class OdDbMline : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbMline);
  ODDB_DECLARE_SCHEMA();

 public:
  enum Justification { kTop = 0, kZero = 1, kBottom = 2 };
  enum Flags { kHasVertices = 1, kClosed = 2, kSuppressStartCaps = 4, kSuppressEndCaps = 8 };

  // One vertex of the path with, per element, the distances that place the
  // element (along the miter) and its breaks, and the fill's distances.
  struct Element {
    OdGeDoubleArray parameters;
    OdGeDoubleArray fillParameters;
  };
  struct Vertex {
    OdGePoint3d position;
    OdGeVector3d direction;  // of the segment that starts here
    OdGeVector3d miter;
    std::vector<Element> elements;
  };

  int numVertices() const { return static_cast<int>(m_vertices.size()); }
  OdGePoint3d vertexAt(int index) const;
  const Vertex& vertexDataAt(int index) const;
  // Appends a vertex: the previous segment's direction and the miters are
  // recomputed; element distances are copied from the previous vertex.
  void appendSeg(const OdGePoint3d& point);

  OdString styleName() const { return m_styleName; }
  OdDbObjectId styleId() const { return m_styleId; }
  void setStyle(const OdDbObjectId& styleId, const OdString& name);
  double scale() const { return m_scale; }
  void setScale(double scale) { assertWriteEnabled(); m_scale = scale; }
  Justification justification() const { return static_cast<Justification>(m_justification); }
  void setJustification(Justification justification) {
    assertWriteEnabled();
    m_justification = justification;
  }
  bool closedMline() const { return m_flags & kClosed; }
  void setClosedMline(bool closed);
  int numElements() const { return m_numElements; }
  void setNumElements(int count) { assertWriteEnabled(); m_numElements = static_cast<OdInt16>(count); }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal);

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

 protected:
  OdString m_styleName;
  OdDbObjectId m_styleId;
  double m_scale = 1.0;
  OdInt16 m_justification = kTop;
  OdInt16 m_flags = 0;
  OdInt16 m_numElements = 0;
  OdGePoint3d m_startPoint;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  std::vector<Vertex> m_vertices;
};
using OdDbMlinePtr = OdSmartPtr<OdDbMline>;
