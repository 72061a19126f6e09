// Entities whose shape is kept by the solid modeler: regions, bodies and
// three-dimensional solids. Their modeler data is kept exactly as read (the
// encoded lines of groups 1 and 3; from R2013 on the data may sit in the
// ACDSDATA section, and the entity then carries only a flag and an id).
#pragma once

#include "DbEntity.h"

class OdDbModelerGeometry : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbModelerGeometry);
  ODDB_DECLARE_SCHEMA();

 public:
  // One line of the encoded modeler data: group 1 starts a line, group 3
  // continues a long one.
  struct DataLine {
    OdInt16 code = 1;
    OdString text;
  };

  OdInt16 modelerFormatVersion() const { return m_version; }
  const std::vector<DataLine>& modelerData() const { return m_lines; }
  void setModelerData(OdInt16 version, const std::vector<DataLine>& lines);
  // True when the data is stored in the file's ACDSDATA section.
  bool hasDataInSection() const { return m_hasDataInSection; }
  // Identifies the data in the ACDSDATA section.
  OdString dataId() const { return m_dataId; }
  bool isNull() const { return m_lines.empty() && !m_hasDataInSection; }

  // The modeler data is not evaluated: no extents, and transformations
  // cannot be applied to it.
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 protected:
  friend struct OdDbModelerDataCodec;

  OdInt16 m_version = 0;
  std::vector<DataLine> m_lines;
  bool m_hasDataInSection = false;
  OdString m_dataId;
};

class OdDbRegion : public OdDbModelerGeometry {
  ODRX_DECLARE_MEMBERS(OdDbRegion);
  ODDB_DECLARE_SCHEMA();
};
using OdDbRegionPtr = OdSmartPtr<OdDbRegion>;

class OdDbBody : public OdDbModelerGeometry {
  ODRX_DECLARE_MEMBERS(OdDbBody);
  ODDB_DECLARE_SCHEMA();
};
using OdDbBodyPtr = OdSmartPtr<OdDbBody>;

class OdDb3dSolid : public OdDbModelerGeometry {
  ODRX_DECLARE_MEMBERS(OdDb3dSolid);
  ODDB_DECLARE_SCHEMA();

 public:
  // The object that records how the solid was built (may be null).
  OdDbObjectId historyId() const { return m_historyId; }

 protected:
  OdDbObjectId m_historyId;
};
using OdDb3dSolidPtr = OdSmartPtr<OdDb3dSolid>;
