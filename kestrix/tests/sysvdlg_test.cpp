// sysvdlg: the shipped catalogue against the host's own variables, the
// catalogue lines, values as text, saved sets, and the dialog in the real
// host: editing, Cancel, the name filter, and a saved set applied to
// another drawing.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "harness.h"
#include "linetypes/SysVarCatalogue.h"
#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;
using namespace kestrix::sysvars;

namespace {

namespace fs = std::filesystem;

void writeAll(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

fs::path scratch(const std::string& name) {
  const fs::path folder = fs::temp_directory_path() / ("sysvdlg-test-" + std::to_string(getpid()));
  fs::create_directories(folder);
  return folder / name;
}

ryhost::SysVarValue variable(HostSession& session, const wchar_t* name) {
  ryhost::SysVarValue value;
  EXPECT_EQ(session.host().sysvars().get(name, value), RTNORM) << OdString(name).toUtf8();
  return value;
}

}  // namespace

// The catalogue copied beside the module, read here on its own: every host
// variable has a line, every line names a host variable, with a type that
// fits the host's and a description.
TEST(SysVarCatalogue, ShippedCatalogueDescribesExactlyTheHostVariables) {
  HostSession session;
  std::ifstream in(std::string(KESTRIX_BIN_DIR) + "/ExtendCmd/sysvdlg.dat");
  ASSERT_TRUE(in.good());
  const std::map<std::string, short> typeOf = {
      {"String", RTSTR},     {"Single character", RTSTR}, {"Switch", RTSHORT},   {"Enum", RTSHORT},
      {"Short", RTSHORT},    {"Integer", RTLONG},         {"Real", RTREAL},      {"2D Point", RTPOINT},
      {"3D Point", RT3DPOINT}, {"3D vector", RT3DPOINT}};
  std::map<std::string, int> listed;
  int headings = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '!') {
      ++headings;
      continue;
    }
    std::vector<std::string> fields;
    std::istringstream parts(line);
    for (std::string field; std::getline(parts, field, '|');) fields.push_back(field);
    ASSERT_GE(fields.size(), 3u) << line;
    ++listed[fields[0]];
    const ryhost::SysVarDef* def = session.host().sysvars().find(OdString(fields[0]));
    ASSERT_NE(def, nullptr) << fields[0] << " is no host variable";
    ASSERT_TRUE(typeOf.count(fields[1])) << line;
    EXPECT_EQ(typeOf.at(fields[1]), def->type) << line;
    EXPECT_FALSE(fields[2].empty()) << line;
  }
  EXPECT_GE(headings, 1);
  for (const OdString& name : session.host().sysvars().names()) {
    EXPECT_EQ(listed[name.toUtf8()], 1) << name.toUtf8() << " is not in the catalogue once";
  }
  EXPECT_EQ(listed.size(), session.host().sysvars().names().size());
}

TEST(SysVarCatalogue, LinesAndTheFolderFoundWithoutLetterCase) {
  CatalogueEntry entry;
  EXPECT_FALSE(CIniFile::parseLine(L"#LTSCALE|Real|comment", entry));
  EXPECT_FALSE(CIniFile::parseLine(L"LTSCALE|Real", entry));
  EXPECT_FALSE(CIniFile::parseLine(L"", entry));
  ASSERT_TRUE(CIniFile::parseLine(L"! Drawing aids\r", entry));
  EXPECT_TRUE(entry.heading);
  EXPECT_EQ(entry.name, OdString(L"Drawing aids"));
  // The fourth field runs to the end of the line, bars included.
  ASSERT_TRUE(CIniFile::parseLine(L"PDMODE|Enum|Point display|0|2|3\r", entry));
  EXPECT_FALSE(entry.heading);
  EXPECT_EQ(entry.type, OdString(L"Enum"));
  EXPECT_EQ(entry.description, OdString(L"Point display"));
  EXPECT_EQ(entry.values, OdString(L"0|2|3"));

  const fs::path module = scratch("module");
  fs::create_directories(module / "EXTENDCMD");
  EXPECT_TRUE(cataloguePath(OdString(module.string() + "/")).isEmpty());
  writeAll(module / "EXTENDCMD" / "SysVdlg.DAT", "# comment\n!Group\nLTSCALE|Real|Scale\n#CLAYER|String|x\n");
  const OdString found = cataloguePath(OdString(module.string() + "/"));
  EXPECT_EQ(found, OdString((module / "EXTENDCMD" / "SysVdlg.DAT").string()));
  CIniFile catalogue;
  ASSERT_TRUE(catalogue.Read(found));
  ASSERT_EQ(catalogue.entries().size(), 2u);
  EXPECT_NE(catalogue.find(L"ltscale"), nullptr);
  EXPECT_EQ(catalogue.find(L"CLAYER"), nullptr);
}

TEST(SysVarValues, ShownAndReadBack) {
  resbuf value{};
  value.restype = RTREAL;
  value.resval.rreal = 0.1;
  EXPECT_EQ(formatValue(value, L"Real"), OdString(L"0.1"));
  value.resval.rreal = 1.0 / 3.0;
  const OdString third = formatValue(value, L"Real");
  EXPECT_EQ(third, OdString(L"0.3333333333333333"));
  resbuf back{};
  ASSERT_TRUE(parseValue(third, RTREAL, back));
  EXPECT_EQ(back.resval.rreal, 1.0 / 3.0);

  value.restype = RTSHORT;
  value.resval.rint = 1;
  EXPECT_EQ(formatValue(value, L"Switch"), OdString(L"On"));
  EXPECT_EQ(formatValue(value, L"Short"), OdString(L"1"));
  ASSERT_TRUE(parseValue(L" off ", RTSHORT, back));
  EXPECT_EQ(back.resval.rint, 0);
  EXPECT_FALSE(parseValue(L"70000", RTSHORT, back));
  EXPECT_FALSE(parseValue(L"2x", RTSHORT, back));

  value.restype = RTPOINT;
  value.resval.rpoint[0] = 420;
  value.resval.rpoint[1] = -2.5;
  value.resval.rpoint[2] = 0;
  EXPECT_EQ(formatValue(value, L"2D Point"), OdString(L"420,-2.5,0"));
  ASSERT_TRUE(parseValue(L"1.5, 2", RT3DPOINT, back));
  EXPECT_EQ(back.resval.rpoint[0], 1.5);
  EXPECT_EQ(back.resval.rpoint[1], 2.0);
  EXPECT_EQ(back.resval.rpoint[2], 0.0);
  EXPECT_FALSE(parseValue(L"1,2,3,4", RT3DPOINT, back));
  EXPECT_FALSE(parseValue(L"1", RT3DPOINT, back));
  EXPECT_FALSE(parseValue(L"abc", RTREAL, back));
  EXPECT_FALSE(parseValue(L"1e400", RTREAL, back));

  ASSERT_TRUE(parseValue(L" Walls ", RTSTR, back));
  EXPECT_STREQ(back.resval.rstring, L" Walls ");  // strings keep their spaces
  releaseValue(back);
}

TEST(SysVarSetFile, MarkerWithoutLetterCaseAndRefusedFiles) {
  CSysVarSet set;
  set.add(L"LTSCALE", L"2.5");
  set.add(L"CLAYER", L"Wände");
  const fs::path saved = scratch("saved.isv");
  ASSERT_TRUE(set.Save(OdString(saved.string())));
  // Text mode ends lines with a carriage return and a line feed.
  EXPECT_EQ(att::readBytes(saved), "RyadSystemVarFile\r\nLTSCALE|2.5\r\nCLAYER|Wände\r\n");

  const fs::path lower = scratch("lower.isv");
  writeAll(lower, "ryadsystemvarfile\r\nDIMSCALE|4\r\nno bar here\r\nINSBASE|1,2,3\r\n");
  CSysVarSet loaded = set;
  ASSERT_TRUE(loaded.Load(OdString(lower.string())));
  ASSERT_EQ(loaded.items().size(), 2u);
  EXPECT_EQ(loaded.items()[0].name, OdString(L"DIMSCALE"));
  EXPECT_EQ(loaded.items()[0].value, OdString(L"4"));
  EXPECT_EQ(loaded.items()[1].value, OdString(L"1,2,3"));

  const fs::path wrong = scratch("wrong.isv");
  writeAll(wrong, "SystemVarFile\nDIMSCALE|4\n");
  EXPECT_FALSE(loaded.Load(OdString(wrong.string())));
  EXPECT_FALSE(loaded.Load(OdString(scratch("missing.isv").string())));
  EXPECT_EQ(loaded.items().size(), 2u);  // a refused file leaves the set as it was
}

// The dialog in the real host: a value typed for a row is set on OK, one U
// takes it back, and Cancel changes nothing.
TEST(SysVarDialog, EditOkUndoAndCancel) {
  HostSession session;
  session.loadModule();
  std::string out = session.run({"sysvdlg", "3098=LTSCALE", "3100:1", "3101=2.5", "3102", "OK"});
  EXPECT_THAT(out, HasSubstr("LTSCALE | Real | 1 | Global linetype scale"));
  EXPECT_THAT(out, HasSubstr("1 system variables set."));
  EXPECT_EQ(variable(session, L"LTSCALE").r, 2.5);
  session.run({"U"});
  EXPECT_EQ(variable(session, L"LTSCALE").r, 1.0);

  out = session.run({"sysvdlg", "3098=LTSCALE", "3100:1", "3101=4", "3102", "Cancel"});
  EXPECT_THAT(out, HasSubstr("LTSCALE | Real | 4 |"));  // shown as changed in the dialog
  EXPECT_THAT(out, Not(HasSubstr("system variables set")));
  EXPECT_EQ(variable(session, L"LTSCALE").r, 1.0);

  // Esc in the dialog is Cancel too; a bad value and a read-only row are refused in the dialog.
  out = session.run({"sysvdlg", "3098=DIMS*", "3100:1", "3101=big", "3102", "3100:2", "3101=Mine", "3102", "^C"});
  EXPECT_THAT(out, HasSubstr("\"big\" is not a value of type Real."));
  EXPECT_THAT(out, HasSubstr("DIMSTYLE (Read-only)"));
  EXPECT_EQ(variable(session, L"DIMSCALE").r, 1.0);
  EXPECT_EQ(variable(session, L"DIMSTYLE").s, OdString(L"Standard"));
}

// The list holds the catalogue's variable lines, filtered by a wildcard
// pattern, with the headings of the groups that keep a variable.
TEST(SysVarDialog, FilterByNameKeepsTheHeadingsOfItsGroups) {
  HostSession session;
  session.loadModule();
  std::string out = session.run({"sysvdlg", "3098=DIM*", "Cancel"});
  const size_t filtered = out.find("[DIM*]");
  ASSERT_NE(filtered, std::string::npos);
  const std::string list = out.substr(filtered);
  EXPECT_THAT(list, HasSubstr("0  [Editing, selection and session]"));
  EXPECT_THAT(list, HasSubstr("1  DIMASSOC | Enum | 2 |"));
  EXPECT_THAT(list, HasSubstr("2  [Drawing settings]"));
  EXPECT_THAT(list, HasSubstr("7  DIMTXT | Real | 2.5 |"));
  EXPECT_THAT(list, Not(HasSubstr(" 8  ")));
  EXPECT_THAT(list, Not(HasSubstr("[Information]")));
  EXPECT_THAT(list, HasSubstr("3097  text     DIM*"));

  // Unfiltered, the list has one row per variable line and per heading of the catalogue.
  out = session.run({"sysvdlg", "Cancel"});
  const size_t rows = session.host().sysvars().names().size() + 3;
  EXPECT_THAT(out, HasSubstr(std::to_string(rows - 1) + "  DWGTITLED | Switch (Read-only) | Off |"));
  EXPECT_THAT(out, Not(HasSubstr(" " + std::to_string(rows) + "  ")));
}

// Chosen rows saved from one drawing and the file loaded into another: the
// label shows "*.From File", OK sets the values, read-only ones are skipped,
// a value the host refuses is named.
TEST(SysVarDialog, SavedSetRestoresTheVariablesInAnotherDrawing) {
  const fs::path file = scratch("chosen.isv");
  fs::remove(file);
  {
    HostSession first;
    first.loadModule();
    first.run({"sysvdlg", "3098=DIMSCALE,INSBASE,ANGDIR,DWGNAME", "3100:2", "3101=On", "3102", "3100:1",
               "3101=7.25", "3102", "3100:3", "3101=10,20,30", "3102", "OK"});
    EXPECT_EQ(variable(first, L"DIMSCALE").r, 7.25);
    const std::string out =
        first.run({"sysvdlg", "3098=DIMSCALE,INSBASE,ANGDIR,DWGNAME", "3100:1,2,3,5", "3104", file.string(), "OK"});
    EXPECT_THAT(out, HasSubstr("4 system variables saved to " + file.string()));
  }
  EXPECT_EQ(att::readBytes(file), "RyadSystemVarFile\r\nDIMSCALE|7.25\r\nANGDIR|On\r\nINSBASE|10,20,30\r\nDWGNAME|Drawing1.dwg\r\n");

  // The file as another program might write it: lower-case marker, a layer the drawing lacks.
  std::string text = att::readBytes(file);
  text.replace(0, 17, "ryadsystemvarfile");
  writeAll(file, text + "CLAYER|NoSuchLayer\n");

  HostSession second(CorpusDrawing{"examples_dxf_Minimal_DXF_AC1009.dxf"});
  second.loadModule();
  const OdString name = variable(second, L"DWGNAME").s;
  const std::string out = second.run({"sysvdlg", "3105", file.string(), "OK"});
  EXPECT_THAT(out, HasSubstr("3097  text     *.From File"));
  EXPECT_THAT(out, HasSubstr("1  ANGDIR | Switch | On |"));
  EXPECT_THAT(out, HasSubstr("CLAYER was not set: the host does not take the value \"NoSuchLayer\"."));
  EXPECT_THAT(out, HasSubstr("3 system variables set."));
  EXPECT_EQ(variable(second, L"ANGDIR").i, 1);
  EXPECT_EQ(variable(second, L"DIMSCALE").r, 7.25);
  const ryhost::SysVarValue base = variable(second, L"INSBASE");
  EXPECT_EQ(base.p[0], 10.0);
  EXPECT_EQ(base.p[1], 20.0);
  EXPECT_EQ(base.p[2], 30.0);
  EXPECT_EQ(variable(second, L"DWGNAME").s, name);
  EXPECT_EQ(variable(second, L"CLAYER").s, OdString(L"0"));
}
