// Axis-aligned boxes.
#include <algorithm>

#include "Ge/GeExtents2d.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"

// ---- OdGeExtents3d

OdGePoint3d OdGeExtents3d::center() const { return m_min + (m_max - m_min) * 0.5; }

OdGeExtents3d& OdGeExtents3d::set(const OdGePoint3d& minPoint, const OdGePoint3d& maxPoint) {
  m_min = minPoint;
  m_max = maxPoint;
  return *this;
}

OdGeExtents3d& OdGeExtents3d::comparingSet(const OdGePoint3d& corner1, const OdGePoint3d& corner2) {
  m_min.set(std::min(corner1.x, corner2.x), std::min(corner1.y, corner2.y), std::min(corner1.z, corner2.z));
  m_max.set(std::max(corner1.x, corner2.x), std::max(corner1.y, corner2.y), std::max(corner1.z, corner2.z));
  return *this;
}

OdGeExtents3d& OdGeExtents3d::addPoint(const OdGePoint3d& point) {
  if (!isValidExtents()) return set(point, point);
  m_min.set(std::min(m_min.x, point.x), std::min(m_min.y, point.y), std::min(m_min.z, point.z));
  m_max.set(std::max(m_max.x, point.x), std::max(m_max.y, point.y), std::max(m_max.z, point.z));
  return *this;
}

OdGeExtents3d& OdGeExtents3d::addExt(const OdGeExtents3d& other) {
  if (!other.isValidExtents()) return *this;
  addPoint(other.m_min);
  return addPoint(other.m_max);
}

OdGeExtents3d& OdGeExtents3d::expandBy(const OdGeVector3d& v) {
  if (!isValidExtents()) return *this;
  const OdGeExtents3d moved(m_min + v, m_max + v);
  return addExt(moved);
}

OdGeExtents3d& OdGeExtents3d::transformBy(const OdGeMatrix3d& matrix) {
  if (!isValidExtents()) return *this;
  const OdGePoint3d low = m_min;
  const OdGePoint3d high = m_max;
  reset();
  for (int corner = 0; corner < 8; ++corner) {
    OdGePoint3d point((corner & 1) ? high.x : low.x, (corner & 2) ? high.y : low.y, (corner & 4) ? high.z : low.z);
    addPoint(matrix * point);
  }
  return *this;
}

OdGeExtents3d& OdGeExtents3d::translate(const OdGeVector3d& v) {
  if (!isValidExtents()) return *this;
  m_min += v;
  m_max += v;
  return *this;
}

bool OdGeExtents3d::isValidExtents() const {
  return m_min.x <= m_max.x && m_min.y <= m_max.y && m_min.z <= m_max.z;
}

bool OdGeExtents3d::contains(const OdGePoint3d& point, const OdGeTol& tol) const {
  if (!isValidExtents()) return false;
  const double t = tol.equalPoint();
  return point.x >= m_min.x - t && point.x <= m_max.x + t && point.y >= m_min.y - t && point.y <= m_max.y + t &&
         point.z >= m_min.z - t && point.z <= m_max.z + t;
}

bool OdGeExtents3d::contains(const OdGeExtents3d& other, const OdGeTol& tol) const {
  return other.isValidExtents() && contains(other.m_min, tol) && contains(other.m_max, tol);
}

bool OdGeExtents3d::isDisjoint(const OdGeExtents3d& other, const OdGeTol& tol) const {
  if (!isValidExtents() || !other.isValidExtents()) return true;
  const double t = tol.equalPoint();
  return other.m_min.x > m_max.x + t || other.m_max.x < m_min.x - t || other.m_min.y > m_max.y + t ||
         other.m_max.y < m_min.y - t || other.m_min.z > m_max.z + t || other.m_max.z < m_min.z - t;
}

bool OdGeExtents3d::isEqualTo(const OdGeExtents3d& other, const OdGeTol& tol) const {
  if (!isValidExtents() || !other.isValidExtents()) return isValidExtents() == other.isValidExtents();
  return m_min.isEqualTo(other.m_min, tol) && m_max.isEqualTo(other.m_max, tol);
}

// ---- OdGeExtents2d

OdGePoint2d OdGeExtents2d::center() const { return m_min + (m_max - m_min) * 0.5; }

OdGeExtents2d& OdGeExtents2d::set(const OdGePoint2d& minPoint, const OdGePoint2d& maxPoint) {
  m_min = minPoint;
  m_max = maxPoint;
  return *this;
}

OdGeExtents2d& OdGeExtents2d::comparingSet(const OdGePoint2d& corner1, const OdGePoint2d& corner2) {
  m_min.set(std::min(corner1.x, corner2.x), std::min(corner1.y, corner2.y));
  m_max.set(std::max(corner1.x, corner2.x), std::max(corner1.y, corner2.y));
  return *this;
}

OdGeExtents2d& OdGeExtents2d::addPoint(const OdGePoint2d& point) {
  if (!isValidExtents()) return set(point, point);
  m_min.set(std::min(m_min.x, point.x), std::min(m_min.y, point.y));
  m_max.set(std::max(m_max.x, point.x), std::max(m_max.y, point.y));
  return *this;
}

OdGeExtents2d& OdGeExtents2d::addExt(const OdGeExtents2d& other) {
  if (!other.isValidExtents()) return *this;
  addPoint(other.m_min);
  return addPoint(other.m_max);
}

OdGeExtents2d& OdGeExtents2d::expandBy(const OdGeVector2d& v) {
  if (!isValidExtents()) return *this;
  const OdGeExtents2d moved(m_min + v, m_max + v);
  return addExt(moved);
}

OdGeExtents2d& OdGeExtents2d::transformBy(const OdGeMatrix2d& matrix) {
  if (!isValidExtents()) return *this;
  const OdGePoint2d low = m_min;
  const OdGePoint2d high = m_max;
  reset();
  for (int corner = 0; corner < 4; ++corner) {
    addPoint(matrix * OdGePoint2d((corner & 1) ? high.x : low.x, (corner & 2) ? high.y : low.y));
  }
  return *this;
}

OdGeExtents2d& OdGeExtents2d::translate(const OdGeVector2d& v) {
  if (!isValidExtents()) return *this;
  m_min += v;
  m_max += v;
  return *this;
}

bool OdGeExtents2d::isValidExtents() const { return m_min.x <= m_max.x && m_min.y <= m_max.y; }

bool OdGeExtents2d::contains(const OdGePoint2d& point, const OdGeTol& tol) const {
  if (!isValidExtents()) return false;
  const double t = tol.equalPoint();
  return point.x >= m_min.x - t && point.x <= m_max.x + t && point.y >= m_min.y - t && point.y <= m_max.y + t;
}

bool OdGeExtents2d::contains(const OdGeExtents2d& other, const OdGeTol& tol) const {
  return other.isValidExtents() && contains(other.m_min, tol) && contains(other.m_max, tol);
}

bool OdGeExtents2d::isDisjoint(const OdGeExtents2d& other, const OdGeTol& tol) const {
  if (!isValidExtents() || !other.isValidExtents()) return true;
  const double t = tol.equalPoint();
  return other.m_min.x > m_max.x + t || other.m_max.x < m_min.x - t || other.m_min.y > m_max.y + t ||
         other.m_max.y < m_min.y - t;
}

bool OdGeExtents2d::isEqualTo(const OdGeExtents2d& other, const OdGeTol& tol) const {
  if (!isValidExtents() || !other.isValidExtents()) return isValidExtents() == other.isValidExtents();
  return m_min.isEqualTo(other.m_min, tol) && m_max.isEqualTo(other.m_max, tol);
}
