// textfit in the real host with the real module: the width factor that
// makes the box (0.7 x height x factor per character) run from the start
// to the end point, a new start point, rotated texts, the implied
// selection, refusals, and the variables put back on every way out.
#include <gmock/gmock.h>

#include "core/SelectionSets.h"
#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;

namespace {

double widthOf(const OdDbObjectId& id) { return txt::openText(id)->widthFactor(); }

void setReal(HostSession& session, const wchar_t* name, double value) {
  ryhost::SysVarValue v;
  v.type = RTREAL;
  v.r = value;
  ASSERT_EQ(session.host().sysvars().set(name, v), RTNORM);
}

}  // namespace

TEST(TextFit, TheBoxRunsFromTheStartToTheEndPointAlongTheBaseline) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  // "hello. world": 12 characters, 21 wide at height 2.5 and factor 1.
  const OdDbObjectId id = txt::text(session.db(), L"hello. world", 0, 0);
  session.run({"textfit", "1,1", "42,3"});  // 42 along the baseline, the 3 across it does not count
  EXPECT_NEAR(widthOf(id), 2.0, 1e-12);
  // A new start point moves the text; 10 along from it: factor 2 x 10 / 42.
  session.run({"textfit", "1,1", "S", "10,0", "20,5"});
  EXPECT_NEAR(widthOf(id), 20.0 / 42.0, 1e-12);
  const OdGePoint3d start = txt::openText(id)->position();
  EXPECT_NEAR(start.x, 10, 1e-12);
  EXPECT_NEAR(start.y, 0, 1e-12);
  session.run({"U"});
  EXPECT_NEAR(widthOf(id), 2.0, 1e-12);

  // A right-justified text read upwards: its box starts 3.5 below the
  // alignment point at (50, 10); stretched to (50, 13.5), the factor is 1.
  const OdDbObjectId up = txt::text(session.db(), L"ab", 50, 0, OdaPI / 2);
  {
    OdDbTextPtr text = OdDbText::cast(up.openObject(OdDb::kForWrite).get());
    text->setHorizontalMode(OdDb::kTextRight);
    text->setAlignmentPoint({50, 10, 0});
  }
  session.run({"textfit", "50,8", "50,17"});  // from (50, 6.5): 10.5 long, factor 3
  EXPECT_NEAR(widthOf(up), 3.0, 1e-12);
  const OdGePoint3d alignment = txt::openText(up)->alignmentPoint();
  EXPECT_NEAR(alignment.x, 50, 1e-12);
  EXPECT_NEAR(alignment.y, 17, 1e-12);
}

TEST(TextFit, TheImpliedSelectionIsUsedAndOtherObjectsAreRefused) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId id = txt::text(session.db(), L"ab", 0, 0);  // 3.5 wide
  txt::mtext(session.db(), L"multi", 0, 20);
  const OdDbObjectId locked = txt::text(session.db(), L"locked", 0, 40, 0, att::layer(session.db(), L"L", 4));
  session.host().current()->selections().pickFirst() = {id};
  const std::string out = session.run({"textfit", "7,0"});
  EXPECT_THAT(out, Not(HasSubstr("请选择要编辑的文字")));
  EXPECT_NEAR(widthOf(id), 2.0, 1e-12);

  EXPECT_THAT(session.run({"textfit", "1,21"}), HasSubstr("\n所选对象非文字。\n"));
  EXPECT_THAT(session.run({"textfit", "1,41"}), HasSubstr("\n所选对象非文字。\n"));
  EXPECT_THAT(session.run({"textfit", "500,500"}), HasSubstr("\n未选中对象。\n"));
  EXPECT_THAT(session.run({"textfit", "1,1", "-5,0"}), HasSubstr("The end point must lie beyond the start point."));
  EXPECT_NEAR(widthOf(id), 2.0, 1e-12);
  EXPECT_NEAR(widthOf(locked), 1.0, 1e-12);
}

TEST(TextFit, EscAtEveryPromptLeavesTextAndVariablesAsTheyWere) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId id = txt::text(session.db(), L"abc", 0, 0, 0.5);
  session.host().sysvars().setInt(L"CMDECHO", 1);
  session.host().sysvars().setInt(L"ORTHOMODE", 0);
  setReal(session, L"SNAPANG", 0.25);
  for (const std::vector<std::string>& replies :
       std::vector<std::vector<std::string>>{{"textfit", "^C"},
                                             {"textfit", "1,1", "^C"},
                                             {"textfit", "1,1", "S", "^C"},
                                             {"textfit", "1,1", "S", "2,2", "^C"}}) {
    session.run(replies);
    EXPECT_NEAR(widthOf(id), 1.0, 1e-12);
    EXPECT_EQ(txt::shortVar(session, L"ORTHOMODE"), 0);
    EXPECT_NEAR(session.host().sysvars().getReal(L"SNAPANG"), 0.25, 1e-12);
    EXPECT_EQ(txt::shortVar(session, L"CMDECHO"), 1);
  }
  session.run({"textfit", "1,1", "10,0"});
  EXPECT_EQ(txt::shortVar(session, L"ORTHOMODE"), 0);
  EXPECT_NEAR(session.host().sysvars().getReal(L"SNAPANG"), 0.25, 1e-12);
}
