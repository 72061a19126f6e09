// Circular and elliptical arcs: construction, closest points, tolerance, intersections,
// extents, transformation and length.
#include "Ge/GeCircArc2d.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeEllipArc3d.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeLineSeg2d.h"
#include "Ge/GeLineSeg3d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GePlane.h"
#include "OdResult.h"
#include "ge/GeTestSupport.h"

namespace {

// Box of many points of the curve: a lower bound of the exact box.
template <class Curve, class Extents>
Extents sampledExtents(const Curve& curve) {
  typename std::conditional<std::is_same<Extents, OdGeExtents3d>::value, OdGePoint3dArray, OdGePoint2dArray>::type
      points;
  curve.getSamplePoints(20001, points);
  Extents extents;
  extents.addPoints(points);
  return extents;
}

// Perimeter of an ellipse by the arithmetic-geometric mean (independent of the integration).
double ellipsePerimeter(double a, double b) {
  double x = 1.0, y = b / a, sum = 0.5 * (1.0 - y * y), power = 0.5;
  double c = std::sqrt(1.0 - y * y);
  for (int i = 0; i < 40 && c > 1e-17; ++i) {
    const double nextX = 0.5 * (x + y);
    c = 0.5 * (x - y);
    y = std::sqrt(x * y);
    x = nextX;
    power *= 2.0;
    sum += power * c * c;
  }
  return 2.0 * OdaPI * a * (1.0 - sum) / x;
}

}  // namespace

TEST(GeCircArc3d, ThroughThreePoints) {
  GeRandom random;
  for (int i = 0; i < 50; ++i) {
    const OdGePoint3d center = random.point();
    const OdGeVector3d normal = random.unitVector();
    const double radius = random.uniform(0.1, 50.0);
    const OdGeCircArc3d circle(center, normal, radius);
    const double a = random.uniform(0.0, 6.0), b = a + random.uniform(0.05, 3.0), c = b + random.uniform(0.05, 3.0);
    const OdGeCircArc3d arc(circle.evalPoint(a), circle.evalPoint(b), circle.evalPoint(c));
    EXPECT_TRUE(pointsNear(arc.center(), center, 1e-9));
    EXPECT_NEAR(arc.radius(), radius, 1e-9);
    EXPECT_TRUE(vectorsNear(arc.normal(), normal, 1e-9));  // counter-clockwise through the points
    EXPECT_NEAR(arc.sweepAngle(), c - a, 1e-9);
    EXPECT_TRUE(pointsNear(arc.startPoint(), circle.evalPoint(a), 1e-9));
    EXPECT_TRUE(pointsNear(arc.endPoint(), circle.evalPoint(c), 1e-9));
    EXPECT_TRUE(arc.isOn(circle.evalPoint(b), OdGeTol(1e-9, 1e-9)));
  }
  OdGe::ErrorCondition status;
  OdGeCircArc3d arc;
  arc.set(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 1, 1), OdGePoint3d(3, 3, 3), status);
  EXPECT_EQ(status, OdGe::kLinearlyDependentArg1Arg2Arg3);
  arc.set(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 1, 1), OdGePoint3d(0, 0, 0), status);
  EXPECT_EQ(status, OdGe::kEqualArg1Arg3);
  EXPECT_THROW(OdGeCircArc3d(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 0, 0), OdGePoint3d(2, 0, 0)), OdError);
}

TEST(GeCircArc2d, ThroughThreePointsKeepsTheSense) {
  const OdGeCircArc2d ccw(OdGePoint2d(1, 0), OdGePoint2d(0, 1), OdGePoint2d(-1, 0));
  EXPECT_FALSE(ccw.isClockWise());
  EXPECT_NEAR(ccw.sweepAngle(), OdaPI, 1e-14);
  EXPECT_TRUE(pointsNear(ccw.evalPoint(ccw.startAng() + OdaPI2), OdGePoint2d(0, 1), 1e-14));
  const OdGeCircArc2d cw(OdGePoint2d(1, 0), OdGePoint2d(0, -1), OdGePoint2d(0, 1));
  EXPECT_TRUE(cw.isClockWise());
  EXPECT_NEAR(cw.sweepAngle(), 1.5 * OdaPI, 1e-14);
  EXPECT_TRUE(cw.isOn(OdGePoint2d(-1, 0)));
  EXPECT_FALSE(cw.isOn(OdGePoint2d(std::sqrt(0.5), std::sqrt(0.5))));
  EXPECT_NEAR(cw.length(), 1.5 * OdaPI, 1e-14);
}

TEST(GeCircArc3d, IsOnAtTheToleranceBoundary) {
  // Quarter arc of radius 10 in a tilted plane.
  const OdGeVector3d normal = OdGeVector3d(1, 2, 2).normal();
  const OdGeCircArc3d arc(OdGePoint3d(5, 5, 5), normal, normal.perpVector(), 10.0, 0.0, OdaPI2);
  const OdGeTol tol(1e-6, 1e-6);
  const OdGePoint3d middle = arc.evalPoint(OdaPI4);
  const OdGeVector3d radial = (middle - arc.center()) / 10.0;
  EXPECT_TRUE(arc.isOn(middle + radial * 0.9e-6, tol));
  EXPECT_FALSE(arc.isOn(middle + radial * 1.1e-6, tol));
  EXPECT_TRUE(arc.isOn(middle - radial * 0.9e-6, tol));
  EXPECT_FALSE(arc.isOn(middle - radial * 1.1e-6, tol));
  EXPECT_TRUE(arc.isOn(middle + normal * 0.9e-6, tol));
  EXPECT_FALSE(arc.isOn(middle + normal * 1.1e-6, tol));
  // Past the end along the circle: distance to the end point counts.
  EXPECT_TRUE(arc.isOn(arc.evalPoint(OdaPI2 + 0.9e-7), tol));
  EXPECT_FALSE(arc.isOn(arc.evalPoint(OdaPI2 + 1.1e-7), tol));
  EXPECT_TRUE(arc.isOn(arc.evalPoint(-0.9e-7), tol));
  EXPECT_FALSE(arc.isOn(arc.evalPoint(-1.1e-7), tol));
  // Points off the sweep are closest to the nearer end point.
  EXPECT_TRUE(pointsNear(arc.closestPointTo(arc.evalPoint(OdaPI2 + 1.0)), arc.endPoint(), 1e-12));
  EXPECT_TRUE(pointsNear(arc.closestPointTo(arc.evalPoint(-1.0) + normal * 3.0), arc.startPoint(), 1e-12));
  EXPECT_NEAR(arc.paramOf(arc.evalPoint(1.0) + normal * 3.0), 1.0, 1e-12);
}

TEST(GeCircArc, FarFromTheOriginEvaluatedPointsAreOn) {
  GeRandom random;
  const OdGeCircArc3d arc(OdGePoint3d(5e5, 3e6, 40.0), random.unitVector(), random.unitVector(), 250.0, 0.2, 5.0);
  int count = 0;
  OdGePoint3d p1, p2;
  for (int i = 0; i < 200; ++i) {
    const OdGePoint3d onArc = arc.evalPoint(random.uniform(0.2, 5.0));
    ASSERT_TRUE(arc.isOn(onArc)) << i;
    // A chord from a point of the arc meets the arc there. Along a chord that leaves the circle at
    // a shallow angle the crossing is only determined to about rounding noise / angle.
    ASSERT_TRUE(arc.intersectWith(OdGeLineSeg3d(onArc, arc.evalPoint(random.uniform(0.2, 5.0))), count, p1, p2));
    EXPECT_TRUE(pointsNear(p1, onArc, 1e-6) || pointsNear(p2, onArc, 1e-6)) << i;
  }
}

TEST(GeCircArc, ParamsOfAnArcAcrossTheZeroAngle) {
  // From 350 to 10 degrees: the end angle is raised by a turn.
  const OdGeCircArc3d arc(OdGePoint3d::kOrigin, OdGeVector3d::kZAxis, OdGeVector3d::kXAxis, 2.0,
                          OdaToRadian(350), OdaToRadian(10));
  EXPECT_NEAR(arc.endAng(), OdaToRadian(370), 1e-14);
  EXPECT_NEAR(arc.length(), 2.0 * OdaToRadian(20), 1e-14);
  EXPECT_NEAR(arc.paramOf(OdGePoint3d(2, 0, 0)), Oda2PI, 1e-14);
  EXPECT_TRUE(arc.isOn(OdGePoint3d(2 * std::cos(0.1), 2 * std::sin(0.1), 0)));
  EXPECT_FALSE(arc.isOn(OdGePoint3d(-2, 0, 0)));
  EXPECT_FALSE(arc.isClosed());
  EXPECT_TRUE(OdGeCircArc3d(OdGePoint3d::kOrigin, OdGeVector3d::kZAxis, 2.0).isClosed());
  // Reversing keeps the points and swaps the ends.
  OdGeCircArc3d reversed = arc;
  reversed.reverseParam();
  EXPECT_TRUE(pointsNear(reversed.startPoint(), arc.endPoint(), 1e-14));
  EXPECT_TRUE(pointsNear(reversed.evalPoint(reversed.startAng() + 0.05), arc.evalPoint(arc.endAng() - 0.05), 1e-14));
}

TEST(GeCircArc3d, LineIntersections) {
  const OdGeCircArc3d arc(OdGePoint3d(0, 0, 0), OdGeVector3d::kZAxis, OdGeVector3d::kXAxis, 5.0, 0.0, OdaPI);
  int count = 0;
  OdGePoint3d p1, p2;
  // A chord through the full circle meets only the upper half.
  ASSERT_TRUE(arc.intersectWith(OdGeLine3d(OdGePoint3d(3, -10, 0), OdGeVector3d(0, 1, 0)), count, p1, p2));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(pointsNear(p1, OdGePoint3d(3, 4, 0), 1e-14));
  ASSERT_TRUE(arc.intersectWith(OdGeLine3d(OdGePoint3d(-10, 3, 0), OdGeVector3d(1, 0, 0)), count, p1, p2));
  EXPECT_EQ(count, 2);
  EXPECT_NEAR(p1.distanceTo(p2), 8.0, 1e-14);
  // Tangent, and just clear of the circle.
  ASSERT_TRUE(arc.intersectWith(OdGeLine3d(OdGePoint3d(-10, 5, 0), OdGeVector3d(1, 0, 0)), count, p1, p2));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(pointsNear(p1, OdGePoint3d(0, 5, 0), 1e-14));
  EXPECT_FALSE(arc.intersectWith(OdGeLine3d(OdGePoint3d(-10, 5.001, 0), OdGeVector3d(1, 0, 0)), count, p1, p2));
  EXPECT_EQ(count, 0);
  // A segment that stops short of the circle.
  EXPECT_FALSE(arc.intersectWith(OdGeLineSeg3d(OdGePoint3d(0, 0, 0), OdGePoint3d(0, 4.9, 0)), count, p1, p2));
  // Crossing the arc's plane on the arc, and off it.
  ASSERT_TRUE(arc.intersectWith(OdGeLine3d(OdGePoint3d(0, 5, 7), OdGeVector3d(0, 0, 1)), count, p1, p2));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(pointsNear(p1, OdGePoint3d(0, 5, 0), 1e-14));
  EXPECT_FALSE(arc.intersectWith(OdGeLine3d(OdGePoint3d(0, -5, 7), OdGeVector3d(0, 0, 1)), count, p1, p2));
}

TEST(GeCircArc3d, ArcIntersections) {
  const OdGeVector3d z = OdGeVector3d::kZAxis;
  const OdGeCircArc3d circle(OdGePoint3d(0, 0, 0), z, 5.0);
  int count = 0;
  OdGePoint3d p1, p2;
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(6, 0, 0), z, 5.0), count, p1, p2));
  EXPECT_EQ(count, 2);
  EXPECT_NEAR(p1.x, 3.0, 1e-14);
  EXPECT_NEAR(std::fabs(p1.y), 4.0, 1e-14);
  EXPECT_NEAR(p1.y, -p2.y, 1e-14);
  // Touching from outside and from inside.
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(8, 0, 0), z, 3.0), count, p1, p2));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(pointsNear(p1, OdGePoint3d(5, 0, 0), 1e-14));
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(0, -3, 0), z, 2.0), count, p1, p2));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(pointsNear(p1, OdGePoint3d(0, -5, 0), 1e-14));
  EXPECT_FALSE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(0, 0, 0), z, 4.0), count, p1, p2));
  // Overlapping by less than the tolerance still counts as touching, at one point.
  const OdGeTol tol(1e-6, 1e-6);
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(8 - 0.5e-6, 0, 0), z, 3.0), count, p1, p2, tol));
  EXPECT_EQ(count, 1);
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(0, -3 - 0.5e-6, 0), z, 2.0), count, p1, p2, tol));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(pointsNear(p1, OdGePoint3d(0, -5, 0), 1e-6));
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(0, -3 - 2e-6, 0), z, 2.0), count, p1, p2, tol));
  EXPECT_EQ(count, 2);
  // Arcs of the same circle: two halves touch at both ends, overlapping arcs share no single point.
  const OdGeCircArc3d upper(OdGePoint3d::kOrigin, z, OdGeVector3d::kXAxis, 5.0, 0.0, OdaPI);
  const OdGeCircArc3d lower(OdGePoint3d::kOrigin, -z, OdGeVector3d::kXAxis, 5.0, 0.0, OdaPI);
  ASSERT_TRUE(upper.intersectWith(lower, count, p1, p2));
  EXPECT_EQ(count, 2);
  EXPECT_NEAR(std::fabs(p1.x), 5.0, 1e-14);
  EXPECT_NEAR(p1.x, -p2.x, 1e-14);
  EXPECT_FALSE(upper.intersectWith(circle, count, p1, p2));
  // Circles in perpendicular planes meet where one crosses the other's plane on the other.
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(7, 0, 0), OdGeVector3d::kYAxis, 2.0), count, p1, p2));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(pointsNear(p1, OdGePoint3d(5, 0, 0), 1e-14));
  ASSERT_TRUE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(0, 0, 0), OdGeVector3d::kYAxis, 5.0), count, p1, p2));
  EXPECT_EQ(count, 2);
  EXPECT_NEAR(p1.distanceTo(p2), 10.0, 1e-14);
  EXPECT_FALSE(circle.intersectWith(OdGeCircArc3d(OdGePoint3d(0, 0, 3), OdGeVector3d::kYAxis, 2.0), count, p1, p2));
}

TEST(GeCircArc2d, IntersectionsFollowTheSense) {
  // Clockwise upper half from (5, 0) to (-5, 0)... as a clockwise arc it is the lower half.
  const OdGeCircArc2d lowerHalf(OdGePoint2d(0, 0), 5.0, OdaPI, Oda2PI, OdGeVector2d::kXAxis, false);
  const OdGeCircArc2d sameAsClockwise(OdGePoint2d(0, 0), 5.0, 0.0, OdaPI, OdGeVector2d::kXAxis, true);
  EXPECT_TRUE(pointsNear(sameAsClockwise.evalPoint(OdaPI2), OdGePoint2d(0, -5), 1e-14));
  int count = 0;
  OdGePoint2d p1, p2;
  EXPECT_FALSE(lowerHalf.intersectWith(sameAsClockwise, count, p1, p2));  // the same half: overlap
  ASSERT_TRUE(sameAsClockwise.intersectWith(OdGeLineSeg2d(OdGePoint2d(-9, -3), OdGePoint2d(9, -3)), count, p1, p2));
  EXPECT_EQ(count, 2);
  EXPECT_NEAR(std::fabs(p1.x), 4.0, 1e-14);
  EXPECT_FALSE(sameAsClockwise.intersectWith(OdGeLineSeg2d(OdGePoint2d(-9, 3), OdGePoint2d(9, 3)), count, p1, p2));
  const OdGeCircArc2d upperHalf(OdGePoint2d(0, 0), 5.0, 0.0, OdaPI);
  ASSERT_TRUE(upperHalf.intersectWith(sameAsClockwise, count, p1, p2));
  EXPECT_EQ(count, 2);
}

TEST(GeCircArc, ExtentsAreTight) {
  GeRandom random;
  for (int i = 0; i < 20; ++i) {
    const double start = random.uniform(-7, 7);
    const OdGeCircArc3d arc(random.point(), random.unitVector(), random.unitVector(), random.uniform(1, 20), start,
                            start + random.uniform(0.1, 6.2));
    const OdGeExtents3d exact = arc.geomExtents();
    const OdGeExtents3d sampled = sampledExtents<OdGeCircArc3d, OdGeExtents3d>(arc);
    EXPECT_TRUE(exact.contains(sampled, OdGeTol(1e-12, 1e-12)));
    EXPECT_TRUE(exact.isEqualTo(sampled, OdGeTol(1e-5, 1e-5)));
  }
  // Quarter arc from 45 to 135 degrees reaches the top of the circle.
  const OdGeCircArc2d arc(OdGePoint2d(0, 0), 2.0, OdaPI4, 3.0 * OdaPI4);
  EXPECT_TRUE(arc.geomExtents().isEqualTo(
      OdGeExtents2d(OdGePoint2d(-std::sqrt(2.0), std::sqrt(2.0)), OdGePoint2d(std::sqrt(2.0), 2.0)),
      OdGeTol(1e-14, 1e-14)));
}

TEST(GeCircArc, TransformKeepsThePointsOrRefuses) {
  GeRandom random;
  const OdGeCircArc3d arc(OdGePoint3d(1, 2, 3), OdGeVector3d(0, 1, 1), OdGeVector3d::kXAxis, 4.0, 0.5, 2.5);
  const OdGeMatrix3d m = OdGeMatrix3d::rotation(1.1, random.unitVector(), random.point()) *
                         OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(1, 1, 1), OdGeVector3d(1, 2, 3))) *
                         OdGeMatrix3d::scaling(2.0);
  OdGeCircArc3d moved = arc;
  moved.transformBy(m);
  EXPECT_NEAR(moved.radius(), 8.0, 1e-12);
  for (double t : {0.5, 1.0, 2.5}) {
    EXPECT_TRUE(pointsNear(moved.evalPoint(t), m * arc.evalPoint(t), 1e-11));
  }
  // Non-uniform scaling in the arc's plane cannot keep it circular; along its normal it can.
  OdGeCircArc3d flat(OdGePoint3d::kOrigin, OdGeVector3d::kZAxis, 1.0);
  EXPECT_THROW(flat.transformBy(OdGeMatrix3d::scaling(OdGeScale3d(2, 1, 1))), OdError);
  EXPECT_NO_THROW(flat.transformBy(OdGeMatrix3d::scaling(OdGeScale3d(1, 1, 5))));

  // A mirrored 2-d arc turns clockwise and keeps its points.
  OdGeCircArc2d arc2d(OdGePoint2d(1, 1), 2.0, 0.2, 1.4);
  const OdGeMatrix2d mirror = OdGeMatrix2d::mirroring(OdGeLineSeg2d(OdGePoint2d(0, 0), OdGePoint2d(0, 1)));
  OdGeCircArc2d mirrored = arc2d;
  mirrored.transformBy(mirror);
  EXPECT_TRUE(mirrored.isClockWise());
  EXPECT_TRUE(pointsNear(mirrored.evalPoint(0.9), mirror * arc2d.evalPoint(0.9), 1e-14));
}

TEST(GeEllipArc3d, LengthMatchesTheEllipticIntegral) {
  for (double ratio : {1.0, 0.9, 0.5, 0.1, 0.01, 0.001}) {
    const OdGeEllipArc3d ellipse(OdGePoint3d(3, 4, 5), OdGeVector3d(1, 1, 0), OdGeVector3d(-1, 1, 0), 10.0,
                                 10.0 * ratio);
    const double perimeter = ellipsePerimeter(10.0, 10.0 * ratio);
    EXPECT_NEAR(ellipse.length(), perimeter, 1e-11 * perimeter) << "ratio " << ratio;
    // By symmetry a quarter from an axis is a quarter of the whole, whatever turn it starts on.
    EXPECT_NEAR(ellipse.length(-OdaPI2, 0.0), perimeter / 4.0, 1e-11 * perimeter);
    EXPECT_NEAR(ellipse.length(5.0 * OdaPI2, 3.0 * OdaPI), perimeter / 4.0, 1e-11 * perimeter);
  }
  // A flat ellipse is twice its diameter around.
  EXPECT_NEAR(OdGeEllipArc3d(OdGePoint3d::kOrigin, OdGeVector3d::kXAxis, OdGeVector3d::kYAxis, 1.0, 0.0).length(),
              4.0, 1e-12);
}

TEST(GeEllipArc3d, ClosestPointAndIsOn) {
  const OdGeEllipArc3d arc(OdGePoint3d(1, 1, 0), OdGeVector3d::kXAxis, OdGeVector3d::kYAxis, 8.0, 2.0, 0.3, 4.0);
  GeRandom random;
  for (int i = 0; i < 40; ++i) {
    const OdGePoint3d query = random.point(12.0);
    // Brute force over the sweep.
    double best = 1e300;
    for (int k = 0; k <= 200000; ++k) {
      best = std::min(best, arc.evalPoint(0.3 + 3.7 * k / 200000.0).distanceTo(query));
    }
    EXPECT_NEAR(arc.distanceTo(query), best, 1e-7) << "query " << i;
    EXPECT_LE(arc.distanceTo(query), best + 1e-12);
  }
  const OdGeTol tol(1e-6, 1e-6);
  const OdGePoint3d onArc = arc.evalPoint(1.0);
  // The normal of the curve at t: perpendicular to the tangent in the plane.
  const OdGeVector3d tangent = OdGeVector3d(-8.0 * std::sin(1.0), 2.0 * std::cos(1.0), 0.0);
  const OdGeVector3d outward = tangent.crossProduct(OdGeVector3d::kZAxis).normal();
  EXPECT_TRUE(arc.isOn(onArc + outward * 0.9e-6, tol));
  EXPECT_FALSE(arc.isOn(onArc + outward * 1.1e-6, tol));
  EXPECT_TRUE(arc.isOn(onArc + OdGeVector3d::kZAxis * 0.9e-6, tol));
  EXPECT_FALSE(arc.isOn(onArc + OdGeVector3d::kZAxis * 1.1e-6, tol));
  EXPECT_NEAR(arc.paramOf(onArc), 1.0, 1e-9);
  EXPECT_FALSE(arc.isOn(arc.evalPoint(5.0)));  // on the ellipse, outside the sweep
}

TEST(GeEllipArc3d, AffineImagesStayEllipses) {
  // A circle scaled unevenly becomes an ellipse with the scaled radii.
  OdGeEllipArc3d ellipse(OdGeCircArc3d(OdGePoint3d(1, 0, 0), OdGeVector3d::kZAxis, 2.0));
  ellipse.transformBy(OdGeMatrix3d::scaling(OdGeScale3d(1, 3, 1)));
  EXPECT_NEAR(ellipse.majorRadius(), 6.0, 1e-14);
  EXPECT_NEAR(ellipse.minorRadius(), 2.0, 1e-14);
  EXPECT_TRUE(ellipse.majorAxis().isParallelTo(OdGeVector3d::kYAxis));

  // Under a shear the arc keeps its points, its ends and a longer major axis.
  const OdGeEllipArc3d arc(OdGePoint3d(2, 0, 1), OdGeVector3d(1, 1, 0), OdGeVector3d(0, 0, 1), 5.0, 2.0, 0.4, 2.9);
  OdGeMatrix3d shear = OdGeMatrix3d::translation(OdGeVector3d(1, 2, 3));
  shear.entry[0][2] = 1.5;
  shear.entry[1][0] = -0.4;
  OdGeEllipArc3d sheared = arc;
  sheared.transformBy(shear);
  EXPECT_GE(sheared.majorRadius(), sheared.minorRadius());
  EXPECT_TRUE(sheared.majorAxis().isPerpendicularTo(sheared.minorAxis()));
  EXPECT_TRUE(pointsNear(sheared.startPoint(), shear * arc.startPoint(), 1e-12));
  EXPECT_TRUE(pointsNear(sheared.endPoint(), shear * arc.endPoint(), 1e-12));
  for (double t : {0.4, 1.0, 2.0, 2.9}) EXPECT_TRUE(sheared.isOn(shear * arc.evalPoint(t), OdGeTol(1e-9, 1e-9)));

  const OdGeExtents3d exact = sheared.geomExtents();
  EXPECT_TRUE(exact.isEqualTo(sampledExtents<OdGeEllipArc3d, OdGeExtents3d>(sheared), OdGeTol(1e-5, 1e-5)));
  // Flattening the ellipse's plane onto a line leaves no ellipse.
  OdGeEllipArc3d upright(OdGePoint3d::kOrigin, OdGeVector3d::kXAxis, OdGeVector3d::kZAxis, 3.0, 1.0);
  EXPECT_THROW(upright.transformBy(OdGeMatrix3d::scaling(OdGeScale3d(1, 1, 0))), OdError);
}

TEST(GeEllipArc3d, PolarAnglesAndParameters) {
  OdGeEllipArc3d ellipse;
  ellipse.setFromMajorAxis(OdGePoint3d(0, 0, 0), OdGeVector3d::kZAxis, OdGeVector3d(0, 4, 0), 0.5);
  EXPECT_TRUE(vectorsNear(ellipse.minorAxis(), -OdGeVector3d::kXAxis, 1e-15));  // normal x major
  EXPECT_NEAR(ellipse.minorRadius(), 2.0, 0.0);
  for (double angle : {0.3, 1.2, 2.0, 4.0, 7.0, -1.0}) {
    const double param = ellipse.paramFromAngle(angle);
    EXPECT_NEAR(ellipse.angleFromParam(param), angle, 1e-14);
    const OdGeVector3d toPoint = ellipse.evalPoint(param) - ellipse.center();
    EXPECT_NEAR(odgeNormalizeAngle(ellipse.majorAxis().angleTo(toPoint, ellipse.normal())),
                odgeNormalizeAngle(angle), 1e-13);
  }
}
