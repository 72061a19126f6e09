// Block references (INSERT), their arrayed form (MINSERT), and the end
// marker of complex entities (SEQEND).
#pragma once

#include "DbBlockTableRecord.h"
#include "DbText.h"
#include "Ge/GeScale3d.h"

class OdDbBlockReference : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbBlockReference);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbObjectId blockTableRecord() const { return m_blockId; }
  void setBlockTableRecord(const OdDbObjectId& blockId) { assertWriteEnabled(); m_blockId = blockId; }
  // World position of the block's base point.
  OdGePoint3d position() const;
  void setPosition(const OdGePoint3d& point);
  OdGeScale3d scaleFactors() const { return m_scale; }
  void setScaleFactors(const OdGeScale3d& scale) { assertWriteEnabled(); m_scale = scale; }
  double rotation() const { return m_rotation; }
  void setRotation(double angle) { assertWriteEnabled(); m_rotation = angle; }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal);
  // Maps block coordinates to world coordinates.
  OdGeMatrix3d blockTransform() const;
  OdResult setBlockTransform(const OdGeMatrix3d& xform);

  // Attributes, in order. appendAttribute adds one (the reference must be in
  // a database) and creates the end marker when needed.
  OdDbObjectIteratorPtr attributeIterator() const;
  const OdDbObjectIdArray& attributeIds() const { return m_attributes; }
  OdDbObjectId appendAttribute(OdDbAttribute* attribute);

  OdDbObjectIdArray* subentityIdsInternal() override { return &m_attributes; }
  OdDbObjectId* sequenceEndIdInternal() override { return &m_seqEnd; }
  bool acceptsSubentity(const OdDbEntity* sub) const override { return sub->isKindOf(OdDbAttribute::desc()); }

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;
  // Copies of the block's entities placed by the reference (attribute
  // definitions stay definitions; the reference's attributes are not included).
  OdResult explode(OdRxObjectPtrArray& entities) const override;
  void dwgOutFields(OdDbDwgFiler* filer) const override;
  OdResult dwgInFields(OdDbDwgFiler* filer) override;
  // A copy has no attributes: they belong to the reference copied (a
  // command that copies references copies their attributes itself).
  void copyFrom(const OdRxObject* source) override;

 protected:
  OdResult subErase(bool erasing) override;

  OdDbObjectId m_blockId;
  OdGePoint3d m_position;  // in the plane of the normal
  OdGeScale3d m_scale = OdGeScale3d(1, 1, 1);
  double m_rotation = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  OdDbObjectIdArray m_attributes;
  OdDbObjectId m_seqEnd;

  friend struct OdDbAttributesFollowCodec;
  friend struct OdDbScaleCodec;
};
using OdDbBlockReferencePtr = OdSmartPtr<OdDbBlockReference>;

class OdDbMInsertBlock : public OdDbBlockReference {
  ODRX_DECLARE_MEMBERS(OdDbMInsertBlock);
  ODDB_DECLARE_SCHEMA();

 public:
  OdUInt16 columns() const { return static_cast<OdUInt16>(m_columns); }
  void setColumns(OdUInt16 n) { assertWriteEnabled(); m_columns = static_cast<OdInt16>(n); }
  OdUInt16 rows() const { return static_cast<OdUInt16>(m_rows); }
  void setRows(OdUInt16 n) { assertWriteEnabled(); m_rows = static_cast<OdInt16>(n); }
  double columnSpacing() const { return m_columnSpacing; }
  void setColumnSpacing(double d) { assertWriteEnabled(); m_columnSpacing = d; }
  double rowSpacing() const { return m_rowSpacing; }
  void setRowSpacing(double d) { assertWriteEnabled(); m_rowSpacing = d; }
  OdString dxfName() const override { return L"INSERT"; }
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // One block's worth of copies for every row and column.
  OdResult explode(OdRxObjectPtrArray& entities) const override;

 protected:
  OdInt16 m_columns = 1;
  OdInt16 m_rows = 1;
  double m_columnSpacing = 0;
  double m_rowSpacing = 0;
};
using OdDbMInsertBlockPtr = OdSmartPtr<OdDbMInsertBlock>;

class OdDbSequenceEnd : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbSequenceEnd);
  ODDB_DECLARE_SCHEMA();
};
