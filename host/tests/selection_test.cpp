// Selection sets and picking: the programmed modes of ryedSSGet, the
// interactive selection driven by replies, the set functions, the
// pick-first set and ryedEntSel.
#include <gmock/gmock.h>

#include "core/CommandStack.h"
#include "core/SelectionSets.h"
#include "host_test_support.h"

using namespace hosttest;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Ids = std::vector<OdDbObjectId>;

namespace {

int setCount(HostSession& session) {
  return static_cast<int>(session.host().current()->selections().count());
}

// A window (0,0)-(10,10) and what lies about it.
struct WindowScene {
  OdDbObjectId inside, crossesEdge, missesCorner, circleOutside, circleCrossing;
  explicit WindowScene(OdDbDatabase* db) {
    inside = addLine(db, {1, 1, 0}, {4, 4, 0});
    crossesEdge = addLine(db, {5, -5, 0}, {5, 5, 0});
    // Their boxes overlap the window's corner; the geometry stays outside.
    missesCorner = addLine(db, {8, 14, 0}, {14, 8, 0});
    circleOutside = addCircle(db, {12, 12, 0}, 2.5);
    // Reaches about 0.16 into the window past its corner.
    circleCrossing = addCircle(db, {13, 13, 0}, 4.4);
  }
};

}  // namespace

// ---------------------------------------------------------------- programmed modes

TEST(SelectionModes, WindowTakesWhatIsInsideAndCrossingTestsTheGeometry) {
  HostSession session;
  WindowScene scene(session.db());
  ads_point low = {0, 0, 0}, high = {10, 10, 0};
  ads_name ss;
  ASSERT_EQ(ryedSSGet(L"W", low, high, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(scene.inside));
  ASSERT_EQ(ryedSSGet(L"_C", high, low, nullptr, ss), RTNORM);
  EXPECT_EQ(sorted(members(ss)), sorted({scene.inside, scene.crossesEdge, scene.circleCrossing}));

  // Points are in the user coordinate system.
  OdGeMatrix3d shifted;
  shifted.setToTranslation(OdGeVector3d(100, 0, 0));
  session.host().current()->setUcs(shifted);
  ads_point far = {-100, 0, 0}, farHigh = {-90, 10, 0};
  ASSERT_EQ(ryedSSGet(L"W", far, farHigh, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(scene.inside));
}

TEST(SelectionModes, FenceAndPolygonsFromPointLists) {
  HostSession session;
  WindowScene scene(session.db());
  ads_point a = {-1, 2, 0}, b = {11, 2, 0};
  List fence(ryutBuildList(RTPOINT, a, RTPOINT, b, RTNONE));
  ads_name ss;
  ASSERT_EQ(ryedSSGet(L"F", fence.head, nullptr, nullptr, ss), RTNORM);
  EXPECT_EQ(sorted(members(ss)), sorted({scene.inside, scene.crossesEdge}));

  ads_point p1 = {0, 0, 0}, p2 = {10, 0, 0}, p3 = {0, 10, 0};
  List triangle(ryutBuildList(RT3DPOINT, p1, RT3DPOINT, p2, RT3DPOINT, p3, RTNONE));
  ASSERT_EQ(ryedSSGet(L"WP", triangle.head, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(scene.inside));
  ASSERT_EQ(ryedSSGet(L"CP", triangle.head, nullptr, nullptr, ss), RTNORM);
  EXPECT_EQ(sorted(members(ss)), sorted({scene.inside, scene.crossesEdge}));
  // Too few points, or a mode that does not exist.
  List two(ryutBuildList(RTPOINT, p1, RTPOINT, p2, RTNONE));
  EXPECT_EQ(ryedSSGet(L"CP", two.head, nullptr, nullptr, ss), RTERROR);
  EXPECT_EQ(ryedSSGet(L"Q", nullptr, nullptr, nullptr, ss), RTERROR);
  EXPECT_EQ(ryedSSGet(L":Z", nullptr, nullptr, nullptr, ss), RTERROR);
}

TEST(SelectionModes, WholeDrawingNewestFirstAndThawedLayersForA) {
  HostSession session;
  OdDbDatabase* db = session.db();
  addLayer(db, L"FROZEN", 1);
  OdDbObjectId first = addLine(db, {0, 0, 0}, {1, 0, 0});
  OdDbObjectId paper = addLine(db, {0, 0, 0}, {1, 1, 0}, L"0", db->getPaperSpaceId());
  OdDbObjectId frozen = addLine(db, {0, 0, 0}, {0, 1, 0}, L"FROZEN");
  ads_name ss;
  ASSERT_EQ(ryedSSGet(L"X", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(frozen, paper, first));
  ASSERT_EQ(ryedSSGet(L"_A", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(paper, first));
  // ":C": the current space (model space) only.
  ASSERT_EQ(ryedSSGet(L"X:C", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(frozen, first));
  ASSERT_EQ(ryedSSGet(L"L", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(frozen));
}

TEST(SelectionModes, LockedLayersAreRefusedWithColonL) {
  HostSession session;
  addLayer(session.db(), L"LOCKED", 4);
  OdDbObjectId open = addLine(session.db(), {0, 0, 0}, {1, 0, 0});
  addLine(session.db(), {0, 5, 0}, {1, 5, 0}, L"LOCKED");
  ads_name ss;
  ASSERT_EQ(ryedSSGet(L"X:L", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(open));

  session.reply({"ALL", ""});
  ASSERT_EQ(ryedSSGet(L"_:L", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(open));
  EXPECT_THAT(session.transcript(), HasSubstr("2 found\n1 was on a locked layer."));
}

// ---------------------------------------------------------------- interactive selection

TEST(InteractiveSelection, StepsReportFoundAndTotalAndCanBeUndone) {
  HostSession session;
  WindowScene scene(session.db());
  session.reply({"2,2", "W", "-1,-1", "11,11", "R", "2,2", "U", "A", "C", "0,0", "6,-1", ""});
  ads_name ss;
  ASSERT_EQ(ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_EQ(sorted(members(ss)), sorted({scene.inside, scene.crossesEdge}));
  const std::string text = session.transcript();
  EXPECT_THAT(text, HasSubstr("Select objects: 2,2\n1 found\n"));
  EXPECT_THAT(text, HasSubstr("Specify opposite corner: 11,11\n1 found (1 duplicate), 1 total"));
  EXPECT_THAT(text, HasSubstr("Remove objects: 2,2\n1 found, 1 removed, 0 total"));
  EXPECT_THAT(text, HasSubstr("U\n1 total"));
  EXPECT_THAT(text, HasSubstr("6,-1\n1 found, 2 total"));
}

TEST(InteractiveSelection, APointOverNothingOpensAWindowOrACrossingByDirection) {
  HostSession session;
  OdDbObjectId inside = addLine(session.db(), {2, 2, 0}, {4, 4, 0});
  OdDbObjectId crossing = addLine(session.db(), {6, -5, 0}, {6, 5, 0});
  ads_name ss;
  session.reply({"-3,-3", "10,10", ""});
  ASSERT_EQ(ryedSSGet(L"", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(inside));
  session.reply({"10,10", "-3,-3", ""});
  ASSERT_EQ(ryedSSGet(L"", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_EQ(sorted(members(ss)), sorted({inside, crossing}));
  // BOX decides the same way; "+." takes points only, so a miss stays a miss.
  session.reply({"BOX", "10,10", "-3,-3", ""});
  ASSERT_EQ(ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_EQ(members(ss).size(), 2u);
  session.reply({"W", "-3,-3", "6,4.5", ""});
  EXPECT_EQ(ryedSSGet(L"+.", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(crossing));
  EXPECT_THAT(session.transcript(), HasSubstr("W\n*Invalid selection*\nExpects a point."));
  // ":E": everything within the pick box; ":S" ends there.
  session.reply({"5,3"});
  ASSERT_EQ(ryedSSGet(L"_+.:E:S", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(inside, crossing));
  EXPECT_EQ(session.repliesLeft(), 0u);
}

TEST(InteractiveSelection, FencePolygonsHandlesSetsAndPrevious) {
  HostSession session;
  WindowScene scene(session.db());
  ads_name ss;
  session.reply({"F", "-1,2", "11,2", "", "CP", "0,0", "10,0", "30,30", "U", "0,10", "", ""});
  ASSERT_EQ(ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(scene.inside, scene.crossesEdge));
  EXPECT_THAT(session.transcript(), HasSubstr("2 found (2 duplicates), 2 total"));

  // "P" is what the last interactive selection took; erased entities drop out.
  scene.inside.openObject(OdDb::kForWrite)->erase();
  ads_name byHand;
  ASSERT_EQ(ryedSSAdd(nullptr, nullptr, byHand), RTNORM);
  ads_name circle;
  rydbGetAdsName(circle, scene.circleOutside);
  ryedSSAdd(circle, byHand, byHand);
  const std::string setReply = OdString().format(L"#SS%lld", static_cast<long long>(byHand[0])).toUtf8();
  const std::string handleReply = "#" + scene.missesCorner.handle().ascii().toUtf8();
  session.reply({"P", setReply, handleReply, "#FFFFF", "nonsense", ""});
  ASSERT_EQ(ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(scene.crossesEdge, scene.circleOutside, scene.missesCorner));
  EXPECT_THAT(session.transcript(), HasSubstr("#FFFFF\n0 found, 3 total"));
  EXPECT_THAT(session.transcript(), HasSubstr("nonsense\n*Invalid selection*"));
  ASSERT_EQ(ryedSSGet(L"P", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_EQ(members(ss).size(), 3u);
}

TEST(InteractiveSelection, SingleCustomPromptsEnterAndEsc) {
  HostSession session;
  OdDbObjectId line = addLine(session.db(), {0, 0, 0}, {10, 0, 0});
  ads_name ss;
  // ":S" ends after the first step that selects something, without Enter.
  session.reply({"50,50", "60,60", "5,0"});
  ASSERT_EQ(ryedSSGet(L":S", nullptr, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(line));
  session.reply({""});
  EXPECT_EQ(ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss), RTERROR);

  const ACHAR* prompts[2] = {L"Pick walls: ", L"Drop walls: "};
  session.reply({"5,0", "R", "5,0", ""});
  EXPECT_EQ(ryedSSGet(L":$", prompts, nullptr, nullptr, ss), RTERROR);
  EXPECT_THAT(session.transcript(), HasSubstr("\nPick walls: 5,0\n1 found\nPick walls: R\nDrop walls: 5,0"));

  const int sets = setCount(session);
  session.reply({"5,0", "^C"});
  EXPECT_EQ(ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss), RTCAN);
  EXPECT_EQ(setCount(session), sets);
}

// ---------------------------------------------------------------- picking

TEST(Picking, NearestWithinThePickBoxTextBoxesAndErrno) {
  HostSession session;
  OdDbObjectId low = addLine(session.db(), {0, 0, 0}, {10, 0, 0});
  OdDbObjectId high = addLine(session.db(), {0, 2, 0}, {10, 2, 0});
  OdDbObjectId text = addText(session.db(), {30, 0, 0}, 2.5, L"A LONG LABEL");
  ads_name picked;
  ads_point at;
  session.reply({"5,1.2", "5,-2.9", "5,-3.2", "", "^C"});
  ASSERT_EQ(ryedEntSel(nullptr, picked, at), RTNORM);
  OdDbObjectId id;
  rydbGetObjectId(id, picked);
  EXPECT_EQ(id, high);
  EXPECT_EQ(at[1], 1.2);
  ASSERT_EQ(ryedEntSel(nullptr, picked, at), RTNORM);
  rydbGetObjectId(id, picked);
  EXPECT_EQ(id, low);
  EXPECT_EQ(ryedEntSel(L"\nWhich one? ", picked, at), RTERROR);
  EXPECT_EQ(errnoValue(), 7);
  EXPECT_EQ(ryedEntSel(nullptr, picked, at), RTERROR);
  EXPECT_EQ(errnoValue(), 52);
  EXPECT_EQ(ryedEntSel(nullptr, picked, at), RTCAN);
  EXPECT_THAT(session.transcript(), HasSubstr("Which one? 5,-3.2"));
  // Keywords of an initget come back as RTKWORD.
  ryedInitGet(0, L"Undo Exit");
  session.reply({"e"});
  EXPECT_EQ(ryedEntSel(nullptr, picked, at), RTKWORD);
  ACHAR keyword[16];
  ryedGetInput(keyword, 16);
  EXPECT_EQ(OdString(keyword), L"Exit");

  // Inside a text's box, far from its insertion point.
  OdGeExtents3d box;
  OdDbEntity::cast(text.openObject().get())->getGeomExtents(box);
  const OdGePoint3d middle = box.minPoint() + (box.maxPoint() - box.minPoint()) / 2;
  ASSERT_GT(middle.distanceTo({30, 0, 0}), 3.0);
  session.reply({OdString().format(L"%g,%g", middle.x, middle.y).toUtf8()});
  ASSERT_EQ(ryedEntSel(nullptr, picked, at), RTNORM);
  rydbGetObjectId(id, picked);
  EXPECT_EQ(id, text);
}

TEST(Picking, OnlyShownEntitiesOfTheCurrentSpaceArePicked) {
  HostSession session;
  OdDbDatabase* db = session.db();
  addLayer(db, L"OFF", 0, true);
  addLine(db, {0, 0, 0}, {10, 0, 0}, L"OFF");
  addLine(db, {0, 0, 0}, {10, 0, 0}, L"0", db->getPaperSpaceId());
  ads_name ss;
  ads_point at = {5, 0, 0};
  EXPECT_EQ(ryedSSGet(nullptr, at, nullptr, nullptr, ss), RTERROR);
  OdDbObjectId visible = addLine(db, {0, 1, 0}, {10, 1, 0});
  ASSERT_EQ(ryedSSGet(nullptr, at, nullptr, nullptr, ss), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(visible));
}

// ---------------------------------------------------------------- sets and the pick-first set

TEST(SelectionSets, AddDeleteMemberNameAndFree) {
  HostSession session;
  OdDbObjectId a = addLine(session.db(), {0, 0, 0}, {1, 0, 0});
  OdDbObjectId b = addLine(session.db(), {0, 1, 0}, {1, 1, 0});
  ads_name nameA, nameB, ss, same;
  rydbGetAdsName(nameA, a);
  rydbGetAdsName(nameB, b);
  ASSERT_EQ(ryedSSAdd(nameA, nullptr, ss), RTNORM);
  ASSERT_EQ(ryedSSAdd(nameA, ss, same), RTNORM);
  EXPECT_TRUE(rydbNameEqual(ss, same));
  ASSERT_EQ(ryedSSAdd(nameB, ss, same), RTNORM);
  EXPECT_THAT(members(ss), ElementsAre(a, b));
  EXPECT_EQ(ryedSSMemb(nameB, ss), RTNORM);
  ASSERT_EQ(ryedSSDel(nameB, ss), RTNORM);
  EXPECT_EQ(ryedSSDel(nameB, ss), RTERROR);
  EXPECT_EQ(ryedSSMemb(nameB, ss), RTERROR);
  ads_name entity;
  EXPECT_EQ(ryedSSName(ss, 1, entity), RTERROR);
  EXPECT_EQ(ryedSSName(ss, -1, entity), RTERROR);
  ASSERT_EQ(ryedSSFree(ss), RTNORM);
  OdInt32 length = 0;
  EXPECT_EQ(ryedSSLength(ss, &length), RTERROR);
  EXPECT_EQ(ryedSSFree(ss), RTERROR);
  // An entity name is not a set name.
  EXPECT_EQ(ryedSSLength(nameA, &length), RTERROR);
}

namespace {
int g_implied = -1;
// A command's view of the pick-first set: its length, or -1 when there is none.
void recordImplied() {
  ads_name ss;
  OdInt32 length = -1;
  if (ryedSSGet(L"I", nullptr, nullptr, nullptr, ss) == RTNORM) ryedSSLength(ss, &length);
  g_implied = length;
}
void selectWithoutPrompt() {
  ads_name ss;
  OdInt32 length = -1;
  if (ryedSSGet(nullptr, nullptr, nullptr, nullptr, ss) == RTNORM) ryedSSLength(ss, &length);
  g_implied = length;
}
}  // namespace

TEST(PickFirst, HandedToCommandsThatTakeItAndClearedByOthers) {
  HostSession session;
  OdDbObjectId a = addLine(session.db(), {0, 0, 0}, {1, 0, 0});
  addLine(session.db(), {0, 1, 0}, {1, 1, 0});
  auto& commands = session.host().commands();
  commands.addCommand(L"SELTEST", L"TAKES", L"TAKES", OdEdCommand::kUsePickSet, recordImplied);
  commands.addCommand(L"SELTEST", L"IGNORES", L"IGNORES", OdEdCommand::kModal, recordImplied);
  commands.addCommand(L"SELTEST", L"SELECTS", L"SELECTS", OdEdCommand::kUsePickSet, selectWithoutPrompt);

  ads_name all;
  ASSERT_EQ(ryedSSGet(L"X", nullptr, nullptr, nullptr, all), RTNORM);
  ASSERT_EQ(ryedSSSetFirst(all, nullptr), RTNORM);
  resbuf *grips = nullptr, *pickFirst = nullptr;
  ASSERT_EQ(ryedSSGetFirst(&grips, &pickFirst), RTNORM);
  EXPECT_EQ(grips, nullptr);
  ASSERT_NE(pickFirst, nullptr);
  EXPECT_EQ(pickFirst->restype, RTPICKS);
  EXPECT_EQ(members(pickFirst->resval.rlname).size(), 2u);
  ryutRelRb(pickFirst);

  session.run({"TAKES"});
  EXPECT_EQ(g_implied, 2);
  ryedSSSetFirst(all, nullptr);
  session.run({"IGNORES"});
  EXPECT_EQ(g_implied, -1);

  // A prompting selection takes the pick-first set without asking.
  ads_name one;
  ads_name nameA;
  rydbGetAdsName(nameA, a);
  ryedSSAdd(nameA, nullptr, one);
  ryedSSSetFirst(one, nullptr);
  const std::string shown = session.run({"SELECTS"});
  EXPECT_EQ(g_implied, 1);
  EXPECT_THAT(shown, Not(HasSubstr("Select objects")));
  ryedSSSetFirst(nullptr, nullptr);
  EXPECT_EQ(ryedSSGet(L"I", nullptr, nullptr, nullptr, one), RTERROR);
}
