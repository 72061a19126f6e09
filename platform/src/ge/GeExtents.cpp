// Axis-aligned boxes of both dimensions.
#include <algorithm>

#include "Ge/GeExtents2d.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeMatrix3d.h"

template <class Space>
typename Space::Extents& OdGeExtentsT<Space>::comparingSet(const Point& corner1, const Point& corner2) {
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    m_min[axis] = std::min(corner1[axis], corner2[axis]);
    m_max[axis] = std::max(corner1[axis], corner2[axis]);
  }
  return self();
}

template <class Space>
typename Space::Extents& OdGeExtentsT<Space>::addPoint(const Point& point) {
  if (!isValidExtents()) return set(point, point);
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    m_min[axis] = std::min(m_min[axis], point[axis]);
    m_max[axis] = std::max(m_max[axis], point[axis]);
  }
  return self();
}

template <class Space>
typename Space::Extents& OdGeExtentsT<Space>::addExt(const OdGeExtentsT& other) {
  if (!other.isValidExtents()) return self();
  addPoint(other.m_min);
  return addPoint(other.m_max);
}

template <class Space>
typename Space::Extents& OdGeExtentsT<Space>::expandBy(const Vector& v) {
  if (!isValidExtents()) return self();
  const Extents moved(m_min + v, m_max + v);
  return addExt(moved);
}

template <class Space>
typename Space::Extents& OdGeExtentsT<Space>::transformBy(const typename Space::Matrix& matrix) {
  if (!isValidExtents()) return self();
  const Point low = m_min;
  const Point high = m_max;
  reset();
  for (unsigned int corner = 0; corner < (1u << Space::kDimension); ++corner) {
    Point point;
    for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
      point[axis] = (corner & (1u << axis)) ? high[axis] : low[axis];
    }
    addPoint(matrix * point);
  }
  return self();
}

template <class Space>
typename Space::Extents& OdGeExtentsT<Space>::translate(const Vector& v) {
  if (!isValidExtents()) return self();
  m_min += v;
  m_max += v;
  return self();
}

template <class Space>
bool OdGeExtentsT<Space>::isValidExtents() const {
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    if (!(m_min[axis] <= m_max[axis])) return false;
  }
  return true;
}

template <class Space>
bool OdGeExtentsT<Space>::contains(const Point& point, const OdGeTol& tol) const {
  if (!isValidExtents()) return false;
  const double t = tol.equalPoint();
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    if (!(point[axis] >= m_min[axis] - t && point[axis] <= m_max[axis] + t)) return false;
  }
  return true;
}

template <class Space>
bool OdGeExtentsT<Space>::contains(const OdGeExtentsT& other, const OdGeTol& tol) const {
  return other.isValidExtents() && contains(other.m_min, tol) && contains(other.m_max, tol);
}

template <class Space>
bool OdGeExtentsT<Space>::isDisjoint(const OdGeExtentsT& other, const OdGeTol& tol) const {
  if (!isValidExtents() || !other.isValidExtents()) return true;
  const double t = tol.equalPoint();
  for (unsigned int axis = 0; axis < Space::kDimension; ++axis) {
    if (other.m_min[axis] > m_max[axis] + t || other.m_max[axis] < m_min[axis] - t) return true;
  }
  return false;
}

template <class Space>
bool OdGeExtentsT<Space>::isEqualTo(const OdGeExtentsT& other, const OdGeTol& tol) const {
  if (!isValidExtents() || !other.isValidExtents()) return isValidExtents() == other.isValidExtents();
  return m_min.isEqualTo(other.m_min, tol) && m_max.isEqualTo(other.m_max, tol);
}

template class OdGeExtentsT<OdGeSpace2d>;
template class OdGeExtentsT<OdGeSpace3d>;
