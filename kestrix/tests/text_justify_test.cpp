// tjust in the real host with the real module: the host's JUSTIFYTEXT runs
// with the driver entry in the process dictionary and without it afterwards,
// texts keep their place (alignment points worked out from the text measure:
// 0.7 x height per character), Start, Esc and one U.
#include <gmock/gmock.h>

#include "OdEdCommandStack.h"
#include "RxDictionary.h"
#include "kestrix_support.h"

using testing::HasSubstr;

namespace {

// What the process dictionary said about JUSTIFYTEXT's driver when a command started.
struct DriverProbe : OdEditorReactor {
  DriverProbe() { odedEditor()->addReactor(this); }
  ~DriverProbe() override { odedEditor()->removeReactor(this); }
  void commandWillStart(const OdString& name) override {
    if (name.iCompare(L"JUSTIFYTEXT") == 0)
      driver = odrxSysRegistryString(L"RYAD_CMDS_JUSTIFYTEXT_TYPE_DICT", L"RYMD_JUSTIFYTEXT_TYPE").toUtf8();
  }
  std::string driver = "not run";
};

void expectPoint(const OdGePoint3d& actual, double x, double y) {
  EXPECT_NEAR(actual.x, x, 1e-9);
  EXPECT_NEAR(actual.y, y, 1e-9);
}

}  // namespace

TEST(TextJustify, TopRightKeepsTextsInPlaceAndTheDriverEntryLivesOnlyForTheRun) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId plain = txt::text(session.db(), L"hello. world", 0, 0);      // 12 characters: 21 wide
  const OdDbObjectId turned = txt::text(session.db(), L"ab", 10, 10, OdaPI / 2);  // 3.5 wide, upwards
  const OdDbObjectId locked = txt::text(session.db(), L"locked", 0, 30, 0, att::layer(session.db(), L"L", 4));
  att::reference(session.db(), L"B", 50, {{L"V", L"abcd"}});  // attribute at (50, 0.5), height 0.2: 0.56 wide
  DriverProbe probe;
  const std::string out = session.run({"tjust", "ALL", "", "TR"});
  EXPECT_EQ(probe.driver, "TJUST");
  EXPECT_FALSE(odrxSysRegistry()->has(L"RYAD_CMDS_JUSTIFYTEXT_TYPE_DICT"));
  EXPECT_THAT(out, HasSubstr("\n 3 objects justified."));

  OdDbTextPtr text = txt::openText(plain);
  EXPECT_EQ(text->horizontalMode(), OdDb::kTextRight);
  EXPECT_EQ(text->verticalMode(), OdDb::kTextTop);
  expectPoint(text->alignmentPoint(), 21.0, 2.5);
  expectPoint(text->position(), 0, 0);
  // Turned a quarter: the box runs up from (10, 10), its top to the left.
  expectPoint(txt::openText(turned)->alignmentPoint(), 10 - 2.5, 13.5);
  EXPECT_TRUE(txt::openText(locked)->isDefaultAlignment());
  for (const OdDbObjectId& id : session.modelSpace()) {
    OdDbBlockReferencePtr reference = OdDbBlockReference::cast(id.openObject().get());
    if (reference.isNull()) continue;
    OdDbTextPtr attribute = OdDbText::cast(reference->attributeIds()[0].openObject().get());
    expectPoint(attribute->alignmentPoint(), 50.56, 0.7);
  }
  text.release();

  // Start puts them back to the left baseline; one U undoes only that.
  session.run({"tjust", "ALL", "", "_Start"});
  EXPECT_TRUE(txt::openText(plain)->isDefaultAlignment());
  expectPoint(txt::openText(plain)->position(), 0, 0);
  session.run({"U"});
  EXPECT_EQ(txt::openText(plain)->horizontalMode(), OdDb::kTextRight);
  EXPECT_EQ(txt::openText(turned)->horizontalMode(), OdDb::kTextRight);
}

TEST(TextJustify, EscOrAnEmptyAnswerChangesNothingAndStartBelongsToTheDriverOnly) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId id = txt::text(session.db(), L"abc", 0, 0);
  session.host().sysvars().setInt(L"CMDECHO", 1);
  session.run({"tjust", "ALL", "", "^C"});
  session.run({"tjust", "ALL", "", ""});
  EXPECT_TRUE(txt::openText(id)->isDefaultAlignment());
  EXPECT_EQ(txt::shortVar(session, L"CMDECHO"), 1);
  EXPECT_FALSE(odrxSysRegistry()->has(L"RYAD_CMDS_JUSTIFYTEXT_TYPE_DICT"));
  // Run on its own, JUSTIFYTEXT knows no Start.
  EXPECT_THAT(session.run({"JUSTIFYTEXT", "ALL", "", "Start", "^C"}), HasSubstr("Invalid option keyword."));
}
