// The arithmetic of the planar regions: general polygon sets whose edges are
// line segments and circular arcs, with exact rational input and exact
// square-root extensions where curves cross. A bulge gives its arc a
// rational centre and squared radius, so every input curve is exact and a
// result arc lies on the very circle it came from.
//
// This is the only file that sees the geometry library; the header shows
// none of it.
#include "regions/EvGeRegion.h"

#include <CGAL/Boolean_set_operations_2.h>
#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/General_polygon_set_2.h>
#include <CGAL/Gps_circle_segment_traits_2.h>

#include <cmath>
#include <iterator>

namespace {

using Kernel = CGAL::Exact_predicates_exact_constructions_kernel;
using FT = Kernel::FT;
using Traits = CGAL::Gps_circle_segment_traits_2<Kernel>;
using PolygonSet = CGAL::General_polygon_set_2<Traits>;
using Polygon = Traits::General_polygon_2;
using PolygonWithHoles = Traits::General_polygon_with_holes_2;
using Curve = Traits::Curve_2;
using XCurve = Traits::X_monotone_curve_2;
using OneRootPoint = Traits::Point_2;

constexpr double kTwoPi = 6.28318530717958647692;

const Traits& traits() {
  static const Traits instance;
  return instance;
}

// The x-monotone pieces of one input curve, appended to a polygon.
void appendCurve(const Curve& curve, Polygon& polygon) {
  std::vector<boost::variant<OneRootPoint, XCurve>> parts;
  traits().make_x_monotone_2_object()(curve, std::back_inserter(parts));
  for (const auto& part : parts) {
    if (const XCurve* piece = boost::get<XCurve>(&part)) polygon.push_back(*piece);
  }
}

// A counter-clockwise loop as a polygon.
Polygon polygonOf(const EvGeLoop2d& loop) {
  Polygon polygon;
  if (loop.isCircle) {
    const Kernel::Point_2 center(loop.center.x, loop.center.y);
    const FT r(loop.radius);
    appendCurve(Curve(Kernel::Circle_2(center, r * r, CGAL::COUNTERCLOCKWISE)), polygon);
    return polygon;
  }
  const size_t n = loop.vertices.size();
  for (size_t i = 0; i < n; ++i) {
    const EvGeLoopVertex& from = loop.vertices[i];
    const OdGePoint2d& to = loop.vertices[(i + 1) % n].point;
    const FT x0(from.point.x), y0(from.point.y), x1(to.x), y1(to.y);
    if (from.bulge == 0.0) {
      appendCurve(Curve(Kernel::Point_2(x0, y0), Kernel::Point_2(x1, y1)), polygon);
      continue;
    }
    // The centre lies on the chord's left normal at (1 - b²) / (4b) chord
    // lengths from the chord's midpoint: rational in the bulge and the ends.
    const FT b(from.bulge);
    const FT k = (FT(1) - b * b) / (FT(4) * b);
    const FT cx = (x0 + x1) / FT(2) - (y1 - y0) * k;
    const FT cy = (y0 + y1) / FT(2) + (x1 - x0) * k;
    const FT squaredRadius = (x0 - cx) * (x0 - cx) + (y0 - cy) * (y0 - cy);
    const Kernel::Circle_2 circle(Kernel::Point_2(cx, cy), squaredRadius,
                                  from.bulge > 0 ? CGAL::COUNTERCLOCKWISE : CGAL::CLOCKWISE);
    appendCurve(Curve(circle, OneRootPoint(x0, y0), OneRootPoint(x1, y1)), polygon);
  }
  return polygon;
}

OdGePoint2d approximate(const OneRootPoint& point) {
  return OdGePoint2d(CGAL::to_double(point.x()), CGAL::to_double(point.y()));
}

// The sweep of an x-monotone arc in its own sense, in (0, 2π].
double sweepOf(const XCurve& arc, const OdGePoint2d& from, const OdGePoint2d& to) {
  const Kernel::Circle_2 circle = arc.supporting_circle();
  const double cx = CGAL::to_double(circle.center().x()), cy = CGAL::to_double(circle.center().y());
  double sweep = std::atan2(to.y - cy, to.x - cx) - std::atan2(from.y - cy, from.x - cx);
  if (arc.orientation() == CGAL::CLOCKWISE) sweep = -sweep;
  while (sweep <= 0) sweep += kTwoPi;
  while (sweep > kTwoPi) sweep -= kTwoPi;
  return sweep;
}

// A run of x-monotone pieces on one line or one circle, joined.
struct Run {
  XCurve first;
  OdGePoint2d start, end;
  double sweep = 0.0;  // arcs only
};

bool continues(const Run& run, const XCurve& piece) {
  if (run.first.is_linear() != piece.is_linear()) return false;
  if (run.first.is_circular() && run.first.orientation() != piece.orientation()) return false;
  return run.first.has_same_supporting_curve(piece);
}

EvGeLoop2d loopOf(const Polygon& polygon) {
  std::vector<Run> runs;
  for (auto it = polygon.curves_begin(); it != polygon.curves_end(); ++it) {
    const OdGePoint2d start = approximate(it->source()), end = approximate(it->target());
    const double sweep = it->is_circular() ? sweepOf(*it, start, end) : 0.0;
    if (!runs.empty() && continues(runs.back(), *it)) {
      runs.back().end = end;
      runs.back().sweep += sweep;
      continue;
    }
    runs.push_back({*it, start, end, sweep});
  }
  // The last run may go on into the first.
  if (runs.size() > 1 && continues(runs.back(), runs.front().first)) {
    runs.front().start = runs.back().start;
    runs.front().sweep += runs.back().sweep;
    runs.pop_back();
  }
  EvGeLoop2d loop;
  if (runs.size() == 1 && runs[0].first.is_circular()) {
    const Kernel::Circle_2 circle = runs[0].first.supporting_circle();
    return EvGeLoop2d::circle(
        OdGePoint2d(CGAL::to_double(circle.center().x()), CGAL::to_double(circle.center().y())),
        std::sqrt(CGAL::to_double(circle.squared_radius())));
  }
  for (const Run& run : runs) {
    double bulge = 0.0;
    if (run.first.is_circular()) {
      bulge = std::tan(run.sweep / 4.0);
      if (run.first.orientation() == CGAL::CLOCKWISE) bulge = -bulge;
    }
    loop.vertices.push_back({run.start, bulge});
  }
  return loop;
}

// A polygon is usable when it is simple (its pieces neither cross nor touch).
bool isSimple(const Polygon& polygon) {
  if (polygon.size() < 2) return false;
  PolygonWithHoles withHoles(polygon);
  return CGAL::is_valid_polygon_with_holes(withHoles, traits());
}

}  // namespace

// ---------------------------------------------------------------- regions

struct EvGeRegion2d::Impl {
  PolygonWithHoles shape;
  bool empty = true;
};

EvGeRegion2d::EvGeRegion2d() : m_impl(std::make_unique<Impl>()) {}
EvGeRegion2d::EvGeRegion2d(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}
EvGeRegion2d::EvGeRegion2d(const EvGeRegion2d& other) : m_impl(std::make_unique<Impl>(*other.m_impl)) {}
EvGeRegion2d& EvGeRegion2d::operator=(const EvGeRegion2d& other) {
  *m_impl = *other.m_impl;
  return *this;
}
EvGeRegion2d::~EvGeRegion2d() = default;

bool EvGeRegion2d::isEmpty() const { return m_impl->empty; }

int EvGeRegion2d::loopCount() const {
  return m_impl->empty ? 0 : 1 + static_cast<int>(m_impl->shape.number_of_holes());
}

std::vector<EvGeLoop2d> EvGeRegion2d::loops() const {
  std::vector<EvGeLoop2d> result;
  if (m_impl->empty) return result;
  result.push_back(loopOf(m_impl->shape.outer_boundary()));
  for (auto hole = m_impl->shape.holes_begin(); hole != m_impl->shape.holes_end(); ++hole)
    result.push_back(loopOf(*hole));
  return result;
}

double EvGeRegion2d::area() const {
  double total = 0.0;
  for (const EvGeLoop2d& loop : loops()) total += loop.signedArea();
  return total;
}

namespace {

std::unique_ptr<EvGeRegion2d::Impl> implOf(const PolygonWithHoles& shape) {
  auto impl = std::make_unique<EvGeRegion2d::Impl>();
  impl->shape = shape;
  impl->empty = false;
  return impl;
}

}  // namespace

// A region made from the parts of a polygon set.
class EvGeResultRegion : public EvGeRegion2d {
 public:
  explicit EvGeResultRegion(const PolygonWithHoles& shape) : EvGeRegion2d(implOf(shape)) {}
};

namespace {

void appendParts(const PolygonSet& set, EvGeObjList& result) {
  std::vector<PolygonWithHoles> parts;
  set.polygons_with_holes(std::back_inserter(parts));
  for (const PolygonWithHoles& part : parts) result.append(EvGeResultRegion(part));
}

}  // namespace

bool EvGeRegion2d::IntersectWith(const EvGeRegion2d& other, EvGeObjList& result) const {
  if (m_impl->empty || other.m_impl->empty) return true;
  PolygonSet set(m_impl->shape);
  set.intersection(other.m_impl->shape);
  appendParts(set, result);
  return true;
}

bool EvGeRegion2d::SubtractBy(const EvGeObjList& tools, EvGeObjList& result) const {
  if (m_impl->empty) return true;
  std::vector<PolygonWithHoles> shapes;
  for (int i = 0; i < tools.count(); ++i) {
    if (!tools.at(i)->isEmpty()) shapes.push_back(tools.at(i)->m_impl->shape);
  }
  PolygonSet set(m_impl->shape);
  if (!shapes.empty()) {
    PolygonSet cutters;
    cutters.join(shapes.begin(), shapes.end());
    set.difference(cutters);
  }
  appendParts(set, result);
  return true;
}

EvGeGeneralRegion2d::EvGeGeneralRegion2d(const EvGeLoop2d& outline) {
  EvGeLoop2d loop = outline.withoutRepeatedVertices();
  if (loop.isCircle ? !(loop.radius > 0.0) : loop.vertices.size() < 2) return;
  if (!loop.isCircle && loop.signedArea() < 0) loop = loop.reversed();
  Polygon polygon = polygonOf(loop);
  // A circle of positive radius is always simple; the check builds an arrangement.
  if (!loop.isCircle && !isSimple(polygon)) return;
  m_impl->shape = PolygonWithHoles(polygon);
  m_impl->empty = false;
}

// ---------------------------------------------------------------- lists

EvGeObjList::EvGeObjList() = default;
EvGeObjList::~EvGeObjList() = default;

void EvGeObjList::Union(const EvGeRegion2d& region) {
  if (!region.isEmpty()) m_pending.push_back(std::make_unique<EvGeRegion2d>(region));
}

void EvGeObjList::append(const EvGeRegion2d& region) {
  settle();
  if (!region.isEmpty()) m_regions.push_back(std::make_unique<EvGeRegion2d>(region));
}

void EvGeObjList::settle() const {
  if (m_pending.empty()) return;
  std::vector<PolygonWithHoles> shapes;
  shapes.reserve(m_regions.size() + m_pending.size());
  for (const auto& region : m_regions) shapes.push_back(region->m_impl->shape);
  for (const auto& region : m_pending) shapes.push_back(region->m_impl->shape);
  m_pending.clear();
  m_regions.clear();
  PolygonSet set;
  set.join(shapes.begin(), shapes.end());
  std::vector<PolygonWithHoles> parts;
  set.polygons_with_holes(std::back_inserter(parts));
  for (const PolygonWithHoles& part : parts) m_regions.push_back(std::make_unique<EvGeResultRegion>(part));
  m_cursor = 0;
}

bool EvGeObjList::IntersectWith(const EvGeRegion2d& region, EvGeObjList& result) const {
  settle();
  for (const auto& own : m_regions) {
    if (!own->IntersectWith(region, result)) return false;
  }
  return true;
}

void EvGeObjList::clear() {
  m_regions.clear();
  m_pending.clear();
  m_cursor = 0;
}

int EvGeObjList::count() const {
  settle();
  return static_cast<int>(m_regions.size());
}

bool EvGeObjList::first() const {
  settle();
  m_cursor = 0;
  return !m_regions.empty();
}

bool EvGeObjList::next() const {
  settle();
  if (m_cursor < m_regions.size()) ++m_cursor;
  return m_cursor < m_regions.size();
}

bool EvGeObjList::current() const {
  settle();
  return m_cursor < m_regions.size();
}

const EvGeRegion2d* EvGeObjList::GetCurRegion2D() const { return current() ? m_regions[m_cursor].get() : nullptr; }

const EvGeRegion2d* EvGeObjList::at(int index) const {
  settle();
  return index >= 0 && static_cast<size_t>(index) < m_regions.size() ? m_regions[index].get() : nullptr;
}
