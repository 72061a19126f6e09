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

// The file form of the loops, pattern and seeds: the records hold what the
// groups hold (angles in degrees, the variants of an edge side by side), so
// that their field tables below read and write them group for group.
struct OdDbHatch::EdgeRecord {
  // A control point of a spline edge, with its weight when the file gives
  // it right after the point.
  struct ControlPoint {
    OdGePoint2d point;
    double weight = 1;
    bool hasWeight = false;
  };
  OdInt16 type = OdDbHatchEdge::kLine;
  OdGePoint2d start, end;    // line
  OdGePoint2d center;        // arcs
  OdGePoint2d majorAxis;     // ellipse: the major axis (a vector from the centre)
  double radiusOrRatio = 0;  // group 40: arc radius, ellipse minor/major ratio
  double startDegrees = 0, endDegrees = 0;
  OdInt16 counterClockwise = 1;
  OdInt32 degree = 3;
  OdInt16 rational = 0, periodic = 0;
  OdGeDoubleArray knots;
  std::vector<ControlPoint> controlPoints;
  OdGeDoubleArray trailingWeights;  // weights that files list after all the control points
  OdGePoint2dArray fitPoints;
  OdGePoint2d startTangent, endTangent;  // vectors, as files carry them

  bool curved() const { return type == OdDbHatchEdge::kCircArc || type == OdDbHatchEdge::kEllipArc; }
  OdGeDoubleArray weights() const {
    OdGeDoubleArray all;
    for (const auto& cp : controlPoints) {
      if (cp.hasWeight) all.append(cp.weight);
    }
    for (double w : trailingWeights) all.append(w);
    return all;
  }
};

struct OdDbHatch::LoopRecord {
  struct Vertex {
    OdGePoint2d point;
    double bulge = 0;
  };
  OdInt32 flags = 0;
  OdInt16 hasBulges = 0;  // polyline loops
  OdInt16 closed = 1;
  std::vector<Vertex> vertices;
  std::vector<EdgeRecord> edges;
  OdDbObjectIdArray sources;

  bool isPolyline() const { return flags & OdDbHatch::kPolyline; }
  bool anyBulge() const {
    return std::any_of(vertices.begin(), vertices.end(), [](const Vertex& v) { return v.bulge != 0; });
  }
};

struct OdDbHatch::PatternLineRecord {
  double angleDegrees = 0;
  double baseX = 0, baseY = 0, offsetX = 0, offsetY = 0;
  OdGeDoubleArray dashes;
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
};

namespace {

OdDbHatchEdge edgeFromRecord(const OdDbHatch::EdgeRecord& r) {
  OdDbHatchEdge e;
  e.type = static_cast<OdDbHatchEdge::Type>(r.type);
  e.start = r.start;
  e.end = r.end;
  e.center = r.center;
  e.majorAxis = r.majorAxis.asVector();
  if (r.type == OdDbHatchEdge::kCircArc) e.radius = r.radiusOrRatio;
  if (r.type == OdDbHatchEdge::kEllipArc) e.minorMajorRatio = r.radiusOrRatio;
  e.startAngle = r.startDegrees * kDegToRad;
  e.endAngle = r.endDegrees * kDegToRad;
  e.isCounterClockwise = r.counterClockwise != 0;
  e.degree = r.degree;
  e.rational = r.rational != 0;
  e.periodic = r.periodic != 0;
  e.knots = r.knots;
  for (const auto& cp : r.controlPoints) e.controlPoints.append(cp.point);
  e.weights = r.weights();
  e.fitPoints = r.fitPoints;
  e.startTangent = r.startTangent.asVector();
  e.endTangent = r.endTangent.asVector();
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
      r.majorAxis = OdGePoint2d() + e.majorAxis;
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
      for (size_t i = 0; i < e.controlPoints.size(); ++i) {
        // Weights go with their points when there is one for each point.
        const bool paired = e.weights.size() == e.controlPoints.size();
        r.controlPoints.push_back({e.controlPoints[i], paired ? e.weights[i] : 1.0, paired});
      }
      if (e.weights.size() != e.controlPoints.size()) r.trailingWeights = e.weights;
      r.fitPoints = e.fitPoints;
      r.startTangent = OdGePoint2d() + e.startTangent;
      r.endTangent = OdGePoint2d() + e.endTangent;
      break;
  }
  return r;
}

// A polyline loop as lines and arcs that keep its direction.
void polylineLoopEdges(const OdDbHatch::LoopRecord& loop, OdDbHatchEdgeArray& edges) {
  const size_t n = loop.vertices.size();
  for (size_t i = 0; i < n; ++i) {
    const OdGePoint2d& p = loop.vertices[i].point;
    const OdGePoint2d& q = loop.vertices[(i + 1) % n].point;
    if (p.x == q.x && p.y == q.y) continue;
    const double bulge = loop.hasBulges ? loop.vertices[i].bulge : 0.0;
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
// loops and the seeds share group 10 and are told apart by position.
struct OdDbHatchDataCodec {
  using Hatch = OdDbHatch;
  using Edge = Hatch::EdgeRecord;
  using Loop = Hatch::LoopRecord;
  using Line = Hatch::PatternLineRecord;
  using Data = Hatch::Data;

  static void* data(void* object) { return static_cast<Hatch*>(static_cast<OdDbObject*>(object))->m_data.get(); }

  template <class R>
  static const R& as(const void* record) { return *static_cast<const R*>(record); }
  static bool isLine(const void* e, const OdDbObject*, const OdDbTagContext&) {
    return as<Edge>(e).type == OdDbHatchEdge::kLine;
  }
  static bool isCurved(const void* e, const OdDbObject*, const OdDbTagContext&) { return as<Edge>(e).curved(); }
  static bool isEllipse(const void* e, const OdDbObject*, const OdDbTagContext&) {
    return as<Edge>(e).type == OdDbHatchEdge::kEllipArc;
  }
  static bool isSpline(const void* e, const OdDbObject*, const OdDbTagContext&) {
    return as<Edge>(e).type == OdDbHatchEdge::kSpline;
  }
  static bool hasFitPoints(const void* e, const OdDbObject*, const OdDbTagContext&) {
    return as<Edge>(e).type == OdDbHatchEdge::kSpline && !as<Edge>(e).fitPoints.isEmpty();
  }
  static bool isPolyline(const void* l, const OdDbObject*, const OdDbTagContext&) { return as<Loop>(l).isPolyline(); }
  static bool isEdgeLoop(const void* l, const OdDbObject*, const OdDbTagContext&) { return !as<Loop>(l).isPolyline(); }
  static bool withBulges(const void* l, const OdDbObject*, const OdDbTagContext&) {
    return as<Loop>(l).isPolyline() && as<Loop>(l).hasBulges;
  }
  static bool withoutBulges(const void* l, const OdDbObject*, const OdDbTagContext&) {
    return as<Loop>(l).isPolyline() && !as<Loop>(l).hasBulges;
  }

  static const OdDbRecordCodec& codec() {
    using CP = Edge::ControlPoint;
    static const OdDbArraySpec controlPoints = odRecords<std::vector<CP>>({
        odField<&CP::point>(10).named(L"controlPoint"),
        odField<&CP::weight>(42).defaults(1).presentWith<&CP::hasWeight>().named(L"weight"),
    });
    static const OdDbField knots = odValueArrayField<&Edge::knots>(40, L"knots").onlyWhen(isSpline);
    static const OdDbField points = odArrayField<&Edge::controlPoints>(controlPoints, L"controlPoints").onlyWhen(isSpline);
    static const OdDbField fitPoints =
        odValueArrayField<&Edge::fitPoints>(11, L"fitPoints").since(OdDb::vAC24).onlyWhen(isSpline);
    static const OdDbArraySpec edges = odRecords<std::vector<Edge>>({
        odField<&Edge::type>(72).defaultsInt(OdDbHatchEdge::kLine).validRange(1, 4).named(L"edgeType"),
        odField<&Edge::start>(10).onlyWhen(isLine).named(L"start"),
        odField<&Edge::end>(11).onlyWhen(isLine).named(L"end"),
        odField<&Edge::center>(10).onlyWhen(isCurved).named(L"center"),
        odField<&Edge::majorAxis>(11).onlyWhen(isEllipse).named(L"majorAxis"),
        odField<&Edge::radiusOrRatio>(40).onlyWhen(isCurved).named(L"radiusOrRatio"),
        odField<&Edge::startDegrees>(50).onlyWhen(isCurved).named(L"startAngle"),
        odField<&Edge::endDegrees>(51).onlyWhen(isCurved).named(L"endAngle"),
        odField<&Edge::counterClockwise>(73).defaultsInt(1).onlyWhen(isCurved).named(L"counterClockwise"),
        odField<&Edge::degree>(94).defaultsInt(3).onlyWhen(isSpline).named(L"degree"),
        odField<&Edge::rational>(73).onlyWhen(isSpline).named(L"rational"),
        odField<&Edge::periodic>(74).onlyWhen(isSpline).named(L"periodic"),
        odCountField<&Edge::knots>(95, knots).onlyWhen(isSpline),
        odCountField<&Edge::controlPoints>(96, points).onlyWhen(isSpline),
        knots,
        points,
        odValueArrayField<&Edge::trailingWeights>(42, L"trailingWeights").onlyWhen(isSpline),
        odCountField<&Edge::fitPoints>(97, fitPoints).since(OdDb::vAC24).onlyWhen(isSpline),
        fitPoints,
        odField<&Edge::startTangent>(12).since(OdDb::vAC24).onlyWhen(hasFitPoints).named(L"startTangent"),
        odField<&Edge::endTangent>(13).since(OdDb::vAC24).onlyWhen(hasFitPoints).named(L"endTangent"),
    });
    using Vertex = Loop::Vertex;
    static const OdDbArraySpec bulgedVertices = odRecords<std::vector<Vertex>>({
        odField<&Vertex::point>(10).named(L"vertex"),
        odField<&Vertex::bulge>(42).named(L"bulge"),
    });
    static const OdDbArraySpec plainVertices = odRecords<std::vector<Vertex>>({
        odField<&Vertex::point>(10).named(L"vertex"),
    });
    static const OdDbField vertices =
        odArrayField<&Loop::vertices>(bulgedVertices, L"vertices").onlyWhen(withBulges);
    static const OdDbField edgeList = odArrayField<&Loop::edges>(edges, L"edges").onlyWhen(isEdgeLoop);
    static const OdDbField sources = odValueArrayField<&Loop::sources>(330, L"sources");
    static const OdDbArraySpec loops = odRecords<std::vector<Loop>>({
        odField<&Loop::flags>(92).named(L"loopType"),
        odField<&Loop::hasBulges>(72).onlyWhen(isPolyline).named(L"hasBulges"),
        odField<&Loop::closed>(73).defaultsInt(1).onlyWhen(isPolyline).named(L"closed"),
        odCountField<&Loop::vertices>(93, vertices).onlyWhen(isPolyline),
        vertices,
        // The same vertices without bulges (filed and compared once, above).
        odArrayField<&Loop::vertices>(plainVertices, L"vertices").onlyWhen(withoutBulges).noFiler(),
        odCountField<&Loop::edges>(93, edgeList).onlyWhen(isEdgeLoop),
        edgeList,
        odCountField<&Loop::sources>(97, sources),
        sources,
    });
    static const OdDbArraySpec lines = odRecords<std::vector<Line>>({
        odField<&Line::angleDegrees>(53).named(L"lineAngle"),
        odField<&Line::baseX>(43).named(L"baseX"),
        odField<&Line::baseY>(44).named(L"baseY"),
        odField<&Line::offsetX>(45).named(L"offsetX"),
        odField<&Line::offsetY>(46).named(L"offsetY"),
        odCountField<&Line::dashes>(79, odValueArrayField<&Line::dashes>(49, L"dashes")),
        odValueArrayField<&Line::dashes>(49, L"dashes"),
    });
    static const OdDbField loopList = odArrayField<&Data::loops>(loops, L"loops");
    static const OdDbField lineList = odArrayField<&Data::lines>(lines, L"patternLines").presentWith<&Data::hasPatternGroups>();
    static const OdDbField seeds = odValueArrayField<&Data::seeds>(10, L"seeds");
    static const OdDbRecordCodec codec(
        {
            odCountField<&Data::loops>(91, loopList),
            loopList,
            odField<&Data::style>(75).validRange(0, 2).named(L"hatchStyle"),
            odField<&Data::patternType>(76).defaultsInt(Hatch::kPreDefined).validRange(0, 2).named(L"patternType"),
            odField<&Data::angleDegrees>(52).presentWith<&Data::hasPatternGroups>().named(L"patternAngle"),
            odField<&Data::scale>(41).defaults(1).presentWith<&Data::hasPatternGroups>().named(L"patternScale"),
            odField<&Data::isDouble>(77).presentWith<&Data::hasPatternGroups>().named(L"patternDouble"),
            odCountField<&Data::lines>(78, lineList).presentWith<&Data::hasPatternGroups>(),
            lineList,
            odField<&Data::pixelSize>(47).presentWith<&Data::hasPixelSize>().named(L"pixelSize"),
            odCountField<&Data::seeds>(98, seeds),
            seeds,
        },
        &data);
    return codec;
  }
};

const OdDbClassSchema& OdDbHatch::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbHatch",
        {
            odField<&OdDbHatch::m_elevationPoint>(10).named(L"elevationPoint"),
            odField<&OdDbHatch::m_normal>(210).named(L"normal"),
            odField<&OdDbHatch::m_patternName>(2).named(L"patternName"),
            odField<&OdDbHatch::m_solidFill>(70).named(L"solidFill"),
            odField<&OdDbHatch::m_associative>(71).named(L"associative"),
            odCustomField(OdDbHatchDataCodec::codec(), L"loopsPatternSeeds"),
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
  vertices.clear();
  bulges.clear();
  for (const auto& v : loop.vertices) {
    vertices.append(v.point);
    bulges.append(loop.hasBulges ? v.bulge : 0.0);
  }
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
  for (size_t i = 0; i < vertices.size(); ++i) loop.vertices.push_back({vertices[i], bulges.isEmpty() ? 0.0 : bulges[i]});
  loop.hasBulges =
      loop.anyBulge() ? 1 : 0;
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
  const OdGeVector2d a1 = map.apply(e.majorAxis.asVector());
  const OdGeVector2d b1 = map.apply(e.majorAxis.asVector().perpVector() * e.radiusOrRatio);
  // Principal axes of the conjugate semi-diameters a1, b1.
  const double tau = 0.5 * std::atan2(2 * a1.dotProduct(b1), a1.dotProduct(a1) - b1.dotProduct(b1));
  const OdGeVector2d major = a1 * std::cos(tau) + b1 * std::sin(tau);
  const OdGeVector2d minor = b1 * std::cos(tau) - a1 * std::sin(tau);
  e.center = map.apply(e.center);
  e.majorAxis = OdGePoint2d() + major;
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
        e.majorAxis = OdGePoint2d() + map.apply(e.majorAxis.asVector());
      } else {
        transformEllipse(e, map);
      }
      return true;
    case OdDbHatchEdge::kSpline:
      for (auto& cp : e.controlPoints) cp.point = map.apply(cp.point);
      for (auto& p : e.fitPoints) p = map.apply(p);
      e.startTangent = OdGePoint2d() + map.apply(e.startTangent.asVector());
      e.endTangent = OdGePoint2d() + map.apply(e.endTangent.asVector());
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
    for (auto& v : loop.vertices) v.point = map.apply(v.point);
    if (!similarity && loop.hasBulges && loop.anyBulge()) {
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
