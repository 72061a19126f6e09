// The example script examples/small-plan.scr, run as a new user runs it
// (ryad --script ... --output ...), and its drawing read back by another DXF
// reader (python3-ezdxf) with that reader's audit.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

namespace {

std::string runAndCapture(const std::string& command, int& status) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return output;
  char buffer[4096];
  while (size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
  status = pclose(pipe);
  return output;
}

// What the drawing holds as the other reader sees it: "KEY value" lines.
const char* const kSummary = R"(
import collections, sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
auditor = doc.audit()
print("AUDIT_ERRORS", len(auditor.errors))
for kind, count in collections.Counter(e.dxftype() for e in doc.modelspace()).items():
    print(kind, count)
values = sorted(a.dxf.text for i in doc.modelspace().query("INSERT") for a in i.attribs)
print("VALUES", "+".join(values))
print("DOOR", "+".join(e.dxftype() for e in doc.blocks.get("DOOR")))
polyline = doc.modelspace().query("LWPOLYLINE").first
print("WALL", int(polyline.closed), len(polyline), polyline.dxf.const_width)
)";

}  // namespace

TEST(DrawScript, SmallPlanExampleMakesAValidDrawing) {
  namespace fs = std::filesystem;
  const fs::path script = fs::path(KESTRIX_SOURCE_DIR) / "examples/small-plan.scr";
  ASSERT_TRUE(fs::exists(script));
  const fs::path folder = fs::temp_directory_path() / ("ryad-small-plan-" + std::to_string(getpid()));
  fs::create_directories(folder);
  const fs::path drawing = folder / "small-plan.dxf";
  int status = -1;
  const std::string transcript =
      runAndCapture(std::string(KESTRIX_BIN_DIR) + "/ryad --script " + script.string() + " --output " +
                        drawing.string() + " 2>&1",
                    status);
  EXPECT_EQ(status, 0) << transcript;
  ASSERT_TRUE(fs::exists(drawing)) << transcript;
  for (const char* refusal : {"Invalid", "Cannot", "could not", "Requires"}) {
    EXPECT_EQ(transcript.find(refusal), std::string::npos) << refusal << " in\n" << transcript;
  }

  const fs::path reader = folder / "summary.py";
  FILE* file = std::fopen(reader.c_str(), "w");
  ASSERT_NE(file, nullptr);
  std::fputs(kSummary, file);
  std::fclose(file);
  const std::string summary =
      runAndCapture("/usr/bin/python3 " + reader.string() + " " + drawing.string(), status);
  ASSERT_EQ(status, 0) << summary;
  std::map<std::string, std::string> seen;
  std::istringstream lines(summary);
  for (std::string key, value; lines >> key && std::getline(lines, value);) seen[key] = value.substr(1);
  EXPECT_EQ(seen["AUDIT_ERRORS"], "0");
  EXPECT_EQ(seen["LWPOLYLINE"], "1");
  EXPECT_EQ(seen["LINE"], "2");    // the inner wall, broken for its door
  EXPECT_EQ(seen["CIRCLE"], "5");  // the table and four chairs
  EXPECT_EQ(seen["TEXT"], "4");
  EXPECT_EQ(seen["INSERT"], "2");
  EXPECT_EQ(seen["VALUES"], "D1+D2");
  EXPECT_EQ(seen["DOOR"], "LINE+ARC+ATTDEF");
  // The outer wall opened for the front door: six vertices, still 0.2 wide.
  EXPECT_EQ(seen["WALL"], "0 6 0.2");
  fs::remove_all(folder);
}
