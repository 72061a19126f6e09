// The audit of a drawing just read: what the file lacks is added (tables,
// standard records, the model and paper spaces, records that entities name,
// block definitions, the root dictionaries and layouts), handles that cannot
// stay are replaced, block cycles are reported, and every object leaves the
// placeholder range. Each repair is reported in one line.
#include "dxf/DxfAudit.h"

#include <algorithm>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbSymbolTable.h"
#include "db/DbDefaults.h"

// ---------------------------------------------------------------- handles

OdDbObjectId OdDxfAudit::addWithHandle(OdDbObject* object, const OdDxfFileHandle& header, const OdDbObjectId& owner,
                                       const OdString& what, int line) {
  if (header.given && header.valid && header.value >= kOdDxfPlaceholderHandles) {
    repair(OdString().format(L"line %d: %ls had the handle %ls, beyond the handles a drawing may use; given a new one",
                             line, what.c_str(), OdDbHandle(header.value).ascii().c_str()));
  } else if (header.given && header.valid) {
    OdDbStub* stub = m.db->stubFor(header.value);
    if (!stub || !stub->object) return m.db->addOdDbObject(object, owner, OdDbHandle(header.value));
    repair(OdString().format(L"line %d: %ls has the handle %ls of another object; given a new handle", line,
                             what.c_str(), OdDbHandle(header.value).ascii().c_str()));
  } else if (header.given && !header.valid) {
    repair(OdString().format(L"line %d: %ls had an empty handle; given a new one", line, what.c_str()));
  } else if (m.reportsAdditions()) {
    repair(OdString().format(L"line %d: %ls had no handle; given a new one", line, what.c_str()));
  }
  return addMissing(object, owner);
}


// New handles are handed out once every handle of the file is known; until
// then the object holds a placeholder.
OdDbObjectId OdDxfAudit::addMissing(OdDbObject* object, const OdDbObjectId& owner) {
  while (m.db->stubFor(kOdDxfPlaceholderHandles + m_nextPlaceholder)) ++m_nextPlaceholder;
  return m.db->addOdDbObject(object, owner, OdDbHandle(kOdDxfPlaceholderHandles + m_nextPlaceholder++));
}

OdDbObjectId OdDxfAudit::addMissingTable(const OdDxfTableKind& kind) {
  OdRxObjectPtr table = kind.tableClass()->create();
  OdDbObjectId id = addMissing(static_cast<OdDbObject*>(table.get()));
  m.db->setTableId(kind.table, id);
  return id;
}

OdDbObjectId OdDxfAudit::addMissingRecord(OdDbNameTable table, OdDbSymbolTableRecord* record) {
  auto* symbolTable = static_cast<OdDbSymbolTable*>(m.db->tableId(table).stub()->object);
  OdDbObjectId id = addMissing(record, symbolTable->objectId());
  symbolTable->appendRecordId(id);
  if (table == OdDbNameTable::kBlock) m.blocksByName[record->getName()] = id;
  return id;
}

void OdDxfAudit::ensureTables() {
  for (const OdDxfTableKind& kind : odDxfTableKinds()) {
    if (!m.db->tableId(kind.table).isNull()) continue;
    addMissingTable(kind);
    if (m.reportsAdditions()) {
      repair(OdString().format(L"missing %ls table added", kind.name));
    }
  }
}

void OdDxfAudit::ensureSpaces() {
  ensureTables();
  auto makeSpace = [&](const wchar_t* name) {
    auto found = m.blocksByName.find(name);
    if (found != m.blocksByName.end()) return found->second;
    OdSmartPtr<OdDbBlockTableRecord> record = OdDbBlockTableRecord::createObject();
    record->setName(name);
    return addMissingRecord(OdDbNameTable::kBlock, record.get());
  };
  if (m.modelSpace.isNull()) m.modelSpace = makeSpace(L"*Model_Space");
  if (m.paperSpace.isNull()) m.paperSpace = makeSpace(L"*Paper_Space");
}

// ---------------------------------------------------------------- after reading

void OdDxfAudit::run(std::vector<OdDxfDeferredName>& deferredNames) {
  ensureTables();
  ensureSpaces();
  ensureStandardRecords();
  resolveDeferredNames(deferredNames);
  addBlockMarkers();
  ensureRootDictionaries();
  reportBlockCycles();
  finalHandles();
}

// Blocks known from their record alone get their BLOCK and ENDBLK.
void OdDxfAudit::addBlockMarkers() {
  auto* blocks = static_cast<OdDbSymbolTable*>(m.db->getBlockTableId().stub()->object);
  for (const OdDbObjectId& id : blocks->recordIds()) {
    auto* block = static_cast<OdDbBlockTableRecord*>(id.stub()->object);
    if (!block || !block->blockBeginId().isNull()) continue;
    OdDbObjectPtr open = id.openObject(OdDb::kForWrite);
    block->createBlockMarkersInternal();
    block->setModifiedInternal(false);
    if (m.reportsAdditions() && !block->isModelSpace() && !block->isPaperSpace()) {
      repair(OdString().format(L"block %ls had a record but no definition; an empty definition added", block->getName().c_str()));
    }
  }
}

// Final handles for every object in the placeholder range (those the file
// gave none, an empty, a repeated or an impossible one, and those added
// here, also by the objects themselves), in the order they were made, above
// every handle of the file. The file's own unique handles stay as they are.
void OdDxfAudit::finalHandles() {
  OdUInt64 next = 1;
  std::vector<OdDbObjectId> placeholders;
  m.db->forEachObjectId([&](const OdDbObjectId& id) {
    if (id.handle().value() < kOdDxfPlaceholderHandles) next = std::max(next, id.handle().value() + 1);
    else placeholders.push_back(id);
  });
  std::sort(placeholders.begin(), placeholders.end(),
            [](const OdDbObjectId& a, const OdDbObjectId& b) { return a.handle().value() < b.handle().value(); });
  std::vector<std::pair<OdDbObjectId, OdUInt64>> changes;
  for (const OdDbObjectId& id : placeholders) {
    while (m.db->stubFor(next)) ++next;  // a handle referred to but never defined stays unused
    changes.emplace_back(id, next++);
  }
  m.db->rehandleInternal(changes);
}

void OdDxfAudit::ensureStandardRecords() {
  const bool report = m.reportsAdditions();
  auto ensure = [&](OdDbNameTable kind, const wchar_t* name, auto setup) {
    if (!m.db->findRecord(kind, name).isNull()) return;
    const OdDxfTableKind* tableKind = odDxfTableKind(kind);
    OdRxObjectPtr created = tableKind->recordClass()->create();
    auto* record = static_cast<OdDbSymbolTableRecord*>(created.get());
    record->setName(name);
    setup(record);
    addMissingRecord(kind, record);
    if (report) repair(OdString().format(L"missing %ls record '%ls' added", tableKind->name, name));
  };
  auto none = [](OdDbSymbolTableRecord*) {};
  ensure(OdDbNameTable::kLinetype, L"ByBlock", none);
  ensure(OdDbNameTable::kLinetype, L"ByLayer", none);
  ensure(OdDbNameTable::kLinetype, L"Continuous", [](OdDbSymbolTableRecord* r) {
    static_cast<OdDbLinetypeTableRecord*>(r)->setComments(L"Solid line");
  });
  ensure(OdDbNameTable::kLayer, L"0", [&](OdDbSymbolTableRecord* r) {
    static_cast<OdDbLayerTableRecord*>(r)->setLinetypeObjectId(m.db->getLinetypeContinuousId());
  });
  ensure(OdDbNameTable::kTextStyle, L"Standard", none);
  ensure(OdDbNameTable::kRegApp, L"ACAD", none);
  // R13 and R14 drawings are written in their own version, which needs no more.
  if (m.report.version >= OdDb::vAC12 && m.report.version < OdDb::vAC15) return;
  // A dimension style and an active viewport only when the table has none at all.
  auto emptyTable = [&](OdDbNameTable kind) {
    auto* table = static_cast<OdDbSymbolTable*>(m.db->tableId(kind).stub()->object);
    for (const OdDbObjectId& id : table->recordIds()) {
      if (!id.isErased()) return false;
    }
    return true;
  };
  if (emptyTable(OdDbNameTable::kDimStyle)) ensure(OdDbNameTable::kDimStyle, L"Standard", none);
  if (emptyTable(OdDbNameTable::kVport)) ensure(OdDbNameTable::kVport, L"*Active", none);
}

void OdDxfAudit::resolveDeferredNames(std::vector<OdDxfDeferredName>& deferred) {
  for (const auto& d : deferred) {
    OdDbObjectId id = m.db->findRecord(d.field->table, d.name);
    OdString what = d.object->dxfName();
    if (id.isNull()) {
      switch (d.field->table) {
        case OdDbNameTable::kLayer: {
          OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
          layer->setName(d.name);
          layer->setLinetypeObjectId(m.db->getLinetypeContinuousId());
          id = addMissingRecord(OdDbNameTable::kLayer, layer.get());
          if (m.reportsAdditions()) {
            repair(OdString().format(L"layer '%ls' used by %ls was missing; added", d.name.c_str(), what.c_str()));
          }
          break;
        }
        case OdDbNameTable::kBlock: {
          OdSmartPtr<OdDbBlockTableRecord> block = OdDbBlockTableRecord::createObject();
          block->setName(d.name);
          id = addMissingRecord(OdDbNameTable::kBlock, block.get());
          repair(OdString().format(L"block '%ls' used by %ls was missing; an empty block added", d.name.c_str(), what.c_str()));
          break;
        }
        case OdDbNameTable::kLinetype:
          id = m.db->getLinetypeByLayerId();
          repair(OdString().format(L"linetype '%ls' used by %ls was missing; ByLayer used", d.name.c_str(), what.c_str()));
          break;
        case OdDbNameTable::kTextStyle:
          id = m.db->getTextStyleStandardId();
          repair(OdString().format(L"text style '%ls' used by %ls was missing; Standard used", d.name.c_str(), what.c_str()));
          break;
        case OdDbNameTable::kDimStyle:
          id = m.db->getDimStyleStandardId();
          if (id.isNull()) {
            // No "Standard": the first style of the table stands in.
            auto* table = static_cast<OdDbSymbolTable*>(m.db->getDimStyleTableId().stub()->object);
            for (const OdDbObjectId& record : table->recordIds()) {
              if (!record.isErased()) { id = record; break; }
            }
          }
          repair(OdString().format(L"dimension style '%ls' used by %ls was missing; Standard used", d.name.c_str(), what.c_str()));
          break;
        default: continue;
      }
    }
    *static_cast<OdDbObjectId*>(d.field->ref(d.object)) = id;
  }
  deferred.clear();
}

void OdDxfAudit::ensureRootDictionaries() {
  const bool report = m.reportsAdditions();
  OdDbObjectId nodId = m.db->getNamedObjectsDictionaryId();
  if (nodId.isNull()) {
    OdDbDictionaryPtr nod = OdDbDictionary::createObject();
    nodId = addMissing(nod.get());
    m.db->setNamedObjectsDictionaryId(nodId);
    if (report) repair(L"missing named-object dictionary added");
  }
  auto* nod = static_cast<OdDbDictionary*>(nodId.stub()->object);
  auto subDictionary = [&](const wchar_t* name) {
    OdDbObjectId id = nod->getAt(name);
    if (!id.isNull() && id.isValid() && id.objectClass()->isDerivedFrom(OdDbDictionary::desc())) return id;
    OdDbDictionaryPtr dict = OdDbDictionary::createObject();
    id = addMissing(dict.get(), nodId);
    nod->appendEntryInternal(name, id);
    if (report) repair(OdString().format(L"missing dictionary %ls added", name));
    return id;
  };
  subDictionary(L"ACAD_GROUP");
  // Layouts exist from R2000 on; R13 and R14 drawings are written as they are.
  if (m.report.version >= OdDb::vAC12 && m.report.version < OdDb::vAC15) return;
  OdDbObjectId layoutsId = subDictionary(L"ACAD_LAYOUT");
  auto* layouts = static_cast<OdDbDictionary*>(layoutsId.stub()->object);

  // Every space has a layout that points back at it.
  auto linkLayout = [&](const OdDbObjectId& blockId, const wchar_t* layoutName, int tabOrder) {
    auto* block = static_cast<OdDbBlockTableRecord*>(blockId.stub()->object);
    OdDbObjectId layoutId = block->getLayoutId();
    auto* layout = layoutId.isValid() && !layoutId.isErased() ? dynamic_cast<OdDbLayout*>(layoutId.stub()->object) : nullptr;
    if (!layout) {
      // A layout that names this block may exist without the back link.
      for (const auto& entry : layouts->entries()) {
        auto* candidate = entry.id.isValid() ? dynamic_cast<OdDbLayout*>(entry.id.stub()->object) : nullptr;
        if (candidate && candidate->getBlockTableRecordId() == blockId) { layout = candidate; break; }
      }
      // Else the layout of the space's own name whose block is gone.
      OdDbObjectId byName = layouts->getAt(layoutName);
      auto* named = byName.isValid() ? dynamic_cast<OdDbLayout*>(byName.stub()->object) : nullptr;
      if (!layout && named) {
        OdDbObjectId itsBlock = named->getBlockTableRecordId();
        if (!itsBlock.isValid() || itsBlock.isErased() || !itsBlock.objectClass()->isDerivedFrom(OdDbBlockTableRecord::desc())) {
          layout = named;
        }
      }
      if (layout && report && layout->getBlockTableRecordId() == blockId) {
        repair(OdString().format(L"layout link of block %ls restored", block->getName().c_str()));
      }
    }
    if (!layout) {
      OdSmartPtr<OdDbLayout> created = OdDbLayout::createObject();
      created->setLayoutName(layouts->getAt(layoutName).isNull() ? OdString(layoutName) : layouts->nextAnonymousName(layoutName));
      created->setTabOrder(tabOrder);
      OdDbObjectId id = addMissing(created.get(), layoutsId);
      layouts->appendEntryInternal(created->getLayoutName(), id);
      layout = created.get();
      if (report) repair(OdString().format(L"missing layout of block %ls added", block->getName().c_str()));
    }
    OdDbObjectPtr open(layout);
    layout->setOpenModeInternal(OdDb::kForWrite);
    if (layout->getBlockTableRecordId() != blockId) {
      if (report && !layout->getBlockTableRecordId().isNull()) {
        repair(OdString().format(L"layout %ls pointed at the wrong block; relinked", layout->getLayoutName().c_str()));
      }
      layout->setBlockTableRecordId(blockId);
    }
    layout->setModifiedInternal(false);
    block->setOpenModeInternal(OdDb::kForWrite);
    OdDbObjectPtr openBlock(block);
    if (block->getLayoutId() != layout->objectId()) block->setLayoutId(layout->objectId());
    block->setModifiedInternal(false);
  };
  linkLayout(m.modelSpace, L"Model", 0);
  linkLayout(m.paperSpace, L"Layout1", 1);

  // Other layouts need a paper-space block of their own.
  auto* blocks = static_cast<OdDbSymbolTable*>(m.db->getBlockTableId().stub()->object);
  for (const auto& entry : std::vector<OdDbDictionary::Entry>(layouts->entries())) {
    auto* layout = entry.id.isValid() && !entry.id.isErased() ? dynamic_cast<OdDbLayout*>(entry.id.stub()->object) : nullptr;
    if (!layout) continue;
    OdDbObjectId blockId = layout->getBlockTableRecordId();
    auto* block = blockId.isValid() && !blockId.isErased() ? dynamic_cast<OdDbBlockTableRecord*>(blockId.stub()->object) : nullptr;
    if (block && block->getLayoutId() == entry.id) continue;
    if (block && !block->getLayoutId().isNull() && block->getLayoutId() != entry.id) block = nullptr;  // the block has its own layout
    if (!block) {
      OdString name;
      for (int n = 0; name.isEmpty() || !blocks->getAt(name).isNull(); ++n) name.format(L"*Paper_Space%d", n);
      OdSmartPtr<OdDbBlockTableRecord> created = OdDbBlockTableRecord::createObject();
      created->setName(name);
      blockId = addMissingRecord(OdDbNameTable::kBlock, created.get());
      created->createBlockMarkersInternal();
      block = created.get();
      repair(OdString().format(L"layout %ls had no block; empty block %ls added", layout->getLayoutName().c_str(), name.c_str()));
    } else {
      repair(OdString().format(L"layout link of block %ls restored", block->getName().c_str()));
    }
    OdDbObjectPtr openLayout = entry.id.openObject(OdDb::kForWrite);
    layout->setBlockTableRecordId(blockId);
    layout->setModifiedInternal(false);
    OdDbObjectPtr openBlock = blockId.openObject(OdDb::kForWrite);
    block->setLayoutId(entry.id);
    block->setModifiedInternal(false);
  }
}

// A block that reaches itself through its references cannot be drawn in
// full; it is kept as read (walks into blocks stop where they come back).
void OdDxfAudit::reportBlockCycles() {
  for (const std::vector<OdString>& cycle : odDbBlockCycles(m.db)) {
    OdString chain;
    for (const OdString& name : cycle) chain += (chain.isEmpty() ? L"" : L" -> ") + name;
    repair(OdString().format(L"block '%ls' contains a reference to itself (%ls); its references show it once",
                             cycle.front().c_str(), chain.c_str()));
  }
}
