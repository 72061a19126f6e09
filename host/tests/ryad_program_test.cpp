// The ryad program run as a user runs it: a drawing, a script of replies or
// replies on standard input, an output drawing, and the exit status and
// messages when something is wrong.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "DbBlockTableRecord.h"
#include "DxfFile.h"
#include "host_test_support.h"

using namespace hosttest;

namespace {

namespace fs = std::filesystem;

const std::string kRyad = std::string(KESTRIX_BIN_DIR) + "/ryad";
const std::string kDrawing = std::string(KESTRIX_CORPUS_DIR) + "/examples_dxf_text_alignments.dxf";
const char* const kIndependentChecker = "/work/shared/tools/dxf_same_entities.py";

std::string quoted(const std::string& text) { return "'" + text + "'"; }

struct ProgramRun {
  int status = -1;
  std::string out, err;
};

// A folder of its own for each test (scripts, outputs, the settings folder).
class ProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    m_folder = fs::temp_directory_path() /
               ("ryad-program-" + std::to_string(getpid()) + "-" +
                testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(m_folder);
    fs::create_directories(m_folder);
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(m_folder, ec);
  }

  fs::path file(const std::string& name) const { return m_folder / name; }
  fs::path writeFile(const std::string& name, const std::string& text) const {
    std::ofstream(file(name), std::ios::binary) << text;
    return file(name);
  }

  // Runs ryad with the arguments; input is what standard input holds.
  ProgramRun run(const std::string& arguments, const std::string& input = std::string()) const {
    const fs::path in = writeFile("stdin.txt", input);
    const fs::path err = file("stderr.txt");
    const std::string command = "RYAD_DATA_DIR=" + quoted(file("data").string()) + " " + quoted(kRyad) + " " +
                                arguments + " <" + quoted(in.string()) + " 2>" + quoted(err.string());
    ProgramRun result;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return result;
    char chunk[4096];
    for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;) result.out.append(chunk, n);
    const int raw = pclose(pipe);
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    std::ifstream errors(err);
    result.err.assign(std::istreambuf_iterator<char>(errors), std::istreambuf_iterator<char>());
    return result;
  }

  fs::path m_folder;
};

size_t modelSpaceEntities(OdDbDatabase* db) {
  OdDbObjectPtr object = db->getModelSpaceId().openObject();
  size_t count = 0;
  for (const auto& id : static_cast<OdDbBlockTableRecord*>(object.get())->entityIds()) count += id.isErased() ? 0 : 1;
  return count;
}

bool independentCheckerAvailable() {
  return fs::exists(kIndependentChecker) && std::system("/usr/bin/python3 -c 'import ezdxf' >/dev/null 2>&1") == 0;
}

TEST_F(ProgramTest, ScriptOnADrawingWritesTheOutput) {
  const fs::path script = writeFile("replies.scr",
                                    "; two drawing variables, one of them refused once\n"
                                    "PDMODE\n3\n"
                                    "LTSCALE\nwide\n2.5\n");
  const fs::path output = file("out.dxf");
  const ProgramRun result = run("--no-module --script " + quoted(script.string()) + " --output " +
                                quoted(output.string()) + " " + quoted(kDrawing));
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(contains(result.out, "Enter new value for LTSCALE")) << result.out;
  EXPECT_TRUE(contains(result.out, "Saved " + output.string())) << result.out;

  OdDbDatabasePtr original = odDxfReadFile(OdString(kDrawing));
  OdDbDatabasePtr written = odDxfReadFile(OdString(output.string()));
  EXPECT_EQ(written->headerInt(L"$PDMODE", 0), 3);
  EXPECT_DOUBLE_EQ(written->getLTSCALE(), 2.5);
  EXPECT_GT(modelSpaceEntities(original.get()), 0u);
  EXPECT_EQ(modelSpaceEntities(written.get()), modelSpaceEntities(original.get()));

  if (!independentCheckerAvailable()) GTEST_SKIP() << "python3-ezdxf is not installed for /usr/bin/python3";
  const std::string check =
      "/usr/bin/python3 " + std::string(kIndependentChecker) + " " + quoted(kDrawing) + " " + quoted(output.string());
  EXPECT_EQ(std::system((check + " >/dev/null").c_str()), 0) << check;
}

TEST_F(ProgramTest, RepliesOnStandardInputAndANewDrawing) {
  const fs::path output = file("new.dxf");
  // The second value is taken back by UNDO: a variable set at the prompt is an undo step.
  const ProgramRun result = run("--no-module --output " + quoted(output.string()), "PDMODE\n34\nPDMODE\n5\nUNDO\n1\n");
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  OdDbDatabasePtr written = odDxfReadFile(OdString(output.string()));
  EXPECT_EQ(written->headerInt(L"$PDMODE", 0), 34);
}

TEST_F(ProgramTest, ABadDrawingIsRefusedWithOneLineOnStandardError) {
  const fs::path bad = writeFile("bad.dxf", "garbage\nnot a drawing\n");
  const ProgramRun result = run("--no-module " + quoted(bad.string()), "PDMODE\n3\n");
  EXPECT_EQ(result.status, 1);
  std::string line = result.err;
  ASSERT_FALSE(line.empty());
  if (line.back() == '\n') line.pop_back();
  EXPECT_EQ(line.find('\n'), std::string::npos) << "more than one line:\n" << result.err;
  EXPECT_TRUE(contains(line, bad.string())) << line;
  EXPECT_TRUE(contains(line, "line 1")) << "the reason is missing: " << line;
  EXPECT_FALSE(contains(result.out, "PDMODE"));  // no replies were run
}

TEST_F(ProgramTest, AnUnknownCommandFailsTheRun) {
  const fs::path script = writeFile("replies.scr", "PDMODE\n3\nNOSUCHCOMMAND\n");
  const fs::path output = file("out.dxf");
  const ProgramRun result =
      run("--no-module --script " + quoted(script.string()) + " --output " + quoted(output.string()));
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.err, "NOSUCHCOMMAND")) << result.err;
  EXPECT_TRUE(contains(result.out, "Unknown command \"NOSUCHCOMMAND\"")) << result.out;
}

TEST_F(ProgramTest, ANulByteEndsTheReplyInTheTranscriptAndInTheError) {
  const fs::path script = writeFile("replies.scr", std::string("PDMODE\n3\nNOSUCH") + '\0' + "TAIL\n");
  const ProgramRun result = run("--no-module --script " + quoted(script.string()));
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.err, "NOSUCH")) << result.err;
  EXPECT_FALSE(contains(result.err, "TAIL")) << result.err;
  EXPECT_TRUE(contains(result.out, "Command: NOSUCH\n")) << result.out;
  EXPECT_TRUE(contains(result.out, "Unknown command \"NOSUCH\".")) << result.out;
  EXPECT_FALSE(contains(result.out, "TAIL")) << result.out;
  EXPECT_EQ(result.out.find('\0'), std::string::npos) << result.out;
}

TEST_F(ProgramTest, AModuleNamedOnTheCommandLineRunsItsCommands) {
  const std::string module = std::string(KESTRIX_BIN_DIR) + "/testmodule.yrx";
  ProgramRun result = run("--module " + quoted(module), "TMECHO\nfrom the terminal\n");
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  EXPECT_TRUE(contains(result.out, "Echo: from the terminal")) << result.out;

  result = run("--module " + quoted(file("none.yrx").string()), "PDMODE\n3\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.err, "cannot load the module")) << result.err;
}

TEST_F(ProgramTest, AScriptThatCannotBeReadFailsTheRun) {
  const ProgramRun result = run("--no-module --script " + quoted(file("missing.scr").string()));
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.err, "missing.scr")) << result.err;
}

TEST_F(ProgramTest, OpeningADamagedDrawingPrintsTheCountAndTheFirstRepairs) {
  // Seven circles with a zero normal: seven repairs, five of them shown.
  std::string text = "0\nSECTION\n2\nENTITIES\n";
  for (int i = 0; i < 7; ++i) text += "0\nCIRCLE\n8\n0\n10\n0\n20\n0\n30\n0\n40\n1\n210\n0\n220\n0\n230\n0\n";
  text += "0\nENDSEC\n0\nEOF\n";
  const fs::path drawing = writeFile("zero normals.dxf", text);
  const ProgramRun result = run("--no-module " + quoted(drawing.string()), "");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(contains(result.out, "7 repairs made while reading")) << result.out;
  size_t shown = 0;
  for (size_t at = result.out.find("Repaired: "); at != std::string::npos; at = result.out.find("Repaired: ", at + 1)) ++shown;
  EXPECT_EQ(shown, 5u) << result.out;
  EXPECT_TRUE(contains(result.out, "and 2 more")) << result.out;
}

TEST_F(ProgramTest, PathsThatCannotDoWhatWasAskedFailTheRun) {
  ProgramRun result = run("--no-module --output ''", "PDMODE\n3\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_TRUE(contains(result.err, "--output needs a file name")) << result.err;

  fs::create_directories(file("folder.scr"));
  result = run("--no-module --script " + quoted(file("folder.scr").string()));
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.err, "is not a file")) << result.err;

  result = run("--no-module " + quoted(file("missing.dxf").string()));
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(contains(result.err, "block name")) << result.err;
  EXPECT_TRUE(contains(result.err, "missing.dxf")) << result.err;

  result = run("--no-module --output " + quoted(file("bad\xff.dxf").string()), "PDMODE\n3\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_TRUE(contains(result.err, "not valid UTF-8")) << result.err;
  EXPECT_FALSE(fs::exists(file("bad\xff.dxf")));
}

TEST_F(ProgramTest, ADwgDrawingOpensAndIsSavedAsDxf) {
  const fs::path drawing = file("plan.dwg");
  fs::copy_file(std::string(KESTRIX_CORPUS_DIR) + "/dwg/2000_entities-2d.dwg", drawing);
  // QSAVE offers the drawing's name with .dxf; the default is taken.
  const ProgramRun saved = run("--no-module " + quoted(drawing.string()), "QSAVE\n\n");
  EXPECT_EQ(saved.status, 0) << saved.out << saved.err;
  EXPECT_TRUE(contains(saved.out, "Drawings read from DWG files are saved as DXF.")) << saved.out;
  EXPECT_TRUE(contains(saved.out, "Saved " + file("plan.dxf").string())) << saved.out;
  OdDbDatabasePtr written = odDxfReadFile(OdString(file("plan.dxf").string()));
  // The model space of this drawing holds 13 entities (as its DXF twin
  // lists them): all come through, the shape as a proxy.
  EXPECT_EQ(modelSpaceEntities(written.get()), 13u);
  EXPECT_FALSE(written->getOdDbObjectId(OdDbHandle(0x2C), false).isNull());  // the LINE keeps its handle
  OdDbObjectPtr dimension = written->getOdDbObjectId(OdDbHandle(0x45), false).openObject();
  ASSERT_FALSE(dimension.isNull());
  EXPECT_EQ(dimension->dxfName(), OdString(L"DIMENSION"));
  EXPECT_FALSE(written->getOdDbObjectId(OdDbHandle(0x39), false).isNull());  // the shape

  // A DWG output name is refused, the drawing left as it was.
  const ProgramRun refused = run("--no-module --output " + quoted(file("copy.dwg").string()) + " " + quoted(drawing.string()));
  EXPECT_NE(refused.status, 0);
  EXPECT_TRUE(contains(refused.out + refused.err, "DWG files are not written")) << refused.out << refused.err;
  EXPECT_FALSE(fs::exists(file("copy.dwg")));
}

}  // namespace
