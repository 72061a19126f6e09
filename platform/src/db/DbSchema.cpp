#include "DbSchema.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <cwctype>
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
  enum class Check { kAngle, kReal, kSize, kPoint2d, kPoint3d, kVector, kNormal };
  std::vector<std::pair<const OdDbField*, Check>> valueChecks;
};


const CodeIndex& codeIndexOf(const OdDbClassSchema* schema) {
  static std::unordered_map<const OdDbClassSchema*, std::unique_ptr<CodeIndex>> cache;
  auto found = cache.find(schema);
  if (found != cache.end()) return *found->second;
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

void appendFieldTags(const OdDbObject* object, const OdDbField& field, OdDbTagSink& out, OdDbTagContext& ctx,
                     OdDxfTagList& scratch) {
  const void* p = field.ref(object);
  switch (field.kind) {
    case OdDbFieldKind::kBool: out.addInteger(field.code, at<bool>(p) ? 1 : 0); break;
    case OdDbFieldKind::kInt8: out.addInteger(field.code, at<OdInt8>(p)); break;
    case OdDbFieldKind::kInt16: out.addInteger(field.code, at<OdInt16>(p)); break;
    case OdDbFieldKind::kInt32: out.addInteger(field.code, at<OdInt32>(p)); break;
    case OdDbFieldKind::kInt64: out.addInteger(field.code, at<OdInt64>(p)); break;
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
    case OdDbFieldKind::kSoftPointer: {
      const auto& id = at<OdDbObjectId>(p);
      out.addHandle(field.code, id.handle().value());
      break;
    }
    case OdDbFieldKind::kNameRef: {
      const auto& id = at<OdDbObjectId>(p);
      OdString name = ctx.nameOf(id);
      if (name.isEmpty() && field.defaultName) name = field.defaultName;
      out.addString(field.code, name);
      break;
    }
    case OdDbFieldKind::kCustom:
      scratch.clear();
      field.codec->toTags(object, scratch, ctx);
      for (const auto& tag : scratch) out.addTag(tag);
      break;
  }
}

class ListSink : public OdDbTagSink {
 public:
  explicit ListSink(OdDxfTagList& list) : m_list(list) {}
  void addTag(const OdDxfTag& tag) override { m_list.push_back(tag); }

 private:
  OdDxfTagList& m_list;
};

// Stores one tag into a plain field; false when the tag cannot be taken.
bool setFieldFromTag(OdDbObject* object, const OdDbField& field, const OdDxfTag& tag, OdDbTagContext& ctx) {
  void* p = field.ref(object);
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
    case OdDbFieldKind::kCustom: return field.codec->fromTag(object, tag, ctx);
  }
  return false;
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

bool OdDbField::hasDefault(const OdDbObject* object) const {
  const void* p = ref(object);
  switch (kind) {
    case OdDbFieldKind::kBool: return at<bool>(p) == (defaultInt != 0);
    case OdDbFieldKind::kInt8: return at<OdInt8>(p) == defaultInt;
    case OdDbFieldKind::kInt16: return at<OdInt16>(p) == defaultInt;
    case OdDbFieldKind::kInt32: return at<OdInt32>(p) == defaultInt;
    case OdDbFieldKind::kInt64: return at<OdInt64>(p) == defaultInt;
    case OdDbFieldKind::kDouble: return at<double>(p) == defaultReal[0];
    case OdDbFieldKind::kString: return at<OdString>(p).isEmpty();
    case OdDbFieldKind::kPoint2d: {
      const auto& pt = at<OdGePoint2d>(p);
      return pt.x == defaultReal[0] && pt.y == defaultReal[1];
    }
    case OdDbFieldKind::kPoint3d: {
      const auto& pt = at<OdGePoint3d>(p);
      return pt.x == defaultReal[0] && pt.y == defaultReal[1] && pt.z == defaultReal[2];
    }
    case OdDbFieldKind::kVector3d: {
      const auto& v = at<OdGeVector3d>(p);
      return v.x == defaultReal[0] && v.y == defaultReal[1] && v.z == defaultReal[2];
    }
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer: return at<OdDbObjectId>(p).isNull();
    case OdDbFieldKind::kNameRef: {
      const auto& id = at<OdDbObjectId>(p);
      if (id.isNull()) return true;
      if (!defaultName) return false;
      OdDbObjectPtr record = id.openObject();
      auto* str = record.get() ? dynamic_cast<OdDbSymbolTableRecord*>(record.get()) : nullptr;
      return str && str->getName().iCompare(defaultName) == 0;
    }
    case OdDbFieldKind::kCustom: return false;
  }
  return false;
}

void OdDbField::setDefault(OdDbObject* object) const {
  void* p = ref(object);
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
  field.storage = [](OdDbObject* object) -> void* { return object; };
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

OdString OdDbTagContext::nameOf(const OdDbObjectId& id) const {
  // Read straight from the record: no open, no notification.
  if (id.isNull() || !id.isValid()) return OdString();
  auto* record = dynamic_cast<const OdDbSymbolTableRecord*>(id.stub()->object);
  return record ? record->getName() : OdString();
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
  OdDxfTagList scratch;
  for (int si = 0; si < static_cast<int>(index.chain.size()); ++si) {
    const OdDbSubclass* sub = index.chain[static_cast<size_t>(si)];
    if (withMarkers && sub->marker && *sub->marker) out.addString(100, sub->marker);
    flushUnknown(si, -1);
    for (int fi = 0; fi < static_cast<int>(sub->fields.size()); ++fi) {
      const OdDbField& field = sub->fields[static_cast<size_t>(fi)];
      bool skip = (field.flags & OdDbField::kNoDxf) || ctx.version() < field.minVersion ||
                  (entityList && (field.flags & OdDbField::kNoEntityList)) ||
                  ((field.flags & OdDbField::kOptional) && field.hasDefault(object));
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
      const void* p = field.ref(object);
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
        case OdDbFieldKind::kCustom: field.codec->fileOut(object, filer); break;
      }
    }
  }
}

void fileInFields(OdDbObject* object, OdDbDwgFiler* filer) {
  const OdDbClassSchema* schema = schemaOf(object);
  if (!schema) return;
  for (const OdDbSubclass* sub : codeIndexOf(schema).chain) {
    for (const OdDbField& field : sub->fields) {
      if (field.flags & OdDbField::kNoFiler) continue;
      void* p = field.ref(object);
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
        case OdDbFieldKind::kCustom: field.codec->fileIn(object, filer); break;
      }
    }
  }
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
      const void* pa = field.ref(a);
      const void* pb = field.ref(b);
      bool same = true;
      switch (field.kind) {
        case OdDbFieldKind::kBool: same = at<bool>(pa) == at<bool>(pb); break;
        case OdDbFieldKind::kInt8: same = at<OdInt8>(pa) == at<OdInt8>(pb); break;
        case OdDbFieldKind::kInt16: same = at<OdInt16>(pa) == at<OdInt16>(pb); break;
        case OdDbFieldKind::kInt32: same = at<OdInt32>(pa) == at<OdInt32>(pb); break;
        case OdDbFieldKind::kInt64: same = at<OdInt64>(pa) == at<OdInt64>(pb); break;
        case OdDbFieldKind::kDouble: same = sameDouble(at<double>(pa), at<double>(pb)); break;
        case OdDbFieldKind::kString: same = at<OdString>(pa) == at<OdString>(pb); break;
        case OdDbFieldKind::kPoint2d: {
          const auto &p = at<OdGePoint2d>(pa), &q = at<OdGePoint2d>(pb);
          same = sameDouble(p.x, q.x) && sameDouble(p.y, q.y);
          break;
        }
        case OdDbFieldKind::kPoint3d: {
          const auto &p = at<OdGePoint3d>(pa), &q = at<OdGePoint3d>(pb);
          same = sameDouble(p.x, q.x) && sameDouble(p.y, q.y) && sameDouble(p.z, q.z);
          break;
        }
        case OdDbFieldKind::kVector3d: {
          const auto &p = at<OdGeVector3d>(pa), &q = at<OdGeVector3d>(pb);
          same = sameDouble(p.x, q.x) && sameDouble(p.y, q.y) && sameDouble(p.z, q.z);
          break;
        }
        case OdDbFieldKind::kHardOwner:
        case OdDbFieldKind::kSoftOwner:
        case OdDbFieldKind::kHardPointer:
        case OdDbFieldKind::kSoftPointer:
        case OdDbFieldKind::kNameRef: {
          // Objects of two databases compare by handle.
          const auto &p = at<OdDbObjectId>(pa), &q = at<OdDbObjectId>(pb);
          same = p.isNull() == q.isNull() && (p.isNull() || p.handle() == q.handle());
          break;
        }
        case OdDbFieldKind::kCustom: same = field.codec->isEqual(a, b); break;
      }
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
