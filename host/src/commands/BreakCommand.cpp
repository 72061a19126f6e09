// BREAK: takes the part of a line, arc, circle or lightweight polyline
// between two points out. The pick point is the first break point unless
// "First point" asks for another; both points are brought onto the object.
// A circle loses the part from the first point counter-clockwise to the
// second (it becomes an arc); a closed polyline the part from the first to
// the second along its vertices (it becomes open). Two equal points split a
// line, arc or open polyline in two and open a closed polyline there.
#include <algorithm>
#include <cmath>
#include <vector>

#include "DbCurves.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "Ge/GeOcs.h"
#include "commands/CommandRegistry.h"
#include "commands/EditSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

using namespace edit;

constexpr double kTwoPi = 6.283185307179586476925286766559;

bool isBreakable(const OdDbEntity* entity) {
  return entity->isKindOf(OdDbLine::desc()) || entity->isKindOf(OdDbArc::desc()) ||
         entity->isKindOf(OdDbCircle::desc()) || entity->isKindOf(OdDbPolyline::desc());
}

bool onLockedLayer(const OdDbEntity* entity) {
  OdDbLayerTableRecordPtr layer = OdDbLayerTableRecord::cast(entity->layerId().openObject().get());
  return !layer.isNull() && layer->isLocked();
}

// The parameter of the point of a curve nearest to a world point.
double paramNear(const OdDbCurve* curve, const OdGePoint3d& world) {
  OdGePoint3d closest;
  double param = 0;
  if (curve->getClosestPointTo(world, closest) != eOk || curve->getParamAtPoint(closest, param) != eOk) {
    curve->getStartParam(param);
  }
  return param;
}

OdDbEntityPtr copyOf(const OdDbEntity* entity) { return OdDbEntity::cast(entity->clone().get()); }

// ---------------------------------------------------------------- lines and arcs

// The parts of [0, length] outside the break (from <= to); empty parts are dropped.
std::vector<std::pair<double, double>> keptParts(double from, double to, double length) {
  const double tolerance = 1e-9 * std::max(1.0, length);
  from = std::clamp(from, 0.0, length);
  to = std::clamp(to, 0.0, length);
  std::vector<std::pair<double, double>> parts;
  if (from > tolerance) parts.push_back({0.0, from});
  if (to < length - tolerance) parts.push_back({to, length});
  return parts;
}

void breakLine(OdDbLine* line, double a, double b) {
  const OdGePoint3d start = line->startPoint(), end = line->endPoint();
  const double length = start.distanceTo(end);
  const auto parts = keptParts(std::min(a, b), std::max(a, b), length);
  const OdGeVector3d along = length > 0 ? (end - start) / length : OdGeVector3d();
  if (parts.empty()) {
    line->erase();
    return;
  }
  if (parts.size() == 2) {
    OdDbEntityPtr second = copyOf(line);
    auto* piece = static_cast<OdDbLine*>(second.get());
    piece->setStartPoint(start + along * parts[1].first);
    piece->setEndPoint(start + along * parts[1].second);
    appendEntity(piece, line->ownerId());
  }
  line->setStartPoint(start + along * parts[0].first);
  line->setEndPoint(start + along * parts[0].second);
}

// An angle's distance counter-clockwise from the arc's start, clamped onto the arc.
double offsetOnArc(double angle, double start, double sweep) {
  const double offset = normalizedAngle(angle - start);
  if (offset <= sweep) return offset;
  return offset - sweep < kTwoPi - offset ? sweep : 0.0;
}

void breakArc(OdDbArc* arc, double a, double b) {
  const double start = arc->startAngle(), sweep = arc->totalAngle();
  const double u = offsetOnArc(a, start, sweep), v = offsetOnArc(b, start, sweep);
  const auto parts = keptParts(std::min(u, v), std::max(u, v), sweep);
  if (parts.empty()) {
    arc->erase();
    return;
  }
  if (parts.size() == 2) {
    OdDbEntityPtr second = copyOf(arc);
    auto* piece = static_cast<OdDbArc*>(second.get());
    piece->setStartAngle(normalizedAngle(start + parts[1].first));
    piece->setEndAngle(normalizedAngle(start + parts[1].second));
    appendEntity(piece, arc->ownerId());
  }
  arc->setStartAngle(normalizedAngle(start + parts[0].first));
  arc->setEndAngle(normalizedAngle(start + parts[0].second));
}

// The arc left of a circle: from the second point counter-clockwise round to the first.
bool breakCircle(OdDbCircle* circle, double a, double b) {
  if (std::fabs(normalizedAngle(b - a)) < 1e-9 || std::fabs(normalizedAngle(b - a) - kTwoPi) < 1e-9) {
    say(L"\nArc cannot be full 360 degrees.");
    return false;
  }
  // Angles of the circle's parameter are those of its plane's x axis, as an arc's are.
  OdDbArcPtr arc = OdDbArc::createObject();
  arc->setPropertiesFrom(circle);
  arc->setNormal(circle->normal());
  arc->setCenter(circle->center());
  arc->setRadius(circle->radius());
  arc->setThickness(circle->thickness());
  arc->setStartAngle(normalizedAngle(b));
  arc->setEndAngle(normalizedAngle(a));
  appendEntity(arc.get(), circle->ownerId());
  circle->erase();
  return true;
}

// ---------------------------------------------------------------- lightweight polylines

struct PolylineVertex {
  OdGePoint2d point;
  double bulge = 0, startWidth = 0, endWidth = 0;
};

// The vertices of the stretch of a polyline between two parameters
// (from < to; past the end of a closed polyline the parameter wraps).
std::vector<PolylineVertex> stretchOf(const OdDbPolyline* polyline, double from, double to) {
  const unsigned int count = polyline->numVerts();
  const double tolerance = 1e-9;
  auto pointAt = [&](double param) {
    OdGePoint3d world;
    polyline->getPointAtParam(std::fmod(param, static_cast<double>(count)), world);
    const OdGePoint3d ocs = odgeWcsToOcs(world, polyline->normal());
    return OdGePoint2d(ocs.x, ocs.y);
  };
  auto widthAt = [&](unsigned int segment, double fraction) {
    double start = 0, end = 0;
    polyline->getWidthsAt(segment % count, start, end);
    return start + (end - start) * fraction;
  };
  std::vector<PolylineVertex> vertices;
  double param = from;
  while (param < to - tolerance) {
    const double whole = std::floor(param + tolerance);
    const unsigned int segment = static_cast<unsigned int>(whole);
    const double next = std::min(whole + 1.0, to);
    const double f0 = std::max(0.0, param - whole), f1 = next - whole;
    // The part of an arc segment keeps its curvature: the bulge of a share of the angle.
    const double bulge = std::tan(std::atan(polyline->getBulgeAt(segment % count)) * (f1 - f0));
    vertices.push_back({pointAt(param), bulge, widthAt(segment, f0), widthAt(segment, f1)});
    param = next;
  }
  const double last = std::floor(to - tolerance);
  const double width = widthAt(static_cast<unsigned int>(std::max(0.0, last)), to - last);
  vertices.push_back({pointAt(to), 0.0, width, width});
  return vertices;
}

void setVertices(OdDbPolyline* polyline, const std::vector<PolylineVertex>& vertices) {
  polyline->reset();
  for (unsigned int i = 0; i < vertices.size(); ++i) {
    const PolylineVertex& v = vertices[i];
    polyline->addVertexAt(i, v.point, v.bulge, v.startWidth, v.endWidth);
  }
  polyline->setClosed(false);
}

void breakPolyline(OdDbPolyline* polyline, double a, double b) {
  const double end = polyline->isClosed() ? polyline->numVerts() : polyline->numVerts() - 1.0;
  if (polyline->isClosed()) {
    // What stays runs from the second point on round to the first.
    double to = a;
    while (to <= b + 1e-9) to += end;
    setVertices(polyline, stretchOf(polyline, b, to));
    return;
  }
  const auto parts = keptParts(std::min(a, b), std::max(a, b), end);
  if (parts.empty()) {
    polyline->erase();
    return;
  }
  const std::vector<PolylineVertex> first = stretchOf(polyline, parts[0].first, parts[0].second);
  if (parts.size() == 2) {
    OdDbEntityPtr second = copyOf(polyline);
    setVertices(static_cast<OdDbPolyline*>(second.get()),
                stretchOf(polyline, parts[1].first, parts[1].second));
    appendEntity(second.get(), polyline->ownerId());
  }
  setVertices(polyline, first);
}

// ---------------------------------------------------------------- BREAK

void breakCommand() {
  OdDbObjectId id;
  OdGePoint3d first;
  for (;;) {
    if (!pickObject(L"\nSelect object: ", id, first)) return;
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.isNull() || !isBreakable(entity.get())) {
      say(L"\nCannot break this object: select a line, arc, circle or polyline.");
    } else if (onLockedLayer(entity.get())) {
      say(L"\nThe object is on a locked layer.");
    } else {
      break;
    }
  }
  setLastPoint(first);  // "@" at the next prompt is the pick point
  OdGePoint3d second;
  const Answer answer =
      askPoint(L"\nSpecify second break point or [First point]: ", second, L"First", &first, RSG_NONULL);
  if (answer.is(L"First")) {
    askPoint(L"\nSpecify first break point: ", first, nullptr, nullptr, RSG_NONULL);
    askPoint(L"\nSpecify second break point: ", second, nullptr, &first, RSG_NONULL);
  }
  OdDbEntityPtr entity = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
  auto* curve = static_cast<OdDbCurve*>(entity.get());
  const double a = paramNear(curve, toWorld(first)), b = paramNear(curve, toWorld(second));
  if (auto* line = dynamic_cast<OdDbLine*>(curve))
    breakLine(line, a, b);
  else if (auto* arc = dynamic_cast<OdDbArc*>(curve))
    breakArc(arc, a, b);
  else if (auto* circle = dynamic_cast<OdDbCircle*>(curve))
    breakCircle(circle, a, b);
  else if (auto* polyline = dynamic_cast<OdDbPolyline*>(curve))
    breakPolyline(polyline, a, b);
}

}  // namespace

void registerBreakCommands(CommandStack& stack) {
  stack.addCommand(L"RYAD", L"BREAK", L"BREAK", OdEdCommand::kModal, breakCommand);
}

RYAD_HOST_COMMANDS(registerBreakCommands);

}  // namespace ryhost
