#include "DbCurveSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "DbCurves.h"
#include "Ge/GeBulge.h"
#include "Ge/GeOcs.h"

// ---------------------------------------------------------------- planes

OdGePoint2d OdDbPlaneMap::mapPoint(const OdGePoint2d& point, double elevation, double& newElevation) const {
  OdGePoint3d mapped = ocsToOcs * OdGePoint3d(point.x, point.y, elevation);
  newElevation = mapped.z;
  return {mapped.x, mapped.y};
}

double OdDbPlaneMap::mapAngle(double angle) const {
  OdGeVector3d direction = ocsToOcs * OdGeVector3d(std::cos(angle), std::sin(angle), 0.0);
  return odgeNormalizeAngle(std::atan2(direction.y, direction.x));
}

OdResult odDbMapPlane(const OdGeVector3d& normal, const OdGeMatrix3d& xform, OdDbPlaneMap& map) {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(normal, xAxis, yAxis, zAxis);
  const OdGeVector3d x = xform * xAxis;
  const OdGeVector3d y = xform * yAxis;
  const OdGeVector3d z = xform * zAxis;
  const OdGeVector3d cross = x.crossProduct(y);
  const double xLength = x.length(), yLength = y.length(), crossLength = cross.length();
  if (xLength == 0.0 || yLength == 0.0 || crossLength <= 1e-12 * xLength * yLength)
    return eDegenerateGeometry;
  OdGeVector3d newNormal = cross / crossLength;
  const double along = z.dotProduct(newNormal);
  // The new normal follows the transformed normal; when that flips the plane's
  // orientation, arcs in the plane run the other way round.
  map.mirrored = along < 0.0;
  if (map.mirrored) newNormal = -newNormal;
  map.normal = newNormal;
  map.thicknessScale = std::fabs(along);
  map.scale = xLength;
  map.uniform = std::fabs(xLength - yLength) <= 1e-9 * std::max(xLength, yLength) &&
                std::fabs(x.dotProduct(y)) <= 1e-9 * xLength * yLength;
  map.ocsToOcs = OdGeMatrix3d::worldToPlane(newNormal) * xform * OdGeMatrix3d::planeToWorld(normal);
  return eOk;
}

OdGeVector3d odDbTransformNormal(const OdGeVector3d& normal, const OdGeMatrix3d& xform) {
  OdDbPlaneMap map;
  return odDbMapPlane(normal, xform, map) == eOk ? map.normal : OdGeVector3d();
}

void odDbAddThickness(OdGeExtents3d& extents, const OdGeVector3d& normal, double thickness) {
  if (thickness == 0.0 || !extents.isValidExtents()) return;
  OdGeVector3d unit = normal.isZeroLength() ? OdGeVector3d::kZAxis : normal.normal();
  extents.expandBy(unit * thickness);
}

double odDbOnCurveTolerance(double size) { return std::max(1e-10, 1e-9 * size); }

// ---------------------------------------------------------------- bulge paths

namespace {

struct BulgeArc {
  OdGePoint2d center;
  double radius = 0;
  double startAngle = 0;  // angle of the segment's start point
  double sweep = 0;       // signed: positive counter-clockwise
};

bool bulgeArc(const OdGePoint2d& from, const OdGePoint2d& to, double bulge, BulgeArc& arc) {
  double ccwStart, ccwEnd;
  if (!odgeArcFromBulge(from, to, bulge, arc.center, arc.radius, ccwStart, ccwEnd)) return false;
  arc.startAngle = std::atan2(from.y - arc.center.y, from.x - arc.center.x);
  arc.sweep = odgeBulgeToIncludedAngle(bulge);
  return true;
}

OdGePoint2d arcPoint(const BulgeArc& arc, double fraction) {
  const double angle = arc.startAngle + fraction * arc.sweep;
  return {arc.center.x + arc.radius * std::cos(angle), arc.center.y + arc.radius * std::sin(angle)};
}

// Fraction along the arc of the point nearest to `point`, in [0, 1].
double arcFractionNearest(const BulgeArc& arc, const OdGePoint2d& point) {
  const OdGeVector2d dir = point - arc.center;
  if (dir.isZeroLength()) return 0.0;
  const double angle = std::atan2(dir.y, dir.x);
  // Angle travelled from the start in the arc's own sense, in [0, 2π).
  double travelled = arc.sweep >= 0 ? angle - arc.startAngle : arc.startAngle - angle;
  travelled = odgeNormalizeAngle(travelled);
  const double sweep = std::fabs(arc.sweep);
  if (travelled <= sweep) return travelled / sweep;
  // Outside the arc: the nearer end point.
  const OdGePoint2d start = arcPoint(arc, 0.0), end = arcPoint(arc, 1.0);
  return point.distanceTo(start) <= point.distanceTo(end) ? 0.0 : 1.0;
}

}  // namespace

int OdDbBulgePath::numSegments() const {
  const int n = static_cast<int>(points.size());
  if (n < 2) return 0;
  return closed ? n : n - 1;
}

bool OdDbBulgePath::isDegenerate(int segment) const {
  return points[static_cast<size_t>(segment)].isEqualTo(points[static_cast<size_t>(segmentEnd(segment))]);
}

bool OdDbBulgePath::isArc(int segment) const {
  return bulges[static_cast<size_t>(segment)] != 0.0 && !isDegenerate(segment);
}

OdGePoint3d OdDbBulgePath::toWorld(const OdGePoint2d& point) const {
  return odgeOcsToWcs(point, elevation, normal);
}

bool OdDbBulgePath::arcAt(int segment, OdGeCircArc3d& arc) const {
  if (!isArc(segment)) return false;
  return odgeArcFromBulge(points[static_cast<size_t>(segment)],
                          points[static_cast<size_t>(segmentEnd(segment))],
                          bulges[static_cast<size_t>(segment)], elevation, normal, arc);
}

double OdDbBulgePath::segmentLength(int segment) const {
  const OdGePoint2d& from = points[static_cast<size_t>(segment)];
  const OdGePoint2d& to = points[static_cast<size_t>(segmentEnd(segment))];
  BulgeArc arc;
  if (isArc(segment) && bulgeArc(from, to, bulges[static_cast<size_t>(segment)], arc)) {
    return arc.radius * std::fabs(arc.sweep);
  }
  return from.distanceTo(to);
}

double OdDbBulgePath::length() const {
  double total = 0.0;
  for (int i = 0; i < numSegments(); ++i) total += segmentLength(i);
  return total;
}

OdGePoint2d OdDbBulgePath::pointOnSegment(int segment, double fraction) const {
  const OdGePoint2d& from = points[static_cast<size_t>(segment)];
  const OdGePoint2d& to = points[static_cast<size_t>(segmentEnd(segment))];
  BulgeArc arc;
  if (isArc(segment) && bulgeArc(from, to, bulges[static_cast<size_t>(segment)], arc)) {
    if (fraction == 1.0) return to;  // exactly the vertex, not a rounded copy of it
    return arcPoint(arc, fraction);
  }
  return from + (to - from) * fraction;
}

bool OdDbBulgePath::locate(double param, int& segment, double& fraction) const {
  const int count = numSegments();
  const double eps = 1e-10 * std::max(1.0, static_cast<double>(count));
  if (count == 0 || param < -eps || param > count + eps) return false;
  param = std::clamp(param, 0.0, static_cast<double>(count));
  segment = std::min(static_cast<int>(std::floor(param)), count - 1);
  fraction = param - segment;
  return true;
}

OdResult OdDbBulgePath::pointAtParam(double param, OdGePoint3d& point) const {
  if (numSegments() == 0) {
    if (points.size() == 1 && std::fabs(param) <= 1e-10) {
      point = vertexWorld(0);
      return eOk;
    }
    return eInvalidInput;
  }
  int segment;
  double fraction;
  if (!locate(param, segment, fraction)) return eInvalidInput;
  point = toWorld(pointOnSegment(segment, fraction));
  return eOk;
}

OdResult OdDbBulgePath::distAtParam(double param, double& dist) const {
  int segment;
  double fraction;
  if (!locate(param, segment, fraction)) return eInvalidInput;
  dist = 0.0;
  for (int i = 0; i < segment; ++i) dist += segmentLength(i);
  dist += fraction * segmentLength(segment);
  return eOk;
}

OdResult OdDbBulgePath::paramAtDist(double dist, double& param) const {
  const double total = length();
  if (numSegments() == 0 || dist < -1e-10 || dist > total + odDbOnCurveTolerance(total)) return eInvalidInput;
  double walked = 0.0;
  for (int i = 0; i < numSegments(); ++i) {
    const double len = segmentLength(i);
    if (dist <= walked + len || i + 1 == numSegments()) {
      param = i + (len > 0 ? std::clamp((dist - walked) / len, 0.0, 1.0) : 0.0);
      return eOk;
    }
    walked += len;
  }
  return eInvalidInput;
}

OdGePoint3d OdDbBulgePath::closestPoint(const OdGePoint3d& point, double* param) const {
  if (points.empty()) return point;
  const OdGePoint3d ocs = odgeWcsToOcs(point, normal);
  const OdGePoint2d target(ocs.x, ocs.y);
  OdGePoint2d best = points.front();
  double bestDistance = target.distanceTo(best), bestParam = 0.0;
  for (int i = 0; i < numSegments(); ++i) {
    const OdGePoint2d& from = points[static_cast<size_t>(i)];
    const OdGePoint2d& to = points[static_cast<size_t>(segmentEnd(i))];
    double fraction = 0.0;
    BulgeArc arc;
    if (isArc(i) && bulgeArc(from, to, bulges[static_cast<size_t>(i)], arc)) {
      fraction = arcFractionNearest(arc, target);
    } else {
      const OdGeVector2d chord = to - from;
      const double lengthSqrd = chord.lengthSqrd();
      fraction = lengthSqrd > 0 ? std::clamp((target - from).dotProduct(chord) / lengthSqrd, 0.0, 1.0) : 0.0;
    }
    const OdGePoint2d candidate = pointOnSegment(i, fraction);
    const double distance = target.distanceTo(candidate);
    if (distance < bestDistance) {
      bestDistance = distance;
      best = candidate;
      bestParam = i + fraction;
    }
  }
  if (param) *param = bestParam;
  return toWorld(best);
}

OdResult OdDbBulgePath::paramAtPoint(const OdGePoint3d& point, double& param) const {
  if (points.empty()) return eInvalidInput;
  OdGeExtents3d box;
  addExtents(box);
  const OdGePoint3d closest = closestPoint(point, &param);
  if (closest.distanceTo(point) > odDbOnCurveTolerance(box.diagonal().length() + point.asVector().length())) {
    return ePointNotOnEntity;
  }
  return eOk;
}

double OdDbBulgePath::signedArea() const {
  const int n = static_cast<int>(points.size());
  if (n < 2) return 0.0;
  double area = 0.0;
  for (int i = 0; i < n; ++i) {
    const OdGePoint2d& from = points[static_cast<size_t>(i)];
    const OdGePoint2d& to = points[static_cast<size_t>((i + 1) % n)];
    area += 0.5 * (from.x * to.y - to.x * from.y);
    // The closing segment of an open path counts as a straight line.
    if (i == n - 1 && !closed) continue;
    BulgeArc arc;
    if (bulges[static_cast<size_t>(i)] != 0.0 && bulgeArc(from, to, bulges[static_cast<size_t>(i)], arc)) {
      // The circular segment between chord and arc (odd in the sweep: it adds
      // for arcs bulging to the right of the travel direction).
      area += 0.5 * arc.radius * arc.radius * (arc.sweep - std::sin(arc.sweep));
    }
  }
  return area;
}

void OdDbBulgePath::addExtents(OdGeExtents3d& extents) const {
  for (size_t i = 0; i < points.size(); ++i) extents.addPoint(toWorld(points[i]));
  for (int i = 0; i < numSegments(); ++i) {
    OdGeCircArc3d arc;
    if (arcAt(i, arc)) extents.addExt(arc.geomExtents());
  }
}

void OdDbBulgePath::explode(const OdDbEntity* source, double thickness, OdRxObjectPtrArray& pieces) const {
  for (int i = 0; i < numSegments(); ++i) {
    if (isDegenerate(i)) continue;
    const OdGePoint2d& from = points[static_cast<size_t>(i)];
    const OdGePoint2d& to = points[static_cast<size_t>(segmentEnd(i))];
    OdDbEntityPtr piece;
    if (isArc(i)) {
      OdGePoint2d center;
      double radius, startAngle, endAngle;
      odgeArcFromBulge(from, to, bulges[static_cast<size_t>(i)], center, radius, startAngle, endAngle);
      OdSmartPtr<OdDbArc> arc = OdDbArc::createObject();
      arc->setNormal(normal);
      arc->setCenter(toWorld(center));
      arc->setRadius(radius);
      arc->setStartAngle(startAngle);
      arc->setEndAngle(endAngle);
      arc->setThickness(thickness);
      piece = arc;
    } else {
      OdSmartPtr<OdDbLine> line = OdDbLine::createObject();
      line->setStartPoint(toWorld(from));
      line->setEndPoint(toWorld(to));
      line->setNormal(normal);
      line->setThickness(thickness);
      piece = line;
    }
    piece->setPropertiesFrom(source);
    pieces.append(OdRxObjectPtr(piece.get()));
  }
}

// ---------------------------------------------------------------- NURBS

namespace {

// Index i of the knot span [knots[i], knots[i+1]) that holds u, degree <= i <= n.
int findSpan(const OdDbNurbs& c, double u) {
  const int n = static_cast<int>(c.points.size()) - 1;
  const auto& k = c.knots;
  if (u >= k[static_cast<size_t>(n + 1)]) {
    int span = n;
    while (span > c.degree && k[static_cast<size_t>(span)] >= k[static_cast<size_t>(span + 1)]) --span;
    return span;
  }
  if (u <= k[static_cast<size_t>(c.degree)]) {
    int span = c.degree;
    while (span < n && k[static_cast<size_t>(span)] >= k[static_cast<size_t>(span + 1)]) ++span;
    return span;
  }
  int low = c.degree, high = n + 1;
  int mid = (low + high) / 2;
  while (u < k[static_cast<size_t>(mid)] || u >= k[static_cast<size_t>(mid + 1)]) {
    if (u < k[static_cast<size_t>(mid)])
      high = mid;
    else
      low = mid;
    mid = (low + high) / 2;
  }
  return mid;
}

// The p + 1 basis functions of degree p that are non-zero on the span.
void basisFunctions(const std::vector<double>& knots, int span, double u, int p,
                    std::vector<double>& values) {
  values.assign(static_cast<size_t>(p + 1), 0.0);
  std::vector<double> left(static_cast<size_t>(p + 1)), right(static_cast<size_t>(p + 1));
  values[0] = 1.0;
  for (int j = 1; j <= p; ++j) {
    left[static_cast<size_t>(j)] = u - knots[static_cast<size_t>(span + 1 - j)];
    right[static_cast<size_t>(j)] = knots[static_cast<size_t>(span + j)] - u;
    double saved = 0.0;
    for (int r = 0; r < j; ++r) {
      const double denominator = right[static_cast<size_t>(r + 1)] + left[static_cast<size_t>(j - r)];
      const double temp = denominator != 0.0 ? values[static_cast<size_t>(r)] / denominator : 0.0;
      values[static_cast<size_t>(r)] = saved + right[static_cast<size_t>(r + 1)] * temp;
      saved = left[static_cast<size_t>(j - r)] * temp;
    }
    values[static_cast<size_t>(j)] = saved;
  }
}

// Basis functions and their first derivatives on the span (index j stands for
// the function of control point span - p + j).
void basisWithDerivatives(const std::vector<double>& knots, int span, double u, int p,
                          std::vector<double>& values, std::vector<double>& derivatives) {
  basisFunctions(knots, span, u, p, values);
  derivatives.assign(static_cast<size_t>(p + 1), 0.0);
  if (p == 0) return;
  std::vector<double> lower;
  basisFunctions(knots, span, u, p - 1, lower);
  for (int j = 0; j <= p; ++j) {
    const int i = span - p + j;
    double d = 0.0;
    if (j > 0) {
      const double denominator = knots[static_cast<size_t>(i + p)] - knots[static_cast<size_t>(i)];
      if (denominator != 0.0) d += lower[static_cast<size_t>(j - 1)] / denominator;
    }
    if (j < p) {
      const double denominator = knots[static_cast<size_t>(i + p + 1)] - knots[static_cast<size_t>(i + 1)];
      if (denominator != 0.0) d -= lower[static_cast<size_t>(j)] / denominator;
    }
    derivatives[static_cast<size_t>(j)] = p * d;
  }
}

// 8-point Gauss-Legendre nodes and weights on [-1, 1].
constexpr double kGaussNodes[8] = {-0.9602898564975363, -0.7966664774136267, -0.5255324099163290,
                                   -0.1834346424956498, 0.1834346424956498,  0.5255324099163290,
                                   0.7966664774136267,  0.9602898564975363};
constexpr double kGaussWeights[8] = {0.1012285362903763, 0.2223810344533745, 0.3137066458778873,
                                     0.3626837833783620, 0.3626837833783620, 0.3137066458778873,
                                     0.2223810344533745, 0.1012285362903763};

template <class F>
double integrate(double a, double b, F f) {
  const double half = 0.5 * (b - a), mid = 0.5 * (a + b);
  double sum = 0.0;
  for (int i = 0; i < 8; ++i) sum += kGaussWeights[i] * f(mid + half * kGaussNodes[i]);
  return sum * half;
}

// Minimum of f on [a, b] by golden-section search.
template <class F>
double goldenMinimum(double a, double b, F f) {
  const double ratio = 0.5 * (std::sqrt(5.0) - 1.0);
  double c = b - ratio * (b - a), d = a + ratio * (b - a);
  double fc = f(c), fd = f(d);
  for (int i = 0; i < 100 && b - a > 1e-15 * (1.0 + std::fabs(a) + std::fabs(b)); ++i) {
    if (fc < fd) {
      b = d;
      d = c;
      fd = fc;
      c = b - ratio * (b - a);
      fc = f(c);
    } else {
      a = c;
      c = d;
      fc = fd;
      d = a + ratio * (b - a);
      fd = f(d);
    }
  }
  return fc < fd ? c : d;
}

// Dense linear solve with partial pivoting; false for a singular system.
bool solve(std::vector<std::vector<double>> a, std::vector<OdGePoint3d>& rhs) {
  const size_t n = a.size();
  for (size_t col = 0; col < n; ++col) {
    size_t pivot = col;
    for (size_t row = col + 1; row < n; ++row) {
      if (std::fabs(a[row][col]) > std::fabs(a[pivot][col])) pivot = row;
    }
    if (std::fabs(a[pivot][col]) < 1e-14) return false;
    std::swap(a[pivot], a[col]);
    std::swap(rhs[pivot], rhs[col]);
    for (size_t row = col + 1; row < n; ++row) {
      const double factor = a[row][col] / a[col][col];
      if (factor == 0.0) continue;
      for (size_t k = col; k < n; ++k) a[row][k] -= factor * a[col][k];
      rhs[row] = OdGePoint3d::asPoint(rhs[row].asVector() - rhs[col].asVector() * factor);
    }
  }
  for (size_t col = n; col-- > 0;) {
    OdGeVector3d value = rhs[col].asVector();
    for (size_t k = col + 1; k < n; ++k) value -= rhs[k].asVector() * a[col][k];
    rhs[col] = OdGePoint3d::asPoint(value / a[col][col]);
  }
  return true;
}

}  // namespace

bool OdDbNurbs::isValid() const {
  if (degree < 1 || points.size() < static_cast<size_t>(degree + 1)) return false;
  if (knots.size() != points.size() + static_cast<size_t>(degree) + 1) return false;
  if (!weights.empty() && weights.size() != points.size()) return false;
  for (size_t i = 1; i < knots.size(); ++i) {
    if (knots[i] < knots[i - 1]) return false;
  }
  return startParam() < endParam();
}

void OdDbNurbs::evaluate(double u, OdGePoint3d& point, OdGeVector3d* derivative) const {
  u = std::clamp(u, startParam(), endParam());
  const int span = findSpan(*this, u);
  std::vector<double> values, derivatives;
  basisWithDerivatives(knots, span, u, degree, values, derivatives);
  OdGeVector3d a, aPrime;
  double w = 0.0, wPrime = 0.0;
  for (int j = 0; j <= degree; ++j) {
    const size_t i = static_cast<size_t>(span - degree + j);
    const double weight = weights.empty() ? 1.0 : weights[i];
    const OdGeVector3d p = points[i].asVector() * weight;
    a += p * values[static_cast<size_t>(j)];
    aPrime += p * derivatives[static_cast<size_t>(j)];
    w += weight * values[static_cast<size_t>(j)];
    wPrime += weight * derivatives[static_cast<size_t>(j)];
  }
  if (w == 0.0) w = 1.0;
  point = OdGePoint3d::asPoint(a / w);
  if (derivative) *derivative = (aPrime - point.asVector() * wPrime) / w;
}

OdGePoint3d OdDbNurbs::pointAt(double u) const {
  OdGePoint3d point;
  evaluate(u, point);
  return point;
}

std::vector<double> OdDbNurbs::breakpoints() const {
  std::vector<double> result;
  const double lo = startParam(), hi = endParam();
  for (double k : knots) {
    if (k < lo || k > hi) continue;
    if (result.empty() || k > result.back()) result.push_back(k);
  }
  return result;
}

double OdDbNurbs::length(double fromParam, double toParam) const {
  if (fromParam > toParam) std::swap(fromParam, toParam);
  fromParam = std::max(fromParam, startParam());
  toParam = std::min(toParam, endParam());
  double total = 0.0;
  const std::vector<double> breaks = breakpoints();
  for (size_t s = 0; s + 1 < breaks.size(); ++s) {
    const double a = std::max(breaks[s], fromParam), b = std::min(breaks[s + 1], toParam);
    if (b <= a) continue;
    // Four Gauss panels per span keep the error far below drawing precision.
    for (int panel = 0; panel < 4; ++panel) {
      const double p0 = a + (b - a) * panel / 4.0, p1 = a + (b - a) * (panel + 1) / 4.0;
      total += integrate(p0, p1, [this](double u) {
        OdGePoint3d point;
        OdGeVector3d d;
        evaluate(u, point, &d);
        return d.length();
      });
    }
  }
  return total;
}

double OdDbNurbs::paramAtLength(double target) const {
  double lo = startParam(), hi = endParam();
  if (target <= 0.0) return lo;
  if (target >= length(lo, hi)) return hi;
  for (int i = 0; i < 200 && hi - lo > 1e-14 * (1.0 + std::fabs(hi)); ++i) {
    const double mid = 0.5 * (lo + hi);
    (length(startParam(), mid) < target ? lo : hi) = mid;
  }
  return 0.5 * (lo + hi);
}

double OdDbNurbs::closestParam(const OdGePoint3d& point) const {
  const std::vector<double> breaks = breakpoints();
  constexpr int kSamples = 16;
  std::vector<double> params;
  for (size_t s = 0; s + 1 < breaks.size(); ++s) {
    for (int i = 0; i < kSamples; ++i)
      params.push_back(breaks[s] + (breaks[s + 1] - breaks[s]) * i / kSamples);
  }
  params.push_back(endParam());
  size_t best = 0;
  double bestDistance = std::numeric_limits<double>::infinity();
  for (size_t i = 0; i < params.size(); ++i) {
    const double distance = pointAt(params[i]).distanceTo(point);
    if (distance < bestDistance) {
      bestDistance = distance;
      best = i;
    }
  }
  const double a = params[best > 0 ? best - 1 : 0], b = params[std::min(best + 1, params.size() - 1)];
  if (b <= a) return params[best];
  double u = goldenMinimum(a, b, [&](double t) { return pointAt(t).distanceTo(point); });
  // The distance is flat at its minimum, so the search leaves the parameter only
  // roughly placed: Newton steps on (C(u) - P) . C'(u) = 0 place it exactly.
  auto slope = [&](double t) {
    OdGePoint3d p;
    OdGeVector3d d;
    evaluate(t, p, &d);
    return (p - point).dotProduct(d);
  };
  const double h = 1e-7 * (b - a);
  double nearest = pointAt(u).distanceTo(point);
  for (int i = 0; i < 8; ++i) {
    const double f = slope(u), df = (slope(u + h) - slope(u - h)) / (2.0 * h);
    if (df == 0.0 || !std::isfinite(f / df)) break;
    const double next = std::clamp(u - f / df, a, b);
    const double distance = pointAt(next).distanceTo(point);
    if (distance > nearest) break;
    nearest = distance;
    if (next == u) break;
    u = next;
  }
  return u;
}

OdGeExtents3d OdDbNurbs::extents() const {
  OdGeExtents3d box;
  const std::vector<double> breaks = breakpoints();
  constexpr int kSamples = 32;
  std::vector<double> params;
  for (size_t s = 0; s + 1 < breaks.size(); ++s) {
    for (int i = 0; i < kSamples; ++i)
      params.push_back(breaks[s] + (breaks[s + 1] - breaks[s]) * i / kSamples);
  }
  params.push_back(endParam());
  std::vector<OdGePoint3d> samples;
  for (double u : params) {
    samples.push_back(pointAt(u));
    box.addPoint(samples.back());
  }
  // Refine every extreme sample: the true extreme lies between its neighbours.
  for (unsigned axis = 0; axis < 3; ++axis) {
    for (double sign : {-1.0, 1.0}) {
      size_t best = 0;
      for (size_t i = 1; i < samples.size(); ++i) {
        if (sign * samples[i][axis] > sign * samples[best][axis]) best = i;
      }
      const double a = params[best > 0 ? best - 1 : 0], b = params[std::min(best + 1, params.size() - 1)];
      if (b <= a) continue;
      const double u = goldenMinimum(a, b, [&](double t) { return -sign * pointAt(t)[axis]; });
      box.addPoint(pointAt(u));
    }
  }
  return box;
}

double OdDbNurbs::signedArea(const OdGeVector3d& normal) const {
  const std::vector<double> breaks = breakpoints();
  const OdGeVector3d unit = normal.normal();
  const OdGePoint3d origin = pointAt(startParam());
  double area = 0.0;
  for (size_t s = 0; s + 1 < breaks.size(); ++s) {
    for (int panel = 0; panel < 4; ++panel) {
      const double p0 = breaks[s] + (breaks[s + 1] - breaks[s]) * panel / 4.0;
      const double p1 = breaks[s] + (breaks[s + 1] - breaks[s]) * (panel + 1) / 4.0;
      area += integrate(p0, p1, [&](double u) {
        OdGePoint3d point;
        OdGeVector3d d;
        evaluate(u, point, &d);
        return 0.5 * (point - origin).crossProduct(d).dotProduct(unit);
      });
    }
  }
  return area;
}

bool OdDbNurbs::interpolate(const std::vector<OdGePoint3d>& fitPoints, int degree,
                            const OdGeVector3d& startTangent, const OdGeVector3d& endTangent,
                            OdDbNurbs& curve) {
  std::vector<OdGePoint3d> q;
  for (const OdGePoint3d& p : fitPoints) {
    if (q.empty() || !p.isEqualTo(q.back())) q.push_back(p);
  }
  if (q.size() < 2 || degree < 1) return false;
  const size_t last = q.size() - 1;
  std::vector<double> u(q.size(), 0.0);
  double chordTotal = 0.0;
  for (size_t k = 1; k <= last; ++k) chordTotal += q[k].distanceTo(q[k - 1]);
  for (size_t k = 1; k <= last; ++k) u[k] = u[k - 1] + q[k].distanceTo(q[k - 1]) / chordTotal;
  u[last] = 1.0;

  const bool withStart = !startTangent.isZeroLength(), withEnd = !endTangent.isZeroLength();
  const size_t count = q.size() + (withStart ? 1 : 0) + (withEnd ? 1 : 0);
  const int p = std::min<int>(degree, static_cast<int>(count) - 1);
  // Knots by averaging the parameters, the end parameters repeated for the tangent conditions.
  std::vector<double> spread;
  if (withStart) spread.push_back(0.0);
  spread.insert(spread.end(), u.begin(), u.end());
  if (withEnd) spread.push_back(1.0);
  curve.degree = p;
  curve.weights.clear();
  curve.knots.assign(static_cast<size_t>(p + 1), 0.0);
  for (size_t j = 1; j + p < count; ++j) {
    double sum = 0.0;
    for (size_t i = j; i < j + static_cast<size_t>(p); ++i) sum += spread[i];
    curve.knots.push_back(sum / p);
  }
  curve.knots.insert(curve.knots.end(), static_cast<size_t>(p + 1), 1.0);
  curve.points.assign(count, OdGePoint3d());

  // One row per condition: the curve passes through each fit point and, where
  // given, leaves and arrives along the tangents (scaled to the parameter range).
  std::vector<std::vector<double>> matrix;
  std::vector<OdGePoint3d> rhs;
  auto addRow = [&](double param, bool derivative, const OdGePoint3d& value) {
    std::vector<double> row(count, 0.0), values, derivatives;
    const int span = findSpan(curve, param);
    basisWithDerivatives(curve.knots, span, param, p, values, derivatives);
    for (int j = 0; j <= p; ++j)
      row[static_cast<size_t>(span - p + j)] =
          derivative ? derivatives[static_cast<size_t>(j)] : values[static_cast<size_t>(j)];
    matrix.push_back(std::move(row));
    rhs.push_back(value);
  };
  addRow(0.0, false, q[0]);
  if (withStart) addRow(0.0, true, OdGePoint3d::asPoint(startTangent.normal() * chordTotal));
  for (size_t k = 1; k < last; ++k) addRow(u[k], false, q[k]);
  if (withEnd) addRow(1.0, true, OdGePoint3d::asPoint(endTangent.normal() * chordTotal));
  addRow(1.0, false, q[last]);
  if (!solve(matrix, rhs)) return false;
  curve.points = rhs;
  return true;
}
