// -BLOCK, -INSERT and EXPLODE: blocks made of selected objects, references
// with scale, rotation and attribute values, drawing files inserted as
// blocks, and references, arrays, dimensions and polylines exploded (also on
// corpus drawings with nested blocks and attributes).
#include <gmock/gmock.h>

#include <cmath>

#include "DbDimension.h"
#include "host_test_support.h"

using namespace hosttest;
using ::testing::HasSubstr;

namespace {

// A block "DOOR" of a line from (0,0) to (1,0), an arc and an attribute
// definition NUM (default D1) at (0,1), based at the origin.
void makeDoorBlock(HostSession& session) {
  session.run({"LINE",    "0,0",  "1,0", "",
               "ARC",     "C",    "0,0", "1,0",
               "0,1",  //
               "-ATTDEF", "",     "NUM", "Door number",
               "D1",      "0,1",  "0.5", "0",  //
               "-BLOCK",  "DOOR", "0,0", "C",
               "-1,-1",   "2,2",  ""});
}

OdDbBlockReferencePtr onlyReference(HostSession& session) {
  auto references = entitiesOf<OdDbBlockReference>(session);
  EXPECT_EQ(references.size(), 1u);
  return references.empty() ? OdDbBlockReferencePtr() : references[0];
}

}  // namespace

TEST(DrawBlock, SelectedObjectsBecomeTheBlockAndLeave) {
  HostSession session;
  makeDoorBlock(session);
  EXPECT_TRUE(session.modelSpace().empty());
  const OdDbObjectIdArray contents = blockEntities(session.db(), L"DOOR");
  ASSERT_EQ(contents.size(), 3u);
  int definitions = 0;
  for (const OdDbObjectId& id : contents) definitions += open<OdDbAttributeDefinition>(id).isNull() ? 0 : 1;
  EXPECT_EQ(definitions, 1);
  OdDbBlockTableRecordPtr block =
      open<OdDbBlockTableRecord>(session.db()->findRecord(OdDbNameTable::kBlock, L"DOOR"));
  EXPECT_TRUE(block->hasAttributeDefinitions());

  // Redefining asks first; a block cannot take a reference to itself.
  const std::string shown = session.run({"-INSERT", "DOOR", "5,5", "", "", "0", "",  //
                                         "-BLOCK", "DOOR", "Y", "0,0", "ALL", ""});
  EXPECT_THAT(shown, HasSubstr("Block \"DOOR\" already exists. Redefine it? [Yes/No] <No>: "));
  EXPECT_THAT(shown, HasSubstr("cannot contain a reference to itself"));
  EXPECT_EQ(blockEntities(session.db(), L"DOOR").size(), 3u);
  EXPECT_EQ(session.modelSpace().size(), 1u);
  expectEscAndUndoLeaveNothing(session, {"-BLOCK", "FRAME", "1,1", "ALL", ""});
}

TEST(DrawInsert, ScaleRotationAndAttributeValues) {
  HostSession session;
  makeDoorBlock(session);
  const std::string shown = session.run({"-INSERT", "NOSUCH", "?", "", "DOOR", "10,10", "2", "", "90", "D7"});
  EXPECT_THAT(shown, HasSubstr("Cannot find a block or drawing named \"NOSUCH\"."));
  EXPECT_THAT(shown, HasSubstr("\"DOOR\""));
  EXPECT_THAT(shown, HasSubstr("Enter X scale factor, specify opposite corner, or [Corner/XYZ] <1>: "));
  EXPECT_THAT(shown, HasSubstr("Enter attribute values\nDoor number <D1>: D7"));
  OdDbBlockReferencePtr reference = onlyReference(session);
  ASSERT_FALSE(reference.isNull());
  expectPoint(reference->position(), 10, 10);
  EXPECT_DOUBLE_EQ(reference->scaleFactors().sx, 2);
  EXPECT_DOUBLE_EQ(reference->scaleFactors().sy, 2);
  EXPECT_NEAR(reference->rotation(), kPi / 2, 1e-12);
  ASSERT_EQ(reference->attributeIds().size(), 1u);
  OdDbAttributePtr attribute = open<OdDbAttribute>(reference->attributeIds()[0]);
  EXPECT_EQ(attribute->tag(), L"NUM");
  EXPECT_EQ(attribute->textString(), L"D7");
  // The definition's (0,1) placed by the reference; its height scaled.
  expectPoint(attribute->position(), 8, 10);
  EXPECT_DOUBLE_EQ(attribute->height(), 1.0);
  EXPECT_FALSE(reference->sequenceEndId().isNull());

  // Enter takes the last block; with ATTREQ 0 the defaults go in unasked;
  // a corner gives both scales.
  session.run({"ATTREQ", "0", "-INSERT", "", "0,0", "C", "3,-2", "0"});
  auto references = entitiesOf<OdDbBlockReference>(session);
  ASSERT_EQ(references.size(), 2u);
  EXPECT_DOUBLE_EQ(references[1]->scaleFactors().sx, 3);
  EXPECT_DOUBLE_EQ(references[1]->scaleFactors().sy, -2);
  EXPECT_EQ(open<OdDbAttribute>(references[1]->attributeIds()[0])->textString(), L"D1");
  session.run({"ATTREQ", "1"});
  expectEscAndUndoLeaveNothing(session, {"-INSERT", "DOOR", "R", "30", "1,1", "XYZ", "2", "3", "", "D9"});
}

TEST(DrawInsert, PresetConstantAndVerifiedAttributes) {
  HostSession session;
  session.run({"-ATTDEF", "", "A", "First", "a0", "0,0", "1", "0",                 //
               "-ATTDEF", "P", "", "B", "Second", "b0", "0,-2", "1", "0",          // preset
               "-ATTDEF", "P", "C", "", "C", "c0", "0,-4", "1", "0",              // constant
               "-ATTDEF", "C", "V", "", "D", "Fourth", "d0", "0,-6", "1", "0",    // verified
               "-BLOCK", "TAGS", "0,0", "ALL", ""});
  const std::string shown = session.run({"-INSERT", "TAGS", "5,5", "", "", "0", "a1", "d1", "d2"});
  EXPECT_THAT(shown, HasSubstr("Enter attribute values\nFirst <a0>: a1\nFourth <d0>: d1\n"
                               "Verify attribute values\nFourth <d1>: d2"));
  OdDbBlockReferencePtr reference = onlyReference(session);
  ASSERT_FALSE(reference.isNull());
  std::vector<std::wstring> values;
  for (const OdDbObjectId& id : reference->attributeIds()) {
    OdDbAttributePtr attribute = open<OdDbAttribute>(id);
    values.push_back((attribute->tag() + L"=" + attribute->textString()).c_str());
  }
  EXPECT_EQ(values, (std::vector<std::wstring>{L"A=a1", L"B=b0", L"D=d2"}));
}

TEST(DrawInsert, DrawingFileBecomesABlockWithWhatItNeeds) {
  HostSession session;
  const std::string file = std::string(KESTRIX_CORPUS_DIR) + "/examples_dxf_multi_insert_with_attribs.dxf";
  // The block, its nested block and the layers it needs all go with U.
  expectEscAndUndoLeaveNothing(session, {"-INSERT", file, "0,0", "", "", "0"});
  session.run({"-INSERT", file, "0,0", "", "", "0"});
  const OdDbObjectIdArray contents = blockEntities(session.db(), L"examples_dxf_multi_insert_with_attribs");
  ASSERT_EQ(contents.size(), 1u);
  OdSmartPtr<OdDbMInsertBlock> array = open<OdDbMInsertBlock>(contents[0]);
  ASSERT_FALSE(array.isNull());
  EXPECT_EQ(array->rows(), 5);
  EXPECT_EQ(array->attributeIds().size(), 3u);
  EXPECT_EQ(layerName(array.get()), L"FLAGS");
  // The nested block came along with its name; its entities are this drawing's.
  EXPECT_EQ(array->blockTableRecord(), session.db()->findRecord(OdDbNameTable::kBlock, L"FLAG"));
  const OdDbObjectIdArray flag = blockEntities(session.db(), L"FLAG");
  ASSERT_EQ(flag.size(), 5u);
  for (const OdDbObjectId& id : flag) EXPECT_EQ(id.database(), session.db());
  EXPECT_EQ(onlyReference(session)->blockTableRecord(),
            session.db()->findRecord(OdDbNameTable::kBlock, L"examples_dxf_multi_insert_with_attribs"));
}

TEST(DrawExplode, ArrayWithAttributesFromTheCorpus) {
  HostSession session(CorpusDrawing{"examples_dxf_multi_insert_with_attribs.dxf"});
  OdDbBlockReferencePtr array = onlyReference(session);
  ASSERT_FALSE(array.isNull());
  const OdGeMatrix3d firstCell = array->blockTransform();
  const OdDbObjectId circleInBlock = blockEntities(session.db(), L"FLAG")[1];
  const OdGePoint3d center = open<OdDbCircle>(circleInBlock)->center();
  session.run({"EXPLODE", "ALL", ""});
  // 5 x 5 copies of the block's polyline, circle and three attribute definitions.
  EXPECT_EQ(session.modelSpace().size(), 125u);
  EXPECT_TRUE(entitiesOf<OdDbBlockReference>(session).empty());
  EXPECT_TRUE(entitiesOf<OdDbAttribute>(session).empty());
  EXPECT_EQ(entitiesOf<OdDbAttributeDefinition>(session).size(), 75u);
  auto circles = entitiesOf<OdDbCircle>(session);
  ASSERT_EQ(circles.size(), 25u);
  EXPECT_TRUE(circles[0]->center().isEqualTo(firstCell * center));
  for (const auto& circle : circles) EXPECT_EQ(layerName(circle.get()), L"FLAGS");
  // The polylines own their vertices, which follow them onto the reference's layer.
  for (const auto& polyline : entitiesOf<OdDb2dPolyline>(session)) {
    EXPECT_EQ(layerName(polyline.get()), L"FLAGS");
    for (const OdDbObjectId& vertex : *polyline->subentityIds()) {
      EXPECT_EQ(open<OdDbEntity>(vertex)->ownerId(), polyline->objectId());
      EXPECT_EQ(layerName(open<OdDbEntity>(vertex).get()), L"FLAGS");
    }
  }
}

TEST(DrawExplode, DimensionsInABlockGetPicturesOfTheirOwn) {
  HostSession session(CorpusDrawing{"examples_dxf_dimension_in_block.dxf"});
  const std::string before = drawingText(session.db());
  const OdDbObjectId inner = blockEntities(session.db(), L"BLK_WITH_DIM")[1];
  const OdDbObjectId innerPicture = open<OdDbDimension>(inner)->dimBlockId();
  const OdString innerPictureName = open<OdDbBlockTableRecord>(innerPicture)->getName();
  const OdGePoint3d firstInner =
      open<OdDbLine>(blockEntities(session.db(), innerPictureName.c_str())[0])->startPoint();
  const OdDbObjectId rotatedId = session.modelSpace()[3];
  const OdGeMatrix3d rotated = open<OdDbBlockReference>(rotatedId)->blockTransform();
  session.run({"EXPLODE", "#" + rotatedId.handle().ascii().toUtf8(), ""});
  OdDbObjectId exploded;
  for (const OdDbObjectId& id : session.modelSpace()) {
    if (!open<OdDbDimension>(id).isNull()) exploded = id;
  }
  const OdDbObjectId picture = open<OdDbDimension>(exploded)->dimBlockId();
  ASSERT_NE(picture, innerPicture);
  const OdDbObjectIdArray pieces =
      blockEntities(session.db(), open<OdDbBlockTableRecord>(picture)->getName().c_str());
  ASSERT_EQ(pieces.size(), 9u);
  // The new picture shows the first line where the reference put it; the block's stays.
  EXPECT_TRUE(open<OdDbLine>(pieces[0])->startPoint().isEqualTo(rotated * firstInner));
  EXPECT_TRUE(open<OdDbLine>(blockEntities(session.db(), innerPictureName.c_str())[0])
                  ->startPoint()
                  .isEqualTo(firstInner));

  // A dimension explodes into its picture; Defpoints stays Defpoints.
  session.run({"EXPLODE", "#" + exploded.handle().ascii().toUtf8(), ""});
  EXPECT_EQ(entitiesOf<OdDbDimension>(session).size(), 1u);
  int defpoints = 0;
  for (const OdDbObjectId& id : session.modelSpace())
    defpoints += layerName(open<OdDbEntity>(id).get()) == L"Defpoints";
  EXPECT_EQ(defpoints, 3);
  session.run({"U", "U"});
  EXPECT_EQ(difference(before, drawingText(session.db())), "");
}

TEST(DrawExplode, StretchedReferencesNestedAttributesAndPolylines) {
  HostSession session;
  makeDoorBlock(session);
  // A block holding a circle and a reference with an attribute value.
  session.run({"CIRCLE",  "0,0",  "1",    "-INSERT", "DOOR", "0,0", "", "",  "0",       "D5",  //
               "-BLOCK",  "PAIR", "0,0",  "ALL",     "",                                       //
               "-INSERT", "PAIR", "10,0", "XYZ",     "2",    "1",   "", "0", "EXPLODE", "L",  ""});
  // The circle became an ellipse; the nested reference (stretched along its
  // axes) stays a reference with a copy of its attribute.
  {
    auto ellipses = entitiesOf<OdDbEllipse>(session);
    ASSERT_EQ(ellipses.size(), 1u);
    EXPECT_NEAR(ellipses[0]->majorRadius(), 2, 1e-9);
    EXPECT_NEAR(ellipses[0]->minorRadius(), 1, 1e-9);
    OdDbBlockReferencePtr door = onlyReference(session);
    ASSERT_FALSE(door.isNull());
    EXPECT_DOUBLE_EQ(door->scaleFactors().sx, 2);
    ASSERT_EQ(door->attributeIds().size(), 1u);
    OdDbAttributePtr value = open<OdDbAttribute>(door->attributeIds()[0]);
    EXPECT_EQ(value->textString(), L"D5");
    EXPECT_EQ(value->ownerId(), door->objectId());
    expectPoint(value->position(), 10, 1);
    // The block's own reference keeps its attribute where it was.
    for (const OdDbObjectId& id : blockEntities(session.db(), L"PAIR")) {
      if (auto nested = open<OdDbBlockReference>(id))
        expectPoint(open<OdDbAttribute>(nested->attributeIds()[0])->position(), 0, 1);
    }
  }
  // The stretched door: its arc becomes an elliptical arc.
  session.run({"EXPLODE", "L", ""});
  ASSERT_EQ(entitiesOf<OdDbEllipse>(session).size(), 2u);
  EXPECT_FALSE(entitiesOf<OdDbEllipse>(session)[1]->isClosed());
  EXPECT_EQ(entitiesOf<OdDbAttributeDefinition>(session).size(), 1u);

  // A polyline arc cannot be stretched: that reference stays whole.
  std::string shown =
      session.run({"PLINE",   "30,0",  "A",    "40,10", "",  "-BLOCK", "BULGE", "30,0", "L",       "",  //
                   "-INSERT", "BULGE", "0,20", "XYZ",   "2", "1",      "",      "0",    "EXPLODE", "L", ""});
  EXPECT_THAT(shown, HasSubstr("1 object could not be exploded."));
  EXPECT_EQ(entitiesOf<OdDbBlockReference>(session).size(), 1u);
  // A polyline explodes into lines and arcs; a wide one loses its widths.
  shown = session.run({"PLINE", "20,0", "W", "1", "", "30,0", "A", "30,10", "", "EXPLODE", "L", ""});
  EXPECT_THAT(shown, HasSubstr("Exploding this polyline has lost width information."));
  EXPECT_EQ(entitiesOf<OdDbArc>(session).size(), 1u);
  EXPECT_TRUE(entitiesOf<OdDbPolyline>(session).empty());
  session.run({"PLINE", "0,-10", "5,-10", "5,-5", ""});
  expectEscAndUndoLeaveNothing(session, {"EXPLODE", "ALL", ""});
}
