// The plotter: walks a space in draw order and draws each entity in sheet
// coordinates (the cairo matrix stays the identity, so lineweights and dash
// lengths are given in sheet units and do not grow with the drawing's scale).
//
// Curves are flattened in world coordinates after the block transforms, so
// blocks scaled unevenly or mirrored draw right. Consecutive strokes with the
// same pen (colour, width, dashes) share one cairo path and one stroke: the
// path is flushed before anything filled, which keeps the draw order for
// hatches, solids, texts and wipeouts.
#include "plot/Plotter.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDictionary.h"
#include "DbDimension.h"
#include "DbHatch.h"
#include "DbPoint.h"
#include "DbPolyline.h"
#include "DbRasterImage.h"
#include "DbSolid.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "DbViewport.h"
#include "Ge/GeOcs.h"

namespace ryhost::plot {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMmPerInch = 25.4;
constexpr double kPointsPerMm = 72.0 / kMmPerInch;
// Fit leaves this share of the sheet as a border on each side.
constexpr double kFitBorder = 0.02;
// Block nesting deeper than this is taken as damage and not followed.
constexpr int kMaxBlockDepth = 64;
// Cap height of the outline fonts as a share of their em size.
constexpr double kCapHeight = 0.72;

template <class T>
const T* as(const OdDbObject* object) {
  return object && object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

struct Rgb {
  double r = 0, g = 0, b = 0;
  bool operator==(const Rgb&) const = default;
};

Rgb rgbOf(OdUInt32 packed) {
  return {((packed >> 16) & 0xFF) / 255.0, ((packed >> 8) & 0xFF) / 255.0, (packed & 0xFF) / 255.0};
}

struct LayerInfo {
  bool hidden = false;  // frozen, off or not plotted
  OdCmEntityColor color;
  OdDbObjectId linetype;
  int lineWeight = -3;
};

// What a block reference passes to the entities of its block that say
// BYBLOCK, and the layer its layer-0 entities take.
struct Inherited {
  Rgb color;
  int lineWeight = -3;
  OdDbObjectId linetype;
  OdDbObjectId layer;
};

struct Pen {
  Rgb color;
  double width = 0;  // sheet units
  std::vector<double> dashes;
  double dashOffset = 0;
  bool operator==(const Pen&) const = default;
};

class Plotter {
 public:
  Plotter(OdDbDatabase* db, const Settings& settings, cairo_t* cr, double unitsPerMm)
      : m_db(db), m_settings(settings), m_cr(cr), m_unitsPerMm(unitsPerMm) {
    m_background = settings.blackBackground ? Rgb{0, 0, 0} : Rgb{1, 1, 1};
    m_foreground = settings.blackBackground ? Rgb{1, 1, 1} : Rgb{0, 0, 0};
    m_ltscale = db->getLTSCALE();
    if (!(m_ltscale > 0)) m_ltscale = 1.0;
    cairo_surface_t* scratch = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
    m_glyphs = cairo_create(scratch);
    cairo_surface_destroy(scratch);
    // Looked up by name in their tables: once per plot, not per entity.
    m_layerZero = db->getLayerZeroId();
    m_byLayer = db->getLinetypeByLayerId();
    m_byBlock = db->getLinetypeByBlockId();
    m_continuous = db->getLinetypeContinuousId();
  }

  // World (x, y) to sheet: scale, then move, with y turned down for cairo.
  void setView(double scale, double originX, double originY, double sheetHeight) {
    m_view.setToIdentity();
    m_view[0][0] = scale;
    m_view[1][1] = -scale;
    m_view[0][3] = originX;
    m_view[1][3] = sheetHeight - originY;
    m_viewScale = scale;
  }

  void drawSpace(const OdDbObjectId& spaceId) {
    Inherited top;
    top.color = m_foreground;
    drawBlockContents(spaceId, OdGeMatrix3d(), top, 0);
    flush();
  }

  // A layout: its own entities, and model space through each of its viewports.
  void drawLayout(const OdDbObjectId& blockId) {
    auto block = as<OdDbBlockTableRecord>(blockId.openObject().get());
    if (!block) return;
    drawSpace(blockId);
    const OdGeMatrix3d paperView = m_view;
    const double paperScale = m_viewScale;
    for (const OdDbObjectId& id : block->entityIds()) {
      OdDbObjectPtr object = id.openObject();
      auto viewport = as<OdDbViewport>(object.get());
      // Viewport 1 is the sheet itself; one turned off shows nothing.
      if (!viewport || !viewport->isOn() || viewport->number() == 1 || viewport->viewHeight() <= 0) continue;
      if (layerOf(viewport->layerId()).hidden) continue;
      const double k = viewport->height() / viewport->viewHeight();
      const OdGePoint3d c = viewport->centerPoint();
      const OdGePoint3d target = viewport->viewTarget();
      OdGeMatrix3d modelToPaper;
      modelToPaper[0][0] = modelToPaper[1][1] = modelToPaper[2][2] = k;
      modelToPaper[0][3] = c.x - k * (target.x + viewport->viewCenter().x);
      modelToPaper[1][3] = c.y - k * (target.y + viewport->viewCenter().y);
      cairo_save(m_cr);
      const OdGePoint2d lo = toSheet(OdGePoint3d(c.x - viewport->width() / 2, c.y - viewport->height() / 2, 0));
      const OdGePoint2d hi = toSheet(OdGePoint3d(c.x + viewport->width() / 2, c.y + viewport->height() / 2, 0));
      cairo_rectangle(m_cr, std::min(lo.x, hi.x), std::min(lo.y, hi.y), std::fabs(hi.x - lo.x), std::fabs(hi.y - lo.y));
      cairo_clip(m_cr);
      m_view = paperView * modelToPaper;
      m_viewScale = paperScale * k;
      drawSpace(m_db->getModelSpaceId());
      m_view = paperView;
      m_viewScale = paperScale;
      cairo_restore(m_cr);
    }
  }

  ~Plotter() { cairo_destroy(m_glyphs); }
  Plotter(const Plotter&) = delete;
  Plotter& operator=(const Plotter&) = delete;

 private:
  // ---------------------------------------------------------------- walking

  void drawBlockContents(const OdDbObjectId& blockId, const OdGeMatrix3d& xform, const Inherited& inherited,
                         int depth) {
    // A block that holds a reference to itself (directly or further down)
    // is drawn once on each path, not without end.
    if (depth > kMaxBlockDepth || !m_open.insert(blockId.stub()).second) return;
    auto block = as<OdDbBlockTableRecord>(blockId.openObject().get());
    if (block) {
      for (const OdDbObjectId& id : drawOrder(block)) {
        OdDbObjectPtr object = id.openObject();
        if (auto entity = as<OdDbEntity>(object.get())) drawEntity(entity, xform, inherited, depth);
      }
    }
    m_open.erase(blockId.stub());
  }

  OdDbObjectIdArray drawOrder(const OdDbBlockTableRecord* block) {
    const OdDbObjectId dictId = block->extensionDictionary();
    if (!dictId.isNull()) {
      OdDbObjectPtr dict = dictId.openObject();
      if (auto d = as<OdDbDictionary>(dict.get())) {
        OdDbObjectPtr table = d->getAt(L"ACAD_SORTENTS", OdDb::kForRead);
        if (auto sortents = as<OdDbSortentsTable>(table.get())) {
          OdDbObjectIdArray ids;
          sortents->getFullDrawOrder(ids);
          return ids;
        }
      }
    }
    return block->entityIds();
  }

  void drawEntity(const OdDbEntity* entity, const OdGeMatrix3d& xform, const Inherited& inherited, int depth) {
    if (entity->isErased() || entity->visibility() == OdDb::kInvisible) return;
    const bool layerZero = entity->layerId() == m_layerZero && depth > 0;
    const OdDbObjectId layerId = layerZero && !inherited.layer.isNull() ? inherited.layer : entity->layerId();
    const LayerInfo& layer = layerOf(layerId);
    if (layer.hidden) return;
    // What this entity passes on to the entities of a block it references.
    Inherited own;
    own.layer = layerId;
    own.color = colorOf(entity->entityColor(), layer, inherited);
    own.lineWeight = lineWeightOf(entity->lineWeight(), layer, inherited);
    own.linetype = linetypeOf(entity->linetypeId(), layer, inherited);

    if (auto line = as<OdDbLine>(entity)) {
      stroke({line->startPoint(), line->endPoint()}, xform, own, entity->linetypeScale());
    } else if (auto circle = as<OdDbCircle>(entity)) {
      strokeArc(circle->center(), circle->normal(), circle->radius(), 0, 2 * kPi, xform, own, entity, true);
    } else if (auto arc = as<OdDbArc>(entity)) {
      double sweep = arc->endAngle() - arc->startAngle();
      while (sweep <= 0) sweep += 2 * kPi;
      strokeArc(arc->center(), arc->normal(), arc->radius(), arc->startAngle(), sweep, xform, own, entity, false);
    } else if (auto pline = as<OdDbPolyline>(entity)) {
      drawPolyline(pline, xform, own);
    } else if (auto ref = as<OdDbBlockReference>(entity)) {
      drawReference(ref, xform, own, depth);
    } else if (auto dim = as<OdDbDimension>(entity)) {
      // The dimension's block holds its lines, arrows and text in world
      // coordinates, moved with the dimension by its block position.
      OdGeMatrix3d move;
      move.setToTranslation(dim->dimBlockPosition().asVector());
      drawBlockContents(dim->dimBlockId(), xform * move, own, depth + 1);
    } else if (auto mtext = as<OdDbMText>(entity)) {
      drawMText(mtext, xform, own);
    } else if (auto attdef = as<OdDbAttributeDefinition>(entity)) {
      // Shown as its tag in the space it is defined in, never through a reference.
      if (depth == 0 && !attdef->isInvisible()) drawText(attdef, attdef->tag(), xform, own);
    } else if (auto text = as<OdDbText>(entity)) {
      drawText(text, text->textString(), xform, own);
    } else if (auto hatch = as<OdDbHatch>(entity)) {
      drawHatch(hatch, xform, own);
    } else if (auto wipeout = as<OdDbWipeout>(entity)) {
      OdGePoint3dArray vertices;
      if (wipeout->getVertices(vertices) == eOk) fill(vertices, xform, m_background);
    } else if (as<OdDbSolid>(entity) || as<OdDbTrace>(entity)) {
      // (The common base of solids and traces has no class of its own to ask for.)
      auto solid = static_cast<const OdDbPlanarQuad*>(entity);
      // Corners 3 and 4 come in the order they were picked: the outline goes 1, 2, 4, 3.
      OdGePoint3dArray quad;
      for (OdUInt16 i : {0, 1, 3, 2}) {
        OdGePoint3d corner;
        if (solid->getPointAt(i, corner) == eOk) quad.append(corner);
      }
      fill(quad, xform, own.color);
    } else if (auto point = as<OdDbPoint>(entity)) {
      drawDot(point->position(), xform, own);
    } else if (auto curve = as<OdDbCurve>(entity)) {
      strokeCurve(curve, xform, own);
    } else if (as<OdDbViewport>(entity) || as<OdDbSequenceEnd>(entity)) {
      // Viewports show model space (drawLayout), and sequence ends nothing.
    } else {
      drawExploded(entity, xform, own, depth);
    }
  }

  void drawReference(const OdDbBlockReference* ref, const OdGeMatrix3d& xform, const Inherited& own, int depth) {
    const OdGeMatrix3d base = xform * ref->blockTransform();
    if (auto grid = as<OdDbMInsertBlock>(ref)) {
      // Rows and columns step along the reference's rotated axes.
      OdGeMatrix3d rotation;
      rotation.setToRotation(ref->rotation(), ref->normal());
      for (int row = 0; row < std::max<int>(1, grid->rows()); ++row) {
        for (int col = 0; col < std::max<int>(1, grid->columns()); ++col) {
          OdGeMatrix3d step;
          step.setToTranslation(rotation.getCsXAxis() * (col * grid->columnSpacing()) +
                                rotation.getCsYAxis() * (row * grid->rowSpacing()));
          drawBlockContents(ref->blockTableRecord(), xform * step * ref->blockTransform(), own, depth + 1);
        }
      }
    } else {
      drawBlockContents(ref->blockTableRecord(), base, own, depth + 1);
    }
    // Attributes stand in the reference's space, not the block's.
    for (const OdDbObjectId& id : ref->attributeIds()) {
      OdDbObjectPtr object = id.openObject();
      auto attribute = as<OdDbAttribute>(object.get());
      if (!attribute || attribute->isErased() || attribute->isInvisible()) continue;
      const LayerInfo& layer = layerOf(attribute->layerId());
      if (layer.hidden) continue;
      Inherited att = own;
      att.color = colorOf(attribute->entityColor(), layer, own);
      if (attribute->isMTextAttribute()) {
        if (OdDbMTextPtr mtext = attribute->getMTextAttribute()) drawMText(mtext.get(), xform, att);
      } else {
        drawText(attribute, attribute->textString(), xform, att);
      }
    }
  }

  // Entities the plotter has no drawing of its own for (leaders, multilines,
  // meshes...) are drawn as the simpler entities they explode into.
  void drawExploded(const OdDbEntity* entity, const OdGeMatrix3d& xform, const Inherited& own, int depth) {
    if (depth > kMaxBlockDepth) return;
    OdRxObjectPtrArray parts;
    if (entity->explode(parts) != eOk) return;
    for (const auto& part : parts) {
      if (part.get() && part->isKindOf(OdDbEntity::desc()))
        drawEntity(static_cast<const OdDbEntity*>(part.get()), xform, own, depth + 1);
    }
  }

  // ---------------------------------------------------------------- properties

  const LayerInfo& layerOf(const OdDbObjectId& layerId) {
    auto found = m_layers.find(layerId.stub());
    if (found != m_layers.end()) return found->second;
    LayerInfo info;
    OdDbObjectPtr object = layerId.openObject();
    if (auto layer = as<OdDbLayerTableRecord>(object.get())) {
      info.hidden = layer->isFrozen() || layer->isOff() || !layer->isPlottable();
      info.color = layer->color().entityColor();
      info.linetype = layer->linetypeObjectId();
      info.lineWeight = layer->lineWeight();
    } else {
      info.color.setColorIndex(7);
    }
    return m_layers.emplace(layerId.stub(), info).first->second;
  }

  Rgb colorOf(const OdCmEntityColor& color, const LayerInfo& layer, const Inherited& inherited) const {
    if (m_settings.monochrome) return m_foreground;
    if (color.isByBlock()) return inherited.color;
    const OdCmEntityColor& c = color.isByLayer() ? layer.color : color;
    if (c.isByColor()) return rgbOf((OdUInt32(c.red()) << 16) | (OdUInt32(c.green()) << 8) | c.blue());
    if (c.isByACI()) {
      const OdInt16 index = c.colorIndex();
      // Colour 7 is the ink that stands out from the sheet.
      if (index == 7 || index < 1 || index > 255) return m_foreground;
      return rgbOf(OdCmEntityColor::lookUpRGB(index));
    }
    return m_foreground;
  }

  static int lineWeightOf(OdDb::LineWeight weight, const LayerInfo& layer, const Inherited& inherited) {
    int w = weight;
    if (w == OdDb::kLnWtByBlock) w = inherited.lineWeight;
    if (w == OdDb::kLnWtByLayer) w = layer.lineWeight;
    return w;
  }

  OdDbObjectId linetypeOf(const OdDbObjectId& id, const LayerInfo& layer, const Inherited& inherited) const {
    if (id.isNull() || id == m_byLayer) return layer.linetype;
    if (id == m_byBlock) return inherited.linetype;
    return id;
  }

  // Pen width in sheet units: the lineweight in millimetres (default 0.25),
  // never thinner than a hairline.
  double penWidth(int lineWeight) const {
    const double mm = lineWeight >= 0 ? lineWeight / 100.0 : 0.25;
    return std::max(mm * m_unitsPerMm, 0.1 * m_unitsPerMm);
  }

  // The linetype's dashes as cairo wants them (on, off, on...) in sheet
  // units: drawing lengths scaled by LTSCALE, the entity's scale and the
  // view. A pattern too fine to see on the sheet is drawn continuous.
  void dashesOf(const OdDbObjectId& linetypeId, double entityScale, double xformScale, Pen& pen) {
    pen.dashes.clear();
    pen.dashOffset = 0;
    if (linetypeId.isNull() || linetypeId == m_continuous) return;
    const std::vector<double>& lengths = dashLengths(linetypeId);
    if (lengths.empty()) return;
    const double k = m_ltscale * (entityScale > 0 ? entityScale : 1.0) * xformScale * m_viewScale;
    const double dot = 0.5 * pen.width;
    std::vector<double> runs;  // alternating, starting with a drawn run
    bool startsWithGap = false;
    double total = 0;
    for (const double length : lengths) {
      const bool on = length >= 0;
      const double run = length == 0 ? dot : std::fabs(length) * k;
      total += run;
      if (runs.empty()) {
        startsWithGap = !on;
        runs.push_back(run);
      } else if ((runs.size() % 2 == 1) == (on != startsWithGap)) {
        runs.back() += run;
      } else {
        runs.push_back(run);
      }
    }
    if (total < 2.0 * pen.width || total < 1e-9) return;
    if (startsWithGap) {
      // cairo begins with a drawn run: put the leading gap at the end and start inside it.
      pen.dashOffset = runs.front();
      runs.push_back(runs.front());
      runs.erase(runs.begin());
      runs.insert(runs.begin(), 0.0);
    }
    if (runs.size() % 2 == 1) runs.push_back(0.0);
    pen.dashes = runs;
  }

  // A linetype's dash lengths in drawing units, read once per plot.
  const std::vector<double>& dashLengths(const OdDbObjectId& linetypeId) {
    auto found = m_linetypes.find(linetypeId.stub());
    if (found != m_linetypes.end()) return found->second;
    std::vector<double> lengths;
    OdDbObjectPtr object = linetypeId.openObject();
    if (auto linetype = as<OdDbLinetypeTableRecord>(object.get())) {
      for (int i = 0; i < linetype->numDashes(); ++i) lengths.push_back(linetype->dashLengthAt(i));
    }
    return m_linetypes.emplace(linetypeId.stub(), std::move(lengths)).first->second;
  }

  Pen penFor(const Inherited& own, double entityScale, double xformScale) {
    Pen pen;
    pen.color = own.color;
    pen.width = penWidth(own.lineWeight);
    dashesOf(own.linetype, entityScale, xformScale, pen);
    return pen;
  }

  // ---------------------------------------------------------------- geometry

  OdGePoint2d toSheet(const OdGePoint3d& world) const {
    return {m_view[0][0] * world.x + m_view[0][1] * world.y + m_view[0][2] * world.z + m_view[0][3],
            m_view[1][0] * world.x + m_view[1][1] * world.y + m_view[1][2] * world.z + m_view[1][3]};
  }
  OdGePoint2d toSheet(const OdGePoint3d& p, const OdGeMatrix3d& xform) const {
    OdGePoint3d w = p;
    return toSheet(w.transformBy(xform));
  }

  // Pieces enough that a chord strays no more than a quarter unit of the sheet.
  int segmentsFor(double sheetRadius, double sweep) const {
    const double tolerance = 0.25 * std::max(m_unitsPerMm * 0.1, 1e-3);
    if (sheetRadius <= tolerance) return 2;
    const double step = 2.0 * std::acos(std::max(-1.0, 1.0 - tolerance / sheetRadius));
    return std::clamp(static_cast<int>(std::ceil(std::fabs(sweep) / std::max(step, 1e-3))), 2, 2048);
  }

  void strokeArc(const OdGePoint3d& center, const OdGeVector3d& normal, double radius, double start, double sweep,
                 const OdGeMatrix3d& xform, const Inherited& own, const OdDbEntity* entity, bool closed) {
    OdGeVector3d ax, ay, az;
    odgeOcsAxes(normal, ax, ay, az);
    const double sheetRadius = radius * std::fabs(xform.scale()) * m_viewScale;
    const int n = segmentsFor(sheetRadius, sweep);
    std::vector<OdGePoint3d> points;
    points.reserve(n + 1);
    for (int i = 0; i <= n; ++i) {
      const double a = start + sweep * i / n;
      points.push_back(center + ax * (radius * std::cos(a)) + ay * (radius * std::sin(a)));
    }
    if (closed) points.back() = points.front();
    stroke(points, xform, own, entity->linetypeScale());
  }

  void strokeCurve(const OdDbCurve* curve, const OdGeMatrix3d& xform, const Inherited& own) {
    double from = 0, to = 0;
    if (curve->getStartParam(from) != eOk || curve->getEndParam(to) != eOk || !(to > from)) return;
    OdGeExtents3d box;
    if (curve->getGeomExtents(box) != eOk) return;
    const double size = box.diagonal().length() * std::fabs(xform.scale()) * m_viewScale;
    int n = std::clamp(static_cast<int>(size / std::max(m_unitsPerMm * 0.5, 1e-3)), 8, 4096);
    if (auto spline = as<OdDbSpline>(curve)) n = std::max(n, 16 * spline->numControlPoints());
    std::vector<OdGePoint3d> points;
    points.reserve(n + 1);
    for (int i = 0; i <= n; ++i) {
      OdGePoint3d p;
      if (curve->getPointAtParam(from + (to - from) * i / n, p) == eOk) points.push_back(p);
    }
    stroke(points, xform, own, curve->linetypeScale());
  }

  void drawPolyline(const OdDbPolyline* pline, const OdGeMatrix3d& xform, const Inherited& own) {
    const unsigned count = pline->numVerts();
    if (count == 0) return;
    const unsigned segments = pline->isClosed() ? count : count - 1;
    const double scale = std::fabs(xform.scale());
    std::vector<OdGePoint3d> centerline;
    bool wide = false;
    for (unsigned i = 0; i < segments; ++i) {
      double w0 = 0, w1 = 0;
      pline->getWidthsAt(i, w0, w1);
      if (w0 > 0 || w1 > 0) wide = true;
    }
    for (unsigned i = 0; i < segments; ++i) {
      std::vector<OdGePoint3d> piece = segmentPoints(pline, i, scale);
      if (!centerline.empty()) piece.erase(piece.begin());
      centerline.insert(centerline.end(), piece.begin(), piece.end());
    }
    if (count == 1) centerline.push_back(centerline.empty() ? OdGePoint3d() : centerline.front());
    if (!wide) {
      stroke(centerline, xform, own, pline->linetypeScale());
      return;
    }
    // Wide segments: each one an outline filled, the width running from start to end.
    for (unsigned i = 0; i < segments; ++i) {
      double w0 = 0, w1 = 0;
      pline->getWidthsAt(i, w0, w1);
      const std::vector<OdGePoint3d> piece = segmentPoints(pline, i, scale);
      if (w0 <= 0 && w1 <= 0) {
        stroke(piece, xform, own, pline->linetypeScale());
        continue;
      }
      OdGePoint3dArray left, right;
      const size_t n = piece.size();
      for (size_t k = 0; k < n; ++k) {
        const OdGeVector3d along =
            (k + 1 < n ? piece[k + 1] - piece[k] : piece[k] - piece[k - 1]).normal();
        const OdGeVector3d side = odgeOcsToWcs(OdGeVector3d(-odgeWcsToOcs(along, pline->normal()).y,
                                                            odgeWcsToOcs(along, pline->normal()).x, 0),
                                               pline->normal());
        const double half = 0.5 * (w0 + (w1 - w0) * (n > 1 ? double(k) / (n - 1) : 0));
        left.append(piece[k] + side * half);
        right.append(piece[k] - side * half);
      }
      for (size_t k = right.size(); k-- > 0;) left.append(right[k]);
      fill(left, xform, own.color);
    }
  }

  // One segment of a lightweight polyline in world points (arcs flattened).
  std::vector<OdGePoint3d> segmentPoints(const OdDbPolyline* pline, unsigned index, double xformScale) const {
    std::vector<OdGePoint3d> points;
    if (pline->segType(index) == OdDbPolyline::kArc) {
      OdGeCircArc3d arc;
      pline->getArcSegAt(index, arc);
      OdGePoint3d a, b;
      pline->getPointAt(index, a);
      pline->getPointAt((index + 1) % pline->numVerts(), b);
      const double bulge = pline->getBulgeAt(index);
      const double sweep = 4.0 * std::atan(bulge);  // signed, counter-clockwise in the polyline's plane
      const OdGePoint3d c = arc.center();
      const OdGeVector3d n = pline->normal().isZeroLength() ? OdGeVector3d::kZAxis : pline->normal().normal();
      const OdGeVector3d r0 = a - c;
      const int count = segmentsFor(r0.length() * xformScale * m_viewScale, sweep);
      for (int k = 0; k <= count; ++k) {
        const double t = sweep * k / count;
        points.push_back(c + r0 * std::cos(t) + n.crossProduct(r0) * std::sin(t));
      }
      points.back() = b;
    } else {
      OdGePoint3d a, b;
      pline->getPointAt(index, a);
      pline->getPointAt((index + 1) % pline->numVerts(), b);
      points = {a, b};
    }
    return points;
  }

  void drawDot(const OdGePoint3d& p, const OdGeMatrix3d& xform, const Inherited& own) {
    flush();
    const OdGePoint2d s = toSheet(p, xform);
    setColor(own.color);
    cairo_arc(m_cr, s.x, s.y, std::max(penWidth(own.lineWeight), 0.5 * m_unitsPerMm * 0.2), 0, 2 * kPi);
    cairo_fill(m_cr);
  }

  // ---------------------------------------------------------------- cairo

  void setColor(const Rgb& c) { cairo_set_source_rgb(m_cr, c.r, c.g, c.b); }

  // Adds the points to the pending path when the pen is the same; strokes
  // what was pending first when it is not.
  void stroke(const std::vector<OdGePoint3d>& points, const OdGeMatrix3d& xform, const Inherited& own,
              double entityScale) {
    if (points.size() < 2) return;
    Pen pen = penFor(own, entityScale, std::fabs(xform.scale()));
    if (!m_pending || !(pen == m_pen)) {
      flush();
      m_pen = pen;
    }
    m_pending = true;
    OdGePoint2d s = toSheet(points[0], xform);
    cairo_move_to(m_cr, s.x, s.y);
    for (size_t i = 1; i < points.size(); ++i) {
      const OdGePoint2d t = toSheet(points[i], xform);
      cairo_line_to(m_cr, t.x, t.y);
    }
    if (++m_pendingCount >= 4096) flush();
  }

  void flush() {
    if (!m_pending) return;
    setColor(m_pen.color);
    cairo_set_line_width(m_cr, m_pen.width);
    cairo_set_line_cap(m_cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(m_cr, CAIRO_LINE_JOIN_ROUND);
    if (m_pen.dashes.empty())
      cairo_set_dash(m_cr, nullptr, 0, 0);
    else
      cairo_set_dash(m_cr, m_pen.dashes.data(), static_cast<int>(m_pen.dashes.size()), m_pen.dashOffset);
    cairo_stroke(m_cr);
    m_pending = false;
    m_pendingCount = 0;
  }

  template <class Points>
  void fill(const Points& points, const OdGeMatrix3d& xform, const Rgb& color) {
    if (points.size() < 3) return;
    flush();
    bool first = true;
    for (const OdGePoint3d& p : points) {
      const OdGePoint2d s = toSheet(p, xform);
      if (first)
        cairo_move_to(m_cr, s.x, s.y);
      else
        cairo_line_to(m_cr, s.x, s.y);
      first = false;
    }
    cairo_close_path(m_cr);
    setColor(color);
    cairo_fill(m_cr);
  }

  // ---------------------------------------------------------------- hatches

  void drawHatch(const OdDbHatch* hatch, const OdGeMatrix3d& xform, const Inherited& own) {
    std::vector<OdGePoint2dArray> loops = hatchLoops(hatch);
    if (loops.empty()) return;
    flush();
    const OdGeVector3d normal = hatch->normal();
    const double elevation = hatch->elevation();
    auto world = [&](const OdGePoint2d& p) { return odgeOcsToWcs(p, elevation, normal); };
    cairo_new_path(m_cr);
    OdGePoint2d lo(1e300, 1e300), hi(-1e300, -1e300);
    for (const OdGePoint2dArray& loop : loops) {
      for (size_t i = 0; i < loop.size(); ++i) {
        const OdGePoint2d s = toSheet(world(loop[i]), xform);
        if (i == 0)
          cairo_move_to(m_cr, s.x, s.y);
        else
          cairo_line_to(m_cr, s.x, s.y);
        lo.x = std::min(lo.x, loop[i].x), lo.y = std::min(lo.y, loop[i].y);
        hi.x = std::max(hi.x, loop[i].x), hi.y = std::max(hi.y, loop[i].y);
      }
      cairo_close_path(m_cr);
    }
    cairo_set_fill_rule(m_cr, CAIRO_FILL_RULE_EVEN_ODD);
    if (hatch->isSolidFill()) {
      setColor(own.color);
      cairo_fill(m_cr);
      return;
    }
    // Pattern lines: each family drawn across the loops' box, clipped to the loops.
    cairo_save(m_cr);
    cairo_clip(m_cr);
    Pen pen;
    pen.color = own.color;
    pen.width = penWidth(own.lineWeight);
    const double sheetPerUnit = std::fabs(xform.scale()) * m_viewScale;
    const double diagonal = (hi - lo).length();
    const OdGePoint2d middle((lo.x + hi.x) / 2, (lo.y + hi.y) / 2);
    long budget = 200000;  // lines per hatch: a pattern far too fine for the sheet is not drawn line by line
    for (const OdDbHatchPatternLine& family : hatch->patternDefinitions()) {
      const OdGeVector2d dir(std::cos(family.angle), std::sin(family.angle));
      const OdGeVector2d across(-dir.y, dir.x);
      const double spacing = family.offset.dotProduct(across);
      if (std::fabs(spacing) * sheetPerUnit < 0.5 * pen.width) continue;
      const double shift = family.offset.dotProduct(dir);
      // Lines k: basePoint + offset * k; the one nearest the middle, then outward.
      const double k0 = std::floor((middle - family.basePoint).dotProduct(across) / spacing);
      const long reach = static_cast<long>(std::ceil(diagonal / std::fabs(spacing))) + 1;
      std::vector<double> runs;
      double period = 0;
      for (double d : family.dashes) {
        runs.push_back(d == 0 ? 0.5 * pen.width : std::fabs(d) * sheetPerUnit);
        period += std::fabs(d);
      }
      const bool dashed = !family.dashes.empty() && period * sheetPerUnit > 2.0 * pen.width;
      for (long k = -reach; k <= reach && budget-- > 0; ++k) {
        const double kk = k0 + k;
        const OdGePoint2d origin = family.basePoint + family.offset * kk;
        // Project the middle onto this line; draw a stretch as long as the box's diagonal each way.
        const double t = (middle - origin).dotProduct(dir);
        double t0 = t - diagonal, t1 = t + diagonal;
        if (dashed) {
          // Start at a whole period so the dashes line up with the pattern's origin (shifted per line).
          const double base = shift * kk;
          const double n = std::floor((t0 - base) / period);
          t0 = base + n * period;
        }
        const OdGePoint2d a = origin + dir * t0, b = origin + dir * t1;
        const OdGePoint2d sa = toSheet(world(a), xform), sb = toSheet(world(b), xform);
        if (dashed) {
          drawDashedSegment(sa, sb, family.dashes, sheetPerUnit);
        } else {
          cairo_move_to(m_cr, sa.x, sa.y);
          cairo_line_to(m_cr, sb.x, sb.y);
        }
      }
    }
    setColor(pen.color);
    cairo_set_line_width(m_cr, pen.width);
    cairo_set_dash(m_cr, nullptr, 0, 0);
    cairo_set_line_cap(m_cr, CAIRO_LINE_CAP_ROUND);
    cairo_stroke(m_cr);
    cairo_restore(m_cr);
  }

  // The boundary loops as closed point lists in the hatch's plane.
  static std::vector<OdGePoint2dArray> hatchLoops(const OdDbHatch* hatch) {
    std::vector<OdGePoint2dArray> loops;
    for (int i = 0; i < hatch->numLoops(); ++i) {
      OdInt32 type = 0;
      OdDbHatchEdgeArray edges;
      if (hatch->getLoopAt(i, type, edges) != eOk) continue;
      OdGePoint2dArray loop;
      for (const OdDbHatchEdge& edge : edges) {
        OdGePoint2dArray points;
        edge.getSamplePoints(points);
        for (const OdGePoint2d& p : points) {
          if (loop.empty() || !loop.last().isEqualTo(p)) loop.append(p);
        }
      }
      if (loop.size() >= 3) loops.push_back(loop);
    }
    return loops;
  }

  // A pattern line's dashes laid out explicitly (each line starts its period
  // at its own origin, which cairo's one dash pattern per path cannot do).
  void drawDashedSegment(const OdGePoint2d& a, const OdGePoint2d& b, const OdGeDoubleArray& dashes,
                         double sheetPerUnit) {
    const OdGeVector2d v = b - a;
    const double length = v.length();
    if (length <= 0) return;
    const OdGeVector2d u = v / length;
    double at = 0;
    int guard = 0;
    while (at < length && guard++ < 100000) {
      for (double d : dashes) {
        const double run = d == 0 ? 0 : std::fabs(d) * sheetPerUnit;
        if (d >= 0) {
          const OdGePoint2d p = a + u * at;
          const OdGePoint2d q = a + u * std::min(length, at + run);
          cairo_move_to(m_cr, p.x, p.y);
          cairo_line_to(m_cr, q.x + (d == 0 ? 0.01 : 0), q.y);
        }
        at += run;
        if (at >= length) break;
      }
    }
  }

  // ---------------------------------------------------------------- texts

  // A family fontconfig can match for the style's font: outline fonts by
  // their file's base name, shape fonts (and none) as DejaVu Sans.
  OdString fontFamily(const OdDbObjectId& styleId) {
    auto found = m_fonts.find(styleId.stub());
    if (found != m_fonts.end()) return found->second;
    OdString family = L"DejaVu Sans";
    OdDbObjectPtr object = styleId.openObject();
    if (auto style = as<OdDbTextStyleTableRecord>(object.get())) {
      OdString file = style->fileName();
      const int slash = std::max(file.reverseFind(L'/'), file.reverseFind(L'\\'));
      if (slash >= 0) file = file.mid(slash + 1);
      const int dot = file.reverseFind(L'.');
      const OdString ext = dot >= 0 ? file.mid(dot + 1).makeLower() : OdString();
      if ((ext == L"ttf" || ext == L"otf" || ext == L"ttc") && dot > 0) family = file.left(dot);
    }
    m_fonts.emplace(styleId.stub(), family);
    return family;
  }

  // The matrix from the text's own axes at `origin` (x along the baseline,
  // y up the letters, in drawing units) to the sheet.
  cairo_matrix_t textFrame(const OdGePoint3d& origin, const OdGeVector3d& xAxis, const OdGeVector3d& yAxis,
                           const OdGeMatrix3d& xform) const {
    const OdGePoint2d o = toSheet(origin, xform);
    const OdGePoint2d px = toSheet(origin + xAxis, xform);
    const OdGePoint2d py = toSheet(origin + yAxis, xform);
    cairo_matrix_t m;
    // Glyphs grow downwards in cairo: the text's y axis goes in negated.
    cairo_matrix_init(&m, px.x - o.x, px.y - o.y, -(py.x - o.x), -(py.y - o.y), o.x, o.y);
    return m;
  }

  // Fonts are measured and outlined at one size and scaled from there: font
  // engines misbehave at the tiny and the huge sizes drawings reach.
  static constexpr double kGlyphSize = 64.0;
  // Glyphs larger than this on the sheet are filled as outlines.
  static constexpr double kLargestGlyph = 200.0;

  void selectFont(cairo_t* cr, const OdDbObjectId& styleId) {
    const std::string family = fontFamily(styleId).toUtf8();
    cairo_select_font_face(cr, family.c_str(), CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, kGlyphSize);
  }

  // The advance of a line of text `height` high (cap height), in drawing units.
  double advanceOf(const std::string& utf8, const OdDbObjectId& styleId, double height) {
    selectFont(m_glyphs, styleId);
    cairo_text_extents_t extents;
    cairo_text_extents(m_glyphs, utf8.c_str(), &extents);
    return extents.x_advance * height / kCapHeight / kGlyphSize;
  }

  // The length of a line of text along its baseline by the drawing's own
  // measure, the one its extents, masks and justification are worked from.
  static double measuredLength(const OdString& text, double height, double widthFactor) {
    OdGePoint3d lowerLeft, upperRight;
    odDbTextBox(text, height, widthFactor, lowerLeft, upperRight);
    return upperRight.x - lowerLeft.x;
  }

  // Draws a line of text with its baseline start at the frame's origin,
  // `height` high and its glyphs scaled along the baseline so the run spans
  // `length` drawing units: the font's own advances differ from the drawing's
  // measure, and the text must fill the box everything else places. Up to
  // a moderate size on the sheet cairo draws the glyphs itself (hinted, and
  // kept as text in PDF and SVG); larger ones are filled as outlines taken at
  // the measuring size and carried to the sheet point by point.
  void showText(const std::string& utf8, const OdDbObjectId& styleId, double height, double length,
                const cairo_matrix_t& frame, const Rgb& color) {
    const double units = height / kCapHeight;  // the em size in drawing units
    const double advance = advanceOf(utf8, styleId, height);
    if (!(advance > 0) || !(length > 0)) return;
    cairo_matrix_t m = frame;
    cairo_matrix_scale(&m, length / advance, 1.0);
    cairo_matrix_scale(&m, units / kGlyphSize, units / kGlyphSize);
    const double sheetSize = kGlyphSize * std::sqrt(std::fabs(m.xx * m.yy - m.xy * m.yx));
    if (!(sheetSize > 0.05) || !std::isfinite(sheetSize)) return;  // too small to see
    cairo_save(m_cr);
    cairo_identity_matrix(m_cr);
    setColor(color);
    if (sheetSize < kLargestGlyph) {
      selectFont(m_cr, styleId);
      cairo_set_matrix(m_cr, &m);
      cairo_move_to(m_cr, 0, 0);
      cairo_show_text(m_cr, utf8.c_str());
    } else {
      // The outline is taken on a context of its own, apart from the sheet's clip and state.
      selectFont(m_glyphs, styleId);
      cairo_new_path(m_glyphs);
      cairo_move_to(m_glyphs, 0, 0);
      cairo_text_path(m_glyphs, utf8.c_str());
      cairo_path_t* path = cairo_copy_path(m_glyphs);
      cairo_new_path(m_glyphs);
      cairo_new_path(m_cr);
      for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
        cairo_path_data_t* d = &path->data[i];
        double p[3][2];
        for (int k = 1; k < d->header.length; ++k) {
          p[k - 1][0] = d[k].point.x;
          p[k - 1][1] = d[k].point.y;
          cairo_matrix_transform_point(&m, &p[k - 1][0], &p[k - 1][1]);
        }
        switch (d->header.type) {
          case CAIRO_PATH_MOVE_TO: cairo_move_to(m_cr, p[0][0], p[0][1]); break;
          case CAIRO_PATH_LINE_TO: cairo_line_to(m_cr, p[0][0], p[0][1]); break;
          case CAIRO_PATH_CURVE_TO: cairo_curve_to(m_cr, p[0][0], p[0][1], p[1][0], p[1][1], p[2][0], p[2][1]); break;
          case CAIRO_PATH_CLOSE_PATH: cairo_close_path(m_cr); break;
        }
      }
      cairo_path_destroy(path);
      cairo_set_fill_rule(m_cr, CAIRO_FILL_RULE_WINDING);
      cairo_fill(m_cr);
    }
    cairo_new_path(m_cr);
    cairo_restore(m_cr);
  }

  void drawText(const OdDbText* text, const OdString& string, const OdGeMatrix3d& xform, const Inherited& own) {
    if (string.isEmpty() || text->height() <= 0) return;
    flush();
    const double height = text->height();
    const OdGeVector3d normal = text->normal();
    const double r = text->rotation();
    OdGeVector3d xAxis = odgeOcsToWcs(OdGeVector3d(std::cos(r), std::sin(r), 0), normal);
    OdGeVector3d yAxis = odgeOcsToWcs(OdGeVector3d(-std::sin(r), std::cos(r), 0), normal);
    // Oblique letters lean along the baseline.
    yAxis += xAxis * std::tan(text->oblique());
    double widthFactor = text->widthFactor() > 0 ? text->widthFactor() : 1.0;
    if (text->isMirroredInX()) xAxis = -xAxis;
    if (text->isMirroredInY()) yAxis = -yAxis;
    const std::string utf8 = plainText(string).toUtf8();
    // The run's length (width factor included) by the drawing's measure.
    double length = measuredLength(string, height, widthFactor);
    OdGePoint3d origin = text->position();
    double dx = 0, dy = 0;
    if (!text->isDefaultAlignment()) {
      const OdGePoint3d align = text->alignmentPoint();
      const OdDb::TextHorzMode h = text->horizontalMode();
      if (h == OdDb::kTextAlign || h == OdDb::kTextFit) {
        // Stretched between the two points.
        const double span = (align - text->position()).length();
        if (span > 0) length = span;
      } else {
        origin = align;
        if (h == OdDb::kTextCenter || h == OdDb::kTextMid) dx = -length / 2;
        if (h == OdDb::kTextRight) dx = -length;
        const OdDb::TextVertMode v = text->verticalMode();
        if (h == OdDb::kTextMid || v == OdDb::kTextVertMid) dy = -height / 2;
        if (v == OdDb::kTextTop) dy = -height;
        if (v == OdDb::kTextBottom) dy = height * 0.3;
      }
    }
    cairo_matrix_t frame = textFrame(origin, xAxis, yAxis, xform);
    cairo_matrix_translate(&frame, dx, -dy);
    showText(utf8, text->textStyle(), height, length, frame, own.color);
  }

  // The special codes a single-line text may carry, as the characters they stand for.
  static OdString plainText(const OdString& text) {
    OdString out;
    for (int i = 0; i < text.getLength(); ++i) {
      if (text[i] == L'%' && i + 2 < text.getLength() && text[i + 1] == L'%') {
        const wchar_t c = towlower(text[i + 2]);
        if (c == L'd') { out += L"\u00B0"; i += 2; continue; }
        if (c == L'p') { out += L"\u00B1"; i += 2; continue; }
        if (c == L'c') { out += L"\u2300"; i += 2; continue; }
        if (c == L'o' || c == L'u') { i += 2; continue; }
        if (c == L'%') { out += L"%"; i += 2; continue; }
      }
      out += text[i];
    }
    return out;
  }

  void drawMText(const OdDbMText* mtext, const OdGeMatrix3d& xform, const Inherited& own) {
    const double height = mtext->textHeight();
    if (height <= 0) return;
    flush();
    // The lines are the paragraphs, as the drawing measures the text (its
    // extents, height and mask): no further wrapping at the box's width.
    std::vector<OdString> lines;
    const OdString all = mtext->text();
    const double width = mtext->width();
    int start = 0;
    for (int i = 0; i <= all.getLength(); ++i) {
      if (i < all.getLength() && all[i] != L'\n') continue;
      lines.push_back(all.mid(start, i - start));
      start = i + 1;
    }
    auto measure = [&](const OdString& s) { return measuredLength(s, height, 1.0); };
    double widest = 0;
    for (const OdString& line : lines) widest = std::max(widest, measure(line));
    const double pitch = height * 5.0 / 3.0 * (mtext->lineSpacingFactor() > 0 ? mtext->lineSpacingFactor() : 1.0);
    const double totalHeight = height + pitch * (static_cast<double>(lines.size()) - 1);
    const double boxWidth = width > 0 ? width : widest;
    // Attachment: 1-3 top, 4-6 middle, 7-9 bottom; left, centre, right.
    const int attach = std::clamp(static_cast<int>(mtext->attachment()), 1, 9);
    const int column = (attach - 1) % 3, row = (attach - 1) / 3;
    const double left = -boxWidth * column / 2.0;
    const double top = row == 0 ? 0 : row == 1 ? totalHeight / 2 : totalHeight;
    const OdGeVector3d xAxis = mtext->direction().normal();
    const OdGeVector3d yAxis = mtext->normal().crossProduct(xAxis).normal();
    if (mtext->backgroundFill()) {
      // The mask: a box around the text, grown by the scale factor, in the fill or the sheet's colour.
      const double grow = (std::max(mtext->getBackgroundScaleFactor(), 1.0) - 1.0) * height;
      OdGePoint3dArray box;
      const OdGePoint3d o = mtext->location();
      for (auto [u, v] : {std::pair{left - grow, top + grow}, {left + boxWidth + grow, top + grow},
                          {left + boxWidth + grow, top - totalHeight - grow}, {left - grow, top - totalHeight - grow}})
        box.append(o + xAxis * u + yAxis * v);
      Rgb maskColor = m_background;
      if (!mtext->useBackgroundColor() && !m_settings.monochrome) {
        LayerInfo none;
        none.color.setColorIndex(7);
        maskColor = colorOf(mtext->getBackgroundFillColor().entityColor(), none, own);
      }
      fill(box, xform, maskColor);
    }
    for (size_t k = 0; k < lines.size(); ++k) {
      const double lineWidth = measure(lines[k]);
      const double x = left + (boxWidth - lineWidth) * column / 2.0;
      const double y = top - height - pitch * k;
      showText(lines[k].toUtf8(), mtext->textStyle(), height, lineWidth,
               textFrame(mtext->location() + xAxis * x + yAxis * y, xAxis, yAxis, xform), own.color);
    }
  }

  OdDbDatabase* m_db;
  const Settings& m_settings;
  cairo_t* m_cr;
  cairo_t* m_glyphs = nullptr;  // measures texts and gives their outlines
  double m_unitsPerMm;  // sheet units per millimetre of paper
  OdGeMatrix3d m_view;
  double m_viewScale = 1.0;  // sheet units per drawing unit
  double m_ltscale = 1.0;
  OdDbObjectId m_layerZero, m_byLayer, m_byBlock, m_continuous;
  Rgb m_background, m_foreground;
  Pen m_pen;
  bool m_pending = false;
  int m_pendingCount = 0;
  std::unordered_set<OdDbStub*> m_open;
  std::unordered_map<OdDbStub*, LayerInfo> m_layers;
  std::unordered_map<OdDbStub*, OdString> m_fonts;
  std::unordered_map<OdDbStub*, std::vector<double>> m_linetypes;
};

bool layerShown(const OdDbEntity* entity, std::unordered_map<OdDbStub*, bool>& cache) {
  auto found = cache.find(entity->layerId().stub());
  if (found != cache.end()) return found->second;
  OdDbObjectPtr object = entity->layerId().openObject();
  auto layer = as<OdDbLayerTableRecord>(object.get());
  const bool shown = !layer || !(layer->isFrozen() || layer->isOff() || !layer->isPlottable());
  cache.emplace(entity->layerId().stub(), shown);
  return shown;
}

// The block record of a layout by name ("" for the first paper space).
OdDbObjectId layoutBlock(OdDbDatabase* db, const OdString& name) {
  if (name.isEmpty()) return db->getPaperSpaceId();
  OdDbObjectPtr dictObject = db->getLayoutDictionaryId(false).openObject();
  auto dict = as<OdDbDictionary>(dictObject.get());
  if (!dict) return OdDbObjectId();
  OdDbObjectPtr layoutObject = dict->getAt(name, OdDb::kForRead);
  auto layout = as<OdDbLayout>(layoutObject.get());
  return layout ? layout->getBlockTableRecordId() : OdDbObjectId();
}

bool spaceExtents(const OdDbObjectId& spaceId, OdGeExtents3d& extents, bool skipViewports) {
  extents.reset();
  OdDbObjectPtr object = spaceId.openObject();
  auto block = as<OdDbBlockTableRecord>(object.get());
  if (!block) return false;
  std::unordered_map<OdDbStub*, bool> shown;
  bool any = false;
  for (const OdDbObjectId& id : block->entityIds()) {
    OdDbObjectPtr e = id.openObject();
    auto entity = as<OdDbEntity>(e.get());
    if (!entity || entity->isErased() || !layerShown(entity, shown)) continue;
    if (skipViewports && as<OdDbViewport>(entity) && static_cast<const OdDbViewport*>(entity)->number() == 1) continue;
    OdGeExtents3d box;
    if (entity->getGeomExtents(box) == eOk && box.isValidExtents()) {
      extents.addExt(box);
      any = true;
    }
  }
  return any;
}

}  // namespace

bool deviceFromFileName(const OdString& path, Device& device) {
  const int dot = path.reverseFind(L'.');
  if (dot < 0) return false;
  const OdString ext = path.mid(dot + 1).makeLower();
  if (ext == L"pdf") device = Device::kPdf;
  else if (ext == L"svg") device = Device::kSvg;
  else if (ext == L"png") device = Device::kPng;
  else return false;
  return true;
}

bool modelExtents(OdDbDatabase* db, OdGeExtents3d& extents) {
  return spaceExtents(db->getModelSpaceId(), extents, false);
}

namespace {
struct PaperEntry {
  const wchar_t* name;
  double width, height;
};
const PaperEntry kPapers[] = {
    {L"A4", 210, 297},          {L"A3", 297, 420},   {L"A2", 420, 594},     {L"A1", 594, 841},
    {L"A0", 841, 1189},         {L"Letter", 215.9, 279.4}, {L"Legal", 215.9, 355.6},
    {L"Tabloid", 279.4, 431.8},
};
}  // namespace

const wchar_t* paperNames() { return L"A4 A3 A2 A1 A0 Letter Legal Tabloid"; }

bool paperSize(const OdString& name, double& width, double& height) {
  for (const PaperEntry& p : kPapers) {
    if (name.iCompare(p.name) == 0) {
      width = p.width;
      height = p.height;
      return true;
    }
  }
  // "WxH" in millimetres.
  const std::string text = OdString(name).makeLower().toUtf8();
  double w = 0, h = 0;
  char x = 0;
  char rest = 0;
  if (std::sscanf(text.c_str(), "%lf %c %lf %c", &w, &x, &h, &rest) == 3 && x == 'x' && w > 0 && h > 0 &&
      w <= 100000 && h <= 100000) {
    width = std::min(w, h);
    height = std::max(w, h);
    return true;
  }
  return false;
}

bool plotToFile(OdDbDatabase* db, const Settings& settings, const OdString& path, OdString& error) {
  // What to plot, in the space's own coordinates.
  OdDbObjectId spaceId = db->getModelSpaceId();
  bool layout = false;
  OdGePoint2d lo, hi;
  OdGeExtents3d box;
  switch (settings.area) {
    case Area::kExtents:
      if (!modelExtents(db, box)) {
        error = L"the drawing has nothing to plot";
        return false;
      }
      lo.set(box.minPoint().x, box.minPoint().y);
      hi.set(box.maxPoint().x, box.maxPoint().y);
      break;
    case Area::kLimits: {
      const OdGePoint3d a = db->headerPoint(L"$LIMMIN", OdGePoint3d(0, 0, 0));
      const OdGePoint3d b = db->headerPoint(L"$LIMMAX", OdGePoint3d(420, 297, 0));
      lo.set(std::min(a.x, b.x), std::min(a.y, b.y));
      hi.set(std::max(a.x, b.x), std::max(a.y, b.y));
      break;
    }
    case Area::kWindow:
      lo.set(std::min(settings.windowMin.x, settings.windowMax.x), std::min(settings.windowMin.y, settings.windowMax.y));
      hi.set(std::max(settings.windowMin.x, settings.windowMax.x), std::max(settings.windowMin.y, settings.windowMax.y));
      break;
    case Area::kLayout:
      spaceId = layoutBlock(db, settings.layout);
      if (spaceId.isNull()) {
        error = L"no layout named " + settings.layout;
        return false;
      }
      layout = true;
      if (!spaceExtents(spaceId, box, true)) {
        error = L"the layout has nothing to plot";
        return false;
      }
      lo.set(box.minPoint().x, box.minPoint().y);
      hi.set(box.maxPoint().x, box.maxPoint().y);
      break;
  }
  double spanX = hi.x - lo.x, spanY = hi.y - lo.y;
  if (!(spanX >= 0 && spanY >= 0) || !std::isfinite(spanX) || !std::isfinite(spanY)) {
    error = L"the area to plot is not valid";
    return false;
  }
  // A single point or a line along an axis still gets a sheet around it.
  if (spanX <= 0 && spanY <= 0) spanX = spanY = 1.0;

  // Sheet units: points for PDF and SVG, pixels for PNG.
  double unitsPerMm = kPointsPerMm;
  double sheetW = settings.paperWidth, sheetH = settings.paperHeight;
  if (settings.device == Device::kPng) {
    if (settings.pixelWidth > 0 && settings.pixelHeight > 0) {
      // The pixel size stands for the sheet; its millimetres follow the resolution.
      unitsPerMm = settings.dpi / kMmPerInch;
      sheetW = settings.pixelWidth / unitsPerMm;
      sheetH = settings.pixelHeight / unitsPerMm;
    } else {
      unitsPerMm = settings.dpi / kMmPerInch;
    }
  }
  const double widthUnits = sheetW * unitsPerMm, heightUnits = sheetH * unitsPerMm;
  if (settings.device == Device::kPng && (widthUnits * heightUnits > 400e6 || widthUnits < 1 || heightUnits < 1)) {
    error = L"the picture would be too large or empty; lower the resolution";
    return false;
  }

  double mmPerUnit = settings.scale;
  if (settings.fit) {
    const double usableW = sheetW * (1 - 2 * kFitBorder), usableH = sheetH * (1 - 2 * kFitBorder);
    mmPerUnit = std::min(spanX > 0 ? usableW / spanX : 1e300, spanY > 0 ? usableH / spanY : 1e300);
  }
  double originX, originY;  // where the area's lower-left corner lands, in mm from the sheet's lower left
  if (settings.center) {
    originX = (sheetW - spanX * mmPerUnit) / 2;
    originY = (sheetH - spanY * mmPerUnit) / 2;
  } else {
    originX = settings.offset.x;
    originY = settings.offset.y;
  }

  cairo_surface_t* surface = nullptr;
  const std::string file = path.toUtf8();
  switch (settings.device) {
    case Device::kPdf:
      surface = cairo_pdf_surface_create(file.c_str(), widthUnits, heightUnits);
      break;
    case Device::kSvg:
      surface = cairo_svg_surface_create(file.c_str(), widthUnits, heightUnits);
      break;
    case Device::kPng:
      surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::lround(widthUnits)),
                                           static_cast<int>(std::lround(heightUnits)));
      break;
  }
  if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
    error = L"cannot write " + path + L": " + OdString(cairo_status_to_string(cairo_surface_status(surface)));
    cairo_surface_destroy(surface);
    return false;
  }
  cairo_t* cr = cairo_create(surface);
  const bool black = settings.device == Device::kPng && settings.blackBackground;
  cairo_set_source_rgb(cr, black ? 0 : 1, black ? 0 : 1, black ? 0 : 1);
  cairo_paint(cr);
  Settings effective = settings;
  effective.blackBackground = black;
  {
    Plotter plotter(db, effective, cr, unitsPerMm);
    const double scale = mmPerUnit * unitsPerMm;
    plotter.setView(scale, originX * unitsPerMm - lo.x * scale, originY * unitsPerMm - lo.y * scale, heightUnits);
    if (layout)
      plotter.drawLayout(spaceId);
    else
      plotter.drawSpace(spaceId);
  }
  cairo_destroy(cr);
  cairo_surface_flush(surface);
  bool ok = true;
  if (settings.device == Device::kPng) {
    const cairo_status_t status = cairo_surface_write_to_png(surface, file.c_str());
    if (status != CAIRO_STATUS_SUCCESS) {
      error = L"cannot write " + path + L": " + OdString(cairo_status_to_string(status));
      ok = false;
    }
  }
  cairo_surface_finish(surface);
  if (ok && cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
    error = L"cannot write " + path + L": " + OdString(cairo_status_to_string(cairo_surface_status(surface)));
    ok = false;
  }
  cairo_surface_destroy(surface);
  return ok;
}

}  // namespace ryhost::plot
