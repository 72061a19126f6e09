// The comparison engine through its two exports, on a corpus drawing and
// copies changed by an ezdxf script; the marks are read back with ezdxf.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "DwgCompareJet.h"
#include "DxfFile.h"

namespace fs = std::filesystem;

namespace {

const std::string kTests = DWGCMP_TESTS_DIR;
const std::string kCorpus = std::string(KESTRIX_CORPUS_DIR) + "/examples_dxf_text_alignments.dxf";

std::string run(const std::string& command) {
  std::string out;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return out;
  std::array<char, 4096> buffer;
  for (size_t n; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) out.append(buffer.data(), n);
  pclose(pipe);
  return out;
}

std::string folder(const std::string& name) {
  const fs::path path = fs::temp_directory_path() / ("dwgcmp-test-" + std::to_string(getpid())) / name;
  fs::create_directories(path);
  return path.string();
}

// What a change script did: "edited" -> handle.
std::map<std::string, std::string> makeVersions(const std::string& dir, const std::string& mode,
                                                const std::string& source = kCorpus) {
  std::istringstream lines(run("/usr/bin/python3 " + kTests + "/change_drawing.py " + source + " " + dir +
                               "/old.dxf " + dir + "/new.dxf " + mode));
  std::map<std::string, std::string> changes;
  for (std::string what, handle; lines >> what >> handle;) changes[what] = handle;
  return changes;
}

struct Mark {
  std::string type, layer;
  int color = 0;
  long trueColor = -1;
  bool operator==(const Mark&) const = default;
};

// The entities of a file as ezdxf reads them, by handle; "audit" holds the error count in color.
std::map<std::string, Mark> marks(const std::string& path) {
  std::istringstream lines(run("/usr/bin/python3 " + kTests + "/dump_marks.py " + path));
  std::map<std::string, Mark> result;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string handle;
    Mark m;
    std::getline(fields, handle, '\t');
    if (handle == "audit") {
      fields >> m.color;
    } else {
      std::getline(fields, m.type, '\t');
      std::getline(fields, m.layer, '\t');
      fields >> m.color >> m.trueColor;
    }
    result[handle] = m;
  }
  return result;
}

// The engine as the module uses it: loaded from the library file, given the
// two result copies read into databases.
struct Engine {
  void* library = dlopen((std::string(KESTRIX_BIN_DIR) + "/dwgcmp.dll").c_str(), RTLD_NOW);
  GetDwgCompareJetFn get = library ? reinterpret_cast<GetDwgCompareJetFn>(dlsym(library, "GetDwgCompareJet")) : nullptr;
  FreeDwgCompareJetFn free = library ? reinterpret_cast<FreeDwgCompareJetFn>(dlsym(library, "FreeDwgCompareJet")) : nullptr;
  DwgCompareCounts counts;
  std::string report;

  std::int32_t compare(const std::string& oldPath, const std::string& newPath, const DwgCompareOptions& options = {}) {
    OdDbDatabasePtr oldDb = odDxfReadFile(OdString(oldPath.c_str()));
    OdDbDatabasePtr newDb = odDxfReadFile(OdString(newPath.c_str()));
    oldDb->setFilename(OdString(oldPath.c_str()));
    newDb->setFilename(OdString(newPath.c_str()));
    DwgCompareJet* jet = get();
    jet->setOldDatabase(oldDb.get());
    jet->setNewDatabase(newDb.get());
    const DwgCompareColors colors;
    const std::int32_t result = jet->compare(&options, &colors);
    counts = jet->counts();
    report = OdString(jet->reportPath()).toUtf8();
    free(jet);
    return result;
  }
};

void copy(const std::string& from, const std::string& to) {
  fs::copy_file(from, to, fs::copy_options::overwrite_existing);
}

}  // namespace

TEST(CompareEngine, EveryScriptedChangeIsMarkedWithItsClassColourAndNothingElse) {
  Engine engine;
  ASSERT_TRUE(engine.get && engine.free) << dlerror();
  const std::string dir = folder("edits");
  auto changes = makeVersions(dir, "edits");
  ASSERT_EQ(changes.size(), 5u);
  copy(dir + "/old.dxf", dir + "/old_res.dxf");
  copy(dir + "/new.dxf", dir + "/new_res.dxf");
  const auto oldBefore = marks(dir + "/old.dxf"), newBefore = marks(dir + "/new.dxf");
  ASSERT_GT(engine.compare(dir + "/old_res.dxf", dir + "/new_res.dxf"), 0);
  EXPECT_EQ(engine.counts.added, 1);
  EXPECT_EQ(engine.counts.deleted, 1);
  EXPECT_EQ(engine.counts.changed, 2);
  EXPECT_EQ(engine.counts.propertyOnly, 1);
  const auto oldEntities = std::count_if(oldBefore.begin(), oldBefore.end(), [](const auto& e) {
    return e.second.type != "layer" && e.first != "audit";
  });
  EXPECT_EQ(engine.counts.unchanged, oldEntities - 4);

  // Palette colours of the default record: green 3, red 1, yellow 2, magenta 6.
  std::map<std::string, std::pair<std::string, int>> expectOld = {
      {changes["erased"], {"CMP_DELETED", 1}},
      {changes["moved"], {"CMP_CHANGED", 2}},
      {changes["edited"], {"CMP_CHANGED", 2}},
      {changes["recoloured"], {"CMP_PROPERTIES", 6}}};
  std::map<std::string, std::pair<std::string, int>> expectNew = {
      {changes["added"], {"CMP_ADDED", 3}},
      {changes["moved"], {"CMP_CHANGED", 2}},
      {changes["edited"], {"CMP_CHANGED", 2}},
      {changes["recoloured"], {"CMP_PROPERTIES", 6}}};
  for (auto [result, before, expect] : {std::tuple{marks(dir + "/old_res.dxf"), oldBefore, expectOld},
                                        std::tuple{marks(dir + "/new_res.dxf"), newBefore, expectNew}}) {
    EXPECT_EQ(result["audit"].color, 0);
    auto entities = [](const std::map<std::string, Mark>& m) {
      return std::count_if(m.begin(), m.end(), [](const auto& e) { return e.second.type != "layer"; });
    };
    ASSERT_EQ(entities(result), entities(before));
    for (const auto& [handle, mark] : before) {
      if (handle == "audit" || handle.starts_with("layer:")) continue;
      auto expected = expect.find(handle);
      if (expected == expect.end()) {
        EXPECT_EQ(result[handle], mark) << handle << " is unchanged and must stay as it was";
      } else {
        EXPECT_EQ(result[handle].layer, expected->second.first) << handle;
        EXPECT_EQ(result[handle].color, expected->second.second) << handle;
        EXPECT_EQ(result[handle].type, mark.type) << handle;
      }
    }
  }

  std::ifstream in(engine.report);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(fs::path(engine.report).filename(), "new_res.cmp.txt");
  EXPECT_NE(text.str().find("Added: 1\nDeleted: 1\nChanged: 2\nProperties only: 1\n"), std::string::npos);
  EXPECT_NE(text.str().find("deleted\t" + changes["erased"] + "\t-\tLINE\n"), std::string::npos) << text.str();
  EXPECT_NE(text.str().find("added\t-\t" + changes["added"] + "\tCIRCLE\n"), std::string::npos);
  EXPECT_NE(text.str().find("changed\t" + changes["moved"] + "\t" + changes["moved"] + "\tLINE\n"), std::string::npos);
}

TEST(CompareEngine, RedrawnObjectsPairByTheirDataAndTheToleranceHolds) {
  Engine engine;
  ASSERT_TRUE(engine.get);
  const std::string dir = folder("redraw");
  auto changes = makeVersions(dir, "redraw");
  ASSERT_EQ(changes.size(), 3u);
  copy(dir + "/old.dxf", dir + "/old_res.dxf");
  copy(dir + "/new.dxf", dir + "/new_res.dxf");
  ASSERT_GT(engine.compare(dir + "/old_res.dxf", dir + "/new_res.dxf"), 0);
  // The line drawn again pairs with the erased one; the nudge is within 0.0001.
  EXPECT_EQ(engine.counts.added + engine.counts.deleted + engine.counts.changed + engine.counts.propertyOnly, 0);
  const auto result = marks(dir + "/new_res.dxf");
  for (const auto& [handle, mark] : result) EXPECT_EQ(mark.layer.rfind("CMP_", 0), std::string::npos) << handle;

  // Every object copied under a new handle pairs with its old self by its data.
  const std::string again = folder("rehandle");
  auto copied = makeVersions(again, "rehandle");
  ASSERT_EQ(copied.size(), 1u);
  copy(again + "/old.dxf", again + "/old_res.dxf");
  copy(again + "/new.dxf", again + "/new_res.dxf");
  ASSERT_GT(engine.compare(again + "/old_res.dxf", again + "/new_res.dxf"), 0);
  EXPECT_EQ(engine.counts.added + engine.counts.deleted + engine.counts.changed + engine.counts.propertyOnly, 0);
  EXPECT_EQ(engine.counts.unchanged, std::stoll(copied["entities"]));

  // A finer tolerance sees the nudge; greyed unchanged objects go to their layer in grey (palette 9).
  copy(dir + "/old.dxf", dir + "/old_res.dxf");
  copy(dir + "/new.dxf", dir + "/new_res.dxf");
  DwgCompareOptions fine;
  fine.tolerance = 1e-6;
  fine.greyUnchanged = 1;
  ASSERT_GT(engine.compare(dir + "/old_res.dxf", dir + "/new_res.dxf", fine), 0);
  EXPECT_EQ(engine.counts.changed, 1);
  auto grey = marks(dir + "/new_res.dxf");
  EXPECT_EQ(grey[changes["nudged"]].layer, "CMP_CHANGED");
  EXPECT_EQ(grey[changes["added"]].layer, "CMP_UNCHANGED");
  EXPECT_EQ(grey[changes["added"]].color, 9);

  // Without geometry, a moved object is not a difference; hidden unchanged
  // objects keep their colour on a layer that is off.
  copy(dir + "/old.dxf", dir + "/old_res.dxf");
  copy(dir + "/new.dxf", dir + "/new_res.dxf");
  fine.geometry = 0;
  fine.greyUnchanged = 0;
  fine.hideUnchanged = 1;
  ASSERT_GT(engine.compare(dir + "/old_res.dxf", dir + "/new_res.dxf", fine), 0);
  EXPECT_EQ(engine.counts.changed, 0);
  auto hidden = marks(dir + "/new_res.dxf");
  const auto before = marks(dir + "/new.dxf");
  EXPECT_EQ(hidden["layer:CMP_UNCHANGED"].layer, "off");
  EXPECT_EQ(hidden[changes["nudged"]].layer, "CMP_UNCHANGED");
  EXPECT_EQ(hidden[changes["nudged"]].color, before.at(changes["nudged"]).color);
}

TEST(CompareEngine, NothingToShowWithoutDrawingsOrObjects) {
  Engine engine;
  ASSERT_TRUE(engine.get);
  DwgCompareJet* jet = engine.get();
  EXPECT_EQ(jet->compare(nullptr, nullptr), 0);
  engine.free(jet);
  const std::string dir = folder("empty");
  const std::string empty = std::string(KESTRIX_CORPUS_DIR) + "/examples_dxf_Minimal_DXF_AC1009.dxf";
  copy(empty, dir + "/a.dxf");
  copy(empty, dir + "/b.dxf");
  const std::string before = run("cat " + dir + "/a.dxf");
  EXPECT_EQ(engine.compare(dir + "/a.dxf", dir + "/b.dxf"), 0);
  // Nothing to show: the copies are not rewritten.
  EXPECT_EQ(run("cat " + dir + "/a.dxf"), before);
}

TEST(CompareEngine, ObjectsOfUnmodelledClassesCompareByTheirKeptGroups) {
  Engine engine;
  ASSERT_TRUE(engine.get);
  const std::string dir = folder("proxies");
  auto drawing = [](const std::string& x) {
    return "0\nSECTION\n2\nENTITIES\n0\nWIDGET\n5\n20\n8\n0\n10\n" + x + "\n20\n0\n0\nWIDGET\n5\n21\n8\n0\n10\n2\n20\n0\n"
           "0\nGADGET\n5\n22\n8\n0\n10\n2\n20\n0\n0\nENDSEC\n0\nEOF\n";
  };
  std::ofstream(dir + "/old_res.dxf") << drawing("1");
  std::ofstream(dir + "/new_res.dxf") << drawing("1.5");
  ASSERT_EQ(engine.compare(dir + "/old_res.dxf", dir + "/new_res.dxf"), 3);
  // Only the first widget moved; the gadget's groups equal the second widget's, but not its name.
  EXPECT_EQ(engine.counts.changed, 1);
  EXPECT_EQ(engine.counts.unchanged, 2);
  EXPECT_NE(run("cat " + dir + "/new_res.cmp.txt").find("changed\t20\t20\tWIDGET\n"), std::string::npos);
}

TEST(CompareEngine, ReferencesFollowTheirBlockDefinitionOnlyWhenAsked) {
  Engine engine;
  ASSERT_TRUE(engine.get);
  const std::string dir = folder("block");
  auto changes = makeVersions(dir, "block");
  ASSERT_EQ(changes.size(), 1u);
  for (int follow : {1, 0}) {
    copy(dir + "/old.dxf", dir + "/old_res.dxf");
    copy(dir + "/new.dxf", dir + "/new_res.dxf");
    DwgCompareOptions options;
    options.blocks = follow;
    ASSERT_GT(engine.compare(dir + "/old_res.dxf", dir + "/new_res.dxf", options), 0);
    EXPECT_EQ(engine.counts.changed, follow) << "following blocks: " << follow;
    EXPECT_EQ(engine.counts.added + engine.counts.deleted + engine.counts.propertyOnly, 0);
    EXPECT_EQ(marks(dir + "/new_res.dxf")[changes["reference"]].layer, follow ? "CMP_CHANGED" : "0");
  }
}

TEST(CompareEngine, AnEditedAttributeChangesItsReferenceAndIsMarkedWithIt) {
  Engine engine;
  ASSERT_TRUE(engine.get);
  const std::string dir = folder("attrib");
  auto changes = makeVersions(dir, "attrib", std::string(KESTRIX_CORPUS_DIR) + "/examples_dxf_multi_insert_with_attribs.dxf");
  ASSERT_EQ(changes.size(), 2u);
  copy(dir + "/old.dxf", dir + "/old_res.dxf");
  copy(dir + "/new.dxf", dir + "/new_res.dxf");
  ASSERT_GT(engine.compare(dir + "/old_res.dxf", dir + "/new_res.dxf"), 0);
  EXPECT_EQ(engine.counts.changed, 1);
  auto result = marks(dir + "/new_res.dxf");
  EXPECT_EQ(result[changes["reference"]].layer, "CMP_CHANGED");
  EXPECT_EQ(result[changes["attribute"]].layer, "CMP_CHANGED");
  EXPECT_EQ(result[changes["attribute"]].color, 2);
  EXPECT_EQ(result["audit"].color, 0);
}

TEST(CompareEngine, EveryCorpusDrawingComparedWithItselfHasNoDifference) {
  Engine engine;
  ASSERT_TRUE(engine.get);
  const std::string dir = folder("corpus");
  int compared = 0;
  for (const auto& entry : fs::directory_iterator(KESTRIX_CORPUS_DIR)) {
    if (entry.path().extension() != ".dxf") continue;
    copy(entry.path().string(), dir + "/a.dxf");
    copy(entry.path().string(), dir + "/b.dxf");
    try {
      if (engine.compare(dir + "/a.dxf", dir + "/b.dxf") == 0) continue;  // no objects
    } catch (const OdError&) {
      continue;  // a file the platform refuses
    }
    ++compared;
    EXPECT_EQ(engine.counts.added + engine.counts.deleted + engine.counts.changed + engine.counts.propertyOnly, 0)
        << entry.path().filename();
    EXPECT_GT(engine.counts.unchanged, 0);
  }
  EXPECT_GT(compared, 40);
}
