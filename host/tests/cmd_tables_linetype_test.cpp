// -LINETYPE: loading definitions (names, wildcards, text elements, files
// with comments and continued lines), reloading, the current linetype,
// creating a definition in a file, Esc and U.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host_test_support.h"

namespace {

using namespace hosttest;
namespace fs = std::filesystem;

OdSmartPtr<OdDbLinetypeTableRecord> linetype(OdDbDatabase* db, const wchar_t* name) {
  return record<OdDbLinetypeTableRecord>(db, OdDbNameTable::kLinetype, name);
}

std::vector<double> lengths(const OdDbLinetypeTableRecord* record) {
  std::vector<double> result;
  for (const OdDbLinetypeDash& dash : record->dashes()) result.push_back(dash.length);
  return result;
}

class LinetypeCommand : public testing::Test {
 protected:
  void SetUp() override {
    m_folder = fs::temp_directory_path() / ("ryad-lin-" + std::to_string(getpid()) + "-" +
                                            testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(m_folder);
  }
  void TearDown() override { fs::remove_all(m_folder); }
  std::string file(const std::string& name, const std::string& text = std::string()) {
    const fs::path path = m_folder / name;
    if (!text.empty()) std::ofstream(path) << text;
    return path.string();
  }
  static std::string read(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }

  fs::path m_folder;
};

TEST_F(LinetypeCommand, LoadsDefinitionsOfTheSupportFileByNameAndWildcard) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const std::string out = session.run({"-LINETYPE", "L", "DASHED,HIDDEN*,GAS_LINE,NOSUCH", "", ""});
  auto dashed = linetype(db, L"DASHED");
  ASSERT_TRUE(dashed.get()) << out;
  EXPECT_EQ(lengths(dashed.get()), (std::vector<double>{0.5, -0.25}));
  EXPECT_DOUBLE_EQ(dashed->patternLength(), 0.75);
  EXPECT_TRUE(contains(dashed->comments().toUtf8(), "Dashed"));
  for (const wchar_t* name : {L"HIDDEN", L"HIDDEN2", L"HIDDENX2"}) EXPECT_TRUE(linetype(db, name).get());
  EXPECT_FALSE(linetype(db, L"CENTER").get());
  EXPECT_TRUE(contains(out, "Linetype \"NOSUCH\" not found in")) << out;

  // The text element belongs to the gap before it.
  auto gas = linetype(db, L"GAS_LINE");
  ASSERT_TRUE(gas.get());
  ASSERT_EQ(gas->numDashes(), 3);
  const OdDbLinetypeDash& text = gas->dashes()[1];
  EXPECT_EQ(text.complexType, 2);
  EXPECT_EQ(text.text, OdString(L"GAS"));
  EXPECT_EQ(text.styleId, db->getTextStyleStandardId());
  EXPECT_DOUBLE_EQ(text.scale, 0.1);
  EXPECT_DOUBLE_EQ(text.offsetX, -0.1);
  EXPECT_DOUBLE_EQ(text.offsetY, -0.05);
}

TEST_F(LinetypeCommand, ReadsCommentsContinuedLinesAndRefusesWhatItCannotLoad) {
  const std::string lin = file("mine.lin",
                               ";; my linetypes\n"
                               "*LONG,Long pattern\n"
                               ";; a comment between header and pattern\n"
                               "A,1.0,-0.5,\n"
                               "  0.25,-0.5\n"
                               "*SHAPED,With shapes\n"
                               "A,.25,-.1,[CIRC1,shapes.shx,x=-.1,s=.1],-.1,1\n"
                               "*STYLED,Missing style\n"
                               "A,.5,[\"X\",NOSTYLE,S=.1],-.2\n"
                               "*GAPFIRST,Starts with a gap\n"
                               "A,-.5,.5\n");
  HostSession session;
  OdDbDatabase* db = session.db();
  const std::string out = session.run({"-LINETYPE", "L", "*", lin, ""});
  auto longer = linetype(db, L"LONG");
  ASSERT_TRUE(longer.get()) << out;
  EXPECT_EQ(lengths(longer.get()), (std::vector<double>{1.0, -0.5, 0.25, -0.5}));
  EXPECT_FALSE(linetype(db, L"SHAPED").get());
  EXPECT_FALSE(linetype(db, L"STYLED").get());
  EXPECT_FALSE(linetype(db, L"GAPFIRST").get());
  EXPECT_TRUE(contains(out, "Linetype \"SHAPED\" cannot be loaded: only text elements"));
  EXPECT_TRUE(contains(out, "text style \"NOSTYLE\" not found"));
  EXPECT_TRUE(contains(out, "the pattern must start with a dash or a dot"));

  // Loading again asks before replacing; No keeps the definition in the drawing.
  const std::string again = session.run({"-LINETYPE", "L", "LONG", lin, "N", ""});
  EXPECT_TRUE(contains(again, "Linetype \"LONG\" is already loaded.  Reload it? <Y>"));
  const std::string listed = session.run({"-LINETYPE", "?", lin, ""});
  EXPECT_TRUE(contains(listed, "LONG") && contains(listed, "Long pattern") && contains(listed, "GAPFIRST"));
  const std::string missing = session.run({"-LINETYPE", "L", "X", "nowhere.lin", lin, ""});
  EXPECT_TRUE(contains(missing, "Cannot find file \"nowhere.lin\"."));
}

TEST_F(LinetypeCommand, SetMakesALoadedLinetypeCurrent) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const std::string out = session.run({"-LINETYPE", "S", "CENTER", "", "L", "CENTER", "", "S", "center", ""});
  EXPECT_TRUE(contains(out, "Linetype \"CENTER\" not found.  Use the Load option to load it.")) << out;
  // A linetype loaded in the same command can be made current.
  ASSERT_FALSE(db->findRecord(OdDbNameTable::kLinetype, L"CENTER").isNull());
  EXPECT_EQ(db->getCELTYPE(), db->findRecord(OdDbNameTable::kLinetype, L"CENTER"));
  session.run({"LINETYPE", "S", "ByBlock", ""});
  EXPECT_EQ(db->getCELTYPE(), db->getLinetypeByBlockId());
}

TEST_F(LinetypeCommand, CreateWritesTheDefinitionAndLoadsIt) {
  const std::string lin = file("made.lin", "*OLD,Old one\nA,1,-1\n*KEEP,Kept\nA,2,-2\n");
  HostSession session;
  OdDbDatabase* db = session.db();
  const std::string out = session.run({"-LINETYPE", "C", "OLD", lin, "Y", "Replaced old", "2,-.5,0,-.5", ""});
  auto old = linetype(db, L"OLD");
  ASSERT_TRUE(old.get()) << out;
  EXPECT_EQ(lengths(old.get()), (std::vector<double>{2, -0.5, 0, -0.5}));
  EXPECT_EQ(old->comments(), OdString(L"Replaced old"));
  const std::string text = read(lin);
  EXPECT_TRUE(contains(text, "*KEEP,Kept\nA,2,-2\n"));
  EXPECT_TRUE(contains(text, "*OLD,Replaced old\nA,2,-.5,0,-.5\n"));
  EXPECT_FALSE(contains(text, "Old one"));

  // A bad pattern is refused and asked again; a new file is made.
  const std::string fresh = (m_folder / "fresh.lin").string();
  const std::string refused =
      session.run({"-LINETYPE", "C", "NEWONE", fresh, "New", "-1,1", "x", "1,-1", ""});
  EXPECT_TRUE(contains(refused, "Invalid pattern")) << refused;
  EXPECT_TRUE(contains(read(fresh), "*NEWONE,New\nA,1,-1\n"));
  EXPECT_TRUE(linetype(db, L"NEWONE").get());
}

TEST_F(LinetypeCommand, EscLeavesDrawingAndFilesAndUTakesTheLoadBack) {
  const std::string lin = file("esc.lin", "*ONE,One\nA,1,-1\n");
  HostSession session;
  for (const auto& replies :
       std::vector<std::vector<std::string>>{{"-LINETYPE", "^C"},
                                             {"-LINETYPE", "L", "^C"},
                                             {"-LINETYPE", "L", "ONE", "^C"},
                                             {"-LINETYPE", "L", "DASHED", "", "^C"},
                                             {"-LINETYPE", "S", "^C"},
                                             {"-LINETYPE", "?", "^C"},
                                             {"-LINETYPE", "C", "TWO", lin, "Two", "^C"},
                                             {"-LINETYPE", "C", "TWO", lin, "Two", "1,-1", "^C"}}) {
    expectUnchanged(session, replies);
  }
  EXPECT_EQ(read(lin), "*ONE,One\nA,1,-1\n");
  expectUnchanged(session, {"-LINETYPE", "L", "*", "", "S", "DASHED", "", "U"});
}

}  // namespace
