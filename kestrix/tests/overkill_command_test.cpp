// Overkill in the real host with the real module: the dialog's tolerance
// rule, the property options, splines, a selection of one, Esc and Cancel,
// polylines rebuilt, one U for the whole command, and corpus drawings copied
// over themselves coming back to what they were, as ezdxf reads them.
#include <gmock/gmock.h>

#include <cstdio>

#include "DbPolyline.h"
#include "DbSolid.h"
#include "DbText.h"
#include "kestrix_support.h"

using testing::HasSubstr;

namespace {

OdDbBlockTableRecordPtr modelSpace(OdDbDatabase* db) {
  return OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
}

OdDbObjectId addLine(OdDbDatabase* db, OdGePoint3d a, OdGePoint3d b, OdDbObjectId layer = OdDbObjectId()) {
  OdDbLinePtr line = OdDbLine::createObject();
  line->setStartPoint(a);
  line->setEndPoint(b);
  if (!layer.isNull()) line->setLayer(layer);
  return modelSpace(db)->appendOdDbEntity(line.get());
}

OdDbObjectId addSpline(OdDbDatabase* db, double shift, double linetypeScale) {
  OdSmartPtr<OdDbSpline> spline = OdDbSpline::createObject();
  OdGePoint3dArray fit;
  for (int i = 0; i < 5; ++i) fit.append(OdGePoint3d(i + shift, (i % 2) * 3.0, 0));
  spline->setFitData(fit, 3, 0.0);
  const OdDbObjectId id = modelSpace(db)->appendOdDbEntity(spline.get());
  spline->setLinetypeScale(linetypeScale);
  return id;
}

// Runs Overkill on the whole drawing with the dialog replies given before OK.
std::string overkill(HostSession& session, std::vector<std::string> dialog = {}) {
  std::vector<std::string> replies = {"Overkill", "ALL", ""};
  replies.insert(replies.end(), dialog.begin(), dialog.end());
  replies.push_back("OK");
  return session.run(replies);
}

std::string runPython(const std::string& arguments) {
  return dxfcheck::commandOutput("/usr/bin/python3 " + arguments);
}

// The geometry of a DXF file's model space as ezdxf reads it.
std::string geometry(const std::string& path) {
  return runPython(std::string(KESTRIX_TEST_DIR) + "/dxf_geometry_summary.py '" + path + "'");
}

std::string saved(HostSession& session, const std::string& name) {
  const std::string path = att::tempPath(name);
  odDxfWriteFile(session.db(), OdString(path));
  return path;
}

}  // namespace

TEST(OverkillCommand, ToleranceZeroActsAsTheSmallestAndMinusZeroIsRefused) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  addLine(session.db(), {0, 0, 0}, {10, 0, 0});
  addLine(session.db(), {0, 5e-7, 0}, {10, 0, 0});
  addLine(session.db(), {0, 0, 0}, {0, 10, 0});
  addLine(session.db(), {3e-6, 0, 0}, {3e-6, 10, 0});  // further apart than 1e-6: stays

  // "-0" is refused with the message and the dialog stays open; Cancel then changes nothing.
  std::string text = session.run({"Overkill", "ALL", "", "1001=-0", "OK", "Cancel"});
  EXPECT_THAT(text, HasSubstr("The tolerance must be a number, zero or more."));
  EXPECT_THAT(text, testing::Not(HasSubstr("duplicate objects deleted")));
  EXPECT_EQ(session.modelSpace().size(), 4u);
  // A text that is no number is refused alike.
  text = session.run({"Overkill", "ALL", "", "1001=abc", "OK", "Cancel"});
  EXPECT_THAT(text, HasSubstr("The tolerance must be a number, zero or more."));

  text = overkill(session, {"1001=0"});
  EXPECT_THAT(text, HasSubstr("\n1 duplicate objects deleted."));
  EXPECT_THAT(text, HasSubstr("\n0 overlapping objects deleted or combined."));
  EXPECT_EQ(session.modelSpace().size(), 3u);
  // The tolerance typed is kept for the next run of the session.
  text = session.run({"Overkill", "ALL", "", "Cancel"});
  EXPECT_THAT(text, HasSubstr("[0.000000]"));
}

TEST(OverkillCommand, ShortAndSteepLinesMeetTheirCopiesWithinTheTolerance) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  // 0.1 long, the copy drawn backwards with its ends 4e-7 off: the two
  // directions differ by 8e-6, far more than for long lines.
  addLine(session.db(), {100, 0, 0}, {100.1, 0, 0});
  addLine(session.db(), {100.1, 4e-7, 0}, {100, -4e-7, 0});
  // Nearly vertical, leaning left in one copy and right in the other.
  addLine(session.db(), {0, 0, 0}, {8e-7, 0.5, 0});
  addLine(session.db(), {8e-7, 0, 0}, {0, 0.5, 0});
  // Parallel 1e-5 apart: stays.
  addLine(session.db(), {100, 1e-5, 0}, {100.1, 1e-5, 0});
  EXPECT_THAT(overkill(session), HasSubstr("\n2 duplicate objects deleted.\n0 overlapping"));
  EXPECT_EQ(session.modelSpace().size(), 3u);
}

TEST(OverkillCommand, LayersKeepIdenticalLinesApartUntilIgnored) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId a = att::layer(session.db(), L"A"), b = att::layer(session.db(), L"B");
  addLine(session.db(), {0, 0, 0}, {10, 0, 0}, a);
  addLine(session.db(), {0, 0, 0}, {10, 0, 0}, b);
  EXPECT_THAT(overkill(session), HasSubstr("\n0 duplicate objects deleted."));
  EXPECT_EQ(session.modelSpace().size(), 2u);
  // A locked layer is never changed, whatever is ignored.
  att::layer(session.db(), L"B", 4);
  EXPECT_THAT(overkill(session, {"1002"}), HasSubstr("\n0 duplicate objects deleted."));
  att::layer(session.db(), L"B", 0);
  // The option stays ticked from the run before.
  EXPECT_THAT(overkill(session), HasSubstr("\n1 duplicate objects deleted."));
  EXPECT_EQ(session.modelSpace().size(), 1u);
}

TEST(OverkillCommand, SplinesOfOtherLinetypeScaleStayAndTheLaterOfEqualOnesSurvives) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  addSpline(session.db(), 0, 1.0);
  addSpline(session.db(), 0, 2.0);
  std::string text = overkill(session, {"1002", "1003", "1004", "1005", "1006"});
  EXPECT_THAT(text, HasSubstr("\n0 overlapping objects deleted or combined."));
  EXPECT_EQ(session.modelSpace().size(), 2u);

  const OdDbObjectId later = addSpline(session.db(), 0, 1.0);
  addSpline(session.db(), 40, 1.0);  // another shape
  text = overkill(session);
  EXPECT_THAT(text, HasSubstr("\n0 duplicate objects deleted."));
  EXPECT_THAT(text, HasSubstr("\n1 overlapping objects deleted or combined."));
  const OdDbObjectIdArray left = session.modelSpace();
  EXPECT_EQ(left.size(), 3u);
  EXPECT_NE(std::find(left.begin(), left.end(), later), left.end());
}

TEST(OverkillCommand, OneObjectEscAndCancelChangeNothing) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId first = addLine(session.db(), {0, 0, 0}, {10, 0, 0});
  std::string handle = first.handle().ascii().toUtf8();
  std::string text = session.run({"Overkill", handle == "" ? "L" : "L", "", "OK"});
  EXPECT_THAT(text, HasSubstr("\n0 duplicate objects deleted.\n0 overlapping objects deleted or combined."));

  addLine(session.db(), {0, 0, 0}, {10, 0, 0});
  addLine(session.db(), {5, 0, 0}, {20, 0, 0});
  text = session.run({"Overkill", "^C"});
  EXPECT_THAT(text, testing::Not(HasSubstr("deleted")));
  text = session.run({"Overkill", "ALL", "", "Cancel"});
  EXPECT_THAT(text, testing::Not(HasSubstr("deleted")));
  EXPECT_EQ(session.modelSpace().size(), 3u);
  OdDbLinePtr line = OdDbLine::cast(first.safeOpenObject());
  EXPECT_EQ(line->endPoint(), OdGePoint3d(10, 0, 0));
}

TEST(OverkillCommand, MergedLinesKeepTheSurvivorsHandleAndOneUndoRestoresAll) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId a = addLine(session.db(), {0, 0, 0}, {10, 0, 0});
  addLine(session.db(), {10, 0, 0}, {20, 0, 0});
  const OdDbObjectId last = addLine(session.db(), {15, 0, 0}, {30, 0, 0});
  OdDbPolylinePtr pline = OdDbPolyline::createObject();
  for (int i = 0; i < 4; ++i) pline->addVertexAt(i, OdGePoint2d(i * 10.0, i == 3 ? 10.0 : 5.0));
  const OdDbObjectId plineId = modelSpace(session.db())->appendOdDbEntity(pline.get());
  pline.release();
  const OdDbObjectId inside = addLine(session.db(), {12, 5, 0}, {18, 5, 0});

  const std::string text = overkill(session);
  // The last line absorbs the other two; the polyline's two straight pieces
  // become one and the line lying on it goes.
  EXPECT_THAT(text, HasSubstr("\n0 duplicate objects deleted.\n4 overlapping objects deleted or combined."));
  const OdDbObjectIdArray left = session.modelSpace();
  ASSERT_EQ(left.size(), 2u);
  OdDbLinePtr line = OdDbLine::cast(last.safeOpenObject());
  EXPECT_NEAR(std::min(line->startPoint().x, line->endPoint().x), 0.0, 1e-12);
  EXPECT_NEAR(std::max(line->startPoint().x, line->endPoint().x), 30.0, 1e-12);
  pline = OdDbPolyline::cast(plineId.safeOpenObject());
  ASSERT_EQ(pline->numVerts(), 3u);
  EXPECT_EQ(pline->getPoint2dAt(1), OdGePoint2d(20, 5));
  EXPECT_TRUE(inside.isErased());

  session.run({"U"});
  EXPECT_EQ(session.modelSpace().size(), 5u);
  EXPECT_FALSE(a.isErased());
  EXPECT_EQ(OdDbPolyline::cast(plineId.safeOpenObject())->numVerts(), 4u);
}

TEST(OverkillCommand, AClosedPolylineThatLosesAnEdgeStaysOnePolylineThroughItsStart) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  OdDbPolylinePtr square = OdDbPolyline::createObject();
  const OdGePoint2d corners[] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  for (unsigned i = 0; i < 4; ++i) square->addVertexAt(i, corners[i]);
  square->setClosed(true);
  const OdDbObjectId squareId = modelSpace(session.db())->appendOdDbEntity(square.get());
  square.release();
  // A longer line over the top edge, later in the selection: it takes the edge.
  const OdDbObjectId top = addLine(session.db(), {-5, 10, 0}, {15, 10, 0});
  EXPECT_THAT(overkill(session), HasSubstr("\n1 overlapping objects deleted or combined."));
  ASSERT_EQ(session.modelSpace().size(), 2u);
  EXPECT_FALSE(top.isErased());
  OdDbPolylinePtr rest = OdDbPolyline::cast(squareId.safeOpenObject());
  EXPECT_FALSE(rest->isClosed());
  ASSERT_EQ(rest->numVerts(), 4u);
  const OdGePoint2d expected[] = {{0, 10}, {0, 0}, {10, 0}, {10, 10}};
  for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(rest->getPoint2dAt(i), expected[i]) << i;
}

TEST(OverkillCommand, OldStylePolylinesAreRebuiltFromTheirRemainingPieces) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  OdDbBlockTableRecordPtr space = modelSpace(session.db());
  OdSmartPtr<OdDb2dPolyline> flat = OdDb2dPolyline::createObject();
  const OdDbObjectId flatId = space->appendOdDbEntity(flat.get());
  for (double x : {0.0, 10.0, 20.0}) {
    OdSmartPtr<OdDb2dVertex> vertex = OdDb2dVertex::createObject();
    vertex->setPosition({x, x == 20.0 ? 10.0 : 0.0, 0});
    flat->appendVertex(vertex.get());
  }
  flat.release();
  OdSmartPtr<OdDb3dPolyline> spatial = OdDb3dPolyline::createObject();
  const OdDbObjectId spatialId = space->appendOdDbEntity(spatial.get());
  for (double z : {0.0, 5.0}) {
    OdSmartPtr<OdDb3dPolylineVertex> vertex = OdDb3dPolylineVertex::createObject();
    vertex->setPosition({50, 50, z});
    spatial->appendVertex(vertex.get());
  }
  spatial.release();
  space.release();
  // A longer line over the first straight piece of the 2-d polyline, and a
  // 3-d line over the whole 3-d polyline, both later in the selection.
  addLine(session.db(), {-5, 0, 0}, {10, 0, 0});
  addLine(session.db(), {50, 50, -1}, {50, 50, 5});
  EXPECT_THAT(overkill(session), HasSubstr("\n0 duplicate objects deleted.\n2 overlapping objects deleted or combined."));
  EXPECT_TRUE(flatId.isErased());
  EXPECT_TRUE(spatialId.isErased());
  // What is left of the 2-d polyline comes back as a lightweight polyline.
  std::vector<OdGePoint2d> rebuilt;
  for (const OdDbObjectId& id : session.modelSpace())
    if (OdDbPolylinePtr pline = OdDbPolyline::cast(id.safeOpenObject()); !pline.isNull())
      for (unsigned i = 0; i < pline->numVerts(); ++i) rebuilt.push_back(pline->getPoint2dAt(i));
  EXPECT_EQ(rebuilt, (std::vector<OdGePoint2d>{{10, 0}, {20, 10}}));
  EXPECT_EQ(session.modelSpace().size(), 3u);
}

TEST(OverkillCommand, OtherKindsCompareTheirDataWithinTheToleranceOrAsRecordedBytes) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  auto text = [&](const wchar_t* string, double x) {
    OdSmartPtr<OdDbText> entity = OdDbText::createObject();
    entity->setTextString(string);
    entity->setPosition({x, 0, 0});
    entity->setHeight(2.5);
    return modelSpace(session.db())->appendOdDbEntity(entity.get());
  };
  text(L"A-1", 0);
  text(L"A-1", 5e-7);  // within the tolerance
  text(L"A-2", 0);     // another string
  text(L"A-1", 1e-3);  // elsewhere
  // Faces have no comparator of their own: their recorded data is compared
  // with doubles rounded to 5 decimals.
  auto face = [&](double x) {
    OdSmartPtr<OdDbFace> entity = OdDbFace::createObject();
    entity->setVertexAt(0, {0, 0, 0});
    entity->setVertexAt(1, {x, 0, 0});
    entity->setVertexAt(2, {1, 1, 0});
    entity->setVertexAt(3, {1, 1, 0});
    return modelSpace(session.db())->appendOdDbEntity(entity.get());
  };
  face(1.0);
  face(1.000004);
  face(1.0001);
  // Ellipses whose radius ratios differ by 5e-8 stay, though that is well within the tolerance.
  auto ellipse = [&](double ratio) {
    OdSmartPtr<OdDbEllipse> entity = OdDbEllipse::createObject();
    entity->set({50, 50, 0}, {0, 0, 1}, {10, 0, 0}, ratio);
    return modelSpace(session.db())->appendOdDbEntity(entity.get());
  };
  ellipse(0.5);
  ellipse(0.50000005);
  ellipse(0.5000000001);
  const std::string output = overkill(session);
  EXPECT_THAT(output, HasSubstr("\n3 duplicate objects deleted.\n0 overlapping objects deleted or combined."));
  EXPECT_EQ(session.modelSpace().size(), 7u);
}

// Every entity of a corpus drawing copied over itself, and every line and
// arc once more as its shifted second half: Overkill brings the drawing back
// to what one run makes of the original, as ezdxf reads both.
class OverkillCorpus : public testing::TestWithParam<const char*> {};

TEST_P(OverkillCorpus, CopiesOverThemselvesAndShiftedHalvesGoAgain) {
  HostSession session(CorpusDrawing{GetParam()});
  ASSERT_TRUE(session.loadModule());
  overkill(session);
  const size_t count = session.modelSpace().size();
  const std::string before = geometry(saved(session, std::string("before-") + GetParam()));
  ASSERT_THAT(before, HasSubstr("audit errors 0"));

  OdDbBlockTableRecordPtr space = modelSpace(session.db());
  int copies = 0;
  for (const OdDbObjectId& id : session.modelSpace()) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.safeOpenObject());
    OdDbEntityPtr copy = OdDbEntity::cast(entity->clone().get());
    space->appendOdDbEntity(copy.get());
    ++copies;
    if (OdDbLinePtr line = OdDbLine::cast(entity.get()); !line.isNull()) {
      OdDbLinePtr half = OdDbLine::cast(line->clone().get());
      half->setStartPoint(line->startPoint() + (line->endPoint() - line->startPoint()) * 0.5);
      space->appendOdDbEntity(half.get());
      ++copies;
    } else if (OdSmartPtr<OdDbArc> arc = OdDbArc::cast(entity.get()); !arc.isNull()) {
      OdSmartPtr<OdDbArc> half = OdSmartPtr<OdDbArc>(OdDbArc::cast(arc->clone().get()));
      half->setStartAngle(arc->startAngle() + arc->totalAngle() / 2);
      space->appendOdDbEntity(half.get());
      ++copies;
    }
  }
  space.release();
  ASSERT_EQ(session.modelSpace().size(), count + copies);
  const std::string text = overkill(session);
  EXPECT_EQ(session.modelSpace().size(), count) << text;
  EXPECT_EQ(geometry(saved(session, std::string("after-") + GetParam())), before);
}

INSTANTIATE_TEST_SUITE_P(Drawings, OverkillCorpus,
                         testing::Values("examples_edgeminer_2_polylines.dxf", "examples_addons_optimize_forms.dxf",
                                         "examples_edgeminer_6_closed_loop_with_arcs.dxf",
                                         "integration_tests_data_cc_dxflib.dxf"));
