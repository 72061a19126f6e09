// Drawing helpers shared by the selection tests: entities placed in a
// space and on a layer, layers in a given state, and the members of a set.
#pragma once

#include <vector>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "harness.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

namespace selection_test {

inline OdDbObjectId place(OdDbDatabase* db, OdDbEntity* entity, const wchar_t* layer = L"0",
                          OdDbObjectId space = OdDbObjectId()) {
  if (space.isNull()) space = db->getModelSpaceId();
  OdDbObjectPtr owner = space.openObject(OdDb::kForWrite);
  OdDbObjectId id = static_cast<OdDbBlockTableRecord*>(owner.get())->appendOdDbEntity(entity);
  entity->setLayer(layer);
  return id;
}

inline OdDbObjectId addLine(OdDbDatabase* db, OdGePoint3d a, OdGePoint3d b, const wchar_t* layer = L"0",
                            OdDbObjectId space = OdDbObjectId()) {
  OdDbLinePtr line = OdDbLine::createObject();
  line->setStartPoint(a);
  line->setEndPoint(b);
  return place(db, line.get(), layer, space);
}

inline OdDbObjectId addCircle(OdDbDatabase* db, OdGePoint3d centre, double radius,
                              const wchar_t* layer = L"0") {
  OdSmartPtr<OdDbCircle> circle = OdDbCircle::createObject();
  circle->setCenter(centre);
  circle->setRadius(radius);
  return place(db, circle.get(), layer);
}

inline OdDbObjectId addText(OdDbDatabase* db, OdGePoint3d position, double height, const wchar_t* text,
                            const wchar_t* layer = L"0") {
  OdSmartPtr<OdDbText> entity = OdDbText::createObject();
  entity->setPosition(position);
  entity->setHeight(height);
  entity->setTextString(text);
  return place(db, entity.get(), layer);
}

// flags: 1 frozen, 4 locked; off makes the layer off.
inline void addLayer(OdDbDatabase* db, const wchar_t* name, int flags = 0, bool off = false) {
  OdDbObjectPtr table = db->getLayerTableId().openObject(OdDb::kForWrite);
  OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
  layer->setName(name);
  static_cast<OdDbSymbolTable*>(table.get())->add(layer.get());
  layer->setIsFrozen((flags & 1) != 0);
  layer->setIsLocked((flags & 4) != 0);
  layer->setIsOff(off);
}

inline void setColor(const OdDbObjectId& id, OdInt16 index) {
  OdDbEntityPtr entity = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
  entity->setColorIndex(index);
}

// The entities of a set, in order.
inline std::vector<OdDbObjectId> members(const ads_name ss) {
  std::vector<OdDbObjectId> ids;
  OdInt32 length = 0;
  if (ryedSSLength(ss, &length) != RTNORM) return ids;
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name name;
    OdDbObjectId id;
    if (ryedSSName(ss, i, name) == RTNORM && rydbGetObjectId(id, name) == RTNORM) ids.push_back(id);
  }
  return ids;
}

inline std::vector<OdDbObjectId> sorted(std::vector<OdDbObjectId> ids) {
  std::sort(ids.begin(), ids.end());
  return ids;
}

// A filter or point list, released at the end of the scope.
struct ListHolder {
  resbuf* list;
  explicit ListHolder(resbuf* built) : list(built) {}
  ~ListHolder() { ryutRelRb(list); }
  ListHolder(const ListHolder&) = delete;
  ListHolder& operator=(const ListHolder&) = delete;
  operator const resbuf*() const { return list; }
};

}  // namespace selection_test
