// The host's HELP with the module loaded: every registration of the module
// is listed under its group with what it does, and one command's entry
// tells its prompts and file.
#include "core/CommandStack.h"
#include "harness.h"

namespace {

TEST(ModuleHelp, EveryModuleCommandIsListedWithWhatItDoes) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::string all = session.run({"HELP", ""});
  int moduleCommands = 0;
  for (OdEdCommand* command : session.host().commands().commands()) {
    if (command->groupName() == L"RYAD") continue;
    ++moduleCommands;
    EXPECT_NE(all.find("\n  " + command->localName().toUtf8() + " "), std::string::npos) << command->localName().toUtf8();
  }
  EXPECT_EQ(moduleCommands, 184);
  EXPECT_EQ(all.find("(no description)"), std::string::npos);
  for (const char* group : {"\n\nEvKestrixTools\n", "\n\nEVKESTRIXTOOLSCMD\n", "\n\nVelmarintools\n"}) {
    EXPECT_NE(all.find(group), std::string::npos) << group;
  }

  const std::string one = session.run({"HELP", "ATTOUT"});
  EXPECT_NE(one.find("attout, group EvKestrixTools: Export the attribute values"), std::string::npos) << one;
  EXPECT_NE(one.find("Takes the objects selected before it starts."), std::string::npos) << one;
  EXPECT_NE(one.find("\"Select objects: \""), std::string::npos) << one;
}

}  // namespace
