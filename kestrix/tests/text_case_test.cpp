// tcase in the real host with the real module: the five rules on texts,
// multiline texts with format codes and attribute definitions, the
// remembered rule, locked layers, Esc, Cancel and one U.
#include <gmock/gmock.h>

#include "kestrix_support.h"

using testing::HasSubstr;

namespace {

// Runs tcase on everything with the radio button given (empty: the one checked).
std::string tcase(HostSession& session, const std::string& button) {
  std::vector<std::string> replies{"tcase", "ALL", ""};
  if (!button.empty()) replies.push_back(button);
  replies.push_back("OK");
  return session.run(replies);
}

}  // namespace

TEST(TextCase, EachRuleChangesOnlyLettersAndLeavesFormatCodesAlone) {
  struct Case {
    std::string button;
    std::wstring text, expected;
  };
  // Worked out by hand from the rules: codes (\H2.5; \fArial|b1; \P \{) and braces stay as written.
  const std::vector<Case> cases{
      {"3111", L"hello. world", L"Hello. World"},
      {"3111", L"  the END.  of it. 3.5 mm", L"  The end.  Of it. 3.5 mm"},
      {"3111", L"{\\H2.5;abc}", L"{\\H2.5;Abc}"},
      {"3111", L"one\\Ptwo", L"One\\Ptwo"},  // a new paragraph is not a new sentence
      {"3113", L"{\\fArial|b1;ABC} \\Pxy", L"{\\fArial|b1;abc} \\Pxy"},
      {"3115", L"{\\H2.5;abc}", L"{\\H2.5;ABC}"},
      {"3115", L"\\fArial|b1;x\\{y", L"\\fArial|b1;X\\{Y"},
      {"3117", L"the (old) MAN\\Pand sea", L"The (Old) Man\\PAnd Sea"},
      {"3119", L"Hello World\\L", L"hELLO wORLD\\L"},
      {"3119", L"trailing \\", L"TRAILING \\"},
  };
  for (const Case& c : cases) {
    HostSession session;
    ASSERT_TRUE(session.loadModule());
    const OdDbObjectId id = txt::mtext(session.db(), c.text, 0, 0);
    tcase(session, c.button);
    EXPECT_EQ(txt::stringOf(id), c.expected) << c.button;
  }
}

TEST(TextCase, TextsAndAttributeDefinitionsChangeValueAndTagButNotOnLockedLayers) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId locked = att::layer(session.db(), L"LOCKED", 4);
  const OdDbObjectId plain = txt::text(session.db(), L"hello. world", 0, 0);
  const OdDbObjectId onLocked = txt::text(session.db(), L"keep me", 0, 10, 0, locked);
  const OdDbObjectId definition = txt::attdef(session.db(), L"door tag", L"fire door", 0, 20);
  session.host().sysvars().setInt(L"CMDECHO", 1);
  const std::string out = tcase(session, "3115");
  EXPECT_THAT(out, HasSubstr("1 was on a locked layer."));
  EXPECT_EQ(txt::stringOf(plain), L"HELLO. WORLD");
  EXPECT_EQ(txt::stringOf(onLocked), L"keep me");
  EXPECT_EQ(txt::stringOf(definition), L"FIRE DOOR");
  const auto tagOf = [&] { return OdDbAttributeDefinition::cast(definition.openObject().get())->tag(); };
  EXPECT_EQ(tagOf(), OdString(L"DOOR TAG"));
  EXPECT_EQ(txt::shortVar(session, L"CMDECHO"), 1);

  // One U takes the whole change back.
  session.run({"U"});
  EXPECT_EQ(txt::stringOf(plain), L"hello. world");
  EXPECT_EQ(txt::stringOf(definition), L"fire door");
  EXPECT_EQ(tagOf(), OdString(L"door tag"));
  // The rule is remembered: the next dialog opens on UPPER CASE.
  EXPECT_THAT(session.run({"tcase", "ALL", "", "Cancel"}), HasSubstr("3115  radio    UPPER CASE  (o)"));
}

TEST(TextCase, EscAndCancelLeaveTheDrawingAsItWas) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId id = txt::text(session.db(), L"Mixed Case", 0, 0);
  session.host().sysvars().setInt(L"CMDECHO", 1);
  const std::string escaped = session.run({"tcase", "^C"});
  EXPECT_THAT(escaped, HasSubstr("*Cancel*"));
  session.run({"tcase", "ALL", "", "3113", "Cancel"});
  EXPECT_EQ(txt::stringOf(id), L"Mixed Case");
  EXPECT_EQ(txt::shortVar(session, L"CMDECHO"), 1);
}
