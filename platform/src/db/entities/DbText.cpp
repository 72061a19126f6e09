#include "DbText.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbTagSupport.h"
#include "Ge/GeOcs.h"

ODDB_DEFINE_MEMBERS(OdDbText, OdDbEntity, L"TEXT")
ODDB_DEFINE_MEMBERS(OdDbAttributeDefinition, OdDbText, L"ATTDEF")
ODDB_DEFINE_MEMBERS(OdDbAttribute, OdDbText, L"ATTRIB")
ODDB_DEFINE_MEMBERS(OdDbMText, OdDbEntity, L"MTEXT")

namespace {

bool isFullWidth(wchar_t ch) {
  return (ch >= 0x1100 && ch <= 0x115F) || (ch >= 0x2E80 && ch <= 0xA4CF) || (ch >= 0xAC00 && ch <= 0xD7A3) ||
         (ch >= 0xF900 && ch <= 0xFAFF) || (ch >= 0xFE30 && ch <= 0xFE4F) || (ch >= 0xFF00 && ch <= 0xFF60) ||
         (ch >= 0xFFE0 && ch <= 0xFFE6) || (ch >= 0x20000 && ch <= 0x3FFFD);
}

bool hasEmbeddedObject(const OdDbObject* object) {
  const OdDbObjectExtras* extras = object->extras();
  if (!extras) return false;
  return std::any_of(extras->unknown.begin(), extras->unknown.end(), [](const auto& u) { return u.tag.code == 101; });
}

// Corners of a box given in a plane (OCS of normal), rotated about the origin point.
void boxCorners(const OdGePoint3d& originOcs, const OdGeVector3d& normal, double rotation, double x0, double y0, double x1,
                double y1, OdGePoint3dArray& points) {
  points.clear();
  const double c = std::cos(rotation), s = std::sin(rotation);
  const double xs[4] = {x0, x1, x1, x0};
  const double ys[4] = {y0, y0, y1, y1};
  for (int i = 0; i < 4; ++i) {
    OdGePoint3d ocs(originOcs.x + xs[i] * c - ys[i] * s, originOcs.y + xs[i] * s + ys[i] * c, originOcs.z);
    points.append(odgeOcsToWcs(ocs, normal));
  }
}

double distanceToQuad(const OdGePoint3dArray& quad, const OdGePoint3d& point) {
  // Inside the quadrilateral (projected on its plane): distance to the plane; else to its edges.
  OdGeVector3d u = quad[1] - quad[0], v = quad[3] - quad[0];
  OdGeVector3d n = u.crossProduct(v);
  double best = std::numeric_limits<double>::infinity();
  if (n.length() > 0) {
    OdGeVector3d w = point - quad[0];
    double uu = u.dotProduct(u), vv = v.dotProduct(v);
    double a = uu > 0 ? w.dotProduct(u) / uu : -1, b = vv > 0 ? w.dotProduct(v) / vv : -1;
    if (a >= 0 && a <= 1 && b >= 0 && b <= 1) return std::fabs(w.dotProduct(n.normal()));
  }
  for (int i = 0; i < 4; ++i) {
    const OdGePoint3d& p = quad[i];
    const OdGePoint3d& q = quad[(i + 1) % 4];
    OdGeVector3d d = q - p;
    double t = d.dotProduct(d) > 0 ? std::clamp((point - p).dotProduct(d) / d.dotProduct(d), 0.0, 1.0) : 0.0;
    best = std::min(best, point.distanceTo(p + d * t));
  }
  return best;
}

}  // namespace

void odDbTextBox(const OdString& text, double height, double widthFactor, OdGePoint3d& lowerLeft,
                 OdGePoint3d& upperRight) {
  double advance = 0;
  for (int i = 0; i < text.getLength(); ++i) {
    wchar_t ch = text[i];
    // "%%d", "%%p", "%%c" and "%%%" stand for one character each; "%%u"/"%%o" for none.
    if (ch == L'%' && i + 2 < text.getLength() && text[i + 1] == L'%') {
      wchar_t code = odToLower(text[i + 2]);
      i += 2;
      if (code == L'u' || code == L'o') continue;
      advance += 0.7;
      continue;
    }
    advance += isFullWidth(ch) ? 1.0 : 0.7;
  }
  lowerLeft = OdGePoint3d(0, 0, 0);
  upperRight = OdGePoint3d(advance * height * widthFactor, height, 0);
}

namespace {
// Text generation: mirrored in x (2), in y (4).
const OdInt64 kGenerationFlags[] = {0, 2, 4, 6};
}  // namespace

// ---------------------------------------------------------------- text

// The groups that single-line texts, attribute definitions and attributes
// share (the first AcDbText part). Vertical alignment differs: 73 in a
// second AcDbText part for texts, 74 in the attribute parts.
std::vector<OdDbField> OdDbText::textFields() {
  return {
      odField<&OdDbText::m_thickness>(39).optional().named(L"thickness"),
      odField<&OdDbText::m_position>(10).required().named(L"position"),
      odField<&OdDbText::m_height>(40).named(L"height"),
      odField<&OdDbText::m_text>(1).required().named(L"text"),
      odField<&OdDbText::m_rotation>(50).optional().degrees().named(L"rotation"),
      odField<&OdDbText::m_widthFactor>(41).optional().defaults(1.0).named(L"widthFactor"),
      odField<&OdDbText::m_oblique>(51).optional().degrees().named(L"oblique"),
      odNameField<&OdDbText::m_styleId>(7, OdDbNameTable::kTextStyle, L"Standard").optional().named(L"style"),
      odField<&OdDbText::m_generation>(71).optional().validValues(kGenerationFlags).named(L"generation"),
      odField<&OdDbText::m_horizontalMode>(72).optional().validRange(0, 5).named(L"horizontalMode"),
      odField<&OdDbText::m_alignmentPoint>(11).optional().named(L"alignmentPoint"),
      odField<&OdDbText::m_normal>(210).optional().named(L"normal"),
  };
}


const OdDbClassSchema& OdDbText::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbText", OdDbText::textFields()},
       {L"AcDbText", {odField<&OdDbText::m_verticalMode>(73).optional().validRange(0, 3).named(L"verticalMode")}}}};
  return schema;
}

OdGePoint3d OdDbText::position() const { return odgeOcsToWcs(m_position, m_normal); }
void OdDbText::setPosition(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_position = odgeWcsToOcs(point, m_normal);
}
OdGePoint3d OdDbText::alignmentPoint() const { return odgeOcsToWcs(m_alignmentPoint, m_normal); }
void OdDbText::setAlignmentPoint(const OdGePoint3d& point) {
  assertWriteEnabled();
  m_alignmentPoint = odgeWcsToOcs(point, m_normal);
}
void OdDbText::setNormal(const OdGeVector3d& normal) {
  assertWriteEnabled();
  if (normal.isZeroLength()) return;
  OdGePoint3d position = this->position(), alignment = alignmentPoint();
  m_normal = normal.normal();
  m_position = odgeWcsToOcs(position, m_normal);
  m_alignmentPoint = odgeWcsToOcs(alignment, m_normal);
}

void OdDbText::mirrorInX(bool on) {
  assertWriteEnabled();
  m_generation = static_cast<OdInt16>(on ? (m_generation | 2) : (m_generation & ~2));
}

void OdDbText::mirrorInY(bool on) {
  assertWriteEnabled();
  m_generation = static_cast<OdInt16>(on ? (m_generation | 4) : (m_generation & ~4));
}

void OdDbText::subSetDatabaseDefaults(OdDbDatabase* database) {
  if (m_styleId.isNull()) m_styleId = database->entityDefaults().textStyle;
  if (m_height == 0) m_height = database->entityDefaults().textSize;
}

void OdDbText::getBoundingPoints(OdGePoint3dArray& points) const {
  OdGePoint3d lo, hi;
  odDbTextBox(m_text, m_height, m_widthFactor, lo, hi);
  const double width = hi.x;
  // The box is placed by the alignment: left/center/right and baseline/bottom/middle/top.
  OdGePoint3d origin = isDefaultAlignment() ? m_position : m_alignmentPoint;
  double x0 = 0, y0 = 0;
  switch (m_horizontalMode) {
    case OdDb::kTextCenter: x0 = -width / 2; break;
    case OdDb::kTextRight: x0 = -width; break;
    case OdDb::kTextMid: x0 = -width / 2; y0 = -m_height / 2; break;
    case OdDb::kTextAlign:
    case OdDb::kTextFit: origin = m_position; break;
    default: break;
  }
  if (m_horizontalMode != OdDb::kTextMid) {
    switch (m_verticalMode) {
      case OdDb::kTextBottom: y0 = 0; break;
      case OdDb::kTextVertMid: y0 = -m_height / 2; break;
      case OdDb::kTextTop: y0 = -m_height; break;
      default: break;
    }
  }
  double x1 = x0 + width;
  if (m_horizontalMode == OdDb::kTextAlign || m_horizontalMode == OdDb::kTextFit) {
    x1 = x0 + std::hypot(m_alignmentPoint.x - m_position.x, m_alignmentPoint.y - m_position.y);
  }
  boxCorners(origin, m_normal, m_rotation, x0, y0, x1, y0 + m_height, points);
}

OdResult OdDbText::getGeomExtents(OdGeExtents3d& extents) const {
  OdGePoint3dArray points;
  getBoundingPoints(points);
  extents = OdGeExtents3d();
  for (const auto& p : points) extents.addPoint(p);
  return eOk;
}

double OdDbText::distanceTo(const OdGePoint3d& point) const {
  OdGePoint3dArray points;
  getBoundingPoints(points);
  return distanceToQuad(points, point);
}

OdResult OdDbText::transformBy(const OdGeMatrix3d& xform) {
  assertWriteEnabled();
  // Work in world coordinates, then return to the (possibly new) plane.
  OdGePoint3d position = odgeOcsToWcs(m_position, m_normal);
  OdGePoint3d alignment = odgeOcsToWcs(m_alignmentPoint, m_normal);
  OdGeVector3d xDir = odgeOcsToWcs(OdGeVector3d(std::cos(m_rotation), std::sin(m_rotation), 0), m_normal);
  OdGeVector3d yDir = m_normal.crossProduct(xDir);
  position.transformBy(xform);
  alignment.transformBy(xform);
  xDir.transformBy(xform);
  yDir.transformBy(xform);
  OdGeVector3d normal = xDir.crossProduct(yDir);
  if (normal.isZeroLength() || xDir.isZeroLength()) return eCannotScaleNonUniformly;
  normal.normalize();
  m_height *= yDir.length();
  m_widthFactor *= xDir.length() / (yDir.length() > 0 ? yDir.length() : 1.0);
  m_normal = normal;
  m_position = odgeWcsToOcs(position, m_normal);
  m_alignmentPoint = odgeWcsToOcs(alignment, m_normal);
  m_rotation = odgeOcsAngle(xDir, m_normal);
  return eOk;
}

// ---------------------------------------------------------------- attribute definition

template <class T>
std::vector<OdDbField> odDbAttributeFields() {
  std::vector<OdDbField> fields{odField<&T::m_version>(280).since(OdDb::vAC24).named(L"version")};
  if constexpr (std::is_same_v<T, OdDbAttributeDefinition>) fields.push_back(odField<&T::m_prompt>(3).named(L"prompt"));
  for (OdDbField field : {
           odField<&T::m_tag>(2).required().named(L"tag"),
           odField<&T::m_attFlags>(70).named(L"flags"),
           odField<&T::m_fieldLength>(73).optional().named(L"fieldLength"),
           odField<&T::m_verticalMode>(74).optional().validRange(0, 3).named(L"verticalMode"),
           odField<&T::m_lockPosition>(280).optional().since(OdDb::vAC18).named(L"lockPosition"),
       }) {
    fields.push_back(field);
  }
  return fields;
}

const OdDbClassSchema& OdDbAttributeDefinition::classSchema() {
  // A definition may leave its default value (group 1) out.
  auto attributeDefinitionTextFields = [] {
    std::vector<OdDbField> fields = OdDbText::textFields();
    for (OdDbField& field : fields) {
      if (field.code == 1) field.flags &= static_cast<OdUInt16>(~OdDbField::kRequired);
    }
    return fields;
  };
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(),
                                      {{L"AcDbText", attributeDefinitionTextFields()},
                                       {L"AcDbAttributeDefinition", odDbAttributeFields<OdDbAttributeDefinition>()}}};
  return schema;
}

bool OdDbAttributeDefinition::isMTextAttributeDefinition() const { return hasEmbeddedObject(this); }

// ---------------------------------------------------------------- attribute

const OdDbClassSchema& OdDbAttribute::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(),
                                      {{L"AcDbText", OdDbText::textFields()},
                                       {L"AcDbAttribute", odDbAttributeFields<OdDbAttribute>()}}};
  return schema;
}

bool OdDbAttribute::isMTextAttribute() const { return hasEmbeddedObject(this); }

OdDbMTextPtr OdDbAttribute::getMTextAttribute() const {
  const OdDbObjectExtras* extras = this->extras();
  if (!extras) return OdDbMTextPtr();
  // The groups after "101 Embedded Object" are a multiline text's own groups.
  OdDxfTagList tags;
  bool inside = false;
  for (const auto& u : extras->unknown) {
    if (u.tag.code == 101) { inside = true; continue; }
    if (inside) tags.push_back(u.tag);
  }
  if (!inside) return OdDbMTextPtr();
  OdDbMTextPtr mtext = OdDbMText::createObject();
  OdDbDatabaseTagContext ctx(database());
  std::vector<OdDxfTag> body;
  body.push_back(OdDxfTag::str(100, L"AcDbMText"));
  body.insert(body.end(), tags.begin(), tags.end());
  OdDbSchemaIo::readFields(mtext.get(), body.data(), body.data() + body.size(), ctx);
  mtext->setPropertiesFrom(this);
  return mtext;
}

void OdDbAttribute::setMTextAttribute(const OdDbMText* mtext) {
  assertWriteEnabled();
  OdDbObjectExtras& extras = extrasForWrite();
  std::erase_if(extras.unknown, [](const auto& u) { return u.subclass == 2 && u.afterField >= 5; });
  if (!mtext) return;
  OdDbDatabaseTagContext ctx(database());
  OdDxfTagList all;
  OdDbSchemaIo::writeFields(mtext, all, ctx, true);
  // Keep only the multiline text's own part, after its subclass marker.
  auto start = std::find_if(all.begin(), all.end(), [](const auto& t) { return t.code == 100 && t.s == L"AcDbMText"; });
  extras.unknown.push_back({2, 5, OdDxfTag::str(101, L"Embedded Object")});
  if (start != all.end()) {
    for (auto it = start + 1; it != all.end(); ++it) extras.unknown.push_back({2, 5, *it});
  }
  m_text = mtext->text();
}

void OdDbAttribute::convertIntoMTextAttribute(bool on) {
  if (on == isMTextAttribute()) return;
  if (!on) {
    setMTextAttribute(nullptr);
    return;
  }
  OdDbMTextPtr mtext = OdDbMText::createObject();
  mtext->setContents(m_text);
  mtext->setTextHeight(m_height);
  mtext->setNormal(m_normal);
  mtext->setLocation(position());
  mtext->setRotation(m_rotation);
  mtext->setTextStyle(m_styleId);
  setMTextAttribute(mtext.get());
}

OdString OdDbAttribute::value() const {
  if (isMTextAttribute()) {
    if (OdDbMTextPtr mtext = getMTextAttribute()) return mtext->contents();
  }
  return m_text;
}

void OdDbAttribute::setAttributeFromBlock(const OdDbAttributeDefinition* definition, const OdGeMatrix3d& blockTransform) {
  assertWriteEnabled();
  setPropertiesFrom(definition);
  // Same plane as the definition: the stored (plane) coordinates carry over as they are.
  m_thickness = definition->m_thickness;
  m_position = definition->m_position;
  m_height = definition->m_height;
  m_text = definition->m_text;
  m_rotation = definition->m_rotation;
  m_widthFactor = definition->m_widthFactor;
  m_oblique = definition->m_oblique;
  m_styleId = definition->m_styleId;
  m_generation = definition->m_generation;
  m_horizontalMode = definition->m_horizontalMode;
  m_verticalMode = definition->m_verticalMode;
  m_alignmentPoint = definition->m_alignmentPoint;
  m_normal = definition->m_normal;
  m_tag = definition->tag();
  m_attFlags = static_cast<OdInt16>((definition->isInvisible() ? 1 : 0) | (definition->isConstant() ? 2 : 0) |
                                    (definition->isVerifiable() ? 4 : 0) | (definition->isPreset() ? 8 : 0));
  m_fieldLength = definition->fieldLength();
  m_lockPosition = definition->lockPositionInBlock() ? 1 : 0;
  transformBy(blockTransform);
}

// ---------------------------------------------------------------- multiline text

// Groups 3 (chunks of 250 characters) and 1 (the last part) carry the contents.
struct OdDbMTextContentsCodec : OdDbFieldCodec {
  static constexpr int kChunk = 250;
  std::vector<int> codes() const override { return {3, 1}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const OdString& text = static_cast<const OdDbMText*>(object)->m_contents;
    int pos = 0;
    while (text.getLength() - pos > kChunk) {
      out.push_back(OdDxfTag::str(3, text.mid(pos, kChunk)));
      pos += kChunk;
    }
    out.push_back(OdDxfTag::str(1, text.mid(pos)));
  }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const override {
    auto* mtext = static_cast<OdDbMText*>(object);
    OdInt64& state = ctx.codecState(this);  // 0 nothing read, 1 chunks, 2 final part read
    if (state == 2) return false;
    if (state == 0) mtext->m_contents.empty();
    mtext->m_contents += tag.s;
    state = tag.code == 1 ? 2 : 1;
    return true;
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override {
    filer->wrString(static_cast<const OdDbMText*>(object)->m_contents);
  }
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override {
    static_cast<OdDbMText*>(object)->m_contents = filer->rdString();
  }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    return static_cast<const OdDbMText*>(a)->m_contents == static_cast<const OdDbMText*>(b)->m_contents;
  }
};

// Group 11 (direction) and group 50 (rotation, used when a file has no
// direction). Files with columns repeat 50 for column heights after group
// 75, so 50 is only a rotation before any 75.
struct OdDbMTextDirectionCodec : OdDbFieldCodec {
  std::vector<int> codes() const override { return {11, 50, 75}; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    const OdGeVector3d& d = static_cast<const OdDbMText*>(object)->m_direction;
    if (d.x != 1 || d.y != 0 || d.z != 0) out.push_back(OdDxfTag::point(11, d.x, d.y, d.z));
  }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const override {
    auto* mtext = static_cast<OdDbMText*>(object);
    OdInt64& state = ctx.codecState(this);  // bit 1: direction read, bit 2: columns started
    if (tag.code == 75) {
      state |= 2;
      return false;
    }
    if (tag.code == 11) {
      if (tag.type != OdDxf::ValueType::kPoint) return false;
      mtext->m_direction.set(tag.x, tag.y, tag.dims == 3 ? tag.z : 0.0);
      state |= 1;
      return true;
    }
    if (state & 2) return false;
    if (!(state & 1)) {
      double angle = odDegreesToRadians(tag.x);
      mtext->m_direction = odgeOcsToWcs(OdGeVector3d(std::cos(angle), std::sin(angle), 0), mtext->m_normal);
    }
    // A rotation given beside a direction is redundant: keep it as read.
    return !(state & 1);
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override {
    filer->wrVector3d(static_cast<const OdDbMText*>(object)->m_direction);
  }
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override {
    static_cast<OdDbMText*>(object)->m_direction = filer->rdVector3d();
  }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    const auto& p = static_cast<const OdDbMText*>(a)->m_direction;
    const auto& q = static_cast<const OdDbMText*>(b)->m_direction;
    return p.x == q.x && p.y == q.y && p.z == q.z;
  }
};

const OdDbClassSchema& OdDbMText::classSchema() {
  static const OdDbMTextContentsCodec contents;
  static const OdDbMTextDirectionCodec direction;
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbMText",
        {
            odField<&OdDbMText::m_location>(10).required().named(L"location"),
            odField<&OdDbMText::m_textHeight>(40).named(L"textHeight"),
            odField<&OdDbMText::m_width>(41).named(L"width"),
            odField<&OdDbMText::m_attachment>(71).defaultsInt(kTopLeft).validRange(1, 9).named(L"attachment"),
            odField<&OdDbMText::m_flowDirection>(72).defaultsInt(kLtoR).validRange(kLtoR, kByStyle).named(L"flowDirection"),
            odCustomField(contents, L"contents"),
            odNameField<&OdDbMText::m_styleId>(7, OdDbNameTable::kTextStyle, L"Standard").optional().named(L"style"),
            odField<&OdDbMText::m_normal>(210).optional().named(L"normal"),
            odCustomField(direction, L"direction"),
            odField<&OdDbMText::m_lineSpacingStyle>(73).optional().defaultsInt(1).validRange(1, 2).named(L"lineSpacingStyle"),
            odField<&OdDbMText::m_lineSpacingFactor>(44).optional().defaults(1.0).named(L"lineSpacingFactor"),
            odField<&OdDbMText::m_backgroundFlags>(90).optional().since(OdDb::vAC18).named(L"backgroundFlags"),
            odField<&OdDbMText::m_backgroundColorIndex>(63).optional().since(OdDb::vAC18).named(L"backgroundColor"),
            odField<&OdDbMText::m_backgroundTrueColor>(421).optional().since(OdDb::vAC18).named(L"backgroundTrueColor"),
            odField<&OdDbMText::m_backgroundScale>(45).optional().defaults(1.5).since(OdDb::vAC18).named(L"backgroundScale"),
            odField<&OdDbMText::m_backgroundTransparency>(441).optional().since(OdDb::vAC18).named(L"backgroundTransparency"),
        }}}};
  return schema;
}

OdGeVector3d OdDbMText::direction() const { return m_direction; }

void OdDbMText::setDirection(const OdGeVector3d& direction) {
  assertWriteEnabled();
  if (!direction.isZeroLength()) m_direction = direction.normal();
}

double OdDbMText::rotation() const { return odgeOcsAngle(m_direction, m_normal); }

void OdDbMText::setRotation(double angle) {
  assertWriteEnabled();
  m_direction = odgeOcsToWcs(OdGeVector3d(std::cos(angle), std::sin(angle), 0), m_normal);
}

void OdDbMText::setBackgroundFill(bool on) {
  assertWriteEnabled();
  m_backgroundFlags = on ? (m_backgroundFlags | 1) : (m_backgroundFlags & ~1);
}

void OdDbMText::setUseBackgroundColor(bool on) {
  assertWriteEnabled();
  m_backgroundFlags = on ? (m_backgroundFlags | 2) : (m_backgroundFlags & ~2);
}

OdCmColor OdDbMText::getBackgroundFillColor() const {
  OdCmEntityColor color = OdCmEntityColor::fromIndex(m_backgroundColorIndex ? m_backgroundColorIndex : 256);
  if (m_backgroundTrueColor) {
    color.setRGB(static_cast<OdUInt8>(m_backgroundTrueColor >> 16), static_cast<OdUInt8>(m_backgroundTrueColor >> 8),
                 static_cast<OdUInt8>(m_backgroundTrueColor));
  }
  return OdCmColor(color);
}

void OdDbMText::setBackgroundFillColor(const OdCmColor& color) {
  assertWriteEnabled();
  m_backgroundColorIndex = color.colorIndex();
  m_backgroundTrueColor = color.isByColor() ? static_cast<OdInt32>(color.entityColor().trueColor()) : 0;
}

void OdDbMText::setBackgroundScaleFactor(double scale) {
  assertWriteEnabled();
  m_backgroundScale = scale;
}

OdString OdDbMText::text() const {
  // Strips formatting codes: "\P" becomes a line break, "\~" a space,
  // "\X;" groups and braces disappear, "\\", "\{", "\}" stay as characters.
  OdString out;
  const OdString& s = m_contents;
  for (int i = 0; i < s.getLength(); ++i) {
    wchar_t ch = s[i];
    if (ch == L'{' || ch == L'}') continue;
    if (ch != L'\\' || i + 1 >= s.getLength()) {
      out += ch;
      continue;
    }
    wchar_t code = s[++i];
    switch (code) {
      case L'P': case L'p': out += L'\n'; break;
      case L'~': out += L' '; break;
      case L'\\': case L'{': case L'}': out += code; break;
      case L'L': case L'l': case L'O': case L'o': case L'K': case L'k': break;
      case L'S': {
        // Stacked text "\Sa^b;" shows as "a/b".
        int end = s.find(L';', i);
        OdString stack = s.mid(i + 1, end < 0 ? -1 : end - i - 1);
        stack.replace(L'^', L'/');
        stack.replace(L'#', L'/');
        out += stack;
        i = end < 0 ? s.getLength() : end;
        break;
      }
      default: {
        // Codes with an argument up to ";" (\A, \C, \F, \H, \Q, \T, \W and the like).
        int end = s.find(L';', i);
        i = end < 0 ? s.getLength() : end;
        break;
      }
    }
  }
  return out;
}

double OdDbMText::actualWidth() const {
  double widest = 0;
  OdString plain = text();
  int start = 0;
  while (start <= plain.getLength()) {
    int end = plain.find(L'\n', start);
    OdString line = plain.mid(start, end < 0 ? -1 : end - start);
    OdGePoint3d lo, hi;
    odDbTextBox(line, m_textHeight, 1.0, lo, hi);
    widest = std::max(widest, hi.x);
    if (end < 0) break;
    start = end + 1;
  }
  return widest;
}

double OdDbMText::actualHeight() const {
  OdString plain = text();
  int lines = 1;
  for (int i = 0; i < plain.getLength(); ++i) lines += plain[i] == L'\n' ? 1 : 0;
  return m_textHeight * (1.0 + (lines - 1) * 5.0 / 3.0 * m_lineSpacingFactor);
}

void OdDbMText::getBoundingPoints(OdGePoint3dArray& points) const {
  const double w = m_width > 0 ? m_width : actualWidth();
  const double h = actualHeight();
  const int column = (m_attachment - 1) % 3;  // 0 left, 1 center, 2 right
  const int row = (m_attachment - 1) / 3;     // 0 top, 1 middle, 2 bottom
  const double x0 = -w * column / 2.0;
  const double y1 = h * row / 2.0;
  OdGeVector3d xDir = m_direction.isZeroLength() ? OdGeVector3d(1, 0, 0) : m_direction.normal();
  OdGeVector3d yDir = m_normal.normal().crossProduct(xDir);
  points.clear();
  const double xs[4] = {x0, x0 + w, x0 + w, x0};
  const double ys[4] = {y1 - h, y1 - h, y1, y1};
  for (int i = 0; i < 4; ++i) points.append(m_location + xDir * xs[i] + yDir * ys[i]);
}

OdResult OdDbMText::getGeomExtents(OdGeExtents3d& extents) const {
  OdGePoint3dArray points;
  getBoundingPoints(points);
  extents = OdGeExtents3d();
  for (const auto& p : points) extents.addPoint(p);
  return eOk;
}

double OdDbMText::distanceTo(const OdGePoint3d& point) const {
  OdGePoint3dArray points;
  getBoundingPoints(points);
  return distanceToQuad(points, point);
}

OdResult OdDbMText::transformBy(const OdGeMatrix3d& xform) {
  assertWriteEnabled();
  OdGeVector3d xDir = m_direction.isZeroLength() ? OdGeVector3d(1, 0, 0) : m_direction.normal();
  OdGeVector3d yDir = m_normal.normal().crossProduct(xDir);
  m_location.transformBy(xform);
  xDir.transformBy(xform);
  yDir.transformBy(xform);
  OdGeVector3d normal = xDir.crossProduct(yDir);
  if (normal.isZeroLength()) return eCannotScaleNonUniformly;
  double scale = yDir.length();
  m_textHeight *= scale;
  m_width *= xDir.length();
  m_direction = xDir.normal();
  m_normal = normal.normal();
  return eOk;
}

void OdDbMText::subSetDatabaseDefaults(OdDbDatabase* database) {
  if (m_styleId.isNull()) m_styleId = database->entityDefaults().textStyle;
  if (m_textHeight == 0) m_textHeight = database->entityDefaults().textSize;
}
