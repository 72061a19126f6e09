// Axis-aligned boxes: the empty box, growth, containment and transformed boxes.
#include "Ge/GeConst.h"
#include "Ge/GeExtents2d.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GeMatrix2d.h"
#include "ge/GeTestSupport.h"

TEST(GeExtents3d, EmptyBoxIsInvalidAndNeutral) {
  OdGeExtents3d empty;
  EXPECT_FALSE(empty.isValidExtents());
  EXPECT_EQ(empty.minPoint().x, 1e20);
  EXPECT_EQ(empty.maxPoint().z, -1e20);
  EXPECT_FALSE(empty.contains(OdGePoint3d::kOrigin));
  EXPECT_TRUE(empty.isDisjoint(OdGeExtents3d(OdGePoint3d(-1, -1, -1), OdGePoint3d(1, 1, 1))));
  // Transforming or growing nothing stays nothing.
  empty.transformBy(OdGeMatrix3d::rotation(0.3, OdGeVector3d::kXAxis));
  empty.expandBy(OdGeVector3d(1, 1, 1));
  EXPECT_FALSE(empty.isValidExtents());

  OdGeExtents3d box;
  box.addPoint(OdGePoint3d(1, 2, 3));
  EXPECT_TRUE(box.isValidExtents());
  EXPECT_TRUE(box.minPoint().isEqualTo(box.maxPoint()));
  box.addExt(OdGeExtents3d());
  EXPECT_TRUE(box.maxPoint().isEqualTo(OdGePoint3d(1, 2, 3)));
  box.addPoint(OdGePoint3d(-1, 5, 0));
  EXPECT_TRUE(box.isEqualTo(OdGeExtents3d(OdGePoint3d(1, 2, 0), OdGePoint3d(-1, 5, 3))));
}

TEST(GeExtents3d, ContainmentAndDisjointnessUseThePointTolerance) {
  const OdGeExtents3d box(OdGePoint3d(0, 0, 0), OdGePoint3d(10, 10, 10));
  const OdGeTol tol(1e-6, 1e-6);
  EXPECT_TRUE(box.contains(OdGePoint3d(10 + 0.9e-6, 5, 5), tol));
  EXPECT_FALSE(box.contains(OdGePoint3d(10 + 1.1e-6, 5, 5), tol));
  EXPECT_FALSE(box.contains(OdGePoint3d(5, -1.1e-6, 5), tol));
  // Touching boxes share their face.
  EXPECT_FALSE(box.isDisjoint(OdGeExtents3d(OdGePoint3d(10, 0, 0), OdGePoint3d(20, 1, 1)), tol));
  EXPECT_FALSE(box.isDisjoint(OdGeExtents3d(OdGePoint3d(10 + 0.9e-6, 0, 0), OdGePoint3d(20, 1, 1)), tol));
  EXPECT_TRUE(box.isDisjoint(OdGeExtents3d(OdGePoint3d(10 + 1.1e-6, 0, 0), OdGePoint3d(20, 1, 1)), tol));
  EXPECT_TRUE(box.isDisjoint(OdGeExtents3d(OdGePoint3d(1, 1, 11), OdGePoint3d(2, 2, 12)), tol));
  EXPECT_TRUE(box.contains(OdGeExtents3d(OdGePoint3d(1, 1, 1), OdGePoint3d(10, 2, 3))));
  EXPECT_FALSE(box.contains(OdGeExtents3d(OdGePoint3d(1, 1, 1), OdGePoint3d(11, 2, 3))));
}

TEST(GeExtents3d, ExpandByGrowsTowardsTheVector) {
  OdGeExtents3d box(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 1, 1));
  box.expandBy(OdGeVector3d(2, -3, 0));
  EXPECT_TRUE(box.isEqualTo(OdGeExtents3d(OdGePoint3d(0, -3, 0), OdGePoint3d(3, 1, 1))));
}

TEST(GeExtents3d, TransformedBoxHoldsEveryTransformedCorner) {
  // A unit cube about the origin turned 45 degrees about z: the xy square grows to the diagonal.
  OdGeExtents3d cube(OdGePoint3d(-1, -1, -1), OdGePoint3d(1, 1, 1));
  cube.transformBy(OdGeMatrix3d::rotation(OdaPI4, OdGeVector3d::kZAxis));
  EXPECT_TRUE(cube.isEqualTo(OdGeExtents3d(OdGePoint3d(-std::sqrt(2.0), -std::sqrt(2.0), -1),
                                           OdGePoint3d(std::sqrt(2.0), std::sqrt(2.0), 1)),
                             OdGeTol(1e-14, 1e-14)));

  GeRandom random;
  for (int i = 0; i < 20; ++i) {
    const OdGeExtents3d box(random.point(), random.point());
    const OdGeMatrix3d m = OdGeMatrix3d::rotation(random.uniform(-3, 3), random.unitVector(), random.point()) *
                           OdGeMatrix3d::scaling(OdGeScale3d(random.uniform(-2, 2), 1.5, random.uniform(0.1, 3)));
    OdGeExtents3d moved = box;
    moved.transformBy(m);
    OdGeExtents3d fromCorners;
    for (int corner = 0; corner < 8; ++corner) {
      const OdGePoint3d p((corner & 1) ? box.maxPoint().x : box.minPoint().x,
                          (corner & 2) ? box.maxPoint().y : box.minPoint().y,
                          (corner & 4) ? box.maxPoint().z : box.minPoint().z);
      fromCorners.addPoint(m * p);
    }
    // Every corner touches the new box, and the box is no larger than its corners need.
    EXPECT_TRUE(moved.isEqualTo(fromCorners, OdGeTol(1e-10, 1e-10)));
    EXPECT_TRUE(moved.contains(m * box.center(), OdGeTol(1e-10, 1e-10)));
  }
}

TEST(GeExtents2d, BehavesLikeTheSpatialBox) {
  OdGeExtents2d box;
  EXPECT_FALSE(box.isValidExtents());
  box.addPoint(OdGePoint2d(2, 2)).addPoint(OdGePoint2d(4, 3));
  box.transformBy(OdGeMatrix2d::rotation(OdaPI2, OdGePoint2d(2, 2)));
  EXPECT_TRUE(box.isEqualTo(OdGeExtents2d(OdGePoint2d(1, 2), OdGePoint2d(2, 4)), OdGeTol(1e-14, 1e-14)));
  EXPECT_FALSE(box.isDisjoint(OdGeExtents2d(OdGePoint2d(2, 4), OdGePoint2d(3, 5))));
  EXPECT_TRUE(box.isDisjoint(OdGeExtents2d(OdGePoint2d(2.1, 4), OdGePoint2d(3, 5))));
}
