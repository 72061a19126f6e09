// Point entities: a single location, drawn by the drawing's point style.
#pragma once

#include "DbEntity.h"

class OdDbPoint : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbPoint);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbPoint() = default;
  explicit OdDbPoint(const OdGePoint3d& position) : m_position(position) {}

  // World coordinates (the file stores them as they are).
  OdGePoint3d position() const { return m_position; }
  void setPosition(const OdGePoint3d& position) { assertWriteEnabled(); m_position = position; }
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) { assertWriteEnabled(); m_thickness = thickness; }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal);
  // Angle of the x axis of the plane the point was drawn in (used by point
  // styles that draw a figure), in radians.
  double ecsRotation() const { return m_ecsRotation; }
  void setEcsRotation(double angle) { assertWriteEnabled(); m_ecsRotation = angle; }

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

 protected:
  OdGePoint3d m_position;
  double m_thickness = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  double m_ecsRotation = 0;
};
using OdDbPointPtr = OdSmartPtr<OdDbPoint>;
