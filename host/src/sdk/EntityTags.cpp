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

}  // namespace ryhost
