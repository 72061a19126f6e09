// Circles, arcs, rays and xlines: plane coordinates, true arc extents,
// transforms (mirroring, non-uniform scaling), closest points and filing.
#include <cmath>

#include "DbCurves.h"
#include "Ge/GePlane.h"
#include "db_test_support.h"

using namespace curves_test;

namespace {

constexpr double kDeg = OdaPI / 180.0;

OdGePoint3d middleOf(const OdDbCurve& curve) {
  double start, end;
  curve.getStartParam(start);
  curve.getEndParam(end);
  OdGePoint3d p;
  EXPECT_EQ(curve.getPointAtParam(0.5 * (start + end), p), eOk);
  return p;
}

}  // namespace

TEST(CurvesArc, ExtentsFollowTheQuadrantsTheArcCrosses) {
  // From 80° to 190°: passes the top (90°) and the left (180°) of its circle.
  OdDbArcPtr arc = OdDbArc::createObject();
  arc->setCenter(OdGePoint3d(1, 2, 0));
  arc->setRadius(3);
  arc->setStartAngle(80 * kDeg);
  arc->setEndAngle(190 * kDeg);
  OdGeExtents3d extents;
  ASSERT_EQ(arc->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(-2, 2 + 3 * std::sin(190 * kDeg), 0),
                                          OdGePoint3d(1 + 3 * std::cos(80 * kDeg), 5, 0))));

  // Across angle zero (300° to 30°): the rightmost point is on the arc.
  arc->setStartAngle(300 * kDeg);
  arc->setEndAngle(30 * kDeg);
  ASSERT_EQ(arc->getGeomExtents(extents), eOk);
  EXPECT_TRUE(
      near(extents, OdGeExtents3d(OdGePoint3d(1 + 3 * std::cos(300 * kDeg), 2 + 3 * std::sin(300 * kDeg), 0),
                                  OdGePoint3d(4, 2 + 3 * std::sin(30 * kDeg), 0))));

  // Thickness sweeps the box along the normal.
  arc->setThickness(2);
  ASSERT_EQ(arc->getGeomExtents(extents), eOk);
  EXPECT_DOUBLE_EQ(extents.maxPoint().z, 2.0);
}

TEST(CurvesArc, NormalDownKeepsPlaneCoordinatesAndWorldAccessors) {
  // With normal -Z the plane's x axis is world -X.
  OdDbArcPtr arc = OdDbArc::createObject();
  arc->setNormal(OdGeVector3d(0, 0, -1));
  arc->setCenter(OdGePoint3d(1, 2, 3));
  arc->setRadius(2);
  arc->setStartAngle(0);
  arc->setEndAngle(OdaPI2);
  EXPECT_TRUE(near(arc->center(), OdGePoint3d(1, 2, 3)));
  EXPECT_TRUE(near(startOf(*arc), OdGePoint3d(-1, 2, 3)));
  EXPECT_TRUE(near(endOf(*arc), OdGePoint3d(1, 4, 3)));

  // Files carry the plane coordinates of the centre and the angles in degrees.
  const OdDxfTagList tags = tagsOf(arc.get());
  auto center = std::find_if(tags.begin(), tags.end(), [](const OdDxfTag& t) { return t.code == 10; });
  ASSERT_NE(center, tags.end());
  EXPECT_TRUE(near(OdGePoint3d(center->x, center->y, center->z), OdGePoint3d(-1, 2, -3)));
  auto end = std::find_if(tags.begin(), tags.end(), [](const OdDxfTag& t) { return t.code == 51; });
  ASSERT_NE(end, tags.end());
  EXPECT_NEAR(end->x, 90.0, 1e-12);

  // Extents of the quarter arc in the world: from (-1, 2) round through (-1..1, 2..4).
  OdGeExtents3d extents;
  ASSERT_EQ(arc->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(-1, 2, 3), OdGePoint3d(1, 4, 3))));
}

TEST(CurvesArc, MirroringKeepsTheArcsPoints) {
  const OdGePoint3d center(2, 1, 0);
  const OdGeMatrix3d mirrors[] = {
      OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(0, 0, 0), OdGeVector3d(1, 0, 0))),     // x -> -x
      OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(0, 0, 5), OdGeVector3d(0, 0, 1))),     // z -> 10 - z
      OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(1, 1, 0), OdGeVector3d(1, -1, 0.5))),  // oblique
  };
  for (const OdGeMatrix3d& mirror : mirrors) {
    OdDbArcPtr arc = OdDbArc::createObject();
    arc->setCenter(center);
    arc->setRadius(1.5);
    arc->setStartAngle(20 * kDeg);
    arc->setEndAngle(250 * kDeg);
    const OdGePoint3d start = startOf(*arc), end = endOf(*arc), middle = middleOf(*arc);
    ASSERT_EQ(arc->transformBy(mirror), eOk);
    // The same points, run the other way round.
    EXPECT_TRUE(near(startOf(*arc), mirror * end));
    EXPECT_TRUE(near(endOf(*arc), mirror * start));
    EXPECT_TRUE(near(middleOf(*arc), mirror * middle));
    EXPECT_NEAR(arc->totalAngle(), 230 * kDeg, 1e-12);
  }

  // Mirrored in its own plane, the arc keeps its normal.
  OdDbArcPtr arc = OdDbArc::createObject();
  arc->setStartAngle(0);
  arc->setEndAngle(OdaPI2);
  arc->setRadius(1);
  ASSERT_EQ(arc->transformBy(mirrors[0]), eOk);
  EXPECT_TRUE(near(OdGePoint3d::asPoint(arc->normal()), OdGePoint3d(0, 0, 1)));
  EXPECT_NEAR(arc->startAngle(), OdaPI2, 1e-12);
  EXPECT_NEAR(arc->endAngle(), OdaPI, 1e-12);
}

TEST(CurvesCircle, TransformsKeepItRoundOrRefuse) {
  OdDbCirclePtr circle = OdDbCircle::createObject();
  circle->setCenter(OdGePoint3d(1, 1, 0));
  circle->setRadius(2);
  circle->setThickness(1);
  EXPECT_EQ(circle->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(2, 1, 1))), eCannotScaleNonUniformly);
  EXPECT_DOUBLE_EQ(circle->radius(), 2.0);

  // Tilted plane: scaling along the normal changes only the thickness.
  EXPECT_EQ(circle->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(1, 1, 4))), eOk);
  EXPECT_DOUBLE_EQ(circle->radius(), 2.0);
  EXPECT_DOUBLE_EQ(circle->thickness(), 4.0);

  const OdGeMatrix3d move = OdGeMatrix3d::rotation(OdaPI2, OdGeVector3d(1, 0, 0)) * OdGeMatrix3d::scaling(3);
  ASSERT_EQ(circle->transformBy(move), eOk);
  EXPECT_DOUBLE_EQ(circle->radius(), 6.0);
  EXPECT_TRUE(near(circle->center(), OdGePoint3d(3, 0, 3)));
  EXPECT_TRUE(near(OdGePoint3d::asPoint(circle->normal()), OdGePoint3d(0, -1, 0)));
  EXPECT_DOUBLE_EQ(circle->thickness(), 12.0);
  // The circle of the tilted plane: its box is flat in y.
  OdGeExtents3d extents;
  circle->setThickness(0);
  ASSERT_EQ(circle->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(-3, 0, -3), OdGePoint3d(9, 0, 9))));
}

TEST(CurvesArc, ClosestPointsParametersAndArea) {
  OdDbArcPtr arc = OdDbArc::createObject();
  arc->setRadius(2);
  arc->setStartAngle(0);
  arc->setEndAngle(OdaPI);  // upper half circle about the origin
  OdGePoint3d closest;
  ASSERT_EQ(arc->getClosestPointTo(OdGePoint3d(1, -5, 0), closest), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(2, 0, 0)));
  ASSERT_EQ(arc->getClosestPointTo(OdGePoint3d(1, -5, 0), closest, true), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(2 / std::sqrt(26.0), -10 / std::sqrt(26.0), 0)));
  ASSERT_EQ(arc->getClosestPointTo(OdGePoint3d(0, 7, 4), closest), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(0, 2, 0)));

  double param = 0;
  EXPECT_EQ(arc->getParamAtPoint(OdGePoint3d(0, 2, 0), param), eOk);
  EXPECT_NEAR(param, OdaPI2, 1e-12);
  EXPECT_EQ(arc->getParamAtPoint(OdGePoint3d(0, -2, 0), param), ePointNotOnEntity);
  double dist = 0;
  EXPECT_EQ(arc->getDistAtParam(OdaPI2, dist), eOk);
  EXPECT_NEAR(dist, OdaPI, 1e-12);

  double area = 0;
  EXPECT_EQ(arc->getArea(area), eOk);
  EXPECT_NEAR(area, 2 * OdaPI, 1e-12);  // half of π r²
}

TEST(CurvesCircle, FieldsSurviveTagsAndFiling) {
  OdDbCirclePtr circle = OdDbCircle::createObject();
  circle->setNormal(OdGeVector3d(0.3, -0.4, 0.8));
  circle->setCenter(OdGePoint3d(5, -2, 1));
  circle->setRadius(0.75);
  circle->setThickness(-1.5);
  EXPECT_TRUE(tagRoundTrip(circle.get()));
  EXPECT_TRUE(filerRoundTrip(circle.get()));

  OdDbArcPtr arc = OdDbArc::createObject();
  arc->setNormal(OdGeVector3d(0, 0, -1));
  arc->setCenter(OdGePoint3d(1, 2, 3));
  arc->setRadius(4);
  arc->setStartAngle(1.25);
  arc->setEndAngle(0.5);
  EXPECT_TRUE(filerRoundTrip(arc.get()));
  // Degrees in the file: the angle comes back to within rounding.
  OdDbArcPtr back = readTags<OdDbArc>(tagsOf(arc.get()));
  EXPECT_NEAR(back->startAngle(), 1.25, 1e-15);
  EXPECT_NEAR(back->endAngle(), 0.5, 1e-15);
  EXPECT_TRUE(near(back->center(), OdGePoint3d(1, 2, 3)));
}

TEST(CurvesConstructionLines, RaysStopAtTheirBaseXlinesDoNot) {
  OdDbRayPtr ray = OdDbRay::createObject();
  ray->setBasePoint(OdGePoint3d(1, 1, 0));
  ray->setUnitDir(OdGeVector3d(3, 4, 0));
  EXPECT_TRUE(near(OdGePoint3d::asPoint(ray->unitDir()), OdGePoint3d(0.6, 0.8, 0)));
  OdGePoint3d closest;
  ray->getClosestPointTo(OdGePoint3d(-5, -5, 0), closest);
  EXPECT_TRUE(near(closest, OdGePoint3d(1, 1, 0)));
  double param = 0;
  EXPECT_EQ(ray->getParamAtPoint(OdGePoint3d(4, 5, 0), param), eOk);
  EXPECT_NEAR(param, 5.0, 1e-12);
  EXPECT_EQ(ray->getParamAtPoint(OdGePoint3d(-2, -3, 0), param), ePointNotOnEntity);
  OdGeExtents3d extents;
  EXPECT_EQ(ray->getGeomExtents(extents), eInvalidExtents);

  OdDbXlinePtr xline = OdDbXline::createObject();
  xline->setBasePoint(OdGePoint3d(1, 1, 0));
  xline->setUnitDir(OdGeVector3d(0, 2, 0));
  xline->getClosestPointTo(OdGePoint3d(3, -5, 0), closest);
  EXPECT_TRUE(near(closest, OdGePoint3d(1, -5, 0)));
  // A scaled direction stays a unit vector.
  ASSERT_EQ(xline->transformBy(OdGeMatrix3d::scaling(5)), eOk);
  EXPECT_TRUE(near(OdGePoint3d::asPoint(xline->unitDir()), OdGePoint3d(0, 1, 0)));
  EXPECT_TRUE(near(xline->basePoint(), OdGePoint3d(5, 5, 0)));
  EXPECT_TRUE(tagRoundTrip(xline.get()));
}
