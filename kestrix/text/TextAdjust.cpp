#include "text/TextAdjust.h"

#include <cmath>

#include "DbSymbolTable.h"
#include "DbText.h"
#include "frame/HostSettings.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/Selection.h"
#include "rydb.h"
#include "ryed.h"
#include "ryerrno.h"
#include "ryut.h"

namespace kestrix::text {

namespace {

// (-4 "<OR") (0 "TEXT") (0 "MTEXT") (0 "ATTDEF") [(-4 "<AND") (0 "INSERT") (66 1) (-4 "AND>")] (-4 "OR>")
ResultList textFilter(TextKinds kinds) {
  if (kinds == TextKinds::kTexts)
    return ResultList(
        ryutBuildList(-4, L"<OR", RTDXF0, L"TEXT", RTDXF0, L"MTEXT", RTDXF0, L"ATTDEF", -4, L"OR>", RTNONE));
  return ResultList(ryutBuildList(-4, L"<OR", RTDXF0, L"TEXT", RTDXF0, L"MTEXT", RTDXF0, L"ATTDEF", -4, L"<AND", RTDXF0,
                                  L"INSERT", 66, 1, -4, L"AND>", -4, L"OR>", RTNONE));
}

OdGeVector3d vectorVariable(const wchar_t* name, const OdGeVector3d& otherwise) {
  resbuf value{};
  if (ryedGetVar(name, &value) != RTNORM || value.restype != RT3DPOINT) return otherwise;
  return OdGeVector3d(value.resval.rpoint[0], value.resval.rpoint[1], value.resval.rpoint[2]);
}

}  // namespace

SelectionSet::~SelectionSet() {
  if (held) ryedSSFree(m_name);
}

OdInt32 SelectionSet::length() const {
  OdInt32 count = 0;
  if (held) ryedSSLength(m_name, &count);
  return count;
}

std::vector<OdDbObjectId> SelectionSet::ids() const {
  if (!held) return {};
  return selectionIds(m_name);
}

bool selectTexts(TextKinds kinds, SelectionSet& set) {
  const ResultList filter = textFilter(kinds);
  const int status = ryedSSGet(L"_:L", nullptr, nullptr, filter.get(), set.name());
  if (status == RTCAN) {
    set.cancelled = true;
    ryutPrintf(L"%ls", ResourceString(2021, L"\n函数被取消!").c_str());
    return false;
  }
  if (status != RTNORM) {
    // Nothing found (a missed pick, an empty reply or nothing that fits) is not worth a word.
    const int errorNumber = shortVariable(L"ERRNO", 0);
    if (errorNumber != 0 && errorNumber != kErrnoMissedPick && errorNumber != kErrnoNullReply)
      ryutPrintf(L"%ls", ResourceString(30000, L"\nNo valid objects selected.").c_str());
    return false;
  }
  set.held = true;
  return set.length() > 0;
}


OdGeVector3d currentUcsZ() {
  const OdGeVector3d x = vectorVariable(L"UCSXDIR", OdGeVector3d::kXAxis);
  const OdGeVector3d y = vectorVariable(L"UCSYDIR", OdGeVector3d::kYAxis);
  const OdGeVector3d z = x.crossProduct(y);
  return z.isZeroLength() ? OdGeVector3d::kZAxis : z.normal();
}

double ucsXAngle() {
  const OdGeVector3d x = vectorVariable(L"UCSXDIR", OdGeVector3d::kXAxis);
  return std::atan2(x.y, x.x);
}

bool isParallelToUcs(const OdDbObjectId& id) {
  ads_name entity;
  if (rydbGetAdsName(entity, id) != RTNORM) return false;
  const ResultList list(rydbEntGet(entity));
  const resbuf* normal = findGroup(list.get(), 210);
  const OdGeVector3d n =
      normal ? OdGeVector3d(normal->resval.rpoint[0], normal->resval.rpoint[1], normal->resval.rpoint[2])
             : OdGeVector3d::kZAxis;
  return !n.isZeroLength() && n.isParallelTo(currentUcsZ());
}

int dropTilted(std::vector<OdDbObjectId>& ids) {
  std::vector<OdDbObjectId> kept;
  kept.reserve(ids.size());
  for (const OdDbObjectId& id : ids) {
    if (isParallelToUcs(id)) kept.push_back(id);
  }
  const int dropped = static_cast<int>(ids.size() - kept.size());
  ids.swap(kept);
  return dropped;
}

bool readTextString(const OdDbObjectId& id, OdString& value) {
  ads_name entity;
  if (rydbGetAdsName(entity, id) != RTNORM) return false;
  const ResultList list(rydbEntGet(entity));
  bool found = false;
  value.empty();
  for (const resbuf* rb = list.get(); rb; rb = rb->rbnext) {
    if ((rb->restype == 1 || rb->restype == 3) && rb->resval.rstring) {
      value += rb->resval.rstring;
      found = found || rb->restype == 1;
    }
  }
  return found;
}

bool writeTextString(const OdDbObjectId& id, const OdString& value) {
  ads_name entity;
  if (rydbGetAdsName(entity, id) != RTNORM) return false;
  const ResultList change(ryutBuildList(-1, entity, 1, value.c_str(), RTNONE));
  return rydbEntMod(change.get()) == RTNORM;
}

OdString entityType(const OdDbObjectId& id) {
  ads_name entity;
  if (rydbGetAdsName(entity, id) != RTNORM) return OdString();
  const ResultList list(rydbEntGet(entity));
  const resbuf* type = findGroup(list.get(), 0);
  return type && type->resval.rstring ? OdString(type->resval.rstring) : OdString();
}

bool textBox(const OdDbObjectId& id, OdGePoint3d corners[4]) {
  OdDbObjectPtr object = id.openObject();
  OdGePoint3dArray points;
  if (auto* text = dynamic_cast<OdDbText*>(object.get()))
    text->getBoundingPoints(points);
  else if (auto* mtext = dynamic_cast<OdDbMText*>(object.get()))
    mtext->getBoundingPoints(points);
  if (points.size() < 4) return false;
  for (int i = 0; i < 4; ++i) corners[i] = points[i];
  return true;
}

OdString askRememberedKeyword(const OdString& promptFormat, const wchar_t* keywords, const wchar_t* key,
                              const wchar_t* first) {
  const OdString remembered = readHostSetting(key, first);
  OdString prompt;
  prompt.format(promptFormat.c_str(), remembered.c_str());
  ryedInitGet(0, keywords);
  wchar_t reply[512] = {};
  const int status = ryedGetKword(prompt.c_str(), reply, 512);
  if (status == RTNONE) return remembered;
  if (status != RTNORM) return OdString();
  writeHostSetting(key, reply);
  return OdString(reply);
}

bool isOnLockedLayer(const OdDbObjectId& id) {
  OdDbObjectPtr object = id.openObject();
  const auto* entity = dynamic_cast<const OdDbEntity*>(object.get());
  if (!entity) return false;
  OdDbObjectPtr layer = entity->layerId().openObject();
  const auto* record = dynamic_cast<const OdDbLayerTableRecord*>(layer.get());
  return record && record->isLocked();
}

void printCount(const wchar_t* format, int count, unsigned int textId, const wchar_t* fallback) {
  ryutPrintf(format, count, ResourceString(textId, fallback).c_str());
}

bool keepParallelToUcs(std::vector<OdDbObjectId>& ids) {
  const int dropped = dropTilted(ids);
  if (dropped > 0)
    printCount(L"\n%d%ls", dropped, 2403, L" objects are not parallel to the current UCS and are left out.");
  if (!ids.empty()) return true;
  ryutPrintf(L"%ls", ResourceString(2404, L"\nNo object is left to change.").c_str());
  return false;
}

}  // namespace kestrix::text
