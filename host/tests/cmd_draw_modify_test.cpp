// MOVE, COPY, ROTATE, SCALE and BREAK: transforms from base points,
// displacements and references, copies that own their attributes and
// vertices, locked layers, breaks of every kind of curve, Esc and U.
#include <gmock/gmock.h>

#include <cmath>

#include "DbDimension.h"
#include "host_test_support.h"

using namespace hosttest;
using ::testing::HasSubstr;

namespace {

void makeDoor(HostSession& session) {
  session.run(
      {"LINE",   "0,0",  "1,0", "",    "-ATTDEF", "",        "NUM",  "Number", "D1", "0,1", "0.5", "0",  //
       "-BLOCK", "DOOR", "0,0", "ALL", "",        "-INSERT", "DOOR", "0,0",    "",   "",    "0",   "D7"});
}

// An old-style 2-d polyline through the points.
OdDbObjectId addPolyline2d(OdDbDatabase* db, std::initializer_list<OdGePoint3d> points) {
  OdDb2dPolylinePtr polyline = OdDb2dPolyline::createObject();
  OdDbObjectPtr space = db->getModelSpaceId().openObject(OdDb::kForWrite);
  const OdDbObjectId id = static_cast<OdDbBlockTableRecord*>(space.get())->appendOdDbEntity(polyline.get());
  for (const OdGePoint3d& point : points) {
    OdDb2dVertexPtr vertex = OdDb2dVertex::createObject();
    vertex->setPosition(point);
    polyline->appendVertex(vertex.get());
  }
  return id;
}

std::vector<OdGePoint3d> vertexPositions(const OdDb2dPolyline* polyline) {
  std::vector<OdGePoint3d> positions;
  for (const OdDbObjectId& id : *polyline->subentityIds()) {
    OdDbVertexPtr vertex = open<OdDbVertex>(id);
    EXPECT_EQ(vertex->ownerId(), polyline->objectId());
    positions.push_back(vertex->position());
  }
  return positions;
}

}  // namespace

// Entities are looked up afresh after each command: a pointer held across
// a command would keep what the command changed open.

TEST(DrawMove, BasePointsDisplacementsAndLockedLayers) {
  HostSession session;
  session.run({"LINE", "0,0", "10,0", "",    "CIRCLE", "20,0", "2",  //
               "MOVE", "ALL", "",     "0,0", "5,5",                  // base point and second point
               "MOVE", "L",   "",     "",    "1,2",                  // a displacement
               "MOVE", "L",   "",     "3,0", ""});                   // the first point as displacement
  ASSERT_EQ(entitiesOf<OdDbLine>(session).size(), 1u);
  expectPoint(entitiesOf<OdDbLine>(session)[0]->startPoint(), 5, 5);
  expectPoint(entitiesOf<OdDbCircle>(session)[0]->center(), 29, 7);
  {
    OdDbLayerTableRecordPtr layer = OdDbLayerTableRecord::createObject();
    layer->setName(L"LOCKED");
    layer->setIsLocked(true);
    OdDbObjectPtr table = session.db()->getLayerTableId().openObject(OdDb::kForWrite);
    const OdDbObjectId locked = static_cast<OdDbSymbolTable*>(table.get())->add(layer.get());
    OdDbEntityPtr line = OdDbEntity::cast(session.modelSpace()[0].openObject(OdDb::kForWrite).get());
    line->setLayer(locked);
  }
  const std::string shown = session.run({"MOVE", "ALL", "", "0,0", "0,10"});
  EXPECT_THAT(shown, HasSubstr("1 was on a locked layer."));
  expectPoint(entitiesOf<OdDbLine>(session)[0]->startPoint(), 5, 5);
  expectPoint(entitiesOf<OdDbCircle>(session)[0]->center(), 29, 17);
  expectEscAndUndoLeaveNothing(session, {"MOVE", "ALL", "", "1,1", "4,5"});
}

TEST(DrawCopy, CopiesOwnTheirAttributesAndVertices) {
  HostSession session;
  makeDoor(session);
  const OdDbObjectId polylineId = addPolyline2d(session.db(), {{0, 5, 0}, {2, 5, 0}, {2, 7, 0}});
  const std::string shown = session.run({"COPY", "ALL", "", "0,0", "10,0", "20,0", "U", "30,0", ""});
  EXPECT_THAT(shown, HasSubstr("Specify second point or [Exit/Undo] <Exit>: "));
  {
    auto references = entitiesOf<OdDbBlockReference>(session);
    ASSERT_EQ(references.size(), 3u);
    std::vector<OdDbObjectId> attributes;
    for (const auto& reference : references) {
      ASSERT_EQ(reference->attributeIds().size(), 1u);
      OdDbAttributePtr attribute = open<OdDbAttribute>(reference->attributeIds()[0]);
      EXPECT_EQ(attribute->ownerId(), reference->objectId());
      EXPECT_EQ(attribute->textString(), L"D7");
      expectPoint(attribute->position(), reference->position().x, 1);
      attributes.push_back(attribute->objectId());
    }
    EXPECT_NE(attributes[0], attributes[1]);
    EXPECT_NE(attributes[1], attributes[2]);
    expectPoint(references[2]->position(), 30, 0);

    auto polylines = entitiesOf<OdDb2dPolyline>(session);
    ASSERT_EQ(polylines.size(), 3u);
    EXPECT_EQ(polylines[0]->objectId(), polylineId);
    EXPECT_NE((*polylines[1]->subentityIds())[0], (*polylines[0]->subentityIds())[0]);
    const auto original = vertexPositions(polylines[0].get());
    const auto copy = vertexPositions(polylines[2].get());
    ASSERT_EQ(copy.size(), 3u);
    expectPoint(original[2], 2, 7);
    expectPoint(copy[2], 32, 7);
  }
  // Single mode makes one copy and asks no more.
  session.run({"COPY", "#" + polylineId.handle().ascii().toUtf8(), "", "O", "S", "0,0", "0,-10"});
  EXPECT_EQ(entitiesOf<OdDb2dPolyline>(session).size(), 4u);
  expectEscAndUndoLeaveNothing(session, {"COPY", "ALL", "", "D", "0,3"});
}

TEST(DrawCopy, DimensionsGetPicturesOfTheirOwn) {
  HostSession session(CorpusDrawing{"examples_dxf_dimension_in_block.dxf"});
  const OdDbObjectId original = session.modelSpace()[1];
  auto firstLineOf = [&](const OdDbObjectId& dimension) {
    const OdDbObjectId block = open<OdDbDimension>(dimension)->dimBlockId();
    return open<OdDbLine>(blockEntities(session.db(), open<OdDbBlockTableRecord>(block)->getName().c_str())[0])
        ->startPoint();
  };
  const OdGePoint3d before = firstLineOf(original);
  const std::string handle = "#" + original.handle().ascii().toUtf8();
  session.run({"COPY", handle, "", "0,0", "100,0", "", "MOVE", handle, "", "0,0", "0,50"});
  const OdDbObjectId copy = session.modelSpace()[4];
  ASSERT_FALSE(open<OdDbDimension>(copy).isNull());
  EXPECT_NE(open<OdDbDimension>(copy)->dimBlockId(), open<OdDbDimension>(original)->dimBlockId());
  EXPECT_TRUE(firstLineOf(copy).isEqualTo(before + OdGeVector3d(100, 0, 0)));
  EXPECT_TRUE(firstLineOf(original).isEqualTo(before + OdGeVector3d(0, 50, 0)));
}

TEST(DrawRotateScale, AnglesFactorsReferencesAndCopies) {
  HostSession session;
  auto line = [&](size_t index) { return entitiesOf<OdDbLine>(session).at(index); };
  session.run({"LINE", "0,0", "10,0", "", "ROTATE", "L", "", "0,0", "90"});
  expectPoint(line(0)->endPoint(), 0, 10);
  // A copy turned from 90 to 180 degrees: the original stays.
  const std::string shown = session.run({"ROTATE", "L", "", "0,0", "C", "R", "90", "180"});
  EXPECT_THAT(shown, HasSubstr("Current positive angle in UCS:  ANGDIR=counterclockwise  ANGBASE=0"));
  EXPECT_THAT(shown, HasSubstr("Specify rotation angle or [Copy/Reference] <90>: "));
  EXPECT_THAT(shown, HasSubstr("Rotating a copy of the selected objects."));
  expectPoint(line(0)->endPoint(), 0, 10);
  expectPoint(line(1)->endPoint(), -10, 0);

  session.run({"SCALE", "L", "", "0,0", "2",             // (-20,0)
               "SCALE", "L", "", "0,0", "R", "20", "5",  // to a length of 5
               "SCALE", "L", "", "0,0", "C", "3"});      // a copy three times as long
  ASSERT_EQ(entitiesOf<OdDbLine>(session).size(), 3u);
  expectPoint(line(1)->endPoint(), -5, 0);
  expectPoint(line(2)->endPoint(), -15, 0);
  expectEscAndUndoLeaveNothing(session, {"ROTATE", "ALL", "", "1,1", "R", "0", "P", "0,0", "0,1"});
  expectEscAndUndoLeaveNothing(session, {"SCALE", "ALL", "", "1,1", "R", "2", "4"});
}

TEST(DrawBreak, LinesArcsCirclesAndPolylines) {
  HostSession session;
  auto line = [&](size_t index) { return entitiesOf<OdDbLine>(session).at(index); };
  session.run({"LINE", "0,0", "10,0", "", "BREAK", "2,0", "6,0",  // a gap
               "BREAK", "1,0", "F", "1,0", "@"});                 // split at one point
  ASSERT_EQ(entitiesOf<OdDbLine>(session).size(), 3u);
  expectPoint(line(0)->endPoint(), 1, 0);
  expectPoint(line(1)->startPoint(), 6, 0);
  expectPoint(line(2)->startPoint(), 1, 0);
  expectPoint(line(2)->endPoint(), 2, 0);

  // A circle loses the part counter-clockwise from the first point to the second.
  const std::string shown = session.run({"CIRCLE", "20,0", "5", "CIRCLE", "40,0", "5",  //
                                         "BREAK", "25,0", "20,5", "BREAK", "45,0", "@"});
  EXPECT_THAT(shown, HasSubstr("Arc cannot be full 360 degrees."));
  ASSERT_EQ(entitiesOf<OdDbCircle>(session).size(), 1u);
  auto arc = [&] { return entitiesOf<OdDbArc>(session).at(0); };
  ASSERT_EQ(entitiesOf<OdDbArc>(session).size(), 1u);
  EXPECT_NEAR(arc()->startAngle(), kPi / 2, 1e-9);
  EXPECT_NEAR(arc()->endAngle(), 0, 1e-9);
  // From the arc's end to a point on it: what stays ends there.
  session.run({"BREAK", "25,0", "20,-5"});
  EXPECT_NEAR(arc()->startAngle(), kPi / 2, 1e-9);
  EXPECT_NEAR(arc()->endAngle(), 1.5 * kPi, 1e-9);

  // An open polyline of a line and a half circle, broken from the line's
  // middle to the arc's; a closed one opened at a point.
  session.run({"PLINE", "0,20", "10,20", "A", "10,30", "", "BREAK", "5,20", "15,25",  //
               "PLINE", "0,40", "10,40", "10,50", "C", "BREAK", "5,40", "@"});
  {
    auto polylines = entitiesOf<OdDbPolyline>(session);
    ASSERT_EQ(polylines.size(), 3u);
    ASSERT_EQ(polylines[0]->numVerts(), 2u);
    EXPECT_EQ(polylines[0]->getPoint2dAt(1), OdGePoint2d(5, 20));
    ASSERT_EQ(polylines[1]->numVerts(), 2u);
    EXPECT_TRUE(polylines[1]->getPoint2dAt(0).isEqualTo(OdGePoint2d(15, 25)));
    EXPECT_NEAR(polylines[1]->getBulgeAt(0), std::tan(kPi / 8), 1e-9);
    ASSERT_EQ(polylines[2]->numVerts(), 5u);
    EXPECT_FALSE(polylines[2]->isClosed());
    EXPECT_EQ(polylines[2]->getPoint2dAt(0), OdGePoint2d(5, 40));
    EXPECT_EQ(polylines[2]->getPoint2dAt(3), OdGePoint2d(0, 40));
    EXPECT_EQ(polylines[2]->getPoint2dAt(4), OdGePoint2d(5, 40));
  }
  expectEscAndUndoLeaveNothing(session, {"BREAK", "42,3", "F", "45,0", "40,5"});
}
