// The command line as a user meets it: aliases from the shipped and the
// user's alias files, HELP with and without a name, inside a command too,
// and unknown names answered with close ones.
#include <fstream>

#include "DbCurves.h"
#include "core/Aliases.h"
#include "core/CommandStack.h"
#include "harness.h"
#include "host_test_support.h"

using namespace hosttest;

namespace {

void writeUserAliases(HostSession& session, const std::string& text) {
  std::ofstream((session.host().dataFolder() + L"ryad.pgp").toUtf8()) << text;
}

class CommandLineTest : public testing::Test {
 protected:
  void TearDown() override { std::remove((session.host().dataFolder() + L"ryad.pgp").toUtf8().c_str()); }
  HostSession session;
};

TEST(CommandAliasesFile, LinesAddAndOverrideAndOddLinesAreSkipped) {
  ryhost::CommandAliases aliases;
  aliases.addText("; comment\nL,*LINE\r\n  c , * CIRCLE \nBAD LINE\nNO COMMA\n,*EMPTY\nX,*\n");
  aliases.addText("L,*PLINE\n");
  EXPECT_EQ(aliases.commandFor(L"l"), OdString(L"PLINE"));
  EXPECT_EQ(aliases.commandFor(L"C"), OdString(L"CIRCLE"));
  EXPECT_EQ(aliases.all().size(), 2u);
}

TEST_F(CommandLineTest, ShippedAliasDrawsALine) {
  session.run({"L", "0,0", "3,4", ""});
  ASSERT_EQ(session.modelSpace().length(), 1u);
  OdDbLinePtr line = OdDbLine::cast(session.modelSpace()[0].safeOpenObject());
  ASSERT_FALSE(line.isNull());
  EXPECT_DOUBLE_EQ(line->endPoint().x, 3.0);
  EXPECT_DOUBLE_EQ(line->endPoint().y, 4.0);
}

TEST_F(CommandLineTest, UserAliasesAddOverrideAndNeverHideACommand) {
  // QQ is new; C now stands for COPY; U stays the command U.
  writeUserAliases(session, "QQ,*CIRCLE\nC,*COPY\nU,*LINE\n");
  session.run({"REINIT"});
  session.run({"QQ", "5,5", "2"});
  ASSERT_EQ(session.modelSpace().length(), 1u);
  EXPECT_FALSE(OdDbCircle::cast(session.modelSpace()[0].safeOpenObject()).isNull());
  const std::string copied = session.run({"C", "L", "", "0,0", "10,0", ""});
  EXPECT_EQ(session.modelSpace().length(), 2u) << copied;
  session.run({"U"});
  EXPECT_EQ(session.modelSpace().length(), 1u);
}

TEST_F(CommandLineTest, HelpListsEveryCommandByGroupAndTellsOne) {
  const std::string all = session.run({"HELP", ""});
  for (OdEdCommand* command : session.host().commands().commands()) {
    EXPECT_NE(all.find("\n  " + command->localName().toUtf8() + " "), std::string::npos) << command->localName().toUtf8();
  }
  EXPECT_EQ(countOf(all, "(no description)"), 0) << all;
  EXPECT_NE(all.find("RYAD (host commands)"), std::string::npos);

  const std::string one = session.run({"?", "-purge"});
  EXPECT_NE(one.find("Enter type of unused objects to purge [Blocks/Dimstyles/LAyers/LTypes/STyles/Regapps/All]: "),
            std::string::npos)
      << one;
  const std::string alias = session.run({"HELP", "pu"});
  EXPECT_NE(alias.find("-PURGE, typed as the alias PU"), std::string::npos) << alias;
}

TEST_F(CommandLineTest, HelpInsideACommandReturnsToItsPrompt) {
  const std::string text = session.run({"LINE", "0,0", "'HELP", "LINE", "7,0", ""});
  EXPECT_NE(text.find("Draw straight line segments."), std::string::npos) << text;
  ASSERT_EQ(session.modelSpace().length(), 1u);
  EXPECT_DOUBLE_EQ(OdDbLine::cast(session.modelSpace()[0].safeOpenObject())->endPoint().x, 7.0);
}

TEST_F(CommandLineTest, UnknownNamesAreAnsweredWithCloseOnes) {
  EXPECT_NE(session.run({"LNIE"}).find("Unknown command \"LNIE\". Did you mean LINE"), std::string::npos);
  const std::string far = session.run({"XYZZYQ"});
  EXPECT_NE(far.find("Unknown command \"XYZZYQ\"."), std::string::npos);
  EXPECT_EQ(far.find("Did you mean"), std::string::npos) << far;
  // Variables are names a user types too.
  EXPECT_NE(session.run({"TEXTSIZ"}).find("TEXTSIZE"), std::string::npos);
}

}  // namespace
