// Shared by the tests of the table, property and inquiry commands: the
// drawing as text (to tell that Esc or U left it exactly as it was) and
// small lookups.
#pragma once

#include <string>

#include "DbBlockReference.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"
#include "harness.h"

namespace cmdtables {

// The drawing as its DXF text, less the handle seed (handles once given out
// are not given again, even when undo takes their objects back).
inline std::string drawingText(OdDbDatabase* db) {
  std::string text = odDxfWriteBuffer(db, odDxfSaveVersion(db));
  const size_t at = text.find("$HANDSEED");
  if (at != std::string::npos) {
    size_t end = at;
    for (int line = 0; line < 3 && end != std::string::npos; ++line) end = text.find('\n', end + 1);
    text.erase(at, end - at);
  }
  return text;
}

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

template <class Record>
OdSmartPtr<Record> record(OdDbDatabase* db, OdDbNameTable table, const wchar_t* name) {
  OdDbObjectId id = db->findRecord(table, name);
  return id.isNull() ? OdSmartPtr<Record>() : OdSmartPtr<Record>(Record::cast(id.openObject().get()));
}

inline OdSmartPtr<OdDbLayerTableRecord> layer(OdDbDatabase* db, const wchar_t* name) {
  return record<OdDbLayerTableRecord>(db, OdDbNameTable::kLayer, name);
}

inline OdDbObjectId addRecord(OdDbDatabase* db, OdDbNameTable table, OdDbSymbolTableRecord* record,
                              const wchar_t* name) {
  record->setName(name);
  OdDbObjectPtr object = db->tableId(table).openObject(OdDb::kForWrite);
  return static_cast<OdDbSymbolTable*>(object.get())->add(record);
}

inline OdDbObjectId addBlock(OdDbDatabase* db, const wchar_t* name) {
  return addRecord(db, OdDbNameTable::kBlock, OdDbBlockTableRecord::createObject().get(), name);
}

// Appends an entity as it is (call setDatabaseDefaults before giving it properties).
inline OdDbObjectId appendTo(const OdDbObjectId& blockId, OdDbEntity* entity) {
  OdDbObjectPtr object = blockId.openObject(OdDb::kForWrite);
  return static_cast<OdDbBlockTableRecord*>(object.get())->appendOdDbEntity(entity);
}

// Adds an entity with the drawing's defaults to model space (on a layer, when named).
inline OdDbObjectId addToModelSpace(OdDbDatabase* db, OdDbEntity* entity,
                                    const wchar_t* layerName = nullptr) {
  entity->setDatabaseDefaults(db);
  if (layerName) entity->setLayer(db->findRecord(OdDbNameTable::kLayer, layerName));
  return appendTo(db->getModelSpaceId(), entity);
}

inline OdDbObjectId insertBlock(const OdDbObjectId& into, const OdDbObjectId& block,
                                const OdGePoint3d& at = OdGePoint3d()) {
  OdSmartPtr<OdDbBlockReference> reference = OdDbBlockReference::createObject();
  reference->setDatabaseDefaults(into.database());
  reference->setBlockTableRecord(block);
  reference->setPosition(at);
  return appendTo(into, reference.get());
}

// Gives a block reference an attribute (with the drawing's defaults) and returns it, open for write.
inline OdSmartPtr<OdDbAttribute> addAttribute(const OdDbObjectId& referenceId, const wchar_t* tag,
                                              const wchar_t* value) {
  OdSmartPtr<OdDbAttribute> attribute = OdDbAttribute::createObject();
  attribute->setDatabaseDefaults(referenceId.database());
  attribute->setTag(tag);
  attribute->setTextString(value);
  OdDbObjectPtr object = referenceId.openObject(OdDb::kForWrite);
  static_cast<OdDbBlockReference*>(object.get())->appendAttribute(attribute.get());
  return attribute;
}

// Runs the replies and checks that the drawing ends as it started: for Esc
// at a prompt, or for a command followed by U.
inline void expectUnchanged(HostSession& session, const std::vector<std::string>& replies) {
  const std::string before = drawingText(session.db());
  session.run(replies);
  EXPECT_EQ(drawingText(session.db()), before) << "after " << testing::PrintToString(replies);
}

}  // namespace cmdtables
