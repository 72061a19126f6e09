// Pieces of curves, their classifiers, the bucketed sweep of the curve pass
// and the writing back of merged pieces.
#include "curves/ExplodeCurves.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbPolyline.h"
#include "Ge/GeOcs.h"

namespace kestrix::curves {

namespace {

constexpr double kTwoPi = 6.283185307179586476925286766559;
// Tolerance of directions and normals (the vector tolerance of the classifiers).
constexpr double kVectorTolerance = 1e-10;

// The normal in one sense for both directions, so that an arc drawn about
// -z and one about +z over the same points meet.
OdGeVector3d canonicalNormal(OdGeVector3d n) {
  n.normalize();
  constexpr double eps = 1e-12;
  if (n.z < -eps || (std::fabs(n.z) <= eps && (n.y < -eps || (std::fabs(n.y) <= eps && n.x < 0)))) n = -n;
  return n;
}

double angleOf(const OdGePoint3d& point, const OdGePoint3d& center, const OdGeVector3d& normal) {
  return odgeOcsAngle(point - center, normal);
}

double wrapAngle(double a) {
  a = std::fmod(a, kTwoPi);
  return a < 0 ? a + kTwoPi : a;
}

// The counter-clockwise distance from angle a to angle b, in [0, 2π); values
// within tol of a full turn count as 0.
double ccwDistance(double from, double to, double tol) {
  const double d = wrapAngle(to - from);
  return d > kTwoPi - tol ? 0.0 : d;
}

bool same(const OdGePoint3d& a, const OdGePoint3d& b, double tol) { return a.distanceTo(b) < tol; }

double distanceToSegment(const OdGePoint3d& p, const OdGePoint3d& a, const OdGePoint3d& b) {
  const OdGeVector3d v = b - a;
  const double len2 = v.dotProduct(v);
  double t = len2 > 0 ? (p - a).dotProduct(v) / len2 : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  return p.distanceTo(a + v * t);
}

double distanceToLine(const OdGePoint3d& p, const OdGePoint3d& a, const OdGePoint3d& b) {
  const OdGeVector3d v = b - a;
  const double len2 = v.dotProduct(v);
  const double t = len2 > 0 ? (p - a).dotProduct(v) / len2 : 0.0;
  return p.distanceTo(a + v * t);
}

bool onSegment(const OdGePoint3d& p, const CurvePiece& s, double tol) { return distanceToSegment(p, s.p0, s.p1) < tol; }

// Unit direction with a sign fixed for both senses of a line.
OdGeVector3d canonicalDirection(const CurvePiece& piece) {
  OdGeVector3d d = piece.p1 - piece.p0;
  d.normalize();
  constexpr double eps = 1e-6;
  if (d.x < -eps || (std::fabs(d.x) <= eps && (d.y < -eps || (std::fabs(d.y) <= eps && d.z < 0)))) d = -d;
  return d;
}

}  // namespace

bool CurvePiece::closed() const { return arc && sweep >= kTwoPi - 1e-12; }

void CurvePiece::updateArcEnds() {
  OdGeVector3d x, y, z;
  odgeOcsAxes(normal, x, y, z);
  const OdGePoint3d s = center + (x * std::cos(start) + y * std::sin(start)) * radius;
  const OdGePoint3d e = center + (x * std::cos(start + sweep) + y * std::sin(start + sweep)) * radius;
  p0 = forward ? s : e;
  p1 = forward ? e : s;
}

CurvePiece makeLinePiece(const OdGePoint3d& p0, const OdGePoint3d& p1) {
  CurvePiece piece;
  piece.p0 = p0;
  piece.p1 = p1;
  return piece;
}

CurvePiece makeArcPiece(const OdGePoint3d& center, double radius, const OdGeVector3d& normal,
                        const OdGePoint3d& ccwStart, const OdGePoint3d& ccwEnd, double sweep) {
  CurvePiece piece;
  piece.arc = true;
  piece.center = center;
  piece.radius = radius;
  piece.normal = canonicalNormal(normal);
  piece.sweep = std::min(sweep, kTwoPi);
  piece.forward = piece.normal.dotProduct(normal) > 0;
  piece.start = angleOf(piece.forward ? ccwStart : ccwEnd, center, piece.normal);
  piece.p0 = ccwStart;
  piece.p1 = ccwEnd;
  return piece;
}

// ---------------------------------------------------------------- classifiers

bool CExplodeLine::colinear(const CurvePiece& a, bool aEnd, const CurvePiece& b, bool bEnd, double tolerance) {
  // The touching ends lie on each other already: parallel pieces (within the
  // vector tolerance) are then co-linear; otherwise the ends away from the
  // touching ones must lie on the other piece's line.
  OdGeVector3d da = a.p1 - a.p0, db = b.p1 - b.p0;
  da.normalize();
  db.normalize();
  if (da.crossProduct(db).length() <= kVectorTolerance) return true;
  const OdGePoint3d& aFar = aEnd ? a.p0 : a.p1;
  const OdGePoint3d& bFar = bEnd ? b.p0 : b.p1;
  return distanceToLine(bFar, a.p0, a.p1) < tolerance && distanceToLine(aFar, b.p0, b.p1) < tolerance;
}

int CExplodeLine::classifyLines(CurvePiece& a, const CurvePiece& b, double tol) {
  if (a.arc || b.arc) return kUnrelated;
  if (same(a.p0, a.p1, tol) || same(b.p0, b.p1, tol)) return kUnrelated;
  if ((same(a.p0, b.p0, tol) && same(a.p1, b.p1, tol)) || (same(a.p0, b.p1, tol) && same(a.p1, b.p0, tol)))
    return kIdentical;
  if (onSegment(b.p0, a, tol) && onSegment(b.p1, a, tol)) return kContained;
  if (onSegment(a.p0, b, tol) && onSegment(a.p1, b, tol)) {
    a.p0 = b.p0;
    a.p1 = b.p1;
    return kContained;
  }
  struct Case {
    bool aEnd, bEnd;
  };
  // (a's touching end, b's touching end) in the order of the tests.
  static const Case cases[] = {{true, false}, {false, false}, {false, true}, {true, true}};
  for (const Case& c : cases) {
    const OdGePoint3d& aTouch = c.aEnd ? a.p1 : a.p0;
    const OdGePoint3d& bTouch = c.bEnd ? b.p1 : b.p0;
    if (!onSegment(aTouch, b, tol) || !onSegment(bTouch, a, tol)) continue;
    if (!colinear(a, c.aEnd, b, c.bEnd, tol)) return kUnrelated;
    return same(aTouch, bTouch, tol) ? kEndToEnd : kPartialOverlap;
  }
  return kUnrelated;
}

int CExplodeCircArc::classifyArcs(CurvePiece& a, const CurvePiece& b, double tol) {
  if (!a.arc || !b.arc) return kUnrelated;
  if (a.radius < tol || b.radius < tol || a.sweep * a.radius < tol || b.sweep * b.radius < tol) return kUnrelated;
  if (std::fabs(a.radius - b.radius) >= tol || !same(a.center, b.center, tol) ||
      a.normal.dotProduct(b.normal) < 1 - kVectorTolerance)
    return kUnrelated;
  const double ta = tol / a.radius;
  const bool aClosed = a.closed(), bClosed = b.closed();
  if (aClosed && bClosed) return kIdentical;
  if (!aClosed && !bClosed && ccwDistance(a.start, b.start, ta) < ta && std::fabs(a.sweep - b.sweep) < ta)
    return kIdentical;
  const double d = ccwDistance(a.start, b.start, ta);   // b starts d after a
  const double d2 = ccwDistance(b.start, a.start, ta);  // a starts d2 after b
  if (aClosed || d + b.sweep <= a.sweep + ta) return kContained;
  if (bClosed || d2 + a.sweep <= b.sweep + ta) {
    a.start = b.start;
    a.sweep = b.sweep;
    a.updateArcEnds();
    return kContained;
  }
  if (d <= a.sweep + ta) return std::fabs(d - a.sweep) < ta ? kEndToEnd : kPartialOverlap;
  if (d2 <= b.sweep + ta) return std::fabs(d2 - b.sweep) < ta ? kEndToEnd : kPartialOverlap;
  return kUnrelated;
}

int CExplodeLine::classify(CurvePiece& a, const CurvePiece& b, double tolerance) const {
  return classifyLines(a, b, tolerance);
}

int CExplodeCircArc::classify(CurvePiece& a, const CurvePiece& b, double tolerance) const {
  return classifyArcs(a, b, tolerance);
}

int CExplodeLineAndArc::classify(CurvePiece& a, const CurvePiece& b, double tolerance) const {
  if (a.arc != b.arc) return kUnrelated;
  return a.arc ? CExplodeCircArc::classifyArcs(a, b, tolerance) : CExplodeLine::classifyLines(a, b, tolerance);
}

void uniteInto(CurvePiece& a, const CurvePiece& b, int relation, double tol) {
  if (relation == kIdentical) return;
  if (!a.arc) {
    // The extreme points along a's own direction.
    OdGeVector3d u = a.p1 - a.p0;
    u.normalize();
    const OdGePoint3d points[] = {a.p0, a.p1, b.p0, b.p1};
    const OdGePoint3d* low = &points[0];
    const OdGePoint3d* high = &points[1];
    for (const OdGePoint3d& p : points) {
      const double t = (p - points[0]).dotProduct(u);
      if (t < (*low - points[0]).dotProduct(u)) low = &p;
      if (t > (*high - points[0]).dotProduct(u)) high = &p;
    }
    const OdGePoint3d first = *low, last = *high;
    a.p0 = first;
    a.p1 = last;
    return;
  }
  const double ta = tol / a.radius;
  if (a.closed()) return;
  if (b.closed()) {
    a.start = b.start;
    a.sweep = kTwoPi;
  } else {
    const double d = ccwDistance(a.start, b.start, ta);
    const double d2 = ccwDistance(b.start, a.start, ta);
    if (d <= a.sweep + ta) {
      a.sweep = std::max(a.sweep, d + b.sweep);
    } else if (d2 <= b.sweep + ta) {
      a.start = b.start;
      a.sweep = std::max(b.sweep, d2 + a.sweep);
    }
  }
  if (a.sweep >= kTwoPi - ta) a.sweep = kTwoPi;
  a.updateArcEnds();
}

// ---------------------------------------------------------------- intake

void CurvePass::addPiece(CBaseExplodeCurve& curve, CurvePiece piece) {
  // A piece shorter than the tolerance (a polyline's repeated vertex) meets
  // nothing and would be left behind alone when the rest merges away.
  if (!piece.arc && piece.p0.distanceTo(piece.p1) < m_options.effectiveTolerance()) return;
  piece.curve = static_cast<int>(m_curves.size()) - 1;
  piece.order = static_cast<int>(curve.pieces().size());
  curve.pieces().push_back(static_cast<int>(m_pieces.size()));
  m_pieces.push_back(piece);
}

namespace {

CurvePiece arcPieceOf(const OdDbArc* arc) {
  OdGePoint3d s, e;
  arc->getStartPoint(s);
  arc->getEndPoint(e);
  return makeArcPiece(arc->center(), arc->radius(), arc->normal(), s, e, arc->totalAngle());
}

// The arc of a bulged lightweight polyline segment from a to b (world points).
CurvePiece bulgePiece(const OdDbPolyline* pline, unsigned int i, unsigned int j, double bulge) {
  const OdGePoint2d a = pline->getPoint2dAt(i), b = pline->getPoint2dAt(j);
  const OdGeVector2d chord = b - a;
  const double length = chord.length();
  const OdGeVector2d left(-chord.y / length, chord.x / length);
  const OdGePoint2d mid((a.x + b.x) / 2, (a.y + b.y) / 2);
  const OdGePoint2d c2 = mid + left * (length * (1 - bulge * bulge) / (4 * bulge));
  const double radius = length * (1 + bulge * bulge) / (4 * std::fabs(bulge));
  const OdGeVector3d n = pline->normal();
  const OdGePoint3d center = odgeOcsToWcs(c2, pline->elevation(), n);
  OdGePoint3d pa, pb;
  pline->getPointAt(i, pa);
  pline->getPointAt(j, pb);
  const double sweep = 4 * std::atan(std::fabs(bulge));
  CurvePiece piece = bulge > 0 ? makeArcPiece(center, radius, n, pa, pb, sweep) : makeArcPiece(center, radius, n, pb, pa, sweep);
  if (bulge < 0) {
    // The polyline runs from a to b, clockwise about its normal.
    piece.p0 = pa;
    piece.p1 = pb;
    piece.forward = !piece.forward;
  }
  return piece;
}

}  // namespace

bool CurvePass::intake(const OdDbEntity* entity) {
  std::unique_ptr<CBaseExplodeCurve> curve;
  const OdDbObjectId id = entity->objectId();
  if (entity->isKindOf(OdDbLine::desc())) {
    curve = std::make_unique<CExplodeLine>(id, CBaseExplodeCurve::kLine);
  } else if (entity->isKindOf(OdDbArc::desc())) {
    curve = std::make_unique<CExplodeCircArc>(id, CBaseExplodeCurve::kArc);
  } else if (entity->isKindOf(OdDbCircle::desc())) {
    curve = std::make_unique<CExplodeCircArc>(id, CBaseExplodeCurve::kCircle);
  } else if (entity->isKindOf(OdDbPolyline::desc())) {
    curve = std::make_unique<CExplodeLineAndArc>(id, CBaseExplodeCurve::kLwPolyline);
  } else if (entity->isKindOf(OdDb2dPolyline::desc())) {
    curve = std::make_unique<CExplodeLineAndArc>(id, CBaseExplodeCurve::k2dPolyline);
  } else if (entity->isKindOf(OdDb3dPolyline::desc())) {
    curve = std::make_unique<CExplodeLine>(id, CBaseExplodeCurve::k3dPolyline);
  } else {
    return false;
  }
  m_curves.push_back(std::move(curve));
  CBaseExplodeCurve& c = *m_curves.back();

  // The common properties the options compare, as one key of the curve.
  OdDbObjectId plotStyle;
  entity->getPlotStyleNameId(plotStyle);
  const Properties props{m_options.compareLayer ? entity->layerId().handle().value() : 0,
                         m_options.compareLinetype ? entity->linetypeId().handle().value() : 0,
                         m_options.comparePlotStyle ? plotStyle.handle().value() : 0,
                         m_options.compareColor ? entity->entityColor().color() : 0,
                         m_options.compareLineweight ? static_cast<int>(entity->lineWeight()) : 0};
  auto found = m_propertyIds.find(props);
  const int propertyId = found != m_propertyIds.end() ? found->second
                                                      : m_propertyIds.emplace(props, static_cast<int>(m_propertyIds.size())).first->second;
  m_propertyKeys.push_back({static_cast<double>(propertyId), entity->linetypeScale()});

  switch (c.kind()) {
    case CBaseExplodeCurve::kLine: {
      const OdDbLine* line = static_cast<const OdDbLine*>(entity);
      addPiece(c, makeLinePiece(line->startPoint(), line->endPoint()));
      break;
    }
    case CBaseExplodeCurve::kArc: addPiece(c, arcPieceOf(static_cast<const OdDbArc*>(entity))); break;
    case CBaseExplodeCurve::kCircle: {
      const OdDbCircle* circle = static_cast<const OdDbCircle*>(entity);
      OdGePoint3d p;
      circle->getPointAtParam(0, p);
      CurvePiece piece = makeArcPiece(circle->center(), circle->radius(), circle->normal(), p, p, kTwoPi);
      addPiece(c, piece);
      break;
    }
    case CBaseExplodeCurve::kLwPolyline: {
      const OdDbPolyline* pline = static_cast<const OdDbPolyline*>(entity);
      const unsigned int n = pline->numVerts();
      const unsigned int segments = n < 2 ? 0 : (pline->isClosed() ? n : n - 1);
      for (unsigned int i = 0; i < segments; ++i) {
        const unsigned int j = (i + 1) % n;
        const double bulge = pline->getBulgeAt(i);
        CurvePiece piece;
        if (std::fabs(bulge) > 1e-12 && pline->getPoint2dAt(i).distanceTo(pline->getPoint2dAt(j)) > 0) {
          piece = bulgePiece(pline, i, j, bulge);
        } else {
          OdGePoint3d a, b;
          pline->getPointAt(i, a);
          pline->getPointAt(j, b);
          piece = makeLinePiece(a, b);
        }
        pline->getWidthsAt(i, piece.startWidth, piece.endWidth);
        addPiece(c, piece);
      }
      break;
    }
    case CBaseExplodeCurve::k2dPolyline:
    case CBaseExplodeCurve::k3dPolyline: {
      OdRxObjectPtrArray parts;
      if (entity->explode(parts) != eOk) break;
      for (const OdRxObjectPtr& part : parts) {
        if (const OdSmartPtr<OdDbLine> line = OdDbLine::cast(part.get()); !line.isNull()) {
          addPiece(c, makeLinePiece(line->startPoint(), line->endPoint()));
        } else if (const OdSmartPtr<OdDbArc> arc = OdDbArc::cast(part.get()); !arc.isNull()) {
          addPiece(c, arcPieceOf(arc.get()));
        }
      }
      break;
    }
  }
  return true;
}

// ---------------------------------------------------------------- buckets

namespace {

using Groups = std::vector<std::vector<int>>;

// Splits every group so that pieces whose key intervals (key ± radius)
// overlap, directly or through others, stay together: sorted by where the
// intervals start, a cut falls only where an interval starts beyond the
// reach of all before it.
template <class Key, class Radius>
void splitGroups(Groups& groups, Key key, Radius radius) {
  Groups out;
  out.reserve(groups.size());
  struct Keyed {
    double from, to;
    int piece;
  };
  std::vector<Keyed> keyed;
  for (std::vector<int>& group : groups) {
    if (group.size() < 2) {
      out.push_back(std::move(group));
      continue;
    }
    keyed.clear();
    for (int i : group) {
      const double k = key(i), r = radius(i);
      keyed.push_back({k - r, k + r, i});
    }
    std::sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) { return a.from < b.from; });
    std::vector<int> current{keyed[0].piece};
    double reach = keyed[0].to;
    for (size_t k = 1; k < keyed.size(); ++k) {
      if (keyed[k].from > reach) {
        out.push_back(std::move(current));
        current.clear();
      }
      reach = std::max(reach, keyed[k].to);
      current.push_back(keyed[k].piece);
    }
    out.push_back(std::move(current));
  }
  groups.swap(out);
}

}  // namespace

void CurvePass::run(int& duplicates, int& overlaps) {
  const double tol = m_options.effectiveTolerance();
  std::vector<int> lines, arcs;
  OdGeExtents3d extents;
  for (int i = 0; i < static_cast<int>(m_pieces.size()); ++i) {
    (m_pieces[i].arc ? arcs : lines).push_back(i);
    extents.addPoint(m_pieces[i].p0);
    extents.addPoint(m_pieces[i].p1);
  }
  const OdGePoint3d origin = m_pieces.empty() ? OdGePoint3d() : extents.center();

  auto byProperties = [&](Groups& groups) {
    splitGroups(groups, [&](int i) { return m_propertyKeys[m_pieces[i].curve][0]; }, [](int) { return 0.0; });
    splitGroups(groups, [&](int i) { return m_propertyKeys[m_pieces[i].curve][1]; }, [&](int) { return tol / 2; });
  };

  // Lines: by properties, direction and the foot of the line from the
  // drawing's centre.
  {
    // The direction as the products of its components, which are the same
    // for both senses and change smoothly; a line whose ends may each be
    // off by the tolerance turns by up to about 2T / length.
    std::vector<std::array<double, 5>> dir(m_pieces.size());
    std::vector<OdGePoint3d> foot(m_pieces.size());
    std::vector<double> turn(m_pieces.size()), footRadius(m_pieces.size());
    for (int i : lines) {
      OdGeVector3d d = m_pieces[i].p1 - m_pieces[i].p0;
      const double length = d.length();
      d /= length;
      dir[i] = {d.x * d.x - d.y * d.y, 2 * d.x * d.y, 2 * d.x * d.z, 2 * d.y * d.z, d.z * d.z};
      const OdGeVector3d q = m_pieces[i].p0 - origin;
      foot[i] = OdGePoint3d() + (q - d * q.dotProduct(d));
      // Pieces shorter than a hundred tolerances are allowed at most 1e-2.
      turn[i] = std::min(1e-2, std::max(1e-9, 3 * tol / length));
      footRadius[i] = 2 * tol + 2 * turn[i] * (q.length() + length);
    }
    Groups groups{lines};
    byProperties(groups);
    for (size_t k = 0; k < 5; ++k)
      splitGroups(groups, [&](int i) { return dir[i][k]; }, [&](int i) { return 2 * turn[i]; });
    splitGroups(groups, [&](int i) { return foot[i].x; }, [&](int i) { return footRadius[i]; });
    splitGroups(groups, [&](int i) { return foot[i].y; }, [&](int i) { return footRadius[i]; });
    splitGroups(groups, [&](int i) { return foot[i].z; }, [&](int i) { return footRadius[i]; });
    for (std::vector<int>& group : groups)
      if (group.size() > 1) sweepLines(group, duplicates, overlaps);
  }

  // Arcs and circles: by properties, normal, centre and radius.
  {
    Groups groups{arcs};
    byProperties(groups);
    auto normalEps = [](int) { return 1e-9; };
    auto pointEps = [&](int) { return tol; };
    splitGroups(groups, [&](int i) { return m_pieces[i].normal.x; }, normalEps);
    splitGroups(groups, [&](int i) { return m_pieces[i].normal.y; }, normalEps);
    splitGroups(groups, [&](int i) { return m_pieces[i].normal.z; }, normalEps);
    splitGroups(groups, [&](int i) { return m_pieces[i].radius; }, pointEps);
    splitGroups(groups, [&](int i) { return m_pieces[i].center.x; }, pointEps);
    splitGroups(groups, [&](int i) { return m_pieces[i].center.y; }, pointEps);
    splitGroups(groups, [&](int i) { return m_pieces[i].center.z; }, pointEps);
    for (std::vector<int>& group : groups)
      if (group.size() > 1) sweepArcs(group, duplicates, overlaps);
  }
  writeBack();
}

void CurvePass::consider(int ia, int ib, int& duplicates, int& overlaps) {
  // The piece of the curve met first (later in the selection) is kept.
  CurvePiece* keep = &m_pieces[ia];
  CurvePiece* other = &m_pieces[ib];
  if (std::tie(other->curve, other->order) < std::tie(keep->curve, keep->order)) std::swap(keep, other);
  CBaseExplodeCurve& keeper = *m_curves[keep->curve];
  CBaseExplodeCurve& source = *m_curves[other->curve];
  const bool polyline = keeper.isPolyline() || source.isPolyline();
  if (keeper.isSameEntity(source) && !(polyline && m_options.optimizePolylines)) return;

  const double tol = m_options.effectiveTolerance();
  if (!keeper.isPolyline() && source.isPolyline()) {
    // A line or arc that repeats or lies within a polyline's piece goes, so
    // that the polyline stays whole.
    CurvePiece polylinePiece = *other;
    const int reverse = source.classify(polylinePiece, *keep, tol);
    if (reverse == kIdentical || (reverse == kContained && polylinePiece.p0 == other->p0 &&
                                  polylinePiece.p1 == other->p1 && polylinePiece.sweep == other->sweep)) {
      std::swap(keep, other);
    }
  }
  CBaseExplodeCurve& kept = *m_curves[keep->curve];
  CBaseExplodeCurve& merged = *m_curves[other->curve];
  CurvePiece united = *keep;
  const int relation = kept.classify(united, *other, tol);
  bool merge = false;
  int* counter = &overlaps;
  switch (relation) {
    case kIdentical:
      merge = !polyline || (m_options.optimizePolylines && m_options.combinePartial);
      if (!polyline) counter = &duplicates;
      break;
    case kPartialOverlap:
    case kContained: merge = m_options.combinePartial && (!polyline || m_options.optimizePolylines); break;
    case kEndToEnd: merge = m_options.combineEndToEnd && (!polyline || m_options.optimizePolylines); break;
    default: return;
  }
  if (!merge) return;
  uniteInto(united, *other, relation, tol);
  if (relation != kIdentical) {
    keep->p0 = united.p0;
    keep->p1 = united.p1;
    keep->start = united.start;
    keep->sweep = united.sweep;
    keep->changed = true;
    kept.setModified();
  }
  other->alive = false;
  merged.setModified();
  ++*counter;
}

void CurvePass::sweepLines(std::vector<int>& bucket, int& duplicates, int& overlaps) {
  const double tol = m_options.effectiveTolerance();
  const OdGeVector3d u = canonicalDirection(m_pieces[bucket[0]]);
  auto low = [&](int i) { return std::min((m_pieces[i].p0 - OdGePoint3d()).dotProduct(u), (m_pieces[i].p1 - OdGePoint3d()).dotProduct(u)); };
  auto high = [&](int i) { return std::max((m_pieces[i].p0 - OdGePoint3d()).dotProduct(u), (m_pieces[i].p1 - OdGePoint3d()).dotProduct(u)); };
  std::vector<std::pair<double, int>> sorted;
  sorted.reserve(bucket.size());
  for (int i : bucket) sorted.emplace_back(low(i), i);
  std::sort(sorted.begin(), sorted.end(), [&](const auto& a, const auto& b) {
    return a.first != b.first ? a.first < b.first : std::tie(m_pieces[a.second].curve, m_pieces[a.second].order) < std::tie(m_pieces[b.second].curve, m_pieces[b.second].order);
  });
  std::vector<int> active;
  for (const auto& [from, ib] : sorted) {
    // Pieces that end before this one starts can meet no later piece.
    active.erase(std::remove_if(active.begin(), active.end(),
                                [&](int ia) { return !m_pieces[ia].alive || high(ia) < from - 2 * tol; }),
                 active.end());
    for (size_t k = 0; k < active.size() && m_pieces[ib].alive; ++k) {
      const int ia = active[k];
      if (!m_pieces[ia].alive) continue;
      consider(ia, ib, duplicates, overlaps);
    }
    if (m_pieces[ib].alive) active.push_back(ib);
  }
}

void CurvePass::sweepArcs(std::vector<int>& bucket, int& duplicates, int& overlaps) {
  std::sort(bucket.begin(), bucket.end(), [&](int a, int b) { return m_pieces[a].start < m_pieces[b].start; });
  for (size_t i = 0; i < bucket.size(); ++i) {
    for (size_t j = i + 1; j < bucket.size() && m_pieces[bucket[i]].alive; ++j) {
      if (m_pieces[bucket[j]].alive) consider(bucket[i], bucket[j], duplicates, overlaps);
    }
  }
}

// ---------------------------------------------------------------- writing back

namespace {

struct Chain {
  std::vector<CurvePiece> pieces;  // oriented in the chain's sense
  bool closed = false;
};

CurvePiece reversed(CurvePiece piece) {
  std::swap(piece.p0, piece.p1);
  std::swap(piece.startWidth, piece.endWidth);
  piece.forward = !piece.forward;
  return piece;
}

// Chains the remaining pieces in their order; a piece that does not meet the
// end of the chain so far starts a new chain.
std::vector<Chain> chainPieces(const std::vector<CurvePiece>& pieces, double tol) {
  std::vector<Chain> chains;
  for (const CurvePiece& piece : pieces) {
    if (!chains.empty()) {
      Chain& chain = chains.back();
      const OdGePoint3d end = chain.pieces.back().p1;
      if (same(piece.p0, end, tol)) {
        chain.pieces.push_back(piece);
        continue;
      }
      if (same(piece.p1, end, tol)) {
        chain.pieces.push_back(reversed(piece));
        continue;
      }
      if (chain.pieces.size() == 1 && (same(piece.p0, chain.pieces[0].p0, tol) || same(piece.p1, chain.pieces[0].p0, tol))) {
        chain.pieces[0] = reversed(chain.pieces[0]);
        chain.pieces.push_back(same(piece.p0, chain.pieces[0].p1, tol) ? piece : reversed(piece));
        continue;
      }
    }
    chains.push_back({{piece}, false});
  }
  // A closed source that lost a piece in its middle: the last chain runs on
  // into the first.
  if (chains.size() > 1 && same(chains.back().pieces.back().p1, chains.front().pieces.front().p0, tol)) {
    Chain& last = chains.back();
    last.pieces.insert(last.pieces.end(), chains.front().pieces.begin(), chains.front().pieces.end());
    chains.front() = std::move(last);
    chains.pop_back();
  }
  for (Chain& chain : chains) {
    if (chain.pieces.size() == 1 && chain.pieces[0].closed()) {
      // A whole circle as two halves.
      CurvePiece first = chain.pieces[0], second = chain.pieces[0];
      first.sweep = second.sweep = kTwoPi / 2;
      second.start += kTwoPi / 2;
      first.updateArcEnds();
      second.updateArcEnds();
      chain.pieces = {first, second};
      chain.closed = true;
    } else {
      chain.closed = chain.pieces.size() > 1 && same(chain.pieces.back().p1, chain.pieces.front().p0, tol);
    }
  }
  return chains;
}

// Writes a chain into a lightweight polyline of the given plane.
void fillPolyline(OdDbPolyline* pline, const Chain& chain, const OdGeVector3d& normal) {
  pline->reset();
  const OdGeVector3d n = canonicalNormal(normal);
  const bool flip = n.dotProduct(normal) < 0;
  auto add = [&](const OdGePoint3d& p, double bulge, double w0, double w1) {
    const OdGePoint3d ocs = odgeWcsToOcs(p, normal);
    pline->addVertexAt(pline->numVerts(), OdGePoint2d(ocs.x, ocs.y), bulge, w0, w1);
  };
  for (const CurvePiece& piece : chain.pieces) {
    double bulge = 0;
    if (piece.arc) {
      // Counter-clockwise about the piece's normal when it runs forward;
      // the polyline's normal may be the opposite one.
      bool ccw = piece.forward;
      if (piece.normal.dotProduct(n) < 0) ccw = !ccw;
      if (flip) ccw = !ccw;
      bulge = std::tan(piece.sweep / 4) * (ccw ? 1 : -1);
    }
    add(piece.p0, bulge, piece.startWidth, piece.endWidth);
  }
  if (!chain.closed) add(chain.pieces.back().p1, 0, 0, 0);
  pline->setClosed(chain.closed);
}

OdSmartPtr<OdDbBlockTableRecord> ownerForWrite(const OdDbEntity* entity) {
  return OdDbBlockTableRecord::cast(entity->ownerId().openObject(OdDb::kForWrite).get());
}

}  // namespace

void CurvePass::writeBack() {
  const double tol = m_options.effectiveTolerance();
  for (const auto& curvePtr : m_curves) {
    CBaseExplodeCurve& curve = *curvePtr;
    if (!curve.modified()) continue;
    std::vector<CurvePiece> remaining;
    bool changed = false;
    for (int i : curve.pieces()) {
      if (m_pieces[i].alive) remaining.push_back(m_pieces[i]);
      changed = changed || !m_pieces[i].alive || m_pieces[i].changed;
    }
    if (!changed) continue;
    OdDbEntityPtr entity = OdDbEntity::cast(curve.sourceId().openObject(OdDb::kForWrite).get());
    if (entity.isNull()) continue;
    if (remaining.empty()) {
      entity->erase();
      continue;
    }
    switch (curve.kind()) {
      case CBaseExplodeCurve::kLine: {
        OdDbLine* line = static_cast<OdDbLine*>(entity.get());
        line->setStartPoint(remaining[0].p0);
        line->setEndPoint(remaining[0].p1);
        break;
      }
      case CBaseExplodeCurve::kArc:
      case CBaseExplodeCurve::kCircle: {
        const CurvePiece& piece = remaining[0];
        if (curve.kind() == CBaseExplodeCurve::kCircle) break;
        OdDbArc* arc = static_cast<OdDbArc*>(entity.get());
        if (piece.closed()) {
          // The arc grew to a whole circle: a circle takes its place.
          OdSmartPtr<OdDbCircle> circle = OdDbCircle::createObject();
          circle->setPropertiesFrom(arc);
          circle->setNormal(arc->normal());
          circle->setCenter(arc->center());
          circle->setRadius(arc->radius());
          circle->setThickness(arc->thickness());
          if (auto owner = ownerForWrite(arc); !owner.isNull()) owner->appendOdDbEntity(circle.get());
          arc->erase();
          break;
        }
        OdGeVector3d x, y, z;
        odgeOcsAxes(piece.normal, x, y, z);
        const OdGePoint3d s = piece.center + (x * std::cos(piece.start) + y * std::sin(piece.start)) * piece.radius;
        const OdGePoint3d e = piece.center + (x * std::cos(piece.start + piece.sweep) + y * std::sin(piece.start + piece.sweep)) * piece.radius;
        const bool sameSense = arc->normal().dotProduct(piece.normal) > 0;
        arc->setStartAngle(angleOf(sameSense ? s : e, arc->center(), arc->normal()));
        arc->setEndAngle(angleOf(sameSense ? e : s, arc->center(), arc->normal()));
        break;
      }
      case CBaseExplodeCurve::kLwPolyline:
      case CBaseExplodeCurve::k2dPolyline: {
        const std::vector<Chain> chains = chainPieces(remaining, tol);
        OdGeVector3d normal;
        double elevation = 0, thickness = 0;
        if (curve.kind() == CBaseExplodeCurve::kLwPolyline) {
          const auto* pline = static_cast<const OdDbPolyline*>(entity.get());
          normal = pline->normal(), elevation = pline->elevation(), thickness = pline->thickness();
        } else {
          const auto* pline = static_cast<const OdDb2dPolyline*>(entity.get());
          normal = pline->normal(), elevation = pline->elevation(), thickness = pline->thickness();
        }
        auto owner = ownerForWrite(entity.get());
        for (size_t k = 0; k < chains.size(); ++k) {
          if (k == 0 && curve.kind() == CBaseExplodeCurve::kLwPolyline) {
            // The first chain stays in the source polyline.
            fillPolyline(static_cast<OdDbPolyline*>(entity.get()), chains[0], normal);
            continue;
          }
          OdDbPolylinePtr pline = OdDbPolyline::createObject();
          pline->setPropertiesFrom(entity.get());
          pline->setNormal(normal);
          pline->setElevation(elevation);
          pline->setThickness(thickness);
          fillPolyline(pline.get(), chains[k], normal);
          if (!owner.isNull()) owner->appendOdDbEntity(pline.get());
        }
        if (curve.kind() == CBaseExplodeCurve::k2dPolyline) entity->erase();
        break;
      }
      case CBaseExplodeCurve::k3dPolyline: {
        const std::vector<Chain> chains = chainPieces(remaining, tol);
        auto owner = ownerForWrite(entity.get());
        for (const Chain& chain : chains) {
          OdSmartPtr<OdDb3dPolyline> pline = OdDb3dPolyline::createObject();
          pline->setPropertiesFrom(entity.get());
          if (owner.isNull()) break;
          owner->appendOdDbEntity(pline.get());
          for (const CurvePiece& piece : chain.pieces) {
            OdSmartPtr<OdDb3dPolylineVertex> vertex = OdDb3dPolylineVertex::createObject();
            vertex->setPosition(piece.p0);
            pline->appendVertex(vertex.get());
          }
          if (!chain.closed) {
            OdSmartPtr<OdDb3dPolylineVertex> vertex = OdDb3dPolylineVertex::createObject();
            vertex->setPosition(chain.pieces.back().p1);
            pline->appendVertex(vertex.get());
          }
          pline->setClosed(chain.closed);
        }
        entity->erase();
        break;
      }
    }
  }
}

}  // namespace kestrix::curves
