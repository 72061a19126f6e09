// -PURGE: only what nothing uses goes, nested blocks (and what only their
// entities used) go with the blocks that held them, the records a drawing
// always keeps stay; on corpus drawings the written result differs from the
// drawing before the purge only by the blocks purged, as an independent
// reader sees the two files.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDimension.h"
#include "host_test_support.h"

namespace {

using namespace hosttest;
namespace fs = std::filesystem;

// ---------------------------------------------------------------- a drawing with nested blocks

// INNER: a dashed line on INNER_LAYER; MIDDLE: an insert of INNER with an
// attribute in ATT_STYLE on ATT_LAYER; nothing inserts MIDDLE. KEPT holds an
// insert of SHARED and is inserted in model space. DIMSTYLED names
// DIM_TEXT as its text style and nothing uses it; UNUSED is an empty layer.
struct NestedDrawing {
  explicit NestedDrawing(OdDbDatabase* db) {
    addRecord(db, OdDbNameTable::kLayer, OdDbLayerTableRecord::createObject().get(), L"INNER_LAYER");
    addRecord(db, OdDbNameTable::kLayer, OdDbLayerTableRecord::createObject().get(), L"ATT_LAYER");
    addRecord(db, OdDbNameTable::kLayer, OdDbLayerTableRecord::createObject().get(), L"UNUSED");
    const OdDbObjectId dashed =
        addRecord(db, OdDbNameTable::kLinetype, OdDbLinetypeTableRecord::createObject().get(), L"DASHED");
    const OdDbObjectId attStyle = addRecord(db, OdDbNameTable::kTextStyle,
                                            OdDbTextStyleTableRecord::createObject().get(), L"ATT_STYLE");
    const OdDbObjectId dimText =
        addRecord(db, OdDbNameTable::kTextStyle, OdDbTextStyleTableRecord::createObject().get(), L"DIM_TEXT");
    OdSmartPtr<OdDbDimStyleTableRecord> dimStyle = OdDbDimStyleTableRecord::createObject();
    dimStyle->setDimtxsty(dimText);
    addRecord(db, OdDbNameTable::kDimStyle, dimStyle.get(), L"DIMSTYLED");

    inner = addBlock(db, L"INNER");
    OdDbLinePtr line = new OdDbLine(OdGePoint3d(0, 0, 0), OdGePoint3d(1, 0, 0));
    line->setDatabaseDefaults(db);
    line->setLayer(db->findRecord(OdDbNameTable::kLayer, L"INNER_LAYER"));
    line->setLinetype(dashed);
    appendTo(inner, line.get());

    middle = addBlock(db, L"MIDDLE");
    OdSmartPtr<OdDbAttribute> attribute = addAttribute(insertBlock(middle, inner), L"NUMBER", L"7");
    attribute->setTextStyle(attStyle);
    attribute->setLayer(db->findRecord(OdDbNameTable::kLayer, L"ATT_LAYER"));
    attribute.release();

    shared = addBlock(db, L"SHARED");
    OdDbCirclePtr circle = new OdDbCircle(OdGePoint3d(0, 0, 0), 1.0);
    circle->setDatabaseDefaults(db);
    appendTo(shared, circle.get());
    kept = addBlock(db, L"KEPT");
    insertBlock(kept, shared);
    insertBlock(db->getModelSpaceId(), kept);
  }
  OdDbObjectId inner, middle, shared, kept;
};

bool exists(OdDbDatabase* db, OdDbNameTable table, const wchar_t* name) {
  return !db->findRecord(table, name).isNull();
}

TEST(PurgeCommand, AllTakesUnusedRecordsAndWhatOnlyPurgedBlocksUsed) {
  HostSession session;
  OdDbDatabase* db = session.db();
  NestedDrawing drawing(db);
  session.run({"-LAYER", "M", "CURRENT_EMPTY", ""});
  db->setTEXTSTYLE(addRecord(db, OdDbNameTable::kTextStyle, OdDbTextStyleTableRecord::createObject().get(),
                             L"CURRENT_STYLE"));
  const std::string out = session.run({"-PURGE", "A", "", "N"});

  for (const wchar_t* block : {L"MIDDLE", L"INNER"}) EXPECT_FALSE(exists(db, OdDbNameTable::kBlock, block));
  for (const wchar_t* block : {L"KEPT", L"SHARED"}) EXPECT_TRUE(exists(db, OdDbNameTable::kBlock, block));
  for (const wchar_t* name : {L"INNER_LAYER", L"ATT_LAYER", L"UNUSED"})
    EXPECT_FALSE(exists(db, OdDbNameTable::kLayer, name)) << OdString(name).toUtf8();
  // Layer 0 and the current layer stay even when empty.
  EXPECT_TRUE(exists(db, OdDbNameTable::kLayer, L"0") && exists(db, OdDbNameTable::kLayer, L"CURRENT_EMPTY"));
  EXPECT_FALSE(exists(db, OdDbNameTable::kLinetype, L"DASHED"));
  for (const wchar_t* name : {L"ByLayer", L"ByBlock", L"Continuous"})
    EXPECT_TRUE(exists(db, OdDbNameTable::kLinetype, name));
  EXPECT_FALSE(exists(db, OdDbNameTable::kTextStyle, L"ATT_STYLE"));
  EXPECT_TRUE(exists(db, OdDbNameTable::kTextStyle, L"Standard"));
  EXPECT_TRUE(exists(db, OdDbNameTable::kTextStyle, L"CURRENT_STYLE"));
  // The unused dimension style goes, and with it the text style only it used.
  EXPECT_FALSE(exists(db, OdDbNameTable::kDimStyle, L"DIMSTYLED"));
  EXPECT_FALSE(exists(db, OdDbNameTable::kTextStyle, L"DIM_TEXT"));
  EXPECT_TRUE(contains(out, "Deleting block \"MIDDLE\".") && contains(out, "2 blocks deleted.")) << out;
  EXPECT_TRUE(contains(out, "Deleting layer \"ATT_LAYER\".") && contains(out, "3 layers deleted."));
  // The purged blocks' entities are erased with them.
  OdDbObjectPtr innerBlock = drawing.inner.openObject(OdDb::kForRead, true);
  for (const OdDbObjectId& id : static_cast<OdDbBlockTableRecord*>(innerBlock.get())->entityIds())
    EXPECT_TRUE(id.isErased());
  innerBlock.release();

  // A second purge finds nothing more: the first went all the way down.
  const std::string again = session.run({"-PURGE", "A", "*", "N"});
  EXPECT_TRUE(contains(again, "No unreferenced blocks found.") &&
              contains(again, "No unreferenced layers found."));
  EXPECT_FALSE(contains(again, "Deleting"));
}

TEST(PurgeCommand, TypeNamesAndVerificationLimitWhatGoes) {
  HostSession session;
  OdDbDatabase* db = session.db();
  NestedDrawing drawing(db);
  // Blocks named MID* only: INNER stays (the pattern does not name it), and so do its layer and linetype.
  session.run({"-PURGE", "B", "MID*", "N"});
  EXPECT_FALSE(exists(db, OdDbNameTable::kBlock, L"MIDDLE"));
  EXPECT_TRUE(exists(db, OdDbNameTable::kBlock, L"INNER"));
  EXPECT_TRUE(exists(db, OdDbNameTable::kLayer, L"UNUSED"));
  session.run({"-PURGE", "LA", "", "N"});
  EXPECT_FALSE(exists(db, OdDbNameTable::kLayer, L"UNUSED"));
  EXPECT_FALSE(
      exists(db, OdDbNameTable::kLayer, L"ATT_LAYER"));  // used only by the purged MIDDLE's attribute
  EXPECT_TRUE(exists(db, OdDbNameTable::kLayer, L"INNER_LAYER"));

  // Verification: No keeps a block, and what it uses stays too.
  const std::string out = session.run({"-PURGE", "A", "*", "Y", "N", "", ""});
  EXPECT_TRUE(contains(out, "Purge block \"INNER\"? <N>")) << out;
  EXPECT_TRUE(contains(out, "Purge dimension style \"DIMSTYLED\"? <N>"));
  EXPECT_TRUE(contains(out, "Purge text style \"ATT_STYLE\"? <N>"));
  EXPECT_TRUE(contains(out, "No unreferenced blocks found."));
  EXPECT_TRUE(exists(db, OdDbNameTable::kTextStyle, L"ATT_STYLE"));
  EXPECT_TRUE(exists(db, OdDbNameTable::kBlock, L"INNER"));
  EXPECT_TRUE(exists(db, OdDbNameTable::kLayer, L"INNER_LAYER"));
  EXPECT_TRUE(exists(db, OdDbNameTable::kLinetype, L"DASHED"));
}

TEST(PurgeCommand, EscAtEachPromptAndUChangeNothing) {
  HostSession session;
  NestedDrawing drawing(session.db());
  for (const auto& replies : std::vector<std::vector<std::string>>{{"-PURGE", "^C"},
                                                                   {"-PURGE", "A", "^C"},
                                                                   {"-PURGE", "A", "", "^C"},
                                                                   {"-PURGE", "A", "", "Y", "Y", "^C"}}) {
    expectUnchanged(session, replies);
  }
  expectUnchanged(session, {"PURGE", "A", "", "N", "U"});
}

// ---------------------------------------------------------------- corpus drawings

struct BlockContents {
  std::map<std::wstring, std::vector<OdUInt64>> handles;  // by upper-case block name
};

BlockContents blockContents(OdDbDatabase* db) {
  BlockContents contents;
  for (const OdDbObjectId& id :
       static_cast<OdDbSymbolTable*>(db->getBlockTableId().openObject().get())->recordIds()) {
    if (id.isErased()) continue;
    OdDbObjectPtr object = id.openObject();
    auto* block = static_cast<OdDbBlockTableRecord*>(object.get());
    auto& list = contents.handles[block->getName().upper().str()];
    for (const OdDbObjectId& entity : block->entityIds()) {
      if (!entity.isErased()) list.push_back(entity.handle().value());
    }
  }
  return contents;
}

// The blocks some live entity or dimension style uses, followed through the blocks they use.
std::set<std::wstring> usedBlocks(OdDbDatabase* db) {
  std::set<std::wstring> used;
  std::vector<OdDbObjectId> pending;
  auto use = [&](const OdDbObjectId& block) {
    if (block.isNull() || block.isErased()) return;
    OdDbObjectPtr object = block.openObject();
    if (used.insert(static_cast<OdDbBlockTableRecord*>(object.get())->getName().upper().str()).second)
      pending.push_back(block);
  };
  auto walk = [&](const OdDbBlockTableRecord* block) {
    for (const OdDbObjectId& id : block->entityIds()) {
      if (id.isErased()) continue;
      OdDbObjectPtr entity = id.openObject();
      if (auto* reference = dynamic_cast<OdDbBlockReference*>(entity.get()))
        use(reference->blockTableRecord());
      if (auto* dimension = dynamic_cast<OdDbDimension*>(entity.get())) use(dimension->dimBlockId());
    }
  };
  for (const OdDbObjectId& id :
       static_cast<OdDbSymbolTable*>(db->getBlockTableId().openObject().get())->recordIds()) {
    if (id.isErased()) continue;
    OdDbObjectPtr object = id.openObject();
    auto* block = static_cast<OdDbBlockTableRecord*>(object.get());
    if (block->isLayout()) walk(block);
  }
  while (!pending.empty()) {
    OdDbObjectPtr object = pending.back().openObject();
    pending.pop_back();
    walk(static_cast<OdDbBlockTableRecord*>(object.get()));
  }
  return used;
}

std::string independentComparison(const fs::path& before, const fs::path& after) {
  const std::string command = "/usr/bin/python3 /work/shared/tools/dxf_same_entities.py '" + before.string() +
                              "' '" + after.string() + "' 2>&1";
  std::string output;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe)) output += buffer;
    pclose(pipe);
  }
  while (!output.empty() && output.back() == '\n') output.pop_back();
  return output;
}

class PurgeCorpus : public testing::TestWithParam<const char*> {};

TEST_P(PurgeCorpus, OnlyUnusedBlocksGoAndEverythingElseStaysAsItWas) {
  HostSession session(CorpusDrawing{GetParam()});
  OdDbDatabase* db = session.db();
  const fs::path folder = fs::temp_directory_path() / ("ryad-purge-" + std::to_string(getpid()));
  fs::create_directories(folder);
  const fs::path before = folder / "before.dxf", after = folder / "after.dxf";
  odDxfWriteFile(db, OdString(before.string()));
  const std::string unpurged = drawingText(db);
  const BlockContents contentsBefore = blockContents(db);
  const std::set<std::wstring> used = usedBlocks(db);

  session.run({"-PURGE", "A", "", "N"});
  odDxfWriteFile(db, OdString(after.string()));
  const BlockContents contentsAfter = blockContents(db);

  // Blocks that stay hold exactly the entities they held; those that went were used by nothing.
  std::set<std::string> purged;
  for (const auto& [name, handles] : contentsBefore.handles) {
    auto found = contentsAfter.handles.find(name);
    if (found == contentsAfter.handles.end()) {
      purged.insert(OdString(name).toUtf8());
      EXPECT_EQ(used.count(name), 0u) << OdString(name).toUtf8() << " was used";
    } else {
      EXPECT_EQ(found->second, handles) << OdString(name).toUtf8();
    }
  }
  for (const std::wstring& name : used) EXPECT_EQ(contentsAfter.handles.count(name), 1u);

  // The independent reader sees the same entities everywhere, no new audit
  // errors, and no other difference than the blocks purged.
  const std::string comparison = independentComparison(before, after);
  if (purged.empty()) {
    EXPECT_EQ(comparison, "same");
  } else {
    std::stringstream problems(comparison);
    std::string problem;
    while (std::getline(problems, problem, ';')) {
      if (problem.front() == ' ') problem.erase(0, 1);
      const bool missingBlock = problem.rfind("block ", 0) == 0 && problem.size() > 14 &&
                                problem.substr(problem.size() - 8) == " missing" &&
                                purged.count(problem.substr(6, problem.size() - 14)) != 0;
      EXPECT_TRUE(missingBlock) << problem;
    }
  }
  fs::remove_all(folder);

  session.run({"U"});
  EXPECT_EQ(drawingText(db), unpurged);
}

INSTANTIATE_TEST_SUITE_P(Drawings, PurgeCorpus,
                         testing::Values("examples_dxf_multi_insert_with_attribs.dxf",
                                         "examples_dxf_dimension_in_block.dxf",
                                         "integration_tests_data_issue_1359_1.dxf",
                                         "examples_dxf_acad_table_with_blk_ref.dxf",
                                         "integration_tests_data_mtext_text_frame.dxf"));

}  // namespace
