// Hatches: round trips of every loop form, areas by style, extents and
// transformations (hatches read from real files: dxf/entities_corpus_test.cpp).
#include "DbHatch.h"
#include "Ge/GeOcs.h"
#include "db_test_support.h"

namespace {

using namespace entities_test;

constexpr double kPi = 3.14159265358979323846;

OdGePoint3d world(const OdDbHatch* hatch, const OdGePoint2d& p) {
  return odgeOcsToWcs(p, hatch->elevation(), hatch->normal());
}

void expectNear(const OdGePoint3d& a, const OdGePoint3d& b, double tol, const char* what) {
  EXPECT_NEAR(a.distanceTo(b), 0.0, tol) << what << ": (" << a.x << ", " << a.y << ", " << a.z << ") vs ("
                                         << b.x << ", " << b.y << ", " << b.z << ")";
}

// A hatch with one loop of every edge kind, a pattern and a seed.
OdDbHatchPtr edgeHatch() {
  OdDbHatchPtr hatch = OdDbHatch::createObject();
  hatch->setPattern(OdDbHatch::kPreDefined, L"ANSI31");
  hatch->setPatternDefinitions({{kPi / 4, OdGePoint2d(0, 0), OdGeVector2d(-2.2, 2.2), {}},
                                {3 * kPi / 4, OdGePoint2d(1, 0), OdGeVector2d(2.2, 2.2), {1.5, -0.5, 0}}});
  hatch->setElevation(2.5);
  OdDbHatchEdgeArray edges;
  edges.append(OdDbHatchEdge::line(OdGePoint2d(0, 0), OdGePoint2d(10, 0)));
  edges.append(OdDbHatchEdge::circularArc(OdGePoint2d(10, 2), 2, 3 * kPi / 2, 2 * kPi, true));
  // Clockwise edges measure their angles clockwise: (12, 2) to (10, 6), then over (8, 4) to (6, 6).
  edges.append(OdDbHatchEdge::ellipticalArc(OdGePoint2d(12, 6), OdGeVector2d(0, -4), 0.5, 0, kPi / 2, false));
  edges.append(OdDbHatchEdge::circularArc(OdGePoint2d(8, 6), 2, 0, kPi, false));
  OdDbHatchEdge spline = OdDbHatchEdge::spline(
      2, {0, 0, 0, 0.5, 1, 1, 1},
      {OdGePoint2d(6, 6), OdGePoint2d(2, 8), OdGePoint2d(0, 5), OdGePoint2d(0, 3)}, {1, 0.7, 1.3, 1});
  spline.fitPoints = {OdGePoint2d(6, 6), OdGePoint2d(0, 3)};
  spline.startTangent = OdGeVector2d(-1, 1);
  spline.endTangent = OdGeVector2d(0, -1);
  edges.append(spline);
  edges.append(OdDbHatchEdge::line(OdGePoint2d(0, 3), OdGePoint2d(0, 0)));
  EXPECT_EQ(hatch->appendLoop(OdDbHatch::kExternal | OdDbHatch::kOutermost, edges), eOk);
  EXPECT_EQ(hatch->appendLoop(OdDbHatch::kDefault, {OdGePoint2d(3, 1), OdGePoint2d(5, 1), OdGePoint2d(5, 2)},
                              {0, 0.4, -0.2}),
            eOk);
  hatch->appendSeedPoint(OdGePoint2d(1, 1));
  return hatch;
}

// Every edge ends where the next one starts (the loop is closed).
void expectContinuous(const OdDbHatch* hatch, int loop, double tol) {
  OdInt32 type;
  OdDbHatchEdgeArray edges;
  ASSERT_EQ(hatch->getLoopAt(loop, type, edges), eOk);
  for (size_t i = 0; i < edges.size(); ++i) {
    const OdGePoint2d end = edges[i].endPoint(), next = edges[(i + 1) % edges.size()].startPoint();
    EXPECT_NEAR(end.distanceTo(next), 0.0, tol) << "loop " << loop << " edge " << i;
  }
}

TEST(EntitiesHatch, EveryLoopFormSurvivesFilingAndTags) {
  OdDbHatchPtr hatch = edgeHatch();
  expectContinuous(hatch.get(), 0, 1e-12);
  expectRoundTrips(hatch.get());

  // Before R2010 a spline edge has no fit data: a 97 after it is the loop's
  // source count, and the loop keeps its sources.
  OdDbHatchPtr older = edgeHatch();
  OdDbHatchEdgeArray edges;
  OdInt32 type;
  older->getLoopAt(0, type, edges);
  edges[4].fitPoints.clear();
  edges[4].startTangent = edges[4].endTangent = OdGeVector2d();
  older->removeLoopAt(0);
  older->appendLoop(type, edges);
  TestTagContext ctx(OdDb::vAC15);
  older->setDatabaseDefaults(ctx.database());
  OdDbObjectId source = ctx.idFromHandle(0x2A);
  older->setAssocObjIdsAt(1, {source});
  OdDbHatchPtr back = viaTags(older.get(), ctx);
  expectSameFields(older.get(), back.get());
  EXPECT_EQ(back->getAssocObjIdsAt(1), OdDbObjectIdArray{source});
}

TEST(EntitiesHatch, AreaFollowsTheHatchStyle) {
  auto square = [](double half) {
    return OdGePoint2dArray{OdGePoint2d(-half, -half), OdGePoint2d(half, -half), OdGePoint2d(half, half),
                            OdGePoint2d(-half, half)};
  };
  OdDbHatchPtr hatch = OdDbHatch::createObject();
  hatch->appendLoop(OdDbHatch::kExternal, square(5));
  hatch->appendLoop(OdDbHatch::kDefault, square(3));
  hatch->appendLoop(OdDbHatch::kDefault, square(1));
  double area;
  hatch->getArea(area);
  EXPECT_NEAR(area, 100 - 36 + 4, 1e-12);
  hatch->setHatchStyle(OdDbHatch::kOuter);
  hatch->getArea(area);
  EXPECT_NEAR(area, 100 - 36, 1e-12);
  hatch->setHatchStyle(OdDbHatch::kIgnore);
  hatch->getArea(area);
  EXPECT_NEAR(area, 100, 1e-12);
  // Picking: inside the island (filled in normal style) and in the ring's hole.
  hatch->setHatchStyle(OdDbHatch::kNormal);
  EXPECT_NEAR(hatch->distanceTo(OdGePoint3d(0, 0, 2)), 2, 1e-12);
  EXPECT_NEAR(hatch->distanceTo(OdGePoint3d(2, 0, 0)), 1, 1e-12);

  // A full-circle arc edge and an ellipse edge: exact areas.
  OdDbHatchPtr round = OdDbHatch::createObject();
  round->appendLoop(OdDbHatch::kExternal, {OdDbHatchEdge::circularArc(OdGePoint2d(5, 5), 2, 0, 2 * kPi)});
  round->appendLoop(OdDbHatch::kDefault, {OdDbHatchEdge::ellipticalArc(OdGePoint2d(5, 5), OdGeVector2d(1, 1),
                                                                       0.5, 0, 2 * kPi, false)});
  round->getArea(area);
  EXPECT_NEAR(area, kPi * 4 - kPi * 2 * 0.5, 1e-12);
  OdGeExtents3d extents;
  round->getGeomExtents(extents);
  expectNear(extents.minPoint(), OdGePoint3d(3, 3, 0), 1e-12, "min");
  expectNear(extents.maxPoint(), OdGePoint3d(7, 7, 0), 1e-12, "max");
}

// World points along every edge, for comparing shapes before and after a transformation.
std::vector<OdGePoint3d> edgeEnds(const OdDbHatch* hatch) {
  std::vector<OdGePoint3d> points;
  for (int loop = 0; loop < hatch->numLoops(); ++loop) {
    OdInt32 type;
    OdDbHatchEdgeArray edges;
    hatch->getLoopAt(loop, type, edges);
    for (const auto& edge : edges) {
      points.push_back(world(hatch, edge.startPoint()));
      points.push_back(world(hatch, edge.endPoint()));
    }
  }
  return points;
}

TEST(EntitiesHatch, TransformMovesLoopsSeedsAndPatternWithThePlane) {
  OdGeMatrix3d moves[] = {
      OdGeMatrix3d::translation(OdGeVector3d(7, -3, 1)),
      OdGeMatrix3d::rotation(0.7, OdGeVector3d(1, 2, 3), OdGePoint3d(4, 5, 6)) * OdGeMatrix3d::scaling(2.5),
      OdGeMatrix3d::scaling(OdGeScale3d(-1, 1, 1)),  // a mirror: the normal flips
  };
  for (const OdGeMatrix3d& xform : moves) {
    OdDbHatchPtr hatch = edgeHatch();
    const std::vector<OdGePoint3d> before = edgeEnds(hatch.get());
    const OdGePoint3d seed = world(hatch.get(), hatch->getSeedPointAt(0));
    double areaBefore, areaAfter;
    hatch->getArea(areaBefore);
    ASSERT_EQ(hatch->transformBy(xform), eOk);
    const std::vector<OdGePoint3d> after = edgeEnds(hatch.get());
    ASSERT_EQ(before.size(), after.size());
    for (size_t i = 0; i < before.size(); ++i) {
      OdGePoint3d expected = before[i];
      expectNear(after[i], expected.transformBy(xform), 1e-9, "edge end");
    }
    OdGePoint3d movedSeed = seed;
    expectNear(world(hatch.get(), hatch->getSeedPointAt(0)), movedSeed.transformBy(xform), 1e-9, "seed");
    hatch->getArea(areaAfter);
    const double scale = xform.scale();
    EXPECT_NEAR(areaAfter, areaBefore * scale * scale, 1e-9 * areaAfter);
    expectContinuous(hatch.get(), 0, 1e-9);
  }
  // The pattern turns and scales with the hatch.
  OdDbHatchPtr hatch = edgeHatch();
  hatch->transformBy(OdGeMatrix3d::rotation(kPi / 2, OdGeVector3d::kZAxis) * OdGeMatrix3d::scaling(2));
  EXPECT_NEAR(hatch->patternAngle(), kPi / 2, 1e-12);
  EXPECT_NEAR(hatch->patternScale(), 2, 1e-12);
  double angle, baseX, baseY, offsetX, offsetY;
  OdGeDoubleArray dashes;
  hatch->getPatternDefinitionAt(1, angle, baseX, baseY, offsetX, offsetY, dashes);
  EXPECT_NEAR(angle, 5 * kPi / 4, 1e-12);
  EXPECT_NEAR(baseY, 2, 1e-12);
  EXPECT_NEAR(dashes[0], 3, 1e-12);
}

TEST(EntitiesHatch, NonUniformScalingKeepsEllipsesAndRefusesArcs) {
  const OdGeMatrix3d stretch = OdGeMatrix3d::scaling(OdGeScale3d(3, 1, 1));
  OdDbHatchPtr arcs = edgeHatch();
  const std::vector<OdGePoint3d> before = edgeEnds(arcs.get());
  EXPECT_EQ(arcs->transformBy(stretch), eCannotScaleNonUniformly);
  EXPECT_EQ(edgeEnds(arcs.get()).size(), before.size());
  expectNear(edgeEnds(arcs.get())[1], before[1], 0, "unchanged");

  OdDbHatchPtr ellipse = OdDbHatch::createObject();
  OdDbHatchEdge edge =
      OdDbHatchEdge::ellipticalArc(OdGePoint2d(1, 2), OdGeVector2d(2, 1), 0.4, 0.3, 2.5, false);
  ellipse->appendLoop(OdDbHatch::kExternal, {edge, OdDbHatchEdge::line(edge.endPoint(), edge.startPoint())});
  OdGePoint2dArray samples;
  edge.getSamplePoints(samples);
  ASSERT_EQ(ellipse->transformBy(stretch), eOk);
  OdInt32 type;
  OdDbHatchEdgeArray edges;
  ellipse->getLoopAt(0, type, edges);
  const OdDbHatchEdge& moved = edges[0];
  EXPECT_NEAR(moved.startPoint().distanceTo(OdGePoint2d(3 * edge.startPoint().x, edge.startPoint().y)), 0,
              1e-12);
  EXPECT_NEAR(moved.endPoint().distanceTo(OdGePoint2d(3 * edge.endPoint().x, edge.endPoint().y)), 0, 1e-12);
  // Every stretched sample lies on the new ellipse.
  const OdGeVector2d a = moved.majorAxis, b = a.perpVector() * moved.minorMajorRatio;
  for (const auto& p : samples) {
    const OdGeVector2d d = OdGePoint2d(3 * p.x, p.y) - moved.center;
    const double u = d.dotProduct(a) / a.lengthSqrd(), v = d.dotProduct(b) / b.lengthSqrd();
    EXPECT_NEAR(u * u + v * v, 1.0, 1e-12);
  }
}

}  // namespace
