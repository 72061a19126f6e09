#include "ge/GeInternal.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

namespace OdGeInternal {

double angleIntoRange(double angle, double start, double end) {
  double shifted = start + odgeNormalizeAngle(angle - start);  // in [start, start + 2π)
  if (shifted <= end) return shifted;
  // Outside the range: choose the representation closer to it.
  double belowStart = shifted - Oda2PI;
  return (start - belowStart) < (shifted - end) ? belowStart : shifted;
}

void normalizeSweep(double start, double& end) {
  if (end < start) end += Oda2PI * std::ceil((start - end) / Oda2PI);
  if (end - start > Oda2PI) end = start + Oda2PI;
}

double minimizeOnInterval(const std::function<double(double)>& distanceSqrd, double lo, double hi,
                          int samples) {
  if (!(hi > lo)) return lo;
  const double step = (hi - lo) / samples;
  std::vector<double> values(static_cast<size_t>(samples) + 1);
  for (int i = 0; i <= samples; ++i) values[static_cast<size_t>(i)] = distanceSqrd(lo + step * i);

  double bestParam = lo;
  double bestValue = values[0];
  for (int i = 0; i <= samples; ++i) {
    const double value = values[static_cast<size_t>(i)];
    const bool localMin = (i == 0 || value <= values[static_cast<size_t>(i - 1)]) &&
                          (i == samples || value <= values[static_cast<size_t>(i + 1)]);
    if (!localMin) continue;
    // Golden-section search on the bracket around the sampled minimum.
    double a = lo + step * std::max(i - 1, 0);
    double b = lo + step * std::min(i + 1, samples);
    const double ratio = (std::sqrt(5.0) - 1.0) / 2.0;
    double c = b - ratio * (b - a);
    double d = a + ratio * (b - a);
    double fc = distanceSqrd(c);
    double fd = distanceSqrd(d);
    for (int iteration = 0; iteration < 80 && b - a > 1e-15 * (1.0 + std::fabs(a)); ++iteration) {
      if (fc < fd) {
        b = d; d = c; fd = fc;
        c = b - ratio * (b - a);
        fc = distanceSqrd(c);
      } else {
        a = c; c = d; fc = fd;
        d = a + ratio * (b - a);
        fd = distanceSqrd(d);
      }
    }
    const double param = 0.5 * (a + b);
    for (double candidate : {param, lo + step * i}) {
      const double candidateValue = distanceSqrd(candidate);
      if (candidateValue < bestValue) {
        bestValue = candidateValue;
        bestParam = candidate;
      }
    }
  }
  return bestParam;
}

namespace {

// 7-point Gauss and 15-point Kronrod rules on [-1, 1].
constexpr std::array<double, 8> kKronrodNodes = {
    0.991455371120812639206854697526329, 0.949107912342758524526189684047851,
    0.864864423359769072789712788640926, 0.741531185599394439863864773280788,
    0.586087235467691130294144845693013, 0.405845151377397166906606412076961,
    0.207784955007898467600689403773245, 0.000000000000000000000000000000000};
constexpr std::array<double, 8> kKronrodWeights = {
    0.022935322010529224963732008058970, 0.063092092629978553290700663189204,
    0.104790010322250183839876322541518, 0.140653259715525918745189590510238,
    0.169004726639267902826583426598550, 0.190350578064785409913256402421014,
    0.204432940075298892414161999234649, 0.209482141084727828012999174891714};
constexpr std::array<double, 4> kGaussWeights = {
    0.129484966168869693270611432679082, 0.279705391489276667901467771423780,
    0.381830050505118944950369775488975, 0.417959183673469387755102040816327};

// Kronrod estimate of the integral and its difference from the Gauss estimate.
std::pair<double, double> gaussKronrod(const std::function<double(double)>& f, double a, double b) {
  const double half = 0.5 * (b - a);
  const double mid = 0.5 * (a + b);
  const double fMid = f(mid);
  double kronrod = fMid * kKronrodWeights[7];
  double gauss = fMid * kGaussWeights[3];
  for (size_t i = 0; i < 7; ++i) {
    const double sum = f(mid - half * kKronrodNodes[i]) + f(mid + half * kKronrodNodes[i]);
    kronrod += kKronrodWeights[i] * sum;
    if (i % 2 == 1) gauss += kGaussWeights[i / 2] * sum;
  }
  return {kronrod * half, std::fabs((kronrod - gauss) * half)};
}

double integrateAdaptive(const std::function<double(double)>& f, double a, double b, double absoluteError,
                         int depth) {
  auto [value, error] = gaussKronrod(f, a, b);
  // Stop at the requested error, at the rounding noise of the piece, or when pieces get absurdly small.
  const double noise = 64.0 * std::numeric_limits<double>::epsilon() * std::fabs(value);
  if (error <= std::max(absoluteError, noise) || depth >= 30) return value;
  const double mid = 0.5 * (a + b);
  return integrateAdaptive(f, a, mid, absoluteError * 0.5, depth + 1) +
         integrateAdaptive(f, mid, b, absoluteError * 0.5, depth + 1);
}

}  // namespace

double integrate(const std::function<double(double)>& f, double a, double b, double relativeError) {
  if (a == b) return 0.0;
  const double rough = gaussKronrod(f, a, b).first;
  const double absoluteError = std::max(std::fabs(rough) * relativeError, 1e-300);
  return integrateAdaptive(f, a, b, absoluteError, 0);
}

void trigComponentRange(double c, double a, double b, double t0, double t1, double& lo, double& hi) {
  auto value = [&](double t) { return c + a * std::cos(t) + b * std::sin(t); };
  lo = std::min(value(t0), value(t1));
  hi = std::max(value(t0), value(t1));
  if (a == 0.0 && b == 0.0) return;
  // Extremes at atan2(b, a) + kπ; visit those inside [t0, t1]. A range of a
  // full turn or more holds both; otherwise at most two lie in it. Counting
  // the steps (not adding π until past t1) also ends at magnitudes where
  // adding π no longer changes the parameter.
  const double amplitude = std::hypot(a, b);
  if (!(t1 - t0 < Oda2PI)) {
    lo = std::min(lo, c - amplitude);
    hi = std::max(hi, c + amplitude);
    return;
  }
  const double first = std::atan2(b, a);
  const double t = first + OdaPI * std::ceil((t0 - first) / OdaPI);
  for (int k = 0; k < 3; ++k) {
    const double tk = t + OdaPI * k;
    if (!(tk <= t1)) break;
    lo = std::min(lo, value(tk));
    hi = std::max(hi, value(tk));
  }
}

int circleLineParams(double r, const OdGePoint2d& point, const OdGeVector2d& dir, double tol,
                     double& t1, double& t2) {
  // Foot of the perpendicular from the centre, and its distance from the centre.
  const double footParam = -point.asVector().dotProduct(dir);
  const OdGePoint2d foot = point + dir * footParam;
  const double footDistance = foot.asVector().length();
  if (footDistance > r + tol) return 0;
  if (footDistance >= r - tol) {
    t1 = t2 = footParam;
    return 1;
  }
  const double halfChord = std::sqrt((r - footDistance) * (r + footDistance));
  t1 = footParam - halfChord;
  t2 = footParam + halfChord;
  return 2;
}

int circleCircle(double r1, const OdGePoint2d& center2, double r2, double tol, OdGePoint2d& p1, OdGePoint2d& p2) {
  const double d = center2.asVector().length();
  if (d <= tol) return std::fabs(r1 - r2) <= tol ? -1 : 0;
  if (d > r1 + r2 + tol || d < std::fabs(r1 - r2) - tol) return 0;
  const OdGeVector2d axis = center2.asVector() / d;
  // Distance from the first centre to the chord, along the axis.
  const double along = (d * d + r1 * r1 - r2 * r2) / (2.0 * d);
  const OdGePoint2d chordMid = OdGePoint2d::kOrigin + axis * along;
  // Touching externally or internally.
  if (std::fabs(d - (r1 + r2)) <= tol || std::fabs(d - std::fabs(r1 - r2)) <= tol) {
    p1 = p2 = OdGePoint2d::kOrigin + axis * (along >= 0.0 ? r1 : -r1);
    return 1;
  }
  const double across = std::sqrt(std::max(r1 * r1 - along * along, 0.0));
  p1 = chordMid + axis.perpVector() * across;
  p2 = chordMid - axis.perpVector() * across;
  return 2;
}

}  // namespace OdGeInternal
