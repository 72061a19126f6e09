// Points, solids, traces, faces, leaders, multilines, viewports and modeler
// entities: plane coordinates, geometry under transformations, round trips.
#include "DbLeader.h"
#include "DbMline.h"
#include "DbModelerGeometry.h"
#include "DbPoint.h"
#include "DbSolid.h"
#include "DbViewport.h"
#include "db_test_support.h"

namespace {

using namespace entities_test;

constexpr double kPi = 3.14159265358979323846;

TEST(EntitiesPoint, TransformCarriesThicknessAndFigureAngle) {
  OdDbPointPtr point = new OdDbPoint(OdGePoint3d(1, 2, 3));
  point->setThickness(2);
  point->setEcsRotation(0.5);
  expectRoundTrips(point.get());
  ASSERT_EQ(
      point->transformBy(OdGeMatrix3d::rotation(kPi / 2, OdGeVector3d::kZAxis) * OdGeMatrix3d::scaling(3)),
      eOk);
  EXPECT_TRUE(point->position().isEqualTo(OdGePoint3d(-6, 3, 9)));
  EXPECT_NEAR(point->thickness(), 6, 1e-12);
  EXPECT_NEAR(point->ecsRotation(), 0.5 + kPi / 2, 1e-12);
  EXPECT_NEAR(point->distanceTo(OdGePoint3d(-6, 4, 12)), 1, 1e-12);
  // Mirrored through the x-y plane the normal turns over.
  point->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(1, 1, -1)));
  EXPECT_TRUE(point->normal().isEqualTo(OdGeVector3d(0, 0, -1)));
  EXPECT_NEAR(point->thickness(), 6, 1e-12);
}

TEST(EntitiesSolid, CornersLiveInThePlaneOfTheNormal) {
  OdDbSolidPtr solid = OdDbSolid::createObject();
  solid->setNormal(OdGeVector3d(0, 0, -1));
  const OdGePoint3d corners[4] = {OdGePoint3d(0, 0, 5), OdGePoint3d(4, 0, 5), OdGePoint3d(0, 3, 5),
                                  OdGePoint3d(4, 3, 5)};
  for (OdUInt16 i = 0; i < 4; ++i) ASSERT_EQ(solid->setPointAt(i, corners[i]), eOk);
  EXPECT_EQ(solid->setPointAt(4, OdGePoint3d()), eInvalidIndex);
  // Stored in the plane's coordinates: the x axis of normal -z is -x, the elevation -5.
  TestTagContext ctx;
  solid->setDatabaseDefaults(ctx.database());
  const OdDxfTagList tags = tagsFrom(writeTags(solid.get(), ctx), L"AcDbTrace");
  ASSERT_GE(tags.size(), 3u);
  EXPECT_EQ(tagText(tags[2]), "11=-4.0,0.0,-5.0");
  expectRoundTrips(solid.get());

  // Corners 0, 1, 3, 2 bound the area; the third and fourth cross over.
  EXPECT_NEAR(solid->distanceTo(OdGePoint3d(3.5, 2.5, 7)), 2, 1e-12);
  EXPECT_NEAR(solid->distanceTo(OdGePoint3d(2, -1, 5)), 1, 1e-12);
  solid->setThickness(2);  // along -z
  OdGeExtents3d extents;
  solid->getGeomExtents(extents);
  EXPECT_TRUE(extents.minPoint().isEqualTo(OdGePoint3d(0, 0, 3)));
  EXPECT_TRUE(extents.maxPoint().isEqualTo(OdGePoint3d(4, 3, 5)));

  const OdGeMatrix3d xform = OdGeMatrix3d::rotation(0.8, OdGeVector3d(1, 1, 0), OdGePoint3d(1, 2, 3));
  ASSERT_EQ(solid->transformBy(xform), eOk);
  for (OdUInt16 i = 0; i < 4; ++i) {
    OdGePoint3d moved, expected = corners[i];
    solid->getPointAt(i, moved);
    EXPECT_NEAR(moved.distanceTo(expected.transformBy(xform)), 0, 1e-12) << i;
  }
  EXPECT_NEAR(solid->thickness(), 2, 1e-12);

  OdDbTracePtr trace =
      new OdDbTrace(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 0, 0), OdGePoint3d(0, 1, 0), OdGePoint3d(1, 1, 0));
  expectRoundTrips(trace.get());
  EXPECT_EQ(trace->dxfName(), OdString(L"TRACE"));
}

TEST(EntitiesFace, EdgesHideAndTheFaceMoves) {
  OdDbFacePtr face = new OdDbFace(OdGePoint3d(0, 0, 0), OdGePoint3d(2, 0, 0), OdGePoint3d(2, 2, 1),
                                  OdGePoint3d(0, 2, 1), true, false);
  bool visible = true;
  face->isEdgeVisibleAt(1, visible);
  EXPECT_FALSE(visible);
  face->makeEdgeInvisibleAt(3);
  face->makeEdgeVisibleAt(1);
  EXPECT_EQ(face->invisibleEdgeFlags(), 8);
  EXPECT_EQ(face->isEdgeVisibleAt(4, visible), eInvalidIndex);
  expectRoundTrips(face.get());
  face->transformBy(OdGeMatrix3d::translation(OdGeVector3d(0, 0, 10)));
  OdGePoint3d vertex;
  face->getVertexAt(2, vertex);
  EXPECT_TRUE(vertex.isEqualTo(OdGePoint3d(2, 2, 11)));
  EXPECT_NEAR(face->distanceTo(OdGePoint3d(1, -1, 10)), 1, 1e-12);
}

TEST(EntitiesLeader, VerticesAndAnnotationSurviveAndMove) {
  OdDbLeaderPtr leader = OdDbLeader::createObject();
  for (const auto& p : {OdGePoint3d(0, 0, 0), OdGePoint3d(3, 4, 0), OdGePoint3d(8, 4, 0)})
    leader->appendVertex(p);
  TestTagContext ctx;
  leader->attachAnnotation(ctx.idFromHandle(0x1F0), OdDbLeader::kMText);
  leader->setAnnotationSize(2.5, 12);
  leader->setAnnotationOffset(OdGeVector3d(0.5, 1, 0));
  expectRoundTrips(leader.get());
  leader->setDatabaseDefaults(ctx.database());
  const OdDxfTagList tags = tagsFrom(writeTags(leader.get(), ctx), L"AcDbLeader");
  const auto count = std::find_if(tags.begin(), tags.end(), [](const OdDxfTag& t) { return t.code == 76; });
  ASSERT_NE(count, tags.end());
  EXPECT_EQ(count->i, 3);
  EXPECT_EQ(tagText(*(count + 2)), "10=3.0,4.0,0.0");

  EXPECT_NEAR(leader->distanceTo(OdGePoint3d(5, 6, 0)), 2, 1e-12);
  leader->transformBy(OdGeMatrix3d::rotation(kPi / 2, OdGeVector3d::kZAxis));
  EXPECT_TRUE(leader->lastVertex().isEqualTo(OdGePoint3d(-4, 8, 0)));
  EXPECT_TRUE(leader->horizontalDirection().isEqualTo(OdGeVector3d(0, 1, 0)));
  EXPECT_TRUE(leader->annotationOffset().isEqualTo(OdGeVector3d(-1, 0.5, 0)));
  leader->detachAnnotation();
  EXPECT_EQ(leader->annotationType(), OdDbLeader::kNoAnnotation);
}

TEST(EntitiesMline, SegmentsMitersAndElementDistances) {
  OdDbMlinePtr mline = OdDbMline::createObject();
  mline->setNumElements(2);
  mline->appendSeg(OdGePoint3d(0, 0, 0));
  mline->appendSeg(OdGePoint3d(10, 0, 0));
  mline->appendSeg(OdGePoint3d(10, 10, 0));
  ASSERT_EQ(mline->numVertices(), 3);
  const OdDbMline::Vertex& corner = mline->vertexDataAt(1);
  EXPECT_TRUE(corner.direction.isEqualTo(OdGeVector3d(0, 1, 0)));
  // The miter at the corner halves the turn.
  EXPECT_TRUE(corner.miter.isEqualTo(OdGeVector3d(-1, 1, 0).normal()));
  EXPECT_EQ(corner.elements.size(), 2u);
  expectRoundTrips(mline.get());

  // Element distances read from tags: the first element 0.5 off the path.
  OdDbMlinePtr read = OdDbMline::createObject();
  const OdDxfTagList tags = {
      OdDxfTag::str(100, L"AcDbMline"), OdDxfTag::str(2, L"STANDARD"), OdDxfTag::real(40, 1.0),
      OdDxfTag::integer(70, 0),         OdDxfTag::integer(71, 1),      OdDxfTag::integer(72, 1),
      OdDxfTag::integer(73, 1),         OdDxfTag::point(10, 1, 1, 0),  OdDxfTag::point(210, 0, 0, 1),
      OdDxfTag::point(11, 1, 1, 0),     OdDxfTag::point(12, 1, 0, 0),  OdDxfTag::point(13, 0, 1, 0),
      OdDxfTag::integer(74, 1),         OdDxfTag::real(41, 0.5),       OdDxfTag::integer(75, 0)};
  TestTagContext ctx;
  OdDbSchemaIo::readFields(read.get(), tags.data(), tags.data() + tags.size(), ctx);
  ASSERT_EQ(read->numVertices(), 1);
  EXPECT_EQ(read->vertexDataAt(0).elements.at(0).parameters, (OdGeDoubleArray{0.5}));
  read->transformBy(OdGeMatrix3d::scaling(2));
  EXPECT_NEAR(read->vertexDataAt(0).elements.at(0).parameters[0], 1.0, 1e-12);
  EXPECT_NEAR(read->scale(), 2, 1e-12);
  EXPECT_TRUE(read->vertexAt(0).isEqualTo(OdGePoint3d(2, 2, 0)));
}

TEST(EntitiesViewport, ScaleAndFrame) {
  OdDbViewportPtr viewport = OdDbViewport::createObject();
  viewport->setCenterPoint(OdGePoint3d(100, 80, 0));
  viewport->setWidth(200);
  viewport->setHeight(120);
  viewport->setStatus(2);
  viewport->setNumber(2);
  viewport->setViewTarget(OdGePoint3d(5, 5, 0));
  viewport->setViewDirection(OdGeVector3d(1, -1, 1));
  viewport->setTwistAngle(0.25);
  ASSERT_EQ(viewport->setCustomScale(0.5), eOk);
  EXPECT_NEAR(viewport->viewHeight(), 240, 1e-12);
  expectRoundTrips(viewport.get());
  ASSERT_EQ(viewport->transformBy(OdGeMatrix3d::scaling(2, OdGePoint3d(0, 0, 0))), eOk);
  EXPECT_NEAR(viewport->customScale(), 1, 1e-12);
  EXPECT_EQ(viewport->transformBy(OdGeMatrix3d::rotation(0.1, OdGeVector3d::kZAxis)), eNotApplicable);
  OdGeExtents3d extents;
  viewport->getGeomExtents(extents);
  EXPECT_TRUE(extents.minPoint().isEqualTo(OdGePoint3d(0, 40, 0)));
  EXPECT_NEAR(viewport->distanceTo(OdGePoint3d(0, 100, 0)), 0, 1e-12);
  EXPECT_NEAR(viewport->distanceTo(OdGePoint3d(200, 160, 0)), 120, 1e-12);  // the middle is not the frame
}

TEST(EntitiesModeler, DataLinesAreKeptAndNotEvaluated) {
  OdDb3dSolidPtr solid = OdDb3dSolid::createObject();
  solid->setModelerData(1, {{1, L"400 0 1 0"}, {1, L"@33 Open Design"}, {3, L"continued line"}});
  expectRoundTrips(solid.get());
  expectRoundTrips(solid.get(), OdDb::vAC15);
  OdGeExtents3d extents;
  EXPECT_EQ(solid->getGeomExtents(extents), eInvalidExtents);
  EXPECT_EQ(solid->transformBy(OdGeMatrix3d::translation(OdGeVector3d(1, 0, 0))), eNotApplicable);

  // From R2013 on the entity may only point into the ACDSDATA section.
  const OdDxfTagList tags = {OdDxfTag::str(100, L"AcDbModelerGeometry"), OdDxfTag::integer(290, 1),
                             OdDxfTag::str(2, L"{0abfdbc8-4fc4-44af-abaa-db494e3f3389}"),
                             OdDxfTag::str(100, L"AcDb3dSolid"), OdDxfTag::handle(350, 0)};
  OdDbRegionPtr region = OdDbRegion::createObject();
  TestTagContext ctx(OdDb::vAC32);
  OdDbSchemaIo::readFields(region.get(), tags.data(), tags.data() + tags.size(), ctx);
  EXPECT_TRUE(region->hasDataInSection());
  EXPECT_EQ(region->dataId(), OdString(L"{0abfdbc8-4fc4-44af-abaa-db494e3f3389}"));
  EXPECT_FALSE(region->isNull());
}

}  // namespace
