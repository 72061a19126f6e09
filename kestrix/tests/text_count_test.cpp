// tcount in the real host with the real module: the three orders (equal
// coordinates keep the selection order), the placements, remembered
// answers, bad input, DIMZIN and cmdecho on every way out, tilted texts and U.
#include <gmock/gmock.h>

#include "kestrix_support.h"

using testing::HasSubstr;

TEST(TextCount, OrdersAndPlacementsNumberTheTextsAsWorkedOutByHand) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  // Selection order a, b, c, d, e; X: e(0) b(10) d(10) c(20) a(30); Y from the top: d(9) b(5) a(0) e(0) c(-5).
  const OdDbObjectId a = txt::text(session.db(), L"a", 30, 0);
  const OdDbObjectId b = txt::text(session.db(), L"b", 10, 5);
  const OdDbObjectId c = txt::text(session.db(), L"c", 20, -5);
  const OdDbObjectId d = txt::text(session.db(), L"d", 10, 9);
  const OdDbObjectId e = txt::mtext(session.db(), L"e", 0, 0);
  EXPECT_THAT(session.run({"tcount", "ALL", "", "X", "5,10", "Suffix"}), HasSubstr("\n5 objects modified."));
  EXPECT_EQ(txt::stringOf(e), L"e\\P5");
  EXPECT_EQ(txt::stringOf(b), L"b 15");
  EXPECT_EQ(txt::stringOf(d), L"d 25");
  EXPECT_EQ(txt::stringOf(c), L"c 35");
  EXPECT_EQ(txt::stringOf(a), L"a 45");

  session.run({"tcount", "ALL", "", "Y", "1,1", "Overwrite"});
  EXPECT_EQ(txt::stringOf(d), L"1");
  EXPECT_EQ(txt::stringOf(b), L"2");
  EXPECT_EQ(txt::stringOf(a), L"3");
  EXPECT_EQ(txt::stringOf(e), L"4");
  EXPECT_EQ(txt::stringOf(c), L"5");

  // Selection order, a fractional start rounded for show, a downward step, the number in front.
  session.run({"tcount", "ALL", "", "S", "10,-2.5", "P"});
  EXPECT_EQ(txt::stringOf(a), L"10 3");
  EXPECT_EQ(txt::stringOf(b), L"8 2");  // 7.5 shows as 8
  EXPECT_EQ(txt::stringOf(c), L"5 5");
  // The answers are remembered and offered; Enter takes them.
  const std::string out = session.run({"tcount", "ALL", "", "", "", "F", "5"});
  EXPECT_THAT(out, HasSubstr("<Select-order>: "));
  EXPECT_THAT(out, HasSubstr("<10,-2.5>:"));
  EXPECT_THAT(out, HasSubstr("<Prefix>: "));
  EXPECT_THAT(out, HasSubstr("\n1 objects modified."));  // only c holds a "5" (now "5 5")
  EXPECT_EQ(txt::stringOf(c), L"10 10");
  // One U undoes the last numbering only.
  session.run({"U"});
  EXPECT_EQ(txt::stringOf(c), L"5 5");
}

TEST(TextCount, BadInputEscAndTiltedTextsLeaveTextsAndVariablesAsTheyWere) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId flat = txt::text(session.db(), L"flat", 0, 0);
  const OdDbObjectId tilted = txt::text(session.db(), L"tilted", 0, 10);
  OdDbText::cast(tilted.openObject(OdDb::kForWrite).get())->setNormal(OdGeVector3d(0, 1, 1));
  session.host().sysvars().setInt(L"CMDECHO", 1);
  session.host().sysvars().setInt(L"DIMZIN", 3);
  EXPECT_THAT(session.run({"tcount", "ALL", "", "X", "one,two"}),
              HasSubstr("1 objects are not parallel to the current UCS and are left out."));
  EXPECT_THAT(session.transcript(), HasSubstr("无效初始化!\n"));
  session.run({"tcount", "ALL", "", "X", "^C"});
  session.run({"tcount", "ALL", "", "X", "1,1", "^C"});
  session.run({"tcount", "ALL", "", "^C"});
  EXPECT_EQ(txt::stringOf(flat), L"flat");
  EXPECT_EQ(txt::stringOf(tilted), L"tilted");
  EXPECT_EQ(txt::shortVar(session, L"DIMZIN"), 3);
  EXPECT_EQ(txt::shortVar(session, L"CMDECHO"), 1);
  session.run({"tcount", "ALL", "", "X", "7,1", "O"});
  EXPECT_EQ(txt::stringOf(flat), L"7");
  EXPECT_EQ(txt::stringOf(tilted), L"tilted");
}
