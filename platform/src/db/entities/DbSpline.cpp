// Splines: NURBS curves with optional fit data, in world coordinates.
#include <algorithm>
#include <cmath>

#include "DbCurveSupport.h"
#include "DbCurves.h"

ODDB_DEFINE_MEMBERS(OdDbSpline, OdDbCurve, L"SPLINE")

namespace {
bool splineHasFitData(const void* object, const OdDbObject*, const OdDbTagContext&) {
  return static_cast<const OdDbSpline*>(static_cast<const OdDbObject*>(object))->hasFitData();
}
}  // namespace

const OdDbClassSchema& OdDbSpline::classSchema() {
  // Knots (40), weights (41, when the spline has them), control points (10)
  // and fit points (11), one group per value; their numbers (72, 73, 74)
  // come before the tolerances.
  static const OdDbField knots = odValueArrayField<&OdDbSpline::m_knots>(40, L"knots");
  static const OdDbField weights = odValueArrayField<&OdDbSpline::m_weights>(41, L"weights");
  static const OdDbField controlPoints = odValueArrayField<&OdDbSpline::m_controlPoints>(10, L"controlPoints");
  static const OdDbField fitPoints = odValueArrayField<&OdDbSpline::m_fitPoints>(11, L"fitPoints");
  static const OdDbRecordCodec counts({
      odCountField<&OdDbSpline::m_knots>(72, knots),
      odCountField<&OdDbSpline::m_controlPoints>(73, controlPoints),
      odCountField<&OdDbSpline::m_fitPoints>(74, fitPoints),
  });
  // Group 44, written for splines with fit points.
  static const OdDbRecordCodec fitTolerance({
      odField<&OdDbSpline::m_fitTolerance>(44).defaults(1e-10).writtenWhen(splineHasFitData).named(L"fitTolerance"),
  });
  static const OdDbRecordCodec arrays({knots, weights, controlPoints, fitPoints});
  static const OdDbClassSchema schema{
      &OdDbCurve::classSchema(),
      {{L"AcDbSpline",
        {
            odField<&OdDbSpline::m_normal>(210).optional().defaults(0, 0, 0).named(L"normal"),
            odField<&OdDbSpline::m_flags>(70).named(L"flags"),
            odField<&OdDbSpline::m_degree>(71).defaultsInt(3).named(L"degree"),
            odCustomField(counts, L"counts"),
            odField<&OdDbSpline::m_knotTolerance>(42).defaults(1e-10).named(L"knotTolerance"),
            odField<&OdDbSpline::m_controlPointTolerance>(43).defaults(1e-10).named(L"controlPointTolerance"),
            odCustomField(fitTolerance, L"fitTolerance"),
            odField<&OdDbSpline::m_startTangent>(12).optional().defaults(0, 0, 0).named(L"startTangent"),
            odField<&OdDbSpline::m_endTangent>(13).optional().defaults(0, 0, 0).named(L"endTangent"),
            odCustomField(arrays, L"arrays"),
        }}}};
  return schema;
}

namespace {

// The curve the spline stands for: its NURBS data, or the curve through its fit points.
bool splineCurve(const OdDbSpline& spline, OdDbNurbs& curve) {
  int degree;
  bool rational, closed, periodic;
  OdGePoint3dArray points;
  OdGeDoubleArray knots, weights;
  double controlTol, knotTol;
  spline.getNurbsData(degree, rational, closed, periodic, points, knots, weights, controlTol, knotTol);
  curve.degree = degree;
  curve.points.assign(points.begin(), points.end());
  curve.knots.assign(knots.begin(), knots.end());
  curve.weights.clear();
  if (rational && weights.size() == points.size()) curve.weights.assign(weights.begin(), weights.end());
  if (curve.isValid()) return true;
  if (spline.numFitPoints() < 2) return false;
  std::vector<OdGePoint3d> fit;
  for (int i = 0; i < spline.numFitPoints(); ++i) {
    OdGePoint3d p;
    spline.getFitPointAt(i, p);
    fit.push_back(p);
  }
  return OdDbNurbs::interpolate(fit, std::max(1, degree), spline.startFitTangent(), spline.endFitTangent(),
                                curve);
}

double curveSize(const OdDbNurbs& curve) {
  OdGeExtents3d box;
  for (const auto& p : curve.points) box.addPoint(p);
  return box.diagonal().length() + box.maxPoint().asVector().length();
}

}  // namespace

OdResult OdDbSpline::getControlPointAt(int index, OdGePoint3d& point) const {
  if (index < 0 || index >= numControlPoints()) return eInvalidIndex;
  point = m_controlPoints[static_cast<size_t>(index)];
  return eOk;
}

OdResult OdDbSpline::setControlPointAt(int index, const OdGePoint3d& point) {
  if (index < 0 || index >= numControlPoints()) return eInvalidIndex;
  assertWriteEnabled();
  m_controlPoints[static_cast<size_t>(index)] = point;
  // Moving a control point leaves the fit points behind.
  m_fitPoints.clear();
  updatePlanarity();
  return eOk;
}

double OdDbSpline::weightAt(int index) const {
  if (index < 0 || static_cast<size_t>(index) >= m_weights.size()) return 1.0;
  return m_weights[static_cast<size_t>(index)];
}

OdResult OdDbSpline::setWeightAt(int index, double weight) {
  if (index < 0 || index >= numControlPoints()) return eInvalidIndex;
  if (!(weight > 0.0)) return eInvalidInput;
  assertWriteEnabled();
  if (m_weights.size() != m_controlPoints.size()) m_weights.assign(m_controlPoints.size(), 1.0);
  m_weights[static_cast<size_t>(index)] = weight;
  m_flags = static_cast<OdInt16>(m_flags | kRational);
  return eOk;
}

OdResult OdDbSpline::getFitPointAt(int index, OdGePoint3d& point) const {
  if (index < 0 || index >= numFitPoints()) return eInvalidIndex;
  point = m_fitPoints[static_cast<size_t>(index)];
  return eOk;
}

void OdDbSpline::getNurbsData(int& degree, bool& rational, bool& closed, bool& periodic,
                              OdGePoint3dArray& controlPoints, OdGeDoubleArray& knots,
                              OdGeDoubleArray& weights, double& controlPtTol, double& knotTol) const {
  degree = m_degree;
  rational = isRational();
  closed = isClosed();
  periodic = isPeriodic();
  controlPoints = m_controlPoints;
  knots = m_knots;
  weights = m_weights;
  controlPtTol = m_controlPointTolerance;
  knotTol = m_knotTolerance;
}

OdResult OdDbSpline::setNurbsData(int degree, bool rational, bool closed, bool periodic,
                                  const OdGePoint3dArray& controlPoints, const OdGeDoubleArray& knots,
                                  const OdGeDoubleArray& weights, double controlPtTol, double knotTol) {
  OdDbNurbs check;
  check.degree = degree;
  check.points.assign(controlPoints.begin(), controlPoints.end());
  check.knots.assign(knots.begin(), knots.end());
  if (rational) {
    if (weights.size() != controlPoints.size()) return eInvalidInput;
    if (std::any_of(weights.begin(), weights.end(), [](double w) { return !(w > 0.0); }))
      return eInvalidInput;
  }
  if (!check.isValid()) return eInvalidInput;
  assertWriteEnabled();
  m_degree = static_cast<OdInt16>(degree);
  m_controlPoints = controlPoints;
  m_knots = knots;
  m_weights = rational ? weights : OdGeDoubleArray();
  m_controlPointTolerance = controlPtTol;
  m_knotTolerance = knotTol;
  m_fitPoints.clear();
  m_startTangent = m_endTangent = OdGeVector3d();
  m_flags =
      static_cast<OdInt16>((closed ? kClosed : 0) | (periodic ? kPeriodic : 0) | (rational ? kRational : 0));
  updatePlanarity();
  return eOk;
}

OdResult OdDbSpline::getFitData(OdGePoint3dArray& fitPoints, int& degree, double& fitTolerance,
                                bool& tangentsExist, OdGeVector3d& startTangent,
                                OdGeVector3d& endTangent) const {
  if (m_fitPoints.empty()) return eNotApplicable;
  fitPoints = m_fitPoints;
  degree = m_degree;
  fitTolerance = m_fitTolerance;
  startTangent = m_startTangent;
  endTangent = m_endTangent;
  tangentsExist = !m_startTangent.isZeroLength() || !m_endTangent.isZeroLength();
  return eOk;
}

OdResult OdDbSpline::setFitData(const OdGePoint3dArray& fitPoints, int degree, double fitTolerance,
                                const OdGeVector3d& startTangent, const OdGeVector3d& endTangent) {
  OdDbNurbs curve;
  std::vector<OdGePoint3d> fit(fitPoints.begin(), fitPoints.end());
  if (degree < 1 || !OdDbNurbs::interpolate(fit, degree, startTangent, endTangent, curve))
    return eInvalidInput;
  assertWriteEnabled();
  m_degree = static_cast<OdInt16>(curve.degree);
  m_controlPoints.assign(curve.points.begin(), curve.points.end());
  m_knots.assign(curve.knots.begin(), curve.knots.end());
  m_weights.clear();
  m_fitPoints = fitPoints;
  m_fitTolerance = fitTolerance;
  m_startTangent = startTangent;
  m_endTangent = endTangent;
  const bool closed = fitPoints.size() > 2 && fitPoints.first().isEqualTo(fitPoints.last());
  m_flags = static_cast<OdInt16>(closed ? kClosed : 0);
  updatePlanarity();
  return eOk;
}

void OdDbSpline::updatePlanarity() {
  m_flags = static_cast<OdInt16>(m_flags & ~(kPlanar | kLinear));
  const OdGePoint3dArray& points = m_controlPoints.empty() ? m_fitPoints : m_controlPoints;
  if (points.empty()) return;
  // The plane through the first point, the farthest point from it and the point
  // farthest from the line through those two.
  const OdGePoint3d origin = points.first();
  OdGePoint3d far = origin;
  for (const auto& p : points) {
    if (p.distanceTo(origin) > far.distanceTo(origin)) far = p;
  }
  const OdGeVector3d axis = far - origin;
  const double size = axis.length();
  OdGeVector3d best;
  for (const auto& p : points) {
    const OdGeVector3d cross = axis.crossProduct(p - origin);
    if (cross.length() > best.length()) best = cross;
  }
  const double tol = odDbOnCurveTolerance(size + origin.asVector().length());
  if (size == 0.0 || best.length() <= tol * size) {
    m_flags = static_cast<OdInt16>(m_flags | kPlanar | kLinear);
    if (m_normal.isZeroLength() || !m_normal.isPerpendicularTo(axis, OdGeTol(1e-10, 1e-9))) {
      m_normal = size == 0.0 ? OdGeVector3d::kZAxis : axis.perpVector();
    }
    return;
  }
  OdGeVector3d normal = best.normal();
  for (const auto& p : points) {
    if (std::fabs((p - origin).dotProduct(normal)) > tol) {
      m_normal = OdGeVector3d();
      return;
    }
  }
  const OdGeVector3d reference = m_normal.isZeroLength() ? OdGeVector3d::kZAxis : m_normal;
  if (normal.dotProduct(reference) < 0.0) normal = -normal;
  m_normal = normal;
  m_flags = static_cast<OdInt16>(m_flags | kPlanar);
}

OdResult OdDbSpline::getStartParam(double& param) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  param = curve.startParam();
  return eOk;
}

OdResult OdDbSpline::getEndParam(double& param) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  param = curve.endParam();
  return eOk;
}

OdResult OdDbSpline::getStartPoint(OdGePoint3d& point) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  point = curve.pointAt(curve.startParam());
  return eOk;
}

OdResult OdDbSpline::getEndPoint(OdGePoint3d& point) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  point = curve.pointAt(curve.endParam());
  return eOk;
}

OdResult OdDbSpline::getPointAtParam(double param, OdGePoint3d& point) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  const double slack = 1e-10 * (curve.endParam() - curve.startParam());
  if (param < curve.startParam() - slack || param > curve.endParam() + slack) return eInvalidInput;
  point = curve.pointAt(param);
  return eOk;
}

OdResult OdDbSpline::getParamAtPoint(const OdGePoint3d& point, double& param) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  const double u = curve.closestParam(point);
  if (curve.pointAt(u).distanceTo(point) > odDbOnCurveTolerance(curveSize(curve))) return ePointNotOnEntity;
  param = u;
  return eOk;
}

OdResult OdDbSpline::getDistAtParam(double param, double& dist) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  const double slack = 1e-10 * (curve.endParam() - curve.startParam());
  if (param < curve.startParam() - slack || param > curve.endParam() + slack) return eInvalidInput;
  dist = curve.length(curve.startParam(), param);
  return eOk;
}

OdResult OdDbSpline::getParamAtDist(double dist, double& param) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  const double total = curve.length(curve.startParam(), curve.endParam());
  if (dist < 0.0 || dist > total + odDbOnCurveTolerance(total)) return eInvalidInput;
  param = curve.paramAtLength(dist);
  return eOk;
}

OdResult OdDbSpline::getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  closest = curve.pointAt(curve.closestParam(point));
  return eOk;
}

OdResult OdDbSpline::getArea(double& area) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) return eDegenerateGeometry;
  OdGeVector3d normal = m_normal;
  if (normal.isZeroLength()) {
    // Newell's normal of the control polygon.
    for (size_t i = 0; i < curve.points.size(); ++i) {
      const OdGePoint3d& a = curve.points[i];
      const OdGePoint3d& b = curve.points[(i + 1) % curve.points.size()];
      normal += OdGeVector3d((a.y - b.y) * (a.z + b.z), (a.z - b.z) * (a.x + b.x), (a.x - b.x) * (a.y + b.y));
    }
    if (normal.isZeroLength()) {
      area = 0.0;
      return eOk;
    }
  }
  area = std::fabs(curve.signedArea(normal));
  return eOk;
}

OdResult OdDbSpline::getGeomExtents(OdGeExtents3d& extents) const {
  OdDbNurbs curve;
  if (!splineCurve(*this, curve)) {
    // Too little data for a curve: the box of the points there are.
    extents = OdGeExtents3d();
    for (const auto& p : m_controlPoints) extents.addPoint(p);
    for (const auto& p : m_fitPoints) extents.addPoint(p);
    return extents.isValidExtents() ? eOk : eInvalidExtents;
  }
  extents = curve.extents();
  return eOk;
}

OdResult OdDbSpline::transformBy(const OdGeMatrix3d& xform) {
  if (xform.isSingular()) return eDegenerateGeometry;
  assertWriteEnabled();
  for (auto& p : m_controlPoints) p = xform * p;
  for (auto& p : m_fitPoints) p = xform * p;
  if (!m_startTangent.isZeroLength()) m_startTangent = xform * m_startTangent;
  if (!m_endTangent.isZeroLength()) m_endTangent = xform * m_endTangent;
  if (!m_normal.isZeroLength()) m_normal = odDbTransformNormal(m_normal, xform);
  return eOk;
}
