// Selection filters through ryedSSGet "X": wildcards, the logical and
// relational operators, extended data, block names, and malformed lists.
#include <gmock/gmock.h>

#include "host_test_support.h"

using namespace hosttest;
using ::testing::UnorderedElementsAre;
using ::testing::UnorderedElementsAreArray;
using Ids = std::vector<OdDbObjectId>;

namespace {

struct FilterScene {
  OdDbObjectId wallLine, redLine, smallCircle, bigCircle, arc, text, mirroredText;

  explicit FilterScene(OdDbDatabase* db) {
    addLayer(db, L"WALL-1");
    addLayer(db, L"WALL-2");
    addLayer(db, L"DOOR");
    addLayer(db, L"Misc");
    wallLine = addLine(db, {1, 1, 0}, {5, 1, 0}, L"WALL-1");
    redLine = addLine(db, {-3, -3, 0}, {2, 2, 0}, L"WALL-2");
    setColor(redLine, 1);
    smallCircle = addCircle(db, {5, 5, 0}, 2, L"DOOR");
    bigCircle = addCircle(db, {-5, 20, 0}, 8, L"WALL-1");
    OdSmartPtr<OdDbArc> a = OdDbArc::createObject();
    a->setCenter({10, -10, 0});
    a->setRadius(3);
    a->setEndAngle(1);
    arc = place(db, a.get(), L"Misc");
    text = addText(db, {2, 8, 0}, 2.5, L"Hello", L"Misc");
    mirroredText = addText(db, {-2, 4, 0}, 2.5, L"World", L"Misc");
    OdSmartPtr<OdDbText> mirrored = OdDbText::cast(mirroredText.openObject(OdDb::kForWrite).get());
    mirrored->mirrorInX(true);
    mirrored->mirrorInY(true);
    OdSmartPtr<OdDbText> once = OdDbText::cast(text.openObject(OdDb::kForWrite).get());
    once->mirrorInX(true);
  }
};

// The entities "X" selects with the filter; empty when it selects none.
Ids selectWith(const resbuf* filter) {
  ads_name ss;
  if (ryedSSGet(L"X", nullptr, nullptr, filter, ss) != RTNORM) return {};
  return members(ss);
}

}  // namespace

TEST(SelectionFilters, TypesLayersAndColoursMatchWildcards) {
  HostSession session;
  FilterScene s(session.db());
  EXPECT_THAT(selectWith(List(ryutBuildList(RTDXF0, L"LINE,ARC", RTNONE))),
              UnorderedElementsAre(s.wallLine, s.redLine, s.arc));
  EXPECT_THAT(selectWith(List(ryutBuildList(RTDXF0, L"circle", RTNONE))),
              UnorderedElementsAre(s.smallCircle, s.bigCircle));
  EXPECT_THAT(selectWith(List(ryutBuildList(RTDXF0, L"~*[EC]", RTNONE))),
              UnorderedElementsAre(s.text, s.mirroredText));
  EXPECT_THAT(selectWith(List(ryutBuildList(8, L"wall-*", RTNONE))),
              UnorderedElementsAre(s.wallLine, s.redLine, s.bigCircle));
  EXPECT_THAT(selectWith(List(ryutBuildList(RTDXF0, L"LINE", 8, L"WALL-#", RTNONE))),
              UnorderedElementsAre(s.wallLine, s.redLine));
  // No colour group means by layer.
  EXPECT_THAT(selectWith(List(ryutBuildList(62, 1, RTNONE))), UnorderedElementsAre(s.redLine));
  EXPECT_EQ(selectWith(List(ryutBuildList(62, 256, RTNONE))).size(), 6u);
}

TEST(SelectionFilters, LogicalOperatorsNest) {
  HostSession session;
  FilterScene s(session.db());
  // clang-format off
  List either(ryutBuildList(-4, L"<OR",
                                    -4, L"<AND", RTDXF0, L"LINE", 62, 1, -4, L"AND>",
                                    -4, L"<and", RTDXF0, L"CIRCLE", -4, L">", 40, 5.0, -4, L"and>",
                                  -4, L"OR>", RTNONE));
  // clang-format on
  EXPECT_THAT(selectWith(either), UnorderedElementsAre(s.redLine, s.bigCircle));
  List notWalls(ryutBuildList(-4, L"<NOT", 8, L"WALL*", -4, L"NOT>", RTNONE));
  EXPECT_THAT(selectWith(notWalls), UnorderedElementsAre(s.smallCircle, s.arc, s.text, s.mirroredText));
  List oneOf(ryutBuildList(-4, L"<XOR", RTDXF0, L"CIRCLE", 8, L"WALL*", -4, L"XOR>", RTNONE));
  EXPECT_THAT(selectWith(oneOf), UnorderedElementsAre(s.wallLine, s.redLine, s.smallCircle));
}

TEST(SelectionFilters, RelationalTestsOnNumbersPointsBitsAndNames) {
  HostSession session;
  FilterScene s(session.db());
  EXPECT_THAT(selectWith(List(ryutBuildList(-4, L"<=", 40, 2.0, RTNONE))),
              UnorderedElementsAre(s.smallCircle));
  EXPECT_THAT(selectWith(List(ryutBuildList(RTDXF0, L"TEXT,CIRCLE,ARC", -4, L"!=", 40, 2.5, RTNONE))),
              UnorderedElementsAre(s.smallCircle, s.bigCircle, s.arc));
  EXPECT_THAT(selectWith(List(ryutBuildList(-4, L"/=", 40, 2.5, -4, L">=", 40, 3.0, RTNONE))),
              UnorderedElementsAre(s.bigCircle, s.arc));
  const ads_point origin = {0, 0, 0};
  EXPECT_THAT(selectWith(List(ryutBuildList(-4, L">,>,*", 10, origin, RTNONE))),
              UnorderedElementsAre(s.wallLine, s.smallCircle, s.text));
  const ads_point centre = {5, 5, 0};
  EXPECT_THAT(selectWith(List(ryutBuildList(10, centre, RTNONE))), UnorderedElementsAre(s.smallCircle));
  // Generation flags: 2 mirrored in x, 4 in y.
  EXPECT_THAT(selectWith(List(ryutBuildList(-4, L"&", 71, 2, RTNONE))),
              UnorderedElementsAre(s.text, s.mirroredText));
  EXPECT_THAT(selectWith(List(ryutBuildList(-4, L"&=", 71, 6, RTNONE))),
              UnorderedElementsAre(s.mirroredText));
  EXPECT_THAT(selectWith(List(ryutBuildList(-4, L"<", 8, L"m", RTNONE))),
              UnorderedElementsAre(s.smallCircle));
  EXPECT_EQ(selectWith(List(ryutBuildList(-4, L"*", 1, L"", RTNONE))).size(), 2u);
}

TEST(SelectionFilters, ExtendedDataBlockNamesAndAttributes) {
  HostSession session;
  OdDbDatabase* db = session.db();
  OdDbObjectId tagged = addLine(db, {0, 0, 0}, {1, 0, 0});
  addLine(db, {0, 1, 0}, {1, 1, 0});
  {
    OdDbObjectPtr table = db->getRegAppTableId().openObject(OdDb::kForWrite);
    OdSmartPtr<OdDbRegAppTableRecord> app = OdDbRegAppTableRecord::createObject();
    app->setName(L"PLANNER");
    static_cast<OdDbSymbolTable*>(table.get())->add(app.get());
  }
  ASSERT_EQ(tagged.openObject(OdDb::kForWrite)
                ->setXData({OdDxfTag::str(1001, L"PLANNER"), OdDxfTag::str(1000, L"x")}),
            eOk);
  EXPECT_THAT(selectWith(List(ryutBuildList(-3, 1001, L"plan*", RTNONE))),
              UnorderedElementsAre(tagged));
  EXPECT_TRUE(selectWith(List(ryutBuildList(-3, 1001, L"PLANNER", 1001, L"OTHER", RTNONE))).empty());

  auto defineBlock = [&](const wchar_t* name) {
    OdDbObjectPtr table = db->getBlockTableId().openObject(OdDb::kForWrite);
    OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::createObject();
    block->setName(name);
    OdDbObjectId id = static_cast<OdDbSymbolTable*>(table.get())->add(block.get());
    OdDbLinePtr line = OdDbLine::createObject();
    line->setEndPoint({1, 1, 0});
    block->appendOdDbEntity(line.get());
    return id;
  };
  auto insert = [&](const OdDbObjectId& block, bool withAttribute) {
    OdDbBlockReferencePtr reference = OdDbBlockReference::createObject();
    reference->setBlockTableRecord(block);
    OdDbObjectId id = place(db, reference.get());
    if (withAttribute) {
      OdDbAttributePtr attribute = OdDbAttribute::createObject();
      attribute->setTag(L"NUMBER");
      attribute->setTextString(L"7");
      reference->appendAttribute(attribute.get());
    }
    return id;
  };
  OdDbObjectId door = insert(defineBlock(L"DOOR"), true);
  OdDbObjectId anonymous = insert(defineBlock(L"*U7"), false);
  EXPECT_THAT(selectWith(List(ryutBuildList(2, L"`*U*", RTNONE))), UnorderedElementsAre(anonymous));
  EXPECT_THAT(selectWith(List(ryutBuildList(RTDXF0, L"INSERT", 2, L"door", RTNONE))),
              UnorderedElementsAre(door));
  EXPECT_THAT(selectWith(List(ryutBuildList(66, 1, RTNONE))), UnorderedElementsAre(door));
}

TEST(SelectionFilters, MalformedListsAreRefused) {
  HostSession session;
  addLine(session.db(), {0, 0, 0}, {1, 0, 0});
  ads_name ss;
  const std::vector<resbuf*> malformed = {
      ryutBuildList(-4, L"<AND", RTDXF0, L"LINE", RTNONE),
      ryutBuildList(-4, L"<NOT", RTDXF0, L"LINE", 8, L"0", -4, L"NOT>", RTNONE),
      ryutBuildList(-4, L"<XOR", RTDXF0, L"LINE", -4, L"XOR>", RTNONE),
      ryutBuildList(-4, L"<OR", RTDXF0, L"LINE", -4, L"AND>", RTNONE),
      ryutBuildList(RTDXF0, L"LINE", -4, L"OR>", RTNONE),
      ryutBuildList(RTDXF0, L"LINE", -4, L">", RTNONE),
      ryutBuildList(-4, L"=>", 40, 1.0, RTNONE),
      ryutBuildList(-4, L">,>", 8, L"0", RTNONE),
      ryutBuildList(-4, L"<AND", -4, L"AND>", RTNONE),
  };
  for (size_t i = 0; i < malformed.size(); ++i) {
    EXPECT_EQ(ryedSSGet(L"X", nullptr, nullptr, malformed[i], ss), RTERROR) << "list " << i;
    ryutRelRb(malformed[i]);
  }
  EXPECT_EQ(ryedSSGet(L"X", nullptr, nullptr, List(ryutBuildList(RTDXF0, L"LINE", RTNONE)), ss),
            RTNORM);
}
