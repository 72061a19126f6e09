#include "blocks/BlockPick.h"

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "RyHostServices.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "rydb.h"
#include "ryed.h"
#include "ryerrno.h"
#include "ryut.h"

namespace kestrix::blocks {

namespace {

// The entity's type (group 0) and block name (group 2).
bool describe(const ads_name entity, OdString& type, OdString& blockName) {
  ResultList list(rydbEntGet(entity));
  if (!list) return false;
  const resbuf* typeGroup = findGroup(list.get(), 0);
  const resbuf* nameGroup = findGroup(list.get(), 2);
  type = typeGroup ? typeGroup->resval.rstring : L"";
  blockName = nameGroup ? nameGroup->resval.rstring : L"";
  return true;
}

bool isReference(const OdString& type) { return type.iCompare(L"INSERT") == 0; }

// The first block reference of a crossing window, each other object named
// as not one; false when there is none.
bool firstReferenceInCrossing(const ads_point first, const ads_point second, OdString& name) {
  ads_name ss = {0, 0};
  if (ryedSSGet(L"C", first, second, nullptr, ss) != RTNORM) return false;
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  bool taken = false;
  for (OdInt32 i = 0; i < length && !taken; ++i) {
    ads_name entity;
    OdString type, blockName;
    if (ryedSSName(ss, i, entity) != RTNORM || !describe(entity, type, blockName)) continue;
    if (!isReference(type)) {
      ryutPrintf(L"%ls", ResourceString(2208).c_str());
      continue;
    }
    name = blockName;
    ryutPrintf(ResourceString(2210), name.c_str());
    taken = true;
  }
  ryedSSFree(ss);
  return taken;
}

}  // namespace

BlockPick pickBlockReference(OdString& name) {
  ryutPrintf(L"%ls", ResourceString(2205).c_str());
  const ResourceString prompt(2206);
  for (;;) {
    ads_name entity;
    ads_point point = {0, 0, 0};
    const int status = ryedEntSel(prompt, entity, point);
    if (status == RTCAN) {
      ryutPrintf(L"%ls", ResourceString(2021).c_str());
      return BlockPick::kCancelled;
    }
    if (status == RTNORM) {
      OdString type, blockName;
      if (!describe(entity, type, blockName)) continue;
      if (!isReference(type)) {
        ryutPrintf(L"%ls", ResourceString(2208).c_str());
        continue;
      }
      if (blockName.isEmpty() || blockName.findOneOf(L"\\<>/?\":;*|,=`") >= 0) {
        ryutPrintf(L"%ls", ResourceString(14883).c_str());
        continue;
      }
      ryutPrintf(ResourceString(2207), blockName.c_str());
      name = blockName;
      return BlockPick::kPicked;
    }
    const int error = shortVariable(L"ERRNO", 0);
    if (error == kErrnoNullReply) return BlockPick::kNothing;
    if (error != kErrnoMissedPick) continue;
    ads_point corner;
    const int cornerStatus = ryedGetCorner(point, ResourceString(2073), corner);
    if (cornerStatus == RTCAN) {
      ryutPrintf(L"%ls", ResourceString(2021).c_str());
      return BlockPick::kCancelled;
    }
    if (cornerStatus == RTNORM && firstReferenceInCrossing(point, corner, name)) return BlockPick::kPicked;
  }
}

bool isFromExternalReference(const OdString& name) {
  OdDbDatabase* db = oddbHostApplicationServices()->workingDatabase();
  if (!db) return false;
  OdDbObjectPtr object = db->findRecord(OdDbNameTable::kBlock, name).openObject();
  auto* block = dynamic_cast<OdDbBlockTableRecord*>(object.get());
  if (!block || !block->isFromExternalReference()) return false;
  ryutPrintf(L"%ls", L"\nThe Block is a xref! can not be used.");
  return true;
}

}  // namespace kestrix::blocks
