#include "layers/LayerSupport.h"

#include "ryed.h"
#include "rydb.h"

namespace kestrix::layers {

std::vector<OdDbObjectId> selectEntities(const wchar_t* mode) {
  std::vector<OdDbObjectId> ids;
  ads_name ss = {0, 0};
  if (ryedSSGet(mode, nullptr, nullptr, nullptr, ss) != RTNORM) return ids;
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name entity;
    OdDbObjectId id;
    if (ryedSSName(ss, i, entity) == RTNORM && rydbGetObjectId(id, entity) == RTNORM) ids.push_back(id);
  }
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
