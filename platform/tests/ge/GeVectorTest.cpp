// Tolerance rules and identities of points and vectors.
#include "Ge/GeConst.h"
#include "Ge/GePlane.h"
#include "ge/GeTestSupport.h"

TEST(GeTolerance, PointsAreEqualUpToTheirTolerance) {
  const OdGeTol tol(1e-6, 1e-6);
  const OdGePoint3d p(10.0, -20.0, 30.0);
  const OdGeVector3d diagonal = OdGeVector3d(1.0, 1.0, 1.0).normal();
  EXPECT_TRUE(p.isEqualTo(p + diagonal * 0.9e-6, tol));
  EXPECT_FALSE(p.isEqualTo(p + diagonal * 1.1e-6, tol));
  // The global default is 1e-10.
  EXPECT_TRUE(p.isEqualTo(p + diagonal * 0.9e-10));
  EXPECT_FALSE(p.isEqualTo(p + diagonal * 1.1e-10));
  EXPECT_TRUE(p == p + diagonal * 0.5e-10);
  const OdGePoint2d q(1.0, 2.0);
  EXPECT_TRUE(q.isEqualTo(q + OdGeVector2d(0.0, 0.9e-6), tol));
  EXPECT_FALSE(q.isEqualTo(q + OdGeVector2d(0.0, 1.1e-6), tol));
}

TEST(GeTolerance, GlobalToleranceCanBeChanged) {
  const OdGeTol saved = OdGeContext::gTol;
  OdGeContext::gTol.setEqualPoint(1e-3);
  const bool coarseEqual = OdGePoint3d(0, 0, 0).isEqualTo(OdGePoint3d(5e-4, 0, 0));
  OdGeContext::gTol = saved;
  EXPECT_TRUE(coarseEqual);
  EXPECT_FALSE(OdGePoint3d(0, 0, 0).isEqualTo(OdGePoint3d(5e-4, 0, 0)));
}

TEST(GeTolerance, DirectionTestsBoundTheAngle) {
  const OdGeTol tol(1e-10, 1e-6);
  const OdGeVector3d x = OdGeVector3d::kXAxis * 50.0;  // lengths play no part
  const OdGeVector3d nearlyX = OdGeVector3d(1.0, 0.9e-6, 0.0);
  const OdGeVector3d offX = OdGeVector3d(1.0, 1.1e-6, 0.0);
  EXPECT_TRUE(x.isParallelTo(nearlyX, tol));
  EXPECT_FALSE(x.isParallelTo(offX, tol));
  EXPECT_TRUE(x.isParallelTo(-nearlyX, tol));
  EXPECT_TRUE(x.isCodirectionalTo(nearlyX, tol));
  EXPECT_FALSE(x.isCodirectionalTo(-nearlyX, tol));

  const OdGeVector3d nearlyY(0.9e-6, 1.0, 0.0);
  const OdGeVector3d offY(1.1e-6, 1.0, 0.0);
  EXPECT_TRUE(x.isPerpendicularTo(nearlyY, tol));
  EXPECT_FALSE(x.isPerpendicularTo(offY, tol));

  // A zero vector has no direction.
  EXPECT_FALSE(OdGeVector3d::kIdentity.isParallelTo(x));
  EXPECT_FALSE(OdGeVector3d::kIdentity.isPerpendicularTo(x));
  EXPECT_TRUE(OdGeVector3d(0.5e-10, 0.0, 0.0).isZeroLength());
  EXPECT_FALSE(OdGeVector3d(2e-10, 0.0, 0.0).isZeroLength());

  EXPECT_TRUE(OdGeVector2d(3.0, 0.0).isParallelTo(OdGeVector2d(-1.0, 0.9e-6), tol));
  EXPECT_FALSE(OdGeVector2d(3.0, 0.0).isParallelTo(OdGeVector2d(-1.0, 1.1e-6), tol));
  EXPECT_TRUE(OdGeVector2d(3.0, 0.0).isPerpendicularTo(OdGeVector2d(0.9e-6, -2.0), tol));
}

TEST(GeVector, NormalizeLeavesZeroVectorsAlone) {
  EXPECT_TRUE(OdGeVector3d(3.0, 4.0, 12.0).normal().isEqualTo(OdGeVector3d(3.0, 4.0, 12.0) / 13.0));
  OdGeVector3d zero;
  zero.normalize();
  EXPECT_EQ(zero.length(), 0.0);
  OdGeVector2d tiny(1e-12, 0.0);
  tiny.normalize();
  EXPECT_EQ(tiny.x, 1e-12);
}

TEST(GeVector, AnglesAndTheirRanges) {
  const OdGeVector3d x = OdGeVector3d::kXAxis;
  const OdGeVector3d z = OdGeVector3d::kZAxis;
  const OdGeVector3d at120(std::cos(OdaToRadian(120)), std::sin(OdaToRadian(120)), 0.0);
  EXPECT_NEAR(x.angleTo(at120), OdaToRadian(120), 1e-14);
  EXPECT_NEAR(at120.angleTo(x), OdaToRadian(120), 1e-14);
  // Measured counter-clockwise about the reference.
  EXPECT_NEAR(x.angleTo(at120, z), OdaToRadian(120), 1e-14);
  EXPECT_NEAR(x.angleTo(at120, -z), OdaToRadian(240), 1e-14);
  EXPECT_NEAR(at120.angleTo(x, z), OdaToRadian(240), 1e-14);
  EXPECT_NEAR(x.angleTo(-x, z), OdaPI, 1e-14);
  EXPECT_EQ(x.angleTo(x, z), 0.0);

  EXPECT_NEAR(OdGeVector2d(-1.0, -1.0).angle(), OdaToRadian(225), 1e-14);
  // Just below the x axis rounds to a full turn, which must come back as 0.
  EXPECT_GE(OdGeVector2d(1.0, -1e-300).angle(), 0.0);
  EXPECT_LT(OdGeVector2d(1.0, -1e-300).angle(), Oda2PI);
  EXPECT_NEAR(OdGeVector2d(1.0, 0.0).angleTo(OdGeVector2d(-1.0, -1.0)), OdaToRadian(135), 1e-14);
  EXPECT_NEAR(odgeNormalizeAngle(-OdaPI2), 1.5 * OdaPI, 1e-15);
  EXPECT_NEAR(odgeNormalizeAngle(5.0 * OdaPI), OdaPI, 1e-14);
}

TEST(GeVector, RotationsComposeAndKeepLengths) {
  GeRandom random;
  for (int i = 0; i < 50; ++i) {
    const OdGeVector3d axis = random.unitVector();
    const OdGeVector3d v = random.unitVector() * random.uniform(0.1, 10.0);
    const double a = random.uniform(-4.0, 4.0);
    const double b = random.uniform(-4.0, 4.0);
    OdGeVector3d twice = v;
    twice.rotateBy(a, axis).rotateBy(b, axis);
    OdGeVector3d once = v;
    once.rotateBy(a + b, axis);
    EXPECT_TRUE(vectorsNear(twice, once, 1e-12));
    EXPECT_NEAR(once.length(), v.length(), 1e-12);
    // The component along the axis does not change, and the turn is counter-clockwise.
    EXPECT_NEAR(once.dotProduct(axis), v.dotProduct(axis), 1e-12);
  }
  OdGeVector3d x = OdGeVector3d::kXAxis;
  EXPECT_TRUE(vectorsNear(x.rotateBy(OdaPI2, OdGeVector3d::kZAxis), OdGeVector3d::kYAxis, 1e-15));
  OdGeVector2d x2 = OdGeVector2d::kXAxis;
  EXPECT_TRUE(x2.rotateBy(OdaPI2).isEqualTo(OdGeVector2d::kYAxis));
}

TEST(GeVector, PerpVectorIsAUnitPerpendicular) {
  GeRandom random;
  for (int i = 0; i < 50; ++i) {
    const OdGeVector3d v = random.unitVector() * random.uniform(0.01, 100.0);
    const OdGeVector3d perp = v.perpVector();
    EXPECT_TRUE(perp.isUnitLength());
    EXPECT_TRUE(perp.isPerpendicularTo(v));
  }
  EXPECT_TRUE(OdGeVector3d(0.0, 0.0, 5.0).perpVector().isEqualTo(OdGeVector3d::kXAxis));
  EXPECT_TRUE(OdGeVector3d::kIdentity.perpVector().isZeroLength());
  EXPECT_TRUE(OdGeVector2d(2.0, 1.0).perpVector().isEqualTo(OdGeVector2d(-1.0, 2.0)));
}

TEST(GePoint, PlaneProjectionsAndMirror) {
  const OdGePlane plane(OdGePoint3d(0.0, 0.0, 2.0), OdGeVector3d(0.0, 0.0, 3.0));
  const OdGePoint3d p(1.0, 2.0, 7.0);
  EXPECT_TRUE(p.orthoProject(plane).isEqualTo(OdGePoint3d(1.0, 2.0, 2.0)));
  EXPECT_TRUE(p.project(plane, OdGeVector3d(1.0, 0.0, 1.0)).isEqualTo(OdGePoint3d(-4.0, 2.0, 2.0)));
  // Along a direction parallel to the plane there is no projection.
  EXPECT_TRUE(p.project(plane, OdGeVector3d::kXAxis).isEqualTo(p));
  OdGePoint3d mirrored = p;
  EXPECT_TRUE(mirrored.mirror(plane).isEqualTo(OdGePoint3d(1.0, 2.0, -3.0)));
  EXPECT_TRUE(OdGePoint3d(OdGePoint2d(4.0, 5.0), 6.0).isEqualTo(OdGePoint2d(4.0, 5.0).convert3d(6.0)));
  EXPECT_TRUE(OdGePoint3d(4.0, 5.0, 6.0).convert2d().isEqualTo(OdGePoint2d(4.0, 5.0)));
}
