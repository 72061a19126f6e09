// Selection by sample: the user picks a sample object; the objects that
// share its type, block, layer and/or colour (as each command asks) are
// selected in the drawing and handed to the next command as the pick-first
// selection. getsel selects by layer names and object types typed or
// taken from a sample.
#include <cwchar>

#include "DbEntity.h"
#include "frame/Guards.h"
#include "frame/Names.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using kestrix::findGroup;
using kestrix::ResultList;

namespace {

enum Property : unsigned { kType = 1, kBlock = 2, kLayer = 4, kColor = 8 };

// Appends one group to a filter list being built.
void appendString(resbuf*& head, resbuf**& tail, int code, const wchar_t* value) {
  resbuf* rb = ryutBuildList(code, value, RTNONE);
  *tail = rb;
  tail = &rb->rbnext;
}

void appendShort(resbuf*& head, resbuf**& tail, int code, short value) {
  resbuf* rb = ryutBuildList(code, static_cast<int>(value), RTNONE);
  *tail = rb;
  tail = &rb->rbnext;
}

// The filter that matches the sample's chosen properties. The filter reads
// wildcards, so the sample's block and layer names go in escaped: "*U1"
// selects that block only, not every name ending in "U1".
ResultList filterFromSample(const resbuf* sample, unsigned properties) {
  resbuf* head = nullptr;
  resbuf** tail = &head;
  if (properties & (kType | kBlock)) {
    const resbuf* type = findGroup(sample, 0);
    appendString(head, tail, RTDXF0, type ? type->resval.rstring : L"");
  }
  if (properties & kBlock) {
    const resbuf* name = findGroup(sample, 2);
    appendString(head, tail, 2, kestrix::wildcardEscaped(name ? name->resval.rstring : L"").c_str());
  }
  if (properties & kLayer) {
    const resbuf* layer = findGroup(sample, 8);
    appendString(head, tail, 8, kestrix::wildcardEscaped(layer ? layer->resval.rstring : L"0").c_str());
  }
  if (properties & kColor) {
    const resbuf* color = findGroup(sample, 62);
    appendShort(head, tail, 62, color ? color->resval.rint : 256);
  }
  return ResultList(head);
}

// Drops what must not be handed on: viewports (paper space's own frames).
void dropViewports(ads_name ss) {
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  for (OdInt32 i = length - 1; i >= 0; --i) {
    ads_name entity;
    if (ryedSSName(ss, i, entity) != RTNORM) continue;
    OdDbObjectId id;
    if (rydbGetObjectId(id, entity) != RTNORM) continue;
    OdDbObjectPtr object = id.openObject();
    if (object.get() && object->dxfName() == L"VIEWPORT") ryedSSDel(entity, ss);
  }
}

// Selects with the filter (interactively, else over the whole drawing) and
// hands the result on as the pick-first selection.
void selectAndHandOn(resbuf* filter) {
  ryutPrintf(ResourceString(14704));
  ryutPrintf(ResourceString(14705));
  ads_name ss = {0, 0};
  int status = ryedSSGet(nullptr, nullptr, nullptr, filter, ss);
  OdInt32 length = 0;
  if (status == RTNORM) ryedSSLength(ss, &length);
  if (status == RTNORM && length == 0) {
    ryedSSFree(ss);
    status = ryedSSGet(L"X:C", nullptr, nullptr, filter, ss);
  } else if (status == RTERROR) {
    if (kestrix::shortVariable(L"ERRNO", 0) != 0) return;
    status = ryedSSGet(L"X:C", nullptr, nullptr, filter, ss);
  } else if (status != RTNORM) {
    return;
  }
  length = 0;
  if (status == RTNORM) ryedSSLength(ss, &length);
  if (status != RTNORM || length < 1) {
    if (status == RTNORM) ryedSSFree(ss);
    ryutPrintf(ResourceString(14711));
    return;
  }
  dropViewports(ss);
  ryedSSSetFirst(ss, ss);
  ryedSSFree(ss);
}

// The family: pick a sample, then select by the chosen properties.
void selectBySample(unsigned properties) {
  kestrix::CmdEchoGuard guard;
  OdString prompt = ResourceString(14702).text() + ResourceString(14703).text();
  ads_name sample;
  ads_point picked;
  if (ryedEntSel(prompt.c_str(), sample, picked) != RTNORM) return;
  ResultList list(rydbEntGet(sample));
  if (!list) return;
  const resbuf* type = findGroup(list.get(), 0);
  if ((properties & kBlock) && (!type || OdString(type->resval.rstring).iCompare(L"INSERT") != 0)) return;
  const ResultList filter = filterFromSample(list.get(), properties);
  list.reset();
  selectAndHandOn(filter.get());
}

}  // namespace

void getBlkSelCommand() { selectBySample(kBlock); }
void getEntSelCommand() { selectBySample(kType); }
void getLaySelCommand() { selectBySample(kLayer); }
void getColSelCommand() { selectBySample(kColor); }
void getEntLaySelCommand() { selectBySample(kType | kLayer); }
void getEntColSelCommand() { selectBySample(kType | kColor); }
void getLayColSelCommand() { selectBySample(kLayer | kColor); }

// getsel: layers and types typed (with wildcards) or taken from a sample
// object ("Pick"), then everything in the drawing that matches.
void getselCommand() {
  kestrix::CmdEchoGuard guard;
  wchar_t layers[512] = L"*", types[512] = L"*";
  for (;;) {
    ryedInitGet(0, L"Pick _Pick");
    wchar_t reply[512] = {};
    int status = ryedGetString(1, ResourceString(14706), reply, 512);
    if (status == RTKWORD || (status == RTNORM && (std::wcscmp(reply, L"P") == 0 || std::wcscmp(reply, L"p") == 0))) {
      ads_name sample;
      ads_point picked;
      if (ryedEntSel(ResourceString(14702), sample, picked) != RTNORM) continue;
      const ResultList list(rydbEntGet(sample));
      // The sample's names are names: escaped before they go into the filter.
      if (const resbuf* layer = findGroup(list.get(), 8))
        std::wcsncpy(layers, kestrix::wildcardEscaped(layer->resval.rstring).c_str(), 511);
      if (const resbuf* type = findGroup(list.get(), 0))
        std::wcsncpy(types, kestrix::wildcardEscaped(type->resval.rstring).c_str(), 511);
      break;
    }
    if (status != RTNORM) return;
    if (*reply) std::wcsncpy(layers, reply, 511);
    status = ryedGetString(0, ResourceString(14707), reply, 512);
    if (status != RTNORM) return;
    if (*reply) std::wcsncpy(types, reply, 511);
    break;
  }
  const ResultList filter(ryutBuildList(RTDXF0, types, 8, layers, RTNONE));
  ads_name ss = {0, 0};
  if (ryedSSGet(L"X", nullptr, nullptr, filter.get(), ss) != RTNORM) {
    ryutPrintf(ResourceString(14711));
    return;
  }
  dropViewports(ss);
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  ryutPrintf(formatResource(14708, L"error", static_cast<int>(length)));
  ryedSSSetFirst(ss, ss);
  ryedSSFree(ss);
}
