// Images and wipeouts: pixel coordinates against world coordinates (checked
// against the outlines a real file's proxy graphics carry), wipeouts framed
// from polygons, and both marker forms of wipeouts.
#include "DbRasterImage.h"
#include "Ge/GeOcs.h"
#include "db_test_support.h"

namespace {

using namespace entities_test;

template <class T>
OdSmartPtr<T> readEntity(const CorpusEntity& entity) {
  OdSmartPtr<T> object = T::createObject();
  TestTagContext ctx(entity.version);
  OdDbSchemaIo::readFields(object.get(), entity.body.data(), entity.body.data() + entity.body.size(), ctx);
  return object;
}

void expectSamePolygon(const OdGePoint3dArray& actual, const OdGePoint3dArray& expected, double tol) {
  ASSERT_EQ(actual.size(), expected.size());
  for (size_t i = 0; i < actual.size(); ++i) {
    EXPECT_NEAR(actual[i].distanceTo(expected[i]), 0, tol) << "vertex " << i;
  }
}

TEST(EntitiesImage, CorpusClipBoundaryLandsWhereTheFileDrawsIt) {
  std::vector<CorpusEntity> images;
  for (auto& entity : corpusEntities({L"IMAGE"})) {
    if (entity.file == "examples_dxf_image_viewports.dxf") images.push_back(std::move(entity));
  }
  if (images.size() < 3) GTEST_SKIP() << "no corpus";
  // The third image is clipped by a polygon; the file's proxy graphics draw
  // its outline through these world points.
  OdDbRasterImagePtr image = readEntity<OdDbRasterImage>(images[2]);
  EXPECT_EQ(image->clipBoundaryType(), OdDbRasterImage::kPoly);
  EXPECT_TRUE(image->isClipped());
  OdGePoint3dArray outline;
  ASSERT_EQ(image->getVertices(outline), eOk);
  ASSERT_EQ(outline.size(), 7u);
  EXPECT_NEAR(outline[0].distanceTo(OdGePoint3d(85.83591667682686, 82.7033656086756, 0)), 0, 1e-9);
  EXPECT_NEAR(outline[1].distanceTo(OdGePoint3d(93.57559893780633, 86.60518889726859, 0)), 0, 1e-9);
  const OdGePoint2d pixel = image->worldToPixel(outline[3]);
  EXPECT_NEAR(pixel.distanceTo(image->clipBoundary()[3]), 0, 1e-9);

  OdGePoint3d origin;
  OdGeVector3d u, v;
  image->getOrientation(origin, u, v);
  EXPECT_NEAR(u.length(), 1000 * 0.03527777777777778, 1e-12);
  EXPECT_NEAR(v.length(), 667 * 0.03527777777777778, 1e-12);
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

TEST(EntitiesImage, WipeoutReadsBothMarkerForms) {
  std::vector<CorpusEntity> wipeouts = corpusEntities({L"WIPEOUT"});
  if (wipeouts.empty()) GTEST_SKIP() << "no corpus";
  const OdDxfTagList& single = wipeouts.front().body;  // AcDbEntity, then the groups under AcDbWipeout
  OdDbWipeoutPtr fromFile = readEntity<OdDbWipeout>(wipeouts.front());
  OdGePoint3dArray outline;
  fromFile->getVertices(outline);
  expectSamePolygon(outline,
                    {OdGePoint3d(30, 30, 0), OdGePoint3d(70, 30, 0), OdGePoint3d(70, 70, 0),
                     OdGePoint3d(30, 70, 0), OdGePoint3d(30, 30, 0)},
                    1e-12);

  // The same groups under AcDbRasterImage followed by an empty AcDbWipeout part.
  OdDxfTagList twoMarkers;
  for (const auto& tag : single) {
    if (tag.code == 100 && tag.s == L"AcDbWipeout") {
      twoMarkers.push_back(OdDxfTag::str(100, L"AcDbRasterImage"));
    } else {
      twoMarkers.push_back(tag);
    }
  }
  twoMarkers.push_back(OdDxfTag::str(100, L"AcDbWipeout"));
  OdDbWipeoutPtr fromTwo = OdDbWipeout::createObject();
  TestTagContext ctx(wipeouts.front().version);
  OdDbSchemaIo::readFields(fromTwo.get(), twoMarkers.data(), twoMarkers.data() + twoMarkers.size(), ctx);
  expectSameFields(fromFile.get(), fromTwo.get());
  const OdDxfTagList written = writeTags(fromTwo.get(), ctx);
  EXPECT_EQ(tagsFrom(written, L"AcDbWipeout"), tagsFrom(single, L"AcDbWipeout"));
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
