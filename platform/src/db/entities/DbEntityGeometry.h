// Geometry steps that several entity classes share: moving a plane (normal
// and object coordinates) through a transformation, point distances, and
// the placed copies of a block's entities.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "DbBlockTableRecord.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GeOcs.h"
#include "Ge/GePoint2d.h"
#include "Ge/GeVector2d.h"

namespace OdDbEntityGeometry {

// The normal of a plane after the transformation: the image of the plane's
// x and y axes, crossed (so that a mirroring flips it). Zero when the
// transformation flattens the plane.
inline OdGeVector3d transformedNormal(const OdGeMatrix3d& xform, const OdGeVector3d& normal) {
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(normal, xAxis, yAxis, zAxis);
  OdGeVector3d n = (xform * xAxis).crossProduct(xform * yAxis);
  double length = n.length();
  return length > 0 ? n / length : OdGeVector3d();
}

// The map from the object coordinates of the old plane to those of the new
// plane: what the transformation does to coordinates stored in the plane.
inline OdGeMatrix3d planeCoordinateMap(const OdGeMatrix3d& xform, const OdGeVector3d& oldNormal,
                                       const OdGeVector3d& newNormal) {
  return OdGeMatrix3d::worldToPlane(newNormal) * xform * OdGeMatrix3d::planeToWorld(oldNormal);
}

// The factor by which lengths along the normal change (for thickness).
inline double normalScale(const OdGeMatrix3d& xform, const OdGeVector3d& oldNormal,
                          const OdGeVector3d& newNormal) {
  OdGeVector3d image = xform * oldNormal.normal();
  return image.dotProduct(newNormal);
}

// The 2-d affine part of a plane coordinate map: p' = (a b; c d) p + (tx, ty).
struct Affine2d {
  double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
  explicit Affine2d(const OdGeMatrix3d& m)
      : a(m(0, 0)), b(m(0, 1)), c(m(1, 0)), d(m(1, 1)), tx(m(0, 3)), ty(m(1, 3)) {}
  OdGePoint2d apply(const OdGePoint2d& p) const { return {a * p.x + b * p.y + tx, c * p.x + d * p.y + ty}; }
  OdGeVector2d apply(const OdGeVector2d& v) const { return {a * v.x + b * v.y, c * v.x + d * v.y}; }
  double det() const { return a * d - b * c; }
  // A rotation with a uniform scale (the only maps that keep circles circular).
  bool isSimilarity(double tol = 1e-10) const {
    double s = std::sqrt(std::fabs(det()));
    return std::fabs(a - d) <= tol * std::max(1.0, s) && std::fabs(b + c) <= tol * std::max(1.0, s);
  }
  double uniformScale() const { return std::sqrt(std::fabs(det())); }
  double rotation() const { return std::atan2(c, a); }
};

// An angle in [0, 2π) with round-off next to a full turn taken back to 0.
inline double snappedAngle(double angle) {
  constexpr double kTwoPi = 6.28318530717958647692;
  return (angle < 1e-12 || kTwoPi - angle < 1e-12) ? 0.0 : angle;
}

inline double distanceToSegment(const OdGePoint3d& point, const OdGePoint3d& a, const OdGePoint3d& b) {
  OdGeVector3d d = b - a;
  double lengthSqrd = d.dotProduct(d);
  double t = lengthSqrd > 0 ? std::clamp((point - a).dotProduct(d) / lengthSqrd, 0.0, 1.0) : 0.0;
  return point.distanceTo(a + d * t);
}

inline double distanceToSegment(const OdGePoint2d& point, const OdGePoint2d& a, const OdGePoint2d& b) {
  OdGeVector2d d = b - a;
  double lengthSqrd = d.dotProduct(d);
  double t = lengthSqrd > 0 ? std::clamp((point - a).dotProduct(d) / lengthSqrd, 0.0, 1.0) : 0.0;
  return point.distanceTo(a + d * t);
}

// Distance to a filled triangle.
inline double distanceToTriangle(const OdGePoint3d& point, const OdGePoint3d& a, const OdGePoint3d& b,
                                 const OdGePoint3d& c) {
  OdGeVector3d n = (b - a).crossProduct(c - a);
  double length = n.length();
  if (length > 0) {
    n /= length;
    double height = (point - a).dotProduct(n);
    OdGePoint3d foot = point - n * height;
    // Inside when the foot is on the inner side of all three edges.
    auto side = [&](const OdGePoint3d& p, const OdGePoint3d& q) {
      return (q - p).crossProduct(foot - p).dotProduct(n);
    };
    if (side(a, b) >= 0 && side(b, c) >= 0 && side(c, a) >= 0) return std::fabs(height);
  }
  return std::min(
      {distanceToSegment(point, a, b), distanceToSegment(point, b, c), distanceToSegment(point, c, a)});
}

// Even-odd test of a point against a closed polygon.
template <class PointArray>
bool isInsidePolygon(const OdGePoint2d& point, const PointArray& polygon) {
  bool inside = false;
  const size_t n = polygon.size();
  for (size_t i = 0, j = n ? n - 1 : 0; i < n; j = i++) {
    const OdGePoint2d& p = polygon[i];
    const OdGePoint2d& q = polygon[j];
    if ((p.y > point.y) != (q.y > point.y)) {
      double x = p.x + (point.y - p.y) / (q.y - p.y) * (q.x - p.x);
      if (point.x < x) inside = !inside;
    }
  }
  return inside;
}

// Copies of the entities of a block placed by a transform (a block
// reference's or a dimension's picture, exploded).
inline OdResult explodeBlockContents(const OdDbObjectId& blockId, const OdGeMatrix3d& xform,
                                     OdRxObjectPtrArray& entities) {
  OdDbObjectPtr block = blockId.openObject();
  auto* record = dynamic_cast<OdDbBlockTableRecord*>(block.get());
  if (!record) return eInvalidInput;
  for (const OdDbObjectId& id : record->entityIds()) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.isNull()) continue;  // erased
    OdDbEntityPtr copy;
    OdResult status = entity->getTransformedCopy(xform, copy);
    if (status != eOk) return status;
    entities.append(OdRxObjectPtr(copy.get()));
  }
  return eOk;
}

}  // namespace OdDbEntityGeometry
