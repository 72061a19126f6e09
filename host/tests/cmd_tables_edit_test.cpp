// CHPROP, ERASE and JUSTIFYTEXT on real entities: the values written, the
// refusals, objects on locked layers, programs passing a selection, texts
// that keep their place when their justification changes, Esc and U.
#include <gtest/gtest.h>

#include <cmath>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbText.h"
#include "host_test_support.h"
#include "rydb.h"
#include "ryed.h"

namespace {

using namespace hosttest;

OdDbEntityPtr entity(const OdDbObjectId& id) {
  return OdDbEntity::cast(id.openObject(OdDb::kForRead, true).get());
}

OdDbObjectId addLine(OdDbDatabase* db, double x0, double y0, double x1, double y1,
                     const wchar_t* layer = nullptr) {
  OdDbLinePtr line = new OdDbLine(OdGePoint3d(x0, y0, 0), OdGePoint3d(x1, y1, 0));
  return addToModelSpace(db, line.get(), layer);
}

// ---------------------------------------------------------------- CHPROP

TEST(ChpropCommand, ChangesEveryPropertyOfTheSelection) {
  HostSession session;
  OdDbDatabase* db = session.db();
  session.run({"-LINETYPE", "L", "DASHED", "", ""});
  const OdDbObjectId line = addLine(db, 0, 0, 10, 0);
  OdDbCirclePtr circle = new OdDbCircle(OdGePoint3d(20, 0, 0), 2);
  const OdDbObjectId circleId = addToModelSpace(db, circle.get());
  circle.release();
  const std::string out = session.run({"CHPROP", "ALL", "", "C", "1", "LA", "WALLS", "LT", "DASHED", "S", "2",
                                       "LW", "0.5", "T", "3", "TR", "40", ""});
  EXPECT_TRUE(contains(out, "2 found")) << out;
  for (const OdDbObjectId& id : {line, circleId}) {
    OdDbEntityPtr e = entity(id);
    EXPECT_EQ(e->colorIndex(), 1);
    EXPECT_EQ(e->layer(), OdString(L"WALLS"));  // a new layer is made for the name
    EXPECT_EQ(e->linetypeId(), db->findRecord(OdDbNameTable::kLinetype, L"DASHED"));
    EXPECT_DOUBLE_EQ(e->linetypeScale(), 2.0);
    EXPECT_EQ(e->lineWeight(), OdDb::kLnWt050);
    EXPECT_EQ(e->transparency().alpha(), 153);  // 40 % transparent
  }
  EXPECT_DOUBLE_EQ(OdDbLine::cast(entity(line).get())->thickness(), 3.0);
  EXPECT_DOUBLE_EQ(OdDbCircle::cast(entity(circleId).get())->thickness(), 3.0);

  // The prompts offer the common value, or "varies".
  session.run({"CHPROP", "#" + entity(line)->handle().ascii().toUtf8(), "", "C", "BYLAYER", ""});
  const std::string shown = session.run({"CHPROP", "ALL", "", "C", "", "LA", "", ""});
  EXPECT_TRUE(contains(shown, "New color [Truecolor] <varies>")) << shown;
  EXPECT_TRUE(contains(shown, "Enter new layer name <WALLS>"));
}

TEST(ChpropCommand, RefusesBadValuesAndLeavesLockedObjects) {
  HostSession session;
  OdDbDatabase* db = session.db();
  session.run({"-LAYER", "N", "LOCKED", ""});
  const OdDbObjectId free = addLine(db, 0, 0, 10, 0), locked = addLine(db, 0, 5, 10, 5, L"LOCKED");
  session.run({"-LAYER", "LO", "LOCKED", ""});
  const std::string out =
      session.run({"CHPROP", "ALL", "",        "C",  "300", "T",       "250,0,0", "LT", "NOSUCH", "",
                   "LW",     "3",   "ByBlock", "TR", "95",  "ByBlock", "S",       "-1", "0.5",    ""});
  EXPECT_TRUE(contains(out, "1 was on a locked layer.")) << out;
  EXPECT_TRUE(contains(out, "Invalid color \"300\""));
  EXPECT_TRUE(contains(out, "Linetype \"NOSUCH\" not found."));
  EXPECT_TRUE(contains(out, "Invalid lineweight"));
  EXPECT_TRUE(contains(out, "Requires ByLayer, ByBlock or a whole number from 0 to 90."));
  EXPECT_TRUE(contains(out, "Value must be positive"));
  OdDbEntityPtr changed = entity(free);
  EXPECT_TRUE(changed->color().isByColor());
  EXPECT_EQ(changed->color().red(), 250);
  EXPECT_EQ(changed->lineWeight(), OdDb::kLnWtByBlock);
  EXPECT_TRUE(changed->transparency().isByBlock());
  EXPECT_DOUBLE_EQ(changed->linetypeScale(), 0.5);
  OdDbEntityPtr untouched = entity(locked);
  EXPECT_TRUE(untouched->color().isByLayer());
  EXPECT_DOUBLE_EQ(untouched->linetypeScale(), 1.0);
}

TEST(ChpropCommand, ProgramsPassASelectionSetAndGlobalKeywords) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const OdDbObjectId a = addLine(db, 0, 0, 1, 0), b = addLine(db, 0, 1, 1, 1), c = addLine(db, 0, 2, 1, 2);
  ads_name set, name;
  rydbGetAdsName(name, a);
  ryedSSAdd(name, nullptr, set);
  rydbGetAdsName(name, c);
  ryedSSAdd(name, set, set);
  EXPECT_EQ(ryedCommand(RTSTR, L"_.chprop", RTPICKS, set, RTSTR, L"", RTSTR, L"_LA", RTSTR, L"PIPES", RTSTR,
                        L"_C", RTSTR, L"3", RTSTR, L"", RTNONE),
            RTNORM);
  EXPECT_EQ(entity(a)->layer(), OdString(L"PIPES"));
  EXPECT_EQ(entity(c)->colorIndex(), 3);
  EXPECT_EQ(entity(b)->layer(), OdString(L"0"));
  ryedSSFree(set);
}

TEST(ChpropCommand, EscAtEachPromptAndUChangeNothing) {
  HostSession session;
  addLine(session.db(), 0, 0, 10, 0);
  for (const auto& replies :
       std::vector<std::vector<std::string>>{{"CHPROP", "^C"},
                                             {"CHPROP", "ALL", "^C"},
                                             {"CHPROP", "ALL", "", "^C"},
                                             {"CHPROP", "ALL", "", "C", "1", "^C"},
                                             {"CHPROP", "ALL", "", "C", "T", "^C"},
                                             {"CHPROP", "ALL", "", "LA", "NEW", "LT", "^C"},
                                             {"CHPROP", "ALL", "", "S", "^C"},
                                             {"CHPROP", "ALL", "", "LW", "^C"},
                                             {"CHPROP", "ALL", "", "T", "^C"},
                                             {"CHPROP", "ALL", "", "TR", "^C"}}) {
    expectUnchanged(session, replies);
  }
  expectUnchanged(session, {"CHPROP", "ALL", "", "LA", "NEWLAYER", "C", "2", "T", "1", "", "U"});
}

// ---------------------------------------------------------------- ERASE

TEST(EraseCommand, EveryWayOfSelectingAndUndo) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const OdDbObjectId a = addLine(db, 0, 0, 10, 0), b = addLine(db, 20, 0, 30, 0),
                     c = addLine(db, 40, 0, 50, 0);
  const OdDbObjectId d = addLine(db, 0, 20, 10, 20), e = addLine(db, 20, 20, 30, 20);

  std::string out = session.run({"ERASE", "L", ""});
  EXPECT_TRUE(contains(out, "1 found")) << out;
  EXPECT_TRUE(e.isErased());
  session.run({"ERASE", "W", "-1,-1", "31,1", ""});  // a window takes what lies wholly inside
  EXPECT_TRUE(a.isErased() && b.isErased() && !c.isErased());
  session.run({"ERASE", "C", "45,-1", "100,1", ""});  // a crossing also takes what it crosses
  EXPECT_TRUE(c.isErased());
  out = session.run({"ERASE", "#" + d.handle().ascii().toUtf8(), ""});
  EXPECT_TRUE(d.isErased());
  session.run({"U", "U"});
  EXPECT_FALSE(d.isErased() || c.isErased());
  out = session.run({"ERASE", "P", ""});  // the previous selection: the handle's
  EXPECT_TRUE(d.isErased() && !c.isErased()) << out;
  session.run({"ERASE", "ALL", "", "U"});
  EXPECT_TRUE(d.isErased());
  EXPECT_FALSE(c.isErased());
}

TEST(EraseCommand, TakesTheObjectsSelectedBeforeIt) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const OdDbObjectId a = addLine(db, 0, 0, 10, 0), b = addLine(db, 0, 5, 10, 5);
  ads_name set, name;
  rydbGetAdsName(name, b);
  ryedSSAdd(name, nullptr, set);
  ryedSSSetFirst(set, nullptr);
  const std::string out = session.run({"ERASE"});
  EXPECT_FALSE(contains(out, "Select objects")) << out;
  EXPECT_TRUE(b.isErased());
  EXPECT_FALSE(a.isErased());
  ryedSSFree(set);
}

TEST(EraseCommand, LeavesLockedLayersAndEscErasesNothing) {
  HostSession session;
  OdDbDatabase* db = session.db();
  session.run({"-LAYER", "N", "LOCKED", "LO", "LOCKED", ""});
  const OdDbObjectId kept = addLine(db, 0, 0, 10, 0, L"LOCKED"), gone = addLine(db, 0, 5, 10, 5);
  expectUnchanged(session, {"ERASE", "ALL", "^C"});
  const std::string out = session.run({"ERASE", "ALL", ""});
  EXPECT_TRUE(contains(out, "1 was on a locked layer.")) << out;
  EXPECT_FALSE(kept.isErased());
  EXPECT_TRUE(gone.isErased());
}

// ---------------------------------------------------------------- JUSTIFYTEXT

OdDbObjectId addText(OdDbDatabase* db, const OdGePoint3d& at, double rotation) {
  OdDbTextPtr text = OdDbText::createObject();
  text->setDatabaseDefaults(db);
  text->setTextString(L"Justified");
  text->setHeight(2.5);
  text->setRotation(rotation);
  text->setPosition(at);
  return addToModelSpace(db, text.get());
}

OdGePoint3dArray boxOf(const OdDbObjectId& id) {
  OdGePoint3dArray box;
  OdDbObjectPtr object = id.openObject();
  if (auto* text = dynamic_cast<OdDbText*>(object.get()))
    text->getBoundingPoints(box);
  else if (auto* mtext = dynamic_cast<OdDbMText*>(object.get()))
    mtext->getBoundingPoints(box);
  return box;
}

void expectSameBox(const OdGePoint3dArray& expected, const OdGePoint3dArray& actual,
                   const std::string& what) {
  ASSERT_EQ(actual.size(), expected.size()) << what;
  for (size_t i = 0; i < expected.size(); ++i)
    EXPECT_LT(expected[i].distanceTo(actual[i]), 1e-9) << what << " corner " << i;
}

TEST(JustifyTextCommand, EveryOptionKeepsTheTextInPlace) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const OdDbObjectId id = addText(db, OdGePoint3d(10, 20, 0), 0.5);
  const OdGePoint3dArray box = boxOf(id);
  const OdGePoint3d center = box[0] + (box[2] - box[0]) / 2;
  struct Case {
    const char* option;
    OdDb::TextHorzMode horizontal;
    OdDb::TextVertMode vertical;
    OdGePoint3d alignment;  // where the box puts the alignment point
  };
  const Case cases[] = {{"TR", OdDb::kTextRight, OdDb::kTextTop, box[2]},
                        {"MC", OdDb::kTextCenter, OdDb::kTextVertMid, center},
                        {"BL", OdDb::kTextLeft, OdDb::kTextBottom, box[0]},
                        {"Middle", OdDb::kTextMid, OdDb::kTextBase, center},
                        {"Fit", OdDb::kTextFit, OdDb::kTextBase, box[1]},
                        {"Center", OdDb::kTextCenter, OdDb::kTextBase, box[0] + (box[1] - box[0]) / 2},
                        {"ML", OdDb::kTextLeft, OdDb::kTextVertMid, box[0] + (box[3] - box[0]) / 2},
                        {"Align", OdDb::kTextAlign, OdDb::kTextBase, box[1]},
                        {"TC", OdDb::kTextCenter, OdDb::kTextTop, box[3] + (box[2] - box[3]) / 2},
                        {"Right", OdDb::kTextRight, OdDb::kTextBase, box[1]},
                        {"Left", OdDb::kTextLeft, OdDb::kTextBase, box[0]}};
  for (const Case& c : cases) {
    session.run({"JUSTIFYTEXT", "ALL", "", c.option});
    OdDbTextPtr text = OdDbText::cast(id.openObject().get());
    EXPECT_EQ(text->horizontalMode(), c.horizontal) << c.option;
    EXPECT_EQ(text->verticalMode(), c.vertical) << c.option;
    const OdGePoint3d anchor = text->isDefaultAlignment() ? text->position() : text->alignmentPoint();
    EXPECT_LT(anchor.distanceTo(c.alignment), 1e-9) << c.option;
    text.release();
    expectSameBox(box, boxOf(id), c.option);
  }
}

TEST(JustifyTextCommand, MultilineTextsAndAttributesKeepTheirPlace) {
  HostSession session;
  OdDbDatabase* db = session.db();
  OdDbMTextPtr mtext = OdDbMText::createObject();
  mtext->setDatabaseDefaults(db);
  mtext->setContents(L"First line\\PSecond");
  mtext->setTextHeight(2);
  mtext->setLocation(OdGePoint3d(5, 5, 0));
  mtext->setDirection(OdGeVector3d(1, 1, 0));
  const OdDbObjectId mtextId = addToModelSpace(db, mtext.get());
  mtext.release();
  const OdGePoint3dArray mtextBox = boxOf(mtextId);

  // An insert whose attribute is justified through the insert.
  const OdDbObjectId reference =
      insertBlock(db->getModelSpaceId(), addBlock(db, L"TAG"), OdGePoint3d(50, 50, 0));
  OdSmartPtr<OdDbAttribute> attribute = addAttribute(reference, L"NO", L"A-101");
  attribute->setHeight(1.5);
  attribute->setPosition(OdGePoint3d(52, 50, 0));
  const OdDbObjectId attributeId = attribute->objectId();
  attribute.release();
  const OdGePoint3dArray attributeBox = boxOf(attributeId);

  session.run({"JUSTIFYTEXT", "ALL", "", "BR"});
  OdDbMTextPtr changed = OdDbMText::cast(mtextId.openObject().get());
  EXPECT_EQ(changed->attachment(), OdDbMText::kBottomRight);
  EXPECT_LT(changed->location().distanceTo(mtextBox[1]), 1e-9);
  changed.release();
  expectSameBox(mtextBox, boxOf(mtextId), "mtext");
  OdDbTextPtr changedAttribute = OdDbText::cast(attributeId.openObject().get());
  EXPECT_EQ(changedAttribute->horizontalMode(), OdDb::kTextRight);
  EXPECT_EQ(changedAttribute->verticalMode(), OdDb::kTextBottom);
  changedAttribute.release();
  expectSameBox(attributeBox, boxOf(attributeId), "attribute");

  session.run({"JUSTIFYTEXT", "ALL", "", "MC"});
  EXPECT_EQ(OdDbMText::cast(mtextId.openObject().get())->attachment(), OdDbMText::kMiddleCenter);
  expectSameBox(mtextBox, boxOf(mtextId), "mtext centred");
}

TEST(JustifyTextCommand, OnlyTextsAreSelectedAndEscEnterAndUChangeNothing) {
  HostSession session;
  OdDbDatabase* db = session.db();
  addText(db, OdGePoint3d(0, 0, 0), 0);
  addLine(db, 0, -5, 10, -5);
  const std::string out = session.run({"JUSTIFYTEXT", "ALL", "", "TL"});
  EXPECT_TRUE(contains(out, "1 found")) << out;
  EXPECT_TRUE(contains(out, "<Existing>"));
  for (const auto& replies : std::vector<std::vector<std::string>>{{"JUSTIFYTEXT", "^C"},
                                                                   {"JUSTIFYTEXT", "ALL", "", "^C"},
                                                                   {"JUSTIFYTEXT", "ALL", "", ""},
                                                                   {"JUSTIFYTEXT", "ALL", "", "MR", "U"}}) {
    expectUnchanged(session, replies);
  }
}

}  // namespace
