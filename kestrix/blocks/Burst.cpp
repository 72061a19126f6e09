// BURST: explodes block references the way the host's EXPLODE does, but
// keeps what the user sees. Every attribute of a reference becomes a text
// (or a multiline text) with its current value before the reference is
// exploded, the block's attribute definitions that EXPLODE brings out are
// deleted, and the pieces on layer "0", in colour BYBLOCK or in linetype
// BYBLOCK take the reference's layer, colour and linetype through CHPROP.
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using kestrix::findGroup;
using kestrix::ResultList;

namespace {

// The groups of an attribute that its text keeps, in the order written.
constexpr int kTextGroups[] = {8, 6, 38, 39, 62, 67, 210, 10, 40, 1, 50, 41, 51, 7, 71, 72, 73, 11, 74};

struct EntityName {
  ads_name name = {0, 0};
};

OdDbObjectPtr openByName(const ads_name entity, OdDb::OpenMode mode = OdDb::kForRead) {
  OdDbObjectId id;
  if (rydbGetObjectId(id, entity) != RTNORM) return OdDbObjectPtr();
  return id.openObject(mode);
}

bool onLockedLayer(const OdDbEntity* entity) {
  OdDbObjectPtr layer = entity->layerId().openObject();
  auto* record = dynamic_cast<const OdDbLayerTableRecord*>(layer.get());
  return record && record->isLocked();
}

// A selection set built one entity at a time; freed with the builder.
class EntitySet {
 public:
  EntitySet() = default;
  ~EntitySet() {
    if (m_made) ryedSSFree(m_set);
  }
  EntitySet(const EntitySet&) = delete;
  EntitySet& operator=(const EntitySet&) = delete;
  void add(const ads_name entity) {
    if (!m_made) {
      m_made = ryedSSAdd(entity, nullptr, m_set) == RTNORM;
    } else {
      ryedSSAdd(entity, m_set, m_set);
    }
  }
  bool empty() const { return !m_made; }
  const ads_name& name() const { return m_set; }

 private:
  ads_name m_set = {0, 0};
  bool m_made = false;
};

// Unlinks the first group of the code from a list that starts with another
// group (the entity name) and hands it over; null when there is none.
ResultList takeGroup(resbuf* list, int code) {
  for (resbuf* before = list; before && before->rbnext; before = before->rbnext) {
    resbuf* group = before->rbnext;
    if (group->restype != code) continue;
    before->rbnext = group->rbnext;
    group->rbnext = nullptr;
    return ResultList(group);
  }
  return nullptr;
}

// The text of an attribute from its entity data: the kept groups, colour
// BYBLOCK replaced by the reference's colour, and the attribute's vertical
// alignment (74) written as the text's (73).
void attributeToText(const ads_name attribute, OdInt16 referenceColor) {
  ResultList source(rydbEntGet(attribute));
  if (!source) return;
  ResultList text(ryutBuildList(RTDXF0, L"TEXT", RTNONE));
  resbuf* tail = text.get();
  // An attribute's own 73 is its field length; with a 74 the text's 73 is
  // the vertical alignment alone, so the field length is left out.
  const bool hasVerticalAlignment = findGroup(source.get(), 74) != nullptr;
  for (int code : kTextGroups) {
    ResultList group = takeGroup(source.get(), code);
    if (!group || (code == 73 && hasVerticalAlignment)) continue;
    if (code == 62 && group->resval.rint == 0) group->resval.rint = referenceColor;
    if (code == 74) group->restype = 73;
    tail = tail->rbnext = group.release();
  }
  rydbEntMake(text.get());
}

// A multi-line attribute becomes a multiline text with the same contents in the current space.
void multilineAttributeToText(const OdDbAttribute* attribute, OdInt16 referenceColor) {
  OdDbMTextPtr mtext = attribute->getMTextAttribute();
  if (mtext.isNull()) return;
  if (mtext->colorIndex() == 0) mtext->setColorIndex(referenceColor);
  OdDbDatabase* db = attribute->database();
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->currentSpaceId().openObject(OdDb::kForWrite).get());
  if (!space.isNull()) space->appendOdDbEntity(mtext.get());
}

// The reference's layer, linetype and colour as CHPROP takes them.
struct ReferenceProperties {
  OdString layer = L"0";
  OdString linetype = L"BYLAYER";
  OdString color = L"BYLAYER";
};

ReferenceProperties propertiesOf(const resbuf* list) {
  ReferenceProperties properties;
  if (const resbuf* layer = findGroup(list, 8)) properties.layer = layer->resval.rstring;
  if (const resbuf* linetype = findGroup(list, 6)) properties.linetype = linetype->resval.rstring;
  if (const resbuf* color = findGroup(list, 62)) {
    if (color->resval.rint >= 1)
      properties.color.format(L"%d", static_cast<int>(color->resval.rint));
    else if (color->resval.rint == 0)
      properties.color = L"BYBLOCK";
  }
  return properties;
}

void changeProperty(const EntitySet& set, const wchar_t* option, const OdString& value) {
  if (set.empty()) return;
  ryedCommand(RTSTR, L"_.chprop", RTPICKS, set.name(), RTSTR, L"", RTSTR, option, RTSTR, value.c_str(), RTSTR,
              L"", RTNONE);
}

// Bursts one reference; false when it was left as it is.
bool burstReference(const ads_name entity) {
  OdSmartPtr<OdDbBlockReference> reference = OdDbBlockReference::cast(openByName(entity).get());
  if (reference.isNull()) return false;
  {
    OdDbObjectPtr block = reference->blockTableRecord().openObject();
    auto* record = dynamic_cast<const OdDbBlockTableRecord*>(block.get());
    if (record && (record->isFromExternalReference() || record->isFromOverlayReference())) {
      ryutPrintf(L"%ls", ResourceString(14917, L"\n该对象是外部参照。\n未找到对象。").c_str());
      return false;
    }
  }
  ResultList list(rydbEntGet(entity));
  if (!list) return false;
  const ReferenceProperties properties = propertiesOf(list.get());
  const resbuf* blockName = findGroup(list.get(), 2);
  OdDbObjectPtr table = reference->database()->getBlockTableId().openObject();
  auto* blocks = dynamic_cast<const OdDbSymbolTable*>(table.get());
  if (!blocks || !blockName) return false;
  OdDbBlockTableRecordPtr block =
      OdDbBlockTableRecord::cast(blocks->getAt(OdString(blockName->resval.rstring), OdDb::kForRead).get());
  if (block.isNull() || !block->explodable()) {
    ryutPrintf(L"%ls", ResourceString(14913, L"\n无法分解该块。").c_str());
    return false;
  }
  block.release();

  // The walk below starts after the drawing's last entity and what belongs
  // to it (attributes, vertices, end marker), so that only new entities are met.
  ads_name last = {0, 0};
  rydbEntLast(last);
  for (ads_name sub; rydbEntNext(last, sub) == RTNORM;) {
    ResultList subList(rydbEntGet(sub));
    const resbuf* type = findGroup(subList.get(), 0);
    const OdString typeName = type ? OdString(type->resval.rstring) : OdString();
    if (typeName != L"ATTRIB" && typeName != L"VERTEX" && typeName != L"SEQEND") break;
    rydbNameSet(sub, last);
  }
  const OdInt16 referenceColor = reference->colorIndex();
  std::vector<OdDbObjectId> attributes;
  for (OdDbObjectIteratorPtr it = reference->attributeIterator(); !it->done(); it->step())
    attributes.push_back(it->objectId());
  reference.release();
  for (const OdDbObjectId& id : attributes) {
    OdSmartPtr<OdDbAttribute> attribute = OdDbAttribute::cast(id.openObject().get());
    if (attribute.isNull()) continue;
    if (attribute->isMTextAttribute()) {
      multilineAttributeToText(attribute.get(), referenceColor);
    } else {
      attribute.release();
      ads_name name;
      if (rydbGetAdsName(name, id) == RTNORM) attributeToText(name, referenceColor);
    }
  }

  ryedCommand(RTSTR, L"_.explode", RTENAME, entity, RTSTR, L"", RTNONE);

  EntitySet onLayerZero, byBlockColor, byBlockLinetype;
  ads_name next;
  for (int status = rydbEntNext(last, next); status == RTNORM; status = rydbEntNext(last, next)) {
    rydbNameSet(next, last);
    ResultList piece(rydbEntGet(next));
    const resbuf* type = findGroup(piece.get(), 0);
    if (type && OdString(type->resval.rstring).iCompare(L"ATTDEF") == 0) {
      rydbEntDel(next);
      continue;
    }
    const resbuf* layer = findGroup(piece.get(), 8);
    if (layer && OdString(layer->resval.rstring).iCompare(L"0") == 0) onLayerZero.add(next);
    const resbuf* color = findGroup(piece.get(), 62);
    if (color && color->resval.rint == 0) byBlockColor.add(next);
    const resbuf* linetype = findGroup(piece.get(), 6);
    if (linetype && OdString(linetype->resval.rstring).iCompare(L"BYBLOCK") == 0) byBlockLinetype.add(next);
  }
  changeProperty(onLayerZero, L"_LA", properties.layer);
  changeProperty(byBlockColor, L"_C", properties.color);
  changeProperty(byBlockLinetype, L"_LI", properties.linetype);
  return true;
}

// The block references of the pick-first selection that are not on locked layers.
std::vector<EntityName> pickFirstReferences() {
  std::vector<EntityName> kept;
  resbuf* pickFirst = nullptr;
  const int status = ryedSSGetFirst(nullptr, &pickFirst);
  const ResultList owner(pickFirst);
  if (status != RTNORM || !pickFirst) return kept;
  OdInt32 length = 0;
  ryedSSLength(pickFirst->resval.rlname, &length);
  for (OdInt32 i = 0; i < length; ++i) {
    EntityName entity;
    if (ryedSSName(pickFirst->resval.rlname, i, entity.name) != RTNORM) continue;
    OdDbObjectPtr object = openByName(entity.name);
    auto* reference = dynamic_cast<const OdDbBlockReference*>(object.get());
    if (reference && !onLockedLayer(reference)) kept.push_back(entity);
  }
  ryedSSFree(pickFirst->resval.rlname);
  return kept;
}

// The references selected at the prompt (locked layers refused by the selection).
bool promptedReferences(std::vector<EntityName>& selected) {
  ResultList filter(ryutBuildList(RTDXF0, L"INSERT", RTNONE));
  ads_name ss = {0, 0};
  if (ryedSSGet(L":L", nullptr, nullptr, filter.get(), ss) != RTNORM) return false;
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  for (OdInt32 i = 0; i < length; ++i) {
    EntityName entity;
    if (ryedSSName(ss, i, entity.name) == RTNORM) selected.push_back(entity);
  }
  ryedSSFree(ss);
  return true;
}

bool inCurrentSpace(const ads_name entity) {
  OdDbObjectPtr object = openByName(entity);
  return object.get() && object->ownerId() == object->database()->currentSpaceId();
}

}  // namespace

void burstCommand() {
  kestrix::CmdEchoGuard echo;
  std::vector<EntityName> references = pickFirstReferences();
  // What was picked first is used here; EXPLODE and CHPROP must not take it again.
  ryedSSSetFirst(nullptr, nullptr);
  if (!references.empty())
    ryutPrintf(ResourceString(2345, L"\n%ld found."), static_cast<long>(references.size()));
  kestrix::SysVarSaver highlight(L"HIGHLIGHT");
  highlight.setShort(1);
  if (references.empty() && !promptedReferences(references)) return;

  const size_t selected = references.size();
  std::erase_if(references, [](const EntityName& entity) { return !inCurrentSpace(entity.name); });
  if (references.size() != selected)
    ryutPrintf(ResourceString(14920), static_cast<int>(selected), static_cast<int>(selected - references.size()));

  kestrix::UndoGroup undo;
  for (auto it = references.rbegin(); it != references.rend(); ++it) burstReference(it->name);
}
