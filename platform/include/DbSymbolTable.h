// Symbol tables (named, ordered collections of records) and their records:
// layers, linetypes, text styles, registered applications, dimension styles,
// coordinate systems, views and viewports. Block table records live in
// DbBlockTableRecord.h.
#pragma once

#include <unordered_map>

#include "CmColor.h"
#include "DbObject.h"

class OdDbSymbolTableRecord;
using OdDbSymbolTableRecordPtr = OdSmartPtr<OdDbSymbolTableRecord>;

class OdDbSymbolTableRecord : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbSymbolTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  const OdString& getName() const { return m_name; }
  OdResult getName(OdString& name) const { name = m_name; return eOk; }
  OdResult setName(const OdString& name);
  OdResult dwgInFields(OdDbDwgFiler* filer) override;
  // Dependent on an external reference ("XREF|NAME").
  bool isDependent() const { return (m_flags & 16) != 0; }
  bool isResolved() const { return (m_flags & 32) != 0; }
  OdInt16 flags() const { return m_flags; }
  void setFlags(OdInt16 flags) { assertWriteEnabled(); m_flags = flags; }

 protected:
  OdString m_name;
  OdInt16 m_flags = 0;

  friend class OdDbSymbolTable;
};

// Iterates a table's records in table order, skipping erased ones unless asked.
class OdDbSymbolTableIterator : public OdRxObject {
 public:
  OdDbSymbolTableIterator(OdDbObjectIdArray ids, bool skipErased) : m_ids(std::move(ids)), m_skipErased(skipErased) {
    skip();
  }
  void start(bool atBeginning = true, bool skipErased = true);
  bool done() const { return m_pos >= m_ids.size(); }
  void step(bool forward = true, bool skipErased = true);
  OdDbObjectId getRecordId() const { return done() ? OdDbObjectId() : m_ids[m_pos]; }
  OdDbSymbolTableRecordPtr getRecord(OdDb::OpenMode mode = OdDb::kForRead, bool openErased = false) const;
  OdResult seek(const OdDbObjectId& id);

 private:
  void skip();
  OdDbObjectIdArray m_ids;
  size_t m_pos = 0;
  bool m_skipErased;
};
using OdDbSymbolTableIteratorPtr = OdSmartPtr<OdDbSymbolTableIterator>;

class OdDbSymbolTable : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbSymbolTable);
  ODDB_DECLARE_SCHEMA();

 public:
  // The record of that name (case-insensitive); null when absent or erased
  // (unless getErasedRecord).
  OdDbObjectId getAt(const OdString& name, bool getErasedRecord = false) const;
  OdDbSymbolTableRecordPtr getAt(const OdString& name, OdDb::OpenMode mode, bool getErasedRecord = false) const;
  bool has(const OdString& name) const { return !getAt(name).isNull(); }
  bool has(const OdDbObjectId& id) const;
  // Adds a record (not yet in a database) and returns its id. A name in use
  // throws OdError(eDuplicateRecordName).
  OdDbObjectId add(OdDbSymbolTableRecord* record);
  OdDbSymbolTableIteratorPtr newIterator(bool atBeginning = true, bool skipErased = true) const;
  // Every record id in table order (erased ones included).
  const OdDbObjectIdArray& recordIds() const { return m_records; }
  // The class of record this table holds.
  virtual OdRxClass* recordClass() const = 0;

  // Internal to the platform: keeps the name index in step with renames and
  // with records added by the reader.
  void appendRecordId(const OdDbObjectId& id);
  void recordRenamed(const OdDbObjectId& id) const;
  void dwgOutFields(OdDbDwgFiler* filer) const override;
  OdResult dwgInFields(OdDbDwgFiler* filer) override;

 protected:
  void rebuildIndex() const;
  void indexRecord(const OdDbObjectId& id) const;

  OdDbObjectIdArray m_records;
  // Records by upper-case name, rebuilt after renames.
  mutable std::unordered_map<std::wstring, OdDbObjectIdArray> m_index;
  mutable bool m_indexDirty = true;
};

#define ODDB_DECLARE_TABLE(TableClass, RecordClass)                                               \
  class RecordClass;                                                                             \
  class TableClass : public OdDbSymbolTable {                                                    \
    ODRX_DECLARE_MEMBERS(TableClass);                                                            \
    ODDB_DECLARE_SCHEMA();                                                                       \
                                                                                                 \
   public:                                                                                       \
    OdRxClass* recordClass() const override;                                                     \
    OdSmartPtr<RecordClass> getAt(const OdString& name, OdDb::OpenMode mode, bool erased = false) const; \
    using OdDbSymbolTable::getAt;                                                                \
  };                                                                                             \
  using TableClass##Ptr = OdSmartPtr<TableClass>;

ODDB_DECLARE_TABLE(OdDbLayerTable, OdDbLayerTableRecord)
ODDB_DECLARE_TABLE(OdDbLinetypeTable, OdDbLinetypeTableRecord)
ODDB_DECLARE_TABLE(OdDbTextStyleTable, OdDbTextStyleTableRecord)
ODDB_DECLARE_TABLE(OdDbRegAppTable, OdDbRegAppTableRecord)
ODDB_DECLARE_TABLE(OdDbDimStyleTable, OdDbDimStyleTableRecord)
ODDB_DECLARE_TABLE(OdDbUCSTable, OdDbUCSTableRecord)
ODDB_DECLARE_TABLE(OdDbViewTable, OdDbViewTableRecord)
ODDB_DECLARE_TABLE(OdDbViewportTable, OdDbViewportTableRecord)
ODDB_DECLARE_TABLE(OdDbBlockTable, OdDbBlockTableRecord)

class OdDbLayerTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbLayerTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  bool isOff() const { return m_isOff; }
  void setIsOff(bool off) { assertWriteEnabled(); m_isOff = off; }
  bool isFrozen() const { return (m_flags & 1) != 0; }
  void setIsFrozen(bool frozen);
  bool isLocked() const { return (m_flags & 4) != 0; }
  void setIsLocked(bool locked);
  bool isInUse() const { return true; }
  bool isPlottable() const { return m_plottable; }
  void setIsPlottable(bool plottable) { assertWriteEnabled(); m_plottable = plottable; }
  OdCmColor color() const { return OdCmColor(m_color); }
  void setColor(const OdCmColor& color);
  OdInt16 colorIndex() const { return m_color.colorIndex(); }
  void setColorIndex(OdInt16 index);
  OdDbObjectId linetypeObjectId() const { return m_linetypeId; }
  void setLinetypeObjectId(const OdDbObjectId& id) { assertWriteEnabled(); m_linetypeId = id; }
  OdDb::LineWeight lineWeight() const { return static_cast<OdDb::LineWeight>(m_lineWeight); }
  void setLineWeight(OdDb::LineWeight weight) { assertWriteEnabled(); m_lineWeight = static_cast<OdInt16>(weight); }
  OdDbObjectId plotStyleNameId() const { return m_plotStyleNameId; }
  void setPlotStyleName(const OdDbObjectId& id) { assertWriteEnabled(); m_plotStyleNameId = id; }
  OdCmTransparency transparency() const;
  void setTransparency(const OdCmTransparency& transparency);
  OdString description() const;
  void setDescription(const OdString& description);

 protected:
  OdCmEntityColor m_color = OdCmEntityColor::fromIndex(7);
  bool m_isOff = false;
  bool m_plottable = true;
  OdInt16 m_lineWeight = OdDb::kLnWtByLwDefault;
  OdDbObjectId m_linetypeId;
  OdDbObjectId m_plotStyleNameId;
  OdDbObjectId m_materialId;

  friend struct OdDbLayerColorCodec;
};
using OdDbLayerTableRecordPtr = OdSmartPtr<OdDbLayerTableRecord>;

// One element of a linetype pattern: a dash (positive), a gap (negative) or
// a dot (zero), optionally with a shape or text.
struct OdDbLinetypeDash {
  double length = 0;
  OdInt16 complexType = 0;  // 2: text, 4: shape
  OdInt16 shapeNumber = 0;
  OdDbObjectId styleId;
  double scale = 1.0;
  double rotation = 0;
  double offsetX = 0, offsetY = 0;
  OdString text;
  bool operator==(const OdDbLinetypeDash&) const = default;
};

class OdDbLinetypeTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbLinetypeTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  const OdString& comments() const { return m_comments; }
  void setComments(const OdString& text) { assertWriteEnabled(); m_comments = text; }
  double patternLength() const { return m_patternLength; }
  void setPatternLength(double length) { assertWriteEnabled(); m_patternLength = length; }
  int numDashes() const { return static_cast<int>(m_dashes.size()); }
  void setNumDashes(int count);
  double dashLengthAt(int index) const { return m_dashes.at(index).length; }
  void setDashLengthAt(int index, double length);
  OdInt16 shapeNumberAt(int index) const { return m_dashes.at(index).shapeNumber; }
  OdDbObjectId shapeStyleAt(int index) const { return m_dashes.at(index).styleId; }
  OdString textAt(int index) const { return m_dashes.at(index).text; }
  const OdArray<OdDbLinetypeDash>& dashes() const { return m_dashes; }
  void setDashes(const OdArray<OdDbLinetypeDash>& dashes);
  bool isScaledToFit() const { return m_alignment == 'S'; }

 protected:
  OdString m_comments;
  OdInt16 m_alignment = 'A';
  double m_patternLength = 0;
  OdArray<OdDbLinetypeDash> m_dashes;
};
using OdDbLinetypeTableRecordPtr = OdSmartPtr<OdDbLinetypeTableRecord>;

class OdDbTextStyleTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbTextStyleTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  bool isShapeFile() const { return (m_flags & 1) != 0; }
  bool isVertical() const { return (m_flags & 4) != 0; }
  double textSize() const { return m_textSize; }
  void setTextSize(double size) { assertWriteEnabled(); m_textSize = size; }
  double xScale() const { return m_xScale; }
  void setXScale(double scale) { assertWriteEnabled(); m_xScale = scale; }
  double obliquingAngle() const { return m_obliquingAngle; }
  void setObliquingAngle(double angle) { assertWriteEnabled(); m_obliquingAngle = angle; }
  OdInt16 flagBits() const { return m_generation; }
  void setFlagBits(OdInt16 bits) { assertWriteEnabled(); m_generation = bits; }
  double priorSize() const { return m_priorSize; }
  const OdString& fileName() const { return m_fileName; }
  void setFileName(const OdString& name) { assertWriteEnabled(); m_fileName = name; }
  const OdString& bigFontFileName() const { return m_bigFontFileName; }
  void setBigFontFileName(const OdString& name) { assertWriteEnabled(); m_bigFontFileName = name; }

 protected:
  double m_textSize = 0;
  double m_xScale = 1.0;
  double m_obliquingAngle = 0;
  OdInt16 m_generation = 0;
  double m_priorSize = 2.5;
  OdString m_fileName = L"txt";
  OdString m_bigFontFileName;
};
using OdDbTextStyleTableRecordPtr = OdSmartPtr<OdDbTextStyleTableRecord>;

class OdDbRegAppTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbRegAppTableRecord);
  ODDB_DECLARE_SCHEMA();
};
using OdDbRegAppTableRecordPtr = OdSmartPtr<OdDbRegAppTableRecord>;

class OdDbDimStyleTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbDimStyleTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  double dimscale() const { return m_dimscale; }
  void setDimscale(double value) { assertWriteEnabled(); m_dimscale = value; }
  double dimasz() const { return m_dimasz; }
  double dimtxt() const { return m_dimtxt; }
  void setDimtxt(double value) { assertWriteEnabled(); m_dimtxt = value; }
  double dimgap() const { return m_dimgap; }
  OdDbObjectId dimtxsty() const { return m_dimtxsty; }
  void setDimtxsty(const OdDbObjectId& id) { assertWriteEnabled(); m_dimtxsty = id; }

 protected:
  double m_dimscale = 1.0;
  double m_dimasz = 0.18;
  double m_dimtxt = 0.18;
  double m_dimgap = 0.09;
  OdDbObjectId m_dimtxsty;
};
using OdDbDimStyleTableRecordPtr = OdSmartPtr<OdDbDimStyleTableRecord>;

class OdDbUCSTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbUCSTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  OdGePoint3d origin() const { return m_origin; }
  void setOrigin(const OdGePoint3d& p) { assertWriteEnabled(); m_origin = p; }
  OdGeVector3d xAxis() const { return m_xAxis; }
  void setXAxis(const OdGeVector3d& v) { assertWriteEnabled(); m_xAxis = v; }
  OdGeVector3d yAxis() const { return m_yAxis; }
  void setYAxis(const OdGeVector3d& v) { assertWriteEnabled(); m_yAxis = v; }

 protected:
  OdGePoint3d m_origin;
  OdGeVector3d m_xAxis = OdGeVector3d(1, 0, 0);
  OdGeVector3d m_yAxis = OdGeVector3d(0, 1, 0);
};
using OdDbUCSTableRecordPtr = OdSmartPtr<OdDbUCSTableRecord>;

class OdDbViewTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbViewTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  OdGePoint2d centerPoint() const { return m_center; }
  double height() const { return m_height; }
  double width() const { return m_width; }

 protected:
  double m_height = 1.0;
  OdGePoint2d m_center;
  double m_width = 1.0;
  OdGeVector3d m_viewDirection = OdGeVector3d(0, 0, 1);
  OdGePoint3d m_target;
};
using OdDbViewTableRecordPtr = OdSmartPtr<OdDbViewTableRecord>;

class OdDbViewportTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbViewportTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  OdGePoint2d centerPoint() const { return m_center; }
  void setCenterPoint(const OdGePoint2d& p) { assertWriteEnabled(); m_center = p; }
  double height() const { return m_height; }
  void setHeight(double h) { assertWriteEnabled(); m_height = h; }
  double aspectRatio() const { return m_aspect; }

 protected:
  OdGePoint2d m_lowerLeft;
  OdGePoint2d m_upperRight = OdGePoint2d(1, 1);
  OdGePoint2d m_center;
  OdGeVector3d m_viewDirection = OdGeVector3d(0, 0, 1);
  OdGePoint3d m_target;
  double m_height = 1.0;
  double m_aspect = 1.0;
};
using OdDbViewportTableRecordPtr = OdSmartPtr<OdDbViewportTableRecord>;
