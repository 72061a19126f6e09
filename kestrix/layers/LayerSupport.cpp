#include "layers/LayerSupport.h"

#include "frame/Selection.h"
#include "ryed.h"
#include "rydb.h"

namespace kestrix::layers {

std::vector<OdDbObjectId> selectEntities(const wchar_t* mode) {
  ads_name ss = {0, 0};
  if (ryedSSGet(mode, nullptr, nullptr, nullptr, ss) != RTNORM) return {};
  std::vector<OdDbObjectId> ids = selectionIds(ss);
  ryedSSFree(ss);
  return ids;
}

OdDbObjectId layerNamed(const OdString& name) {
  OdDbObjectPtr table = drawing()->getLayerTableId().openObject();
  return static_cast<const OdDbSymbolTable*>(table.get())->getAt(name);
}

OdString layerName(const OdDbObjectId& layer) {
  OdDbObjectPtr record = layer.openObject();
  auto* symbol = dynamic_cast<const OdDbSymbolTableRecord*>(record.get());
  return symbol ? symbol->getName() : OdString();
}

}  // namespace kestrix::layers
