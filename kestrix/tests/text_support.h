// Drawings of texts built in the test for the text-adjustment commands, and
// readers of what the commands left.
#pragma once

#include <string>

#include "DbBlockReference.h"
#include "DbText.h"
#include "att_support.h"

namespace txt {

inline OdDbBlockTableRecordPtr modelSpace(OdDbDatabase* db) {
  return OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
}

// A single-line text at (x, y), height 2.5, on layer 0 unless given.
inline OdDbObjectId text(OdDbDatabase* db, const std::wstring& value, double x, double y, double rotation = 0,
                         OdDbObjectId layer = OdDbObjectId()) {
  OdDbTextPtr entity = OdDbText::createObject();
  entity->setTextString(value.c_str());
  entity->setHeight(2.5);
  entity->setRotation(rotation);
  OdDbObjectId id = modelSpace(db)->appendOdDbEntity(entity.get());
  entity->setPosition({x, y, 0});
  if (!layer.isNull()) entity->setLayer(layer);
  return id;
}

inline OdDbObjectId mtext(OdDbDatabase* db, const std::wstring& contents, double x, double y) {
  OdSmartPtr<OdDbMText> entity = OdDbMText::createObject();
  entity->setContents(contents.c_str());
  entity->setTextHeight(2.5);
  OdDbObjectId id = modelSpace(db)->appendOdDbEntity(entity.get());
  entity->setLocation({x, y, 0});
  return id;
}

inline OdDbObjectId attdef(OdDbDatabase* db, const std::wstring& tag, const std::wstring& value, double x, double y) {
  OdSmartPtr<OdDbAttributeDefinition> entity = OdDbAttributeDefinition::createObject();
  entity->setTag(tag.c_str());
  entity->setTextString(value.c_str());
  entity->setHeight(2.5);
  OdDbObjectId id = modelSpace(db)->appendOdDbEntity(entity.get());
  entity->setPosition({x, y, 0});
  return id;
}

// The string of a text, multiline text (its contents) or attribute.
inline std::wstring stringOf(const OdDbObjectId& id) {
  OdDbObjectPtr object = id.openObject();
  if (auto* t = dynamic_cast<OdDbText*>(object.get())) return t->textString().c_str();
  if (auto* m = dynamic_cast<OdDbMText*>(object.get())) return m->contents().c_str();
  return L"";
}

inline OdDbTextPtr openText(const OdDbObjectId& id) { return OdDbText::cast(id.openObject().get()); }

inline int shortVar(HostSession& session, const wchar_t* name) {
  return static_cast<int>(session.host().sysvars().getInt(name, -99));
}

}  // namespace txt
