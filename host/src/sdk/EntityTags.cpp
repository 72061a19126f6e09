// An object's groups as tags, in the order and form of its entity-data list
// (see EntityLists.h), written in place into a list the caller keeps; and
// the groups of a table record as table searches give them.
#include <algorithm>
#include <cwchar>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbDictionary.h"
#include "DbProxy.h"
#include "core/Host.h"
#include "sdk/EntityListsInternal.h"

namespace ryhost {

void setErrno(int code) { Host::instance().sysvars().setInt(L"ERRNO", code); }

namespace lists {

// ---------------------------------------------------------------- class tables

const OdDbClassSchema* schemaOf(const OdRxClass* cls) {
  for (; cls; cls = cls->myParent()) {
    if (cls->schema()) return cls->schema();
  }
  return nullptr;
}

// The subclasses of a schema from the root down, computed once per schema.
const std::vector<const OdDbSubclass*>& chainOf(const OdDbClassSchema* schema) {
  // Asked once per kind of object in a run (callers keep the last answer).
  static std::mutex guard;
  static std::unordered_map<const OdDbClassSchema*, std::vector<const OdDbSubclass*>> cache;
  std::lock_guard<std::mutex> lock(guard);
  auto found = cache.find(schema);
  if (found == cache.end()) found = cache.emplace(schema, schema->chain()).first;
  return found->second;
}

}  // namespace lists

using namespace lists;

namespace {

// ---------------------------------------------------------------- names

// Letter case ignored; plain ASCII names (nearly all) without the Unicode
// tables. With prefixOnly, true when name begins with other.
bool sameNameNoCase(const OdString& name, const wchar_t* other, bool prefixOnly = false) {
  const wchar_t* a = name.c_str();
  const wchar_t* b = other;
  for (; *a && *b; ++a, ++b) {
    if (*a == *b) continue;
    if (*a >= 0x80 || *b >= 0x80) {
      const OdString head = prefixOnly ? name.left(static_cast<int>(std::wcslen(other))) : name;
      return head.iCompare(other) == 0;
    }
    const wchar_t la = (*a >= L'A' && *a <= L'Z') ? *a + 32 : *a;
    const wchar_t lb = (*b >= L'A' && *b <= L'Z') ? *b + 32 : *b;
    if (la != lb) return false;
  }
  return *b == 0 && (prefixOnly || *a == 0);
}

// ---------------------------------------------------------------- tags written in place

OdDxf::ValueType integerTypeOf(int code) {
  const OdDxf::ValueType byCode = OdDxf::valueTypeOf(code);
  switch (byCode) {
    case OdDxf::ValueType::kInt16:
    case OdDxf::ValueType::kInt32:
    case OdDxf::ValueType::kInt64:
    case OdDxf::ValueType::kBool: return byCode;
    default: return OdDxf::ValueType::kInt64;
  }
}

// Fills a list in place: the tags already in it are overwritten (keeping
// their string storage), so that a list used again costs no allocation.
// Tags a shorter list no longer needs wait in spare for the next longer one.
class TagSink {
 public:
  TagSink(OdDxfTagList& out, OdDxfTagList& spare) : m_out(out), m_spare(spare) {}
  OdDxfTag& next() {
    if (m_count == m_out.size()) grow();
    return m_out[m_count++];
  }
  void finish() {
    for (size_t i = m_count; i < m_out.size() && m_spare.size() < 4096; ++i) m_spare.push_back(std::move(m_out[i]));
    m_out.resize(m_count);
  }

 private:
  __attribute__((noinline)) void grow() {
    if (!m_spare.empty()) {
      m_out.push_back(std::move(m_spare.back()));
      m_spare.pop_back();
    } else {
      m_out.emplace_back();
    }
  }

  OdDxfTagList& m_out;
  OdDxfTagList& m_spare;
  size_t m_count = 0;
};

// What one thread keeps between lists: the context, the spare tags and the
// answers for the last class seen (drawings hold long runs of one kind of
// entity).
struct ListScratch {
  ListContext ctx{nullptr};
  OdDxfTagList spare;
  const OdRxClass* lastClass = nullptr;
  bool lastClassNamesItself = false;  // the objects' dxfName() is not the class's
  bool lastClassIsEntity = false;
};

ListScratch& listScratch() {
  // The library is loaded with the program, so its thread storage is static.
  thread_local ListScratch scratch __attribute__((tls_model("initial-exec")));
  return scratch;
}

void setScalar(OdDxfTag& tag, int code, OdDxf::ValueType type) {
  tag.code = static_cast<OdInt16>(code);
  tag.type = type;
  tag.dims = 0;
  tag.x = tag.y = tag.z = 0;
  tag.i = 0;
  if (!tag.s.isEmpty()) tag.s.empty();
  if (!tag.bin.empty()) tag.bin.clear();
}

void putInt(TagSink& sink, int code, OdInt64 value) {
  OdDxfTag& tag = sink.next();
  setScalar(tag, code, integerTypeOf(code));
  tag.i = value;
}

void putReal(TagSink& sink, int code, double value) {
  OdDxfTag& tag = sink.next();
  setScalar(tag, code, OdDxf::ValueType::kDouble);
  tag.x = value;
}

void putPoint(TagSink& sink, int code, double x, double y, double z, int dims) {
  OdDxfTag& tag = sink.next();
  setScalar(tag, code, OdDxf::ValueType::kPoint);
  tag.dims = static_cast<OdUInt8>(dims);
  tag.x = x;
  tag.y = y;
  tag.z = dims == 3 ? z : 0.0;
}

void putString(TagSink& sink, int code, const wchar_t* text) {
  OdDxfTag& tag = sink.next();
  tag.code = static_cast<OdInt16>(code);
  tag.type = OdDxf::ValueType::kString;
  tag.dims = 0;
  tag.x = tag.y = tag.z = 0;
  tag.i = 0;
  tag.s.str().assign(text);
  if (!tag.bin.empty()) tag.bin.clear();
}

void putString(TagSink& sink, int code, const OdString& text) {
  OdDxfTag& tag = sink.next();
  setScalar(tag, code, OdDxf::ValueType::kString);
  tag.s.str().assign(text.str());
}

// A name group: i holds the stub's address (null ids are left out).
void putName(TagSink& sink, int code, const OdDbObjectId& id) {
  if (id.isNull()) return;
  OdDxfTag& tag = sink.next();
  setScalar(tag, code, OdDxf::ValueType::kHandle);
  tag.i = reinterpret_cast<OdInt64>(id.stub());
}

// A reference of a field: a name for the pointer groups, a handle otherwise.
void putReference(TagSink& sink, int code, const OdDbObjectId& id) {
  if (isNameGroup(code)) {
    putName(sink, code, id);
    return;
  }
  OdDxfTag& tag = sink.next();
  setScalar(tag, code, OdDxf::ValueType::kHandle);
  tag.i = id.isNull() ? 0 : static_cast<OdInt64>(id.handle().value());
}

// Copies a tag written by the platform, with its handle turned into a name
// where the group holds one (null names are left out).
void putListForm(TagSink& sink, const OdDxfTag& from, OdDbDatabase* db) {
  if (isNameGroup(from.code) && from.type == OdDxf::ValueType::kHandle) {
    OdDbObjectId id = from.i && db ? db->getOdDbObjectId(OdDbHandle(static_cast<OdUInt64>(from.i))) : OdDbObjectId();
    putName(sink, from.code, id);
    return;
  }
  sink.next() = from;
}

// The entity's space: whether it is in a paper-space layout (group 67) and
// the name of its layout (group 410), read from the owner block and its
// layout without lookups by name.
const OdString* layoutNameOf(const OdDbObject* entity) {
  static const OdString kModel(L"Model");
  const auto* block = objectAs<OdDbBlockTableRecord>(entity->ownerId());
  if (!block) return nullptr;
  if (const auto* owned = objectAs<OdDbLayout>(block->getLayoutId())) return &owned->getLayoutName();
  return sameNameNoCase(block->getName(), L"*Model_Space") ? &kModel : nullptr;
}

// The platform's writer into a list: references become entity names where
// the group holds one, and an entity's layout name (410) goes in after its
// common subclass marker and the paper-space flag (67) that may follow it.
class ListSink final : public OdDbTagSink {
 public:
  ListSink(TagSink& out, OdDbDatabase* db, const OdString* layout) : m_out(out), m_db(db), m_layout(layout), m_awaitMarker(layout != nullptr) {}

  void addTag(const OdDxfTag& tag) override {
    placeLayout(tag.code);
    putListForm(m_out, tag, m_db);
  }
  void addString(int code, const OdString& value) override {
    placeLayout(code);
    putString(m_out, code, value);
  }
  void addText(int code, const wchar_t* value) override {
    placeLayout(code);
    putString(m_out, code, value);
    if (code == 100 && m_awaitMarker && std::wcscmp(value, L"AcDbEntity") == 0) {
      m_afterMarker = true;
      m_awaitMarker = false;
    }
  }
  void addReal(int code, double value) override {
    placeLayout(code);
    putReal(m_out, code, value);
  }
  void addPoint(int code, double x, double y, double z, int dims) override {
    placeLayout(code);
    putPoint(m_out, code, x, y, z, dims);
  }
  void addInteger(int code, OdInt64 value) override {
    placeLayout(code);
    putInt(m_out, code, value);
  }
  void addHandle(int code, OdUInt64 value) override {
    placeLayout(code);
    putListForm(m_out, OdDxfTag::handle(code, value), m_db);
  }
  void addReference(int code, const OdDbObjectId& id) override {
    placeLayout(code);
    putReference(m_out, code, id);
  }
  // An entity whose common groups ended the list still gets its layout name.
  void finish() {
    if (m_afterMarker) putString(m_out, 410, *m_layout);
    m_afterMarker = false;
  }

 private:
  // Called before every group: the layout name goes before the first group
  // after the marker that is not 67 (after 67 when it comes).
  void placeLayout(int code) {
    if (!m_afterMarker) return;
    if (code == 67) return;
    putString(m_out, 410, *m_layout);
    m_afterMarker = false;
  }

  TagSink& m_out;
  OdDbDatabase* m_db;
  const OdString* m_layout;
  bool m_awaitMarker;  // the common subclass marker is still to come
  bool m_afterMarker = false;
};

// Classes whose objects name themselves (proxies keep the name they were
// read with; MINSERT objects are INSERTs in files and lists).
bool namesItself(const OdRxClass* cls) {
  return cls->dxfName().isEmpty() || cls->isDerivedFrom(OdDbMInsertBlock::desc()) ||
         cls->isDerivedFrom(OdDbProxyEntity::desc()) || cls->isDerivedFrom(OdDbProxyObject::desc());
}

}  // namespace

namespace lists {

const OdString& dxfNameOf(const OdDbObject* object, OdString& storage) {
  OdRxClass* cls = object->isA();
  if (!namesItself(cls)) return cls->dxfName();
  storage = object->dxfName();
  return storage;
}

}  // namespace lists

void entityTags(const OdDbObject* object, OdDxfTagList& tags, bool withXdata) {
  ListScratch& scratch = listScratch();
  TagSink sink(tags, scratch.spare);
  OdDbDatabase* db = object->database();
  scratch.ctx.setDatabase(db);
  OdRxClass* cls = object->isA();
  if (cls != scratch.lastClass) {
    scratch.lastClass = cls;
    scratch.lastClassNamesItself = namesItself(cls);
    scratch.lastClassIsEntity = cls->isDerivedFrom(OdDbEntity::desc());
  }
  putName(sink, -1, object->objectId());
  if (scratch.lastClassNamesItself) putString(sink, 0, object->dxfName());
  else putString(sink, 0, cls->dxfName());
  putName(sink, 330, object->ownerId());
  OdDxfTag& handle = sink.next();
  setScalar(handle, 5, OdDxf::ValueType::kHandle);
  handle.i = static_cast<OdInt64>(object->objectId().handle().value());
  const OdDbObjectExtras* extras = object->extras();
  if (extras) {
    for (const OdDxfTag& tag : extras->appData) putListForm(sink, tag, db);
    if (!extras->persistentReactors.empty()) {
      putString(sink, 102, L"{ACAD_REACTORS");
      for (const OdDbObjectId& id : extras->persistentReactors) {
        if (!id.isErased()) putName(sink, 330, id);
      }
      putString(sink, 102, L"}");
    }
    if (!extras->extensionDictionary.isNull() && !extras->extensionDictionary.isErased()) {
      putString(sink, 102, L"{ACAD_XDICTIONARY");
      putName(sink, 360, extras->extensionDictionary);
      putString(sink, 102, L"}");
    }
  }
  ListSink fields(sink, db, scratch.lastClassIsEntity ? layoutNameOf(object) : nullptr);
  OdDbSchemaIo::writeFields(object, fields, scratch.ctx, true);
  fields.finish();
  if (withXdata && extras && !extras->xdata.empty()) {
    OdDxfTag& marker = sink.next();
    setScalar(marker, -3, OdDxf::ValueType::kString);
    for (const OdDxfTag& tag : extras->xdata) sink.next() = tag;
  }
  sink.finish();
}

void recordTags(const OdDbObject* record, const wchar_t* recordType, OdDxfTagList& tags) {
  // The groups that belong to a record's file form but not to its table list.
  static const int kLeftOut[] = {100, 102, 5, 105, 330, 360, 290, 370, 390, 347, 348, 420, 430, 440};
  ListScratch& scratch = listScratch();
  scratch.ctx.setDatabase(record->database());
  OdDxfTagList all;
  TagSink sink(all, scratch.spare);
  ListSink fields(sink, record->database(), nullptr);
  OdDbSchemaIo::writeFields(record, fields, scratch.ctx, false);
  sink.finish();
  tags.clear();
  tags.push_back(OdDxfTag::str(0, recordType));
  for (const OdDxfTag& tag : all) {
    if (std::find(std::begin(kLeftOut), std::end(kLeftOut), tag.code) == std::end(kLeftOut)) tags.push_back(tag);
  }
}

}  // namespace ryhost
