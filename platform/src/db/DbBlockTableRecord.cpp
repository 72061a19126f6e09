#include <algorithm>
#include <unordered_map>
#include <vector>

#include "DbBlockTableRecord.h"

#include "DbBlockReference.h"
#include "DbDatabase.h"
#include "DbDictionary.h"

ODDB_DEFINE_MEMBERS(OdDbBlockTableRecord, OdDbSymbolTableRecord, L"BLOCK_RECORD")
ODDB_DEFINE_MEMBERS(OdDbBlockBegin, OdDbEntity, L"BLOCK")
ODDB_DEFINE_MEMBERS(OdDbBlockEnd, OdDbEntity, L"ENDBLK")

const OdDbClassSchema& OdDbBlockTableRecord::classSchema() {
  // The name, flags, base point, path and description are written by the
  // BLOCK entity of the file, not by the table record: they are filed here
  // but have no DXF groups of their own.
  static const OdDbClassSchema schema{
      &OdDbSymbolTableRecord::classSchema(),
      {{L"AcDbBlockTableRecord",
        {
            odField<&OdDbBlockTableRecord::m_name>(2).named(L"name"),
            odField<&OdDbBlockTableRecord::m_layoutId>(340, OdDbFieldKind::kHardPointer).since(OdDb::vAC15).named(L"layout"),
            odField<&OdDbBlockTableRecord::m_insertUnits>(70).since(OdDb::vAC21).named(L"insertUnits"),
            odField<&OdDbBlockTableRecord::m_explodable>(280).defaultsInt(1).since(OdDb::vAC21).named(L"explodable"),
            odField<&OdDbBlockTableRecord::m_scalable>(281).since(OdDb::vAC21).named(L"scalable"),
            odField<&OdDbBlockTableRecord::m_blockFlags>(70).noDxf().named(L"blockFlags"),
            odField<&OdDbBlockTableRecord::m_origin>(10).noDxf().named(L"origin"),
            odField<&OdDbBlockTableRecord::m_pathName>(1).noDxf().named(L"pathName"),
            odField<&OdDbBlockTableRecord::m_comments>(4).noDxf().named(L"comments"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbBlockBegin::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {{L"AcDbBlockBegin", {}}}};
  return schema;
}

const OdDbClassSchema& OdDbBlockEnd::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {{L"AcDbBlockEnd", {}}}};
  return schema;
}

OdDbObjectId OdDbBlockTableRecord::appendOdDbEntity(OdDbEntity* entity) {
  if (!entity) throw OdError(eNullEntityPointer);
  OdDbDatabase* db = database();
  if (!db) throw OdError(eMustFirstAddBlockToDb);
  assertWriteEnabled();
  OdDbObjectId id = db->addOdDbObject(entity, objectId());
  m_entities.append(id);
  if (entity->layerId().isNull()) entity->setDatabaseDefaults(db);
  return id;
}

OdResult OdDbBlockTableRecord::getSortentsTable(OdSmartPtr<OdDbSortentsTable>& table, OdDb::OpenMode mode,
                                               bool createIfNecessary) {
  table.release();
  if (!database()) return eNotInDatabase;
  OdDbObjectId dictionaryId = extensionDictionary();
  if (dictionaryId.isNull() || dictionaryId.isErased()) {
    if (!createIfNecessary) return eKeyNotFound;
    if (OdResult status = createExtensionDictionary(); status != eOk) return status;
    dictionaryId = extensionDictionary();
  }
  OdDbDictionaryPtr dictionary = OdDbDictionary::cast(dictionaryId.openObject().get());
  if (dictionary.isNull()) return eKeyNotFound;
  OdDbObjectId tableId = dictionary->getAt(L"ACAD_SORTENTS");
  if (tableId.isNull() || tableId.isErased()) {
    if (!createIfNecessary) return eKeyNotFound;
    dictionary->upgradeOpen();
    OdDbSortentsTablePtr made = OdDbSortentsTable::createObject();
    made->setBlockId(objectId());
    tableId = dictionary->setAt(L"ACAD_SORTENTS", made.get());
    made->addPersistentReactor(dictionaryId);
  }
  table = OdDbSortentsTable::cast(tableId.openObject(mode).get());
  return table.isNull() ? eNotThatKindOfClass : eOk;
}

OdDbObjectIteratorPtr OdDbBlockTableRecord::newIterator(bool atBeginning, bool skipErased) const {
  OdDbObjectIteratorPtr it(new OdDbObjectIterator(m_entities, skipErased));
  it->start(atBeginning, skipErased);
  return it;
}

OdResult OdDbBlockTableRecord::getBlockReferenceIds(OdDbObjectIdArray& ids, bool) const {
  ids.clear();
  OdDbDatabase* db = database();
  if (!db) return eNoDatabase;
  const OdDbObjectId self = objectId();
  db->forEachObjectId([&](const OdDbObjectId& id) {
    if (id.isErased()) return;
    auto* ref = dynamic_cast<OdDbBlockReference*>(id.stub()->object);
    if (ref && ref->blockTableRecord() == self) ids.append(id);
  });
  std::sort(ids.begin(), ids.end());
  return eOk;
}

OdDbBlockReferenceIdIteratorPtr OdDbBlockTableRecord::newBlockReferenceIdIterator() const {
  OdDbObjectIdArray ids;
  getBlockReferenceIds(ids);
  OdDbBlockReferenceIdIteratorPtr it(new OdDbObjectIterator(ids, true));
  it->start();
  return it;
}

bool OdDbBlockTableRecord::hasAttributeDefinitions() const {
  for (const OdDbObjectId& id : m_entities) {
    if (!id.isErased() && id.objectClass() && id.objectClass()->isDerivedFrom(OdDbAttributeDefinition::desc())) return true;
  }
  return false;
}

bool OdDbBlockTableRecord::isModelSpace() const { return getName().iCompare(L"*Model_Space") == 0; }

bool OdDbBlockTableRecord::isPaperSpace() const {
  return getName().left(12).iCompare(L"*Paper_Space") == 0;
}

void OdDbBlockTableRecord::subSetDatabaseDefaults(OdDbDatabase*) { createBlockMarkersInternal(); }

void OdDbBlockTableRecord::createBlockMarkersInternal() {
  // A new block gets its BLOCK and ENDBLK markers, on layer 0 with the ByLayer linetype.
  OdDbDatabase* db = database();
  if (!m_blockBeginId.isNull() || !db) return;
  OdSmartPtr<OdDbBlockBegin> begin = OdDbBlockBegin::createObject();
  OdSmartPtr<OdDbBlockEnd> end = OdDbBlockEnd::createObject();
  m_blockBeginId = db->addOdDbObject(begin.get(), objectId());
  m_blockEndId = db->addOdDbObject(end.get(), objectId());
  for (OdDbEntity* marker : {static_cast<OdDbEntity*>(begin.get()), static_cast<OdDbEntity*>(end.get())}) {
    marker->setLayer(db->getLayerZeroId());
    marker->setLinetype(db->getLinetypeByLayerId());
  }
}

OdResult OdDbBlockTableRecord::subErase(bool erasing) {
  // Erasing a block erases what it owns; unerasing brings it back.
  if (isModelSpace() || isPaperSpace()) return eNotApplicable;
  for (const OdDbObjectId& id : m_entities) {
    OdDbObjectPtr entity = id.openObject(OdDb::kForWrite, true);
    if (entity.get() && entity->isErased() != erasing) entity->erase(erasing);
  }
  for (const OdDbObjectId& id : {m_blockBeginId, m_blockEndId}) {
    OdDbObjectPtr marker = id.openObject(OdDb::kForWrite, true);
    if (marker.get() && marker->isErased() != erasing) marker->erase(erasing);
  }
  return eOk;
}

void OdDbBlockTableRecord::dwgOutFields(OdDbDwgFiler* filer) const {
  OdDbSymbolTableRecord::dwgOutFields(filer);
  filer->wrHardOwnershipId(m_blockBeginId);
  filer->wrHardOwnershipId(m_blockEndId);
  filer->wrInt32(static_cast<OdInt32>(m_entities.size()));
  for (const auto& id : m_entities) filer->wrHardOwnershipId(id);
}

OdResult OdDbBlockTableRecord::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbSymbolTableRecord::dwgInFields(filer);
  m_blockBeginId = filer->rdHardOwnershipId();
  m_blockEndId = filer->rdHardOwnershipId();
  OdInt32 count = filer->rdInt32();
  m_entities.clear();
  m_entities.reserve(static_cast<size_t>(count));
  for (OdInt32 i = 0; i < count; ++i) m_entities.append(filer->rdHardOwnershipId());
  return result;
}

// ---------------------------------------------------------------- iterator

OdDbObjectIterator::OdDbObjectIterator(OdDbObjectIdArray ids, bool skipErased)
    : m_ids(std::move(ids)), m_skipErased(skipErased) {}

void OdDbObjectIterator::skipErasedForward() {
  if (!m_skipErased) return;
  while (m_pos >= 0 && m_pos < static_cast<long long>(m_ids.size()) && m_ids[static_cast<size_t>(m_pos)].isErased()) ++m_pos;
}

void OdDbObjectIterator::skipErasedBackward() {
  if (!m_skipErased) return;
  while (m_pos >= 0 && m_pos < static_cast<long long>(m_ids.size()) && m_ids[static_cast<size_t>(m_pos)].isErased()) --m_pos;
}

void OdDbObjectIterator::start(bool atBeginning, bool skipErased) {
  m_skipErased = skipErased;
  if (atBeginning) {
    m_pos = 0;
    skipErasedForward();
  } else {
    m_pos = static_cast<long long>(m_ids.size()) - 1;
    skipErasedBackward();
  }
}

bool OdDbObjectIterator::done() const { return m_pos < 0 || m_pos >= static_cast<long long>(m_ids.size()); }

void OdDbObjectIterator::step(bool forward, bool skipErased) {
  m_skipErased = skipErased;
  if (forward) {
    ++m_pos;
    skipErasedForward();
  } else {
    --m_pos;
    skipErasedBackward();
  }
}

OdDbObjectId OdDbObjectIterator::objectId() const { return done() ? OdDbObjectId() : m_ids[static_cast<size_t>(m_pos)]; }

OdDbEntityPtr OdDbObjectIterator::entity(OdDb::OpenMode mode, bool openErased) const {
  return OdDbEntity::cast(objectId().openObject(mode, openErased).get());
}

bool OdDbObjectIterator::seek(const OdDbObjectId& id) {
  for (size_t i = 0; i < m_ids.size(); ++i) {
    if (m_ids[i] == id) { m_pos = static_cast<long long>(i); return true; }
  }
  return false;
}

namespace {
thread_local std::vector<const OdDbStub*> tBlocksWalked;
}

OdDbBlockWalk::OdDbBlockWalk(const OdDbObjectId& blockId) {
  const OdDbStub* stub = blockId.stub();
  if (!stub || static_cast<int>(tBlocksWalked.size()) >= kMaxDepth) return;
  if (std::find(tBlocksWalked.begin(), tBlocksWalked.end(), stub) != tBlocksWalked.end()) return;
  tBlocksWalked.push_back(stub);
  m_entered = true;
}

OdDbBlockWalk::~OdDbBlockWalk() {
  if (m_entered) tBlocksWalked.pop_back();
}

std::vector<std::vector<OdString>> odDbBlockCycles(OdDbDatabase* db) {
  std::vector<std::vector<OdString>> cycles;
  OdDbObjectId tableId = db ? db->getBlockTableId() : OdDbObjectId();
  auto* table = tableId.isValid() ? dynamic_cast<OdDbSymbolTable*>(tableId.stub()->object) : nullptr;
  if (!table) return cycles;
  // Layouts (model space, paper spaces) are never referenced, so no cycle
  // passes through them: their entities, often most of the drawing, are not
  // walked.
  auto blockOf = [](const OdDbObjectId& id) -> const OdDbBlockTableRecord* {
    auto* block =
        id.isValid() && !id.isErased() ? dynamic_cast<const OdDbBlockTableRecord*>(id.stub()->object) : nullptr;
    return block && !block->isLayout() ? block : nullptr;
  };
  // The blocks each block refers to, in order, without repeats.
  std::unordered_map<const OdDbStub*, std::vector<const OdDbStub*>> edges;
  auto targets = [&](const OdDbBlockTableRecord* block) -> const std::vector<const OdDbStub*>& {
    auto [it, added] = edges.try_emplace(block->objectId().stub());
    if (!added) return it->second;
    for (const OdDbObjectId& id : block->entityIds()) {
      if (!id.isValid() || id.isErased()) continue;
      auto* reference = dynamic_cast<const OdDbBlockReference*>(id.stub()->object);
      if (!reference || !blockOf(reference->blockTableRecord())) continue;
      const OdDbStub* target = reference->blockTableRecord().stub();
      if (std::find(it->second.begin(), it->second.end(), target) == it->second.end()) it->second.push_back(target);
    }
    return it->second;
  };
  // Depth-first, without recursion: 0 unseen, 1 on the path, 2 done.
  std::unordered_map<const OdDbStub*, int> state;
  for (const OdDbObjectId& rootId : table->recordIds()) {
    const OdDbBlockTableRecord* root = blockOf(rootId);
    if (!root || state[rootId.stub()] != 0) continue;
    std::vector<std::pair<const OdDbStub*, size_t>> path{{rootId.stub(), 0}};
    state[rootId.stub()] = 1;
    while (!path.empty()) {
      auto& [stub, next] = path.back();
      const auto& out = targets(static_cast<const OdDbBlockTableRecord*>(stub->object));
      if (next == out.size()) {
        state[stub] = 2;
        path.pop_back();
        continue;
      }
      const OdDbStub* target = out[next++];
      int& targetState = state[target];
      if (targetState == 0) {
        targetState = 1;
        path.emplace_back(target, 0);
      } else if (targetState == 1) {
        std::vector<OdString> names;
        size_t from = 0;
        while (path[from].first != target) ++from;
        for (size_t i = from; i < path.size(); ++i) {
          names.push_back(static_cast<const OdDbBlockTableRecord*>(path[i].first->object)->getName());
        }
        names.push_back(names.front());
        cycles.push_back(std::move(names));
      }
    }
  }
  return cycles;
}
