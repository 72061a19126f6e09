// The prompting functions: initget keywords, refused replies, the point entry
// forms in the user coordinate system, angles from ANGBASE, distances,
// strings, grread, transparent commands and object snaps on real geometry.
#include <cmath>
#include <string>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbPolyline.h"
#include "harness.h"
#include "host_test_support.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using namespace hosttest;

namespace {

double degrees(double d) { return d * kPi / 180.0; }

std::wstring input() {
  ACHAR text[512];
  EXPECT_EQ(ryedGetInput(text, 512), RTNORM);
  return text;
}

// Asks for a keyword with the given list and one reply after another.
std::wstring keywordFor(HostSession& session, const wchar_t* list, std::vector<std::string> replies,
                        int flags = 0) {
  session.reply(replies);
  ryedInitGet(flags, list);
  ACHAR result[64] = L"?";
  const int status = ryedGetKword(L"\nOption: ", result, 64);
  return status == RTNORM ? std::wstring(result) : L"<" + std::to_wstring(status) + L">";
}

}  // namespace

// ---------------------------------------------------------------- keywords

TEST(Input, KeywordsByAbbreviationFullWordAndGlobalForm) {
  HostSession session;
  EXPECT_EQ(keywordFor(session, L"LType Color", {"lt"}), L"LType");
  EXPECT_EQ(keywordFor(session, L"LType Color", {"LTYP"}), L"LType");
  EXPECT_EQ(keywordFor(session, L"LType Color", {"c"}), L"Color");
  EXPECT_EQ(keywordFor(session, L"eXit Undo", {"x"}), L"eXit");
  EXPECT_EQ(keywordFor(session, L"eXit Undo", {"EXIT"}), L"eXit");
  EXPECT_EQ(keywordFor(session, L"LTYPE,LT Color", {"lt"}), L"LTYPE");
  // Local words give their global forms; "_" and a global word is accepted too.
  EXPECT_EQ(keywordFor(session, L"Ja Nein _Yes No", {"j"}), L"Yes");
  EXPECT_EQ(keywordFor(session, L"Ja Nein _Yes No", {"nein"}), L"No");
  EXPECT_EQ(keywordFor(session, L"Ja Nein _Yes No", {"_n"}), L"No");
  EXPECT_EQ(keywordFor(session, L"Ja Nein _Yes No", {"_Yes"}), L"Yes");
  EXPECT_EQ(keywordFor(session, L"\u00C4ndern Ende", {"\u00E4"}), L"\u00C4ndern");
  // Too short, a word without both cases typed in part, and a global word without "_" are refused.
  EXPECT_EQ(keywordFor(session, L"LType Color", {"l", "co"}), L"Color");
  EXPECT_EQ(keywordFor(session, L"ALL none", {"AL", "non", "none"}), L"none");
  EXPECT_EQ(keywordFor(session, L"Ja Nein _Yes No", {"yes", "_ja", "^C"}),
            L"<" + std::to_wstring(RTCAN) + L">");
  EXPECT_EQ(countOf(session.transcript(), "Invalid option keyword."), 5);
  // Enter is a null reply unless NONULL refuses it; RSG_OTHER takes any text.
  EXPECT_EQ(keywordFor(session, L"Yes No", {""}), L"<" + std::to_wstring(RTNONE) + L">");
  EXPECT_EQ(keywordFor(session, L"Yes No", {"", "y"}, RSG_NONULL), L"Yes");
  EXPECT_EQ(keywordFor(session, L"Yes No", {"maybe"}, RSG_OTHER), L"maybe");
}

TEST(Input, InitgetAppliesToTheNextCallOnly) {
  HostSession session;
  session.reply({"", "", "7"});
  int value = 0;
  ryedInitGet(RSG_NONULL, nullptr);
  ASSERT_EQ(ryedGetInt(L"\nNumber: ", &value), RTNORM);  // Enter refused, then 7
  EXPECT_EQ(value, 7);
  EXPECT_EQ(countOf(session.transcript(), "Requires an integer value."), 2);
  // The next call has no initget: Enter is a null reply, and getkword has no words to accept.
  session.reply({""});
  EXPECT_EQ(ryedGetInt(L"\nNumber: ", &value), RTNONE);
  ACHAR word[16];
  EXPECT_EQ(ryedGetKword(L"\nOption: ", word, 16), RTERROR);
  // Keywords with a number prompt come back as RTKWORD, read with ryedGetInput.
  session.reply({"l"});
  ryedInitGet(0, L"Last First");
  EXPECT_EQ(ryedGetInt(L"\nNumber or [Last/First]: ", &value), RTKWORD);
  EXPECT_EQ(input(), L"Last");
  ACHAR tiny[3];
  EXPECT_EQ(ryedGetInput(tiny, 3), RTINPUTTRUNCATED);
  EXPECT_EQ(std::wstring(tiny), L"La");
}

// ---------------------------------------------------------------- numbers

TEST(Input, NumbersRefusedWithTheClassicMessages) {
  HostSession session;
  double real = 0;
  session.reply({"abc", "1/2", "2.5e1"});
  ASSERT_EQ(ryedGetReal(L"\nValue: ", &real), RTNORM);
  EXPECT_DOUBLE_EQ(real, 25);
  EXPECT_EQ(countOf(session.transcript(), "Requires numeric value."), 2);

  session.reply({"abc", "-2", "h"});
  ryedInitGet(RSG_NONEG, L"Half");
  ASSERT_EQ(ryedGetReal(L"\nValue: ", &real), RTKWORD);
  EXPECT_EQ(input(), L"Half");
  EXPECT_EQ(countOf(session.transcript(), "Requires a number or an option keyword."), 1);
  session.reply({"-2", "0"});
  ryedInitGet(RSG_NONEG, nullptr);
  ASSERT_EQ(ryedGetReal(L"\nValue: ", &real), RTNORM);
  EXPECT_DOUBLE_EQ(real, 0);
  EXPECT_EQ(countOf(session.transcript(), "Value must be positive."), 2);  // the -2 of both calls
  session.reply({"0", "-1", "4"});
  ryedInitGet(RSG_NOZERO | RSG_NONEG, nullptr);
  ASSERT_EQ(ryedGetReal(L"\nValue: ", &real), RTNORM);
  EXPECT_DOUBLE_EQ(real, 4);
  EXPECT_EQ(countOf(session.transcript(), "Value must be positive and nonzero."), 2);

  int value = 0;
  session.reply({"1.5", "40000", "-32768"});
  ASSERT_EQ(ryedGetInt(L"\nInteger: ", &value), RTNORM);
  EXPECT_EQ(value, -32768);
  EXPECT_EQ(countOf(session.transcript(), "Requires an integer between -32768 and 32767."), 1);
  session.reply({"^C"});
  EXPECT_EQ(ryedGetInt(L"\nInteger: ", &value), RTCAN);
}

TEST(Input, TransparentCommandsRunAndThePromptReturns) {
  HostSession session;
  int value = 0;
  session.reply({"'PICKBOX", "7", "42"});
  ASSERT_EQ(ryedGetInt(L"\nInteger: ", &value), RTNORM);
  EXPECT_EQ(value, 42);
  EXPECT_EQ(session.host().sysvars().getInt(L"PICKBOX"), 7);
  EXPECT_EQ(countOf(session.transcript(), "Integer: "), 2);
}

// ---------------------------------------------------------------- strings

TEST(Input, StringsStopAtASpaceUnlessSpacesAreAllowed) {
  HostSession session;
  ACHAR text[64];
  session.reply({"hello world", "hello world", "", "abcdef"});
  ASSERT_EQ(ryedGetString(0, L"\nText: ", text, 64), RTNORM);
  EXPECT_EQ(std::wstring(text), L"hello");
  ASSERT_EQ(ryedGetString(1, L"\nText: ", text, 64), RTNORM);
  EXPECT_EQ(std::wstring(text), L"hello world");
  ASSERT_EQ(ryedGetString(1, L"\nText: ", text, 64), RTNORM);
  EXPECT_EQ(std::wstring(text), L"");
  EXPECT_EQ(ryedGetString(1, L"\nText: ", text, 4), RTINPUTTRUNCATED);
  EXPECT_EQ(std::wstring(text), L"abc");
}

// ---------------------------------------------------------------- points

TEST(Input, PointEntryForms) {
  HostSession session;
  // Each reply in turn, and the point it gives (relative entries start at LASTPOINT).
  const struct {
    const char* reply;
    double x, y, z;
  } entries[] = {{"10,20", 10, 20, 0}, {"@5,5", 15, 25, 0}, {"@10<90", 15, 35, 0}, {"@", 15, 35, 0},
                 {"20<180", -20, 0, 0}, {"1,2,3", 1, 2, 3},  {"@1,1,1", 2, 3, 4},   {"*4,5", 4, 5, 0},
                 {"2<0,7", 2, 0, 7}};
  ads_point p;
  for (const auto& entry : entries) {
    session.reply({entry.reply});
    ASSERT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTNORM) << entry.reply;
    expectPoint(p, entry.x, entry.y, entry.z);
  }
  session.reply({"abc", "10,x", "3,4"});
  ASSERT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTNORM);
  EXPECT_EQ(countOf(session.transcript(), "Invalid point."), 2);
  resbuf last{};
  ASSERT_EQ(ryedGetVar(L"LASTPOINT", &last), RTNORM);
  expectPoint(last.resval.rpoint, 3, 4, 0);

  // Polar angles follow the angular units, ANGBASE and ANGDIR; distances the linear units.
  setShort(L"AUNITS", 2);
  setReal(L"ANGBASE", degrees(90));
  setShort(L"ANGDIR", 1);
  setShort(L"LUNITS", 4);
  session.reply({"@1'<100"});
  ASSERT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTNORM);
  expectPoint(p, 15, 4, 0);  // 100 grads clockwise from north: east

  session.reply({"", "^C", "hello", "x"});
  EXPECT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTNONE);
  EXPECT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTCAN);
  ryedInitGet(RSG_OTHER, L"eXit");
  EXPECT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTKWORD);
  EXPECT_EQ(input(), L"hello");
  ryedInitGet(0, L"eXit");
  EXPECT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTKWORD);
  EXPECT_EQ(input(), L"eXit");
  EXPECT_EQ(ryedGetCorner(nullptr, L"\nCorner: ", p), RTERROR);  // a corner needs its base
}

TEST(Input, PointsAreTypedAndReturnedInTheUserSystem) {
  HostSession session;
  // The user system: origin (100,0,0), x along world y.
  OdGeMatrix3d ucs;
  ucs.setCoordSystem(OdGePoint3d(100, 0, 0), OdGeVector3d::kYAxis, -OdGeVector3d::kXAxis,
                     OdGeVector3d::kZAxis);
  session.host().current()->setUcs(ucs);
  // "10,0" is world (100,10); world (100,20) is user (20,0); a world step east
  // is a user step down; polar angles count in the user system.
  const struct {
    const char* reply;
    double x, y;
  } entries[] = {{"10,0", 10, 0}, {"*100,20", 20, 0}, {"@*5,0", 20, -5}, {"5<90", 0, 5}};
  ads_point p;
  for (const auto& entry : entries) {
    session.reply({entry.reply});
    ASSERT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", p), RTNORM) << entry.reply;
    expectPoint(p, entry.x, entry.y, 0);
  }
  const ads_point typed = {10, 0, 0};
  resbuf user{}, world{};
  user.restype = world.restype = RTSHORT;
  user.resval.rint = 1;
  ASSERT_EQ(ryedTrans(typed, &user, &world, 0, p), RTNORM);
  expectPoint(p, 100, 10, 0);
}

// ---------------------------------------------------------------- angles and distances

TEST(Input, GetangleAndGetorientWithAngbaseAndAngdir) {
  HostSession session;
  // North is angle 0 and angles run clockwise.
  setReal(L"ANGBASE", degrees(90));
  setShort(L"ANGDIR", 1);
  const struct {
    const char* typed;
    double getangle, getorient;
  } table[] = {{"0", 0, 90}, {"-90", 90, 180}, {"180", 180, 270}, {"90", 270, 0}};
  for (const auto& row : table) {
    double angle = -1, orient = -1;
    session.reply({row.typed, row.typed});
    ASSERT_EQ(ryedGetAngle(nullptr, L"\nAngle: ", &angle), RTNORM);
    ASSERT_EQ(ryedGetOrient(nullptr, L"\nAngle: ", &orient), RTNORM);
    EXPECT_NEAR(angle, degrees(row.getangle), 1e-12) << row.typed;
    EXPECT_NEAR(orient, degrees(row.getorient), 1e-12) << row.typed;
  }
  // Points give the direction; getangle counts it counter-clockwise from ANGBASE.
  const ads_point base = {1, 1, 0};
  double angle = 0;
  session.reply({"1,5", "1,5", "0,0", "-3,0"});
  ASSERT_EQ(ryedGetOrient(base, L"\nAngle: ", &angle), RTNORM);
  EXPECT_NEAR(angle, degrees(90), 1e-12);
  ASSERT_EQ(ryedGetAngle(base, L"\nAngle: ", &angle), RTNORM);
  EXPECT_NEAR(angle, 0, 1e-12);
  ASSERT_EQ(ryedGetAngle(nullptr, L"\nAngle: ", &angle), RTNORM);  // two points: west
  EXPECT_NEAR(angle, degrees(90), 1e-12);
  EXPECT_NE(session.transcript().find("Second point: "), std::string::npos);
  session.reply({"0", "10"});
  ryedInitGet(RSG_NOZERO, nullptr);
  ASSERT_EQ(ryedGetAngle(nullptr, L"\nAngle: ", &angle), RTNORM);
  EXPECT_EQ(countOf(session.transcript(), "Value must be nonzero."), 1);
}

TEST(Input, DistancesTypedOrShownByPoints) {
  HostSession session;
  double d = 0;
  const ads_point base = {0, 0, 0};
  session.reply({"12.5", "3,4", "1,1,1", "4,5,13", "0,0,0", "3,4,12"});
  ASSERT_EQ(ryedGetDist(nullptr, L"\nDistance: ", &d), RTNORM);
  EXPECT_DOUBLE_EQ(d, 12.5);
  ASSERT_EQ(ryedGetDist(base, L"\nDistance: ", &d), RTNORM);
  EXPECT_DOUBLE_EQ(d, 5);
  ASSERT_EQ(ryedGetDist(nullptr, L"\nDistance: ", &d), RTNORM);  // two points, in space
  EXPECT_DOUBLE_EQ(d, 13);
  ryedInitGet(RSG_2D, nullptr);
  ASSERT_EQ(ryedGetDist(nullptr, L"\nDistance: ", &d), RTNORM);  // the same, flat
  EXPECT_DOUBLE_EQ(d, 5);
  setShort(L"LUNITS", 4);
  session.reply({"x", "-1", "1'6"});
  ryedInitGet(RSG_NONEG, nullptr);
  ASSERT_EQ(ryedGetDist(base, L"\nDistance: ", &d), RTNORM);
  EXPECT_DOUBLE_EQ(d, 18);
  EXPECT_EQ(countOf(session.transcript(), "Requires numeric distance or second point."), 1);
  EXPECT_EQ(countOf(session.transcript(), "Value must be positive."), 1);
}

// ---------------------------------------------------------------- grread

TEST(Input, GrreadDeliversPointsAndKeys) {
  HostSession session;
  session.reply({"3,4", "a", "", "xy", "^C"});
  int type = 0;
  resbuf rb{};
  ASSERT_EQ(ryedGrRead(0, &type, &rb), RTNORM);
  EXPECT_EQ(type, 3);
  EXPECT_EQ(rb.restype, RT3DPOINT);
  expectPoint(rb.resval.rpoint, 3, 4, 0);
  const int expectedKeys[] = {'a', 13, 'x', 'y'};
  for (int key : expectedKeys) {
    ASSERT_EQ(ryedGrRead(0, &type, &rb), RTNORM);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(rb.restype, RTSHORT);
    EXPECT_EQ(rb.resval.rint, key);
  }
  EXPECT_EQ(ryedGrRead(0, &type, &rb), RTCAN);
}

// ---------------------------------------------------------------- object snaps

class Osnap : public ::testing::Test {
 protected:
  void SetUp() override {
    OdDbDatabase* db = session.db();
    addLine(db, {0, 0, 0}, {10, 0, 0});
    addLine(db, {5, -5, 0}, {5, 5, 0});
    OdSmartPtr<OdDbCircle> circle = OdDbCircle::createObject();
    circle->setCenter({20, 0, 0});
    circle->setRadius(5);
    place(db, circle.get());
    // An arc from 30 to 150 degrees about (40,0).
    OdDbArcPtr arc = OdDbArc::createObject();
    arc->setCenter({40, 0, 0});
    arc->setRadius(4);
    arc->setStartAngle(degrees(30));
    arc->setEndAngle(degrees(150));
    place(db, arc.get());
    // A closed polyline: (0,20) (10,20) (10,30), a half circle up to (0,30), and back down.
    OdDbPolylinePtr square = OdDbPolyline::createObject();
    square->addVertexAt(0, {0, 20});
    square->addVertexAt(1, {10, 20});
    square->addVertexAt(2, {10, 30}, 1.0);
    square->addVertexAt(3, {0, 30});
    square->setClosed(true);
    place(db, square.get());
    setShort(L"PICKBOX", 1);
  }

  // The snap of a user-coordinate point, or nothing.
  bool snap(const char* mode, double x, double y, ads_point result) {
    const ads_point pick = {x, y, 0};
    return ryedOsnap(pick, OdString(mode).c_str(), result) == RTNORM;
  }

  // The snap of a pick, expected at a point of the xy plane.
  void expectSnap(const char* mode, double x, double y, double snappedX, double snappedY) {
    ads_point r;
    ASSERT_TRUE(snap(mode, x, y, r)) << mode << " at " << x << "," << y;
    expectPoint(r, snappedX, snappedY, 0);
  }

  HostSession session;
};

TEST_F(Osnap, EndMidCenterAndQuadrant) {
  ads_point r;
  expectSnap("end", 9, 0.5, 10, 0);
  expectSnap("mid", 2, 0.2, 5, 0);
  expectSnap("cen", 25.3, 0.4, 20, 0);  // on the circle, far from its centre
  expectSnap("qua", 20.2, 4.9, 20, 5);
  expectSnap("_endp", 43.3, 2.4, 40 + 4 * std::cos(degrees(30)), 2);  // the arc's start
  expectSnap("mid", 40.5, 3.8, 40, 4);
  // Only the quadrant on the arc counts, however near the others are.
  expectSnap("qua", 43.3, 2.4, 40, 4);
  // A polyline: the end of the piece under the box, the middle of that piece.
  expectSnap("end", 9.5, 20.5, 10, 20);
  expectSnap("mid", 10.3, 24, 10, 25);
  expectSnap("cen", 5.2, 34.9, 5, 30);
  EXPECT_FALSE(snap("cen", 10.3, 24, r));  // a straight piece has no centre
}

TEST_F(Osnap, IntersectionPerpendicularNearestAndSeveralModes) {
  ads_point r;
  expectSnap("int", 5.3, 0.4, 5, 0);
  expectSnap("int", 0.2, 20.3, 0, 20);  // a corner of the polyline
  EXPECT_FALSE(snap("int", 8, 0.2, r));  // one line alone under the box
  // Perpendicular from LASTPOINT, also onto the line's extension.
  const ads_point last = {3, 7, 0}, far = {-4, 3, 0};
  resbuf rb{};
  rb.restype = RT3DPOINT;
  std::copy(last, last + 3, rb.resval.rpoint);
  ASSERT_EQ(ryedSetVar(L"LASTPOINT", &rb), RTNORM);
  expectSnap("per", 8, 0.2, 3, 0);
  std::copy(far, far + 3, rb.resval.rpoint);
  ASSERT_EQ(ryedSetVar(L"LASTPOINT", &rb), RTNORM);
  expectSnap("per", 1, 0.2, -4, 0);
  // Onto a circle: on the line through its centre and the last point, the side nearer the pick.
  ASSERT_TRUE(snap("per", 23, 4.1, r));
  EXPECT_NEAR(std::hypot(r[0] - 20, r[1]), 5, 1e-9);
  EXPECT_NEAR((r[0] - 20) * (far[1] - 0) - r[1] * (far[0] - 20), 0, 1e-9);
  EXPECT_GT(r[0], 20);
  expectSnap("nea", 7, 0.3, 7, 0);
  // Several modes: the snap nearest to the pick wins.
  expectSnap("end,mid", 4.6, 0.2, 5, 0);
  expectSnap("end,mid", 9.6, 0.2, 10, 0);
  expectSnap("non", 60, 60, 60, 60);
  EXPECT_FALSE(snap("end", 60, 60, r));  // nothing under the box
  EXPECT_FALSE(snap("xyz", 9, 0.5, r));
  EXPECT_FALSE(snap("end,xyz", 9, 0.5, r));
}

TEST_F(Osnap, SnapsInTheUserSystemAndAsPointOverrides) {
  // The user system moves the origin to (20,0): points go in and come out in it.
  OdGeMatrix3d ucs;
  ucs.setTranslation(OdGeVector3d(20, 0, 0));
  session.host().current()->setUcs(ucs);
  ads_point r;
  expectSnap("cen", 5.2, 0.3, 0, 0);
  expectSnap("end", -10.5, 0.4, -10, 0);
  // "end" typed at a point prompt snaps the point that follows.
  session.reply({"end", "-10.5,0.4", "mid", "100,100", "3,3"});
  ASSERT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", r), RTNORM);
  expectPoint(r, -10, 0, 0);
  ASSERT_EQ(ryedGetPoint(nullptr, L"\nPoint: ", r), RTNORM);  // nothing to snap: asked again
  expectPoint(r, 3, 3, 0);
  EXPECT_EQ(countOf(session.transcript(), "No snap point found."), 1);
}

TEST_F(Osnap, BlockReferencesSnapToTheirContentsAndInsertionPoint) {
  // A block holding one line from (0,0) to (2,0), inserted at (50,50) turned a quarter.
  OdDbObjectPtr table = session.db()->getBlockTableId().openObject(OdDb::kForWrite);
  OdSmartPtr<OdDbBlockTableRecord> block = OdDbBlockTableRecord::createObject();
  block->setName(L"TICK");
  const OdDbObjectId blockId = static_cast<OdDbSymbolTable*>(table.get())->add(block.get());
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint({2, 0, 0});
  block->appendOdDbEntity(line.get());
  OdDbBlockReferencePtr reference = OdDbBlockReference::createObject();
  reference->setBlockTableRecord(blockId);
  reference->setPosition({50, 50, 0});
  reference->setRotation(kPi / 2);
  place(session.db(), reference.get());
  ads_point r;
  expectSnap("end", 50.2, 51.8, 50, 52);
  expectSnap("ins", 50.2, 51.8, 50, 50);
  EXPECT_FALSE(snap("ins", 51.5, 51, r));  // beside the line: nothing of the block is under the box
}
