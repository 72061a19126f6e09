#include "DbDictionary.h"

#include <algorithm>
#include <unordered_map>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbProxy.h"
#include "db/DbAdoptedData.h"
#include "db/TagFiling.h"

ODDB_DEFINE_MEMBERS(OdDbDictionary, OdDbObject, L"DICTIONARY")
ODDB_DEFINE_MEMBERS(OdDbGroup, OdDbObject, L"GROUP")
ODDB_DEFINE_MEMBERS(OdDbXrecord, OdDbObject, L"XRECORD")
ODDB_DEFINE_MEMBERS(OdDbSortentsTable, OdDbObject, L"SORTENTSTABLE")
ODDB_DEFINE_MEMBERS(OdDbPlotSettings, OdDbObject, L"PLOTSETTINGS")
ODDB_DEFINE_MEMBERS(OdDbLayout, OdDbPlotSettings, L"LAYOUT")
ODDB_DEFINE_MEMBERS(OdDbProxyObject, OdDbObject, L"")
ODDB_DEFINE_MEMBERS(OdDbProxyEntity, OdDbEntity, L"")

// ---------------------------------------------------------------- dictionary

const OdDbClassSchema& OdDbDictionary::classSchema() {
  // Per entry: 3 its name, then 350 its object, or 360 when the dictionary
  // owns its entries (an entry read with 360 says that it does). The object
  // is filed and compared once, as the 350 value.
  using Condition = bool (*)(const void*, const OdDbObject*, const OdDbTagContext&);
  static const Condition soft = [](const void*, const OdDbObject* object, const OdDbTagContext&) {
    return static_cast<const OdDbDictionary*>(object)->m_hardOwner == 0;
  };
  static const Condition hard = [](const void*, const OdDbObject* object, const OdDbTagContext&) {
    return static_cast<const OdDbDictionary*>(object)->m_hardOwner != 0;
  };
  static const OdDbArraySpec entryRecords = [] {
    OdDbArraySpec spec = odRecords<std::vector<Entry>>({
        odField<&Entry::name>(3).named(L"name"),
        odField<&Entry::id>(350, OdDbFieldKind::kSoftOwner).writtenWhen(soft).named(L"object"),
        odField<&Entry::id>(360, OdDbFieldKind::kHardOwner)
            .writtenWhen(hard)
            .noFiler()
            .alsoOnRead([](void*, OdDbObject* object) {
              OdInt16& hardOwner = static_cast<OdDbDictionary*>(object)->m_hardOwner;
              if (hardOwner == 0) hardOwner = 1;
            })
            .named(L"ownedObject"),
    });
    // "350 0" is no entry: readers refuse it, so neither a null nor an
    // erased object is written, and a name read without its object is dropped.
    spec.written = [](const void* entry) {
      const OdDbObjectId& id = static_cast<const Entry*>(entry)->id;
      return !id.isNull() && !id.isErased();
    };
    spec.kept = [](const void* entry) { return !static_cast<const Entry*>(entry)->id.isNull(); };
    spec.droppedAs = L"entry without an object";
    return spec;
  }();
  static const OdDbRecordCodec entries({odArrayField<&OdDbDictionary::m_entries>(entryRecords, L"entries")}, nullptr,
                                       [](OdDbObject* object) { static_cast<OdDbDictionary*>(object)->rebuildIndex(); });
  static const OdDbClassSchema schema{
      &OdDbObject::classSchema(),
      {{L"AcDbDictionary",
        {
            odField<&OdDbDictionary::m_hardOwner>(280).optional().named(L"hardOwner"),
            odField<&OdDbDictionary::m_mergeStyle>(281).defaultsInt(1).named(L"mergeStyle"),
            odCustomField(entries, L"entries"),
        }}}};
  return schema;
}

void OdDbDictionary::rebuildIndex() {
  m_index.clear();
  for (size_t i = 0; i < m_entries.size(); ++i) m_index.emplace(m_entries[i].name, i);
}

OdDbObjectId OdDbDictionary::getAt(const OdString& name) const {
  auto it = m_index.find(name);
  if (it == m_index.end()) return OdDbObjectId();
  const OdDbObjectId& id = m_entries[it->second].id;
  return id.isErased() ? OdDbObjectId() : id;
}

OdDbObjectPtr OdDbDictionary::getAt(const OdString& name, OdDb::OpenMode mode) const {
  return getAt(name).openObject(mode);
}

bool OdDbDictionary::has(const OdDbObjectId& id) const {
  return std::any_of(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.id == id && !id.isErased(); });
}

OdString OdDbDictionary::nameAt(const OdDbObjectId& id) const {
  for (const auto& entry : m_entries) {
    if (entry.id == id) return entry.name;
  }
  return OdString();
}

OdDbObjectId OdDbDictionary::setAt(const OdString& name, OdDbObject* object) {
  if (name.isEmpty() || !object) throw OdError(eInvalidInput);
  assertWriteEnabled();
  OdDbObjectId id = object->objectId();
  if (id.isNull()) {
    OdDbDatabase* db = database();
    if (!db) throw OdError(eNoDatabase);
    id = db->addOdDbObject(object, objectId());
  }
  auto it = m_index.find(name);
  if (it != m_index.end()) {
    m_entries[it->second].id = id;
  } else {
    m_entries.push_back({name, id});
    m_index.emplace(name, m_entries.size() - 1);
  }
  return id;
}

OdResult OdDbDictionary::remove(const OdString& name) {
  auto it = m_index.find(name);
  if (it == m_index.end()) return eKeyNotFound;
  assertWriteEnabled();
  m_entries.erase(m_entries.begin() + static_cast<long>(it->second));
  rebuildIndex();
  return eOk;
}

OdResult OdDbDictionary::remove(const OdDbObjectId& id) {
  OdString name = nameAt(id);
  return name.isEmpty() ? eKeyNotFound : remove(name);
}

bool OdDbDictionary::setName(const OdString& oldName, const OdString& newName) {
  auto it = m_index.find(oldName);
  if (it == m_index.end() || m_index.count(newName)) return false;
  assertWriteEnabled();
  m_entries[it->second].name = newName;
  rebuildIndex();
  return true;
}

OdDbDictionaryIteratorPtr OdDbDictionary::newIterator() const {
  std::vector<OdDbDictionaryIterator::Entry> live;
  for (const auto& entry : m_entries) {
    if (!entry.id.isErased()) live.push_back({entry.name, entry.id});
  }
  return OdDbDictionaryIteratorPtr(new OdDbDictionaryIterator(std::move(live)));
}

OdString OdDbDictionary::nextAnonymousName(const OdString& prefix) const {
  // One more than the highest number in use, so that names are never reused.
  long highest = 0;
  for (const auto& entry : m_entries) {
    if (entry.name.left(prefix.getLength()).iCompare(prefix) != 0) continue;
    OdString digits = entry.name.mid(prefix.getLength());
    if (digits.isEmpty() || digits.findOneOf(L"-+ ") >= 0) continue;
    wchar_t* end = nullptr;
    long n = std::wcstol(digits.c_str(), &end, 10);
    if (end && *end == 0) highest = std::max(highest, n);
  }
  return prefix + OdString().format(L"%ld", highest + 1);
}

void OdDbDictionary::appendEntryInternal(const OdString& name, const OdDbObjectId& id) {
  m_entries.push_back({name, id});
  m_index.emplace(name, m_entries.size() - 1);
}

OdResult OdDbDictionary::subErase(bool erasing) {
  // A dictionary that owns its entries takes them along.
  if (!m_hardOwner) return eOk;
  for (const auto& entry : m_entries) {
    OdDbObjectPtr object = entry.id.openObject(OdDb::kForWrite, true);
    if (object.get() && object->ownerId() == objectId() && object->isErased() != erasing) object->erase(erasing);
  }
  return eOk;
}

OdDbObjectPtr OdDbDictionaryIterator::getObject(OdDb::OpenMode mode) const { return objectId().openObject(mode); }

// ---------------------------------------------------------------- group

const OdDbClassSchema& OdDbGroup::classSchema() {
  // One 340 per member; a null handle names no member.
  static const OdDbRecordCodec members({odValueArrayField<&OdDbGroup::m_members>(
      340, L"members", OdDbFieldKind::kHardPointer,
      [](const void* member) { return !static_cast<const OdDbObjectId*>(member)->isNull(); })});
  static const OdDbClassSchema schema{&OdDbObject::classSchema(),
                                      {{L"AcDbGroup",
                                        {
                                            odField<&OdDbGroup::m_description>(300).named(L"description"),
                                            odField<&OdDbGroup::m_unnamed>(70).named(L"unnamed"),
                                            odField<&OdDbGroup::m_selectable>(71).defaultsInt(1).named(L"selectable"),
                                            odCustomField(members, L"members"),
                                        }}}};
  return schema;
}

OdString OdDbGroup::name() const {
  OdDbObjectPtr owner = ownerId().openObject();
  auto* dict = dynamic_cast<OdDbDictionary*>(owner.get());
  return dict ? dict->nameAt(objectId()) : OdString();
}

void OdDbGroup::setAnonymous() {
  assertWriteEnabled();
  m_unnamed = 1;
}

void OdDbGroup::append(const OdDbObjectId& id) {
  if (id.isNull() || m_members.contains(id)) return;
  assertWriteEnabled();
  m_members.append(id);
  if (OdDbObjectPtr member = id.openObject(OdDb::kForWrite)) member->addPersistentReactor(objectId());
}

void OdDbGroup::append(const OdDbObjectIdArray& ids) {
  for (const auto& id : ids) append(id);
}

void OdDbGroup::remove(const OdDbObjectId& id) {
  if (!m_members.contains(id)) return;
  assertWriteEnabled();
  m_members.remove(id);
  if (OdDbObjectPtr member = id.openObject(OdDb::kForWrite, true)) member->removePersistentReactor(objectId());
}

void OdDbGroup::clear() {
  for (const auto& id : OdDbObjectIdArray(m_members)) remove(id);
}

OdDbObjectIdArray OdDbGroup::allEntityIds() const {
  OdDbObjectIdArray ids;
  for (const auto& id : m_members) {
    if (!id.isErased() && id.isValid()) ids.append(id);
  }
  return ids;
}

void OdDbGroup::erased(const OdDbObject*, bool) {
  // Erased members stay in the list (unerasing or undo brings them back);
  // allEntityIds leaves them out.
}

OdResult OdDbGroup::subErase(bool erasing) {
  // An erased group no longer reacts to its members.
  for (const auto& id : m_members) {
    OdDbObjectPtr member = id.openObject(OdDb::kForWrite, true);
    if (!member.get()) continue;
    if (erasing) member->removePersistentReactor(objectId());
    else member->addPersistentReactor(objectId());
  }
  return eOk;
}

// ---------------------------------------------------------------- extended record

// Any groups at all, kept as read: not records of declared fields.
struct OdDbXrecordDataCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {}; }
  bool takesAnyCode() const override { return true; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const auto& data = static_cast<const OdDbXrecord*>(object)->m_data;
    out.insert(out.end(), data.begin(), data.end());
  }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const override {
    auto* record = static_cast<OdDbXrecord*>(object);
    OdInt64& started = ctx.codecState(this);
    if (!started) {
      record->m_data.clear();
      started = 1;
    }
    record->m_data.push_back(tag);
    return true;
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override {
    odFileOutTags(filer, static_cast<const OdDbXrecord*>(object)->m_data);
  }
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override {
    static_cast<OdDbXrecord*>(object)->m_data = odFileInTags(filer);
  }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    return static_cast<const OdDbXrecord*>(a)->m_data == static_cast<const OdDbXrecord*>(b)->m_data;
  }
  static void adopt(OdDbXrecord* record, OdDxfTagList&& data) { record->m_data = std::move(data); }
};

void odDbXrecordAdoptData(OdDbXrecord* record, OdDxfTagList&& data) { OdDbXrecordDataCodec::adopt(record, std::move(data)); }

const OdDbClassSchema& OdDbXrecord::classSchema() {
  static const OdDbXrecordDataCodec data;
  static const OdDbClassSchema schema{&OdDbObject::classSchema(),
                                      {{L"AcDbXrecord",
                                        {
                                            odField<&OdDbXrecord::m_cloning>(280).defaultsInt(1).named(L"cloning"),
                                            odCustomField(data, L"data"),
                                        }}}};
  return schema;
}

// ---------------------------------------------------------------- draw order

const OdDbClassSchema& OdDbSortentsTable::classSchema() {
  // Per entity: 331 the entity and 5 the handle it is drawn by.
  static const OdDbArraySpec pairRecords = odRecords<std::vector<Pair>>({
      odField<&Pair::entity>(331).named(L"entity"),
      odField<&Pair::sortHandle>(5).asHandle().named(L"sortHandle"),
  });
  static const OdDbRecordCodec pairs({odArrayField<&OdDbSortentsTable::m_pairs>(pairRecords, L"pairs")});
  static const OdDbClassSchema schema{
      &OdDbObject::classSchema(),
      {{L"AcDbSortentsTable",
        {
            odField<&OdDbSortentsTable::m_blockId>(330).named(L"block"),
            odCustomField(pairs, L"pairs"),
        }}}};
  return schema;
}

OdDbHandle OdDbSortentsTable::sortHandleOf(const OdDbObjectId& id) const {
  for (const auto& pair : m_pairs) {
    if (pair.entity == id) return OdDbHandle(pair.sortHandle);
  }
  return id.handle();
}

void OdDbSortentsTable::getFullDrawOrder(OdDbObjectIdArray& ids) const {
  ids.clear();
  OdDbObjectPtr object = m_blockId.openObject();
  auto* block = dynamic_cast<OdDbBlockTableRecord*>(object.get());
  if (!block) return;
  // The sort handles by entity handle, looked up once each.
  std::unordered_map<OdUInt64, OdUInt64> sortHandles;
  sortHandles.reserve(m_pairs.size());
  for (const auto& pair : m_pairs) sortHandles.emplace(pair.entity.handle().value(), pair.sortHandle);
  std::vector<std::pair<OdUInt64, OdDbObjectId>> order;
  for (const auto& id : block->entityIds()) {
    if (id.isErased()) continue;
    const OdUInt64 handle = id.handle().value();
    const auto found = sortHandles.find(handle);
    order.emplace_back(found == sortHandles.end() ? handle : found->second, id);
  }
  std::stable_sort(order.begin(), order.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& entry : order) ids.append(entry.second);
}

void OdDbSortentsTable::setDrawOrder(const OdDbObjectIdArray& order) {
  // The sort handles of the entities, sorted, are handed out again in the new order.
  std::unordered_map<OdUInt64, OdUInt64> sortHandles;
  sortHandles.reserve(m_pairs.size());
  for (const auto& pair : m_pairs) sortHandles.emplace(pair.entity.handle().value(), pair.sortHandle);
  std::vector<OdUInt64> handles;
  handles.reserve(order.size());
  for (const auto& id : order) {
    const auto found = sortHandles.find(id.handle().value());
    handles.push_back(found == sortHandles.end() ? id.handle().value() : found->second);
  }
  std::sort(handles.begin(), handles.end());
  assertWriteEnabled();
  m_pairs.clear();
  for (size_t i = 0; i < order.size(); ++i) {
    if (handles[i] != order[i].handle().value()) m_pairs.push_back({order[i], handles[i]});
  }
}

OdResult OdDbSortentsTable::moveAbove(const OdDbObjectIdArray& ids, const OdDbObjectId& target) {
  OdDbObjectIdArray order;
  getFullDrawOrder(order);
  if (!order.contains(target)) return eInvalidInput;
  OdDbObjectIdArray moving, rest;
  for (const auto& id : order) (ids.contains(id) && id != target ? moving : rest).append(id);
  OdDbObjectIdArray result;
  for (const auto& id : rest) {
    result.append(id);
    if (id == target) result.append(moving);
  }
  setDrawOrder(result);
  return eOk;
}

OdResult OdDbSortentsTable::moveBelow(const OdDbObjectIdArray& ids, const OdDbObjectId& target) {
  OdDbObjectIdArray order;
  getFullDrawOrder(order);
  if (!order.contains(target)) return eInvalidInput;
  OdDbObjectIdArray moving, rest;
  for (const auto& id : order) (ids.contains(id) && id != target ? moving : rest).append(id);
  OdDbObjectIdArray result;
  for (const auto& id : rest) {
    if (id == target) result.append(moving);
    result.append(id);
  }
  setDrawOrder(result);
  return eOk;
}

OdResult OdDbSortentsTable::moveToTop(const OdDbObjectIdArray& ids) {
  OdDbObjectIdArray order;
  getFullDrawOrder(order);
  OdDbObjectIdArray moving, rest;
  for (const auto& id : order) (ids.contains(id) ? moving : rest).append(id);
  rest.append(moving);
  setDrawOrder(rest);
  return eOk;
}

OdResult OdDbSortentsTable::moveToBottom(const OdDbObjectIdArray& ids) {
  OdDbObjectIdArray order;
  getFullDrawOrder(order);
  OdDbObjectIdArray moving, rest;
  for (const auto& id : order) (ids.contains(id) ? moving : rest).append(id);
  moving.append(rest);
  setDrawOrder(moving);
  return eOk;
}

// ---------------------------------------------------------------- layouts

const OdDbClassSchema& OdDbPlotSettings::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbObject::classSchema(),
      {{L"AcDbPlotSettings", {odField<&OdDbPlotSettings::m_pageSetupName>(1).named(L"pageSetupName")}}}};
  return schema;
}

const OdDbClassSchema& OdDbLayout::classSchema() {
  static const OdDbClassSchema schema{&OdDbPlotSettings::classSchema(),
                                      {{L"AcDbLayout",
                                        {
                                            odField<&OdDbLayout::m_name>(1).named(L"name"),
                                            odField<&OdDbLayout::m_layoutFlags>(70).defaultsInt(1).named(L"flags"),
                                            odField<&OdDbLayout::m_tabOrder>(71).named(L"tabOrder"),
                                            odField<&OdDbLayout::m_limMin>(10).named(L"limMin"),
                                            odField<&OdDbLayout::m_limMax>(11).defaults(12, 9, 0).named(L"limMax"),
                                            odField<&OdDbLayout::m_blockId>(330).named(L"block"),
                                            odField<&OdDbLayout::m_viewportId>(331).optional().named(L"viewport"),
                                        }}}};
  return schema;
}

// ---------------------------------------------------------------- proxies

const OdDbClassSchema& OdDbProxyObject::classSchema() {
  static const OdDbClassSchema schema{&OdDbObject::classSchema(),
                                      {{nullptr, {odField<&OdDbProxyObject::m_dxfName>(0).noDxf().named(L"dxfName")}}}};
  return schema;
}

const OdDbClassSchema& OdDbProxyEntity::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(),
                                      {{nullptr, {odField<&OdDbProxyEntity::m_dxfName>(0).noDxf().named(L"dxfName")}}}};
  return schema;
}

namespace {
// The class a proxy stands for: its own DXF name, or for the proxy form the
// class its group 91 numbers (500 on: the database's class records in order).
OdString proxyClassName(const OdDbObject* proxy, const OdString& dxfName) {
  if (dxfName != L"ACAD_PROXY_OBJECT" && dxfName != L"ACAD_PROXY_ENTITY") return dxfName;
  const OdDbObjectExtras* kept = proxy->extras();
  OdDbDatabase* db = proxy->database();
  if (!kept || !db) return dxfName;
  for (const auto& u : kept->unknown) {
    if (u.tag.code != 91) continue;
    const OdInt64 index = u.tag.i - 500;
    if (index >= 0 && index < static_cast<OdInt64>(db->classRecords().size())) return db->classRecords()[static_cast<size_t>(index)].dxfName;
    break;
  }
  return dxfName;
}
}  // namespace

OdString OdDbProxyObject::originalClassName() const { return proxyClassName(this, m_dxfName); }
OdString OdDbProxyEntity::originalClassName() const { return proxyClassName(this, m_dxfName); }

OdResult OdDbProxyEntity::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  if (const OdDbObjectExtras* kept = extras()) {
    for (const auto& u : kept->unknown) {
      if (u.tag.type == OdDxf::ValueType::kPoint && u.tag.code >= 10 && u.tag.code <= 18) {
        extents.addPoint(OdGePoint3d(u.tag.x, u.tag.y, u.tag.dims == 3 ? u.tag.z : 0.0));
      }
    }
  }
  return extents.isValidExtents() ? eOk : eInvalidExtents;
}
