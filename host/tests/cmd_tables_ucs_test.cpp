// UCS: the systems each option sets (checked through the points the prompts
// then take and the UCS variables), objects that define systems, the stack of
// previous systems, U and Esc.
#include <gtest/gtest.h>

#include <cmath>

#include "DbCurves.h"
#include "DbText.h"
#include "host_test_support.h"
#include "ryed.h"
#include "sdk/Input.h"

namespace {

using namespace hosttest;

constexpr double kTolerance = 1e-9;

ryhost::Document* document() { return ryhost::Host::instance().current(); }

// Where a point typed in the current system lies in the world.
OdGePoint3d worldOf(double x, double y, double z = 0) { return ryhost::ucsToWcs(OdGePoint3d(x, y, z)); }

void expectAt(const OdGePoint3d& actual, double x, double y, double z,
                 const std::string& what = std::string()) {
  EXPECT_LT(actual.distanceTo(OdGePoint3d(x, y, z)), kTolerance)
      << what << ": " << actual.x << "," << actual.y << "," << actual.z;
}

OdGePoint3d variable(const wchar_t* name) {
  resbuf value;
  EXPECT_EQ(ryedGetVar(name, &value), RTNORM);
  return OdGePoint3d(value.resval.rpoint[0], value.resval.rpoint[1], value.resval.rpoint[2]);
}

TEST(UcsCommand, OptionsSetTheSystemThatPointsAreTypedIn) {
  HostSession session;
  const double r = std::sqrt(0.5);
  session.run({"UCS", "Z", "90"});
  expectAt(worldOf(10, 0), 0, 10, 0, "Z 90");
  session.run({"UCS", "O", "10,0"});  // in the rotated system: world (0,10)
  expectAt(variable(L"UCSORG"), 0, 10, 0, "origin");
  expectAt(worldOf(1, 0), 0, 11, 0, "origin keeps the axes");
  session.run({"UCS", "W"});
  expectAt(worldOf(3, 4), 3, 4, 0, "world");

  session.run({"UCS", "3", "1,1,0", "2,2,0", "0,2,0"});
  expectAt(variable(L"UCSXDIR"), r, r, 0, "3point x");
  expectAt(variable(L"UCSYDIR"), -r, r, 0, "3point y");
  expectAt(worldOf(0, 0), 1, 1, 0, "3point origin");
  session.run({"UCS", "", "UCS", "5,0", ""});  // a point and Accept: the origin moves only
  expectAt(worldOf(0, 0), 5, 0, 0, "moved");
  session.run({"UCS", "0,0", "0,1", ""});  // the x axis toward a point
  expectAt(variable(L"UCSXDIR"), 0, 1, 0, "turned");
  session.run({"UCS", "W", "UCS", "X", "90"});
  expectAt(variable(L"UCSYDIR"), 0, 0, 1, "X 90");
  session.run({"UCS", "W", "UCS", "Y", "-90"});
  expectAt(variable(L"UCSXDIR"), 0, 0, 1, "Y -90");
  session.run({"UCS", "W", "UCS", "ZA", "1,2,3", "1,2,2"});
  expectAt(worldOf(0, 0, 1), 1, 2, 2, "ZAxis points down");
  const std::string out = session.run({"UCS", "F"});
  EXPECT_TRUE(contains(out, "The Face option is not available on the console.")) << out;
  expectAt(worldOf(0, 0, 1), 1, 2, 2, "unchanged by Face");
}

TEST(UcsCommand, PreviousWalksBackAndUUndoesEachChange) {
  HostSession session;
  // Undone, a half turn leaves no previous system behind (the axes come back before the origin).
  session.run({"UCS", "Z", "180", "U"});
  EXPECT_TRUE(contains(session.run({"UCS", "P"}), "No previous UCS saved."));
  session.run({"UCS", "Z", "90", "UCS", "O", "5,5"});
  expectAt(worldOf(0, 0), -5, 5, 0);
  session.run({"UCS", "P"});
  expectAt(worldOf(0, 0), 0, 0, 0, "previous origin");
  expectAt(worldOf(1, 0), 0, 1, 0, "previous axes");
  session.run({"UCS", "P"});
  expectAt(worldOf(1, 0), 1, 0, 0, "back to world");
  EXPECT_TRUE(contains(session.run({"UCS", "P"}), "No previous UCS saved."));

  // U takes back one change at a time: the rotation after the origin, then the rotation.
  session.run({"UCS", "Z", "90", "UCS", "O", "5,5", "U"});
  expectAt(worldOf(0, 0), 0, 0, 0, "U after Origin");
  expectAt(worldOf(1, 0), 0, 1, 0, "U after Origin keeps the rotation");
  session.run({"U"});
  expectAt(worldOf(1, 0), 1, 0, 0, "U after Z");
  // Undoing Previous brings back both the system and what Previous took from the stack.
  session.run({"UCS", "Z", "90", "UCS", "P", "U"});
  expectAt(worldOf(1, 0), 0, 1, 0, "U after Previous");
  session.run({"UCS", "P"});
  expectAt(worldOf(1, 0), 1, 0, 0, "Previous again");
  // After the undo, Previous still knows nothing newer than world.
  session.run({"UCS", "Z", "45", "UCS", "P"});
  expectAt(worldOf(1, 0), 1, 0, 0, "previous after undo");
}

TEST(UcsCommand, ObjectsDefineSystems) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const double r = std::sqrt(0.5);
  OdDbTextPtr text = OdDbText::createObject();
  text->setDatabaseDefaults(db);
  text->setTextString(L"Plan");
  text->setPosition(OdGePoint3d(10, 10, 0));
  text->setRotation(std::atan2(1.0, 1.0));
  const OdDbObjectId textId = addToModelSpace(db, text.get());
  text.release();
  OdDbLinePtr line = new OdDbLine(OdGePoint3d(0, -20, 0), OdGePoint3d(0, -30, 0));
  addToModelSpace(db, line.get());
  line.release();
  OdDbCirclePtr circle = new OdDbCircle(OdGePoint3d(50, 0, 0), 5);
  addToModelSpace(db, circle.get());
  circle.release();

  session.run({"UCS", "OB", "#" + textId.handle().ascii().toUtf8()});
  expectAt(worldOf(0, 0), 10, 10, 0, "text origin");
  expectAt(variable(L"UCSXDIR"), r, r, 0, "text rotation");
  // The line: origin at the end nearer the pick, x along the line.
  session.run({"UCS", "W", "UCS", "OB", "*0,-29"});
  expectAt(worldOf(0, 0), 0, -30, 0, "line origin");
  expectAt(variable(L"UCSXDIR"), 0, 1, 0, "line direction");
  // The circle: origin at the centre, x through the pick.
  session.run({"UCS", "W", "UCS", "OB", "*50,-5"});
  expectAt(worldOf(0, 0), 50, 0, 0, "circle centre");
  expectAt(variable(L"UCSXDIR"), 0, -1, 0, "circle pick");

  // Programs: the object option and then Previous.
  EXPECT_EQ(
      ryedCommand(RTSTR, L"_.ucs", RTSTR, L"_OB", RTSTR, (L"#" + textId.handle().ascii()).c_str(), RTNONE),
      RTNORM);
  expectAt(worldOf(0, 0), 10, 10, 0, "program object");
  EXPECT_EQ(ryedCommand(RTSTR, L"_.ucs", RTSTR, L"_p", RTNONE), RTNORM);
  expectAt(worldOf(0, 0), 50, 0, 0, "program previous");
}

TEST(UcsCommand, NamedSystemsAreSavedRestoredListedAndDeleted) {
  HostSession session;
  OdDbDatabase* db = session.db();
  session.run({"UCS", "Z", "90", "UCS", "NA", "S", "TURNED", "UCS", "O", "5,0", "UCS", "NA", "S", "MOVED"});
  std::string out = session.run({"UCS", "NA", "S", "TURNED", "N", "", "UCS", "NA", "?", "*"});
  EXPECT_TRUE(contains(out, "UCS \"TURNED\" already exists.  Replace it? <N>")) << out;
  EXPECT_TRUE(contains(out, "\"MOVED\"  Origin = <0.0000,5.0000,0.0000>"));
  session.run({"UCS", "W", "UCS", "NA", "R", "NOSUCH", "turned"});
  expectAt(worldOf(1, 0), 0, 1, 0, "restored");
  out = session.run({"UCS", "NA", "D", "T*"});
  EXPECT_TRUE(contains(out, "1 UCS name(s) deleted.")) << out;
  EXPECT_TRUE(db->findRecord(OdDbNameTable::kUcs, L"TURNED").isNull());
  EXPECT_FALSE(db->findRecord(OdDbNameTable::kUcs, L"MOVED").isNull());
  expectUnchanged(session, {"UCS", "NA", "S", "THIRD", "U"});
  expectUnchanged(session, {"UCS", "NA", "D", "*", "U"});
}

TEST(UcsCommand, EscChangesNothingAndTheSystemIsSavedInTheHeader) {
  HostSession session;
  session.run({"UCS", "Z", "30"});
  const OdGeMatrix3d before = document()->ucs();
  for (const auto& replies : std::vector<std::vector<std::string>>{{"UCS", "^C"},
                                                                   {"UCS", "Z", "^C"},
                                                                   {"UCS", "3", "1,1", "^C"},
                                                                   {"UCS", "3", "1,1", "2,2", "^C"},
                                                                   {"UCS", "5,5", "^C"},
                                                                   {"UCS", "5,5", "6,6", "^C"},
                                                                   {"UCS", "OB", "^C"},
                                                                   {"UCS", "ZA", "^C"},
                                                                   {"UCS", "NA", "S", "^C"}}) {
    expectUnchanged(session, replies);
    EXPECT_TRUE(document()->ucs() == before);
  }
  const double c = std::cos(3.14159265358979323846 / 6), s = 0.5;
  const OdGePoint3d xdir = session.db()->headerPoint(L"$UCSXDIR");
  EXPECT_LT(xdir.distanceTo(OdGePoint3d(c, s, 0)), kTolerance);
}

}  // namespace
