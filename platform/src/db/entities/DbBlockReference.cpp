#include "DbBlockReference.h"

#include <cmath>
#include <limits>

#include "DbDatabase.h"
#include "Ge/GeOcs.h"
#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbBlockReference, OdDbEntity, L"INSERT")
ODDB_DEFINE_MEMBERS(OdDbMInsertBlock, OdDbBlockReference, L"MINSERT")
ODDB_DEFINE_MEMBERS(OdDbSequenceEnd, OdDbEntity, L"SEQEND")

// Group 66: 1 when attributes follow the reference.
struct OdDbAttributesFollowCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {66}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const auto* ref = static_cast<const OdDbBlockReference*>(object);
    for (const auto& id : ref->m_attributes) {
      if (!id.isErased()) {
        out.push_back(OdDxfTag::integer(66, 1));
        return;
      }
    }
  }
  bool fromTag(OdDbObject*, const OdDxfTag&, OdDbTagContext&) const override { return true; }
  void fileOut(const OdDbObject*, OdDbDwgFiler*) const override {}
  void fileIn(OdDbObject*, OdDbDwgFiler*) const override {}
  bool isEqual(const OdDbObject*, const OdDbObject*) const override { return true; }
};

// Groups 41, 42, 43: the scale factors, each written when it is not 1.
struct OdDbScaleCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {41, 42, 43}; }
  static OdGeScale3d& scale(OdDbObject* o) { return static_cast<OdDbBlockReference*>(o)->m_scale; }
  static const OdGeScale3d& scale(const OdDbObject* o) { return static_cast<const OdDbBlockReference*>(o)->m_scale; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const OdGeScale3d& s = scale(object);
    if (s.sx != 1) out.push_back(OdDxfTag::real(41, s.sx));
    if (s.sy != 1) out.push_back(OdDxfTag::real(42, s.sy));
    if (s.sz != 1) out.push_back(OdDxfTag::real(43, s.sz));
  }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext&) const override {
    OdGeScale3d& s = scale(object);
    (tag.code == 41 ? s.sx : tag.code == 42 ? s.sy : s.sz) = tag.x;
    return true;
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override { filer->wrScale3d(scale(object)); }
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override { scale(object) = filer->rdScale3d(); }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    const OdGeScale3d &p = scale(a), &q = scale(b);
    return p.sx == q.sx && p.sy == q.sy && p.sz == q.sz;
  }
};


const OdDbClassSchema& OdDbBlockReference::classSchema() {
  static const OdDbAttributesFollowCodec follow;
  static const OdDbScaleCodec scaleCodec;
  static const OdDbClassSchema schema = [] {
    OdDbClassSchema s{&OdDbEntity::classSchema(), {{L"AcDbBlockReference", {}}}};
    s.subclasses[0].fields = {
        odCustomField(follow, L"attributesFollow"),
        odNameField<&OdDbBlockReference::m_blockId>(2, OdDbNameTable::kBlock).required().named(L"block"),
        odField<&OdDbBlockReference::m_position>(10).required().named(L"position"),
    };
    auto& fields = s.subclasses[0].fields;
    fields.push_back(odCustomField(scaleCodec, L"scale"));
    fields.push_back(odField<&OdDbBlockReference::m_rotation>(50).optional().degrees().named(L"rotation"));
    fields.push_back(odField<&OdDbBlockReference::m_normal>(210).optional().named(L"normal"));
    return s;
  }();
  return schema;
}

const OdDbClassSchema& OdDbMInsertBlock::classSchema() {
  static const OdDbAttributesFollowCodec follow;
  static const OdDbScaleCodec scaleCodec;
  static const OdDbClassSchema schema = [] {
    OdDbClassSchema s{&OdDbEntity::classSchema(), {{L"AcDbMInsertBlock", {}}}};
    s.subclasses[0].fields = {
        odCustomField(follow, L"attributesFollow"),
        odNameField<&OdDbMInsertBlock::m_blockId>(2, OdDbNameTable::kBlock).required().named(L"block"),
        odField<&OdDbMInsertBlock::m_position>(10).required().named(L"position"),
    };
    auto& fields = s.subclasses[0].fields;
    fields.push_back(odCustomField(scaleCodec, L"scale"));
    fields.push_back(odField<&OdDbMInsertBlock::m_rotation>(50).optional().degrees().named(L"rotation"));
    fields.push_back(odField<&OdDbMInsertBlock::m_columns>(70).optional().defaultsInt(1).named(L"columns"));
    fields.push_back(odField<&OdDbMInsertBlock::m_rows>(71).optional().defaultsInt(1).named(L"rows"));
    fields.push_back(odField<&OdDbMInsertBlock::m_columnSpacing>(44).optional().named(L"columnSpacing"));
    fields.push_back(odField<&OdDbMInsertBlock::m_rowSpacing>(45).optional().named(L"rowSpacing"));
    fields.push_back(odField<&OdDbMInsertBlock::m_normal>(210).optional().named(L"normal"));
    return s;
  }();
  return schema;
}

const OdDbClassSchema& OdDbSequenceEnd::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {}};
  return schema;
}

OdGePoint3d OdDbBlockReference::position() const { return odgeOcsToWcs(m_position, m_normal); }

void OdDbBlockReference::setPosition(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_position = odgeWcsToOcs(point, m_normal);
}

void OdDbBlockReference::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  OdGePoint3d world = position();
  assertWriteEnabled();
  m_normal = normal.normal();
  m_position = odgeWcsToOcs(world, m_normal);
}

OdGeMatrix3d OdDbBlockReference::blockTransform() const {
  OdGePoint3d base;
  OdDbObjectPtr block = m_blockId.openObject(OdDb::kForRead, true);
  if (auto* record = dynamic_cast<OdDbBlockTableRecord*>(block.get())) base = record->origin();
  return OdGeMatrix3d::planeToWorld(m_normal) * OdGeMatrix3d::translation(m_position.asVector()) *
         OdGeMatrix3d::rotation(m_rotation, OdGeVector3d::kZAxis) * OdGeMatrix3d::scaling(m_scale) *
         OdGeMatrix3d::translation(-base.asVector());
}

OdResult OdDbBlockReference::setBlockTransform(const OdGeMatrix3d& xform) {
  OdGePoint3d base;
  OdDbObjectPtr block = m_blockId.openObject(OdDb::kForRead, true);
  if (auto* record = dynamic_cast<OdDbBlockTableRecord*>(block.get())) base = record->origin();
  // Columns of the transform without the base point: the block's axes and origin in the world.
  OdGeMatrix3d m = xform * OdGeMatrix3d::translation(base.asVector());
  OdGeVector3d xAxis(m(0, 0), m(1, 0), m(2, 0));
  OdGeVector3d yAxis(m(0, 1), m(1, 1), m(2, 1));
  OdGeVector3d zAxis(m(0, 2), m(1, 2), m(2, 2));
  OdGePoint3d origin(m(0, 3), m(1, 3), m(2, 3));
  const double sx = xAxis.length(), sy = yAxis.length(), sz = zAxis.length();
  if (sx == 0 || sy == 0 || sz == 0) return eDegenerateGeometry;
  if (std::fabs(xAxis.dotProduct(yAxis)) > 1e-9 * sx * sy || std::fabs(xAxis.dotProduct(zAxis)) > 1e-9 * sx * sz ||
      std::fabs(yAxis.dotProduct(zAxis)) > 1e-9 * sy * sz) {
    return eCannotScaleNonUniformly;
  }
  OdGeVector3d normal = zAxis / sz;
  // Mirrored in the plane when x, y and z form a left-handed system: the y scale turns negative.
  const bool mirrored = xAxis.crossProduct(yAxis).dotProduct(zAxis) < 0;
  assertWriteEnabled();
  m_normal = normal;
  m_position = odgeWcsToOcs(origin, m_normal);
  m_rotation = odgeOcsAngle(xAxis, m_normal);
  m_scale = OdGeScale3d(sx, mirrored ? -sy : sy, sz);
  return eOk;
}

OdDbObjectIteratorPtr OdDbBlockReference::attributeIterator() const {
  OdDbObjectIteratorPtr it(new OdDbObjectIterator(m_attributes, true));
  it->start();
  return it;
}

OdDbObjectId OdDbBlockReference::appendAttribute(OdDbAttribute* attribute) {
  OdDbDatabase* db = database();
  if (!db) throw OdError(eNotInDatabase);
  if (!attribute) throw OdError(eNullEntityPointer);
  assertWriteEnabled();
  OdDbObjectId id = db->addOdDbObject(attribute, objectId());
  m_attributes.append(id);
  if (attribute->layerId().isNull()) attribute->setPropertiesFrom(this);
  if (m_seqEnd.isNull()) {
    OdSmartPtr<OdDbSequenceEnd> end = OdDbSequenceEnd::createObject();
    m_seqEnd = db->addOdDbObject(end.get(), objectId());
    end->setPropertiesFrom(this);
  }
  return id;
}

OdResult OdDbBlockReference::subErase(bool erasing) {
  // The attributes and the end marker share the reference's fate.
  for (const OdDbObjectId& id : m_attributes) {
    OdDbObjectPtr sub = id.openObject(OdDb::kForWrite, true);
    if (sub.get() && sub->isErased() != erasing) sub->erase(erasing);
  }
  if (OdDbObjectPtr end = m_seqEnd.openObject(OdDb::kForWrite, true)) {
    if (end->isErased() != erasing) end->erase(erasing);
  }
  return eOk;
}

OdResult OdDbBlockReference::transformBy(const OdGeMatrix3d& xform) {
  OdResult result = setBlockTransform(xform * blockTransform());
  if (result != eOk) return result;
  for (const OdDbObjectId& id : m_attributes) {
    OdDbEntityPtr attribute = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
    if (attribute.get()) attribute->transformBy(xform);
  }
  return eOk;
}

OdResult OdDbBlockReference::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  OdDbObjectPtr block = m_blockId.openObject();
  auto* record = dynamic_cast<OdDbBlockTableRecord*>(block.get());
  const OdGeMatrix3d xform = blockTransform();
  OdDbBlockWalk walk(m_blockId);  // a block that contains itself is measured once
  if (record && walk.entered()) {
    for (const OdDbObjectId& id : record->entityIds()) {
      if (id.isErased()) continue;
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      if (entity.isNull() || entity->isKindOf(OdDbAttributeDefinition::desc())) continue;
      OdGeExtents3d sub;
      if (entity->getGeomExtents(sub) != eOk || !sub.isValidExtents()) continue;
      sub.transformBy(xform);
      extents.addExt(sub);
    }
  }
  for (const OdDbObjectId& id : m_attributes) {
    OdDbEntityPtr attribute = OdDbEntity::cast(id.openObject().get());
    OdGeExtents3d sub;
    if (attribute.get() && attribute->getGeomExtents(sub) == eOk && sub.isValidExtents()) extents.addExt(sub);
  }
  if (!extents.isValidExtents()) extents.addPoint(position());
  return eOk;
}

double OdDbBlockReference::distanceTo(const OdGePoint3d& point) const {
  // The nearest of the block's entities, measured in block coordinates scaled back.
  OdRxObjectPtrArray pieces;
  double best = std::numeric_limits<double>::infinity();
  OdDbBlockWalk walk(m_blockId);  // a block that contains itself is measured once
  if (walk.entered() && explode(pieces) == eOk) {
    for (const auto& piece : pieces) {
      auto* entity = static_cast<OdDbEntity*>(piece.get());
      best = std::min(best, entity->distanceTo(point));
    }
  }
  for (const OdDbObjectId& id : m_attributes) {
    OdDbEntityPtr attribute = OdDbEntity::cast(id.openObject().get());
    if (attribute.get()) best = std::min(best, attribute->distanceTo(point));
  }
  return best;
}

OdResult OdDbBlockReference::explode(OdRxObjectPtrArray& entities) const {
  return OdDbEntityGeometry::explodeBlockContents(m_blockId, blockTransform(), entities);
}

void OdDbBlockReference::copyFrom(const OdRxObject* source) {
  OdDbEntity::copyFrom(source);
  m_attributes.clear();
  m_seqEnd = OdDbObjectId();
}

void OdDbBlockReference::dwgOutFields(OdDbDwgFiler* filer) const {
  OdDbEntity::dwgOutFields(filer);
  filer->wrInt32(static_cast<OdInt32>(m_attributes.size()));
  for (const auto& id : m_attributes) filer->wrHardOwnershipId(id);
  filer->wrHardOwnershipId(m_seqEnd);
}

OdResult OdDbBlockReference::dwgInFields(OdDbDwgFiler* filer) {
  OdResult result = OdDbEntity::dwgInFields(filer);
  OdInt32 count = filer->rdInt32();
  m_attributes.clear();
  for (OdInt32 i = 0; i < count; ++i) m_attributes.append(filer->rdHardOwnershipId());
  m_seqEnd = filer->rdHardOwnershipId();
  return result;
}

OdResult OdDbMInsertBlock::getGeomExtents(OdGeExtents3d& extents) const {
  OdResult result = OdDbBlockReference::getGeomExtents(extents);
  if (result != eOk || (m_rows <= 1 && m_columns <= 1)) return result;
  // The array spreads along the rotated x and y axes of the reference's plane.
  OdGeVector3d xStep = odgeOcsToWcs(OdGeVector3d(std::cos(m_rotation), std::sin(m_rotation), 0), m_normal) * m_columnSpacing;
  OdGeVector3d yStep = odgeOcsToWcs(OdGeVector3d(-std::sin(m_rotation), std::cos(m_rotation), 0), m_normal) * m_rowSpacing;
  OdGeExtents3d far = extents;
  far.transformBy(OdGeMatrix3d::translation(xStep * (m_columns - 1) + yStep * (m_rows - 1)));
  extents.addExt(far);
  return eOk;
}

OdResult OdDbMInsertBlock::explode(OdRxObjectPtrArray& entities) const {
  OdRxObjectPtrArray one;
  OdResult result = OdDbBlockReference::explode(one);
  if (result != eOk) return result;
  OdGeVector3d xStep = odgeOcsToWcs(OdGeVector3d(std::cos(m_rotation), std::sin(m_rotation), 0), m_normal) * m_columnSpacing;
  OdGeVector3d yStep = odgeOcsToWcs(OdGeVector3d(-std::sin(m_rotation), std::cos(m_rotation), 0), m_normal) * m_rowSpacing;
  for (int row = 0; row < std::max<int>(1, m_rows); ++row) {
    for (int column = 0; column < std::max<int>(1, m_columns); ++column) {
      OdGeMatrix3d shift = OdGeMatrix3d::translation(xStep * column + yStep * row);
      for (const auto& piece : one) {
        OdDbEntityPtr copy;
        if (static_cast<OdDbEntity*>(piece.get())->getTransformedCopy(shift, copy) == eOk) {
          entities.append(OdRxObjectPtr(copy.get()));
        }
      }
    }
  }
  return eOk;
}
