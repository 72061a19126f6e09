// Picking and geometric selection. An entity's geometry is asked for its
// distance to points only (OdDbEntity::distanceTo): whether it meets a box
// or a segment is decided by subdividing the box or segment until the
// distance proves a hit or rules one out. Block references and dimensions
// are exploded once per test, so their pieces answer, not a fresh explosion
// for every point asked.
#include "sdk/Picking.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <limits>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbDimension.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "Ge/GeExtents2d.h"
#include "core/Host.h"
#include "core/SpatialIndex.h"
#include "sdk/Input.h"

namespace ryhost {

// ---------------------------------------------------------------- typed points

bool parseWorldPoint(const OdString& text, OdGePoint3d& world) {
  OdGePoint3d user;
  if (!parsePoint(text, user)) return false;
  world = ucsToWcs(user);
  return true;
}

OdDbObjectId entityFromHandle(const Document& doc, const OdString& hex) {
  OdUInt64 value = 0;
  if (!OdDbHandle::parse(std::wstring_view(hex.c_str(), static_cast<size_t>(hex.getLength())), value))
    return {};
  OdDbObjectId id = doc.database()->getOdDbObjectId(OdDbHandle(value));
  if (id.isNull() || !id.isValid() || id.isErased()) return {};
  OdDbObjectPtr object = id.openObject();
  auto* entity = dynamic_cast<OdDbEntity*>(object.get());
  if (!entity) return {};
  OdDbObjectPtr owner = entity->ownerId().openObject();
  auto* block = dynamic_cast<OdDbBlockTableRecord*>(owner.get());
  return block && block->isLayout() ? id : OdDbObjectId();
}

// ---------------------------------------------------------------- plane geometry

namespace {

OdGePoint2d plan(const OdGePoint3d& p) { return {p.x, p.y}; }

double cross(const OdGeVector2d& a, const OdGeVector2d& b) { return a.x * b.y - a.y * b.x; }

double segmentDistance(const OdGePoint2d& p, const OdGePoint2d& a, const OdGePoint2d& b) {
  const OdGeVector2d ab = b - a;
  const double lengthSquared = ab.x * ab.x + ab.y * ab.y;
  double t = lengthSquared > 0 ? ((p - a).x * ab.x + (p - a).y * ab.y) / lengthSquared : 0;
  t = std::clamp(t, 0.0, 1.0);
  return p.distanceTo(a + ab * t);
}

// Closed segments meet (touching counts).
bool segmentsMeet(const OdGePoint2d& a, const OdGePoint2d& b, const OdGePoint2d& c, const OdGePoint2d& d) {
  const double d1 = cross(b - a, c - a), d2 = cross(b - a, d - a);
  const double d3 = cross(d - c, a - c), d4 = cross(d - c, b - c);
  if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) return true;
  // Collinear or touching cases: an end lies on the other segment.
  const double scale = std::max({1.0, a.distanceTo(b), c.distanceTo(d)});
  const double tolerance = 1e-12 * scale;
  return segmentDistance(c, a, b) <= tolerance || segmentDistance(d, a, b) <= tolerance ||
         segmentDistance(a, c, d) <= tolerance || segmentDistance(b, c, d) <= tolerance;
}

bool boxContains(const OdGeExtents2d& box, const OdGePoint2d& p) {
  return p.x >= box.minPoint().x && p.x <= box.maxPoint().x && p.y >= box.minPoint().y &&
         p.y <= box.maxPoint().y;
}

bool boxInside(const OdGeExtents2d& inner, const OdGeExtents2d& outer) {
  return boxContains(outer, inner.minPoint()) && boxContains(outer, inner.maxPoint());
}

bool boxesMeet(const OdGeExtents2d& a, const OdGeExtents2d& b) {
  return a.minPoint().x <= b.maxPoint().x && b.minPoint().x <= a.maxPoint().x &&
         a.minPoint().y <= b.maxPoint().y && b.minPoint().y <= a.maxPoint().y;
}

// A segment meets a box: an end inside, or it crosses an edge.
bool segmentMeetsBox(const OdGePoint2d& a, const OdGePoint2d& b, const OdGeExtents2d& box) {
  if (boxContains(box, a) || boxContains(box, b)) return true;
  const OdGePoint2d lo = box.minPoint(), hi = box.maxPoint();
  const OdGePoint2d corners[4] = {lo, {hi.x, lo.y}, hi, {lo.x, hi.y}};
  for (int i = 0; i < 4; ++i) {
    if (segmentsMeet(a, b, corners[i], corners[(i + 1) % 4])) return true;
  }
  return false;
}

bool pointInPolygon(const OdGePoint2d& p, const std::vector<OdGePoint2d>& polygon) {
  bool inside = false;
  for (size_t i = 0, j = polygon.size() - 1; i < polygon.size(); j = i++) {
    const OdGePoint2d& a = polygon[i];
    const OdGePoint2d& b = polygon[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
  }
  return inside;
}

bool boxInsidePolygon(const OdGeExtents2d& box, const std::vector<OdGePoint2d>& polygon) {
  const OdGePoint2d lo = box.minPoint(), hi = box.maxPoint();
  const OdGePoint2d corners[4] = {lo, {hi.x, lo.y}, hi, {lo.x, hi.y}};
  for (const OdGePoint2d& corner : corners) {
    if (!pointInPolygon(corner, polygon)) return false;
  }
  for (size_t i = 0; i < polygon.size(); ++i) {
    if (segmentMeetsBox(polygon[i], polygon[(i + 1) % polygon.size()], box)) return false;
  }
  return true;
}

OdGeExtents2d boxOf(const std::vector<OdGePoint2d>& points) {
  OdGeExtents2d box;
  for (const OdGePoint2d& p : points) box.addPoint(p);
  return box;
}

// ---------------------------------------------------------------- entity geometry

// The drawable pieces of an entity, each able to tell its plan distance to a
// point and whether it meets a box or a segment.
class Shape {
 public:
  explicit Shape(const OdDbEntity* entity) { addPart(entity, 0); }

  bool empty() const { return m_parts.empty(); }

  double distance(const OdGePoint2d& p) const {
    double best = std::numeric_limits<double>::infinity();
    for (const Part& part : m_parts) best = std::min(best, partDistance(part, p));
    return best;
  }

  bool meetsBox(const OdGeExtents2d& box) const {
    for (const Part& part : m_parts) {
      if (!boxesMeet(part.box, box)) continue;
      if (boxInside(part.box, box)) return true;
      if (part.isLine ? segmentMeetsBox(part.start, part.end, box) : cellMeets(part, box)) return true;
    }
    return false;
  }

  bool meetsSegment(const OdGePoint2d& a, const OdGePoint2d& b) const {
    OdGeExtents2d reach(a, b);
    for (const Part& part : m_parts) {
      if (!boxesMeet(part.box, reach)) continue;
      if (part.isLine ? segmentsMeet(a, b, part.start, part.end) : pieceMeets(part, a, b)) return true;
    }
    return false;
  }

  // Every piece inside the polygon: its box is, or (curves) it starts inside
  // and crosses no edge.
  bool insidePolygon(const std::vector<OdGePoint2d>& polygon) const {
    for (const Part& part : m_parts) {
      if (boxInsidePolygon(part.box, polygon)) continue;
      if (!part.hasStart || !pointInPolygon(part.start, polygon)) return false;
      for (size_t i = 0; i < polygon.size(); ++i) {
        if (meetsPartSegment(part, polygon[i], polygon[(i + 1) % polygon.size()])) return false;
      }
    }
    return !m_parts.empty();
  }

 private:
  struct Part {
    const OdDbEntity* entity;
    OdGeExtents2d box;
    double z = 0;  // where distances are measured: the middle of the piece's height
    bool isLine = false;
    bool hasStart = false;
    OdGePoint2d start, end;
  };
  // Bounds of the subdivision: the depth of the finest cell or piece and the
  // number of distances one test may ask for.
  static constexpr int kMaxDepth = 24;
  static constexpr int kBudget = 4096;

  void addPart(const OdDbEntity* entity, int depth) {
    const bool composite =
        entity->isKindOf(OdDbBlockReference::desc()) || entity->isKindOf(OdDbDimension::desc());
    if (composite && depth < 4) {
      OdRxObjectPtrArray pieces;
      if (entity->explode(pieces) == eOk) {
        for (const OdRxObjectPtr& piece : pieces) {
          auto* part = dynamic_cast<OdDbEntity*>(piece.get());
          // Attribute definitions do not show in references.
          if (!part || part->isKindOf(OdDbAttributeDefinition::desc())) continue;
          m_keep.push_back(piece);
          addPart(part, depth + 1);
        }
        if (auto* reference = dynamic_cast<const OdDbBlockReference*>(entity)) {
          for (const OdDbObjectId& id : reference->attributeIds()) {
            OdDbObjectPtr attribute = id.openObject();
            auto* part = dynamic_cast<OdDbEntity*>(attribute.get());
            if (!part || part->visibility() == OdDb::kInvisible) continue;
            m_keep.push_back(attribute);
            addPart(part, depth + 1);
          }
        }
        return;
      }
    }
    OdGeExtents3d extents;
    if (entity->getGeomExtents(extents) != eOk || !extents.isValidExtents()) return;
    Part part;
    part.entity = entity;
    part.box.set(plan(extents.minPoint()), plan(extents.maxPoint()));
    part.z = (extents.minPoint().z + extents.maxPoint().z) / 2;
    if (auto* curve = dynamic_cast<const OdDbCurve*>(entity)) {
      OdGePoint3d start, end;
      if (curve->getStartPoint(start) == eOk) {
        part.hasStart = true;
        part.start = plan(start);
      }
      if (auto* line = dynamic_cast<const OdDbLine*>(entity); line && line->thickness() == 0) {
        part.isLine = true;
        part.end = plan(line->endPoint());
      }
    }
    m_parts.push_back(part);
  }

  static double partDistance(const Part& part, const OdGePoint2d& p) {
    if (part.isLine) return segmentDistance(p, part.start, part.end);
    return part.entity->distanceTo(OdGePoint3d(p.x, p.y, part.z));
  }

  bool meetsPartSegment(const Part& part, const OdGePoint2d& a, const OdGePoint2d& b) const {
    if (!boxesMeet(part.box, OdGeExtents2d(a, b))) return false;
    return part.isLine ? segmentsMeet(a, b, part.start, part.end) : pieceMeets(part, a, b);
  }

  // The cell holds some of the piece: the nearest point to its centre is
  // within its inscribed circle (yes) or beyond its circumscribed one (no);
  // otherwise its quarters decide.
  static bool cellMeets(const Part& part, const OdGeExtents2d& box) {
    int budget = kBudget;
    return cellMeets(part, box, 0, budget);
  }
  static bool cellMeets(const Part& part, const OdGeExtents2d& cell, int depth, int& budget) {
    const OdGePoint2d lo = cell.minPoint(), hi = cell.maxPoint();
    const double hx = (hi.x - lo.x) / 2, hy = (hi.y - lo.y) / 2;
    const OdGePoint2d centre(lo.x + hx, lo.y + hy);
    const double d = partDistance(part, centre);
    --budget;
    if (d <= std::min(hx, hy)) return true;
    if (d > std::hypot(hx, hy) || depth >= kMaxDepth || budget <= 0) return false;
    // Long thin cells split across their length only.
    const bool splitX = hx > 2 * hy || hx * 2 >= hy;
    const bool splitY = hy > 2 * hx || hy * 2 >= hx;
    const int nx = splitX ? 2 : 1, ny = splitY ? 2 : 1;
    for (int i = 0; i < nx; ++i) {
      for (int j = 0; j < ny; ++j) {
        const double x0 = lo.x + i * (hi.x - lo.x) / nx, y0 = lo.y + j * (hi.y - lo.y) / ny;
        OdGeExtents2d child;
        child.set({x0, y0}, {x0 + (hi.x - lo.x) / nx, y0 + (hi.y - lo.y) / ny});
        if (boxesMeet(child, part.box) && cellMeets(part, child, depth + 1, budget)) return true;
      }
    }
    return false;
  }

  // The same for a segment: the piece holds a point of the geometry when the
  // nearest point to its middle is nearer than its half length.
  static bool pieceMeets(const Part& part, const OdGePoint2d& a, const OdGePoint2d& b) {
    int budget = kBudget;
    const double tolerance = std::max(1e-12, 1e-9 * a.distanceTo(b));
    return pieceMeets(part, a, b, tolerance, 0, budget);
  }
  static bool pieceMeets(const Part& part, const OdGePoint2d& a, const OdGePoint2d& b, double tolerance,
                         int depth, int& budget) {
    const OdGePoint2d middle = a + (b - a) * 0.5;
    const double half = a.distanceTo(b) / 2;
    const double d = partDistance(part, middle);
    --budget;
    if (d <= tolerance) return true;
    if (d > half || depth >= 2 * kMaxDepth || budget <= 0) return false;
    return pieceMeets(part, a, middle, tolerance, depth + 1, budget) ||
           pieceMeets(part, middle, b, tolerance, depth + 1, budget);
  }

  std::vector<Part> m_parts;
  std::vector<OdRxObjectPtr> m_keep;  // exploded pieces and opened attributes the parts point into
};

OdDbEntityPtr openEntity(const OdDbObjectId& id) {
  if (id.isErased()) return OdDbEntityPtr();
  return OdDbEntity::cast(id.openObject().get());
}

}  // namespace

// ---------------------------------------------------------------- the picker

Picker::Picker(Document& doc)
    : m_doc(doc),
      m_space(doc.database()->currentSpaceId()),
      m_pickBox(static_cast<double>(Host::instance().sysvars().getInt(L"PICKBOX", 3))) {}

bool Picker::isShown(const OdDbEntity* entity) {
  if (entity->visibility() == OdDb::kInvisible) return false;
  OdDbStub* layer = entity->layerId().stub();
  auto known = m_layerShown.find(layer);
  if (known != m_layerShown.end()) return known->second;
  OdDbObjectPtr object = entity->layerId().openObject();
  auto* record = dynamic_cast<OdDbLayerTableRecord*>(object.get());
  const bool shown = !record || (!record->isOff() && !record->isFrozen());
  m_layerShown.emplace(layer, shown);
  return shown;
}

void Picker::candidates(const OdGePoint2d& low, const OdGePoint2d& high, std::vector<OdDbObjectId>& ids) {
  m_doc.spatialIndex().query(m_space, OdGeExtents2d(low, high), ids);
  // Handle order is creation order: results come out the same every time.
  std::sort(ids.begin(), ids.end());
}

void Picker::withinPickBox(const OdGePoint3d& world, std::vector<std::pair<OdDbObjectId, double>>& found) {
  const OdGePoint2d p = plan(world);
  const OdGeVector2d reach(m_pickBox, m_pickBox);
  std::vector<OdDbObjectId> ids;
  candidates(p - reach, p + reach, ids);
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr entity = openEntity(id);
    if (entity.isNull() || !isShown(entity.get())) continue;
    const double d = Shape(entity.get()).distance(p);
    if (d <= m_pickBox) found.emplace_back(id, d);
  }
}

OdDbObjectId Picker::pick(const OdGePoint3d& world) {
  std::vector<std::pair<OdDbObjectId, double>> found;
  withinPickBox(world, found);
  OdDbObjectId best;
  double bestDistance = std::numeric_limits<double>::infinity();
  // Later ids are drawn later, on top: they win ties.
  for (const auto& [id, d] : found) {
    if (d <= bestDistance) {
      best = id;
      bestDistance = d;
    }
  }
  return best;
}

void Picker::pickEverything(const OdGePoint3d& world, std::vector<OdDbObjectId>& found) {
  std::vector<std::pair<OdDbObjectId, double>> near;
  withinPickBox(world, near);
  for (const auto& entry : near) found.push_back(entry.first);
}

void Picker::window(const OdGePoint2d& corner1, const OdGePoint2d& corner2, bool crossing,
                    std::vector<OdDbObjectId>& found) {
  const OdGeExtents2d box(corner1, corner2);
  std::vector<OdDbObjectId> ids;
  candidates(box.minPoint(), box.maxPoint(), ids);
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr entity = openEntity(id);
    if (entity.isNull() || !isShown(entity.get())) continue;
    OdGeExtents3d extents;
    if (entity->getGeomExtents(extents) != eOk || !extents.isValidExtents()) continue;
    OdGeExtents2d own;
    own.set(plan(extents.minPoint()), plan(extents.maxPoint()));
    if (boxInside(own, box) || (crossing && Shape(entity.get()).meetsBox(box))) found.push_back(id);
  }
}

std::vector<std::pair<OdDbObjectId, OdDbEntityPtr>> Picker::shownAround(const std::vector<OdGePoint2d>& points) {
  const OdGeExtents2d reach = boxOf(points);
  std::vector<OdDbObjectId> ids;
  candidates(reach.minPoint(), reach.maxPoint(), ids);
  std::vector<std::pair<OdDbObjectId, OdDbEntityPtr>> shown;
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr entity = openEntity(id);
    if (!entity.isNull() && isShown(entity.get())) shown.emplace_back(id, entity);
  }
  return shown;
}

void Picker::polygon(const std::vector<OdGePoint2d>& points, bool crossing,
                     std::vector<OdDbObjectId>& found) {
  if (points.size() < 3) return;
  for (const auto& [id, entity] : shownAround(points)) {
    Shape shape(entity.get());
    bool taken = shape.insidePolygon(points);
    for (size_t i = 0; crossing && !taken && i < points.size(); ++i) {
      taken = shape.meetsSegment(points[i], points[(i + 1) % points.size()]);
    }
    if (taken) found.push_back(id);
  }
}

void Picker::fence(const std::vector<OdGePoint2d>& points, std::vector<OdDbObjectId>& found) {
  if (points.size() < 2) return;
  for (const auto& [id, entity] : shownAround(points)) {
    Shape shape(entity.get());
    for (size_t i = 0; i + 1 < points.size(); ++i) {
      if (shape.meetsSegment(points[i], points[i + 1])) {
        found.push_back(id);
        break;
      }
    }
  }
}

}  // namespace ryhost
