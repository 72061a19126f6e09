// Object snaps: ryedOsnap and the snap overrides typed at point prompts.
//
// The console shows the drawing in the user coordinate system, seen along
// its z axis; the pick box is PICKBOX drawing units around the point. Every
// entity of the current space whose geometry comes within the pick box is a
// candidate; compound entities (polylines, block references, dimensions...)
// are looked at through the pieces they explode into. Each mode proposes
// points on the candidates and the one nearest to the picked point (in the
// view) wins.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbPoint.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeLineSeg3d.h"
#include "core/Host.h"
#include "core/SpatialIndex.h"
#include "ryed.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

constexpr double kTwoPi = 6.283185307179586476925286766559;
constexpr int kMaxExplodeDepth = 8;

enum SnapMode : unsigned {
  kEnd = 1,
  kMid = 2,
  kCen = 4,
  kQua = 8,
  kInt = 16,
  kPer = 32,
  kIns = 64,
  kNod = 128,
  kNea = 256,
  kNon = 512,
};

// A mode is named by its first three letters or more ("end", "endpoint").
bool parseModes(const OdString& text, unsigned& modes) {
  static const struct {
    const wchar_t* name;
    SnapMode mode;
  } kNames[] = {
      {L"endpoint", kEnd}, {L"midpoint", kMid},     {L"center", kCen},        {L"centre", kCen},
      {L"quadrant", kQua}, {L"intersection", kInt}, {L"perpendicular", kPer}, {L"insertion", kIns},
      {L"node", kNod},     {L"nearest", kNea},      {L"none", kNon},
  };
  modes = 0;
  int start = 0;
  for (;;) {
    const int comma = text.find(L',', start);
    OdString word = text.mid(start, comma < 0 ? -1 : comma - start);
    word.trimLeft().trimRight();
    word.trimLeft(L'_');
    word.makeLower();
    bool known = false;
    for (const auto& entry : kNames) {
      const OdString name(entry.name);
      if (word.getLength() >= 3 && word.getLength() <= name.getLength() &&
          name.left(word.getLength()) == word) {
        modes |= entry.mode;
        known = true;
        break;
      }
    }
    if (!known) return false;
    if (comma < 0) return modes != 0;
    start = comma + 1;
  }
}

// One piece of an entity's geometry, in world coordinates.
struct SnapPart {
  enum Kind { kLine, kArc, kCurve, kNode };
  Kind kind = kNode;
  OdGeLineSeg3d line;
  OdGeCircArc3d arc;            // full circles sweep 2π
  OdSmartPtr<OdDbCurve> curve;  // ellipses and splines answer for themselves
  OdGePoint3d node;
  bool isFullCircle() const { return kind == kArc && arc.sweepAngle() >= kTwoPi - 1e-12; }
};

// What the snaps see of one entity of the drawing.
struct SnapTarget {
  std::vector<SnapPart> parts;
  std::vector<OdGePoint3d> insertions;
  double bodyDistance = std::numeric_limits<double>::infinity();  // texts: how far the pick is from their box
  bool nearestIsInsertion = false;                                // texts: "nea" gives their insertion point
};

class Snapper {
 public:
  Snapper(const OdGePoint3d& ucsPick, double aperture)
      : m_toWorld(ucsToWorld()), m_pick(ucsPick), m_aperture(aperture + 1e-9) {
    if (!m_toWorld.inverse(m_toUcs)) m_toWorld = m_toUcs = OdGeMatrix3d::kIdentity;
    m_pickWorld = m_toWorld * ucsPick;
    m_view = (m_toWorld * OdGeVector3d::kZAxis).normal();
    m_lastWorld = m_toWorld * lastPoint();
  }

  void addEntity(const OdDbEntity* entity) {
    SnapTarget target;
    collect(entity, target, 0, true);
    if (isUnder(target)) m_targets.push_back(std::move(target));
  }

  bool snap(unsigned modes, OdGePoint3d& ucsResult) {
    for (const SnapTarget& target : m_targets) {
      if (modes & kIns)
        for (const auto& p : target.insertions) consider(p);
      if ((modes & kNea) && target.nearestIsInsertion)
        for (const auto& p : target.insertions) consider(p);
      for (const SnapPart& part : target.parts) {
        if (isUnder(part)) proposeOn(part, modes);
      }
    }
    if (modes & kInt) proposeIntersections();
    if (!m_found) return false;
    ucsResult = m_toUcs * m_best;
    return true;
  }

  // The world-xy box of the entities to look at.
  OdGeExtents2d searchBox() const {
    if (!m_view.isParallelTo(OdGeVector3d::kZAxis)) {
      // A tilted view sees through any part of the world-xy plane.
      const double far = 1e100;
      return OdGeExtents2d(OdGePoint2d(-far, -far), OdGePoint2d(far, far));
    }
    OdGeExtents2d box;
    for (double dx : {-m_aperture, m_aperture}) {
      for (double dy : {-m_aperture, m_aperture}) {
        const OdGePoint3d corner = m_toWorld * (m_pick + OdGeVector3d(dx, dy, 0));
        box.addPoint(OdGePoint2d(corner.x, corner.y));
      }
    }
    return box;
  }

 private:
  // The distance from the pick to a world point, as seen in the view.
  double seen(const OdGePoint3d& world) const {
    const OdGePoint3d p = m_toUcs * world;
    return std::hypot(p.x - m_pick.x, p.y - m_pick.y);
  }

  void consider(const OdGePoint3d& world) {
    const double d = seen(world);
    if (!m_found || d < m_bestDistance) m_found = true, m_best = world, m_bestDistance = d;
  }

  // The pick's line of sight meets the plane at this point (the pick itself
  // when the plane is seen edge-on).
  OdGePoint3d pickOnPlane(const OdGePoint3d& origin, const OdGeVector3d& normal) const {
    const double along = m_view.dotProduct(normal);
    if (std::fabs(along) < 1e-9) return m_pickWorld;
    return m_pickWorld + m_view * ((origin - m_pickWorld).dotProduct(normal) / along);
  }

  OdGePoint3d nearestOn(const SnapPart& part) const {
    switch (part.kind) {
      case SnapPart::kLine: {
        // Projection keeps ratios along a line: the nearest point seen is found in the view.
        const OdGePoint3d a = m_toUcs * part.line.startPoint(), b = m_toUcs * part.line.endPoint();
        const double dx = b.x - a.x, dy = b.y - a.y, length2 = dx * dx + dy * dy;
        double t = length2 > 0 ? ((m_pick.x - a.x) * dx + (m_pick.y - a.y) * dy) / length2 : 0;
        t = std::clamp(t, 0.0, 1.0);
        return part.line.evalPoint(t);
      }
      case SnapPart::kArc: return part.arc.closestPointTo(pickOnPlane(part.arc.center(), part.arc.normal()));
      case SnapPart::kCurve: {
        OdGePoint3d onCurve = m_pickWorld, start;
        OdGePoint3d from = m_pickWorld;
        if (auto* ellipse = dynamic_cast<const OdDbEllipse*>(part.curve.get())) {
          from = pickOnPlane(ellipse->center(), ellipse->normal());
        } else if (auto* spline = dynamic_cast<const OdDbSpline*>(part.curve.get());
                   spline && !spline->normal().isZeroLength() && spline->getStartPoint(start) == eOk) {
          from = pickOnPlane(start, spline->normal());
        }
        part.curve->getClosestPointTo(from, onCurve);
        return onCurve;
      }
      case SnapPart::kNode: return part.node;
    }
    return part.node;
  }

  bool isUnder(const SnapPart& part) const { return seen(nearestOn(part)) <= m_aperture; }

  bool isUnder(const SnapTarget& target) const {
    if (target.bodyDistance <= m_aperture) return true;
    for (const auto& p : target.insertions) {
      if (seen(p) <= m_aperture) return true;
    }
    for (const auto& part : target.parts) {
      if (isUnder(part)) return true;
    }
    return false;
  }

  // Quadrant points of a circle or arc: along the UCS axes when the circle
  // faces the view, else along its own axes; only those on the arc.
  void proposeQuadrants(const OdGeCircArc3d& arc) {
    OdGeVector3d x = arc.refVec();
    const OdGeVector3d ucsX = m_toWorld * OdGeVector3d::kXAxis;
    if (arc.normal().isParallelTo(m_view)) x = (ucsX - arc.normal() * ucsX.dotProduct(arc.normal())).normal();
    const OdGeVector3d y = arc.normal().crossProduct(x);
    for (const OdGeVector3d& axis : {x, y, -x, -y}) {
      const OdGePoint3d p = arc.center() + axis * arc.radius();
      if (arc.isOn(p)) consider(p);
    }
  }

  void proposeEllipseSnaps(const OdDbEllipse* ellipse, unsigned modes) {
    if (modes & kCen) consider(ellipse->center());
    if (!(modes & kQua)) return;
    const double start = ellipse->startParam(),
                 sweep = ellipse->isClosed() ? kTwoPi : ellipse->endParam() - start;
    for (int k = 0; k < 4; ++k) {
      const double t = k * kTwoPi / 4;
      double offset = std::fmod(t - start, kTwoPi);
      if (offset < 0) offset += kTwoPi;
      OdGePoint3d p;
      if (offset <= sweep + 1e-12 && ellipse->getPointAtParam(t, p) == eOk) consider(p);
    }
  }

  void proposePerpendicular(const SnapPart& part) {
    switch (part.kind) {
      case SnapPart::kLine:
        // The foot may lie on the line's extension.
        if (!part.line.direction().isZeroLength()) consider(part.line.getLine().closestPointTo(m_lastWorld));
        break;
      case SnapPart::kArc: {
        const OdGeVector3d n = part.arc.normal();
        OdGeVector3d toLast = m_lastWorld - part.arc.center();
        toLast -= n * toLast.dotProduct(n);
        if (toLast.isZeroLength()) break;
        toLast.normalize();
        for (double side : {1.0, -1.0}) {
          const OdGePoint3d p = part.arc.center() + toLast * (side * part.arc.radius());
          if (part.arc.isOn(p)) consider(p);
        }
        break;
      }
      case SnapPart::kCurve: {
        OdGePoint3d foot;
        if (part.curve->getClosestPointTo(m_lastWorld, foot) == eOk) consider(foot);
        break;
      }
      case SnapPart::kNode: break;
    }
  }

  void proposeOn(const SnapPart& part, unsigned modes) {
    if (modes & kNea) consider(nearestOn(part));
    if (modes & kPer) proposePerpendicular(part);
    switch (part.kind) {
      case SnapPart::kLine:
        if (modes & kEnd) consider(part.line.startPoint()), consider(part.line.endPoint());
        if (modes & kMid) consider(part.line.midPoint());
        break;
      case SnapPart::kArc:
        if (!part.isFullCircle()) {
          if (modes & kEnd) consider(part.arc.startPoint()), consider(part.arc.endPoint());
          if (modes & kMid) consider(part.arc.evalPoint((part.arc.startAng() + part.arc.endAng()) / 2));
        }
        if (modes & kCen) consider(part.arc.center());
        if (modes & kQua) proposeQuadrants(part.arc);
        break;
      case SnapPart::kCurve: {
        OdGePoint3d p;
        if ((modes & kEnd) && !part.curve->isClosed()) {
          if (part.curve->getStartPoint(p) == eOk) consider(p);
          if (part.curve->getEndPoint(p) == eOk) consider(p);
        }
        if (auto* ellipse = dynamic_cast<const OdDbEllipse*>(part.curve.get()))
          proposeEllipseSnaps(ellipse, modes);
        break;
      }
      case SnapPart::kNode:
        if (modes & kNod) consider(part.node);
        break;
    }
  }

  // Where two pieces under the pick box cross, inside the box.
  void proposeIntersections() {
    std::vector<const SnapPart*> pieces;
    for (const SnapTarget& target : m_targets) {
      for (const SnapPart& part : target.parts) {
        if ((part.kind == SnapPart::kLine || part.kind == SnapPart::kArc) && isUnder(part))
          pieces.push_back(&part);
      }
    }
    for (size_t i = 0; i < pieces.size(); ++i) {
      for (size_t j = i + 1; j < pieces.size(); ++j) {
        OdGePoint3d points[2];
        int count = 0;
        const SnapPart& a = *pieces[i];
        const SnapPart& b = *pieces[j];
        if (a.kind == SnapPart::kLine && b.kind == SnapPart::kLine) {
          count = a.line.intersectWith(b.line, points[0]) ? 1 : 0;
        } else if (a.kind == SnapPart::kArc && b.kind == SnapPart::kArc) {
          if (!a.arc.intersectWith(b.arc, count, points[0], points[1])) count = 0;
        } else {
          const SnapPart& arc = a.kind == SnapPart::kArc ? a : b;
          const SnapPart& line = a.kind == SnapPart::kArc ? b : a;
          if (!arc.arc.intersectWith(line.line, count, points[0], points[1])) count = 0;
        }
        for (int k = 0; k < count; ++k) {
          if (seen(points[k]) <= m_aperture) consider(points[k]);
        }
      }
    }
  }

  void collect(const OdDbEntity* entity, SnapTarget& target, int depth, bool topLevel) {
    SnapPart part;
    if (auto* line = dynamic_cast<const OdDbLine*>(entity)) {
      part.kind = SnapPart::kLine;
      part.line.set(line->startPoint(), line->endPoint());
    } else if (auto* arc = dynamic_cast<const OdDbArc*>(entity)) {
      part.kind = SnapPart::kArc;
      part.arc = arc->geArc();
    } else if (auto* circle = dynamic_cast<const OdDbCircle*>(entity)) {
      part.kind = SnapPart::kArc;
      part.arc = circle->geCircle();
    } else if (dynamic_cast<const OdDbEllipse*>(entity) || dynamic_cast<const OdDbSpline*>(entity)) {
      part.kind = SnapPart::kCurve;
      part.curve = OdSmartPtr<OdDbCurve>(static_cast<const OdDbCurve*>(entity));
    } else if (auto* point = dynamic_cast<const OdDbPoint*>(entity)) {
      part.node = point->position();
    } else if (auto* text = dynamic_cast<const OdDbText*>(entity)) {
      if (topLevel) {
        const bool byAlignment = !text->isDefaultAlignment() && text->horizontalMode() != OdDb::kTextAlign &&
                                 text->horizontalMode() != OdDb::kTextFit;
        target.insertions.push_back(byAlignment ? text->alignmentPoint() : text->position());
        target.nearestIsInsertion = true;
      }
      target.bodyDistance = std::min(target.bodyDistance, text->distanceTo(m_pickWorld));
      return;
    } else if (auto* mtext = dynamic_cast<const OdDbMText*>(entity)) {
      if (topLevel) {
        target.insertions.push_back(mtext->location());
        target.nearestIsInsertion = true;
      }
      target.bodyDistance = std::min(target.bodyDistance, mtext->distanceTo(m_pickWorld));
      return;
    } else {
      // Compound entities: their insertion point, and the pieces they explode into.
      if (auto* reference = dynamic_cast<const OdDbBlockReference*>(entity); reference && topLevel) {
        target.insertions.push_back(reference->position());
      }
      OdRxObjectPtrArray pieces;
      if (depth >= kMaxExplodeDepth || entity->explode(pieces) != eOk) return;
      for (const auto& piece : pieces) {
        if (auto* sub = dynamic_cast<const OdDbEntity*>(piece.get())) collect(sub, target, depth + 1, false);
      }
      return;
    }
    target.parts.push_back(part);
  }

  OdGeMatrix3d m_toWorld, m_toUcs;
  OdGePoint3d m_pick, m_pickWorld, m_lastWorld;
  OdGeVector3d m_view;
  double m_aperture;
  std::vector<SnapTarget> m_targets;
  bool m_found = false;
  OdGePoint3d m_best;
  double m_bestDistance = 0;
};

// Entities on layers that are off or frozen, and invisible ones, are not seen.
bool isShown(const OdDbEntity* entity) {
  if (entity->visibility() == OdDb::kInvisible) return false;
  OdDbObjectPtr object = entity->layerId().isNull() ? OdDbObjectPtr() : entity->layerId().openObject();
  auto* layer = dynamic_cast<OdDbLayerTableRecord*>(object.get());
  return !layer || (!layer->isOff() && !layer->isFrozen());
}

}  // namespace

bool isSnapModeList(const OdString& text) {
  unsigned modes = 0;
  return parseModes(text, modes);
}

SnapOutcome snapPoint(const OdGePoint3d& ucsPoint, const OdString& modeText, OdGePoint3d& ucsResult) {
  unsigned modes = 0;
  if (!parseModes(modeText, modes)) return SnapOutcome::kUnknownMode;
  if (modes & kNon) {
    ucsResult = ucsPoint;
    return SnapOutcome::kSnapped;
  }
  Host& host = Host::instance();
  Document* doc = host.current();
  if (!doc) return SnapOutcome::kNothing;
  const double aperture = std::max(0.0, host.sysvars().getReal(L"PICKBOX", 3.0));
  Snapper snapper(ucsPoint, aperture);
  std::vector<OdDbObjectId> candidates;
  doc->spatialIndex().query(doc->database()->currentSpaceId(), snapper.searchBox(), candidates);
  for (const OdDbObjectId& id : candidates) {
    OdDbObjectPtr object = id.openObject();
    auto* entity = dynamic_cast<OdDbEntity*>(object.get());
    if (entity && isShown(entity)) snapper.addEntity(entity);
  }
  return snapper.snap(modes, ucsResult) ? SnapOutcome::kSnapped : SnapOutcome::kNothing;
}

}  // namespace ryhost

int ryedOsnap(const ads_point point, const ACHAR* mode, ads_point result) {
  if (!point || !mode || !result) return RTERROR;
  OdGePoint3d snapped;
  if (ryhost::snapPoint(OdGePoint3d(point[0], point[1], point[2]), mode, snapped) !=
      ryhost::SnapOutcome::kSnapped) {
    return RTERROR;
  }
  result[0] = snapped.x, result[1] = snapped.y, result[2] = snapped.z;
  return RTNORM;
}
