// Identities of 2-d and 3-d transformation matrices and of object coordinate systems.
#include "Ge/GeConst.h"
#include "Ge/GeLine3d.h"
#include "Ge/GeLineSeg2d.h"
#include "Ge/GeMatrix2d.h"
#include "Ge/GeOcs.h"
#include "Ge/GePlane.h"
#include "OdResult.h"
#include "ge/GeTestSupport.h"

namespace {

// Random matrix with axes of lengths 0.5 to 2 at least 30 degrees from each other's planes.
OdGeMatrix3d wellConditioned(GeRandom& random) {
  for (;;) {
    OdGeVector3d x = random.unitVector() * random.uniform(0.5, 2.0);
    OdGeVector3d y = random.unitVector() * random.uniform(0.5, 2.0);
    OdGeVector3d z = random.unitVector() * random.uniform(0.5, 2.0);
    const double volume = std::fabs(x.crossProduct(y).dotProduct(z)) / (x.length() * y.length() * z.length());
    if (volume < 0.5) continue;
    OdGeMatrix3d m;
    return m.setCoordSystem(random.point(), x, y, z);
  }
}

}  // namespace

TEST(GeMatrix3d, InverseTimesMatrixIsIdentity) {
  GeRandom random;
  for (int i = 0; i < 200; ++i) {
    OdGeMatrix3d m = wellConditioned(random);
    if (i % 4 == 0) {
      // A perspective row goes through the general inversion.
      m.entry[3][0] = random.uniform(-0.01, 0.01);
      m.entry[3][2] = random.uniform(-0.01, 0.01);
    }
    const OdGeMatrix3d inverse = m.inverse();
    EXPECT_TRUE(matricesNear(inverse * m, OdGeMatrix3d::kIdentity, 1e-11)) << "matrix " << i;
    EXPECT_TRUE(matricesNear(m * inverse, OdGeMatrix3d::kIdentity, 1e-11)) << "matrix " << i;
    EXPECT_NEAR(m.det() * inverse.det(), 1.0, 1e-11);
  }
  // Zeros on the diagonal need row exchanges.
  OdGeMatrix3d swapped;
  swapped.entry[0][0] = swapped.entry[1][1] = 0.0;
  swapped.entry[0][1] = swapped.entry[1][0] = 1.0;
  swapped.entry[3][3] = 0.0;
  swapped.entry[3][2] = 1.0;
  swapped.entry[2][3] = 1.0;
  swapped.entry[2][2] = 0.0;
  EXPECT_TRUE(matricesNear(swapped.inverse() * swapped, OdGeMatrix3d::kIdentity, 1e-15));
}

TEST(GeMatrix3d, SingularityDoesNotDependOnScale) {
  // Tiny and huge uniform scales are perfectly invertible.
  EXPECT_FALSE(OdGeMatrix3d::scaling(1e-6).isSingular());
  EXPECT_FALSE(OdGeMatrix3d::scaling(1e6, OdGePoint3d(1e8, 0, 0)).isSingular());
  EXPECT_TRUE(matricesNear(OdGeMatrix3d::scaling(1e-6).inverse(), OdGeMatrix3d::scaling(1e6), 1e-6));

  OdGeMatrix3d flat;
  flat.setCoordSystem(OdGePoint3d::kOrigin, OdGeVector3d(1, 0, 0), OdGeVector3d(0, 1, 0), OdGeVector3d(1, 1, 0));
  EXPECT_TRUE(flat.isSingular());
  OdGeMatrix3d result;
  EXPECT_FALSE(flat.inverse(result));
  EXPECT_THROW(flat.inverse(), OdError);
  EXPECT_TRUE(OdGeMatrix3d::scaling(OdGeScale3d(1.0, 0.0, 1.0)).isSingular());
  // Nearly dependent axes are singular at a coarser tolerance only.
  flat.entry[2][2] = 1e-8;
  EXPECT_FALSE(flat.isSingular());
  EXPECT_TRUE(flat.isSingular(OdGeTol(1e-10, 1e-6)));
}

TEST(GeMatrix3d, RotationsCompose) {
  GeRandom random;
  for (int i = 0; i < 50; ++i) {
    const OdGeVector3d axis = random.unitVector();
    const OdGePoint3d center = random.point();
    const double a = random.uniform(-7.0, 7.0);
    const double b = random.uniform(-7.0, 7.0);
    const OdGeMatrix3d composed = OdGeMatrix3d::rotation(a, axis, center) * OdGeMatrix3d::rotation(b, axis, center);
    EXPECT_TRUE(matricesNear(composed, OdGeMatrix3d::rotation(a + b, axis, center), 1e-11));
    const OdGeMatrix3d rotation = OdGeMatrix3d::rotation(a, axis, center);
    EXPECT_TRUE(pointsNear(rotation * center, center, 1e-12));
    EXPECT_TRUE(rotation.isUniScaledOrtho());
    EXPECT_NEAR(rotation.det(), 1.0, 1e-12);
    // A rotation's inverse is the opposite rotation.
    EXPECT_TRUE(matricesNear(rotation.inverse(), OdGeMatrix3d::rotation(-a, axis, center), 1e-11));
  }
  // Counter-clockwise about the axis, right-hand rule.
  EXPECT_TRUE(pointsNear(OdGeMatrix3d::rotation(OdaPI2, OdGeVector3d::kZAxis, OdGePoint3d(1, 1, 0)) *
                             OdGePoint3d(2, 1, 5),
                         OdGePoint3d(1, 2, 5), 1e-15));
  // Products apply the right factor first.
  const OdGeMatrix3d move = OdGeMatrix3d::translation(OdGeVector3d(10, 0, 0));
  const OdGeMatrix3d turn = OdGeMatrix3d::rotation(OdaPI2, OdGeVector3d::kZAxis);
  EXPECT_TRUE(pointsNear((turn * move) * OdGePoint3d::kOrigin, OdGePoint3d(0, 10, 0), 1e-14));
  OdGeMatrix3d pre = move;
  EXPECT_TRUE(matricesNear(pre.preMultBy(turn), turn * move, 0.0));
  OdGeMatrix3d post = move;
  EXPECT_TRUE(matricesNear(post.postMultBy(turn), move * turn, 0.0));
}

TEST(GeMatrix3d, MirroringsAreInvolutions) {
  const OdGePlane plane(OdGePoint3d(1, 2, 3), OdGeVector3d(1, -2, 2));
  const OdGeMatrix3d mirror = OdGeMatrix3d::mirroring(plane);
  EXPECT_TRUE(matricesNear(mirror * mirror, OdGeMatrix3d::kIdentity, 1e-14));
  EXPECT_NEAR(mirror.det(), -1.0, 1e-14);
  EXPECT_TRUE(mirror.isUniScaledOrtho());
  const OdGePoint3d onPlane = plane.evalPoint(OdGePoint2d(3.0, -4.0));
  EXPECT_TRUE(pointsNear(mirror * onPlane, onPlane, 1e-13));
  const OdGePoint3d off = onPlane + plane.normal() * 2.0;
  EXPECT_TRUE(pointsNear(mirror * off, onPlane - plane.normal() * 2.0, 1e-13));

  const OdGeLine3d line(OdGePoint3d(0, 0, 1), OdGeVector3d(0, 0, 2));
  EXPECT_TRUE(pointsNear(OdGeMatrix3d::mirroring(line) * OdGePoint3d(3, 4, 7), OdGePoint3d(-3, -4, 7), 1e-14));
  EXPECT_TRUE(
      pointsNear(OdGeMatrix3d::mirroring(OdGePoint3d(1, 1, 1)) * OdGePoint3d(3, 0, 1), OdGePoint3d(-1, 2, 1), 1e-15));
}

TEST(GeMatrix3d, ScaleAndOrthogonality) {
  const OdGeMatrix3d turn = OdGeMatrix3d::rotation(0.7, OdGeVector3d(1, 2, 3));
  EXPECT_TRUE((turn * OdGeMatrix3d::scaling(2.5, OdGePoint3d(4, 5, 6))).isUniScaledOrtho());
  EXPECT_NEAR((turn * OdGeMatrix3d::scaling(2.5)).scale(), 2.5, 1e-14);
  const OdGeMatrix3d stretched = turn * OdGeMatrix3d::scaling(OdGeScale3d(1.0, 3.0, 2.0));
  EXPECT_FALSE(stretched.isUniScaledOrtho());
  EXPECT_TRUE(stretched.isScaledOrtho());
  EXPECT_NEAR(stretched.scale(), 3.0, 1e-14);
  OdGeScale3d extracted;
  EXPECT_TRUE(extracted.extractScale(stretched).isEqualTo(OdGeScale3d(1.0, 3.0, 2.0), OdGeTol(1e-12, 1e-12)));
  OdGeMatrix3d shear;
  shear.entry[0][1] = 0.5;
  EXPECT_FALSE(shear.isScaledOrtho());
  EXPECT_FALSE(shear.isUniScaledOrtho());
  EXPECT_FALSE(shear.isSingular());
}

TEST(GeMatrix3d, AlignCoordSysMapsCoordinates) {
  GeRandom random;
  const OdGePoint3d fromOrigin = random.point();
  const OdGeVector3d fx = random.unitVector();
  const OdGeVector3d fy = fx.perpVector();
  const OdGeVector3d fz = fx.crossProduct(fy);
  const OdGePoint3d toOrigin = random.point();
  const OdGeVector3d tx(0, 2, 0), ty(-2, 0, 0), tz(0, 0, 2);
  const OdGeMatrix3d align = OdGeMatrix3d::alignCoordSys(fromOrigin, fx, fy, fz, toOrigin, tx, ty, tz);
  for (int i = 0; i < 10; ++i) {
    const OdGePoint3d c = random.point(10.0);
    EXPECT_TRUE(pointsNear(align * (fromOrigin + fx * c.x + fy * c.y + fz * c.z),
                           toOrigin + tx * c.x + ty * c.y + tz * c.z, 1e-11));
  }
}

TEST(GeOcs, ArbitraryAxisMatrixIsOrthonormalAndMapsZToTheNormal) {
  GeRandom random;
  for (int i = 0; i < 100; ++i) {
    const OdGeVector3d normal = random.unitVector() * random.uniform(0.5, 3.0);
    const OdGeMatrix3d toWorld = OdGeMatrix3d::planeToWorld(normal);
    EXPECT_TRUE(matricesNear(toWorld.transpose() * toWorld, OdGeMatrix3d::kIdentity, 1e-14));
    EXPECT_NEAR(toWorld.det(), 1.0, 1e-14);  // right-handed
    EXPECT_TRUE(vectorsNear(toWorld * OdGeVector3d::kZAxis, normal.normal(), 1e-15));
    EXPECT_TRUE(matricesNear(OdGeMatrix3d::worldToPlane(normal) * toWorld, OdGeMatrix3d::kIdentity, 1e-14));
    // The conversion helpers agree with the matrix and invert each other.
    const OdGePoint3d ocs = random.point();
    EXPECT_TRUE(pointsNear(odgeOcsToWcs(ocs, normal), toWorld * ocs, 1e-12));
    EXPECT_TRUE(pointsNear(odgeWcsToOcs(odgeOcsToWcs(ocs, normal), normal), ocs, 1e-12));
  }
  EXPECT_TRUE(OdGeMatrix3d::planeToWorld(OdGeVector3d(0, 0, 1)).isEqualTo(OdGeMatrix3d::kIdentity, OdGeTol(0, 0)));
  EXPECT_TRUE(OdGeMatrix3d::planeToWorld(OdGeVector3d(0, 0, 7)).isEqualTo(OdGeMatrix3d::kIdentity, OdGeTol(0, 0)));
}

TEST(GeOcs, OneSixtyFourthRulePicksTheSeedAxis) {
  // Extrusion (0, 0, -1): Ax = WorldY x N = (-1, 0, 0), the mirrored arcs of 2-d drawings.
  OdGeVector3d x, y, z;
  odgeOcsAxes(OdGeVector3d(0, 0, -1), x, y, z);
  EXPECT_TRUE(vectorsNear(x, OdGeVector3d(-1, 0, 0), 0.0));
  EXPECT_TRUE(vectorsNear(y, OdGeVector3d(0, 1, 0), 0.0));

  // Just inside 1/64 (after normalising) the x axis comes from world Y: close to world X.
  odgeOcsAxes(OdGeVector3d(0.0156, 0.0, 1.0), x, y, z);
  EXPECT_GT(x.x, 0.99);
  EXPECT_NEAR(x.y, 0.0, 1e-15);
  odgeOcsAxes(OdGeVector3d(0.0, -0.0156, 1.0), x, y, z);
  EXPECT_GT(x.x, 0.99);
  // Just outside in x alone, the x axis comes from world Z: along world Y.
  odgeOcsAxes(OdGeVector3d(0.0157, 0.0, 1.0), x, y, z);
  EXPECT_TRUE(vectorsNear(x, OdGeVector3d(0, 1, 0), 1e-15));
  odgeOcsAxes(OdGeVector3d(-0.0157, 0.0, -1.0), x, y, z);
  EXPECT_TRUE(vectorsNear(x, OdGeVector3d(0, -1, 0), 1e-15));
  // Both components below 1/64 in size but tilted diagonally still use world Y.
  odgeOcsAxes(OdGeVector3d(0.015, 0.015, 1.0), x, y, z);
  EXPECT_NEAR(x.dotProduct(OdGeVector3d::kYAxis.crossProduct(z).normal()), 1.0, 1e-15);
}

TEST(GeOcs, PolylineVerticesAndAnglesInOcs) {
  const OdGeVector3d normal(0, 0, -1);
  // OCS (2, 3) at elevation 4 lies at world (-2, 3, -4).
  EXPECT_TRUE(pointsNear(odgeOcsToWcs(OdGePoint2d(2, 3), 4.0, normal), OdGePoint3d(-2, 3, -4), 0.0));
  EXPECT_NEAR(odgeOcsAngle(OdGeVector3d(1, 0, 0), normal), OdaPI, 1e-15);
  EXPECT_NEAR(odgeOcsAngle(OdGeVector3d(0, 1, 5), normal), OdaPI2, 1e-15);
  // A zero normal stands for world Z.
  EXPECT_TRUE(pointsNear(odgeOcsToWcs(OdGePoint3d(1, 2, 3), OdGeVector3d()), OdGePoint3d(1, 2, 3), 0.0));
}

TEST(GeMatrix2d, InverseRotationAndMirroring) {
  GeRandom random;
  for (int i = 0; i < 50; ++i) {
    OdGeMatrix2d m;
    m.setCoordSystem(OdGePoint2d(random.uniform(-50, 50), random.uniform(-50, 50)),
                     OdGeVector2d(random.uniform(0.5, 2), random.uniform(-0.5, 0.5)),
                     OdGeVector2d(random.uniform(-0.5, 0.5), random.uniform(0.5, 2)));
    const OdGeMatrix2d product = m.inverse() * m;
    EXPECT_TRUE(product.isEqualTo(OdGeMatrix2d::kIdentity, OdGeTol(1e-12, 1e-12)));
    const double a = random.uniform(-4, 4);
    const double b = random.uniform(-4, 4);
    const OdGePoint2d center(random.uniform(-9, 9), random.uniform(-9, 9));
    EXPECT_TRUE((OdGeMatrix2d::rotation(a, center) * OdGeMatrix2d::rotation(b, center))
                    .isEqualTo(OdGeMatrix2d::rotation(a + b, center), OdGeTol(1e-12, 1e-12)));
  }
  const OdGeLineSeg2d diagonal(OdGePoint2d(0, 1), OdGePoint2d(1, 2));  // y = x + 1
  const OdGeMatrix2d mirror = OdGeMatrix2d::mirroring(diagonal);
  EXPECT_TRUE(pointsNear(mirror * OdGePoint2d(3, 0), OdGePoint2d(-1, 4), 1e-14));
  EXPECT_NEAR(mirror.det(), -1.0, 1e-15);
  EXPECT_TRUE((mirror * mirror).isIdentity());
  OdGeMatrix2d flat;
  flat.setCoordSystem(OdGePoint2d::kOrigin, OdGeVector2d(1, 2), OdGeVector2d(-2, -4));
  EXPECT_TRUE(flat.isSingular());
  EXPECT_THROW(flat.inverse(), OdError);
}
