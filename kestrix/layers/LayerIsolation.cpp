// LAYOFFOTHER, LAYFRZOTHER, LAYLCKOTHER (and their RY_ aliases): every layer
// but the layers of the chosen objects is turned off, frozen or locked. One
// worker takes the mode; before a layer's state is first changed, its
// previous off, frozen and locked states are written into the layer's
// extended data under "_LayerManage" (1070 off, 1070 frozen, 1070 locked,
// each 1 or 0), so that the Restore option of the three commands can put
// them back later and then removes the records.
#include <cstdlib>
#include <unordered_set>
#include <vector>

#include "DbDatabase.h"
#include "DbEntity.h"
#include "DbSymbolTable.h"
#include "DxfTag.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/Selection.h"
#include "frame/commands.h"
#include "layers/LayerSupport.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using kestrix::layers::drawing;

namespace {

const wchar_t* const kLayerManage = L"_LayerManage";

// What the worker does to each layer of a list.
enum LayerMode { kTurnOff = 1, kTurnOn = 2, kFreeze = 3, kThaw = 4, kLock = 5, kUnlock = 6 };

// The layers of the selected objects, and every other layer in table order.
struct LayerLists {
  std::vector<OdDbObjectId> chosen, others;
};

void collectChosen(const ads_name ss, LayerLists& lists) {
  std::unordered_set<OdDbObjectId> seen;
  for (const OdDbObjectId& id : kestrix::selectionIds(ss)) {
    OdDbObjectPtr object = id.openObject();
    auto* placed = dynamic_cast<const OdDbEntity*>(object.get());
    if (placed && seen.insert(placed->layerId()).second) lists.chosen.push_back(placed->layerId());
  }
  OdDbObjectPtr table = drawing()->getLayerTableId().openObject();
  for (const OdDbObjectId& id : static_cast<const OdDbSymbolTable*>(table.get())->recordIds()) {
    if (!id.isErased() && !seen.count(id)) lists.others.push_back(id);
  }
}

// The id of the current layer, read through CLAYER.
OdDbObjectId currentLayer() {
  resbuf value{};
  if (ryedGetVar(L"CLAYER", &value) != RTNORM || value.restype != RTSTR) return OdDbObjectId();
  const OdString name = value.resval.rstring;
  std::free(value.resval.rstring);
  return kestrix::layers::layerNamed(name);
}

void saveStateOnce(OdDbLayerTableRecord* layer) {
  if (!layer->xData(kLayerManage).empty()) return;
  layer->setXData({OdDxfTag::str(1001, kLayerManage), OdDxfTag::integer(1070, layer->isOff() ? 1 : 0),
                   OdDxfTag::integer(1070, layer->isFrozen() ? 1 : 0),
                   OdDxfTag::integer(1070, layer->isLocked() ? 1 : 0)});
}

// The layer record open for write (held by `holder`), or null once the
// failure to open it is reported.
OdDbLayerTableRecord* openLayerForWrite(const OdDbObjectId& id, OdDbObjectPtr& holder) {
  const OdResult status = id.openObject(holder, OdDb::kForWrite);
  auto* layer = dynamic_cast<OdDbLayerTableRecord*>(holder.get());
  if (status != eOk || !layer) {
    ryutPrintf(ResourceString(625, L"\n"), static_cast<int>(status));
    return nullptr;
  }
  return layer;
}

// Saves each layer's state where it has none yet and applies the mode.
void setLayerStates(std::vector<OdDbObjectId> layers, LayerMode mode) {
  if (mode == kFreeze) std::erase(layers, currentLayer());
  for (const OdDbObjectId& id : layers) {
    OdDbObjectPtr object;
    OdDbLayerTableRecord* layer = openLayerForWrite(id, object);
    if (!layer) continue;
    saveStateOnce(layer);
    switch (mode) {
      case kTurnOff: layer->setIsOff(true); break;
      case kTurnOn: layer->setIsOff(false); break;
      case kFreeze: layer->setIsFrozen(true); break;
      case kThaw: layer->setIsFrozen(false); break;
      case kLock: layer->setIsLocked(true); break;
      case kUnlock: layer->setIsLocked(false); break;
    }
  }
}

// The saved states put back on every layer that has them (the reverse of
// modes 1, 3 and 5), the current layer never frozen, and the records removed.
void restoreLayerStates() {
  const OdDbObjectId current = currentLayer();
  int restored = 0;
  OdDbObjectPtr table = drawing()->getLayerTableId().openObject();
  for (const OdDbObjectId& id : static_cast<const OdDbSymbolTable*>(table.get())->recordIds()) {
    if (id.isErased()) continue;
    {
      OdDbObjectPtr reader = id.openObject();
      if (reader->xData(kLayerManage).empty()) continue;
    }
    OdDbObjectPtr object;
    OdDbLayerTableRecord* layer = openLayerForWrite(id, object);
    if (!layer) continue;
    std::vector<OdInt64> saved;
    for (const OdDxfTag& tag : layer->xData(kLayerManage)) {
      if (tag.code == 1070) saved.push_back(tag.i);
    }
    if (saved.size() >= 1) layer->setIsOff(saved[0] != 0);
    if (saved.size() >= 2) layer->setIsFrozen(saved[1] != 0 && id != current);
    if (saved.size() >= 3) layer->setIsLocked(saved[2] != 0);
    layer->setXData({OdDxfTag::str(1001, kLayerManage)});
    ++restored;
  }
  ryutPrintf(ResourceString(9103, L"\n%d layers restored."), restored);
}

// Objects selected before the command, else the user's selection; false when
// the command is to end. restore is set when the user asks for the saved states.
bool chooseObjects(ads_name ss, bool& restore) {
  int status = ryedSSGet(L"I", nullptr, nullptr, nullptr, ss);
  ryedSSSetFirst(nullptr, nullptr);
  OdInt32 length = 0;
  if (status == RTNORM && ryedSSLength(ss, &length) == RTNORM && length > 0) return true;
  if (status == RTNORM) ryedSSFree(ss);

  ryedInitGet(0, L"Select Restore _Select Restore");
  wchar_t keyword[64] = {};
  status = ryedGetKword(ResourceString(9101, L"\nLayers to keep [Select objects/Restore saved layer states] "
                                             L"<Select objects>: "),
                        keyword, 64);
  if (status == RTNORM && OdString(keyword) == L"Restore") {
    restore = true;
    return false;
  }
  if (status != RTNORM && status != RTNONE) return false;
  if (ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss) != RTNORM) return false;
  if (ryedSSLength(ss, &length) != RTNORM) {
    ryedSSFree(ss);
    return false;
  }
  return true;
}

void layerIsolation(LayerMode mode) {
  kestrix::CmdEchoGuard echo;
  ads_name ss = {0, 0};
  bool restore = false;
  if (!chooseObjects(ss, restore)) {
    if (restore) restoreLayerStates();
    return;
  }
  LayerLists lists;
  collectChosen(ss, lists);
  ryedSSFree(ss);
  rydbRegApp(kLayerManage);
  setLayerStates(lists.others, mode);
  if (mode == kLock) setLayerStates(lists.chosen, kUnlock);
}

}  // namespace

void layoffotherCommand() { layerIsolation(kTurnOff); }
void layfrzotherCommand() { layerIsolation(kFreeze); }
void laylckotherCommand() { layerIsolation(kLock); }
