// Making entities, complex entities (an INSERT with attributes, a POLYLINE
// with vertices, each up to its SEQEND), block definitions (BLOCK up to
// ENDBLK) and table records from result-buffer lists: rydbEntMake and
// rydbEntMakeX. What a definition made over several calls holds is kept per
// drawing and dropped when the drawing goes.
#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbPolyline.h"
#include "DbSchema.h"
#include "DxfNames.h"
#include "core/Host.h"
#include "rydb.h"
#include "sdk/EntityListsInternal.h"

namespace ryhost {

// ---------------------------------------------------------------- per-drawing state

void forgetPendingMake(OdDbDatabase* db);

namespace {

class DatabaseWatcher : public OdDbDatabaseReactor {
 public:
  void goodbye(const OdDbDatabase* db) override {
    auto* gone = const_cast<OdDbDatabase*>(db);
    forgetPendingMake(gone);
    forgetTablePositions(gone);
    m_watched.erase(std::remove(m_watched.begin(), m_watched.end(), gone), m_watched.end());
  }
  void watch(OdDbDatabase* db) {
    if (std::find(m_watched.begin(), m_watched.end(), db) != m_watched.end()) return;
    m_watched.push_back(db);
    db->addReactor(this);
  }

 private:
  std::vector<OdDbDatabase*> m_watched;
};

}  // namespace

void watchDatabase(OdDbDatabase* db) {
  static DatabaseWatcher* watcher = [] {
    auto* w = new DatabaseWatcher;
    w->addRef();  // lives as long as the program
    return w;
  }();
  if (db) watcher->watch(db);
}

}  // namespace ryhost

using namespace ryhost;
using namespace ryhost::lists;

namespace {

// ---------------------------------------------------------------- classes made from lists

OdInt64 firstInt(const OdDxfTagList& body, int code, OdInt64 otherwise) {
  for (const OdDxfTag& tag : body) {
    if (tag.code == code && tag.type != OdDxf::ValueType::kString) return tag.i;
  }
  return otherwise;
}

bool hasGroup(const OdDxfTagList& body, int code) {
  return std::any_of(body.begin(), body.end(), [code](const OdDxfTag& tag) { return tag.code == code; });
}

// The class of an entity of the type: the platform's choice for the DXF
// name and its groups (the kind of POLYLINE, DIMENSION and INSERT).
OdRxClass* entityClassFor(const OdString& type, const OdDxfTagList& body) {
  OdRxClass* cls = odDxfClassForObject(type, body.data(), body.data() + body.size());
  if (!cls || !cls->constructor() || !cls->isDerivedFrom(OdDbEntity::desc())) return nullptr;
  return cls;
}

// Groups without which an entity of the class means nothing: the fields its
// table marks as required.
bool hasMandatoryGroups(const OdRxClass* cls, const OdDxfTagList& body) {
  const OdDbClassSchema* schema = schemaOf(cls);
  if (!schema) return true;
  const std::vector<int> codes = OdDbSchemaIo::requiredCodes(*schema);
  return std::all_of(codes.begin(), codes.end(), [&body](int code) { return hasGroup(body, code); });
}

// Name references an entity does not get from its list take the drawing's
// current records (text and dimension style) or the field's default record.
void setDefaultNames(OdDbObject* object, OdDbDatabase* db) {
  const OdDbClassSchema* schema = schemaOf(object->isA());
  if (!schema) return;
  for (const OdDbSubclass* sub : chainOf(schema)) {
    for (const OdDbField& field : sub->fields) {
      if (field.kind != OdDbFieldKind::kNameRef) continue;
      auto* id = static_cast<OdDbObjectId*>(field.ref(object));
      if (!id->isNull()) continue;
      if (field.table == OdDbNameTable::kTextStyle) *id = db->getTEXTSTYLE();
      else if (field.table == OdDbNameTable::kDimStyle) *id = db->getDIMSTYLE();
      else if (field.defaultName) *id = db->findRecord(field.table, field.defaultName);
    }
  }
}

// ---------------------------------------------------------------- entities made over several calls

// An entity made from a list and not yet in the drawing.
struct MadeEntity {
  OdDbEntityPtr entity;
  OdDbObjectId space;  // where it goes when it is not part of a block definition
  OdDxfTagList xdata;
  std::vector<DeferredName> deferred;
  std::vector<MadeEntity> subentities;  // attributes or vertices
};

struct BlockDefinition {
  OdString name;
  OdInt16 flags = 0;
  OdGePoint3d origin;
  OdString path, comments;
  std::vector<MadeEntity> entities;
};

struct MakeState {
  std::optional<MadeEntity> complex;  // an INSERT with attributes or a POLYLINE, up to its SEQEND
  std::optional<BlockDefinition> block;
};

std::map<OdDbDatabase*, MakeState>& makeStates() {
  static std::map<OdDbDatabase*, MakeState> states;
  return states;
}

MakeState& makeStateOf(OdDbDatabase* db) {
  watchDatabase(db);
  return makeStates()[db];
}

OdDbObjectId spaceFor(OdDbDatabase* db, const OdDxfTagList& body) {
  for (const OdDxfTag& tag : body) {
    if (tag.code == 67) return tag.i ? db->getPaperSpaceId() : db->getModelSpaceId();
  }
  return db->currentSpaceId();
}

// Adds a made entity (and its subentities) to a block; returns its id.
OdDbObjectId commitEntity(MadeEntity& made, const OdDbObjectId& blockId, OdDbDatabase* db) {
  resolveDeferred(made.entity.get(), made.deferred, db);
  OdDbObjectPtr blockObject = blockId.openObject(OdDb::kForWrite);
  auto* block = dynamic_cast<OdDbBlockTableRecord*>(blockObject.get());
  if (!block) throw ListError{kErrnoBadBlockDefinition};
  OdDbObjectId id = block->appendOdDbEntity(made.entity.get());
  blockObject.release();
  OdDbEntityPtr entity = made.entity;
  made.entity.release();
  if (!made.xdata.empty()) entity->setXData(made.xdata);
  for (MadeEntity& sub : made.subentities) {
    resolveDeferred(sub.entity.get(), sub.deferred, db);
    OdDbEntity* subEntity = sub.entity.get();
    if (auto* reference = dynamic_cast<OdDbBlockReference*>(entity.get())) {
      reference->appendAttribute(static_cast<OdDbAttribute*>(subEntity));
    } else if (auto* poly2d = dynamic_cast<OdDb2dPolyline*>(entity.get())) {
      poly2d->appendVertex(static_cast<OdDb2dVertex*>(subEntity));
    } else if (auto* poly3d = dynamic_cast<OdDb3dPolyline*>(entity.get())) {
      poly3d->appendVertex(static_cast<OdDb3dPolylineVertex*>(subEntity));
    } else if (auto* mesh = dynamic_cast<OdDbPolygonMesh*>(entity.get())) {
      mesh->appendVertex(static_cast<OdDbPolygonMeshVertex*>(subEntity));
    } else if (auto* faces = dynamic_cast<OdDbPolyFaceMesh*>(entity.get())) {
      if (auto* face = dynamic_cast<OdDbFaceRecord*>(subEntity)) faces->appendFaceRecord(face);
      else faces->appendVertex(static_cast<OdDbPolyFaceMeshVertex*>(subEntity));
    }
    if (!sub.xdata.empty()) subEntity->setXData(sub.xdata);
  }
  return id;
}

// Makes the object of a list (not yet in the drawing) and reads its groups.
MadeEntity makeEntity(OdRxClass* cls, const ParsedList& parsed, OdDbDatabase* db) {
  OdRxObjectPtr created = cls->create();
  OdDbEntityPtr entity = OdDbEntity::cast(created.get());
  if (entity.isNull()) throw ListError{kErrnoBadEntityType};
  entity->setDatabaseDefaults(db);
  setDefaultNames(entity.get(), db);
  OdDxfTagList body = parsed.body;
  if (entity->isKindOf(OdDbText::desc()) && !hasGroup(body, 40)) body.push_back(OdDxfTag::real(40, db->getTEXTSIZE()));
  MadeEntity made;
  readGroups(entity.get(), body, db, made.deferred);
  if (OdDbObjectExtras* extras = entity->extras()) extras->unknown.clear();
  made.entity = entity;
  made.xdata = parsed.xdata;
  return made;
}

// ---------------------------------------------------------------- table records

// The table whose records a list of the type makes: any but the viewports
// (made by the views) and the blocks (made by BLOCK … ENDBLK).
const OdDxfTableKind* recordTableOf(const OdString& type) {
  const OdDxfTableKind* kind = odDxfTableKindOfList(type);
  if (!kind || kind->table == OdDbNameTable::kVport || kind->table == OdDbNameTable::kBlock) return nullptr;
  return kind;
}

OdDbObjectId makeRecord(const OdDxfTableKind& kind, const ParsedList& parsed, OdDbDatabase* db) {
  OdString name;
  for (const OdDxfTag& tag : parsed.body) {
    if (tag.code == 2 && tag.type == OdDxf::ValueType::kString) name = tag.s;
  }
  if (!validRecordName(name) || !db->findRecord(kind.table, name).isNull()) throw ListError{kErrnoInvalidSymbolName};
  OdRxObjectPtr created = kind.recordClass()->create();
  OdDbSymbolTableRecordPtr record = OdDbSymbolTableRecord::cast(created.get());
  if (record.isNull()) throw ListError{kErrnoBadEntityType};
  setDefaultNames(record.get(), db);
  std::vector<DeferredName> deferred;
  readGroups(record.get(), parsed.body, db, deferred);
  if (OdDbObjectExtras* extras = record->extras()) extras->unknown.clear();
  if (!deferred.empty()) throw ListError{kErrnoBadField};
  OdDbObjectPtr tableObject = db->tableId(kind.table).openObject(OdDb::kForWrite);
  auto* table = dynamic_cast<OdDbSymbolTable*>(tableObject.get());
  if (!table) throw ListError{kErrnoBadEntityType};
  OdDbObjectId id = table->add(record.get());
  if (!parsed.xdata.empty()) record->setXData(parsed.xdata);
  return id;
}

// ---------------------------------------------------------------- block definitions

OdString uniqueAnonymousName(OdDbDatabase* db, const OdString& prefix) {
  for (int n = 1;; ++n) {
    OdString name = prefix + OdString().format(L"%d", n);
    if (db->findRecord(OdDbNameTable::kBlock, name).isNull()) return name;
  }
}

BlockDefinition startBlock(const ParsedList& parsed) {
  BlockDefinition block;
  bool named = false;
  for (const OdDxfTag& tag : parsed.body) {
    switch (tag.code) {
      case 2:
      case 3:
        if (tag.type == OdDxf::ValueType::kString && !named) {
          block.name = tag.s;
          named = true;
        }
        break;
      case 70: block.flags = static_cast<OdInt16>(tag.i); break;
      case 10: block.origin.set(tag.x, tag.y, tag.dims == 3 ? tag.z : 0.0); break;
      case 1: block.path = tag.s; break;
      case 4: block.comments = tag.s; break;
      default: break;
    }
  }
  if (!named || block.name.isEmpty()) throw ListError{kErrnoMissingBlockName};
  const bool anonymous = block.name.left(1) == L"*";
  if (anonymous) block.flags |= OdDbBlockTableRecord::kAnonymous;
  if (!(anonymous && validRecordName(block.name.mid(1))) && !validRecordName(block.name)) {
    throw ListError{kErrnoBadBlockName};
  }
  return block;
}

// Makes the block (or gives an existing one of the name its new entities).
OdDbObjectId commitBlock(BlockDefinition& definition, OdDbDatabase* db) {
  OdString name = definition.name;
  if (definition.flags & OdDbBlockTableRecord::kAnonymous) name = uniqueAnonymousName(db, name.left(2).upper());
  OdDbObjectId blockId = db->findRecord(OdDbNameTable::kBlock, name);
  if (!blockId.isNull()) {
    OdDbObjectPtr existing = blockId.openObject(OdDb::kForWrite);
    auto* block = dynamic_cast<OdDbBlockTableRecord*>(existing.get());
    if (!block || block->isLayout()) throw ListError{kErrnoBadBlockName};
    // A definition of a name in use replaces the block's entities.
    for (const OdDbObjectId& id : block->entityIds()) {
      if (OdDbObjectPtr old = id.openObject(OdDb::kForWrite)) old->erase();
    }
    block->setOrigin(definition.origin);
    block->setBlockFlags(definition.flags);
  } else {
    OdSmartPtr<OdDbBlockTableRecord> block = OdDbBlockTableRecord::createObject();
    if (block->setName(name) != eOk) throw ListError{kErrnoBadBlockName};
    block->setOrigin(definition.origin);
    block->setBlockFlags(definition.flags);
    block->setPathName(definition.path);
    block->setComments(definition.comments);
    OdDbObjectPtr tableObject = db->getBlockTableId().openObject(OdDb::kForWrite);
    auto* table = dynamic_cast<OdDbSymbolTable*>(tableObject.get());
    if (!table) throw ListError{kErrnoBadBlockDefinition};
    blockId = table->add(block.get());
  }
  // The block is closed again before its entities go in.
  for (MadeEntity& made : definition.entities) commitEntity(made, blockId, db);
  return blockId;
}

// ---------------------------------------------------------------- one entmake call

int entMake(const resbuf* list, ads_name result) {
  if (result) rydbNameClear(result);
  Host& host = Host::instance();
  OdDbDatabase* db = host.workingDatabase();
  if (!db || !list) {
    setErrno(kErrnoBadEntityType);
    return RTERROR;
  }
  MakeState& state = makeStateOf(db);
  try {
    ParsedList parsed = parseList(list, db);
    if (!parsed.hasType) throw ListError{kErrnoBadEntityType};
    const OdString type = parsed.type.upper();
    auto dropComplex = [&](int errnoValue) {
      state.complex.reset();
      throw ListError{errnoValue};
    };

    if (type == L"ATTRIB" || type == L"VERTEX") {
      if (!state.complex) throw ListError{kErrnoBadComplex};
      OdDbEntity* owner = state.complex->entity.get();
      const bool fits = type == L"ATTRIB" ? owner->isKindOf(OdDbBlockReference::desc()) : !owner->isKindOf(OdDbBlockReference::desc());
      if (!fits) dropComplex(kErrnoBadComplex);
      OdRxClass* cls = type == L"ATTRIB" ? OdDbAttribute::desc()
                                          : odDbVertexClassForPolyline(owner, static_cast<int>(firstInt(parsed.body, 70, 0)));
      if (!cls || !hasMandatoryGroups(cls, parsed.body)) dropComplex(kErrnoBadComplex);
      try {
        MadeEntity sub = makeEntity(cls, parsed, db);
        if (!owner->acceptsSubentity(sub.entity.get())) dropComplex(kErrnoBadComplex);
        state.complex->subentities.push_back(std::move(sub));
      } catch (const ListError& error) {
        dropComplex(error.errnoValue);
      }
      return RTNORM;
    }
    if (type == L"SEQEND") {
      if (!state.complex) throw ListError{kErrnoBadComplex};
      MadeEntity complex = std::move(*state.complex);
      state.complex.reset();
      if (state.block) {
        state.block->entities.push_back(std::move(complex));
        return RTNORM;
      }
      OdDbObjectId id = commitEntity(complex, complex.space, db);
      if (result) rydbGetAdsName(result, id);
      return RTNORM;
    }
    // Anything else ends a complex entity that had no SEQEND: it is dropped.
    if (state.complex) dropComplex(kErrnoBadComplex);

    if (type == L"BLOCK") {
      if (state.block) {
        state.block.reset();
        throw ListError{kErrnoBadBlockDefinition};
      }
      state.block = startBlock(parsed);
      return RTNORM;
    }
    if (type == L"ENDBLK") {
      if (!state.block) throw ListError{kErrnoBadBlockDefinition};
      BlockDefinition definition = std::move(*state.block);
      state.block.reset();
      OdDbObjectId id = commitBlock(definition, db);
      if (result) rydbGetAdsName(result, id);
      return RTNORM;
    }
    if (const OdDxfTableKind* table = recordTableOf(type)) {
      if (state.block) throw ListError{kErrnoBadBlockDefinition};
      OdDbObjectId id = makeRecord(*table, parsed, db);
      if (result) rydbGetAdsName(result, id);
      return RTNORM;
    }
    if (type == L"VIEWPORT") throw ListError{kErrnoViewport};
    OdRxClass* cls = entityClassFor(type, parsed.body);
    if (!cls) throw ListError{kErrnoBadEntityType};
    if (!hasMandatoryGroups(cls, parsed.body)) throw ListError{kErrnoMissingField};
    MadeEntity made = makeEntity(cls, parsed, db);
    made.space = spaceFor(db, parsed.body);
    const bool complex = made.entity->isKindOf(OdDbBlockReference::desc()) ? firstInt(parsed.body, 66, 0) != 0
                                                                            : made.entity->sequenceEndIdInternal() != nullptr;
    if (complex) {
      state.complex = std::move(made);
      return RTNORM;
    }
    if (state.block) {
      state.block->entities.push_back(std::move(made));
      return RTNORM;
    }
    OdDbObjectId id = commitEntity(made, made.space, db);
    if (result) rydbGetAdsName(result, id);
    return RTNORM;
  } catch (const ListError& error) {
    setErrno(error.errnoValue);
  } catch (const OdError&) {
    state.complex.reset();
    setErrno(kErrnoBadField);
  }
  return RTERROR;
}

}  // namespace

int rydbEntMake(const resbuf* list) { return entMake(list, nullptr); }

int rydbEntMakeX(const resbuf* list, ads_name result) { return entMake(list, result); }

namespace ryhost {
void forgetPendingMake(OdDbDatabase* db) { makeStates().erase(db); }
}  // namespace ryhost
