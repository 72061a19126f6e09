// -LAYER: options on real layers, name lists with wildcards, the classic
// refusals, listing, Esc at each prompt and U.
#include <gtest/gtest.h>

#include "DbCurves.h"
#include "host_test_support.h"
#include "ryed.h"

namespace {

using namespace hosttest;

TEST(LayerCommand, OptionsChangeLayersNamedByListsAndWildcards) {
  HostSession session;
  session.run({"-LAYER",      "N",          "WALL-1,wall-2, DOOR",
               "C",           "1",          "WALL-*",
               "L",           "Continuous", "DOOR",
               "LW",          "0.31",       "door",
               "F",           "wall-2",     "LO",
               "DOOR,WALL-1", "OFF",        "WALL-1",
               "M",           "NOTES",      ""});
  OdDbDatabase* db = session.db();
  auto wall1 = layer(db, L"WALL-1"), wall2 = layer(db, L"WALL-2"), door = layer(db, L"DOOR");
  ASSERT_TRUE(wall1.get() && wall2.get() && door.get());
  EXPECT_EQ(wall1->colorIndex(), 1);
  EXPECT_EQ(wall2->colorIndex(), 1);
  EXPECT_EQ(door->colorIndex(), 7);
  EXPECT_EQ(door->lineWeight(), OdDb::kLnWt030);  // 0.31 rounds to the nearest standard weight
  EXPECT_TRUE(wall2->isFrozen());
  EXPECT_FALSE(wall1->isFrozen());
  EXPECT_TRUE(wall1->isLocked() && door->isLocked() && !wall2->isLocked());
  EXPECT_TRUE(wall1->isOff());
  EXPECT_EQ(db->getCLAYER(), db->findRecord(OdDbNameTable::kLayer, L"NOTES"));
  wall1.release(), wall2.release(), door.release();

  // The reverse options, in a second run.
  session.run({"LAYER", "T", "*", "U", "*", "ON", "WALL-1", "S", "WALL-2", ""});
  EXPECT_FALSE(layer(db, L"WALL-2")->isFrozen());
  EXPECT_FALSE(layer(db, L"DOOR")->isLocked());
  EXPECT_FALSE(layer(db, L"WALL-1")->isOff());
  EXPECT_EQ(db->getCLAYER(), db->findRecord(OdDbNameTable::kLayer, L"WALL-2"));
}

TEST(LayerCommand, ClassicRefusals) {
  HostSession session;
  const std::string out =
      session.run({"-LAYER", "F",   "0", "L",       "NOSUCH", "Continuous", "", "LW", "5",   "0.5", "",
                   "C",      "300", "2", "MISSING", "OFF",    "0",          "", "N",  "A<B", ""});
  OdDbDatabase* db = session.db();
  EXPECT_TRUE(contains(out, "Cannot freeze layer \"0\". It is the CURRENT layer.")) << out;
  EXPECT_FALSE(layer(db, L"0")->isFrozen());
  EXPECT_TRUE(contains(out, "Linetype \"NOSUCH\" not found.  Use LINETYPE command to load it."));
  EXPECT_TRUE(contains(out, "Invalid lineweight."));
  EXPECT_EQ(layer(db, L"0")->lineWeight(), OdDb::kLnWt050);
  EXPECT_TRUE(contains(out, "Invalid color \"300\""));
  EXPECT_TRUE(contains(out, "Cannot find layer \"MISSING\"."));
  EXPECT_TRUE(contains(out, "Really want layer 0 (the CURRENT layer) off? <N>"));
  EXPECT_FALSE(layer(db, L"0")->isOff());  // Enter answers No
  EXPECT_TRUE(contains(out, "Invalid layer name \"A<B\"."));
  EXPECT_TRUE(db->findRecord(OdDbNameTable::kLayer, L"A<B").isNull());

  session.run({"-LAYER", "OFF", "0", "Y", ""});
  EXPECT_TRUE(layer(db, L"0")->isOff());
  // A frozen layer cannot become current, by Set or by Make.
  const std::string refused = session.run({"-LAYER", "N", "ICE", "F", "ICE", "S", "ICE", "M", "ICE", ""});
  EXPECT_TRUE(contains(refused, "Cannot make frozen layer \"ICE\" current."));
  EXPECT_EQ(db->getCLAYER(), db->getLayerZeroId());
}

TEST(LayerCommand, ListShowsStatesColoursAndLinetypes) {
  HostSession session;
  const std::string out =
      session.run({"-LAYER", "N", "RED,BLUE", "C", "1", "RED", "F", "BLUE", "?", "R*", "?", "", ""});
  EXPECT_TRUE(contains(out, "Layer name")) << out;
  const size_t first = out.find("Layer name"), second = out.find("Layer name", first + 1);
  ASSERT_NE(second, std::string::npos);
  const std::string onlyR = out.substr(first, second - first), all = out.substr(second);
  EXPECT_TRUE(contains(onlyR, "RED ") && contains(onlyR, "1 (red)") && !contains(onlyR, "BLUE"));
  EXPECT_TRUE(contains(all, "BLUE") && contains(all, "Frozen") && contains(all, "Continuous"));
  EXPECT_TRUE(contains(all, "Current layer: \"0\""));
}

TEST(LayerCommand, SetAndOffTakeLayersFromPickedObjects) {
  HostSession session;
  session.run({"-LAYER", "N", "PIPES", ""});
  OdDbLinePtr line = new OdDbLine(OdGePoint3d(0, 0, 0), OdGePoint3d(10, 0, 0));
  addToModelSpace(session.db(), line.get(), L"PIPES");
  line.release();
  OdDbDatabase* db = session.db();
  session.run({"-LAYER", "S", "", "5,0", ""});
  EXPECT_EQ(db->getCLAYER(), db->findRecord(OdDbNameTable::kLayer, L"PIPES"));
  session.run({"-LAYER", "S", "0", "LO", "", "5,0", "", ""});
  EXPECT_TRUE(layer(db, L"PIPES")->isLocked());
}

TEST(LayerCommand, EscAtAnyPromptLeavesTheLayersAndUTakesAllBack) {
  HostSession session;
  session.run({"-LAYER", "N", "KEEP", ""});
  const std::vector<std::vector<std::string>> escapes = {{"-LAYER", "^C"},
                                                         {"-LAYER", "N", "A,B", "C", "3", "A", "^C"},
                                                         {"-LAYER", "C", "^C"},
                                                         {"-LAYER", "C", "T", "^C"},
                                                         {"-LAYER", "C", "2", "^C"},
                                                         {"-LAYER", "L", "^C"},
                                                         {"-LAYER", "LW", "^C"},
                                                         {"-LAYER", "M", "NEW", "OFF", "NEW", "^C"},
                                                         {"-LAYER", "F", "KEEP", "LO", "^C"},
                                                         {"-LAYER", "S", "^C"},
                                                         {"-LAYER", "?", "^C"}};
  for (const auto& replies : escapes) expectUnchanged(session, replies);
  expectUnchanged(session, {"-LAYER", "N", "X,Y", "C", "4", "*", "F", "KEEP", "LO", "0", "M", "Z", "", "U"});
}

TEST(LayerCommand, ProgramsRunItWithGlobalOptions) {
  HostSession session;
  session.run({"-LAYER", "N", "P1,P2", ""});
  EXPECT_EQ(ryedCommand(RTSTR, L"_.LAYER", RTSTR, L"_LOCK", RTSTR, L"P*", RTSTR, L"", RTNONE), RTNORM);
  EXPECT_TRUE(layer(session.db(), L"P1")->isLocked() && layer(session.db(), L"P2")->isLocked());
  EXPECT_EQ(ryedCommand(RTSTR, L"_.LAYER", RTSTR, L"_Color", RTSTR, L"_Truecolor", RTSTR, L"10,20,30", RTSTR,
                        L"P1", RTSTR, L"", RTNONE),
            RTNORM);
  auto p1 = layer(session.db(), L"P1");
  EXPECT_TRUE(p1->color().isByColor());
  EXPECT_EQ(p1->color().red(), 10);
  EXPECT_EQ(p1->color().blue(), 30);
}

}  // namespace
