// Entity-data lists: the groups of an object as tags and as result-buffer
// lists (rydbEntGet), changing an entity from a list (rydbEntMod), making
// entities, complex entities, block definitions and table records from
// lists (rydbEntMake), walking the drawing's entities (rydbEntNext), and
// the object coordinate systems of planar entities.
#include "sdk/EntityLists.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbPolyline.h"
#include "DbProxy.h"
#include "DbSymbolTable.h"
#include "Ge/GeOcs.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryut.h"

namespace ryhost {

void setErrno(int code) { Host::instance().sysvars().setInt(L"ERRNO", code); }

namespace {

// ---------------------------------------------------------------- names and context

// The object of an id as a class, read straight from its stub (no open, no
// notification); null when it is of another class. Cheaper than a
// dynamic_cast across the libraries, which compares type names.
template <class T>
const T* objectAs(const OdDbObjectId& id) {
  if (id.isNull() || !id.isValid()) return nullptr;
  const OdDbObject* object = id.stub()->object;
  return object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

const OdString* recordNameOf(const OdDbObjectId& id) {
  const auto* record = objectAs<OdDbSymbolTableRecord>(id);
  return record ? &record->getName() : nullptr;
}

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

// A name the database could not resolve while a list was read: layers are
// made when the entity is committed, other tables fail earlier.
struct DeferredName {
  const OdDbField* field;
  OdString name;
};

class ListContext : public OdDbTagContext {
 public:
  explicit ListContext(OdDbDatabase* db) : m_db(db) {}
  OdDbDatabase* database() const override { return m_db; }
  bool forEntityList() const override { return true; }
  OdDbObjectId idFromHandle(OdUInt64 handle) override {
    return m_db ? m_db->getOdDbObjectId(OdDbHandle(handle)) : OdDbObjectId();
  }
  OdString nameOf(const OdDbObjectId& id) const override {
    const OdString* name = recordNameOf(id);
    return name ? *name : OdString();
  }
  void deferName(OdDbObject*, const OdDbField& field, const OdString& name) override {
    deferred.push_back({&field, name});
  }
  void setDatabase(OdDbDatabase* db) { m_db = db; }

  std::vector<DeferredName> deferred;

 private:
  OdDbDatabase* m_db;
};

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

// The subclass and field a group code of a class goes to when a list
// without markers is read: the first field (or codec) that takes the code.
struct FieldOfCode {
  int subclass = -1;
  const OdDbField* field = nullptr;
};

FieldOfCode fieldOfCode(const std::vector<const OdDbSubclass*>& chain, int code) {
  for (int si = 0; si < static_cast<int>(chain.size()); ++si) {
    for (const OdDbField& field : chain[static_cast<size_t>(si)]->fields) {
      if (field.kind == OdDbFieldKind::kCustom) {
        for (int c : field.codec->codes()) {
          if (c == code) return {si, &field};
        }
      } else if (!(field.flags & OdDbField::kNoDxf) && field.code == code) {
        return {si, &field};
      }
    }
  }
  return {};
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
  void dropLast() { --m_count; }
  size_t size() const { return m_count; }
  OdDxfTag& at(size_t index) { return m_out[index]; }
  // Moves the last tag to index, shifting the ones after it.
  void moveLastTo(size_t index) { std::rotate(m_out.begin() + static_cast<long>(index), m_out.begin() + static_cast<long>(m_count - 1), m_out.begin() + static_cast<long>(m_count)); }
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

// What one thread keeps between lists: the context, scratch lists and the
// answers for the last class and schema seen (drawings hold long runs of
// one kind of entity).
struct ListScratch {
  ListContext ctx{nullptr};
  OdDxfTagList codecTags;
  OdDxfTagList spare;
  const OdRxClass* lastClass = nullptr;
  const OdDbClassSchema* lastSchema = nullptr;
  const std::vector<const OdDbSubclass*>* lastChain = nullptr;
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

template <class T>
const T& at(const void* p) { return *static_cast<const T*>(p); }

// True when an optional name reference holds its default record.
bool nameHasDefault(const OdDbField& field, const OdDbObjectId& id) {
  if (id.isNull()) return true;
  if (!field.defaultName) return false;
  const OdString* name = recordNameOf(id);
  return name && sameNameNoCase(*name, field.defaultName);
}

// One field in list form; mirrors the platform's writer, with names read
// from the records' stubs and every tag written in place.
void putField(const OdDbObject* object, const OdDbField& field, TagSink& sink, ListContext& ctx, OdDxfTagList& codecTags) {
  const void* p = field.ref(object);
  switch (field.kind) {
    case OdDbFieldKind::kBool: putInt(sink, field.code, at<bool>(p) ? 1 : 0); break;
    case OdDbFieldKind::kInt8: putInt(sink, field.code, at<OdInt8>(p)); break;
    case OdDbFieldKind::kInt16: putInt(sink, field.code, at<OdInt16>(p)); break;
    case OdDbFieldKind::kInt32: putInt(sink, field.code, at<OdInt32>(p)); break;
    case OdDbFieldKind::kInt64: putInt(sink, field.code, at<OdInt64>(p)); break;
    case OdDbFieldKind::kDouble: {
      double value = at<double>(p);
      if (field.flags & OdDbField::kAngleDegrees) value = odRadiansToDegrees(value);
      putReal(sink, field.code, value);
      break;
    }
    case OdDbFieldKind::kString: putString(sink, field.code, at<OdString>(p)); break;
    case OdDbFieldKind::kPoint2d: {
      const auto& pt = at<OdGePoint2d>(p);
      putPoint(sink, field.code, pt.x, pt.y, 0, 2);
      break;
    }
    case OdDbFieldKind::kPoint3d: {
      const auto& pt = at<OdGePoint3d>(p);
      putPoint(sink, field.code, pt.x, pt.y, pt.z, 3);
      break;
    }
    case OdDbFieldKind::kVector3d: {
      const auto& v = at<OdGeVector3d>(p);
      putPoint(sink, field.code, v.x, v.y, v.z, 3);
      break;
    }
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer: putReference(sink, field.code, at<OdDbObjectId>(p)); break;
    case OdDbFieldKind::kNameRef: {
      const OdString* name = recordNameOf(at<OdDbObjectId>(p));
      if (name && !name->isEmpty()) putString(sink, field.code, *name);
      else putString(sink, field.code, field.defaultName ? field.defaultName : L"");
      break;
    }
    case OdDbFieldKind::kCustom: {
      codecTags.clear();
      field.codec->toTags(object, codecTags, ctx);
      for (const OdDxfTag& tag : codecTags) putListForm(sink, tag, ctx.database());
      break;
    }
  }
}

// The field's own test, without the call for the common kinds.
bool hasDefault(const OdDbObject* object, const OdDbField& field) {
  const void* p = field.ref(object);
  switch (field.kind) {
    case OdDbFieldKind::kInt16: return at<OdInt16>(p) == field.defaultInt;
    case OdDbFieldKind::kInt32: return at<OdInt32>(p) == field.defaultInt;
    case OdDbFieldKind::kDouble: return at<double>(p) == field.defaultReal[0];
    case OdDbFieldKind::kPoint3d: {
      const auto& v = at<OdGePoint3d>(p);
      return v.x == field.defaultReal[0] && v.y == field.defaultReal[1] && v.z == field.defaultReal[2];
    }
    case OdDbFieldKind::kVector3d: {
      const auto& v = at<OdGeVector3d>(p);
      return v.x == field.defaultReal[0] && v.y == field.defaultReal[1] && v.z == field.defaultReal[2];
    }
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer: return at<OdDbObjectId>(p).isNull();
    case OdDbFieldKind::kNameRef: return nameHasDefault(field, at<OdDbObjectId>(p));
    default: return field.hasDefault(object);
  }
}

bool skipField(const OdDbObject* object, const OdDbField& field, const ListContext& ctx) {
  if ((field.flags & OdDbField::kNoDxf) || (field.flags & OdDbField::kNoEntityList)) return true;
  if (ctx.version() < field.minVersion) return true;
  return (field.flags & OdDbField::kOptional) && hasDefault(object, field);
}

// The entity's space: whether it is in a paper-space layout (group 67) and
// the name of its layout (group 410), read from the owner block and its
// layout without lookups by name.
const OdString* spaceOf(const OdDbObject* entity, bool& paperSpace) {
  static const OdString kModel(L"Model");
  paperSpace = false;
  const auto* block = objectAs<OdDbBlockTableRecord>(entity->ownerId());
  if (!block) return nullptr;
  const bool model = sameNameNoCase(block->getName(), L"*Model_Space");
  const OdDbObjectId layoutId = block->getLayoutId();
  const bool layout = model || !layoutId.isNull() || sameNameNoCase(block->getName(), L"*Paper_Space", true);
  paperSpace = layout && !model;
  if (const auto* owned = objectAs<OdDbLayout>(layoutId)) return &owned->getLayoutName();
  return model ? &kModel : nullptr;
}

// The field of the entities' common subclass that gives group 67.
const OdDbField* paperSpaceField() {
  static const OdDbField* field = [] {
    for (const OdDbSubclass& sub : OdDbEntity::classSchema().subclasses) {
      for (const OdDbField& f : sub.fields) {
        if (f.kind == OdDbFieldKind::kCustom && f.codec->codes() == std::vector<int>{67}) return &f;
      }
    }
    return static_cast<const OdDbField*>(nullptr);
  }();
  return field;
}

void putSpace(const OdDbObject* entity, TagSink& sink) {
  bool paperSpace = false;
  const OdString* layout = spaceOf(entity, paperSpace);
  if (paperSpace) putInt(sink, 67, 1);
  if (layout) putString(sink, 410, *layout);
}

// The fields of an object with their subclass markers, in list form; for
// entities with 410 after 67. False when the space groups still have to be
// put in (the object is written by the platform's writer).
bool putFields(const OdDbObject* object, TagSink& sink, ListScratch& scratch, bool withMarkers) {
  const OdDbClassSchema* schema = schemaOf(object->isA());
  if (!schema) return false;
  ListContext& ctx = scratch.ctx;
  const OdDbObjectExtras* extras = object->extras();
  if (extras && !extras->unknown.empty()) {
    // Groups kept as read go where the platform's writer puts them.
    OdDxfTagList written;
    OdDbSchemaIo::writeFields(object, written, ctx, withMarkers);
    for (const OdDxfTag& tag : written) putListForm(sink, tag, ctx.database());
    return false;
  }
  if (schema != scratch.lastSchema) {
    scratch.lastChain = &chainOf(schema);
    scratch.lastSchema = schema;
  }
  if (schema->hooks.beforeWrite) schema->hooks.beforeWrite(object);
  const OdDbField* paperSpace = paperSpaceField();
  bool spaceWritten = false;
  for (const OdDbSubclass* sub : *scratch.lastChain) {
    if (withMarkers && sub->marker && *sub->marker) putString(sink, 100, sub->marker);
    for (const OdDbField& field : sub->fields) {
      if (&field == paperSpace) {
        putSpace(object, sink);
        spaceWritten = true;
      } else if (!skipField(object, field, ctx)) {
        putField(object, field, sink, ctx, scratch.codecTags);
      }
    }
  }
  return spaceWritten;
}

// 410 goes after the entity's common groups' 67 (or right after its marker).
void putLayoutName(const OdDbObject* object, TagSink& sink, size_t fieldsBegin) {
  bool paperSpace = false;
  const OdString* layout = spaceOf(object, paperSpace);
  if (!layout) return;
  size_t at = sink.size();
  for (size_t i = fieldsBegin; i < sink.size(); ++i) {
    const OdDxfTag& tag = sink.at(i);
    if (tag.code == 100 && tag.s == L"AcDbEntity") {
      at = i + 1;
      if (at < sink.size() && sink.at(at).code == 67) ++at;
      break;
    }
  }
  putString(sink, 410, *layout);
  sink.moveLastTo(at);
}

// Classes whose objects name themselves (proxies keep the name they were
// read with; MINSERT objects are INSERTs in files and lists).
bool namesItself(const OdRxClass* cls) {
  return cls->dxfName().isEmpty() || cls->isDerivedFrom(OdDbMInsertBlock::desc()) ||
         cls->isDerivedFrom(OdDbProxyEntity::desc()) || cls->isDerivedFrom(OdDbProxyObject::desc());
}

const OdString& dxfNameOf(const OdDbObject* object, OdString& storage) {
  OdRxClass* cls = object->isA();
  if (!namesItself(cls)) return cls->dxfName();
  storage = object->dxfName();
  return storage;
}

}  // namespace

void entityTags(const OdDbObject* object, OdDxfTagList& tags, bool withXdata) {
  ListScratch& scratch = listScratch();
  TagSink sink(tags, scratch.spare);
  scratch.ctx.setDatabase(object->database());
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
    for (const OdDxfTag& tag : extras->appData) putListForm(sink, tag, object->database());
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
  const size_t fieldsBegin = sink.size();
  const bool spaceWritten = putFields(object, sink, scratch, true);
  if (scratch.lastClassIsEntity && !spaceWritten) putLayoutName(object, sink, fieldsBegin);
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
  putFields(record, sink, scratch, false);
  sink.finish();
  tags.clear();
  tags.push_back(OdDxfTag::str(0, recordType));
  for (const OdDxfTag& tag : all) {
    if (std::find(std::begin(kLeftOut), std::end(kLeftOut), tag.code) == std::end(kLeftOut)) tags.push_back(tag);
  }
}

// ---------------------------------------------------------------- tags and result buffers

namespace {

// The kind of value a group code carries in a result buffer (as the
// result-buffer functions free and copy it).
enum class GroupKind { kNone, kReal, kPoint, kShort, kLong, kInt64, kString, kName, kBinary };

GroupKind groupKindOf(int code) {
  if (isNameGroup(code)) return GroupKind::kName;
  if (code == -3) return GroupKind::kNone;
  if (code < 0) return GroupKind::kString;
  switch (OdDxf::valueTypeOf(code)) {
    case OdDxf::ValueType::kString:
    case OdDxf::ValueType::kHandle: return GroupKind::kString;
    case OdDxf::ValueType::kDouble: return GroupKind::kReal;
    case OdDxf::ValueType::kPoint: return GroupKind::kPoint;
    case OdDxf::ValueType::kInt16:
    case OdDxf::ValueType::kBool: return GroupKind::kShort;
    case OdDxf::ValueType::kInt32: return GroupKind::kLong;
    case OdDxf::ValueType::kInt64: return GroupKind::kInt64;
    case OdDxf::ValueType::kBinary: return GroupKind::kBinary;
  }
  return GroupKind::kNone;
}

ACHAR* copyText(const wchar_t* text, size_t length) {
  auto* copy = static_cast<ACHAR*>(std::malloc((length + 1) * sizeof(ACHAR)));
  if (length) std::wmemcpy(copy, text, length);
  copy[length] = 0;
  return copy;
}

double tagReal(const OdDxfTag& tag) {
  switch (tag.type) {
    case OdDxf::ValueType::kDouble:
    case OdDxf::ValueType::kPoint: return tag.x;
    case OdDxf::ValueType::kString: return std::wcstod(tag.s.c_str(), nullptr);
    default: return static_cast<double>(tag.i);
  }
}

OdInt64 tagInteger(const OdDxfTag& tag) {
  switch (tag.type) {
    case OdDxf::ValueType::kDouble:
    case OdDxf::ValueType::kPoint: return static_cast<OdInt64>(tag.x);
    case OdDxf::ValueType::kString: return std::wcstoll(tag.s.c_str(), nullptr, 10);
    default: return tag.i;
  }
}

void fillValue(resbuf* rb, const OdDxfTag& tag, OdDbDatabase* db) {
  switch (groupKindOf(tag.code)) {
    case GroupKind::kName:
      rb->resval.rlname[0] = tag.type == OdDxf::ValueType::kHandle ? tag.i : 0;
      rb->resval.rlname[1] = reinterpret_cast<std::int64_t>(db);
      break;
    case GroupKind::kString: {
      if (tag.type == OdDxf::ValueType::kHandle && tag.s.isEmpty()) {
        wchar_t text[17];
        OdDbHandle(static_cast<OdUInt64>(tag.i)).getIntoAsciiBuffer(text);
        rb->resval.rstring = copyText(text, std::wcslen(text));
      } else {
        const OdString text = tag.type == OdDxf::ValueType::kString || tag.type == OdDxf::ValueType::kHandle ? tag.s : tag.valueText();
        rb->resval.rstring = copyText(text.c_str(), static_cast<size_t>(text.getLength()));
      }
      break;
    }
    case GroupKind::kReal: rb->resval.rreal = tagReal(tag); break;
    case GroupKind::kPoint:
      rb->resval.rpoint[0] = tag.x;
      rb->resval.rpoint[1] = tag.type == OdDxf::ValueType::kPoint ? tag.y : 0.0;
      rb->resval.rpoint[2] = tag.type == OdDxf::ValueType::kPoint && tag.dims == 3 ? tag.z : 0.0;
      break;
    case GroupKind::kShort: rb->resval.rint = static_cast<short>(tagInteger(tag)); break;
    case GroupKind::kLong: rb->resval.rlong = static_cast<std::int32_t>(tagInteger(tag)); break;
    case GroupKind::kInt64: rb->resval.mnInt64 = tagInteger(tag); break;
    case GroupKind::kBinary: {
      const size_t n = tag.bin.size();
      rb->resval.rbinary.clen = static_cast<short>(n);
      rb->resval.rbinary.buf = static_cast<char*>(std::malloc(n + 1));
      if (n) std::memcpy(rb->resval.rbinary.buf, tag.bin.data(), n);
      break;
    }
    case GroupKind::kNone: break;
  }
}

}  // namespace

resbuf* listFromTags(const OdDxfTag* begin, const OdDxfTag* end, OdDbDatabase* db) {
  resbuf* head = nullptr;
  resbuf** tail = &head;
  for (const OdDxfTag* tag = begin; tag != end; ++tag) {
    resbuf* rb = ryutNewRb(tag->code);
    fillValue(rb, *tag, db);
    *tail = rb;
    tail = &rb->rbnext;
  }
  return head;
}

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

namespace {

// ---------------------------------------------------------------- reading lists

// A list taken apart: the type, the header groups, the body groups (tags as
// the platform reads them: references as handles) and the extended data.
struct ParsedList {
  OdDbObjectId self;  // -1
  bool hasSelf = false;
  OdString type;      // 0
  bool hasType = false;
  bool hasHandle = false;
  OdUInt64 handle = 0;
  OdDxfTagList body;
  bool hasXdata = false;
  OdDxfTagList xdata;
};

struct ListError {
  int errnoValue;
};

OdDbObjectId idOfName(const std::int64_t* name) {
  OdDbObjectId id;
  if (rydbGetObjectId(id, name) != RTNORM) return OdDbObjectId();
  return id;
}

OdDxfTag tagOf(const resbuf* rb) {
  const int code = rb->restype;
  switch (groupKindOf(code)) {
    case GroupKind::kName: {
      OdDbObjectId id = idOfName(rb->resval.rlname);
      if (id.isNull() && (rb->resval.rlname[0] || rb->resval.rlname[1])) throw ListError{kErrnoInvalidName};
      return OdDxfTag::handle(code, id.isNull() ? 0 : id.handle().value());
    }
    case GroupKind::kString: {
      if (!rb->resval.rstring) throw ListError{kErrnoBadField};
      if (OdDxf::valueTypeOf(code) == OdDxf::ValueType::kHandle) {
        OdUInt64 value = 0;
        OdDxfTag tag = OdDxfTag::handle(code, 0);
        if (OdDbHandle::parse(std::wstring_view(rb->resval.rstring), value)) tag.i = static_cast<OdInt64>(value);
        else tag.s = rb->resval.rstring;
        return tag;
      }
      return OdDxfTag::str(code, rb->resval.rstring);
    }
    case GroupKind::kReal: return OdDxfTag::real(code, rb->resval.rreal);
    case GroupKind::kPoint:
      return OdDxfTag::point(code, rb->resval.rpoint[0], rb->resval.rpoint[1], rb->resval.rpoint[2], 3);
    case GroupKind::kShort: return OdDxfTag::integer(code, rb->resval.rint);
    case GroupKind::kLong: return OdDxfTag::integer(code, rb->resval.rlong);
    case GroupKind::kInt64: return OdDxfTag::integer(code, rb->resval.mnInt64);
    case GroupKind::kBinary: {
      OdBinaryData data;
      const int n = rb->resval.rbinary.clen;
      if (n < 0 || (n > 0 && !rb->resval.rbinary.buf)) throw ListError{kErrnoBadField};
      data.assign(rb->resval.rbinary.buf, rb->resval.rbinary.buf + n);
      return OdDxfTag::binary(code, data);
    }
    case GroupKind::kNone: break;
  }
  throw ListError{kErrnoBadField};
}

// The extended data after -3: 1001 application groups and their data.
OdDxfTagList parseXdata(const resbuf* rb, OdDbDatabase* db) {
  OdDxfTagList xdata;
  int depth = 0;
  for (; rb; rb = rb->rbnext) {
    const int code = rb->restype;
    if (code < 1000 || code > 1071 || !OdDxf::isKnownCode(code)) throw ListError{kErrnoBadXdataType};
    if (code != 1001 && xdata.empty()) throw ListError{kErrnoXdataAppPlace};
    OdDxfTag tag = tagOf(rb);
    if (code == 1001) {
      if (depth != 0) throw ListError{kErrnoXdataNesting};
      if (!db || db->findRecord(OdDbNameTable::kRegApp, tag.s).isNull()) throw ListError{kErrnoXdataAppPlace};
    } else if (code == 1002) {
      if (tag.s == L"{") ++depth;
      else if (tag.s == L"}" && depth > 0) --depth;
      else throw ListError{kErrnoXdataNesting};
    }
    xdata.push_back(std::move(tag));
  }
  if (depth != 0) throw ListError{kErrnoXdataNesting};
  return xdata;
}

ParsedList parseList(const resbuf* list, OdDbDatabase* db) {
  ParsedList parsed;
  bool inHeader = true;
  for (const resbuf* rb = list; rb; rb = rb->rbnext) {
    // Lists built by programs give the type as RTDXF0.
    const int code = rb->restype == RTDXF0 ? 0 : rb->restype;
    if (code >= 5000 || code < -5) throw ListError{kErrnoBadField};
    if (code == -3) {
      parsed.hasXdata = true;
      parsed.xdata = parseXdata(rb->rbnext, db);
      break;
    }
    if (code == -1) {
      parsed.self = idOfName(rb->resval.rlname);
      parsed.hasSelf = true;
      continue;
    }
    if (code == 0) {
      if (!rb->resval.rstring) throw ListError{kErrnoBadEntityType};
      parsed.type = rb->resval.rstring;
      parsed.hasType = true;
      continue;
    }
    if (code == 5) {
      if (!rb->resval.rstring || !OdDbHandle::parse(std::wstring_view(rb->resval.rstring), parsed.handle)) {
        throw ListError{kErrnoChangeHandle};
      }
      parsed.hasHandle = true;
      continue;
    }
    if (code == 102) {
      // Application groups ({ACAD_REACTORS …}) are not changed through lists.
      if (rb->resval.rstring && rb->resval.rstring[0] == L'{') {
        while (rb->rbnext && !(rb->rbnext->restype == 102 && rb->rbnext->resval.rstring &&
                               std::wcscmp(rb->rbnext->resval.rstring, L"}") == 0)) {
          rb = rb->rbnext;
        }
        if (rb->rbnext) rb = rb->rbnext;
      }
      continue;
    }
    // The owner stands among the header groups; further 330 groups are fields.
    if (code == 330 && inHeader) continue;
    if (code == 410 || code == -2 || code == -4 || code == -5) continue;
    inHeader = false;
    parsed.body.push_back(tagOf(rb));
  }
  return parsed;
}

// ---------------------------------------------------------------- merging groups into an object's own

// True when a field of that subclass takes the code.
bool subclassTakes(const OdDbSubclass* sub, int code) {
  for (const OdDbField& field : sub->fields) {
    if (field.kind == OdDbFieldKind::kCustom) {
      if (field.codec->takesAnyCode()) return true;
      for (int c : field.codec->codes()) {
        if (c == code) return true;
      }
    } else if (!(field.flags & OdDbField::kNoDxf) && field.code == code) {
      return true;
    }
  }
  return false;
}

// The subclass a marker opens. A class may repeat a marker (a text's second
// "AcDbText" holds its vertical alignment): the first such subclass after
// the current one is meant, else the first of the chain.
int subclassOfMarker(const std::vector<const OdDbSubclass*>& chain, const OdString& marker, int current) {
  int first = -1;
  for (size_t k = 0; k < chain.size(); ++k) {
    if (!chain[k]->marker || marker.iCompare(chain[k]->marker) != 0) continue;
    if (static_cast<int>(k) > current) return static_cast<int>(k);
    if (first < 0) first = static_cast<int>(k);
  }
  return first;
}

// A list split by subclass: the groups before any marker, then each
// subclass's marker and groups.
struct Sections {
  OdDxfTagList head;
  std::vector<std::optional<OdDxfTagList>> bySubclass;  // with the marker first
};

// The body of a list for readFields: the object's own groups (with its
// markers and every value it holds) with the given groups put in.
//  - A subclass given with its marker (a list from rydbEntGet) replaces
//    that subclass's groups as a whole; what follows an embedded object's
//    101 stays with it.
//  - Groups given without a marker, or standing in a subclass that does not
//    take them (groups appended to a list), replace the object's groups of
//    the same code in turn; a codec's groups (vertex arrays, colour with
//    true colour, hatch loops) are replaced as a whole, in the order given.
OdDxfTagList mergeGroups(const OdDxfTagList& own, const OdDxfTagList& given, const std::vector<const OdDbSubclass*>& chain) {
  Sections sections;
  sections.bySubclass.resize(chain.size());
  {
    int current = -1;
    for (const OdDxfTag& tag : own) {
      if (tag.code == 100 && tag.type == OdDxf::ValueType::kString) {
        const int k = subclassOfMarker(chain, tag.s, current);
        if (k >= 0) {
          current = k;
          sections.bySubclass[static_cast<size_t>(k)] = OdDxfTagList{tag};
          continue;
        }
      }
      if (current < 0) sections.head.push_back(tag);
      else sections.bySubclass[static_cast<size_t>(current)]->push_back(tag);
    }
  }
  // The given groups: whole subclasses, and loose groups.
  OdDxfTagList loose;
  {
    int current = -1;
    bool embedded = false;
    for (const OdDxfTag& tag : given) {
      if (tag.code == 100 && tag.type == OdDxf::ValueType::kString) {
        const int k = subclassOfMarker(chain, tag.s, current);
        if (k >= 0) {
          current = k;
          embedded = false;
          sections.bySubclass[static_cast<size_t>(k)] = OdDxfTagList{tag};
          continue;
        }
      }
      if (current < 0) {
        loose.push_back(tag);
        continue;
      }
      embedded = embedded || tag.code == 101;
      const OdDbSubclass* sub = chain[static_cast<size_t>(current)];
      const bool elsewhere = !embedded && !subclassTakes(sub, tag.code) && fieldOfCode(chain, tag.code).field;
      if (elsewhere) loose.push_back(tag);
      else sections.bySubclass[static_cast<size_t>(current)]->push_back(tag);
    }
  }

  struct Entry {
    OdDxfTag tag;
    bool fixed = false;  // a loose group's value, or part of an embedded object
  };
  std::vector<Entry> merged;
  std::vector<size_t> markerAt(chain.size(), static_cast<size_t>(-1));
  for (const OdDxfTag& tag : sections.head) merged.push_back({tag, false});
  for (size_t k = 0; k < chain.size(); ++k) {
    if (!sections.bySubclass[k]) continue;
    markerAt[k] = merged.size();
    bool embedded = false;
    for (const OdDxfTag& tag : *sections.bySubclass[k]) {
      embedded = embedded || tag.code == 101;
      merged.push_back({tag, embedded});
    }
  }

  // Where a subclass's groups end: at the next marker in the list.
  auto regionEnd = [&](int si) {
    for (size_t k = static_cast<size_t>(si) + 1; k < chain.size(); ++k) {
      if (markerAt[k] != static_cast<size_t>(-1)) return markerAt[k];
    }
    return merged.size();
  };
  // Groups that went in (or out) at a place move the markers after it.
  auto shiftMarkers = [&](size_t from, std::ptrdiff_t by) {
    for (size_t& m : markerAt) {
      if (m != static_cast<size_t>(-1) && m >= from) m = static_cast<size_t>(static_cast<std::ptrdiff_t>(m) + by);
    }
  };
  auto positionsOf = [&](auto&& match) {
    std::vector<size_t> at;
    for (size_t i = 0; i < merged.size(); ++i) {
      if (!merged[i].fixed && match(merged[i].tag)) at.push_back(i);
    }
    return at;
  };

  std::vector<const OdDbFieldCodec*> codecsDone;
  std::vector<int> codesDone;
  for (size_t g = 0; g < loose.size(); ++g) {
    const int code = loose[g].code;
    const FieldOfCode owner = fieldOfCode(chain, code);
    if (!owner.field) continue;  // not a group of this kind of object: left out
    if (owner.field->kind == OdDbFieldKind::kCustom) {
      const OdDbFieldCodec* codec = owner.field->codec;
      if (std::find(codecsDone.begin(), codecsDone.end(), codec) != codecsDone.end()) continue;
      codecsDone.push_back(codec);
      auto isCodecGroup = [&](int c) { return fieldOfCode(chain, c).field == owner.field; };
      std::vector<size_t> at = positionsOf([&](const OdDxfTag& t) { return isCodecGroup(t.code); });
      const size_t insertAt = at.empty() ? regionEnd(owner.subclass) : at.front();
      for (auto it = at.rbegin(); it != at.rend(); ++it) merged.erase(merged.begin() + static_cast<long>(*it));
      std::vector<Entry> run;
      for (size_t k = g; k < loose.size(); ++k) {
        if (isCodecGroup(loose[k].code)) run.push_back({loose[k], true});
      }
      merged.insert(merged.begin() + static_cast<long>(insertAt), run.begin(), run.end());
      shiftMarkers(insertAt, static_cast<std::ptrdiff_t>(run.size()) - static_cast<std::ptrdiff_t>(at.size()));
      continue;
    }
    if (std::find(codesDone.begin(), codesDone.end(), code) != codesDone.end()) continue;
    codesDone.push_back(code);
    std::vector<size_t> at = positionsOf([&](const OdDxfTag& t) { return t.code == code; });
    size_t last = at.empty() ? regionEnd(owner.subclass) : at.back() + 1;
    size_t k = 0;
    for (size_t n = g; n < loose.size(); ++n) {
      if (loose[n].code != code) continue;
      if (k < at.size()) {
        merged[at[k]] = {loose[n], true};
      } else {
        merged.insert(merged.begin() + static_cast<long>(last), Entry{loose[n], true});
        shiftMarkers(last, 1);
        ++last;
      }
      ++k;
    }
  }
  OdDxfTagList result;
  result.reserve(merged.size());
  for (auto& entry : merged) result.push_back(std::move(entry.tag));
  return result;
}

// The object's own groups as readFields takes them back: markers, names as
// names, references as handles.
OdDxfTagList ownGroups(OdDbObject* object, ListContext& ctx) {
  OdDxfTagList own;
  OdDbSchemaIo::writeFields(object, own, ctx, true);
  return own;
}

// ---------------------------------------------------------------- names in lists

bool validRecordName(const OdString& name) {
  return !name.isEmpty() && name.getLength() <= 255 && name.findOneOf(L"<>/\\\":;?*|,=`") < 0;
}

int errnoForMissing(OdDbNameTable table) {
  switch (table) {
    case OdDbNameTable::kLinetype: return kErrnoBadLinetype;
    case OdDbNameTable::kTextStyle: return kErrnoBadTextStyle;
    case OdDbNameTable::kBlock: return kErrnoBadBlockName;
    default: return kErrnoBadField;
  }
}

// Checks the names a list gives: layers may be new (they are made), every
// other record must exist. Values of the wrong type are refused too.
void checkNames(const OdDxfTagList& body, const std::vector<const OdDbSubclass*>& chain, OdDbDatabase* db) {
  for (const OdDxfTag& tag : body) {
    const FieldOfCode owner = fieldOfCode(chain, tag.code);
    if (!owner.field || owner.field->kind != OdDbFieldKind::kNameRef) continue;
    if (tag.type != OdDxf::ValueType::kString) throw ListError{kErrnoBadField};
    if (owner.field->table == OdDbNameTable::kLayer) {
      if (!validRecordName(tag.s)) throw ListError{kErrnoBadLayer};
      continue;
    }
    if (tag.s.isEmpty()) continue;
    if (db->findRecord(owner.field->table, tag.s).isNull()) throw ListError{errnoForMissing(owner.field->table)};
  }
}

OdDbObjectId makeLayer(OdDbDatabase* db, const OdString& name) {
  OdDbObjectId existing = db->findRecord(OdDbNameTable::kLayer, name);
  if (!existing.isNull()) return existing;
  OdDbObjectPtr table = db->getLayerTableId().openObject(OdDb::kForWrite);
  auto* layers = dynamic_cast<OdDbSymbolTable*>(table.get());
  if (!layers) return OdDbObjectId();
  OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
  if (layer->setName(name) != eOk) return OdDbObjectId();
  layer->setLinetypeObjectId(db->getLinetypeContinuousId());
  return layers->add(layer.get());
}

// Gives the layers a list named that did not exist yet: they are made now.
void resolveDeferred(OdDbObject* object, const std::vector<DeferredName>& deferred, OdDbDatabase* db) {
  for (const DeferredName& d : deferred) {
    if (d.field->table != OdDbNameTable::kLayer) continue;
    *static_cast<OdDbObjectId*>(d.field->ref(object)) = makeLayer(db, d.name);
  }
}

bool onLockedLayer(const OdDbObject* object) {
  auto* entity = dynamic_cast<const OdDbEntity*>(object);
  if (!entity || entity->layerId().isNull() || !entity->layerId().isValid()) return false;
  auto* layer = dynamic_cast<const OdDbLayerTableRecord*>(entity->layerId().stub()->object);
  return layer && layer->isLocked();
}

// Reads the given groups into an object: checks the names, merges the
// groups into the object's own and reads them back. Layers that do not
// exist are returned in deferred (the caller makes them).
void readGroups(OdDbObject* object, const OdDxfTagList& body, OdDbDatabase* db, std::vector<DeferredName>& deferred) {
  const OdDbClassSchema* schema = schemaOf(object->isA());
  if (!schema) return;
  const auto& chain = chainOf(schema);
  checkNames(body, chain, db);
  for (const OdDxfTag& tag : body) {
    if (tag.code == 210 && tag.type == OdDxf::ValueType::kPoint && tag.x == 0 && tag.y == 0 && tag.z == 0) {
      throw ListError{kErrnoBadNormal};
    }
  }
  ListContext ctx(db);
  OdDxfTagList merged = mergeGroups(ownGroups(object, ctx), body, chain);
  // The object's own unknown groups are in the merged list where they stood.
  if (OdDbObjectExtras* extras = object->extras()) extras->unknown.clear();
  ctx.deferred.clear();
  OdDbSchemaIo::readFields(object, merged.data(), merged.data() + merged.size(), ctx);
  deferred.insert(deferred.end(), ctx.deferred.begin(), ctx.deferred.end());
}

// ---------------------------------------------------------------- classes made from lists

OdRxClass* classByName(const wchar_t* name) { return odrxFindClass(name); }

OdInt64 firstInt(const OdDxfTagList& body, int code, OdInt64 otherwise) {
  for (const OdDxfTag& tag : body) {
    if (tag.code == code && tag.type != OdDxf::ValueType::kString) return tag.i;
  }
  return otherwise;
}

bool hasGroup(const OdDxfTagList& body, int code) {
  return std::any_of(body.begin(), body.end(), [code](const OdDxfTag& tag) { return tag.code == code; });
}

OdRxClass* entityClassFor(const OdString& type, const OdDxfTagList& body) {
  if (type == L"POLYLINE") return odDbPolylineClassForFlags(static_cast<int>(firstInt(body, 70, 0)));
  if (type == L"INSERT") {
    return firstInt(body, 70, 1) > 1 || firstInt(body, 71, 1) > 1 ? OdDbMInsertBlock::desc() : OdDbBlockReference::desc();
  }
  if (type == L"DIMENSION") {
    static const wchar_t* kDimensionClasses[] = {
        L"OdDbRotatedDimension", L"OdDbAlignedDimension", L"OdDb2LineAngularDimension", L"OdDbDiametricDimension",
        L"OdDbRadialDimension", L"OdDb3PointAngularDimension", L"OdDbOrdinateDimension"};
    const OdInt64 kind = firstInt(body, 70, 0) & 0x0F;
    return kind < 7 ? classByName(kDimensionClasses[kind]) : nullptr;
  }
  OdRxClass* cls = odrxFindClassByDxfName(type);
  if (!cls || !cls->constructor() || !cls->isDerivedFrom(OdDbEntity::desc())) return nullptr;
  return cls;
}

// Groups without which an entity of the type means nothing.
bool hasMandatoryGroups(const OdString& type, const OdDxfTagList& body) {
  struct Rule {
    const wchar_t* type;
    std::initializer_list<int> codes;
  };
  static const Rule kRules[] = {
      {L"LINE", {10, 11}},     {L"POINT", {10}},         {L"CIRCLE", {10, 40}},     {L"ARC", {10, 40, 50, 51}},
      {L"TEXT", {10, 1}},      {L"ATTRIB", {10, 1, 2}},  {L"ATTDEF", {10, 2}},      {L"INSERT", {2, 10}},
      {L"SOLID", {10, 11, 12}}, {L"TRACE", {10, 11, 12}}, {L"3DFACE", {10, 11, 12}}, {L"ELLIPSE", {10, 11, 40}},
      {L"LWPOLYLINE", {10}},   {L"VERTEX", {10}},        {L"RAY", {10, 11}},        {L"XLINE", {10, 11}},
      {L"MTEXT", {10}},        {L"SHAPE", {10, 2}},
  };
  for (const Rule& rule : kRules) {
    if (type != rule.type) continue;
    for (int code : rule.codes) {
      if (!hasGroup(body, code)) return false;
    }
  }
  return true;
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

struct RecordTable {
  const wchar_t* type;
  OdDbNameTable table;
  OdRxClass* (*recordClass)();
};

const RecordTable* recordTableOf(const OdString& type) {
  static const RecordTable kTables[] = {
      {L"LAYER", OdDbNameTable::kLayer, &OdDbLayerTableRecord::desc},
      {L"LTYPE", OdDbNameTable::kLinetype, &OdDbLinetypeTableRecord::desc},
      {L"STYLE", OdDbNameTable::kTextStyle, &OdDbTextStyleTableRecord::desc},
      {L"APPID", OdDbNameTable::kRegApp, &OdDbRegAppTableRecord::desc},
      {L"DIMSTYLE", OdDbNameTable::kDimStyle, &OdDbDimStyleTableRecord::desc},
      {L"UCS", OdDbNameTable::kUcs, &OdDbUCSTableRecord::desc},
      {L"VIEW", OdDbNameTable::kView, &OdDbViewTableRecord::desc},
  };
  for (const RecordTable& t : kTables) {
    if (type == t.type) return &t;
  }
  return nullptr;
}

OdDbObjectId makeRecord(const RecordTable& kind, const ParsedList& parsed, OdDbDatabase* db) {
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
      if (!fits || !hasMandatoryGroups(type, parsed.body)) dropComplex(kErrnoBadComplex);
      OdRxClass* cls = type == L"ATTRIB" ? OdDbAttribute::desc()
                                          : odDbVertexClassForPolyline(owner, static_cast<int>(firstInt(parsed.body, 70, 0)));
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
    if (const RecordTable* table = recordTableOf(type)) {
      if (state.block) throw ListError{kErrnoBadBlockDefinition};
      OdDbObjectId id = makeRecord(*table, parsed, db);
      if (result) rydbGetAdsName(result, id);
      return RTNORM;
    }
    if (type == L"VIEWPORT") throw ListError{kErrnoViewport};
    OdRxClass* cls = entityClassFor(type, parsed.body);
    if (!cls) throw ListError{kErrnoBadEntityType};
    if (!hasMandatoryGroups(type, parsed.body)) throw ListError{kErrnoMissingField};
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

// Names given to the entity functions: an object of an open drawing.
bool objectOfName(const ads_name name, OdDbObjectId& id) {
  if (!name || rydbGetObjectId(id, name) != RTNORM || !id.isValid()) {
    setErrno(kErrnoInvalidName);
    return false;
  }
  return true;
}

// Application names of rydbEntGetX: "*" and "?" wildcards, letter case ignored.
bool appMatches(const wchar_t* name, const wchar_t* pattern) {
  if (*pattern == 0) return *name == 0;
  if (*pattern == L'*') return appMatches(name, pattern + 1) || (*name && appMatches(name + 1, pattern));
  if (*name == 0) return false;
  if (*pattern != L'?' && odToUpper(*pattern) != odToUpper(*name)) return false;
  return appMatches(name + 1, pattern + 1);
}

}  // namespace

// ---------------------------------------------------------------- SDK functions

resbuf* rydbEntGet(const ads_name entity) { return rydbEntGetX(entity, nullptr); }

resbuf* rydbEntGetX(const ads_name entity, const resbuf* apps) {
  OdDbObjectId id;
  if (!objectOfName(entity, id)) return nullptr;
  if (id.isErased()) {
    setErrno(kErrnoDeletedEntity);
    return nullptr;
  }
  const OdDbObject* object = id.stub()->object;
  OdDxfTagList tags;
  entityTags(object, tags, false);
  const OdDbObjectExtras* extras = object->extras();
  if (apps && extras && !extras->xdata.empty()) {
    bool any = false;
    bool take = false;
    for (const OdDxfTag& tag : extras->xdata) {
      if (tag.code == 1001) {
        take = false;
        for (const resbuf* app = apps; app && !take; app = app->rbnext) {
          take = app->restype == RTSTR && app->resval.rstring && appMatches(tag.s.c_str(), app->resval.rstring);
        }
        if (take && !any) {
          tags.push_back(OdDxfTag::str(-3, OdString()));
          any = true;
        }
      }
      if (take) tags.push_back(tag);
    }
  }
  return listFromTags(tags.data(), tags.data() + tags.size(), id.database());
}

int rydbEntMod(const resbuf* list) {
  if (!list) {
    setErrno(kErrnoBadField);
    return RTERROR;
  }
  const resbuf* self = list;
  while (self && self->restype != -1) self = self->rbnext;
  OdDbObjectId id;
  if (!self || !objectOfName(self->resval.rlname, id)) {
    setErrno(kErrnoInvalidName);
    return RTERROR;
  }
  if (id.isErased()) {
    setErrno(kErrnoModifyDeleted);
    return RTERROR;
  }
  OdDbDatabase* db = id.database();
  try {
    ParsedList parsed = parseList(list, db);
    const OdDbObject* current = id.stub()->object;
    OdString nameStorage;
    if (parsed.hasType && parsed.type.iCompare(dxfNameOf(current, nameStorage)) != 0) throw ListError{kErrnoChangeType};
    if (parsed.hasHandle && parsed.handle != id.handle().value()) throw ListError{kErrnoChangeHandle};
    if (current->isKindOf(OdDbSequenceEnd::desc())) throw ListError{kErrnoModifySeqend};
    if (onLockedLayer(current)) throw ListError{kErrnoLockedLayer};
    OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
    if (object.isNull()) throw ListError{kErrnoInvalidName};
    const OdDbClassSchema* schema = schemaOf(object->isA());
    if (schema) checkNames(parsed.body, chainOf(schema), db);
    object->assertWriteEnabled();
    std::vector<DeferredName> deferred;
    readGroups(object.get(), parsed.body, db, deferred);
    resolveDeferred(object.get(), deferred, db);
    if (parsed.hasXdata && !parsed.xdata.empty() && object->setXData(parsed.xdata) != eOk) {
      throw ListError{kErrnoXdataAppPlace};
    }
    return RTNORM;
  } catch (const ListError& error) {
    setErrno(error.errnoValue);
  } catch (const OdError&) {
    setErrno(kErrnoBadField);
  }
  return RTERROR;
}

int rydbEntMake(const resbuf* list) { return entMake(list, nullptr); }

int rydbEntMakeX(const resbuf* list, ads_name result) { return entMake(list, result); }

namespace ryhost {
void forgetPendingMake(OdDbDatabase* db) { makeStates().erase(db); }
}  // namespace ryhost

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

// ---------------------------------------------------------------- object coordinate systems

namespace {

int convertOcs(const ads_point point, const ads_point normal, bool vector, ads_point result, bool toOcs) {
  if (!point || !normal || !result) {
    setErrno(kErrnoBadTransform);
    return RTERROR;
  }
  const OdGeVector3d n(normal[0], normal[1], normal[2]);
  if (vector) {
    const OdGeVector3d v(point[0], point[1], point[2]);
    const OdGeVector3d out = toOcs ? odgeWcsToOcs(v, n) : odgeOcsToWcs(v, n);
    result[0] = out.x;
    result[1] = out.y;
    result[2] = out.z;
  } else {
    const OdGePoint3d p(point[0], point[1], point[2]);
    const OdGePoint3d out = toOcs ? odgeWcsToOcs(p, n) : odgeOcsToWcs(p, n);
    result[0] = out.x;
    result[1] = out.y;
    result[2] = out.z;
  }
  return RTNORM;
}

}  // namespace

int rydbWcs2Ecs(const ads_point point, const ads_point normal, bool vector, ads_point result) {
  return convertOcs(point, normal, vector, result, true);
}

int rydbEcs2Wcs(const ads_point point, const ads_point normal, bool vector, ads_point result) {
  return convertOcs(point, normal, vector, result, false);
}
