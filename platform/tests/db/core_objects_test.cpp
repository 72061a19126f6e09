// Open modes, erasure, notifications, undo, extended data, groups and draw order.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbSymbolTable.h"
#include "DbText.h"

namespace {

OdDbObjectId addLine(OdDbDatabase* db, const OdGePoint3d& a, const OdGePoint3d& b) {
  OdSmartPtr<OdDbBlockTableRecord> space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  OdDbLinePtr line = OdDbLine::createObject();
  line->setStartPoint(a);
  line->setEndPoint(b);
  return space->appendOdDbEntity(line.get());
}

// The filed state of every object, by handle: what undo must give back exactly.
std::map<OdUInt64, std::vector<OdUInt8>> snapshot(OdDbDatabase* db) {
  std::map<OdUInt64, std::vector<OdUInt8>> state;
  for (const OdDbObjectId& id : db->allObjectIds()) {
    OdDbObjectPtr object = id.openObject(OdDb::kForRead, true);
    OdDbMemoryFiler filer(db);
    filer.wrBool(id.isErased());
    object->dwgOutFields(&filer);
    state[id.handle().value()] = filer.data();
  }
  return state;
}

struct CountingReactor : OdDbDatabaseReactor {
  int appended = 0, modified = 0, erased = 0;
  void objectAppended(const OdDbDatabase*, const OdDbObject*) override { ++appended; }
  void objectModified(const OdDbDatabase*, const OdDbObject*) override { ++modified; }
  void objectErased(const OdDbDatabase*, const OdDbObject*, bool) override { ++erased; }
};

}  // namespace

TEST(OpenModes, SecondWriterIsRefusedAndErasedObjectsOpenOnlyWhenAsked) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId id = addLine(db.get(), {0, 0, 0}, {1, 0, 0});
  {
    OdDbObjectPtr writer = id.openObject(OdDb::kForWrite);
    ASSERT_TRUE(writer.get());
    OdDbObjectPtr second;
    EXPECT_EQ(id.openObject(second, OdDb::kForWrite), eWasOpenedForWrite);
    EXPECT_TRUE(second.isNull());
    // A reader sees the object being changed.
    EXPECT_EQ(id.openObject(second, OdDb::kForRead), eOk);
  }
  {
    OdDbLinePtr reader = OdDbLine::cast(id.openObject(OdDb::kForRead).get());
    EXPECT_THROW(reader->setStartPoint({5, 5, 5}), OdError) << "open for read: no change";
  }
  OdDbObjectPtr again;
  EXPECT_EQ(id.openObject(again, OdDb::kForWrite), eOk);
  again->erase();
  again.release();
  EXPECT_TRUE(id.isErased());
  EXPECT_EQ(id.openObject(again, OdDb::kForRead), eWasErased);
  EXPECT_EQ(id.openObject(again, OdDb::kForRead, true), eOk);
  EXPECT_EQ(OdDbObjectId().openObject(again), eNullObjectId);
  EXPECT_THROW(id.safeOpenObject(), OdError);
}

TEST(OpenModes, ClosingAfterAChangeNotifiesOnceAndReadingDoesNot) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId id = addLine(db.get(), {0, 0, 0}, {1, 0, 0});
  CountingReactor reactor;
  db->addReactor(&reactor);
  { OdDbObjectPtr reader = id.openObject(); }
  EXPECT_EQ(reactor.modified, 0);
  {
    OdDbLinePtr line = OdDbLine::cast(id.openObject(OdDb::kForWrite).get());
    line->setStartPoint({2, 0, 0});
    line->setEndPoint({3, 0, 0});
  }
  EXPECT_EQ(reactor.modified, 1);
  addLine(db.get(), {0, 0, 0}, {0, 1, 0});
  EXPECT_EQ(reactor.appended, 1);
  db->removeReactor(&reactor);
}

TEST(Undo, RandomEditsInOneRecordAreUndoneExactly) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> coord(-100, 100);
  std::vector<OdDbObjectId> lines;
  for (int i = 0; i < 50; ++i) lines.push_back(addLine(db.get(), {coord(rng), coord(rng), 0}, {coord(rng), coord(rng), 0}));
  const auto before = snapshot(db.get());
  const size_t handlesBefore = db->allObjectIds().size();

  db->startUndoRecord();
  for (int step = 0; step < 300; ++step) {
    switch (rng() % 4) {
      case 0: lines.push_back(addLine(db.get(), {coord(rng), 0, 0}, {0, coord(rng), 0})); break;
      case 1: {
        OdDbLinePtr line = OdDbLine::cast(lines[rng() % lines.size()].openObject(OdDb::kForWrite).get());
        if (line.get()) line->setEndPoint({coord(rng), coord(rng), coord(rng)});
        break;
      }
      case 2: {
        OdDbObjectPtr line = lines[rng() % lines.size()].openObject(OdDb::kForWrite, true);
        line->erase(!line->isErased());
        break;
      }
      default: {
        OdDbLinePtr line = OdDbLine::cast(lines[rng() % lines.size()].openObject(OdDb::kForWrite).get());
        if (line.get()) line->setColorIndex(static_cast<OdInt16>(rng() % 255 + 1));
        break;
      }
    }
  }
  ASSERT_NE(snapshot(db.get()), before);
  db->undo();
  // Objects added inside the record are gone (erased); everything else is as it was.
  auto after = snapshot(db.get());
  for (const auto& [handle, state] : before) EXPECT_EQ(after.at(handle), state) << std::hex << handle;
  for (const auto& id : db->allObjectIds()) {
    if (!before.count(id.handle().value())) EXPECT_TRUE(id.isErased());
  }
  EXPECT_GT(db->allObjectIds().size(), handlesBefore);
}

TEST(Undo, GroupsMakeOneStepAndBlockingStopsRecording) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId id = addLine(db.get(), {0, 0, 0}, {1, 0, 0});
  auto setX = [&](double x) {
    OdDbLinePtr line = OdDbLine::cast(id.openObject(OdDb::kForWrite).get());
    line->setStartPoint({x, 0, 0});
  };
  auto x = [&] { return OdDbLine::cast(id.openObject().get())->startPoint().x; };
  db->beginUndoGroup();
  db->startUndoRecord();
  setX(1);
  db->startUndoRecord();
  setX(2);
  EXPECT_TRUE(db->isUndoBlockStarted());
  db->endUndoGroup();
  db->startUndoRecord();
  setX(3);
  db->undo();
  EXPECT_EQ(x(), 2);
  db->undo();
  EXPECT_EQ(x(), 0);

  db->startUndoRecord();
  db->blockUndoRecording(true);
  setX(7);
  db->blockUndoRecording(false);
  db->undo();
  EXPECT_EQ(x(), 7);

  // A command's record with nothing in it yet takes the group that opens
  // first in it: one undo reverses the group and what the record held
  // before it, and the step before stays.
  db->startUndoRecord();
  setX(8);
  db->startUndoRecord();
  db->beginUndoGroup();
  setX(9);
  db->endUndoGroup();
  setX(10);
  db->undo();
  EXPECT_EQ(x(), 8);
  db->undo();
  EXPECT_EQ(x(), 7);
}

TEST(ExtendedData, ReplacesPerApplicationAndNeedsRegisteredNames) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId id = addLine(db.get(), {0, 0, 0}, {1, 0, 0});
  OdDbObjectPtr line = id.openObject(OdDb::kForWrite);
  EXPECT_EQ(line->setXData({OdDxfTag::str(1001, L"NOT_REGISTERED"), OdDxfTag::str(1000, L"x")}), eRegappIdNotFound);
  {
    OdDbObjectPtr table = db->getRegAppTableId().openObject(OdDb::kForWrite);
    OdSmartPtr<OdDbRegAppTableRecord> app = OdDbRegAppTableRecord::createObject();
    app->setName(L"_LayerManage");
    static_cast<OdDbSymbolTable*>(table.get())->add(app.get());
  }
  ASSERT_EQ(line->setXData({OdDxfTag::str(1001, L"ACAD"), OdDxfTag::str(1000, L"a")}), eOk);
  ASSERT_EQ(line->setXData({OdDxfTag::str(1001, L"_LayerManage"), OdDxfTag::integer(1070, 4)}), eOk);
  ASSERT_EQ(line->setXData({OdDxfTag::str(1001, L"acad"), OdDxfTag::str(1000, L"b")}), eOk);
  EXPECT_EQ(line->xData(L"ACAD"), (OdDxfTagList{OdDxfTag::str(1001, L"ACAD"), OdDxfTag::str(1000, L"b")}));
  EXPECT_EQ(line->xData(L"_LAYERMANAGE").size(), 2u);
  ASSERT_EQ(line->setXData({OdDxfTag::str(1001, L"ACAD")}), eOk);
  EXPECT_TRUE(line->xData(L"ACAD").empty());
  EXPECT_EQ(line->xData().size(), 2u);
}

TEST(Groups, MembersCarryTheGroupAsReactorAndAnonymousNamesCount) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId a = addLine(db.get(), {0, 0, 0}, {1, 0, 0});
  OdDbObjectId b = addLine(db.get(), {0, 1, 0}, {1, 1, 0});
  OdDbDictionaryPtr groups = OdDbDictionary::cast(db->getGroupDictionaryId().openObject(OdDb::kForWrite).get());
  OdDbGroupPtr group = OdDbGroup::createObject();
  group->setAnonymous();
  OdString name = groups->nextAnonymousName(L"*A");
  EXPECT_EQ(name, L"*A1");
  OdDbObjectId groupId = groups->setAt(name, group.get());
  group->append(a);
  group->append(b);
  EXPECT_EQ(groups->nextAnonymousName(L"*A"), L"*A2");
  EXPECT_TRUE(a.openObject()->hasPersistentReactor(groupId));
  a.openObject(OdDb::kForWrite)->erase();
  EXPECT_EQ(group->allEntityIds(), OdDbObjectIdArray({b}));
  group->remove(b);
  EXPECT_FALSE(b.openObject()->hasPersistentReactor(groupId));
}

TEST(DrawOrder, MoveAboveAndToBottom) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  std::vector<OdDbObjectId> ids;
  for (int i = 0; i < 4; ++i) ids.push_back(addLine(db.get(), {double(i), 0, 0}, {double(i), 1, 0}));
  OdDbSortentsTablePtr sortents = OdDbSortentsTable::createObject();
  sortents->setBlockId(db->getModelSpaceId());
  OdDbObjectIdArray order;
  sortents->getFullDrawOrder(order);
  EXPECT_EQ(order, OdDbObjectIdArray(ids.begin(), ids.end()));
  ASSERT_EQ(sortents->moveAbove({ids[0]}, ids[2]), eOk);
  sortents->getFullDrawOrder(order);
  EXPECT_EQ(order, OdDbObjectIdArray({ids[1], ids[2], ids[0], ids[3]}));
  sortents->moveToBottom({ids[3]});
  sortents->getFullDrawOrder(order);
  EXPECT_EQ(order, OdDbObjectIdArray({ids[3], ids[1], ids[2], ids[0]}));
}

TEST(BlockReferences, AttributesFollowTheReferenceAndTransformsDecompose) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId blockId;
  {
    OdDbObjectPtr table = db->getBlockTableId().openObject(OdDb::kForWrite);
    OdSmartPtr<OdDbBlockTableRecord> block = OdDbBlockTableRecord::createObject();
    block->setName(L"DOOR");
    block->setOrigin({1, 1, 0});
    blockId = static_cast<OdDbSymbolTable*>(table.get())->add(block.get());
    OdDbLinePtr line = OdDbLine::createObject();
    line->setStartPoint({1, 1, 0});
    line->setEndPoint({3, 1, 0});
    block->appendOdDbEntity(line.get());
  }
  OdSmartPtr<OdDbBlockTableRecord> space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
  ref->setBlockTableRecord(blockId);
  space->appendOdDbEntity(ref.get());
  ref->setPosition({10, 0, 0});
  ref->setRotation(OdaPI2);
  ref->setScaleFactors(OdGeScale3d(2, -2, 2));
  OdDbAttributePtr attribute = OdDbAttribute::createObject();
  attribute->setTag(L"NUMBER");
  attribute->setTextString(L"12");
  ref->appendAttribute(attribute.get());
  EXPECT_FALSE(ref->sequenceEndId().isNull());

  OdGeMatrix3d xform = ref->blockTransform();
  OdGePoint3d end = OdGePoint3d(3, 1, 0).transformBy(xform);
  EXPECT_TRUE(end.isEqualTo({10, 4, 0})) << end.x << "," << end.y;
  // Decomposing the transform gives the same placement back (mirror included).
  OdDbBlockReferencePtr copy = OdDbBlockReference::createObject();
  copy->setBlockTableRecord(blockId);
  ASSERT_EQ(copy->setBlockTransform(xform), eOk);
  EXPECT_TRUE(copy->blockTransform().isEqualTo(xform));
  EXPECT_NE(copy->setBlockTransform(xform * OdGeMatrix3d::scaling(OdGeScale3d(1, 3, 1)) *
                                    OdGeMatrix3d::rotation(0.3, OdGeVector3d::kZAxis)),
            eOk);

  const OdDbObjectId attributeId = attribute->objectId();
  attribute.release();
  ref->erase();
  EXPECT_TRUE(attributeId.isErased());
  EXPECT_TRUE(ref->sequenceEndId().isErased());
}
