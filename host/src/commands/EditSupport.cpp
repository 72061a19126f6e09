#include "commands/EditSupport.h"

#include <algorithm>
#include <cmath>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDimension.h"
#include "DbSymbolTable.h"
#include "Ge/GeOcs.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryed.h"
#include "sdk/Input.h"

namespace ryhost::edit {


// ---------------------------------------------------------------- prompts

Answer askSignedAngle(const OdString& prompt, double& value, const OdGePoint3d* base) {
  for (;;) {
    OdGePoint3d point;
    const Answer answer = askPoint(prompt, point, nullptr, base, RSG_OTHER);
    if (answer.isEnter()) return answer;
    if (answer.isValue()) {
      const OdGePoint3d from = base ? *base : OdGePoint3d();
      value = normalizedAngle(std::atan2(point.y - from.y, point.x - from.x));
      return answer;
    }
    // The conversion gives angles in [0, 2π): the sign is taken off first.
    OdString text = answer.text;
    const bool negative = text.left(1) == L"-";
    if (negative) text = text.mid(1);
    double typed = 0;
    if (rydbAngToF(text.c_str(), -1, &typed) == RTNORM) {
      if (negative) typed = -typed;
      value = Host::instance().sysvars().getInt(L"ANGDIR", 0) ? -typed : typed;
      return {Answer::kValue, OdString()};
    }
    say(L"\nRequires valid numeric angle or second point.");
  }
}


OdString plural(int count, const wchar_t* one, const wchar_t* many) {
  return OdString().format(L"%d ", count) + (count == 1 ? one : many);
}

// ---------------------------------------------------------------- coordinates

OdGeMatrix3d ucsMatrix() { return ucsToWorld(); }
OdGePoint3d toWorld(const OdGePoint3d& ucsPoint) { return ucsToWcs(ucsPoint); }
OdGePoint3d toUcs(const OdGePoint3d& worldPoint) { return wcsToUcs(worldPoint); }

OdGeVector3d ucsNormal() { return ucsMatrix().getCsZAxis().normal(); }

void placeInUcs(OdDbEntity* entity) {
  const OdGeMatrix3d ucs = ucsMatrix();
  if (!ucs.isIdentity()) entity->transformBy(ucs);
}

double angleOf(const OdGePoint2d& from, const OdGePoint2d& to) {
  return normalizedAngle(std::atan2(to.y - from.y, to.x - from.x));
}

double normalizedAngle(double angle) {
  constexpr double kTwoPi = 6.283185307179586476925286766559;
  double a = std::fmod(angle, kTwoPi);
  if (a < 0) a += kTwoPi;
  return a >= kTwoPi ? 0.0 : a;
}

bool circleThrough(const OdGePoint2d& a, const OdGePoint2d& b, const OdGePoint2d& c, OdGePoint2d& center) {
  const OdGeVector2d ab = b - a, ac = c - a;
  const double d = 2.0 * ab.crossProduct(ac);
  const double size = std::max({ab.length(), ac.length(), (c - b).length()});
  if (size == 0 || std::fabs(d) <= 1e-12 * size * size) return false;
  const double ab2 = ab.dotProduct(ab), ac2 = ac.dotProduct(ac);
  center = a + OdGeVector2d((ac.y * ab2 - ab.y * ac2) / d, (ab.x * ac2 - ac.x * ab2) / d);
  return true;
}

// ---------------------------------------------------------------- the drawing

OdDbDatabase* database() { return Host::instance().current()->database(); }

OdDbObjectId currentSpace() { return database()->currentSpaceId(); }

OdDbObjectId appendEntity(OdDbEntity* entity, const OdDbObjectId& owner) {
  OdDbObjectPtr object = (owner.isNull() ? currentSpace() : owner).safeOpenObject(OdDb::kForWrite);
  auto* block = dynamic_cast<OdDbBlockTableRecord*>(object.get());
  if (!block) throw OdError(eNotThatKindOfClass);
  const OdDbObjectId id = block->appendOdDbEntity(entity);
  entity->subentityIds();  // vertices kept in memory join the drawing with their polyline
  return id;
}

OdDbObjectId findBlock(const OdString& name) { return database()->findRecord(OdDbNameTable::kBlock, name); }

// ---------------------------------------------------------------- selection

bool pickObject(const OdString& prompt, OdDbObjectId& id, OdGePoint3d& pick) {
  for (;;) {
    ads_name entity;
    ads_point point;
    const int code = ryedEntSel(prompt.c_str(), entity, point);
    if (code == RTCAN) throw CancelledError();
    if (code == RTNORM && rydbGetObjectId(id, entity) == RTNORM) {
      pick = OdGePoint3d(point[0], point[1], point[2]);
      return true;
    }
    resbuf value;
    ryedGetVar(L"ERRNO", &value);
    if (value.resval.rint == 52) return false;  // Enter
    say(L"\nNothing found there.");
  }
}

// ---------------------------------------------------------------- placed copies

namespace {

OdResult transformed(OdDbEntity* entity, const OdGeMatrix3d& xform) {
  try {
    return entity->transformBy(xform);
  } catch (const OdError& error) {
    return error.code();
  }
}

OdDbEntityPtr cloneOf(const OdDbEntity* source) { return OdDbEntity::cast(source->clone().get()); }

// A circle or an arc as an elliptical one, which any affine transform keeps an ellipse.
OdResult ellipseCopy(const OdDbEntity* source, const OdGeMatrix3d& xform, OdDbEntityPtr& copy) {
  OdGeCircArc3d arc;
  if (auto* circle = dynamic_cast<const OdDbCircle*>(source))
    arc = circle->geCircle();
  else if (auto* circular = dynamic_cast<const OdDbArc*>(source))
    arc = circular->geArc();
  else
    return eCannotScaleNonUniformly;
  OdDbEllipsePtr ellipse = OdDbEllipse::createObject();
  OdResult status = ellipse->set(arc.center(), arc.normal(), arc.refVec() * arc.radius(), 1.0, arc.startAng(),
                                 arc.endAng());
  if (status != eOk) return status;
  ellipse->setPropertiesFrom(source);
  if ((status = transformed(ellipse.get(), xform)) != eOk) return status;
  copy = ellipse;
  return eOk;
}

OdResult referencePiece(const OdDbBlockReference* source, const OdGeMatrix3d& xform, Piece& piece) {
  OdDbEntityPtr copy = cloneOf(source);
  auto* reference = static_cast<OdDbBlockReference*>(copy.get());
  // A clone names the source's attributes; the copy gets copies of them instead.
  *reference->subentityIdsInternal() = OdDbObjectIdArray();
  *reference->sequenceEndIdInternal() = OdDbObjectId();
  OdResult status = transformed(reference, xform);
  if (status != eOk) return status;
  piece.entity = copy;
  for (const OdDbObjectId& id : source->attributeIds()) {
    OdDbEntityPtr attribute = OdDbEntity::cast(id.openObject().get());
    if (attribute.isNull()) continue;  // erased
    OdDbEntityPtr attributeCopy = cloneOf(attribute.get());
    if ((status = transformed(attributeCopy.get(), xform)) != eOk) return status;
    piece.attributes.push_back(attributeCopy);
  }
  return eOk;
}

OdResult dimensionPiece(const OdDbDimension* source, const OdGeMatrix3d& xform, Piece& piece,
                        bool allowEllipses) {
  OdDbEntityPtr copy = cloneOf(source);
  // Outside the drawing the copy moves its points only; its picture is made here.
  OdResult status = transformed(copy.get(), xform);
  if (status != eOk) return status;
  piece.entity = copy;
  OdDbObjectPtr block = source->dimBlockId().openObject();
  auto* record = dynamic_cast<OdDbBlockTableRecord*>(block.get());
  if (!record) return eOk;
  const OdGeMatrix3d toBlock = dimensionPictureTransform(static_cast<OdDbDimension*>(copy.get())).inverse() *
                               xform * dimensionPictureTransform(source);
  for (const OdDbObjectId& id : record->entityIds()) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.isNull()) continue;
    Piece sub;
    if ((status = makePiece(entity.get(), toBlock, sub, allowEllipses)) != eOk) return status;
    piece.picture.push_back(std::move(sub));
  }
  piece.hasPicture = true;
  return eOk;
}

void inheritProperties(OdDbEntity* entity, const OdDbEntity* parent) {
  OdDbDatabase* db = parent->database();
  if (entity->layerId() == db->getLayerZeroId()) entity->setLayer(parent->layerId());
  if (entity->entityColor().isByBlock()) entity->setColor(parent->color());
  if (entity->linetypeId() == db->getLinetypeByBlockId()) entity->setLinetype(parent->linetypeId());
  if (entity->lineWeight() == OdDb::kLnWtByBlock) entity->setLineWeight(parent->lineWeight());
}

}  // namespace

OdGeMatrix3d dimensionPictureTransform(const OdDbDimension* dimension) {
  const OdGeVector3d normal = dimension->normal();
  return OdGeMatrix3d::planeToWorld(normal) *
         OdGeMatrix3d::translation(odgeWcsToOcs(dimension->dimBlockPosition(), normal).asVector());
}

OdDbObjectId newAnonymousBlock(const OdString& prefix) {
  OdDbDatabase* db = database();
  OdDbObjectPtr tableObject = db->getBlockTableId().safeOpenObject(OdDb::kForWrite);
  auto* table = static_cast<OdDbSymbolTable*>(tableObject.get());
  long highest = 0;
  for (const OdDbObjectId& id : table->recordIds()) {
    // Names are read straight from the records (erased ones too): no opening, no notification.
    auto* record = id.isValid() ? dynamic_cast<OdDbSymbolTableRecord*>(id.stub()->object) : nullptr;
    if (!record) continue;
    const OdString& name = record->getName();
    if (name.getLength() <= prefix.getLength() || name.left(prefix.getLength()).iCompare(prefix) != 0)
      continue;
    const OdString digits = name.mid(prefix.getLength());
    wchar_t* end = nullptr;
    const long number = std::wcstol(digits.c_str(), &end, 10);
    if (end && *end == 0) highest = std::max(highest, number);
  }
  OdDbBlockTableRecordPtr record = OdDbBlockTableRecord::createObject();
  record->setName(prefix + OdString().format(L"%ld", highest + 1));
  record->setBlockFlags(OdDbBlockTableRecord::kAnonymous);
  return table->add(record.get());
}

OdResult makePiece(const OdDbEntity* source, const OdGeMatrix3d& xform, Piece& piece, bool allowEllipses) {
  piece = Piece();
  if (auto* reference = dynamic_cast<const OdDbBlockReference*>(source))
    return referencePiece(reference, xform, piece);
  if (auto* dimension = dynamic_cast<const OdDbDimension*>(source))
    return dimensionPiece(dimension, xform, piece, allowEllipses);
  OdDbEntityPtr copy = cloneOf(source);
  if (copy.isNull()) return eNotApplicable;
  OdResult status = transformed(copy.get(), xform);
  if (status == eCannotScaleNonUniformly && allowEllipses) status = ellipseCopy(source, xform, copy);
  if (status != eOk) return status;
  piece.entity = copy;
  return eOk;
}

OdDbObjectId addPiece(Piece& piece, const OdDbObjectId& owner) {
  if (piece.hasPicture) {
    const OdDbObjectId block = newAnonymousBlock(L"*D");
    for (Piece& sub : piece.picture) addPiece(sub, block);
    static_cast<OdDbDimension*>(piece.entity.get())->setDimBlockId(block);
  }
  const OdDbObjectId id = appendEntity(piece.entity.get(), owner);
  auto* reference = dynamic_cast<OdDbBlockReference*>(piece.entity.get());
  for (OdDbEntityPtr& attribute : piece.attributes) {
    reference->appendAttribute(static_cast<OdDbAttribute*>(attribute.get()));
  }
  // Vertices follow their polyline into the properties it inherited.
  if (piece.inherited && !reference) {
    if (const OdDbObjectIdArray* subentities = piece.entity->subentityIds()) {
      OdDbObjectIdArray all = *subentities;
      all.append(piece.entity->sequenceEndId());
      for (const OdDbObjectId& subId : all) {
        OdDbEntityPtr sub = OdDbEntity::cast(subId.openObject(OdDb::kForWrite).get());
        if (sub.get()) sub->setPropertiesFrom(piece.entity.get());
      }
    }
  }
  return id;
}

void inheritFrom(Piece& piece, const OdDbEntity* parent) {
  piece.inherited = true;
  inheritProperties(piece.entity.get(), parent);
  for (OdDbEntityPtr& attribute : piece.attributes) inheritProperties(attribute.get(), parent);
}

}  // namespace ryhost::edit
