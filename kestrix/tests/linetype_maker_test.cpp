// mkltype in the real host with the real module: the written file byte for
// byte, the linetype loaded (and its dashes as an independent reader sees
// the saved drawing), refusals, the optimising pass, redefinition in place,
// cancel, the coordinate system put back, and one U removing the linetype.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>

#include "DbPoint.h"
#include "DbText.h"
#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr double kPi = 3.14159265358979323846;

// The definition line of the tests: from (10, 5) at 30 degrees.
const double kAngle = kPi / 6;
OdGePoint3d along(double x, double y = 0) {
  return OdGePoint3d(10 + x * std::cos(kAngle) - y * std::sin(kAngle), 5 + x * std::sin(kAngle) + y * std::cos(kAngle), 0);
}
std::string pointReply(const OdGePoint3d& p) {
  char text[96];
  std::snprintf(text, sizeof text, "%.15g,%.15g", p.x, p.y);
  return text;
}

void dash(OdDbDatabase* db, double from, double to) {
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  OdSmartPtr<OdDbLine> line = OdDbLine::createObject();
  line->setStartPoint(along(from));
  line->setEndPoint(along(to));
  line->setDatabaseDefaults(db);
  space->appendOdDbEntity(line.get());
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", value);
  return text;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

class LinetypeMaker : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session.loadModule());
    std::remove(path.c_str());
  }
  // File, name, description, the definition line of the given length, every object.
  std::string make(const std::string& name, double length, const std::string& description = "drawn") {
    return session.run({"mkltype", path, name, description, pointReply(along(0)), pointReply(along(length)), "ALL", ""});
  }
  bool hasLinetype(const wchar_t* name) { return !session.db()->findRecord(OdDbNameTable::kLinetype, name).isNull(); }

  HostSession session;
  std::string path = att::tempPath("made.lin");
};

}  // namespace

TEST_F(LinetypeMaker, DashesAndTheSpaceBetweenThemAlongATurnedLine) {
  dash(session.db(), 0, 1);
  dash(session.db(), 1.25, 1.75);
  const OdGeMatrix3d ucsBefore = session.host().current()->ucs();
  const std::string out = make("DEMO", 1.75, "two dashes");
  EXPECT_EQ(readFile(path), "*DEMO,two dashes\nA,1,-0.25,0.5\n");
  EXPECT_THAT(out, HasSubstr("\n线型DEMO has been created and loaded."));
  EXPECT_TRUE(session.host().current()->ucs() == ucsBefore);
  ASSERT_TRUE(hasLinetype(L"DEMO"));

  // The saved drawing as an independent reader sees it.
  const std::string dxf = att::tempPath("made.dxf");
  odDxfWriteFile(session.db(), OdString(dxf));
  const std::string command = "/usr/bin/python3 -c \"import ezdxf,sys; d=ezdxf.readfile(sys.argv[1]); "
                              "a=d.audit(); l=d.linetypes.get('DEMO'); print(len(a.errors), l.dxf.description, "
                              "[round(t.value, 9) for t in l.pattern_tags.tags if t.code in (40, 49)])\" '" + dxf + "'";
  std::string read;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe)) read += buffer;
    pclose(pipe);
  }
  EXPECT_EQ(read, "0 two dashes [1.75, 1.0, -0.25, 0.5]\n");

  // One U removes the linetype; the file stays.
  session.run({"U"});
  EXPECT_FALSE(hasLinetype(L"DEMO"));
  EXPECT_EQ(readFile(path), "*DEMO,two dashes\nA,1,-0.25,0.5\n");
}

TEST_F(LinetypeMaker, LengthsAreInUnitsOfTheLinetypeScale) {
  session.run({"LTSCALE", "2"});
  dash(session.db(), 0, 1);
  dash(session.db(), 1.25, 1.75);
  make("HALF", 1.75);
  EXPECT_EQ(readFile(path), "*HALF,drawn\nA,0.5,-0.125,0.25\n");
}

TEST_F(LinetypeMaker, ContinuousAndTooManySegmentsAreRefusedWithoutWriting) {
  dash(session.db(), 0, 2);
  EXPECT_THAT(make("SOLID", 2), HasSubstr("\n*无效* 那是连续线型!"));
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(hasLinetype(L"SOLID"));

  // Thirteen dashes with gaps between: nothing neighbouring to merge.
  for (int i = 1; i < 13; ++i) dash(session.db(), 2 + 0.5 * i, 2 + 0.5 * i + 0.25);
  const std::string out = make("MANY", 8.25);
  EXPECT_THAT(out, HasSubstr("\nOptimising segments...\n*无效* 线型定义中包含太多的线段。"));
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(LinetypeMaker, TheOptimisingPassMergesTouchingDashesAndGaps) {
  // Six touching dashes, a gap, a dot, a gap, six touching dashes, a gap: 16 elements.
  for (int i = 0; i < 6; ++i) dash(session.db(), 0.1 * i, 0.1 * (i + 1));
  for (int i = 0; i < 6; ++i) dash(session.db(), 1 + 0.1 * i, 1 + 0.1 * (i + 1));
  {
    OdDbBlockTableRecordPtr space =
        OdDbBlockTableRecord::cast(session.db()->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
    OdSmartPtr<OdDbPoint> point = OdDbPoint::createObject();
    point->setPosition(along(0.8));
    point->setDatabaseDefaults(session.db());
    space->appendOdDbEntity(point.get());
  }
  const std::string out = make("MERGED", 2);
  EXPECT_THAT(out, HasSubstr("Optimising segments..."));
  EXPECT_EQ(readFile(path), "*MERGED,drawn\nA,0.6,-0.2,0,-0.2,0.6,-0.4\n");
}

TEST_F(LinetypeMaker, TextsAreElementsAndObjectsBeyondTheLineAreCounted) {
  dash(session.db(), 0, 0.5);
  dash(session.db(), 1, 1.5);
  dash(session.db(), 3, 4);  // beyond the end point
  {
    OdDbBlockTableRecordPtr space =
        OdDbBlockTableRecord::cast(session.db()->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
    OdSmartPtr<OdDbText> text = OdDbText::createObject();
    text->setDatabaseDefaults(session.db());
    text->setPosition(along(0.6, -0.05));
    text->setHeight(0.1);
    text->setRotation(kAngle);
    text->setTextString(L"GAS");
    space->appendOdDbEntity(text.get());
  }
  const std::string out = make("GASLINE", 2);
  EXPECT_THAT(out, HasSubstr("\n忽略直线定义起点/端点之外的1对象。"));
  EXPECT_EQ(readFile(path), "*GASLINE,drawn\nA,0.5,[\"GAS\",Standard,S=0.1,R=0,X=0.1,Y=-0.05],-0.5,0.5,-0.5\n");
  EXPECT_TRUE(hasLinetype(L"GASLINE"));
}

TEST_F(LinetypeMaker, BadNamesAreAskedAgainAndCancelPutsEverythingBack) {
  dash(session.db(), 0, 1);
  const OdGeMatrix3d ucsBefore = session.host().current()->ucs();
  std::string out = session.run({"mkltype", path, "A,B", "A=B", "GOOD", "", pointReply(along(0)),
                                 pointReply(along(0)), pointReply(along(2)), "^C"});
  EXPECT_THAT(out, HasSubstr("\n输入线型名称:A,B\n*无效线型名称*\n输入线型名称:A=B\n*无效线型名称*\n输入线型名称:"));
  EXPECT_THAT(out, HasSubstr("\n*无效*点之间的距离必须非零!"));
  EXPECT_THAT(out, HasSubstr("函数被取消!\n"));
  EXPECT_TRUE(session.host().current()->ucs() == ucsBefore);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(hasLinetype(L"GOOD"));
}

TEST_F(LinetypeMaker, ARedefinitionIsAskedForAndReplacesTheOldLinesInPlace) {
  att::writeBytes(path, ";; kept\r\n*FIRST,first\r\nA,1,-1\r\n*OTHER,other\r\nA,2,-2\r\n");
  dash(session.db(), 0, 1);
  session.run({"mkltype", path, "Y", "FIRST", "first", pointReply(along(0)), pointReply(along(1.5)), "ALL", ""});
  ASSERT_TRUE(hasLinetype(L"FIRST"));
  EXPECT_EQ(readFile(path), ";; kept\r\n*FIRST,first\r\nA,1,-0.5\r\n*OTHER,other\r\nA,2,-2\r\n");

  std::string out = session.run({"mkltype", path, "Y", "first", "N"});
  EXPECT_THAT(out, HasSubstr("直线定义已经存在。覆盖它吗? [是(Y)/否(N)] <否>:N\n操作被忽略!\n"));

  out = session.run({"mkltype", path, "Y", "first", "Y", "again", pointReply(along(0)), pointReply(along(1.25)),
                     "ALL", ""});
  EXPECT_THAT(out, HasSubstr("\n线型first has been redefined and loaded."));
  EXPECT_EQ(readFile(path), ";; kept\r\n*first,again\r\nA,1,-0.25\r\n*OTHER,other\r\nA,2,-2\r\n");
  OdDbObjectPtr record = session.db()->findRecord(OdDbNameTable::kLinetype, L"FIRST").openObject();
  EXPECT_EQ(static_cast<OdDbLinetypeTableRecord*>(record.get())->comments(), L"again");
}

TEST(LinetypeMakerShapes, AShapeIsWrittenWithTheShapeFileOfTheDrawing) {
  // Shapes and their file come from a drawing: the drawing model has no shape class of its own.
  const OdGePoint3d at = along(0.6, 0.1);
  HostSession session(DxfText{"0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nSTYLE\n70\n1\n0\nSTYLE\n2\nSHAPES\n70\n1\n40\n0\n"
                              "41\n1\n50\n0\n71\n0\n42\n0.2\n3\nltypeshp.shx\n4\n\n0\nENDTAB\n0\nENDSEC\n"
                              "0\nSECTION\n2\nENTITIES\n0\nSHAPE\n8\n0\n10\n" + number(at.x) + "\n20\n" +
                              number(at.y) + "\n30\n0\n40\n0.2\n2\nTRACK1\n50\n45\n0\nENDSEC\n0\nEOF\n"});
  ASSERT_TRUE(session.loadModule());
  dash(session.db(), 0, 0.5);
  const std::string path = att::tempPath("shape.lin");
  std::remove(path.c_str());
  const std::string out =
      session.run({"mkltype", path, "TRACK", "", pointReply(along(0)), pointReply(along(1)), "ALL", ""});
  // Turned 45 degrees in the drawing, 15 from the definition line.
  EXPECT_EQ(readFile(path), "*TRACK,\nA,0.5,[TRACK1,ltypeshp.shx,S=0.2,R=15,X=0.1,Y=0.1],-0.5\n");
  // The host's linetype command loads text elements only: the shape's linetype is written but not loaded.
  EXPECT_THAT(out, HasSubstr("\nThe linetype could not be created."));
}
