// Host commands that take record names read a reverse-quoted name as that
// name only: the lists of -LAYER and -PURGE (as patterns), and the prompts
// of -INSERT, -LAYER Set and -LINETYPE Set that want one record. The
// unescaped name would also match its neighbour, so each case shows both.
#include <gtest/gtest.h>

#include "DbCurves.h"
#include "host_test_support.h"

namespace {

using namespace hosttest;

bool locked(OdDbDatabase* db, const wchar_t* name) { return layer(db, name)->isLocked(); }

}  // namespace

TEST(EscapedNames, LayerListsAndSetTakeEscapedNamesAsNames) {
  HostSession session;
  OdDbDatabase* db = session.db();
  for (const wchar_t* name : {L"L#1", L"L51", L"[L]", L"L", L"A.B", L"A-B"})
    addRecord(db, OdDbNameTable::kLayer, OdDbLayerTableRecord::createObject().get(), name);
  session.run({"-LAYER", "LOCK", "L`#1, `[L`]", ""});
  EXPECT_TRUE(locked(db, L"L#1"));
  EXPECT_TRUE(locked(db, L"[L]"));
  EXPECT_FALSE(locked(db, L"L51"));
  EXPECT_FALSE(locked(db, L"L"));
  // A comma after a reverse quote belongs to its pattern: one pattern, no match.
  const std::string out = session.run({"-LAYER", "LOCK", "A`.B`,A-B", ""});
  EXPECT_TRUE(contains(out, "No matching layer names found for \"A`.B`,A-B\".")) << out;
  EXPECT_FALSE(locked(db, L"A.B"));
  EXPECT_FALSE(locked(db, L"A-B"));
  session.run({"-LAYER", "S", "A`.B", ""});
  EXPECT_EQ(db->getCLAYER(), db->findRecord(OdDbNameTable::kLayer, L"A.B"));
  // Objects picked stand for their layers by name.
  session.run({"-LAYER", "UNLOCK", "*", ""});
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint({1, 1, 0});
  const OdDbObjectId lineId = addToModelSpace(db, line.get(), L"L#1");
  line.release();
  session.run({"-LAYER", "LOCK", "", "#" + lineId.handle().ascii().toUtf8(), "", ""});
  EXPECT_TRUE(locked(db, L"L#1"));
  EXPECT_FALSE(locked(db, L"L51"));
}

TEST(EscapedNames, PurgeInsertAndLinetypeTakeEscapedNamesAsNames) {
  HostSession session;
  OdDbDatabase* db = session.db();
  for (const wchar_t* name : {L"B#1", L"B51", L"B.1", L"B-1"}) addBlock(db, name);
  session.run({"-PURGE", "B", "B`#1", "N"});
  EXPECT_TRUE(db->findRecord(OdDbNameTable::kBlock, L"B#1").isNull());
  EXPECT_FALSE(db->findRecord(OdDbNameTable::kBlock, L"B51").isNull());

  session.run({"-INSERT", "B`.1", "0,0", "", "", "0"});
  OdDbObjectIdArray inserted = session.modelSpace();
  ASSERT_EQ(inserted.length(), 1u);
  OdSmartPtr<OdDbBlockReference> reference = OdDbBlockReference::cast(inserted[0].openObject().get());
  EXPECT_EQ(reference->blockTableRecord(), db->findRecord(OdDbNameTable::kBlock, L"B.1"));

  addRecord(db, OdDbNameTable::kLinetype, OdDbLinetypeTableRecord::createObject().get(), L"D.1");
  addRecord(db, OdDbNameTable::kLinetype, OdDbLinetypeTableRecord::createObject().get(), L"D-1");
  session.run({"-LINETYPE", "S", "D`.1", ""});
  EXPECT_EQ(db->getCELTYPE(), db->findRecord(OdDbNameTable::kLinetype, L"D.1"));
}
