// Ellipses and splines: parameters, transforms, areas, extents, NURBS
// evaluation and interpolation, and the spline's groups.
#include <cmath>

#include "DbCurves.h"
#include "Ge/GePlane.h"
#include "db_test_support.h"

using namespace curves_test;

namespace {

// A rational quadratic circle of radius r about the origin: four quarter arcs.
OdDbSplinePtr nurbsCircle(double r) {
  const double w = std::sqrt(0.5);
  OdGePoint3dArray points = {{r, 0, 0},   {r, r, 0},  {0, r, 0},  {-r, r, 0}, {-r, 0, 0},
                             {-r, -r, 0}, {0, -r, 0}, {r, -r, 0}, {r, 0, 0}};
  OdGeDoubleArray weights = {1, w, 1, w, 1, w, 1, w, 1};
  OdGeDoubleArray knots = {0, 0, 0, 0.25, 0.25, 0.5, 0.5, 0.75, 0.75, 1, 1, 1};
  OdDbSplinePtr spline = OdDbSpline::createObject();
  EXPECT_EQ(spline->setNurbsData(2, true, true, false, points, knots, weights), eOk);
  return spline;
}

}  // namespace

TEST(CurvesEllipse, ArcsKeepTheirPointsUnderMirroringAndScaling) {
  OdDbEllipsePtr ellipse = OdDbEllipse::createObject();
  ASSERT_EQ(ellipse->set(OdGePoint3d(1, 2, 0), OdGeVector3d::kZAxis, OdGeVector3d(2, 0, 0), 0.5, 0.3, 2.0),
            eOk);
  EXPECT_NEAR(ellipse->startAngle(), 0.3, 1e-12);
  EXPECT_NEAR(ellipse->endAngle(), 2.0, 1e-12);

  const OdGeMatrix3d mirror = OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(0, 0, 0), OdGeVector3d(1, 1, 0)));
  const OdGePoint3d start = startOf(*ellipse), end = endOf(*ellipse);
  double p0, p1;
  ellipse->getStartParam(p0);
  ellipse->getEndParam(p1);
  const OdGePoint3d middle = pointAt(*ellipse, 0.5 * (p0 + p1));
  ASSERT_EQ(ellipse->transformBy(mirror), eOk);
  EXPECT_TRUE(near(OdGePoint3d::asPoint(ellipse->normal()), OdGePoint3d(0, 0, 1)));
  EXPECT_TRUE(near(startOf(*ellipse), mirror * end));
  EXPECT_TRUE(near(endOf(*ellipse), mirror * start));
  ellipse->getStartParam(p0);
  ellipse->getEndParam(p1);
  EXPECT_TRUE(near(pointAt(*ellipse, 0.5 * (p0 + p1)), mirror * middle));

  // Unequal scaling of a circle gives an ellipse: the longer axis becomes the major one.
  OdDbEllipsePtr round = OdDbEllipse::createObject();
  ASSERT_EQ(round->set(OdGePoint3d(), OdGeVector3d::kZAxis, OdGeVector3d(1, 0, 0), 1.0), eOk);
  ASSERT_EQ(round->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(1, 3, 1))), eOk);
  EXPECT_NEAR(round->majorRadius(), 3.0, 1e-12);
  EXPECT_NEAR(round->radiusRatio(), 1.0 / 3.0, 1e-12);
  EXPECT_TRUE(round->isClosed());
}

TEST(CurvesEllipse, AreaExtentsAndClosestPoint) {
  OdDbEllipsePtr ellipse = OdDbEllipse::createObject();
  ASSERT_EQ(ellipse->set(OdGePoint3d(10, 0, 0), OdGeVector3d::kZAxis, OdGeVector3d(0, 4, 0), 0.5), eOk);
  double area = 0;
  ASSERT_EQ(ellipse->getArea(area), eOk);
  EXPECT_NEAR(area, OdaPI * 4 * 2, 1e-12);
  // Major axis along y: the minor axis (normal x major) points to -x.
  EXPECT_TRUE(near(OdGePoint3d::asPoint(ellipse->minorAxis()), OdGePoint3d(-2, 0, 0)));

  // The quarter from the major axis to the minor axis.
  ellipse->setStartParam(0);
  ellipse->setEndParam(OdaPI2);
  OdGeExtents3d extents;
  ASSERT_EQ(ellipse->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(8, 0, 0), OdGePoint3d(10, 4, 0))));
  ASSERT_EQ(ellipse->getArea(area), eOk);
  EXPECT_NEAR(area, 0.5 * 8 * (OdaPI2 - 1), 1e-12);
  OdGePoint3d closest;
  // Nearest to the end of the quarter, not to the whole ellipse.
  ASSERT_EQ(ellipse->getClosestPointTo(OdGePoint3d(12, -3, 0), closest), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(8, 0, 0)));
  ASSERT_EQ(ellipse->getClosestPointTo(OdGePoint3d(12, -3, 0), closest, true), eOk);
  EXPECT_LT(closest.y, -1.0);
  double param = 0;
  EXPECT_EQ(ellipse->getParamAtPoint(OdGePoint3d(8, 0, 0), param), eOk);
  EXPECT_NEAR(param, OdaPI2, 1e-9);

  EXPECT_TRUE(tagRoundTrip(ellipse.get()));
  EXPECT_TRUE(filerRoundTrip(ellipse.get()));
}

TEST(CurvesSpline, RationalCircleEvaluatesMeasuresAndBoundsExactly) {
  OdDbSplinePtr circle = nurbsCircle(2.0);
  EXPECT_TRUE(circle->isRational());
  EXPECT_TRUE(circle->isPlanar());
  for (double u = 0; u <= 1.0; u += 0.05) EXPECT_NEAR(pointAt(*circle, u).asVector().length(), 2.0, 1e-12);
  double dist = 0;
  ASSERT_EQ(circle->getDistAtParam(1.0, dist), eOk);
  EXPECT_NEAR(dist, 4 * OdaPI, 1e-9);
  double area = 0;
  ASSERT_EQ(circle->getArea(area), eOk);
  EXPECT_NEAR(area, 4 * OdaPI, 1e-9);
  OdGeExtents3d extents;
  ASSERT_EQ(circle->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(-2, -2, 0), OdGePoint3d(2, 2, 0)), 1e-9));

  OdGePoint3d closest;
  ASSERT_EQ(circle->getClosestPointTo(OdGePoint3d(3, 3, 1), closest), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(std::sqrt(2.0), std::sqrt(2.0), 0), 1e-9));
  double param = 0;
  ASSERT_EQ(circle->getParamAtPoint(OdGePoint3d(0, -2, 0), param), eOk);
  EXPECT_NEAR(param, 0.75, 1e-9);
  EXPECT_EQ(circle->getParamAtPoint(OdGePoint3d(0, -2.1, 0), param), ePointNotOnEntity);
  ASSERT_EQ(circle->getParamAtDist(OdaPI, param), eOk);
  EXPECT_TRUE(near(pointAt(*circle, param), OdGePoint3d(0, 2, 0), 1e-9));
}

TEST(CurvesSpline, FitDataIsInterpolatedWithItsTangents) {
  const OdGePoint3dArray fit = {{0, 0, 0}, {1, 2, 0}, {3, 3, 0}, {6, 1, 0}, {8, 4, 0}};
  OdDbSplinePtr spline = OdDbSpline::createObject();
  ASSERT_EQ(spline->setFitData(fit, 3, 1e-10, OdGeVector3d(0, 1, 0), OdGeVector3d(1, 0, 0)), eOk);
  EXPECT_EQ(spline->numControlPoints(), 7);  // five points and two tangent conditions
  for (const OdGePoint3d& p : fit) {
    double param = 0;
    EXPECT_EQ(spline->getParamAtPoint(p, param), eOk);
  }
  EXPECT_TRUE(near(startOf(*spline), fit.first()));
  EXPECT_TRUE(near(endOf(*spline), fit.last()));
  // Leaves along +y and arrives along +x.
  const OdGeVector3d leaving = pointAt(*spline, 1e-6) - fit.first();
  const OdGeVector3d arriving = fit.last() - pointAt(*spline, 1.0 - 1e-6);
  EXPECT_NEAR(leaving.normal().y, 1.0, 1e-5);
  EXPECT_NEAR(arriving.normal().x, 1.0, 1e-5);

  // A spline that files carry with fit points only still has its curve.
  OdDxfTagList tags = tagsOf(spline.get());
  std::erase_if(tags, [](const OdDxfTag& t) { return t.code == 10 || t.code == 40; });
  OdDbSplinePtr fitOnly = readTags<OdDbSpline>(tags);
  EXPECT_EQ(fitOnly->numControlPoints(), 0);
  EXPECT_EQ(fitOnly->numFitPoints(), 5);
  EXPECT_TRUE(near(pointAt(*fitOnly, 0.5), pointAt(*spline, 0.5), 1e-9));
  OdGeExtents3d fitOnlyExtents, extents;
  ASSERT_EQ(fitOnly->getGeomExtents(fitOnlyExtents), eOk);
  ASSERT_EQ(spline->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(fitOnlyExtents, extents, 1e-9));
}

TEST(CurvesSpline, GroupsCarryDerivedCountsAndOnlyTheDataThereIs) {
  OdDbSplinePtr circle = nurbsCircle(1.0);
  const OdDxfTagList tags = tagsOf(circle.get());
  auto valueOf = [&](int code) {
    auto it = std::find_if(tags.begin(), tags.end(), [code](const OdDxfTag& t) { return t.code == code; });
    return it == tags.end() ? -1 : static_cast<int>(it->i);
  };
  EXPECT_EQ(valueOf(72), 12);
  EXPECT_EQ(valueOf(73), 9);
  EXPECT_EQ(valueOf(74), 0);
  EXPECT_EQ(valueOf(70), OdDbSpline::kClosed | OdDbSpline::kRational | OdDbSpline::kPlanar);
  EXPECT_EQ(countCode(tags, 41), 9);
  EXPECT_EQ(countCode(tags, 44), 0);  // no fit points, no fit tolerance
  EXPECT_EQ(countCode(tags, 210), 1);
  // Knots, weights and control points follow the tolerances in that order.
  const std::vector<int> codes = codesOf(tags);
  const auto firstOf = [&](int code) { return std::find(codes.begin(), codes.end(), code) - codes.begin(); };
  EXPECT_LT(firstOf(43), firstOf(40));
  EXPECT_LT(firstOf(40), firstOf(41));
  EXPECT_LT(firstOf(41), firstOf(10));
  EXPECT_TRUE(tagRoundTrip(circle.get()));
  EXPECT_TRUE(filerRoundTrip(circle.get()));

  // A non-planar spline has no normal group.
  OdDbSplinePtr twisted = OdDbSpline::createObject();
  ASSERT_EQ(twisted->setFitData({{0, 0, 0}, {1, 0, 1}, {1, 1, 0}, {0, 1, 2}}, 3, 1e-10), eOk);
  EXPECT_FALSE(twisted->isPlanar());
  const OdDxfTagList twistedTags = tagsOf(twisted.get());
  EXPECT_EQ(countCode(twistedTags, 210), 0);
  EXPECT_EQ(countCode(twistedTags, 11), 4);
  EXPECT_EQ(countCode(twistedTags, 44), 1);
  EXPECT_TRUE(tagRoundTrip(twisted.get()));
}

TEST(CurvesSpline, TransformMovesEveryPointAndKeepsThePlane) {
  OdDbSplinePtr circle = nurbsCircle(1.0);
  const OdGeMatrix3d mirror = OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(3, 0, 0), OdGeVector3d(1, 0, 0)));
  ASSERT_EQ(circle->transformBy(OdGeMatrix3d::translation(OdGeVector3d(0, 0, 2)) * mirror), eOk);
  for (double u = 0; u <= 1.0; u += 0.125) {
    EXPECT_NEAR(pointAt(*circle, u).distanceTo(OdGePoint3d(6, 0, 2)), 1.0, 1e-12);
  }
  EXPECT_TRUE(near(OdGePoint3d::asPoint(circle->normal()), OdGePoint3d(0, 0, 1)));
  EXPECT_EQ(circle->setWeightAt(20, 1.0), eInvalidIndex);
  OdGeDoubleArray shortKnots = {0, 0, 1, 1};
  EXPECT_EQ(circle->setNurbsData(2, false, false, false, {{0, 0, 0}, {1, 1, 0}, {2, 0, 0}}, shortKnots, {}),
            eInvalidInput);
}
