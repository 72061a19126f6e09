#include "db/DbUndo.h"

#include "DbFiler.h"

void OdDbUndoController::pushRecord() {
  m_records.push_back(Record{m_nextSerial++, {}, {}});
}

void OdDbUndoController::startRecord() {
  if (m_groupDepth > 0 && m_groupHasRecord) return;
  pushRecord();
  if (m_groupDepth > 0) m_groupHasRecord = true;
}

void OdDbUndoController::beginGroup() {
  if (m_groupDepth++ == 0) {
    // A group opened before anything was recorded (at the start of a
    // command) joins that record: one step, not an empty one and the group.
    const bool lastIsEmpty = !m_records.empty() && m_records.back().entries.empty() && m_records.back().header.empty();
    if (!lastIsEmpty) pushRecord();
    m_groupHasRecord = true;
  }
}

void OdDbUndoController::endGroup() {
  if (m_groupDepth > 0 && --m_groupDepth == 0) m_groupHasRecord = false;
}

void OdDbUndoController::recordBeforeChange(OdDbObject* object) {
  Record* record = current();
  if (!record || object->undoSerial() == record->serial) return;
  object->setUndoSerial(record->serial);
  Entry entry{object->stub(), false, object->stub()->flags, {}};
  OdDbMemoryFiler filer(m_database, OdDbFiler::kUndoFiler);
  object->dwgOutFields(&filer);
  entry.state = std::move(filer.data());
  record->entries.push_back(std::move(entry));
}

void OdDbUndoController::recordAppended(OdDbObject* object) {
  Record* record = current();
  if (!record) return;
  object->setUndoSerial(record->serial);
  record->entries.push_back(Entry{object->stub(), true, 0, {}});
}

void OdDbUndoController::recordHeaderChange(const OdString& name, const OdDxfTagList* before) {
  Record* record = current();
  if (!record) return;
  for (const auto& entry : record->header) {
    if (entry.name.iCompare(name) == 0) return;
  }
  record->header.push_back({name, before != nullptr, before ? *before : OdDxfTagList()});
}

void OdDbUndoController::undo() {
  if (m_records.empty()) return;
  Record record = std::move(m_records.back());
  m_records.pop_back();
  if (m_groupDepth > 0 && m_records.empty()) m_groupHasRecord = false;
  ++m_blocked;  // restoring is not itself recorded
  for (auto it = record.entries.rbegin(); it != record.entries.rend(); ++it) {
    OdDbStub* stub = it->stub;
    OdDbObject* object = stub->object;
    if (!object) continue;
    object->setUndoSerial(0);
    if (it->appended) {
      stub->flags |= OdDbStub::kErased;
      m_database->fireObjectErased(object, true);
      continue;
    }
    const bool wasErased = stub->isErased();
    OdDbMemoryFiler filer(m_database, OdDbFiler::kUndoFiler);
    filer.data() = std::move(it->state);
    object->dwgInFields(&filer);
    stub->flags = it->stubFlags;
    if (wasErased != stub->isErased()) m_database->fireObjectErased(object, stub->isErased());
    else m_database->fireObjectModified(object);
  }
  for (auto it = record.header.rbegin(); it != record.header.rend(); ++it) {
    if (it->existed) m_database->setHeaderVariable(it->name, it->tags);
    else m_database->removeHeaderVariable(it->name);
  }
  --m_blocked;
}
