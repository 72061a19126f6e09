// TEXT (DTEXT) and -ATTDEF: lines of text under each other, justification,
// styles, heights and rotations, attribute definition modes, Esc and U.
#include <gmock/gmock.h>

#include <cmath>

#include "host_test_support.h"

using namespace hosttest;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

OdDbObjectId addStyle(OdDbDatabase* db, const wchar_t* name, double fixedHeight) {
  OdDbTextStyleTableRecordPtr style = OdDbTextStyleTableRecord::createObject();
  style->setName(name);
  style->setTextSize(fixedHeight);
  style->setXScale(0.8);
  OdDbObjectPtr table = db->getTextStyleTableId().openObject(OdDb::kForWrite);
  return static_cast<OdDbSymbolTable*>(table.get())->add(style.get());
}

}  // namespace

TEST(DrawText, LinesGoUnderEachOtherAndEnterContinuesBelow) {
  HostSession session;
  const std::string shown =
      session.run({"TEXT", "1,1", "3", "90", "Room 1", "Kitchen", "",  // upwards, two lines
                   "DTEXT", "", "Pantry", ""});
  EXPECT_THAT(shown, HasSubstr("Specify start point of text or [Justify/Style]: "));
  EXPECT_THAT(shown, HasSubstr("Specify rotation angle of text <0>: "));
  auto texts = entitiesOf<OdDbText>(session);
  ASSERT_EQ(texts.size(), 3u);
  EXPECT_EQ(texts[0]->textString(), L"Room 1");
  EXPECT_EQ(texts[1]->textString(), L"Kitchen");
  EXPECT_DOUBLE_EQ(texts[0]->height(), 3);
  EXPECT_NEAR(texts[0]->rotation(), kPi / 2, 1e-12);
  // Rotated a quarter turn, "down" is towards +x; baselines are 5/3 heights apart.
  expectPoint(texts[0]->position(), 1, 1);
  expectPoint(texts[1]->position(), 6, 1);
  expectPoint(texts[2]->position(), 11, 1);
  EXPECT_DOUBLE_EQ(session.host().sysvars().getReal(L"TEXTSIZE"), 3);
  expectEscAndUndoLeaveNothing(session, {"TEXT", "0,0", "2", "0", "A B C", ""});
}

TEST(DrawText, JustificationsPlaceTheTextByTheirPoint) {
  HostSession session;
  session.run(
      {"TEXT", "J", "MC", "10,10", "2",     "0",     "ABC",   "",  // box 4.2 x 2 about (10,10)
       "TEXT", "J", "R",  "20,0",  "1",     "0",     "AB",    "",
       "TEXT", "J", "A",  "0,0",   "0,7",   "HELLO", "",             // the baseline gives height and angle
       "TEXT", "J", "F",  "0,0",   "3.5,0", "2",     "HELLO", ""});  // the height given, the width fitted
  auto texts = entitiesOf<OdDbText>(session);
  ASSERT_EQ(texts.size(), 4u);
  EXPECT_EQ(texts[0]->horizontalMode(), OdDb::kTextCenter);
  EXPECT_EQ(texts[0]->verticalMode(), OdDb::kTextVertMid);
  expectPoint(texts[0]->alignmentPoint(), 10, 10);
  expectPoint(texts[0]->position(), 10 - 2.1, 9);
  EXPECT_EQ(texts[1]->horizontalMode(), OdDb::kTextRight);
  expectPoint(texts[1]->position(), 20 - 1.4, 0);
  EXPECT_EQ(texts[2]->horizontalMode(), OdDb::kTextAlign);
  EXPECT_NEAR(texts[2]->height(), 2, 1e-9);
  EXPECT_NEAR(texts[2]->rotation(), kPi / 2, 1e-12);
  expectPoint(texts[2]->alignmentPoint(), 0, 7);
  EXPECT_EQ(texts[3]->horizontalMode(), OdDb::kTextFit);
  EXPECT_NEAR(texts[3]->widthFactor(), 0.5, 1e-9);
  EXPECT_DOUBLE_EQ(texts[3]->height(), 2);
}

TEST(DrawText, StyleByNameWithItsFixedHeight) {
  HostSession session;
  const OdDbObjectId fixed = addStyle(session.db(), L"Labels", 4);
  const std::string shown = session.run({"TEXT", "S", "?", "Nope", "labels", "0,0", "0", "Hall", ""});
  EXPECT_THAT(shown, HasSubstr("Cannot find text style \"Nope\"."));
  EXPECT_THAT(shown, HasSubstr("Current text style:  \"Labels\"  Text height:"));
  // A style with a height of its own asks for none.
  EXPECT_THAT(shown, Not(HasSubstr("Specify height")));
  auto texts = entitiesOf<OdDbText>(session);
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0]->textStyle(), fixed);
  EXPECT_DOUBLE_EQ(texts[0]->height(), 4);
  EXPECT_DOUBLE_EQ(texts[0]->widthFactor(), 0.8);
  EXPECT_EQ(session.db()->getTEXTSTYLE(), fixed);
}

TEST(DrawAttdef, ModesTagPromptDefaultAndPlacement) {
  HostSession session;
  const std::string shown =
      session.run({"-ATTDEF", "I", "P", "", "room no", "room_no", "Room number", "101", "5,5", "1.5", "0",  //
                   "-ATTDEF", "I", "P", "C", "", "AREA", "12 m2", ""});
  EXPECT_THAT(shown, HasSubstr("Invisible=Y Constant=N Verify=N Preset=Y Lock position=Y"));
  EXPECT_THAT(shown, HasSubstr("The tag name cannot contain spaces."));
  auto definitions = entitiesOf<OdDbAttributeDefinition>(session);
  ASSERT_EQ(definitions.size(), 2u);
  EXPECT_EQ(definitions[0]->tag(), L"ROOM_NO");
  EXPECT_EQ(definitions[0]->prompt(), L"Room number");
  EXPECT_EQ(definitions[0]->textString(), L"101");
  EXPECT_TRUE(definitions[0]->isInvisible());
  EXPECT_TRUE(definitions[0]->isPreset());
  EXPECT_FALSE(definitions[0]->isConstant());
  EXPECT_DOUBLE_EQ(definitions[0]->height(), 1.5);
  expectPoint(definitions[0]->position(), 5, 5);
  // The modes carry over to the next definition; Enter places it under the last one.
  EXPECT_TRUE(definitions[1]->isConstant());
  EXPECT_FALSE(definitions[1]->isInvisible());
  EXPECT_EQ(definitions[1]->textString(), L"12 m2");
  expectPoint(definitions[1]->position(), 5, 2.5);
  expectEscAndUndoLeaveNothing(session, {"-ATTDEF", "", "TAG", "Prompt", "V", "0,0", "1", "0"});
}
