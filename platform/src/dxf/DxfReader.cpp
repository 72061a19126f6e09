// Reads a DXF file into a new database: sections, tables, blocks, entities
// and objects, with what the platform does not model kept as read, and the
// damage that can be repaired safely repaired and reported.
#include <algorithm>
#include <cwchar>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <unordered_map>
#include <sstream>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbPolyline.h"
#include "DbProxy.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"
#include "db/DbDefaults.h"
#include "dxf/DxfAudit.h"
#include "dxf/DxfFileFormats.h"
#include "dxf/DxfStructure.h"
#include "dxf/DxfTagReader.h"
#include "dxf/DxfTagStream.h"

namespace {

std::string narrow(const OdString& s) { return s.toUtf8(); }

// The tag context of a read: handles become ids (stubs made on demand) and
// names that cannot be resolved yet are kept for the end of the read.
class ReadContext : public OdDbTagContext {
 public:
  OdDbDatabase* db = nullptr;
  OdDb::DwgVersion fileVersion = OdDb::kDHL_CURRENT;
  std::vector<OdDxfDeferredName> deferred;

  OdDbDatabase* database() const override { return db; }
  OdDb::DwgVersion version() const override { return fileVersion; }
  // A reference into the placeholder range names nothing of the file.
  OdDbObjectId idFromHandle(OdUInt64 handle) override {
    return handle >= kOdDxfPlaceholderHandles ? OdDbObjectId() : db->getOdDbObjectId(OdDbHandle(handle), true);
  }
  void deferName(OdDbObject* object, const OdDbField& field, const OdString& name) override {
    deferred.push_back({object, &field, name});
  }
  // Values repaired while one object is read, each named once.
  std::vector<const wchar_t*> repairedValues;
  bool repairsValues() const override { return true; }
  void valueRepaired(OdDbObject*, const wchar_t* what) override {
    for (const wchar_t* known : repairedValues) {
      if (std::wcscmp(known, what) == 0) return;
    }
    repairedValues.push_back(what);
  }
  // Entities name the same few layers and styles over and over: found names are remembered.
  OdDbObjectId idFromName(OdDbNameTable table, const OdString& name) override {
    std::wstring key(1, static_cast<wchar_t>(static_cast<int>(table) + 1));
    key += name.str();
    auto it = m_names.find(key);
    if (it != m_names.end() && !it->second.isErased()) return it->second;
    OdDbObjectId id = OdDbTagContext::idFromName(table, name);
    if (!id.isNull()) m_names[key] = id;
    return id;
  }

 private:
  std::unordered_map<std::wstring, OdDbObjectId> m_names;
};

// Where the reader's tags come from: a file's data (ASCII or binary), or
// tags held in memory as values. Either source is a concrete class; one
// well-predicted branch per tag chooses it, with no virtual call.
class TagInput {
 public:
  explicit TagInput(std::string_view data) { m_text.emplace(data); }
  explicit TagInput(const OdDxfTagStream& tags) { m_tags.emplace(tags); }

  bool next(OdDxfTag& tag) { return m_tags ? m_tags->next(tag) : m_text->next(tag); }
  void pushBack() { m_tags ? m_tags->pushBack() : m_text->pushBack(); }
  int line() const { return m_tags ? m_tags->line() : m_text->line(); }
  std::string where() const { return m_tags ? m_tags->where() : m_text->where(); }
  bool hasError() const { return m_tags ? m_tags->hasError() : m_text->hasError(); }
  const std::string& errorMessage() const { return m_tags ? m_tags->errorMessage() : m_text->errorMessage(); }
  bool atEnd() const { return m_tags ? m_tags->atEnd() : m_text->atEnd(); }
  size_t bytesAfterEof() const { return m_tags ? m_tags->bytesAfterEof() : m_text->bytesAfterEof(); }
  bool isBinary() const { return m_tags ? m_tags->isBinary() : m_text->isBinary(); }
  void setCodePage(int codePage) { m_tags ? m_tags->setCodePage(codePage) : m_text->setCodePage(codePage); }
  void setStopAtEof(bool stop) { m_tags ? m_tags->setStopAtEof(stop) : m_text->setStopAtEof(stop); }

 private:
  std::optional<OdDxfTagReader> m_text;
  std::optional<OdDxfTagStreamReader> m_tags;
};

class DxfReader {
 public:
  DxfReader(std::string_view data, OdDxfReadReport& report) : m_data(data), m_in(data), m_report(report) {}
  DxfReader(const OdDxfTagStream& tags, OdDxfReadReport& report) : m_tags(&tags), m_in(tags), m_report(report) {}
  OdDbDatabasePtr read();

 private:
  // ---- tags
  bool nextTag();
  [[noreturn]] void refuse(const std::string& message);
  [[noreturn]] void expected(const std::string& what);
  void repair(const OdString& message) { m_report.repairs.push_back(message); }
  bool isZero(std::string_view keyword) { return m_tag.code == 0 && m_tag.s.str() == std::wstring(keyword.begin(), keyword.end()); }
  // Reads the tags of one object (after its "0 TYPE") into m_body.
  void readBody();

  // ---- sections
  void scanHeaderForEncoding();
  template <class Tags>
  void scanHeaderForEncoding(Tags& scan);
  void readHeader();
  void readClasses();
  void readTables();
  void readTable();
  void readTableRecords(const OdDxfTableKind* kind, const OdDbObjectId& tableId, const OdString& name);
  void readBlocks();
  void readEntitiesSection();
  void readObjects();
  void readRawSection(const OdString& name);

  // ---- objects
  struct Header {
    OdUInt64 handle = 0;
    bool hasHandle = false;
    bool handleValid = true;
    OdUInt64 owner = 0;
    OdDbObjectIdArray reactors;
    OdUInt64 xdictionary = 0;
    OdDxfTagList appData;
    size_t bodyBegin = 0, bodyEnd = 0;  // the tags for the field table
    size_t xdataBegin = 0;
  };
  Header splitHeader(bool dimStyleHandle);
  OdRxClass* classFor(const OdString& dxfName, bool entity);
  // Creates the object of the current tags, adds it to the database and
  // reads its fields. The object comes back open for write.
  OdDbObjectPtr makeObject(OdRxClass* cls, const OdString& dxfName, const OdDbObjectId& owner, bool dimStyleHandle = false);
  // Entities of a block or of a section until the "0 ENDBLK"/"0 ENDSEC".
  // Outside any section (loose), the list ends before the next section, at
  // 0 EOF, at a stray 0 ENDSEC or at the end of the file.
  void readEntityList(const OdDbObjectId& blockId, bool entitiesSection, bool loose = false);
  // Header variables after the header's ENDSEC, until the next 0 group.
  void readLooseHeader();
  OdDbObjectId spaceFor(bool paperSpace);

  // ---- after reading: the audit, then the header as the file will have it
  void finish();

  std::string_view m_data;
  const OdDxfTagStream* m_tags = nullptr;  // reading tags from memory instead of data
  TagInput m_in;
  OdDxfReadReport& m_report;
  OdDxfReadState m_state{m_report};
  OdDxfAudit m_audit{m_state};
  OdDbDatabasePtr m_db;
  ReadContext m_ctx;
  OdDxfTag m_tag;
  int m_tagLine = 0;
  OdDxfTagList m_body;
  size_t m_bodyCount = 0;
  int m_bodyLine = 0;
  bool m_sawEof = false;
  bool m_unknownCodePage = false;
};

bool DxfReader::nextTag() {
  for (;;) {
    if (!m_in.next(m_tag)) {
      if (m_in.hasError()) refuse(m_in.errorMessage());
      return false;
    }
    m_tagLine = m_in.line();
    if (m_tag.code != 999) return true;  // comments are not part of the drawing
  }
}

void DxfReader::refuse(const std::string& message) { throw OdError(eDxfReadAborted, OdString(message)); }

void DxfReader::expected(const std::string& what) {
  std::string found = m_in.atEnd() ? std::string("the end of the file")
                                   : "'" + std::to_string(m_tag.code) + " " + narrow(m_tag.valueText()) + "'";
  refuse(m_in.where() + ": expected " + what + ", found " + found);
}

void DxfReader::readBody() {
  m_bodyCount = 0;
  m_bodyLine = m_tagLine;
  while (nextTag()) {
    if (m_tag.code == 0) {
      m_in.pushBack();
      return;
    }
    if (m_bodyCount == m_body.size()) m_body.emplace_back();
    std::swap(m_body[m_bodyCount++], m_tag);
  }
  expected("more groups or 0 ENDSEC");
}

// ---------------------------------------------------------------- sections

void DxfReader::scanHeaderForEncoding() {
  // The code page of strings is known only from the header: look at it first.
  if (m_tags) {
    OdDxfTagStreamReader scan(*m_tags);
    scanHeaderForEncoding(scan);
  } else {
    OdDxfTagReader scan(m_data);
    scanHeaderForEncoding(scan);
  }
}

template <class Tags>
void DxfReader::scanHeaderForEncoding(Tags& scan) {
  OdString acadver, codepage;
  OdDxfTag tag;
  OdString variable;
  int zeros = 0;
  int acadverLine = 0, codepageLine = 0;
  while (scan.next(tag)) {
    if (tag.code == 0) {
      if (tag.s == L"ENDSEC" || ++zeros > 2) break;
      continue;
    }
    if (tag.code == 9) variable = tag.s;
    else if (variable == L"$ACADVER" && tag.code == 1) acadver = tag.s, acadverLine = scan.line();
    else if (variable == L"$DWGCODEPAGE" && tag.code == 3) codepage = tag.s, codepageLine = scan.line();
  }
  m_report.versionName = acadver;
  m_report.version = acadver.isEmpty() ? OdDb::vAC09 : odDxfVersionFromName(acadver);
  // Version names run from AC1001 to the newest known; anything else is read
  // as the nearest known version, and said so.
  const bool knownVersion = acadver.isEmpty() || (acadver.getLength() == 6 && acadver.left(3) == L"AC1" &&
                                                  acadver.iCompare(odDxfVersionName(OdDb::vAC32)) <= 0) ||
                            acadver == L"AC2.10" || acadver == L"AC1.50";
  if (!knownVersion) {
    repair(OdString().format(L"line %d: unknown drawing version '%ls' read as %ls", acadverLine, acadver.c_str(),
                             odDxfVersionName(m_report.version)));
  }
  if (!codepage.isEmpty() && odCodePageFromDxfName(codepage.c_str()) == kOdCodePageNone) {
    repair(OdString().format(L"line %d: unknown code page '%ls'; ANSI_1252 used", codepageLine, codepage.c_str()));
    m_unknownCodePage = true;
  }
  // Groups are matched by the file's version from R13 on; older files (and
  // files without a version) may carry later groups, so nothing is held back.
  m_ctx.fileVersion = acadver.isEmpty() || m_report.version < OdDb::vAC12 ? OdDb::kDHL_CURRENT : m_report.version;
  m_in.setCodePage(OdDxf::stringCodePageOf(acadver.c_str(), codepage.c_str()));
}

void DxfReader::readHeader() {
  m_state.hasHeader = true;
  OdDbHeaderVariable* current = nullptr;
  std::vector<OdDbHeaderVariable> variables;
  while (nextTag()) {
    if (m_tag.code == 0) {
      if (m_tag.s != L"ENDSEC") expected("0 ENDSEC");
      for (auto& var : variables) {
        if (m_unknownCodePage && var.name.iCompare(L"$DWGCODEPAGE") == 0) var.tags = {OdDxfTag::str(3, L"ANSI_1252")};
        m_db->setHeaderVariable(var.name, var.tags);
      }
      return;
    }
    if (m_tag.code == 9) {
      variables.push_back({m_tag.s, {}});
      current = &variables.back();
      continue;
    }
    if (!current) expected("9 $VARIABLE");
    current->tags.push_back(m_tag);
  }
  expected("0 ENDSEC");
}

void DxfReader::readClasses() {
  auto& classes = m_db->classRecords();
  while (nextTag()) {
    if (m_tag.code != 0) expected("0 CLASS");
    if (m_tag.s == L"ENDSEC") return;
    if (m_tag.s != L"CLASS") expected("0 CLASS");
    readBody();
    OdDbClassRecord record;
    for (size_t i = 0; i < m_bodyCount; ++i) {
      const OdDxfTag& t = m_body[i];
      switch (t.code) {
        case 1: record.dxfName = t.s; break;
        case 2: record.cppName = t.s; break;
        case 3: record.appName = t.s; break;
        case 90: record.proxyFlags = static_cast<OdInt32>(t.i); break;
        case 91: record.instanceCount = static_cast<OdInt32>(t.i); break;
        case 280: record.wasProxy = t.i != 0; break;
        case 281: record.isEntity = t.i != 0; break;
        default: break;
      }
    }
    classes.push_back(record);
  }
  expected("0 ENDSEC");
}

void DxfReader::readTables() {
  while (nextTag()) {
    if (m_tag.code != 0) expected("0 TABLE");
    if (m_tag.s == L"ENDSEC") return;
    if (m_tag.s != L"TABLE") {
      // Records without their table's head: the table is made for them.
      const OdDxfTableKind* kind = odDxfTableKind(m_tag.s);
      if (!kind) expected("0 TABLE");
      repair(OdString().format(L"line %d: %ls records without a table head; table added", m_tagLine, kind->name));
      m_in.pushBack();
      if (m_db->tableId(kind->table).isNull()) m_audit.addMissingTable(*kind);
      readTableRecords(kind, m_db->tableId(kind->table), kind->name);
      continue;
    }
    readTable();
  }
  expected("0 ENDSEC");
}

void DxfReader::readTable() {
  readBody();
  OdString name;
  for (size_t i = 0; i < m_bodyCount; ++i) {
    if (m_body[i].code == 2) { name = m_body[i].s; break; }
  }
  const OdDxfTableKind* kind = odDxfTableKind(name);
  OdDbObjectId tableId;
  if (kind) {
    // A second table of the same kind adds its records to the first.
    tableId = m_db->tableId(kind->table);
    if (tableId.isNull()) {
      // The table's own "2 NAME" is structure, not a field.
      size_t w = 0;
      for (size_t i = 0; i < m_bodyCount; ++i) {
        if (m_body[i].code == 2 && m_body[i].s == name && w == i) continue;
        if (w != i) std::swap(m_body[w], m_body[i]);
        ++w;
      }
      m_bodyCount = w;
      OdDbObjectPtr table = makeObject(kind->tableClass(), L"TABLE", OdDbObjectId());
      tableId = table->objectId();
      m_db->setTableId(kind->table, tableId);
    } else {
      repair(OdString().format(L"line %d: second %ls table merged into the first", m_bodyLine, name.c_str()));
    }
  } else {
    // A table of a kind no drawing has: its records are skipped, with a report.
    repair(OdString().format(L"line %d: unknown table '%ls' dropped", m_bodyLine, name.c_str()));
  }
  readTableRecords(kind, tableId, name);
}

void DxfReader::readTableRecords(const OdDxfTableKind* kind, const OdDbObjectId& tableId, const OdString& name) {
  while (nextTag()) {
    if (m_tag.code != 0) expected("0 and a table record");
    if (m_tag.s == L"ENDTAB") {
      readBody();  // an ENDTAB may carry groups; they mean nothing
      return;
    }
    if (m_tag.s == L"ENDSEC" || m_tag.s == L"TABLE") {
      repair(OdString().format(L"line %d: table %ls had no ENDTAB", m_tagLine, name.c_str()));
      m_in.pushBack();
      return;
    }
    OdString recordType = m_tag.s;
    readBody();
    if (!kind) continue;
    if (recordType.iCompare(kind->name) != 0) {
      repair(OdString().format(L"line %d: %ls record in the %ls table dropped", m_bodyLine, recordType.c_str(), name.c_str()));
      continue;
    }
    const bool dimStyle = kind->table == OdDbNameTable::kDimStyle;
    OdDbObjectPtr object = makeObject(kind->recordClass(), recordType, tableId, dimStyle);
    auto* record = static_cast<OdDbSymbolTableRecord*>(object.get());
    auto* table = static_cast<OdDbSymbolTable*>(tableId.stub()->object);
    // A text style that stands for a shape file has no name, and a file may
    // hold several: each is kept with its handle (linetypes refer to them).
    const bool shapeFile = kind->table == OdDbNameTable::kTextStyle &&
                           static_cast<OdDbTextStyleTableRecord*>(record)->isShapeFile();
    const bool nameless = record->getName().isEmpty();
    if (nameless && kind->table != OdDbNameTable::kBlock && !shapeFile) {
      repair(OdString().format(L"line %d: %ls record without a name dropped", m_bodyLine, recordType.c_str()));
      object->erase();
      continue;
    }
    if (!(nameless && shapeFile) && !table->getAt(record->getName()).isNull()) {
      repair(OdString().format(L"line %d: duplicate %ls record '%ls' dropped", m_bodyLine, recordType.c_str(),
                               record->getName().c_str()));
      object->erase();
      continue;
    }
    table->appendRecordId(object->objectId());
    if (object->ownerId() != tableId) object->setOwnerId(tableId);
    if (kind->table == OdDbNameTable::kBlock) m_state.blocksByName[record->getName()] = object->objectId();
  }
  expected("0 ENDTAB");
}

OdDbObjectId DxfReader::spaceFor(bool paperSpace) { return paperSpace ? m_state.paperSpace : m_state.modelSpace; }

void DxfReader::readBlocks() {
  while (nextTag()) {
    if (m_tag.code != 0) expected("0 BLOCK");
    if (m_tag.s == L"ENDSEC") return;
    if (m_tag.s != L"BLOCK") expected("0 BLOCK");
    readBody();
    // The block's own values belong to its table record.
    OdString name, name3, path, description;
    OdInt16 flags = 0;
    OdGePoint3d origin;
    size_t w = 0;
    for (size_t i = 0; i < m_bodyCount; ++i) {
      OdDxfTag& t = m_body[i];
      bool taken = true;
      switch (t.code) {
        case 2: name = t.s; break;
        case 3: name3 = t.s; break;
        case 1: path = t.s; break;
        case 4: description = t.s; break;
        case 70: flags = static_cast<OdInt16>(t.i); break;
        case 10: origin.set(t.x, t.y, t.dims == 3 ? t.z : 0.0); break;
        default: taken = false; break;
      }
      if (!taken) {
        if (w != i) std::swap(m_body[w], m_body[i]);
        ++w;
      }
    }
    m_bodyCount = w;
    const int blockLine = m_bodyLine;
    if (name.isEmpty()) name = name3;
    if (name.iCompare(L"$MODEL_SPACE") == 0) name = L"*Model_Space";
    if (name.iCompare(L"$PAPER_SPACE") == 0) name = L"*Paper_Space";
    if (name.isEmpty()) {
      name = OdString().format(L"*U%d", static_cast<int>(m_state.blocksByName.size()) + 1);
      while (m_state.blocksByName.count(name)) name += L"_";
      repair(OdString().format(L"line %d: block without a name named '%ls'", blockLine, name.c_str()));
      flags |= OdDbBlockTableRecord::kAnonymous;
    }

    // The record: from the BLOCK_RECORD table, or made now (files before R13 have none).
    OdDbObjectId blockId;
    auto found = m_state.blocksByName.find(name);
    if (found != m_state.blocksByName.end()) {
      blockId = found->second;
      OdDbObjectPtr existing = blockId.openObject();
      if (auto* record = static_cast<OdDbBlockTableRecord*>(existing.get()); record && !record->blockBeginId().isNull()) {
        repair(OdString().format(L"line %d: second definition of block '%ls' dropped", blockLine, name.c_str()));
        readEntityList(OdDbObjectId(), false);
        continue;
      }
    } else {
      OdSmartPtr<OdDbBlockTableRecord> record = OdDbBlockTableRecord::createObject();
      record->setName(name);
      if (m_db->getBlockTableId().isNull()) m_audit.ensureTables();
      OdDbObjectPtr table = m_db->getBlockTableId().openObject(OdDb::kForWrite);
      m_db->blockUndoRecording(true);
      blockId = m_audit.addMissing(record.get(), m_db->getBlockTableId());
      static_cast<OdDbSymbolTable*>(table.get())->appendRecordId(blockId);
      m_state.blocksByName[name] = blockId;
      if (m_report.version >= OdDb::vAC12 && m_state.hasHeader) {
        repair(OdString().format(L"line %d: block '%ls' had no block record; record added", blockLine, name.c_str()));
      }
    }
    if (name.iCompare(L"*Model_Space") == 0) m_state.modelSpace = blockId;
    if (name.iCompare(L"*Paper_Space") == 0) m_state.paperSpace = blockId;
    {
      OdDbObjectPtr object = blockId.openObject(OdDb::kForWrite);
      auto* record = static_cast<OdDbBlockTableRecord*>(object.get());
      record->setBlockFlags(flags);
      record->setOrigin(origin);
      record->setPathName(path);
      record->setComments(description);
    }
    OdDbObjectId beginId = makeObject(OdDbBlockBegin::desc(), L"BLOCK", blockId)->objectId();
    readEntityList(blockId, false);
    // ENDBLK
    readBody();
    OdDbObjectId endId = makeObject(OdDbBlockEnd::desc(), L"ENDBLK", blockId)->objectId();
    static_cast<OdDbBlockTableRecord*>(blockId.stub()->object)->setBlockBeginEndInternal(beginId, endId);
  }
  expected("0 ENDSEC");
}

void DxfReader::readEntitiesSection() { readEntityList(OdDbObjectId(), true); }

void DxfReader::readEntityList(const OdDbObjectId& blockId, bool entitiesSection, bool loose) {
  OdDbEntityPtr complex;  // the INSERT or POLYLINE whose subentities are being read
  const char* endName = entitiesSection ? "0 ENDSEC" : "0 ENDBLK";
  while (nextTag()) {
    if (m_tag.code != 0) expected("0 and an entity");
    if (loose && (m_tag.s == L"SECTION" || m_tag.s == L"EOF" || m_tag.s == L"ENDSEC")) {
      if (complex.get()) repair(OdString().format(L"line %d: missing SEQEND added", m_tagLine));
      m_in.pushBack();
      return;
    }
    if (m_tag.s == (entitiesSection ? L"ENDSEC" : L"ENDBLK")) {
      if (complex.get()) repair(OdString().format(L"line %d: missing SEQEND added", m_tagLine));
      return;
    }
    if (m_tag.s == L"ENDSEC" || m_tag.s == L"EOF" || m_tag.s == L"SECTION" || m_tag.s == L"BLOCK") expected(endName);
    OdString dxfName = m_tag.s;
    readBody();

    if (dxfName == L"SEQEND") {
      if (complex.isNull()) {
        repair(OdString().format(L"line %d: SEQEND without a complex entity dropped", m_bodyLine));
        continue;
      }
      OdDbObjectPtr end = makeObject(OdDbSequenceEnd::desc(), dxfName, complex->objectId());
      *complex->sequenceEndIdInternal() = end->objectId();
      complex.release();
      continue;
    }

    // Where the entity goes: the block, or model or paper space by group 67.
    OdDbObjectId owner = blockId;
    if (entitiesSection) {
      bool paper = false;
      for (size_t i = 0; i < m_bodyCount; ++i) {
        if (m_body[i].code == 67) { paper = m_body[i].i != 0; break; }
        if (m_body[i].code == 100 && m_body[i].s != L"AcDbEntity") break;
      }
      owner = spaceFor(paper);
    }
    OdRxClass* cls = classFor(dxfName, true);
    if (complex.get() && dxfName == L"VERTEX") {
      // A vertex takes its polyline's kind: R12 files often leave out its flags.
      int flags = 0;
      for (size_t i = 0; i < m_bodyCount; ++i) {
        if (m_body[i].code == 70) { flags = static_cast<int>(m_body[i].i); break; }
      }
      cls = odDbVertexClassForPolyline(complex.get(), flags);
    }
    OdDbObjectPtr object = makeObject(cls, dxfName, complex.get() ? complex->objectId() : owner);
    auto* entity = dynamic_cast<OdDbEntity*>(object.get());
    if (!entity) {
      repair(OdString().format(L"line %d: %ls is not an entity; dropped", m_bodyLine, dxfName.c_str()));
      object->erase();
      continue;
    }
    if (complex.get()) {
      if (complex->acceptsSubentity(entity)) {
        complex->subentityIdsInternal()->append(object->objectId());
        continue;
      }
      repair(OdString().format(L"line %d: missing SEQEND added before %ls", m_bodyLine, dxfName.c_str()));
      complex.release();
      object->setOwnerId(owner);
    }
    if (!owner.isNull()) static_cast<OdDbBlockTableRecord*>(owner.stub()->object)->appendEntityIdInternal(object->objectId());
    if (entity->subentityIdsInternal()) {
      // Block references without "66 1" have no attributes to follow.
      bool follows = !entity->isKindOf(OdDbBlockReference::desc());
      for (size_t i = 0; i < m_bodyCount && !follows; ++i) follows = m_body[i].code == 66 && m_body[i].i != 0;
      if (follows) complex = entity;
    }
  }
  if (loose) return;
  expected(endName);
}

void DxfReader::readLooseHeader() {
  OdDbHeaderVariable* current = nullptr;
  std::vector<OdDbHeaderVariable> variables;
  while (nextTag()) {
    if (m_tag.code == 0) {
      m_in.pushBack();
      break;
    }
    if (m_tag.code == 9) {
      variables.push_back({m_tag.s, {}});
      current = &variables.back();
    } else if (current) {
      current->tags.push_back(m_tag);
    }
  }
  for (auto& var : variables) m_db->setHeaderVariable(var.name, var.tags);
}

void DxfReader::readObjects() {
  bool first = true;
  while (nextTag()) {
    if (m_tag.code != 0) expected("0 and an object");
    if (m_tag.s == L"ENDSEC") return;
    if (m_tag.s == L"EOF" || m_tag.s == L"SECTION") expected("0 ENDSEC");
    OdString dxfName = m_tag.s;
    readBody();
    OdDbObjectPtr object = makeObject(classFor(dxfName, false), dxfName, OdDbObjectId());
    if (first && object->isKindOf(OdDbDictionary::desc())) m_db->setNamedObjectsDictionaryId(object->objectId());
    first = false;
  }
  expected("0 ENDSEC");
}

void DxfReader::readRawSection(const OdString& name) {
  OdDbDatabase::RawSection section{name, {}};
  while (nextTag()) {
    if (m_tag.code == 0 && m_tag.s == L"ENDSEC") {
      m_db->rawSections().push_back(std::move(section));
      return;
    }
    section.tags.push_back(m_tag);
  }
  expected("0 ENDSEC");
}

// ---------------------------------------------------------------- objects

DxfReader::Header DxfReader::splitHeader(bool dimStyleHandle) {
  Header h;
  const int handleCode = dimStyleHandle ? 105 : 5;
  size_t i = 0;
  // The header groups come before the first subclass marker: handle, 102
  // application groups, owner. Files before R13 have no markers; there the
  // handle may stand anywhere.
  size_t firstMarker = m_bodyCount;
  for (size_t k = 0; k < m_bodyCount; ++k) {
    if (m_body[k].code == 100 || m_body[k].code == 1001) { firstMarker = k; break; }
  }
  std::vector<bool> taken(m_bodyCount, false);
  for (i = 0; i < firstMarker; ++i) {
    OdDxfTag& t = m_body[i];
    if ((t.code == handleCode || (dimStyleHandle && t.code == 5)) && !h.hasHandle) {
      h.hasHandle = true;
      h.handleValid = t.i != 0;
      h.handle = static_cast<OdUInt64>(t.i);
      taken[i] = true;
    } else if (t.code == 102 && t.s.left(1) == L"{") {
      const OdString group = t.s;
      size_t j = i + 1;
      while (j < firstMarker && !(m_body[j].code == 102 && m_body[j].s == L"}")) ++j;
      if (group == L"{ACAD_REACTORS") {
        for (size_t k = i + 1; k < j; ++k) {
          if (m_body[k].type == OdDxf::ValueType::kHandle && m_body[k].i) h.reactors.append(m_ctx.idFromHandle(static_cast<OdUInt64>(m_body[k].i)));
        }
      } else if (group == L"{ACAD_XDICTIONARY") {
        for (size_t k = i + 1; k < j; ++k) {
          if (m_body[k].code == 360 && m_body[k].i) h.xdictionary = static_cast<OdUInt64>(m_body[k].i);
        }
      } else {
        for (size_t k = i; k <= j && k < firstMarker; ++k) h.appData.push_back(m_body[k]);
      }
      for (size_t k = i; k <= j && k < m_bodyCount; ++k) taken[k] = true;
      i = j;
    } else if (t.code == 330 && h.owner == 0 && t.type == OdDxf::ValueType::kHandle) {
      h.owner = static_cast<OdUInt64>(t.i);
      taken[i] = true;
    }
  }
  // Files without markers: a handle elsewhere.
  if (!h.hasHandle && firstMarker == m_bodyCount) {
    for (size_t k = 0; k < m_bodyCount; ++k) {
      if (m_body[k].code == handleCode && !taken[k]) {
        h.hasHandle = true;
        h.handleValid = m_body[k].i != 0;
        h.handle = static_cast<OdUInt64>(m_body[k].i);
        taken[k] = true;
        break;
      }
    }
  }
  // Compact: the body keeps the field groups, then the extended data.
  size_t w = 0;
  size_t xdata = m_bodyCount;
  for (size_t k = 0; k < m_bodyCount; ++k) {
    if (m_body[k].code == 1001) { xdata = k; break; }
  }
  for (size_t k = 0; k < xdata; ++k) {
    if (taken[k]) continue;
    if (w != k) std::swap(m_body[w], m_body[k]);
    ++w;
  }
  h.bodyBegin = 0;
  h.bodyEnd = w;
  h.xdataBegin = w;
  for (size_t k = xdata; k < m_bodyCount; ++k) {
    if (w != k) std::swap(m_body[w], m_body[k]);
    ++w;
  }
  m_bodyCount = w;
  return h;
}

OdRxClass* DxfReader::classFor(const OdString& dxfName, bool entity) {
  OdRxClass* cls = odDxfClassForObject(dxfName, m_body.data(), m_body.data() + m_bodyCount);
  if (cls) return cls;
  return entity ? OdDbProxyEntity::desc() : OdDbProxyObject::desc();
}

OdDbObjectPtr DxfReader::makeObject(OdRxClass* cls, const OdString& dxfName, const OdDbObjectId& owner, bool dimStyleHandle) {
  Header header = splitHeader(dimStyleHandle);
  OdRxObjectPtr created = cls->create();
  auto* object = dynamic_cast<OdDbObject*>(created.get());
  if (!object) refuse(m_in.where() + ": no class can hold a " + narrow(dxfName));
  // Proxies come only from classFor, for names no class has: they keep the name.
  if (cls == OdDbProxyEntity::desc()) static_cast<OdDbProxyEntity*>(object)->setDxfName(dxfName);
  else if (cls == OdDbProxyObject::desc()) static_cast<OdDbProxyObject*>(object)->setDxfName(dxfName);
  OdDbObjectId ownerId = owner;
  if (ownerId.isNull() && header.owner) ownerId = m_ctx.idFromHandle(header.owner);
  m_audit.addWithHandle(object, {header.hasHandle, header.handleValid, header.handle}, ownerId, dxfName, m_bodyLine);
  if (!header.reactors.empty() || header.xdictionary || !header.appData.empty() || header.xdataBegin < m_bodyCount) {
    OdDbObjectExtras& extras = object->extrasForWrite();
    extras.persistentReactors = header.reactors;
    if (header.xdictionary) extras.extensionDictionary = m_ctx.idFromHandle(header.xdictionary);
    extras.appData = std::move(header.appData);
    extras.xdata.assign(m_body.begin() + static_cast<long>(header.xdataBegin), m_body.begin() + static_cast<long>(m_bodyCount));
  }
  m_ctx.repairedValues.clear();
  OdDbSchemaIo::readFields(object, m_body.data() + header.bodyBegin, m_body.data() + header.bodyEnd, m_ctx);
  if (!m_ctx.repairedValues.empty()) {
    // One line per object, naming every value that was set right.
    OdString names;
    for (const wchar_t* what : m_ctx.repairedValues) names += OdString(names.isEmpty() ? L"" : L", ") + what;
    repair(OdString().format(L"line %d: %ls had invalid values (%ls); repaired", m_bodyLine, dxfName.c_str(), names.c_str()));
  }
  object->setModifiedInternal(false);
  object->setNewInternal(false);
  return OdDbObjectPtr(object);
}

// ---------------------------------------------------------------- main

OdDbDatabasePtr DxfReader::read() {
  m_report.binary = m_in.isBinary();
  scanHeaderForEncoding();
  m_db = OdDbDatabase::createEmpty();
  // Objects that the platform adds by itself while the file is read take
  // handles from the seed: it stands in the placeholder range (well above the
  // reader's own placeholders) until every handle of the file is known.
  m_db->setHandseed(OdDbHandle(kOdDxfPlaceholderHandles + (OdUInt64{1} << 31)));
  m_db->blockUndoRecording(true);
  m_ctx.db = m_db.get();
  m_state.db = m_db.get();
  m_in.setStopAtEof(true);

  if (m_tags ? m_tags->empty() : m_data.find_first_not_of(" \t\r\n") == std::string_view::npos) refuse("the file is empty");
  bool any = false;
  while (nextTag()) {
    if (m_tag.code == 0 && m_tag.s == L"EOF") {
      m_sawEof = true;
      break;
    }
    // What some writers leave outside any section is read as what it is.
    if (m_tag.code == 9 && m_tag.s.left(1) == L"$") {
      repair(OdString().format(L"line %d: header variables outside a section read", m_tagLine));
      m_in.pushBack();
      readLooseHeader();
      continue;
    }
    if (m_tag.code == 0 && m_tag.s == L"ENDSEC") {
      repair(OdString().format(L"line %d: 0 ENDSEC outside a section ignored", m_tagLine));
      continue;
    }
    if (m_tag.code == 0 && m_tag.s != L"SECTION" && odDxfIsEntityName(m_tag.s)) {
      repair(OdString().format(L"line %d: entities outside a section read into model space", m_tagLine));
      m_in.pushBack();
      any = true;
      m_audit.ensureTables();
      m_audit.ensureSpaces();
      readEntityList(OdDbObjectId(), true, true);
      continue;
    }
    if (m_tag.code != 0 || m_tag.s != L"SECTION") expected("0 SECTION");
    if (!nextTag() || m_tag.code != 2) expected("2 and a section name");
    any = true;
    OdString name = m_tag.s;
    if (name == L"HEADER") readHeader();
    else if (name == L"CLASSES") readClasses();
    else if (name == L"TABLES") readTables();
    else if (name == L"BLOCKS") {
      if (m_state.modelSpace.isNull() || m_state.paperSpace.isNull()) m_audit.ensureSpaces();
      readBlocks();
    } else if (name == L"ENTITIES") {
      m_audit.ensureTables();
      m_audit.ensureSpaces();
      readEntitiesSection();
    } else if (name == L"OBJECTS") readObjects();
    else readRawSection(name);
  }
  if (!any) refuse(m_in.where() + ": expected 0 SECTION, found no section");
  if (!m_sawEof) repair(L"the file ended without 0 EOF");
  if (m_in.atEnd() && m_in.bytesAfterEof() > 0) {
    repair(OdString().format(L"%d bytes after 0 EOF ignored", static_cast<int>(m_in.bytesAfterEof())));
  }
  finish();
  return m_db;
}

void DxfReader::finish() {
  m_audit.run(m_ctx.deferred);
  // The header: version and handle seed as the file will have them; a seed
  // the file gives above the next free handle is kept, one in the placeholder
  // range is not.
  OdDb::DwgVersion version = m_report.version;
  m_db->setOriginalFileVersion(version);
  if (!m_state.hasHeader) odDbSetDefaultHeader(m_db.get());
  const OdUInt64 fileSeed = static_cast<OdUInt64>(m_db->headerInt(L"$HANDSEED", 0));
  if (fileSeed < kOdDxfPlaceholderHandles) m_db->setHandseed(OdDbHandle(fileSeed));
  m_db->blockUndoRecording(false);
}

}  // namespace

OdDbDatabasePtr odDxfReadBuffer(std::string_view data, OdDxfReadReport* report) {
  OdDxfReadReport local;
  DxfReader reader(data, report ? *report : local);
  return reader.read();
}

OdDbDatabasePtr odDxfReadTags(const OdDxfTagStream& tags, OdDxfReadReport* report) {
  OdDxfReadReport local;
  DxfReader reader(tags, report ? *report : local);
  return reader.read();
}

OdDbDatabasePtr odDxfReadFile(const OdString& path, OdDxfReadReport* report) {
  const std::string name = path.toUtf8();
  std::ifstream in(name, std::ios::binary);
  if (!in) throw OdError_FileException(eCantOpenFile, path);
  // A file of known size in one read; whatever follows (or all of a stream
  // that has no size) in pieces.
  std::error_code noSize;
  const std::uintmax_t size = std::filesystem::file_size(name, noSize);
  std::string data(noSize ? 0 : static_cast<size_t>(size), '\0');
  in.read(data.data(), static_cast<std::streamsize>(data.size()));
  data.resize(static_cast<size_t>(in.gcount()));
  for (char piece[1 << 16]; in.read(piece, sizeof piece) || in.gcount() > 0;) data.append(piece, static_cast<size_t>(in.gcount()));
  if (in.bad()) throw OdError_FileException(eFileAccessErr, path);
  // A drawing of another registered format (DWG) is read by its own reader.
  OdDbDatabasePtr db = odDxfReadAnyBuffer(data, report);
  db->setFilename(path);
  return db;
}
