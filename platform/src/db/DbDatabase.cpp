#include "DbDatabase.h"

#include <algorithm>

#include "DbBlockTableRecord.h"
#include "DbDictionary.h"
#include "DbSymbolTable.h"
#include "OdCodePage.h"
#include "db/DbUndo.h"

ODRX_NO_CONS_DEFINE_MEMBERS(OdDbDatabaseReactor, OdRxObject)
ODRX_DEFINE_MEMBERS_IMPL(OdDbDatabase, OdRxObject, nullptr, L"", L"", (void)0)
OdSmartPtr<OdDbDatabase> OdDbDatabase::createObject() { return createEmpty(); }
OdRxObjectPtr OdDbDatabase::pseudoConstructor() { return OdRxObjectPtr(createEmpty().get()); }

// Open addressing from handle to stub: 8 bytes a slot, kept at most half full.
struct OdDbDatabase::HandleMap {
  std::vector<OdDbStub*> slots = std::vector<OdDbStub*>(1024, nullptr);
  size_t count = 0;

  static size_t hash(OdUInt64 handle) { return static_cast<size_t>((handle * 0x9E3779B97F4A7C15ull) >> 17); }

  OdDbStub* find(OdUInt64 handle) const {
    const size_t mask = slots.size() - 1;
    for (size_t i = hash(handle) & mask;; i = (i + 1) & mask) {
      OdDbStub* stub = slots[i];
      if (!stub) return nullptr;
      if (stub->handle == handle) return stub;
    }
  }
  void insert(OdDbStub* stub) {
    if ((count + 1) * 2 > slots.size()) grow();
    place(stub);
    ++count;
  }
  void place(OdDbStub* stub) {
    const size_t mask = slots.size() - 1;
    size_t i = hash(stub->handle) & mask;
    while (slots[i]) i = (i + 1) & mask;
    slots[i] = stub;
  }
  void grow() {
    std::vector<OdDbStub*> old(slots.size() * 2, nullptr);
    old.swap(slots);
    for (OdDbStub* stub : old) {
      if (stub) place(stub);
    }
  }
};

// Stubs live in fixed chunks, so their addresses never move.
struct OdDbDatabase::StubPool {
  static constexpr size_t kChunk = 4096;
  std::vector<std::unique_ptr<OdDbStub[]>> chunks;
  size_t usedInLast = kChunk;

  OdDbStub* allocate() {
    if (usedInLast == kChunk) {
      chunks.push_back(std::make_unique<OdDbStub[]>(kChunk));
      usedInLast = 0;
    }
    return &chunks.back()[usedInLast++];
  }
  template <class Fn>
  void forEach(Fn&& fn) const {
    for (size_t c = 0; c < chunks.size(); ++c) {
      size_t n = c + 1 == chunks.size() ? usedInLast : kChunk;
      for (size_t i = 0; i < n; ++i) fn(&chunks[c][i]);
    }
  }
};

OdDbDatabase::OdDbDatabase()
    : m_handles(std::make_unique<HandleMap>()),
      m_stubs(std::make_unique<StubPool>()),
      m_undo(std::make_unique<OdDbUndoController>(this)) {}

OdDbDatabase::~OdDbDatabase() {
  for (OdDbDatabaseReactor* reactor : std::vector<OdDbDatabaseReactor*>(m_reactors)) reactor->goodbye(this);
  m_stubs->forEach([](OdDbStub* stub) {
    if (OdDbObject* object = stub->object) {
      stub->object = nullptr;
      object->attachStub(nullptr);
      object->release();
    }
  });
}

OdDbDatabasePtr OdDbDatabase::createEmpty() { return OdDbDatabasePtr(new OdDbDatabase()); }

OdDbStub* OdDbDatabase::newStub(OdUInt64 handle) {
  OdDbStub* stub = m_stubs->allocate();
  stub->database = this;
  stub->handle = handle;
  m_handles->insert(stub);
  if (handle >= m_handseed) m_handseed = handle + 1;
  return stub;
}

OdDbStub* OdDbDatabase::stubFor(OdUInt64 handle) const { return m_handles->find(handle); }

void OdDbDatabase::rehandleInternal(const std::vector<std::pair<OdDbObjectId, OdUInt64>>& changes) {
  // Also without changes: the seed becomes the next handle after the highest.
  for (const auto& change : changes) change.first.stub()->handle = change.second;
  // The stubs are placed again in the same table (their number is the same,
  // only handles changed): a second table would double the memory of the
  // largest drawings at the end of reading.
  if (!changes.empty()) {
    std::fill(m_handles->slots.begin(), m_handles->slots.end(), nullptr);
    m_handles->count = 0;
  }
  OdUInt64 highest = 0;
  m_stubs->forEach([&](OdDbStub* stub) {
    if (!changes.empty()) m_handles->insert(stub);
    highest = std::max(highest, stub->handle);
  });
  m_handseed = highest + 1;
}

OdDbObjectId OdDbDatabase::addOdDbObject(OdDbObject* object, const OdDbObjectId& ownerId, const OdDbHandle& handle) {
  if (!object) throw OdError(eNullObjectPointer);
  if (object->stub()) throw OdError(eAlreadyInDb);
  OdDbStub* stub = nullptr;
  if (!handle.isNull()) {
    stub = m_handles->find(handle.value());
    if (stub && stub->object) throw OdError(eHandleInUse, handle.ascii());
    if (!stub) stub = newStub(handle.value());
  } else {
    while (m_handles->find(m_handseed)) ++m_handseed;
    stub = newStub(m_handseed);
  }
  object->addRef();
  stub->object = object;
  stub->flags = 0;
  object->attachStub(stub);
  object->m_ownerId = ownerId;
  m_undo->recordAppended(object);
  fireObjectAppended(object);
  return OdDbObjectId(stub);
}

OdDbObjectId OdDbDatabase::getOdDbObjectId(const OdDbHandle& handle, bool createIfNotFound) {
  if (handle.isNull()) return OdDbObjectId();
  OdDbStub* stub = m_handles->find(handle.value());
  if (!stub && createIfNotFound) stub = newStub(handle.value());
  return OdDbObjectId(stub);
}

void OdDbDatabase::setHandseed(const OdDbHandle& seed) {
  if (seed.value() > m_handseed) m_handseed = seed.value();
}

OdDbObjectIdArray OdDbDatabase::allObjectIds() const {
  OdDbObjectIdArray ids;
  m_stubs->forEach([&](OdDbStub* stub) {
    if (stub->object) ids.append(OdDbObjectId(stub));
  });
  std::sort(ids.begin(), ids.end());
  return ids;
}

void OdDbDatabase::visitObjectIds(void* context, void (*visit)(void*, const OdDbObjectId&)) const {
  m_stubs->forEach([&](OdDbStub* stub) {
    if (stub->object) visit(context, OdDbObjectId(stub));
  });
}

size_t OdDbDatabase::numberOfHandles() const { return m_handles->count; }

// ---------------------------------------------------------------- tables

OdDbObjectId OdDbDatabase::tableId(OdDbNameTable table) const {
  switch (table) {
    case OdDbNameTable::kLayer: return m_layerTableId;
    case OdDbNameTable::kLinetype: return m_linetypeTableId;
    case OdDbNameTable::kTextStyle: return m_textStyleTableId;
    case OdDbNameTable::kDimStyle: return m_dimStyleTableId;
    case OdDbNameTable::kBlock: return m_blockTableId;
    case OdDbNameTable::kUcs: return m_ucsTableId;
    case OdDbNameTable::kView: return m_viewTableId;
    case OdDbNameTable::kVport: return m_viewportTableId;
    case OdDbNameTable::kRegApp: return m_regAppTableId;
    case OdDbNameTable::kNone: break;
  }
  return OdDbObjectId();
}

void OdDbDatabase::setTableId(OdDbNameTable table, const OdDbObjectId& id) {
  switch (table) {
    case OdDbNameTable::kLayer: m_layerTableId = id; break;
    case OdDbNameTable::kLinetype: m_linetypeTableId = id; break;
    case OdDbNameTable::kTextStyle: m_textStyleTableId = id; break;
    case OdDbNameTable::kDimStyle: m_dimStyleTableId = id; break;
    case OdDbNameTable::kBlock: m_blockTableId = id; break;
    case OdDbNameTable::kUcs: m_ucsTableId = id; break;
    case OdDbNameTable::kView: m_viewTableId = id; break;
    case OdDbNameTable::kVport: m_viewportTableId = id; break;
    case OdDbNameTable::kRegApp: m_regAppTableId = id; break;
    case OdDbNameTable::kNone: break;
  }
}

OdDbObjectId OdDbDatabase::findRecord(OdDbNameTable table, const OdString& name) const {
  OdDbObjectId id = tableId(table);
  if (id.isNull() || !id.isValid()) return OdDbObjectId();
  auto* symbolTable = static_cast<OdDbSymbolTable*>(id.stub()->object);
  return symbolTable->getAt(name);
}

static OdDbObjectId namedDictionaryEntry(OdDbDatabase* db, const wchar_t* name, bool create) {
  OdDbObjectId nodId = db->getNamedObjectsDictionaryId();
  if (nodId.isNull()) return OdDbObjectId();
  OdDbDictionaryPtr nod = OdDbDictionary::cast(nodId.openObject().get());
  if (nod.isNull()) return OdDbObjectId();
  OdDbObjectId id = nod->getAt(name);
  if (id.isNull() && create) {
    if (nod->upgradeOpen() != eOk) return OdDbObjectId();
    OdDbDictionaryPtr dictionary = OdDbDictionary::createObject();
    id = nod->setAt(name, dictionary.get());
  }
  return id;
}

OdDbObjectId OdDbDatabase::getGroupDictionaryId(bool createIfNotFound) {
  return namedDictionaryEntry(this, L"ACAD_GROUP", createIfNotFound);
}

OdDbObjectId OdDbDatabase::getLayoutDictionaryId(bool createIfNotFound) {
  return namedDictionaryEntry(this, L"ACAD_LAYOUT", createIfNotFound);
}

OdDbObjectId OdDbDatabase::getModelSpaceId() const {
  // Asked for every entity written: remembered while the record lives (a
  // block table record cannot be renamed to or from a space's name).
  static const OdString kName(L"*Model_Space");
  if (m_modelSpaceId.isValid() && !m_modelSpaceId.isErased()) return m_modelSpaceId;
  m_modelSpaceId = findRecord(OdDbNameTable::kBlock, kName);
  return m_modelSpaceId;
}

OdDbObjectId OdDbDatabase::getPaperSpaceId() const {
  static const OdString kName(L"*Paper_Space");
  if (m_paperSpaceId.isValid() && !m_paperSpaceId.isErased()) return m_paperSpaceId;
  m_paperSpaceId = findRecord(OdDbNameTable::kBlock, kName);
  return m_paperSpaceId;
}

OdDbObjectId OdDbDatabase::currentSpaceId() const {
  if (!m_currentSpaceId.isNull() && !m_currentSpaceId.isErased()) return m_currentSpaceId;
  return getModelSpaceId();
}

OdDbObjectId OdDbDatabase::getLayerZeroId() const { return findRecord(OdDbNameTable::kLayer, L"0"); }
OdDbObjectId OdDbDatabase::getLinetypeByLayerId() const { return findRecord(OdDbNameTable::kLinetype, L"ByLayer"); }
OdDbObjectId OdDbDatabase::getLinetypeByBlockId() const { return findRecord(OdDbNameTable::kLinetype, L"ByBlock"); }
OdDbObjectId OdDbDatabase::getLinetypeContinuousId() const {
  return findRecord(OdDbNameTable::kLinetype, L"Continuous");
}
OdDbObjectId OdDbDatabase::getTextStyleStandardId() const {
  return findRecord(OdDbNameTable::kTextStyle, L"Standard");
}
OdDbObjectId OdDbDatabase::getDimStyleStandardId() const { return findRecord(OdDbNameTable::kDimStyle, L"Standard"); }

// ---------------------------------------------------------------- header

const OdDxfTagList* OdDbDatabase::headerVariable(const OdString& name) const {
  auto it = m_headerIndex.find(name);
  return it == m_headerIndex.end() ? nullptr : &m_header[it->second].tags;
}

void OdDbDatabase::setHeaderVariable(const OdString& name, const OdDxfTagList& tags) {
  m_undo->recordHeaderChange(name, headerVariable(name));
  fireHeaderChange(name, true);
  auto it = m_headerIndex.find(name);
  if (it != m_headerIndex.end()) {
    m_header[it->second].tags = tags;
  } else {
    m_headerIndex.emplace(name, m_header.size());
    m_header.push_back({name, tags});
  }
  m_defaultsValid = false;
  fireHeaderChange(name, false);
}

void OdDbDatabase::removeHeaderVariable(const OdString& name) {
  std::erase_if(m_header, [&](const auto& v) { return v.name.iCompare(name) == 0; });
  m_headerIndex.clear();
  for (size_t i = 0; i < m_header.size(); ++i) m_headerIndex.emplace(m_header[i].name, i);
  m_defaultsValid = false;
}

const OdDbDatabase::EntityDefaults& OdDbDatabase::entityDefaults() const {
  const bool stale = !m_defaultsValid || m_defaults.layer.isErased() || m_defaults.linetype.isErased() ||
                     m_defaults.textStyle.isErased() || m_defaults.layer.isNull();
  if (stale) {
    m_defaults.layer = getCLAYER();
    m_defaults.linetype = getCELTYPE();
    m_defaults.textStyle = getTEXTSTYLE();
    m_defaults.color = getCECOLOR();
    m_defaults.linetypeScale = getCELTSCALE();
    m_defaults.textSize = getTEXTSIZE();
    m_defaults.lineWeight = getCELWEIGHT();
    m_defaultsValid = true;
  }
  return m_defaults;
}

double OdDbDatabase::headerReal(const OdString& name, double defaultValue) const {
  const OdDxfTagList* tags = headerVariable(name);
  if (!tags || tags->empty()) return defaultValue;
  const OdDxfTag& tag = tags->front();
  if (tag.type == OdDxf::ValueType::kDouble || tag.type == OdDxf::ValueType::kPoint) return tag.x;
  if (tag.type == OdDxf::ValueType::kString) return defaultValue;
  return static_cast<double>(tag.i);
}

OdInt64 OdDbDatabase::headerInt(const OdString& name, OdInt64 defaultValue) const {
  const OdDxfTagList* tags = headerVariable(name);
  if (!tags || tags->empty()) return defaultValue;
  const OdDxfTag& tag = tags->front();
  if (tag.type == OdDxf::ValueType::kDouble) return static_cast<OdInt64>(tag.x);
  if (tag.type == OdDxf::ValueType::kString || tag.type == OdDxf::ValueType::kPoint) return defaultValue;
  return tag.i;
}

OdString OdDbDatabase::headerString(const OdString& name, const OdString& defaultValue) const {
  const OdDxfTagList* tags = headerVariable(name);
  if (!tags || tags->empty() || tags->front().type != OdDxf::ValueType::kString) return defaultValue;
  return tags->front().s;
}

OdGePoint3d OdDbDatabase::headerPoint(const OdString& name, const OdGePoint3d& defaultValue) const {
  const OdDxfTagList* tags = headerVariable(name);
  if (!tags || tags->empty() || tags->front().type != OdDxf::ValueType::kPoint) return defaultValue;
  const OdDxfTag& tag = tags->front();
  return {tag.x, tag.y, tag.dims == 3 ? tag.z : 0.0};
}

void OdDbDatabase::setHeaderReal(const OdString& name, int code, double value) {
  setHeaderVariable(name, {OdDxfTag::real(code, value)});
}
void OdDbDatabase::setHeaderInt(const OdString& name, int code, OdInt64 value) {
  setHeaderVariable(name, {OdDxfTag::integer(code, value)});
}
void OdDbDatabase::setHeaderString(const OdString& name, int code, const OdString& value) {
  setHeaderVariable(name, {OdDxfTag::str(code, value)});
}
void OdDbDatabase::setHeaderPoint(const OdString& name, int code, const OdGePoint3d& value, int dims) {
  setHeaderVariable(name, {OdDxfTag::point(code, value.x, value.y, value.z, dims)});
}

OdDbObjectId OdDbDatabase::getCLAYER() const {
  OdDbObjectId id = findRecord(OdDbNameTable::kLayer, headerString(L"$CLAYER", L"0"));
  return id.isNull() ? getLayerZeroId() : id;
}

OdResult OdDbDatabase::setCLAYER(const OdDbObjectId& layerId) {
  OdDbObjectPtr object = layerId.openObject();
  auto* layer = dynamic_cast<OdDbLayerTableRecord*>(object.get());
  if (!layer || layerId.database() != this) return eInvalidInput;
  if (layer->isFrozen()) return eInvalidLayer;
  setHeaderString(L"$CLAYER", 8, layer->getName());
  return eOk;
}

OdDbObjectId OdDbDatabase::getTEXTSTYLE() const {
  OdDbObjectId id = findRecord(OdDbNameTable::kTextStyle, headerString(L"$TEXTSTYLE", L"Standard"));
  return id.isNull() ? getTextStyleStandardId() : id;
}

OdResult OdDbDatabase::setTEXTSTYLE(const OdDbObjectId& styleId) {
  OdDbObjectPtr object = styleId.openObject();
  auto* style = dynamic_cast<OdDbTextStyleTableRecord*>(object.get());
  if (!style || styleId.database() != this) return eInvalidInput;
  setHeaderString(L"$TEXTSTYLE", 7, style->getName());
  return eOk;
}

OdDbObjectId OdDbDatabase::getCELTYPE() const {
  OdDbObjectId id = findRecord(OdDbNameTable::kLinetype, headerString(L"$CELTYPE", L"ByLayer"));
  return id.isNull() ? getLinetypeByLayerId() : id;
}

OdResult OdDbDatabase::setCELTYPE(const OdDbObjectId& linetypeId) {
  OdDbObjectPtr object = linetypeId.openObject();
  auto* linetype = dynamic_cast<OdDbLinetypeTableRecord*>(object.get());
  if (!linetype || linetypeId.database() != this) return eInvalidInput;
  setHeaderString(L"$CELTYPE", 6, linetype->getName());
  return eOk;
}

OdDbObjectId OdDbDatabase::getDIMSTYLE() const {
  OdDbObjectId id = findRecord(OdDbNameTable::kDimStyle, headerString(L"$DIMSTYLE", L"Standard"));
  return id.isNull() ? getDimStyleStandardId() : id;
}

OdCmColor OdDbDatabase::getCECOLOR() const {
  OdCmEntityColor color = OdCmEntityColor::fromIndex(static_cast<OdInt16>(headerInt(L"$CECOLOR", 256)));
  if (const OdDxfTagList* tags = headerVariable(L"$CECOLOR")) {
    for (const auto& tag : *tags) {
      if (tag.code == 420) color.setRGB(static_cast<OdUInt8>(tag.i >> 16), static_cast<OdUInt8>(tag.i >> 8), static_cast<OdUInt8>(tag.i));
    }
  }
  return OdCmColor(color);
}

void OdDbDatabase::setCECOLOR(const OdCmColor& color) {
  OdDxfTagList tags{OdDxfTag::integer(62, color.colorIndex())};
  if (color.isByColor()) tags.push_back(OdDxfTag::integer(420, color.entityColor().trueColor()));
  setHeaderVariable(L"$CECOLOR", tags);
}

OdDb::LineWeight OdDbDatabase::getCELWEIGHT() const {
  return static_cast<OdDb::LineWeight>(headerInt(L"$CELWEIGHT", OdDb::kLnWtByLayer));
}

int OdDbDatabase::getDWGCODEPAGE() const {
  int codePage = odCodePageFromDxfName(headerString(L"$DWGCODEPAGE", L"ANSI_1252").c_str());
  return codePage > 0 ? codePage : 1252;
}

// ---------------------------------------------------------------- undo

void OdDbDatabase::startUndoRecord() { m_undo->startRecord(); }
bool OdDbDatabase::hasUndo() const { return m_undo->hasUndo(); }
void OdDbDatabase::undo() { m_undo->undo(); }
void OdDbDatabase::beginUndoGroup() { m_undo->beginGroup(); }
void OdDbDatabase::endUndoGroup() { m_undo->endGroup(); }
bool OdDbDatabase::isUndoBlockStarted() const { return m_undo->inGroup(); }
void OdDbDatabase::blockUndoRecording(bool block) { m_undo->block(block); }
bool OdDbDatabase::isUndoRecordingBlocked() const { return m_undo->isBlocked(); }

// ---------------------------------------------------------------- reactors

void OdDbDatabase::addReactor(OdDbDatabaseReactor* reactor) {
  if (std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end()) m_reactors.push_back(reactor);
}

void OdDbDatabase::removeReactor(OdDbDatabaseReactor* reactor) { std::erase(m_reactors, reactor); }

void OdDbDatabase::fireObjectAppended(const OdDbObject* object) {
  for (auto* reactor : std::vector<OdDbDatabaseReactor*>(m_reactors)) reactor->objectAppended(this, object);
}
void OdDbDatabase::fireObjectModified(const OdDbObject* object) {
  for (auto* reactor : std::vector<OdDbDatabaseReactor*>(m_reactors)) reactor->objectModified(this, object);
}
void OdDbDatabase::fireObjectOpenedForModify(const OdDbObject* object) {
  for (auto* reactor : std::vector<OdDbDatabaseReactor*>(m_reactors)) reactor->objectOpenedForModify(this, object);
}
void OdDbDatabase::fireObjectErased(const OdDbObject* object, bool erased) {
  for (auto* reactor : std::vector<OdDbDatabaseReactor*>(m_reactors)) reactor->objectErased(this, object, erased);
}
void OdDbDatabase::fireHeaderChange(const OdString& name, bool before) {
  for (auto* reactor : std::vector<OdDbDatabaseReactor*>(m_reactors)) {
    if (before) reactor->headerSysVarWillChange(this, name);
    else reactor->headerSysVarChanged(this, name);
  }
}
