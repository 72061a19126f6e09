// LAYMOVE (alias tcyd): moves the selected objects to a layer typed by name
// or taken from a picked object. The objects keep every other property;
// objects on locked layers are refused by the selection.
#include "DbEntity.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "layers/LayerSupport.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using namespace kestrix::layers;

namespace {

// The layer of an object the user picks; null on Esc.
bool pickedLayer(OdDbObjectId& layer) {
  for (;;) {
    ads_name entity;
    ads_point point;
    const int status = ryedEntSel(ResourceString(9105, L"\nSelect an object on the target layer: "), entity, point);
    if (status == RTCAN) return false;
    if (status != RTNORM) continue;
    OdDbObjectId id;
    if (rydbGetObjectId(id, entity) != RTNORM) continue;
    OdDbObjectPtr object = id.openObject();
    if (auto* placed = dynamic_cast<const OdDbEntity*>(object.get())) {
      layer = placed->layerId();
      return true;
    }
  }
}

// The target layer, typed or picked; false when the user cancels.
bool targetLayer(OdDbObjectId& layer) {
  for (;;) {
    ryedInitGet(0, L"Pick _Pick");
    wchar_t reply[512] = {};
    const int status =
        ryedGetString(1, ResourceString(9104, L"\nEnter the target layer name or [Pick object] <Pick object>: "),
                      reply, 512);
    if (status == RTCAN) return false;
    const OdString text = OdString(reply).trimLeft().trimRight();
    if (status == RTKWORD || text.isEmpty() || text.iCompare(L"Pick") == 0 || text.iCompare(L"P") == 0 ||
        text.iCompare(L"_Pick") == 0)
      return pickedLayer(layer);
    if (status != RTNORM) return false;
    layer = layerNamed(text);
    if (!layer.isNull()) return true;
    ryutPrintf(ResourceString(9106, L"\nLayer \"%ls\" not found."), text.c_str());
  }
}

}  // namespace

void laymoveCommand() {
  kestrix::CmdEchoGuard echo;
  const std::vector<OdDbObjectId> ids = selectEntities(L":L");
  if (ids.empty()) return;
  OdDbObjectId layer;
  if (!targetLayer(layer)) return;
  int moved = 0;
  for (const OdDbObjectId& id : ids) {
    OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
    auto* entity = dynamic_cast<OdDbEntity*>(object.get());
    if (!entity || entity->layerId() == layer) continue;
    if (entity->setLayer(layer) == eOk) ++moved;
  }
  ryutPrintf(ResourceString(9107, L"\n%d objects moved to layer \"%ls\"."), moved, layerName(layer).c_str());
}
