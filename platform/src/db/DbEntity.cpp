#include "DbEntity.h"

#include <cmath>
#include <limits>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbText.h"

ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbEntity, OdDbObject)
ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbCurve, OdDbEntity)

// Group 67: written for entities of a paper-space layout; the reader places
// entities by it, so reading takes it without storing anything.
struct OdDbPaperSpaceCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {67}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    if (static_cast<const OdDbEntity*>(object)->isInPaperSpace()) out.push_back(OdDxfTag::integer(67, 1));
  }
  bool fromTag(OdDbObject*, const OdDxfTag&, OdDbTagContext&) const override { return true; }
  void fileOut(const OdDbObject*, OdDbDwgFiler*) const override {}
  void fileIn(OdDbObject*, OdDbDwgFiler*) const override {}
  bool isEqual(const OdDbObject*, const OdDbObject*) const override { return true; }
};

// Groups 62 (palette index, 256 by layer, 0 by block) and 420 (true colour).
// Not a list of records: one value in two groups, the second only for a true
// colour, so it keeps its own codec.
struct OdDbEntityColorCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {62, 420}; }
  static OdCmEntityColor& color(OdDbObject* object) { return static_cast<OdDbEntity*>(object)->m_color; }
  static const OdCmEntityColor& color(const OdDbObject* object) {
    return static_cast<const OdDbEntity*>(object)->m_color;
  }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const OdCmEntityColor& c = color(object);
    if (c.isByLayer()) return;
    out.push_back(OdDxfTag::integer(62, c.colorIndex()));
    if (c.isByColor()) out.push_back(OdDxfTag::integer(420, static_cast<OdInt32>(c.trueColor())));
  }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const override {
    OdInt64& trueColorSeen = ctx.codecState(this);
    if (tag.code == 420) {
      color(object).setRGB(static_cast<OdUInt8>(tag.i >> 16), static_cast<OdUInt8>(tag.i >> 8),
                           static_cast<OdUInt8>(tag.i));
      trueColorSeen = 1;
    } else if (!trueColorSeen) {
      color(object).setColorIndex(static_cast<OdInt16>(tag.i));
    }
    return true;
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override { filer->wrInt32(static_cast<OdInt32>(color(object).color())); }
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override {
    color(object).setColor(static_cast<OdUInt32>(filer->rdInt32()));
  }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override { return color(a) == color(b); }
};

// The line weights a file may give (hundredths of a millimetre; by block,
// by layer and default below zero).
static const OdInt64 kLineWeights[] = {-3, -2, -1, 0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,
                                       50, 53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

const OdDbClassSchema& OdDbEntity::classSchema() {
  static const OdDbPaperSpaceCodec paperSpace;
  static const OdDbEntityColorCodec colorCodec;
  static const OdDbClassSchema schema{
      &OdDbObject::classSchema(),
      {{L"AcDbEntity",
        {
            odCustomField(paperSpace, L"paperSpace"),
            odNameField<&OdDbEntity::m_layerId>(8, OdDbNameTable::kLayer, L"0").named(L"layer"),
            odNameField<&OdDbEntity::m_linetypeId>(6, OdDbNameTable::kLinetype, L"ByLayer").optional().named(L"linetype"),
            odCustomField(colorCodec, L"color"),
            odField<&OdDbEntity::m_lineWeight>(370).optional().defaultsInt(OdDb::kLnWtByLayer).validValues(kLineWeights).since(OdDb::vAC15).named(L"lineWeight"),
            odField<&OdDbEntity::m_linetypeScale>(48).optional().defaults(1.0).named(L"linetypeScale"),
            odField<&OdDbEntity::m_visibility>(60).optional().named(L"visibility"),
            odField<&OdDbEntity::m_transparency>(440).optional().since(OdDb::vAC18).named(L"transparency"),
            odField<&OdDbEntity::m_plotStyleNameId>(390, OdDbFieldKind::kHardPointer).optional().since(OdDb::vAC15).named(L"plotStyle"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbCurve::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {}};
  return schema;
}

OdDbEntity::OdDbEntity() = default;

namespace {
// Applies a property change to the subentities of a complex entity: a
// polyline's vertices and the end marker. Attributes keep their own
// properties, as they classically do when their reference changes.
template <class Change>
void changeSubentities(const OdDbEntity* entity, bool doSubents, Change change) {
  if (!doSubents) return;
  const OdDbObjectIdArray* subs = entity->subentityIds();
  if (!subs) return;
  OdDbObjectIdArray ids = *subs;
  ids.append(entity->sequenceEndId());
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr sub = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
    if (sub.get() && !sub->isKindOf(OdDbText::desc())) change(sub.get());
  }
}

OdString recordName(const OdDbObjectId& id) {
  OdDbObjectPtr object = id.openObject(OdDb::kForRead, true);
  auto* record = dynamic_cast<OdDbSymbolTableRecord*>(object.get());
  return record ? record->getName() : OdString();
}
}  // namespace

OdString OdDbEntity::layer() const { return recordName(m_layerId); }

OdResult OdDbEntity::setLayer(const OdString& layerName, bool doSubents) {
  OdDbDatabase* db = database();
  if (!db) return eNoDatabase;
  OdDbObjectId id = db->findRecord(OdDbNameTable::kLayer, layerName);
  if (id.isNull()) return eKeyNotFound;
  return setLayer(id, doSubents);
}

OdResult OdDbEntity::setLayer(const OdDbObjectId& layerId, bool doSubents) {
  if (layerId.isNull()) return eNullObjectId;
  assertWriteEnabled();
  m_layerId = layerId;
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setLayer(layerId, false); });
  return eOk;
}

OdString OdDbEntity::linetype() const { return recordName(m_linetypeId); }

OdResult OdDbEntity::setLinetype(const OdString& linetypeName, bool doSubents) {
  OdDbDatabase* db = database();
  if (!db) return eNoDatabase;
  OdDbObjectId id = db->findRecord(OdDbNameTable::kLinetype, linetypeName);
  if (id.isNull()) return eKeyNotFound;
  return setLinetype(id, doSubents);
}

OdResult OdDbEntity::setLinetype(const OdDbObjectId& linetypeId, bool doSubents) {
  assertWriteEnabled();
  m_linetypeId = linetypeId;
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setLinetype(linetypeId, false); });
  return eOk;
}

OdResult OdDbEntity::setLinetypeScale(double scale, bool doSubents) {
  if (!(scale > 0)) return eInvalidInput;
  assertWriteEnabled();
  m_linetypeScale = scale;
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setLinetypeScale(scale, false); });
  return eOk;
}

OdResult OdDbEntity::setColor(const OdCmColor& color, bool doSubents) {
  assertWriteEnabled();
  m_color = color.entityColor();
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setColor(color, false); });
  return eOk;
}

OdResult OdDbEntity::setColorIndex(OdInt16 index, bool doSubents) {
  if (index < 0 || index > 257) return eInvalidInput;
  assertWriteEnabled();
  m_color.setColorIndex(index);
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setColorIndex(index, false); });
  return eOk;
}

OdResult OdDbEntity::setLineWeight(OdDb::LineWeight weight, bool doSubents) {
  assertWriteEnabled();
  m_lineWeight = static_cast<OdInt16>(weight);
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setLineWeight(weight, false); });
  return eOk;
}

OdCmTransparency OdDbEntity::transparency() const {
  OdCmTransparency t;
  t.serializeIn(m_transparency);
  return t;
}

OdResult OdDbEntity::setTransparency(const OdCmTransparency& transparency, bool doSubents) {
  assertWriteEnabled();
  m_transparency = transparency.serializeOut();
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setTransparency(transparency, false); });
  return eOk;
}

OdDb::PlotStyleNameType OdDbEntity::getPlotStyleNameId(OdDbObjectId& id) const {
  id = m_plotStyleNameId;
  return m_plotStyleNameId.isNull() ? OdDb::kPlotStyleNameByLayer : OdDb::kPlotStyleNameById;
}

OdResult OdDbEntity::setPlotStyleName(OdDb::PlotStyleNameType type, const OdDbObjectId& id, bool) {
  assertWriteEnabled();
  m_plotStyleNameId = type == OdDb::kPlotStyleNameById ? id : OdDbObjectId();
  return eOk;
}

OdResult OdDbEntity::setVisibility(OdDb::Visibility visibility, bool doSubents) {
  assertWriteEnabled();
  m_visibility = static_cast<OdInt16>(visibility);
  changeSubentities(this, doSubents, [&](OdDbEntity* sub) { sub->setVisibility(visibility, false); });
  return eOk;
}

void OdDbEntity::setPropertiesFrom(const OdDbEntity* source, bool) {
  assertWriteEnabled();
  m_layerId = source->m_layerId;
  m_linetypeId = source->m_linetypeId;
  m_linetypeScale = source->m_linetypeScale;
  m_color = source->m_color;
  m_lineWeight = source->m_lineWeight;
  m_plotStyleNameId = source->m_plotStyleNameId;
  m_visibility = source->m_visibility;
  m_transparency = source->m_transparency;
}

void OdDbEntity::setDatabaseDefaults(OdDbDatabase* database, bool) {
  OdDbDatabase* db = database ? database : this->database();
  if (!db) return;
  assertWriteEnabled();
  const OdDbDatabase::EntityDefaults& defaults = db->entityDefaults();
  m_layerId = defaults.layer;
  m_linetypeId = defaults.linetype;
  m_color = defaults.color.entityColor();
  m_linetypeScale = defaults.linetypeScale;
  m_lineWeight = static_cast<OdInt16>(defaults.lineWeight);
  subSetDatabaseDefaults(db);
}

OdResult OdDbEntity::getGeomExtents(OdGeExtents3d&) const { return eInvalidExtents; }
OdResult OdDbEntity::transformBy(const OdGeMatrix3d&) { return eNotApplicable; }

OdResult OdDbEntity::getTransformedCopy(const OdGeMatrix3d& xform, OdDbEntityPtr& copy) const {
  OdDbEntityPtr result = OdDbEntity::cast(clone().get());
  if (result.isNull()) return eNotApplicable;
  OdResult status = result->transformBy(xform);
  if (status != eOk) return status;
  copy = result;
  return eOk;
}

OdResult OdDbEntity::explode(OdRxObjectPtrArray&) const { return eNotApplicable; }

double OdDbEntity::distanceTo(const OdGePoint3d& point) const {
  OdGeExtents3d extents;
  if (getGeomExtents(extents) != eOk || !extents.isValidExtents()) return std::numeric_limits<double>::infinity();
  const OdGePoint3d& lo = extents.minPoint();
  const OdGePoint3d& hi = extents.maxPoint();
  double dx = std::max({lo.x - point.x, 0.0, point.x - hi.x});
  double dy = std::max({lo.y - point.y, 0.0, point.y - hi.y});
  double dz = std::max({lo.z - point.z, 0.0, point.z - hi.z});
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

bool OdDbEntity::isInPaperSpace() const {
  OdDbDatabase* db = database();
  OdDbObjectId owner = ownerId();
  if (!db || owner.isNull() || owner == db->getModelSpaceId() || !owner.stub()->object) return false;
  // Read straight from the owner (no open): lists and files ask for every entity.
  const OdDbObject* object = owner.stub()->object;
  if (!object->isKindOf(OdDbBlockTableRecord::desc())) return false;
  const auto* block = static_cast<const OdDbBlockTableRecord*>(object);
  return block->isLayout() && !block->isModelSpace();
}

double OdDbCurve::distanceTo(const OdGePoint3d& point) const {
  OdGePoint3d closest;
  if (getClosestPointTo(point, closest) == eOk) return point.distanceTo(closest);
  return OdDbEntity::distanceTo(point);
}
