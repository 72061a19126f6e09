// Lines, rays and segments: intersections, closest points and the tolerance of isOn.
#include "Ge/GeCircArc2d.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeEllipArc3d.h"
#include "Ge/GeLine2d.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeLineSeg2d.h"
#include "Ge/GeLineSeg3d.h"
#include "Ge/GePlane.h"
#include "Ge/GeRay2d.h"
#include "Ge/GeRay3d.h"
#include "OdResult.h"
#include "ge/GeTestSupport.h"

TEST(GeLineSeg2d, IntersectionCases) {
  const OdGeLineSeg2d base(OdGePoint2d(0, 0), OdGePoint2d(10, 0));
  OdGePoint2d hit;

  // Crossing.
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(3, -2), OdGePoint2d(5, 2)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint2d(4, 0), 1e-14));
  // Touching end to end at an angle, and a T where one end sits on the other segment.
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(10, 0), OdGePoint2d(12, 5)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint2d(10, 0), 0.0));
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(6, 0), OdGePoint2d(6, 5)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint2d(6, 0), 1e-14));
  // The lines cross, but beyond the end of one segment.
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(11, -1), OdGePoint2d(11, 1)), hit));
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(6, 0.5), OdGePoint2d(6, 5)), hit));
  // Parallel.
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(0, 1), OdGePoint2d(10, 1)), hit));
  // Colinear and overlapping: no single point, but an overlap.
  const OdGeLineSeg2d overlapping(OdGePoint2d(12, 0), OdGePoint2d(4, 0));
  EXPECT_FALSE(base.intersectWith(overlapping, hit));
  OdGeLineSeg2d shared;
  ASSERT_TRUE(base.overlap(overlapping, shared));
  EXPECT_TRUE(pointsNear(shared.startPoint(), OdGePoint2d(4, 0), 1e-14));
  EXPECT_TRUE(pointsNear(shared.endPoint(), OdGePoint2d(10, 0), 1e-14));
  // Colinear and touching end to end (either orientation): exactly one point.
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(10, 0), OdGePoint2d(15, 0)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint2d(10, 0), 1e-14));
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(-3, 0), OdGePoint2d(0, 0)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint2d(0, 0), 1e-14));
  EXPECT_FALSE(base.overlap(OdGeLineSeg2d(OdGePoint2d(10, 0), OdGePoint2d(15, 0)), shared));
  // Colinear with a gap.
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(11, 0), OdGePoint2d(15, 0)), hit));
}

TEST(GeLineSeg2d, EndsMissByMoreOrLessThanTheTolerance) {
  const OdGeTol tol(1e-6, 1e-6);
  const OdGeLineSeg2d base(OdGePoint2d(0, 0), OdGePoint2d(10, 0));
  OdGePoint2d hit;
  // A perpendicular segment stopping just short of the base.
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(5, 0.9e-6), OdGePoint2d(5, 3)), hit, tol));
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(5, 1.1e-6), OdGePoint2d(5, 3)), hit, tol));
  // A crossing just beyond the base's end.
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(10 + 0.9e-6, -1), OdGePoint2d(10 + 0.9e-6, 1)), hit, tol));
  EXPECT_TRUE(pointsNear(hit, OdGePoint2d(10, 0), 0.0));  // clamped onto the segment
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg2d(OdGePoint2d(10 + 1.1e-6, -1), OdGePoint2d(10 + 1.1e-6, 1)), hit, tol));
}

TEST(GeLineSeg3d, IntersectionCases) {
  const OdGeLineSeg3d base(OdGePoint3d(0, 0, 0), OdGePoint3d(10, 10, 10));
  OdGePoint3d hit;
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg3d(OdGePoint3d(5, 5, 0), OdGePoint3d(5, 5, 10)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint3d(5, 5, 5), 1e-13));
  // Skew: the closest points are 1 apart.
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg3d(OdGePoint3d(5, 6, 0), OdGePoint3d(5, 6, 10)), hit));
  // Skew within tolerance still meets.
  const OdGeTol tol(1e-6, 1e-6);
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg3d(OdGePoint3d(5.0000005, 5, 0), OdGePoint3d(5.0000005, 5, 10)), hit, tol));
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg3d(OdGePoint3d(5.000002, 5, 0), OdGePoint3d(5.000002, 5, 10)), hit, tol));
  // Colinear, end to end, and overlapping.
  EXPECT_TRUE(base.intersectWith(OdGeLineSeg3d(OdGePoint3d(20, 20, 20), OdGePoint3d(10, 10, 10)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint3d(10, 10, 10), 1e-13));
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg3d(OdGePoint3d(2, 2, 2), OdGePoint3d(3, 3, 3)), hit));
  EXPECT_FALSE(base.intersectWith(OdGeLineSeg3d(OdGePoint3d(1, 0, 0), OdGePoint3d(11, 10, 10)), hit));  // parallel
  // A segment against unbounded kinds.
  EXPECT_FALSE(base.intersectWith(OdGeLine3d(OdGePoint3d(100, 100, 0), OdGeVector3d(0, 0, 1)), hit));
  EXPECT_TRUE(base.intersectWith(OdGeRay3d(OdGePoint3d(3, 3, -50), OdGeVector3d(0, 0, 1)), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint3d(3, 3, 3), 1e-13));
  EXPECT_FALSE(base.intersectWith(OdGeRay3d(OdGePoint3d(3, 3, -50), OdGeVector3d(0, 0, -1)), hit));
  // Two colinear lines share everything; a ray meeting another head-on at its origin shares one point.
  EXPECT_FALSE(OdGeLine3d(OdGePoint3d::kOrigin, OdGeVector3d::kXAxis)
                   .intersectWith(OdGeLine3d(OdGePoint3d(5, 0, 0), OdGeVector3d(-2, 0, 0)), hit));
  EXPECT_TRUE(OdGeRay3d(OdGePoint3d::kOrigin, OdGeVector3d::kXAxis)
                  .intersectWith(OdGeRay3d(OdGePoint3d::kOrigin, -OdGeVector3d::kXAxis), hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint3d::kOrigin, 0.0));
}

TEST(GeLineSeg3d, ClosestPointsAndIsOnBoundary) {
  const OdGeLineSeg3d seg(OdGePoint3d(1, 1, 1), OdGePoint3d(5, 1, 1));
  EXPECT_TRUE(pointsNear(seg.closestPointTo(OdGePoint3d(3, 4, 5)), OdGePoint3d(3, 1, 1), 0.0));
  EXPECT_TRUE(pointsNear(seg.closestPointTo(OdGePoint3d(-9, 4, 5)), seg.startPoint(), 0.0));
  EXPECT_NEAR(seg.distanceTo(OdGePoint3d(8, 5, 1)), 5.0, 1e-15);
  EXPECT_NEAR(seg.paramOf(OdGePoint3d(2, 7, 7)), 0.25, 1e-15);
  EXPECT_EQ(seg.paramOf(OdGePoint3d(9, 0, 0)), 1.0);
  EXPECT_TRUE(pointsNear(seg.evalPoint(0.25), OdGePoint3d(2, 1, 1), 0.0));
  EXPECT_TRUE(pointsNear(seg.midPoint(), OdGePoint3d(3, 1, 1), 0.0));
  EXPECT_NEAR(seg.length(), 4.0, 0.0);
  EXPECT_NEAR(seg.length(0.25, 0.75), 2.0, 1e-15);

  const OdGeTol tol(1e-6, 1e-6);
  // Across the segment and past its ends.
  EXPECT_TRUE(seg.isOn(OdGePoint3d(3, 1, 1 + 0.9e-6), tol));
  EXPECT_FALSE(seg.isOn(OdGePoint3d(3, 1, 1 + 1.1e-6), tol));
  EXPECT_TRUE(seg.isOn(OdGePoint3d(5 + 0.9e-6, 1, 1), tol));
  EXPECT_FALSE(seg.isOn(OdGePoint3d(5 + 1.1e-6, 1, 1), tol));
  EXPECT_FALSE(seg.isOn(OdGePoint3d(1 - 1.1e-6, 1, 1), tol));
  // The unbounded line through it has no ends.
  EXPECT_TRUE(seg.getLine().isOn(OdGePoint3d(1000, 1, 1)));
  double param = 0.0;
  EXPECT_TRUE(seg.getLine().isOn(OdGePoint3d(-3, 1, 1), param));
  EXPECT_NEAR(param, -1.0, 1e-15);
}

TEST(GeLinearEnt, ColinearityParallelismAndPlanes) {
  const OdGeLineSeg3d a(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 1, 0));
  EXPECT_TRUE(a.isColinearTo(OdGeLineSeg3d(OdGePoint3d(5, 5, 0), OdGePoint3d(3, 3, 0))));
  EXPECT_FALSE(a.isColinearTo(OdGeLineSeg3d(OdGePoint3d(5, 5, 1e-6), OdGePoint3d(3, 3, 1e-6))));
  EXPECT_TRUE(a.isParallelTo(OdGeLineSeg3d(OdGePoint3d(5, 5, 1e-6), OdGePoint3d(3, 3, 1e-6))));
  EXPECT_TRUE(a.isPerpendicularTo(OdGeLine3d(OdGePoint3d(9, 9, 9), OdGeVector3d(0, 0, 1))));

  const OdGePlane plane(OdGePoint3d(0, 0, 2), OdGeVector3d::kZAxis);
  OdGePoint3d hit;
  EXPECT_TRUE(OdGeLineSeg3d(OdGePoint3d(1, 1, 0), OdGePoint3d(3, 5, 4)).intersectWith(plane, hit));
  EXPECT_TRUE(pointsNear(hit, OdGePoint3d(2, 3, 2), 1e-15));
  EXPECT_FALSE(OdGeLineSeg3d(OdGePoint3d(1, 1, 0), OdGePoint3d(3, 5, 1)).intersectWith(plane, hit));
  EXPECT_FALSE(a.intersectWith(plane, hit));  // parallel
  OdGeLine3d common;
  ASSERT_TRUE(plane.intersectWith(OdGePlane(OdGePoint3d(7, 0, 0), OdGeVector3d(1, 0, 1)), common));
  EXPECT_TRUE(plane.isOn(common.pointOnLine()));
  EXPECT_TRUE(OdGePlane(OdGePoint3d(7, 0, 0), OdGeVector3d(1, 0, 1)).isOn(common.evalPoint(3.0)));
  EXPECT_TRUE(common.direction().isParallelTo(OdGeVector3d::kYAxis));
}

TEST(GeLinearEnt, TransformReverseAndKinds) {
  OdGeLineSeg3d seg(OdGePoint3d(1, 0, 0), OdGePoint3d(2, 0, 0));
  seg.transformBy(OdGeMatrix3d::rotation(OdaPI2, OdGeVector3d::kZAxis) * OdGeMatrix3d::scaling(3.0));
  EXPECT_TRUE(pointsNear(seg.startPoint(), OdGePoint3d(0, 3, 0), 1e-15));
  EXPECT_TRUE(pointsNear(seg.endPoint(), OdGePoint3d(0, 6, 0), 1e-15));
  seg.reverseParam();
  EXPECT_TRUE(pointsNear(seg.startPoint(), OdGePoint3d(0, 6, 0), 1e-15));
  EXPECT_THROW(OdGeRay3d().reverseParam(), OdError);
  OdGePoint3d end;
  EXPECT_FALSE(OdGeRay3d().hasEndPoint(end));
  EXPECT_TRUE(OdGeRay3d(OdGePoint3d(1, 2, 3), OdGeVector3d::kXAxis).hasStartPoint(end));
  EXPECT_TRUE(pointsNear(end, OdGePoint3d(1, 2, 3), 0.0));
  EXPECT_FALSE(OdGeLine3d().geomExtents().isValidExtents());

  // Run-time kinds, through base references.
  const OdGeLineSeg2d seg2d;
  const OdGeEntity2d& entity2d = seg2d;
  EXPECT_EQ(entity2d.type(), OdGe::kLineSeg2d);
  for (OdGe::EntityId kind : {OdGe::kLineSeg2d, OdGe::kLinearEnt2d, OdGe::kCurve2d, OdGe::kEntity2d}) {
    EXPECT_TRUE(entity2d.isKindOf(kind)) << kind;
  }
  EXPECT_FALSE(entity2d.isKindOf(OdGe::kLine2d));
  EXPECT_FALSE(entity2d.isKindOf(OdGe::kEntity3d));
  const OdGeCircArc3d arc;
  const OdGeEntity3d& entity3d = arc;
  EXPECT_TRUE(entity3d.isKindOf(OdGe::kCurve3d));
  EXPECT_FALSE(entity3d.isKindOf(OdGe::kLinearEnt3d));
  EXPECT_TRUE(OdGePlane().isKindOf(OdGe::kEntity3d));
  EXPECT_FALSE(OdGePlane().isKindOf(OdGe::kCurve3d));
  // copy() keeps the concrete kind and the geometry.
  const OdGeCurve3d& curve = OdGeEllipArc3d(OdGePoint3d(1, 2, 3), OdGeVector3d::kXAxis, OdGeVector3d::kYAxis, 4, 2);
  OdGeEntity3d* copy = curve.copy();
  EXPECT_EQ(copy->type(), OdGe::kEllipArc3d);
  EXPECT_TRUE(copy->isOn(OdGePoint3d(5, 2, 3)));
  delete copy;
}

TEST(GeLineSeg2d, ShallowTouchCountsByDistanceNotByParameter) {
  const OdGeTol tol(1e-6, 1e-6);
  const OdGeLineSeg2d base(OdGePoint2d(0, 0), OdGePoint2d(10, 0));
  const OdGeVector2d shallow = OdGeVector2d(1.0, -1e-3).normal() * 5.0;  // descending towards the base
  OdGePoint2d hit;
  // The end lies within tolerance of the base although the lines cross about 1e-3 further on.
  const OdGePoint2d nearEnd(4.0, 0.9e-6);
  const OdGeLineSeg2d touching(nearEnd - shallow, nearEnd);
  EXPECT_TRUE(base.intersectWith(touching, hit, tol));
  EXPECT_TRUE(base.isOn(hit, tol));
  EXPECT_TRUE(touching.intersectWith(base, hit, tol));
  const OdGePoint2d farEnd(4.0, 1.1e-6);
  const OdGeLineSeg2d missing(farEnd - shallow, farEnd);
  EXPECT_FALSE(base.intersectWith(missing, hit, tol));
  EXPECT_FALSE(missing.intersectWith(base, hit, tol));
}

TEST(GeLinearEnt, FarFromTheOriginComputedPointsStayOn) {
  // Survey coordinates: doubles resolve about 5e-10 here, coarser than the default tolerance.
  GeRandom random;
  const OdGePoint3d site(5e5, 3e6, 120.0);
  for (int i = 0; i < 500; ++i) {
    const OdGePoint3d a = site + random.point(1000.0).asVector();
    const OdGePoint3d b = site + random.point(1000.0).asVector();
    const OdGePoint3d far = site + random.point(1000.0).asVector();
    const double t = random.uniform(0.0, 1.0);
    OdGePoint2d hit2d;
    const OdGeLineSeg2d flat(a.convert2d(), b.convert2d());
    ASSERT_TRUE(flat.isOn(flat.evalPoint(t)));
    ASSERT_TRUE(flat.intersectWith(OdGeLineSeg2d(flat.evalPoint(t), far.convert2d()), hit2d)) << i;
    OdGePoint3d hit;
    const OdGeLineSeg3d seg(a, b);
    ASSERT_TRUE(seg.intersectWith(OdGeLineSeg3d(seg.evalPoint(t), far), hit)) << i;
    EXPECT_TRUE(pointsNear(hit, seg.evalPoint(t), 1e-8));
  }
  // The raised floor stays far below drawing precision.
  const OdGeLineSeg3d seg(site, site + OdGeVector3d(100, 0, 0));
  EXPECT_FALSE(seg.isOn(site + OdGeVector3d(50, 1e-7, 0)));
}
