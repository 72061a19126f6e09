#include "DbHatch.h"

#include <cmath>
#include <limits>

#include "Ge/GeBulge.h"
#include "Ge/GeEllipArc3d.h"
#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbHatch, OdDbEntity, L"HATCH")

using namespace OdDbEntityGeometry;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 2 * kPi;
constexpr double kDegToRad = kPi / 180.0;
constexpr double kRadToDeg = 180.0 / kPi;

// Sweep of an arc from start to end in its own sense: equal angles are a full turn.
double sweepOf(double start, double end) {
  double sweep = std::fmod(end - start, kTwoPi);
  if (sweep <= 0) sweep += kTwoPi;
  return sweep;
}

bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }
bool same(const OdGePoint2d& p, const OdGePoint2d& q) { return same(p.x, q.x) && same(p.y, q.y); }
bool same(const OdGeVector2d& p, const OdGeVector2d& q) { return same(p.x, q.x) && same(p.y, q.y); }
// Ids of two databases compare by handle.
bool sameIds(const OdDbObjectIdArray& a, const OdDbObjectIdArray& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const OdDbObjectId& p, const OdDbObjectId& q) {
    return p.isNull() == q.isNull() && (p.isNull() || p.handle() == q.handle());
  });
}

template <class T>
bool sameArray(const OdArray<T>& a, const OdArray<T>& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (!same(a[i], b[i])) return false;
  }
  return true;
}

// Value of a rational B-spline at u (de Boor on homogeneous points).
bool evalSpline(int degree, const OdGeDoubleArray& knots, const OdGePoint2dArray& points,
                const OdGeDoubleArray& weights, double u, OdGePoint2d& result) {
  const int n = static_cast<int>(points.size());
  const int p = degree;
  if (p < 1 || n <= p || static_cast<int>(knots.size()) != n + p + 1) return false;
  int span = p;
  while (span < n - 1 && u >= knots[static_cast<size_t>(span + 1)]) ++span;
  struct H {
    double x, y, w;
  };
  std::vector<H> d(static_cast<size_t>(p + 1));
  for (int j = 0; j <= p; ++j) {
    const size_t index = static_cast<size_t>(j + span - p);
    double w = weights.size() == points.size() ? weights[index] : 1.0;
    d[static_cast<size_t>(j)] = {points[index].x * w, points[index].y * w, w};
  }
  for (int r = 1; r <= p; ++r) {
    for (int j = p; j >= r; --j) {
      double lo = knots[static_cast<size_t>(j + span - p)];
      double hi = knots[static_cast<size_t>(j + 1 + span - r)];
      double alpha = hi > lo ? (u - lo) / (hi - lo) : 0.0;
      H& a = d[static_cast<size_t>(j - 1)];
      H& b = d[static_cast<size_t>(j)];
      b = {(1 - alpha) * a.x + alpha * b.x, (1 - alpha) * a.y + alpha * b.y, (1 - alpha) * a.w + alpha * b.w};
    }
  }
  const H& h = d[static_cast<size_t>(p)];
  if (h.w == 0) return false;
  result.set(h.x / h.w, h.y / h.w);
  return true;
}

// True when the knots fit the control points and degree, so the curve can be evaluated.
bool isEvaluable(const OdDbHatchEdge& edge) {
  const size_t n = edge.controlPoints.size();
  return edge.degree >= 1 && n > static_cast<size_t>(edge.degree) && edge.knots.size() == n + edge.degree + 1;
}

// Unit direction of the ellipse's minor axis times its length.
OdGeVector2d minorAxisOf(const OdDbHatchEdge& edge) {
  return edge.majorAxis.perpVector() * edge.minorMajorRatio;
}

// Point of a circular or elliptical edge at the stored angle t (see OdDbHatchEdge).
OdGePoint2d pointOnCurvedEdge(const OdDbHatchEdge& edge, double t) {
  const double sense = edge.isCounterClockwise ? 1.0 : -1.0;
  const double c = std::cos(t), s = std::sin(t) * sense;
  if (edge.type == OdDbHatchEdge::kCircArc) return edge.center + OdGeVector2d(c, s) * edge.radius;
  return edge.center + edge.majorAxis * c + minorAxisOf(edge) * s;
}

// Twice the signed area that an edge sweeps about the origin (Green's theorem).
double doubleAreaOf(const OdDbHatchEdge& edge) {
  switch (edge.type) {
    case OdDbHatchEdge::kLine: return (edge.start - OdGePoint2d()).crossProduct(edge.end - OdGePoint2d());
    case OdDbHatchEdge::kCircArc:
    case OdDbHatchEdge::kEllipArc: {
      const double sense = edge.isCounterClockwise ? 1.0 : -1.0;
      const double u0 = sense * edge.startAngle;
      const double u1 = sense * (edge.startAngle + sweepOf(edge.startAngle, edge.endAngle));
      OdGeVector2d a = edge.type == OdDbHatchEdge::kCircArc ? OdGeVector2d(edge.radius, 0) : edge.majorAxis;
      OdGeVector2d b =
          edge.type == OdDbHatchEdge::kCircArc ? OdGeVector2d(0, edge.radius) : minorAxisOf(edge);
      OdGeVector2d c = edge.center - OdGePoint2d();
      return c.crossProduct(a) * (std::cos(u1) - std::cos(u0)) +
             c.crossProduct(b) * (std::sin(u1) - std::sin(u0)) + a.crossProduct(b) * (u1 - u0);
    }
    case OdDbHatchEdge::kSpline: {
      OdGePoint2dArray points;
      edge.getSamplePoints(points);
      double sum = 0;
      for (size_t i = 1; i < points.size(); ++i) {
        sum += (points[i - 1] - OdGePoint2d()).crossProduct(points[i] - OdGePoint2d());
      }
      return sum;
    }
  }
  return 0;
}

}  // namespace

// ---------------------------------------------------------------- edges

OdDbHatchEdge OdDbHatchEdge::line(const OdGePoint2d& start, const OdGePoint2d& end) {
  OdDbHatchEdge edge;
  edge.type = kLine;
  edge.start = start;
  edge.end = end;
  return edge;
}

OdDbHatchEdge OdDbHatchEdge::circularArc(const OdGePoint2d& center, double radius, double startAngle,
                                         double endAngle, bool isCounterClockwise) {
  OdDbHatchEdge edge;
  edge.type = kCircArc;
  edge.center = center;
  edge.radius = radius;
  edge.startAngle = startAngle;
  edge.endAngle = endAngle;
  edge.isCounterClockwise = isCounterClockwise;
  return edge;
}

OdDbHatchEdge OdDbHatchEdge::ellipticalArc(const OdGePoint2d& center, const OdGeVector2d& majorAxis,
                                           double minorMajorRatio, double startAngle, double endAngle,
                                           bool isCounterClockwise) {
  OdDbHatchEdge edge;
  edge.type = kEllipArc;
  edge.center = center;
  edge.majorAxis = majorAxis;
  edge.minorMajorRatio = minorMajorRatio;
  edge.startAngle = startAngle;
  edge.endAngle = endAngle;
  edge.isCounterClockwise = isCounterClockwise;
  return edge;
}

OdDbHatchEdge OdDbHatchEdge::spline(int degree, const OdGeDoubleArray& knots,
                                    const OdGePoint2dArray& controlPoints, const OdGeDoubleArray& weights,
                                    bool periodic) {
  OdDbHatchEdge edge;
  edge.type = kSpline;
  edge.degree = degree;
  edge.knots = knots;
  edge.controlPoints = controlPoints;
  edge.weights = weights;
  edge.rational = !weights.isEmpty();
  edge.periodic = periodic;
  return edge;
}

OdGeCircArc2d OdDbHatchEdge::circArc() const {
  return OdGeCircArc2d(center, radius, startAngle, startAngle + sweepOf(startAngle, endAngle),
                       OdGeVector2d::kXAxis, !isCounterClockwise);
}

void OdDbHatchEdge::getSamplePoints(OdGePoint2dArray& points) const {
  points.clear();
  switch (type) {
    case kLine:
      points.append(start);
      points.append(end);
      return;
    case kCircArc:
    case kEllipArc: {
      const double sweep = sweepOf(startAngle, endAngle);
      const int count = std::max(4, static_cast<int>(std::ceil(sweep / (kTwoPi / 256))));
      for (int i = 0; i <= count; ++i)
        points.append(pointOnCurvedEdge(*this, startAngle + sweep * i / count));
      return;
    }
    case kSpline: {
      const size_t n = controlPoints.size();
      OdGePoint2d p;
      if (isEvaluable(*this)) {
        const double u0 = knots[static_cast<size_t>(degree)], u1 = knots[n];
        const int count = static_cast<int>(16 * n);
        for (int i = 0; i <= count; ++i) {
          if (evalSpline(degree, knots, controlPoints, weights, u0 + (u1 - u0) * i / count, p))
            points.append(p);
        }
      } else {
        points = controlPoints;  // no usable knots: the control polygon
      }
      return;
    }
  }
}

OdGePoint2d OdDbHatchEdge::startPoint() const {
  switch (type) {
    case kLine: return start;
    case kCircArc:
    case kEllipArc: return pointOnCurvedEdge(*this, startAngle);
    case kSpline: {
      if (!fitPoints.isEmpty() && controlPoints.isEmpty()) return fitPoints.first();
      OdGePoint2d p;
      if (isEvaluable(*this) &&
          evalSpline(degree, knots, controlPoints, weights, knots[static_cast<size_t>(degree)], p)) {
        return p;
      }
      return controlPoints.isEmpty() ? OdGePoint2d() : controlPoints.first();
    }
  }
  return start;
}

OdGePoint2d OdDbHatchEdge::endPoint() const {
  switch (type) {
    case kLine: return end;
    case kCircArc:
    case kEllipArc: return pointOnCurvedEdge(*this, startAngle + sweepOf(startAngle, endAngle));
    case kSpline: {
      if (!fitPoints.isEmpty() && controlPoints.isEmpty()) return fitPoints.last();
      OdGePoint2d p;
      const size_t n = controlPoints.size();
      if (isEvaluable(*this) && evalSpline(degree, knots, controlPoints, weights, knots[n], p)) return p;
      return controlPoints.isEmpty() ? OdGePoint2d() : controlPoints.last();
    }
  }
  return end;
}

// ---------------------------------------------------------------- file form

struct OdDbHatch::EdgeRecord {
  OdInt16 type = OdDbHatchEdge::kLine;
  OdGePoint2d start, end;    // line
  OdGePoint2d center;        // arcs
  OdGeVector2d majorAxis;    // ellipse
  double radiusOrRatio = 0;  // group 40: arc radius, ellipse minor/major ratio
  double startDegrees = 0, endDegrees = 0;
  OdInt16 counterClockwise = 1;
  OdInt32 degree = 3;
  OdInt16 rational = 0, periodic = 0;
  OdGeDoubleArray knots;
  OdGePoint2dArray controlPoints;
  OdGeDoubleArray weights;
  bool weightsAfterControlPoints = false;  // files may list the weights after all control points
  OdGePoint2dArray fitPoints;
  OdGeVector2d startTangent, endTangent;

  bool operator==(const EdgeRecord& o) const {
    return type == o.type && same(start, o.start) && same(end, o.end) && same(center, o.center) &&
           same(majorAxis, o.majorAxis) && same(radiusOrRatio, o.radiusOrRatio) &&
           same(startDegrees, o.startDegrees) && same(endDegrees, o.endDegrees) &&
           counterClockwise == o.counterClockwise && degree == o.degree && rational == o.rational &&
           periodic == o.periodic && sameArray(knots, o.knots) && sameArray(controlPoints, o.controlPoints) &&
           sameArray(weights, o.weights) && weightsAfterControlPoints == o.weightsAfterControlPoints &&
           sameArray(fitPoints, o.fitPoints) && same(startTangent, o.startTangent) &&
           same(endTangent, o.endTangent);
  }
};

struct OdDbHatch::LoopRecord {
  OdInt32 flags = 0;
  OdInt16 hasBulges = 0;  // polyline loops
  OdInt16 closed = 1;
  OdGePoint2dArray vertices;
  OdGeDoubleArray bulges;
  std::vector<EdgeRecord> edges;
  OdDbObjectIdArray sources;

  bool isPolyline() const { return flags & OdDbHatch::kPolyline; }
  bool operator==(const LoopRecord& o) const {
    return flags == o.flags && hasBulges == o.hasBulges && closed == o.closed &&
           sameArray(vertices, o.vertices) && sameArray(bulges, o.bulges) && edges == o.edges &&
           sameIds(sources, o.sources);
  }
};

struct OdDbHatch::PatternLineRecord {
  double angleDegrees = 0;
  double baseX = 0, baseY = 0, offsetX = 0, offsetY = 0;
  OdGeDoubleArray dashes;

  bool operator==(const PatternLineRecord& o) const {
    return same(angleDegrees, o.angleDegrees) && same(baseX, o.baseX) && same(baseY, o.baseY) &&
           same(offsetX, o.offsetX) && same(offsetY, o.offsetY) && sameArray(dashes, o.dashes);
  }
};

struct OdDbHatch::Data {
  std::vector<LoopRecord> loops;
  OdInt16 style = kNormal;
  OdInt16 patternType = kPreDefined;
  // Pattern groups (52, 41, 77, 78 and the line families): files leave them
  // out for most solid fills.
  bool hasPatternGroups = true;
  double angleDegrees = 0;
  double scale = 1;
  OdInt16 isDouble = 0;
  std::vector<PatternLineRecord> lines;
  bool hasPixelSize = false;  // group 47, written by associative hatches
  double pixelSize = 0;
  OdGePoint2dArray seeds;

  bool operator==(const Data& o) const {
    return loops == o.loops && style == o.style && patternType == o.patternType &&
           hasPatternGroups == o.hasPatternGroups && same(angleDegrees, o.angleDegrees) &&
           same(scale, o.scale) && isDouble == o.isDouble && lines == o.lines &&
           hasPixelSize == o.hasPixelSize && same(pixelSize, o.pixelSize) && sameArray(seeds, o.seeds);
  }
};

// Where the reading of the loop and pattern groups stands.
struct OdDbHatch::ReadState {
  enum class Phase { kBeforeLoops, kLoops, kPattern, kSeeds };
  Phase phase = Phase::kBeforeLoops;
  bool countRead = false;     // group 93 of the current loop
  bool inSources = false;     // group 97 (source objects) of the current loop
  bool fitCountRead = false;  // group 97 (fit data) of the current spline edge
};

namespace {

OdDbHatchEdge edgeFromRecord(const OdDbHatch::EdgeRecord& r) {
  OdDbHatchEdge e;
  e.type = static_cast<OdDbHatchEdge::Type>(r.type);
  e.start = r.start;
  e.end = r.end;
  e.center = r.center;
  e.majorAxis = r.majorAxis;
  if (r.type == OdDbHatchEdge::kCircArc) e.radius = r.radiusOrRatio;
  if (r.type == OdDbHatchEdge::kEllipArc) e.minorMajorRatio = r.radiusOrRatio;
  e.startAngle = r.startDegrees * kDegToRad;
  e.endAngle = r.endDegrees * kDegToRad;
  e.isCounterClockwise = r.counterClockwise != 0;
  e.degree = r.degree;
  e.rational = r.rational != 0;
  e.periodic = r.periodic != 0;
  e.knots = r.knots;
  e.controlPoints = r.controlPoints;
  e.weights = r.weights;
  e.fitPoints = r.fitPoints;
  e.startTangent = r.startTangent;
  e.endTangent = r.endTangent;
  return e;
}

OdDbHatch::EdgeRecord recordFromEdge(const OdDbHatchEdge& e) {
  OdDbHatch::EdgeRecord r;
  r.type = e.type;
  switch (e.type) {
    case OdDbHatchEdge::kLine:
      r.start = e.start;
      r.end = e.end;
      break;
    case OdDbHatchEdge::kCircArc:
    case OdDbHatchEdge::kEllipArc:
      r.center = e.center;
      r.majorAxis = e.majorAxis;
      r.radiusOrRatio = e.type == OdDbHatchEdge::kCircArc ? e.radius : e.minorMajorRatio;
      r.startDegrees = e.startAngle * kRadToDeg;
      r.endDegrees = e.endAngle * kRadToDeg;
      r.counterClockwise = e.isCounterClockwise ? 1 : 0;
      break;
    case OdDbHatchEdge::kSpline:
      r.degree = e.degree;
      r.rational = (e.rational || !e.weights.isEmpty()) ? 1 : 0;
      r.periodic = e.periodic ? 1 : 0;
      r.knots = e.knots;
      r.controlPoints = e.controlPoints;
      r.weights = e.weights;
      r.fitPoints = e.fitPoints;
      r.startTangent = e.startTangent;
      r.endTangent = e.endTangent;
      break;
  }
  return r;
}

// A polyline loop as lines and arcs that keep its direction.
void polylineLoopEdges(const OdDbHatch::LoopRecord& loop, OdDbHatchEdgeArray& edges) {
  const size_t n = loop.vertices.size();
  for (size_t i = 0; i < n; ++i) {
    const OdGePoint2d& p = loop.vertices[i];
    const OdGePoint2d& q = loop.vertices[(i + 1) % n];
    if (p.x == q.x && p.y == q.y) continue;
    const double bulge = loop.hasBulges && i < loop.bulges.size() ? loop.bulges[i] : 0.0;
    OdGePoint2d center;
    double radius, startAngle, endAngle;
    if (bulge == 0 || !odgeArcFromBulge(p, q, bulge, center, radius, startAngle, endAngle)) {
      edges.append(OdDbHatchEdge::line(p, q));
    } else if (bulge > 0) {
      edges.append(OdDbHatchEdge::circularArc(center, radius, startAngle, endAngle, true));
    } else {
      // The counter-clockwise arc runs from q to p; clockwise angles are its negatives.
      auto turn = [](double a) { return a <= 0 ? -a : kTwoPi - a; };
      edges.append(OdDbHatchEdge::circularArc(center, radius, turn(endAngle), turn(startAngle), false));
    }
  }
}

OdDbHatchEdgeArray loopEdges(const OdDbHatch::LoopRecord& loop) {
  OdDbHatchEdgeArray edges;
  if (loop.isPolyline()) {
    polylineLoopEdges(loop, edges);
  } else {
    for (const auto& record : loop.edges) edges.append(edgeFromRecord(record));
  }
  return edges;
}

}  // namespace

// Groups 91 to the seed points: the loops, the hatch style and pattern
// type, the pattern, the pixel size and the seeds. One value because the
// loops and the seeds share group 10 and must be told apart by position.
struct OdDbHatchDataCodec : OdDbFieldCodec {
  using Hatch = OdDbHatch;
  using Phase = OdDbHatch::ReadState::Phase;

  std::vector<int> codes() const override {
    return {91, 92,  93, 72, 73, 74, 10, 11, 12, 13, 40, 42, 50, 51, 94, 95, 96,
            97, 330, 75, 76, 52, 41, 77, 78, 53, 43, 44, 45, 46, 79, 49, 47, 98};
  }

  static void point(OdDxfTagList& out, int code, const OdGePoint2d& p) {
    out.push_back(OdDxfTag::point(code, p.x, p.y, 0, 2));
  }
  static void vector(OdDxfTagList& out, int code, const OdGeVector2d& v) {
    out.push_back(OdDxfTag::point(code, v.x, v.y, 0, 2));
  }
  static void integer(OdDxfTagList& out, int code, OdInt64 value) {
    out.push_back(OdDxfTag::integer(code, value));
  }
  static void real(OdDxfTagList& out, int code, double value) { out.push_back(OdDxfTag::real(code, value)); }

  static void edgeTags(const Hatch::EdgeRecord& e, OdDxfTagList& out, OdDbTagContext& ctx) {
    integer(out, 72, e.type);
    switch (e.type) {
      case OdDbHatchEdge::kLine:
        point(out, 10, e.start);
        point(out, 11, e.end);
        break;
      case OdDbHatchEdge::kCircArc:
      case OdDbHatchEdge::kEllipArc:
        point(out, 10, e.center);
        if (e.type == OdDbHatchEdge::kEllipArc) vector(out, 11, e.majorAxis);
        real(out, 40, e.radiusOrRatio);
        real(out, 50, e.startDegrees);
        real(out, 51, e.endDegrees);
        integer(out, 73, e.counterClockwise);
        break;
      case OdDbHatchEdge::kSpline: {
        integer(out, 94, e.degree);
        integer(out, 73, e.rational);
        integer(out, 74, e.periodic);
        integer(out, 95, static_cast<OdInt64>(e.knots.size()));
        integer(out, 96, static_cast<OdInt64>(e.controlPoints.size()));
        for (double k : e.knots) real(out, 40, k);
        const bool interleaved = !e.weightsAfterControlPoints && e.weights.size() == e.controlPoints.size();
        for (size_t i = 0; i < e.controlPoints.size(); ++i) {
          point(out, 10, e.controlPoints[i]);
          if (interleaved) real(out, 42, e.weights[i]);
        }
        if (!interleaved) {
          for (double w : e.weights) real(out, 42, w);
        }
        if (ctx.version() >= OdDb::vAC24) {
          integer(out, 97, static_cast<OdInt64>(e.fitPoints.size()));
          for (const auto& p : e.fitPoints) point(out, 11, p);
          if (!e.fitPoints.isEmpty()) {
            vector(out, 12, e.startTangent);
            vector(out, 13, e.endTangent);
          }
        }
        break;
      }
    }
  }

  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext& ctx) const override {
    const Hatch::Data& d = *static_cast<const Hatch*>(object)->m_data;
    integer(out, 91, static_cast<OdInt64>(d.loops.size()));
    for (const auto& loop : d.loops) {
      integer(out, 92, loop.flags);
      if (loop.isPolyline()) {
        integer(out, 72, loop.hasBulges);
        integer(out, 73, loop.closed);
        integer(out, 93, static_cast<OdInt64>(loop.vertices.size()));
        for (size_t i = 0; i < loop.vertices.size(); ++i) {
          point(out, 10, loop.vertices[i]);
          if (loop.hasBulges) real(out, 42, i < loop.bulges.size() ? loop.bulges[i] : 0.0);
        }
      } else {
        integer(out, 93, static_cast<OdInt64>(loop.edges.size()));
        for (const auto& edge : loop.edges) edgeTags(edge, out, ctx);
      }
      integer(out, 97, static_cast<OdInt64>(loop.sources.size()));
      for (const auto& id : loop.sources)
        out.push_back(OdDxfTag::handle(330, id.handle().value()));
    }
    integer(out, 75, d.style);
    integer(out, 76, d.patternType);
    if (d.hasPatternGroups) {
      real(out, 52, d.angleDegrees);
      real(out, 41, d.scale);
      integer(out, 77, d.isDouble);
      integer(out, 78, static_cast<OdInt64>(d.lines.size()));
      for (const auto& line : d.lines) {
        real(out, 53, line.angleDegrees);
        real(out, 43, line.baseX);
        real(out, 44, line.baseY);
        real(out, 45, line.offsetX);
        real(out, 46, line.offsetY);
        integer(out, 79, static_cast<OdInt64>(line.dashes.size()));
        for (double dash : line.dashes) real(out, 49, dash);
      }
    }
    if (d.hasPixelSize) real(out, 47, d.pixelSize);
    integer(out, 98, static_cast<OdInt64>(d.seeds.size()));
    for (const auto& seed : d.seeds) point(out, 10, seed);
  }

  void beginRead(OdDbObject* object) const override {
    auto* hatch = static_cast<Hatch*>(object);
    *hatch->m_data = Hatch::Data();
    hatch->m_data->hasPatternGroups = false;
    hatch->m_readState = std::make_unique<Hatch::ReadState>();
  }
  void endRead(OdDbObject* object, OdDbTagContext&) const override {
    static_cast<Hatch*>(object)->m_readState.reset();
  }

  static bool takeEdgeTag(Hatch::EdgeRecord& e, Hatch::ReadState& st, const OdDxfTag& tag,
                          OdDbTagContext& ctx) {
    const bool curved = e.type == OdDbHatchEdge::kCircArc || e.type == OdDbHatchEdge::kEllipArc;
    const bool spline = e.type == OdDbHatchEdge::kSpline;
    auto pt = [&] { return OdGePoint2d(tag.x, tag.type == OdDxf::ValueType::kPoint ? tag.y : 0.0); };
    switch (tag.code) {
      case 10:
        if (e.type == OdDbHatchEdge::kLine)
          e.start = pt();
        else if (curved)
          e.center = pt();
        else
          e.controlPoints.append(pt());
        return true;
      case 11:
        if (e.type == OdDbHatchEdge::kLine)
          e.end = pt();
        else if (e.type == OdDbHatchEdge::kEllipArc)
          e.majorAxis = pt().asVector();
        else if (spline)
          e.fitPoints.append(pt());
        else
          return false;
        return true;
      case 40:
        if (spline)
          e.knots.append(tag.x);
        else if (curved)
          e.radiusOrRatio = tag.x;
        else
          return false;
        return true;
      case 42:
        if (!spline) return false;
        if (e.weights.isEmpty()) e.weightsAfterControlPoints = e.controlPoints.size() > 1;
        e.weights.append(tag.x);
        return true;
      case 50:
      case 51:
        if (!curved) return false;
        (tag.code == 50 ? e.startDegrees : e.endDegrees) = tag.x;
        return true;
      case 73:
        if (curved)
          e.counterClockwise = static_cast<OdInt16>(tag.i);
        else if (spline)
          e.rational = static_cast<OdInt16>(tag.i);
        else
          return false;
        return true;
      case 74:
        if (!spline) return false;
        e.periodic = static_cast<OdInt16>(tag.i);
        return true;
      case 94:
        if (!spline) return false;
        e.degree = static_cast<OdInt32>(tag.i);
        return true;
      case 95:
      case 96: return spline;  // counts follow from the lists
      case 12:
      case 13:
        if (!spline) return false;
        (tag.code == 12 ? e.startTangent : e.endTangent) = pt().asVector();
        return true;
      case 97:
        // Fit data of a spline in files from R2010 on; otherwise the
        // loop's source objects (handled by the caller).
        if (!spline || st.fitCountRead || ctx.version() < OdDb::vAC24) return false;
        st.fitCountRead = true;
        return true;
      default: return false;
    }
  }

  static bool takeLoopTag(Hatch::LoopRecord& loop, Hatch::ReadState& st, const OdDxfTag& tag,
                          OdDbTagContext& ctx) {
    if (tag.code == 330) {
      if (tag.type != OdDxf::ValueType::kHandle) return false;
      loop.sources.append(tag.i ? ctx.idFromHandle(static_cast<OdUInt64>(tag.i)) : OdDbObjectId());
      return true;
    }
    if (st.inSources) return false;
    if (tag.code == 93) {
      st.countRead = true;
      return true;
    }
    if (loop.isPolyline()) {
      switch (tag.code) {
        case 72:
          if (st.countRead) return false;
          loop.hasBulges = static_cast<OdInt16>(tag.i);
          return true;
        case 73:
          if (st.countRead) return false;
          loop.closed = static_cast<OdInt16>(tag.i);
          return true;
        case 10:
          loop.vertices.append(OdGePoint2d(tag.x, tag.type == OdDxf::ValueType::kPoint ? tag.y : 0.0));
          loop.bulges.append(0.0);
          return true;
        case 42:
          if (loop.bulges.isEmpty()) return false;
          loop.bulges.last() = tag.x;
          return true;
        case 97: st.inSources = true; return true;
        default: return false;
      }
    }
    if (tag.code == 72 && st.countRead) {
      Hatch::EdgeRecord edge;
      edge.type = static_cast<OdInt16>(tag.i);
      loop.edges.push_back(edge);
      st.fitCountRead = false;
      return true;
    }
    if (!loop.edges.empty() && takeEdgeTag(loop.edges.back(), st, tag, ctx)) return true;
    if (tag.code == 97) {
      st.inSources = true;
      return true;
    }
    return false;
  }

  static bool takePatternTag(Hatch::Data& d, const OdDxfTag& tag) {
    auto lastLine = [&]() -> Hatch::PatternLineRecord* {
      return d.lines.empty() ? nullptr : &d.lines.back();
    };
    switch (tag.code) {
      case 75: d.style = static_cast<OdInt16>(tag.i); return true;
      case 76: d.patternType = static_cast<OdInt16>(tag.i); return true;
      case 52:
        d.angleDegrees = tag.x;
        d.hasPatternGroups = true;
        return true;
      case 41:
        d.scale = tag.x;
        d.hasPatternGroups = true;
        return true;
      case 77:
        d.isDouble = static_cast<OdInt16>(tag.i);
        d.hasPatternGroups = true;
        return true;
      case 78:
        d.lines.clear();
        d.hasPatternGroups = true;
        return true;
      case 53:
        d.lines.emplace_back();
        d.lines.back().angleDegrees = tag.x;
        return true;
      case 47:
        d.pixelSize = tag.x;
        d.hasPixelSize = true;
        return true;
      default: break;
    }
    Hatch::PatternLineRecord* line = lastLine();
    if (!line) return false;
    switch (tag.code) {
      case 43: line->baseX = tag.x; return true;
      case 44: line->baseY = tag.x; return true;
      case 45: line->offsetX = tag.x; return true;
      case 46: line->offsetY = tag.x; return true;
      case 79: return true;  // the dash count follows from the list
      case 49: line->dashes.append(tag.x); return true;
      default: return false;
    }
  }

  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const override {
    auto* hatch = static_cast<Hatch*>(object);
    Hatch::Data& d = *hatch->m_data;
    if (!hatch->m_readState) beginRead(object);
    Hatch::ReadState& st = *hatch->m_readState;
    switch (tag.code) {
      case 91:
        d.loops.clear();
        st.phase = Phase::kLoops;
        return true;
      case 92:
        if (st.phase != Phase::kLoops) return false;
        d.loops.emplace_back();
        d.loops.back().flags = static_cast<OdInt32>(tag.i);
        st.countRead = st.inSources = st.fitCountRead = false;
        return true;
      case 98:
        d.seeds.clear();
        st.phase = Phase::kSeeds;
        return true;
      case 75:
      case 76:
      case 52:
      case 41:
      case 77:
      case 78:
      case 53:
      case 47:
        if (st.phase == Phase::kSeeds) return false;
        st.phase = Phase::kPattern;
        return takePatternTag(d, tag);
      default: break;
    }
    switch (st.phase) {
      case Phase::kLoops: return !d.loops.empty() && takeLoopTag(d.loops.back(), st, tag, ctx);
      case Phase::kPattern: return takePatternTag(d, tag);
      case Phase::kSeeds:
        if (tag.code != 10) return false;
        d.seeds.append(OdGePoint2d(tag.x, tag.type == OdDxf::ValueType::kPoint ? tag.y : 0.0));
        return true;
      default: return false;
    }
  }

  static void filePoints(OdDbDwgFiler* f, const OdGePoint2dArray& points) {
    f->wrInt32(static_cast<OdInt32>(points.size()));
    for (const auto& p : points) f->wrPoint2d(p);
  }
  static void fileDoubles(OdDbDwgFiler* f, const OdGeDoubleArray& values) {
    f->wrInt32(static_cast<OdInt32>(values.size()));
    for (double v : values) f->wrDouble(v);
  }
  static OdGePoint2dArray readPoints(OdDbDwgFiler* f) {
    OdGePoint2dArray points(static_cast<size_t>(f->rdInt32()));
    for (auto& p : points) p = f->rdPoint2d();
    return points;
  }
  static OdGeDoubleArray readDoubles(OdDbDwgFiler* f) {
    OdGeDoubleArray values(static_cast<size_t>(f->rdInt32()));
    for (auto& v : values) v = f->rdDouble();
    return values;
  }

  void fileOut(const OdDbObject* object, OdDbDwgFiler* f) const override {
    const Hatch::Data& d = *static_cast<const Hatch*>(object)->m_data;
    f->wrInt32(static_cast<OdInt32>(d.loops.size()));
    for (const auto& loop : d.loops) {
      f->wrInt32(loop.flags);
      f->wrInt16(loop.hasBulges);
      f->wrInt16(loop.closed);
      filePoints(f, loop.vertices);
      fileDoubles(f, loop.bulges);
      f->wrInt32(static_cast<OdInt32>(loop.edges.size()));
      for (const auto& e : loop.edges) {
        f->wrInt16(e.type);
        f->wrPoint2d(e.start);
        f->wrPoint2d(e.end);
        f->wrPoint2d(e.center);
        f->wrVector2d(e.majorAxis);
        f->wrDouble(e.radiusOrRatio);
        f->wrDouble(e.startDegrees);
        f->wrDouble(e.endDegrees);
        f->wrInt16(e.counterClockwise);
        f->wrInt32(e.degree);
        f->wrInt16(e.rational);
        f->wrInt16(e.periodic);
        fileDoubles(f, e.knots);
        filePoints(f, e.controlPoints);
        fileDoubles(f, e.weights);
        f->wrBool(e.weightsAfterControlPoints);
        filePoints(f, e.fitPoints);
        f->wrVector2d(e.startTangent);
        f->wrVector2d(e.endTangent);
      }
      f->wrInt32(static_cast<OdInt32>(loop.sources.size()));
      for (const auto& id : loop.sources) f->wrSoftPointerId(id);
    }
    f->wrInt16(d.style);
    f->wrInt16(d.patternType);
    f->wrBool(d.hasPatternGroups);
    f->wrDouble(d.angleDegrees);
    f->wrDouble(d.scale);
    f->wrInt16(d.isDouble);
    f->wrInt32(static_cast<OdInt32>(d.lines.size()));
    for (const auto& line : d.lines) {
      f->wrDouble(line.angleDegrees);
      f->wrDouble(line.baseX);
      f->wrDouble(line.baseY);
      f->wrDouble(line.offsetX);
      f->wrDouble(line.offsetY);
      fileDoubles(f, line.dashes);
    }
    f->wrBool(d.hasPixelSize);
    f->wrDouble(d.pixelSize);
    filePoints(f, d.seeds);
  }

  void fileIn(OdDbObject* object, OdDbDwgFiler* f) const override {
    Hatch::Data& d = *static_cast<Hatch*>(object)->m_data;
    d = Hatch::Data();
    d.loops.resize(static_cast<size_t>(f->rdInt32()));
    for (auto& loop : d.loops) {
      loop.flags = f->rdInt32();
      loop.hasBulges = f->rdInt16();
      loop.closed = f->rdInt16();
      loop.vertices = readPoints(f);
      loop.bulges = readDoubles(f);
      loop.edges.resize(static_cast<size_t>(f->rdInt32()));
      for (auto& e : loop.edges) {
        e.type = f->rdInt16();
        e.start = f->rdPoint2d();
        e.end = f->rdPoint2d();
        e.center = f->rdPoint2d();
        e.majorAxis = f->rdVector2d();
        e.radiusOrRatio = f->rdDouble();
        e.startDegrees = f->rdDouble();
        e.endDegrees = f->rdDouble();
        e.counterClockwise = f->rdInt16();
        e.degree = f->rdInt32();
        e.rational = f->rdInt16();
        e.periodic = f->rdInt16();
        e.knots = readDoubles(f);
        e.controlPoints = readPoints(f);
        e.weights = readDoubles(f);
        e.weightsAfterControlPoints = f->rdBool();
        e.fitPoints = readPoints(f);
        e.startTangent = f->rdVector2d();
        e.endTangent = f->rdVector2d();
      }
      loop.sources.resize(static_cast<size_t>(f->rdInt32()));
      for (auto& id : loop.sources) id = f->rdSoftPointerId();
    }
    d.style = f->rdInt16();
    d.patternType = f->rdInt16();
    d.hasPatternGroups = f->rdBool();
    d.angleDegrees = f->rdDouble();
    d.scale = f->rdDouble();
    d.isDouble = f->rdInt16();
    d.lines.resize(static_cast<size_t>(f->rdInt32()));
    for (auto& line : d.lines) {
      line.angleDegrees = f->rdDouble();
      line.baseX = f->rdDouble();
      line.baseY = f->rdDouble();
      line.offsetX = f->rdDouble();
      line.offsetY = f->rdDouble();
      line.dashes = readDoubles(f);
    }
    d.hasPixelSize = f->rdBool();
    d.pixelSize = f->rdDouble();
    d.seeds = readPoints(f);
  }

  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    return *static_cast<const Hatch*>(a)->m_data == *static_cast<const Hatch*>(b)->m_data;
  }
};

const OdDbClassSchema& OdDbHatch::classSchema() {
  static const OdDbHatchDataCodec dataCodec;
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbHatch",
        {
            odField<&OdDbHatch::m_elevationPoint>(10).named(L"elevationPoint"),
            odField<&OdDbHatch::m_normal>(210).named(L"normal"),
            odField<&OdDbHatch::m_patternName>(2).named(L"patternName"),
            odField<&OdDbHatch::m_solidFill>(70).named(L"solidFill"),
            odField<&OdDbHatch::m_associative>(71).named(L"associative"),
            odCustomField(dataCodec, L"loopsPatternSeeds"),
        }}}};
  return schema;
}

// ---------------------------------------------------------------- hatch

OdDbHatch::OdDbHatch() : m_data(std::make_unique<Data>()) {}
OdDbHatch::~OdDbHatch() = default;

void OdDbHatch::setElevation(double elevation) {
  assertWriteEnabled();
  m_elevationPoint.z = elevation;
}

void OdDbHatch::setNormal(const OdGeVector3d& normal) {
  if (normal.isZeroLength()) return;
  assertWriteEnabled();
  m_normal = normal.normal();
}

int OdDbHatch::numLoops() const { return static_cast<int>(m_data->loops.size()); }

OdInt32 OdDbHatch::loopTypeAt(int loopIndex) const {
  if (loopIndex < 0 || loopIndex >= numLoops()) throw OdError(eInvalidIndex);
  return m_data->loops[static_cast<size_t>(loopIndex)].flags;
}

OdResult OdDbHatch::getLoopAt(int loopIndex, OdInt32& loopType, OdGePoint2dArray& vertices,
                              OdGeDoubleArray& bulges) const {
  if (loopIndex < 0 || loopIndex >= numLoops()) return eInvalidIndex;
  const LoopRecord& loop = m_data->loops[static_cast<size_t>(loopIndex)];
  if (!loop.isPolyline()) return eNotApplicable;
  loopType = loop.flags;
  vertices = loop.vertices;
  bulges = loop.hasBulges ? loop.bulges : OdGeDoubleArray(loop.vertices.size(), 0.0);
  return eOk;
}

OdResult OdDbHatch::getLoopAt(int loopIndex, OdInt32& loopType, OdDbHatchEdgeArray& edges) const {
  if (loopIndex < 0 || loopIndex >= numLoops()) return eInvalidIndex;
  const LoopRecord& loop = m_data->loops[static_cast<size_t>(loopIndex)];
  loopType = loop.flags;
  edges = loopEdges(loop);
  return eOk;
}

OdResult OdDbHatch::appendLoop(OdInt32 loopType, const OdGePoint2dArray& vertices,
                               const OdGeDoubleArray& bulges) {
  if (vertices.size() < 2 || (!bulges.isEmpty() && bulges.size() != vertices.size())) return eInvalidInput;
  assertWriteEnabled();
  LoopRecord loop;
  loop.flags = loopType | kPolyline;
  loop.vertices = vertices;
  loop.bulges = bulges.isEmpty() ? OdGeDoubleArray(vertices.size(), 0.0) : bulges;
  loop.hasBulges =
      std::any_of(loop.bulges.begin(), loop.bulges.end(), [](double b) { return b != 0; }) ? 1 : 0;
  loop.closed = 1;
  m_data->loops.push_back(std::move(loop));
  return eOk;
}

OdResult OdDbHatch::appendLoop(OdInt32 loopType, const OdDbHatchEdgeArray& edges) {
  if (edges.isEmpty()) return eInvalidInput;
  for (const auto& edge : edges) {
    if (edge.type < OdDbHatchEdge::kLine || edge.type > OdDbHatchEdge::kSpline) return eInvalidInput;
  }
  assertWriteEnabled();
  LoopRecord loop;
  loop.flags = loopType & ~kPolyline;
  for (const auto& edge : edges) loop.edges.push_back(recordFromEdge(edge));
  m_data->loops.push_back(std::move(loop));
  return eOk;
}

OdResult OdDbHatch::removeLoopAt(int loopIndex) {
  if (loopIndex < 0 || loopIndex >= numLoops()) return eInvalidIndex;
  assertWriteEnabled();
  m_data->loops.erase(m_data->loops.begin() + loopIndex);
  return eOk;
}

OdDbObjectIdArray OdDbHatch::getAssocObjIdsAt(int loopIndex) const {
  if (loopIndex < 0 || loopIndex >= numLoops()) return OdDbObjectIdArray();
  return m_data->loops[static_cast<size_t>(loopIndex)].sources;
}

OdResult OdDbHatch::setAssocObjIdsAt(int loopIndex, const OdDbObjectIdArray& ids) {
  if (loopIndex < 0 || loopIndex >= numLoops()) return eInvalidIndex;
  assertWriteEnabled();
  m_data->loops[static_cast<size_t>(loopIndex)].sources = ids;
  return eOk;
}

OdDbHatch::HatchPatternType OdDbHatch::patternType() const {
  return static_cast<HatchPatternType>(m_data->patternType);
}

void OdDbHatch::setPattern(HatchPatternType type, const OdString& name) {
  assertWriteEnabled();
  m_patternName = name;
  m_data->patternType = static_cast<OdInt16>(type);
  const bool solid = name.iCompare(L"SOLID") == 0;
  m_solidFill = solid ? 1 : 0;
  m_data->hasPatternGroups = !solid;
  if (solid) m_data->lines.clear();
}

double OdDbHatch::patternAngle() const { return m_data->angleDegrees * kDegToRad; }

void OdDbHatch::setPatternAngle(double angle) {
  assertWriteEnabled();
  const double turn = angle - patternAngle();
  const double c = std::cos(turn), s = std::sin(turn);
  for (auto& line : m_data->lines) {
    line.angleDegrees += turn * kRadToDeg;
    const double bx = line.baseX, by = line.baseY, ox = line.offsetX, oy = line.offsetY;
    line.baseX = c * bx - s * by;
    line.baseY = s * bx + c * by;
    line.offsetX = c * ox - s * oy;
    line.offsetY = s * ox + c * oy;
  }
  m_data->angleDegrees = angle * kRadToDeg;
}

double OdDbHatch::patternScale() const { return m_data->scale; }

void OdDbHatch::setPatternScale(double scale) {
  if (scale <= 0) return;
  assertWriteEnabled();
  const double ratio = m_data->scale > 0 ? scale / m_data->scale : 1.0;
  for (auto& line : m_data->lines) {
    line.baseX *= ratio;
    line.baseY *= ratio;
    line.offsetX *= ratio;
    line.offsetY *= ratio;
    for (double& dash : line.dashes) dash *= ratio;
  }
  m_data->scale = scale;
}

bool OdDbHatch::patternDouble() const { return m_data->isDouble != 0; }

void OdDbHatch::setPatternDouble(bool isDouble) {
  assertWriteEnabled();
  m_data->isDouble = isDouble ? 1 : 0;
}

int OdDbHatch::numPatternDefinitions() const { return static_cast<int>(m_data->lines.size()); }

OdResult OdDbHatch::getPatternDefinitionAt(int index, double& angle, double& baseX, double& baseY,
                                           double& offsetX, double& offsetY, OdGeDoubleArray& dashes) const {
  if (index < 0 || index >= numPatternDefinitions()) return eInvalidIndex;
  const PatternLineRecord& line = m_data->lines[static_cast<size_t>(index)];
  angle = line.angleDegrees * kDegToRad;
  baseX = line.baseX;
  baseY = line.baseY;
  offsetX = line.offsetX;
  offsetY = line.offsetY;
  dashes = line.dashes;
  return eOk;
}

OdDbHatchPatternLineArray OdDbHatch::patternDefinitions() const {
  OdDbHatchPatternLineArray lines;
  for (const auto& r : m_data->lines) {
    lines.append({r.angleDegrees * kDegToRad, OdGePoint2d(r.baseX, r.baseY),
                  OdGeVector2d(r.offsetX, r.offsetY), r.dashes});
  }
  return lines;
}

void OdDbHatch::setPatternDefinitions(const OdDbHatchPatternLineArray& lines) {
  assertWriteEnabled();
  m_data->lines.clear();
  for (const auto& line : lines) {
    m_data->lines.push_back({line.angle * kRadToDeg, line.basePoint.x, line.basePoint.y, line.offset.x,
                             line.offset.y, line.dashes});
  }
  if (!lines.isEmpty()) m_data->hasPatternGroups = true;
}

OdDbHatch::HatchStyle OdDbHatch::hatchStyle() const { return static_cast<HatchStyle>(m_data->style); }

void OdDbHatch::setHatchStyle(HatchStyle style) {
  assertWriteEnabled();
  m_data->style = static_cast<OdInt16>(style);
}

void OdDbHatch::setAssociative(bool on) {
  assertWriteEnabled();
  m_associative = on ? 1 : 0;
  if (on) m_data->hasPixelSize = true;
}

int OdDbHatch::numSeedPoints() const { return static_cast<int>(m_data->seeds.size()); }

OdGePoint2d OdDbHatch::getSeedPointAt(int index) const {
  if (index < 0 || index >= numSeedPoints()) throw OdError(eInvalidIndex);
  return m_data->seeds[static_cast<size_t>(index)];
}

void OdDbHatch::appendSeedPoint(const OdGePoint2d& point) {
  assertWriteEnabled();
  m_data->seeds.append(point);
}

OdResult OdDbHatch::removeSeedPointAt(int index) {
  if (index < 0 || index >= numSeedPoints()) return eInvalidIndex;
  assertWriteEnabled();
  m_data->seeds.removeAt(static_cast<unsigned>(index));
  return eOk;
}

// ---------------------------------------------------------------- geometry

void OdDbHatch::polygonize(std::vector<OdGePoint2dArray>& polygons) const {
  polygons.clear();
  for (const auto& loop : m_data->loops) {
    OdGePoint2dArray polygon;
    for (const auto& edge : loopEdges(loop)) {
      OdGePoint2dArray samples;
      edge.getSamplePoints(samples);
      for (const auto& p : samples) {
        if (polygon.isEmpty() || !same(polygon.last(), p)) polygon.append(p);
      }
    }
    if (polygon.size() > 1 && same(polygon.first(), polygon.last())) polygon.removeLast();
    polygons.push_back(std::move(polygon));
  }
}

std::vector<int> OdDbHatch::loopDepths(const std::vector<OdGePoint2dArray>& polygons) const {
  // A loop's depth is the number of other loops around it, tested at the
  // middle of its first segment (a vertex may touch a neighbour).
  std::vector<int> depths(polygons.size(), 0);
  for (size_t i = 0; i < polygons.size(); ++i) {
    const OdGePoint2dArray& polygon = polygons[i];
    if (polygon.isEmpty()) continue;
    OdGePoint2d probe = polygon.size() > 1 ? polygon[0] + (polygon[1] - polygon[0]) * 0.5 : polygon[0];
    for (size_t j = 0; j < polygons.size(); ++j) {
      if (j != i && polygons[j].size() > 2 && isInsidePolygon(probe, polygons[j])) ++depths[i];
    }
  }
  return depths;
}

bool OdDbHatch::isFilledAt(const OdGePoint2d& point, const std::vector<OdGePoint2dArray>& polygons,
                           const std::vector<int>& depths) const {
  int count = 0;
  bool inOutermost = false, inFirstHole = false;
  for (size_t i = 0; i < polygons.size(); ++i) {
    if (polygons[i].size() < 3 || !isInsidePolygon(point, polygons[i])) continue;
    ++count;
    inOutermost |= depths[i] == 0;
    inFirstHole |= depths[i] == 1;
  }
  switch (m_data->style) {
    case kOuter: return inOutermost && !inFirstHole;
    case kIgnore: return inOutermost;
    default: return count % 2 == 1;
  }
}

OdResult OdDbHatch::getArea(double& area) const {
  std::vector<OdGePoint2dArray> polygons;
  polygonize(polygons);
  const std::vector<int> depths = loopDepths(polygons);
  area = 0;
  for (size_t i = 0; i < m_data->loops.size(); ++i) {
    const OdDbHatchEdgeArray edges = loopEdges(m_data->loops[i]);
    if (edges.isEmpty()) continue;
    double twice = 0;
    for (const auto& edge : edges) twice += doubleAreaOf(edge);
    // Close a loop whose last edge stops short of its first.
    twice +=
        (edges.last().endPoint() - OdGePoint2d()).crossProduct(edges.first().startPoint() - OdGePoint2d());
    const double loopArea = std::fabs(twice) / 2;
    const int depth = depths[i];
    switch (m_data->style) {
      case kOuter: area += depth == 0 ? loopArea : (depth == 1 ? -loopArea : 0.0); break;
      case kIgnore: area += depth == 0 ? loopArea : 0.0; break;
      default: area += depth % 2 == 0 ? loopArea : -loopArea; break;
    }
  }
  return eOk;
}

OdResult OdDbHatch::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  const double z = elevation();
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(m_normal, xAxis, yAxis, zAxis);
  auto world = [&](const OdGePoint2d& p) { return odgeOcsToWcs(p, z, m_normal); };
  for (const auto& loop : m_data->loops) {
    for (const auto& edge : loopEdges(loop)) {
      switch (edge.type) {
        case OdDbHatchEdge::kLine:
          extents.addPoint(world(edge.start));
          extents.addPoint(world(edge.end));
          break;
        case OdDbHatchEdge::kCircArc:
        case OdDbHatchEdge::kEllipArc: {
          // The same point set as a counter-clockwise arc in space.
          OdGeVector2d major = edge.type == OdDbHatchEdge::kCircArc ? OdGeVector2d(1, 0) : edge.majorAxis;
          double majorRadius = edge.type == OdDbHatchEdge::kCircArc ? edge.radius : major.length();
          if (majorRadius <= 0) break;
          double minorRadius =
              edge.type == OdDbHatchEdge::kCircArc ? edge.radius : majorRadius * edge.minorMajorRatio;
          OdGeVector3d majorDir = (xAxis * major.x + yAxis * major.y).normal();
          double sweep = sweepOf(edge.startAngle, edge.endAngle);
          double start = edge.isCounterClockwise ? edge.startAngle : -(edge.startAngle + sweep);
          OdGeEllipArc3d arc(world(edge.center), majorDir, zAxis.crossProduct(majorDir), majorRadius,
                             std::max(minorRadius, 1e-300), start, start + sweep);
          extents.addExt(arc.geomExtents());
          break;
        }
        case OdDbHatchEdge::kSpline: {
          OdGePoint2dArray samples;
          edge.getSamplePoints(samples);
          for (const auto& p : samples) extents.addPoint(world(p));
          break;
        }
      }
    }
  }
  return extents.isValidExtents() ? eOk : eInvalidExtents;
}

double OdDbHatch::distanceTo(const OdGePoint3d& point) const {
  std::vector<OdGePoint2dArray> polygons;
  polygonize(polygons);
  if (polygons.empty()) return std::numeric_limits<double>::infinity();
  const OdGePoint3d local = odgeWcsToOcs(point, m_normal);
  const OdGePoint2d inPlane(local.x, local.y);
  const double height = local.z - elevation();
  if (isFilledAt(inPlane, polygons, loopDepths(polygons))) return std::fabs(height);
  double best = std::numeric_limits<double>::infinity();
  for (const auto& polygon : polygons) {
    for (size_t i = 0; i < polygon.size(); ++i) {
      best = std::min(best, distanceToSegment(inPlane, polygon[i], polygon[(i + 1) % polygon.size()]));
    }
  }
  return std::hypot(best, height);
}

namespace {

// Degrees turned by `turn` radians, leaving the value untouched when there is no turn.
void turnDegrees(double& degrees, double turn) {
  if (turn != 0) degrees += turn * kRadToDeg;
}

// An ellipse edge through any affine map that keeps the orientation.
void transformEllipse(OdDbHatch::EdgeRecord& e, const Affine2d& map) {
  const double sense = e.counterClockwise ? 1.0 : -1.0;
  const OdGeVector2d a1 = map.apply(e.majorAxis);
  const OdGeVector2d b1 = map.apply(e.majorAxis.perpVector() * e.radiusOrRatio);
  // Principal axes of the conjugate semi-diameters a1, b1.
  const double tau = 0.5 * std::atan2(2 * a1.dotProduct(b1), a1.dotProduct(a1) - b1.dotProduct(b1));
  const OdGeVector2d major = a1 * std::cos(tau) + b1 * std::sin(tau);
  const OdGeVector2d minor = b1 * std::cos(tau) - a1 * std::sin(tau);
  e.center = map.apply(e.center);
  e.majorAxis = major;
  e.radiusOrRatio = major.length() > 0 ? minor.length() / major.length() : 0.0;
  // Parameters run from the new major axis: u' = u - tau, stored as sense * u.
  turnDegrees(e.startDegrees, -sense * tau);
  turnDegrees(e.endDegrees, -sense * tau);
}

bool transformEdge(OdDbHatch::EdgeRecord& e, const Affine2d& map, bool similarity, double rotation,
                   double scale) {
  switch (e.type) {
    case OdDbHatchEdge::kLine:
      e.start = map.apply(e.start);
      e.end = map.apply(e.end);
      return true;
    case OdDbHatchEdge::kCircArc: {
      if (!similarity) return false;
      e.center = map.apply(e.center);
      e.radiusOrRatio *= scale;
      const double turn = e.counterClockwise ? rotation : -rotation;
      turnDegrees(e.startDegrees, turn);
      turnDegrees(e.endDegrees, turn);
      if (e.startDegrees < 0 || e.startDegrees >= 360) {
        // Keep the start in [0, 360) and the sweep as it was.
        const double shift = std::floor(e.startDegrees / 360) * 360;
        e.startDegrees -= shift;
        e.endDegrees -= shift;
      }
      return true;
    }
    case OdDbHatchEdge::kEllipArc:
      if (similarity) {
        e.center = map.apply(e.center);
        e.majorAxis = map.apply(e.majorAxis);
      } else {
        transformEllipse(e, map);
      }
      return true;
    case OdDbHatchEdge::kSpline:
      for (auto& p : e.controlPoints) p = map.apply(p);
      for (auto& p : e.fitPoints) p = map.apply(p);
      e.startTangent = map.apply(e.startTangent);
      e.endTangent = map.apply(e.endTangent);
      return true;
  }
  return false;
}

}  // namespace

OdResult OdDbHatch::transformBy(const OdGeMatrix3d& xform) {
  const OdGeVector3d normal = transformedNormal(xform, m_normal);
  if (normal.isZeroLength()) return eCannotScaleNonUniformly;
  const OdGeMatrix3d m = planeCoordinateMap(xform, m_normal, normal);
  // Loop points lie at the elevation: fold it into the 2-d map.
  const double z = elevation();
  Affine2d map(m);
  map.tx += m(0, 2) * z;
  map.ty += m(1, 2) * z;
  const bool identityLinear = map.a == 1 && map.b == 0 && map.c == 0 && map.d == 1;
  const bool similarity = identityLinear || map.isSimilarity();
  const double rotation = identityLinear ? 0.0 : map.rotation();
  const double scale = identityLinear ? 1.0 : map.uniformScale();

  Data data = *m_data;
  for (auto& loop : data.loops) {
    for (auto& p : loop.vertices) p = map.apply(p);
    if (!similarity && loop.hasBulges &&
        std::any_of(loop.bulges.begin(), loop.bulges.end(), [](double b) { return b != 0; })) {
      return eCannotScaleNonUniformly;
    }
    for (auto& edge : loop.edges) {
      if (!transformEdge(edge, map, similarity, rotation, scale)) return eCannotScaleNonUniformly;
    }
  }
  for (auto& seed : data.seeds) seed = map.apply(seed);
  // Line families map to line families: base point and offset move with
  // the plane, dashes stretch with the lines' direction.
  for (auto& line : data.lines) {
    const OdGePoint2d base = map.apply(OdGePoint2d(line.baseX, line.baseY));
    line.baseX = base.x;
    line.baseY = base.y;
    if (identityLinear) continue;
    const double angle = line.angleDegrees * kDegToRad;
    const OdGeVector2d direction = map.apply(OdGeVector2d(std::cos(angle), std::sin(angle)));
    const OdGeVector2d offset = map.apply(OdGeVector2d(line.offsetX, line.offsetY));
    line.angleDegrees = std::atan2(direction.y, direction.x) * kRadToDeg;
    if (line.angleDegrees < 0) line.angleDegrees += 360;
    line.offsetX = offset.x;
    line.offsetY = offset.y;
    for (double& dash : line.dashes) dash *= direction.length();
  }
  if (!identityLinear) {
    data.angleDegrees += rotation * kRadToDeg;
    data.angleDegrees = std::fmod(data.angleDegrees + 360, 360);
    data.scale *= scale;
  }

  assertWriteEnabled();
  *m_data = std::move(data);
  m_elevationPoint.z = m(2, 2) * z + m(2, 3);
  m_normal = normal;
  return eOk;
}
