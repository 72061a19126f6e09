// Walking the drawing's entities (rydbEntNext: model space, then the
// paper-space layouts; complex entities with their subentities and end
// marker), the last entity, erasing, and entities by handle.
#include <algorithm>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "core/Host.h"
#include "rydb.h"
#include "sdk/EntityListsInternal.h"

using namespace ryhost;
using namespace ryhost::lists;

namespace {

// ---------------------------------------------------------------- walking entities

bool isLayoutBlock(const OdDbObjectId& id) {
  if (!id.isValid()) return false;
  auto* block = dynamic_cast<const OdDbBlockTableRecord*>(id.stub()->object);
  return block && block->isLayout();
}

// The blocks whose entities the drawing's walk goes through: model space,
// then the paper-space layouts in the block table's order.
std::vector<OdDbObjectId> walkedBlocks(OdDbDatabase* db) {
  std::vector<OdDbObjectId> blocks{db->getModelSpaceId()};
  OdDbObjectId tableId = db->getBlockTableId();
  if (!tableId.isValid()) return blocks;
  auto* table = static_cast<const OdDbSymbolTable*>(tableId.stub()->object);
  for (const OdDbObjectId& id : table->recordIds()) {
    if (id.isErased() || id == blocks.front() || !isLayoutBlock(id)) continue;
    blocks.push_back(id);
  }
  return blocks;
}

bool isLive(const OdDbObjectId& id) { return id.isValid() && !id.isErased(); }

// The index of an id in a list. The last entity a walk gave is remembered,
// so that walking a big space is not quadratic.
struct WalkPosition {
  const OdDbObjectIdArray* list = nullptr;
  size_t index = 0;
};
thread_local WalkPosition t_walked;

size_t indexIn(const OdDbObjectIdArray& ids, const OdDbObjectId& id) {
  if (t_walked.list == &ids && t_walked.index < ids.size() && ids[t_walked.index] == id) return t_walked.index;
  for (size_t i = 0; i < ids.size(); ++i) {
    if (ids[i] == id) return i;
  }
  return ids.size();
}

OdDbObjectId firstLiveFrom(const OdDbObjectIdArray& ids, size_t from) {
  for (size_t i = from; i < ids.size(); ++i) {
    if (isLive(ids[i])) {
      t_walked = {&ids, i};
      return ids[i];
    }
  }
  return OdDbObjectId();
}

const OdDbObjectIdArray* entitiesOf(const OdDbObjectId& blockId) {
  if (!blockId.isValid()) return nullptr;
  auto* block = dynamic_cast<const OdDbBlockTableRecord*>(blockId.stub()->object);
  return block ? &block->entityIds() : nullptr;
}

// The main entity after `entity` (in its block; for the layouts' blocks on
// into the next layout).
OdDbObjectId nextMain(OdDbDatabase* db, const OdDbObjectId& entity) {
  const OdDbObjectId blockId = entity.stub()->object->ownerId();
  const OdDbObjectIdArray* ids = entitiesOf(blockId);
  if (!ids) return OdDbObjectId();
  OdDbObjectId next = firstLiveFrom(*ids, indexIn(*ids, entity) + 1);
  if (!next.isNull() || !isLayoutBlock(blockId)) return next;
  const std::vector<OdDbObjectId> blocks = walkedBlocks(db);
  auto at = std::find(blocks.begin(), blocks.end(), blockId);
  if (at == blocks.end()) return OdDbObjectId();
  for (++at; at != blocks.end(); ++at) {
    if (const OdDbObjectIdArray* more = entitiesOf(*at)) {
      next = firstLiveFrom(*more, 0);
      if (!next.isNull()) return next;
    }
  }
  return OdDbObjectId();
}

OdDbObjectId entityAfter(OdDbDatabase* db, const OdDbObjectId& id) {
  const OdDbObject* object = id.stub()->object;
  auto* entity = dynamic_cast<const OdDbEntity*>(object);
  if (!entity) return OdDbObjectId();
  // A complex entity goes on with its subentities.
  const OdDbObjectIdArray* subs = entity->subentityIds();
  if (subs && !entity->sequenceEndId().isNull() && !entity->isKindOf(OdDbSequenceEnd::desc())) {
    OdDbObjectId first = firstLiveFrom(*subs, 0);
    if (!first.isNull()) return first;
  }
  const OdDbObjectId ownerId = entity->ownerId();
  auto* owner = ownerId.isValid() ? dynamic_cast<const OdDbEntity*>(ownerId.stub()->object) : nullptr;
  if (!owner) return nextMain(db, id);
  // A subentity: the next one, then the end marker, then the owner's next.
  if (entity->isKindOf(OdDbSequenceEnd::desc())) return nextMain(db, ownerId);
  const OdDbObjectIdArray* siblings = owner->subentityIds();
  if (siblings) {
    OdDbObjectId next = firstLiveFrom(*siblings, indexIn(*siblings, id) + 1);
    if (!next.isNull()) return next;
  }
  OdDbObjectId end = owner->sequenceEndId();
  if (isLive(end)) return end;
  return nextMain(db, ownerId);
}

}  // namespace

// ---------------------------------------------------------------- SDK functions

int rydbEntNext(const ads_name entity, ads_name result) {
  if (!result) return RTERROR;
  Host& host = Host::instance();
  OdDbObjectId next;
  if (!entity || rydbNameNil(entity)) {
    OdDbDatabase* db = host.workingDatabase();
    if (!db) return RTERROR;
    for (const OdDbObjectId& blockId : walkedBlocks(db)) {
      if (const OdDbObjectIdArray* ids = entitiesOf(blockId)) next = firstLiveFrom(*ids, 0);
      if (!next.isNull()) break;
    }
  } else {
    OdDbObjectId id;
    if (!objectOfName(entity, id)) return RTERROR;
    next = entityAfter(id.database(), id);
  }
  if (next.isNull()) {
    setErrno(kErrnoEndOfEntities);
    return RTERROR;
  }
  return rydbGetAdsName(result, next);
}

int rydbEntLast(ads_name result) {
  if (!result) return RTERROR;
  Document* doc = Host::instance().current();
  OdDbObjectId last = doc ? doc->lastEntity() : OdDbObjectId();
  if (last.isNull()) {
    setErrno(kErrnoNoLastEntity);
    return RTERROR;
  }
  return rydbGetAdsName(result, last);
}

int rydbEntDel(const ads_name entity) {
  OdDbObjectId id;
  if (!objectOfName(entity, id)) return RTERROR;
  const OdDbObject* current = id.stub()->object;
  // Only main entities are erased; attributes and vertices go with their owner.
  const OdDbObjectId ownerId = current->ownerId();
  const bool subentity = ownerId.isValid() && ownerId.stub()->object->isKindOf(OdDbEntity::desc());
  if (!current->isKindOf(OdDbEntity::desc()) || subentity) {
    setErrno(kErrnoInvalidName);
    return RTERROR;
  }
  if (onLockedLayer(current)) {
    setErrno(kErrnoLockedLayer);
    return RTERROR;
  }
  OdDbObjectPtr object = id.openObject(OdDb::kForWrite, true);
  if (object.isNull() || object->erase(!object->isErased()) != eOk) {
    setErrno(kErrnoInvalidName);
    return RTERROR;
  }
  return RTNORM;
}

int rydbEntUpd(const ads_name entity) {
  OdDbObjectId id;
  if (!objectOfName(entity, id)) return RTERROR;
  if (id.isErased()) {
    setErrno(kErrnoDeletedEntity);
    return RTERROR;
  }
  // The display follows the database by itself: nothing to regenerate.
  return RTNORM;
}

int rydbHandEnt(const ACHAR* handle, ads_name entity) {
  if (!entity) return RTERROR;
  rydbNameClear(entity);
  OdDbDatabase* db = Host::instance().workingDatabase();
  OdUInt64 value = 0;
  if (!db || !handle || !OdDbHandle::parse(std::wstring_view(handle), value)) {
    setErrno(kErrnoInvalidHandle);
    return RTERROR;
  }
  OdDbObjectId id = db->getOdDbObjectId(OdDbHandle(value));
  if (!isLive(id)) {
    setErrno(kErrnoInvalidHandle);
    return RTERROR;
  }
  return rydbGetAdsName(entity, id);
}
