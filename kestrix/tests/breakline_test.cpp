// breakline: the symbol's vertices for several directions and sizes (values
// worked out apart from the code), and the command in the real host with the
// real module: the settings file, the shortest line with dimscale, Esc at
// each prompt, one U, the symbol drawing and breaking an existing line.
#include <gmock/gmock.h>

#include <filesystem>

#include "DbPolyline.h"
#include "kestrix_support.h"
#include "curves/BreakLine.h"
#include "ryed.h"

using kestrix::curves::breakSymbolVertices;
using testing::HasSubstr;

namespace {

void expectVertices(const std::array<OdGePoint3d, 6>& got, const std::vector<std::pair<double, double>>& want) {
  ASSERT_EQ(want.size(), 6u);
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_NEAR(got[i].x, want[i].first, 1e-9) << "vertex " << i;
    EXPECT_NEAR(got[i].y, want[i].second, 1e-9) << "vertex " << i;
  }
}

// A drawing in the host with the module, with no settings file left from an earlier test.
struct BreakLineSession : HostSession {
  BreakLineSession() {
    std::filesystem::remove(settingsPath());
    EXPECT_TRUE(loadModule());
  }
  std::string settingsPath() { return host().dataFolder().toUtf8() + "/RYAD.INI"; }
  std::string settingsText() { return att::readBytes(settingsPath()); }
  std::vector<OdDbEntityPtr> entities() {
    std::vector<OdDbEntityPtr> result;
    for (const OdDbObjectId& id : modelSpace()) result.push_back(OdDbEntity::cast(id.safeOpenObject()));
    return result;
  }
};

int shortVariable(const char* name) {
  resbuf value{};
  ryedGetVar(OdString(name).c_str(), &value);
  return value.restype == RTSHORT ? value.resval.rint : -1;
}

std::vector<OdGePoint2d> vertices(const OdDbEntity* entity) {
  std::vector<OdGePoint2d> points;
  if (const auto* pline = dynamic_cast<const OdDbPolyline*>(entity))
    for (unsigned i = 0; i < pline->numVerts(); ++i) points.push_back(pline->getPoint2dAt(i));
  return points;
}

}  // namespace

TEST(BreakLineSymbol, VerticesForSeveralDirectionsAndSizes) {
  // Upwards, size 2: C and D 7 apart on the line, the stroke 7.8262 long at 90 - 63 = 27 degrees.
  expectVertices(breakSymbolVertices({0, 0, 0}, {0, 30, 0}, {1, 15, 0}, 2),
                 {{0, 0}, {0, 8}, {6.973195259603, 11.553020449062}, {-6.973195259603, 18.446979550938}, {0, 22},
                  {0, 30}});
  expectVertices(breakSymbolVertices({10, 10, 0}, {-20, -20, 0}, {0, 0.5, 0}, 0.5),
                 {{10, 10}, {1.487436867076, 1.487436867076}, {-0.373352759881, 2.092044067421},
                  {0.873352759881, -1.592044067421}, {-0.987436867076, -0.987436867076}, {-20, -20}});
  expectVertices(breakSymbolVertices({5, -3, 0}, {-40, 12, 0}, {-10, 2, 0}, 3.25),
                 {{5, -3}, {0.791272515325, -1.597090838442}, {-1.102783932584, 10.978650255139},
                  {-18.897216067416, -6.978650255139}, {-20.791272515325, 5.597090838442}, {-40, 12}});
}

TEST(BreakLineSymbol, BlockNamesGetTheirEndingAndTheDrawingGivesTheReferenceWidth) {
  EXPECT_EQ(kestrix::curves::blockFileName(L"MYBREAK"), OdString(L"MYBREAK.DWG"));
  EXPECT_EQ(kestrix::curves::blockFileName(L"mybreak.dwg"), OdString(L"mybreak.dwg"));
  EXPECT_EQ(kestrix::curves::blockFileName(L"mybreak.dxf"), OdString(L"mybreak.dxf.DWG"));
  // The shipped drawing: its points at -3.5 and 3.5, found through the ".dxf" name.
  bool found = false;
  EXPECT_DOUBLE_EQ(kestrix::curves::symbolReferenceWidth(OdString(KESTRIX_BIN_DIR "/ExtendCmd"), L"BRKLINE.DWG", &found), 7.0);
  EXPECT_TRUE(found);
  EXPECT_DOUBLE_EQ(kestrix::curves::symbolReferenceWidth(OdString(KESTRIX_BIN_DIR "/ExtendCmd"), L"NONE.DWG", &found), 1.0);
  EXPECT_FALSE(found);
}

TEST(BreakLineCommand, DrawsTheSymbolAtTheMiddleOfThePickedPointsInOneUndoStep) {
  BreakLineSession session;
  att::layer(session.db(), L"WALLS");
  session.run({"CLAYER", "WALLS"});
  const std::string text = session.run({"breakline", "0,0", "20,0", ""});
  EXPECT_THAT(text, HasSubstr("Current settings: block = BRKLINE.DWG, size = 1.00, extension = 2.50"));
  EXPECT_THAT(text, testing::Not(HasSubstr("cannot be read")));
  const auto entities = session.entities();
  ASSERT_EQ(entities.size(), 1u);
  EXPECT_EQ(entities[0]->layer(), OdString(L"WALLS"));
  // The middle of the picked points (10, 0), not of the extended line;
  // E = C + 3.9131 (cos -63°, sin -63°).
  const std::vector<OdGePoint2d> got = vertices(entities[0].get());
  const std::vector<OdGePoint2d> want = {{-2.5, 0}, {6.5, 0}, {8.27651022453082, -3.4865976298015022},
                                         {11.72348977546918, 3.4865976298015022}, {13.5, 0}, {22.5, 0}};
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < want.size(); ++i) EXPECT_LT(got[i].distanceTo(want[i]), 1e-9) << i;
  // The saved drawing as an independent reader sees it.
  const std::string path = att::tempPath("breakline.dxf");
  odDxfWriteFile(session.db(), OdString(path));
  std::string seen;
  if (FILE* pipe = popen(("/usr/bin/python3 " KESTRIX_TEST_DIR "/dxf_geometry_summary.py '" + path + "' 2>&1").c_str(), "r")) {
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe)) seen += buffer;
    pclose(pipe);
  }
  EXPECT_THAT(seen, HasSubstr("audit errors 0\n('LWPOLYLINE', 'WALLS', False, ((-2.5, 0.0, 0.0), (6.5, 0.0, 0.0), "
                              "(8.27651, -3.486598, 0.0), (11.72349, 3.486598, 0.0), (13.5, 0.0, 0.0), (22.5, 0.0, 0.0)))"));
  session.run({"U"});
  EXPECT_TRUE(session.modelSpace().empty());
}

TEST(BreakLineCommand, TooShortLinesAreRefusedWithDimscaleZeroOrLessAsOne) {
  BreakLineSession session;
  session.run({"DIMSCALE", "0"});
  std::string text = session.run({"breakline", "0,0", "0.9,0", "1.1,0", "^C"});
  EXPECT_THAT(text, HasSubstr("The line is too short for the symbol; specify another second point."));
  EXPECT_THAT(text, HasSubstr("Location of the break symbol"));  // 1.1 was taken
  EXPECT_TRUE(session.modelSpace().empty());

  session.run({"DIMSCALE", "-2"});
  text = session.run({"breakline", "0,0", "0.9,0", "^C", "^C"});
  EXPECT_THAT(text, HasSubstr("too short"));
  EXPECT_TRUE(session.modelSpace().empty());

  session.run({"DIMSCALE", "3"});
  text = session.run({"breakline", "S", "2", "0,0", "5.9,0", "6.1,0", "^C"});
  EXPECT_THAT(text, HasSubstr("too short"));
  EXPECT_THAT(text, HasSubstr("Location of the break symbol"));
  EXPECT_TRUE(session.modelSpace().empty());
}

TEST(BreakLineCommand, EscAtTheSecondPointOrTheLocationLeavesNothingAndRestoresVariables) {
  BreakLineSession session;
  session.run({"LINE", "0,50", "10,50", ""});
  session.run({"OSMODE", "33"});
  session.run({"breakline", "0,0", "^C"});
  EXPECT_EQ(session.modelSpace().size(), 1u);
  session.run({"breakline", "0,0", "30,0", "^C"});
  EXPECT_EQ(session.modelSpace().size(), 1u);
  session.run({"breakline", "P", "^C"});
  session.run({"breakline", "P", "0,50", "^C"});
  EXPECT_EQ(session.modelSpace().size(), 1u);
  EXPECT_EQ(shortVariable("OSMODE"), 33);
  EXPECT_EQ(shortVariable("CMDECHO"), 1);
  EXPECT_TRUE(OdDbLine::cast(session.modelSpace()[0].safeOpenObject())->startPoint().isEqualTo({0, 50, 0}));
}

TEST(BreakLineCommand, KeywordsWriteTheSettingsFileAndBadValuesFallBack) {
  BreakLineSession session;
  session.run({"FILEDIA", "0"});
  std::string text = session.run({"breakline", "S", "2.345", "E", "4", "B", "MYBREAK", "X"});
  EXPECT_THAT(session.settingsText(), HasSubstr("Breakline-Size=2.35"));
  EXPECT_THAT(session.settingsText(), HasSubstr("Breakline-Exe=4.00"));
  EXPECT_THAT(text, HasSubstr("block = MYBREAK.DWG, size = 2.35, extension = 4.00"));
  // A drawing that cannot be found: said once, and the built-in proportions hold.
  text = session.run({"breakline", "0,0", "2.3,0", "2.4,0", ""});
  EXPECT_THAT(text, HasSubstr("The break symbol drawing MYBREAK.DWG cannot be read; the built-in symbol is used."));
  EXPECT_THAT(text, HasSubstr("too short"));
  EXPECT_EQ(session.modelSpace().size(), 1u);

  att::writeBytes(session.settingsPath(),
                  "[RYADEXCMD]\r\nBreakline-Block=sym.dwg\r\nBreakline-Size=big\r\nBreakline-Exe=wide\r\n");
  text = session.run({"breakline", "X"});
  EXPECT_THAT(text, HasSubstr("block = sym.dwg, size = 1.00, extension = 2.50"));
}

TEST(BreakLineCommand, SpecifyBreaksAnExistingLineAndAddsTheZigZag) {
  BreakLineSession session;
  session.run({"LINE", "0,0", "30,0", ""});
  session.run({"breakline", "P", "15,0", "10,0"});
  std::vector<std::vector<OdGePoint2d>> polylines;
  std::vector<std::pair<double, double>> lines;
  for (const OdDbEntityPtr& entity : session.entities()) {
    if (const auto* line = dynamic_cast<const OdDbLine*>(entity.get()))
      lines.emplace_back(std::min(line->startPoint().x, line->endPoint().x), std::max(line->startPoint().x, line->endPoint().x));
    else
      polylines.push_back(vertices(entity.get()));
  }
  std::sort(lines.begin(), lines.end());
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NEAR(lines[0].first, 0, 1e-9);
  EXPECT_NEAR(lines[0].second, 6.5, 1e-9);
  EXPECT_NEAR(lines[1].first, 13.5, 1e-9);
  EXPECT_NEAR(lines[1].second, 30, 1e-9);
  ASSERT_EQ(polylines.size(), 1u);
  ASSERT_EQ(polylines[0].size(), 4u);
  EXPECT_LT(polylines[0][1].distanceTo({8.27651022453082, -3.4865976298015022}), 1e-9);
  session.run({"U"});
  EXPECT_EQ(session.modelSpace().size(), 1u);
}
