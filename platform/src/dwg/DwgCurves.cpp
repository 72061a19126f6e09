// Splines (and other curves made of many parts) of a DWG file, written as
// the groups of their DXF classes.
#include <cmath>

#include "dwg/DwgToDxf.h"

namespace oddwg {

namespace {
struct P3 {
  double x, y, z;
};
P3 operator-(const P3& a, const P3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
P3 cross(const P3& a, const P3& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
double length(const P3& a) { return std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z); }

// The normal of the plane that holds all the points, or false when they
// are not in one plane. Points on one line lie in many planes: none is named.
bool planeNormal(const std::vector<P3>& points, P3& normal) {
  if (points.size() < 3) return false;
  const P3& origin = points[0];
  size_t second = 1;
  while (second < points.size() && length(points[second] - origin) < 1e-12) ++second;
  if (second == points.size()) return false;
  const P3 along = points[second] - origin;
  double scale = 0;
  for (const P3& p : points) scale = std::max(scale, length(p - origin));
  for (size_t i = second + 1; i < points.size(); ++i) {
    P3 n = cross(along, points[i] - origin);
    const double l = length(n);
    if (l <= 1e-9 * scale * scale) continue;
    n = {n.x / l, n.y / l, n.z / l};
    for (const P3& p : points) {
      const P3 d = p - origin;
      if (std::fabs(d.x * n.x + d.y * n.y + d.z * n.z) > 1e-9 * std::max(1.0, scale)) return false;
    }
    // One of the two directions: the one towards positive z (then y, x).
    if (n.z < 0 || (n.z == 0 && (n.y < 0 || (n.y == 0 && n.x < 0)))) n = {-n.x, -n.y, -n.z};
    normal = n;
    return true;
  }
  return false;
}

// B-spline basis functions of degree p at u for knot span `span` (the
// NURBS-book recurrence): values of N[span-p..span].
void basis(const std::vector<double>& knots, size_t span, double u, int p, std::vector<double>& n) {
  n.assign(static_cast<size_t>(p) + 1, 0.0);
  std::vector<double> left(static_cast<size_t>(p) + 1), right(static_cast<size_t>(p) + 1);
  n[0] = 1.0;
  for (int j = 1; j <= p; ++j) {
    left[static_cast<size_t>(j)] = u - knots[span + 1 - static_cast<size_t>(j)];
    right[static_cast<size_t>(j)] = knots[span + static_cast<size_t>(j)] - u;
    double saved = 0.0;
    for (int r = 0; r < j; ++r) {
      const double denominator = right[static_cast<size_t>(r) + 1] + left[static_cast<size_t>(j - r)];
      const double t = denominator == 0 ? 0 : n[static_cast<size_t>(r)] / denominator;
      n[static_cast<size_t>(r)] = saved + right[static_cast<size_t>(r) + 1] * t;
      saved = left[static_cast<size_t>(j - r)] * t;
    }
    n[static_cast<size_t>(j)] = saved;
  }
}

// The cubic through the fit points with the given end tangents, as the
// file's program makes it: knots at the accumulated chord lengths, the
// end derivatives the unit tangents. False when it cannot be made.
bool interpolate(const std::vector<P3>& fit, P3 startTangent, P3 endTangent, std::vector<double>& knots, std::vector<P3>& control) {
  const size_t n = fit.size();
  if (n < 2 || n > 4096) return false;
  std::vector<double> u(n, 0.0);
  for (size_t i = 1; i < n; ++i) u[i] = u[i - 1] + length(fit[i] - fit[i - 1]);
  if (u[n - 1] <= 0) return false;
  knots.assign(4, 0.0);
  for (size_t i = 1; i + 1 < n; ++i) knots.push_back(u[i]);
  for (int i = 0; i < 4; ++i) knots.push_back(u[n - 1]);
  const size_t count = n + 2;  // control points
  // Rows: P0 = Q0; P1 - P0 = u1/3 D0; the inner fit points; Pn+1 - Pn = (u_last - u_{n-2})/3 Dn; Pn+1 = Qn-1.
  std::vector<std::vector<double>> a(count, std::vector<double>(count, 0.0));
  std::vector<P3> b(count, P3{0, 0, 0});
  a[0][0] = 1;
  b[0] = fit[0];
  const double first = knots[4] / 3.0, last = (knots[count] - knots[count - 1]) / 3.0;
  a[1][0] = -1;
  a[1][1] = 1;
  b[1] = {startTangent.x * first, startTangent.y * first, startTangent.z * first};
  std::vector<double> values;
  for (size_t k = 1; k + 1 < n; ++k) {
    const size_t span = k + 3;  // u[k] = knots[k+3]: the span that starts there
    basis(knots, span, u[k], 3, values);
    for (int j = 0; j <= 3; ++j) a[k + 1][span - 3 + static_cast<size_t>(j)] = values[static_cast<size_t>(j)];
    b[k + 1] = fit[k];
  }
  a[count - 2][count - 2] = -1;
  a[count - 2][count - 1] = 1;
  b[count - 2] = {endTangent.x * last, endTangent.y * last, endTangent.z * last};
  a[count - 1][count - 1] = 1;
  b[count - 1] = fit[n - 1];
  // Gaussian elimination with partial pivoting (the system is banded and small).
  for (size_t c = 0; c < count; ++c) {
    size_t pivot = c;
    for (size_t r = c + 1; r < count; ++r) {
      if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
    }
    if (std::fabs(a[pivot][c]) < 1e-14) return false;
    std::swap(a[c], a[pivot]);
    std::swap(b[c], b[pivot]);
    for (size_t r = 0; r < count; ++r) {
      if (r == c || a[r][c] == 0) continue;
      const double f = a[r][c] / a[c][c];
      for (size_t k = c; k < count; ++k) a[r][k] -= f * a[c][k];
      b[r] = {b[r].x - f * b[c].x, b[r].y - f * b[c].y, b[r].z - f * b[c].z};
    }
  }
  control.resize(count);
  for (size_t i = 0; i < count; ++i) control[i] = {b[i].x / a[i][i], b[i].y / a[i][i], b[i].z / a[i][i]};
  return true;
}
}  // namespace

void DwgToDxf::spline(const OdDwgObject& o, OdDwgBitReader& d) {
  // BL scenario (1 by control points, 2 by fit points), (R2013) BL flags
  // and BL knot parametrisation, BL degree; by fit points: BD fit
  // tolerance, 3BD start and end tangents, BL fit point count; by control
  // points: B rational, B closed, B periodic, BD knot and control
  // tolerances, BL knot and control point counts, B weighted; then the
  // knots (BD), the control points (3BD and, weighted, BD weight) and the
  // fit points (3BD).
  const bool r2013 = m_file.versionName() >= "AC1027";
  int32_t scenario = d.readBL();
  if (r2013) {
    // From R2013 on the scenario field may say "by control points" while
    // the flags (bit 0: made by fit points) and the knot parametrisation
    // (15: custom knots, i.e. by control points) say how it was made.
    const int32_t splineFlags = d.readBL(), knotParametrisation = d.readBL();
    if (splineFlags & 1) scenario = 2;
    if (knotParametrisation == 15) scenario = 1;
  }
  const int32_t degree = d.readBL();
  double fitTolerance = 0, knotTolerance = 1e-9, controlTolerance = 1e-10;
  P3 startTangent{0, 0, 0}, endTangent{0, 0, 0};
  int32_t fits = 0, knotCount = 0, controlCount = 0;
  bool rational = false, closed = false, periodic = false, weighted = false;
  if (scenario == 2) {
    fitTolerance = d.readBD();
    startTangent = {d.readBD(), d.readBD(), d.readBD()};
    endTangent = {d.readBD(), d.readBD(), d.readBD()};
    fits = d.readBL();
  } else if (scenario == 1) {
    rational = d.readBit();
    closed = d.readBit();
    periodic = d.readBit();
    knotTolerance = d.readBD();
    controlTolerance = d.readBD();
    knotCount = d.readBL();
    controlCount = d.readBL();
    weighted = d.readBit();
  } else {
    throw OdDwgDecodeError("spline of an unknown scenario " + std::to_string(scenario), d.bitPosition());
  }
  const size_t room = o.size * 8;
  if (fits < 0 || knotCount < 0 || controlCount < 0 || static_cast<size_t>(fits) > room || static_cast<size_t>(knotCount) > room ||
      static_cast<size_t>(controlCount) > room) {
    throw OdDwgDecodeError("implausible spline counts", d.bitPosition());
  }
  std::vector<double> knots(static_cast<size_t>(knotCount)), weights;
  for (double& k : knots) k = d.readBD();
  std::vector<P3> control(static_cast<size_t>(controlCount)), fit(static_cast<size_t>(fits));
  for (P3& p : control) {
    p = {d.readBD(), d.readBD(), d.readBD()};
    if (weighted) weights.push_back(d.readBD());
  }
  for (P3& p : fit) p = {d.readBD(), d.readBD(), d.readBD()};
  // A spline given by fit points gets the control points it stands for, as
  // DXF carries them (cubic fits with both end tangents).
  if (scenario == 2 && degree == 3 && length(startTangent) > 0 && length(endTangent) > 0) interpolate(fit, startTangent, endTangent, knots, control);

  P3 normal{0, 0, 0};
  const bool planar = planeNormal(control.empty() ? fit : control, normal);
  int flags = (closed ? 1 : 0) | (periodic ? 2 : 0) | (rational ? 4 : 0) | (planar ? 8 : 0);
  if (scenario == 2) flags |= 32 | 1024;  // made by fit points
  m_w.writeString(100, L"AcDbSpline");
  if (planar) m_w.writePoint(210, normal.x, normal.y, normal.z);
  m_w.writeInt(70, flags);
  m_w.writeInt(71, degree);
  m_w.writeInt(72, static_cast<OdInt64>(knots.size()));
  m_w.writeInt(73, static_cast<OdInt64>(control.size()));
  m_w.writeInt(74, static_cast<OdInt64>(fit.size()));
  m_w.writeDouble(42, knotTolerance);
  m_w.writeDouble(43, controlTolerance);
  if (scenario == 2) {
    m_w.writeDouble(44, fitTolerance);
    if (length(startTangent) > 0) m_w.writePoint(12, startTangent.x, startTangent.y, startTangent.z);
    if (length(endTangent) > 0) m_w.writePoint(13, endTangent.x, endTangent.y, endTangent.z);
  }
  for (double k : knots) m_w.writeDouble(40, k);
  for (double w : weights) m_w.writeDouble(41, w);
  for (const P3& p : control) m_w.writePoint(10, p.x, p.y, p.z);
  for (const P3& p : fit) m_w.writePoint(11, p.x, p.y, p.z);
}

void DwgToDxf::mline(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // BD scale, RC justification, 3BD base point, 3BD normal, BS open (1) or
  // closed (3), RC lines of the style, BS vertex count; per vertex 3BD
  // point, direction and miter, and per line BS count and BD parameters
  // along it, BS count and BD parameters of its fill. Handle: the style.
  const double scale = d.readBD();
  const int justification = d.readRC();
  double base[3], normal[3];
  point3(d, base);
  point3(d, normal);
  const int openClosed = d.readBS();
  const int lines = d.readRC();
  const int vertices = d.readBS();
  if (vertices < 0 || static_cast<size_t>(vertices) * static_cast<size_t>(lines + 1) > o.size * 8) {
    throw OdDwgDecodeError("implausible multiline vertex count", d.bitPosition());
  }
  struct Vertex {
    double point[3], direction[3], miter[3];
    std::vector<std::vector<double>> segments, fills;
  };
  std::vector<Vertex> list(static_cast<size_t>(vertices));
  auto parameters = [&](std::vector<double>& out) {
    const int count = d.readBS();
    if (count < 0 || static_cast<size_t>(count) > o.size * 8) throw OdDwgDecodeError("implausible multiline parameter count", d.bitPosition());
    out.resize(static_cast<size_t>(count));
    for (double& v : out) v = d.readBD();
  };
  for (Vertex& v : list) {
    point3(d, v.point);
    point3(d, v.direction);
    point3(d, v.miter);
    v.segments.resize(static_cast<size_t>(lines));
    v.fills.resize(static_cast<size_t>(lines));
    for (int i = 0; i < lines; ++i) {
      parameters(v.segments[static_cast<size_t>(i)]);
      parameters(v.fills[static_cast<size_t>(i)]);
    }
  }
  const uint64_t style = h.readH(o.handle).value;
  // The style's name is the first thing of its own data.
  OdString styleName;
  if (const OdDwgObject* s = m_file.find(style); s && s->decoded) {
    OdDwgBitReader sd = m_file.objectReader(*s);
    sd.seekBit(s->dataBit);
    styleName = sd.readTV(m_cp);
  }
  m_w.writeString(100, L"AcDbMline");
  m_w.writeString(2, styleName);
  if (isWritten(style)) m_w.writeHandle(340, style);
  m_w.writeDouble(40, scale);
  m_w.writeInt(70, justification);
  m_w.writeInt(71, openClosed);
  m_w.writeInt(72, vertices);
  m_w.writeInt(73, lines);
  m_w.writePoint(10, base[0], base[1], base[2]);
  m_w.writePoint(210, normal[0], normal[1], normal[2]);
  for (const Vertex& v : list) {
    m_w.writePoint(11, v.point[0], v.point[1], v.point[2]);
    m_w.writePoint(12, v.direction[0], v.direction[1], v.direction[2]);
    m_w.writePoint(13, v.miter[0], v.miter[1], v.miter[2]);
    for (int i = 0; i < lines; ++i) {
      m_w.writeInt(74, static_cast<OdInt64>(v.segments[static_cast<size_t>(i)].size()));
      for (double p : v.segments[static_cast<size_t>(i)]) m_w.writeDouble(41, p);
      m_w.writeInt(75, static_cast<OdInt64>(v.fills[static_cast<size_t>(i)].size()));
      for (double p : v.fills[static_cast<size_t>(i)]) m_w.writeDouble(42, p);
    }
  }
}

void DwgToDxf::hatch(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // (R2004) the gradient: BL gradient, BL, BD angle, BD shift, BL single
  // colour, BD tint, BL colour count with BD and CMC each, TV name. Then
  // BD elevation, 3BD normal, TV pattern name, B solid, B associative, BL
  // loop count; per loop BL flags (2: a polyline) and its edges or
  // vertices, BL boundary object count. BS style, BS pattern type; unless
  // solid BD angle, BD scale, B double, BS line count and per line BD
  // angle, 2BD base, 2BD offset, BS dash count, BD dashes; BD pixel size
  // when a loop's flags have 4; BL seed count and 2RD seeds. The handles
  // after the common ones: each loop's boundary objects.
  const bool r2004 = m_file.versionName() >= "AC1018", r2010 = m_file.versionName() >= "AC1024";
  const size_t room = o.size * 8;
  auto count = [&](int32_t n) {
    if (n < 0 || static_cast<size_t>(n) > room) throw OdDwgDecodeError("implausible hatch count", d.bitPosition());
    return n;
  };
  struct Gradient {
    bool on = false;
    int32_t reserved = 0, singleColor = 0;
    double angle = 0, shift = 0, tint = 0;
    std::vector<std::pair<double, int>> colors;
    OdString name;
  } gradient;
  if (r2004) {
    gradient.on = d.readBL() != 0;
    gradient.reserved = d.readBL();
    gradient.angle = d.readBD();
    gradient.shift = d.readBD();
    gradient.singleColor = d.readBL();
    gradient.tint = d.readBD();
    const int32_t colors = count(d.readBL());
    for (int32_t i = 0; i < colors; ++i) {
      const double value = d.readBD();
      gradient.colors.emplace_back(value, m_file.readCMC(d));
    }
    gradient.name = d.readTV(m_cp);
  }
  const double elevation = d.readBD();
  double normal[3];
  point3(d, normal);
  const OdString name = d.readTV(m_cp);
  const bool solid = d.readBit(), associative = d.readBit();
  const int32_t loops = count(d.readBL());
  // The groups of the loops are gathered first: the pixel size that comes
  // after them depends on their flags.
  OdDxfTagStream& out = m_w;
  std::vector<OdDxfTag> loopTags;
  std::vector<int32_t> boundaryCounts;
  bool pixelSize = false;
  for (int32_t l = 0; l < loops; ++l) {
    const int32_t flags = d.readBL();
    if (flags & 4) pixelSize = true;
    loopTags.push_back(OdDxfTag::integer(92, flags));
    if (!(flags & 2)) {
      const int32_t edges = count(d.readBL());
      loopTags.push_back(OdDxfTag::integer(93, edges));
      for (int32_t e = 0; e < edges; ++e) {
        const int type = d.readRC();
        loopTags.push_back(OdDxfTag::integer(72, type));
        switch (type) {
          case 1: {  // line: 2RD start, 2RD end
            const double x0 = d.readRD(), y0 = d.readRD(), x1 = d.readRD(), y1 = d.readRD();
            loopTags.push_back(OdDxfTag::point(10, x0, y0, 0, 2));
            loopTags.push_back(OdDxfTag::point(11, x1, y1, 0, 2));
            break;
          }
          case 2: {  // arc: 2RD centre, BD radius, BD start and end angles, B counter-clockwise
            const double x = d.readRD(), y = d.readRD(), r = d.readBD(), a0 = d.readBD(), a1 = d.readBD();
            const bool ccw = d.readBit();
            loopTags.push_back(OdDxfTag::point(10, x, y, 0, 2));
            loopTags.push_back(OdDxfTag::real(40, r));
            loopTags.push_back(OdDxfTag::real(50, odRadiansToDegrees(a0)));
            loopTags.push_back(OdDxfTag::real(51, odRadiansToDegrees(a1)));
            loopTags.push_back(OdDxfTag::integer(73, ccw));
            break;
          }
          case 3: {  // elliptic arc: 2RD centre, 2RD major axis end, BD ratio, BD angles, B counter-clockwise
            const double x = d.readRD(), y = d.readRD(), mx = d.readRD(), my = d.readRD(), ratio = d.readBD(), a0 = d.readBD(),
                         a1 = d.readBD();
            const bool ccw = d.readBit();
            loopTags.push_back(OdDxfTag::point(10, x, y, 0, 2));
            loopTags.push_back(OdDxfTag::point(11, mx, my, 0, 2));
            loopTags.push_back(OdDxfTag::real(40, ratio));
            loopTags.push_back(OdDxfTag::real(50, odRadiansToDegrees(a0)));
            loopTags.push_back(OdDxfTag::real(51, odRadiansToDegrees(a1)));
            loopTags.push_back(OdDxfTag::integer(73, ccw));
            break;
          }
          case 4: {  // spline: BL degree, B rational, B periodic, BL knots, BL control points, (R2010) fit data
            const int32_t degree = d.readBL();
            const bool rational = d.readBit(), periodic = d.readBit();
            const int32_t knots = count(d.readBL()), controls = count(d.readBL());
            loopTags.push_back(OdDxfTag::integer(94, degree));
            loopTags.push_back(OdDxfTag::integer(73, rational));
            loopTags.push_back(OdDxfTag::integer(74, periodic));
            loopTags.push_back(OdDxfTag::integer(95, knots));
            loopTags.push_back(OdDxfTag::integer(96, controls));
            for (int32_t k = 0; k < knots; ++k) loopTags.push_back(OdDxfTag::real(40, d.readBD()));
            for (int32_t c = 0; c < controls; ++c) {
              const double x = d.readRD(), y = d.readRD();
              loopTags.push_back(OdDxfTag::point(10, x, y, 0, 2));
              if (rational) loopTags.push_back(OdDxfTag::real(42, d.readBD()));
            }
            if (r2010) {
              const int32_t fits = count(d.readBL());
              loopTags.push_back(OdDxfTag::integer(97, fits));
              for (int32_t f = 0; f < fits; ++f) {
                const double x = d.readRD(), y = d.readRD();
                loopTags.push_back(OdDxfTag::point(11, x, y, 0, 2));
              }
              if (fits > 0) {
                const double sx = d.readRD(), sy = d.readRD(), ex = d.readRD(), ey = d.readRD();
                loopTags.push_back(OdDxfTag::point(12, sx, sy, 0, 2));
                loopTags.push_back(OdDxfTag::point(13, ex, ey, 0, 2));
              }
            }
            break;
          }
          default: throw OdDwgDecodeError("hatch edge of an unknown type " + std::to_string(type), d.bitPosition());
        }
      }
    } else {
      // A polyline: B bulges given, B closed, BL vertex count, 2RD and (bulges) BD each.
      const bool bulges = d.readBit(), closed = d.readBit();
      const int32_t vertices = count(d.readBL());
      loopTags.push_back(OdDxfTag::integer(72, bulges));
      loopTags.push_back(OdDxfTag::integer(73, closed));
      loopTags.push_back(OdDxfTag::integer(93, vertices));
      for (int32_t v = 0; v < vertices; ++v) {
        const double x = d.readRD(), y = d.readRD();
        loopTags.push_back(OdDxfTag::point(10, x, y, 0, 2));
        if (bulges) loopTags.push_back(OdDxfTag::real(42, d.readBD()));
      }
    }
    const int32_t boundary = count(d.readBL());
    boundaryCounts.push_back(boundary);
    loopTags.push_back(OdDxfTag::integer(97, boundary));
    loopTags.push_back(OdDxfTag::integer(-1, 0));  // where this loop's boundary handles go
  }
  const int style = d.readBS(), patternType = d.readBS();
  std::vector<OdDxfTag> pattern;
  if (!solid) {
    pattern.push_back(OdDxfTag::real(52, odRadiansToDegrees(d.readBD())));
    pattern.push_back(OdDxfTag::real(41, d.readBD()));
    pattern.push_back(OdDxfTag::integer(77, d.readBit()));
    const int lines = d.readBS();
    if (lines < 0 || static_cast<size_t>(lines) > room) throw OdDwgDecodeError("implausible hatch line count", d.bitPosition());
    pattern.push_back(OdDxfTag::integer(78, lines));
    for (int i = 0; i < lines; ++i) {
      pattern.push_back(OdDxfTag::real(53, odRadiansToDegrees(d.readBD())));
      pattern.push_back(OdDxfTag::real(43, d.readBD()));
      pattern.push_back(OdDxfTag::real(44, d.readBD()));
      pattern.push_back(OdDxfTag::real(45, d.readBD()));
      pattern.push_back(OdDxfTag::real(46, d.readBD()));
      const int dashes = d.readBS();
      if (dashes < 0 || static_cast<size_t>(dashes) > room) throw OdDwgDecodeError("implausible hatch dash count", d.bitPosition());
      pattern.push_back(OdDxfTag::integer(79, dashes));
      for (int k = 0; k < dashes; ++k) pattern.push_back(OdDxfTag::real(49, d.readBD()));
    }
  }
  double pixel = 0;
  if (pixelSize) pixel = d.readBD();
  const int32_t seeds = count(d.readBL());
  std::vector<std::pair<double, double>> seedPoints;
  for (int32_t i = 0; i < seeds; ++i) {
    const double x = d.readRD(), y = d.readRD();
    seedPoints.emplace_back(x, y);
  }

  out.writeString(100, L"AcDbHatch");
  out.writePoint(10, 0, 0, elevation);
  out.writePoint(210, normal[0], normal[1], normal[2]);
  out.writeString(2, name);
  out.writeInt(70, solid);
  out.writeInt(71, associative);
  out.writeInt(91, loops);
  size_t loop = 0;
  for (const OdDxfTag& tag : loopTags) {
    if (tag.code != -1) {
      out.writeTag(tag);
      continue;
    }
    for (int32_t i = 0; i < boundaryCounts[loop]; ++i) {
      const uint64_t object = h.readH(o.handle).value;
      out.writeHandle(330, object);
    }
    ++loop;
  }
  out.writeInt(75, style);
  out.writeInt(76, patternType);
  for (const OdDxfTag& tag : pattern) out.writeTag(tag);
  if (pixelSize) out.writeDouble(47, pixel);
  out.writeInt(98, seeds);
  for (const auto& [x, y] : seedPoints) out.writePoint(10, x, y);
  if (gradient.on || gradient.reserved || !gradient.name.isEmpty()) {
    out.writeInt(450, gradient.on);
    out.writeInt(451, gradient.reserved);
    out.writeDouble(460, gradient.angle);
    out.writeDouble(461, gradient.shift);
    out.writeInt(452, gradient.singleColor);
    out.writeDouble(462, gradient.tint);
    out.writeInt(453, static_cast<OdInt64>(gradient.colors.size()));
    for (const auto& [value, color] : gradient.colors) {
      out.writeDouble(463, value);
      out.writeInt(63, color);
    }
    out.writeString(470, gradient.name);
  }
}

const OdModelerText* DwgToDxf::modelerBinary(const OdDwgObject& o) const {
  if (!o.decoded || o.type < 0x25 || o.type > 0x27) return nullptr;
  auto known = m_modelerBinary.find(o.handle);
  if (known != m_modelerBinary.end()) return known->second.get();
  std::unique_ptr<OdModelerText>& converted = m_modelerBinary[o.handle];
  // B empty; B; BS format version; (version 2) the binary form, which
  // gives no size: it ends with its end record.
  OdDwgBitReader d = m_file.objectReader(o);
  try {
    d.seekBit(o.dataBit);
    if (d.readBit()) return nullptr;
    d.readBit();
    if (d.readBS() != 2) return nullptr;
    std::vector<uint8_t> bytes(d.bitPosition() < d.bitSize() ? (d.bitSize() - d.bitPosition()) / 8 : 0);
    d.readBytes(bytes.data(), bytes.size());
    converted = std::make_unique<OdModelerText>(odModelerBinaryToText(bytes.data(), bytes.size()));
  } catch (const OdDwgDecodeError&) {
    return nullptr;  // the entity's decoder reports it
  }
  return converted.get();
}

void DwgToDxf::modelerGeometry(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // B empty; B; BS format version; (version 1) blocks of BL size and that
  // many bytes, until a size of 0: the modeler's text, each character
  // above the space coded as 159 minus it, as DXF keeps it too; (version 2)
  // the binary form, converted to that text. What follows (wires and
  // silhouettes for display) is not needed.
  const bool empty = d.readBit();
  int version = 1;
  std::string stored;
  // The text as stored, or the binary form's text, coded as it is written
  // character by character below rather than copied whole first.
  const std::string* text = &stored;
  bool code = false;
  if (!empty) {
    d.readBit();
    version = d.readBS();
    const OdModelerText* binary = version == 2 ? modelerBinary(o) : nullptr;
    if (binary && binary->ok) {
      text = &binary->text;
      code = true;
      version = 1;
    } else if (version != 1) {
      throw OdDwgDecodeError("modeler data of format " + std::to_string(version) + " not read", d.bitPosition());
    } else {
      for (;;) {
        const int32_t size = d.readBL();
        if (size == 0) break;
        if (size < 0 || static_cast<size_t>(size) > o.size) throw OdDwgDecodeError("implausible modeler data block", d.bitPosition());
        const size_t at = stored.size();
        stored.resize(at + static_cast<size_t>(size));
        d.readBytes(reinterpret_cast<uint8_t*>(stored.data() + at), static_cast<size_t>(size));
      }
    }
  }
  m_w.writeString(100, L"AcDbModelerGeometry");
  m_w.writeInt(70, version);
  // One group 1 per line; a line longer than 255 characters goes on in
  // groups 3. The lines go to the entity as a whole once it is read, not as
  // groups. One converter and one pair of buffers serve every line.
  const OdCodePageConverter converter(m_cp);
  std::vector<OdDbModelerGeometry::DataLine> lines;
  std::string raw;
  std::wstring line;
  size_t at = 0;
  while (at < text->size()) {
    size_t end = text->find('\n', at);
    if (end == std::string::npos) end = text->size();
    // Spaces that pad a line (the first one's) are not part of the data.
    size_t last = end;
    while (last > at && (*text)[last - 1] == ' ') --last;
    // The lines are kept as a DXF file holds them, where a caret is written
    // "^ " and a control character as a caret and a letter (the coded text
    // of "A" is "^").
    raw.resize((last - at) * 2);  // at most two characters for each
    char* put = raw.data();
    for (size_t i = at; i < last; ++i) {
      const unsigned char c = static_cast<unsigned char>(code ? odModelerCharEncoded((*text)[i]) : (*text)[i]);
      if (c == '^') *put++ = '^', *put++ = ' ';
      else if (c < ' ') *put++ = '^', *put++ = static_cast<char>(c + '@');
      else *put++ = static_cast<char>(c);
    }
    raw.resize(static_cast<size_t>(put - raw.data()));
    line.clear();
    converter.decode(raw, line, false);
    size_t piece = 0;
    do {
      lines.push_back({static_cast<OdInt16>(piece == 0 ? 1 : 3), OdString(line.substr(piece, 255))});
      piece += 255;
    } while (piece < line.size());
    at = end + 1;
  }
  if (!lines.empty()) m_adopted.modelerLines.emplace_back(o.handle, std::move(lines));
  if (o.type == 0x26) {
    m_w.writeString(100, L"AcDb3dSolid");
    // R2007 on, the solid's last handle names the object that records how it was built.
    if (m_file.atLeast(kDwgR2007)) {
      const uint64_t history = h.readH(o.handle).value;
      if (history && isWrittenAny(history)) m_w.writeHandle(350, history);
    }
  }
}

}  // namespace oddwg
