// Images and wipeouts: pixel coordinates against world coordinates, wipeouts
// framed from polygons, round trips (images and wipeouts of real files:
// dxf/entities_corpus_test.cpp).
#include "DbRasterImage.h"
#include "Ge/GeOcs.h"
#include "db_test_support.h"

namespace {

using namespace entities_test;

void expectSamePolygon(const OdGePoint3dArray& actual, const OdGePoint3dArray& expected, double tol) {
  ASSERT_EQ(actual.size(), expected.size());
  for (size_t i = 0; i < actual.size(); ++i) {
    EXPECT_NEAR(actual[i].distanceTo(expected[i]), 0, tol) << "vertex " << i;
  }
}

TEST(EntitiesImage, WipeoutFramesItsPolygon) {
  const OdGePoint3dArray polygon = {OdGePoint3d(2, 1, 0), OdGePoint3d(9, 3, 0), OdGePoint3d(7, 8, 0),
                                    OdGePoint3d(3, 6, 0)};
  OdDbWipeoutPtr wipeout = OdDbWipeout::createObject();
  ASSERT_EQ(wipeout->setFrom(polygon, OdGeVector3d::kZAxis), eOk);
  OdGePoint3d origin;
  OdGeVector3d u, v;
  wipeout->getOrientation(origin, u, v);
  EXPECT_TRUE(origin.isEqualTo(OdGePoint3d(2, 1, 0)));
  EXPECT_TRUE(u.isEqualTo(OdGeVector3d(7, 0, 0)));
  EXPECT_TRUE(v.isEqualTo(OdGeVector3d(0, 7, 0)));
  // Pixel coordinates of the one pixel run from -0.5 to 0.5, y downwards.
  EXPECT_NEAR(wipeout->clipBoundary()[0].x, -0.5, 1e-15);
  EXPECT_NEAR(wipeout->clipBoundary()[0].y, 0.5, 1e-15);
  OdGePoint3dArray outline;
  wipeout->getVertices(outline);
  OdGePoint3dArray closed = polygon;
  closed.append(polygon.first());
  expectSamePolygon(outline, closed, 1e-12);
  EXPECT_NEAR(wipeout->distanceTo(OdGePoint3d(5, 4, 3)), 3, 1e-12);
  EXPECT_NEAR(wipeout->distanceTo(OdGePoint3d(2, 0, 0)), 1, 1e-12);

  // In a tilted plane, then moved: the outline follows.
  const OdGeVector3d normal = OdGeVector3d(1, -1, 2).normal();
  OdGePoint3dArray tilted;
  for (const auto& p : polygon) tilted.append(odgeOcsToWcs(OdGePoint3d(p.x, p.y, 4), normal));
  ASSERT_EQ(wipeout->setFrom(tilted, normal), eOk);
  const OdGeMatrix3d xform =
      OdGeMatrix3d::rotation(0.4, OdGeVector3d(0, 1, 1)) * OdGeMatrix3d::translation(OdGeVector3d(1, 2, 3));
  ASSERT_EQ(wipeout->transformBy(xform), eOk);
  closed.clear();
  for (auto p : tilted) closed.append(p.transformBy(xform));
  closed.append(closed.first());
  wipeout->getVertices(outline);
  expectSamePolygon(outline, closed, 1e-12);
  expectRoundTrips(wipeout.get());

  EXPECT_EQ(wipeout->setFrom({OdGePoint3d(0, 0, 0), OdGePoint3d(1, 1, 0), OdGePoint3d(2, 2, 0)},
                             OdGeVector3d::kZAxis),
            eInvalidInput);
}

TEST(EntitiesImage, ImageStateSurvivesFilingAndTags) {
  OdDbRasterImagePtr image = OdDbRasterImage::createObject();
  image->setImageSize(OdGeVector2d(640, 480));
  ASSERT_EQ(image->setOrientation(OdGePoint3d(10, 20, 0), OdGeVector3d(64, 0, 0), OdGeVector3d(0, 48, 0)),
            eOk);
  ASSERT_EQ(image->setClipBoundary(OdDbRasterImage::kRect, {OdGePoint2d(9.5, 19.5), OdGePoint2d(99.5, 79.5)}),
            eOk);
  image->setClipped(true);
  image->setClipInverted(true);
  image->setBrightness(70);
  EXPECT_EQ(image->setFade(101), eOutOfRange);
  expectRoundTrips(image.get());
  // Pixel (9.5, 19.5) is the top left of the clip: 20 pixel rows below the top.
  OdGeExtents3d extents;
  image->getGeomExtents(extents);
  EXPECT_TRUE(extents.minPoint().isEqualTo(OdGePoint3d(11, 20 + 0.1 * 400, 0)));
  EXPECT_TRUE(extents.maxPoint().isEqualTo(OdGePoint3d(20, 20 + 0.1 * 460, 0)));
}

}  // namespace
