// LINE, CIRCLE, ARC and PLINE at the command line: the geometry made from
// the replies, the user coordinate system, the options, Esc and U.
#include <gmock/gmock.h>

#include <cmath>

#include "host_test_support.h"

using namespace hosttest;
using ::testing::HasSubstr;

TEST(DrawLine, SegmentsWithUndoCloseAndTheCurrentLayer) {
  HostSession session;
  addLayer(session.db(), L"WALLS");
  session.run({"CLAYER", "WALLS"});
  const std::string shown = session.run({"LINE", "0,0", "10,0", "C", "10,5", "U", "@0,10", "0,10", "C"});
  EXPECT_THAT(shown, HasSubstr("Specify next point or [Undo]: "));
  EXPECT_THAT(shown, HasSubstr("Specify next point or [Close/Undo]: "));
  // Close is offered from the second segment on: before that it is no reply.
  EXPECT_THAT(shown, HasSubstr("Point or option keyword required."));
  auto lines = entitiesOf<OdDbLine>(session);
  ASSERT_EQ(lines.size(), 4u);
  expectPoint(lines[1]->startPoint(), 10, 0);
  expectPoint(lines[1]->endPoint(), 10, 10);
  expectPoint(lines[3]->startPoint(), 0, 10);
  expectPoint(lines[3]->endPoint(), 0, 0);
  for (const auto& line : lines) EXPECT_EQ(layerName(line.get()), L"WALLS");

  // Enter at the first point goes on from the last line's end.
  session.run({"LINE", "", "5,5", ""});
  lines = entitiesOf<OdDbLine>(session);
  ASSERT_EQ(lines.size(), 5u);
  expectPoint(lines[4]->startPoint(), 0, 0);
  expectPoint(lines[4]->endPoint(), 5, 5);
}

TEST(DrawLine, PointsAreTypedInTheUserSystem) {
  HostSession session;
  OdGeMatrix3d ucs = OdGeMatrix3d::translation(OdGeVector3d(100, 0, 0)) *
                     OdGeMatrix3d::rotation(kPi / 2, OdGeVector3d::kZAxis);
  session.host().current()->setUcs(ucs);
  session.run({"LINE", "0,0", "10,0", ""});
  auto lines = entitiesOf<OdDbLine>(session);
  ASSERT_EQ(lines.size(), 1u);
  expectPoint(lines[0]->startPoint(), 100, 0);
  expectPoint(lines[0]->endPoint(), 100, 10);
}

TEST(DrawLine, EscAndUndoLeaveTheDrawingAsItWas) {
  HostSession session(CorpusDrawing{"examples_dxf_3dface.dxf"});
  expectEscAndUndoLeaveNothing(session, {"LINE", "0,0", "10,0", "10,10", "C"});
}

TEST(DrawCircle, CenterRadiusDiameterThreeAndTwoPoints) {
  HostSession session;
  const std::string shown =
      session.run({"CIRCLE", "5,5", "2",                      // center, radius
                   "CIRCLE", "0,0", "D", "",                  // the last size as diameter
                   "CIRCLE", "T", "3P", "0,0", "2,0", "4,0",  // on one line: asked again
                   "0,2",                                     // the third point again
                   "CIRCLE", "2P", "10,0", "10,0", "10,6"});
  EXPECT_THAT(shown, HasSubstr("Specify radius of circle or [Diameter]: "));
  EXPECT_THAT(shown, HasSubstr("Specify diameter of circle <4.0000>: "));
  EXPECT_THAT(shown, HasSubstr("not available"));
  EXPECT_THAT(shown, HasSubstr("No circle passes through three points on one line."));
  auto circles = entitiesOf<OdDbCircle>(session);
  ASSERT_EQ(circles.size(), 4u);
  expectPoint(circles[0]->center(), 5, 5);
  EXPECT_DOUBLE_EQ(circles[0]->radius(), 2);
  EXPECT_DOUBLE_EQ(circles[1]->radius(), 2);
  expectPoint(circles[2]->center(), 1, 1);
  EXPECT_NEAR(circles[2]->radius(), std::sqrt(2.0), 1e-9);
  expectPoint(circles[3]->center(), 10, 3);
  EXPECT_DOUBLE_EQ(circles[3]->radius(), 3);
  expectEscAndUndoLeaveNothing(session, {"CIRCLE", "3P", "0,0", "2,0", "0,2"});
}

TEST(DrawArc, ThreePointsAndCenterStartEndVariants) {
  HostSession session;
  session.run({"ARC", "0,0", "5,5", "10,0",                 // clockwise through the top
               "ARC", "C",   "0,0", "5,0",  "0,5",          // center, start, end
               "ARC", "5,0", "E",   "0,5",  "A",   "-90",   // start, end, included angle (clockwise)
               "ARC", "5,0", "C",   "0,0",  "L",   "-5",    // chord length: negative is the major arc
               "ARC", "5,0", "E",   "-5,0", "D",   "90"});  // start tangent straight up
  auto arcs = entitiesOf<OdDbArc>(session);
  ASSERT_EQ(arcs.size(), 5u);
  expectPoint(arcs[0]->center(), 5, 0);
  EXPECT_NEAR(arcs[0]->radius(), 5, 1e-9);
  EXPECT_NEAR(arcs[0]->startAngle(), 0, 1e-9);
  EXPECT_NEAR(arcs[0]->endAngle(), kPi, 1e-9);
  EXPECT_NEAR(arcs[1]->startAngle(), 0, 1e-9);
  EXPECT_NEAR(arcs[1]->endAngle(), kPi / 2, 1e-9);
  // Clockwise from (5,0) to (0,5): the arc about (5,5) from 180 to 270 degrees.
  expectPoint(arcs[2]->center(), 5, 5);
  EXPECT_NEAR(arcs[2]->startAngle(), kPi, 1e-9);
  EXPECT_NEAR(arcs[2]->endAngle(), 1.5 * kPi, 1e-9);
  EXPECT_NEAR(arcs[3]->totalAngle(), 2 * kPi - kPi / 3, 1e-9);
  expectPoint(arcs[4]->center(), 0, 0);
  EXPECT_NEAR(arcs[4]->startAngle(), 0, 1e-9);
  EXPECT_NEAR(arcs[4]->endAngle(), kPi, 1e-9);
  expectEscAndUndoLeaveNothing(session, {"ARC", "C", "0,0", "5,0", "A", "45"});
}

TEST(DrawPline, LinesArcsWidthsUndoAndClose) {
  HostSession session;
  const std::string shown = session.run({"PLINE", "0,0", "W", "0.5", "1", "10,0",  // tapered
                                         "3,3", "U",                               // taken back
                                         "A", "10,10",                             // tangent half circle
                                         "S", "5,15", "0,10",                      // through a second point
                                         "L", "CL"});
  EXPECT_THAT(shown, HasSubstr("Current line-width is 0.0000"));
  EXPECT_THAT(shown, HasSubstr("[Angle/CEnter/CLose/Direction/Halfwidth/Line/Radius/Second pt/Undo/Width]"));
  auto polylines = entitiesOf<OdDbPolyline>(session);
  ASSERT_EQ(polylines.size(), 1u);
  const OdDbPolyline* polyline = polylines[0].get();
  ASSERT_EQ(polyline->numVerts(), 4u);
  EXPECT_TRUE(polyline->isClosed());
  double start = 0, end = 0;
  polyline->getWidthsAt(0, start, end);
  EXPECT_DOUBLE_EQ(start, 0.5);
  EXPECT_DOUBLE_EQ(end, 1.0);
  polyline->getWidthsAt(1, start, end);
  EXPECT_DOUBLE_EQ(start, 1.0);
  EXPECT_NEAR(polyline->getBulgeAt(0), 0, 1e-12);
  EXPECT_NEAR(polyline->getBulgeAt(1), 1, 1e-9);   // a half circle to the left
  EXPECT_NEAR(polyline->getBulgeAt(2), 1, 1e-9);   // (10,10) over (5,15) to (0,10)
  EXPECT_NEAR(polyline->getBulgeAt(3), 0, 1e-12);  // closed with a line
  EXPECT_EQ(polyline->getPoint2dAt(3), OdGePoint2d(0, 10));
  EXPECT_EQ(session.host().sysvars().getReal(L"PLINEWID"), 1.0);

  session.run({"PLINE", "0,0", "A", "CE", "0,5", "A", "90", "L", "@0,-5", ""});
  polylines = entitiesOf<OdDbPolyline>(session);
  ASSERT_EQ(polylines.size(), 2u);
  EXPECT_NEAR(polylines[1]->getBulgeAt(0), std::tan(kPi / 8), 1e-9);
  EXPECT_EQ(polylines[1]->getPoint2dAt(1), OdGePoint2d(5, 5));
  EXPECT_EQ(polylines[1]->getPoint2dAt(2), OdGePoint2d(5, 0));
}

TEST(DrawPline, LiesInTheUserPlaneAndLeavesNothingOnEscOrUndo) {
  HostSession session;
  // A user system standing up: its x-y plane is the world x-z plane.
  session.host().current()->setUcs(OdGeMatrix3d::rotation(kPi / 2, OdGeVector3d::kXAxis));
  session.run({"PLINE", "0,0,2", "10,0", "A", "20,0", ""});
  auto polylines = entitiesOf<OdDbPolyline>(session);
  ASSERT_EQ(polylines.size(), 1u);
  EXPECT_TRUE(polylines[0]->normal().isEqualTo(OdGeVector3d(0, -1, 0)));
  OdGePoint3d end;
  polylines[0]->getEndPoint(end);
  expectPoint(end, 20, -2, 0);
  expectEscAndUndoLeaveNothing(session, {"PLINE", "0,0", "W", "1", "", "5,0", "A", "5,5", "L", "C"});
}
