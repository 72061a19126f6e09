#include "DbSchema.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <cwctype>
#include <deque>
#include <numeric>
#include <unordered_map>

#include "DbDatabase.h"
#include "DbObject.h"
#include "DbSymbolTable.h"
#include "DbTagSupport.h"
#include "db/TagFiling.h"

namespace {


template <class T>
T& at(void* p) { return *static_cast<T*>(p); }
template <class T>
const T& at(const void* p) { return *static_cast<const T*>(p); }

bool sameDouble(double a, double b) {
  // Exact comparison that treats two NaNs as equal, so that a read-back NaN compares equal.
  return a == b || (std::isnan(a) && std::isnan(b));
}

// Per class: for every subclass, the fields that a group code can go to.
struct CodeIndex {
  // chain index -> list of (code, field index) sorted by code
  std::vector<std::vector<std::pair<int, int>>> bySubclass;
  std::vector<const OdDbSubclass*> chain;
  std::vector<int> firstFlatIndex;  // flat index of each subclass's first field
  std::vector<int> catchAll;        // per subclass: the field that takes any code, or -1
  int flatCount = 0;
  // The fields whose values a read checks, with what is checked (worked
  // out once per class, so that reading pays only for the tests).
  enum class Check { kAngle, kReal, kSize, kPoint2d, kPoint3d, kVector, kNormal, kValidSet };
  std::vector<std::pair<const OdDbField*, Check>> valueChecks;
};


const CodeIndex& codeIndexOf(const OdDbClassSchema* schema) {
  // Drawings hold long runs of one kind of object: the last answer first.
  thread_local const OdDbClassSchema* lastSchema = nullptr;
  thread_local const CodeIndex* lastIndex = nullptr;
  if (schema == lastSchema) return *lastIndex;
  static std::unordered_map<const OdDbClassSchema*, std::unique_ptr<CodeIndex>> cache;
  auto found = cache.find(schema);
  if (found != cache.end()) {
    lastSchema = schema;
    lastIndex = found->second.get();
    return *lastIndex;
  }
  auto index = std::make_unique<CodeIndex>();
  index->chain = schema->chain();
  for (const OdDbSubclass* sub : index->chain) {
    std::vector<std::pair<int, int>> codes;
    int catchAll = -1;
    for (int fi = 0; fi < static_cast<int>(sub->fields.size()); ++fi) {
      const OdDbField& field = sub->fields[static_cast<size_t>(fi)];
      if (field.kind == OdDbFieldKind::kCustom && field.codec->takesAnyCode()) catchAll = fi;
      if (field.kind == OdDbFieldKind::kCustom) {
        for (int code : field.codec->codes()) codes.emplace_back(code, fi);
      } else if (!(field.flags & OdDbField::kNoDxf)) {
        codes.emplace_back(field.code, fi);
      }
    }
    std::stable_sort(codes.begin(), codes.end(), [](auto& a, auto& b) { return a.first < b.first; });
    for (const OdDbField& field : sub->fields) {
      using Check = CodeIndex::Check;
      switch (field.kind) {
        case OdDbFieldKind::kDouble:
          index->valueChecks.emplace_back(&field, (field.flags & OdDbField::kAngleDegrees) ? Check::kAngle
                                                  : odDbFieldIsSize(field)                  ? Check::kSize
                                                                                           : Check::kReal);
          break;
        case OdDbFieldKind::kPoint2d: index->valueChecks.emplace_back(&field, Check::kPoint2d); break;
        case OdDbFieldKind::kPoint3d: index->valueChecks.emplace_back(&field, Check::kPoint3d); break;
        case OdDbFieldKind::kVector3d:
          index->valueChecks.emplace_back(&field,
                                          odDbFieldIsNormal(field) ? Check::kNormal : Check::kVector);
          break;
        case OdDbFieldKind::kBool:
        case OdDbFieldKind::kInt8:
        case OdDbFieldKind::kInt16:
        case OdDbFieldKind::kInt32:
        case OdDbFieldKind::kInt64:
          if (field.hasValidSet()) index->valueChecks.emplace_back(&field, Check::kValidSet);
          break;
        default: break;
      }
    }
    index->catchAll.push_back(catchAll);
    index->firstFlatIndex.push_back(index->flatCount);
    index->flatCount += static_cast<int>(sub->fields.size());
    index->bySubclass.push_back(std::move(codes));
  }
  const CodeIndex& ref = *index;
  cache.emplace(schema, std::move(index));
  return ref;
}

const OdDbClassSchema* schemaOf(const OdDbObject* object) {
  for (OdRxClass* cls = object->isA(); cls; cls = cls->myParent()) {
    if (cls->schema()) return cls->schema();
  }
  return nullptr;
}

const OdString* recordName(const OdDbObjectId& id) {
  // Read straight from the record: no open, no notification. The class test
  // is cheaper than a dynamic_cast, which compares type names across libraries.
  if (id.isNull()) return nullptr;
  const OdDbObject* object = id.stub()->object;
  if (!object || !object->isKindOf(OdDbSymbolTableRecord::desc())) return nullptr;
  return &static_cast<const OdDbSymbolTableRecord*>(object)->getName();
}

// Whether a field holds its default (left out of files when optional).
// Internal, so that the writer's loop over every field inlines it.
inline __attribute__((always_inline)) bool fieldHasDefault(const OdDbField& field, const void* owner) {
  const void* p = field.refIn(owner);
  if (field.shape == OdDbFieldShape::kArray) return field.array->size(p) == 0;
  if (field.shape == OdDbFieldShape::kCount) return true;
  switch (field.kind) {
    case OdDbFieldKind::kBool: return at<bool>(p) == (field.defaultInt != 0);
    case OdDbFieldKind::kInt8: return at<OdInt8>(p) == field.defaultInt;
    case OdDbFieldKind::kInt16: return at<OdInt16>(p) == field.defaultInt;
    case OdDbFieldKind::kInt32: return at<OdInt32>(p) == field.defaultInt;
    case OdDbFieldKind::kInt64: return at<OdInt64>(p) == field.defaultInt;
    case OdDbFieldKind::kDouble: return at<double>(p) == field.defaultReal[0];
    case OdDbFieldKind::kString: return at<OdString>(p).isEmpty();
    case OdDbFieldKind::kPoint2d: {
      const auto& pt = at<OdGePoint2d>(p);
      return pt.x == field.defaultReal[0] && pt.y == field.defaultReal[1];
    }
    case OdDbFieldKind::kPoint3d: {
      const auto& pt = at<OdGePoint3d>(p);
      return pt.x == field.defaultReal[0] && pt.y == field.defaultReal[1] && pt.z == field.defaultReal[2];
    }
    case OdDbFieldKind::kVector3d: {
      const auto& v = at<OdGeVector3d>(p);
      return v.x == field.defaultReal[0] && v.y == field.defaultReal[1] && v.z == field.defaultReal[2];
    }
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer: return at<OdDbObjectId>(p).isNull();
    case OdDbFieldKind::kNameRef: {
      const auto& id = at<OdDbObjectId>(p);
      if (id.isNull()) return true;
      if (!field.defaultName) return false;
      // Names are nearly always written as the default is: the plain
      // comparison first.
      const OdString* name = recordName(id);
      return name && (*name == field.defaultName || name->iCompare(field.defaultName) == 0);
    }
    case OdDbFieldKind::kCustom: return false;
  }
  return false;
}

// The tags of one plain value at p.
inline __attribute__((always_inline)) void writeValue(const OdDbField& field, const void* p, OdDbTagSink& out, OdDbTagContext& ctx) {
  switch (field.kind) {
    case OdDbFieldKind::kBool: out.addInteger(field.code, at<bool>(p) ? 1 : 0); break;
    case OdDbFieldKind::kInt8: out.addInteger(field.code, at<OdInt8>(p)); break;
    case OdDbFieldKind::kInt16: out.addInteger(field.code, at<OdInt16>(p)); break;
    case OdDbFieldKind::kInt32: out.addInteger(field.code, at<OdInt32>(p)); break;
    case OdDbFieldKind::kInt64:
      if (field.flags & OdDbField::kHandleValue) out.addHandle(field.code, static_cast<OdUInt64>(at<OdInt64>(p)));
      else out.addInteger(field.code, at<OdInt64>(p));
      break;
    case OdDbFieldKind::kDouble: {
      double value = at<double>(p);
      if (field.flags & OdDbField::kAngleDegrees) value = odRadiansToDegrees(value);
      out.addReal(field.code, value);
      break;
    }
    case OdDbFieldKind::kString: out.addString(field.code, at<OdString>(p)); break;
    case OdDbFieldKind::kPoint2d: {
      const auto& pt = at<OdGePoint2d>(p);
      out.addPoint(field.code, pt.x, pt.y, 0, 2);
      break;
    }
    case OdDbFieldKind::kPoint3d: {
      const auto& pt = at<OdGePoint3d>(p);
      out.addPoint(field.code, pt.x, pt.y, pt.z, 3);
      break;
    }
    case OdDbFieldKind::kVector3d: {
      const auto& v = at<OdGeVector3d>(p);
      out.addPoint(field.code, v.x, v.y, v.z, 3);
      break;
    }
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer: out.addReference(field.code, at<OdDbObjectId>(p)); break;
    case OdDbFieldKind::kNameRef: {
      // The record's own name, without a copy; the context knows the names
      // of ids that hold no record here (names read before their record).
      const OdDbObjectId& id = at<OdDbObjectId>(p);
      const OdString* name = recordName(id);
      if (name && !name->isEmpty()) {
        out.addString(field.code, *name);
        break;
      }
      const OdString known = name || id.isNull() ? OdString() : ctx.nameOf(id);
      if (!known.isEmpty()) out.addString(field.code, known);
      else out.addText(field.code, field.defaultName ? field.defaultName : L"");
      break;
    }
    case OdDbFieldKind::kCustom: break;
  }
}

void appendFieldTags(const OdDbObject* object, const OdDbField& field, OdDbTagSink& out, OdDbTagContext& ctx,
                     OdDxfTagList& scratch) {
  if (field.kind != OdDbFieldKind::kCustom) {
    writeValue(field, field.ref(object), out, ctx);
    return;
  }
  scratch.clear();
  field.codec->toTags(object, scratch, ctx);
  for (const auto& tag : scratch) out.addTag(tag);
}

// The list a write gives the codecs for their tags, kept between writes so
// that lists and files made object after object allocate nothing for them.
// One per level: a codec may write another object's fields meanwhile.
class CodecScratch {
 public:
  CodecScratch() : m_pool(pool()), m_level(m_pool.depth++) {
    if (m_pool.lists.size() <= m_level) m_pool.lists.emplace_back();
  }
  ~CodecScratch() { --m_pool.depth; }
  CodecScratch(const CodecScratch&) = delete;
  CodecScratch& operator=(const CodecScratch&) = delete;
  OdDxfTagList& list() { return m_pool.lists[m_level]; }

 private:
  struct Pool {
    std::deque<OdDxfTagList> lists;
    size_t depth = 0;
  };
  static Pool& pool() {
    thread_local Pool lists;
    return lists;
  }
  Pool& m_pool;
  size_t m_level;
};

class ListSink : public OdDbTagSink {
 public:
  explicit ListSink(OdDxfTagList& list) : m_list(list) {}
  void addTag(const OdDxfTag& tag) override { m_list.push_back(tag); }

 private:
  OdDxfTagList& m_list;
};

// Stores one tag into a plain value at p (a field of the object, or of one of
// its records); false when the tag cannot be taken.
bool readValue(OdDbObject* object, const OdDbField& field, void* p, const OdDxfTag& tag, OdDbTagContext& ctx) {
  switch (field.kind) {
    case OdDbFieldKind::kBool: at<bool>(p) = odDxfTagInteger(tag) != 0; return true;
    case OdDbFieldKind::kInt8: at<OdInt8>(p) = static_cast<OdInt8>(odDxfTagInteger(tag)); return true;
    case OdDbFieldKind::kInt16: at<OdInt16>(p) = static_cast<OdInt16>(odDxfTagInteger(tag)); return true;
    case OdDbFieldKind::kInt32: at<OdInt32>(p) = static_cast<OdInt32>(odDxfTagInteger(tag)); return true;
    case OdDbFieldKind::kInt64: at<OdInt64>(p) = odDxfTagInteger(tag); return true;
    case OdDbFieldKind::kDouble: {
      double value = odDxfTagReal(tag);
      if (field.flags & OdDbField::kAngleDegrees) value = odDegreesToRadians(value);
      at<double>(p) = value;
      return true;
    }
    case OdDbFieldKind::kString:
      if (tag.type != OdDxf::ValueType::kString) return false;
      at<OdString>(p) = tag.s;
      return true;
    case OdDbFieldKind::kPoint2d:
      if (tag.type != OdDxf::ValueType::kPoint && tag.type != OdDxf::ValueType::kDouble) return false;
      at<OdGePoint2d>(p).set(tag.x, tag.type == OdDxf::ValueType::kPoint ? tag.y : 0.0);
      return true;
    case OdDbFieldKind::kPoint3d:
    case OdDbFieldKind::kVector3d: {
      if (tag.type != OdDxf::ValueType::kPoint && tag.type != OdDxf::ValueType::kDouble) return false;
      double y = tag.type == OdDxf::ValueType::kPoint ? tag.y : 0.0;
      double z = tag.type == OdDxf::ValueType::kPoint && tag.dims == 3 ? tag.z : 0.0;
      if (field.kind == OdDbFieldKind::kPoint3d) at<OdGePoint3d>(p).set(tag.x, y, z);
      else at<OdGeVector3d>(p).set(tag.x, y, z);
      return true;
    }
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer: {
      if (tag.type != OdDxf::ValueType::kHandle) return false;
      at<OdDbObjectId>(p) = tag.i == 0 ? OdDbObjectId() : ctx.idFromHandle(static_cast<OdUInt64>(tag.i));
      return true;
    }
    case OdDbFieldKind::kNameRef: {
      if (tag.type != OdDxf::ValueType::kString) return false;
      OdDbObjectId id = tag.s.isEmpty() ? OdDbObjectId() : ctx.idFromName(field.table, tag.s);
      at<OdDbObjectId>(p) = id;
      if (id.isNull() && !tag.s.isEmpty()) ctx.deferName(object, field, tag.s);
      return true;
    }
    case OdDbFieldKind::kCustom: return false;
  }
  return false;
}

bool setFieldFromTag(OdDbObject* object, const OdDbField& field, const OdDxfTag& tag, OdDbTagContext& ctx) {
  if (field.kind == OdDbFieldKind::kCustom) return field.codec->fromTag(object, tag, ctx);
  return readValue(object, field, field.ref(object), tag, ctx);
}

// Edits (insert, delete, replace a letter, ignoring case) from one text to another.
size_t editDistance(const wchar_t* a, const wchar_t* b) {
  const size_t n = std::wcslen(a), m = std::wcslen(b);
  std::vector<size_t> row(m + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= n; ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= m; ++j) {
      const size_t above = row[j];
      const bool same = std::towlower(a[i - 1]) == std::towlower(b[j - 1]);
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (same ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[m];
}

// The value of an integer field (bool, 8 to 64 bits).
OdInt64 integerAt(const OdDbField& field, const void* p) {
  switch (field.kind) {
    case OdDbFieldKind::kBool: return at<bool>(p) ? 1 : 0;
    case OdDbFieldKind::kInt8: return at<OdInt8>(p);
    case OdDbFieldKind::kInt16: return at<OdInt16>(p);
    case OdDbFieldKind::kInt32: return at<OdInt32>(p);
    case OdDbFieldKind::kInt64: return at<OdInt64>(p);
    default: return 0;
  }
}


// Angles of more than this many turns are brought into the first turn: they
// mean the same direction, and parameters that large no longer step.
constexpr double kLargestAngle = 4 * 2 * 3.14159265358979323846;

// Values that were read but cannot stand go back to the field's default (an
// angle of many turns into its first turn), each reported once.
void repairFields(OdDbObject* object, const CodeIndex& index, OdDbTagContext& ctx) {
  using Check = CodeIndex::Check;
  for (const auto& [field, check] : index.valueChecks) {
    void* p = field->ref(object);
    bool bad = false;
    switch (check) {
      case Check::kAngle: {
        double& value = at<double>(p);
        if (std::isfinite(value) && std::fabs(value) > kLargestAngle) {
          value = std::fmod(value, 2 * 3.14159265358979323846);
          if (value < 0) value += 2 * 3.14159265358979323846;
          ctx.valueRepaired(object, field->name);
          continue;
        }
        bad = !std::isfinite(value);
        break;
      }
      case Check::kReal: bad = !std::isfinite(at<double>(p)); break;
      case Check::kSize: {
        const double value = at<double>(p);
        bad = !std::isfinite(value) || value < 0;
        break;
      }
      case Check::kPoint2d: {
        const OdGePoint2d& v = at<OdGePoint2d>(p);
        bad = !std::isfinite(v.x) || !std::isfinite(v.y);
        break;
      }
      case Check::kPoint3d: {
        const OdGePoint3d& v = at<OdGePoint3d>(p);
        bad = !std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z);
        break;
      }
      case Check::kValidSet: bad = !field->isValidValue(integerAt(*field, p)); break;
      case Check::kVector:
      case Check::kNormal: {
        // A normal must have a direction (offsets and the like may be zero).
        const OdGeVector3d& v = at<OdGeVector3d>(p);
        bad = !std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z) ||
              (check == Check::kNormal && v.x == 0.0 && v.y == 0.0 && v.z == 0.0);
        break;
      }
    }
    if (!bad) continue;
    field->setDefault(object);
    ctx.valueRepaired(object, field->name);
  }
}

// Finds the field a tag goes to within one subclass (first unseen match; a
// custom codec accepts repeated codes).
int findField(const CodeIndex& index, int sub, int code, const std::vector<bool>& seen, OdDb::DwgVersion version) {
  const auto& codes = index.bySubclass[static_cast<size_t>(sub)];
  auto it = std::lower_bound(codes.begin(), codes.end(), code, [](const auto& e, int c) { return e.first < c; });
  for (; it != codes.end() && it->first == code; ++it) {
    const OdDbField& field = index.chain[static_cast<size_t>(sub)]->fields[static_cast<size_t>(it->second)];
    if (field.minVersion > version) continue;
    if (field.kind == OdDbFieldKind::kCustom) return it->second;
    if (!seen[static_cast<size_t>(index.firstFlatIndex[static_cast<size_t>(sub)] + it->second)]) return it->second;
  }
  return index.catchAll[static_cast<size_t>(sub)];
}


}  // namespace

void OdDbSchemaIo::fileOutValue(const OdDbField& field, const void* p, OdDbDwgFiler* filer) {
  switch (field.kind) {
    case OdDbFieldKind::kBool: filer->wrBool(at<bool>(p)); break;
    case OdDbFieldKind::kInt8: filer->wrInt8(at<OdInt8>(p)); break;
    case OdDbFieldKind::kInt16: filer->wrInt16(at<OdInt16>(p)); break;
    case OdDbFieldKind::kInt32: filer->wrInt32(at<OdInt32>(p)); break;
    case OdDbFieldKind::kInt64: filer->wrInt64(at<OdInt64>(p)); break;
    case OdDbFieldKind::kDouble: filer->wrDouble(at<double>(p)); break;
    case OdDbFieldKind::kString: filer->wrString(at<OdString>(p)); break;
    case OdDbFieldKind::kPoint2d: filer->wrPoint2d(at<OdGePoint2d>(p)); break;
    case OdDbFieldKind::kPoint3d: filer->wrPoint3d(at<OdGePoint3d>(p)); break;
    case OdDbFieldKind::kVector3d: filer->wrVector3d(at<OdGeVector3d>(p)); break;
    case OdDbFieldKind::kHardOwner: filer->wrHardOwnershipId(at<OdDbObjectId>(p)); break;
    case OdDbFieldKind::kSoftOwner: filer->wrSoftOwnershipId(at<OdDbObjectId>(p)); break;
    case OdDbFieldKind::kHardPointer: filer->wrHardPointerId(at<OdDbObjectId>(p)); break;
    case OdDbFieldKind::kSoftPointer:
    case OdDbFieldKind::kNameRef: filer->wrSoftPointerId(at<OdDbObjectId>(p)); break;
    case OdDbFieldKind::kCustom: break;
  }
}

namespace {

void fileInValue(const OdDbField& field, void* p, OdDbDwgFiler* filer) {
  switch (field.kind) {
    case OdDbFieldKind::kBool: at<bool>(p) = filer->rdBool(); break;
    case OdDbFieldKind::kInt8: at<OdInt8>(p) = filer->rdInt8(); break;
    case OdDbFieldKind::kInt16: at<OdInt16>(p) = filer->rdInt16(); break;
    case OdDbFieldKind::kInt32: at<OdInt32>(p) = filer->rdInt32(); break;
    case OdDbFieldKind::kInt64: at<OdInt64>(p) = filer->rdInt64(); break;
    case OdDbFieldKind::kDouble: at<double>(p) = filer->rdDouble(); break;
    case OdDbFieldKind::kString: at<OdString>(p) = filer->rdString(); break;
    case OdDbFieldKind::kPoint2d: at<OdGePoint2d>(p) = filer->rdPoint2d(); break;
    case OdDbFieldKind::kPoint3d: at<OdGePoint3d>(p) = filer->rdPoint3d(); break;
    case OdDbFieldKind::kVector3d: at<OdGeVector3d>(p) = filer->rdVector3d(); break;
    case OdDbFieldKind::kHardOwner: at<OdDbObjectId>(p) = filer->rdHardOwnershipId(); break;
    case OdDbFieldKind::kSoftOwner: at<OdDbObjectId>(p) = filer->rdSoftOwnershipId(); break;
    case OdDbFieldKind::kHardPointer: at<OdDbObjectId>(p) = filer->rdHardPointerId(); break;
    case OdDbFieldKind::kSoftPointer:
    case OdDbFieldKind::kNameRef: at<OdDbObjectId>(p) = filer->rdSoftPointerId(); break;
    case OdDbFieldKind::kCustom: break;
  }
}

bool sameValue(const OdDbField& field, const void* pa, const void* pb) {
  switch (field.kind) {
    case OdDbFieldKind::kBool: return at<bool>(pa) == at<bool>(pb);
    case OdDbFieldKind::kInt8: return at<OdInt8>(pa) == at<OdInt8>(pb);
    case OdDbFieldKind::kInt16: return at<OdInt16>(pa) == at<OdInt16>(pb);
    case OdDbFieldKind::kInt32: return at<OdInt32>(pa) == at<OdInt32>(pb);
    case OdDbFieldKind::kInt64: return at<OdInt64>(pa) == at<OdInt64>(pb);
    case OdDbFieldKind::kDouble: return sameDouble(at<double>(pa), at<double>(pb));
    case OdDbFieldKind::kString: return at<OdString>(pa) == at<OdString>(pb);
    case OdDbFieldKind::kPoint2d: {
      const auto &p = at<OdGePoint2d>(pa), &q = at<OdGePoint2d>(pb);
      return sameDouble(p.x, q.x) && sameDouble(p.y, q.y);
    }
    case OdDbFieldKind::kPoint3d: {
      const auto &p = at<OdGePoint3d>(pa), &q = at<OdGePoint3d>(pb);
      return sameDouble(p.x, q.x) && sameDouble(p.y, q.y) && sameDouble(p.z, q.z);
    }
    case OdDbFieldKind::kVector3d: {
      const auto &p = at<OdGeVector3d>(pa), &q = at<OdGeVector3d>(pb);
      return sameDouble(p.x, q.x) && sameDouble(p.y, q.y) && sameDouble(p.z, q.z);
    }
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer:
    case OdDbFieldKind::kNameRef: {
      // Objects of two databases compare by handle.
      const auto &p = at<OdDbObjectId>(pa), &q = at<OdDbObjectId>(pb);
      return p.isNull() == q.isNull() && (p.isNull() || p.handle() == q.handle());
    }
    case OdDbFieldKind::kCustom: return true;
  }
  return true;
}

// ---------------------------------------------------------------- records

bool fieldApplies(const OdDbField& field, const void* record, const OdDbObject* object, OdDbTagContext& ctx) {
  return !field.when || field.when(record, object, ctx);
}

void writeRecord(const std::vector<OdDbField>& fields, const void* record, const OdDbObject* object,
                 OdDbTagSink& out, OdDbTagContext& ctx, OdDb::DwgVersion version) {
  for (const OdDbField& field : fields) {
    if ((field.flags & OdDbField::kNoDxf) || version < field.minVersion) continue;
    if (!fieldApplies(field, record, object, ctx)) continue;
    if (field.presence && !*field.presence(const_cast<void*>(record))) continue;
    const void* p = field.refIn(record);
    switch (field.shape) {
      case OdDbFieldShape::kValue:
        if ((field.flags & OdDbField::kOptional) && fieldHasDefault(field, record)) break;
        writeValue(field, p, out, ctx);
        break;
      case OdDbFieldShape::kCount: out.addInteger(field.code, static_cast<OdInt64>(field.array->size(p))); break;
      case OdDbFieldShape::kArray: {
        const OdDbArraySpec& spec = *field.array;
        const size_t count = spec.size(p);
        for (size_t i = 0; i < count; ++i) {
          const void* element = spec.element(p, i);
          if (!spec.written || spec.written(element)) writeRecord(spec.fields, element, object, out, ctx, version);
        }
        break;
      }
    }
  }
}

// Records are filed whole (every variant's fields, presence flags first),
// arrays with their size.
void fileOutRecord(const std::vector<OdDbField>& fields, const void* record, OdDbDwgFiler* filer) {
  for (const OdDbField& field : fields) {
    if ((field.flags & OdDbField::kNoFiler) || field.shape == OdDbFieldShape::kCount) continue;
    if (field.presence) filer->wrBool(*field.presence(const_cast<void*>(record)));
    const void* p = field.refIn(record);
    if (field.shape == OdDbFieldShape::kValue) {
      OdDbSchemaIo::fileOutValue(field, p, filer);
      continue;
    }
    const size_t count = field.array->size(p);
    filer->wrInt32(static_cast<OdInt32>(count));
    for (size_t i = 0; i < count; ++i) fileOutRecord(field.array->fields, field.array->element(p, i), filer);
  }
}

void fileInRecord(const std::vector<OdDbField>& fields, void* record, OdDbDwgFiler* filer) {
  for (const OdDbField& field : fields) {
    if ((field.flags & OdDbField::kNoFiler) || field.shape == OdDbFieldShape::kCount) continue;
    if (field.presence) *field.presence(record) = filer->rdBool();
    void* p = field.refIn(record);
    if (field.shape == OdDbFieldShape::kValue) {
      fileInValue(field, p, filer);
      continue;
    }
    const size_t count = static_cast<size_t>(std::max<OdInt32>(0, filer->rdInt32()));
    field.array->resize(p, count);
    for (size_t i = 0; i < count; ++i) fileInRecord(field.array->fields, field.array->at(p, i), filer);
  }
}

bool sameRecord(const std::vector<OdDbField>& fields, const void* a, const void* b) {
  for (const OdDbField& field : fields) {
    if ((field.flags & OdDbField::kNoFiler) || field.shape == OdDbFieldShape::kCount) continue;
    if (field.presence && *field.presence(const_cast<void*>(a)) != *field.presence(const_cast<void*>(b))) return false;
    const void* pa = field.refIn(a);
    const void* pb = field.refIn(b);
    if (field.shape == OdDbFieldShape::kValue) {
      if (!sameValue(field, pa, pb)) return false;
      continue;
    }
    const size_t count = field.array->size(pa);
    if (count != field.array->size(pb)) return false;
    for (size_t i = 0; i < count; ++i) {
      if (!sameRecord(field.array->fields, field.array->element(pa, i), field.array->element(pb, i))) return false;
    }
  }
  return true;
}

void collectCodes(const std::vector<OdDbField>& fields, std::vector<int>& codes) {
  for (const OdDbField& field : fields) {
    if (field.flags & OdDbField::kNoDxf) continue;
    if (field.shape == OdDbFieldShape::kArray) collectCodes(field.array->fields, codes);
    else if (std::find(codes.begin(), codes.end(), field.code) == codes.end()) codes.push_back(field.code);
  }
}

// Takes a tag into a record's field (a value, or its presence); false when
// it cannot be taken. A value outside the field's valid set goes to the
// default as it is read, so that the fields that follow are read as those
// of a valid variant (an edge of an unknown kind keeps its points as a line).
bool takeValue(OdDbObject* object, const OdDbField& field, void* record, const OdDxfTag& tag, OdDbTagContext& ctx) {
  // A count is not kept: the records that follow say how many.
  if (field.shape == OdDbFieldShape::kValue && !readValue(object, field, field.refIn(record), tag, ctx)) return false;
  if (field.shape == OdDbFieldShape::kValue && field.hasValidSet() && ctx.repairsValues() &&
      !field.isValidValue(integerAt(field, field.refIn(record)))) {
    field.setDefaultIn(record);
    ctx.valueRepaired(object, field.name);
  }
  if (field.presence) *field.presence(record) = true;
  if (field.onRead) field.onRead(record, object);
  return true;
}

// Appends a record to the frame's array and reads the tag into its first field.
void beginRecord(OdDbTagContext::RecordFrame& frame, void* container, OdDbObject* object, const OdDxfTag& tag,
                 OdDbTagContext& ctx) {
  const OdDbArraySpec& spec = *frame.array->array;
  const size_t count = spec.size(container);
  spec.resize(container, count + 1);
  frame.record = spec.at(container, count);
  frame.seen = 1;
  if (spec.beginRecord) spec.beginRecord(frame.record, object);
  takeValue(object, spec.fields.front(), frame.record, tag, ctx);
}
}  // namespace

double odDegreesToRadians(double degrees) { return degrees * (3.14159265358979323846 / 180.0); }

double odRadiansToDegrees(double radians) {
  const double degrees = radians * (180.0 / 3.14159265358979323846);
  if (!std::isfinite(degrees) || odDegreesToRadians(degrees) == radians) return degrees;
  // A neighbour a few steps away reads back exactly.
  double up = degrees, down = degrees;
  for (int step = 0; step < 16; ++step) {
    up = std::nextafter(up, HUGE_VAL);
    down = std::nextafter(down, -HUGE_VAL);
    if (odDegreesToRadians(up) == radians) return up;
    if (odDegreesToRadians(down) == radians) return down;
  }
  return degrees;
}

std::vector<const OdDbSubclass*> OdDbClassSchema::chain() const {
  std::vector<const OdDbClassSchema*> levels;
  for (const OdDbClassSchema* s = this; s; s = s->parent) levels.push_back(s);
  std::vector<const OdDbSubclass*> result;
  for (auto it = levels.rbegin(); it != levels.rend(); ++it) {
    for (const auto& sub : (*it)->subclasses) result.push_back(&sub);
  }
  return result;
}

bool OdDbField::isValidValue(OdInt64 value) const {
  if (validHigh >= validLow && value >= validLow && value <= validHigh) return true;
  for (OdUInt8 i = 0; i < validSetSize; ++i) {
    if (validSet[i] == value) return true;
  }
  return !hasValidSet();
}

bool OdDbField::hasDefaultIn(const void* owner) const { return fieldHasDefault(*this, owner); }

void OdDbField::setDefaultIn(void* owner) const {
  void* p = refIn(owner);
  if (presence) *presence(owner) = false;
  if (shape == OdDbFieldShape::kArray) array->resize(p, 0);
  if (shape != OdDbFieldShape::kValue) return;
  switch (kind) {
    case OdDbFieldKind::kBool: at<bool>(p) = defaultInt != 0; break;
    case OdDbFieldKind::kInt8: at<OdInt8>(p) = static_cast<OdInt8>(defaultInt); break;
    case OdDbFieldKind::kInt16: at<OdInt16>(p) = static_cast<OdInt16>(defaultInt); break;
    case OdDbFieldKind::kInt32: at<OdInt32>(p) = static_cast<OdInt32>(defaultInt); break;
    case OdDbFieldKind::kInt64: at<OdInt64>(p) = defaultInt; break;
    case OdDbFieldKind::kDouble: at<double>(p) = defaultReal[0]; break;
    case OdDbFieldKind::kString: at<OdString>(p).empty(); break;
    case OdDbFieldKind::kPoint2d: at<OdGePoint2d>(p).set(defaultReal[0], defaultReal[1]); break;
    case OdDbFieldKind::kPoint3d: at<OdGePoint3d>(p).set(defaultReal[0], defaultReal[1], defaultReal[2]); break;
    case OdDbFieldKind::kVector3d: at<OdGeVector3d>(p).set(defaultReal[0], defaultReal[1], defaultReal[2]); break;
    default: break;
  }
}

OdDbField odCustomField(const OdDbFieldCodec& codec, const wchar_t* name) {
  OdDbField field;
  field.kind = OdDbFieldKind::kCustom;
  field.codec = &codec;
  field.name = name;
  field.code = codec.codes().empty() ? 0 : codec.codes().front();
  field.storage = [](void* object) -> void* { return object; };
  return field;
}

OdDbObjectId OdDbTagContext::idFromName(OdDbNameTable table, const OdString& name) {
  OdDbDatabase* db = database();
  return db ? db->findRecord(table, name) : OdDbObjectId();
}

OdInt64& OdDbTagContext::codecState(const void* key) {
  for (auto& entry : m_codecState) {
    if (entry.first == key) return entry.second;
  }
  m_codecState.emplace_back(key, 0);
  return m_codecState.back().second;
}

const OdString* odDbRecordName(const OdDbObjectId& id) { return recordName(id); }

OdString OdDbTagContext::nameOf(const OdDbObjectId& id) const {
  const OdString* name = odDbRecordName(id);
  return name ? *name : OdString();
}

OdDbRecordCodec::OdDbRecordCodec(std::vector<OdDbField> fields, void* (*base)(void*), void (*settle)(OdDbObject*))
    : m_fields(std::move(fields)), m_base(base), m_settle(settle) {
  collectCodes(m_fields, m_codes);
}

void OdDbRecordCodec::toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext& ctx) const {
  ListSink sink(out);
  writeRecord(m_fields, record(object), object, sink, ctx, ctx.version());
}

void OdDbRecordCodec::beginRead(OdDbObject* object) const {
  void* root = record(object);
  for (const OdDbField& field : m_fields) field.setDefaultIn(root);
}

bool OdDbRecordCodec::fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const {
  std::vector<OdDbTagContext::RecordFrame>& frames = ctx.recordFrames(this);
  if (frames.empty()) frames.push_back({&m_fields, nullptr, record(object), 0});
  const OdDb::DwgVersion version = ctx.version();
  for (;;) {
    OdDbTagContext::RecordFrame& top = frames.back();
    const std::vector<OdDbField>& fields = *top.fields;
    for (size_t i = 0; i < fields.size(); ++i) {
      const OdDbField& field = fields[i];
      if (field.code != tag.code || version < field.minVersion || (field.flags & OdDbField::kNoDxf)) continue;
      if (field.when && !(field.flags & OdDbField::kWhenWriting) && !field.when(top.record, object, ctx)) continue;
      if (field.shape == OdDbFieldShape::kArray) {
        void* container = field.refIn(top.record);
        frames.push_back({&field.array->fields, &field, nullptr, 0});
        beginRecord(frames.back(), container, object, tag, ctx);
        return true;
      }
      const OdUInt64 bit = OdUInt64(1) << (i & 63);
      if (top.seen & bit) continue;
      if (!takeValue(object, field, top.record, tag, ctx)) continue;
      top.seen |= bit;
      return true;
    }
    if (frames.size() == 1) return false;
    // The first field's code again: the array's next record.
    if (tag.code == top.array->code) {
      void* container = top.array->refIn(frames[frames.size() - 2].record);
      beginRecord(top, container, object, tag, ctx);
      return true;
    }
    frames.pop_back();
  }
}

void OdDbRecordCodec::fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const {
  fileOutRecord(m_fields, record(object), filer);
}

void OdDbRecordCodec::endRead(OdDbObject* object, OdDbTagContext& ctx) const {
  void* root = record(object);
  for (const OdDbField& field : m_fields) {
    if (field.shape != OdDbFieldShape::kArray || !field.array->kept) continue;
    const OdDbArraySpec& spec = *field.array;
    if (spec.dropUnless(field.refIn(root), spec.kept) && spec.droppedAs) ctx.valueRepaired(object, spec.droppedAs);
  }
  if (m_settle) m_settle(object);
}

void OdDbRecordCodec::fileIn(OdDbObject* object, OdDbDwgFiler* filer) const {
  fileInRecord(m_fields, record(object), filer);
  if (m_settle) m_settle(object);
}

bool OdDbRecordCodec::isEqual(const OdDbObject* a, const OdDbObject* b) const {
  return sameRecord(m_fields, record(a), record(b));
}

namespace OdDbSchemaIo {

void writeFields(const OdDbObject* object, OdDxfTagList& list, OdDbTagContext& ctx, bool withMarkers) {
  ListSink sink(list);
  writeFields(object, sink, ctx, withMarkers);
}

void writeFields(const OdDbObject* object, OdDbTagSink& out, OdDbTagContext& ctx, bool withMarkers) {
  const OdDbClassSchema* schema = schemaOf(object);
  if (!schema) return;
  if (schema->hooks.beforeWrite) schema->hooks.beforeWrite(object);
  const CodeIndex& index = codeIndexOf(schema);
  const OdDbObjectExtras* extras = object->extras();
  // Unknown tags keep their order among themselves: each goes out once the
  // field it followed has been written (or right away when an earlier one
  // followed a later field).
  const std::vector<OdDbObjectExtras::Unknown>* unknown = extras ? &extras->unknown : nullptr;
  size_t next = 0;
  auto flushUnknown = [&](int sub, int field) {
    while (unknown && next < unknown->size() &&
           ((*unknown)[next].subclass < sub || ((*unknown)[next].subclass == sub && (*unknown)[next].afterField <= field))) {
      out.addTag((*unknown)[next].tag);
      ++next;
    }
  };
  const bool entityList = ctx.forEntityList();
  const OdDb::DwgVersion version = ctx.version();
  CodecScratch codecTags;
  OdDxfTagList& scratch = codecTags.list();
  for (int si = 0; si < static_cast<int>(index.chain.size()); ++si) {
    const OdDbSubclass* sub = index.chain[static_cast<size_t>(si)];
    if (withMarkers && sub->marker && *sub->marker) out.addText(100, sub->marker);
    flushUnknown(si, -1);
    for (int fi = 0; fi < static_cast<int>(sub->fields.size()); ++fi) {
      const OdDbField& field = sub->fields[static_cast<size_t>(fi)];
      bool skip = (field.flags & OdDbField::kNoDxf) || version < field.minVersion ||
                  (entityList && (field.flags & OdDbField::kNoEntityList)) ||
                  ((field.flags & OdDbField::kOptional) && fieldHasDefault(field, object));
      if (!skip) appendFieldTags(object, field, out, ctx, scratch);
      flushUnknown(si, fi);
    }
  }
  while (unknown && next < unknown->size()) out.addTag((*unknown)[next++].tag);
}

void readFields(OdDbObject* object, const OdDxfTag* begin, const OdDxfTag* end, OdDbTagContext& ctx) {
  const OdDbClassSchema* schema = schemaOf(object);
  if (!schema) return;
  const CodeIndex& index = codeIndexOf(schema);
  const int subCount = static_cast<int>(index.chain.size());
  std::vector<bool> seen(static_cast<size_t>(index.flatCount), false);
  ctx.clearCodecState();
  for (const OdDbSubclass* sub : index.chain) {
    for (const auto& field : sub->fields) {
      if (field.kind == OdDbFieldKind::kCustom) field.codec->beginRead(object);
    }
  }

  auto keepUnknown = [&](int sub, int afterField, const OdDxfTag& tag) {
    object->extrasForWrite().unknown.push_back(
        {static_cast<OdInt16>(std::max(sub, 0)), static_cast<OdInt16>(sub < 0 ? -1 : afterField), tag});
  };

  int cur = -1;        // current subclass
  int lastField = -1;  // last field read in it
  bool sawMarker = false;
  bool inUnknownSubclass = false;
  OdDxfTag finite;  // a copy of a tag whose numbers were not finite, with zeros for them
  for (const OdDxfTag* read = begin; read != end; ++read) {
    const OdDxfTag* tag = read;
    const bool nonFinite = !odDxfTagIsFinite(*read);
    if (nonFinite) {
      // A plain field gets its default below; what a codec or the kept data
      // takes gets zero in place of the number.
      finite = *read;
      for (double* v : {&finite.x, &finite.y, &finite.z}) {
        if (!std::isfinite(*v)) *v = 0.0;
      }
      tag = &finite;
    }
    if (tag->code == 100 && tag->type == OdDxf::ValueType::kString) {
      // Before the first marker, fields may have been read into any subclass
      // (common properties written ahead of their marker): every marker is
      // still open then.
      const int from = sawMarker ? cur + 1 : 0;
      int found = -1;
      for (int si = from; si < subCount; ++si) {
        const wchar_t* marker = index.chain[static_cast<size_t>(si)]->marker;
        if (marker && tag->s.iCompare(marker) == 0) { found = si; break; }
      }
      // A marker damaged in a letter or two stands for the next one expected,
      // rather than being kept and written beside it.
      if (found < 0 && from < subCount) {
        const wchar_t* marker = index.chain[static_cast<size_t>(from)]->marker;
        if (marker && std::wcslen(marker) >= 6 && editDistance(tag->s.c_str(), marker) <= 2) {
          found = from;
          ctx.valueRepaired(object, L"subclass marker");
        }
      }
      if (found >= 0) {
        cur = found;
        lastField = -1;
        sawMarker = true;
        inUnknownSubclass = false;
      } else {
        keepUnknown(cur, lastField, *tag);
        inUnknownSubclass = true;
      }
      continue;
    }
    if (inUnknownSubclass || tag->code == 101) {
      // 101 opens an embedded object: everything after it is kept as read.
      keepUnknown(cur, lastField, *tag);
      inUnknownSubclass = true;
      continue;
    }
    int fieldSub = -1, fieldIndex = -1;
    if (sawMarker && cur >= 0) {
      fieldIndex = findField(index, cur, tag->code, seen, ctx.version());
      if (fieldIndex >= 0) fieldSub = cur;
    } else {
      // No subclass markers (R12 files, lists without markers): any subclass.
      for (int si = 0; si < subCount && fieldIndex < 0; ++si) {
        fieldIndex = findField(index, si, tag->code, seen, ctx.version());
        if (fieldIndex >= 0) fieldSub = si;
      }
    }
    if (fieldIndex >= 0) {
      const OdDbField& field = index.chain[static_cast<size_t>(fieldSub)]->fields[static_cast<size_t>(fieldIndex)];
      if (setFieldFromTag(object, field, *tag, ctx)) {
        if (nonFinite) {
          if (field.kind != OdDbFieldKind::kCustom) field.setDefault(object);
          ctx.valueRepaired(object, field.name);
        }
        seen[static_cast<size_t>(index.firstFlatIndex[static_cast<size_t>(fieldSub)] + fieldIndex)] = true;
        if (!sawMarker) cur = fieldSub;
        lastField = fieldIndex;
        continue;
      }
    }
    if (nonFinite) ctx.valueRepaired(object, L"a number");
    keepUnknown(cur, lastField, *tag);
  }

  for (int si = 0; si < subCount; ++si) {
    const OdDbSubclass* sub = index.chain[static_cast<size_t>(si)];
    for (int fi = 0; fi < static_cast<int>(sub->fields.size()); ++fi) {
      const OdDbField& field = sub->fields[static_cast<size_t>(fi)];
      if (field.kind == OdDbFieldKind::kCustom) {
        field.codec->endRead(object, ctx);
      } else if (field.kind == OdDbFieldKind::kNameRef && field.defaultName &&
                 !seen[static_cast<size_t>(index.firstFlatIndex[static_cast<size_t>(si)] + fi)] &&
                 at<OdDbObjectId>(field.ref(object)).isNull() && !ctx.forEntityList()) {
        OdDbObjectId id = ctx.idFromName(field.table, field.defaultName);
        at<OdDbObjectId>(field.ref(object)) = id;
        if (id.isNull()) ctx.deferName(object, field, field.defaultName);
      }
    }
  }
  if (ctx.repairsValues()) repairFields(object, index, ctx);
  if (schema->hooks.afterRead) schema->hooks.afterRead(object, ctx);
}

void fileOutFields(const OdDbObject* object, OdDbDwgFiler* filer) {
  const OdDbClassSchema* schema = schemaOf(object);
  if (!schema) return;
  for (const OdDbSubclass* sub : codeIndexOf(schema).chain) {
    for (const OdDbField& field : sub->fields) {
      if (field.flags & OdDbField::kNoFiler) continue;
      if (field.kind == OdDbFieldKind::kCustom) field.codec->fileOut(object, filer);
      else fileOutValue(field, field.ref(object), filer);
    }
  }
}

void fileInFields(OdDbObject* object, OdDbDwgFiler* filer) {
  const OdDbClassSchema* schema = schemaOf(object);
  if (!schema) return;
  for (const OdDbSubclass* sub : codeIndexOf(schema).chain) {
    for (const OdDbField& field : sub->fields) {
      if (field.flags & OdDbField::kNoFiler) continue;
      if (field.kind == OdDbFieldKind::kCustom) field.codec->fileIn(object, filer);
      else fileInValue(field, field.ref(object), filer);
    }
  }
}

namespace {
void collectRequired(const std::vector<OdDbField>& fields, std::vector<int>& codes) {
  for (const OdDbField& field : fields) {
    if (field.shape == OdDbFieldShape::kArray) collectRequired(field.array->fields, codes);
    if (field.kind == OdDbFieldKind::kCustom && field.codec) {
      if (auto* records = dynamic_cast<const OdDbRecordCodec*>(field.codec)) collectRequired(records->fields(), codes);
    }
    if (field.isRequired() && std::find(codes.begin(), codes.end(), field.code) == codes.end()) codes.push_back(field.code);
  }
}
}  // namespace

std::vector<int> requiredCodes(const OdDbClassSchema& schema) {
  std::vector<int> codes;
  for (const OdDbSubclass* sub : schema.chain()) collectRequired(sub->fields, codes);
  return codes;
}

bool fieldsEqual(const OdDbObject* a, const OdDbObject* b, OdString* firstDifference) {
  if (a->isA() != b->isA()) {
    if (firstDifference) *firstDifference = L"class";
    return false;
  }
  const OdDbClassSchema* schema = schemaOf(a);
  if (!schema) return true;
  for (const OdDbSubclass* sub : codeIndexOf(schema).chain) {
    for (const OdDbField& field : sub->fields) {
      if (field.flags & OdDbField::kNoFiler) continue;
      const bool same = field.kind == OdDbFieldKind::kCustom ? field.codec->isEqual(a, b)
                                                             : sameValue(field, field.ref(a), field.ref(b));
      if (!same) {
        if (firstDifference) {
          *firstDifference = OdString(sub->marker ? sub->marker : L"") + L"/" +
                             (field.name && *field.name ? OdString(field.name)
                                                        : OdString().format(L"%d", field.code));
        }
        return false;
      }
    }
  }
  return true;
}

}  // namespace OdDbSchemaIo

// ---------------------------------------------------------------- values that cannot stand

bool odDxfTagIsFinite(const OdDxfTag& tag) {
  if (tag.type == OdDxf::ValueType::kDouble) return std::isfinite(tag.x);
  if (tag.type == OdDxf::ValueType::kPoint) return std::isfinite(tag.x) && std::isfinite(tag.y) && std::isfinite(tag.z);
  return true;
}

// Sizes that cannot be negative: radii and heights.
bool odDbFieldIsSize(const OdDbField& field) {
  if (field.kind != OdDbFieldKind::kDouble) return false;
  static const wchar_t* const kSizes[] = {L"radius", L"height", L"textHeight", L"textSize"};
  for (const wchar_t* name : kSizes) {
    if (std::wcscmp(field.name, name) == 0) return true;
  }
  return false;
}

// Normals need a direction (offsets and the like may be zero vectors).
bool odDbFieldIsNormal(const OdDbField& field) {
  return field.kind == OdDbFieldKind::kVector3d && std::wcscmp(field.name, L"normal") == 0;
}

// ---------------------------------------------------------------- tags of one drawing, tag values

OdDbObjectId OdDbDatabaseTagContext::idFromHandle(OdUInt64 handle) {
  return m_db ? m_db->getOdDbObjectId(OdDbHandle(handle), m_createIds) : OdDbObjectId();
}

OdInt64 odDxfTagInteger(const OdDxfTag& tag) {
  switch (tag.type) {
    case OdDxf::ValueType::kDouble:
    case OdDxf::ValueType::kPoint: return static_cast<OdInt64>(tag.x);
    case OdDxf::ValueType::kString: return static_cast<OdInt64>(std::wcstoll(tag.s.c_str(), nullptr, 10));
    default: return tag.i;
  }
}

double odDxfTagReal(const OdDxfTag& tag) {
  switch (tag.type) {
    case OdDxf::ValueType::kDouble:
    case OdDxf::ValueType::kPoint: return tag.x;
    case OdDxf::ValueType::kString: return std::wcstod(tag.s.c_str(), nullptr);
    default: return static_cast<double>(tag.i);
  }
}
