#include "DbDimension.h"

#include <cmath>
#include <limits>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "db/entities/DbEntityGeometry.h"

// The rotated kind is registered first: a lookup of the DXF name alone finds it.
ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbDimension, OdDbEntity)
ODDB_DEFINE_MEMBERS(OdDbRotatedDimension, OdDbDimension, L"DIMENSION")
ODDB_DEFINE_MEMBERS(OdDbAlignedDimension, OdDbDimension, L"DIMENSION")
ODDB_DEFINE_MEMBERS(OdDb2LineAngularDimension, OdDbDimension, L"DIMENSION")
ODDB_DEFINE_MEMBERS(OdDb3PointAngularDimension, OdDbDimension, L"DIMENSION")
ODDB_DEFINE_MEMBERS(OdDbDiametricDimension, OdDbDimension, L"DIMENSION")
ODDB_DEFINE_MEMBERS(OdDbRadialDimension, OdDbDimension, L"DIMENSION")
ODDB_DEFINE_MEMBERS(OdDbOrdinateDimension, OdDbDimension, L"DIMENSION")

using namespace OdDbEntityGeometry;

namespace {

constexpr double kTwoPi = 6.28318530717958647692;

OdGePoint2d inPlane(const OdGePoint3d& world, const OdGeVector3d& normal) {
  OdGePoint3d p = odgeWcsToOcs(world, normal);
  return {p.x, p.y};
}

// Counter-clockwise angle from u to v in [0, 2π).
double ccwAngle(const OdGeVector2d& u, const OdGeVector2d& v) {
  double a = std::atan2(u.crossProduct(v), u.dotProduct(v));
  return a < 0 ? a + kTwoPi : a;
}

bool isTranslation(const OdGeMatrix3d& m) {
  return m(0, 0) == 1 && m(0, 1) == 0 && m(0, 2) == 0 && m(1, 0) == 0 && m(1, 1) == 1 && m(1, 2) == 0 &&
         m(2, 0) == 0 && m(2, 1) == 0 && m(2, 2) == 1;
}

// An absolute direction in the old plane, followed into the new plane.
double transformedPlaneAngle(double angle, const OdGeMatrix3d& xform, const OdGeVector3d& oldNormal,
                             const OdGeVector3d& newNormal) {
  OdGeVector3d direction = odgeOcsToWcs(OdGeVector3d(std::cos(angle), std::sin(angle), 0), oldNormal);
  return snappedAngle(odgeOcsAngle(xform * direction, newNormal));
}

}  // namespace

OdRxClass* odDbDimensionClassForType(int flags70) {
  switch (flags70 & 0x0F) {
    case OdDbDimension::kRotated: return OdDbRotatedDimension::desc();
    case OdDbDimension::kAligned: return OdDbAlignedDimension::desc();
    case OdDbDimension::kAngular2Line: return OdDb2LineAngularDimension::desc();
    case OdDbDimension::kDiametric: return OdDbDiametricDimension::desc();
    case OdDbDimension::kRadial: return OdDbRadialDimension::desc();
    case OdDbDimension::kAngular3Point: return OdDb3PointAngularDimension::desc();
    case OdDbDimension::kOrdinate: return OdDbOrdinateDimension::desc();
    default: return nullptr;
  }
}

// ---------------------------------------------------------------- schemas

const OdDbClassSchema& OdDbDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbDimension",
        {
            odField<&OdDbDimension::m_version>(280).since(OdDb::vAC24).named(L"version"),
            odNameField<&OdDbDimension::m_blockId>(2, OdDbNameTable::kBlock).named(L"block"),
            odField<&OdDbDimension::m_defPoint>(10).named(L"defPoint"),
            odField<&OdDbDimension::m_textPosition>(11).named(L"textPosition"),
            odField<&OdDbDimension::m_blockPosition>(12).optional().named(L"blockPosition"),
            odField<&OdDbDimension::m_flags>(70).named(L"flags"),
            odField<&OdDbDimension::m_attachment>(71).defaultsInt(5).named(L"attachment"),
            odField<&OdDbDimension::m_lineSpacingStyle>(72).optional().defaultsInt(1).named(
                L"lineSpacingStyle"),
            odField<&OdDbDimension::m_lineSpacingFactor>(41).optional().defaults(1.0).named(
                L"lineSpacingFactor"),
            odField<&OdDbDimension::m_measurement>(42).optional().named(L"measurement"),
            odField<&OdDbDimension::m_text>(1).optional().named(L"text"),
            odField<&OdDbDimension::m_textRotation>(53).optional().degrees().named(L"textRotation"),
            odField<&OdDbDimension::m_horizontalRotation>(51).optional().degrees().named(
                L"horizontalRotation"),
            odField<&OdDbDimension::m_normal>(210).optional().named(L"normal"),
            odNameField<&OdDbDimension::m_styleId>(3, OdDbNameTable::kDimStyle, L"Standard").named(L"style"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbAlignedDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbDimension::classSchema(),
      {{L"AcDbAlignedDimension",
        {
            odField<&OdDbAlignedDimension::m_xLine1Point>(13).named(L"xLine1Point"),
            odField<&OdDbAlignedDimension::m_xLine2Point>(14).named(L"xLine2Point"),
            odField<&OdDbAlignedDimension::m_oblique>(52).optional().degrees().named(L"oblique"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbRotatedDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbDimension::classSchema(),
      {{L"AcDbAlignedDimension",
        {
            odField<&OdDbRotatedDimension::m_xLine1Point>(13).named(L"xLine1Point"),
            odField<&OdDbRotatedDimension::m_xLine2Point>(14).named(L"xLine2Point"),
            odField<&OdDbRotatedDimension::m_rotation>(50).degrees().named(L"rotation"),
            odField<&OdDbRotatedDimension::m_oblique>(52).optional().degrees().named(L"oblique"),
        }},
       {L"AcDbRotatedDimension", {}}}};
  return schema;
}

const OdDbClassSchema& OdDb2LineAngularDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbDimension::classSchema(),
      {{L"AcDb2LineAngularDimension",
        {
            odField<&OdDb2LineAngularDimension::m_xLine1Start>(13).named(L"xLine1Start"),
            odField<&OdDb2LineAngularDimension::m_xLine1End>(14).named(L"xLine1End"),
            odField<&OdDb2LineAngularDimension::m_xLine2Start>(15).named(L"xLine2Start"),
            odField<&OdDb2LineAngularDimension::m_arcPoint>(16).named(L"arcPoint"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDb3PointAngularDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbDimension::classSchema(),
      {{L"AcDb3PointAngularDimension",
        {
            odField<&OdDb3PointAngularDimension::m_xLine1Point>(13).named(L"xLine1Point"),
            odField<&OdDb3PointAngularDimension::m_xLine2Point>(14).named(L"xLine2Point"),
            odField<&OdDb3PointAngularDimension::m_centerPoint>(15).named(L"centerPoint"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbDiametricDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbDimension::classSchema(),
      {{L"AcDbDiametricDimension",
        {
            odField<&OdDbDiametricDimension::m_chordPoint>(15).named(L"chordPoint"),
            odField<&OdDbDiametricDimension::m_leaderLength>(40).named(L"leaderLength"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbRadialDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbDimension::classSchema(),
      {{L"AcDbRadialDimension",
        {
            odField<&OdDbRadialDimension::m_chordPoint>(15).named(L"chordPoint"),
            odField<&OdDbRadialDimension::m_leaderLength>(40).named(L"leaderLength"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbOrdinateDimension::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbDimension::classSchema(),
      {{L"AcDbOrdinateDimension",
        {
            odField<&OdDbOrdinateDimension::m_definingPoint>(13).named(L"definingPoint"),
            odField<&OdDbOrdinateDimension::m_leaderEndPoint>(14).named(L"leaderEndPoint"),
        }}}};
  return schema;
}

// ---------------------------------------------------------------- dimension

OdDbDimension::OdDbDimension(int type) : m_flags(static_cast<OdInt16>(type | kBlockIsOwnedOnly)) {}

OdGePoint3d OdDbDimension::dimBlockPosition() const { return odgeOcsToWcs(m_blockPosition, m_normal); }

void OdDbDimension::setDimBlockPosition(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_blockPosition = odgeWcsToOcs(point, m_normal);
}

OdGePoint3d OdDbDimension::textPosition() const { return odgeOcsToWcs(m_textPosition, m_normal); }

void OdDbDimension::setTextPosition(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_textPosition = odgeWcsToOcs(point, m_normal);
  m_flags |= kUserTextPosition;
}

void OdDbDimension::useDefaultTextPosition() {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(m_flags & ~kUserTextPosition);
}

void OdDbDimension::useSetTextPosition() {
  assertWriteEnabled();
  m_flags |= kUserTextPosition;
}

void OdDbDimension::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  assertWriteEnabled();
  OdArray<OdGePoint3d*> planePoints;
  getPlanePoints(planePoints);
  planePoints.append(&m_textPosition);
  planePoints.append(&m_blockPosition);
  const OdGeVector3d newNormal = normal.normal();
  for (OdGePoint3d* p : planePoints) *p = odgeWcsToOcs(odgeOcsToWcs(*p, m_normal), newNormal);
  m_normal = newNormal;
  updateMeasurement();
}

void OdDbDimension::subSetDatabaseDefaults(OdDbDatabase* database) {
  if (m_styleId.isNull()) m_styleId = database->getDIMSTYLE();
}

OdGeMatrix3d OdDbDimension::blockTransform() const {
  return OdGeMatrix3d::planeToWorld(m_normal) * OdGeMatrix3d::translation(m_blockPosition.asVector());
}

void OdDbDimension::allDefiningPoints(OdGePoint3dArray& points) const {
  auto* self = const_cast<OdDbDimension*>(this);
  OdArray<OdGePoint3d*> world, plane;
  self->getWorldPoints(world);
  self->getPlanePoints(plane);
  points.clear();
  points.append(m_defPoint);
  points.append(textPosition());
  for (const OdGePoint3d* p : world) points.append(*p);
  for (const OdGePoint3d* p : plane) points.append(odgeOcsToWcs(*p, m_normal));
}

OdResult OdDbDimension::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  OdDbObjectPtr block = m_blockId.openObject();
  OdDbBlockWalk walk(m_blockId);  // a block that contains itself is measured once
  if (auto* record = dynamic_cast<OdDbBlockTableRecord*>(block.get()); record && walk.entered()) {
    const OdGeMatrix3d xform = blockTransform();
    for (const OdDbObjectId& id : record->entityIds()) {
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      OdGeExtents3d sub;
      if (entity.isNull() || entity->getGeomExtents(sub) != eOk || !sub.isValidExtents()) continue;
      extents.addExt(sub.transformBy(xform));
    }
  }
  if (!extents.isValidExtents()) {
    OdGePoint3dArray points;
    allDefiningPoints(points);
    extents.addPoints(points);
  }
  return eOk;
}

OdResult OdDbDimension::transformBy(const OdGeMatrix3d& xform) {
  const OdGeVector3d normal = transformedNormal(xform, m_normal);
  if (normal.isZeroLength()) return eCannotScaleNonUniformly;
  assertWriteEnabled();
  const OdGeMatrix3d oldBlockTransform = blockTransform();
  const bool turns = !isTranslation(xform);

  OdArray<OdGePoint3d*> world, plane;
  getWorldPoints(world);
  world.append(&m_defPoint);
  getPlanePoints(plane);
  plane.append(&m_textPosition);
  for (OdGePoint3d* p : world) p->transformBy(xform);
  for (OdGePoint3d* p : plane) *p = odgeWcsToOcs(odgeOcsToWcs(*p, m_normal).transformBy(xform), normal);
  if (turns) {
    OdArray<double*> angles;
    getPlaneAngles(angles);
    for (double* angle : angles) *angle = transformedPlaneAngle(*angle, xform, m_normal, normal);
    // Group 51 holds the negative of the drawing x axis's angle.
    if (m_horizontalRotation != 0) {
      m_horizontalRotation = -transformedPlaneAngle(-m_horizontalRotation, xform, m_normal, normal);
    }
  }
  m_normal = normal;
  updateMeasurement();

  // The picture goes along when the block belongs to this dimension alone:
  // its entities move, the block stays inserted where it was (readers that
  // ignore group 12 then still show it in place).
  if (database() && (m_flags & kBlockIsOwnedOnly)) {
    OdDbObjectPtr block = m_blockId.openObject();
    OdDbBlockWalk walk(m_blockId);
    if (auto* record = dynamic_cast<OdDbBlockTableRecord*>(block.get()); record && walk.entered()) {
      const OdGeMatrix3d toBlock = blockTransform().inverse() * xform * oldBlockTransform;
      for (const OdDbObjectId& id : record->entityIds()) {
        OdDbEntityPtr entity = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
        if (entity.get()) entity->transformBy(toBlock);
      }
    }
  }
  return eOk;
}

OdResult OdDbDimension::explode(OdRxObjectPtrArray& entities) const {
  return OdDbEntityGeometry::explodeBlockContents(m_blockId, blockTransform(), entities);
}

double OdDbDimension::distanceTo(const OdGePoint3d& point) const {
  double best = std::numeric_limits<double>::infinity();
  OdRxObjectPtrArray pieces;
  OdDbBlockWalk walk(m_blockId);
  if (walk.entered() && explode(pieces) == eOk) {
    for (const auto& piece : pieces)
      best = std::min(best, static_cast<OdDbEntity*>(piece.get())->distanceTo(point));
  }
  if (best == std::numeric_limits<double>::infinity()) {
    OdGePoint3dArray points;
    allDefiningPoints(points);
    for (const auto& p : points) best = std::min(best, point.distanceTo(p));
  }
  return best;
}

// ---------------------------------------------------------------- aligned

OdDbAlignedDimension::OdDbAlignedDimension(const OdGePoint3d& xLine1Point, const OdGePoint3d& xLine2Point,
                                           const OdGePoint3d& dimLinePoint, const OdString& text,
                                           const OdDbObjectId& styleId)
    : OdDbDimension(kAligned), m_xLine1Point(xLine1Point), m_xLine2Point(xLine2Point) {
  m_defPoint = dimLinePoint;
  m_text = text;
  m_styleId = styleId;
  updateMeasurement();
}

void OdDbAlignedDimension::setXLine1Point(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine1Point = point;
  updateMeasurement();
}

void OdDbAlignedDimension::setXLine2Point(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine2Point = point;
  updateMeasurement();
}

void OdDbAlignedDimension::setDimLinePoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_defPoint = point;
}

double OdDbAlignedDimension::measurement() const { return m_xLine1Point.distanceTo(m_xLine2Point); }

void OdDbAlignedDimension::getWorldPoints(OdArray<OdGePoint3d*>& points) {
  points = {&m_xLine1Point, &m_xLine2Point};
}

// ---------------------------------------------------------------- rotated

OdDbRotatedDimension::OdDbRotatedDimension(double rotation, const OdGePoint3d& xLine1Point,
                                           const OdGePoint3d& xLine2Point, const OdGePoint3d& dimLinePoint,
                                           const OdString& text, const OdDbObjectId& styleId)
    : OdDbDimension(kRotated), m_xLine1Point(xLine1Point), m_xLine2Point(xLine2Point), m_rotation(rotation) {
  m_defPoint = dimLinePoint;
  m_text = text;
  m_styleId = styleId;
  updateMeasurement();
}

void OdDbRotatedDimension::setXLine1Point(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine1Point = point;
  updateMeasurement();
}

void OdDbRotatedDimension::setXLine2Point(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine2Point = point;
  updateMeasurement();
}

void OdDbRotatedDimension::setDimLinePoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_defPoint = point;
}

void OdDbRotatedDimension::setRotation(double angle) {
  assertWriteEnabled();
  m_rotation = angle;
  updateMeasurement();
}

double OdDbRotatedDimension::measurement() const {
  OdGeVector3d direction =
      odgeOcsToWcs(OdGeVector3d(std::cos(m_rotation), std::sin(m_rotation), 0), m_normal);
  return std::fabs((m_xLine2Point - m_xLine1Point).dotProduct(direction));
}

void OdDbRotatedDimension::getWorldPoints(OdArray<OdGePoint3d*>& points) {
  points = {&m_xLine1Point, &m_xLine2Point};
}

// ---------------------------------------------------------------- angular from two lines

OdDb2LineAngularDimension::OdDb2LineAngularDimension(const OdGePoint3d& xLine1Start,
                                                     const OdGePoint3d& xLine1End,
                                                     const OdGePoint3d& xLine2Start,
                                                     const OdGePoint3d& xLine2End,
                                                     const OdGePoint3d& arcPoint, const OdString& text,
                                                     const OdDbObjectId& styleId)
    : OdDbDimension(kAngular2Line),
      m_xLine1Start(xLine1Start),
      m_xLine1End(xLine1End),
      m_xLine2Start(xLine2Start) {
  m_defPoint = xLine2End;
  m_arcPoint = odgeWcsToOcs(arcPoint, m_normal);
  m_text = text;
  m_styleId = styleId;
  updateMeasurement();
}

void OdDb2LineAngularDimension::setXLine1Start(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine1Start = point;
  updateMeasurement();
}

void OdDb2LineAngularDimension::setXLine1End(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine1End = point;
  updateMeasurement();
}

void OdDb2LineAngularDimension::setXLine2Start(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine2Start = point;
  updateMeasurement();
}

void OdDb2LineAngularDimension::setXLine2End(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_defPoint = point;
  updateMeasurement();
}

OdGePoint3d OdDb2LineAngularDimension::arcPoint() const { return odgeOcsToWcs(m_arcPoint, m_normal); }

void OdDb2LineAngularDimension::setArcPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_arcPoint = odgeWcsToOcs(point, m_normal);
  updateMeasurement();
}

double OdDb2LineAngularDimension::measurement() const {
  const OdGePoint2d a1 = inPlane(m_xLine1Start, m_normal), b1 = inPlane(m_xLine1End, m_normal);
  const OdGePoint2d a2 = inPlane(m_xLine2Start, m_normal), b2 = inPlane(m_defPoint, m_normal);
  const OdGeVector2d d1 = b1 - a1, d2 = b2 - a2;
  const double denominator = d1.crossProduct(d2);
  if (d1.isZeroLength() || d2.isZeroLength() || std::fabs(denominator) <= 1e-12 * d1.length() * d2.length())
    return 0;
  // The lines cross at the vertex; the arc point picks one of the four sectors.
  const OdGePoint2d vertex = a1 + d1 * ((a2 - a1).crossProduct(d2) / denominator);
  const OdGeVector2d toArc = OdGePoint2d(m_arcPoint.x, m_arcPoint.y) - vertex;
  const double between = ccwAngle(d1, d2) <= kTwoPi / 2 ? ccwAngle(d1, d2) : kTwoPi - ccwAngle(d1, d2);
  if (toArc.isZeroLength()) return between;
  for (double s1 : {1.0, -1.0}) {
    for (double s2 : {1.0, -1.0}) {
      OdGeVector2d u = d1 * s1, v = d2 * s2;
      if (ccwAngle(u, v) > kTwoPi / 2) std::swap(u, v);  // u to v counter-clockwise, under half a turn
      if (ccwAngle(u, toArc) <= ccwAngle(u, v)) return ccwAngle(u, v);
    }
  }
  return between;
}

void OdDb2LineAngularDimension::getWorldPoints(OdArray<OdGePoint3d*>& points) {
  points = {&m_xLine1Start, &m_xLine1End, &m_xLine2Start};
}

// ---------------------------------------------------------------- angular from three points

OdDb3PointAngularDimension::OdDb3PointAngularDimension(const OdGePoint3d& centerPoint,
                                                       const OdGePoint3d& xLine1Point,
                                                       const OdGePoint3d& xLine2Point,
                                                       const OdGePoint3d& arcPoint, const OdString& text,
                                                       const OdDbObjectId& styleId)
    : OdDbDimension(kAngular3Point),
      m_xLine1Point(xLine1Point),
      m_xLine2Point(xLine2Point),
      m_centerPoint(centerPoint) {
  m_defPoint = arcPoint;
  m_text = text;
  m_styleId = styleId;
  updateMeasurement();
}

void OdDb3PointAngularDimension::setCenterPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_centerPoint = point;
  updateMeasurement();
}

void OdDb3PointAngularDimension::setXLine1Point(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine1Point = point;
  updateMeasurement();
}

void OdDb3PointAngularDimension::setXLine2Point(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_xLine2Point = point;
  updateMeasurement();
}

void OdDb3PointAngularDimension::setArcPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_defPoint = point;
  updateMeasurement();
}

double OdDb3PointAngularDimension::measurement() const {
  const OdGePoint2d center = inPlane(m_centerPoint, m_normal);
  const OdGeVector2d u = inPlane(m_xLine1Point, m_normal) - center;
  const OdGeVector2d v = inPlane(m_xLine2Point, m_normal) - center;
  const OdGeVector2d w = inPlane(m_defPoint, m_normal) - center;
  if (u.isZeroLength() || v.isZeroLength()) return 0;
  const double sweep = ccwAngle(u, v);
  // The arc point on the other side measures the rest of the turn.
  if (w.isZeroLength() || ccwAngle(u, w) <= sweep) return sweep;
  return kTwoPi - sweep;
}

void OdDb3PointAngularDimension::getWorldPoints(OdArray<OdGePoint3d*>& points) {
  points = {&m_xLine1Point, &m_xLine2Point, &m_centerPoint};
}

// ---------------------------------------------------------------- diametric and radial

OdDbDiametricDimension::OdDbDiametricDimension(const OdGePoint3d& chordPoint,
                                               const OdGePoint3d& farChordPoint, double leaderLength,
                                               const OdString& text, const OdDbObjectId& styleId)
    : OdDbDimension(kDiametric), m_chordPoint(chordPoint), m_leaderLength(leaderLength) {
  m_defPoint = farChordPoint;
  m_text = text;
  m_styleId = styleId;
  updateMeasurement();
}

void OdDbDiametricDimension::setChordPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_chordPoint = point;
  updateMeasurement();
}

void OdDbDiametricDimension::setFarChordPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_defPoint = point;
  updateMeasurement();
}

OdDbRadialDimension::OdDbRadialDimension(const OdGePoint3d& center, const OdGePoint3d& chordPoint,
                                         double leaderLength, const OdString& text,
                                         const OdDbObjectId& styleId)
    : OdDbDimension(kRadial), m_chordPoint(chordPoint), m_leaderLength(leaderLength) {
  m_defPoint = center;
  m_text = text;
  m_styleId = styleId;
  updateMeasurement();
}

void OdDbRadialDimension::setCenter(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_defPoint = point;
  updateMeasurement();
}

void OdDbRadialDimension::setChordPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_chordPoint = point;
  updateMeasurement();
}

// ---------------------------------------------------------------- ordinate

OdDbOrdinateDimension::OdDbOrdinateDimension(bool useXAxis, const OdGePoint3d& definingPoint,
                                             const OdGePoint3d& leaderEndPoint, const OdString& text,
                                             const OdDbObjectId& styleId)
    : OdDbDimension(kOrdinate), m_definingPoint(definingPoint), m_leaderEndPoint(leaderEndPoint) {
  if (useXAxis) m_flags |= kOrdinateXType;
  m_text = text;
  m_styleId = styleId;
  updateMeasurement();
}

void OdDbOrdinateDimension::useXAxis() {
  assertWriteEnabled();
  m_flags |= kOrdinateXType;
  updateMeasurement();
}

void OdDbOrdinateDimension::useYAxis() {
  assertWriteEnabled();
  m_flags = static_cast<OdInt16>(m_flags & ~kOrdinateXType);
  updateMeasurement();
}

void OdDbOrdinateDimension::setOrigin(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_defPoint = point;
  updateMeasurement();
}

void OdDbOrdinateDimension::setDefiningPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_definingPoint = point;
  updateMeasurement();
}

void OdDbOrdinateDimension::setLeaderEndPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_leaderEndPoint = point;
}

double OdDbOrdinateDimension::measurement() const {
  // The drawing x axis makes the angle -(group 51) with the plane's x axis.
  const double xAngle = -m_horizontalRotation + (isUsingXAxis() ? 0.0 : kTwoPi / 4);
  OdGeVector3d axis = odgeOcsToWcs(OdGeVector3d(std::cos(xAngle), std::sin(xAngle), 0), m_normal);
  return std::fabs((m_definingPoint - m_defPoint).dotProduct(axis));
}
