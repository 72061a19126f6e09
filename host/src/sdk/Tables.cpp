// Symbol tables through lists: searching a table for a record, walking a
// table's records in order (each table keeps its own position per drawing),
// the entity name of a record, and registering applications.
#include <map>
#include <utility>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DxfNames.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryut.h"
#include "sdk/EntityLists.h"

using ryhost::Host;

namespace {

// The tables as programs name them (the platform's list of tables).
using TableKind = OdDxfTableKind;

const TableKind* tableKindOf(const ACHAR* name) { return name ? odDxfTableKindOfList(name) : nullptr; }

// The next record each table of each drawing gives to rydbTblNext.
std::map<std::pair<OdDbDatabase*, OdDbNameTable>, size_t>& positions() {
  static std::map<std::pair<OdDbDatabase*, OdDbNameTable>, size_t> table;
  return table;
}

const OdDbObjectIdArray* recordsOf(OdDbDatabase* db, const TableKind& kind) {
  OdDbObjectId id = db->tableId(kind.table);
  if (!id.isValid()) return nullptr;
  auto* table = dynamic_cast<const OdDbSymbolTable*>(id.stub()->object);
  return table ? &table->recordIds() : nullptr;
}

const OdDbSymbolTableRecord* recordOf(const OdDbObjectId& id) {
  if (!id.isValid() || id.isErased()) return nullptr;
  return dynamic_cast<const OdDbSymbolTableRecord*>(id.stub()->object);
}

// Records a table walk shows: live ones; the spaces' blocks are not blocks
// of the BLOCK table for programs.
bool isListed(const TableKind& kind, const OdDbObjectId& id) {
  const OdDbSymbolTableRecord* record = recordOf(id);
  if (!record) return false;
  if (kind.table != OdDbNameTable::kBlock) return true;
  auto* block = static_cast<const OdDbBlockTableRecord*>(record);
  return !block->isModelSpace() && !block->isPaperSpace();
}

resbuf* blockList(const OdDbBlockTableRecord* block, OdDbDatabase* db) {
  OdDxfTagList tags{OdDxfTag::str(0, L"BLOCK"), OdDxfTag::str(2, block->getName()),
                    OdDxfTag::integer(70, block->blockFlags()),
                    OdDxfTag::point(10, block->origin().x, block->origin().y, block->origin().z)};
  if (!block->pathName().isEmpty()) tags.push_back(OdDxfTag::str(1, block->pathName()));
  if (!block->comments().isEmpty()) tags.push_back(OdDxfTag::str(4, block->comments()));
  for (const OdDbObjectId& id : block->entityIds()) {
    if (!id.isValid() || id.isErased()) continue;
    OdDxfTag first = OdDxfTag::handle(-2, 0);
    first.i = reinterpret_cast<OdInt64>(id.stub());
    tags.push_back(first);
    break;
  }
  return ryhost::listFromTags(tags.data(), tags.data() + tags.size(), db);
}

resbuf* recordList(const TableKind& kind, const OdDbObjectId& id) {
  const OdDbSymbolTableRecord* record = recordOf(id);
  if (kind.table == OdDbNameTable::kBlock) {
    return blockList(static_cast<const OdDbBlockTableRecord*>(record), id.database());
  }
  OdDxfTagList tags;
  ryhost::recordTags(record, kind.listName, tags);
  return ryhost::listFromTags(tags.data(), tags.data() + tags.size(), id.database());
}

// The drawing and table a call names; ERRNO tells what was wrong.
bool tableOfCall(const ACHAR* table, OdDbDatabase*& db, const TableKind*& kind) {
  db = Host::instance().workingDatabase();
  kind = tableKindOf(table);
  if (!kind || !db) {
    ryhost::setErrno(ryhost::kErrnoBadTableName);
    return false;
  }
  return true;
}

// The records of the table a call names, for a call that also names a
// record; null when the call cannot go on (ERRNO tells why).
const OdDbObjectIdArray* recordsForName(const ACHAR* table, const ACHAR* name, OdDbDatabase*& db,
                                        const TableKind*& kind) {
  if (!tableOfCall(table, db, kind)) return nullptr;
  if (!name) {
    ryhost::setErrno(ryhost::kErrnoBadTableArgument);
    return nullptr;
  }
  return recordsOf(db, *kind);
}

size_t findRecord(const OdDbObjectIdArray& ids, const TableKind& kind, const ACHAR* name) {
  for (size_t i = 0; i < ids.size(); ++i) {
    if (isListed(kind, ids[i]) && recordOf(ids[i])->getName().iCompare(name) == 0) return i;
  }
  return ids.size();
}

}  // namespace

void ryhost::forgetTablePositions(OdDbDatabase* db) {
  auto& all = positions();
  for (auto it = all.begin(); it != all.end();) {
    it = it->first.first == db ? all.erase(it) : std::next(it);
  }
}

resbuf* rydbTblSearch(const ACHAR* table, const ACHAR* name, int setNext) {
  OdDbDatabase* db = nullptr;
  const TableKind* kind = nullptr;
  const OdDbObjectIdArray* ids = recordsForName(table, name, db, kind);
  if (!ids) return nullptr;
  const size_t at = findRecord(*ids, *kind, name);
  if (at == ids->size()) return nullptr;
  if (setNext) {
    ryhost::watchDatabase(db);
    positions()[{db, kind->table}] = at + 1;
  }
  return recordList(*kind, (*ids)[at]);
}

resbuf* rydbTblNext(const ACHAR* table, int rewind) {
  OdDbDatabase* db = nullptr;
  const TableKind* kind = nullptr;
  if (!tableOfCall(table, db, kind)) return nullptr;
  const OdDbObjectIdArray* ids = recordsOf(db, *kind);
  if (!ids) return nullptr;
  ryhost::watchDatabase(db);
  size_t& position = positions()[{db, kind->table}];
  if (rewind) position = 0;
  while (position < ids->size() && !isListed(*kind, (*ids)[position])) ++position;
  if (position >= ids->size()) return nullptr;
  return recordList(*kind, (*ids)[position++]);
}

resbuf* rydbTblObjName(const ACHAR* table, const ACHAR* name) {
  OdDbDatabase* db = nullptr;
  const TableKind* kind = nullptr;
  const OdDbObjectIdArray* ids = recordsForName(table, name, db, kind);
  if (!ids) return nullptr;
  // The spaces' blocks have entity names too, though table walks skip them.
  for (const OdDbObjectId& id : *ids) {
    const OdDbSymbolTableRecord* record = recordOf(id);
    if (!record || record->getName().iCompare(name) != 0) continue;
    resbuf* result = ryutNewRb(RTENAME);
    rydbGetAdsName(result->resval.rlname, id);
    return result;
  }
  return nullptr;
}

int rydbRegApp(const ACHAR* appName) {
  OdDbDatabase* db = Host::instance().workingDatabase();
  const OdString name(appName ? appName : L"");
  if (!db || name.isEmpty() || name.getLength() > 255 || name.findOneOf(L"<>/\\\":;?*|,=`") >= 0) {
    ryhost::setErrno(ryhost::kErrnoInvalidSymbolName);
    return RTERROR;
  }
  if (!db->findRecord(OdDbNameTable::kRegApp, name).isNull()) return RTERROR;
  OdDbObjectPtr tableObject = db->getRegAppTableId().openObject(OdDb::kForWrite);
  auto* apps = dynamic_cast<OdDbSymbolTable*>(tableObject.get());
  if (!apps) return RTERROR;
  OdSmartPtr<OdDbRegAppTableRecord> app = OdDbRegAppTableRecord::createObject();
  if (app->setName(name) != eOk) {
    ryhost::setErrno(ryhost::kErrnoInvalidSymbolName);
    return RTERROR;
  }
  apps->add(app.get());
  return RTNORM;
}
