#include "DbSymbolTable.h"

#include <cmath>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"

ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbSymbolTableRecord, OdDbObject)
ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbSymbolTable, OdDbObject)

#define ODDB_DEFINE_TABLE(TableClass, RecordClass)                                                               \
  ODDB_DEFINE_MEMBERS(TableClass, OdDbSymbolTable, L"TABLE")                                                     \
  const OdDbClassSchema& TableClass::classSchema() {                                                            \
    static const OdDbClassSchema schema{&OdDbSymbolTable::classSchema(), {}};                                   \
    return schema;                                                                                              \
  }                                                                                                             \
  OdRxClass* TableClass::recordClass() const { return RecordClass::desc(); }                                    \
  OdSmartPtr<RecordClass> TableClass::getAt(const OdString& name, OdDb::OpenMode mode, bool erased) const {     \
    return OdSmartPtr<RecordClass>(RecordClass::cast(OdDbSymbolTable::getAt(name, erased).openObject(mode, erased).get())); \
  }

ODDB_DEFINE_TABLE(OdDbLayerTable, OdDbLayerTableRecord)
ODDB_DEFINE_TABLE(OdDbLinetypeTable, OdDbLinetypeTableRecord)
ODDB_DEFINE_TABLE(OdDbTextStyleTable, OdDbTextStyleTableRecord)
ODDB_DEFINE_TABLE(OdDbRegAppTable, OdDbRegAppTableRecord)
ODDB_DEFINE_TABLE(OdDbDimStyleTable, OdDbDimStyleTableRecord)
ODDB_DEFINE_TABLE(OdDbUCSTable, OdDbUCSTableRecord)
ODDB_DEFINE_TABLE(OdDbViewTable, OdDbViewTableRecord)
ODDB_DEFINE_TABLE(OdDbViewportTable, OdDbViewportTableRecord)
ODDB_DEFINE_TABLE(OdDbBlockTable, OdDbBlockTableRecord)

ODDB_DEFINE_MEMBERS(OdDbLayerTableRecord, OdDbSymbolTableRecord, L"LAYER")
ODDB_DEFINE_MEMBERS(OdDbLinetypeTableRecord, OdDbSymbolTableRecord, L"LTYPE")
ODDB_DEFINE_MEMBERS(OdDbTextStyleTableRecord, OdDbSymbolTableRecord, L"STYLE")
ODDB_DEFINE_MEMBERS(OdDbRegAppTableRecord, OdDbSymbolTableRecord, L"APPID")
ODDB_DEFINE_MEMBERS(OdDbDimStyleTableRecord, OdDbSymbolTableRecord, L"DIMSTYLE")
ODDB_DEFINE_MEMBERS(OdDbUCSTableRecord, OdDbSymbolTableRecord, L"UCS")
ODDB_DEFINE_MEMBERS(OdDbViewTableRecord, OdDbSymbolTableRecord, L"VIEW")
ODDB_DEFINE_MEMBERS(OdDbViewportTableRecord, OdDbSymbolTableRecord, L"VPORT")

// ---------------------------------------------------------------- tables

// Group 70 of a table: the number of records, refreshed on every write.
// Not a record list of its own: it counts the records the table owns.
struct OdDbTableCountCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {70}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const auto* table = static_cast<const OdDbSymbolTable*>(object);
    int count = 0;
    for (const auto& id : table->recordIds()) count += id.isErased() ? 0 : 1;
    out.push_back(OdDxfTag::integer(70, count));
  }
  bool fromTag(OdDbObject*, const OdDxfTag&, OdDbTagContext&) const override { return true; }
  void fileOut(const OdDbObject*, OdDbDwgFiler*) const override {}
  void fileIn(OdDbObject*, OdDbDwgFiler*) const override {}
  bool isEqual(const OdDbObject*, const OdDbObject*) const override { return true; }
};

const OdDbClassSchema& OdDbSymbolTable::classSchema() {
  static const OdDbTableCountCodec count;
  static const OdDbClassSchema schema{&OdDbObject::classSchema(), {{L"AcDbSymbolTable", {odCustomField(count, L"count")}}}};
  return schema;
}

void OdDbSymbolTable::rebuildIndex() const {
  m_index.clear();
  for (const OdDbObjectId& id : m_records) {
    if (!id.isValid()) continue;
    auto* record = static_cast<const OdDbSymbolTableRecord*>(id.stub()->object);
    m_index[record->m_name.upper().str()].append(id);
  }
  m_indexDirty = false;
}

OdDbObjectId OdDbSymbolTable::getAt(const OdString& name, bool getErasedRecord) const {
  if (m_indexDirty) rebuildIndex();
  auto it = m_index.find(name.upper().str());
  if (it == m_index.end()) return OdDbObjectId();
  OdDbObjectId erasedMatch;
  for (const OdDbObjectId& id : it->second) {
    if (!id.isValid()) continue;
    auto* record = static_cast<const OdDbSymbolTableRecord*>(id.stub()->object);
    if (record->m_name.iCompare(name) != 0) continue;
    if (!id.isErased()) return id;
    if (getErasedRecord && erasedMatch.isNull()) erasedMatch = id;
  }
  return erasedMatch;
}

OdDbSymbolTableRecordPtr OdDbSymbolTable::getAt(const OdString& name, OdDb::OpenMode mode, bool getErasedRecord) const {
  return OdDbSymbolTableRecord::cast(getAt(name, getErasedRecord).openObject(mode, getErasedRecord).get());
}

bool OdDbSymbolTable::has(const OdDbObjectId& id) const { return !id.isErased() && m_records.contains(id); }

OdDbObjectId OdDbSymbolTable::add(OdDbSymbolTableRecord* record) {
  if (!record) throw OdError(eNullObjectPointer);
  if (record->getName().isEmpty() && !record->isKindOf(OdDbBlockTableRecord::desc())) throw OdError(eInvalidSymbolTableName);
  if (!record->isKindOf(recordClass())) throw OdError_NotThatKindOfClass(record->isA(), recordClass());
  if (!record->getName().isEmpty() && has(record->getName())) throw OdError(eDuplicateRecordName, record->getName());
  OdDbDatabase* db = database();
  if (!db) throw OdError(eNoDatabase);
  assertWriteEnabled();
  OdDbObjectId id = db->addOdDbObject(record, objectId());
  m_records.append(id);
  indexRecord(id);
  record->subSetDatabaseDefaults(db);
  return id;
}

void OdDbSymbolTable::appendRecordId(const OdDbObjectId& id) {
  m_records.append(id);
  indexRecord(id);
}

// A record added to a table whose index is up to date joins the index: tables
// of many thousand records (anonymous blocks) are filled in linear time.
void OdDbSymbolTable::indexRecord(const OdDbObjectId& id) const {
  if (m_indexDirty || !id.isValid()) return;
  auto* record = static_cast<const OdDbSymbolTableRecord*>(id.stub()->object);
  m_index[record->m_name.upper().str()].append(id);
}

void OdDbSymbolTable::recordRenamed(const OdDbObjectId&) const { m_indexDirty = true; }

OdDbSymbolTableIteratorPtr OdDbSymbolTable::newIterator(bool atBeginning, bool skipErased) const {
  OdDbSymbolTableIteratorPtr it(new OdDbSymbolTableIterator(m_records, skipErased));
  it->start(atBeginning, skipErased);
  return it;
}

void OdDbSymbolTable::dwgOutFields(OdDbDwgFiler* filer) const {
  OdDbObject::dwgOutFields(filer);
  filer->wrInt32(static_cast<OdInt32>(m_records.size()));
  for (const auto& id : m_records) filer->wrHardOwnershipId(id);
}

OdResult OdDbSymbolTable::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbObject::dwgInFields(filer);
  OdInt32 count = filer->rdInt32();
  m_records.clear();
  for (OdInt32 i = 0; i < count; ++i) m_records.append(filer->rdHardOwnershipId());
  m_indexDirty = true;
  return result;
}

namespace {
// The table that owns a record, read from its stub (no open).
const OdDbSymbolTable* ownerTable(const OdDbObject* record) {
  const OdDbObjectId owner = record->ownerId();
  return owner.isValid() ? dynamic_cast<const OdDbSymbolTable*>(owner.stub()->object) : nullptr;
}
}  // namespace

OdResult OdDbSymbolTableRecord::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbObject::dwgInFields(filer);
  if (const OdDbSymbolTable* table = ownerTable(this)) table->recordRenamed(objectId());
  return result;
}

void OdDbSymbolTableIterator::skip() {
  if (!m_skipErased) return;
  while (m_pos < m_ids.size() && m_ids[m_pos].isErased()) ++m_pos;
}

void OdDbSymbolTableIterator::start(bool atBeginning, bool skipErased) {
  m_skipErased = skipErased;
  m_pos = atBeginning ? 0 : m_ids.size();
  skip();
}

void OdDbSymbolTableIterator::step(bool forward, bool skipErased) {
  m_skipErased = skipErased;
  if (!forward) {
    if (m_pos == 0) { m_pos = m_ids.size(); return; }
    --m_pos;
    while (m_skipErased && m_pos > 0 && m_ids[m_pos].isErased()) --m_pos;
    return;
  }
  ++m_pos;
  skip();
}

OdDbSymbolTableRecordPtr OdDbSymbolTableIterator::getRecord(OdDb::OpenMode mode, bool openErased) const {
  return OdDbSymbolTableRecord::cast(getRecordId().openObject(mode, openErased).get());
}

OdResult OdDbSymbolTableIterator::seek(const OdDbObjectId& id) {
  for (size_t i = 0; i < m_ids.size(); ++i) {
    if (m_ids[i] == id) { m_pos = i; return eOk; }
  }
  return eKeyNotFound;
}

// ---------------------------------------------------------------- records

const OdDbClassSchema& OdDbSymbolTableRecord::classSchema() {
  static const OdDbClassSchema schema{&OdDbObject::classSchema(), {{L"AcDbSymbolTableRecord", {}}}};
  return schema;
}

OdResult OdDbSymbolTableRecord::setName(const OdString& name) {
  // The spaces keep their names, and no block takes one of theirs.
  if (database() && isKindOf(OdDbBlockTableRecord::desc())) {
    auto isSpaceName = [](const OdString& n) {
      return n.iCompare(L"*Model_Space") == 0 || n.left(12).iCompare(L"*Paper_Space") == 0;
    };
    if ((isSpaceName(m_name) || isSpaceName(name)) && m_name.iCompare(name) != 0) return eIllegalReplacement;
  }
  if (name.isEmpty() || name.findOneOf(L"<>/\\\":;?*|,=`") >= 0) {
    // Anonymous blocks ("*U12"), the spaces and the active viewport ("*Active") keep their leading asterisk.
    const bool starred = isKindOf(OdDbBlockTableRecord::desc()) || isKindOf(OdDbViewportTableRecord::desc());
    if (!(starred && name.left(1) == L"*" && name.mid(1).findOneOf(L"<>/\\\":;?*|,=`") < 0)) {
      return eInvalidSymbolTableName;
    }
  }
  if (OdDbDatabase* db = database()) {
    OdDbObjectPtr owner = ownerId().openObject();
    if (auto* table = dynamic_cast<OdDbSymbolTable*>(owner.get())) {
      OdDbObjectId existing = table->getAt(name);
      if (!existing.isNull() && existing != objectId()) return eDuplicateRecordName;
    }
    (void)db;
  }
  assertWriteEnabled();
  m_name = name;
  if (const OdDbSymbolTable* table = ownerTable(this)) table->recordRenamed(objectId());
  return eOk;
}

#define RECORD_NAME_AND_FLAGS(Class) \
  odField<&Class::m_name>(2).named(L"name"), odField<&Class::m_flags>(70).named(L"flags")

// Groups 62 and 420 of a layer: the colour, with a negative index for a layer that is off.
// Not a list of records: one colour that also carries the on/off state.
struct OdDbLayerColorCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {62, 420}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const auto* layer = static_cast<const OdDbLayerTableRecord*>(object);
    OdInt16 index = layer->m_color.colorIndex();
    if (index <= 0 || index > 255) index = 7;
    out.push_back(OdDxfTag::integer(62, layer->m_isOff ? -index : index));
    if (layer->m_color.isByColor()) out.push_back(OdDxfTag::integer(420, static_cast<OdInt32>(layer->m_color.trueColor())));
  }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const override {
    auto* layer = static_cast<OdDbLayerTableRecord*>(object);
    OdInt64& trueColorSeen = ctx.codecState(this);
    if (tag.code == 420) {
      layer->m_color.setRGB(static_cast<OdUInt8>(tag.i >> 16), static_cast<OdUInt8>(tag.i >> 8), static_cast<OdUInt8>(tag.i));
      trueColorSeen = 1;
    } else {
      layer->m_isOff = tag.i < 0;
      if (!trueColorSeen) layer->m_color.setColorIndex(static_cast<OdInt16>(tag.i < 0 ? -tag.i : tag.i));
    }
    return true;
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override {
    const auto* layer = static_cast<const OdDbLayerTableRecord*>(object);
    filer->wrInt32(static_cast<OdInt32>(layer->m_color.color()));
    filer->wrBool(layer->m_isOff);
  }
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override {
    auto* layer = static_cast<OdDbLayerTableRecord*>(object);
    layer->m_color.setColor(static_cast<OdUInt32>(filer->rdInt32()));
    layer->m_isOff = filer->rdBool();
  }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    const auto* la = static_cast<const OdDbLayerTableRecord*>(a);
    const auto* lb = static_cast<const OdDbLayerTableRecord*>(b);
    return la->m_color == lb->m_color && la->m_isOff == lb->m_isOff;
  }
};

const OdDbClassSchema& OdDbLayerTableRecord::classSchema() {
  static const OdDbLayerColorCodec color;
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbLayerTableRecord",
        {
            RECORD_NAME_AND_FLAGS(OdDbLayerTableRecord),
            odCustomField(color, L"color"),
            odNameField<&OdDbLayerTableRecord::m_linetypeId>(6, OdDbNameTable::kLinetype, L"Continuous").named(L"linetype"),
            odField<&OdDbLayerTableRecord::m_plottable>(290).optional().defaultsInt(1).since(OdDb::vAC15).named(L"plottable"),
            odField<&OdDbLayerTableRecord::m_lineWeight>(370).defaultsInt(OdDb::kLnWtByLwDefault).since(OdDb::vAC15).named(L"lineWeight"),
            odField<&OdDbLayerTableRecord::m_plotStyleNameId>(390, OdDbFieldKind::kHardPointer).optional().since(OdDb::vAC15).named(L"plotStyle"),
            odField<&OdDbLayerTableRecord::m_materialId>(347, OdDbFieldKind::kHardPointer).optional().since(OdDb::vAC21).named(L"material"),
        }}}};
  return schema;
}

void OdDbLayerTableRecord::setIsFrozen(bool frozen) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(frozen ? (m_flags | 1) : (m_flags & ~1));
}

void OdDbLayerTableRecord::setIsLocked(bool locked) {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(locked ? (m_flags | 4) : (m_flags & ~4));
}

void OdDbLayerTableRecord::setColor(const OdCmColor& color) {
  assertWriteEnabled();
  m_color = color.entityColor();
}

void OdDbLayerTableRecord::setColorIndex(OdInt16 index) {
  assertWriteEnabled();
  m_color.setColorIndex(index < 0 ? static_cast<OdInt16>(-index) : index);
}

namespace {
// Registers an application for extended data unless the drawing has it.
void registerApplication(OdDbDatabase* db, const wchar_t* name) {
  if (!db || !db->findRecord(OdDbNameTable::kRegApp, name).isNull()) return;
  OdDbObjectPtr table = db->getRegAppTableId().openObject(OdDb::kForWrite);
  if (auto* apps = dynamic_cast<OdDbSymbolTable*>(table.get())) {
    OdSmartPtr<OdDbRegAppTableRecord> app = OdDbRegAppTableRecord::createObject();
    app->setName(name);
    apps->add(app.get());
  }
}
}  // namespace

// Transparency and description of a layer live in its extended data, as
// files carry them: application "AcCmTransparency" (1071) and "AcAecLayerStandard" (1000).
OdCmTransparency OdDbLayerTableRecord::transparency() const {
  OdCmTransparency result;
  for (const auto& tag : xData(L"AcCmTransparency")) {
    if (tag.code == 1071) result.serializeIn(static_cast<OdUInt32>(tag.i));
  }
  return result;
}

void OdDbLayerTableRecord::setTransparency(const OdCmTransparency& transparency) {
  registerApplication(database(), L"AcCmTransparency");
  if (transparency.isByLayer()) {
    setXData({OdDxfTag::str(1001, L"AcCmTransparency")});
  } else {
    setXData({OdDxfTag::str(1001, L"AcCmTransparency"), OdDxfTag::integer(1071, transparency.serializeOut())});
  }
}

OdString OdDbLayerTableRecord::description() const {
  OdDxfTagList data = xData(L"AcAecLayerStandard");
  int strings = 0;
  for (const auto& tag : data) {
    if (tag.code == 1000 && ++strings == 2) return tag.s;
  }
  return OdString();
}

void OdDbLayerTableRecord::setDescription(const OdString& description) {
  registerApplication(database(), L"AcAecLayerStandard");
  setXData({OdDxfTag::str(1001, L"AcAecLayerStandard"), OdDxfTag::str(1000, L""), OdDxfTag::str(1000, description)});
}

const OdDbClassSchema& OdDbLinetypeTableRecord::classSchema() {
  // Per dash: 49 its length and 74 its kind; a dash with a shape or text
  // adds 75 (shape number), 340 (style), 46 (scale), 50 (rotation), 44 and
  // 45 (offset), and 9 (the text) when it is a text.
  static bool (*const complex)(const void*, const OdDbObject*, const OdDbTagContext&) =
      [](const void* dash, const OdDbObject*, const OdDbTagContext&) {
        return static_cast<const OdDbLinetypeDash*>(dash)->complexType != 0;
      };
  static bool (*const withText)(const void*, const OdDbObject*, const OdDbTagContext&) =
      [](const void* dash, const OdDbObject*, const OdDbTagContext&) {
        return (static_cast<const OdDbLinetypeDash*>(dash)->complexType & 2) != 0;
      };
  static const OdDbArraySpec dashRecords = odRecords<OdArray<OdDbLinetypeDash>>({
      odField<&OdDbLinetypeDash::length>(49).named(L"length"),
      odField<&OdDbLinetypeDash::complexType>(74).named(L"complexType"),
      odField<&OdDbLinetypeDash::shapeNumber>(75).writtenWhen(complex).named(L"shapeNumber"),
      odField<&OdDbLinetypeDash::styleId>(340, OdDbFieldKind::kHardPointer).writtenWhen(complex).named(L"style"),
      odField<&OdDbLinetypeDash::scale>(46).defaults(1.0).writtenWhen(complex).named(L"scale"),
      odField<&OdDbLinetypeDash::rotation>(50).degrees().writtenWhen(complex).named(L"rotation"),
      odField<&OdDbLinetypeDash::offsetX>(44).writtenWhen(complex).named(L"offsetX"),
      odField<&OdDbLinetypeDash::offsetY>(45).writtenWhen(complex).named(L"offsetY"),
      odField<&OdDbLinetypeDash::text>(9).writtenWhen(withText).named(L"text"),
  });
  // The dash count (73) comes before the pattern length, the dashes after it.
  static const OdDbField dashList = odArrayField<&OdDbLinetypeTableRecord::m_dashes>(dashRecords, L"dashes");
  static const OdDbRecordCodec count({odCountField<&OdDbLinetypeTableRecord::m_dashes>(73, dashList)});
  static const OdDbRecordCodec dashes({dashList});
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbLinetypeTableRecord",
        {
            RECORD_NAME_AND_FLAGS(OdDbLinetypeTableRecord),
            odField<&OdDbLinetypeTableRecord::m_comments>(3).named(L"comments"),
            odField<&OdDbLinetypeTableRecord::m_alignment>(72).defaultsInt('A').named(L"alignment"),
            odCustomField(count, L"dashCount"),
            odField<&OdDbLinetypeTableRecord::m_patternLength>(40).named(L"patternLength"),
            odCustomField(dashes, L"dashes"),
        }}}};
  return schema;
}

void OdDbLinetypeTableRecord::setNumDashes(int count) {
  assertWriteEnabled();
  m_dashes.resize(static_cast<size_t>(count < 0 ? 0 : count));
}

void OdDbLinetypeTableRecord::setDashLengthAt(int index, double length) {
  assertWriteEnabled();
  m_dashes.at(static_cast<size_t>(index)).length = length;
}

void OdDbLinetypeTableRecord::setDashes(const OdArray<OdDbLinetypeDash>& dashes) {
  assertWriteEnabled();
  m_dashes = dashes;
  double total = 0;
  for (const auto& d : dashes) total += std::fabs(d.length);
  m_patternLength = total;
}

const OdDbClassSchema& OdDbTextStyleTableRecord::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbTextStyleTableRecord",
        {
            RECORD_NAME_AND_FLAGS(OdDbTextStyleTableRecord),
            odField<&OdDbTextStyleTableRecord::m_textSize>(40).named(L"textSize"),
            odField<&OdDbTextStyleTableRecord::m_xScale>(41).defaults(1.0).named(L"xScale"),
            odField<&OdDbTextStyleTableRecord::m_obliquingAngle>(50).degrees().named(L"obliquingAngle"),
            odField<&OdDbTextStyleTableRecord::m_generation>(71).named(L"generation"),
            odField<&OdDbTextStyleTableRecord::m_priorSize>(42).defaults(2.5).named(L"priorSize"),
            odField<&OdDbTextStyleTableRecord::m_fileName>(3).named(L"fileName"),
            odField<&OdDbTextStyleTableRecord::m_bigFontFileName>(4).named(L"bigFontFileName"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbRegAppTableRecord::classSchema() {
  static const OdDbClassSchema schema{&OdDbSymbolTableRecord::classSchema(),
                                      {{L"AcDbRegAppTableRecord", {RECORD_NAME_AND_FLAGS(OdDbRegAppTableRecord)}}}};
  return schema;
}

const OdDbClassSchema& OdDbDimStyleTableRecord::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbDimStyleTableRecord",
        {
            RECORD_NAME_AND_FLAGS(OdDbDimStyleTableRecord),
            odField<&OdDbDimStyleTableRecord::m_dimscale>(40).optional().defaults(1.0).named(L"dimscale"),
            odField<&OdDbDimStyleTableRecord::m_dimasz>(41).optional().defaults(0.18).named(L"dimasz"),
            odField<&OdDbDimStyleTableRecord::m_dimtxt>(140).optional().defaults(0.18).named(L"dimtxt"),
            odField<&OdDbDimStyleTableRecord::m_dimgap>(147).optional().defaults(0.09).named(L"dimgap"),
            odField<&OdDbDimStyleTableRecord::m_dimtxsty>(340, OdDbFieldKind::kHardPointer).optional().since(OdDb::vAC15).named(L"dimtxsty"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbUCSTableRecord::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbUCSTableRecord",
        {
            RECORD_NAME_AND_FLAGS(OdDbUCSTableRecord),
            odField<&OdDbUCSTableRecord::m_origin>(10).named(L"origin"),
            odField<&OdDbUCSTableRecord::m_xAxis>(11).defaults(1, 0, 0).named(L"xAxis"),
            odField<&OdDbUCSTableRecord::m_yAxis>(12).defaults(0, 1, 0).named(L"yAxis"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbViewTableRecord::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbViewTableRecord",
        {
            RECORD_NAME_AND_FLAGS(OdDbViewTableRecord),
            odField<&OdDbViewTableRecord::m_height>(40).defaults(1.0).named(L"height"),
            odField<&OdDbViewTableRecord::m_center>(10).named(L"center"),
            odField<&OdDbViewTableRecord::m_width>(41).defaults(1.0).named(L"width"),
            odField<&OdDbViewTableRecord::m_viewDirection>(11).named(L"viewDirection"),
            odField<&OdDbViewTableRecord::m_target>(12).named(L"target"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbViewportTableRecord::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbViewportTableRecord",
        {
            RECORD_NAME_AND_FLAGS(OdDbViewportTableRecord),
            odField<&OdDbViewportTableRecord::m_lowerLeft>(10).named(L"lowerLeft"),
            odField<&OdDbViewportTableRecord::m_upperRight>(11).defaults(1, 1, 0).named(L"upperRight"),
            odField<&OdDbViewportTableRecord::m_center>(12).named(L"center"),
            odField<&OdDbViewportTableRecord::m_viewDirection>(16).named(L"viewDirection"),
            odField<&OdDbViewportTableRecord::m_target>(17).named(L"target"),
            odField<&OdDbViewportTableRecord::m_height>(40).defaults(1.0).named(L"height"),
            odField<&OdDbViewportTableRecord::m_aspect>(41).defaults(1.0).named(L"aspect"),
        }}}};
  return schema;
}
