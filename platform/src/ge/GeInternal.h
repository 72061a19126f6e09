// Numerical helpers shared by the geometry sources (not part of the public headers).
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "Ge/GeConst.h"
#include "Ge/GePoint3d.h"

class OdGeMatrix2d;
class OdGeMatrix3d;

namespace OdGeInternal {

// Determinant of the linear part (the axes) of a matrix.
double linearDet(const OdGeMatrix2d& m);
double linearDet(const OdGeMatrix3d& m);

// The adjugate of the top-left 3x3 block of `e` times `factor` (1 / det gives the inverse).
template <unsigned int N>
void scaledAdjugate3(const double (&e)[N][N], double factor, double (&r)[N][N]) {
  r[0][0] = (e[1][1] * e[2][2] - e[1][2] * e[2][1]) * factor;
  r[0][1] = (e[0][2] * e[2][1] - e[0][1] * e[2][2]) * factor;
  r[0][2] = (e[0][1] * e[1][2] - e[0][2] * e[1][1]) * factor;
  r[1][0] = (e[1][2] * e[2][0] - e[1][0] * e[2][2]) * factor;
  r[1][1] = (e[0][0] * e[2][2] - e[0][2] * e[2][0]) * factor;
  r[1][2] = (e[0][2] * e[1][0] - e[0][0] * e[1][2]) * factor;
  r[2][0] = (e[1][0] * e[2][1] - e[1][1] * e[2][0]) * factor;
  r[2][1] = (e[0][1] * e[2][0] - e[0][0] * e[2][1]) * factor;
  r[2][2] = (e[0][0] * e[1][1] - e[0][1] * e[1][0]) * factor;
}

inline double magnitude(const OdGePoint3d& p) { return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)}); }
inline double magnitude(const OdGePoint2d& p) { return std::max(std::fabs(p.x), std::fabs(p.y)); }

// Point tolerance for comparing computed geometry at coordinates of the given magnitude: the
// requested one, raised to the rounding noise of doubles there (8 units in the last place) where
// that is coarser. Without it, a point computed on a curve far from the origin (say at 3e6) would
// not be on that curve within the default 1e-10.
inline double pointTolAt(const OdGeTol& tol, double magnitude) {
  return std::max(tol.equalPoint(), 8.0 * std::numeric_limits<double>::epsilon() * magnitude);
}
template <class Point, class... Points>
double pointTolAt(const OdGeTol& tol, const Point& first, const Points&... rest) {
  return pointTolAt(tol, std::max({magnitude(first), magnitude(rest)...}));
}

// Representation of `angle` (modulo 2π) inside [start, end] when it falls there; otherwise the
// representation nearest to the range, so that an angle just before start stays just below it.
double angleIntoRange(double angle, double start, double end);

// Normalises an arc's sweep: end raised or lowered by whole turns into [start, start + 2π].
void normalizeSweep(double start, double& end);

// Closest parameter in [lo, hi] to the point set's minimum of `distanceSqrd`, found by sampling
// and refining every sampled local minimum.
double minimizeOnInterval(const std::function<double(double)>& distanceSqrd, double lo, double hi,
                          int samples);

// Integral of f over [a, b] by adaptive Gauss-Kronrod quadrature to the given relative error.
double integrate(const std::function<double(double)>& f, double a, double b, double relativeError);

// Range of c + a*cos(t) + b*sin(t) over t in [t0, t1].
void trigComponentRange(double c, double a, double b, double t0, double t1, double& lo, double& hi);

// Intersections of the circle of radius r about the origin with the line through `point` with
// unit direction `dir`: 0, 1 (tangent within tol) or 2 points, given as line parameters.
int circleLineParams(double r, const OdGePoint2d& point, const OdGeVector2d& dir, double tol,
                     double& t1, double& t2);

// Intersections of the circle of radius r1 about the origin with the circle of radius r2 about
// `center2`: 0, 1 (touching within tol) or 2 points; -1 for the same circle.
int circleCircle(double r1, const OdGePoint2d& center2, double r2, double tol, OdGePoint2d& p1, OdGePoint2d& p2);

}  // namespace OdGeInternal
