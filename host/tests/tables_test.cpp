// Symbol tables through lists: searching, walking in table order with a
// position per table, record names, blocks and registered applications.
#include <string>
#include <vector>

#include "DbSymbolTable.h"
#include "harness.h"
#include "host_test_support.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"
#include "sdk/EntityLists.h"

namespace {

std::vector<std::wstring> walk(const ACHAR* table) {
  std::vector<std::wstring> names;
  for (int rewind = 1;; rewind = 0) {
    List record(rydbTblNext(table, rewind));
    if (!record.head) break;
    names.push_back(record.text(2));
  }
  return names;
}

void makeLayer(const ACHAR* name, int colour, const ACHAR* linetype = L"Continuous") {
  List list(ryutBuildList(RTDXF0, L"LAYER", 2, name, 70, 0, 62, colour, 6, linetype, RTNONE));
  ASSERT_EQ(rydbEntMake(list.head), RTNORM);
}

TEST(Tables, LayerRecordListAndOffColour) {
  HostSession session;
  makeLayer(L"Walls", 5);
  makeLayer(L"Hidden", -3);
  List walls(rydbTblSearch(L"layer", L"WALLS", 0));
  ASSERT_NE(walls.head, nullptr);
  EXPECT_EQ(walls.text(0), L"LAYER");
  EXPECT_EQ(walls.text(2), L"Walls");
  EXPECT_EQ(walls.group(70)->resval.rint, 0);
  EXPECT_EQ(walls.group(62)->resval.rint, 5);
  EXPECT_EQ(walls.text(6), L"Continuous");
  // Table lists carry neither owner, handle nor markers.
  EXPECT_EQ(walls.group(330), nullptr);
  EXPECT_EQ(walls.group(5), nullptr);
  EXPECT_EQ(walls.group(100), nullptr);
  List hidden(rydbTblSearch(L"LAYER", L"Hidden", 0));
  EXPECT_EQ(hidden.group(62)->resval.rint, -3);
  EXPECT_EQ(rydbTblSearch(L"LAYER", L"Nothing", 0), nullptr);
}

TEST(Tables, WalksKeepAPositionPerTable) {
  HostSession session;
  makeLayer(L"A", 1);
  makeLayer(L"B", 2);
  const std::vector<std::wstring> layers = walk(L"LAYER");
  ASSERT_GE(layers.size(), 3u);
  EXPECT_EQ(layers.front(), L"0");
  EXPECT_EQ(layers[layers.size() - 2], L"A");
  EXPECT_EQ(layers.back(), L"B");

  // Two tables walked by turns do not disturb each other.
  List firstLayer(rydbTblNext(L"LAYER", 1));
  List firstStyle(rydbTblNext(L"STYLE", 1));
  List secondLayer(rydbTblNext(L"LAYER", 0));
  EXPECT_EQ(firstLayer.text(2), layers[0]);
  EXPECT_EQ(firstStyle.text(0), L"STYLE");
  EXPECT_EQ(secondLayer.text(2), layers[1]);
  // A search with setNext moves the walk to the record after the one found.
  List found(rydbTblSearch(L"LAYER", L"A", 1));
  List after(rydbTblNext(L"LAYER", 0));
  EXPECT_EQ(after.text(2), L"B");
  EXPECT_EQ(rydbTblNext(L"LAYER", 0), nullptr);

  EXPECT_EQ(rydbTblNext(L"LAYERS", 1), nullptr);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadTableName);
}

TEST(Tables, CorpusDrawingTablesAndBlocks) {
  HostSession session(CorpusDrawing{"examples_dxf_multi_insert_with_attribs.dxf"});
  EXPECT_EQ(walk(L"LAYER"), (std::vector<std::wstring>{L"0", L"Defpoints", L"FLAGS"}));
  List linetype(rydbTblSearch(L"LTYPE", L"Continuous", 0));
  ASSERT_NE(linetype.head, nullptr);
  EXPECT_EQ(linetype.group(72)->resval.rint, 65);
  EXPECT_EQ(linetype.group(73)->resval.rint, 0);
  EXPECT_DOUBLE_EQ(linetype.group(40)->resval.rreal, 0.0);
  // A linetype made from a list reads back with its dashes in order.
  List dashed(ryutBuildList(RTDXF0, L"LTYPE", 2, L"DASHED2", 70, 0, 3, L"__ __", 72, 65, 73, 2, 40, 0.75, 49, 0.5,
                            49, -0.25, RTNONE));
  ASSERT_EQ(rydbEntMake(dashed.head), RTNORM);
  List made(rydbTblSearch(L"LTYPE", L"dashed2", 0));
  ASSERT_NE(made.group(49, 1), nullptr);
  EXPECT_EQ(made.group(73)->resval.rint, 2);
  EXPECT_DOUBLE_EQ(made.group(49, 0)->resval.rreal, 0.5);
  EXPECT_DOUBLE_EQ(made.group(49, 1)->resval.rreal, -0.25);
  EXPECT_EQ(made.text(3), L"__ __");
  List style(rydbTblSearch(L"STYLE", L"Standard", 0));
  EXPECT_DOUBLE_EQ(style.group(42)->resval.rreal, 2.5);
  EXPECT_EQ(style.text(3), L"txt");

  // The spaces' blocks are not in the walk of the BLOCK table.
  EXPECT_EQ(walk(L"BLOCK"), (std::vector<std::wstring>{L"FLAG"}));
  List block(rydbTblSearch(L"BLOCK", L"flag", 0));
  EXPECT_EQ(block.text(0), L"BLOCK");
  EXPECT_EQ(block.group(70)->resval.rint, 0);
  ASSERT_NE(block.group(10), nullptr);
  ASSERT_NE(block.group(-2), nullptr);
  List first(rydbEntGet(block.group(-2)->resval.rlname));
  EXPECT_EQ(first.text(0), L"POLYLINE");
  List blockName(rydbTblObjName(L"BLOCK", L"FLAG"));
  ASSERT_NE(blockName.head, nullptr);
  EXPECT_TRUE(rydbNameEqual(first.group(330)->resval.rlname, blockName.head->resval.rlname));
}

TEST(Tables, RecordNamesAndRegisteredApplications) {
  HostSession session;
  List layerName(rydbTblObjName(L"LAYER", L"0"));
  ASSERT_NE(layerName.head, nullptr);
  EXPECT_EQ(layerName.head->restype, RTENAME);
  List record(rydbEntGet(layerName.head->resval.rlname));
  EXPECT_EQ(record.text(0), L"LAYER");
  EXPECT_EQ(record.text(2), L"0");

  EXPECT_EQ(rydbRegApp(L"KESTRIX_TEST"), RTNORM);
  EXPECT_EQ(rydbRegApp(L"kestrix_test"), RTERROR);
  EXPECT_EQ(rydbRegApp(L"bad|name"), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoInvalidSymbolName);
  EXPECT_EQ(rydbRegApp(nullptr), RTERROR);
  List app(rydbTblSearch(L"APPID", L"KESTRIX_TEST", 0));
  EXPECT_EQ(app.text(0), L"APPID");
  EXPECT_EQ(app.text(2), L"KESTRIX_TEST");
}

}  // namespace
