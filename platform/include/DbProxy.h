// Objects and entities of classes the platform does not model: the DXF name
// and every group are kept as read and written back unchanged. Those in the
// proxy form (ACAD_PROXY_OBJECT / ACAD_PROXY_ENTITY) name their class by its
// number in the classes section (group 91).
#pragma once

#include "DbEntity.h"

class OdDbProxyObject : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbProxyObject);
  ODDB_DECLARE_SCHEMA();

 public:
  OdString dxfName() const override { return m_dxfName; }
  void setDxfName(const OdString& name) { m_dxfName = name; }
  OdString originalClassName() const;

 protected:
  OdString m_dxfName;
};

class OdDbProxyEntity : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbProxyEntity);
  ODDB_DECLARE_SCHEMA();

 public:
  OdString dxfName() const override { return m_dxfName; }
  void setDxfName(const OdString& name) { m_dxfName = name; }
  OdString originalClassName() const;
  // Extents from the points found in the kept groups (10..18 of the entity's own parts).
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;

 protected:
  OdString m_dxfName;
};
