// The kernel's classic command-line behaviours: undo steps and groups,
// system variables typed at the prompt, unknown commands, commands run by
// programs (replies, echo, transparency), per-document records.
#include <gtest/gtest.h>

#include "DbCurves.h"
#include "core/CommandStack.h"
#include "harness.h"
#include "host_test_support.h"
#include "ryed.h"
#include "ryut.h"

using namespace hosttest;

namespace {

using ryhost::Host;

// ---------------------------------------------------------------- commands the tests register

void addLine() {
  OdDbDatabase* db = Host::instance().workingDatabase();
  auto space = OdDbBlockTableRecord::cast(db->currentSpaceId().openObject(OdDb::kForWrite).get());
  OdDbLinePtr line = new OdDbLine(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 1, 0));
  space->appendOdDbEntity(line.get());
}

// A line and a header variable changed by one command through the SDK.
void lineAndScale() {
  addLine();
  resbuf value{nullptr, RTREAL, {}};
  value.resval.rreal = 5.0;
  ryedSetVar(L"LTSCALE", &value);
}

void askCommand() {
  ryhost::Reply reply = Host::instance().readReply(L"\nTask reply: ");
  Host::instance().print(L"\nTask got " + reply.text);
}

// Runs TASK with one reply, as a program does.
void nestedCommand() {
  ryedCommand(RTSTR, L"TASK", RTSTR, L"yes", RTNONE);
  ryutPrintf(L"\nOuter done");
}

void numberCommand() {
  int value = 0;
  if (ryedGetInt(L"\nNumber: ", &value) == RTNORM) ryutPrintf(L"\nNumber is %d", value);
}

void modalCommand() { ryutPrintf(L"\nModal ran"); }
void transparentCommand() { ryutPrintf(L"\nTransparent ran"); }

void registerTestCommands() {
  OdEdCommandStack* stack = odedRegCmds();
  stack->addCommand(L"KERNELTEST", L"TLINE", L"TLINE", OdEdCommand::kModal, addLine);
  stack->addCommand(L"KERNELTEST", L"TLINESCALE", L"TLINESCALE", OdEdCommand::kModal, lineAndScale);
  stack->addCommand(L"KERNELTEST", L"TASK", L"TASK", OdEdCommand::kModal, askCommand);
  stack->addCommand(L"KERNELTEST", L"TNESTED", L"TNESTED", OdEdCommand::kModal, nestedCommand);
  stack->addCommand(L"KERNELTEST", L"TNUMBER", L"TNUMBER", OdEdCommand::kModal, numberCommand);
  stack->addCommand(L"KERNELTEST", L"TMODAL", L"TMODAL", OdEdCommand::kModal, modalCommand);
  stack->addCommand(L"KERNELTEST", L"TTRANS", L"TTRANS", OdEdCommand::kTransparent, transparentCommand);
}

// ---------------------------------------------------------------- undo

TEST(KernelUndo, UUndoesOneCommandAtATime) {
  HostSession session;
  registerTestCommands();
  session.run({"TLINE", "TLINE", "TLINE"});
  ASSERT_EQ(session.modelSpace().length(), 3u);
  session.run({"U"});
  EXPECT_EQ(session.modelSpace().length(), 2u);
  session.run({"U", "U"});
  EXPECT_EQ(session.modelSpace().length(), 0u);
  EXPECT_TRUE(contains(session.run({"U"}), "Everything has been undone"));
}

TEST(KernelUndo, UndoNumberTakesBackThatManyCommands) {
  HostSession session;
  registerTestCommands();
  session.run({"TLINE", "TLINE", "TLINE", "TLINE"});
  session.run({"UNDO", "3"});
  EXPECT_EQ(session.modelSpace().length(), 1u);
  // Enter at the UNDO prompt takes back one.
  session.run({"UNDO", ""});
  EXPECT_EQ(session.modelSpace().length(), 0u);
}

TEST(KernelUndo, BeginEndGroupIsOneStep) {
  HostSession session;
  registerTestCommands();
  session.run({"TLINE", "UNDO", "BE", "TLINE", "TLINE", "TLINESCALE", "UNDO", "E", "TLINE"});
  ASSERT_EQ(session.modelSpace().length(), 5u);
  ASSERT_DOUBLE_EQ(session.db()->getLTSCALE(), 5.0);
  session.run({"U"});  // the command after the group
  EXPECT_EQ(session.modelSpace().length(), 4u);
  session.run({"U"});  // the whole group: three commands
  EXPECT_EQ(session.modelSpace().length(), 1u);
  EXPECT_DOUBLE_EQ(session.db()->getLTSCALE(), 1.0);
  EXPECT_FALSE(session.db()->isUndoBlockStarted());
}

TEST(KernelUndo, UClosesAGroupLeftOpen) {
  HostSession session;
  registerTestCommands();
  session.run({"TLINE", "UNDO", "BEGIN", "TLINE", "TLINE", "U"});
  EXPECT_EQ(session.modelSpace().length(), 1u);
  EXPECT_FALSE(session.db()->isUndoBlockStarted());
  // Later commands are steps of their own again.
  session.run({"TLINE", "TLINE", "U"});
  EXPECT_EQ(session.modelSpace().length(), 2u);
}

TEST(KernelUndo, HeaderVariableChangesAreUndone) {
  HostSession session;
  registerTestCommands();
  // A change made by a command goes with the command.
  session.run({"TLINESCALE"});
  ASSERT_DOUBLE_EQ(session.db()->getLTSCALE(), 5.0);
  session.run({"U"});
  EXPECT_DOUBLE_EQ(session.db()->getLTSCALE(), 1.0);
  EXPECT_EQ(session.modelSpace().length(), 0u);

  // A variable set at the prompt is a step of its own: U takes back the
  // value and leaves the command before it alone.
  session.run({"TLINE", "PDMODE", "3", "U"});
  EXPECT_EQ(session.host().sysvars().getInt(L"PDMODE"), 0);
  EXPECT_EQ(session.modelSpace().length(), 1u);
  session.run({"CLAYER", "0", "LTSCALE", "2", "TLINE", "U", "U"});
  EXPECT_DOUBLE_EQ(session.db()->getLTSCALE(), 1.0);
  EXPECT_EQ(session.modelSpace().length(), 1u);
}

// ---------------------------------------------------------------- the command prompt

TEST(KernelPrompt, SystemVariableNameShowsAndSetsIt) {
  HostSession session;
  std::string shown = session.run({"PDMODE", "35"});
  EXPECT_TRUE(contains(shown, "Enter new value for PDMODE <0>")) << shown;
  EXPECT_EQ(session.host().sysvars().getInt(L"PDMODE"), 35);

  // Out of range: refused with the range, asked again.
  shown = session.run({"pdmode", "500", "2"});
  EXPECT_TRUE(contains(shown, "value must be between 0 and 100")) << shown;
  EXPECT_EQ(session.host().sysvars().getInt(L"PDMODE"), 2);

  // Not a number: refused, asked again; Enter keeps the value.
  shown = session.run({"LTSCALE", "big", ""});
  EXPECT_TRUE(contains(shown, "Requires a value")) << shown;
  EXPECT_DOUBLE_EQ(session.db()->getLTSCALE(), 1.0);

  // Read-only: shown, not asked.
  shown = session.run({"DWGNAME", "other.dwg"});
  EXPECT_TRUE(contains(shown, "DWGNAME = \"Drawing1.dwg\" (read only)")) << shown;
  EXPECT_FALSE(contains(shown, "Enter new value for DWGNAME"));
  EXPECT_EQ(session.host().problems().size(), 1u);  // "other.dwg" then came as a command
}

TEST(KernelPrompt, UnknownCommandIsNotedAsAProblem) {
  HostSession session;
  const std::string shown = session.run({"NOSUCHTHING", "PDMODE", "1"});
  EXPECT_TRUE(contains(shown, "Unknown command \"NOSUCHTHING\"")) << shown;
  ASSERT_EQ(session.host().problems().size(), 1u);
  EXPECT_TRUE(contains(session.host().problems()[0].toUtf8(), "NOSUCHTHING"));
  EXPECT_EQ(session.host().sysvars().getInt(L"PDMODE"), 1);  // the line after it still ran
}

TEST(KernelPrompt, TransparentCommandsAtAPromptOfAnotherCommand) {
  HostSession session;
  registerTestCommands();
  const std::string shown = session.run({"TNUMBER", "'TMODAL", "'TTRANS", "'PDMODE", "4", "7"});
  EXPECT_TRUE(contains(shown, "TMODAL cannot be used inside another command")) << shown;
  EXPECT_FALSE(contains(shown, "Modal ran"));
  EXPECT_TRUE(contains(shown, "Transparent ran"));
  EXPECT_EQ(session.host().sysvars().getInt(L"PDMODE"), 4);
  EXPECT_TRUE(contains(shown, "Number is 7"));
  EXPECT_TRUE(session.host().problems().empty());
}

// ---------------------------------------------------------------- commands run by programs

TEST(KernelProgramCommands, RepliesLeftOverMakeTheCallFail) {
  HostSession session;
  registerTestCommands();
  EXPECT_EQ(ryedCommand(RTSTR, L"TASK", RTSTR, L"one", RTNONE), RTNORM);
  EXPECT_EQ(ryedCommand(RTSTR, L"TLINE", RTSTR, L"left over", RTNONE), RTERROR);
  EXPECT_EQ(session.host().pendingReplies(), 0u);  // the extra reply reaches no later prompt
  EXPECT_EQ(session.modelSpace().length(), 1u);    // the command itself ran
  EXPECT_EQ(ryedCommand(RTSTR, L"NOSUCHTHING", RTSTR, L"x", RTNONE), RTERROR);
  EXPECT_EQ(session.host().pendingReplies(), 0u);
  // The next prompt reads the input again.
  EXPECT_TRUE(contains(session.run({"TASK", "typed"}), "Task got typed"));
}

TEST(KernelProgramCommands, CmdEchoZeroQuietsNestedCommands) {
  HostSession session;
  registerTestCommands();
  std::string shown = session.run({"TNESTED"});
  EXPECT_TRUE(contains(shown, "Task reply: yes")) << shown;
  EXPECT_TRUE(contains(shown, "Task got yes"));

  session.run({"CMDECHO", "0"});
  shown = session.run({"TNESTED"});
  EXPECT_FALSE(contains(shown, "Task reply")) << shown;
  EXPECT_FALSE(contains(shown, "Task got"));
  EXPECT_TRUE(contains(shown, "Outer done"));  // the outer command still speaks
  // A command typed at the prompt is not run by a program: it echoes.
  EXPECT_TRUE(contains(session.run({"TASK", "typed"}), "Task reply: typed"));
}

// ---------------------------------------------------------------- per-document records

struct DocumentRecord {
  int value = 0;
};

TEST(KernelDocuments, DataManagerKeepsOneRecordPerDocument) {
  HostSession session;
  RyApDataManager<DocumentRecord> records;
  RyApDocument* first = session.host().curDocument();
  records.docData().value = 1;
  ASSERT_EQ(session.host().appContextNewDocument(), eOk);
  RyApDocument* second = session.host().curDocument();
  ASSERT_NE(first, second);
  EXPECT_EQ(records.docData().value, 0);  // a new record for the new document
  records.docData().value = 2;
  EXPECT_EQ(records.size(), 2u);

  session.host().closeDocument(static_cast<ryhost::Document*>(second));
  EXPECT_EQ(records.size(), 1u);
  EXPECT_FALSE(records.hasData(second));
  EXPECT_EQ(records.docData(first).value, 1);
  EXPECT_EQ(session.host().curDocument(), first);
}

}  // namespace
