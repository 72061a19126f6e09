// Bulged polyline segments and their arcs, both ways.
#include "Ge/GeBulge.h"
#include "Ge/GeCircArc2d.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeOcs.h"
#include "ge/GeTestSupport.h"

namespace {

OdGePoint2d pointAt(const OdGePoint2d& center, double radius, double angle) {
  return center + OdGeVector2d(std::cos(angle), std::sin(angle)) * radius;
}

}  // namespace

TEST(GeBulge, ArcFromBulgeAndBackRoundTrips) {
  const OdGePoint2d start(2.0, 1.0);
  const OdGePoint2d end(6.0, 4.0);  // chord of length 5
  for (double bulge : {0.001, 0.25, 0.5, 1.0, 1.5, 20.0, -0.001, -0.25, -1.0, -1.5, -20.0}) {
    OdGePoint2d center;
    double radius = 0.0, startAngle = 0.0, endAngle = 0.0;
    ASSERT_TRUE(odgeArcFromBulge(start, end, bulge, center, radius, startAngle, endAngle)) << bulge;
    EXPECT_NEAR(radius, 5.0 * (1.0 + bulge * bulge) / (4.0 * std::fabs(bulge)), 1e-12 * radius);
    EXPECT_GE(startAngle, 0.0);
    EXPECT_LT(endAngle, Oda2PI);
    // Counter-clockwise from start to end point for a positive bulge, from end to start otherwise.
    const OdGePoint2d& ccwFrom = bulge > 0.0 ? start : end;
    const OdGePoint2d& ccwTo = bulge > 0.0 ? end : start;
    EXPECT_TRUE(pointsNear(pointAt(center, radius, startAngle), ccwFrom, 1e-9 * radius)) << bulge;
    EXPECT_TRUE(pointsNear(pointAt(center, radius, endAngle), ccwTo, 1e-9 * radius)) << bulge;
    // The arc bulges to the right of the chord's direction for a positive bulge, by |b| * chord / 2.
    const double middleAngle = startAngle + odgeNormalizeAngle(endAngle - startAngle) / 2.0;
    const OdGeVector2d chord = end - start;
    const double side = chord.crossProduct(pointAt(center, radius, middleAngle) - start) / chord.length();
    EXPECT_NEAR(side, -bulge * 2.5, 1e-9 * std::max(1.0, radius)) << bulge;

    EXPECT_NEAR(odgeBulgeFromArc(startAngle, endAngle), std::fabs(bulge), 1e-12 * std::fabs(bulge) * (1 + bulge * bulge));
    // The segment's own direction: clockwise from its start point for a negative bulge.
    EXPECT_NEAR(bulge > 0.0 ? odgeBulgeFromArc(startAngle, endAngle) : odgeBulgeFromArc(endAngle, startAngle, true),
                bulge, 1e-12 * std::fabs(bulge) * (1 + bulge * bulge));
  }
}

TEST(GeBulge, HalfCircles) {
  OdGePoint2d center;
  double radius, startAngle, endAngle;
  ASSERT_TRUE(odgeArcFromBulge(OdGePoint2d(0, 0), OdGePoint2d(2, 0), 1.0, center, radius, startAngle, endAngle));
  EXPECT_TRUE(pointsNear(center, OdGePoint2d(1, 0), 1e-15));
  EXPECT_NEAR(radius, 1.0, 1e-15);
  EXPECT_NEAR(startAngle, OdaPI, 1e-15);  // through (1, -1): below the chord
  EXPECT_NEAR(endAngle, 0.0, 1e-15);
  ASSERT_TRUE(odgeArcFromBulge(OdGePoint2d(0, 0), OdGePoint2d(2, 0), -1.0, center, radius, startAngle, endAngle));
  EXPECT_NEAR(startAngle, 0.0, 1e-15);  // from (2, 0) through (1, 1) to (0, 0)
  EXPECT_NEAR(endAngle, OdaPI, 1e-15);
  EXPECT_NEAR(odgeBulgeFromArc(0.0, OdaPI), 1.0, 1e-15);
  EXPECT_NEAR(odgeBulgeFromArc(OdaPI, 0.0, true), -1.0, 1e-15);
  EXPECT_NEAR(odgeBulgeFromArc(OdaPI2, OdaPI2 + Oda2PI), 0.0, 0.0);  // a full turn is no segment
  EXPECT_FALSE(odgeArcFromBulge(OdGePoint2d(0, 0), OdGePoint2d(2, 0), 0.0, center, radius, startAngle, endAngle));
  EXPECT_FALSE(odgeArcFromBulge(OdGePoint2d(1, 1), OdGePoint2d(1, 1), 0.5, center, radius, startAngle, endAngle));
}

TEST(GeBulge, ArcObjectsRunAlongTheSegment) {
  const OdGePoint2d start(1.0, -1.0), end(-3.0, 2.0);
  for (double bulge : {0.4, -0.4, 1.0, -1.0, 3.0, -3.0}) {
    const OdGeCircArc2d arc(start, end, bulge);
    EXPECT_EQ(arc.isClockWise(), bulge < 0.0);
    EXPECT_TRUE(pointsNear(arc.startPoint(), start, 1e-12));
    EXPECT_TRUE(pointsNear(arc.endPoint(), end, 1e-12));
    EXPECT_NEAR(arc.sweepAngle(), 4.0 * std::atan(std::fabs(bulge)), 1e-14);
    EXPECT_NEAR(odgeBulgeFromArc(arc), bulge, 1e-12 * std::fabs(bulge));
  }
  EXPECT_NEAR(odgeBulgeToIncludedAngle(odgeIncludedAngleToBulge(-2.5)), -2.5, 1e-15);
}

TEST(GeBulge, SpatialArcOfAnOcsPolyline) {
  // A polyline drawn with extrusion (0, 0, -1) at elevation 2.
  const OdGeVector3d normal(0, 0, -1);
  const OdGePoint2d start(0, 0), end(4, 0);
  for (double bulge : {0.5, -0.5}) {
    OdGeCircArc3d arc;
    ASSERT_TRUE(odgeArcFromBulge(start, end, bulge, 2.0, normal, arc));
    EXPECT_TRUE(arc.normal().isEqualTo(normal));
    const OdGePoint3d wcsStart = odgeOcsToWcs(start, 2.0, normal);
    const OdGePoint3d wcsEnd = odgeOcsToWcs(end, 2.0, normal);
    EXPECT_TRUE(pointsNear(bulge > 0 ? arc.startPoint() : arc.endPoint(), wcsStart, 1e-14));
    EXPECT_TRUE(pointsNear(bulge > 0 ? arc.endPoint() : arc.startPoint(), wcsEnd, 1e-14));
    // The 2-d arc lifted through the OCS is the same curve.
    const OdGeCircArc2d flat(start, end, bulge);
    const OdGePoint2d middle = flat.evalPoint(0.5 * (flat.startAng() + flat.endAng()));
    EXPECT_TRUE(arc.isOn(odgeOcsToWcs(middle, 2.0, normal)));
  }
}
