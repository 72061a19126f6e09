// RY_boolop in the real host with the real module: union, intersection and
// subtraction of bulged polylines and circles, checked by the areas worked
// out by hand and by the arcs staying arcs as an independent reader sees the
// saved drawing; the locked-layer rules, the base among the tools, an empty
// result, the erase option and undo.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

#include "DbPolyline.h"
#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr double kPi = 3.14159265358979323846;

std::string handleOf(const OdDbObjectId& id) { return id.handle().ascii().toUtf8(); }

OdDbObjectId append(OdDbDatabase* db, OdDbEntity* entity, const OdDbObjectId& layer = OdDbObjectId()) {
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  entity->setDatabaseDefaults(db);
  if (!layer.isNull()) entity->setLayer(layer);
  return space->appendOdDbEntity(entity);
}

OdDbObjectId circle(OdDbDatabase* db, double x, double y, double r, const OdDbObjectId& layer = OdDbObjectId()) {
  OdSmartPtr<OdDbCircle> c = OdDbCircle::createObject();
  c->setCenter(OdGePoint3d(x, y, 0));
  c->setRadius(r);
  return append(db, c.get(), layer);
}

// A closed polyline through (x, y, bulge) vertices.
OdDbObjectId polyline(OdDbDatabase* db, const std::vector<std::array<double, 3>>& vertices,
                      const OdDbObjectId& layer = OdDbObjectId()) {
  OdSmartPtr<OdDbPolyline> p = OdDbPolyline::createObject();
  for (const auto& [x, y, bulge] : vertices) p->addVertexAt(p->numVerts(), OdGePoint2d(x, y), bulge);
  p->setClosed(true);
  return append(db, p.get(), layer);
}

OdDbObjectId rectangle(OdDbDatabase* db, double x0, double y0, double x1, double y1) {
  return polyline(db, {{x0, y0, 0}, {x1, y0, 0}, {x1, y1, 0}, {x0, y1, 0}});
}

// The outlines of the saved drawing as python3-ezdxf reads them (see dxf_outlines.py).
struct Outline {
  std::string kind;
  std::map<std::string, std::string> fields;
  double area() const { return std::stod(fields.at("area")); }
};

std::vector<Outline> savedOutlines(OdDbDatabase* db, int& auditErrors) {
  const std::string path = att::tempPath("boolop.dxf");
  odDxfWriteFile(db, OdString(path));
  const std::string command =
      "/usr/bin/python3 " + std::string(KESTRIX_SOURCE_DIR) + "/tests/dxf_outlines.py '" + path + "' 2>&1";
  std::string output;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[1024];
    while (fgets(buffer, sizeof buffer, pipe)) output += buffer;
    pclose(pipe);
  }
  std::istringstream lines(output);
  std::vector<Outline> outlines;
  auditErrors = -1;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    Outline outline;
    words >> outline.kind;
    if (outline.kind == "errors") {
      words >> auditErrors;
      continue;
    }
    for (std::string word; words >> word;) {
      const size_t equals = word.find('=');
      if (equals != std::string::npos) outline.fields[word.substr(0, equals)] = word.substr(equals + 1);
    }
    outlines.push_back(outline);
  }
  EXPECT_EQ(auditErrors, 0) << output;
  return outlines;
}

std::vector<Outline> savedOutlines(OdDbDatabase* db) {
  int errors = 0;
  return savedOutlines(db, errors);
}

// Replies for one run: the operation chosen in the dialog (the options are the
// module's and outlive a test), the base, the tools, Enter.
std::vector<std::string> replies(const OdDbObjectId& base, const std::vector<OdDbObjectId>& tools,
                                 const std::string& operation = "14835") {
  std::vector<std::string> result{"RY_boolop", "!" + operation};
  result.push_back("#" + handleOf(base));
  for (const OdDbObjectId& tool : tools) result.push_back("#" + handleOf(tool));
  result.push_back("");
  return result;
}

class BoolOp : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session.loadModule()); }
  HostSession session;
};

}  // namespace

TEST_F(BoolOp, UnionOfASquareAndACircleKeepsTheHalfCircleAsOneBulge) {
  const OdDbObjectId red = att::layer(session.db(), L"Red");
  const OdDbObjectId base = polyline(session.db(), {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}, red);
  {
    OdDbEntityPtr entity = OdDbEntity::cast(base.safeOpenObject(OdDb::kForWrite));
    entity->setColorIndex(3);
    entity->setLineWeight(OdDb::kLnWt050);
  }
  const OdDbObjectId tool = circle(session.db(), 2, 1, 1);
  const std::string out = session.run(replies(base, {tool}));
  EXPECT_THAT(out, HasSubstr("Please choose the first closed profile entity"));
  EXPECT_THAT(out, HasSubstr("Boolean operation"));  // the dialog was shown
  EXPECT_TRUE(base.isErased());
  EXPECT_TRUE(tool.isErased());

  const std::vector<Outline> outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 1u);
  EXPECT_EQ(outlines[0].kind, "LWPOLYLINE");
  EXPECT_EQ(outlines[0].fields.at("closed"), "1");
  EXPECT_EQ(outlines[0].fields.at("layer"), "Red");
  EXPECT_EQ(outlines[0].fields.at("color"), "3");
  EXPECT_EQ(outlines[0].fields.at("lineweight"), "50");
  // Four corners (the ones on the right become the ends of the half circle).
  EXPECT_EQ(outlines[0].fields.at("vertices"), "4");
  EXPECT_THAT(outlines[0].fields.at("bulges"), HasSubstr("1.000000"));
  EXPECT_NEAR(outlines[0].area(), 4 + kPi / 2, 1e-9);

  session.run({"U"});
  EXPECT_FALSE(base.isErased());
  EXPECT_FALSE(tool.isErased());
  EXPECT_EQ(session.modelSpace().length(), 2u);
}

TEST_F(BoolOp, IntersectionOfTwoCirclesIsALensOfTwoArcs) {
  const OdDbObjectId a = circle(session.db(), 0, 0, 1), b = circle(session.db(), 1, 0, 1);
  session.run(replies(a, {b}, "14836"));
  const std::vector<Outline> outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 1u);
  EXPECT_EQ(outlines[0].kind, "LWPOLYLINE");
  // Two arcs of 120 degrees each: bulge tan(30°).
  EXPECT_EQ(outlines[0].fields.at("bulges"), "0.577350,0.577350");
  EXPECT_NEAR(outlines[0].area(), 2 * kPi / 3 - std::sqrt(3.0) / 2, 1e-9);
}

TEST_F(BoolOp, SubtractionLeavesAHoleAsACircleOfItsOwn) {
  const OdDbObjectId base = rectangle(session.db(), 0, 0, 4, 4);
  const OdDbObjectId hole = circle(session.db(), 2, 2, 1);
  session.run(replies(base, {hole}, "14837"));
  std::vector<Outline> outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 2u);
  std::sort(outlines.begin(), outlines.end(), [](const Outline& x, const Outline& y) { return x.kind < y.kind; });
  EXPECT_EQ(outlines[0].kind, "CIRCLE");
  EXPECT_EQ(outlines[0].fields.at("center"), "2.000000,2.000000");
  EXPECT_EQ(outlines[0].fields.at("radius"), "1.000000000");
  EXPECT_EQ(outlines[1].kind, "LWPOLYLINE");
  EXPECT_EQ(outlines[1].fields.at("bulges"), "0.000000,0.000000,0.000000,0.000000");
  EXPECT_NEAR(outlines[1].area() - outlines[0].area(), 16 - kPi, 1e-9);
}

TEST_F(BoolOp, AHoleOfArcsRunsClockwiseWithNegativeBulges) {
  const OdDbObjectId base = rectangle(session.db(), 0, 0, 4, 4);
  // A 2 x 2 square with half circles on its bottom and top sides, inside the base.
  const OdDbObjectId stadium = polyline(session.db(), {{1, 1, 0}, {3, 1, 1}, {3, 3, 0}, {1, 3, 1}});
  session.run(replies(base, {stadium}, "14837"));
  std::vector<Outline> outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 2u);
  std::sort(outlines.begin(), outlines.end(), [](const Outline& x, const Outline& y) { return x.area() > y.area(); });
  EXPECT_NEAR(outlines[0].area(), 16, 1e-9);
  EXPECT_NEAR(outlines[1].area(), 4 + kPi, 1e-9);
  const std::string bulges = outlines[1].fields.at("bulges");
  EXPECT_EQ(std::count(bulges.begin(), bulges.end(), '-'), 2) << bulges;
  EXPECT_THAT(bulges, HasSubstr("-1.000000"));
}

TEST_F(BoolOp, ABulgedSideSurvivesIntersectionAndGoesBySubtraction) {
  // A 4 x 4 square whose right side is a half circle of radius 2 bulging out.
  const std::vector<std::array<double, 3>> shape{{0, 0, 0}, {4, 0, 1}, {4, 4, 0}, {0, 4, 0}};
  const OdDbObjectId first = polyline(session.db(), shape);
  OdDbObjectId cutter = rectangle(session.db(), 3, -1, 10, 5);
  session.run(replies(first, {cutter}, "14836"));
  std::vector<Outline> outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 1u);
  EXPECT_NEAR(outlines[0].area(), 4 + 2 * kPi, 1e-9);
  EXPECT_THAT(outlines[0].fields.at("bulges"), HasSubstr("1.000000"));
  session.run({"U"});

  session.run(replies(first, {cutter}, "14837"));
  outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 1u);
  EXPECT_NEAR(outlines[0].area(), 12, 1e-9);
  EXPECT_EQ(outlines[0].fields.at("bulges"), "0.000000,0.000000,0.000000,0.000000");
}

TEST_F(BoolOp, LockedLayersRefuseTheBaseAndDropToolsSilently) {
  const OdDbObjectId locked = att::layer(session.db(), L"Locked");
  const OdDbObjectId lockedBase = circle(session.db(), 0, 0, 1, locked);
  const OdDbObjectId base = circle(session.db(), 10, 0, 1);
  const OdDbObjectId lockedTool = circle(session.db(), 11, 0, 1, locked);
  const OdDbObjectId tool = circle(session.db(), 9, 0, 1);
  att::layer(session.db(), L"Locked", 4);

  std::string out = session.run({"RY_boolop", "#" + handleOf(lockedBase)});
  EXPECT_THAT(out, HasSubstr("The type of the first choosed entity cann't be operated"));
  EXPECT_EQ(session.modelSpace().length(), 4u);

  // With only the locked tool picked nothing is left to work with.
  out = session.run({"RY_boolop", "#" + handleOf(base), "#" + handleOf(lockedTool), ""});
  EXPECT_THAT(out, HasSubstr("The type of the second choosed entity cann't be operated"));
  EXPECT_EQ(session.modelSpace().length(), 4u);

  out = session.run(replies(base, {lockedTool, tool}));
  EXPECT_THAT(out, Not(HasSubstr("choosed")));
  EXPECT_FALSE(lockedTool.isErased());
  EXPECT_TRUE(tool.isErased());
  const std::vector<Outline> outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 3u);  // the two locked circles and the union of the other two
  double unionArea = 0;
  for (const Outline& o : outlines) {
    if (o.fields.at("layer") == "0") unionArea = o.area();
  }
  // Two unit circles 1 apart: 2π less the lens they share.
  EXPECT_NEAR(unionArea, 2 * kPi - (2 * kPi / 3 - std::sqrt(3.0) / 2), 1e-9);
}

TEST_F(BoolOp, TheBaseAmongTheToolsIsNoToolAndIsErasedOnce) {
  const OdDbObjectId base = circle(session.db(), 0, 0, 2);
  const OdDbObjectId tool = circle(session.db(), 0, 0, 1);
  // The base alone among the tools: nothing to operate with, nothing changes.
  session.run(replies(base, {base}));
  EXPECT_FALSE(base.isErased());
  EXPECT_EQ(session.modelSpace().length(), 2u);

  session.run(replies(base, {base, tool}, "14837"));
  EXPECT_TRUE(base.isErased());
  EXPECT_TRUE(tool.isErased());
  std::vector<Outline> outlines = savedOutlines(session.db());
  ASSERT_EQ(outlines.size(), 2u);  // a ring: two circles
  EXPECT_EQ(outlines[0].kind + outlines[1].kind, "CIRCLECIRCLE");
}

TEST_F(BoolOp, AnIntersectionThatEmptiesWritesAndErasesNothing) {
  const OdDbObjectId base = circle(session.db(), 0, 0, 1);
  const OdDbObjectId near = circle(session.db(), 1, 0, 1);
  const OdDbObjectId far = circle(session.db(), 10, 0, 1);
  const OdDbObjectId last = circle(session.db(), 0.5, 0, 1);
  session.run(replies(base, {near, far, last}, "14836"));
  EXPECT_EQ(session.modelSpace().length(), 4u);
  for (const OdDbObjectId& id : {base, near, far, last}) EXPECT_FALSE(id.isErased());
}

TEST_F(BoolOp, WithEraseOffOnlyTheBaseGoesAndTheOptionsAreKept) {
  const OdDbObjectId base = circle(session.db(), 0, 0, 1);
  const OdDbObjectId tool = circle(session.db(), 1, 0, 1);
  session.run({"RY_boolop", "!14838", "!14837", "#" + handleOf(base), "#" + handleOf(tool), ""});
  EXPECT_TRUE(base.isErased());
  EXPECT_FALSE(tool.isErased());
  // The next run shows the options chosen last: subtraction, tools kept.
  const std::string out = session.run({"RY_boolop", "^C"});
  EXPECT_THAT(out, HasSubstr("14837 radio    Subtraction  (o)"));
  EXPECT_THAT(out, HasSubstr("14838 check    Erase the tool outlines  [ ]"));
  // Cancelled before the options were read: they stay as they were.
  EXPECT_THAT(session.run({"RY_boolop", "!14838", "^C"}), HasSubstr("[x]"));
  EXPECT_THAT(session.run({"RY_boolop", "^C"}), HasSubstr("Erase the tool outlines  [ ]"));
  // Erasing on again for the tests after this one.
  session.run({"RY_boolop", "!14838", "#" + handleOf(tool), "#" + handleOf(circle(session.db(), 5, 0, 1)), ""});
}

TEST(BoolOpRefusals, AnOldStylePolylineIsRefusedAndAnOutlineThatBoundsNothingDoesNotConvert) {
  HostSession session(DxfText{"0\nSECTION\n2\nENTITIES\n0\nPOLYLINE\n8\n0\n66\n1\n70\n1\n10\n0\n20\n0\n30\n0\n"
                              "0\nVERTEX\n8\n0\n10\n0\n20\n0\n0\nVERTEX\n8\n0\n10\n1\n20\n0\n"
                              "0\nVERTEX\n8\n0\n10\n1\n20\n1\n0\nSEQEND\n8\n0\n0\nENDSEC\n0\nEOF\n"});
  ASSERT_TRUE(session.loadModule());
  ASSERT_EQ(session.modelSpace().length(), 1u);
  const OdDbObjectId old = session.modelSpace()[0];
  const OdDbObjectId tool = circle(session.db(), 0, 0, 1);
  EXPECT_THAT(session.run(replies(old, {tool})),
              HasSubstr("\nThe type of the first choosed entity cann't be operated!"));
  EXPECT_FALSE(tool.isErased());

  // Closed there and back along one line: no area, no region.
  const OdDbObjectId flat = polyline(session.db(), {{0, 0, 0}, {2, 0, 0}});
  const std::string out = session.run(replies(flat, {tool}));
  EXPECT_THAT(out, HasSubstr("[Boolean operation] closed\nFailed in converting this  entity into region!"));
  EXPECT_EQ(session.modelSpace().length(), 3u);
}
