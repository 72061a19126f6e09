// tcircle in the real host with the real module: circles, slots and
// rectangles around texts (boxes from the text measure: 0.7 x height per
// character, one height tall; gap = factor x height), read back by an
// independent reader (python3-ezdxf) and checked against values worked out
// by hand; Constant in width, height ("Heigh" and "H") and both; the exact
// messages, tilted texts, Esc and one U.
#include <gmock/gmock.h>

#include <cstdio>
#include <sstream>

#include "kestrix_support.h"

using testing::HasSubstr;

namespace {

// The frames of the drawing as ezdxf reads them from the saved file, one a
// line: "CIRCLE cx cy r" or "LWPOLYLINE x y bulge ..." (closed polylines only),
// then "AUDIT <errors>".
std::string framesReadByEzdxf(HostSession& session) {
  const std::string path = att::tempPath("tcircle.dxf");
  odDxfWriteFile(session.db(), OdString(path.c_str()));
  const std::string script =
      "import ezdxf\n"
      "d = ezdxf.readfile('" +
      path +
      "')\n"
      "for e in d.modelspace():\n"
      "    if e.dxftype() == 'CIRCLE': print('CIRCLE %.4f %.4f %.4f' % (e.dxf.center.x, e.dxf.center.y, "
      "e.dxf.radius))\n"
      "    if e.dxftype() == 'LWPOLYLINE' and e.closed:\n"
      "        print('LWPOLYLINE ' + ' '.join('%.4f %.4f %.4f' % (x, y, b) for x, y, b in e.get_points('xyb')))\n"
      "print('AUDIT %d' % len(d.audit().errors))\n";
  const std::string scriptPath = att::tempPath("frames.py");
  att::writeBytes(scriptPath, script);
  std::string out;
  FILE* pipe = popen(("/usr/bin/python3 " + scriptPath).c_str(), "r");
  if (!pipe) return out;
  char buffer[512];
  while (fgets(buffer, sizeof buffer, pipe)) out += buffer;
  pclose(pipe);
  return out;
}

}  // namespace

TEST(TextCircle, VariableFramesFitEachTextAsAnIndependentReaderSeesThem) {
  // "ab" at (0,0), height 2.5: 3.5 x 2.5, middle (1.75, 1.25); factor 0.2: gap 0.5.
  for (const auto& [shape, expected] : std::vector<std::pair<std::string, std::string>>{
           // radius = half the diagonal sqrt(3.5^2 + 2.5^2) / 2 = 2.1506 plus the gap
           {"C", "CIRCLE 1.7500 1.2500 2.6506\n"},
           {"R",
            "LWPOLYLINE -0.5000 -0.5000 0.0000 4.0000 -0.5000 0.0000 4.0000 3.0000 0.0000 -0.5000 3.0000 0.0000\n"},
           // the straight sides span the box and its gaps; half circles of diameter 3.5 close the ends
           {"S",
            "LWPOLYLINE -0.5000 -0.5000 0.0000 4.0000 -0.5000 1.0000 4.0000 3.0000 0.0000 -0.5000 3.0000 1.0000\n"}}) {
    HostSession session;
    ASSERT_TRUE(session.loadModule());
    txt::text(session.db(), L"ab", 0, 0);
    const std::string out = session.run({"tcircle", "ALL", "", "0.2", shape, "V"});
    EXPECT_EQ(framesReadByEzdxf(session), expected + "AUDIT 0\n") << shape;
    EXPECT_THAT(out, HasSubstr("创建完成。\n"));
  }
}

TEST(TextCircle, ConstantFramesTakeTheLargestSizeInTheKeptDimension) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  // "ab": 3.5 x 2.5, gap 0.5 -> 4.5 x 3.5 around (1.75, 1.25).
  // "abcd" at (0, 10), height 5: 14 x 5, gap 1 -> 16 x 7 around (7, 12.5).
  txt::text(session.db(), L"ab", 0, 0);
  const OdDbObjectId big = txt::text(session.db(), L"abcd", 0, 10);
  OdDbText::cast(big.openObject(OdDb::kForWrite).get())->setHeight(5);
  EXPECT_THAT(session.run({"tcircle", "ALL", "", "0.2", "R", "C", "Heigh"}),
              HasSubstr("\n选择包围文本的对象[圆(C)/圆槽(S)/矩形(R)]<"));
  session.run({"tcircle", "ALL", "", "", "", "", "W"});  // remembered answers: Rectangle, Constant
  const std::string withSlots = session.run({"tcircle", "ALL", "", "", "S", "", "H"});
  EXPECT_THAT(withSlots, HasSubstr("\n用固定或可变尺寸创建圆槽[固定(C)/可变(V)]<Constant>:"));
  EXPECT_THAT(withSlots, HasSubstr("保持圆槽的[宽度(W)/高度(H)/宽和高(B)]<Width>:H"));
  EXPECT_THAT(withSlots, HasSubstr("正在创建圆槽。。。\n2个圆槽被创建。\n创建完成。\n"));
  session.run({"tcircle", "ALL", "", "", "C", "C"});
  const std::string frames = framesReadByEzdxf(session);
  // Heigh: "ab" 7 tall, its own 4.5 wide.
  EXPECT_THAT(
      frames,
      HasSubstr(
          "LWPOLYLINE -0.5000 -2.2500 0.0000 4.0000 -2.2500 0.0000 4.0000 4.7500 0.0000 -0.5000 4.7500 0.0000\n"));
  // Width: "ab" 16 wide, its own 3.5 tall.
  EXPECT_THAT(
      frames,
      HasSubstr(
          "LWPOLYLINE -6.2500 -0.5000 0.0000 9.7500 -0.5000 0.0000 9.7500 3.0000 0.0000 -6.2500 3.0000 0.0000\n"));
  // Slot kept in height: 7 tall with half circles of radius 3.5, straight part its own 4.5.
  EXPECT_THAT(
      frames,
      HasSubstr(
          "LWPOLYLINE -0.5000 -2.2500 0.0000 4.0000 -2.2500 1.0000 4.0000 4.7500 0.0000 -0.5000 4.7500 1.0000\n"));
  // Constant circles: the radius of the largest, sqrt(14^2 + 5^2) / 2 + 1 = 8.4330.
  EXPECT_THAT(frames, HasSubstr("CIRCLE 1.7500 1.2500 8.4330\n"));
  EXPECT_THAT(frames, HasSubstr("CIRCLE 7.0000 12.5000 8.4330\n"));
  EXPECT_THAT(frames, HasSubstr("AUDIT 0\n"));
  // One U takes back the last command's frames only.
  const size_t before = session.modelSpace().size();
  session.run({"U"});
  EXPECT_EQ(session.modelSpace().size(), before - 2);
}

TEST(TextCircle, TiltedTextsNothingSelectedAndEscDrawNothing) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId tilted = txt::text(session.db(), L"tilted", 0, 0);
  OdDbText::cast(tilted.openObject(OdDb::kForWrite).get())->setNormal(OdGeVector3d::kYAxis);
  EXPECT_THAT(session.run({"tcircle", "ALL", ""}),
              HasSubstr("object was not parallel to the current UCS.\nNo valid objects selected.\n"));
  EXPECT_THAT(session.run({"tcircle", "500,500", "510,510", ""}), HasSubstr("\n没有正确的实体被选择."));
  txt::text(session.db(), L"flat", 0, 10);
  session.host().sysvars().setInt(L"CMDECHO", 1);
  for (const std::vector<std::string>& replies :
       std::vector<std::vector<std::string>>{{"tcircle", "^C"},
                                             {"tcircle", "ALL", "", "^C"},
                                             {"tcircle", "ALL", "", "1", "^C"},
                                             {"tcircle", "ALL", "", "1", "R", "^C"},
                                             {"tcircle", "ALL", "", "1", "R", "C", "^C"}}) {
    session.run(replies);
    EXPECT_EQ(session.modelSpace().size(), 2u);
    EXPECT_EQ(txt::shortVar(session, L"CMDECHO"), 1);
  }
}
