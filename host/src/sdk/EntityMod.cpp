// Reading a result-buffer list into an object: the list taken apart, its
// groups merged into the object's own and read back through the class's
// field tables; and rydbEntMod.
#include <algorithm>
#include <cwchar>
#include <optional>

#include "DbBlockReference.h"
#include "rydb.h"
#include "sdk/EntityListsInternal.h"

namespace ryhost::lists {

namespace {

// ---------------------------------------------------------------- reading lists

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

}  // namespace

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

namespace {

// ---------------------------------------------------------------- merging groups into an object's own

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

}  // namespace

// ---------------------------------------------------------------- names in lists

bool validRecordName(const OdString& name) {
  return !name.isEmpty() && name.getLength() <= 255 && name.findOneOf(L"<>/\\\":;?*|,=`") < 0;
}

namespace {

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

}  // namespace

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

}  // namespace ryhost::lists

using namespace ryhost;
using namespace ryhost::lists;

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
