// The SDK functions that stand on the kernel directly: documents and
// services, system variables, running host commands, output, result-buffer
// lists, entity names, menus and folders.
#include <cstdarg>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <vector>

#include "core/Host.h"
#include "core/SelectionSets.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using ryhost::Host;

RyApDocManager* ryDocManagerPtr() { return &Host::instance(); }
OdDbHostAppServices* oddbHostApplicationServices() { return &Host::instance(); }

// ---------------------------------------------------------------- result buffers

namespace {

// The kind of value a result-buffer type or DXF group code carries.
enum class RbKind { kNone, kReal, kPoint, kShort, kLong, kString, kName, kInt64, kBinary };

RbKind kindOf(int type) {
  switch (type) {
    case RTREAL:
    case RTANG:
    case RTORINT: return RbKind::kReal;
    case RTPOINT:
    case RT3DPOINT: return RbKind::kPoint;
    case RTSHORT: return RbKind::kShort;
    case RTLONG: return RbKind::kLong;
    case RTSTR: return RbKind::kString;
    case RTENAME:
    case RTPICKS: return RbKind::kName;
    case RTINT64:
    case RTLONG_PTR: return RbKind::kInt64;
    case RTDXF0: return RbKind::kString;
    case RTNONE:
    case RTVOID:
    case RTLB:
    case RTLE:
    case RTDOTE:
    case RTNIL:
    case RTT: return RbKind::kNone;
    default: break;
  }
  if (type == -1 || type == -2) return RbKind::kName;  // entity names in entity-data lists
  if ((type >= 320 && type <= 369) || (type >= 390 && type <= 399)) return RbKind::kName;  // pointer groups: names
  if (type == -3 || type == -4) return type == -4 ? RbKind::kString : RbKind::kNone;
  switch (OdDxf::valueTypeOf(type)) {
    case OdDxf::ValueType::kString:
    case OdDxf::ValueType::kHandle: return RbKind::kString;
    case OdDxf::ValueType::kDouble: return RbKind::kReal;
    case OdDxf::ValueType::kPoint: return RbKind::kPoint;
    case OdDxf::ValueType::kInt16:
    case OdDxf::ValueType::kBool: return RbKind::kShort;
    case OdDxf::ValueType::kInt32: return RbKind::kLong;
    case OdDxf::ValueType::kInt64: return RbKind::kInt64;
    case OdDxf::ValueType::kBinary: return RbKind::kBinary;
  }
  return RbKind::kNone;
}

ACHAR* copyString(const ACHAR* text) {
  size_t n = text ? std::wcslen(text) : 0;
  auto* copy = static_cast<ACHAR*>(std::malloc((n + 1) * sizeof(ACHAR)));
  if (n) std::wmemcpy(copy, text, n);
  copy[n] = 0;
  return copy;
}

void releaseValue(resbuf* rb) {
  switch (kindOf(rb->restype)) {
    case RbKind::kString: std::free(rb->resval.rstring); break;
    case RbKind::kBinary: std::free(rb->resval.rbinary.buf); break;
    default: break;
  }
}

// Reads one value of the given type from a va_list into a buffer.
void readValue(resbuf* rb, int type, va_list& args) {
  switch (kindOf(type)) {
    case RbKind::kReal: rb->resval.rreal = va_arg(args, double); break;
    case RbKind::kPoint: {
      const double* p = va_arg(args, const double*);
      rb->resval.rpoint[0] = p[0];
      rb->resval.rpoint[1] = p[1];
      rb->resval.rpoint[2] = type == RTPOINT ? 0.0 : p[2];
      break;
    }
    case RbKind::kShort: rb->resval.rint = static_cast<short>(va_arg(args, int)); break;
    case RbKind::kLong: rb->resval.rlong = va_arg(args, std::int32_t); break;
    case RbKind::kInt64: rb->resval.mnInt64 = va_arg(args, std::int64_t); break;
    case RbKind::kString: rb->resval.rstring = copyString(va_arg(args, const ACHAR*)); break;
    case RbKind::kName: {
      const std::int64_t* name = va_arg(args, const std::int64_t*);
      rb->resval.rlname[0] = name[0];
      rb->resval.rlname[1] = name[1];
      break;
    }
    case RbKind::kBinary: {
      const ads_binary* chunk = va_arg(args, const ads_binary*);
      rb->resval.rbinary.clen = chunk->clen;
      rb->resval.rbinary.buf = static_cast<char*>(std::malloc(static_cast<size_t>(chunk->clen) + 1));
      std::memcpy(rb->resval.rbinary.buf, chunk->buf, static_cast<size_t>(chunk->clen));
      break;
    }
    case RbKind::kNone: break;
  }
}

// Reads (type, value) pairs from a va_list up to RTNONE (or 0) into a list.
resbuf* readList(int type, va_list& args) {
  resbuf* head = nullptr;
  resbuf** tail = &head;
  while (type != RTNONE && type != 0) {
    resbuf* rb = ryutNewRb(type);
    readValue(rb, type, args);
    *tail = rb;
    tail = &rb->rbnext;
    type = va_arg(args, int);
  }
  return head;
}

OdString formatNumber(double value) {
  OdString text;
  text.format(L"%.16g", value);
  return text;
}

// The reply text a command argument stands for.
OdString replyOf(const resbuf* rb) {
  switch (rb->restype) {
    case RTSTR: return rb->resval.rstring ? OdString(rb->resval.rstring) : OdString();
    case RTSHORT: return OdString().format(L"%d", rb->resval.rint);
    case RTLONG: return OdString().format(L"%d", rb->resval.rlong);
    case RTREAL:
    case RTANG: return formatNumber(rb->resval.rreal);
    case RTPOINT: return formatNumber(rb->resval.rpoint[0]) + L"," + formatNumber(rb->resval.rpoint[1]);
    case RT3DPOINT:
      return formatNumber(rb->resval.rpoint[0]) + L"," + formatNumber(rb->resval.rpoint[1]) + L"," +
             formatNumber(rb->resval.rpoint[2]);
    case RTENAME: {
      // An entity given to a selection prompt is picked by its handle.
      OdDbObjectId id;
      if (rydbGetObjectId(id, rb->resval.rlname) == RTNORM) return L"#" + id.handle().ascii();
      return OdString();
    }
    case RTPICKS: return OdString().format(L"#SS%lld", static_cast<long long>(rb->resval.rlname[0]));
    default: return OdString();
  }
}

}  // namespace

resbuf* ryutNewRb(int type) {
  auto* rb = static_cast<resbuf*>(std::calloc(1, sizeof(resbuf)));
  rb->restype = static_cast<short>(type);
  return rb;
}

int ryutRelRb(resbuf* list) {
  while (list) {
    resbuf* next = list->rbnext;
    releaseValue(list);
    std::free(list);
    list = next;
  }
  return RTNORM;
}

resbuf* ryutBuildList(int type, ...) {
  va_list args;
  va_start(args, type);
  resbuf* head = readList(type, args);
  va_end(args);
  return head;
}

resbuf* ryutDupList(const resbuf* list) {
  resbuf* head = nullptr;
  resbuf** tail = &head;
  for (; list; list = list->rbnext) {
    resbuf* rb = ryutNewRb(list->restype);
    rb->resval = list->resval;
    if (kindOf(list->restype) == RbKind::kString) rb->resval.rstring = copyString(list->resval.rstring);
    if (kindOf(list->restype) == RbKind::kBinary) {
      rb->resval.rbinary.buf = static_cast<char*>(std::malloc(static_cast<size_t>(list->resval.rbinary.clen) + 1));
      std::memcpy(rb->resval.rbinary.buf, list->resval.rbinary.buf, static_cast<size_t>(list->resval.rbinary.clen));
    }
    *tail = rb;
    tail = &rb->rbnext;
  }
  return head;
}

// ---------------------------------------------------------------- entity names

int rydbGetObjectId(OdDbObjectId& id, const ads_name entity) {
  id = OdDbObjectId();
  if (!entity || entity[0] == 0 || ryhost::SelectionSets::isSetName(entity)) return RTERROR;
  auto* stub = reinterpret_cast<OdDbStub*>(entity[0]);
  // Only names of the open documents' databases are trusted.
  Host& host = Host::instance();
  for (int i = 0; i < host.documentCount(); ++i) {
    if (reinterpret_cast<std::int64_t>(host.document(i)->database()) == entity[1]) {
      id = OdDbObjectId(stub);
      return RTNORM;
    }
  }
  return RTERROR;
}

int rydbGetAdsName(ads_name entity, const OdDbObjectId& id) {
  if (id.isNull()) return RTERROR;
  entity[0] = reinterpret_cast<std::int64_t>(id.stub());
  entity[1] = reinterpret_cast<std::int64_t>(id.database());
  return RTNORM;
}

bool rydbNameEqual(const ads_name a, const ads_name b) { return a[0] == b[0] && a[1] == b[1]; }
void rydbNameClear(ads_name name) { name[0] = name[1] = 0; }
bool rydbNameNil(const ads_name name) { return name[0] == 0 && name[1] == 0; }
void rydbNameSet(const ads_name from, ads_name to) {
  to[0] = from[0];
  to[1] = from[1];
}

// ---------------------------------------------------------------- system variables

int ryedGetVar(const ACHAR* name, resbuf* result) {
  if (!name || !result) return RTERROR;
  ryhost::SysVarValue value;
  if (Host::instance().sysvars().get(name, value) != RTNORM) return RTERROR;
  result->restype = value.type;
  switch (value.type) {
    case RTSHORT: result->resval.rint = static_cast<short>(value.i); break;
    case RTLONG: result->resval.rlong = static_cast<std::int32_t>(value.i); break;
    case RTREAL: result->resval.rreal = value.r; break;
    // The caller frees the string with ryutRelRb or free().
    case RTSTR: result->resval.rstring = copyString(value.s.c_str()); break;
    default: std::copy(value.p, value.p + 3, result->resval.rpoint); break;
  }
  return RTNORM;
}

int ryedSetVar(const ACHAR* name, const resbuf* given) {
  if (!name || !given) return RTERROR;
  ryhost::SysVarValue value;
  value.type = given->restype;
  switch (given->restype) {
    case RTSHORT: value.i = given->resval.rint; break;
    case RTLONG: value.i = given->resval.rlong; break;
    case RTREAL:
    case RTANG: value.r = given->resval.rreal; value.type = RTREAL; break;
    case RTSTR: value.s = given->resval.rstring ? given->resval.rstring : L""; break;
    case RTPOINT:
    case RT3DPOINT: std::copy(given->resval.rpoint, given->resval.rpoint + 3, value.p); break;
    default: return RTERROR;
  }
  return Host::instance().sysvars().set(name, value);
}

int ryedGetSysVarList(resbuf** list) {
  if (!list) return RTERROR;
  *list = nullptr;
  resbuf** tail = list;
  auto append = [&tail](resbuf* rb) {
    *tail = rb;
    tail = &rb->rbnext;
  };
  const ryhost::SysVars& vars = Host::instance().sysvars();
  for (const OdString& name : vars.names()) {
    const ryhost::SysVarDef* def = vars.find(name);
    resbuf* rb = ryutNewRb(RTSTR);
    rb->resval.rstring = copyString(def->name.c_str());
    append(rb);
    rb = ryutNewRb(RTSHORT);
    rb->resval.rint = def->type;
    append(rb);
    rb = ryutNewRb(RTSHORT);
    rb->resval.rint = def->readOnly ? 1 : 0;
    append(rb);
  }
  return RTNORM;
}

// ---------------------------------------------------------------- host commands

int ryedCmd(const resbuf* args) {
  if (!args || args->restype != RTSTR || !args->resval.rstring) return RTERROR;
  Host& host = Host::instance();
  std::vector<OdString> replies;
  for (const resbuf* rb = args->rbnext; rb; rb = rb->rbnext) replies.push_back(replyOf(rb));
  const size_t waiting = host.pendingReplies();
  host.pushReplies(replies);
  // Commands run by a program show their prompts only when CMDECHO is 1.
  const bool quiet = host.sysvars().getInt(L"CMDECHO", 1) == 0;
  if (quiet) host.pushQuiet();
  const bool ran = host.runCommand(args->resval.rstring);
  if (quiet) host.popQuiet();
  if (!ran) {
    while (host.pendingReplies() > waiting) host.clearPendingReplies();
    host.print(L"\nUnknown command \"" + OdString(args->resval.rstring).upper() + L"\".");
    return RTERROR;
  }
  // Replies the command did not take mean the call did not go as asked.
  if (host.pendingReplies() > waiting) {
    while (host.pendingReplies() > waiting) host.clearPendingReplies();
    return RTERROR;
  }
  return RTNORM;
}

int ryedCommand(int type, ...) {
  va_list args;
  va_start(args, type);
  const RyResultList list(readList(type, args));
  va_end(args);
  return ryedCmd(list.get());
}

// ---------------------------------------------------------------- output

int ryutPrintf(const ACHAR* format, ...) {
  va_list args;
  va_start(args, format);
  OdString text;
  text.formatV(format, args);
  va_end(args);
  Host::instance().print(text);
  return text.getLength();
}

int ryedPrompt(const ACHAR* text) {
  Host::instance().print(text ? text : L"");
  return RTNORM;
}

int ryedAlert(const ACHAR* text) {
  Host::instance().print(L"\n[Alert] " + OdString(text ? text : L""));
  return RTNORM;
}

int ryedRedraw(const ads_name, int) { return RTNORM; }
int ryedRetVoid() { return RTNORM; }
int ryedUpdateDisplay() { return RTNORM; }

// ---------------------------------------------------------------- files, menus, folders

int ryedFindFile(const ACHAR* name, ACHAR* result, size_t size) {
  if (!name || !result || size == 0) return RTERROR;
  OdString found = Host::instance().findFile(name);
  if (found.isEmpty()) return RTERROR;
  std::wcsncpy(result, found.c_str(), size - 1);
  result[size - 1] = 0;
  return RTNORM;
}

bool ryedIsMenuGroupLoaded(const ACHAR* group) { return group && Host::instance().menuGroups().count(group) != 0; }

bool ryedLoadMenuGroup(const ACHAR* fileName, bool) {
  if (!fileName) return false;
  // The menu group is named after its file: "kestrix.cuix" is group "kestrix".
  OdString found = Host::instance().findFile(fileName);
  if (found.isEmpty()) return false;
  OdString name(std::filesystem::path(found.toUtf8()).stem().string());
  Host::instance().menuGroups().insert(name);
  return true;
}

OdString ryutGetRyadAppDir() { return Host::instance().programFolder(); }

OdString ryutCombinePath(const OdString& folder, const OdString& name) {
  if (folder.isEmpty()) return name;
  OdString left = folder;
  left.trimRight(L"/\\");
  OdString right = name;
  right.trimLeft(L"/\\");
  return left + L"/" + right;
}
