// Bulged polyline segments and the arcs they stand for.
#include "Ge/GeBulge.h"

#include <cmath>

#include "Ge/GeCircArc2d.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeConst.h"
#include "Ge/GeOcs.h"

double odgeBulgeToIncludedAngle(double bulge) { return 4.0 * std::atan(bulge); }

double odgeIncludedAngleToBulge(double includedAngle) { return std::tan(includedAngle / 4.0); }

bool odgeArcFromBulge(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge,
                      OdGePoint2d& center, double& radius, double& startAngle, double& endAngle) {
  const OdGeVector2d chord = endPoint - startPoint;
  const double chordLength = chord.length();
  if (bulge == 0.0 || chordLength == 0.0) return false;

  // The centre lies on the chord's perpendicular bisector, on the left for a counter-clockwise
  // arc shorter than a half circle; its signed distance from the chord is c (1 - b^2) / (4 b).
  const OdGeVector2d left = chord.perpVector() / chordLength;
  const OdGePoint2d middle = startPoint + chord * 0.5;
  center = middle + left * (chordLength * (1.0 - bulge * bulge) / (4.0 * bulge));
  radius = chordLength * (1.0 + bulge * bulge) / (4.0 * std::fabs(bulge));

  // Counter-clockwise from the start point for b > 0, from the end point for b < 0.
  const OdGeVector2d fromDir = (bulge > 0.0 ? startPoint : endPoint) - center;
  const double included = std::fabs(odgeBulgeToIncludedAngle(bulge));
  startAngle = odgeNormalizeAngle(std::atan2(fromDir.y, fromDir.x));
  endAngle = odgeNormalizeAngle(startAngle + included);
  return true;
}

bool odgeArcFromBulge(const OdGePoint2d& startPoint, const OdGePoint2d& endPoint, double bulge, double elevation,
                      const OdGeVector3d& normal, OdGeCircArc3d& arc) {
  OdGePoint2d center;
  double radius, startAngle, endAngle;
  if (!odgeArcFromBulge(startPoint, endPoint, bulge, center, radius, startAngle, endAngle)) return false;
  OdGeVector3d xAxis, yAxis, zAxis;
  odgeOcsAxes(normal, xAxis, yAxis, zAxis);
  arc.set(odgeOcsToWcs(center, elevation, normal), zAxis, xAxis, radius, startAngle, endAngle);
  return true;
}

double odgeBulgeFromArc(double startAngle, double endAngle, bool isClockWise) {
  const double included = odgeNormalizeAngle(isClockWise ? startAngle - endAngle : endAngle - startAngle);
  const double bulge = odgeIncludedAngleToBulge(included);
  return isClockWise ? -bulge : bulge;
}

double odgeBulgeFromArc(const OdGeCircArc2d& arc) {
  const double bulge = odgeIncludedAngleToBulge(arc.sweepAngle());
  return arc.isClockWise() ? -bulge : bulge;
}
