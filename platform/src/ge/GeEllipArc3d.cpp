// Elliptical arcs of space.
#include "Ge/GeEllipArc3d.h"

#include <cmath>

#include "Ge/GeCircArc3d.h"
#include "Ge/GeMatrix3d.h"
#include "OdResult.h"
#include "ge/GeInternal.h"

namespace {

// Samples per full turn when searching for the closest point; enough to separate the local
// minima of the distance even for very flat ellipses.
constexpr int kClosestPointSamplesPerTurn = 256;

// `base` shifted by whole turns to lie within half a turn of `near`.
double nearestTurn(double base, double near) { return base + Oda2PI * std::round((near - base) / Oda2PI); }

}  // namespace

OdGeEllipArc3d::OdGeEllipArc3d(const OdGeCircArc3d& arc) { set(arc); }

OdGeEllipArc3d::OdGeEllipArc3d(const OdGePoint3d& center, const OdGeVector3d& majorAxis,
                               const OdGeVector3d& minorAxis, double majorRadius, double minorRadius,
                               double startAng, double endAng) {
  set(center, majorAxis, minorAxis, majorRadius, minorRadius, startAng, endAng);
}

OdGeEllipArc3d& OdGeEllipArc3d::set(const OdGePoint3d& center, const OdGeVector3d& majorAxis,
                                    const OdGeVector3d& minorAxis, double majorRadius, double minorRadius,
                                    double startAng, double endAng) {
  m_center = center;
  const double majorLength = majorAxis.length();
  m_majorAxis = majorLength > 0.0 ? majorAxis / majorLength : OdGeVector3d::kXAxis;
  const OdGeVector3d minorInPlane = minorAxis.orthoProject(m_majorAxis);
  const double minorLength = minorInPlane.length();
  if (minorLength <= 1e-12 * minorAxis.length() || minorLength == 0.0) {
    // No usable minor direction: take the x axis of the major axis' coordinate system.
    m_minorAxis = m_majorAxis.perpVector();
  } else {
    m_minorAxis = minorInPlane / minorLength;
  }
  m_majorRadius = majorRadius;
  m_minorRadius = minorRadius;
  return setAngles(startAng, endAng);
}

OdGeEllipArc3d& OdGeEllipArc3d::set(const OdGeCircArc3d& arc) {
  return set(arc.center(), arc.refVec(), arc.normal().crossProduct(arc.refVec()), arc.radius(), arc.radius(),
             arc.startAng(), arc.endAng());
}

OdGeEllipArc3d& OdGeEllipArc3d::setFromMajorAxis(const OdGePoint3d& center, const OdGeVector3d& normal,
                                                 const OdGeVector3d& majorAxisVector, double radiusRatio,
                                                 double startAng, double endAng) {
  const double majorRadius = majorAxisVector.length();
  return set(center, majorAxisVector, normal.crossProduct(majorAxisVector), majorRadius, majorRadius * radiusRatio,
             startAng, endAng);
}

OdGeEllipArc3d& OdGeEllipArc3d::setAngles(double startAng, double endAng) {
  m_startAng = startAng;
  m_endAng = endAng;
  OdGeInternal::normalizeSweep(m_startAng, m_endAng);
  return *this;
}

bool OdGeEllipArc3d::isCircular(const OdGeTol& tol) const {
  return std::fabs(m_majorRadius - m_minorRadius) <= tol.equalPoint();
}

double OdGeEllipArc3d::paramFromAngle(double angle) const {
  const double param = std::atan2(m_majorRadius * std::sin(angle), m_minorRadius * std::cos(angle));
  return nearestTurn(param, angle);
}

double OdGeEllipArc3d::angleFromParam(double param) const {
  const double angle = std::atan2(m_minorRadius * std::sin(param), m_majorRadius * std::cos(param));
  return nearestTurn(angle, param);
}

bool OdGeEllipArc3d::isClosed(const OdGeTol& tol) const {
  return m_endAng - m_startAng > OdaPI && startPoint().isEqualTo(endPoint(), tol);
}

OdGePoint3d OdGeEllipArc3d::evalPoint(double param) const {
  return m_center + m_majorAxis * (m_majorRadius * std::cos(param)) + m_minorAxis * (m_minorRadius * std::sin(param));
}

double OdGeEllipArc3d::paramOf(const OdGePoint3d& point, const OdGeTol&) const {
  const OdGeVector3d offset = point - m_center;
  const double x = offset.dotProduct(m_majorAxis);
  const double y = offset.dotProduct(m_minorAxis);
  if (m_majorRadius == m_minorRadius) {
    // A circle: the closest point lies in the direction of the point.
    if (x == 0.0 && y == 0.0) return m_startAng;
    const double angle = OdGeInternal::angleIntoRange(std::atan2(y, x), m_startAng, m_endAng);
    return std::min(std::max(angle, m_startAng), m_endAng);
  }
  // The distance out of the plane is the same for every point, so minimise within the plane.
  auto distanceSqrd = [&](double t) {
    const double dx = m_majorRadius * std::cos(t) - x;
    const double dy = m_minorRadius * std::sin(t) - y;
    return dx * dx + dy * dy;
  };
  const double sweep = m_endAng - m_startAng;
  const int samples = std::max(16, static_cast<int>(std::ceil(kClosestPointSamplesPerTurn * sweep / Oda2PI)));
  return OdGeInternal::minimizeOnInterval(distanceSqrd, m_startAng, m_endAng, samples);
}

OdGePoint3d OdGeEllipArc3d::closestPointTo(const OdGePoint3d& point, const OdGeTol& tol) const {
  return evalPoint(paramOf(point, tol));
}

double OdGeEllipArc3d::length(double fromParam, double toParam) const {
  if (fromParam > toParam) std::swap(fromParam, toParam);
  const double a = m_majorRadius;
  const double b = m_minorRadius;
  if (a == b) return (toParam - fromParam) * std::fabs(a);
  auto speed = [a, b](double t) {
    const double s = std::sin(t);
    const double c = std::cos(t);
    return std::sqrt(a * a * s * s + b * b * c * c);
  };
  if (!std::isfinite(fromParam) || !std::isfinite(toParam)) return 0.0;
  // Integrate quarter turn by quarter turn so that every piece is smooth and monotone in curvature.
  auto byQuarters = [&](double from, double to) {
    double total = 0.0;
    while (from < to) {
      const double nextQuarter = (std::floor(from / OdaPI2 + 1e-14) + 1.0) * OdaPI2;
      const double end = std::min(nextQuarter, to);
      if (!(end > from)) break;  // no progress at this magnitude
      total += OdGeInternal::integrate(speed, from, end, 1e-13);
      from = end;
    }
    return total;
  };
  // The length repeats every turn: whole turns are counted once, and far
  // from zero the rest starts within the first turn (there a quarter-turn
  // step would no longer move the parameter).
  const double span = toParam - fromParam;
  const double turns = std::floor(span / Oda2PI);
  const double start = std::fabs(fromParam) > 4 * Oda2PI ? odgeNormalizeAngle(fromParam) : fromParam;
  double total = turns >= 1.0 ? turns * byQuarters(0.0, Oda2PI) : 0.0;
  total += byQuarters(start, start + (span - std::max(turns, 0.0) * Oda2PI));
  return total;
}

OdGeEllipArc3d& OdGeEllipArc3d::reverseParam() {
  m_minorAxis = -m_minorAxis;
  const double start = m_startAng;
  m_startAng = -m_endAng;
  m_endAng = -start;
  return *this;
}

OdGeExtents3d OdGeEllipArc3d::geomExtents() const {
  const OdGeVector3d x = m_majorAxis * m_majorRadius;
  const OdGeVector3d y = m_minorAxis * m_minorRadius;
  OdGePoint3d low, high;
  for (unsigned int axis = 0; axis < 3; ++axis) {
    OdGeInternal::trigComponentRange(m_center[axis], x[axis], y[axis], m_startAng, m_endAng, low[axis], high[axis]);
  }
  OdGeExtents3d extents;
  return extents.set(low, high);
}

OdGeEllipArc3d& OdGeEllipArc3d::transformBy(const OdGeMatrix3d& matrix) {
  // The images of the two semi-axes are conjugate semi-diameters a, b of the new ellipse:
  // P(t) = a cos t + b sin t. Its principal axes are at the extremes of |P(t)|, where
  // tan 2t = 2 a.b / (|a|^2 - |b|^2).
  const OdGeVector3d a = matrix * (m_majorAxis * m_majorRadius);
  const OdGeVector3d b = matrix * (m_minorAxis * m_minorRadius);
  const double area = a.crossProduct(b).length();
  if (area == 0.0 || area <= OdGeContext::gTol.equalVector() * a.length() * b.length()) {
    throw OdError(eDegenerateGeometry, OdString("the transformation flattens the ellipse"));
  }
  const double shift = 0.5 * std::atan2(2.0 * a.dotProduct(b), a.lengthSqrd() - b.lengthSqrd());
  const OdGeVector3d major = a * std::cos(shift) + b * std::sin(shift);
  const OdGeVector3d minor = b * std::cos(shift) - a * std::sin(shift);
  m_center = matrix * m_center;
  m_majorRadius = major.length();
  m_minorRadius = minor.length();
  m_majorAxis = major / m_majorRadius;
  m_minorAxis = minor / m_minorRadius;
  // The point of old parameter t has parameter t - shift on the new axes.
  m_startAng -= shift;
  m_endAng -= shift;
  return *this;
}
