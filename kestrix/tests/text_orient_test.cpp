// torient in the real host with the real module: the reading rule, turning
// about the middle of the box (boxes from the text measure: 0.7 x height per
// character), attributes of references, ANGBASE, tilted texts, Esc and U.
#include <gmock/gmock.h>

#include "kestrix_support.h"

using testing::HasSubstr;

namespace {

constexpr double kDegree = OdaPI / 180;

double rotationOf(const OdDbObjectId& id) { return txt::openText(id)->rotation(); }

}  // namespace

TEST(TextOrient, AnglesThatReadUpsideDownTurnHalfATurnAndTextsStayInPlace) {
  struct Case {
    std::string answer;
    double expectedDegrees;
  };
  // (-90, 90] is kept; anything else turns by 180.
  const std::vector<Case> cases{{"90", 90}, {"100", 280}, {"270", 90}, {"-90", 90}, {"180", 0}, {"45", 45}};
  for (const Case& c : cases) {
    HostSession session;
    ASSERT_TRUE(session.loadModule());
    const OdDbObjectId id = txt::text(session.db(), L"ab", 0, 0, 30 * kDegree);
    session.run({"torient", "ALL", "", c.answer});
    EXPECT_NEAR(rotationOf(id), c.expectedDegrees * kDegree, 1e-9) << c.answer;
  }
  // "ab" is 3.5 by 2.5 with its middle at (1.75, 1.25); read upwards it
  // turns about that point, so its start moves to (1.75 + 1.25, 1.25 - 1.75).
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId id = txt::text(session.db(), L"ab", 0, 0);
  session.run({"torient", "ALL", "", "90"});
  const OdGePoint3d start = txt::openText(id)->position();
  EXPECT_NEAR(start.x, 3.0, 1e-9);
  EXPECT_NEAR(start.y, -0.5, 1e-9);
  // A fitted text's baseline, 10 long, turns with it and stays 10 long.
  const OdDbObjectId fitted = txt::text(session.db(), L"ab", 0, 20);
  {
    OdDbTextPtr text = OdDbText::cast(fitted.openObject(OdDb::kForWrite).get());
    text->setHorizontalMode(OdDb::kTextFit);
    text->setAlignmentPoint({10, 20, 0});
  }
  session.run({"torient", "ALL", "", "90"});
  const OdDbTextPtr text = txt::openText(fitted);
  EXPECT_NEAR(text->alignmentPoint().distanceTo(text->position()), 10, 1e-9);
  EXPECT_NEAR(text->alignmentPoint().x, text->position().x, 1e-9);
}

TEST(TextOrient, AttributesTurnButReferencesKeepTheirRotationAndAngleBaseCounts) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  att::reference(session.db(), L"B", 50, {{L"V", L"abcd"}});
  const OdDbObjectId mtext = txt::mtext(session.db(), L"m", 0, 20);
  OdDbObjectIdArray attributes;
  for (const OdDbObjectId& ref : session.modelSpace()) {
    OdDbBlockReferencePtr reference = OdDbBlockReference::cast(ref.openObject(OdDb::kForWrite).get());
    if (reference.isNull()) continue;
    reference->setRotation(30 * kDegree);
    attributes = reference->attributeIds();
  }
  ASSERT_EQ(attributes.size(), 1u);
  ryhost::SysVarValue base;
  base.type = RTREAL;
  base.r = 60 * kDegree;
  ASSERT_EQ(session.host().sysvars().set(L"ANGBASE", base), RTNORM);
  const std::string out = session.run({"torient", "ALL", "", "10"});
  EXPECT_THAT(out, HasSubstr("\n2 objects turned."));
  EXPECT_NEAR(rotationOf(attributes[0]), 70 * kDegree, 1e-9);
  EXPECT_NEAR(OdDbMText::cast(mtext.openObject().get())->rotation(), 70 * kDegree, 1e-9);
  for (const OdDbObjectId& ref : session.modelSpace()) {
    OdDbBlockReferencePtr reference = OdDbBlockReference::cast(ref.openObject().get());
    if (!reference.isNull()) EXPECT_NEAR(reference->rotation(), 30 * kDegree, 1e-9);
  }
  session.run({"U"});
  EXPECT_NEAR(rotationOf(attributes[0]), 0, 1e-9);
}

TEST(TextOrient, TiltedTextsAreLeftOutAndEscChangesNothing) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId tilted = txt::text(session.db(), L"side", 0, 0);
  OdDbText::cast(tilted.openObject(OdDb::kForWrite).get())->setNormal(OdGeVector3d::kXAxis);
  EXPECT_THAT(
      session.run({"torient", "ALL", ""}),
      HasSubstr("\n1 objects are not parallel to the current UCS and are left out.\nNo object is left to change."));
  const OdDbObjectId flat = txt::text(session.db(), L"flat", 0, 10, 20 * kDegree);
  session.host().sysvars().setInt(L"CMDECHO", 1);
  const std::string out = session.run({"torient", "ALL", "", "^C"});
  EXPECT_THAT(out, HasSubstr("1 objects are not parallel"));
  EXPECT_NEAR(rotationOf(flat), 20 * kDegree, 1e-9);
  EXPECT_NEAR(rotationOf(tilted), 0, 1e-9);
  EXPECT_EQ(txt::shortVar(session, L"CMDECHO"), 1);
}
