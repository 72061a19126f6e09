#include "DbRasterImage.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbRasterImage, OdDbEntity, L"IMAGE")
ODDB_DEFINE_MEMBERS(OdDbWipeout, OdDbRasterImage, L"WIPEOUT")

using namespace OdDbEntityGeometry;

std::vector<OdDbField> OdDbRasterImage::imageFields() {
  // Group 91 (vertex count) and the 14 groups of the clip boundary.
  static const OdDbField clipList = odValueArrayField<&OdDbRasterImage::m_clipVertices>(14, L"clipVertices");
  static const OdDbRecordCodec clipCodec({odCountField<&OdDbRasterImage::m_clipVertices>(91, clipList), clipList});
  return {
      odField<&OdDbRasterImage::m_classVersion>(90).named(L"classVersion"),
      odField<&OdDbRasterImage::m_origin>(10).named(L"origin"),
      odField<&OdDbRasterImage::m_uPixel>(11).defaults(1, 0, 0).named(L"uPixel"),
      odField<&OdDbRasterImage::m_vPixel>(12).defaults(0, 1, 0).named(L"vPixel"),
      odField<&OdDbRasterImage::m_imageSize>(13).defaults(1, 1, 0).named(L"imageSize"),
      odField<&OdDbRasterImage::m_imageDefId>(340, OdDbFieldKind::kHardPointer).named(L"imageDef"),
      odField<&OdDbRasterImage::m_displayFlags>(70).defaultsInt(kShow | kShowUnAligned).named(L"displayFlags"),
      odField<&OdDbRasterImage::m_clipping>(280).named(L"clipping"),
      odField<&OdDbRasterImage::m_brightness>(281).defaultsInt(50).named(L"brightness"),
      odField<&OdDbRasterImage::m_contrast>(282).defaultsInt(50).named(L"contrast"),
      odField<&OdDbRasterImage::m_fade>(283).named(L"fade"),
      odField<&OdDbRasterImage::m_reactorId>(360, OdDbFieldKind::kHardOwner).named(L"reactor"),
      odField<&OdDbRasterImage::m_clipType>(71).defaultsInt(kRect).named(L"clipType"),
      odCustomField(clipCodec, L"clipBoundary"),
      odField<&OdDbRasterImage::m_clipInverted>(290).since(OdDb::vAC24).named(L"clipInverted"),
  };
}

const OdDbClassSchema& OdDbRasterImage::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {{L"AcDbRasterImage", imageFields()}}};
  return schema;
}

namespace {

// Files write a wipeout's groups under the single marker AcDbWipeout. A
// file that puts them under AcDbRasterImage first leaves them unknown at
// the first pass; they are read again here under the wipeout's marker.
void readImageMarkerForm(OdDbObject* object, OdDbTagContext& ctx) {
  OdDbObjectExtras* extras = object->extras();
  if (!extras) return;
  auto& unknown = extras->unknown;
  auto marker = std::find_if(unknown.begin(), unknown.end(), [](const auto& u) {
    return u.tag.code == 100 && u.tag.s.iCompare(L"AcDbRasterImage") == 0;
  });
  if (marker == unknown.end()) return;
  std::vector<OdDxfTag> body{OdDxfTag::str(100, L"AcDbWipeout")};
  for (auto it = marker + 1; it != unknown.end(); ++it) {
    if (!(it->tag.code == 100 && it->tag.s.iCompare(L"AcDbWipeout") == 0)) body.push_back(it->tag);
  }
  unknown.erase(marker, unknown.end());
  OdDbSchemaIo::readFields(object, body.data(), body.data() + body.size(), ctx);
}

}  // namespace

const OdDbClassSchema& OdDbWipeout::classSchema() {
  // A wipeout is shown clipped: the image fields with its own defaults.
  static const std::vector<OdDbField> fields = [] {
    std::vector<OdDbField> image = imageFields();
    for (OdDbField& field : image) {
      if (field.code == 70) field.defaultsInt(kShow | kShowUnAligned | kClip);
      if (field.code == 280) field.defaultsInt(1);
    }
    return image;
  }();
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(), {{L"AcDbWipeout", fields}}, {&readImageMarkerForm, nullptr}};
  return schema;
}

// ---------------------------------------------------------------- image

void OdDbRasterImage::getOrientation(OdGePoint3d& origin, OdGeVector3d& u, OdGeVector3d& v) const {
  origin = m_origin;
  u = m_uPixel * m_imageSize.x;
  v = m_vPixel * m_imageSize.y;
}

OdResult OdDbRasterImage::setOrientation(const OdGePoint3d& origin, const OdGeVector3d& u,
                                         const OdGeVector3d& v) {
  if (u.isZeroLength() || v.isZeroLength() || u.isParallelTo(v)) return eInvalidInput;
  if (m_imageSize.x <= 0 || m_imageSize.y <= 0) return eInvalidInput;
  assertWriteEnabled();
  m_origin = origin;
  m_uPixel = u / m_imageSize.x;
  m_vPixel = v / m_imageSize.y;
  return eOk;
}

void OdDbRasterImage::setImageSize(const OdGeVector2d& size) {
  if (size.x <= 0 || size.y <= 0) return;
  assertWriteEnabled();
  // The image keeps its place and extent: the pixel vectors change.
  m_uPixel *= m_imageSize.x / size.x;
  m_vPixel *= m_imageSize.y / size.y;
  m_imageSize.set(size.x, size.y);
}

void OdDbRasterImage::setDisplayOpt(ImageDisplayOpt option, bool on) {
  assertWriteEnabled();
  m_displayFlags = static_cast<OdInt16>(on ? (m_displayFlags | option) : (m_displayFlags & ~option));
}

OdResult OdDbRasterImage::setBrightness(OdInt8 value) {
  if (value < 0 || value > 100) return eOutOfRange;
  assertWriteEnabled();
  m_brightness = value;
  return eOk;
}

OdResult OdDbRasterImage::setContrast(OdInt8 value) {
  if (value < 0 || value > 100) return eOutOfRange;
  assertWriteEnabled();
  m_contrast = value;
  return eOk;
}

OdResult OdDbRasterImage::setFade(OdInt8 value) {
  if (value < 0 || value > 100) return eOutOfRange;
  assertWriteEnabled();
  m_fade = value;
  return eOk;
}

void OdDbRasterImage::setClipped(bool on) {
  assertWriteEnabled();
  m_clipping = on ? 1 : 0;
  m_displayFlags = static_cast<OdInt16>(on ? (m_displayFlags | kClip) : (m_displayFlags & ~kClip));
}

OdResult OdDbRasterImage::setClipBoundary(ClipBoundaryType type, const OdGePoint2dArray& points) {
  if ((type == kRect && points.size() != 2) || (type == kPoly && points.size() < 3) || type == kInvalid) {
    return eInvalidInput;
  }
  assertWriteEnabled();
  m_clipType = static_cast<OdInt16>(type);
  m_clipVertices = points;
  return eOk;
}

void OdDbRasterImage::setClipBoundaryToWholeImage() {
  assertWriteEnabled();
  m_clipType = kRect;
  m_clipVertices = {OdGePoint2d(-0.5, -0.5), OdGePoint2d(m_imageSize.x - 0.5, m_imageSize.y - 0.5)};
}

OdGePoint3d OdDbRasterImage::pixelToWorld(const OdGePoint2d& pixel) const {
  return m_origin + m_uPixel * (pixel.x + 0.5) + m_vPixel * (m_imageSize.y - pixel.y - 0.5);
}

OdGePoint2d OdDbRasterImage::worldToPixel(const OdGePoint3d& point) const {
  // Coordinates along u and v (which need not be perpendicular).
  const OdGeVector3d d = point - m_origin;
  const double uu = m_uPixel.dotProduct(m_uPixel), uv = m_uPixel.dotProduct(m_vPixel),
               vv = m_vPixel.dotProduct(m_vPixel);
  const double du = d.dotProduct(m_uPixel), dv = d.dotProduct(m_vPixel);
  const double det = uu * vv - uv * uv;
  if (det == 0) return OdGePoint2d();
  const double a = (du * vv - dv * uv) / det, b = (dv * uu - du * uv) / det;
  return {a - 0.5, m_imageSize.y - b - 0.5};
}

void OdDbRasterImage::outlineInPixels(OdGePoint2dArray& points) const {
  points.clear();
  const bool clipped = m_clipping != 0 && m_clipVertices.size() >= 2;
  if (clipped && m_clipType == kPoly && m_clipVertices.size() >= 3) {
    points = m_clipVertices;
  } else {
    OdGePoint2d lo(-0.5, -0.5), hi(m_imageSize.x - 0.5, m_imageSize.y - 0.5);
    if (clipped) {
      lo = m_clipVertices[0];
      hi = m_clipVertices[1];
    }
    points = {lo, OdGePoint2d(hi.x, lo.y), hi, OdGePoint2d(lo.x, hi.y)};
  }
  if (points.first().x != points.last().x || points.first().y != points.last().y)
    points.append(points.first());
}

OdResult OdDbRasterImage::getVertices(OdGePoint3dArray& vertices) const {
  OdGePoint2dArray pixels;
  outlineInPixels(pixels);
  vertices.clear();
  for (const auto& p : pixels) vertices.append(pixelToWorld(p));
  return eOk;
}

OdResult OdDbRasterImage::getGeomExtents(OdGeExtents3d& extents) const {
  OdGePoint3dArray vertices;
  getVertices(vertices);
  extents = OdGeExtents3d();
  extents.addPoints(vertices);
  return eOk;
}

OdResult OdDbRasterImage::transformBy(const OdGeMatrix3d& xform) {
  const OdGeVector3d u = xform * m_uPixel, v = xform * m_vPixel;
  if (u.isZeroLength() || v.isZeroLength() || u.isParallelTo(v)) return eCannotScaleNonUniformly;
  assertWriteEnabled();
  m_origin.transformBy(xform);
  m_uPixel = u;
  m_vPixel = v;
  return eOk;
}

double OdDbRasterImage::distanceTo(const OdGePoint3d& point) const {
  OdGePoint2dArray outline;
  outlineInPixels(outline);
  OdGeVector3d normal = m_uPixel.crossProduct(m_vPixel);
  if (normal.isZeroLength()) return std::numeric_limits<double>::infinity();
  normal.normalize();
  // Inside the outline the image covers the point's foot on its plane.
  const double height = (point - m_origin).dotProduct(normal);
  if (isInsidePolygon(worldToPixel(point - normal * height), outline)) return std::fabs(height);
  double best = std::numeric_limits<double>::infinity();
  for (size_t i = 1; i < outline.size(); ++i) {
    best = std::min(best, distanceToSegment(point, pixelToWorld(outline[i - 1]), pixelToWorld(outline[i])));
  }
  return best;
}

// ---------------------------------------------------------------- wipeout

OdDbWipeout::OdDbWipeout() {
  m_displayFlags = kShow | kShowUnAligned | kClip;
  m_clipping = 1;
}

OdResult OdDbWipeout::setFrom(const OdGePoint3dArray& polygon, const OdGeVector3d& normal) {
  if (polygon.size() < 3 || normal.isZeroLength()) return eInvalidInput;
  const OdGeVector3d n = normal.normal();
  double x0 = std::numeric_limits<double>::infinity(), y0 = x0, x1 = -x0, y1 = -x0;
  OdGePoint3dArray local;
  for (const auto& p : polygon) {
    local.append(odgeWcsToOcs(p, n));
    x0 = std::min(x0, local.last().x);
    y0 = std::min(y0, local.last().y);
    x1 = std::max(x1, local.last().x);
    y1 = std::max(y1, local.last().y);
  }
  const double width = x1 - x0, height = y1 - y0;
  if (!(width > 0) || !(height > 0)) return eInvalidInput;
  // A polygon without area masks nothing.
  double twiceArea = 0;
  for (size_t i = 0; i < local.size(); ++i) {
    const OdGePoint3d& p = local[i];
    const OdGePoint3d& q = local[(i + 1) % local.size()];
    twiceArea += p.x * q.y - q.x * p.y;
  }
  if (std::fabs(twiceArea) <= 1e-12 * width * height) return eInvalidInput;
  assertWriteEnabled();
  // One pixel over the whole box: pixel coordinates run from -0.5 to 0.5,
  // y downwards.
  m_origin = odgeOcsToWcs(OdGePoint3d(x0, y0, local.first().z), n);
  m_uPixel = odgeOcsToWcs(OdGeVector3d(width, 0, 0), n);
  m_vPixel = odgeOcsToWcs(OdGeVector3d(0, height, 0), n);
  m_imageSize.set(1, 1);
  m_clipVertices.clear();
  for (const auto& p : local)
    m_clipVertices.append(OdGePoint2d((p.x - x0) / width - 0.5, 0.5 - (p.y - y0) / height));
  if (m_clipVertices.first().x != m_clipVertices.last().x ||
      m_clipVertices.first().y != m_clipVertices.last().y) {
    m_clipVertices.append(m_clipVertices.first());
  }
  m_clipType = kPoly;
  m_clipping = 1;
  m_displayFlags = static_cast<OdInt16>(m_displayFlags | kShow | kShowUnAligned | kClip);
  return eOk;
}
