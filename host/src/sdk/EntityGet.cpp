// Entity-data lists as result buffers: tags turned into a result-buffer
// list (names as entity names), and rydbEntGet / rydbEntGetX.
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "DbTagSupport.h"
#include "rydb.h"
#include "ryut.h"
#include "sdk/EntityListsInternal.h"

namespace ryhost {

namespace lists {

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

// Names given to the entity functions: an object of an open drawing.
bool objectOfName(const ads_name name, OdDbObjectId& id) {
  if (!name || rydbGetObjectId(id, name) != RTNORM || !id.isValid()) {
    setErrno(kErrnoInvalidName);
    return false;
  }
  return true;
}

}  // namespace lists

using namespace lists;

namespace {

ACHAR* copyText(const wchar_t* text, size_t length) {
  auto* copy = static_cast<ACHAR*>(std::malloc((length + 1) * sizeof(ACHAR)));
  if (length) std::wmemcpy(copy, text, length);
  copy[length] = 0;
  return copy;
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
      } else if (tag.type == OdDxf::ValueType::kString || tag.type == OdDxf::ValueType::kHandle) {
        rb->resval.rstring = copyText(tag.s.c_str(), static_cast<size_t>(tag.s.getLength()));
      } else {
        const OdString text = tag.valueText();
        rb->resval.rstring = copyText(text.c_str(), static_cast<size_t>(text.getLength()));
      }
      break;
    }
    case GroupKind::kReal: rb->resval.rreal = odDxfTagReal(tag); break;
    case GroupKind::kPoint:
      rb->resval.rpoint[0] = tag.x;
      rb->resval.rpoint[1] = tag.type == OdDxf::ValueType::kPoint ? tag.y : 0.0;
      rb->resval.rpoint[2] = tag.type == OdDxf::ValueType::kPoint && tag.dims == 3 ? tag.z : 0.0;
      break;
    case GroupKind::kShort: rb->resval.rint = static_cast<short>(odDxfTagInteger(tag)); break;
    case GroupKind::kLong: rb->resval.rlong = static_cast<std::int32_t>(odDxfTagInteger(tag)); break;
    case GroupKind::kInt64: rb->resval.mnInt64 = odDxfTagInteger(tag); break;
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

}  // namespace ryhost

using namespace ryhost;
using namespace ryhost::lists;

namespace {

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
  // One list per thread, filled in place call after call: its tags keep
  // their storage, so a list costs no allocation but the result's own.
  thread_local OdDxfTagList tags;
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
