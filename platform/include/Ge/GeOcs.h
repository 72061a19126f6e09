// Object coordinate systems (OCS). A planar entity stores its coordinates in the system whose
// z axis is its extrusion direction (normal) and whose x axis follows the arbitrary axis rule:
//   N = normal normalised; if |N.x| < 1/64 and |N.y| < 1/64 then Ax = WorldY x N, else
//   Ax = WorldZ x N; Ay = N x Ax (both normalised).
// A zero normal is taken as world Z. OdGeMatrix3d::planeToWorld(normal) is the same mapping.
#pragma once

#include "Ge/GePoint3d.h"

// The three unit axes of the OCS of `normal`, in world coordinates.
void odgeOcsAxes(const OdGeVector3d& normal, OdGeVector3d& xAxis, OdGeVector3d& yAxis, OdGeVector3d& zAxis);

OdGePoint3d odgeOcsToWcs(const OdGePoint3d& ocsPoint, const OdGeVector3d& normal);
OdGeVector3d odgeOcsToWcs(const OdGeVector3d& ocsVector, const OdGeVector3d& normal);
// A 2-d OCS point at the given elevation (OCS z), as stored by planar polylines.
OdGePoint3d odgeOcsToWcs(const OdGePoint2d& ocsPoint, double elevation, const OdGeVector3d& normal);

OdGePoint3d odgeWcsToOcs(const OdGePoint3d& wcsPoint, const OdGeVector3d& normal);
OdGeVector3d odgeWcsToOcs(const OdGeVector3d& wcsVector, const OdGeVector3d& normal);

// Angle in the OCS x-y plane, from the OCS x axis, of a world direction (its projection onto
// the OCS plane), in [0, 2π).
double odgeOcsAngle(const OdGeVector3d& wcsDirection, const OdGeVector3d& normal);
