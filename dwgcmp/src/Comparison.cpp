#include "Comparison.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <unordered_map>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbText.h"

namespace dwgcmp {

namespace {

// The live entities of every layout (model space and the paper spaces).
std::vector<OdDbObjectId> layoutEntities(OdDbDatabase* db) {
  std::vector<OdDbObjectId> ids;
  OdDbObjectPtr tableObject = db->getBlockTableId().openObject();
  auto* table = dynamic_cast<OdDbSymbolTable*>(tableObject.get());
  if (!table) return ids;
  for (OdDbSymbolTableIteratorPtr it = table->newIterator(); !it->done(); it->step()) {
    OdDbObjectPtr object = it->getRecordId().openObject();
    auto* block = dynamic_cast<OdDbBlockTableRecord*>(object.get());
    if (!block || !block->isLayout()) continue;
    for (const OdDbObjectId& id : block->entityIds()) {
      if (!id.isErased()) ids.push_back(id);
    }
  }
  return ids;
}

std::vector<ObjectRecord> recordAll(OdDbDatabase* db, const DwgCompareOptions& options) {
  SignatureRecorder recorder(options.tolerance, options.blocks != 0);
  std::vector<ObjectRecord> records;
  for (const OdDbObjectId& id : layoutEntities(db)) {
    OdDbObjectPtr object = id.openObject();
    if (auto* entity = dynamic_cast<OdDbEntity*>(object.get())) records.push_back(recorder.record(entity));
  }
  return records;
}

DiffClass classifyPair(const ObjectRecord& a, const ObjectRecord& b, const DwgCompareOptions& options) {
  const double tolerance = options.tolerance > 0 ? options.tolerance : 0.0;
  if (options.geometry && !a.geometry.sameWithin(b.geometry, tolerance)) return DiffClass::kChanged;
  if (options.texts && !a.text.sameWithin(b.text, tolerance)) return DiffClass::kChanged;
  if (options.properties && !a.properties.sameWithin(b.properties, tolerance)) return DiffClass::kPropertyOnly;
  return DiffClass::kUnchanged;
}

void count(DwgCompareCounts& counts, DiffClass diff) {
  switch (diff) {
    case DiffClass::kAdded: ++counts.added; break;
    case DiffClass::kDeleted: ++counts.deleted; break;
    case DiffClass::kChanged: ++counts.changed; break;
    case DiffClass::kPropertyOnly: ++counts.propertyOnly; break;
    case DiffClass::kUnchanged: ++counts.unchanged; break;
  }
}

// A colour of the record (0x00BBGGRR) as an entity colour: the palette
// index when a palette entry is exactly that colour, else a true colour.
OdCmColor entityColor(std::uint32_t bgr) {
  const OdUInt8 r = bgr & 0xFF, g = (bgr >> 8) & 0xFF, b = (bgr >> 16) & 0xFF;
  OdCmColor color;
  const OdInt16 index = OdCmEntityColor::lookUpACI(r, g, b);
  if (OdCmEntityColor::lookUpRGB(index) == ((static_cast<OdUInt32>(r) << 16) | (g << 8) | b))
    color.setColorIndex(index);
  else
    color.setRGB(r, g, b);
  return color;
}

OdDbObjectId classLayer(OdDbDatabase* db, DiffClass diff, const OdCmColor& color, bool off) {
  const OdString name = classLayerName(diff);
  OdDbObjectPtr tableObject = db->getLayerTableId().openObject(OdDb::kForWrite);
  auto* table = dynamic_cast<OdDbSymbolTable*>(tableObject.get());
  if (!table) return OdDbObjectId();
  OdDbObjectId id = table->getAt(name);
  if (id.isNull()) {
    OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
    layer->setName(name);
    layer->setLinetypeObjectId(db->getLinetypeContinuousId());
    id = table->add(layer.get());
  }
  OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
  if (auto* layer = dynamic_cast<OdDbLayerTableRecord*>(object.get())) {
    // The class layers are for isolating the classes: never locked, frozen or
    // off, except the layer of unchanged objects when they are hidden.
    layer->setColor(color);
    layer->setIsOff(off);
    layer->setIsFrozen(false);
    layer->setIsLocked(false);
  }
  return id;
}

const wchar_t* className(DiffClass diff) {
  switch (diff) {
    case DiffClass::kAdded: return L"added";
    case DiffClass::kDeleted: return L"deleted";
    case DiffClass::kChanged: return L"changed";
    case DiffClass::kPropertyOnly: return L"properties";
    case DiffClass::kUnchanged: return L"unchanged";
  }
  return L"";
}

std::string handleText(const OdDbObjectId& id) {
  if (id.isNull()) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%llX", static_cast<unsigned long long>(id.handle().value()));
  return text;
}

}  // namespace

const wchar_t* classLayerName(DiffClass diff) {
  switch (diff) {
    case DiffClass::kAdded: return L"CMP_ADDED";
    case DiffClass::kDeleted: return L"CMP_DELETED";
    case DiffClass::kChanged: return L"CMP_CHANGED";
    case DiffClass::kPropertyOnly: return L"CMP_PROPERTIES";
    case DiffClass::kUnchanged: return L"CMP_UNCHANGED";
  }
  return L"";
}

Classification classify(OdDbDatabase* oldDb, OdDbDatabase* newDb, const DwgCompareOptions& options) {
  const std::vector<ObjectRecord> olds = recordAll(oldDb, options);
  const std::vector<ObjectRecord> news = recordAll(newDb, options);
  Classification result;
  std::vector<size_t> newPartner(olds.size(), SIZE_MAX);
  std::vector<bool> newPaired(news.size(), false);

  // Same handle, same class: the same object, edited or not.
  std::unordered_map<OdUInt64, size_t> newByHandle;
  newByHandle.reserve(news.size());
  for (size_t j = 0; j < news.size(); ++j) newByHandle.emplace(news[j].handle, j);
  for (size_t i = 0; i < olds.size(); ++i) {
    auto found = newByHandle.find(olds[i].handle);
    if (found == newByHandle.end() || news[found->second].cls != olds[i].cls) continue;
    newPartner[i] = found->second;
    newPaired[found->second] = true;
  }

  // Objects redrawn or copied under another handle pair by their data, the
  // first unpaired old one with the first unpaired new one of equal key.
  std::unordered_map<std::string, std::vector<size_t>> newByKey;
  for (size_t j = news.size(); j-- > 0;) {
    if (!newPaired[j]) newByKey[pairingKey(news[j], options.tolerance)].push_back(j);
  }
  for (size_t i = 0; i < olds.size(); ++i) {
    if (newPartner[i] != SIZE_MAX) continue;
    auto found = newByKey.find(pairingKey(olds[i], options.tolerance));
    if (found == newByKey.end() || found->second.empty()) continue;
    newPartner[i] = found->second.back();
    found->second.pop_back();
    newPaired[newPartner[i]] = true;
  }

  for (size_t i = 0; i < olds.size(); ++i) {
    Outcome outcome{DiffClass::kDeleted, olds[i].id, OdDbObjectId()};
    if (newPartner[i] != SIZE_MAX) {
      outcome.newId = news[newPartner[i]].id;
      outcome.diff = classifyPair(olds[i], news[newPartner[i]], options);
    }
    count(result.counts, outcome.diff);
    result.outcomes.push_back(outcome);
  }
  for (size_t j = 0; j < news.size(); ++j) {
    if (newPaired[j]) continue;
    result.outcomes.push_back({DiffClass::kAdded, OdDbObjectId(), news[j].id});
    count(result.counts, DiffClass::kAdded);
  }
  return result;
}

void mark(OdDbDatabase* oldDb, OdDbDatabase* newDb, const Classification& result, const DwgCompareOptions& options,
          const DwgCompareColors& colors) {
  const bool markUnchanged = options.greyUnchanged || options.hideUnchanged;
  auto colorOf = [&](DiffClass diff) {
    switch (diff) {
      case DiffClass::kAdded: return entityColor(colors.added);
      case DiffClass::kDeleted: return entityColor(colors.deleted);
      case DiffClass::kChanged: return entityColor(colors.changed);
      case DiffClass::kPropertyOnly: return entityColor(colors.propertyOnly);
      case DiffClass::kUnchanged: return entityColor(colors.unchanged);
    }
    return OdCmColor();
  };
  // Class layers are made in a drawing only when an object goes onto them.
  std::unordered_map<int, OdDbObjectId> layers[2];
  auto markOne = [&](OdDbDatabase* db, int side, const OdDbObjectId& id, DiffClass diff) {
    if (id.isNull()) return;
    OdDbObjectId& layer = layers[side][static_cast<int>(diff)];
    if (layer.isNull()) layer = classLayer(db, diff, colorOf(diff), diff == DiffClass::kUnchanged && options.hideUnchanged);
    OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
    auto* entity = dynamic_cast<OdDbEntity*>(object.get());
    if (!entity) return;
    // Unchanged objects that are only hidden keep their own colour.
    const bool recolour = diff != DiffClass::kUnchanged || options.greyUnchanged;
    entity->setLayer(layer);
    if (recolour) entity->setColor(colorOf(diff));
    // Attributes keep their own properties when their reference's change:
    // they are marked with it here, so that the whole reference shows.
    if (const OdDbObjectIdArray* subs = entity->subentityIds()) {
      for (const OdDbObjectId& subId : *subs) {
        OdDbObjectPtr subObject = subId.openObject(OdDb::kForWrite);
        auto* attribute = dynamic_cast<OdDbText*>(subObject.get());
        if (!attribute) continue;
        attribute->setLayer(layer);
        if (recolour) attribute->setColor(colorOf(diff));
      }
    }
  };
  for (const Outcome& outcome : result.outcomes) {
    if (outcome.diff == DiffClass::kUnchanged && !markUnchanged) continue;
    markOne(oldDb, 0, outcome.oldId, outcome.diff);
    markOne(newDb, 1, outcome.newId, outcome.diff);
  }
}

std::string reportText(OdDbDatabase* oldDb, OdDbDatabase* newDb, const Classification& result,
                       const DwgCompareOptions& options) {
  std::string text = "Drawing comparison\n";
  text += "Old drawing: " + oldDb->getFilename().toUtf8() + "\n";
  text += "New drawing: " + newDb->getFilename().toUtf8() + "\n";
  char line[160];
  std::snprintf(line, sizeof line, "Tolerance: %g\n", options.tolerance);
  text += line;
  const DwgCompareCounts& c = result.counts;
  std::snprintf(line, sizeof line,
                "Added: %lld\nDeleted: %lld\nChanged: %lld\nProperties only: %lld\nUnchanged: %lld\n",
                static_cast<long long>(c.added), static_cast<long long>(c.deleted), static_cast<long long>(c.changed),
                static_cast<long long>(c.propertyOnly), static_cast<long long>(c.unchanged));
  text += line;
  text += "\nClass\tOld handle\tNew handle\tType\n";
  // Listed by class, then by handle in the drawing the object comes from.
  std::vector<const Outcome*> listed;
  for (const Outcome& outcome : result.outcomes) {
    if (outcome.diff != DiffClass::kUnchanged) listed.push_back(&outcome);
  }
  auto handleOf = [](const Outcome* o) {
    return (o->oldId.isNull() ? o->newId : o->oldId).handle().value();
  };
  std::sort(listed.begin(), listed.end(), [&](const Outcome* a, const Outcome* b) {
    if (a->diff != b->diff) return a->diff < b->diff;
    return handleOf(a) < handleOf(b);
  });
  for (const Outcome* o : listed) {
    OdDbObjectPtr object = (o->oldId.isNull() ? o->newId : o->oldId).openObject();
    const std::string type = object.get() ? object->dxfName().toUtf8() : std::string("?");
    text += OdString(className(o->diff)).toUtf8() + "\t" + handleText(o->oldId) + "\t" + handleText(o->newId) + "\t" +
            type + "\n";
  }
  return text;
}

OdString reportPathFor(const OdString& newResult) {
  std::filesystem::path path(newResult.toUtf8());
  path.replace_extension(".cmp.txt");
  return OdString(path.string().c_str());
}

bool writeFileAtomically(const OdString& path, const std::string& text) {
  const std::string target = path.toUtf8();
  const std::string temporary = target + ".tmp";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out << text;
    out.flush();
    if (!out) {
      out.close();
      std::remove(temporary.c_str());
      return false;
    }
  }
  std::error_code ec;
  std::filesystem::rename(temporary, target, ec);
  if (ec) std::remove(temporary.c_str());
  return !ec;
}

}  // namespace dwgcmp
