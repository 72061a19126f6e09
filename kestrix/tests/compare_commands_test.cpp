// Cmp and -cmp in the real host with the real module and engine: the chosen
// drawings stay byte for byte, the results are named, marked and opened,
// the same drawing chosen twice, a result that would replace a chosen
// drawing, the parameter dialog's OK and Cancel, and a host without the
// engine library.
#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "compare/Compare.h"
#include "harness.h"
#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

namespace {

std::string folder(const std::string& name) {
  const fs::path path = fs::temp_directory_path() / ("kestrix-cmp-" + std::to_string(getpid())) / name;
  fs::remove_all(path);
  fs::create_directories(path);
  return path.string();
}

std::string shell(const std::string& command) {
  std::string out;
  FILE* pipe = popen(command.c_str(), "r");
  std::array<char, 4096> buffer;
  for (size_t n; pipe && (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) out.append(buffer.data(), n);
  if (pipe) pclose(pipe);
  return out;
}

// Two versions of a corpus drawing, the new one changed by the engine's test script.
void makeVersions(const std::string& dir) {
  shell("/usr/bin/python3 " DWGCMP_TESTS_DIR "/change_drawing.py " KESTRIX_CORPUS_DIR
        "/examples_dxf_text_alignments.dxf " + dir + "/plan.dxf " + dir + "/plan2.dxf edits");
}

std::vector<std::string> openFiles(HostSession& session) {
  std::vector<std::string> files;
  for (int i = 0; i < session.host().documentCount(); ++i)
    files.push_back(session.host().document(i)->fileName().toUtf8());
  return files;
}

}  // namespace

TEST(CompareCommands, DialogRunMarksCopiesOpensThemAndLeavesTheChosenDrawingsAlone) {
  const std::string dir = folder("dialog");
  makeVersions(dir);
  const std::string oldBytes = att::readBytes(dir + "/plan.dxf"), newBytes = att::readBytes(dir + "/plan2.dxf");
  ASSERT_FALSE(oldBytes.empty());
  fs::create_directories(dir + "/out");
  // A result already there is overwritten without asking.
  std::ofstream(dir + "/out/plan_old.dxf") << "stale";
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  // The old drawing chosen with its Browse button, the new one typed.
  const std::string out = session.run({"Cmp", "1002", dir + "/plan.dxf", "1003=" + dir + "/plan2.dxf",
                                       "1005=" + dir + "/out", "OK"});
  EXPECT_THAT(out, HasSubstr("1001  edit     Older drawing:  [" + dir + "/plan.dxf]"));
  EXPECT_EQ(att::readBytes(dir + "/plan.dxf"), oldBytes);
  EXPECT_EQ(att::readBytes(dir + "/plan2.dxf"), newBytes);
  EXPECT_THAT(openFiles(session), testing::ElementsAre(testing::_, dir + "/out/plan2_new.dxf", dir + "/out/plan_old.dxf"))
      << out;
  EXPECT_NE(att::readBytes(dir + "/out/plan_old.dxf").find("CMP_DELETED"), std::string::npos);
  EXPECT_THAT(att::readBytes(dir + "/out/plan2_new.cmp.txt"), HasSubstr("Added: 1\nDeleted: 1\nChanged: 2\nProperties only: 1\n"));
  // The dialog offers the last choice again; Cancel ends quietly.
  const std::string again = session.run({"Cmp", "Cancel"});
  EXPECT_THAT(again, HasSubstr("[" + dir + "/plan.dxf]"));
  EXPECT_EQ(session.host().documentCount(), 3);
}

TEST(CompareCommands, SameDrawingTwiceGivesOldAndNewResultsWithNothingChanged) {
  const std::string dir = folder("twice");
  makeVersions(dir);
  const std::string before = att::readBytes(dir + "/plan.dxf");
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::string out = session.run({"-cmp", dir + "/plan.dxf", dir + "/plan.dxf", dir + "/"});
  EXPECT_THAT(out, HasSubstr("Added 0, deleted 0, changed 0, properties only 0, unchanged 58."));
  EXPECT_TRUE(fs::exists(dir + "/plan_old.dxf"));
  EXPECT_TRUE(fs::exists(dir + "/plan_new.dxf"));
  EXPECT_EQ(att::readBytes(dir + "/plan.dxf"), before);
  EXPECT_EQ(att::readBytes(dir + "/plan_new.dxf").find("CMP_"), std::string::npos);
  // Enter keeps the last drawings; a result on a chosen drawing is refused.
  fs::copy_file(dir + "/plan.dxf", dir + "/x.dxf");
  fs::copy_file(dir + "/plan.dxf", dir + "/x_old.dxf");
  const std::string x = att::readBytes(dir + "/x_old.dxf");
  const std::string refused = session.run({"-cmp", dir + "/x.dxf", dir + "/x_old.dxf", dir});
  EXPECT_THAT(refused, HasSubstr("would replace a chosen drawing"));
  EXPECT_EQ(att::readBytes(dir + "/x_old.dxf"), x);
  EXPECT_THAT(session.run({"-cmp", "", "", dir, "-cmp", dir + "/none.dxf"}), HasSubstr("Older drawing <" + dir + "/x.dxf>: "));
  // A copy that fails shows the system's reason; a copy that cannot be read, message 25008.
  EXPECT_THAT(session.run({"-cmp", dir + "/plan.dxf", dir + "/plan.dxf", dir + "/no/such/folder"}),
              HasSubstr("No such file or directory"));
  std::ofstream(dir + "/broken.dxf") << "not a drawing\n";
  EXPECT_THAT(session.run({"-cmp", dir + "/broken.dxf", dir + "/plan.dxf", dir}),
              HasSubstr("The older drawing cannot be read."));
  EXPECT_THAT(session.run({"-cmp", dir + "/plan.dxf", dir + "/broken.dxf", dir}),
              HasSubstr("The newer drawing cannot be read."));
  EXPECT_THAT(session.run({"-cmp", dir + "/none.dxf", dir + "/plan.dxf", dir}),
              HasSubstr("No such drawing: " + dir + "/none.dxf"));
  EXPECT_EQ(session.host().documentCount(), 3) << "only the first run opened its results";
}

TEST(CompareCommands, ParameterDialogWritesOptionsOnlyOnOk) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::string dir = folder("options");
  // Options: tolerance, greying on, the added colour changed; then Cancel keeps everything.
  session.run({"Cmp", "1006", "1101=0.5", "1114", "1120", "10,20,30", "OK", "1006", "1101=7", "1115", "Cancel", "Cancel"});
  makeVersions(dir);
  const std::string out = session.run({"-cmp", dir + "/plan.dxf", dir + "/plan2.dxf", dir});
  // As ezdxf reads the result: greyed unchanged objects on their layer in
  // palette grey 9, the added circle in true colour 10,20,30 (0x0A141E).
  const std::string marked = shell("/usr/bin/python3 " DWGCMP_TESTS_DIR "/dump_marks.py " + dir + "/plan2_new.dxf");
  EXPECT_THAT(marked, HasSubstr("\tCIRCLE\tCMP_UNCHANGED\t9\t-1\n"));
  EXPECT_THAT(marked, HasSubstr("\tCIRCLE\tCMP_ADDED\t158\t660510\n"));
  EXPECT_THAT(att::readBytes(dir + "/plan2_new.cmp.txt"), HasSubstr("Tolerance: 0.5\n"));
  // The options are the module's for the rest of the process: back to the defaults.
  session.run({"Cmp", "1006", "1101=0.0001", "1114", "1120", "0,255,0", "OK", "Cancel"});
}

TEST(CompareCommands, WithoutTheEngineLibraryBothFormsSaySoAndAskNothing) {
  // A host folder of its own without dwgcmp.dll, run as a program.
  const std::string dir = folder("noengine");
  for (const auto& entry : fs::directory_iterator(KESTRIX_BIN_DIR)) {
    const std::string name = entry.path().filename().string();
    if (name == "ryad" || name.ends_with(".so") || name.ends_with(".yrx") || name == "kestrixres.dll" ||
        name == "ryadkwlres.dll" || name == "kestrix.cuix")
      fs::copy_file(entry.path(), dir + "/" + name);
  }
  std::ofstream(dir + "/s.scr") << "-cmp\nCmp\n";
  const std::string out = shell("cd " + dir + " && RYAD_DATA_DIR=" + dir + " ./ryad --script s.scr 2>&1");
  const std::string message = "The drawing comparison engine (dwgcmp.dll) was not found.";
  EXPECT_THAT(out, HasSubstr("\n" + message));
  EXPECT_THAT(out, HasSubstr("] " + message));
  EXPECT_THAT(out, Not(HasSubstr("Older drawing")));
  EXPECT_THAT(out, Not(HasSubstr("Dialog 25000")));
}
