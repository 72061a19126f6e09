// Geometry shared by the curve and polyline entities: how a transform moves
// a plane, paths of bulged segments (lightweight and 2-d polylines), and
// NURBS evaluation and interpolation (splines).
#pragma once

#include <vector>

#include "DbEntity.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GeMatrix3d.h"

// ---------------------------------------------------------------- planes

// How a transform moves the plane of a planar entity.
struct OdDbPlaneMap {
  // Unit normal of the image plane, on the side the transformed normal points to.
  OdGeVector3d normal = OdGeVector3d::kZAxis;
  // Maps coordinates in the old object coordinate system to the new one.
  OdGeMatrix3d ocsToOcs;
  // True when the plane is mapped by a similarity (rotation, reflection, uniform scale).
  bool uniform = false;
  double scale = 1.0;
  // The in-plane orientation is reversed: counter-clockwise arcs become clockwise.
  bool mirrored = false;
  // Factor of lengths along the normal (thickness).
  double thicknessScale = 1.0;

  // A 2-d OCS point at an elevation, mapped; elevation receives the new OCS z.
  OdGePoint2d mapPoint(const OdGePoint2d& point, double elevation, double& newElevation) const;
  // The new OCS angle of an old OCS direction angle.
  double mapAngle(double angle) const;
};

// eDegenerateGeometry when the transform flattens the plane onto a line.
OdResult odDbMapPlane(const OdGeVector3d& normal, const OdGeMatrix3d& xform, OdDbPlaneMap& map);

// The unit normal of the plane of `normal` after the transform, oriented toward the
// transformed normal vector (zero when the transform flattens the plane).
OdGeVector3d odDbTransformNormal(const OdGeVector3d& normal, const OdGeMatrix3d& xform);

// Extents of a box swept along the normal by a thickness.
void odDbAddThickness(OdGeExtents3d& extents, const OdGeVector3d& normal, double thickness);

// ---------------------------------------------------------------- bulge paths

// The centre line of a planar polyline: 2-d OCS points with the bulge of the
// segment that starts at each. Parameter i is at vertex i; along a segment the
// parameter runs linearly in length (lines) or in angle (arcs).
class OdDbBulgePath {
 public:
  std::vector<OdGePoint2d> points;
  std::vector<double> bulges;
  bool closed = false;
  double elevation = 0.0;
  OdGeVector3d normal = OdGeVector3d::kZAxis;

  int numSegments() const;
  // End index of a segment (wraps for the closing segment).
  int segmentEnd(int segment) const {
    return segment + 1 < static_cast<int>(points.size()) ? segment + 1 : 0;
  }
  bool isArc(int segment) const;
  bool isDegenerate(int segment) const;
  OdGePoint3d toWorld(const OdGePoint2d& point) const;
  OdGePoint3d vertexWorld(int index) const { return toWorld(points[static_cast<size_t>(index)]); }
  // The arc of an arc segment in world space: counter-clockwise about the normal (it
  // starts at the segment's end for a negative bulge).
  bool arcAt(int segment, OdGeCircArc3d& arc) const;

  double segmentLength(int segment) const;
  double length() const;
  double endParam() const { return numSegments(); }
  OdGePoint2d pointOnSegment(int segment, double fraction) const;
  OdResult pointAtParam(double param, OdGePoint3d& point) const;
  OdResult distAtParam(double param, double& dist) const;
  OdResult paramAtDist(double dist, double& param) const;
  // The nearest point of the path in the plane; `param` receives its parameter.
  OdGePoint3d closestPoint(const OdGePoint3d& point, double* param = nullptr) const;
  OdResult paramAtPoint(const OdGePoint3d& point, double& param) const;
  // Signed area enclosed (the path taken as closed), positive when counter-clockwise.
  double signedArea() const;
  void addExtents(OdGeExtents3d& extents) const;
  // Lines and arcs with the properties of `source` (degenerate segments are skipped).
  void explode(const OdDbEntity* source, double thickness, OdRxObjectPtrArray& pieces) const;

 private:
  // Segment and fraction of a parameter; false when out of range.
  bool locate(double param, int& segment, double& fraction) const;
};

// Tolerance for "the point lies on the curve", relative to the size of the geometry.
double odDbOnCurveTolerance(double size);

// ---------------------------------------------------------------- NURBS

// A non-uniform rational B-spline of space. Weights are empty for a
// non-rational curve. The parameter runs from knots[degree] to
// knots[numControlPoints].
struct OdDbNurbs {
  int degree = 3;
  std::vector<OdGePoint3d> points;
  std::vector<double> weights;
  std::vector<double> knots;

  bool isValid() const;
  double startParam() const { return knots[static_cast<size_t>(degree)]; }
  double endParam() const { return knots[points.size()]; }
  // Point and first derivative at a parameter (clamped to the interval).
  void evaluate(double u, OdGePoint3d& point, OdGeVector3d* derivative = nullptr) const;
  OdGePoint3d pointAt(double u) const;
  double length(double fromParam, double toParam) const;
  double paramAtLength(double length) const;
  double closestParam(const OdGePoint3d& point) const;
  OdGeExtents3d extents() const;
  // Signed area of the closed curve about `normal` (Green's theorem).
  double signedArea(const OdGeVector3d& normal) const;
  // The spans between distinct knots.
  std::vector<double> breakpoints() const;

  // Global interpolation through the points: chord-length parameters on [0, 1],
  // averaged knots; with non-zero tangents, the end derivatives are matched too.
  static bool interpolate(const std::vector<OdGePoint3d>& fitPoints, int degree,
                          const OdGeVector3d& startTangent, const OdGeVector3d& endTangent, OdDbNurbs& curve);
};
