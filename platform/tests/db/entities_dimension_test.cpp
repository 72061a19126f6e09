// Dimensions: the class for each kind, measurements, transformations (with
// the dimension's own block) and round trips.
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDimension.h"
#include "db_test_support.h"

namespace {

using namespace entities_test;

constexpr double kPi = 3.14159265358979323846;

TEST(EntitiesDimension, ClassFollowsTheKindInGroup70) {
  const std::pair<int, OdRxClass*> kinds[] = {
      {0 | 32, OdDbRotatedDimension::desc()},       {1 | 32 | 128, OdDbAlignedDimension::desc()},
      {2, OdDb2LineAngularDimension::desc()},       {3 | 32, OdDbDiametricDimension::desc()},
      {4 | 32, OdDbRadialDimension::desc()},        {5 | 128, OdDb3PointAngularDimension::desc()},
      {6 | 32 | 64, OdDbOrdinateDimension::desc()},
  };
  for (const auto& [flags, cls] : kinds) {
    ASSERT_EQ(odDbDimensionClassForType(flags), cls) << flags;
    OdDbDimensionPtr dimension = OdDbDimension::cast(cls->create().get());
    EXPECT_EQ(dimension->dimensionType(), flags & 7);
    EXPECT_EQ(dimension->dxfName(), OdString(L"DIMENSION"));
  }
  EXPECT_EQ(odDbDimensionClassForType(7), nullptr);
  EXPECT_EQ(odDbDimensionClassForType(32 | 9), nullptr);
  EXPECT_EQ(odrxFindClassByDxfName(L"DIMENSION"), OdDbRotatedDimension::desc());
}

TEST(EntitiesDimension, MeasurementsOfEveryKind) {
  OdDbRotatedDimensionPtr rotated =
      new OdDbRotatedDimension(kPi / 2, OdGePoint3d(0, 0, 0), OdGePoint3d(3, 4, 0), OdGePoint3d(0, 6, 0));
  EXPECT_NEAR(rotated->measurement(), 4, 1e-12);
  EXPECT_NEAR(rotated->storedMeasurement(), 4, 1e-12);
  rotated->setRotation(0);
  EXPECT_NEAR(rotated->storedMeasurement(), 3, 1e-12);
  OdDbAlignedDimensionPtr aligned =
      new OdDbAlignedDimension(OdGePoint3d(0, 0, 0), OdGePoint3d(3, 4, 0), OdGePoint3d());
  EXPECT_NEAR(aligned->measurement(), 5, 1e-12);

  // Lines along x and along the diagonal: the arc point picks the sector.
  OdDb2LineAngularDimensionPtr twoLine =
      new OdDb2LineAngularDimension(OdGePoint3d(1, 0, 0), OdGePoint3d(5, 0, 0), OdGePoint3d(1, 1, 0),
                                    OdGePoint3d(4, 4, 0), OdGePoint3d(3, 1, 0));
  EXPECT_NEAR(twoLine->measurement(), kPi / 4, 1e-12);
  twoLine->setArcPoint(OdGePoint3d(-2, 1, 0));
  EXPECT_NEAR(twoLine->measurement(), 3 * kPi / 4, 1e-12);

  OdDb3PointAngularDimensionPtr threePoint = new OdDb3PointAngularDimension(
      OdGePoint3d(1, 1, 0), OdGePoint3d(3, 1, 0), OdGePoint3d(1, 4, 0), OdGePoint3d(2, 2, 0));
  EXPECT_NEAR(threePoint->measurement(), kPi / 2, 1e-12);
  threePoint->setArcPoint(OdGePoint3d(0, 0, 0));
  EXPECT_NEAR(threePoint->measurement(), 3 * kPi / 2, 1e-12);

  OdDbDiametricDimensionPtr diameter =
      new OdDbDiametricDimension(OdGePoint3d(1, 0, 0), OdGePoint3d(-1, 0, 0), 2);
  EXPECT_NEAR(diameter->measurement(), 2, 1e-12);
  OdDbRadialDimensionPtr radius = new OdDbRadialDimension(OdGePoint3d(5, 5, 0), OdGePoint3d(5, 8, 0), 1);
  EXPECT_NEAR(radius->measurement(), 3, 1e-12);

  OdDbOrdinateDimensionPtr ordinate =
      new OdDbOrdinateDimension(true, OdGePoint3d(7, 3, 0), OdGePoint3d(7, 9, 0));
  ordinate->setOrigin(OdGePoint3d(2, 1, 0));
  EXPECT_NEAR(ordinate->measurement(), 5, 1e-12);
  ordinate->useYAxis();
  EXPECT_NEAR(ordinate->measurement(), 2, 1e-12);
  // Drawn in a system turned by 90 degrees: its x axis is the plane's y axis.
  ordinate->setHorizontalRotation(-kPi / 2);
  ordinate->useXAxis();
  EXPECT_NEAR(ordinate->measurement(), 2, 1e-12);
}

TEST(EntitiesDimension, TransformMovesPointsTextAndDirections) {
  const OdGeMatrix3d xform = OdGeMatrix3d::translation(OdGeVector3d(10, -5, 2)) *
                             OdGeMatrix3d::rotation(kPi / 2, OdGeVector3d::kZAxis) * OdGeMatrix3d::scaling(2);
  OdDbRotatedDimensionPtr rotated =
      new OdDbRotatedDimension(0.3, OdGePoint3d(1, 1, 0), OdGePoint3d(6, 2, 0), OdGePoint3d(3, 5, 0));
  rotated->setTextPosition(OdGePoint3d(3.5, 5.5, 0));
  const double before = rotated->measurement();
  ASSERT_EQ(rotated->transformBy(xform), eOk);
  OdGePoint3d expected(6, 2, 0);
  EXPECT_TRUE(rotated->xLine2Point().isEqualTo(expected.transformBy(xform)));
  expected.set(3.5, 5.5, 0);
  EXPECT_TRUE(rotated->textPosition().isEqualTo(expected.transformBy(xform)));
  EXPECT_NEAR(rotated->rotation(), 0.3 + kPi / 2, 1e-12);
  EXPECT_NEAR(rotated->storedMeasurement(), 2 * before, 1e-12);

  // A plane point (the arc point) in a tilted plane, through a mirror.
  OdDb2LineAngularDimensionPtr angular =
      new OdDb2LineAngularDimension(OdGePoint3d(1, 0, 0), OdGePoint3d(5, 0, 0), OdGePoint3d(1, 1, 0),
                                    OdGePoint3d(4, 4, 0), OdGePoint3d(3, 1, 0));
  const OdGeMatrix3d mirror = OdGeMatrix3d::scaling(OdGeScale3d(1, 1, -1)) *
                              OdGeMatrix3d::rotation(1.1, OdGeVector3d(1, -2, 0.5), OdGePoint3d(2, 2, 2));
  ASSERT_EQ(angular->transformBy(mirror), eOk);
  expected.set(3, 1, 0);
  EXPECT_TRUE(angular->arcPoint().isEqualTo(expected.transformBy(mirror)));
  EXPECT_NEAR(angular->measurement(), kPi / 4, 1e-12);
  EXPECT_NEAR(angular->normal().length(), 1, 1e-12);
}

TEST(EntitiesDimension, DatabaseDimensionCarriesItsBlock) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  auto blocks = OdDbSymbolTable::cast(db->getBlockTableId().openObject(OdDb::kForWrite).get());
  OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::createObject();
  block->setName(L"*D1");
  OdDbObjectId blockId = blocks->add(block.get());
  OdDbLinePtr line = new OdDbLine(OdGePoint3d(0, 0, 0), OdGePoint3d(10, 0, 0));
  block->appendOdDbEntity(line.get());
  line->close();
  block->close();
  blocks->close();

  auto space = OdDbBlockTableRecord::cast(db->getModelSpaceId().openObject(OdDb::kForWrite).get());
  OdDbAlignedDimensionPtr dimension =
      new OdDbAlignedDimension(OdGePoint3d(0, 0, 0), OdGePoint3d(10, 0, 0), OdGePoint3d(10, 3, 0));
  dimension->setDimBlockId(blockId);
  space->appendOdDbEntity(dimension.get());
  OdGeExtents3d extents;
  ASSERT_EQ(dimension->getGeomExtents(extents), eOk);
  EXPECT_TRUE(extents.maxPoint().isEqualTo(OdGePoint3d(10, 0, 0)));  // the picture, not the points

  const OdGeMatrix3d xform = OdGeMatrix3d::rotation(kPi / 2, OdGeVector3d::kZAxis, OdGePoint3d(0, 0, 0)) *
                             OdGeMatrix3d::translation(OdGeVector3d(1, 1, 0));
  ASSERT_EQ(dimension->transformBy(xform), eOk);
  OdRxObjectPtrArray pieces;
  ASSERT_EQ(dimension->explode(pieces), eOk);
  ASSERT_EQ(pieces.size(), 1u);
  auto* moved = static_cast<OdDbLine*>(pieces[0].get());
  EXPECT_TRUE(moved->startPoint().isEqualTo(OdGePoint3d(-1, 1, 0)));
  EXPECT_TRUE(moved->endPoint().isEqualTo(OdGePoint3d(-1, 11, 0)));
  EXPECT_NEAR(dimension->distanceTo(OdGePoint3d(0, 5, 0)), 1, 1e-12);
}

TEST(EntitiesDimension, EveryKindSurvivesFilingAndTags) {
  OdDbRotatedDimensionPtr rotated = new OdDbRotatedDimension(0.25, OdGePoint3d(1, 2, 3), OdGePoint3d(7, 2, 3),
                                                             OdGePoint3d(4, 9, 3), L"<> mm");
  rotated->setTextPosition(OdGePoint3d(4, 9.5, 3));
  rotated->setTextRotation(0.1);
  rotated->setOblique(kPi / 6);
  rotated->setHorizontalRotation(-0.2);
  OdDbAlignedDimensionPtr aligned =
      new OdDbAlignedDimension(OdGePoint3d(), OdGePoint3d(3, 4, 0), OdGePoint3d(-1, 5, 0));
  aligned->setNormal(OdGeVector3d(0.2, -0.3, 1));
  aligned->setTextLineSpacingFactor(1.5);
  OdDbDimensionPtr all[] = {
      rotated,
      aligned,
      new OdDb2LineAngularDimension(OdGePoint3d(1, 0, 0), OdGePoint3d(5, 0, 0), OdGePoint3d(1, 1, 0),
                                    OdGePoint3d(4, 4, 0), OdGePoint3d(3, 1, 0)),
      new OdDb3PointAngularDimension(OdGePoint3d(1, 1, 0), OdGePoint3d(3, 1, 0), OdGePoint3d(1, 4, 0),
                                     OdGePoint3d(2, 2, 0)),
      new OdDbDiametricDimension(OdGePoint3d(1, 0, 0), OdGePoint3d(-1, 0, 0), 2.5),
      new OdDbRadialDimension(OdGePoint3d(5, 5, 0), OdGePoint3d(5, 8, 0), 1.25),
      new OdDbOrdinateDimension(true, OdGePoint3d(7, 3, 0), OdGePoint3d(7, 9, 0), L"X=<>"),
  };
  for (const auto& dimension : all) {
    SCOPED_TRACE(narrow(dimension->isA()->name()));
    expectRoundTrips(dimension.get());
    expectRoundTrips(dimension.get(), OdDb::vAC15);
  }
}

}  // namespace
