// Lightweight polylines: bulged segments (explode, areas, extents, closest
// points), the plane of a (0,0,-1) normal, transforms and the LWPOLYLINE groups.
#include <cmath>

#include "DbPolyline.h"
#include "Ge/GeOcs.h"
#include "Ge/GePlane.h"
#include "db_test_support.h"

using namespace curves_test;

namespace {

// (0,0) -[bulge 1]- (2,0) -[bulge -0.5]- (4,0) - (4,2) - back to the start.
OdDbPolylinePtr bulgedPolyline() {
  OdDbPolylinePtr pline = OdDbPolyline::createObject();
  pline->addVertexAt(0, OdGePoint2d(0, 0), 1.0);
  pline->addVertexAt(1, OdGePoint2d(2, 0), -0.5);
  pline->addVertexAt(2, OdGePoint2d(4, 0));
  pline->addVertexAt(3, OdGePoint2d(4, 2));
  pline->setClosed(true);
  return pline;
}

// The 2 x 2 square, counter-clockwise, its right side bulged by `bulge`.
OdDbPolylinePtr squareWithBulge(double bulge) {
  OdDbPolylinePtr pline = OdDbPolyline::createObject();
  const OdGePoint2d corners[] = {{0, 0}, {2, 0}, {2, 2}, {0, 2}};
  for (unsigned i = 0; i < 4; ++i) pline->addVertexAt(i, corners[i], i == 1 ? bulge : 0.0);
  pline->setClosed(true);
  return pline;
}

OdGePoint3d vertexOf(const OdDbPolyline& pline, unsigned index) {
  OdGePoint3d p;
  EXPECT_EQ(pline.getPointAt(index, p), eOk);
  return p;
}

}  // namespace

TEST(CurvesPolyline, ExplodedArcsJoinTheVerticesAndBulgeToTheRightSide) {
  for (const OdGeVector3d& normal : {OdGeVector3d(0, 0, 1), OdGeVector3d(0, 0, -1), OdGeVector3d(1, 2, 3)}) {
    OdDbPolylinePtr pline = bulgedPolyline();
    pline->setNormal(normal);
    pline->setElevation(5);
    pline->setThickness(0.5);
    pline->setColorIndex(3);
    OdRxObjectPtrArray pieces;
    ASSERT_EQ(pline->explode(pieces), eOk);
    ASSERT_EQ(pieces.size(), 4u);

    // Positive bulge: the arc runs from vertex 0 to vertex 1.
    OdDbArcPtr first = OdDbArc::cast(pieces[0].get());
    ASSERT_TRUE(first.get());
    OdGePoint3d start, end;
    first->getStartPoint(start);
    first->getEndPoint(end);
    EXPECT_TRUE(near(start, vertexOf(*pline, 0)));
    EXPECT_TRUE(near(end, vertexOf(*pline, 1)));
    EXPECT_TRUE(near(OdGePoint3d::asPoint(first->normal()), OdGePoint3d::asPoint(pline->normal())));
    // Its middle is the polyline's middle of that segment (below the chord in the plane).
    double p0, p1;
    first->getStartParam(p0);
    first->getEndParam(p1);
    OdGePoint3d middle;
    first->getPointAtParam(0.5 * (p0 + p1), middle);
    EXPECT_TRUE(near(middle, pointAt(*pline, 0.5)));
    EXPECT_TRUE(near(middle, odgeOcsToWcs(OdGePoint2d(1, -1), 5, normal)));

    // Negative bulge: the arc (always counter-clockwise) runs from vertex 2 back to vertex 1.
    OdDbArcPtr second = OdDbArc::cast(pieces[1].get());
    ASSERT_TRUE(second.get());
    second->getStartPoint(start);
    second->getEndPoint(end);
    EXPECT_TRUE(near(start, vertexOf(*pline, 2)));
    EXPECT_TRUE(near(end, vertexOf(*pline, 1)));
    second->getStartParam(p0);
    second->getEndParam(p1);
    second->getPointAtParam(0.5 * (p0 + p1), middle);
    EXPECT_TRUE(near(middle, pointAt(*pline, 1.5)));
    EXPECT_GT(odgeWcsToOcs(middle, normal).y, 0.0);

    // Straight segments, the closing one included; all carry the polyline's properties.
    OdDbLinePtr closing = OdDbLine::cast(pieces[3].get());
    ASSERT_TRUE(closing.get());
    EXPECT_TRUE(near(closing->startPoint(), vertexOf(*pline, 3)));
    EXPECT_TRUE(near(closing->endPoint(), vertexOf(*pline, 0)));
    for (const auto& piece : pieces) {
      auto* entity = static_cast<OdDbEntity*>(piece.get());
      EXPECT_EQ(entity->colorIndex(), 3);
    }
    EXPECT_DOUBLE_EQ(closing->thickness(), 0.5);
    EXPECT_DOUBLE_EQ(second->thickness(), 0.5);
  }
}

TEST(CurvesPolyline, AreaLengthAndExtentsCountTheBulges) {
  // Outward half circle (radius 1) on the right side: 4 + π/2; inward: 4 - π/2.
  OdDbPolylinePtr outward = squareWithBulge(1.0);
  OdDbPolylinePtr inward = squareWithBulge(-1.0);
  double area = 0;
  ASSERT_EQ(outward->getArea(area), eOk);
  EXPECT_NEAR(area, 4 + OdaPI2, 1e-12);
  ASSERT_EQ(inward->getArea(area), eOk);
  EXPECT_NEAR(area, 4 - OdaPI2, 1e-12);

  // Clockwise order gives the same area.
  OdDbPolylinePtr clockwise = OdDbPolyline::createObject();
  const OdGePoint2d corners[] = {{0, 0}, {0, 2}, {2, 2}, {2, 0}};
  for (unsigned i = 0; i < 4; ++i) clockwise->addVertexAt(i, corners[i], i == 2 ? -1.0 : 0.0);
  clockwise->setClosed(true);
  ASSERT_EQ(clockwise->getArea(area), eOk);
  EXPECT_NEAR(area, 4 + OdaPI2, 1e-12);

  EXPECT_NEAR(outward->length(), 6 + OdaPI, 1e-12);
  OdGeExtents3d extents;
  ASSERT_EQ(outward->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(0, 0, 0), OdGePoint3d(3, 2, 0))));
  ASSERT_EQ(inward->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(0, 0, 0), OdGePoint3d(2, 2, 0))));

  // The bulged polyline's box holds its lower half circle.
  ASSERT_EQ(bulgedPolyline()->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(0, -1, 0), OdGePoint3d(4, 2, 0))));
}

TEST(CurvesPolyline, ClosestPointsAndParameters) {
  OdDbPolylinePtr pline = squareWithBulge(1.0);
  pline->setElevation(2);
  OdGePoint3d closest;
  ASSERT_EQ(pline->getClosestPointTo(OdGePoint3d(5, 1, 7), closest), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(3, 1, 2)));
  double param = 0;
  ASSERT_EQ(pline->getParamAtPoint(OdGePoint3d(3, 1, 2), param), eOk);
  EXPECT_NEAR(param, 1.5, 1e-12);
  EXPECT_EQ(pline->getParamAtPoint(OdGePoint3d(3, 1, 2.5), param), ePointNotOnEntity);
  double dist = 0;
  ASSERT_EQ(pline->getDistAtParam(1.5, dist), eOk);
  EXPECT_NEAR(dist, 2 + OdaPI2, 1e-12);
  ASSERT_EQ(pline->getParamAtDist(2 + OdaPI + 1, param), eOk);
  EXPECT_NEAR(param, 2.5, 1e-12);
  EXPECT_EQ(pline->getPointAtParam(4.5, closest), eInvalidInput);
  // The middle of the closing segment, and the point nearest a point inside the shape.
  EXPECT_TRUE(near(pointAt(*pline, 3.5), OdGePoint3d(0, 1, 2)));
  ASSERT_EQ(pline->getClosestPointTo(OdGePoint3d(1, 1.9, 0), closest), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(1, 2, 2)));
}

TEST(CurvesPolyline, TransformsMoveEveryPointWithTheMatrix) {
  const OdGeMatrix3d transforms[] = {
      OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(1, 0, 0), OdGeVector3d(1, 0, 0))),
      OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(0, 0, 3), OdGeVector3d(0, 0, 1))),
      OdGeMatrix3d::rotation(0.7, OdGeVector3d(1, 1, 0), OdGePoint3d(2, 0, 1)) * OdGeMatrix3d::scaling(1.5),
  };
  for (const OdGeMatrix3d& xform : transforms) {
    for (const OdGeVector3d& normal : {OdGeVector3d(0, 0, 1), OdGeVector3d(0, 0, -1)}) {
      OdDbPolylinePtr pline = bulgedPolyline();
      pline->setNormal(normal);
      pline->setElevation(-1);
      std::vector<OdGePoint3d> before;
      for (double t = 0; t <= 4.0; t += 0.25) before.push_back(pointAt(*pline, t));
      ASSERT_EQ(pline->transformBy(xform), eOk);
      for (size_t i = 0; i < before.size(); ++i)
        EXPECT_TRUE(near(pointAt(*pline, 0.25 * i), xform * before[i]));
    }
  }

  // Stretching arcs is refused; a polyline of lines can be stretched.
  OdDbPolylinePtr pline = bulgedPolyline();
  EXPECT_EQ(pline->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(2, 1, 1))), eCannotScaleNonUniformly);
  OdDbPolylinePtr lines = squareWithBulge(0.0);
  ASSERT_EQ(lines->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(2, 1, 1))), eOk);
  EXPECT_TRUE(near(vertexOf(*lines, 2), OdGePoint3d(4, 2, 0)));
  // Widths scale with a uniform transform.
  lines->setConstantWidth(0.5);
  ASSERT_EQ(lines->transformBy(OdGeMatrix3d::scaling(3)), eOk);
  double width = 0;
  ASSERT_EQ(lines->getConstantWidth(width), eOk);
  EXPECT_DOUBLE_EQ(width, 1.5);
}

TEST(CurvesPolyline, SegmentsAndEditing) {
  OdDbPolylinePtr pline = bulgedPolyline();
  EXPECT_EQ(pline->segType(0), OdDbPolyline::kArc);
  EXPECT_EQ(pline->segType(2), OdDbPolyline::kLine);
  OdGeCircArc2d arc;
  ASSERT_EQ(pline->getArcSegAt(1, arc), eOk);
  EXPECT_TRUE(arc.isClockWise());
  EXPECT_TRUE(arc.startPoint().isEqualTo(OdGePoint2d(2, 0)));
  OdGeLineSeg3d line;
  EXPECT_EQ(pline->getLineSegAt(0, line), eNotApplicable);
  ASSERT_EQ(pline->getLineSegAt(3, line), eOk);
  EXPECT_TRUE(near(line.endPoint(), OdGePoint3d(0, 0, 0)));

  EXPECT_EQ(pline->addVertexAt(9, OdGePoint2d()), eInvalidIndex);
  // A copy of vertex 1 inserted after it: the segment from vertex 1 has no length.
  ASSERT_EQ(pline->addVertexAt(2, OdGePoint2d(2, 0)), eOk);
  EXPECT_EQ(pline->segType(1), OdDbPolyline::kCoincident);
  EXPECT_EQ(pline->segType(2), OdDbPolyline::kLine);
  OdRxObjectPtrArray pieces;
  ASSERT_EQ(pline->explode(pieces), eOk);
  EXPECT_EQ(pieces.size(), 4u);
  ASSERT_EQ(pline->removeVertexAt(2), eOk);
  EXPECT_EQ(pline->numVerts(), 4u);
  pline->setClosed(false);
  EXPECT_EQ(pline->segType(3), OdDbPolyline::kEmpty);
}

TEST(CurvesPolyline, GroupsWriteWidthsOnlyWhereNeeded) {
  OdDbPolylinePtr pline = bulgedPolyline();
  pline->setConstantWidth(0.25);
  pline->setNormal(OdGeVector3d(0, 0, -1));
  pline->setElevation(3);
  pline->setVertexIdentifierAt(2, 7);
  OdDxfTagList tags = tagsOf(pline.get());
  auto count = std::find_if(tags.begin(), tags.end(), [](const OdDxfTag& t) { return t.code == 90; });
  ASSERT_NE(count, tags.end());
  EXPECT_EQ(count->i, 4);
  EXPECT_EQ(countCode(tags, 43), 1);
  EXPECT_EQ(countCode(tags, 40), 0);
  EXPECT_EQ(countCode(tags, 42), 2);
  EXPECT_EQ(countCode(tags, 91), 1);
  EXPECT_EQ(countCode(tags, 38), 1);
  EXPECT_EQ(countCode(tagsOf(pline.get(), OdDb::vAC21), 91), 0);
  EXPECT_TRUE(tagRoundTrip(pline.get()));

  // Read back, vertices without widths take the constant width.
  OdDbPolylinePtr back = readTags<OdDbPolyline>(tags);
  double start = 0, end = 0;
  ASSERT_EQ(back->getWidthsAt(3, start, end), eOk);
  EXPECT_DOUBLE_EQ(start, 0.25);
  EXPECT_TRUE(near(vertexOf(*back, 0), vertexOf(*pline, 0)));

  // Varying widths: per-vertex groups and no constant width.
  pline->setWidthsAt(1, 0.0, 1.0);
  tags = tagsOf(pline.get());
  EXPECT_EQ(countCode(tags, 43), 0);
  EXPECT_EQ(countCode(tags, 40), 4);
  EXPECT_EQ(countCode(tags, 41), 4);
  EXPECT_TRUE(tagRoundTrip(pline.get()));
  OdDbPolylinePtr filed;
  ASSERT_TRUE(filerRoundTrip(pline.get(), &filed));
  EXPECT_EQ(filed->numVerts(), 4u);
  EXPECT_DOUBLE_EQ(filed->getBulgeAt(1), -0.5);
}
