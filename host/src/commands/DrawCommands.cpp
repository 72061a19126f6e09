// Drawing commands: LINE, CIRCLE, ARC and PLINE. Points are typed in the
// user coordinate system and the geometry is worked out in its x-y plane;
// the entities are placed into the world at the end and take the drawing's
// current properties.
#include <cmath>
#include <vector>

#include "DbCurves.h"
#include "DbPolyline.h"
#include "Ge/GeBulge.h"
#include "RyApDocManager.h"
#include "commands/CommandRegistry.h"
#include "commands/EditSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

using namespace edit;

constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 2 * kPi;

// What the drawing commands remember between runs, per drawing.
struct DrawMemory {
  bool hasLineEnd = false;
  OdGePoint3d lineEnd;  // world
  double circleRadius = 0;
};

DrawMemory& memory() {
  static RyApDataManager<DrawMemory> data;
  return data.docData();
}

OdGePoint3d onPlane(const OdGePoint2d& point, double z) { return OdGePoint3d(point.x, point.y, z); }

// The signed angle from one direction to another, in (-π, π].
double turnBetween(double from, double to) {
  double turn = normalizedAngle(to - from);
  return turn > kPi ? turn - kTwoPi : turn;
}

OdGePoint2d rotated(const OdGePoint2d& point, double angle, const OdGePoint2d& center) {
  const OdGeVector2d v = point - center;
  return center + OdGeVector2d(v.x * std::cos(angle) - v.y * std::sin(angle),
                               v.x * std::sin(angle) + v.y * std::cos(angle));
}

OdGePoint2d polar(const OdGePoint2d& from, double angle, double distance) {
  return from + OdGeVector2d(std::cos(angle), std::sin(angle)) * distance;
}

// A point that differs from another one (in the plane).
OdGePoint3d askOtherPoint(const OdString& prompt, const OdGePoint3d& other) {
  for (;;) {
    OdGePoint3d point;
    askPoint(prompt, point, nullptr, &other, RSG_NONULL);
    if (!flat(point).isEqualTo(flat(other))) return point;
    say(L"\nThe point must differ from the previous one.");
  }
}

// ---------------------------------------------------------------- LINE

void lineCommand() {
  std::vector<OdGePoint3d> points;
  for (;;) {
    if (points.empty()) {
      OdGePoint3d first;
      if (askPoint(L"\nSpecify first point: ", first).isEnter()) {
        // Enter continues from where the last line ended.
        if (!memory().hasLineEnd) {
          say(L"\nNo line to continue.");
          return;
        }
        first = toUcs(memory().lineEnd);
        setLastPoint(first);
      }
      points.push_back(first);
      continue;
    }
    const bool canClose = points.size() >= 3;
    OdGePoint3d next;
    const Answer answer =
        askPoint(canClose ? L"\nSpecify next point or [Close/Undo]: " : L"\nSpecify next point or [Undo]: ",
                 next, canClose ? L"Close Undo" : L"Undo", &points.back());
    if (answer.isEnter()) break;
    if (answer.is(L"Undo")) {
      points.pop_back();
      if (!points.empty()) setLastPoint(points.back());
      continue;
    }
    if (answer.is(L"Close")) {
      points.push_back(points.front());
      break;
    }
    points.push_back(next);
  }
  for (size_t i = 1; i < points.size(); ++i) {
    OdDbLinePtr line = OdDbLine::createObject();
    line->setStartPoint(toWorld(points[i - 1]));
    line->setEndPoint(toWorld(points[i]));
    line->setNormal(ucsNormal());
    appendEntity(line.get());
  }
  if (points.size() >= 2) {
    memory().hasLineEnd = true;
    memory().lineEnd = toWorld(points.back());
  }
}

// ---------------------------------------------------------------- CIRCLE

double askCircleSize(const OdGePoint3d& center) {
  const double last = memory().circleRadius;
  const int flags = RSG_NOZERO | RSG_NONEG | RSG_2D | (last > 0 ? 0 : RSG_NONULL);
  const OdString shown = last > 0 ? L" <" + formatDistance(last) + L">: " : OdString(L": ");
  double value = 0;
  const Answer radius =
      askDistance(L"\nSpecify radius of circle or [Diameter]" + shown, value, L"Diameter", &center, flags);
  if (radius.isEnter()) return last;
  if (radius.isValue()) return value;
  const OdString shownDiameter = last > 0 ? L" <" + formatDistance(2 * last) + L">: " : OdString(L": ");
  if (askDistance(L"\nSpecify diameter of circle" + shownDiameter, value, nullptr, &center, flags).isEnter())
    return last;
  return value / 2;
}

void threePointCircle(OdGePoint3d& center, double& radius) {
  OdGePoint3d a, c;
  askPoint(L"\nSpecify first point on circle: ", a, nullptr, nullptr, RSG_NONULL);
  const OdGePoint3d b = askOtherPoint(L"\nSpecify second point on circle: ", a);
  for (;;) {
    askPoint(L"\nSpecify third point on circle: ", c, nullptr, &b, RSG_NONULL);
    OdGePoint2d middle;
    if (circleThrough(flat(a), flat(b), flat(c), middle)) {
      center = onPlane(middle, a.z);
      radius = middle.distanceTo(flat(a));
      return;
    }
    say(L"\nNo circle passes through three points on one line.");
  }
}

void twoPointCircle(OdGePoint3d& center, double& radius) {
  OdGePoint3d a;
  askPoint(L"\nSpecify first end point of circle's diameter: ", a, nullptr, nullptr, RSG_NONULL);
  const OdGePoint3d b = askOtherPoint(L"\nSpecify second end point of circle's diameter: ", a);
  center = onPlane(flat(a) + (flat(b) - flat(a)) / 2, a.z);
  radius = flat(a).distanceTo(flat(b)) / 2;
}

void circleCommand() {
  OdGePoint3d center;
  double radius = 0;
  for (;;) {
    const Answer answer = askPoint(L"\nSpecify center point for circle or [3P/2P/Ttr (tan tan radius)]: ",
                                   center, L"3P 2P Ttr", nullptr, RSG_NONULL);
    if (answer.is(L"Ttr")) {
      say(L"\nTangent, tangent, radius is not available on the command line; use a center, 3P or 2P.");
      continue;
    }
    if (answer.is(L"3P"))
      threePointCircle(center, radius);
    else if (answer.is(L"2P"))
      twoPointCircle(center, radius);
    else
      radius = askCircleSize(center);
    break;
  }
  memory().circleRadius = radius;
  OdDbCirclePtr circle = OdDbCircle::createObject();
  circle->setCenter(center);
  circle->setRadius(radius);
  placeInUcs(circle.get());
  appendEntity(circle.get());
}

// ---------------------------------------------------------------- ARC

// A counter-clockwise arc in the user x-y plane.
struct ArcShape {
  OdGePoint2d center;
  double radius = 0;
  double start = 0, end = 0;
};

ArcShape arcOfBulge(const OdGePoint2d& from, const OdGePoint2d& to, double bulge) {
  ArcShape arc;
  odgeArcFromBulge(from, to, bulge, arc.center, arc.radius, arc.start, arc.end);
  return arc;
}

// The included angle as a bulge; false (after saying why) for no arc or a full circle.
bool bulgeOfIncludedAngle(double angle, double& bulge) {
  if (std::fabs(angle) < 1e-10 || std::fabs(angle) >= kTwoPi - 1e-10) {
    say(L"\nThe included angle must be more than 0 and less than 360 degrees.");
    return false;
  }
  bulge = odgeIncludedAngleToBulge(angle);
  return true;
}

// The sweep of an arc of a radius over a chord: positive radius the minor arc, negative the major.
bool sweepOfChord(double chord, double radius, double& sweep) {
  if (std::fabs(chord) > 2 * std::fabs(radius) + 1e-12) {
    say(L"\nThe chord is longer than the diameter.");
    return false;
  }
  sweep = 2 * std::asin(std::min(1.0, std::fabs(chord) / (2 * std::fabs(radius))));
  if ((radius < 0) != (chord < 0)) sweep = kTwoPi - sweep;
  return sweep > 1e-10;
}

// Center and start known: the end point, the included angle or the chord length.
ArcShape arcFromCenterStart(const OdGePoint3d& center, const OdGePoint3d& start) {
  ArcShape arc{flat(center), flat(center).distanceTo(flat(start)), angleOf(flat(center), flat(start)), 0};
  for (;;) {
    OdGePoint3d end;
    const Answer answer = askPoint(L"\nSpecify end point of arc or [Angle/chord Length]: ", end,
                                   L"Angle Length", &center, RSG_NONULL);
    if (answer.is(L"Angle")) {
      double angle = 0, bulge = 0;
      if (askSignedAngle(L"\nSpecify included angle: ", angle, &start).isEnter() ||
          !bulgeOfIncludedAngle(angle, bulge))
        continue;
      if (angle < 0) arc.start = normalizedAngle(arc.start + angle);
      arc.end = normalizedAngle(arc.start + std::fabs(angle));
      return arc;
    }
    if (answer.is(L"Length")) {
      double chord = 0, sweep = 0;
      askDistance(L"\nSpecify length of chord: ", chord, nullptr, &start, RSG_NONULL | RSG_NOZERO);
      if (!sweepOfChord(chord, arc.radius, sweep)) continue;
      arc.end = normalizedAngle(arc.start + sweep);
      return arc;
    }
    if (flat(end).isEqualTo(flat(center))) {
      say(L"\nThe end point must differ from the center.");
      continue;
    }
    arc.end = angleOf(flat(center), flat(end));
    return arc;
  }
}

// Start and end known: the center, the included angle, the start direction or the radius.
ArcShape arcFromStartEnd(const OdGePoint3d& start, const OdGePoint3d& end) {
  const OdGePoint2d from = flat(start), to = flat(end);
  for (;;) {
    OdGePoint3d center;
    const Answer answer = askPoint(L"\nSpecify center point of arc or [Angle/Direction/Radius]: ", center,
                                   L"Angle Direction Radius", &end, RSG_NONULL);
    double bulge = 0;
    if (answer.is(L"Angle")) {
      double angle = 0;
      if (askSignedAngle(L"\nSpecify included angle: ", angle, &start).isEnter() ||
          !bulgeOfIncludedAngle(angle, bulge))
        continue;
    } else if (answer.is(L"Direction")) {
      double direction = 0;
      askDirection(L"\nSpecify tangent direction for the start point of arc: ", direction, nullptr, &start,
                   RSG_NONULL);
      const double half = turnBetween(direction, angleOf(from, to));
      if (std::fabs(half) < 1e-10 || std::fabs(half) > kPi - 1e-10) {
        say(L"\nNo arc runs along that direction to the end point.");
        continue;
      }
      bulge = std::tan(half / 2);
    } else if (answer.is(L"Radius")) {
      double radius = 0, sweep = 0;
      askDistance(L"\nSpecify radius of arc: ", radius, nullptr, &end, RSG_NONULL | RSG_NOZERO);
      if (!sweepOfChord(from.distanceTo(to), radius, sweep)) continue;
      bulge = odgeIncludedAngleToBulge(sweep);
    } else {
      if (flat(center).isEqualTo(from)) {
        say(L"\nThe center must differ from the start point.");
        continue;
      }
      return {flat(center), flat(center).distanceTo(from), angleOf(flat(center), from),
              angleOf(flat(center), to)};
    }
    return arcOfBulge(from, to, bulge);
  }
}

ArcShape threePointArc(const OdGePoint3d& start, const OdGePoint3d& second) {
  for (;;) {
    OdGePoint3d end;
    askPoint(L"\nSpecify end point of arc: ", end, nullptr, &second, RSG_NONULL);
    OdGePoint2d center;
    if (!circleThrough(flat(start), flat(second), flat(end), center)) {
      say(L"\nNo arc passes through three points on one line.");
      continue;
    }
    const bool counterClockwise = (flat(second) - flat(start)).crossProduct(flat(end) - flat(start)) > 0;
    const double a = angleOf(center, flat(start)), b = angleOf(center, flat(end));
    return {center, center.distanceTo(flat(start)), counterClockwise ? a : b, counterClockwise ? b : a};
  }
}

void arcCommand() {
  OdGePoint3d start;
  ArcShape arc;
  const Answer first =
      askPoint(L"\nSpecify start point of arc or [Center]: ", start, L"Center", nullptr, RSG_NONULL);
  if (first.is(L"Center")) {
    OdGePoint3d center;
    askPoint(L"\nSpecify center point of arc: ", center, nullptr, nullptr, RSG_NONULL);
    start = askOtherPoint(L"\nSpecify start point of arc: ", center);
    arc = arcFromCenterStart(center, start);
  } else {
    OdGePoint3d second;
    const Answer answer = askPoint(L"\nSpecify second point of arc or [Center/End]: ", second, L"Center End",
                                   &start, RSG_NONULL);
    if (answer.is(L"Center")) {
      arc = arcFromCenterStart(askOtherPoint(L"\nSpecify center point of arc: ", start), start);
    } else if (answer.is(L"End")) {
      arc = arcFromStartEnd(start, askOtherPoint(L"\nSpecify end point of arc: ", start));
    } else {
      if (flat(second).isEqualTo(flat(start))) {
        say(L"\nThe second point must differ from the start point.");
        second = askOtherPoint(L"\nSpecify second point of arc: ", start);
      }
      arc = threePointArc(start, second);
    }
  }
  OdDbArcPtr entity = OdDbArc::createObject();
  entity->setCenter(onPlane(arc.center, start.z));
  entity->setRadius(arc.radius);
  entity->setStartAngle(normalizedAngle(arc.start));
  entity->setEndAngle(normalizedAngle(arc.end));
  placeInUcs(entity.get());
  appendEntity(entity.get());
}

// ---------------------------------------------------------------- PLINE

// A lightweight polyline built segment by segment in the user x-y plane.
class PolylineCommand {
 public:
  void run() {
    OdGePoint3d start;
    askPoint(L"\nSpecify start point: ", start, nullptr, nullptr, RSG_NONULL);
    m_z = start.z;
    m_vertices.push_back({flat(start)});
    m_startWidth = m_endWidth = Host::instance().sysvars().getReal(L"PLINEWID", 0.0);
    say(L"\nCurrent line-width is " + formatDistance(m_startWidth));
    while (m_arcMode ? arcStep() : lineStep()) {
    }
    finish();
  }

 private:
  struct Vertex {
    OdGePoint2d point;
    double bulge = 0, startWidth = 0, endWidth = 0;
  };

  OdGePoint3d lastPoint3d() const { return onPlane(m_vertices.back().point, m_z); }
  OdGePoint2d lastPoint2d() const { return m_vertices.back().point; }
  bool canClose() const { return m_vertices.size() >= 2; }

  // The direction the polyline leaves its last vertex in (east before any segment).
  double endDirection() const {
    if (m_vertices.size() < 2) return 0.0;
    const Vertex& from = m_vertices[m_vertices.size() - 2];
    return normalizedAngle(angleOf(from.point, lastPoint2d()) + 2 * std::atan(from.bulge));
  }

  void addSegment(const OdGePoint2d& to, double bulge) {
    Vertex& last = m_vertices.back();
    last.bulge = bulge;
    last.startWidth = m_startWidth;
    last.endWidth = m_endWidth;
    m_vertices.push_back({to});
    m_startWidth = m_endWidth;
    setLastPoint(lastPoint3d());
  }

  void close(double bulge) {
    Vertex& last = m_vertices.back();
    last.bulge = bulge;
    last.startWidth = m_startWidth;
    last.endWidth = m_endWidth;
    m_closed = true;
  }

  void undo() {
    if (m_vertices.size() < 2) {
      say(L"\nAll segments already undone.");
      return;
    }
    m_vertices.pop_back();
    m_startWidth = m_vertices.back().startWidth;
    m_endWidth = m_vertices.back().endWidth;
    m_vertices.back().bulge = 0;
    setLastPoint(lastPoint3d());
  }

  // The bulge of the arc that leaves the last vertex along a direction and ends at a point.
  bool tangentBulge(double direction, const OdGePoint2d& to, double& bulge) const {
    if (to.isEqualTo(lastPoint2d())) {
      say(L"\nThe end point must differ from the start of the arc.");
      return false;
    }
    const double half = turnBetween(direction, angleOf(lastPoint2d(), to));
    if (std::fabs(half) > kPi - 1e-10) {
      say(L"\nNo arc runs along that direction to the end point.");
      return false;
    }
    bulge = std::tan(half / 2);
    return true;
  }

  void askWidths(bool half) {
    const double factor = half ? 0.5 : 1.0;
    const OdGePoint3d base = lastPoint3d();
    double start = m_startWidth * factor;
    const wchar_t* startPrompt = half ? L"\nSpecify starting half-width <" : L"\nSpecify starting width <";
    askDistance(startPrompt + formatDistance(start) + L">: ", start, nullptr, &base, RSG_NONEG);
    double end = start;
    const wchar_t* endPrompt = half ? L"\nSpecify ending half-width <" : L"\nSpecify ending width <";
    askDistance(endPrompt + formatDistance(start) + L">: ", end, nullptr, &base, RSG_NONEG);
    m_startWidth = start / factor;
    m_endWidth = end / factor;
    m_widthChanged = true;
  }

  // One reply in line mode; false when the polyline is finished.
  bool lineStep() {
    const OdGePoint3d base = lastPoint3d();
    OdGePoint3d point;
    const Answer answer = askPoint(
        canClose() ? L"\nSpecify next point or [Arc/Close/Halfwidth/Length/Undo/Width]: "
                   : L"\nSpecify next point or [Arc/Halfwidth/Length/Undo/Width]: ",
        point, canClose() ? L"Arc Close Halfwidth Length Undo Width" : L"Arc Halfwidth Length Undo Width",
        &base);
    if (answer.isEnter()) return false;
    if (answer.isValue()) {
      addSegment(flat(point), 0);
    } else if (answer.is(L"Arc")) {
      m_arcMode = true;
    } else if (answer.is(L"Close")) {
      close(0);
      return false;
    } else if (answer.is(L"Halfwidth") || answer.is(L"Width")) {
      askWidths(answer.is(L"Halfwidth"));
    } else if (answer.is(L"Length")) {
      double length = 0;
      if (askDistance(L"\nSpecify length of line: ", length, nullptr, &base, RSG_NONEG).isValue())
        addSegment(polar(lastPoint2d(), endDirection(), length), 0);
    } else if (answer.is(L"Undo")) {
      undo();
    }
    return true;
  }

  // One reply in arc mode; false when the polyline is finished.
  bool arcStep() {
    const OdGePoint3d base = lastPoint3d();
    const OdGePoint2d from = lastPoint2d();
    OdGePoint3d point;
    const Answer answer =
        askPoint(canClose() ? L"\nSpecify endpoint of arc or "
                              L"[Angle/CEnter/CLose/Direction/Halfwidth/Line/Radius/Second pt/Undo/Width]: "
                            : L"\nSpecify endpoint of arc or "
                              L"[Angle/CEnter/Direction/Halfwidth/Line/Radius/Second pt/Undo/Width]: ",
                 point,
                 canClose() ? L"Angle CEnter CLose Direction Halfwidth Line Radius Second Undo Width"
                            : L"Angle CEnter Direction Halfwidth Line Radius Second Undo Width",
                 &base);
    double bulge = 0;
    if (answer.isEnter()) return false;
    if (answer.isValue()) {
      if (tangentBulge(endDirection(), flat(point), bulge)) addSegment(flat(point), bulge);
    } else if (answer.is(L"CLose")) {
      if (tangentBulge(endDirection(), m_vertices.front().point, bulge)) {
        close(bulge);
        return false;
      }
    } else if (answer.is(L"Angle")) {
      angleArc(base);
    } else if (answer.is(L"CEnter")) {
      centerArc(askOtherPoint(L"\nSpecify center point of arc: ", base));
    } else if (answer.is(L"Direction")) {
      double direction = 0;
      askDirection(L"\nSpecify the tangent direction for the start point of arc: ", direction, nullptr, &base,
                   RSG_NONULL);
      askPoint(L"\nSpecify endpoint of the arc: ", point, nullptr, &base, RSG_NONULL);
      if (tangentBulge(direction, flat(point), bulge)) addSegment(flat(point), bulge);
    } else if (answer.is(L"Radius")) {
      radiusArc(base);
    } else if (answer.is(L"Second")) {
      const OdGePoint3d second = askOtherPoint(L"\nSpecify second point on arc: ", base);
      askPoint(L"\nSpecify end point of arc: ", point, nullptr, &second, RSG_NONULL);
      OdGePoint2d center;
      if (!circleThrough(from, flat(second), flat(point), center)) {
        say(L"\nNo arc passes through three points on one line.");
      } else {
        const bool counterClockwise = (flat(second) - from).crossProduct(flat(point) - from) > 0;
        const double sweep = counterClockwise
                                 ? normalizedAngle(angleOf(center, flat(point)) - angleOf(center, from))
                                 : -normalizedAngle(angleOf(center, from) - angleOf(center, flat(point)));
        addSegment(flat(point), odgeIncludedAngleToBulge(sweep));
      }
    } else if (answer.is(L"Line")) {
      m_arcMode = false;
    } else if (answer.is(L"Halfwidth") || answer.is(L"Width")) {
      askWidths(answer.is(L"Halfwidth"));
    } else if (answer.is(L"Undo")) {
      undo();
    }
    return true;
  }

  // The included angle first, then the end point, the center or the radius.
  void angleArc(const OdGePoint3d& base) {
    double angle = 0, bulge = 0;
    if (askSignedAngle(L"\nSpecify included angle: ", angle, &base).isEnter() ||
        !bulgeOfIncludedAngle(angle, bulge))
      return;
    OdGePoint3d point;
    const Answer answer = askPoint(L"\nSpecify endpoint of arc or [CEnter/Radius]: ", point, L"CEnter Radius",
                                   &base, RSG_NONULL);
    if (answer.is(L"CEnter")) {
      const OdGePoint3d center = askOtherPoint(L"\nSpecify center point of arc: ", base);
      addSegment(rotated(lastPoint2d(), angle, flat(center)), bulge);
    } else if (answer.is(L"Radius")) {
      double radius = 0;
      askDistance(L"\nSpecify radius of arc: ", radius, nullptr, &base, RSG_NONULL | RSG_NOZERO | RSG_NONEG);
      double chordDirection = normalizedAngle(endDirection() + angle / 2);
      askDirection(L"\nSpecify direction of chord for arc <" + formatDirection(chordDirection) + L">: ",
                   chordDirection, nullptr, &base);
      addSegment(polar(lastPoint2d(), chordDirection, 2 * radius * std::fabs(std::sin(angle / 2))), bulge);
    } else if (flat(point).isEqualTo(lastPoint2d())) {
      say(L"\nThe end point must differ from the start of the arc.");
    } else {
      addSegment(flat(point), bulge);
    }
  }

  // Counter-clockwise about a center to the end point's direction, or by an angle or a chord.
  void centerArc(const OdGePoint3d& center) {
    const OdGePoint2d middle = flat(center), from = lastPoint2d();
    const double radius = middle.distanceTo(from);
    OdGePoint3d point;
    const Answer answer = askPoint(L"\nSpecify endpoint of arc or [Angle/Length]: ", point, L"Angle Length",
                                   &center, RSG_NONULL);
    double sweep = 0, bulge = 0;
    if (answer.is(L"Angle")) {
      if (askSignedAngle(L"\nSpecify included angle: ", sweep, &center).isEnter()) return;
    } else if (answer.is(L"Length")) {
      double chord = 0;
      askDistance(L"\nSpecify length of chord: ", chord, nullptr, &center, RSG_NONULL | RSG_NOZERO);
      if (!sweepOfChord(chord, radius, sweep)) return;
    } else {
      sweep = normalizedAngle(angleOf(middle, flat(point)) - angleOf(middle, from));
    }
    if (!bulgeOfIncludedAngle(sweep, bulge)) return;
    addSegment(rotated(from, sweep, middle), bulge);
  }

  // The radius first, then the end point (the arc turns counter-clockwise) or the angle.
  void radiusArc(const OdGePoint3d& base) {
    double radius = 0;
    askDistance(L"\nSpecify radius of arc: ", radius, nullptr, &base, RSG_NONULL | RSG_NOZERO);
    OdGePoint3d point;
    const Answer answer =
        askPoint(L"\nSpecify endpoint of arc or [Angle]: ", point, L"Angle", &base, RSG_NONULL);
    double sweep = 0, bulge = 0;
    if (answer.is(L"Angle")) {
      if (askSignedAngle(L"\nSpecify included angle: ", sweep, &base).isEnter() ||
          !bulgeOfIncludedAngle(sweep, bulge))
        return;
      double chordDirection = normalizedAngle(endDirection() + sweep / 2);
      askDirection(L"\nSpecify direction of chord for arc <" + formatDirection(chordDirection) + L">: ",
                   chordDirection, nullptr, &base);
      addSegment(polar(lastPoint2d(), chordDirection, 2 * std::fabs(radius * std::sin(sweep / 2))), bulge);
      return;
    }
    if (!sweepOfChord(lastPoint2d().distanceTo(flat(point)), radius, sweep) ||
        !bulgeOfIncludedAngle(sweep, bulge))
      return;
    addSegment(flat(point), bulge);
  }

  void finish() {
    if (m_vertices.size() < 2) return;
    if (!m_closed) {
      m_vertices.back().startWidth = m_startWidth;
      m_vertices.back().endWidth = m_startWidth;
    }
    OdDbPolylinePtr polyline = OdDbPolyline::createObject();
    for (unsigned int i = 0; i < m_vertices.size(); ++i) {
      const Vertex& v = m_vertices[i];
      polyline->addVertexAt(i, v.point, v.bulge, v.startWidth, v.endWidth);
    }
    polyline->setElevation(m_z);
    polyline->setClosed(m_closed);
    placeInUcs(polyline.get());
    appendEntity(polyline.get());
    if (m_widthChanged) {
      SysVarValue width;
      width.type = RTREAL;
      width.r = m_endWidth;
      Host::instance().sysvars().set(L"PLINEWID", width);
    }
  }

  std::vector<Vertex> m_vertices;
  double m_z = 0;
  double m_startWidth = 0, m_endWidth = 0;  // of the next segment
  bool m_closed = false, m_arcMode = false, m_widthChanged = false;
};

void plineCommand() { PolylineCommand().run(); }

}  // namespace

void registerDrawCommands(CommandStack& stack) {
  addHostCommands(stack, {{L"LINE", OdEdCommand::kModal, lineCommand},
                          {L"CIRCLE", OdEdCommand::kModal, circleCommand},
                          {L"ARC", OdEdCommand::kModal, arcCommand},
                          {L"PLINE", OdEdCommand::kModal, plineCommand}});
}

RYAD_HOST_COMMANDS(registerDrawCommands);

}  // namespace ryhost
