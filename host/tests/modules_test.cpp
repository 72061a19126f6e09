// Run-time modules in the host: the small test module is loaded, hears of
// documents, runs its commands through replies, and is unloaded and loaded
// again in the same process.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>

#include "DbCurves.h"
#include "RyWindows.h"
#include "core/CommandStack.h"
#include "core/SelectionSets.h"
#include "harness.h"
#include "host_test_support.h"

using namespace hosttest;

namespace {

namespace fs = std::filesystem;

const std::string kTestModule = std::string(KESTRIX_BIN_DIR) + "/testmodule.yrx";

// The test module's record of messages, read through a handle of the test's
// own, which keeps the module mapped until the probe goes.
class ModuleProbe {
 public:
  ModuleProbe() : m_handle(dlopen(kTestModule.c_str(), RTLD_LAZY | RTLD_NOLOAD)) {}
  ~ModuleProbe() {
    if (m_handle) dlclose(m_handle);
  }
  ModuleProbe(const ModuleProbe&) = delete;
  ModuleProbe& operator=(const ModuleProbe&) = delete;

  std::string messages() const {
    auto read = m_handle ? reinterpret_cast<const char* (*)()>(dlsym(m_handle, "testmoduleMessages")) : nullptr;
    return read ? read() : "<module not loaded>";
  }

 private:
  void* m_handle;
};

bool isMapped() {
  void* handle = dlopen(kTestModule.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle) dlclose(handle);
  return handle != nullptr;
}

std::vector<OdString> groupCommands(const wchar_t* group) {
  std::vector<OdString> names;
  for (OdEdCommand* command : odedRegCmds()->commands()) {
    if (command->groupName().iCompare(group) == 0) names.push_back(command->globalName());
  }
  return names;
}

TEST(Modules, LoadingInitialisesAndRegistersTheCommands) {
  HostSession session;
  ASSERT_TRUE(session.loadModule(kTestModule));
  ModuleProbe probe;
  EXPECT_EQ(probe.messages(), "1,3");  // initialised, then told of the open drawing

  // Its commands come last, in the order it registered them.
  OdArray<OdEdCommand*> commands = odedRegCmds()->commands();
  ASSERT_GE(commands.size(), 2u);
  OdEdCommand* echo = commands[commands.size() - 2];
  OdEdCommand* pickCount = commands[commands.size() - 1];
  EXPECT_EQ(echo->globalName(), L"TMECHO");
  EXPECT_EQ(pickCount->globalName(), L"TMPICKCOUNT");
  EXPECT_EQ(pickCount->groupName(), L"TESTMODULE");
  EXPECT_EQ(pickCount->flags(), OdEdCommand::kUsePickSet);
  // The resource handle it registered is its own module handle, found by name too.
  EXPECT_EQ(echo->resourceHandle(), GetModuleHandleW(L"testmodule.yrx"));
  EXPECT_NE(echo->resourceHandle(), nullptr);

  // Loading it again neither reloads nor initialises it again.
  EXPECT_TRUE(session.loadModule(kTestModule));
  EXPECT_EQ(probe.messages(), "1,3");
  EXPECT_EQ(groupCommands(L"TESTMODULE").size(), 2u);
}

TEST(Modules, WithoutADrawingOnlyTheInitialisationComes) {
  HostSession session;
  session.host().closeDocument();
  ASSERT_TRUE(session.loadModule(kTestModule));
  ModuleProbe probe;
  EXPECT_EQ(probe.messages(), "1");
  session.host().appContextNewDocument();
  EXPECT_EQ(probe.messages(), "1,3");
}

TEST(Modules, CommandsRunThroughReplies) {
  HostSession session;
  ASSERT_TRUE(session.loadModule(kTestModule));
  std::string shown = session.run({"TMECHO", "hello there"});
  EXPECT_TRUE(contains(shown, "Text to echo: hello there")) << shown;
  EXPECT_TRUE(contains(shown, "Echo: hello there")) << shown;
  EXPECT_TRUE(contains(session.run({"tmecho", "^C"}), "Echo status -5002"));

  // Two objects selected before the command are handed to it, once.
  auto space = OdDbBlockTableRecord::cast(session.db()->getModelSpaceId().openObject(OdDb::kForWrite).get());
  std::vector<OdDbObjectId> ids;
  for (int i = 0; i < 2; ++i) {
    OdDbLinePtr line = new OdDbLine(OdGePoint3d(i, 0, 0), OdGePoint3d(i, 5, 0));
    ids.push_back(space->appendOdDbEntity(line.get()));
  }
  space = nullptr;
  session.host().current()->selections().pickFirst() = ids;
  EXPECT_TRUE(contains(session.run({"TMPICKCOUNT"}), "Picked before: 2"));
  EXPECT_TRUE(contains(session.run({"TMPICKCOUNT"}), "Picked before: 0"));
  // A command that does not take them clears them.
  session.host().current()->selections().pickFirst() = ids;
  session.run({"TMECHO", "x", "TMPICKCOUNT"});
  EXPECT_TRUE(contains(session.transcript(), "Picked before: 0"));
  EXPECT_TRUE(session.host().problems().empty());
}

TEST(Modules, DocumentEventsReachTheModule) {
  HostSession session;
  ASSERT_TRUE(session.loadModule(kTestModule));
  ModuleProbe probe;
  session.run({"OPEN", std::string(KESTRIX_CORPUS_DIR) + "/integration_tests_data_small_r14.dxf"});
  EXPECT_EQ(probe.messages(), "1,3,3");
  EXPECT_EQ(session.host().documentCount(), 2);
  session.run({"CLOSE"});
  EXPECT_EQ(probe.messages(), "1,3,3,4");
  EXPECT_EQ(session.host().documentCount(), 1);

  const fs::path saved = fs::temp_directory_path() / ("ryad-modules-" + std::to_string(getpid()) + ".dxf");
  fs::remove(saved);
  session.run({"SAVE", saved.string()});
  EXPECT_EQ(probe.messages(), "1,3,3,4,9");
  EXPECT_TRUE(fs::exists(saved));
  fs::remove(saved);
}

TEST(Modules, UnloadingRemovesTheGroupAndReloadingWorks) {
  HostSession session;
  ASSERT_TRUE(session.loadModule(kTestModule));
  {
    ModuleProbe probe;
    ASSERT_TRUE(session.host().modules().unload(OdString(kTestModule)));
    EXPECT_EQ(probe.messages(), "1,3,2");
    EXPECT_TRUE(groupCommands(L"TESTMODULE").empty());
    EXPECT_EQ(odedRegCmds()->lookupCmd(L"TMECHO"), nullptr);
    EXPECT_TRUE(contains(session.run({"TMECHO"}), "Unknown command \"TMECHO\""));
    EXPECT_FALSE(session.host().modules().unload(OdString(kTestModule)));
  }
  // With the probe gone nothing holds the module: the host let go of it.
  EXPECT_FALSE(isMapped());

  ASSERT_TRUE(session.loadModule(kTestModule));
  ModuleProbe probe;
  EXPECT_EQ(probe.messages(), "1,3");  // a fresh copy, initialised again
  EXPECT_TRUE(contains(session.run({"TMECHO", "again"}), "Echo: again"));
  EXPECT_EQ(groupCommands(L"TESTMODULE").size(), 2u);
}

TEST(Modules, WhatIsNotAModuleIsRefusedWithAReason) {
  HostSession session;
  OdString reason;
  const fs::path text = fs::temp_directory_path() / ("ryad-not-a-module-" + std::to_string(getpid()) + ".yrx");
  std::ofstream(text) << "just some text\n";
  EXPECT_FALSE(session.host().modules().load(OdString(text.string()), &reason));
  EXPECT_FALSE(reason.isEmpty());
  fs::remove(text);

  reason.empty();
  EXPECT_FALSE(session.host().modules().load(OdString(std::string(KESTRIX_BIN_DIR) + "/libodplatform.so"), &reason));
  EXPECT_TRUE(contains(reason.toUtf8(), "ryrxEntryPoint")) << reason.toUtf8();

  reason.empty();
  EXPECT_FALSE(session.host().modules().load(OdString("/nonexistent/none.yrx"), &reason));
  EXPECT_TRUE(contains(reason.toUtf8(), "no such file")) << reason.toUtf8();
  EXPECT_TRUE(session.host().modules().loaded().empty());
}

}  // namespace
