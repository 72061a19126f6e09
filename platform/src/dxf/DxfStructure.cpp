#include "dxf/DxfStructure.h"

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"

const std::vector<OdDxfTableKind>& odDxfTableKinds() {
  static const std::vector<OdDxfTableKind> kinds = {
      {OdDbNameTable::kVport, L"VPORT", L"VPORT", &OdDbViewportTable::desc, &OdDbViewportTableRecord::desc},
      {OdDbNameTable::kLinetype, L"LTYPE", L"LTYPE", &OdDbLinetypeTable::desc, &OdDbLinetypeTableRecord::desc},
      {OdDbNameTable::kLayer, L"LAYER", L"LAYER", &OdDbLayerTable::desc, &OdDbLayerTableRecord::desc},
      {OdDbNameTable::kTextStyle, L"STYLE", L"STYLE", &OdDbTextStyleTable::desc, &OdDbTextStyleTableRecord::desc},
      {OdDbNameTable::kView, L"VIEW", L"VIEW", &OdDbViewTable::desc, &OdDbViewTableRecord::desc},
      {OdDbNameTable::kUcs, L"UCS", L"UCS", &OdDbUCSTable::desc, &OdDbUCSTableRecord::desc},
      {OdDbNameTable::kRegApp, L"APPID", L"APPID", &OdDbRegAppTable::desc, &OdDbRegAppTableRecord::desc},
      {OdDbNameTable::kDimStyle, L"DIMSTYLE", L"DIMSTYLE", &OdDbDimStyleTable::desc, &OdDbDimStyleTableRecord::desc},
      {OdDbNameTable::kBlock, L"BLOCK_RECORD", L"BLOCK", &OdDbBlockTable::desc, &OdDbBlockTableRecord::desc},
  };
  return kinds;
}

const OdDxfTableKind* odDxfTableKind(const OdString& name) {
  for (const auto& kind : odDxfTableKinds()) {
    if (name.iCompare(kind.name) == 0) return &kind;
  }
  return nullptr;
}

const OdDxfTableKind* odDxfTableKindOfList(const OdString& listName) {
  for (const auto& kind : odDxfTableKinds()) {
    if (listName.iCompare(kind.listName) == 0) return &kind;
  }
  return nullptr;
}

const OdDxfTableKind* odDxfTableKind(OdDbNameTable table) {
  for (const auto& kind : odDxfTableKinds()) {
    if (kind.table == table) return &kind;
  }
  return nullptr;
}

namespace {
OdInt64 firstInt(const OdDxfTag* begin, const OdDxfTag* end, int code, OdInt64 otherwise) {
  for (const OdDxfTag* t = begin; t != end; ++t) {
    if (t->code == code && t->type != OdDxf::ValueType::kString) return t->i;
  }
  return otherwise;
}

bool hasMarker(const OdDxfTag* begin, const OdDxfTag* end, const wchar_t* marker) {
  for (const OdDxfTag* t = begin; t != end; ++t) {
    if (t->code == 100 && t->s == marker) return true;
  }
  return false;
}

OdRxClass* byName(const wchar_t* name) { return odrxFindClass(name); }
}  // namespace

OdRxClass* odDxfClassForObject(const OdString& dxfName, const OdDxfTag* begin, const OdDxfTag* end) {
  // The kinds of polyline and vertex are the platform's one choice from the
  // flags, the same that entity lists make.
  if (dxfName == L"POLYLINE") return odDbPolylineClassForFlags(static_cast<int>(firstInt(begin, end, 70, 0)));
  if (dxfName == L"VERTEX") return odDbVertexClassForFlags(static_cast<int>(firstInt(begin, end, 70, 0)));
  if (dxfName == L"DIMENSION") {
    switch (firstInt(begin, end, 70, 0) & 0x0F) {
      case 0: return byName(L"OdDbRotatedDimension");
      case 1: return byName(L"OdDbAlignedDimension");
      case 2: return byName(L"OdDb2LineAngularDimension");
      case 3: return byName(L"OdDbDiametricDimension");
      case 4: return byName(L"OdDbRadialDimension");
      case 5: return byName(L"OdDb3PointAngularDimension");
      case 6: return byName(L"OdDbOrdinateDimension");
      default: return nullptr;
    }
  }
  if (dxfName == L"INSERT") {
    if (hasMarker(begin, end, L"AcDbMInsertBlock") || firstInt(begin, end, 70, 1) > 1 || firstInt(begin, end, 71, 1) > 1) {
      return OdDbMInsertBlock::desc();
    }
    return OdDbBlockReference::desc();
  }
  // Names of table records and of the tables themselves are not objects of
  // the entity and object sections.
  if (dxfName == L"TABLE" || odDxfTableKind(dxfName)) return nullptr;
  OdRxClass* cls = odrxFindClassByDxfName(dxfName);
  if (cls && !cls->constructor()) return nullptr;
  return cls;
}

bool odDxfIsEntityName(const OdString& dxfName) {
  if (dxfName == L"BLOCK" || dxfName == L"ENDBLK") return false;
  OdRxClass* cls = odDxfClassForObject(dxfName, nullptr, nullptr);
  return cls && cls->isDerivedFrom(OdDbEntity::desc());
}

const OdDxfStandardClass* odDxfStandardClass(const OdString& dxfName) {
  static const OdDxfStandardClass classes[] = {
      {L"LAYOUT", L"AcDbLayout", 0, false},
      {L"SORTENTSTABLE", L"AcDbSortentsTable", 0, false},
      {L"WIPEOUT", L"AcDbWipeout", 127, true},
      {L"IMAGE", L"AcDbRasterImage", 127, true},
      {L"PLOTSETTINGS", L"AcDbPlotSettings", 0, false},
  };
  for (const auto& cls : classes) {
    if (dxfName == cls.dxfName) return &cls;
  }
  return nullptr;
}

namespace {
struct VersionName {
  OdDb::DwgVersion version;
  const wchar_t* name;
};
const VersionName kVersionNames[] = {
    {OdDb::vAC09, L"AC1009"}, {OdDb::vAC12, L"AC1012"}, {OdDb::vAC14, L"AC1014"}, {OdDb::vAC15, L"AC1015"},
    {OdDb::vAC18, L"AC1018"}, {OdDb::vAC21, L"AC1021"}, {OdDb::vAC24, L"AC1024"}, {OdDb::vAC27, L"AC1027"},
    {OdDb::vAC32, L"AC1032"},
};
}  // namespace

const wchar_t* odDxfVersionName(OdDb::DwgVersion version) {
  for (const auto& v : kVersionNames) {
    if (v.version == version) return v.name;
  }
  return L"AC1032";
}

OdDb::DwgVersion odDxfVersionFromName(const OdString& acadver) {
  // Versions between the known ones (AC1013, AC1019…) read as the one before.
  OdDb::DwgVersion result = OdDb::vAC09;
  for (const auto& v : kVersionNames) {
    if (acadver.iCompare(v.name) >= 0) result = v.version;
  }
  return result;
}

OdDb::DwgVersion odDxfSaveVersion(const OdDbDatabase* db) {
  OdDb::DwgVersion version = db->originalFileVersion();
  return version < OdDb::vAC12 ? OdDb::vAC15 : version;
}
