#include "DbViewport.h"

#include <cmath>

#include "db/entities/DbEntityGeometry.h"

ODDB_DEFINE_MEMBERS(OdDbViewport, OdDbEntity, L"VIEWPORT")

const OdDbClassSchema& OdDbViewport::classSchema() {
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbViewport",
        {
            odField<&OdDbViewport::m_centerPoint>(10).named(L"centerPoint"),
            odField<&OdDbViewport::m_width>(40).named(L"width"),
            odField<&OdDbViewport::m_height>(41).named(L"height"),
            odField<&OdDbViewport::m_status>(68).named(L"status"),
            odField<&OdDbViewport::m_number>(69).named(L"number"),
            odField<&OdDbViewport::m_viewCenter>(12).named(L"viewCenter"),
            odField<&OdDbViewport::m_snapBase>(13).named(L"snapBase"),
            odField<&OdDbViewport::m_snapSpacing>(14).defaults(10, 10, 0).named(L"snapSpacing"),
            odField<&OdDbViewport::m_gridSpacing>(15).defaults(10, 10, 0).named(L"gridSpacing"),
            odField<&OdDbViewport::m_viewDirection>(16).named(L"viewDirection"),
            odField<&OdDbViewport::m_viewTarget>(17).named(L"viewTarget"),
            odField<&OdDbViewport::m_lensLength>(42).defaults(50).named(L"lensLength"),
            odField<&OdDbViewport::m_frontClip>(43).named(L"frontClip"),
            odField<&OdDbViewport::m_backClip>(44).named(L"backClip"),
            odField<&OdDbViewport::m_viewHeight>(45).named(L"viewHeight"),
            odField<&OdDbViewport::m_snapAngle>(50).degrees().named(L"snapAngle"),
            odField<&OdDbViewport::m_twistAngle>(51).degrees().named(L"twistAngle"),
            odField<&OdDbViewport::m_circleSides>(72).defaultsInt(100).named(L"circleSides"),
            odField<&OdDbViewport::m_statusFlags>(90).named(L"statusFlags"),
            odField<&OdDbViewport::m_clipEntityId>(340, OdDbFieldKind::kHardPointer)
                .optional()
                .named(L"clipEntity"),
            odField<&OdDbViewport::m_plotStyleSheet>(1).named(L"plotStyleSheet"),
            odField<&OdDbViewport::m_renderMode>(281).named(L"renderMode"),
            odField<&OdDbViewport::m_ucsPerViewport>(71).named(L"ucsPerViewport"),
            odField<&OdDbViewport::m_ucsIconAtOrigin>(74).named(L"ucsIconAtOrigin"),
            odField<&OdDbViewport::m_ucsOrigin>(110).named(L"ucsOrigin"),
            odField<&OdDbViewport::m_ucsXAxis>(111).defaults(1, 0, 0).named(L"ucsXAxis"),
            odField<&OdDbViewport::m_ucsYAxis>(112).defaults(0, 1, 0).named(L"ucsYAxis"),
            odField<&OdDbViewport::m_orthographicType>(79).named(L"orthographicType"),
            odField<&OdDbViewport::m_elevation>(146).named(L"elevation"),
            odField<&OdDbViewport::m_shadePlotMode>(170).since(OdDb::vAC18).named(L"shadePlotMode"),
        }}}};
  return schema;
}

double OdDbViewport::customScale() const { return m_viewHeight != 0 ? m_height / m_viewHeight : 1.0; }

OdResult OdDbViewport::setCustomScale(double scale) {
  if (!(scale > 0)) return eInvalidInput;
  assertWriteEnabled();
  m_viewHeight = m_height / scale;
  return eOk;
}

void OdDbViewport::getUcs(OdGePoint3d& origin, OdGeVector3d& xAxis, OdGeVector3d& yAxis) const {
  origin = m_ucsOrigin;
  xAxis = m_ucsXAxis;
  yAxis = m_ucsYAxis;
}

OdResult OdDbViewport::getGeomExtents(OdGeExtents3d& extents) const {
  const OdGeVector3d half(m_width / 2, m_height / 2, 0);
  extents = OdGeExtents3d(m_centerPoint - half, m_centerPoint + half);
  return eOk;
}

OdResult OdDbViewport::transformBy(const OdGeMatrix3d& xform) {
  const double s = xform(0, 0);
  const double tol = 1e-10 * std::max(1.0, std::fabs(s));
  const bool uniform = s > 0 && std::fabs(xform(1, 1) - s) <= tol && std::fabs(xform(2, 2) - s) <= tol &&
                       std::fabs(xform(0, 1)) <= tol && std::fabs(xform(0, 2)) <= tol &&
                       std::fabs(xform(1, 0)) <= tol && std::fabs(xform(1, 2)) <= tol &&
                       std::fabs(xform(2, 0)) <= tol && std::fabs(xform(2, 1)) <= tol;
  if (!uniform) return eNotApplicable;
  assertWriteEnabled();
  m_centerPoint.transformBy(xform);
  // The window grows; the view keeps showing the same model area.
  m_width *= s;
  m_height *= s;
  return eOk;
}

double OdDbViewport::distanceTo(const OdGePoint3d& point) const {
  const OdGeVector3d hx(m_width / 2, 0, 0), hy(0, m_height / 2, 0);
  const OdGePoint3d corners[4] = {m_centerPoint - hx - hy, m_centerPoint + hx - hy, m_centerPoint + hx + hy,
                                  m_centerPoint - hx + hy};
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 4; ++i) {
    best = std::min(best, OdDbEntityGeometry::distanceToSegment(point, corners[i], corners[(i + 1) % 4]));
  }
  return best;
}
