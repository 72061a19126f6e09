// Bulged polyline segments. A segment from a start to an end point with bulge b is the arc
// whose included angle is 4 * atan(|b|), running counter-clockwise from start to end for b > 0
// and clockwise for b < 0; b = 0 is a straight segment and |b| = 1 a half circle. Points and
// angles are in the polyline's own (object) coordinate system, angles from its x axis.
#pragma once

#include "Ge/GePoint2d.h"
#include "Ge/GeVector3d.h"

class OdGeCircArc2d;
class OdGeCircArc3d;

// The arc of a bulged segment as a counter-clockwise arc from startAngle to endAngle, both in
// [0, 2π) - the form an arc entity stores. For a negative bulge the arc therefore runs from the
// segment's end point to its start point. False for a zero bulge or coincident points.
bool odgeArcFromBulge(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge,
                      OdGePoint2d& center, double& radius, double& startAngle, double& endAngle);
// The same arc in world space for a polyline with the given elevation and normal: the arc's
// normal is the polyline's and its reference vector the x axis of the polyline's OCS.
bool odgeArcFromBulge(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge,
                      double elevation, const OdGeVector3d& normal, OdGeCircArc3d& arc);

// Bulge of the segment that follows the arc from startAngle to endAngle: counter-clockwise (a
// positive bulge) or clockwise (negative). Angles count modulo 2π, so a full circle (equal
// angles) gives 0: it cannot be a single segment.
double odgeBulgeFromArc(double startAngle, double endAngle, bool isClockWise = false);
// Bulge of the segment from the arc's start point to its end point.
double odgeBulgeFromArc(const OdGeCircArc2d& arc);

// Signed included angle of a bulged segment (positive counter-clockwise), and back.
double odgeBulgeToIncludedAngle(double bulge);
double odgeIncludedAngleToBulge(double includedAngle);
