// BP, PrintPlt, batpurge and movebak in the real host with the real module,
// over folders of corpus drawings and a file that is no drawing. Pictures
// are checked by python's XML reader, purged drawings by ezdxf
// (dxf_purged.py): same entities, unused records gone.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"
#include "harness.h"

namespace fs = std::filesystem;
using ::testing::HasSubstr;

namespace {

const char* const kDrawings[] = {"examples_dxf_hatches_1.dxf", "examples_dxf_dimension_in_block.dxf",
                                 "examples_edgeminer_2_polylines.dxf"};

fs::path freshFolder(const std::string& name) {
  const fs::path folder = fs::temp_directory_path() / ("kestrix-batch-" + std::to_string(getpid()) + "-" + name);
  fs::remove_all(folder);
  fs::create_directories(folder);
  return folder;
}

std::string contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeText(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

// Corpus drawings and one file that is not a drawing.
void fillFolder(const fs::path& folder) {
  for (const char* name : kDrawings) fs::copy_file(fs::path(KESTRIX_CORPUS_DIR) / name, folder / name);
  writeText(folder / "broken.dxf", "this is not a drawing\n");
}

int run(const std::string& command) { return std::system(command.c_str()); }

OdDbObjectId addRecord(OdDbDatabase* db, OdDbNameTable table, OdDbSymbolTableRecord* record) {
  OdDbObjectPtr t = db->tableId(table).openObject(OdDb::kForWrite);
  return static_cast<OdDbSymbolTable*>(t.get())->add(record);
}

template <class Record>
OdDbObjectId named(OdDbDatabase* db, OdDbNameTable table, const wchar_t* name) {
  OdSmartPtr<Record> record = Record::createObject();
  record->setName(name);
  return addRecord(db, table, record.get());
}

void addLine(OdDbDatabase* db, const OdDbObjectId& blockId, const OdDbObjectId& layer) {
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint(OdGePoint3d(10, 5, 0));
  line->setDatabaseDefaults(db);
  OdDbObjectPtr block = blockId.openObject(OdDb::kForWrite);
  static_cast<OdDbBlockTableRecord*>(block.get())->appendOdDbEntity(line.get());
  line->setLayer(layer);
}

// A drawing with records nothing uses: a layer, a linetype, a text style, and
// a block whose line is the only user of layer BLOCKONLY (which goes only
// once the block has gone). Layer USED holds a line of model space.
void writeDrawingWithUnusedRecords(const fs::path& path) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  const OdDbObjectId used = named<OdDbLayerTableRecord>(db.get(), OdDbNameTable::kLayer, L"USED");
  named<OdDbLayerTableRecord>(db.get(), OdDbNameTable::kLayer, L"UNUSED_L");
  const OdDbObjectId blockOnly = named<OdDbLayerTableRecord>(db.get(), OdDbNameTable::kLayer, L"BLOCKONLY");
  named<OdDbLinetypeTableRecord>(db.get(), OdDbNameTable::kLinetype, L"UNUSED_LT");
  named<OdDbTextStyleTableRecord>(db.get(), OdDbNameTable::kTextStyle, L"UNUSED_S");
  const OdDbObjectId block = named<OdDbBlockTableRecord>(db.get(), OdDbNameTable::kBlock, L"UNUSED_B");
  addLine(db.get(), block, blockOnly);
  addLine(db.get(), db->getModelSpaceId(), used);
  odDxfWriteFile(db.get(), OdString(path.string()));
}

}  // namespace

TEST(BatchCommands, BpPlotsEveryReadableDrawingNamesTheOthersAndPrintPltKeepsTheSettings) {
  const fs::path folder = freshFolder("bp"), out = folder / "pictures";
  fillFolder(folder);
  writeText(folder / "notes.txt", "not matched by the pattern\n");
  {
    HostSession session;
    ASSERT_TRUE(session.loadModule());
    const std::string shown = session.run({"BP", folder.string(), "", "Svg", out.string()});
    EXPECT_THAT(shown, HasSubstr("3 of 4 drawing(s) plotted, 1 failed."));
    EXPECT_THAT(shown, HasSubstr((folder / "broken.dxf").string() + ": cannot be read"));
    EXPECT_EQ(session.host().documentCount(), 1);  // every drawing opened was closed again
  }
  std::string svgs;
  int pictures = 0;
  for (const auto& entry : fs::directory_iterator(out)) {
    ++pictures;
    EXPECT_EQ(entry.path().extension(), ".svg");
    svgs += " " + entry.path().string();
  }
  EXPECT_EQ(pictures, 3);
  for (const char* name : kDrawings) EXPECT_TRUE(fs::exists(out / fs::path(name).replace_extension(".svg"))) << name;
  EXPECT_EQ(run("/usr/bin/python3 -c \"import sys, xml.etree.ElementTree as E; "
                "[E.parse(p).getroot().tag.endswith('svg') or sys.exit(1) for p in sys.argv[1:]]\"" + svgs),
            0);

  // A list file: one name relative to the list, one that does not exist.
  writeText(folder / "list.txt", std::string("; drawings to plot\n") + kDrawings[0] + "\n\nmissing.dxf\n");
  {
    HostSession session;
    ASSERT_TRUE(session.loadModule());
    const std::string shown = session.run({"BP", (folder / "list.txt").string(), "Png", ""});
    EXPECT_THAT(shown, HasSubstr("1 of 2 drawing(s) plotted, 1 failed."));
    EXPECT_THAT(shown, HasSubstr("missing.dxf: cannot be read"));
  }
  EXPECT_EQ(contents(folder / fs::path(kDrawings[0]).replace_extension(".png")).substr(1, 3), "PNG");

  // PrintPlt: the device BP used last (PNG), beside the current drawing.
  {
    HostSession session(CorpusDrawing{(folder / kDrawings[1]).string()});
    ASSERT_TRUE(session.loadModule());
    EXPECT_THAT(session.run({"PrintPlt", ""}), HasSubstr("PNG, A4 Landscape, Fit, Center, colour"));
    EXPECT_EQ(contents(folder / fs::path(kDrawings[1]).replace_extension(".png")).substr(1, 3), "PNG");
    // Settings: a paper size PLOT would refuse is asked again; the answers are kept.
    const std::string shown = session.run({"PrintPlt", "Settings", "Pdf", "Z9", "A3", "Portrait", "1=0", "", "", "No"});
    EXPECT_THAT(shown, HasSubstr("Unknown paper size."));
    EXPECT_THAT(shown, HasSubstr("Requires a scale such as 1=100, or Fit."));
    EXPECT_THAT(shown, HasSubstr("Plotted to " + (folder / fs::path(kDrawings[1]).replace_extension(".pdf")).string()));
    EXPECT_THAT(session.run({"PrintPlt", ""}), HasSubstr("PDF, A3 Portrait, Fit, Center, monochrome"));
  }
  EXPECT_EQ(contents(folder / fs::path(kDrawings[1]).replace_extension(".pdf")).substr(0, 5), "%PDF-");
  fs::remove_all(folder);
}

TEST(BatchCommands, BatpurgeRemovesUnusedRecordsKeepsEntitiesAndABackup) {
  const fs::path folder = freshFolder("purge"), originals = freshFolder("purge-originals");
  fillFolder(folder);
  writeDrawingWithUnusedRecords(folder / "unused.dxf");
  for (const auto& entry : fs::directory_iterator(folder)) fs::copy_file(entry.path(), originals / entry.path().filename());
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::string shown = session.run({"batpurge", folder.string(), "", ""});
  EXPECT_THAT(shown, HasSubstr("4 of 5 drawing(s) purged, 1 failed."));
  EXPECT_THAT(shown, HasSubstr("broken.dxf: cannot be read"));
  EXPECT_THAT(shown, HasSubstr("unused.dxf: \n  purged 1 blocks, 2 layers, 1 linetypes, 1 text styles, 0 dimension styles"));
  EXPECT_FALSE(fs::exists(folder / "broken.bak"));
  const std::string checker = std::string(KESTRIX_SOURCE_DIR) + "/tests/dxf_purged.py";
  for (const std::string name : {"examples_dxf_hatches_1", "examples_dxf_dimension_in_block",
                                 "examples_edgeminer_2_polylines", "unused"}) {
    // The backup is the drawing as it was, byte for byte.
    EXPECT_EQ(contents(folder / (name + ".bak")), contents(originals / (name + ".dxf"))) << name;
    std::string command = "/usr/bin/python3 " + checker + " " + (originals / (name + ".dxf")).string() + " " +
                          (folder / (name + ".dxf")).string();
    if (name == "unused") command += " layer:UNUSED_L layer:BLOCKONLY block:UNUSED_B ltype:UNUSED_LT style:UNUSED_S";
    EXPECT_EQ(run(command), 0) << name;
  }
  // The layer that model space uses stays.
  EXPECT_NE(run("/usr/bin/python3 " + checker + " " + (originals / "unused.dxf").string() + " " +
                (folder / "unused.dxf").string() + " layer:USED"),
            0);
  fs::remove_all(folder);
  fs::remove_all(originals);
}

TEST(BatchCommands, MovebakMovesBackupsAndReplacesNothingUnasked) {
  const fs::path from = freshFolder("bak-from"), to = freshFolder("bak-to");
  writeText(from / "a.bak", "a");
  writeText(from / "b.bak", "new b");
  writeText(from / "c.sv$", "c");
  writeText(from / "d.dxf", "d");
  writeText(to / "b.bak", "old b");
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::string shown = session.run({"movebak", from.string(), to.string(), "No"});
  EXPECT_THAT(shown, HasSubstr("b.bak exists. Replace it? [Yes/No/All] <No>: "));
  EXPECT_THAT(shown, HasSubstr("2 backup file(s) moved to " + to.string() + ". 1 left where they were."));
  EXPECT_EQ(contents(to / "a.bak"), "a");
  EXPECT_EQ(contents(to / "c.sv$"), "c");
  EXPECT_EQ(contents(to / "b.bak"), "old b");
  EXPECT_EQ(contents(from / "b.bak"), "new b");
  EXPECT_TRUE(fs::exists(from / "d.dxf"));
  EXPECT_FALSE(fs::exists(from / "a.bak"));
  // Yes replaces.
  EXPECT_THAT(session.run({"movebak", from.string(), to.string(), "Yes"}), HasSubstr("1 backup file(s) moved"));
  EXPECT_EQ(contents(to / "b.bak"), "new b");
  fs::remove_all(from);
  fs::remove_all(to);
}
