// LAYCHGCOLOR (alias pchc): gives the layers of the selected objects a new
// colour, typed as a number from 1 to 255 or chosen in the colour dialog.
// The objects themselves are not changed; off layers stay off.
#include <unordered_set>
#include <vector>

#include "DbEntity.h"
#include "DbSymbolTable.h"
#include "RyUiStdDialogs.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "layers/LayerSupport.h"
#include "ryed.h"
#include "ryut.h"

using namespace kestrix::layers;

namespace {

// The layers of the objects, each once, in the order first met.
std::vector<OdDbObjectId> layersOf(const std::vector<OdDbObjectId>& ids) {
  std::vector<OdDbObjectId> layers;
  std::unordered_set<OdDbObjectId> seen;
  for (const OdDbObjectId& id : ids) {
    OdDbObjectPtr object = id.openObject();
    auto* entity = dynamic_cast<const OdDbEntity*>(object.get());
    if (entity && seen.insert(entity->layerId()).second) layers.push_back(entity->layerId());
  }
  return layers;
}

// A colour number from 1 to 255; Enter opens the colour dialog. False on Esc or Cancel.
bool askColor(int& color, int shown) {
  for (;;) {
    ryedInitGet(0, nullptr);
    const int status = ryedGetInt(ResourceString(9108, L"\nEnter a color number (1-255) for the layers <dialog>: "),
                                  &color);
    if (status == RTNONE) {
      color = shown;
      return ryedSetColorDialog(color, false, shown) == RTNORM && color >= 1 && color <= 255;
    }
    if (status != RTNORM) return false;
    if (color >= 1 && color <= 255) return true;
    ryutPrintf(L"%ls", ResourceString(9109, L"\nThe color number must be from 1 to 255.").c_str());
  }
}

}  // namespace

void laychgcolorCommand() {
  kestrix::CmdEchoGuard echo;
  const std::vector<OdDbObjectId> layers = layersOf(selectEntities(nullptr));
  if (layers.empty()) return;
  int shown = 7;
  {
    OdDbObjectPtr first = layers.front().openObject();
    if (auto* layer = dynamic_cast<const OdDbLayerTableRecord*>(first.get())) shown = layer->colorIndex();
  }
  int color = 0;
  if (!askColor(color, shown)) return;
  int changed = 0;
  for (const OdDbObjectId& id : layers) {
    OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
    auto* layer = dynamic_cast<OdDbLayerTableRecord*>(object.get());
    if (!layer) continue;
    layer->setColorIndex(static_cast<OdInt16>(color));
    ++changed;
  }
  ryutPrintf(ResourceString(9110, L"\n%d layers changed to color %d."), changed, color);
}
