// The contents of a new drawing: tables with their standard records, the
// two spaces with their layouts, the named-object dictionary and the header.
#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbSymbolTable.h"
#include "db/DbDefaults.h"

namespace {

template <class Table>
OdDbObjectId addTable(OdDbDatabase* db, OdDbNameTable kind) {
  OdSmartPtr<Table> table = Table::createObject();
  OdDbObjectId id = db->addOdDbObject(table.get());
  db->setTableId(kind, id);
  return id;
}

template <class Record>
OdSmartPtr<Record> addRecord(OdDbDatabase* db, OdDbNameTable kind, const wchar_t* name) {
  OdSmartPtr<Record> record = Record::createObject();
  record->setName(name);
  OdDbObjectPtr table = db->tableId(kind).safeOpenObject(OdDb::kForWrite);
  static_cast<OdDbSymbolTable*>(table.get())->add(record.get());
  return record;
}

OdDbObjectId addSpace(OdDbDatabase* db, OdDbDictionary* layouts, const wchar_t* blockName, const wchar_t* layoutName,
                      int tabOrder) {
  OdSmartPtr<OdDbBlockTableRecord> block = addRecord<OdDbBlockTableRecord>(db, OdDbNameTable::kBlock, blockName);
  OdSmartPtr<OdDbLayout> layout = OdDbLayout::createObject();
  layout->setLayoutName(layoutName);
  layout->setTabOrder(tabOrder);
  layout->setBlockTableRecordId(block->objectId());
  OdDbObjectId layoutId = layouts->setAt(layoutName, layout.get());
  block->setLayoutId(layoutId);
  return block->objectId();
}

}  // namespace

void odDbSetDefaultHeader(OdDbDatabase* db) {
  db->setHeaderString(L"$ACADVER", 1, L"AC1032");
  db->setHeaderString(L"$DWGCODEPAGE", 3, L"ANSI_1252");
  db->setHeaderPoint(L"$INSBASE", 10, OdGePoint3d());
  db->setHeaderPoint(L"$EXTMIN", 10, OdGePoint3d(1e20, 1e20, 1e20));
  db->setHeaderPoint(L"$EXTMAX", 10, OdGePoint3d(-1e20, -1e20, -1e20));
  db->setHeaderPoint(L"$LIMMIN", 10, OdGePoint3d(), 2);
  db->setHeaderPoint(L"$LIMMAX", 10, OdGePoint3d(420, 297, 0), 2);
  db->setHeaderInt(L"$ORTHOMODE", 70, 0);
  db->setHeaderInt(L"$FILLMODE", 70, 1);
  db->setHeaderInt(L"$MIRRTEXT", 70, 0);
  db->setHeaderReal(L"$LTSCALE", 40, 1.0);
  db->setHeaderInt(L"$ATTMODE", 70, 1);
  db->setHeaderReal(L"$TEXTSIZE", 40, 2.5);
  db->setHeaderReal(L"$TRACEWID", 40, 1.0);
  db->setHeaderString(L"$TEXTSTYLE", 7, L"Standard");
  db->setHeaderString(L"$CLAYER", 8, L"0");
  db->setHeaderString(L"$CELTYPE", 6, L"ByLayer");
  db->setHeaderInt(L"$CECOLOR", 62, 256);
  db->setHeaderReal(L"$CELTSCALE", 40, 1.0);
  db->setHeaderReal(L"$DIMSCALE", 40, 1.0);
  db->setHeaderReal(L"$DIMASZ", 40, 2.5);
  db->setHeaderReal(L"$DIMTXT", 40, 2.5);
  db->setHeaderInt(L"$DIMZIN", 70, 8);
  db->setHeaderString(L"$DIMSTYLE", 2, L"Standard");
  db->setHeaderInt(L"$LUNITS", 70, 2);
  db->setHeaderInt(L"$LUPREC", 70, 4);
  db->setHeaderInt(L"$AUNITS", 70, 0);
  db->setHeaderInt(L"$AUPREC", 70, 0);
  db->setHeaderReal(L"$ANGBASE", 50, 0.0);
  db->setHeaderInt(L"$ANGDIR", 70, 0);
  db->setHeaderInt(L"$PDMODE", 70, 0);
  db->setHeaderReal(L"$PDSIZE", 40, 0.0);
  db->setHeaderReal(L"$PLINEWID", 40, 0.0);
  db->setHeaderReal(L"$SNAPANG", 50, 0.0);
  db->setHeaderInt(L"$CELWEIGHT", 370, -1);
  db->setHeaderInt(L"$INSUNITS", 70, 4);
  db->setHeaderInt(L"$MEASUREMENT", 70, 1);
  db->setHeaderInt(L"$TILEMODE", 70, 1);
  db->setHeaderInt(L"$PSTYLEMODE", 290, 1);
}

OdDbDatabasePtr OdDbDatabase::createNew() {
  OdDbDatabasePtr db = createEmpty();
  db->blockUndoRecording(true);
  OdDbDatabase* p = db.get();

  OdDbDictionaryPtr nod = OdDbDictionary::createObject();
  p->setNamedObjectsDictionaryId(p->addOdDbObject(nod.get()));
  OdDbDictionaryPtr groups = OdDbDictionary::createObject();
  nod->setAt(L"ACAD_GROUP", groups.get());
  OdDbDictionaryPtr layouts = OdDbDictionary::createObject();
  nod->setAt(L"ACAD_LAYOUT", layouts.get());

  addTable<OdDbViewportTable>(p, OdDbNameTable::kVport);
  addTable<OdDbLinetypeTable>(p, OdDbNameTable::kLinetype);
  addTable<OdDbLayerTable>(p, OdDbNameTable::kLayer);
  addTable<OdDbTextStyleTable>(p, OdDbNameTable::kTextStyle);
  addTable<OdDbViewTable>(p, OdDbNameTable::kView);
  addTable<OdDbUCSTable>(p, OdDbNameTable::kUcs);
  addTable<OdDbRegAppTable>(p, OdDbNameTable::kRegApp);
  addTable<OdDbDimStyleTable>(p, OdDbNameTable::kDimStyle);
  addTable<OdDbBlockTable>(p, OdDbNameTable::kBlock);

  odDbSetDefaultHeader(p);

  addRecord<OdDbViewportTableRecord>(p, OdDbNameTable::kVport, L"*Active");
  addRecord<OdDbLinetypeTableRecord>(p, OdDbNameTable::kLinetype, L"ByBlock");
  addRecord<OdDbLinetypeTableRecord>(p, OdDbNameTable::kLinetype, L"ByLayer");
  addRecord<OdDbLinetypeTableRecord>(p, OdDbNameTable::kLinetype, L"Continuous")->setComments(L"Solid line");
  OdSmartPtr<OdDbLayerTableRecord> layer0 = addRecord<OdDbLayerTableRecord>(p, OdDbNameTable::kLayer, L"0");
  layer0->setLinetypeObjectId(p->getLinetypeContinuousId());
  OdSmartPtr<OdDbTextStyleTableRecord> standard = addRecord<OdDbTextStyleTableRecord>(p, OdDbNameTable::kTextStyle, L"Standard");
  standard->setFileName(L"txt");
  addRecord<OdDbRegAppTableRecord>(p, OdDbNameTable::kRegApp, L"ACAD");
  OdSmartPtr<OdDbDimStyleTableRecord> dimStandard = addRecord<OdDbDimStyleTableRecord>(p, OdDbNameTable::kDimStyle, L"Standard");
  dimStandard->setDimtxsty(standard->objectId());

  addSpace(p, layouts.get(), L"*Model_Space", L"Model", 0);
  addSpace(p, layouts.get(), L"*Paper_Space", L"Layout1", 1);

  p->setOriginalFileVersion(OdDb::vAC32);
  db->blockUndoRecording(false);
  return db;
}
